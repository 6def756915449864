// Publish: states of a scene in a format that browsers, engines and other programs read: glTF 2.0.
// A state is written as its picture shows it: objects that render, with their materials, textures,
// lights and cameras. The document is left alone. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/Progress.h"
#include "engine/outside/FileSystem.h"
#include "engine/publish/GltfGeometry.h"
#include "engine/publish/NodeTexts.h"
#include "engine/render/RenderCaches.h"
#include "host/BaseDocument.h"

namespace engine {

// Written as the file's generator. The digits are room for a mark by which whoever writes the file
// tells it from one that was changed since.
inline constexpr std::string_view kGltfGenerator = "Stagemarks publish 0000000000000000";

struct PublishOptions {
  std::string scene;  // its name, kept in the file
  // Objects that render in none of the states are left out; else they are there and hidden.
  bool omitHidden = true;
  // Each state is a material variant of its name, and the file says in its extras
  // ("stagemarks") what else is particular to each. Else the file has one state.
  bool asVariants = false;
  // Not empty: bytes and pictures in files of their own, beside one of text; this is what the name
  // of the one with bytes begins with.
  std::string beside = {};
  std::uint64_t largest = 0xFFFFFFFF;  // bytes that a file can hold
};

// Facts about a state, written into its file.
struct StateFacts {
  std::string name;  // empty for the scene as it is
  host::LONG id = 0;
  std::string date;  // of recording, ISO 8601; empty where it is not known
};

// Made once and shared by all files of a scene.
struct PublishCaches {
  GltfGeometries geometries;
  NodeTexts nodes;
};

struct PublishedFile {
  std::string name;  // a safe one, with a hash of the content (XXH3, 64 bits, as 16 digits)
  std::string bytes;
};

struct PublishedScene {
  std::string bytes;                  // of the .glb file, or of the .gltf file
  std::vector<PublishedFile> beside;  // files that a .gltf file refers to
  std::vector<std::string> notes;     // on things left out or changed, a sentence each
  std::size_t objects = 0;            // nodes with a mesh
  std::size_t triangles = 0;
};

// One file in the making. The document is brought into each of its states by the caller: only what
// a state holds may differ between them.
class Publication {
 public:
  Publication(const host::BaseDocument& doc, FileSystem& files, const PublishOptions& options,
              RenderCaches& renderCaches, PublishCaches& caches);
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;
  ~Publication();

  // Takes the document as it stands in as one more state. A failure where it was stopped.
  Status AddState(const StateFacts& state, const ProgressCallback& progress = {});
  // The file with all these states; once. Fails where it was stopped or the file would be larger
  // than the format can hold.
  Result<PublishedScene> Finish(const ProgressCallback& progress = {});

 private:
  class Maker;
  std::unique_ptr<Maker> maker_;
};

}  // namespace engine
