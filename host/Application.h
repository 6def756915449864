// The application as a plug-in sees it: documents, messages to the user, events, preferences,
// rendering. The host owns every inserted document. Main thread.
#pragma once

#include "host/BaseBitmap.h"
#include "host/BaseContainer.h"
#include "host/C4DThread.h"

namespace host {

class BaseDocument;

// The active document, or null when none is open. Not owned by the caller. Valid until that
// document is killed, which a person may do between any two calls of the host into the plug-in: ask
// anew in each, do not keep it.
BaseDocument* GetActiveDocument();
// Makes an inserted document the active one; one that is not inserted changes nothing.
void SetActiveDocument(BaseDocument* doc);
// Hands a document over to the host's list. Does not make it active. Null and a document that is in
// the list already change nothing.
void InsertBaseDocument(BaseDocument* doc);
// Takes a document out of the list and destroys it. When it was active another one of the list
// becomes active. Unsaved changes are not asked about. All pointers into the document are dead
// afterwards; one that is not in the list is left alone.
void KillDocument(BaseDocument* doc);
// First document of the list (then GetNext), or null.
BaseDocument* GetFirstDocument();

// The native scene format.
inline constexpr LONG FORMAT_C4DEXPORT = 1001026;
// Writes a document; replaces the file atomically. Leaves the document's own path and name as they
// are and sends no document message. False when it failed; the old file is then whole. `flags`
// change nothing, `format` is FORMAT_C4DEXPORT or the call fails. The reason of a failure is in the
// host's ledger, not in the answer.
Bool SaveDocument(BaseDocument* doc, const Filename& file, LONG flags, LONG format);

// Posts a change: the host delivers one core message 604 later, never inside a running command.
// Call it once after a change that others shall see; many calls before the delivery make one
// message. Any thread may call it. `flags` change nothing.
void EventAdd(LONG flags = 0);

// Tells the user something; asks and returns true on yes. Both return when the person has answered.
// A program that runs without a person answers by itself: expect a no.
void MessageDialog(const String& text);
Bool QuestionDialog(const String& text);
// The host's status line. It stays until it is replaced or cleared, also after the command has
// ended.
void StatusSetText(const String& text);
void StatusClear();

// Preferences of plug-ins, kept with the user. False and null when there are none under `id`. The
// pointer is valid until the next SetWorldPluginData. With `add` the entries are merged in, else
// they replace. `id` is the plug-in's own registered number: others share the file. Set writes the
// file before it returns; false when that failed, for a missing folder or a full disk.
const BaseContainer* GetWorldPluginData(LONG id);
Bool SetWorldPluginData(LONG id, const BaseContainer& data, Bool add = TRUE);

// Global texture path `index` (0..9); empty where none is set. Set by the person for all scenes;
// searched for textures after the scene's own folder.
Filename GetGlobalTexturePath(LONG index);

// Called now and then during a long operation with its progress, 0..1. On the thread that renders.
// `type` is 0, `context` the pointer that was handed to RenderDocument. It must not change the
// document.
using ProgressHook = void(Real progress, LONG type, void* context);
// Results of RenderDocument.
inline constexpr LONG RENDERRESULT_OK = 0;
inline constexpr LONG RENDERRESULT_OUTOFMEMORY = 1;
inline constexpr LONG RENDERRESULT_USERBREAK = 5;
inline constexpr LONG RENDERRESULT_FAILED = 9;
// Renders `doc` with `settings` (parameters of render settings) into `bitmap`, which is initialized
// already. `progress`, `thread` may be null. Returns a RENDERRESULT_ number. Size and frame come
// from `settings` (RDATA_), the size of the bitmap where they name none; the bitmap is made anew
// when its size is another. It blocks until the picture is done or `thread` says stop, and reads
// `doc` all the while: from a thread of its own hand it a copy that nobody else knows. After
// USERBREAK and FAILED the bitmap is as it was.
LONG RenderDocument(BaseDocument* doc, const BaseContainer& settings, ProgressHook* progress,
                    void* context, BaseBitmap* bitmap, LONG flags, BaseThread* thread);

}  // namespace host
