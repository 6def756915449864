#include "engine/scenefile/KeptSections.h"

#include <algorithm>
#include <memory>

#include "engine/scene/DocumentState.h"
#include "engine/scenefile/Bytes.h"
#include "engine/scenefile/Damage.h"
#include "engine/scenefile/Elements.h"
#include "engine/scenefile/SceneOrigin.h"
#include "engine/scenefile/StateNames.h"
#include "engine/scenefile/Trash.h"

namespace engine {
namespace {

// A section with bytes of its own.
struct Kept {
  std::string name;
  std::uint64_t rawLength;
  std::string payload;
};
struct KeptList {
  std::vector<Kept> sections;
  std::string origin;  // see SceneOrigin.h
};

constexpr const char* kOrigin = "ORIGIN";

// Known sections are written anew from the document, or, as ROOM and ORIGIN, are of that one file.
bool IsKnown(std::string_view name) {
  constexpr std::string_view kOthers[] = {"TEXTS",       "VECTORS",  "VALUES",    "MESHES",
                                          "COLORS",      "DOCUMENT", "FILES",     kTrashSection,
                                          kNamesSection, kOrigin,    kRoomSection};
  return std::ranges::find(kOthers, name) != std::end(kOthers) ||
         std::ranges::find(kElementRules, name, &ElementRule::name) != kElementRules.end();
}

}  // namespace

void KeepUnknownSections(host::BaseDocument& doc, const std::vector<Section>& sections,
                         Budget& budget) {
  auto list = std::make_shared<KeptList>();
  for (const Section& section : sections) {
    if (IsKnown(section.name)) continue;
    budget.Charge(section.payload.size());
    list->sections.push_back({section.name, section.rawLength, std::string(section.payload)});
  }
  if (!list->sections.empty()) KeepWith(doc, std::move(list));
}

void AddKeptSections(const host::BaseDocument& doc, SectionWriter& out) {
  const auto* list = static_cast<const KeptList*>(KeptWith(doc).get());
  if (!list) return;
  for (const Kept& section : list->sections)
    out.AddAsItIs(section.name, section.rawLength, section.payload);
  if (list->origin.empty()) return;
  std::string origin;
  // Last of all, behind the sections that are kept: its number covers everything before it.
  PutFixed64(origin, out.Sum());
  origin += list->origin;
  out.AddAsItIs(kOrigin, origin.size(), origin);
}

void SetSceneOrigin(host::BaseDocument& doc, const std::string& origin) {
  const auto* former = static_cast<const KeptList*>(KeptWith(doc).get());
  auto list = former ? std::make_shared<KeptList>(*former) : std::make_shared<KeptList>();
  list->origin = origin;
  KeepWith(doc, std::move(list));
}

std::string SceneOriginOf(std::string_view bytes) {
  const Result<std::string> origin = Guarded<std::string>([&] {
    const std::vector<Section> sections = ReadSections(bytes, ContentKind::Scene);
    const Section* section = FindSection(sections, kOrigin);
    // Something was written behind it by a program that does not know it.
    if (section == nullptr || section != &sections.back()) return std::string();
    std::string sum;
    PutFixed64(sum, SumBefore(bytes, sections, *section));
    return section->payload.starts_with(sum) ? std::string(section->payload.substr(sum.size()))
                                             : std::string();
  });
  return origin ? origin.Value() : "";
}

}  // namespace engine
