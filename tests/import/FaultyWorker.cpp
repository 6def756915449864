// An import child that ends in every wrong way; the name of the file to import says which.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/import/Frames.h"
#include "engine/outside/Confinement.h"
#include "engine/scene/Ownership.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/import/HostileWorker.h"

namespace {

using engine::FrameKind;
using engine::FrameWriter;

void Spin() {
  volatile unsigned long count = 0;
  while (true) count = count + 1;
}

void Flood(FrameWriter& output) {
  const std::string much(engine::kFrameLimit, 'x');
  while (output.Write(FrameKind::Scene, much)) {
  }
}

// Leaks from the parent into this process: descriptors, working directory, the right to write a
// file. "nothing" if there are none.
std::string Leaks() {
  std::string found;
  for (int descriptor = 4; descriptor < 256; ++descriptor) {
    if (::lseek(descriptor, 0, SEEK_CUR) >= 0)
      found += "descriptor " + std::to_string(descriptor) + " ";
  }
  char folder[8] = {};
  if (::getcwd(folder, sizeof(folder)) == nullptr || std::strcmp(folder, "/") != 0)
    found += "folder ";
  rlimit limit{};
  for (const auto what : {RLIMIT_CORE, RLIMIT_FSIZE, RLIMIT_NPROC}) {
    ::getrlimit(what, &limit);
    if (limit.rlim_max != 0) found += "limit " + std::to_string(static_cast<int>(what)) + " ";
  }
  return found.empty() ? "nothing" : found;
}

// An end that the walls must let through.
void AbortConfined() {
  engine::DropPrivileges();
  engine::AllowComputingOnly(engine::AllowReadingOnly({"/"}));
  std::abort();
}

// A scene without a fault from a child that its system could not confine.
void ImportUnconfined(FrameWriter& writer) {
  const engine::OwnedDocument doc(host::BaseDocument::Alloc());
  writer.Write(FrameKind::Weakness, "This system cannot confine anything.");
  const auto scene = engine::WriteScene(*doc);
  for (const std::string& piece : scene.Value()) writer.Write(FrameKind::Scene, piece);
  writer.Write(FrameKind::Done, "");
}

void Write(int output, const char* text) {
  if (::write(output, text, std::strlen(text)) < 0) std::_Exit(9);
}

int Behave(const std::string& how, const std::string& path, int output) {
  FrameWriter writer(output);
  if (how == "crash") ::signal(SIGSEGV, SIG_DFL);  // a sanitizer catches it otherwise
  if (how == "crash") ::raise(SIGSEGV);
  if (how == "abort") std::abort();
  if (how == "killed") ::raise(SIGKILL);
  if (how == "sleep") ::sleep(600);
  if (how == "closed") ::close(output);
  if (how == "closed") ::sleep(600);
  if (how == "spin") Spin();
  if (how == "status") return 3;
  if (how == "noise") Write(output, "this is no frame at all");
  if (how == "flood") Flood(writer);
  if (how == "leaks") writer.Write(FrameKind::Failure, Leaks());
  if (how == "hostile") writer.Write(FrameKind::Failure, tests::OpenDoors(path));
  if (how == "confined") AbortConfined();
  if (how == "unconfined") ImportUnconfined(writer);
  if (how == "control") writer.Write(FrameKind::Failure, "line\nline\x1b[31m");
  if (how == "garbage") writer.Write(FrameKind::Scene, "not a scene");
  if (how == "garbage" || how == "silent") writer.Write(FrameKind::Done, "");
  if (how == "wordy") {
    for (int i = 0; i < 1001; ++i) writer.Write(FrameKind::Note, std::string(1001, 'n'));
    writer.Write(FrameKind::Note, "not kept");
    ImportUnconfined(writer);
  }
  if (how == "chatter") {
    for (int i = 0; writer.Write(FrameKind::Progress, std::to_string(i % 1000)); ++i)
      ::usleep(1000);
  }
  return how == "leaks" || how == "control" || how == "hostile" ? 1 : 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const std::string path = arguments[2];
  const std::size_t start = path.rfind('/') + 1;
  return Behave(path.substr(start, path.rfind('.') - start), path, std::atoi(arguments[3]));
}
