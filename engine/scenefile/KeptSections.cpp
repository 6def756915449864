#include "engine/scenefile/KeptSections.h"

#include <algorithm>
#include <memory>

#include "engine/scene/Nodes.h"
#include "engine/scenefile/Elements.h"

namespace engine::scenefile {
namespace {

// A section with bytes of its own.
struct Kept {
  std::string name;
  std::uint64_t rawLength;
  std::string payload;
};
using KeptList = std::vector<Kept>;

bool IsKnown(std::string_view name) {
  constexpr std::string_view kOthers[] = {"TEXTS", "VECTORS", "VALUES", "MESHES", "DOCUMENT", "FILES"};
  return std::ranges::find(kOthers, name) != std::end(kOthers) ||
         std::ranges::find(kElementRules, name, &ElementRule::name) != kElementRules.end();
}

}  // namespace

void KeepUnknownSections(host::BaseDocument& doc, const std::vector<Section>& sections, Budget& budget) {
  auto list = std::make_shared<KeptList>();
  for (const Section& section : sections) {
    if (IsKnown(section.name)) continue;
    budget.Charge(section.payload.size());
    list->push_back({section.name, section.rawLength, std::string(section.payload)});
  }
  if (!list->empty()) KeepWith(doc, std::move(list));
}

void AddKeptSections(const host::BaseDocument& doc, SectionWriter& out) {
  const auto* list = static_cast<const KeptList*>(KeptWith(doc).get());
  if (!list) return;
  for (const Kept& section : *list) out.AddAsItIs(section.name, section.rawLength, section.payload);
}

}  // namespace engine::scenefile
