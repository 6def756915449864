#include "program/desktop/attributes/LookedAt.h"

namespace desktop {

namespace {

void AddChosen(Ids& ids, const host::GeListNode* first) {
  for (const host::GeListNode* node = first; node; node = engine::NextInTree(node)) {
    if (static_cast<const host::BaseList2D*>(node)->GetBit(host::BIT_ACTIVE))
      ids.push_back(engine::IdOf(*node));
  }
}

}  // namespace

void LookedAt::Follow(const host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::SelectionChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) {
    if (!shown_.empty()) Choose(doc);
    return;
  }
  const bool isNew = IdentityOf(doc) != doc_;
  if (isNew) *this = LookedAt();
  doc_ = IdentityOf(doc);
  seen_ = count;
  if (doc) TakeOver(ReadSelection(*doc), isNew);
  Choose(doc);
}

void LookedAt::Show(const host::BaseDocument& doc, Ids elements) {
  Follow(&doc);
  shown_ = std::move(elements);
  Choose(&doc);
}

void LookedAt::Return(const host::BaseDocument& doc, Kind kind) {
  Follow(&doc);
  if (selection_[kind].empty()) return;
  shown_.clear();
  last_ = kind;
  Choose(&doc);
}

LookedAt::Selection LookedAt::ReadSelection(const host::BaseDocument& doc) {
  Selection selection;
  for (host::BaseList2D* element : engine::SelectedInOrder(doc)) {
    selection[engine::AsObject(element) ? kObjects : kTags].push_back(engine::IdOf(*element));
  }
  AddChosen(selection[kMaterials], doc.GetFirstMaterial());
  AddChosen(selection[kLayers], doc.GetLayerObjectRoot()->GetFirst());
  return selection;
}

// Of several that changed at once the tags count, which are selected together with their objects. A
// document that is looked at for the first time begins with its objects.
void LookedAt::TakeOver(Selection selection, bool isNew) {
  if (selection == selection_) return;
  shown_.clear();
  for (int kind = kObjects; kind >= kTags; --kind) {
    const Ids& now = selection[static_cast<std::size_t>(kind)];
    if (now != selection_[static_cast<std::size_t>(kind)] && !now.empty())
      last_ = static_cast<Kind>(kind);
  }
  if (isNew && !selection[kObjects].empty()) last_ = kObjects;
  selection_ = std::move(selection);
}

// Without a selection of the last kind one looks at the objects again, or at the tags.
const Ids& LookedAt::Wanted() const {
  if (!shown_.empty()) return shown_;
  if (!selection_[last_].empty()) return selection_[last_];
  return selection_[selection_[kObjects].empty() ? kTags : kObjects];
}

void LookedAt::Choose(const host::BaseDocument* doc) {
  std::erase_if(shown_, [doc](engine::NodeId id) { return !engine::FindNode(doc, id); });
  if (*elements_ != Wanted()) elements_ = std::make_shared<Ids>(Wanted());
}

}  // namespace desktop
