// ExportPlan: what an export of Stagemarks is going to write, reckoned before its first byte: the
// files, the room that they need against the room that there is, and what cannot be written at all.
// Nothing is written, and nothing is changed in the scene; the disk is only asked.
// Both programs show it. A value; main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/outside/Ledger.h"
#include "host/BaseDocument.h"

namespace exporting {

enum class Layout { Files, Folders, Project, OneTextureFolder };

// The layout that the dialog's list of layouts calls so; nothing for an unknown entry.
std::optional<Layout> LayoutOfEntry(const std::string& entry);
// The entry of the dialog's list for a layout.
const char* EntryOf(Layout layout);
// The words that stand for them in a shell and in scripts, in the order of the dialog; and the
// layout of one, nothing for another word.
std::vector<std::string> LayoutWords();
std::optional<Layout> LayoutOfWord(const std::string& word);
// Whether the scene's textures are gathered beside the scene files.
bool GathersTextures(Layout layout);

struct ExportRequest {
  Layout layout = Layout::Folders;
  std::string folder;              // absolute; need not be there yet
  std::vector<std::string> names;  // of the Stagemarks, in the order of the list
};

struct ExportPlan {
  std::size_t scenes = 0;
  std::size_t textures = 0;  // copies of textures, in all folders together
  std::size_t caches = 0;
  // Free space needed on the disk: the most that is taken at any time, files that are replaced
  // counted. Scene files are taken to be as large as the scene is now.
  std::uint64_t bytes = 0;
  std::optional<std::uint64_t> free;  // nothing where the system does not tell
  // Why single files cannot be written, a sentence each: names that are no file names, and what
  // stands in their place.
  std::vector<std::string> obstacles;
  // Textures that the layout should gather and that lie nowhere where an export looks. None where
  // it gathers none.
  std::vector<std::string> missing;
};

// Writes the scene into memory once to learn its size: O(scene), and O(files) questions to the
// disk.
ExportPlan PlanExport(engine::FileSystem& files, const host::BaseDocument& doc,
                      const ExportRequest& request);

// The scene files that an export has written, in order, where `mark` is that of the ledger before.
std::vector<std::string> ScenesWritten(const engine::Ledger& ledger, std::size_t mark);

// Why a file cannot have this name, "it holds a slash"; empty where it can.
std::string WhyNoFileName(const std::string& name);

// Whether the disk has room, as far as that is known.
bool Fits(const ExportPlan& plan);
// "38 scene files, 228 textures and 2 caches, about 1.2 GB"; what there is none of is left out.
std::string Summary(const ExportPlan& plan);
// "1.2 GB": decimal units, as file managers show them.
std::string BytesText(std::uint64_t bytes);

}  // namespace exporting
