#include "engine/states/RecordedFields.h"

#include <unordered_map>

#include "engine/scene/ElementState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/ValueText.h"
#include "engine/states/RecordList.h"
#include "engine/states/StoredStates.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"

namespace engine {

using host::BaseContainer;
using host::BaseList2D;
using host::GeData;
using host::LONG;

namespace {

// As setting a mode of an object takes it: what is neither on nor off is undefined.
LONG AppliedMode(LONG mode) {
  return mode == host::MODE_ON || mode == host::MODE_OFF ? mode : host::MODE_UNDEF;
}

// In the order in which they are recorded.
constexpr host::Bool host::LayerData::*kFlags[] = {
    &host::LayerData::solo,      &host::LayerData::view,        &host::LayerData::render,
    &host::LayerData::manager,   &host::LayerData::locked,      &host::LayerData::generators,
    &host::LayerData::deformers, &host::LayerData::expressions, &host::LayerData::animation};

GeData ValueIn(const ContainerBody* record, LONG key) {
  const std::optional<Entry> entry = FindEntry(record, key);
  return entry ? ValueAccess::Share(entry->Get()) : GeData();
}

template <class Visit>
void ForEachStored(const ContainerBody* body, Visit visit) {
  std::uint32_t next = 0;
  for (EntrySpan entries = NextEntries(body, next); !entries.empty();
       entries = NextEntries(body, next)) {
    for (const Entry& entry : entries) visit(entry);
  }
}

// All entries of a container but a tag's link to itself.
Fields EntriesOf(const ContainerBody* body) {
  Fields fields;
  ForEachStored(body, [&](const Entry& entry) {
    if (entry.key != kStoredTagLink) fields.push_back({entry.key, ValueAccess::Share(entry.Get())});
  });
  return fields;
}

Fields Modes(LONG editor, LONG render, bool deform) {
  return {{kFieldEditorMode, AppliedMode(editor)},
          {kFieldRenderMode, AppliedMode(render)},
          {kFieldDeformMode, LONG{deform}}};
}

bool SameBlocks(const ContainerBody* a, const ContainerBody* b) {
  return SameBodies(a, b, OwnIds::kIgnored);
}

// Whether two records are alike but for the link to the tag.
bool SameButLink(const ContainerBody* a, const ContainerBody* b) {
  if (!a || !b || SizeOf(a) != SizeOf(b) || a->IsLong() || b->IsLong()) return false;
  const EntrySpan left = a->All();
  const EntrySpan right = b->All();
  for (std::size_t i = 0; i < left.size(); ++i) {
    const Entry one = left[i];
    const Entry two = right[i];
    if (one.key != two.key) return false;
    if (one.key != kStoredTagLink && !SameValues(one.Get(), two.Get(), OwnIds::kIgnored))
      return false;
  }
  return true;
}

const ContainerBody* DataOf(const BaseList2D& element) {
  return ContainerAccess::Body(*element.GetDataInstance());
}

bool IsZero(const GeData& value) {
  return value.GetType() == host::DA_NIL ||
         ((value.GetType() == host::DA_LONG || value.GetType() == host::DA_REAL) &&
          value.GetReal() == 0);
}

// `id`, or 0 where the material is gone.
NodeId LiveMaterial(const host::BaseDocument& doc, NodeId id) {
  return AsMaterial(FindNode(&doc, id)) ? id : 0;
}

// An effect or a pass with all that makes it differ from another one.
std::string EffectText(const BaseList2D& effect) {
  std::string text = effect.GetTypeName().ToUtf8();
  const std::string name = effect.GetName().ToUtf8();
  if (!name.empty() && name != text) text += " " + Quoted(effect.GetName());
  text += effect.GetBit(host::BIT_DISABLED) ? ", off" : ", on";
  ForEachEntry(*effect.GetDataInstance(), [&](LONG key, const GeData& value) {
    const auto number = [](NodeId id) { return std::to_string(id); };
    text += ", " + std::to_string(key) + " = " + ValueText(value, number);
  });
  return text;
}

}  // namespace

Fields FieldsOfSettings(const host::RenderData& settings) {
  Fields fields;
  ForEachStored(DataOf(settings), [&](const Entry& entry) {
    fields.push_back({entry.key, ValueAccess::Share(entry.Get())});
  });
  LONG field = kFieldEffects;
  const auto add = [&](const BaseList2D& effect) {
    fields.push_back({field--, host::String(EffectText(effect).c_str())});
  };
  for (const auto* post = settings.GetFirstVideoPost(); post; post = post->GetNext()) add(*post);
  for (const auto* pass = settings.GetFirstMultipass(); pass; pass = pass->GetNext()) add(*pass);
  return fields;
}

Fields FieldsOfRecord(const host::BaseDocument& doc, Part part, const ContainerBody* record) {
  if (!record) return {};
  Fields fields;
  switch (part) {
    case Part::RenderSettings:
    case Part::Camera:
      break;
    case Part::Objects:
      return Modes(NumberIn(record, kStoredEditorMode), NumberIn(record, kStoredRenderMode),
                   NumberIn(record, kStoredDeformMode) != 0);
    case Part::Layers:
      for (LONG i = 0; i < 9; ++i) {
        fields.push_back(
            {kFieldLayerFlags - i, LONG{NumberIn(record, kStoredLayerFlags + i) != 0}});
      }
      break;
    case Part::Materials:
      fields.push_back(
          {kFieldTagMaterial, LinkValue(LiveMaterial(doc, LinkIn(record, kStoredMaterialLink)))});
      break;
    case Part::CompositingTags:
      for (const auto& [parameter, key] : kCompositingParameters)
        fields.push_back({parameter, ValueIn(record, key)});
      break;
    default:
      return EntriesOf(record);
  }
  return fields;
}

Fields FieldsInScene(const host::BaseDocument& doc, Part part, const BaseList2D& element) {
  Fields fields;
  switch (part) {
    case Part::RenderSettings:
    case Part::Camera:
      break;
    case Part::Objects: {
      const auto& object = static_cast<const host::BaseObject&>(element);
      return Modes(object.GetEditorMode(), object.GetRenderMode(), object.GetDeformMode() != 0);
    }
    case Part::Layers: {
      const host::LayerData& data = OwnLayerData(static_cast<const host::LayerObject&>(element));
      for (LONG i = 0; i < 9; ++i) fields.push_back({kFieldLayerFlags - i, LONG{data.*kFlags[i]}});
      break;
    }
    case Part::Materials:
      fields.push_back({kFieldTagMaterial,
                        LinkValue(LiveMaterial(
                            doc, MaterialIdOf(static_cast<const host::TextureTag&>(element))))});
      break;
    case Part::CompositingTags:
      for (const auto& [parameter, key] : kCompositingParameters) {
        if (element.GetDataInstance()->FindIndex(parameter) != host::NOTOK)
          fields.push_back({parameter, element.GetDataInstance()->GetData(parameter)});
      }
      break;
    default:
      return EntriesOf(DataOf(element));
  }
  return fields;
}

// The answer that comparing the lists of fields would give, without making them: it is asked for
// every element of a scene, most of which are as recorded.
bool SceneComparison::IsAsRecorded(Part part, const BaseList2D& element,
                                   const ContainerBody* record) {
  switch (part) {
    case Part::RenderSettings:
    case Part::Camera:
      return true;
    case Part::Objects: {
      const auto& object = static_cast<const host::BaseObject&>(element);
      return object.GetEditorMode() == AppliedMode(NumberIn(record, kStoredEditorMode)) &&
             object.GetRenderMode() == AppliedMode(NumberIn(record, kStoredRenderMode)) &&
             (object.GetDeformMode() != 0) == (NumberIn(record, kStoredDeformMode) != 0);
    }
    case Part::Layers: {
      const host::LayerData& data = OwnLayerData(static_cast<const host::LayerObject&>(element));
      for (LONG i = 0; i < 9; ++i) {
        if ((data.*kFlags[i] != 0) != (NumberIn(record, kStoredLayerFlags + i) != 0)) return false;
      }
      return true;
    }
    case Part::Materials: {
      const NodeId now = MaterialIdOf(static_cast<const host::TextureTag&>(element));
      const NodeId recorded = LinkIn(record, kStoredMaterialLink);
      return LiveMaterial(doc_, now) == LiveMaterial(doc_, recorded);
    }
    case Part::CompositingTags:
      return IsCompositingAsRecorded(element, record);
    default:
      return SameBlocks(DataOf(element), record) ||
             (!everyEntry_ &&
              FieldsThatDiffer(EntriesOf(DataOf(element)), EntriesOf(record)).empty());
  }
}

// Compositing tags are mostly alike in long rows. Where data and record are those of the tag
// before, its answer holds, and comparing shared containers costs next to nothing (decision 17).
bool SceneComparison::IsCompositingAsRecorded(const BaseList2D& tag, const ContainerBody* record) {
  const BaseContainer& data = *tag.GetDataInstance();
  if (likeRecord_ && SameButLink(likeRecord_, record) && likeData_ == data) return likeResult_;
  likeData_ = data;
  likeRecord_ = record;
  likeResult_ = true;
  const ContainerBody* body = DataOf(tag);
  for (const auto& [parameter, key] : kCompositingParameters) {
    const std::optional<Entry> was = FindEntry(body, parameter);
    const std::optional<Entry> recorded = FindEntry(record, key);
    const Value is = recorded ? recorded->Get() : Value();
    if (was ? SameValues(was->Get(), is, OwnIds::kIgnored)
            : !everyEntry_ && IsZero(ValueAccess::Share(is)))
      continue;
    likeResult_ = false;
    break;
  }
  return likeResult_;
}

std::vector<FieldChange> FieldsThatDiffer(const Fields& left, const Fields& right,
                                          bool nothingIsZero) {
  std::unordered_map<LONG, const GeData*> others;
  for (const FieldNow& field : right) others.emplace(field.field, &field.value);
  std::vector<FieldChange> changes;
  for (const FieldNow& field : left) {
    const auto other = others.find(field.field);
    if (other == others.end()) {
      if (!nothingIsZero || !IsZero(field.value))
        changes.push_back({field.field, field.value, std::nullopt});
      continue;
    }
    if (*other->second != field.value)
      changes.push_back({field.field, field.value, *other->second});
    others.erase(other);
  }
  for (const FieldNow& field : right) {
    if (others.contains(field.field) && (!nothingIsZero || !IsZero(field.value)))
      changes.push_back({field.field, std::nullopt, field.value});
  }
  return changes;
}

}  // namespace engine
