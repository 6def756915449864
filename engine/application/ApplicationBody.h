// ApplicationBody: what an Application holds inside, part by part, and the way from the published
// functions to it. Main thread.
#pragma once

#include <atomic>
#include <map>
#include <string>

#include "engine/application/Application.h"
#include "engine/application/DocumentList.h"
#include "engine/application/FormerVersions.h"
#include "engine/application/PluginLibraries.h"
#include "engine/application/Preferences.h"
#include "engine/application/SceneHooks.h"

namespace engine {

// The scene file that a document was read from or last saved to.
struct KnownFile {
  std::string path;
  FileAsRead file;
};

struct ApplicationBody {
  ApplicationBody(const Services& givenServices, ApplicationSetup givenSetup)
      : services(givenServices), setup(std::move(givenSetup)) {}

  // That of the application that lives, or null.
  static ApplicationBody* Current() {
    Application* application = Application::Current();
    return application != nullptr ? application->body_.get() : nullptr;
  }

  Application* former = nullptr;  // in whose place this one is
  const Services services;
  const PublishedServicesScope published{services};
  ApplicationSetup setup;
  Preferences preferences{services};
  FormerVersions formerVersions{services, preferences};
  SceneHooks hooks;
  PluginLibraries plugins;
  DocumentList documents{hooks};
  std::map<host::ULLONG, KnownFile> files;  // by the number of the document
  std::atomic<bool> eventPosted{false};
  int commandDepth = 0;  // commands running now, one inside the other
};
}  // namespace engine
