#pragma once
// TVPolyline2D: the kernel's outline of straight segments, open or closed, and the working
// form to which curves are sampled and from which integer paths are made.
//
// A polyline is its vertices. Closedness is read from them: a closed polyline repeats its
// first vertex at the end. Orientation follows the sign of Area: negative is clockwise.
// The parameter runs from 0 to Count - 1; its integer part is a segment index and its
// fraction the position along that segment in proportion to the segment's length, so
// parameter k is vertex k exactly and segment i joins vertices i and i + 1.

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Nullable.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/ClipperTypes.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VPoint2DList.h"

namespace orvane {

struct TGeTolerance;
// Built on this class; Union answers one, and its callers include VPolyline2DList.h.
class TVPolyline2DList;

class ORVANE_API TVPolyline2D : public TVPoint2DList {
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
  TList<TPoint2D> ToTPoint2DList() const { return TList<TPoint2D>(TDynPoints2D(FItems)); }
  // "(%.16f, %.16f), " for each vertex, the trailing separator included.
  std::string ToString() const;
  // The text dump: Color, "(", the vertices as "(%.16f, %.16f)" (HighPrecision) or
  // "(%f, %f)" with ", " between them, ")"; no line end. The colour "#000000" is written as
  // nothing. EInOutError when the stream fails.
  void WriteToFile(std::ostream& F, std::string_view Color, bool HighPrecision) const;

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

  // Crossings and relations. None of these changes the polyline; result lists are the
  // caller's and are only appended to.

  // The ordinal of srOn, srIn or srOut for Pt against the outline closed from the last
  // vertex to the first: srOn when Pt lies within Tol of an edge or an end of one (before
  // any parity is counted), otherwise the even-odd count of a ray toward +X. No vertices
  // give srOut; one vertex is srOn within Tol of it.
  int RelationWithPoint(const TPoint2D& Pt, double Tol) const;
  // The same at the tolerance's PointTol.
  int RelationWithPoint(const TPoint2D& Pt, const TGeTolerance& Tol) const;
  // Crossings with the segment Line as parameters of Line (0 at P1, 1 at P2): single points
  // in CrossPoints, collinear stretches as (smaller, larger) pairs in CrossLines. Both lists
  // are then sorted as a whole (CrossLines by key), CrossPoints loses every value within
  // 1e-6 of its predecessor, and with RemoveDuplicate also every value that lies in a
  // stretch. A Line of length 0 (1e-6) reports 0.0 once when it lies on a segment. True
  // when either list then holds anything.
  bool CrossWith(const TLine2D& Line, TList<double>& CrossPoints, TList<TPair<double, double>>& CrossLines,
                 bool RemoveDuplicate, double Tol) const;
  // The same at Tol = 1e-6, as points and segments of Line; true when this call found
  // anything.
  bool CrossWith(const TLine2D& Line, TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                 bool RemoveDuplicate) const;
  // The crossing farthest along Segline (1e-6); no value when there is none.
  TNullable<TPoint2D> CrossWithLastPt(const TLine2D& Segline) const;
  // All crossing points and collinear overlaps of the two polylines (1e-6), found through an
  // R-tree over the segments of the polyline with more vertices. Points that agree after
  // rounding to multiples of 1e-6 are reported once; overlaps are not filtered. A vertex that
  // is not a finite point raises EParamError.
  void CrossWith(const TVPolyline2D& Polyline, TList<TPoint2D>& CrossPoints, TList<TLine2D>& CrossLines) const;
  // The two polylines touch or cross (1e-6). False when either has fewer than 2 vertices or
  // their boxes do not meet.
  bool IsCrossWith(const TVPolyline2D& Polyline) const;
  // The polyline crosses or touches itself within AbsTol anywhere but where neighbouring
  // segments share their vertex and, on a closed polyline, at the seam. Neighbours that fold
  // back along each other count, and so does a repeated vertex, for the segments on either
  // side of it meet there. False with at most 2 vertices; EParamError for a vertex that is not
  // a finite point.
  bool IsSelfIntersect(double AbsTol) const;
  // 0 when the two outlines, each closed, cross or touch; 1 when the other lies inside this
  // one; -1 otherwise. Both must have vertices: the assertion
  // "[Assert] TVPolyline2D.RelationWith: 多段线没有数据" fails otherwise.
  int RelationWith(const TVPolyline2D& Polyline) const;
  // The crossing with Polyline nearest to FromPoint, FromPoint itself (1e-6) not counting;
  // points win over overlaps at equal distance. False, with ResultPoint untouched, when there
  // is none.
  bool NearestCrossPoint(const TVPolyline2D& Polyline, const TPoint2D& FromPoint, TPoint2D& ResultPoint) const;
  // The corner at vertex Id: 0 none (fewer than 3 vertices, a free end of an open
  // polyline), 1 convex (turns with the polyline's orientation), 2 straight (1e-12), 3
  // concave. On a closed polyline the first and last vertex are one corner. An Id outside
  // 0 .. Count - 1 raises EListError.
  std::uint8_t CornerType(int Id) const;
  // The radius of the circle through the places one parameter before Param, at Param and
  // one after (wrapping round a closed polyline); 0 on a straight stretch, at the ends of an
  // open polyline and with fewer than 2 vertices.
  double CurvatureRadius(double Param) const;

  // Editing. The first six are virtual so that a derived class can keep its own data in
  // step; they change the vertices in one pass, without a notification per vertex.

  // A point reflection in the origin; the orientation stays.
  virtual void Negative();
  // Appends a copy of the first vertex unless the polyline is empty or closed (1e-6).
  virtual void ConnectHeadTail();
  // Cuts Length, measured along the polyline, off the head, the tail or both. When nothing
  // would remain, the polyline becomes the one point half way along it (the first vertex
  // when it has no segment longer than 1e-6). A cut that ends on a vertex keeps that vertex
  // once. Nothing happens without vertices, without an end named or for a Length that is
  // not positive.
  // Where the walk along the polyline finds no place (no segment longer than 1e-6, or a
  // place within 1e-6 of an open end): a head cut that reaches the end leaves the last
  // vertex alone, a tail cut shorter than that leaves the tail, and a polyline without
  // measurable segments stays as it is.
  virtual void Trim(double Length, bool OnHead, bool OnTail);
  // Replaces the vertices StartId .. EndId by PointCount of them picked evenly by index
  // (the range's middle vertex for 1, none for 0 or less). Nothing happens when the range
  // holds fewer than PointCount vertices. Indices outside the polyline, or an EndId below
  // StartId - 1, raise Exception "[Error] TVPolyline2D.Simplify: 下标越界" and change
  // nothing.
  virtual void Simplify(int PointCount, int StartId, int EndId);
  // Removes each vertex that Equals its kept predecessor within Tolerance, so a run of
  // coincident vertices shrinks to its first. With DoesCheckHeadTail the last vertex is then
  // compared with the first, and the first goes when they coincide: a closed polyline loses
  // its closing repetition, and one whose vertices all coincide ends empty.
  virtual void DeleteNeighbourClosed(bool DoesCheckHeadTail, double Tolerance);
  // Removes vertices at which the polyline runs straight on within ATol (sine of the angle);
  // unless IsSameDir, also the tips of spikes that run back along the same line. The
  // direction into a vertex is measured from the last kept vertex, so slow bends are not
  // smoothed away step by step. The ends of an open polyline stay; a closed polyline stays
  // closed, its first vertex may go.
  virtual void CollinearSmooth(double ATol, bool IsSameDir);
  // Joins the receiver and Polyline at the first pair of ends that Equals within Tolerance,
  // tried in the order first-first, first-last, last-first, last-last, and appends the joined
  // vertices to ResultPolyline, with one vertex at the junction. False, with ResultPolyline
  // untouched, when either is empty or no ends meet. Neither input changes.
  bool TryConnect(const TVPolyline2D& Polyline, TVPolyline2D& ResultPolyline, double Tolerance) const;
  // The union of the two outlines, each closed, computed on integer paths at
  // PathWorkingRate under AFillType: an owning list of new polylines in the order of the
  // result, without closing vertices. Both outlines enter as subjects, so under frEvenOdd a
  // region that both cover drops out. A coordinate that leaves the 64-bit range at that scale
  // raises EConvertError, one beyond the clipper's range its range error.
  std::unique_ptr<TVPolyline2DList> Union(const TVPolyline2D& APoly, TFillRule AFillType) const;

 protected:
  void CopyFrom(const TVPoint2DList& Source) override;

 private:
  // Vertex i without the list's range check; callers guarantee the index.
  const TPoint2D& V(int I) const { return FItems[static_cast<std::size_t>(I)]; }
  // Deletes from a sorted list every value that equals its predecessor within 1e-6.
  static void RemoveDuplicate(TList<double>& Params);
  // Param lies in one of the stretches, both ends included.
  static bool IsPointParamInLineParams(double Param, const TList<TPair<double, double>>& LineParams);
};

}  // namespace orvane
