// Import of scenes from other formats: glTF (.gltf, .glb), OBJ, FBX, COLLADA (.dae). The reading
// runs in a child process with limits on memory, time and file access, so that a broken or hostile
// file costs a message and nothing else. Main thread.
//
// Results: left-handed, Y up, 1 unit = 1 cm; glTF and COLLADA meters and FBX units are converted,
// an OBJ unit stays a unit. Nodes become nulls, polygon objects, cameras and lights; a node of
// several parts becomes a null with one child for each part.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/outside/Services.h"
#include "engine/scene/Ownership.h"

namespace engine {

// Treatment of textures outside the folder of the imported file: a file from elsewhere may name
// anything that this person may read.
enum class OutsideTextures {
  Ask,    // the person, once for all of a file
  Take,   // as they are
  Leave,  // the scene gets their bare names
};

struct ImportLimits {
  std::uint64_t memoryBytes = 3ull << 29;  // address space of the child
  std::uint64_t fileBytes = 2ull << 30;    // size of the file to import
  std::uint64_t resultBytes = 4ull << 30;  // what the child may send back
  unsigned seconds = 30;                   // processor time and time on the clock
  OutsideTextures outside = OutsideTextures::Ask;
};

// The limits that a person has chosen for files that need more: STAGEMARKS_IMPORT_MEMORY (GiB, as
// "4" or "2.5") and STAGEMARKS_IMPORT_SECONDS. The person hears of a value that cannot be followed.
ImportLimits ChosenImportLimits(Person& person);
inline constexpr const char* kImportMemoryVariable = "STAGEMARKS_IMPORT_MEMORY";
inline constexpr const char* kImportSecondsVariable = "STAGEMARKS_IMPORT_SECONDS";

struct Imported {
  OwnedDocument document;          // path and name as if saved beside the source, suffix c4d
  std::vector<std::string> notes;  // what was lost or mended, for a person
};

// The hidden verb: `worker --import-worker <path> <descriptor>` has to call RunImportWorker and
// exit with its result.
inline constexpr const char* kImportWorkerVerb = "--import-worker";

// True for a suffix that Import reads (letter case aside).
bool IsImportable(const std::string& path);
// The sentence that refuses a file with another suffix, and names those that are read.
std::string WhyNotImportable(const std::string& path);
// The person hears of its progress and can stop it. `worker`: full path of the
// program to run as the child.
Result<Imported> ImportScene(const Services& services, const std::string& path,
                             const std::string& worker, const ImportLimits& limits = {});

// The child's side: confines the process for good, within the limits of its parent, reads `path`
// and writes the scene in the native format and the notes to file descriptor `output`. Returns the
// process's exit status.
int RunImportWorker(const std::string& path, int output);

}  // namespace engine
