#include "engine/states/Difference.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <variant>

#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/Counterparts.h"
#include "engine/states/RecordList.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::LONG;
using host::RenderData;

namespace {

// Gathers changes by part and counts them. They lie by part, because records of several parts are
// mixed in the list of tags.
class Gathering {
 public:
  explicit Gathering(const CompareOptions& options) : options_(options) {}

  bool Wants(Part part) const { return options_.parts[IndexOf(part)]; }
  bool TellsFields(Part part, ChangeKind kind) const {
    return told_[IndexOf(part)][static_cast<std::size_t>(kind)] < options_.mostFields;
  }

  bool IsEmpty() const {
    return std::ranges::all_of(byPart_, [](const auto& changes) { return changes.empty(); });
  }

  void Add(Part part, ChangeKind kind, NodeId element, std::vector<FieldChange> fields) {
    Add(part, kind, element, element, std::move(fields));
  }
  void Add(Part part, ChangeKind kind, NodeId element, NodeId counterpart,
           std::vector<FieldChange> fields) {
    PartCount& count = result.counts[IndexOf(part)];
    ++(kind == ChangeKind::Changed    ? count.changed
       : kind == ChangeKind::OnlyLeft ? count.onlyLeft
                                      : count.onlyRight);
    // Also for callers that have the fields at hand anyway and do not ask before.
    if (TellsFields(part, kind)) {
      ++told_[IndexOf(part)][static_cast<std::size_t>(kind)];
    } else {
      fields.clear();
    }
    byPart_[IndexOf(part)].push_back({part, kind, element, counterpart, std::move(fields)});
  }
  // For a part whose changes were found from the last to the first.
  void Reverse(Part part) { std::ranges::reverse(byPart_[IndexOf(part)]); }

  Difference Take() {
    for (auto& changes : byPart_) {
      if (result.changes.empty()) {
        result.changes = std::move(changes);
        continue;
      }
      std::move(changes.begin(), changes.end(), std::back_inserter(result.changes));
      changes.clear();
    }
    return std::move(result);
  }

  Difference result;

 private:
  const CompareOptions& options_;
  std::array<std::vector<ElementChange>, kParts> byPart_;
  std::array<std::array<std::size_t, 3>, kParts> told_{};  // elements with fields, by kind
};

// All fields as a difference from nothing.
std::vector<FieldChange> OneSided(Fields fields, ChangeKind kind) {
  return kind == ChangeKind::OnlyLeft ? FieldsThatDiffer(fields, {}) : FieldsThatDiffer({}, fields);
}

// Nothing: that side does not say which camera; 0: it says that there is none.
void AddCamera(Gathering& gathering, std::optional<NodeId> left, std::optional<NodeId> right) {
  if (left == right) return;
  const auto value = [](std::optional<NodeId> camera) {
    return camera ? std::optional(LinkValue(*camera)) : std::nullopt;
  };
  const ChangeKind kind = !right  ? ChangeKind::OnlyLeft
                          : !left ? ChangeKind::OnlyRight
                                  : ChangeKind::Changed;
  gathering.Add(Part::Camera, kind, 0, {{kFieldSceneCamera, value(left), value(right)}});
}

// --- Two Stagemarks.

// Goes through both records list by list. In one document, only pairs of records that are not the
// same block are looked at; the cost of equal Stagemarks is that of their chunks.
class StatesComparison {
 public:
  StatesComparison(const BaseDocument& leftDoc, const BaseContainer& left,
                   const BaseDocument& rightDoc, const BaseContainer& right,
                   const CompareOptions& options)
      : leftDoc_(leftDoc), rightDoc_(rightDoc), left_(left), right_(right), out_(options) {
    if (&leftDoc != &rightDoc) counterparts_ = std::make_unique<Counterparts>(leftDoc, rightDoc);
  }

  Difference Run() {
    while (Advance(SIZE_MAX)) {
    }
    return out_.Take();
  }

  // Compares about so many pairs of records more; false when all is done.
  bool Advance(std::size_t elements) {
    if (nextPair_ == pairs_.size()) return BeginNextList();
    for (; elements > 0 && nextPair_ < pairs_.size(); --elements)
      Compare(kRecordLists[nextList_ - 1].key, pairs_[nextPair_++]);
    return true;
  }
  bool HasFound() const { return !out_.IsEmpty(); }
  Difference Take() { return out_.Take(); }

 private:
  bool BeginNextList() {
    if (nextList_ == kRecordLists.size()) return false;
    if (nextList_ == 0) {
      Settings();
      Camera();
    }
    const ListRow& row = kRecordLists[nextList_++];
    const RecordList left(left_, row.key, row.link);
    const RecordList right(right_, row.key, row.link);
    if (!left.IsEmpty()) out_.result.heldLeft |= PartsOfList(row.key);
    if (!right.IsEmpty()) out_.result.heldRight |= PartsOfList(row.key);
    pairs_ = Pairs(left, right);
    nextPair_ = 0;
    return true;
  }

  void Settings() {
    const RenderData* left = RecordedSettings(leftDoc_, left_);
    const RenderData* right = RecordedSettings(rightDoc_, right_);
    out_.result.heldLeft.set(IndexOf(Part::RenderSettings), left != nullptr);
    out_.result.heldRight.set(IndexOf(Part::RenderSettings), right != nullptr);
    if (left == right || !out_.Wants(Part::RenderSettings)) return;
    std::vector<FieldChange> fields = FieldsThatDiffer(left ? FieldsOfSettings(*left) : Fields(),
                                                       right ? FieldsOfSettings(*right) : Fields());
    if (left && right && fields.empty()) return;
    const ChangeKind kind = !right  ? ChangeKind::OnlyLeft
                            : !left ? ChangeKind::OnlyRight
                                    : ChangeKind::Changed;
    out_.Add(Part::RenderSettings, kind, IdOf(left ? *left : *right), IdOf(right ? *right : *left),
             std::move(fields));
  }

  void Camera() {
    const std::optional<NodeId> left = RecordedCamera(leftDoc_, left_);
    const std::optional<NodeId> right = RecordedCamera(rightDoc_, right_);
    out_.result.heldLeft.set(IndexOf(Part::Camera), left.has_value());
    out_.result.heldRight.set(IndexOf(Part::Camera), right.has_value());
    if (!out_.Wants(Part::Camera)) return;
    if (counterparts_ && left && right && counterparts_->AreSame(*left, *right)) return;
    AddCamera(out_, left, right);
  }

  // Elements that both may say different things of; those of another document by counterparts.
  // Lists of two documents share nothing and have their elements in orders of their own, so the
  // records of the right side go into a table first. What is left in it at the end only the right
  // side has.
  std::vector<RecordPair> Pairs(const RecordList& left, const RecordList& right) const {
    if (!counterparts_) return UnsharedRecords(left, right);
    NodeSet met;
    NodeSet metRight;
    std::unordered_map<NodeId, const ContainerBody*> others;
    std::vector<RecordPair> pairs;
    ForEachRecordBackwards(right, metRight, [&](NodeId element, const ContainerBody* record) {
      others.emplace(element, record);
    });
    ForEachRecordBackwards(left, met, [&](NodeId element, const ContainerBody* record) {
      const auto other = others.find(counterparts_->Find(element));
      pairs.push_back({element, record, other == others.end() ? nullptr : other->second});
      if (other != others.end()) others.erase(other);
    });
    std::ranges::reverse(pairs);
    for (const RecordList::Stretch entries : right.Stretches()) {
      for (const Entry& entry : entries) {
        const auto other = others.find(right.ElementOf(RecordOf(entry)));
        if (other == others.end()) continue;
        pairs.push_back({other->first, nullptr, other->second});
        others.erase(other);
      }
    }
    return pairs;
  }

  void Compare(LONG list, const RecordPair& pair) {
    const BaseDocument& doc = pair.left ? leftDoc_ : rightDoc_;
    BaseList2D* element = FindNode(&doc, pair.element);
    const PartRow* row = element ? PartOfElement(list, *element) : nullptr;
    if (!row || !out_.Wants(row->part)) return;
    const Part part = row->part;
    if (!pair.right || !pair.left) {
      const ChangeKind kind = pair.right ? ChangeKind::OnlyRight : ChangeKind::OnlyLeft;
      const ContainerBody* record = pair.right ? pair.right : pair.left;
      out_.Add(part, kind, pair.element,
               out_.TellsFields(part, kind) ? OneSided(FieldsOfRecord(doc, part, record), kind)
                                            : std::vector<FieldChange>());
      return;
    }
    // Of two documents, equal blocks need not say the same: links in them are identities, each of
    // its own document.
    if (!counterparts_ && SameBodies(pair.left, pair.right, OwnIds::kIgnored)) return;
    std::vector<FieldChange> fields = FieldsThatDiffer(FieldsOfRecord(leftDoc_, part, pair.left),
                                                       FieldsOfRecord(rightDoc_, part, pair.right));
    if (counterparts_) {
      // Links to counterparts agree, whatever the identities.
      std::erase_if(fields, [&](const FieldChange& field) {
        return field.left && field.right && LinkOf(*field.left) != 0 &&
               counterparts_->AreSame(LinkOf(*field.left), LinkOf(*field.right));
      });
    }
    if (fields.empty()) return;
    out_.Add(part, ChangeKind::Changed, pair.element,
             counterparts_ ? counterparts_->Find(pair.element) : pair.element, std::move(fields));
  }

  const BaseDocument& leftDoc_;
  const BaseDocument& rightDoc_;
  const BaseContainer& left_;
  const BaseContainer& right_;
  std::unique_ptr<Counterparts> counterparts_;  // between two documents
  Gathering out_;
  // The list after the one in hand, and what is left of this.
  std::size_t nextList_ = 0;
  std::vector<RecordPair> pairs_;
  std::size_t nextPair_ = 0;
};

// --- The scene and a Stagemark.

// One list of records after the other, and after each list the elements of the scene that it does
// not have. A list is walked from its end: of several records of an element the last one is what
// loading leaves standing, so the first one met counts, and the others are passed over.
class SceneWalk {
 public:
  SceneWalk(const BaseDocument& doc, const BaseContainer& record, const CompareOptions& options)
      : doc_(doc),
        record_(record),
        options_(options),
        same_(doc, options.everyEntry),
        out_(options) {}

  // Compares the scene with it, about so many elements more; false when all is done.
  bool Advance(std::size_t elements) {
    switch (step_) {
      case Step::Scene:
        CompareScene();
        step_ = Step::NextList;
        return true;
      case Step::NextList:
        return BeginNextList();
      case Step::Records:
        for (; elements > 0 && step_ == Step::Records; --elements) {
          if (!VisitNext([this](auto&&... one) { CompareElement(one...); })) BeginUnknown();
        }
        return true;
      case Step::Unknown:
        for (; elements > 0 && unknown_; --elements, unknown_ = NextInTree(unknown_))
          LookAtUnknown(*unknown_);
        if (!unknown_) step_ = Step::NextList;
        return true;
    }
    return false;
  }
  bool HasFound() const { return !out_.IsEmpty(); }
  Difference Take() { return out_.Take(); }

  Difference Contents() {
    if (const RenderData* kept = RecordedSettings(doc_, record_)) {
      out_.result.heldRight.set(IndexOf(Part::RenderSettings));
      if (out_.Wants(Part::RenderSettings))
        out_.Add(Part::RenderSettings, ChangeKind::OnlyRight, IdOf(*kept),
                 OneSided(FieldsOfSettings(*kept), ChangeKind::OnlyRight));
    }
    if (const std::optional<NodeId> camera = RecordedCamera(doc_, record_)) {
      out_.result.heldRight.set(IndexOf(Part::Camera));
      if (out_.Wants(Part::Camera)) AddCamera(out_, std::nullopt, camera);
    }
    for (const ListRow& row : kRecordLists) {
      BeginList(row);
      while (VisitNext([&](Part part, const BaseList2D& element, const ContainerBody* record) {
        out_.Add(part, ChangeKind::OnlyRight, IdOf(element),
                 out_.TellsFields(part, ChangeKind::OnlyRight)
                     ? OneSided(FieldsOfRecord(doc_, part, record), ChangeKind::OnlyRight)
                     : std::vector<FieldChange>());
      })) {
      }
      EndList();
    }
    return out_.Take();
  }

  // Fills in the fields of these changes, by element.
  void TellFields(std::unordered_map<NodeId, ElementChange*>& wanted) {
    for (const ListRow& row : kRecordLists) {
      if ((PartsOfList(row.key) & options_.parts).none()) continue;
      BeginList(row);
      const auto tell = [&](Part part, const BaseList2D& element, const ContainerBody* record) {
        const auto found = wanted.find(IdOf(element));
        if (found == wanted.end()) return;
        found->second->fields = ChangedFields(part, element, record);
        wanted.erase(found);
      };
      while (!wanted.empty() && VisitNext(tell)) {
      }
    }
  }

 private:
  enum class Step { Scene, NextList, Records, Unknown };

  void CompareScene() {
    out_.result.heldLeft = AllParts();
    Settings();
    if (const std::optional<NodeId> camera = RecordedCamera(doc_, record_)) {
      out_.result.heldRight.set(IndexOf(Part::Camera));
      if (out_.Wants(Part::Camera)) AddCamera(out_, CameraNow(doc_), camera);
    }
  }

  // Loading copies the recorded settings over the first ones and makes these the active ones.
  void Settings() {
    const RenderData* recorded = RecordedSettings(doc_, record_);
    const RenderData* first = doc_.GetFirstRenderData();
    out_.result.heldRight.set(IndexOf(Part::RenderSettings), recorded != nullptr);
    if (!recorded || !first || !out_.Wants(Part::RenderSettings)) return;
    std::vector<FieldChange> fields;
    if (recorded != first)
      fields = FieldsThatDiffer(FieldsOfSettings(*first), FieldsOfSettings(*recorded));
    if (const NodeId active = ActiveRenderDataIdOf(doc_); active != IdOf(*first))
      fields.push_back({kFieldActiveSettings, LinkValue(active), LinkValue(IdOf(*first))});
    if (!fields.empty())
      out_.Add(Part::RenderSettings, ChangeKind::Changed, IdOf(*first), IdOf(*recorded),
               std::move(fields));
  }

  bool BeginNextList() {
    while (nextList_ < std::size(kRecordLists)) {
      const ListRow& row = kRecordLists[nextList_++];
      if ((PartsOfList(row.key) & options_.parts).none()) continue;
      BeginList(row);
      step_ = Step::Records;
      return true;
    }
    return false;
  }

  void BeginList(const ListRow& row) {
    row_ = &row;
    list_.emplace(record_, row.key, row.link);
    stretchesLeft_ = list_->Stretches().size();
    entriesLeft_ = stretchesLeft_ > 0 ? list_->Stretches().back().size() : 0;
    met_ = NodeSet();
    held_.reset();
  }

  // Steps from the last entry to the first; null when there is none left.
  const Entry* PreviousEntry() {
    while (entriesLeft_ == 0) {
      if (stretchesLeft_ <= 1) return nullptr;
      --stretchesLeft_;
      entriesLeft_ = list_->Stretches()[stretchesLeft_ - 1].size();
    }
    return &list_->Stretches()[stretchesLeft_ - 1][--entriesLeft_];
  }

  // Goes on to the entry before, and calls `visit(part, element, record)` where it counts; counts
  // elements that are gone. False when there is none left.
  template <class Visit>
  bool VisitNext(Visit visit) {
    const Entry* entry = PreviousEntry();
    if (!entry) return false;
    const ContainerBody* record = RecordOf(*entry);
    const NodeId id = list_->ElementOf(record);
    if (id == 0 || !met_.Insert(id)) return true;
    BaseList2D* element = FindNode(&doc_, id);
    if (!element) {
      ++out_.result.gone;
      return true;
    }
    const PartRow* part = PartOfElement(row_->key, *element);
    if (!part) return true;
    held_.set(IndexOf(part->part));
    if (out_.Wants(part->part)) visit(part->part, *element, record);
    return true;
  }

  // Turned into the order of the list before elements that it does not have are added: those come
  // in the order of the scene already.
  void EndList() {
    out_.result.heldRight |= held_;
    for (const PartRow& part : kPartRows) {
      if (held_[IndexOf(part.part)]) out_.Reverse(part.part);
    }
  }

  void CompareElement(Part part, const BaseList2D& element, const ContainerBody* record) {
    if (same_.IsAsRecorded(part, element, record)) return;
    out_.Add(part, ChangeKind::Changed, IdOf(element),
             out_.TellsFields(part, ChangeKind::Changed) ? ChangedFields(part, element, record)
                                                         : std::vector<FieldChange>());
  }

  // At the end of a list: goes on to the elements that it does not have.
  void BeginUnknown() {
    EndList();
    step_ = Step::Unknown;
    unknown_ = nullptr;
    if (!options_.unknown || (held_ & options_.parts).none()) return;
    unknown_ =
        row_->key == kStoredLayers ? doc_.GetLayerObjectRoot()->GetFirst() : doc_.GetFirstObject();
  }

  // For the list of tags the walk goes over the objects, each of which shows its tags.
  void LookAtUnknown(const host::GeListNode& node) {
    if (row_->key == kStoredTags) {
      UnknownTags(static_cast<const host::BaseObject&>(node));
    } else {
      Unknown(row_->key == kStoredLayers ? Part::Layers : Part::Objects,
              static_cast<const BaseList2D&>(node));
    }
  }

  std::vector<FieldChange> ChangedFields(Part part, const BaseList2D& element,
                                         const ContainerBody* record) {
    const bool nothingIsZero = part == Part::CompositingTags && !options_.everyEntry;
    std::vector<FieldChange> fields = FieldsThatDiffer(
        FieldsInScene(doc_, part, element), FieldsOfRecord(doc_, part, record), nothingIsZero);
    // Nothing but what loading writes into the tag beside its values, or their order. A change
    // without fields would read as one whose fields are still to be told (TellFields), so there is
    // always one.
    if (fields.empty()) {
      const BaseContainer& data = *element.GetDataInstance();
      const bool isThere = data.FindIndex(kStoredTagLink) != host::NOTOK;
      fields.push_back({kStoredTagLink,
                        isThere ? std::optional(data.GetData(kStoredTagLink)) : std::nullopt,
                        LinkValue(IdOf(element))});
    }
    return fields;
  }

  void UnknownTags(const host::BaseObject& object) {
    for (const host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
      if (const PartRow* part = FindPartOfTag(tag->GetType())) Unknown(part->part, *tag);
    }
  }

  void Unknown(Part part, const BaseList2D& element) {
    if (!held_[IndexOf(part)] || !out_.Wants(part) || met_.Has(IdOf(element))) return;
    out_.Add(part, ChangeKind::OnlyLeft, IdOf(element),
             out_.TellsFields(part, ChangeKind::OnlyLeft)
                 ? OneSided(FieldsInScene(doc_, part, element), ChangeKind::OnlyLeft)
                 : std::vector<FieldChange>());
  }

  const BaseDocument& doc_;
  const BaseContainer& record_;
  const CompareOptions& options_;
  SceneComparison same_;
  Gathering out_;
  Step step_ = Step::Scene;
  // The list in hand, what is left of it, and what has been met in it: elements, and their parts.
  std::size_t nextList_ = 0;
  const ListRow* row_ = nullptr;
  std::optional<RecordList> list_;
  std::size_t stretchesLeft_ = 0;
  std::size_t entriesLeft_ = 0;  // of the last of these
  NodeSet met_;
  Parts held_;
  const host::GeListNode* unknown_ = nullptr;  // the next object or layer that may be unknown
};

}  // namespace

Difference CompareStates(const BaseDocument& doc, const BaseContainer& left,
                         const BaseContainer& right, const CompareOptions& options) {
  return StatesComparison(doc, left, doc, right, options).Run();
}

Difference CompareStates(const BaseDocument& leftDoc, const BaseContainer& left,
                         const BaseDocument& rightDoc, const BaseContainer& right,
                         const CompareOptions& options) {
  return StatesComparison(leftDoc, left, rightDoc, right, options).Run();
}

Difference CompareWithScene(const BaseDocument& doc, const BaseContainer& record,
                            const CompareOptions& options) {
  SceneWalk walk(doc, record, options);
  while (walk.Advance(SIZE_MAX)) {
  }
  return walk.Take();
}

// The walks borrow the records and options that stand beside them, so a Walk never moves, and none
// of them is made before those are there.
struct StepwiseComparison::Walk {
  BaseContainer left;
  BaseContainer record;
  CompareOptions options;
  std::variant<std::monostate, SceneWalk, StatesComparison> walk;

  Walk(const BaseDocument& doc, const BaseContainer& compared, const CompareOptions& given)
      : record(compared), options(given) {
    walk.emplace<SceneWalk>(doc, record, options);
  }
  Walk(const BaseDocument& doc, const BaseContainer& one, const BaseContainer& other,
       const CompareOptions& given)
      : left(one), record(other), options(given) {
    walk.emplace<StatesComparison>(doc, left, doc, record, options);
  }

  // Calls `work` with the walk that there is.
  template <class Work>
  auto With(Work work) {
    SceneWalk* scene = std::get_if<SceneWalk>(&walk);
    return scene ? work(*scene) : work(std::get<StatesComparison>(walk));
  }
};

StepwiseComparison::StepwiseComparison(const BaseDocument& doc, const BaseContainer& record,
                                       const CompareOptions& options)
    : walk_(std::make_unique<Walk>(doc, record, options)) {}
StepwiseComparison::StepwiseComparison(const BaseDocument& doc, const BaseContainer& left,
                                       const BaseContainer& right, const CompareOptions& options)
    : walk_(std::make_unique<Walk>(doc, left, right, options)) {}
StepwiseComparison::~StepwiseComparison() = default;
bool StepwiseComparison::HasFound() const {
  return walk_->With([](auto& walk) { return walk.HasFound(); });
}
bool StepwiseComparison::Advance(std::size_t elements) {
  return walk_->With([elements](auto& walk) { return walk.Advance(elements); });
}
Difference StepwiseComparison::Take() {
  return walk_->With([](auto& walk) { return walk.Take(); });
}

void TellFields(const BaseDocument& doc, const BaseContainer& record, const CompareOptions& options,
                Difference& toScene, const std::vector<std::size_t>& changes) {
  std::unordered_map<NodeId, ElementChange*> wanted;
  for (const std::size_t at : changes) {
    ElementChange& change = toScene.changes[at];
    if (change.kind == ChangeKind::Changed && change.fields.empty())
      wanted.emplace(change.element, &change);
  }
  // One walk over the records for all of them, as far as the last one that is wanted.
  SceneWalk(doc, record, options).TellFields(wanted);
}

Difference ContentsOf(const BaseDocument& doc, const BaseContainer& record,
                      const CompareOptions& options) {
  return SceneWalk(doc, record, options).Contents();
}

Difference Mirrored(Difference difference) {
  std::swap(difference.heldLeft, difference.heldRight);
  for (PartCount& count : difference.counts) std::swap(count.onlyLeft, count.onlyRight);
  for (ElementChange& change : difference.changes) {
    std::swap(change.element, change.counterpart);
    if (change.kind == ChangeKind::OnlyLeft) {
      change.kind = ChangeKind::OnlyRight;
    } else if (change.kind == ChangeKind::OnlyRight) {
      change.kind = ChangeKind::OnlyLeft;
    }
    for (FieldChange& field : change.fields) std::swap(field.left, field.right);
  }
  return difference;
}

}  // namespace engine
