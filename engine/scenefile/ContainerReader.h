// ContainerReader: section VALUES back to containers; equal ones share their memory again. Nothing
// that the bytes say is believed; see "What a reader checks" in docs/SCENE_FILE.md. One thread.
#pragma once

#include <string_view>

#include "engine/core/ContainerBody.h"
#include "engine/scenefile/ContainerBlocks.h"
#include "engine/scenefile/TextsAndNumbers.h"
#include "host/String.h"

namespace engine {

class ContainerReader {
 public:
  // `texts` and `numbers` must outlive the reader.
  ContainerReader(std::string_view contents, const std::vector<host::String>& texts,
                  const Numbers& numbers, Budget& budget);

  // All containers of the section by number; number 0 is the empty one. Throws Damage.
  std::vector<host::BaseContainer> Read();

 private:
  // The values of a list or patch: types by position, words by type.
  struct Values {
    ColumnValues types;
    std::vector<std::pair<host::LONG, ColumnValues>> columns;
    std::vector<std::size_t> taken;
  };

  void ReadRecords();
  void ReadList();
  void ReadPatch();
  ColumnValues Types(std::size_t rows);
  ColumnValues Words(host::LONG type, std::size_t rows);
  ColumnValues Keys(std::size_t rows);
  Values TakeValues(std::size_t rows);
  // The value at a position, to be asked for in order; adds to `size` as SizeWith does.
  Value NextOf(Values& values, std::size_t position, std::uint64_t& size);
  // The value that the word stands for; lives in the tables.
  Value ValueOf(host::LONG type, std::uint64_t word) const;
  // The container gets the next number; `size` is what SizeWith answered for its values.
  void Keep(host::BaseContainer container, std::size_t entries, std::uint64_t size);
  // `size` and what the value is all in all, containers in it counted as often as they occur.
  std::uint64_t SizeWith(std::uint64_t size, host::LONG type, std::uint64_t word) const;
  void ChargePatch(std::size_t size, std::size_t changes, std::size_t added);

  Cursor in_;
  const std::vector<host::String>& texts_;
  std::vector<host::GeData> vectors_;
  std::vector<host::GeData> times_;
  std::uint64_t expected_ = 0;
  std::vector<host::BaseContainer> containers_;
  std::vector<std::uint64_t> sizes_;  // of the containers: all entries down to the deepest
};

}  // namespace engine
