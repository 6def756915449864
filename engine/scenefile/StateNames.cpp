#include "engine/scenefile/StateNames.h"

#include "engine/scenefile/Bytes.h"

namespace engine {

using host::BaseContainer;
using host::LONG;

void AddStateNames(const host::BaseDocument& doc, SectionWriter& out) {
  const BaseContainer* list = doc.GetDataInstance()->GetContainerInstance(kListOfStates.store);
  if (!list || list->FindIndex(kListOfStates.note) == host::NOTOK) return;
  std::string names;
  std::uint64_t count = 0;
  for (LONG i = 0; i < list->GetCount(); ++i) {
    const BaseContainer* entry = list->GetContainerInstance(list->GetIndexId(i));
    if (!entry || entry->GetCount() == 0) continue;
    const host::String name = entry->GetString(kListOfStates.name);
    PutVarint(names, name.View().size());
    names += name.View();
    ++count;
  }
  if (count == 0) return;
  std::string contents;
  // By it a reader knows whether the names still belong to the list (decision 83).
  PutFixed64(contents, out.SumOf(kSourcesOfNames));
  PutVarint(contents, count);
  out.Add(kNamesSection, contents + names);
}

StateNames ReadStateNames(std::string_view contents, Budget& budget) {
  Cursor in(contents, kNamesSection, budget);
  StateNames known;
  known.sum = in.Fixed64();
  const std::uint64_t count = in.Varint();
  // Each name takes a byte at least.
  if (count > in.Left()) in.Refuse("it is too short for what it counts");
  budget.Charge(count, sizeof(std::string));
  known.names.reserve(static_cast<std::size_t>(count));
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::string_view name = in.Take(in.Varint());
    budget.Charge(name.size());
    known.names.emplace_back(name);
  }
  in.End();
  return known;
}

}  // namespace engine
