#include "program/desktop/panels/EmptyText.h"

#include <QPainter>

namespace desktop {

void PaintEmptyText(QAbstractScrollArea& view, const QString& text) {
  constexpr int kMargin = 12;
  QWidget* inside = view.viewport();
  QPainter painter(inside);
  painter.setPen(view.palette().color(QPalette::PlaceholderText));
  painter.drawText(inside->rect().adjusted(kMargin, kMargin, -kMargin, -kMargin), Qt::AlignCenter | Qt::TextWordWrap, text);
}

}  // namespace desktop
