#include "program/export/ExportPlan.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "engine/dialog/TerminalText.h"
#include "engine/render/TextureSearch.h"
#include "engine/scenefile/SceneFile.h"
#include "host/Host.h"

namespace exporting {

using engine::FileKind;
using engine::FileSystem;
using host::Filename;

namespace {

struct LayoutRow {
  Layout layout;
  const char* word;
  const char* entry;
  bool elementFolders;
  bool textures;
};

constexpr LayoutRow kLayouts[] = {
    {Layout::Files, "file", "As Save File", false, false},
    {Layout::Folders, "folders", "As Save File (Into Folders)", true, false},
    {Layout::Project, "project", "As Save Project", true, true},
    {Layout::OneTextureFolder, "one-tex", "As Save Project (One Tex Folder)", false, true}};

constexpr host::LONG kGlobalTexturePaths = 10;
// Bytes of a file's name, and of a path, on the systems we know
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestPath = 4095;
constexpr std::size_t kShownName = 80;
constexpr const char* kTooLong = "it is too long";
constexpr const char* kSceneSuffix = ".c4d";
constexpr const char* kCacheSuffix = ".gi";

const LayoutRow& RowOf(Layout layout) {
  return *std::find_if(std::begin(kLayouts), std::end(kLayouts),
                       [&](const LayoutRow& row) { return row.layout == layout; });
}

Filename NameOf(const std::string& text) { return Filename(host::String(std::string_view(text))); }
std::string TextOf(const Filename& name) { return name.GetString().ToUtf8(); }
std::string Quoted(const std::string& text) {
  return "\"" + engine::Shortened(engine::Printable(text), kShownName) + "\"";
}

// The file that an export gathers for a texture: under the name that the scene gives it, else below
// the folder "tex" beside the scene, else below the global texture paths.
std::string GatheredFrom(FileSystem& files, const host::BaseDocument& doc,
                         const std::string& texture) {
  std::vector<Filename> places = {NameOf(texture),
                                  doc.GetDocumentPath() + Filename("tex") + NameOf(texture)};
  for (host::LONG i = 0; i < kGlobalTexturePaths; ++i)
    places.push_back(host::GetGlobalTexturePath(i) + NameOf(texture));
  for (const Filename& place : places) {
    if (files.Kind(TextOf(place)) == FileKind::File) return TextOf(place);
  }
  return "";
}

// The cache files that every exported scene gets one of.
std::vector<std::string> CachesOf(FileSystem& files, const host::BaseDocument& doc,
                                  const std::string& document) {
  std::vector<std::string> caches;
  host::BaseVideoPost* post = doc.GetActiveRenderData()->GetFirstVideoPost();
  for (; post; post = post->GetNext()) {
    const host::BaseContainer data = post->GetData();
    if (post->GetType() != host::VPglobalillumination || data.GetLong(host::GI_USE_CACHE_FILE) != 1)
      continue;
    const bool isOwn = data.GetLong(host::GI_OWN_CACHE_FILE) == 1;
    const Filename beside =
        doc.GetDocumentPath() + Filename("illum") + NameOf(document + kCacheSuffix);
    const std::string file = TextOf(isOwn ? data.GetFilename(host::GI_CACHE_FILENAME) : beside);
    if (!file.empty() && files.Kind(file) == FileKind::File) caches.push_back(file);
  }
  return caches;
}

// Adds up what files take. A file is written whole before it takes the place of another one.
class RoomReckoning {
 public:
  RoomReckoning(FileSystem& files, std::uint64_t block)
      : files_(files), block_(std::max<std::uint64_t>(1, block)) {}

  void Write(const std::string& path, std::uint64_t bytes) {
    const auto [known, isNew] = sizes_.try_emplace(path, 0);
    if (isNew && files_.Kind(path) == FileKind::File)
      known->second = Rounded(files_.Stamp(path).size);
    most_ = std::max(most_, taken_ + static_cast<std::int64_t>(Rounded(bytes)));
    taken_ += static_cast<std::int64_t>(Rounded(bytes)) - static_cast<std::int64_t>(known->second);
    known->second = Rounded(bytes);
  }
  std::uint64_t Most() const { return static_cast<std::uint64_t>(most_); }

 private:
  std::uint64_t Rounded(std::uint64_t bytes) const {
    return (bytes + block_ - 1) / block_ * block_;
  }

  FileSystem& files_;
  std::uint64_t block_;
  std::map<std::string, std::uint64_t> sizes_;
  std::int64_t taken_ = 0;
  std::int64_t most_ = 0;
};

std::uint64_t SizeOf(const host::BaseDocument& doc) {
  const auto pieces = engine::WriteScene(doc);
  std::uint64_t bytes = 0;
  if (!pieces) return bytes;
  for (const std::string& piece : pieces.Value()) bytes += piece.size();
  return bytes;
}

class Planning {
 public:
  Planning(FileSystem& files, const host::BaseDocument& doc, const ExportRequest& request)
      : files_(files),
        doc_(doc),
        request_(request),
        row_(RowOf(request.layout)),
        room_(files, BlockAt(request.folder)) {
    Filename name = doc.GetDocumentName();
    name.ClearSuffix();
    document_ = TextOf(name);
    caches_ = CachesOf(files, doc, document_);
  }

  ExportPlan Make() {
    if (row_.textures) PlanTextures();
    const std::uint64_t size = SizeOf(doc_);
    for (const std::string& name : request_.names) PlanElement(name, size);
    plan_.bytes = room_.Most();
    if (const auto space = files_.Space(request_.folder)) plan_.free = space->free;
    return std::move(plan_);
  }

 private:
  std::uint64_t BlockAt(const std::string& folder) const {
    const auto space = files_.Space(folder);
    return space ? space->block : 1;
  }

  std::string BaseName(const std::string& element) const { return document_ + " " + element; }
  std::string FolderOf(const std::string& element) const {
    return row_.elementFolders ? request_.folder + "/" + BaseName(element) : request_.folder;
  }

  void PlanTextures() {
    std::vector<std::string> sources;
    for (const std::string& texture : engine::TextureNames(doc_)) {
      std::string source = GatheredFrom(files_, doc_, texture);
      if (source.empty()) {
        plan_.missing.push_back(texture);
      } else {
        sources.push_back(std::move(source));
      }
    }
    if (!row_.elementFolders) PlanTextureFolder(request_.folder, sources);
    for (const std::string& name : request_.names) {
      if (row_.elementFolders && CanBeFile(name)) PlanTextureFolder(FolderOf(name), sources);
    }
  }

  void PlanTextureFolder(const std::string& folder, const std::vector<std::string>& sources) {
    const std::string target = folder + "/tex";
    CheckFolder(target);
    std::set<std::string> files;
    for (const std::string& source : sources) {
      const std::string file = target + "/" + TextOf(NameOf(source).GetFile());
      plan_.textures += files.insert(file).second;
      room_.Write(file, files_.Stamp(source).size);
      CheckFile(file);
    }
  }

  void PlanElement(const std::string& name, std::uint64_t size) {
    if (!CanBeFile(name)) return Refuse(name);
    const std::string folder = FolderOf(name);
    const std::string file = folder + "/" + BaseName(name) + kSceneSuffix;
    if (row_.elementFolders) CheckFolder(folder);
    CheckFile(file);
    for (const std::string& cache : caches_) {
      room_.Write(folder + "/Illum/" + BaseName(name) + kCacheSuffix, files_.Stamp(cache).size);
      ++plan_.caches;
    }
    room_.Write(file, size);
    ++plan_.scenes;
  }

  std::string WhyNot(const std::string& name) const {
    const std::string file = BaseName(name) + kSceneSuffix;
    if ((FolderOf(name) + "/" + file).size() > kLongestPath) return kTooLong;
    return WhyNoFileName(file);
  }
  bool CanBeFile(const std::string& name) const { return WhyNot(name).empty(); }

  void Refuse(const std::string& name) {
    plan_.obstacles.push_back("The name " + Quoted(name) +
                              " cannot be that of a file: " + WhyNot(name) + ".");
  }

  // A link is told of once, whatever is to be written behind it.
  bool HasWay(const std::string& path) {
    const bool isTold = std::ranges::any_of(
        refused_, [&](const std::string& other) { return (path + "/").starts_with(other + "/"); });
    const engine::Status way = isTold ? engine::Status() : files_.CheckWay(path);
    if (way) return !isTold;
    plan_.obstacles.push_back(way.Message());
    refused_.push_back(path);
    return false;
  }
  void CheckFolder(const std::string& path) {
    if (!HasWay(path)) return;
    const FileKind kind = files_.Kind(path);
    if (kind == FileKind::Missing || kind == FileKind::Folder || !checked_.insert(path).second)
      return;
    plan_.obstacles.push_back("Cannot make the folder \"" + path + "\": a file is in its place.");
  }
  void CheckFile(const std::string& path) {
    if (!HasWay(path)) return;
    if (files_.Kind(path) != FileKind::Folder || !checked_.insert(path).second) return;
    plan_.obstacles.push_back("Cannot write \"" + path + "\": a folder is in its place.");
  }

  FileSystem& files_;
  const host::BaseDocument& doc_;
  const ExportRequest& request_;
  const LayoutRow& row_;
  RoomReckoning room_;
  std::string document_;  // its name without suffix
  std::vector<std::string> caches_;
  std::set<std::string> checked_;
  std::vector<std::string> refused_;  // where a link is in the way
  ExportPlan plan_;
};

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

std::optional<Layout> LayoutOfEntry(const std::string& entry) {
  for (const LayoutRow& row : kLayouts) {
    if (entry == row.entry) return row.layout;
  }
  return std::nullopt;
}

const char* EntryOf(Layout layout) { return RowOf(layout).entry; }

std::vector<std::string> LayoutWords() {
  std::vector<std::string> words;
  for (const LayoutRow& row : kLayouts) words.emplace_back(row.word);
  return words;
}

std::optional<Layout> LayoutOfWord(const std::string& word) {
  for (const LayoutRow& row : kLayouts) {
    if (word == row.word) return row.layout;
  }
  return std::nullopt;
}

bool GathersTextures(Layout layout) { return RowOf(layout).textures; }

ExportPlan PlanExport(FileSystem& files, const host::BaseDocument& doc,
                      const ExportRequest& request) {
  return Planning(files, doc, request).Make();
}

std::vector<std::string> ScenesWritten(const engine::Ledger& ledger, std::size_t mark) {
  std::vector<std::string> scenes;
  for (std::size_t i = mark; i < ledger.Entries().size(); ++i) {
    const engine::LedgerEntry& entry = ledger.Entries()[i];
    if (entry.succeeded && entry.operation == engine::Operation::ReplaceFile)
      scenes.push_back(entry.path);
  }
  return scenes;
}

std::string WhyNoFileName(const std::string& name) {
  if (name.size() > kLongestName) return kTooLong;
  if (name.find('/') != std::string::npos) return "it holds a slash";
  return name.find('\0') != std::string::npos ? "it holds a NUL byte" : "";
}

bool Fits(const ExportPlan& plan) { return !plan.free || plan.bytes <= *plan.free; }

std::string Summary(const ExportPlan& plan) {
  std::vector<std::string> parts = {Counted(plan.scenes, "scene file")};
  if (plan.textures > 0) parts.push_back(Counted(plan.textures, "texture"));
  if (plan.caches > 0) parts.push_back(Counted(plan.caches, "cache"));
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i)
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  return text + ", about " + BytesText(plan.bytes);
}

std::string BytesText(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1000) return std::to_string(bytes) + " bytes";
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  for (; value >= 999.95 && unit + 1 < std::size(kUnits); ++unit) value /= 1000;
  char text[32];
  std::snprintf(text, sizeof text, value < 9.95 ? "%.1f %s" : "%.0f %s", value, kUnits[unit]);
  return text;
}

}  // namespace exporting
