#pragma once
// The runtime containers: TList<T>, an ordered growable list with a change notification
// that derived classes override; TObjectList<T>, a list of object pointers that may own
// them; and TPair<K, V>.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvane/foundation/Exception.h"

namespace orvane {

enum class TCollectionNotification : std::uint8_t { cnAdded, cnRemoved, cnExtracted };

template <class K, class V>
struct TPair {
  K Key{};
  V Value{};

  constexpr TPair() = default;
  constexpr TPair(const K& AKey, const V& AValue) : Key(AKey), Value(AValue) {}
};

namespace internal {
[[noreturn]] inline void ListIndexError(long long Index) {
  throw EListError(Format("List index out of bounds (%d)", Index));
}
}  // namespace internal

template <class T>
class TList {
 public:
  // Three-way comparer: negative, zero or positive.
  using TComparer = std::function<int(const T&, const T&)>;
  // Called by the default Notify, after the list has changed.
  using TNotifyEvent = std::function<void(const T& Item, TCollectionNotification Action)>;

  TList() = default;
  TList(std::initializer_list<T> Items) : FItems(Items) {}
  // Takes the array over without copying it; a new list notifies no one.
  explicit TList(std::vector<T>&& Items) : FItems(std::move(Items)) {}
  // Destruction sends no notifications (derived classes are already gone by then).
  virtual ~TList() = default;
  TList(const TList&) = delete;
  TList& operator=(const TList&) = delete;
  // Moving hands the items and the OnNotify handler over and leaves the source empty,
  // without a handler. The items stay in a list, so no notification is sent for them.
  TList(TList&& Other) noexcept : OnNotify(std::exchange(Other.OnNotify, nullptr)), FItems(std::move(Other.FItems)) {
    Other.FItems.clear();
  }
  // The receiver's own items go first, as Clear removes them (notified, so that an owning
  // list frees them); then it takes Other's items and handler as the move constructor does.
  TList& operator=(TList&& Other) {
    if (this == &Other) return *this;
    Clear();
    FItems = std::move(Other.FItems);
    Other.FItems.clear();
    OnNotify = std::exchange(Other.OnNotify, nullptr);
    return *this;
  }

  int Count() const { return static_cast<int>(FItems.size()); }
  bool IsEmpty() const { return FItems.empty(); }
  int GetCapacity() const { return static_cast<int>(FItems.capacity()); }
  void SetCapacity(int Value) { FItems.reserve(static_cast<std::size_t>(std::max(Value, 0))); }

  // Checked access; EListError "List index out of bounds (i)" outside 0 .. Count - 1.
  const T& operator[](int Index) const { return FItems[CheckIndex(Index)]; }
  const T& GetItem(int Index) const { return FItems[CheckIndex(Index)]; }
  // Replaces an item: the old one is notified as removed, the new one as added.
  void SetItem(int Index, const T& Value) {
    const std::size_t i = CheckIndex(Index);
    if constexpr (std::is_pointer_v<T>) {
      // Putting an object back in its own slot must not let an owning list free it.
      if (FItems[i] == Value) return;
    }
    T old = std::move(FItems[i]);
    FItems[i] = Value;
    Notify(old, TCollectionNotification::cnRemoved);
    Notify(FItems[i], TCollectionNotification::cnAdded);
  }
  const T& First() const { return GetItem(0); }
  const T& Last() const { return GetItem(Count() - 1); }

  int Add(const T& Value) {
    FItems.push_back(Value);
    Notify(FItems.back(), TCollectionNotification::cnAdded);
    return Count() - 1;
  }
  void AddRange(const std::vector<T>& Values) {
    for (const T& v : Values) Add(v);
  }
  void Insert(int Index, const T& Value) {
    if (Index < 0 || Index > Count()) internal::ListIndexError(Index);
    FItems.insert(FItems.begin() + Index, Value);
    Notify(FItems[static_cast<std::size_t>(Index)], TCollectionNotification::cnAdded);
  }
  void Delete(int Index) { RemoveAt(Index, TCollectionNotification::cnRemoved); }
  void DeleteRange(int Index, int ACount) {
    if (ACount < 0 || Index < 0 || Index + ACount > Count())
      internal::ListIndexError(Index < 0 ? Index : Index + ACount);
    std::vector<T> gone(std::make_move_iterator(FItems.begin() + Index),
                        std::make_move_iterator(FItems.begin() + Index + ACount));
    FItems.erase(FItems.begin() + Index, FItems.begin() + Index + ACount);
    for (const T& v : gone) Notify(v, TCollectionNotification::cnRemoved);
  }
  // Removes the first item equal to Value; its former index, or -1.
  int Remove(const T& Value) {
    const int i = IndexOf(Value);
    if (i >= 0) Delete(i);
    return i;
  }
  // Keeps the storage for the items to come, so that a list cleared and refilled in a loop
  // allocates nothing once it has grown.
  void Clear() {
    std::vector<T> gone;
    gone.swap(FItems);
    for (const T& v : gone) Notify(v, TCollectionNotification::cnRemoved);
    if (FItems.empty()) {
      gone.clear();
      FItems.swap(gone);
    }
  }
  void Exchange(int Index1, int Index2) { std::swap(FItems[CheckIndex(Index1)], FItems[CheckIndex(Index2)]); }
  void Move(int CurIndex, int NewIndex) {
    const std::size_t from = CheckIndex(CurIndex);
    const std::size_t to = CheckIndex(NewIndex);
    if (from < to)
      std::rotate(FItems.begin() + from, FItems.begin() + from + 1, FItems.begin() + to + 1);
    else if (to < from)
      std::rotate(FItems.begin() + to, FItems.begin() + from, FItems.begin() + from + 1);
  }
  int IndexOf(const T& Value) const {
    auto it = std::find(FItems.begin(), FItems.end(), Value);
    return it == FItems.end() ? -1 : static_cast<int>(it - FItems.begin());
  }
  bool Contains(const T& Value) const { return IndexOf(Value) >= 0; }
  void Reverse() { std::reverse(FItems.begin(), FItems.end()); }

  // Stable, and safe for comparers that compare under a tolerance (not strict weak orders).
  void Sort(const TComparer& Comparer) {
    std::stable_sort(FItems.begin(), FItems.end(), [&](const T& a, const T& b) { return Comparer(a, b) < 0; });
  }
  void Sort() { std::stable_sort(FItems.begin(), FItems.end()); }
  // In a list sorted by Comparer: true with the index of an equal item, else false with the
  // index where Item would be inserted.
  bool BinarySearch(const T& Item, int& FoundIndex, const TComparer& Comparer) const {
    int lo = 0;
    int hi = Count() - 1;
    while (lo <= hi) {
      const int mid = lo + (hi - lo) / 2;
      const int c = Comparer(FItems[static_cast<std::size_t>(mid)], Item);
      if (c < 0) {
        lo = mid + 1;
      } else if (c > 0) {
        hi = mid - 1;
      } else {
        FoundIndex = mid;
        return true;
      }
    }
    FoundIndex = lo;
    return false;
  }

  const std::vector<T>& List() const { return FItems; }
  std::vector<T> ToArray() const { return FItems; }
  typename std::vector<T>::const_iterator begin() const { return FItems.begin(); }
  typename std::vector<T>::const_iterator end() const { return FItems.end(); }

  TNotifyEvent OnNotify;

 protected:
  // Called after every change, with the item that entered or left. Overrides must call the
  // inherited Notify first.
  virtual void Notify(const T& Item, TCollectionNotification Action) {
    if (OnNotify) OnNotify(Item, Action);
  }
  std::size_t CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count()) internal::ListIndexError(Index);
    return static_cast<std::size_t>(Index);
  }
  void RemoveAt(int Index, TCollectionNotification Action) {
    const std::size_t i = CheckIndex(Index);
    T old = std::move(FItems[i]);
    FItems.erase(FItems.begin() + static_cast<std::ptrdiff_t>(i));
    Notify(old, Action);
  }

  // The items themselves, for derived classes that change many at once and keep their own
  // state in step (no notification is sent).
  std::vector<T> FItems;
};

// A list of objects. An owning list deletes an item when it is deleted, removed or cleared,
// and all items when the list is destroyed; Extract hands an item over without deleting it.
template <class T>
class TObjectList : public TList<T*> {
  using Base = TList<T*>;

 public:
  explicit TObjectList(bool AOwnsObjects = true) : FOwnsObjects(AOwnsObjects) {}
  // Moving transfers the items together with their ownership: the receiver owns them when
  // Other did, and Other is left empty. Move assignment first frees (or drops) the
  // receiver's own items under its own ownership.
  TObjectList(TObjectList&& Other) noexcept : Base(std::move(Other)), FOwnsObjects(Other.FOwnsObjects) {}
  TObjectList& operator=(TObjectList&& Other) {
    if (this == &Other) return *this;
    Base::operator=(std::move(Other));
    FOwnsObjects = Other.FOwnsObjects;
    return *this;
  }
  ~TObjectList() override {
    if (FOwnsObjects) {
      for (T* item : this->FItems) delete item;
    }
  }

  bool GetOwnsObjects() const { return FOwnsObjects; }

  using Base::Add;
  using Base::Insert;
  // Ownership passes to the list; a list that does not own its items refuses it.
  int Add(std::unique_ptr<T> Item) {
    RequireOwner("Add");
    return Base::Add(Item.release());
  }
  void Insert(int Index, std::unique_ptr<T> Item) {
    RequireOwner("Insert");
    if (Index < 0 || Index > this->Count()) internal::ListIndexError(Index);
    Base::Insert(Index, Item.release());
  }
  // Takes Item out of an owning list and hands it to the caller; nil when it is not there.
  std::unique_ptr<T> Extract(T* Item) {
    RequireOwner("Extract");
    const int i = this->IndexOf(Item);
    if (i < 0) return nullptr;
    return ExtractAt(i);
  }
  std::unique_ptr<T> ExtractAt(int Index) {
    RequireOwner("Extract");
    T* item = this->FItems[this->CheckIndex(Index)];
    this->RemoveAt(Index, TCollectionNotification::cnExtracted);
    return std::unique_ptr<T>(item);
  }

 protected:
  void Notify(T* const& Item, TCollectionNotification Action) override {
    Base::Notify(Item, Action);
    if (FOwnsObjects && Action == TCollectionNotification::cnRemoved) delete Item;
  }

 private:
  void RequireOwner(const char* Method) const {
    if (!FOwnsObjects) {
      throw EListError(Format("[Error] TObjectList.%s: the list does not own its items", Method));
    }
  }

  // Fixed for the list's items: only a move, which brings other items, changes it.
  bool FOwnsObjects;
};

}  // namespace orvane
