// What the tests read.
#pragma once
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cmake/precompiled/Standard.h"
