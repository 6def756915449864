// Demo: the product's main job on a real scene, step by step, each step checked: three states are
// made and recorded with previews, recalled and compared, one recall is undone, the scene is saved,
// opened and recalled again, all states are rendered onto a contact sheet, and every state is
// exported as a scene file of its own, which is opened and compared. Prints as it goes. Main
// thread.
#pragma once

#include <string>
#include <vector>

#include "program/commandline/DemoStates.h"
#include "program/commandline/Exporting.h"
#include "program/commandline/SheetMaking.h"

namespace commandline {

class Demo {
 public:
  // Works on `scene` and writes below `folder`, which is made.
  Demo(Session& session, std::string scene, std::string folder);
  // kDone when every step did what it should; a step that did not says what differed.
  int Run();

 private:
  // One recorded state: its name, and its facts right after recording.
  struct State {
    std::string name;
    std::string facts;
  };

  bool Import();
  bool RecordStates();
  bool RecallStates();
  bool UndoRecall();
  bool Save();
  bool SaveAndReopen();
  bool MakeContactSheet();
  bool ExportStates();
  bool CompareFiles(const ExportResult& result);
  void ShowFiles(const ExportResult& result);
  void ShowResult() const;

  bool Record(const DemoState& state);
  bool Recall(const State& state);
  bool CompareFile(const std::string& file, const State& state);
  void Say(const std::string& line) const;
  bool Step(const std::string& text, bool worked, const std::vector<std::string>& why = {});

  Session& session_;
  Report report_;
  std::string scene_;
  std::string folder_;
  std::string saved_;
  std::string sheet_;
  std::vector<std::string> previews_;
  std::vector<State> states_;
};

}  // namespace commandline
