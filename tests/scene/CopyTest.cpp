// Copies: whole documents, single elements, and contents written over another element.
#include <gtest/gtest.h>

#include "engine/scene/DeletedStates.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/EditorView.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/SceneDump.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseObject;
using host::RenderData;
using tests::SceneBuilder;

// Something of everything, with identities out of order.
struct FullScene : SceneBuilder {
  FullScene() {
    host::LayerData dark;
    dark.view = false;
    dark.color = host::Vector(0.1, 0.2, 0.3);
    Object("Late")
        .Material("Red")
        .Material("Blue")
        .Layer("Set/Walls", dark)
        .Settings("HD", 1920, 1080);
    Post("HD", host::VPglobalillumination)
        .Post("HD", 42, false)
        .Pass("HD", host::Zmultipass, false)
        .Active("HD");
    Camera("Room/Cam")
        .LookThrough("Room/Cam")
        .Cube("Room/Box")
        .Texture("Room/Box", "Blue")
        .Texture("Room/Box", "");
    Modes("Room/Box", host::MODE_OFF, host::MODE_ON, false)
        .OnLayer("Room/Box", "Set/Walls")
        .At("Room", 1, 2, 3);
    Tag("Room", host::Tcompositing).Select("Room/Box").Select("Room");
    auto mesh = std::make_shared<engine::Mesh>();
    mesh->points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh->polygons = {{0, 1, 2, -1}};
    Object("Room/Mesh", host::Opolygon);
    engine::SetMesh(*Last(), mesh);
    Bitmap(GetMaterial("Red"), "child.png", Bitmap(GetMaterial("Red"), "parent.png"));
    host::GvNodeMaster* master = Expression("Room");
    Bitmap(master->CreateNode(master->GetRoot(), 400001), "node.png");
    BaseContainer empties(5);
    empties.SetContainer(1, BaseContainer(9));
    empties.SetLink(2, nullptr);
    empties.SetData(3, host::GeData());
    Doc().GetDataInstance()->SetContainer(1021477, empties);
    Doc().ChangeNBit(32, host::NBIT_SET);
    Doc().SetFps(25);
    Doc().SetDocumentName("scene.c4d");
    Doc().SetDocumentPath("/projects");
  }
};

engine::OwnedDocument CopyOf(BaseDocument& doc, host::LONG flags) {
  return engine::OwnedDocument(static_cast<BaseDocument*>(doc.GetClone(flags, nullptr)));
}

// What is selected, in the order of selecting, and what is active.
std::string Looks(const BaseDocument& doc) {
  std::string text;
  for (const host::BaseList2D* one : engine::SelectedInOrder(doc))
    text += one->GetName().ToUtf8() + " ";
  const host::BaseTag* tag = engine::ActiveTagOf(doc);
  const BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  return text + "| " + doc.GetActiveObject()->GetName().ToUtf8() + " " +
         (tag ? tag->GetName().ToUtf8() + " " : "") +
         doc.GetActiveRenderData()->GetName().ToUtf8() + " " + camera->GetName().ToUtf8();
}

TEST(Copy, DocumentLooksAsTheOriginalDoes) {
  FullScene scene;
  BaseDocument& doc = scene.Doc();
  for (host::BaseTag* tag :
       {scene.GetTag("Room/Box", host::Ttexture), scene.GetTag("Room", host::Tcompositing)})
    doc.SetActiveTag(tag, host::SELECTION_ADD);
  engine::EditorView view;
  view.aspect = 1.5;
  engine::SetEditorView(doc, view);
  EXPECT_EQ(Looks(doc), "Box Room Texture Compositing | Room Compositing HD Cam");
  for (const bool isChanged : {true, false}) {
    if (!isChanged) engine::ClearChanged(doc);
    for (const host::LONG flags : {host::COPY_DOCUMENT, 0}) {
      const engine::OwnedDocument copy = CopyOf(doc, flags);
      EXPECT_EQ(Looks(*copy), Looks(doc));
      EXPECT_EQ(copy->GetChanged(), isChanged);
      EXPECT_EQ(copy->GetFps(), 25);
      EXPECT_EQ(engine::EditorViewOf(*copy)->aspect, 1.5);
      EXPECT_EQ(engine::NodeCount(*copy), engine::NodeCount(doc));
      EXPECT_NE(engine::NumberOf(*copy), engine::NumberOf(doc));
      EXPECT_EQ(engine::FindNode(copy.get(), engine::IdOf(*copy)), copy.get());
      EXPECT_EQ(engine::IdOf(*copy) == engine::IdOf(doc), flags != 0);
    }
  }
}

// A deleted state is packed into a scene of its own.
TEST(Copy, PartsOfAStateComeOutOfItsSceneAsTheyWentIn) {
  SceneBuilder scene;
  scene.Settings("Kept", 640, 480);
  engine::StateParts parts;
  parts.record.SetLong(1, 1);
  parts.entry.SetLong(2, 2);
  for (const bool isWhole : {false, true}) {
    if (isWhole) parts.settings = scene.GetSettings("Kept");
    if (isWhole) parts.preview = std::make_shared<const std::string>("picture");
    const engine::OwnedDocument packed = engine::SceneOfState(parts);
    const engine::StateParts out = engine::PartsOfScene(*packed);
    EXPECT_EQ(out.record, parts.record);
    EXPECT_EQ(out.entry, parts.entry);
    EXPECT_EQ(out.preview, parts.preview);
    ASSERT_EQ(out.settings != nullptr, isWhole);
    if (!isWhole) continue;
    EXPECT_EQ(out.settings->GetName(), "Kept");
    EXPECT_EQ(engine::IdOf(*out.settings), engine::IdOf(*parts.settings));
    EXPECT_EQ(out.settings->GetNext(), nullptr) << "no others beside them";
    engine::InsertCopy(scene.Doc(), *out.settings);
    RenderData* second = scene.Doc().GetFirstRenderData()->GetNext();
    EXPECT_EQ(second->GetName(), "Kept");
    EXPECT_NE(engine::IdOf(*second), engine::IdOf(*out.settings)) << "which is not free here";
  }
  EXPECT_TRUE(engine::DeletedStatesOf(scene.Doc()).empty());
}

TEST(Copy, DocumentKeepsEverythingButUndo) {
  FullScene scene;
  BaseDocument& doc = scene.Doc();
  doc.StartUndo();
  doc.AddUndo(host::UNDO_CHANGE, scene.GetObject("Room"));
  doc.EndUndo();
  const engine::OwnedDocument copy = CopyOf(doc, host::COPY_DOCUMENT);
  EXPECT_EQ(engine::DumpDifference(engine::DumpDocument(doc), engine::DumpDocument(*copy)),
            std::vector<std::string>());
  EXPECT_EQ(engine::DumpState(doc), engine::DumpState(*copy));
  EXPECT_EQ(copy->GetDocumentName(), doc.GetDocumentName());
  EXPECT_EQ(copy->GetDocumentPath(), doc.GetDocumentPath());
  EXPECT_TRUE(engine::Identical(copy->GetData(), doc.GetData()));
  EXPECT_EQ(copy->GetActiveObject()->GetName(), "Room");
  EXPECT_EQ(engine::IdOf(*copy->GetFirstObject()), engine::IdOf(*doc.GetFirstObject()));
  EXPECT_FALSE(copy->DoUndo());
  EXPECT_TRUE(doc.DoUndo());
}

TEST(Copy, DocumentAndOriginalNeverChangeTogether) {
  FullScene scene;
  const engine::OwnedDocument copy = CopyOf(scene.Doc(), host::COPY_DOCUMENT);
  const std::string before = engine::DumpDocument(scene.Doc());
  SceneBuilder other(*copy);
  other.Modes("Room", host::MODE_ON, host::MODE_OFF, false)
      .At("Room", 9, 9, 9)
      .OnLayer("Room", "Set");
  other.GetObject("Room/Box")->GetDataInstance()->SetLong(1, 1);
  copy->GetDataInstance()->GetContainerInstance(1021477)->SetLong(77, 7);
  other.GetLayer("Set")->SetLayerData(copy.get(), host::LayerData());
  EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(scene.Doc())),
            std::vector<std::string>());
}

TEST(Copy, DocumentWithNewIdentitiesFollowsItself) {
  FullScene scene;
  const engine::OwnedDocument copy = CopyOf(scene.Doc(), 0);
  EXPECT_EQ(engine::DumpDocument(scene.Doc()), engine::DumpDocument(*copy));
  EXPECT_EQ(engine::FindNode(copy.get(), engine::IdOf(*scene.GetObject("Room"))), nullptr);
  EXPECT_NE(copy->GetRenderBaseDraw()->GetSceneCamera(copy.get()), nullptr);
}

TEST(Copy, ElementGetsIdentitiesOfItsOwnWithAllItOwns) {
  FullScene scene;
  BaseObject* room = scene.GetObject("Room");
  auto* copy = static_cast<BaseObject*>(room->GetClone(0, nullptr));
  EXPECT_EQ(copy->GetDocument(), nullptr);
  EXPECT_NE(engine::IdOf(*copy), engine::IdOf(*room));
  EXPECT_NE(engine::IdOf(*copy->GetFirstTag()), engine::IdOf(*room->GetFirstTag()));
  EXPECT_EQ(copy->GetMl(), room->GetMl());
  EXPECT_EQ(engine::MeshOf(*copy->GetDown()->GetNext()->GetNext()),
            engine::MeshOf(*scene.GetObject("Room/Mesh")))
      << "shared";
  scene.Doc().AppendObject(copy);
  EXPECT_EQ(scene.Doc().GetAllTextures(nullptr).GetCount(), 4)
      << "the expression node's texture came along";
}

// Posts and passes as "type:bits data".
std::string Effects(const RenderData& settings) {
  std::string text;
  for (const host::BaseVideoPost* post = settings.GetFirstVideoPost(); post;
       post = post->GetNext()) {
    text +=
        "post " + std::to_string(post->GetType()) + ":" + std::to_string(post->GetAllBits()) + " ";
  }
  for (const host::MultipassObject* pass = settings.GetFirstMultipass(); pass;
       pass = pass->GetNext()) {
    text +=
        "pass " + std::to_string(pass->GetType()) + ":" + std::to_string(pass->GetAllBits()) + " ";
  }
  return text;
}

struct CopyToCase {
  const char* name;
  host::LONG flags;
  host::LONG bits;
  const char* effects;
};

class CopyTo : public testing::TestWithParam<CopyToCase> {};

TEST_P(CopyTo, ReplacesContentsAndKeepsIdentityAndPlace) {
  SceneBuilder scene;
  scene.Settings("Source", 640, 480)
      .Post("Source", 1, false)
      .Post("Source", 2)
      .Pass("Source", 3, false);
  scene.Settings("Target").Post("Target", 9).Pass("Target", 8, false);
  RenderData* source = scene.GetSettings("Source");
  RenderData* target = scene.GetSettings("Target");
  source->SetBit(host::BIT_ACTIVE);
  target->SetAllBits(32);
  const engine::NodeId id = engine::IdOf(*target);
  EXPECT_TRUE(source->CopyTo(target, GetParam().flags, nullptr));
  EXPECT_EQ(target->GetName(), "Source");
  EXPECT_EQ(target->GetData(), source->GetData());
  EXPECT_EQ(target->GetAllBits(), GetParam().bits);
  EXPECT_EQ(Effects(*target), GetParam().effects);
  EXPECT_EQ(engine::IdOf(*target), id);
  EXPECT_EQ(source->GetNext(), target);
  EXPECT_EQ(target->GetFirstVideoPost()->GetDocument(), &scene.Doc());
  EXPECT_NE(target->GetFirstVideoPost(), source->GetFirstVideoPost());
}

INSTANTIATE_TEST_SUITE_P(
    Flags, CopyTo,
    testing::Values(CopyToCase{"Everything", 0, 2, "post 1:4 post 2:0 pass 3:4 "},
                    CopyToCase{"NoBits", 16, 32, "post 1:0 post 2:0 pass 3:0 "}),
    [](const auto& one) { return one.param.name; });

TEST(Copy, FollowsAndDumpsContainersNestedDeeperThanTheStack) {
  constexpr int kDepth = 100000;
  SceneBuilder scene;
  scene.Object("Target");
  BaseContainer nest;
  nest.SetLink(7, scene.Last());
  for (int i = 0; i < kDepth; ++i) {
    BaseContainer around;
    around.SetLong(1, i);
    around.SetContainer(2, nest);
    nest = around;
  }
  scene.Last()->GetDataInstance()->SetContainer(5, nest);

  const engine::OwnedDocument copy(static_cast<BaseDocument*>(scene.Doc().GetClone(0, nullptr)));
  const std::string dump = engine::DumpDocument(*copy);
  EXPECT_NE(dump.find("/+99970/7 = link #"), std::string::npos);
  EXPECT_EQ(dump.find("link dead"), std::string::npos);
  EXPECT_EQ(engine::DumpDocument(scene.Doc()), dump);

  BaseContainer inner = copy->GetFirstObject()->GetDataInstance()->GetContainer(5);
  for (int i = 0; i < kDepth; ++i) inner = inner.GetContainer(2);
  EXPECT_EQ(inner.GetLink(7, copy.get()), copy->GetFirstObject());
}

// Each level holds the one below it twice: along every way to the links there would be no end of
// visits.
TEST(Copy, FollowsSharedLevelsOnceAndSharesWhatHoldsNoLinks) {
  SceneBuilder scene;
  scene.Object("Target");
  BaseContainer shared;
  shared.SetLink(7, scene.Last());
  BaseContainer plain;
  plain.SetLong(1, 1);
  for (int i = 0; i < 60; ++i) {
    BaseContainer around;
    around.SetContainer(1, shared);
    around.SetContainer(2, shared);
    around.SetContainer(3, plain);
    shared = around;
  }
  scene.Last()->GetDataInstance()->SetContainer(5, shared);
  const engine::OwnedDocument copy(static_cast<BaseDocument*>(scene.Doc().GetClone(0, nullptr)));
  BaseContainer inner = copy->GetFirstObject()->GetDataInstance()->GetContainer(5);
  for (int i = 0; i < 60; ++i) {
    EXPECT_EQ(engine::BodyOf(inner.GetContainer(3)), engine::BodyOf(plain));
    inner = inner.GetContainer(i % 2 + 1);
  }
  EXPECT_EQ(inner.GetLink(7, copy.get()), copy->GetFirstObject());
}

TEST(Copy, OntoItselfDoesNothingAndUnlikeKindsAreRefused) {
  FullScene scene;
  const std::string before = engine::DumpDocument(scene.Doc());
  RenderData* settings = scene.GetSettings("HD");
  EXPECT_TRUE(settings->CopyTo(settings, 0, nullptr));
  EXPECT_FALSE(settings->CopyTo(scene.GetObject("Room"), 0, nullptr));
  EXPECT_FALSE(settings->CopyTo(nullptr, 0, nullptr));
  EXPECT_FALSE(scene.GetObject("Room")->CopyTo(scene.GetObject("Room/Box"), 0, nullptr));
  EXPECT_EQ(engine::DumpDocument(scene.Doc()), before);
}

TEST(Copy, MaterialTakesItsShadersAndTheLinksToThem) {
  SceneBuilder scene;
  scene.Material("A").Material("B");
  host::BaseMaterial* a = scene.GetMaterial("A");
  host::BaseMaterial* b = scene.GetMaterial("B");
  a->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER, scene.Bitmap(a, "a.png"));
  scene.Bitmap(b, "old.png");
  EXPECT_TRUE(a->CopyTo(b, 0, nullptr));
  EXPECT_EQ(b->GetDataInstance()->GetLink(host::MATERIAL_COLOR_SHADER, &scene.Doc()),
            b->GetFirstShader());
  EXPECT_EQ(b->GetFirstShader()->GetNext(), nullptr);
}

TEST(Copy, WhatAReaderKeepsGoesWithTheCopy) {
  SceneBuilder scene;
  engine::KeepWith(scene.Doc(), std::make_shared<int>(5));
  const engine::OwnedDocument copy = CopyOf(scene.Doc(), host::COPY_DOCUMENT);
  EXPECT_EQ(engine::KeptWith(*copy), engine::KeptWith(scene.Doc()));
}

}  // namespace
