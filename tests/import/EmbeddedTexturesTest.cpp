// Textures that came inside a file: their names, and how they get onto the disk when the scene is
// saved.
#include "engine/import/EmbeddedTextures.h"
#include "engine/import/TextureCollection.h"

#include <filesystem>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/ShaderWalk.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

class EmbeddedTextures : public ImportSession {
 protected:
  void SetUp() override { document_.reset(host::BaseDocument::Alloc()); }

  // A material whose color is the embedded file of that name.
  void AddTexture(const std::string& name, const std::string& bytes) {
    const std::string given = engine::AddEmbeddedFile(Doc(), name, bytes);
    host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
    host::BaseShader* shader = host::BaseShader::Alloc(host::Xbitmap);
    engine::SetBitmapFile(*shader, given);
    material->InsertShader(shader);
    Doc().AppendMaterial(material);
  }
  std::string Written(const std::string& name) const { return ReadText(folder_ / ("tex/" + name)); }

  ScratchFolder folder_;
};

TEST_F(EmbeddedTextures, NamesAreSafeOnAnyDisk) {
  const std::vector<std::pair<std::string, std::string>> names = {
      {"wood.png", "wood.png"},
      {"../../etc/passwd", "passwd"},
      {"C:\\art\\wood.png", "wood.png"},
      {"..", "texture"},
      {"", "texture"},
      {"a/", "texture"},
      {".hidden.png", "hidden.png"},
      {std::string("a\nb\0c.png", 9), "a_b_c.png"},
      {"what?*.png", "what__.png"},
      {std::string(400, 'x') + ".png", std::string(116, 'x') + ".png"},
      {"\xC3\xA4.png", "\xC3\xA4.png"}};
  for (const auto& [wish, name] : names) EXPECT_EQ(engine::SafeFileName(wish), name) << wish;
}

TEST_F(EmbeddedTextures, EveryFileHasANameOfItsOwn) {
  EXPECT_EQ(engine::AddEmbeddedFile(Doc(), "a.png", "1"), "a.png");
  EXPECT_EQ(engine::AddEmbeddedFile(Doc(), "x/a.png", "2"), "a-2.png");
  EXPECT_EQ(engine::AddEmbeddedFile(Doc(), "a.png", "3"), "a-3.png");
  EXPECT_EQ(*engine::FindEmbeddedFile(Doc(), "a-2.png"), "2");
  EXPECT_EQ(engine::FindEmbeddedFile(Doc(), "b.png"), nullptr);
  EXPECT_FALSE(engine::RenameEmbeddedFile(Doc(), "a.png", "a-2.png")) << "taken";
  EXPECT_FALSE(engine::RenameEmbeddedFile(Doc(), "a.png", "../a.png")) << "not safe";
}

TEST_F(EmbeddedTextures, ACopyOfTheDocumentHasThemToo) {
  AddTexture("a.png", "bytes");
  const engine::OwnedDocument copy(
      static_cast<host::BaseDocument*>(Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
  ASSERT_NE(copy, nullptr);
  engine::AddEmbeddedFile(Doc(), "later.png", "more");
  EXPECT_EQ(engine::FindEmbeddedFile(*copy, "a.png"), engine::FindEmbeddedFile(Doc(), "a.png"))
      << "the same bytes";
  EXPECT_EQ(engine::FindEmbeddedFile(*copy, "later.png"), nullptr);
}

TEST_F(EmbeddedTextures, SavingWritesThemOnce) {
  AddTexture("a.png", "bytes of a");
  AddTexture("b.png", "bytes of b");
  ASSERT_TRUE(engine::WriteEmbeddedTextures(services_.files, Doc(), folder_.Path()));
  EXPECT_EQ(Written("a.png") + Written("b.png"), "bytes of abytes of b");
  const std::size_t mark = services_.ledger.Mark();
  ASSERT_TRUE(engine::WriteEmbeddedTextures(services_.files, Doc(), folder_.Path()));
  for (const std::string& path : services_.ledger.WrittenSince(mark))
    EXPECT_EQ(path, folder_ / "tex");
  EXPECT_EQ(TextureFiles(), (std::vector<std::string>{"a.png", "b.png"}));
}

TEST_F(EmbeddedTextures, AnotherFileOfThatNameIsNeverReplaced) {
  std::filesystem::create_directory(folder_ / "tex");
  WriteText(folder_ / "tex/a.png", "somebody else's");
  AddTexture("a.png", "mine");
  AddTexture("a-2.png", "mine as well");
  ASSERT_TRUE(engine::WriteEmbeddedTextures(services_.files, Doc(), folder_.Path()));
  EXPECT_EQ(Written("a.png"), "somebody else's");
  EXPECT_EQ(Written("a-2.png"), "mine as well");
  EXPECT_EQ(Written("a-3.png"), "mine");
  EXPECT_EQ(TextureFiles(), (std::vector<std::string>{"a-2.png", "a-3.png"}));
  EXPECT_EQ(*engine::FindEmbeddedFile(Doc(), "a-3.png"), "mine");
}

// Pictures from elsewhere, each content once and nobody's file replaced; what lies below the scene,
// within it, or nowhere, stays as it is named.
TEST_F(EmbeddedTextures, PicturesFromElsewhereAreCollected) {
  ScratchFolder art;
  std::filesystem::create_directories(folder_ / "tex");
  std::filesystem::create_directories(art / "more");
  WriteText(folder_ / "tex/b.png", "somebody else's");
  WriteText(folder_ / "tex/c.png", "c");
  WriteText(folder_ / "near.png", "near");
  AddTexture("d.png", "embedded");
  struct Case {
    std::string name;
    const char* bytes;  // null: there is no such file
    std::string copy;
  };
  const std::vector<Case> cases = {{art / "a.png", "a", folder_ / "tex/a.png"},
                                   {art / "again.png", "a", folder_ / "tex/a.png"},
                                   {art / "more/a.png", "another", folder_ / "tex/a-2.png"},
                                   {art / "b.png", "b", folder_ / "tex/b-2.png"},
                                   {art / "c.png", "c", folder_ / "tex/c.png"},
                                   {art / "d.png", "d", folder_ / "tex/d-2.png"},
                                   {art / "gone.png", nullptr, art / "gone.png"},
                                   {folder_ / "near.png", "near", folder_ / "near.png"},
                                   {"relative.png", nullptr, "relative.png"}};
  std::vector<host::BaseShader*> shaders;
  for (const Case& c : cases) {
    if (c.bytes != nullptr) WriteText(c.name, c.bytes);
    host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
    shaders.push_back(host::BaseShader::Alloc(host::Xbitmap));
    engine::SetBitmapFile(*shaders.back(), c.name);
    material->InsertShader(shaders.back());
    Doc().AppendMaterial(material);
  }
  services_.person.StopProgressAt(1);
  EXPECT_NE(engine::CollectTextures(services_.Get(), Doc(), folder_.Path()).Message().find("stop"),
            std::string::npos);
  services_.person.StopProgressAt(0);
  services_.files.BreakFrom(1, engine::Operation::ReplaceFile);
  EXPECT_FALSE(engine::CollectTextures(services_.Get(), Doc(), folder_.Path()));
  services_.files.Mend();
  const auto copied = engine::CollectTextures(services_.Get(), Doc(), folder_.Path());
  ASSERT_TRUE(copied) << copied.Message();
  EXPECT_EQ(copied.Value(),
            (std::vector<std::string>{folder_ / "tex/a.png", folder_ / "tex/a-2.png",
                                      folder_ / "tex/b-2.png", folder_ / "tex/d-2.png"}));
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(engine::BitmapFileOf(*shaders[i]), cases[i].copy);
    EXPECT_EQ(ReadText(cases[i].copy), cases[i].bytes ? cases[i].bytes : "(missing)");
  }
  EXPECT_EQ(Written("b.png"), "somebody else's");
  services_.person.StopProgressAt(1);
  EXPECT_TRUE(engine::CollectTextures(services_.Get(), Doc(), folder_.Path())) << "nothing is left";
}

TEST_F(EmbeddedTextures, NothingToWriteMakesNoFolder) {
  ASSERT_TRUE(engine::WriteEmbeddedTextures(services_.files, Doc(), folder_.Path()));
  EXPECT_EQ(Names(folder_.Path()), "");
}

TEST_F(EmbeddedTextures, AFolderThatCannotBeIsAFailure) {
  WriteText(folder_ / "tex", "a file in its place");
  AddTexture("a.png", "bytes");
  const engine::Status status =
      engine::WriteEmbeddedTextures(services_.files, Doc(), folder_.Path());
  EXPECT_FALSE(status);
  EXPECT_NE(status.Message().find("tex"), std::string::npos);
  EXPECT_EQ(TextureFiles(), (std::vector<std::string>{"a.png"}));
}

}  // namespace
}  // namespace tests
