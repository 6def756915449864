// ProgramPlaces: where the parts of the running program lie. Every place is found from the running
// files themselves, so that a build folder, an installed tree and a tree that was moved as a whole
// all work. Nothing is made or opened here. Any thread.
#pragma once

#include <string>

namespace engine {

// Folder of the programs that belong to the engine's library, whatever program has loaded it; where
// they are not there that of the running one. Absolute, without a separator at its end; empty where
// the system does not tell.
std::string ProgramFolder();
// Folder of the plug-ins: the one that the environment names in STAGEMARKS_PLUGINS, as it stands
// where that is no full path (nothing is loaded from there), else "plugins" beside the engine's
// library.
std::string PluginFolder();
// Folder of what is shared by all machines, sample scenes among it: "share/stagemarks" beside the
// program's folder.
std::string SharedFolder();
// The program `stagemarks` beside the running one, which is also the child that an import runs in.
std::string ImportWorkerProgram();
// The scene that a newcomer is shown.
std::string SampleScene();

}  // namespace engine
