#include "orvane/monotone/MHPolygon.h"

#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {
constexpr double ContactTol = 1e-6;
}  // namespace

TMHPolygon::TMHPolygon(const TVHPolygon& HPolygon) : TMPolygonList(true), FIsClockwise(false) {
  for (const TVPolyline2D* loop : HPolygon) {
    if (loop == nullptr || loop->Count() <= 1) continue;
    if (loop->Count() >= 3 && !loop->IsClosed(ContactTol)) {
      TVPolyline2D closed(loop->Points());
      closed.ConnectHeadTail();
      Add(std::make_unique<TMPolygon>(closed, nullptr, true));
    } else {
      Add(std::make_unique<TMPolygon>(*loop, nullptr, true));
    }
  }
}

std::unique_ptr<TVGeometry2DList<TMPolygon>> TMHPolygon::New(bool AOwnsObjects) const {
  return std::make_unique<TMHPolygon>(true, AOwnsObjects);
}

std::unique_ptr<IVGeometry2D> TMHPolygon::Clone() const {
  std::unique_ptr<IVGeometry2D> copy = TMPolygonList::Clone();
  static_cast<TMHPolygon&>(*copy).FIsClockwise = FIsClockwise;
  return copy;
}

TRect2D TMHPolygon::BoundBox() const {
  TRect2D box = TRect2D::Invalid();
  for (const TMPolygon* item : *this) box.Extend(item->BoundBox());
  return box;
}

bool TMHPolygon::ClipTest(const TMPolygonList& APolygon) const {
  for (const TMPolygon* a : *this) {
    const TRect2D boxA = a->BoundBox();
    for (const TMPolygon* b : APolygon) {
      if (boxA.RelationWithRect(b->BoundBox(), ContactTol) == 0) continue;
      if (a->TestOverlap(*b)) return true;
    }
  }
  return false;
}

bool TMHPolygon::IsCrossWith(const TMHPolygon& MHPolygon) const {
  if (Count() == 0 || MHPolygon.Count() == 0) return false;
  if (First()->Count() == 0 || MHPolygon.First()->Count() == 0) return false;
  if (ClipTest(MHPolygon)) return true;
  // No boundary meets another, so one point of each outer boundary decides.
  const TPoint2D p = MHPolygon.First()->First()->First();
  const TPoint2D q = First()->First()->First();
  if (First()->PointIsIn(p) == 0 && MHPolygon.First()->PointIsIn(q) == 0) return false;
  for (int i = 1; i < Count(); ++i)
    if ((*this)[i]->PointIsIn(p) == 1) return false;  // the other region sits in this hole
  for (int i = 1; i < MHPolygon.Count(); ++i)
    if (MHPolygon[i]->PointIsIn(q) == 1) return false;
  return true;
}

bool TMHPolygon::PointIsIn(const TPoint2D& APoint) const {
  if (Count() == 0) return false;
  const std::uint8_t outer = First()->PointIsIn(APoint);
  if (outer == 0) return false;
  if (outer == 2) return true;
  for (int i = 1; i < Count(); ++i) {
    const std::uint8_t r = (*this)[i]->PointIsIn(APoint);
    if (r == 1) return false;
    if (r == 2) return true;
  }
  return true;
}

TMHPolygonList::TMHPolygonList(const TVHPolygonList& HPolygonList) : TMHPolygonList(true) {
  for (const TVHPolygon* region : HPolygonList) Add(std::make_unique<TMHPolygon>(*region));
}

std::unique_ptr<TVGeometry2DList<TMHPolygon>> TMHPolygonList::New(bool AOwnsObjects) const {
  return std::make_unique<TMHPolygonList>(AOwnsObjects);
}

bool TMHPolygonList::TestOverlap(const TMHPolygonList& MHPolygons) const {
  for (const TMHPolygon* a : *this)
    for (const TMHPolygon* b : MHPolygons)
      if (a->ClipTest(*b)) return true;
  return false;
}

}  // namespace orvane
