// The verb run: steps on one open scene, all or nothing.
#include "tests/commandline/CommandLine.h"

namespace {

using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class Batch : public CommandLine {
 protected:
  ChildResult RunSteps(const std::string& scene, const std::string& steps,
                       const std::vector<std::string>& more = {}) const {
    tests::WriteText(folder_ / "steps", steps);
    std::vector<std::string> call{"run", scene, folder_ / "steps"};
    call.insert(call.end(), more.begin(), more.end());
    return Call(call);
  }
};

TEST_F(Batch, StepsGoOnFromOneAnother) {
  const std::string scene = Spider();
  const std::string steps = R"(# Two states.
record "Day, all"
  set --object 'Kopf*' --render off   # the head goes
record Night\ 1
rename "Night 1" Evening

load "Day, all"
diff "Day, all" --scene
)";
  const std::string before = ReadText(scene);
  const ChildResult trial = RunSteps(scene, steps);
  EXPECT_EQ(trial.status, 0) << trial.err;
  EXPECT_EQ(ReadText(scene), before);
  const ChildResult result = RunSteps(scene, steps, {"--write"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "Recorded \"Day, all\".\nChanged 2 objects.\nRecorded \"Night 1\".\n"
            "Renamed \"Night 1\" to \"Evening\".\nLoaded \"Day, all\". It changed 2 objects.\n"
            "\"Day, all\" and the scene are the same.\nRan 6 steps.\nWritten: " +
                scene + "\n");
  EXPECT_EQ(Marks(scene), "*Day, all Evening ");
}

TEST_F(Batch, AFailingStepLeavesEverythingAsItWas) {
  const std::string scene = Staged();
  const std::string before = ReadText(scene);
  tests::WriteText(folder_ / "steps", "");
  const std::string files = Files("");
  const struct {
    const char* steps;
    int status;
    const char* says;
  } rows[] = {
      {"record X\nload Nobody\n", 2, "Line 2 failed: load Nobody"},
      {"record X\nset --object Kopf --render of\n", 2, "Line 2 failed"},
      {"record X\n\n\nexport\n", 2, "\"export\" is no step."},
      {"record X --write\n", 2, "A step writes nothing"},
      {"delete Day -o other.c4d\n", 2, "A step writes nothing"},
      {"record \"X\n", 2, "A quotation mark has no end."},
      {"delete Day\n", 1, "Nothing was deleted."},
      {"record X\ndiff Day Night\n", 1, "Line 2 failed"},
  };
  for (const auto& row : rows) {
    const ChildResult result = RunSteps(scene, row.steps, {"--write"});
    EXPECT_EQ(result.status, row.status) << row.steps;
    EXPECT_NE(result.err.find(row.says), std::string::npos) << row.steps << result.err;
    EXPECT_EQ(ReadText(scene), before) << row.steps;
    EXPECT_EQ(Files(""), files) << row.steps;
  }
  EXPECT_EQ(RunSteps(scene, "delete Day --yes\ndelete Night\n", {"--write"}).status, 1)
      << "a step's own answer is no other step's";
  EXPECT_EQ(RunSteps(scene, "delete Day\ndelete Night\n", {"--write", "--yes"}).status, 0);
  EXPECT_EQ(Marks(scene), "");
}

}  // namespace
