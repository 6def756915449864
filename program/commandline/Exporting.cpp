#include "program/commandline/Exporting.h"

#include <cstdio>

#include "program/commandline/Textures.h"

namespace commandline {

namespace {

struct Layout {
  const char* word;
  const char* entry;  // as the dialog calls it
  bool textures;      // gathered beside the scenes
};

constexpr Layout kLayouts[] = {{"file", "As Save File", false},
                               {"folders", "As Save File (Into Folders)", false},
                               {"project", "As Save Project", true},
                               {"one-tex", "As Save Project (One Tex Folder)", true}};

const Layout& LayoutOf(const std::string& word) {
  for (const Layout& layout : kLayouts) {
    if (word == layout.word) return layout;
  }
  return kLayouts[1];
}

bool IsSceneFile(const std::string& path) { return path.size() > 4 && path.compare(path.size() - 4, 4, ".c4d") == 0; }

void Press(Session& session, const ExportOrder& order) {
  StagemarksDialog& dialog = session.Dialog();
  dialog.ChooseLayout(LayoutOf(order.layout).entry);
  dialog.Tick("Change Frame Range", order.frames.has_value());
  if (order.frames) dialog.TypeFrames(order.frames->first, order.frames->second);
  session.GetProgram().terminal.ChooseNextFile(order.folder);
  dialog.Press("Generate .C4D Files");
  session.App().DeliverEvents();
}

void ShowProgress(Session& session, std::size_t scenes) {
  Terminal& terminal = session.GetProgram().terminal;
  session.Files().OnWritten([&terminal, scenes, done = std::size_t{0}](const std::string& path) mutable {
    done += IsSceneFile(path) ? 1 : 0;
    terminal.Progress(static_cast<double>(done) / static_cast<double>(scenes), "Writing " + path.substr(path.rfind('/') + 1));
  });
}

void ReadLedger(const engine::Ledger& ledger, std::size_t mark, ExportResult& result) {
  for (const engine::LedgerEntry& failure : ledger.FailuresSince(mark)) result.failures.push_back(failure.message);
  result.written = ledger.WrittenSince(mark);
  for (std::size_t i = mark; i < ledger.Entries().size(); ++i) {
    const engine::LedgerEntry& entry = ledger.Entries()[i];
    if (entry.succeeded && entry.operation == engine::Operation::ReplaceFile) result.scenes.push_back(entry.path);
  }
}

}  // namespace

std::vector<std::string> LayoutNames() {
  std::vector<std::string> words;
  for (const Layout& layout : kLayouts) words.emplace_back(layout.word);
  return words;
}

engine::Result<FrameRange> ReadFrameRange(const std::string& text) {
  constexpr int kLast = 300000;
  int from = 0;
  int to = 0;
  char rest = 0;
  const bool read = std::sscanf(text.c_str(), "%7d:%7d%c", &from, &to, &rest) == 2;
  if (read && from >= 0 && from <= to && to <= kLast) return FrameRange(from, to);
  return engine::Result<FrameRange>::Failure("\"" + text + "\" is no frame range; 0:90 is one, up to " + std::to_string(kLast) +
                                             ".");
}

ExportResult Export(Session& session, const ExportOrder& order) {
  ExportResult result;
  const std::size_t wanted = session.Dialog().CheckedNames().size();
  const engine::Ledger& ledger = session.Files().GetLedger();
  const std::size_t mark = ledger.Mark();
  if (LayoutOf(order.layout).textures) {
    for (const std::string& texture : TexturesOf(session.Document())) {
      if (!IsTextureGathered(session.Document(), texture)) result.missing.push_back(texture);
    }
  }
  ShowProgress(session, wanted);
  Press(session, order);
  session.Files().OnWritten(nullptr);
  ReadLedger(ledger, mark, result);
  const bool whole = result.scenes.size() == wanted && result.missing.empty() && result.failures.empty();
  result.status = whole ? kDone : kFailed;
  return result;
}

}  // namespace commandline
