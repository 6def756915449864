#include "engine/editing/RenderSettingsCommands.h"

#include "engine/scene/NewNodes.h"
#include "engine/undo/Undo.h"
#include "host/Application.h"
#include "host/Parameters.h"

namespace engine {

using host::BaseDocument;
using host::LONG;
using host::RenderData;

namespace {

bool IsOf(const BaseDocument& doc, const RenderData* settings) {
  return settings && settings->GetDocument() == &doc;
}

bool IsLast(const BaseDocument& doc, const RenderData* settings) {
  return doc.GetFirstRenderData() == settings && !settings->GetNext();
}

}  // namespace

RenderData* AddRenderSettings(BaseDocument& doc) {
  RenderData* last = doc.GetFirstRenderData();
  // A document is never without settings.
  while (last->GetNext()) last = last->GetNext();
  RenderData* settings = RenderData::Alloc();
  MakeNameUnique(*settings, doc.GetFirstRenderData());
  {
    const UndoScope scope(doc, "New Render Settings");
    doc.InsertRenderData(settings, nullptr, last);
    doc.AddUndo(host::UNDO_NEW, settings);
  }
  host::EventAdd();
  return settings;
}

SettingsList DuplicateRenderSettings(BaseDocument& doc, const SettingsList& settings) {
  SettingsList copies;
  {
    const UndoScope scope(doc, "Duplicate Render Settings");
    for (RenderData* source : settings) {
      if (!IsOf(doc, source)) continue;
      RenderData* copy = AsRenderData(source->GetClone(0, nullptr));
      if (!copy) continue;
      MakeNameUnique(*copy, doc.GetFirstRenderData());
      doc.InsertRenderData(copy, source->GetUp(), source);
      doc.AddUndo(host::UNDO_NEW, copy);
      copies.push_back(copy);
    }
  }
  host::EventAdd();
  return copies;
}

void DeleteRenderSettings(BaseDocument& doc, const SettingsList& settings) {
  bool isLeft = false;
  {
    const UndoScope scope(doc, "Delete Render Settings");
    for (RenderData* each : settings) {
      // Settings below deleted ones are gone with them.
      if (!IsOf(doc, each)) continue;
      // Asked before each deletion: the one that is left in the end depends on the order.
      isLeft = isLeft || IsLast(doc, each);
      if (IsLast(doc, each)) continue;
      doc.AddUndo(host::UNDO_DELETE, each);
      RenderData::Free(each);
    }
  }
  if (isLeft) host::StatusSetText("A scene keeps one of its render settings.");
  host::EventAdd();
}

void ActivateRenderSettings(BaseDocument& doc, RenderData& settings) {
  {
    const UndoScope scope(doc, "Activate Render Settings");
    // Nothing is registered: the undo group remembers which settings were in use.
    doc.SetActiveRenderData(&settings);
  }
  host::EventAdd();
}

void RenameRenderSettings(BaseDocument& doc, RenderData& settings, const host::String& name) {
  {
    const UndoScope scope(doc, "Rename");
    doc.AddUndo(host::UNDO_CHANGE, &settings);
    settings.SetName(name);
  }
  host::EventAdd();
}

void SetRenderSize(BaseDocument& doc, LONG width, LONG height) {
  host::RenderData* settings = doc.GetActiveRenderData();
  doc.AddUndo(host::UNDO_CHANGE, settings);
  settings->GetDataInstance()->SetLong(host::RDATA_XRES, width);
  settings->GetDataInstance()->SetLong(host::RDATA_YRES, height);
}

void SetRenderFrames(BaseDocument& doc, LONG from, LONG to) {
  host::RenderData* settings = doc.GetActiveRenderData();
  doc.AddUndo(host::UNDO_CHANGE, settings);
  host::BaseContainer& data = *settings->GetDataInstance();
  const LONG rate = data.GetLong(host::RDATA_FRAMERATE, 30);
  // "From - to", or the two frames would say nothing.
  data.SetLong(host::RDATA_FRAMESEQUENCE, 0);
  data.SetTime(host::RDATA_FRAMEFROM, host::BaseTime(from, rate));
  data.SetTime(host::RDATA_FRAMETO, host::BaseTime(to, rate));
}

}  // namespace engine
