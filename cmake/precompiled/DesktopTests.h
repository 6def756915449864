// Precompiled headers of the desktop's tests.
#pragma once
#include <QtTest/QTest>

#include "cmake/precompiled/Tests.h"
#include "cmake/precompiled/Toolkit.h"
