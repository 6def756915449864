// SceneWriter: a document to the sections of a scene file; the one that gives every element its
// row. Main thread.
#pragma once

#include <unordered_map>

#include "engine/scenefile/CarriedFiles.h"
#include "engine/scenefile/Elements.h"
#include "engine/scenefile/Meshes.h"
#include "engine/scenefile/ProgressMeter.h"
#include "engine/scenefile/ValueSections.h"
#include "host/BaseDocument.h"
#include "host/BaseObject.h"

namespace engine {

class SceneWriter {
 public:
  // The document must not change while the writer lives; the meter is that of the whole writing.
  // `folder`: that of the file, for the names that are relative to it.
  SceneWriter(const host::BaseDocument& doc, ProgressMeter& meter, const std::string& folder)
      : doc_(doc), meter_(meter), rows_{&doc}, paths_(folder) {}

  // Everything but the sections that were kept. Throws Damage for a scene that no reader would
  // take.
  void Write(SectionWriter& sections);
  // Memory that a reader takes for the file, in bytes: an estimate, rather too high than too low.
  std::uint64_t MemoryToRead() const;

 private:
  void Collect();
  // Adds the tree of `first` and its neighbors, owned by the element of row `owner`.
  void AddTree(ElementSection section, std::uint64_t owner, const host::GeListNode* first);
  // Adds what `list` gives for the elements of another section.
  template <class List>
  void AddOwned(ElementSection section, ElementSection owners, const List& list);
  void AddShaders();
  void AddRow(ElementTable& table, std::uint64_t owner, std::uint64_t depth,
              const host::BaseList2D& node);
  void AddMore(ElementSection section, const host::BaseList2D& node);
  void AddObjectColumns(ElementTable& table, const host::BaseObject& object);
  std::uint64_t MatrixRow(const host::Matrix& matrix);
  void BeginSection(ElementSection section) { tables_[section].firstRow = rows_.size(); }
  std::string DocumentContents() const;

  const host::BaseDocument& doc_;
  ProgressMeter& meter_;
  std::vector<const host::BaseList2D*> rows_;
  ElementTables tables_;
  CarriedPaths paths_;
  ValueWriter values_;
  MeshWriter meshes_;
  std::uint32_t documentData_ = 0;
};

}  // namespace engine
