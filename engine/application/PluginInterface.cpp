// Base classes of plug-ins, their registration, and the functions that depend on which plug-in
// calls: for its folder, its resources, its pictures. These find the plug-in by the address they
// return to, so they must stay functions of their own that a plug-in really calls.
#include "engine/application/ApplicationBody.h"
#include "engine/application/ProgramPlaces.h"
#include "host/BaseBitmap.h"
#include "host/Plugins.h"

namespace host {
namespace {

constexpr LONG kEnabled = 1;

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

Bool CommandData::Execute(BaseDocument*) { return TRUE; }
Bool CommandData::ExecuteSubID(BaseDocument*, LONG) { return TRUE; }
LONG CommandData::GetState(BaseDocument*) { return kEnabled; }
Bool CommandData::GetSubContainer(BaseDocument*, BaseContainer&) { return FALSE; }
Bool CommandData::RestoreLayout(void*) { return FALSE; }
String CommandData::GetScriptName() { return String(); }
Bool CommandData::Message(LONG, void*) { return FALSE; }

Bool SceneHookData::Init(GeListNode*) { return TRUE; }
void SceneHookData::Free(GeListNode*) {}
Bool SceneHookData::Message(GeListNode*, LONG, void*) { return FALSE; }

Bool RegisterCommandPlugin(LONG id, const String& name, LONG, BaseBitmap* icon, const String& help,
                           CommandData* data) {
  engine::ApplicationBody* body = engine::ApplicationBody::Current();
  if (body == nullptr || !name.Content() || data == nullptr) return FALSE;
  BaseBitmap* copy = icon != nullptr ? BaseBitmap::Alloc() : nullptr;
  // A copy, since the plug-in's bitmap mostly ends with the function that registers it.
  if (copy != nullptr) *copy = *icon;
  const Bool registered = body->plugins.Register(engine::CommandPlugin{id, name, help, data, copy});
  if (!registered) BaseBitmap::Free(copy);
  return registered;
}

Bool RegisterSceneHookPlugin(LONG id, const String& name, LONG info, DataAllocator* allocator,
                             LONG priority, LONG, void*) {
  engine::ApplicationBody* body = engine::ApplicationBody::Current();
  if (body == nullptr || !name.Content() || allocator == nullptr) return FALSE;
  return body->plugins.Register(engine::RegisteredHook{id, name, info, allocator, priority});
}

[[gnu::noinline]] Filename GeGetPluginPath() { return FolderOfCaller(__builtin_return_address(0)); }

[[gnu::noinline]] Bool GeResource::Init() {
  return Init(ResourceFolderOfCaller(__builtin_return_address(0)));
}

Bool GeResource::Init(const Filename& path) {
  // Fails where the folder cannot be read, which a plug-in answers to PluginMessage.
  if (!engine::PublishedServices().files.ListFiles(path.GetString().ToUtf8())) return FALSE;
  path_ = path;
  return TRUE;
}

[[gnu::noinline]] AutoBitmap::AutoBitmap(const String& name) : bitmap_(BaseBitmap::Alloc()) {
  const Filename file = ResourceFolderOfCaller(__builtin_return_address(0)) + Filename(name);
  if (bitmap_ != nullptr && bitmap_->Init(file) != IMAGERESULT_OK) BaseBitmap::Free(bitmap_);
}

}  // namespace host
