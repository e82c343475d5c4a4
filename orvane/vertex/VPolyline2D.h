#pragma once
// TVPolyline2D: the kernel's outline of straight segments, open or closed, and the working
// form to which curves are sampled and from which integer paths are made.
//
// A polyline is its vertices. Closedness is read from them: a closed polyline repeats its
// first vertex at the end. Orientation follows the sign of Area: negative is clockwise.
// The parameter runs from 0 to Count - 1; its integer part is a segment index and its
// fraction the position along that segment in proportion to the segment's length, so
// parameter k is vertex k exactly and segment i joins vertices i and i + 1.

#include <memory>
#include <string>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"
#include "orvane/vertex/VPoint2DList.h"

namespace orvane {

class TVPolyline2D : public TVPoint2DList {
 public:
  // No vertices.
  TVPolyline2D() = default;
  TVPolyline2D(std::initializer_list<TPoint2D> Points) : TVPoint2DList(Points) {}
  // One vertex.
  explicit TVPolyline2D(const TPoint2D& Pt);
  // Two vertices, P1 and P2.
  explicit TVPolyline2D(const TLine2D& Line);
  // Five vertices: the high corner, XMinYMax, the low corner, XMaxYMin and the high corner
  // again; closed and counter-clockwise.
  explicit TVPolyline2D(const TRect2D& Rect);
  // The arc sampled within ChordTol (at most 1000 points), from its start to its end.
  TVPolyline2D(const TArc2D& Arc, double ChordTol);
  // Each path point with both coordinates divided by Rate. Rate must be a positive finite
  // number (EParamError otherwise).
  TVPolyline2D(const TPath64& Path, double Rate);
  explicit TVPolyline2D(const TDynPoints2D& Pts);
  // Takes the array over without copying it.
  explicit TVPolyline2D(TDynPoints2D&& Pts) : TVPoint2DList(std::move(Pts)) {}
  explicit TVPolyline2D(const TList<TPoint2D>& Pts);

  std::unique_ptr<TVPoint2DList> New() const override;

  // Conversions.

  // Clears the list, then takes the points of Pts.
  void Assign(const TDynPoints2D& Pts);
  // One path point per vertex, each coordinate multiplied by Rate and rounded half to even;
  // no vertex is dropped. EConvertError when a product is not finite or leaves 64 bits.
  TPath64 ToPath(double Rate) const;
  TDynPoints2D ToTDynPoints2D() const { return FItems; }
  std::unique_ptr<TList<TPoint2D>> ToTPoint2DList() const;
  // "(%.16f, %.16f), " for each vertex, the trailing separator included.
  std::string ToString() const;

  // Orientation.

  // Reverses the vertex list when the polyline has vertices and its orientation differs
  // from IsClockwise.
  virtual void SetIsClockwise(bool IsClockwise);

  // Queries.

  // Segment Id, for 0 <= Id <= Count - 2; Exception "[Error] TVPolyline2D.Line: 下标越界"
  // otherwise.
  TLine2D Line(int Id) const;
  // The piece from ParamFrom to ParamTo (tolerance 1e-6). On a closed polyline a ParamFrom
  // beyond ParamTo runs through the closing vertex; on an open one it raises EParamError
  // "[Error] TVPolyline2D.SubCurve: ParamTo < ParamFrom". Parameters within 1e-6 of
  // 0 .. Count - 1 are taken as its ends. A receiver without vertices gives an empty
  // polyline.
  // Parameters farther outside, or not finite, raise EParamError
  // "[Error] TVPolyline2D.SubCurve: 参数错误" rather than reading past the vertices.
  std::unique_ptr<TVPolyline2D> SubCurve(double ParamFrom, double ParamTo) const;
  // Same Count, and vertex i Equals vertex i within Tolerance for every i.
  bool IsEqualTo(const TVPolyline2D& Polyline, double Tolerance) const;
  // The same against Polyline read backwards.
  bool IsEqualToReverse(const TVPolyline2D& Polyline, double Tolerance) const;
  // Area is below 0; a polyline without area is not clockwise.
  bool IsClockwise() const { return Area() < 0.0; }
  // False for no vertices; otherwise the first vertex Equals the last within Tol (so a
  // single vertex is closed).
  bool IsClosed(double Tol) const;
  // Four vertices, or five with the polyline closed, whose edges turn by a right angle the
  // same way at every corner (1e-6). With AABBOnly the edges must also be axis-aligned.
  bool IsRect(bool AABBOnly) const;
  // Sum of the segment lengths; 0 with fewer than two vertices.
  double TotalLength() const;
  // Length along the polyline from vertex SIdx to vertex EIdx; on a closed polyline an EIdx
  // below SIdx runs through the closing vertex, on an open one it gives 0, as do equal
  // indices. Indices outside 0 .. Count - 1 fail the assertion
  // "[Assert] TVPolyline2D.RangeLength: 下标越界".
  double RangeLength(int SIdx, int EIdx) const;
  // The vertex indices of the convex hull, by TMelkmanAlgo::CalcConvexHull on the vertices
  // themselves: when the first three vertices are exactly collinear, vertex 1 is nudged by
  // a few micro-units in this polyline. Its exception passes through.
  void ConvexHull(TList<int>& Hull);
  // Appends the hull's vertices (closed, in the receiver's order) to Hull, which the caller
  // has created. Works on a copy of the vertices, so the receiver stays as it is.
  void ConvexHull(TVPolyline2D& Hull) const;
  // Whether the outline is convex: at most two changes of direction in X-then-Y order
  // (AllowSame lets exactly repeated vertices not count), and every turn, by the cross
  // product of successive edges with 1e-14 as zero, the same way or straight. Fewer than
  // three vertices, or three that are closed, are not convex.
  bool IsConvexPolygon(bool AllowSame) const;
  // The area centroid of the outline closed from the last vertex to the first; the centre
  // of BoundBox when the area vanishes (1e-6). EListError on an empty polyline.
  TPoint2D Gravity() const;
  // The chord vector from the vertex before the place at Param to that place. FZero with
  // fewer than two vertices, with Param outside 0 .. Count - 1 and at the start of an open
  // polyline. On a closed polyline the start looks back across the closing vertex.
  TPoint2D CalcLeftDerivative(double Param) const;
  // The chord vector from the place at Param to the vertex after it; the mirror of
  // CalcLeftDerivative, FZero at the end of an open polyline.
  TPoint2D CalcRightDerivative(double Param) const;
  void CalcDerivative(double Param, TPoint2D& Left, TPoint2D& Right) const;
  // The parameter of the nearest place within Radius (the first of equally near segments);
  // 0.0 when no segment comes closer than Radius. MaxDouble as Radius switches off the box
  // filter that skips far segments.
  double CalcParamByPoint(const TPoint2D& Point, double Radius) const;
  // The parameter of the nearest place on the first segment that passes strictly closer
  // than Tol to Point; -1.0 when none does.
  double CalcFirstParamByPoint(const TPoint2D& Point, double Tol) const;
  // The point at Param; FZero when Param lies below 0 or above Count - 1. EParamError when
  // Param is not finite.
  TPoint2D CalcPointByParam(double Param) const;
  // Distance to the polyline and the nearest point (the first of equally near segments).
  // MaxDouble, with NearestPt untouched, when there are no vertices.
  double DistTo(const TPoint2D& Pt, TPoint2D& NearestPt) const;
  // The place at length Distance along the polyline from vertex StartId: its parameter and
  // point. A closed polyline (1e-6) may be walked round any number of times; an open one
  // ends 1e-6 before its last vertex. False, with the outputs untouched, with fewer than
  // two vertices, a Distance below -1e-6, no segment longer than 1e-6, or the end of an
  // open polyline reached. A StartId outside 0 .. Count - 1 raises Exception
  // "[Error] TVPolyline2D.CalcTravelPos: 下标越界"; a Distance that is not finite raises
  // EParamError.
  bool CalcTravelPos(int StartId, double Distance, double& Param, TPoint2D& Pos) const;

 protected:
  void CopyFrom(const TVPoint2DList& Source) override;

 private:
  // Vertex i without the list's range check; callers guarantee the index.
  const TPoint2D& V(int I) const { return FItems[static_cast<std::size_t>(I)]; }
};

}  // namespace orvane
