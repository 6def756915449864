// Names of the files and folders that the plug-in ships, reads and writes. Existing scenes lie
// beside folders of these names.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// Shipped with the plug-in, below its own folder.
inline constexpr const CHAR* kResourceFolder = "res";
inline constexpr const CHAR* kDefaultImage = "default_image.tif";
inline constexpr const CHAR* kIcon = "icon.tif";
inline constexpr const CHAR* kHelpFolder = "help";
inline constexpr const CHAR* kManual = "SM_Manual";
inline constexpr const CHAR* kManualSuffix = "pdf";

// Beside a scene file: the folder of its previews is the scene's name and this; a preview is an
// element's name.
inline constexpr const CHAR* kSideFolderEnding = "_SM";
inline constexpr const CHAR* kPreviewSuffix = "tif";

// Names in a folder of generated files. The illumination cache is read from one spelling and
// written to the other.
inline constexpr const CHAR* kSceneSuffix = "c4d";
inline constexpr const CHAR* kCacheSuffix = "gi";
inline constexpr const CHAR* kTextureFolder = "tex";
inline constexpr const CHAR* kCacheFolderRead = "illum";
inline constexpr const CHAR* kCacheFolderWritten = "Illum";

}  // namespace stagemarks
