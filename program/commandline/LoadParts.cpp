#include "program/commandline/LoadParts.h"

#include <algorithm>
#include <utility>

namespace commandline {

namespace {

// By the labels of the dialog's options.
constexpr std::pair<const char*, const char*> kParts[] = {
    {"render-settings", "Render Settings"},
    {"camera", "Active Camera"},
    {"objects", "Objects"},
    {"layers", "Layers"},
    {"materials", "Materials"},
    {"compositing", "Compositing Tags"},
    {"render-tags", "Sketch Render Tags"},
    {"style", "Sketch Style Tags"},
    {"vray-compositing", "VRay Compositing Tags"},
    {"vray-physical-camera", "VRay Physical Camera Tags"},
    {"vray-camera-dome", "VRay Camera Dome Tags"},
    {"mental-ray-camera", "Mental Ray Camera Tags"}};

std::string PartOf(const std::string& option) {
  for (const auto& [part, label] : kParts) {
    if (option == label) return part;
  }
  return option;
}

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsWanted(const PartChoice& choice, const std::string& part, bool isOn) {
  if (!choice.parts.empty()) return Holds(choice.parts, part);
  return isOn && !Holds(choice.without, part);
}

}  // namespace

std::vector<std::string> PartNames() {
  std::vector<std::string> names;
  for (const auto& [part, label] : kParts) names.emplace_back(part);
  return names;
}

void AddParts(Verb verb, PartChoice& choice) {
  Option parts = verb.Add("--parts", choice.parts,
                          "Apply these only, whatever the options say, with commas between them");
  Option without = verb.Add("--without", choice.without,
                            "Apply all that the options say but these, with commas between them");
  for (Option* option : {&parts, &without}) {
    option->Separated(',').OneWord().OneOf(PartNames()).Word("PARTS");
  }
  without.Excludes("--parts");
}

// The dialog reads its options from the document again when events are delivered, which must wait
// until the load is done.
PartsInUse::PartsInUse(Session& session, const PartChoice& choice)
    : session_(session), before_(*session.Document().GetDataInstance()) {
  for (const auto& [option, isOn] : session.Dialog().Options()) {
    const bool wanted = IsWanted(choice, PartOf(option), isOn);
    if (wanted) applied_.push_back(PartOf(option));
    if (wanted != isOn && session.Dialog().Choose(option)) toggled_.push_back(option);
  }
  touched_ = KeysThatDiffer(before_, *session.Document().GetDataInstance());
}

PartsInUse::~PartsInUse() {
  for (const std::string& option : toggled_) session_.Dialog().Choose(option);
  PutBack(touched_, before_, *session_.Document().GetDataInstance());
}

std::vector<host::LONG> KeysThatDiffer(const host::BaseContainer& one,
                                       const host::BaseContainer& other) {
  std::vector<host::LONG> keys;
  for (host::LONG i = 0; i < one.GetCount(); ++i) {
    const host::LONG key = one.GetIndexId(i);
    if (other.FindIndex(key) == host::NOTOK || !(one.GetData(key) == other.GetData(key)))
      keys.push_back(key);
  }
  for (host::LONG i = 0; i < other.GetCount(); ++i) {
    if (const host::LONG key = other.GetIndexId(i); one.FindIndex(key) == host::NOTOK)
      keys.push_back(key);
  }
  return keys;
}

void PutBack(const std::vector<host::LONG>& keys, const host::BaseContainer& from,
             host::BaseContainer& data) {
  for (const host::LONG key : keys) {
    if (from.FindIndex(key) == host::NOTOK) {
      data.RemoveData(key);
    } else {
      data.SetData(key, from.GetData(key));
    }
  }
}

}  // namespace commandline
