// SlurmCluster: a scheduler of the tests' own: controller, three nodes and their authentication,
// all on this machine and in one folder, on free ports of the loopback. Its programs are children
// of the test and end with it, however it ends; what they started is ended by the destructor. Main
// thread; one at a time.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tests {

class SlurmCluster {
 public:
  // Whether its programs are there.
  static bool IsInstalled();

  // Everything in `folder`, which is there; ready when all nodes are idle, see IsReady.
  explicit SlurmCluster(std::string folder);
  SlurmCluster(const SlurmCluster&) = delete;
  SlurmCluster& operator=(const SlurmCluster&) = delete;
  ~SlurmCluster();

  bool IsReady() const;
  // For SLURM_CONF of whoever calls its commands.
  std::string Configuration() const { return folder_ + "/slurm.conf"; }
  // The log files of its programs, for the message of a failed test.
  std::string Logs() const;

  // A node as if its machine had lost power: daemon, steps and what they run. And switched on
  // again.
  void KillNode(const std::string& node);
  void StartNode(const std::string& node);
  // Ends the controller in order, and starts it again.
  void EndController();
  void StartController();
  // Ends with SIGKILL one process that a task runs, by a word of its command line. False where
  // there is none.
  static bool KillTask(const std::string& word);

 private:
  void Configure();
  void Start(const std::string& name, const std::vector<std::string>& words);
  void End(const std::string& name, int signal);

  std::string folder_;
  std::map<std::string, pid_t> running_;
};

// Looks again and again, up to a minute and a half, until it is so.
bool Until(const std::function<bool()>& isSo);

}  // namespace tests
