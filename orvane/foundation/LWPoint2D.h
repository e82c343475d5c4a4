#pragma once
// TLWPoint2D and TLWPolyline: the vertices of a bulge polyline, for hosts.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

// A vertex and the bulge of the arc that leaves it.
struct TLWPoint2D {
  TPoint2D Pt;
  double Bulge = 0.0;

  constexpr TLWPoint2D() = default;
  constexpr TLWPoint2D(const TPoint2D& APt, double ABulge) : Pt(APt), Bulge(ABulge) {}
  friend constexpr bool operator==(const TLWPoint2D& A, const TLWPoint2D& B) = default;
};

class ORVANE_API TLWPolyline final : public TList<TLWPoint2D> {
 public:
  using TList<TLWPoint2D>::TList;
};

}  // namespace orvane
