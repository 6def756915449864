// Extras: what a file of another format says beyond what a scene has a place for, kept in the data
// of its elements for when the scene is written in that format again. Any thread that may read the
// element.
#pragma once

#include <string>

#include "host/BaseList2D.h"

namespace engine {

// Data of a file beyond what its format defines: a String, the text of the JSON value. An object
// has that of its node and that of its mesh, a document that of its scene.
inline constexpr host::LONG kExtras = 1059403;
inline constexpr host::LONG kMeshExtras = 1059404;
// Of a light, a REAL: what a brightness of 1 is in the unit of the file, candela or, of a sun, lux.
inline constexpr host::LONG kLightUnit = 1059405;

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
