// How a glTF file holds its parts: chunks of binary files, versions, addresses, packed views. What
// does not fit is refused by its words.
#include <algorithm>

#include "engine/import/SceneReader.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/Ownership.h"
#include "tests/import/GltfSource.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace tests {
namespace {

class GltfContainer : public ImportSession {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    WriteText(folder_ / name, text);
    return folder_ / name;
  }
  // Imports a file and expects one triangle, or that message where there is one.
  void Expect(const std::string& path, const std::string& refusal, const std::string& what) {
    if (!refusal.empty()) {
      const std::string said = Refusal(path);
      EXPECT_NE(said.find("The file cannot be read: " + refusal), std::string::npos)
          << what << ": " << said;
      return;
    }
    Open(path);
    EXPECT_EQ(Counts().polygons, 1U) << what;
  }
  ScratchFolder folder_;
};

std::string Chunk(const std::string& kind, const std::string& bytes) {
  return Packed(kUnsignedInt, {static_cast<double>(bytes.size())}) + kind + bytes;
}

TEST_F(GltfContainer, ChunksOfABinaryFileAreFoundByTheirKinds) {
  Source source;
  source.Mesh(kTriangle);
  source.json["buffers"] = {{{"byteLength", source.bytes.size()}}};
  const std::string text = Chunk("JSON", source.json.dump());
  const std::string bytes = Chunk(std::string("BIN\0", 4), source.bytes);
  const std::string other = Chunk("ODDS", "of another kind");
  const std::string wrong = Chunk(std::string("BIN\0", 4), std::string(36, 'x'));
  struct Case {
    const char* what;
    double version;
    std::string chunks;
    const char* refusal;
  };
  for (const Case& c : std::vector<Case>{
           {"plain", 2, text + bytes, ""},
           {"others before, between and behind", 2, other + text + other + bytes + other, ""},
           {"bytes first", 2, bytes + text, ""},
           {"a second text", 2, text + Chunk("JSON", "[]") + bytes, ""},
           {"second bytes", 2, text + bytes + wrong, ""},
           {"filled up with zeros", 2,
            Chunk("JSON", source.json.dump() + std::string(3, '\0')) + bytes, ""},
           {"something short behind", 2, text + bytes + "1234567", ""},
           {"no text", 2, bytes, "its description is missing."},
           {"no bytes", 2, text, "buffer 0 has no data."},
           {"no JSON", 2, Chunk("JSON", "none at all"), "its description is no JSON"},
           {"no object", 2, Chunk("JSON", "[1]    "), "its description is no JSON"},
           {"cut off", 2, (text + bytes).substr(0, text.size() + 20), "it is cut off."},
           {"another version", 3, text + bytes, "it is of version 3 of glTF."}}) {
    const std::string head =
        "glTF" + Packed(kUnsignedInt, {c.version, 12 + static_cast<double>(c.chunks.size())});
    Expect(Write("s.glb", head + c.chunks), c.refusal, c.what);
  }
}

TEST_F(GltfContainer, VersionsAreReadHoweverTheyAreWritten) {
  const std::vector<std::pair<Json, const char*>> cases = {{"2.0", ""},
                                                           {"2.1", ""},
                                                           {"2", ""},
                                                           {2, ""},
                                                           {2.0, ""},
                                                           {nullptr, ""},
                                                           {"3.0", "it is of version 3.0 of glTF."},
                                                           {"20", "it is of version 20 of glTF."},
                                                           {12, "it is of version 12 of glTF."},
                                                           {"", "it is of version  of glTF."}};
  for (const auto& [version, refusal] : cases) {
    Source source;
    source.Mesh(kTriangle);
    source.json["asset"]["version"] = version;
    source.json["buffers"] = {{{"uri", "s.bin"}}};
    Write("s.bin", source.bytes);
    Expect(Write("s.gltf", source.json.dump()), refusal, version.dump());
  }
}

TEST_F(GltfContainer, BuffersAreFoundHoweverTheyAreNamed) {
  Source source;
  source.Mesh(kTriangle);
  for (const char* name : {"50%20.bin", "a b.bin", "parts.bin", "c\\d.bin"})
    Write(name, source.bytes);
  const std::string coded = "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA";
  std::string percents;
  for (const char c : source.bytes) {
    const auto byte = static_cast<unsigned char>(c);
    percents += {'%', "0123456789abcdef"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
  }
  const std::vector<std::pair<std::string, const char*>> cases = {
      {"50%20.bin", ""},
      {"a%20b.bin", ""},
      {"%61%20b%2ebin", ""},
      {"./parts.bin", ""},
      {".\\parts.bin", ""},
      {"c\\d.bin", ""},
      {"data:;base64," + coded, ""},
      {"data:application/gltf-buffer;base64," + coded + "====", ""},
      {"data:," + percents, ""},
      {"data:;base64", "an address holds no data."},
      {"data:;base64," + coded + "*", "the data in an address are no base64."},
      {"data:;base64,AAAA", "buffer 0 is too short: it has 3 bytes, and 36 from byte 0 on are"},
      {"parts.bi", "its buffer \"parts.bi\" is missing, or lies outside the scene's folder."},
      {"parts.bin%00", "its buffer \"parts.bin%00\" is missing"}};
  for (const auto& [address, refusal] : cases) {
    source.json["buffers"] = {{{"uri", address}, {"byteLength", 36}}};
    Expect(Write("s.gltf", source.json.dump()), refusal, address);
  }
  source.json["buffers"] = {{{"uri", "parts.bin"}}, Json::object()};
  source.json["bufferViews"][0]["buffer"] = 1;
  Expect(Write("s.gltf", source.json.dump()), "buffer 1 has no data.", "without an address");
  source.json["bufferViews"][0].erase("buffer");
  Expect(Write("s.gltf", source.json.dump()), "a buffer view names no buffer.", "without a buffer");
}

// A view may be packed as its parameters say only where the unpacking can rely on them.
TEST_F(GltfContainer, PackedViewsThatDoNotFitAreRefused) {
  struct Case {
    const char* mode;
    const char* filter;
    std::uint64_t stride;
    std::uint64_t count;
    bool isKnown;  // then its bytes are none
  };
  for (const Case& c : std::vector<Case>{{"ATTRIBUTES", "", 12, 3, true},
                                         {"ATTRIBUTES", "NONE", 256, 3, true},
                                         {"ATTRIBUTES", "", 260, 3, false},
                                         {"ATTRIBUTES", "", 0, 3, false},
                                         {"ATTRIBUTES", "", 10, 3, false},
                                         {"ATTRIBUTES", "OCTAHEDRAL", 4, 3, true},
                                         {"ATTRIBUTES", "OCTAHEDRAL", 8, 3, true},
                                         {"ATTRIBUTES", "OCTAHEDRAL", 12, 3, false},
                                         {"ATTRIBUTES", "QUATERNION", 8, 3, true},
                                         {"ATTRIBUTES", "QUATERNION", 4, 3, false},
                                         {"ATTRIBUTES", "EXPONENTIAL", 20, 3, true},
                                         {"ATTRIBUTES", "OF NOBODY", 4, 3, false},
                                         {"INDICES", "", 2, 4, true},
                                         {"INDICES", "", 4, 4, true},
                                         {"INDICES", "", 3, 4, false},
                                         {"TRIANGLES", "", 2, 6, true},
                                         {"TRIANGLES", "", 2, 4, false},
                                         {"TRIANGLES", "", 8, 6, false},
                                         {"OF NOBODY", "", 4, 3, false},
                                         {"ATTRIBUTES", "", 12, 2'000'000'000'000, false},
                                         {"ATTRIBUTES", "", 12, 1'000'000, true}}) {
    Source source;
    source.Mesh(kTriangle);
    source.json["buffers"] = {{{"uri", "s.bin"}}};
    source.json["bufferViews"][0]["extensions"]["EXT_meshopt_compression"] = {
        {"buffer", 0},      {"byteLength", 36},       {"mode", c.mode},
        {"count", c.count}, {"byteStride", c.stride}, {"filter", c.filter}};
    Write("s.bin", source.bytes);
    const std::string path = Write("s.gltf", source.json.dump());
    const std::string known = c.count > 100 ? "buffer view 0 claims more than it holds."
                                            : "buffer view 0 cannot be unpacked.";
    const std::string what = std::string(c.mode) + " " + c.filter;
    Expect(path,
           c.isKnown ? known
                     : "a buffer view is packed in a way that is not known here (" + what + ").",
           what + " " + std::to_string(c.stride));
  }
}

// Reading takes the first seven tenths of the whole, and may be stopped at any time.
TEST_F(GltfContainer, ReadersTellHowFarTheyAre) {
  Json chain = {{"asset", {{"version", "2.0"}}}, {"scenes", {{{"nodes", {0}}}}}};
  for (int i = 0; i < 1000; ++i) chain["nodes"].push_back({{"children", {i + 1}}});
  chain["nodes"][999].erase("children");
  for (const std::string& path :
       {Write("s.gltf", chain.dump()), SceneFile("scenes/spider/spider.fbx"),
        SceneFile("tests/import/kept/all.obj")}) {
    std::vector<double> told;
    const auto read = [&](std::size_t most) {
#ifdef __SANITIZE_ADDRESS__
      // A reader leaves what it has read to the end of its process.
      const __lsan::ScopedDisabler leavesMemory;
#endif
      const engine::OwnedDocument doc(host::BaseDocument::Alloc());
      told.clear();
      return engine::ReadForeignScene(path, *doc, [&](double fraction) {
        told.push_back(fraction);
        return told.size() < most;
      });
    };
    EXPECT_TRUE(read(1000000)) << path;
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end())) << path;
    EXPECT_GE(told.front(), 0) << path;
    EXPECT_LT(told.back(), 1) << path;
    const auto begin = std::find(told.begin(), told.end(), 0.7);
    EXPECT_NE(begin, told.end()) << path << ": converting begins with it";
    if (path.ends_with("gltf")) {
      EXPECT_EQ(begin - told.begin(), 16) << "each 64 nodes";
      EXPECT_NEAR(told.at(15), 0.7 * 0.96, 1e-9);
      EXPECT_NEAR(told.back(), 0.7 + 0.3 * 768 / 1001, 1e-9);
    }
    for (const std::size_t most : {std::size_t{1}, told.size()})
      EXPECT_EQ(read(most).Message(), "The import was stopped.") << path << " " << most;
  }
}

}  // namespace
}  // namespace tests
