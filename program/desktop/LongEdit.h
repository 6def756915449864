// LongEdit: one undo step of a person that may touch very many elements. It tells how far it is,
// and when it is stopped everything is as it was. Main thread.
#pragma once

#include <string>

#include "engine/undo/Undo.h"

namespace desktop {

class LongEdit {
 public:
  // `name`: of the step, which is told of, too. `steps`: how many Step is called about.
  LongEdit(host::BaseDocument& doc, const std::string& name, std::size_t steps);

  // To be asked before each element. False when it is stopped: what was done is taken back then,
  // and nothing more may be done.
  bool Step();
  // How far a part of it is that knows that by itself, as if from 0 to 1 `steps` steps were done.
  bool Reach(double share, std::size_t steps);

 private:
  bool Tell();

  const std::string name_;
  std::size_t steps_;
  std::size_t done_ = 0;
  engine::UndoScope scope_;
};

}  // namespace desktop
