#pragma once
// Internal to the spatial index: a dictionary from values to the 32-bit ids under which the
// caller keeps them, by open addressing. The table holds ids only; the values stay in the
// caller's array, which every call that compares values is given. Each slot keeps 32 bits
// of its value's hash beside the id, so that probing compares values only on a hash match
// and removal finds home slots without reading values.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "orvane/spatial/BulkMemory.h"

namespace orvane::internal {

template <class T>
class TIdHashTable {
 public:
  // The id of Data among the entered ids, or -1. Values[id] is the value of id.
  std::int32_t Find(const T& Data, std::span<const T> Values) const {
    if (FSlots.empty()) return -1;
    const std::uint32_t h = HashOf(Data);
    for (std::size_t i = Home(h);; i = (i + 1) & FMask) {
      const TSlot& slot = FSlots[i];
      if (slot.Id < 0) return -1;
      if (slot.Hash == h && Values[At(slot.Id)] == Data) return slot.Id;
    }
  }
  // Room for Entries ids at a load of at most one half; entered ids stay.
  void Reserve(std::size_t Entries) {
    if (Entries * 2 <= FSlots.size()) return;
    std::size_t size = 16;
    while (size < Entries * 2) size *= 2;
    TArray<TSlot> old(size);
    old.swap(FSlots);
    FMask = size - 1;
    for (const TSlot& slot : old) {
      if (slot.Id >= 0) Place(slot);
    }
  }
  // Enters Id with its value; the room must be reserved.
  void Insert(std::int32_t Id, const T& Data) { Place({HashOf(Data), Id}); }
  // Enters the ids 0 .. Values.size() - 1 into an empty table with room for them, visiting
  // the table in the order of their home slots so that it is swept about once. False, with
  // the table part filled, when a value is met twice.
  bool Build(std::span<const T> Values) {
    const std::size_t n = Values.size();
    TArray<std::uint32_t> hashes(n);
    for (std::size_t i = 0; i < n; ++i) hashes[i] = HashOf(Values[i]);
    const int bits = std::countr_zero(FSlots.size());
    const int shift = std::max(bits - 16, 0);
    std::vector<std::uint32_t> start((std::size_t{1} << (bits - shift)) + 1, 0);
    for (const std::uint32_t h : hashes) ++start[(Home(h) >> shift) + 1];
    for (std::size_t b = 1; b < start.size(); ++b) start[b] += start[b - 1];
    TArray<std::int32_t> order(n);
    for (std::size_t i = 0; i < n; ++i) order[start[Home(hashes[i]) >> shift]++] = static_cast<std::int32_t>(i);
    for (const std::int32_t id : order) {
      const std::uint32_t h = hashes[At(id)];
      std::size_t i = Home(h);
      for (; FSlots[i].Id >= 0; i = (i + 1) & FMask) {
        if (FSlots[i].Hash == h && Values[At(FSlots[i].Id)] == Values[At(id)]) return false;
      }
      FSlots[i] = {h, id};
    }
    return true;
  }
  // Takes Id, whose value is Data, out by shifting back the entries of its probe run, so
  // that no tombstones build up.
  void Erase(std::int32_t Id, const T& Data) {
    std::size_t i = Home(HashOf(Data));
    while (FSlots[i].Id != Id) i = (i + 1) & FMask;
    for (std::size_t j = (i + 1) & FMask; FSlots[j].Id >= 0; j = (j + 1) & FMask) {
      const std::size_t home = Home(FSlots[j].Hash);
      const bool stays = i <= j ? (i < home && home <= j) : (i < home || home <= j);
      if (stays) continue;
      FSlots[i] = FSlots[j];
      i = j;
    }
    FSlots[i] = TSlot();
  }
  // Forgets all ids and frees the table.
  void Clear() {
    FSlots = {};
    FMask = 0;
  }

 private:
  template <class V>
  using TArray = std::vector<V, detail::TBulkAllocator<V>>;

  struct TSlot {
    std::uint32_t Hash = 0;
    std::int32_t Id = -1;  // -1 for an empty slot
  };

  static std::size_t At(std::int32_t Id) { return static_cast<std::size_t>(Id); }
  static std::uint32_t HashOf(const T& Data) {
    std::uint64_t h = static_cast<std::uint64_t>(std::hash<T>{}(Data));
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdULL;
    h ^= h >> 33;
    return static_cast<std::uint32_t>(h);
  }
  std::size_t Home(std::uint32_t Hash) const { return Hash & FMask; }
  void Place(const TSlot& Slot) {
    std::size_t i = Home(Slot.Hash);
    while (FSlots[i].Id >= 0) i = (i + 1) & FMask;
    FSlots[i] = Slot;
  }

  TArray<TSlot> FSlots;
  std::size_t FMask = 0;
};

}  // namespace orvane::internal
