#include "program/desktop/attributes/LookedAt.h"

namespace desktop {

void LookedAt::Follow(const host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  if (IdentityOf(doc) != doc_) *this = LookedAt();
  doc_ = IdentityOf(doc);
  seen_ = count;
  ReadSelection(doc);
  Choose(doc);
}

void LookedAt::Show(const host::BaseDocument& doc, Ids elements) {
  Follow(&doc);
  shown_ = std::move(elements);
  Choose(&doc);
}

void LookedAt::ReadSelection(const host::BaseDocument* doc) {
  Ids objects, tags;
  if (doc) {
    for (host::BaseList2D* element : engine::SelectedInOrder(*doc)) {
      (engine::AsObject(element) ? objects : tags).push_back(engine::IdOf(*element));
    }
  }
  const bool objectsChanged = objects != objects_;
  const bool tagsChanged = tags != tags_;
  if (!objectsChanged && !tagsChanged) return;
  shown_.clear();
  tagsCameLast_ = tagsChanged && !tags.empty();
  objects_ = std::move(objects);
  tags_ = std::move(tags);
}

void LookedAt::Choose(const host::BaseDocument* doc) {
  std::erase_if(shown_, [doc](engine::NodeId id) { return !engine::FindNode(doc, id); });
  const bool tagsCount = objects_.empty() || (tagsCameLast_ && !tags_.empty());
  const Ids& wanted = !shown_.empty() ? shown_ : tagsCount ? tags_ : objects_;
  if (*elements_ != wanted) elements_ = std::make_shared<Ids>(wanted);
}

}  // namespace desktop
