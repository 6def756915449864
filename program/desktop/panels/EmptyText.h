// The line in the middle of an empty list that says what to do. Main thread.
#pragma once

#include <QAbstractScrollArea>

namespace desktop {

// Called from the paint event of the viewport of `view`, after the rows. Broken into lines that are
// about equally long.
void PaintEmptyText(QAbstractScrollArea& view, const QString& text);

}  // namespace desktop
