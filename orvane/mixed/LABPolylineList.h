#pragma once
// The mixed outlines gathered: TLABPolylineList, a list of outlines; TLABHPolygon, an outer
// boundary (item 0) with its holes (the further items); TLABHPolygonList, a list of such
// regions. They hold, convert and pass operations on to their items; they keep no
// orientation invariant, and Area is the plain sum of the items' signed areas, so holes of
// the opposite orientation subtract.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/vertex/VGeometry2DList.h"

namespace orvane {

class TVHPolygon;
class TVHPolygonList;

class ORVANE_API TLABPolylineList : public TVGeometry2DList<TLABPolyline> {
 public:
  explicit TLABPolylineList(bool AOwnsObjects = true) : TVGeometry2DList<TLABPolyline>(AOwnsObjects) {}

  // An empty TLABPolylineList with the given owning flag.
  std::unique_ptr<TVGeometry2DList<TLABPolyline>> New(bool AOwnsObjects) const override;
  // TLABPolyline::CollinearSmooth on each item, in list order.
  void CollinearSmooth(bool IncludeStartEnd, double Tol);
  // False for an empty list; otherwise whether item 0 is a circle.
  bool FirstIsCircle() const;
  // Each item's WriteToFile, a line end between two items and none behind the last.
  void WriteToFile(std::ostream& F, int Flag, std::string_view Color, bool HighPrecision) const;
};

class ORVANE_API TLABHPolygon : public TLABPolylineList {
 public:
  // An empty polygon with the stored orientation flag; it owns its outlines unless told.
  explicit TLABHPolygon(bool IsClockwise = false, bool AOwnsObjects = true)
      : TLABPolylineList(AOwnsObjects), FIsClockwise(IsClockwise) {}
  // One line outline per loop of HPolygon, in order (TLABPolyline from each TVPolyline2D);
  // empty for a null polygon. No link to HPolygon is kept.
  TLABHPolygon(const TVHPolygon* HPolygon, bool IsClockwise);

  // An empty TLABHPolygon with the receiver's flag and the given owning flag.
  std::unique_ptr<TVGeometry2DList<TLABPolyline>> New(bool AOwnsObjects) const override;
  // The value given at construction; no operation reads or changes it.
  bool GetIsClockwise() const { return FIsClockwise; }

 private:
  bool FIsClockwise;
};

class ORVANE_API TLABHPolygonList : public TVGeometry2DList<TLABHPolygon> {
 public:
  explicit TLABHPolygonList(bool AOwnsObjects = true) : TVGeometry2DList<TLABHPolygon>(AOwnsObjects) {}
  // One TLABHPolygon per polygon of HPolygons, in order, each with its source's orientation
  // flag; empty for a null list. The list owns the regions it makes, also when AOwnsObjects
  // is false (nobody else could free them).
  TLABHPolygonList(const TVHPolygonList* HPolygons, bool AOwnsObjects);

  std::unique_ptr<TVGeometry2DList<TLABHPolygon>> New(bool AOwnsObjects) const override;
  // CollinearSmooth on each polygon, holes included.
  void CollinearSmooth(bool IncludeStartEnd, double Tol);
};

}  // namespace orvane
