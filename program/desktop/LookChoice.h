// LookChoice: dark, light, or as the system has it: the entries of a menu, kept between runs. It
// belongs to its parent. Main thread.
#pragma once

#include <QMenu>

#include "program/desktop/Settings.h"

namespace desktop {

class LookChoice : public QObject {
 public:
  // Adds a submenu and shows what was chosen last. The settings outlive this.
  LookChoice(QMenu& menu, Settings& settings, QObject* parent);

  // The system's own choice, told as soon as it is known and whenever it changes; remembered for
  // the next start.
  void SystemPrefers(bool light);

 private:
  enum class Wanted { AsSystem, Dark, Light };
  void Add(QMenu& menu, const QString& text, Wanted wanted);
  void Show();

  Settings& settings_;
  Wanted wanted_ = Wanted::AsSystem;
  bool systemIsLight_ = false;
};

}  // namespace desktop
