#include "tools/manual/Pages.h"

#include <QAbstractTextDocumentLayout>
#include <QImage>
#include <QPainter>
#include <QStringList>
#include <algorithm>

#include "tools/manual/Look.h"

namespace manual {

namespace {

void DrawText(QPainter& painter, const QRectF& box, const QFont& font, const QColor& color,
              const QString& text, int flags) {
  painter.setFont(font);
  painter.setPen(color);
  painter.drawText(box, flags, text);
}

void DrawTitlePage(QPainter& painter, const QSizeF& page, const TitlePage& title) {
  const double left = kPageMargins.left();
  const double width = page.width() - left - kPageMargins.right();
  painter.fillRect(QRectF(left, Points(150), Points(46), Points(4)), kAccent);
  DrawText(painter, QRectF(left, Points(168), width, Points(60)), Sans(38, true), kAccent,
           title.title, Qt::AlignLeft);
  DrawText(painter, QRectF(left, Points(226), width, Points(60)), Serif(13), kInk, title.subtitle,
           Qt::AlignLeft | Qt::TextWordWrap);
  if (!title.picture.isEmpty()) {
    const QImage picture(title.picture);
    const double height = width * picture.height() / picture.width();
    painter.drawImage(QRectF(left, Points(330), width, height), picture);
  }
  DrawText(painter, QRectF(left, page.height() - Points(110), width, Points(40)), Sans(8.6), kQuiet,
           title.imprint, Qt::AlignLeft | Qt::TextWordWrap);
}

// The chapter that a page belongs to: the one that begins on it, else the last one before it.
QString ChapterOf(int page, const std::vector<SetHeading>& headings) {
  QString chapter;
  for (const SetHeading& heading : headings) {
    if (heading.level == 1 && heading.page <= page) chapter = heading.text;
  }
  return chapter;
}

void DrawMargins(QPainter& painter, const QSizeF& page, const QString& title,
                 const QString& chapter, int number) {
  const double left = kPageMargins.left();
  const double width = page.width() - left - kPageMargins.right();
  const QRectF header(left, kHeaderHeight - Points(14), width, Points(11));
  if (!chapter.isEmpty()) {
    DrawText(painter, header, Sans(7.4), kQuiet, title, Qt::AlignLeft | Qt::AlignBottom);
    DrawText(painter, header, Sans(7.4), kQuiet, chapter, Qt::AlignRight | Qt::AlignBottom);
    painter.fillRect(QRectF(left, kHeaderHeight, width, Points(0.5)), kRule);
  }
  const QRectF footer(left, page.height() - kFooterHeight, width, Points(12));
  DrawText(painter, footer, Sans(8), kQuiet, QString::number(number),
           Qt::AlignRight | Qt::AlignTop);
}

}  // namespace

bool DrawPages(QPagedPaintDevice& device, const TitlePage& title, const Setting& setting) {
  QPainter painter(&device);
  // Screenshots: the edges of letters would blur.
  painter.setRenderHint(QPainter::LosslessImageRendering);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  const QSizeF page = setting.Document().pageSize();
  DrawTitlePage(painter, page, title);
  for (int number = 0; number < setting.Document().pageCount(); ++number) {
    if (!device.newPage()) return false;
    const double top = number * page.height();
    painter.save();
    painter.translate(0, -top);
    QAbstractTextDocumentLayout::PaintContext context;
    // Without it every page would draw the whole document, and hide most of it.
    context.clip = QRectF(0, top, page.width(), page.height());
    setting.Document().documentLayout()->draw(&painter, context);
    painter.restore();
    DrawMargins(painter, page, title.title, ChapterOf(number, setting.Headings()), number + 2);
  }
  return painter.end();
}

}  // namespace manual
