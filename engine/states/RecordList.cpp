#include "engine/states/RecordList.h"

#include "engine/core/LongBody.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "host/BaseObject.h"

namespace engine {

void NodeSet::GoTo(NodeId page) const {
  const auto found = pages_.find(page);
  near_ = page;
  nearPage_ = found == pages_.end() ? nullptr : const_cast<Page*>(&found->second);
}

void NodeSet::AddPage(NodeId page) {
  near_ = page;
  nearPage_ = &pages_.try_emplace(page, Page{}).first->second;
}

namespace {

// Whether each entry has its position as its key.
bool IsDense(const ContainerBody* body) {
  if (!body) return true;
  if (body->IsLong()) return AsLong(body)->order == KeyOrder::kDense;
  for (std::uint32_t i = 0; i < body->size; ++i) {
    if (body->Entries()[i].key != static_cast<host::LONG>(i)) return false;
  }
  return true;
}

using Stretch = RecordList::Stretch;

// A place in a list, as far as its stretch goes on from there.
class Cursor {
 public:
  explicit Cursor(const std::vector<Stretch>& stretches) : stretches_(stretches) { SkipEmpty(); }
  bool AtEnd() const { return next_ == stretches_.size(); }
  Stretch Rest() const { return stretches_[next_].subspan(done_); }
  void Advance(std::size_t count) {
    done_ += count;
    if (done_ == stretches_[next_].size()) {
      done_ = 0;
      ++next_;
      SkipEmpty();
    }
  }

 private:
  void SkipEmpty() {
    while (!AtEnd() && stretches_[next_].empty()) ++next_;
  }

  const std::vector<Stretch>& stretches_;
  std::size_t next_ = 0;
  std::size_t done_ = 0;
};

// Walks through two lists side by side: `same(entries)` for what is at the same place in both,
// `other(left, right)` for the rest, null behind the end of one.
template <class Same, class Other>
void WalkBoth(const RecordList& left, const RecordList& right, Same same, Other other) {
  Cursor a(left.Stretches());
  Cursor b(right.Stretches());
  while (!a.AtEnd() && !b.AtEnd()) {
    const std::size_t count = std::min(a.Rest().size(), b.Rest().size());
    const Entry* one = a.Rest().data();
    const Entry* two = b.Rest().data();
    if (one == two) {
      same(Stretch(one, count));
    } else {
      for (std::size_t i = 0; i < count; ++i) {
        if (one[i].bits == two[i].bits && one[i].type == two[i].type) {
          same(Stretch(one + i, 1));
        } else {
          other(one + i, two + i);
        }
      }
    }
    a.Advance(count);
    b.Advance(count);
  }
  for (; !a.AtEnd(); a.Advance(1)) other(a.Rest().data(), nullptr);
  for (; !b.AtEnd(); b.Advance(1)) other(nullptr, b.Rest().data());
}

// Collects what is not shared. While each element occurs once in each list, pairs are known at
// once; else the lists are gone through again for the elements in question.
class UnsharedWalk {
 public:
  UnsharedWalk(const RecordList& left, const RecordList& right) : left_(left), right_(right) {}

  std::vector<RecordPair> Run() {
    WalkBoth(
        left_, right_, [](Stretch) {}, [this](const Entry* a, const Entry* b) { Meet(a, b); });
    if (pairs_.empty()) return {};
    if (!repeated_) {
      WalkBoth(
          left_, right_, [this](Stretch entries) { LookForRepeated(entries); },
          [](const Entry*, const Entry*) {});
    }
    if (repeated_) Recollect();
    return std::move(pairs_);
  }

 private:
  void Meet(const Entry* a, const Entry* b) {
    const ContainerBody* one = a ? RecordOf(*a) : nullptr;
    const ContainerBody* two = b ? RecordOf(*b) : nullptr;
    const NodeId left = left_.ElementOf(one);
    const NodeId right = right_.ElementOf(two);
    if (left != 0 && !inLeft_.Insert(left)) repeated_ = true;
    if (right != 0 && !inRight_.Insert(right)) repeated_ = true;
    inAny_.Insert(left);
    inAny_.Insert(right);
    if (left == right) {
      if (left != 0) pairs_.push_back({left, one, two});
      return;
    }
    if (left != 0) PairOf(left).left = one;
    if (right != 0) PairOf(right).right = two;
  }

  RecordPair& PairOf(NodeId element) {
    const auto [place, isNew] = moved_.try_emplace(element, pairs_.size());
    if (isNew) pairs_.push_back({element, nullptr, nullptr});
    return pairs_[place->second];
  }

  // Records lie anywhere in memory, so that those some steps ahead are fetched meanwhile.
  void LookForRepeated(Stretch shared) {
    constexpr std::size_t kAhead = 16;
    for (std::size_t i = 0; i < shared.size() && !repeated_; ++i) {
      if (i + kAhead < shared.size())
        __builtin_prefetch(BlockOf<ContainerBody>(shared[i + kAhead].bits) + 1);
      const NodeId element = left_.ElementOf(RecordOf(shared[i]));
      repeated_ = element != 0 && inAny_.Has(element);
    }
  }

  // The last record of each element in question, in both lists.
  void Recollect() {
    std::unordered_map<NodeId, std::size_t> places;
    std::vector<RecordPair> pairs;
    for (const RecordPair& pair : pairs_) {
      if (places.try_emplace(pair.element, pairs.size()).second)
        pairs.push_back({pair.element, nullptr, nullptr});
    }
    const auto take = [&](const RecordList& list, const ContainerBody* RecordPair::*side) {
      for (const Stretch entries : list.Stretches()) {
        for (const Entry& entry : entries) {
          const ContainerBody* record = RecordOf(entry);
          const auto place = places.find(list.ElementOf(record));
          if (place != places.end()) pairs[place->second].*side = record;
        }
      }
    };
    take(left_, &RecordPair::left);
    take(right_, &RecordPair::right);
    std::erase_if(pairs, [](const RecordPair& pair) { return pair.left == pair.right; });
    pairs_ = std::move(pairs);
  }

  const RecordList& left_;
  const RecordList& right_;
  std::vector<RecordPair> pairs_;
  std::unordered_map<NodeId, std::size_t> moved_;  // elements met at different places
  NodeSet inLeft_;
  NodeSet inRight_;
  NodeSet inAny_;
  bool repeated_ = false;
};

}  // namespace

Parts PartsOfList(host::LONG list) {
  if (list == kStoredObjects) return Parts().set(IndexOf(Part::Objects));
  if (list == kStoredLayers) return Parts().set(IndexOf(Part::Layers));
  Parts parts;
  for (const PartRow& row : kPartRows) parts.set(IndexOf(row.part), row.tagType != 0);
  return parts;
}

const PartRow* PartOfElement(host::LONG list, host::BaseList2D& element) {
  if (list == kStoredObjects) return AsObject(&element) ? &RowOf(Part::Objects) : nullptr;
  if (list == kStoredLayers) return AsLayer(&element) ? &RowOf(Part::Layers) : nullptr;
  return AsTag(&element) ? FindPartOfTag(element.GetType()) : nullptr;
}

host::RenderData* RecordedSettings(const host::BaseDocument& doc,
                                   const host::BaseContainer& record) {
  const host::BaseContainer* kept = record.GetContainerInstance(kStoredSettings);
  return kept ? AsRenderData(kept->GetLink(kStoredSettings, &doc)) : nullptr;
}

std::optional<NodeId> RecordedCamera(const host::BaseDocument& doc,
                                     const host::BaseContainer& record) {
  const host::BaseContainer* kept = record.GetContainerInstance(kStoredCamera);
  if (!kept || kept->GetCount() == 0) return std::nullopt;
  const host::BaseObject* camera = kept->GetObjectLink(kStoredCameraLink, &doc);
  return camera ? IdOf(*camera) : 0;
}

RecordList::RecordList(const host::BaseContainer& state, host::LONG key, host::LONG link)
    : link_(link) {
  const host::BaseContainer* list = state.GetContainerInstance(key);
  const ContainerBody* body = list ? ContainerAccess::Body(*list) : nullptr;
  if (IsDense(body)) {
    std::uint32_t next = 0;
    for (Stretch entries = NextEntries(body, next); !entries.empty();
         entries = NextEntries(body, next))
      stretches_.push_back(entries);
    count_ = SizeOf(body);
    return;
  }
  for (std::uint32_t i = 0; i < SizeOf(body); ++i) {
    if (const Entry* entry = FindEntry(body, static_cast<host::LONG>(i)))
      gathered_.push_back(*entry);
  }
  stretches_.emplace_back(gathered_);
  count_ = gathered_.size();
}

std::vector<RecordPair> UnsharedRecords(const RecordList& left, const RecordList& right) {
  std::vector<RecordPair> pairs = UnsharedWalk(left, right).Run();
  std::stable_partition(pairs.begin(), pairs.end(),
                        [](const RecordPair& pair) { return pair.left != nullptr; });
  return pairs;
}

}  // namespace engine
