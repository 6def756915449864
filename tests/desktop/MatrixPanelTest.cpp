// The panel "Matrix": what each state says of each element; sorting, filter, copying, and the way
// from a cell to the scene and the list.
#include "program/desktop/panels/MatrixPanel.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QHeaderView>
#include <QMessageBox>

#include "engine/editing/Selection.h"
#include "tests/desktop/States.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;
using desktop::MatrixModel;

struct WithMatrix : Desk {
  tests::SceneBuilder build{*host::GetActiveDocument()};

  // Three states of three objects, and one object that no state knows.
  WithMatrix() {
    build.Cube("Room").Cube("Room/Lamp").Cube("Table").Camera("Wide");
    Record("A");
    Object("Table").SetEditorMode(host::MODE_OFF);
    Record("B");
    Object("Room/Lamp").SetRenderMode(host::MODE_OFF);
    Object("Table").SetEditorMode(host::MODE_ON);
    Record("C");
    build.Cube("Late");
    Raise("matrix");
    Touch();
  }
  void Record(const char* name) { desk::RecordState(*this, name); }
  static void Touch() {
    host::EventAdd();
    Rest();
  }
  desktop::MatrixPanel& Matrix() { return Panel<desktop::MatrixPanel>("matrix"); }
  desktop::MatrixTable& Table() { return Matrix().Table(); }
  host::BaseObject& Object(const char* path) { return *build.GetObject(path); }
  // A line for each row: its cells, with a star before one that is marked as changed.
  std::string Text() {
    const MatrixModel& model = Table().Model();
    std::string text;
    for (int row = 0; row < model.rowCount(); ++row) {
      QStringList cells;
      for (int column = 0; column < model.columnCount(); ++column) {
        const QModelIndex cell = model.index(row, column);
        cells += (cell.data(MatrixModel::kIsChanged).toBool() ? "*" : "") + cell.data().toString();
      }
      text += cells.join(" | ").toStdString() + "\n";
    }
    return text;
  }
  QModelIndex Cell(const char* element, int column) {
    const MatrixModel& model = Table().Model();
    return model.match(model.index(0, 0), Qt::DisplayRole, element, 1, Qt::MatchStartsWith)
        .value(0)
        .siblingAtColumn(column);
  }
  void Click(const QModelIndex& cell) {
    Table().scrollTo(cell);
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {}, Table().visualRect(cell).center());
    Rest();
  }
};

constexpr const char* kLamp =
    "Room/Lamp | Render mode Undefined | Render mode Undefined | *Render mode Off\n";
constexpr const char* kTable =
    "Table | Editor mode Undefined | *Editor mode Off | *Editor mode On\n";
const std::string kLate = "Late: no state knows it | \u2013 | \u2013 | \u2013\n";

TEST(MatrixPanel, ShowsWhatDiffersAndFollowsWhatIsRecorded) {
  WithMatrix desk;
  EXPECT_EQ(desk.Text(), std::string(kLamp) + kTable + kLate);
  EXPECT_TRUE(desk.Cell("Late", 0).data(MatrixModel::kIsUnknown).toBool());
  desk.Matrix().ShowAll().click();
  Desk::Rest();
  EXPECT_NE(desk.Text().find("\nRoom | "), std::string::npos);
  desk.Matrix().ShowAll().click();
  desk.Record("D");
  EXPECT_EQ(desk.Table().Model().columnCount(), 5);
  EXPECT_EQ(desk.Text().find("no state"), std::string::npos) << "the new one knows it";
  desk::AnswerNext<QMessageBox>(
      [](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
  desk.Window().States().Delete("D");
  Desk::Rest();
  EXPECT_EQ(desk.Text(), std::string(kLamp) + kTable + kLate);
  desk.Object("Table").SetName("Desk");
  WithMatrix::Touch();
  EXPECT_TRUE(desk.Cell("Desk", 0).isValid());
}

TEST(MatrixPanel, IsSortedAndFiltered) {
  WithMatrix desk;
  QHeaderView& header = *desk.Table().horizontalHeader();
  const auto click = [&](int column) {
    const int x = header.sectionViewportPosition(column) + header.sectionSize(column) / 2;
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, {x, header.height() / 2});
    Desk::Rest();
  };
  desk.Table().scrollTo(desk.Cell("Table", 2));
  click(2);
  EXPECT_EQ(desk.Text(), kTable + std::string(kLamp) + kLate);
  click(2);
  EXPECT_EQ(desk.Text(), kLate + kLamp + kTable);
  click(2);
  EXPECT_EQ(desk.Text(), std::string(kLamp) + kTable + kLate) << "as in the scene";
  QTest::keyClicks(&desk.Matrix().Filter(), "TAB");
  EXPECT_EQ(desk.Text(), kTable);
  QTest::keyClicks(&desk.Matrix().Filter(), "x");
  EXPECT_EQ(desk.Text(), "");
  desk.Matrix().Filter().clear();
  EXPECT_EQ(desk.Text(), std::string(kLamp) + kTable + kLate);
}

TEST(MatrixPanel, ACellChoosesObjectAndState) {
  WithMatrix desk;
  const host::BaseDocument& doc = *host::GetActiveDocument();
  using Objects = std::vector<host::BaseObject*>;
  desk.Click(desk.Cell("Table", 2));
  EXPECT_EQ(engine::SelectedObjects(doc), Objects{&desk.Object("Table")});
  EXPECT_EQ(desk.Window().States().Chosen(), std::vector<std::string>{"B"});
  EXPECT_EQ(desk.Table().currentIndex(), desk.Cell("Table", 2));
  // By keys, and the element alone chooses no state.
  QTest::keyClick(&desk.Table(), Qt::Key_Up);
  QTest::keyClick(&desk.Table(), Qt::Key_Left);
  QTest::keyClick(&desk.Table(), Qt::Key_Left);
  QTest::keyClick(&desk.Table(), Qt::Key_Return);
  Desk::Rest();
  EXPECT_EQ(engine::SelectedObjects(doc), Objects{&desk.Object("Room/Lamp")});
  EXPECT_EQ(desk.Window().States().Chosen(), std::vector<std::string>{"B"});
}

TEST(MatrixPanel, IsCopiedAsText) {
  WithMatrix desk;
  desk.Table().setCurrentIndex(desk.Cell("Table", 2));
  QTest::keyClick(&desk.Table(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "Editor mode Off");
  desk.Table().selectAll();
  QTest::keyClick(&desk.Table(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text().section('\n', 0, 1),
            "Element\tA\tB\tC\n"
            "Room/Lamp\tRender mode Undefined\tRender mode Undefined\tRender mode Off");
}

TEST(MatrixPanel, SaysWhatToDoWhereThereIsNothing) {
  Desk desk;
  desk.Raise("matrix");
  EXPECT_EQ(desk.Panel<desktop::MatrixPanel>("matrix").Table().Model().rowCount(), 0);
  EXPECT_TRUE(pictures::Write(desk.Window(), "matrix-empty"));
  for (int i = 0; i < 25000; ++i)
    host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Onull));
  desk::RecordState(desk, "Many");
  auto& panel = desk.Panel<desktop::MatrixPanel>("matrix");
  EXPECT_TRUE(panel.IsReading()) << "a large scene is read in slices";
  EXPECT_TRUE(pictures::WaitFor([&] { return !panel.IsReading(); }));
  EXPECT_EQ(panel.Table().Model().columnCount(), 2);
}

}  // namespace
