#include "engine/update/SceneUpdate.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/import/ImportedElements.h"
#include "engine/import/ImportedStates.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeCopy.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/StoredStates.h"
#include "engine/undo/MoveNodes.h"
#include "engine/undo/Undo.h"
#include "engine/update/ElementMatch.h"
#include "engine/update/MaterialUpdate.h"

namespace engine {
namespace {

using host::BaseDocument;
using host::BaseObject;

constexpr std::size_t kLongestPath = 12;  // names

// The last names from the top on.
std::string PathOf(const BaseObject& object) {
  std::string path = object.GetName().ToUtf8();
  std::size_t names = 1;
  for (const BaseObject* up = object.GetUp(); up != nullptr; up = up->GetUp()) {
    if (++names > kLongestPath) return "\u2026/" + path;
    path = up->GetName().ToUtf8() + "/" + path;
  }
  return path;
}

std::unordered_set<NodeId> IdsOf(const ImportedElements& elements) {
  std::unordered_set<NodeId> ids;
  for (const ImportedElement& element : elements.objects) ids.insert(element.id);
  for (const ImportedElement& element : elements.materials) ids.insert(element.id);
  return ids;
}

using Prints = std::unordered_map<NodeId, ImportedElement>;

Prints ById(const std::vector<ImportedElement>& elements) {
  Prints prints;
  for (const ImportedElement& element : elements) prints.emplace(element.id, element);
  return prints;
}

const ImportedElement* In(const Prints& prints, const host::BaseList2D& element) {
  const auto found = prints.find(IdOf(element));
  return found == prints.end() ? nullptr : &found->second;
}

// Equal ones stay shared with undo steps and copies.
bool HasOtherMesh(const BaseObject& object, const BaseObject& fresh) {
  const auto& one = MeshOf(object);
  const auto& other = MeshOf(fresh);
  return one != other && (!one || !other || *one != *other);
}

host::TextureTag* FirstTextureTag(const BaseObject& object) {
  return AsTextureTag(object.GetTag(host::Ttexture));
}

class Updating {
 public:
  Updating(BaseDocument& doc, BaseDocument& fresh, const UpdateOptions& options)
      : doc_(doc),
        fresh_(fresh),
        options_(options),
        known_(ImportedElementsOf(doc)),
        news_(ImportedElementsOf(fresh)),
        match_(doc, fresh, IdsOf(known_)),
        before_(ById(known_.objects)),
        now_(ById(news_.objects)) {}

  SceneUpdate Run() {
    if (!known_.file.empty() && known_.file != news_.file)
      result_.notes.push_back("The scene came from \"" + known_.file + "\", and not from \"" +
                              news_.file + "\".");
    NoteStates();
    {
      const UndoScope step(doc_, "Update from File");
      MaterialUpdate materials(doc_, fresh_, match_, known_, news_);
      result_.materials = materials.Run();
      materials_ = &materials;
      for (const BaseObject* object = fresh_.GetFirstObject(); object;
           object = NextInTree(object)) {
        Take(*object);
      }
      for (const auto& [object, fresh] : leaving_) Move(*object, *fresh);
      NameGone();
      if (options_.removeGone) RemoveGone();
      materials_ = nullptr;
      Remember(materials.Counterparts());
    }
    if (result_.ChangesAnything()) doc_.SetChanged();
    return std::move(result_);
  }

 private:
  void Take(const BaseObject& fresh) {
    BaseObject* object = match_.ObjectFor(fresh);
    const ImportedElement* print = In(now_, fresh);
    const ImportedElement now = print ? *print : ImportedElement();
    if (object != nullptr) {
      Change(*object, fresh, now);
    } else {
      object = Add(fresh);
    }
    places_.emplace(IdOf(fresh), object);
    kept_.objects.push_back({IdOf(*object), now.place, now.settings, now.look, now.above});
  }

  void Change(BaseObject& object, const BaseObject& fresh, const ImportedElement& now) {
    ++result_.objects.found;
    // Without a record of the last time the file counts.
    const ImportedElement* before = In(before_, object);
    const bool isElsewhere = ImportedAbove(object) != CounterpartAbove(fresh);
    const bool leaves = isElsewhere && (!before || before->above != now.above);
    const bool moves =
        !isElsewhere && (!before || before->place != now.place) && object.GetMl() != fresh.GetMl();
    host::BaseContainer data = object.GetData();
    data.MergeContainer(*fresh.GetDataInstance());
    const bool sets =
        (!before || before->settings != now.settings) && data != *object.GetDataInstance();
    const bool reshapes = HasOtherMesh(object, fresh);
    std::vector<std::string> what;
    if (leaves) what.emplace_back("parent");
    // Moved at the end, when all that it may hang below is there.
    if (leaves) leaving_.emplace_back(&object, &fresh);
    if (moves) what.emplace_back("place");
    if (reshapes) what.emplace_back("shape");
    if (sets) what.emplace_back("settings");
    if (!what.empty()) doc_.AddUndo(host::UNDO_CHANGE, &object);
    if (moves) object.SetMl(fresh.GetMl());
    if (reshapes) SetMesh(object, MeshOf(fresh));
    if (sets) object.SetData(data, host::FALSE);
    // A mesh that has got normals is smooth with that tag only.
    if (reshapes && fresh.GetTag(host::Tphong) && !object.GetTag(host::Tphong))
      doc_.AddUndo(host::UNDO_NEW, object.MakeTag(host::Tphong));
    if (Repaint(object, fresh, before && before->look == now.look)) what.emplace_back("material");
    if (!what.empty()) result_.objects.changed.push_back({PathOf(object), std::move(what)});
  }

  BaseObject* CounterpartAbove(const BaseObject& fresh) const {
    return fresh.GetUp() ? places_.at(IdOf(*fresh.GetUp())) : nullptr;
  }

  // The next one above that came from the file; groups that were made here are looked through.
  const BaseObject* ImportedAbove(const BaseObject& object) const {
    const BaseObject* up = object.GetUp();
    while (up && !known_.file.empty() && !In(before_, *up) && !added_.contains(up))
      up = up->GetUp();
    return up;
  }

  // To where it hangs in the file by now. What cannot go there, because that hangs below it here,
  // stays.
  void Move(BaseObject& object, const BaseObject& fresh) {
    BaseObject* parent = CounterpartAbove(fresh);
    host::GeListNode* last = parent ? parent->GetDownLast() : LastAtTop();
    if (MoveNodes(doc_, {&object}, parent, static_cast<BaseObject*>(last)))
      object.SetMl(fresh.GetMl());
  }

  BaseObject* LastAtTop() {
    if (!lastAtTop_ || lastAtTop_->GetUp()) lastAtTop_ = doc_.GetFirstObject();
    while (lastAtTop_ && lastAtTop_->GetNext()) lastAtTop_ = lastAtTop_->GetNext();
    return lastAtTop_;
  }

  // Another material where the file names another one than the last time, and one where there is
  // none at all.
  bool Repaint(BaseObject& object, const BaseObject& fresh, bool isAsBefore) {
    const host::TextureTag* from = FirstTextureTag(fresh);
    host::TextureTag* tag = FirstTextureTag(object);
    if (!from || isAsBefore) return false;
    const NodeId material = materials_->CounterpartOf(MaterialIdOf(*from));
    if (tag && MaterialIdOf(*tag) == material) return false;
    if (tag) {
      doc_.AddUndo(host::UNDO_CHANGE, tag);
    } else {
      tag = AsTextureTag(object.MakeTag(host::Ttexture));
      doc_.AddUndo(host::UNDO_NEW, tag);
    }
    tag->SetMaterial(AsMaterial(FindNode(&doc_, material)));
    return true;
  }

  // Where it stands in the file: below what its parent has become, behind what is before it. Alone,
  // without what is below it: the walk comes to that, and some of it may be in the scene already.
  BaseObject* Add(const BaseObject& fresh) {
    BaseObject* object = BaseObject::Alloc(fresh.GetType());
    CopyContents(fresh, *object, false);
    // The copied link names a layer of the import.
    object->SetLayerObject(nullptr);
    for (const host::BaseTag* tag = fresh.GetFirstTag(); tag; tag = tag->GetNext()) {
      host::BaseTag* copy = object->MakeTag(tag->GetType());
      CopyContents(*tag, *copy, false);
      if (host::TextureTag* texture = AsTextureTag(copy))
        SetMaterialId(*texture, materials_->CounterpartOf(MaterialIdOf(*texture)));
    }
    BaseObject* parent = CounterpartAbove(fresh);
    BaseObject* pred = fresh.GetPred() ? places_.at(IdOf(*fresh.GetPred())) : nullptr;
    // Its neighbor in the file may hang elsewhere here.
    if (!pred || pred->GetUp() == parent) {
      doc_.InsertObject(object, parent, pred);
    } else {
      doc_.AppendObject(object, parent);
    }
    doc_.AddUndo(host::UNDO_NEW, object);
    GiveLayer(fresh, *object);
    added_.insert(object);
    ++result_.objects.addedCount;
    if (!parent || !added_.contains(parent)) result_.objects.added.push_back(PathOf(*object));
    return object;
  }

  void GiveLayer(const BaseObject& fresh, BaseObject& object) {
    const host::LayerObject* from = fresh.GetLayerObject(&fresh_);
    if (from) object.SetLayerObject(LayerNamed(*from));
  }

  host::LayerObject* LayerNamed(const host::LayerObject& from) {
    if (layers_.empty()) {
      for (host::GeListNode* node = doc_.GetLayerObjectRoot()->GetFirst(); node;
           node = NextInTree(node)) {
        auto* layer = static_cast<host::LayerObject*>(node);
        layers_.emplace(layer->GetName().ToUtf8(), layer);
      }
    }
    host::LayerObject*& layer = layers_[from.GetName().ToUtf8()];
    if (layer) return layer;
    layer = host::LayerObject::Alloc();
    layer->SetName(from.GetName());
    SetOwnLayerData(*layer, OwnLayerData(from));
    doc_.AppendLayer(layer);
    doc_.AddUndo(host::UNDO_NEW, layer);
    return layer;
  }

  void NameGone() {
    gone_.insert(match_.GoneObjects().begin(), match_.GoneObjects().end());
    result_.objects.goneCount = gone_.size();
    for (const BaseObject* object : match_.GoneObjects()) {
      if (!gone_.contains(object->GetUp())) result_.objects.gone.push_back(PathOf(*object));
      if (const ImportedElement* before = In(before_, *object)) kept_.objects.push_back(*before);
    }
  }

  // Gone objects with anything below them that stays are kept as well.
  void RemoveGone() {
    if (gone_.empty()) return;
    if (known_.file.empty()) {
      result_.notes.emplace_back(
          "Nothing was removed: the scene does not tell what of it came from a file. After this "
          "update it does.");
      return;
    }
    std::unordered_set<const BaseObject*> needed{nullptr};
    for (const BaseObject* object = doc_.GetFirstObject(); object; object = NextInTree(object)) {
      if (gone_.contains(object)) continue;
      // Up to one that is known to be needed, at the latest the top, which is null: linear in all.
      for (const BaseObject* up = object->GetUp(); needed.insert(up).second; up = up->GetUp()) {
      }
    }
    std::unordered_set<const BaseObject*> removed;
    std::vector<BaseObject*> topmost;
    for (BaseObject* object : match_.GoneObjects()) {
      if (needed.contains(object)) continue;
      removed.insert(object);
      if (!removed.contains(object->GetUp())) topmost.push_back(object);
    }
    for (BaseObject* object : topmost) {
      doc_.AddUndo(host::UNDO_DELETE, object);
      BaseObject::Free(object);
    }
    result_.removed = removed.size();
    if (removed.size() < gone_.size())
      result_.notes.push_back("Kept, because something is below them that stays: " +
                              std::to_string(gone_.size() - removed.size()) + ".");
  }

  // Objects that are gone from the file but still in the scene count as gone the next time, too.
  void Remember(const std::vector<ImportedElement>& materials) {
    kept_.file = news_.file;
    kept_.materials = materials;
    KeepImportedElements(doc_, kept_);
  }

  // New variants of the file could only be recorded by loading over what is worked on.
  void NoteStates() {
    std::unordered_set<std::string> names;
    for (const StoredState& state : ReadStates(doc_)) names.insert(state.name);
    std::string listed;
    for (const ImportedState& state : TakeImportedStates(fresh_).states) {
      if (state.name.empty() || names.contains(state.name)) continue;
      listed += (listed.empty() ? "\"" : ", \"") + state.name + "\"";
    }
    if (!listed.empty())
      result_.notes.push_back("The file holds states that are no Stagemarks here: " + listed +
                              ". Import it into a scene of its own to have them.");
  }

  BaseDocument& doc_;
  BaseDocument& fresh_;
  const UpdateOptions& options_;
  const ImportedElements known_;
  const ImportedElements news_;
  const ElementMatch match_;
  const Prints before_;  // by identities of the scene
  const Prints now_;     // by identities of the fresh import
  ImportedElements kept_;
  SceneUpdate result_;
  MaterialUpdate* materials_ = nullptr;
  std::unordered_map<NodeId, BaseObject*> places_;  // by identities of the fresh import
  BaseObject* lastAtTop_ = nullptr;
  std::unordered_set<const BaseObject*> added_;
  std::vector<std::pair<BaseObject*, const BaseObject*>> leaving_;
  std::unordered_set<const BaseObject*> gone_;
  std::unordered_map<std::string, host::LayerObject*> layers_;
};

}  // namespace

bool SceneUpdate::ChangesAnything() const {
  return removed > 0 || objects.addedCount > 0 || materials.addedCount > 0 ||
         !objects.changed.empty() || !materials.changed.empty();
}

SceneUpdate UpdateScene(BaseDocument& doc, BaseDocument& fresh, const UpdateOptions& options) {
  return Updating(doc, fresh, options).Run();
}

}  // namespace engine
