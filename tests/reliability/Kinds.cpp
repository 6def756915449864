// The kinds of rounds that need no window.
#include "tests/reliability/Rounds.h"

namespace tests {

const std::map<std::string, Rounds>& Kinds() {
  static const std::map<std::string, Rounds> kinds = {{"faults", FaultRounds},
                                                      {"power-cuts", PowerCuts},
                                                      {"hostile-names", HostileNames},
                                                      {"undo", UndoRounds}};
  return kinds;
}

}  // namespace tests
