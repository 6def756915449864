// Messages and questions of the plug-in to the user, and the texts that it shows while it works.
// The wording is fixed, double blanks after full stops included: scripts answer these very texts.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks::text {

inline constexpr const CHAR* kNameNeeded = "You must enter a name for this element.";
inline constexpr const CHAR* kOverwrite =
    "An element with that name already exists.  Do you want to overwrite it?";
inline constexpr const CHAR* kDelete =
    "Are you sure you want to delete this element?  This cannot be undone.";
inline constexpr const CHAR* kCheckNeeded = "You must check at least one stagemark!";
inline constexpr const CHAR* kCameraNeeded = "You must select a camera!";
inline constexpr const CHAR* kSaveBeforePreview =
    "You must save your document before you can generate preview images.";
inline constexpr const CHAR* kFilesOverwritten =
    "Warning! This will overwrite files in the chosen directory if they have the same name as your "
    "selected Stagemarks!";
inline constexpr const CHAR* kChooseFolder = "Choose a Directory to Save Generated Files";
inline constexpr const CHAR* kSaveFailed = "An error has occurred while saving the Stagemark!";
inline constexpr const CHAR* kNoFolderBegin = "Could not create directory to save Stagemark ";
inline constexpr const CHAR* kNoFolderEnd = " in!";
inline constexpr const CHAR* kDeleteFolderBegin = "Delete Bitmap Preview Folder ";
inline constexpr const CHAR* kDeleteFolderEnd = " ?";
inline constexpr const CHAR* kSideFolderThere =
    "A Stagemark directory with the same name already exists in that location.  Should I overwrite "
    "it?";
inline constexpr const CHAR* kSideFolderFailed = "Error! New SM Directory could not be created!";

inline constexpr const CHAR* kSavingRender = "Stagemarks - Saving Render Settings";
inline constexpr const CHAR* kSavingObjects = "Stagemarks - Saving Object and Tag Settings";
inline constexpr const CHAR* kSavingCamera = "Stagemarks - Saving Camera Settings";
inline constexpr const CHAR* kSavingLayers = "Stagemarks - Saving Layer Settings";
inline constexpr const CHAR* kSavingDate = "Stagemarks - Saving Date and Time";
inline constexpr const CHAR* kGeneratingPreview = "Stagemarks - Generating Preview Image";

inline constexpr const CHAR* kAbout = "Stagemarks V";
inline constexpr const CHAR* kCredit = "\n\nRecords, recalls and exports the states of a scene.";

}  // namespace stagemarks::text
