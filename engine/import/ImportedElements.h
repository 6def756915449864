// ImportedElements: which objects and materials of a scene came out of a file of another format,
// with fingerprints of what the file said of them. So importing the file again tells what the file
// changed from what a person changed since, and what is gone from it from what was made here. Kept
// in the document's data. Main thread, or the child.
#pragma once

#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

struct ImportedElement {
  NodeId id = 0;
  host::LONG place = 0;     // of an object: where it stands
  host::LONG settings = 0;  // its parameters; of a material its textures, too
  host::LONG look = 0;      // of an object: the names of its materials
  host::LONG above = 0;     // of an object: the name of the one above it
};

struct ImportedElements {
  std::string file;  // its bare name; empty: nothing is known
  std::vector<ImportedElement> objects;
  std::vector<ImportedElement> materials;
};

// The elements of a document as they are, which are all from `file`. O(n).
ImportedElements DescribeElements(const host::BaseDocument& doc, const std::string& file);
// The fingerprint of a material as it is.
host::LONG FingerprintOf(const host::BaseMaterial& material, const host::BaseDocument& doc);

// Elements that are gone from the document are left out.
ImportedElements ImportedElementsOf(const host::BaseDocument& doc);
void KeepImportedElements(host::BaseDocument& doc, const ImportedElements& elements);

}  // namespace engine
