// The cells of the object tree: a dot for each visibility, a check mark for the generator, a square
// in the color of the layer, and the tags as a strip of icons. Main thread.
#pragma once

#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QTreeView>
#include <functional>
#include <vector>

#include "host/BaseObject.h"

namespace desktop {

// The part of an object's tags that a strip of that width, in device-independent pixels, has room
// for: the first ones, and how many more
// there are.
struct TagsShown {
  std::vector<host::BaseTag*> tags;
  int more = 0;
};
TagsShown TagsFitting(const host::BaseObject& object, int width);

// The thumbnail of a material; null where it has not been made yet.
using MaterialBall = std::function<QPixmap(host::BaseMaterial&)>;
void PaintTags(QPainter& painter, const QRect& cell, const host::BaseObject& object,
               const QPalette& palette, const MaterialBall& ball);

// The tag at a place of the strip; `more`: the count of those not shown stands there. Neither
// beside both.
struct TagHit {
  host::BaseTag* tag = nullptr;
  bool more = false;
};
TagHit TagAt(const QRect& cell, const QPoint& place, const host::BaseObject& object);
// The tags from number `first` (0-based) on, at most `most` of them.
std::vector<host::BaseTag*> TagsFrom(const host::BaseObject& object, std::size_t first,
                                     std::size_t most);

// Name of the icon for a type of tag, and what a tool tip says of a tag.
QString TagIcon(host::LONG type);
QString TagText(const host::BaseTag& tag);

// Gives `tree`, whose model is an ObjectModel, a delegate for each column but the name. The tree
// owns them. Texture tags look like `ball` says.
void InstallObjectCells(QTreeView& tree, MaterialBall ball);

}  // namespace desktop
