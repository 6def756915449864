// Services: what the program needs of the world around it, one service each. main makes them, the
// Application hands them on, and whoever reads, writes, tells or asks takes the one it needs as a
// parameter. A plain value that owns nothing: what it names must outlive whoever has it.
#pragma once

#include "engine/outside/Clock.h"
#include "engine/outside/FileSystem.h"
#include "engine/outside/Ledger.h"
#include "engine/outside/Person.h"
#include "engine/outside/UserFolders.h"
#include "engine/outside/Viewer.h"

namespace engine {

struct Services {
  FileSystem& files;
  Clock& clock;
  Person& person;
  Ledger& ledger;
  const UserFolders& folders;
  Viewer& viewer;
};

// Services for the published functions, which have no parameter for them: those of the innermost
// PublishedServicesScope, else the system's own without a person. Nothing else asks here. Any
// thread.
const Services& PublishedServices();

// The published functions work with these services while it lives, then with the former ones again.
// Every Application has one.
class PublishedServicesScope {
 public:
  explicit PublishedServicesScope(const Services& services);
  PublishedServicesScope(const PublishedServicesScope&) = delete;
  PublishedServicesScope& operator=(const PublishedServicesScope&) = delete;
  ~PublishedServicesScope();

 private:
  const Services* former_;
};

}  // namespace engine
