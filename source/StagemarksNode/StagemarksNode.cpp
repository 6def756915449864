#include "source/StagemarksNode/StagemarksNode.h"

#include <new>

#include "source/Stagemarks/keys/FileNames.h"
#include "source/Stagemarks/keys/Messages.h"
#include "source/Stagemarks/keys/PluginIds.h"

namespace stagemarks {

SceneHookData* StagemarksNode::Alloc() { return new (std::nothrow) StagemarksNode; }

// The document that the user works on counts, whichever one the message is about: previews belong
// to it.
Bool StagemarksNode::Message(GeListNode*, LONG type, void* data) {
  if (type != MSG_DOCUMENTINFO || !data) return TRUE;
  const DocumentInfoData& info = *static_cast<const DocumentInfoData*>(data);
  const BaseDocument* doc = GetActiveDocument();
  if (info.type != MSG_DOCUMENTINFO_TYPE_SAVE_BEFORE || !doc) return TRUE;

  Filename name = doc->GetDocumentName();
  const Filename oldFile = doc->GetDocumentPath() + name;
  name.ClearSuffix();
  const Filename oldFolder =
      doc->GetDocumentPath() + StringToFilename(name.GetFileString() + kSideFolderEnding);
  Filename target = info.filename;
  target.ClearSuffix();
  const Filename newFolder = StringToFilename(target.GetString() + kSideFolderEnding);
  if (info.filename != oldFile && GeFExist(oldFolder, TRUE)) CopySMFolder(oldFolder, newFolder);
  return TRUE;
}

Bool StagemarksNode::CopySMFolder(const Filename& from, const Filename& to) const {
  if (GeFExist(to, TRUE) && !QuestionDialog(text::kSideFolderThere)) return FALSE;
  if (!GeFCreateDir(to)) {
    MessageDialog(text::kSideFolderFailed);
    return FALSE;
  }
  const AutoAlloc<BrowseFiles> browser;
  if (!browser) return TRUE;
  browser->Init(from, 0);
  while (browser->GetNext()) {
    const Filename file = browser->GetFilename();
    if (!GeFCopyFile(from + file, to + file, 1)) return FALSE;
  }
  return TRUE;
}

Bool RegisterStagemarksNode() {
  return RegisterSceneHookPlugin(kHookId, kHookName, kHookInfo, StagemarksNode::Alloc,
                                 kHookPriority, 0, nullptr);
}

}  // namespace stagemarks
