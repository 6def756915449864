// One standalone scene file per checked element, in four layouts. All of them work on one copy of
// the document, onto which the elements are loaded in list order without a reset in between: what
// an element does not record, it inherits from those before it.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/export/ExportFiles.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

namespace {

// The checked names without the empty ones, which stand for no file.
std::vector<String> Names(const BaseContainer& checked) {
  std::vector<String> names;
  for (LONG i = 0, row = 0; (row = checked.GetIndexId(i)) != NOTOK; ++i) {
    if (const String name = checked.GetString(row); name.Content()) names.push_back(name);
  }
  return names;
}

// The file that a global illumination effect keeps its cache in: its own, or the scene's; empty
// without one.
Filename CacheSource(const BaseContainer& effect, const BaseDocument& doc,
                     const ExportPlaces& places) {
  if (effect.GetLong(GI_USE_CACHE_FILE) != 1) return Filename();
  if (effect.GetLong(GI_OWN_CACHE_FILE) == 1) return effect.GetFilename(GI_CACHE_FILENAME);
  return places.SceneCacheFile(doc.GetDocumentPath());
}

void CopyCache(const Filename& source, const String& element, const ExportPlaces& places) {
  if (!source.Content() || !GeFExist(source, FALSE)) return;
  const Filename folder = places.CacheFolder(element);
  if (!GeFExist(folder, TRUE)) GeFCreateDir(folder);
  if (GeFExist(folder, TRUE)) GeFCopyFile(source, places.CacheFile(element), 1);
}

void CopyCaches(const BaseDocument& doc, const String& element, const ExportPlaces& places) {
  for (BaseVideoPost* post = doc.GetActiveRenderData()->GetFirstVideoPost(); post;
       post = post->GetNext()) {
    if (post->GetType() == VPglobalillumination)
      CopyCache(CacheSource(post->GetData(), doc, places), element, places);
  }
}

}  // namespace

struct SMDialog::FileLayout {
  Bool elementFolders;  // each element's files in a folder of their own
  // The scene's textures copied beside the scene files, paths cut down to names
  Bool textures;
};

void SMDialog::GenerateFiles() {
  struct Row {
    LONG id;
    Bool (SMDialog::*generate)(const BaseContainer& checked, const Filename& folder);
  };
  static constexpr Row kRows[] = {
      {kAsSaveFile, &SMDialog::GenerateSaveFile},
      {kAsSaveFileFolders, &SMDialog::GenerateSaveFileFolders},
      {kAsSaveProject, &SMDialog::GenerateSaveProject},
      {kAsSaveProjectOneFolder, &SMDialog::GenerateSaveProjectOneFolder}};
  const BaseContainer checked = GetCheckedElements();
  if (checked == BaseContainer()) return MessageDialog(text::kCheckNeeded);
  MessageDialog(text::kFilesOverwritten);
  Filename folder;
  if (!FileSelect(folder, FILESELECTTYPE_ANYTHING, FILESELECT_DIRECTORY, text::kChooseFolder))
    return;
  LONG chosen = 0;
  GetLong(kFileLayout, chosen);
  for (const Row& row : kRows) {
    if (row.id == chosen) (this->*row.generate)(checked, folder);
  }
}

Bool SMDialog::GenerateSaveFile(const BaseContainer& checked, const Filename& folder) {
  return Generate(checked, folder, {FALSE, FALSE});
}

Bool SMDialog::GenerateSaveFileFolders(const BaseContainer& checked, const Filename& folder) {
  return Generate(checked, folder, {TRUE, FALSE});
}

Bool SMDialog::GenerateSaveProject(const BaseContainer& checked, const Filename& folder) {
  return Generate(checked, folder, {TRUE, TRUE});
}

Bool SMDialog::GenerateSaveProjectOneFolder(const BaseContainer& checked, const Filename& folder) {
  return Generate(checked, folder, {FALSE, TRUE});
}

// An element folder that cannot be made ends the work at once: the copy stays, inserted and active,
// for the user to look at. A failed save does not.
Bool SMDialog::Generate(const BaseContainer& checked, const Filename& folder,
                        const FileLayout& layout) {
  BaseDocument* const original = GetActiveDocument();
  if (!original) return FALSE;
  const ExportPlaces places(*original, folder, layout.elementFolders);
  BaseDocument* const copy = static_cast<BaseDocument*>(original->GetClone(COPY_DOCUMENT, nullptr));
  if (!copy) return FALSE;
  InsertBaseDocument(copy);
  SetActiveDocument(copy);
  UpdateSMList();

  if (layout.textures) GatherTextures(checked, places, layout);
  for (const String& name : Names(checked)) {
    if (layout.elementFolders && !layout.textures && !MakeElementFolder(name, places)) return FALSE;
    if (!GenerateElement(*copy, name, places)) break;
  }
  KillDocument(copy);
  SetActiveDocument(original);
  return TRUE;
}

// Before any element is loaded: every texture folder gets the textures of the scene as the user
// sees it.
void SMDialog::GatherTextures(const BaseContainer& checked, const ExportPlaces& places,
                              const FileLayout& layout) {
  const TextureGathering textures(*GetActiveDocument());
  if (!layout.elementFolders) textures.CopyInto(places.TextureFolder(String()));
  for (const String& name : layout.elementFolders ? Names(checked) : std::vector<String>()) {
    const Filename folder = places.Folder(name);
    if (!GeFExist(folder, TRUE)) GeFCreateDir(folder);
    textures.CopyInto(places.TextureFolder(name));
  }
  StripAllTexturePaths();
}

Bool SMDialog::MakeElementFolder(const String& name, const ExportPlaces& places) const {
  const Filename folder = places.Folder(name);
  if (GeFExist(folder, TRUE) || GeFCreateDir(folder)) return TRUE;
  MessageDialog(String(text::kNoFolderBegin) + name + text::kNoFolderEnd);
  return FALSE;
}

// False when the file could not be saved, which the user is told.
Bool SMDialog::GenerateElement(BaseDocument& copy, const String& name, const ExportPlaces& places) {
  LoadStagemark(name);
  if (changeFrameRange_ == 1) OverrideFrameRange(*copy.GetActiveRenderData());
  CopyCaches(copy, name, places);
  if (SaveDocument(&copy, places.SceneFile(name), 0, FORMAT_C4DEXPORT)) return TRUE;
  MessageDialog(text::kSaveFailed);
  return FALSE;
}

void SMDialog::OverrideFrameRange(RenderData& settings) const {
  constexpr LONG kFromTo = 0;
  BaseContainer* data = settings.GetDataInstance();
  const LONG rate = data->GetLong(RDATA_FRAMERATE);
  data->SetLong(RDATA_FRAMESEQUENCE, kFromTo);
  data->SetTime(RDATA_FRAMEFROM, BaseTime(frameFrom_, rate));
  data->SetTime(RDATA_FRAMETO, BaseTime(frameTo_, rate));
}

}  // namespace stagemarks
