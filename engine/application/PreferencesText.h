// The text of the preferences file. A line "stagemarks preferences 1", then entries, then
// "checksum" with the 64-bit FNV-1a sum, in 16 hexadecimal digits, of all bytes before that line.
// An entry is a line: kind, key, value.
//
//   container 1026486 7     a container with its own ID; its entries follow, then "end"
//   long 10061 1
//   real 10 0.713           shortest digits that read back the same; "inf", "-inf", "nan"
//   vector 11 0 1 2
//   time 12 25 30           numerator, denominator
//   string 13 Any text      bytes below 32, '%' and 127 as %XX
//   filename 14 /a/b.c4d    the same
//   link 15 16777216        identity of the target, 0 for none
//   nil 16
//
// At the top level there are containers only, keyed by plug-in ID.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "host/BaseContainer.h"

namespace engine {

struct ReadPreferencesAnswer {
  bool laterVersion = false;  // then nothing else is known
  std::map<host::LONG, host::BaseContainer> containers;
};

// Fails for containers more than 1000 levels deep.
Result<std::string> WritePreferences(const std::map<host::LONG, host::BaseContainer>& containers);
// Fails, saying why, for anything that WritePreferences did not make.
Result<ReadPreferencesAnswer> ReadPreferences(std::string_view text);

}  // namespace engine
