// RowDragging: how rows of a tree are taken hold of, carried and let go. The trees' models know
// what may go where. Main thread.
#pragma once

#include <QMimeData>
#include <QTreeView>

namespace desktop {

// Lets rows of the tree be dragged, and things be dropped onto its rows and between them.
void LetRowsBeDragged(QTreeView& tree);
// Drags `count` rows, the first of which is called `name`, until they are let go. Takes over
// `data`.
void DragRows(QTreeView& tree, QMimeData* data, int count, const QString& name);

}  // namespace desktop
