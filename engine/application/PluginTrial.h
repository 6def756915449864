// PluginTrial: tries in a child process what would end this one if it went wrong. Main thread.
#pragma once

#include <functional>
#include <string>

namespace engine {

// Has `work` done by a copy of this process that can change no file, hears no person and is gone
// afterwards: in this process nothing has happened. Empty where it came to its end, else how it
// ended, as "it ended by signal 11 (Segmentation fault)". Where no process can be made it is not
// tried, and the answer is empty.
std::string WhyItWouldEnd(const std::function<void()>& work);

}  // namespace engine
