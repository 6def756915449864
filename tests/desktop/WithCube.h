// WithCube: a desk with a scene that holds one cube, its picture finished.
#pragma once

#include <QtTest/QTest>

#include "host/BaseObject.h"
#include "tests/desktop/Desk.h"

namespace desk {

struct WithCube : Desk {
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);

  WithCube() {
    host::GetActiveDocument()->AppendObject(cube);
    Window().Refresh();
    WaitForPicture();
  }
  desktop::Viewport& View() { return Window().View(); }
  bool WaitForPicture() {
    return QTest::qWaitFor(
        [this] {
          Window().Refresh();
          return View().IsFinished();
        },
        20000);
  }
  QRgb Middle() { return View().Picture().pixel(View().Picture().rect().center()); }
};

}  // namespace desk
