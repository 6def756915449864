// Filename: the text of a path with operations on its parts; it never touches the disk. The file
// part follows the last '/' or '\'; the suffix follows the last dot of the file part. A value,
// cheap to copy.
#pragma once

#include "host/String.h"

namespace host {

class Filename {
 public:
  Filename() = default;
  Filename(const CHAR* utf8) : path_(utf8) {}
  Filename(const String& path) : path_(path) {}

  // True when there is any text.
  Bool Content() const { return path_.Content(); }
  // The whole path as text.
  String GetString() const { return path_; }
  void SetString(const String& path) { path_ = path; }

  // The part after the last separator, as a file name or as text; the whole path where there is no
  // separator.
  Filename GetFile() const;
  String GetFileString() const;
  // Another file in the same folder.
  void SetFile(const Filename& file);
  // The part before the last separator; empty where there is none. The root keeps its separator.
  Filename GetDirectory() const;
  // The same file part in another folder.
  void SetDirectory(const Filename& directory);

  // Text after the last dot of the file part; empty where there is none. Without the dot, in its
  // own letter case.
  String GetSuffix() const;
  // Replaces the suffix, or adds one where there is none.
  void SetSuffix(const String& suffix);
  // Removes the last suffix only.
  void ClearSuffix();
  // True when the suffix equals `suffix`, letter case aside.
  Bool CheckSuffix(const String& suffix) const;

  // `a + b`: a, one separator, b, also when b begins with a separator; with an empty a it is b.
  friend Filename operator+(const Filename& a, const Filename& b);
  Filename& operator+=(const Filename& other);

  // Equality of the texts after collapsing doubled separators.
  Bool operator==(const Filename& other) const;
  Bool operator!=(const Filename& other) const { return !(*this == other); }

 private:
  String path_;
};

}  // namespace host
