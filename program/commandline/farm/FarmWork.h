// FarmWork: what the verb `farm` does, one function for each action. Each answers an exit status
// and says on the terminal what goes wrong. Main thread.
#pragma once

#include <string>
#include <vector>

#include "program/commandline/PictureOrders.h"

namespace commandline {

struct FarmOptions {
  std::string action;
  std::string place;  // SCENE of submit, JOB of the others
  PictureOrder order;
  std::string farm;    // folder; empty: the usual one here
  unsigned chunk = 0;  // pictures in a task; 0: as many as reading the scene is worth
  std::string partition;
  std::vector<std::string> slurm;  // options for sbatch
  bool dryRun = false;
  bool watch = false;
  unsigned jobs = 0;        // threads
  unsigned submission = 0;  // of run, as the script says: which hand-over, and which task of it
  unsigned task = 0;
};

// The folder of the farm, absolute.
std::string FarmFolder(const FarmOptions& options);

// Freezes the scene, writes the job and hands it to Slurm.
int SubmitToFarm(Program& program, const FarmOptions& options);
// Hands the pictures over again that nobody is going to do any more.
int RetryOnFarm(Program& program, const FarmOptions& options);
// Renders pictures of a job here: those of one task, or all that are missing, together with whoever
// else is at it.
int RunOnFarm(Program& program, const FarmOptions& options);
// Makes sheet, page and report of the finished pictures.
int CollectFromFarm(Program& program, const FarmOptions& options);
int TellFarmStatus(Program& program, const FarmOptions& options);
int CancelOnFarm(Program& program, const FarmOptions& options);

}  // namespace commandline
