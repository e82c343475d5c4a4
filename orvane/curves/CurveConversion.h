#pragma once
// The bridge between the two models of a mixed outline: the value records TLABSegline and
// TLABPolyline, and the curve objects. Everything these functions create belongs to the
// caller.
//
// Mixed segment to curve: a line gives a TGeLine2D, an arc (the full circle included, in the
// sense of its bulge's sign) a TGeCircularArc2D, a cubic a TGePolyBezier2D of one segment.
// A polyline gives the bare curve of its one segment, or a composite of one sub-curve per
// segment in order.
//
// Curve to mixed outline: lines, arcs, polylines and polygons (with the closing edge),
// cubics (TGeBezier2D and each segment of a TGePolyBezier2D) and composites (recursively)
// give their segments; any other class gives nothing. An arc of more than a full turn gives
// one full circle per whole turn and then the rest, so that no length is lost.

#include <memory>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/mixed/LABSegline.h"

namespace orvane {

// One curve. EGeometry for a point that is not finite, EParamError for a NaN bulge.
ORVANE_API std::unique_ptr<TGeCurve2D> CreateGeCurve2D(const TLABSegline& Segline);
// The curve of the one segment, or a composite that owns one curve per segment; nil for an
// empty polyline. The errors of the segment form.
ORVANE_API std::unique_ptr<TGeCurve2D> CreateGeCurve2D(const TLABPolyline& Polyline);
// A new polyline, empty for a curve that yields no segments. The segments go in through
// TLABPolyline::Add, so a gap of more than 1e-6 between sub-curves is closed there.
// EParamError for composites nested deeper than internal::MaxCompositeDepth (a cycle of
// composites that do not own their curves) and for an arc of more than
// internal::MaxArcTurns full turns.
ORVANE_API std::unique_ptr<TLABPolyline> CreateLABPolyline(const TGeCurve2D& Curve);
// CreateLABPolyline of each curve in order; only polylines with segments make an entry (nil
// items and curves that yield nothing leave none), so positions may differ. The list owns
// its polylines.
ORVANE_API std::unique_ptr<TLABPolylineList> CreateLABPolylineList(const TList<const TGeCurve2D*>& Curves);
ORVANE_API std::unique_ptr<TLABPolylineList> CreateLABPolylineList(const TList<TGeCurve2D*>& Curves);

namespace internal {
// The bounds that keep a conversion finite: nesting of composites, whole turns of one arc.
inline constexpr int MaxCompositeDepth = 256;
inline constexpr int MaxArcTurns = 1024;
}  // namespace internal

}  // namespace orvane
