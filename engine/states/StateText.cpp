// Writing Stagemarks as text. What comes out is read back at once and compared, record by record:
// one that would not come back as it was stands in the text as it is stored.
#include "engine/states/StateText.h"

#include <unordered_set>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/states/ElementPlaces.h"
#include "engine/states/RecordList.h"
#include "engine/states/StateTextForm.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

// Most bytes that are shown of the names above an element.
constexpr std::size_t kLongestPath = 240;

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string NameOf(const BaseList2D& element) { return element.GetName().ToUtf8(); }

// The end of a path that is too long, from a name on. Each element names its whole path, which
// would grow with the square of the depth.
std::string Abbreviated(const std::string& path) {
  if (path.size() <= kLongestPath) return path;
  const std::size_t slash = path.find('/', path.size() - kLongestPath);
  return "\u2026" + (slash == std::string::npos ? std::string() : path.substr(slash));
}

// The elements of a document by texts that mean one each: names from the top, with a number where
// several have the same.
class ElementTexts {
 public:
  explicit ElementTexts(const BaseDocument& doc) : doc_(doc), places_(doc) {
    for (const NodeId id : places_.All()) Add(id);
  }

  // Null for no link, the number of one that is gone. Notes the use.
  Json TextOf(NodeId id) {
    if (id == 0) return nullptr;
    const auto found = texts_.find(id);
    if (found == texts_.end()) return {{"gone", std::to_string(id)}};
    for (NodeId one = id; one != 0; one = places_.Find(one)->above) {
      // Where one is noted, so are all above it.
      if (!used_.emplace(texts_[one], one).second) break;
    }
    return found->second;
  }

  // The element of a text that TextOf gave.
  NodeId IdOfText(const Json& text) const {
    if (text.is_null()) return 0;
    if (text.is_object()) return std::stoull(text["gone"].get<std::string>());
    return used_.at(text.get<std::string>());
  }

  LONG TypeOf(NodeId id) const {
    const BaseList2D* element = FindNode(&doc_, id);
    return element ? element->GetType() : 0;
  }

  void Write(LineWriter& out) const {
    out.Line(" \"elements\": {");
    for (auto one = used_.begin(); one != used_.end(); ++one) {
      out.Line("  " + Dump(one->first) + ": " + Dump(Described(one->second)) +
               (std::next(one) == used_.end() ? "" : ","));
    }
    out.Line(" }");
  }

 private:
  void Add(NodeId id) {
    const BaseList2D& element = *FindNode(&doc_, id);
    const NodeId above = places_.Find(id)->above;
    const std::string name =
        NameOf(element).empty() ? element.GetTypeName().ToUtf8() : NameOf(element);
    const std::string path = above == 0 ? name : Abbreviated(texts_[above]) + "/" + name;
    std::string text = path;
    // Counting goes on where the last one of this path ended: many equals cost a few tries each. An
    // element may be called "Lamp #2" itself, so the number alone decides nothing.
    for (std::size_t& count = taken_[path]; !inUse_.insert(text).second;)
      text = path + " #" + std::to_string(++count + 1);
    texts_.emplace(id, std::move(text));
  }

  Json Described(NodeId id) const {
    const BaseList2D& element = *FindNode(&doc_, id);
    const ElementPlaces::Place& place = *places_.Find(id);
    Json json = {{"name", NameOf(element)},
                 {"kind", element.GetTypeName().ToUtf8()},
                 {"type", element.GetType()}};
    if (place.above != 0) json["in"] = texts_.at(place.above);
    if (place.position > 0) json["position"] = place.position;
    json["identity"] = std::to_string(id);
    return json;
  }

  const BaseDocument& doc_;
  const ElementPlaces places_;
  std::unordered_map<NodeId, std::string> texts_;
  std::unordered_map<std::string, std::size_t> taken_;  // numbers given, by path
  std::unordered_set<std::string> inUse_;
  std::map<std::string, NodeId> used_;  // in the order of the text
};

class StateWriter {
 public:
  StateWriter(const BaseDocument& doc, TextSink sink)
      : doc_(doc), elements_(doc), out_(std::move(sink)) {}

  bool Write(const std::vector<StoredState>& states, const std::string& scene) {
    out_.Line("{");
    out_.Line(" \"format\": " + Dump(kStateTextFormat) + ",");
    out_.Line(" \"version\": " + std::to_string(kStateTextVersion) + ",");
    out_.Line(" \"scene\": " + Dump(scene) + ",");
    out_.Line(" \"states\": [");
    for (std::size_t i = 0; i < states.size() && !out_.Stopped(); ++i) {
      WriteState(states[i]);
      out_.Line(i + 1 < states.size() ? "  }," : "  }");
    }
    out_.Line(" ],");
    elements_.Write(out_);
    out_.Line("}");
    return out_.Flush();
  }

 private:
  using Lines = std::vector<std::string>;

  // Members one by one, each with the end that the next one makes.
  void WriteState(const StoredState& state) {
    out_.Line("  {");
    std::vector<std::pair<std::string, Lines>> members;
    members.push_back({"name", {Dump(state.record.GetString(kStoredName).ToUtf8())}});
    members.push_back({"id", {std::to_string(state.id)}});
    if (!AddContents(state, members)) {
      // All but the name and the ID.
      members.resize(2);
      members.push_back({"stored", {Dump(ContainerToJson(state.record, link_))}});
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
      const auto& [name, lines] = members[i];
      const char* end = i + 1 < members.size() ? "," : "";
      out_.Line("   " + Dump(name) + ": " + lines[0] + (lines.size() == 1 ? end : ""));
      for (std::size_t line = 1; line < lines.size(); ++line)
        out_.Line((line + 1 < lines.size() ? "    " : "   ") + lines[line] +
                  (line + 1 < lines.size() ? "" : end));
    }
  }

  // False when these members would not make the same record again. Whoever reads the text puts a
  // record together as recording does; entries of other plug-ins or in another order would be lost
  // that way.
  bool AddContents(const StoredState& state, std::vector<std::pair<std::string, Lines>>& members) {
    const BaseContainer& record = state.record;
    RecordContents same;
    same.id = state.id;
    same.name = record.GetString(kStoredName);
    if (const BaseContainer* date = record.GetContainerInstance(kStoredDate)) {
      same.date = DateFromText(DateToText(*date));
      if (!same.date) return false;
      members.push_back({"date", {Dump(DateToText(*date))}});
    }
    if (const BaseContainer* kept = record.GetContainerInstance(kStoredSettings)) {
      const NodeId id = LinkOf(*kept, kStoredSettings);
      members.push_back({"renderSettings", SettingsLines(id)});
      same.settings = LinkHolder(kStoredSettings, id);
    }
    if (const BaseContainer* kept = record.GetContainerInstance(kStoredCamera)) {
      const NodeId id = LinkOf(*kept, kStoredCameraLink);
      members.push_back({"camera", {Dump(link_(id))}});
      same.camera = kept->GetCount() == 0 ? BaseContainer() : LinkHolder(kStoredCameraLink, id);
      if (kept->GetCount() == 0) members.back().second = {Dump(Json::object())};
    }
    for (const RecordShape& shape : kRecordShapes) {
      const BaseContainer* list = record.GetContainerInstance(shape.list);
      if (!list) continue;
      if (!AddList(*list, shape, members)) return false;
      PartOf(same, shape.list) = *list;
    }
    return Identical(Assembled(same), record);
  }

  // A line for each value, so that version control shows the one that changed.
  Lines SettingsLines(NodeId id) {
    Json json = {{"element", link_(id)}};
    if (const host::RenderData* settings = AsRenderData(FindNode(&doc_, id))) {
      Json members = SettingsToJson(*settings, link_);
      for (auto& [name, member] : members.items()) json[name] = std::move(member);
    }
    Lines lines{"{"};
    std::size_t left = json.size();
    for (const auto& [name, member] : json.items()) {
      const char* end = --left > 0 ? "," : "";
      if (name != "values") {
        lines.push_back(Dump(name) + ": " + Dump(member) + end);
        continue;
      }
      lines.push_back("\"values\": {");
      std::size_t values = member.size();
      for (const auto& [key, value] : member.items())
        lines.push_back(" " + Dump(key) + ": " + Dump(value) + (--values > 0 ? "," : ""));
      lines.push_back(std::string("}") + end);
    }
    lines.push_back("}");
    return lines;
  }

  bool AddList(const BaseContainer& list, const RecordShape& shape,
               std::vector<std::pair<std::string, Lines>>& members) {
    Lines lines{"["};
    const LONG count = list.GetCount();
    // Reading the text gives a list no own ID, and its records the keys from 0 on.
    if (list.GetId() != 0) return false;
    for (LONG i = 0; i < count; ++i) {
      const BaseContainer* record = list.GetContainerInstance(i);
      if (!record || list.GetIndexId(i) != i) return false;
      lines.push_back(RecordLine(*record, shape, i) + (i + 1 < count ? "," : ""));
    }
    lines.push_back("]");
    members.push_back({shape.member, count == 0 ? Lines{"[]"} : std::move(lines)});
    return true;
  }

  std::string RecordLine(const BaseContainer& record, const RecordShape& shape, LONG place) {
    const LONG type = elements_.TypeOf(LinkOf(record, shape.link));
    const Json json = RecordToJson(record, shape, type, link_);
    const auto back = [this](const Json& text) { return elements_.IdOfText(text); };
    try {
      if (Identical(RecordFromJson(json, shape, type, place, back), record)) return Dump(json);
    } catch (const UnreadableText&) {
      // A name that is none stands for nothing: stored as it is.
    }
    return Dump(ContainerToJson(record, link_));
  }

  const BaseDocument& doc_;
  ElementTexts elements_;
  LinkToText link_ = [this](NodeId id) { return elements_.TextOf(id); };
  LineWriter out_;
};

}  // namespace

bool WriteStatesAsText(const BaseDocument& doc, const std::vector<StoredState>& states,
                       const std::string& scene, TextSink sink) {
  return StateWriter(doc, std::move(sink)).Write(states, scene);
}

}  // namespace engine
