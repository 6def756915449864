// Position, angles and scale of frames: what is typed comes back, and what is not typed stays.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/ObjectFrame.h"

namespace {

using host::Matrix;
using host::Vector;

constexpr double kDegree = 3.14159265358979323846 / 180;

void ExpectNear(const Vector& a, const Vector& b, double distance = 1e-9) {
  EXPECT_NEAR(a.x, b.x, distance);
  EXPECT_NEAR(a.y, b.y, distance);
  EXPECT_NEAR(a.z, b.z, distance);
}

TEST(ObjectFrame, GivesBackAnglesAndScales) {
  for (const double x : {-89.0, -30.0, 0.0, 45.0, 89.0}) {
    for (const double y : {-179.0, -90.0, 0.0, 10.0, 120.0}) {
      for (const double z : {-150.0, 0.0, 33.0, 90.0}) {
        for (const Vector scale : {Vector(1), Vector(2, 3, 0.5), Vector(-1, 1, 4)}) {
          const Vector angles(x * kDegree, y * kDegree, z * kDegree);
          Matrix frame;
          frame.off = {1, 2, 3};
          const Matrix placed = engine::WithScale(engine::WithAngles(frame, angles), scale);
          ExpectNear(engine::AnglesOf(placed), angles);
          ExpectNear(engine::ScaleOf(placed), scale);
          EXPECT_EQ(placed.off, frame.off);
        }
      }
    }
  }
}

TEST(ObjectFrame, LooksAtAPlaceAndStandsUpright) {
  struct Case {
    Vector target;
    Vector right;
    Vector up;
    Vector way;
  };
  const Vector at(1, 2, 3);
  for (const Case& c : {Case{{4, 2, 7}, {0.8, 0, -0.6}, {0, 1, 0}, {0.6, 0, 0.8}},
                        Case{{1, 7, 3}, {-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
                        Case{at, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}) {
    const Matrix frame = engine::LookAt(at, c.target);
    EXPECT_EQ(frame.off, at);
    ExpectNear(frame.v1, c.right);
    ExpectNear(frame.v2, c.up);
    ExpectNear(frame.v3, c.way);
  }
}

TEST(ObjectFrame, UprightFramesStayTheSame) {
  for (const double x : {-90.0, 90.0}) {
    const Matrix frame = engine::WithAngles({}, {x * kDegree, 20 * kDegree, 50 * kDegree});
    const Matrix again = engine::WithAngles({}, engine::AnglesOf(frame));
    ExpectNear(again.v1, frame.v1);
    ExpectNear(again.v2, frame.v2);
    ExpectNear(again.v3, frame.v3);
  }
}

TEST(ObjectFrame, ShearSurvivesATurnThereAndBack) {
  Matrix frame;
  frame.v1 = {1, 0.4, 0};
  frame.v2 = {0.3, 2, 0.1};
  const Vector before = engine::AnglesOf(frame);
  const Matrix back = engine::WithAngles(engine::WithAngles(frame, {0.3, 0.4, 0.5}), before);
  ExpectNear(back.v1, frame.v1);
  ExpectNear(back.v2, frame.v2);
  ExpectNear(engine::WithScale(frame, engine::ScaleOf(frame)).v2, frame.v2, 0);
}

TEST(ObjectFrame, FlatAndBrokenFramesCanBePutRight) {
  const double nothing = std::numeric_limits<double>::quiet_NaN();
  const Vector angles(0.2, 0.3, 0.4);
  const Matrix flat = engine::WithScale(engine::WithAngles({}, angles), Vector(0));
  ExpectNear(engine::AnglesOf(flat), angles);
  ExpectNear(engine::ScaleOf(engine::WithScale(flat, Vector(1))), Vector(1));
  for (const Vector axis : {Vector(0), Vector(nothing), Vector(1e200)}) {
    Matrix broken;
    broken.v1 = broken.v2 = broken.v3 = axis;
    const Vector now = engine::AnglesOf(broken);
    EXPECT_TRUE(std::isfinite(now.x) && std::isfinite(now.y) && std::isfinite(now.z));
    const Matrix mended = engine::WithScale(broken, Vector(1));
    if (axis.x != 1e200) ExpectNear(engine::ScaleOf(mended), Vector(1));
  }
}

}  // namespace
