// StateChoice: the row of a window that says which Stagemarks are meant: all, those selected in the
// list, or those whose names match a pattern. Main thread.
#pragma once

#include <QLineEdit>
#include <QRadioButton>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/BaseDocument.h"

namespace desktop {

// Message where Names returns nothing.
inline constexpr const char* kNoSuchState =
    "No Stagemark has such a name. * stands for any text, ? for one letter.";

class StateChoice : public QWidget {
 public:
  // `chosen`: names of the selected rows; several of them are what is proposed. `changed` is called
  // when something else is meant.
  StateChoice(const host::BaseDocument& doc, std::vector<std::string> chosen,
              std::function<void()> changed = {});

  // In the order of the list; without a name where nothing is recorded, which stands for the scene
  // as it is. Nothing where what was typed means no name; it means the same as in the shell.
  std::optional<std::vector<std::string>> Names() const;

 private:
  std::vector<std::string> all_;
  std::vector<std::string> chosen_;
  QRadioButton* onlyChosen_ = nullptr;
  QRadioButton* byPattern_ = nullptr;
  QLineEdit* pattern_ = nullptr;
};

}  // namespace desktop
