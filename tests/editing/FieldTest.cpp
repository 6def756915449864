// Fields of elements: where each is kept, in which steps its numbers go, and the common value of
// many.
#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "engine/editing/FieldValue.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::Field;
using host::LayerData;
using tests::SceneBuilder;

const engine::FieldSection& Section(host::LONG type, const std::string& title) {
  for (const engine::FieldSection& section : engine::FieldSections()) {
    if (section.type == type && section.title == title) return section;
  }
  throw std::runtime_error("no fields of that title");
}

TEST(Fields, OfALayerAreItsFlags) {
  const std::pair<std::string, host::Bool LayerData::*> flags[] = {
      {"Solo", &LayerData::solo},           {"View", &LayerData::view},
      {"Render", &LayerData::render},       {"Manager", &LayerData::manager},
      {"Locked", &LayerData::locked},       {"Generators", &LayerData::generators},
      {"Deformers", &LayerData::deformers}, {"Expressions", &LayerData::expressions},
      {"Animation", &LayerData::animation}};
  SceneBuilder scene;
  scene.Layer("L");
  host::LayerObject& layer = *scene.GetLayer("L");
  std::size_t seen = 0;
  for (const Field& field : Section(host::Olayer, "Layer").fields) {
    for (const auto& [label, flag] : flags) {
      if (label != field.label) continue;
      LayerData expected = layer.GetLayerData(&scene.Doc(), host::TRUE);
      EXPECT_EQ(engine::ReadField(layer, field).GetBool(), expected.*flag) << label;
      expected.*flag = !(expected.*flag);
      engine::WriteField(layer, field, host::GeData(host::LONG{expected.*flag}));
      EXPECT_EQ(layer.GetLayerData(&scene.Doc(), host::TRUE), expected) << label;
      ++seen;
    }
  }
  EXPECT_EQ(seen, std::size(flags));
}

// Label, least, most and step of the numbers, as a person sees them.
TEST(Fields, OfNumbersHaveTheseLimits) {
  struct Case {
    host::LONG type;
    const char* title;
    const char* limits;
  };
  for (const Case& c :
       {Case{host::Olight, "Light",
             "Color 0 1 0.05, Brightness 0 1e+06 5, Inner angle 0 180 1, Outer angle 0 180 1, "
             "Range 0 1e+09 10, Radius 0 1e+09 1, "},
        Case{host::Ocamera, "Camera",
             "Field of view 0.1 177 1, Vertical field 0 177 1, Width 0.001 1e+09 10, Near 0 1e+09 "
             "1, Far 0 1e+09 10, "},
        Case{host::Obase, "Coordinates",
             "Position -1e+09 1e+09 1, Rotation -36000 36000 1, Scale -1e+06 1e+06 0.1, "},
        Case{host::Rbase, "Output",
             "Width 1 16384 1, Height 1 16384 1, From -1e+06 1e+06 1, To -1e+06 1e+06 1, Frame "
             "rate 1 1000 1, "},
        Case{host::Ocube, "Cube", "Size 0 1e+09 1, "},
        Case{host::Ocone, "Cone", "Radius 0 1e+09 1, Height 0 1e+09 1, Segments 3 1000 1, "},
        Case{host::Otorus, "Torus", "Radius 0 1e+09 1, Tube radius 0 1e+09 1, Segments 3 1000 1, "},
        Case{host::Oplane, "Plane", "Width 0 1e+09 1, Depth 0 1e+09 1, Segments 3 1000 1, "}}) {
    std::ostringstream limits;
    for (const Field& field : Section(c.type, c.title).fields) {
      if (field.choices.empty() && field.kind != engine::FieldKind::Text)
        limits << field.label << ' ' << field.min << ' ' << field.max << ' ' << field.step << ", ";
    }
    EXPECT_EQ(limits.str(), c.limits) << c.title;
  }
}

TEST(Fields, ANameIsCommonToElementsOfThatNameOnly) {
  SceneBuilder scene;
  scene.Object("A").Object("A/A").Object("B");
  const Field& name = Section(host::Obase, "Basic").fields.front();
  engine::CommonValue common(name, *scene.GetObject("A"));
  EXPECT_TRUE(common.LookAt(*scene.GetObject("A/A")));
  EXPECT_FALSE(common.Value().mixed[0]);
  EXPECT_EQ(common.Value().value.GetString(), host::String("A"));
  EXPECT_FALSE(common.LookAt(*scene.GetObject("B")));
  EXPECT_TRUE(common.Value().mixed[0]);
}

TEST(Fields, PartsOfAPositionAreCommonEachByItself) {
  SceneBuilder scene;
  scene.Object("A").At("A", 1, 2, 3);
  struct Case {
    host::Vector other;
    std::array<bool, 3> mixed;
    bool agrees;
  };
  const Field& position = Section(host::Obase, "Coordinates").fields.front();
  ASSERT_EQ(position.id, engine::kFieldPosition);
  for (const Case& c :
       {Case{{1, 2, 3}, {false, false, false}, true}, Case{{1, 5, 3}, {false, true, false}, true},
        Case{{0, 2, 3}, {true, false, false}, true}, Case{{1, 2, 0}, {false, false, true}, true},
        Case{{0, 5, 0}, {true, true, true}, false}}) {
    scene.Object("B").At("B", c.other.x, c.other.y, c.other.z);
    engine::CommonValue common(position, *scene.GetObject("A"));
    EXPECT_EQ(common.LookAt(*scene.GetObject("B")), c.agrees);
    EXPECT_EQ(common.Value().mixed, c.mixed);
    host::BaseObject* other = scene.GetObject("B");
    host::BaseObject::Free(other);
  }
}

TEST(Fields, OfAPostEffectSayWhetherItIsInUse) {
  SceneBuilder scene;
  scene.Settings("Final").Post("Final", host::VPglobalillumination);
  host::BaseVideoPost& post = *scene.GetSettings("Final")->GetFirstVideoPost();
  for (const bool isInUse : {false, true}) {
    engine::WriteField(post, engine::InUseField(), host::GeData(host::LONG{isInUse}));
    EXPECT_EQ(post.GetBit(host::BIT_DISABLED), !isInUse);
    EXPECT_EQ(engine::ReadField(post, engine::InUseField()).GetBool(), isInUse);
  }
}

// Scenes hold the numbers.
TEST(Fields, OfferTheseChoices) {
  std::ostringstream text;
  for (const engine::FieldSection& section : engine::FieldSections()) {
    for (const Field& field : section.fields) {
      if (!field.choices.empty()) text << section.title << ", " << field.label << ':';
      for (const engine::FieldChoice& choice : field.choices)
        text << ' ' << choice.value << ' ' << choice.label << ',';
      if (!field.choices.empty()) text << '\n';
    }
  }
  EXPECT_EQ(text.str(),
            "Basic, Editor mode: 2 Undefined, 0 On, 1 Off,\n"
            "Basic, Render mode: 2 Undefined, 0 On, 1 Off,\n"
            "Basic, Deform mode: 1 On, 0 Off,\n"
            "Camera, Projection: 0 Perspective, 1 Parallel,\n"
            "Light, Type: 0 Point, 1 Spot, 2 Sun, 3 Area, 4 Ambient,\n"
            "Light, Shadow: 0 None, 1 Ray-traced,\n"
            "Opacity, Mode: 0 Opaque, 1 Cut out, 2 Blended,\n"
            "Output, Frames: 0 From - to, 1 Current frame, 2 All frames,\n");
}

}  // namespace
