// FrozenScene: the open scene with its textures, copied once into a folder that its content names,
// so that later edits change nothing and the same scene is never copied twice. Main thread.
#pragma once

#include <string>

#include "program/commandline/Session.h"

namespace commandline {

// The path of the scene file in the folder below `farm`; made unless it is there. `content`: a hash
// of all that can be seen in the scene and of its Stagemarks. Changes the open document, whose
// textures lie in that folder from then on. `*copied`: whether it was not there.
engine::Result<std::string> FreezeScene(Session& session, const std::string& farm,
                                        const std::string& title, const std::string& content,
                                        bool* copied);
// The path that FreezeScene answers, whether or not the file is there.
std::string FrozenPath(const std::string& farm, const std::string& title,
                       const std::string& content);

}  // namespace commandline
