// The object tree: in step with the document both ways, its dots through undo, quick with many objects.
#include "program/desktop/panels/ObjectTree.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QtTest/QTest>

#include "host/BaseObject.h"
#include "tests/desktop/Desk.h"

namespace {

using desk::Desk;
using desktop::ObjectRows;
using host::BaseObject;

BaseObject* Add(const char* name, BaseObject* parent = nullptr) {
  BaseObject* object = BaseObject::Alloc(host::Onull);
  object->SetName(name);
  host::GetActiveDocument()->AppendObject(object, parent);
  return object;
}

struct WithFamily : Desk {
  BaseObject* lamps = Add("Lamps");
  BaseObject* ceiling = Add("Ceiling", lamps);
  BaseObject* table = Add("Table", lamps);
  BaseObject* room = Add("Room");

  WithFamily() { Window().Beat(); }
  desktop::ObjectTree& Tree() { return Window().Objects(); }
  ObjectRows& Rows() { return dynamic_cast<ObjectRows&>(*Tree().model()); }
  QModelIndex IndexOf(const BaseObject* object, int column = 0) { return Rows().IndexOf(engine::IdOf(*object), column); }
  void Click(const BaseObject* object, int column, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(Tree().viewport(), Qt::LeftButton, keys, Tree().visualRect(IndexOf(object, column)).center());
    Rest();
  }
};

TEST(ObjectTree, DotsGoRoundThroughUndo) {
  WithFamily desk;
  for (const host::LONG mode : {host::MODE_ON, host::MODE_OFF, host::MODE_UNDEF, host::MODE_ON, host::MODE_OFF}) {
    desk.Click(desk.lamps, ObjectRows::kEditor);
    EXPECT_EQ(desk.lamps->GetEditorMode(), mode);
    EXPECT_EQ(desk.lamps->GetRenderMode(), host::MODE_UNDEF);
  }
  EXPECT_TRUE(desk.IndexOf(desk.table, ObjectRows::kEditor).data(ObjectRows::kHidden).toBool());
  EXPECT_FALSE(desk.IndexOf(desk.table, ObjectRows::kRender).data(ObjectRows::kHidden).toBool());
  EXPECT_EQ(desk.Entry("Edit", "Undo").text(), "&Undo Visibility");
  desk.App().Undo();
  EXPECT_EQ(desk.lamps->GetEditorMode(), host::MODE_ON);
}

TEST(ObjectTree, ADotOfAChosenObjectIsThatOfAllChosen) {
  WithFamily desk;
  desk.Click(desk.ceiling, ObjectRows::kName);
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject(), desk.ceiling);
  desk.Click(desk.room, ObjectRows::kName, Qt::ControlModifier);
  EXPECT_EQ(host::GetActiveDocument()->GetActiveObject(), desk.room);
  desk.Click(desk.room, ObjectRows::kRender);
  EXPECT_EQ(desk.ceiling->GetRenderMode(), host::MODE_ON);
  EXPECT_EQ(desk.room->GetRenderMode(), host::MODE_ON);
  EXPECT_EQ(desk.table->GetRenderMode(), host::MODE_UNDEF);
  EXPECT_EQ(desk.Tree().selectionModel()->selectedRows().size(), 2);
}

TEST(ObjectTree, FollowsSelectionNamesAndNewObjects) {
  WithFamily desk;
  const QAbstractItemModelTester tester(&desk.Rows(), QAbstractItemModelTester::FailureReportingMode::Fatal);
  host::GetActiveDocument()->SetActiveObject(desk.table);
  desk.Window().Beat();
  EXPECT_EQ(desk.Tree().selectionModel()->selectedRows(), QModelIndexList{desk.IndexOf(desk.table)});
  desk.Tree().collapse(desk.IndexOf(desk.lamps));
  Add("Door", desk.room);
  desk.Window().Beat();
  EXPECT_EQ(desk.Rows().rowCount(desk.IndexOf(desk.room)), 1);
  EXPECT_FALSE(desk.Tree().isExpanded(desk.IndexOf(desk.lamps)));
  EXPECT_TRUE(desk.Rows().setData(desk.IndexOf(desk.room), "Hall", Qt::EditRole));
  EXPECT_TRUE(desk.room->GetName() == host::String("Hall"));
  desk.App().Undo();
  EXPECT_EQ(desk.IndexOf(desk.room).data().toString(), "Room");
  const QModelIndex gone = desk.IndexOf(desk.lamps);
  BaseObject::Free(desk.lamps);
  EXPECT_FALSE(gone.data().isValid());
  desk.Window().Beat();
  EXPECT_EQ(desk.Rows().rowCount(), 1);
}

TEST(ObjectTree, TakesManyAndDeepObjects) {
  Desk desk;
  BaseObject* parent = nullptr;
  for (int i = 0; i < 20000; ++i) parent = Add("deep", i % 100 == 0 ? nullptr : parent);
  for (int i = 0; i < 20000; ++i) Add("flat");
  desk.Window().Beat();
  desk.Window().Objects().setFocus();
  QTest::keyClick(&desk.Window().Objects(), Qt::Key_A, Qt::ControlModifier);
  Desk::Rest();
  EXPECT_GE(desk.Window().Objects().selectionModel()->selectedRows().size(), 20200);
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Window().Objects().model()->rowCount(), 0);
}

}  // namespace
