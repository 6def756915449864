// Asking for a file or folder, and the kinds of scene files. Main thread.
#pragma once

#include <QString>
#include <QWidget>
#include <optional>
#include <string>

#include "engine/outside/Outside.h"

namespace desktop {

// What a chooser offers: scenes of ours and those that can be imported, or only one of the two, or
// anything.
inline constexpr const char* kAllScenes = "Scenes (*.c4d *.gltf *.glb *.obj *.fbx *.dae)";
inline constexpr const char* kOwnScenes = "Stagemarks scenes (*.c4d)";
inline constexpr const char* kForeignScenes = "Scenes to import (*.gltf *.glb *.obj *.fbx *.dae)";
inline constexpr const char* kPictureFiles = "Pictures (*.png *.tif *.tiff)";
inline constexpr const char* kAnything = "All files (*)";

// The absolute path chosen; nothing when canceled. Saving asks before a file is replaced and adds
// ".c4d" where the filter is our own scenes and the name has no suffix, ".png" where it is
// pictures. A new folder is made where its name is typed.
std::optional<std::string> ChooseFile(QWidget* parent, const engine::FileQuestion& question,
                                      const QString& filter);

}  // namespace desktop
