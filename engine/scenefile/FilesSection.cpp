#include "engine/scenefile/FilesSection.h"

#include <algorithm>
#include <unordered_set>

namespace engine::scenefile {
namespace {

constexpr std::size_t kLongestName = 255;

// Saving puts the file under this name into a folder: the name must not lead out of it, nor hide
// the file.
bool IsBareName(std::string_view name) {
  return !name.empty() && name.size() <= kLongestName && name.front() != '.' &&
         std::ranges::none_of(name, [](char c) {
           return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
         });
}

}  // namespace

std::string FilesContents(const EmbeddedFiles& files, TextWriter& texts) {
  Column names;
  Column lengths;
  std::string bytes;
  for (const EmbeddedFile& file : files) {
    names.push_back(texts.Row(file.name));
    lengths.push_back(file.bytes->size());
    bytes += *file.bytes;
  }
  std::string out;
  PutVarint(out, files.size());
  PutInts(out, names);
  PutInts(out, lengths);
  return out += bytes;
}

EmbeddedFiles ReadFiles(std::string_view contents, const std::vector<host::String>& texts,
                        Budget& budget) {
  Cursor in(contents, "FILES", budget);
  const std::size_t rows = in.Rows(sizeof(EmbeddedFile) + sizeof(std::string));
  const Column names = TakeInts(in, rows);
  CheckBelow(in, names, texts.size(), "a name");
  const Column lengths = TakeInts(in, rows);
  budget.Charge(in.Left());
  EmbeddedFiles files;
  std::unordered_set<std::string> seen;
  for (std::size_t row = 0; row < rows; ++row) {
    std::string name = texts[names[row]].ToUtf8();
    if (!IsBareName(name)) in.Refuse("a file has a name that leads elsewhere");
    if (!seen.insert(name).second) in.Refuse("two files have the same name");
    files.push_back({std::move(name), std::make_shared<const std::string>(in.Take(lengths[row]))});
  }
  in.End();
  return files;
}

}  // namespace engine::scenefile
