// The table of states and elements says of each what the comparisons of states say.
#include "engine/states/StateMatrix.h"

#include "host/Parameters.h"
#include "tests/states/Stage.h"

namespace {

using engine::MatrixRows;
using engine::Part;
using engine::StateMatrix;
using tests::Key;
using tests::Stage;

// Of every two states next to each other: the cells marked as changed are the elements that the
// comparison finds.
class MatrixOfRandomStates : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seeds, MatrixOfRandomStates, testing::Range(1u, 9u));

TEST_P(MatrixOfRandomStates, AgreesWithTheDifferences) {
  Stage stage(GetParam());
  for (const char* name : {"1", "2", "3", "4"}) {
    stage.Record(name);
    for (const auto& [key, element] : stage.Elements()) {
      if (stage.Pick(6) == 0) stage.Change(key, element);
    }
    if (stage.Pick(2) == 0) stage.AddObject("After " + std::string(name));
  }
  const std::vector<engine::StoredState> states = engine::ReadStates(stage.Doc());
  const StateMatrix matrix(stage.Doc(), states, MatrixRows::Differing);
  for (std::size_t i = 1; i < states.size(); ++i) {
    std::set<Key> expected;
    for (const engine::ElementChange& change :
         engine::CompareStates(stage.Doc(), states[i - 1].record, states[i].record).changes) {
      if (change.kind != engine::ChangeKind::Changed) continue;
      const bool ofScene = change.part == Part::RenderSettings || change.part == Part::Camera;
      expected.insert({change.part, ofScene ? 0 : change.element});
    }
    std::set<Key> marked;
    for (std::size_t row = 0; row < matrix.Rows().size(); ++row) {
      if (matrix.IsChanged(row, i) && matrix.Holds(row, i - 1))
        marked.insert({matrix.Rows()[row].part, matrix.Rows()[row].element});
    }
    EXPECT_EQ(marked, expected) << i;
  }
}

// A state without a part lacks nothing of it; an element that no state knows has a row of its own.
TEST(StateMatrix, SaysWhoKnowsWhat) {
  Stage stage(0, 2);
  stage.Record("Day");
  for (const Part part : {Part::Objects, Part::Materials}) stage.Switch(part, false);
  stage.Build().Modes("Object 1", host::MODE_UNDEF, host::MODE_OFF);
  stage.Build().LookThrough("Near");
  stage.App().DeliverEvents();
  stage.Switch(Part::Objects, true);
  stage.Record("Night");
  stage.Build().Cube("New");
  const std::vector<engine::StoredState> states = engine::ReadStates(stage.Doc());
  std::string text;
  const StateMatrix matrix(stage.Doc(), states, MatrixRows::Differing);
  for (std::size_t row = 0; row < matrix.Rows().size(); ++row) {
    const StateMatrix::Row& one = matrix.Rows()[row];
    text += std::string(engine::RowOf(one.part).word) + " " +
            (one.element ? engine::ElementPath(stage.Doc(), one.element) : "") + " | " +
            matrix.Text(row, 0) + " | " + matrix.Text(row, 1) +
            (one.knownBy == 0 ? " no state knows it" : "") + "\n";
  }
  EXPECT_EQ(text,
            "camera  | none | \"Near\"\n"
            "objects Object 1 | Render mode Undefined | Render mode Off\n"
            "objects New |  |  no state knows it\n");
  const StateMatrix all(stage.Doc(), states, MatrixRows::All);
  EXPECT_EQ(all.HoldersOf(Part::Objects), 2u);
  EXPECT_GT(all.Rows().size(), matrix.Rows().size() + 5);
}

// The whole table: who holds what, what changed, and what is said of it.
TEST(StateMatrix, SaysOfEachCell) {
  Stage stage(0, 2);
  stage.Record("Day");
  stage.Build().Modes("Object 1", host::MODE_OFF, host::MODE_OFF).Cube("New");
  stage.Build().Texture("New", "Blue").Layer("Late");
  stage.Doc().GetFirstRenderData()->GetDataInstance()->SetLong(host::RDATA_XRES, 640);
  static_cast<host::TextureTag*>(stage.Build().GetTag("Object 0", host::Ttexture))
      ->SetMaterial(nullptr);
  stage.Switch(Part::Layers, false);
  stage.Record("Night");
  stage.Build().Modes("Object 1", host::MODE_UNDEF, host::MODE_UNDEF);
  for (const engine::PartRow& row : engine::kPartRows)
    stage.Switch(row.part, row.part == Part::Camera);
  stage.Record("Camera only");
  stage.Build().GetTag("Object 1", Stage::kStyle)->GetDataInstance()->SetString(3, "late");
  for (const engine::PartRow& row : engine::kPartRows)
    stage.Switch(row.part, row.part == Part::SketchStyleTags || row.part == Part::Objects);
  stage.Record("Last");
  const std::vector<engine::StoredState> states = engine::ReadStates(stage.Doc());
  const auto table = [&](MatrixRows rows, engine::Parts parts) {
    const StateMatrix matrix(stage.Doc(), states, rows, parts);
    std::string text;
    for (std::size_t row = 0; row < matrix.Rows().size(); ++row) {
      const StateMatrix::Row& one = matrix.Rows()[row];
      text += std::string(engine::RowOf(one.part).word) + " " +
              (one.element ? engine::ElementPath(stage.Doc(), one.element) : "") + " " +
              std::to_string(one.knownBy) + " of " + std::to_string(matrix.HoldersOf(one.part)) +
              (one.differs ? " differs" : "");
      for (std::size_t i = 0; i < states.size(); ++i)
        text += std::string(" | ") + (matrix.IsChanged(row, i) ? "* " : "") + matrix.Text(row, i) +
                " " + std::to_string(matrix.CellFields(row, i).size());
      text += "\n";
    }
    return text;
  };
  EXPECT_EQ(table(MatrixRows::Differing, engine::AllParts()),
            "render-settings  4 of 4 differs | Width 1280 px 9 | * Width 640 px 9 | Width 640 px 9 "
            "| Width 640 px 9\n"
            "objects Object 1 4 of 4 differs | Editor mode Undefined, Render mode Undefined 3 | * "
            "Editor mode Off, Render mode Off 3 | Editor mode Off, Render mode Off 3 | * Editor "
            "mode Undefined, Render mode Undefined 3\n"
            "objects New 3 of 4 |  0 | held 3 | held 3 | held 3\n"
            "layers Late 0 of 4 |  0 |  0 |  0 |  0\n"
            "materials Texture on Object 0 3 of 4 differs | \"Red\" 1 | * none 1 | none 1 |  0\n"
            "materials Texture on New 3 of 4 |  0 | \"Blue\" 1 | \"Blue\" 1 | \"Blue\" 1\n"
            "compositing Compositing on Object 0 3 of 4 | held 50 | held 50 | held 50 |  0\n");
  engine::Parts some;
  for (const Part part : {Part::Camera, Part::Objects, Part::Layers})
    some.set(engine::IndexOf(part));
  EXPECT_EQ(table(MatrixRows::All, some),
            "camera  4 of 4 | none 1 | none 1 | none 1 | none 1\n"
            "objects Object 0 4 of 4 | held 3 | held 3 | held 3 | held 3\n"
            "objects Object 1 4 of 4 differs | Editor mode Undefined, Render mode Undefined 3 | * "
            "Editor mode Off, Render mode Off 3 | Editor mode Off, Render mode Off 3 | * Editor "
            "mode Undefined, Render mode Undefined 3\n"
            "objects Wide 4 of 4 | held 3 | held 3 | held 3 | held 3\n"
            "objects Near 4 of 4 | held 3 | held 3 | held 3 | held 3\n"
            "objects New 3 of 4 |  0 | held 3 | held 3 | held 3\n"
            "layers Front 4 of 4 | held 9 | held 9 | held 9 | held 9\n"
            "layers Front/Left 4 of 4 | held 9 | held 9 | held 9 | held 9\n"
            "layers Back 4 of 4 | held 9 | held 9 | held 9 | held 9\n"
            "layers Late 0 of 4 |  0 |  0 |  0 |  0\n");
}

}  // namespace
