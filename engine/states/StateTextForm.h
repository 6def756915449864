// StateTextForm: how records and values stand in the text of states, in both directions: under
// names instead of numbers. What no name fits stands as it is stored, so that nothing is lost.
// Pure functions but for the links, which the caller turns into text and back. Main thread.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "engine/core/ContainerContents.h"
#include "engine/core/Result.h"
#include "engine/states/StoredStates.h"
#include "host/RenderData.h"

namespace engine {

// Members keep their order: it is that of the entries.
using Json = nlohmann::ordered_json;

inline constexpr const char* kStateTextFormat = "stagemarks-states";
inline constexpr int kStateTextVersion = 1;

struct TakenIn;
struct TakeInOptions;

// Why a text cannot be read, as the end of a sentence for a person.
class UnreadableText : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The parts of a text: its Stagemarks, and its elements by the names that it has for them.
using TextElements = std::unordered_map<std::string, Json>;
// NOLINTNEXTLINE(bugprone-exception-escape): moving the library's values throws nothing
struct StateTextContents {
  Json states;
  TextElements elements;
};
// Throws UnreadableText for what is no such text of a version that is known. O(text).
StateTextContents ParseStateText(std::string_view text);
// As TakeInStates; throws for what cannot be read.
Result<TakenIn> TakeInContents(host::BaseDocument& doc, const StateTextContents& text,
                               const TakeInOptions& options);
// The result of `work`, or a failure with the message of its exception, for a person.
template <class T, class Work>
Result<T> WhereReadable(const Work& work) {
  try {
    return work();
  } catch (const UnreadableText& error) {
    return Result<T>::Failure(std::string("The text cannot be read: ") + error.what() + ".");
  } catch (const Json::exception& error) {
    return Result<T>::Failure(std::string("The text cannot be read: ") + error.what() + ".");
  }
}
// The element of that name; throws where the text does not describe it.
const Json& ElementCalled(const TextElements& elements, const std::string& name);
// The identity of an element, 0 for none; and one from its text. Throws for what is no identity.
NodeId IdentityOf(const Json& element);
NodeId IdentityFromText(const std::string& text);
// A whole number among the members of an object.
host::LONG NumberOr(const Json& object, const char* name, host::LONG otherwise);

// A link as text and back. Reading gives nothing where the element is not there.
using LinkToText = std::function<Json(NodeId)>;
using TextToLink = std::function<std::optional<NodeId>(const Json&)>;

// The names of the keys of one kind of container.
class KeyNames {
 public:
  // Names for a record in that list (kStoredObjects, kStoredLayers, kStoredTags), for tags by their
  // type; for host::Rbase, names for the data of render settings.
  static const KeyNames& Of(host::LONG list, host::LONG type);

  std::string NameOf(host::LONG key) const;
  host::LONG KeyOf(const std::string& name) const;  // throws for a name that is none
  bool IsSwitch(host::LONG key) const { return switches_.contains(key); }
  bool IsMode(host::LONG key) const { return modes_.contains(key); }

 private:
  void Add(host::LONG key, std::string name);
  void AddFields(host::LONG type);

  std::map<host::LONG, std::string> names_;
  std::map<std::string, host::LONG> keys_;
  std::map<host::LONG, bool> switches_;  // true or false in the text
  std::map<host::LONG, bool> modes_;     // "on", "off", "undefined"
};

// A value by itself, such that its type can be told from the text.
Json ValueToJson(const host::GeData& value, const LinkToText& link);
// Throws UnreadableText. A link to what is not there becomes a null link.
host::GeData ValueFromJson(const Json& json, const TextToLink& link);

// Members of a container under their names; of a part of the entries where `but` is a key.
Json MembersToJson(const host::BaseContainer& data, const KeyNames& names, const LinkToText& link,
                   host::LONG but = -1);
void MembersFromJson(const Json& json, const KeyNames& names, const TextToLink& link,
                     host::BaseContainer& data);

// A whole container as it is stored.
Json ContainerToJson(const host::BaseContainer& data, const LinkToText& link);
host::BaseContainer ContainerFromJson(const Json& json, const TextToLink& link);

// A Stagemark's record by what it consists of; what it does not have is not there.
struct RecordContents {
  host::LONG id = 0;
  host::String name;
  std::optional<host::BaseContainer> settings;
  std::optional<host::BaseContainer> layers;
  std::optional<host::BaseContainer> camera;
  std::optional<host::BaseContainer> objects;
  std::optional<host::BaseContainer> tags;
  std::optional<host::BaseContainer> date;
};
// The container for the list of objects, layers or tags.
std::optional<host::BaseContainer>& PartOf(RecordContents& contents, host::LONG list);
// A record put together from its contents as recording does it.
host::BaseContainer Assembled(const RecordContents& contents);
// A container with one link under its own number or another one.
host::BaseContainer LinkHolder(host::LONG key, NodeId target);
// "2026-03-05T14:07:09" and back; nothing for a text that is none.
std::string DateToText(const host::BaseContainer& date);
std::optional<host::BaseContainer> DateFromText(const std::string& text);

// One record of a list, as recording writes it: with its place as its own ID and the link to its
// element first, or behind all else in tags.
struct RecordShape {
  host::LONG list;
  host::LONG link;
  bool linkLast;
  const char* member;  // of a Stagemark in the text
};
inline constexpr RecordShape kRecordShapes[] = {
    {kStoredLayers, kStoredLayerLink, false, "layers"},
    {kStoredObjects, kStoredObjectLink, false, "objects"},
    {kStoredTags, kStoredTagLink, true, "tags"}};
Json RecordToJson(const host::BaseContainer& record, const RecordShape& shape, host::LONG type,
                  const LinkToText& link);
host::BaseContainer RecordFromJson(const Json& json, const RecordShape& shape, host::LONG type,
                                   host::LONG place, const TextToLink& link);

// Render settings with their effects and passes, without the name of the element.
Json SettingsToJson(const host::RenderData& settings, const LinkToText& link);

// The member of an object; throws where it is missing.
const Json& Required(const Json& object, const char* name);
std::string RequiredText(const Json& object, const char* name);

}  // namespace engine
