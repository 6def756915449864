#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

// Gives each post or pass of the copy the switch of its counterpart: copying leaves all bits out.
template <class Item>
void CopySwitches(const Item* source, Item* copy) {
  for (; source && copy; source = source->GetNext(), copy = copy->GetNext()) {
    if (source->GetAllBits() & BIT_DISABLED) {
      copy->SetAllBits(copy->GetAllBits() | BIT_DISABLED);
    } else {
      copy->SetAllBits(copy->GetAllBits() & ~BIT_DISABLED);
    }
  }
}

}  // namespace

Bool SMDialog::RecordRenderSettings() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  RenderData* source = doc->GetActiveRenderData();
  RenderData* copy = RenderData::Alloc();
  source->CopyTo(copy, COPY_NO_BITS, nullptr);
  copy->SetName(elementName_);
  CopySwitches(source->GetFirstVideoPost(), copy->GetFirstVideoPost());
  CopySwitches(source->GetFirstMultipass(), copy->GetFirstMultipass());
  doc->InsertRenderData(copy, nullptr, doc->GetFirstRenderData());
  renderBc_.SetLink(kRenderLink, copy);
  doc->SetActiveRenderData(source);
  return TRUE;
}

}  // namespace stagemarks
