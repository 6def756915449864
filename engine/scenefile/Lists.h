// ListWriter: long containers, one by one, every container once; one that is nearly an earlier one
// is stored as a patch of it. Containers are known by the number in which they were first met until
// the file's numbers are given. One thread.
#pragma once

#include <optional>

#include "engine/scenefile/Entry.h"
#include "engine/scenefile/HashIndex.h"

namespace engine::scenefile {

struct ListBlock {
  std::uint32_t height = 0;
  std::uint32_t container = 0;  // as first met
  std::int32_t ownId = 0;
  std::vector<Entry> entries;
  std::optional<std::uint32_t> base;  // the list that this one is a patch of
};

class ListWriter {
 public:
  // The equal container met before, or `candidate`, which is stored. `height` becomes that of the
  // base where that is deeper.
  std::uint32_t FindOrAdd(std::uint32_t candidate, std::uint32_t& height, std::int32_t ownId,
                          std::span<const Entry> entries);
  const std::vector<ListBlock>& Blocks() const { return blocks_; }
  void Put(std::string& out, const ListBlock& block, std::span<const std::uint32_t> numbers) const;

 private:
  std::optional<std::uint32_t> BaseFor(std::span<const Entry> entries) const;
  void PutPatch(std::string& out, const ListBlock& block,
                std::span<const std::uint32_t> numbers) const;

  std::vector<ListBlock> blocks_;
  HashIndex index_;
};

}  // namespace engine::scenefile
