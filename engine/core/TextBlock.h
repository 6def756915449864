// TextBlock: the counted bytes behind String and Filename. Empty text is no block at all,
// everywhere. The number of characters is counted on first use and kept. A block is changed only by
// its single owner.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "engine/core/SharedReference.h"
#include "host/String.h"

namespace engine {

struct TextBlock {
  SharedCount owners;
  std::uint32_t size = 0;      // bytes in use
  std::uint32_t capacity = 0;  // bytes that follow this header
  mutable std::atomic<std::int32_t> characters{-1};

  // A block of one owner with the bytes; null for empty text. Throws std::length_error from 2^31
  // bytes on.
  static TextBlock* Make(std::string_view bytes);
  static TextBlock* WithCapacity(std::size_t capacity);
  static void Retain(TextBlock* block) {
    if (block) block->owners.Retain();
  }
  static void Release(TextBlock* block);

  static std::string_view View(const TextBlock* block) {
    return block ? std::string_view(block->Bytes(), block->size) : std::string_view();
  }
  // The block of a text, still owned by it; and a text that owns another share of the block.
  static TextBlock* Of(const host::String& text) { return text.text_; }
  static host::String Share(TextBlock* block);

  char* Bytes() { return static_cast<char*>(static_cast<void*>(this + 1)); }
  const char* Bytes() const { return static_cast<const char*>(static_cast<const void*>(this + 1)); }
  // The bytes appended in place where `block` has one owner and room, else in a new block with room
  // to grow. Takes the owner's share of `block` and gives back one of the result.
  static TextBlock* Append(TextBlock* block, std::string_view bytes);
  std::int32_t CountCharacters() const;
};

}  // namespace engine
