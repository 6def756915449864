// PercentCode: addresses of files as other programs write them. Pure functions, any thread.
#pragma once

#include <string>

namespace engine {

// Percent-encoding of addresses (RFC 3986, section 2.1) undone; what is none stays.
std::string PercentDecoded(const std::string& text);
// Backslashes become slashes.
std::string WithSlashes(std::string text);

}  // namespace engine
