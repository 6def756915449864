// The codecs of single formats behind DecodeImage. Each gets the whole file in memory, checks sizes
// before it takes memory and answers a message for whatever it cannot read. Any thread.
#pragma once

#include "engine/render/Image.h"

namespace engine {

// Memory that a file of so many bytes may ask for: flat pictures of 8192 pixels a side are short
// in any format, and more takes more.
std::uint64_t MemoryForImage(std::size_t fileBytes);
// As CheckImageSize, and whether a file of `fileBytes` may claim that much.
Status CheckImageClaim(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel,
                       std::size_t fileBytes);

Result<Image> DecodeTiff(std::string_view bytes);
Result<Image> DecodePng(std::string_view bytes);
Result<Image> DecodeJpeg(std::string_view bytes);
Result<Image> DecodeExr(std::string_view bytes);
Result<Image> DecodeBmp(std::string_view bytes);
Result<Image> DecodeTga(std::string_view bytes);
// Still pictures only.
Result<Image> DecodeWebp(std::string_view bytes);

// The bytes of a JPEG file with the picture, whose alpha is left out; only for images of bytes.
// `quality`: 1..100.
Result<std::string> EncodeJpeg(const Image& image, int quality);

// A TGA file has no magic number: whether the header makes sense as one.
bool LooksLikeTga(std::string_view bytes);
// The magic number of a WebP file has the file's size in its middle.
bool LooksLikeWebp(std::string_view bytes);

}  // namespace engine
