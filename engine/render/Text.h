// Text: labels in pictures. A Font is one face of the system's DejaVu Sans, which it owns, with Han
// and kana from another font where the system has it; it turns a line of UTF-8 text into a TextLine
// and draws that with smooth edges. Right-to-left scripts come in their reading order, Arabic
// letters joined. One thread at a time.
#pragma once

#include <array>
#include <memory>
#include <string_view>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/render/Image.h"

namespace engine {

// A line ready to be drawn: characters from left to right as they are seen.
struct TextLine {
  std::vector<char32_t> characters;
  int pixels = 0;  // height of the letters' box
  int width = 0;   // in pixels
};

class Font {
 public:
  enum class Weight { Regular, Bold };
  using Color = std::array<std::uint8_t, 3>;  // sRGB

  // The face in the folder where the system keeps it. Fails with a message that names the package
  // when it is not there.
  static Result<Font> Load(FileSystem& files, Weight weight);
  // The face in a font file.
  static Result<Font> LoadFile(FileSystem& files, const std::string& path);
  Font(Font&&) noexcept;
  Font& operator=(Font&&) noexcept;
  ~Font();

  // Sets the text at that size; one wider than `mostWidth` is cut at its end and gets an ellipsis.
  // Control characters become blanks, bytes that are no UTF-8 replacement characters.
  TextLine Set(std::string_view text, int pixels, int mostWidth) const;
  // Draws on an image of bytes, the line's left end at x, its baseline at y; what lies outside is
  // left out.
  void Draw(const TextLine& line, int x, int y, Color color, Image& image) const;

 private:
  struct Body;
  explicit Font(std::unique_ptr<Body> body);
  void AddMoreLetters(FileSystem& files);
  int WidthOf(const std::vector<char32_t>& characters) const;

  std::unique_ptr<Body> body_;
};

}  // namespace engine
