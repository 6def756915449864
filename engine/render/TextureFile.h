// TextureFile: an image file as it was read and, from the first use on, the texture in it. Whoever
// read it shares it with the pictures that show it. Any thread, several at a time.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "engine/render/Texture.h"

namespace engine {

class TextureFile {
 public:
  explicit TextureFile(std::shared_ptr<const std::string> bytes) : bytes_(std::move(bytes)) {}
  // A file that could not be read.
  explicit TextureFile(const Status& problem) : problem_(problem.Message()) {}

  // Null, with the reason in `*problem`, when there is no texture. `*decoded` tells whether it was
  // made by this very call.
  std::shared_ptr<const Texture> Get(std::string* problem, bool* decoded);
  // Memory of the texture, 0 before it is made.
  std::size_t Bytes() const;
  // Whether there is a texture that nobody uses.
  bool IsIdle() const;

 private:
  mutable std::mutex lock_;
  std::shared_ptr<const std::string> bytes_;  // null once decoded
  std::shared_ptr<const Texture> texture_;
  std::string problem_;
};

}  // namespace engine
