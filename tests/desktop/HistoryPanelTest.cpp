// The history: all steps by name, the present one marked, a click goes there and back.
#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "program/desktop/panels/HistoryPanel.h"

#include <gtest/gtest.h>

#include <QDockWidget>
#include <QtTest/QTest>

#include "engine/undo/Undo.h"
#include "host/BaseMaterial.h"
#include "host/BaseObject.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;

struct WithHistory : Desk {
  WithHistory() {
    Window().findChild<QDockWidget*>("history")->raise();
    for (const char* name : {"One", "Two", "Three"}) {
      host::BaseDocument* doc = host::GetActiveDocument();
      const engine::UndoScope scope(*doc, name);
      host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
      doc->AppendObject(object);
      doc->AddUndo(host::UNDO_NEW, object);
    }
    Rest();
  }
  desktop::HistoryPanel& Panel() {
    return dynamic_cast<desktop::HistoryPanel&>(
        *Window().findChild<QDockWidget*>("history")->widget());
  }
  QString Rows() {
    QString text;
    for (int row = 0; row < Panel().count(); ++row) {
      text += Panel().item(row)->text() + (row == Panel().currentRow() ? "* " : " ");
    }
    return text;
  }
  void Click(int row) {
    QTest::mouseClick(Panel().viewport(), Qt::LeftButton, {},
                      Panel().visualItemRect(Panel().item(row)).center());
    Rest();
  }
  static int Objects() {
    int count = 0;
    for (auto* object = host::GetActiveDocument()->GetFirstObject(); object;
         object = object->GetNext())
      ++count;
    return count;
  }
};

TEST(HistoryPanel, StepsOfAPlugInAreCalledAfterWhatWasPressed) {
  Desk desk;
  host::BaseDocument* doc = host::GetActiveDocument();
  doc->AppendObject(host::BaseObject::Alloc(host::Onull));
  doc->AppendMaterial(host::BaseMaterial::Alloc(host::Mmaterial));
  desk::RecordState(desk, "Overview & more");
  doc->GetFirstObject()->SetEditorMode(host::MODE_OFF);
  desk::LoadState(desk, 0);
  EXPECT_EQ(engine::UndoName(*doc), "Load Overview & more");
  EXPECT_EQ(desk.Entry("Edit", "Undo").text(), "&Undo Load Overview && more");
  QMenuBar& menus = desk.Window().Docks().ViewOf(*desk.Dialog())->Menus();
  for (const QAction* top : menus.actions()) {
    for (QAction* entry : top->menu()->actions()) {
      if (entry->text() == "Clean Material Editor") entry->trigger();
    }
  }
  Desk::Rest();
  EXPECT_EQ(engine::DoneNames(*doc),
            (std::vector<std::string>{"Record Overview & more", "Load Overview & more",
                                      "Clean Material Editor"}));
  engine::SelectAll(*doc);
  engine::RunWhole(*doc, engine::DeleteSelected(*doc));
  EXPECT_EQ(engine::UndoName(*doc), "Delete") << "a name of its own stays";
}

TEST(HistoryPanel, AClickGoesBackAndForward) {
  WithHistory desk;
  EXPECT_EQ(desk.Rows(), "Start One Two Three* ");
  desk.Click(1);
  EXPECT_EQ(desk.Rows(), "Start One* Two Three ");
  EXPECT_EQ(WithHistory::Objects(), 1);
  desk.Click(0);
  EXPECT_EQ(WithHistory::Objects(), 0);
  desk.Click(3);
  EXPECT_EQ(desk.Rows(), "Start One Two Three* ");
  EXPECT_EQ(WithHistory::Objects(), 3);
  desk.Click(2);
  desk.Entry("Edit", "Undo Two").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Rows(), "Start One* Two Three ");
  engine::SelectAll(*host::GetActiveDocument());
  Desk::Rest();
  desk.Entry("Edit", "Delete").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Rows(), "Start One Delete* ");
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Rows(), "Start* ");
}

}  // namespace
