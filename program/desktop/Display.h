// Display: says in a sentence why there is no window, where the toolkit would only abort. Main
// thread, before the toolkit starts.
#pragma once

namespace desktop {

// From now on a toolkit that cannot start ends the program with a message and status 1.
void ExplainMissingDisplay();
// To be called once the toolkit runs: what it reports from then on is none of a start.
void StopExplaining();

}  // namespace desktop
