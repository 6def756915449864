#include "engine/render/TextureFile.h"

namespace engine {

std::shared_ptr<const Texture> TextureFile::Get(std::string* problem, bool* decoded) {
  const std::lock_guard lock(lock_);
  *decoded = bytes_ != nullptr;
  if (bytes_) {
    Result<Image> image = DecodeImage(*bytes_);
    bytes_.reset();
    if (image) {
      texture_ = std::make_shared<const Texture>(image.Take());
    } else {
      problem_ = image.Message();
    }
  }
  *problem = problem_;
  return texture_;
}

std::size_t TextureFile::Bytes() const {
  const std::lock_guard lock(lock_);
  return texture_ ? texture_->Bytes() : 0;
}

bool TextureFile::IsIdle() const {
  const std::lock_guard lock(lock_);
  return texture_ && texture_.use_count() == 1;
}

}  // namespace engine
