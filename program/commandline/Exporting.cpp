#include "program/commandline/Exporting.h"

#include <algorithm>
#include <map>
#include <memory>

#include "engine/dialog/TerminalText.h"
#include "engine/render/TextureSearch.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

using exporting::Layout;

Layout LayoutOf(const ExportOrder& order) {
  return exporting::LayoutOfWord(order.layout).value_or(Layout::Folders);
}

bool IsSceneFile(const std::string& path) {
  return path.size() > 4 && path.compare(path.size() - 4, 4, ".c4d") == 0;
}

// The dialog asks for the folder as soon as the button is pressed: the answer is laid ready before.
void PressOnce(Session& session, const ExportOrder& order) {
  StagemarksDialog& dialog = session.Dialog();
  dialog.ChooseLayout(exporting::EntryOf(LayoutOf(order)));
  dialog.Tick(pictures::kChangeFrameRange, order.frames.has_value());
  if (order.frames) dialog.TypeFrames(order.frames->first, order.frames->second);
  session.GetProgram().terminal.ChooseNextFile(order.folder);
  dialog.Press(pictures::kGenerateScenes);
  session.App().DeliverEvents();
}

// The dialog loads what is checked one after the other, so that what a state does not hold comes
// from the one before.
void Press(Session& session, const ExportOrder& order, const std::vector<std::string>& names) {
  if (!order.isolated) return PressOnce(session, order);
  for (const std::string& name : names) {
    if (Terminal::Interrupted()) break;
    session.Dialog().CheckOnly({name});
    PressOnce(session, order);
  }
  session.Dialog().CheckOnly(names);
}

// By scene files, since textures come in between in any number.
void ShowProgress(Session& session, std::size_t scenes) {
  Terminal& terminal = session.GetProgram().terminal;
  session.Files().OnWritten(
      [&terminal, scenes, done = std::size_t{0}](const std::string& path) mutable {
        done += IsSceneFile(path) ? 1 : 0;
        terminal.Progress(static_cast<double>(done) / static_cast<double>(scenes),
                          "Writing " + path.substr(path.rfind('/') + 1));
      });
}

// Asks where there is too little room, because a person may know better: files that a disk
// compresses or shares take less.
bool HasRoom(Session& session, const ExportOrder& order, const exporting::ExportPlan& plan) {
  Terminal& terminal = session.GetProgram().terminal;
  if (exporting::Fits(plan)) return true;
  return terminal.Ask("The export is " + exporting::Summary(plan) + ", and only " +
                      exporting::BytesText(*plan.free) + " are free where \"" + order.folder +
                      "\" is. Export anyway?");
}

// Whether the export may begin; all that speaks against it goes into the result. Where textures are
// gathered a missing one is a fault of the export, else only worth a note.
bool MayBegin(Session& session, const ExportOrder& order, ExportResult& result) {
  const bool strict = session.GetProgram().strict;
  const bool gathers = exporting::GathersTextures(LayoutOf(order));
  result.missing =
      gathers ? result.plan.missing : engine::MissingTextures(session.Files(), session.Document());
  result.failures = result.plan.obstacles;
  TellMissing(session.GetProgram().terminal, result.missing, gathers || strict);
  if (strict && !result.missing.empty()) result.failures.emplace_back(kStrictRefusal);
  if (!result.failures.empty()) return false;
  if (session.GetProgram().verbose)
    session.GetProgram().terminal.Say("Exporting " + exporting::Summary(result.plan) + ".");
  if (!HasRoom(session, order, result.plan)) return false;
  const engine::Status made = session.Files().MakeFolder(order.folder);
  if (!made) result.failures.push_back(made.Message());
  return made.Ok();
}

// The plug-in says nothing of what failed; the ledger does.
void ReadLedger(const engine::Ledger& ledger, std::size_t mark, ExportResult& result) {
  for (const engine::LedgerEntry& failure : ledger.FailuresSince(mark))
    result.failures.push_back(failure.message);
  result.written = ledger.WrittenSince(mark);
  result.scenes = exporting::ScenesWritten(ledger, mark);
}

// Sorted by name.
struct Folder {
  std::map<std::string, std::unique_ptr<Folder>> entries;  // a file has no entries of its own

  Folder& At(const std::string& name) {
    auto& entry = entries[name];
    if (!entry) entry = std::make_unique<Folder>();
    return *entry;
  }
};

void AddPath(Folder& root, const std::string& path) {
  Folder* folder = &root;
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    folder = &folder->At(path.substr(start, end - start));
    start = end + 1;
  }
}

// Recursive, but no deeper than an export nests its folders.
void PrintFolder(const Folder& folder, const std::string& indent, bool all,
                 std::vector<std::string>& lines) {
  for (const auto& [name, entry] : folder.entries) {
    if (entry->entries.empty()) {
      lines.push_back(indent + engine::Printable(name));
    } else if (name == "tex" && !all) {
      lines.push_back(indent + "tex/  " + Counted(entry->entries.size(), "texture"));
    } else {
      lines.push_back(indent + engine::Printable(name) + "/");
      PrintFolder(*entry, indent + "  ", all, lines);
    }
  }
}

}  // namespace

// Done means whole: a scene for each Stagemark, every texture, no failure.
ExportResult Export(Session& session, const ExportOrder& order) {
  ExportResult result;
  const std::vector<std::string> names = session.Dialog().CheckedNames();
  result.plan = exporting::PlanExport(session.Files(), session.Document(),
                                      {LayoutOf(order), order.folder, names});
  if (!MayBegin(session, order, result)) return result;
  const engine::Ledger& ledger = session.GetServices().ledger;
  const std::size_t mark = ledger.Mark();
  result.begun = true;
  ShowProgress(session, names.size());
  Press(session, order, names);
  session.Files().OnWritten(nullptr);
  ReadLedger(ledger, mark, result);
  const bool whole = result.scenes.size() == names.size() && result.plan.missing.empty() &&
                     result.failures.empty();
  result.status = whole ? kDone : kFailed;
  return result;
}

std::vector<std::string> FileTreeLines(const std::string& root,
                                       const std::vector<std::string>& paths, bool all) {
  Folder tree;
  const std::string inside = root + "/";
  for (const std::string& path : paths) {
    if (path.compare(0, inside.size(), inside) == 0) AddPath(tree, path.substr(inside.size()));
  }
  std::vector<std::string> lines;
  PrintFolder(tree, "", all, lines);
  return lines;
}

}  // namespace commandline
