// The colours of the program's own widgets, greys without a cast and one warm accent, and scene colors as the screen shows
// them. Any thread.
#pragma once

#include <QColor>
#include <algorithm>

#include "host/Math.h"

namespace desktop::colors {

inline constexpr QRgb kWindow = 0xff2b2b2b;
inline constexpr QRgb kBar = 0xff242424;
inline constexpr QRgb kField = 0xff202020;
inline constexpr QRgb kOtherLine = 0xff242424;
inline constexpr QRgb kButton = 0xff3a3a3a;
inline constexpr QRgb kLitButton = 0xff454545;
inline constexpr QRgb kPressedButton = 0xff2f2f2f;
inline constexpr QRgb kEdge = 0xff4a4a4a;
inline constexpr QRgb kIdleBox = 0xff6a6a6a;
inline constexpr QRgb kText = 0xffdcdcdc;
inline constexpr QRgb kFaint = 0xff858585;
inline constexpr QRgb kAccent = 0xffc98a3d;
inline constexpr QRgb kSelected = 0xff5d4a30;

// A color of the scene: each channel held between 0 and 1, and 0 where it is no number.
inline QColor Shown(const host::Vector& color) {
  const auto channel = [](double value) { return static_cast<float>(value >= 0 ? std::min(value, 1.0) : 0.0); };
  return QColor::fromRgbF(channel(color.x), channel(color.y), channel(color.z));
}

}  // namespace desktop::colors
