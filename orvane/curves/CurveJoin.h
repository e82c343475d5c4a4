#pragma once
// Joining loose curves end to end into chains: the curve counterpart of joining vertex
// polylines. Curves are taken as they are (nothing is moved or trimmed); a chain lists which
// curve comes next and whether it runs reversed.

#include <vector>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Export.h"

namespace orvane {

struct ORVANE_API TCurveChainItem {
  int Index = 0;          // position of the curve in the input
  bool Reversed = false;  // the chain runs the curve from its end to its start
};

struct ORVANE_API TCurveChain {
  std::vector<TCurveChainItem> Items;
  bool Closed = false;  // the last curve's end meets the first curve's start within the tolerance
};

// Chains the curves by their end points: two ends meet when they lie within Tol of each other
// (Tol >= 0; EParamError for a negative or NaN Tol). A chain grows from its lowest unused curve,
// first forwards, then backwards, each time to the nearest free end (the lower curve index on
// a tie), and closes when its free ends meet each other no farther than the nearest candidate.
// A curve that closes on itself is a chain of its own. Nil entries are skipped. The result is
// the same for the same input; the end points are kept sorted by X so that the work grows as
// n log n for drawings whose ends do not crowd on one vertical.
ORVANE_API std::vector<TCurveChain> JoinCurveEnds(const std::vector<const TGeCurve2D*>& Curves, double Tol);

}  // namespace orvane
