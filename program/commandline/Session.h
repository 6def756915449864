// Session: the application with the plug-in loaded and its dialog open, and the scene that a verb
// works on. It owns the application, alone or with the steps of a batch; files are written only by
// Keep. Every function that can fail says why on the terminal and answers an exit status, kDone
// when all went well. Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/application/Application.h"
#include "engine/outside/SystemServices.h"
#include "engine/states/StoredStates.h"
#include "program/commandline/DeferredFileSystem.h"
#include "program/commandline/Program.h"
#include "program/commandline/Report.h"
#include "program/lookup/SceneLookup.h"
#include "program/pictures/StagemarksDialog.h"
#include "program/rendering/PictureScene.h"

namespace commandline {

using lookup::AbsolutePath;
using lookup::FindLayer;
using lookup::FindLayers;
using lookup::FindMarks;
using lookup::FindMaterial;
using lookup::FindMaterials;
using lookup::FindObject;
using lookup::FindObjects;
using lookup::FirstLayerOf;
using lookup::IsPattern;
using lookup::MatchesPattern;
using lookup::ObjectPaths;
using lookup::PathOf;
using pictures::Mark;
using pictures::StagemarksDialog;

inline constexpr const char* kStrictRefusal =
    "Nothing was written, because a texture is missing (--strict).";
// One line for each, all verbs alike.
void TellMissing(Terminal& terminal, const std::vector<std::string>& textures, bool isFault);

// The open scene of a session. The steps of `run` share one: it is read and written once.
struct OpenScene {
  OpenScene(Terminal& terminal, bool allowOutside);

  engine::SystemServices system;
  DeferredFileSystem files;
  const engine::Services services;
  const engine::ImportLimits importLimits;  // as this person chose them
  std::unique_ptr<engine::Application> application;
  std::unique_ptr<StagemarksDialog> dialog;
  engine::FileLock lock;
  bool imported = false;
  std::vector<std::string> importNotes;
  std::vector<std::string> importedMarks;
  bool texturesChecked = false;
};

class Session : public rendering::PictureScene {
 public:
  // Shares the program's open scene where it has one, as a step of `run` has.
  explicit Session(Program& program);

  // Loads the plug-in and opens its dialog.
  int Start();
  // Start, then opens the scene that the verb was given; other formats are imported on the fly. A
  // scene that will be replaced is locked before it is read, until the session ends.
  int StartWithScene();
  // Refuses a result that cannot be where it was wanted: on standard output, under the name of
  // another format, or in place of a file that this verb may not replace.
  int CheckTarget();
  // Refuses paths with a link in the program's own part, and those where there are files that were
  // not made as `maker` (see FileOrigin.h), unless --force was given.
  int CheckReplacing(const std::vector<std::string>& paths, const std::string& maker);
  // Opens or imports a file and makes it the active document. States that an imported file holds
  // become Stagemarks.
  int Open(const std::string& path);
  // A text of Stagemarks, by its first letter; and the scene that it tells of, made the active
  // document.
  bool IsStatesText(const std::string& path);
  int OpenStatesText(const std::string& path);
  // Notes of the last import on what it lost or mended, and the Stagemarks that it made.
  const std::vector<std::string>& ImportNotes() const { return open_->importNotes; }
  const std::vector<std::string>& ImportedMarks() const { return open_->importedMarks; }

  engine::Application& App() { return *open_->application; }
  const engine::Services& GetServices() { return open_->services; }
  // The open scene for the steps of a batch, which write nothing: Keep of this session does.
  const std::shared_ptr<OpenScene>& Opened() const { return open_; }
  DeferredFileSystem& Files() override { return open_->files; }
  StagemarksDialog& Dialog() override { return *open_->dialog; }
  host::BaseDocument& Document() override { return *host::GetActiveDocument(); }
  Terminal& Listener() override { return program_.terminal; }
  void DeliverEvents() override { open_->application->DeliverEvents(); }
  Program& GetProgram() { return program_; }

  // The Stagemarks that are meant by what was typed, as FindMarks of SceneLookup.h says; all where
  // nothing was. An unknown one is refused here, with the names that come close: the dialog would
  // take it for the first one.
  int ChooseMarks(const std::vector<std::string>& typed, std::vector<std::string>& names) override;
  // The one that is meant; a pattern that means several is refused.
  int ChooseMark(const std::string& typed, std::string& name);
  // ChooseMarks and ChooseMark for the states as the document stores them; one without a record is
  // refused.
  int ReadMarks(const std::vector<std::string>& typed, std::vector<engine::StoredState>& states);
  int ReadMark(const std::string& typed, engine::StoredState& state);
  // Checks exactly the rows that are meant; a scene without Stagemarks is refused.
  int Check(const std::vector<std::string>& typed);
  // Names the textures that pictures of the scene lack, on the terminal and as "missingTextures" in
  // the report. With --strict one of them is enough for kFailed; then a program has got the report.
  int CheckTextures(Report& report);
  bool TexturesChecked() const override { return open_->texturesChecked; }
  // From now on the plug-in's changes to files beside the scene wait until Keep writes the scene.
  void HoldSideFiles();
  // The end of a verb that changes a scene: writes it where -o or --write say so and prints the
  // report with the file, or without one and says how to keep the change. Prints nothing when the
  // scene could not be written.
  int Keep(Report& report);
  // Names every file operation that failed since the start; kFailed when there was one.
  int CheckLedger();

 private:
  int LoadPlugin();
  int CheckMakers(const std::vector<std::string>& paths, const std::string& maker);
  int LockScene();
  engine::Status CheckAgain(const std::string& target, std::size_t refused);
  int RefuseUnrecorded(const std::string& name);
  // The absolute path that -o or --write give for the scene; empty for none.
  std::string Target() const;
  int Write(const std::string& target, Report& report);

  Program& program_;
  std::shared_ptr<OpenScene> open_;
};

}  // namespace commandline
