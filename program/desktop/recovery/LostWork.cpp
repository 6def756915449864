#include "program/desktop/recovery/LostWork.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

#include "engine/outside/FileHandle.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/recovery/Autosave.h"

namespace desktop {

namespace {

constexpr std::uint64_t kMostBytesOfNote = 1 << 20;
constexpr std::int64_t kNanosecondsPerMillisecond = 1000000;
const std::string kSceneSuffix = ".c4d";

}  // namespace

// The latest first. Folders with nothing left in them are removed on the way.
LostWork::LostWork(const engine::Services& services) : files_(services.files) {
  const std::string root = AutosaveRoot(services.folders);
  if (files_.Kind(root) != engine::FileKind::Folder) return;
  const auto names = files_.ListFolders(root);
  if (!names) return;
  for (const std::string& name : names.Value()) Find(root + "/" + name);
  Tidy();
  std::stable_sort(documents_.begin(), documents_.end(),
                   [](const LostDocument& a, const LostDocument& b) { return a.kept > b.kept; });
}

// A folder without the held file is one that another desktop is just making. The lock is kept while
// this lives, so that no second desktop offers the same work.
void LostWork::Find(const std::string& path) {
  auto held = engine::HoldFile(path + kHeldFile);
  if (!held) return;
  folders_.push_back({path, held.Take()});
  GiveBackPreviewsIn(path, false);
  const auto names = files_.ListFiles(path);
  if (!names) return;
  for (const std::string& name : names.Value()) {
    if (!name.ends_with(kSceneSuffix)) continue;
    documents_.push_back(
        Describe(AutosaveFilesIn(path, name.substr(0, name.size() - kSceneSuffix.size()))));
  }
}

// A note that is missing or damaged costs the title, never the scene.
LostDocument LostWork::Describe(const AutosaveFiles& files) const {
  QJsonObject note;
  if (files_.Kind(files.note) == engine::FileKind::File) {
    const auto text = files_.ReadFile(files.note, kMostBytesOfNote);
    if (text) note = QJsonDocument::fromJson(QByteArray::fromStdString(text.Value())).object();
  }
  const QString title = note.value("title").toString("Untitled");
  const auto kept = QDateTime::fromMSecsSinceEpoch(files_.Stamp(files.scene).changed /
                                                   kNanosecondsPerMillisecond);
  return {files, note.value("path").toString().toStdString(), title, kept};
}

// Where the scene was not kept nobody can recover it, so its previews come back at once.
void LostWork::GiveBackPreviewsIn(const std::string& folder, bool ofKeptScenes) const {
  const auto names = files_.ListFolders(folder);
  for (const std::string& name : names ? names.Value() : std::vector<std::string>()) {
    if (!name.ends_with(kSavedPreviewsEnding)) continue;
    const std::string number = name.substr(0, name.rfind('.'));
    const AutosaveFiles files = AutosaveFilesIn(folder, number);
    if (ofKeptScenes || files_.Kind(files.scene) == engine::FileKind::Missing)
      (void)GiveBackPreviews(files_, files.previews);
  }
}

// Previews that cannot be given back yet keep their folder.
void LostWork::Discard() {
  for (const LostDocument& document : documents_) {
    for (const std::string& file : {document.files.scene, document.files.note})
      if (files_.Kind(file) == engine::FileKind::File) (void)files_.RemoveFile(file);
    GiveBackPreviewsIn(engine::FolderAndName(document.files.scene).first, true);
  }
  documents_.clear();
  Tidy();
  folders_.clear();
}

// Out of the way of the next start, which would fail at it again.
std::string LostWork::KeepAside(const LostDocument& document) {
  const std::string aside = document.files.scene + ".damaged";
  (void)GiveBackPreviews(files_, document.files.previews);
  return files_.Rename(document.files.scene, aside) ? aside : document.files.scene;
}

void LostWork::Tidy() {
  std::erase_if(folders_, [this](const Folder& folder) {
    return IsEmpty(folder.path) && files_.RemoveFolder(folder.path);
  });
}

// Also a damaged scene that was put aside keeps its folder.
bool LostWork::IsEmpty(const std::string& folder) const {
  const auto names = files_.ListFiles(folder);
  const auto isScene = [](const std::string& name) {
    return name.find(kSceneSuffix) != std::string::npos;
  };
  const auto previews = files_.ListFolders(folder);
  return names && std::none_of(names.Value().begin(), names.Value().end(), isScene) && previews &&
         previews.Value().empty();
}

namespace {

constexpr std::size_t kMostNamed = 8;
constexpr int kLongestLine = 60;
constexpr int kWidthOfText = 440;

enum class Answer { Recover, Discard, Later };

QString Listed(const std::vector<LostDocument>& documents) {
  QStringList lines;
  for (const LostDocument& document : documents) {
    if (static_cast<std::size_t>(lines.size()) == kMostNamed) {
      lines.append(QString("and %1 more").arg(documents.size() - kMostNamed));
      break;
    }
    QString title = document.title;
    if (title.size() > kLongestLine) title = title.left(kLongestLine - 1) + QChar(0x2026);
    lines.append(QString::fromUtf8("\xe2\x80\xa2 %1, kept %2")
                     .arg(title, QLocale().toString(document.kept, "d MMM yyyy, HH:mm")));
  }
  return lines.join('\n');
}

// Later, and Escape, leave everything for the next start. Recover is what Enter does.
Answer Ask(const std::vector<LostDocument>& documents, QWidget* window) {
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                  "Work that was not saved was found.", QMessageBox::NoButton, window);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(
      Listed(documents) +
      "\n\nRecovered scenes open as changed ones; your own files stay as they are until you save.");
  if (auto* text = box.findChild<QLabel*>("qt_msgbox_informativelabel"))
    text->setMinimumWidth(kWidthOfText);
  QPushButton* recover = box.addButton("&Recover", QMessageBox::AcceptRole);
  QPushButton* discard = box.addButton("&Discard", QMessageBox::DestructiveRole);
  box.setEscapeButton(box.addButton("&Later", QMessageBox::RejectRole));
  box.setDefaultButton(recover);
  box.exec();
  if (box.clickedButton() == recover) return Answer::Recover;
  return box.clickedButton() == discard ? Answer::Discard : Answer::Later;
}

// One that cannot be opened keeps none of the others.
void Recover(LostWork& lost, DocumentCommands& commands, Autosave& autosave) {
  for (const LostDocument& document : lost.Documents()) {
    const auto opened = commands.OpenRecovered(document.files.scene, document.path);
    if (opened) {
      autosave.Adopt(document, *opened.Value());
    } else {
      commands.Person().Warn("\"" + document.title.toStdString() + "\" could not be recovered. " +
                             opened.Message() + "\n\nThe file stays at \"" +
                             lost.KeepAside(document) + "\".");
    }
  }
  lost.Tidy();
}

}  // namespace

void OfferLostWork(const engine::Services& services, DocumentCommands& commands, Autosave& autosave,
                   QWidget* window) {
  LostWork lost(services);
  if (lost.Documents().empty()) return;
  const Answer answer = Ask(lost.Documents(), window);
  if (answer == Answer::Recover) Recover(lost, commands, autosave);
  if (answer == Answer::Discard) lost.Discard();
}

}  // namespace desktop
