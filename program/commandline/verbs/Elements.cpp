// The verbs objects, cameras, lights, materials and layers: listing, adding, renaming, removing
// and placing elements of a scene.
#include <array>
#include <charconv>
#include <numbers>
#include <optional>
#include <unordered_set>

#include "engine/dialog/TerminalText.h"
#include "engine/editing/ElementCommands.h"
#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/import/Import.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "engine/scenefile/NamesInFile.h"
#include "engine/states/StatesHolding.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/FramingCamera.h"
#include "program/commandline/Session.h"
#include "program/lookup/SceneLookup.h"

namespace commandline {

namespace {

enum class ElementClass { Objects, Cameras, Lights, Materials, Layers };

struct ElementVerb {
  ElementClass elements;
  const char* name;
  const char* noun;
  host::LONG type;  // of its objects, 0 for all
  const char* help;
  const char* footer;

  bool IsOfObjects() const { return elements < ElementClass::Materials; }
};

constexpr ElementVerb kElementVerbs[] = {
    {ElementClass::Objects, "objects", "object", 0, "List, add, rename, remove or place objects",
     "Examples:\n"
     "  stagemarks objects list room.c4d\n"
     "  stagemarks objects add room.c4d Marker --type cube --at 0,50,0 --write\n"
     "  stagemarks objects rename room.c4d /Room/Cube Table --write\n"
     "  stagemarks objects remove room.c4d \"Helper*\" -o clean.c4d\n"
     "  stagemarks objects place room.c4d Table --at 100,0,0 --rotate 0,90,0 --write"},
    {ElementClass::Cameras, "cameras", "camera", host::Ocamera,
     "List, add, rename, remove, place or aim cameras",
     "A camera that is added without --at shows everything. `stagemarks set SCENE --camera NAME` "
     "makes one the camera to render through.\n\n"
     "Examples:\n"
     "  stagemarks cameras add room.c4d Front --at 0,150,-900 --look-at 0,100,0 --write\n"
     "  stagemarks cameras place room.c4d Front --look-at /Room/Table --write\n"
     "  stagemarks cameras list room.c4d"},
    {ElementClass::Lights, "lights", "light", host::Olight,
     "List, add, rename, remove, place or aim lights",
     "A light that is added without --at stands where a camera that shows everything would.\n\n"
     "Examples:\n"
     "  stagemarks lights add room.c4d Key --at 300,400,-300 --look-at 0,100,0 --write\n"
     "  stagemarks lights remove room.c4d \"Sun*\" --write"},
    {ElementClass::Materials, "materials", "material", 0, "List, add, rename or remove materials",
     "`stagemarks set SCENE --object OBJECT --material NAME` gives one to objects.\n\n"
     "Examples:\n"
     "  stagemarks materials add room.c4d Clay --color 0.4,0.3,0.3 --write\n"
     "  stagemarks materials rename room.c4d Oak \"Oak, old\" --write\n"
     "  stagemarks materials remove room.c4d \"#3\" --write"},
    {ElementClass::Layers, "layers", "layer", 0, "List, add, rename or remove layers",
     "`stagemarks set SCENE` puts objects on them and switches them.\n\n"
     "Examples:\n"
     "  stagemarks layers add room.c4d Props --write\n"
     "  stagemarks layers rename room.c4d Props Furniture --write\n"
     "  stagemarks layers list room.c4d"},
};

std::vector<std::string> TypeWords() {
  std::vector<std::string> words;
  for (const lookup::ObjectTypeWord& type : lookup::kObjectTypeWords) words.emplace_back(type.word);
  return words;
}

constexpr const char* kListing = "list";
constexpr const char* kAdd = "add";
constexpr const char* kRename = "rename";
constexpr const char* kRemove = "remove";
constexpr const char* kPlace = "place";

struct ElementOptions {
  std::string action;
  std::vector<std::string> names;
  bool all = false;
  bool namesOnly = false;
  std::string begin;
  std::string type = "null";
  std::string under;
  std::vector<double> at;
  std::string lookAt;
  std::vector<double> rotate;
  std::vector<double> scale;
  std::vector<double> color{0.8, 0.8, 0.8};

  bool Places() const {
    return !at.empty() || !lookAt.empty() || !rotate.empty() || !scale.empty();
  }
};

host::Vector VectorFrom(const std::vector<double>& numbers) {
  return {numbers[0], numbers[1], numbers[2]};
}

// "0,100,-5". Nothing for anything else; never by the locale.
std::optional<host::Vector> ReadVector(const std::string& typed) {
  std::array<double, 3> numbers{};
  const char* at = typed.data();
  const char* const end = at + typed.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto [next, error] = std::from_chars(at, end, numbers[i]);
    const bool isLast = i + 1 == numbers.size();
    if (error != std::errc() || (isLast ? next != end : next == end || *next != ','))
      return std::nullopt;
    at = next + 1;
  }
  return host::Vector(numbers[0], numbers[1], numbers[2]);
}

// Carries out one call of one of these verbs.
class ElementWork {
 public:
  ElementWork(Program& program, const ElementVerb& verb, const ElementOptions& options)
      : program_(program), verb_(verb), options_(options), session_(program) {}

  int Run() {
    if (const int status = CheckArguments(); status != kDone) return status;
    if (const auto status = ListNamesOfFile()) return *status;
    if (const int status = session_.StartWithScene(); status != kDone) return status;
    if (options_.action == kListing) return List();
    report_.Put("action", options_.action);
    report_.Put("kind", verb_.noun);
    report_.PutList("elements");
    const int status = options_.action == kAdd      ? Add()
                       : options_.action == kRename ? Rename()
                       : options_.action == kRemove ? Remove()
                                                    : Place();
    if (status != kDone) return status;
    session_.App().DeliverEvents();
    return session_.Keep(report_);
  }

 private:
  using Found = std::vector<host::BaseList2D*>;

  int Refuse(const std::string& why) {
    program_.terminal.Error(why);
    return kUsage;
  }

  int CheckArguments() {
    const std::size_t names = options_.names.size();
    const std::string noun = verb_.noun;
    const bool writes = program_.write || !program_.output.empty();
    if (options_.action == kListing && writes && !program_.open)
      return Refuse("There is nothing to write: a list changes nothing.");
    if (options_.action == kAdd && names != 1)
      return Refuse("Give one name: that of the new " + noun + ".");
    if (options_.action == kRename && names != 2)
      return Refuse("Give two names: that of the " + noun + " now, and its new one.");
    if ((options_.action == kRemove || options_.action == kPlace) && names == 0)
      return Refuse("Which " + noun + "s are meant? Give their names.");
    if (options_.action == kPlace && !options_.Places())
      return Refuse("Say where to: --at, --look-at, --rotate or --scale.");
    return kDone;
  }

  // All that are meant by one of the names, each once.
  int Find(const std::vector<std::string>& typed, Found& found) {
    for (const std::string& name : typed) {
      const engine::Status status = FindSome(name, found);
      if (!status) return Refuse(status.Message());
    }
    std::unordered_set<const host::BaseList2D*> met;
    std::erase_if(found, [&](const auto* element) { return !met.insert(element).second; });
    return kDone;
  }

  engine::Status FindSome(const std::string& typed, Found& found) {
    const auto add = [&](const auto& some) {
      if (some) found.insert(found.end(), some.Value().begin(), some.Value().end());
      return some ? engine::Status() : some.GetStatus();
    };
    const host::BaseDocument& doc = session_.Document();
    if (verb_.elements == ElementClass::Materials)
      return add(FindMaterials(doc, typed, options_.all));
    if (verb_.elements == ElementClass::Layers) return add(FindLayers(doc, typed, options_.all));
    return add(FindObjects(doc, typed, {verb_.type, options_.all}));
  }

  std::string CalledOf(const host::BaseList2D& element) const {
    return verb_.IsOfObjects() ? PathOf(static_cast<const host::BaseObject&>(element))
                               : element.GetName().ToUtf8();
  }

  JsonMembers MembersOf(const host::BaseList2D& element) const {
    return {{"name", element.GetName().ToUtf8()},
            {"path", verb_.IsOfObjects() ? JsonValue(CalledOf(element)) : JsonValue()},
            {"type", element.GetTypeName().ToUtf8()}};
  }

  static JsonValue JsonOf(const host::Vector& v) {
    return JsonValue::List({JsonValue(v.x), JsonValue(v.y), JsonValue(v.z)});
  }

  // Members of one object with its place, in the coordinates of the scene.
  JsonMembers PlaceOf(const host::BaseObject& object) const {
    JsonMembers members = MembersOf(object);
    members.emplace_back("at", JsonOf(object.GetMg().off));
    return members;
  }

  // --- list

  // Straight from a file of ours, without opening the scene; nothing where more is wanted.
  // Completion asks this with each press of Tab.
  std::optional<int> ListNamesOfFile() {
    const std::string path = AbsolutePath(program_.scene);
    if (!options_.namesOnly || options_.action != kListing || !options_.names.empty() ||
        program_.open || engine::IsImportable(path))
      return std::nullopt;
    const auto names =
        engine::NamesInSection(path,
                               verb_.elements == ElementClass::Materials ? engine::kMaterialRows
                               : verb_.elements == ElementClass::Layers  ? engine::kLayerRows
                                                                         : engine::kObjectRows,
                               verb_.type, options_.begin);
    if (!names) {
      program_.terminal.Error(names.Message());
      return kFailed;
    }
    PrintNames(names.Value(), options_.begin);
    return kDone;
  }

  int List() {
    if (verb_.elements == ElementClass::Materials)
      return ListAll(session_.Document().GetFirstMaterial());
    if (verb_.elements == ElementClass::Layers) return ListAll(FirstLayerOf(session_.Document()));
    return ListAll(session_.Document().GetFirstObject());
  }

  // Positions count all elements, also those that are not listed: they are what "#12" means.
  template <class T>
  int ListAll(T* first) {
    Found meant;
    if (const int status = Find(options_.names, meant); status != kDone) return status;
    const std::unordered_set<const host::BaseList2D*> chosen(meant.begin(), meant.end());
    report_.Put("kind", verb_.noun);
    report_.PutList("elements");
    std::vector<std::string> names;
    std::size_t position = 0;
    std::size_t count = 0;
    for (T* item = first; item; item = engine::NextInTree(item), ++position) {
      if (verb_.type != 0 && item->GetType() != verb_.type) continue;
      if (!options_.names.empty() && !chosen.contains(item)) continue;
      ++count;
      if (options_.namesOnly) {
        names.push_back(item->GetName().ToUtf8());
        continue;
      }
      JsonMembers members = MembersOf(*item);
      members.emplace_back("position", position);
      report_.Append("elements", members);
      report_.Line("  " + engine::PadRight("#" + std::to_string(position), 8) +
                   Readable(CalledOf(*item)) +
                   (verb_.IsOfObjects() && verb_.type == 0
                        ? Colored(Color::Dim, "  " + item->GetTypeName().ToUtf8())
                        : ""));
    }
    if (options_.namesOnly) {
      PrintNames(names, options_.begin);
      return kDone;
    }
    if (count == 0) report_.Line("There are no " + std::string(verb_.noun) + "s.");
    report_.Print(program_);
    return kDone;
  }

  // --- add

  int Add() {
    host::BaseDocument& doc = session_.Document();
    const std::string& name = options_.names.front();
    if (name.empty()) return Refuse("A name is needed.");
    host::BaseList2D* made = nullptr;
    const engine::UndoScope step(doc, "Add " + std::string(verb_.noun));
    if (verb_.elements == ElementClass::Materials) {
      made = engine::MakeMaterial(doc, name, VectorFrom(options_.color));
    } else if (verb_.elements == ElementClass::Layers) {
      host::LayerData data;
      data.color = engine::NextLayerColor(doc);
      made = engine::MakeLayer(doc, name, data);
    } else if (const int status = AddObject(made); status != kDone) {
      return status;
    }
    doc.SetChanged();
    host::EventAdd();
    const bool isPlaced = verb_.IsOfObjects();
    report_.Append("elements",
                   isPlaced ? PlaceOf(static_cast<host::BaseObject&>(*made)) : MembersOf(*made));
    report_.Put("changed", 1);
    report_.Line("Added the " + std::string(verb_.noun) + " " + Readable(CalledOf(*made)) + ".");
    return kDone;
  }

  // Cameras and lights without a place stand where a camera sees everything.
  int AddObject(host::BaseList2D*& made) {
    host::BaseDocument& doc = session_.Document();
    engine::Placement placement;
    host::BaseObject* parent = nullptr;
    if (const int status = ReadPlacement(placement); status != kDone) return status;
    if (!options_.under.empty()) {
      const auto found = FindObject(doc, options_.under);
      if (!found) return Refuse(found.Message());
      parent = found.Value();
    }
    const bool needsPlace = verb_.type != 0 && !placement.at;
    const engine::PictureCamera view = needsPlace ? FramingView(doc) : engine::PictureCamera();
    const host::LONG type = verb_.type != 0 ? verb_.type : TypeTyped();
    host::BaseObject* object = engine::AddObject(
        doc, type, options_.names.front(),
        engine::Placed(needsPlace ? view.frame : host::Matrix(), placement), parent);
    if (type == host::Ocamera && needsPlace)
      object->GetDataInstance()->SetReal(host::CAMERA_FOV, view.fov);
    made = object;
    return kDone;
  }

  host::LONG TypeTyped() const {
    for (const lookup::ObjectTypeWord& type : lookup::kObjectTypeWords) {
      if (options_.type == type.word) return type.type;
    }
    return host::Onull;
  }

  // Angles are typed in degrees. Three numbers are a place before they may be a name.
  int ReadPlacement(engine::Placement& placement) {
    if (!options_.at.empty()) placement.at = VectorFrom(options_.at);
    if (!options_.scale.empty()) placement.scale = VectorFrom(options_.scale);
    if (!options_.rotate.empty()) {
      const double degree = std::numbers::pi / 180;
      placement.angles = engine::Scaled(VectorFrom(options_.rotate), degree);
    }
    if (options_.lookAt.empty()) return kDone;
    placement.target = ReadVector(options_.lookAt);
    if (placement.target) return kDone;
    const auto target = FindObject(session_.Document(), options_.lookAt);
    if (!target)
      return Refuse(target.Message() + "\n--look-at takes a place, as 0,100,0, or an object.");
    placement.target = target.Value()->GetMg().off;
    return kDone;
  }

  // --- rename, remove, place

  int Rename() {
    Found found;
    if (const int status = Find({options_.names[0]}, found); status != kDone) return status;
    if (options_.names[1].empty()) return Refuse("A name is needed.");
    if (found.size() > 1 && !options_.all) {
      return Refuse("\"" + Shown(options_.names[0]) + "\" means " +
                    Counted(found.size(), verb_.noun) +
                    ". --all gives all of them the new name, with numbers behind it.");
    }
    std::vector<std::string> before;
    for (const host::BaseList2D* element : found) before.push_back(CalledOf(*element));
    auto edit = engine::RenameElements(session_.Document(), found, options_.names[1]);
    const std::size_t changed = edit.steps;
    if (const int status = Carry(std::move(edit)); status != kDone) return status;
    for (std::size_t i = 0; i < found.size(); ++i) {
      JsonMembers members = MembersOf(*found[i]);
      members.emplace_back("former", before[i]);
      report_.Append("elements", members);
    }
    Tell(changed, "Renamed",
         found.size() == 1 ? Listed(before) + " to " + Listed({found[0]->GetName().ToUtf8()})
                           : Counted(changed, verb_.noun));
    return kDone;
  }

  // Names and holders are read before the elements go.
  int Remove() {
    Found found;
    if (const int status = Find(options_.names, found); status != kDone) return status;
    std::vector<std::string> called;
    for (const host::BaseList2D* element : found) {
      called.push_back(CalledOf(*element));
      report_.Append("elements", MembersOf(*element));
    }
    const std::vector<std::string> holders = engine::StatesHolding(session_.Document(), found);
    if (const int status = Carry(engine::RemoveElements(session_.Document(), found));
        status != kDone)
      return status;
    Tell(found.size(), "Removed", Listed(called));
    report_.Put("heldBy", holders);
    // Their records stay.
    if (!holders.empty()) {
      program_.terminal.Note(
          Counted(holders.size(), "Stagemark") + (holders.size() == 1 ? " holds" : " hold") +
          " something of it: " + Listed(holders) + ". Loading passes over what is gone.");
    }
    return kDone;
  }

  int Place() {
    Found found;
    engine::Placement placement;
    if (const int status = Find(options_.names, found); status != kDone) return status;
    if (const int status = ReadPlacement(placement); status != kDone) return status;
    std::vector<host::BaseObject*> objects;
    for (host::BaseList2D* element : found) objects.push_back(engine::AsObject(element));
    auto edit = engine::PlaceObjects(session_.Document(), objects, placement);
    if (!edit) return Refuse(edit.Message());
    const std::size_t changed = edit.Value().steps;
    if (const int status = Carry(edit.Take()); status != kDone) return status;
    std::vector<std::string> called;
    for (const host::BaseObject* object : objects) {
      called.push_back(CalledOf(*object));
      report_.Append("elements", PlaceOf(*object));
    }
    Tell(changed, "Placed",
         changed == found.size() ? Listed(called) : Counted(changed, verb_.noun));
    return kDone;
  }

  // Interrupted, the edit is taken back as a whole.
  int Carry(engine::StepwiseEdit edit) {
    const std::string what = edit.name;
    const bool done = engine::RunWhole(session_.Document(), std::move(edit), [&](double share) {
      return program_.terminal.Progress(share, what);
    });
    if (!done) program_.terminal.Error("Interrupted; nothing was changed.");
    return done ? kDone : kInterrupted;
  }

  void Tell(std::size_t changed, const std::string& done, const std::string& what) {
    report_.Put("changed", changed);
    report_.Line(changed == 0 ? "Nothing changed: it is so already." : done + " " + what + ".");
  }

  Program& program_;
  const ElementVerb& verb_;
  const ElementOptions& options_;
  Session session_;
  Report report_;
};

void AddPlacement(Verb verb, ElementOptions& options) {
  verb.BeginSection("Where it stands, in the coordinates of the scene");
  verb.Add("--at", options.at, "Where it stands").Word("X,Y,Z").Separated(',').Count(3);
  verb.Add("--look-at", options.lookAt, "What it faces: a place, or an object").Word("OBJECT");
  verb.Add("--rotate", options.rotate, "Angles about X, Y and Z, in degrees")
      .Word("X,Y,Z")
      .Separated(',')
      .Count(3)
      .Excludes("--look-at");
  verb.Add("--scale", options.scale, "Size in each direction, 1 as it was made")
      .Word("X,Y,Z")
      .Separated(',')
      .Count(3);
}

std::string NamesHelp(bool havePaths) {
  return std::string("Those that are meant: name, ") + (havePaths ? "/path, " : "") +
         "#position, or a pattern with * for several; for add the new name, for rename OLD and NEW";
}

void AddElementVerb(Arguments& arguments, Program& program, const ElementVerb& row) {
  Verb verb = arguments.AddVerb(row.name, row.help);
  auto options = std::make_shared<ElementOptions>();
  std::vector<std::string> actions{kListing, kAdd, kRename, kRemove};
  if (row.IsOfObjects()) actions.emplace_back(kPlace);
  verb.Add("ACTION", options->action, "What to do").OneOf(actions).Required();
  AddScene(verb, program);
  verb.Add("NAMES", options->names, NamesHelp(row.IsOfObjects()).c_str());
  verb.AddFlag("--all", options->all, "A name that several have means all of them");
  verb.AddFlag("--names", options->namesOnly, "Of a list the names only, one a line")
      .Excludes("--json");
  verb.Add("--begin", options->begin, "").Word("TEXT").Hidden().Needs("--names");
  if (row.elements == ElementClass::Objects) {
    verb.Add("--type", options->type, "What to add")
        .Word("TYPE")
        .OneOf(TypeWords())
        .Default("null");
  }
  if (row.IsOfObjects()) {
    verb.Add("--under", options->under, "The object below which to add it").Word("OBJECT");
    AddPlacement(verb, *options);
  }
  if (row.elements == ElementClass::Materials) {
    verb.Add("--color", options->color, "Of a new one: its color, from 0 to 1")
        .Word("R,G,B")
        .Separated(',')
        .Count(3)
        .Shares();
  }
  verb.BeginSection("Options");
  AddKeeping(verb, program);
  verb.Footer(row.footer);
  verb.Does([&program, &row, options] { return ElementWork(program, row, *options).Run(); });
}

}  // namespace

void AddElementVerbs(Arguments& arguments, Program& program) {
  for (const ElementVerb& row : kElementVerbs) AddElementVerb(arguments, program, row);
}

}  // namespace commandline
