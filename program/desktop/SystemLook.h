// SystemLook: whether the system asks for light windows, as its settings service tells programs of
// all toolkits. Nothing is told where there is no such service. Asked when the program begins and
// whenever a person comes back to it; never waited for. Main thread.
#pragma once

#include <QObject>
#include <functional>
#include <optional>

namespace desktop {

class SystemLook : public QObject {
 public:
  explicit SystemLook(std::function<void(bool light)> told);

  // Of the service's number: 1 dark, 2 light; others are no preference.
  static std::optional<bool> IsLight(uint scheme);

 private:
  void Ask();

  std::function<void(bool)> told_;
};

}  // namespace desktop
