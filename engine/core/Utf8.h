// Stepping through UTF-8 by characters (RFC 3629). A byte that starts no well-formed sequence is a
// character by itself, so that every text has a length and keeps its bytes. Pure functions, any
// thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace engine {

// Bytes of the character that starts at `at`, 1 to 4. `at` is less than the size of the text.
std::size_t CharacterBytes(std::string_view text, std::size_t at);

// Number of characters.
std::size_t CountCharacters(std::string_view text);

// Byte offset at which character `index` (0-based) starts; the size of the text where there are
// fewer.
std::size_t ByteOffset(std::string_view text, std::size_t index);

// Cuts a text to at most that many bytes, so that no character of several bytes is cut apart.
void CutTo(std::string& text, std::size_t bytes);

}  // namespace engine
