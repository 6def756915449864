// Reports on states without loading them: differences, findings, and states as text.
#include <algorithm>

#include "engine/render/TextureSearch.h"
#include "engine/states/Difference.h"
#include "engine/states/FieldText.h"
#include "engine/states/Findings.h"
#include "engine/states/RecordList.h"
#include "engine/states/StateText.h"
#include "engine/states/StoredStates.h"
#include "engine/states/Trash.h"
#include "engine/undo/Undo.h"
#include "host/Application.h"
#include "program/lookup/SceneLookup.h"
#include "program/outcome/Words.h"
#include "program/python/States.h"

namespace scripting {

namespace {

using engine::ChangeKind;
using host::BaseDocument;

[[noreturn]] void RefuseUnrecorded(const std::string& name) {
  throw Failure(Fault::Failed, "The Stagemark " + outcome::Listed({name}) +
                                   " stands in the list, but nothing of it is recorded. "
                                   "doc.states.check() says more.");
}

// A state that stands in the list without a record is refused.
engine::StoredState ReadState(DocumentId document, const std::string& typed) {
  const std::string name = ChooseState(document, typed);
  const std::vector<engine::StoredState> states = engine::ReadStates(Find(document));
  const engine::StoredState* found = engine::FindState(Find(document), states, name);
  if (!found || !found->hasRecord) RefuseUnrecorded(name);
  return *found;
}

// One change in words. The documents of both sides may be one.
class ChangeWords {
 public:
  ChangeWords(const BaseDocument& left, const BaseDocument& right) : left_(left), right_(right) {}

  ElementDifference Of(const engine::ElementChange& change) const {
    const bool isRight = change.kind == ChangeKind::OnlyRight;
    const BaseDocument& doc = isRight ? right_ : left_;
    ElementDifference told;
    told.part = engine::RowOf(change.part).word;
    told.kind = isRight ? "right" : change.kind == ChangeKind::OnlyLeft ? "left" : "changed";
    told.element = change.element;
    told.path = change.part == engine::Part::Camera ? "Scene camera"
                                                    : engine::ElementPath(doc, change.element);
    told.type = engine::ElementKind(doc, change.element);
    const host::LONG type = engine::TypeForFields(doc, change);
    for (const engine::FieldChange& field : change.fields) {
      told.fields.push_back({engine::FieldLabel(type, field.field),
                             engine::FieldValueText(left_, type, field.field, field.left),
                             engine::FieldValueText(right_, type, field.field, field.right)});
    }
    return told;
  }

 private:
  const BaseDocument& left_;
  const BaseDocument& right_;
};

const char* WordOf(engine::Severity severity) {
  return severity == engine::Severity::Error     ? "error"
         : severity == engine::Severity::Warning ? "warning"
                                                 : "note";
}

engine::SameName SameNameOf(const std::string& word) {
  if (word == "replace") return engine::SameName::Replaced;
  if (word == "keep") return engine::SameName::Kept;
  if (word == "refuse") return engine::SameName::Refused;
  throw Failure(Fault::Misused,
                "\"" + word + "\" is none of \"refuse\", \"replace\" and \"keep\".");
}

// By the end of the sentence: the messages know nothing of Python's arguments.
std::string Advice(const std::string& message) {
  if (message.ends_with("already."))
    return " Give it another name with rename=, or say same_name=\"replace\" or \"keep\".";
  return message.ends_with("is in the scene.") ? " even_empty=True takes it in all the same." : "";
}

// Takes states in as one undo step, with the render settings of the states that it replaces: it
// changes these in place.
auto TakeInAsStep(BaseDocument& doc, const std::string& text,
                  const engine::TakeInOptions& options) {
  const engine::StoredDataScope stored(doc, "", engine::StoresOfStates());
  if (options.sameName == engine::SameName::Replaced) {
    for (const engine::StoredState& state : engine::ReadStates(doc)) {
      if (auto* settings = engine::RecordedSettings(doc, state.record))
        doc.AddUndo(host::UNDO_CHANGE, settings);
    }
  }
  return engine::TakeInStates(doc, text, options);
}

// Asked of names in a text, which the scene does not know, so a name that means nothing is no
// failure here.
bool IsMeant(const Names& typed, const std::string& name) {
  return typed.empty() || std::ranges::any_of(typed, [&](const std::string& one) {
           return name == one || (lookup::IsPattern(one) && lookup::MatchesPattern(name, one));
         });
}

}  // namespace

// Without a right side the scene as it is stands on the right. The comparison with the scene is
// made the other way round and turned.
std::vector<ElementDifference> Diff(DocumentId leftDocument, const std::string& left,
                                    DocumentId rightDocument, const std::string& right,
                                    const PartChoice& parts) {
  CheckWords(parts);
  const BaseDocument& leftDoc = Find(leftDocument);
  const BaseDocument& rightDoc = Find(rightDocument);
  const engine::StoredState first = ReadState(leftDocument, left);
  engine::CompareOptions compare;
  compare.parts = pictures::PartsToShow(parts);
  engine::Difference found;
  if (right.empty()) {
    found = engine::Mirrored(engine::CompareWithScene(leftDoc, first.record, compare));
  } else if (leftDocument == rightDocument) {
    found = engine::CompareStates(leftDoc, first.record, ReadState(rightDocument, right).record,
                                  compare);
  } else {
    found = engine::CompareStates(leftDoc, first.record, rightDoc,
                                  ReadState(rightDocument, right).record, compare);
  }
  const ChangeWords words(leftDoc, rightDoc);
  std::vector<ElementDifference> told;
  for (const engine::ElementChange& change : found.changes) told.push_back(words.Of(change));
  return told;
}

std::vector<FindingFacts> CheckStates(DocumentId document) {
  const BaseDocument& doc = Find(document);
  engine::FileSystem& files = Session::Get().Services().files;
  std::vector<FindingFacts> told;
  for (const engine::Finding& finding :
       engine::FindFindings(doc, &files, engine::MissingTextures(files, doc), SIZE_MAX)) {
    told.push_back({finding.kind->code, WordOf(finding.kind->severity), finding.state,
                    finding.place, finding.text, finding.kind->remedy, finding.count});
  }
  return told;
}

// Named ones without a record are refused, others left out.
std::string StatesAsText(DocumentId document, const Names& typed) {
  const BaseDocument& doc = Find(document);
  const Names names = ChooseStates(document, typed);
  std::vector<engine::StoredState> states;
  for (engine::StoredState& state : engine::ReadStates(doc)) {
    if (std::ranges::find(names, state.name) == names.end()) continue;
    if (!state.hasRecord && !typed.empty()) RefuseUnrecorded(state.name);
    if (state.hasRecord) states.push_back(std::move(state));
  }
  std::string whole;
  engine::WriteStatesAsText(doc, states, doc.GetDocumentName().GetString().ToUtf8(),
                            [&whole](std::string_view text) {
                              whole += text;
                              return true;
                            });
  return whole;
}

// A text that is refused changes nothing; its step is canceled, so that none without changes is
// left.
Taken TakeStatesIn(DocumentId document, const std::string& text, const Names& only,
                   const std::map<std::string, std::string>& renamed, const std::string& sameName,
                   bool evenEmpty) {
  engine::TakeInOptions options;
  options.isWanted = [&only](const std::string& name) { return IsMeant(only, name); };
  options.names = renamed;
  options.sameName = SameNameOf(sameName);
  options.evenEmpty = evenEmpty;
  BaseDocument& doc = Find(document);
  engine::UndoScope step(doc, "Import Stagemarks");
  const auto taken = TakeInAsStep(doc, text, options);
  if (!taken) step.Cancel();
  if (!taken) throw Failure(Fault::Failed, taken.Message() + Advice(taken.Message()));
  host::EventAdd();
  static constexpr const char* kOutcomes[] = {"added", "replaced", "kept"};
  Taken told{{}, taken.Value().missing, taken.Value().ambiguous};
  for (const engine::TakenIn::State& state : taken.Value().states)
    told.states.emplace_back(state.name, kOutcomes[static_cast<std::size_t>(state.outcome)]);
  return told;
}

}  // namespace scripting
