#pragma once
// Free functions of the value layer on dynamic point arrays.

#include <algorithm>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

// Signed shoelace area of the closed array, positive when counter-clockwise; a repeated
// closing point changes nothing, and fewer than 3 points give 0.
ORVANE_API double PolyArea(const TDynPoints2D& Pts);
// The box of the array; the invalid box for an empty array.
ORVANE_API TRect2D CalcAABB(const TDynPoints2D& Pts);
inline void ReversePoints(TDynPoints2D& Pts) { std::reverse(Pts.begin(), Pts.end()); }
inline void ReverseArray(TFloatDynArray& Values) { std::reverse(Values.begin(), Values.end()); }

}  // namespace orvane
