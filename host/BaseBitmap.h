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
  // side. Answers IMAGERESULT_OUTOFMEMORY for a size too large and IMAGERESULT_WRONGTYPE for any
  // other depth or a side below 1; the picture is empty then.
  LONG Init(LONG width, LONG height, LONG depth = 24);
  // Reads a TIFF, PNG, JPEG or OpenEXR file. On failure the picture is empty. Its format is told by
  // its first bytes, not by its suffix. An alpha channel is left out.
  LONG Init(const Filename& file);
  // Writes the picture, replacing the file atomically. Formats: the FILTER_ numbers.
  // IMAGERESULT_WRONGTYPE for another format, IMAGERESULT_FILEERROR when there is no picture or the
  // disk refuses it; an older file is whole then.
  LONG Save(const Filename& file, LONG format) const;

  // Width and height in pixels and bits a pixel, all 0 while the picture is empty.
  LONG GetBw() const { return width_; }
  LONG GetBh() const { return height_; }
  LONG GetBt() const { return width_ > 0 ? 24 : 0; }
  // Channels 0..255. Outside the picture: reads 0, writes nothing and answers false. `x` and `y`
  // count from 0 at the top left; values to be written are clamped. None of the pointers may be
  // null.
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
  // `name` in the "res" folder under the plug-in path. To be called from the plug-in's own code:
  // the folder is found by the library that the call comes from.
  explicit AutoBitmap(const String& name);
  AutoBitmap(const AutoBitmap&) = delete;
  AutoBitmap& operator=(const AutoBitmap&) = delete;
  ~AutoBitmap() { BaseBitmap::Free(bitmap_); }
  operator BaseBitmap*() const { return bitmap_; }

 private:
  BaseBitmap* bitmap_ = nullptr;
};

}  // namespace host
