// A verb puts its result into a report twice, as lines and as JSON, and one of them is printed at
// the end. Long lists are streams that are only run when they are printed. StandardOutput stands
// behind std::cout and remembers the first error, so that a full disk or a closed pipe becomes an
// exit status instead of lost lines.
#include "program/commandline/Report.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>

#include "program/commandline/Program.h"

namespace commandline {

namespace {

using nlohmann::json;

// Bytes that are no UTF-8 become U+FFFD: JSON knows none.
std::string Printed(const json& value, int indent) {
  return value.dump(indent, ' ', false, json::error_handler_t::replace);
}

json JsonOf(const JsonMembers& members) {
  json object = json::object();
  for (const auto& [key, value] : members) object[key] = value.Json();
  return object;
}

// The lines behind the first moved right.
std::string Indented(const json& value, std::size_t columns) {
  std::string text;
  for (const char letter : Printed(value, 2)) {
    text += letter;
    if (letter == '\n') text.append(columns, ' ');
  }
  return text;
}

void PrintList(const JsonStream& stream) {
  const char* before = "[\n    ";
  bool isEmpty = true;
  stream([&](const JsonMembers& members) {
    std::cout << std::exchange(before, ",\n    ") << Indented(JsonOf(members), 4);
    isEmpty = false;
  });
  std::cout << (isEmpty ? "[]" : "\n  ]");
}

// A program may be started with standard streams closed; the next file that is opened would get
// their number and be written to as output. The ends are opened the wrong way round, so that using
// them is still an error.
void OpenClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened >= 0 && opened != stream) close(opened);
  }
}

}  // namespace

JsonValue::JsonValue() : json_(std::make_shared<json>()) {}

JsonValue::JsonValue(const std::string& text) : json_(std::make_shared<json>(text)) {}

JsonValue::JsonValue(const char* text) : json_(std::make_shared<json>(text)) {}

JsonValue::JsonValue(const std::vector<std::string>& texts)
    : json_(std::make_shared<json>(texts)) {}

JsonValue::JsonValue(bool yes) : json_(std::make_shared<json>(yes)) {}

JsonValue::JsonValue(std::int64_t number) : json_(std::make_shared<json>(number)) {}

JsonValue::JsonValue(double number) : json_(std::make_shared<json>(number)) {}

JsonValue JsonValue::Object(const JsonMembers& members) {
  JsonValue value;
  value.json_ = std::make_shared<json>(JsonOf(members));
  return value;
}

JsonValue JsonValue::List(const std::vector<JsonValue>& values) {
  json list = json::array();
  for (const JsonValue& one : values) list.push_back(one.Json());
  JsonValue value;
  value.json_ = std::make_shared<json>(std::move(list));
  return value;
}

JsonValue JsonValue::Parsed(const std::string& text) {
  JsonValue value(text);
  json parsed = json::parse(text, nullptr, false);
  if (!parsed.is_discarded()) value.json_ = std::make_shared<json>(std::move(parsed));
  return value;
}

Report::Report() : json_(std::make_unique<json>(json::object())) {}

Report::~Report() = default;

void Report::Put(const char* key, const JsonValue& value) { (*json_)[key] = value.Json(); }

void Report::PutObject(const char* key, const JsonMembers& members) {
  (*json_)[key] = JsonOf(members);
}

void Report::PutList(const char* key) { (*json_)[key] = json::array(); }

void Report::Append(const char* key, const JsonMembers& members) {
  (*json_)[key].push_back(JsonOf(members));
}

// The key keeps its place among the others; the stream must not outlive what it refers to.
void Report::PutStream(const char* key, JsonStream stream) {
  (*json_)[key] = nullptr;
  streams_[key] = std::move(stream);
}

void Report::Print(const Program& program) const {
  if (!program.json) {
    for (const std::string& line : lines_) {
      if (!program.quiet) std::cout << line << '\n';
    }
    return;
  }
  std::cout << "{\n  \"version\": " << kJsonVersion
            << ",\n  \"verb\": " << Printed(json(program.verbName), -1);
  for (const auto& [key, value] : json_->items()) {
    std::cout << ",\n  " << Printed(json(key), -1) << ": ";
    const auto stream = streams_.find(key);
    stream == streams_.end() ? void(std::cout << Indented(value, 2)) : PrintList(stream->second);
  }
  std::cout << "\n}\n";
}

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

// close tells of what the system has put off, on a network disk, say.
int StandardOutput::Finish() {
  (void)Flush();
  if (close(STDOUT_FILENO) != 0 && errno != EINTR && error_ == 0) error_ = errno;
  return error_;
}

// After the first error everything is dropped and the work goes on.
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

// The buffer is full: it is written, then the letter goes into the empty one.
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

// For completion a few hundred are enough; the shell asks again with more letters.
void PrintNames(const std::vector<std::string>& names, const std::string& begin) {
  constexpr std::size_t kMostOffered = 500;
  const bool forPerson = isatty(STDOUT_FILENO) != 0;
  std::size_t printed = 0;
  for (const std::string& name : names) {
    if (!name.starts_with(begin)) continue;
    std::cout << (forPerson ? Shown(name) : name) << '\n';
    if (!begin.empty() && ++printed == kMostOffered) return;
  }
}

// The way through JSON does exactly this, for all outputs alike.
std::string ValidUtf8(const std::string& text) {
  return json::parse(Printed(json(text), -1)).get<std::string>();
}

std::string JsonText(std::string_view text) {
  const std::string quoted = Printed(json(text), -1);
  return quoted.substr(1, quoted.size() - 2);
}

std::string HtmlText(const std::string& text) {
  std::string escaped;
  for (const char letter : ValidUtf8(text)) {
    switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += static_cast<unsigned char>(letter) < 0x20 ? ' ' : letter;
    }
  }
  return escaped;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

}  // namespace commandline
