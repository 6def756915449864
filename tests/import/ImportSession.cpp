#include "tests/import/ImportSession.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "engine/scene/Mesh.h"
#include "engine/scene/ShaderWalk.h"

namespace tests {

namespace fs = std::filesystem;

std::string SceneFile(const std::string& name) { return std::string(TEST_SOURCE_DIR) + "/" + name; }

std::string ExtraScene(const std::string& name) {
  const char* given = std::getenv("STAGEMARKS_EXTRA_SCENES");
  const fs::path folder =
      given != nullptr ? fs::path(given) : fs::path(TEST_SOURCE_DIR) / "../shared/scenes";
  const fs::path file = (folder / name).lexically_normal();
  return fs::exists(file) ? file.string() : std::string();
}

std::string PackagedModel(const std::string& name) {
  const fs::path file = fs::path("/usr/share/assimp/models") / name;
  return fs::exists(file) ? file.string() : std::string();
}

void Box::Add(const host::Vector& place) {
  const std::array<double, 3> at = {place.x, place.y, place.z};
  for (std::size_t i = 0; i < 3; ++i) {
    low[i] = std::min(low[i], at[i]);
    high[i] = std::max(high[i], at[i]);
  }
}

void ImportSession::Open(const std::string& path) {
  Close();
  engine::Result<engine::Imported> imported =
      engine::ImportScene(services_.Get(), path, IMPORT_WORKER);
  EXPECT_TRUE(imported) << imported.Message();
  if (!imported)
    imported = engine::Imported{engine::OwnedDocument(host::BaseDocument::Alloc()), {}};
  document_ = std::move(imported.Value().document);
  notes_ = imported.Value().notes;
}

std::string ImportSession::Refusal(const std::string& path, const engine::ImportLimits& limits,
                                   const std::string& worker) {
  engine::Result<engine::Imported> imported =
      engine::ImportScene(services_.Get(), path, worker, limits);
  EXPECT_FALSE(imported) << path;
  return imported.Message();
}

void ImportSession::Close() {
  document_.reset();
  notes_.clear();
}

bool ImportSession::HasNote(const std::string& part) const {
  return std::any_of(notes_.begin(), notes_.end(),
                     [&](const auto& note) { return note.find(part) != std::string::npos; });
}

std::vector<host::BaseObject*> ImportSession::Named(const std::string& name) const {
  std::vector<host::BaseObject*> found;
  for (host::BaseObject* object = document_->GetFirstObject(); object != nullptr;
       object = engine::NextInTree(object)) {
    if (object->GetName().ToUtf8() == name) found.push_back(object);
  }
  return found;
}

host::BaseObject* ImportSession::Only(const std::string& name) const {
  const std::vector<host::BaseObject*> found = Named(name);
  EXPECT_EQ(found.size(), 1U) << name;
  return found.size() == 1 ? found.front() : nullptr;
}

std::vector<host::BaseObject*> ImportSession::OfType(host::LONG type) const {
  std::vector<host::BaseObject*> found;
  for (host::BaseObject* object = document_->GetFirstObject(); object != nullptr;
       object = engine::NextInTree(object)) {
    if (object->GetType() == type) found.push_back(object);
  }
  return found;
}

host::BaseMaterial* ImportSession::Material(const std::string& name) const {
  for (host::BaseMaterial* material = document_->GetFirstMaterial(); material != nullptr;
       material = material->GetNext()) {
    if (material->GetName().ToUtf8() == name) return material;
  }
  ADD_FAILURE() << "no material " << name;
  return nullptr;
}

std::string ImportSession::ShaderFile(const host::BaseMaterial& material, host::LONG link) const {
  const host::BaseList2D* target = material.GetDataInstance()->GetLink(link, document_.get());
  return target == nullptr ? ""
                           : target->GetDataInstance()
                                 ->GetFilename(host::BITMAPSHADER_FILENAME)
                                 .GetString()
                                 .ToUtf8();
}

std::vector<std::string> ImportSession::TextureFiles() const {
  std::set<std::string> files;
  engine::ForEachBitmapShader(*document_, [&](const host::BaseShader& shader) {
    files.insert(engine::BitmapFileOf(shader));
  });
  return {files.begin(), files.end()};
}

Box ImportSession::WorldBox(const host::BaseObject* top) const {
  Box box;
  const host::BaseObject* object = top != nullptr ? top : document_->GetFirstObject();
  for (; object != nullptr;
       object = engine::NextInTree(const_cast<host::BaseObject*>(object), top)) {
    if (!engine::MeshOf(*object)) continue;
    const host::Matrix frame = object->GetMg();
    for (const auto& point : engine::MeshOf(*object)->points)
      box.Add(InWorld(frame, point[0], point[1], point[2]));
  }
  return box;
}

host::Vector InWorld(const host::Matrix& frame, double x, double y, double z) {
  return host::Vector(frame.off.x + x * frame.v1.x + y * frame.v2.x + z * frame.v3.x,
                      frame.off.y + x * frame.v1.y + y * frame.v2.y + z * frame.v3.y,
                      frame.off.z + x * frame.v1.z + y * frame.v2.z + z * frame.v3.z);
}

double Dot(const host::Vector& a, const host::Vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
host::Vector Minus(const host::Vector& a, const host::Vector& b) {
  return host::Vector(a.x - b.x, a.y - b.y, a.z - b.z);
}
host::Vector Cross(const host::Vector& a, const host::Vector& b) {
  return host::Vector(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

double FacingShare(const engine::Mesh& mesh) {
  const auto vector = [](const std::array<float, 3>& a) { return host::Vector(a[0], a[1], a[2]); };
  std::size_t facing = 0;
  for (std::size_t i = 0; i < mesh.polygons.size(); ++i) {
    const auto point = [&](std::size_t corner) {
      return vector(mesh.points[static_cast<std::size_t>(mesh.polygons[i][corner])]);
    };
    const host::Vector across = Cross(Minus(point(1), point(0)), Minus(point(2), point(0)));
    for (std::size_t corner = 0; corner < 3; ++corner)
      facing += Dot(across, vector(mesh.normals[4 * i + corner])) >= 0;
  }
  return static_cast<double>(facing) / static_cast<double>(3 * mesh.polygons.size());
}

}  // namespace tests
