#pragma once
// TVPolyline2D::IsSelfIntersect's search for segment pairs worth the exact test. Both ways
// of pairing runs look at exactly the pairs of segments whose boxes meet within AbsTol and
// decide each pair the same way, so they give the same answer on every input. At least three
// vertices, all finite.

#include <span>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

// Runs of consecutive segments, paired when their boxes meet within AbsTol: ByTree, runs of
// 16 through an R-tree of the runs' boxes (any AbsTol); otherwise runs of 4 by a sweep over
// the runs sorted by their left sides (AbsTol at least 0), which is cheaper up to a few
// hundred runs. Closing adds the segment from the last vertex back to the first, as if the
// first vertex were repeated at the end.
ORVANE_API bool SelfCrossByRuns(std::span<const TPoint2D> P, double AbsTol, bool ByTree, bool Closing = false);

// IsSelfIntersect on P, or with Closing on P closed by its first vertex, without copying
// it: the same answer, by the cheaper of the two pairings.
ORVANE_API bool SelfCrosses(std::span<const TPoint2D> P, double AbsTol, bool Closing);

}  // namespace orvane::internal
