// From the bytes of a text of states to its JSON. Elements, of which there may be a million, go
// into a table: members of an object are looked for one by one.
#include <charconv>
#include <limits>

#include "engine/states/StateTextForm.h"

namespace engine {

namespace {

// A key is looked for among the members before it, one by one: without a limit a text of some
// megabytes could keep the program busy for very long.
constexpr std::size_t kMostMembers = 10'000;  // of an object; what is stored has some hundred
constexpr std::size_t kDeepestText = 200;

// Behind the library's own mark: "[json.exception.parse_error.101] parse error at line 3, ..."
std::string WithoutMark(const std::string& message) {
  const std::size_t mark = message.find("] ");
  return mark == std::string::npos ? message : message.substr(mark + 2);
}

// Gathers the contents of a text from the events of the parser.
// NOLINTNEXTLINE(bugprone-exception-escape): as for the contents
class TextGathering : public nlohmann::json_sax<Json> {
 public:
  StateTextContents contents;
  Json whole;  // all but the elements

  bool null() override { return Put(nullptr); }
  bool boolean(bool value) override { return Put(value); }
  bool number_integer(number_integer_t value) override { return Put(value); }
  bool number_unsigned(number_unsigned_t value) override { return Put(value); }
  bool number_float(number_float_t value, const string_t&) override { return Put(value); }
  bool string(string_t& value) override { return Put(std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Json::object()); }
  bool start_array(std::size_t) override { return Open(Json::array()); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }

  bool key(string_t& value) override {
    if (open_.size() == 1) inElements_ = value == "elements";
    if (!IsElement() && open_.back()->size() >= kMostMembers)
      throw UnreadableText("something in it has more than 10,000 members");
    key_ = std::move(value);
    return true;
  }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::detail::exception& error) override {
    throw UnreadableText(WithoutMark(error.what()));
  }

 private:
  // Whether what comes next is a member of "elements".
  bool IsElement() const { return inElements_ && open_.size() == 2 && open_.back()->is_object(); }

  Json& Place(Json value) {
    if (open_.empty()) return whole = std::move(value);
    if (IsElement()) {
      const auto [place, isNew] = contents.elements.emplace(key_, std::move(value));
      if (!isNew) throw UnreadableText("\"" + key_ + "\" stands twice among the elements");
      return place->second;
    }
    Json& parent = *open_.back();
    if (!parent.is_array()) return parent[key_] = std::move(value);
    parent.push_back(std::move(value));
    return parent.back();
  }

  bool Put(Json value) {
    Place(std::move(value));
    return true;
  }
  bool Open(Json value) {
    if (open_.size() == kDeepestText) throw UnreadableText("it is nested too deeply");
    open_.push_back(&Place(std::move(value)));
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  // An object or list gets no further member while the one that was begun in it is open, so that
  // these stay where they are.
  std::vector<Json*> open_;
  std::string key_;
  bool inElements_ = false;
};

}  // namespace

StateTextContents ParseStateText(std::string_view text) {
  TextGathering gathering;
  Json::sax_parse(text, &gathering);
  const Json& whole = gathering.whole;
  if (RequiredText(whole, "format") != kStateTextFormat)
    throw UnreadableText("it is no text of Stagemarks");
  if (const Json& version = Required(whole, "version"); version != kStateTextVersion)
    throw UnreadableText("its version is " + version.dump() + ", and this program reads " +
                         std::to_string(kStateTextVersion));
  if (!Required(whole, "elements").is_object()) throw UnreadableText("\"elements\" is no object");
  if (!Required(whole, "states").is_array()) throw UnreadableText("\"states\" is no list");
  gathering.contents.states = std::move(gathering.whole["states"]);
  return std::move(gathering.contents);
}

const Json& ElementCalled(const TextElements& elements, const std::string& name) {
  const auto found = elements.find(name);
  if (found == elements.end() || !found->second.is_object())
    throw UnreadableText("\"" + name + "\" is not among the elements");
  return found->second;
}

NodeId IdentityOf(const Json& element) {
  if (!element.contains("identity")) return 0;
  return IdentityFromText(RequiredText(element, "identity"));
}

NodeId IdentityFromText(const std::string& text) {
  NodeId id = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc() || end != text.data() + text.size())
    throw UnreadableText("\"" + text + "\" is no identity");
  return id;
}

host::LONG NumberOr(const Json& object, const char* name, host::LONG otherwise) {
  if (!object.contains(name)) return otherwise;
  const Json& number = object[name];
  constexpr std::int64_t kLongest = std::numeric_limits<host::LONG>::max();
  if (!number.is_number_integer() || number < -kLongest - 1 || number > kLongest)
    throw UnreadableText(std::string("\"") + name + "\" is no number of 32 bits");
  return number.get<host::LONG>();
}

}  // namespace engine
