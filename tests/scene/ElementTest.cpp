// Single elements: type names, defaults, parameters, layers, bits.
#include <gtest/gtest.h>

#include "engine/scene/NewNodes.h"
#include "engine/scene/SceneDump.h"
#include "host/Parameters.h"
#include "tests/support/ContainerText.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::NodeKind;
using host::BaseContainer;
using host::BaseObject;
using host::GeData;
using tests::SceneBuilder;

struct TypeCase {
  NodeKind kind;
  host::LONG type;
  host::LONG base;
  const char* typeName;
  const char* name;
};

TEST(Element, KnowsItsTypeAndStartsWithItsName) {
  const TypeCase cases[] = {
      {NodeKind::Object, host::Onull, host::Obase, "Null", "Null"},
      {NodeKind::Object, host::Ocamera, host::Obase, "Camera", "Camera"},
      {NodeKind::Object, 999999, host::Obase, "Unknown", ""},
      {NodeKind::TextureTag, host::Ttexture, host::Tbase, "Texture", "Texture"},
      {NodeKind::Tag, host::Tcompositing, host::Tbase, "Compositing", "Compositing"},
      {NodeKind::Tag, 1021738, host::Tbase, "Unknown", ""},
      {NodeKind::Material, host::Mmaterial, host::Mbase, "Material", "Material"},
      {NodeKind::Shader, host::Xbitmap, host::Xbase, "Bitmap", "Bitmap"},
      {NodeKind::Layer, host::Olayer, host::Olayer, "Layer", "Layer"},
      {NodeKind::RenderSettings, host::Rbase, host::Rbase, "Render Settings", "Render Settings"},
      {NodeKind::VideoPost, 77, host::VPbase, "Unknown", ""},
  };
  for (const TypeCase& c : cases) {
    host::BaseList2D* node = engine::MakeNode(c.kind, c.type);
    EXPECT_EQ(node->GetTypeName(), c.typeName) << c.type;
    EXPECT_EQ(node->GetName(), c.name) << c.type;
    EXPECT_EQ(node->GetType(), c.type);
    EXPECT_TRUE(node->IsInstanceOf(c.type));
    EXPECT_TRUE(node->IsInstanceOf(c.base)) << c.type;
    EXPECT_FALSE(node->IsInstanceOf(1)) << c.type;
    engine::DestroyNode(node);
  }
}

TEST(Element, StartsWithSensibleParameters) {
  SceneBuilder scene;
  scene.Camera("Cam")
      .Cube("Box")
      .Tag("Box", host::Tcompositing)
      .Tag("Box", 1021738)
      .Object("Any", 424242);
  EXPECT_NEAR(scene.GetObject("Cam")->GetData().GetReal(host::CAMERA_FOV), 0.927, 0.001);
  EXPECT_EQ(scene.GetObject("Box")->GetData().GetVector(host::PRIM_SIZE), host::Vector(200));
  const BaseContainer compositing = scene.GetTag("Box", host::Tcompositing)->GetData();
  for (host::LONG parameter : {1000, 1001, 1002}) EXPECT_TRUE(compositing.GetBool(parameter));
  EXPECT_EQ(scene.GetTag("Box", 1021738)->GetData(), BaseContainer());
  EXPECT_EQ(scene.GetObject("Any")->GetData(), BaseContainer());
  const BaseObject& box = *scene.GetObject("Box");
  EXPECT_EQ(box.GetEditorMode(), host::MODE_UNDEF);
  EXPECT_EQ(box.GetRenderMode(), host::MODE_UNDEF);
  EXPECT_TRUE(box.GetDeformMode());
}

// What an artist sees of a new element, and what a parameter reads as that an element lacks.
TEST(Element, StartsWithTheseParameters) {
  struct Case {
    NodeKind kind;
    host::LONG type;
    const char* data;
  };
  const Case cases[] = {
      {NodeKind::Object, host::Ocamera,
       "{1001 0, 1002 real 0.9272934315845873, 1003 real 0, 1004 real 1000, 1005 real 1, 1006 real "
       "0}"},
      {NodeKind::Object, host::Olight,
       "{90001 0, 90002 (1, 1, 1), 90003 real 1, 90004 0, 90005 real 0.5235987755982988, 90006 "
       "real "
       "0.7853981633974483, 90007 real 0}"},
      {NodeKind::Object, host::Ocube, "{1100 (200, 200, 200)}"},
      {NodeKind::Object, host::Osphere, "{1110 real 100, 1114 36}"},
      {NodeKind::Object, host::Ocone, "{1110 real 100, 1112 real 200, 1114 36}"},
      {NodeKind::Object, host::Otorus, "{1110 real 100, 1111 real 30, 1114 36}"},
      {NodeKind::Object, host::Odisc, "{1110 real 100, 1114 36}"},
      {NodeKind::Object, host::Oplane, "{1112 real 400, 1113 real 400, 1114 36}"},
      {NodeKind::Object, host::Ocylinder, "{1110 real 50, 1112 real 200, 1114 36}"},
      {NodeKind::Material, host::Mmaterial,
       "{2100 (0.8, 0.8, 0.8), 2110 real 1, 2111 0, 2112 real 0.5, 2120 (0, 0, 0), 2130 real 0.5, "
       "2131 real "
       "0.5, 2132 real 0, 2150 1}"},
      {NodeKind::TextureTag, host::Ttexture, "{1101 (0, 0, 0), 1102 (1, 1, 0)}"},
      {NodeKind::Tag, host::Tcompositing,
       "{1000 1, 1001 1, 1002 1, 1003 1, 1017 1, 1004 1, 1005 0, 1006 3, 1007 16, 1016 real 0.1}"},
      {NodeKind::RenderSettings, host::Rbase,
       "{5008 1280, 5009 720, 5016 1, 5017 time 0, 5018 time 3, 5020 30, 5076 0, 5202 0, 5300 0}"},
      {NodeKind::Shader, host::Xcolor, "{1000 (1, 1, 1)}"},
  };
  for (const Case& c : cases) {
    host::BaseList2D* node = engine::MakeNode(c.kind, c.type);
    EXPECT_EQ(tests::ContainerText(node->GetData(), nullptr), c.data) << c.type;
    engine::DestroyNode(node);
  }
}

TEST(Element, DefaultParametersAreNotShared) {
  SceneBuilder scene;
  scene.Cube("A").Cube("B");
  scene.GetObject("A")->GetDataInstance()->SetVector(host::PRIM_SIZE, host::Vector(1));
  EXPECT_EQ(scene.GetObject("B")->GetData().GetVector(host::PRIM_SIZE), host::Vector(200));
}

TEST(Element, AFailedReadLeavesTheValue) {
  SceneBuilder scene;
  scene.Object("A");
  BaseObject& a = *scene.GetObject("A");
  EXPECT_TRUE(a.SetParameter(host::DescID(7), GeData(host::LONG{5}), 0));
  GeData value(host::LONG{3});
  EXPECT_FALSE(a.GetParameter(host::DescID(8), value, 0));
  EXPECT_FALSE(a.GetParameter(host::DescID(), value, 0));
  EXPECT_EQ(value.GetLong(), 3);
  EXPECT_TRUE(a.GetParameter(host::DescID(7), value, 0));
  EXPECT_EQ(value.GetLong(), 5);
  EXPECT_FALSE(a.SetParameter(host::DescID(), value, 0));
}

TEST(Element, DataIsMergedOrReplaced) {
  SceneBuilder scene;
  scene.Object("A");
  BaseObject& a = *scene.GetObject("A");
  BaseContainer one, two;
  one.SetLong(1, 1);
  two.SetLong(2, 2);
  a.SetData(one);
  a.SetData(two);
  EXPECT_EQ(a.GetData().GetCount(), 2);
  a.SetData(two, false);
  EXPECT_EQ(a.GetData(), two);
}

TEST(Element, ModesOutsideTheirRangeReadAsUndefined) {
  SceneBuilder scene;
  scene.Object("A").Modes("A", 7, -1);
  EXPECT_EQ(scene.GetObject("A")->GetEditorMode(), host::MODE_UNDEF);
  EXPECT_EQ(scene.GetObject("A")->GetRenderMode(), host::MODE_UNDEF);
}

TEST(Element, LayerDataIsThatOfItsLayer) {
  SceneBuilder scene, other;
  host::LayerData hidden;
  hidden.view = false;
  scene.Layer("L", hidden).Object("A");
  other.Layer("Far");
  BaseObject& a = *scene.GetObject("A");
  EXPECT_EQ(a.GetLayerData(&scene.Doc()), host::LayerData());
  EXPECT_FALSE(a.SetLayerData(&scene.Doc(), hidden)) << "no layer, no change";
  EXPECT_FALSE(a.SetLayerObject(other.GetLayer("Far")));
  EXPECT_TRUE(a.SetLayerObject(scene.GetLayer("L")));
  EXPECT_EQ(a.GetLayerData(&scene.Doc()), hidden);
  hidden.locked = true;
  EXPECT_TRUE(a.SetLayerData(&scene.Doc(), hidden));
  EXPECT_TRUE(scene.GetLayer("L")->GetLayerData(&scene.Doc(), true).locked);
  host::LayerObject* layer = scene.GetLayer("L");
  host::LayerObject::Free(layer);
  EXPECT_EQ(a.GetLayerObject(&scene.Doc()), nullptr);
  EXPECT_EQ(a.GetLayerData(&scene.Doc()), host::LayerData());
}

TEST(Element, SecondBitsByNumber) {
  SceneBuilder scene;
  host::BaseDocument& doc = scene.Doc();
  EXPECT_TRUE(doc.ChangeNBit(32, host::NBIT_TOGGLE));
  EXPECT_TRUE(doc.GetNBit(32));
  EXPECT_TRUE(doc.ChangeNBit(32, host::NBIT_TOGGLE));
  EXPECT_FALSE(doc.GetNBit(32));
  EXPECT_TRUE(doc.ChangeNBit(63, host::NBIT_SET));
  EXPECT_TRUE(doc.GetNBit(63));
  for (host::LONG outside : {-1, 64}) EXPECT_FALSE(doc.ChangeNBit(outside, host::NBIT_SET));
}

TEST(Dump, ShowsWhatDiffers) {
  SceneBuilder scene;
  scene.Camera("Cam").Cube("Box").Texture("Box", "").Material("Red").Layer("L");
  const std::string before = engine::DumpState(scene.Doc());
  scene.Modes("Box", host::MODE_OFF, host::MODE_ON, false).LookThrough("Cam");
  static_cast<host::TextureTag*>(scene.GetTag("Box", host::Ttexture))
      ->SetMaterial(scene.GetMaterial("Red"));
  const std::vector<std::string> expected = {"- scene camera none",
                                             "- object 1 \"Box\" modes 2 2 1",
                                             "- object 1 \"Box\" tag 0 type 5616 material none",
                                             "+ scene camera \"Cam\"",
                                             "+ object 1 \"Box\" modes 1 0 0",
                                             "+ object 1 \"Box\" tag 0 type 5616 material \"Red\""};
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpState(scene.Doc())), expected);
  EXPECT_EQ(engine::DumpDifference(before, before), std::vector<std::string>());
  EXPECT_EQ(engine::DumpDifference("a\nb\nc\n", "", 2), std::vector<std::string>({"- a", "- b"}));
  EXPECT_EQ(engine::DumpDifference("a\nb\n", "b\na\n").size(), 1U) << "another order";
}

// What a recording can hold, line by line.
TEST(Dump, TellsTheWholeState) {
  SceneBuilder scene;
  host::LayerData dark;
  dark.view = dark.deformers = false;
  dark.solo = true;
  scene.Object("A/B").Object("C").Material("Red").Layer("L/K", dark).Settings("S");
  scene.Post("S", 42, false).Post("S", 43).Pass("S", 44, false).Active("S");
  scene.Tag("A", host::Tphong).Tag("A", 1011012).Texture("A", "Red").Texture("C", "");
  scene.Modes("A/B", host::MODE_ON, host::MODE_OFF, false);
  scene.GetSettings("S")->SetData(BaseContainer(), false);
  scene.GetSettings("S")->GetDataInstance()->SetLong(1, 1);
  scene.GetSettings("S")->GetFirstVideoPost()->GetDataInstance()->SetReal(2, 0.5);
  scene.GetTag("A", 1011012)->GetDataInstance()->SetLink(3, scene.GetObject("C"));
  for (const char* path : {"A", "C"})
    scene.GetTag(path, host::Ttexture)->SetData(BaseContainer(), false);
  EXPECT_EQ(engine::DumpState(scene.Doc()),
            "render settings \"S\"\n"
            "render settings data 1 = 1\n"
            "video post 42 off\n"
            "video post 42 2 = real 0.5\n"
            "video post 43 on\n"
            "multi-pass 44 off\n"
            "scene camera none\n"
            "object 0 \"A\" modes 2 2 1\n"
            "object 0 \"A\" tag 1 type 1011012\n"
            "object 0 \"A\" tag 1 type 1011012 3 = link \"C\"\n"
            "object 0 \"A\" tag 2 type 5616 material \"Red\"\n"
            "object 1 \"B\" modes 0 1 0\n"
            "object 2 \"C\" modes 2 2 1\n"
            "object 2 \"C\" tag 0 type 5616 material none\n"
            "layer 0 \"L\" flags 011101111\n"
            "layer 1 \"K\" flags 101101011\n");
}

TEST(Dump, NamesLinksByTheirTargets) {
  SceneBuilder scene;
  scene.Object("A").Object("B").Object("Gone");
  BaseContainer* data = scene.GetObject("A")->GetDataInstance();
  BaseContainer inner(4);
  inner.SetLink(1, scene.GetObject("B"));
  inner.SetLink(2, scene.GetObject("Gone"));
  inner.SetString(3, "a \"b\"\n");
  data->SetContainer(9, inner);
  BaseObject* gone = scene.GetObject("Gone");
  BaseObject::Free(gone);
  const std::string dump = engine::DumpDocument(scene.Doc());
  for (const char* line : {"#2 data 9 = container 4 of 3\n", "#2 data 9/1 = link #3\n",
                           "#2 data 9/2 = link dead\n", "#2 data 9/3 = \"a \\\"b\\\"\\x0a\"\n"}) {
    EXPECT_NE(dump.find(line), std::string::npos) << line << dump;
  }
}

}  // namespace
