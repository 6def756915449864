#include "program/desktop/render/StatePictureFiles.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QImageReader>
#include <QImageWriter>
#include <algorithm>
#include <filesystem>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

namespace fs = std::filesystem;
using engine::Status;

constexpr const char* kPictureSuffix = ".png";
// Keywords of the texts in the PNG file.
constexpr const char* kName = "Stagemark";
constexpr const char* kRecorded = "Recorded";
constexpr const char* kScene = "Scene";
constexpr std::uint64_t kLargestFile = 16u << 20;
constexpr int kLargestPictureSide = 4096;  // pixels
constexpr std::size_t kMostScenes = 60;
constexpr int kQuick = 80;  // of the writer: little time rather than the last byte

bool IsLink(const std::string& path) {
  std::error_code error;
  return fs::is_symlink(path, error);
}

std::string PathOfPicture(const std::string& folder, host::LONG id) {
  return folder + "/" + std::to_string(id) + kPictureSuffix;
}

std::string Encoded(const KeptPicture& picture) {
  QBuffer bytes;
  bytes.open(QIODevice::WriteOnly);
  QImageWriter writer(&bytes, "png");
  writer.setQuality(kQuick);
  writer.setText(kName, ToQt(picture.name));
  writer.setText(kRecorded, ToQt(picture.recorded));
  writer.setText(kScene, QString::number(picture.fingerprint, 16));
  return writer.write(picture.image) ? bytes.data().toStdString() : std::string();
}

// The size is asked before anything is decoded: the cache is a folder that others may write to.
std::optional<KeptPicture> Decoded(const std::string& bytes) {
  QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);
  QImageReader reader(&buffer, "png");
  const QSize size = reader.size();
  if (!size.isValid() || std::max(size.width(), size.height()) > kLargestPictureSide)
    return std::nullopt;
  KeptPicture picture;
  picture.name = reader.text(kName).toStdString();
  picture.recorded = reader.text(kRecorded).toStdString();
  picture.fingerprint = reader.text(kScene).toULongLong(nullptr, 16);
  picture.image = reader.read();
  if (picture.image.isNull()) return std::nullopt;
  return picture;
}

}  // namespace

StatePictureFiles::StatePictureFiles(const engine::Services& services) : services_(services) {
  services_.files.Follow(services_.folders.cache);
}

std::string StatePictureFiles::Root() const {
  const std::string& cache = services_.folders.cache;
  return cache.empty() ? "" : cache + "/gallery";
}

// By the real path, so that a scene has one folder whichever link leads to it. Empty for a scene
// without a file.
std::string StatePictureFiles::FolderOf(const host::BaseDocument& doc) const {
  const std::string folder = doc.GetDocumentPath().GetString().ToUtf8();
  if (folder.empty() || Root().empty()) return "";
  const std::string path = folder + "/" + doc.GetDocumentName().GetString().ToUtf8();
  std::error_code error;
  const std::string real = fs::weakly_canonical(path, error).string();
  const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(error ? path : real),
                                                   QCryptographicHash::Sha1);
  return Root() + "/" + hash.toHex().toStdString();
}

std::optional<KeptPicture> StatePictureFiles::Read(const std::string& folder, host::LONG id) const {
  const std::string path = PathOfPicture(folder, id);
  if (folder.empty() || services_.files.Kind(path) != engine::FileKind::File) return std::nullopt;
  const auto bytes = services_.files.ReadFile(path, kLargestFile);
  return bytes ? Decoded(bytes.Value()) : std::nullopt;
}

Status StatePictureFiles::Prepare(const std::string& folder) const {
  if (services_.files.Kind(folder) == engine::FileKind::Folder) return {};
  Status status = services_.files.MakeFolders(folder);
  if (status) RemoveOldest(folder);
  return status;
}

// A new file that takes the place of the old one: a link there goes, what it leads to stays.
Status StatePictureFiles::Keep(const std::string& folder, host::LONG id,
                               const KeptPicture& picture) const {
  Status status = Prepare(folder);
  if (!status) return status;
  const std::string path = PathOfPicture(folder, id);
  if (IsLink(path)) status = services_.files.RemoveFile(path);
  return status ? services_.files.ReplaceFile(path, Encoded(picture)) : status;
}

void StatePictureFiles::Remove(const std::string& folder, host::LONG id) const {
  const std::string path = PathOfPicture(folder, id);
  if (folder.empty()) return;
  if (services_.files.Kind(path) == engine::FileKind::File) (void)services_.files.RemoveFile(path);
}

// By when something was last kept in them.
void StatePictureFiles::RemoveOldest(const std::string& but) const {
  const auto names = services_.files.ListFolders(Root());
  if (!names || names.Value().size() <= kMostScenes) return;
  std::vector<std::pair<std::int64_t, std::string>> folders;
  for (const std::string& name : names.Value()) {
    const std::string folder = Root() + "/" + name;
    if (folder != but) folders.emplace_back(services_.files.Stamp(folder).changed, folder);
  }
  std::sort(folders.begin(), folders.end());
  for (std::size_t i = 0; i + kMostScenes <= folders.size(); ++i)
    (void)services_.files.RemoveFolder(folders[i].second);
}

}  // namespace desktop
