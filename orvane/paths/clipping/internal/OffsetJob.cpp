#include "orvane/paths/clipping/internal/OffsetJob.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/internal/ClipperEngine.h"

namespace orvane::internal {

namespace {

struct TUnit {
  double X, Y;
};

ClipperLib::IntPoint At(const ClipperLib::IntPoint& P, double DX, double DY) {
  return ClipperLib::IntPoint(static_cast<ClipperLib::cInt>(Round(static_cast<double>(P.X) + DX)),
                              static_cast<ClipperLib::cInt>(Round(static_cast<double>(P.Y) + DY)));
}

// Right-hand unit normal of the edge A -> B.
TUnit Normal(const ClipperLib::IntPoint& A, const ClipperLib::IntPoint& B) {
  const double dx = static_cast<double>(B.X - A.X);
  const double dy = static_cast<double>(B.Y - A.Y);
  const double len = std::hypot(dx, dy);
  return TUnit{dy / len, -dx / len};
}

// The offset vertices at P between the edge with normal NK and the next with normal NJ.
// Convex corners (seen from the offset side) get a bevel: just the two offset end points.
// Concave ones go back through P so that the loop they form winds the right way.
void BevelJoin(const ClipperLib::IntPoint& P, const TUnit& NK, const TUnit& NJ, double Delta, ClipperLib::Path& Out) {
  const double sinA = NK.X * NJ.Y - NJ.X * NK.Y;
  const double cosA = NK.X * NJ.X + NK.Y * NJ.Y;
  Out.push_back(At(P, NK.X * Delta, NK.Y * Delta));
  if (sinA * Delta < 0) {
    Out.push_back(P);
  } else if (std::fabs(sinA * Delta) < 1.0 && cosA > 0) {
    return;  // nearly straight on: one vertex is enough
  }
  Out.push_back(At(P, NJ.X * Delta, NJ.Y * Delta));
}

ClipperLib::Path Dedupe(const ClipperLib::Path& Path, bool Closed) {
  ClipperLib::Path out;
  out.reserve(Path.size());
  for (const ClipperLib::IntPoint& p : Path)
    if (out.empty() || !(out.back() == p)) out.push_back(p);
  if (Closed)
    while (out.size() > 1 && out.back() == out.front()) out.pop_back();
  return out;
}

ClipperLib::Path RawClosed(const ClipperLib::Path& Q, double Delta) {
  const std::size_t n = Q.size();
  std::vector<TUnit> normals(n);
  for (std::size_t i = 0; i < n; ++i) normals[i] = Normal(Q[i], Q[(i + 1) % n]);
  ClipperLib::Path out;
  out.reserve(n * 3);
  for (std::size_t j = 0; j < n; ++j) BevelJoin(Q[j], normals[(j + n - 1) % n], normals[j], Delta, out);
  return out;
}

double ArcStep(double Delta, double ArcTolerance) {
  double tol = ArcTolerance <= 0 ? 0.25 : ArcTolerance;
  tol = std::min(tol, std::fabs(Delta) * 0.25);
  return 2.0 * std::acos(1.0 - tol / std::fabs(Delta));
}

// The cap at P from P + N * Delta round to P - N * Delta, with D the direction leaving P.
void Cap(const ClipperLib::IntPoint& P, const TUnit& N, const TUnit& D, double Delta, TEndType End, double ArcTolerance,
         ClipperLib::Path& Out) {
  if (End == TEndType::etSquare) {
    Out.push_back(At(P, (N.X + D.X) * Delta, (N.Y + D.Y) * Delta));
    Out.push_back(At(P, (D.X - N.X) * Delta, (D.Y - N.Y) * Delta));
  } else if (End == TEndType::etRound) {
    const int steps = std::max(1, static_cast<int>(std::ceil(std::numbers::pi / ArcStep(Delta, ArcTolerance))));
    for (int k = 1; k < steps; ++k) {
      const double a = std::numbers::pi * k / steps;
      const double c = std::cos(a), s = std::sin(a);
      // N turned anticlockwise by a: N at a = 0, D at pi / 2, -N at pi.
      Out.push_back(At(P, (N.X * c - N.Y * s) * Delta, (N.X * s + N.Y * c) * Delta));
    }
  }
}

ClipperLib::Path RawOpen(const ClipperLib::Path& Q, double Delta, TEndType End, double ArcTolerance) {
  const std::size_t m = Q.size();
  std::vector<TUnit> normals(m - 1);
  for (std::size_t i = 0; i + 1 < m; ++i) normals[i] = Normal(Q[i], Q[i + 1]);
  auto neg = [](const TUnit& u) { return TUnit{-u.X, -u.Y}; };
  ClipperLib::Path out;
  out.reserve(m * 6 + 8);
  out.push_back(At(Q[0], normals[0].X * Delta, normals[0].Y * Delta));
  for (std::size_t j = 1; j + 1 < m; ++j) BevelJoin(Q[j], normals[j - 1], normals[j], Delta, out);
  const TUnit& nl = normals[m - 2];
  out.push_back(At(Q[m - 1], nl.X * Delta, nl.Y * Delta));
  Cap(Q[m - 1], nl, TUnit{-nl.Y, nl.X}, Delta, End, ArcTolerance, out);
  out.push_back(At(Q[m - 1], -nl.X * Delta, -nl.Y * Delta));
  for (std::size_t j = m - 2; j >= 1; --j) BevelJoin(Q[j], neg(normals[j]), neg(normals[j - 1]), Delta, out);
  const TUnit n0 = neg(normals[0]);
  out.push_back(At(Q[0], n0.X * Delta, n0.Y * Delta));
  Cap(Q[0], n0, TUnit{-n0.Y, n0.X}, Delta, End, ArcTolerance, out);
  return out;
}

}  // namespace

void TOffsetJob::Add(const TPath64& Path, TJoinType Join, TEndType End) {
  CheckRange(Path);
  Groups.push_back(TGroup{ToEngine(Path), Join, End});
}

void TOffsetJob::Add(const TPaths64& Paths, TJoinType Join, TEndType End) {
  CheckRange(Paths);
  Groups.reserve(Groups.size() + Paths.size());
  for (const TPath64& p : Paths) Groups.push_back(TGroup{ToEngine(p), Join, End});
}

bool TOffsetJob::HasBevel() const {
  return std::any_of(Groups.begin(), Groups.end(), [](const TGroup& g) { return g.Join == TJoinType::jtBevel; });
}

// The engine's join for our own; jtBevel paths reach the engine only as single points (or at
// offsets too small for joins to matter), where squaring them off is the same.
static ClipperLib::JoinType EngineJoin(TJoinType Join) {
  switch (Join) {
    case TJoinType::jtMiter: return ClipperLib::jtMiter;
    case TJoinType::jtRound: return ClipperLib::jtRound;
    case TJoinType::jtSquare:
    case TJoinType::jtBevel: break;
  }
  return ClipperLib::jtSquare;
}

// Whether the bevel construction handles this path, or the engine does (single points, and
// everything when the offset is too small for joins to matter).
static bool BevelBuilt(const ClipperLib::Path& Deduped, TEndType End, double Delta) {
  if (std::fabs(Delta) < 0.5) return false;
  return End == TEndType::etPolygon ? Deduped.size() >= 3 : Deduped.size() >= 2;
}

void TOffsetJob::EngineOffset(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Out) const {
  ClipperLib::ClipperOffset co(MiterLimit, ArcTolerance);
  bool any = false;
  for (const TGroup& g : Groups) {
    if (g.Join == TJoinType::jtBevel &&
        BevelBuilt(Dedupe(g.Path, g.End == TEndType::etPolygon || g.End == TEndType::etJoined), g.End, Delta))
      continue;
    co.AddPath(g.Path, EngineJoin(g.Join), ToEngine(g.End));
    any = true;
  }
  Out.clear();
  if (any) co.Execute(Out, Delta);
}

void TOffsetJob::BevelOffset(double Delta, double ArcTolerance, ClipperLib::Paths& Out) const {
  Out.clear();
  ClipperLib::Paths polygons, lines;
  std::vector<TEndType> lineEnds;
  for (const TGroup& g : Groups) {
    if (g.Join != TJoinType::jtBevel) continue;
    const bool closed = g.End == TEndType::etPolygon || g.End == TEndType::etJoined;
    ClipperLib::Path q = Dedupe(g.Path, closed);
    if (!BevelBuilt(q, g.End, Delta)) continue;
    if (g.End == TEndType::etPolygon) {
      polygons.push_back(std::move(q));
    } else {
      lines.push_back(std::move(q));
      lineEnds.push_back(g.End);
    }
  }
  // Polygons keep holes as holes: when the path with the lowest vertex (an outer one) runs
  // clockwise, all polygons are turned round.
  if (!polygons.empty()) {
    std::size_t lowest = 0;
    ClipperLib::IntPoint low = polygons[0][0];
    for (std::size_t i = 0; i < polygons.size(); ++i)
      for (const ClipperLib::IntPoint& p : polygons[i])
        if (p.Y < low.Y || (p.Y == low.Y && p.X < low.X)) {
          low = p;
          lowest = i;
        }
    if (!ClipperLib::Orientation(polygons[lowest]))
      for (ClipperLib::Path& p : polygons) std::reverse(p.begin(), p.end());
  }
  if (Delta > 0) {
    ClipperLib::Paths raw;
    for (const ClipperLib::Path& p : polygons) raw.push_back(RawClosed(p, Delta));
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lineEnds[i] == TEndType::etJoined) {
        raw.push_back(RawClosed(lines[i], Delta));
        ClipperLib::Path r(lines[i].rbegin(), lines[i].rend());
        raw.push_back(RawClosed(r, Delta));
      } else {
        raw.push_back(RawOpen(lines[i], Delta, lineEnds[i], ArcTolerance));
      }
    }
    if (!raw.empty()) EngineUnion(raw, ClipperLib::pftPositive, Out);
    return;
  }
  // Shrinking: the polygons' region less the band of width |Delta| along their outlines.
  // Open and joined paths vanish, as the engine lets them.
  if (polygons.empty()) return;
  const double d = -Delta;
  ClipperLib::Paths region, band, raw;
  EngineUnion(polygons, ClipperLib::pftPositive, region);
  for (const ClipperLib::Path& p : polygons) {
    raw.push_back(RawClosed(p, d));
    ClipperLib::Path r(p.rbegin(), p.rend());
    raw.push_back(RawClosed(r, d));
  }
  EngineUnion(raw, ClipperLib::pftPositive, band);
  ClipperLib::Clipper c;
  c.AddPaths(region, ClipperLib::ptSubject, true);
  c.AddPaths(band, ClipperLib::ptClip, true);
  c.Execute(ClipperLib::ctDifference, Out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
}

double TOffsetJob::Prepare(double Delta, double ArcTolerance) const {
  CheckFinite(Delta, "TClipperOffset.Execute", "Delta");
  // Every offset point must stay inside the engine's range.
  const double grow = std::ceil(std::fabs(Delta));
  const std::int64_t reach =
      grow >= static_cast<double>(Clipper::HiRange) ? -1 : Clipper::HiRange - static_cast<std::int64_t>(grow);
  for (const TGroup& g : Groups)
    for (const ClipperLib::IntPoint& p : g.Path)
      if (p.X > reach || p.X < -reach || p.Y > reach || p.Y < -reach) throw Exception(SCoordinateRange);
  // Arcs finer than a millionth of the offset only multiply vertices (and a vanishing
  // tolerance would make their number unbounded).
  if (ArcTolerance > 0) return std::max(ArcTolerance, std::fabs(Delta) * 1e-6);
  return 0.0;  // the engine's default
}

template <class TSolution>
bool TOffsetJob::EngineOnly(double Delta, double MiterLimit, double ArcTolerance, TSolution& Solution) const {
  if (HasBevel()) return false;
  ClipperLib::ClipperOffset co(MiterLimit, ArcTolerance);
  for (const TGroup& g : Groups) co.AddPath(g.Path, EngineJoin(g.Join), ToEngine(g.End));
  co.Execute(Solution, Delta);
  return true;
}

void TOffsetJob::Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Solution) const {
  Solution.clear();
  ArcTolerance = Prepare(Delta, ArcTolerance);
  if (EngineOnly(Delta, MiterLimit, ArcTolerance, Solution)) return;
  ClipperLib::Paths fromEngine, fromBevel;
  EngineOffset(Delta, MiterLimit, ArcTolerance, fromEngine);
  BevelOffset(Delta, ArcTolerance, fromBevel);
  if (fromEngine.empty()) {
    Solution = std::move(fromBevel);
  } else if (fromBevel.empty()) {
    Solution = std::move(fromEngine);
  } else {
    fromEngine.insert(fromEngine.end(), fromBevel.begin(), fromBevel.end());
    EngineUnion(fromEngine, ClipperLib::pftNonZero, Solution);
  }
}

void TOffsetJob::Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::PolyTree& Solution) const {
  ArcTolerance = Prepare(Delta, ArcTolerance);
  if (EngineOnly(Delta, MiterLimit, ArcTolerance, Solution)) return;
  ClipperLib::Paths paths;
  Execute(Delta, MiterLimit, ArcTolerance, paths);
  ClipperLib::Clipper c;
  c.AddPaths(paths, ClipperLib::ptSubject, true);
  c.Execute(ClipperLib::ctUnion, Solution, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
}

}  // namespace orvane::internal
