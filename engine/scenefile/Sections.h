// Sections: the frame of a file: magic, version, named, compressed and checked sections, end; see
// "Frame" in docs/SCENE_FILE.md. A Section points into the file's bytes, which must outlive it. Any
// thread.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scenefile/Damage.h"

namespace engine {

// The newest version, which is the one that is written.
inline constexpr std::uint32_t kVersion = 1;

// A scene file, or a single container, which the tests write and read.
enum class ContentKind { Scene, Container };

// Filled with zeros, for nothing but the size of the file.
inline constexpr const char* kRoomSection = "ROOM";

// A section as it stands in the file, compressed or not.
struct Section {
  std::string name;
  std::uint64_t rawLength = 0;
  std::string_view payload;
  std::uint64_t offset = 0;  // of its head in the file
};

// Collects sections, each as a piece of the file.
class SectionWriter {
 public:
  explicit SectionWriter(ContentKind kind);
  // Compresses where that makes it smaller.
  void Add(const std::string& name, std::string_view contents);
  // Takes a section as it was read.
  void AddAsItIs(const std::string& name, std::uint64_t rawLength, std::string_view payload);
  // Of all that was added so far: as it stands in the file, and of the contents.
  std::uint64_t Bytes() const;
  std::uint64_t ContentBytes() const { return contentBytes_; }
  // One number for what was added so far: that of SumBefore.
  std::uint64_t Sum() const;
  // One number for those sections, which were added.
  std::uint64_t SumOf(std::span<const std::string_view> names) const;
  // The file with its end, to be written piece by piece.
  std::vector<std::string> Finish();

 private:
  std::vector<std::string> pieces_;
  std::string sums_;
  std::uint64_t contentBytes_ = 0;
};

// Bytes that nobody has filled with zeros first: of a million names that takes as long as reading
// them.
class SectionBytes {
 public:
  explicit SectionBytes(std::size_t size)
      : bytes_(std::make_unique_for_overwrite<char[]>(size)), size_(size) {}

  char* Data() { return bytes_.get(); }
  std::size_t Size() const { return size_; }
  std::string_view View() const { return {bytes_.get(), size_}; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};

// A file of which some sections are read and the others passed over: all of its frame is checked
// but the sums of those that nobody asks for. One thread.
class SectionParts {
 public:
  // Bytes of the file, as many as asked for; throws Damage where they cannot be had.
  using ReadPart = std::function<std::string(std::uint64_t offset, std::uint64_t length)>;

  // Throws Damage.
  SectionParts(ReadPart read, std::uint64_t size, ContentKind kind);
  // The contents of a section, which must be there; charges their memory. Throws Damage.
  SectionBytes Contents(std::string_view name, Budget& budget) const;
  bool Has(std::string_view name) const;
  // One number for those sections, which must be there: that of SectionWriter. Throws Damage.
  std::uint64_t SumOf(std::span<const std::string_view> names) const;

 private:
  struct Place {
    Section section;  // without its payload
    std::uint64_t stored = 0;
    std::string head;
  };

  const Place* Find(std::string_view name) const;
  const Place& Needed(std::string_view name) const;
  void CheckEnd(const Place& end, std::uint64_t behind) const;

  ReadPart read_;
  std::vector<Place> places_;
};

// All sections but the end, checked as far as the frame goes. Throws Damage.
std::vector<Section> ReadSections(std::string_view bytes, ContentKind kind);
// The contents of a section; charges their memory. Throws Damage.
std::string Expand(const Section& section, Budget& budget);
// One number for all sections that stand before `section` in the file, contents included.
std::uint64_t SumBefore(std::string_view bytes, const std::vector<Section>& sections,
                        const Section& section);
// The section of that name, null where there is none.
const Section* FindSection(const std::vector<Section>& sections, std::string_view name);

}  // namespace engine
