#include "orvane/foundation/Checks.h"

namespace orvane::internal {

void CheckFiniteVertices(const TDynPoints2D& Pts, const char* Where) {
  for (std::size_t i = 0; i < Pts.size(); ++i) {
    if (!IsFinite(Pts[i])) throw EParamError("[Error] %s: vertex %d is not a finite point", Where, i);
  }
}

void CheckPositiveRate(double Rate, const char* Where) {
  if (!IsPositiveNumber(Rate))
    throw EParamError("[Error] %s: Rate %s must be a positive number", Where, FloatToStr(Rate));
}

void CheckTolerance(double Tol, const char* Where) {
  if (!(Tol >= 0.0) || !std::isfinite(Tol)) {
    throw EParamError("[Error] %s: Tolerance %s is not a finite number of at least 0", Where, FloatToStr(Tol));
  }
}

}  // namespace orvane::internal
