#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <map>

#include "engine/application/ProgramPlaces.h"
#include "engine/dialog/Dialogs.h"
#include "host/Host.h"
#include "tests/application/Stage.h"
#include "tests/plugins/Ids.h"

namespace {

using engine::LoadOutcome;
using engine::LoadReport;

struct Plugins : tests::Stage {};

struct Case {
  const char* name;
  LoadOutcome outcome;
  std::string message;  // behind "... was not loaded "
};

TEST_F(Plugins, EveryFailureHasItsNameAndTheHostGoesOn) {
  LoadGood();
  const Case cases[] = {
      {"NoStart", LoadOutcome::NoEntryPoints, "(NoEntryPoints): it exports no PluginStart."},
      {"NoMessage", LoadOutcome::NoEntryPoints, "(NoEntryPoints): it exports no PluginMessage."},
      {"NoEnd", LoadOutcome::NoEntryPoints, "(NoEntryPoints): it exports no PluginEnd."},
      {"ResourceRefused", LoadOutcome::ResourceRefused,
       "(ResourceRefused): its folder \"" + At("plugins/ResourceRefused/res") +
           "\" is missing; install the plug-in again."},
      {"StartRefused", LoadOutcome::StartRefused, "(StartRefused): it refused to start."},
      {"Throwing", LoadOutcome::StartRefused, "(StartRefused): it refused to start."},
      {"CommandIdTaken", LoadOutcome::IdTaken,
       "(IdTaken): the plug-in ID 1900001 is taken already."},
      {"HookIdTaken", LoadOutcome::IdTaken, "(IdTaken): the plug-in ID 1900001 is taken already."},
  };
  for (const Case& one : cases) {
    const std::string path = Place(one.name, false);
    const LoadReport report = application->LoadPlugin(path);
    EXPECT_EQ(report.outcome, one.outcome) << one.name;
    EXPECT_EQ(report.message,
              "Plug-in \"" + std::string(one.name) + "\" was not loaded " + one.message);
    EXPECT_EQ(report.path, path);
    EXPECT_FALSE(IsOpen(path)) << one.name;
    EXPECT_EQ(application->Commands().size(), 1U) << one.name;
  }
  EXPECT_EQ(Heard(),
            "refused command destroyed\nsecond command destroyed\nsecond command destroyed\n");
  application->NewDocument();
  EXPECT_EQ(Heard(), "hook init Untitled\n") << "no refused hook is made";
  EXPECT_TRUE(application->ExecuteCommand(test_plugins::kGoodCommand));
}

TEST_F(Plugins, WhatIsNoLibraryIsNamed) {
  std::filesystem::create_directories(At("plugins/Folder/Folder.so"));
  std::filesystem::create_directories(At("plugins/Gone"));
  std::filesystem::create_directories(At("plugins/Text"));
  tests::WriteText(At("plugins/Text/Text.so"), "This is a text.\n");
  tests::WriteText(At("plugins/readme.txt"), "no folder");
  const std::vector<LoadReport> reports = application->LoadPlugins(At("plugins"));
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_EQ(reports[0].outcome, LoadOutcome::NotALibrary);
  EXPECT_EQ(reports[1].outcome, LoadOutcome::Missing);
  EXPECT_EQ(reports[1].message, "Plug-in \"Gone\" was not loaded (Missing): there is no file \"" +
                                    At("plugins/Gone/Gone.so") + "\".");
  EXPECT_EQ(reports[2].outcome, LoadOutcome::NotALibrary);
  const std::string start = "Plug-in \"Text\" was not loaded (NotALibrary): the file \"" +
                            At("plugins/Text/Text.so") + "\" is no loadable library (";
  EXPECT_EQ(reports[2].message.substr(0, start.size()), start);
  EXPECT_EQ(application->LoadPlugins(At("nowhere")).size(), 0U);
}

// Cut files, and such with a byte flipped in what the system's loader reads: whatever comes of it,
// the program lives. Each in a copy of this process, which says by its exit what it was told.
TEST_F(Plugins, ADamagedFileEndsNothing) {
  constexpr int kRefused = 1;
  constexpr int kWouldEnd = 2;
  const std::string path = Place("Good");
  const std::string whole = tests::ReadText(path);
  const auto load = [&](const std::string& bytes) {
    std::filesystem::remove(path);  // no mapping of an earlier one sees the change
    tests::WriteText(path, bytes);
    const pid_t child = ::fork();
    if (child == 0) {
      const LoadReport report = application->LoadPlugin(path);
      application->UnloadPlugins();
      const bool wouldEnd = report.message.find("it crashes (") != std::string::npos;
      ::_exit(wouldEnd ? kWouldEnd : report.outcome == LoadOutcome::Loaded ? 0 : kRefused);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  ASSERT_EQ(load(whole), 0);
  std::map<int, int> ends;
  for (std::size_t part = 0; part < 16; ++part)
    ++ends[load(whole.substr(0, whole.size() * part / 16))];
  std::string died;
  for (std::size_t at = 24; at < whole.size(); at += std::max<std::size_t>(whole.size() / 150, 1)) {
    std::string flipped = whole;
    flipped[at] = static_cast<char>(flipped[at] ^ 0x5a);
    const int end = load(flipped);
    ++ends[end];
    if (end < 0) died += std::to_string(at) + " ";
  }
  EXPECT_EQ(died, "");
  // Whether the system's loader refuses a file or ends of it depends on what it finds in memory.
  EXPECT_GE(ends[kRefused] + ends[kWouldEnd], 8)
      << "what is cut off behind the loaded parts is never missed";
  EXPECT_GE(ends[kRefused], 1);
  EXPECT_GE(ends[kWouldEnd], 1) << "or this test shows nothing";
}

TEST_F(Plugins, CodeThatOthersMayChangeIsNotRun) {
  namespace fs = std::filesystem;
  const std::string path = Place("Good");
  for (const std::string& place : {path, At("plugins/Good"), At("plugins")}) {
    const fs::perms before = fs::status(place).permissions();
    fs::permissions(place, before | fs::perms::others_write);
    const LoadReport report = application->LoadPlugin(path);
    EXPECT_EQ(report.message, "Plug-in \"Good\" was not loaded (Untrusted): others may change \"" +
                                  place + "\"; take that right away (chmod go-w).");
    EXPECT_FALSE(IsOpen(path));
    fs::permissions(place, before);
  }
  const fs::perms before = fs::status(At("")).permissions();
  fs::permissions(At(""), before | fs::perms::others_write);
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Untrusted) << "a folder above";
  fs::permissions(At(""), before | fs::perms::others_write | fs::perms::sticky_bit);
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded) << "as that of scratch";
  application->UnloadPlugins();
  fs::permissions(At(""), before);
  const fs::path here = fs::current_path();
  fs::current_path(At("plugins"));
  EXPECT_EQ(application->LoadPlugin("Good/Good.so").outcome, LoadOutcome::Untrusted);
  EXPECT_EQ(application->LoadPlugin("./Good/Good.so").outcome, LoadOutcome::Untrusted);
  fs::current_path(here);
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded);
}

// Rights of single users stand in a list beside the mode: here those of one to write.
TEST_F(Plugins, CodeThatAnotherUserMayChangeIsNotRun) {
  const std::string path = Place("Good");
  constexpr std::uint32_t kNoId = 0xffffffff;
  constexpr std::uint32_t kSomebody = 4242;
  struct Right {
    std::uint16_t whose, what;
    std::uint32_t id;
  };
  const struct {
    std::uint32_t version = 2;
    Right rights[5] = {
        {1, 7, kNoId}, {2, 7, kSomebody}, {4, 5, kNoId}, {16, 7, kNoId}, {32, 5, kNoId}};
  } list;
  static_assert(sizeof list == 44);
  if (::setxattr(path.c_str(), "system.posix_acl_access", &list, sizeof list, 0) == 0) {
    EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Untrusted);
    ASSERT_EQ(::removexattr(path.c_str(), "system.posix_acl_access"), 0);
    std::filesystem::permissions(path, std::filesystem::perms(0755));
  }
  // A group counts where others may be in it.
  if (::chown(path.c_str(), kNoId, kSomebody) == 0) {
    for (const auto& [rights, outcome] :
         {std::pair{0755, LoadOutcome::Loaded}, std::pair{0775, LoadOutcome::Untrusted}}) {
      std::filesystem::permissions(path, std::filesystem::perms(rights));
      EXPECT_EQ(application->LoadPlugin(path).outcome, outcome) << rights;
      application->UnloadPlugins();
    }
    ASSERT_EQ(::chown(path.c_str(), kNoId, 0), 0);
    EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded) << "the system's";
    application->UnloadPlugins();
    std::filesystem::permissions(path, std::filesystem::perms(0755));
  }
  // Only the system gives files away.
  for (const std::string& place : {path, At("plugins/Good"), At("plugins")}) {
    if (::chown(place.c_str(), kSomebody, kNoId) != 0) continue;
    EXPECT_EQ(application->LoadPlugin(path).message,
              "Plug-in \"Good\" was not loaded (Untrusted): \"" + place +
                  "\" belongs to \"4242\", who may change it; make it your own or the system's "
                  "(chown).");
    ASSERT_EQ(::chown(place.c_str(), ::geteuid(), kNoId), 0);
  }
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded);
}

TEST_F(Plugins, ALibraryIsLoadedOnce) {
  const std::string path = Place("Good");
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded);
  const LoadReport again = application->LoadPlugin(path);
  EXPECT_EQ(again.message, "Plug-in \"Good\" was not loaded (IdTaken): it is loaded already.");
  EXPECT_TRUE(IsOpen(path));
  EXPECT_TRUE(application->ExecuteCommand(test_plugins::kGoodCommand));
}

TEST_F(Plugins, LiveFromResourceToEnd) {
  host::BaseDocument* doc = application->NewDocument();
  doc->SetDocumentName("a");
  const std::string path = Place("Good");
  host::BaseBitmap* icon = host::BaseBitmap::Alloc();
  ASSERT_EQ(icon->Init(3, 2), host::IMAGERESULT_OK);
  const std::string iconFile = At("plugins/Good/res/icon.png");
  ASSERT_EQ(icon->Save(host::Filename(iconFile.c_str()), host::FILTER_PNG), host::IMAGERESULT_OK);
  host::BaseBitmap::Free(icon);

  EXPECT_EQ(application->LoadPlugin(path).message, "Plug-in \"Good\" was loaded (Loaded).");
  EXPECT_EQ(Heard(), "message 1\nstart in " + At("plugins/Good") + "\nicon\nhook init a\n");
  ASSERT_EQ(application->Commands().size(), 1U);
  const engine::CommandPlugin& command = application->Commands()[0];
  EXPECT_EQ(command.name.ToUtf8() + "/" + command.help.ToUtf8(), "Good/Does good");
  EXPECT_EQ(command.icon->GetBw(), 3);

  application->UnloadPlugins();
  EXPECT_EQ(Heard(), "end\nhook free a\nhook destroyed\ncommand destroyed\n");
  EXPECT_FALSE(IsOpen(path));
  EXPECT_EQ(application->LoadPlugin(path).outcome, LoadOutcome::Loaded) << "its IDs are free again";
  application.reset();
  EXPECT_EQ(Heard(),
            "message 1\nstart in " + At("plugins/Good") +
                "\nicon\nhook init a\nend\nhook free a\nhook destroyed\ncommand destroyed\n");
}

TEST_F(Plugins, RegistrationsCountInsidePluginStartOnly) {
  struct Command : host::CommandData{}* command = new Command;
  EXPECT_FALSE(host::RegisterCommandPlugin(77, "Late", 0, nullptr, "", command));
  EXPECT_FALSE(host::RegisterSceneHookPlugin(
      78, "Late", 0, [] { return new host::SceneHookData; }, 0, 0, nullptr));
  delete command;
  EXPECT_TRUE(application->Commands().empty());
}

TEST_F(Plugins, LieWhereTheEnvironmentSays) {
  const std::string usual = engine::PluginFolder();
  EXPECT_TRUE(usual.ends_with("/plugins")) << usual;
  const std::pair<const char*, std::string> rows[] = {{"", usual},
                                                      {"/some/./where//else", "/some/where/else"},
                                                      {"relative/./folder", "relative/./folder"}};
  for (const auto& [chosen, folder] : rows) {
    ::setenv("STAGEMARKS_PLUGINS", chosen, 1);
    EXPECT_EQ(engine::PluginFolder(), folder) << chosen;
  }
  ::unsetenv("STAGEMARKS_PLUGINS");
  EXPECT_TRUE(std::filesystem::exists(engine::SampleScene())) << engine::SampleScene();
}

TEST_F(Plugins, OutsideAPluginThePathIsTheProgramsFolder) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  EXPECT_EQ(host::GeGetPluginPath().GetString().ToUtf8(), program);
  LoadGood();
  EXPECT_EQ(host::GeGetPluginPath().GetString().ToUtf8(), program);
}

TEST_F(Plugins, EventsAreDeliveredOnceAndNotInsideACommand) {
  LoadGood();
  application->NewDocument();
  application->DeliverEvents();
  Heard();
  EXPECT_TRUE(application->ExecuteCommand(test_plugins::kGoodCommand));
  EXPECT_EQ(Heard(), "execute on Untitled\nexecute done\n");
  EXPECT_TRUE(application->HasPendingEvents());
  application->DeliverEvents();
  application->DeliverEvents();
  EXPECT_EQ(Heard(), "core message 604\n");
  ASSERT_EQ(engine::OpenDialogs().size(), 1U);
  EXPECT_TRUE(engine::PressButton(*engine::OpenDialogs()[0], test_plugins::kGoodButton));
  EXPECT_EQ(Heard(), "button 1001\nbutton done\n");
  application->DeliverEvents();
  EXPECT_EQ(Heard(), "core message 604\n");
  EXPECT_FALSE(application->ExecuteCommand(12345));
  host::GetActiveDocument()->SetDocumentName("off");
  EXPECT_FALSE(application->ExecuteCommand(test_plugins::kGoodCommand));
  EXPECT_EQ(Heard(), "") << "a command that is off";
}

// Plug-ins are not to throw. Whoever catches what one has thrown goes on with an application that
// delivers events.
TEST_F(Plugins, EventsAreDeliveredAfterACommandHasThrown) {
  LoadGood();
  application->NewDocument()->SetDocumentName("throw");
  EXPECT_THROW(application->ExecuteCommand(test_plugins::kGoodCommand), std::runtime_error);
  EXPECT_TRUE(application->HasPendingEvents());
  application->DeliverEvents();
  EXPECT_FALSE(application->HasPendingEvents());
}

TEST_F(Plugins, LayoutsAreRestored) {
  LoadGood();
  EXPECT_TRUE(engine::OpenDialogs().empty());
  application->RestoreLayouts();
  EXPECT_EQ(Heard(), "restore layout\n");
  EXPECT_EQ(engine::OpenDialogs().size(), 1U);
}

}  // namespace
