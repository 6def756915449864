// PluginTrial: tries in a child process what would end this one if it went wrong. Main thread.
#pragma once

#include <functional>
#include <string>

namespace engine {

// Has `work` done by a copy of this process that hears no person and is gone afterwards: in this
// process nothing has happened. Where the kernel knows how (AllowReadingOnly) the copy can change
// no file either; elsewhere what `work` does to files is done. Empty where it came to its end, else
// what became of it, as "it crashes (Segmentation fault)". Where no process can be made it is not
// tried, and the answer is empty.
std::string WhyItWouldEnd(const std::function<void()>& work);

}  // namespace engine
