// BaseBitmap: a picture of 24-bit RGB pixels, row by row from the top left. AutoBitmap: one loaded
// from the plug-in's resource folder. The caller owns what Alloc returns. A bitmap belongs to one
// thread at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "host/Filename.h"

namespace host {

// Results of Init, Load and Save.
inline constexpr LONG IMAGERESULT_OK = 1;
inline constexpr LONG IMAGERESULT_NOTEXISTING = -1;
inline constexpr LONG IMAGERESULT_WRONGTYPE = -2;
inline constexpr LONG IMAGERESULT_OUTOFMEMORY = -3;
inline constexpr LONG IMAGERESULT_FILEERROR = -4;

// File formats of Save.
inline constexpr LONG FILTER_TIF = 1100;
inline constexpr LONG FILTER_PNG = 1023671;

class BaseBitmap {
 public:
  static BaseBitmap* Alloc();
  static void Free(BaseBitmap*& bitmap);

  // A black picture of `width` x `height` pixels; 24 bits only. Refuses sizes outside 1..16384 per
  // side.
  LONG Init(LONG width, LONG height, LONG depth = 24);
  // Reads a TIFF, PNG, JPEG or OpenEXR file. On failure the picture is empty.
  LONG Init(const Filename& file);
  // Writes the picture, replacing the file atomically. Formats: the FILTER_ numbers.
  LONG Save(const Filename& file, LONG format) const;

  LONG GetBw() const { return width_; }
  LONG GetBh() const { return height_; }
  LONG GetBt() const { return width_ > 0 ? 24 : 0; }
  // Channels 0..255. Outside the picture: reads 0, writes nothing and answers false.
  void GetPixel(LONG x, LONG y, LONG* r, LONG* g, LONG* b) const;
  Bool SetPixel(LONG x, LONG y, LONG r, LONG g, LONG b);

 private:
  LONG width_ = 0;
  LONG height_ = 0;
  std::vector<std::uint8_t> pixels_;  // 3 bytes a pixel
};

// Reads as a pointer: null when the picture could not be loaded.
class AutoBitmap {
 public:
  // `name` in the "res" folder under the plug-in path.
  explicit AutoBitmap(const String& name);
  AutoBitmap(const AutoBitmap&) = delete;
  AutoBitmap& operator=(const AutoBitmap&) = delete;
  ~AutoBitmap() { BaseBitmap::Free(bitmap_); }
  operator BaseBitmap*() const { return bitmap_; }

 private:
  BaseBitmap* bitmap_ = nullptr;
};

}  // namespace host
