#include "engine/scenefile/Entry.h"

namespace engine::scenefile {

void PutTyped(std::string& out, host::LONG type, std::span<const std::uint64_t> words,
              std::span<const std::uint32_t> numbers) {
  if (type == host::DA_NIL) return;
  if (type == host::DA_REAL) return PutWords(out, words);
  if (type != host::DA_CONTAINER) return PutInts(out, words);
  Column numbered(words.size());
  for (std::size_t i = 0; i < words.size(); ++i) numbered[i] = numbers[words[i]];
  PutInts(out, numbered);
}

void PutEntryValues(std::string& out, std::span<const Entry> entries,
                    std::span<const std::uint32_t> numbers) {
  Column column;
  for (const Entry& entry : entries) column.push_back(Extended(entry.type));
  PutInts(out, column);
  for (const host::LONG type : kValueTypes) {
    column.clear();
    for (const Entry& entry : entries)
      if (entry.type == type) column.push_back(entry.word);
    if (!column.empty()) PutTyped(out, type, column, numbers);
  }
}

}  // namespace engine::scenefile
