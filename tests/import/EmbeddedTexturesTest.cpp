// Textures that came inside a file: their names, and how they get onto the disk when the scene is
// saved.
#include "engine/import/EmbeddedTextures.h"

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
