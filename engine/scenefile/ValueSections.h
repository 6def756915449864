// The three sections that hold values (TEXTS, VECTORS, VALUES), written and read together. One
// thread.
#pragma once

#include "engine/scenefile/ContainerReader.h"
#include "engine/scenefile/ContainerWriter.h"
#include "engine/scenefile/Sections.h"

namespace engine {

struct ValueWriter {
  TextWriter texts;
  NumberWriter numbers;
  ContainerWriter containers{texts, numbers};

  // Numbers the containers and writes the sections.
  void Finish(SectionWriter& sections);
};

struct ValueReader {
  // Throws Damage.
  ValueReader(const std::vector<Section>& sections, Budget& budget);

  std::vector<host::String> texts;
  Numbers numbers;
  std::vector<host::BaseContainer> containers;
};

// The section of that name; throws Damage where there is none.
const Section& NeededSection(const std::vector<Section>& sections, const std::string& name);

}  // namespace engine
