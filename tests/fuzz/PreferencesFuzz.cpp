// The file of preferences, with a true checksum before whatever it holds: there comes out what can
// be set, written and read again, or the file is kept aside and somebody hears of it.
#include <cstdint>

#include "engine/application/Preferences.h"
#include "engine/scenefile/FileAsRead.h"
#include "tests/fuzz/Require.h"
#include "tests/support/ScriptedServices.h"

namespace {

constexpr const char* kTitle = "stagemarks preferences 2 ";

using fuzz::Require;

// Files in memory: the only one is that of the preferences.
class OneFile : public tests::FaultyFileSystem {
 public:
  using FaultyFileSystem::FaultyFileSystem;
  std::optional<std::string> bytes;

 protected:
  engine::FileKind DoKind(const std::string&) override {
    return bytes ? engine::FileKind::File : engine::FileKind::Missing;
  }
  engine::Result<std::string> DoReadFile(const std::string&, std::uint64_t) override {
    return bytes.value();
  }
  engine::Status DoReplaceFile(const std::string&, std::span<const std::string_view> pieces,
                               const engine::Replacing&) override {
    bytes.emplace();
    for (const std::string_view piece : pieces) *bytes += piece;
    return {};
  }
  engine::Status DoCopyFile(const std::string&, const std::string&, bool) override { return {}; }
  engine::Status DoRemoveFile(const std::string&) override {
    bytes.reset();
    return {};
  }
  engine::Status DoMakeFolder(const std::string&) override { return {}; }
};

std::string WithChecksum(std::string_view body) {
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx",
                static_cast<unsigned long long>(engine::HashOfContent({&body, 1})));
  return std::string(kTitle) + digits + "\n" + std::string(body);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr host::LONG kPlugin = 7;
  tests::ScriptedServices scripted("/preferences");
  OneFile files(scripted.ledger, scripted.person);
  files.bytes = WithChecksum({reinterpret_cast<const char*>(data), size});
  const engine::Services services{files,           scripted.clock,   scripted.person,
                                  scripted.ledger, scripted.folders, scripted.viewer};
  host::BaseContainer value;
  value.SetLong(1, 2);
  engine::Preferences preferences(services);
  (void)preferences.Get(kPlugin);
  if (!preferences.Set(kPlugin, value, false).Ok()) return 0;
  engine::Preferences again(services);
  const host::BaseContainer* kept = again.Get(kPlugin);
  Require(kept && kept->GetLong(1) == 2);
  return 0;
}
