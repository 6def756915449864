// The published functions on files and the clock.
#include "host/Files.h"

#include <algorithm>

#include "engine/outside/Outside.h"

namespace host {
namespace {

using engine::FileKind;
using engine::Outside;

std::string PathOf(const Filename& name) { return name.GetString().ToUtf8(); }

}  // namespace

Bool GeFExist(const Filename& name, Bool isDirectory) {
  return Outside::Current().Kind(PathOf(name)) == (isDirectory ? FileKind::Folder : FileKind::File);
}

Bool GeFCreateDir(const Filename& folder) {
  return Outside::Current().MakeFolder(PathOf(folder)).Ok();
}

Bool GeFCopyFile(const Filename& from, const Filename& to, LONG flags) {
  return Outside::Current().CopyFile(PathOf(from), PathOf(to), (flags & 1) != 0).Ok();
}

Bool GeFKill(const Filename& name, LONG flags) {
  Outside& outside = Outside::Current();
  const std::string path = PathOf(name);
  return ((flags & 1) != 0 ? outside.RemoveFolder(path) : outside.RemoveFile(path)).Ok();
}

Bool GeFRename(const Filename& from, const Filename& to) {
  return Outside::Current().Rename(PathOf(from), PathOf(to)).Ok();
}

Bool GeExecuteFile(const Filename& file) {
  return Outside::Current().OpenWithViewer(PathOf(file)).Ok();
}

Bool FileSelect(Filename& name, LONG type, LONG flags, const String& title) {
  const std::optional<std::string> chosen =
      Outside::Current().ChooseFile({type, flags, title.ToUtf8(), PathOf(name)});
  if (!chosen) return FALSE;
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
  const engine::Result<std::vector<std::string>> names =
      Outside::Current().ListFiles(PathOf(folder));
  if (!names) return;
  for (const std::string& name : names.Value()) names_.emplace_back(String(std::string_view(name)));
}

Bool BrowseFiles::GetNext() {
  next_ = std::min(next_ + 1, names_.size() + 1);
  return next_ <= names_.size();
}

Filename BrowseFiles::GetFilename() const {
  return next_ == 0 || next_ > names_.size() ? Filename() : names_[next_ - 1];
}

void GeGetCurrentTime(LocalFileTime& time) { time = Outside::Current().Now(); }

}  // namespace host
