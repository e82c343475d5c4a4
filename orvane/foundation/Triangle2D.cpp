#include "orvane/foundation/Triangle2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Point2DUtils.h"

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

}  // namespace orvane
