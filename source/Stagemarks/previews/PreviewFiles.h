// Where an element's preview lies below a side folder. Names only: the disk is not touched. Any
// thread.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// "<folder>/<name>.tif", the name's own dots and characters kept as they are: two names never share
// a file. A name that would fall together with another's ("/a" or "./a" with "a") has no preview:
// the result is empty, which every file function refuses.
Filename PreviewFile(const Filename& folder, const String& name);

}  // namespace stagemarks
