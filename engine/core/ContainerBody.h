// ContainerBody: the counted entries and own ID behind BaseContainer, in three forms. The short
// form keeps up to kShortEntries entries right behind its header, and behind them, once there are
// more than a few, an index of their keys (Entries.h). The laid-out form is for as many: more than
// a few values without containers among them, beside a share of their keys (Layout.h). The long
// form keeps a table of chunks, each counted on its own, so that a write into a copy of a long
// container copies one chunk and the table, not everything.
//
// The law of sharing and of writing in place:
//  1. A body or chunk with more than one owner is never changed. A writer makes every body on the
//     way from the owning container object down to the entry its own first, from the top: a body
//     with one owner is still shared when a body above it is.
//  2. An instance (a sub-container handed out in place) belongs to the container object that handed
//     it out, not to the body. It borrows its body from its owner's entry and holds no share. Only
//     container objects know their instances, so a copy, which shares bodies only, never meets an
//     instance of its original.
//  3. A write through an instance starts at the top of its chain of owners (law 1) and leaves in
//     each owner's entry, and in each instance on the way, the body that is now theirs.
//  4. An instance ends when its entry is replaced by another value or removed, and when its owner
//     is assigned, flushed or destroyed; its own instances end with it. A container constructed by
//     a move takes the instances along; a move from an instance, and an assignment by a move where
//     there are instances, copies.
//  5. Null is the body of a container without entries and with own ID 0.
// Threads: any number may read and copy one body; the counts are atomic.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/core/Entries.h"
#include "engine/core/Layout.h"

namespace engine {

inline constexpr std::uint32_t kFirstEntries = 4;  // room of a new body
// Most entries of the short and the laid-out form; the largest records have 51
inline constexpr std::uint32_t kShortEntries = 64;

enum class BodyForm : std::uint8_t { kShort, kLaidOut, kLong };

struct ContainerBody {
  SharedCount owners;
  host::LONG id = 0;
  std::uint32_t size = 0;
  BodyForm form = BodyForm::kShort;
  std::uint8_t capacity = 0;  // room, but of the long form
  // Where the next number is mostly written: behind the one written last, and behind the last entry
  // at the first. Of the short form always the position of an entry; 0 where there is none.
  std::uint16_t behind = 0;

  // A number was written at that position.
  void ExpectBehind(std::uint32_t position) {
    behind = static_cast<std::uint16_t>(position + 1 < size ? position + 1 : 0);
  }

  bool IsLong() const { return form == BodyForm::kLong; }
  bool IsShort() const { return form == BodyForm::kShort; }
  bool IsLaidOut() const { return form == BodyForm::kLaidOut; }
  // The entries of the short form.
  Entry* Entries() { return static_cast<Entry*>(static_cast<void*>(this + 1)); }
  const Entry* Entries() const {
    return static_cast<const Entry*>(static_cast<const void*>(this + 1));
  }
  // Of the short form.
  bool IsIndexed() const { return capacity >= kIndexedEntries; }
  // Of the laid-out form: its keys, and the values' bits.
  SharedReference<Layout>& Keys() {
    return *static_cast<SharedReference<Layout>*>(static_cast<void*>(this + 1));
  }
  const Layout& Keys() const {
    return **static_cast<const SharedReference<Layout>*>(static_cast<const void*>(this + 1));
  }
  std::uint64_t* Values() { return static_cast<std::uint64_t*>(static_cast<void*>(this + 1)) + 1; }
  const std::uint64_t* Values() const {
    return static_cast<const std::uint64_t*>(static_cast<const void*>(this + 1)) + 1;
  }
  // The entries of the short or the laid-out form.
  EntrySpan All() const {
    return IsShort() ? EntrySpan(std::span(Entries(), size))
                     : EntrySpan(Keys().Keys(), Values(), size);
  }
  // Of those forms: the value's bits at a position.
  std::uint64_t& BitsAt(std::uint32_t position) {
    return IsShort() ? Entries()[position].bits : Values()[position];
  }
};
static_assert(sizeof(ContainerBody) == 16);
static_assert(sizeof(SharedReference<Layout>) == sizeof(std::uint64_t));

inline void RetainBody(ContainerBody* body) {
  if (body) body->owners.Retain();
}
// Ends a body without owners. Any depth of nesting, without recursion to match.
void EndBody(ContainerBody* body);
inline void ReleaseBody(ContainerBody* body) {
  if (body && body->owners.Release()) EndBody(body);
}

inline host::LONG IdOf(const ContainerBody* body) { return body ? body->id : 0; }
inline std::uint32_t SizeOf(const ContainerBody* body) { return body ? body->size : 0; }

// The position of a key in the short or the laid-out form; kNoPosition where it is not.
inline std::uint32_t FindShort(const ContainerBody& body, host::LONG key) {
  if (body.IsLaidOut()) return body.Keys().Find(key, body.size);
  const Entry* entries = body.Entries();
  // Most short containers count their keys up from the first one.
  const std::uint32_t guess =
      static_cast<std::uint32_t>(key) - static_cast<std::uint32_t>(entries->key);
  if (guess < body.size && entries[guess].key == key) return guess;
  if (body.IsIndexed()) return FindIndexed(entries, body.capacity, key);
  for (std::uint32_t i = 0; i < body.size; ++i) {
    if (entries[i].key == key) return i;
  }
  return kNoPosition;
}
inline Entry ShortEntryAt(const ContainerBody& body, std::uint32_t position) {
  return body.IsShort() ? body.Entries()[position]
                        : EntryOf(body.Keys().Keys()[position], body.Values()[position]);
}
std::optional<Entry> FindLongEntry(const ContainerBody& body, host::LONG key);

// The entry with that key, or at that position; nothing where there is none. Position of the key,
// -1 where there is none.
inline std::optional<Entry> FindEntry(const ContainerBody* body, host::LONG key) {
  if (!body) return {};
  if (body->IsLong()) return FindLongEntry(*body, key);
  const std::uint32_t position = FindShort(*body, key);
  if (position == kNoPosition) return {};
  return ShortEntryAt(*body, position);
}
std::optional<Entry> EntryAt(const ContainerBody* body, std::uint32_t position);
host::LONG FindPosition(const ContainerBody* body, host::LONG key);

// The stretches of entries that lie together, in order: `next` is 0 at first and counts up; empty
// at the end.
EntrySpan NextEntries(const ContainerBody* body, std::uint32_t& next);

[[nodiscard]] ContainerBody* NewBody(host::LONG id);
// A copy with one owner, instead of one share of `body`.
[[nodiscard]] ContainerBody* SplitBody(ContainerBody* body);
// A body of one owner, instead of one share of `body`; null gives a new one.
[[nodiscard]] inline ContainerBody* MakeUnique(ContainerBody* body) {
  if (!body) return NewBody(0);
  return body->owners.Unique() ? body : SplitBody(body);
}

// These change a body that has one owner and give back the body, which may have moved. AppendEntry:
// the key is not there yet; takes the value's share. ReplaceEntry: the key is there; takes the
// value's share and releases the one of the value before. RemoveEntry: closes the gap; the key is
// there. ClearEntries: only the own ID stays.
[[nodiscard]] ContainerBody* AppendOtherwise(ContainerBody* body, host::LONG key, Value value);
[[nodiscard]] inline ContainerBody* AppendEntry(ContainerBody* body, host::LONG key, Value value) {
  if (!body->IsShort() || body->size >= body->capacity) return AppendOtherwise(body, key, value);
  FillEntry(body->Entries()[body->size], key, value);
  if (body->IsIndexed()) IndexItem(body->Entries(), body->capacity, body->size);
  ++body->size;
  return body;
}
[[nodiscard]] ContainerBody* ReplaceEntry(ContainerBody* body, host::LONG key, Value value);
[[nodiscard]] ContainerBody* RemoveEntry(ContainerBody* body, host::LONG key);
// Where a body of one owner keeps the bits of the container under a key.
std::uint64_t& ContainerBits(ContainerBody& body, host::LONG key);
[[nodiscard]] ContainerBody* ClearEntries(ContainerBody* body);

enum class OwnIds { kIgnored, kCompared };
bool SameBodies(const ContainerBody* a, const ContainerBody* b, OwnIds ids);
// Numbers compare by their bits, so that every value equals itself.
bool SameSharedValues(Value a, Value b, OwnIds ids);
inline bool SameValues(Value a, Value b, OwnIds ids) {
  if (a.type != b.type) return false;
  if (a.bits == b.bits || !IsShared(a.type)) return a.bits == b.bits;
  return a.type == host::DA_CONTAINER
             ? SameBodies(BlockOf<ContainerBody>(a.bits), BlockOf<ContainerBody>(b.bits), ids)
             : SameSharedValues(a, b, ids);
}

// The way into BaseContainer.
struct ContainerAccess {
  static ContainerBody* Body(const host::BaseContainer& container) { return container.body_; }
  static host::BaseContainer Share(ContainerBody* body) {
    host::BaseContainer container;
    RetainBody(body);
    container.body_ = body;
    return container;
  }
  // The entry's value set in place or appended, as BaseContainer::SetData does. Takes no share of
  // `value`.
  static void Set(host::BaseContainer& container, host::LONG key, Value value);
  // Set for a number, a link or nil, which hold no share. Most of them meet an entry of their type
  // where the next one is expected, in a short body of one owner.
  static void SetNumber(host::BaseContainer& container, host::LONG key, Value value) {
    ContainerBody* body = container.body_;
    if (!HoldsOwnShort(container)) return Set(container, key, value);
    if (body->IsLaidOut()) return SetLaidOut(container, key, value);
    Entry& entry = body->Entries()[body->behind];
    if (KeyAndType(entry) != KeyAndType(key, value.type))
      return SearchAndSetNumber(container, key, value);
    entry.bits = value.bits;
    body->ExpectBehind(body->behind);
  }
  // A record that gets another own ID is mostly written over from its first entry on.
  static void SetId(host::BaseContainer& container, host::LONG id) {
    if (!HoldsOwnShort(container)) return SetIdOfShared(container, id);
    container.body_->id = id;
    container.body_->behind = 0;
  }
  // Every body from the owner of all down to this container has one owner afterwards.
  static void PrepareWrite(host::BaseContainer& container) {
    if (container.anchor_) {
      PrepareAnchored(container);
    } else {
      container.body_ = MakeUnique(container.body_);
    }
  }
  // `body`, of which the caller's share is taken, becomes the body of the container.
  static void Replace(host::BaseContainer& container, ContainerBody* body);
  // After PrepareWrite: the body has moved to `body`.
  static void Moved(host::BaseContainer& container, ContainerBody* body) {
    if (container.anchor_ && body != container.body_) TellOwner(container, body);
    container.body_ = body;
  }
  static host::BaseContainer* Instance(host::BaseContainer& container, host::LONG key);
  static void DropInstances(host::BaseContainer& container);
  static void DropInstance(host::BaseContainer& container, host::LONG key) {
    if (container.anchor_) DropAnchored(container, key);
  }
  static void Destroy(host::BaseContainer& container);
  // Body and instances of `from`, which is empty afterwards; of an instance, a share of its body.
  static void Take(host::BaseContainer& container, host::BaseContainer& from);
  static bool IsInstance(host::BaseContainer& container);
  static ContainerBody*& BodySlot(host::BaseContainer& container) { return container.body_; }
  static ContainerAnchor*& Anchor(host::BaseContainer& container) { return container.anchor_; }

 private:
  // SetNumber in a laid-out body that nobody shares.
  [[gnu::noinline]] static void SetLaidOut(host::BaseContainer& container, host::LONG key,
                                           Value value);
  // A short or laid-out body that nobody shares, in a container without instances that is none
  // itself.
  static bool HoldsOwnShort(const host::BaseContainer& container) {
    const ContainerBody* body = container.body_;
    return body && !container.anchor_ && !body->IsLong() && body->owners.Unique();
  }
  // SetNumber in a short or laid-out body that nobody shares. Not inlined, so that SetNumber stays
  // lean.
  [[gnu::noinline]] static void SearchAndSetNumber(host::BaseContainer& container, host::LONG key,
                                                   Value value);
  [[gnu::noinline]] static void AppendNumber(host::BaseContainer& container, host::LONG key,
                                             Value value);
  [[gnu::noinline]] static void SetIdOfShared(host::BaseContainer& container, host::LONG id);
  [[gnu::noinline]] static void Append(host::BaseContainer& container, host::LONG key, Value value);
  [[gnu::noinline]] static void ReplaceAt(host::BaseContainer& container, host::LONG key,
                                          Value value);
  static void PrepareAnchored(host::BaseContainer& container);
  static void TellOwner(host::BaseContainer& container, ContainerBody* body);
  static void DropAnchored(host::BaseContainer& container, host::LONG key);
};

}  // namespace engine
