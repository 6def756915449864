// LostWork: the unsaved work that desktops kept which did not end well. Its folders are held as
// long as this lives, so that two desktops that start together do not both offer it. What is
// neither recovered nor discarded is found again next time. And what a person is asked about it at
// the start. Main thread.
#pragma once

#include <QDateTime>
#include <QString>
#include <QWidget>
#include <vector>

#include "program/desktop/recovery/AutosaveFolder.h"

namespace desktop {

class Autosave;
class DocumentCommands;

struct LostDocument {
  AutosaveFiles files;
  std::string path;  // where the document stood, empty where it was never saved
  QString title;
  QDateTime kept;
};

class LostWork {
 public:
  // Looks for it; folders in which nothing is left are removed. Previews that were changed without
  // any work being kept come back at once, as they were saved.
  explicit LostWork(const engine::Services& services);

  // The latest first.
  const std::vector<LostDocument>& Documents() const { return documents_; }
  // Removes all of it; the previews come back as they were saved.
  void Discard();
  // Keeps a document that cannot be opened under another name, so that it is not offered again.
  // Gives the new path. Its previews come back.
  std::string KeepAside(const LostDocument& document);
  // Removes the folders in which nothing is left.
  void Tidy();

 private:
  struct Folder {
    std::string path;
    engine::FileHandle held;
  };
  void Find(const std::string& path);
  void GiveBackPreviewsIn(const std::string& folder, bool ofKeptScenes) const;
  LostDocument Describe(const AutosaveFiles& files) const;
  bool IsEmpty(const std::string& folder) const;

  engine::FileSystem& files_;
  std::vector<Folder> folders_;
  std::vector<LostDocument> documents_;
};

// Asks where there is lost work and does what is answered. Recovered documents are open and changed
// afterwards, and kept by `autosave`; what cannot be opened is told and stays in the state folder.
void OfferLostWork(const engine::Services& services, DocumentCommands& commands, Autosave& autosave,
                   QWidget* window);

}  // namespace desktop
