#pragma once
// TMPolygonList: a list of monotone polygons that can sort itself into piles of outlines
// that touch (parts that move together, cuts that are shared); TMPolyline2DsList: a list of
// such piles.
//
// A polygon's Plug names the pile it was put in. The link never dangles: a pile that is
// freed, or that lets a polygon go, clears the link of each member that names it, and an
// owning list that frees a polygon first takes it out of its pile.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/vertex/VGeometry2DList.h"
#include "orvane/vertex/VHPolygon.h"

namespace orvane {

class TMPolyline2DsList;

class ORVANE_API TMPolygonList : public TVGeometry2DList<TMPolygon> {
 public:
  explicit TMPolygonList(bool AOwnsObjects = true) : TVGeometry2DList<TMPolygon>(AOwnsObjects) {}
  ~TMPolygonList() override;

  // An empty TMPolygonList.
  std::unique_ptr<TVGeometry2DList<TMPolygon>> New(bool AOwnsObjects) const override;

  // -1 when A's box starts left of B's, 1 when right of it, else 0: exact, no tolerance.
  static int Compare(TMPolygon* const& A, TMPolygon* const& B);

  // Sorts the polygons into piles of outlines that touch or cross (TestOverlap, within
  // 1e-6), the connected components of that contact, and adds each pile to Heaps as a new
  // list that does not own its polygons: piles in order of first contact, then one pile per
  // polygon that touches none, in list order. The polygons stay owned by this list.
  //
  // Polygons that are already in a pile are taken as they stand: a second Merge over the
  // same polygons adds no pile and changes none. Polygons without chains touch nothing.
  //
  // Pairs are found by dealing the boxes into horizontal strips of about four mean heights
  // (boxes grown by 1e-6, so that a contact across a strip edge is not lost) and sweeping
  // each strip by x. When all boxes are flat the strips cannot be sized from the heights,
  // and one strip holds all.
  void Merge(TMPolyline2DsList& Heaps);
  // A new owning TVHPolygon with each polygon's ToVPolyline2D in list order (an empty
  // polyline for a polygon without chains), in the orientation of the first polygon.
  std::unique_ptr<TVHPolygon> TransToTVGSPolygon() const;

 protected:
  // An owning list takes a polygon out of its pile before freeing it; a pile clears the
  // link of a member that leaves it.
  void Notify(TMPolygon* const& Item, TCollectionNotification Action) override;

 private:
  // Joins the piles of A and B, making one where neither has one.
  static void Join(TMPolygon& A, TMPolygon& B, TMPolyline2DsList& Heaps);
};

// Piles of touching polygons; owns its piles unless created otherwise.
class ORVANE_API TMPolyline2DsList : public TObjectList<TMPolygonList> {
 public:
  explicit TMPolyline2DsList(bool AOwnsObjects = true) : TObjectList<TMPolygonList>(AOwnsObjects) {}
};

}  // namespace orvane
