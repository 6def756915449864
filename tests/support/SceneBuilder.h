// SceneBuilder: scenes for tests, built by names: objects and layers by path ("Room/Box"),
// everything else by its name. Building calls can be chained; asking for something that is not
// there throws std::runtime_error. Main thread.
#pragma once

#include <string>

#include "host/Host.h"

namespace tests {

class SceneBuilder {
 public:
  // A new document, owned by the builder until Release.
  SceneBuilder();
  // Builds in a document that somebody else owns.
  explicit SceneBuilder(host::BaseDocument& doc);
  SceneBuilder(const SceneBuilder&) = delete;
  SceneBuilder& operator=(const SceneBuilder&) = delete;
  ~SceneBuilder();

  host::BaseDocument& Doc() const { return *doc_; }
  // Hands the document over to the caller.
  host::BaseDocument* Release();

  // --- Objects. A new one goes last below its parent; parents that are missing become null
  // objects.
  SceneBuilder& Object(const std::string& path, host::LONG type = host::Onull);
  SceneBuilder& Cube(const std::string& path) { return Object(path, host::Ocube); }
  SceneBuilder& Camera(const std::string& path) { return Object(path, host::Ocamera); }
  SceneBuilder& Modes(const std::string& path, host::LONG editor, host::LONG render,
                      bool deform = true);
  SceneBuilder& At(const std::string& path, double x, double y, double z);
  SceneBuilder& Select(const std::string& path);
  // Makes the camera at `path` the scene camera; the empty path: none.
  SceneBuilder& LookThrough(const std::string& path);
  // The last object made.
  host::BaseObject* Last() const { return last_; }
  host::BaseObject* GetObject(const std::string& path) const;

  // --- Tags. A new one goes last on the object at `path`.
  SceneBuilder& Tag(const std::string& path, host::LONG type, const host::BaseContainer& data = {});
  // A texture tag with that material; the empty name: with none.
  SceneBuilder& Texture(const std::string& path, const std::string& material);
  // The tag number `index` (0-based) of those of `type` on an object.
  host::BaseTag* GetTag(const std::string& path, host::LONG type, int index = 0) const;
  // The node tree of an expression tag made on the object at `path`.
  host::GvNodeMaster* Expression(const std::string& path);

  // --- Materials and shaders.
  SceneBuilder& Material(const std::string& name, const host::Vector& color = host::Vector(0.8));
  host::BaseMaterial* GetMaterial(const std::string& name) const;
  // A bitmap shader with that file, attached last to `owner` or put last below `parent`.
  host::BaseShader* Bitmap(host::BaseList2D* owner, const std::string& file,
                           host::BaseShader* parent = nullptr);

  // --- Layers, by path as objects are; missing parents become layers.
  SceneBuilder& Layer(const std::string& path, const host::LayerData& flags = {});
  SceneBuilder& OnLayer(const std::string& object, const std::string& layer);
  host::LayerObject* GetLayer(const std::string& path) const;

  // --- Render settings, last in the document's list; Active makes them the active ones.
  SceneBuilder& Settings(const std::string& name, host::LONG width = 1280, host::LONG height = 720);
  SceneBuilder& Post(const std::string& settings, host::LONG type, bool on = true);
  SceneBuilder& Pass(const std::string& settings, host::LONG type, bool on = true);
  SceneBuilder& Active(const std::string& settings);
  host::RenderData* GetSettings(const std::string& name) const;

 private:
  host::BaseDocument* doc_;
  bool owned_;
  host::BaseObject* last_ = nullptr;
};

}  // namespace tests
