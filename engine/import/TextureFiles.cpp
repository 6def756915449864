#include "engine/import/TextureFiles.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "engine/import/PercentCode.h"
#include "engine/outside/FilePlace.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/ShaderWalk.h"
#include "host/BaseMaterial.h"

namespace engine {
namespace {

// Slashes only, without the scheme of an address.
std::string Cleaned(const std::string& written) {
  std::string text = WithSlashes(written);
  if (text.rfind("file://", 0) == 0) text.erase(0, 7);
  return text;
}

std::string BareName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// First bytes of picture files, including formats that are not read here.
constexpr std::array<std::string_view, 27> kPictureHeads = {std::string_view("\x89PNG"),
                                                            "\xff\xd8\xff",
                                                            std::string_view("II*\0", 4),
                                                            std::string_view("MM\0*", 4),
                                                            std::string_view("II+\0", 4),
                                                            std::string_view("MM\0+", 4),
                                                            "\x76\x2f\x31\x01",
                                                            "BM",
                                                            "GIF8",
                                                            "RIFF",
                                                            "8BPS",
                                                            "DDS ",
                                                            "#?RADIANCE",
                                                            "#?RGBE",
                                                            "\xabKTX",
                                                            std::string_view("\0\0\0\x0cjP", 6),
                                                            "\xff\x4f\xff\x51",
                                                            "FORM",
                                                            "SDPX",
                                                            "XPDS",
                                                            "\x53\x80\xf6\x34",
                                                            "P3",
                                                            "P5",
                                                            "P6",
                                                            "PF",
                                                            "\x73\x42\x13",
                                                            "\x01\xda"};

bool HasTgaSuffix(const std::string& path) {
  return path.size() > 4 && ::strcasecmp(path.c_str() + path.size() - 4, ".tga") == 0;
}

// A scene from elsewhere may name any file that this person can read; only what is a picture is
// taken along into exports.
bool IsPicture(const std::string& path) {
  std::array<char, 32> bytes{};
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), bytes.size());
  const std::string_view head(bytes.data(), static_cast<std::size_t>(file.gcount()));
  if (head.size() >= 8 && head.substr(4, 4) == "ftyp") return true;  // HEIF and AVIF
  // TGA has no head of its own; the third byte is the kind, 1 to 3 and 9 to 11.
  if (HasTgaSuffix(path)) return head.size() > 18 && (head[2] & ~8) >= 1 && (head[2] & ~8) <= 3;
  return std::ranges::any_of(kPictureHeads, [&](auto start) { return head.starts_with(start); });
}

// Where links to a folder lead, with a slash at its end.
std::string RealFolder(const std::string& folder) {
  std::string real = RealPath(folder);
  if (real.empty()) real = folder;
  if (!real.ends_with('/')) real += '/';
  return real;
}

// An absolute path without "." and ".." components, by its words alone.
std::string Normal(const std::string& path) {
  std::string normal;
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find('/', at + 1), path.size());
    const std::string_view part = std::string_view(path).substr(at, end - at);
    if (part == "/..") {
      normal.resize(normal.empty() ? 0 : normal.rfind('/'));
    } else if (part != "/" && part != "/.") {
      normal += part;
    }
    at = end;
  }
  return normal;
}

// Looks for texture files of one scene; every folder is listed once.
class TextureSearch {
 public:
  struct Place {
    std::string path;  // full, empty where it was not found
    bool isOutside = false;
    bool isPicture = true;
  };

  TextureSearch(FileSystem& files, const std::string& scene)
      : files_(files), folder_(scene.substr(0, scene.rfind('/') + 1)), real_(RealFolder(folder_)) {}

  const Place& Find(const std::string& written) {
    const auto [entry, isNew] = found_.try_emplace(written);
    if (!isNew) return entry->second;
    Place& place = entry->second;
    place.path = Search(Cleaned(written));
    place.isOutside = !place.path.empty() && !IsInside(place.path);
    place.isPicture = place.path.empty() || IsPicture(place.path);
    return place;
  }

 private:
  bool IsInside(const std::string& path) const { return RealPath(path).starts_with(real_); }

  // Inside where it is there, too. As the name is written, then as an address; of each the place
  // that it names, then the usual folders.
  std::string Search(const std::string& written) {
    std::string outside;
    for (const std::string& text : {written, PercentDecoded(written)}) {
      std::string direct = AsWritten(text);
      if (!direct.empty() && IsInside(direct)) return direct;
      std::string near = ByName(BareName(text));
      if (!near.empty()) return near;
      if (outside.empty()) outside = std::move(direct);
    }
    return outside;
  }

  std::string AsWritten(const std::string& text) const {
    if (text.empty() || text.find('\0') != std::string::npos) return {};
    const std::string path = Normal(text.front() == '/' ? text : folder_ + text);
    return files_.Kind(path) == FileKind::File ? path : std::string();
  }

  std::string ByName(const std::string& name) {
    if (name.empty() || name.find('\0') != std::string::npos) return {};
    std::string found = ByNameIn(folder_, name);
    for (std::size_t i = 0; i < kTextureFolders.size() && found.empty(); ++i) {
      found = ByNameIn(folder_ + kTextureFolders[i] + "/", name);
    }
    return found;
  }

  std::string ByNameIn(const std::string& folder, const std::string& name) {
    for (const std::string& file : FilesOf(folder)) {
      if (::strcasecmp(file.c_str(), name.c_str()) == 0) return folder + file;
    }
    return {};
  }

  const std::vector<std::string>& FilesOf(const std::string& folder) {
    const auto [entry, isNew] = listed_.try_emplace(folder);
    if (!isNew || files_.Kind(folder) != FileKind::Folder) return entry->second;
    Result<std::vector<std::string>> files = files_.ListFiles(folder);
    if (files) entry->second = files.Take();
    return entry->second;
  }

  FileSystem& files_;
  std::string folder_;
  std::string real_;
  std::unordered_map<std::string, Place> found_;
  std::unordered_map<std::string, std::vector<std::string>> listed_;
};

// Whether textures outside may be taken; the person hears how many there are and of some.
bool MayTake(const std::vector<std::string>& outside, const std::string& scene, Person& person,
             OutsideTextures choice) {
  constexpr std::size_t kMostNamed = 5;
  if (outside.empty() || choice != OutsideTextures::Ask) return choice == OutsideTextures::Take;
  std::string question = "\"" + BareName(scene) + "\" names pictures outside of its folder:\n";
  for (std::size_t i = 0; i < outside.size() && i < kMostNamed; ++i) question += "\n" + outside[i];
  if (outside.size() > kMostNamed)
    question += "\nand " + std::to_string(outside.size() - kMostNamed) + " more";
  return person.Ask(question + "\n\nUse them? Exported projects take them along.");
}

// A sentence for the person about a texture; empty where all is well.
std::string NoteOn(const std::string& written, const TextureSearch::Place& place, bool isTaken,
                   OutsideTextures choice) {
  const std::string name = "The texture \"" + written + "\" ";
  if (place.path.empty()) return name + "was not found.";
  if (!place.isPicture) {
    return name + (place.isOutside ? "is no picture and was left out: it lies "
                                     "outside the folder of the imported file."
                                   : "is no picture.");
  }
  if (isTaken) return "";
  return name + "lies outside the folder of the imported file and was left out" +
         (choice == OutsideTextures::Leave ? "; --allow-outside takes it." : ".");
}

}  // namespace

std::vector<std::string> ResolveTextures(const Services& services, host::BaseDocument& doc,
                                         const std::string& scene, OutsideTextures choice) {
  TextureSearch search(services.files, scene);
  std::vector<host::BaseShader*> shaders;
  std::vector<std::string> outside;
  std::unordered_set<std::string> known;
  ForEachBitmapShader(doc, [&](host::BaseShader& shader) {
    const std::string written = BitmapFileOf(shader);
    if (written.empty() || FindEmbeddedFile(doc, written) != nullptr) return;
    shaders.push_back(&shader);
    const TextureSearch::Place& place = search.Find(written);
    if (place.isOutside && place.isPicture && known.insert(place.path).second)
      outside.push_back(place.path);
  });
  const bool takes = MayTake(outside, scene, services.person, choice);
  std::vector<std::string> notes;
  for (host::BaseShader* shader : shaders) {
    const std::string written = BitmapFileOf(*shader);
    const TextureSearch::Place& place = search.Find(written);
    const bool isTaken = !place.isOutside || (takes && place.isPicture);
    if (!place.path.empty())
      SetBitmapFile(*shader, isTaken ? place.path : BareName(Cleaned(written)));
    const std::string note = NoteOn(written, place, isTaken, choice);
    if (!note.empty() && known.insert(note).second) notes.push_back(note);
  }
  return notes;
}

}  // namespace engine
