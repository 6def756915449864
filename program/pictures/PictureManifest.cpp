#include "program/pictures/PictureManifest.h"

#include <unistd.h>

#include <ctime>
#include <nlohmann/json.hpp>

namespace pictures {

namespace {

using Json = nlohmann::ordered_json;

// A member of another type counts as missing: a line by another version is read as far as it goes.
std::string TextIn(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

template <class Number>
Number NumberIn(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number() ? found->get<Number>() : Number{};
}

ManifestLine LineOf(const Json& object) {
  ManifestLine line;
  line.picture = TextIn(object, "picture");
  line.state = TextIn(object, "stagemark");
  line.record = {
      TextIn(object, "scene"),
      TextIn(object, "state"),
      TextIn(object, "settings"),
      {NumberIn<std::uint32_t>(object, "width"), NumberIn<std::uint32_t>(object, "height")},
      NumberIn<int>(object, "frame"),
      TextIn(object, "program")};
  line.failed = TextIn(object, "result") == "failed";
  line.why = TextIn(object, "why");
  line.time = TextIn(object, "time");
  line.host = TextIn(object, "host");
  line.node = TextIn(object, "node");
  line.seconds = NumberIn<double>(object, "seconds");
  line.bytes = NumberIn<std::uint64_t>(object, "bytes");
  return line;
}

}  // namespace

// A line without a time was only planned. Bytes that are no UTF-8 are replaced, since a manifest
// that stops half way helps nobody.
std::string TextOf(const ManifestLine& line) {
  Json object{{"picture", line.picture},
              {"stagemark", line.state},
              {"result", line.failed         ? "failed"
                         : line.time.empty() ? "wanted"
                                             : "rendered"},
              {"scene", line.record.scene},
              {"state", line.record.state},
              {"settings", line.record.settings},
              {"width", line.record.size.width},
              {"height", line.record.size.height},
              {"frame", line.record.frame},
              {"program", line.record.program},
              {"time", line.time},
              {"host", line.host},
              {"seconds", line.seconds},
              {"bytes", line.bytes}};
  if (!line.node.empty()) object["node"] = line.node;
  if (!line.why.empty()) object["why"] = line.why;
  return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::vector<ManifestLine> ReadManifest(std::string_view text, std::size_t* broken) {
  std::vector<ManifestLine> lines;
  std::size_t unread = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    if (end > start) {
      const Json object = Json::parse(text.substr(start, end - start), nullptr, false);
      if (object.is_object() && object.contains("picture")) {
        lines.push_back(LineOf(object));
      } else {
        ++unread;
      }
    }
    start = end + 1;
  }
  if (broken) *broken = unread;
  return lines;
}

// UTC, so that lines of machines in several places can be compared.
std::string TimeNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char text[32];
  const bool known = gmtime_r(&now, &parts) != nullptr;
  return known && std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) > 0 ? text : "";
}

std::string HostName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

std::string RelativeTo(const std::string& folder, const std::string& path) {
  const bool inside =
      path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
  return inside ? path.substr(folder.size() + 1) : path;
}

std::string AbsoluteFrom(const std::string& folder, const std::string& path) {
  return path.starts_with('/') ? path : folder + "/" + path;
}

}  // namespace pictures
