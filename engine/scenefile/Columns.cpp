#include "engine/scenefile/Columns.h"

#include <algorithm>

namespace engine {
namespace {

// Runs of alike symbols and literals of different ones. Identities and row numbers become runs by
// being stored as differences: a million elements made one after the other are differences of 1,
// some sixteen thousand bytes.
constexpr std::size_t kLongestLiteral = 128;
constexpr std::size_t kRunCode = 126;  // a run of n is the byte kRunCode + n

enum class Symbols { Varints, Words };

void PutSymbol(std::string& out, Symbols kind, std::uint64_t symbol) {
  kind == Symbols::Varints ? PutVarint(out, symbol) : PutFixed64(out, symbol);
}

std::uint64_t TakeSymbol(Cursor& in, Symbols kind) {
  return kind == Symbols::Varints ? in.Varint() : in.Fixed64();
}

// The number of alike symbols from there on; at least 1, at most the longest run.
std::size_t RunAt(std::span<const std::uint64_t> symbols, std::size_t at) {
  const std::size_t end = std::min(symbols.size(), at + kLongestRun);
  std::size_t next = at + 1;
  while (next < end && symbols[next] == symbols[at]) ++next;
  return next - at;
}

void PutLiteral(std::string& out, Symbols kind, std::span<const std::uint64_t> symbols) {
  while (!symbols.empty()) {
    const std::size_t count = std::min(symbols.size(), kLongestLiteral);
    out.push_back(static_cast<char>(count - 1));
    for (const std::uint64_t symbol : symbols.first(count)) PutSymbol(out, kind, symbol);
    symbols = symbols.subspan(count);
  }
}

void PutRuns(std::string& out, Symbols kind, std::span<const std::uint64_t> symbols) {
  std::size_t literal = 0;
  for (std::size_t at = 0; at < symbols.size();) {
    const std::size_t run = RunAt(symbols, at);
    if (run > 1) {
      PutLiteral(out, kind, symbols.subspan(literal, at - literal));
      out.push_back(static_cast<char>(kRunCode + run));
      PutSymbol(out, kind, symbols[at]);
      literal = at + run;
    }
    at += run;
  }
  PutLiteral(out, kind, symbols.subspan(literal));
}

// Hands every symbol to `each` with how many rows it is for. A count that its bytes cannot hold is
// refused before anything is done with it.
template <class Each>
void ForRuns(Cursor& in, Symbols kind, std::size_t rows, const Each& each) {
  in.CheckRows(rows);
  for (std::size_t at = 0; at < rows;) {
    const std::size_t code = in.Byte();
    const bool literal = code < kLongestLiteral;
    const std::size_t count = literal ? code + 1 : code - kRunCode;
    if (count > rows - at) in.Refuse("a run goes beyond its column");
    if (literal)
      for (std::size_t i = 0; i < count; ++i) each(TakeSymbol(in, kind), std::size_t{1});
    else
      each(TakeSymbol(in, kind), count);
    at += count;
  }
}

void SkipRuns(Cursor& in, Symbols kind, std::size_t rows) {
  in.CheckRows(rows);
  for (std::size_t at = 0; at < rows;) {
    const std::size_t code = in.Byte();
    const bool literal = code < kLongestLiteral;
    const std::size_t count = literal ? code + 1 : code - kRunCode;
    if (count > rows - at) in.Refuse("a run goes beyond its column");
    const std::size_t symbols = literal ? count : 1;
    kind == Symbols::Varints ? in.SkipVarints(symbols) : void(in.Take(8 * symbols));
    at += count;
  }
}

ColumnValues TakeRuns(Cursor& in, Symbols kind, std::size_t rows) {
  in.CheckRows(rows);
  in.Memory().Charge(rows, sizeof(std::uint64_t));
  ColumnValues column(rows);
  auto next = column.begin();
  ForRuns(in, kind, rows, [&next](std::uint64_t symbol, std::size_t count) {
    next = std::fill_n(next, count, symbol);
  });
  return column;
}

}  // namespace

void PutInts(std::string& out, std::span<const std::uint64_t> values) {
  ColumnValues deltas(values.size());
  std::uint64_t previous = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    deltas[i] = ZigZag(values[i] - previous);
    previous = values[i];
  }
  PutRuns(out, Symbols::Varints, deltas);
}

void PutWords(std::string& out, std::span<const std::uint64_t> values) {
  PutRuns(out, Symbols::Words, values);
}

void PutPlanes(std::string& out, std::span<const std::uint32_t> values) {
  const std::size_t start = out.size();
  out.resize(start + values.size() * 4);
  char* plane = out.data() + start;
  for (unsigned byte = 0; byte < 4; ++byte)
    for (const std::uint32_t value : values) *plane++ = static_cast<char>(value >> (8 * byte));
}

ColumnValues TakeInts(Cursor& in, std::size_t rows) {
  ColumnValues column = TakeRuns(in, Symbols::Varints, rows);
  std::uint64_t sum = 0;
  for (std::uint64_t& value : column) value = sum += UnZigZag(value);
  return column;
}

ColumnValues TakeWords(Cursor& in, std::size_t rows) { return TakeRuns(in, Symbols::Words, rows); }

void SkipInts(Cursor& in, std::size_t rows) { SkipRuns(in, Symbols::Varints, rows); }

void SkipWords(Cursor& in, std::size_t rows) { SkipRuns(in, Symbols::Words, rows); }

ColumnValues PickInts(Cursor& in, std::size_t rows, std::span<const std::size_t> wanted) {
  ColumnValues picked;
  std::uint64_t value = 0;
  std::size_t end = 0;
  ForRuns(in, Symbols::Varints, rows, [&](std::uint64_t symbol, std::size_t count) {
    const std::uint64_t delta = UnZigZag(symbol);
    for (; picked.size() < wanted.size() && wanted[picked.size()] < end + count;)
      // Within a run of one difference the value of a row is reckoned, not summed up.
      picked.push_back(value + delta * (wanted[picked.size()] - end + 1));
    value += delta * count;
    end += count;
  });
  return picked;
}

std::map<std::uint64_t, std::size_t> TallyInts(Cursor& in, std::size_t rows) {
  std::map<std::uint64_t, std::size_t> counts;
  std::uint64_t value = 0;
  ForRuns(in, Symbols::Varints, rows, [&](std::uint64_t symbol, std::size_t count) {
    const std::uint64_t delta = UnZigZag(symbol);
    // A run of no difference is one value as often as the run is long.
    if (delta == 0) counts[value] += count;
    for (std::size_t i = 0; delta != 0 && i < count; ++i) ++counts[value += delta];
  });
  return counts;
}

// So many rows that four times their number would wrap around ask for more bytes than there are,
// which is refused.
std::vector<std::uint32_t> TakePlanes(Cursor& in, std::size_t rows) {
  const std::string_view bytes =
      in.Take(rows > in.Left() ? ~std::uint64_t{0} : rows * std::uint64_t{4});
  in.Memory().Charge(bytes.size());
  std::vector<std::uint32_t> values(rows);
  const char* plane = bytes.data();
  for (unsigned byte = 0; byte < 4; ++byte)
    for (std::uint32_t& value : values)
      value |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(*plane++)) << (8 * byte);
  return values;
}

void CheckBelow(const Cursor& in, std::span<const std::uint64_t> values, std::uint64_t end,
                const char* what) {
  for (const std::uint64_t value : values)
    if (value >= end) in.Refuse(std::string(what) + " is out of range");
}

void CheckLongs(const Cursor& in, std::span<const std::uint64_t> values, const char* what) {
  for (const std::uint64_t value : values)
    if (value + 0x80000000u > 0xFFFFFFFFu) in.Refuse(std::string(what) + " is no 32-bit number");
}

}  // namespace engine
