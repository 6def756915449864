#include "program/commandline/FileTree.h"

#include <map>
#include <memory>

#include "engine/dialog/TextArea.h"
#include "program/commandline/Report.h"

namespace commandline {

using engine::Printable;

namespace {

struct Folder {
  std::map<std::string, std::unique_ptr<Folder>> entries;  // a file has no entries of its own

  Folder& At(const std::string& name) {
    auto& entry = entries[name];
    if (!entry) entry = std::make_unique<Folder>();
    return *entry;
  }
};

void Add(Folder& root, const std::string& path) {
  Folder* folder = &root;
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    folder = &folder->At(path.substr(start, end - start));
    start = end + 1;
  }
}

// As deep as an export nests its folders, so this may call itself.
void Print(const Folder& folder, const std::string& indent, bool all,
           std::vector<std::string>& lines) {
  for (const auto& [name, entry] : folder.entries) {
    if (entry->entries.empty()) {
      lines.push_back(indent + Printable(name));
    } else if (name == "tex" && !all) {
      lines.push_back(indent + "tex/  " + Counted(entry->entries.size(), "texture"));
    } else {
      lines.push_back(indent + Printable(name) + "/");
      Print(*entry, indent + "  ", all, lines);
    }
  }
}

}  // namespace

std::vector<std::string> FileTreeLines(const std::string& root,
                                       const std::vector<std::string>& paths, bool all) {
  Folder tree;
  const std::string inside = root + "/";
  for (const std::string& path : paths) {
    if (path.compare(0, inside.size(), inside) == 0) Add(tree, path.substr(inside.size()));
  }
  std::vector<std::string> lines;
  Print(tree, "", all, lines);
  return lines;
}

}  // namespace commandline
