// The one place where the plug-in meets its host: every other file includes this one, so that
// building against another kit with the same interface means changing this file alone.
#pragma once

#include "host/Host.h"

namespace stagemarks {

using namespace host;

}  // namespace stagemarks
