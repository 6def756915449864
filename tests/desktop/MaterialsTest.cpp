// The materials panel: thumbnails that show the material and follow it, and all that one does to
// materials through undo.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QtTest/QTest>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/MaterialsPanel.h"
#include "tests/desktop/Desk.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;
using desktop::MaterialModel;
using host::BaseMaterial;
using host::Vector;

struct WithMaterials : Desk {
  tests::SceneBuilder scene{*host::GetActiveDocument()};

  WithMaterials() {
    scene.Material("Red", Vector(0.8, 0.05, 0.05))
        .Material("Green", Vector(0.05, 0.6, 0.05))
        .Material("Blue", Vector(0.1, 0.1, 0.8));
    scene.Cube("Box").Texture("Box", "Red").Cube("Box/Lid").Texture("Box/Lid", "Blue").Cube("Ball");
    Raise("materials");
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::MaterialGrid& Grid() { return Panel<desktop::MaterialsPanel>("materials").Grid(); }
  MaterialModel& Model() { return Grid().Model(); }
  QModelIndex IndexOf(const char* material) {
    return Model().IndexOf(engine::IdOf(*scene.GetMaterial(material)));
  }
  void Click(const char* material, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(Grid().viewport(), Qt::LeftButton, keys,
                      Grid().visualRect(IndexOf(material)).center());
    Rest();
  }
  bool WaitForThumbnails(std::size_t made) {
    return QTest::qWaitFor([&] { return Model().Thumbnails().Made() >= made; }, 20000);
  }
  QColor Middle(const char* material) {
    const QImage ball = IndexOf(material).data(Qt::DecorationRole).value<QPixmap>().toImage();
    return ball.isNull() ? QColor() : ball.pixelColor(ball.rect().center());
  }
  QAction& Action(const QString& text) {
    for (QAction* action : Grid().actions()) {
      if (action->text() == text) return *action;
    }
    throw std::runtime_error("no action " + text.toStdString());
  }
};

TEST(Materials, ThumbnailsShowEachMaterialAndFollowItsChanges) {
  WithMaterials desk;
  ASSERT_TRUE(desk.WaitForThumbnails(3));
  EXPECT_GT(desk.Middle("Red").red(), 2 * desk.Middle("Red").green());
  EXPECT_GT(desk.Middle("Green").green(), 2 * desk.Middle("Green").blue());
  EXPECT_GT(desk.Middle("Blue").blue(), 2 * desk.Middle("Blue").red());
  EXPECT_EQ(desk.IndexOf("Red")
                .data(Qt::DecorationRole)
                .value<QPixmap>()
                .toImage()
                .pixelColor(0, 0)
                .alpha(),
            0);
  desk.scene.GetMaterial("Red")->GetDataInstance()->SetVector(host::MATERIAL_COLOR,
                                                              Vector(0.05, 0.05, 0.8));
  desk.Doc().SetChanged();
  Desk::Rest();
  ASSERT_TRUE(desk.WaitForThumbnails(4));
  EXPECT_GT(desk.Middle("Red").blue(), 2 * desk.Middle("Red").red());
  desk.scene.GetObject("Ball")->SetName("Other");
  desk.Click("Green");
  Desk::Rest();
  EXPECT_EQ(desk.Model().Thumbnails().Made(), 4U)
      << "what has nothing to do with materials makes no picture";
}

TEST(Materials, FollowTextureFilesThatOthersChange) {
  WithMaterials desk;
  const auto paint = [&](const char* name, int side, Qt::GlobalColor color) {
    QImage picture(side, side, QImage::Format_RGB32);
    picture.fill(color);
    EXPECT_TRUE(picture.save(QString::fromStdString(desk.Folder() + name)));
  };
  const auto comeBack = [&] {
    QEvent event(QEvent::ActivationChange);
    desk.Window().activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return desk.Window().isActiveWindow(); }, 5000));
    QApplication::sendEvent(&desk.Window(), &event);
    Desk::Rest();
  };
  paint("/there.png", 4, Qt::red);
  for (const auto& [material, file] : {std::pair{"Red", "/there.png"}, {"Blue", "/later.png"}}) {
    engine::SetTextureFile(*desk.scene.GetMaterial(material), host::MATERIAL_COLOR_SHADER,
                           host::Filename(host::String(desk.Folder() + file)));
  }
  desk.Doc().SetChanged();
  Desk::Rest();
  const auto isRed = [](const QColor& color) {
    return color.red() > 2 * std::max(color.green(), color.blue());
  };
  const auto isGreen = [](const QColor& color) {
    return color.green() > color.red() && color.green() > color.blue();
  };
  const auto finished = [&] { return desk.Window().View().IsFinished(); };
  ASSERT_TRUE(QTest::qWaitFor([&] { return isRed(desk.Middle("Red")) && finished(); }, 20000));
  const QImage before = desk.Window().View().Picture();
  comeBack();
  EXPECT_TRUE(finished()) << "nothing to do while no file has changed";
  paint("/there.png", 8, Qt::green);
  paint("/later.png", 8, Qt::green);
  comeBack();
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return isGreen(desk.Middle("Red")) && isGreen(desk.Middle("Blue")); }, 20000));
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return finished() && desk.Window().View().Picture() != before; }, 20000));
}

TEST(Materials, TagsInTheTreeLookLikeThemWithTheirPanelAway) {
  WithMaterials desk;
  desk.Raise("layers");
  desk.scene.Material("Glowing", Vector(0, 0, 0)).Texture("Ball", "Glowing");
  desk.scene.GetMaterial("Glowing")->GetDataInstance()->SetVector(host::MATERIAL_LUMINANCE,
                                                                  Vector(0, 0.8, 0));
  desk.Doc().SetChanged();
  Desk::Rest();
  auto& tree = desk.Panel<desktop::ObjectsPanel>("objects").Tree();
  const auto green = [&] {
    const auto ball = engine::IdOf(*desk.scene.GetObject("Ball"));
    const QRect tags = tree.visualRect(tree.Model().IndexOf(ball, desktop::ObjectModel::kTags));
    return tree.viewport()
        ->grab(QRect(tags.topLeft() + QPoint(9, tags.height() / 2), QSize(1, 1)))
        .toImage()
        .pixelColor(0, 0);
  };
  EXPECT_TRUE(QTest::qWaitFor([&] { return green().green() > 100 && green().red() < 60; }, 20000))
      << "its color alone is black";
}

TEST(Materials, OfOneFileOpenedTwiceAreToldApart) {
  WithMaterials desk;
  const std::string file = desk.Folder() + "/twice.c4d";
  ASSERT_TRUE(host::SaveDocument(&desk.Doc(), host::Filename(host::String(file)), 0,
                                 host::FORMAT_C4DEXPORT));
  ASSERT_TRUE(desk.Window().Commands().Open(file));
  desk.scene.GetMaterial("Red")->GetDataInstance()->SetVector(host::MATERIAL_COLOR,
                                                              Vector(0.05, 0.05, 0.8));
  Desk::Rest();
  const auto middleOfFirst = [&desk] {
    const QImage ball = desk.Model().index(0).data(Qt::DecorationRole).value<QPixmap>().toImage();
    return ball.isNull() ? QColor() : ball.pixelColor(ball.rect().center());
  };
  ASSERT_TRUE(QTest::qWaitFor([&] { return middleOfFirst().isValid(); }, 20000));
  EXPECT_GT(middleOfFirst().red(), 2 * middleOfFirst().blue());
  host::SetActiveDocument(desk.App().Documents().front());
  host::EventAdd();
  Desk::Rest();
  ASSERT_TRUE(
      QTest::qWaitFor([&] { return middleOfFirst().blue() > 2 * middleOfFirst().red(); }, 20000));
}

TEST(Materials, AreMadeRenamedCopiedAndDeletedThroughUndo) {
  WithMaterials desk;
  desk.Action("New Material").trigger();
  auto* editor = desk.Grid().findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr) << "a new material waits for its name";
  editor->setText("Brass");
  QTest::keyClick(editor, Qt::Key_Return);
  Desk::Rest();
  ASSERT_NE(desk.scene.GetMaterial("Brass"), nullptr);
  desk.scene.Bitmap(desk.scene.GetMaterial("Red"), "wood.png");
  desk.Click("Red");
  desk.Click("Green", Qt::ControlModifier);
  EXPECT_TRUE(desk.scene.GetMaterial("Green")->GetBit(host::BIT_ACTIVE));
  desk.Action("Duplicate Material").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 6);
  EXPECT_NE(desk.scene.GetMaterial("Red.1")->GetFirstShader(), nullptr);
  EXPECT_EQ(desk.Grid().Chosen(), (engine::MaterialList{desk.scene.GetMaterial("Red.1"),
                                                        desk.scene.GetMaterial("Green.1")}));
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 4);
  desk.Click("Red");
  desk.Action("Delete Material").trigger();
  Desk::Rest();
  const auto* tag = static_cast<host::TextureTag*>(desk.scene.GetTag("Box", host::Ttexture));
  EXPECT_EQ(tag->GetMaterial(), nullptr);
  desk.App().Undo();
  EXPECT_EQ(tag->GetMaterial(), desk.scene.GetMaterial("Red"));
}

TEST(Materials, SelectTheirObjectsAndAreDraggedByIdentity) {
  WithMaterials desk;
  desk.Click("Blue");
  desk.Action("Select Objects with This Material").trigger();
  EXPECT_EQ(engine::SelectedObjects(desk.Doc()),
            std::vector<host::BaseObject*>{desk.scene.GetObject("Box/Lid")});
  desk.Doc().SetActiveObject(desk.scene.GetObject("Ball"));
  desk.Click("Green");
  desk.Action("Assign to Selection").trigger();
  const auto* tag = static_cast<host::TextureTag*>(desk.scene.GetTag("Ball", host::Ttexture));
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag->GetMaterial(), desk.scene.GetMaterial("Green"));
  const std::unique_ptr<QMimeData> dragged(desk.Model().mimeData({desk.IndexOf("Blue")}));
  EXPECT_EQ(dragged->data(desktop::kMaterialMime).toULongLong(),
            engine::IdOf(*desk.scene.GetMaterial("Blue")));
  EXPECT_EQ(desktop::DroppedNodes(dragged.get(), desktop::kObjectsMime),
            std::vector<engine::NodeId>());
}

// Sends what a drag sends to the viewport; true when it took it.
template <class Event>
bool Send(desktop::Viewport& view, QPoint place, const QMimeData& data) {
  Event event(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  event.ignore();
  QApplication::sendEvent(&view, &event);
  return event.isAccepted();
}

TEST(Materials, AreDroppedOntoWhatTheViewportShows) {
  WithMaterials desk;
  desktop::Viewport& view = desk.Window().View();
  ASSERT_TRUE(QTest::qWaitFor([&] { return view.IsFinished(); }, 60000));
  const std::unique_ptr<QMimeData> green(desk.Model().mimeData({desk.IndexOf("Green")}));
  const QPoint middle = view.rect().center();
  const QPoint corner(2, view.height() - 3);
  host::BaseObject* object = engine::AsObject(engine::FindNode(&desk.Doc(), view.ObjectAt(middle)));
  ASSERT_NE(object, nullptr);
  EXPECT_TRUE(Send<QDragEnterEvent>(view, corner, *green));
  EXPECT_FALSE(Send<QDragMoveEvent>(view, corner, *green)) << "there is nothing";
  EXPECT_TRUE(Send<QDragMoveEvent>(view, middle, *green));
  EXPECT_FALSE(Send<QDropEvent>(view, corner, *green));
  EXPECT_FALSE(desk.Entry("Edit", "Undo").isEnabled());
  EXPECT_TRUE(Send<QDragEnterEvent>(view, corner, *green));
  EXPECT_TRUE(Send<QDropEvent>(view, middle, *green));
  const host::TextureTag* tag = engine::AsTextureTag(object->GetTag(host::Ttexture));
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag->GetMaterial(), desk.scene.GetMaterial("Green"));
  QMimeData other;
  other.setText("5");
  EXPECT_FALSE(Send<QDragEnterEvent>(view, middle, other));
}

TEST(Materials, ModelKeepsItsPromisesWithHundreds) {
  WithMaterials desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (int i = 0; i < 500; ++i) desk.scene.Material(std::to_string(i));
  desk.scene.Material(std::string(10000, 'W'))
      .Material("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d\nsecond line");
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 505);
  EXPECT_LT(desk.Model().index(503).data().toString().size(), 1000);
  const QModelIndex gone = desk.IndexOf("Green");
  BaseMaterial* green = desk.scene.GetMaterial("Green");
  BaseMaterial::Free(green);
  EXPECT_FALSE(gone.data().isValid());
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 0);
  EXPECT_LT(desk.Model().Thumbnails().Made(), 300U) << "only what can be seen is made";
}

TEST(MaterialsPicture, OfTheSampleAndAFewOthers) {
  WithMaterials desk;
  ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
  tests::SceneBuilder more(*host::GetActiveDocument());
  more.Material("Brass", Vector(0.8, 0.55, 0.2))
      .Material("Glass", Vector(0.5, 0.7, 0.8))
      .Material("Lamp")
      .Material("Rubber", Vector(0.05));
  host::BaseContainer& brass = *more.GetMaterial("Brass")->GetDataInstance();
  brass.SetReal(host::MATERIAL_METALLIC, 1);
  brass.SetReal(host::MATERIAL_ROUGHNESS, 0.25);
  host::BaseContainer& glass = *more.GetMaterial("Glass")->GetDataInstance();
  glass.SetReal(host::MATERIAL_ALPHA, 0.3);
  glass.SetLong(host::MATERIAL_ALPHA_MODE, 2);
  more.GetMaterial("Lamp")->GetDataInstance()->SetVector(host::MATERIAL_LUMINANCE,
                                                         Vector(1, 0.8, 0.5));
  more.GetMaterial("Rubber")->GetDataInstance()->SetReal(host::MATERIAL_ROUGHNESS, 1);
  Desk::Rest();
  desk.Raise("materials");
  EXPECT_TRUE(QTest::qWaitFor([&] { return desk.Window().View().IsFinished(); }, 60000));
  ASSERT_TRUE(desk.WaitForThumbnails(4));
  Desk::Rest();
  EXPECT_TRUE(pictures::Write(desk.Window(), "materials"));
}

}  // namespace
