// What an empty list shows instead of rows: a line that says what to do. Main thread.
#pragma once

#include <QAbstractScrollArea>

namespace desktop {

// Called while the viewport of `view` is painted.
void PaintEmptyText(QAbstractScrollArea& view, const QString& text);

}  // namespace desktop
