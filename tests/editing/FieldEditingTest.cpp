// Every field of the table, set in elements that have it: it reads as what was set, nothing else of
// them changes, and one undo takes it back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>

#include "engine/editing/FieldValue.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/ValueText.h"
#include "engine/undo/Undo.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::Field;
using engine::FieldKind;
using engine::FieldSection;
using host::BaseList2D;
using host::GeData;
using host::LONG;
using host::Vector;
using tests::SceneBuilder;

// Two of everything that has fields.
struct FieldScene : SceneBuilder {
  FieldScene() {
    for (const LONG type : {host::Ocube, host::Ocamera, host::Olight, host::Osphere, host::Odisc,
                            host::Ocone, host::Ocylinder, host::Otorus, host::Oplane})
      Object("X", type).Object("Y", type);
    Material("Wood").Material("Brass").Layer("Front").Layer("Back").Settings("Other");
    for (int i = 0; i < 2; ++i)
      Texture("X", "").Tag("X", host::Tcompositing).Post("Other", host::VPglobalillumination);
  }
  std::vector<BaseList2D*> Having(LONG type) const {
    std::vector<BaseList2D*> elements;
    for (host::GeListNode* node = &Doc(); node; node = engine::NextInside(*node, Doc())) {
      if (node->IsInstanceOf(type)) elements.push_back(static_cast<BaseList2D*>(node));
    }
    if (elements.size() > 2) elements.resize(2);
    return elements;
  }
};

// All fields of an element but one, as text. Of a turn and a scale, which are reckoned from the
// axes, the last digits differ.
std::string Others(const BaseList2D& element, const Field& but) {
  std::string text;
  const bool isOfAxes = but.id == engine::kFieldRotation || but.id == engine::kFieldScale;
  for (const FieldSection& section : engine::FieldSections()) {
    if (!element.IsInstanceOf(section.type)) continue;
    for (const Field& field : section.fields) {
      if (field.id == but.id || field.id == engine::kFieldRotation) continue;
      if (field.id == engine::kFieldScale && isOfAxes) continue;
      // A frame is counted by the rate.
      if (but.id == host::RDATA_FRAMERATE && field.kind == FieldKind::Frame) continue;
      text += field.label +
              (" " + engine::ValueText(engine::ReadField(element, field),
                                       [](auto id) { return std::to_string(id); })) +
              '\n';
    }
  }
  return text;
}

// Two values that no element of the scene has yet.
std::array<GeData, 2> ValuesFor(const Field& field, const FieldScene& scene, const GeData& now) {
  const double least = std::max(field.min, 0.0);
  const auto shown = [&](int steps) {
    return (least + steps * field.step) / engine::ShownPerKept(field.kind);
  };
  switch (field.kind) {
    case FieldKind::Text:
      return {host::String("Some"), host::String("Other name")};
    case FieldKind::Whole:
    case FieldKind::Frame:
      return {LONG(shown(37)), LONG(shown(38))};
    case FieldKind::Real:
    case FieldKind::Angle:
    case FieldKind::Percent:
      return {host::Real(shown(3)), host::Real(shown(4))};
    case FieldKind::Switch:
      return {LONG{!now.GetBool()}, LONG{now.GetBool()}};
    case FieldKind::Choice:
      return {LONG{field.choices[now.GetLong() == field.choices[0].value].value},
              LONG{field.choices.back().value}};
    case FieldKind::File:
    case FieldKind::Texture:
      return {host::Filename("a.png"), host::Filename("b.png")};
    case FieldKind::Layer:
      return {scene.GetLayer("Front"), scene.GetLayer("Back")};
    case FieldKind::Material:
      return {scene.GetMaterial("Wood"), scene.GetMaterial("Brass")};
    case FieldKind::Camera:
      return {scene.Having(host::Ocamera)[0], scene.Having(host::Ocamera)[1]};
    case FieldKind::Settings:
      return {scene.GetSettings("Other"), scene.Doc().GetFirstRenderData()};
    default:
      return {Vector(0.3, 0.45, 0.7), Vector(0.2, 0.6, 0.9)};
  }
}

// Kept to the last digit but for those of axes.
void ExpectValue(const BaseList2D& element, const Field& field, const GeData& wanted) {
  const GeData is = engine::ReadField(element, field);
  if (!engine::IsOfParts(field.kind)) {
    EXPECT_EQ(is, wanted);
    return;
  }
  const Vector a = is.GetVector();
  const Vector b = wanted.GetVector();
  EXPECT_LT(std::abs(a.x - b.x) + std::abs(a.y - b.y) + std::abs(a.z - b.z), 1e-12);
}

// What of the value two elements do not have in common.
std::array<bool, 3> Mixed(const Field& field, const std::vector<BaseList2D*>& elements) {
  engine::CommonValue common(field, *elements[0]);
  common.LookAt(*elements.back());
  return common.Value().mixed;
}

// One part of a value of several, in the first element only.
void SetParts(FieldScene& scene, const std::vector<BaseList2D*>& elements, const Field& field,
              Vector now) {
  for (std::size_t part = 0; part < 3; ++part) {
    if (part == 2 && field.kind == FieldKind::Pair) continue;
    (part == 0 ? now.x : part == 1 ? now.y : now.z) += 0.05;
    engine::FieldEdit edit{Vector(now), {}};
    edit.parts[part] = true;
    const auto before = engine::ReadField(*elements[0], field).GetVector();
    edit.value = Vector(part == 0 ? now.x : 9, part == 1 ? now.y : 9, part == 2 ? now.z : 9);
    engine::RunWhole(scene.Doc(), engine::SetField(scene.Doc(), {elements[0]}, field, edit));
    ExpectValue(*elements[0], field, now);
    if (field.id != engine::kFieldRotation) {
      EXPECT_EQ(Mixed(field, elements)[part], true) << part;
      EXPECT_TRUE(part == 2 || !Mixed(field, elements)[2]) << part;
    }
    EXPECT_TRUE(scene.Doc().DoUndo());
    now = before;
  }
}

void SetAndTakeBack(const FieldSection& section, const Field& field) {
  FieldScene scene;
  host::BaseDocument& doc = scene.Doc();
  const std::vector<BaseList2D*> elements = scene.Having(section.type);
  ASSERT_EQ(elements.size(), section.type == host::Tbasedocument ? 1U : 2U);
  const GeData first = engine::ReadField(*elements[0], field);
  const std::string others = Others(*elements[0], field);
  std::string before = engine::DumpDocument(doc);
  for (const GeData& value : ValuesFor(field, scene, first)) {
    if (value == engine::ReadField(*elements[0], field)) continue;
    const auto set = [&](const std::vector<BaseList2D*>& some) {
      engine::RunWhole(doc, engine::SetField(doc, some, field, {value}));
    };
    set({elements[0]});
    ExpectValue(*elements[0], field, value);
    EXPECT_EQ(engine::ReadField(*elements[0], field).GetType(), first.GetType());
    EXPECT_EQ(Others(*elements[0], field), others);
    if (elements.size() > 1) {
      EXPECT_TRUE(Mixed(field, elements)[0]);
    }
    EXPECT_EQ(engine::UndoName(doc), field.kind == FieldKind::Text ? "Rename" : field.label);
    const std::string after = engine::DumpDocument(doc);
    ASSERT_TRUE(doc.DoUndo());
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(doc)),
              std::vector<std::string>());
    ASSERT_TRUE(doc.DoRedo());
    EXPECT_EQ(engine::DumpDifference(after, engine::DumpDocument(doc)), std::vector<std::string>());
    set(elements);
    if (field.id != engine::kFieldRotation) {
      EXPECT_EQ(Mixed(field, elements), (std::array<bool, 3>{}));
    }
    engine::ClearUndo(doc);
    if (!engine::IsOfParts(field.kind)) set(elements);
    EXPECT_FALSE(engine::CanUndo(doc)) << "it was set already";
    before = engine::DumpDocument(doc);
  }
  if (engine::IsOfParts(field.kind))
    SetParts(scene, elements, field, engine::ReadField(*elements[0], field).GetVector());
}

TEST(FieldEditing, SetsEachAndNothingElse) {
  for (const FieldSection& section : engine::FieldSections()) {
    for (const Field& field : section.fields) {
      SCOPED_TRACE(std::string(section.title) + ", " + field.label);
      SetAndTakeBack(section, field);
      // Those that are called by their numbers.
      const std::string label = field.label;
      if (std::isdigit(static_cast<unsigned char>(label.back()))) {
        EXPECT_EQ(label.substr(label.rfind(' ') + 1), std::to_string(field.id));
      }
    }
  }
  FieldScene scene;
  BaseList2D* post = scene.Having(host::VPglobalillumination)[0];
  engine::RunWhole(scene.Doc(),
                   engine::SetField(scene.Doc(), {post}, engine::InUseField(), {LONG(0)}));
  EXPECT_EQ(engine::UndoName(scene.Doc()), "In use");
  EXPECT_TRUE(post->GetBit(host::BIT_DISABLED));
}

// What another document has cannot be linked to; identities of what is gone are passed over.
TEST(FieldEditing, ElementsAreOfTheDocument) {
  FieldScene scene;
  FieldScene other;
  host::BaseDocument& doc = scene.Doc();
  BaseList2D* tag = scene.GetTag("X", host::Ttexture);
  for (const FieldSection& section : engine::FieldSections()) {
    for (const Field& field : section.fields) {
      if (field.kind < FieldKind::Layer) continue;
      BaseList2D* element = scene.Having(section.type)[0];
      const GeData mine = ValuesFor(field, scene, {})[0];
      engine::WriteField(*element, field, mine);
      EXPECT_EQ(engine::ReadField(*element, field), mine) << field.label;
      if (field.kind == FieldKind::Settings) continue;
      engine::WriteField(*element, field, ValuesFor(field, other, {})[0]);
      EXPECT_EQ(engine::LinkOf(engine::ReadField(*element, field)), 0U) << field.label;
    }
  }
  const engine::Ids ids{engine::IdOf(*tag), engine::NodeId{1} << 40, engine::IdOf(doc),
                        engine::IdOf(*scene.GetMaterial("Wood"))};
  const std::vector<BaseList2D*> expected{tag, &doc, scene.GetMaterial("Wood")};
  EXPECT_EQ(engine::ElementsOf(doc, ids), expected);
}

// A parameter that an element does not hold reads as its type begins with, of the kind of the field.
TEST(FieldEditing, WhatIsNotHeldReadsAsThePreset) {
  FieldScene scene;
  for (const FieldSection& section : engine::FieldSections()) {
    BaseList2D* element = scene.Having(section.type)[0];
    for (const Field& field : section.fields) {
      if (field.id < 0) continue;
      SCOPED_TRACE(std::string(section.title) + ", " + field.label);
      const GeData before = engine::ReadField(*element, field);
      const double shown = before.GetReal() * engine::ShownPerKept(field.kind);
      if (field.choices.empty() && before.GetType() == host::DA_REAL) {
        EXPECT_TRUE(shown >= field.min && shown <= field.max) << shown;
      }
      element->GetDataInstance()->RemoveData(field.id);
      EXPECT_EQ(engine::ReadField(*element, field), before);
    }
  }
  std::string strengths;
  for (const FieldSection& section : engine::FieldSections()) {
    for (const Field& field : section.fields) {
      if (field.preset != 0)
        strengths +=
            field.label + (" " + std::to_string(field.preset) + " ") +
            engine::RealText(engine::ReadField(*scene.GetMaterial("Wood"), field).GetReal());
    }
  }
  EXPECT_EQ(strengths, "Strength 1.000000 1Strength 1.000000 1");
}

TEST(FieldEditing, ShowsPartsAndDegrees) {
  EXPECT_NEAR(engine::ShownPerKept(FieldKind::Angle), 57.29577951308232, 1e-12);
  EXPECT_NEAR(engine::ShownPerKept(FieldKind::Angles), 57.29577951308232, 1e-12);
  EXPECT_EQ(engine::ShownPerKept(FieldKind::Percent), 100);
  EXPECT_EQ(engine::ShownPerKept(FieldKind::Real), 1);
  std::string parts;
  for (const FieldKind kind :
       {FieldKind::Text, FieldKind::Angle, FieldKind::Vector, FieldKind::Angles, FieldKind::Pair,
        FieldKind::Color, FieldKind::ScreenColor, FieldKind::Material})
    parts += std::to_string(engine::PartsOf(kind)) + (engine::IsColor(kind) ? " color," : ",");
  EXPECT_EQ(parts, "1,1,3,3,2,3 color,3 color,1,");
}

// A time is counted in frames of the settings' own rate, be it none at all.
TEST(FieldEditing, CountsFramesByTheRate) {
  FieldScene scene;
  const auto output = std::ranges::find_if(engine::FieldSections(), [](const auto& section) {
    return std::string_view(section.title) == "Output";
  });
  const Field& from = *std::ranges::find(output->fields, host::RDATA_FRAMEFROM, &Field::id);
  BaseList2D& settings = *scene.GetSettings("Other");
  host::BaseContainer& data = *settings.GetDataInstance();
  for (const auto& [rate, counted] : {std::pair{25, 25}, {30, 30}, {0, 1}, {-4, 1}}) {
    data.SetLong(host::RDATA_FRAMERATE, rate);
    engine::WriteField(settings, from, LONG(50));
    EXPECT_EQ(data.GetTime(host::RDATA_FRAMEFROM), host::BaseTime(50, counted));
    EXPECT_EQ(engine::ReadField(settings, from).GetLong(), 50);
  }
  data.RemoveData(host::RDATA_FRAMERATE);
  engine::WriteField(settings, from, LONG(50));
  EXPECT_EQ(data.GetTime(host::RDATA_FRAMEFROM), host::BaseTime(50, 30));
}

}  // namespace
