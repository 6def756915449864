// Dialogs as widgets: drawn from the gadget tree, in step with it, and pressed like a person does.
#include "program/desktop/dialog/DialogView.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest/QTest>

#include "program/desktop/Text.h"
#include "program/desktop/dialog/GadgetWidgets.h"
#include "program/desktop/dialog/ListView.h"
#include "tests/desktop/Pictures.h"
#include "tests/dialog/SampleDialog.h"
#include "tests/support/PluginSession.h"

namespace {

using desktop::DialogView;
using pictures::Settle;

struct Shown {
  sample::SampleDialog dialog;
  tests::ScriptedServices services;
  std::unique_ptr<DialogView> view;

  Shown() {
    dialog.OpenIt();
    view = std::make_unique<DialogView>(dialog, services.files, nullptr);
    view->resize(500, 500);
    view->show();
    dialog.Heard();
  }
  template <class Widget>
  Widget& Get(host::LONG id) {
    return dynamic_cast<Widget&>(*view->WidgetOf(id));
  }
  void Fill(int rows) {
    dialog.list.RemoveAll();
    for (int i = 0; i < rows; ++i)
      dialog.list.SetItem(i, sample::SampleDialog::NamedRow(std::to_string(i).c_str(), i % 3 == 0));
    dialog.list.DataChanged();
    Settle();
  }
  desktop::ListView& List() { return Get<desktop::ListView>(sample::kList); }
  QPoint CheckBoxOf(int line) { return List().visualRect(List().model()->index(line, 0)).center(); }
  QPoint NameOf(int line) { return List().visualRect(List().model()->index(line, 1)).center(); }
};

TEST(DialogView, ActsOfAPersonBecomeEvents) {
  Shown shown;
  QTest::mouseClick(shown.view->WidgetOf(sample::kButton), Qt::LeftButton);
  EXPECT_EQ(shown.dialog.Heard(), "command 1 from 1");
  QTest::mouseClick(shown.view->WidgetOf(sample::kPicture), Qt::LeftButton);
  EXPECT_EQ(shown.dialog.Heard(), "command 8 from 8");
  shown.Get<QCheckBox>(sample::kCheckbox).click();
  EXPECT_EQ(shown.dialog.Heard(), "command 2 from 2");
  EXPECT_EQ(engine::FindGadget(shown.dialog, sample::kCheckbox)->value.GetLong(), 1);
  QTest::keyClicks(shown.view->WidgetOf(sample::kField), "ab");
  EXPECT_EQ(shown.dialog.Heard(), "command 4 from 4, command 4 from 4");
  EXPECT_EQ(engine::FindGadget(shown.dialog, sample::kField)->value.GetString(), "ab");
  shown.Get<desktop::NumberField>(sample::kNumber).stepUp();
  EXPECT_EQ(shown.dialog.Heard(), "command 5 from 5");
  QTest::keyClick(shown.view->WidgetOf(sample::kCombo), Qt::Key_Down);
  EXPECT_EQ(shown.dialog.Heard(), "command 6 from 6");
  EXPECT_EQ(engine::FindGadget(shown.dialog, sample::kCombo)->value.GetLong(),
            sample::kSecondChoice);
}

TEST(DialogView, FollowsWhatTheDialogSets) {
  Shown shown;
  auto& field = shown.Get<QLineEdit>(sample::kField);
  shown.dialog.SetString(sample::kField, "typed by the plug-in");
  shown.dialog.SetString(sample::kText, "A & B");
  shown.dialog.SetBool(sample::kCheckbox, host::TRUE);
  shown.dialog.SetLong(sample::kCombo, sample::kSecondChoice);
  shown.dialog.SetReal(sample::kNumber, 7.9, 0, 300000, 1, host::FORMAT_LONG);
  shown.dialog.Enable(sample::kButton, host::FALSE);
  Settle();
  EXPECT_EQ(field.text(), "typed by the plug-in");
  EXPECT_EQ(shown.Get<QLabel>(sample::kText).text(), "A & B");
  EXPECT_TRUE(shown.Get<QCheckBox>(sample::kCheckbox).isChecked());
  EXPECT_EQ(shown.Get<QComboBox>(sample::kCombo).currentText(), "second");
  EXPECT_EQ(shown.Get<desktop::NumberField>(sample::kNumber).text(), "8");
  EXPECT_FALSE(shown.Get<QPushButton>(sample::kButton).isEnabled());
  EXPECT_EQ(shown.dialog.Heard(), "") << "showing is no event";
}

TEST(DialogView, AListOfChoicesStaysWhileAPersonChooses) {
  Shown shown;
  auto& combo = shown.Get<QComboBox>(sample::kCombo);
  combo.showPopup();
  combo.view()->setCurrentIndex(combo.model()->index(1, 0));
  shown.dialog.Enable(sample::kCombo, host::TRUE);
  Settle();
  QTest::keyClick(combo.view(), Qt::Key_Return);
  EXPECT_EQ(engine::FindGadget(shown.dialog, sample::kCombo)->value.GetLong(),
            sample::kSecondChoice);
}

TEST(DialogView, MarksInMenusKeepTheWidgetsAndNewGadgetsDoNot) {
  Shown shown;
  QWidget* field = shown.view->WidgetOf(sample::kField);
  shown.dialog.MenuInitString(sample::kMarkedEntry, host::TRUE, host::TRUE);
  Settle();
  EXPECT_EQ(shown.view->WidgetOf(sample::kField), field);
  shown.dialog.AddButton(500, 0, 0, 0, "New");
  Settle();
  ASSERT_NE(shown.view->WidgetOf(500), nullptr);
  QTest::mouseClick(shown.view->WidgetOf(500), Qt::LeftButton);
  EXPECT_EQ(shown.dialog.Heard(), "command 500 from 500");
}

TEST(DialogView, MenusShowMarksAndSendEvents) {
  Shown shown;
  QMenu* edit = shown.view->Menus().actions().first()->menu();
  ASSERT_EQ(edit->actions().size(), 3);
  QMenu* more = edit->actions().last()->menu();
  QAction* marked = more->actions().first();
  marked->trigger();
  EXPECT_EQ(shown.dialog.Heard(), "command 61 from 61");
  shown.dialog.MenuInitString(sample::kMarkedEntry, host::FALSE, host::TRUE);
  more->popup({});
  EXPECT_TRUE(marked->isChecked());
  EXPECT_FALSE(marked->isEnabled());
  more->close();
}

TEST(DialogView, ClickingRowsSelectsAndClickingBoxesChecksOnly) {
  Shown shown;
  shown.Fill(10);
  QTest::mouseClick(shown.List().viewport(), Qt::LeftButton, {}, shown.NameOf(1));
  QTest::mouseClick(shown.List().viewport(), Qt::LeftButton, Qt::ShiftModifier, shown.NameOf(3));
  EXPECT_EQ(shown.dialog.Heard(), "command 7 from 7, command 7 from 7");
  QTest::mouseClick(shown.List().viewport(), Qt::LeftButton, {}, shown.CheckBoxOf(4));
  EXPECT_EQ(shown.dialog.Heard(), "command 7 from 7");
  const engine::Gadget* list = engine::FindGadget(shown.dialog, sample::kList);
  EXPECT_TRUE(list->listRows[4].values.GetBool(sample::kCheckedColumn));
  EXPECT_EQ(list->selection.GetCount(), 3);
  QTest::keyClick(&shown.List(), Qt::Key_Space);
  for (const std::size_t line : {1, 2, 3})
    EXPECT_TRUE(list->listRows[line].values.GetBool(sample::kCheckedColumn));
}

TEST(DialogView, SelectionOfThePluginIsShownWithoutAnEvent) {
  Shown shown;
  shown.Fill(10);
  host::BaseSelect some;
  some.SelectAll(2, 4);
  some.Select(8);
  shown.dialog.list.SetSelection(some);
  Settle();
  EXPECT_EQ(shown.List().selectionModel()->selectedRows().size(), 4);
  shown.Fill(3);
  ASSERT_EQ(shown.List().selectionModel()->selectedRows().size(), 1)
      << "the row of that name that is there again";
  EXPECT_EQ(shown.List().selectionModel()->selectedRows(1).first().data(), "2");
  EXPECT_EQ(shown.dialog.Heard(), "");
}

TEST(DialogView, ListModelKeepsItsPromisesThroughTenThousandRows) {
  Shown shown;
  const QAbstractItemModelTester tester(shown.List().model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (const int rows : {0, 5, 10000, 9999, 1, 0, 12000}) {
    shown.Fill(rows);
    EXPECT_EQ(shown.List().model()->rowCount(), rows);
  }
  QTest::keyClick(&shown.List(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(engine::FindGadget(shown.dialog, sample::kList)->selection.GetCount(), 12000);
  // Rows that are gone before the view has heard of it have nothing to show.
  shown.dialog.list.RemoveAll();
  EXPECT_FALSE(shown.List().model()->index(11999, 1).data().isValid());
}

TEST(DialogView, OutlivesItsDialog) {
  Shown shown;
  shown.Fill(10);
  bool told = false;
  shown.view->closed = [&] { told = true; };
  shown.dialog.onCommand = [&] { shown.dialog.Close(); };
  QTest::mouseClick(shown.view->WidgetOf(sample::kButton), Qt::LeftButton);
  Settle();
  EXPECT_TRUE(told);
  EXPECT_EQ(shown.view->Dialog(), nullptr);
  shown.dialog.Heard();
  shown.Get<QCheckBox>(sample::kCheckbox).click();
  EXPECT_EQ(shown.dialog.Heard(), "");
}

TEST(DialogView, HoldsNamesOfAnyKindAtAnySize) {
  Shown shown;
  shown.dialog.list.SetItem(0,
                            sample::SampleDialog::NamedRow(std::string(10000, 'W').c_str(), true));
  shown.dialog.list.SetItem(
      1, sample::SampleDialog::NamedRow("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d\nsecond line", true));
  shown.dialog.list.SetItem(2, sample::SampleDialog::NamedRow("broken \xff", true));
  shown.dialog.list.DataChanged();
  Settle();
  EXPECT_LT(shown.List().columnWidth(1), 600);
  EXPECT_FALSE(shown.List().model()->index(1, 1).data().toString().contains('\n'));
  for (const QSize size : {QSize(0, 0), QSize(3000, 2000), QSize(40, 900)}) {
    shown.view->resize(size);
    Settle();
  }
}

TEST(DialogView, NamesInNarrowListsStayReadable) {
  Shown shown;
  shown.dialog.list.SetItem(0, sample::SampleDialog::NamedRow(
                                   "A name that is longer than any narrow list is wide", false));
  shown.dialog.list.DataChanged();
  const int readable = shown.List().fontMetrics().horizontalAdvance("A name that");
  for (const auto& [width, scrolls] : {std::pair{90, true}, {700, false}}) {
    shown.List().setMinimumWidth(0);
    shown.List().setFixedWidth(width);
    Settle();
    EXPECT_GT(shown.List().columnWidth(1), readable) << width;
    EXPECT_EQ(shown.List().horizontalScrollBar()->maximum() > 0, scrolls) << width;
  }
}

TEST(DialogView, ListsWithoutRowsSayWhatToDo) {
  Shown shown;
  shown.Fill(0);
  const QImage blank = shown.List().grab().toImage();
  shown.view->SetEmptyListText("Nothing yet: press Go");
  EXPECT_NE(shown.List().grab().toImage(), blank);
  shown.dialog.AddButton(500, 0, 0, 0, "New");
  Settle();
  const QImage rebuilt = shown.List().grab().toImage();
  shown.view->SetEmptyListText({});
  EXPECT_NE(shown.List().grab().toImage(), rebuilt) << "the text outlives a change of the gadgets";
}

TEST(DialogView, AsksForRoomInTheShapeOfThePicture) {
  tests::PluginSession session;
  DialogView view(session.Dialog(), session.Services().files, nullptr);
  view.resize(900, 900);
  view.show();
  Settle();
  const auto& button = dynamic_cast<desktop::PictureButton&>(*view.WidgetOf(10006));
  const double shape = static_cast<double>(button.Picture().width()) / button.Picture().height();
  EXPECT_NEAR(button.width(), button.height() * shape, 2);
}

TEST(DialogViewPicture, SampleDialog) {
  Shown shown;
  shown.Fill(40);
  EXPECT_TRUE(pictures::Write(*shown.view, "sample-dialog"));
}

TEST(DialogViewPicture, PluginDialog) {
  tests::PluginSession session;
  for (const char* name : {"Morning", "Noon, shutters closed", "Evening", "Night with lamps"})
    session.Record(name);
  session.Check("Evening");
  DialogView view(session.Dialog(), session.Services().files, nullptr);
  view.resize(view.sizeHint());
  view.show();
  auto* picture = dynamic_cast<desktop::PictureButton*>(view.WidgetOf(10006));
  ASSERT_NE(picture, nullptr);
  EXPECT_FALSE(picture->Picture().isNull());
  EXPECT_TRUE(pictures::Write(view, "plugin-dialog"));
  view.resize(520, 560);
  EXPECT_TRUE(pictures::Write(view, "plugin-dialog-small"));
}

}  // namespace
