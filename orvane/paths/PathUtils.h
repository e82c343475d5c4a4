#pragma once
// TPathUtils: everything a host does around the clipping engines on integer paths:
// conversion between drawing units (doubles) and integer units at a rate, point arithmetic,
// housekeeping, extreme vertices, measures, crossings with axis lines, point and path
// relations, parameters, and comparison of outlines.
//
// Units. "Integer units" are path coordinates; "drawing units" are doubles, integer units
// divided by the rate. Every comment below says which unit a tolerance and a result are in.
// The operations marked "at PathWorkingRate" scale integers by 1e-5 internally and so assume
// paths built at that rate.
//
// Range. Coordinates up to Clipper::HiRange never overflow: areas, dot and cross products,
// edge lengths and crossings are taken in 128-bit integers or floating point where a product
// can pass 2^63. Point arithmetic whose result would leave 64 bits raises EConvertError.
//
// Paths are values (std::vector): operations that change a path in place take TPath64&.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Nullable.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/PointL2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"

namespace orvane {

class TVPolyline2D;
class TVPolyline2DList;
class TVHPolygon;
class TVHPolygonList;
class TVPolyline2DTreeList;
class TPathsList;

namespace Clipper {
class TPolyNode;
class TPolyTree;
}  // namespace Clipper

// A vertex inside a TPaths64: path Row, vertex Col.
struct TPointIndex {
  std::int32_t Row = 0;
  std::int32_t Col = 0;

  constexpr TPointIndex() = default;
  constexpr TPointIndex(std::int32_t ARow, std::int32_t ACol) : Row(ARow), Col(ACol) {}
  friend constexpr bool operator==(const TPointIndex&, const TPointIndex&) = default;
};

// True when Candidate should replace Best; Tol in integer units.
using IntPointTolCmpFunc = std::function<bool(const TPoint64& Candidate, const TPoint64& Best, std::int64_t Tol)>;

class ORVANE_API TPathUtils {
 public:
  TPathUtils() = delete;

  // ---- Points (integer units unless said) -------------------------------------------------
  // Rate is integer units per drawing unit; it must be a positive finite number wherever it
  // converts (EParamError otherwise). Rounding is half to even; a result beyond 64 bits
  // raises EConvertError.

  static TPoint64 CreateIntPoint(std::int64_t X, std::int64_t Y) { return {X, Y}; }
  // Drawing units in, integer units out: (Round(X * Rate), Round(Y * Rate)).
  static TPoint64 CreateIntPoint(const TPoint2D& Point, double Rate);
  // Integer units in, drawing units out: each coordinate times 1 / Rate.
  static TPoint2D CreatePoint2D(const TPoint64& Point, double Rate);
  static TPointL2D CreatePointL2D(const TPoint64& Point) { return {Point.X, Point.Y}; }
  static bool Equal(const TPoint64& Left, const TPoint64& Right) { return Left == Right; }
  // Right - Left (integer units).
  static TPoint64 Sub(const TPoint64& Left, const TPoint64& Right);
  // (Round(X * Num), Round(Y * Num)); Num is a plain factor.
  static TPoint64 PointMul(const TPoint64& Point, double Num);
  // (Round(X / Num), Round(Y / Num)) through one reciprocal; EParamError for Num 0.
  static TPoint64 Divide(const TPoint64& Point, double Num);
  static TPoint64 Negative(const TPoint64& Point);
  // Counter-clockwise angle in radians, [0, 2 pi), from Vec1 to Vec2 (at PathWorkingRate).
  static double Angle(const TPoint64& Vec1, const TPoint64& Vec2);
  // The point turned about the origin by Radian, rounded.
  static TPoint64 Rotate(const TPoint64& Point, double Radian);
  // A vector along Point whose length is about Length (integer units), each component
  // rounded; the zero vector comes back unchanged.
  static TPoint64 Strech(const TPoint64& Point, double Length);
  // The dot product (in doubles) is positive. EAssertionFailed "Zero Vector or Zero Dot!"
  // when it is exactly 0: callers guard against zero and perpendicular vectors.
  static bool SameVector(const TPoint64& vecA, const TPoint64& vecB);
  // 1 strictly inside, 0 outside, -1 on the edge. The box is read as IntBoundbox writes it
  // and as the clipping faces use it: Top is the smaller Y, Bottom the larger, so the box of
  // a path holds every vertex of the path.
  static int PointInRect(const TPoint64& pt, const TRect64& rect);
  // Twice the signed area of the triangle (integer units squared), positive when Pt3 lies
  // left of Pt1 -> Pt2. Exact in 128 bits; a value beyond 64 bits is clamped to the nearest
  // 64-bit limit, so its sign is always right.
  static std::int64_t DoubleArea(const TPoint64& Pt1, const TPoint64& Pt2, const TPoint64& Pt3);
  // SPt + Round((EPt - SPt) * Param): the offset is rounded, not the sum.
  static TPoint64 SeglineEvalPoint(const TPoint64& SPt, const TPoint64& EPt, double Param);

  // ---- Conversion to paths (drawing units in, integer units out) ------------------------

  // nullptr gives an empty path.
  static TPath64 CreatePath(const TVPolyline2D* Polyline, double Rate);
  static TPath64 CreatePath(const TVPolyline2D& Polyline, double Rate);
  static TPath64 CreatePath(const TDynPoints2D& Points, double Rate);
  static TPath64 CreatePath(const TList<TPoint2D>& Points, double Rate);
  // Four vertices, not closed: (XMin, YMax), (XMin, YMin), (XMax, YMin), (XMax, YMax).
  static TPath64 CreatePath(const TRect2D& BoundBox, double Rate);
  // nullptr gives no paths.
  static TPaths64 CreatePaths(const TVPolyline2DList* Polylines, double Rate);
  static TPaths64 CreatePaths(const TVPolyline2DList& Polylines, double Rate);
  // One flat list: each polygon's outline, then its holes, polygon after polygon.
  static TPaths64 CreatePaths(const TVHPolygonList& HPolygons, double Rate);

  // ---- Conversion from paths (integer units in, drawing units out: X / Rate) -------------

  static TList<TPoint2D> CreatePoint2DList(const TPath64& Path, double Rate);
  // Replaces the polyline's vertices; a path that repeats its first vertex stays closed.
  static void AssignToPolyline(const TPath64& Path, TVPolyline2D& Polyline, double Rate);
  static std::unique_ptr<TVPolyline2D> CreatePolyline(const TPath64& Path, double Rate);
  // Replaces the list's polylines with one new polyline per path. The list must own its
  // items (EParamError otherwise, the list unchanged).
  static void AssignToPolylines(const TPaths64& Paths, TVPolyline2DList& Polylines, double Rate);
  static std::unique_ptr<TVPolyline2DList> CreatePolylines(const TPaths64& Paths, double Rate);

  // ---- Housekeeping (integer units) ------------------------------------------------------

  static TPath64 Clone(const TPath64& Path) { return Path; }
  static TPaths64 Clone(const TPaths64& Paths) { return Paths; }
  // Removes vertex (path) index; false and nothing changed outside 0 .. last.
  static bool Delete(TPath64& path, int index);
  static bool Delete(TPaths64& paths, int index);
  // Releases every path and empties the list.
  static void Free(TPaths64& Paths);
  // Appends; pass an rvalue to move the points instead of copying them.
  static void PathsAdd(TPaths64& DestinationPaths, TPath64 SourcePath);
  static void PathsAddRange(TPaths64& DestinationPaths, const TPaths64& SourcePaths);
  static void PathsAddRange(TPaths64& DestinationPaths, TPaths64&& SourcePaths);
  // First vertex equals last; false for an empty path, true for a single vertex.
  static bool IsClosed(const TPath64& Path);
  // The box in integer units held as doubles; the invalid box for no vertices.
  static TRect2D BoundBox(const TPath64& Path);
  static TRect2D BoundBox(const TPaths64& Paths);
  // Left = min X, Top = min Y, Right = max X, Bottom = max Y (integer units); all zero for
  // an empty path.
  static TRect64 IntBoundbox(const TPath64& Path);
  // Both count the vertices of all paths (no length is measured); clamped to 32 bits.
  static int TotalLength(const TPaths64& APaths);
  static int GetPathsPointCount(const TPaths64& Paths);

  // ---- In-place transforms (integer units) -----------------------------------------------

  static void Negative(TPath64& Path);
  static void Negative(TPaths64& Paths);
  static void Rotate(TPath64& Path, double Radian);
  static void Rotate(TPaths64& Paths, double Radian);
  static void Translate(TPath64& Path, const TPointL2D& TransVec);
  static void Translate(TPaths64& Paths, const TPointL2D& TransVec);
  // Every coordinate times Rate, rounded; Rate is a plain factor here.
  static void Zoom(TPath64& Path, double Rate);
  static void Zoom(TPaths64& Paths, double Rate);
  static void Reverse(TPath64& Path);
  static void Reverse(TPaths64& Paths);

  // ---- Extreme vertices (tolerances in integer units) ------------------------------------
  // A primary axis decides; vertices within Tol of the best on the near axis (strictly) are
  // settled by the other axis. The index is written only when a vertex is taken. An empty
  // path answers the start sentinel (see each member).

  // Leftmost, near ties (X within Tol) to the top. Start (max, min).
  static TPoint64 LeftTopPoint(const TPath64& APath, int& ltIdx, std::int64_t Tol);
  // As above with Tol raised to at least 1, index dropped. A tolerance is never taken for an
  // index: an int variable always selects the next overload.
  static TPoint64 LeftTopPoint(const TPath64& APath, std::int64_t Tol);
  // Tuned: the answer B with a near limit of 300, unless a vertex C reached by climbing in
  // steps of less than 10000 across lies more than 100000 higher and at least ten times
  // further up than across; then C.
  static TPoint64 LeftTopPoint(const TPath64& APath, int& ltIdx);
  static TPoint64 LeftTopPoint(const TPath64& APath);
  // Start (min, max); rightmost, near ties to the bottom.
  static TPoint64 RightBottomPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 1000);
  static TPoint64 RightBottomPoint(const TPath64& APath);
  // Start (min, max); rightmost, near ties to the top.
  static TPoint64 RightTopPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 1000);
  static TPoint64 RightTopPoint(const TPath64& APath);
  // Start (max, max); lowest, near ties (Y within Tol) to the left.
  static TPoint64 BottomLeftPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 100);
  static TPoint64 BottomLeftPoint(const TPath64& APath);
  // Start (min, max); lowest, near ties to the right.
  static TPoint64 BottomRightPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 100);
  static TPoint64 BottomRightPoint(const TPath64& APath);
  // Start (max, min); highest, near ties to the left.
  static TPoint64 TopLeftPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 100);
  static TPoint64 TopLeftPoint(const TPath64& APath);
  // Start (min, min); highest, near ties to the right.
  static TPoint64 TopRightPoint(const TPath64& APath, int& Idx, std::int64_t Tol = 1000);
  static TPoint64 TopRightPoint(const TPath64& APath);
  // From vertex 0: take p when p.X < best.X - Tol, or |p.X - best.X| <= Tol and p.Y < best.Y.
  // (0, 0) for an empty path.
  static TPoint64 LeftBottomPoint(const TPath64& Path, std::int64_t Tol);

  // ---- Measures (integer units) ----------------------------------------------------------

  // Signed area (integer units squared), positive anticlockwise; IsPositive: its magnitude.
  static double Area(const TPath64& Path, bool IsPositive = false);
  // AreaType 0: sum of signed areas; 1: |that sum|; otherwise the sum of magnitudes.
  static double Area(const TPaths64& Paths, int AreaType);
  // Area below 0; a path of zero area is not clockwise.
  static bool GetIsClockwise(const TPath64& Path);
  static void SetIsClockwise(TPath64& Path, bool IsClockwise);
  // IsAllSame: each path by itself. Otherwise path 0 decides and all are reversed together,
  // keeping holes opposite to their outline.
  static void SetIsClockwise(TPaths64& Paths, bool IsClockwise, bool IsAllSame);
  // The path of largest (signed when IsDirected, else absolute) area, earlier on ties; an
  // empty path for no paths. The reference is into Paths.
  static const TPath64& GetMaxAreaPath(const TPaths64& Paths, bool IsDirected);
  static const TPath64& GetMaxAreaPath(TPaths64&& Paths, bool IsDirected) = delete;
  // Edge lengths including the closing edge (integer units).
  static double Perimeter(const TPath64& path);
  // 4 vertices (or 5 closing ones) whose corners are exact right angles in integers.
  static bool IsRectangle(const TPath64& path);
  // 16 bytes per vertex plus 8 per path, clamped to 32 bits.
  static int MemoryUse(const TPaths64& Paths);

  // ---- Crossings with axis lines (integer units) -----------------------------------------
  // The Y values where the vertical line at X meets the path, in path order, unsorted and
  // with duplicates near vertices: a vertex within Range of the line adds its own Y, an edge
  // that passes from one side to the other adds its rounded crossing. IsClosed adds the
  // closing edge; otherwise vertex 0 is tested by itself at the end. Fewer than 3 vertices
  // (or 3 closing ones) give no values.
  static TList<std::int64_t> CalcYByX(const TPath64& Path, std::int64_t X, std::int64_t Range, bool IsClosed);
  static TList<std::int64_t> CalcXByY(const TPath64& Path, std::int64_t Y, std::int64_t Range, bool IsClosed);
  // All paths' values in path order. Note the order of the last two parameters; the
  // single-path order is refused at compile time.
  static TList<std::int64_t> CalcYByX(const TPaths64& Paths, std::int64_t X, bool IsClosed, std::int64_t Range);
  static TList<std::int64_t> CalcXByY(const TPaths64& Paths, std::int64_t Y, bool IsClosed, std::int64_t Range);
  static TList<std::int64_t> CalcYByX(const TPaths64&, std::int64_t, std::int64_t, bool) = delete;
  static TList<std::int64_t> CalcXByY(const TPaths64&, std::int64_t, std::int64_t, bool) = delete;

  // ---- Point relations (points in integer units) ------------------------------------------

  // srOn, srIn or srOut by an even-odd ray towards +X; the path is taken as closed. At
  // PathWorkingRate: a point within 1e-6 drawing units of where a sloped edge crosses its
  // height is srOn; vertices and level edges are matched exactly.
  static TShapeRelation RelationWithPoint(const TPath64& Path, const TPoint64& Pt);
  // One even-odd state over all paths; srOn as soon as any path gives it; srOut for none.
  static TShapeRelation RelationWithPoint(const TPaths64& Paths, const TPoint64& Pt);
  // 1 inside, 0 outside, -1 on the boundary (exact, integer units). A point outside rect
  // (read as PointInRect reads it) is 0 at once; inside or on it, the polygon decides, so a
  // point on the box edge is on the boundary only when it is on the polygon.
  static int PointInPolygon(const TPoint64& pt, const TPath64& poly, const TRect64& rect);
  // poly[0] is an outline, the rest holes: 1 inside, 0 outside or in a hole, -1 on the
  // outline, -2 on a hole's boundary; 0 for no paths. outline receives the outline's own
  // answer (untouched for no paths).
  static int PointInPolygons(const TPoint64& pt, const TPaths64& poly);
  static int PointInPolygons(const TPoint64& pt, const TPaths64& poly, int& outline);
  // The same with one box per path (rects[i] for poly[i]); EParamError when the counts
  // differ.
  static int PointInPolygons(const TPoint64& pt, const TPaths64& poly, const TList<TRect64>& rects, int& outline);
  // In, on any boundary, or nearer than tol (integer units) to a path.
  static bool IsPointIn(const TPoint64& pt, const TPaths64& poly, std::int64_t tol);
  static bool IsPointIn(const TPoint64& pt, const TPath64& poly, std::int64_t tol);
  // Whether some vertex or edge (closing edge included for 3 or more vertices) lies nearer
  // than Range (integer units). Then NearestDistance (rounded to a whole number of integer
  // units) and NearestPoint (rounded) are set; otherwise both stay untouched.
  static bool IsNearByPoint(const TPaths64& Paths, const TPointL2D& Point, std::int64_t Range, double& NearestDistance,
                            TPointL2D& NearestPoint);
  // The distance (integer units, a whole number) to the nearest vertex or edge, with that
  // point. Without vertices: MaxDouble and NearestPoint untouched.
  static double DistanceTo(const TPaths64& Paths, const TPointL2D& Point, TPointL2D& NearestPoint);

  // ---- Parameters (at PathWorkingRate; Tol in drawing units) ------------------------------
  // Parameter i + t is the point at fraction t of segment i (vertex i to vertex i + 1).

  // The first segment (closing one excluded) within Tol of Pt whose parameter lies in [0, 1]
  // within 1e-6; false and Param untouched when none does.
  static bool ParamByPoint(const TPath64& Path, const TPoint64& Pt, double& Param, double Tol = 1e-6);
  // The same, but the segment nearest to Pt wins (the earlier on ties).
  static bool AccurateParamByPoint(const TPath64& Path, const TPoint64& Pt, double& Param, double Tol = 1e-6);
  // The point at Param in [0, n] (the path as a ring), rounded. Exception
  // "[Error] TPathUtils.PointByParam: 参数超出取值范围" outside (within 1e-6) and for an empty
  // path.
  static TPoint64 PointByParam(const TPath64& Path, double Param);
  // Counter-clockwise angle in radians, [0, 2 pi), from the edge to the previous vertex to the
  // edge to the next one; a closing vertex is one corner with vertex 0. Pi for fewer than 2
  // vertices. Exception "[Error] TPathUtils.CornerRadian: 下标越界" outside 0 .. n - 1.
  static double CornerRadian(const TPath64& Path, int Id);

  // ---- Whole-path relation and multi-path extremes ---------------------------------------

  // By the area of the intersection, in units of 1e12 integer units squared (AbsTol in those
  // units, RelTol a fraction): -1 A lies in B (also for equal paths), 1 B lies in A, 0 they
  // overlap partly, 2 disjoint. A path without area shares no region: 2.
  static int RelationWithPath(const TPath64& PathA, const TPath64& PathB, double AbsTol, double RelTol);
  // The vertex chosen by Cmp (Tol in integer units) over all paths: the first vertex is
  // taken unasked, each later one when Cmp(vertex, best, Tol) holds. Indices -1 and (0, 0)
  // when there is no vertex.
  static TPoint64 MostPoint(const TPaths64& Paths, const IntPointTolCmpFunc& Cmp, int& PathIdx, int& PtIdx,
                            std::int64_t Tol);
  // MostPoint with the left-bottom rule of the single-path form, and with its twin that has
  // the axes exchanged (Tol in integer units).
  static TPoint64 LeftBottomPoint(const TPaths64& Paths, int& PathIdx, int& PtIdx, std::int64_t Tol);
  static TPoint64 LeftBottomPoint(const TPaths64& Paths, std::int64_t Tol);
  static TPoint64 BottomLeftPoint(const TPaths64& Paths, int& PathIdx, int& PtIdx, std::int64_t Tol);
  static TPoint64 BottomLeftPoint(const TPaths64& Paths, std::int64_t Tol);

  // ---- Comparison (exact, integer units) -------------------------------------------------

  // Path1 walks onto Path2 (either direction) when its vertex 0 is matched to vertex
  // Path2StartId. Different lengths: false. EAssertionFailed "Assertion failure" for a start
  // outside Path2.
  static bool ComparePath(const TPath64& Path1, const TPath64& Path2, int Path2StartId);
  // The lists hold the same outlines in any order, each with any start and direction; each
  // path of Paths1 takes its own path of Paths2. Empty paths need no partner, but both lists
  // must hold as many non-empty paths.
  static bool Equal(const TPaths64& Paths1, const TPaths64& Paths2);
  // The regions cover each other to within AreaTolerance (integer units squared), judged by
  // the positive-winding intersection: outlines anticlockwise, holes clockwise. RefArea, when
  // set, replaces the average of the two signed areas and skips their comparison.
  static bool IsCongruent(const TPaths64& Left, const TPaths64& Right, TNullable<double> RefArea, double AreaTolerance);

  // ---- Cutting (at PathWorkingRate; Tol in drawing units) ---------------------------------

  // The stretches of Segment, a nearly straight chain from its first vertex S to its last E,
  // that run along edges of Scissor, a ring (the closing edge included). An edge takes part
  // when it is parallel to the chord S -> E within 1e-4 radian, lies within Tol of it, and
  // both are at least 1e-6 long; its piece is the overlap of the two spans along the chord:
  // an edge end or S where the overlap starts, Segment's inner vertices inside it, an edge
  // end or E where it ends, in Segment's direction. A piece whose ends fall together (within
  // 1e-6 of the chord's length) is a touch and is left out; pieces that continue one another
  // end to end (a run across a straight vertex of Scissor) are one piece. Pieces come in
  // edge order. S = E: one path {S, S} when S lies within Tol of an edge. A two-vertex
  // Scissor is one edge. Empty Segment or Scissor, or Tol not a number or negative: no
  // pieces.
  static TPaths64 CutByPath(const TPath64& Scissor, const TPath64& Segment, double Tol);
  // CutByPath for each ring of Scissors in order, all pieces in one list.
  static TPaths64 CutByPaths(const TPaths64& Scissors, const TPath64& Segment, double Tol);

  // ---- Polygons with holes from loose paths and clipping trees ----------------------------

  // Clears Res and fills it with the polygons that Paths make: each item is a material
  // outline followed by its holes, copied as given (orientation and vertices untouched).
  // Nesting alone decides what is a hole, never orientation or input order: a path inside
  // no other is an outline, a path whose nearest container is an outline is one of its
  // holes, and a path inside a hole is an outline again (an island, an item of its own).
  // Vertices on the other path's boundary do not count, so touching paths nest by where the
  // rest of them lies; a path that crosses another lies inside it when most of its area does.
  // Paths of fewer than 3 vertices bound nothing and are left out. Items come in the input
  // order of their outlines, holes in input order. Overlapping outlines are not merged.
  // EAssertionFailed "[Assert] TPathUtils.NormalizeTPaths: 结果列表未创建" for no Res.
  static void NormalizeTPaths(const TPaths64& Paths, TPathsList* Res);
  // A new owning list of trees, one per path that lies inside no other, with the paths
  // nested as tree levels by the same rule as NormalizeTPaths (coordinates divided by Rate;
  // contours as given, without closing vertex). Paths of fewer than 3 vertices are left out.
  // EParamError when Rate is not a positive finite number.
  static std::unique_ptr<TVPolyline2DTreeList> CreatePolylineTreeList(const TPaths64& Paths, double Rate);
  // The regions of CreatePolylineTreeList's trees: one polygon per outline of even depth
  // with its direct children as holes; islands in holes are polygons of their own.
  static std::unique_ptr<TVHPolygonList> CreateHPolygons(const TPaths64& Paths, double Rate);
  // A new owning list with one item per outline of the tree: the outline's contour followed
  // by its holes' contours. Islands inside holes are items of their own, after their
  // ancestors (breadth first).
  static std::unique_ptr<TPathsList> PolyTreeToPathsList(const Clipper::TPolyTree& PolyTree);
  // Copies of the paths from index 1 on whose orientation differs from outDir: outDir True
  // selects those of negative area, False those of non-negative area. Path 0 is never looked
  // at; fewer than 2 paths give none.
  static TPaths64 ExtractHoles(const TPaths64& paths, bool outDir);
  // A new polygon from integer paths whose entry 0 is the outline (coordinates divided by
  // Rate). Each loop is closed. Paths that come in closed give an anticlockwise outline and
  // clockwise holes; when the outline comes in open it keeps its orientation and the holes
  // are set against it. The polygon's IsClockwise follows its outline. EParamError when Rate
  // is not a positive finite number.
  static std::unique_ptr<TVHPolygon> CreateHPolygon(const TPaths64& Paths, double Rate);
  // The same from a node's contour and its direct children's contours; nullptr gives an
  // empty polygon.
  static std::unique_ptr<TVHPolygon> CreateHPolygon(const Clipper::TPolyNode* PolyNode, double Rate);
  // Splits a node's contour that touches or crosses itself into simple polygons (even-odd),
  // and gives each piece of each child's contour to the first of them that holds it, judged
  // by the piece's first vertex that is not on that polygon's outline (on counts when all
  // are). Pieces that lie in none are dropped. nullptr gives an empty list.
  static std::unique_ptr<TVHPolygonList> CreateStrictSimpleHPolygon(const Clipper::TPolyNode* PolyNode, double Rate);

  // ---- Closing and smoothing -------------------------------------------------------------

  // Appends vertex 0 when the path has vertices and its last one differs.
  static void ConnectHeadTail(TPath64& Path);
  static void ConnectHeadTail(TPaths64& Paths);
  // Drops vertices where the path runs straight on or doubles straight back: the polyline's
  // CollinearSmooth(CrossMulTolerance / 1e10, false) on the path read at PathWorkingRate. The
  // vertices kept come back unchanged; a closed path stays closed.
  static void CollinearSmooth(TPath64& Path, double CrossMulTolerance);
  static void CollinearSmooth(TPaths64& Paths, double CrossMulTolerance);

  // ---- JSON (integer units, no rate) -----------------------------------------------------
  // The JSON travels as its text, so that this header needs no JSON library; a host that
  // embeds it in a document of its own parses the text with its library.
  // [[x,y],...] with the coordinates as JSON integers.
  static std::string CreatePathJson(const TPath64& Path);
  // [[[x,y],...],...]: one CreatePathJson array per path.
  static std::string CreatePathsJson(const TPaths64& Paths);
  // The path of [[x,y],...]; text that is no JSON raises EInOutError with the byte offset.
  // A coordinate is a JSON integer or a string holding a decimal
  // integer, within 64 bits; anything else (a fraction, 1.0, an exponent, a Boolean) raises
  // EConvertError. Of a pair entries 0 and 1 count and further entries are ignored. A value
  // that is no array, or a pair that is no array of at least two entries, raises
  // EInOutError. Each error names the place as $[i][j].
  static TPath64 CreatePath(std::string_view Json);
  static TPaths64 CreatePaths(std::string_view Json);
};

}  // namespace orvane
