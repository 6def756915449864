// Whole differences as text: every element, field, count and part of them, of each way to compare.
#include <cmath>

#include "engine/scene/Ownership.h"
#include "engine/states/FieldText.h"
#include "engine/states/LostSearch.h"
#include "engine/states/StatesHolding.h"
#include "host/Parameters.h"
#include "tests/states/Stage.h"

namespace {

using engine::ChangeKind;
using engine::CompareOptions;
using engine::Difference;
using engine::Part;
using tests::Stage;

std::string PartsText(const engine::Parts& parts) {
  std::string text;
  if (parts.all()) return " all";
  for (const engine::PartRow& row : engine::kPartRows) {
    if (parts[engine::IndexOf(row.part)]) text += std::string(" ") + row.word;
  }
  return text;
}

// Of fields and values only how many there are where `brief`, or where they are very many.
std::string Printed(const host::BaseDocument& doc, const Difference& difference, bool brief = false,
                    const host::BaseDocument* rightDoc = nullptr) {
  const char* const kinds[] = {"changed", "left", "right"};
  std::string text;
  for (const engine::ElementChange& change : difference.changes) {
    const host::BaseDocument& right = rightDoc ? *rightDoc : doc;
    const bool isRight = change.kind == ChangeKind::OnlyRight;
    text += std::string(kinds[static_cast<std::size_t>(change.kind)]) + " " +
            engine::RowOf(change.part).word + " " +
            engine::ElementPath(isRight ? right : doc, change.element);
    if (change.counterpart != change.element)
      text += " = " + engine::ElementPath(right, change.counterpart);
    text += ":";
    const bool isCounted = brief || change.fields.size() > 8;
    if (isCounted) text += " " + std::to_string(change.fields.size());
    const host::LONG type = engine::TypeForFields(isRight ? right : doc, change);
    for (const engine::FieldChange& field : change.fields) {
      if (isCounted) break;
      text += " " + engine::FieldLabel(type, field.field) + " " +
              engine::FieldValueText(doc, type, field.field, field.left) + " > " +
              engine::FieldValueText(right, type, field.field, field.right) + ";";
    }
    text += "\n";
  }
  for (const engine::PartRow& row : engine::kPartRows) {
    const engine::PartCount& count = difference.Of(row.part);
    if (count.Sum() > 0)
      text += std::string(row.word) + " " + std::to_string(count.changed) + "/" +
              std::to_string(count.onlyLeft) + "/" + std::to_string(count.onlyRight) + " ";
  }
  return text + "gone " + std::to_string(difference.gone) + "\nheld" +
         PartsText(difference.heldLeft) + " |" + PartsText(difference.heldRight) + "\n";
}

// Day: as it was made. Night: without the layers and compositing tags; a record that is gone, and
// elements that Day does not have.
struct TwoStates : Stage {
  TwoStates() : Stage(0, 2) {
    Build().Post("Render Settings", host::VPglobalillumination).LookThrough("Wide");
    Record("Day");
    Build().Modes("Object 1", host::MODE_OFF, host::MODE_UNDEF, false).LookThrough("");
    Material(1)->SetMaterial(Build().GetMaterial("Blue"));
    Build().Cube("Object 1/New").Texture("Object 1/New", "Blue").Layer("Late");
    host::BaseContainer& settings = *Doc().GetFirstRenderData()->GetDataInstance();
    settings.SetLong(host::RDATA_XRES, 640);
    settings.SetTime(host::RDATA_FRAMETO, host::BaseTime(7, 30));
    settings.SetReal(123, 0.25);
    Doc().GetFirstRenderData()->GetFirstVideoPost()->SetBit(host::BIT_DISABLED);
    Switch(Part::Layers, false);
    Switch(Part::CompositingTags, false);
    host::BaseObject* extra = Build().Cube("Extra").Last();
    Record("Night");
    host::BaseObject::Free(extra);
  }
  host::TextureTag* Material(int object) {
    return static_cast<host::TextureTag*>(
        Build().GetTag("Object " + std::to_string(object), host::Ttexture));
  }
  host::BaseContainer Of(const char* name) const { return State(name).record; }
};

TEST(PrintedDifference, BetweenTwoStagemarks) {
  TwoStates stage;
  const Difference difference =
      engine::CompareStates(stage.Doc(), stage.Of("Day"), stage.Of("Night"));
  EXPECT_EQ(
      Printed(stage.Doc(), difference),
      "changed render-settings Day = Night: Width 1280 px > 640 px; To frame 90 > frame 7; Effect "
      "1 Global Illumination, on > Global Illumination, off; Value 123 not there > 0.25;\n"
      "changed camera nothing: Camera \"Wide\" > none;\n"
      "changed objects Object 1: Editor mode Undefined > Off; Deform mode On > Off;\n"
      "right objects Object 1/New: Editor mode not there > Undefined; Render mode not there > "
      "Undefined; Deform mode not there > On;\n"
      "changed materials Texture on Object 1: Material \"Red\" > \"Blue\";\n"
      "right materials Texture on Object 1/New: Material not there > \"Blue\";\n"
      "left compositing Compositing on Object 0: 50\n"
      "left compositing Compositing on Object 1: 50\n"
      "render-settings 1/0/0 camera 1/0/0 objects 1/0/1 materials 1/0/1 compositing 0/2/0 gone 0\n"
      "held all | all\n");
  CompareOptions some;
  some.mostFields = 1;
  some.parts.reset(engine::IndexOf(Part::Camera));
  some.parts.reset(engine::IndexOf(Part::RenderSettings));
  some.parts.reset(engine::IndexOf(Part::Objects));
  EXPECT_EQ(Printed(stage.Doc(),
                    engine::Mirrored(engine::CompareStates(stage.Doc(), stage.Of("Day"),
                                                           stage.Of("Night"), some)),
                    true),
            "changed materials Texture on Object 1: 1\n"
            "left materials Texture on Object 1/New: 1\n"
            "right compositing Compositing on Object 0: 50\n"
            "right compositing Compositing on Object 1: 0\n"
            "materials 1/1/0 compositing 0/0/2 gone 0\n"
            "held all | all\n");
}

TEST(PrintedDifference, BetweenTheSceneAndAStagemark) {
  TwoStates stage;
  stage.Build().Settings("By hand").Active("By hand").LookThrough("Near");
  stage.Build().GetTag("Object 0", Stage::kStyle)->GetDataInstance()->SetLong(1, 8);
  EXPECT_EQ(
      Printed(stage.Doc(), engine::CompareWithScene(stage.Doc(), stage.Of("Night"))),
      "changed render-settings Render Settings = Night: In use \"By hand\" > \"Render Settings\";\n"
      "changed camera nothing: Camera \"Near\" > none;\n"
      "left layers Late: 9\n"
      "changed style Sketch Style Tag on Object 0: Value 1 8 > 0;\n"
      "render-settings 1/0/0 camera 1/0/0 layers 0/1/0 style 1/0/0 gone 1\n"
      "held all | render-settings camera objects layers materials style\n");
  EXPECT_EQ(Printed(stage.Doc(), engine::CompareWithScene(stage.Doc(), stage.Of("Day"))),
            "changed render-settings Render Settings = Day: Width 640 px > 1280 px; To frame 7 > "
            "frame 90; Value 123 0.25 > not there; Effect 1 Global Illumination, off > Global "
            "Illumination, on; In use \"By hand\" > \"Render Settings\";\n"
            "changed camera nothing: Camera \"Near\" > \"Wide\";\n"
            "changed objects Object 1: Editor mode Off > Undefined; Deform mode Off > On;\n"
            "left objects Object 1/New: Editor mode Undefined > not there; Render mode Undefined > "
            "not there; Deform mode On > not there;\n"
            "left layers Late: 9\n"
            "changed materials Texture on Object 1: Material \"Blue\" > \"Red\";\n"
            "left materials Texture on Object 1/New: Material \"Blue\" > not there;\n"
            "changed style Sketch Style Tag on Object 0: Value 1 8 > 0;\n"
            "render-settings 1/0/0 camera 1/0/0 objects 1/1/0 layers 0/1/0 materials 1/1/0 style "
            "1/0/0 gone 0\n"
            "held all | render-settings camera objects layers materials compositing style\n");
  CompareOptions some;
  some.mostFields = 0;
  some.parts.reset(engine::IndexOf(Part::Layers));
  Difference brief = engine::CompareWithScene(stage.Doc(), stage.Of("Day"), some);
  EXPECT_EQ(Printed(stage.Doc(), brief, true),
            "changed render-settings Render Settings = Day: 0\n"
            "changed camera nothing: 0\n"
            "changed objects Object 1: 0\n"
            "left objects Object 1/New: 0\n"
            "changed materials Texture on Object 1: 0\n"
            "left materials Texture on Object 1/New: 0\n"
            "changed style Sketch Style Tag on Object 0: 0\n"
            "render-settings 1/0/0 camera 1/0/0 objects 1/1/0 materials 1/1/0 style 1/0/0 gone 0\n"
            "held all | render-settings camera objects materials compositing style\n");
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < brief.changes.size(); ++i) all.push_back(i);
  engine::TellFields(stage.Doc(), stage.Of("Day"), some, brief, all);
  EXPECT_EQ(Printed(stage.Doc(), brief, true),
            "changed render-settings Render Settings = Day: 0\n"
            "changed camera nothing: 0\n"
            "changed objects Object 1: 2\n"
            "left objects Object 1/New: 0\n"
            "changed materials Texture on Object 1: 1\n"
            "left materials Texture on Object 1/New: 0\n"
            "changed style Sketch Style Tag on Object 0: 1\n"
            "render-settings 1/0/0 camera 1/0/0 objects 1/1/0 materials 1/1/0 style 1/0/0 gone 0\n"
            "held all | render-settings camera objects materials compositing style\n");
}

TEST(PrintedDifference, OfAllThatAStagemarkSays) {
  TwoStates stage;
  EXPECT_EQ(Printed(stage.Doc(), engine::ContentsOf(stage.Doc(), stage.Of("Night"))),
            "right render-settings Night: 11\n"
            "right camera nothing: Camera not there > none;\n"
            "right objects Object 0: Editor mode not there > Undefined; Render mode not there > "
            "Undefined; Deform mode not there > On;\n"
            "right objects Object 1: Editor mode not there > Off; Render mode not there > "
            "Undefined; Deform mode not there > Off;\n"
            "right objects Object 1/New: Editor mode not there > Undefined; Render mode not there "
            "> Undefined; Deform mode not there > On;\n"
            "right objects Wide: Editor mode not there > Undefined; Render mode not there > "
            "Undefined; Deform mode not there > On;\n"
            "right objects Near: Editor mode not there > Undefined; Render mode not there > "
            "Undefined; Deform mode not there > On;\n"
            "right layers Front: 9\n"
            "right layers Front/Left: 9\n"
            "right layers Back: 9\n"
            "right materials Texture on Object 0: Material not there > \"Red\";\n"
            "right materials Texture on Object 1: Material not there > \"Blue\";\n"
            "right materials Texture on Object 1/New: Material not there > \"Blue\";\n"
            "right style Sketch Style Tag on Object 0: Value 1 not there > 0; Value 2 not there > "
            "\"plain\";\n"
            "right style Sketch Style Tag on Object 1: Value 1 not there > 0; Value 2 not there > "
            "\"plain\";\n"
            "render-settings 0/0/1 camera 0/0/1 objects 0/0/5 layers 0/0/3 materials 0/0/3 style "
            "0/0/2 gone 1\n"
            "held | render-settings camera objects layers materials style\n");
  CompareOptions some;
  some.mostFields = 1;
  for (const Part part : {Part::Camera, Part::Objects, Part::RenderSettings})
    some.parts.reset(engine::IndexOf(part));
  EXPECT_EQ(Printed(stage.Doc(), engine::ContentsOf(stage.Doc(), stage.Of("Day"), some), true),
            "right layers Front: 0\n"
            "right layers Front/Left: 0\n"
            "right layers Back: 9\n"
            "right materials Texture on Object 0: 0\n"
            "right materials Texture on Object 1: 1\n"
            "right compositing Compositing on Object 0: 0\n"
            "right compositing Compositing on Object 1: 50\n"
            "right style Sketch Style Tag on Object 0: 0\n"
            "right style Sketch Style Tag on Object 1: 2\n"
            "layers 0/0/3 materials 0/0/2 compositing 0/0/2 style 0/0/2 gone 0\n"
            "held | render-settings camera objects layers materials compositing style\n");
}

// By identity and name, else by path; equals by their number.
TEST(PrintedDifference, BetweenTwoDocuments) {
  engine::OwnedDocument former;
  {
    TwoStates stage;
    stage.Build().Cube("Twin").Cube("Twin").Cube("Only there");
    stage.Build().Modes("Twin", host::MODE_ON, host::MODE_ON);
    stage.Record("Late");
    former.reset(
        static_cast<host::BaseDocument*>(stage.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
  }
  TwoStates stage;
  stage.Build().Cube("Only here").Cube("Twin").Cube("Twin").Cube("And here");
  stage.Build().LookThrough("Near");
  stage.Record("Late");
  const auto left = engine::ReadStates(*former);
  EXPECT_EQ(
      Printed(*former,
              engine::CompareStates(*former, left.at(2).record, stage.Doc(), stage.Of("Late")),
              false, &stage.Doc()),
      "changed camera nothing: Camera none > \"Near\";\n"
      "changed objects Twin = Twin: Editor mode On > Undefined; Render mode On > Undefined;\n"
      "left objects Only there: Editor mode Undefined > not there; Render mode Undefined > not "
      "there; Deform mode On > not there;\n"
      "right objects Only here: Editor mode not there > Undefined; Render mode not there > "
      "Undefined; Deform mode not there > On;\n"
      "right objects And here: Editor mode not there > Undefined; Render mode not there > "
      "Undefined; Deform mode not there > On;\n"
      "camera 1/0/0 objects 1/1/2 gone 0\n"
      "held all | all\n");
}

TEST(PrintedDifference, TextsOfFieldsAndElements) {
  Stage stage(0, 1);
  stage.Build().Object("Room/Lamp").Tag("Room/Lamp", host::Tphong);
  host::BaseDocument& doc = stage.Doc();
  const auto id = [](const host::BaseList2D* element) { return engine::IdOf(*element); };
  stage.Build().GetObject("Room")->SetName("");
  host::BaseTag* style = stage.Build().GetTag("Object 0", Stage::kStyle);
  host::BaseTag* texture = stage.Build().GetTag("Object 0", host::Ttexture);
  texture->SetName("Coat");
  host::BaseObject* lamp = stage.Doc().GetFirstObject();
  while (lamp->GetName() != host::String("Lamp")) lamp = engine::NextInTree(lamp);
  std::string text;
  for (const engine::NodeId one :
       {id(lamp), id(lamp->GetFirstTag()), id(style), id(texture),
        id(stage.Build().GetMaterial("Red")), id(stage.Build().GetLayer("Front/Left")),
        engine::NodeId{1} << 40})
    text += engine::ElementPath(doc, one) + " | " + engine::ElementKind(doc, one) + "\n";
  EXPECT_EQ(text,
            "Null/Lamp | Null\n"
            "Phong on Null/Lamp | Phong tag\n"
            "Sketch Style Tag on Object 0 | Sketch Style Tag\n"
            "Coat on Object 0 | Texture tag\n"
            "Red | Material\n"
            "Front/Left | Layer\n"
            "nothing | \n");
  struct Value {
    host::LONG type;
    host::LONG field;
    host::GeData value;
  };
  host::BaseContainer two;
  two.SetLong(1, 1);
  two.SetLong(2, 2);
  const host::BaseTime late(50, 25);
  const Value values[] = {
      {host::Rbase, host::RDATA_FRAMESEQUENCE, host::LONG(2)},
      {host::Rbase, host::RDATA_FRAMESEQUENCE, host::LONG(9)},
      {host::Rbase, host::RDATA_FRAMEFROM, late},
      {host::Rbase, host::RDATA_FRAMEFROM, host::LONG(3)},
      {host::Rbase, host::RDATA_XRES, host::LONG(640)},
      {host::Rbase, 5076, host::LONG(1)},
      {host::Rbase, 5076, host::LONG(0)},
      {host::Rbase, 77, host::Filename("a/b.tif")},
      {host::Rbase, 77, host::GeData()},
      {host::Rbase, 77, two},
      {host::Rbase, 77, host::Real(1.0 / 3)},
      {host::Rbase, 77, host::String("quoted \"x\"")},
      {host::Rbase, engine::kFieldActiveSettings, host::GeData(doc.GetFirstRenderData())},
      {host::Rbase, engine::kFieldEffects, host::String("Glow, on")},
      {host::Rbase, engine::kFieldEffects - 2, host::String("Glow, off")},
      {host::Obase, engine::kFieldRenderMode, host::LONG(1)},
      {host::Obase, engine::kFieldPosition, host::Vector(1, 2.5, -3)},
      {host::Obase, engine::kFieldRotation, host::Vector(std::asin(1.0), 0.5 * std::asin(1.0), 0)},
      {host::Obase, engine::kFieldSceneCamera, host::GeData(stage.Build().GetObject("Wide"))},
      {host::Olayer, engine::kFieldLayerFlags - 2, host::LONG(1)},
      {host::Ttexture, engine::kFieldTagMaterial, host::GeData()},
      {host::Ttexture, host::TEXTURETAG_OFFSET, host::Vector(0.5, 0.25, 8)},
      {host::Ttexture, engine::kStoredTagLink, host::GeData(texture)},
      {host::Tcompositing, host::COMPOSITINGTAG_CASTSHADOW, host::LONG(1)},
      {host::Tcompositing, 1016, host::Real(0.5)},
      {host::Tcompositing, 4711, host::LONG(5)},
      {host::Olight, host::LIGHT_BRIGHTNESS, host::Real(0.5)},
      {host::Olight, host::LIGHT_INNER_ANGLE, host::Real(std::asin(1.0))},
  };
  text = "";
  for (const Value& one : values)
    text += engine::FieldLabel(one.type, one.field) + ": " +
            engine::FieldValueText(doc, one.type, one.field, one.value) + "\n";
  text += engine::FieldValueText(doc, host::Rbase, 77, std::nullopt);
  EXPECT_EQ(text,
            "Frames: All frames\n"
            "Frames: 9\n"
            "From: frame 50\n"
            "From: 3\n"
            "Width: 640 px\n"
            "Save alpha: On\n"
            "Save alpha: Off\n"
            "Value 77: \"a/b.tif\"\n"
            "Value 77: nothing\n"
            "Value 77: 2 values\n"
            "Value 77: 0.333333\n"
            "Value 77: \"quoted \\\"x\\\"\"\n"
            "In use: \"Render Settings\"\n"
            "Effect 1: Glow, on\n"
            "Effect 3: Glow, off\n"
            "Render mode: Off\n"
            "Position: 1, 2.5, -3\n"
            "Rotation: 90, 45, 0\xC2\xB0\n"
            "Camera: \"Wide\"\n"
            "Render: On\n"
            "Material: nothing\n"
            "Offset: 0.5, 0.25\n"
            "Link to itself: \"Coat\"\n"
            "Cast shadows: On\n"
            "Number 1016: 0.5\n"
            "Value 4711: 5\n"
            "Brightness: 50 %\n"
            "Inner angle: 90\xC2\xB0\n"
            "not there");
}

// Its object, camera, material, layer or tag, and what lies inside.
TEST(PrintedDifference, SaysWhichStagemarksHoldAnElement) {
  TwoStates stage;
  stage.Build().Material("Nowhere").Material("Old");
  stage.Material(0)->SetMaterial(stage.Build().GetMaterial("Old"));
  for (const engine::PartRow& row : engine::kPartRows)
    stage.Switch(row.part, row.part == Part::Materials);
  stage.Record("Another");
  const auto holding = [&](const std::vector<host::BaseList2D*>& elements) {
    std::string names;
    for (const std::string& name : engine::StatesHolding(stage.Doc(), elements))
      names += name + " ";
    return names;
  };
  tests::SceneBuilder& build = stage.Build();
  EXPECT_EQ(holding({build.GetMaterial("Nowhere")}), "");
  EXPECT_EQ(holding({build.GetMaterial("Old")}), "Another ");
  EXPECT_EQ(holding({build.GetMaterial("Old"), build.GetMaterial("Red")}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetObject("Wide")}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetObject("Object 1/New")}), "Another Night ");
  EXPECT_EQ(holding({build.GetObject("Object 1")}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetLayer("Front/Left")}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetLayer("Front")}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetLayer("Late")}), "");
  EXPECT_EQ(holding({stage.Material(0)}), "Another Day Night ");
  EXPECT_EQ(holding({build.GetTag("Object 0", host::Tcompositing)}), "Day ");
  Stage camera(0, 1);
  for (const engine::PartRow& row : engine::kPartRows)
    camera.Switch(row.part, row.part == Part::Camera);
  camera.Build().LookThrough("Near");
  camera.Record("Camera alone");
  const auto ofCamera = [&](const char* name) {
    return engine::StatesHolding(camera.Doc(), {camera.Build().GetObject(name)}).size();
  };
  EXPECT_EQ(ofCamera("Near"), 1U);
  EXPECT_EQ(ofCamera("Wide"), 0U);
}

// Settings that a Stagemark has are not lost; that others are the active ones is, as loading makes
// the first ones the active ones.
TEST(PrintedDifference, SettingsThatNoStagemarkHasAreLost) {
  for (const int kept : {0, 1, 2}) {
    Stage stage(0, 1);
    stage.Switch(Part::RenderSettings, false);
    stage.Record("Without");
    stage.Switch(Part::RenderSettings, true);
    stage.Record("Old");
    host::BaseContainer& data = *stage.Doc().GetFirstRenderData()->GetDataInstance();
    data.SetLong(host::RDATA_XRES, 333);
    stage.Build().GetObject("Object 0")->SetRenderMode(host::MODE_OFF);
    if (kept > 0) stage.Record("New");
    if (kept == 1) stage.Build().Settings("By hand").Active("By hand");
    const Difference toOld = engine::CompareWithScene(stage.Doc(), stage.State("Old").record);
    std::string lost;
    for (const std::size_t i :
         engine::FindLost(stage.Doc(), engine::ReadStates(stage.Doc()), toOld))
      lost += std::string(engine::RowOf(toOld.changes[i].part).word) + " ";
    const char* const expected[] = {"render-settings objects ", "render-settings ", ""};
    EXPECT_EQ(lost, expected[kept]);
  }
}

}  // namespace
