// Precompiled headers of the tests.
#pragma once
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cmake/precompiled/Standard.h"
