#include <algorithm>
#include <array>
#include <map>

#include "engine/scene/NodeIds.h"
#include "engine/states/FieldText.h"
#include "engine/states/RecordList.h"
#include "host/RenderData.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/LoadParts.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using engine::Difference;
using engine::ElementChange;
using engine::Part;

constexpr std::size_t kMostMaterials = 5;

struct ShowOptions {
  std::string name;
  PartChoice parts;
};

// A value of a switch that a person wants to know of: `words` follow the number of elements that
// have it.
struct SwitchWords {
  Part part;
  host::LONG field;
  host::LONG value;
  const char* words;
};
// The flags of a layer are fields that count down from kFieldLayerFlags, in the host's order.
constexpr SwitchWords kSwitches[] = {
    {Part::Objects, engine::kFieldEditorMode, host::MODE_OFF, "hidden in the editor"},
    {Part::Objects, engine::kFieldRenderMode, host::MODE_OFF, "hidden in renders"},
    {Part::Objects, engine::kFieldDeformMode, 0, "generator or deformer off"},
    {Part::Objects, engine::kFieldEditorMode, host::MODE_ON,
     "shown in the editor, whatever is above"},
    {Part::Objects, engine::kFieldRenderMode, host::MODE_ON, "shown in renders, whatever is above"},
    {Part::Layers, engine::kFieldLayerFlags, 1, "solo"},
    {Part::Layers, engine::kFieldLayerFlags - 1, 0, "hidden in the view"},
    {Part::Layers, engine::kFieldLayerFlags - 2, 0, "hidden in renders"},
    {Part::Layers, engine::kFieldLayerFlags - 3, 0, "hidden in lists of objects"},
    {Part::Layers, engine::kFieldLayerFlags - 4, 1, "locked"},
    {Part::Layers, engine::kFieldLayerFlags - 5, 0, "without generators"},
    {Part::Layers, engine::kFieldLayerFlags - 6, 0, "without deformers"},
    {Part::Layers, engine::kFieldLayerFlags - 7, 0, "without expressions"},
    {Part::Layers, engine::kFieldLayerFlags - 8, 0, "without animation"},
};

// The contents of one Stagemark, part by part: first a line each, then, where all is asked for,
// every element.
class Contents {
 public:
  // With fields of all elements or of one of each part: the others are counted from the records.
  Contents(const host::BaseDocument& doc, const host::BaseContainer& record,
           const engine::Parts& parts, const Difference& contents, bool whole)
      : doc_(doc), contents_(contents), sides_{doc, doc, "", "", whole} {
    for (const engine::ListRow& row : engine::kRecordLists) {
      if ((engine::PartsOfList(row.key) & parts).any()) CountRecords(row, record, parts);
    }
  }

  void AddLines(const engine::Parts& parts, Report& report) const {
    std::vector<std::string> missing;
    for (const engine::PartRow& row : engine::kPartRows) {
      if (!parts[engine::IndexOf(row.part)]) continue;
      if (contents_.Of(row.part).onlyRight == 0) {
        if (row.part <= Part::Materials) missing.emplace_back(row.label);
        continue;
      }
      bool isFirst = true;
      for (const std::string& line : Summary(row.part)) {
        AddLabeled(report, isFirst ? row.label : "", line);
        isFirst = false;
      }
    }
    if (!missing.empty()) AddLabeled(report, "Holds no", Joined(missing));
    if (contents_.gone > 0)
      AddLabeled(report, "Gone",
                 Counted(contents_.gone, "record") + " of elements that are in the scene no more");
    if (sides_.whole) AddElements(report);
  }

  void Put(Report& report) const {
    JsonMembers counts;
    for (const engine::PartRow& row : engine::kPartRows) {
      if (const std::size_t count = contents_.Of(row.part).onlyRight; count > 0)
        counts.emplace_back(row.word, count);
    }
    report.PutObject("counts", counts);
    report.PutList("switches");
    for (std::size_t i = 0; i < std::size(kSwitches); ++i) {
      if (switches_[i] > 0) {
        report.Append("switches", {{"part", engine::RowOf(kSwitches[i].part).word},
                                   {"words", kSwitches[i].words},
                                   {"count", switches_[i]}});
      }
    }
    report.Put("gone", contents_.gone);
    report.PutStream("elements", [this](const auto& append) {
      for (const ElementChange& element : contents_.changes) append(Members(element));
    });
  }

 private:
  // The members as of a change, with one value for each field.
  JsonMembers Members(const ElementChange& element) const {
    const host::LONG type = engine::TypeForFields(doc_, element);
    std::vector<JsonValue> fields;
    for (const engine::FieldChange& field : element.fields) {
      fields.push_back(JsonValue::Object(
          {{"name", engine::FieldLabel(type, field.field)},
           {"number", field.field},
           {"value", engine::FieldValueText(doc_, type, field.field, field.right)},
           {"raw", field.right ? RawValue(doc_, *field.right) : JsonValue()}}));
    }
    return {{"part", engine::RowOf(element.part).word},
            {"element", PlaceOf(sides_, element)},
            {"kind", engine::ElementKind(doc_, element.element)},
            {"fields", JsonValue::List(fields)}};
  }

  void CountRecords(const engine::ListRow& row, const host::BaseContainer& record,
                    const engine::Parts& parts) {
    const engine::RecordList list(record, row.key, row.link);
    engine::NodeSet met;
    engine::ForEachRecordBackwards(
        list, met, [&](engine::NodeId id, const engine::ContainerBody* one) {
          host::BaseList2D* element = engine::FindNode(&doc_, id);
          const engine::PartRow* part =
              element ? engine::PartOfElement(row.key, *element) : nullptr;
          if (part && parts[engine::IndexOf(part->part)]) CountRecord(part->part, one);
        });
  }

  void CountRecord(Part part, const engine::ContainerBody* record) {
    if (part != Part::Objects && part != Part::Layers && part != Part::Materials) return;
    for (const engine::FieldNow& field : engine::FieldsOfRecord(doc_, part, record)) {
      if (part == Part::Materials)
        ++materials_[engine::FieldValueText(doc_, host::Ttexture, field.field, field.value)];
      for (std::size_t i = 0; i < std::size(kSwitches); ++i) {
        switches_[i] += part == kSwitches[i].part && field.field == kSwitches[i].field &&
                        field.value.GetLong() == kSwitches[i].value;
      }
    }
  }

  std::vector<std::string> Summary(Part part) const {
    if (part == Part::RenderSettings) return {SettingsText()};
    if (part == Part::Camera) return {CameraText()};
    std::vector<std::string> lines{std::to_string(contents_.Of(part).onlyRight)};
    if (part == Part::Materials) lines[0] += ": " + MaterialsText();
    for (std::size_t i = 0; i < std::size(kSwitches); ++i) {
      if (kSwitches[i].part == part && switches_[i] > 0)
        lines.push_back(Counted(switches_[i], part == Part::Layers ? "layer" : "object") + ": " +
                        kSwitches[i].words);
    }
    return lines;
  }

  const ElementChange& First(Part part) const {
    return *std::ranges::find(contents_.changes, part, &ElementChange::part);
  }

  std::string Value(const ElementChange& element, host::LONG field) const {
    for (const engine::FieldChange& one : element.fields) {
      if (one.field == field) return ValuesText(sides_, element, one, Terminal::Columns() / 2);
    }
    return "not said";
  }

  std::string SettingsText() const {
    const ElementChange& settings = First(Part::RenderSettings);
    const std::string width = Value(settings, host::RDATA_XRES);
    return Listed({engine::ElementPath(doc_, settings.element)}) + ": " +
           width.substr(0, width.find(' ')) + " x " + Value(settings, host::RDATA_YRES) + ", " +
           Value(settings, host::RDATA_FRAMEFROM) + " to " + Value(settings, host::RDATA_FRAMETO);
  }

  std::string CameraText() const {
    const std::string camera = Value(First(Part::Camera), engine::kFieldSceneCamera);
    return camera == "none" ? "none (the editor camera)" : camera;
  }

  // "Brick" 8, "Clay" 4 and 3 more materials; those with most tags first.
  std::string MaterialsText() const {
    std::vector<std::pair<std::string, std::size_t>> sorted(materials_.begin(), materials_.end());
    std::ranges::stable_sort(sorted, std::ranges::greater(),
                             &std::pair<std::string, std::size_t>::second);
    std::string text;
    for (std::size_t i = 0; i < std::min(sorted.size(), kMostMaterials); ++i) {
      text += (i > 0 ? ", " : "") + (sorted[i].first == "none" ? "no material" : sorted[i].first) +
              " " + std::to_string(sorted[i].second);
    }
    if (sorted.size() > kMostMaterials)
      text += " and " + Counted(sorted.size() - kMostMaterials, "more material");
    return text;
  }

  void AddElements(Report& report) const {
    for (const engine::PartRow& row : engine::kPartRows) {
      std::vector<FactRow> rows;
      for (const ElementChange& element : contents_.changes) {
        if (element.part != row.part) continue;
        const host::LONG type = engine::TypeForFields(doc_, element);
        for (const engine::FieldChange& field : element.fields) {
          rows.push_back({PlaceOf(sides_, element),
                          row.part == Part::Camera ? "" : engine::FieldLabel(type, field.field),
                          engine::FieldValueText(doc_, type, field.field, field.right)});
        }
      }
      if (rows.empty()) continue;
      report.Line("");
      report.Line(Colored(Color::Bold, row.label));
      AddRows(rows, true, report);
    }
  }

  const host::BaseDocument& doc_;
  const Difference& contents_;
  Sides sides_;
  std::array<std::size_t, std::size(kSwitches)> switches_{};  // elements that have it so
  std::map<std::string, std::size_t> materials_;              // tags, by the material's name
};

int RunShow(Program& program, const ShowOptions& options) {
  Session session(program);
  engine::StoredState state;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.ReadMark(options.name, state); status != kDone) return status;
  engine::CompareOptions compare;
  compare.parts = PartsToShow(options.parts);
  if (!program.verbose && !program.json) compare.mostFields = 1;
  const Difference difference = engine::ContentsOf(session.Document(), state.record, compare);
  const Contents contents(session.Document(), state.record, compare.parts, difference,
                          program.verbose);
  Report report;
  report.Put("stagemark", state.name);
  report.Put("date", state.date.Text());
  report.Put("recordedAt", JsonValue::OrNothing(state.date.WithZone()));
  report.Put("current", state.current);
  contents.Put(report);
  const std::string date = state.date.Text();
  report.Line(Colored(Color::Bold, Shown(state.name)) + (date.empty() ? "" : ", recorded " + date) +
              (state.current ? ", the one recorded or loaded last" : ""));
  contents.AddLines(compare.parts, report);
  report.Print(program);
  return kDone;
}

}  // namespace

void AddShow(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("show", "Say what a Stagemark holds");
  AddScene(verb, program);
  auto options = std::make_shared<ShowOptions>();
  verb.Add("STAGEMARK", options->name, "Its name, or a pattern that means it alone").Required();
  AddPartsToShow(verb, options->parts);
  verb.Footer(
      "With -v every element is listed with its values.\n\n"
      "Examples:\n"
      "  stagemarks show room.c4d Day\n"
      "  stagemarks show room.c4d Day --parts layers,camera -v\n"
      "  stagemarks show room.c4d Day --json");
  verb.Does([&program, options] { return RunShow(program, *options); });
}

}  // namespace commandline
