// RecordList: the records of a state's objects, tags or layers as loading reads them: those under
// the keys 0 to count - 1, in this order, later ones over earlier ones of the same element. Two
// lists are compared without a look at what they share. A list borrows from the container, which
// outlives it unchanged; any thread that may read that.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "engine/core/LongBody.h"
#include "engine/states/RecordedParts.h"
#include "engine/states/StoredStates.h"
#include "host/RenderData.h"

namespace engine {

// The record that an entry holds, null for anything else and for one without entries.
inline const ContainerBody* RecordOf(const Entry& entry) {
  return entry.type == host::DA_CONTAINER ? BlockOf<ContainerBody>(entry.bits) : nullptr;
}
// The link or number under a key of a record; 0 where there is none.
inline NodeId LinkIn(const ContainerBody* record, host::LONG key) {
  const std::optional<Entry> entry = FindEntry(record, key);
  return entry && entry->type == host::DA_ALIASLINK ? entry->bits : 0;
}
inline host::LONG NumberIn(const ContainerBody* record, host::LONG key) {
  const std::optional<Entry> entry = FindEntry(record, key);
  return entry ? LongOf(entry->Get()) : 0;
}

// Identities that have been met. Those of one scene lie close together, so a page holds the bits of
// 4096 of them.
class NodeSet {
 public:
  // False when it was in already.
  bool Insert(NodeId id) {
    std::uint64_t& word = PageOf(id)[(id >> 6) % kWords];
    const std::uint64_t bit = std::uint64_t{1} << (id % 64);
    const bool isNew = !(word & bit);
    word |= bit;
    return isNew;
  }
  bool IsEmpty() const { return pages_.empty(); }
  bool Has(NodeId id) const {
    if (near_ != id >> kPageBits) GoTo(id >> kPageBits);
    return nearPage_ && ((*nearPage_)[(id >> 6) % kWords] >> (id % 64) & 1) != 0;
  }

 private:
  static constexpr std::size_t kWords = 64;
  using Page = std::array<std::uint64_t, kWords>;
  Page& PageOf(NodeId id) {
    if (near_ != id >> kPageBits || !nearPage_) AddPage(id >> kPageBits);
    return *nearPage_;
  }
  void GoTo(NodeId page) const;
  void AddPage(NodeId page);

  static constexpr unsigned kPageBits = 12;
  std::unordered_map<NodeId, Page> pages_;  // by identity / 4096; they never move
  // The page met last, null where it is not there.
  mutable NodeId near_ = ~NodeId{0};
  mutable Page* nearPage_ = nullptr;
};

// The lists of a state: objects, layers, tags.
struct ListRow {
  host::LONG key;
  host::LONG link;  // under which each record holds its element
};
inline constexpr std::array<ListRow, 3> kRecordLists{{{kStoredObjects, kStoredObjectLink},
                                                      {kStoredLayers, kStoredLayerLink},
                                                      {kStoredTags, kStoredTagLink}}};
// The parts whose records lie in that list.
Parts PartsOfList(host::LONG list);
// The part of a record in that list by its element, null for one that loading skips.
const PartRow* PartOfElement(host::LONG list, host::BaseList2D& element);

// A state's copy of render settings, null where it has none that is still there.
host::RenderData* RecordedSettings(const host::BaseDocument& doc,
                                   const host::BaseContainer& record);
// A state's camera, 0 for none; nothing where the state does not record it.
std::optional<NodeId> RecordedCamera(const host::BaseDocument& doc,
                                     const host::BaseContainer& record);
// The scene's camera, 0 for none.
NodeId CameraNow(const host::BaseDocument& doc);

class RecordList {
 public:
  // `link`: the key under which a record holds its element.
  RecordList(const host::BaseContainer& state, host::LONG key, host::LONG link);
  RecordList(const RecordList&) = delete;
  RecordList& operator=(const RecordList&) = delete;

  using Stretch = std::span<const Entry>;
  // Lists that hold the same entries have stretches at the same addresses, as far as these lie in
  // the container.
  const std::vector<Stretch>& Stretches() const { return stretches_; }
  // Else the entries are gathered in this list, and another one's may come to lie where they were.
  bool LiesInContainer() const { return gathered_.empty(); }
  // The range of the elements in a stretch (by its number), where it is known: then each of its
  // records has an element, and no two the same.
  LinkRange ElementsOf(std::size_t stretch) const {
    return ranges_.empty() ? LinkRange() : ranges_[stretch];
  }
  std::size_t Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  NodeId ElementOf(const ContainerBody* record) const { return LinkIn(record, link_); }

 private:
  void Add(const Chunk& chunk);

  std::vector<Stretch> stretches_;
  std::vector<LinkRange> ranges_;  // of the stretches of a long list
  std::vector<Entry> gathered_;    // where keys are no positions
  std::size_t count_ = 0;
  host::LONG link_;
};

// Records of one element in two lists, null for a list that does not have it. They are different
// blocks, but may say the same.
struct RecordPair {
  NodeId element;
  const ContainerBody* left;
  const ContainerBody* right;
};
// All elements whose records are not the very same block in both lists: those of the left in its
// order, then those that only the right has. Cost: what is not shared; and where that is anything,
// one look at each stretch of the left list, or at the links in one that does not know its elements
// or has others among them that are asked about.
std::vector<RecordPair> UnsharedRecords(const RecordList& left, const RecordList& right);

// Calls `visit(element, record)` for the record of each element that counts, from the last to the
// first. `met` gets all elements.
template <class Visit>
void ForEachRecordBackwards(const RecordList& list, NodeSet& met, Visit visit) {
  for (auto stretch = list.Stretches().rbegin(); stretch != list.Stretches().rend(); ++stretch) {
    for (auto entry = stretch->rbegin(); entry != stretch->rend(); ++entry) {
      const ContainerBody* record = RecordOf(*entry);
      const NodeId element = list.ElementOf(record);
      if (element != 0 && met.Insert(element)) visit(element, record);
    }
  }
}

}  // namespace engine
