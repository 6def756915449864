// HelpFormat: how `--help` looks: short option columns, descriptions wrapped to the terminal. Any
// thread.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace commandline {

// Broken at blanks into lines of at most `width` bytes; a longer word stands alone.
std::vector<std::string> Wrapped(const std::string& text, std::size_t width);

// The word for an option's value, as "DIR"; empty for a flag. The checks behind it are left to the
// description.
std::string ValueWord(const CLI::Option& option);

class HelpFormat : public CLI::Formatter {
 public:
  // `width` columns in all.
  explicit HelpFormat(std::size_t width);

  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_group(std::string group, bool positional,
                         std::vector<const CLI::Option*> options) const override;
  std::string make_description(const CLI::App* app) const override;
  std::string make_subcommand(const CLI::App* verb) const override;

 private:
  std::string Described(const std::string& text) const;

  std::size_t width_;
};

}  // namespace commandline
