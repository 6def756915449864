// A job as files that all machines see (decision 63): job.json and tasks.jsonl are written once,
// submissions/NNN.json with each hand-over, manifest/*.jsonl by the programs that render,
// stopped.json by who stops it. Nothing is changed in place; everything is replaced whole or
// appended to by one program alone.
#include "program/commandline/farm/JobFolder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "engine/outside/WorkClaim.h"
#include "program/commandline/Report.h"

namespace commandline {

using engine::FileKind;
using engine::FileSystem;
using engine::Result;
using engine::Status;
using pictures::ManifestLine;
using Json = nlohmann::ordered_json;

namespace {

namespace fs = std::filesystem;

constexpr const char* kJobFile = "/job.json";
constexpr const char* kTasksFile = "/tasks.jsonl";
constexpr const char* kStopFile = "/stopped.json";
constexpr const char* kJobs = "/jobs";
// Of job.json; another one is refused.
constexpr int kFormat = 1;

std::string Dumped(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string SubmissionPath(const FarmJob& job, std::size_t number, const char* suffix) {
  char name[40];
  std::snprintf(name, sizeof name, "/submissions/%03zu%s", number, suffix);
  return job.folder + name;
}

Result<Json> ReadJson(FileSystem& files, const std::string& path) {
  const auto text = files.ReadFile(path);
  if (!text) return text.GetStatus();
  Json json = Json::parse(text.Value(), nullptr, false);
  if (json.is_object()) return json;
  return Result<Json>::Failure("\"" + path + "\" is damaged. Submit the scene again.");
}

std::string TextOf(const Json& json, const char* key) {
  const auto found = json.find(key);
  return found != json.end() && found->is_string() ? found->get<std::string>() : "";
}

double NumberOf(const Json& json, const char* key) {
  const auto found = json.find(key);
  return found != json.end() && found->is_number() ? found->get<double>() : 0;
}

// Numbers of pictures beyond the job are damage.
std::optional<FarmSubmission> SubmissionOf(const Json& json, std::size_t tasks) {
  FarmSubmission submission;
  submission.job = TextOf(json, "job");
  submission.collect = TextOf(json, "collect");
  submission.time = TextOf(json, "time");
  const auto chunks = json.find("chunks");
  if (chunks == json.end() || !chunks->is_array()) return std::nullopt;
  for (const Json& chunk : *chunks) {
    submission.chunks.emplace_back();
    if (!chunk.is_array()) return std::nullopt;
    for (const Json& number : chunk) {
      if (!number.is_number_unsigned() || number.get<std::size_t>() >= tasks) return std::nullopt;
      submission.chunks.back().push_back(number.get<std::size_t>());
    }
  }
  return submission;
}

// In a row from 1. A damaged one keeps its number, so that the next does not take it.
void ReadSubmissions(FileSystem& files, FarmJob& job) {
  for (std::size_t number = 1;; ++number) {
    const std::string path = SubmissionPath(job, number, ".json");
    if (files.Kind(path) != FileKind::File) return;
    const auto json = ReadJson(files, path);
    auto submission = json ? SubmissionOf(json.Value(), job.tasks.size()) : std::nullopt;
    if (!submission) submission.emplace();
    submission->number = number;
    job.submissions.push_back(std::move(*submission));
  }
}

std::string TasksText(const FarmJob& job) {
  std::string text;
  for (const ManifestLine& task : job.tasks) {
    ManifestLine line = task;
    line.picture = pictures::RelativeTo(job.folder, task.picture);
    text += pictures::TextOf(line) + "\n";
  }
  return text;
}

// The jobs in a farm, the one written last first. By when job.json was written; the negative time
// sorts the latest first.
std::vector<std::string> JobsIn(FileSystem& files, const std::string& farm) {
  if (files.Kind(farm + kJobs) != FileKind::Folder) return {};
  const auto names = files.ListFolders(farm + kJobs);
  std::vector<std::pair<std::int64_t, std::string>> jobs;
  for (const std::string& name : names ? names.Value() : std::vector<std::string>()) {
    const std::string folder = farm + kJobs + std::string("/") + name;
    if (files.Kind(folder + kJobFile) == FileKind::File)
      jobs.emplace_back(-files.Stamp(folder + kJobFile).touched, folder);
  }
  std::ranges::sort(jobs);
  std::vector<std::string> folders;
  folders.reserve(jobs.size());
  for (auto& job : jobs) folders.push_back(std::move(job.second));
  return folders;
}

// Reads the job: asked last, when no name fits.
bool HasNumber(FileSystem& files, const std::string& folder, const std::string& number) {
  const auto job = ReadJob(files, folder);
  return job && std::ranges::any_of(job.Value().submissions, [&](const FarmSubmission& submission) {
           return submission.job == number || submission.collect == number;
         });
}

// Later lines of one file count for more than earlier ones, and what was rendered for more than
// what failed.
void TakeLine(const ManifestLine& line, TaskOutcome& outcome) {
  if (outcome.state == TaskState::Done && line.failed) return;
  outcome.line = line;
  outcome.state = line.failed ? TaskState::Failed : TaskState::Done;
}

// A line says that it was rendered; the file must still be there and as long. Reading and hashing
// each of ten thousand pictures with every look would take minutes.
void LookAtFile(FileSystem& files, const ManifestLine& task, TaskOutcome& outcome) {
  const bool isThere = files.Kind(task.picture) == FileKind::File;
  if (outcome.state == TaskState::Done) {
    const bool isSame = isThere && files.Stamp(task.picture).size == outcome.line.bytes;
    if (!isSame) outcome.state = TaskState::Waiting;
  } else if (isThere) {
    // Rendered by somebody who keeps another manifest.
    const auto bytes = files.ReadFile(task.picture);
    const auto record = bytes ? pictures::FindRecord(bytes.Value()) : std::nullopt;
    if (record && *record == task.record) outcome.state = TaskState::Done;
  }
  if (outcome.state != TaskState::Done && engine::WorkClaim::IsTaken(task.picture))
    outcome.state = TaskState::Running;
}

}  // namespace

std::string FarmJob::Name() const { return fs::path(folder).filename().string(); }

// job.json last: a folder without it is no job.
Status WriteJob(FileSystem& files, const FarmJob& job) {
  for (const char* folder : {"", "/submissions", "/manifest", "/log", "/pictures"}) {
    if (Status made = files.MakeFolders(job.folder + folder); !made) return made;
  }
  for (const ManifestLine& task : job.tasks) {
    const std::string folder = fs::path(task.picture).parent_path().string();
    if (files.Kind(folder) == FileKind::Folder) continue;
    if (Status made = files.MakeFolders(folder); !made) return made;
  }
  const std::string tasks = TasksText(job);
  if (Status written = files.ReplaceFile(job.folder + kTasksFile, tasks); !written) return written;
  const Json json{{"format", kFormat},
                  {"title", job.title},
                  {"scene", fs::path(job.scene).lexically_relative(job.folder).string()},
                  {"pictures", job.tasks.size()},
                  {"reading", job.reading},
                  {"each", job.each},
                  {"time", pictures::TimeNow()}};
  return files.ReplaceFile(job.folder + kJobFile, Dumped(json));
}

// A picture missing from the list would never be rendered, so a damaged list is refused.
Result<FarmJob> ReadJob(FileSystem& files, const std::string& folder) {
  if (files.Kind(folder + kJobFile) != FileKind::File) {
    return Result<FarmJob>::Failure(
        "\"" + folder + "\" is no job of the farm, or it is not to be seen from this machine: " +
        "there is no job.json in it.");
  }
  const auto json = ReadJson(files, folder + kJobFile);
  if (!json) return json.GetStatus();
  if (NumberOf(json.Value(), "format") != kFormat)
    return Result<FarmJob>::Failure("The job \"" + folder +
                                    "\" was written by another version of this program.");
  FarmJob job;
  job.folder = folder;
  job.title = TextOf(json.Value(), "title");
  job.reading = NumberOf(json.Value(), "reading");
  job.each = NumberOf(json.Value(), "each");
  job.scene = (fs::path(folder) / TextOf(json.Value(), "scene")).lexically_normal().string();
  const auto tasks = files.ReadFile(folder + kTasksFile);
  if (!tasks) return tasks.GetStatus();
  std::size_t broken = 0;
  job.tasks = pictures::ReadManifest(tasks.Value(), &broken);
  if (broken > 0 || static_cast<double>(job.tasks.size()) != NumberOf(json.Value(), "pictures"))
    return Result<FarmJob>::Failure("\"" + folder + kTasksFile +
                                    "\" is damaged. Submit the scene again.");
  for (ManifestLine& task : job.tasks) task.picture = pictures::AbsoluteFrom(folder, task.picture);
  ReadSubmissions(files, job);
  return job;
}

Status WriteSubmission(FileSystem& files, const FarmJob& job, const FarmSubmission& submission) {
  const Json json{{"job", submission.job},
                  {"collect", submission.collect},
                  {"time", submission.time},
                  {"chunks", submission.chunks}};
  return files.ReplaceFile(SubmissionPath(job, submission.number, ".json"), Dumped(json));
}

std::string SubmissionScript(const FarmJob& job, std::size_t number) {
  return SubmissionPath(job, number, ".sh");
}

// Folder, then name, then number: what is nearer to what was typed wins.
Result<std::string> FindJob(FileSystem& files, const std::string& farm, const std::string& typed) {
  files.Follow(farm);
  const std::vector<std::string> jobs = JobsIn(files, farm);
  if (typed.empty()) {
    if (!jobs.empty()) return jobs.front();
    return Result<std::string>::Failure(
        "There is no job in \"" + farm +
        "\". `stagemarks farm submit SCENE` makes one; --farm DIR names another farm.");
  }
  const std::string folder = fs::absolute(typed).lexically_normal().string();
  if (files.Kind(folder + kJobFile) == FileKind::File) {
    files.Follow(folder);
    return folder.ends_with('/') ? folder.substr(0, folder.size() - 1) : folder;
  }
  for (const std::string& job : jobs) {
    if (fs::path(job).filename() == typed) return job;
  }
  for (const std::string& job : jobs) {
    if (HasNumber(files, job, typed)) return job;
  }
  std::vector<std::string> names;
  names.reserve(jobs.size());
  for (const std::string& job : jobs) names.push_back(fs::path(job).filename().string());
  return Result<std::string>::Failure(
      "There is no job " + Listed({typed}) + " in \"" + farm + "\"" +
      (names.empty() ? std::string(".") : "; there is " + Listed(names) + ".") +
      " Give its folder, its name or Slurm's number; --farm DIR names another farm.");
}

// Lines whose record is another one are of an earlier scene at the same path.
std::vector<TaskOutcome> ReadOutcomes(FileSystem& files, const FarmJob& job) {
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = 0; i < job.tasks.size(); ++i) places.emplace(job.tasks[i].picture, i);
  std::vector<TaskOutcome> outcomes(job.tasks.size());
  const std::string folder = job.folder + "/manifest";
  const auto manifests = files.ListFiles(folder);
  for (const std::string& name : manifests ? manifests.Value() : std::vector<std::string>()) {
    const auto text = files.ReadFile(folder + "/" + name);
    if (!text) continue;
    for (const ManifestLine& line : pictures::ReadManifest(text.Value())) {
      const auto place = places.find(pictures::AbsoluteFrom(folder, line.picture));
      if (place != places.end() && line.record == job.tasks[place->second].record)
        TakeLine(line, outcomes[place->second]);
    }
  }
  for (std::size_t i = 0; i < outcomes.size(); ++i) LookAtFile(files, job.tasks[i], outcomes[i]);
  return outcomes;
}

std::string WhyStopped(FileSystem& files, const FarmJob& job) {
  if (files.Kind(job.folder + kStopFile) != FileKind::File) return "";
  const auto json = ReadJson(files, job.folder + kStopFile);
  const std::string why = json ? TextOf(json.Value(), "why") : "";
  return why.empty() ? "It was stopped." : why;
}

void StopJob(FileSystem& files, const FarmJob& job, const std::string& why) {
  const Json json{{"why", why}, {"time", pictures::TimeNow()}, {"host", pictures::HostName()}};
  (void)files.ReplaceFile(job.folder + kStopFile, Dumped(json)).Ok();
}

}  // namespace commandline
