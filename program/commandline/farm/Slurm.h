// Slurm: what is asked of the scheduler, by its own commands sbatch, squeue and scancel, which must
// be in the search path. Arguments go to them as they are, through no shell. Nothing is kept here:
// the scheduler may forget, and the job folder is the truth. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/core/Result.h"

namespace commandline {

// Output and exit status of a program; 128 plus the signal's number where one ended it.
struct ProgramAnswer {
  int status = 0;
  std::string out;
  std::string err;
};
// Fails when there is no such program. One that only looks is ended when this program is
// interrupted; any other may have done its work already, and comes to its end.
enum class Purpose { Looks, Acts };
engine::Result<ProgramAnswer> RunProgram(const std::vector<std::string>& words,
                                         Purpose purpose = Purpose::Acts);

// One array of tasks, or one task behind an array.
struct SlurmOrder {
  std::string name;
  std::string script;                // absolute path
  std::string log;                   // absolute path with sbatch's own placeholders
  std::size_t tasks = 0;             // numbered from 0; 0: no array
  std::string after;                 // number of the job that has to end before; empty: none
  std::string partition;             // empty: the usual one
  std::vector<std::string> options;  // for sbatch, as they are
};
// The call of sbatch, word by word.
std::vector<std::string> SlurmCall(const SlurmOrder& order);
// Hands it to Slurm; the job's number. A failure says in sbatch's own words why not.
engine::Result<std::string> SubmitToSlurm(const SlurmOrder& order);

// One task as the scheduler sees it.
struct QueuedTask {
  std::string job;
  int task = -1;      // of an array, -1 for a job without
  std::string state;  // "PENDING", "RUNNING", ...
  std::string node;
  std::string reason;
};
// The tasks of these jobs that the scheduler still knows. Fails when it cannot be asked.
engine::Result<std::vector<QueuedTask>> SlurmQueue(const std::vector<std::string>& jobs);
// Whether the task is yet to end by itself.
bool IsAlive(const QueuedTask& task);
engine::Status CancelInSlurm(const std::vector<std::string>& jobs);

// Text that a shell reads as one word.
std::string Quoted(const std::string& text);
// Quoted only where a shell would not read the text as one word anyway.
std::string AsTyped(const std::string& text);

}  // namespace commandline
