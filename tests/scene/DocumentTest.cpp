// Promises of a document: selection, render settings, scene camera, messages and changes, textures.
#include <gtest/gtest.h>

#include <functional>

#include "engine/scene/DocumentListener.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/EditorView.h"
#include "engine/scene/Mesh.h"
#include "tests/support/SceneBuilder.h"

namespace {

using host::AtomArray;
using host::BaseDocument;
using host::BaseObject;
using host::RenderData;
using tests::SceneBuilder;

std::string Names(const AtomArray& atoms) {
  std::string names;
  for (host::LONG i = 0; i < atoms.GetCount(); ++i) {
    names += (i ? " " : "") + static_cast<host::BaseList2D*>(atoms.GetIndex(i))->GetName().ToUtf8();
  }
  return names;
}

std::string SelectedObjects(const SceneBuilder& scene) {
  AtomArray selection;
  scene.Doc().GetActiveObjects(selection, 0);
  return Names(selection);
}

std::string ActiveObject(const SceneBuilder& scene) {
  const BaseObject* object = scene.Doc().GetActiveObject();
  return object ? object->GetName().ToUtf8() : "none";
}

TEST(Selection, IsListedInPreOrderAndRemembersWhatWasLast) {
  SceneBuilder scene;
  scene.Object("A/B").Object("A/C").Object("D");
  BaseDocument& doc = scene.Doc();
  EXPECT_EQ(ActiveObject(scene), "none");
  scene.Select("D").Select("A/B").Select("A");
  EXPECT_EQ(SelectedObjects(scene), "A B D") << "children of selected parents count, too";
  EXPECT_EQ(ActiveObject(scene), "A");
  scene.GetObject("A")->DelBit(host::BIT_ACTIVE);
  EXPECT_EQ(ActiveObject(scene), "B");
  scene.GetObject("A/C")->SetAllBits(host::BIT_ACTIVE | 1);
  EXPECT_EQ(ActiveObject(scene), "C") << "setting the bit is selecting";
  scene.Select("D");
  EXPECT_EQ(ActiveObject(scene), "D") << "selecting again makes it the last one";
  BaseObject* d = scene.GetObject("D");
  BaseObject::Free(d);
  EXPECT_EQ(ActiveObject(scene), "C");
  doc.SetActiveObject(scene.GetObject("A/B"), host::SELECTION_SUB);
  EXPECT_EQ(SelectedObjects(scene), "C");
  doc.SetActiveObject(scene.GetObject("A"));
  EXPECT_EQ(SelectedObjects(scene), "A");
  doc.SetActiveObject(nullptr);
  EXPECT_EQ(SelectedObjects(scene), "");
}

TEST(Selection, ComesWithInsertedObjectsAndNotFromOtherDocuments) {
  SceneBuilder scene, other;
  scene.Object("A");
  other.Object("B").Select("B");
  scene.Doc().SetActiveObject(other.GetObject("B"));
  EXPECT_EQ(SelectedObjects(scene), "");
  BaseObject* b = other.GetObject("B");
  scene.Doc().AppendObject(b);
  EXPECT_EQ(ActiveObject(scene), "B");
  EXPECT_EQ(ActiveObject(other), "none");
}

TEST(Selection, ManySelectionsStayTidy) {
  SceneBuilder scene;
  scene.Object("A").Object("B");
  for (int i = 0; i < 10000; ++i)
    scene.Doc().SetActiveObject(scene.GetObject(i % 2 ? "A" : "B"), i % 3);
  scene.Doc().SetActiveObject(scene.GetObject("B"));
  EXPECT_EQ(SelectedObjects(scene) + ActiveObject(scene), "BB");
}

TEST(Selection, TagsComeInTheOrderOfObjectsAndTags) {
  SceneBuilder scene;
  scene.Object("A/B")
      .Object("C")
      .Tag("C", host::Tphong)
      .Tag("A/B", host::Tphong)
      .Texture("A/B", "")
      .Tag("A", host::Tcompositing);
  for (const char* path : {"C", "A/B", "A"}) {
    scene.Doc().SetActiveTag(scene.GetObject(path)->GetFirstTag(), host::SELECTION_ADD);
  }
  scene.Doc().SetActiveTag(scene.GetTag("A/B", host::Ttexture), host::SELECTION_ADD);
  AtomArray tags;
  scene.Doc().GetActiveTags(tags);
  EXPECT_EQ(Names(tags), "Compositing Phong Texture Phong");
  scene.Doc().SetActiveTag(scene.GetTag("C", host::Tphong));
  scene.Doc().GetActiveTags(tags);
  EXPECT_EQ(tags.GetCount(), 1);
  EXPECT_EQ(SelectedObjects(scene), "");
}

std::string SettingsOf(const BaseDocument& doc) {
  std::string text;
  for (const RenderData* settings = doc.GetFirstRenderData(); settings;
       settings = settings->GetNext()) {
    text += (settings == doc.GetActiveRenderData() ? "*" : "") + settings->GetName().ToUtf8() + " ";
  }
  return text;
}

TEST(RenderSettings, AreAlwaysThereAndOneIsActive) {
  SceneBuilder scene;
  BaseDocument& doc = scene.Doc();
  scene.GetSettings("Render Settings")->SetName("A");
  scene.Settings("B").Settings("C");
  EXPECT_EQ(SettingsOf(doc), "*A B C ") << "inserting changes nothing about which are active";
  RenderData* first = RenderData::Alloc();
  first->SetName("0");
  doc.InsertRenderData(first, nullptr, nullptr);
  scene.Active("B");
  EXPECT_EQ(SettingsOf(doc), "0 A *B C ");
  RenderData* c = scene.GetSettings("C");
  RenderData::Free(c);
  EXPECT_EQ(SettingsOf(doc), "0 A *B ");
  RenderData* b = scene.GetSettings("B");
  RenderData::Free(b);
  EXPECT_EQ(SettingsOf(doc), "*0 A ");
  for (const char* name : {"A", "0"}) {
    RenderData* settings = scene.GetSettings(name);
    RenderData::Free(settings);
  }
  EXPECT_EQ(SettingsOf(doc), "*Render Settings ");
  EXPECT_EQ(doc.GetActiveRenderData()->GetDataInstance()->GetLong(host::RDATA_XRES), 1280);
}

TEST(RenderSettings, ActiveOnesBelowOthersGoWithThem) {
  SceneBuilder scene;
  BaseDocument& doc = scene.Doc();
  scene.Settings("Parent");
  RenderData* child = RenderData::Alloc();
  doc.InsertRenderData(child, scene.GetSettings("Parent"), nullptr);
  doc.SetActiveRenderData(child);
  RenderData* parent = scene.GetSettings("Parent");
  RenderData::Free(parent);
  EXPECT_EQ(doc.GetActiveRenderData(), doc.GetFirstRenderData());
}

TEST(RenderSettings, OfAnotherDocumentAreNotMadeActive) {
  SceneBuilder scene, other;
  RenderData* active = scene.Doc().GetActiveRenderData();
  scene.Doc().SetActiveRenderData(other.Doc().GetActiveRenderData());
  scene.Doc().SetActiveRenderData(nullptr);
  EXPECT_EQ(scene.Doc().GetActiveRenderData(), active);
}

TEST(SceneCamera, ReadsAsNoneOnceDeletedOrElsewhere) {
  SceneBuilder scene, other;
  scene.Camera("Cam").LookThrough("Cam");
  host::BaseDraw* view = scene.Doc().GetRenderBaseDraw();
  EXPECT_EQ(view->GetSceneCamera(&scene.Doc()), scene.GetObject("Cam"));
  EXPECT_EQ(view->GetSceneCamera(&other.Doc()), nullptr);
  const host::ULLONG sets = engine::SceneCameraSetCount(scene.Doc());
  scene.LookThrough("Cam");
  EXPECT_EQ(engine::SceneCameraSetCount(scene.Doc()), sets + 1) << "asked for once more";
  BaseObject* camera = scene.GetObject("Cam");
  BaseObject::Free(camera);
  EXPECT_EQ(view->GetSceneCamera(&scene.Doc()), nullptr);
}

struct Change {
  const char* name;
  std::function<void(SceneBuilder&)> make;
  bool isWork = true;  // to be saved
  bool isOnce = true;  // a second time it is no change
};

host::LONG written = 0;

const Change kChanges[] = {
    {"editor mode", [](SceneBuilder& s) { s.GetObject("A")->SetEditorMode(host::MODE_OFF); }},
    {"render mode", [](SceneBuilder& s) { s.GetObject("A")->SetRenderMode(host::MODE_ON); }},
    {"deform mode", [](SceneBuilder& s) { s.GetObject("A")->SetDeformMode(false); }},
    {"frame", [](SceneBuilder& s) { s.At("A", 1, 1, 1); }},
    {"name",
     [](SceneBuilder& s) {
       s.GetMaterial("M")->SetName("N");
       s.GetMaterial("N")->SetName("M2");
       s.GetMaterial("M2")->SetName("M");
     },
     true, false},
    {"bits", [](SceneBuilder& s) { s.GetObject("A")->SetBit(host::BIT_ACTIVE | 1 << 20); }},
    {"selected object", [](SceneBuilder& s) { s.Select("B"); }, false},
    {"selected tag",
     [](SceneBuilder& s) { s.GetTag("A", host::Ttexture)->SetBit(host::BIT_ACTIVE); }, false},
    {"selected layer", [](SceneBuilder& s) { s.GetLayer("L")->SetBit(host::BIT_ACTIVE); }, false},
    {"nbits", [](SceneBuilder& s) { s.GetObject("A")->ChangeNBit(3, host::NBIT_SET); }},
    {"layer", [](SceneBuilder& s) { s.OnLayer("A", "L"); }},
    {"layer data",
     [](SceneBuilder& s) {
       host::LayerData d;
       d.solo = true;
       s.GetLayer("L")->SetLayerData(&s.Doc(), d);
     }},
    {"material",
     [](SceneBuilder& s) {
       static_cast<host::TextureTag*>(s.GetTag("A", host::Ttexture))
           ->SetMaterial(s.GetMaterial("M"));
     }},
    {"camera", [](SceneBuilder& s) { s.LookThrough("A"); }},
    {"no camera", [](SceneBuilder& s) { s.LookThrough(""); }},
    {"settings", [](SceneBuilder& s) { s.Active("R"); }},
    {"fps", [](SceneBuilder& s) { s.Doc().SetFps(24); }},
    {"fewest fps", [](SceneBuilder& s) { s.Doc().SetFps(1); }},
    {"parameter",
     [](SceneBuilder& s) { s.GetObject("A")->SetParameter(1, host::GeData(++written), 0); }, true,
     false},
    {"data", [](SceneBuilder& s) { s.GetObject("A")->SetData(host::BaseContainer()); }, true,
     false},
    {"mesh",
     [](SceneBuilder& s) { engine::SetMesh(*s.GetObject("B"), std::make_shared<engine::Mesh>()); },
     true, false},
    {"inserted", [](SceneBuilder& s) { s.Object("C"); }, true, false},
    {"removed",
     [](SceneBuilder& s) {
       BaseObject* first = s.Doc().GetFirstObject();
       BaseObject::Free(first);
     },
     true, false},
    {"copied over", [](SceneBuilder& s) { s.Doc().GetFirstObject()->CopyTo(s.Last(), 0, nullptr); },
     true, false},
    {"path", [](SceneBuilder& s) { s.Doc().SetDocumentPath("/elsewhere"); }, false, false},
    {"told", [](SceneBuilder& s) { s.GetMaterial("M")->Message(host::MSG_UPDATE); }, true, false},
};

// Each is noticed; made a second time it changes nothing and is not noticed.
TEST(Changes, AreNoticedOnceEach) {
  SceneBuilder scene;
  scene.Object("A").Object("B").Texture("A", "").Material("M").Layer("L").Settings("R");
  for (const Change& change : kChanges) {
    engine::ClearChanged(scene.Doc());
    const host::ULLONG before = engine::ChangeCount(scene.Doc());
    change.make(scene);
    const host::ULLONG after = engine::ChangeCount(scene.Doc());
    EXPECT_GT(after, before) << change.name;
    EXPECT_EQ(scene.Doc().GetChanged(), change.isWork) << change.name;
    if (!change.isOnce) continue;
    change.make(scene);
    EXPECT_EQ(engine::ChangeCount(scene.Doc()), after) << change.name << " again";
  }
}

// Views of the tree look again only where this number has grown.
TEST(Changes, OfTheTreeOfObjectsAreCountedApart) {
  SceneBuilder scene;
  scene.Object("A/B").Object("C").Material("M");
  BaseDocument& doc = scene.Doc();
  const auto grows = [&](const std::function<void()>& act) {
    const host::ULLONG before = engine::TreeChangeCount(doc);
    act();
    return engine::TreeChangeCount(doc) != before;
  };
  EXPECT_TRUE(grows([&] { scene.Object("D"); }));
  EXPECT_TRUE(grows([&] {
    host::BaseObject* object = scene.GetObject("A/B");
    host::BaseObject::Free(object);
  }));
  EXPECT_TRUE(grows([&] { scene.GetObject("C")->InsertUnder(scene.GetObject("A")); }));
  EXPECT_FALSE(grows([&] {
    scene.Material("N").Layer("L").Tag("A", host::Tphong);
    scene.GetObject("A")->SetName("X");
    host::BaseMaterial* material = scene.GetMaterial("M");
    host::BaseMaterial::Free(material);
    doc.SetFps(0);
    doc.SetFps(-1);
  }));
  EXPECT_EQ(doc.GetFps(), 30);
}

TEST(Changes, MessagesReachTheListenerAndUpdateIsAChange) {
  struct Listener : engine::DocumentListener {
    bool Message(BaseDocument&, host::LONG type, void* data) override {
      heard += std::to_string(type) + (data ? "+ " : " ");
      return type == 1001078;
    }
    std::string heard;
  };
  SceneBuilder scene;
  engine::SetListener(scene.Doc(), std::make_unique<Listener>());
  const auto& listener = *static_cast<Listener*>(engine::ListenerOf(scene.Doc()));
  const host::ULLONG before = engine::ChangeCount(scene.Doc());
  int record = 0;
  EXPECT_TRUE(scene.Doc().Message(1001078, &record));
  EXPECT_FALSE(scene.Doc().Message(99));
  EXPECT_EQ(engine::ChangeCount(scene.Doc()), before);
  EXPECT_TRUE(scene.Doc().Message(5));
  EXPECT_GT(engine::ChangeCount(scene.Doc()), before);
  EXPECT_EQ(listener.heard, "1001078+ 99 5 ");
  // Elements take that one message, in a document.
  scene.Object("A");
  EXPECT_TRUE(scene.Last()->Message(host::MSG_UPDATE));
  EXPECT_FALSE(scene.Last()->Message(99));
  BaseObject* loose = BaseObject::Alloc(host::Onull);
  EXPECT_FALSE(loose->Message(host::MSG_UPDATE));
  BaseObject::Free(loose);
  engine::SetListener(scene.Doc(), nullptr);
  EXPECT_FALSE(scene.Doc().Message(1001078, &record));
}

TEST(Textures, AreListedInSceneOrderMissingAndRepeatedOnesToo) {
  SceneBuilder scene;
  scene.Material("M").Material("Unused").Cube("A/B").Texture("A/B", "M").Object("C");
  scene.Bitmap(scene.GetObject("A"), "object.png");
  host::GvNodeMaster* master = scene.Expression("A");
  scene.Bitmap(master->CreateNode(master->CreateNode(master->GetRoot(), 1), 2), "node.png");
  scene.Bitmap(scene.GetObject("C"), "late.png");
  host::BaseShader* layer = host::BaseShader::Alloc(host::Xlayer);
  scene.GetMaterial("M")->InsertShader(layer);
  scene.Bitmap(nullptr, "/missing/inner.png", layer);
  scene.Bitmap(scene.GetMaterial("M"), "twice.png");
  scene.Bitmap(scene.GetMaterial("M"), "twice.png");
  scene.Bitmap(scene.GetMaterial("M"), "");
  scene.Bitmap(scene.GetMaterial("Unused"), "unused.png");
  const auto text = [](const host::BaseContainer& files) {
    std::string names;
    for (host::LONG i = 0; files.GetIndexId(i) == i; ++i) {
      EXPECT_EQ(files.GetType(i), host::DA_FILENAME);
      names += files.GetFilename(i).GetString().ToUtf8() + " ";
    }
    return names;
  };
  EXPECT_EQ(text(scene.Doc().GetAllTextures(nullptr)),
            "/missing/inner.png twice.png twice.png unused.png object.png late.png node.png ");
  AtomArray chosen;
  chosen.Append(scene.GetObject("A/B"));
  chosen.Append(scene.GetMaterial("Unused"));  // no object
  chosen.Append(scene.GetObject("C"));
  EXPECT_EQ(text(scene.Doc().GetAllTextures(&chosen)),
            "/missing/inner.png twice.png twice.png late.png ");
}

}  // namespace
