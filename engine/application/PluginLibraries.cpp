#include "engine/application/PluginLibraries.h"

#include <dlfcn.h>
#include <grp.h>
#include <link.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <set>

#include "engine/application/PluginTrial.h"
#include "engine/outside/FilePlace.h"

namespace engine {
namespace {

constexpr host::LONG kInitializeResource = 1;  // PluginMessage

std::string FolderOfPath(const std::string& path) { return path.substr(0, path.rfind('/')); }

std::string NameOfPlugin(const std::string& path) {
  const std::string file = path.substr(path.rfind('/') + 1);
  return file.substr(0, file.rfind('.'));
}

LoadReport Report(LoadOutcome outcome, const std::string& path, const std::string& reason) {
  const std::string name = "Plug-in \"" + NameOfPlugin(path) + "\" ";
  if (outcome == LoadOutcome::Loaded) return {outcome, path, name + "was loaded (Loaded)."};
  return {outcome, path, name + "was not loaded (" + NameOf(outcome) + "): " + reason + "."};
}

void DestroyCommand(CommandPlugin& command) {
  delete command.data;
  host::BaseBitmap::Free(command.icon);
}

// Sets a pointer for a while. Also where the plug-in throws.
template <class T>
class Meanwhile {
 public:
  Meanwhile(T*& place, T* value) : place_(place), former_(place) { place_ = value; }
  Meanwhile(const Meanwhile&) = delete;
  Meanwhile& operator=(const Meanwhile&) = delete;
  ~Meanwhile() { place_ = former_; }

 private:
  T*& place_;
  T* former_;
};

// A plug-in is not to throw; one that does has failed.
template <class Call>
bool Succeeds(Call call) {
  try {
    return call();
  } catch (...) {
    return false;
  }
}

std::string WhyResourcesWereRefused(const std::string& folder, FileSystem& files) {
  if (files.Kind(folder) == FileKind::Folder) return "its resources could not be initialized";
  return "its folder \"" + folder + "\" is missing; install the plug-in again";
}

// The folders on the way to a path, and the path.
std::vector<std::string> WayTo(const std::string& path) {
  std::vector<std::string> way{"/"};
  for (std::size_t end = 0; end < path.size();) {
    end = std::min(path.find('/', end + 1), path.size());
    way.push_back(path.substr(0, end));
  }
  return way;
}

// Many systems give each user a group that nobody else is in, with the user's name or number.
bool IsOwnGroup(gid_t group) {
  if (group == 0 || (group == ::getegid() && group == ::geteuid())) return true;
  const passwd* user = group == ::getegid() ? ::getpwuid(::geteuid()) : nullptr;
  const std::string name = user ? user->pw_name : "";
  const struct group* facts = user ? ::getgrgid(group) : nullptr;
  return facts && name == facts->gr_name;
}

bool NamesOthers(const std::string& path) {
  return ::getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

// Says of places whether somebody else than the user, the system and those who may change this very
// program may put other code there.
class CodePlaces {
 public:
  CodePlaces() {
    Dl_info own{};
    if (::dladdr(reinterpret_cast<const void*>(&WayTo), &own) == 0) return;
    for (const std::string& place : WayTo(RealPath(own.dli_fname))) {
      struct stat facts {};
      if (::stat(place.c_str(), &facts) != 0) continue;
      own_.insert(place);
      // Whoever may change this program could put the same code into it: loading it from elsewhere
      // adds no danger.
      users_.insert(facts.st_uid);
      if ((facts.st_mode & S_IWGRP) != 0) groups_.insert(facts.st_gid);
    }
  }

  // Empty where nobody may. Where there is nothing, nobody may.
  std::string WhyNot(const std::string& place) const {
    struct stat facts {};
    if (own_.contains(place) || ::stat(place.c_str(), &facts) != 0) return "";
    if (!users_.contains(facts.st_uid)) {
      const passwd* user = ::getpwuid(facts.st_uid);
      return "\"" + place + "\" belongs to \"" +
             (user ? user->pw_name : std::to_string(facts.st_uid)) +
             "\", who may change it; make it your own or the system's (chown)";
    }
    return MayBeWritten(place, facts)
               ? "others may change \"" + place + "\"; take that right away (chmod go-w)"
               : "";
  }

 private:
  // In a folder with the sticky bit nobody can replace what is another's.
  bool MayBeWritten(const std::string& place, const struct stat& facts) const {
    if (S_ISDIR(facts.st_mode) && (facts.st_mode & S_ISVTX) != 0) return false;
    const bool byGroup = (facts.st_mode & S_IWGRP) != 0;
    return (facts.st_mode & S_IWOTH) != 0 ||
           (byGroup &&
            (NamesOthers(place) || (!groups_.contains(facts.st_gid) && !IsOwnGroup(facts.st_gid))));
  }

  std::set<std::string> own_;
  std::set<uid_t> users_{0, ::geteuid()};
  std::set<gid_t> groups_;
};

// Why code from there is not run, empty where it may be: a relative path leads to wherever the
// program is called, and of any folder on the way another one may be made.
std::string WhyUntrusted(const std::string& path) {
  if (!path.starts_with('/'))
    return "\"" + path + "\" is no full path; give STAGEMARKS_PLUGINS one that begins with a slash";
  const CodePlaces places;
  // The way as it is written, whose links could be turned, and the way to what it leads to now.
  for (const std::string& way : {path, RealPath(path)}) {
    for (const std::string& place : WayTo(way)) {
      if (std::string reason = places.WhyNot(place); !reason.empty()) return reason;
    }
  }
  return "";
}

}  // namespace

const char* NameOf(LoadOutcome outcome) {
  switch (outcome) {
    case LoadOutcome::Loaded:
      return "Loaded";
    case LoadOutcome::Missing:
      return "Missing";
    case LoadOutcome::Untrusted:
      return "Untrusted";
    case LoadOutcome::NotALibrary:
      return "NotALibrary";
    case LoadOutcome::NoEntryPoints:
      return "NoEntryPoints";
    case LoadOutcome::ResourceRefused:
      return "ResourceRefused";
    case LoadOutcome::StartRefused:
      return "StartRefused";
    case LoadOutcome::IdTaken:
      break;
  }
  return "IdTaken";
}

LoadReport PluginLibraries::Load(const std::string& path, FileSystem& files, SceneHooks& hooks) {
  libraries_.push_back(std::make_unique<Library>());
  Library& library = *libraries_.back();
  library.path = path;
  LoadReport report = CheckFile(library, files);
  if (report.outcome == LoadOutcome::Loaded) report = Try(library, files, hooks);
  if (report.outcome == LoadOutcome::Loaded) report = Open(library);
  if (report.outcome == LoadOutcome::Loaded) report = Start(library, files);
  if (report.outcome == LoadOutcome::Loaded) {
    for (const RegisteredHook& hook : library.hooks) hooks.Add(hook);
    return report;
  }
  TakeBack(library);
  if (library.handle != nullptr) dlclose(library.handle);
  libraries_.pop_back();
  return report;
}

LoadReport PluginLibraries::CheckFile(const Library& library, FileSystem& files) const {
  const std::string& path = library.path;
  if (const std::string reason = WhyUntrusted(path); !reason.empty())
    return Report(LoadOutcome::Untrusted, path, reason);
  const FileKind kind = files.Kind(path);
  if (kind == FileKind::Missing)
    return Report(LoadOutcome::Missing, path, "there is no file \"" + path + "\"");
  if (kind != FileKind::File)
    return Report(LoadOutcome::NotALibrary, path,
                  "the file \"" + path + "\" is no loadable library");
  return Report(LoadOutcome::Loaded, path, "");
}

// A damaged file can end whoever loads it, in the loader already; so a child does all of it first,
// from the loading to the unloading.
LoadReport PluginLibraries::Try(Library& library, FileSystem& files, SceneHooks& hooks) {
  const std::string why = WhyItWouldEnd([&] {
    if (Open(library).outcome != LoadOutcome::Loaded) return;
    if (Start(library, files).outcome == LoadOutcome::Loaded) {
      for (const RegisteredHook& hook : library.hooks) hooks.Add(hook);
      library.entries.end();
      for (const RegisteredHook& hook : library.hooks) hooks.Remove(hook.id);
    }
    TakeBack(library);
    dlclose(library.handle);
  });
  if (why.empty()) return Report(LoadOutcome::Loaded, library.path, "");
  return Report(LoadOutcome::NotALibrary, library.path,
                "the file \"" + library.path + "\" is damaged: when it is loaded, " + why +
                    "; install the plug-in again");
}

LoadReport PluginLibraries::Open(Library& library) {
  const std::string& path = library.path;
  const std::string noLibrary = "the file \"" + path + "\" is no loadable library";
  // All symbols now, so that a missing one is told here and does not end the program in the middle
  // of a command; local, so that plug-ins do not meet in their names.
  library.handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library.handle == nullptr)
    return Report(LoadOutcome::NotALibrary, path, noLibrary + " (" + dlerror() + ")");
  const auto same = [&](const auto& other) {
    return other.get() != &library && other->handle == library.handle;
  };
  // The loader gives one handle for one file, however often it is loaded.
  if (std::any_of(libraries_.begin(), libraries_.end(), same))
    return Report(LoadOutcome::IdTaken, path, "it is loaded already");
  const auto find = [&](const char* name, auto& entry) {
    entry = reinterpret_cast<std::decay_t<decltype(entry)>>(dlsym(library.handle, name));
    return entry != nullptr;
  };
  for (const char* missing :
       {find("PluginStart", library.entries.start) ? nullptr : "PluginStart",
        find("PluginMessage", library.entries.message) ? nullptr : "PluginMessage",
        find("PluginEnd", library.entries.end) ? nullptr : "PluginEnd"}) {
    if (missing)
      return Report(LoadOutcome::NoEntryPoints, path, std::string("it exports no ") + missing);
  }
  return Report(LoadOutcome::Loaded, path, "");
}

LoadReport PluginLibraries::Start(Library& library, FileSystem& files) {
  const Meanwhile running(running_, &library);
  const std::string& path = library.path;
  if (!Succeeds([&] { return library.entries.message(kInitializeResource, nullptr); })) {
    return Report(LoadOutcome::ResourceRefused, path,
                  WhyResourcesWereRefused(FolderOfPath(path) + "/res", files));
  }
  const Meanwhile starting(starting_, &library);
  const bool started = Succeeds([&] { return library.entries.start(); });
  // Told even where the plug-in goes on regardless and says that it has started.
  if (library.idTaken) {
    return Report(LoadOutcome::IdTaken, path,
                  "the plug-in ID " + std::to_string(library.takenId) + " is taken already");
  }
  if (!started) return Report(LoadOutcome::StartRefused, path, "it refused to start");
  return Report(LoadOutcome::Loaded, path, "");
}

// Three rounds: all plug-ins hear of the end before anything of theirs is destroyed, and no code
// goes while objects of it live.
void PluginLibraries::UnloadAll(SceneHooks& hooks) {
  for (auto it = libraries_.rbegin(); it != libraries_.rend(); ++it) {
    const Meanwhile running(running_, it->get());
    Succeeds([&] { return (*it)->entries.end(), true; });
  }
  for (const auto& library : libraries_) {
    for (const RegisteredHook& hook : library->hooks) hooks.Remove(hook.id);
  }
  while (!libraries_.empty()) {
    TakeBack(*libraries_.back());
    dlclose(libraries_.back()->handle);
    libraries_.pop_back();
  }
}

void PluginLibraries::TakeBack(const Library& library) {
  const auto its = [&](const CommandPlugin& command) {
    return std::find(library.ids.begin(), library.ids.end(), command.id) != library.ids.end();
  };
  const auto end = std::stable_partition(commands_.begin(), commands_.end(),
                                         [&](const auto& c) { return !its(c); });
  std::vector<CommandPlugin> gone(end, commands_.end());
  commands_.erase(end, commands_.end());
  for (CommandPlugin& command : gone) DestroyCommand(command);
}

bool PluginLibraries::IsTaken(host::LONG id) const {
  return std::any_of(libraries_.begin(), libraries_.end(), [&](const auto& library) {
    return std::find(library->ids.begin(), library->ids.end(), id) != library->ids.end();
  });
}

bool PluginLibraries::ClaimId(host::LONG id) {
  if (starting_ == nullptr) return false;
  if (IsTaken(id)) {
    starting_->idTaken = true;
    starting_->takenId = id;
    return false;
  }
  starting_->ids.push_back(id);
  return true;
}

bool PluginLibraries::Register(CommandPlugin command) {
  if (!ClaimId(command.id)) return false;
  commands_.push_back(std::move(command));
  return true;
}

bool PluginLibraries::Register(const RegisteredHook& hook) {
  if (!ClaimId(hook.id)) return false;
  starting_->hooks.push_back(hook);
  return true;
}

std::optional<std::string> PluginLibraries::FolderOf(const void* address) const {
  Dl_info info;
  void* map = nullptr;
  // By the loader's own record: a path may be written in several ways.
  if (dladdr1(address, &info, &map, RTLD_DL_LINKMAP) != 0) {
    for (const auto& library : libraries_) {
      void* own = nullptr;
      const bool known =
          library->handle != nullptr && dlinfo(library->handle, RTLD_DI_LINKMAP, &own) == 0;
      if (known && own == map) return FolderOfPath(library->path);
    }
  }
  // A plug-in that hands our result on as its own was left by a jump, so that the address is that
  // of its caller: us.
  if (running_ != nullptr) return FolderOfPath(running_->path);
  return std::nullopt;
}

}  // namespace engine
