// Reading goes in three stages, each in steps: identities become elements, the elements decide by
// their types which groups of fields there are, and all of them are asked for each field until it
// is known to be mixed. A field that is mixed drops out, so that in a scene of very unlike elements
// hardly any is left to ask for.
#include "program/desktop/attributes/AttributeReading.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <map>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/Text.h"
#include "program/desktop/attributes/FieldEditing.h"

namespace desktop {

namespace {

using engine::NodeKind;
using host::BaseList2D;

// A person reads no more switches than that; a file may hold any number of them.
constexpr int kMostPosts = 100;
constexpr int kLongestLabel = 60;
constexpr qsizetype kMostKinds = 3;

// One element of each type: fields depend on nothing else.
std::map<host::LONG, const BaseList2D*> OneOfEachType(const ElementList& elements) {
  std::map<host::LONG, const BaseList2D*> types;
  const BaseList2D* last = nullptr;
  for (const BaseList2D* element : elements) {
    if (!last || last->GetType() != element->GetType()) types.emplace(element->GetType(), element);
    last = element;
  }
  return types;
}

AttributeGroup GroupOf(const engine::FieldSection& section, const engine::SharedIds& elements) {
  AttributeGroup group{section.title, section.folded, {}};
  for (const engine::Field& field : section.fields)
    group.lines.push_back({&field, field.label, elements});
  return group;
}

// A section is shown when it fits every type that occurs.
void AddSections(std::vector<AttributeGroup>& groups, const ElementList& elements,
                 const engine::SharedIds& ids) {
  const auto types = OneOfEachType(elements);
  for (const engine::FieldSection& section : engine::FieldSections()) {
    const bool applies = std::all_of(types.begin(), types.end(), [&](const auto& t) {
      return t.second->IsInstanceOf(section.type);
    });
    if (applies) groups.push_back(GroupOf(section, ids));
  }
}

engine::SharedIds Only(const host::GeListNode& node) {
  return std::make_shared<engine::Ids>(engine::Ids{engine::IdOf(node)});
}

// A switch for each post or pass.
template <class Node>
void AddSwitches(std::vector<AttributeGroup>& groups, const char* title, const Node* first) {
  AttributeGroup group{title, false, {}};
  for (const Node* node = first; node && group.lines.size() < kMostPosts; node = node->GetNext()) {
    group.lines.push_back(
        {&engine::InUseField(), ToQt(node->GetName()).left(kLongestLabel), Only(*node)});
  }
  if (!group.lines.empty()) groups.push_back(std::move(group));
}

// Groups of one render settings besides its own fields: post effects and multi-passes. Of one
// settings only: those of several have nothing to do with each other.
void AddOfSettings(std::vector<AttributeGroup>& groups, const host::RenderData& settings) {
  AddSwitches(groups, "Post Effects", settings.GetFirstVideoPost());
  AddSwitches(groups, "Multi-Pass", settings.GetFirstMultipass());
  int count = 0;
  for (host::BaseVideoPost* post = settings.GetFirstVideoPost(); post && count < kMostPosts;
       post = post->GetNext(), ++count) {
    AddSections(groups, {post}, Only(*post));
  }
}

void AddCamera(std::vector<AttributeGroup>& groups, const host::BaseDocument& doc) {
  groups.push_back({"View",
                    false,
                    {{&engine::SceneCameraField(), engine::SceneCameraField().label, Only(doc)}}});
}

QString Plural(NodeKind kind) {
  switch (kind) {
    case NodeKind::Object:
      return "objects";
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag:
      return "tags";
    case NodeKind::Material:
      return "materials";
    case NodeKind::Layer:
      return "layers";
    case NodeKind::RenderSettings:
      return "render settings";
    default:
      return "elements";
  }
}

}  // namespace

// Whether the widgets of one can show the other. Elements and values may differ.
bool AttributeGroup::LooksLike(const AttributeGroup& other) const {
  return title == other.title &&
         std::equal(lines.begin(), lines.end(), other.lines.begin(), other.lines.end(),
                    [](const auto& a, const auto& b) { return a.LooksLike(b); });
}

// With nothing selected the document itself is what is looked at.
std::vector<AttributeGroup> GroupsFor(host::BaseDocument& doc, const ElementList& elements,
                                      const engine::SharedIds& ids) {
  std::vector<AttributeGroup> groups;
  if (elements.empty()) {
    AddSections(groups, {&doc}, Only(doc));
    return groups;
  }
  AddSections(groups, elements, ids);
  const host::RenderData* settings = engine::AsRenderData(elements.front());
  if (settings) AddCamera(groups, doc);
  if (settings && elements.size() == 1) AddOfSettings(groups, *settings);
  return groups;
}

QString TitleOf(const ElementList& elements) {
  if (elements.empty()) return "Nothing is selected";
  const BaseList2D& first = *elements.front();
  if (elements.size() == 1) return ToQt(first.GetName()).simplified();
  return QLocale(QLocale::English).toString(static_cast<qulonglong>(elements.size())) + " " +
         Plural(engine::KindOf(first));
}

QString KindsOf(const ElementList& elements) {
  QStringList names;
  for (const auto& type : OneOfEachType(elements))
    names.push_back(ToQt(type.second->GetTypeName()));
  if (names.size() <= kMostKinds) return names.join(", ");
  return names.mid(0, kMostKinds).join(", ") + " ...";
}

AttributeReading::AttributeReading(host::BaseDocument& doc, engine::SharedIds elements)
    : doc_(doc), ids_(std::move(elements)) {
  if (ids_->empty()) BeginValues();
}

// One stage a call: a step of the next one may be dearer than what is left of this.
bool AttributeReading::Advance(std::size_t elements) {
  if (found_ < ids_->size()) {
    FindMore(elements);
  } else if (!undecided_.empty() && lookedAt_ < living_.size()) {
    LookAtMore(elements);
  }
  const bool isRead = found_ == ids_->size() && (undecided_.empty() || lookedAt_ == living_.size());
  if (isRead) EndValues();
  return isRead;
}

// Elements that are gone since they were selected are left out.
void AttributeReading::FindMore(std::size_t elements) {
  const std::size_t end = std::min(ids_->size(), found_ + elements);
  for (; found_ < end; ++found_) {
    if (host::BaseList2D* element = engine::FindElement(doc_, (*ids_)[found_]))
      living_.push_back(element);
  }
  if (found_ == ids_->size()) BeginValues();
}

// `common_` has all its values before `undecided_` points into it.
void AttributeReading::BeginValues() {
  groups_ = GroupsFor(doc_, living_, ids_);
  for (const AttributeGroup& group : groups_) {
    for (const AttributeLine& line : group.lines) {
      if (line.elements == ids_ && !living_.empty())
        common_.emplace_back(*line.field, *living_.front());
    }
  }
  for (engine::CommonValue& common : common_) undecided_.push_back(&common);
}

void AttributeReading::LookAtMore(std::size_t elements) {
  const std::size_t end = std::min(living_.size(), lookedAt_ + elements);
  for (; lookedAt_ < end && !undecided_.empty(); ++lookedAt_) {
    std::erase_if(undecided_, [&](engine::CommonValue* common) {
      return !common->LookAt(*living_[lookedAt_]);
    });
  }
}

// Lines with elements of their own, such as a post effect, have one element or a few and are read
// here at once. The values stand in the order of the lines.
void AttributeReading::EndValues() {
  auto common = common_.begin();
  for (const AttributeGroup& group : groups_) {
    for (const AttributeLine& line : group.lines) {
      std::optional<engine::FieldValue> value;
      if (line.elements == ids_ && common != common_.end()) {
        value = (common++)->Value();
      } else if (const ElementList own = engine::ElementsOf(doc_, *line.elements); !own.empty()) {
        engine::CommonValue all(*line.field, *own.front());
        for (const host::BaseList2D* element : own) all.LookAt(*element);
        value = all.Value();
      }
      values_.push_back(std::move(value));
    }
  }
}

}  // namespace desktop
