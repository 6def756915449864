// Preferences: the settings that plug-ins keep with the user, one container per plug-in ID, in the
// file "preferences" of the configuration folder. Read when first asked for, replaced atomically.
// Main thread.
#pragma once

#include <map>
#include <string>

#include "engine/core/Result.h"
#include "engine/outside/Services.h"
#include "host/BaseContainer.h"

namespace engine {

class Preferences {
 public:
  explicit Preferences(const Services& services)
      : files_(services.files), ledger_(services.ledger), folder_(services.folders.config) {}

  // Null when there is nothing under `id`. Valid until the next Set.
  const host::BaseContainer* Get(host::LONG id);
  // Merges `data` into what is there, or replaces it, and writes the file. What other programs
  // wrote under other IDs meanwhile is kept. On failure the value still holds for this session.
  // `data` is a copy, as it may be what Get answered.
  Status Set(host::LONG id, host::BaseContainer data, bool merge);

 private:
  using Containers = std::map<host::LONG, host::BaseContainer>;

  // Empty where the user has no configuration folder.
  std::string File() const;
  // Reads the file anew, with what was set in this session on top. A damaged one is moved to
  // "preferences.damaged", noted in the ledger and counts as empty. Fails when it must not be
  // overwritten: unreadable, or of a later version.
  Status Read();
  Status KeepAside(const std::string& reason);

  FileSystem& files_;
  Ledger& ledger_;
  const std::string folder_;
  bool read_ = false;
  Containers stored_;
  Containers session_;
};

}  // namespace engine
