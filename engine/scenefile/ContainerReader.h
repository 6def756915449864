// ContainerReader: section VALUES back to containers; equal ones share their memory again. Nothing that the bytes say is
// believed; see "What a reader checks" in docs/SCENE_FILE.md. One thread.
#pragma once

#include <string_view>

#include "engine/core/ContainerBody.h"
#include "engine/scenefile/Entry.h"
#include "engine/scenefile/Tuples.h"
#include "host/String.h"

namespace engine::scenefile {

class ContainerReader {
 public:
  // `texts` and `numbers` must outlive the reader.
  ContainerReader(std::string_view contents, const std::vector<host::String>& texts, const Numbers& numbers, Budget& budget);

  // All containers of the section by number; number 0 is the empty one. Throws Damage.
  std::vector<host::BaseContainer> Read();

 private:
  // The values of a list or patch: types by position, words by type.
  struct Values {
    Column types;
    std::vector<std::pair<host::LONG, Column>> columns;
    std::vector<std::size_t> taken;
  };

  void ReadRecords();
  void ReadList();
  void ReadPatch();
  Column Types(std::size_t rows);
  Column Words(host::LONG type, std::size_t rows);
  Column Keys(std::size_t rows);
  Values TakeValues(std::size_t rows);
  Value NextOf(Values& values, std::size_t position);
  // What the word stands for; lives in the tables.
  Value ValueOf(host::LONG type, std::uint64_t word) const;
  void Keep(host::BaseContainer container, std::size_t entries);

  Cursor in_;
  const std::vector<host::String>& texts_;
  std::vector<host::GeData> vectors_;
  std::vector<host::GeData> times_;
  std::uint64_t expected_ = 0;
  std::vector<host::BaseContainer> containers_;
};

}  // namespace engine::scenefile
