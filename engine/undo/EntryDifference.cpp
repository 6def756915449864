// Comparing the state that an undo entry keeps with the live one, and telling the difference.
#include <algorithm>
#include <unordered_map>

#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/ValueText.h"
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

bool SameList(const std::vector<OwnedNode>& kept, const BaseList2D& settings, int slot) {
  const GeListNode* live = FirstIn(settings, slot);
  for (const OwnedNode& was : kept) {
    if (!live || !SameTree(*was, static_cast<const BaseList2D&>(*live))) return false;
    live = live->GetNext();
  }
  return !live;
}

// Whether an element has what is kept of the things that only its kind has.
struct OwnComparison {
  const BaseList2D& node;

  bool operator()(std::monostate) const { return true; }
  bool operator()(NodeId material) const {
    return material == A::Material(static_cast<const host::TextureTag&>(node));
  }
  bool operator()(const std::shared_ptr<const ObjectShape>& shape) const {
    return shape == A::Shape(static_cast<const host::BaseObject&>(node));
  }
  bool operator()(const std::unique_ptr<host::LayerData>& flags) const {
    return *flags == A::Flags(static_cast<const host::LayerObject&>(node));
  }
  bool operator()(const std::unique_ptr<DetachedLists>& lists) const {
    return SameList(lists->posts, node, kAttached) && SameList(lists->passes, node, kPasses);
  }
};

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

// Lines for the things that only elements of one kind have.
struct OwnDifference {
  const BaseList2D& node;
  DifferenceText& text;

  void operator()(std::monostate) const {}
  // Stands with the links that all elements have.
  void operator()(NodeId) const {}
  void operator()(const std::unique_ptr<host::LayerData>& flags) const {
    text.Flags(*flags, A::Flags(static_cast<const host::LayerObject&>(node)));
  }
  void operator()(const std::shared_ptr<const ObjectShape>& shape) const {
    if (!OwnComparison{node}(shape)) text.Fact("shape", "as they were", "others");
  }
  void operator()(const std::unique_ptr<DetachedLists>& lists) const {
    if (!OwnComparison{node}(lists)) text.Fact("effects and passes", "as they were", "others");
  }
};

// Whether an element is not as it was kept.
struct Difference {
  const BaseList2D& node;

  template <class Own>
  bool operator()(const KeptElement<Own>& kept) const {
    return !std::equal(kept.modes, kept.modes + 3, A::Modes(node)) ||
           !(kept.name == A::Name(node)) || kept.layer != A::Layer(node) ||
           !Identical(kept.data, *node.GetDataInstance()) || !OwnComparison{node}(kept.own);
  }
  bool operator()(const ParkedNode&) const { return false; }
  bool operator()(const NodePlace&) const { return false; }
  // Data stored for plug-ins is not part of the scene.
  bool operator()(const std::unique_ptr<KeptStores>&) const { return false; }
};

// Lines for everything that is not as it was kept.
struct DifferenceLines {
  const BaseList2D& node;
  DifferenceText& text;

  template <class Own>
  void operator()(const KeptElement<Own>& kept) const {
    const host::UCHAR* modes = A::Modes(node);
    text.Fact("name", Quoted(kept.name), Quoted(node.GetName()));
    text.Fact("editor", ModeText(kept.modes[0]), ModeText(modes[0]));
    text.Fact("render", ModeText(kept.modes[1]), ModeText(modes[1]));
    text.Fact("deform", SwitchText(kept.modes[2] != 0), SwitchText(modes[2] != 0));
    text.Fact("layer", text.Target(kept.layer), text.Target(A::Layer(node)));
    Links(kept);
    text.Data(kept.data, *node.GetDataInstance());
    OwnDifference{node, text}(kept.own);
  }
  void operator()(const ParkedNode&) const {}
  void operator()(const NodePlace&) const {}
  void operator()(const std::unique_ptr<KeptStores>&) const {}

 private:
  void Links(const KeptContents&) const {}
  void Links(const KeptTextureTag& kept) const {
    const auto& tag = static_cast<const host::TextureTag&>(node);
    text.Fact("material", text.Target(kept.own), text.Target(A::Material(tag)));
  }
};

}  // namespace

bool UndoEntry::Differs(const BaseList2D& node) const {
  return std::visit(Difference{node}, state_);
}

void UndoEntry::AppendDifference(const BaseDocument& doc, const BaseList2D& node,
                                 std::vector<std::string>& lines) const {
  DifferenceText text(doc, node, lines);
  std::visit(DifferenceLines{node, text}, state_);
}

}  // namespace engine
