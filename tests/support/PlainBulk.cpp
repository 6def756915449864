#include "tests/support/PlainBulk.h"

#include <utility>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "host/LayerObject.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/PluginIds.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace tests::plain {

using namespace host;
namespace sm = stagemarks;

namespace {

// Where one kind of item is recorded.
struct Part {
  LONG key;
  LONG link;
};
constexpr Part kObjects{sm::kObjects, sm::kObjectLink};
constexpr Part kTags{sm::kTags, sm::kTagLink};
constexpr Part kLayers{sm::kLayers, sm::kLayerLink};

BaseContainer* RecordStore(BaseDocument& doc) {
  return doc.GetDataInstance()->GetContainerInstance(sm::kRecordStore);
}

// Position of the first record that links to the item, -1 without one.
LONG Search(const BaseContainer& records, LONG link, const BaseList2D* item,
            const BaseDocument& doc) {
  for (LONG i = 0; records.GetIndexId(i) != NOTOK; ++i) {
    const BaseContainer* record = records.GetContainerInstance(records.GetIndexId(i));
    if (record && record->GetLink(link, &doc) == item) return i;
  }
  return NOTOK;
}

BaseContainer ObjectRecord(const BaseObject& op) {
  BaseContainer record;
  record.SetLink(sm::kObjectLink, &op);
  record.SetLong(sm::kEditorMode, op.GetEditorMode());
  record.SetLong(sm::kRenderMode, op.GetRenderMode());
  record.SetLong(sm::kDeformMode, op.GetDeformMode());
  return record;
}

BaseContainer CompositingSettings(const BaseTag& tag) {
  BaseContainer settings;
  const BaseContainer data = tag.GetData();
  GeData parameter;
  for (const sm::CompositingRow& row : sm::kCompositing) {
    if (row.reading == sm::Reading::Bool)
      settings.SetLong(row.key, data.GetBool(row.parameter) ? 1 : 0);
    if (row.reading == sm::Reading::Long) settings.SetLong(row.key, data.GetLong(row.parameter));
    if (row.reading == sm::Reading::Real) settings.SetReal(row.key, data.GetReal(row.parameter));
    if (row.reading != sm::Reading::Parameter) continue;
    tag.GetParameter(DescID(row.parameter), parameter, 0);
    settings.SetData(row.key, parameter);
  }
  return settings;
}

// False for a type that is not recorded.
bool CaptureTag(const BaseTag& tag, BaseContainer& settings) {
  const sm::TagTypeRow* row = sm::FindTagType(tag.GetType());
  if (!row) return false;
  settings = BaseContainer();
  if (row->capture == sm::Capture::Texture) {
    settings.SetLink(sm::kMaterialLink, static_cast<const TextureTag&>(tag).GetMaterial());
  } else {
    settings = row->capture == sm::Capture::Generic ? tag.GetData() : CompositingSettings(tag);
  }
  return true;
}

void WriteFlags(BaseContainer& record, const BaseList2D& layer, const BaseDocument& doc) {
  const LayerData data = layer.GetLayerData(&doc, TRUE);
  for (const sm::LayerFlagRow& row : sm::kLayerFlags) record.SetBool(row.key, data.*row.flag);
}

BaseContainer LayerRecord(const BaseList2D& layer, const BaseDocument& doc) {
  BaseContainer record;
  record.SetLink(sm::kLayerLink, &layer);
  WriteFlags(record, layer, doc);
  return record;
}

void AppendAtFreeKey(BaseContainer& records, BaseContainer record) {
  LONG key = 0;
  while (records.FindIndex(key) != NOTOK) ++key;
  record.SetId(key);
  records.SetContainer(key, record);
}

// The record goes under the number of entries.
LONG AppendAtCount(BaseContainer& records, BaseContainer record) {
  LONG count = 0;
  while (records.GetIndexId(count) != NOTOK) ++count;
  record.SetId(count);
  records.SetContainer(count, record);
  return count;
}

void UpdateObjects(BaseContainer& records, const BaseDocument& doc) {
  std::vector<BaseObject*> found;
  for (BaseObject* op = doc.GetFirstObject(); op; op = engine::NextInTree(op)) {
    if (Search(records, kObjects.link, op, doc) == NOTOK) found.push_back(op);
  }
  for (const BaseObject* op : found) AppendAtFreeKey(records, ObjectRecord(*op));
}

void UpdateTags(BaseContainer& records, const BaseDocument& doc) {
  std::vector<BaseTag*> found;
  for (BaseObject* op = doc.GetFirstObject(); op; op = engine::NextInTree(op)) {
    for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (Search(records, kTags.link, tag, doc) == NOTOK) found.push_back(tag);
    }
  }
  BaseContainer record;
  for (BaseTag* tag : found) {
    if (!CaptureTag(*tag, record)) continue;
    record.SetLink(sm::kTagLink, tag);
    AppendAtFreeKey(records, record);
  }
}

void UpdateLayers(BaseContainer& records, const BaseDocument& doc) {
  std::vector<BaseList2D*> found;
  LayerObject* first = static_cast<LayerObject*>(doc.GetLayerObjectRoot()->GetFirst());
  for (LayerObject* layer = first; layer; layer = engine::NextInTree(layer)) {
    if (Search(records, kLayers.link, layer, doc) == NOTOK) found.push_back(layer);
  }
  for (const BaseList2D* layer : found) AppendAtFreeKey(records, LayerRecord(*layer, doc));
}

void SetObject(BaseContainer& records, const BaseObject& op, const BaseDocument& doc) {
  const LONG position = Search(records, kObjects.link, &op, doc);
  if (position == NOTOK) {
    AppendAtCount(records, ObjectRecord(op));
    return;
  }
  BaseContainer& record = *records.GetContainerInstance(records.GetIndexId(position));
  record.SetLong(sm::kEditorMode, op.GetEditorMode());
  record.SetLong(sm::kRenderMode, op.GetRenderMode());
  record.SetLong(sm::kDeformMode, op.GetDeformMode());
}

void SetTag(BaseContainer& records, const BaseTag& tag, const BaseDocument& doc) {
  BaseContainer settings;
  if (!CaptureTag(tag, settings)) return;
  const LONG position = Search(records, kTags.link, &tag, doc);
  if (position == NOTOK) {
    settings.SetLink(sm::kTagLink, &tag);
    AppendAtCount(records, settings);
    return;
  }
  BaseContainer& record = *records.GetContainerInstance(records.GetIndexId(position));
  for (LONG i = 0; i < settings.GetCount(); ++i)
    record.SetData(settings.GetIndexId(i), settings.GetIndexData(i));
}

void SetLayer(BaseContainer& records, const BaseList2D& layer, const BaseDocument& doc) {
  const LONG position = Search(records, kLayers.link, &layer, doc);
  if (position == NOTOK) {
    AppendAtFreeKey(records, LayerRecord(layer, doc));
  } else {
    WriteFlags(*records.GetContainerInstance(records.GetIndexId(position)), layer, doc);
  }
}

// Calls change(record) for each name until it answers false or no record stands for the name.
template <class Change>
bool ForEach(BaseDocument& doc, const Names& names, Change change) {
  BaseContainer* store = RecordStore(doc);
  if (!store) return false;
  const BaseContainer list = doc.GetDataInstance()->GetContainer(sm::kListStore);
  for (const String& name : names) {
    BaseContainer* record = store->GetContainerInstance(StagemarkId(list, name));
    if (!record || !change(*record)) return false;
  }
  return true;
}

void EmptyElement(BaseDocument& doc, LONG id) {
  BaseContainer* record = RecordStore(doc) ? RecordStore(doc)->GetContainerInstance(id) : nullptr;
  BaseContainer* list = doc.GetDataInstance()->GetContainerInstance(sm::kListStore);
  BaseContainer* entry = list ? list->GetContainerInstance(id) : nullptr;
  if (record) {
    RenderData* settings =
        engine::AsRenderData(record->GetContainer(sm::kRender).GetLink(sm::kRenderLink, &doc));
    if (settings) RenderData::Free(settings);
    record->FlushAll();
  }
  if (entry) entry->FlushAll();
}

}  // namespace

LONG StagemarkId(const BaseContainer& listStore, const String& name) {
  LONG elements = 0;
  for (LONG i = 0; listStore.GetIndexId(i) != NOTOK; ++i)
    elements += listStore.GetIndexId(i) != sm::kListBuilt;
  for (LONG i = 0; i < elements; ++i) {
    const BaseContainer entry = listStore.GetContainer(i);
    if (entry.GetString(sm::kName).Compare(name) == 0) return entry.GetId();
  }
  return 0;
}

bool Update(BaseDocument& doc, const Names& names) {
  return ForEach(doc, names, [&](BaseContainer& element) {
    BaseContainer* objects = element.GetContainerInstance(sm::kObjects);
    if (!objects) return false;
    UpdateObjects(*objects, doc);
    BaseContainer* tags = element.GetContainerInstance(sm::kTags);
    if (!tags) return false;
    UpdateTags(*tags, doc);
    BaseContainer* layers = element.GetContainerInstance(sm::kLayers);
    if (!layers) return false;
    UpdateLayers(*layers, doc);
    return true;
  });
}

bool SetObjects(BaseDocument& doc, const Names& names) {
  AtomArray selected;
  doc.GetActiveObjects(selected, GETACTIVEOBJECTFLAGS_CHILDREN);
  if (names.empty()) return false;
  return ForEach(doc, names, [&](BaseContainer& element) {
    BaseContainer* records = element.GetContainerInstance(sm::kObjects);
    for (LONG i = 0; records && i < selected.GetCount(); ++i) {
      SetObject(*records, *static_cast<BaseObject*>(selected.GetIndex(i)), doc);
    }
    return records && selected.GetCount() > 0;
  });
}

bool SetTags(BaseDocument& doc, const Names& names) {
  AtomArray selected;
  doc.GetActiveTags(selected);
  if (names.empty()) return false;
  return ForEach(doc, names, [&](BaseContainer& element) {
    BaseContainer* records = element.GetContainerInstance(sm::kTags);
    for (LONG i = 0; records && i < selected.GetCount(); ++i) {
      SetTag(*records, *static_cast<BaseTag*>(selected.GetIndex(i)), doc);
    }
    return records && selected.GetCount() > 0;
  });
}

bool SetLayers(BaseDocument& doc, const Names& names) {
  return ForEach(doc, names, [&](BaseContainer& element) {
    BaseContainer* records = element.GetContainerInstance(sm::kLayers);
    LayerObject* first = static_cast<LayerObject*>(doc.GetLayerObjectRoot()->GetFirst());
    for (LayerObject* layer = first; records && layer; layer = engine::NextInTree(layer)) {
      if (layer->GetAllBits() & BIT_ACTIVE) SetLayer(*records, *layer, doc);
    }
    return records != nullptr;
  });
}

Names Delete(BaseDocument& doc, const Names& names) {
  Names rows = SortedNames(doc.GetDataInstance()->GetContainer(sm::kListStore));
  for (const String& name : names) {
    EmptyElement(doc, StagemarkId(doc.GetDataInstance()->GetContainer(sm::kListStore), name));
    rows = SortedNames(doc.GetDataInstance()->GetContainer(sm::kListStore));
  }
  return rows;
}

Names UnusedMaterials(const BaseDocument& doc) {
  std::vector<const BaseMaterial*> used;
  const BaseContainer store = doc.GetDataInstance()->GetContainer(sm::kRecordStore);
  for (LONG i = 0; i < store.GetCount(); ++i) {
    const BaseContainer tags = store.GetIndexData(i).GetContainer().GetContainer(sm::kTags);
    for (LONG key = 0; tags.GetIndexId(key) != NOTOK; ++key) {
      const BaseContainer record = tags.GetContainer(key);
      const BaseList2D* tag = record.GetLink(sm::kTagLink, &doc);
      const BaseMaterial* material = record.GetMaterialLink(sm::kMaterialLink, &doc);
      bool known = !tag || tag->GetType() != Ttexture || !material;
      for (const BaseMaterial* other : used) known = known || other == material;
      if (!known) used.push_back(material);
    }
  }
  Names unused;
  for (const BaseMaterial* material = doc.GetFirstMaterial(); material;
       material = material->GetNext()) {
    bool known = false;
    for (const BaseMaterial* other : used) known = known || other == material;
    if (!known) unused.push_back(material->GetName());
  }
  return unused;
}

Names SortedNames(const BaseContainer& listStore) {
  Names names;
  for (LONG i = 0; i < listStore.GetCount(); ++i) {
    const BaseContainer entry = listStore.GetIndexData(i).GetContainer();
    if (entry.GetCount() > 0) names.push_back(entry.GetString(sm::kName));
  }
  for (bool swapped = true; swapped;) {
    swapped = false;
    for (std::size_t i = 1; i < names.size(); ++i) {
      if (names[i - 1].Compare(names[i]) <= 0) continue;
      std::swap(names[i - 1], names[i]);
      swapped = true;
    }
  }
  return names;
}

}  // namespace tests::plain
