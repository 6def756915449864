#include "engine/core/Layout.h"

#include <algorithm>
#include <new>
#include <utility>

namespace engine {

namespace {

constexpr std::size_t kKeptAtHand = 16;  // layouts for each thread
constexpr std::uint16_t kNotAtHand = kKeptAtHand;

// The layouts that a thread made last, by their first keys. Without a constructor or destructor, so
// that reaching them costs no check.
struct RecentLayouts {
  Layout* at[kKeptAtHand];
  bool open;
  bool closed;  // at the end of the thread nothing is kept any more
};
[[gnu::tls_model("initial-exec")]] thread_local constinit RecentLayouts recentLayouts = {};

void LetGo(Layout*& layout) { const SharedReference<Layout> last(std::exchange(layout, nullptr)); }

struct Closing {
  Closing() {}
  ~Closing() {
    recentLayouts.closed = true;
    for (Layout*& layout : recentLayouts.at) LetGo(layout);
  }
};

std::uint16_t PlaceOf(const std::uint64_t* keys) {
  std::uint64_t mixed = 0;
  for (std::uint32_t i = 0; i < kFirstKeys; ++i) mixed = (mixed ^ keys[i]) * 0x9E3779B97F4A7C15U;
  return static_cast<std::uint16_t>((mixed >> 32) % kKeptAtHand);
}

void KeepAtHand(Layout& layout) {
  if (recentLayouts.closed || layout.recent == kNotAtHand) return;
  if (!recentLayouts.open) {
    static thread_local const Closing closing;
    recentLayouts.open = true;
  }
  LetGo(recentLayouts.at[layout.recent]);
  layout.owners.Retain();
  recentLayouts.at[layout.recent] = &layout;
}

bool IsAtHand(const Layout& layout) {
  return layout.recent != kNotAtHand && recentLayouts.at[layout.recent] == &layout;
}

// Whether nobody but one body of this thread, and this thread's store, holds it.
bool IsOwn(const Layout& layout) {
  return layout.owners.Unique() || (layout.owners.Count() == 2 && IsAtHand(layout));
}

bool NumbersOnly(const std::uint64_t* keys, std::uint32_t count) {
  return std::none_of(keys, keys + count, [](std::uint64_t key) { return IsShared(TypeIn(key)); });
}

// With the first `count` keys of an array, and room for one more.
SharedReference<Layout> NewLayout(const std::uint64_t* keys, std::uint32_t count) {
  const std::uint32_t capacity = std::max(kIndexedEntries, std::bit_ceil(count + 1));
  auto* layout = new (::operator new(Layout::Bytes(capacity))) Layout;
  layout->size = static_cast<std::uint16_t>(count);
  layout->capacity = static_cast<std::uint16_t>(capacity);
  layout->numbersOnly = NumbersOnly(keys, count);
  std::copy_n(keys, count, layout->Keys());
  IndexAgain(layout->Keys(), capacity, count);
  layout->recent = count < kFirstKeys ? kNotAtHand : PlaceOf(keys);
  KeepAtHand(*layout);
  return SharedReference<Layout>(layout);
}

// Puts the layout in its place that this thread made last of those which begin alike, if its first
// `count` keys are the same but for `key` at `at`: what is done to one container is mostly done to
// the next one, too.
bool TakeRecent(SharedReference<Layout>& layout, std::uint32_t count, std::uint32_t at,
                std::uint64_t key) {
  if (layout->recent == kNotAtHand) return false;
  Layout* recent = recentLayouts.at[layout->recent];
  if (!recent || recent->size < count || recent->Keys()[at] != key) return false;
  const std::uint64_t* keys = layout->Keys();
  if (!std::equal(keys, keys + at, recent->Keys())) return false;
  if (at + 1 < count && !std::equal(keys + at + 1, keys + count, recent->Keys() + at + 1))
    return false;
  recent->owners.Retain();
  layout = SharedReference<Layout>(recent);
  return true;
}

// Makes it one that may be changed: with the first `count` keys and room for one more.
Layout& MakeOwn(SharedReference<Layout>& layout, std::uint32_t count) {
  if (!IsOwn(*layout) || count >= layout->capacity) {
    layout = NewLayout(layout->Keys(), count);
  } else if (layout->size != count) {
    IndexAgain(layout->Keys(), layout->capacity, count);
    layout->size = static_cast<std::uint16_t>(count);
  }
  return *layout;
}

}  // namespace

thread_local constinit std::uint32_t Layout::next_ = 0;

void Layout::End(Layout* layout) {
  layout->~Layout();
  ::operator delete(layout);
}

SharedReference<Layout> LayoutBeginningWith(const std::uint64_t* keys) {
  Layout* recent = recentLayouts.at[PlaceOf(keys)];
  if (!recent || recent->size < kFirstKeys || !std::equal(keys, keys + kFirstKeys, recent->Keys()))
    return NewLayout(keys, kFirstKeys);
  recent->owners.Retain();
  return SharedReference<Layout>(recent);
}

void PutKeyBehind(SharedReference<Layout>& layout, std::uint32_t count, std::uint64_t key) {
  if (count < layout->size && layout->Keys()[count] == key) return;
  if (TakeRecent(layout, count + 1, count, key)) return;
  Layout& own = MakeOwn(layout, count);
  own.Keys()[count] = key;
  IndexItem(own.Keys(), own.capacity, count);
  ++own.size;
  own.numbersOnly = own.numbersOnly && !IsShared(TypeIn(key));
}

void PutKeyAt(SharedReference<Layout>& layout, std::uint32_t count, std::uint32_t at,
              std::uint64_t key) {
  if (layout->Keys()[at] == key || TakeRecent(layout, count, at, key)) return;
  Layout& own = MakeOwn(layout, count);
  own.Keys()[at] = key;
  own.numbersOnly = own.numbersOnly && !IsShared(TypeIn(key));
}

void TakeKeyOut(SharedReference<Layout>& layout, std::uint32_t count, std::uint32_t at) {
  if (at + 1 == count) return;
  Layout& own = MakeOwn(layout, count);
  std::uint64_t* keys = own.Keys();
  std::copy(keys + at + 1, keys + count, keys + at);
  --own.size;
  IndexAgain(keys, own.capacity, own.size);
}

}  // namespace engine
