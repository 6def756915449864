// SystemServices: the services of the system that the program runs on, with a ledger of their own,
// for one person. It owns them all but the person, who must outlive it. Main thread; one of its
// own, without a person, on any one thread.
#pragma once

#include "engine/outside/RealFileSystem.h"
#include "engine/outside/Services.h"

namespace engine {

class SystemServices {
 public:
  // Without a person: texts to the standard error stream, questions answered no.
  SystemServices() : SystemServices(nobody_) {}
  explicit SystemServices(Person& person) : files_(ledger_, person), person_(person) {}
  SystemServices(const SystemServices&) = delete;
  SystemServices& operator=(const SystemServices&) = delete;

  const Services& Get() const { return services_; }

 private:
  AbsentPerson nobody_;
  Ledger ledger_;
  RealFileSystem files_;
  Person& person_;
  SystemClock clock_;
  UserFolders folders_ = FindUserFolders();
  SystemViewer viewer_{files_, ledger_};
  Services services_{files_, clock_, person_, ledger_, folders_, viewer_};
};

}  // namespace engine
