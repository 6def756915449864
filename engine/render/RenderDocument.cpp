#include <new>

#include "engine/outside/Services.h"
#include "engine/render/Renderer.h"
#include "host/Application.h"
#include "host/RenderData.h"

namespace host {

namespace {

// The size that the settings ask for, or that of the bitmap where they say nothing.
engine::PictureSetup SetupOf(const BaseContainer& settings, const BaseBitmap& bitmap) {
  const LONG width = settings.GetLong(RDATA_XRES, bitmap.GetBw());
  const LONG height = settings.GetLong(RDATA_YRES, bitmap.GetBh());
  engine::PictureSetup setup;
  setup.width = static_cast<std::uint32_t>(std::max<LONG>(0, width));
  setup.height = static_cast<std::uint32_t>(std::max<LONG>(0, height));
  return setup;
}

Bool Show(const engine::Image& image, BaseBitmap& bitmap) {
  const auto width = static_cast<LONG>(image.width);
  const auto height = static_cast<LONG>(image.height);
  const bool fits = bitmap.GetBw() == width && bitmap.GetBh() == height;
  if (!fits && bitmap.Init(width, height) != IMAGERESULT_OK) return FALSE;
  const std::uint8_t* pixel = image.bytes.data();
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x, pixel += 4)
      bitmap.SetPixel(x, y, pixel[0], pixel[1], pixel[2]);
  }
  return TRUE;
}

std::string PathOf(const BaseDocument& doc) {
  return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
}

void TellNotes(engine::Ledger& ledger, const BaseDocument& doc,
               const std::vector<std::string>& notes) {
  for (const std::string& note : notes) ledger.AddNote(PathOf(doc), note);
}

// Who asked for the picture may save what there is of it and say nothing.
void TellFailure(engine::Ledger& ledger, const BaseDocument& doc, const std::string& why) {
  ledger.Add(
      {engine::Operation::Note, PathOf(doc), "", false, "The picture was not rendered: " + why});
}

}  // namespace

LONG RenderDocument(BaseDocument* doc, const BaseContainer& settings, ProgressHook* progress,
                    void* context, BaseBitmap* bitmap, LONG, BaseThread* thread) {
  if (!doc || !bitmap) return RENDERRESULT_FAILED;
  const engine::PictureSetup setup = SetupOf(settings, *bitmap);
  const engine::Services& services = engine::PublishedServices();
  bool goes = true;
  const auto report = [&](double done) {
    if (progress) progress(done, 0, context);
    goes = !(thread && thread->TestBreak()) && services.person.Progress(done, "Rendering");
    return goes;
  };
  auto begun = engine::PictureInProgress::Begin(*doc, services.files, setup,
                                                engine::RenderCaches::Shared(), report);
  if (!begun) {
    if (!goes) return RENDERRESULT_USERBREAK;
    TellFailure(services.ledger, *doc, begun.Message());
    return RENDERRESULT_FAILED;
  }
  engine::PictureInProgress& picture = *begun.Value();
  TellNotes(services.ledger, *doc, picture.Notes());
  try {
    while (!picture.IsFinished()) {
      if (!picture.Refine(report)) return RENDERRESULT_USERBREAK;
    }
    if (Show(picture.Current(), *bitmap)) return RENDERRESULT_OK;
  } catch (const std::bad_alloc&) {
    // Told below.
  }
  TellFailure(services.ledger, *doc, "There is not enough memory for it.");
  return RENDERRESULT_OUTOFMEMORY;
}

}  // namespace host
