// The table of docs/FORMATS.md is what imports of this repository's scenes bring, format by format.
// With STAGEMARKS_EXTRA_SCENES and STAGEMARKS_FORMATS_TABLE set, a table of all scenes below the
// first is written to the second.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

#include "engine/import/ImportedStates.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Extras.h"
#include "engine/scene/PictureParameters.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using host::BaseObject;

constexpr const char* kFormats[] = {"glTF", "FBX", "OBJ", "COLLADA"};

const char* FormatOf(const fs::path& file) {
  static const std::map<std::string, const char*> formats = {
      {".gltf", "glTF"}, {".glb", "glTF"}, {".fbx", "FBX"}, {".obj", "OBJ"}, {".dae", "COLLADA"}};
  const auto found = formats.find(file.extension().string());
  return found == formats.end() ? nullptr : found->second;
}

// Features of file formats: whether a scene brings them, and whether its notes tell of a loss.
class Formats : public ImportSession {
 protected:
  struct Row {
    const char* what;
    std::function<bool(Formats&)> came;
    const char* lost;  // how a note begins that tells of its loss; null: there is none
  };

  bool AnyObject(const std::function<bool(const BaseObject&)>& is) {
    for (const BaseObject* object = Doc().GetFirstObject(); object;
         object = engine::NextInTree(object)) {
      if (is(*object)) return true;
    }
    return false;
  }
  bool AnyMesh(const std::function<bool(const engine::Mesh&)>& is) {
    return AnyObject([&](const BaseObject& object) {
      return engine::MeshOf(object) && is(*engine::MeshOf(object));
    });
  }
  bool AnyMaterial(const std::function<bool(const host::BaseContainer&)>& is) {
    for (const host::BaseMaterial* one = Doc().GetFirstMaterial(); one; one = one->GetNext()) {
      if (is(*one->GetDataInstance())) return true;
    }
    return false;
  }
  bool HasLink(host::LONG link) {
    return AnyMaterial(
        [&](const host::BaseContainer& data) { return data.GetLink(link, &Doc()) != nullptr; });
  }
  bool HasKind(host::LONG type, host::LONG key, host::LONG kind) {
    return AnyObject([&](const BaseObject& object) {
      return object.GetType() == type && object.GetDataInstance()->GetLong(key) == kind;
    });
  }

  static const std::vector<Row>& Rows();
  // The lines of the table for these scenes.
  std::string Table(const std::vector<fs::path>& scenes);
};

const std::vector<Formats::Row>& Formats::Rows() {
  using F = Formats;
  using Data = host::BaseContainer;
  static const std::vector<Row> rows = {
      {"Objects below objects",
       [](F& f) { return f.AnyObject([](const BaseObject& o) { return o.GetUp() != nullptr; }); },
       nullptr},
      {"Meshes", [](F& f) { return f.Counts().polygons > 0; }, "Faces without an area"},
      {"Normals", [](F& f) { return f.AnyMesh([](auto& m) { return !m.normals.empty(); }); },
       nullptr},
      {"Texture coordinates",
       [](F& f) { return f.AnyMesh([](auto& m) { return !m.uvs.empty(); }); }, nullptr},
      {"Colors of corners",
       [](F& f) { return f.AnyMesh([](auto& m) { return !m.colors.empty(); }); },
       "Vertex colors are left out"},
      {"Skins, where their joints bring them", [](F& f) { return f.HasNote("at rest: "); },
       "Skins of flattened"},
      {"Morph targets, at their weights", [](F& f) { return f.HasNote("Morph targets are shown"); },
       "Morph targets are left out"},
      {"Points and lines", [](F&) { return false; }, "Lines are left out"},
      {"Hidden objects",
       [](F& f) {
         return f.AnyObject([](auto& o) { return o.GetRenderMode() == host::MODE_OFF; });
       },
       nullptr},
      {"Layers", [](F& f) { return f.Doc().GetLayerObjectRoot()->GetFirst() != nullptr; }, nullptr},
      {"Materials and their colors", [](F& f) { return f.Counts().materials > 0; }, nullptr},
      {"Color pictures", [](F& f) { return f.HasLink(host::MATERIAL_COLOR_SHADER); }, nullptr},
      {"Normal maps", [](F& f) { return f.HasLink(host::MATERIAL_NORMAL_SHADER); },
       "Bump textures are left out"},
      {"Roughness and metal pictures",
       [](F& f) { return f.HasLink(engine::kMaterialRoughnessShader); },
       "Roughness and metal pictures that lie"},
      {"Occlusion pictures", [](F& f) { return f.HasLink(engine::kMaterialOcclusionShader); },
       "Occlusion pictures that lie"},
      {"Emission",
       [](F& f) {
         return f.AnyMaterial([](const Data& data) {
           return data.GetVector(host::MATERIAL_LUMINANCE) != host::Vector();
         });
       },
       nullptr},
      {"Transparency",
       [](F& f) {
         return f.AnyMaterial([](const Data& data) {
           return data.GetLong(host::MATERIAL_ALPHA_MODE) != 0 ||
                  data.GetReal(engine::kMaterialTransmission) > 0;
         });
       },
       "Opacity textures"},
      {"Perspective cameras",
       [](F& f) { return f.HasKind(host::Ocamera, host::CAMERA_PROJECTION, 0); }, nullptr},
      {"Parallel cameras",
       [](F& f) { return f.HasKind(host::Ocamera, host::CAMERA_PROJECTION, 1); },
       "Parallel cameras"},
      {"Point lights", [](F& f) { return f.HasKind(host::Olight, host::LIGHT_TYPE, 0); }, nullptr},
      {"Spot lights", [](F& f) { return f.HasKind(host::Olight, host::LIGHT_TYPE, 1); }, nullptr},
      {"Suns", [](F& f) { return f.HasKind(host::Olight, host::LIGHT_TYPE, 2); }, nullptr},
      {"Ambient lights", [](F& f) { return f.HasKind(host::Olight, host::LIGHT_TYPE, 4); },
       nullptr},
      {"Pictures within the file", [](F& f) { return !engine::EmbeddedFilesOf(f.Doc()).empty(); },
       "Embedded textures of raw"},
      {"Material variants, as Stagemarks", [](F& f) { return engine::HasImportedStates(f.Doc()); },
       nullptr},
      {"Extras, published again",
       [](F& f) {
         return f.AnyObject([](auto& o) { return !engine::ExtrasOf(o).empty(); }) ||
                !engine::ExtrasOf(f.Doc()).empty();
       },
       nullptr},
      {"Animations", [](F&) { return false; }, "Animations are left out"},
  };
  return rows;
}

std::string Formats::Table(const std::vector<fs::path>& scenes) {
  struct Seen {
    int came = 0;
    int lost = 0;
  };
  std::map<std::string, int> counts;
  std::map<std::pair<std::size_t, std::string>, Seen> seen;
  for (const fs::path& scene : scenes) {
    const char* format = FormatOf(scene);
    engine::Result<engine::Imported> imported =
        engine::ImportScene(services_.Get(), scene.string(), IMPORT_WORKER);
    if (!imported) continue;
    document_ = std::move(imported.Value().document);
    notes_ = imported.Value().notes;
    ++counts[format];
    for (std::size_t i = 0; i < Rows().size(); ++i) {
      Seen& cell = seen[{i, format}];
      cell.came += Rows()[i].came(*this);
      cell.lost += Rows()[i].lost != nullptr && HasNote(Rows()[i].lost);
    }
  }
  std::string text = "| |";
  for (const char* format : kFormats)
    text += std::string(" ") + format + " (" + std::to_string(counts[format]) + ") |";
  text += "\n|---|---|---|---|---|\n";
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    text += std::string("| ") + Rows()[i].what + " |";
    for (const char* format : kFormats) {
      const Seen cell = seen[{i, format}];
      std::string said = cell.came > 0 ? "in " + std::to_string(cell.came) : "";
      if (cell.lost > 0)
        said +=
            (said.empty() ? "" : ", ") + std::string("left out in ") + std::to_string(cell.lost);
      text += " " + (said.empty() ? "-" : said) + " |";
    }
    text += "\n";
  }
  return text;
}

std::vector<fs::path> ScenesBelow(const std::vector<fs::path>& folders) {
  std::set<fs::path> scenes;
  for (const fs::path& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file() && FormatOf(entry.path())) scenes.insert(entry.path());
    }
  }
  return {scenes.begin(), scenes.end()};
}

// Scenes for features that the repository's scenes lack, each the smallest file of its kind.
void WriteSmallScenes(const ScratchFolder& folder) {
  const std::string points =
      "\"buffers\":[{\"byteLength\":36,\"uri\":\"data:application/octet-stream;base64,"
      "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA\"}],"
      "\"bufferViews\":[{\"buffer\":0,\"byteLength\":36}],\"accessors\":[{\"bufferView\":0,"
      "\"componentType\":5126,\"count\":3,\"type\":\"VEC3\"}],";
  WriteText(
      folder / "variants.gltf",
      "{\"asset\":{\"version\":\"2.0\"},\"extensionsUsed\":[\"KHR_materials_variants\"],"
      "\"extensions\":{\"KHR_materials_variants\":{\"variants\":[{\"name\":\"A\"}]}}," +
          points +
          "\"materials\":[{},{}],\"meshes\":[{\"primitives\":[{\"attributes\":"
          "{\"POSITION\":0,\"COLOR_0\":0},\"targets\":[{\"POSITION\":0}],\"material\":0,"
          "\"extensions\":"
          "{\"KHR_materials_variants\":{\"mappings\":[{\"material\":1,\"variants\":[0]}]}}}]}],"
          "\"nodes\":[{\"mesh\":0,\"extras\":{\"a\":1}}],\"scenes\":[{\"nodes\":[0]}]}");
  WriteText(folder / "clear.mtl", "newmtl glass\nKd 1 1 1\nd 0.5\nKe 1 0 0\nmap_Kd a.png\n");
  WriteText(
      folder / "clear.obj",
      "mtllib clear.mtl\nv 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nvt 0 0\nvt 1 0\nvt 0 1\n"
      "usemtl glass\nf 1/1 2/2 3/3\nl 1 2\n");
  WriteText(
      folder / "sheet.dae",
      "<?xml version=\"1.0\"?><COLLADA "
      "xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">"
      "<asset><up_axis>Y_UP</up_axis></asset><library_images><image id=\"i\"><init_from>a.png"
      "</init_from></image></library_images><library_effects><effect id=\"e\"><profile_COMMON>"
      "<newparam sid=\"f\"><surface type=\"2D\"><init_from>i</init_from></surface></newparam>"
      "<newparam sid=\"t\"><sampler2D><source>f</source></sampler2D></newparam>"
      "<technique sid=\"c\"><phong><emission><color>1 0 0 1</color></emission><diffuse>"
      "<texture texture=\"t\" texcoord=\"UV\"/></diffuse><transparency><float>0.5</float>"
      "</transparency></phong></technique></profile_COMMON></effect></library_effects>"
      "<library_materials><material id=\"m\" name=\"m\"><instance_effect url=\"#e\"/>"
      "</material></library_materials><library_geometries><geometry id=\"g\" name=\"g\"><mesh>"
      "<source id=\"p\"><float_array id=\"pa\" count=\"9\">0 0 0 1 0 0 0 1 0</float_array>"
      "<technique_common><accessor source=\"#pa\" count=\"3\" stride=\"3\"><param "
      "name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/><param name=\"Z\" "
      "type=\"float\"/></accessor></technique_common></source><source id=\"u\"><float_array "
      "id=\"ua\" count=\"6\">0 0 1 0 0 1</float_array><technique_common><accessor "
      "source=\"#ua\" count=\"3\" stride=\"2\"><param name=\"S\" type=\"float\"/><param "
      "name=\"T\" type=\"float\"/></accessor></technique_common></source><vertices id=\"v\">"
      "<input semantic=\"POSITION\" source=\"#p\"/></vertices><triangles material=\"s\" "
      "count=\"1\"><input semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/><input "
      "semantic=\"TEXCOORD\" source=\"#u\" offset=\"0\" set=\"0\"/><p>0 1 2</p></triangles>"
      "</mesh></geometry></library_geometries><library_visual_scenes><visual_scene id=\"s\">"
      "<node id=\"a\" name=\"a\"><node id=\"b\" name=\"b\"><instance_geometry url=\"#g\">"
      "<bind_material><technique_common><instance_material symbol=\"s\" target=\"#m\">"
      "<bind_vertex_input semantic=\"UV\" input_semantic=\"TEXCOORD\" input_set=\"0\"/>"
      "</instance_material></technique_common></bind_material></instance_geometry></node></node>"
      "</visual_scene></library_visual_scenes><scene><instance_visual_scene url=\"#s\"/></scene>"
      "</COLLADA>");
}

TEST_F(Formats, TableOfTheDocumentIsWhatTheScenesBring) {
  const ScratchFolder folder;
  WriteSmallScenes(folder);
  const std::string table =
      Table(ScenesBelow({fs::path(TEST_SOURCE_DIR) / "scenes",
                         fs::path(TEST_SOURCE_DIR) / "tests/scenes", folder.Path()}));
  const std::string page = ReadText(std::string(TEST_SOURCE_DIR) + "/docs/FORMATS.md");
  EXPECT_NE(page.find(table), std::string::npos) << "It should hold this table:\n" << table;
}

TEST_F(Formats, TableOfOtherScenesIsWrittenWhereAsked) {
  const char* scenes = std::getenv("STAGEMARKS_EXTRA_SCENES");
  const char* target = std::getenv("STAGEMARKS_FORMATS_TABLE");
  if (scenes == nullptr || target == nullptr) GTEST_SKIP() << "nobody asked for it";
  WriteText(target, Table(ScenesBelow({scenes})));
}

}  // namespace
}  // namespace tests
