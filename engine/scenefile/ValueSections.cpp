#include "engine/scenefile/ValueSections.h"

namespace engine {

void ValueWriter::Finish(SectionWriter& sections) {
  // The last container is in, and with it the last text and number: containers put theirs into the
  // tables when they are added. The sections of elements ask for the numbers afterwards.
  containers.Number();
  sections.Add("TEXTS", texts.Contents());
  sections.Add("VECTORS", numbers.Contents());
  sections.Add("VALUES", containers.Contents());
}

// The tables come first: containers refer to both.
ValueReader::ValueReader(const std::vector<Section>& sections, Budget& budget)
    : texts(ReadTexts(Expand(NeededSection(sections, "TEXTS"), budget), budget)),
      numbers(ReadNumbers(Expand(NeededSection(sections, "VECTORS"), budget), budget)),
      containers(
          ContainerReader(Expand(NeededSection(sections, "VALUES"), budget), texts, numbers, budget)
              .Read()) {}

const Section& NeededSection(const std::vector<Section>& sections, const std::string& name) {
  const Section* section = FindSection(sections, name);
  if (!section) throw Damage{"The file is damaged: its section " + name + " is missing."};
  return *section;
}

}  // namespace engine
