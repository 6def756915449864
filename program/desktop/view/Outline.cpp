// An outline from the map of what is hit in each pixel: pixels that are marked and have an unmarked
// neighbor are its edge, and each draws a soft dot outwards. O(pixels + edge x dot).
#include "program/desktop/view/Outline.h"

#include <cmath>

namespace desktop {

namespace {

constexpr QRgb kAmber = 0xffc98a3d;
// Distance of the line's outer edge, in pixels of a plain screen.
constexpr double kReach = 1.9;

struct Step {
  int x;
  int y;
  int alpha;
};

// The neighbors that a marked pixel lights up, with how strongly: the line fades over its last
// pixel.
std::vector<Step> BrushOf(double reach) {
  std::vector<Step> brush;
  const int far = static_cast<int>(std::ceil(reach));
  for (int y = -far; y <= far; ++y) {
    for (int x = -far; x <= far; ++x) {
      const double light = std::min(1.0, reach + 0.5 - std::hypot(x, y));
      if (light > 0 && (x != 0 || y != 0)) brush.push_back({x, y, static_cast<int>(light * 255)});
    }
  }
  return brush;
}

QRgb Faded(int alpha) {
  return qPremultiply(qRgba(qRed(kAmber), qGreen(kAmber), qBlue(kAmber), alpha));
}

// By pixel: whether it is marked. Empty when none is. Instances count from 1 in the map, 0 is
// nothing.
std::vector<std::uint8_t> MarkedPixels(const engine::HitMap& hits,
                                       const std::vector<std::uint8_t>& marks) {
  std::vector<std::uint8_t> marked(hits.instances.size());
  bool any = false;
  for (std::size_t i = 0; i < marked.size(); ++i) {
    const std::uint32_t instance = hits.instances[i];
    marked[i] = instance > 0 && instance <= marks.size() ? marks[instance - 1] : 0;
    any = any || marked[i];
  }
  if (!any) marked.clear();
  return marked;
}

using Pixels = std::vector<std::uint8_t>;

// Each pixel as `wanted` when it or one of the two beside it is, of the `count` in its line that
// are `step` apart. Dilation by one pixel along one axis; with `wanted` 0, erosion.
Pixels Spread(const Pixels& pixels, std::size_t step, std::size_t count, std::uint8_t wanted) {
  Pixels spread = pixels;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    if (pixels[i] != wanted) continue;
    const std::size_t place = i / step % count;
    if (place > 0) spread[i - step] = wanted;
    if (place + 1 < count) spread[i + step] = wanted;
  }
  return spread;
}

// Where surfaces coincide, now the one and now the other is hit: holes of a pixel or two in what is
// marked are closed, unless nothing at all is seen there. A closing: dilated, then eroded, along
// both axes.
Pixels WithoutSpeckles(const Pixels& marked, const engine::HitMap& hits) {
  const std::size_t width = hits.width;
  const std::size_t height = hits.height;
  Pixels closed = Spread(Spread(marked, 1, width, 1), width, height, 1);
  closed = Spread(Spread(closed, 1, width, 0), width, height, 0);
  for (std::size_t i = 0; i < closed.size(); ++i)
    closed[i] = marked[i] || (closed[i] && hits.instances[i] > 0);
  return closed;
}

}  // namespace

// Where dots overlap the stronger one counts, so that the line has one strength.
QImage OutlineImage(const engine::HitMap& hits, const std::vector<std::uint8_t>& marks,
                    double scale) {
  const Pixels seen = MarkedPixels(hits, marks);
  if (seen.empty()) return {};
  const Pixels marked = WithoutSpeckles(seen, hits);
  const int width = static_cast<int>(hits.width);
  const int height = static_cast<int>(hits.height);
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  const std::vector<Step> brush = BrushOf(kReach * scale);
  auto* pixels = reinterpret_cast<QRgb*>(image.bits());
  const auto isMarked = [&](int x, int y) {
    return marked[static_cast<std::size_t>(y) * hits.width + static_cast<std::size_t>(x)];
  };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (!isMarked(x, y)) continue;
      const bool inside = x > 0 && y > 0 && x + 1 < width && y + 1 < height && isMarked(x - 1, y) &&
                          isMarked(x + 1, y) && isMarked(x, y - 1) && isMarked(x, y + 1);
      if (inside) continue;
      for (const Step& step : brush) {
        const int u = x + step.x;
        const int v = y + step.y;
        if (u < 0 || v < 0 || u >= width || v >= height || isMarked(u, v)) continue;
        QRgb& pixel = pixels[static_cast<std::ptrdiff_t>(v) * width + u];
        if (qAlpha(pixel) < step.alpha) pixel = Faded(step.alpha);
      }
    }
  }
  return image;
}

}  // namespace desktop
