// Files, folders and the clock. All functions refuse a relative path; those that create, replace,
// rename or delete refuse a ".." component and a NUL byte besides. Every operation is written to
// the ledger. Main thread.
#pragma once

#include "host/AtomArray.h"
#include "host/Filename.h"

namespace host {

// True for a plain file, or with `isDirectory` for a folder, links followed.
Bool GeFExist(const Filename& name, Bool isDirectory = FALSE);
// Makes one folder, no parents. True when it is there afterwards; false for a file in its place.
Bool GeFCreateDir(const Filename& folder);
// Copies a regular file; flag 1 replaces an existing one. A file onto itself is left alone: true.
Bool GeFCopyFile(const Filename& from, const Filename& to, LONG flags);
// Deletes a plain file (flag 0), or with flag 1 a folder and all in it; of a symbolic link only the
// link. False when it is missing or something else.
Bool GeFKill(const Filename& name, LONG flags);
// False, without change, when the source is missing or the target exists. Nothing is copied: across
// file systems it fails.
Bool GeFRename(const Filename& from, const Filename& to);
// Opens a file with the system's viewer for it. Returns when the viewer was started, not when it is
// closed; false when there is none.
Bool GeExecuteFile(const Filename& file);

// Kinds and flags of FileSelect.
inline constexpr LONG FILESELECTTYPE_ANYTHING = 0;
inline constexpr LONG FILESELECT_LOAD = 0;
inline constexpr LONG FILESELECT_SAVE = 1;
inline constexpr LONG FILESELECT_DIRECTORY = 2;
// Asks the user for a file or folder and puts it into `name`. True when confirmed, else `name`
// stays. `name` is what the person finds chosen at first.
Bool FileSelect(Filename& name, LONG type, LONG flags, const String& title);

// Lists the plain files of one folder in name order.
class BrowseFiles {
 public:
  static BrowseFiles* Alloc();
  static void Free(BrowseFiles*& browser);
  // Starts over with `folder`; flags 0: its top level. A folder that cannot be read lists nothing.
  // Before the first file: GetNext goes to it. Files that come or go afterwards are not noticed.
  void Init(const Filename& folder, LONG flags);
  // Goes to the next file; false behind the last one.
  Bool GetNext();
  // Name of the current file, without its folder.
  Filename GetFilename() const;

 private:
  std::vector<Filename> names_;
  std::size_t next_ = 0;
};

// A moment in local time. Months and days count from 1.
struct LocalFileTime {
  LONG year = 0;
  LONG month = 0;
  LONG day = 0;
  LONG hour = 0;
  LONG minute = 0;
  LONG second = 0;
};
void GeGetCurrentTime(LocalFileTime& time);

}  // namespace host
