// The classes that a plug-in derives from, their registration, and the entry points that its
// library exports. The host owns registered command objects and hooks. Main thread.
#pragma once

#include "host/BaseBitmap.h"
#include "host/BaseContainer.h"

namespace host {

class BaseDocument;
class GeListNode;

class BaseData {
 public:
  virtual ~BaseData() = default;
};

// A menu command.
class CommandData : public BaseData {
 public:
  virtual Bool Execute(BaseDocument* doc);
  virtual Bool ExecuteSubID(BaseDocument* doc, LONG subid);
  // Whether the command can be chosen now and shows a check mark: bit 1 enabled, bit 2 checked.
  virtual LONG GetState(BaseDocument* doc);
  virtual Bool GetSubContainer(BaseDocument* doc, BaseContainer& submenu);
  // Called when the host restores its window layout; `secret` goes to GeDialog::RestoreLayout.
  virtual Bool RestoreLayout(void* secret);
  virtual String GetScriptName();
  virtual Bool Message(LONG type, void* data);
};

// Something that lives in every document and hears its messages.
class SceneHookData : public BaseData {
 public:
  virtual Bool Init(GeListNode* node);
  virtual void Free(GeListNode* node);
  virtual Bool Message(GeListNode* node, LONG type, void* data);
};
using DataAllocator = SceneHookData*();

// The document-information message and its record: sent to the scene hooks of a document.
inline constexpr LONG MSG_DOCUMENTINFO = 1001078;
inline constexpr LONG MSG_DOCUMENTINFO_TYPE_SAVE_BEFORE = 1004;
struct DocumentInfoData {
  LONG type = 0;      // MSG_DOCUMENTINFO_TYPE_...
  Filename filename;  // target of the save
};

// The message "update" of elements and documents.
inline constexpr LONG MSG_UPDATE = 5;

// Registrations, valid inside PluginStart. False when the ID is taken, the name is empty or (hooks)
// the allocator is null; what was handed over is then not taken. The icon is copied and may be
// null.
Bool RegisterCommandPlugin(LONG id, const String& name, LONG info, BaseBitmap* icon,
                           const String& help, CommandData* data);
Bool RegisterSceneHookPlugin(LONG id, const String& name, LONG info, DataAllocator* allocator,
                             LONG priority, LONG disklevel, void* emulation);

// The strings and descriptions in a plug-in's resource folder.
class GeResource {
 public:
  // With no path: the folder "res" under the plug-in path. False when that is no readable folder.
  Bool Init();
  Bool Init(const Filename& path);

 private:
  Filename path_;
};

// Folder of the plug-in whose code is running.
Filename GeGetPluginPath();

}  // namespace host

// Entry points of a plug-in library. Start-up: PluginMessage(1), then PluginStart; at the end
// PluginEnd.
#if defined(__GNUC__)
#define HOST_PLUGIN_ENTRY extern "C" __attribute__((visibility("default")))
#else
#define HOST_PLUGIN_ENTRY extern "C"
#endif
HOST_PLUGIN_ENTRY host::Bool PluginStart();
HOST_PLUGIN_ENTRY host::Bool PluginMessage(host::LONG id, void* data);
HOST_PLUGIN_ENTRY void PluginEnd();
