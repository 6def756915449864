#include "program/desktop/attributes/AttributeReading.h"

#include <algorithm>

#include "program/desktop/attributes/FieldEditing.h"

namespace desktop {

AttributeReading::AttributeReading(host::BaseDocument& doc, engine::SharedIds elements)
    : doc_(doc), ids_(std::move(elements)) {
  if (ids_->empty()) BeginValues();
}

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

void AttributeReading::FindMore(std::size_t elements) {
  const std::size_t end = std::min(ids_->size(), found_ + elements);
  for (; found_ < end; ++found_) {
    if (host::BaseList2D* element = engine::FindElement(doc_, (*ids_)[found_]))
      living_.push_back(element);
  }
  if (found_ == ids_->size()) BeginValues();
}

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
