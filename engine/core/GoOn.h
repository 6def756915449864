// GoOn: how long work tells how far it is and hears whether it is still wanted. Asked by the thread
// that does the work.
#pragma once

#include <functional>

namespace engine {

// Asked now and then with the share of the whole work that is done, 0..1; false stops. Empty: goes
// on.
using GoOn = std::function<bool(double)>;

}  // namespace engine
