// Saved scenes come back: every kind of element, every field, sharing, order, identities.
#include <gtest/gtest.h>

#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Trash.h"
#include "tests/scenefile/Scenes.h"
#include "tests/support/ContainerMemory.h"

namespace tests {
namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseObject;
using host::GeListNode;
using host::LONG;

const host::BaseList2D& Element(const GeListNode* node) {
  return static_cast<const host::BaseList2D&>(*node);
}

// Everything of two documents side by side, identities and own IDs included, which a dump does not
// show.
void ExpectIdentical(const BaseDocument& a, const BaseDocument& b) {
  const GeListNode* there = &b;
  for (const GeListNode* here = &a; here; here = engine::NextInside(*here, a)) {
    ASSERT_TRUE(there);
    EXPECT_EQ(engine::IdOf(*here), engine::IdOf(*there));
    EXPECT_EQ(engine::LayerIdOf(Element(here)), engine::LayerIdOf(Element(there)));
    EXPECT_TRUE(
        engine::Identical(*Element(here).GetDataInstance(), *Element(there).GetDataInstance()));
    there = engine::NextInside(*there, b);
  }
  EXPECT_FALSE(there);
}

TEST(SceneFileRoundTrip, KeepsEverything) {
  const Document doc = EverythingScene();
  const Document opened = Reopened(Bytes(*doc));
  ASSERT_TRUE(opened);
  EXPECT_EQ(engine::DumpDocument(*opened), engine::DumpDocument(*doc));
  ExpectIdentical(*doc, *opened);
}

TEST(SceneFileRoundTrip, KeepsDeletedStatesAsTheyWere) {
  const Document doc = EverythingScene();
  engine::DeletedStates two = engine::DeletedStatesOf(*doc);
  two.push_back(two[0]);
  two[1].overwritten = false;
  engine::SetDeletedStates(*doc, std::make_shared<engine::DeletedStates>(two));
  const Document opened = Reopened(Bytes(*doc));
  ASSERT_TRUE(opened);
  ASSERT_EQ(engine::DeletedStatesOf(*opened).size(), 2U);
  EXPECT_FALSE(engine::DeletedStatesOf(*opened)[1].overwritten);
  const engine::DeletedState& was = engine::DeletedStatesOf(*doc)[0];
  const engine::DeletedState& is = engine::DeletedStatesOf(*opened)[0];
  EXPECT_EQ(std::tie(is.name, is.recorded, is.deleted, is.overwritten),
            std::tie(was.name, was.recorded, was.deleted, was.overwritten));
  const auto scene = engine::Unpack(*is.packed);
  ASSERT_TRUE(scene) << scene.Message();
  const engine::StateParts parts = engine::PartsOfScene(*scene.Value());
  const engine::StateParts before = engine::PartsOfScene(*was.packed->scene);
  EXPECT_TRUE(engine::Identical(parts.record, before.record));
  EXPECT_TRUE(engine::Identical(parts.entry, before.entry));
  EXPECT_EQ(*parts.preview, "a picture");
  ASSERT_TRUE(parts.settings);
  EXPECT_EQ(engine::IdOf(*parts.settings), engine::IdOf(*doc->GetFirstRenderData()));
  // Packed once, and of what has been packed only the bytes stay.
  const std::string packed = is.packed->bytes;
  engine::KeepPackedOnly(engine::DeletedStatesOf(*doc));
  EXPECT_FALSE(was.packed->scene);
  EXPECT_EQ(was.packed->bytes, packed);
}

TEST(SceneFileRoundTrip, TheSameSceneGivesTheSameBytes) {
  const Document doc = EverythingScene();
  const std::string bytes = Bytes(*doc);
  EXPECT_EQ(Bytes(*doc), bytes);
  EXPECT_EQ(Bytes(*Reopened(bytes)), bytes);
}

TEST(SceneFileRoundTrip, LeavesPathNameAndUnsavedChangesOut) {
  const Document doc = EverythingScene();
  doc->SetDocumentName("scene.c4d");
  doc->SetDocumentPath("/somewhere");
  const std::string bytes = Bytes(*doc);
  EXPECT_TRUE(doc->GetChanged());
  const Document opened = Reopened(bytes);
  EXPECT_EQ(opened->GetDocumentPath().GetString().ToUtf8(), "");
  EXPECT_EQ(opened->GetDocumentName().GetString().ToUtf8(), "Untitled");
  EXPECT_FALSE(opened->GetChanged());
}

TEST(SceneFileRoundTrip, KeepsTheOrderOfSelecting) {
  const Document doc = EverythingScene();
  const BaseObject* first = doc->GetFirstObject();
  const Document opened = Reopened(Bytes(*doc));
  EXPECT_EQ(engine::IdOf(*opened->GetActiveObject()), engine::IdOf(*first));
  opened->GetActiveObject()->DelBit(host::BIT_ACTIVE);
  ASSERT_TRUE(opened->GetActiveObject());
  EXPECT_EQ(engine::IdOf(*opened->GetActiveObject()), engine::IdOf(*first->GetDown()));
  EXPECT_EQ(engine::SelectedInOrder(*opened).size(), 2u);
}

TEST(SceneFileRoundTrip, LinksResolveInTheOpenedSceneAndDeadOnesStayDead) {
  const Document doc = EmptyScene();
  BaseObject* dies = BaseObject::Alloc(host::Onull);
  BaseObject* lives = BaseObject::Alloc(host::Onull);
  doc->AppendObject(dies);
  doc->AppendObject(lives);
  doc->GetDataInstance()->SetLink(1, dies);
  doc->GetDataInstance()->SetLink(2, lives);
  BaseObject::Free(dies);
  const Document opened = Reopened(Bytes(*doc));
  const BaseContainer& data = *opened->GetDataInstance();
  EXPECT_EQ(data.GetCount(), 2);
  EXPECT_EQ(data.GetLink(1, opened.get()), nullptr);
  EXPECT_EQ(data.GetLink(2, opened.get()), opened->GetFirstObject());
  EXPECT_EQ(data.GetLink(2, doc.get()), lives);
}

TEST(SceneFileRoundTrip, StoresASharedMeshOnceAndSharesItAgain) {
  const Document doc = EverythingScene();
  const Document opened = Reopened(Bytes(*doc));
  const BaseObject* object = opened->GetFirstObject()->GetDown();
  ASSERT_TRUE(engine::MeshOf(*object));
  EXPECT_EQ(engine::MeshOf(*object), engine::MeshOf(*object->GetDown()));
}

TEST(SceneFileRoundTrip, KeepsEmbeddedFiles) {
  const Document opened = Reopened(Bytes(*EverythingScene()));
  const engine::EmbeddedFiles& files = engine::EmbeddedFilesOf(*opened);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(*engine::FindEmbeddedFile(*opened, "wood.png"),
            std::string("not\0really a picture", 20));
  EXPECT_EQ(files[1].name, "empty.png");
}

TEST(SceneFileRoundTrip, ABrokenMeshIsNotWritten) {
  struct Case {
    void (*breakIt)(engine::Mesh&);
    const char* fault;
  };
  const Case cases[] = {
      {[](engine::Mesh& mesh) { mesh.polygons[1][2] = 4; },
       "a polygon names a point that there is not"},
      {[](engine::Mesh& mesh) { mesh.normals.pop_back(); }, "there is not one normal per corner"},
      {[](engine::Mesh& mesh) { mesh.uvs.push_back({}); },
       "there is not one texture coordinate per corner"},
      {[](engine::Mesh& mesh) { mesh.colors.pop_back(); }, "there is not one color per corner"}};
  for (const Case& c : cases) {
    const Document doc = EverythingScene();
    auto mesh = std::make_shared<engine::Mesh>(*engine::MeshOf(*doc->GetFirstObject()->GetDown()));
    c.breakIt(*mesh);
    engine::SetMesh(*doc->GetFirstObject()->GetDown(), mesh);
    EXPECT_EQ(engine::WriteScene(*doc).Message(),
              std::string("The scene holds a broken mesh: ") + c.fault + ".");
  }
}

// Longer than the pieces in which contents are expanded.
TEST(SceneFileRoundTrip, LongTextsComeBack) {
  const Document doc = EmptyScene();
  std::string text;
  for (unsigned i = 0; text.size() < 5000000; ++i) text += std::to_string(i * i % 100003) + " ";
  doc->GetDataInstance()->SetString(1, host::String(std::string_view(text)));
  const std::string bytes = Bytes(*doc);
  EXPECT_LT(bytes.size(), text.size());
  EXPECT_EQ(Reopened(bytes)->GetDataInstance()->GetString(1).View(), text);
}

// States of a scene: the second is equal to the first, the third differs in one record, the fourth
// has one record more.
TEST(SceneFileRoundTrip, EqualAndNearlyEqualStatesCostNextToNothing) {
  constexpr LONG kObjectRows = 20000;
  const Document one = EmptyScene();
  const Document four = EmptyScene();
  BaseContainer* states = one->GetDataInstance();
  states->SetContainer(1, Records(kObjectRows, 1));
  *four->GetDataInstance() = *states;
  states = four->GetDataInstance();
  states->SetContainer(2, Records(kObjectRows, 1));
  BaseContainer changed = Records(kObjectRows, 1);
  changed.GetContainerInstance(777)->SetLong(70001, 9);
  states->SetContainer(3, changed);
  changed.SetContainer(kObjectRows, changed.GetContainer(5));
  states->SetContainer(4, changed);
  const std::string bytes = Bytes(*four);
  EXPECT_LT(bytes.size(), Bytes(*one).size() + 400);

  const Document opened = Reopened(bytes);
  ASSERT_TRUE(engine::Identical(*opened->GetDataInstance(), *states));
  const BaseContainer& data = *opened->GetDataInstance();
  EXPECT_EQ(engine::BodyOf(data.GetContainer(1)), engine::BodyOf(data.GetContainer(2)));
  BaseContainer alone;
  alone.SetContainer(1, data.GetContainer(1));
  EXPECT_LT(tests::MemoryOf(data), tests::MemoryOf(alone) + 40000);
}

TEST(SceneFileRoundTrip, ALongContainerOfMixedValuesComesBack) {
  BaseContainer mixed(3);
  for (LONG i = 0; i < 500; ++i) {
    const LONG key = (i * 7919) % 100003 - 50000;
    if (i % 4 == 0) mixed.SetReal(key, i / 3.0);
    if (i % 4 == 1) mixed.SetString(key, host::LongToString(i % 5));
    if (i % 4 == 2) mixed.SetData(key, host::GeData());
    if (i % 4 == 3) mixed.SetContainer(key, EveryValue(nullptr));
  }
  const Document doc = EmptyScene();
  doc->GetDataInstance()->SetContainer(1, mixed);
  mixed.SetString(mixed.GetIndexId(0), "another type in a patch");
  mixed.GetContainerInstance(mixed.GetIndexId(3))->SetId(-1);
  doc->GetDataInstance()->SetContainer(2, mixed);
  // Equal values, one of them under another key.
  BaseContainer renamed(3);
  for (LONG i = 0; i < mixed.GetCount(); ++i)
    renamed.SetData(i == 100 ? 200000 : mixed.GetIndexId(i), mixed.GetIndexData(i));
  doc->GetDataInstance()->SetContainer(3, renamed);
  const Document opened = Reopened(Bytes(*doc));
  EXPECT_TRUE(engine::Identical(*opened->GetDataInstance(), *doc->GetDataInstance()));
}

TEST(SceneFileRoundTrip, DeepNestingNeedsNoStack) {
  const Document doc = EmptyScene();
  BaseContainer nested(1);
  for (LONG depth = 0; depth < 100000; ++depth) {
    BaseContainer outer(depth % 3);
    outer.SetContainer(depth % 2, nested);
    nested = outer;
  }
  doc->GetDataInstance()->SetContainer(1, nested);
  BaseObject* parent = nullptr;
  for (int depth = 0; depth < 200000; ++depth) {
    BaseObject* object = BaseObject::Alloc(host::Onull);
    doc->AppendObject(object, parent);
    parent = object;
  }
  const Document opened = Reopened(Bytes(*doc));
  EXPECT_TRUE(engine::Identical(*opened->GetDataInstance(), *doc->GetDataInstance()));
  std::size_t depth = 0;
  for (const BaseObject* object = opened->GetFirstObject(); object; object = object->GetDown())
    ++depth;
  EXPECT_EQ(depth, 200000u);
}

}  // namespace
}  // namespace tests
