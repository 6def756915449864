// Changes as an undo scope reports them.
#include <gtest/gtest.h>

#include <functional>

#include "engine/undo/MoveNodes.h"
#include "engine/undo/Undo.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseContainer;
using tests::SceneBuilder;

constexpr host::LONG kStyle = 1011012;

struct StyledScene : SceneBuilder {
  StyledScene() {
    Camera("Cam").Cube("Box").Cube("Ball").Material("Red").Material("Blue").Layer("L");
    Settings("HD")
        .Post("HD", 1)
        .Settings("Other")
        .Texture("Box", "Red")
        .Tag("Box", kStyle)
        .Active("HD");
    GetTag("Box", kStyle)->SetName(host::String("Style"));
  }
  void Changing(void* element) const { Doc().AddUndo(host::UNDO_CHANGE, element); }
  BaseContainer& Style() const { return *GetTag("Box", kStyle)->GetDataInstance(); }
  host::TextureTag& Paint() const {
    return *static_cast<host::TextureTag*>(GetTag("Box", host::Ttexture));
  }
};

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// Counts of objects, tags, layers, settings and others, "A" for other active settings, "C" for
// another camera.
std::string Summary(const engine::StepDifference& d) {
  std::string text;
  for (const std::size_t count : {d.objects, d.tags, d.layers, d.renderSettings, d.others})
    text += std::to_string(count);
  return text + (d.activeSettings ? "A" : "") + (d.sceneCamera ? "C" : "");
}

struct Difference {
  const char* name;
  std::function<void(StyledScene&)> change;
  const char* summary;
  const char* lines;
};

const Difference kCases[] = {
    {"nothing", [](StyledScene&) {}, "00000", ""},
    {"registered and left alone",
     [](StyledScene& s) {
       for (void* element : std::initializer_list<void*>{s.GetObject("Box"), &s.Paint(),
                                                         s.GetLayer("L"), s.GetSettings("HD")})
         s.Changing(element);
     },
     "00000", ""},
    {"written as it was",
     [](StyledScene& s) {
       s.Changing(s.GetTag("Box", kStyle));
       s.Style().SetLong(5, 1);
       s.Style().RemoveData(5);
     },
     "00000", ""},
    {"changed and changed back, registered twice",
     [](StyledScene& s) {
       s.Changing(s.GetObject("Box"));
       s.Modes("Box", host::MODE_OFF, host::MODE_OFF);
       s.Changing(s.GetObject("Box"));
       s.Modes("Box", host::MODE_UNDEF, host::MODE_UNDEF);
     },
     "00000", ""},
    {"switches",
     [](StyledScene& s) {
       s.Changing(s.GetObject("Ball"));
       s.Changing(s.GetObject("Box"));
       s.Modes("Ball", host::MODE_OFF, host::MODE_ON, false)
           .Modes("Box", host::MODE_UNDEF, host::MODE_OFF);
     },
     "20000",
     "object \"Ball\" editor default -> off\nobject \"Ball\" render default -> on\nobject \"Ball\" "
     "deform on -> off\n"
     "object \"Box\" render default -> off\n"},
    {"tags",
     [](StyledScene& s) {
       s.Changing(&s.Paint());
       s.Paint().SetMaterial(s.GetMaterial("Blue"));
       s.Changing(s.GetTag("Box", kStyle));
       s.Style().SetReal(7, 0.5);
       s.Style().SetLink(8, s.GetObject("Ball"));
     },
     "02000",
     "tag \"Texture\" of \"Box\" material \"Red\" -> \"Blue\"\ntag \"Style\" of \"Box\" 7 nothing "
     "-> real 0.5\n"
     "tag \"Style\" of \"Box\" 8 nothing -> link \"Ball\"\n"},
    {"a layer",
     [](StyledScene& s) {
       s.Changing(s.GetLayer("L"));
       host::LayerData flags;
       flags.view = false;
       s.GetLayer("L")->SetLayerData(&s.Doc(), flags);
     },
     "00100", "layer \"L\" view on -> off\n"},
    {"an effect of render settings",
     [](StyledScene& s) {
       s.Changing(s.GetSettings("HD"));
       s.GetSettings("HD")->GetFirstVideoPost()->SetBit(host::BIT_DISABLED);
       s.Doc().SetActiveRenderData(s.GetSettings("Other"));
     },
     "00010A",
     "render settings \"HD\" effects and passes as they were -> others\nactive render settings "
     "\"HD\" -> \"Other\"\n"},
    {"from one value to another",
     [](StyledScene& s) {
       BaseContainer inner;
       inner.SetLong(1, 2);
       s.Modes("Ball", host::MODE_OFF, host::MODE_ON);
       s.Style().SetContainer(9, inner);
       s.Style().SetLong(10, 1);
       s.Changing(s.GetObject("Ball"));
       s.Changing(s.GetTag("Box", kStyle));
       s.Modes("Ball", host::MODE_ON, host::MODE_OFF);
       inner.SetLong(1, 3);
       s.Style().SetContainer(9, inner);
       s.Style().SetContainer(10, inner);
     },
     "11000",
     "object \"Ball\" editor off -> on\nobject \"Ball\" render on -> off\n"
     "tag \"Style\" of \"Box\" 9 container 0 of 1 -> another container 0 of 1\n"
     "tag \"Style\" of \"Box\" 10 1 -> container 0 of 1\n"},
    {"the rest of an object",
     [](StyledScene& s) {
       s.Changing(s.GetObject("Box"));
       s.At("Box", 1, 2, 3).OnLayer("Box", "L");
       s.GetObject("Box")->GetDataInstance()->RemoveData(host::PRIM_SIZE);
       s.GetObject("Box")->SetName("Crate");
     },
     "10000",
     "object \"Crate\" name \"Box\" -> \"Crate\"\nobject \"Crate\" layer none -> \"L\"\n"
     "object \"Crate\" 1100 (200, 200, 200) -> nothing\nobject \"Crate\" shape as they were -> "
     "others\n"},
    {"the rest of a layer",
     [](StyledScene& s) {
       s.Changing(s.GetLayer("L"));
       s.GetLayer("L")->SetLayerData(&s.Doc(), {true, false, false, false, true, false, false,
                                                false, false, host::Vector(1, 0, 0)});
     },
     "00100",
     "layer \"L\" solo off -> on\nlayer \"L\" view on -> off\nlayer \"L\" render on -> off\n"
     "layer \"L\" manager on -> off\nlayer \"L\" locked off -> on\nlayer \"L\" generators on -> "
     "off\nlayer \"L\" deformers on -> off\nlayer \"L\" expressions on -> off\nlayer \"L\" "
     "animation on -> off\nlayer \"L\" color (0.5, 0.5, 0.5) -> (1, 0, 0)\n"},
    {"a material",
     [](StyledScene& s) {
       s.Changing(s.GetMaterial("Red"));
       s.GetMaterial("Red")->GetDataInstance()->SetLong(7, 7);
     },
     "00001", "\"Red\" 7 nothing -> 7\n"},
    {"the camera", [](StyledScene& s) { s.LookThrough("Cam"); }, "00000C",
     "scene camera none -> \"Cam\"\n"},
};

TEST(StepDifference, SaysWhatIsNotAsItWas) {
  for (const Difference& one : kCases) {
    SCOPED_TRACE(one.name);
    StyledScene scene;
    const engine::UndoScope scope(scene.Doc(), "Difference");
    one.change(scene);
    const auto difference = scope.Difference(10);
    ASSERT_TRUE(difference);
    EXPECT_EQ(Summary(*difference), one.summary);
    EXPECT_EQ(Joined(difference->lines), one.lines);
    EXPECT_EQ(difference->IsEmpty(), std::string(one.lines).empty());
  }
}

void FreeFirstEffect(host::RenderData& settings) {
  host::BaseVideoPost* effect = settings.GetFirstVideoPost();
  host::BaseVideoPost::Free(effect);
}

TEST(StepDifference, EffectsAreComparedWithAllThatTheyHold) {
  using host::RenderData;
  const std::function<void(RenderData&)> rows[] = {
      [](RenderData& s) { s.InsertVideoPost(host::BaseVideoPost::Alloc(2)); },
      [](RenderData& s) { s.InsertMultipass(host::MultipassObject::Alloc(3)); },
      [](RenderData& s) { FreeFirstEffect(s); },
      [](RenderData& s) { s.GetFirstVideoPost()->SetName("Other"); },
      [](RenderData& s) { s.GetFirstVideoPost()->GetDataInstance()->SetLong(1, 1); },
      [](RenderData& s) { s.GetFirstVideoPost()->InsertShader(host::BaseShader::Alloc(4)); },
      [](RenderData& s) {
        FreeFirstEffect(s);
        s.InsertVideoPost(host::BaseVideoPost::Alloc(9));
      }};
  for (const auto& change : rows) {
    SCOPED_TRACE(&change - rows);
    StyledScene scene;
    const engine::UndoScope scope(scene.Doc(), "Difference");
    scene.Changing(scene.GetSettings("HD"));
    EXPECT_TRUE(scope.Difference(10)->IsEmpty());
    change(*scene.GetSettings("HD"));
    EXPECT_EQ(Joined(scope.Difference(10)->lines),
              "render settings \"HD\" effects and passes as they were -> others\n");
  }
}

TEST(StepDifference, WhatMovedCountsAmongTheOthers) {
  StyledScene scene;
  const engine::UndoScope scope(scene.Doc(), "Difference");
  EXPECT_TRUE(
      engine::MoveNodes(scene.Doc(), {scene.GetObject("Box")}, scene.GetObject("Ball"), nullptr));
  EXPECT_EQ(Summary(*scope.Difference(10)), "00001");
}

TEST(StepDifference, CountsAllDescribesSomeAndStops) {
  StyledScene scene;
  const engine::UndoScope scope(scene.Doc(), "Difference");
  for (const char* name : {"Cam", "Box", "Ball"}) {
    scene.Changing(scene.GetObject(name));
    scene.Modes(name, host::MODE_UNDEF, host::MODE_OFF);
  }
  EXPECT_EQ(Joined(scope.Difference(1)->lines), "object \"Cam\" render default -> off\n");
  EXPECT_EQ(scope.Difference(1)->objects, 3U);
  EXPECT_FALSE(scope.Difference(1, [](double) { return false; }));
  EXPECT_TRUE(scope.Difference(1, [](double share) { return share == 0; }));
}

}  // namespace
