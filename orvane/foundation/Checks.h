#pragma once
// The validity checks at the kernel's entry points: finite numbers, points and boxes,
// positive rates and tolerances of at least 0. Each raises its typed error with a message
// that names the operation (Where) and what was wrong, so that bad input never reaches
// arithmetic that would silently give nonsense.

#include <cmath>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane::internal {

inline bool IsFinite(const TPoint2D& P) { return std::isfinite(P.X) && std::isfinite(P.Y); }
// All four bounds finite; the invalid box of infinities is not.
inline bool IsFinite(const TRect2D& R) {
  return std::isfinite(R.XMin) && std::isfinite(R.YMin) && std::isfinite(R.XMax) && std::isfinite(R.YMax);
}
// Some bound is NaN (an invalid box of infinities has none).
inline bool HasNaN(const TRect2D& R) {
  return std::isnan(R.XMin) || std::isnan(R.YMin) || std::isnan(R.XMax) || std::isnan(R.YMax);
}
// Above 0 and finite; false for NaN.
inline bool IsPositiveNumber(double Value) { return Value > 0.0 && std::isfinite(Value); }

// TError "[Error] <Where>: <What> is not a finite number" for NaN and infinities.
template <class TError = EParamError>
void CheckFinite(double Value, const char* Where, const char* What) {
  if (!std::isfinite(Value)) throw TError("[Error] %s: %s is not a finite number", Where, What);
}
// TError "[Error] <Where>: <What> <P> is not a finite point".
template <class TError = EParamError>
void CheckFinitePoint(const TPoint2D& P, const char* Where, const char* What) {
  if (!IsFinite(P)) throw TError("[Error] %s: %s %s is not a finite point", Where, What, P.ToString());
}
// EParamError "[Error] <Where>: vertex <i> is not a finite point" for the first such vertex.
void CheckFiniteVertices(const TDynPoints2D& Pts, const char* Where);
// EParamError "[Error] <Where>: Rate <Rate> must be a positive number" unless IsPositiveNumber.
void CheckPositiveRate(double Rate, const char* Where);
// EParamError "[Error] <Where>: Tolerance <Tol> is not a finite number of at least 0".
void CheckTolerance(double Tol, const char* Where);

}  // namespace orvane::internal
