// What a plug-in derives from, and the registrations.
#include "engine/application/ApplicationBody.h"
#include "host/Plugins.h"

namespace host {
namespace {

constexpr LONG kEnabled = 1;

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

}  // namespace host
