// StandardOutput: what std::cout writes to while it lives: the program's standard output, with the
// system's reason when it takes no more. From then on nothing is written to it. Closed standard
// streams are opened such that nothing can be read from or written to them, because the next file
// that is opened would take their place. One at a time, main thread.
#pragma once

#include <array>
#include <iostream>
#include <streambuf>

namespace commandline {

class StandardOutput : public std::streambuf {
 public:
  StandardOutput();
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;
  ~StandardOutput() override;

  // Hands all that is left to the system and closes the stream. 0, or the system's error that kept
  // anything from being written.
  int Finish();

 protected:
  int_type overflow(int_type letter) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override;

 private:
  bool Flush();

  std::array<char, 1 << 16> buffer_;
  bool byLines_;
  int error_ = 0;
  std::streambuf* former_;
};

}  // namespace commandline
