// FoldedName: names as file systems compare them that do not tell letters by their case. Pure
// function, any thread.
#pragma once

#include <string>

namespace engine {

// Names that such a system takes for one become equal (Unicode: NFKC_Casefold). A name that is no
// UTF-8 stays as it is.
std::string FoldedName(const std::string& name);

}  // namespace engine
