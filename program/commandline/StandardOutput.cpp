#include "program/commandline/StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>

namespace commandline {

namespace {

void OpenClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened >= 0 && opened != stream) close(opened);
  }
}

}  // namespace

// A reader that has had enough is an error like any other here, not a signal that ends the program
// in the middle of its work.
StandardOutput::StandardOutput() {
  OpenClosedStreams();
  std::signal(SIGPIPE, SIG_IGN);
  byLines_ = isatty(STDOUT_FILENO) != 0;
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  former_ = std::cout.rdbuf(this);
}

StandardOutput::~StandardOutput() {
  (void)Flush();
  std::cout.rdbuf(former_);
}

int StandardOutput::Finish() {
  (void)Flush();
  if (close(STDOUT_FILENO) != 0 && errno != EINTR && error_ == 0) error_ = errno;
  return error_;
}

bool StandardOutput::Flush() {
  const char* next = pbase();
  while (error_ == 0 && next < pptr()) {
    const ssize_t count = write(STDOUT_FILENO, next, static_cast<std::size_t>(pptr() - next));
    if (count >= 0) next += count;
    if (count < 0 && errno != EINTR) error_ = errno;
  }
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return error_ == 0;
}

StandardOutput::int_type StandardOutput::overflow(int_type letter) {
  if (!Flush()) return traits_type::eof();
  if (traits_type::eq_int_type(letter, traits_type::eof())) return traits_type::not_eof(letter);
  *pptr() = traits_type::to_char_type(letter);
  pbump(1);
  return letter;
}

// A terminal shows each line at once.
std::streamsize StandardOutput::xsputn(const char* text, std::streamsize count) {
  const std::streamsize written = std::streambuf::xsputn(text, count);
  const bool line =
      std::string_view(text, static_cast<std::size_t>(count)).find('\n') != std::string_view::npos;
  return byLines_ && line && !Flush() ? 0 : written;
}

int StandardOutput::sync() { return Flush() ? 0 : -1; }

}  // namespace commandline
