// Draws the manual's pages: the title page, then every page of the setting with its header and
// footer. It owns nothing.
#pragma once

#include <QPagedPaintDevice>
#include <QString>

#include "tools/manual/Setting.h"

namespace manual {

struct TitlePage {
  QString title;
  QString subtitle;
  QString imprint;
  QString picture;  // a file; empty for none
};

// Draws all pages on `device`, which stands on its first page. False when a page could not be
// begun.
bool DrawPages(QPagedPaintDevice& device, const TitlePage& title, const Setting& setting);

}  // namespace manual
