#include "program/desktop/panels/EmptyText.h"

#include <QPainter>

namespace desktop {

namespace {

constexpr int kTextMargin = 12;
constexpr int kFlags = Qt::AlignCenter | Qt::TextWordWrap;

int HeightIn(const QFontMetrics& font, int width, const QString& text) {
  return font.boundingRect(QRect(0, 0, width, 1 << 16), kFlags, text).height();
}

// The narrowest that needs no more lines: no word is left alone on the last one. By bisection
// between too narrow and wide enough; about ten measurements.
int BalancedWidth(const QFontMetrics& font, int width, const QString& text) {
  const int height = HeightIn(font, width, text);
  int tooNarrow = 0;
  while (width - tooNarrow > 1) {
    const int middle = tooNarrow + (width - tooNarrow) / 2;
    HeightIn(font, middle, text) > height ? tooNarrow = middle : width = middle;
  }
  return width;
}

}  // namespace

void PaintEmptyText(QAbstractScrollArea& view, const QString& text) {
  QWidget* inside = view.viewport();
  QRect place = inside->rect().adjusted(kTextMargin, kTextMargin, -kTextMargin, -kTextMargin);
  if (place.isEmpty()) return;
  const QPoint middle = place.center();
  place.setWidth(BalancedWidth(view.fontMetrics(), place.width(), text));
  place.moveCenter(middle);
  QPainter painter(inside);
  painter.setPen(view.palette().color(QPalette::PlaceholderText));
  painter.drawText(place, kFlags, text);
}

}  // namespace desktop
