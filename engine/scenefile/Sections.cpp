#include "engine/scenefile/Sections.h"

#include <xxhash.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "engine/scenefile/Bytes.h"

namespace engine {
namespace {

// Places in the head of a section. The sum covers what stands before it and the payload.
constexpr std::size_t kNameLength = 8;
constexpr std::size_t kStoredAt = 8;
constexpr std::size_t kSumAt = 24;
constexpr std::size_t kHeadLength = 32;
constexpr std::size_t kMagicLength = 8;
constexpr std::size_t kStartLength = kMagicLength + 4;
constexpr std::size_t kMostSections = 4096;
constexpr int kCompression = 3;
constexpr std::string_view kEnd = "END";

// 0D 0A and 0A show a transfer that mangled line ends.
std::string_view MagicOf(ContentKind kind) {
  return kind == ContentKind::Scene ? std::string_view("\x8ASMS\r\n\x1A\n", kMagicLength)
                                    : std::string_view("\x8ASMV\r\n\x1A\n", kMagicLength);
}

// With the version as its seed: the bytes of one version are damaged for another.
std::uint64_t SumOf(std::string_view head, std::string_view payload) {
  const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(),
                                                                       &XXH3_freeState);
  if (!state) throw std::bad_alloc();
  XXH3_64bits_reset_withSeed(state.get(), kVersion);
  XXH3_64bits_update(state.get(), head.data(), kSumAt);
  XXH3_64bits_update(state.get(), payload.data(), payload.size());
  return XXH3_64bits_digest(state.get());
}

std::string HeadOf(const std::string& name, std::uint64_t rawLength, std::string_view payload) {
  std::string head = name;
  head.resize(kNameLength);
  PutFixed64(head, payload.size());
  PutFixed64(head, rawLength);
  PutFixed64(head, SumOf(head, payload));
  return head;
}

// In the first bytes of a head.
std::string_view NameIn(std::string_view head) {
  const std::string_view field = head.substr(0, kNameLength);
  return field.substr(0, field.find_last_not_of('\0') + 1);
}

bool IsName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  });
}

[[noreturn]] void RefuseSection(const std::string& name, std::uint64_t offset, const char* what) {
  throw Damage{"The file is damaged in section " + name + " (from byte " + Grouped(offset) +
               "): " + what + "."};
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t at, unsigned length) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < length; ++i)
    value |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[at + i])) << (8 * i);
  return value;
}

// Of the first bytes of a file: kStartLength, or all that it has.
void CheckStart(std::string_view start, ContentKind kind) {
  const std::string_view magic = MagicOf(kind);
  const std::string_view common = start.substr(0, kMagicLength);
  if (common.empty() || common != magic.substr(0, common.size()))
    throw Damage{"This is no scene file."};
  if (start.size() < kStartLength)
    throw Damage{"The file is cut off: it ends within its first " + Grouped(kStartLength) +
                 " bytes."};
  const std::uint64_t version = NumberAt(start, kMagicLength, 4);
  if (version > kVersion) {
    throw Damage{"The file is of version " + Grouped(version) +
                 ", and this program reads versions up to " + Grouped(kVersion) +
                 ". Open it with a newer program."};
  }
  if (version == 0) throw Damage{"The file is damaged: it names version 0, which never was."};
}

// Each section is looked for among all before it, so their number must not be a file's to choose.
void CheckCount(std::size_t sections) {
  if (sections == kMostSections)
    throw Damage{"The file is damaged: it has more than " + Grouped(kMostSections) + " sections."};
}

[[noreturn]] void RefuseCutOff(const std::string& name, std::uint64_t missing) {
  throw Damage{"The file is cut off: section " + name + " needs " + Grouped(missing) +
               " bytes more."};
}

// The section whose head this is, without its payload; `head` has kHeadLength bytes, or all that
// are left of the file.
Section SectionOfHead(std::string_view head, std::uint64_t offset) {
  if (head.empty())
    throw Damage{"The file is cut off at byte " + Grouped(offset) +
                 ": its end section is missing."};
  const std::string_view field = head.substr(0, kNameLength);
  if (field.size() < kNameLength)
    throw Damage{"The file is cut off: the head of the section at byte " + Grouped(offset) +
                 " needs " + Grouped(kHeadLength - field.size()) + " bytes more."};
  const std::string_view name = NameIn(head);
  if (!IsName(name))
    throw Damage{"The file is damaged at byte " + Grouped(offset) + ": no section begins there."};
  Section section;
  section.name = name;
  section.offset = offset;
  if (head.size() < kHeadLength) RefuseCutOff(section.name, kHeadLength - head.size());
  section.rawLength = NumberAt(head, kStoredAt + 8, 8);
  return section;
}

void CheckSum(const Section& section, std::string_view head) {
  std::string expected;
  PutFixed64(expected, SumOf(head, section.payload));
  if (head.substr(kSumAt) != expected)
    RefuseSection(section.name, section.offset, "its checksum is wrong");
}

// `sums`: those of all sections before it, one after the other.
void CheckEndSection(const Section& section, const std::string& sums, std::uint64_t behind) {
  std::string expected;
  PutVarint(expected, sums.size() / 8);
  PutFixed64(expected, XXH3_64bits(sums.data(), sums.size()));
  if (section.payload != expected)
    RefuseSection(section.name, section.offset, "sections before it are missing or exchanged");
  if (behind > 0)
    throw Damage{"The file is damaged: " + Grouped(behind) + " bytes follow its end."};
}

// Reads the frame from front to back. Sums are checked before anything is expanded, so that neither
// zstd nor the readers of sections see bytes that were damaged by accident.
class FrameReader {
 public:
  explicit FrameReader(std::string_view bytes) : bytes_(bytes) {}

  std::vector<Section> Read(ContentKind kind) {
    CheckStart(bytes_.substr(0, kStartLength), kind);
    at_ = kStartLength;
    for (Section section = Next(); section.name != kEnd; section = Next()) {
      if (FindSection(sections_, section.name))
        RefuseSection(section.name, section.offset, "it occurs twice");
      CheckCount(sections_.size());
      sections_.push_back(std::move(section));
    }
    return std::move(sections_);
  }

 private:
  Section Next() {
    const std::string_view head = bytes_.substr(at_, kHeadLength);
    Section section = SectionOfHead(head, at_);
    const std::uint64_t stored = NumberAt(head, kStoredAt, 8);
    at_ += kHeadLength;
    if (stored > bytes_.size() - at_) RefuseCutOff(section.name, stored - (bytes_.size() - at_));
    section.payload = bytes_.substr(at_, static_cast<std::size_t>(stored));
    at_ += section.payload.size();
    CheckSum(section, head);
    if (section.name == kEnd)
      CheckEndSection(section, sums_, bytes_.size() - at_);
    else
      sums_ += head.substr(kSumAt);
    return section;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::vector<Section> sections_;
  std::string sums_;
};

using Decompressor = std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)>;

constexpr std::size_t kStep = std::size_t{1} << 20;

[[noreturn]] void RefuseExpansion(const Section& section) {
  throw Damage{"The file is damaged in section " + section.name + " (from byte " +
               Grouped(section.offset) + "): it does not expand to its " +
               Grouped(section.rawLength) + " bytes."};
}

// One more piece, at most as long as what is there already: memory follows what really comes, not
// what is promised. False when the frame has ended.
bool ExpandPiece(const Section& section, ZSTD_DCtx* context, ZSTD_inBuffer& in, std::string& out,
                 Budget& budget) {
  const std::size_t piece =
      std::min<std::uint64_t>(section.rawLength - out.size() + 1, std::max(kStep, out.size()));
  budget.Charge(piece);
  const std::size_t start = out.size();
  out.resize(start + piece);
  ZSTD_outBuffer target{out.data(), out.size(), start};
  const std::size_t hint = ZSTD_decompressStream(context, &target, &in);
  // The frame wants more bytes, and there are none.
  const bool stuck = target.pos == start && in.pos == in.size;
  if (ZSTD_isError(hint) || target.pos > section.rawLength || (hint != 0 && stuck))
    RefuseExpansion(section);
  out.resize(target.pos);
  return hint != 0;
}

// Into memory of the length that is promised, which costs nothing until it is written to.
SectionBytes ExpandAtOnce(const Section& section, Budget& budget) {
  budget.Charge(section.rawLength);
  SectionBytes contents(static_cast<std::size_t>(section.rawLength));
  if (section.rawLength == section.payload.size()) {
    std::ranges::copy(section.payload, contents.Data());
    return contents;
  }
  const std::size_t size = ZSTD_decompress(contents.Data(), contents.Size(), section.payload.data(),
                                           section.payload.size());
  if (ZSTD_isError(size) || size != contents.Size()) RefuseExpansion(section);
  return contents;
}

}  // namespace

SectionWriter::SectionWriter(ContentKind kind) {
  pieces_.emplace_back(MagicOf(kind));
  PutFixed32(pieces_.back(), kVersion);
}

void SectionWriter::Add(const std::string& name, std::string_view contents) {
  std::string packed(ZSTD_compressBound(contents.size()), '\0');
  const std::size_t size =
      ZSTD_compress(packed.data(), packed.size(), contents.data(), contents.size(), kCompression);
  // Equal lengths mean "kept plain", so what does not become smaller is kept plain.
  if (ZSTD_isError(size) || size >= contents.size())
    return AddAsItIs(name, contents.size(), contents);
  AddAsItIs(name, contents.size(), std::string_view(packed).substr(0, size));
}

void SectionWriter::AddAsItIs(const std::string& name, std::uint64_t rawLength,
                              std::string_view payload) {
  std::string head = HeadOf(name, rawLength, payload);
  sums_.append(head, kSumAt);
  head.append(payload);
  contentBytes_ += rawLength;
  pieces_.push_back(std::move(head));
}

std::uint64_t SectionWriter::Bytes() const {
  std::uint64_t bytes = 0;
  for (const std::string& piece : pieces_) bytes += piece.size();
  return bytes;
}

// Of the sums of the sections: their bytes need not be gone through again.
std::uint64_t SectionWriter::Sum() const { return XXH3_64bits(sums_.data(), sums_.size()); }

std::uint64_t SectionWriter::SumOf(std::span<const std::string_view> names) const {
  std::string sums;
  for (const std::string_view name : names) {
    for (std::size_t i = 1; i < pieces_.size(); ++i) {
      const std::string_view head = std::string_view(pieces_[i]).substr(0, kHeadLength);
      if (NameIn(head) == name) sums += head.substr(kSumAt);
    }
  }
  return XXH3_64bits(sums.data(), sums.size());
}

std::vector<std::string> SectionWriter::Finish() {
  std::string end;
  PutVarint(end, sums_.size() / 8);
  PutFixed64(end, Sum());
  std::string piece = HeadOf(std::string(kEnd), end.size(), end);
  pieces_.push_back(piece + end);
  return std::move(pieces_);
}

SectionParts::SectionParts(ReadPart read, std::uint64_t size, ContentKind kind)
    : read_(std::move(read)) {
  CheckStart(read_(0, std::min<std::uint64_t>(size, kStartLength)), kind);
  std::uint64_t at = kStartLength;
  // Heads only: what lies between is passed over unread.
  while (places_.empty() || places_.back().section.name != kEnd) {
    Place place;
    place.head = read_(at, std::min<std::uint64_t>(size - at, kHeadLength));
    place.section = SectionOfHead(place.head, at);
    if (place.section.name != kEnd) CheckCount(places_.size());
    place.stored = NumberAt(place.head, kStoredAt, 8);
    at += kHeadLength;
    if (place.stored > size - at) RefuseCutOff(place.section.name, place.stored - (size - at));
    at += place.stored;
    if (Has(place.section.name))
      RefuseSection(place.section.name, place.section.offset, "it occurs twice");
    places_.push_back(std::move(place));
  }
  CheckEnd(places_.back(), size - at);
}

void SectionParts::CheckEnd(const Place& end, std::uint64_t behind) const {
  constexpr std::uint64_t kLongestEnd = 32;
  std::string sums;
  for (const Place& place : places_) sums += &place == &end ? "" : place.head.substr(kSumAt);
  const std::string payload =
      read_(end.section.offset + kHeadLength, std::min(end.stored, kLongestEnd));
  Section section = end.section;
  section.payload = payload;
  CheckSum(section, end.head);
  CheckEndSection(section, sums, behind);
}

const SectionParts::Place* SectionParts::Find(std::string_view name) const {
  const auto found =
      std::ranges::find_if(places_, [&](const Place& place) { return place.section.name == name; });
  return found == places_.end() ? nullptr : &*found;
}

bool SectionParts::Has(std::string_view name) const { return Find(name) != nullptr; }

const SectionParts::Place& SectionParts::Needed(std::string_view name) const {
  if (const Place* place = Find(name)) return *place;
  throw Damage{"The file is damaged: its section " + std::string(name) + " is missing."};
}

std::uint64_t SectionParts::SumOf(std::span<const std::string_view> names) const {
  std::string sums;
  for (const std::string_view name : names) sums += Needed(name).head.substr(kSumAt);
  return XXH3_64bits(sums.data(), sums.size());
}

SectionBytes SectionParts::Contents(std::string_view name, Budget& budget) const {
  const Place& place = Needed(name);
  budget.Charge(place.stored);
  const std::string payload = read_(place.section.offset + kHeadLength, place.stored);
  Section section = place.section;
  section.payload = payload;
  CheckSum(section, place.head);
  return ExpandAtOnce(section, budget);
}

std::vector<Section> ReadSections(std::string_view bytes, ContentKind kind) {
  return FrameReader(bytes).Read(kind);
}

std::uint64_t SumBefore(std::string_view bytes, const std::vector<Section>& sections,
                        const Section& section) {
  std::string sums;
  for (const Section& each : sections) {
    if (each.offset < section.offset)
      sums += bytes.substr(each.offset + kSumAt, kHeadLength - kSumAt);
  }
  return XXH3_64bits(sums.data(), sums.size());
}

std::string Expand(const Section& section, Budget& budget) {
  if (section.rawLength == section.payload.size()) {
    budget.Charge(section.rawLength);
    return std::string(section.payload);
  }
  const Decompressor context(ZSTD_createDCtx(), &ZSTD_freeDCtx);
  if (!context) throw std::bad_alloc();
  ZSTD_inBuffer in{section.payload.data(), section.payload.size(), 0};
  std::string out;
  while (ExpandPiece(section, context.get(), in, out, budget)) {
  }
  if (out.size() != section.rawLength || in.pos != in.size) RefuseExpansion(section);
  return out;
}

const Section* FindSection(const std::vector<Section>& sections, std::string_view name) {
  const auto found = std::ranges::find(sections, name, &Section::name);
  return found == sections.end() ? nullptr : &*found;
}

}  // namespace engine
