// Submitting goes: plan (names, records, cost, as `render` does), freeze the scene, write the job,
// ask the scheduler what it has of it already, hand over the rest in chunks. The scripts and the
// note of a hand-over are written before it, because its first task may begin at once.
#include <chrono>
#include <cmath>
#include <filesystem>

#include "engine/application/ProgramPlaces.h"
#include "engine/scenefile/FileAsRead.h"
#include "program/commandline/farm/FarmReport.h"
#include "program/commandline/farm/FarmWork.h"
#include "program/commandline/farm/FrozenScene.h"
#include "program/export/ExportPlan.h"

namespace commandline {

namespace {

namespace fs = std::filesystem;

// Share of a task that reading the scene may take, and what a task costs beside, seconds: see
// docs/FARM.md.
constexpr double kReadingShare = 0.1;
constexpr double kPerTask = 1.1;
// Most tasks of one array, which Slurm has unless it was told otherwise.
constexpr std::size_t kMostTasks = 1000;
// Stands for the job's folder in the pattern, because that is named by what the plan gives.
constexpr const char* kFolderMark = "@";

// Pictures in a task. So many that reading the scene, with what a task costs besides, is a tenth of
// the task: n * each * 0.1 = (reading + task) * 0.9. Never more tasks than the scheduler takes.
std::size_t ChunkSize(const FarmJob& job, std::size_t pictures, unsigned wanted) {
  const std::size_t least = (pictures + kMostTasks - 1) / kMostTasks;
  if (wanted > 0) return std::max<std::size_t>(wanted, least);
  const double each = std::max(job.each, 0.001);
  const double needed = (job.reading + kPerTask) * (1 - kReadingShare) / kReadingShare / each;
  return std::clamp(static_cast<std::size_t>(std::ceil(needed)), std::max<std::size_t>(1, least),
                    std::max<std::size_t>(1, pictures));
}

FarmSubmission Chunked(const FarmJob& job, const std::vector<std::size_t>& pictures,
                       std::size_t size) {
  FarmSubmission submission;
  submission.number = job.submissions.size() + 1;
  submission.time = pictures::TimeNow();
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    if (i % size == 0) submission.chunks.emplace_back();
    submission.chunks.back().push_back(pictures[i]);
  }
  return submission;
}

// exec, so that signals of the scheduler reach the program itself.
std::string ScriptText(const FarmJob& job, const std::string& call) {
  return "#!/bin/sh\n# Pictures of " + Shown(job.title) + "\nexec " +
         Quoted(engine::ProgramFolder() + "/stagemarks") + " farm " + call + "\n";
}

// The path of a log, with each % of the folder doubled: sbatch would take it for a placeholder.
std::string LogPattern(const FarmJob& job, const char* name) {
  std::string path;
  for (const char letter : job.folder)
    path += letter == '%' ? std::string("%%") : std::string(1, letter);
  return path + "/log/" + name;
}

// One hand-over: an array of tasks and a last job that collects.
class HandOver {
 public:
  HandOver(Program& program, const FarmOptions& options, engine::FileSystem& files,
           const FarmJob& job, FarmSubmission submission)
      : program_(program),
        options_(options),
        files_(files),
        job_(job),
        submission_(std::move(submission)) {
    const std::string number = std::to_string(submission_.number);
    const std::string folder = Quoted(job.folder);
    array_ = {"stagemarks " + job.title,
              SubmissionScript(job, submission_.number),
              LogPattern(job, "%A_%a.log"),
              submission_.chunks.size(),
              "",
              options.partition,
              options.slurm};
    arrayScript_ = ScriptText(
        job, "run " + folder + " --submission " + number + " --task \"$SLURM_ARRAY_TASK_ID\"");
    last_ = {"stagemarks report",
             job.folder + "/submissions/collect.sh",
             LogPattern(job, "collect_%j.log"),
             0,
             "JOB",
             options.partition,
             options.slurm};
    lastScript_ = ScriptText(job, "collect " + folder);
  }

  // Shows the scripts and calls without doing anything.
  void Show(Report& report) const {
    for (const auto& [order, script] :
         {std::pair{&array_, &arrayScript_}, std::pair{&last_, &lastScript_}}) {
      report.Line("");
      report.Line("Script " + order->script + ":");
      report.Line("  " + Indented(*script));
      std::string call;
      for (const std::string& word : SlurmCall(*order))
        call += (call.empty() ? "" : " ") + AsTyped(word);
      report.Line("Call:");
      report.Line("  " + call);
    }
  }

  // Each failure takes back what was written for a hand-over that did not happen. A missing report
  // is no failure: `collect` makes it at any time.
  int Submit(Report& report) {
    auto status = files_.ReplaceFile(array_.script, arrayScript_);
    if (status) status = files_.ReplaceFile(last_.script, lastScript_);
    // Before the first task may want to know of it.
    if (status) status = WriteSubmission(files_, job_, submission_);
    if (!status) {
      (void)files_.RemoveFile(array_.script).Ok();
      return Fail(status.Message());
    }
    const auto array = SubmitToSlurm(array_);
    if (!array) {
      (void)files_.RemoveFile(fs::path(array_.script).replace_extension(".json")).Ok();
      (void)files_.RemoveFile(array_.script).Ok();
      return Fail(array.Message() + " The job folder is ready: `stagemarks farm run " +
                  Quoted(job_.folder) +
                  "` renders it here and on every machine that sees the folder.");
    }
    submission_.job = array.Value();
    last_.after = array.Value();
    const auto last = SubmitToSlurm(last_);
    if (last) submission_.collect = last.Value();
    if (!last) program_.terminal.Note("there will be no report by itself: " + last.Message());
    if (const auto written = WriteSubmission(files_, job_, submission_); !written)
      return TakeBack(written.Message());
    Tell(report);
    return kDone;
  }

 private:
  static std::string Indented(const std::string& text) {
    std::string indented;
    for (const char letter : text.substr(0, text.size() - 1))
      indented += letter == '\n' ? std::string("\n  ") : std::string(1, letter);
    return indented;
  }
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  // Cancels the tasks: with their numbers written nowhere, nobody could ask for or cancel them
  // later.
  int TakeBack(const std::string& why) {
    std::vector<std::string> numbers{submission_.job};
    if (!submission_.collect.empty()) numbers.push_back(submission_.collect);
    const auto cancelled = CancelInSlurm(numbers);
    return Fail(why + (cancelled ? " Slurm's " + Joined(numbers) + " was cancelled again."
                                 : " Slurm has the job all the same: " + cancelled.Message()));
  }

  void Tell(Report& report) const {
    std::size_t pictures = 0;
    for (const auto& chunk : submission_.chunks) pictures += chunk.size();
    report.Put("job", job_.Name());
    report.Put("folder", job_.folder);
    report.Put("slurmJob", submission_.job);
    report.Put("collectJob", submission_.collect);
    report.Put("tasks", submission_.chunks.size());
    report.Put("submitted", pictures);
    report.Line(
        "Submitted " + Counted(pictures, "picture") + " in " +
        Counted(submission_.chunks.size(), "task") + " as Slurm job " + submission_.job +
        (submission_.collect.empty() ? "." : ", the report as " + submission_.collect + "."));
    const std::string farm = options_.farm.empty() ? "" : " --farm " + AsTyped(options_.farm);
    const std::string job = AsTyped(job_.Name());
    report.Line("  stagemarks farm status " + job + farm + " --watch");
    report.Line("  stagemarks farm cancel " + job + farm);
  }

  Program& program_;
  const FarmOptions& options_;
  engine::FileSystem& files_;
  const FarmJob& job_;
  FarmSubmission submission_;
  SlurmOrder array_;
  SlurmOrder last_;
  std::string arrayScript_;
  std::string lastScript_;
};

// Carries out one call of `farm submit`.
class FarmSubmitting {
 public:
  FarmSubmitting(Program& program, const FarmOptions& options)
      : program_(program),
        options_(options),
        session_(program),
        pictures_(session_, options.jobs),
        order_(options.order),
        farm_(FarmFolder(options)),
        plan_(session_, pictures_, order_) {}

  int Run() {
    session_.Files().Follow(farm_);
    if (order_.pattern.empty())
      order_.pattern = farm_ + "/jobs/" + kFolderMark + "/pictures/{index:04} {state}." +
                       (order_.format.empty() ? "png" : order_.format);
    int status = plan_.CheckOrder();
    for (const auto step : {&FarmSubmitting::Open, &FarmSubmitting::Plan, &FarmSubmitting::Write}) {
      if (status == kDone) status = (this->*step)();
    }
    if (status == kDone) report_.Print(program_);
    return status == kDone ? session_.CheckLedger() : status;
  }

 private:
  int Fail(const std::string& why) {
    program_.terminal.Error(why);
    return kFailed;
  }

  int Open() {
    const auto begin = std::chrono::steady_clock::now();
    int status = session_.StartWithScene();
    job_.reading = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (status == kDone) status = pictures_.Choose(order_.states);
    return status == kDone ? CheckPictures(session_, plan_, report_) : status;
  }

  // The folder's name says what is in it: the same call gives the same job.
  int Plan() {
    if (const int status = plan_.Make(); status != kDone) return status;
    job_.title = SceneName(session_.Document());
    std::vector<std::string> made;
    for (const PlannedPicture& picture : plan_.Pictures()) {
      made.push_back(picture.path);
      made.push_back(RecordAsText(picture.record));
    }
    job_.folder = farm_ + "/jobs/" + SafeFileName(job_.title) + "-" +
                  pictures::HashOfTexts(made).substr(0, 8);
    const std::string mark = farm_ + "/jobs/" + kFolderMark + "/";
    for (const PlannedPicture& picture : plan_.Pictures()) {
      const bool isInJob = picture.path.starts_with(mark);
      pictures::ManifestLine task;
      task.picture = isInJob ? job_.folder + "/" + picture.path.substr(mark.size()) : picture.path;
      task.state = picture.state.name;
      task.record = picture.record;
      job_.tasks.push_back(std::move(task));
    }
    const auto estimate = plan_.Estimate();
    const auto count = static_cast<double>(job_.tasks.size());
    if (estimate) {
      job_.reading += estimate->reading;
      job_.each = std::max(0.0, estimate->seconds - estimate->reading) / count;
    }
    Tell(estimate);
    return kDone;
  }

  void Tell(const std::optional<PictureEstimate>& estimate) {
    report_.Put("job", job_.Name());
    report_.Put("folder", job_.folder);
    report_.Put("pictures", job_.tasks.size());
    report_.Put("pixels", static_cast<std::int64_t>(plan_.PixelsToRender()));
    report_.Line(Counted(job_.tasks.size(), "picture") + ", " + PixelsText(plan_.PixelsToRender()) +
                 (estimate ? "; on one machine like this about " + DurationText(estimate->seconds) +
                                 ", " + exporting::BytesText(estimate->bytes)
                           : "") +
                 ".");
    report_.Line("Job folder: " + job_.folder);
    if (!program_.verbose && !options_.dryRun) return;
    for (const pictures::ManifestLine& task : job_.tasks)
      report_.Line("  " + pictures::RelativeTo(job_.folder, task.picture) + "  " +
                   SizeText(task.record.size));
  }

  // The hash of the scene as it was opened; every state is in it. With the bytes of the file: what
  // is not seen in pictures, the Stagemarks themselves, is frozen, too.
  std::string Content() {
    const std::string file = AbsolutePath(options_.place);
    const auto bytes = session_.Files().ReadFile(file);
    return pictures::HashOfTexts(
        {plan_.Pictures().front().record.scene, bytes ? bytes.Value() : std::string()});
  }

  int Write() {
    engine::FileSystem& files = session_.Files();
    const std::string content = Content();
    job_.scene = FrozenPath(farm_, job_.title, content);
    if (options_.dryRun) {
      // With --dry-run: as it would be handed over, as if nothing of it was done.
      HandOver(program_, options_, files, job_, Submission()).Show(report_);
      report_.Line("");
      report_.Line("Nothing was written or submitted (--dry-run).");
      return kDone;
    }
    bool copied = false;
    const auto frozen = FreezeScene(session_, farm_, job_.title, content, &copied);
    if (!frozen) return Fail(frozen.Message());
    report_.Put("frozen", frozen.Value());
    report_.Put("copied", copied);
    report_.Line(std::string(copied ? "The scene was copied to " : "The scene is there already: ") +
                 fs::path(frozen.Value()).parent_path().string());
    if (const auto written = WriteJob(files, job_); !written) return Fail(written.Message());
    return Submit();
  }

  FarmSubmission Submission() {
    std::vector<std::size_t> all(job_.tasks.size());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    return Chunked(job_, all, ChunkSize(job_, all.size(), options_.chunk));
  }

  // A job that was submitted before: only what nobody is going to do.
  int Submit() {
    // Read back from the folder, with the hand-overs of earlier calls.
    const auto former = ReadJob(session_.Files(), job_.folder);
    if (!former) return Fail(former.Message());
    const FarmJob& job = former.Value();
    (void)session_.Files().RemoveFile(job.folder + "/stopped.json").Ok();
    FarmReport state(session_.Files(), job);
    if (const auto asked = state.AskScheduler(); !asked) return Fail(asked.Message());
    const std::vector<std::size_t> missing = state.Abandoned();
    if (missing.empty()) {
      report_.Line("All of it is done or on its way: " + state.Summary());
      return kDone;
    }
    return HandOver(program_, options_, session_.Files(), job,
                    Chunked(job, missing, ChunkSize(job_, missing.size(), options_.chunk)))
        .Submit(report_);
  }

  Program& program_;
  const FarmOptions& options_;
  Session session_;
  StatePictures pictures_;
  PictureOrder order_;
  std::string farm_;
  PicturePlan plan_;
  Report report_;
  FarmJob job_;
};

}  // namespace

std::string FarmFolder(const FarmOptions& options) {
  const std::string folder = AbsolutePath(options.farm.empty() ? kFarmFolder : options.farm);
  return folder.size() > 1 && folder.ends_with('/') ? folder.substr(0, folder.size() - 1) : folder;
}

int SubmitToFarm(Program& program, const FarmOptions& options) {
  program.scene = options.place;
  return FarmSubmitting(program, options).Run();
}

// The mark of a stopped job goes only when something is handed over again.
int RetryOnFarm(Program& program, const FarmOptions& options) {
  Session session(program);
  engine::FileSystem& files = session.Files();
  const auto folder = FindJob(files, FarmFolder(options), options.place);
  const auto job =
      folder ? ReadJob(files, folder.Value()) : engine::Result<FarmJob>(folder.GetStatus());
  if (!job) {
    program.terminal.Error(job.Message());
    return kFailed;
  }
  FarmReport state(files, job.Value());
  // Without an answer of the scheduler, a picture that looks abandoned may still be waiting there.
  if (const auto asked = state.AskScheduler(); !asked) {
    program.terminal.Error(asked.Message());
    return kFailed;
  }
  const std::vector<std::size_t> missing = state.Abandoned();
  Report report;
  report.Put("submitted", missing.size());
  int status = kDone;
  if (missing.empty()) {
    report.Line("Nothing is to be done again: " + state.Summary());
  } else {
    if (!options.dryRun && !WhyStopped(files, job.Value()).empty())
      (void)files.RemoveFile(job.Value().folder + "/stopped.json").Ok();
    HandOver again(
        program, options, files, job.Value(),
        Chunked(job.Value(), missing, ChunkSize(job.Value(), missing.size(), options.chunk)));
    if (options.dryRun) again.Show(report);
    if (!options.dryRun) status = again.Submit(report);
  }
  if (status == kDone) report.Print(program);
  return status;
}

}  // namespace commandline
