#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include "program/commandline/Arguments.h"
#include "program/commandline/farm/FarmReport.h"
#include "program/commandline/farm/FarmWork.h"

namespace commandline {

namespace {

// How often --watch looks, and how soon it hears Ctrl-C meanwhile.
constexpr std::chrono::milliseconds kBetweenLooks{2000};
constexpr std::chrono::milliseconds kBetweenSignals{50};

struct FarmAction {
  const char* name;
  int (*work)(Program&, const FarmOptions&);
  bool needsPlace;
};
constexpr FarmAction kActions[] = {
    {"submit", SubmitToFarm, true},      {"status", TellFarmStatus, false},
    {"retry", RetryOnFarm, false},       {"cancel", CancelOnFarm, true},
    {"collect", CollectFromFarm, false}, {"run", RunOnFarm, false}};

engine::Result<FarmJob> JobMeant(engine::FileSystem& files, const FarmOptions& options) {
  const auto folder = FindJob(files, FarmFolder(options), options.place);
  return folder ? ReadJob(files, folder.Value()) : engine::Result<FarmJob>(folder.GetStatus());
}

// False when a signal came.
bool WaitForNextLook() {
  for (auto waited = kBetweenSignals; waited < kBetweenLooks; waited += kBetweenSignals) {
    if (Terminal::Interrupted()) return false;
    std::this_thread::sleep_for(kBetweenSignals);
  }
  return !Terminal::Interrupted();
}

// Options that belong to some actions only: with another one they were meant for something else.
int CheckFarmOptions(Program& program, const FarmOptions& options,
                     const std::vector<std::pair<Option, std::vector<std::string>>>& owned) {
  for (const auto& [option, actions] : owned) {
    const bool fits = std::ranges::find(actions, options.action) != actions.end();
    if (!option.IsGiven() || fits) continue;
    program.terminal.Error("`farm " + options.action +
                           "` has not all of these options. They go with " + Listed(actions) +
                           ".\n`stagemarks farm --help` explains it.");
    return kUsage;
  }
  return kDone;
}

int RunFarm(Program& program, const FarmOptions& options) {
  for (const FarmAction& action : kActions) {
    if (options.action != action.name) continue;
    if (!action.needsPlace || !options.place.empty()) return action.work(program, options);
    program.terminal.Error("`farm " + options.action + "` needs " +
                           (options.action == "submit" ? "a SCENE." : "a JOB.") +
                           "\n`stagemarks farm --help` explains it.");
  }
  return kUsage;
}

using OwnedOptions = std::vector<std::pair<Option, std::vector<std::string>>>;

OwnedOptions AddFarmOptions(Verb verb, FarmOptions& options) {
  OwnedOptions owned;
  verb.Add("--farm", options.farm,
           "The farm's folder, which all machines see by the same path: frozen scenes and jobs")
      .Word("DIR")
      .Default(kFarmFolder);
  owned.push_back({verb.Add("--chunk", options.chunk,
                            "Pictures in a task; 0: as many as keep reading the scene below a "
                            "tenth of the work")
                       .Word("N")
                       .Between(0, 1000000),
                   {"submit", "retry"}});
  owned.push_back({verb.Add("--partition", options.partition, "Slurm's partition").Word("NAME"),
                   {"submit", "retry"}});
  owned.push_back({verb.Add("--sbatch-option", options.slurm,
                            "An option for sbatch, as --sbatch-option=--time=60; may be given "
                            "several times")
                       .OneWord()
                       .Word("OPTION"),
                   {"submit", "retry"}});
  owned.push_back({verb.AddFlag("--dry-run", options.dryRun,
                                "Print all that would be written and submitted, and do neither"),
                   {"submit", "retry"}});
  owned.push_back(
      {verb.AddFlag("--watch", options.watch, "Look again until all is done"), {"status"}});
  verb.Add("--jobs", options.jobs, "Number of threads of `run`; 0: one for each core")
      .Word("N")
      .Between(0, 1024);
  owned.push_back({verb.Add("--submission", options.submission, "").Word("N").Hidden(), {"run"}});
  owned.push_back({verb.Add("--task", options.task, "").Word("N").Hidden(), {"run"}});
  return owned;
}

constexpr const char* kFarmFooter =
    "submit SCENE: freezes the scene and its textures into the farm's folder, once for each "
    "content, writes the list of pictures and hands it to Slurm: an array of tasks, and a last job "
    "that makes the report. Later edits of the scene change nothing.\n"
    "status [JOB]: what became of the pictures of each state, why some failed, how long it takes.\n"
    "retry [JOB]: submits what failed or was lost, only that.\n"
    "cancel JOB: takes the job out of Slurm. Pictures that are done stay.\n"
    "collect [JOB]: contact sheet, page and report of what is there.\n"
    "run [JOB]: renders what is missing here, without Slurm; several of these, on any machines "
    "that "
    "see the folder, split the work.\n"
    "JOB is a folder, its name, or Slurm's number; without one it is the job submitted last. The "
    "pictures lie in the job's folder unless -o says where.\n\n"
    "Examples:\n"
    "  stagemarks farm submit room.c4d --farm /shared/farm --size 1920x1080\n"
    "  stagemarks farm status --farm /shared/farm --watch\n"
    "  stagemarks farm retry --farm /shared/farm";

}  // namespace

// The job is read anew with each look, since a retry from elsewhere adds to it. A scheduler that
// cannot be asked is told in the report and fails nothing.
int TellFarmStatus(Program& program, const FarmOptions& options) {
  Session session(program);
  std::string shown;
  for (;;) {
    const auto job = JobMeant(session.Files(), options);
    if (!job) {
      program.terminal.Error(job.Message());
      return kFailed;
    }
    FarmReport state(session.Files(), job.Value());
    (void)state.AskScheduler().Ok();
    const std::string summary = state.Summary();
    const bool isLast =
        !options.watch || state.IsOver() || !WhyStopped(session.Files(), job.Value()).empty();
    if (!isLast && summary != shown) program.terminal.Say(job.Value().Name() + ": " + summary);
    shown = summary;
    if (isLast || !WaitForNextLook()) {
      Report report;
      state.AddTo(report, program.verbose);
      report.Print(program);
      return Terminal::Interrupted() ? kInterrupted : kDone;
    }
  }
}

// Each number by itself, so that one which Slurm has forgotten keeps none of the others.
int CancelOnFarm(Program& program, const FarmOptions& options) {
  Session session(program);
  const auto job = JobMeant(session.Files(), options);
  engine::Status status = job.GetStatus();
  std::vector<std::string> numbers;
  if (job) {
    for (const FarmSubmission& submission : job.Value().submissions) {
      for (const std::string& number : {submission.job, submission.collect}) {
        if (!number.empty()) numbers.push_back(number);
      }
    }
    for (std::size_t i = 0; i < numbers.size() && status; ++i) status = CancelInSlurm({numbers[i]});
  }
  if (!status) {
    program.terminal.Error(status.Message());
    return kFailed;
  }
  Report report;
  report.Put("cancelled", numbers);
  report.Line(numbers.empty() ? "Nothing of this job is in Slurm."
                              : "Cancelled Slurm's " + Joined(numbers) + ". " +
                                    FarmReport(session.Files(), job.Value()).Summary());
  report.Print(program);
  return kDone;
}

void AddFarm(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("farm", "Render the states on many machines, by Slurm");
  auto options = std::make_shared<FarmOptions>();
  std::vector<std::string> actions;
  for (const FarmAction& action : kActions) actions.emplace_back(action.name);
  verb.Add("ACTION", options->action, "submit, status, retry, cancel, collect or run")
      .Required()
      .OneOf(actions);
  verb.Add("SCENE|JOB", options->place, "The scene that is submitted; else the job");
  verb.AddFlag("--json", program.json, "Print the result as JSON");
  AddPictureOrder(verb, options->order, program.output);
  AddStrict(verb, program);
  auto owned = std::make_shared<OwnedOptions>(AddFarmOptions(verb, *options));
  verb.Footer(kFarmFooter);
  verb.Does([&program, options, owned] {
    if (const int status = CheckFarmOptions(program, *options, *owned); status != kDone)
      return status;
    options->order.pattern = program.output.empty() ? "" : AbsolutePath(program.output);
    return RunFarm(program, *options);
  });
}

}  // namespace commandline
