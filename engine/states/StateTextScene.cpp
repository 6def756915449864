// A scene as far as a text of Stagemarks tells of it: its elements with their identities, each in
// its place, and in it the Stagemarks, taken in as into any scene.
#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/states/RecordedParts.h"
#include "engine/states/StateText.h"
#include "engine/states/StateTextForm.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

// Elements that stand before one of the same name and type, and that the text says nothing of, are
// made too, so that places are right; more of them than this are no scene's.
constexpr std::size_t kMostStandIns = 10'000'000;

// Elements come in any order and say their number among equals. So they are made first, each after
// what it lies in, and put into their places at the end, equals by their numbers.
class SceneFromText {
 public:
  SceneFromText(const StateTextContents& text, BaseDocument& doc)
      : elements_(text.elements), doc_(doc) {
    ReadClasses(text.states);
  }
  SceneFromText(const SceneFromText&) = delete;
  SceneFromText& operator=(const SceneFromText&) = delete;
  // Elements that are in no place yet when the text turns out to be unreadable.
  ~SceneFromText() {
    for (auto& [place, equals] : places_) {
      for (const Equal& equal : equals) DestroyNode(equal.element);
    }
  }

  void Build() {
    for (const auto& [name, json] : elements_) {
      // The elements that it lies in come first.
      std::vector<std::string> way{name};
      while (!made_.contains(way.back()) && Above(way.back())) {
        way.push_back(*Above(way.back()));
        if (way.size() > elements_.size()) throw UnreadableText("elements lie in themselves");
      }
      for (; !way.empty(); way.pop_back()) {
        if (!made_.contains(way.back())) Make(way.back());
      }
    }
    for (auto& [place, equals] : places_) Insert(place, equals);
  }

 private:
  // One place: inside an element (none: in the document), of a type and a name.
  using Place = std::tuple<BaseList2D*, LONG, std::string>;
  struct Equal {
    std::size_t position;
    NodeKind kind;
    BaseList2D* element;  // until it is in its place
  };

  void ReadClasses(const Json& states) {
    const std::pair<const char*, NodeKind> lists[] = {
        {"objects", NodeKind::Object}, {"tags", NodeKind::Tag}, {"layers", NodeKind::Layer}};
    for (const Json& state : states) {
      for (const auto& [member, kind] : lists) {
        if (!state.is_object() || !state.contains(member)) continue;
        for (const Json& record : state[member]) {
          if (record.is_object() && record.contains("element") && record["element"].is_string())
            classes_.emplace(record["element"].get<std::string>(), kind);
        }
      }
    }
  }

  const Json& Described(const std::string& name) const { return ElementCalled(elements_, name); }

  std::optional<std::string> Above(const std::string& name) const {
    const Json& json = Described(name);
    return json.contains("in") ? std::optional(RequiredText(json, "in")) : std::nullopt;
  }

  // The text says of records what their elements are; the others are known by their type, or by
  // what they lie in.
  NodeKind ClassOf(const std::string& name, LONG type) const {
    if (type == host::Mmaterial) return NodeKind::Material;
    if (type == host::Olayer) return NodeKind::Layer;
    if (type == host::Rbase) return NodeKind::RenderSettings;
    if (const auto known = classes_.find(name); known != classes_.end()) return known->second;
    const auto above = Above(name);
    const auto owner = above ? made_.find(*above) : made_.end();
    const bool isInObject = owner == made_.end() || !owner->second || AsObject(owner->second);
    if (!isInObject) return AsLayer(owner->second) ? NodeKind::Layer : NodeKind::Shader;
    const bool isTag = FindPartOfTag(type) || type == host::Tphong || type == host::Texpresso;
    return above && isTag ? NodeKind::Tag : NodeKind::Object;
  }

  // Null for render settings: a text tells what a Stagemark records of them, not that they are in
  // the scene.
  static BaseList2D* NewOf(NodeKind kind, LONG type) {
    if (kind == NodeKind::RenderSettings) return nullptr;
    if (kind == NodeKind::Layer) return MakeNode(kind, host::Olayer);
    return MakeNode(kind == NodeKind::Tag ? TagKind(type) : kind, type);
  }

  // Put in its place at once, behind those of its kind; its number among equals is seen to at the
  // end.
  void Make(const std::string& name) {
    const Json& json = Described(name);
    const LONG type = NumberOr(json, "type", 0);
    const NodeKind kind = ClassOf(name, type);
    const LONG position = NumberOr(json, "position", 0);
    if (position < 0) throw UnreadableText("\"position\" of \"" + name + "\" is below 0");
    const auto above = Above(name);
    BaseList2D* owner = above ? made_.at(*above) : nullptr;
    BaseList2D* element = NewOf(kind, type);
    made_.emplace(name, element);
    if (!element) return;
    const std::string called = RequiredText(json, "name");
    element->SetName(host::String(std::string_view(called)));
    GiveIdentity(*element, json);
    const auto [place, isNew] = index_.emplace(KeyOf(owner, type, called), places_.size());
    if (isNew) places_.push_back({{owner, type, called}, {}});
    places_[place->second].second.push_back({static_cast<std::size_t>(position), kind, element});
  }

  static std::string KeyOf(const BaseList2D* owner, LONG type, const std::string& name) {
    return std::to_string(owner ? IdOf(*owner) : 0) + " " + std::to_string(type) + " " + name;
  }

  void GiveIdentity(BaseList2D& element, const Json& json) {
    const NodeId id = IdentityOf(json);
    if (id == 0) return;
    // A second one of an identity is another element.
    if (identities_.insert(id).second) {
      NodeIds::Instance().Seen(id);
      (void)SetId(element, id);
    }
  }

  void Insert(const Place& place, std::vector<Equal>& equals) {
    std::ranges::stable_sort(equals, {}, &Equal::position);
    auto& [owner, type, name] = place;
    std::size_t next = 0;
    for (Equal& equal : equals) {
      for (; next < equal.position; ++next) {
        if (++standIns_ > kMostStandIns)
          throw UnreadableText("\"" + name + "\" has a position beyond all measure");
        BaseList2D* other = NewOf(equal.kind, type);
        other->SetName(host::String(std::string_view(name)));
        InsertOne(owner, equal.kind, other);
      }
      InsertOne(owner, equal.kind, equal.element);
      equal.element = nullptr;
      ++next;
    }
  }

  void InsertOne(BaseList2D* owner, NodeKind kind, BaseList2D* element) {
    BaseList2D*& last = last_[{owner, kind}];
    switch (kind) {
      case NodeKind::Object:
        doc_.InsertObject(AsObject(element), AsObject(owner), AsObject(last));
        break;
      case NodeKind::Layer:
        doc_.InsertLayer(AsLayer(element), AsLayer(owner), AsLayer(last));
        break;
      case NodeKind::Material:
        doc_.InsertMaterial(AsMaterial(element), AsMaterial(last));
        break;
      case NodeKind::Tag:
        if (host::BaseObject* object = AsObject(owner))
          object->InsertTag(AsTag(element), AsTag(last));
        else
          throw UnreadableText("\"" + element->GetName().ToUtf8() + "\" is a tag of no object");
        break;
      default:
        (owner ? *owner : static_cast<BaseList2D&>(doc_))
            .InsertShader(static_cast<host::BaseShader*>(element),
                          static_cast<host::BaseShader*>(last));
    }
    last = element;
  }

  const TextElements& elements_;
  BaseDocument& doc_;
  std::unordered_map<std::string, NodeKind> classes_;  // by the element's name in the text
  std::unordered_map<std::string, BaseList2D*> made_;
  std::unordered_set<NodeId> identities_;
  std::vector<std::pair<Place, std::vector<Equal>>> places_;
  std::unordered_map<std::string, std::size_t> index_;
  std::map<std::pair<BaseList2D*, NodeKind>, BaseList2D*> last_;
  std::size_t standIns_ = 0;
};

}  // namespace

Result<OwnedDocument> SceneOfText(std::string_view text) {
  return WhereReadable<OwnedDocument>([&]() -> Result<OwnedDocument> {
    OwnedDocument doc(BaseDocument::Alloc());
    const StateTextContents contents = ParseStateText(text);
    SceneFromText(contents, *doc).Build();
    TakeInOptions options;
    options.evenEmpty = true;
    const auto taken = TakeInContents(*doc, contents, options);
    if (!taken) return taken.GetStatus();
    return doc;
  });
}

}  // namespace engine
