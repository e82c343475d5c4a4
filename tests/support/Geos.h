#pragma once
// GEOS as the tests' oracle: a ring of the kernel's points as a GEOS linear ring.

#include <geos_c.h>

#include "orvane/foundation/Point2D.h"

namespace orvane::testing {

// A linear ring of Pts, owned by the caller; the first vertex is repeated at the end unless
// Pts already closes.
inline GEOSGeometry* GeosRing(GEOSContextHandle_t H, const TDynPoints2D& Pts) {
  const bool closed = Pts.size() > 1 && Pts.front() == Pts.back();
  const std::size_t n = Pts.size() + (closed ? 0 : 1);
  GEOSCoordSequence* seq = GEOSCoordSeq_create_r(H, static_cast<unsigned>(n), 2);
  for (std::size_t k = 0; k < n; ++k) {
    const TPoint2D& p = Pts[k % Pts.size()];
    GEOSCoordSeq_setXY_r(H, seq, static_cast<unsigned>(k), p.X, p.Y);
  }
  return GEOSGeom_createLinearRing_r(H, seq);
}

}  // namespace orvane::testing
