#include "engine/render/Text.h"

#include <fribidi.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <string>

#include "engine/core/Utf8.h"

namespace engine {

namespace {

constexpr const char* kPackage = "fonts-dejavu-core";
constexpr const char* kFolders[] = {"/usr/share/fonts/truetype/dejavu",
                                    "/usr/share/fonts/dejavu-sans-fonts", "/usr/share/fonts/TTF",
                                    "/usr/share/fonts/dejavu"};
// Han and kana, which the first font lacks; without the file they show as boxes.
constexpr const char* kMoreLetters[] = {
    "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf",
    "/usr/share/fonts/google-droid-sans-fonts/DroidSansFallbackFull.ttf"};
constexpr std::uint64_t kLargestFont = 64ull << 20;
constexpr char32_t kEllipsis = 0x2026;
constexpr char32_t kReplacement = 0xFFFD;
// No label shows more; keeps the cost of absurd names down.
constexpr std::size_t kMostCharacters = 1000;

char32_t Decoded(std::string_view character) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(character[i]); };
  const auto tail = [&](std::size_t i) { return static_cast<char32_t>(byte(i) & 0x3FU); };
  switch (character.size()) {
    case 2:
      return (byte(0) & 0x1FU) << 6 | tail(1);
    case 3:
      return (byte(0) & 0x0FU) << 12 | tail(1) << 6 | tail(2);
    case 4:
      return (byte(0) & 0x07U) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
    default:
      return byte(0) < 0x20 || byte(0) == 0x7F ? U' ' : byte(0) < 0x80 ? byte(0) : kReplacement;
  }
}

std::vector<char32_t> Characters(std::string_view text) {
  std::vector<char32_t> characters;
  for (std::size_t at = 0; at < text.size() && characters.size() < kMostCharacters;) {
    const std::size_t bytes = CharacterBytes(text, at);
    characters.push_back(Decoded(text.substr(at, bytes)));
    at += bytes;
  }
  return characters;
}

// From the order in which the characters are read to that in which they stand (Unicode Standard
// Annex 9).
std::vector<char32_t> InVisualOrder(const std::vector<char32_t>& logical) {
  std::vector<FriBidiChar> in(logical.begin(), logical.end());
  std::vector<FriBidiChar> out(in.size() + 1);
  FriBidiParType direction = FRIBIDI_PAR_ON;
  const auto count = static_cast<FriBidiStrIndex>(in.size());
  if (in.empty() ||
      !fribidi_log2vis(in.data(), count, &direction, out.data(), nullptr, nullptr, nullptr))
    return logical;
  std::vector<char32_t> visual;
  for (std::size_t i = 0; i < in.size(); ++i) {
    const bool isSeen =
        out[i] != FRIBIDI_CHAR_FILL && !FRIBIDI_IS_EXPLICIT_OR_BN(fribidi_get_bidi_type(out[i]));
    if (isSeen) visual.push_back(out[i]);
  }
  return visual;
}

void Blend(const FT_Bitmap& glyph, int left, int top, Font::Color color, Image& image) {
  for (int row = 0; row < static_cast<int>(glyph.rows); ++row) {
    for (int column = 0; column < static_cast<int>(glyph.width); ++column) {
      const int x = left + column;
      const int y = top + row;
      if (x < 0 || y < 0 || x >= static_cast<int>(image.width) ||
          y >= static_cast<int>(image.height))
        continue;
      const int cover = glyph.buffer[row * glyph.pitch + column];
      std::uint8_t* pixel =
          &image.bytes[(static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x)) *
                       4];
      for (std::size_t c = 0; c < 3; ++c) {
        pixel[c] = static_cast<std::uint8_t>(pixel[c] + (color[c] - pixel[c]) * cover / 255);
      }
    }
  }
}

}  // namespace

// The faces read their files' bytes while they live.
struct Font::Body {
  std::string bytes;
  std::string moreBytes;
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  FT_Face more = nullptr;  // for the letters that the first one lacks; may be null

  ~Body() {
    if (more) FT_Done_Face(more);
    if (face) FT_Done_Face(face);
    if (library) FT_Done_FreeType(library);
  }

  // Null when the bytes are no font that can be used.
  FT_Face Open(const std::string& of) const {
    FT_Face opened = nullptr;
    const auto* data = reinterpret_cast<const FT_Byte*>(of.data());
    if (FT_New_Memory_Face(library, data, static_cast<FT_Long>(of.size()), 0, &opened) != 0)
      return nullptr;
    if (FT_IS_SCALABLE(opened)) return opened;
    FT_Done_Face(opened);
    return nullptr;
  }

  void SetSize(int pixels) const {
    for (const FT_Face each : {face, more}) {
      if (each) FT_Set_Pixel_Sizes(each, 0, static_cast<FT_UInt>(std::max(1, pixels)));
    }
  }

  FT_Face FaceWith(char32_t character) const {
    const bool isElsewhere =
        more && !FT_Get_Char_Index(face, character) && FT_Get_Char_Index(more, character);
    return isElsewhere ? more : face;
  }

  // Goes along the characters and tells for each glyph the pen's place in 64ths of a pixel; answers
  // where it ends.
  template <class At>
  long Walk(const std::vector<char32_t>& characters, FT_Int32 how, const At& at) const {
    long pen = 0;
    FT_UInt before = 0;
    FT_Face faceBefore = nullptr;
    for (const char32_t character : characters) {
      const FT_Face of = FaceWith(character);
      const FT_UInt glyph = FT_Get_Char_Index(of, character);
      FT_Vector kerning{0, 0};
      if (before && glyph && of == faceBefore)
        FT_Get_Kerning(of, before, glyph, FT_KERNING_DEFAULT, &kerning);
      pen += kerning.x;
      before = glyph;
      faceBefore = of;
      if (FT_Load_Glyph(of, glyph, how | FT_LOAD_TARGET_LIGHT) != 0) continue;
      at(pen, *of->glyph);
      pen += of->glyph->advance.x;
    }
    return pen;
  }
};

Font::Font(std::unique_ptr<Body> body) : body_(std::move(body)) {}
Font::Font(Font&&) noexcept = default;
Font& Font::operator=(Font&&) noexcept = default;
Font::~Font() = default;

Result<Font> Font::Load(FileSystem& files, Weight weight) {
  const std::string file = weight == Weight::Bold ? "/DejaVuSans-Bold.ttf" : "/DejaVuSans.ttf";
  for (const char* folder : kFolders) {
    if (files.Kind(folder + file) != FileKind::File) continue;
    Result<Font> font = LoadFile(files, folder + file);
    if (font) font.Value().AddMoreLetters(files);
    return font;
  }
  return Result<Font>::Failure(
      "The font DejaVu Sans was not found for the labels. Installing the package " +
      std::string(kPackage) + " brings it.");
}

Result<Font> Font::LoadFile(FileSystem& files, const std::string& path) {
  Result<std::string> bytes = files.ReadFile(path, kLargestFont);
  if (!bytes) return bytes.GetStatus();
  auto body = std::make_unique<Body>();
  body->bytes = bytes.Take();
  if (FT_Init_FreeType(&body->library) == 0) body->face = body->Open(body->bytes);
  if (!body->face) return Result<Font>::Failure("\"" + path + "\" is no font that can be used.");
  return Font(std::move(body));
}

void Font::AddMoreLetters(FileSystem& files) {
  for (const char* path : kMoreLetters) {
    if (files.Kind(path) != FileKind::File) continue;
    Result<std::string> bytes = files.ReadFile(path, kLargestFont);
    if (!bytes) continue;
    body_->moreBytes = bytes.Take();
    body_->more = body_->Open(body_->moreBytes);
    return;
  }
}

int Font::WidthOf(const std::vector<char32_t>& characters) const {
  const long end = body_->Walk(characters, FT_LOAD_DEFAULT, [](long, const FT_GlyphSlotRec&) {});
  return static_cast<int>((end + 63) / 64);
}

TextLine Font::Set(std::string_view text, int pixels, int mostWidth) const {
  body_->SetSize(pixels);
  std::vector<char32_t> logical = Characters(text);
  TextLine line{InVisualOrder(logical), pixels, 0};
  line.width = WidthOf(line.characters);
  if (line.width <= mostWidth) return line;
  const auto cut = [&](std::size_t count) {
    std::vector<char32_t> shorter(logical.begin(),
                                  logical.begin() + static_cast<std::ptrdiff_t>(count));
    while (!shorter.empty() && shorter.back() == U' ') shorter.pop_back();
    shorter.push_back(kEllipsis);
    line.characters = InVisualOrder(shorter);
    line.width = WidthOf(line.characters);
    return line.width <= mostWidth;
  };
  std::size_t fits = 0;
  for (std::size_t tooMany = logical.size(); fits + 1 < tooMany;) {
    const std::size_t middle = (fits + tooMany) / 2;
    (cut(middle) ? fits : tooMany) = middle;
  }
  cut(fits);
  return line;
}

void Font::Draw(const TextLine& line, int x, int y, Color color, Image& image) const {
  body_->SetSize(line.pixels);
  body_->Walk(line.characters, FT_LOAD_RENDER, [&](long pen, const FT_GlyphSlotRec& slot) {
    const int left = x + static_cast<int>((pen + 32) / 64) + slot.bitmap_left;
    if (slot.bitmap.pixel_mode == FT_PIXEL_MODE_GRAY)
      Blend(slot.bitmap, left, y - slot.bitmap_top, color, image);
  });
}

}  // namespace engine
