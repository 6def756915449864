// The application as a plug-in sees it: documents, messages to the user, events, preferences,
// rendering. The host owns every inserted document. Main thread.
#pragma once

#include "host/BaseBitmap.h"
#include "host/BaseContainer.h"
#include "host/C4DThread.h"

namespace host {

class BaseDocument;

// The active document, or null when none is open.
BaseDocument* GetActiveDocument();
// Makes an inserted document the active one; one that is not inserted changes nothing.
void SetActiveDocument(BaseDocument* doc);
// Hands a document over to the host's list. Does not make it active.
void InsertBaseDocument(BaseDocument* doc);
// Takes a document out of the list and destroys it. When it was active another one of the list
// becomes active.
void KillDocument(BaseDocument* doc);
// First document of the list (then GetNext), or null.
BaseDocument* GetFirstDocument();

// The native scene format.
inline constexpr LONG FORMAT_C4DEXPORT = 1001026;
// Writes a document; replaces the file atomically. Leaves the document's own path and name as they
// are and sends no document message. False when it failed; the old file is then whole.
Bool SaveDocument(BaseDocument* doc, const Filename& file, LONG flags, LONG format);

// Posts a change: the host delivers one core message 604 later, never inside a running command.
void EventAdd(LONG flags = 0);

// Tells the user something; asks and returns true on yes.
void MessageDialog(const String& text);
Bool QuestionDialog(const String& text);
// The host's status line.
void StatusSetText(const String& text);
void StatusClear();

// Preferences of plug-ins, kept with the user. False and null when there are none under `id`. The
// pointer is valid until the next SetWorldPluginData. With `add` the entries are merged in, else
// they replace.
const BaseContainer* GetWorldPluginData(LONG id);
Bool SetWorldPluginData(LONG id, const BaseContainer& data, Bool add = TRUE);

// Global texture path `index` (0..9); empty where none is set.
Filename GetGlobalTexturePath(LONG index);

// Called now and then during a long operation with its progress, 0..1.
using ProgressHook = void(Real progress, LONG type, void* context);
// Flags of RenderDocument, handed through as numbers.
inline constexpr LONG RENDERRESULT_OK = 0;
inline constexpr LONG RENDERRESULT_OUTOFMEMORY = 1;
inline constexpr LONG RENDERRESULT_USERBREAK = 5;
inline constexpr LONG RENDERRESULT_FAILED = 9;
// Renders `doc` with `settings` (parameters of render settings) into `bitmap`, which is initialized
// already. `progress`, `thread` may be null. Returns a RENDERRESULT_ number.
LONG RenderDocument(BaseDocument* doc, const BaseContainer& settings, ProgressHook* progress,
                    void* context, BaseBitmap* bitmap, LONG flags, BaseThread* thread);

}  // namespace host
