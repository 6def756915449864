#include "engine/states/Trash.h"

#include <algorithm>

#include "engine/scene/NodeIds.h"
#include "engine/scenefile/Trash.h"
#include "engine/states/RecordList.h"
#include "engine/states/StoredStates.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::LONG;

namespace {

// Why a preview is not kept for undo.
constexpr const char* kTooLarge = "previews larger than 16 MB are not kept for undo";
constexpr const char* kTooMany = "one step keeps previews up to 256 MB together";
constexpr const char* kLinked = "it was reached through a symbolic link";
constexpr const char* kUnreadable = "it could not be read";

std::string TextOf(const host::LocalFileTime& time) {
  return StoredDate{{time.year, time.month, time.day, time.hour, time.minute, time.second}}.Text();
}

// Records of a Stagemark, as far as they may be its own.
std::size_t RecordsIn(const BaseContainer& record) {
  std::size_t count = 1;
  for (const ListRow& row : kRecordLists) {
    if (const BaseContainer* list = record.GetContainerInstance(row.key))
      count += static_cast<std::size_t>(list->GetCount());
  }
  return count;
}

// A Stagemark that is not stored any more.
struct Gone {
  const BaseContainer* record;
  const BaseContainer* entry;  // null where it stood in no list
  bool overwritten;
};

std::string NameOf(const Gone& gone) {
  return (gone.entry ? *gone.entry : *gone.record).GetString(kStoredName).ToUtf8();
}

// Under an ID there may be another record for many reasons, bulk edits among them; only a recording
// over a Stagemark, which is given by its name, throws the old one away.
std::vector<Gone> FindGone(const BaseContainer& before, const BaseContainer& now,
                           const std::string& recorded) {
  std::vector<Gone> found;
  const BaseContainer* records = before.GetContainerInstance(kStagemarksId);
  const BaseContainer* entries = before.GetContainerInstance(kStoredEntries);
  const BaseContainer* left = now.GetContainerInstance(kStagemarksId);
  for (LONG i = 0; records && i < records->GetCount(); ++i) {
    const LONG id = records->GetIndexId(i);
    const BaseContainer* record = StoredUnder(records, id);
    const BaseContainer* same = StoredUnder(left, id);
    if (!record || (same && (recorded.empty() || BodyOf(*same) == BodyOf(*record)))) continue;
    const Gone gone{record, StoredUnder(entries, id), same != nullptr};
    if (!same || NameOf(gone) == recorded) found.push_back(gone);
  }
  return found;
}

// Settings that were freed with the Stagemark are found in the undo step where they are parked;
// those that are still in the scene are not packed.
DeletedState Packed(const Gone& gone, const StoredDataScope& scope, const KeptPreviews& previews,
                    const std::string& now) {
  StateParts parts;
  parts.record = *gone.record;
  if (gone.entry) parts.entry = *gone.entry;
  const BaseContainer* holder = gone.record->GetContainerInstance(kStoredSettings);
  if (holder) parts.settings = scope.Removed(LinkOf(*holder, kStoredSettings));
  DeletedState state;
  state.name = NameOf(gone);
  parts.preview = previews.Of(state.name);
  state.recorded = DateOf(*gone.record).Text();
  state.deleted = now;
  state.overwritten = gone.overwritten;
  auto packed = std::make_shared<PackedScene>();
  packed->scene = SceneOfState(parts);
  state.packed = std::move(packed);
  return state;
}

}  // namespace

std::vector<LONG> StoresOfStates() { return {kStagemarksId, kStoredEntries}; }

// A link may lead to any file of this person's, which must not get into the trash of a scene that
// others read.
void KeptPreviews::Take(const BaseDocument& doc, const std::string& name) {
  const std::string path = PreviewFileIn(SideFolderOf(doc), name);
  if (path.empty() || kept_.contains(name)) return;
  Kept kept;
  const FileKind kind = services_.files.Kind(path);
  if (kind == FileKind::Unknown) kept.notKept = kUnreadable;
  if (kind == FileKind::File) {
    kept.stamp = services_.files.Stamp(path);
    if (!services_.files.CheckWay(path)) {
      kept.notKept = kLinked;
    } else if (kept.stamp.size > kMostBytesOfOne) {
      kept.notKept = kTooLarge;
    } else if (bytes_ + kept.stamp.size > kMostBytes) {
      kept.notKept = kTooMany;
    } else if (auto bytes = services_.files.ReadFile(path, kMostBytesOfOne)) {
      bytes_ += bytes.Value().size();
      kept.sides[0] = std::make_shared<const std::string>(bytes.Take());
    } else {
      kept.notKept = kUnreadable;
    }
  }
  kept_.emplace(name, std::move(kept));
}

KeptPreviews::Bytes KeptPreviews::Of(const std::string& name) const {
  const auto found = kept_.find(name);
  return found == kept_.end() ? nullptr : found->second.sides[0];
}

bool KeptPreviews::KeepChanged(const BaseDocument& doc) {
  const std::string folder = SideFolderOf(doc);
  std::erase_if(kept_, [&](const auto& item) {
    const std::string path = PreviewFileIn(folder, item.first);
    return path.empty() || services_.files.Stamp(path) == item.second.stamp;
  });
  return !kept_.empty();
}

void KeptPreviews::Wish(const std::string& name, Bytes bytes) {
  live_ = 0;
  Kept& kept = kept_[name];
  kept.sides[1] = std::move(bytes);
  kept.onDisk = 0;
}

void KeptPreviews::Exchange(BaseDocument& doc) noexcept {
  try {
    const std::string folder = SideFolderOf(doc);
    for (auto& [name, kept] : kept_) {
      const std::string path = PreviewFileIn(folder, name);
      if (!path.empty()) ExchangeOne(name, path, kept);
    }
  } catch (const std::bad_alloc&) {
    // Those that are left keep both sides.
  }
  live_ = 1 - live_;
}

// A preview that cannot be written is kept, and written when the step comes round again.
void KeptPreviews::ExchangeOne(const std::string& name, const std::string& path, Kept& kept) const {
  FileSystem& files = services_.files;
  const int wanted = 1 - live_;
  if (kept.onDisk == wanted) return;
  const FileKind kind = files.Kind(path);
  std::string why = wanted == 0 ? kept.notKept : "";
  if (kind == FileKind::Unknown) why = kUnreadable;
  Bytes there;
  if (why.empty() && kind == FileKind::File && files.Stamp(path).size > kMostBytesOfOne) {
    why = kTooLarge;
  } else if (why.empty() && kind == FileKind::File) {
    auto bytes = files.ReadFile(path, kMostBytesOfOne);
    if (bytes) there = std::make_shared<const std::string>(bytes.Take());
    if (!bytes) why = kUnreadable;
  }
  if (!why.empty()) {
    const char* what =
        kind == FileKind::Missing ? "\" does not come back: " : "\" stays as it is: ";
    services_.ledger.Add(
        {Operation::ReplaceFile, path, "", false, "The preview of \"" + name + what + why + "."});
    return;
  }
  // As the file is now, which may not be as this program wrote it: somebody may have changed it.
  kept.sides[live_] = std::move(there);
  Status done;
  if (kept.sides[wanted]) {
    const std::string folder = path.substr(0, path.rfind('/'));
    if (files.Kind(folder) == FileKind::Missing) done = files.MakeFolder(folder);
    if (done) done = files.ReplaceFile(path, *kept.sides[wanted]);
  } else if (kind == FileKind::File) {
    done = files.RemoveFile(path);
  }
  if (done) kept.onDisk = wanted;
}

void MoveToTrash(const Services& services, StoredDataScope& scope, BaseDocument& doc,
                 const std::string& recorded, const KeptPreviews& previews) {
  const std::vector<Gone> gone = FindGone(scope.Before(), *doc.GetDataInstance(), recorded);
  if (gone.empty()) return;
  std::size_t weight = 0;
  for (const Gone& one : gone) weight += RecordsIn(*one.record);
  scope.Weigh(weight);
  auto states = std::make_shared<DeletedStates>(DeletedStatesOf(doc));
  // Those that would be pushed out at once are not packed at all.
  const std::size_t passedOver =
      gone.size() > kMostDeletedStates ? gone.size() - kMostDeletedStates : 0;
  const std::string now = TextOf(services.clock.Now());
  for (std::size_t i = passedOver; i < gone.size(); ++i)
    states->push_back(Packed(gone[i], scope, previews, now));
  if (states->size() > kMostDeletedStates)
    states->erase(states->begin(), states->end() - kMostDeletedStates);
  SetDeletedStates(doc, std::move(states));
}

namespace {

// Where a Stagemark comes back: under its old ID, where that is free and still found by its name,
// else under the first one that is free, as recording chooses it. Deleting leaves an empty
// container under the ID, so that the ID is still counted; one of the entries is the note.
LONG PlaceFor(const BaseContainer& record, const BaseContainer& records,
              const BaseContainer& entries) {
  const auto isFree = [&](LONG id) {
    return !StoredUnder(&records, id) && !StoredUnder(&entries, id);
  };
  const LONG old = record.GetId();
  if (old >= 0 && entries.FindIndex(old) != host::NOTOK && old < entries.GetCount() - 1 &&
      isFree(old))
    return old;
  LONG id = 0;
  while (!isFree(id)) ++id;
  return id;
}

class Restoring {
 public:
  Restoring(BaseDocument& doc, StateParts parts, std::string name)
      : doc_(doc), parts_(std::move(parts)), name_(std::move(name)) {}

  void Run() {
    BaseContainer& data = *doc_.GetDataInstance();
    BaseContainer records = data.GetContainer(kStagemarksId);
    BaseContainer entries = data.GetContainer(kStoredEntries);
    const bool isFirst = entries.GetCount() == 0;
    const LONG id = PlaceFor(parts_.record, records, entries);
    GiveSettings();
    for (BaseContainer* one : {&parts_.record, &parts_.entry}) {
      one->SetId(id);
      one->SetString(kStoredName, host::String(std::string_view(name_)));
    }
    if (parts_.entry.GetBool(kStoredCurrent)) parts_.entry.SetBool(kStoredCurrent, host::FALSE);
    records.SetContainer(id, parts_.record);
    entries.SetContainer(id, parts_.entry);
    if (isFirst) entries.SetBool(kStoredListBuilt, host::TRUE);
    data.SetContainer(kStagemarksId, records);
    data.SetContainer(kStoredEntries, entries);
    doc_.SetChanged();
  }

 private:
  void GiveSettings() {
    BaseContainer* holder = parts_.record.GetContainerInstance(kStoredSettings);
    if (!parts_.settings || !holder) return;
    host::RenderData& copy = InsertCopy(doc_, *parts_.settings);
    copy.SetName(host::String(std::string_view(name_)));
    SetLinkId(*holder, kStoredSettings, IdOf(copy));
  }

  BaseDocument& doc_;
  StateParts parts_;
  std::string name_;
};

// The trash without the one at that position.
SharedDeletedStates Without(const BaseDocument& doc, std::size_t position) {
  auto states = std::make_shared<DeletedStates>(DeletedStatesOf(doc));
  states->erase(states->begin() + static_cast<std::ptrdiff_t>(position));
  return states;
}

}  // namespace

Result<std::string> RestoreDeleted(const Services& services, BaseDocument& doc,
                                   std::size_t position, const std::string& as) {
  using Failure = Result<std::string>;
  if (position >= DeletedStatesOf(doc).size())
    return Failure::Failure("There is no such Stagemark in the trash.");
  const DeletedState state = DeletedStatesOf(doc)[position];
  const std::string name = as.empty() ? state.name : as;
  for (const StoredState& present : ReadStates(doc)) {
    if (present.name == name)
      return Failure::Failure("There is a Stagemark \"" + name +
                              "\" already. Give the restored one another name.");
  }
  auto scene = Unpack(*state.packed);
  if (!scene)
    return Failure::Failure("\"" + state.name + "\" cannot be restored. " + scene.Message());
  StateParts parts = PartsOfScene(*scene.Value());
  if (parts.record.GetCount() == 0)
    return Failure::Failure("\"" + state.name + "\" cannot be restored: nothing is left of it.");
  StoredDataScope scope(doc, "Restore " + name, StoresOfStates());
  if (parts.preview) {
    auto preview = std::make_unique<KeptPreviews>(services);
    preview->Wish(name, parts.preview);
    preview->Exchange(doc);
    scope.Add(std::move(preview));
  }
  Restoring(doc, std::move(parts), name).Run();
  SetDeletedStates(doc, Without(doc, position));
  return name;
}

void EmptyTrash(BaseDocument& doc) {
  if (DeletedStatesOf(doc).empty()) return;
  const StoredDataScope scope(doc, "Empty Trash", StoresOfStates());
  SetDeletedStates(doc, nullptr);
  doc.SetChanged();
}

}  // namespace engine
