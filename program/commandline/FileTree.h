// FileTree: written files as a tree for a person. A folder whose files are of one kind and many
// stands in one line.
#pragma once

#include <string>
#include <vector>

namespace commandline {

// Lines for the files and folders of `paths` that lie below `root` (absolute paths, without it),
// each indented by two blanks a level, names in byte order, folders with a slash; the files of a
// folder "tex" are only counted unless `all`.
std::vector<std::string> FileTreeLines(const std::string& root,
                                       const std::vector<std::string>& paths, bool all = false);

}  // namespace commandline
