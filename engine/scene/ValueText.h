// Values as text for dumps: exact, one line, the same on every machine. Main thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "engine/core/ContainerContents.h"

namespace engine {

// How a dump names the target of a link.
using LinkNames = std::function<std::string(NodeId)>;

// Text in double quotes, with control characters, quotes and backslashes escaped.
std::string Quoted(const host::String& text);
std::string RealText(host::Real value);
std::string VectorText(const host::Vector& value);
// One value; of a container only its own ID and its number of entries.
std::string ValueText(const host::GeData& value, const LinkNames& links);
// Takes text in pieces that end with a line; false stops what writes it.
using TextSink = std::function<bool(std::string_view)>;

// Lines on their way to a sink, handed on some at a time. Once the sink has said no, nothing more
// is written.
class LineWriter {
 public:
  explicit LineWriter(TextSink sink) : sink_(std::move(sink)) {}

  // A line end is put behind it. False once the sink has stopped.
  bool Line(std::string_view text) {
    text_.append(text) += '\n';
    return text_.size() < kPiece ? !stopped_ : Flush();
  }
  // Hands on what is left. False when the sink has stopped, now or before.
  bool Flush() {
    if (!stopped_ && !text_.empty()) stopped_ = !sink_(text_);
    text_.clear();
    return !stopped_;
  }
  bool Stopped() const { return stopped_; }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 16;
  TextSink sink_;
  std::string text_;
  bool stopped_ = false;
};

// Writes one line per entry, those of sub-containers after the entry that holds them: "<prefix>
// 25003/0/80001 = 1". Any depth; below the thirty-second level the number of further levels stands
// for their keys: ".../+7/80001 = 1".
void WriteContainer(const host::BaseContainer& data, const std::string& prefix,
                    const LinkNames& links, LineWriter& out);

}  // namespace engine
