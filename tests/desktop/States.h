// The plug-in's dialog at the desktop as a person uses it: recording states, choosing and loading
// them; and answering a box that asks for a file.
#pragma once

#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest/QTest>

#include "program/desktop/dialog/ListView.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/desktop/Desk.h"

namespace desk {

inline void RecordState(Desk& desk, const char* name) {
  auto& field = desk.Gadget<QLineEdit>(stagemarks::kNameField);
  field.clear();
  QTest::keyClicks(&field, name);
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kRecord), Qt::LeftButton);
  Desk::Rest();
}

inline desktop::ListView& StateList(Desk& desk) {
  return desk.Gadget<desktop::ListView>(stagemarks::kList);
}
inline int CountStates(Desk& desk) { return StateList(desk).model()->rowCount(); }

// By a click on its name; rows count from 0.
inline void ChooseState(Desk& desk, int row) {
  constexpr int kNameColumn = 2;
  desktop::ListView& list = StateList(desk);
  QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                    list.visualRect(list.model()->index(row, kNameColumn)).center());
}

inline void LoadState(Desk& desk, int row) {
  ChooseState(desk, row);
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kLoad), Qt::LeftButton);
  Desk::Rest();
}

// Answers the next box that asks for a file with that path.
inline void ChooseInNextBox(const std::string& path) {
  AnswerNext([path](QDialog& box) {
    auto& chooser = dynamic_cast<QFileDialog&>(box);
    chooser.findChild<QLineEdit*>()->setText(QString::fromStdString(path));
    QMetaObject::invokeMethod(&chooser, "accept");
  });
}

}  // namespace desk
