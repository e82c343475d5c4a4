#pragma once
// TRTree<T>: the R-tree that maps boxes to values (normally indices into a caller's list),
// with single insertion, removal by value, a sort-tile-recursive bulk load, and box and point
// queries under a tolerance.
//
// Insertion splits and reinserts as the R*-tree does, so that a tree built one box at a
// time in any order answers queries as fast as a packed one; removal leaves ancestors'
// boxes as they are. Nodes live in one flat array owned by the tree: every non-data node
// has a slot of MaxChildCount + 2 entries, a head (its own box, child count and height)
// followed by room for one child more than the fan-out (an overfull node before it is
// dealt with), so a query reads a node from one run of memory and allocates nothing.
// TRTreeNode<T> is a read-only handle on one node, for hosts that draw or check the tree; a
// handle is valid until the tree next changes.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/spatial/BulkMemory.h"
#include "orvane/spatial/internal/IdHashTable.h"
#include "orvane/spatial/internal/RadixSort.h"

#if defined(__GNUC__)
#define ORVANE_RTREE_VECTORS 1
#else
#define ORVANE_RTREE_VECTORS 0
#endif

namespace orvane {

template <class T>
class TRTree;

// A node of a TRTree<T>: a data node (no children; the only kind that carries a value), a
// leaf (its children are data nodes) or an inner node. Nil when default-made.
template <class T>
class TRTreeNode {
 public:
  TRTreeNode() = default;

  bool IsNil() const { return FTree == nullptr; }
  bool IsDataNode() const { return FIsData; }
  bool IsLeaf() const { return !FIsData && Tree().Height(FId) == 0; }
  bool IsRoot() const { return !FIsData && FId == Tree().FRoot; }
  // The value's box for a data node; for the others a box that holds all children.
  TRect2D GetBox() const {
    const TRTree<T>& tree = Tree();
    if (!FIsData) return tree.Head(FId).Box;
    const auto& link = tree.FLinks[Index()];
    return tree.Kids(link.Leaf)[link.Pos].Box;
  }
  TPoint2D GetCenter() const { return GetBox().CenterPoint(); }
  // The value of a data node; EParamError for the other kinds, which carry none.
  const T& GetData() const {
    if (!FIsData) throw EParamError("[Error] TRTreeNode<T>.GetData: 参数错误");
    return Tree().FValues[Index()];
  }
  int ChildCount() const { return FIsData ? 0 : Tree().Count(FId); }
  TRTreeNode ChildNode(int AIndex) const {
    if (AIndex < 0 || AIndex >= ChildCount()) internal::ListIndexError(AIndex);
    const TRTree<T>& tree = Tree();
    return TRTreeNode(&tree, tree.Kids(FId)[AIndex].Kid, tree.Height(FId) == 0);
  }
  // Nil at the root.
  TRTreeNode GetParent() const {
    const TRTree<T>& tree = Tree();
    const std::int32_t parent = FIsData ? tree.FLinks[Index()].Leaf : tree.FBranches[Index()].Parent;
    return parent < 0 ? TRTreeNode() : TRTreeNode(&tree, parent, false);
  }

  friend bool operator==(const TRTreeNode& A, const TRTreeNode& B) {
    return A.FTree == B.FTree && A.FId == B.FId && A.FIsData == B.FIsData;
  }

 private:
  friend class TRTree<T>;
  TRTreeNode(const TRTree<T>* ATree, std::int32_t AId, bool AIsData) : FTree(ATree), FId(AId), FIsData(AIsData) {}
  const TRTree<T>& Tree() const {
    if (FTree == nullptr) throw EParamError("[Error] TRTreeNode<T>: 空节点");
    return *FTree;
  }
  std::size_t Index() const { return static_cast<std::size_t>(FId); }

  const TRTree<T>* FTree = nullptr;
  std::int32_t FId = -1;
  bool FIsData = false;
};

// Values are unique keys (std::hash<T> and == find them). A box that is not IsValid is
// accepted and never found; a box with a NaN, or a valid box with an infinite coordinate, is
// refused with EParamError and leaves the tree as it was.
//
// GetAllData and GetRandomData enumerate the values in insertion order: the order of Insert
// calls, the list's order for a bulk load, with removed values left out.
template <class T>
class TRTree final {
 public:
  // An empty tree with fan-out limit MaxChildCount (the kernel gives 8). Limits from 3 to
  // 4096 are taken: 2 would make a binary tree of boxes, deep and slow to query, and above
  // 4096 a node's slot would outweigh any gain. Others are refused with EParamError.
  explicit TRTree(int MaxChildCount) : FMaxChildCount(MaxChildCount), FMinChildCount(MaxChildCount / 2) {
    if (MaxChildCount < 3 || MaxChildCount > 4096) throw EParamError("[Error] TRTree<T>.Create: 参数错误");
    FSlotSize = static_cast<std::size_t>(MaxChildCount) + 2;
    FSlotBytes = FSlotSize * sizeof(TEntry);
    FSplitOrder.reserve(FSlotSize);
    FScratchOrder.reserve(FSlotSize);
    FScratch.reserve(FSlotSize);
    FPrefix.reserve(FSlotSize);
    FSuffix.reserve(FSlotSize);
  }
  // Bulk load of Datas[i] with Rects[i]. More values than boxes fails the assertion
  // "[Error] TRTree<T>.Initialize: 数据错误"; an empty list gives an empty tree.
  TRTree(const TList<T>& Datas, const TList<TRect2D>& Rects, int MaxChildCount) : TRTree(MaxChildCount) {
    Initialize(std::span<const T>(Datas.List()), std::span<const TRect2D>(Rects.List()));
  }
  TRTree(std::span<const T> Datas, std::span<const TRect2D> Rects, int MaxChildCount) : TRTree(MaxChildCount) {
    Initialize(Datas, Rects);
  }
  TRTree(const TRTree&) = delete;
  TRTree& operator=(const TRTree&) = delete;
  ~TRTree() = default;

  int GetMaxChildCount() const { return FMaxChildCount; }
  // MaxChildCount / 2; kept for hosts that read it, no operation enforces it.
  int GetMinChildCount() const { return FMinChildCount; }
  int Count() const { return FCount; }
  bool Contains(const T& Data) const { return Find(Data) >= 0; }
  // Nil when the tree has no root.
  TRTreeNode<T> GetRoot() const { return FRoot < 0 ? TRTreeNode<T>() : TRTreeNode<T>(this, FRoot, false); }
  // The data node of a value; nil when the tree does not hold it.
  TRTreeNode<T> DataNodeOf(const T& Data) const {
    const std::int32_t id = Find(Data);
    return id < 0 ? TRTreeNode<T>() : TRTreeNode<T>(this, id, true);
  }

  // Adds one value. A value the tree already holds is refused with ERTreeError
  // "[Error] TRTree<T>.Insert: 数据重复" and the tree stays as it was.
  void Insert(const T& Data, const TRect2D& Box) {
    CheckBox(Box, "[Error] TRTree<T>.Insert: 参数错误");
    if (Find(Data) >= 0) throw ERTreeError("[Error] TRTree<T>.Insert: 数据重复");
    // What can allocate happens before the structure changes: one value, and new nodes.
    // Each placement of an entry splits at most once per level and adds a root; the value
    // is placed once, and each level gives back its few entries at most once. That bound
    // is reserved up to as many nodes as the tree has (with a wide fan-out it would
    // outweigh the tree); the few splits that a small tree can take beyond it grow the
    // arrays on demand.
    const std::size_t levels = FRoot < 0 ? 1 : At(Height(FRoot)) + 1;
    const std::size_t worst = (1 + (levels + 1) * At(ReinsertCount())) * (levels + 2);
    ReserveData(1);
    ReserveBranches(std::min(worst, FBranches.size() - FFreeBranches.size() + levels + 2));
    FLevelDone.assign(levels + 1, 0);
    FMoved.reserve((levels + 1) * At(ReinsertCount()));
    const std::int32_t id = NewData(Data);
    if (FRoot < 0) {
      FRoot = NewBranch(0);
      AddChild(FRoot, id, Box);
    } else {
      Place(id, Box, 0);
    }
    Register(id);
  }

  // Removes a value; an unknown value is ignored. Nodes left without children go with it;
  // the boxes of the remaining ancestors are not shrunk.
  void Remove(const T& Data) {
    const std::int32_t id = Find(Data);
    if (id < 0) return;
    std::int32_t node = FLinks[At(id)].Leaf;
    RemoveEntry(node, FLinks[At(id)].Pos);
    while (Count(node) == 0) {
      const std::int32_t parent = FBranches[At(node)].Parent;
      const std::int32_t pos = FBranches[At(node)].Pos;
      FreeBranch(node);
      if (parent < 0) {
        FRoot = -1;
        break;
      }
      RemoveEntry(parent, pos);
      node = parent;
    }
    Unregister(id);
  }

  // Frees all nodes and their memory.
  void Clear() {
    FRoot = -1;
    FBranches = {};
    FSlots = {};
    FFreeBranches = {};
    FValues = {};
    FLinks = {};
    FFreeData = {};
    FHash.Clear();
    FFirst = FLast = -1;
    FCount = 0;
  }

  // The values whose boxes meet SearchRegion within Tol (TRect2D::RelationWithRect not 0),
  // depth first in child order. An invalid region, or a NaN tolerance, meets nothing.
  TList<T> Search(const TRect2D& SearchRegion, double Tol) const {
    std::vector<T> found;
    Search(SearchRegion, found, Tol);
    return TList<T>(std::move(found));
  }
  // The same, appended to ResultList, each value notified as added.
  void Search(const TRect2D& SearchRegion, TList<T>& ResultList, double Tol) const {
    VisitBox(SearchRegion, Tol, [&](const TEntry& hit) {
      ResultList.Add(ValueOf(hit));
      return true;
    });
  }
  // The same, appended to a plain array: a loop of queries that clears and reuses one array
  // allocates nothing once it has grown.
  void Search(const TRect2D& SearchRegion, std::vector<T>& ResultList, double Tol) const {
    VisitBox(SearchRegion, Tol, [&](const TEntry& hit) {
      ResultList.push_back(ValueOf(hit));
      return true;
    });
  }
  // The values whose valid boxes, grown by Tol on every side, hold Pt (bounds included),
  // appended to ResultList.
  void Search(const TPoint2D& Pt, TList<T>& ResultList, double Tol) const {
    VisitPoint(Pt, Tol, [&](const TEntry& hit) { ResultList.Add(ValueOf(hit)); });
  }
  // True when some box meets SearchRegion within DefaultTol; stops at the first one.
  bool MayIntersect(const TRect2D& SearchRegion) const {
    bool found = false;
    VisitBox(SearchRegion, DefaultTol, [&](const TEntry&) {
      found = true;
      return false;
    });
    return found;
  }

  // All values in insertion order.
  TList<T> GetAllData() const {
    std::vector<T> all;
    all.reserve(static_cast<std::size_t>(FCount));
    for (std::int32_t id = FFirst; id >= 0; id = FLinks[At(id)].Next) all.push_back(FValues[At(id)]);
    return TList<T>(std::move(all));
  }
  // The earliest inserted value still held: any value, not a random draw.
  T GetRandomData() const {
    if (FFirst < 0) throw ERTreeError("[Error] TRTree<T>.GetRandomData: R树为空");
    return FValues[At(FFirst)];
  }

 private:
  friend class TRTreeNode<T>;

  template <class V>
  using TArray = std::vector<V, detail::TBulkAllocator<V>>;

  // A child entry: the child's box and id. In a slot's head: the node's own box, its child
  // count (Kid) and its height (Aux; 0 for a leaf, whose children are data nodes).
  struct TEntry {
    TRect2D Box;
    std::int32_t Kid = 0;
    std::int32_t Aux = 0;
  };
  // A small plain value is also kept in its leaf entry (in Aux), so that a query reports it
  // without reading the value array.
  static constexpr bool kInlineValue =
      std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(std::int32_t) && std::is_default_constructible_v<T>;
  T ValueOf(const TEntry& Hit) const {
    if constexpr (kInlineValue) {
      T value;
      std::memcpy(&value, &Hit.Aux, sizeof(T));
      return value;
    } else {
      return FValues[At(Hit.Kid)];
    }
  }
  // Where a non-data node hangs; read by changes only, so kept apart from the slots.
  struct TBranch {
    std::int32_t Parent = -1;  // -1 at the root
    std::int32_t Pos = 0;      // index among the parent's children
  };
  struct TLink {
    std::int32_t Leaf = -1;  // -1 for a free id
    std::int32_t Pos = 0;
    std::int32_t Prev = -1;  // insertion order
    std::int32_t Next = -1;
  };

  static std::size_t At(std::int32_t Id) { return static_cast<std::size_t>(Id); }
  std::size_t Slot(std::int32_t Branch) const { return At(Branch) * FSlotSize; }
  TEntry& Head(std::int32_t Branch) { return FSlots[Slot(Branch)]; }
  const TEntry& Head(std::int32_t Branch) const { return FSlots[Slot(Branch)]; }
  TEntry* Kids(std::int32_t Branch) { return FSlots.data() + Slot(Branch) + 1; }
  const TEntry* Kids(std::int32_t Branch) const { return FSlots.data() + Slot(Branch) + 1; }
  std::int32_t& Count(std::int32_t Branch) { return Head(Branch).Kid; }
  std::int32_t Count(std::int32_t Branch) const { return Head(Branch).Kid; }
  std::int32_t Height(std::int32_t Branch) const { return Head(Branch).Aux; }

  static void CheckBox(const TRect2D& Box, const char* Message) {
    if (internal::HasNaN(Box) || (Box.IsValid() && !internal::IsFinite(Box))) throw EParamError(Message);
  }
  // The box query's test: TRect2D::RelationWithRect(Region, Tol) != 0, in a form that a
  // NaN tolerance fails. Data boxes are tested in full; a node's box skips the validity
  // test, for an invalid node box only ever holds invalid boxes, and a node that passes
  // wrongly costs a visit, never a hit. Where the compiler has vectors of two doubles, the
  // X and Y halves of a test go through one vector operation; each lane does the same
  // arithmetic as the scalar form, so the answers are the same.
#if ORVANE_RTREE_VECTORS
  typedef double TPair __attribute__((vector_size(16)));
  static TPair Pair(const double* From) {
    TPair p;
    std::memcpy(&p, From, sizeof p);
    return p;
  }
  template <class TMask>
  static bool Both(const TMask& Mask) {
    return (Mask[0] & Mask[1]) != 0;
  }
#endif
  struct TBoxTest {
    explicit TBoxTest(const TRect2D& ARegion, double ATol) : R(ARegion), Tol(ATol) {}
    bool Node(const TRect2D& B) const {
#if ORVANE_RTREE_VECTORS
      return Both((Pair(&R.XMin) - Pair(&B.XMax) <= Tol2) & (Pair(&B.XMin) - Pair(&R.XMax) <= Tol2));
#else
      return (R.XMin - B.XMax <= Tol) & (B.XMin - R.XMax <= Tol) & (R.YMin - B.YMax <= Tol) & (B.YMin - R.YMax <= Tol);
#endif
    }
    bool Data(const TRect2D& B) const {
#if ORVANE_RTREE_VECTORS
      const TPair bmin = Pair(&B.XMin);
      const TPair bmax = Pair(&B.XMax);
      return Both((bmin <= bmax) & (Pair(&R.XMin) - bmax <= Tol2) & (bmin - Pair(&R.XMax) <= Tol2));
#else
      return (B.XMin <= B.XMax) & (B.YMin <= B.YMax) & Node(B);
#endif
    }
    TRect2D R;
    double Tol;
#if ORVANE_RTREE_VECTORS
    TPair Tol2 = {Tol, Tol};
#endif
  };
  // The point query's test: the box grown by Tol holds (X, Y), bounds included.
  struct TPointTest {
    explicit TPointTest(const TPoint2D& APoint, double ATol) : P(APoint), Tol(ATol) {}
    bool Node(const TRect2D& B) const {
#if ORVANE_RTREE_VECTORS
      const TPair p = Pair(&P.X);
      return Both((Pair(&B.XMin) - Tol2 <= p) & (p <= Pair(&B.XMax) + Tol2));
#else
      return (B.XMin - Tol <= P.X) & (P.X <= B.XMax + Tol) & (B.YMin - Tol <= P.Y) & (P.Y <= B.YMax + Tol);
#endif
    }
    bool Data(const TRect2D& B) const {
#if ORVANE_RTREE_VECTORS
      const TPair p = Pair(&P.X);
      const TPair bmin = Pair(&B.XMin);
      const TPair bmax = Pair(&B.XMax);
      return Both((bmin <= bmax) & (bmin - Tol2 <= p) & (p <= bmax + Tol2));
#else
      return (B.XMin <= B.XMax) & (B.YMin <= B.YMax) & Node(B);
#endif
    }
    TPoint2D P;
    double Tol;
#if ORVANE_RTREE_VECTORS
    TPair Tol2 = {Tol, Tol};
#endif
  };
  // The centre coordinate of a box along one axis; 0 where it has none (an invalid box made
  // of infinities), so that sorting by it stays a strict order.
  static double Centre(double Lo, double Hi) {
    const double c = (Lo + Hi) * 0.5;
    return std::isnan(c) ? 0.0 : c;
  }

  // Depth-first walk in child order over the nodes whose boxes pass Test.Node; OnData(entry)
  // for each data node whose box passes Test.Data. OnData returns false to stop the walk.
  template <class TTest, class TOnData>
  void Walk(const TTest& Test, const TOnData& OnData) const {
    if (FRoot < 0 || !Test.Node(Head(FRoot).Box)) return;
    // A walk holds at most SlotSize pending siblings per level, plus the node in hand.
    const std::size_t need = (static_cast<std::size_t>(Height(FRoot)) + 1) * FSlotSize + 1;
    constexpr std::size_t kLocal = 256;
    std::int32_t local[kLocal];
    std::vector<std::int32_t> heap;
    std::int32_t* stack = local;
    if (need > kLocal) {
      heap.resize(need);
      stack = heap.data();
    }
    std::size_t top = 0;
    stack[top++] = FRoot;
    while (top > 0) {
      const std::int32_t node = stack[--top];
      const TEntry& head = Head(node);
      const TEntry* kids = &head + 1;
      if (head.Aux == 0) {
        for (std::int32_t i = 0; i < head.Kid; ++i) {
          if (Test.Data(kids[i].Box) && !OnData(kids[i])) return;
        }
      } else {
        // Pushed from the last child back, so the first child is walked first.
        const std::size_t from = top;
        for (std::int32_t i = head.Kid - 1; i >= 0; --i) {
          stack[top] = kids[i].Kid;
          top += Test.Node(kids[i].Box) ? 1 : 0;
        }
        // The nodes to visit are far apart in a large tree: ask for all of them now, so
        // that their memory arrives together rather than one after the other.
        for (std::size_t k = from; k < top; ++k) {
          const char* slot = reinterpret_cast<const char*>(&Head(stack[k]));
          for (std::size_t b = 0; b < FSlotBytes; b += 64) Prefetch(slot + b);
        }
      }
    }
  }
  template <class TOnData>
  void VisitBox(const TRect2D& Region, double Tol, const TOnData& OnData) const {
    if (!Region.IsValid()) return;
    Walk(TBoxTest(Region, Tol), OnData);
  }
  template <class TOnData>
  void VisitPoint(const TPoint2D& Pt, double Tol, const TOnData& OnData) const {
    Walk(TPointTest(Pt, Tol), [&](const TEntry& hit) {
      OnData(hit);
      return true;
    });
  }

  // ----- storage -----

  template <class V>
  static void Room(V& Items, std::size_t Extra) {
    if (Items.size() + Extra > Items.capacity()) Items.reserve(std::max(Items.capacity() * 2, Items.size() + Extra));
  }
  void ReserveBranches(std::size_t Extra) {
    if (FFreeBranches.size() >= Extra) return;
    Room(FBranches, Extra);
    FSlots.reserve(FBranches.capacity() * FSlotSize);
    FFreeBranches.reserve(FBranches.capacity());
  }
  void ReserveData(std::size_t Extra) {
    const std::size_t fresh = FFreeData.size() >= Extra ? 0 : Extra;
    // Ids are 32-bit; half their range leaves the hash table room to double.
    if (FLinks.size() + fresh > static_cast<std::size_t>(INT32_MAX / 2))
      throw EParamError("[Error] TRTree<T>.Insert: 参数错误");
    Room(FValues, fresh);
    Room(FLinks, fresh);
    FFreeData.reserve(FLinks.capacity());
    FHash.Reserve(static_cast<std::size_t>(FCount) + Extra);
  }
  std::int32_t NewBranch(std::int32_t AHeight) {
    std::int32_t id;
    if (!FFreeBranches.empty()) {
      id = FFreeBranches.back();
      FFreeBranches.pop_back();
    } else {
      id = static_cast<std::int32_t>(FBranches.size());
      FBranches.emplace_back();
      FSlots.resize(FSlots.size() + FSlotSize);
    }
    FBranches[At(id)] = TBranch();
    TEntry& head = Head(id);
    head.Box = TRect2D::Invalid();
    head.Kid = 0;
    head.Aux = AHeight;
    return id;
  }
  void FreeBranch(std::int32_t Id) {
    Count(Id) = 0;
    FFreeBranches.push_back(Id);
  }
  std::int32_t NewData(const T& Data) {
    if (!FFreeData.empty()) {
      const std::int32_t id = FFreeData.back();
      FValues[At(id)] = Data;
      FFreeData.pop_back();
      return id;
    }
    FValues.push_back(Data);
    FLinks.emplace_back();
    return static_cast<std::int32_t>(FLinks.size() - 1);
  }
  // Enters a value into the dictionary and at the end of the insertion order.
  void Register(std::int32_t Id) {
    TLink& link = FLinks[At(Id)];
    link.Prev = FLast;
    link.Next = -1;
    if (FLast >= 0) {
      FLinks[At(FLast)].Next = Id;
    } else {
      FFirst = Id;
    }
    FLast = Id;
    FHash.Insert(Id, FValues[At(Id)]);
    ++FCount;
  }
  void Unregister(std::int32_t Id) {
    FHash.Erase(Id, FValues[At(Id)]);
    TLink& link = FLinks[At(Id)];
    if (link.Prev >= 0) {
      FLinks[At(link.Prev)].Next = link.Next;
    } else {
      FFirst = link.Next;
    }
    if (link.Next >= 0) {
      FLinks[At(link.Next)].Prev = link.Prev;
    } else {
      FLast = link.Prev;
    }
    link = TLink();
    FFreeData.push_back(Id);
    --FCount;
  }

  // Writes child Kid with Box at position Pos of Branch and points the child back at it.
  void PutEntry(std::int32_t Branch, std::int32_t Pos, std::int32_t Kid, const TRect2D& Box) {
    TEntry& entry = Kids(Branch)[Pos];
    entry.Box = Box;
    entry.Kid = Kid;
    if (Height(Branch) == 0) {
      if constexpr (kInlineValue) std::memcpy(&entry.Aux, &FValues[At(Kid)], sizeof(T));
      FLinks[At(Kid)].Leaf = Branch;
      FLinks[At(Kid)].Pos = Pos;
    } else {
      FBranches[At(Kid)].Parent = Branch;
      FBranches[At(Kid)].Pos = Pos;
    }
  }
  // Appends a child, then grows the boxes upward from it: each ancestor takes in the box
  // of the node below it. The walk stops where a box already holds it, for every ancestor
  // box holds its children's boxes.
  void AddChild(std::int32_t Branch, std::int32_t Kid, const TRect2D& Box) {
    PutEntry(Branch, Count(Branch), Kid, Box);
    ++Count(Branch);
    TRect2D below = Box;
    for (std::int32_t node = Branch;;) {
      TRect2D& box = Head(node).Box;
      const TRect2D grown = box.ExtendedRect(below);
      if (grown == box) return;
      box = grown;
      const TBranch& b = FBranches[At(node)];
      if (b.Parent < 0) return;
      Kids(b.Parent)[b.Pos].Box = grown;
      below = grown;
      node = b.Parent;
    }
  }
  void SetBranchBox(std::int32_t Branch, const TRect2D& Box) {
    Head(Branch).Box = Box;
    const TBranch& b = FBranches[At(Branch)];
    if (b.Parent >= 0) Kids(b.Parent)[b.Pos].Box = Box;
  }
  void RemoveEntry(std::int32_t Branch, std::int32_t Pos) {
    const TEntry* kids = Kids(Branch);
    for (std::int32_t i = Pos + 1; i < Count(Branch); ++i) PutEntry(Branch, i - 1, kids[i].Kid, kids[i].Box);
    --Count(Branch);
  }

  // ----- insertion -----
  //
  // A box goes down to the child whose area grows least. An overfull node first gives the
  // entries farthest from its centre back for reinsertion, once per level and insertion,
  // and splits only when that has been done; the split chooses the axis by the summed
  // margins of all allowed distributions, then the distribution with least overlap. These
  // are the reinsertion and split of the R*-tree (Beckmann, Kriegel, Schneider and Seeger,
  // 1990). Its choice of leaf by least overlap growth is left out: on boxes inserted in
  // random order it made trees that queries walk more, not less, and cost N^2 per leaf.

  // The fewest entries a split leaves on either side: 40% of the fan-out.
  std::int32_t SplitMin() const { return std::max(1, FMaxChildCount * 2 / 5); }
  // The entries an overfull node gives back for reinsertion: 30% of the fan-out.
  std::int32_t ReinsertCount() const { return std::max(1, FMaxChildCount * 3 / 10); }

  // Plain measures of boxes; an invalid box has no area, no margin and overlaps nothing.
  static double AreaOf(const TRect2D& B) {
    return (B.XMin <= B.XMax) & (B.YMin <= B.YMax) ? (B.XMax - B.XMin) * (B.YMax - B.YMin) : 0.0;
  }
  static double MarginOf(const TRect2D& B) {
    return (B.XMin <= B.XMax) & (B.YMin <= B.YMax) ? (B.XMax - B.XMin) + (B.YMax - B.YMin) : 0.0;
  }
  static double OverlapOf(const TRect2D& A, const TRect2D& B) {
    const double w = std::min(A.XMax, B.XMax) - std::max(A.XMin, B.XMin);
    const double h = std::min(A.YMax, B.YMax) - std::max(A.YMin, B.YMin);
    return (w > 0.0) & (h > 0.0) ? w * h : 0.0;
  }
  // The union; an invalid box adds nothing.
  static TRect2D Join(const TRect2D& A, const TRect2D& B) {
    if (!((B.XMin <= B.XMax) & (B.YMin <= B.YMax))) return A;
    return {std::min(A.XMin, B.XMin), std::min(A.YMin, B.YMin), std::max(A.XMax, B.XMax), std::max(A.YMax, B.YMax)};
  }

  // The node at height Level (0: a leaf) that shall take an entry with Box.
  std::int32_t ChooseSubtree(const TRect2D& Box, std::int32_t Level) const {
    std::int32_t node = FRoot;
    while (Height(node) > Level) {
      const TEntry& head = Head(node);
      // A node without children would be a data node, and nothing may hang below one.
      Assert(head.Kid > 0, "[ERROR] TRTreeNode<T>.ChooseInsertLeaf: 数据节点中不能插入子节点。", "RTree");
      const TEntry* kids = &head + 1;
      node = kids[LeastAreaGrowth(kids, head.Kid, Box)].Kid;
    }
    return node;
  }
  // The child whose area grows least by taking in Box; on a tie the smaller one, then the
  // one whose margin grows least (boxes of axis-parallel segments have no area), then the
  // first.
  static std::int32_t LeastAreaGrowth(const TEntry* Kids, std::int32_t N, const TRect2D& Box) {
    std::int32_t best = 0;
    double bestGrowth = 0.0, bestArea = 0.0, bestMargin = 0.0;
    for (std::int32_t i = 0; i < N; ++i) {
      const TRect2D& b = Kids[i].Box;
      const TRect2D joined = Join(b, Box);
      const double area = AreaOf(b);
      const double growth = AreaOf(joined) - area;
      const double margin = MarginOf(joined) - MarginOf(b);
      if (i == 0 || growth < bestGrowth ||
          (growth == bestGrowth && (area < bestArea || (area == bestArea && margin < bestMargin)))) {
        best = i;
        bestGrowth = growth;
        bestArea = area;
        bestMargin = margin;
      }
    }
    return best;
  }
  // Hangs Kid with Box into a node at height Level and deals with the overflow that
  // follows, up the tree.
  void Place(std::int32_t Kid, const TRect2D& Box, std::int32_t Level) {
    std::int32_t node = ChooseSubtree(Box, Level);
    AddChild(node, Kid, Box);
    while (Count(node) > FMaxChildCount) {
      const std::int32_t parent = FBranches[At(node)].Parent;
      const std::size_t level = At(Height(node));
      if (parent >= 0 && level < FLevelDone.size() && FLevelDone[level] == 0) {
        FLevelDone[level] = 1;
        Reinsert(node);
        return;
      }
      Split(node);
      if (parent < 0) return;
      node = parent;
    }
  }

  // Takes the ReinsertCount children whose centres lie farthest from the centre of the
  // overfull node out of it, shrinks the boxes above, and places them again, the nearest
  // first.
  void Reinsert(std::int32_t Branch) {
    const std::int32_t n = Count(Branch);
    const std::int32_t p = ReinsertCount();
    const TEntry* kids = Kids(Branch);
    const TRect2D& box = Head(Branch).Box;
    const double cx = Centre(box.XMin, box.XMax);
    const double cy = Centre(box.YMin, box.YMax);
    auto distance = [&](std::int32_t k) {
      const TRect2D& b = kids[k].Box;
      const double dx = Centre(b.XMin, b.XMax) - cx;
      const double dy = Centre(b.YMin, b.YMax) - cy;
      return dx * dx + dy * dy;
    };
    FSplitOrder.resize(At(n));
    for (std::int32_t k = 0; k < n; ++k) FSplitOrder[At(k)] = k;
    // Farthest first; equal distances in child order.
    std::sort(FSplitOrder.begin(), FSplitOrder.end(), [&](std::int32_t a, std::int32_t b) {
      const double da = distance(a);
      const double db = distance(b);
      return da > db || (da == db && a < b);
    });
    const std::size_t start = FMoved.size();
    for (std::int32_t k = 0; k < p; ++k) FMoved.push_back(kids[FSplitOrder[At(k)]]);
    // The others keep their order.
    std::sort(FSplitOrder.begin() + p, FSplitOrder.end());
    FScratch.assign(kids, kids + n);
    for (std::int32_t k = p; k < n; ++k) {
      const TEntry& e = FScratch[At(FSplitOrder[At(k)])];
      PutEntry(Branch, k - p, e.Kid, e.Box);
    }
    Count(Branch) = n - p;
    Refit(Branch);
    const std::int32_t level = Height(Branch);
    for (std::size_t k = start + At(p); k-- > start;) {
      const TEntry moved = FMoved[k];
      Place(moved.Kid, moved.Box, level);
    }
    FMoved.resize(start);
  }

  // Rebuilds the box of a node from its children, and those of its ancestors up to where a
  // box no longer changes.
  void Refit(std::int32_t Branch) {
    for (std::int32_t node = Branch; node >= 0; node = FBranches[At(node)].Parent) {
      TRect2D box = TRect2D::Invalid();
      const TEntry* kids = Kids(node);
      for (std::int32_t k = 0; k < Count(node); ++k) box = Join(box, kids[k].Box);
      if (box == Head(node).Box) return;
      SetBranchBox(node, box);
    }
  }

  // Splits an overfull node in two, hanging the new half beside it (under a new root when
  // it had none).
  void Split(std::int32_t Branch) {
    const std::int32_t n = Count(Branch);
    const std::int32_t lo = SplitMin();
    const std::int32_t hi = n - lo;  // the first group takes lo .. hi entries
    FScratch.assign(Kids(Branch), Kids(Branch) + n);
    FPrefix.resize(At(n));
    FSuffix.resize(At(n));
    // The four orders: by lower, then upper bound of X; by upper, then lower of X; the same
    // for Y. Equal bounds keep the child order.
    auto order = [&](int Which, std::vector<std::int32_t>& Order) {
      Order.resize(At(n));
      for (std::int32_t k = 0; k < n; ++k) Order[At(k)] = k;
      auto key = [&](std::int32_t k) {
        const TRect2D& b = FScratch[At(k)].Box;
        switch (Which) {
          case 0: return std::pair(b.XMin, b.XMax);
          case 1: return std::pair(b.XMax, b.XMin);
          case 2: return std::pair(b.YMin, b.YMax);
          default: return std::pair(b.YMax, b.YMin);
        }
      };
      std::sort(Order.begin(), Order.end(), [&](std::int32_t a, std::int32_t b) {
        const auto ka = key(a);
        const auto kb = key(b);
        return ka < kb || (ka == kb && a < b);
      });
      TRect2D run = TRect2D::Invalid();
      for (std::int32_t k = 0; k < n; ++k) FPrefix[At(k)] = run = Join(run, FScratch[At(Order[At(k)])].Box);
      run = TRect2D::Invalid();
      for (std::int32_t k = n; k-- > 0;) FSuffix[At(k)] = run = Join(run, FScratch[At(Order[At(k)])].Box);
    };
    // FPrefix[k - 1] holds the first k entries, FSuffix[k] the others.
    double margins[2] = {0.0, 0.0};
    for (int which = 0; which < 4; ++which) {
      order(which, FSplitOrder);
      for (std::int32_t k = lo; k <= hi; ++k)
        margins[which / 2] += MarginOf(FPrefix[At(k - 1)]) + MarginOf(FSuffix[At(k)]);
    }
    const int axis = margins[1] < margins[0] ? 1 : 0;
    // Least overlap, then least area, then least margin: points on a line have neither.
    std::int32_t bestK = -1;
    double bestOverlap = 0.0, bestArea = 0.0, bestMargin = 0.0;
    for (int which = 2 * axis; which < 2 * axis + 2; ++which) {
      order(which, FScratchOrder);
      for (std::int32_t k = lo; k <= hi; ++k) {
        const TRect2D& a = FPrefix[At(k - 1)];
        const TRect2D& b = FSuffix[At(k)];
        const double overlap = OverlapOf(a, b);
        const double area = AreaOf(a) + AreaOf(b);
        const double margin = MarginOf(a) + MarginOf(b);
        if (bestK < 0 || overlap < bestOverlap ||
            (overlap == bestOverlap && (area < bestArea || (area == bestArea && margin < bestMargin)))) {
          bestK = k;
          bestOverlap = overlap;
          bestArea = area;
          bestMargin = margin;
          FSplitOrder = FScratchOrder;
        }
      }
    }

    const std::int32_t sibling = NewBranch(Height(Branch));
    for (std::int32_t k = bestK; k < n; ++k) {
      const TEntry& from = FScratch[At(FSplitOrder[At(k)])];
      AddChild(sibling, from.Kid, from.Box);
    }
    TRect2D kept = TRect2D::Invalid();
    for (std::int32_t k = 0; k < bestK; ++k) {
      const TEntry& from = FScratch[At(FSplitOrder[At(k)])];
      PutEntry(Branch, k, from.Kid, from.Box);
      kept = Join(kept, from.Box);
    }
    Count(Branch) = bestK;
    SetBranchBox(Branch, kept);
    const std::int32_t parent = FBranches[At(Branch)].Parent;
    const TRect2D siblingBox = Head(sibling).Box;
    if (parent < 0) {
      FRoot = NewBranch(Height(Branch) + 1);
      AddChild(FRoot, Branch, kept);
      AddChild(FRoot, sibling, siblingBox);
    } else {
      AddChild(parent, sibling, siblingBox);
    }
  }

  // ----- bulk load -----

  // Packs the tree bottom-up: each level is sorted by the X of the box centres, cut into
  // slices (see SliceSize) that are each sorted by Y, and grouped into runs of M under new
  // nodes; the last group may be smaller, and a last remainder of at most M nodes keeps its
  // X order. Equal centres keep their order (the list's order at the bottom).
  void Initialize(std::span<const T> Datas, std::span<const TRect2D> Rects) {
    Assert(Datas.size() <= Rects.size(), "[Error] TRTree<T>.Initialize: 数据错误", "RTree");
    if (Datas.empty()) return;
    if (Datas.size() == 1) {
      Insert(Datas[0], Rects[0]);
      return;
    }
    const std::size_t n = Datas.size();
    for (std::size_t i = 0; i < n; ++i) CheckBox(Rects[i], "[Error] TRTree<T>.Initialize: 参数错误");
    const std::size_t m = At(FMaxChildCount);
    std::size_t branches = 0;
    for (std::size_t level = n; level > 1; level = (level + m - 1) / m) branches += (level + m - 1) / m;
    ReserveData(n);
    ReserveBranches(branches);

    // Ids are the list's positions, and so is the insertion order.
    for (std::size_t i = 0; i < n; ++i) {
      FValues.push_back(Datas[i]);
      const auto id = static_cast<std::int32_t>(i);
      FLinks.push_back({-1, 0, id - 1, i + 1 < n ? id + 1 : -1});
    }
    if (!FHash.Build(std::span<const T>(FValues))) throw ERTreeError("[Error] TRTree<T>.Initialize: 数据重复");
    FFirst = 0;
    FLast = static_cast<std::int32_t>(n - 1);
    FCount = static_cast<std::int32_t>(n);

    TArray<TLevelItem> level(n);
    for (std::size_t i = 0; i < n; ++i) level[i] = MakeItem(Rects[i], static_cast<std::int32_t>(i));
    TArray<TLevelItem> scratch;
    TArray<TLevelItem> next;
    std::int32_t height = 0;
    while (level.size() > 1) {
      const std::size_t count = level.size();
      internal::StableSortByKey(level, scratch, [](const TLevelItem& Item) { return Item.CX; });
      // Slices by Y; equal centres keep their X order, which Seq records.
      for (std::size_t k = 0; k < count; ++k) level[k].Seq = static_cast<std::int32_t>(k);
      const std::size_t slice = SliceSize(count, m);
      for (std::size_t s = 0; s + m < count; s += slice) {
        std::sort(
            level.begin() + static_cast<std::ptrdiff_t>(s),
            level.begin() + static_cast<std::ptrdiff_t>(std::min(s + slice, count)),
            [](const TLevelItem& a, const TLevelItem& b) { return a.CY < b.CY || (a.CY == b.CY && a.Seq < b.Seq); });
      }
      next.clear();
      for (std::size_t g = 0; g < count; g += m) {
        const std::int32_t branch = NewBranch(height);
        const std::size_t end = std::min(g + m, count);
        for (std::size_t k = g; k < end; ++k) {
          const std::int32_t kid = level[k].Id;
          if (height == 0) {
            // The boxes and links of data nodes are read in sorted order, far apart in
            // memory: ask for them a few groups ahead.
            if (k + 4 * m < count) {
              Prefetch(&Rects[At(level[k + 4 * m].Id)]);
              Prefetch(&FLinks[At(level[k + 4 * m].Id)]);
            }
            AddChild(branch, kid, Rects[At(kid)]);
          } else {
            AddChild(branch, kid, Head(kid).Box);
          }
        }
        next.push_back(MakeItem(Head(branch).Box, branch));
      }
      level.swap(next);
      ++height;
    }
    FRoot = level[0].Id;
  }

  // A node of a level of the bulk load, with the centre of its box.
  struct TLevelItem {
    double CX;
    double CY;
    std::int32_t Id;
    std::int32_t Seq;  // position in X order
  };
  static TLevelItem MakeItem(const TRect2D& Box, std::int32_t Id) {
    return {Centre(Box.XMin, Box.XMax), Centre(Box.YMin, Box.YMax), Id, 0};
  }
  static void Prefetch([[maybe_unused]] const void* Address) {
#if defined(__GNUC__)
    __builtin_prefetch(Address);
#endif
  }
  // The run of a level that is sorted by Y and cut into groups: M * M nodes, or for a level
  // of more than M^3 nodes ceil(sqrt(groups)) * M, so that a level is cut into about as
  // many slices as each slice has groups. Fixed slices of M * M would make each group a
  // sliver, 1/M of a slice wide and the whole level tall, once the level outgrows M^3.
  static std::size_t SliceSize(std::size_t Count, std::size_t M) {
    const std::size_t groups = (Count + M - 1) / M;
    auto perSlice = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(groups))));
    return std::max(perSlice, M) * M;
  }
  // ----- dictionary of data nodes: data ids keyed by their values -----

  std::int32_t Find(const T& Data) const { return FHash.Find(Data, std::span<const T>(FValues)); }

  int FMaxChildCount;
  int FMinChildCount;
  std::size_t FSlotSize = 0;
  std::size_t FSlotBytes = 0;
  std::int32_t FRoot = -1;
  TArray<TBranch> FBranches;
  TArray<TEntry> FSlots;  // FSlotSize entries per branch: the head, then the children
  TArray<std::int32_t> FFreeBranches;
  TArray<T> FValues;  // by data id
  TArray<TLink> FLinks;
  TArray<std::int32_t> FFreeData;
  internal::TIdHashTable<T> FHash;
  std::int32_t FFirst = -1;
  std::int32_t FLast = -1;
  std::int32_t FCount = 0;
  // Scratch of the split and of reinsertion, kept to spare allocations per insertion.
  std::vector<std::int32_t> FSplitOrder;
  std::vector<std::int32_t> FScratchOrder;
  std::vector<TEntry> FScratch;
  std::vector<TRect2D> FPrefix;
  std::vector<TRect2D> FSuffix;
  std::vector<TEntry> FMoved;    // entries waiting for reinsertion, a stack over the levels
  std::vector<char> FLevelDone;  // by height: the level has reinserted in this insertion
};

}  // namespace orvane
