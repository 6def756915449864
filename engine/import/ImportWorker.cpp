// The import child: confines itself, reads the file, sends what came out.
#include <cstdio>
#include <ctime>
#include <exception>
#include <new>

#include "engine/import/FolderFiles.h"
#include "engine/import/Frames.h"
#include "engine/import/Import.h"
#include "engine/import/SceneReader.h"
#include "engine/outside/Confinement.h"
#include "engine/scene/SeededIds.h"
#include "engine/scenefile/FileAsRead.h"
#include "engine/scenefile/SceneFile.h"

namespace engine {
namespace {

// Sends thousandths, each once; false when nobody listens any more.
class ProgressSender {
 public:
  explicit ProgressSender(FrameWriter& output) : output_(output) {}
  bool Tell(double fraction) {
    const int thousandths = static_cast<int>(fraction * 1000);
    if (thousandths <= last_) return true;
    last_ = thousandths;
    return output_.Write(FrameKind::Progress, std::to_string(thousandths));
  }

 private:
  FrameWriter& output_;
  int last_ = -1;
};

Status SendScene(const host::BaseDocument& doc, FrameWriter& output) {
  const Result<std::vector<std::string>> pieces = WriteScene(doc);
  if (!pieces) return pieces.GetStatus();
  for (const std::string& piece : pieces.Value()) output.Write(FrameKind::Scene, piece);
  return {};
}

// From the file's bytes: the same file gives the same identities, wherever it lies.
std::uint64_t SeedOf(const std::string& path) {
  const std::string bytes = FolderFiles(path).ReadWhole(path);
  const std::string_view whole = bytes;
  return HashOfContent({&whole, 1});
}

// For good. What the kernel cannot do is said, and the reading goes on: it has limits all the same.
void Confine(const std::string& path, FrameWriter& output) {
  ::tzset();  // while the zone's file can be read
  DropPrivileges();
  const bool areFilesConfined = AllowReadingOnly(FolderFiles::FoldersOf(path));
  if (!areFilesConfined) {
    output.Write(FrameKind::Weakness,
                 "This system cannot keep the importer from reading other files (Landlock), so "
                 "import only what you trust.");
  }
  if (!AllowComputingOnly(areFilesConfined)) {
    output.Write(FrameKind::Weakness,
                 "This system cannot keep the importer from what it has no need of (seccomp), so "
                 "import only what you trust.");
  }
}

Status Work(const std::string& path, FrameWriter& output) {
  Confine(path, output);
  const SeededIds ids(SeedOf(path));
  OwnedDocument doc(host::BaseDocument::Alloc());
  ProgressSender progress(output);
  const auto notes =
      ReadForeignScene(path, *doc, [&](double fraction) { return progress.Tell(fraction); });
  if (!notes) return notes.GetStatus();
  for (const std::string& note : notes.Value()) output.Write(FrameKind::Note, note);
  Status sent = SendScene(*doc, output);
  (void)doc.release();  // the process ends now, which frees it at once
  return sent;
}

Status TooLittleMemory() {
  const double gibibytes = static_cast<double>(MemoryLimit()) / (1ull << 30);
  char text[200];
  std::snprintf(text, sizeof(text),
                "The scene needs more memory than an import may use (%.3g GiB). For one that you "
                "trust set %s to more, in GiB.",
                gibibytes, kImportMemoryVariable);
  return Status::Failure(text);
}

// The importing library has words of its own for it.
bool IsAboutMemory(const std::string& message) {
  return message.find("bad_alloc") != std::string::npos ||
         message.find("bad allocation") != std::string::npos;
}

Status WorkGuarded(const std::string& path, FrameWriter& output) {
  try {
    Status status = Work(path, output);
    return !status && IsAboutMemory(status.Message()) ? TooLittleMemory() : status;
  } catch (const std::bad_alloc&) {
    return TooLittleMemory();
  } catch (const std::exception& error) {
    return Status::Failure(std::string("The file cannot be read: ") + error.what());
  }
}

}  // namespace

// The status is that of the whole answer: a scene whose end the parent did not get is none.
int RunImportWorker(const std::string& path, int output) {
  FrameWriter writer(output);
  const Status status = WorkGuarded(path, writer);
  const bool sent = writer.Write(status ? FrameKind::Done : FrameKind::Failure, status.Message());
  return status && sent ? 0 : 1;
}

}  // namespace engine
