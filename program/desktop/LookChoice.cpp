#include "program/desktop/LookChoice.h"

#include <QActionGroup>

#include "program/desktop/Theme.h"

namespace desktop {

namespace {

constexpr const char* kWanted = "window/look";
constexpr const char* kOfSystem = "window/system-look";
constexpr const char* kNames[] = {"system", "dark", "light"};
constexpr int kLight = 2;

}  // namespace

LookChoice::LookChoice(QMenu& menu, Settings& settings, QObject* parent)
    : QObject(parent), settings_(settings) {
  const QString kept = settings.Texts(kWanted).value(0);
  for (const Wanted wanted : {Wanted::Dark, Wanted::Light}) {
    if (kept == kNames[static_cast<int>(wanted)]) wanted_ = wanted;
  }
  systemIsLight_ = settings.Texts(kOfSystem).value(0) == kNames[kLight];
  QMenu* looks = menu.addMenu("A&ppearance");
  auto* group = new QActionGroup(looks);
  Add(*looks, "As the &System", Wanted::AsSystem);
  Add(*looks, "&Dark", Wanted::Dark);
  Add(*looks, "&Light", Wanted::Light);
  for (QAction* action : looks->actions()) group->addAction(action);
  Show();
}

void LookChoice::Add(QMenu& menu, const QString& text, Wanted wanted) {
  QAction* action = menu.addAction(text, this, [this, wanted] {
    wanted_ = wanted;
    // Applies to this run even where it cannot be kept, which the ledger has.
    (void)settings_.Set(kWanted, QStringList{kNames[static_cast<int>(wanted)]});
    Show();
  });
  action->setCheckable(true);
  action->setChecked(wanted == wanted_);
}

void LookChoice::SystemPrefers(bool light) {
  if (light == systemIsLight_) return;
  systemIsLight_ = light;
  (void)settings_.Set(kOfSystem, QStringList{light ? kNames[kLight] : ""});
  Show();
}

void LookChoice::Show() {
  const bool light = wanted_ == Wanted::Light || (wanted_ == Wanted::AsSystem && systemIsLight_);
  ShowLook(light ? LightLook() : DarkLook());
}

}  // namespace desktop
