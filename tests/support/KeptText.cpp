#include "tests/support/KeptText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

// A number or a single other character.
std::string PieceAt(const std::string& line, std::size_t at) {
  const std::size_t end = line.find_first_not_of("0123456789+-.e", at);
  const bool begins = at == 0 || line.find_first_of(" ([,:", at - 1) == at - 1;
  const std::string piece = line.substr(at, end - at);
  return begins && piece.find_first_of("0123456789") <= 1 ? piece : line.substr(at, 1);
}

bool AreAlike(const std::string& a, const std::string& b) {
  if (a == b) return true;
  if ((a + b).find_first_of(".e") == std::string::npos) return false;
  const double x = std::strtod(a.c_str(), nullptr);
  const double y = std::strtod(b.c_str(), nullptr);
  return std::abs(x - y) <= 2e-6 * std::max(1.0, std::abs(x));
}

bool AreLinesAlike(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const std::string one = PieceAt(a, i);
    const std::string other = PieceAt(b, j);
    if (!AreAlike(one, other)) return false;
    i += one.size();
    j += other.size();
  }
  return i == a.size() && j == b.size();
}

}  // namespace

void ExpectKept(const std::string& text, const std::string& file) {
  std::istringstream was(ReadText(file));
  std::istringstream is(text);
  std::string differences;
  std::string old;
  std::string now;
  for (int line = 1; differences.size() < 2000; ++line) {
    const bool hadMore = static_cast<bool>(std::getline(was, old));
    const bool hasMore = static_cast<bool>(std::getline(is, now));
    if (!hadMore && !hasMore) break;
    if (hadMore != hasMore || !AreLinesAlike(old, now))
      differences += std::to_string(line) + "\n- " + (hadMore ? old : "") + "\n+ " +
                     (hasMore ? now : "") + "\n";
  }
  if (differences.empty()) return;
  const std::filesystem::path folder =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / "kept";
  std::filesystem::create_directories(folder);
  const std::string written = folder / std::filesystem::path(file).filename();
  WriteText(written, text);
  ADD_FAILURE() << file << " is not kept, see " << written << ":\n" << differences;
}

}  // namespace tests
