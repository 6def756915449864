// One task of the farm, or one call by hand: it opens the frozen scene, finds out whether that is
// what was submitted, and does those of its pictures that are not there, sharing them with whoever
// else is at them.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "program/commandline/PictureOrders.h"
#include "program/commandline/SheetMaking.h"
#include "program/commandline/farm/FarmReport.h"
#include "program/commandline/farm/FarmWork.h"
#include "program/publish/FileOrigin.h"

namespace commandline {

namespace {

constexpr const char* kReportFile = "/report.html";
constexpr const char* kReportMaker = "farm";

// Set by Slurm in each task of an array; empty elsewhere.
std::string OwnNumber() {
  const char* number = std::getenv("SLURM_ARRAY_JOB_ID");
  return number ? number : "";
}

// As many threads as the task was given cores, unless somebody says otherwise.
unsigned Threads(const FarmOptions& options) {
  const char* cores = std::getenv("SLURM_CPUS_ON_NODE");
  const int given = cores ? std::atoi(cores) : 0;
  return options.jobs > 0 || given < 1 ? options.jobs : static_cast<unsigned>(given);
}

// Carries out one call of `farm run`.
class FarmRunning {
 public:
  FarmRunning(Program& program, const FarmOptions& options)
      : program_(program),
        options_(options),
        session_(program),
        pictures_(session_, Threads(options)) {}

  int Run() {
    int status = kDone;
    for (const auto step : {&FarmRunning::ReadTasks, &FarmRunning::Open, &FarmRunning::Work}) {
      if (status == kDone) status = (this->*step)();
    }
    return status;
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  // Stops the whole job: a fault of the scene concerns every picture. The note comes first, then
  // the array goes: tasks that begin in between read it and end at once.
  int Stop(const std::string& why) {
    StopJob(session_.Files(), job_, why);
    if (const std::string number = OwnNumber(); !number.empty()) (void)CancelInSlurm({number}).Ok();
    return Fail(why + " The job was stopped; `stagemarks farm retry` takes it up again.");
  }

  int ReadTasks() {
    const auto folder = FindJob(session_.Files(), FarmFolder(options_), options_.place);
    if (!folder) return Fail(folder.Message());
    auto job = ReadJob(session_.Files(), folder.Value());
    if (!job) return Fail(job.Message());
    job_ = job.Take();
    if (const std::string why = WhyStopped(session_.Files(), job_); !why.empty())
      return Fail("The job was stopped: " + why);
    return ChooseTasks();
  }

  // Without a submission all pictures, as for a call without a scheduler.
  int ChooseTasks() {
    if (options_.submission == 0) {
      for (std::size_t i = 0; i < job_.tasks.size(); ++i) chosen_.push_back(i);
      return kDone;
    }
    if (options_.submission > job_.submissions.size())
      return Fail("The job has no submission " + std::to_string(options_.submission) + ".");
    const FarmSubmission& submission = job_.submissions[options_.submission - 1];
    if (options_.task >= submission.chunks.size())
      return Fail("The submission has no task " + std::to_string(options_.task) + ".");
    chosen_ = submission.chunks[options_.task];
    return kDone;
  }

  int Open() {
    if (session_.Files().Kind(job_.scene) != engine::FileKind::File)
      return Stop("The frozen scene \"" + job_.scene + "\" is not to be seen from \"" +
                  pictures::HostName() + "\".");
    // A machine on which the program does not work is no reason to stop the others. The plug-in is
    // loaded before the scene is opened, and a fault of the machine stays its own.
    if (const int status = session_.Start(); status != kDone) return status;
    if (const int status = session_.Open(job_.scene); status != kDone)
      return status == kInterrupted ? status : Stop("The frozen scene cannot be opened.");
    if (const int status = pictures_.Choose({}); status != kDone) return status;
    const pictures::SceneHashes hashes(session_.Document(), session_.Files());
    const std::string& wanted = job_.tasks.front().record.scene;
    return hashes.Scene() == wanted
               ? kDone
               : Stop("The frozen scene or one of its textures is no longer what was submitted.");
  }

  // A manifest of its own for each process, so that no two machines write to one file.
  int Work() {
    engine::FileSystem& files = session_.Files();
    const std::string name = "/manifest/" + SafeFileName(pictures::HostName()) + "-" +
                             std::to_string(getpid()) + "-" + pictures::TimeNow() + ".jsonl";
    PictureWork work(session_, pictures_, {job_.folder + name, true, true});
    std::vector<PlannedPicture> plan;
    for (const std::size_t number : chosen_) {
      const pictures::ManifestLine& task = job_.tasks[number];
      PlannedPicture picture;
      picture.state.name = task.state;
      picture.name = task.state;
      picture.path = task.picture;
      picture.size = task.record.size;
      picture.frame = task.record.frame;
      picture.record = task.record;
      const std::string folder = std::filesystem::path(picture.path).parent_path().string();
      if (const auto made = files.MakeFolders(folder); !made) return Fail(made.Message());
      picture.isThere = work.IsDone(picture);
      plan.push_back(std::move(picture));
    }
    const int status = work.Do(plan);
    Tell(plan, work.Failed());
    return status;
  }

  void Tell(const std::vector<PlannedPicture>& plan, std::size_t failed) {
    std::size_t rendered = 0;
    for (const PlannedPicture& picture : plan) rendered += picture.isRendered;
    Report report;
    report.Put("rendered", rendered);
    report.Put("failed", failed);
    report.Line("Rendered " + Counted(rendered, "picture") + " of " + std::to_string(plan.size()) +
                (failed > 0 ? ", " + std::to_string(failed) + " failed." : "."));
    report.Print(program_);
  }

  Program& program_;
  const FarmOptions& options_;
  Session session_;
  StatePictures pictures_;
  FarmJob job_;
  std::vector<std::size_t> chosen_;
};

// Carries out one call of `farm collect`.
class FarmCollecting {
 public:
  FarmCollecting(Program& program, const FarmOptions& options)
      : program_(program), options_(options), session_(program) {}

  int Run() {
    engine::FileSystem& files = session_.Files();
    const auto folder = FindJob(files, FarmFolder(options_), options_.place);
    if (!folder) return Fail(folder.Message());
    auto job = ReadJob(files, folder.Value());
    if (!job) return Fail(job.Message());
    job_ = job.Take();
    FarmReport state(files, job_);
    (void)state.AskScheduler().Ok();
    if (const int status = WriteManifest(state); status != kDone) return status;
    // Before the page, which shows the sheet where there is one.
    const int made = MakeSheet(state);
    const std::string page = publishing::WithMaker(state.Page(), kReportMaker);
    const auto written = files.ReplaceFile(job_.folder + kReportFile, page);
    if (!written) return Fail(written.Message());
    report_.Put("report", job_.folder + kReportFile);
    report_.Line("Written: " + job_.folder + kReportFile);
    state.AddTo(report_, program_.verbose);
    report_.Print(program_);
    return made != kDone ? made : session_.CheckLedger();
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  // Writes one line for each picture that is there, whoever made it. The manifests of all machines
  // in one, for programs that read the pictures.
  int WriteManifest(const FarmReport& state) {
    std::string text;
    for (std::size_t i = 0; i < job_.tasks.size(); ++i) {
      const TaskOutcome& outcome = state.Outcomes()[i];
      if (outcome.state != TaskState::Done && outcome.state != TaskState::Failed) continue;
      pictures::ManifestLine line = outcome.line.time.empty() ? job_.tasks[i] : outcome.line;
      line.picture = pictures::RelativeTo(job_.folder, job_.tasks[i].picture);
      text += pictures::TextOf(line) + "\n";
    }
    const std::string path = job_.folder + "/" + pictures::kManifestName;
    const auto written = session_.Files().ReplaceFile(path, text);
    return written ? kDone : Fail(written.Message());
  }

  // Each state by its largest picture; an export of what is there, also while the job goes on.
  int MakeSheet(const FarmReport& state) {
    SheetOrder order;
    for (std::size_t i = 0; i < job_.tasks.size(); ++i) {
      const std::string& name = job_.tasks[i].state;
      if (state.Outcomes()[i].state != TaskState::Done) continue;
      const PictureSize& size = job_.tasks[i].record.size;
      const auto [made, isNew] = order.made.emplace(name, size);
      if (isNew && !name.empty()) order.states.push_back(name);
      if (size.width > made->second.width) made->second = size;
    }
    if (order.made.empty()) {
      program_.terminal.Note("no picture is there yet, so there is no sheet.");
      return kDone;
    }
    program_.scene = job_.scene;
    if (const int status = session_.StartWithScene(); status != kDone) return status;
    order.sheet = job_.folder + "/sheet.png";
    order.folder = job_.folder + "/page";
    order.from = {job_.folder};
    order.resume = true;
    order.threads = Threads(options_);
    return SheetMaking(session_, order).Run(report_);
  }

  Program& program_;
  const FarmOptions& options_;
  Session session_;
  FarmJob job_;
  Report report_;
};

}  // namespace

int RunOnFarm(Program& program, const FarmOptions& options) {
  return FarmRunning(program, options).Run();
}

int CollectFromFarm(Program& program, const FarmOptions& options) {
  return FarmCollecting(program, options).Run();
}

}  // namespace commandline
