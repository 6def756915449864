#include "engine/outside/FoldedName.h"

#include <utf8proc.h>

#include <cstdlib>
#include <memory>

namespace engine {

std::string FoldedName(const std::string& name) {
  utf8proc_uint8_t* folded =
      utf8proc_NFKC_Casefold(reinterpret_cast<const utf8proc_uint8_t*>(name.c_str()));
  if (!folded) return name;
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(folded, &std::free);
  return reinterpret_cast<const char*>(folded);
}

}  // namespace engine
