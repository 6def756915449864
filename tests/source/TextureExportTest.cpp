// Textures in the project layouts: which files are gathered, and which paths are cut down to names.
#include <sys/stat.h>

#include <filesystem>

#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/SceneFile.h"
#include "host/GvNode.h"
#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

constexpr LONG kSecondFile = 1001;

class TextureExportTest : public StageTest {
 protected:
  void SetUp() override {
    for (const char* folder : {"out", "work/tex", "far"})
      fs::create_directories(Folder() + "/" + folder);
    Doc().SetDocumentPath(Filename((Folder() + "/work").c_str()));
    Doc().SetDocumentName("Scene.c4d");
  }
  std::string In(const std::string& path) const { return Folder() + "/" + path; }
  // A file whose contents are its path.
  std::string File(const std::string& path) const {
    tests::WriteText(In(path), path);
    return In(path);
  }
  BaseShader* Shader(LONG type, const std::string& file = "") {
    BaseShader* shader = BaseShader::Alloc(type);
    if (!file.empty())
      shader->GetDataInstance()->SetFilename(BITMAPSHADER_FILENAME,
                                             Filename(String(std::string_view(file))));
    return shader;
  }
  BaseShader* AddTexture(const std::string& file) {
    BaseShader* shader = Shader(Xbitmap, file);
    Material("M")->InsertShader(shader);
    return shader;
  }
  void Generate(LONG layout) {
    if (Rows().empty()) Record("A");
    Menu(kCheckAll);
    engine::ChooseFromCombo(Dialog(), kFileLayout, layout);
    Person().ChooseNext(In("out"));
    Transcript();
    Press(kGenerateFiles);
  }
  // Texture references of a scene file, in scene order, a line each.
  std::string References(const std::string& file) {
    auto opened = engine::OpenSceneFile(Services().Get(), file);
    if (!opened) return opened.Message();
    const engine::OwnedDocument doc = opened.Take();
    const BaseContainer all = doc->GetAllTextures(nullptr);
    std::string text;
    for (LONG i = 0; i < all.GetCount(); ++i)
      text += all.GetIndexData(i).GetFilename().GetString().ToUtf8() + "\n";
    return text;
  }
};

TEST_F(TextureExportTest, AnExistingPathWinsOverTheTextureFolder) {
  AddTexture(File("far/wood.png"));
  File("work/tex/wood.png");
  fs::create_directories(In("work/tex") + In("far"));
  tests::WriteText(In("work/tex") + In("far/wood.png"), "the whole path below the folder");
  AddTexture("stone.png");
  File("work/tex/stone.png");
  AddTexture("missing.png");
  AddTexture(In("far/gone.png"));
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::Names(In("out")), "Scene A.c4d tex");
  EXPECT_EQ(tests::Names(In("out/tex")), "stone.png wood.png");
  EXPECT_EQ(tests::ReadText(In("out/tex/wood.png")), "far/wood.png");
  EXPECT_EQ(References(In("out/Scene A.c4d")), "wood.png\nstone.png\nmissing.png\ngone.png\n");
  EXPECT_EQ(Transcript().find("error"), std::string::npos);
  EXPECT_EQ(Doc().GetAllTextures(nullptr).GetIndexData(0).GetFilename().GetString().ToUtf8(),
            In("far/wood.png"));
}

TEST_F(TextureExportTest, TheWholeTextureNameIsLookedUp) {
  fs::create_directory(In("work/tex/sub"));
  File("work/tex/sub/a.png");
  File("work/up.png");
  AddTexture("sub/a.png");
  AddTexture("../up.png");
  AddTexture("elsewhere/a2.png");
  File("work/tex/a2.png");
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::Names(In("out/tex")), "a.png up.png");
}

TEST_F(TextureExportTest, EveryElementGetsTheSameTextures) {
  AddTexture(File("far/wood.png"));
  Record("A");
  Record("B");
  Generate(kAsSaveProject);
  EXPECT_EQ(tests::Names(In("out")), "Scene A Scene B");
  for (const char* name : {"out/Scene A", "out/Scene B"})
    EXPECT_EQ(tests::ReadText(In(name) + "/tex/wood.png"), "far/wood.png");
  EXPECT_EQ(References(In("out/Scene B/Scene B.c4d")), "wood.png\n");
}

// Two textures of one name: what the scene names last is what is found in the end.
TEST_F(TextureExportTest, OfSeveralFilesOfOneNameTheLastOneStays) {
  fs::create_directory(In("farther"));
  const std::string first = File("far/wood.png");
  const std::string second = File("farther/wood.png");
  for (const std::string& file : {first, second}) AddTexture(file);
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::ReadText(In("out/tex/wood.png")), "farther/wood.png");
  AddTexture(first);
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::ReadText(In("out/tex/wood.png")), "far/wood.png");
}

TEST_F(TextureExportTest, TheOtherLayoutsLeaveTexturesAlone) {
  const std::string wood = File("far/wood.png");
  AddTexture(wood);
  for (const LONG layout : {kAsSaveFile, kAsSaveFileFolders}) Generate(layout);
  EXPECT_EQ(tests::Names(In("out")), "Scene A Scene A.c4d");
  EXPECT_EQ(References(In("out/Scene A.c4d")), wood + "\n");
}

TEST_F(TextureExportTest, WhatIsNoReadableFileIsPassedOver) {
  fs::create_directory(In("work/tex/folder.png"));
  ASSERT_EQ(mkfifo(In("work/tex/pipe.png").c_str(), 0600), 0);
  AddTexture("folder.png");
  AddTexture("pipe.png");
  AddTexture("/dev/zero");
  AddTexture(In("work/tex/pipe.png"));
  AddTexture("..");
  AddTexture(In("work/tex/.."));
  AddTexture(File("far/wood.png"));
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::Names(In("out")), "Scene A.c4d tex");
  EXPECT_EQ(tests::Names(In("out/tex")), "wood.png");
}

TEST_F(TextureExportTest, WithoutATextureFolderThePathsAreCutAllTheSame) {
  AddTexture(File("far/wood.png"));
  tests::WriteText(In("out/tex"), "a file");
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(tests::ReadText(In("out/tex")), "a file");
  EXPECT_EQ(References(In("out/Scene A.c4d")), "wood.png\n");
}

TEST_F(TextureExportTest, ExportingToWhereTheTexturesLieLeavesThemWhole) {
  const std::string wood = File("work/tex/wood.png");
  AddTexture(wood);
  Record("A");
  Menu(kCheckAll);
  engine::ChooseFromCombo(Dialog(), kFileLayout, kAsSaveProjectOneFolder);
  Person().ChooseNext(In("work"));
  Press(kGenerateFiles);
  EXPECT_EQ(tests::ReadText(wood), "work/tex/wood.png");
  EXPECT_EQ(tests::Names(In("work")), "Scene A.c4d tex");
}

// The document's own folder first, then the global paths in their order.
TEST(GlobalTexturePathTest, FillsInWhatTheDocumentsFolderLacks) {
  const tests::ScratchFolder paths;
  engine::ApplicationSetup setup;
  for (const char* name : {"first", "second"}) {
    fs::create_directory(paths.Path() + "/" + name);
    setup.texturePaths.push_back(paths.Path() + "/" + name);
  }
  const auto write = [&](const std::string& file) {
    tests::WriteText(paths.Path() + "/" + file, file);
  };
  write("first/b.png");
  write("second/a.png");
  write("second/b.png");
  write("second/c.png");
  tests::PluginSession session(setup);
  fs::create_directories(session.Folder() + "/tex");
  tests::WriteText(session.Folder() + "/tex/c.png", "tex/c.png");
  session.PretendSaved("Scene.c4d");
  for (const char* texture : {"a.png", "b.png", "c.png"}) {
    BaseShader* shader = BaseShader::Alloc(Xbitmap);
    shader->GetDataInstance()->SetFilename(BITMAPSHADER_FILENAME, Filename(texture));
    BaseMaterial* material = BaseMaterial::Alloc(Mmaterial);
    material->InsertShader(shader);
    session.Doc().AppendMaterial(material);
  }
  session.Record("A");
  session.Menu(kCheckAll);
  engine::ChooseFromCombo(session.Dialog(), kFileLayout, kAsSaveProject);
  session.Person().ChooseNext(session.Folder());
  session.Press(kGenerateFiles);
  const std::string out = session.Folder() + "/Scene A/tex/";
  EXPECT_EQ(tests::ReadText(out + "a.png"), "second/a.png");
  EXPECT_EQ(tests::ReadText(out + "b.png"), "first/b.png");
  EXPECT_EQ(tests::ReadText(out + "c.png"), "tex/c.png");
}

class ShaderPlacesTest : public TextureExportTest {
 protected:
  // Paths of the shaders of one owner, in walk order, several of one shader joined by "+".
  static std::string Paths(const BaseList2D& owner) {
    std::string text;
    for (BaseShader* shader = owner.GetFirstShader(); shader; shader = engine::NextInTree(shader)) {
      const BaseContainer& data = *shader->GetDataInstance();
      for (LONG i = 0; i < data.GetCount(); ++i) {
        if (data.GetType(data.GetIndexId(i)) == DA_FILENAME)
          text += (i > 0 ? "+" : " ") + data.GetIndexData(i).GetFilename().GetString().ToUtf8();
      }
    }
    return text;
  }
};

TEST_F(ShaderPlacesTest, BitmapShadersAreCutWhereverTheyHangButNotOnOtherTags) {
  BaseMaterial* material = Material("M");
  BaseShader* layered = Shader(Xlayer, "/p/layer.png");
  material->InsertShader(layered);
  BaseShader* nested = Shader(Xbitmap, "/p/nested.png");
  nested->InsertUnderLast(layered);
  nested->GetDataInstance()->SetFilename(kSecondFile, "/p/second.png");
  Shader(Xbitmap, "C:\\p\\deep.png")->InsertUnderLast(nested);
  material->InsertShader(Shader(Xbitmap, "bare.png"));

  BaseObject* child = Object("Child", Object("Parent"));
  child->InsertShader(Shader(Xbitmap, "/p/object.png"));
  Tag(child, Tphong)->InsertShader(Shader(Xbitmap, "/p/tag.png"));
  GvNodeMaster* master = static_cast<XPressoTag*>(Tag(child, Texpresso))->GetNodeMaster();
  master->CreateNode(master->CreateNode(master->GetRoot(), 1), 2)
      ->InsertShader(Shader(Xbitmap, "/p/node.png"));
  Generate(kAsSaveProjectOneFolder);

  auto opened = engine::OpenSceneFile(Services().Get(), In("out/Scene A.c4d"));
  ASSERT_TRUE(opened) << opened.Message();
  const engine::OwnedDocument doc = opened.Take();
  EXPECT_EQ(Paths(*doc->GetFirstMaterial()),
            " /p/layer.png nested.png+/p/second.png deep.png bare.png");
  child = doc->GetFirstObject()->GetDown();
  EXPECT_EQ(Paths(*child), " object.png");
  EXPECT_EQ(Paths(*child->GetTag(Tphong)), " /p/tag.png");
  EXPECT_EQ(Paths(*static_cast<XPressoTag*>(child->GetTag(Texpresso))
                       ->GetNodeMaster()
                       ->GetRoot()
                       ->GetDown()
                       ->GetDown()),
            " node.png");
  EXPECT_EQ(Paths(*Doc().GetFirstObject()->GetDown()), " /p/object.png");
}

// Deeper than any stack: shaders below shaders, nodes below nodes, objects below objects.
TEST_F(ShaderPlacesTest, ChainsOfAnyDepthAreWalked) {
  constexpr int kDepth = 200000;
  BaseShader* shader = AddTexture("/p/0.png");
  BaseObject* object = Object("O");
  GvNodeMaster* master = static_cast<XPressoTag*>(Tag(object, Texpresso))->GetNodeMaster();
  GvNode* node = master->GetRoot();
  for (int i = 0; i < kDepth; ++i) {
    BaseShader* below = Shader(Xlayer);
    below->InsertUnderLast(shader);
    shader = below;
    object = Object("O", object);
    node = master->CreateNode(node, 1);
  }
  Shader(Xbitmap, "/p/last.png")->InsertUnderLast(shader);
  object->InsertShader(Shader(Xbitmap, "/p/object.png"));
  node->InsertShader(Shader(Xbitmap, "/p/node.png"));
  Generate(kAsSaveProjectOneFolder);
  EXPECT_EQ(References(In("out/Scene A.c4d")), "0.png\nlast.png\nobject.png\nnode.png\n");
}

}  // namespace
}  // namespace stagemarks
