// ExitStatus: how a piece of work ended, which the command line ends with as it is. Plain numbers.
#pragma once

namespace outcome {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;  // it did not work
inline constexpr int kUsage = 2;   // wrong usage or an unknown name
// Stopped by Ctrl-C; other signals that ask to stop give 128 + their number
inline constexpr int kInterrupted = 130;

}  // namespace outcome
