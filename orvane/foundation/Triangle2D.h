#pragma once
// TTriangle2D: an ordered triangle.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

struct ORVANE_API TTriangle2D {
  TPoint2D P1;
  TPoint2D P2;
  TPoint2D P3;

  constexpr TTriangle2D() = default;
  constexpr TTriangle2D(const TPoint2D& AP1, const TPoint2D& AP2, const TPoint2D& AP3) : P1(AP1), P2(AP2), P3(AP3) {}

  // Negative signed area; a degenerate triangle is not clockwise.
  bool IsClockWise() const { return Area(false) < 0.0; }
  // Signed area (positive counter-clockwise) unless IsAbs.
  double Area(bool IsAbs) const;
  // Collinear within Tol: the height over the longest side is at most Tol.
  bool IsLine(double Tol) const;
};

}  // namespace orvane
