// NamesLike: what a person may have meant by a name that is not there. Any thread.
#pragma once

#include <string>
#include <vector>

namespace commandline {

// Those of `known` that are close to `name`, the closest first, at most three.
std::vector<std::string> NamesLike(const std::string& name, const std::vector<std::string>& known);
// " Did you mean "A" or "B"?", empty where nothing is close.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& known);

}  // namespace commandline
