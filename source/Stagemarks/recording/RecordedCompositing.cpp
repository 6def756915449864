#include "source/Stagemarks/recording/RecordedCompositing.h"

#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

const BaseContainer& RecordedCompositing::RecordOf(const BaseTag& tag, LONG index) {
  if (next_ == tags_.size()) tags_.emplace_back();
  Recorded& last = tags_[next_++];
  const BaseContainer& data = *tag.GetDataInstance();
  const GeData link(&tag);
  const Bool isSame = last.isFlat && last.data == data;
  if (isSame && last.index == index && last.tag == link) return last.record;
  if (isSame) {
    work_ = last.record;
    isFlat_ = TRUE;
  } else if (!isFlat_ || data_ != data) {
    isFlat_ = WriteCompositing(work_, tag);
  }
  data_ = data;
  work_.SetId(index);
  work_.SetLink(kTagLink, &tag);
  // A record that comes out alike goes on sharing its entries with the stores.
  if (!isFlat_ || last.record.GetId() != index || last.record != work_) last.record = work_;
  last.tag = link;
  last.index = index;
  last.isFlat = isFlat_;
  last.data = data;
  return last.record;
}

}  // namespace stagemarks
