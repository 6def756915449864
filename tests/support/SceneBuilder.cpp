#include "tests/support/SceneBuilder.h"

#include <stdexcept>

#include "host/Parameters.h"

namespace tests {

using host::BaseList2D;
using host::String;

namespace {

template <class T>
T* Named(T* first, const std::string& name) {
  while (first && first->GetName().View() != name) first = first->GetNext();
  return first;
}

template <class T>
T* Existing(T* found, const std::string& what) {
  if (!found) throw std::runtime_error("the scene has no \"" + what + "\"");
  return found;
}

String Text(const std::string& text) { return String(std::string_view(text)); }

// "Room/Box" is "Room" and "Box"; "Box" is "" and "Box".
std::pair<std::string, std::string> Split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return {"", path};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

// The element at a path in a tree that begins with `first`, or null.
template <class T>
T* Find(T* first, const std::string& path) {
  const std::size_t slash = path.find('/');
  T* top = Named(first, path.substr(0, slash));
  if (!top || slash == std::string::npos) return top;
  return Find(top->GetDown(), path.substr(slash + 1));
}

host::LayerObject* FirstLayer(const host::BaseDocument& doc) {
  return static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst());
}

}  // namespace

SceneBuilder::SceneBuilder() : doc_(host::BaseDocument::Alloc()), owned_(true) {}
SceneBuilder::SceneBuilder(host::BaseDocument& doc) : doc_(&doc), owned_(false) {}

SceneBuilder::~SceneBuilder() {
  if (owned_) host::BaseDocument::Free(doc_);
}

host::BaseDocument* SceneBuilder::Release() {
  owned_ = false;
  return doc_;
}

SceneBuilder& SceneBuilder::Object(const std::string& path, host::LONG type) {
  const auto [parent, name] = Split(path);
  if (!parent.empty() && !Find(doc_->GetFirstObject(), parent)) Object(parent);
  last_ = host::BaseObject::Alloc(type);
  last_->SetName(Text(name));
  doc_->AppendObject(last_, parent.empty() ? nullptr : GetObject(parent));
  return *this;
}

SceneBuilder& SceneBuilder::Modes(const std::string& path, host::LONG editor, host::LONG render,
                                  bool deform) {
  host::BaseObject* object = GetObject(path);
  object->SetEditorMode(editor);
  object->SetRenderMode(render);
  object->SetDeformMode(deform);
  return *this;
}

SceneBuilder& SceneBuilder::At(const std::string& path, double x, double y, double z) {
  host::Matrix frame = GetObject(path)->GetMl();
  frame.off = host::Vector(x, y, z);
  GetObject(path)->SetMl(frame);
  return *this;
}

SceneBuilder& SceneBuilder::Select(const std::string& path) {
  doc_->SetActiveObject(GetObject(path), host::SELECTION_ADD);
  return *this;
}

SceneBuilder& SceneBuilder::LookThrough(const std::string& path) {
  doc_->GetRenderBaseDraw()->SetSceneCamera(path.empty() ? nullptr : GetObject(path), false);
  return *this;
}

host::BaseObject* SceneBuilder::GetObject(const std::string& path) const {
  return Existing(Find(doc_->GetFirstObject(), path), path);
}

SceneBuilder& SceneBuilder::Tag(const std::string& path, host::LONG type,
                                const host::BaseContainer& data) {
  GetObject(path)->MakeTag(type, nullptr)->SetData(data);
  return *this;
}

SceneBuilder& SceneBuilder::Texture(const std::string& path, const std::string& material) {
  auto* tag = static_cast<host::TextureTag*>(GetObject(path)->MakeTag(host::Ttexture));
  tag->SetMaterial(material.empty() ? nullptr : GetMaterial(material));
  return *this;
}

host::BaseTag* SceneBuilder::GetTag(const std::string& path, host::LONG type, int index) const {
  for (host::BaseTag* tag = GetObject(path)->GetFirstTag(); tag; tag = tag->GetNext()) {
    if (tag->GetType() == type && index-- == 0) return tag;
  }
  throw std::runtime_error("\"" + path + "\" has no such tag");
}

host::GvNodeMaster* SceneBuilder::Expression(const std::string& path) {
  return static_cast<host::XPressoTag*>(GetObject(path)->MakeTag(host::Texpresso))->GetNodeMaster();
}

SceneBuilder& SceneBuilder::Material(const std::string& name, const host::Vector& color) {
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  material->SetName(Text(name));
  material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, color);
  doc_->AppendMaterial(material);
  return *this;
}

host::BaseMaterial* SceneBuilder::GetMaterial(const std::string& name) const {
  return Existing(Named(doc_->GetFirstMaterial(), name), name);
}

host::BaseShader* SceneBuilder::Bitmap(BaseList2D* owner, const std::string& file,
                                       host::BaseShader* parent) {
  host::BaseShader* shader = host::BaseShader::Alloc(host::Xbitmap);
  shader->GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, host::Filename(Text(file)));
  if (parent) {
    shader->InsertUnderLast(parent);
  } else {
    owner->InsertShader(shader);
  }
  return shader;
}

SceneBuilder& SceneBuilder::Layer(const std::string& path, const host::LayerData& flags) {
  const auto [parent, name] = Split(path);
  if (!parent.empty() && !Find(FirstLayer(*doc_), parent)) Layer(parent);
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName(Text(name));
  layer->SetLayerData(doc_, flags);
  doc_->AppendLayer(layer, parent.empty() ? nullptr : GetLayer(parent));
  return *this;
}

SceneBuilder& SceneBuilder::OnLayer(const std::string& object, const std::string& layer) {
  GetObject(object)->SetLayerObject(layer.empty() ? nullptr : GetLayer(layer));
  return *this;
}

host::LayerObject* SceneBuilder::GetLayer(const std::string& path) const {
  return Existing(Find(FirstLayer(*doc_), path), path);
}

SceneBuilder& SceneBuilder::Settings(const std::string& name, host::LONG width, host::LONG height) {
  host::RenderData* settings = host::RenderData::Alloc();
  settings->SetName(Text(name));
  settings->GetDataInstance()->SetLong(host::RDATA_XRES, width);
  settings->GetDataInstance()->SetLong(host::RDATA_YRES, height);
  host::RenderData* last = doc_->GetFirstRenderData();
  while (last->GetNext()) last = last->GetNext();
  doc_->InsertRenderData(settings, nullptr, last);
  return *this;
}

SceneBuilder& SceneBuilder::Post(const std::string& settings, host::LONG type, bool on) {
  host::BaseVideoPost* post = host::BaseVideoPost::Alloc(type);
  if (!on) post->SetBit(host::BIT_DISABLED);
  GetSettings(settings)->InsertVideoPost(post);
  return *this;
}

SceneBuilder& SceneBuilder::Pass(const std::string& settings, host::LONG type, bool on) {
  host::MultipassObject* pass = host::MultipassObject::Alloc(type);
  if (!on) pass->SetBit(host::BIT_DISABLED);
  GetSettings(settings)->InsertMultipass(pass);
  return *this;
}

SceneBuilder& SceneBuilder::Active(const std::string& settings) {
  doc_->SetActiveRenderData(GetSettings(settings));
  return *this;
}

host::RenderData* SceneBuilder::GetSettings(const std::string& name) const {
  return Existing(Named(doc_->GetFirstRenderData(), name), name);
}

}  // namespace tests
