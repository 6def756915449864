#include <CLI/CLI.hpp>
#include <filesystem>

#include "engine/scene/Nodes.h"
#include "engine/scene/SceneDump.h"
#include "program/commandline/Addressing.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using nlohmann::json;

struct InfoOptions {
  bool tree = false;
  bool dump = false;
};

std::string Indented(const std::string& text, std::size_t depth) { return std::string(2 * depth, ' ') + text; }

void AddCounts(const host::BaseDocument& doc, Report& report) {
  const engine::SceneCounts counts = engine::CountScene(doc);
  report.Json()["counts"] = {{"objects", counts.objects}, {"tags", counts.tags},     {"materials", counts.materials},
                             {"shaders", counts.shaders}, {"layers", counts.layers}, {"renderSettings", counts.renderSettings},
                             {"cameras", counts.cameras}, {"lights", counts.lights}, {"polygons", counts.polygons}};
  report.Line(Coloured(Colour::Bold, doc.GetDocumentName().GetString().ToUtf8()));
  report.Line("  " + Counted(counts.objects, "object") + " (" + Counted(counts.cameras, "camera") + ", " +
              Counted(counts.lights, "light") + "), " + Counted(counts.polygons, "polygon") + ", " + Counted(counts.tags, "tag"));
}

template <class T>
void AddNames(T* first, const std::string& title, const char* key, Report& report) {
  json names = json::array();
  std::string line;
  for (T* item = first; item; item = engine::NextInTree(item)) {
    names.push_back(ValidUtf8(item->GetName().ToUtf8()));
    line += (line.empty() ? "" : ", ") + item->GetName().ToUtf8();
  }
  report.Line("  " + title + ": " + (line.empty() ? "none" : line));
  report.Json()[key] = std::move(names);
}

void AddRenderSettings(const host::BaseDocument& doc, Report& report) {
  json all = json::array();
  for (host::RenderData* settings = doc.GetFirstRenderData(); settings; settings = engine::NextInTree(settings)) {
    const host::BaseContainer& data = *settings->GetDataInstance();
    const host::LONG rate = data.GetLong(host::RDATA_FRAMERATE, 30);
    const host::LONG from = data.GetTime(host::RDATA_FRAMEFROM).GetFrame(rate);
    const host::LONG to = data.GetTime(host::RDATA_FRAMETO).GetFrame(rate);
    const bool active = settings == doc.GetActiveRenderData();
    all.push_back({{"name", ValidUtf8(settings->GetName().ToUtf8())},
                   {"width", data.GetLong(host::RDATA_XRES)},
                   {"height", data.GetLong(host::RDATA_YRES)},
                   {"from", from},
                   {"to", to},
                   {"active", active}});
    report.Line("  render settings: " + settings->GetName().ToUtf8() + ", " + std::to_string(data.GetLong(host::RDATA_XRES)) +
                " x " + std::to_string(data.GetLong(host::RDATA_YRES)) + ", frames " + std::to_string(from) + " to " +
                std::to_string(to) + (active ? " (active)" : ""));
  }
  report.Json()["renderSettings"] = std::move(all);
}

void AddTextures(Session& session, Report& report) {
  const host::BaseContainer textures = session.Document().GetAllTextures(nullptr);
  json all = json::array();
  std::size_t missing = 0;
  for (host::LONG i = 0; i < textures.GetCount(); ++i) {
    const std::string path = textures.GetIndexData(i).GetFilename().GetString().ToUtf8();
    const bool found = session.Files().Kind(path) == engine::FileKind::File;
    all.push_back({{"file", ValidUtf8(path)}, {"found", found}});
    if (found) continue;
    ++missing;
    report.Line(Coloured(Colour::Yellow, "  texture not found: ") + path);
  }
  report.Line("  textures: " + std::to_string(all.size()) + " references, " + std::to_string(missing) + " not found");
  report.Json()["textures"] = std::move(all);
}

void AddCamera(const host::BaseDocument& doc, Report& report) {
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  report.Line("  scene camera: " + (camera ? PathOf(*camera) : "none (the editor camera)"));
  report.Json()["sceneCamera"] = camera ? json(ValidUtf8(PathOf(*camera))) : json();
}

const char* ModeMark(host::LONG mode) { return mode == host::MODE_ON ? "on " : mode == host::MODE_OFF ? "off" : " . "; }

void AddTree(const host::BaseDocument& doc, Report& report) {
  json all = json::array();
  report.Line("");
  report.Line(Coloured(Colour::Dim, "editor render  object"));
  for (host::BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    std::size_t depth = 0;
    for (const host::BaseObject* up = object->GetUp(); up; up = up->GetUp()) ++depth;
    const std::string type = object->GetTypeName().ToUtf8();
    all.push_back({{"path", ValidUtf8(PathOf(*object))},
                   {"type", type},
                   {"editor", object->GetEditorMode()},
                   {"render", object->GetRenderMode()},
                   {"deform", object->GetDeformMode()}});
    report.Line(std::string("  ") + ModeMark(object->GetEditorMode()) + "    " + ModeMark(object->GetRenderMode()) + "   " +
                Indented(object->GetName().ToUtf8(), depth) + Coloured(Colour::Dim, "  " + type));
  }
  report.Json()["objects"] = std::move(all);
}

int RunInfo(Program& program, const InfoOptions& options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  host::BaseDocument& doc = session.Document();
  Report report;
  if (options.dump) {
    report.Line(engine::DumpDocument(doc));
    report.Json()["dump"] = ValidUtf8(engine::DumpDocument(doc));
  } else {
    AddCounts(doc, report);
    AddNames(doc.GetFirstMaterial(), "materials", "materials", report);
    AddNames(static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()), "layers", "layers", report);
    AddRenderSettings(doc, report);
    AddCamera(doc, report);
    AddTextures(session, report);
    report.Line("  Stagemarks: " + std::to_string(session.Dialog().Marks().size()));
    report.Json()["stagemarks"] = session.Dialog().Marks().size();
    if (options.tree) AddTree(doc, report);
  }
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddInfo(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("info", "Say what a scene holds");
  AddScene(*verb, program);
  auto options = std::make_shared<InfoOptions>();
  verb->add_flag("--tree", options->tree, "Show the object tree with its switches");
  verb->add_flag("--dump", options->dump, "Print everything the scene holds, one fact a line");
  verb->callback([&program, options] { program.verb = [&program, options] { return RunInfo(program, *options); }; });
}

}  // namespace commandline
