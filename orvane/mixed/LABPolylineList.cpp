#include "orvane/mixed/LABPolylineList.h"

#include "orvane/vertex/VHPolygon.h"

namespace orvane {

std::unique_ptr<TVGeometry2DList<TLABPolyline>> TLABPolylineList::New(bool AOwnsObjects) const {
  return std::make_unique<TLABPolylineList>(AOwnsObjects);
}

void TLABPolylineList::CollinearSmooth(bool IncludeStartEnd, double Tol) {
  for (TLABPolyline* item : *this) item->CollinearSmooth(IncludeStartEnd, Tol);
}

bool TLABPolylineList::FirstIsCircle() const { return !IsEmpty() && First()->IsCircle(); }

TLABHPolygon::TLABHPolygon(const TVHPolygon* HPolygon, bool IsClockwise)
    : TLABPolylineList(true), FIsClockwise(IsClockwise) {
  if (HPolygon == nullptr) return;
  for (const TVPolyline2D* loop : *HPolygon) Add(std::make_unique<TLABPolyline>(loop));
}

std::unique_ptr<TVGeometry2DList<TLABPolyline>> TLABHPolygon::New(bool AOwnsObjects) const {
  return std::make_unique<TLABHPolygon>(FIsClockwise, AOwnsObjects);
}

TLABHPolygonList::TLABHPolygonList(const TVHPolygonList* HPolygons, bool AOwnsObjects)
    // The regions made here belong to nobody else: a list that is to hold some owns them,
    // whatever AOwnsObjects asks, rather than leak them.
    : TVGeometry2DList<TLABHPolygon>(AOwnsObjects || (HPolygons != nullptr && !HPolygons->IsEmpty())) {
  if (HPolygons == nullptr) return;
  for (const TVHPolygon* polygon : *HPolygons)
    Add(std::make_unique<TLABHPolygon>(polygon, polygon->GetIsClockwise()));
}

std::unique_ptr<TVGeometry2DList<TLABHPolygon>> TLABHPolygonList::New(bool AOwnsObjects) const {
  return std::make_unique<TLABHPolygonList>(AOwnsObjects);
}

void TLABHPolygonList::CollinearSmooth(bool IncludeStartEnd, double Tol) {
  for (TLABHPolygon* item : *this) item->CollinearSmooth(IncludeStartEnd, Tol);
}

}  // namespace orvane
