// The plug-in stays in memory until the fuzz target ends, as soon as a target includes this: what
// counts where a fuzzer has been lies in it, and the fuzzer clears that between its tries, when the
// session that loaded the plug-in is over.
#pragma once

#include <dlfcn.h>

namespace fuzz {

inline const void* const kKeptPlugin =
    dlopen(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);

}  // namespace fuzz
