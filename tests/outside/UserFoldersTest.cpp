#include "engine/outside/UserFolders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

namespace {

using engine::FindUserFolders;
using engine::UserFolders;

// Sets a variable of the environment (null: takes it away) while it lives.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) former_ = old;
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  }
  ~Variable() { former_ ? setenv(name_, former_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> former_;
};

struct UserFolder {
  std::string UserFolders::*folder;
  const char* variable;
  const char* standard;
};

TEST(UserFolders, FollowTheEnvironmentOrTheStandard) {
  const Variable home("HOME", "/home/artist");
  const UserFolder cases[] = {
      {&UserFolders::config, "XDG_CONFIG_HOME", "/home/artist/.config/stagemarks"},
      {&UserFolders::data, "XDG_DATA_HOME", "/home/artist/.local/share/stagemarks"},
      {&UserFolders::cache, "XDG_CACHE_HOME", "/home/artist/.cache/stagemarks"},
      {&UserFolders::state, "XDG_STATE_HOME", "/home/artist/.local/state/stagemarks"}};
  for (const UserFolder& one : cases) {
    for (const char* unfit : {static_cast<const char*>(nullptr), "", "relative/folder"}) {
      const Variable variable(one.variable, unfit);
      EXPECT_EQ(FindUserFolders().*one.folder, one.standard);
    }
    const Variable variable(one.variable, "/elsewhere");
    EXPECT_EQ(FindUserFolders().*one.folder, "/elsewhere/stagemarks");
  }
}

// Where the environment says nothing the system's list of users does.
TEST(UserFolders, AreThereWithoutAnEnvironment) {
  const Variable config("XDG_CONFIG_HOME", nullptr);
  const passwd* const user = getpwuid(getuid());
  if (user == nullptr || user->pw_dir[0] != '/') GTEST_SKIP() << "a user without a home";
  for (const char* unfit : {static_cast<const char*>(nullptr), "", "relative"}) {
    const Variable home("HOME", unfit);
    EXPECT_EQ(FindUserFolders().config, std::string(user->pw_dir) + "/.config/stagemarks");
  }
}

}  // namespace
