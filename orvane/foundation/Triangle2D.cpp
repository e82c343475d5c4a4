#include "orvane/foundation/Triangle2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/PointArray.h"

namespace orvane {

double TTriangle2D::Area(bool IsAbs) const {
  const double a = 0.5 * TPoint2DUtils::IsLeft(P1, P2, P3);
  return IsAbs ? std::fabs(a) : a;
}

bool TTriangle2D::IsLine(double Tol) const {
  const double longest = std::max({P1.DistanceTo(P2), P2.DistanceTo(P3), P3.DistanceTo(P1)});
  if (longest == 0.0) return true;
  return 2.0 * Area(true) / longest <= Tol;
}

double PolyArea(const TDynPoints2D& Pts) {
  const std::size_t n = Pts.size();
  if (n < 3) return 0.0;
  // Sum of x(i) * (y(i+1) - y(i-1)); a repeated closing point adds a zero term.
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint2D& next = Pts[(i + 1) % n];
    const TPoint2D& prev = Pts[(i + n - 1) % n];
    sum += Pts[i].X * (next.Y - prev.Y);
  }
  return 0.5 * sum;
}

TRect2D CalcAABB(const TDynPoints2D& Pts) {
  TRect2D r;
  r.SetByPointsExt(Pts);
  return r;
}

}  // namespace orvane
