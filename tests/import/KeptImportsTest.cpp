// All that imports bring of small scenes with whatever a format knows, number by number, and their
// notes. Where a change is meant, look at the new texts and put them into tests/import/kept.
#include <regex>

#include "engine/scene/SceneDump.h"
#include "tests/import/ImportSession.h"
#include "tests/support/KeptText.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

class KeptImports : public ImportSession {
 protected:
  template <class List>
  static std::string Numbers(const char* what, const List& list) {
    std::string text = list.empty() ? "" : std::string(what) + "\n";
    for (const auto& entry : list) {
      text += " ";
      for (const auto number : entry) text += " " + engine::RealText(number);
      text += "\n";
    }
    return text;
  }

  // The dump, with the meshes' numbers instead of their digests. Fingerprints of places and settings
  // have every bit of a number in them: where angles are computed they differ between machines.
  std::string Described(const std::string& scene, bool hasAngles) {
    Open(SceneFile(scene));
    std::string text = engine::DumpDocument(Doc());
    text = std::regex_replace(text, std::regex(" digest \\d+( colors \\d+)?"), "");
    if (hasAngles) text = std::regex_replace(text, std::regex("#0 data 1059402/1/[12].*\n"), "");
    for (const host::BaseObject* object : OfType(host::Opolygon)) {
      const engine::Mesh& mesh = *engine::MeshOf(*object);
      text += "mesh of " + object->GetName().ToUtf8() + "\n" + Numbers("points", mesh.points) +
              Numbers("polygons", mesh.polygons) + Numbers("normals", mesh.normals) +
              Numbers("uvs", mesh.uvs) + Numbers("colors", mesh.colors);
    }
    for (const std::string& note : Notes()) text += "note " + note + "\n";
    return text;
  }
};

TEST_F(KeptImports, BringWhatTheyBrought) {
  for (const char* name : {"all.gltf", "all.obj", "all.dae", "all.fbx", "old.gltf"}) {
    const std::string scene = std::string("tests/import/kept/") + name;
    ExpectKept(Described(scene, name != std::string("all.obj")), SceneFile(scene + ".txt"));
  }
}

}  // namespace
}  // namespace tests
