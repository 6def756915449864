// Extras: what a file of another format says beside what the format itself means, as the text of a
// JSON value in the element's data. It is read from there when the scene is written in that format
// again. Any thread that may read the element.
#pragma once

#include <string>

#include "host/BaseList2D.h"

namespace engine {

// Entries in an element's data: a String, the text of the JSON value. An object has those of its
// node and those of its mesh, a document those of its scene.
inline constexpr host::LONG kExtras = 1059403;
inline constexpr host::LONG kMeshExtras = 1059404;

// Empty where there are none.
inline std::string ExtrasOf(const host::BaseList2D& element, host::LONG which = kExtras) {
  return element.GetDataInstance()->GetString(which).ToUtf8();
}
inline void SetExtras(host::BaseList2D& element, const std::string& text,
                      host::LONG which = kExtras) {
  if (!text.empty())
    element.GetDataInstance()->SetString(which, host::String(std::string_view(text)));
}

}  // namespace engine
