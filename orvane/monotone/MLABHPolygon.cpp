#include "orvane/monotone/MLABHPolygon.h"

#include "orvane/vertex/VHPolygon.h"

namespace orvane {

namespace {

// The region's outer boundary with its reference point, or false for a region without one.
bool OuterRef(const TMLABHPolygon& H, const TMLABPolygon*& Outer, TPoint2D& Ref) {
  if (H.IsEmpty()) return false;
  Outer = H.First();
  return Outer->ReferencePoint(Ref);
}

}  // namespace

TMLABHPolygon::TMLABHPolygon(const TLABHPolygon& LABHPolygon, double Tol) : TMLABHPolygon(true) {
  for (const TLABPolyline* p : LABHPolygon)
    if (p != nullptr && !p->IsEmpty()) Add(std::make_unique<TMLABPolygon>(*p, Tol, true));
}

std::unique_ptr<TVGeometry2DList<TMLABPolygon>> TMLABHPolygon::New(bool AOwnsObjects) const {
  return std::make_unique<TMLABHPolygon>(AOwnsObjects);
}

bool TMLABHPolygon::IsCrossWith(const TMLABHPolygon& MLABHPolygon, double Tol) const {
  for (const TMLABPolygon* a : *this)
    for (const TMLABPolygon* b : MLABHPolygon)
      if (a->IsCrossWith(*b, Tol)) return true;
  return false;
}

bool TMLABHPolygon::OutlineMeetsRegion(const TMLABPolygon& K, double Tol) const {
  TPoint2D ref;
  if (!K.ReferencePoint(ref)) return false;
  for (int h = 1; h < Count(); ++h) {
    const TMLABPolygon& hole = *(*this)[h];
    if (K.IsCrossWith(hole, Tol)) return true;
    if (hole.RelationWithPoint(ref) == TShapeRelation::srIn) return false;
  }
  return true;
}

bool TMLABHPolygon::Overlap(const TMLABHPolygon& MLABHPolygon, double Tol) const {
  const TMLABPolygon* outer = nullptr;
  const TMLABPolygon* other = nullptr;
  TPoint2D ref;
  TPoint2D otherRef;
  if (!OuterRef(*this, outer, ref) || !OuterRef(MLABHPolygon, other, otherRef)) return false;
  if (outer->IsCrossWith(*other, Tol)) return true;
  // No outer boundaries meet: one lies inside the other, or they lie apart.
  if (outer->RelationWithPoint(otherRef) != TShapeRelation::srOut) return OutlineMeetsRegion(*other, Tol);
  if (other->RelationWithPoint(ref) == TShapeRelation::srOut) return false;
  return MLABHPolygon.OutlineMeetsRegion(*outer, Tol);
}

bool TMLABHPolygon::Contains(const TMLABHPolygon& MLABHPolygon) const {
  const TMLABPolygon* mo = nullptr;
  TPoint2D moRef;
  if (!OuterRef(MLABHPolygon, mo, moRef)) return true;
  const TMLABPolygon* o = nullptr;
  TPoint2D oRef;
  if (!OuterRef(*this, o, oRef)) return false;
  if (o->IsCrossWith(*mo, 0.0)) return false;
  if (o->RelationWithPoint(moRef) != TShapeRelation::srIn) return false;
  for (int h = 1; h < Count(); ++h) {
    const TMLABPolygon& hole = *(*this)[h];
    TPoint2D hRef;
    if (!hole.ReferencePoint(hRef)) continue;
    if (mo->IsCrossWith(hole, 0.0)) return false;
    if (hole.RelationWithPoint(moRef) != TShapeRelation::srOut) return false;
    if (mo->RelationWithPoint(hRef) != TShapeRelation::srIn) continue;
    // The hole lies inside M's outline: it must lie in one of M's holes.
    bool found = false;
    for (int g = 1; g < MLABHPolygon.Count(); ++g) {
      const TMLABPolygon& mHole = *MLABHPolygon[g];
      TPoint2D gRef;
      if (!mHole.ReferencePoint(gRef)) continue;
      if (hole.IsCrossWith(mHole, 0.0)) return false;
      if (hole.RelationWithPoint(gRef) != TShapeRelation::srOut) return false;
      if (mHole.RelationWithPoint(hRef) == TShapeRelation::srIn) found = true;
    }
    if (!found) return false;
  }
  return true;
}

TMLABHPolygonList::TMLABHPolygonList(const TLABHPolygonList& LABHPolygons, double Tol) : TMLABHPolygonList(true) {
  for (const TLABHPolygon* r : LABHPolygons)
    if (r != nullptr && !r->IsEmpty()) Add(std::make_unique<TMLABHPolygon>(*r, Tol));
}

TMLABHPolygonList::TMLABHPolygonList(const TVHPolygonList& HPolygons, double Tol) : TMLABHPolygonList(true) {
  const TLABHPolygonList regions(&HPolygons, true);
  for (const TLABHPolygon* r : regions)
    if (r != nullptr && !r->IsEmpty()) Add(std::make_unique<TMLABHPolygon>(*r, Tol));
}

std::unique_ptr<TVGeometry2DList<TMLABHPolygon>> TMLABHPolygonList::New(bool AOwnsObjects) const {
  return std::make_unique<TMLABHPolygonList>(AOwnsObjects);
}

bool TMLABHPolygonList::IsCrossWith(const TMLABHPolygonList& MLABHPolygons, double Tol) const {
  for (const TMLABHPolygon* a : *this)
    for (const TMLABHPolygon* b : MLABHPolygons)
      if (a->IsCrossWith(*b, Tol)) return true;
  return false;
}

bool TMLABHPolygonList::Overlap(const TMLABHPolygonList& MLABHPolygons, double Tol) const {
  for (const TMLABHPolygon* a : *this)
    for (const TMLABHPolygon* b : MLABHPolygons)
      if (a->Overlap(*b, Tol)) return true;
  return false;
}

bool TMLABHPolygonList::Contains(const TMLABHPolygonList& MLABHPolygons) const {
  for (const TMLABHPolygon* m : MLABHPolygons) {
    bool held = false;
    for (const TMLABHPolygon* r : *this) {
      if (r->Contains(*m)) {
        held = true;
        break;
      }
    }
    if (!held) return false;
  }
  return true;
}

}  // namespace orvane
