#include "engine/states/StateTextForm.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "engine/editing/Field.h"
#include "engine/states/RecordList.h"
#include "engine/states/StoredStates.h"
#include "host/BaseObject.h"
#include "host/RenderData.h"

namespace engine {

using host::BaseContainer;
using host::GeData;
using host::LONG;

namespace {

constexpr const char* kLayerFlagNames[] = {"solo",      "view",        "render",
                                           "manager",   "locked",      "generators",
                                           "deformers", "expressions", "animation"};
constexpr const char* kModes[] = {"on", "off", "undefined"};
static_assert(host::MODE_ON == 0 && host::MODE_OFF == 1 && host::MODE_UNDEF == 2);
// As deep as a text may nest values: more than a plug-in's data does.
constexpr int kDeepestValue = 64;

[[noreturn]] void Refuse(const std::string& what) { throw UnreadableText(what); }

std::string Excerpt(const Json& json) {
  const std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
  return text.size() > 60 ? text.substr(0, 57) + "..." : text;
}

std::string Hex(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) (text += kDigits[byte >> 4]) += kDigits[byte & 15];
  return text;
}

std::string Bytes(const std::string& hex) {
  std::string bytes;
  const auto digit = [&](char c) {
    const std::size_t found = std::string_view("0123456789abcdef").find(c);
    if (found == std::string_view::npos) Refuse("\"" + hex + "\" is no list of bytes");
    return static_cast<unsigned char>(found);
  };
  if (hex.size() % 2 != 0) Refuse("\"" + hex + "\" is no list of bytes");
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes += static_cast<char>(digit(hex[i]) << 4 | digit(hex[i + 1]));
  return bytes;
}

// Infinities and what is no number have no place in JSON.
Json RealToJson(double number) {
  if (std::isfinite(number)) return number;
  return {{"bits", std::to_string(std::bit_cast<std::uint64_t>(number))}};
}

double RealFromJson(const Json& json) {
  if (json.is_number()) return json.get<double>();
  if (!json.is_object() || !json.contains("bits")) Refuse(Excerpt(json) + " is no number");
  const std::string text = RequiredText(json, "bits");
  std::uint64_t bits = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits);
  if (error != std::errc() || end != text.data() + text.size())
    Refuse("\"" + text + "\" are no bits of a number");
  return std::bit_cast<double>(bits);
}

// The library refuses to write text that is not UTF-8.
Json TextToJson(std::string_view text) {
  Json json = std::string(text);
  try {
    (void)json.dump();
  } catch (const Json::exception&) {
    json = {{"bytes", Hex(text)}};
  }
  return json;
}

std::string TextFromJson(const Json& json) {
  if (json.is_string()) return json.get<std::string>();
  if (json.is_object() && json.contains("bytes")) return Bytes(RequiredText(json, "bytes"));
  Refuse(Excerpt(json) + " is no text");
}

LONG NumberFromJson(const Json& json) {
  if (!json.is_number_integer() || json.get<std::int64_t>() < std::numeric_limits<LONG>::min() ||
      json.get<std::int64_t>() > std::numeric_limits<LONG>::max())
    Refuse(Excerpt(json) + " is no whole number of 32 bits");
  return json.get<LONG>();
}

bool IsLink(const Json& json) {
  return json.is_null() || json.is_string() || (json.is_object() && json.contains("gone"));
}

const Json& ListOf(const Json& json, std::size_t count, const char* what) {
  if (!json.is_array() || json.size() != count)
    Refuse(Excerpt(json) + " is no " + what + ": it wants " + std::to_string(count) + " values");
  return json;
}

GeData FromObject(const Json& json, const TextToLink& link, int depth);

GeData FromJson(const Json& json, const TextToLink& link, int depth) {
  if (depth > kDeepestValue) Refuse("values lie too deep in one another");
  if (json.is_null()) return {};
  if (json.is_number_integer()) return NumberFromJson(json);
  if (json.is_number_float()) return json.get<double>();
  if (json.is_string()) return host::String(std::string_view(json.get_ref<const std::string&>()));
  if (json.is_array()) {
    const Json& parts = ListOf(json, 3, "vector");
    return host::Vector(RealFromJson(parts[0]), RealFromJson(parts[1]), RealFromJson(parts[2]));
  }
  if (json.is_object()) return FromObject(json, link, depth);
  Refuse(Excerpt(json) + " is no value");
}

BaseContainer StoredFrom(const Json& json, const TextToLink& link, int depth) {
  BaseContainer data(NumberFromJson(Required(json, "id")));
  const Json& entries = Required(json, "entries");
  if (!entries.is_array()) Refuse("\"entries\" is no list");
  for (const Json& entry : entries) {
    ListOf(entry, 2, "entry");
    data.SetData(NumberFromJson(entry[0]), FromJson(entry[1], link, depth + 1));
  }
  return data;
}

GeData FromObject(const Json& json, const TextToLink& link, int depth) {
  if (json.contains("link")) return LinkValue(link(json["link"]).value_or(0));
  if (json.contains("bits")) return RealFromJson(json);
  if (json.contains("bytes")) return host::String(std::string_view(TextFromJson(json)));
  if (json.contains("file"))
    return host::Filename(host::String(std::string_view(TextFromJson(json["file"]))));
  if (json.contains("time")) {
    const Json& time = ListOf(json["time"], 2, "time");
    return host::BaseTime(RealFromJson(time[0]), RealFromJson(time[1]));
  }
  if (json.contains("entries")) return StoredFrom(json, link, depth);
  Refuse(Excerpt(json) + " is no value");
}

}  // namespace

// Two values of one label are told apart by their keys, so that reading finds each again.
void KeyNames::Add(LONG key, std::string name) {
  if (keys_.contains(name)) name += " (" + std::to_string(key) + ")";
  keys_.emplace(name, key);
  names_.emplace(key, std::move(name));
}

void KeyNames::AddFields(LONG type) {
  for (const FieldSection& section : FieldSections()) {
    if (section.type != type) continue;
    for (const Field& field : section.fields) {
      if (field.id >= 0 && !names_.contains(field.id)) Add(field.id, field.label);
    }
  }
}

// Tables are made when they are first asked for and stay; references into the map are not moved by
// further ones. A record of a compositing tag stores parameters under keys of its own, which get
// the parameters' names; the table of these is the one of the negative type.
const KeyNames& KeyNames::Of(LONG list, LONG type) {
  static std::map<std::pair<LONG, LONG>, KeyNames> known;
  const auto [place, isNew] = known.try_emplace({list, type});
  KeyNames& names = place->second;
  if (!isNew) return names;
  if (list == kStoredObjects) {
    names.Add(kStoredEditorMode, "editor");
    names.Add(kStoredRenderMode, "render");
    names.Add(kStoredDeformMode, "deform");
    names.modes_ = {{kStoredEditorMode, true}, {kStoredRenderMode, true}};
    names.switches_ = {{kStoredDeformMode, true}};
  } else if (list == kStoredLayers) {
    for (LONG i = 0; i < 9; ++i) {
      names.Add(kStoredLayerFlags + i, kLayerFlagNames[i]);
      names.switches_.emplace(kStoredLayerFlags + i, true);
    }
  } else if (list == host::Rbase) {
    names.AddFields(host::Rbase);
  } else if (type == host::Ttexture) {
    names.Add(kStoredMaterialLink, "material");
  } else if (type == host::Tcompositing) {
    const KeyNames& parameters = Of(kStoredTags, -type);
    for (const auto& [parameter, key] : kCompositingParameters)
      names.Add(key, parameters.NameOf(parameter));
  } else {
    names.AddFields(std::abs(type));
  }
  return names;
}

std::string KeyNames::NameOf(LONG key) const {
  const auto found = names_.find(key);
  return found == names_.end() ? "#" + std::to_string(key) : found->second;
}

LONG KeyNames::KeyOf(const std::string& name) const {
  if (const auto found = keys_.find(name); found != keys_.end()) return found->second;
  LONG key = 0;
  const bool isNumber = name.starts_with('#');
  const char* const last = name.data() + name.size();
  const auto [end, error] = std::from_chars(name.data() + (isNumber ? 1 : 0), last, key);
  if (!isNumber || error != std::errc() || end != last)
    Refuse("\"" + name + "\" is no name of a value here");
  return key;
}

Json ValueToJson(const GeData& value, const LinkToText& link) {
  switch (value.GetType()) {
    case host::DA_LONG:
      return value.GetLong();
    case host::DA_REAL:
      return RealToJson(value.GetReal());
    case host::DA_VECTOR: {
      const host::Vector vector = value.GetVector();
      return Json::array({RealToJson(vector.x), RealToJson(vector.y), RealToJson(vector.z)});
    }
    case host::DA_TIME: {
      const host::BaseTime time = value.GetTime();
      return {{"time",
               Json::array({RealToJson(time.GetNumerator()), RealToJson(time.GetDenominator())})}};
    }
    case host::DA_STRING:
      return TextToJson(value.GetString().View());
    case host::DA_FILENAME:
      return {{"file", TextToJson(value.GetFilename().GetString().View())}};
    case host::DA_CONTAINER:
      return ContainerToJson(value.GetContainer(), link);
    case host::DA_ALIASLINK:
      return {{"link", link(LinkOf(value))}};
    default:
      return nullptr;
  }
}

GeData ValueFromJson(const Json& json, const TextToLink& link) { return FromJson(json, link, 0); }

Json MembersToJson(const BaseContainer& data, const KeyNames& names, const LinkToText& link,
                   LONG but) {
  Json members = Json::object();
  ForEachEntry(data, [&](LONG key, const GeData& value) {
    if (key == but) return;
    Json& member = members[names.NameOf(key)];
    // A switch or mode with any other value is written as the number that it is, and comes back as
    // that.
    const LONG number = value.GetType() == host::DA_LONG ? value.GetLong() : -1;
    if (names.IsSwitch(key) && (number == 0 || number == 1)) {
      member = number == 1;
    } else if (names.IsMode(key) && number >= 0 && number < LONG{std::size(kModes)}) {
      member = kModes[number];
    } else {
      member = key == kStoredMaterialLink && value.GetType() == host::DA_ALIASLINK
                   ? link(LinkOf(value))
                   : ValueToJson(value, link);
    }
  });
  return members;
}

void MembersFromJson(const Json& json, const KeyNames& names, const TextToLink& link,
                     BaseContainer& data) {
  for (const auto& [name, member] : json.items()) {
    const LONG key = names.KeyOf(name);
    const auto* mode = member.is_string() ? std::ranges::find(kModes, member.get<std::string>())
                                          : std::end(kModes);
    if (member.is_boolean()) {
      data.SetLong(key, member.get<bool>() ? 1 : 0);
    } else if (names.IsMode(key) && mode != std::end(kModes)) {
      data.SetLong(key, static_cast<LONG>(mode - kModes));
    } else if (key == kStoredMaterialLink && IsLink(member)) {
      SetLinkId(data, key, link(member).value_or(0));
    } else {
      data.SetData(key, ValueFromJson(member, link));
    }
  }
}

Json ContainerToJson(const BaseContainer& data, const LinkToText& link) {
  Json entries = Json::array();
  ForEachEntry(data, [&](LONG key, const GeData& value) {
    entries.push_back(Json::array({key, ValueToJson(value, link)}));
  });
  return {{"id", data.GetId()}, {"entries", std::move(entries)}};
}

BaseContainer ContainerFromJson(const Json& json, const TextToLink& link) {
  return StoredFrom(json, link, 0);
}

std::optional<BaseContainer>& PartOf(RecordContents& contents, LONG list) {
  if (list == kStoredObjects) return contents.objects;
  return list == kStoredLayers ? contents.layers : contents.tags;
}

// In the order in which recording writes them; order is part of what makes two records equal.
BaseContainer Assembled(const RecordContents& contents) {
  BaseContainer record(contents.id);
  record.SetString(kStoredName, contents.name);
  const std::pair<LONG, const std::optional<BaseContainer>&> parts[] = {
      {kStoredSettings, contents.settings}, {kStoredLayers, contents.layers},
      {kStoredCamera, contents.camera},     {kStoredObjects, contents.objects},
      {kStoredTags, contents.tags},         {kStoredDate, contents.date}};
  for (const auto& [key, part] : parts) {
    if (part) record.SetContainer(key, *part);
  }
  return record;
}

BaseContainer LinkHolder(LONG key, NodeId target) {
  BaseContainer holder;
  SetLinkId(holder, key, target);
  return holder;
}

std::string DateToText(const BaseContainer& date) {
  LONG fields[kStoredDateFields];
  for (LONG i = 0; i < kStoredDateFields; ++i) fields[i] = date.GetLong(kStoredYear + i);
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", fields[0], fields[1], fields[2],
                fields[3], fields[4], fields[5]);
  return text;
}

std::optional<BaseContainer> DateFromText(const std::string& text) {
  LONG fields[kStoredDateFields];
  int end = 0;
  if (std::sscanf(text.c_str(), "%d-%2d-%2dT%2d:%2d:%2d%n", &fields[0], &fields[1], &fields[2],
                  &fields[3], &fields[4], &fields[5], &end) != kStoredDateFields ||
      static_cast<std::size_t>(end) != text.size())
    return std::nullopt;
  BaseContainer date;
  for (LONG i = 0; i < kStoredDateFields; ++i) date.SetLong(kStoredYear + i, fields[i]);
  return date;
}

Json RecordToJson(const BaseContainer& record, const RecordShape& shape, LONG type,
                  const LinkToText& link) {
  Json members = MembersToJson(record, KeyNames::Of(shape.list, type), link, shape.link);
  Json json = {{"element", link(LinkOf(record, shape.link))}};
  for (auto& [name, member] : members.items()) json[name] = std::move(member);
  return json;
}

BaseContainer RecordFromJson(const Json& json, const RecordShape& shape, LONG type, LONG place,
                             const TextToLink& link) {
  if (json.contains("entries")) return ContainerFromJson(json, link);
  const NodeId element = link(Required(json, "element")).value_or(0);
  BaseContainer record(place);
  if (!shape.linkLast) SetLinkId(record, shape.link, element);
  Json members = json;
  members.erase("element");
  MembersFromJson(members, KeyNames::Of(shape.list, type), link, record);
  if (shape.linkLast) SetLinkId(record, shape.link, element);
  return record;
}

namespace {

Json EffectToJson(const host::BaseList2D& effect, const LinkToText& link) {
  return {{"type", effect.GetType()},
          {"name", TextToJson(effect.GetName().View())},
          {"on", !effect.GetBit(host::BIT_DISABLED)},
          {"values", MembersToJson(*effect.GetDataInstance(),
                                   KeyNames::Of(effect.GetType(), effect.GetType()), link)}};
}

}  // namespace

Json SettingsToJson(const host::RenderData& settings, const LinkToText& link) {
  Json json = {{"name", TextToJson(settings.GetName().View())},
               {"values", MembersToJson(*settings.GetDataInstance(),
                                        KeyNames::Of(host::Rbase, host::Rbase), link)},
               {"effects", Json::array()},
               {"passes", Json::array()}};
  for (const auto* post = settings.GetFirstVideoPost(); post; post = post->GetNext())
    json["effects"].push_back(EffectToJson(*post, link));
  for (const auto* pass = settings.GetFirstMultipass(); pass; pass = pass->GetNext())
    json["passes"].push_back(EffectToJson(*pass, link));
  return json;
}

const Json& Required(const Json& object, const char* name) {
  if (!object.is_object() || !object.contains(name))
    Refuse("\"" + std::string(name) + "\" is missing in " + Excerpt(object));
  return object[name];
}

std::string RequiredText(const Json& object, const char* name) {
  const Json& member = Required(object, name);
  if (!member.is_string()) Refuse("\"" + std::string(name) + "\" is no text");
  return member.get<std::string>();
}

}  // namespace engine
