// The farm from the shell: what is submitted is rendered, whatever happens meanwhile, once each,
// and to the very bytes of a render on one machine; and what goes wrong is said.
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "tests/commandline/CommandLine.h"
#include "tests/farm/SlurmCluster.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;
using tests::SlurmCluster;
using tests::Until;

class Farm : public CommandLine {
 protected:
  // Three states of a scene with textures in `shot`.
  void SetUp() override {
    fs::create_directory(folder_ / "shot");
    fs::copy(TEST_SOURCE_DIR "/scenes/spider", folder_ / "shot/textures");
    for (const char* file : {"spider.obj", "spider.mtl"})
      fs::rename(folder_ / ("shot/textures/" + std::string(file)),
                 folder_ / ("shot/" + std::string(file)));
    Run("stagemarks import shot/spider.obj shot/s.c4d");
    Run("stagemarks set shot/s.c4d --size 40x30 --add-camera C --camera C --write");
    Run("stagemarks record shot/s.c4d A --write");
    Run("stagemarks set shot/s.c4d --object 'Kopf*' --render off --write");
    Run("stagemarks record shot/s.c4d \"B's %A 100%\" --write");
    Run("stagemarks set shot/s.c4d --object '*' --render off --write");
    Run("stagemarks record shot/s.c4d C --write");
  }

  // In the shell, with the farm's Slurm where there is one.
  ChildResult Try(const std::string& script) const {
    return Shell((cluster_ ? "export SLURM_CONF='" + cluster_->Configuration() + "'; " : "") +
                 script);
  }
  std::string Run(const std::string& script) const {
    const ChildResult result = Try(script);
    EXPECT_EQ(result.status, 0) << script << "\n" << result.out << result.err;
    return result.out;
  }
  json Status() const {
    return json::parse(Try("stagemarks farm status --json").out, nullptr, false);
  }
  int Count(const char* what) const {
    const json status = Status();
    return status.is_object() ? status.value(what, -1) : -1;
  }
  bool AllDone() const { return Count("done") == Count("pictures"); }

  // Every picture of the local render is on the farm, equal, and nothing else is.
  void ExpectSame(const std::string& local, const std::string& farm) const {
    EXPECT_EQ(Files(local), Files(farm));
    for (const auto& entry : fs::directory_iterator(folder_ / local)) {
      const std::string name = entry.path().filename();
      EXPECT_EQ(ReadText(entry.path()), ReadText(folder_ / (farm + "/" + name))) << name;
    }
    EXPECT_EQ(tests::Names(folder_ / farm).find(".claim"), std::string::npos);
  }
  std::string Job() const { return Status()["folder"]; }
  // How often each picture was rendered, at most.
  std::size_t MostTimesRendered() const {
    std::map<std::string, std::size_t> times;
    std::size_t most = 0;
    for (const auto& entry : fs::directory_iterator(Job() + "/manifest")) {
      std::istringstream lines(ReadText(entry.path()));
      for (std::string line; std::getline(lines, line);) {
        const json object = json::parse(line, nullptr, false);
        if (object.is_object() && object["result"] == "rendered")
          most = std::max(most, ++times[object["picture"].get<std::string>()]);
      }
    }
    return most;
  }

  std::unique_ptr<SlurmCluster> cluster_;
};

class FarmOnSlurm : public Farm {
 protected:
  void SetUp() override {
    const char* ci = std::getenv("CI");
    if (!SlurmCluster::IsInstalled()) {
      ASSERT_FALSE(ci && *ci) << "CI installs Slurm";
      GTEST_SKIP() << "Slurm is not installed (slurmctld slurmd munge slurm-client)";
    }
    Farm::SetUp();
    fs::create_directory(folder_ / "slurm");
    cluster_ = std::make_unique<SlurmCluster>(folder_ / "slurm");
    ASSERT_TRUE(Until([&] { return cluster_->IsReady(); })) << cluster_->Logs();
  }
  void TearDown() override {
    if (HasFailure() && cluster_) ADD_FAILURE() << cluster_->Logs();
    cluster_.reset();
  }
};

TEST_F(FarmOnSlurm, RendersTheSceneAsItWasSubmitted) {
  const std::string frames = " --frames 0:19 -o ";
  Run("stagemarks render shot/s.c4d" + frames + "'local/{state} {frame}.png'");
  fs::remove(folder_ / "local/pictures.jsonl");
  const std::string said =
      Run("stagemarks farm submit shot/s.c4d --chunk 5" + frames + "'farmed/{state} {frame}.png'");
  EXPECT_NE(said.find("Submitted 60 pictures in 12 tasks as Slurm job "), std::string::npos)
      << said;
  // Later edits change nothing.
  Run("stagemarks record shot/s.c4d A --write --yes; rm shot/textures/*; echo > shot/s.c4d");
  ASSERT_TRUE(Until([&] { return AllDone(); })) << Status();
  ExpectSame("local", "farmed");
  EXPECT_EQ(MostTimesRendered(), 1U);
  const std::string job = Job();
  EXPECT_TRUE(Until([&] { return fs::exists(job + "/report.html"); }));
  for (const char* file : {"sheet.png", "page/index.html", "pictures.jsonl"})
    EXPECT_TRUE(fs::exists(job + "/" + file)) << file;
  EXPECT_NE(ReadText(job + "/page/index.html").find("<title>s</title>"), std::string::npos);
  EXPECT_NE(ReadText(job + "/page/index.html").find("class=\"state current\" data-name=\"C\""),
            std::string::npos);
  const std::string report = ReadText(job + "/report.html");
  EXPECT_NE(report.find("60 pictures: 60 done."), std::string::npos);
  // Once more, by hand: nothing is done again.
  const auto written = fs::last_write_time(folder_ / "farmed/A 0000.png");
  Run("stagemarks farm run --submission 1 --task 0");
  EXPECT_EQ(fs::last_write_time(folder_ / "farmed/A 0000.png"), written);
  EXPECT_NE(Run("stagemarks farm retry").find("Nothing is to be done again"), std::string::npos);
  const std::string cancelled = Run("stagemarks farm cancel " + fs::path(job).filename().string());
  EXPECT_NE(cancelled.find("60 done."), std::string::npos) << cancelled;
}

TEST_F(FarmOnSlurm, OutlivesWhatBreaks) {
  const std::string order = " --size 320x240 --frames 0:9 -o ";
  Run("stagemarks render shot/s.c4d" + order + "'local/{state} {frame}.png'");
  fs::remove(folder_ / "local/pictures.jsonl");
  Run("stagemarks farm submit shot/s.c4d --chunk 3" + order + "'farmed/{state} {frame}.png'");
  ASSERT_TRUE(Until([&] { return Count("done") > 1; })) << Status();
  cluster_->KillNode("n2");
  cluster_->StartNode("n2");
  ASSERT_TRUE(Until([&] { return SlurmCluster::KillTask("--task "); }));
  cluster_->EndController();
  const ChildResult down = Try("stagemarks farm status");
  EXPECT_EQ(down.status, 0) << "the folder is the truth";
  EXPECT_NE(down.out.find("note: Slurm refused: "), std::string::npos) << down.out;
  EXPECT_EQ(Try("stagemarks farm retry").status, 1);
  cluster_->StartController();
  // Pictures that are not done in the end were forgotten, or their tasks killed.
  ASSERT_TRUE(Until([&] { return AllDone() || Count("abandoned") > 0; })) << Status();
  ASSERT_TRUE(Until([&] {
    if (Count("abandoned") > 0) Try("stagemarks farm retry --chunk 2");
    return AllDone();
  })) << Status();
  ExpectSame("local", "farmed");
}

TEST_F(FarmOnSlurm, SaysWhatSlurmRefuses) {
  const struct {
    const char* call;
    const char* says;
  } kRows[] = {
      {"stagemarks farm submit shot/s.c4d --partition nowhere", "Invalid partition"},
      {"stagemarks farm submit shot/s.c4d --sbatch-option=--nonsense", "Slurm refused"},
  };
  for (const auto& row : kRows) {
    const ChildResult result = Try(row.call);
    EXPECT_EQ(result.status, 1) << row.call;
    EXPECT_NE(result.err.find(row.says), std::string::npos) << row.call << result.err;
    EXPECT_NE(result.err.find("stagemarks farm run"), std::string::npos) << result.err;
  }
  EXPECT_EQ(Count("waiting"), 3);
  // A scene that cannot be opened stops all tasks, and says so once.
  Run("for s in farm/scenes/*/s.c4d; do echo > $s; done");
  Run("stagemarks farm retry --chunk 1");
  ASSERT_TRUE(Until([&] { return !Status()["stopped"].is_null(); }));
  ASSERT_TRUE(Until([&] { return Count("abandoned") == 3; })) << Status();
  EXPECT_NE(Status()["stopped"].get<std::string>().find("cannot be opened"), std::string::npos);
}

// Whoever runs the tests, the job is that of a user who may do nothing but his own work.
TEST_F(FarmOnSlurm, AnOrdinaryUserSubmits) {
  std::string as;
  if (geteuid() == 0) {
    as = "setpriv --reuid=nobody --regid=nogroup --clear-groups env HOME=$PWD "
         "XDG_CONFIG_HOME=$PWD/config XDG_STATE_HOME=$PWD/state ";
    Run("chown nobody:nogroup . && chown -R nobody:nogroup shot");
    if (Try(as + "stagemarks --version").status != 0)
      GTEST_SKIP() << "another user may not read this build";
  }
  Run(as + "stagemarks farm submit shot/s.c4d --frames 0:3 --chunk 4");
  ASSERT_TRUE(Until([&] { return AllDone(); })) << Status();
  EXPECT_TRUE(Until([&] { return fs::exists(Job() + "/report.html"); }));
  const std::string owner = Run("stat -c %U .");
  EXPECT_EQ(Run("stat -c %U farm/jobs/*/pictures/*.png | sort -u"), owner);
}

TEST_F(Farm, WorksWithoutSlurm) {
  const ChildResult none =
      Try("mkdir bin; ln -s $(command -v stagemarks) bin; PATH=$PWD/bin stagemarks farm submit "
          "shot/s.c4d --frames 0:3 --size 48x48");
  EXPECT_EQ(none.status, 1);
  EXPECT_NE(none.err.find("sbatch was not found"), std::string::npos) << none.err;
  EXPECT_EQ(Count("waiting"), 12);
  EXPECT_EQ(Files("farm/scenes").find(".part"), std::string::npos);
  // Two split the work.
  Run("stagemarks farm run --json > 1 & stagemarks farm run --json > 2 && wait");
  EXPECT_TRUE(AllDone()) << Status();
  EXPECT_EQ(MostTimesRendered(), 1U);
  const auto rendered = [&](const char* file) {
    return json::parse(ReadText(folder_ / file))["rendered"].get<int>();
  };
  EXPECT_EQ(rendered("1") + rendered("2"), 12);
  // Finished pictures are shown, however small; nothing is rendered once more.
  const json collected = json::parse(Run("stagemarks farm collect --json"));
  EXPECT_EQ(collected["finishedPictures"], 3);
  EXPECT_EQ(collected["states"][0]["state"], "A");
  const std::string report = ReadText(Job() + "/report.html");
  for (const char* part :
       {"src=\"sheet.png\"", "href=\"pictures/0001%20A.png\"", "<h2>Machines</h2>"})
    EXPECT_NE(report.find(part), std::string::npos) << part << "\n" << report;
  // An equal submission copies nothing; another size needs no second copy of the scene either.
  const auto copied = [&](const std::string& more) {
    return Run("stagemarks farm submit shot/s.c4d --dry-run " + more).find("Nothing was written");
  };
  EXPECT_NE(copied("--frames 0:3 --size 48x48"), std::string::npos);
  Try("PATH=$PWD/bin stagemarks farm submit shot/s.c4d --size 8x6");
  std::size_t scenes = 0;
  for (const auto& entry : fs::directory_iterator(folder_ / "farm/scenes"))
    scenes += entry.is_directory();
  EXPECT_EQ(scenes, 1U);
}

// Programs of the test's own stand for those of Slurm.
TEST_F(Farm, LeavesNothingWithSlurmThatItCannotWriteDownAndWaitsForNoAnswer) {
  const auto script = [&](const std::string& name, const std::string& text) {
    tests::WriteText(folder_ / ("bin/" + name), "#!/bin/sh\n" + text + "\n");
    fs::permissions(folder_ / ("bin/" + name), fs::perms::owner_all);
  };
  fs::create_directory(folder_ / "bin");
  const std::string farm = "PATH=$PWD/bin:$PATH stagemarks farm ";
  script("scancel", "echo $* > cancelled");
  script("sbatch", "for f in farm/jobs/*/submissions; do rm -r $f; touch $f; done; echo 77");
  const ChildResult lost = Try(farm + "submit shot/s.c4d");
  EXPECT_EQ(lost.status, 1) << lost.out;
  EXPECT_NE(lost.err.find("Slurm's 77"), std::string::npos) << lost.err;
  EXPECT_EQ(ReadText(folder_ / "cancelled").substr(0, 2), "77");
  fs::remove_all(folder_ / "farm");
  script("sbatch", "echo 77");
  Run(farm + "submit shot/s.c4d");
  // Who is not told what is alive hands nothing over once more.
  script("squeue", "echo no controller >&2; exit 1");
  const ChildResult retried = Try(farm + "retry");
  EXPECT_EQ(retried.status, 1) << retried.out;
  EXPECT_NE(retried.err.find("no controller"), std::string::npos) << retried.err;
  EXPECT_EQ(Files("farm/jobs/" + fs::path(Job()).filename().string() + "/submissions").find("002"),
            std::string::npos);
  script("squeue", "touch asked; exec sleep 600");
  EXPECT_EQ(
      Try(farm + "status & p=$!; until [ -e asked ]; do :; done; kill -TERM $p; wait $p").status,
      143);
}

// A limit on the size of files stands for a disk that is full.
TEST_F(Farm, AFullDiskCostsThePicturesThatDoNotFit) {
  Try("mkdir bin; ln -s $(command -v stagemarks) bin; PATH=$PWD/bin stagemarks farm submit "
      "shot/s.c4d --size 320x240");
  const ChildResult full = Try("ulimit -f 20; stagemarks farm run");
  EXPECT_EQ(full.status, 1);
  EXPECT_GT(Count("failed"), 0);
  const std::string told = Run("stagemarks farm status");
  EXPECT_NE(told.find("Cannot write"), std::string::npos) << told;
  Run("stagemarks farm run");
  EXPECT_TRUE(AllDone());
  EXPECT_EQ(Count("failed"), 0);
}

// A file system of the test's own, which nobody else sees and which ends with its shell.
class FarmOnItsDisk : public Farm {
 protected:
  void SetUp() override {
    if (Shell("mkdir disk && " + Mounted("true")).status != 0)
      GTEST_SKIP() << "this user may not mount a file system";
    Farm::SetUp();
  }
  static std::string Mounted(const std::string& script) {
    return "unshare --mount sh -c 'mount -t tmpfs -o size=16m tmpfs disk && { " + script + "; }'";
  }
  // Says what each command ends with.
  ChildResult OnDisk(const std::string& script) const {
    return Try("mkdir bin; ln -s $(command -v stagemarks) bin; " +
               Mounted("f=\"--farm disk/farm\"; PATH=$PWD/bin:$PATH; "
                       "run() { stagemarks farm \"$@\" $f -q; echo $1 $?; }; "
                       "submit() { PATH=$PWD/bin stagemarks farm submit shot/s.c4d $f -q; }; " +
                       script));
  }
};

TEST_F(FarmOnItsDisk, FullItIsSaidAndWithRoomAgainAllIsDone) {
  const ChildResult result = OnDisk(
      "submit; dd if=/dev/zero of=disk/fill bs=4096 2>/dev/null; run run; stagemarks farm status "
      "$f; rm disk/fill; run run; stagemarks farm status $f; ls -A disk/farm/jobs/*/pictures");
  EXPECT_EQ(result.out.find("run 1\n"), 0U) << result.out << result.err;
  EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
  EXPECT_NE(result.out.find("3 pictures: 0 done, 3 waiting."), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("run 0\n"), std::string::npos) << result.out << result.err;
  EXPECT_NE(result.out.find("3 pictures: 3 done."), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find(".claim"), std::string::npos) << result.out;
}

TEST_F(FarmOnItsDisk, ReadOnlyItIsSaidAndCanBeLookedAt) {
  const ChildResult result = OnDisk(
      "submit; mount -o remount,ro disk; run run; run retry; run collect; run status; "
      "mount -o remount,rw disk; run run");
  EXPECT_EQ(result.out, "run 1\nretry 1\ncollect 1\nstatus 0\nrun 0\n") << result.err;
  EXPECT_NE(result.err.find("Read-only file system"), std::string::npos) << result.err;
}

TEST_F(Farm, StrictRefusesWhatCheckFinds) {
  Run("stagemarks cameras remove shot/s.c4d C --write");
  for (const char* call :
       {"render shot/s.c4d -o 'out/{state}.png'", "farm submit shot/s.c4d --farm out/farm"}) {
    const ChildResult strict = Try("stagemarks " + std::string(call) + " --strict");
    EXPECT_EQ(strict.status, 1) << call;
    EXPECT_NE(strict.err.find("`stagemarks check` finds 3 warnings"), std::string::npos)
        << strict.err;
    EXPECT_FALSE(fs::exists(folder_ / "out")) << call;
  }
  const ChildResult said = Try("stagemarks render shot/s.c4d -o 'out/{state}.png' --dry-run");
  EXPECT_EQ(said.status, 0);
  EXPECT_NE(said.err.find("finds 3 warnings"), std::string::npos) << said.err;
}

TEST_F(Farm, ImpossibleCallsAreRefused) {
  fs::create_directory(folder_ / "empty");
  tests::WriteText(folder_ / "file", "a file");
  const struct {
    const char* call;
    int status;
    const char* says;
  } kRows[] = {
      {"submit", 2, "needs a SCENE"},
      {"cancel", 2, "needs a JOB"},
      {"plough shot/s.c4d", 2, "ACTION"},
      {"submit nowhere.c4d", 1, "Cannot read"},
      {"submit shot/s.c4d --only D", 2, "no Stagemark \"D\""},
      {"submit shot/s.c4d --frames 0:3 -o '{state}.png'", 2, "Put {frame} into the pattern"},
      {"submit shot/s.c4d --farm file", 1, "file"},
      {"submit shot/s.c4d --watch", 2, "go with \"status\""},
      {"status", 1, "There is no job in"},
      {"status --farm empty", 1, "There is no job in"},
      {"status empty", 1, "There is no job \"empty\""},
      {"run 4711", 1, "There is no job \"4711\""},
      {"retry shot", 1, "There is no job \"shot\""},
      {"run --chunk 3", 2, "go with \"submit\" and \"retry\""},
  };
  for (const auto& row : kRows) {
    const ChildResult result = Try("stagemarks farm " + std::string(row.call));
    EXPECT_EQ(result.status, row.status) << row.call << result.err;
    EXPECT_NE(result.err.find(row.says), std::string::npos) << row.call << "\n" << result.err;
  }
  EXPECT_EQ(Files("empty"), "");
  EXPECT_EQ(ReadText(folder_ / "file"), "a file");
  // A job that was damaged, or is not what this program writes.
  Try("mkdir bin; ln -s $(command -v stagemarks) bin; PATH=$PWD/bin stagemarks farm submit "
      "shot/s.c4d");
  const std::string job = Job();
  const std::string tasks = ReadText(job + "/tasks.jsonl");
  for (const std::string& damaged :
       {tasks.substr(0, tasks.size() / 2), tasks + tasks, std::string("[]\n")}) {
    tests::WriteText(job + "/tasks.jsonl", damaged);
    const ChildResult result = Try("stagemarks farm run");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("is damaged"), std::string::npos) << result.err;
  }
  tests::WriteText(job + "/tasks.jsonl", tasks);
  const ChildResult broken = Try("STAGEMARKS_PLUGINS=/nowhere stagemarks farm run");
  EXPECT_EQ(broken.status, 1);
  EXPECT_TRUE(Status()["stopped"].is_null()) << "what is wrong with one machine stops no other";
  const ChildResult stopped = Try("timeout --preserve-status -s TERM 0.05 stagemarks farm run");
  EXPECT_TRUE(stopped.status == 143 || stopped.status == 0) << stopped.status << stopped.err;
  Run("stagemarks farm run");
  EXPECT_TRUE(AllDone());
}

}  // namespace
