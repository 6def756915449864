#include "engine/scenefile/Sections.h"

#include <xxhash.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <memory>

#include "engine/scenefile/Bytes.h"

namespace engine {
namespace {

constexpr std::size_t kNameLength = 8;
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

bool IsName(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  });
}

// Reads the frame from front to back.
class FrameReader {
 public:
  FrameReader(std::string_view bytes, ContentKind kind) : bytes_(bytes), magic_(MagicOf(kind)) {}

  std::vector<Section> Read() {
    CheckStart();
    for (Section section = Next(); section.name != kEnd; section = Next()) {
      if (FindSection(sections_, section.name))
        Refuse(section.name, section.offset, "it occurs twice");
      if (sections_.size() == kMostSections)
        throw Damage{"The file is damaged: it has more than " + Grouped(kMostSections) +
                     " sections."};
      sections_.push_back(std::move(section));
    }
    return std::move(sections_);
  }

 private:
  void CheckStart() {
    const std::string_view common = bytes_.substr(0, kMagicLength);
    if (common.empty() || common != magic_.substr(0, common.size()))
      throw Damage{"This is no scene file."};
    if (bytes_.size() < kStartLength)
      throw Damage{"The file is cut off: it ends within its first " + Grouped(kStartLength) +
                   " bytes."};
    const std::uint64_t version = Number(kMagicLength, 4);
    if (version > kVersion)
      throw Damage{"The file is of version " + Grouped(version) +
                   ", and this program reads versions up to " + Grouped(kVersion) +
                   ". Open it with a newer program."};
    if (version == 0) throw Damage{"The file is damaged: it names version 0, which never was."};
    at_ = kStartLength;
  }

  Section Next() {
    if (at_ == bytes_.size())
      throw Damage{"The file is cut off at byte " + Grouped(at_) + ": its end section is missing."};
    Section section;
    section.offset = at_;
    section.name = TakeName();
    CheckLeft(section.name, kHeadLength);
    const std::uint64_t stored = Number(at_ + 8, 8);
    section.rawLength = Number(at_ + 16, 8);
    const std::string_view head = bytes_.substr(at_, kHeadLength);
    at_ += kHeadLength;
    CheckLeft(section.name, stored);
    section.payload = bytes_.substr(at_, static_cast<std::size_t>(stored));
    at_ += section.payload.size();
    CheckSum(section, head);
    return section;
  }

  std::string TakeName() {
    const std::string_view field = bytes_.substr(at_, kNameLength);
    if (field.size() < kNameLength)
      throw Damage{"The file is cut off: the head of the section at byte " + Grouped(at_) +
                   " needs " + Grouped(kHeadLength - field.size()) + " bytes more."};
    const std::string_view name = field.substr(0, field.find_last_not_of('\0') + 1);
    if (!IsName(name))
      throw Damage{"The file is damaged at byte " + Grouped(at_) + ": no section begins there."};
    return std::string(name);
  }

  void CheckSum(const Section& section, std::string_view head) {
    const std::string sum(head.substr(kSumAt));
    std::string expected;
    PutFixed64(expected, SumOf(head, section.payload));
    if (sum != expected) Refuse(section.name, section.offset, "its checksum is wrong");
    if (section.name == kEnd) return CheckEnd(section);
    sums_ += sum;
  }

  void CheckEnd(const Section& section) {
    std::string expected;
    PutVarint(expected, sections_.size());
    PutFixed64(expected, XXH3_64bits(sums_.data(), sums_.size()));
    if (section.payload != expected)
      Refuse(section.name, section.offset, "sections before it are missing or exchanged");
    if (at_ != bytes_.size())
      throw Damage{"The file is damaged: " + Grouped(bytes_.size() - at_) +
                   " bytes follow its end."};
  }

  void CheckLeft(const std::string& name, std::uint64_t wanted) {
    const std::uint64_t left = bytes_.size() - at_;
    if (wanted > left)
      throw Damage{"The file is cut off: section " + name + " needs " + Grouped(wanted - left) +
                   " bytes more."};
  }

  std::uint64_t Number(std::size_t at, unsigned bytes) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < bytes; ++i)
      value |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes_[at + i])) << (8 * i);
    return value;
  }

  [[noreturn]] static void Refuse(const std::string& name, std::uint64_t offset, const char* what) {
    throw Damage{"The file is damaged in section " + name + " (from byte " + Grouped(offset) +
                 "): " + what + "."};
  }

  std::string_view bytes_;
  std::string_view magic_;
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
  const bool stuck = target.pos == start && in.pos == in.size;
  if (ZSTD_isError(hint) || target.pos > section.rawLength || (hint != 0 && stuck))
    RefuseExpansion(section);
  out.resize(target.pos);
  return hint != 0;
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
  if (ZSTD_isError(size) || size >= contents.size())
    return AddAsItIs(name, contents.size(), contents);
  AddAsItIs(name, contents.size(), std::string_view(packed).substr(0, size));
}

void SectionWriter::AddAsItIs(const std::string& name, std::uint64_t rawLength,
                              std::string_view payload) {
  std::string head = HeadOf(name, rawLength, payload);
  sums_.append(head, kSumAt);
  head.append(payload);
  pieces_.push_back(std::move(head));
}

std::uint64_t SectionWriter::Sum() const { return XXH3_64bits(sums_.data(), sums_.size()); }

std::vector<std::string> SectionWriter::Finish() {
  std::string end;
  PutVarint(end, sums_.size() / 8);
  PutFixed64(end, Sum());
  std::string piece = HeadOf(std::string(kEnd), end.size(), end);
  pieces_.push_back(piece + end);
  return std::move(pieces_);
}

std::vector<Section> ReadSections(std::string_view bytes, ContentKind kind) {
  return FrameReader(bytes, kind).Read();
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
