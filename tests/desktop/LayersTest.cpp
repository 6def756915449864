// The layers panel: in step with the document both ways, all it changes through undo, quick with
// many layers.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QColorDialog>
#include <QLineEdit>
#include <QMenu>
#include <QtTest/QTest>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/undo/Undo.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/LayersPanel.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/Drops.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;
using desktop::LayerModel;
using engine::kLayerSwitchTable;
using host::LayerObject;

struct WithLayers : Desk {
  tests::SceneBuilder scene{*host::GetActiveDocument()};

  WithLayers() {
    scene.Layer("House").Layer("House/Lamps").Layer("Garden");
    scene.Object("Lamp")
        .Object("Tree")
        .Object("Tree/Branch")
        .OnLayer("Lamp", "House/Lamps")
        .OnLayer("Tree/Branch", "Garden");
    Raise("layers");
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::LayerTree& Tree() { return Panel<desktop::LayersPanel>("layers").Tree(); }
  LayerModel& Model() { return Tree().Model(); }
  QModelIndex IndexOf(const char* layer, int column = 0) {
    return Model().IndexOf(engine::IdOf(*scene.GetLayer(layer)), column);
  }
  void Click(const char* layer, int column, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(Tree().viewport(), Qt::LeftButton, keys,
                      Tree().visualRect(IndexOf(layer, column)).center());
    Rest();
  }
  bool IsOn(const char* layer, std::size_t number) {
    return scene.GetLayer(layer)->GetLayerData(&Doc()).*(kLayerSwitchTable.at(number).flag);
  }
  QAction& Action(const QString& text) {
    for (QAction* action : Tree().actions()) {
      if (action->text() == text) return *action;
    }
    throw std::runtime_error("no action " + text.toStdString());
  }
};

TEST(Layers, EachSwitchFlipsItsOwnFlagAndUndoBringsItBack) {
  WithLayers desk;
  for (std::size_t i = 0; i < kLayerSwitchTable.size(); ++i) {
    const bool before = desk.IsOn("Garden", i);
    const host::LayerData all = desk.scene.GetLayer("Garden")->GetLayerData(&desk.Doc());
    desk.Click("Garden", LayerModel::kFirstSwitch + static_cast<int>(i));
    EXPECT_EQ(desk.IsOn("Garden", i), !before) << kLayerSwitchTable[i].name;
    host::LayerData put = desk.scene.GetLayer("Garden")->GetLayerData(&desk.Doc());
    put.*(kLayerSwitchTable[i].flag) = before;
    EXPECT_EQ(put, all) << kLayerSwitchTable[i].name << " changes more than itself";
    desk.App().Undo();
    EXPECT_EQ(desk.IsOn("Garden", i), before) << kLayerSwitchTable[i].name;
  }
}

TEST(Layers, ASwitchOfAChosenLayerIsThatOfAllChosenInOneStep) {
  WithLayers desk;
  desk.Click("House", LayerModel::kName);
  desk.Click("Garden", LayerModel::kName, Qt::ControlModifier);
  EXPECT_TRUE(desk.scene.GetLayer("House")->GetBit(host::BIT_ACTIVE));
  EXPECT_FALSE(desk.scene.GetLayer("House/Lamps")->GetBit(host::BIT_ACTIVE));
  desk.Click("Garden", LayerModel::kFirstSwitch);
  EXPECT_TRUE(desk.IsOn("House", 0) && desk.IsOn("Garden", 0) && !desk.IsOn("House/Lamps", 0));
  EXPECT_EQ(desk.Tree().selectionModel()->selectedRows().size(), 2);
  desk.App().Undo();
  EXPECT_FALSE(desk.IsOn("House", 0) || desk.IsOn("Garden", 0));
  desk.Click("House/Lamps", LayerModel::kFirstSwitch);
  EXPECT_TRUE(desk.IsOn("House/Lamps", 0) && !desk.IsOn("House", 0))
      << "one that is not chosen is meant alone";
}

TEST(Layers, AreMadeNamedColoredAndDeleted) {
  WithLayers desk;
  desk.Action("New Layer").trigger();
  auto* editor = desk.Tree().findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr) << "a new layer waits for its name";
  editor->setText("Sky");
  QTest::keyClick(editor, Qt::Key_Return);
  Desk::Rest();
  ASSERT_NE(desk.scene.GetLayer("Sky"), nullptr);
  desk::AnswerNext([](QDialog& box) {
    dynamic_cast<QColorDialog&>(box).setCurrentColor(QColor(255, 0, 51));
    box.accept();
  });
  desk.Click("Sky", LayerModel::kColor);
  EXPECT_EQ(desk.IndexOf("Sky", LayerModel::kColor).data(Qt::BackgroundRole).value<QColor>().rgb(),
            QColor(255, 0, 51).rgb());
  desk.Click("House", LayerModel::kName);
  desk.Click("House/Lamps", LayerModel::kName, Qt::ControlModifier);
  EXPECT_TRUE(desk.Action("Delete Layer").isEnabled());
  desk.Window().activateWindow();
  desk.Tree().setFocus();
  Desk::Rest();
  QTest::keyClick(&desk.Tree(), Qt::Key_Delete);
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 2);
  EXPECT_EQ(desk.scene.GetObject("Lamp")->GetLayerObject(&desk.Doc()), nullptr);
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.scene.GetObject("Lamp")->GetLayerObject(&desk.Doc()),
            desk.scene.GetLayer("House/Lamps"));
  for (int i = 0; i < 3; ++i) desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 2) << "the new one went with its step";
}

TEST(Layers, TakeSelectedAndDroppedObjectsAndGiveThemBack) {
  WithLayers desk;
  desk.Click("Garden", LayerModel::kName);
  desk.scene.Select("Lamp").Select("Tree");
  desk.Action("Assign to Selection").trigger();
  EXPECT_EQ(desk.scene.GetObject("Lamp")->GetLayerObject(&desk.Doc()),
            desk.scene.GetLayer("Garden"));
  desk.Doc().SetActiveObject(nullptr);
  desk.Action("Select Objects").trigger();
  EXPECT_EQ(engine::SelectedObjects(desk.Doc()).size(), 3U);
  const std::unique_ptr<QMimeData> dragged(desktop::DraggedNodes(
      desktop::kObjectsMime, {engine::IdOf(*desk.scene.GetObject("Tree")), 999999}));
  ASSERT_TRUE(
      desk.Model().canDropMimeData(dragged.get(), Qt::CopyAction, -1, -1, desk.IndexOf("House")));
  desk.Model().dropMimeData(dragged.get(), Qt::CopyAction, -1, -1, desk.IndexOf("House"));
  EXPECT_EQ(desk.scene.GetObject("Tree")->GetLayerObject(&desk.Doc()),
            desk.scene.GetLayer("House"));
  const std::unique_ptr<QMimeData> other(new QMimeData);
  other->setText("1 2");
  EXPECT_FALSE(
      desk.Model().canDropMimeData(other.get(), Qt::CopyAction, -1, -1, desk.IndexOf("House")));
  desk.App().Undo();
  desk.App().Undo();
  EXPECT_EQ(desk.scene.GetObject("Lamp")->GetLayerObject(&desk.Doc()),
            desk.scene.GetLayer("House/Lamps"));
}

TEST(Layers, AreMovedToWhereTheyAreDropped) {
  WithLayers desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  const auto drop = [&](const QModelIndexList& dragged, const char* on, bool before = false) {
    return drops::Drop(desk.Tree(), desk.Model().mimeData(dragged), desk.IndexOf(on), before);
  };
  const auto shown = [&] {
    std::string text;
    for (QModelIndex row = desk.Model().index(0, 0); row.isValid();
         row = desk.Tree().indexBelow(row)) {
      text += (row.parent().isValid() ? ">" : "") + row.data().toString().toStdString() + " ";
    }
    return text;
  };
  desk.Click("Garden", LayerModel::kName);
  EXPECT_FALSE(drop({desk.IndexOf("House")}, "House/Lamps")) << "below itself";
  EXPECT_TRUE(
      drop({desk.IndexOf("Garden"), desk.IndexOf("Garden", LayerModel::kColor)}, "House", true));
  EXPECT_EQ(shown(), "Garden House >Lamps ");
  EXPECT_TRUE(drop({desk.IndexOf("House/Lamps"), desk.IndexOf("House")}, "Garden"));
  EXPECT_EQ(desk.scene.GetLayer("Garden")->GetDown()->GetDown()->GetName().ToUtf8(), "Lamps")
      << "with what is below it";
  EXPECT_EQ(desk.Tree().Chosen(), engine::LayerList{desk.scene.GetLayer("Garden")});
  EXPECT_EQ(engine::DoneNames(desk.Doc()), (std::vector<std::string>{"Move", "Move"}));
  desk.App().Undo();
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(shown(), "House >Lamps Garden ");
  const engine::NodeId tree = engine::IdOf(*desk.scene.GetObject("Tree"));
  EXPECT_TRUE(drops::Drop(desk.Tree(), desktop::DraggedNodes(desktop::kObjectsMime, {tree}),
                          desk.IndexOf("Garden"), true));
  EXPECT_EQ(desk.scene.GetObject("Tree")->GetLayerObject(&desk.Doc()),
            desk.scene.GetLayer("Garden"))
      << "never between rows";
}

// Opens the context menu and chooses the entry with that text.
void ChooseFromMenu(WithLayers& desk, const QString& text) {
  QTimer::singleShot(20, [&text] {
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
      if (action->text() == text) action->trigger();
    }
    menu->close();
  });
  emit desk.Tree().customContextMenuRequested(QPoint(5, 5));
  Desk::Rest();
}

TEST(Layers, MenuReachesWhatTheKeyboardCannotClick) {
  WithLayers desk;
  desk.Click("House", LayerModel::kName);
  desk.Click("Garden", LayerModel::kName, Qt::ControlModifier);
  for (std::size_t i = 0; i < kLayerSwitchTable.size(); ++i) {
    const bool before = desk.IsOn("House", i);
    ChooseFromMenu(desk, kLayerSwitchTable[i].name);
    EXPECT_EQ(desk.IsOn("House", i), !before) << kLayerSwitchTable[i].name;
    EXPECT_EQ(desk.IsOn("Garden", i), !before) << kLayerSwitchTable[i].name;
  }
  desk.scene.Select("Lamp");
  ChooseFromMenu(desk, "Take Selection Off Its Layer");
  EXPECT_EQ(desk.scene.GetObject("Lamp")->GetLayerObject(&desk.Doc()), nullptr);
}

TEST(Layers, ModelKeepsItsPromisesWithHundreds) {
  WithLayers desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (int i = 0; i < 700; ++i) desk.scene.Layer("Many/" + std::to_string(i));
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(desk.IndexOf("Many")), 700);
  desk.Tree().setFocus();
  QTest::keyClick(&desk.Tree(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_TRUE(desk.scene.GetLayer("Many/699")->GetBit(host::BIT_ACTIVE));
  const QModelIndex gone = desk.IndexOf("Garden");
  LayerObject* garden = desk.scene.GetLayer("Garden");
  LayerObject::Free(garden);
  EXPECT_FALSE(gone.data().isValid());
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 0);
}

// The first row is measured for the height of all.
TEST(Layers, ColorSquaresInTheTreeAndNotItsColumn) {
  WithLayers desk;
  auto& tree = desk.Panel<desktop::ObjectsPanel>("objects").Tree();
  const auto column = desktop::ObjectModel::kLayer;
  tree.sizeHintForIndex(tree.Model().index(0, column));
  const QImage shown = tree.viewport()->grab().toImage();
  const auto in = [&](const char* object, bool middle) {
    const QRect cell =
        tree.visualRect(tree.Model().IndexOf(engine::IdOf(*desk.scene.GetObject(object)), column));
    return shown.pixelColor(middle ? cell.center() : cell.topLeft() + QPoint(2, 2)).red();
  };
  EXPECT_NEAR(in("Lamp", true), 128, 2);
  for (const char* object : {"Lamp", "Tree"}) EXPECT_LT(in(object, false), 64) << object;
}

// As the window system would send them: to the window that has the focus.
TEST(Layers, KeysReachNothingBehindTheMenuOfAnObject) {
  WithLayers desk;
  auto& tree = desk.Panel<desktop::ObjectsPanel>("objects").Tree();
  host::BaseObject* const lamp = desk.scene.GetObject("Lamp");
  engine::SelectOnly(desk.Doc(), {lamp});
  Desk::Rest();
  bool wasOpen = false;
  QTimer::singleShot(20, [&] {
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu) return;
    wasOpen = true;
    for (const auto keys : {QKeySequence::SelectAll, QKeySequence::Delete})
      QTest::keySequence(desk.Window().windowHandle(), QKeySequence(keys));
    for (QAction* action : menu->actions()) {
      if (action->text() == "Garden") menu->setActiveAction(action);
    }
    QTest::keyClick(menu, Qt::Key_Return);
  });
  QTest::mouseClick(
      tree.viewport(), Qt::LeftButton, {},
      tree.visualRect(tree.Model().IndexOf(engine::IdOf(*lamp), desktop::ObjectModel::kLayer))
          .center());
  Desk::Rest();
  EXPECT_TRUE(wasOpen);
  EXPECT_EQ(lamp->GetLayerObject(&desk.Doc()), desk.scene.GetLayer("Garden"));
  EXPECT_EQ(desk.scene.GetObject("Tree")->GetLayerObject(&desk.Doc()), nullptr);
  EXPECT_EQ(engine::SelectedObjects(desk.Doc()), std::vector{lamp});
}

TEST(LayersPicture, Some) {
  WithLayers desk;
  desk.scene.Layer("Sky", {.view = false, .locked = true, .color = host::Vector(0.3, 0.5, 0.8)});
  desk.Click("House/Lamps", LayerModel::kName);
  EXPECT_TRUE(pictures::Write(desk.Window(), "layers"));
}

}  // namespace
