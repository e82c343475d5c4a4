#pragma once
// The two ways TVPolyline2D::IsSelfIntersect finds the segment pairs worth the exact test.
// Both look at exactly the pairs whose boxes meet within AbsTol and decide each pair the
// same way, so they give the same answer on every input; they differ only in how the pairs
// are found. Both take at least three vertices, all finite.

#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

// AbsTol 0 on a grid of about one cell per segment, each pair whose boxes meet tested in the
// one cell that holds the low corner of their common part: 1 when a pair counts, 0 when none
// does, -1 when it gave up (long segments across many cells, or a crowd in few).
int SelfCrossByGrid(const TDynPoints2D& P);
// Runs of a fixed number of consecutive segments in an R-tree, each run queried against
// it; any AbsTol.
bool SelfCrossByRunTree(const TDynPoints2D& P, double AbsTol);

}  // namespace orvane::internal
