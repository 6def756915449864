// Runs a fuzz target without the compiler that fuzzes: once over each file of a folder, as a fuzzer
// begins, and then over so many inputs made from these by random changes, always the same for a
// seed.
//   TARGET FOLDER [FIRST-BYTE|-] [TRIES SEED]    every file is preceded by that byte
// A crash is reported with the number that repeats its try alone: as TRIES 1 and that as SEED.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// A target may have one of its own.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t limit, unsigned seed)
    __attribute__((weak));
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t limit);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLongest = 1 << 18;

std::vector<Bytes> inputs;
std::mt19937_64 randomNumbers;
char present[80];

std::size_t Below(std::size_t limit) { return limit > 0 ? randomNumbers() % limit : 0; }

extern "C" void SayWhichTry(int signal) {
  (void)!write(STDERR_FILENO, present, std::strlen(present));
  std::signal(signal, SIG_DFL);
  raise(signal);
}

Bytes ReadInput(const std::filesystem::path& path, const char* first) {
  std::ifstream in(path, std::ios::binary);
  Bytes bytes;
  if (std::strcmp(first, "-") != 0) bytes.push_back(static_cast<std::uint8_t>(std::atoi(first)));
  bytes.insert(bytes.end(), std::istreambuf_iterator<char>(in), {});
  return bytes;
}

// Numbers that are often a bound of something.
std::uint8_t Interesting() {
  constexpr std::uint8_t kNumbers[] = {0, 1, 2, 7, 8, 0x7f, 0x80, 0xfe, 0xff, '"', '{', '\n', '-'};
  return kNumbers[Below(std::size(kNumbers))];
}

void ChangeOnce(Bytes& bytes) {
  if (bytes.empty()) return bytes.push_back(Interesting());
  const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(Below(bytes.size()));
  const auto end =
      at + static_cast<std::ptrdiff_t>(1 + Below(std::min<std::size_t>(bytes.end() - at, 64)));
  const Bytes& other = inputs[Below(inputs.size())];
  const auto from = other.begin() + static_cast<std::ptrdiff_t>(Below(other.size()));
  const Bytes piece(from, from + static_cast<std::ptrdiff_t>(
                                     Below(std::min<std::size_t>(other.end() - from + 1, 64))));
  switch (Below(6)) {
    case 0:
      *at ^= static_cast<std::uint8_t>(1U << Below(8));
      break;
    case 1:
      *at = Interesting();
      break;
    case 2:
      *at = static_cast<std::uint8_t>(randomNumbers());
      break;
    case 3:
      bytes.erase(at, end);
      break;
    case 4:
      bytes.insert(at, piece.begin(), piece.end());
      break;
    default:
      std::copy_n(piece.begin(), std::min<std::ptrdiff_t>(piece.size(), bytes.end() - at), at);
      break;
  }
}

void Try(std::uint64_t seed) {
  std::snprintf(present, sizeof present, "died at the try of seed %llu\n",
                static_cast<unsigned long long>(seed));
  randomNumbers.seed(seed);
  Bytes bytes = inputs[Below(inputs.size())];
  std::size_t size = bytes.size();
  bytes.resize(kLongest);
  for (std::size_t i = Below(4) + 1; i > 0; --i) {
    size = LLVMFuzzerCustomMutator ? LLVMFuzzerCustomMutator(bytes.data(), size, kLongest,
                                                             static_cast<unsigned>(randomNumbers()))
                                   : LLVMFuzzerMutate(bytes.data(), size, kLongest);
  }
  bytes.resize(size);
  LLVMFuzzerTestOneInput(bytes.data(), size);
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t limit) {
  Bytes bytes(data, data + size);
  for (std::size_t i = Below(3) + 1; i > 0; --i) ChangeOnce(bytes);
  size = std::min(bytes.size(), limit);
  std::copy_n(bytes.begin(), size, data);
  return size;
}

int main(int count, char** arguments) {
  if (count < 2) return 2;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1]))
    inputs.push_back(ReadInput(entry.path(), count > 2 ? arguments[2] : "-"));
  if (inputs.empty()) return 1;
  std::sort(inputs.begin(), inputs.end());  // a folder has no order
  for (const Bytes& bytes : inputs) LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  const std::uint64_t tries = count > 4 ? std::strtoull(arguments[3], nullptr, 10) : 0;
  const std::uint64_t seed = count > 4 ? std::strtoull(arguments[4], nullptr, 10) : 0;
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) std::signal(signal, SayWhichTry);
  for (std::uint64_t i = 0; i < tries; ++i) Try(seed + i);
  std::printf("%zu files, %llu tries\n", inputs.size(), static_cast<unsigned long long>(tries));
  return 0;
}
