#pragma once
// Clipper::Core: the helpers on integer paths that both clipping faces share: signed area,
// bounds and the exact point-in-polygon test.

#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/ClipperTypes.h"

namespace orvane::Clipper::Core {

using orvane::TPath64;
using orvane::TPaths64;
using orvane::TPoint64;
using orvane::TRect64;

// Signed area: 0 below 3 vertices; otherwise half the sum over the edges (previous vertex p,
// vertex c, the last vertex preceding the first) of (p.Y + c.Y) * (p.X - c.X), coordinate
// sums and differences in 64-bit integers, products in double. Positive when anticlockwise
// with Y up.
ORVANE_API double Area(const TPath64& Path);
ORVANE_API double Area(const TPaths64& Paths);
// Area(Path) >= 0.
ORVANE_API bool IsPositive(const TPath64& Path);
// Left = min X, Top = min Y, Right = max X, Bottom = max Y; all four zero without vertices.
ORVANE_API TRect64 GetBounds(const TPath64& Path);
ORVANE_API TRect64 GetBounds(const TPaths64& Paths);
// Exact point-in-polygon (even-odd) with the polygon closed implicitly; pipOn on any edge or
// vertex, pipOutside for fewer than 3 vertices.
ORVANE_API TPointInPolygonResult PointInPolygon(const TPoint64& Pt, const TPath64& Polygon);

}  // namespace orvane::Clipper::Core
