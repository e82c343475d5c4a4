#include "orvane/foundation/PointArray.h"

namespace orvane {

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
