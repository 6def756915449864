// IDs that the test plug-ins register, and that the tests ask for. None of them is a number of the
// real plug-in.
#pragma once

#include "host/Types.h"

namespace test_plugins {

inline constexpr host::LONG kGoodCommand = 1900001;
inline constexpr host::LONG kGoodHook = 1900002;
inline constexpr host::LONG kRefusedCommand = 1900003;
inline constexpr host::LONG kRefusedHook = 1900004;
inline constexpr host::LONG kSecondCommand = 1900005;
inline constexpr host::LONG kNothing = 1900006;
inline constexpr host::LONG kGoodButton = 1001;

}  // namespace test_plugins
