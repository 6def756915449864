// Viewer: shows a file or folder with the program that the system has for it. Opening checks the
// path rules and writes the ledger. It owns nothing. Main thread.
#pragma once

#include <functional>
#include <string>

#include "engine/core/Result.h"
#include "engine/outside/FileSystem.h"

namespace engine {

class Viewer {
 public:
  Viewer(FileSystem& files, Ledger& ledger) : files_(files), ledger_(ledger) {}
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;
  virtual ~Viewer() = default;

  // Does not wait for the viewer. Fails for what is not there.
  Status Open(const std::string& path);

 protected:
  // `path` is checked and there.
  virtual Status DoOpen(const std::string& path) = 0;

 private:
  FileSystem& files_;
  Ledger& ledger_;
};

// Starts the system's own viewer as a process of its own.
class SystemViewer : public Viewer {
 public:
  using Viewer::Viewer;

 protected:
  // Fails when the system has no such program.
  Status DoOpen(const std::string& path) override;
};

// From now on `failed` hears, on a thread of its own, of files whose viewer was started and ended
// with a failure: mostly because the system knows no program for such files. One listener at a
// time; without it nobody hears.
void ListenForFailedViewers(std::function<void(const std::string& path)> failed);

}  // namespace engine
