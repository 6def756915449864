#include "engine/editing/FreeNames.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

FreeNames::FreeNames(const host::BaseList2D* first) {
  if (first && first->GetDocument()) taken_.reserve(NodeCount(*first->GetDocument()));
  for (const host::GeListNode* node = first; node; node = NextInTree(node)) {
    taken_.insert(static_cast<const host::BaseList2D*>(node)->GetName().ToUtf8());
  }
}

void FreeNames::Give(host::BaseList2D& element) {
  const std::string name = element.GetName().ToUtf8();
  // Counting goes on where it ended, so that copying a thousand "Cube" does not try a thousand
  // names for each.
  int& number = numbers_[name];
  std::string candidate = name;
  while (!taken_.insert(candidate).second) candidate = name + "." + std::to_string(++number);
  element.SetName(host::String(std::string_view(candidate)));
}

}  // namespace engine
