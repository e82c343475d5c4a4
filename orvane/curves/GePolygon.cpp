#include "orvane/curves/GePolygon.h"

#include <utility>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"

namespace orvane {

TGePolygon::TGePolygon() = default;

TGePolygon::TGePolygon(const TDynPoints2D& pnts) { FLoops.Add(std::make_unique<TGeLoop>(pnts)); }

TGePolygon::~TGePolygon() = default;

void TGePolygon::AddLoop(std::unique_ptr<TGeLoop> loop) {
  if (!loop) throw EParamError("[Error] TGePolygon.AddLoop: loop is nil");
  FLoops.Add(std::move(loop));
}

TGeLoop* TGePolygon::GetLoop(int i) const { return i < FLoops.Count() ? FLoops[i] : nullptr; }

TGeLoop* TGePolygon::GetBound() const { return FLoops.IsEmpty() ? nullptr : FLoops[0]; }

TGeLoop* TGePolygon::GetHole(int i) const { return i < GetHoleCount() ? FLoops[i + 1] : nullptr; }

TRect2D TGePolygon::GetBoundBox() const {
  const TGeLoop* bound = GetBound();
  return bound ? bound->GetBoundBox() : TRect2D::Invalid();
}

double TGePolygon::GetArea() const {
  double area = 0.0;
  for (const TGeLoop* loop : FLoops) area += loop->GetArea();
  return area;
}

bool TGePolygon::IsIn(const TPoint2D& ptHit) const {
  const TGeLoop* bound = GetBound();
  if (!bound || !internal::IsFinite(ptHit)) return false;
  bool inHole = false;
  for (int i = 0; i < GetHoleCount() && !inHole; ++i) inHole = GetHole(i)->PtInPoly(ptHit);
  if (bound->GetIsClockWise()) {
    // The region lies outside the bound, and the holes give some of it back.
    return !bound->PtInPoly(ptHit) || inHole;
  }
  if (!bound->GetBoundBox().Contains(ptHit, 1e-6) || !bound->PtInPoly(ptHit)) return false;
  return !inHole;
}

void TGePolygon::Normalize(bool BoundClockWise) {
  for (int i = 0; i < FLoops.Count(); ++i) FLoops[i]->SetIsClockWise(i == 0 ? BoundClockWise : !BoundClockWise);
}

void TGePolygon::Reverse() {
  for (TGeLoop* loop : FLoops) loop->Reverse();
}

void TGePolygon::TransformBy(const TMatrix2D& mtx) {
  // On copies first, so that a matrix that takes some loop out of the finite numbers leaves
  // the whole polygon as it was.
  TObjectList<TGeLoop> moved(true);
  for (const TGeLoop* loop : FLoops) {
    std::unique_ptr<TGeLoop> copy = loop->Clone();
    copy->TransformBy(mtx);
    moved.Add(std::move(copy));
  }
  FLoops = std::move(moved);
}

void TGePolygon::TranslateBy(const TPoint2D& vec) {
  TObjectList<TGeLoop> moved(true);
  for (const TGeLoop* loop : FLoops) {
    std::unique_ptr<TGeLoop> copy = loop->Clone();
    copy->Translate(vec);
    moved.Add(std::move(copy));
  }
  FLoops = std::move(moved);
}

void TGePolygon::AssignTo(TPersistent& Dest) const {
  auto* dest = dynamic_cast<TGePolygon*>(&Dest);
  if (!dest) {
    TPersistent::AssignTo(Dest);
    return;
  }
  if (dest == this) return;
  dest->FLoops.Clear();
  for (const TGeLoop* loop : FLoops) dest->FLoops.Add(loop->Clone());
}

std::unique_ptr<TGePolygon> TGePolygon::Clone() const {
  auto polygon = std::make_unique<TGePolygon>();
  polygon->Assign(*this);
  return polygon;
}

std::string TGePolygon::ClassName() const { return "TGePolygon"; }

}  // namespace orvane
