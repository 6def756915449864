// ContainerWriter: section VALUES, every container of a file once; see "Containers" in
// docs/SCENE_FILE.md. Containers are added one after the other, then numbered, then written. Deep
// nesting costs memory, never stack. One thread.
#pragma once

#include "engine/core/ContainerBody.h"
#include "engine/scenefile/ContainerBlocks.h"
#include "engine/scenefile/TextsAndNumbers.h"

namespace engine {

class ContainerWriter {
 public:
  // Texts, vectors and times go to the tables, which must outlive the writer.
  ContainerWriter(TextWriter& texts, NumberWriter& numbers) : texts_(texts), tuples_(numbers) {}

  // The number that stands for the container until Number; equal for equal ones (own IDs included).
  // The containers added must live unchanged until the last one is.
  std::uint32_t Add(const host::BaseContainer& container) {
    return AddBody(ContainerAccess::Body(container));
  }
  // After the last Add: gives all containers their numbers in the file.
  void Number();
  // The file's numbers, by what Add answered.
  std::span<const std::uint32_t> Numbers() const { return numbers_; }
  std::string Contents() const;
  // Memory that a reader takes for them, in bytes: an estimate, rather too high than too low.
  std::uint64_t MemoryToRead() const;

 private:
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
  // Type of an entry whose container is not added yet: its word is the body
  static constexpr std::int32_t kWaiting = -1;

  // A container being added: its entries are the end of entries_ from `begin` on; those before
  // `next` are done.
  struct Frame {
    const ContainerBody* body;
    std::size_t begin;
    std::size_t next;
  };
  // Where the entries of a stretch that long containers share have been done before.
  struct Stretch {
    const void* entries;  // EntrySpan::data
    std::uint32_t list;
    std::size_t position;
  };

  std::uint32_t AddBody(const ContainerBody* body);
  std::uint32_t Known(const ContainerBody* body);
  std::uint32_t KnownRecord(const ContainerBody* body);
  std::uint32_t& Remembered(const ContainerBody* body);
  void Open(const ContainerBody* body);
  void OpenStretch(EntrySpan stretch);
  std::uint32_t Close(const Frame& frame);
  std::uint32_t Store(std::int32_t ownId, std::span<const CodedEntry> entries);
  std::uint32_t StoreList(const ContainerBody* body, std::span<const CodedEntry> entries);
  const Stretch* FindStretch(const void* entries);
  std::uint64_t WordOf(const Entry& entry);
  std::uint32_t HeightOf(std::span<const CodedEntry> entries) const;

  TextWriter& texts_;
  NumberWriter& tuples_;
  RecordWriter records_;
  ListWriter lists_;
  std::vector<std::uint32_t> heights_{0};  // of the containers met; the first one is the empty one
  std::vector<std::uint32_t> numbers_;

  HashIndex bodyIndex_;
  std::vector<std::pair<const ContainerBody*, std::uint32_t>> bodies_;
  HashIndex stretchIndex_;
  std::vector<Stretch> stretches_;
  std::vector<Frame> frames_;
  std::vector<CodedEntry> entries_;
  std::vector<CodedEntry> record_;
};

}  // namespace engine
