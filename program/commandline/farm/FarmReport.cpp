// Everything is read from the job folder (decision 63): which pictures there are to be, what the
// manifests of all machines say of them, and what lies at their places. The scheduler is only asked
// who still cares for a picture.
#include "program/commandline/farm/FarmReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "engine/dialog/TerminalText.h"
#include "program/commandline/PictureOrders.h"
#include "program/commandline/PicturePage.h"

namespace commandline {

namespace {

// Most failures have one cause.
constexpr std::size_t kMostFailures = 5;
constexpr std::size_t kLogLines = 3;
constexpr const char* kSheetFile = "/sheet.png";
constexpr std::uint64_t kLargestLog = 1ULL << 26;

// In the order of TaskState; the words are those of --json.
const char* WordFor(TaskState state) {
  constexpr const char* kWords[] = {"waiting", "running", "done", "failed"};
  return kWords[static_cast<int>(state)];
}

void Count(const TaskOutcome& outcome, FarmCounts& counts) {
  ++counts.all;
  counts.done += outcome.state == TaskState::Done;
  counts.running += outcome.state == TaskState::Running;
  counts.failed += outcome.state == TaskState::Failed;
  if (outcome.state == TaskState::Done) counts.seconds += outcome.line.seconds;
}

std::string StateName(const pictures::ManifestLine& task) {
  return task.state.empty() ? "As it is" : task.state;
}

std::string SecondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f s", seconds);
  return text;
}

// Of pictures that are done; there is no division by none.
double SecondsEach(const FarmCounts& counts) {
  return counts.seconds / static_cast<double>(std::max<std::size_t>(1, counts.done));
}

std::string EachText(const FarmCounts& counts) {
  return counts.done == 0 ? "" : SecondsText(SecondsEach(counts));
}

JsonValue MillisecondsEach(const FarmCounts& counts) {
  return counts.done == 0 ? JsonValue()
                          : JsonValue(static_cast<std::int64_t>(SecondsEach(counts) * 1000));
}

std::string Column(std::size_t number) { return number == 0 ? "-" : std::to_string(number); }

constexpr const char* kReportStyle = R"css(
:root { color-scheme: dark; }
body { margin: 0; padding: 32px 40px 60px; background: #1e1e1e; color: #d6d6d6;
  font: 15px/1.5 system-ui, "DejaVu Sans", sans-serif; }
h1 { margin: 0; font-size: 22px; color: #ececec; overflow-wrap: anywhere; }
h2 { margin: 34px 0 8px; font-size: 17px; color: #ececec; }
p { margin: 8px 0; color: #9a9a9a; overflow-wrap: anywhere; }
.sheet { display: block; max-width: 100%; max-height: 70vh; margin: 20px 0 12px; outline: 1px solid #343434; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; min-width: 100%; }
th { text-align: left; color: #9a9a9a; font-weight: 400; white-space: nowrap; }
td, th { padding: 6px 24px 6px 0; border-bottom: 1px solid #343434; }
td { overflow-wrap: anywhere; }
.n { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
a { color: #e8aa42; }
:focus-visible { outline: 2px solid #e8aa42; outline-offset: 2px; }
.failed { color: #ff7a6b; }
.done { color: #86c98a; }
)css";

std::string MachineOf(const pictures::ManifestLine& line) {
  return line.node.empty() ? line.host : line.node;
}

std::string Cell(const std::string& html, const std::string& kind = "") {
  return "<td" + (kind.empty() ? "" : " class=\"" + kind + "\"") + ">" + html + "</td>";
}

// One picture on the report's page, which lies in the job's folder. Links are relative to the job's
// folder, which may be seen under another path.
std::string RowOf(const FarmJob& job, const pictures::ManifestLine& task,
                  const TaskOutcome& outcome) {
  const pictures::ManifestLine& line = outcome.line;
  const std::string word = WordFor(outcome.state);
  std::string file = "<bdi>" + HtmlText(pictures::RelativeTo(job.folder, task.picture)) + "</bdi>";
  if (outcome.state == TaskState::Done) {
    const auto path = std::filesystem::path(task.picture).lexically_relative(job.folder);
    file = "<a href=\"" + HtmlText(Address(path.string())) + "\">" + file + "</a>";
  }
  return "<tr>" + Cell("<bdi>" + HtmlText(StateName(task)) + "</bdi>") + Cell(file) +
         Cell(std::to_string(task.record.size.width) + " x " +
                  std::to_string(task.record.size.height),
              "n") +
         Cell(std::to_string(task.record.frame), "n") +
         Cell(word + (line.why.empty() ? "" : ": " + HtmlText(line.why)), word) +
         Cell(line.seconds > 0 ? SecondsText(line.seconds) : "", "n") +
         Cell(HtmlText(MachineOf(line))) + "</tr>\n";
}

std::vector<std::string> LastLines(const std::string& text, std::size_t count) {
  std::vector<std::string> lines;
  std::istringstream all(text);
  for (std::string line; std::getline(all, line);) lines.push_back(line);
  if (lines.size() > count)
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
  return lines;
}

}  // namespace

FarmReport::FarmReport(engine::FileSystem& files, const FarmJob& job)
    : files_(files),
      job_(job),
      outcomes_(ReadOutcomes(files, job)),
      stopped_(WhyStopped(files, job)) {
  for (const TaskOutcome& outcome : outcomes_) Count(outcome, counts_);
}

// The last job of each hand-over, which collects, counts as well.
engine::Status FarmReport::AskScheduler() {
  std::vector<std::string> jobs;
  for (const FarmSubmission& submission : job_.submissions) {
    for (const std::string& number : {submission.job, submission.collect}) {
      if (!number.empty()) jobs.push_back(number);
    }
  }
  auto queue = SlurmQueue(jobs);
  if (!queue) {
    unasked_ = queue.Message();
    return queue.GetStatus();
  }
  queue_ = queue.Take();
  return {};
}

// Waiting or failed, and in no task that the scheduler still has: nobody will do it without being
// told to.
std::vector<std::size_t> FarmReport::Abandoned() const {
  std::set<std::size_t> cared;
  for (const QueuedTask& task : queue_) {
    if (!IsAlive(task) || task.task < 0) continue;
    for (const FarmSubmission& submission : job_.submissions) {
      const auto chunk = static_cast<std::size_t>(task.task);
      if (submission.job == task.job && chunk < submission.chunks.size())
        cared.insert(submission.chunks[chunk].begin(), submission.chunks[chunk].end());
    }
  }
  std::vector<std::size_t> abandoned;
  for (std::size_t i = 0; i < outcomes_.size(); ++i) {
    const bool isOpen =
        outcomes_[i].state == TaskState::Waiting || outcomes_[i].state == TaskState::Failed;
    if (isOpen && !cared.contains(i)) abandoned.push_back(i);
  }
  return abandoned;
}

// The job as an argument of a command that is typed in the current folder.
std::string FarmReport::Typed() const {
  const bool isUsual = job_.folder == AbsolutePath(kFarmFolder) + "/jobs/" + job_.Name();
  return AsTyped(isUsual ? job_.Name() : job_.folder);
}

// By the pictures done so far, else by what the submission measured; as many side by side as are
// running.
double FarmReport::SecondsLeft() const {
  const double each = counts_.done > 0 ? SecondsEach(counts_) : job_.each;
  const auto open = static_cast<double>(counts_.Waiting() + counts_.running);
  return each * open / static_cast<double>(std::max<std::size_t>(1, counts_.running));
}

std::string FarmReport::Summary() const {
  std::string text =
      Counted(counts_.all, "picture") + ": " + std::to_string(counts_.done) + " done";
  for (const auto& [count, word] :
       {std::pair{counts_.running, "running"}, std::pair{counts_.Waiting(), "waiting"},
        std::pair{counts_.failed, "failed"}}) {
    if (count > 0) text += ", " + std::to_string(count) + " " + word;
  }
  if (counts_.running > 0) text += "; about " + DurationText(SecondsLeft()) + " left";
  return text + ".";
}

void FarmReport::AddTo(Report& report, bool all) const {
  report.Put("job", job_.Name());
  report.Put("folder", job_.folder);
  report.Put("pictures", counts_.all);
  report.Put("done", counts_.done);
  report.Put("running", counts_.running);
  report.Put("waiting", counts_.Waiting());
  report.Put("failed", counts_.failed);
  report.Put("secondsLeft", counts_.running == 0
                                ? JsonValue()
                                : JsonValue(static_cast<std::int64_t>(std::ceil(SecondsLeft()))));
  report.Put("stopped", stopped_.empty() ? JsonValue() : JsonValue(stopped_));
  report.Line(Colored(Color::Bold, job_.Name()));
  AddStates(report);
  report.Line("");
  report.Line(Summary());
  if (!stopped_.empty()) report.Line("Stopped: " + stopped_);
  AddFailures(report, all);
  AddScheduler(report);
  AddPictures(report);
}

// A line for each state. States are told apart by what is printed of them. In the order of the job.
void FarmReport::AddStates(Report& report) const {
  std::vector<std::string> order;
  std::map<std::string, FarmCounts> counts;
  std::size_t width = 5;
  for (std::size_t i = 0; i < outcomes_.size(); ++i) {
    const std::string name = Shown(StateName(job_.tasks[i]));
    if (!counts.contains(name)) order.push_back(name);
    width = std::max(width, engine::DisplayWidth(name));
    Count(outcomes_[i], counts[name]);
  }
  const auto line = [&](const std::string& name, const std::vector<std::string>& columns) {
    std::string text = engine::PadRight(name, width);
    for (const std::string& column : columns)
      text += std::string(10 - std::min<std::size_t>(9, column.size()), ' ') + column;
    report.Line(text);
  };
  line("State", {"waiting", "running", "done", "failed", "each"});
  for (const std::string& name : order) {
    const FarmCounts& of = counts[name];
    line(name, {Column(of.Waiting()), Column(of.running), Column(of.done), Column(of.failed),
                EachText(of)});
  }
  report.PutList("states");
  for (const std::string& name : order) {
    const FarmCounts& of = counts[name];
    report.Append("states", {{"state", name},
                             {"waiting", of.Waiting()},
                             {"running", of.running},
                             {"done", of.done},
                             {"failed", of.failed},
                             {"milliseconds", MillisecondsEach(of)}});
  }
}

// The log of the task that worked on the picture last; empty without one.
std::string FarmReport::LogOf(std::size_t task) const {
  for (auto at = job_.submissions.rbegin(); at != job_.submissions.rend(); ++at) {
    for (std::size_t chunk = 0; chunk < at->chunks.size(); ++chunk) {
      if (std::ranges::find(at->chunks[chunk], task) == at->chunks[chunk].end()) continue;
      const std::string path =
          job_.folder + "/log/" + at->job + "_" + std::to_string(chunk) + ".log";
      if (files_.Kind(path) != engine::FileKind::File) return "";
      const auto text = files_.ReadFile(path, kLargestLog);
      return text ? text.Value() : "";
    }
  }
  return "";
}

// With the last lines of the task's own log, where the reason often stands.
void FarmReport::AddFailures(Report& report, bool all) const {
  std::size_t told = 0;
  for (std::size_t i = 0; i < outcomes_.size(); ++i) {
    if (outcomes_[i].state != TaskState::Failed) continue;
    if (!all && told++ == kMostFailures) {
      report.Line("... all failures with --verbose.");
      return;
    }
    report.Line("");
    report.Line(Colored(Color::Red, "failed") + " " + Shown(StateName(job_.tasks[i])) + "  " +
                job_.tasks[i].picture);
    report.Line("  " + Readable(outcomes_[i].line.why) + " (" + outcomes_[i].line.host +
                (outcomes_[i].line.node.empty() ? "" : ", " + outcomes_[i].line.node) + ", " +
                outcomes_[i].line.time + ")");
    for (const std::string& line : LastLines(LogOf(i), kLogLines))
      report.Line("  | " + Readable(line));
  }
}

void FarmReport::AddPictures(Report& report) const {
  report.PutStream("tasks", [this](const auto& append) {
    for (std::size_t i = 0; i < outcomes_.size(); ++i) {
      const pictures::ManifestLine& line = outcomes_[i].line;
      append({{"state", StateName(job_.tasks[i])},
              {"file", job_.tasks[i].picture},
              {"result", WordFor(outcomes_[i].state)},
              {"why", line.why.empty() ? JsonValue() : JsonValue(line.why)},
              {"milliseconds", static_cast<std::int64_t>(line.seconds * 1000)},
              {"host", line.host},
              {"node", line.node}});
    }
  });
}

// Tasks are counted by state; of waiting ones the scheduler's reason is told.
void FarmReport::AddScheduler(Report& report) const {
  std::map<std::string, std::size_t> states;
  for (const QueuedTask& task : queue_) {
    const bool isPending = task.state == "PENDING" && task.reason != "None";
    ++states[IsAlive(task) ? task.state + (isPending ? " (" + task.reason + ")" : "") : ""];
  }
  states.erase("");
  report.PutList("scheduler");
  std::vector<std::string> texts;
  for (const auto& [state, count] : states) {
    report.Append("scheduler", {{"state", state}, {"tasks", count}});
    texts.push_back(Counted(count, "task") + " " + state);
  }
  if (!texts.empty()) report.Line("Slurm: " + Joined(texts) + ".");
  const bool isUnasked = !unasked_.empty() && !job_.submissions.empty();
  if (isUnasked) report.Line("note: " + unasked_);
  report.Put("unasked", isUnasked ? JsonValue(unasked_) : JsonValue());
  report.Put("slurmJob", job_.submissions.empty() ? "" : job_.submissions.back().job);
  const std::size_t abandoned = unasked_.empty() ? Abandoned().size() : 0;
  report.Put("abandoned", abandoned);
  if (abandoned > 0)
    report.Line("Nobody is going to do " + Counted(abandoned, "picture") +
                " any more: `stagemarks farm retry " + Typed() + "` does.");
}

// A table with the counts and times of each machine; empty before the first picture. A machine that
// is slow or fails alone shows here.
std::string FarmReport::MachinesOnPage() const {
  std::map<std::string, FarmCounts> machines;
  for (const TaskOutcome& outcome : outcomes_) {
    if (!outcome.line.time.empty()) Count(outcome, machines[MachineOf(outcome.line)]);
  }
  if (machines.empty()) return "";
  std::string text =
      "<h2>Machines</h2>\n<div class=\"scroll\"><table>\n<tr><th>Machine</th>"
      "<th class=\"n\">Done</th><th class=\"n\">Failed</th><th class=\"n\">Time</th>"
      "<th class=\"n\">Each</th></tr>\n";
  for (const auto& [name, counts] : machines) {
    text += "<tr>" + Cell(HtmlText(name)) + Cell(Column(counts.done), "n") +
            Cell(Column(counts.failed), "n") + Cell(DurationText(counts.seconds), "n") +
            Cell(EachText(counts), "n") + "</tr>\n";
  }
  return text + "</table></div>\n";
}

std::string FarmReport::PicturesOnPage() const {
  std::string text =
      "<h2>Pictures</h2>\n<div class=\"scroll\"><table>\n<tr><th>State</th><th>Picture</th>"
      "<th class=\"n\">Size</th><th class=\"n\">Frame</th><th>Result</th>"
      "<th class=\"n\">Time</th><th>Machine</th></tr>\n";
  // Failed pictures first: a person has to look after them.
  for (const bool isFailed : {true, false}) {
    for (std::size_t i = 0; i < outcomes_.size(); ++i) {
      if ((outcomes_[i].state == TaskState::Failed) == isFailed)
        text += RowOf(job_, job_.tasks[i], outcomes_[i]);
    }
  }
  return text + "</table></div>\n";
}

std::string FarmReport::Page() const {
  const std::string title = HtmlText(job_.title);
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
      title + " - report</title>\n<style>" + kReportStyle + "</style>\n</head>\n<body>\n<h1><bdi>" +
      title + "</bdi></h1>\n<p>" + HtmlText(Summary()) +
      (stopped_.empty() ? "" : " " + HtmlText("Stopped: " + stopped_)) + "</p>\n<p>Job " +
      HtmlText(job_.Name());
  const char* before = ", handed over ";
  for (const FarmSubmission& submission : job_.submissions) {
    page += before + HtmlText(submission.time) +
            (submission.job.empty() ? "" : " as Slurm job " + HtmlText(submission.job));
    before = ", again ";
  }
  page += "</p>\n";
  if (files_.Kind(job_.folder + kSheetFile) == engine::FileKind::File) {
    page +=
        "<p><a href=\"sheet.png\"><img class=\"sheet\" src=\"sheet.png\" "
        "alt=\"Contact sheet\"></a><a href=\"page/index.html\">Page with all states</a></p>\n";
  }
  return page + PicturesOnPage() + MachinesOnPage() + "</body>\n</html>\n";
}

}  // namespace commandline
