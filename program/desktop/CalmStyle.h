// CalmStyle: how the controls are drawn: flat, with thin edges, and an edge of the accent's color
// around what has the keyboard. Everything else is the toolkit's Fusion. Main thread.
#pragma once

#include <QProxyStyle>

namespace desktop {

class CalmStyle : public QProxyStyle {
 public:
  CalmStyle() : QProxyStyle("Fusion") {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  QRect subElementRect(SubElement element, const QStyleOption* option,
                       const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* more) const override;
  // Those of our family in place of the toolkit's.
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                     const QWidget* widget) const override;
};

}  // namespace desktop
