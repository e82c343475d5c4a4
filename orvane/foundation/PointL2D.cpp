#include "orvane/foundation/PointL2D.h"

#include "orvane/foundation/MathUtils.h"

namespace orvane {

TPointL2D::TPointL2D(const TPoint2D& Pt) : X(Round(Pt.X)), Y(Round(Pt.Y)) {}

}  // namespace orvane
