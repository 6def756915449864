#include "tests/support/ScratchFolder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace tests {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
  std::string pattern = fs::temp_directory_path().string() + "/stagemarks-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
  path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(missing)";
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string Names(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

}  // namespace tests
