// HelpText: what the verbs and their options look like in words: for `--help`, for the manual page
// and for the shell's completion. Any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace CLI {
class App;
class FormatterBase;
}  // namespace CLI

namespace commandline {

// How `--help` looks: short option columns, descriptions wrapped to `width` columns in all.
std::shared_ptr<CLI::FormatterBase> MakeHelpFormat(std::size_t width);

// A section of the manual page for every verb, in the page's own language.
std::string TextForManualPage(const CLI::App& app);
// Assignments to the completion's tables: verbs, the options of each, the word for each value, and
// the values where few are allowed.
std::string TablesForBash(const CLI::App& app);

}  // namespace commandline
