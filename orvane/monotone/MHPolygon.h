#pragma once
// TMHPolygon: a region of monotone polygons, item 0 the outer boundary and every further
// item a hole; TMHPolygonList: a set of such regions, for overlap tests between whole parts
// with holes.

#include <cstdint>
#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/monotone/MPolygonList.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VHPolygon.h"

namespace orvane {

class ORVANE_API TMHPolygon : public TMPolygonList {
 public:
  // Empty, FIsClockwise set.
  explicit TMHPolygon(bool IsClockwise = true, bool AOwnsObjects = true)
      : TMPolygonList(AOwnsObjects), FIsClockwise(IsClockwise) {}
  // An owning region with one polygon per loop of HPolygon of more than one vertex, in
  // order; loops of one vertex or none are passed over. A loop of three or more vertices
  // that does not repeat its first vertex is closed here, since a region's loops bound
  // areas: left open, its polygon would miss the closing edge. FIsClockwise is false.
  // A vertex that is not finite raises EParamError and builds nothing.
  explicit TMHPolygon(const TVHPolygon& HPolygon);

  bool GetIsClockwise() const { return FIsClockwise; }

  // An empty TMHPolygon with FIsClockwise true.
  std::unique_ptr<TVGeometry2DList<TMPolygon>> New(bool AOwnsObjects) const override;
  // The list's copy (deep for an owning region), with FIsClockwise.
  std::unique_ptr<IVGeometry2D> Clone() const override;
  // The union of the items' boxes; the invalid box for an empty region.
  TRect2D BoundBox() const override;

  // Some item of this region TestOverlaps some item of APolygon: boundaries only, holes
  // like outer boundaries. Pairs whose boxes are apart by more than 1e-6 are passed over.
  bool ClipTest(const TMPolygonList& APolygon) const;
  // The two regions have area or boundary in common: a region inside the other's hole
  // does not, one inside the other's material or around its outer boundary does. False
  // when either is empty or has an outer boundary without chains.
  bool IsCrossWith(const TMHPolygon& MHPolygon) const;
  // The point lies in the region; on the outer boundary or a hole's boundary counts as in.
  // False for an empty region.
  bool PointIsIn(const TPoint2D& APoint) const;

 private:
  bool FIsClockwise;
};

class ORVANE_API TMHPolygonList : public TVGeometry2DList<TMHPolygon> {
 public:
  explicit TMHPolygonList(bool AOwnsObjects = true) : TVGeometry2DList<TMHPolygon>(AOwnsObjects) {}
  // An owning list with one TMHPolygon per region of HPolygonList.
  explicit TMHPolygonList(const TVHPolygonList& HPolygonList);

  std::unique_ptr<TVGeometry2DList<TMHPolygon>> New(bool AOwnsObjects) const override;

  // Some region of this list ClipTests some region of MHPolygons: boundaries only.
  bool TestOverlap(const TMHPolygonList& MHPolygons) const;
};

}  // namespace orvane
