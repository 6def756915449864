// TagStrip: the tags of an object as icons in a row; what does not fit is counted at the end. Main
// thread.
#pragma once

#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <functional>
#include <vector>

#include "host/BaseObject.h"

namespace desktop {

// What a strip of that width in device-independent pixels shows: the first tags, and how many more
// there are.
struct TagsShown {
  std::vector<host::BaseTag*> tags;
  int more = 0;
};
TagsShown TagsFitting(const host::BaseObject& object, int width);

// What a material looks like; null where that is not known yet.
using MaterialBall = std::function<QPixmap(host::BaseMaterial&)>;
void PaintTags(QPainter& painter, const QRect& cell, const host::BaseObject& object,
               const QPalette& palette, const MaterialBall& ball);

// What a place in the strip hits: a tag, or the count of those not shown, or nothing.
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

}  // namespace desktop
