// Commands on the render settings of a document. Each is one undo step and posts the change, but
// for those that say that they are a part of the open undo group. Settings that are gone are left
// out. Main thread.
#pragma once

#include <vector>

#include "host/BaseDocument.h"
#include "host/RenderData.h"

namespace engine {

using SettingsList = std::vector<host::RenderData*>;

// New settings with the host's defaults and a name of their own, behind all others.
host::RenderData* AddRenderSettings(host::BaseDocument& doc);
// A copy of each right behind it, with a name of its own. The copies, in the order of the list.
SettingsList DuplicateRenderSettings(host::BaseDocument& doc, const SettingsList& settings);
// A document keeps one of them: the last one stays, which is told in the status line.
void DeleteRenderSettings(host::BaseDocument& doc, const SettingsList& settings);
void ActivateRenderSettings(host::BaseDocument& doc, host::RenderData& settings);
void RenameRenderSettings(host::BaseDocument& doc, host::RenderData& settings,
                          const host::String& name);

// Picture size in pixels, and first and last frame, of the active render settings, as parts of the
// open undo group; nothing is posted.
void SetRenderSize(host::BaseDocument& doc, host::LONG width, host::LONG height);
void SetRenderFrames(host::BaseDocument& doc, host::LONG from, host::LONG to);

}  // namespace engine
