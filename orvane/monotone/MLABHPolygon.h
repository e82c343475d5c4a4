#pragma once
// TMLABHPolygon: a region of mixed monotone polygons, item 0 the outer boundary and every
// further item a hole; TMLABHPolygonList: a set of such regions. They answer, at arc
// precision: do the boundaries meet (IsCrossWith), do the regions share area or boundary
// (Overlap), does one region lie wholly inside the other (Contains).

#include <memory>
#include <vector>

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

  // Moves the outlines and drops the index of the holes.
  void Translate(const TPoint2D& Vector) override;

 protected:
  // Any change of the list drops the index of the holes.
  void Notify(TMLABPolygon* const& Item, TCollectionNotification Action) override;

 private:
  // The holes whose boxes may meet Box, through a grid over the holes' boxes that is built
  // at the first query and dropped by every change made through this region. Change the
  // outlines through the region, not one by one, or the grid goes stale.
  template <class F>
  bool AnyHoleNear(const TRect2D& Box, F&& Visit) const;
  void BuildHoleGrid() const;

  // K lies inside this region's outer boundary: does it reach the material, that is, does
  // it meet a hole or not sit inside one?
  bool OutlineMeetsRegion(const TMLABPolygon& K, double Tol) const;

  struct THoleGrid {
    bool Valid = false;
    TRect2D Box;
    int Nx = 0;
    int Ny = 0;
    double CellW = 0.0;
    double CellH = 0.0;
    std::vector<std::vector<int>> Cells;  // hole indices per cell, row by row
    std::vector<unsigned> Seen;           // per hole: the query that visited it last
    unsigned Query = 0;
  };
  mutable THoleGrid FGrid;
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
