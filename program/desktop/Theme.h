// The look of the desktop: a calm dark grey without a colour cast, so that pictures are judged by themselves, and one warm
// accent. Main thread.
#pragma once

class QApplication;

namespace desktop {

// Style, palette and style sheet for the whole program.
void ApplyTheme(QApplication& application);

}  // namespace desktop
