// Appearance: dark, light, or as the system has it: the entries of a menu, kept between runs, and
// the question to the system. Main thread.
#pragma once

#include <QActionGroup>
#include <QMenu>
#include <QObject>
#include <functional>
#include <optional>

#include "program/desktop/Settings.h"

namespace desktop {

// Tells whether the system asks for light windows, as its settings service tells programs of all
// toolkits. Nothing is told where there is no such service. Asked when the program begins and
// whenever a person comes back to it; never waited for.
class SystemAppearance : public QObject {
 public:
  explicit SystemAppearance(std::function<void(bool light)> told);

  // Reads the service's number: 1 dark, 2 light; others are no preference.
  static std::optional<bool> IsLight(uint scheme);

 private:
  // Sends the question; the answer is told when it comes.
  void Ask();

  std::function<void(bool)> told_;
};

// The submenu "Appearance". It belongs to its parent.
class AppearanceMenu : public QObject {
 public:
  // Adds a submenu and shows what was chosen last. The settings outlive this.
  AppearanceMenu(QMenu& menu, Settings& settings, QObject* parent);

  // The system's own choice, told as soon as it is known and whenever it changes; remembered for
  // the next start.
  void SystemPrefers(bool light);

 private:
  enum class Wanted { AsSystem, Dark, Light };
  // An entry that chooses `wanted`.
  void Add(QMenu& menu, const QString& text, Wanted wanted);
  // Brings the theme that follows from choice and system onto the screen.
  void Show();

  Settings& settings_;
  QActionGroup group_;  // one of the entries is chosen
  Wanted wanted_ = Wanted::AsSystem;
  bool systemIsLight_ = false;
};

}  // namespace desktop
