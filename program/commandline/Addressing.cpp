#include "program/commandline/Addressing.h"

#include <fnmatch.h>

#include <charconv>

#include "engine/scene/Nodes.h"

namespace commandline {

using engine::NextInTree;
using engine::Result;
using host::BaseDocument;
using host::BaseObject;

namespace {

constexpr std::size_t kCandidatesShown = 8;

bool IsPattern(const std::string& typed) { return typed.find_first_of("*?") != std::string::npos; }

bool Matches(const std::string& pattern, const std::string& text, int flags) {
  return fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE | flags) == 0;
}

Result<std::vector<BaseObject*>> ByPosition(const BaseDocument& doc, const std::string& typed) {
  std::size_t wanted = 0;
  const auto [end, error] = std::from_chars(typed.data() + 1, typed.data() + typed.size(), wanted);
  if (error != std::errc() || end != typed.data() + typed.size()) {
    return Result<std::vector<BaseObject*>>::Failure("\"" + typed + "\" is no position; #0 is the first object of the tree.");
  }
  std::size_t position = 0;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object), ++position) {
    if (position == wanted) return std::vector<BaseObject*>{object};
  }
  return Result<std::vector<BaseObject*>>::Failure("There is no object " + typed + "; the scene has " + std::to_string(position) +
                                                   ".");
}

std::string Ambiguity(const std::string& typed, const std::vector<BaseObject*>& found, const BaseDocument& doc) {
  std::string text = "\"" + typed + "\" names " + std::to_string(found.size()) + " objects:";
  std::size_t position = 0;
  std::size_t shown = 0;
  for (BaseObject* object = doc.GetFirstObject(); object && shown < std::min(found.size(), kCandidatesShown);
       object = NextInTree(object)) {
    if (object == found[shown]) {
      text += "\n  #" + std::to_string(position) + "  " + PathOf(*object);
      ++shown;
    }
    ++position;
  }
  if (found.size() > shown) text += "\n  ...";
  return text + "\nGive the path, the position, or a pattern with * for all of them.";
}

template <class T>
Result<T*> FindNamed(T* first, const std::string& name, const std::string& kind) {
  T* found = nullptr;
  std::string known;
  for (T* item = first; item; item = NextInTree(item)) {
    if (item->GetName().View() == name) {
      if (found) return Result<T*>::Failure("There are several " + kind + "s \"" + name + "\". Rename one first.");
      found = item;
    }
    if (known.size() < 400) known += (known.empty() ? "" : ", ") + item->GetName().ToUtf8();
  }
  if (found) return found;
  return Result<T*>::Failure("There is no " + kind + " \"" + name + "\"." + (known.empty() ? "" : " There are: " + known + "."));
}

}  // namespace

std::string PathOf(const BaseObject& object) {
  std::vector<std::string> names;
  for (const BaseObject* at = &object; at; at = at->GetUp()) names.push_back(at->GetName().ToUtf8());
  std::string path;
  for (auto name = names.rbegin(); name != names.rend(); ++name) path += "/" + *name;
  return path;
}

Result<std::vector<BaseObject*>> FindObjects(const BaseDocument& doc, const std::string& typed) {
  if (!typed.empty() && typed[0] == '#') return ByPosition(doc, typed);
  const bool byPath = !typed.empty() && typed[0] == '/';
  std::vector<BaseObject*> found;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    const bool matches = byPath ? Matches(typed, PathOf(*object), FNM_PATHNAME) : Matches(typed, object->GetName().ToUtf8(), 0);
    if (matches) found.push_back(object);
  }
  if (found.empty()) {
    return Result<std::vector<BaseObject*>>::Failure("There is no object \"" + typed +
                                                     "\". `stagemarks info SCENE --tree` shows them.");
  }
  if (found.size() > 1 && !IsPattern(typed)) return Result<std::vector<BaseObject*>>::Failure(Ambiguity(typed, found, doc));
  return found;
}

Result<BaseObject*> FindObject(const BaseDocument& doc, const std::string& typed) {
  auto found = FindObjects(doc, typed);
  if (!found) return found.GetStatus();
  if (found.Value().size() != 1) return Result<BaseObject*>::Failure(Ambiguity(typed, found.Value(), doc));
  return found.Value().front();
}

Result<host::BaseMaterial*> FindMaterial(const BaseDocument& doc, const std::string& name) {
  return FindNamed(doc.GetFirstMaterial(), name, "material");
}

Result<host::LayerObject*> FindLayer(const BaseDocument& doc, const std::string& name) {
  return FindNamed(static_cast<host::LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()), name, "layer");
}

}  // namespace commandline
