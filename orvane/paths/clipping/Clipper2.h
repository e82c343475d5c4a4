#pragma once
// The Clipper2 face: the Clipper2 API on the kernel's path types, with a compatibility layer
// that gives it the Clipper 6 call shape too. Its Booleans, offsets and Minkowski work run on
// the same polyclipping engine as orvane::Clipper; its small helpers (area, bounds,
// point-in-polygon, trim-collinear, simplify, rectangle clipping) are the kernel's own.

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/clipping/ClipperTypes.h"

namespace orvane {

namespace internal {
class TEngineClipper;
class TOffsetJob;
}  // namespace internal

namespace Clipper2 {

using orvane::TClipType;
using orvane::TEndType;
using orvane::TFillRule;
using orvane::TInitOption;
using orvane::TInitOptions;
using orvane::TJoinType;
using orvane::TPath64;
using orvane::TPathD;
using orvane::TPaths64;
using orvane::TPathsD;
using orvane::TPathType;
using orvane::TPoint64;
using orvane::TPointD;
using orvane::TPointInPolygonResult;
using orvane::TRect64;
using orvane::TRectD;

// ---- Result trees ------------------------------------------------------------------------

// A node of a Clipper2 result tree. It owns its children.
class ORVANE_API TPolyPathBase {
 public:
  TPolyPathBase();
  virtual ~TPolyPathBase();
  TPolyPathBase(const TPolyPathBase&) = delete;
  TPolyPathBase& operator=(const TPolyPathBase&) = delete;

  // Appends a child holding Path (scaled as the node's kind requires).
  virtual TPolyPathBase* AddChild(const TPath64& Path) = 0;
  // Frees all children.
  void Clear();
  int GetChildCnt() const { return static_cast<int>(FChilds.size()); }
  // The child at Index, or nullptr outside 0 .. ChildCnt - 1.
  TPolyPathBase* GetChild(int Index) const;
  TPolyPathBase* GetParent() const { return FParent; }
  // 0 for the root, 1 for outer polygons, 2 for their holes, ...
  int GetLevel() const;
  // Even levels below the root are holes.
  bool GetIsHole() const;
  // Index in the parent's child list, or -1 without parent.
  int GetIdx() const { return FParent == nullptr ? -1 : FIdx; }
  // Takes the child at Idx out, later children moving down one place (their GetIdx follows).
  // nullptr outside the range. DoesDestroy False hands the intact subtree to the caller;
  // True frees it and answers nullptr.
  std::unique_ptr<TPolyPathBase> RemoveChild(int Idx, bool DoesDestroy);

 protected:
  TPolyPathBase* Adopt(std::unique_ptr<TPolyPathBase> Child);
  // The next node in depth-first order below this node's topmost ancestor.
  TPolyPathBase* NextNode() const;

 private:
  TPolyPathBase* FParent = nullptr;
  std::vector<std::unique_ptr<TPolyPathBase>> FChilds;
  int FIdx = 0;
};

class ORVANE_API TPolyPath64 : public TPolyPathBase {
 public:
  TPolyPath64() = default;
  explicit TPolyPath64(TPath64 Polygon) : FPolygon(std::move(Polygon)) {}

  TPolyPathBase* AddChild(const TPath64& Path) override;
  const TPath64& GetPolygon() const { return FPolygon; }
  // The child at Index, or nullptr.
  TPolyPath64* GetChild64(int Index) const;
  // The first child, or nullptr.
  TPolyPath64* GetFirst() const { return GetChild64(0); }
  // The next node in depth-first order (first child, else the next sibling of this node or
  // of the nearest ancestor that has one), or nullptr.
  TPolyPath64* GetNext() const;

 private:
  TPath64 FPolygon;
};

// The root of a TPolyPath64 tree; its own polygon is empty.
class ORVANE_API TPolyTree64 : public TPolyPath64 {};

class ORVANE_API TPolyPathD : public TPolyPathBase {
 public:
  TPolyPathD() = default;
  // Takes a path in integer units and keeps it divided by Scale.
  TPolyPathD(const TPath64& Path, double Scale);

  TPolyPathBase* AddChild(const TPath64& Path) override;
  const TPathD& GetPolygon() const { return FPolygon; }
  TPolyPathD* GetChildD(int Index) const;
  double GetScale() const { return FScale; }

 protected:
  void SetScale(double Value) { FScale = Value; }

 private:
  friend class TClipperD;
  TPathD FPolygon;
  double FScale = 1.0;
};

// The root of a TPolyPathD tree.
class ORVANE_API TPolyTreeD : public TPolyPathD {};

// ---- Clipping -----------------------------------------------------------------------------

class ORVANE_API TClipper64 {
 public:
  // The engine's default: PreserveCollinear True, ReverseSolution False.
  TClipper64();
  // PreserveCollinear := ioPreserveCollinear in InitOptions, ReverseSolution :=
  // ioReverseSolution in InitOptions; ioStrictlySimple has no effect. Unlike the default
  // constructor, an empty set therefore drops collinear vertices from the solution.
  explicit TClipper64(TInitOptions InitOptions);
  virtual ~TClipper64();
  TClipper64(const TClipper64&) = delete;
  TClipper64& operator=(const TClipper64&) = delete;

  void Clear();
  // Exception "Coordinate exceeds range bounds" for a coordinate beyond +-HiRange, and "AddPath:
  // Open paths must be subject." for an open clip path, which the engine cannot take.
  void AddSubject(const TPath64& Subject);
  void AddSubject(const TPaths64& Subjects);
  void AddOpenSubject(const TPath64& Subject);
  void AddOpenSubject(const TPaths64& Subjects);
  void AddClip(const TPath64& Clip);
  void AddClip(const TPaths64& Clips);
  // The Clipper 6 call shape: open when Closed is False. Always True.
  bool AddPath(const TPath64& Path, TPathType PathType, bool Closed = true);
  bool AddPaths(const TPaths64& Paths, TPathType PathType, bool Closed = true);

  // The closed part of the solution (open subjects are clipped but their result dropped).
  // ctNone gives nothing and True. Exception "Undefined clipping error" when the engine fails.
  bool Execute(TClipType ClipType, TFillRule FillRule, TPaths64& ClosedSolutions);
  bool Execute(TClipType ClipType, TFillRule FillRule, TPaths64& ClosedSolutions, TPaths64& OpenSolutions);
  // Exception "The TPolyTree parameter must be assigned." when SolutionTree is nullptr.
  bool Execute(TClipType ClipType, TFillRule FillRule, TPolyTree64* SolutionTree, TPaths64& OpenSolutions);
  // The Clipper 6 call shape: clears Solution, then executes.
  bool Execute(TClipType ClipType, TPaths64& Solution, TFillRule FillRule);

  // One-shot: a clipper made with InitOptions clips SubjPaths by ClipPaths. With equal fill
  // rules that rule goes to the engine; otherwise each closed side is first united under its
  // own rule (open sides pass unchanged) and the execution uses frEvenOdd.
  static bool Execute(const TPaths64& SubjPaths, const TPaths64& ClipPaths, bool SubjIsClosed, bool ClipIsClosed,
                      TFillRule SubjFillRule, TFillRule ClipFillRule, TClipType ClipType, TInitOptions InitOptions,
                      TPaths64& Solution);
  static bool Execute(const TPaths64& SubjPaths, const TPaths64& ClipPaths, bool SubjIsClosed, bool ClipIsClosed,
                      TFillRule SubjFillRule, TFillRule ClipFillRule, TClipType ClipType, TInitOptions InitOptions,
                      TPolyTree64* PolyTree, TPaths64& OpenPaths);

  bool GetPreserveCollinear() const;
  void SetPreserveCollinear(bool Value);
  bool GetReverseSolution() const;
  void SetReverseSolution(bool Value);

 private:
  std::unique_ptr<internal::TEngineClipper> FEngine;
};

// Clipping in double coordinates: paths are scaled by 10^Precision and rounded to integers.
class ORVANE_API TClipperD {
 public:
  // Exception "The decimal rounding value is invalid" outside -8 .. 8.
  explicit TClipperD(int RoundingDecimalPrecision = 2);
  virtual ~TClipperD();
  TClipperD(const TClipperD&) = delete;
  TClipperD& operator=(const TClipperD&) = delete;

  void Clear();
  void AddSubject(const TPathD& Subject);
  void AddSubject(const TPathsD& Subjects);
  void AddOpenSubject(const TPathD& Subject);
  void AddOpenSubject(const TPathsD& Subjects);
  void AddClip(const TPathD& Clip);
  void AddClip(const TPathsD& Clips);
  bool Execute(TClipType ClipType, TFillRule FillRule, TPathsD& ClosedSolutions);
  bool Execute(TClipType ClipType, TFillRule FillRule, TPathsD& ClosedSolutions, TPathsD& OpenSolutions);
  bool Execute(TClipType ClipType, TFillRule FillRule, TPolyTreeD* SolutionTree, TPathsD& OpenSolutions);

  bool GetPreserveCollinear() const;
  void SetPreserveCollinear(bool Value);
  bool GetReverseSolution() const;
  void SetReverseSolution(bool Value);
  double GetScale() const { return FScale; }

 private:
  TClipper64 FClipper;
  double FScale;
};

// ---- Offsetting ---------------------------------------------------------------------------

// Offsets on the engine; jtBevel corners get one straight cut and no join vertices. An
// ArcTolerance of 0 means |Delta| / 500, but never below a quarter unit. PreserveCollinear
// is kept for the API's sake: the engine drops collinear vertices from offset outlines.
// Open and joined paths vanish for Delta <= 0, as in the engine.
class ORVANE_API TClipperOffset64 {
 public:
  explicit TClipperOffset64(double MiterLimit = 2.0, double ArcTolerance = 0.0, bool PreserveCollinear = false,
                            bool ReverseSolution = false);
  virtual ~TClipperOffset64();
  TClipperOffset64(const TClipperOffset64&) = delete;
  TClipperOffset64& operator=(const TClipperOffset64&) = delete;

  void AddPath(const TPath64& Path, TJoinType JoinType, TEndType EndType);
  void AddPaths(const TPaths64& Paths, TJoinType JoinType, TEndType EndType);
  void Clear();
  void Execute(double Delta, TPaths64& Solution);
  // Exception "The TPolyTree parameter must be assigned." when SolutionTree is nullptr.
  void Execute(double Delta, TPolyTree64* SolutionTree);
  // The Clipper 6 call shapes: clear Solution and offset; offset into the given tree.
  void Execute(TPaths64& Solution, double Delta);
  void Execute(TPolyTree64* Solution, double Delta);

  double GetMiterLimit() const { return FMiterLimit; }
  void SetMiterLimit(double Value) { FMiterLimit = Value; }
  double GetArcTolerance() const { return FArcTolerance; }
  void SetArcTolerance(double Value) { FArcTolerance = Value; }
  bool GetPreserveCollinear() const { return FPreserveCollinear; }
  void SetPreserveCollinear(bool Value) { FPreserveCollinear = Value; }
  bool GetReverseSolution() const { return FReverseSolution; }
  void SetReverseSolution(bool Value) { FReverseSolution = Value; }

 private:
  double EngineArcTolerance(double Delta) const;
  std::unique_ptr<internal::TOffsetJob> FJob;
  double FMiterLimit;
  double FArcTolerance;
  bool FPreserveCollinear;
  bool FReverseSolution;
};

// ---- Rectangle clipping -------------------------------------------------------------------

// Clips closed paths to a rectangle (Left .. Right, Top .. Bottom, Top the smaller Y). Each
// path is clipped on its own and keeps its orientation, so the result holds under any fill
// rule; a path that leaves and re-enters the rectangle gives separate pieces. An empty
// rectangle (Right <= Left or Bottom <= Top) clips everything away.
class ORVANE_API TRectClip64 {
 public:
  explicit TRectClip64(const TRect64& Rect) : FRect(Rect) {}
  virtual ~TRectClip64() = default;
  TPaths64 Execute(const TPaths64& Paths) const;

 protected:
  TRect64 FRect;
};

// Clips open paths (polylines) to a rectangle: the pieces inside, each as an open path.
class ORVANE_API TRectClipLines64 : public TRectClip64 {
 public:
  explicit TRectClipLines64(const TRect64& Rect) : TRectClip64(Rect) {}
  TPaths64 Execute(const TPaths64& Paths) const;
};

// ---- Top-level functions --------------------------------------------------------------------

ORVANE_API TPaths64 BooleanOp(TClipType ClipType, const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule);
// Exception "The TPolyTree parameter must be assigned." when PolyTree is nullptr.
ORVANE_API void BooleanOp(TClipType ClipType, const TPaths64& Subjects, const TPaths64& Clips, TPolyTree64* PolyTree,
                          TFillRule FillRule);
ORVANE_API TPathsD BooleanOp(TClipType ClipType, const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule,
                             int Precision = 2);
ORVANE_API TPaths64 Intersect(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule);
ORVANE_API TPathsD Intersect(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision = 2);
ORVANE_API TPaths64 Union(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule);
ORVANE_API TPaths64 Union(const TPaths64& Subjects, TFillRule FillRule);
ORVANE_API TPathsD Union(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision = 2);
ORVANE_API TPathsD Union(const TPathsD& Subjects, TFillRule FillRule, int Precision = 2);
ORVANE_API TPaths64 Difference(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule);
ORVANE_API TPathsD Difference(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision = 2);
ORVANE_API TPaths64 XOR_(const TPaths64& Subjects, const TPaths64& Clips, TFillRule FillRule);
ORVANE_API TPathsD XOR_(const TPathsD& Subjects, const TPathsD& Clips, TFillRule FillRule, int Precision = 2);

ORVANE_API TPaths64 InflatePaths(const TPaths64& Paths, double Delta, TJoinType JoinType = TJoinType::jtRound,
                                 TEndType EndType = TEndType::etPolygon, double MiterLimit = 2.0,
                                 double ArcTolerance = 0.0);
ORVANE_API TPathsD InflatePaths(const TPathsD& Paths, double Delta, TJoinType JoinType = TJoinType::jtRound,
                                TEndType EndType = TEndType::etPolygon, double MiterLimit = 2.0, int Precision = 2,
                                double ArcTolerance = 0.0);

ORVANE_API TPaths64 RectClip(const TRect64& Rect, const TPaths64& Paths);
ORVANE_API TPaths64 RectClip(const TRect64& Rect, const TPath64& Path);
ORVANE_API TPaths64 RectClipLines(const TRect64& Rect, const TPaths64& Paths);
ORVANE_API TPaths64 RectClipLines(const TRect64& Rect, const TPath64& Path);

ORVANE_API TPath64 TranslatePath(const TPath64& Path, std::int64_t DX, std::int64_t DY);
ORVANE_API TPaths64 TranslatePaths(const TPaths64& Paths, std::int64_t DX, std::int64_t DY);
ORVANE_API TPathD TranslatePath(const TPathD& Path, double DX, double DY);
ORVANE_API TPathsD TranslatePaths(const TPathsD& Paths, double DX, double DY);

// The Minkowski sum (difference: Path minus Pattern) of a pattern swept along a path, united
// under frNonZero.
ORVANE_API TPaths64 MinkowskiSum(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed);
ORVANE_API TPaths64 MinkowskiDiff(const TPath64& Pattern, const TPath64& Path, bool PathIsClosed);

// Pairs of coordinates (x0, y0, x1, y1, ...); an odd last value is ignored. Doubles are
// rounded half to even.
ORVANE_API TPath64 MakePath(const std::vector<std::int64_t>& Coords);
ORVANE_API TPath64 MakePath(const std::vector<double>& Coords);
ORVANE_API TPathD MakePathD(const std::vector<double>& Coords);
template <class T>
requires std::integral<T> || std::floating_point<T> TPath64 MakePath(std::initializer_list<T> Coords) {
  if constexpr (std::integral<T>)
    return MakePath(std::vector<std::int64_t>(Coords.begin(), Coords.end()));
  else
    return MakePath(std::vector<double>(Coords.begin(), Coords.end()));
}
template <class T>
requires std::integral<T> || std::floating_point<T> TPathD MakePathD(std::initializer_list<T> Coords) {
  return MakePathD(std::vector<double>(Coords.begin(), Coords.end()));
}

// Every polygon of the tree below its root, depth first, parents before children.
ORVANE_API TPaths64 PolyTreeToPaths64(const TPolyTree64& PolyTree);
ORVANE_API TPathsD PolyTreeToPathsD(const TPolyTreeD& PolyTree);

// "x,y x,y ..." with the coordinates in decimal.
ORVANE_API std::string PathToString(const TPath64& Path);
// One line per path, each ending in a line feed.
ORVANE_API std::string PathsToString(const TPaths64& Paths);
// Appends one line per node that has children, indented two spaces per level:
// "Polytree with N polygon(s)", "A polygon containing N hole(s)", "A hole containing N
// nested polygon(s)".
ORVANE_API void ShowPolyTreeStructure(const TPolyTree64& PolyTree, std::vector<std::string>& Strings);

// Removes duplicate vertices and the middle vertex of each collinear triple (spikes
// included). A closed path that keeps fewer than 3 vertices becomes empty; an open path
// keeps its two ends.
ORVANE_API TPath64 TrimCollinear(const TPath64& Path, bool IsOpenPath = false);
// Repeatedly removes the vertex nearest the line through its two neighbours while that
// distance is below ShapeTolerance. The ends of an open path stay; a closed path that would
// keep fewer than 3 vertices becomes empty. Paths of fewer than 3 (open) or 4 (closed)
// vertices come back as they are.
ORVANE_API TPath64 SimplifyPath(const TPath64& Path, double ShapeTolerance, bool IsClosedPath = true);
ORVANE_API TPaths64 SimplifyPaths(const TPaths64& Paths, double ShapeTolerance, bool IsClosedPaths = true);
// The package's point-in-polygon: exact, even-odd, pipOn on the boundary.
ORVANE_API TPointInPolygonResult PointInPolygon2(const TPoint64& Pt, const TPath64& Polygon);

// ---- Compatibility with the Clipper 6 call shape ------------------------------------------

using Clipper::DoublePoint;
using Clipper::IntPoint;

ORVANE_API double Area(const TPath64& Path);
ORVANE_API double Area(const TPaths64& Paths);
// Area(Path) >= 0.
ORVANE_API bool Orientation(const TPath64& Path);
ORVANE_API TRect64 GetBounds(const TPath64& Path);
ORVANE_API TRect64 GetBounds(const TPaths64& Paths);
ORVANE_API TPath64 ReversePath(const TPath64& Path);
ORVANE_API TPaths64 ReversePaths(const TPaths64& Paths);
// Union of the one-path list (the list) under FillRule.
ORVANE_API TPaths64 SimplifyPolygon(const TPath64& Path, TFillRule FillRule = TFillRule::frEvenOdd);
ORVANE_API TPaths64 SimplifyPolygons(const TPaths64& Paths, TFillRule FillRule = TFillRule::frEvenOdd);
// SimplifyPath(s) with is-closed False.
ORVANE_API TPath64 CleanPolygon(const TPath64& Path, double Distance = 1.415);
ORVANE_API TPaths64 CleanPolygons(const TPaths64& Paths, double Distance = 1.415);
using Clipper::CleanPolygonEx;
ORVANE_API TPath64 TranslatePath(const TPath64& Path, const TPoint64& Delta);
// Paths as they are when IsClosed is False; else their union under FillRule.
ORVANE_API TPaths64 UnionIfClosed(const TPaths64& Paths, bool IsClosed, TFillRule FillRule);
// Empties every path; the array keeps its length.
ORVANE_API void FreePaths(TPaths64& Paths);
// Empties every path and the array.
ORVANE_API void FreePathsAndNil(TPaths64& Paths);
ORVANE_API TPaths64 PolyTreeToPaths(const TPolyTree64& PolyTree);
// Clipper 6's difference of two closed polygons: Path2 minus Path1.
ORVANE_API TPaths64 MinkowskiDiff(const TPath64& Path1, const TPath64& Path2);
// Each path's sum (closed subject) and, when Closed, each path moved by Pattern[0] (clip),
// united under FillRule. Empty for an empty pattern.
ORVANE_API TPaths64 MinkowskiSum(const TPath64& Pattern, const TPaths64& Paths, TFillRule FillRule, bool Closed);

}  // namespace Clipper2
}  // namespace orvane
