// The small picture of an element: the scene rendered as it stands, with the active render settings
// at preview size.
#include <array>

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/SMThread.h"
#include "source/Stagemarks/previews/PreviewFiles.h"

namespace stagemarks {

namespace {

constexpr LONG kWidth = 160;
constexpr LONG kHeight = 120;

// Parameters of the host's render settings that a preview sets besides size and frame range.
constexpr LONG kRenderEngine = 5300;
constexpr LONG kSaveAlpha = 5076;
constexpr LONG kMultipass = 5202;

// Puts render settings into the state for a preview; restored, at the latest when it goes, they
// hold exactly what they held before.
class PreviewSettings {
 public:
  explicit PreviewSettings(BaseContainer& settings) : settings_(settings) {
    for (std::size_t i = 0; i < kKept.size(); ++i) {
      there_[i] = settings.FindIndex(kKept[i]) != NOTOK;
      values_[i] = settings.GetData(kKept[i]);
    }
    settings.SetLong(RDATA_XRES, kWidth);
    settings.SetLong(RDATA_YRES, kHeight);
    settings.SetLong(kRenderEngine, 1);
    settings.SetLong(RDATA_FRAMESEQUENCE, 1);
    settings.SetBool(kSaveAlpha, FALSE);
    settings.SetBool(kMultipass, FALSE);
  }
  PreviewSettings(const PreviewSettings&) = delete;
  PreviewSettings& operator=(const PreviewSettings&) = delete;
  ~PreviewSettings() { Restore(); }
  void Restore() {
    if (restored_) return;
    restored_ = TRUE;
    for (std::size_t i = 0; i < kKept.size(); ++i) {
      if (there_[i]) {
        settings_.SetData(kKept[i], values_[i]);
      } else {
        settings_.RemoveData(kKept[i]);
      }
    }
  }

 private:
  static constexpr std::array<LONG, 8> kKept{RDATA_XRES,          RDATA_YRES,      kRenderEngine,
                                             RDATA_FRAMESEQUENCE, RDATA_FRAMEFROM, RDATA_FRAMETO,
                                             kMultipass,          kSaveAlpha};
  BaseContainer& settings_;
  std::array<GeData, kKept.size()> values_;
  std::array<Bool, kKept.size()> there_{};
  Bool restored_ = FALSE;
};

// Owns a document that is in no list.
class DocumentCopy {
 public:
  explicit DocumentCopy(BaseDocument& doc)
      : doc_(static_cast<BaseDocument*>(doc.GetClone(COPY_DOCUMENT, nullptr))) {}
  DocumentCopy(const DocumentCopy&) = delete;
  DocumentCopy& operator=(const DocumentCopy&) = delete;
  ~DocumentCopy() { Free(); }
  void Free() {
    if (doc_) BaseDocument::Free(doc_);
  }
  BaseDocument* Get() const { return doc_; }

 private:
  BaseDocument* doc_;
};

}  // namespace

// A render that fails leaves the picture as far as it came, and a save that fails is not reported:
// the element is recorded either way. Everything is given back in the order in which it could be
// missed: the copy takes the most memory, the values are the artist's own, and only then the
// finished thread and the picture go.
Bool SMDialog::GenerateBitmapPreview(const Filename& folder) {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  BaseContainer* settings = doc->GetActiveRenderData()->GetDataInstance();
  PreviewSettings preview(*settings);
  const AutoAlloc<BaseBitmap> bitmap;
  DocumentCopy copy(*doc);
  if (!bitmap || !copy.Get()) return FALSE;
  if (bitmap->Init(settings->GetLong(RDATA_XRES), settings->GetLong(RDATA_YRES), 24) !=
      IMAGERESULT_OK)
    return FALSE;
  SMThread thread(copy.Get(), *settings, bitmap);
  thread.Start(0, 0);
  bitmap->Save(PreviewFile(folder, elementName_), FILTER_TIF);
  copy.Free();
  preview.Restore();
  thread.End();
  thread.Wait(FALSE);
  return TRUE;
}

}  // namespace stagemarks
