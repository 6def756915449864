// ObjectCells: how the cells of the object tree look: dots for the visibilities, a check for the
// generator, a square in the color of the layer, tags as icons. Main thread.
#pragma once

#include <QTreeView>

#include "program/desktop/panels/TagStrip.h"

namespace desktop {

// Gives `tree`, whose model is an ObjectRows, a delegate for each column but the name. The tree
// owns them. Texture tags look like `ball` says.
void InstallObjectCells(QTreeView& tree, MaterialBall ball);

}  // namespace desktop
