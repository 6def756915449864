// BaseContainer: an ordered list of (key, value) entries with an ID of its own. It is a value:
// copies are cheap, share structure and split on write, so that a copy never changes with its
// original. GetContainerInstance hands out a stored sub-container in place; the container that
// handed it out owns it. One container object belongs to one thread at a time; copies may go to
// other threads.
#pragma once

#include "host/GeData.h"

namespace engine {
struct ContainerBody;
struct ContainerAnchor;
struct ContainerAccess;
}  // namespace engine

namespace host {

class BaseMaterial;
class BaseObject;
class DescID;

class BaseContainer {
 public:
  // No entries, own ID `id`. Costs no memory until the first write or while `id` is 0.
  BaseContainer() = default;
  explicit BaseContainer(LONG id);
  BaseContainer(const BaseContainer& other);
  BaseContainer(BaseContainer&& other) noexcept;
  // Takes entries and own ID. Instances handed out by the assigned-to container become invalid.
  BaseContainer& operator=(const BaseContainer& other);
  BaseContainer& operator=(BaseContainer&& other) noexcept;
  ~BaseContainer();

  // The container's own ID; it counts in no comparison.
  void SetId(LONG id);
  LONG GetId() const;

  // Key of the entry at position `index` (0-based), -1 outside.
  LONG GetIndexId(LONG index) const;
  // Position of `id`, -1 when there is no such entry. Near constant time in a long container: what
  // is looked up by key needs no index of one's own.
  LONG FindIndex(LONG id) const;
  // Type of the entry's value (DA_...), DA_NIL when there is none.
  LONG GetType(LONG id) const;
  // Number of entries.
  LONG GetCount() const;
  // Value at position `index`; nil outside. Positions move when an entry before them is removed;
  // walk backwards to remove while walking.
  GeData GetIndexData(LONG index) const;

  // Value under `id`; nil when there is none.
  GeData GetData(LONG id) const;
  // Sets an existing key in place, keeping its position, or appends. Writing the value that is
  // already there changes nothing and splits nothing.
  void SetData(LONG id, const GeData& value);
  // The first level of `id` as a key: the same as SetData and GetData. False for an empty path.
  Bool SetParameter(const DescID& id, const GeData& value);
  Bool GetParameter(const DescID& id, GeData& value) const;
  // Removes the entry and closes the gap; false when there is none.
  Bool RemoveData(LONG id);
  // Removes all entries and keeps the own ID.
  void FlushAll();
  // Sets every entry of `source`, in its order; other entries and the own ID stay. Merging a
  // container into itself changes nothing.
  void MergeContainer(const BaseContainer& source);

  // Typed access. A getter answers `preset` when the key is absent, and the default of its type
  // when the stored type does not fit. A Bool is stored as LONG 0 or 1. "Unfitting" leaves out
  // numbers: GetLong truncates a REAL, GetReal converts a LONG.
  Bool GetBool(LONG id, Bool preset = FALSE) const;
  LONG GetLong(LONG id, LONG preset = 0) const;
  Real GetReal(LONG id, Real preset = 0) const;
  Vector GetVector(LONG id) const;
  BaseTime GetTime(LONG id) const;
  String GetString(LONG id) const;
  Filename GetFilename(LONG id) const;
  // A copy; empty with own ID 0 when the key is absent or holds something else.
  BaseContainer GetContainer(LONG id) const;
  void SetBool(LONG id, Bool value);
  void SetLong(LONG id, LONG value);
  void SetReal(LONG id, Real value);
  void SetVector(LONG id, const Vector& value);
  void SetTime(LONG id, const BaseTime& value);
  void SetString(LONG id, const String& value);
  void SetFilename(LONG id, const Filename& value);
  void SetContainer(LONG id, const BaseContainer& value);

  // The stored sub-container in place, or null when the key is absent or holds something else;
  // never creates. It is owned by this container and valid until that very entry is replaced or
  // removed (or this container is assigned, flushed or destroyed), also while siblings are added. A
  // write through it never reaches a copy taken before or after.
  BaseContainer* GetContainerInstance(LONG id);
  const BaseContainer* GetContainerInstance(LONG id) const;

  // Links are held as identities. A link resolves to its target if that is alive and now belongs to
  // `doc`, anywhere in its trees; otherwise, and without a document, to null. The target is not
  // owned. Null makes a null link, which is an entry.
  void SetLink(LONG id, const BaseList2D* target);
  BaseList2D* GetLink(LONG id, const BaseDocument* doc) const;
  // As GetLink, but null unless the target is an object or a material, respectively.
  BaseObject* GetObjectLink(LONG id, const BaseDocument* doc) const;
  BaseMaterial* GetMaterialLink(LONG id, const BaseDocument* doc) const;

  // Entries alike: keys, order, types, values, nested containers. Own IDs count nowhere.
  Bool operator==(const BaseContainer& other) const;
  Bool operator!=(const BaseContainer& other) const { return !(*this == other); }

 private:
  friend struct engine::ContainerAccess;
  // Entries and own ID, shared with copies; null: no entries, ID 0
  engine::ContainerBody* body_ = nullptr;
  // Instances handed out, and the owner if this is one itself
  engine::ContainerAnchor* anchor_ = nullptr;
};

}  // namespace host
