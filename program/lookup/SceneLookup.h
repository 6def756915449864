// SceneLookup: finds things of a scene by what a person types: a name, a path from the top
// ("/Room/Lamp"), a pattern with * and ?, or "#12" for the object at position 12 (0-based) of the
// tree, or the material or layer of that number; and names that may have been meant by one that is
// not there. A name that cannot be printed as it is means the same as what is printed for it.
// Nothing is owned. Main thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/Result.h"
#include "host/Host.h"

namespace lookup {

// The path of an object: its names from the top, each after a slash.
std::string PathOf(const host::BaseObject& object);

// The paths of objects in a pre-order walk, O(length of the name) a step.
class ObjectPaths {
 public:
  // The path of the next object of the walk; valid until the next step.
  const std::string& StepTo(const host::BaseObject& object);
  std::size_t Slashes() const { return levels_.empty() ? 0 : levels_.back().slashes; }
  // 0 for an object at the top.
  std::size_t Depth() const { return levels_.size() - 1; }

 private:
  struct Level {
    const host::BaseObject* object;
    std::size_t length;
    std::size_t slashes;
  };

  std::string path_;
  std::vector<Level> levels_;
};

// Which objects may be meant.
struct WantedObjects {
  host::LONG type = 0;     // only of this type, 0: of all
  bool severalOk = false;  // a plain name may mean all that have it
};
// Every object that a pattern matches; without * or ? exactly one, unless several may be meant. A
// failure says what is missing, or which ones a name means.
engine::Result<std::vector<host::BaseObject*>> FindObjects(const host::BaseDocument& doc,
                                                           const std::string& typed,
                                                           const WantedObjects& wanted = {});
engine::Result<host::BaseObject*> FindObject(const host::BaseDocument& doc,
                                             const std::string& typed,
                                             const WantedObjects& wanted = {});
engine::Result<host::BaseMaterial*> FindMaterial(const host::BaseDocument& doc,
                                                 const std::string& typed);
engine::Result<host::LayerObject*> FindLayer(const host::BaseDocument& doc,
                                             const std::string& typed);
// As FindObjects.
engine::Result<std::vector<host::BaseMaterial*>> FindMaterials(const host::BaseDocument& doc,
                                                               const std::string& typed,
                                                               bool severalOk = false);
engine::Result<std::vector<host::LayerObject*>> FindLayers(const host::BaseDocument& doc,
                                                           const std::string& typed,
                                                           bool severalOk = false);
host::LayerObject* FirstLayerOf(const host::BaseDocument& doc);

// The position that "#12" means; nothing where something else was typed.
std::optional<std::size_t> PositionIn(const std::string& typed);
// The words for the types of objects that can be added.
struct ObjectTypeWord {
  const char* word;
  host::LONG type;
};
inline constexpr ObjectTypeWord kObjectTypeWords[] = {
    {"null", host::Onull},  {"camera", host::Ocamera},     {"light", host::Olight},
    {"cube", host::Ocube},  {"sphere", host::Osphere},     {"cone", host::Ocone},
    {"disc", host::Odisc},  {"cylinder", host::Ocylinder}, {"plane", host::Oplane},
    {"torus", host::Otorus}};

// An absolute path for one as typed.
std::string AbsolutePath(const std::string& typed);

// Whether something typed has a * for any text or a ? for one letter, and what such a pattern
// means.
bool IsPattern(const std::string& typed);
bool MatchesPattern(std::string_view text, std::string_view pattern);
// Whether `typed` is what this program prints of a name, in lines or in JSON.
bool MeansPrinted(const std::string& name, const std::string& typed);
// The names of Stagemarks among `known` that are meant by names and patterns, in the order typed,
// those of a pattern in the order of `known`, each once. A name that is there stands for itself,
// whatever letters it has. A failure says what means none of them.
engine::Result<std::vector<std::string>> FindMarks(const std::vector<std::string>& typed,
                                                   const std::vector<std::string>& known);

// Those of `known` that are close to `name`, the closest first, at most three.
std::vector<std::string> NamesLike(const std::string& name, const std::vector<std::string>& known);
// " Did you mean "A" or "B"?", empty where nothing is close.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& known);

}  // namespace lookup
