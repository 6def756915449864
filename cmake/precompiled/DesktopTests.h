// What the tests of the desktop read.
#pragma once
#include <QtTest/QTest>

#include "cmake/precompiled/Tests.h"
#include "cmake/precompiled/Toolkit.h"
