#include "engine/scenefile/NamesInFile.h"

#include <algorithm>
#include <map>

#include "engine/outside/FileParts.h"
#include "engine/scenefile/ContainerBlocks.h"
#include "engine/scenefile/Damage.h"
#include "engine/scenefile/Sections.h"

namespace engine {
namespace {

using host::LONG;

void SkipColumn(Cursor& in, LONG type, std::size_t rows) {
  if (type == host::DA_NIL) return;
  type == host::DA_REAL ? SkipWords(in, rows) : SkipInts(in, rows);
}

ColumnValues TakeColumn(Cursor& in, LONG type, std::size_t rows) {
  if (type == host::DA_NIL) return ColumnValues(rows);
  return type == host::DA_REAL ? TakeWords(in, rows) : TakeInts(in, rows);
}

// Types, then a column for each that occurs.
void SkipValues(Cursor& in, std::size_t rows) {
  const auto counts = TallyInts(in, rows);
  for (const LONG type : kValueTypes) {
    const auto count = counts.find(static_cast<std::uint64_t>(type));
    if (count != counts.end()) SkipColumn(in, type, count->second);
  }
}

// Containers of section VALUES by their numbers, opened one by one. Blocks are passed over, and no
// containers are made of them. Numbers are checked only as far as they lead somewhere: whoever
// opens the scene checks all.
class SkimmedContainers {
 public:
  // Goes over the section once, to know where each block stands.
  SkimmedContainers(std::string_view contents, Budget& budget)
      : contents_(contents), budget_(budget) {
    Cursor in(contents, kSection, budget);
    const std::uint64_t count = in.Varint();
    for (std::uint64_t next = 1; next <= count;) {
      const Block block = SkipBlock(in, next);
      if (block.rows == 0 || block.rows > count + 1 - next)
        in.Refuse("a block holds none or more containers than announced");
      blocks_.push_back(block);
      next += block.rows;
    }
    in.End();
  }

  // The entries of a container; none of number 0.
  std::vector<CodedEntry> Entries(std::uint64_t number) const {
    // A patch changes what another one is.
    std::vector<const Block*> patches;
    std::vector<CodedEntry> entries;
    for (const Block* block = BlockOf(number); block; block = BlockOf(number)) {
      if (block->kind != BlockKind::Patch) {
        entries = block->kind == BlockKind::List ? ListEntries(*block)
                                                 : RecordEntries(*block, number - block->first);
        break;
      }
      patches.push_back(block);
      Cursor in = At(*block);
      // Always lower, so that this ends.
      number = in.Below(block->first, "the base of a patch");
    }
    for (auto patch = patches.rbegin(); patch != patches.rend(); ++patch)
      ApplyPatch(**patch, entries);
    return entries;
  }

  // For each of these containers the word of the text under a key, nothing where it holds none, and
  // whether it holds anything. Of a block of records only that column is read.
  struct Found {
    bool hasContents = false;
    std::optional<std::uint64_t> text;
  };
  std::vector<Found> Texts(const std::vector<std::uint64_t>& numbers, LONG key) const {
    std::vector<Found> found(numbers.size());
    std::map<const Block*, std::vector<std::pair<std::size_t, std::size_t>>> rows;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      const Block* block = BlockOf(numbers[i]);
      if (block && block->kind == BlockKind::Records)
        rows[block].emplace_back(static_cast<std::size_t>(numbers[i] - block->first), i);
      else if (block)
        found[i] = FoundIn(Entries(numbers[i]), key);
    }
    for (auto& [block, wanted] : rows) PickTexts(*block, wanted, key, found);
    return found;
  }

 private:
  static constexpr const char* kSection = "VALUES";

  struct Block {
    BlockKind kind;
    std::uint64_t first;  // number of its first container
    std::uint64_t rows;
    std::size_t offset;  // in the section, behind its kind
  };

  std::size_t OffsetOf(const Cursor& in) const { return contents_.size() - in.Left(); }

  Cursor At(const Block& block) const {
    return {contents_.substr(block.offset), kSection, budget_};
  }

  // The block that the container is in, null for number 0.
  const Block* BlockOf(std::uint64_t number) const {
    if (number == 0) return nullptr;
    const auto after = std::ranges::upper_bound(blocks_, number, {}, &Block::first);
    if (after == blocks_.begin() || number - (after - 1)->first >= (after - 1)->rows)
      throw Damage{"The file is damaged: it names container " + Grouped(number) +
                   ", which there is not."};
    return &*(after - 1);
  }

  Block SkipBlock(Cursor& in, std::uint64_t first) const {
    const std::uint8_t kind = in.Byte();
    Block block{static_cast<BlockKind>(kind), first, 1, OffsetOf(in)};
    if (block.kind == BlockKind::Records) {
      block.rows = SkipRecords(in);
    } else if (block.kind == BlockKind::List) {
      const std::size_t size = in.Rows(0);
      in.Long("an own ID");
      SkipInts(in, size);
      SkipValues(in, size);
    } else if (block.kind == BlockKind::Patch) {
      in.Below(first, "the base of a patch");
      in.Long("an own ID");
      const std::size_t changes = in.Rows(0);
      const std::size_t added = in.Rows(0);
      SkipInts(in, changes);
      SkipInts(in, added);
      SkipValues(in, changes + added);
    } else {
      in.Refuse("no block begins there");
    }
    return block;
  }

  static std::uint64_t SkipRecords(Cursor& in) {
    const std::size_t rows = in.Rows(0);
    const auto width = static_cast<std::size_t>(in.Below(kWidestRecord + 1, "the number of keys"));
    SkipInts(in, width);
    const ColumnValues types = TakeInts(in, width);
    SkipInts(in, rows);
    for (const std::uint64_t type : types) SkipColumn(in, static_cast<LONG>(type), rows);
    return rows;
  }

  std::vector<CodedEntry> RecordEntries(const Block& block, std::uint64_t row) const {
    Cursor in = At(block);
    const std::size_t rows = in.Rows(0);
    const auto width = static_cast<std::size_t>(in.Varint());
    const ColumnValues keys = TakeInts(in, width);
    const ColumnValues types = TakeInts(in, width);
    SkipInts(in, rows);
    const std::size_t wanted[] = {static_cast<std::size_t>(row)};
    std::vector<CodedEntry> entries;
    for (std::size_t i = 0; i < width; ++i) {
      const auto type = static_cast<LONG>(types[i]);
      const bool isSkipped = type == host::DA_NIL || type == host::DA_REAL;
      if (isSkipped) SkipColumn(in, type, rows);
      entries.push_back(
          {static_cast<LONG>(keys[i]), type, isSkipped ? 0 : PickInts(in, rows, wanted).front()});
    }
    return entries;
  }

  // Values behind their types, the entry that each is for by its place.
  static void TakeValues(Cursor& in, std::size_t rows, std::vector<CodedEntry>& entries) {
    const ColumnValues types = TakeInts(in, rows);
    entries.resize(rows);
    for (const LONG type : kValueTypes) {
      std::vector<std::size_t> places;
      for (std::size_t i = 0; i < rows; ++i) {
        if (types[i] == static_cast<std::uint64_t>(type)) places.push_back(i);
      }
      if (places.empty()) continue;
      const ColumnValues words = TakeColumn(in, type, places.size());
      for (std::size_t i = 0; i < places.size(); ++i) {
        entries[places[i]].type = type;
        entries[places[i]].word = words[i];
      }
    }
  }

  std::vector<CodedEntry> ListEntries(const Block& block) const {
    Cursor in = At(block);
    const std::size_t size = in.Rows(sizeof(CodedEntry));
    in.Long("an own ID");
    const ColumnValues keys = TakeInts(in, size);
    std::vector<CodedEntry> entries;
    TakeValues(in, size, entries);
    for (std::size_t i = 0; i < size; ++i) entries[i].key = static_cast<LONG>(keys[i]);
    return entries;
  }

  void ApplyPatch(const Block& block, std::vector<CodedEntry>& entries) const {
    Cursor in = At(block);
    in.Varint();
    in.Long("an own ID");
    const std::size_t changes = in.Rows(sizeof(CodedEntry));
    const std::size_t added = in.Rows(sizeof(CodedEntry));
    const ColumnValues positions = TakeInts(in, changes);
    CheckBelow(in, positions, entries.size(), "a position in a patch");
    const ColumnValues keys = TakeInts(in, added);
    std::vector<CodedEntry> values;
    TakeValues(in, changes + added, values);
    for (std::size_t i = 0; i < changes; ++i) {
      CodedEntry& entry = entries[static_cast<std::size_t>(positions[i])];
      entry.type = values[i].type;
      entry.word = values[i].word;
    }
    for (std::size_t i = 0; i < added; ++i) {
      values[changes + i].key = static_cast<LONG>(keys[i]);
      entries.push_back(values[changes + i]);
    }
  }

  static Found FoundIn(const std::vector<CodedEntry>& entries, LONG key) {
    Found found{!entries.empty(), std::nullopt};
    for (const CodedEntry& entry : entries) {
      if (entry.key == key && entry.type == host::DA_STRING) found.text = entry.word;
    }
    return found;
  }

  // `wanted`: rows of the block, each with its place in `found`.
  void PickTexts(const Block& block, std::vector<std::pair<std::size_t, std::size_t>>& wanted,
                 LONG key, std::vector<Found>& found) const {
    std::ranges::sort(wanted);
    std::vector<std::size_t> rows;
    rows.reserve(wanted.size());
    for (const auto& [row, place] : wanted) rows.push_back(row);
    Cursor in = At(block);
    const std::size_t all = in.Rows(0);
    const auto width = static_cast<std::size_t>(in.Varint());
    const ColumnValues keys = TakeInts(in, width);
    const ColumnValues types = TakeInts(in, width);
    SkipInts(in, all);
    for (const auto& [row, place] : wanted) found[place].hasContents = width > 0;
    for (std::size_t i = 0; i < width; ++i) {
      const auto type = static_cast<LONG>(types[i]);
      if (static_cast<LONG>(keys[i]) != key || type != host::DA_STRING) {
        SkipColumn(in, type, all);
        continue;
      }
      const ColumnValues words = PickInts(in, all, rows);
      for (std::size_t at = 0; at < words.size(); ++at) found[wanted[at].second].text = words[at];
    }
  }

  std::string_view contents_;
  Budget& budget_;
  std::vector<Block> blocks_;
};

// Texts of section TEXTS by their rows. Lengths become ends, by which a text is found without going
// through those before it.
class SkimmedTexts {
 public:
  SkimmedTexts(std::string_view contents, Budget& budget) {
    Cursor in(contents, "TEXTS", budget);
    const std::size_t rows = in.Rows(0);
    lengths_ = TakeInts(in, rows);
    bytes_ = in.Take(in.Left());
    std::uint64_t end = 0;
    for (std::uint64_t& length : lengths_) {
      if (length > bytes_.size() - end) in.Refuse("a text goes beyond the section");
      end += length;
      length = end;
    }
    if (end != bytes_.size()) in.Refuse("bytes are left over");
  }

  std::string_view At(std::uint64_t row) const {
    if (row >= lengths_.size())
      throw Damage{"The file is damaged: it names text " + Grouped(row) + " of " +
                   Grouped(lengths_.size()) + "."};
    const auto end = lengths_[static_cast<std::size_t>(row)];
    const auto begin = row == 0 ? 0 : lengths_[static_cast<std::size_t>(row) - 1];
    return bytes_.substr(begin, end - begin);
  }

 private:
  ColumnValues lengths_;  // then: where each ends
  std::string_view bytes_;
};

SectionParts PartsOf(const FileParts& file) {
  const auto read = [&file](std::uint64_t offset, std::uint64_t length) {
    auto bytes = file.Read(offset, length);
    if (!bytes) throw Damage{bytes.Message()};
    return bytes.Take();
  };
  return {read, file.Size(), ContentKind::Scene};
}

// The number of the document's data container. Behind the identity, the bits and the layer, which
// nobody asks for here.
std::uint64_t DataContainer(const SectionParts& parts, Budget& budget) {
  const SectionBytes contents = parts.Contents("DOCUMENT", budget);
  Cursor in(contents.View(), "DOCUMENT", budget);
  in.Fixed64();
  in.Long("a set of bits");
  in.Fixed64();
  in.Fixed64();
  return in.Varint();
}

std::optional<std::vector<std::string>> StoreNames(const FileParts& file, const NamedStore& store) {
  Budget budget(MemoryFor(file.Size()));
  const SectionParts parts = PartsOf(file);
  if (store == kListOfStates && parts.Has(kNamesSection)) {
    StateNames known = ReadStateNames(parts.Contents(kNamesSection, budget).View(), budget);
    // Else a program that does not know the section has changed what it was made from.
    if (known.sum == parts.SumOf(kSourcesOfNames)) return std::move(known.names);
  }
  const SectionBytes values = parts.Contents("VALUES", budget);
  const SkimmedContainers containers(values.View(), budget);
  std::uint64_t stored = 0;
  for (const CodedEntry& entry : containers.Entries(DataContainer(parts, budget))) {
    if (entry.key == store.store && entry.type == host::DA_CONTAINER) stored = entry.word;
  }
  bool hasNote = false;
  std::vector<std::uint64_t> numbers;
  for (const CodedEntry& entry : containers.Entries(stored)) {
    hasNote |= entry.key == store.note;
    if (entry.type == host::DA_CONTAINER) numbers.push_back(entry.word);
  }
  // Without it the list may lack Stagemarks that stand among the records.
  if (!hasNote) return std::nullopt;
  const SectionBytes bytes = parts.Contents("TEXTS", budget);
  const SkimmedTexts texts(bytes.View(), budget);
  std::vector<std::string> names;
  for (const auto& found : containers.Texts(numbers, store.name)) {
    if (found.hasContents) names.emplace_back(found.text ? texts.At(*found.text) : "");
  }
  return names;
}

std::vector<std::string> SectionNames(const FileParts& file, ElementSection section, LONG type,
                                      std::string_view begin) {
  Budget budget(MemoryFor(file.Size()));
  const SectionParts parts = PartsOf(file);
  const char* const name = kElementRules[section].name;
  const SectionBytes contents = parts.Contents(name, budget);
  Cursor in(contents.View(), name, budget);
  const std::size_t rows = in.Rows(0);
  SkipInts(in, rows);  // owners
  SkipInts(in, rows);  // depths
  ColumnValues types;
  if (type == 0) {
    SkipInts(in, rows);
  } else {
    types = TakeInts(in, rows);
  }
  SkipInts(in, rows);  // identities
  const ColumnValues named = TakeInts(in, rows);
  const SectionBytes bytes = parts.Contents("TEXTS", budget);
  const SkimmedTexts texts(bytes.View(), budget);
  std::vector<std::string> names;
  for (std::size_t row = 0; row < rows; ++row) {
    if (type != 0 && static_cast<LONG>(types[row]) != type) continue;
    const std::string_view text = texts.At(named[row]);
    if (text.starts_with(begin)) names.emplace_back(text);
  }
  return names;
}

template <class T, class Work>
Result<T> FromFile(const std::string& path, const Work& work) {
  auto file = FileParts::Open(path);
  if (!file) return file.GetStatus();
  auto names = Guarded<T>([&] { return work(file.Value()); });
  return names ? std::move(names) : Result<T>::Failure("\"" + path + "\": " + names.Message());
}

}  // namespace

Result<std::optional<std::vector<std::string>>> NamesInStore(const std::string& path,
                                                             const NamedStore& store) {
  return FromFile<std::optional<std::vector<std::string>>>(
      path, [&](const FileParts& file) { return StoreNames(file, store); });
}

Result<std::vector<std::string>> NamesInSection(const std::string& path, ElementSection section,
                                                LONG type, std::string_view begin) {
  return FromFile<std::vector<std::string>>(
      path, [&](const FileParts& file) { return SectionNames(file, section, type, begin); });
}

}  // namespace engine
