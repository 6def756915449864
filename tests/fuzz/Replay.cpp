// Runs a fuzz target once over each file of a folder, as a fuzzer begins: shows that the target
// compiles, links and holds for whole files without the compiler that fuzzes. With a second
// argument every file is preceded by that byte.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// The fuzzer's own; nothing is mutated here.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) {
  return size;
}

int main(int count, char** arguments) {
  if (count < 2) return 2;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    std::ifstream in(entry.path(), std::ios::binary);
    std::string bytes(count > 2 ? std::string(1, static_cast<char>(std::atoi(arguments[2])))
                                : std::string());
    bytes.append(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++files;
  }
  std::printf("%d files\n", files);
  return files > 0 ? 0 : 1;
}
