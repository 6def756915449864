// IDs of the dialog's gadgets, list columns and menu entries; the options' entries stand in
// Options.h. Window layouts and the programs that press these gadgets know the numbers.
#pragma once

#include <array>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// Groups, from the outermost inwards and from top to bottom.
inline constexpr LONG kGroupAll = 10001;
inline constexpr LONG kGroupElements = 10002;
inline constexpr LONG kGroupListArea = 10003;
inline constexpr LONG kGroupListAndPreview = 10004;
inline constexpr LONG kGroupElementButtons = 10007;
inline constexpr LONG kGroupName = 10012;
inline constexpr LONG kGroupRecord = 10022;
inline constexpr LONG kGroupGenerate = 10024;
inline constexpr LONG kGroupFrameRange = 10040;

inline constexpr LONG kList = 10005;
inline constexpr LONG kPreviewButton = 10006;
inline constexpr LONG kLoad = 10008;
inline constexpr LONG kDelete = 10009;
inline constexpr LONG kRename = 10011;
inline constexpr LONG kNameField = 10013;
inline constexpr LONG kRecord = 10023;
inline constexpr LONG kGeneratePreview = 10045;
inline constexpr LONG kGenerateFiles = 10025;
inline constexpr LONG kFileLayout = 10026;
inline constexpr LONG kAsSaveFile = 10027;
inline constexpr LONG kAsSaveFileFolders = 10028;
inline constexpr LONG kAsSaveProject = 10029;
inline constexpr LONG kAsSaveProjectOneFolder = 10030;
inline constexpr LONG kChangeFrameRange = 10041;
inline constexpr LONG kFrameFrom = 10042;
inline constexpr LONG kFrameToLabel = 10043;
inline constexpr LONG kFrameTo = 10044;

// Columns of the list, which are also the keys of a row.
inline constexpr LONG kColumnName = 10031;
inline constexpr LONG kColumnChecked = 10032;
inline constexpr LONG kColumnCurrent = 10033;
inline constexpr LONG kColumnDate = 10034;

// Menu "Edit".
inline constexpr LONG kCheckAll = 10035;
inline constexpr LONG kUncheckAll = 10036;
inline constexpr LONG kInvertChecked = 10053;
inline constexpr LONG kUpdateChecked = 10046;
inline constexpr LONG kSetObjects = 10047;
inline constexpr LONG kSetTags = 10048;
inline constexpr LONG kSetLayers = 10049;
inline constexpr LONG kSetCamera = 10050;
inline constexpr LONG kDeleteChecked = 10037;
inline constexpr LONG kDeleteAll = 10038;
inline constexpr LONG kCleanMaterials = 10039;
// Menu "Options", besides the options themselves.
inline constexpr LONG kSaveDefaults = 10060;
// Menu "Help".
inline constexpr LONG kHelp = 10051;
inline constexpr LONG kAbout = 10052;

// An entry of a menu; ID 0 is a separator.
struct MenuRow {
  LONG id;
  const CHAR* label;
};

inline constexpr MenuRow kSeparator{0, ""};

inline constexpr std::array<MenuRow, 14> kEditMenu{{
    {kCheckAll, "Check All Elements"},
    {kUncheckAll, "Uncheck All Elements"},
    {kInvertChecked, "Invert Checked Elements"},
    kSeparator,
    {kUpdateChecked, "Update Checked Elements"},
    {kSetObjects, "Set Selected Objects on Checked Elements"},
    {kSetTags, "Set Selected Tags on Checked Elements"},
    {kSetLayers, "Set Selected Layers on Checked Elements"},
    {kSetCamera, "Set Render Camera on Checked Elements"},
    kSeparator,
    {kDeleteChecked, "Delete Checked Elements"},
    {kDeleteAll, "Delete All Elements"},
    kSeparator,
    {kCleanMaterials, "Clean Material Editor"},
}};

inline constexpr std::array<MenuRow, 2> kHelpMenu{{
    {kHelp, "Help"},
    {kAbout, "About Stagemarks"},
}};

// The four layouts of generated files, as the combo box lists them.
inline constexpr std::array<MenuRow, 4> kFileLayouts{{
    {kAsSaveFile, "As Save File"},
    {kAsSaveFileFolders, "As Save File (Into Folders)"},
    {kAsSaveProject, "As Save Project"},
    {kAsSaveProjectOneFolder, "As Save Project (One Tex Folder)"},
}};

}  // namespace stagemarks
