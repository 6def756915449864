// FarmReport: what became of a job, as a table for a person, an object for a program, and a page
// for a browser. Reads the job's folder and asks the scheduler; changes nothing. Main thread.
#pragma once

#include <string>
#include <vector>

#include "program/commandline/Report.h"
#include "program/commandline/farm/JobFolder.h"
#include "program/commandline/farm/Slurm.h"

namespace commandline {

struct FarmCounts {
  std::size_t all = 0;
  std::size_t done = 0;
  std::size_t running = 0;
  std::size_t failed = 0;
  double seconds = 0;  // that the done ones took, together

  std::size_t Waiting() const { return all - done - running - failed; }
};

class FarmReport {
 public:
  // Reads the job's folder as it is now.
  FarmReport(engine::FileSystem& files, const FarmJob& job);
  // Asks the scheduler, too. A failure says why it does not answer, and so does the report.
  engine::Status AskScheduler();

  const FarmCounts& Counts() const { return counts_; }
  const std::vector<TaskOutcome>& Outcomes() const { return outcomes_; }
  // Pictures that are not done and that no living task of the scheduler will do.
  std::vector<std::size_t> Abandoned() const;
  bool IsOver() const { return counts_.done == counts_.all; }

  // "60 pictures: 12 done, 3 running, 45 waiting; about 4 min left".
  std::string Summary() const;
  void AddTo(Report& report, bool all) const;
  // The HTML page for the job's folder; it shows the contact sheet there where there is one.
  std::string Page() const;

 private:
  void AddStates(Report& report) const;
  void AddFailures(Report& report, bool all) const;
  void AddPictures(Report& report) const;
  void AddScheduler(Report& report) const;
  std::string Typed() const;
  std::string MachinesOnPage() const;
  std::string PicturesOnPage() const;
  std::string LogOf(std::size_t task) const;
  double SecondsLeft() const;

  engine::FileSystem& files_;
  const FarmJob& job_;
  std::vector<TaskOutcome> outcomes_;
  FarmCounts counts_;
  std::string stopped_;
  std::vector<QueuedTask> queue_;
  std::string unasked_;  // why the scheduler could not be asked
};

}  // namespace commandline
