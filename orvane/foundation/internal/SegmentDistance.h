#pragma once
// Squared distance from a point to a segment, inline for the loops that measure it per
// vertex (the monotone walk and point test). TLine2D::DistanceLimit is the public form.

#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

// Squared distance from P to segment S-E; to S when the segment has length 0.
inline double SegmentDist2(const TPoint2D& P, const TPoint2D& S, const TPoint2D& E) {
  const double dx = E.X - S.X;
  const double dy = E.Y - S.Y;
  const double px = P.X - S.X;
  const double py = P.Y - S.Y;
  const double len2 = dx * dx + dy * dy;
  double t = len2 > 0.0 ? (px * dx + py * dy) / len2 : 0.0;
  t = t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
  const double ex = px - t * dx;
  const double ey = py - t * dy;
  return ex * ex + ey * ey;
}

}  // namespace orvane::internal
