#include "engine/import/SourceCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "engine/import/ForeignText.h"
#include "host/Filename.h"

namespace engine {
namespace {

struct Suffix {
  const char* text;
  SourceFormat format;
};

constexpr std::array<Suffix, 5> kSuffixes = {{{"gltf", SourceFormat::Gltf},
                                              {"glb", SourceFormat::Glb},
                                              {"obj", SourceFormat::Obj},
                                              {"fbx", SourceFormat::Fbx},
                                              {"dae", SourceFormat::Collada}}};
// Enough for the comment that an FBX file of text begins with.
constexpr std::size_t kBytesLookedAt = 4096;

std::string_view SkipBlanks(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool IsText(std::string_view head) { return head.find('\0') == std::string_view::npos; }

bool IsFbx(std::string_view head) {
  return head.substr(0, 18) == "Kaydara FBX Binary" ||
         (IsText(head) && head.find("FBX") != std::string_view::npos);
}

bool BeginsAs(SourceFormat format, std::string_view head) {
  switch (format) {
    case SourceFormat::Gltf:
      return SkipBlanks(head).substr(0, 1) == "{";
    case SourceFormat::Glb:
      return head.size() >= 20 && head.substr(0, 4) == "glTF";
    case SourceFormat::Obj:
      return IsText(head);
    case SourceFormat::Fbx:
      return IsFbx(head);
    case SourceFormat::Collada:
      return SkipBlanks(head).substr(0, 1) == "<";
    case SourceFormat::None:
      break;
  }
  return false;
}

// A descriptor that is closed with its scope.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

Status Refusal(const std::string& path, const std::string& why) {
  return Status::Failure("\"" + path + "\" " + why);
}

Status CheckKind(const std::string& path, const struct stat& about, std::uint64_t limit) {
  if (S_ISDIR(about.st_mode)) return Refusal(path, "is a folder, not a scene.");
  if (!S_ISREG(about.st_mode)) return Refusal(path, "is not a plain file.");
  if (about.st_size == 0) return Refusal(path, "is empty.");
  if (static_cast<std::uint64_t>(about.st_size) <= limit) return {};
  return Refusal(path, "is too large to import: " + std::to_string(about.st_size) +
                           " bytes, at most " + std::to_string(limit) + ".");
}

Status CheckHead(const std::string& path, int descriptor) {
  std::array<char, kBytesLookedAt> head;
  const ssize_t count = ::pread(descriptor, head.data(), head.size(), 0);
  if (count < 0) return Refusal(path, std::string("cannot be read: ") + std::strerror(errno) + ".");
  const std::string_view bytes(head.data(), static_cast<std::size_t>(count));
  const SourceFormat format = FormatOf(path);
  const bool mayBeUtf16 = format == SourceFormat::Obj || format == SourceFormat::Collada;
  if (BeginsAs(format, mayBeUtf16 && IsMarkedUtf16(bytes) ? FromUtf16(bytes) : bytes)) return {};
  return Refusal(path, "is not what its suffix says, or it is damaged.");
}

}  // namespace

SourceFormat FormatOf(const std::string& path) {
  const host::Filename name(host::String{std::string_view(path)});
  for (const Suffix& suffix : kSuffixes) {
    if (name.CheckSuffix(suffix.text)) return suffix.format;
  }
  return SourceFormat::None;
}

bool IsImportable(const std::string& path) { return FormatOf(path) != SourceFormat::None; }

std::string WhyNotImportable(const std::string& path) {
  return "\"" + path +
         "\" is of no format that can be imported. Those are .gltf, .glb, .fbx, .obj and .dae.";
}

// The open file is looked at and not its name, which may lead elsewhere a moment later.
Status CheckSource(const std::string& path, const ImportLimits& limits) {
  if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos) {
    return Refusal(path, "is not a full path.");
  }
  const OpenFile file(path);
  struct stat about;
  if (file.Get() < 0 || ::fstat(file.Get(), &about) != 0) {
    return Refusal(path, errno == ENOENT
                             ? "does not exist."
                             : std::string("cannot be opened: ") + std::strerror(errno) + ".");
  }
  if (Status kind = CheckKind(path, about, limits.fileBytes); !kind) return kind;
  if (!IsImportable(path))
    return Refusal(path, "has a suffix that is not imported. These are: gltf, glb, obj, fbx, dae.");
  return CheckHead(path, file.Get());
}

}  // namespace engine
