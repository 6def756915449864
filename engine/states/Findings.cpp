#include "engine/states/Findings.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <unordered_map>

#include "engine/outside/FoldedName.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/states/RecordList.h"
#include "engine/states/StateMatrix.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

enum KindIndex : std::size_t {
  kRecordMissing,
  kEntryMissing,
  kHiddenById,
  kNameTwice,
  kRecordedTwice,
  kCameraGone,
  kSettingsGone,
  kMaterialGone,
  kTextureMissing,
  kFileNameClash,
  kFileNameUnfit,
  kPreviewOld,
  kLinkGone,
  kNotInSomeStates,
  kNotInAnyState,
  kEqualStates,
  kPreviewMissing,
  kSettingsUnused,
};

// "1 object", "3 objects".
std::string Counted(std::size_t count, std::string noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Noun for one element of a record list.
const char* NounOf(LONG list) {
  return list == kStoredObjects ? "object" : list == kStoredLayers ? "layer" : "tag";
}
const char* NounOf(Part part) {
  return part == Part::Objects ? "object" : part == Part::Layers ? "layer" : "tag";
}

// Oddities in a stretch of records, which several states may share.
struct StretchFacts {
  std::size_t size = 0;
  std::size_t gone = 0;                 // records of elements that are in the scene no more
  std::vector<NodeId> withoutMaterial;  // texture tags whose recorded material is gone
};

// Gathers findings; of one kind and state not more than are wanted. A scene of a million objects
// can have a million findings of one kind; the rest is counted.
class FindingList {
 public:
  explicit FindingList(std::size_t most) : most_(most) {}

  void Add(KindIndex kind, const std::string& state, std::string text, std::string place = "",
           NodeId element = 0) {
    Group& group = groups_[{kind, order_.try_emplace(state, order_.size()).first->second}];
    if (++group.count > most_) return;
    group.findings.push_back(
        {&FindingKinds()[kind], state, element, std::move(place), std::move(text)});
  }

  std::vector<Finding> Take() {
    std::vector<Finding> all;
    for (auto& [key, group] : groups_) {
      if (group.count > most_) {
        Finding rest = group.findings.back();
        // It has the kind and state of the last one that is told.
        rest.element = 0;
        rest.count = group.count - most_;
        rest.place.clear();
        rest.text = "And " + std::to_string(group.count - most_) + " more of this kind.";
        group.findings.push_back(std::move(rest));
      }
      std::ranges::move(group.findings, std::back_inserter(all));
    }
    // The map has them by kind and state already.
    std::ranges::stable_sort(all, [](const Finding& a, const Finding& b) {
      return a.kind->severity > b.kind->severity;
    });
    return all;
  }

 private:
  struct Group {
    std::size_t count = 0;
    std::vector<Finding> findings;
  };
  std::size_t most_;
  std::unordered_map<std::string, std::size_t> order_;  // states in the order of their coming
  std::map<std::pair<KindIndex, std::size_t>, Group> groups_;
};

// Seconds since 1970 of a local time.
std::int64_t SecondsOf(const StoredDate& date) {
  std::tm local{};
  local.tm_year = date.fields[0] - 1900;
  local.tm_mon = date.fields[1] - 1;
  local.tm_mday = date.fields[2];
  local.tm_hour = date.fields[3];
  local.tm_min = date.fields[4];
  local.tm_sec = date.fields[5];
  // The C library finds out whether it was summer time.
  local.tm_isdst = -1;
  return std::mktime(&local);
}

// Most states of a scene share most of their records. Whatever is found out about a stretch of
// records is kept under the place where it lies, so that a stretch is looked at once however many
// states share it.
class Search {
 public:
  Search(const BaseDocument& doc, FileSystem* files, std::size_t most)
      : doc_(doc), files_(files), found_(most), states_(ReadStates(doc)) {}

  std::vector<Finding> Run(const std::vector<std::string>& missingTextures) {
    Stores();
    Names();
    for (const StoredState& state : states_) {
      Links(state);
      for (const ListRow& list : kRecordLists) Records(state, list);
    }
    Coverage();
    Equal();
    UnusedSettings();
    if (files_) Previews();
    for (const std::string& texture : missingTextures)
      found_.Add(kTextureMissing, "", "A texture of the scene is not there.", texture);
    return found_.Take();
  }

 private:
  void Stores() {
    for (const StoredState& state : states_) {
      if (!state.hasRecord)
        found_.Add(kRecordMissing, state.name, "It stands in the list, and nothing is recorded.");
      if (!state.hasEntry)
        found_.Add(kEntryMissing, state.name, "It is recorded, and does not stand in the list.");
    }
  }

  // A name is told once: where two have it, the ID that hides one of them is no finding of its own.
  void Names() {
    std::unordered_map<std::string, std::size_t> count;
    for (const StoredState& state : states_) ++count[state.name];
    std::unordered_map<std::string, const std::string*> folded;
    for (const StoredState& state : states_) {
      if (count[state.name] > 1) {
        found_.Add(kNameTwice, state.name, "Another Stagemark has the same name.");
      } else if (state.hasEntry && state.hasRecord && LoadedId(doc_, state.name) != state.id) {
        found_.Add(kHiddenById, state.name,
                   "Its ID is " + std::to_string(state.id) + ", which is not looked at among " +
                       Counted(states_.size(), "Stagemark") + ".");
      }
      if (state.name.find_first_of("/\\") != std::string::npos)
        found_.Add(kFileNameUnfit, state.name, "The name holds a slash or a backslash.");
      const auto [first, isNew] = folded.try_emplace(FoldedName(state.name), &state.name);
      if (!isNew && *first->second != state.name)
        found_.Add(kFileNameClash, state.name,
                   "\"" + *first->second + "\" differs from it by the case of letters only.");
    }
  }

  // A link that was never set is no loss; only one to an element that is gone is told.
  void Links(const StoredState& state) {
    const BaseContainer* camera = state.record.GetContainerInstance(kStoredCamera);
    if (camera && LinkOf(*camera, kStoredCameraLink) != 0 &&
        !camera->GetObjectLink(kStoredCameraLink, &doc_))
      found_.Add(kCameraGone, state.name, "Its camera is in the scene no more.");
    const BaseContainer* settings = state.record.GetContainerInstance(kStoredSettings);
    if (settings && LinkOf(*settings, kStoredSettings) != 0 &&
        !RecordedSettings(doc_, state.record))
      found_.Add(kSettingsGone, state.name,
                 "Its copy of the render settings is in the scene no more.");
  }

  void Records(const StoredState& state, const ListRow& row) {
    const RecordList list(state.record, row.key, row.link);
    if (list.IsEmpty()) return;
    std::size_t gone = 0;
    for (const RecordList::Stretch stretch : list.Stretches()) {
      const StretchFacts& facts = FactsOf(row, list, stretch);
      gone += facts.gone;
      for (const NodeId tag : facts.withoutMaterial) {
        found_.Add(kMaterialGone, state.name,
                   "The material that it records for this tag is in the scene no more.",
                   ElementPath(doc_, tag), tag);
      }
    }
    if (gone > 0) {
      found_.Add(kLinkGone, state.name,
                 std::to_string(gone) + " of its " + Counted(list.Count(), NounOf(row.key)) +
                     (gone == 1 ? " is" : " are") + " in the scene no more.");
    }
    Repeated(state, row, list);
  }

  const StretchFacts& FactsOf(const ListRow& row, const RecordList& list,
                              RecordList::Stretch stretch) {
    StretchFacts& facts = facts_[stretch.data()];
    if (list.LiesInContainer() && facts.size == stretch.size()) return facts;
    facts = StretchFacts();
    facts.size = stretch.size();
    for (const Entry& entry : stretch) {
      const ContainerBody* record = RecordOf(entry);
      const NodeId id = list.ElementOf(record);
      BaseList2D* element = FindNode(&doc_, id);
      if (id != 0 && !element) ++facts.gone;
      const PartRow* part = element ? PartOfElement(row.key, *element) : nullptr;
      if (!part || part->part != Part::Materials) continue;
      const NodeId material = LinkIn(record, kStoredMaterialLink);
      if (material != 0 && !AsMaterial(FindNode(&doc_, material)))
        facts.withoutMaterial.push_back(id);
    }
    return facts;
  }

  // Records of one element behind one another. What one list holds is found once.
  void Repeated(const StoredState& state, const ListRow& row, const RecordList& list) {
    const auto key = std::pair(list.Stretches().front().data(), list.Count());
    const auto [place, isNew] = repeated_.try_emplace(key);
    if (isNew || !list.LiesInContainer()) {
      NodeSet met;
      std::vector<NodeId>& twice = place->second;
      twice.clear();
      for (const RecordList::Stretch stretch : list.Stretches()) {
        for (const Entry& entry : stretch) {
          const NodeId id = list.ElementOf(RecordOf(entry));
          if (id != 0 && !met.Insert(id) && FindNode(&doc_, id)) twice.push_back(id);
        }
      }
    }
    if (place->second.empty()) return;
    // A second walk, over all records of the list but only where some element has several.
    std::unordered_map<NodeId, std::vector<const ContainerBody*>> records;
    for (const NodeId id : place->second) records[id];
    for (const RecordList::Stretch stretch : list.Stretches()) {
      for (const Entry& entry : stretch) {
        const auto one = records.find(list.ElementOf(RecordOf(entry)));
        if (one != records.end()) one->second.push_back(RecordOf(entry));
      }
    }
    for (const NodeId id : place->second) {
      if (auto said = records.extract(id)) SayRepeated(state, row, id, said.mapped());
    }
  }

  // Only the last two records are compared: those are what loading does and what it would do
  // without the last one.
  void SayRepeated(const StoredState& state, const ListRow& row, NodeId id,
                   const std::vector<const ContainerBody*>& records) {
    BaseList2D* element = FindNode(&doc_, id);
    const PartRow* part = element ? PartOfElement(row.key, *element) : nullptr;
    if (!part) return;
    const LONG type = TypeForFields(doc_, {part->part, ChangeKind::Changed, id, id, {}});
    std::string values;
    for (const FieldChange& field :
         FieldsThatDiffer(FieldsOfRecord(doc_, part->part, records[records.size() - 2]),
                          FieldsOfRecord(doc_, part->part, records.back()))) {
      values += (values.empty() ? " " : ", ") + FieldLabel(type, field.field) + " " +
                FieldValueText(doc_, type, field.field, field.left) + ", then " +
                FieldValueText(doc_, type, field.field, field.right);
    }
    found_.Add(kRecordedTwice, state.name,
               "It records this " + std::string(NounOf(row.key)) + " " +
                   std::to_string(records.size()) + " times; loading applies the last." +
                   (values.empty() ? " The values agree." : values + "."),
               ElementPath(doc_, id), id);
  }

  void Coverage() {
    if (states_.empty()) return;
    const StateMatrix matrix(doc_, states_, MatrixRows::Differing);
    for (const StateMatrix::Row& row : matrix.Rows()) {
      const std::size_t holders = matrix.HoldersOf(row.part);
      if (row.element == 0 || row.knownBy == holders) continue;
      const std::string noun = NounOf(row.part);
      found_.Add(row.knownBy == 0 ? kNotInAnyState : kNotInSomeStates, "",
                 row.knownBy == 0 ? "No Stagemark knows this " + noun + "."
                                  : "This " + noun + " is known to " + std::to_string(row.knownBy) +
                                        " of " + std::to_string(holders) + " Stagemarks.",
                 ElementPath(doc_, row.element), row.element);
    }
  }

  // Of Stagemarks that say the same each later one names the first. Only those with the same digest
  // are compared. Comparing each with each would grow with the square of the Stagemarks.
  void Equal() {
    CompareOptions options;
    options.mostFields = 0;
    std::unordered_map<std::uint64_t, std::vector<const StoredState*>> firsts;
    for (const StoredState& state : states_) {
      if (!state.hasRecord) continue;
      std::vector<const StoredState*>& alike = firsts[DigestOf(state)];
      const auto same = std::ranges::find_if(alike, [&](const StoredState* first) {
        return CompareStates(doc_, first->record, state.record, options).IsEmpty();
      });
      if (same == alike.end()) {
        alike.push_back(&state);
      } else {
        found_.Add(kEqualStates, state.name, "It says the same as \"" + (*same)->name + "\".");
      }
    }
  }

  static std::uint64_t Mixed(std::uint64_t a, std::uint64_t b) {
    a = (a ^ b) * 0x9E3779B97F4A7C15u;
    return a ^ a >> 29;
  }

  // Equal for Stagemarks that say the same, but for elements that one records twice.
  std::uint64_t DigestOf(const StoredState& state) {
    std::uint64_t digest = RecordedCamera(doc_, state.record).value_or(1);
    if (const host::RenderData* settings = RecordedSettings(doc_, state.record)) {
      for (const FieldNow& field : FieldsOfSettings(*settings))
        digest = Mixed(digest, static_cast<std::uint64_t>(field.value.GetReal() * 16));
    }
    for (const ListRow& row : kRecordLists) {
      const RecordList list(state.record, row.key, row.link);
      // A sum: equal records may stand in another order, or in chunks that begin elsewhere.
      std::uint64_t sum = 0;
      for (const RecordList::Stretch stretch : list.Stretches()) sum += DigestOf(list, stretch);
      digest = Mixed(digest, sum);
    }
    return digest;
  }

  std::uint64_t DigestOf(const RecordList& list, RecordList::Stretch stretch) {
    auto& [size, digest] = digests_[stretch.data()];
    if (list.LiesInContainer() && size == stretch.size()) return digest;
    size = stretch.size();
    digest = 0;
    for (const Entry& record : stretch) {
      std::uint64_t one = 1;
      std::uint32_t next = 0;
      for (EntrySpan values = NextEntries(RecordOf(record), next); !values.empty();
           values = NextEntries(RecordOf(record), next)) {
        for (const Entry& value : values) {
          // Of texts, containers and the like only the address is at hand, and equal ones may lie
          // at two.
          if (!IsShared(value.type)) one = Mixed(one, Mixed(KeyAndType(value), value.bits));
        }
      }
      digest += one;
    }
    return digest;
  }

  void UnusedSettings() {
    const SettingsOfStates used = FindSettingsOfStates(&doc_);
    const host::RenderData* first = doc_.GetFirstRenderData();
    for (const host::RenderData* one = first ? first->GetNext() : nullptr; one;
         one = one->GetNext()) {
      const std::string name = one->GetName().ToUtf8();
      const bool named = std::ranges::any_of(
          states_, [&](const StoredState& state) { return state.name == name; });
      // Settings that were made by hand and happen to have another name are a person's own.
      if (named && !used.contains(IdOf(*one)) && IdOf(*one) != ActiveRenderDataIdOf(doc_)) {
        found_.Add(kSettingsUnused, "",
                   "These render settings have the name of a Stagemark that does not use them.",
                   name, IdOf(*one));
      }
    }
  }

  // Only for a scene whose side folder is there. Whole seconds are compared: a Stagemark's date has
  // no finer ones, and its preview is written in the second in which it is recorded, or later.
  void Previews() {
    const std::string folder = SideFolderOf(doc_);
    if (folder.empty()) return;
    const auto side = files_->Look(folder);
    if (!side || side.Value() != FileKind::Folder) return;
    for (const StoredState& state : states_) {
      const std::string file = PreviewFileIn(folder, state.name);
      if (file.empty()) continue;
      const auto there = files_->Look(file);
      if (!there) return;  // nor is it of the others
      if (there.Value() != FileKind::File) {
        found_.Add(kPreviewMissing, state.name, "It has no preview.", file);
      } else if (files_->Stamp(file).changed / 1'000'000'000 < SecondsOf(state.date)) {
        found_.Add(kPreviewOld, state.name, "Its preview is older than the Stagemark.", file);
      }
    }
  }

  const BaseDocument& doc_;
  FileSystem* files_;
  FindingList found_;
  std::vector<StoredState> states_;
  std::unordered_map<const Entry*, StretchFacts> facts_;
  std::unordered_map<const Entry*, std::pair<std::size_t, std::uint64_t>> digests_;
  std::map<std::pair<const Entry*, std::size_t>, std::vector<NodeId>> repeated_;
};

// In the order of KindIndex.
constexpr FindingKind kKinds[] = {
    {"record-missing", Severity::Error,
     "A Stagemark stands in the list, and nothing is recorded under it.",
     "Record it anew, or delete it; --fix takes it out of the list.", true},
    {"entry-missing", Severity::Error,
     "A Stagemark is recorded and does not stand in the list, so nobody can load it.",
     "--fix puts it into the list.", true},
    {"hidden-by-id", Severity::Error,
     "Loading by this name brings back another Stagemark, because IDs are looked up by position.",
     "--fix numbers the Stagemarks anew.", true},
    {"name-twice", Severity::Error, "Two Stagemarks have one name; only one can be loaded.",
     "Rename the one that the list finds, then the other one.", false},
    {"recorded-twice", Severity::Warning,
     "A Stagemark records an element more than once, as a recording of fewer elements leaves it.",
     "--fix keeps the record that loading applies last.", true},
    {"camera-gone", Severity::Warning,
     "The recorded camera was deleted; loading leaves the scene without one.",
     "Set another render camera on the Stagemark, or record it anew.", false},
    {"settings-gone", Severity::Warning,
     "The recorded render settings were deleted; loading leaves the scene's as they are.",
     "Record the Stagemark anew.", false},
    {"material-gone", Severity::Warning,
     "A recorded material was deleted; loading takes the material off the tag.",
     "Set the tag on the Stagemark, or record it anew.", false},
    {"texture-missing", Severity::Warning, "A texture of the scene is not there.",
     "Put the file beside the scene or into its folder \"tex\".", false},
    {"file-name-clash", Severity::Warning,
     "Two names differ by the case of letters only: on some disks one preview or exported file "
     "replaces the other.",
     "Rename one of them.", false},
    {"file-name-unfit", Severity::Warning,
     "A name with slashes gives previews and exported files that lie elsewhere, or none.",
     "Rename it.", false},
    {"preview-old", Severity::Warning, "A preview shows an earlier state of its Stagemark.",
     "Record it with Generate Preview Image on.", false},
    {"link-gone", Severity::Note,
     "A Stagemark holds records of elements that were deleted; they apply to nothing.",
     "--fix takes these records out.", true},
    {"not-in-some-states", Severity::Note, "Only some Stagemarks know this element.",
     "Update those that do not, or leave it so if that is meant.", false},
    {"not-in-any-state", Severity::Note,
     "No Stagemark knows this element: loading leaves it as it happens to be.",
     "Update the Stagemarks, or leave it so if that is meant.", false},
    {"equal-states", Severity::Note, "Two Stagemarks say the same.",
     "Delete one of them if it is not wanted.", false},
    {"preview-missing", Severity::Note, "A Stagemark has no preview, though others may.",
     "Record it with Generate Preview Image on.", false},
    {"settings-unused", Severity::Note,
     "Render settings look like a Stagemark's copy that no Stagemark uses.",
     "Delete them if they are not wanted.", false},
};

}  // namespace

std::span<const FindingKind> FindingKinds() { return kKinds; }

const FindingKind* FindFindingKind(const std::string& code) {
  for (const FindingKind& kind : FindingKinds()) {
    if (kind.code == code) return &kind;
  }
  return nullptr;
}

std::vector<Finding> FindFindings(const BaseDocument& doc, FileSystem* files,
                                  const std::vector<std::string>& missingTextures,
                                  std::size_t most) {
  return Search(doc, files, most).Run(missingTextures);
}

}  // namespace engine
