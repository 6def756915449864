// The attributes panel: shows and edits what is selected, one element or many, through undo;
// refuses what makes no sense.
#include <QHelpEvent>
#include <QToolTip>

#include "engine/editing/FieldValue.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"
#include "host/RenderData.h"
#include "program/desktop/attributes/FieldEditing.h"
#include "program/desktop/background/SlicedEdit.h"
#include "tests/desktop/Fields.h"
#include "tests/desktop/NoPatience.h"
#include "tests/support/SceneBuilder.h"

namespace {

using desk::Desk;
using desk::Scene;
using fields::BoxOf;
using fields::EditOf;
using fields::Enter;
using fields::IsReadSoon;
using fields::ListOf;
using host::BaseObject;
using host::Vector;

BaseObject* Add(host::LONG type, const char* name) {
  BaseObject* object = BaseObject::Alloc(type);
  object->SetName(name);
  Scene().AppendObject(object);
  return object;
}

void Select(std::initializer_list<BaseObject*> objects) {
  Scene().SetActiveObject(nullptr);
  for (BaseObject* object : objects) Scene().SetActiveObject(object, host::SELECTION_ADD);
  host::EventAdd();
  Desk::Rest();
}

struct WithThings : Desk {
  BaseObject* first = Add(host::Ocube, "First");
  BaseObject* second = Add(host::Ocube, "Second");
  BaseObject* camera = Add(host::Ocamera, "Front");
  BaseObject* light = Add(host::Olight, "Lamp");

  WithThings() { Rest(); }
  QWidget& Panel() { return *Window().findChild<QDockWidget*>("attributes")->widget(); }
  bool Says(const QString& text) {
    for (const QLabel* label : Panel().findChildren<QLabel*>()) {
      if (label->text() == text && !label->isHidden()) return true;
    }
    return false;
  }
};

TEST(Attributes, ShowWhatTheKindOfElementHas) {
  WithThings desk;
  EXPECT_TRUE(desk.Says("Nothing is selected"));
  EXPECT_TRUE(fields::Has(desk.Panel(), "Render settings"));
  const struct {
    std::initializer_list<BaseObject*> selected;
    const char* has;
    const char* hasNot;
  } cases[] = {{{desk.camera}, "Field of view", "Brightness"},
               {{desk.light}, "Brightness", "Field of view"},
               {{desk.first, desk.second}, "Size", "Radius"},
               {{desk.first, desk.light}, "Position", "Size"}};
  for (const auto& c : cases) {
    Select(c.selected);
    EXPECT_TRUE(fields::Has(desk.Panel(), c.has)) << c.has;
    Desk::Rest();
    EXPECT_FALSE(fields::Has(desk.Panel(), c.hasNot)) << c.hasNot;
  }
  EXPECT_TRUE(desk.Says("2 objects"));
}

TEST(Attributes, EveryKindOfFieldIsEditedAndUndone) {
  WithThings desk;
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName("Back");
  Scene().AppendLayer(layer);
  Select({desk.first});
  Enter(EditOf(desk.Panel(), "Name"), "Crate");
  EXPECT_TRUE(desk.first->GetName() == host::String("Crate"));
  EXPECT_EQ(engine::UndoName(Scene()), "Rename");
  fields::Pick(ListOf(desk.Panel(), "Editor mode"), "Off");
  EXPECT_EQ(desk.first->GetEditorMode(), host::MODE_OFF);
  fields::Pick(ListOf(desk.Panel(), "Deform mode"), "Off");
  EXPECT_FALSE(desk.first->GetDeformMode());
  ListOf(desk.Panel(), "Layer").setFocus();
  EXPECT_EQ(fields::TextsOf(ListOf(desk.Panel(), "Layer")), QStringList({"None", "Back"}));
  fields::Pick(ListOf(desk.Panel(), "Layer"), "Back");
  EXPECT_EQ(desk.first->GetLayerObject(&Scene()), layer);
  Enter(EditOf(desk.Panel(), "Position", 1), "12.5");
  EXPECT_EQ(desk.first->GetMl().off, Vector(0, 12.5, 0));
  Enter(EditOf(desk.Panel(), "Rotation", 1), "90");
  EXPECT_NEAR(desk.first->GetMl().v3.x, 1, 1e-12);
  EXPECT_EQ(EditOf(desk.Panel(), "Rotation", 1).text(), "90\u00b0");
  Enter(EditOf(desk.Panel(), "Scale", 0), "-2");
  EXPECT_NEAR(desk.first->GetMl().v1.z, 2, 1e-12);
  Enter(EditOf(desk.Panel(), "Size", 2), "30");
  EXPECT_EQ(desk.first->GetDataInstance()->GetVector(host::PRIM_SIZE), Vector(200, 200, 30));
  for (int step = 0; step < 8; ++step) desk.App().Undo();
  Desk::Rest();
  EXPECT_TRUE(desk.first->GetName() == host::String("First"));
  EXPECT_EQ(EditOf(desk.Panel(), "Name").text(), "First");
  EXPECT_EQ(desk.first->GetMl(), host::Matrix());
  EXPECT_EQ(ListOf(desk.Panel(), "Layer").currentText(), "None");
  EXPECT_FALSE(engine::CanUndo(Scene()));
}

TEST(Attributes, WhatIsCutIsWholeInItsTip) {
  WithThings desk;
  Select({desk.first});
  QLineEdit& edit = EditOf(desk.Panel(), "Position");
  Enter(edit, "-11071.5432");
  const auto tip = [&edit](int width) {
    edit.resize(width, edit.height());
    QHelpEvent help(QEvent::ToolTip, {4, 4}, edit.mapToGlobal(QPoint(4, 4)));
    QApplication::sendEvent(&edit, &help);
    return QToolTip::text();
  };
  EXPECT_FALSE(tip(300).contains("-11071"));
  EXPECT_TRUE(tip(50).startsWith("-11071.5432")) << QToolTip::text().toStdString();
}

// Whose entries come from the scene: they are read when a person comes to the list, but not under
// the hands.
TEST(Attributes, AnOpenListGivesWhatWasChosenInIt) {
  WithThings desk;
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName("Back");
  Scene().AppendLayer(layer);
  host::RenderData* draft = host::RenderData::Alloc();
  draft->SetName("Draft");
  Scene().InsertRenderData(draft, nullptr, Scene().GetFirstRenderData());
  Desk::Rest();
  fields::PickFromOpen(ListOf(desk.Panel(), "Camera"), "Front");
  EXPECT_EQ(Scene().GetRenderBaseDraw()->GetSceneCamera(&Scene()), desk.camera);
  fields::PickFromOpen(ListOf(desk.Panel(), "Render settings"), "Draft");
  EXPECT_EQ(Scene().GetActiveRenderData(), draft);
  Select({desk.first});
  const auto change = [&] {
    desk.first->SetName("Renamed by somebody else");
    host::EventAdd();
  };
  fields::PickFromOpen(ListOf(desk.Panel(), "Layer"), "Back", change);
  EXPECT_EQ(desk.first->GetLayerObject(&Scene()), layer);
  fields::PickFromOpen(ListOf(desk.Panel(), "Layer"), "None");
  EXPECT_EQ(desk.first->GetLayerObject(&Scene()), nullptr);
  EXPECT_EQ(engine::DoneNames(Scene()).size(), 4U);
}

TEST(Attributes, OneEditSetsAllAndLeavesTheRest) {
  WithThings desk;
  host::Matrix frame;
  frame.off = {1, 2, 3};
  desk.second->SetMl(frame);
  Select({desk.first, desk.second, desk.light});
  EXPECT_EQ(EditOf(desk.Panel(), "Position", 0).text(), "");
  EXPECT_EQ(EditOf(desk.Panel(), "Position", 0).placeholderText(), "\u2014");
  EXPECT_EQ(EditOf(desk.Panel(), "Scale", 0).text(), "1");
  QTest::keyClick(&EditOf(desk.Panel(), "Position", 0), Qt::Key_Up);
  QTest::keyClick(&EditOf(desk.Panel(), "Position", 0), Qt::Key_Return);
  EXPECT_FALSE(engine::CanUndo(Scene())) << "several numbers were stepped as one";
  Enter(EditOf(desk.Panel(), "Position", 2), "7");
  EXPECT_EQ(desk.first->GetMl().off, Vector(0, 0, 7));
  EXPECT_EQ(desk.second->GetMl().off, Vector(1, 2, 7));
  EXPECT_EQ(engine::UndoName(Scene()), "Position");
  desk.App().Undo();
  EXPECT_EQ(desk.second->GetMl().off, Vector(1, 2, 3));
  EXPECT_FALSE(engine::CanUndo(Scene()));
}

TEST(Attributes, ComeBackToWhatIsSelectedWhenItIsClickedAgain) {
  WithThings desk;
  auto& tree = desk.Desk::Panel<desktop::ObjectsPanel>("objects").Tree();
  Select({desk.first});
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName("Garden");
  Scene().AppendLayer(layer);
  layer->SetBit(host::BIT_ACTIVE);
  Desk::Rest();
  EXPECT_EQ(EditOf(desk.Panel(), "Name").text(), "Garden");
  QTest::mouseClick(tree.viewport(), Qt::LeftButton, {},
                    tree.visualRect(tree.Model().IndexOf(engine::IdOf(*desk.first))).center());
  Desk::Rest();
  EXPECT_EQ(EditOf(desk.Panel(), "Name").text(), "First");
}

TEST(Attributes, RefuseWhatIsNoNumber) {
  WithThings desk;
  Select({desk.camera});
  const QString tenThousand(10000, '9');
  const struct {
    const char* label;
    QString text;
  } cases[] = {{"Position", "nan"},       {"Position", "inf"},  {"Position", "1e400"},
               {"Position", "12 apples"}, {"Position", "1,5"},  {"Position", tenThousand},
               {"Position", "--1"},       {"Position", "0x10"}, {"Field of view", "0"},
               {"Field of view", "178"},  {"Near", "-1"},       {"Position", "\u0663"},
               {"Position", "1e10"}};
  for (const auto& c : cases) {
    QLineEdit& edit = EditOf(desk.Panel(), c.label);
    const QString before = edit.text();
    edit.setFocus();
    edit.selectAll();
    edit.insert(c.text);
    edit.setModified(true);
    QTest::keyClick(&edit, Qt::Key_Return);
    EXPECT_EQ(edit.text(), c.text) << "Enter forgot what was typed";
    EXPECT_FALSE(QToolTip::text().isEmpty()) << c.text.left(20).toStdString();
    EditOf(desk.Panel(), "Name").setFocus();
    EXPECT_EQ(edit.text(), before);
    EXPECT_FALSE(engine::CanUndo(Scene())) << c.text.left(20).toStdString();
  }
  EditOf(desk.Panel(), "Name").clear();
  EditOf(desk.Panel(), "Name").setModified(true);
  QTest::keyClick(&EditOf(desk.Panel(), "Name"), Qt::Key_Return);
  EXPECT_TRUE(desk.camera->GetName() == host::String("Front"));
}

TEST(Attributes, KeysAndWheelStepAsOneEdit) {
  WithThings desk;
  Select({desk.first});
  QLineEdit& x = EditOf(desk.Panel(), "Position", 0);
  fields::Type(x, "40");
  QTest::keyClick(&x, Qt::Key_Escape);
  EXPECT_EQ(x.text(), "0");
  QTest::keyClick(&x, Qt::Key_Up);
  QTest::keyClick(&x, Qt::Key_Down);
  EXPECT_EQ(desk.first->GetMl().off.x, 0);
  EXPECT_FALSE(engine::CanUndo(Scene()) || engine::CanRedo(Scene()))
      << "there and back again is no step";
  for (const auto& [key, shift, expected] : {std::tuple(Qt::Key_Up, false, 1.0),
                                             {Qt::Key_Up, true, 11.0},
                                             {Qt::Key_PageDown, false, 1.0},
                                             {Qt::Key_Up, false, 2.0}}) {
    QTest::keyClick(&x, key, shift ? Qt::ShiftModifier : Qt::NoModifier);
    EXPECT_EQ(desk.first->GetMl().off.x, expected);
  }
  const auto turn = [](QWidget& widget) {
    QWheelEvent event(QPointF(5, 5), widget.mapToGlobal(QPointF(5, 5)), {}, QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
  };
  turn(x);
  EXPECT_EQ(desk.first->GetMl().off.x, 3);
  turn(EditOf(desk.Panel(), "Position", 1));
  turn(ListOf(desk.Panel(), "Editor mode"));
  EXPECT_EQ(desk.first->GetMl().off.y, 0) << "the wheel changed a number that has not the focus";
  EXPECT_EQ(desk.first->GetEditorMode(), host::MODE_UNDEF);
  desk.App().Undo();
  EXPECT_EQ(desk.first->GetMl().off.x, 0);
  EXPECT_FALSE(engine::CanUndo(Scene()));
  x.setFocus();
  QTest::keyClick(&x, Qt::Key_Tab);
  EXPECT_TRUE(EditOf(desk.Panel(), "Position", 1).hasFocus());
}

TEST(Attributes, TypedTextSurvivesChangesFromElsewhere) {
  WithThings desk;
  Select({desk.first});
  QLineEdit& name = EditOf(desk.Panel(), "Name");
  fields::Type(name, "Half a na");
  desk.second->SetName("Other");
  desk.first->SetEditorMode(host::MODE_ON);
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(name.text(), "Half a na");
  EXPECT_EQ(ListOf(desk.Panel(), "Editor mode").currentText(), "On");
  Select({desk.second});
  EXPECT_TRUE(desk.first->GetName() == host::String("Half a na"))
      << "what was typed went to nobody";
  EXPECT_TRUE(desk.second->GetName() == host::String("Other"));
  EXPECT_EQ(name.text(), "Other");
}

TEST(Attributes, TakeLongAndRightToLeftNames) {
  WithThings desk;
  Select({desk.first});
  const QString hebrew = QString::fromUtf8("\u05e9\u05dc\u05d5\u05dd ");
  for (const QString& name : {hebrew.repeated(2000), QString(10000, 'x'),
                              QString::fromUtf8("\U0001f3e0 & <b>house</b>")}) {
    QLineEdit& edit = EditOf(desk.Panel(), "Name");
    edit.setText(name);
    edit.setModified(true);
    QTest::keyClick(&edit, Qt::Key_Return);
    Desk::Rest();
    EXPECT_TRUE(desk.first->GetName() == host::String(name.toStdString()));
    EXPECT_LT(desk.Panel().width(), 700);
  }
}

TEST(Attributes, FollowTags) {
  WithThings desk;
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  material->SetName("Wood");
  Scene().AppendMaterial(material);
  auto* tag = static_cast<host::TextureTag*>(desk.first->MakeTag(host::Ttexture));
  host::BaseTag* compositing = desk.first->MakeTag(host::Tcompositing);
  Select({desk.first});
  Scene().SetActiveTag(tag);
  Desk::Rest();
  fields::Pick(ListOf(desk.Panel(), "Material"), "Wood");
  EXPECT_EQ(tag->GetMaterial(), material);
  Enter(EditOf(desk.Panel(), "Tiles", 1), "3");
  EXPECT_EQ(tag->GetDataInstance()->GetVector(host::TEXTURETAG_TILES), Vector(1, 3, 0));
  Scene().SetActiveTag(compositing);
  Desk::Rest();
  QTest::mouseClick(&BoxOf(desk.Panel(), "Cast shadows"), Qt::LeftButton, {}, QPoint(8, 8));
  EXPECT_FALSE(compositing->GetDataInstance()->GetBool(host::COMPOSITINGTAG_CASTSHADOW));
}

TEST(Attributes, FollowMaterialsAndPanelsThatAskForIt) {
  WithThings desk;
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  Scene().AppendMaterial(material);
  material->SetBit(host::BIT_ACTIVE);
  Desk::Rest();
  Enter(EditOf(desk.Panel(), "Roughness"), "25 %");
  EXPECT_DOUBLE_EQ(material->GetDataInstance()->GetReal(host::MATERIAL_ROUGHNESS), 0.25);
  Enter(EditOf(desk.Panel(), "Texture"), "oak.png");
  ASSERT_NE(material->GetFirstShader(), nullptr);
  EXPECT_TRUE(material->GetFirstShader()
                  ->GetDataInstance()
                  ->GetFilename(host::BITMAPSHADER_FILENAME)
                  .GetString() == host::String("oak.png"));
  EXPECT_EQ(material->GetDataInstance()->GetLink(host::MATERIAL_COLOR_SHADER, &Scene()),
            material->GetFirstShader());
  desk.App().Undo();
  EXPECT_EQ(material->GetFirstShader(), nullptr);
  Desk::Rest();
  EXPECT_EQ(EditOf(desk.Panel(), "Texture").text(), "");
  host::LayerObject* layer = host::LayerObject::Alloc();
  Scene().AppendLayer(layer);
  layer->SetBit(host::BIT_ACTIVE);
  Desk::Rest();
  BoxOf(desk.Panel(), "Locked").click();
  EXPECT_TRUE(layer->GetLayerData(&Scene()).locked);
  desk.Window().Inspected().Show(Scene(), {engine::IdOf(*Scene().GetFirstRenderData())});
  Desk::Rest();
  EXPECT_TRUE(fields::Has(desk.Panel(), "Width"));
  Select({desk.light});
  EXPECT_TRUE(fields::Has(desk.Panel(), "Brightness"))
      << "a new selection comes before what a panel asked for";
}

TEST(Attributes, TakeManyAtOnce) {
  WithThings desk;
  Scene().SetActiveObject(nullptr);
  for (int i = 0; i < 20000; ++i)
    Scene().SetActiveObject(Add(i % 2 ? host::Onull : host::Ocube, "one of many"),
                            host::SELECTION_ADD);
  Desk::Rest();
  ASSERT_TRUE(IsReadSoon(dynamic_cast<desktop::AttributesView&>(desk.Panel())));
  EXPECT_TRUE(desk.Says("20,000 objects"));
  EXPECT_EQ(EditOf(desk.Panel(), "Name").text(), "one of many");
  Enter(EditOf(desk.Panel(), "Position", 0), "5");
  EXPECT_EQ(Scene().GetActiveObject()->GetMl().off, Vector(5, 0, 0));
  desk.App().Undo();
  EXPECT_EQ(Scene().GetActiveObject()->GetMl().off, Vector(0));
}

// Reading in the smallest slices: the state in between can be seen.
struct WithVeryMany : WithThings {
  desktop::AttributesView& view = dynamic_cast<desktop::AttributesView&>(Panel());
  std::vector<BaseObject*> many;

  WithVeryMany() {
    view.Reading().time = std::chrono::milliseconds(0);
    Scene().SetActiveObject(nullptr);
    for (int i = 0; i < 6000; ++i) {
      many.push_back(Add(host::Onull, i == 5999 ? "another" : "one of many"));
      Scene().SetActiveObject(many.back(), host::SELECTION_ADD);
    }
    Window().Refresh();
  }
};

TEST(Attributes, OfVeryManyAreReadInSlicesThatBeginAnewAfterAChange) {
  WithVeryMany desk;
  ASSERT_TRUE(desk.view.IsReading());
  EXPECT_TRUE(desk.Says("6,000 elements"));
  EXPECT_TRUE(desk.Says("Reading what they have in common"));
  ASSERT_TRUE(IsReadSoon(desk.view));
  EXPECT_TRUE(desk.Says("6,000 objects"));
  EXPECT_EQ(EditOf(desk.view, "Name").text(), "") << "the last one differs";
  EXPECT_EQ(EditOf(desk.view, "Position", 0).text(), "0");

  // In the middle of reading anew, half of them go.
  desk.many[0]->SetName("not this one");
  desk.Window().Refresh();
  ASSERT_TRUE(desk.view.IsReading());
  EXPECT_TRUE(EditOf(desk.view, "Name").isEnabled()) << "the same elements stay in hand";
  for (std::size_t i = 3000; i < desk.many.size(); ++i) BaseObject::Free(desk.many[i]);
  desk.many[0]->SetName("one of many");
  Desk::Rest();
  ASSERT_TRUE(IsReadSoon(desk.view));
  EXPECT_TRUE(desk.Says("3,000 objects"));
  EXPECT_EQ(EditOf(desk.view, "Name").text(), "one of many");
}

TEST(Attributes, OfVeryManyAreMeantByWhatIsTypedAndMayGoAway) {
  WithVeryMany desk;
  ASSERT_TRUE(IsReadSoon(desk.view));
  Enter(EditOf(desk.view, "Position", 1), "7");
  EXPECT_EQ(desk.many[2999]->GetMl().off, Vector(0, 7, 0));
  desk.many[0]->SetName("x");
  desk.Window().Refresh();
  ASSERT_TRUE(desk.view.IsReading());
  host::KillDocument(&Scene());
  desk.App().NewDocument();
  EXPECT_TRUE(IsReadSoon(desk.view));
}

TEST(Attributes, EditTheDocumentWhenNothingIsSelected) {
  WithThings desk;
  fields::Pick(ListOf(desk.Panel(), "Camera"), "Front");
  EXPECT_EQ(Scene().GetRenderBaseDraw()->GetSceneCamera(&Scene()), desk.camera);
  Enter(EditOf(desk.Panel(), "Frame rate"), "25");
  EXPECT_EQ(Scene().GetFps(), 25);
  desk.App().Undo();
  EXPECT_EQ(Scene().GetFps(), 30);
  desk.App().Undo();
  EXPECT_EQ(Scene().GetRenderBaseDraw()->GetSceneCamera(&Scene()), nullptr);
}

// Fields of the desktop keep the types of their parameters: another type would be recorded as such.
TEST(Attributes, FieldsKeepTheTypesOfTheirParameters) {
  for (const engine::FieldSection& section : engine::FieldSections()) {
    const host::BaseContainer data = engine::DefaultData(section.type);
    for (const engine::Field& field : section.fields) {
      if (field.id < 0 || data.FindIndex(field.id) == host::NOTOK ||
          field.kind == engine::FieldKind::Texture)
        continue;
      const host::LONG type = data.GetType(field.id);
      using Kind = engine::FieldKind;
      const bool real =
          field.kind == Kind::Real || field.kind == Kind::Angle || field.kind == Kind::Percent;
      const host::LONG expected = engine::IsOfParts(field.kind) ? host::DA_VECTOR
                                  : real                        ? host::DA_REAL
                                  : field.kind == Kind::Frame   ? host::DA_TIME
                                                                : host::DA_LONG;
      EXPECT_EQ(type, expected) << section.title << ": " << field.label;
    }
  }
}

TEST(AttributesPicture, OfSeveralThings) {
  WithThings desk;
  desk.Window().resize(1480, 1100);
  Desk::Rest();
  auto& dock = *desk.Window().findChild<QDockWidget*>("attributes");
  desk.Window().resizeDocks({&dock}, {700}, Qt::Vertical);
  EXPECT_TRUE(pictures::Write(dock, "attributes-nothing"));
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  material->SetName("Wood");
  Scene().AppendMaterial(material);
  for (const auto& [name, object] :
       {std::pair("cube", desk.first), {"light", desk.light}, {"camera", desk.camera}}) {
    Select({object});
    EXPECT_TRUE(pictures::Write(dock, QString("attributes-") + name));
  }
  Select({desk.first, desk.light, desk.camera});
  EXPECT_TRUE(pictures::Write(dock, "attributes-several"));
  desk.Window().Inspected().Show(Scene(), {engine::IdOf(*material)});
  EXPECT_TRUE(pictures::Write(dock, "attributes-material"));
  EXPECT_TRUE(pictures::Write(desk.Window(), "attributes-window"));
}

// The next turn of the wheel takes the place of the one before only where that made a step.
TEST(Attributes, AFieldEditThatWasStoppedIsNotGoneOnWith) {
  tests::SceneBuilder scene;
  for (int i = 0; i < 600; ++i) scene.Doc().AppendObject(BaseObject::Alloc(host::Ocube));
  auto all = std::make_shared<engine::Ids>();
  for (BaseObject* object = scene.Doc().GetFirstObject(); object; object = object->GetNext())
    all->push_back(engine::IdOf(*object));
  const engine::Field position{engine::kFieldPosition, "Position", engine::FieldKind::Vector};
  desktop::FieldEditing editing;
  const auto set = [&](double x) {
    editing.Set(scene.Doc(), all, position, {host::Vector(x, 0, 0), {true, true, true}, true});
  };
  BaseObject* last = engine::AsObject(engine::FindNode(&scene.Doc(), all->back()));
  set(1);
  {
    const desk::NoPatience slices;
    set(2);
    EXPECT_TRUE(desktop::IsEditing());
    desktop::StopEdit();
  }
  EXPECT_EQ(scene.Doc().GetFirstObject()->GetMl().off, host::Vector(1, 0, 0));
  EXPECT_EQ(last->GetMl().off, host::Vector(1, 0, 0));
  set(3);
  EXPECT_EQ(last->GetMl().off, host::Vector(3, 0, 0));
  EXPECT_EQ(engine::DoneNames(scene.Doc()).size(), 2U);
  EXPECT_TRUE(scene.Doc().DoUndo());
  EXPECT_EQ(last->GetMl().off, host::Vector(1, 0, 0));
}

}  // namespace
