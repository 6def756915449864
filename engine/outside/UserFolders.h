// The user's folders by the XDG base directory rules: where each kind of data of this program
// belongs. Not made here.
#pragma once

#include <string>

namespace engine {

enum class UserFolder { Config, Data, Cache, State };

// "<base>/stagemarks"; the base from the environment where that is an absolute path, else the
// standard default below the home folder. Empty when there is no home folder either.
std::string FindUserFolder(UserFolder folder);

}  // namespace engine
