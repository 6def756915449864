// Hardening of the built programs and libraries against attacks on their user: read from the
// binaries themselves, since a flag in a build file says nothing about its effect.
#include <elf.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

// The tables of one ELF file of this machine's kind. The file is mapped: a few pages of it are
// read.
class Binary {
 public:
  explicit Binary(const fs::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    size_ = static_cast<std::size_t>(fs::file_size(path));
    void* mapped =
        size_ == 0 ? MAP_FAILED : ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
    ::close(file);
    if (mapped != MAP_FAILED) mapped_ = static_cast<const char*>(mapped);
  }
  Binary(const Binary&) = delete;
  Binary& operator=(const Binary&) = delete;
  ~Binary() {
    if (mapped_) ::munmap(const_cast<char*>(mapped_), size_);
  }

  bool IsElf() const {
    return mapped_ && size_ > sizeof(Elf64_Ehdr) && std::memcmp(mapped_, ELFMAG, SELFMAG) == 0;
  }
  Elf64_Ehdr Header() const { return At<Elf64_Ehdr>(0); }

  // The flags of the segment of a type, nothing where the file has none.
  std::optional<std::uint32_t> SegmentFlags(std::uint32_t type) const {
    for (std::size_t i = 0; i < Header().e_phnum; ++i) {
      const auto segment = At<Elf64_Phdr>(Header().e_phoff + i * sizeof(Elf64_Phdr));
      if (segment.p_type == type) return segment.p_flags;
    }
    return std::nullopt;
  }

  // Values of the dynamic section by tag.
  std::map<Elf64_Sxword, Elf64_Xword> Dynamic() const {
    std::map<Elf64_Sxword, Elf64_Xword> values;
    const Elf64_Shdr section = Section(SHT_DYNAMIC);
    for (std::size_t i = 0; i < section.sh_size; i += sizeof(Elf64_Dyn)) {
      const auto entry = At<Elf64_Dyn>(section.sh_offset + i);
      values[entry.d_tag] = entry.d_un.d_val;
    }
    return values;
  }
  std::string DynamicText(std::size_t offset) const {
    return mapped_ + SectionAt(Section(SHT_DYNAMIC).sh_link).sh_offset + offset;
  }

  bool Imports(const std::string& ending) const {
    const auto symbols = Symbols();
    return std::any_of(symbols.begin(), symbols.end(), [&](const Elf64_Sym& symbol) {
      const std::string name = DynamicText(symbol.st_name);
      return symbol.st_shndx == SHN_UNDEF && name.ends_with(ending);
    });
  }

  // Exported functions, and how many of them begin with a mark for indirect calls.
  std::pair<std::size_t, std::size_t> MarkedFunctions() const {
    static constexpr char kEndBranch[] = "\xf3\x0f\x1e\xfa";
    std::pair<std::size_t, std::size_t> counts{};
    for (const Elf64_Sym& symbol : Symbols()) {
      if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_TYPE(symbol.st_info) != STT_FUNC) continue;
      const Elf64_Shdr section = SectionAt(symbol.st_shndx);
      const std::size_t place = symbol.st_value - section.sh_addr + section.sh_offset;
      ++counts.first;
      counts.second += std::memcmp(mapped_ + place, kEndBranch, 4) == 0 ? 1 : 0;
    }
    return counts;
  }

 private:
  template <class T>
  T At(std::size_t offset) const {
    T value{};
    if (offset + sizeof(T) <= size_) std::memcpy(&value, mapped_ + offset, sizeof(T));
    return value;
  }
  Elf64_Shdr SectionAt(std::size_t index) const {
    return At<Elf64_Shdr>(Header().e_shoff + index * sizeof(Elf64_Shdr));
  }
  Elf64_Shdr Section(std::uint32_t type) const {
    for (std::size_t i = 0; i < Header().e_shnum; ++i) {
      if (SectionAt(i).sh_type == type) return SectionAt(i);
    }
    return {};
  }
  std::vector<Elf64_Sym> Symbols() const {
    const Elf64_Shdr section = Section(SHT_DYNSYM);
    std::vector<Elf64_Sym> symbols;
    for (std::size_t i = 0; i < section.sh_size; i += sizeof(Elf64_Sym))
      symbols.push_back(At<Elf64_Sym>(section.sh_offset + i));
    return symbols;
  }

  const char* mapped_ = nullptr;
  std::size_t size_ = 0;
};

// All programs and libraries of this build, by path.
const std::map<std::string, Binary>& BuiltBinaries() {
  static std::map<std::string, Binary> binaries;
  if (!binaries.empty()) return binaries;
  for (const char* folder : {"/bin", "/lib"}) {
    for (const auto& entry :
         fs::recursive_directory_iterator(TEST_BINARY_DIR + std::string(folder))) {
      if (!entry.is_regular_file()) continue;
      const auto place = binaries.try_emplace(entry.path().string(), entry.path()).first;
      if (!place->second.IsElf()) binaries.erase(place);
    }
  }
  return binaries;
}

TEST(Binaries, AreLoadedAnywhereAndStayAsTheyWereLoaded) {
  const auto& binaries = BuiltBinaries();
  EXPECT_GE(binaries.size(), 4U);
  for (const auto& [path, binary] : binaries) {
    SCOPED_TRACE(path);
    const auto values = binary.Dynamic();
    EXPECT_EQ(binary.Header().e_type, ET_DYN);
    EXPECT_TRUE(binary.SegmentFlags(PT_GNU_RELRO).has_value());
    EXPECT_TRUE(values.contains(DT_FLAGS) && (values.at(DT_FLAGS) & DF_BIND_NOW) != 0);
    EXPECT_EQ(binary.SegmentFlags(PT_GNU_STACK).value_or(PF_X) & PF_X, 0U);
    EXPECT_FALSE(values.contains(DT_TEXTREL));
  }
}

// An empty or relative part stands for the folder from which a program is called.
TEST(Binaries, SearchForLibrariesBesideThemselvesOnly) {
  for (const auto& [path, binary] : BuiltBinaries()) {
    SCOPED_TRACE(path);
    const auto values = binary.Dynamic();
    EXPECT_FALSE(values.contains(DT_RPATH));
    if (!values.contains(DT_RUNPATH)) continue;
    std::istringstream parts(binary.DynamicText(values.at(DT_RUNPATH)) + ":");
    for (std::string part; std::getline(parts, part, ':');)
      EXPECT_TRUE(part == "$ORIGIN" || part.starts_with("$ORIGIN/")) << '"' << part << '"';
  }
}

TEST(Binaries, CarryTheCompilersChecks) {
  int read = 0;
  for (const auto& [path, binary] : BuiltBinaries()) {
    SCOPED_TRACE(path);
    const std::string name = fs::path(path).filename().string();
    const bool isEngine = name == "libstagemarks-engine.so";
    if (!isEngine && name != "Stagemarks.so" && name != "stagemarks" &&
        name != "stagemarks-desktop")
      continue;
    ++read;
    EXPECT_TRUE(binary.Imports("__stack_chk_fail"));
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    if (isEngine) {
      EXPECT_TRUE(binary.Imports("_chk")) << "no fortified call";
    }
#endif
    // Clang's sanitizer puts the type of a function before its mark.
#if defined(__CET__) && !(defined(__clang__) && defined(__SANITIZE_ADDRESS__))
    const auto [functions, marked] = binary.MarkedFunctions();
    EXPECT_EQ(marked, functions);
#endif
  }
  EXPECT_GE(read, 3);
}

}  // namespace
