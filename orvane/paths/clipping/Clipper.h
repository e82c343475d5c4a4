#pragma once
// The legacy clipping face: the Clipper 6 call shape on the kernel's path types. All Boolean
// work inside the kernel runs through TClipper. The engine (polyclipping) stays behind this
// header: hosts need none of its headers.

#include <concepts>
#include <cstdint>
#include <memory>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/ClipperCore.h"
#include "orvane/paths/clipping/ClipperTypes.h"

namespace orvane {

namespace internal {
class TEngineClipper;
class TOffsetJob;
}  // namespace internal

namespace Clipper {

using orvane::TClipType;
using orvane::TEndType;
using orvane::TFillRule;
using orvane::TInitOption;
using orvane::TInitOptions;
using orvane::TJoinType;
using orvane::TPath64;
using orvane::TPaths64;
using orvane::TPathType;
using orvane::TPoint64;
using orvane::TPointD;
using orvane::TPointInPolygonResult;
using orvane::TRect64;

// Coordinates up to LoRange keep every product of the engine inside 64 bits; coordinates up
// to HiRange are accepted (the engine then switches to 128-bit products).
inline constexpr std::int64_t LoRange = 0xB504F333;
inline constexpr std::int64_t HiRange = 0x3FFFFFFFFFFFFFFF;

class TPolyTree;

// A node of the result tree: a contour with its nested contours as children.
class ORVANE_API TPolyNode {
 public:
  TPolyNode();
  virtual ~TPolyNode();
  TPolyNode(const TPolyNode&) = delete;
  TPolyNode& operator=(const TPolyNode&) = delete;

  const TPath64& GetContour() const { return FContour; }
  int GetChildCount() const { return static_cast<int>(FChilds.size()); }
  // The child at Index (the indexed property Childs); Exception "TPolyNode range error: <Index>"
  // outside 0 .. ChildCount - 1.
  TPolyNode* GetChild(int Index) const;
  TPolyNode* GetParent() const { return FParent; }
  // A node is a hole when it has an odd number of ancestors below the root; the root itself
  // counts as a hole, as in the engine.
  bool GetIsHole() const;
  bool GetIsOpen() const { return FIsOpen; }
  // Position in the parent's child list (0 for a node without parent). Kept current when
  // siblings are removed, so that GetNext walks a pruned tree correctly.
  int GetIndex() const { return FIndex; }
  // The next node in depth-first order (first child, else the next sibling of this node or of
  // the nearest ancestor that has one); nullptr at the end.
  TPolyNode* GetNext() const;
  // Appends a new child holding Contour. When this node hangs in a TPolyTree, the new node
  // joins that tree's AllNodes.
  TPolyNode* AddChild(TPath64 Contour, bool IsOpen = false);
  // Takes the child at Idx out, moving later children down one place. Outside 0 ..
  // ChildCount - 1: nullptr and nothing changes. DoesDestroy False hands the intact subtree
  // to the caller; True frees it and answers nullptr. Either way the subtree's nodes leave the
  // owning tree's AllNodes at once, so that AllNodes never refers to a node the tree no
  // longer holds (Total therefore drops immediately; UpdateAllNodes re-orders what is left).
  std::unique_ptr<TPolyNode> RemoveChild(int Idx, bool DoesDestroy);

 protected:
  // Frees all children (breadth first, no recursion) and leaves room for 16.
  void ClearChilds();

 private:
  friend class TPolyTree;
  TPolyNode* GetNextSiblingUp() const;
  void Detach();

  TPath64 FContour;
  std::vector<std::unique_ptr<TPolyNode>> FChilds;
  TPolyNode* FParent = nullptr;
  TPolyTree* FTree = nullptr;
  int FIndex = 0;
  bool FIsOpen = false;
};

// The root of a result tree; it has no contour. It holds every node of the tree and lists
// them in AllNodes. The clipper builds this tree itself from the engine's result, which is
// what lets nodes be removed and the list rebuilt.
class ORVANE_API TPolyTree final : public TPolyNode {
 public:
  TPolyTree();
  ~TPolyTree() override;

  // The number of nodes in AllNodes.
  int GetTotal() const { return static_cast<int>(FAllNodes.size()); }
  // Every node below the root. Filled breadth first by the clipper; UpdateAllNodes re-orders.
  const std::vector<TPolyNode*>& GetAllNodes() const { return FAllNodes; }
  // Frees every node, empties AllNodes and leaves room for 16 children.
  void Clear();
  // The first top-level node, or nullptr.
  TPolyNode* GetFirst() const { return FChilds.empty() ? nullptr : FChilds.front().get(); }
  // Rebuilds AllNodes breadth first: the top-level nodes in order, then the children of each
  // node in list order.
  void UpdateAllNodes();

 private:
  friend class TPolyNode;
  std::vector<TPolyNode*> FAllNodes;
};

// An edge of an added closed path, as named in an intersection record: the path's ordinal
// among all paths added since the last Clear, and the index of the edge's first vertex.
struct TIntersectEdge {
  TPathType PathType = TPathType::ptSubject;
  int Path = 0;
  int Edge = 0;
  friend bool operator==(const TIntersectEdge&, const TIntersectEdge&) = default;
};

// A contact between two edges, recorded while StoreIntersection is on.
struct TIntersectRecord {
  TIntersectEdge Edge1;
  TIntersectEdge Edge2;
  TPoint64 Pt;
};

// Holds the subject and clip paths of a clipper.
class ORVANE_API TClipperBase {
 public:
  TClipperBase();
  virtual ~TClipperBase();
  TClipperBase(const TClipperBase&) = delete;
  TClipperBase& operator=(const TClipperBase&) = delete;

  // Forgets all paths (and any stored intersections).
  virtual void Clear();
  // Adds one path; False when the engine finds it degenerate (too few distinct vertices).
  // Exception "AddPath: Open paths must be subject." for an open clip path and "Coordinate
  // exceeds range bounds" for a coordinate beyond +-HiRange; the clipper is then unchanged.
  bool AddPath(const TPath64& Path, TPathType PolyType, bool Closed);
  // Adds each path; True when any was taken. The whole list is checked before any is added.
  bool AddPaths(const TPaths64& Paths, TPathType PolyType, bool Closed);

  bool GetPreserveCollinear() const;
  void SetPreserveCollinear(bool Value);

  // Intersection recording. While StoreIntersection is on, every Execute also lists the
  // contacts between edges of the closed paths in StoreIntersectList (emptied at the start of
  // each Execute): each proper crossing of two edges with its rounded crossing point, and,
  // for pairs of different path type (any pair with AllIntersection), each end point of one
  // edge that lies on the other, or both ends of the common stretch of two collinear
  // overlapping edges. The contacts come from a separate exact pass over the added paths;
  // two consecutive edges of one path meeting at their shared vertex are no contact.
  bool GetStoreIntersection() const;
  void SetStoreIntersection(bool Value);
  bool GetAllIntersection() const;
  void SetAllIntersection(bool Value);
  const std::vector<TIntersectRecord>& GetStoreIntersectList() const;

 protected:
  std::unique_ptr<internal::TEngineClipper> FEngine;
};

class ORVANE_API TClipper final : public TClipperBase {
 public:
  // ioReverseSolution, ioStrictlySimple and ioPreserveCollinear set the properties of those
  // names.
  explicit TClipper(TInitOptions InitOptions = {});
  ~TClipper() override;

  // Clears Solution, then as the four-argument form with FillType for both.
  bool Execute(TClipType ClipType, TPaths64& Solution, TFillRule FillType = TFillRule::frEvenOdd);
  // Clears Solution; False (Solution empty) while an execution runs. Exception "Error:
  // TPolyTree struct is needed for open path clipping." when open paths were added.
  // ctNone selects nothing: an empty solution and True.
  bool Execute(TClipType ClipType, TPaths64& Solution, TFillRule SubjFillType, TFillRule ClipFillType);
  // As the next with FillType for both.
  bool Execute(TClipType ClipType, TPolyTree* PolyTree, TFillRule FillType = TFillRule::frEvenOdd);
  // False without doing anything while an execution runs or when PolyTree is nullptr.
  // Otherwise clears the tree and fills it with the result, open paths included.
  bool Execute(TClipType ClipType, TPolyTree* PolyTree, TFillRule SubjFillType, TFillRule ClipFillType);

  bool GetReverseSolution() const;
  void SetReverseSolution(bool Value);
  bool GetStrictlySimple() const;
  void SetStrictlySimple(bool Value);
};

// Offsets (inflates or shrinks) paths. jtBevel, which the engine lacks, cuts each convex
// corner with one straight edge and adds no join vertices; paths of different join types are
// offset together.
class ORVANE_API TClipperOffset final {
 public:
  explicit TClipperOffset(double MiterLimit = 2.0, double ArcTolerance = 0.25);
  ~TClipperOffset();
  TClipperOffset(const TClipperOffset&) = delete;
  TClipperOffset& operator=(const TClipperOffset&) = delete;

  void AddPath(const TPath64& Path, TJoinType JoinType, TEndType EndType);
  void AddPaths(const TPaths64& Paths, TJoinType JoinType, TEndType EndType);
  void Clear();
  // Clears Solution and fills it with the offset outlines.
  void Execute(TPaths64& Solution, double Delta);
  // Exception "Error: No PolyTree assigned" when Solution is nullptr.
  void Execute(TPolyTree* Solution, double Delta);

  double GetMiterLimit() const { return FMiterLimit; }
  void SetMiterLimit(double Value) { FMiterLimit = Value; }
  double GetArcTolerance() const { return FArcTolerance; }
  void SetArcTolerance(double Value) { FArcTolerance = Value; }

 private:
  std::unique_ptr<internal::TOffsetJob> FJob;
  double FMiterLimit;
  double FArcTolerance;
};

// ---- Free functions --------------------------------------------------------------------

constexpr TPoint64 IntPoint(std::int64_t X, std::int64_t Y) { return TPoint64(X, Y); }
template <std::integral TX, std::integral TY>
constexpr TPoint64 IntPoint(TX X, TY Y) {
  return TPoint64(static_cast<std::int64_t>(X), static_cast<std::int64_t>(Y));
}
// Rounds half to even; Exception "Coordinate exceeds range bounds" beyond +-HiRange or for a
// value that is not finite.
ORVANE_API TPoint64 IntPoint(double X, double Y);
constexpr TPointD DoublePoint(double X, double Y) { return TPointD(X, Y); }
constexpr TPointD DoublePoint(const TPoint64& Pt) {
  return TPointD(static_cast<double>(Pt.X), static_cast<double>(Pt.Y));
}

// Core::Area.
ORVANE_API double Area(const TPath64& Path);
// The engine's orientation: True for non-negative area.
ORVANE_API bool Orientation(const TPath64& Path);
// 1 inside, 0 outside, -1 on the boundary.
ORVANE_API int PointInPolygon(const TPoint64& Pt, const TPath64& Path);
// New reversed copies; the input stays.
ORVANE_API TPath64 ReversePath(const TPath64& Path);
ORVANE_API TPaths64 ReversePaths(const TPaths64& Paths);
ORVANE_API TRect64 GetBounds(const TPaths64& Paths);
// The engine's strictly simple union of the path(s) under FillType.
ORVANE_API TPaths64 SimplifyPolygon(const TPath64& Path, TFillRule FillType = TFillRule::frEvenOdd);
ORVANE_API TPaths64 SimplifyPolygons(const TPaths64& Paths, TFillRule FillType = TFillRule::frEvenOdd);
// The engine's clean-up of near-duplicate, near-collinear and spike vertices.
ORVANE_API TPath64 CleanPolygon(const TPath64& Path, double Distance = 1.415);
ORVANE_API TPaths64 CleanPolygons(const TPaths64& Paths, double Distance = 1.415);
// One pass: vertex j = i + 1 is dropped when vertex i lies closer than Round(Distance^2)
// (squared) to the line through j and j + 1, and the pass then moves on to i + 2. Where j
// and j + 1 coincide the distance from i to j stands in for the line distance.
ORVANE_API TPath64 CleanPolygonEx(const TPath64& Path, double Distance = 1.415);
ORVANE_API TPaths64 MinkowskiSum(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed);
// Each path's Minkowski sum, plus each closed path moved by Pattern[0] (filling the inside),
// united under PathFillType. Empty for an empty pattern.
ORVANE_API TPaths64 MinkowskiSum(const TPath64& Pattern, const TPaths64& Paths, TFillRule PathFillType,
                                 bool PathIsClosed);
ORVANE_API TPaths64 MinkowskiDiff(const TPath64& Poly1, const TPath64& Poly2);
ORVANE_API TPaths64 PolyTreeToPaths(const TPolyTree& PolyTree);
ORVANE_API TPaths64 ClosedPathsFromPolyTree(const TPolyTree& PolyTree);
ORVANE_API TPaths64 OpenPathsFromPolyTree(const TPolyTree& PolyTree);
// Releases every path of the array; the array keeps its length, its paths now empty.
ORVANE_API void FreePaths(TPaths64& Paths);
// Releases every path and empties the array.
ORVANE_API void FreeAllPaths(TPaths64& Paths);

}  // namespace Clipper
}  // namespace orvane
