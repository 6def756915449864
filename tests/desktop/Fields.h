// Finding and using the fields of an attributes view as a person does: by their labels. Nothing is
// owned. Main thread.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QtTest/QTest>
#include <functional>

#include "program/desktop/attributes/AttributesView.h"
#include "tests/desktop/Desk.h"

namespace fields {

// The field with that label, not in a hidden part. Throws std::runtime_error if there is none.
inline QWidget& FieldOf(QWidget& view, const QString& label) {
  for (QWidget* widget : view.findChildren<QWidget*>()) {
    if (widget->accessibleName() == label && !widget->parentWidget()->isHidden()) return *widget;
  }
  throw std::runtime_error("no field " + label.toStdString());
}

inline bool Has(QWidget& view, const QString& label) {
  for (QWidget* widget : view.findChildren<QWidget*>()) {
    if (widget->accessibleName() == label) return true;
  }
  return false;
}

inline QLineEdit& EditOf(QWidget& view, const QString& label, int part = 0) {
  return *FieldOf(view, label).findChildren<QLineEdit*>().at(part);
}
inline QComboBox& ListOf(QWidget& view, const QString& label) {
  return *FieldOf(view, label).findChild<QComboBox*>();
}
inline QCheckBox& BoxOf(QWidget& view, const QString& label) {
  return *FieldOf(view, label).findChild<QCheckBox*>();
}

// Types over what stands there, without confirming.
inline void Type(QLineEdit& edit, const QString& text) {
  edit.setFocus();
  edit.selectAll();
  QTest::keyClicks(&edit, text);
}

inline void Enter(QLineEdit& edit, const QString& text) {
  Type(edit, text);
  QTest::keyClick(&edit, Qt::Key_Return);
  desk::Desk::Rest();
}

inline void Pick(QComboBox& list, const QString& text) {
  list.setFocus();
  const int row = list.findText(text);
  ASSERT_GE(row, 0) << text.toStdString();
  list.setCurrentIndex(row);
  emit list.activated(row);
  desk::Desk::Rest();
}

// Opens the list and takes a row of it with Enter. `meanwhile` happens while it is open.
inline void PickFromOpen(QComboBox& list, const QString& text,
                         const std::function<void()>& meanwhile = {}) {
  QTest::mouseClick(&list, Qt::LeftButton);
  ASSERT_TRUE(QTest::qWaitFor([&] { return list.view()->isVisible(); }));
  const QModelIndex row = list.model()->index(list.findText(text), 0);
  ASSERT_TRUE(row.isValid()) << text.toStdString();
  list.view()->setCurrentIndex(row);
  if (meanwhile) meanwhile();
  desk::Desk::Rest();
  QTest::keyClick(list.view(), Qt::Key_Return);
  desk::Desk::Rest();
}

inline QStringList TextsOf(const QComboBox& list) {
  QStringList texts;
  for (int row = 0; row < list.count(); ++row) texts.push_back(list.itemText(row));
  return texts;
}

// Waits until what is selected was read, however long the machine takes for it.
inline bool IsReadSoon(const desktop::AttributesView& view) {
  return QTest::qWaitFor([&] { return !view.IsReading(); }, 20000);
}

}  // namespace fields
