#include "engine/scenefile/ContainerWriter.h"

#include <algorithm>

namespace engine {
namespace {

// Addresses of blocks differ in their middle bits; the product carries these into those that the
// index looks at.
std::uint64_t HashOf(const void* address) {
  const auto bits =
      static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(address)) * 0x9E3779B97F4A7C15u;
  return bits ^ (bits >> 32);
}

}  // namespace

// Containers are turned into coded entries from the inside out, on a stack of frames: those of one
// container lie at the end of entries_, and where one of them is a container that is not known yet,
// it waits with its body as its word until that is coded. Equal containers are found at three
// places: by body, where they are shared; by contents, in the record and list writers; and for
// parts of long lists by the stretch that they share, so that a further Stagemark costs what it
// does not share.
std::uint32_t ContainerWriter::AddBody(const ContainerBody* body) {
  std::uint32_t result = Known(body);
  if (result == kUnknown) Open(body);
  while (!frames_.empty()) {
    Frame& frame = frames_.back();
    while (frame.next < entries_.size() && entries_[frame.next].type != kWaiting) ++frame.next;
    if (frame.next == entries_.size()) {
      const Frame done = frame;
      frames_.pop_back();
      result = Close(done);
      continue;
    }
    CodedEntry& waiting = entries_[frame.next];
    const auto* inner = BlockOf<const ContainerBody>(waiting.word);
    const std::uint32_t known = Known(inner);
    if (known == kUnknown)
      Open(inner);
    else
      waiting = {waiting.key, host::DA_CONTAINER, known};
  }
  return result;
}

std::uint32_t ContainerWriter::Known(const ContainerBody* body) {
  if (!body) return 0;
  if (body->size <= kWidestRecord) {
    const std::uint32_t record = KnownRecord(body);
    if (record != kUnknown) return record;
  }
  return Remembered(body);
}

std::uint32_t& ContainerWriter::Remembered(const ContainerBody* body) {
  const auto next = static_cast<std::uint32_t>(bodies_.size());
  const auto same = [&](std::uint32_t row) { return bodies_[row].first == body; };
  const std::uint32_t at = bodyIndex_.FindOrAdd(HashOf(body), next, same);
  if (at == next) bodies_.emplace_back(body, kUnknown);
  return bodies_[at].second;
}

// A short container that holds no others is stored at once. Its body is not remembered, or each of
// millions of records would take a row in that table, too.
std::uint32_t ContainerWriter::KnownRecord(const ContainerBody* body) {
  record_.clear();
  std::uint32_t next = 0;
  for (auto stretch = NextEntries(body, next); !stretch.empty();
       stretch = NextEntries(body, next)) {
    for (const Entry& entry : stretch) {
      if (entry.type == host::DA_CONTAINER) return kUnknown;
      record_.push_back({entry.key, entry.type, WordOf(entry)});
    }
  }
  return Store(body->id, record_);
}

void ContainerWriter::Open(const ContainerBody* body) {
  frames_.push_back({body, entries_.size(), entries_.size()});
  std::uint32_t next = 0;
  for (auto stretch = NextEntries(body, next); !stretch.empty();
       stretch = NextEntries(body, next)) {
    const Stretch* done = body->size > kWidestRecord ? FindStretch(stretch.data()) : nullptr;
    if (!done) {
      OpenStretch(stretch);
      continue;
    }
    const auto same =
        std::span(lists_.Blocks()[done->list].entries).subspan(done->position, stretch.size());
    entries_.insert(entries_.end(), same.begin(), same.end());
  }
}

void ContainerWriter::OpenStretch(EntrySpan stretch) {
  for (const Entry& entry : stretch) {
    if (entry.type != host::DA_CONTAINER) {
      entries_.push_back({entry.key, entry.type, WordOf(entry)});
      continue;
    }
    const std::uint32_t known = Known(BlockOf<const ContainerBody>(entry.bits));
    entries_.push_back(known == kUnknown ? CodedEntry{entry.key, kWaiting, entry.bits}
                                         : CodedEntry{entry.key, host::DA_CONTAINER, known});
  }
}

std::uint32_t ContainerWriter::Close(const Frame& frame) {
  const auto entries = std::span<const CodedEntry>(entries_).subspan(frame.begin);
  const std::uint32_t container = entries.size() > kWidestRecord ? StoreList(frame.body, entries)
                                                                 : Store(frame.body->id, entries);
  entries_.resize(frame.begin);
  Remembered(frame.body) = container;
  if (frames_.empty()) return container;
  CodedEntry& waiting = entries_[frames_.back().next];
  waiting = {waiting.key, host::DA_CONTAINER, container};
  return container;
}

std::uint32_t ContainerWriter::Store(std::int32_t ownId, std::span<const CodedEntry> entries) {
  const auto candidate = static_cast<std::uint32_t>(heights_.size());
  const std::uint32_t height = HeightOf(entries);
  const std::uint32_t container = records_.FindOrAdd(candidate, height, ownId, entries);
  if (container == candidate) heights_.push_back(height);
  return container;
}

std::uint32_t ContainerWriter::StoreList(const ContainerBody* body,
                                         std::span<const CodedEntry> entries) {
  const auto candidate = static_cast<std::uint32_t>(heights_.size());
  std::uint32_t height = HeightOf(entries);
  const std::uint32_t container = lists_.FindOrAdd(candidate, height, body->id, entries);
  if (container != candidate) return container;
  heights_.push_back(height);
  const auto list = static_cast<std::uint32_t>(lists_.Blocks().size() - 1);
  std::size_t position = 0;
  std::uint32_t next = 0;
  for (auto stretch = NextEntries(body, next); !stretch.empty();
       stretch = NextEntries(body, next)) {
    const auto row = static_cast<std::uint32_t>(stretches_.size());
    const auto same = [&](std::uint32_t at) { return stretches_[at].entries == stretch.data(); };
    if (stretchIndex_.FindOrAdd(HashOf(stretch.data()), row, same) == row)
      stretches_.push_back({stretch.data(), list, position});
    position += stretch.size();
  }
  return container;
}

const ContainerWriter::Stretch* ContainerWriter::FindStretch(const void* entries) {
  const std::uint32_t* row = stretchIndex_.Find(
      HashOf(entries), [&](std::uint32_t at) { return stretches_[at].entries == entries; });
  return row ? &stretches_[*row] : nullptr;
}

std::uint64_t ContainerWriter::WordOf(const Entry& entry) {
  switch (entry.type) {
    case host::DA_TIME:
      return tuples_.Row(TimeOf(entry.Get()));
    case host::DA_VECTOR:
      return tuples_.Row(VectorOf(entry.Get()));
    case host::DA_STRING:
    case host::DA_FILENAME:
      return texts_.Row(TextBlock::View(BlockOf<const TextBlock>(entry.bits)));
    default:
      return entry.type == host::DA_NIL ? 0 : entry.bits;
  }
}

std::uint32_t ContainerWriter::HeightOf(std::span<const CodedEntry> entries) const {
  std::uint32_t height = 0;
  for (const CodedEntry& entry : entries)
    if (entry.type == host::DA_CONTAINER) height = std::max(height, heights_[entry.word] + 1);
  return height;
}

namespace {

// A block in the order of the file; exactly one of the two is set.
struct BlockInOrder {
  std::uint32_t height;
  std::uint32_t first;  // the container in it that was met first
  const RecordBlock* records;
  const ListBlock* list;
};

// Everything that a container holds comes before it: by depth of nesting, then by first use (a
// patch comes after its base). The order depends on contents and their order alone, so that a
// document saved twice gives the same bytes.
std::vector<BlockInOrder> Ordered(const RecordWriter& records, const ListWriter& lists) {
  std::vector<BlockInOrder> blocks;
  for (const RecordBlock& block : records.Blocks())
    blocks.push_back({block.height, block.first.front(), &block, nullptr});
  for (const ListBlock& block : lists.Blocks())
    blocks.push_back({block.height, block.container, nullptr, &block});
  std::ranges::sort(blocks, [](const BlockInOrder& a, const BlockInOrder& b) {
    return a.height != b.height ? a.height < b.height : a.first < b.first;
  });
  return blocks;
}

}  // namespace

void ContainerWriter::Number() {
  numbers_.assign(heights_.size(), 0);
  std::uint32_t next = 1;
  for (const BlockInOrder& block : Ordered(records_, lists_)) {
    if (block.list) numbers_[block.list->container] = next++;
    if (!block.records) continue;
    for (const std::uint32_t container : block.records->first) numbers_[container] = next++;
  }
}

std::uint64_t ContainerWriter::MemoryToRead() const {
  // Above what the reader charges, which is an estimate itself: a file that this program wrote must
  // open.
  constexpr std::uint64_t kContainerInMemory = 160;
  constexpr std::uint64_t kEntryInMemory = 120;
  std::uint64_t entries = 0;
  for (const RecordBlock& block : records_.Blocks())
    entries += block.first.size() * block.keys.size();
  for (const ListBlock& block : lists_.Blocks()) entries += block.entries.size();
  return heights_.size() * kContainerInMemory + entries * kEntryInMemory;
}

std::string ContainerWriter::Contents() const {
  std::string out;
  PutVarint(out, heights_.size() - 1);
  for (const BlockInOrder& block : Ordered(records_, lists_))
    block.list ? lists_.Put(out, *block.list, numbers_) : block.records->Put(out, numbers_);
  return out;
}

}  // namespace engine
