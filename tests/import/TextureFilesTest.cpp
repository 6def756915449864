// Which files an imported scene may name as its textures: those beside it and below, those outside
// only where the person wants them, and pictures only.
#include <filesystem>

#include "engine/import/TextureFiles.h"
#include "tests/import/ImportSession.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

using engine::OutsideTextures;

constexpr const char* kPicture = "\x89PNG\r\n\x1a\n and so on";

class TextureFilesOutside : public ImportSession {
 protected:
  TextureFilesOutside() {
    std::filesystem::create_directories(folder_ / "model/maps");
    WriteText(folder_ / "wood.png", kPicture);
    WriteText(folder_ / "other.png", kPicture);
    WriteText(folder_ / "secret", "not for others");
    WriteText(folder_ / "model/near.png", kPicture);
    WriteText(folder_ / "model/maps/other.png", kPicture);
    WriteText(folder_ / "model/notes.txt", "text");
    for (const char* name : {"cut.png", "cut.webp", "cut.exr"}) {
      WriteText(folder_ / (std::string("model/") + name), std::string(kPicture, 3));
      WriteText(folder_ / (std::string("model/maps/no") + name), "");
    }
    std::filesystem::create_symlink(folder_ / "secret", folder_ / "model/link.png");
  }

  // The file that a scene ends up with for a texture of that name, seen from the scratch folder.
  std::string Texture(const std::string& name, OutsideTextures outside) {
    WriteText(folder_ / "model/scene.mtl", "newmtl a\nKd 1 1 1\nmap_Kd " + name + "\n");
    WriteText(folder_ / "model/scene.obj",
              "mtllib scene.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n");
    engine::ImportLimits limits;
    limits.outside = outside;
    auto imported =
        engine::ImportScene(services_.Get(), folder_ / "model/scene.obj", IMPORT_WORKER, limits);
    EXPECT_TRUE(imported) << imported.Message();
    if (!imported) return "";
    document_ = std::move(imported.Value().document);
    notes_ = imported.Value().notes;
    const std::vector<std::string> files = TextureFiles();
    const std::string file = files.empty() ? "none" : files.front();
    return file.starts_with(folder_ / "") ? file.substr(folder_.Path().size() + 1) : file;
  }

  ScratchFolder folder_;
};

TEST_F(TextureFilesOutside, AreTakenOnlyWhereTheyAreWanted) {
  struct Case {
    std::string name;
    const char* taken;    // where the person wants them
    const char* left;     // where not
    const char* problem;  // "" for none
  };
  const Case cases[] = {
      {"near.png", "model/near.png", "model/near.png", ""},
      {folder_ / "model/near.png", "model/near.png", "model/near.png", ""},
      {"NEAR.png", "model/near.png", "model/near.png", ""},
      {"./maps/../near.png", "model/near.png", "model/near.png", ""},
      {"maps//other.png", "model/maps/other.png", "model/maps/other.png", ""},
      {"%6Eear.p%6eg", "model/near.png", "model/near.png", ""},
      {"file://" + (folder_ / "maps/near.png"), "model/near.png", "model/near.png", ""},
      {"notes.txt", "model/notes.txt", "model/notes.txt", "is no picture."},
      {"cut.png", "model/cut.png", "model/cut.png", "is no picture."},
      {"cut.webp", "model/cut.webp", "model/cut.webp", "is no picture."},
      {"nocut.exr", "model/maps/nocut.exr", "model/maps/nocut.exr", "is no picture."},
      {"../wood.png", "wood.png", "wood.png", "lies outside the folder of the imported file"},
      {folder_ / "wood.png", "wood.png", "wood.png", "lies outside the folder"},
      {folder_ / "other.png", "model/maps/other.png", "model/maps/other.png", ""},
      {"../secret", "secret", "secret", "is no picture and was left out"},
      {"link.png", "link.png", "link.png", "is no picture and was left out"},
      {"../nothing.png", "../nothing.png", "../nothing.png", "was not found."},
  };
  for (const Case& c : cases) {
    for (const auto how : {OutsideTextures::Take, OutsideTextures::Leave, OutsideTextures::Ask}) {
      const std::string file = Texture(c.name, how);
      const bool takes = how == OutsideTextures::Take;
      EXPECT_EQ(file, takes ? c.taken : c.left) << c.name;
      const std::string note = Notes().empty() ? "" : Notes().front();
      const bool isOnlyFar = std::string(c.problem).starts_with("lies outside");
      if (takes && isOnlyFar) {
        EXPECT_EQ(note, "") << c.name;
      } else {
        EXPECT_NE(note.find(c.problem), std::string::npos) << c.name << ": " << note;
        EXPECT_EQ(note.empty(), *c.problem == '\0') << c.name << ": " << note;
      }
      // Only a picture that lies outside is worth a question.
      const std::string asked = services_.person.TakeTranscript();
      EXPECT_EQ(asked.find("names pictures outside") != std::string::npos,
                isOnlyFar && how == OutsideTextures::Ask)
          << c.name << ": " << asked;
      // A texture left out is named without its folder, so that nothing reads or copies it.
      if (!takes && isOnlyFar) {
        EXPECT_EQ(TextureFiles().front(), "wood.png");
      }
    }
  }
}

// By their first bytes, those of formats that are not read here among them.
TEST_F(TextureFilesOutside, ArePicturesByTheirBeginning) {
  const std::string rest(30, 'x');
  struct Case {
    const char* name;
    std::string head;
    bool isPicture;
  };
  std::vector<Case> cases = {{"a.heic", "\1\2\3\4ftypheic", true},
                             {"a.heic", "\1\2\3\4ftyp", true},
                             {"a.heic", "\1\2\3\4fty", false},
                             {"a.heic", "ftyp and so on", false},
                             {"a.tga", std::string("\0\0\2", 3) + rest.substr(0, 15), false},
                             {"a.TGA", std::string("\0\0\2", 3) + rest.substr(0, 16), true},
                             {"a.tgb", std::string("\0\0\2", 3) + rest, false}};
  for (const int kind : {0, 1, 3, 4, 8, 9, 10, 11, 12}) {
    const bool isPicture = kind % 8 >= 1 && kind % 8 <= 3;
    cases.push_back({"a.tga", std::string("\0\0", 2) + static_cast<char>(kind) + rest, isPicture});
  }
  for (const Case& c : cases) {
    WriteText(folder_ / (std::string("model/") + c.name), c.head);
    EXPECT_EQ(Texture(c.name, OutsideTextures::Take), std::string("model/") + c.name);
    EXPECT_EQ(Notes().empty(), c.isPicture) << c.name << " " << c.head;
  }
}

TEST_F(TextureFilesOutside, APersonIsAskedOnceAndSeesTheNames) {
  services_.person.AnswerNext(true);
  EXPECT_EQ(Texture("../wood.png", OutsideTextures::Ask), "wood.png");
  const std::string asked = services_.person.TakeTranscript();
  EXPECT_NE(asked.find((folder_ / "wood.png")), std::string::npos) << asked;
  EXPECT_EQ(TextureFiles().front(), folder_ / "wood.png") << "the file itself";
  EXPECT_TRUE(Notes().empty());
}

TEST_F(TextureFilesOutside, OfManyAPersonSeesTheFirst) {
  for (const int count : {5, 6, 7}) {
    std::string materials;
    std::string scene = "mtllib many.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\n";
    std::string question = "ask: \"many.obj\" names pictures outside of its folder:\n";
    for (int i = 0; i < count; ++i) {
      const std::string name = std::to_string(i);
      WriteText(folder_ / (name + ".png"), kPicture);
      materials += "newmtl " + name + "\nmap_Kd ../" + name + ".png\n";
      scene += "usemtl " + name + "\nf 1 2 3\n";
      if (i < 5) question += "\n" + (folder_ / (name + ".png"));
    }
    WriteText(folder_ / "model/many.mtl", materials);
    WriteText(folder_ / "model/many.obj", scene);
    Open(folder_ / "model/many.obj");
    if (count > 5) question += "\nand " + std::to_string(count - 5) + " more";
    EXPECT_EQ(services_.person.TakeTranscript(),
              question + "\n\nUse them? Exported projects take them along. -> no\n");
    EXPECT_EQ(Notes().size(), static_cast<std::size_t>(count));
  }
}

}  // namespace
}  // namespace tests
