// The order of containers in a file and the contents of section VALUES.
#include <algorithm>

#include "engine/scenefile/ContainerWriter.h"

namespace engine::scenefile {
namespace {

// A block in the order of the file; exactly one of the two is set.
struct BlockInOrder {
  std::uint32_t height;
  std::uint32_t first;  // the container in it that was met first
  const RecordBlock* records;
  const ListBlock* list;
};

// What a container holds comes before it: by depth of nesting, then by first use (a patch comes
// after its base).
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

std::string ContainerWriter::Contents() const {
  std::string out;
  PutVarint(out, heights_.size() - 1);
  for (const BlockInOrder& block : Ordered(records_, lists_))
    block.list ? lists_.Put(out, *block.list, numbers_) : block.records->Put(out, numbers_);
  return out;
}

}  // namespace engine::scenefile
