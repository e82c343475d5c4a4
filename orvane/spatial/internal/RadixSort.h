#pragma once
// Internal to the spatial index: a stable sort of records by a double key, radix sorted on
// the key's bits when there are many records.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane::internal {

// From this many records on, StableSortByKey sorts by radix; below, std::stable_sort is
// quicker.
inline constexpr std::size_t RadixSortMinCount = 4096;

// An unsigned key in the order of the doubles (-0 with +0). NaN must not occur.
inline std::uint64_t OrderedBits(double X) {
  const auto u = std::bit_cast<std::uint64_t>(X + 0.0);
  return (u >> 63) != 0 ? ~u : u | (std::uint64_t{1} << 63);
}

// Sorts Items by Key(item), a double, ascending; equal keys keep their order. Scratch is
// working room of the same type, handed in so that repeated sorts reuse it. The radix sort
// takes 11 bits a pass and skips the passes in which all keys agree.
template <class TVector, class TKey>
void StableSortByKey(TVector& Items, TVector& Scratch, const TKey& Key) {
  using TItem = typename TVector::value_type;
  const std::size_t n = Items.size();
  if (n < RadixSortMinCount) {
    std::stable_sort(Items.begin(), Items.end(), [&](const TItem& a, const TItem& b) { return Key(a) < Key(b); });
    return;
  }
  constexpr int kBits = 11;
  constexpr int kPasses = (64 + kBits - 1) / kBits;
  constexpr std::size_t kBuckets = std::size_t{1} << kBits;
  std::vector<std::size_t> counts(kPasses * kBuckets, 0);
  for (const TItem& item : Items) {
    const std::uint64_t k = OrderedBits(Key(item));
    for (std::size_t p = 0; p < kPasses; ++p) ++counts[p * kBuckets + ((k >> (p * kBits)) & (kBuckets - 1))];
  }
  Scratch.resize(n);
  for (std::size_t p = 0; p < kPasses; ++p) {
    std::size_t* count = counts.data() + p * kBuckets;
    if (std::find(count, count + kBuckets, n) != count + kBuckets) continue;
    std::size_t sum = 0;
    for (std::size_t b = 0; b < kBuckets; ++b) {
      const std::size_t c = count[b];
      count[b] = sum;
      sum += c;
    }
    for (const TItem& item : Items) Scratch[count[(OrderedBits(Key(item)) >> (p * kBits)) & (kBuckets - 1)]++] = item;
    Items.swap(Scratch);
  }
}

}  // namespace orvane::internal
