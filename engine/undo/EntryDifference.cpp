// What is not alike between the state that an undo entry keeps and the live one.
#include <algorithm>
#include <unordered_map>

#include "engine/scene/NodeTree.h"
#include "engine/scene/ValueText.h"
#include "engine/undo/KeptLists.h"
#include "engine/undo/UndoEntry.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

bool SameEffect(const BaseList2D& a, const BaseList2D& b) {
  return a.GetType() == b.GetType() && a.GetName() == b.GetName() &&
         a.GetBit(host::BIT_DISABLED) == b.GetBit(host::BIT_DISABLED) &&
         Identical(*a.GetDataInstance(), *b.GetDataInstance());
}

bool SameTree(const BaseList2D& a, const BaseList2D& b) {
  const GeListNode* left = &a;
  const GeListNode* right = &b;
  for (; left && right; left = NextInside(*left, a), right = NextInside(*right, b)) {
    if (!SameEffect(static_cast<const BaseList2D&>(*left), static_cast<const BaseList2D&>(*right)))
      return false;
  }
  return !left && !right;
}

bool SameList(const std::vector<BaseList2D*>& kept, const BaseList2D& settings, int slot) {
  const GeListNode* live = FirstIn(settings, slot);
  for (const BaseList2D* was : kept) {
    if (!live || !SameTree(*was, static_cast<const BaseList2D&>(*live))) return false;
    live = live->GetNext();
  }
  return !live;
}

bool SameRest(const std::shared_ptr<void>& rest, const BaseList2D& node) {
  switch (A::Kind(node)) {
    case NodeKind::Object:
      return rest.get() == A::Shape(static_cast<const host::BaseObject&>(node)).get();
    case NodeKind::Layer:
      return *static_cast<const host::LayerData*>(rest.get()) ==
             A::Flags(static_cast<const host::LayerObject&>(node));
    case NodeKind::RenderSettings: {
      const auto& lists = *static_cast<const KeptLists*>(rest.get());
      return SameList(lists.posts, node, kAttached) && SameList(lists.passes, node, kPasses);
    }
    default:
      return true;
  }
}

const char* ModeText(host::LONG mode) {
  return mode == host::MODE_ON ? "on" : mode == host::MODE_OFF ? "off" : "default";
}
const char* SwitchText(bool on) { return on ? "on" : "off"; }

std::string NameOrType(const BaseList2D& node) {
  return Quoted(node.GetName().Content() ? node.GetName() : node.GetTypeName());
}

std::string ElementText(const BaseList2D& node) {
  switch (KindOf(node)) {
    case NodeKind::Object:
      return "object " + NameOrType(node);
    case NodeKind::Layer:
      return "layer " + NameOrType(node);
    case NodeKind::RenderSettings:
      return "render settings " + NameOrType(node);
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag:
      return "tag " + NameOrType(node) + " of " +
             (OwnerOf(node) ? NameOrType(*OwnerOf(node)) : "nothing");
    default:
      return NameOrType(node);
  }
}

// Lines "element what was -> is" for the facts that differ.
class DifferenceText {
 public:
  DifferenceText(const BaseDocument& doc, const BaseList2D& node, std::vector<std::string>& lines)
      : doc_(doc), prefix_(ElementText(node)), lines_(lines) {}

  void Fact(const std::string& what, const std::string& was, const std::string& is) {
    if (was != is) lines_.push_back(prefix_ + " " + what + " " + was + " -> " + is);
  }
  std::string Target(NodeId id) const {
    const BaseList2D* node = FindNode(&doc_, id);
    return node ? NameOrType(*node) : "none";
  }

  // Parameters in their order, first those there were.
  void Data(const BaseContainer& was, const BaseContainer& is) {
    ForEachEntry(was,
                 [&](host::LONG key, const host::GeData& value) { Parameter(key, &value, is); });
    ForEachEntry(is, [&](host::LONG key, const host::GeData& value) {
      if (was.FindIndex(key) == host::NOTOK) Fact(std::to_string(key), "nothing", Text(value));
    });
  }

  void Flags(const host::LayerData& was, const host::LayerData& is) {
    static constexpr std::pair<const char*, host::Bool host::LayerData::*> kFlags[] = {
        {"solo", &host::LayerData::solo},           {"view", &host::LayerData::view},
        {"render", &host::LayerData::render},       {"manager", &host::LayerData::manager},
        {"locked", &host::LayerData::locked},       {"generators", &host::LayerData::generators},
        {"deformers", &host::LayerData::deformers}, {"expressions", &host::LayerData::expressions},
        {"animation", &host::LayerData::animation}};
    for (const auto& [name, flag] : kFlags) Fact(name, SwitchText(was.*flag), SwitchText(is.*flag));
    Fact("color", VectorText(was.color), VectorText(is.color));
  }

 private:
  std::string Text(const host::GeData& value) const {
    return ValueText(value, [this](NodeId id) { return Target(id); });
  }

  void Parameter(host::LONG key, const host::GeData* was, const BaseContainer& data) {
    const std::string name = std::to_string(key);
    if (data.FindIndex(key) == host::NOTOK) return Fact(name, Text(*was), "nothing");
    const host::GeData is = data.GetData(key);
    const bool inside = was->GetType() == host::DA_CONTAINER && is.GetType() == host::DA_CONTAINER;
    if (inside && !Identical(was->GetContainer(), is.GetContainer()))
      return Fact(name, Text(*was), "another " + Text(is));
    Fact(name, Text(*was), Text(is));
  }

  const BaseDocument& doc_;
  std::string prefix_;
  std::vector<std::string>& lines_;
};

}  // namespace

bool UndoEntry::Differs(const BaseList2D& node) const {
  const host::TextureTag* tag = AsTextureTag(const_cast<BaseList2D*>(&node));
  return !std::equal(modes_, modes_ + 3, A::Modes(node)) || !(name_ == A::Name(node)) ||
         layer_ != A::Layer(node) || (tag && material_ != A::Material(*tag)) ||
         !Identical(data_, *node.GetDataInstance()) || !SameRest(rest_, node);
}

void UndoEntry::AppendDifference(const BaseDocument& doc, const BaseList2D& node,
                                 std::vector<std::string>& lines) const {
  DifferenceText text(doc, node, lines);
  const host::UCHAR* modes = A::Modes(node);
  text.Fact("name", Quoted(name_), Quoted(node.GetName()));
  text.Fact("editor", ModeText(modes_[0]), ModeText(modes[0]));
  text.Fact("render", ModeText(modes_[1]), ModeText(modes[1]));
  text.Fact("deform", SwitchText(modes_[2] != 0), SwitchText(modes[2] != 0));
  text.Fact("layer", text.Target(layer_), text.Target(A::Layer(node)));
  if (const host::TextureTag* tag = AsTextureTag(const_cast<BaseList2D*>(&node))) {
    text.Fact("material", text.Target(material_), text.Target(A::Material(*tag)));
  }
  text.Data(data_, *node.GetDataInstance());
  if (A::Kind(node) == NodeKind::Layer) {
    text.Flags(*static_cast<const host::LayerData*>(rest_.get()),
               A::Flags(static_cast<const host::LayerObject&>(node)));
  } else if (!SameRest(rest_, node)) {
    text.Fact(A::Kind(node) == NodeKind::RenderSettings ? "effects and passes" : "shape",
              "as they were", "others");
  }
}

}  // namespace engine
