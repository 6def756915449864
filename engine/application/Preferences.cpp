#include "engine/application/Preferences.h"

#include <utility>

#include "engine/application/PreferencesText.h"

namespace engine {
namespace {

constexpr std::uint64_t kMostBytes = 64 << 20;

}  // namespace

const host::BaseContainer* Preferences::Get(host::LONG id) {
  if (!read_) {
    const Status status = Read();
    if (!status) ledger_.AddNote(File(), status.Message());
  }
  const auto it = stored_.find(id);
  return it == stored_.end() ? nullptr : &it->second;
}

Status Preferences::Set(host::LONG id, host::BaseContainer data, bool merge) {
  Status status = Read();
  host::BaseContainer& stored = stored_[id];
  if (merge) {
    stored.MergeContainer(data);
  } else {
    stored = std::move(data);
  }
  session_[id] = stored;
  if (status) status = files_.MakeFolders(folder_);
  if (!status) return status;
  const Result<std::string> text = WritePreferences(stored_);
  if (text) return files_.ReplaceFile(File(), text.Value());
  session_.erase(id);
  read_ = false;
  return text.GetStatus();
}

std::string Preferences::File() const { return folder_.empty() ? "" : folder_ + "/preferences"; }

Status Preferences::Read() {
  read_ = true;
  Status status;
  const std::string path = File();
  if (files_.Kind(path) == FileKind::Missing) {
    stored_.clear();
  } else {
    const Result<std::string> text = files_.ReadFile(path, kMostBytes);
    if (!text) return text.GetStatus();
    Result<ReadPreferencesAnswer> answer = ReadPreferences(text.Value());
    stored_.clear();
    if (!answer) {
      status = KeepAside(answer.Message());
    } else if (answer.Value().laterVersion) {
      status = Status::Failure("The preferences \"" + path +
                               "\" are of a later version of this program; they stay as they are.");
    } else {
      stored_ = std::move(answer.Value().containers);
    }
  }
  for (const auto& [id, data] : session_) stored_[id] = data;
  return status;
}

Status Preferences::KeepAside(const std::string& reason) {
  const std::string aside = File() + ".damaged";
  Status kept = files_.CopyFile(File(), aside, true);
  if (kept) kept = files_.RemoveFile(File());
  if (!kept) return kept;
  ledger_.AddNote(File(), "The preferences were damaged (" + reason +
                              "); the defaults apply, the old file is \"" + aside + "\".");
  return kept;
}

}  // namespace engine
