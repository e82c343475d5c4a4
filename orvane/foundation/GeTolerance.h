#pragma once
// TGeTolerance: the tolerance pair of the curve objects.

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

struct TGeTolerance {
  // Distance below which two points coincide.
  double PointTol = DefaultTol;
  // Length below which a segment counts as a point, and the sine of the angle between unit
  // vectors below which they count as parallel.
  double VectorTol = DefaultTol;
  // Kept for hosts that carry a parameter and an angle tolerance in the same record; the
  // kernel copies them along and never reads them.
  double ParamTol = DefaultTol;
  double AngleTol = DefaultTol;

  constexpr TGeTolerance() = default;
  constexpr TGeTolerance(double APointTol, double AVectorTol)
      : PointTol(APointTol), VectorTol(AVectorTol), ParamTol(APointTol), AngleTol(AVectorTol) {}

  // Euclidean distance at most PointTol.
  bool PointEquals(const TPoint2D& A, const TPoint2D& B) const { return A.Equals(B, PointTol); }
};

// The default tolerance of the curve objects: DefaultTol for both, the tolerance that the rest
// of the kernel uses for point coincidence and parallelism, so that a curve and a vertex
// polyline built from it agree on what touches.
inline constexpr TGeTolerance DefTol{DefaultTol, DefaultTol};

}  // namespace orvane
