#pragma once
// Memory for the large flat arrays of the spatial index. Blocks of 2 MiB and more are
// aligned to 2 MiB and, where the system offers it, backed by huge pages, so that filling a
// tree of millions of boxes costs a few hundred page faults rather than hundreds of
// thousands. Smaller blocks come from the ordinary heap.

#include <cstddef>
#include <new>

#include "orvane/foundation/Export.h"

// TRTree's allocator expands in the host's code and calls these two there, so they belong
// to the library's binary interface; hosts do not call them directly.
namespace orvane::detail {

ORVANE_API void* AllocateBulk(std::size_t Bytes);
ORVANE_API void FreeBulk(void* Block, std::size_t Bytes) noexcept;

template <class T>
struct TBulkAllocator {
  using value_type = T;

  TBulkAllocator() = default;
  template <class U>
  constexpr TBulkAllocator(const TBulkAllocator<U>&) noexcept {}

  T* allocate(std::size_t N) {
    if (N > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(AllocateBulk(N * sizeof(T)));
  }
  void deallocate(T* Block, std::size_t N) noexcept { FreeBulk(Block, N * sizeof(T)); }

  template <class U>
  friend constexpr bool operator==(const TBulkAllocator&, const TBulkAllocator<U>&) noexcept {
    return true;
  }
};

}  // namespace orvane::detail
