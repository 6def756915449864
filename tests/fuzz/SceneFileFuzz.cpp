// Fuzzes the reader of scene files. A checksum would stop nearly every input at the door, so an
// input is the contents of one section (its first byte says which), put into an otherwise whole
// file of a scene that holds one of everything; or, for a first byte beyond the sections, a bare
// file. What opens must save to bytes that open as the same again.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "engine/scenefile/SceneFile.h"
#include "engine/scenefile/Sections.h"
#include "tests/fuzz/Require.h"
#include "tests/scenefile/CodedContainer.h"
#include "tests/scenefile/Scenes.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t limit);

namespace {

using namespace engine;

constexpr std::uint64_t kMemory = std::uint64_t{256} << 20;

struct Part {
  std::string name;
  std::string contents;
};

const std::vector<Part>& Parts() {
  static const std::vector<Part> parts = [] {
    const std::string bytes = tests::Bytes(*tests::EverythingScene());
    Budget budget(kMemory);
    std::vector<Part> result;
    for (const Section& section : ReadSections(bytes, ContentKind::Scene))
      result.push_back({section.name, Expand(section, budget)});
    return result;
  }();
  return parts;
}

std::string FileWith(std::size_t changed, const std::string& contents) {
  SectionWriter out(ContentKind::Scene);
  for (std::size_t i = 0; i < Parts().size(); ++i)
    out.Add(Parts()[i].name, i == changed ? contents : Parts()[i].contents);
  std::string file;
  for (const std::string& piece : out.Finish()) file += piece;
  return file;
}

using fuzz::Require;

void CheckScene(const std::string& file) {
  const auto opened = engine::ReadScene(file, kMemory);
  if (!opened) return;
  const std::string bytes = tests::Bytes(*opened.Value());
  const auto again = engine::ReadScene(bytes, kMemory);
  Require(again.Ok());
  Require(tests::Bytes(*again.Value()) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string contents(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] < Parts().size()) {
    CheckScene(FileWith(data[0], contents));
  } else {
    CheckScene(contents);
    (void)tests::DecodeContainer(contents, kMemory);
  }
  return 0;
}

// Starts over with true contents now and then, so that no corpus has to be kept.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t limit, unsigned seed) {
  const std::size_t part = seed / 8 % Parts().size();
  const std::string& contents = Parts()[part].contents;
  if (size > 1 && seed % 8 != 0) return 1 + LLVMFuzzerMutate(data + 1, size - 1, limit - 1);
  if (contents.size() + 1 > limit) return LLVMFuzzerMutate(data, size, limit);
  data[0] = static_cast<std::uint8_t>(part);
  std::memcpy(data + 1, contents.data(), contents.size());
  return 1 + LLVMFuzzerMutate(data + 1, contents.size(), limit - 1);
}
