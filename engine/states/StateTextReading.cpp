// Taking in Stagemarks from a text: everything is read and found first, and only then written into
// the document.
#include <set>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/states/ElementPlaces.h"
#include "engine/states/RecordList.h"
#include "engine/states/StateText.h"
#include "engine/states/StateTextForm.h"
#include "engine/states/StoredStates.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

// The elements that a text names, found in a document: each once.
class ElementFinder {
 public:
  ElementFinder(const BaseDocument& doc, const TextElements& elements, TakenIn& found)
      : doc_(doc), elements_(elements), found_(found) {}

  // Nothing for an element that is not there, which is counted once.
  std::optional<NodeId> Find(const Json& text) {
    if (text.is_null()) return 0;
    if (text.is_object()) return IdOfGone(text);
    if (!text.is_string()) throw UnreadableText("an element is named by no text");
    const std::string& name = text.get_ref<const std::string&>();
    const auto [place, isNew] = known_.try_emplace(name);
    if (isNew) place->second = Search(name, Described(name));
    return place->second;
  }

  // By its identity, type and name only; 0 where that is not there. Not counted.
  NodeId FindExactly(const Json& text) const {
    const Json& json = Described(text.get<std::string>());
    const NodeId id = IdentityOf(json);
    const BaseList2D* element = FindNode(&doc_, id);
    return element && element->GetType() == NumberOr(json, "type", 0) &&
                   element->GetName().View() == RequiredText(json, "name")
               ? id
               : 0;
  }

  LONG TypeOf(const Json& text) const {
    return text.is_string() ? NumberOr(Described(text.get<std::string>()), "type", 0) : 0;
  }

 private:
  const Json& Described(const std::string& name) const { return ElementCalled(elements_, name); }

  // An element that was gone when the text was written stays gone: one of that identity here would
  // be another one.
  NodeId IdOfGone(const Json& text) const {
    const NodeId id = IdentityFromText(RequiredText(text, "gone"));
    return FindNode(&doc_, id) ? 0 : id;
  }

  std::optional<NodeId> Search(const std::string& text, const Json& json) {
    const LONG type = NumberOr(json, "type", 0);
    const std::string name = RequiredText(json, "name");
    if (const NodeId id = FindExactly(text); id != 0) {
      ++found_.byIdentity;
      return id;
    }
    if (!places_) places_.emplace(doc_);
    const std::vector<NodeId>& there = places_->At(KeyOf(text));
    const auto position = static_cast<std::size_t>(NumberOr(json, "position", 0));
    if (position < there.size()) {
      ++found_.byPath;
      return there[position];
    }
    const std::vector<NodeId>& named = places_->Named(type, name);
    if (named.size() == 1) {
      ++found_.byName;
      return named[0];
    }
    (named.empty() ? found_.missing : found_.ambiguous).push_back(text);
    return std::nullopt;
  }

  // From the element up to one whose place is known, and down again. As ElementPlaces reckons keys
  // in a document; each element is reckoned once. A way longer than there are elements runs in a
  // circle.
  PlaceKey KeyOf(const std::string& text) {
    std::vector<std::string> way{text};
    while (!keys_.contains(way.back())) {
      const Json& json = Described(way.back());
      if (!json.contains("in")) break;
      way.push_back(RequiredText(json, "in"));
      if (way.size() > elements_.size()) throw UnreadableText("elements lie in themselves");
    }
    PlaceKey key = 0;
    PlaceKey inside = kTopPlace;
    for (; !way.empty(); way.pop_back()) {
      const Json& json = Described(way.back());
      const auto [place, isNew] = keys_.try_emplace(way.back());
      if (isNew)
        place->second = KeyInside(inside, NumberOr(json, "type", 0), RequiredText(json, "name"));
      key = place->second;
      inside = InsideOf(key, static_cast<std::size_t>(NumberOr(json, "position", 0)));
    }
    return key;
  }

  const BaseDocument& doc_;
  const TextElements& elements_;
  TakenIn& found_;
  std::optional<ElementPlaces> places_;  // once something is not found by its identity
  std::unordered_map<std::string, std::optional<NodeId>> known_;
  std::unordered_map<std::string, PlaceKey> keys_;
};

// An effect or a pass of render settings as the text has it.
struct EffectDraft {
  LONG type;
  host::String name;
  bool isOn;
  BaseContainer values;

  bool IsAs(const BaseList2D& effect) const {
    return effect.GetType() == type && effect.GetName() == name &&
           !effect.GetBit(host::BIT_DISABLED) == isOn && *effect.GetDataInstance() == values;
  }
};

// Render settings as the text has them.
struct SettingsDraft {
  NodeId element = 0;
  bool isWhole = false;  // else the element alone is known
  host::String name;
  BaseContainer values;
  std::vector<EffectDraft> effects;
  std::vector<EffectDraft> passes;

  bool IsAs(const host::RenderData& settings) const {
    return settings.GetName() == name && *settings.GetDataInstance() == values &&
           AreAs(effects, settings.GetFirstVideoPost()) &&
           AreAs(passes, settings.GetFirstMultipass());
  }

 private:
  template <class Effect>
  static bool AreAs(const std::vector<EffectDraft>& drafts, const Effect* effect) {
    for (const EffectDraft& draft : drafts) {
      if (!effect || !draft.IsAs(*effect)) return false;
      effect = effect->GetNext();
    }
    return !effect;
  }
};

// A Stagemark as it will be stored, but for its render settings.
struct Draft {
  RecordContents contents;
  std::optional<BaseContainer> stored;  // instead of the contents
  std::optional<SettingsDraft> settings;
  bool replaces = false;
};

// Puts what the drafts say in place of the effects or passes that are there.
template <class Effect>
void Exchange(host::RenderData& settings, Effect* first, const std::vector<EffectDraft>& drafts,
              void (host::RenderData::*insert)(Effect*, Effect*)) {
  while (Effect* effect = first) {
    first = effect->GetNext();
    Effect::Free(effect);
  }
  Effect* last = nullptr;
  for (const EffectDraft& draft : drafts) {
    Effect* effect = Effect::Alloc(draft.type);
    effect->SetName(draft.name);
    if (!draft.isOn) effect->SetBit(host::BIT_DISABLED);
    *effect->GetDataInstance() = draft.values;
    (settings.*insert)(effect, last);
    last = effect;
  }
}

class TakingIn {
 public:
  TakingIn(BaseDocument& doc, const StateTextContents& text, const TakeInOptions& options)
      : doc_(doc),
        options_(options),
        elements_(doc, text.elements, result_),
        records_(doc.GetDataInstance()->GetContainer(kStagemarksId)),
        entries_(doc.GetDataInstance()->GetContainer(kStoredEntries)) {
    for (const StoredState& state : ReadStates(doc)) present_.emplace(state.name, state.id);
  }

  Result<TakenIn> Run(const Json& states) {
    for (const Json& state : states) {
      const Status status = Read(state);
      if (!status) return Result<TakenIn>::Failure(status.Message());
    }
    // Nothing from here on depends on the text, so nothing can be refused half-way.
    for (Draft& draft : drafts_) Store(draft);
    if (!drafts_.empty()) {
      doc_.GetDataInstance()->SetContainer(kStagemarksId, records_);
      doc_.GetDataInstance()->SetContainer(kStoredEntries, entries_);
      doc_.SetChanged();
    }
    return std::move(result_);
  }

 private:
  Status Read(const Json& json) {
    const std::string written = RequiredText(json, "name");
    if (options_.isWanted && !options_.isWanted(written)) return {};
    const auto renamed = options_.names.find(written);
    const std::string name = renamed == options_.names.end() ? written : renamed->second;
    if (name.empty()) return Status::Failure("A Stagemark without a name cannot be taken in.");
    if (!taken_.insert(name).second)
      return Status::Failure("Two Stagemarks would be called \"" + name + "\".");
    const auto present = present_.find(name);
    if (present != present_.end() && options_.sameName == SameName::Refused)
      return Status::Failure("There is a Stagemark \"" + name + "\" already.");
    TakenIn::State state;
    state.name = name;
    if (present != present_.end()) {
      const bool kept = options_.sameName == SameName::Kept;
      state.outcome = kept ? TakenIn::Outcome::Kept : TakenIn::Outcome::Replaced;
    }
    if (state.outcome != TakenIn::Outcome::Kept) {
      Draft draft = DraftOf(json, state);
      if (state.records == 0 && state.leftOut > 0 && !options_.evenEmpty)
        return Status::Failure("Nothing of what \"" + name + "\" holds is in the scene.");
      draft.contents.name = host::String(std::string_view(name));
      draft.replaces = present != present_.end();
      draft.contents.id = draft.replaces ? present->second : FreeId();
      // Taken at once, so that the next one gets another.
      if (!draft.replaces) entries_.SetContainer(draft.contents.id, EntryOf(draft));
      drafts_.push_back(std::move(draft));
    }
    result_.states.push_back(std::move(state));
    return {};
  }

  Draft DraftOf(const Json& json, TakenIn::State& state) {
    Draft draft;
    if (json.contains("stored")) {
      // A record that no names fit is taken as one whole.
      draft.stored = ContainerFromJson(json["stored"], link_);
      state.records = 1;
      return draft;
    }
    if (json.contains("date")) {
      draft.contents.date = DateFromText(RequiredText(json, "date"));
      if (!draft.contents.date)
        throw UnreadableText(json["date"].dump() + " is no date like \"2026-03-05T14:07:09\"");
    }
    if (json.contains("renderSettings")) draft.settings = SettingsFrom(json["renderSettings"]);
    if (json.contains("camera")) {
      const Json& camera = json["camera"];
      draft.contents.camera =
          camera.is_object() && camera.empty()
              ? BaseContainer()
              : LinkHolder(kStoredCameraLink, elements_.Find(camera).value_or(0));
    }
    for (const RecordShape& shape : kRecordShapes) {
      if (json.contains(shape.member))
        PartOf(draft.contents, shape.list) = ListFrom(json[shape.member], shape, state);
    }
    return draft;
  }

  SettingsDraft SettingsFrom(const Json& json) {
    SettingsDraft draft;
    draft.isWhole = Required(json, "element").is_string() && json.contains("values");
    if (!draft.isWhole) {
      draft.element = elements_.Find(json["element"]).value_or(0);
      return draft;
    }
    draft.element = elements_.FindExactly(json["element"]);
    draft.name = host::String(std::string_view(RequiredText(json, "name")));
    MembersFromJson(json["values"], KeyNames::Of(host::Rbase, host::Rbase), link_, draft.values);
    draft.effects = EffectsFrom(Required(json, "effects"));
    draft.passes = EffectsFrom(Required(json, "passes"));
    return draft;
  }

  std::vector<EffectDraft> EffectsFrom(const Json& json) {
    std::vector<EffectDraft> effects;
    for (const Json& one : json) {
      EffectDraft effect{.type = NumberOr(one, "type", 0),
                         .name = host::String(std::string_view(RequiredText(one, "name"))),
                         .isOn = !one.contains("on") || one["on"] == true,
                         .values = {}};
      MembersFromJson(Required(one, "values"), KeyNames::Of(effect.type, effect.type), link_,
                      effect.values);
      effects.push_back(std::move(effect));
    }
    return effects;
  }

  BaseContainer ListFrom(const Json& json, const RecordShape& shape, TakenIn::State& state) {
    if (!json.is_array()) throw UnreadableText(std::string("\"") + shape.member + "\" is no list");
    BaseContainer list;
    LONG place = 0;
    for (const Json& one : json) {
      if (!one.is_object())
        throw UnreadableText(std::string("\"") + shape.member + "\" holds what is no record");
      missed_ = false;
      const LONG type = one.contains("element") ? elements_.TypeOf(one["element"]) : 0;
      const BaseContainer record = RecordFromJson(one, shape, type, place, link_);
      ++(missed_ ? state.leftOut : state.records);
      if (!missed_) list.SetContainer(place++, record);
    }
    return list;
  }

  // The first one that is free, as recording chooses it. IDs are only taken meanwhile, so the
  // search goes on from the last one.
  LONG FreeId() const {
    LONG id = lastFree_;
    while (StoredUnder(&entries_, id) || StoredUnder(&records_, id)) ++id;
    return lastFree_ = id;
  }

  static BaseContainer EntryOf(const Draft& draft) {
    BaseContainer entry(draft.contents.id);
    entry.SetString(kStoredName, draft.contents.name);
    if (draft.contents.date) entry.SetContainer(kStoredDate, *draft.contents.date);
    entry.SetBool(kStoredCurrent, host::FALSE);
    return entry;
  }

  void Store(Draft& draft) {
    const LONG id = draft.contents.id;
    if (draft.stored) {
      draft.stored->SetId(id);
      draft.stored->SetString(kStoredName, draft.contents.name);
      records_.SetContainer(id, *draft.stored);
    } else {
      if (draft.settings) draft.contents.settings = LinkHolder(kStoredSettings, SettingsFor(draft));
      records_.SetContainer(id, Assembled(draft.contents));
    }
    BaseContainer entry = draft.replaces ? entries_.GetContainer(id) : EntryOf(draft);
    // A replaced Stagemark keeps its entry, and with it the star; one that stood in no list gets
    // one.
    if (entry.GetCount() == 0) entry = EntryOf(draft);
    if (draft.contents.date) entry.SetContainer(kStoredDate, *draft.contents.date);
    entries_.SetContainer(id, entry);
  }

  // Those of the scene where they say the same, those that the Stagemark has, or new ones.
  NodeId SettingsFor(const Draft& draft) {
    const SettingsDraft& wanted = *draft.settings;
    const auto* there = AsRenderData(FindNode(&doc_, wanted.element));
    if (!wanted.isWhole || (there && wanted.IsAs(*there))) return wanted.element;
    host::RenderData* settings =
        draft.replaces ? RecordedSettings(doc_, records_.GetContainer(draft.contents.id)) : nullptr;
    if (!settings) {
      settings = host::RenderData::Alloc();
      host::RenderData* last = doc_.GetFirstRenderData();
      while (last && last->GetNext()) last = last->GetNext();
      doc_.InsertRenderData(settings, nullptr, last);
    }
    settings->SetName(wanted.name);
    *settings->GetDataInstance() = wanted.values;
    Exchange(*settings, settings->GetFirstVideoPost(), wanted.effects,
             &host::RenderData::InsertVideoPost);
    Exchange(*settings, settings->GetFirstMultipass(), wanted.passes,
             &host::RenderData::InsertMultipass);
    return IdOf(*settings);
  }

  BaseDocument& doc_;
  const TakeInOptions& options_;
  TakenIn result_;
  ElementFinder elements_;
  bool missed_ = false;  // a link of the record that is read
  TextToLink link_ = [this](const Json& text) {
    const auto id = elements_.Find(text);
    missed_ |= !id;
    return id;
  };
  BaseContainer records_;
  BaseContainer entries_;
  std::unordered_map<std::string, LONG> present_;
  std::set<std::string> taken_;
  std::vector<Draft> drafts_;
  mutable LONG lastFree_ = 0;
};

}  // namespace

Result<TakenIn> TakeInContents(BaseDocument& doc, const StateTextContents& text,
                               const TakeInOptions& options) {
  return TakingIn(doc, text, options).Run(text.states);
}

Result<TakenIn> TakeInStates(BaseDocument& doc, std::string_view text,
                             const TakeInOptions& options) {
  return WhereReadable<TakenIn>([&] { return TakeInContents(doc, ParseStateText(text), options); });
}

}  // namespace engine
