#include "host/String.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "engine/core/TextBlock.h"
#include "engine/core/Utf8.h"

namespace engine {

TextBlock* TextBlock::WithCapacity(std::size_t capacity) {
  if (capacity > INT32_MAX) throw std::length_error("A text is limited to 2 GB");
  auto* block = new (::operator new(sizeof(TextBlock) + capacity)) TextBlock;
  block->capacity = static_cast<std::uint32_t>(capacity);
  return block;
}

TextBlock* TextBlock::Make(std::string_view bytes) {
  if (bytes.empty()) return nullptr;
  TextBlock* block = WithCapacity(bytes.size());
  std::memcpy(block->Bytes(), bytes.data(), bytes.size());
  block->size = block->capacity;
  return block;
}

void TextBlock::Release(TextBlock* block) {
  if (!block || !block->owners.Release()) return;
  block->~TextBlock();
  ::operator delete(block);
}

host::String TextBlock::Share(TextBlock* block) {
  host::String text;
  Retain(block);
  text.text_ = block;
  return text;
}

TextBlock* TextBlock::Append(TextBlock* block, std::string_view bytes) {
  if (bytes.empty()) return block;
  const std::string_view before = View(block);
  const std::size_t size = before.size() + bytes.size();
  TextBlock* target = block;
  if (!block || !block->owners.Unique() || block->capacity < size) {
    target = WithCapacity(
        before.empty() ? size
                       : std::min<std::size_t>(std::max(size, 2 * before.size()), INT32_MAX));
    std::copy(before.begin(), before.end(), target->Bytes());
  }
  // The appended bytes may be those of `block` itself, so it goes only afterwards.
  std::copy(bytes.begin(), bytes.end(), target->Bytes() + before.size());
  target->size = static_cast<std::uint32_t>(size);
  target->characters.store(-1, std::memory_order_relaxed);
  if (target != block) Release(block);
  return target;
}

std::int32_t TextBlock::CountCharacters() const {
  std::int32_t count = characters.load(std::memory_order_relaxed);
  if (count >= 0) return count;
  count = static_cast<std::int32_t>(engine::CountCharacters(View(this)));
  characters.store(count, std::memory_order_relaxed);
  return count;
}

namespace {

// Byte offset of character `index`, without a walk where every character is one byte.
std::size_t OffsetOf(const TextBlock* block, std::int64_t index) {
  if (!block || index <= 0) return 0;
  if (index >= block->CountCharacters()) return block->size;
  const auto at = static_cast<std::size_t>(index);
  return block->CountCharacters() == static_cast<std::int64_t>(block->size)
             ? at
             : ByteOffset(TextBlock::View(block), at);
}

// Walks a text by characters and knows the index of the character it stands at.
struct CharacterWalk {
  std::string_view text;
  std::size_t at = 0;
  host::LONG index = 0;

  // Goes on to the first character boundary at or behind `target`; true when that is `target`.
  bool Reach(std::size_t target) {
    while (at < target) Step();
    return at == target;
  }
  void Step() {
    at += CharacterBytes(text, at);
    ++index;
  }
  // Goes to the next place, from here on, where whole characters spell `wanted`; false when there
  // is none.
  bool Find(std::string_view wanted) {
    for (std::size_t hit = text.find(wanted, at); hit != std::string_view::npos;
         hit = text.find(wanted, at)) {
      if (!Reach(hit)) continue;
      CharacterWalk end = *this;
      if (end.Reach(hit + wanted.size())) return true;
      Step();
    }
    return false;
  }
};

}  // namespace
}  // namespace engine

namespace host {

using engine::TextBlock;

String::String(const CHAR* utf8) : text_(utf8 ? TextBlock::Make(utf8) : nullptr) {}
String::String(std::string_view utf8) : text_(TextBlock::Make(utf8)) {}
String::String(const String& other) : text_(other.text_) { TextBlock::Retain(text_); }
String::String(String&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
String::~String() { TextBlock::Release(text_); }

String& String::operator=(const String& other) { return *this = String(other); }

String& String::operator=(String&& other) noexcept {
  std::swap(text_, other.text_);
  return *this;
}

LONG String::GetLength() const { return text_ ? text_->CountCharacters() : 0; }

std::string_view String::View() const { return TextBlock::View(text_); }

Bool String::Content() const { return text_ != nullptr; }

// Well-formed UTF-8 sorts by bytes as it does by code points.
LONG String::Compare(const String& other) const {
  if (text_ == other.text_) return 0;
  const int order = View().compare(other.View());
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

Bool String::operator==(const String& other) const {
  return text_ == other.text_ || View() == other.View();
}

void String::Insert(LONG pos, const String& text) {
  if (!text.Content()) return;
  const std::size_t offset = engine::OffsetOf(text_, pos);
  String result(View().substr(0, offset));
  result.text_ = TextBlock::Append(result.text_, text.View());
  result.text_ = TextBlock::Append(result.text_, View().substr(offset));
  *this = std::move(result);
}

void String::Delete(LONG pos, LONG count) {
  const std::size_t from = engine::OffsetOf(text_, pos);
  const std::size_t to = engine::OffsetOf(text_, static_cast<LLONG>(pos) + std::max(count, 0));
  if (from >= to) return;
  String result(View().substr(0, from));
  result.text_ = TextBlock::Append(result.text_, View().substr(to));
  *this = std::move(result);
}

String String::SubStr(LONG start, LONG count) const {
  const std::size_t from = engine::OffsetOf(text_, start);
  const std::size_t to = engine::OffsetOf(text_, static_cast<LLONG>(start) + std::max(count, 0));
  return from < to ? String(View().substr(from, to - from)) : String();
}

Bool String::FindFirst(const String& text, LONG* pos, LONG start) const {
  if (start > GetLength()) return FALSE;
  engine::CharacterWalk walk{View(), engine::OffsetOf(text_, start), std::max(start, 0)};
  if (!walk.Find(text.View())) return FALSE;
  if (pos) *pos = walk.index;
  return TRUE;
}

Bool String::FindLast(const String& text, LONG* pos) const {
  engine::CharacterWalk walk{View()};
  Bool found = FALSE;
  while (walk.Find(text.View())) {
    found = TRUE;
    if (pos) *pos = walk.index;
    if (walk.at == walk.text.size()) break;
    walk.Step();
  }
  return found;
}

String& String::operator+=(const String& other) {
  text_ = TextBlock::Append(text_, other.View());
  return *this;
}

String operator+(const String& a, const String& b) {
  String sum = a;
  sum += b;
  return sum;
}

}  // namespace host
