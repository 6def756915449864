// PictureRecord: what a picture was made from, so that a picture that is there can be told from one
// that is out of date; and the hashes in it. It stands in the picture's file as one short text.
// SceneHashes belongs to the thread of its document; the rest is pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/outside/FileSystem.h"
#include "program/pictures/PictureSize.h"

namespace pictures {

// Equal records mean equal pictures. Hashes are 16 hexadecimal digits.
struct PictureRecord {
  std::string scene;
  std::string state;     // of all that Stagemarks record, as it is with the state loaded
  std::string settings;  // of the kind of file
  PictureSize size;
  int frame = 0;
  std::string program;  // its version

  bool operator==(const PictureRecord& other) const;
};

std::string RecordAsText(const PictureRecord& record);
// The first record that stands anywhere in a file with these bytes.
std::optional<PictureRecord> FindRecord(std::string_view bytes);

// Hashes of what pictures of a document depend on: equal in every process and wherever the scene
// and its textures lie. Selection, dates of recording and render settings change none of them;
// elements count by their places, not by their identities. Loading a state leaves Scene as it is.
class SceneHashes {
 public:
  // Reads the scene and all its textures, which must not change meanwhile. O(scene + textures).
  SceneHashes(const host::BaseDocument& doc, engine::FileSystem& files);
  SceneHashes(const SceneHashes&) = delete;
  SceneHashes& operator=(const SceneHashes&) = delete;

  // The hash of all that can be seen apart from the properties that Stagemarks record.
  const std::string& Scene() const { return scene_; }
  // The hash of the properties that Stagemarks record, as the document stands now. O(elements).
  std::string State() const;

 private:
  class Reader;

  const host::BaseDocument& doc_;
  std::unordered_map<engine::NodeId, std::uint64_t> places_;  // of elements, counted from 1
  std::unordered_map<std::string, std::uint64_t> textures_;   // by name: hash of the bytes
  std::string scene_;
};

// The hash of texts in their order.
std::string HashOfTexts(const std::vector<std::string>& texts);

}  // namespace pictures
