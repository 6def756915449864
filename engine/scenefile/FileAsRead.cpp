#include "engine/scenefile/FileAsRead.h"

#include <xxhash.h>

#include <memory>
#include <new>

namespace engine {

std::uint64_t HashOfContent(std::span<const std::string_view> pieces) {
  const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(),
                                                                       &XXH3_freeState);
  if (!state) throw std::bad_alloc();
  XXH3_64bits_reset(state.get());
  for (const std::string_view piece : pieces)
    XXH3_64bits_update(state.get(), piece.data(), piece.size());
  return XXH3_64bits_digest(state.get());
}

FileNow LookAtFile(FileSystem& files, FileAsRead& file, const std::string& path) {
  const FileStamp now = files.Stamp(path);
  if (now == file.stamp) return FileNow::AsRead;
  if (files.Kind(path) == FileKind::Missing) return FileNow::Gone;
  if (now.size != file.stamp.size || files.Kind(path) != FileKind::File) return FileNow::Changed;
  // Another time alone says little: copying a folder to another disk and back gives one.
  const Result<std::string> bytes = files.ReadFile(path);
  if (!bytes) return FileNow::Changed;
  const std::string_view whole = bytes.Value();
  if (HashOfContent({&whole, 1}) != file.content) return FileNow::Changed;
  file.stamp = now;
  return FileNow::AsRead;
}

}  // namespace engine
