#include "tests/support/SceneBytes.h"

#include <numeric>
#include <stdexcept>

#include "engine/scenefile/SceneFile.h"

namespace tests {

std::string Joined(const std::vector<std::string>& pieces) {
  return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

std::string Bytes(const host::BaseDocument& doc) {
  const auto pieces = engine::WriteScene(doc);
  if (!pieces) throw std::runtime_error(pieces.Message());
  return Joined(pieces.Value());
}

}  // namespace tests
