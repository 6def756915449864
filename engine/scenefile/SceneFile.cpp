#include "engine/scenefile/SceneFile.h"

#include "engine/scene/DocumentState.h"
#include "engine/scenefile/CarriedFiles.h"
#include "engine/scenefile/Damage.h"
#include "engine/scenefile/KeptSections.h"
#include "engine/scenefile/ProgressMeter.h"
#include "engine/scenefile/SceneBuilder.h"
#include "engine/scenefile/SceneWriter.h"
#include "engine/scenefile/StateNames.h"
#include "engine/scenefile/Trash.h"

namespace engine {

using host::BaseDocument;

namespace {

DocumentRecord ReadDocumentRecord(std::string_view contents, const ElementBounds& bounds,
                                  Budget& budget) {
  Cursor in(contents, "DOCUMENT", budget);
  DocumentRecord record;
  record.id = in.Fixed64();
  record.bits = in.Long("a set of bits");
  record.nbits = in.Fixed64();
  record.layer = in.Fixed64();
  record.data = static_cast<std::size_t>(in.Below(bounds.containers, "the data container"));
  record.fps = in.Long("the frame rate");
  if (record.fps < 1) in.Refuse("the frame rate is less than 1");
  record.camera = in.Fixed64();
  record.activeSettings = in.Fixed64();
  record.selection = TakeInts(in, in.Rows(sizeof(std::uint64_t)));
  in.End();
  return record;
}

// Of the reading of a scene: the tables; the rest is building the document.
constexpr double kTables = 0.4;

void ReadTables(const std::vector<Section>& sections, const ElementBounds& bounds, Budget& budget,
                ProgressMeter& meter, ElementTables& tables) {
  std::uint64_t rows = 0;
  for (std::size_t section = 0; section < kElementSections; ++section) {
    const std::string contents =
        Expand(NeededSection(sections, kElementRules[section].name), budget);
    ReadElements(tables, static_cast<ElementSection>(section), contents, bounds, budget);
    rows += tables[section].Rows();
    if (rows >= ProgressMeter::kStride)
      meter.Ask(kTables * static_cast<double>(section + 1) / static_cast<double>(kElementSections));
  }
  meter.Expect(rows, kTables);
}

// In the order in which sections refer to one another, whatever their order in the file: values,
// meshes, elements.
OwnedDocument ReadDocument(const std::vector<Section>& sections, const std::string& folder,
                           Budget& budget, ProgressMeter& meter) {
  const auto contents = [&](const char* name) {
    return Expand(NeededSection(sections, name), budget);
  };
  const ValueReader values(sections, budget);
  const bool hasColors = FindSection(sections, "COLORS") != nullptr;
  const std::string colors = hasColors ? contents("COLORS") : "";
  SceneTables tables{
      values, ReadMeshes(contents("MESHES"), hasColors ? &colors : nullptr, budget), {}, {}};
  const ElementBounds bounds{values.texts.size(), values.containers.size(),
                             values.numbers.vectors.size(), values.numbers.matrices.size(),
                             tables.meshes.size()};
  tables.document = ReadDocumentRecord(contents("DOCUMENT"), bounds, budget);
  ReadTables(sections, bounds, budget, meter, tables.elements);
  CheckIdentities(tables.elements, tables.document.id);
  OwnedDocument doc = SceneBuilder(tables, meter, folder).Build();
  if (FindSection(sections, "FILES"))
    SetEmbeddedFiles(*doc, ReadFiles(contents("FILES"), values.texts, budget));
  if (FindSection(sections, kTrashSection))
    SetDeletedStates(*doc, ReadTrash(contents(kTrashSection), budget));
  // They come from the list each time the scene is saved; that they can be read is all that counts.
  if (FindSection(sections, kNamesSection)) ReadStateNames(contents(kNamesSection), budget);
  KeepUnknownSections(*doc, sections, budget);
  return doc;
}

// A reader takes no more memory than the size of the file allows. A scene of very many alike
// elements is shorter than that: zeros fill it up.
void MakeRoom(std::uint64_t memory, SectionWriter& sections) {
  if (const std::uint64_t room = RoomFor(memory, sections.Bytes()))
    sections.AddAsItIs(kRoomSection, room, std::string(static_cast<std::size_t>(room), '\0'));
}

ProgressCallback Telling(Person& person, const char* doing, const std::string& path) {
  const std::string what = doing + path.substr(path.rfind('/') + 1);
  return [&person, what](double done) { return person.Progress(done, what); };
}

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

std::string At(const std::string& path) { return "\"" + path + "\": "; }

}  // namespace

Result<std::vector<std::string>> WriteScene(const BaseDocument& doc,
                                            const ProgressCallback& progress,
                                            const std::string& folder) {
  return Guarded<std::vector<std::string>>([&] {
    SectionWriter sections(ContentKind::Scene);
    ProgressMeter meter(progress);
    SceneWriter writer(doc, meter, folder);
    writer.Write(sections);
    if (!DeletedStatesOf(doc).empty())
      sections.Add(kTrashSection, TrashContents(DeletedStatesOf(doc)));
    AddStateNames(doc, sections);
    // Behind all that counts for the size, before sections that are not of this program.
    MakeRoom(writer.MemoryToRead() + 3 * sections.ContentBytes(), sections);
    AddKeptSections(doc, sections);
    return sections.Finish();
  });
}

Result<OwnedDocument> ReadScene(std::string_view bytes, std::uint64_t memoryLimit,
                                const ProgressCallback& progress, const std::string& folder) {
  return Guarded<OwnedDocument>([&] {
    Budget budget(memoryLimit ? memoryLimit : MemoryFor(bytes.size()));
    ProgressMeter meter(progress);
    return ReadDocument(ReadSections(bytes, ContentKind::Scene), folder, budget, meter);
  });
}

Status SaveSceneFile(const Services& services, const BaseDocument& doc, const std::string& path,
                     Replacing how, FileAsRead* now) {
  const Result<std::vector<std::string>> pieces =
      WriteScene(doc, Telling(services.person, "Saving ", path), FolderOf(path));
  if (!pieces) return Status::Failure(At(path) + pieces.Message());
  const std::vector<std::string_view> views(pieces.Value().begin(), pieces.Value().end());
  // Saving what the file holds already must not push out the former version, which differs.
  const std::uint64_t content = now != nullptr ? HashOfContent(views) : 0;
  if (now != nullptr && now->content == content && now->stamp == services.files.Stamp(path))
    how.former.clear();
  Status saved = services.files.ReplaceFile(path, views, how);
  if (saved && now != nullptr) *now = {services.files.Stamp(path), content};
  return saved;
}

Result<OwnedDocument> OpenSceneFile(const Services& services, const std::string& path,
                                    FileAsRead* now) {
  const FileStamp stamp = services.files.Stamp(path);
  const Result<std::string> bytes = services.files.ReadFile(path);
  if (!bytes) return Result<OwnedDocument>(bytes.GetStatus());
  Result<OwnedDocument> doc =
      ReadScene(bytes.Value(), 0, Telling(services.person, "Opening ", path), FolderOf(path));
  if (!doc) return Result<OwnedDocument>::Failure(At(path) + doc.Message());
  const std::string_view whole = bytes.Value();
  if (now != nullptr) *now = {stamp, HashOfContent({&whole, 1})};
  const host::Filename file{host::String(std::string_view(path))};
  doc.Value()->SetDocumentPath(file.GetDirectory());
  doc.Value()->SetDocumentName(file.GetFile());
  ClearChanged(*doc.Value());
  return doc;
}

}  // namespace engine
