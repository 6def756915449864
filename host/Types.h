// The host's basic value types, under the host's own names. They live in the namespace `host`
// because names such as Bool and String clash with other libraries. Nothing here owns memory; any
// thread.
#pragma once

#include <cstdint>

namespace host {

using CHAR = char;
using UCHAR = unsigned char;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LLONG = std::int64_t;
using ULLONG = std::uint64_t;
using Real = double;
using Bool = bool;

inline constexpr Bool TRUE = true;
inline constexpr Bool FALSE = false;

// "No such entry": what searches by position or key answer.
inline constexpr LONG NOTOK = -1;

}  // namespace host
