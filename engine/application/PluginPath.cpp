// The published functions that depend on which plug-in calls: its folder, its resources, its
// pictures. They find out by the address they return to, so they must stay functions of their own
// that a plug-in really calls.
#include "engine/application/ApplicationBody.h"
#include "engine/application/ProgramPlaces.h"
#include "host/BaseBitmap.h"

namespace host {
namespace {

Filename FolderOfCaller(const void* address) {
  const engine::ApplicationBody* body = engine::ApplicationBody::Current();
  const std::optional<std::string> folder =
      body != nullptr ? body->plugins.FolderOf(address) : std::nullopt;
  return Filename(String(std::string_view(folder ? *folder : engine::ProgramFolder())));
}

Filename ResourceFolderOfCaller(const void* address) {
  return FolderOfCaller(address) + Filename("res");
}

}  // namespace

[[gnu::noinline]] Filename GeGetPluginPath() { return FolderOfCaller(__builtin_return_address(0)); }

[[gnu::noinline]] Bool GeResource::Init() {
  return Init(ResourceFolderOfCaller(__builtin_return_address(0)));
}

Bool GeResource::Init(const Filename& path) {
  if (!engine::PublishedServices().files.ListFiles(path.GetString().ToUtf8())) return FALSE;
  path_ = path;
  return TRUE;
}

[[gnu::noinline]] AutoBitmap::AutoBitmap(const String& name) : bitmap_(BaseBitmap::Alloc()) {
  const Filename file = ResourceFolderOfCaller(__builtin_return_address(0)) + Filename(name);
  if (bitmap_ != nullptr && bitmap_->Init(file) != IMAGERESULT_OK) BaseBitmap::Free(bitmap_);
}

}  // namespace host
