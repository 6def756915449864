// Cost of publishing a scene and ten states of it: 100,000 objects with a mesh of their own, and a
// million triangles in 100 objects, beside the importing library's own exporter, which writes the
// scene as it stands once. A state after the first should cost its differences and the writing
// only: so beside them stands writing as many bytes, and one file with all of them.
#include <assimp/scene.h>

#include <assimp/Exporter.hpp>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "engine/publish/Publish.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/Ownership.h"
#include "host/BaseMaterial.h"
#include "host/Parameters.h"
#include "host/RenderData.h"
#include "program/publish/PublishedFiles.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::Mesh;
using host::BaseDocument;
using host::BaseObject;
using host::LONG;

constexpr LONG kStates = 10;
constexpr LONG kMaterials = 10;

// Processor time of the work; other programs do not count.
template <class Work>
double Seconds(const Work& work) {
  const std::clock_t begin = std::clock();
  work();
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

// A waved sheet of so many squares along each side, unlike all others.
std::shared_ptr<const Mesh> Sheet(LONG squares, LONG number) {
  const auto mesh = std::make_shared<Mesh>();
  for (LONG y = 0; y <= squares; ++y) {
    for (LONG x = 0; x <= squares; ++x) {
      const auto wave = static_cast<float>((x * 7 + y * 13 + number) % 11);
      mesh->points.push_back({static_cast<float>(x), wave, static_cast<float>(y)});
    }
  }
  for (LONG y = 0; y < squares; ++y) {
    for (LONG x = 0; x < squares; ++x) {
      const LONG a = y * (squares + 1) + x;
      mesh->polygons.push_back({a, a + squares + 1, a + squares + 2, a + 1});
      for (int corner = 0; corner < 4; ++corner) mesh->normals.push_back({0, 1, 0});
    }
  }
  return mesh;
}

engine::OwnedDocument Scene(LONG objects, LONG meshes, LONG squares) {
  engine::OwnedDocument doc(BaseDocument::Alloc());
  std::vector<std::shared_ptr<const Mesh>> sheets;
  for (LONG i = 0; i < meshes; ++i) sheets.push_back(Sheet(squares, i));
  for (LONG i = 0; i < kMaterials; ++i) {
    host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
    material->SetName(host::String(("Material " + std::to_string(i)).c_str()));
    material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, host::Vector(i * 0.1));
    doc->AppendMaterial(material);
  }
  for (LONG i = 0; i < objects; ++i) {
    BaseObject* object = BaseObject::Alloc(host::Opolygon);
    object->SetName(host::String(("Object " + std::to_string(i)).c_str()));
    object->SetMl({host::Vector(i % 100 * 20.5, 0, i / 100 * 20.5),
                   {0.6, 0, 0.8},
                   {0, 1, 0},
                   {-0.8, 0, 0.6}});
    engine::SetMesh(*object, sheets[static_cast<std::size_t>(i % meshes)]);
    doc->AppendObject(object);
    auto* tag = static_cast<host::TextureTag*>(object->MakeTag(host::Ttexture));
    tag->SetMaterial(doc->GetFirstMaterial());
  }
  return doc;
}

// One object in a hundred is hidden, another one has another material.
void BringInto(BaseDocument& doc, LONG state) {
  std::vector<host::BaseMaterial*> materials;
  for (host::BaseMaterial* one = doc.GetFirstMaterial(); one; one = one->GetNext())
    materials.push_back(one);
  LONG i = 0;
  for (BaseObject* object = doc.GetFirstObject(); object; object = object->GetNext(), ++i) {
    const bool hides = (i + state) % 100 == 0;
    if ((object->GetRenderMode() == host::MODE_OFF) != hides)
      object->SetRenderMode(hides ? host::MODE_OFF : host::MODE_UNDEF);
    if ((i + state) % 100 != 50) continue;
    auto* tag = static_cast<host::TextureTag*>(object->GetFirstTag());
    tag->SetMaterial(materials[static_cast<std::size_t>(state % kMaterials)]);
  }
}

aiMesh* ForeignMesh(const Mesh& mesh) {
  auto* to = new aiMesh;
  to->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  to->mNumVertices = static_cast<unsigned>(mesh.points.size());
  to->mVertices = new aiVector3D[to->mNumVertices];
  to->mNormals = new aiVector3D[to->mNumVertices];
  for (unsigned i = 0; i < to->mNumVertices; ++i) {
    to->mVertices[i] = {mesh.points[i][0], mesh.points[i][1], mesh.points[i][2]};
    to->mNormals[i] = {0, 1, 0};
  }
  to->mNumFaces = static_cast<unsigned>(2 * mesh.polygons.size());
  to->mFaces = new aiFace[to->mNumFaces];
  for (unsigned i = 0; i < to->mNumFaces; ++i) {
    const Mesh::Polygon& from = mesh.polygons[i / 2];
    const auto corner = [&](std::size_t k) { return static_cast<unsigned>(from[k]); };
    to->mFaces[i].mNumIndices = 3;
    to->mFaces[i].mIndices =
        new unsigned[3]{corner(0), corner(i % 2 == 0 ? 1 : 2), corner(i % 2 == 0 ? 2 : 3)};
  }
  return to;
}

// The document's scene in the structures that the library's exporter takes.
std::unique_ptr<aiScene> ForeignScene(const BaseDocument& doc, LONG objects, LONG meshes) {
  auto scene = std::make_unique<aiScene>();
  const auto count = static_cast<unsigned>(objects);
  scene->mNumMaterials = 1;
  scene->mMaterials = new aiMaterial* [1] { new aiMaterial };
  scene->mNumMeshes = static_cast<unsigned>(meshes);
  scene->mMeshes = new aiMesh*[scene->mNumMeshes];
  scene->mRootNode = new aiNode("Root");
  scene->mRootNode->mNumChildren = count;
  scene->mRootNode->mChildren = new aiNode*[count];
  unsigned at = 0;
  for (const BaseObject* object = doc.GetFirstObject(); object; object = object->GetNext(), ++at) {
    if (at < scene->mNumMeshes) scene->mMeshes[at] = ForeignMesh(*engine::MeshOf(*object));
    auto* node = new aiNode(object->GetName().ToUtf8());
    node->mTransformation.a4 = static_cast<float>(at);
    node->mParent = scene->mRootNode;
    node->mNumMeshes = 1;
    node->mMeshes = new unsigned[1]{at % scene->mNumMeshes};
    scene->mRootNode->mChildren[at] = node;
  }
  return scene;
}

void Print(const char* what, double seconds, double baseline) {
  std::printf("  %-46s %8.3f s  %6.2f x\n", what, seconds, seconds / baseline);
}

class Bench {
 public:
  Bench(const char* title, LONG objects, LONG meshes, LONG squares)
      : title_(title), doc_(Scene(objects, meshes, squares)), objects_(objects), meshes_(meshes) {}

  void Run() {
    const std::unique_ptr<aiScene> foreign = ForeignScene(*doc_, objects_, meshes_);
    const std::string path = folder_ / "foreign.glb";
    const double exporter = Seconds([&] {
      Assimp::Exporter library;
      Require(library.Export(foreign.get(), "glb2", path) == aiReturn_SUCCESS, "no export");
    });
    std::printf("\n%s\n", title_);
    std::fflush(stdout);
    Print("The library's exporter, the scene once", exporter, exporter);
    const double first = Seconds([&] { Publish(0); });
    Print("The first state", first, exporter);
    double further = 0;
    for (LONG state = 1; state < kStates; ++state) {
      BringInto(*doc_, state);
      further += Seconds([&] { Publish(state); }) / (kStates - 1);
    }
    Print("Each further state", further, exporter);
    const double writing = Seconds([&] {
      Require(services_.files.ReplaceFile(folder_ / "bytes.glb", bytes_).Ok(), "no bytes");
    });
    Print("  of it: writing its bytes alone", writing, exporter);
    std::printf("  a further state beside the first: %.2f, beside writing alone: %.1f\n",
                further / first, further / writing);
    RunAllInOne(exporter);
  }

 private:
  engine::PublishOptions Options(bool variants) const {
    engine::PublishOptions options;
    options.scene = "scene";
    options.asVariants = variants;
    return options;
  }

  void Publish(LONG state) {
    engine::Publication file(*doc_, services_.files, Options(false), renderCaches_, caches_);
    Require(file.AddState({"State", state, ""}).Ok(), "not read");
    auto made = file.Finish();
    Require(made.Ok(), "not made");
    bytes_ = made.Value().bytes;
    const std::string path = folder_ / std::to_string(state) + ".glb";
    Require(publishing::WriteScene(services_.files, path, made.Take(), true).Ok(), "not written");
  }

  void RunAllInOne(double exporter) {
    engine::Publication file(*doc_, services_.files, Options(true), renderCaches_, caches_);
    double seconds = 0;
    for (LONG state = 0; state < kStates; ++state) {
      BringInto(*doc_, state);
      seconds += Seconds([&] { Require(file.AddState({"State", state, ""}).Ok(), "not read"); });
    }
    seconds += Seconds([&] {
      auto made = file.Finish();
      Require(made.Ok(), "not made");
      Require(publishing::WriteScene(services_.files, folder_ / "all.glb", made.Take(), true).Ok(),
              "not written");
    });
    Print("All ten states in one file", seconds, exporter);
  }

  const char* title_;
  engine::OwnedDocument doc_;
  LONG objects_;
  LONG meshes_;
  tests::ScriptedServices services_;
  tests::ScratchFolder folder_;
  engine::RenderCaches renderCaches_;
  engine::PublishCaches caches_;
  std::string bytes_;
};

}  // namespace

// The exporter takes a time that grows with the square of the number of meshes: 100,000 of them
// were not through after minutes.
int main() {
  Bench("100,000 objects that share 1,000 meshes", 100000, 1000, 2).Run();
  Bench("1,000,000 triangles in 100 objects", 100, 100, 71).Run();
}
