#include "tests/scenefile/Scenes.h"

#include <gtest/gtest.h>

#include <limits>

#include "engine/scene/DeletedStates.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Sections.h"
#include "engine/scenefile/StateNames.h"
#include "host/BaseMaterial.h"
#include "host/GvNode.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace tests {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseMaterial;
using host::BaseObject;
using host::BaseShader;
using host::BaseTag;
using host::GeData;
using host::LayerObject;
using host::LONG;
using host::RenderData;
using host::String;
using host::Vector;

BaseContainer EveryValue(const host::BaseList2D* target) {
  BaseContainer inner(77);
  inner.SetString(-5, "inner");
  inner.SetContainer(6, BaseContainer(-8));
  BaseContainer all(1028738);
  all.SetData(1, GeData());
  all.SetLong(2000000000, std::numeric_limits<LONG>::min());
  all.SetLong(-2000000000, std::numeric_limits<LONG>::max());
  all.SetReal(3, 0.1);
  all.SetReal(4, -0.0);
  all.SetReal(5, std::numeric_limits<double>::infinity());
  all.SetTime(6, host::BaseTime(90, 0));
  all.SetVector(7, Vector(1e-300, -2, 3));
  all.SetString(8, "");
  all.SetString(9, "gr\xC3\xBC\xC3\x9F dich");
  all.SetString(10, String(std::string_view("nul\0byte and \xFF", 14)));
  all.SetFilename(11, host::Filename(String("tex//wood.png")));
  all.SetFilename(12, host::Filename());
  all.SetContainer(13, BaseContainer());
  all.SetContainer(14, inner);
  all.SetContainer(15, inner);
  inner.SetId(78);
  all.SetContainer(16, inner);
  all.SetLink(17, target);
  all.SetLink(18, nullptr);
  all.SetBool(0, true);
  return all;
}

BaseContainer Records(LONG count, LONG seed) {
  BaseContainer list(count);
  for (LONG i = 0; i < count; ++i) {
    BaseContainer record;
    engine::SetLinkId(record, 70000, 0x500000000u + static_cast<engine::NodeId>(i));
    record.SetLong(70001, (i * seed) % 3);
    record.SetLong(70002, (i / 7) % 2);
    record.SetLong(70003, 1);
    list.SetContainer(i, record);
  }
  return list;
}

namespace {

std::shared_ptr<const engine::Mesh> SmallMesh() {
  auto mesh = std::make_shared<engine::Mesh>();
  mesh->points = {{0, 0, 0}, {1, 0, 0.5f}, {1, 1e-30f, 0}, {-0.0f, 1, 0}};
  mesh->polygons = {{0, 1, 2, 3}, {0, 1, 2, -1}};
  mesh->normals.assign(8, {0, 0, 1});
  mesh->uvs.assign(8, {0.25f, 0.75f});
  mesh->colors.assign(8, {1, 0.5f, 0, 0.25f});
  return mesh;
}

BaseShader* Shader(LONG type, const char* name) {
  BaseShader* shader = BaseShader::Alloc(type);
  shader->SetName(name);
  shader->GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, host::Filename("wood.png"));
  return shader;
}

LayerObject* Layer(const char* name, LONG bits) {
  LayerObject* layer = LayerObject::Alloc();
  layer->SetName(name);
  layer->SetAllBits(bits);
  host::LayerData data;
  data.solo = true;
  data.render = false;
  data.animation = false;
  data.color = Vector(0.1, 0.2, 0.3);
  engine::SetOwnLayerData(*layer, data);
  return layer;
}

void AddSettings(BaseDocument& doc) {
  RenderData* first = doc.GetFirstRenderData();
  first->SetName("Preview");
  RenderData* child = RenderData::Alloc();
  doc.InsertRenderData(child, first, nullptr);
  child->SetName("Final");
  child->SetAllBits(64);
  auto* post = host::BaseVideoPost::Alloc(host::VPglobalillumination);
  post->SetAllBits(host::BIT_DISABLED);
  child->InsertVideoPost(post);
  child->InsertVideoPost(host::BaseVideoPost::Alloc(999));
  child->InsertMultipass(host::MultipassObject::Alloc(host::Zmultipass));
  doc.SetActiveRenderData(child);
}

void AddTags(BaseObject& object, BaseMaterial* material) {
  auto* texture = static_cast<host::TextureTag*>(object.MakeTag(host::Ttexture));
  texture->SetMaterial(material);
  BaseTag* strange = object.MakeTag(424242);
  strange->SetData(EveryValue(&object), host::FALSE);
  strange->ChangeNBit(63, host::NBIT_SET);
  strange->InsertShader(Shader(host::Xcolor, "on a tag"));
  auto* expression = static_cast<host::XPressoTag*>(object.MakeTag(host::Texpresso));
  host::GvNodeMaster* master = expression->GetNodeMaster();
  master->SetName("graph");
  host::GvNode* node = master->CreateNode(master->GetRoot(), 400001000);
  node->GetDataInstance()->SetLong(1, 5);
  master->CreateNode(node, 400001001)->SetName("deep");
  master->CreateNode(master->GetRoot(), 400001002)
      ->InsertShader(Shader(host::Xbitmap, "on a node"));
}

void AddObjects(BaseDocument& doc, BaseMaterial* material, LayerObject* layer) {
  BaseObject* parent = BaseObject::Alloc(host::Onull);
  doc.AppendObject(parent);
  for (const LONG type : {host::Opolygon, host::Ocube, host::Ocamera, LONG{31337}}) {
    BaseObject* object = BaseObject::Alloc(type);
    doc.AppendObject(object, parent);
    object->SetName("same name");
    object->SetLayerObject(layer);
    object->SetEditorMode(host::MODE_OFF);
    object->SetRenderMode(host::MODE_ON);
    object->SetDeformMode(false);
    host::Matrix frame;
    frame.off = Vector(type, -0.0, 0.5);
    object->SetMl(frame);
  }
  const std::shared_ptr<const engine::Mesh> mesh = SmallMesh();
  engine::SetMesh(*parent->GetDown(), mesh);
  BaseObject* instance = BaseObject::Alloc(host::Opolygon);
  doc.AppendObject(instance, parent->GetDown());
  engine::SetMesh(*instance, mesh);
  AddTags(*parent->GetDown(), material);
  parent->GetDown()->GetDown()->MakeTag(host::Tphong);
}

}  // namespace

Document EmptyScene() { return Document(BaseDocument::Alloc()); }

Document EverythingScene() {
  Document doc = EmptyScene();
  LayerObject* layer = Layer("layer", 2);
  doc->AppendLayer(layer);
  doc->AppendLayer(Layer("below", 0), layer);
  doc->AppendLayer(Layer("second", 0));
  for (const char* name : {"wood", "stone"}) {
    BaseMaterial* made = BaseMaterial::Alloc(host::Mmaterial);
    doc->AppendMaterial(made);
    made->SetName(name);
    BaseShader* stack = Shader(host::Xlayer, "stack");
    made->InsertShader(stack);
    Shader(host::Xbitmap, "child")->InsertUnderLast(stack);
    Shader(host::Xcolor, "second child")->InsertUnderLast(stack);
    stack->InsertShader(Shader(host::Xfusion, "shader of a shader"));
    made->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER, stack);
  }
  AddSettings(*doc);
  AddObjects(*doc, doc->GetFirstMaterial(), layer);
  doc->InsertShader(Shader(host::Xcolor, "on the document"));
  doc->SetLayerObject(layer->GetNext());
  doc->SetFps(24);
  doc->ChangeNBit(5, host::NBIT_SET);
  doc->GetRenderBaseDraw()->SetSceneCamera(doc->GetFirstObject()->GetDown()->GetNext()->GetNext(),
                                           false);
  doc->SetData(EveryValue(doc->GetFirstObject()), host::FALSE);
  doc->GetDataInstance()->SetContainer(100, Records(3, 2));
  host::BaseContainer list;
  list.SetBool(engine::kListOfStates.note, host::TRUE);
  for (const char* name : {"Day", ""}) {
    host::BaseContainer entry(list.GetCount());
    entry.SetString(engine::kListOfStates.name, host::String(name));
    list.SetContainer(list.GetCount(), entry);
  }
  doc->GetDataInstance()->SetContainer(engine::kListOfStates.store, list);
  doc->SetActiveObject(doc->GetFirstObject()->GetDown(), host::SELECTION_ADD);
  doc->SetActiveObject(doc->GetFirstObject(), host::SELECTION_ADD);
  doc->SetActiveTag(doc->GetFirstObject()->GetDown()->GetFirstTag(), host::SELECTION_ADD);
  engine::AddEmbeddedFile(*doc, "wood.png", std::string("not\0really a picture", 20));
  engine::AddEmbeddedFile(*doc, "empty.png", "");
  auto packed = std::make_shared<engine::PackedScene>();
  packed->scene = engine::SceneOfState({Records(2, 3), EveryValue(doc->GetFirstObject()),
                                        doc->GetFirstRenderData(),
                                        std::make_shared<const std::string>("a picture")});
  engine::SetDeletedStates(
      *doc, std::make_shared<engine::DeletedStates>(engine::DeletedStates{
                {"Night", "2026-03-05 14:07:09", "2026-03-06 09:00:00", true, packed}}));
  return doc;
}

Document Reopened(const std::string& bytes) {
  auto doc = engine::ReadScene(bytes);
  EXPECT_TRUE(doc.Ok()) << doc.Message();
  return doc ? doc.Take() : nullptr;
}

std::string ContentsOf(const std::string& bytes, const std::string& section) {
  engine::Budget budget(1 << 30);
  const auto sections = engine::ReadSections(bytes, engine::ContentKind::Scene);
  return engine::Expand(*engine::FindSection(sections, section), budget);
}

std::string WithSection(const std::string& bytes, const std::string& section,
                        const std::string& contents) {
  engine::SectionWriter out(engine::ContentKind::Scene);
  for (const engine::Section& each : engine::ReadSections(bytes, engine::ContentKind::Scene)) {
    if (each.name != section) out.AddAsItIs(each.name, each.rawLength, each.payload);
  }
  out.Add(section, contents);
  return Joined(out.Finish());
}

std::string Refusal(const std::string& bytes) {
  const auto doc = engine::ReadScene(bytes);
  return doc ? "opened" : doc.Message();
}

}  // namespace tests
