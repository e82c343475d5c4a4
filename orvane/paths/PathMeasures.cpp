// TPathUtils: measures, crossings with axis lines, point relations, parameters, the
// whole-path relation and the multi-path extremes.

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/PathUtils.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/internal/PathArith.h"

namespace orvane {

namespace {

using internal::TInt128;

constexpr double Scale = 1e-5;

TPoint2D Scaled(const TPoint64& P) { return {static_cast<double>(P.X) * Scale, static_cast<double>(P.Y) * Scale}; }

int Sign(TInt128 V) { return (V > 0) - (V < 0); }

TInt128 Abs128(TInt128 V) { return V < 0 ? -V : V; }

// The crossings of one path with the line Coord = Value, where Coord(p) reads the axis
// across the line and Along(p) the axis along it.
template <class TAcross, class TAlong>
void AxisCrossings(const TPath64& Path, std::int64_t Value, std::int64_t Range, bool IsClosed, TAcross Across,
                   TAlong Along, std::vector<std::int64_t>& Out) {
  const std::size_t n = Path.size();
  if (n < 3 || (n == 3 && Path[2] == Path[0])) return;
  const TInt128 range = Range;
  TInt128 last = TInt128(Value) - Across(Path[0]);
  auto edge = [&](const TPoint64& a, const TPoint64& b) {
    const TInt128 cur = TInt128(Value) - Across(b);
    if (Abs128(cur) <= range) {
      Out.push_back(Along(b));
    } else if (Sign(cur) * Sign(last) < 0) {
      // Slope times offset, in doubles; differences taken in doubles so that no integer
      // overflows, and the result held to the edge's own span before rounding.
      const double slope = (static_cast<double>(Along(b)) - static_cast<double>(Along(a))) /
                           (static_cast<double>(Across(b)) - static_cast<double>(Across(a)));
      const double lo = static_cast<double>(std::min(Along(a), Along(b)));
      const double hi = static_cast<double>(std::max(Along(a), Along(b)));
      const double v = std::clamp(slope * internal::ToDouble(last) + static_cast<double>(Along(a)), lo, hi);
      Out.push_back(std::clamp(Round(v), std::min(Along(a), Along(b)), std::max(Along(a), Along(b))));
    }
    last = cur;
  };
  for (std::size_t i = 0; i + 1 < n; ++i) edge(Path[i], Path[i + 1]);
  if (IsClosed) {
    edge(Path[n - 1], Path[0]);
  } else if (Abs128(TInt128(Value) - Across(Path[0])) <= range) {
    Out.push_back(Along(Path[0]));
  }
}

std::int64_t GetX(const TPoint64& P) { return P.X; }
std::int64_t GetY(const TPoint64& P) { return P.Y; }

// The even-odd scan of one path, toggling Inside; true when Pt lies on the path. Only
// vertices at Pt's height and edges that pass it need work, so the loop tests those first.
bool ScanPath(const TPath64& Path, const TPoint64& Pt, bool& Inside) {
  const std::size_t n = Path.size();
  if (n == 0) return false;
  const std::int64_t px = Pt.X, py = Pt.Y;
  TPoint64 prev = Path[n - 1];
  bool prevAbove = prev.Y > py;
  for (const TPoint64& c : Path) {
    if (c.Y == py) [[unlikely]] {
      if (prev.Y == py) {
        // A level edge at the point's height: on it, or no part of the count.
        if (px >= std::min(prev.X, c.X) && px <= std::max(prev.X, c.X)) return true;
        prev = c;
        continue;
      }
      if (c.X == px) return true;
    }
    const bool above = c.Y > py;
    if (above != prevAbove) [[unlikely]] {
      int cmp;
      if (prev.X < px && c.X < px) {
        cmp = -1;  // both ends a whole unit (1e-5) or more to the left: beyond the 1e-6 band
      } else if (prev.X > px && c.X > px) {
        cmp = 1;
      } else {
        double x = 0.0;
        double t = 0.0;
        TLine2D(Scaled(prev), Scaled(c)).CalculateX(static_cast<double>(py) * Scale, x, t);
        cmp = CompareValue(x, static_cast<double>(px) * Scale, 1e-6);
      }
      if (cmp == 0) return true;
      if (cmp > 0) Inside = !Inside;
      prevAbove = above;
    }
    prev = c;
  }
  return false;
}

// The exact even-odd test of one closed path: 1 inside, 0 outside, -1 on it. Products in
// 128 bits, and only for edges that pass the point's height with the point between their
// ends in X.
int ExactPointInPath(const TPoint64& Pt, const TPath64& Path) {
  const std::size_t n = Path.size();
  if (n < 3) return 0;
  const std::int64_t px = Pt.X, py = Pt.Y;
  TPoint64 prev = Path[n - 1];
  bool prevAbove = prev.Y > py;
  bool inside = false;
  for (const TPoint64& c : Path) {
    if (c.Y == py) [[unlikely]] {
      if (c.X == px) return -1;
      if (prev.Y == py && px >= std::min(prev.X, c.X) && px <= std::max(prev.X, c.X)) return -1;
    }
    const bool above = c.Y > py;
    if (above != prevAbove) [[unlikely]] {
      // One end above the height, the other at or below it: the edge meets the height once.
      if (prev.X > px && c.X > px) {
        inside = !inside;
      } else if (prev.X >= px || c.X >= px) {
        // Which side of prev -> c: exact for coordinates in the clipping range, and no
        // overflow beyond it.
        const std::int64_t cross = internal::ClampedCross(TInt128(c.X) - prev.X, TInt128(px) - prev.X,
                                                          TInt128(c.Y) - prev.Y, TInt128(py) - prev.Y);
        const int side = (cross > 0) - (cross < 0);
        if (side == 0) return -1;
        if ((side > 0) == above) inside = !inside;
      }
      prevAbove = above;
    }
    prev = c;
  }
  return inside ? 1 : 0;
}

// The nearest-point scan: Best shrinks as vertices and edges nearer than it are found.
struct TNearScan {
  double px, py;
  double best;
  double nx = 0.0, ny = 0.0;

  void Vertex(const TPoint64& V) {
    const double dx = static_cast<double>(V.X) - px;
    const double dy = static_cast<double>(V.Y) - py;
    const double d = std::sqrt(dx * dx + dy * dy);
    if (best > d) {
      best = d;
      nx = static_cast<double>(V.X);
      ny = static_cast<double>(V.Y);
    }
  }

  void Segment(const TPoint64& A, const TPoint64& B) {
    const double ax = static_cast<double>(A.X), ay = static_cast<double>(A.Y);
    const double bx = static_cast<double>(B.X), by = static_cast<double>(B.Y);
    // The segment's box grown by the best distance so far must hold the point (within the
    // box test's 1e-6).
    const double reach = best + 1e-6;
    if (px < std::min(ax, bx) - reach || px > std::max(ax, bx) + reach || py < std::min(ay, by) - reach ||
        py > std::max(ay, by) + reach)
      return;
    const double vx = bx - ax, vy = by - ay;
    const double len2 = vx * vx + vy * vy;
    double t = len2 == 0.0 ? 0.0 : ((px - ax) * vx + (py - ay) * vy) / len2;
    double qx, qy;
    if (t <= 0.0) {
      qx = ax;
      qy = ay;
    } else if (t >= 1.0) {
      qx = bx;
      qy = by;
    } else {
      qx = ax + vx * t;
      qy = ay + vy * t;
    }
    const double dx = px - qx, dy = py - qy;
    const double d = std::sqrt(dx * dx + dy * dy);
    if (d <= best) {
      best = d;
      nx = qx;
      ny = qy;
    }
  }

  void Path(const TPath64& P) {
    const std::size_t n = P.size();
    if (n == 0) return;
    Vertex(P[0]);
    for (std::size_t i = 0; i + 1 < n; ++i) Segment(P[i], P[i + 1]);
    if (n > 2) Segment(P[n - 1], P[0]);
  }
};

bool LeftBottomCmp(const TPoint64& C, const TPoint64& B, std::int64_t Tol) {
  return TInt128(C.X) < TInt128(B.X) - Tol || (internal::NearInclusive(C.X, B.X, Tol) && C.Y < B.Y);
}

bool BottomLeftCmp(const TPoint64& C, const TPoint64& B, std::int64_t Tol) {
  return TInt128(C.Y) < TInt128(B.Y) - Tol || (internal::NearInclusive(C.Y, B.Y, Tol) && C.X < B.X);
}

}  // namespace

// ---- Measures -------------------------------------------------------------------------------

double TPathUtils::Area(const TPath64& Path, bool IsPositive) {
  const double a = Clipper::Core::Area(Path);
  return IsPositive ? std::fabs(a) : a;
}

double TPathUtils::Area(const TPaths64& Paths, int AreaType) {
  double sum = 0.0;
  for (const TPath64& p : Paths) sum += AreaType == 0 || AreaType == 1 ? Area(p) : Area(p, true);
  return AreaType == 1 ? std::fabs(sum) : sum;
}

bool TPathUtils::GetIsClockwise(const TPath64& Path) { return Area(Path) < 0.0; }

void TPathUtils::SetIsClockwise(TPath64& Path, bool IsClockwise) {
  if (GetIsClockwise(Path) != IsClockwise) Reverse(Path);
}

void TPathUtils::SetIsClockwise(TPaths64& Paths, bool IsClockwise, bool IsAllSame) {
  if (Paths.empty()) return;
  if (IsAllSame) {
    for (TPath64& p : Paths) SetIsClockwise(p, IsClockwise);
  } else if (GetIsClockwise(Paths[0]) != IsClockwise) {
    Reverse(Paths);
  }
}

const TPath64& TPathUtils::GetMaxAreaPath(const TPaths64& Paths, bool IsDirected) {
  static const TPath64 None;
  if (Paths.empty()) return None;
  std::size_t bestIdx = 0;
  double best = Area(Paths[0], !IsDirected);
  for (std::size_t i = 1; i < Paths.size(); ++i) {
    const double a = Area(Paths[i], !IsDirected);
    if (a > best) {
      best = a;
      bestIdx = i;
    }
  }
  return Paths[bestIdx];
}

double TPathUtils::Perimeter(const TPath64& path) {
  const std::size_t n = path.size();
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint64& a = path[i];
    const TPoint64& b = path[(i + 1) % n];
    const TInt128 dx = TInt128(b.X) - a.X;
    const TInt128 dy = TInt128(b.Y) - a.Y;
    if (internal::FitsInt64(dx) && internal::FitsInt64(dy)) {
      sum += std::sqrt(internal::ToDouble(dx * dx + dy * dy));
    } else {
      sum += static_cast<double>(std::hypot(static_cast<long double>(dx), static_cast<long double>(dy)));
    }
  }
  return sum;
}

bool TPathUtils::IsRectangle(const TPath64& path) {
  if (path.size() != 4 && !(path.size() == 5 && path[4] == path[0])) return false;
  auto edge = [&](std::size_t i) {
    const TPoint64& a = path[i];
    const TPoint64& b = path[(i + 1) % 4];
    return std::pair<TInt128, TInt128>(TInt128(b.X) - a.X, TInt128(b.Y) - a.Y);
  };
  const auto e0 = edge(0), e1 = edge(1), e2 = edge(2), e3 = edge(3);
  return internal::DotIsZero(e0.first, e0.second, e1.first, e1.second) &&
         internal::DotIsZero(e2.first, e2.second, e1.first, e1.second) &&
         internal::DotIsZero(e2.first, e2.second, e3.first, e3.second);
}

int TPathUtils::MemoryUse(const TPaths64& Paths) {
  std::int64_t bytes = 0;
  for (const TPath64& p : Paths) bytes += 16 * static_cast<std::int64_t>(p.size()) + 8;
  return static_cast<int>(std::min<std::int64_t>(bytes, std::numeric_limits<int>::max()));
}

// ---- Crossings ------------------------------------------------------------------------------

TList<std::int64_t> TPathUtils::CalcYByX(const TPath64& Path, std::int64_t X, std::int64_t Range, bool IsClosed) {
  std::vector<std::int64_t> out;
  AxisCrossings(Path, X, Range, IsClosed, GetX, GetY, out);
  return TList<std::int64_t>(std::move(out));
}

TList<std::int64_t> TPathUtils::CalcXByY(const TPath64& Path, std::int64_t Y, std::int64_t Range, bool IsClosed) {
  std::vector<std::int64_t> out;
  AxisCrossings(Path, Y, Range, IsClosed, GetY, GetX, out);
  return TList<std::int64_t>(std::move(out));
}

TList<std::int64_t> TPathUtils::CalcYByX(const TPaths64& Paths, std::int64_t X, bool IsClosed, std::int64_t Range) {
  std::vector<std::int64_t> out;
  for (const TPath64& p : Paths) AxisCrossings(p, X, Range, IsClosed, GetX, GetY, out);
  return TList<std::int64_t>(std::move(out));
}

TList<std::int64_t> TPathUtils::CalcXByY(const TPaths64& Paths, std::int64_t Y, bool IsClosed, std::int64_t Range) {
  std::vector<std::int64_t> out;
  for (const TPath64& p : Paths) AxisCrossings(p, Y, Range, IsClosed, GetY, GetX, out);
  return TList<std::int64_t>(std::move(out));
}

// ---- Point relations ------------------------------------------------------------------------

TShapeRelation TPathUtils::RelationWithPoint(const TPath64& Path, const TPoint64& Pt) {
  bool inside = false;
  if (ScanPath(Path, Pt, inside)) return TShapeRelation::srOn;
  return inside ? TShapeRelation::srIn : TShapeRelation::srOut;
}

TShapeRelation TPathUtils::RelationWithPoint(const TPaths64& Paths, const TPoint64& Pt) {
  bool inside = false;
  for (const TPath64& p : Paths) {
    if (ScanPath(p, Pt, inside)) return TShapeRelation::srOn;
  }
  return inside ? TShapeRelation::srIn : TShapeRelation::srOut;
}

int TPathUtils::PointInPolygon(const TPoint64& pt, const TPath64& poly, const TRect64& rect) {
  if (PointInRect(pt, rect) == 0) return 0;
  return ExactPointInPath(pt, poly);
}

int TPathUtils::PointInPolygons(const TPoint64& pt, const TPaths64& poly) {
  int outline = 0;
  return PointInPolygons(pt, poly, outline);
}

int TPathUtils::PointInPolygons(const TPoint64& pt, const TPaths64& poly, int& outline) {
  if (poly.empty()) return 0;
  outline = Clipper::PointInPolygon(pt, poly[0]);
  if (outline < 1) return outline;
  for (std::size_t i = 1; i < poly.size(); ++i) {
    const int r = Clipper::PointInPolygon(pt, poly[i]);
    if (r == -1) return -2;
    if (r == 1) return 0;
  }
  return 1;
}

int TPathUtils::PointInPolygons(const TPoint64& pt, const TPaths64& poly, const TList<TRect64>& rects, int& outline) {
  if (static_cast<std::size_t>(rects.Count()) != poly.size())
    throw EParamError("[Error] TPathUtils.PointInPolygons: %d boxes for %d paths", rects.Count(), poly.size());
  if (poly.empty()) return 0;
  outline = PointInPolygon(pt, poly[0], rects[0]);
  if (outline < 1) return outline;
  for (std::size_t i = 1; i < poly.size(); ++i) {
    const int r = PointInPolygon(pt, poly[i], rects[static_cast<int>(i)]);
    if (r == -1) return -2;
    if (r == 1) return 0;
  }
  return 1;
}

bool TPathUtils::IsPointIn(const TPoint64& pt, const TPaths64& poly, std::int64_t tol) {
  if (PointInPolygons(pt, poly) != 0) return true;
  double dist = 0.0;
  TPointL2D nearest;
  return IsNearByPoint(poly, TPointL2D(pt.X, pt.Y), tol, dist, nearest);
}

bool TPathUtils::IsPointIn(const TPoint64& pt, const TPath64& poly, std::int64_t tol) {
  if (Clipper::PointInPolygon(pt, poly) != 0) return true;
  double dist = 0.0;
  TPointL2D nearest;
  return IsNearByPoint(TPaths64{poly}, TPointL2D(pt.X, pt.Y), tol, dist, nearest);
}

bool TPathUtils::IsNearByPoint(const TPaths64& Paths, const TPointL2D& Point, std::int64_t Range,
                               double& NearestDistance, TPointL2D& NearestPoint) {
  const double range = static_cast<double>(Range);
  TNearScan scan{static_cast<double>(Point.X), static_cast<double>(Point.Y), range};
  for (const TPath64& p : Paths) scan.Path(p);
  if (scan.best == range) return false;
  NearestPoint = TPointL2D(Round(scan.nx), Round(scan.ny));
  // A whole number of integer units; nearbyint, as the distance may pass 2^63 at the range's edge.
  NearestDistance = std::nearbyint(scan.best);
  return true;
}

double TPathUtils::DistanceTo(const TPaths64& Paths, const TPointL2D& Point, TPointL2D& NearestPoint) {
  double dist = MaxDouble;
  IsNearByPoint(Paths, Point, std::numeric_limits<std::int64_t>::max(), dist, NearestPoint);
  return dist;
}

// ---- Parameters -----------------------------------------------------------------------------

bool TPathUtils::ParamByPoint(const TPath64& Path, const TPoint64& Pt, double& Param, double Tol) {
  const std::size_t n = Path.size();
  if (n == 0) return false;
  if (n == 1) {
    if (Path[0] != Pt) return false;
    Param = 0.0;
    return true;
  }
  const TPoint2D point = Scaled(Pt);
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const TLine2D seg(Scaled(Path[i]), Scaled(Path[i + 1]));
    if (!seg.IsOn(point, Tol)) continue;
    const double t = seg.ParamOfPoint(point);
    if (TMathUtils::IsInFloatRange(t, 0.0, 1.0, true, true, 1e-6)) {
      Param = static_cast<double>(i) + t;
      return true;
    }
  }
  return false;
}

bool TPathUtils::AccurateParamByPoint(const TPath64& Path, const TPoint64& Pt, double& Param, double Tol) {
  const std::size_t n = Path.size();
  if (n == 0) return false;
  if (n == 1) {
    if (Path[0] != Pt) return false;
    Param = 0.0;
    return true;
  }
  const TPoint2D point = Scaled(Pt);
  double best = MaxDouble;
  bool found = false;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const TLine2D seg(Scaled(Path[i]), Scaled(Path[i + 1]));
    if (!seg.IsOn(point, Tol)) continue;
    const double d = seg.DistanceLimit(point);
    if (d >= best) continue;
    const double t = seg.ParamOfPoint(point);
    if (TMathUtils::IsInFloatRange(t, 0.0, 1.0, true, true, 1e-6)) {
      best = d;
      Param = static_cast<double>(i) + t;
      found = true;
    }
  }
  return found;
}

TPoint64 TPathUtils::PointByParam(const TPath64& Path, double Param) {
  const std::size_t n = Path.size();
  const double top = static_cast<double>(n);
  // An empty path has no point at any parameter.
  if (n == 0 || !TMathUtils::IsInFloatRange(Param, 0.0, top, true, true, 1e-6))
    throw Exception("[Error] TPathUtils.PointByParam: 参数超出取值范围");
  const double param = std::clamp(Param, 0.0, top);
  const auto i = static_cast<std::size_t>(param);
  if (i >= n) return Path[0];
  const double t = param - static_cast<double>(i);
  const TPoint64& p = Path[i];
  const TPoint64& e = i + 1 >= n ? Path[0] : Path[i + 1];
  const double px = static_cast<double>(p.X), py = static_cast<double>(p.Y);
  return {Round(px + (static_cast<double>(e.X) - px) * t), Round(py + (static_cast<double>(e.Y) - py) * t)};
}

double TPathUtils::CornerRadian(const TPath64& Path, int Id) {
  const std::size_t n = Path.size();
  if (n <= 1) return Pi;
  if (Id < 0 || static_cast<std::size_t>(Id) >= n) throw Exception("[Error] TPathUtils.CornerRadian: 下标越界");
  const std::size_t id = static_cast<std::size_t>(Id);
  std::size_t prev = (id + n - 1) % n;
  std::size_t next = (id + 1) % n;
  if (IsClosed(Path) && (id == 0 || id == n - 1)) {
    prev = n - 2;
    next = 1 % n;
  }
  const TPoint2D v = Scaled(Path[id]);
  const TPoint2D toNext = Scaled(Path[next]) - v;
  const TPoint2D toPrev = Scaled(Path[prev]) - v;
  return toNext.AngleFrom(toPrev);
}

// ---- Whole-path relation and multi-path extremes --------------------------------------------

int TPathUtils::RelationWithPath(const TPath64& PathA, const TPath64& PathB, double AbsTol, double RelTol) {
  const double a = Clipper::Core::Area(PathA) / 1e12;
  const double b = Clipper::Core::Area(PathB) / 1e12;
  // A path without area bounds no region, so it shares none: the relative tests below would
  // divide by its area.
  if (a == 0.0 || b == 0.0) return 2;
  Clipper::TClipper clipper;
  clipper.AddPath(a < 0.0 ? Clipper::ReversePath(PathA) : PathA, TPathType::ptSubject, true);
  clipper.AddPath(b < 0.0 ? Clipper::ReversePath(PathB) : PathB, TPathType::ptClip, true);
  TPaths64 solution;
  clipper.Execute(TClipType::ctIntersection, solution, TFillRule::frNonZero);
  if (solution.empty()) return 2;
  const double s = std::fabs(Clipper::Core::Area(solution)) / 1e12;
  const double dA = std::fabs(s - std::fabs(a));
  if (dA < AbsTol || dA / std::fabs(a) < RelTol) return -1;
  const double dB = std::fabs(s - std::fabs(b));
  if (dB < AbsTol || dB / std::fabs(b) < RelTol) return 1;
  return 0;
}

TPoint64 TPathUtils::MostPoint(const TPaths64& Paths, const IntPointTolCmpFunc& Cmp, int& PathIdx, int& PtIdx,
                               std::int64_t Tol) {
  PathIdx = -1;
  PtIdx = -1;
  TPoint64 best;
  bool any = false;
  for (std::size_t i = 0; i < Paths.size(); ++i) {
    const TPath64& path = Paths[i];
    for (std::size_t j = 0; j < path.size(); ++j) {
      // The first vertex met is taken unasked (path 0, vertex 0 unless that path is empty).
      if (!any || Cmp(path[j], best, Tol)) {
        best = path[j];
        PathIdx = static_cast<int>(i);
        PtIdx = static_cast<int>(j);
        any = true;
      }
    }
  }
  return best;
}

TPoint64 TPathUtils::LeftBottomPoint(const TPath64& Path, std::int64_t Tol) {
  if (Path.empty()) return {};
  TPoint64 best = Path[0];
  for (std::size_t i = 1; i < Path.size(); ++i) {
    if (LeftBottomCmp(Path[i], best, Tol)) best = Path[i];
  }
  return best;
}

TPoint64 TPathUtils::LeftBottomPoint(const TPaths64& Paths, int& PathIdx, int& PtIdx, std::int64_t Tol) {
  return MostPoint(Paths, LeftBottomCmp, PathIdx, PtIdx, Tol);
}

TPoint64 TPathUtils::LeftBottomPoint(const TPaths64& Paths, std::int64_t Tol) {
  int pathIdx = -1, ptIdx = -1;
  return MostPoint(Paths, LeftBottomCmp, pathIdx, ptIdx, Tol);
}

TPoint64 TPathUtils::BottomLeftPoint(const TPaths64& Paths, int& PathIdx, int& PtIdx, std::int64_t Tol) {
  return MostPoint(Paths, BottomLeftCmp, PathIdx, PtIdx, Tol);
}

TPoint64 TPathUtils::BottomLeftPoint(const TPaths64& Paths, std::int64_t Tol) {
  int pathIdx = -1, ptIdx = -1;
  return MostPoint(Paths, BottomLeftCmp, pathIdx, ptIdx, Tol);
}

}  // namespace orvane
