// Sections TEXTS and VECTORS: every text, vector, time and matrix of a file once. Everywhere else a
// row number stands for one. One thread.
#pragma once

#include <bit>
#include <span>
#include <string_view>
#include <vector>

#include "engine/scenefile/Columns.h"
#include "engine/scenefile/HashIndex.h"
#include "host/Math.h"
#include "host/String.h"

namespace engine {

class TextWriter {
 public:
  // The row of a text. Asking for the text asked for last is quick.
  std::uint64_t Row(std::string_view text);
  std::string Contents() const;
  // Memory that a reader takes for them, in bytes: an estimate, rather too high than too low.
  std::uint64_t MemoryToRead() const { return bytes_.size() * 4 + starts_.size() * 200; }

 private:
  std::string_view At(std::size_t row) const {
    return std::string_view(bytes_).substr(starts_[row], lengths_[row]);
  }

  std::string bytes_;
  std::vector<std::size_t> starts_;
  ColumnValues lengths_;
  HashIndex index_;
  std::size_t last_ = 0;
};

// The texts by row. Throws Damage.
std::vector<host::String> ReadTexts(std::string_view contents, Budget& budget);

// Rows of `width` numbers, each row once; equality is that of the bits.
class TupleWriter {
 public:
  explicit TupleWriter(std::size_t width) : width_(width) {}
  std::uint64_t Row(std::span<const std::uint64_t> words);
  // Appends the number of rows and the columns.
  void Put(std::string& out) const;
  std::uint64_t MemoryToRead() const { return words_.size() * 48; }

 private:
  std::size_t width_;
  ColumnValues words_;  // row after row
  HashIndex index_;
};

struct NumberWriter {
  std::uint64_t Row(const host::Vector& vector);
  std::uint64_t Row(const host::BaseTime& time);
  std::uint64_t Row(const host::Matrix& matrix);
  std::string Contents() const;
  std::uint64_t MemoryToRead() const {
    return vectors.MemoryToRead() + times.MemoryToRead() + matrices.MemoryToRead();
  }

  TupleWriter vectors{3};
  TupleWriter times{2};
  TupleWriter matrices{12};
};

struct Numbers {
  std::vector<host::Vector> vectors;
  std::vector<host::BaseTime> times;
  std::vector<host::Matrix> matrices;
};

// Throws Damage.
Numbers ReadNumbers(std::string_view contents, Budget& budget);

inline std::uint64_t WordOf(host::Real value) { return std::bit_cast<std::uint64_t>(value); }
inline host::Real NumberOf(std::uint64_t word) { return std::bit_cast<host::Real>(word); }

}  // namespace engine
