// The theme: texts stand out, what has the keyboard can be seen, what is switched off looks so; and
// a sheet of all controls.
#include "program/desktop/ApplicationStyle.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <cmath>

#include "program/desktop/DesktopPerson.h"
#include "program/desktop/Icons.h"
#include "tests/desktop/Desk.h"

namespace {

using desktop::Icon;
using pictures::Settle;

// How much brighter one color looks than the other, 1..21, as WCAG reckons it.
double Contrast(const QColor& a, const QColor& b) {
  const auto light = [](const QColor& color) {
    const auto channel = [](double c) {
      return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
  };
  const auto [dark, bright] = std::minmax({light(a), light(b)});
  return (bright + 0.05) / (dark + 0.05);
}

// One of each control that a person works with.
std::vector<QWidget*> Controls(QWidget* parent) {
  auto* combo = new QComboBox(parent);
  combo->addItems({"As Save File", "As Save Project"});
  auto* number = new QDoubleSpinBox(parent);
  auto* box = new QCheckBox("Check box", parent);
  box->setChecked(true);
  auto* tool = new QToolButton(parent);
  tool->setIcon(Icon("save"));
  auto* radio = new QRadioButton("Choice", parent);
  radio->setChecked(true);
  auto* slider = new QSlider(Qt::Horizontal, parent);
  slider->setValue(40);
  return {new QPushButton("Button", parent),
          new QLineEdit("Text", parent),
          combo,
          number,
          box,
          radio,
          tool,
          slider};
}

class Theme : public testing::TestWithParam<const desktop::Theme*> {
 protected:
  void SetUp() override { desktop::ShowTheme(*GetParam()); }
  void TearDown() override { desktop::ShowTheme(desktop::DarkTheme()); }
};
INSTANTIATE_TEST_SUITE_P(Looks, Theme,
                         testing::Values(&desktop::DarkTheme(), &desktop::LightTheme()),
                         [](const auto& look) { return look.param->isLight ? "Light" : "Dark"; });

TEST_P(Theme, TextsStandOutFromTheirGround) {
  const QPalette palette = QApplication::palette();
  struct Row {
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
  };
  for (const auto& [text, ground] : {Row{QPalette::WindowText, QPalette::Window},
                                     {QPalette::Text, QPalette::Base},
                                     {QPalette::Text, QPalette::AlternateBase},
                                     {QPalette::ButtonText, QPalette::Button},
                                     {QPalette::HighlightedText, QPalette::Highlight},
                                     {QPalette::ToolTipText, QPalette::ToolTipBase},
                                     {QPalette::Link, QPalette::Window}}) {
    EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5)
        << text << " on " << ground;
  }
  EXPECT_GE(
      Contrast(palette.color(QPalette::Disabled, QPalette::Text), palette.color(QPalette::Base)),
      3);
  EXPECT_GE(Contrast(palette.color(QPalette::PlaceholderText), palette.color(QPalette::Base)), 3);
}

TEST_P(Theme, KeyboardAndSwitchingOffCanBeSeen) {
  QWidget page;
  auto* column = new QVBoxLayout(&page);
  auto* other = new QPushButton("Other", &page);
  column->addWidget(other);
  const auto controls = Controls(&page);
  for (QWidget* control : controls) column->addWidget(control);
  page.show();
  page.activateWindow();
  for (QWidget* control : controls) {
    other->setFocus(Qt::TabFocusReason);
    Settle();
    const QImage calm = control->grab().toImage();
    if (control->focusPolicy() & Qt::TabFocus) {
      control->setFocus(Qt::TabFocusReason);
      Settle();
      EXPECT_NE(control->grab().toImage(), calm)
          << control->metaObject()->className() << " hides the keyboard";
      other->setFocus(Qt::TabFocusReason);
    }
    control->setEnabled(false);
    Settle();
    EXPECT_NE(control->grab().toImage(), calm)
        << control->metaObject()->className() << " looks switched on";
  }
}

QWidget* Table(QWidget* parent) {
  auto* table = new QTableWidget(40, 3, parent);
  table->setHorizontalHeaderLabels({"Name", "Size", "Frames"});
  for (int row = 0; row < 40; ++row) {
    table->setItem(row, 0, new QTableWidgetItem(QString("Settings %1").arg(row)));
    table->setItem(row, 1, new QTableWidgetItem("1280 x 720"));
  }
  table->selectRow(1);
  return table;
}

TEST(ThemePicture, AllControls) {
  QWidget page;
  auto* grid = new QGridLayout(&page);
  int row = 0;
  for (const bool enabled : {true, false}) {
    auto* group = new QGroupBox(enabled ? "In use" : "Switched off", &page);
    auto* column = new QVBoxLayout(group);
    for (QWidget* control : Controls(group)) column->addWidget(control);
    auto* bar = new QProgressBar(group);
    bar->setValue(60);
    column->addWidget(bar);
    group->setEnabled(enabled);
    grid->addWidget(group, 0, row++);
  }
  auto* tabs = new QTabWidget(&page);
  tabs->addTab(Table(tabs), "Table");
  tabs->addTab(new QLabel("Other"), "Other");
  grid->addWidget(tabs, 0, row);
  page.resize(900, 420);
  page.show();
  EXPECT_TRUE(pictures::Write(page, "controls"));
}

TEST(ThemePicture, WindowWithNothingInIt) {
  desk::Desk desk;
  desk.Raise("layers");
  EXPECT_GT(desk.Window().View().height(), 3 * desk.Window().height() / 5)
      << "the picture matters most";
  EXPECT_TRUE(pictures::Write(desk.Window(), "empty-window"));
}

TEST(ThemePicture, OpenComboBox) {
  QComboBox combo;
  combo.addItems({"As Save File", "As Save File (Into Folders)", "As Save Project",
                  "As Save Project (One Tex Folder)"});
  combo.setCurrentIndex(1);
  combo.show();
  combo.showPopup();
  EXPECT_TRUE(pictures::Write(*combo.view()->window(), "combo"));
  combo.hidePopup();
}

TEST(ThemePicture, MenuAndQuestion) {
  QMenu menu;
  menu.addAction(Icon("open"), "Open...")->setShortcut(QKeySequence::Open);
  menu.addAction("Close")->setShortcut(QKeySequence("Ctrl+W"));
  QAction* marked = menu.addAction("Objects");
  marked->setCheckable(true);
  marked->setChecked(true);
  menu.addSeparator();
  menu.addAction(Icon("undo"), "Undo")->setEnabled(false);
  menu.addMenu("Open Recent")->addAction("one");
  menu.popup({});
  EXPECT_TRUE(pictures::Write(menu, "menu"));
  menu.close();
  QMessageBox question(QMessageBox::Question, "Stagemarks",
                       "An element with that name already exists.\nDo you want to overwrite it?",
                       QMessageBox::Yes | QMessageBox::No);
  question.show();
  EXPECT_TRUE(pictures::Write(question, "question"));
}

// Message boxes show all of their text, however long its lines are.
TEST(Boxes, ShowAllOfTheirText) {
  const std::string line =
      "\"a scene with a long name.gltf\" was opened. Not all of it came along, and that is said "
      "here in full:";
  for (const std::string& text :
       {std::string("Saved."), line + "\n\n\u2022 Animations are left out.",
        line + line + line + line}) {
    QTimer::singleShot(50, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_TRUE(box);
      const auto* label = box->findChild<QLabel*>("qt_msgbox_label");
      const int flags = Qt::TextExpandTabs | (label->wordWrap() ? Qt::TextWordWrap : 0);
      const QRect needed =
          label->fontMetrics().boundingRect(label->contentsRect(), flags, label->text());
      EXPECT_LE(needed.width(), label->contentsRect().width() + 1) << text;
      EXPECT_LE(needed.height(), label->contentsRect().height() + 1) << text;
      box->accept();
    });
    desktop::DesktopPerson().Tell(text);
  }
}

}  // namespace
