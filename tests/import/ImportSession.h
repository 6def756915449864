// ImportSession: imports scenes through a real child process and looks at what came out. Owns the
// imported document.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "engine/import/Import.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/Mesh.h"
#include "host/BaseMaterial.h"
#include "tests/support/ScriptedServices.h"

namespace tests {

// A scene of the source tree: "scenes/..." or "tests/scenes/...".
std::string SceneFile(const std::string& name);
// A scene that need not be there: below STAGEMARKS_EXTRA_SCENES, else beside the source. Empty when
// it is not.
std::string ExtraScene(const std::string& name);
// A model of the Debian package assimp-testmodels; empty when that is not installed.
std::string PackagedModel(const std::string& name);

struct Box {
  std::array<double, 3> low{1e30, 1e30, 1e30};
  std::array<double, 3> high{-1e30, -1e30, -1e30};
  void Add(const host::Vector& place);
};

class ImportSession : public testing::Test {
 protected:
  ~ImportSession() override { Close(); }

  // Imports and keeps the document; the former one is gone. A failure fails the test and leaves an
  // empty one.
  void Open(const std::string& path);
  // The message of an import that must fail.
  std::string Refusal(const std::string& path, const engine::ImportLimits& limits = {},
                      const std::string& worker = IMPORT_WORKER);
  void Close();

  host::BaseDocument& Doc() { return *document_; }
  const std::vector<std::string>& Notes() const { return notes_; }
  bool HasNote(const std::string& part) const;
  engine::SceneCounts Counts() const { return engine::CountScene(*document_); }
  // The objects of that name, in scene order. The only one of that name, or null with a failure.
  std::vector<host::BaseObject*> Named(const std::string& name) const;
  host::BaseObject* Only(const std::string& name) const;
  std::vector<host::BaseObject*> OfType(host::LONG type) const;
  host::BaseMaterial* Material(const std::string& name) const;
  // The file named by the bitmap shader that a material links under `link`; empty without one.
  std::string ShaderFile(const host::BaseMaterial& material, host::LONG link) const;
  // All files that bitmap shaders name, each once, sorted.
  std::vector<std::string> TextureFiles() const;
  // All corners of the polygon objects in the world; of `top` and below only, where given.
  Box WorldBox(const host::BaseObject* top = nullptr) const;

  ScriptedServices services_;
  engine::OwnedDocument document_;
  std::vector<std::string> notes_;
};

host::Vector InWorld(const host::Matrix& frame, double x, double y, double z);
double Dot(const host::Vector& a, const host::Vector& b);
host::Vector Minus(const host::Vector& a, const host::Vector& b);
host::Vector Cross(const host::Vector& a, const host::Vector& b);
// Share of the corners whose normal points to the side from which the corners of their polygon run
// clockwise (a, b, c with the cross product of b - a and c - a along the normal).
double FacingShare(const engine::Mesh& mesh);

}  // namespace tests
