#pragma once
// TVHPolygon: a region bounded by closed vertex polylines, item 0 the outline and every
// further item a hole; TVHPolygonList: a set of such regions, as the clipping operations
// give them back.

#include <cstdint>
#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace orvane {

namespace Clipper {
class TPolyNode;
}  // namespace Clipper
namespace Clipper2 {
class TPolyPath64;
}  // namespace Clipper2

// The polygon owns its loops. It keeps the outline in the orientation FIsClockwise and every
// closed hole in the other: a loop that comes in closed is turned at once, a loop inserted in
// front becomes the outline (and the former outline a hole), and when a loop leaves, item 0
// is set to the outline's orientation. A loop that comes in open keeps its orientation until
// somebody sets it.
class ORVANE_API TVHPolygon : public TVPolyline2DList {
 public:
  // An empty polygon that owns its loops.
  explicit TVHPolygon(bool IsClockwise = false) : TVPolyline2DList(true), FIsClockwise(IsClockwise) {}

  // An empty TVHPolygon with the receiver's FIsClockwise; it owns its loops, as every polygon
  // does, whatever AOwnsObjects asks.
  std::unique_ptr<TVGeometry2DList<TVPolyline2D>> New(bool AOwnsObjects) const override;

  bool GetIsClockwise() const { return FIsClockwise; }
  // If there are loops and the value differs from FIsClockwise: stores it and turns the
  // outline to it and every hole to the opposite. An equal value touches nothing.
  void SetIsClockwise(bool IsClockwise);

  // The number of vertices of all loops.
  int PtCount() const;
  // Every loop IsClosed within 1e-6; true for an empty polygon.
  bool CheckClosed() const;
  // The absolute area of the outline less the absolute area of each hole, whatever the
  // orientations (negative only when the holes outweigh the outline); 0 for an empty polygon.
  double Area() const override;
  // The outline's box (holes lie inside it); the invalid box for an empty polygon.
  TRect2D BoundBox() const override;
  // Mirrors every loop, which reverses every orientation: FIsClockwise is inverted.
  void YMirror() override;
  // Transforms every loop, then reads FIsClockwise back from the outline, for the matrix may
  // mirror.
  void Transform(const TMatrix2D& Matrix) override;
  // The area centroid of the net region: the centroid sums run over all loops, each closed
  // from its last vertex to its first, and the holes, running the other way, subtract by
  // themselves. The centre of BoundBox when the doubled area is 0 within 1e-6.
  TPoint2D Gravity() const;
  double XGravity() const;
  // The same number of loops, of vertices in each, and vertex for vertex Equals within 1e-6,
  // in the stored order.
  bool IsEqualTo(const TVHPolygon& HPolygon) const;
  // The ordinal of srOn, srIn or srOut for the region: srOn on the outline or a hole's edge,
  // srOut inside a hole or outside the outline; srOut for an empty polygon.
  std::uint8_t RelationWithPoint(const TPoint2D& Point, double Tol) const;
  // The polyline touches or crosses a loop (false at once when the boxes are apart by more
  // than 1e-6).
  bool IsCrossWith(const TVPolyline2D& Polyline) const;

  // Reads the loops as the list does, then takes the outline's orientation as the polygon's
  // and turns every hole to the opposite one, whatever the file says.
  void ReadFrom(const std::string& FileName) override;

 protected:
  void Notify(TVPolyline2D* const& Item, TCollectionNotification Action) override;

 private:
  bool FIsClockwise;
};

// Independent regions, all expected to share one orientation.
class ORVANE_API TVHPolygonList : public TVGeometry2DList<TVHPolygon> {
 public:
  explicit TVHPolygonList(bool AOwnsObjects = true) : TVGeometry2DList<TVHPolygon>(AOwnsObjects) {}
  // An owning list of the regions of a clipping result, coordinates divided by Rate. A node
  // that is a hole, or has no contour (a tree's root), stands for its children that are not
  // holes; otherwise for itself. Each region takes a node's contour as outline and its hole
  // children as holes (closed by ConnectHeadTail, orientation as the tree gives it); islands
  // inside a hole become regions of their own. Regions come breadth first. EParamError when
  // Rate is not a positive finite number.
  TVHPolygonList(const Clipper::TPolyNode& PolyTree, double Rate);
  TVHPolygonList(const Clipper2::TPolyPath64& PolyTree, double Rate);

  std::unique_ptr<TVGeometry2DList<TVHPolygon>> New(bool AOwnsObjects) const override;

  // The sum of the polygons' Count: the number of loops in the list, not of vertices.
  int PtCount() const;
  // Every polygon CheckClosed.
  bool CheckClosed() const;
  // The centroid sums over all loops of all polygons (the centre of the list's BoundBox when
  // the doubled area is 0 within 1e-6).
  TPoint2D Gravity() const;
  double XGravity() const;
  // The same over the outlines only, skipping empty polygons.
  TPoint2D GravityOutline() const;
  double XGravityOutline() const;
  // srOn or srIn from the first polygon that gives either, srOut when none does.
  std::uint8_t RelationWithPoint(const TPoint2D& Point, double Tol) const;
  // Some polygon IsCrossWith the polyline.
  bool IsCrossWith(const TVPolyline2D& Polyline) const;
  // SetIsClockwise on each polygon.
  void SetIsClockwise(bool IsClockwise);
  // A new owning list with the region common to all polygons, clipped (even-odd) on integer
  // paths at PathWorkingRate from the loops that are closed within 1e-6 and have at least 3
  // vertices. With at most one polygon, a Clone of the list. A coordinate beyond the integer
  // range raises the conversion or the clipper's range error.
  std::unique_ptr<TVHPolygonList> IntersectSelf() const;
  // Sorts by the absolute Area, each computed once. The sort is stable.
  void SortByArea(bool Descending);
  // Sorts by A * max(0.3, A / max(1e-6, B)), with A the absolute Area and B the area of the
  // box: compact regions rank above sprawling ones of the same area. Stable.
  void SortByRegArea(bool Descending);
};

}  // namespace orvane
