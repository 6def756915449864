// The verbs that edit all checked Stagemarks at once: update, set-objects, set-tags, set-layers,
// set-camera.
#include <functional>

#include "program/commandline/Arguments.h"
#include "program/commandline/SceneSelection.h"
#include "program/outcome/BulkEdits.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

using outcome::BulkEdit;

struct BulkChoices {
  std::vector<std::string> only;
  std::vector<std::string> named;  // objects or layers, or one camera
  std::vector<std::string> types;
};

// Makes what is edited the selection; the text is what a person reads about it.
using Selection = std::function<int(Session&, const BulkChoices&, std::string&)>;

// Names of the Stagemarks whose records have changed. `before`: the document's former data. Records
// that were not touched share their contents with the former ones, which makes comparing cheap.
std::vector<std::string> ChangedSince(const host::BaseContainer& before,
                                      const host::BaseDocument& doc) {
  const host::BaseContainer* records = before.GetContainerInstance(engine::kStagemarksId);
  std::vector<std::string> names;
  for (const engine::StoredState& state : engine::ReadStates(doc)) {
    if (!state.hasRecord) continue;
    const host::BaseContainer* former = engine::StoredUnder(records, state.id);
    if (!former || !(*former == state.record)) names.push_back(state.name);
  }
  return names;
}

// A message of the plug-in means that it refused: nothing is kept then. Whether anything changed is
// told by the stored data, since the command itself says nothing.
int Carry(Session& session, const BulkEdit& edit, const std::string& selected) {
  const std::vector<std::string> names = session.Dialog().CheckedNames();
  const host::BaseContainer before = *session.Document().GetDataInstance();
  const std::size_t told = session.GetProgram().terminal.Told().size();
  session.Dialog().Choose(edit.entry);
  session.App().DeliverEvents();
  if (session.GetProgram().terminal.Told().size() > told) return kFailed;
  const bool changed = !(before == *session.Document().GetDataInstance());
  Report report;
  report.Put("stagemarks", names);
  report.Put("changed", changed);
  report.Put("changedStagemarks", ChangedSince(before, session.Document()));
  if (!selected.empty()) report.Put("selected", selected);
  report.Line(outcome::Sentence(edit, changed, selected, names));
  return session.Keep(report);
}

int RunBulkEdit(Program& program, const BulkEdit& edit, const BulkChoices& choices,
                const Selection& select) {
  Session session(program);
  std::string selected;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.Check(choices.only); status != kDone) return status;
  if (const int status = select ? select(session, choices, selected) : kDone; status != kDone)
    return status;
  return Carry(session, edit, selected);
}

struct BulkVerb {
  Verb verb;
  std::shared_ptr<BulkChoices> choices;
};

// The choices are held by the verb's work: they live until it has run.
BulkVerb AddBulkVerb(Arguments& arguments, Program& program, const char* name, const char* help,
                     const char* entry, const Selection& select) {
  Verb verb = arguments.AddVerb(name, help);
  auto choices = std::make_shared<BulkChoices>();
  AddScene(verb, program);
  verb.Does([&program, entry, select, choices] {
    return RunBulkEdit(program, *outcome::FindBulkEdit(entry), *choices, select);
  });
  return {verb, choices};
}

void Finish(const BulkVerb& bulk, Program& program, const char* footer) {
  AddOnly(bulk.verb, bulk.choices->only);
  AddKeeping(bulk.verb, program);
  bulk.verb.Footer(footer);
}

}  // namespace

void AddUpdate(Arguments& arguments, Program& program) {
  const BulkVerb bulk = AddBulkVerb(arguments, program, "update",
                                    "Add new objects, tags and layers of the scene to Stagemarks",
                                    pictures::kUpdateChecked, nullptr);
  Finish(bulk, program,
         "What a Stagemark holds already stays as it is.\n\n"
         "Examples:\n"
         "  stagemarks update room.c4d --write\n"
         "  stagemarks update room.c4d --only Day \"Night*\" -o room2.c4d");
}

void AddSetObjects(Arguments& arguments, Program& program) {
  const auto select = [](Session& session, const BulkChoices& choices, std::string& selected) {
    return SelectObjects(session, choices.named, selected);
  };
  const BulkVerb bulk = AddBulkVerb(arguments, program, "set-objects",
                                    "Put the present switches of some objects into Stagemarks",
                                    pictures::kSetObjects, select);
  bulk.verb.Add("OBJECTS", bulk.choices->named,
                "Names, /paths, #positions or patterns with *; without them the objects "
                "selected in the scene");
  Finish(bulk, program,
         "Examples:\n"
         "  stagemarks set room.c4d --object \"Lamp*\" --render off --write\n"
         "  stagemarks set-objects room.c4d \"Lamp*\" --only Day --write");
}

void AddSetTags(Arguments& arguments, Program& program) {
  const auto select = [](Session& session, const BulkChoices& choices, std::string& selected) {
    return SelectTags(session, choices.named, choices.types, selected);
  };
  const BulkVerb bulk = AddBulkVerb(arguments, program, "set-tags",
                                    "Put the present settings of some tags into Stagemarks",
                                    pictures::kSetTags, select);
  bulk.verb.Add("OBJECTS", bulk.choices->named,
                "The objects that carry the tags; without them the tags selected in the scene");
  bulk.verb.Add("--type", bulk.choices->types, "Only tags of this type: a name or a number")
      .Word("TYPE...");
  Finish(bulk, program,
         "Examples:\n"
         "  stagemarks set room.c4d --object Wall --material Brick --write\n"
         "  stagemarks set-tags room.c4d Wall --type Texture --only Day --write");
}

void AddSetLayers(Arguments& arguments, Program& program) {
  const auto select = [](Session& session, const BulkChoices& choices, std::string& selected) {
    return SelectLayers(session, choices.named, selected);
  };
  const BulkVerb bulk = AddBulkVerb(arguments, program, "set-layers",
                                    "Put the present switches of some layers into Stagemarks",
                                    pictures::kSetLayers, select);
  bulk.verb.Add("LAYERS", bulk.choices->named,
                "Names or patterns with *; without them the layers selected in the scene");
  Finish(bulk, program,
         "Examples:\n"
         "  stagemarks set room.c4d --layer Props --flag render=off --write\n"
         "  stagemarks set-layers room.c4d Props --only Day Night --write");
}

void AddSetCamera(Arguments& arguments, Program& program) {
  const auto select = [](Session& session, const BulkChoices& choices, std::string& selected) {
    return SelectCamera(session, choices.named.front(), selected);
  };
  const BulkVerb bulk =
      AddBulkVerb(arguments, program, "set-camera", "Give Stagemarks another render camera",
                  pictures::kSetCamera, select);
  bulk.verb.Add("CAMERA", bulk.choices->named, "Name, /path or #position of the camera")
      .Required()
      .Count(1);
  Finish(bulk, program,
         "Example:\n"
         "  stagemarks set-camera room.c4d /Front --only Day --write");
}

}  // namespace commandline
