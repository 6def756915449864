// The published functions that speak to the user.
#include "engine/outside/Outside.h"
#include "host/Application.h"

namespace host {

using engine::Outside;

void MessageDialog(const String& text) { Outside::Current().Tell(text.ToUtf8()); }
Bool QuestionDialog(const String& text) { return Outside::Current().Ask(text.ToUtf8()); }
void StatusSetText(const String& text) { Outside::Current().ShowStatus(text.ToUtf8()); }
void StatusClear() { Outside::Current().ClearStatus(); }

}  // namespace host
