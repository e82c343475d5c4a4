#include "orvane/spatial/BulkMemory.h"

#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace orvane::detail {

namespace {
constexpr std::size_t kHugePage = std::size_t{2} << 20;
}

void* AllocateBulk(std::size_t Bytes) {
  if (Bytes < kHugePage) return ::operator new(Bytes);
  const std::size_t rounded = (Bytes + kHugePage - 1) / kHugePage * kHugePage;
  void* block = std::aligned_alloc(kHugePage, rounded);
  if (block == nullptr) throw std::bad_alloc();
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  // Only advice: without huge pages the block works the same.
  (void)madvise(block, rounded, MADV_HUGEPAGE);
#endif
  return block;
}

void FreeBulk(void* Block, std::size_t Bytes) noexcept {
  if (Block == nullptr) return;
  if (Bytes < kHugePage) {
    ::operator delete(Block);
  } else {
    std::free(Block);
  }
}

}  // namespace orvane::detail
