#include "orvane/foundation/Rect2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/MathUtils.h"

namespace orvane {

TRect2D TRect2D::CreateNormal(const TPoint2D& P1, const TPoint2D& P2) {
  return {std::min(P1.X, P2.X), std::min(P1.Y, P2.Y), std::max(P1.X, P2.X), std::max(P1.Y, P2.Y)};
}

TRect2D TRect2D::Invalid() {
  TRect2D r;
  r.SetInvalid();
  return r;
}

TRect2D TRect2D::NormalizedRect() const { return CreateNormal(MinPoint(), MaxPoint()); }

void TRect2D::SetInvalid() {
  XMin = YMin = MaxDouble;
  XMax = YMax = -MaxDouble;
}

void TRect2D::Extend(const TPoint2D& Pt) {
  XMin = std::min(XMin, Pt.X);
  YMin = std::min(YMin, Pt.Y);
  XMax = std::max(XMax, Pt.X);
  YMax = std::max(YMax, Pt.Y);
}

void TRect2D::Extend(const TRect2D& Rect) {
  if (!Rect.IsValid()) return;
  XMin = std::min(XMin, Rect.XMin);
  YMin = std::min(YMin, Rect.YMin);
  XMax = std::max(XMax, Rect.XMax);
  YMax = std::max(YMax, Rect.YMax);
}

TRect2D TRect2D::ExtendedRect(const TRect2D& Rect) const {
  TRect2D r = *this;
  r.Extend(Rect);
  return r;
}

TRect2D TRect2D::InflatedRect(double DX, double DY) const { return {XMin - DX, YMin - DY, XMax + DX, YMax + DY}; }

TRect2D TRect2D::Intersect(const TRect2D& Rect) const {
  return {std::max(XMin, Rect.XMin), std::max(YMin, Rect.YMin), std::min(XMax, Rect.XMax), std::min(YMax, Rect.YMax)};
}

int TRect2D::RelationWithRect(const TRect2D& Rect, double Tol) const {
  if (!IsValid() || !Rect.IsValid()) return 0;
  if (Rect.XMin - XMax > Tol || XMin - Rect.XMax > Tol || Rect.YMin - YMax > Tol || YMin - Rect.YMax > Tol) return 0;
  const bool holds =
      Rect.XMin >= XMin - Tol && Rect.XMax <= XMax + Tol && Rect.YMin >= YMin - Tol && Rect.YMax <= YMax + Tol;
  if (holds) return 2;
  const bool held =
      XMin >= Rect.XMin - Tol && XMax <= Rect.XMax + Tol && YMin >= Rect.YMin - Tol && YMax <= Rect.YMax + Tol;
  return held ? 3 : 1;
}

bool TRect2D::Contains(const TPoint2D& Pt, double Tol) const {
  return Pt.X >= XMin - Tol && Pt.X <= XMax + Tol && Pt.Y >= YMin - Tol && Pt.Y <= YMax + Tol;
}

double TRect2D::AreaAbs() const { return IsValid() ? std::fabs(Width() * Height()) : 0.0; }

void TRect2D::SetByPointsExt(const TDynPoints2D& Pts) {
  SetInvalid();
  for (const TPoint2D& p : Pts) Extend(p);
}

}  // namespace orvane
