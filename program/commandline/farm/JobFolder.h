// JobFolder: one job of the farm as it lies on the disk, which all machines see: the frozen scene,
// the list of pictures, what was handed to the scheduler, and what became of each picture. The
// folder is the truth: whatever a scheduler remembers, a picture is done when it is there and was
// made from what the list says. Files are written whole or line by line, so that any number of
// programs may work in it.
//   job.json        the scene, the program, the pictures' number
//   tasks.jsonl     one line for each picture: where it goes and what it is made from
//   submissions/    one file for each hand-over: which pictures are in which task; its script
//   manifest/       one file of lines for each program that worked: what it rendered
//   log/            what the tasks said
//   stopped.json    why nothing more is begun; absent mostly
// A value; main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "program/pictures/PictureManifest.h"

namespace commandline {

// One hand-over to the scheduler.
struct FarmSubmission {
  std::size_t number = 1;
  std::string job;      // the scheduler's number of the array
  std::string collect;  // and of the last job
  std::string time;
  std::vector<std::vector<std::size_t>> chunks;  // numbers of pictures by task, from 0
};

struct FarmJob {
  std::string folder;                         // absolute
  std::string scene;                          // the frozen one, absolute
  std::string title;                          // name of the scene
  double reading = 0;                         // seconds, measured at the submission
  double each = 0;                            // seconds of one picture, estimated
  std::vector<pictures::ManifestLine> tasks;  // where and from what; paths absolute
  std::vector<FarmSubmission> submissions;    // in order

  std::string Name() const;
};

enum class TaskState { Waiting, Running, Done, Failed };
struct TaskOutcome {
  TaskState state = TaskState::Waiting;
  pictures::ManifestLine line;  // the last one about it, where there is one
};

inline constexpr const char* kFarmFolder = "farm";

// Writes job.json and tasks.jsonl, the folders besides; leaves what is there already if it is the
// same.
engine::Status WriteJob(engine::FileSystem& files, const FarmJob& job);
engine::Result<FarmJob> ReadJob(engine::FileSystem& files, const std::string& folder);
engine::Status WriteSubmission(engine::FileSystem& files, const FarmJob& job,
                               const FarmSubmission& submission);
std::string SubmissionScript(const FarmJob& job, std::size_t number);

// The folder of the job that is meant: a folder, the name of a job in `farm`, the scheduler's
// number of one, or, of nothing typed, the one that was written last. A failure names what there
// is.
engine::Result<std::string> FindJob(engine::FileSystem& files, const std::string& farm,
                                    const std::string& typed);

// The outcomes of all pictures, by the manifests and a look at each file and claim; O(lines).
std::vector<TaskOutcome> ReadOutcomes(engine::FileSystem& files, const FarmJob& job);

// Why the job was stopped, so that no more pictures are begun; empty where it was not. StopJob
// never fails: its callers have a reason to give already.
std::string WhyStopped(engine::FileSystem& files, const FarmJob& job);
void StopJob(engine::FileSystem& files, const FarmJob& job, const std::string& why);

}  // namespace commandline
