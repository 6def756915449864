// Small glTF files that the test writes itself: every way in which a file can hold its numbers,
// skins, materials and names, and what is said about those that cannot be read.
#include <fcntl.h>
#include <sys/stat.h>

#include <cmath>
#include <ctime>

#include "engine/import/ImportedStates.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"
#include "tests/import/GltfSource.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

using Points = std::vector<std::array<float, 3>>;

class GltfReader : public ImportSession {
 protected:
  std::string Write(Source source) {
    if (!source.bytes.empty()) {
      source.json["buffers"] = {{{"uri", "a%20b.bin"}, {"byteLength", source.bytes.size()}}};
      WriteText(folder_ / "a b.bin", source.bytes);
    }
    WriteText(folder_ / "s.gltf", source.json.dump());
    return folder_ / "s.gltf";
  }
  void Import(const Source& source) { Open(Write(source)); }
  const engine::Mesh& OnlyMesh() {
    const std::vector<host::BaseObject*> objects = OfType(host::Opolygon);
    EXPECT_EQ(objects.size(), 1U);
    static const engine::Mesh none;
    return objects.size() == 1 ? *engine::MeshOf(*objects[0]) : none;
  }
  ScratchFolder folder_;
};

void ExpectPoints(const Points& points, const Points& expected, const std::string& what) {
  ASSERT_EQ(points.size(), expected.size()) << what;
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_NEAR(points[i][k], expected[i][k], 1e-3) << what << ", point " << i << ", " << k;
  }
}

TEST_F(GltfReader, NumbersOfEveryKindMeanTheSame) {
  struct Case {
    int kind;
    bool isNormalized;
    double written;  // x of the second point
    double meant;
  };
  const std::vector<Case> cases = {{kFloat, false, 0.25, 0.25},
                                   {kByte, false, -100, -100},
                                   {kByte, true, 127, 1},
                                   {kByte, true, -128, -1},
                                   {kByte, true, -64, -64 / 127.0},
                                   {kUnsignedByte, false, 200, 200},
                                   {kUnsignedByte, true, 51, 0.2},
                                   {kShort, false, -30000, -30000},
                                   {kShort, true, -16384, -0.50001526},
                                   {kUnsignedShort, false, 4096, 4096},
                                   {kUnsignedShort, true, 13107, 0.2},
                                   {kUnsignedShort, true, 65535, 1}};
  for (const Case& c : cases) {
    const std::string what = std::to_string(c.kind) + (c.isNormalized ? " normalized" : "");
    Source source;
    const double one = c.written;
    source.json["meshes"] = {{{"primitives", {{{"attributes", Json::object()}}}}}};
    Json& attributes = source.json["meshes"][0]["primitives"][0]["attributes"];
    attributes["POSITION"] =
        source.Numbers(c.kind, "VEC3", 3, {0, 0, 0, one, 0, 0, 0, one, one}, c.isNormalized);
    attributes["TEXCOORD_0"] =
        source.Numbers(c.kind, "VEC2", 3, {0, 0, one, 0, 0, one}, c.isNormalized);
    Import(source);
    const engine::Mesh& mesh = OnlyMesh();
    const auto m = static_cast<float>(c.meant * 100);
    ExpectPoints(mesh.points, {{0, 0, 0}, {m, 0, 0}, {0, m, -m}}, what);
    ASSERT_EQ(mesh.uvs.size(), 4U);
    // The corners run the other way round.
    EXPECT_NEAR(mesh.uvs[2][0], c.meant, 1e-6) << what;
    EXPECT_NEAR(mesh.uvs[1][1], c.meant, 1e-6) << what;
  }
}

TEST_F(GltfReader, InterleavedAndSparseNumbersAreFound) {
  Source source;
  // Point and coordinates in turns, 20 bytes each, behind four bytes of something else.
  const int view =
      source.View("skip" + Packed(kFloat, {0, 0, 0, .1, .2, 1, 0, 0, .3, .4, 0, 1, 0, .5, .6}), 20);
  Json& part = source.Mesh(kTriangle);
  const int points = source.Accessor(kFloat, "VEC3", 3, view);
  const int uvs = source.Accessor(kFloat, "VEC2", 3, view);
  source.json["accessors"][points]["byteOffset"] = 4;
  source.json["accessors"][uvs]["byteOffset"] = 16;
  const int places = source.View(Packed(kUnsignedByte, {1}));
  const int values = source.View(Packed(kFloat, {7, 8, 9}));
  source.json["accessors"][points]["sparse"] = {
      {"count", 1},
      {"indices", {{"bufferView", places}, {"componentType", kUnsignedByte}}},
      {"values", {{"bufferView", values}}}};
  part["attributes"] = {{"POSITION", points}, {"TEXCOORD_0", uvs}};
  Import(source);
  ExpectPoints(OnlyMesh().points, {{0, 0, 0}, {700, 800, -900}, {0, 100, 0}}, "sparse");
  EXPECT_NEAR(OnlyMesh().uvs[2][0], .3, 1e-6);
  EXPECT_NEAR(OnlyMesh().uvs[1][1], .6, 1e-6);
}

TEST_F(GltfReader, EveryWayToNameTrianglesGivesThem) {
  struct Case {
    const char* what;
    int mode;
    int kind;  // of the indices, 0 without
    std::vector<double> indices;
    std::vector<engine::Mesh::Polygon> expected;
  };
  const std::vector<Case> cases = {
      {"bytes", 4, kUnsignedByte, {0, 1, 2}, {{0, 2, 1, -1}}},
      {"shorts", 4, kUnsignedShort, {0, 1, 2, 2, 1, 3}, {{0, 2, 1, -1}, {2, 3, 1, -1}}},
      {"longs", 4, kUnsignedInt, {1, 2, 3}, {{0, 2, 1, -1}}},
      {"no indices", 4, 0, {}, {{0, 2, 1, -1}}},
      {"strip", 5, kUnsignedShort, {0, 1, 2, 3}, {{0, 2, 1, -1}, {1, 2, 3, -1}}},
      {"fan", 6, 0, {}, {{0, 2, 1, -1}, {0, 3, 2, -1}}},
      {"beyond", 4, kUnsignedShort, {0, 1, 9, 0, 1, 2}, {{0, 2, 1, -1}}}};
  for (const Case& c : cases) {
    Source source;
    Json& part = source.Mesh({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0});
    part["mode"] = c.mode * 1.0;  // 4.0 for 4, as some programs write
    if (c.kind != 0)
      part["indices"] =
          source.Numbers(c.kind, "SCALAR", static_cast<int>(c.indices.size()), c.indices);
    Import(source);
    EXPECT_EQ(OnlyMesh().polygons, c.expected) << c.what;
    EXPECT_EQ(HasNote("with missing points are left out: 1."), c.what == std::string("beyond"));
  }
}

TEST_F(GltfReader, AnUnpackedMeshIsTheSame) {
  Source source;
  Json& part = source.Mesh({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0});
  part["indices"] = source.Numbers(kUnsignedInt, "SCALAR", 6, std::vector<double>(6));
  source.json["extensionsRequired"] = {"EXT_meshopt_compression"};
  source.json["buffers"] = {
      {{"byteLength", 72}},
      {{"byteLength", 74},
       {"uri",
        "data:;base64,oAAAAT8AAAD///8BPwAAAH59fgAAAAEMAAAAgAAAAQMAAACAAQMAAAB/"
        "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="}},
      {{"byteLength", 19}, {"uri", "data:;base64,4PAQAHaHVmd4qYZliWiYAWkAAA=="}}};
  source.bytes.clear();
  const auto packed = [&](int view, int buffer, int size, int stride, int count, const char* mode) {
    source.json["bufferViews"][view]["extensions"]["EXT_meshopt_compression"] = {
        {"buffer", buffer},
        {"byteLength", size},
        {"byteStride", stride},
        {"count", count},
        {"mode", mode}};
  };
  packed(0, 1, 74, 12, 4, "ATTRIBUTES");
  packed(1, 2, 19, 4, 6, "TRIANGLES");
  Import(source);
  ExpectPoints(OnlyMesh().points, {{0, 0, 0}, {100, 0, 0}, {0, 200, 0}, {100, 200, 300}}, "");
  EXPECT_EQ(OnlyMesh().polygons,
            (std::vector<engine::Mesh::Polygon>{{0, 2, 1, -1}, {2, 3, 1, -1}}));
  packed(0, 1, 60, 12, 4, "ATTRIBUTES");
  EXPECT_NE(Refusal(Write(source)).find("buffer view 0 cannot be unpacked"), std::string::npos);
  packed(0, 1, 74, 10, 4, "ATTRIBUTES");
  EXPECT_NE(Refusal(Write(source)).find("packed in a way that is not known"), std::string::npos);
}

// A skin of two joints below a node that is elsewhere, turned and scaled itself.
Source Skinned() {
  Source source;
  Json& part = source.Mesh(kTriangle);
  part["attributes"]["JOINTS_0"] =
      source.Numbers(kUnsignedByte, "VEC4", 3, {0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0});
  part["attributes"]["WEIGHTS_0"] =
      source.Numbers(kUnsignedByte, "VEC4", 3, {255, 0, 0, 0, 255, 0, 0, 0, 51, 204, 0, 0}, true);
  std::vector<double> binds(32, 0);
  for (const std::size_t i : {0, 5, 10, 15, 16, 21, 26, 31}) binds[i] = 1;
  binds[28] = -1;  // the second joint was bound at x = 1
  source.json["skins"] = {
      {{"joints", {2, 3}}, {"inverseBindMatrices", source.Numbers(kFloat, "MAT4", 2, binds)}}};
  source.json["scenes"][0]["nodes"] = {0, 1};
  source.json["nodes"] = {
      {{"name", "Armature"}, {"children", {2}}, {"translation", {0, 10, 0}}},
      {{"name", "N"}, {"mesh", 0}, {"skin", 0}, {"translation", {5, 6, 7}}, {"scale", {2, 3, 4}}},
      {{"name", "J0"}, {"children", {3}}, {"translation", {0, 0, 1}}},
      {{"name", "J1"}, {"rotation", {0, 0, std::sqrt(0.5), std::sqrt(0.5)}}}};
  return source;
}

TEST_F(GltfReader, ASkinnedMeshStandsWhereItsJointsBringIt) {
  Import(Skinned());
  const host::BaseObject* object = Only("N");
  ASSERT_NE(object, nullptr);
  EXPECT_NEAR(object->GetMl().off.x, 500, 1e-3) << "the node stays where it is";
  // The first joint moves by (0, 10, 1); the second turns a quarter round z after x has lost 1:
  // (1, 0, 0) comes to the origin and (0, 1, 0) to (-1, -1, 0), before both move as well.
  const Points expected = {{0, 1000, -100}, {0, 1000, -100}, {-80, 1000 + 20 - 80, -100}};
  const engine::Mesh& mesh = OnlyMesh();
  ASSERT_EQ(mesh.points.size(), 2U) << "equal points are joined";
  ASSERT_EQ(mesh.polygons.size(), 1U);
  const auto at = [&](std::int32_t point) {
    const auto& p = mesh.points[static_cast<std::size_t>(point)];
    const host::Vector world = InWorld(object->GetMg(), p[0], p[1], p[2]);
    return std::array<float, 3>{static_cast<float>(world.x), static_cast<float>(world.y),
                                static_cast<float>(world.z)};
  };
  const engine::Mesh::Polygon& face = mesh.polygons[0];
  ExpectPoints({at(face[0]), at(face[2]), at(face[1])}, expected, "in the world");
  EXPECT_TRUE(HasNote("Skinned meshes are shown at rest: 1."));
}

TEST_F(GltfReader, MorphTargetsCountByTheirWeights) {
  Source source;
  Json& part = source.Mesh(kTriangle);
  const int first = source.Numbers(kFloat, "VEC3", 3, {0, 0, 1, 0, 0, 0, 0, 0, 0});
  const int second = source.Numbers(kFloat, "VEC3", 3, {0, 0, 0, 4, 0, 0, 0, 0, 0});
  part["targets"] = {{{"POSITION", first}}, {{"POSITION", second}}};
  source.json["meshes"][0]["weights"] = {0.5, 0};
  source.json["nodes"].push_back({{"name", "Own"}, {"mesh", 0}, {"weights", {0, 0.25}}});
  source.json["nodes"].push_back({{"name", "Same"}, {"mesh", 0}});
  source.json["scenes"][0]["nodes"] = {0, 1, 2};
  Import(source);
  ExpectPoints(engine::MeshOf(*Only("N"))->points, {{0, 0, -50}, {100, 0, 0}, {0, 100, 0}}, "N");
  ExpectPoints(engine::MeshOf(*Only("Own"))->points, {{0, 0, 0}, {200, 0, 0}, {0, 100, 0}}, "Own");
  EXPECT_EQ(engine::MeshOf(*Only("N")), engine::MeshOf(*Only("Same")));
}

TEST_F(GltfReader, MaterialsKeepTheirTransformsWhateverUsesThemFirst) {
  Source source;
  Json& part = source.Mesh(kTriangle);
  part["material"] = 2;
  part["attributes"]["TEXCOORD_0"] = source.Numbers(kFloat, "VEC2", 3, {0, 0, 1, 0, 0, 1});
  source.json["images"] = {{{"uri", "none.png"}}};
  source.json["textures"] = {{{"source", 0}}};
  const std::string longName(3000, 'm');
  for (const auto& [name, scale] : {std::pair("Unused", 2), std::pair("B", 3), std::pair("C", 5)}) {
    source.json["materials"].push_back(
        {{"name", name},
         {"emissiveFactor", {1, 1, 1}},
         {"extensions",
          {{"KHR_materials_emissive_strength", {{"emissiveStrength", scale}}},
           {"KHR_materials_specular", {{"specularFactor", scale / 10.0}}}}},
         {"pbrMetallicRoughness",
          {{"baseColorTexture",
            {{"index", 0},
             {"extensions", {{"KHR_texture_transform", {{"scale", {scale, scale}}}}}}}}}}});
  }
  source.json["materials"][1]["name"] = longName;
  Import(source);
  EXPECT_NEAR(OnlyMesh().uvs[2][0], 1, 1e-6) << "each picture has its own transform";
  std::string names;
  double glow = 2;
  for (host::BaseMaterial* material = Doc().GetFirstMaterial(); material != nullptr;
       material = material->GetNext(), glow = glow == 2 ? 3 : 5) {
    names += material->GetName().ToUtf8() + " ";
    EXPECT_EQ(material->GetDataInstance()->GetVector(host::MATERIAL_LUMINANCE).x, glow);
    EXPECT_DOUBLE_EQ(material->GetDataInstance()->GetReal(host::MATERIAL_SPECULAR), glow / 20);
    EXPECT_EQ(material->GetFirstShader()->GetDataInstance()->GetVector(engine::kBitmapTiles).x,
              glow);
  }
  EXPECT_EQ(names, "Unused " + longName + " C ");
}

TEST_F(GltfReader, ExtensionsThatAreNeededAreNamed) {
  Source source;
  source.Mesh(kTriangle);
  source.json["extensionsUsed"] = {"EXT_of_nobody", "KHR_materials_of_nobody", "EXT_other"};
  source.json["extensionsRequired"] = {"KHR_materials_of_nobody", "KHR_mesh_quantization"};
  Import(source);
  EXPECT_TRUE(HasNote("The extension EXT_of_nobody is left out."));
  EXPECT_TRUE(
      HasNote("The extension KHR_materials_of_nobody is left out, although the file "
              "requires it."));
  source.json["extensionsRequired"].push_back("EXT_of_nobody");
  EXPECT_NE(
      Refusal(Write(source)).find("it needs the extension EXT_of_nobody, which is not known here."),
      std::string::npos);
}

TEST_F(GltfReader, PicturesOfOneContentAreOneFileWithASuffix) {
  Source source;
  source.Mesh(kTriangle)["material"] = 0;
  for (int i = 0; i < 3; ++i) {
    source.json["images"].push_back(
        {{"name", i == 2 ? "other.PNG" : "wood.001"},
         {"uri", std::string("data:image/png;base64,iVBORw0KGgo") + (i == 2 ? "B" : "A")}});
    source.json["textures"].push_back({{"source", i}});
    source.json["materials"].push_back(
        {{"pbrMetallicRoughness", {{"baseColorTexture", {{"index", i}}}}}, {"name", "M"}});
  }
  Import(source);
  EXPECT_EQ(TextureFiles(), (std::vector<std::string>{"other.PNG", "wood.001.png"}));
  EXPECT_EQ(engine::EmbeddedFilesOf(Doc()).size(), 2U);
}

// States that a file claims are believed only as far as they lead to something.
TEST_F(GltfReader, StatesComeWithWhatTheyShowAndHide) {
  Source source;
  Json& part = source.Mesh(kTriangle);
  source.json["materials"] = {{{"name", "A"}}, Json::object()};
  part["material"] = 0;
  part["extensions"]["KHR_materials_variants"]["mappings"] = {
      {{"material", 1}, {"variants", {1000}}}};
  for (int i = 0; i < 1001; ++i)
    source.json["extensions"]["KHR_materials_variants"]["variants"].push_back({{"name", "V"}});
  Import(source);
  EXPECT_EQ(engine::TakeImportedStates(Doc()).states.size(), 1000U);
  EXPECT_TRUE(HasNote("States beyond the first ones are left out: 1."));
  source.json["extras"]["stagemarks"]["states"] = {
      {{"name", 7}, {"date", "yesterday"}, {"variant", 1000}, {"camera", 0}, {"size", {-1, "x"}}},
      {{"variant", 4000}, {"date", "2025-02-03T04:05"}, {"hidden", {0, 17, "x", nullptr}}},
      "no state"};
  const std::string path = Write(source);
  std::tm local{7, 6, 5, 4, 2, 121, 0, 0, -1, 0, nullptr};
  const timespec changed{std::mktime(&local), 0};
  const timespec times[] = {changed, changed};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  Open(path);
  const engine::ImportedStates kept = engine::TakeImportedStates(Doc());
  ASSERT_EQ(kept.states.size(), 3U);
  const engine::NodeId object = engine::IdOf(*Doc().GetFirstObject());
  const auto material = [](const engine::ImportedState& state) { return state.looks.at(0).second; };
  EXPECT_EQ(kept.switched, std::vector{object});
  EXPECT_EQ(kept.states[1].hidden, std::vector{object});
  EXPECT_NE(material(kept.states[0]), material(kept.states[1]));
  EXPECT_EQ(material(kept.states[1]), engine::IdOf(*Material("A")));
  EXPECT_EQ(kept.states[0].name, "");
  EXPECT_EQ(kept.states[0].camera, 0U) << "the node bears no camera";
  EXPECT_EQ(kept.states[0].width, 0);
  const host::LocalFileTime& date = kept.states[0].date;
  EXPECT_EQ((std::vector{date.year, date.month, date.day, date.hour, date.minute, date.second}),
            (std::vector{2021, 3, 4, 5, 6, 7}))
      << "that of the file";
  EXPECT_EQ(kept.states[1].date.year, 2021);
  EXPECT_FALSE(engine::HasImportedStates(Doc()));
}

TEST_F(GltfReader, WhatIsDamagedIsSaid) {
  struct Case {
    const char* place;
    Json value;
    const char* message;
  };
  for (const Case& c : std::vector<Case>{
           {"/bufferViews/0/byteLength", 3600, "buffer 0 is too short: it has 36 bytes, and 3600"},
           {"/bufferViews/0/byteOffset", -1, "\"byteOffset\" is not a whole number from 0 on."},
           {"/bufferViews/0/byteOffset", 18446744073709551615ULL, "\"byteOffset\" is not a whole"},
           {"/bufferViews/0/buffer", 7, "entry 7 of \"buffers\" does not exist."},
           {"/accessors/0/count", 4, "accessor 0 goes beyond its buffer view."},
           {"/accessors/0/count", 4294967296, "accessor 0 has too many elements."},
           {"/accessors/0/byteOffset", 18446744073709551614ULL, "accessor 0 goes beyond"},
           {"/accessors/0/type", "VEC2", "the points of a mesh have 2 numbers each."},
           {"/accessors/0/componentType", 5130, "numbers of the component type 5130 are not"},
           {"/meshes/0/primitives/0/mode", 9, "a mesh is of the mode 9, which is not known."},
           {"/meshes/0/primitives/0/material", 3, "entry 3 of \"materials\" does not exist."},
           {"/meshes/0/primitives", "none", "\"primitives\" is not a list."},
           {"/nodes/0/mesh", 0.5, "\"mesh\" is not a whole number from 0 on."},
           {"/nodes/0/mesh", 5, "entry 5 of \"meshes\" does not exist."},
           {"/nodes/0/skin", 0, "entry 0 of \"skins\" does not exist."},
           {"/nodes/0/matrix", {1, 2}, "a node's matrix has 2 numbers."},
           {"/nodes/0/translation", {1, "x", 2}, "\"translation\" is not a number."},
           {"/scenes/0/nodes", {4}, "entry 4 of \"nodes\" does not exist."},
           {"/asset/version", "3.0", "it is of version 3.0 of glTF."}}) {
    Source source;
    source.Mesh(kTriangle);
    source.json[Json::json_pointer(c.place)] = c.value;
    const std::string why = std::string("The file cannot be read: ") + c.message;
    EXPECT_NE(Refusal(Write(source)).find(why), std::string::npos) << c.place;
  }
  for (const auto& [key, value] : {std::pair("count", Json(1)), std::pair("type", Json("VEC4"))}) {
    Source bound = Skinned();
    bound.json["accessors"].back()[key] = value;
    EXPECT_NE(Refusal(Write(bound)).find("a skin has fewer bind matrices than joints."),
              std::string::npos)
        << key;
  }
  Source skinned = Skinned();
  skinned.json["skins"][0]["joints"] = {2};
  EXPECT_NE(Refusal(Write(skinned)).find("names joint 1, and its skin has 1."), std::string::npos);
  skinned.json["skins"][0]["joints"] = {99};
  EXPECT_NE(Refusal(Write(skinned)).find("entry 99 of \"nodes\" does not"), std::string::npos);
}

TEST_F(GltfReader, NodesStandInOnePlaceEach) {
  Source source;
  source.json["nodes"] = {{{"name", "A"}, {"children", {1, 1, 2}}},
                          {{"name", "B"}, {"children", {0}}},
                          {{"name", "C"}, {"children", {1}}}};
  Import(source);
  EXPECT_EQ(Counts().objects, 3U);
  EXPECT_TRUE(HasNote("Nodes that are named in several places stand in the first one only: 3."));
  source.json.erase("scenes");
  source.json["nodes"] = {{{"name", "A"}}, {{"name", "B"}, {"children", {0}}}};
  Import(source);
  EXPECT_EQ(Only("A")->GetUp(), Only("B")) << "without scenes the file's nodes are shown";
}

TEST_F(GltfReader, BinaryFilesAndTextsOfOldPrograms) {
  Source source;
  source.Mesh(kTriangle);
  source.json["nodes"][0]["name"] = "Caf\xC3\xA9";
  source.json["buffers"] = {{{"byteLength", source.bytes.size()}}};
  std::string text = source.json.dump();
  text.erase(text.find('\xC3'), 2).insert(text.find("Caf") + 3, "\xE9");
  const auto binary = [&](std::size_t cut) {
    text.resize((text.size() + 3) / 4 * 4, ' ');
    const double size = static_cast<double>(text.size());
    const double data = static_cast<double>(source.bytes.size());
    const std::string file = "glTF" + Packed(kUnsignedInt, {2, 28 + size + data}) +
                             Packed(kUnsignedInt, {size}) + "JSON" + text +
                             Packed(kUnsignedInt, {data}) + std::string("BIN\0", 4) + source.bytes;
    WriteText(folder_ / "s.glb", file.substr(0, file.size() - cut));
    return folder_ / "s.glb";
  };
  Open(binary(0));
  EXPECT_EQ(Only("Caf\xC3\xA9")->GetType(), host::Opolygon);
  EXPECT_TRUE(HasNote("Texts that are no UTF-8 were taken for Latin-1."));
  for (const std::size_t cut : {std::size_t{1}, source.bytes.size(), text.size()})
    EXPECT_NE(Refusal(binary(cut)).find("The file cannot be read: "), std::string::npos) << cut;
}

// As bytes or floats, with opacity or without; white ones are as good as none.
TEST_F(GltfReader, ColorsOfCornersComeWithTheirMesh) {
  struct Case {
    int kind;
    const char* type;
    std::vector<double> numbers;
    std::array<float, 4> meant;  // of the second point; all zero: no colors
  };
  const std::vector<Case> cases = {
      {kFloat, "VEC4", {0, 0, 0, 1, .5, .25, 1, .75, 1, 1, 1, 1}, {.5f, .25f, 1, .75f}},
      {kUnsignedByte, "VEC3", {0, 0, 0, 51, 102, 255, 0, 0, 0}, {.2f, .4f, 1, 1}},
      {kUnsignedShort, "VEC4", {0, 0, 0, 0, 13107, 0, 0, 65535, 0, 0, 0, 0}, {.2f, 0, 0, 1}},
      {kFloat, "VEC3", {1, 1, 1, 1, 1, 1, 1, 1, 1}, {}}};
  for (const Case& c : cases) {
    Source source;
    Json& part = source.Mesh(kTriangle);
    part["attributes"]["COLOR_0"] = source.Numbers(c.kind, c.type, 3, c.numbers, c.kind != kFloat);
    Import(source);
    const engine::Mesh& mesh = OnlyMesh();
    if (c.meant == std::array<float, 4>{}) {
      EXPECT_TRUE(mesh.colors.empty());
      continue;
    }
    ASSERT_EQ(mesh.colors.size(), 4U);
    for (std::size_t corner = 0; corner < 3; ++corner) {
      if (mesh.points[static_cast<std::size_t>(mesh.polygons[0][corner])][0] == 0) continue;
      for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(mesh.colors[corner][k], c.meant[k], 1e-5);
    }
  }
}

// Each picture as it lies, whatever the others do.
TEST_F(GltfReader, PicturesOfASurfaceComeWithTheirStrengthsAndSamplers) {
  Source source;
  source.Mesh(kTriangle)["material"] = 0;
  source.json["images"] = {{{"uri", "a.png"}}, {{"uri", "b.webp"}}};
  source.json["samplers"] = {{{"wrapS", 33071}, {"wrapT", 33648}, {"magFilter", 9728}}};
  source.json["textures"] = {
      {{"source", 0}}, {{"sampler", 0}, {"extensions", {{"EXT_texture_webp", {{"source", 1}}}}}}};
  const Json turned = {{"index", 1},
                       {"extensions", {{"KHR_texture_transform", {{"rotation", 0.5}}}}}};
  Json material = {{"pbrMetallicRoughness",
                    {{"baseColorTexture", {{"index", 0}}}, {"metallicRoughnessTexture", turned}}},
                   {"normalTexture", {{"index", 0}, {"scale", 0.25}}},
                   {"occlusionTexture", {{"index", 1}, {"strength", 0.75}}},
                   {"extensions", {{"KHR_materials_transmission", {{"transmissionFactor", 0.5}}}}}};
  source.json["materials"] = Json::array({material});
  Import(source);
  const host::BaseMaterial& made = *Doc().GetFirstMaterial();
  const host::BaseContainer& data = *made.GetDataInstance();
  EXPECT_EQ(data.GetReal(engine::kMaterialNormalStrength), 0.25);
  EXPECT_EQ(data.GetReal(engine::kMaterialOcclusion), 0.75);
  EXPECT_EQ(data.GetReal(host::MATERIAL_METALLIC), 1);
  EXPECT_EQ(data.GetReal(engine::kMaterialTransmission), 0.5);
  struct Case {
    host::LONG link;
    const char* file;
    double rotation;
    host::LONG wraps;  // u * 10 + v
  };
  for (const Case& c : {Case{host::MATERIAL_COLOR_SHADER, "a.png", 0, 0},
                        {host::MATERIAL_NORMAL_SHADER, "a.png", 0, 0},
                        {engine::kMaterialRoughnessShader, "b.webp", 0.5, 12},
                        {engine::kMaterialMetallicShader, "b.webp", 0.5, 12},
                        {engine::kMaterialOcclusionShader, "b.webp", 0, 12}}) {
    EXPECT_EQ(ShaderFile(made, c.link), c.file) << c.link;
    const host::BaseContainer& shader =
        *static_cast<const host::BaseShader*>(data.GetLink(c.link, &Doc()))->GetDataInstance();
    EXPECT_EQ(shader.GetReal(engine::kBitmapRotation), c.rotation) << c.link;
    EXPECT_EQ(shader.GetLong(engine::kBitmapWrapU) * 10 + shader.GetLong(engine::kBitmapWrapV),
              c.wraps)
        << c.link;
    EXPECT_EQ(shader.GetBool(engine::kBitmapIsSharp) != 0, c.wraps != 0) << c.link;
  }
}

TEST_F(GltfReader, PicturesThatLieByOtherCoordinatesAreNamedAndNotShown) {
  Source source;
  Json& mesh = source.Mesh(kTriangle);
  mesh["material"] = 0;
  for (const int set : {0, 1})
    mesh["attributes"]["TEXCOORD_" + std::to_string(set)] =
        source.Numbers(kFloat, "VEC2", 3, {5. * set, 0, 1 + 5. * set, 0, 0, 1});
  source.json["images"] = {{{"uri", "a.png"}}};
  source.json["textures"] = {{{"source", 0}}};
  for (const auto& [color, dark] :
       {std::pair(0, 0), std::pair(0, 1), std::pair(1, 1), std::pair(-1, 1)}) {
    Json material = {{"name", "Wall"}, {"occlusionTexture", {{"index", 0}, {"texCoord", dark}}}};
    if (color >= 0)
      material["pbrMetallicRoughness"]["baseColorTexture"] = {{"index", 0}, {"texCoord", color}};
    source.json["materials"] = Json::array({material});
    Import(source);
    const bool isLeftOut = color == 0 && dark == 1;
    const engine::Mesh& shown = *engine::MeshOf(*Doc().GetFirstObject());
    EXPECT_EQ(shown.uvs[2][0], color == 0 ? 1 : 6);
    EXPECT_EQ(ShaderFile(*Doc().GetFirstMaterial(), engine::kMaterialOcclusionShader),
              isLeftOut ? "" : "a.png");
    EXPECT_EQ(HasNote("are left out, as in \"Wall\": 1."), isLeftOut);
  }
}

TEST_F(GltfReader, LampsHaveTheSizeThatTheirExtrasSay) {
  Source source;
  source.Mesh(kTriangle);
  const Json lights = {{{"type", "point"}, {"extras", {{"radius", 0.25}}}},
                       {{"type", "point"}, {"extras", {{"radius", "large"}}}}};
  source.json["extensions"]["KHR_lights_punctual"]["lights"] = lights;
  for (int i = 0; i < 2; ++i) {
    source.json["nodes"].push_back({{"extensions", {{"KHR_lights_punctual", {{"light", i}}}}}});
    source.json["scenes"][0]["nodes"].push_back(i + 1);
  }
  Import(source);
  const std::vector<host::BaseObject*> found = OfType(host::Olight);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0]->GetDataInstance()->GetReal(engine::kLightRadius), 25);
  EXPECT_EQ(found[1]->GetDataInstance()->GetReal(engine::kLightRadius), 0);
}

}  // namespace
}  // namespace tests
