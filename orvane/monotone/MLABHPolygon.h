#pragma once
// TMLABHPolygon: a region of mixed monotone polygons, item 0 the outer boundary and every
// further item a hole; TMLABHPolygonList: a set of such regions. They answer, at arc
// precision: do the boundaries meet (IsCrossWith), do the regions share area or boundary
// (Overlap), does one region lie wholly inside the other (Contains).

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/monotone/MLABPolygon.h"
#include "orvane/vertex/VGeometry2DList.h"

namespace orvane {

class TVHPolygonList;

class ORVANE_API TMLABHPolygon : public TVGeometry2DList<TMLABPolygon> {
 public:
  explicit TMLABHPolygon(bool AOwnsObjects = true) : TVGeometry2DList<TMLABPolygon>(AOwnsObjects) {}
  // Owning: one TMLABPolygon(Polyline, Tol) per outline of LABHPolygon with a segment, in
  // order.
  TMLABHPolygon(const TLABHPolygon& LABHPolygon, double Tol);

  std::unique_ptr<TVGeometry2DList<TMLABPolygon>> New(bool AOwnsObjects) const override;

  // Some item of this region, holes included, touches or crosses some item of
  // MLABHPolygon (Tol).
  bool IsCrossWith(const TMLABHPolygon& MLABHPolygon, double Tol) const;
  // The regions share area or boundary (Tol). False when either is empty.
  bool Overlap(const TMLABHPolygon& MLABHPolygon, double Tol) const;
  // MLABHPolygon lies wholly inside this region, touching nothing: any contact of the
  // boundaries counts. True for an empty argument.
  bool Contains(const TMLABHPolygon& MLABHPolygon) const;

 private:
  // K lies inside this region's outer boundary: does it reach the material, that is, does
  // it meet a hole or not sit inside one?
  bool OutlineMeetsRegion(const TMLABPolygon& K, double Tol) const;
};

class ORVANE_API TMLABHPolygonList : public TVGeometry2DList<TMLABHPolygon> {
 public:
  explicit TMLABHPolygonList(bool AOwnsObjects = true) : TVGeometry2DList<TMLABHPolygon>(AOwnsObjects) {}
  // Owning: one region per TLABHPolygon with an outline, in order.
  TMLABHPolygonList(const TLABHPolygonList& LABHPolygons, double Tol);
  // Owning: from vertex regions, through their line outlines.
  TMLABHPolygonList(const TVHPolygonList& HPolygons, double Tol);

  std::unique_ptr<TVGeometry2DList<TMLABHPolygon>> New(bool AOwnsObjects) const override;

  bool IsCrossWith(const TMLABHPolygonList& MLABHPolygons, double Tol) const;
  bool Overlap(const TMLABHPolygonList& MLABHPolygons, double Tol) const;
  // Each region of MLABHPolygons lies inside some region of this list; true when empty.
  bool Contains(const TMLABHPolygonList& MLABHPolygons) const;
};

}  // namespace orvane
