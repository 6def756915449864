// Links resolve to what is alive and lives in the document that is asked, and to nothing else.
#include <gtest/gtest.h>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using tests::SceneBuilder;

// A scene with one element of every class that can be linked, found again in any copy by identity.
struct LinkScene : SceneBuilder {
  LinkScene() {
    Material("Red").Layer("Lights").Settings("Preview").Post("Preview", host::VPglobalillumination);
    Camera("Room/Cam").Cube("Room/Box").Texture("Room/Box", "Red");
    Bitmap(GetMaterial("Red"), "wood.png");
    host::GvNodeMaster* master = Expression("Room/Box");
    node = master->CreateNode(master->GetRoot(), 400001);
  }

  std::vector<BaseList2D*> Targets() const {
    return {GetObject("Room/Box"),
            GetTag("Room/Box", host::Ttexture),
            GetMaterial("Red"),
            GetMaterial("Red")->GetFirstShader(),
            GetLayer("Lights"),
            GetSettings("Preview"),
            GetSettings("Preview")->GetFirstVideoPost(),
            node,
            &Doc()};
  }

  host::GvNode* node = nullptr;
};

TEST(Link, ResolvesEveryKindOfElementInItsOwnDocumentOnly) {
  LinkScene scene;
  SceneBuilder other;
  for (BaseList2D* target : scene.Targets()) {
    BaseContainer data;
    data.SetLink(1, target);
    EXPECT_EQ(data.GetLink(1, &scene.Doc()), target);
    EXPECT_EQ(data.GetLink(1, &other.Doc()), nullptr);
    EXPECT_EQ(data.GetLink(1, nullptr), nullptr);
    EXPECT_EQ(data.GetData(1).GetLink(&scene.Doc()), target);
    EXPECT_EQ(data.GetObjectLink(1, &scene.Doc()), engine::AsObject(target));
    EXPECT_EQ(data.GetMaterialLink(1, &scene.Doc()), engine::AsMaterial(target));
  }
}

TEST(Link, NullIsAValueAndMissingIsNone) {
  SceneBuilder scene;
  BaseContainer data;
  data.SetLink(1, nullptr);
  EXPECT_EQ(data.GetType(1), host::DA_ALIASLINK);
  EXPECT_EQ(data.GetLink(1, &scene.Doc()), nullptr);
  EXPECT_EQ(data.GetLink(2, &scene.Doc()), nullptr);
}

TEST(Link, DiesWithItsTargetTheSubtreeAndTheTags) {
  LinkScene scene;
  BaseContainer data;
  data.SetLink(1, scene.GetObject("Room/Box"));
  data.SetLink(2, scene.GetTag("Room/Box", host::Ttexture));
  data.SetLink(3, scene.node);
  data.SetLink(4, scene.GetMaterial("Red"));
  BaseObject* room = scene.GetObject("Room");
  BaseObject::Free(room);
  EXPECT_EQ(room, nullptr);
  for (host::LONG key : {1, 2, 3}) EXPECT_EQ(data.GetLink(key, &scene.Doc()), nullptr) << key;
  EXPECT_NE(data.GetLink(4, &scene.Doc()), nullptr);
}

TEST(Link, ResolvesWhereTheElementIsNow) {
  SceneBuilder from, to;
  from.Cube("Box");
  BaseObject* box = from.GetObject("Box");
  BaseContainer data;
  data.SetLink(1, box);
  box->Remove();
  EXPECT_EQ(data.GetLink(1, &from.Doc()), nullptr);
  to.Doc().AppendObject(box);
  EXPECT_EQ(data.GetLink(1, &from.Doc()), nullptr);
  EXPECT_EQ(data.GetLink(1, &to.Doc()), box);
}

TEST(Link, InADocumentCopyPointsToTheCounterpart) {
  LinkScene scene;
  SceneBuilder foreign;
  foreign.Cube("Elsewhere");
  BaseContainer* data = scene.Doc().GetDataInstance();
  host::LONG key = 0;
  for (const BaseList2D* target : scene.Targets()) data->SetLink(key++, target);
  data->SetLink(key, foreign.GetObject("Elsewhere"));

  const engine::OwnedDocument copy(
      static_cast<BaseDocument*>(scene.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
  for (host::LONG i = 0; i < key; ++i) {
    const BaseList2D* original = data->GetLink(i, &scene.Doc());
    const BaseList2D* counterpart = copy->GetDataInstance()->GetLink(i, copy.get());
    ASSERT_NE(counterpart, nullptr) << i;
    EXPECT_NE(counterpart, original) << i;
    EXPECT_EQ(counterpart->GetName(), original->GetName()) << i;
    EXPECT_EQ(counterpart->GetDocument(), copy.get()) << i;
  }
  EXPECT_EQ(copy->GetDataInstance()->GetLink(key, copy.get()), nullptr);
  EXPECT_NE(copy->GetDataInstance()->GetLink(key, &foreign.Doc()), nullptr);
}

TEST(Link, InsideAnElementCopyPointsToTheCopiesAndOtherwiseStays) {
  LinkScene scene;
  BaseObject* room = scene.GetObject("Room");
  BaseContainer inner;
  inner.SetLink(1, scene.GetObject("Room/Cam"));
  inner.SetLink(2, scene.GetMaterial("Red"));
  BaseContainer data;
  data.SetContainer(7, inner);
  room->SetData(data);
  auto* copy = static_cast<BaseObject*>(room->GetClone(0, nullptr));
  scene.Doc().AppendObject(copy);
  const BaseContainer copied = copy->GetData().GetContainer(7);
  EXPECT_EQ(copied.GetLink(1, &scene.Doc()), copy->GetDown());
  EXPECT_EQ(copied.GetLink(2, &scene.Doc()), scene.GetMaterial("Red"));
  EXPECT_EQ(
      static_cast<host::TextureTag*>(copy->GetDown()->GetNext()->GetFirstTag())->GetMaterial(),
      scene.GetMaterial("Red"));
  EXPECT_EQ(room->GetData().GetContainer(7).GetLink(1, &scene.Doc()), scene.GetObject("Room/Cam"));
}

TEST(Link, KeptIdentitiesAreNeverGivenAgain) {
  SceneBuilder scene;
  BaseObject* reader = BaseObject::Alloc(host::Onull);
  const engine::NodeId ahead = engine::IdOf(*reader) + 3;
  EXPECT_FALSE(engine::SetId(*reader, 0));
  EXPECT_TRUE(engine::SetId(*reader, ahead));
  scene.Doc().AppendObject(reader);
  EXPECT_FALSE(engine::SetId(*reader, ahead + 1)) << "an element in a document keeps its identity";
  for (int i = 0; i < 10; ++i) {
    BaseObject* made = BaseObject::Alloc(host::Onull);
    EXPECT_NE(engine::IdOf(*made), ahead);
    scene.Doc().AppendObject(made);
  }
  EXPECT_EQ(engine::FindNode(&scene.Doc(), ahead), reader);
}

// A file may hold the same identity twice, or identities far from each other.
TEST(Link, StrangeIdentitiesOfAFileAreSorted) {
  SceneBuilder scene;
  const engine::NodeId base = engine::NodeId{1} << 62;
  std::vector<BaseObject*> objects;
  for (int i = 0; i < 20000; ++i) {
    objects.push_back(BaseObject::Alloc(host::Onull));
    engine::SetId(*objects.back(), base + static_cast<engine::NodeId>(i) * 1'000'003);
    scene.Doc().AppendObject(objects.back());
  }
  for (BaseObject* object : objects)
    ASSERT_EQ(engine::FindNode(&scene.Doc(), engine::IdOf(*object)), object);
  BaseObject* twin = BaseObject::Alloc(host::Onull);
  engine::SetId(*twin, base);
  scene.Doc().AppendObject(twin);
  EXPECT_EQ(engine::FindNode(&scene.Doc(), base), objects.front());
  EXPECT_EQ(engine::FindNode(&scene.Doc(), engine::IdOf(*twin)), twin);
}

}  // namespace
