// FileDialogs: asking for a file or folder, the kinds of scene files, and the question what to do
// where another program has changed the file of an open document. Main thread.
#pragma once

#include <QLineEdit>
#include <QString>
#include <QWidget>
#include <optional>
#include <string>

#include "engine/outside/FileSystem.h"
#include "engine/outside/Person.h"
#include "host/BaseDocument.h"

namespace desktop {

// The filters of the file dialogs: scenes of ours and those that can be imported, or only one of
// the two, or anything.
inline constexpr const char* kAllScenes = "Scenes (*.c4d *.gltf *.glb *.obj *.fbx *.dae)";
inline constexpr const char* kOwnScenes = "Stagemarks scenes (*.c4d)";
inline constexpr const char* kForeignScenes = "Scenes to import (*.gltf *.glb *.obj *.fbx *.dae)";
inline constexpr const char* kPictureFiles = "Pictures (*.png *.tif *.tiff)";
inline constexpr const char* kScripts = "Python scripts (*.py)";
inline constexpr const char* kAnything = "All files (*)";

// Message where a folder has to be named by its absolute path and is not.
inline constexpr const char* kNoWholePath = "Choose a folder first: its whole path, from the root.";

// The absolute path chosen; nothing when canceled. Saving asks before a file is replaced and adds
// ".c4d" where the filter is our own scenes and the name has no suffix, ".png" where it is
// pictures. A new folder is made in `files`, where there are some, when its name is typed.
std::optional<std::string> ChooseFile(QWidget* parent, const engine::FileQuestion& question,
                                      const QString& filter, engine::FileSystem* files = nullptr);

// Asks for a folder, beginning beside the one that stands in `field`, and puts it there; canceled,
// the field stays. Typed names of new folders are made in `files`.
void BrowseForFolder(QWidget* parent, const char* title, QLineEdit& field,
                     engine::FileSystem& files);

// The answers to the question about a file that another program has changed.
enum class ChangedFileAnswer {
  Reload,    // the document as it is here goes
  KeepMine,  // the next saving replaces the file
  SaveAs,
  Later,
};

// The default answer loses nothing: reloading where nothing is changed here, else saving under
// another name. `saves`: a person is about to save.
ChangedFileAnswer AskAboutChangedFile(QWidget* window, const host::BaseDocument& doc, bool saves);

}  // namespace desktop
