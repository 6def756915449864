// PageAllocator: memory for the large arrays of a renderer, in pages of their own. One that is
// never written to takes none. What is given back is kept for the next array, up to a bound, since
// handing out new pages takes longer than filling them; the system may take it away when memory
// gets short. Small arrays come from the heap. Any thread.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace engine {

// Arrays of this many bytes and more have pages of their own.
inline constexpr std::size_t kLeastPagedBytes = 2 << 20;
// Pages that were given back are kept for reuse up to this many bytes.
inline constexpr std::size_t kMostKeptPageBytes = 96 << 20;

// Throws std::bad_alloc when there is no more. Whatever was there before may be in it.
void* TakePages(std::size_t bytes);
// `pages` came from TakePages for as many bytes.
void GivePagesBack(void* pages, std::size_t bytes) noexcept;
// Bytes that are kept at this moment.
std::size_t KeptPageBytes();

// Elements that are made without a value are not initialized: who asks for them fills them.
template <class Element>
class PageAllocator {
 public:
  static_assert(std::is_trivially_copyable_v<Element>);
  using value_type = Element;

  PageAllocator() = default;
  template <class Other>
  PageAllocator(const PageAllocator<Other>&) noexcept {}
  bool operator==(const PageAllocator&) const = default;

  Element* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / 2 / sizeof(Element)) throw std::bad_alloc();
    const std::size_t bytes = count * sizeof(Element);
    return static_cast<Element*>(bytes < kLeastPagedBytes ? ::operator new(bytes)
                                                          : TakePages(bytes));
  }
  void deallocate(Element* elements, std::size_t count) noexcept {
    const std::size_t bytes = count * sizeof(Element);
    bytes < kLeastPagedBytes ? ::operator delete(elements) : GivePagesBack(elements, bytes);
  }
  void construct(Element*) noexcept {}
  template <class... Values>
  void construct(Element* element, Values&&... values) {
    ::new (static_cast<void*>(element)) Element{std::forward<Values>(values)...};
  }
};

template <class Element>
using PagedVector = std::vector<Element, PageAllocator<Element>>;

}  // namespace engine
