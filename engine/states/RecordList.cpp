#include "engine/states/RecordList.h"

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

// Whether each entry has its position as its key. Entries then can be read as they lie; else they
// are gathered key by key.
bool IsDense(const ContainerBody* body) {
  if (!body) return true;
  if (body->IsLong()) return AsLong(body)->order == KeyOrder::kDense;
  if (body->IsLaidOut()) return false;  // holds no records
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
  std::size_t Number() const { return next_; }  // of the stretch
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

// Walks through two lists side by side: `visit(left, right, stretch)` for what is not the same at
// the same place, null behind the end of one; the stretch is the left one's number. Copies of a
// list share its chunks, so what is unchanged begins at the same address in both and is passed over
// as a whole.
template <class Visit>
void ForEachUnshared(const RecordList& left, const RecordList& right, Visit visit) {
  Cursor a(left.Stretches());
  Cursor b(right.Stretches());
  while (!a.AtEnd() && !b.AtEnd()) {
    const std::size_t count = std::min(a.Rest().size(), b.Rest().size());
    const Entry* one = a.Rest().data();
    const Entry* two = b.Rest().data();
    for (std::size_t i = one == two ? count : 0; i < count; ++i) {
      if (one[i].bits != two[i].bits || one[i].type != two[i].type)
        visit(one + i, two + i, a.Number());
    }
    a.Advance(count);
    b.Advance(count);
  }
  for (; !a.AtEnd(); a.Advance(1)) visit(a.Rest().data(), nullptr, a.Number());
  for (; !b.AtEnd(); b.Advance(1)) visit(nullptr, b.Rest().data(), 0);
}

// Collects what is not shared. While each element occurs once in each list, pairs are known at
// once; else the lists are gone through again for the elements in question. An element that stands
// at two places, as carried over records do, is why a pair cannot be taken as it comes: its last
// record may be one that both lists share.
class UnsharedWalk {
 public:
  UnsharedWalk(const RecordList& left, const RecordList& right)
      : left_(left), right_(right), unshared_(left.Stretches().size()) {}

  std::vector<RecordPair> Run() {
    ForEachUnshared(left_, right_, [this](const Entry* a, const Entry* b, std::size_t stretch) {
      Meet(a, b, stretch);
    });
    if (pairs_.empty()) return {};
    if (!repeated_) repeated_ = OccursAmongShared();
    if (repeated_) Recollect();
    return std::move(pairs_);
  }

 private:
  void Meet(const Entry* a, const Entry* b, std::size_t stretch) {
    const ContainerBody* one = a ? RecordOf(*a) : nullptr;
    const ContainerBody* two = b ? RecordOf(*b) : nullptr;
    const NodeId left = left_.ElementOf(one);
    const NodeId right = right_.ElementOf(two);
    if (left != 0 && !inLeft_.Insert(left)) repeated_ = true;
    if (right != 0 && !inRight_.Insert(right)) repeated_ = true;
    if (left != 0) ++unshared_[stretch];
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

  // Whether a record that both lists share is of an element in question. Of the unshared records of
  // a stretch no two are of the same element here, so the elements in question that the stretch has
  // beyond these are those of shared ones.
  bool OccursAmongShared() const {
    if (std::ranges::equal(unshared_, left_.Stretches(), {}, {},
                           [](Stretch entries) { return entries.size(); }))
      return false;
    std::vector<NodeId> wanted;
    wanted.reserve(pairs_.size());
    for (const RecordPair& pair : pairs_) wanted.push_back(pair.element);
    if (!std::ranges::is_sorted(wanted)) std::ranges::sort(wanted);
    NodeSet met;
    for (std::size_t i = 0; i < unshared_.size(); ++i) {
      const Stretch entries = left_.Stretches()[i];
      const LinkRange range = left_.ElementsOf(i);
      if (unshared_[i] == entries.size()) continue;
      if (range.IsKnown() && CountBetween(wanted, range) == unshared_[i]) continue;
      if (met.IsEmpty()) {
        for (const NodeId element : wanted) met.Insert(element);
      }
      if (CountOf(entries, met) != unshared_[i]) return true;
    }
    return false;
  }

  static std::size_t CountBetween(const std::vector<NodeId>& wanted, LinkRange range) {
    const auto first = std::ranges::lower_bound(wanted, range.least);
    return static_cast<std::size_t>(std::ranges::upper_bound(first, wanted.end(), range.greatest) -
                                    first);
  }

  // The number of records of these elements.
  std::size_t CountOf(Stretch entries, const NodeSet& elements) const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      FetchRecordAhead(entries, i);
      const NodeId element = left_.ElementOf(RecordOf(entries[i]));
      if (element != 0 && elements.Has(element)) ++count;
    }
    return count;
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
    // The records that count turned out to be shared, and earlier ones were not.
    std::erase_if(pairs, [](const RecordPair& pair) { return pair.left == pair.right; });
    pairs_ = std::move(pairs);
  }

  const RecordList& left_;
  const RecordList& right_;
  std::vector<RecordPair> pairs_;
  std::unordered_map<NodeId, std::size_t> moved_;  // elements met at different places
  NodeSet inLeft_;
  NodeSet inRight_;
  std::vector<std::size_t> unshared_;  // records of elements, by stretch of the left list
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

NodeId CameraNow(const host::BaseDocument& doc) {
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  return camera ? IdOf(*camera) : 0;
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
    if (body && body->IsLong()) {
      for (const ChunkPlace& place : AsLong(body)->chunks) Add(*place.chunk);
    } else if (body && body->size > 0) {
      stretches_.emplace_back(body->Entries(), body->size);
    }
    count_ = SizeOf(body);
    return;
  }
  for (std::uint32_t i = 0; i < SizeOf(body); ++i) {
    if (const std::optional<Entry> entry = FindEntry(body, static_cast<host::LONG>(i)))
      gathered_.push_back(*entry);
  }
  stretches_.emplace_back(gathered_);
  count_ = gathered_.size();
}

void RecordList::Add(const Chunk& chunk) {
  stretches_.push_back(chunk.All());
  ranges_.push_back(chunk.linkKey == link_ ? chunk.links : LinkRange());
}

std::vector<RecordPair> UnsharedRecords(const RecordList& left, const RecordList& right) {
  std::vector<RecordPair> pairs = UnsharedWalk(left, right).Run();
  const auto isLeft = [](const RecordPair& pair) { return pair.left != nullptr; };
  if (!std::ranges::is_partitioned(pairs, isLeft))
    std::stable_partition(pairs.begin(), pairs.end(), isLeft);
  return pairs;
}

}  // namespace engine
