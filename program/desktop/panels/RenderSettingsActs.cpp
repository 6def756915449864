#include "program/desktop/panels/RenderSettingsActs.h"

#include "engine/scene/Nodes.h"
#include "engine/undo/Undo.h"
#include "host/Application.h"

namespace desktop {

using host::BaseDocument;
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
  while (last->GetNext()) last = last->GetNext();
  RenderData* settings = RenderData::Alloc();
  engine::MakeNameUnique(*settings, doc.GetFirstRenderData());
  {
    const engine::UndoScope scope(doc, "New Render Settings");
    doc.InsertRenderData(settings, nullptr, last);
    doc.AddUndo(host::UNDO_NEW, settings);
  }
  host::EventAdd();
  return settings;
}

SettingsList DuplicateRenderSettings(BaseDocument& doc, const SettingsList& settings) {
  SettingsList copies;
  {
    const engine::UndoScope scope(doc, "Duplicate Render Settings");
    for (RenderData* source : settings) {
      if (!IsOf(doc, source)) continue;
      RenderData* copy = engine::AsRenderData(source->GetClone(0, nullptr));
      if (!copy) continue;
      engine::MakeNameUnique(*copy, doc.GetFirstRenderData());
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
    const engine::UndoScope scope(doc, "Delete Render Settings");
    for (RenderData* each : settings) {
      // What hung below another one has gone with it.
      if (!IsOf(doc, each)) continue;
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
    const engine::UndoScope scope(doc, "Activate Render Settings");
    doc.SetActiveRenderData(&settings);
  }
  host::EventAdd();
}

void RenameRenderSettings(BaseDocument& doc, RenderData& settings, const host::String& name) {
  {
    const engine::UndoScope scope(doc, "Rename");
    doc.AddUndo(host::UNDO_CHANGE, &settings);
    settings.SetName(name);
  }
  host::EventAdd();
}

}  // namespace desktop
