// Scene colors as the screen shows them. Any thread.
#pragma once

#include <QColor>
#include <algorithm>

#include "host/Math.h"

namespace desktop::colors {

// A color of the scene: each channel held between 0 and 1, and 0 where it is no number.
inline QColor Shown(const host::Vector& color) {
  const auto channel = [](double value) {
    return static_cast<float>(value >= 0 ? std::min(value, 1.0) : 0.0);
  };
  return QColor::fromRgbF(channel(color.x), channel(color.y), channel(color.z));
}

}  // namespace desktop::colors
