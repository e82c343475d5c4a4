#include "orvane/monotone/MLABHPolygon.h"

#include <algorithm>
#include <cmath>

#include "orvane/vertex/VHPolygon.h"

namespace orvane {

namespace {

// The region's outer boundary with its reference point, or false for a region without one.
bool OuterRef(const TMLABHPolygon& H, const TMLABPolygon*& Outer, TPoint2D& Ref) {
  if (H.IsEmpty()) return false;
  Outer = H.First();
  return Outer->ReferencePoint(Ref);
}

// Box grown by D on every side.
TRect2D Grown(const TRect2D& Box, double D) { return TRect2D(Box.XMin - D, Box.YMin - D, Box.XMax + D, Box.YMax + D); }

// The reach of the point tests' srOn, so that the holes passed over by box are those that
// every test of Contains would pass over too.
constexpr double PointReach = 1e-8;

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

void TMLABHPolygon::Notify(TMLABPolygon* const& Item, TCollectionNotification Action) {
  TVGeometry2DList<TMLABPolygon>::Notify(Item, Action);
  FGrid.Valid = false;
}

void TMLABHPolygon::Translate(const TPoint2D& Vector) {
  TVGeometry2DList<TMLABPolygon>::Translate(Vector);
  FGrid.Valid = false;
}

void TMLABHPolygon::BuildHoleGrid() const {
  THoleGrid& g = FGrid;
  g = THoleGrid();
  const int holes = Count() - 1;
  g.Box = TRect2D::Invalid();
  for (int h = 1; h <= holes; ++h) g.Box.Extend((*this)[h]->BoundBox());
  g.Seen.assign(static_cast<std::size_t>(std::max(holes, 0)) + 1, 0u);
  g.Valid = true;
  if (holes <= 0 || !g.Box.IsValid()) return;
  // About one hole per cell, in cells as square as the holes' spread allows.
  const double w = std::max(g.Box.XMax - g.Box.XMin, 1e-300);
  const double hgt = std::max(g.Box.YMax - g.Box.YMin, 1e-300);
  const double side = std::sqrt(w * hgt / holes);
  g.Nx = std::clamp(static_cast<int>(w / side), 1, 256);
  g.Ny = std::clamp(static_cast<int>(hgt / side), 1, 256);
  g.CellW = w / g.Nx;
  g.CellH = hgt / g.Ny;
  g.Cells.assign(static_cast<std::size_t>(g.Nx) * static_cast<std::size_t>(g.Ny), {});
  for (int h = 1; h <= holes; ++h) {
    const TRect2D b = (*this)[h]->BoundBox();
    if (!b.IsValid()) continue;
    const int x0 = std::clamp(static_cast<int>((b.XMin - g.Box.XMin) / g.CellW), 0, g.Nx - 1);
    const int x1 = std::clamp(static_cast<int>((b.XMax - g.Box.XMin) / g.CellW), 0, g.Nx - 1);
    const int y0 = std::clamp(static_cast<int>((b.YMin - g.Box.YMin) / g.CellH), 0, g.Ny - 1);
    const int y1 = std::clamp(static_cast<int>((b.YMax - g.Box.YMin) / g.CellH), 0, g.Ny - 1);
    for (int y = y0; y <= y1; ++y)
      for (int x = x0; x <= x1; ++x) g.Cells[static_cast<std::size_t>(y * g.Nx + x)].push_back(h);
  }
}

template <class F>
bool TMLABHPolygon::AnyHoleNear(const TRect2D& Box, F&& Visit) const {
  if (!FGrid.Valid) BuildHoleGrid();
  THoleGrid& g = FGrid;
  if (g.Cells.empty() || !Box.IsValid()) return false;
  if (Box.XMin > g.Box.XMax || Box.XMax < g.Box.XMin || Box.YMin > g.Box.YMax || Box.YMax < g.Box.YMin)
    return false;
  if (++g.Query == 0) {
    std::fill(g.Seen.begin(), g.Seen.end(), 0u);
    g.Query = 1;
  }
  // This query's own mark, so that a query made from inside Visit leaves it intact.
  const unsigned query = g.Query;
  const int x0 = std::clamp(static_cast<int>((Box.XMin - g.Box.XMin) / g.CellW), 0, g.Nx - 1);
  const int x1 = std::clamp(static_cast<int>((Box.XMax - g.Box.XMin) / g.CellW), 0, g.Nx - 1);
  const int y0 = std::clamp(static_cast<int>((Box.YMin - g.Box.YMin) / g.CellH), 0, g.Ny - 1);
  const int y1 = std::clamp(static_cast<int>((Box.YMax - g.Box.YMin) / g.CellH), 0, g.Ny - 1);
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      for (int h : g.Cells[static_cast<std::size_t>(y * g.Nx + x)]) {
        unsigned& seen = g.Seen[static_cast<std::size_t>(h)];
        if (seen == query) continue;
        seen = query;
        const TMLABPolygon& hole = *(*this)[h];
        // A cell is wider than the holes it lists: their own boxes sort out the rest.
        const TRect2D hb = hole.BoundBox();
        if (hb.XMin > Box.XMax || hb.XMax < Box.XMin || hb.YMin > Box.YMax || hb.YMax < Box.YMin) continue;
        if (Visit(hole)) return true;
      }
    }
  }
  return false;
}

bool TMLABHPolygon::OutlineMeetsRegion(const TMLABPolygon& K, double Tol) const {
  TPoint2D ref;
  if (!K.ReferencePoint(ref)) return false;
  // Only a hole whose box meets K's can cross K or hold its reference point. A region's
  // holes do not overlap, so the order in which they are met does not matter.
  const TRect2D kb = K.BoundBox();
  const TRect2D reach(kb.XMin - Tol, kb.YMin - Tol, kb.XMax + Tol, kb.YMax + Tol);
  bool meets = true;
  AnyHoleNear(reach, [&](const TMLABPolygon& hole) {
    if (K.IsCrossWith(hole, Tol)) return true;
    if (hole.RelationWithPoint(ref) == TShapeRelation::srIn) {
      meets = false;
      return true;
    }
    return false;
  });
  return meets;
}

bool TMLABHPolygon::Overlap(const TMLABHPolygon& MLABHPolygon, double Tol) const {
  const TMLABPolygon* outer = nullptr;
  const TMLABPolygon* other = nullptr;
  TPoint2D ref;
  TPoint2D otherRef;
  if (!OuterRef(*this, outer, ref) || !OuterRef(MLABHPolygon, other, otherRef)) return false;
  // Most pairs that overlap share area at the other's reference point already: on or in
  // this outer boundary and in no hole. That is decided on this region's data alone, with
  // no walk along the other's chains. Open outlines leave it to the crossing test.
  TShapeRelation atRef = TShapeRelation::srOut;
  if (outer->GetIsClosed()) {
    atRef = outer->RelationWithPoint(otherRef);
    if (atRef != TShapeRelation::srOut) {
      bool undecided = false;
      const bool inHole = AnyHoleNear(TRect2D(otherRef), [&](const TMLABPolygon& hole) {
        if (!hole.GetIsClosed()) {
          undecided = true;
          return true;
        }
        return hole.RelationWithPoint(otherRef) == TShapeRelation::srIn;
      });
      if (!inHole && !undecided) return true;
    }
  }
  if (outer->IsCrossWith(*other, Tol)) return true;
  // No outer boundaries meet: one lies inside the other, or they lie apart.
  if (!outer->GetIsClosed()) atRef = outer->RelationWithPoint(otherRef);
  if (atRef != TShapeRelation::srOut) return OutlineMeetsRegion(*other, Tol);
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
  // Only a hole whose box meets M's outline can cross it, hold its reference point or lie
  // inside it; and only M's holes whose boxes meet such a hole can hold it.
  const bool fails = AnyHoleNear(Grown(mo->BoundBox(), PointReach), [&](const TMLABPolygon& hole) {
    TPoint2D hRef;
    if (!hole.ReferencePoint(hRef)) return false;
    if (mo->IsCrossWith(hole, 0.0)) return true;
    if (hole.RelationWithPoint(moRef) != TShapeRelation::srOut) return true;
    if (mo->RelationWithPoint(hRef) != TShapeRelation::srIn) return false;
    // The hole lies inside M's outline: it must lie in one of M's holes.
    bool found = false;
    const bool bad = MLABHPolygon.AnyHoleNear(Grown(hole.BoundBox(), PointReach), [&](const TMLABPolygon& mHole) {
      TPoint2D gRef;
      if (!mHole.ReferencePoint(gRef)) return false;
      if (hole.IsCrossWith(mHole, 0.0)) return true;
      if (hole.RelationWithPoint(gRef) != TShapeRelation::srOut) return true;
      if (mHole.RelationWithPoint(hRef) == TShapeRelation::srIn) found = true;
      return false;
    });
    return bad || !found;
  });
  return !fails;
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
