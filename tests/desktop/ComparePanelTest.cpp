// The panel "Compare": what loading the selected state would change, two states beside each other,
// following edits, and the way from a row to the scene.
#include "program/desktop/panels/ComparePanel.h"

#include <gtest/gtest.h>

#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/states/FieldText.h"
#include "engine/undo/Undo.h"
#include "host/LayerObject.h"
#include "tests/desktop/States.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;

struct WithCompare : Desk {
  tests::SceneBuilder build{*host::GetActiveDocument()};

  WithCompare() {
    build.Cube("Room").Cube("Room/Lamp").Cube("Table").Material("Wood").Material("Stone");
    build.Texture("Table", "Wood").Layer("Back");
    host::EventAdd();
    Raise("compare");
  }
  desktop::ComparePanel& Compare() { return Panel<desktop::ComparePanel>("compare"); }
  host::BaseObject& Object(const char* path) { return *build.GetObject(path); }
  void Show(const char* path, bool on) {
    Object(path).SetEditorMode(on ? host::MODE_ON : host::MODE_OFF);
    host::EventAdd();
    Rest();
  }
  // Both rows, as with Ctrl and a click.
  void ChooseBoth(const char* one, const char* other) {
    Window().States().Choose({one, other});
    Rest();
  }
  QModelIndex Row(const QString& begin) {
    desktop::CompareTree& tree = Compare().Tree();
    return tree.model()
        ->match(tree.model()->index(0, 0), Qt::DisplayRole, begin, 1,
                Qt::MatchStartsWith | Qt::MatchRecursive)
        .value(0);
  }
  void Click(const QString& begin) {
    desktop::CompareTree& tree = Compare().Tree();
    tree.scrollTo(Row(begin));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(Row(begin)).center());
    Rest();
  }
  // A line for each row: the cells that are not empty, two blanks for each level.
  std::string Text(const QModelIndex& above = {}, const QString& indent = {}) {
    const QAbstractItemModel& model = *Compare().Tree().model();
    std::string text;
    for (int row = 0; row < model.rowCount(above); ++row) {
      QStringList cells;
      for (int column = 0; column < model.columnCount(above); ++column) {
        const QString cell = model.index(row, column, above).data().toString();
        if (!cell.isEmpty()) cells.append(cell);
      }
      text += (indent + cells.join(" | ")).toStdString() + "\n" +
              Text(model.index(row, 0, above), indent + "  ");
    }
    return text;
  }
};

TEST(ComparePanel, SaysWhatLoadingWouldChangeWhileTheSceneIsEdited) {
  WithCompare desk;
  EXPECT_EQ(desk.Compare().Verdict(), "");
  desk::RecordState(desk, "Day");
  EXPECT_EQ(desk.Compare().Verdict(), "same as the scene");
  EXPECT_EQ(desk.Text(), "");
  EXPECT_FALSE(desk.Compare().LoadButton().isEnabled());
  desk.Show("Room/Lamp", false);
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 1 thing");
  EXPECT_EQ(desk.Text(), "Objects (1)\n  Room/Lamp: Editor mode | Off | Undefined\n");
  desk.Object("Room/Lamp").SetRenderMode(host::MODE_OFF);
  desk.build.Cube("Late");
  auto* tag = static_cast<host::TextureTag*>(desk.Object("Table").GetTag(host::Ttexture));
  tag->SetMaterial(desk.build.GetMaterial("Stone"));
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 2 things");
  const std::string texture = engine::ElementPath(*host::GetActiveDocument(), engine::IdOf(*tag));
  EXPECT_EQ(desk.Text(),
            "Objects (1)\n  Room/Lamp\n    Editor mode | Off | Undefined\n"
            "    Render mode | Off | Undefined\n"
            "Materials (1)\n  " +
                texture +
                ": Material | \"Stone\" | \"Wood\"\n"
                "The Stagemark does not know (1)\n  Late | in the scene | not held\n");
  // Only what the options have loading bring back.
  ASSERT_TRUE(pictures::StagemarksDialog(*desk.Dialog()).Choose("Materials"));
  Desk::Rest();
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 1 thing");
  QTest::mouseClick(&desk.Compare().LoadButton(), Qt::LeftButton);
  Desk::Rest();
  EXPECT_EQ(desk.Compare().Verdict(), "same as the scene");
  EXPECT_EQ(engine::UndoName(*host::GetActiveDocument()), "Load Day");
  EXPECT_EQ(desk.Object("Room/Lamp").GetEditorMode(), host::MODE_UNDEF);
}

TEST(ComparePanel, WarnsOfWhatNoStateBringsBack) {
  WithCompare desk;
  desk::RecordState(desk, "Day");
  desk.Show("Table", false);
  EXPECT_EQ(desk.Compare().Warning(), "1 of these is in no Stagemark and will be lost");
  EXPECT_EQ(desk.Row("Table").data(Qt::AccessibleDescriptionRole), "will be lost");
  desk::RecordState(desk, "Night");
  desk::ChooseState(desk, 0);
  Desk::Rest();
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 1 thing");
  EXPECT_EQ(desk.Compare().Warning(), "");
  desk.Show("Room", false);
  desk.Show("Room/Lamp", false);
  EXPECT_EQ(desk.Compare().Warning(), "2 of these are in no Stagemark and will be lost");
}

TEST(ComparePanel, TwoChosenRowsAreComparedWithEachOther) {
  WithCompare desk;
  desk::RecordState(desk, "Day");
  desk.Show("Table", false);
  desk.build.Cube("Late");
  desk::RecordState(desk, "Night");
  desk.ChooseBoth("Day", "Night");
  EXPECT_EQ(desk.Compare().Verdict(), "differ in 2 things");
  EXPECT_EQ(desk.Text(),
            "Objects (2)\n  Table: Editor mode | Undefined | Off\n  Late | not held | held\n");
  EXPECT_FALSE(desk.Compare().LoadButton().isVisible());
  desk::RecordState(desk, "Dusk");
  desk.ChooseBoth("Dusk", "Night");
  EXPECT_EQ(desk.Compare().Verdict(), "say the same");
}

TEST(ComparePanel, AClickOrEnterSelectsInTheScene) {
  WithCompare desk;
  desk::RecordState(desk, "Day");
  desk.Show("Room/Lamp", false);
  auto* tag = static_cast<host::TextureTag*>(desk.Object("Table").GetTag(host::Ttexture));
  tag->SetMaterial(nullptr);
  host::LayerObject* layer = desk.build.GetLayer("Back");
  host::LayerData data = layer->GetLayerData(host::GetActiveDocument(), host::TRUE);
  data.solo = true;
  layer->SetLayerData(host::GetActiveDocument(), data);
  host::EventAdd();
  Desk::Rest();
  const host::BaseDocument& doc = *host::GetActiveDocument();
  using Objects = std::vector<host::BaseObject*>;
  desk.Click("Room/Lamp");
  EXPECT_EQ(engine::SelectedObjects(doc), Objects{&desk.Object("Room/Lamp")});
  EXPECT_EQ(desk.Row("Room/Lamp"), desk.Compare().Tree().currentIndex())
      << "selecting edits nothing";
  const QString texture = QString::fromStdString(engine::ElementPath(doc, engine::IdOf(*tag)));
  desk.Click(texture);
  EXPECT_EQ(engine::SelectedObjects(doc), Objects{&desk.Object("Table")});
  EXPECT_EQ(desk.Window().Inspected().Elements()->front(), engine::IdOf(*tag));
  desk.Compare().Tree().setCurrentIndex(desk.Row("Back"));
  QTest::keyClick(&desk.Compare().Tree(), Qt::Key_Return);
  Desk::Rest();
  EXPECT_TRUE(layer->GetBit(host::BIT_ACTIVE));
  EXPECT_EQ(desk.Window().Inspected().Elements()->front(), engine::IdOf(*layer));
}

// Rows that a person has closed or chosen stay so while others come and go.
TEST(ComparePanel, RowsStayAsAPersonLeftThem) {
  WithCompare desk;
  desk::RecordState(desk, "Day");
  desk.Show("Room/Lamp", false);
  desk.Object("Table").SetRenderMode(host::MODE_OFF);
  desk.Show("Table", false);
  desktop::CompareTree& tree = desk.Compare().Tree();
  EXPECT_TRUE(tree.isExpanded(desk.Row("Objects"))) << "few rows are open at first";
  EXPECT_TRUE(tree.isExpanded(desk.Row("Table")));
  tree.collapse(desk.Row("Table"));
  tree.setCurrentIndex(desk.Row("Table"));
  desk.Show("Room", false);
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 3 things");
  EXPECT_FALSE(tree.isExpanded(desk.Row("Table")));
  EXPECT_EQ(tree.currentIndex(), desk.Row("Table"));
}

TEST(ComparePanel, ALargeSceneIsComparedInSlices) {
  WithCompare desk;
  constexpr int kMany = 30000;
  host::BaseDocument* doc = host::GetActiveDocument();
  for (int i = 0; i < kMany; ++i) doc->AppendObject(host::BaseObject::Alloc(host::Onull));
  host::EventAdd();
  Desk::Rest();
  desk::RecordState(desk, "Day");
  for (host::BaseObject* object = doc->GetFirstObject(); object; object = object->GetNext())
    object->SetEditorMode(host::MODE_OFF);
  host::EventAdd();
  desk.Window().Refresh();
  EXPECT_TRUE(desk.Compare().IsComparing());
  EXPECT_TRUE(pictures::WaitFor([&] { return !desk.Compare().IsComparing(); }));
  EXPECT_EQ(desk.Compare().Verdict(), "differs in 30,002 things");
  EXPECT_FALSE(desk.Compare().Tree().isExpanded(desk.Row("Objects"))) << "too many";
  EXPECT_TRUE(pictures::Write(desk.Window(), "compare-many"));
}

}  // namespace
