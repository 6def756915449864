// The published functions on files, the clock and the person.

#include <algorithm>

#include "engine/outside/Services.h"
#include "host/Application.h"
#include "host/Files.h"

namespace host {
namespace {

using engine::FileKind;

engine::FileSystem& Files() { return engine::PublishedServices().files; }
engine::Person& Person() { return engine::PublishedServices().person; }

std::string PathOf(const Filename& name) { return name.GetString().ToUtf8(); }

}  // namespace

Bool GeFExist(const Filename& name, Bool isDirectory) {
  const engine::Result<FileKind> kind = Files().Look(PathOf(name));
  return kind && kind.Value() == (isDirectory ? FileKind::Folder : FileKind::File);
}

Bool GeFCreateDir(const Filename& folder) { return Files().MakeFolder(PathOf(folder)).Ok(); }

Bool GeFCopyFile(const Filename& from, const Filename& to, LONG flags) {
  return Files().CopyFile(PathOf(from), PathOf(to), (flags & 1) != 0).Ok();
}

Bool GeFKill(const Filename& name, LONG flags) {
  const std::string path = PathOf(name);
  return ((flags & 1) != 0 ? Files().RemoveFolder(path) : Files().RemoveFile(path)).Ok();
}

Bool GeFRename(const Filename& from, const Filename& to) {
  return Files().Rename(PathOf(from), PathOf(to)).Ok();
}

Bool GeExecuteFile(const Filename& file) {
  return engine::PublishedServices().viewer.Open(PathOf(file)).Ok();
}

Bool FileSelect(Filename& name, LONG type, LONG flags, const String& title) {
  const std::optional<std::string> chosen =
      Person().ChooseFile({type, flags, title.ToUtf8(), PathOf(name)});
  if (!chosen) return FALSE;
  // A file that a person chose is one that a person named (decision 68).
  Files().Follow(*chosen);
  name = Filename(String(std::string_view(*chosen)));
  return TRUE;
}

BrowseFiles* BrowseFiles::Alloc() { return new BrowseFiles; }

void BrowseFiles::Free(BrowseFiles*& browser) {
  delete browser;
  browser = nullptr;
}

void BrowseFiles::Init(const Filename& folder, LONG) {
  names_.clear();
  next_ = 0;
  const engine::Result<std::vector<std::string>> names = Files().ListFiles(PathOf(folder));
  if (!names) return;
  for (const std::string& name : names.Value()) names_.emplace_back(String(std::string_view(name)));
}

// Stays one behind the last name, however often it is asked.
Bool BrowseFiles::GetNext() {
  next_ = std::min(next_ + 1, names_.size() + 1);
  return next_ <= names_.size();
}

Filename BrowseFiles::GetFilename() const {
  return next_ == 0 || next_ > names_.size() ? Filename() : names_[next_ - 1];
}

void GeGetCurrentTime(LocalFileTime& time) { time = engine::PublishedServices().clock.Now(); }

void MessageDialog(const String& text) { Person().Tell(text.ToUtf8()); }
Bool QuestionDialog(const String& text) { return Person().Ask(text.ToUtf8()); }
void StatusSetText(const String& text) { Person().ShowStatus(text.ToUtf8()); }
void StatusClear() { Person().ClearStatus(); }

}  // namespace host
