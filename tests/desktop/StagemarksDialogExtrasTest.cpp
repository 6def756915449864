// The Stagemarks dialog in the hands of a person: keys, double clicks and context menus press its
// own buttons, the chosen row and its picture stay, and questions say what they are about.
#include "program/desktop/dialog/StagemarksDialogExtras.h"

#include <gtest/gtest.h>

#include <QHelpEvent>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QToolTip>

#include "host/BaseObject.h"
#include "program/desktop/dialog/GadgetWidgets.h"
#include "tests/desktop/States.h"

namespace {

using desk::AnswerNext;
using desk::CountStates;
using desk::Desk;
using desk::RecordState;
using desk::Scene;
using desk::StateList;

constexpr int kName = 2;

struct WithStates : Desk {
  host::BaseObject* object = host::BaseObject::Alloc(host::Onull);

  WithStates() {
    Scene().AppendObject(object);
    object->SetEditorMode(host::MODE_ON);
    RecordState(*this, "Morning");
    object->SetEditorMode(host::MODE_OFF);
    RecordState(*this, "Noon");
  }
  QLineEdit& Field() { return Gadget<QLineEdit>(stagemarks::kNameField); }
  QPoint PlaceOf(int row, int column = kName) {
    return StateList(*this).visualRect(StateList(*this).model()->index(row, column)).center();
  }
  // The names of the chosen rows.
  QStringList Chosen() {
    QStringList names;
    for (const QModelIndex& row : StateList(*this).selectionModel()->selectedRows(kName))
      names.append(row.data().toString());
    return names;
  }
  // Asks for the menu of a row and chooses an entry of it; what the entries are.
  QStringList ChooseInMenu(int row, const QString& entry, int column = kName) {
    QStringList entries;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      if (!menu) return;
      timer.stop();
      for (QAction* action : menu->actions()) {
        entries.append(action->text() + (action->isEnabled() ? "" : " (off)"));
        if (action->text().startsWith(entry)) menu->setActiveAction(action);
      }
      QTest::keyClick(menu, Qt::Key_Return);
    });
    timer.start(5);
    desktop::ListView& list = StateList(*this);
    QTest::mouseClick(list.viewport(), Qt::RightButton, {}, PlaceOf(row, column));
    QContextMenuEvent asked(QContextMenuEvent::Mouse, PlaceOf(row, column),
                            list.viewport()->mapToGlobal(PlaceOf(row, column)));
    QApplication::sendEvent(list.viewport(), &asked);
    Rest();
    return entries;
  }
};

TEST(StagemarksDialogExtras, EnterRecordsAndOpensRows) {
  WithStates desk;
  desk.Field().clear();
  QTest::keyClicks(&desk.Field(), "Evening");
  QTest::keyClick(&desk.Field(), Qt::Key_Return);
  Desk::Rest();
  EXPECT_EQ(CountStates(desk), 3);
  EXPECT_EQ(desk.Chosen(), QStringList{"Evening"}) << "what was recorded is the chosen row";
  desk::ChooseState(desk, 1);
  QTest::keyClick(&StateList(desk), Qt::Key_Return);
  Desk::Rest();
  EXPECT_EQ(desk.object->GetEditorMode(), host::MODE_ON);
  QTest::mouseDClick(StateList(desk).viewport(), Qt::LeftButton, {}, desk.PlaceOf(2));
  Desk::Rest();
  EXPECT_EQ(desk.object->GetEditorMode(), host::MODE_OFF);
}

// Twice into a check box is twice its state, not a load.
TEST(StagemarksDialogExtras, ADoubleClickIntoACheckBoxLoadsNothing) {
  WithStates desk;
  desk::ChooseState(desk, 0);
  QTest::mouseDClick(StateList(desk).viewport(), Qt::LeftButton, {}, desk.PlaceOf(0, 1));
  Desk::Rest();
  EXPECT_EQ(desk.object->GetEditorMode(), host::MODE_OFF);
}

TEST(StagemarksDialogExtras, TheChosenRowStaysThroughLoadsRecordsAndClicks) {
  WithStates desk;
  const auto expectMorning = [&](const char* after) {
    EXPECT_EQ(desk.Chosen(), QStringList{"Morning"}) << after;
    desk.object->SetEditorMode(host::MODE_UNDEF);
    QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kLoad), Qt::LeftButton);
    Desk::Rest();
    EXPECT_EQ(desk.object->GetEditorMode(), host::MODE_ON) << after;
  };
  desk::LoadState(desk, 0);
  expectMorning("a load");
  Scene().SetActiveObject(desk.object, host::SELECTION_NEW);
  host::EventAdd();
  Desk::Rest();
  expectMorning("a click on an object");
  desk.Field().clear();
  QTest::keyClicks(&desk.Field(), "Dawn");
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(desk.Field().text(), "Dawn") << "what is being typed stays";
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kRename), Qt::LeftButton);
  Desk::Rest();
  EXPECT_EQ(desk.Chosen(), QStringList{"Dawn"});
}

TEST(StagemarksDialogExtras, ThePictureOfTheChosenRowStays) {
  WithStates desk;
  ASSERT_TRUE(desk.App().SaveDocumentAs(Scene(), desk.Folder() + "/room.c4d"));
  QTest::mouseClick(&desk.Gadget<QWidget>(stagemarks::kGeneratePreview), Qt::LeftButton, {},
                    QPoint(8, 8));
  RecordState(desk, "Pictured");
  const auto& picture = desk.Gadget<desktop::PictureButton>(stagemarks::kPreviewButton);
  const QImage its = picture.Picture();
  desk::ChooseState(desk, 0);
  Desk::Rest();
  const QImage other = picture.Picture();
  EXPECT_NE(its, other) << "the one of a row without a preview";
  desk::ChooseState(desk, 2);
  Desk::Rest();
  EXPECT_EQ(picture.Picture(), its);
  for (int i = 0; i < 2; ++i) {
    host::EventAdd();
    Desk::Rest();
    EXPECT_EQ(picture.Picture(), its);
  }
  desk.Field().clear();
  QTest::keyClicks(&desk.Field(), "Other");
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(picture.Picture(), other) << "the name that is typed has no picture";
}

TEST(StagemarksDialogExtras, RowsHaveAMenuOfTheirOwn) {
  WithStates desk;
  EXPECT_EQ(desk.ChooseInMenu(0, "Load"),
            (QStringList{"Load", "Rename\u2026", "Delete", "", "Check"}));
  EXPECT_EQ(desk.object->GetEditorMode(), host::MODE_ON);
  desk.ChooseInMenu(1, "Check", 1);
  EXPECT_EQ(desk.Chosen(), QStringList{"Noon"}) << "the menu is of the row that one points at";
  EXPECT_EQ(StateList(desk).model()->index(1, 1).data(Qt::CheckStateRole), Qt::Checked);
  EXPECT_EQ(desk.ChooseInMenu(1, "Uncheck").value(4), "Uncheck");
  EXPECT_EQ(StateList(desk).model()->index(1, 1).data(Qt::CheckStateRole), Qt::Unchecked);
  const auto rename = [&](const char* name) {
    AnswerNext<QInputDialog>([name](QInputDialog& box) {
      EXPECT_EQ(box.textValue(), "Noon");
      box.setTextValue(name);
      box.accept();
    });
    desk.ChooseInMenu(1, "Rename");
    return StateList(desk).model()->index(1, kName).data().toString();
  };
  AnswerNext<QInputDialog>([&](QInputDialog& box) {
    AnswerNext<QMessageBox>([](QMessageBox& told) {
      EXPECT_TRUE(told.text().contains("already"));
      told.accept();
    });
    box.setTextValue("Morning");
    box.accept();
  });
  desk.ChooseInMenu(1, "Rename");
  EXPECT_EQ(StateList(desk).model()->index(1, kName).data(), "Noon") << "a name that is taken";
  EXPECT_EQ(rename("Night"), "Night");
  EXPECT_EQ(desk.Chosen(), QStringList{"Night"});
}

TEST(StagemarksDialogExtras, QuestionsSayWhichOneTheyAreAbout) {
  WithStates desk;
  QString told;
  const auto answer = [&] {
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
      told = box.informativeText();
      box.button(QMessageBox::No)->click();
    });
  };
  desk::ChooseState(desk, 1);
  answer();
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kDelete), Qt::LeftButton);
  EXPECT_EQ(told, "Stagemark: Noon");
  answer();
  desk.ChooseInMenu(0, "Delete");
  EXPECT_EQ(told, "Stagemark: Morning");
  answer();
  RecordState(desk, "Noon");
  EXPECT_EQ(told, "Stagemark: Noon");
  EXPECT_EQ(CountStates(desk), 2);
  answer();
  desk.Person().Ask("Something else?");
  EXPECT_EQ(told, "");
}

TEST(StagemarksDialogExtras, GadgetsAndCutNamesAreExplained) {
  WithStates desk;
  for (const host::LONG id :
       {stagemarks::kLoad, stagemarks::kDelete, stagemarks::kRename, stagemarks::kNameField,
        stagemarks::kRecord, stagemarks::kGeneratePreview, stagemarks::kGenerateFiles,
        stagemarks::kFileLayout, stagemarks::kChangeFrameRange, stagemarks::kPreviewButton}) {
    EXPECT_NE(desk.Gadget<QWidget>(id).toolTip(), "") << id;
  }
  const QString name =
      "A name <b>so long</b> that no list is wide enough for it " + QString(60, 'W');
  RecordState(desk, name.toUtf8().constData());
  const auto pointAt = [&](int row) {
    const QPoint place =
        desk.PlaceOf(row) -
        QPoint(desk.PlaceOf(row).x() - StateList(desk).columnViewportPosition(kName) - 4, 0);
    QHelpEvent help(QEvent::ToolTip, place, StateList(desk).viewport()->mapToGlobal(place));
    QApplication::sendEvent(StateList(desk).viewport(), &help);
    return QToolTip::text();
  };
  EXPECT_EQ(pointAt(0), "<qt>" + name.toHtmlEscaped() + "</qt>");
  EXPECT_FALSE(pointAt(1).contains("Morning")) << "one sees all of it";
}

}  // namespace
