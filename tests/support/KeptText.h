// Texts that stay as they are: what a test has written now against the file that is kept for it.
#pragma once

#include <string>

namespace tests {

// Numbers with a fraction may differ by what processors and compilers do. A text that differs fails
// the test and is written to the folder "kept" beside the programs: where the change is meant, look
// at it and put it in the place of the old one.
void ExpectKept(const std::string& text, const std::string& file);

}  // namespace tests
