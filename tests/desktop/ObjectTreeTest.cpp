// The object tree: in step with the document both ways, all it changes through undo, quick with
// many objects.
#include "engine/editing/Selection.h"
#include "program/desktop/panels/ObjectsPanel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QLineEdit>
#include <QScrollBar>
#include <QtTest/QTest>

#include "engine/scene/NodeIds.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/ObjectCells.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/Drops.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;
using desktop::ObjectModel;
using host::BaseObject;

// Lamps (Ceiling, Table) and Room.
struct WithFamily : Desk {
  tests::SceneBuilder scene{*host::GetActiveDocument()};
  BaseObject* lamps = Add("Lamps");
  BaseObject* ceiling = Add("Lamps/Ceiling");
  BaseObject* table = Add("Lamps/Table", host::Ocube);
  BaseObject* room = Add("Room");

  WithFamily() { Rest(); }
  BaseObject* Add(const std::string& path, host::LONG type = host::Onull) {
    return scene.Object(path, type).GetObject(path);
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::ObjectTree& Tree() { return Window().Objects(); }
  QLineEdit& Search() { return *Panel<QWidget>("objects").findChild<QLineEdit*>(); }
  ObjectModel& Model() { return Tree().Model(); }
  QModelIndex IndexOf(const BaseObject* object, int column = 0) {
    return Model().IndexOf(engine::IdOf(*object), column);
  }
  QPoint PlaceOf(const BaseObject* object, int column) {
    return Tree().visualRect(IndexOf(object, column)).center();
  }
  void Click(const BaseObject* object, int column, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(Tree().viewport(), Qt::LeftButton, keys, PlaceOf(object, column));
    Rest();
  }
  void Press(Qt::Key key, Qt::KeyboardModifiers keys = {}) {
    Tree().setFocus();
    QTest::keyClick(&Tree(), key, keys);
    Rest();
  }
  // Of the rows that can be seen, those of selected objects with a star.
  std::string Shown() {
    std::string text;
    for (QModelIndex index = Model().index(0, 0); index.isValid();
         index = Tree().indexBelow(index)) {
      text += index.data().toString().toStdString() + (Tree().IsSelected(index) ? "* " : " ");
    }
    return text;
  }
  bool Drop(QMimeData* data, const QPoint& place) { return drops::Drop(Tree(), data, place); }
  QMimeData* Dragged(std::initializer_list<const BaseObject*> objects) {
    std::vector<engine::NodeId> ids;
    for (const BaseObject* object : objects) ids.push_back(engine::IdOf(*object));
    return desktop::DraggedNodes(desktop::kObjectsMime, ids);
  }
};

TEST(ObjectTree, SwitchesGoRoundThroughUndo) {
  WithFamily desk;
  for (const host::LONG mode :
       {host::MODE_ON, host::MODE_OFF, host::MODE_UNDEF, host::MODE_ON, host::MODE_OFF}) {
    desk.Click(desk.lamps, ObjectModel::kEditor);
    EXPECT_EQ(desk.lamps->GetEditorMode(), mode);
    EXPECT_EQ(desk.lamps->GetRenderMode(), host::MODE_UNDEF);
  }
  EXPECT_TRUE(desk.IndexOf(desk.table, ObjectModel::kEditor).data(ObjectModel::kHidden).toBool());
  EXPECT_FALSE(desk.IndexOf(desk.table, ObjectModel::kRender).data(ObjectModel::kHidden).toBool());
  EXPECT_EQ(desk.Entry("Edit", "Undo").text(), "&Undo Visibility");
  desk.App().Undo();
  EXPECT_EQ(desk.lamps->GetEditorMode(), host::MODE_ON);
  desk.Click(desk.lamps, ObjectModel::kGenerator);
  EXPECT_TRUE(desk.lamps->GetDeformMode()) << "a null makes no shape";
  desk.Click(desk.table, ObjectModel::kGenerator);
  EXPECT_FALSE(desk.table->GetDeformMode());
  EXPECT_EQ(engine::UndoName(desk.Doc()), "Generator");
}

TEST(ObjectTree, TellsInATipTheNameThatItCuts) {
  WithFamily desk;
  desk.room->SetName("A <b>room</b> with a name that no tree is wide enough to show as a whole");
  desk.Rest();
  const QString tip = desk.IndexOf(desk.room).data(Qt::ToolTipRole).toString();
  EXPECT_TRUE(tip.contains(
      "A &lt;b&gt;room&lt;/b&gt; with a name that no tree is wide enough to show as a whole"))
      << tip.toStdString();
}

TEST(ObjectTree, ASwitchOfASelectedObjectIsThatOfAllSelected) {
  WithFamily desk;
  desk.Click(desk.ceiling, ObjectModel::kName);
  EXPECT_EQ(desk.Doc().GetActiveObject(), desk.ceiling);
  desk.Click(desk.room, ObjectModel::kName, Qt::ControlModifier);
  EXPECT_EQ(desk.Doc().GetActiveObject(), desk.room);
  desk.Click(desk.room, ObjectModel::kRender);
  EXPECT_EQ(desk.ceiling->GetRenderMode(), host::MODE_ON);
  EXPECT_EQ(desk.room->GetRenderMode(), host::MODE_ON);
  EXPECT_EQ(desk.table->GetRenderMode(), host::MODE_UNDEF);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling* Table Room* ");
  desk.Press(Qt::Key_Space);
  EXPECT_EQ(desk.ceiling->GetEditorMode(), host::MODE_ON);
  desk.Press(Qt::Key_Space, Qt::ShiftModifier);
  EXPECT_EQ(desk.ceiling->GetRenderMode(), host::MODE_OFF);
}

TEST(ObjectTree, ASweepSetsTheRowsItPassesInOneStep) {
  WithFamily desk;
  desk.ceiling->SetEditorMode(host::MODE_OFF);
  QWidget* viewport = desk.Tree().viewport();
  QTest::mousePress(viewport, Qt::LeftButton, {}, desk.PlaceOf(desk.lamps, ObjectModel::kEditor));
  QTest::mouseMove(viewport, desk.PlaceOf(desk.table, ObjectModel::kRender));
  EXPECT_EQ(desk.table->GetEditorMode(), host::MODE_ON);
  QTest::mouseMove(viewport, QPoint(3, -500));
  QTest::mouseRelease(viewport, Qt::LeftButton, {}, QPoint(3, -500));
  Desk::Rest();
  EXPECT_EQ(desk.ceiling->GetEditorMode(), host::MODE_ON);
  EXPECT_EQ(desk.room->GetEditorMode(), host::MODE_UNDEF);
  EXPECT_EQ(engine::DoneNames(desk.Doc()), std::vector<std::string>{"Visibility"});
  desk.App().Undo();
  EXPECT_EQ(desk.ceiling->GetEditorMode(), host::MODE_OFF);
  EXPECT_EQ(desk.lamps->GetEditorMode(), host::MODE_UNDEF);
}

TEST(ObjectTree, SelectsWithMouseAndKeys) {
  WithFamily desk;
  desk.Click(desk.lamps, 0);
  desk.Click(desk.table, 0, Qt::ShiftModifier);
  EXPECT_EQ(desk.Shown(), "Lamps* Ceiling* Table* Room ");
  desk.Click(desk.ceiling, 0, Qt::ControlModifier);
  EXPECT_EQ(desk.Shown(), "Lamps* Ceiling Table* Room ");
  desk.Click(desk.table, 0);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table* Room ");
  desk.Press(Qt::Key_Down);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table Room* ");
  desk.Press(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table* Room* ");
  desk.Press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(desk.Shown(), "Lamps* Ceiling* Table* Room* ");
  QTest::mouseClick(desk.Tree().viewport(), Qt::LeftButton, {},
                    {40, desk.Tree().viewport()->height() - 4});
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table Room ");
}

TEST(ObjectTree, FollowsSelectionNamesAndNewObjects) {
  WithFamily desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  desk.Tree().collapse(desk.IndexOf(desk.lamps));
  desk.Add("Room/Door");
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Room Door ");
  desk.Doc().SetActiveObject(desk.table);
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table* Room Door ")
      << "the active object is brought into view";
  EXPECT_EQ(desk.Tree().currentIndex(), desk.IndexOf(desk.table));
  desk.Press(Qt::Key_F2);
  QTest::keyClicks(desk.Tree().findChild<QLineEdit*>(), "Desk Lamp");
  QTest::keyClick(desk.Tree().findChild<QLineEdit*>(), Qt::Key_Return);
  Desk::Rest();
  EXPECT_TRUE(desk.table->GetName() == host::String("Desk Lamp"));
  EXPECT_EQ(engine::UndoName(desk.Doc()), "Rename");
  desk.App().Undo();
  EXPECT_EQ(desk.IndexOf(desk.table).data().toString(), "Table");
  const QModelIndex gone = desk.IndexOf(desk.lamps);
  BaseObject::Free(desk.lamps);
  EXPECT_FALSE(gone.data().isValid());
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Room Door ");
}

TEST(ObjectTree, SaysToScreenReadersWhatIsSelected) {
  WithFamily desk;
  desk.Click(desk.room, 0);
  desk.Click(desk.ceiling, 0, Qt::ControlModifier);
  const QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&desk.Tree());
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(tree->text(QAccessible::Name), "Objects");
  std::string read;
  for (int cell = 0; cell < tree->childCount(); ++cell) {
    const QAccessibleInterface* child = tree->child(cell);
    if (child && child->role() == QAccessible::TreeItem)
      read += child->text(QAccessible::Name).toStdString() + "; ";
  }
  for (const char* text : {"Lamps; ", "Ceiling, selected; ", "Room, selected; ", "On no layer; ",
                           "Editor: follows its parent"}) {
    EXPECT_NE(read.find(text), std::string::npos) << text << " in " << read;
  }
}

TEST(ObjectTree, EditsWithKeysWhereItHasTheFocusOnly) {
  WithFamily desk;
  desk.Click(desk.ceiling, 0);
  desk.Press(Qt::Key_D, Qt::ControlModifier);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Ceiling.1* Table Room ");
  desk.Press(Qt::Key_Delete);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table Room ");
  desk.Click(desk.room, 0);
  desk.Search().setFocus();
  QTest::keyClick(&desk.Search(), Qt::Key_Delete);
  QTest::keyClick(&desk.Search(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table Room* ");
}

TEST(ObjectTree, FindsByName) {
  WithFamily desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  desk.Tree().collapse(desk.IndexOf(desk.lamps));
  desk.Tree().setFocus();
  QTest::keyClick(&desk.Tree(), Qt::Key_Slash);
  EXPECT_TRUE(desk.Search().hasFocus());
  QTest::keyClicks(&desk.Search(), "taBL");
  EXPECT_EQ(desk.Shown(), "Lamps Table ");
  desk.Add("Room/Table 2");
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Table Room Table 2 ");
  QTest::keyClicks(&desk.Search(), "x");
  EXPECT_EQ(desk.Shown(), "");
  EXPECT_TRUE(pictures::Write(desk.Tree(), "object-search-empty"));
  QTest::keyClick(&desk.Search(), Qt::Key_Escape);
  EXPECT_EQ(desk.Shown(), "Lamps Room Table 2 ") << "folded as before";
  EXPECT_TRUE(desk.Tree().hasFocus());
  QTest::keyClick(&desk.Tree(), Qt::Key_L, Qt::ControlModifier);
  EXPECT_TRUE(desk.Search().hasFocus());
}

TEST(ObjectTree, NothingThatASearchHidesIsSelected) {
  WithFamily desk;
  BaseObject* tables = desk.Add("Tables");
  desk.Add("Tables/Chair");
  BaseObject* small = desk.Add("Tables/Small table");
  desk.Click(desk.room, 0);
  QTest::keyClicks(&desk.Search(), "table");
  for (const bool byKey : {true, false}) {
    byKey ? desk.Press(Qt::Key_A, Qt::ControlModifier)
          : desk.Entry("Edit", "Select All Found").trigger();
    Desk::Rest();
    EXPECT_EQ(desk.Shown(), "Lamps Table* Tables* Small table* ")
        << "Lamps is only there for what is below it";
    EXPECT_EQ(engine::SelectedObjects(desk.Doc()),
              (std::vector<BaseObject*>{desk.table, tables, small}));
  }
  desk.Tree().collapse(desk.IndexOf(tables));
  desk.Press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(engine::SelectedObjects(desk.Doc()), (std::vector<BaseObject*>{desk.table, tables}));
  desk.Tree().expand(desk.IndexOf(tables));
  desk.Click(desk.table, 0);
  desk.Click(small, 0, Qt::ShiftModifier);
  EXPECT_EQ(engine::SelectedObjects(desk.Doc()),
            (std::vector<BaseObject*>{desk.table, tables, small}));
  desk.Press(Qt::Key_Delete);
  QTest::keyClick(&desk.Search(), Qt::Key_Escape);
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Room ");
  EXPECT_EQ(desk.Entry("Edit", "Select").text(), "Select &All");
  desk.Press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(desk.Shown(), "Lamps* Ceiling* Room* ");
}

TEST(ObjectTree, MovesWhatIsDropped) {
  WithFamily desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  const std::unique_ptr<QMimeData> two(desk.Dragged({desk.lamps, desk.ceiling, desk.room}));
  EXPECT_FALSE(desk.Model().dropMimeData(two.get(), Qt::MoveAction, 0, 0, desk.IndexOf(desk.table)))
      << "below itself";
  const std::unique_ptr<QMimeData> room(
      desk.Model().mimeData({desk.IndexOf(desk.room), desk.IndexOf(desk.room, 1)}));
  EXPECT_TRUE(
      desk.Model().dropMimeData(room.get(), Qt::MoveAction, 1, 0, desk.IndexOf(desk.lamps)));
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Room Table ");
  EXPECT_EQ(engine::UndoName(desk.Doc()), "Move");
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Shown(), "Lamps Ceiling Table Room ");
  // With real events: onto a row, then between rows.
  EXPECT_TRUE(desk.Drop(desk.Dragged({desk.ceiling, desk.table}), desk.PlaceOf(desk.room, 0)));
  EXPECT_EQ(desk.room->GetDown(), desk.ceiling);
  EXPECT_EQ(desk.ceiling->GetNext(), desk.table);
  EXPECT_EQ(desk.lamps->GetDown(), nullptr);
  desk.Click(desk.room, 0);
  EXPECT_FALSE(desk.Drop(desk.Dragged({desk.room}), desk.PlaceOf(desk.room, 0)));
  const QRect lamps = desk.Tree().visualRect(desk.IndexOf(desk.lamps));
  EXPECT_TRUE(desk.Drop(desk.Dragged({desk.room}), {lamps.center().x(), lamps.top()}));
  EXPECT_EQ(desk.Doc().GetFirstObject(), desk.room);
  auto* other = new QMimeData;
  other->setText("12");
  EXPECT_FALSE(desk.Drop(other, desk.PlaceOf(desk.room, 0)));
}

TEST(ObjectTree, GivesMaterialsThatAreDropped) {
  WithFamily desk;
  desk.scene.Material("Red");
  const engine::NodeId red = engine::IdOf(*desk.scene.GetMaterial("Red"));
  EXPECT_TRUE(
      desk.Drop(desktop::DraggedNodes(desktop::kMaterialMime, {red}), desk.PlaceOf(desk.room, 0)));
  EXPECT_NE(desk.room->GetTag(host::Ttexture), nullptr);
  EXPECT_EQ(desk.lamps->GetTag(host::Ttexture), nullptr);
  desk.Press(Qt::Key_A, Qt::ControlModifier);
  const QRect row = desk.Tree().visualRect(desk.IndexOf(desk.lamps));
  EXPECT_TRUE(desk.Drop(desktop::DraggedNodes(desktop::kMaterialMime, {red}),
                        row.topLeft() + QPoint(4, 1)));
  EXPECT_NE(desk.table->GetTag(host::Ttexture), nullptr);
  EXPECT_EQ(engine::UndoName(desk.Doc()), "Assign Material");
  EXPECT_FALSE(desk.Drop(desktop::DraggedNodes(desktop::kMaterialMime, {red}),
                         {40, desk.Tree().viewport()->height() - 4}));
}

TEST(ObjectTree, ShowsTagsAndSelectsThem) {
  WithFamily desk;
  const host::LONG types[] = {
      host::Ttexture, host::Tcompositing, host::Tphong, 1021738, host::Texpresso, 5671, 5673};
  std::vector<host::BaseTag*> tags;
  for (const host::LONG type : types) {
    desk.scene.Tag("Room", type);
    tags.push_back(desk.room->GetTag(type));
  }
  Desk::Rest();
  const QRect cell = desk.Tree().visualRect(desk.IndexOf(desk.room, ObjectModel::kTags));
  const desktop::TagsShown shown = desktop::TagsFitting(*desk.room, cell.width());
  ASSERT_GE(shown.tags.size(), 2u);
  EXPECT_EQ(shown.tags.size() + static_cast<std::size_t>(shown.more), std::size(types));
  EXPECT_TRUE(
      desktop::TagAt(cell, cell.center() + QPoint(cell.width() / 2 - 4, 0), *desk.room).more);
  const auto click = [&](int x, Qt::KeyboardModifiers keys) {
    QTest::mouseClick(desk.Tree().viewport(), Qt::LeftButton, keys,
                      {cell.left() + x, cell.center().y()});
    Desk::Rest();
  };
  const host::BaseTag* first = shown.tags[0];
  const host::BaseTag* second = shown.tags[1];
  desk.Click(desk.lamps, 0);
  click(6, {});
  EXPECT_TRUE(first->GetBit(host::BIT_ACTIVE));
  EXPECT_FALSE(desk.lamps->GetBit(host::BIT_ACTIVE))
      << "what is clicked on is selected and nothing else";
  click(26, Qt::ControlModifier);
  EXPECT_TRUE(first->GetBit(host::BIT_ACTIVE) && second->GetBit(host::BIT_ACTIVE));
  EXPECT_TRUE(pictures::Write(desk.Tree(), "object-tags"));
  desk.Press(Qt::Key_Delete);
  EXPECT_EQ(desktop::TagsFrom(*desk.room, 0, 100).size(), std::size(types) - 2);
  desk.Click(desk.room, 0);
  EXPECT_EQ(engine::ActiveTagOf(desk.Doc()), nullptr);
  EXPECT_EQ(desktop::TagsFitting(*desk.room, 5).tags.size(), 0u);
}

TEST(ObjectTree, TakesManyAndDeepObjects) {
  Desk desk;
  host::BaseDocument& doc = *host::GetActiveDocument();
  BaseObject* parent = nullptr;
  for (int i = 0; i < 30000; ++i) {
    BaseObject* object = BaseObject::Alloc(host::Onull);
    doc.AppendObject(object, i % 15000 == 0 ? nullptr : parent);
    parent = object;
  }
  for (int i = 0; i < 20000; ++i) doc.AppendObject(BaseObject::Alloc(host::Onull));
  Desk::Rest();
  desktop::ObjectTree& tree = desk.Window().Objects();
  tree.setFocus();
  QTest::keyClick(&tree, Qt::Key_A, Qt::ControlModifier);
  Desk::Rest();
  EXPECT_EQ(engine::SelectedObjects(doc).size(), 50000u);
  tree.UnfoldAll();
  Desk::Rest();
  tree.SetFilter("null");
  Desk::Rest();
  tree.SetFilter("");
  doc.SetActiveObject(parent);
  tree.ShowActive();
  QTest::keyClick(&tree, Qt::Key_Asterisk);
  Desk::Rest();
  QTest::keyClick(&tree, Qt::Key_Home);
  QTest::keyClick(&tree, Qt::Key_End, Qt::ShiftModifier);
  EXPECT_GE(engine::SelectedObjects(doc).size(), 20400u);
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(tree.model()->rowCount(), 0);
}

TEST(ObjectTreePicture, SampleScenes) {
  for (const char* name : {"dungeon/dungeon.gltf", "spider/spider.obj"}) {
    Desk desk;
    // The dungeon tells of what did not come along.
    if (QString(name).startsWith("dungeon")) desk::AnswerNext([](QDialog& box) { box.accept(); });
    ASSERT_TRUE(desk.Window().Commands().Open(std::string(TEST_SOURCE_DIR "/scenes/") + name));
    Desk::Rest();
    host::BaseObject* first = host::GetActiveDocument()->GetFirstObject();
    first->SetRenderMode(host::MODE_OFF);
    if (first->GetDown()) first->GetDown()->SetEditorMode(host::MODE_ON);
    host::GetActiveDocument()->SetActiveObject(first->GetDown() ? first->GetDown() : first);
    Desk::Rest();
    QWidget& panel = desk.Panel<QWidget>("objects");
    EXPECT_TRUE(pictures::Write(panel, QString("objects-") + QString(name).section('/', 0, 0)));
  }
}

}  // namespace
