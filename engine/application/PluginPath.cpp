// The published functions that depend on which plug-in calls: its folder, its resources, its pictures. They find out by
// the address they return to, so they must stay functions of their own that a plug-in really calls.
#include <unistd.h>

#include <climits>

#include "engine/application/ApplicationBody.h"
#include "host/BaseBitmap.h"

namespace host {
namespace {

std::string ProgramFolder() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return "";
  const std::string program(path, static_cast<std::size_t>(length));
  return program.substr(0, program.rfind('/'));
}

Filename FolderOfCaller(const void* address) {
  const engine::ApplicationBody* body = engine::ApplicationBody::Current();
  const std::optional<std::string> folder = body != nullptr ? body->plugins.FolderOf(address) : std::nullopt;
  return Filename(String(std::string_view(folder ? *folder : ProgramFolder())));
}

Filename ResourceFolderOfCaller(const void* address) { return FolderOfCaller(address) + Filename("res"); }

}  // namespace

[[gnu::noinline]] Filename GeGetPluginPath() { return FolderOfCaller(__builtin_return_address(0)); }

[[gnu::noinline]] Bool GeResource::Init() { return Init(ResourceFolderOfCaller(__builtin_return_address(0))); }

Bool GeResource::Init(const Filename& path) {
  if (!engine::Outside::Current().ListFiles(path.GetString().ToUtf8())) return FALSE;
  path_ = path;
  return TRUE;
}

[[gnu::noinline]] AutoBitmap::AutoBitmap(const String& name) : bitmap_(BaseBitmap::Alloc()) {
  const Filename file = ResourceFolderOfCaller(__builtin_return_address(0)) + Filename(name);
  if (bitmap_ != nullptr && bitmap_->Init(file) != IMAGERESULT_OK) BaseBitmap::Free(bitmap_);
}

}  // namespace host
