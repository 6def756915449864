// A plug-in with a command, a dialog and a scene hook. It says in the status line what happens to
// it, which can be heard after its library is closed, too.
#include <stdexcept>

#include "engine/application/Application.h"
#include "host/Host.h"
#include "tests/plugins/Ids.h"

namespace {

using namespace host;

void Record(const String& what) { StatusSetText(what); }

class GoodDialog : public GeDialog {
 public:
  Bool CreateLayout() override { return AddButton(test_plugins::kGoodButton, 0, 0, 0, "Press"); }
  Bool CoreMessage(LONG id, const BaseContainer&) override {
    Record("core message " + LongToString(id));
    return TRUE;
  }
  Bool Command(LONG id, const BaseContainer&) override {
    Record("button " + LongToString(id));
    EventAdd();
    engine::Application::Current()->DeliverEvents();
    Record("button done");
    return TRUE;
  }
};

class GoodCommand : public CommandData {
 public:
  ~GoodCommand() override { Record("command destroyed"); }
  Bool Execute(BaseDocument* doc) override {
    if (doc != nullptr && doc->GetDocumentName().GetString() == String("throw"))
      throw std::runtime_error("thrown");
    Record("execute on " +
           (doc == nullptr ? String("nothing") : doc->GetDocumentName().GetString()));
    const Bool open = dialog_.Open(DLG_TYPE_ASYNC, test_plugins::kGoodCommand, -1, -1, 0, 0, 0);
    EventAdd();
    EventAdd();
    engine::Application::Current()->DeliverEvents();
    Record("execute done");
    return open;
  }
  LONG GetState(BaseDocument* doc) override {
    const Bool isOff = doc != nullptr && doc->GetDocumentName().GetString() == String("off");
    return isOff ? 2 : CommandData::GetState(doc);
  }
  Bool RestoreLayout(void* secret) override {
    Record("restore layout");
    return dialog_.RestoreLayout(test_plugins::kGoodCommand, 0, secret);
  }

 private:
  GoodDialog dialog_;
};

// Path and name of a document, as the hook sees them.
String Seen(GeListNode* node) {
  const auto* doc = static_cast<BaseDocument*>(node);
  return (doc->GetDocumentPath() + doc->GetDocumentName()).GetString();
}

class GoodHook : public SceneHookData {
 public:
  static SceneHookData* Alloc() { return new GoodHook; }
  ~GoodHook() override { Record("hook destroyed"); }
  Bool Init(GeListNode* node) override {
    Record("hook init " + Seen(node));
    return TRUE;
  }
  void Free(GeListNode* node) override { Record("hook free " + Seen(node)); }
  // Says of a save, too, whether its target is there already.
  Bool Message(GeListNode* node, LONG type, void* data) override {
    if (type != MSG_DOCUMENTINFO) return FALSE;
    const auto* info = static_cast<DocumentInfoData*>(data);
    Record("hook " + LongToString(info->type) + ": " + Seen(node) + " to " +
           info->filename.GetString() + (GeFExist(info->filename) ? " (there)" : " (not there)"));
    return TRUE;
  }
};

Filename PathHandedOn() { return GeGetPluginPath(); }

// What nobody could call is refused. A hook that makes no instance is none.
void RegisterNothing() {
  CommandData* nameless = new CommandData;
  if (RegisterCommandPlugin(test_plugins::kNothing, "Nothing", 0, nullptr, "", nullptr) ||
      RegisterCommandPlugin(test_plugins::kNothing, "", 0, nullptr, "", nameless)) {
    Record("nothing is registered");
  } else {
    delete nameless;
  }
  RegisterSceneHookPlugin(
      test_plugins::kNothing, "No Hook", 0, []() -> SceneHookData* { return nullptr; }, 999, 0,
      nullptr);
}

}  // namespace

Bool PluginStart() {
  RegisterNothing();
  Record("start in " + (GeGetPluginPath() == PathHandedOn() ? GeGetPluginPath().GetString()
                                                            : String("two folders")));
  const AutoBitmap icon("icon.png");
  Record(icon == nullptr ? "no icon" : "icon");
  return RegisterCommandPlugin(test_plugins::kGoodCommand, "Good", 0, icon, "Does good",
                               new GoodCommand) &&
         RegisterSceneHookPlugin(test_plugins::kGoodHook, "Good Hook", 0, GoodHook::Alloc, 1000, 0,
                                 nullptr);
}

Bool PluginMessage(LONG id, void*) {
  static GeResource resource;
  Record("message " + LongToString(id));
  return id == 1 && resource.Init();
}

void PluginEnd() { Record("end"); }
