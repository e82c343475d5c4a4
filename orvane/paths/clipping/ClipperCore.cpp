#include "orvane/paths/clipping/ClipperCore.h"

#include <algorithm>

#include "orvane/foundation/internal/Orientation.h"

namespace orvane::Clipper::Core {

double Area(const TPath64& Path) {
  const std::size_t n = Path.size();
  if (n < 3) return 0.0;
  double sum = 0.0;
  const TPoint64* prev = &Path[n - 1];
  for (const TPoint64& c : Path) {
    sum += static_cast<double>(prev->Y + c.Y) * static_cast<double>(prev->X - c.X);
    prev = &c;
  }
  return sum * 0.5;
}

double Area(const TPaths64& Paths) {
  double sum = 0.0;
  for (const TPath64& p : Paths) sum += Area(p);
  return sum;
}

bool IsPositive(const TPath64& Path) { return Area(Path) >= 0.0; }

TRect64 GetBounds(const TPath64& Path) {
  if (Path.empty()) return TRect64();
  TRect64 r(Path[0].X, Path[0].Y, Path[0].X, Path[0].Y);
  for (const TPoint64& p : Path) {
    r.Left = std::min(r.Left, p.X);
    r.Right = std::max(r.Right, p.X);
    r.Top = std::min(r.Top, p.Y);
    r.Bottom = std::max(r.Bottom, p.Y);
  }
  return r;
}

TRect64 GetBounds(const TPaths64& Paths) {
  bool any = false;
  TRect64 r;
  for (const TPath64& p : Paths) {
    if (p.empty()) continue;
    const TRect64 b = GetBounds(p);
    if (!any) {
      r = b;
      any = true;
    } else {
      r.Left = std::min(r.Left, b.Left);
      r.Top = std::min(r.Top, b.Top);
      r.Right = std::max(r.Right, b.Right);
      r.Bottom = std::max(r.Bottom, b.Bottom);
    }
  }
  return r;
}

TPointInPolygonResult PointInPolygon(const TPoint64& Pt, const TPath64& Polygon) {
  const std::size_t n = Polygon.size();
  if (n < 3) return TPointInPolygonResult::pipOutside;
  bool inside = false;
  const TPoint64* a = &Polygon[n - 1];
  for (const TPoint64& b : Polygon) {
    const TPoint64& p = *a;
    a = &b;
    if (b == Pt) return TPointInPolygonResult::pipOn;
    if (p.Y == b.Y) {
      if (Pt.Y == b.Y && Pt.X >= std::min(p.X, b.X) && Pt.X <= std::max(p.X, b.X)) return TPointInPolygonResult::pipOn;
      continue;
    }
    if (Pt.Y < std::min(p.Y, b.Y) || Pt.Y > std::max(p.Y, b.Y)) continue;
    // Which side of the (not horizontal) edge p -> b is Pt on? Exact in 128 bits.
    const internal::TInt128 cross = internal::CrossProduct64(p, b, Pt);
    if (cross == 0) return TPointInPolygonResult::pipOn;
    // A ray towards +X; the half-open rule on Y counts a vertex on the ray once.
    if ((p.Y > Pt.Y) != (b.Y > Pt.Y) && ((cross > 0) == (b.Y > p.Y))) inside = !inside;
  }
  return inside ? TPointInPolygonResult::pipInside : TPointInPolygonResult::pipOutside;
}

}  // namespace orvane::Clipper::Core
