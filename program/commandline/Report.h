// Report: what a verb found or did, for a person (lines on stdout) or for a program (one JSON
// object on stdout, see docs/JSON.md), owned by the verb; and the standard output that it is
// printed to, owned by main. Main thread.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "program/outcome/Words.h"

namespace commandline {

struct Program;

// The version of what is printed for programs: grows when a key goes or means something else.
inline constexpr int kJsonVersion = 1;

// A value in the object for a program: nothing, yes or no, a number, a text or texts. Bytes of
// texts that are no valid UTF-8 are replaced when they are printed.
class JsonValue {
 public:
  JsonValue();
  JsonValue(const std::string& text);
  JsonValue(const char* text);
  JsonValue(const std::vector<std::string>& texts);
  JsonValue(bool yes);
  JsonValue(std::int64_t number);
  JsonValue(double number);
  template <std::integral T>
  JsonValue(T number) : JsonValue(static_cast<std::int64_t>(number)) {}

  static JsonValue Object(const std::vector<std::pair<std::string, JsonValue>>& members);
  static JsonValue List(const std::vector<JsonValue>& values);
  // The value of a JSON text; a text that is not JSON becomes a string.
  static JsonValue Parsed(const std::string& text);
  // The text, nothing where it is empty.
  static JsonValue OrNothing(const std::string& text) {
    return text.empty() ? JsonValue() : JsonValue(text);
  }

  const nlohmann::json& Json() const { return *json_; }

 private:
  std::shared_ptr<const nlohmann::json> json_;
};

using JsonMembers = std::vector<std::pair<std::string, JsonValue>>;
// Hands its argument one object after the other.
using JsonStream = std::function<void(const std::function<void(const JsonMembers&)>&)>;

class Report {
 public:
  Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report();

  // A line for a person.
  void Line(std::string text) { lines_.push_back(std::move(text)); }

  // Members of the object for a program; each verb has keys of its own. A key that is there gets
  // the new value.
  void Put(const char* key, const JsonValue& value);
  void PutObject(const char* key, const JsonMembers& members);
  // A list of objects, empty until something is appended.
  void PutList(const char* key);
  void Append(const char* key, const JsonMembers& members);
  // A list that is made while it is printed, because it may be very long.
  void PutStream(const char* key, JsonStream stream);

  // Prints the object with version and verb where the call says --json, else the lines, unless it
  // is to be quiet.
  void Print(const Program& program) const;

 private:
  std::vector<std::string> lines_;
  std::unique_ptr<nlohmann::json> json_;
  std::map<std::string, JsonStream> streams_;
};

// The buffer of std::cout while this lives: it writes to the program's standard output and keeps
// the system's error when that takes no more. From then on nothing is written to it. Closed
// standard streams are opened such that nothing can be read from or written to them, because the
// next file that is opened would take their place. One at a time.
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

// Prints names for the shell, one a line and nothing else; with a beginning those that have it, and
// not more of them than anybody looks through. A program gets them byte by byte, to give them back.
void PrintNames(const std::vector<std::string>& names, const std::string& begin = "");

// Text as valid UTF-8: bytes that are none are replaced.
std::string ValidUtf8(const std::string& text);
// Text as JSON has it between quotation marks, without them.
std::string JsonText(std::string_view text);
// Text as a page for a browser has it between tags and in quotation marks.
std::string HtmlText(const std::string& text);

// "a, b, c".
std::string Joined(const std::vector<std::string>& words);

using outcome::Counted;
using outcome::Listed;

}  // namespace commandline
