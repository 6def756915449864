// Every way in which an import can fail: the file, the limits, the child. Always a message that
// names the file, and never more than a message.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>

#include "engine/import/SourceCheck.h"
#include "engine/scene/NodeIds.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

class Worker : public ImportSession {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    WriteText(folder_ / name, text);
    return folder_ / name;
  }
  // The message about an import that the faulty child of that name carries out.
  std::string Ended(const std::string& how, const engine::ImportLimits& limits = {}) {
    return Refusal(Write(how + ".obj", "v 0 0 0\n"), limits, FAULTY_WORKER);
  }
  // No child is left, neither running nor unread.
  void TearDown() override {
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }
  ScratchFolder folder_;
};

void ExpectPart(const std::string& message, const std::string& part) {
  EXPECT_NE(message.find(part), std::string::npos) << message << "\nlacks: " << part;
}

TEST_F(Worker, EveryEndOfTheChildHasItsMessage) {
  const std::vector<std::pair<const char*, const char*>> ends = {
      {"crash", "The importer stopped (signal 11). The file is damaged or not supported."},
      {"abort", "The importer stopped (signal 6). The file is damaged or not supported."},
      {"confined", "The importer stopped (signal 6). The file is damaged or not supported."},
      {"killed", "The importer was ended by the system, probably for lack of memory."},
      {"status", "The importer stopped (status 3). The file is damaged or not supported."},
      {"nothing", "The importer stopped (status 0). The file is damaged or not supported."},
      {"noise", "The importer's answer is damaged."},
      {"garbage", "The importer's answer is damaged: "},
      {"silent", "The importer's answer is damaged: "},
      {"control", "line line [31m"}};
  for (const auto& [how, message] : ends) {
    const std::string said = Ended(how);
    ExpectPart(said, message);
    ExpectPart(said, "\"" + (folder_ / how) + ".obj\" was not imported. ");
  }
}

TEST_F(Worker, TheChildInheritsNothing) {
  std::ifstream open(SceneFile("CMakeLists.txt"));
  ASSERT_TRUE(open.good());
  ExpectPart(Ended("leaks"), "was not imported. nothing");
}

TEST_F(Worker, AChildThatWasTakenOverCanOnlyReadBelowTheScene) {
  const std::string said = Ended("hostile");
  if (said.find("no means") != std::string::npos)
    GTEST_SKIP() << "this kernel cannot confine processes (Landlock, seccomp)";
  ExpectPart(said, "was not imported. nothing");
  EXPECT_EQ(Names(folder_.Path()), "hostile.obj");
  EXPECT_EQ(ReadText(folder_ / "hostile.obj"), "v 0 0 0\n");
}

TEST_F(Worker, WhatASystemCannotConfineIsSaidOnce) {
  const std::string scene = Write("unconfined.obj", "v 0 0 0\n");
  for (const std::size_t notes : {1, 0}) {
    const auto imported = engine::ImportScene(services_.Get(), scene, FAULTY_WORKER);
    ASSERT_TRUE(imported) << imported.Message();
    EXPECT_EQ(imported.Value().notes.size(), notes);
  }
}

TEST_F(Worker, NotesAreAFewShortLines) {
  const auto imported =
      engine::ImportScene(services_.Get(), Write("wordy.obj", "v 0 0 0\n"), FAULTY_WORKER);
  ASSERT_TRUE(imported) << imported.Message();
  const std::vector<std::string>& notes = imported.Value().notes;
  EXPECT_EQ(std::count(notes.begin(), notes.end(), std::string(1000, 'n') + "..."), 1000);
  EXPECT_LE(notes.size(), 1001U);
}

TEST_F(Worker, APersonMayChooseOtherLimits) {
  const auto chosen = [&](const char* memory, const char* seconds) {
    ::setenv(engine::kImportMemoryVariable, memory, 1);
    ::setenv(engine::kImportSecondsVariable, seconds, 1);
    const engine::ImportLimits limits = engine::ChosenImportLimits(services_.person);
    ::unsetenv(engine::kImportMemoryVariable);
    ::unsetenv(engine::kImportSecondsVariable);
    return std::to_string(limits.memoryBytes >> 20) + " " + std::to_string(limits.seconds);
  };
  EXPECT_EQ(chosen("", ""), "1536 30");
  EXPECT_EQ(chosen("2.5", "600"), "2560 600");
  EXPECT_EQ(chosen("0.5", "0.5"), "512 1");
  EXPECT_EQ(chosen("65535", "999999"), std::to_string(65535 << 10) + " 999999");
  EXPECT_EQ(services_.person.TakeTranscript(), "");
  for (const char* no : {"much", "0", "-1", "4 GiB", "1e9", "nan", "1000000"}) {
    EXPECT_EQ(chosen(no, no), "1536 30") << no;
    const std::string start = "tell: STAGEMARKS_IMPORT_";
    const std::string end = "=\"" + std::string(no) + "\" is no number of ";
    EXPECT_EQ(services_.person.TakeTranscript(),
              start + "MEMORY" + end + "GiB and is not followed.\n" + start + "SECONDS" + end +
                  "seconds and is not followed.\n");
  }
  EXPECT_EQ(chosen("65536", ""), "1536 30");
}

TEST_F(Worker, TimeIsLimited) {
  engine::ImportLimits limits;
  limits.seconds = 1;
  for (const char* how : {"sleep", "spin", "closed"}) {
    const auto start = std::chrono::steady_clock::now();
    ExpectPart(Ended(how, limits), "The import took longer than 1 seconds and was stopped.");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  }
}

TEST_F(Worker, WhatItSendsIsLimited) {
  engine::ImportLimits limits;
  limits.resultBytes = 3 << 20;
  ExpectPart(Ended("flood", limits), "The scene is too large to import.");
}

TEST_F(Worker, ThePersonCanStopIt) {
  services_.person.StopProgressAt(3);
  for (const char* how : {"sleep", "chatter"}) ExpectPart(Ended(how), "The import was stopped.");
}

TEST_F(Worker, MemoryIsLimited) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers map more address space than any limit allows";
#endif
  engine::ImportLimits limits;
  for (const std::uint64_t megabytes : {1, 8, 64, 128}) {
    limits.memoryBytes = megabytes << 20;
    engine::Result<engine::Imported> imported = engine::ImportScene(
        services_.Get(), SceneFile("scenes/dungeon/dungeon.gltf"), IMPORT_WORKER, limits);
    if (!imported) ExpectPart(imported.Message(), "was not imported. ");
    EXPECT_TRUE(!imported || megabytes > 8) << megabytes;
  }
  // Points that take no room in the file, as glTF allows.
  limits.memoryBytes = 512U << 20;
  const std::string said = Refusal(
      Write("zeros.gltf",
            R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
            R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"accessors":[)"
            R"({"componentType":5126,"count":1000000000,"type":"VEC3"}]})"),
      limits);
  ExpectPart(said, "accessor 0 has more elements than it gives numbers for.");
  // The importing library believes what a file claims.
  const std::string claim =
      R"(<?xml version="1.0"?><COLLADA version="1.4.1"><library_geometries><geometry id="g"><mesh>)"
      R"(<source id="p"><float_array id="f" count="4000000000">1 2 3</float_array>)"
      R"(</source></mesh></geometry></library_geometries></COLLADA>)";
  ExpectPart(Refusal(Write("claim.dae", claim), limits),
             "The scene needs more memory than an import may use (0.5 GiB).");
}

TEST_F(Worker, AMissingProgramIsNamed) {
  ExpectPart(Refusal(SceneFile("scenes/spider/spider.obj"), {}, "/nowhere/at/all"),
             "The importer could not be started");
}

TEST_F(Worker, FilesAreLookedAtFirst) {
  const std::string text = "{\"asset\": {}}";
  engine::ImportLimits small;
  small.fileBytes = 4;
  ExpectPart(Refusal(folder_ / "missing.gltf"), "missing.gltf\" does not exist.");
  ExpectPart(Refusal("scene.gltf"), "is not a full path.");
  ExpectPart(Refusal(folder_.Path()), "is a folder");
  ExpectPart(Refusal(Write("empty.gltf", "")), "is empty.");
  ExpectPart(Refusal(Write("scene.blend", text)), "has a suffix that is not imported");
  ExpectPart(Refusal(Write("scene", text)), "has a suffix that is not imported");
  ExpectPart(Refusal(Write("large.gltf", text), small), "is too large to import");
  ASSERT_EQ(::mkfifo((folder_ / "pipe.obj").c_str(), 0600), 0);
  ExpectPart(Refusal(folder_ / "pipe.obj"), "is not a plain file.");
  ASSERT_EQ(::mkdir((folder_ / "folder.obj").c_str(), 0700), 0);
  ExpectPart(Refusal(folder_ / "folder.obj"), "is a folder");
  const std::string locked = Write("locked.gltf", text);
  ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
  if (::geteuid() != 0) {
    ExpectPart(Refusal(locked), "cannot be opened");
  }
}

TEST_F(Worker, ABeginningThatBeliesTheSuffixIsRefused) {
  for (const char* name : {"a.gltf", "a.GLB", "a.fbx", "a.dae", "a.obj"}) {
    ExpectPart(
        Refusal(Write(name, std::string("\x7f\0ELF and so on, long enough for any head", 40))),
        "is not what its suffix says, or it is damaged.");
  }
}

TEST_F(Worker, FilesMayBeginInManyWays) {
  const std::string wide("\xFF\xFE<\0?\0", 6);
  const std::string comment = ";" + std::string(4000, '-');
  struct Case {
    const char* name;
    std::string bytes;
    bool isRight;
  };
  for (const Case& c :
       std::vector<Case>{{"a.gltf", "\xEF\xBB\xBF \t\r\n{}", true},
                         {"a.gltf", "\n{", true},
                         {"a.gltf", " x{", false},
                         {"a.gltf", "\xEF\xBB{}", false},
                         {"a.gltf", "   ", false},
                         {"a.glb", "glTF" + std::string(16, '\0'), true},
                         {"a.glb", "glTF" + std::string(15, '\0'), false},
                         {"a.glb", "glTf" + std::string(16, '\0'), false},
                         {"a.obj", "anything", true},
                         {"a.obj", std::string("any\0thing", 9), false},
                         {"a.obj", std::string("\xFE\xFF\0v\0 ", 6), true},
                         {"a.fbx", std::string("Kaydara FBX Binary  \0", 21), true},
                         {"a.fbx", std::string("Kaydara FbX Binary  \0", 21), false},
                         {"a.fbx", "; of FBX", true},
                         {"a.fbx", comment + "FBX", true},
                         {"a.fbx", std::string("FBX\0", 4), false},
                         {"a.fbx", "; of another program", false},
                         {"a.dae", "\n <?xml?>", true},
                         {"a.dae", wide, true},
                         {"a.gltf", wide, false},
                         {"a.dae", "xml", false}})
    EXPECT_EQ(bool{engine::CheckSource(Write(c.name, c.bytes), {}).Ok()}, c.isRight)
        << c.name << " " << c.bytes;
}

TEST_F(Worker, AnEmptySceneIsNoted) {
  Open(Write("nothing.gltf", R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{}]})"));
  EXPECT_EQ(Counts().objects, 0U);
  EXPECT_TRUE(HasNote("The file holds no objects."));
}

TEST_F(Worker, SuffixesAreTakenInAnyCase) {
  for (const char* name : {"a.gltf", "a.GLTF", "a.Glb", "a.OBJ", "a.fbx", "a.DAE"})
    EXPECT_TRUE(engine::IsImportable(name)) << name;
  for (const char* name : {"a.blend", "a.3ds", "gltf", "a.gltf.zip", ""})
    EXPECT_FALSE(engine::IsImportable(name)) << name;
  Open(Write("Three.OBJ", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
  EXPECT_EQ(Counts().polygons, 1U);
  EXPECT_EQ(Doc().GetDocumentName().GetString().ToUtf8(), "Three.c4d");
}

TEST_F(Worker, AFileCannotPullInWhatLiesElsewhere) {
  // The buffer exists and is long enough, but it lies above the scene's folder.
  ASSERT_EQ(::mkdir((folder_ / "inner").c_str(), 0700), 0);
  Write("secret.bin", std::string(36, '\0'));
  const auto scene = [&](const std::string& uri) {
    return "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{"
           "\"mesh\":0}],\"meshes\":[{"
           "\"primitives\":[{\"attributes\":{\"POSITION\":0}}]}],\"buffers\":[{\"uri\":\"" +
           uri +
           "\",\"byteLength\":36}],\"bufferViews\":[{\"buffer\":0,\"byteLength\":36}],"
           "\"accessors\":[{\"bufferView\":0,"
           "\"componentType\":5126,\"count\":3,\"type\":\"VEC3\",\"min\":[0,0,0],\"max\":[0,0,0]}]"
           "}";
  };
  Write("inner/near.bin", std::string(36, '\0'));
  Open(Write("inner/fine.gltf", scene("near.bin")));
  EXPECT_EQ(Counts().objects, 1U);
  ExpectPart(Refusal(Write("inner/above.gltf", scene("../secret.bin"))), "The file cannot be read");
  ASSERT_EQ(::symlink((folder_ / "secret.bin").c_str(), (folder_ / "inner/link.bin").c_str()), 0);
  ExpectPart(Refusal(Write("inner/linked.gltf", scene("link.bin"))), "The file cannot be read");
  // A scene that is a link has its files beside what it leads to, and one in a folder that is a link
  // has them there. Wherever it is read, its elements have the same identities.
  const engine::NodeId first = engine::IdOf(*Doc().GetFirstObject());
  ASSERT_EQ(::symlink((folder_ / "inner/fine.gltf").c_str(), (folder_ / "way.gltf").c_str()), 0);
  ASSERT_EQ(::symlink((folder_ / "inner").c_str(), (folder_ / "way").c_str()), 0);
  for (const char* way : {"way.gltf", "way/fine.gltf"}) {
    Open(folder_ / way);
    ASSERT_EQ(Counts().objects, 1U) << way;
    EXPECT_EQ(engine::IdOf(*Doc().GetFirstObject()), first) << way;
  }
  ASSERT_EQ(::mkfifo((folder_ / "inner/pipe.bin").c_str(), 0600), 0);
  ExpectPart(Refusal(Write("inner/piped.gltf", scene("pipe.bin"))), "The file cannot be read");
}

struct Watcher : ScriptedPerson {
  bool Progress(double fraction, const std::string& what) override {
    EXPECT_EQ(what, "Importing " + name);
    EXPECT_GE(fraction, last);
    seen += fraction > last && fraction < 1;
    last = fraction;
    return true;
  }
  std::string name;
  double last = 0;
  int seen = 0;  // steps between begin and end
};

TEST_F(Worker, AnImportShowsItsProgress) {
  for (const char* scene : {"scenes/dungeon/dungeon.gltf", "scenes/spider/spider.fbx"}) {
    Watcher watcher;
    watcher.name = std::string(scene).substr(std::string(scene).rfind('/') + 1);
    const engine::Services all = services_.Get();
    const engine::Services services{all.files,  all.clock,   watcher,
                                    all.ledger, all.folders, all.viewer};
    ASSERT_TRUE(engine::ImportScene(services, SceneFile(scene), IMPORT_WORKER));
    EXPECT_GE(watcher.seen, 1) << scene;
    EXPECT_EQ(watcher.last, 1) << scene;
  }
}

TEST_F(Worker, AChainOfNodesNeedsNoStack) {
  std::string text =
      "{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[";
  constexpr int kDepth = 200000;
  for (int i = 1; i < kDepth; ++i) text += "{\"children\":[" + std::to_string(i) + "]},";
  Open(Write("deep.gltf", text + "{}]}"));
  EXPECT_EQ(Counts().objects, static_cast<std::size_t>(kDepth));
}

}  // namespace
}  // namespace tests
