// Scene files as one text of bytes, for tests that look at them or change them. Any thread, for a
// document that nobody else changes.
#pragma once

#include <string>
#include <vector>

#include "host/BaseDocument.h"

namespace tests {

// All pieces of a file, one after the other.
std::string Joined(const std::vector<std::string>& pieces);
// The whole file; throws std::runtime_error with the reason where it cannot be written.
std::string Bytes(const host::BaseDocument& doc);

}  // namespace tests
