#include "program/python/ScriptScene.h"

#include "engine/scene/DocumentState.h"
#include "host/Application.h"
#include "program/publish/FileOrigin.h"
#include "program/python/States.h"

namespace scripting {

ScriptScene::ScriptScene(DocumentId document)
    : document_(document),
      doc_(Session::Get().Document(document)),
      dialog_(Session::Get().DialogFor(doc_)),
      wasChanged_(doc_.GetChanged()) {}

// Loading states for pictures is no change of the document to a person.
ScriptScene::~ScriptScene() {
  if (!wasChanged_) engine::ClearChanged(doc_);
  host::EventAdd();  // the dialog shows again which state was loaded last
}

int ScriptScene::ChooseMarks(const Names& typed, Names& names) {
  names = ChooseStates(document_, typed);
  return rendering::kDone;
}

void ScriptScene::Check(int status) const {
  if (status != rendering::kDone) FailAs(error_.empty() ? "The work was stopped." : error_);
}

void CheckPlace(const std::string& path, const std::string& maker, bool overwrite) {
  if (overwrite || publishing::MayReplace(Session::Get().Services().files, path, maker)) return;
  throw Failure(Fault::Refused, "\"" + path +
                                    "\" exists already and was not made by this command. Give "
                                    "another name, or overwrite=True to replace it.");
}

}  // namespace scripting
