#include "engine/scenefile/Texts.h"

#include <xxhash.h>

namespace engine::scenefile {

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
  constexpr std::uint64_t kLongest = 0x7FFFFFFF;
  Cursor in(contents, "TEXTS", budget);
  const std::size_t rows = in.Rows(kBlock);
  const Column lengths = TakeInts(in, rows);
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

}  // namespace engine::scenefile
