#include "engine/update/ElementMatch.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "engine/scene/Extras.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "host/BaseMaterial.h"

namespace engine {
namespace {

using host::BaseDocument;
using host::BaseMaterial;
using host::BaseObject;

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
// Keys under which programs write an identity beside a node. The first that is there counts.
constexpr const char* kIdentityKeys[] = {"uuid", "guid", "uid", "id"};

std::string KeyOf(host::LONG type, const host::BaseList2D& element) {
  return std::to_string(type) + ':' + element.GetName().ToUtf8();
}
std::string KeyOf(const host::BaseList2D& element) { return KeyOf(element.GetType(), element); }

// Empty where the file gives none.
std::string IdentityInFile(const BaseObject& object) {
  const std::string extras = ExtrasOf(object);
  if (extras.empty()) return {};
  const auto json = nlohmann::json::parse(extras, nullptr, false);
  for (const char* key : kIdentityKeys) {
    if (!json.is_object() || !json.contains(key)) continue;
    const auto& value = json[key];
    if (value.is_string() || value.is_number_integer())
      return std::to_string(object.GetType()) + ':' + key + '=' + value.dump();
  }
  return {};
}

// The objects that count of a document, as a tree of their own. Entry 0 stands above all. Objects
// that were made here are left out, and what hangs below them hangs on the next one above that
// counts.
struct Tree {
  std::vector<BaseObject*> objects{nullptr};
  std::vector<std::vector<std::size_t>> children{{}};
  std::vector<std::size_t> counterparts{kNone};

  template <class Counts>
  Tree(const BaseDocument& doc, Counts counts) {
    std::unordered_map<const BaseObject*, std::size_t> nearest{{nullptr, 0}};
    for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
      const std::size_t above = nearest.at(object->GetUp());
      if (counts(*object)) {
        nearest.emplace(object, objects.size());
        children[above].push_back(objects.size());
        objects.push_back(object);
        children.emplace_back();
        counterparts.push_back(kNone);
      } else {
        nearest.emplace(object, above);
      }
    }
  }
};

class TreeMatch {
 public:
  TreeMatch(Tree& scene, Tree& fresh) : scene_(scene), fresh_(fresh) {}

  // From the surest to the least sure: identities in the file, then places below what is paired
  // already, then names that are unique in what is left. Each new pair lets the places below it be
  // compared.
  void Run() {
    Pair(0, 0);
    PairUnique([](const BaseObject& object) { return IdentityInFile(object); });
    MatchBelow();
    PairUnique([](const BaseObject& object) { return KeyOf(object); });
    MatchBelow();
  }

 private:
  void Pair(std::size_t scene, std::size_t fresh) {
    scene_.counterparts[scene] = fresh;
    fresh_.counterparts[fresh] = scene;
    pending_.emplace_back(scene, fresh);
  }

  // Pairs those without a counterpart whose key, where they have one, nothing else has.
  template <class Key>
  void PairUnique(Key key) {
    struct Found {
      std::size_t scene = kNone;
      std::size_t fresh = kNone;
      bool isUnique = true;
    };
    std::unordered_map<std::string, Found> found;
    const auto gather = [&](const Tree& tree, std::size_t Found::*place) {
      for (std::size_t i = 1; i < tree.objects.size(); ++i) {
        if (tree.counterparts[i] != kNone) continue;
        const std::string name = key(*tree.objects[i]);
        if (name.empty()) continue;
        Found& entry = found[name];
        // Unique on either side.
        entry.isUnique = entry.isUnique && entry.*place == kNone;
        entry.*place = i;
      }
    };
    gather(scene_, &Found::scene);
    gather(fresh_, &Found::fresh);
    for (std::size_t i = 1; i < fresh_.objects.size(); ++i) {
      if (fresh_.counterparts[i] != kNone) continue;
      const auto entry = found.find(key(*fresh_.objects[i]));
      if (entry == found.end()) continue;
      const auto [scene, fresh, isUnique] = entry->second;
      if (isUnique && scene != kNone && scene_.counterparts[scene] == kNone) Pair(scene, fresh);
    }
  }

  void MatchBelow() {
    while (!pending_.empty()) {
      const auto [scene, fresh] = pending_.back();
      pending_.pop_back();
      MatchChildren(scene_.children[scene], fresh_.children[fresh]);
    }
  }

  // The first of a name is the first of that name. A mesh of which the file has made several parts
  // is a group there, and goes on as one here.
  void MatchChildren(const std::vector<std::size_t>& scene, const std::vector<std::size_t>& fresh) {
    struct Waiting {
      std::vector<std::size_t> children;
      std::size_t next = 0;
    };
    std::unordered_map<std::string, Waiting> waiting;
    for (const std::size_t child : scene) {
      if (scene_.counterparts[child] == kNone)
        waiting[KeyOf(*scene_.objects[child])].children.push_back(child);
    }
    const auto pair = [&](std::size_t child, const std::string& key) {
      const auto found = waiting.find(key);
      if (found == waiting.end() || found->second.next == found->second.children.size()) return;
      Pair(found->second.children[found->second.next++], child);
    };
    for (const bool isGroupOfParts : {false, true}) {
      for (const std::size_t child : fresh) {
        const BaseObject& object = *fresh_.objects[child];
        const bool counts = !isGroupOfParts || object.GetType() == host::Onull;
        if (counts && fresh_.counterparts[child] == kNone)
          pair(child, isGroupOfParts ? KeyOf(host::Opolygon, object) : KeyOf(object));
      }
    }
  }

  Tree& scene_;
  Tree& fresh_;
  std::vector<std::pair<std::size_t, std::size_t>> pending_;
};

}  // namespace

ElementMatch::ElementMatch(const BaseDocument& scene, const BaseDocument& fresh,
                           const std::unordered_set<NodeId>& imported) {
  MatchObjects(scene, fresh, imported);
  MatchMaterials(scene, fresh, imported);
}

void ElementMatch::MatchObjects(const BaseDocument& scene, const BaseDocument& fresh,
                                const std::unordered_set<NodeId>& imported) {
  Tree from(scene, [&](const BaseObject& object) {
    return imported.empty() || imported.contains(IdOf(object));
  });
  Tree to(fresh, [](const BaseObject&) { return true; });
  TreeMatch(from, to).Run();
  for (std::size_t i = 1; i < to.objects.size(); ++i) {
    if (to.counterparts[i] != kNone)
      objects_.emplace(IdOf(*to.objects[i]), from.objects[to.counterparts[i]]);
  }
  for (std::size_t i = 1; i < from.objects.size(); ++i) {
    if (from.counterparts[i] == kNone) goneObjects_.push_back(from.objects[i]);
  }
}

void ElementMatch::MatchMaterials(const BaseDocument& scene, const BaseDocument& fresh,
                                  const std::unordered_set<NodeId>& imported) {
  struct Waiting {
    std::vector<BaseMaterial*> materials;
    std::size_t next = 0;
  };
  std::unordered_map<std::string, Waiting> waiting;
  for (BaseMaterial* material = scene.GetFirstMaterial(); material;
       material = material->GetNext()) {
    if (imported.empty() || imported.contains(IdOf(*material)))
      waiting[KeyOf(*material)].materials.push_back(material);
  }
  std::unordered_set<const BaseMaterial*> found;
  for (BaseMaterial* material = fresh.GetFirstMaterial(); material;
       material = material->GetNext()) {
    const auto entry = waiting.find(KeyOf(*material));
    if (entry == waiting.end() || entry->second.next == entry->second.materials.size()) continue;
    BaseMaterial* counterpart = entry->second.materials[entry->second.next++];
    materials_.emplace(IdOf(*material), counterpart);
    found.insert(counterpart);
  }
  for (BaseMaterial* material = scene.GetFirstMaterial(); material;
       material = material->GetNext()) {
    const bool counts = imported.empty() || imported.contains(IdOf(*material));
    if (counts && !found.contains(material)) goneMaterials_.push_back(material);
  }
}

BaseObject* ElementMatch::ObjectFor(const BaseObject& fresh) const {
  const auto found = objects_.find(IdOf(fresh));
  return found == objects_.end() ? nullptr : found->second;
}

BaseMaterial* ElementMatch::MaterialFor(const BaseMaterial& fresh) const {
  const auto found = materials_.find(IdOf(fresh));
  return found == materials_.end() ? nullptr : found->second;
}

}  // namespace engine
