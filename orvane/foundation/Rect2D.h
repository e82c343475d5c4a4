#pragma once
// TRect2D: an axis-aligned box whose two corners read as two TPoint2D.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

struct ORVANE_API TRect2D {
  double XMin = 0.0;
  double YMin = 0.0;
  double XMax = 0.0;
  double YMax = 0.0;

  constexpr TRect2D() = default;
  constexpr TRect2D(double AXMin, double AYMin, double AXMax, double AYMax)
      : XMin(AXMin), YMin(AYMin), XMax(AXMax), YMax(AYMax) {}
  // The degenerate box at Pt.
  explicit constexpr TRect2D(const TPoint2D& Pt) : XMin(Pt.X), YMin(Pt.Y), XMax(Pt.X), YMax(Pt.Y) {}

  // The box with the two points as opposite corners, given in any order.
  static TRect2D CreateNormal(const TPoint2D& P1, const TPoint2D& P2);
  static TRect2D CreateNormalize(const TPoint2D& P1, const TPoint2D& P2) { return CreateNormal(P1, P2); }
  // An empty box: not IsValid, and Extend on it yields the extended item alone.
  static TRect2D Invalid();

  constexpr TPoint2D MinPoint() const { return {XMin, YMin}; }
  constexpr TPoint2D MaxPoint() const { return {XMax, YMax}; }

  TRect2D NormalizedRect() const;
  // Marks the box empty: the low corner at +MaxDouble and the high corner at -MaxDouble.
  void SetInvalid();
  constexpr bool IsValid() const { return XMin <= XMax && YMin <= YMax; }
  void Extend(const TPoint2D& Pt);
  // Growing by an invalid box changes nothing.
  void Extend(const TRect2D& Rect);
  TRect2D ExtendedRect(const TRect2D& Rect) const;
  TRect2D InflatedRect(double DX, double DY) const;
  // The common box; not IsValid when there is none.
  TRect2D Intersect(const TRect2D& Rect) const;
  // 0 when the boxes are disjoint by more than Tol (or either is invalid); otherwise 2 when
  // this box holds Rect within Tol, 3 when Rect holds this box, and 1 when they only cross
  // or touch.
  int RelationWithRect(const TRect2D& Rect, double Tol) const;
  // Pt lies in the box or within Tol of it (inclusive).
  bool Contains(const TPoint2D& Pt, double Tol) const;
  constexpr double Width() const { return XMax - XMin; }
  constexpr double Height() const { return YMax - YMin; }
  // The absolute area; 0 for an invalid box.
  double AreaAbs() const;
  constexpr TPoint2D CenterPoint() const { return {(XMin + XMax) * 0.5, (YMin + YMax) * 0.5}; }
  constexpr TPoint2D XMinYMax() const { return {XMin, YMax}; }
  constexpr TPoint2D XMaxYMin() const { return {XMax, YMin}; }
  TRect2D Translate(const TPoint2D& Vec) const { return {XMin + Vec.X, YMin + Vec.Y, XMax + Vec.X, YMax + Vec.Y}; }
  // The extent of the array; the invalid box for an empty array.
  void SetByPointsExt(const TDynPoints2D& Pts);

  friend constexpr bool operator==(const TRect2D& A, const TRect2D& B) = default;
};

}  // namespace orvane
