#include "program/desktop/Theme.h"

namespace desktop {

namespace {

// Grays without a tint, since pictures are judged in front of them; one accent. The light one has
// its accent darker: it must stand out from white as text.
constexpr Theme kDark = {.isLight = false,
                         .window = 0xff2b2b2b,
                         .bar = 0xff242424,
                         .menu = 0xff303030,
                         .field = 0xff202020,
                         .otherLine = 0xff242424,
                         .gap = 0xff1c1c1c,
                         .button = 0xff3a3a3a,
                         .litButton = 0xff454545,
                         .pressedButton = 0xff2f2f2f,
                         .edge = 0xff4a4a4a,
                         .idleBox = 0xff6a6a6a,
                         .text = 0xffdcdcdc,
                         .quiet = 0xffb4b4b4,
                         .faint = 0xff858585,
                         .faintMark = 0xff5a5a5a,
                         .accent = 0xffc98a3d,
                         .calmAccent = 0xff8a6433,
                         .selected = 0xff5d4a30,
                         .selectedText = 0xffffffff,
                         .iconLine = 0xffc8c8c8};

constexpr Theme kLight = {.isLight = true,
                          .window = 0xffebebeb,
                          .bar = 0xffdcdcdc,
                          .menu = 0xfff6f6f6,
                          .field = 0xfffcfcfc,
                          .otherLine = 0xfff3f3f3,
                          .gap = 0xffc9c9c9,
                          .button = 0xfff8f8f8,
                          .litButton = 0xffffffff,
                          .pressedButton = 0xffdadada,
                          .edge = 0xffb6b6b6,
                          .idleBox = 0xff8c8c8c,
                          .text = 0xff1f1f1f,
                          .quiet = 0xff505050,
                          .faint = 0xff767676,
                          .faintMark = 0xffb0b0b0,
                          .accent = 0xff8f5a12,
                          .calmAccent = 0xffb98446,
                          .selected = 0xfff0d6ae,
                          .selectedText = 0xff1f1f1f,
                          .iconLine = 0xff484848};

const Theme* present = &kDark;

}  // namespace

const Theme& DarkTheme() { return kDark; }
const Theme& LightTheme() { return kLight; }
const Theme& PresentTheme() { return *present; }
void UseTheme(const Theme& theme) { present = &theme; }

}  // namespace desktop
