#include "engine/scenefile/TextsAndNumbers.h"

#include <xxhash.h>
#include <algorithm>
#include <array>

namespace engine {

std::uint64_t TextWriter::Row(std::string_view text) {
  if (last_ < lengths_.size() && At(last_) == text) return last_;
  const auto candidate = static_cast<std::uint32_t>(lengths_.size());
  const std::uint64_t hash = XXH3_64bits(text.data(), text.size());
  last_ = index_.FindOrAdd(hash, candidate, [&](std::uint32_t row) { return At(row) == text; });
  if (last_ != candidate) return last_;
  starts_.push_back(bytes_.size());
  lengths_.push_back(text.size());
  bytes_ += text;
  return last_;
}

std::string TextWriter::Contents() const {
  std::string out;
  PutVarint(out, lengths_.size());
  PutInts(out, lengths_);
  return out += bytes_;
}

std::vector<host::String> ReadTexts(std::string_view contents, Budget& budget) {
  constexpr std::uint64_t kBlock = 48;  // about what a short text takes beside its bytes
  // Characters are counted in 32 bits.
  constexpr std::uint64_t kLongest = 0x7FFFFFFF;
  Cursor in(contents, "TEXTS", budget);
  const std::size_t rows = in.Rows(kBlock);
  const ColumnValues lengths = TakeInts(in, rows);
  budget.Charge(in.Left());
  std::vector<host::String> texts;
  texts.reserve(rows);
  for (const std::uint64_t length : lengths) {
    if (length > kLongest) in.Refuse("a text is longer than 2 GB");
    texts.emplace_back(in.Take(length));
  }
  in.End();
  return texts;
}

namespace {

// `width` columns of one table. By column, because an axis of many objects is mostly alike.
std::vector<ColumnValues> TakeTable(Cursor& in, std::size_t width, std::uint64_t each) {
  const std::size_t rows = in.Rows(each);
  std::vector<ColumnValues> columns;
  for (std::size_t i = 0; i < width; ++i) columns.push_back(TakeWords(in, rows));
  return columns;
}

host::Vector VectorAt(std::span<const ColumnValues> columns, std::size_t row) {
  return {NumberOf(columns[0][row]), NumberOf(columns[1][row]), NumberOf(columns[2][row])};
}

host::Matrix MatrixAt(std::span<const ColumnValues> columns, std::size_t row) {
  host::Matrix matrix;
  matrix.off = VectorAt(columns.subspan(0, 3), row);
  matrix.v1 = VectorAt(columns.subspan(3, 3), row);
  matrix.v2 = VectorAt(columns.subspan(6, 3), row);
  matrix.v3 = VectorAt(columns.subspan(9, 3), row);
  return matrix;
}

}  // namespace

// By the bits: -0 and 0 are two values, and what is no number equals itself.
std::uint64_t TupleWriter::Row(std::span<const std::uint64_t> words) {
  const auto candidate = static_cast<std::uint32_t>(words_.size() / width_);
  const std::uint64_t hash = XXH3_64bits(words.data(), words.size_bytes());
  const auto same = [&](std::uint32_t row) {
    return std::equal(words.begin(), words.end(), words_.begin() + row * width_);
  };
  const std::uint32_t row = index_.FindOrAdd(hash, candidate, same);
  if (row == candidate) words_.insert(words_.end(), words.begin(), words.end());
  return row;
}

void TupleWriter::Put(std::string& out) const {
  const std::size_t rows = words_.size() / width_;
  PutVarint(out, rows);
  ColumnValues column(rows);
  for (std::size_t i = 0; i < width_; ++i) {
    for (std::size_t row = 0; row < rows; ++row) column[row] = words_[row * width_ + i];
    PutWords(out, column);
  }
}

std::uint64_t NumberWriter::Row(const host::Vector& vector) {
  return vectors.Row(std::array{WordOf(vector.x), WordOf(vector.y), WordOf(vector.z)});
}

std::uint64_t NumberWriter::Row(const host::BaseTime& time) {
  return times.Row(std::array{WordOf(time.GetNumerator()), WordOf(time.GetDenominator())});
}

std::uint64_t NumberWriter::Row(const host::Matrix& matrix) {
  std::array<std::uint64_t, 12> words{};
  auto* word = words.data();
  for (const host::Vector* vector : {&matrix.off, &matrix.v1, &matrix.v2, &matrix.v3})
    for (const host::Real value : {vector->x, vector->y, vector->z}) *word++ = WordOf(value);
  return matrices.Row(words);
}

std::string NumberWriter::Contents() const {
  std::string out;
  vectors.Put(out);
  times.Put(out);
  matrices.Put(out);
  return out;
}

Numbers ReadNumbers(std::string_view contents, Budget& budget) {
  Cursor in(contents, "VECTORS", budget);
  Numbers numbers;
  const std::vector<ColumnValues> vectors = TakeTable(in, 3, sizeof(host::Vector));
  for (std::size_t row = 0; row < vectors[0].size(); ++row)
    numbers.vectors.push_back(VectorAt(vectors, row));
  const std::vector<ColumnValues> times = TakeTable(in, 2, sizeof(host::BaseTime));
  for (std::size_t row = 0; row < times[0].size(); ++row)
    numbers.times.emplace_back(NumberOf(times[0][row]), NumberOf(times[1][row]));
  const std::vector<ColumnValues> matrices = TakeTable(in, 12, sizeof(host::Matrix));
  for (std::size_t row = 0; row < matrices[0].size(); ++row)
    numbers.matrices.push_back(MatrixAt(matrices, row));
  in.End();
  return numbers;
}

}  // namespace engine
