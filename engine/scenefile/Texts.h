// Texts: section TEXTS, every text of a file once. A row number stands for a text everywhere else.
// One thread.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "engine/scenefile/Columns.h"
#include "engine/scenefile/HashIndex.h"
#include "host/String.h"

namespace engine::scenefile {

class TextWriter {
 public:
  // The row of a text. Asking for the text asked for last is quick.
  std::uint64_t Row(std::string_view text);
  std::string Contents() const;

 private:
  std::string_view At(std::size_t row) const {
    return std::string_view(bytes_).substr(starts_[row], lengths_[row]);
  }

  std::string bytes_;
  std::vector<std::size_t> starts_;
  Column lengths_;
  HashIndex index_;
  std::size_t last_ = 0;
};

// The texts by row. Throws Damage.
std::vector<host::String> ReadTexts(std::string_view contents, Budget& budget);

}  // namespace engine::scenefile
