#include "engine/states/StoredStates.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "host/RenderData.h"

namespace engine {

using host::BaseContainer;
using host::LONG;

namespace {

const BaseContainer* Store(const host::BaseDocument& doc, LONG id) {
  return doc.GetDataInstance()->GetContainerInstance(id);
}

StoredState FromRecord(LONG id, const BaseContainer& record, const BaseContainer* entry) {
  StoredState state;
  state.id = id;
  state.name = (entry ? *entry : record).GetString(kStoredName).ToUtf8();
  state.date = DateOf(entry ? *entry : record);
  state.current = entry && entry->GetBool(kStoredCurrent);
  state.hasRecord = true;
  state.hasEntry = entry != nullptr;
  state.record = record;
  return state;
}

StoredState FromEntry(LONG id, const BaseContainer& entry) {
  StoredState state;
  state.id = id;
  state.name = entry.GetString(kStoredName).ToUtf8();
  state.date = DateOf(entry);
  state.current = entry.GetBool(kStoredCurrent);
  state.hasEntry = true;
  return state;
}

}  // namespace

std::string SideFolderOf(const host::BaseDocument& doc) {
  if (doc.GetDocumentPath().GetString().View().empty()) return "";
  host::Filename name = doc.GetDocumentName();
  name.ClearSuffix();
  return (doc.GetDocumentPath() + name).GetString().ToUtf8() + kSideFolderEnding;
}

std::string PreviewFileIn(const std::string& sideFolder, const std::string& name) {
  const bool isFileName = !name.empty() && name.find_first_of("/\\") == std::string::npos;
  return sideFolder.empty() || !isFileName ? "" : sideFolder + "/" + name + kPreviewEnding;
}

std::string StoredDate::Text() const {
  if (*this == StoredDate()) return "";
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", fields[0], fields[1], fields[2],
                fields[3], fields[4], fields[5]);
  return text;
}

StoredDate StoredDate::FromText(const std::string& text) {
  StoredDate date;
  LONG* f = date.fields;
  const int read =
      std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", f, f + 1, f + 2, f + 3, f + 4, f + 5);
  return read == kStoredDateFields && date.Text() == text ? date : StoredDate();
}

std::string StoredDate::WithZone() const {
  std::tm local{};
  local.tm_year = fields[0] - 1900;
  local.tm_mon = fields[1] - 1;
  local.tm_mday = fields[2];
  local.tm_hour = fields[3];
  local.tm_min = fields[4];
  local.tm_sec = fields[5];
  local.tm_isdst = -1;
  const std::tm wanted = local;
  // A date that is none is moved to one. The hour is not compared: one that the change to summer
  // time skips is moved, and is a date all the same.
  if (fields[0] < 1 || fields[0] > 9999 || std::mktime(&local) == -1 ||
      local.tm_mon != wanted.tm_mon || local.tm_mday != wanted.tm_mday ||
      local.tm_min != wanted.tm_min || local.tm_sec != wanted.tm_sec)
    return "";
  const long minutes = std::labs(local.tm_gmtoff) / 60;
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld", fields[0],
                fields[1], fields[2], fields[3], fields[4], fields[5],
                local.tm_gmtoff < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return text;
}

const BaseContainer* StoredUnder(const BaseContainer* store, LONG id) {
  const BaseContainer* one = store ? store->GetContainerInstance(id) : nullptr;
  return one && one->GetCount() > 0 ? one : nullptr;
}

StoredDate DateOf(const BaseContainer& holder) {
  StoredDate date;
  if (const BaseContainer* fields = holder.GetContainerInstance(kStoredDate)) {
    for (int i = 0; i < kStoredDateFields; ++i) date.fields[i] = fields->GetLong(kStoredYear + i);
  }
  return date;
}

std::vector<StoredState> ReadStates(const host::BaseDocument& doc) {
  std::vector<StoredState> states;
  const BaseContainer* records = Store(doc, kStagemarksId);
  const BaseContainer* entries = Store(doc, kStoredEntries);
  for (LONG i = 0; records && i < records->GetCount(); ++i) {
    const LONG id = records->GetIndexId(i);
    if (const BaseContainer* record = StoredUnder(records, id))
      states.push_back(FromRecord(id, *record, StoredUnder(entries, id)));
  }
  for (LONG i = 0; entries && i < entries->GetCount(); ++i) {
    const LONG id = entries->GetIndexId(i);
    const BaseContainer* entry = StoredUnder(entries, id);
    if (entry && !StoredUnder(records, id)) states.push_back(FromEntry(id, *entry));
  }
  return states;
}

// Sorted by the host's own comparison, as the dialog's list is.
std::vector<StoredState> ListedStates(const host::BaseDocument& doc) {
  std::vector<std::pair<host::String, StoredState>> named;
  for (StoredState& state : ReadStates(doc)) {
    if (!state.hasEntry) continue;
    host::String name{std::string_view(state.name)};
    named.emplace_back(std::move(name), std::move(state));
  }
  std::stable_sort(named.begin(), named.end(),
                   [](const auto& a, const auto& b) { return a.first.Compare(b.first) < 0; });
  std::vector<StoredState> states;
  states.reserve(named.size());
  for (auto& [name, state] : named) states.push_back(std::move(state));
  return states;
}

// As the plug-in looks a name up, its oddity included: it counts the entries and asks for the keys
// below that number. The answer is what the entry says is its own ID.
LONG LoadedId(const host::BaseDocument& doc, const std::string& name) {
  const BaseContainer* entries = Store(doc, kStoredEntries);
  if (!entries) return 0;
  const bool hasNote = entries->FindIndex(kStoredListBuilt) != host::NOTOK &&
                       entries->GetType(kStoredListBuilt) != host::DA_CONTAINER;
  const LONG count = entries->GetCount() - (hasNote ? 1 : 0);
  for (LONG id = 0; id < count; ++id) {
    const BaseContainer* entry = entries->GetContainerInstance(id);
    if (entry && entry->GetString(kStoredName).View() == name) return entry->GetId();
  }
  return 0;
}

const StoredState* FindState(const host::BaseDocument& doc, const std::vector<StoredState>& states,
                             const std::string& name) {
  const LONG loaded = LoadedId(doc, name);
  const StoredState* first = nullptr;
  for (const StoredState& state : states) {
    if (state.name != name) continue;
    if (state.id == loaded) return &state;
    if (!first) first = &state;
  }
  return first;
}

SettingsOfStates FindSettingsOfStates(const host::BaseDocument* doc) {
  SettingsOfStates found;
  const BaseContainer* records = doc ? Store(*doc, kStagemarksId) : nullptr;
  for (LONG i = 0; records && i < records->GetCount(); ++i) {
    const BaseContainer* record = records->GetContainerInstance(records->GetIndexId(i));
    const BaseContainer* kept = record ? record->GetContainerInstance(kStoredSettings) : nullptr;
    const host::RenderData* settings =
        kept ? AsRenderData(kept->GetLink(kStoredSettings, doc)) : nullptr;
    if (settings) found.emplace(IdOf(*settings), record->GetString(kStoredName).ToUtf8());
  }
  return found;
}

}  // namespace engine
