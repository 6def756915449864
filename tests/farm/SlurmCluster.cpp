#include "tests/farm/SlurmCluster.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr const char* kNodes[] = {"n1", "n2", "n3"};

std::string Place(const std::string& program) {
  for (const char* folder : {"/usr/sbin/", "/usr/bin/", "/sbin/"}) {
    if (access((folder + program).c_str(), X_OK) == 0) return folder + program;
  }
  return "";
}

// Free at this moment.
int FreePort() {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = static_cast<sockaddr*>(static_cast<void*>(&address));
  const bool known =
      bind(descriptor, generic, size) == 0 && getsockname(descriptor, generic, &size) == 0;
  close(descriptor);
  return known ? ntohs(address.sin_port) : 0;
}

std::string UserName() {
  const passwd* entry = getpwuid(getuid());
  return entry ? entry->pw_name : "root";
}

std::string HostName() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  return std::string(name).substr(0, std::string(name).find('.'));
}

// The words of a process's command line with blanks between them; empty for one that is gone.
std::string CommandOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
  std::string text((std::istreambuf_iterator<char>(file)), {});
  for (char& letter : text) letter = letter == '\0' ? ' ' : letter;
  return text;
}

pid_t ParentOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text((std::istreambuf_iterator<char>(file)), {});
  std::istringstream rest(text.substr(std::min(text.size(), text.rfind(')') + 2)));
  char state = 0;
  pid_t parent = 0;
  rest >> state >> parent;
  return parent;
}

// All that this process and its children started, however far down: orphans come back to it.
std::vector<pid_t> Descendants(pid_t root) {
  std::multimap<pid_t, pid_t> children;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const pid_t process = std::stoi(name);
    children.emplace(ParentOf(process), process);
  }
  std::vector<pid_t> found{root};
  for (std::size_t i = 0; i < found.size(); ++i) {
    const auto [begin, end] = children.equal_range(found[i]);
    for (auto at = begin; at != end; ++at) found.push_back(at->second);
  }
  found.erase(found.begin());
  return found;
}

}  // namespace

bool Until(const std::function<bool()>& isSo) {
  for (int tries = 0; tries < 900; ++tries) {
    if (isSo()) return true;
    poll(nullptr, 0, 100);
  }
  return false;
}

bool SlurmCluster::IsInstalled() {
  for (const char* program : {"munged", "slurmctld", "slurmd", "sbatch", "squeue", "sinfo"}) {
    if (Place(program).empty()) return false;
  }
  return true;
}

SlurmCluster::SlurmCluster(std::string folder) : folder_(std::move(folder)) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  for (const char* name : {"state", "spool", "log", "run", "munge"})
    fs::create_directory(folder_ + "/" + name);
  // Its programs refuse a place that others cannot reach.
  fs::permissions(fs::path(folder_).parent_path(), fs::perms(0755));
  fs::permissions(folder_, fs::perms(0755));
  fs::permissions(folder_ + "/munge", fs::perms(0700));
  std::random_device random;
  std::string key;
  for (int i = 0; i < 1024; ++i) key += static_cast<char>(random());
  WriteText(folder_ + "/munge/key", key);
  fs::permissions(folder_ + "/munge/key", fs::perms(0400));
  Configure();
  const auto own = [&](const char* option, const char* file) {
    return std::string(option) + folder_ + file;
  };
  Start("munged", {"--foreground", own("--key-file=", "/munge/key"),
                   own("--socket=", "/run/munge.sock"), own("--pid-file=", "/run/munged.pid"),
                   own("--log-file=", "/log/munged.log"), own("--seed-file=", "/munge/seed")});
  Until([&] { return fs::exists(folder_ + "/run/munge.sock"); });
  StartController();
  for (const char* node : kNodes) StartNode(node);
}

void SlurmCluster::Configure() {
  std::ostringstream text;
  const std::string user = UserName();
  text << "ClusterName=stagemarks\nSlurmctldHost=" << HostName()
       << "(127.0.0.1)\nSlurmUser=" << user << "\nSlurmdUser=" << user
       << "\nAuthType=auth/munge\nAuthInfo=socket=" << folder_
       << "/run/munge.sock,cred_expire=5\nStateSaveLocation=" << folder_
       << "/state\nSlurmdSpoolDir=" << folder_ << "/spool/%n\nSlurmctldPidFile=" << folder_
       << "/run/slurmctld.pid\nSlurmdPidFile=" << folder_
       << "/run/slurmd-%n.pid\nSlurmctldLogFile=" << folder_
       << "/log/slurmctld.log\nSlurmdLogFile=" << folder_
       << "/log/slurmd-%n.log\nSlurmctldPort=" << FreePort()
       << "\nProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\nMpiDefault=none\n"
          "SelectType=select/cons_tres\nSelectTypeParameters=CR_Core\nReturnToService=2\n"
          "SlurmdTimeout=1\nMessageTimeout=2\nTCPTimeout=1\n"
          "SchedulerParameters=batch_sched_delay=0,sched_interval=1\n";
  for (const char* node : kNodes)
    text << "NodeName=" << node << " NodeHostname=" << HostName()
         << " NodeAddr=127.0.0.1 Port=" << FreePort() << " CPUs=1 State=UNKNOWN\n";
  text << "PartitionName=local Nodes=n[1-3] Default=YES MaxTime=60 State=UP\n";
  WriteText(Configuration(), text.str());
}

SlurmCluster::~SlurmCluster() {
  while (!running_.empty()) End(running_.rbegin()->first, SIGKILL);
  for (const pid_t process : Descendants(getpid())) kill(process, SIGKILL);
  while (waitpid(-1, nullptr, 0) > 0) {
  }
}

void SlurmCluster::Start(const std::string& name, const std::vector<std::string>& words) {
  const std::string program = Place(name.substr(0, name.find(' ')));
  const std::string log = folder_ + "/log/" + name + ".out";
  const pid_t child = fork();
  if (child > 0) running_[name] = child;
  if (child != 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setsid();
  setenv("SLURM_CONF", Configuration().c_str(), 1);
  const int out = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(out, STDERR_FILENO);
  std::vector<char*> call{const_cast<char*>(program.c_str())};
  for (const std::string& word : words) call.push_back(const_cast<char*>(word.c_str()));
  call.push_back(nullptr);
  execv(program.c_str(), call.data());
  _exit(127);
}

void SlurmCluster::End(const std::string& name, int signal) {
  const auto found = running_.find(name);
  if (found == running_.end()) return;
  kill(found->second, signal);
  waitpid(found->second, nullptr, 0);
  running_.erase(found);
}

bool SlurmCluster::IsReady() const {
  const ChildResult nodes =
      RunChild(Place("sinfo"), {"-hN", "-o", "%T"}, {{"SLURM_CONF", Configuration()}});
  return nodes.out == "idle\nidle\nidle\n";
}

std::string SlurmCluster::Logs() const {
  std::string text;
  for (const auto& entry : fs::directory_iterator(folder_ + "/log"))
    text += entry.path().filename().string() + ":\n" + ReadText(entry.path());
  return text;
}

// The steps of a node name it in their command line; what a step runs is below it.
void SlurmCluster::KillNode(const std::string& node) {
  const pid_t daemon = running_["slurmd " + node];
  std::vector<pid_t> doomed = Descendants(daemon);
  const std::string spool = folder_ + "/spool/" + node;
  for (const pid_t process : Descendants(getpid())) {
    std::ifstream file("/proc/" + std::to_string(process) + "/environ");
    const std::string environment((std::istreambuf_iterator<char>(file)), {});
    if (environment.find("SLURMD_NODENAME=" + node) == std::string::npos) continue;
    doomed.push_back(process);
    doomed.push_back(ParentOf(process));
  }
  End("slurmd " + node, SIGKILL);
  for (const pid_t process : doomed) {
    if (process != getpid() && process > 1) kill(process, SIGKILL);
  }
}

void SlurmCluster::StartNode(const std::string& node) {
  fs::create_directory(folder_ + "/spool/" + node);
  Start("slurmd " + node, {"-D", "-N", node});
}

void SlurmCluster::EndController() { End("slurmctld", SIGTERM); }

void SlurmCluster::StartController() { Start("slurmctld", {"-D"}); }

bool SlurmCluster::KillTask(const std::string& word) {
  for (const pid_t process : Descendants(getpid())) {
    const std::string command = CommandOf(process);
    if (command.find("stagemarks farm run") == std::string::npos ||
        command.find(word) == std::string::npos)
      continue;
    return kill(process, SIGKILL) == 0;
  }
  return false;
}

}  // namespace tests
