// SceneSelection: makes things of the scene the selection, as a person would before choosing an
// entry of the menu "Edit". What is asked for by name is refused where it is missing; without names
// the scene's own selection stays, and must not be empty. Each answers an exit status and says on
// the terminal what is wrong; `selected` gets what a person reads. Main thread.
#pragma once

#include <string>
#include <vector>

#include "program/commandline/Session.h"

namespace commandline {

int SelectObjects(Session& session, const std::vector<std::string>& typed, std::string& selected);
// Tags of these types (names or numbers; none: of every type) on these objects.
int SelectTags(Session& session, const std::vector<std::string>& typed,
               const std::vector<std::string>& types, std::string& selected);
int SelectLayers(Session& session, const std::vector<std::string>& typed, std::string& selected);
int SelectCamera(Session& session, const std::string& typed, std::string& selected);

// Every object that the patterns match, in the order typed.
int FindAllObjects(Session& session, const std::vector<std::string>& typed,
                   std::vector<host::BaseObject*>& found);

}  // namespace commandline
