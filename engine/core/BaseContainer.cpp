#include "host/BaseContainer.h"

#include <algorithm>
#include <utility>

#include "engine/core/ContainerCompare.h"
#include "engine/core/LongBody.h"
#include "engine/core/Value.h"
#include "host/DescID.h"

namespace engine {

namespace {

// A long list with its positions for keys.
bool IsNumbered(const ContainerBody* list) {
  return list && list->IsLong() && AsLong(list)->order == KeyOrder::kDense;
}

// Whether such a list holds that very record, or a short one alike to the bit, under the key.
// Recording what has not changed asks nothing else. False says nothing.
bool HoldsAlike(const ContainerBody* list, host::LONG key, const ContainerBody* record) {
  if (!IsNumbered(list)) return false;
  const auto position = static_cast<std::uint32_t>(key);
  if (position >= list->size) return false;
  const Chunk& chunk = *AsLong(list)->chunks[position >> kChunkShift].chunk;
  const Entry& entry = chunk.Entries()[position % kChunkEntries];
  if (entry.type != host::DA_CONTAINER) return false;
  FetchRecordAhead(chunk.All(), position % kChunkEntries);
  const auto* held = BlockOf<const ContainerBody>(entry.bits);
  return held == record ||
         (held && record && record->IsShort() && held->IsShort() && AlikeShort(*held, *record));
}

}  // namespace

void ContainerAccess::Set(host::BaseContainer& container, host::LONG key, Value value) {
  const ContainerBody* body = container.body_;
  // A recording's lists grow by their next number.
  if (IsNumbered(body) && static_cast<std::uint32_t>(key) == body->size)
    return Append(container, key, value);
  const std::optional<Entry> present = FindEntry(container.body_, key);
  if (!present) return Append(container, key, value);
  if (!SameValues(present->Get(), value, OwnIds::kCompared)) ReplaceAt(container, key, value);
}

// The value may live in an instance that ends when it is replaced, so it is shared first.
void ContainerAccess::ReplaceAt(host::BaseContainer& container, host::LONG key, Value value) {
  Retain(value);
  PrepareWrite(container);
  DropInstance(container, key);
  Moved(container, ReplaceEntry(container.body_, key, value));
}

void ContainerAccess::Append(host::BaseContainer& container, host::LONG key, Value value) {
  Retain(value);
  PrepareWrite(container);
  Moved(container, AppendEntry(container.body_, key, value));
}

// The key that comes next in the layout is not among those before it.
void ContainerAccess::SetLaidOut(host::BaseContainer& container, host::LONG key, Value value) {
  ContainerBody& body = *container.body_;
  const Layout& layout = *body.Keys();
  const std::uint64_t keyAndType = KeyAndType(key, value.type);
  if (body.behind < body.size && layout.Keys()[body.behind] == keyAndType) {
    body.Values()[body.behind++] = value.bits;
  } else if (body.size < std::min<std::uint32_t>(body.capacity, layout.size) &&
             layout.Keys()[body.size] == keyAndType) {
    body.Values()[body.size++] = value.bits;
  } else {
    SearchAndSetNumber(container, key, value);
  }
}

// Calls nothing but at its ends, as does AppendNumber: each costs little more than its search.
void ContainerAccess::SearchAndSetNumber(host::BaseContainer& container, host::LONG key,
                                         Value value) {
  ContainerBody& body = *container.body_;
  const std::uint32_t position = FindShort(body, key);
  if (position == kNoPosition) return AppendNumber(container, key, value);
  if (ShortEntryAt(body, position).type != value.type) return Set(container, key, value);
  body.BitsAt(position) = value.bits;
  body.ExpectBehind(position);
}

void ContainerAccess::SetIdOfShared(host::BaseContainer& container, host::LONG id) {
  if (container.GetId() == id) return;
  PrepareWrite(container);
  container.body_->id = id;
}

void ContainerAccess::AppendNumber(host::BaseContainer& container, host::LONG key, Value value) {
  container.body_ = AppendEntry(container.body_, key, value);
}

}  // namespace engine

namespace host {

using engine::ContainerAccess;
using engine::ContainerBody;
using engine::Entry;
using engine::Value;
using engine::ValueAccess;

namespace {

Value ValueOf(const std::optional<Entry>& entry) { return entry ? entry->Get() : Value(); }

}  // namespace

BaseContainer::BaseContainer(LONG id) : body_(id == 0 ? nullptr : engine::NewBody(id)) {}

BaseContainer::BaseContainer(const BaseContainer& other) : body_(other.body_) {
  engine::RetainBody(body_);
}

BaseContainer::BaseContainer(BaseContainer&& other) noexcept {
  ContainerAccess::Take(*this, other);
}

BaseContainer::~BaseContainer() {
  if (body_ || anchor_) ContainerAccess::Destroy(*this);
}

BaseContainer& BaseContainer::operator=(const BaseContainer& other) {
  if (this == &other) return *this;
  // The other one may be an instance of this one and end here, so its body is kept alive first.
  ContainerBody* body = other.body_;
  engine::RetainBody(body);
  ContainerAccess::DropInstances(*this);
  if (ContainerAccess::IsInstance(*this) &&
      engine::SameBodies(body_, body, engine::OwnIds::kCompared)) {
    engine::ReleaseBody(body);
  } else {
    ContainerAccess::Replace(*this, body);
  }
  return *this;
}

BaseContainer& BaseContainer::operator=(BaseContainer&& other) noexcept {
  const bool owned = !anchor_ && !other.anchor_;
  if (owned) {
    std::swap(body_, other.body_);
    return *this;
  }
  return *this = static_cast<const BaseContainer&>(other);
}

void BaseContainer::SetId(LONG id) { ContainerAccess::SetId(*this, id); }

LONG BaseContainer::GetId() const { return engine::IdOf(body_); }

LONG BaseContainer::GetIndexId(LONG index) const {
  const std::optional<Entry> entry = engine::EntryAt(body_, static_cast<ULONG>(index));
  return entry ? entry->key : NOTOK;
}

LONG BaseContainer::FindIndex(LONG id) const { return engine::FindPosition(body_, id); }

LONG BaseContainer::GetType(LONG id) const { return ValueOf(engine::FindEntry(body_, id)).type; }

LONG BaseContainer::GetCount() const { return static_cast<LONG>(engine::SizeOf(body_)); }

GeData BaseContainer::GetIndexData(LONG index) const {
  return ValueAccess::Share(ValueOf(engine::EntryAt(body_, static_cast<ULONG>(index))));
}

GeData BaseContainer::GetData(LONG id) const {
  return ValueAccess::Share(ValueOf(engine::FindEntry(body_, id)));
}

void BaseContainer::SetData(LONG id, const GeData& value) {
  const Value data = ValueAccess::Of(value);
  engine::IsShared(data.type) ? ContainerAccess::Set(*this, id, data)
                              : ContainerAccess::SetNumber(*this, id, data);
}

Bool BaseContainer::SetParameter(const DescID& id, const GeData& value) {
  if (id.GetDepth() == 0) return FALSE;
  SetData(id[0].id, value);
  return TRUE;
}

Bool BaseContainer::GetParameter(const DescID& id, GeData& value) const {
  if (id.GetDepth() == 0) return FALSE;
  const std::optional<Entry> entry = engine::FindEntry(body_, id[0].id);
  if (!entry) return FALSE;
  value = ValueAccess::Share(entry->Get());
  return TRUE;
}

Bool BaseContainer::RemoveData(LONG id) {
  if (!engine::FindEntry(body_, id)) return FALSE;
  ContainerAccess::PrepareWrite(*this);
  ContainerAccess::DropInstance(*this, id);
  ContainerAccess::Moved(*this, engine::RemoveEntry(body_, id));
  return TRUE;
}

void BaseContainer::FlushAll() {
  ContainerAccess::DropInstances(*this);
  if (GetCount() == 0) return;
  if (!anchor_ && body_->owners.Unique()) {
    body_ = engine::ClearEntries(body_);
  } else {
    ContainerAccess::Replace(*this, GetId() == 0 ? nullptr : engine::NewBody(GetId()));
  }
}

void BaseContainer::MergeContainer(const BaseContainer& source) {
  if (source.GetCount() == 0) return;
  // A copy, as the source may be this one, its owner or an instance of it.
  const BaseContainer entries = source;
  if (GetCount() == 0) {
    const LONG id = GetId();
    *this = entries;
    return SetId(id);
  }
  ULONG next = 0;
  for (auto some = engine::NextEntries(entries.body_, next); !some.empty();
       some = engine::NextEntries(entries.body_, next)) {
    for (const Entry& entry : some) ContainerAccess::Set(*this, entry.key, entry.Get());
  }
}

Bool BaseContainer::operator==(const BaseContainer& other) const {
  return engine::SameBodies(body_, other.body_, engine::OwnIds::kIgnored);
}

Bool BaseContainer::GetBool(LONG id, Bool preset) const {
  const std::optional<Entry> entry = engine::FindEntry(body_, id);
  return entry ? engine::BoolOf(entry->Get()) : preset;
}

LONG BaseContainer::GetLong(LONG id, LONG preset) const {
  const std::optional<Entry> entry = engine::FindEntry(body_, id);
  return entry ? engine::LongOf(entry->Get()) : preset;
}

Real BaseContainer::GetReal(LONG id, Real preset) const {
  const std::optional<Entry> entry = engine::FindEntry(body_, id);
  return entry ? engine::RealOf(entry->Get()) : preset;
}

Vector BaseContainer::GetVector(LONG id) const {
  return engine::VectorOf(ValueOf(engine::FindEntry(body_, id)));
}
BaseTime BaseContainer::GetTime(LONG id) const {
  return engine::TimeOf(ValueOf(engine::FindEntry(body_, id)));
}
String BaseContainer::GetString(LONG id) const {
  return engine::StringOf(ValueOf(engine::FindEntry(body_, id)));
}
Filename BaseContainer::GetFilename(LONG id) const {
  return engine::FilenameOf(ValueOf(engine::FindEntry(body_, id)));
}

BaseContainer BaseContainer::GetContainer(LONG id) const {
  const Value value = ValueOf(engine::FindEntry(body_, id));
  return value.type == DA_CONTAINER
             ? ContainerAccess::Share(engine::BlockOf<ContainerBody>(value.bits))
             : BaseContainer();
}

void BaseContainer::SetBool(LONG id, Bool value) { SetLong(id, value ? 1 : 0); }
void BaseContainer::SetLong(LONG id, LONG value) {
  ContainerAccess::SetNumber(*this, id, {DA_LONG, engine::BitsOf(value)});
}
void BaseContainer::SetReal(LONG id, Real value) {
  ContainerAccess::SetNumber(*this, id, {DA_REAL, engine::BitsOf(value)});
}
void BaseContainer::SetVector(LONG id, const Vector& value) { SetData(id, GeData(value)); }
void BaseContainer::SetTime(LONG id, const BaseTime& value) { SetData(id, GeData(value)); }
void BaseContainer::SetString(LONG id, const String& value) { SetData(id, GeData(value)); }
void BaseContainer::SetFilename(LONG id, const Filename& value) { SetData(id, GeData(value)); }
void BaseContainer::SetContainer(LONG id, const BaseContainer& value) {
  if (engine::HoldsAlike(body_, id, value.body_)) return;
  ContainerAccess::Set(*this, id, {DA_CONTAINER, engine::BitsOf(value.body_)});
}

BaseContainer* BaseContainer::GetContainerInstance(LONG id) {
  return ContainerAccess::Instance(*this, id);
}

// Handing out changes what the container object knows, never what it holds.
const BaseContainer* BaseContainer::GetContainerInstance(LONG id) const {
  return ContainerAccess::Instance(const_cast<BaseContainer&>(*this), id);
}

}  // namespace host
