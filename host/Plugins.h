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

// A menu command. Handed over at RegisterCommandPlugin; lives until the plug-in is unloaded.
class CommandData : public BaseData {
 public:
  // A person chose the command. `doc` is the active document or null. Events that it posts are
  // delivered when it has returned. False says that it did nothing.
  virtual Bool Execute(BaseDocument* doc);
  virtual Bool ExecuteSubID(BaseDocument* doc, LONG subid);
  // Whether the command can be chosen now and shows a check mark: bit 1 enabled, bit 2 checked.
  // Asked before Execute, which is left out when it is not enabled. The base answers enabled.
  virtual LONG GetState(BaseDocument* doc);
  virtual Bool GetSubContainer(BaseDocument* doc, BaseContainer& submenu);
  // Called when the host restores its window layout; `secret` goes to GeDialog::RestoreLayout. At
  // start-up, when all plug-ins are loaded, and when a person resets the layout.
  virtual Bool RestoreLayout(void* secret);
  virtual String GetScriptName();
  virtual Bool Message(LONG type, void* data);
};

// Something that lives in every document and hears its messages.
class SceneHookData : public BaseData {
 public:
  // `node` is the document. One instance is made for each document, when it is put into the host's
  // list or the plug-in is loaded; false deletes the instance at once.
  virtual Bool Init(GeListNode* node);
  // Once, before the instance is deleted: the document is closed or the plug-in unloaded.
  virtual void Free(GeListNode* node);
  // `data` belongs to the sender and is what `type` says. True: taken; the other hooks hear it all
  // the same, in order of their priority, lowest first. It may close the document.
  virtual Bool Message(GeListNode* node, LONG type, void* data);
};
using DataAllocator = SceneHookData*();

// The document-information message and its record: sent to the scene hooks of a document.
inline constexpr LONG MSG_DOCUMENTINFO = 1001078;
inline constexpr LONG MSG_DOCUMENTINFO_TYPE_SAVE_BEFORE = 1004;
// `type` SAVE_BEFORE is sent once by the commands Save and Save As, before anything is written and
// while path and name of the document are the old ones. SaveDocument sends nothing.
struct DocumentInfoData {
  LONG type = 0;      // MSG_DOCUMENTINFO_TYPE_...
  Filename filename;  // target of the save
};

// The message "update" of elements and documents.
inline constexpr LONG MSG_UPDATE = 5;

// Registrations, valid inside PluginStart. False when the ID is taken, the name is empty or (hooks)
// the allocator is null; what was handed over is then not taken. The icon is copied and may be
// null. The host owns `data` once this is true. `info` of a command, `disklevel` and `emulation`
// change nothing here.
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

// Folder of the plug-in whose code is running. Found by the library that the call comes from; the
// program's own folder when that is no plug-in.
Filename GeGetPluginPath();

}  // namespace host

// Entry points of a plug-in library. Start-up: PluginMessage(1), then PluginStart; at the end
// PluginEnd.
#if defined(__GNUC__)
#define HOST_PLUGIN_ENTRY extern "C" __attribute__((visibility("default")))
#else
#define HOST_PLUGIN_ENTRY extern "C"
#endif
// PluginStart registers everything; false, or an exception, and the host goes on without this
// plug-in. PluginMessage may refuse the start by answering false to message 1, whose `data` is
// null. PluginEnd runs once, while the registered objects are still alive; the library is closed
// after it. The host tries all of this in a child process before (a damaged library shall end that
// and not the session): nothing in it may change files.
HOST_PLUGIN_ENTRY host::Bool PluginStart();
HOST_PLUGIN_ENTRY host::Bool PluginMessage(host::LONG id, void* data);
HOST_PLUGIN_ENTRY void PluginEnd();
