#include "engine/editing/InspectedElements.h"

#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

namespace {

// One of this run: a file opened twice makes two documents with the same nodes. 0 for none.
host::ULLONG RunIdOf(const host::BaseDocument* doc) { return doc ? NumberOf(*doc) : 0; }

void AddChosen(Ids& ids, const host::GeListNode* first) {
  for (const host::GeListNode* node = first; node; node = NextInTree(node)) {
    if (static_cast<const host::BaseList2D*>(node)->GetBit(host::BIT_ACTIVE))
      ids.push_back(IdOf(*node));
  }
}

}  // namespace

void InspectedElements::Follow(const host::BaseDocument* doc) {
  const host::ULLONG count = doc ? SelectionChangeCount(*doc) : 0;
  if (RunIdOf(doc) == doc_ && count == seen_) {
    // Those that a panel has put here may have been deleted, of which the selection tells nothing.
    if (!shown_.empty()) Choose(doc);
    return;
  }
  const bool isNew = RunIdOf(doc) != doc_;
  if (isNew) *this = InspectedElements();
  doc_ = RunIdOf(doc);
  seen_ = count;
  if (doc) TakeOver(ReadSelection(*doc), isNew);
  Choose(doc);
}

void InspectedElements::Show(const host::BaseDocument& doc, Ids elements) {
  Follow(&doc);
  shown_ = std::move(elements);
  Choose(&doc);
}

void InspectedElements::Return(const host::BaseDocument& doc, Kind kind) {
  Follow(&doc);
  if (selection_[kind].empty()) return;
  shown_.clear();
  last_ = kind;
  Choose(&doc);
}

InspectedElements::Selection InspectedElements::ReadSelection(const host::BaseDocument& doc) {
  Selection selection;
  for (host::BaseList2D* element : SelectedInOrder(doc)) {
    selection[AsObject(element) ? kObjects : kTags].push_back(IdOf(*element));
  }
  AddChosen(selection[kMaterials], doc.GetFirstMaterial());
  AddChosen(selection[kLayers], doc.GetLayerObjectRoot()->GetFirst());
  return selection;
}

// Of several that changed at once the tags count, which are selected together with their objects. A
// document that is looked at for the first time begins with its objects.
void InspectedElements::TakeOver(Selection selection, bool isNew) {
  if (selection == selection_) return;
  shown_.clear();
  // The last one that is met counts, so the order is that of weight.
  for (int kind = kObjects; kind >= kTags; --kind) {
    const Ids& now = selection[static_cast<std::size_t>(kind)];
    if (now != selection_[static_cast<std::size_t>(kind)] && !now.empty())
      last_ = static_cast<Kind>(kind);
  }
  if (isNew && !selection[kObjects].empty()) last_ = kObjects;
  selection_ = std::move(selection);
}

// Without a selection of the last kind one looks at the objects again, or at the tags.
const Ids& InspectedElements::Wanted() const {
  if (!shown_.empty()) return shown_;
  if (!selection_[last_].empty()) return selection_[last_];
  return selection_[selection_[kObjects].empty() ? kTags : kObjects];
}

void InspectedElements::Choose(const host::BaseDocument* doc) {
  std::erase_if(shown_, [doc](NodeId id) { return !FindNode(doc, id); });
  // Only then a new list: whoever shows it compares addresses.
  if (*elements_ != Wanted()) elements_ = std::make_shared<Ids>(Wanted());
}

}  // namespace engine
