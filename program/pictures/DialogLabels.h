// The labels by which buttons, check boxes and menu entries of the Stagemarks dialog are found.
// They are the plug-in's own (source/Stagemarks/dialog/Layout.cpp and
// source/Stagemarks/keys/Gadgets.h), which cannot be included here: whoever changes one there
// changes it here. Any thread.
#pragma once

namespace pictures {

inline constexpr const char* kLoad = "Load";
inline constexpr const char* kDelete = "Delete";
inline constexpr const char* kRename = "Rename";
inline constexpr const char* kRecord = "Record Element";
inline constexpr const char* kGeneratePreview = "Generate Preview Image";
inline constexpr const char* kGenerateScenes = "Generate .C4D Files";
inline constexpr const char* kChangeFrameRange = "Change Frame Range";
inline constexpr const char* kCheckAll = "Check All Elements";
inline constexpr const char* kUncheckAll = "Uncheck All Elements";
inline constexpr const char* kUpdateChecked = "Update Checked Elements";
inline constexpr const char* kSetObjects = "Set Selected Objects on Checked Elements";
inline constexpr const char* kSetTags = "Set Selected Tags on Checked Elements";
inline constexpr const char* kSetLayers = "Set Selected Layers on Checked Elements";
inline constexpr const char* kSetCamera = "Set Render Camera on Checked Elements";
inline constexpr const char* kDeleteChecked = "Delete Checked Elements";
inline constexpr const char* kDeleteAll = "Delete All Elements";
inline constexpr const char* kCleanMaterials = "Clean Material Editor";
inline constexpr const char* kSaveDefaults = "Save As Default Preferences";

}  // namespace pictures
