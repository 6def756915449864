// What one does to the render settings of a document, each in one undo step, and told to the views.
// Settings that are gone are left out. Main thread.
#pragma once

#include <vector>

#include "host/BaseDocument.h"
#include "host/RenderData.h"

namespace desktop {

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

}  // namespace desktop
