#pragma once
// TLengthSamples: a table of (parameter, length) pairs, X the curve parameter and Y the length
// from the curve's start up to it, both rising. Lookups guess the entry from the table's
// extent and walk from there, and interpolate linearly between entries.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

class ORVANE_API TLengthSamples : public TList<TPoint2D> {
 public:
  // Last.X - First.X and Last.Y - First.Y; 0 for an empty table.
  double Interval() const;
  double Length() const;
  // The length at Param, held to the table's ends (exactly the end values within 1e-6).
  double LengthAtParam(double Param) const;
  double LengthBetween(double ParamStart, double ParamEnd) const {
    return LengthAtParam(ParamEnd) - LengthAtParam(ParamStart);
  }
  // The parameter at Length. Beyond the table an open curve stops at its ends; a closed one
  // wraps once (a length past a whole lap more stops at the end).
  double ParamOfLength(double Length, bool IsClosed) const;
  double ParamOfLength(double ParamStart, double Length, bool IsClosed) const {
    return ParamOfLength(LengthAtParam(ParamStart) + Length, IsClosed);
  }
};

}  // namespace orvane
