// ForeignText: texts of other programs' files, in the form that we and the importing library read.
// Pure functions, any thread.
#pragma once

#include <assimp/types.h>

#include <string>
#include <string_view>

#include "host/String.h"

namespace engine {

bool IsUtf8(std::string_view text);
// Texts that are no UTF-8 are taken for Latin-1.
std::string Utf8Of(std::string_view text);
inline host::String TextOf(const aiString& text) {
  return host::String(std::string_view(Utf8Of({text.data, text.length})));
}
// True for what begins with the mark of UTF-16.
bool IsMarkedUtf16(std::string_view bytes);
// The text behind that mark; halves of pairs that stand alone become replacement characters.
std::string FromUtf16(std::string_view bytes);
// XML whose texts begin with something else than blanks: the library reads no number behind them.
std::string WithoutLeadingBlanks(std::string_view xml);

// COLLADA whose cameras all have names, those without one the name of their id: the library reads
// no lens of the others.
std::string WithNamedCameras(std::string_view xml);

}  // namespace engine
