// SceneBuilder: the tables of a scene file to a document. The tables are checked already, so that
// little can fail here; what does leaves nothing behind. Main thread.
#pragma once

#include <memory>

#include "engine/core/ContainerContents.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/Ownership.h"
#include "engine/scenefile/CarriedFiles.h"
#include "engine/scenefile/Elements.h"
#include "engine/scenefile/ProgressMeter.h"
#include "engine/scenefile/ValueSections.h"

namespace engine {

// Section DOCUMENT.
struct DocumentRecord {
  NodeId id = 0;
  host::LONG bits = 0;
  host::ULLONG nbits = 0;
  NodeId layer = 0;
  std::size_t data = 0;
  host::LONG fps = 0;
  NodeId camera = 0;
  NodeId activeSettings = 0;
  ColumnValues selection;
};

struct SceneTables {
  const ValueReader& values;
  std::vector<std::shared_ptr<const Mesh>> meshes;
  DocumentRecord document;
  ElementTables elements;
};

class SceneBuilder {
 public:
  // `tables` and `meter` must outlive the builder. `folder`: that of the file.
  SceneBuilder(const SceneTables& tables, ProgressMeter& meter, const std::string& folder)
      : tables_(tables), meter_(meter), paths_(folder) {}
  // The document, unchanged as far as "has unsaved changes" goes. Throws Damage.
  OwnedDocument Build();

 private:
  void BuildDocument();
  void BuildTop(ElementSection section);
  void BuildAttached(ElementSection section);
  void BuildTags();
  void BuildExpression(host::XPressoTag& tag, std::uint64_t row);
  void FinishDocument();
  OwnedNode Make(ElementSection section, std::size_t at);
  void Fill(host::BaseList2D& node, const ElementTable& table, std::size_t at) const;
  void FillMore(host::BaseList2D& node, ElementSection section, std::size_t at) const;
  void Insert(ElementSection section, host::BaseList2D& node, host::BaseList2D* parent,
              host::BaseList2D* pred);
  void Attach(ElementSection section, host::BaseList2D& node, std::size_t at);
  // The element that row `at` hangs below, null at the top; makes `node` the last one at its depth.
  host::BaseList2D* Step(std::uint64_t depth, host::BaseList2D& node, host::BaseList2D** pred);

  const SceneTables& tables_;
  ProgressMeter& meter_;
  CarriedPaths paths_;
  OwnedDocument doc_;
  std::vector<host::BaseList2D*> rows_;
  std::vector<host::BaseList2D*> path_;
  std::size_t nextNode_ = 0;  // in section NODES
};

}  // namespace engine
