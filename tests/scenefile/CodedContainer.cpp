#include "tests/scenefile/CodedContainer.h"

#include "engine/scenefile/ContainerReader.h"
#include "engine/scenefile/ContainerWriter.h"
#include "engine/scenefile/Damage.h"
#include "engine/scenefile/ValueSections.h"

namespace tests {

using namespace engine;
using host::BaseContainer;

std::string EncodeContainer(const BaseContainer& container) {
  ValueWriter values;
  const std::uint32_t root = values.containers.Add(container);
  SectionWriter sections(ContentKind::Container);
  values.Finish(sections);
  std::string contents;
  PutVarint(contents, values.containers.Numbers()[root]);
  sections.Add("ROOT", contents);
  std::string bytes;
  for (const std::string& piece : sections.Finish()) bytes += piece;
  return bytes;
}

Result<BaseContainer> DecodeContainer(std::string_view bytes, std::uint64_t memoryLimit) {
  return Guarded<BaseContainer>([&] {
    Budget budget(memoryLimit);
    const std::vector<Section> sections = ReadSections(bytes, ContentKind::Container);
    const ValueReader values(sections, budget);
    const std::string contents = Expand(NeededSection(sections, "ROOT"), budget);
    Cursor in(contents, "ROOT", budget);
    const std::uint64_t root = in.Below(values.containers.size(), "the container");
    in.End();
    return values.containers[root];
  });
}

}  // namespace tests
