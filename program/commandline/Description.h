// Description: the verbs with all their options, in the forms of the manual page and of the shell's
// completion. The build fills them into the files that are installed, so that those name what the
// program takes. Any thread.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace commandline {

// A section of the manual page for every verb, in the page's own language.
std::string TextForManualPage(const CLI::App& app);
// Assignments to the completion's tables: verbs, the options of each, the word for each value, and
// the values where few are allowed.
std::string TablesForBash(const CLI::App& app);

}  // namespace commandline
