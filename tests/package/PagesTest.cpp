// The pages for people and the completion, as installed: that they name everything that the
// programs take.
#include <filesystem>
#include <set>

#include "tests/package/Installed.h"
#include "tests/support/TextSearch.h"

namespace {

using tests::ChildResult;
using tests::Installed;

std::string ManualPage(const std::string& path) {
  const ChildResult page = tests::RunChild("/bin/gzip", {"-dc", path});
  EXPECT_EQ(page.status, 0) << path << page.err;
  return page.out;
}

// The first words of the indented lines of a help text: verbs, or options where `options`.
std::set<std::string> FirstWords(const std::string& help, bool options) {
  const std::vector<std::string> words =
      tests::Matches(help, options ? "\n  (?:-\\w, ?)?(--[a-z-]+)" : "\n  ([a-z][a-z-]+) {2,}");
  return {words.begin(), words.end()};
}

// As it is written in a manual page, where a hyphen to be typed is escaped.
std::string Typed(const std::string& name) { return tests::WithReplaced(name, "-", "\\-"); }

TEST_F(Installed, TheManualPageNamesEveryVerbAndOption) {
  const std::string page = ManualPage(At("share/man/man1/stagemarks.1.gz"));
  const std::string help = Run("stagemarks", {"--help"}).out;
  for (const std::string& option : FirstWords(help, true)) {
    EXPECT_NE(page.find("\\fB" + Typed(option) + "\\fR"), std::string::npos) << option;
  }
  const std::set<std::string> verbs = FirstWords(help, false);
  EXPECT_GT(verbs.size(), 20U) << help;
  for (const std::string& verb : verbs) {
    const std::size_t start = page.find("\n.SS stagemarks " + Typed(verb));
    ASSERT_NE(start, std::string::npos) << verb;
    const std::string section = page.substr(start, page.find("\n.S", start + 1) - start);
    const std::string verbHelp = Run("stagemarks", {verb, "--help"}).out;
    EXPECT_NE(verbHelp.find("\n  stagemarks " + verb), std::string::npos)
        << verb << " has no example";
    const std::set<std::string> options = FirstWords(verbHelp, true);
    EXPECT_TRUE(options.count("--help")) << verb;
    for (const std::string& option : options) {
      EXPECT_NE(section.find("\\fB" + Typed(option) + "\\fR"), std::string::npos)
          << verb << " " << option;
    }
  }
  for (const char* status : {"\n.B 0\n", "\n.B 1\n", "\n.B 2\n", "\n.B 130\n"})
    EXPECT_NE(page.find(status), std::string::npos);
}

TEST_F(Installed, TheDesktopsManualPageNamesEveryOption) {
  if (!tests::kHasDesktop) GTEST_SKIP() << "built without the desktop";
  const std::string page = ManualPage(At("share/man/man1/stagemarks-desktop.1.gz"));
  for (const std::string& option : FirstWords(Run("stagemarks-desktop", {"--help"}).out, true)) {
    EXPECT_NE(page.find(Typed(option)), std::string::npos) << option;
  }
}

TEST_F(Installed, ManualPagesAreWellFormed) {
  if (!tests::CanRun("man")) GTEST_SKIP() << "man is not installed";
  for (const char* name : {"stagemarks.1.gz", "stagemarks-desktop.1.gz"}) {
    const std::string path = At("share/man/man1/") + name;
    if (!std::filesystem::exists(path)) continue;
    const ChildResult page = tests::RunChild("/usr/bin/man", {"--warnings", "-l", path},
                                             {{"LC_ALL", "C.UTF-8"}, {"MANWIDTH", "100"}});
    EXPECT_EQ(page.status, 0);
    EXPECT_EQ(page.err, "") << path;
    EXPECT_NE(page.out.find("EXIT STATUS"), std::string::npos) << page.out;
  }
}

TEST_F(Installed, TheShellCompletes) {
  for (const std::vector<std::string>& call : std::vector<std::vector<std::string>>{
           {"import", At("share/stagemarks/scenes/spider/spider.fbx"), Home() + "/shell.c4d"},
           {"record", Home() + "/shell.c4d", "Day", "--write"},
           {"record", Home() + "/shell.c4d", "Night, rainy", "--write"},
           {"cameras", "add", Home() + "/shell.c4d", "Front view", "--write"},
           {"layers", "add", Home() + "/shell.c4d", "Props", "--write"}}) {
    ASSERT_EQ(Run("stagemarks", call).status, 0);
  }
  // The line up to the cursor, its last word still open, and what the shell offers for that.
  const std::pair<std::string, std::string> kLines[] = {
      {"stagemarks rec", "record"},
      {"stagemarks set-", "set-objects set-tags set-layers set-camera"},
      {"stagemarks --ver", "--version --verbose"},
      {"stagemarks record --p", "--preview"},
      {"stagemarks set shell.c4d --render ''", "on off default"},
      {"stagemarks export shell.c4d --layout f", "file folders"},
      {"stagemarks load sh", "shell.c4d"},
      {"stagemarks load shell.c4d ''", "Day Night\\,\\ rainy"},
      {"stagemarks -q load --write shell.c4d N", "Night\\,\\ rainy"},
      {"stagemarks load shell.c4d Day ''", ""},
      {"stagemarks delete shell.c4d Day N", "Night\\,\\ rainy"},
      {"stagemarks update shell.c4d --only Day ''", "Day Night\\,\\ rainy"},
      {"stagemarks diff shell.c4d Day N", "Night\\,\\ rainy"},
      {"stagemarks render shell.c4d --only D", "Day"},
      {"stagemarks check shell.c4d --fix l", "link-gone"},
      {"stagemarks load missing.c4d ''", ""},
      {"stagemarks options shell.c4d --on rend", "render-settings render-tags"},
      {"stagemarks set shell.c4d --layer P", "Props"},
      {"stagemarks set shell.c4d --layer Props --flag so", "solo=on solo=off"},
      {"stagemarks set shell.c4d --camera F", "Front\\ view"},
      {"stagemarks set shell.c4d --camera 'Front\\ v'", "Front\\ view"},
      {"stagemarks set shell.c4d --object Kop", "Kopf2 Kopf"},
      {"stagemarks cameras re", "rename remove"},
      {"stagemarks cameras remove sh", "shell.c4d"},
      {"stagemarks cameras remove shell.c4d F", "Front\\ view"},
      {"stagemarks layers rename shell.c4d ''", "Props"},
      {"stagemarks layers add shell.c4d ''", ""},
      {"stagemarks states export shell.c4d D", "Day"},
      {"stagemarks farm su", "submit"},
  };
  const std::string script =
      "source '" + At("share/bash-completion/completions/stagemarks") + "'\ncd '" + Home() +
      "'\nPATH='" + At("bin") +
      "':$PATH\nCOMP_WORDS=(\"$@\")\nCOMP_CWORD=$(($# - 1))\n_stagemarks\necho \"${COMPREPLY[*]}\"";
  for (const auto& [line, offered] : kLines) {
    const ChildResult result =
        tests::RunBare("/bin/bash", {"-c", "set -- " + line + "\n" + script}, Home());
    std::string out = result.out;
    EXPECT_EQ(out.substr(0, out.find_last_not_of('\n') + 1), offered) << line;
    EXPECT_EQ(result.err, "") << line;
  }
}

}  // namespace
