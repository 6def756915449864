#include <algorithm>
#include <iostream>

#include "engine/dialog/TerminalText.h"
#include "engine/render/TextureSearch.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/SceneDump.h"
#include "engine/scene/TreeWalk.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct InfoOptions {
  bool tree = false;
  bool dump = false;
};

constexpr std::size_t kLabel = 18;
constexpr std::size_t kDeepest = 24;  // deeper objects are not moved further to the right
constexpr std::size_t kLongestPath = 4096;

// "  label      text", the text broken at blanks.
void AddFact(Report& report, const std::string& label, const std::string& text) {
  std::string head = "  " + label;
  for (const std::string& line : Wrapped(Readable(text), Terminal::Columns() - kLabel)) {
    report.Line(engine::PadRight(head, kLabel) + line);
    head.clear();
  }
}

void AddCounts(const host::BaseDocument& doc, Report& report) {
  const engine::SceneCounts counts = engine::CountScene(doc);
  report.PutObject("counts", {{"objects", counts.objects},
                              {"tags", counts.tags},
                              {"materials", counts.materials},
                              {"shaders", counts.shaders},
                              {"layers", counts.layers},
                              {"renderSettings", counts.renderSettings},
                              {"cameras", counts.cameras},
                              {"lights", counts.lights},
                              {"polygons", counts.polygons}});
  report.Line(Colored(Color::Bold, Shown(doc.GetDocumentName().GetString().ToUtf8())));
  AddFact(report, "objects",
          std::to_string(counts.objects) + " (" + Counted(counts.cameras, "camera") + ", " +
              Counted(counts.lights, "light") + "), " + Counted(counts.polygons, "polygon") + ", " +
              Counted(counts.tags, "tag"));
}

// The line for a person ends after so many names, the list for a program has all.
template <class T>
void AddNames(T* first, const char* key, Report& report) {
  constexpr std::size_t kMost = 40;
  std::vector<std::string> names;
  for (T* item = first; item; item = engine::NextInTree(item))
    names.push_back(item->GetName().ToUtf8());
  std::string text = names.empty() ? "none" : std::to_string(names.size()) + ": ";
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i)
    text += (i == 0 ? "" : ", ") + Shown(names[i]);
  if (names.size() > kMost) text += " and " + std::to_string(names.size() - kMost) + " more";
  AddFact(report, key, text);
  report.Put(key, names);
}

// The label stands at the first settings only.
void AddRenderSettings(const host::BaseDocument& doc, Report& report) {
  report.PutList("renderSettings");
  std::string label = "render settings";
  for (host::RenderData* settings = doc.GetFirstRenderData(); settings;
       settings = engine::NextInTree(settings)) {
    const host::BaseContainer& data = *settings->GetDataInstance();
    const host::LONG rate = data.GetLong(host::RDATA_FRAMERATE, 30);
    const host::LONG from = data.GetTime(host::RDATA_FRAMEFROM).GetFrame(rate);
    const host::LONG to = data.GetTime(host::RDATA_FRAMETO).GetFrame(rate);
    const host::LONG width = data.GetLong(host::RDATA_XRES);
    const host::LONG height = data.GetLong(host::RDATA_YRES);
    const bool active = settings == doc.GetActiveRenderData();
    const std::string name = settings->GetName().ToUtf8();
    report.Append("renderSettings", {{"name", name},
                                     {"width", width},
                                     {"height", height},
                                     {"from", from},
                                     {"to", to},
                                     {"active", active}});
    AddFact(report, label,
            Shown(name) + ", " + std::to_string(width) + " x " + std::to_string(height) +
                ", frames " + std::to_string(from) + " to " + std::to_string(to) +
                (active ? " (active)" : ""));
    label.clear();
  }
}

void AddTextures(engine::FileSystem& files, const host::BaseDocument& doc, Report& report) {
  report.PutList("textures");
  std::vector<std::string> missing;
  const std::vector<std::string> textures = engine::TextureNames(doc);
  for (const std::string& texture : textures) {
    const bool found = engine::IsTextureThere(files, doc, texture);
    report.Append("textures", {{"file", texture}, {"found", found}});
    if (!found) missing.push_back(texture);
  }
  const std::string none =
      missing.empty() ? ", all found" : ", " + std::to_string(missing.size()) + " not found:";
  AddFact(report, "textures", textures.empty() ? "none" : std::to_string(textures.size()) + none);
  for (const std::string& texture : missing)
    report.Line(std::string(kLabel + 2, ' ') + Colored(Color::Yellow, Readable(texture)));
  report.Put("missingTextures", missing);
}

void AddCamera(const host::BaseDocument& doc, Report& report) {
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  AddFact(report, "scene camera", camera ? PathOf(*camera) : "none (the editor camera)");
  report.Put("sceneCamera", camera ? JsonValue(PathOf(*camera)) : JsonValue());
}

const char* ModeMark(host::LONG mode) {
  return mode == host::MODE_ON ? "on " : mode == host::MODE_OFF ? "off" : " . ";
}

// A path that a chain of objects makes endless is left out.
void AddTree(const host::BaseDocument& doc, Report& report) {
  report.PutList("objects");
  report.Line("\n" + Colored(Color::Dim, "  position  editor  render  object"));
  ObjectPaths paths;
  std::size_t count = 0;
  for (host::BaseObject* object = doc.GetFirstObject(); object;
       object = engine::NextInTree(object)) {
    const std::string& path = paths.StepTo(*object);
    const std::string type = object->GetTypeName().ToUtf8();
    const std::string position = "#" + std::to_string(count++);
    report.Line("  " + engine::PadRight(position, 10) + ModeMark(object->GetEditorMode()) +
                "     " + ModeMark(object->GetRenderMode()) + "     " +
                std::string(2 * std::min(paths.Depth(), kDeepest), ' ') +
                Shown(object->GetName().ToUtf8()) + Colored(Color::Dim, "  " + type));
    report.Append("objects", {{"path", path.size() <= kLongestPath ? JsonValue(path) : JsonValue()},
                              {"name", object->GetName().ToUtf8()},
                              {"type", type},
                              {"editor", object->GetEditorMode()},
                              {"render", object->GetRenderMode()},
                              {"deform", object->GetDeformMode()}});
  }
}

void AddFacts(engine::FileSystem& files, const host::BaseDocument& doc, std::size_t marks,
              Report& report) {
  AddCounts(doc, report);
  AddNames(doc.GetFirstMaterial(), "materials", report);
  AddNames(static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()), "layers", report);
  AddRenderSettings(doc, report);
  AddCamera(doc, report);
  AddTextures(files, doc, report);
  AddFact(report, "Stagemarks", std::to_string(marks));
  report.Put("stagemarks", marks);
}

// Writes what the scene holds as it goes, as lines or as the text of one JSON object. What cannot
// be written ends it; why is said when the program ends, as of all results.
int PrintDump(const host::BaseDocument& doc, Program& program) {
  if (program.json)
    std::cout << "{\n  \"version\": " << kJsonVersion << ",\n  \"verb\": \"info\",\n  \"dump\": \"";
  const bool whole = engine::DumpDocument(doc, [&program](std::string_view piece) {
    if (program.json) {
      std::cout << JsonText(piece);
    } else {
      std::cout << piece;
    }
    return std::cout.good() && !Terminal::Interrupted();
  });
  if (program.json && whole) std::cout << "\"\n}\n";
  return Terminal::Interrupted() ? kInterrupted : kDone;
}

// --strict fails after everything is told: this verb is for finding out.
int RunInfo(Program& program, const InfoOptions& options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  host::BaseDocument& doc = session.Document();
  if (options.dump) return PrintDump(doc, program);
  Report report;
  AddFacts(session.Files(), doc, session.Dialog().Marks().size(), report);
  if (options.tree) AddTree(doc, report);
  report.Print(program);
  const auto missing =
      program.strict ? engine::MissingTextures(session.Files(), doc) : std::vector<std::string>();
  TellMissing(program.terminal, missing, true);
  return missing.empty() ? kDone : kFailed;
}

}  // namespace

void AddInfo(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("info", "Say what a scene holds");
  AddScene(verb, program);
  auto options = std::make_shared<InfoOptions>();
  verb.AddFlag("--tree", options->tree, "Show the object tree with its switches");
  AddStrict(verb, program);
  verb.AddFlag("--dump", options->dump, "Print everything the scene holds, one fact a line");
  verb.Footer(
      "Examples:\n"
      "  stagemarks info room.c4d --tree\n"
      "  stagemarks info room.gltf --json");
  verb.Does([&program, options] { return RunInfo(program, *options); });
}

}  // namespace commandline
