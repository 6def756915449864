// KeptSections: sections that this version does not know. They stay with the document as they were
// read and are written back at the end of its file. Main thread.
#pragma once

#include "engine/scenefile/Sections.h"
#include "host/BaseDocument.h"

namespace engine {

// Charges their memory. Throws Damage.
void KeepUnknownSections(host::BaseDocument& doc, const std::vector<Section>& sections,
                         Budget& budget);
void AddKeptSections(const host::BaseDocument& doc, SectionWriter& out);

}  // namespace engine
