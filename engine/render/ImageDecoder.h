// ImageDecoder: decodes image files in a child that can do nothing else, because they come from
// anywhere and the libraries that read them are large. The child is kept for the next picture. Any
// thread; one picture at a time.
#pragma once

#include <string>

#include "engine/render/Image.h"

namespace engine {

// The hidden verb: `program --decode-images <descriptor>` has to call RunImageDecoder and exit with
// its result.
inline constexpr const char* kImageDecoderVerb = "--decode-images";

// From now on DecodeImage has `program`, a full path, do its work as a child; empty: this process
// does it itself, which it also does where the child cannot be started. Said once, before pictures
// are read.
void DecodeImagesBy(const std::string& program);

// The child's side: confines the process for good and answers what comes through `talk` until
// nothing more does. Returns the process's exit status.
int RunImageDecoder(int talk);

// DecodeImage in this process.
Result<Image> DecodeImageHere(std::string_view bytes);

}  // namespace engine
