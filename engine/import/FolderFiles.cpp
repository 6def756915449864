#include "engine/import/FolderFiles.h"

#include <assimp/MemoryIOWrapper.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>
#include <utility>

#include "engine/import/ForeignText.h"
#include "engine/import/SourceCheck.h"
#include "engine/outside/FileHandle.h"

namespace engine {
namespace {

namespace fs = std::filesystem;

// The kinds of text that the library reads without looking how they are written.
bool IsText(const std::string& file) {
  const SourceFormat format = FormatOf(file);
  return format == SourceFormat::Obj || format == SourceFormat::Collada ||
         fs::path(file).extension() == ".mtl";
}

struct HeldText {
  std::string text;
};
// The text is a base class, so that it is there before the stream that reads it.
class HeldStream : HeldText, public Assimp::MemoryIOStream {
 public:
  explicit HeldStream(std::string held)
      : HeldText{std::move(held)},
        MemoryIOStream(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()) {}
};

// `name` below `folder`, part by part and through no link: for kernels that cannot look after it.
int WalkBelow(int folder, const fs::path& name) {
  int at = ::dup(folder);
  for (auto part = name.begin(); part != name.end() && at >= 0; ++part) {
    const bool isLast = std::next(part) == name.end();
    const int flags = O_CLOEXEC | O_NOFOLLOW | (isLast ? O_RDONLY | O_NONBLOCK : O_PATH);
    const int next = *part == ".." ? -1 : ::openat(at, part->c_str(), flags);
    ::close(at);
    at = next;
  }
  return at;
}

// A descriptor, or -1. Links that lead out of the folder are refused.
int OpenBelow(const std::string& folder, const std::string& name) {
  const int place = ::open(folder.c_str(), O_PATH | O_CLOEXEC | O_DIRECTORY);
  if (place < 0) return -1;
  // RESOLVE_BENEATH has the kernel look after every link on the way at the moment of opening, which
  // no check beforehand could. O_NONBLOCK keeps a named pipe from holding the child for ever.
  open_how how{};
  how.flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  auto file = static_cast<int>(::syscall(SYS_openat2, place, name.c_str(), &how, sizeof(how)));
  if (file < 0 && (errno == ENOSYS || errno == EPERM)) file = WalkBelow(place, name);
  ::close(place);
  return file;
}

// The C library's own fstat is one that a path could be given to.
bool IsPlain(int file, struct stat& about) {
#ifdef SYS_fstat
  return ::syscall(SYS_fstat, file, &about) == 0 && S_ISREG(about.st_mode);
#else
  return ::fstat(file, &about) == 0 && S_ISREG(about.st_mode);
#endif
}

// Nothing where the descriptor is that of anything else, which is closed. Only plain files have a
// size that can be read in one go.
struct PlainFile {
  explicit PlainFile(int descriptor) : handle(descriptor) {
    if (!handle || !IsPlain(descriptor, about)) handle.Close();
  }
  explicit operator bool() const { return static_cast<bool>(handle); }

  FileHandle handle;
  struct stat about {};
};

std::string ReadAll(const PlainFile& file) {
  std::string bytes(static_cast<std::size_t>(file.about.st_size), '\0');
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = ::read(file.handle.Get(), bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

}  // namespace

const FolderFiles::Places& FolderFiles::PlacesOf(const std::string& scene) {
  static std::map<std::string, Places> known;
  const auto [entry, isNew] = known.try_emplace(scene);
  Places& places = entry->second;
  if (!isNew) return places;
  std::error_code error;
  places.folders.push_back(fs::weakly_canonical(fs::path(scene).parent_path(), error).string());
  const fs::path target = fs::weakly_canonical(scene, error);
  places.file = target.filename();
  if (target.parent_path() != places.folders.front())
    places.folders.push_back(target.parent_path().string());
  return places;
}

FolderFiles::FolderFiles(const std::string& scene)
    : scene_(fs::path(scene).lexically_normal()),
      written_(fs::path(scene_).parent_path()),
      places_(PlacesOf(scene)) {}

// A descriptor, or -1.
int FolderFiles::OpenInside(const std::string& file) const {
  const std::string path = fs::path(file).lexically_normal();
  const auto below = [&](const std::string& as, const std::string& folder) {
    const std::string start = as.ends_with('/') ? as : as + "/";
    return path.starts_with(start) ? OpenBelow(folder, path.substr(start.size())) : -1;
  };
  // The library asks for files by the folder as the person named it, which may be a way through
  // links that the child can no longer follow: the folder that was found beforehand is opened in
  // its place.
  const std::vector<std::string>& folders = places_.folders;
  int opened = below(written_, folders.front());
  for (std::size_t i = 0; i < folders.size() && opened < 0; ++i)
    opened = below(folders[i], folders[i]);
  // Beside the target of a scene that is a link, and that target itself.
  if (opened < 0 && folders.size() > 1) opened = below(written_, folders[1]);
  if (opened < 0 && path == scene_) opened = OpenBelow(folders.back(), places_.file);
  return opened;
}

bool FolderFiles::Exists(const char* file) const {
  return static_cast<bool>(PlainFile(OpenInside(file)));
}

std::string FolderFiles::ReadWhole(const std::string& file) const {
  const PlainFile opened(OpenInside(file));
  return opened ? ReadAll(opened) : std::string();
}

std::time_t FolderFiles::ChangedAt(const std::string& file) const {
  const PlainFile opened(OpenInside(file));
  return opened ? opened.about.st_mtime : 0;
}

Assimp::IOStream* FolderFiles::Open(const char* file, const char* mode) {
  if (std::strpbrk(mode, "wa+") != nullptr) return nullptr;
  const PlainFile opened(OpenInside(file));
  if (!opened) return nullptr;
  opened_.emplace_back(file);
  std::string text = ReadAll(opened);
  if (IsText(file)) {
    if (IsMarkedUtf16(text)) text = FromUtf16(text);
    if (FormatOf(file) == SourceFormat::Collada)
      text = WithNamedCameras(WithoutLeadingBlanks(text));
  }
  return new HeldStream(std::move(text));
}

}  // namespace engine
