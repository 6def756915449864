// What a person looks at, after each thing that is selected, deselected, put there or deleted.
#include "engine/editing/InspectedElements.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::InspectedElements;
using tests::SceneBuilder;

struct LookedAt : SceneBuilder {
  LookedAt() {
    Object("A").Object("B").Tag("A", host::Tphong).Tag("B", host::Tcompositing);
    Material("Red").Material("Blue").Layer("Front").Layer("Back");
  }
  engine::Ids Of(std::initializer_list<const host::GeListNode*> nodes) const {
    engine::Ids ids;
    for (const host::GeListNode* node : nodes) ids.push_back(engine::IdOf(*node));
    return ids;
  }
  std::string Names(const engine::Ids& ids) const {
    std::string names;
    for (const engine::NodeId id : ids) {
      const auto* element = engine::FindNode(&Doc(), id);
      names += element ? element->GetName().ToUtf8() + " " : "gone ";
    }
    return names;
  }
};

struct Act {
  const char* what;
  std::function<void(LookedAt&, InspectedElements&)> act;
  const char* seen;
};

TEST(InspectedElements, AreThoseThatWereSelectedLast) {
  const Act acts[] = {
      {"nothing", [](LookedAt&, InspectedElements&) {}, ""},
      {"returns to what is not selected",
       [](LookedAt& s, InspectedElements& e) { e.Return(s.Doc(), InspectedElements::kLayers); },
       ""},
      {"an object", [](LookedAt& s, InspectedElements&) { s.Select("A"); }, "A "},
      {"one more", [](LookedAt& s, InspectedElements&) { s.Select("B"); }, "A B "},
      {"a material",
       [](LookedAt& s, InspectedElements&) {
         engine::SelectMaterials(s.Doc(), {s.GetMaterial("Red")});
       },
       "Red "},
      {"a layer",
       [](LookedAt& s, InspectedElements&) {
         engine::SelectLayers(s.Doc(), {s.GetLayer("Front"), s.GetLayer("Back")});
       },
       "Front Back "},
      {"the materials again",
       [](LookedAt& s, InspectedElements& e) { e.Return(s.Doc(), InspectedElements::kMaterials); },
       "Red "},
      {"no layer", [](LookedAt& s, InspectedElements&) { engine::SelectLayers(s.Doc(), {}); },
       "Red "},
      {"a layer again",
       [](LookedAt& s, InspectedElements& e) {
         engine::SelectLayers(s.Doc(), {s.GetLayer("Back"), s.GetLayer("Front")});
         e.Follow(&s.Doc());
       },
       "Front Back "},
      {"another material, and fewer layers",
       [](LookedAt& s, InspectedElements&) {
         engine::SelectLayers(s.Doc(), {s.GetLayer("Front")});
         engine::SelectMaterials(s.Doc(), {s.GetMaterial("Blue")});
       },
       "Blue "},
      {"no material", [](LookedAt& s, InspectedElements&) { engine::SelectMaterials(s.Doc(), {}); },
       "A B "},
      {"tags with an object",
       [](LookedAt& s, InspectedElements&) {
         s.Doc().SetActiveTag(s.GetTag("A", host::Tphong), host::SELECTION_ADD);
         s.Doc().SetActiveTag(s.GetTag("B", host::Tcompositing), host::SELECTION_ADD);
         s.Doc().SetActiveObject(s.GetObject("A"), host::SELECTION_SUB);
       },
       "Phong Compositing "},
      {"the objects again",
       [](LookedAt& s, InspectedElements& e) { e.Return(s.Doc(), InspectedElements::kObjects); },
       "B "},
      {"no object", [](LookedAt& s, InspectedElements&) { s.Doc().SetActiveObject(nullptr); },
       "Phong Compositing "},
      {"put there",
       [](LookedAt& s, InspectedElements& e) {
         e.Show(s.Doc(), s.Of({s.GetMaterial("Blue"), s.GetObject("B")}));
       },
       "Blue B "},
      {"one of these deleted",
       [](LookedAt& s, InspectedElements&) {
         host::BaseMaterial* blue = s.GetMaterial("Blue");
         host::BaseMaterial::Free(blue);
       },
       "B "},
      {"something selected",
       [](LookedAt& s, InspectedElements&) { engine::SelectOnly(s.Doc(), {s.GetObject("A")}); },
       "A "},
      {"put there again",
       [](LookedAt& s, InspectedElements& e) { e.Show(s.Doc(), s.Of({s.GetObject("B")})); }, "B "},
      {"all of these deleted",
       [](LookedAt& s, InspectedElements&) {
         host::BaseObject* b = s.GetObject("B");
         host::BaseObject::Free(b);
       },
       "A "},
      {"put there, and back by a touch",
       [](LookedAt& s, InspectedElements& e) {
         e.Show(s.Doc(), s.Of({s.GetMaterial("Red")}));
         e.Return(s.Doc(), InspectedElements::kLayers);
       },
       "Front "},
  };
  LookedAt scene;
  InspectedElements elements;
  for (const Act& one : acts) {
    one.act(scene, elements);
    elements.Follow(&scene.Doc());
    EXPECT_EQ(scene.Names(*elements.Elements()), one.seen) << one.what;
    const engine::SharedIds list = elements.Elements();
    elements.Follow(&scene.Doc());
    EXPECT_EQ(elements.Elements(), list) << one.what << ": the list stays where it is";
  }
}

// Of a document that is looked at for the first time the objects count.
TEST(InspectedElements, BeginAnewWithEachDocument) {
  LookedAt first;
  LookedAt second;
  InspectedElements elements;
  for (LookedAt* scene : {&first, &second}) {
    scene->Select("A");
    scene->Doc().SetActiveTag(scene->GetTag("A", host::Tphong), host::SELECTION_ADD);
    engine::SelectMaterials(scene->Doc(), {scene->GetMaterial("Red")});
    elements.Follow(&scene->Doc());
    EXPECT_EQ(*elements.Elements(), scene->Of({scene->GetObject("A")}));
    elements.Show(scene->Doc(), scene->Of({scene->GetLayer("Back")}));
  }
  elements.Follow(&first.Doc());
  EXPECT_EQ(*elements.Elements(), first.Of({first.GetObject("A")}));
  elements.Return(first.Doc(), InspectedElements::kMaterials);
  EXPECT_EQ(first.Names(*elements.Elements()), "Red ");
  elements.Follow(nullptr);
  EXPECT_TRUE(elements.Elements()->empty());
  engine::SelectOnly(first.Doc(), {});
  elements.Follow(&first.Doc());
  EXPECT_EQ(first.Names(*elements.Elements()), "Red ");
}

}  // namespace
