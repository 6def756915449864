// ProgressCallback: how long work reports how far it is and learns whether it is still wanted.
// Called on the thread that does the work.
#pragma once

#include <functional>

namespace engine {

// Called now and then with the share of the whole work that is done, 0..1; false stops the work.
// Empty: nobody listens, and the work goes on to its end.
using ProgressCallback = std::function<bool(double)>;

}  // namespace engine
