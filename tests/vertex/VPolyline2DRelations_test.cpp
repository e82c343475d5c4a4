#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {
namespace {

constexpr int On = static_cast<int>(TShapeRelation::srOn);
constexpr int In = static_cast<int>(TShapeRelation::srIn);
constexpr int Out = static_cast<int>(TShapeRelation::srOut);

// ---- independent references -------------------------------------------------------------

// Winding number of the outline closed from the last vertex to the first.
int Winding(const TDynPoints2D& Poly, const TPoint2D& P) {
  int wn = 0;
  for (std::size_t i = 0, prev = Poly.size() - 1; i < Poly.size(); prev = i++) {
    const TPoint2D& a = Poly[prev];
    const TPoint2D& b = Poly[i];
    const double side = (b.X - a.X) * (P.Y - a.Y) - (P.X - a.X) * (b.Y - a.Y);
    if (a.Y <= P.Y) {
      if (b.Y > P.Y && side > 0) ++wn;
    } else if (b.Y <= P.Y && side < 0) {
      --wn;
    }
  }
  return wn;
}

// Distance from P to the outline closed from the last vertex to the first.
double BoundaryDistance(const TDynPoints2D& Poly, const TPoint2D& P) {
  double best = MaxDouble;
  for (std::size_t i = 0, prev = Poly.size() - 1; i < Poly.size(); prev = i++) {
    const TPoint2D a = Poly[prev];
    const TPoint2D d = Poly[i] - a;
    const double len2 = d.X * d.X + d.Y * d.Y;
    double t = len2 > 0 ? ((P.X - a.X) * d.X + (P.Y - a.Y) * d.Y) / len2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    best = std::min(best, std::hypot(P.X - (a.X + t * d.X), P.Y - (a.Y + t * d.Y)));
  }
  return best;
}

// A simple outline: vertices at increasing angles round the origin with random radii.
TDynPoints2D Star(std::mt19937& Rng, int Corners) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.8 * unit(Rng)) * TwoPi / Corners;
    pts.push_back(TPoint2D(std::cos(a), std::sin(a)) * (1.0 + 9.0 * unit(Rng)));
  }
  return pts;
}

// Exact segment relations for small integer coordinates (all products are exact).
struct TContact {
  int Kind = 0;  // 0 none, 1 one point, 2 a collinear stretch of positive length
  TPoint2D P;
  TPoint2D Q;
};

double Orient(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C) {
  return (B.X - A.X) * (C.Y - A.Y) - (C.X - A.X) * (B.Y - A.Y);
}

TContact Contact(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C, const TPoint2D& D) {
  TContact c;
  if (A == B || C == D) {
    // A point against a segment (or a point).
    const TPoint2D& p = A == B ? A : C;
    const TPoint2D& s1 = A == B ? C : A;
    const TPoint2D& s2 = A == B ? D : B;
    const bool on = Orient(s1, s2, p) == 0 && p.X >= std::min(s1.X, s2.X) && p.X <= std::max(s1.X, s2.X) &&
                    p.Y >= std::min(s1.Y, s2.Y) && p.Y <= std::max(s1.Y, s2.Y);
    c.Kind = on ? 1 : 0;
    c.P = p;
    return c;
  }
  const double o1 = Orient(A, B, C);
  const double o2 = Orient(A, B, D);
  const double o3 = Orient(C, D, A);
  const double o4 = Orient(C, D, B);
  if (o1 == 0 && o2 == 0) {
    // Collinear: compare positions along the line.
    const TPoint2D dir = B - A;
    auto at = [&](const TPoint2D& P) { return (P - A).DotMul(dir); };
    const double lo = std::max(0.0, std::min(at(C), at(D)));
    const double hi = std::min(dir.MagSqr(), std::max(at(C), at(D)));
    if (lo > hi) return c;
    auto point = [&](double s) { return A + dir * (s / dir.MagSqr()); };
    c.Kind = lo < hi ? 2 : 1;
    c.P = point(lo);
    c.Q = point(hi);
    return c;
  }
  auto sgn = [](double v) { return (v > 0) - (v < 0); };
  if (sgn(o1) * sgn(o2) > 0 || sgn(o3) * sgn(o4) > 0) return c;
  c.Kind = 1;
  c.P = A + (B - A) * (Orient(C, D, A) / (Orient(C, D, A) - Orient(C, D, B)));
  return c;
}

// A random polyline on a small grid, without repeated neighbours, so that crossings, touches
// at vertices and collinear overlaps are all common.
TDynPoints2D GridPolyline(std::mt19937& Rng, int Count, int Grid) {
  std::uniform_int_distribution<int> coord(0, Grid);
  TDynPoints2D pts;
  while (static_cast<int>(pts.size()) < Count) {
    const TPoint2D p(coord(Rng), coord(Rng));
    if (pts.empty() || !(pts.back() == p)) pts.push_back(p);
  }
  return pts;
}

bool BruteSelfIntersect(const TDynPoints2D& Pts) {
  const int n = static_cast<int>(Pts.size());
  const bool closed = Pts.front() == Pts.back();
  for (int i = 1; i + 1 < n; ++i) {
    for (int j = 0; j < i; ++j) {
      const TContact c = Contact(Pts[i], Pts[i + 1], Pts[j], Pts[j + 1]);
      if (c.Kind == 2) return true;
      if (c.Kind == 0 || i - j == 1) continue;
      if (closed && i == n - 2 && j == 0 && c.P == Pts[0]) continue;
      return true;
    }
  }
  return false;
}

// ---- point relation -----------------------------------------------------------------------

TEST(VPolyline2DRelations, PointRelationHandWorked) {
  // A diamond: rays toward +X pass through the vertices (0, 0) and (2, 0), where the upper
  // and the lower half meet; each must count once.
  const TVPolyline2D diamond{{0, 0}, {1, -1}, {2, 0}, {1, 1}};
  EXPECT_EQ(diamond.RelationWithPoint({1, 0}, 1e-6), In);
  EXPECT_EQ(diamond.RelationWithPoint({-1, 0}, 1e-6), Out);
  EXPECT_EQ(diamond.RelationWithPoint({3, 0}, 1e-6), Out);
  EXPECT_EQ(diamond.RelationWithPoint({1, -1}, 1e-6), On);            // a vertex
  EXPECT_EQ(diamond.RelationWithPoint({0.5, 0.5 + 5e-7}, 1e-6), On);  // near the closing edge
  EXPECT_EQ(diamond.RelationWithPoint({0.5, 0.5 + 5e-6}, 1e-6), Out);
  EXPECT_EQ(diamond.RelationWithPoint({0.5, 0.5 + 5e-6}, TGeTolerance(1e-5, 1e-6)), On);
  // A ray along a horizontal edge, and through a vertex at which the outline only touches.
  const TVPolyline2D step{{0, 0}, {4, 0}, {4, 2}, {3, 2}, {2, 1}, {1, 2}, {0, 2}};
  EXPECT_EQ(step.RelationWithPoint({1, 1}, 1e-6), In);
  EXPECT_EQ(step.RelationWithPoint({-1, 2}, 1e-6), Out);
  EXPECT_EQ(step.RelationWithPoint({2, 1.5}, 1e-6), Out);
  EXPECT_EQ(step.RelationWithPoint({0.5, 1}, 0.6), On);  // the tolerance reaches the left edge
  // Within the tolerance of a horizontal edge, from either side; just beyond it, not.
  EXPECT_EQ(step.RelationWithPoint({0.5, 2 - 5e-7}, 1e-6), On);
  EXPECT_EQ(step.RelationWithPoint({0.5, 2 + 5e-7}, 1e-6), On);
  EXPECT_EQ(step.RelationWithPoint({2, -9e-7}, 1e-6), On);
  EXPECT_EQ(step.RelationWithPoint({0.5, 2 - 2e-6}, 1e-6), In);
  EXPECT_EQ(step.RelationWithPoint({0.5, 2 + 2e-6}, 1e-6), Out);
  // A closed list and an open one are the same outline; one vertex is a point.
  TVPolyline2D closed{{0, 0}, {4, 0}, {4, 2}, {3, 2}, {2, 1}, {1, 2}, {0, 2}, {0, 0}};
  EXPECT_EQ(closed.RelationWithPoint({1, 1}, 1e-6), In);
  EXPECT_EQ(TVPolyline2D(TPoint2D(1, 1)).RelationWithPoint({1, 1 + 1e-7}, 1e-6), On);
  EXPECT_EQ(TVPolyline2D(TPoint2D(1, 1)).RelationWithPoint({1, 2}, 1e-6), Out);
  EXPECT_EQ(TVPolyline2D().RelationWithPoint({0, 0}, 1e-6), Out);
}

TEST(VPolyline2DRelations, PointRelationAgainstWindingNumber) {
  std::mt19937 rng(2024);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  constexpr double Tol = 1e-6;
  int seen[3] = {0, 0, 0};
  for (int round = 0; round < 60; ++round) {
    TDynPoints2D pts = Star(rng, 3 + round % 40);
    TVPolyline2D poly(pts);
    if (round % 3 == 0) poly.Reverse();
    if (round % 2 == 0) poly.Add(poly.First());  // the closed form
    std::vector<TPoint2D> probes;
    for (const TPoint2D& v : pts) {
      probes.push_back(v);                                       // exactly on a vertex
      probes.emplace_back(-20.0 + 40.0 * unit(rng), v.Y);        // a ray through the vertex
      probes.emplace_back(v.X + (unit(rng) - 0.5) * 1e-6, v.Y);  // beside it
    }
    for (std::size_t i = 0, prev = pts.size() - 1; i < pts.size(); prev = i++) {
      const TPoint2D a = pts[prev];
      const TPoint2D d = pts[i] - a;
      const TPoint2D normal = d.RotateCcw90().Normal();
      for (const double offset : {0.0, 0.9, -0.9, 2.0, -2.0, 50.0, -50.0}) {
        probes.push_back(a + d * unit(rng) + normal * (offset * Tol));
      }
    }
    for (int k = 0; k < 50; ++k) probes.emplace_back(-12.0 + 24.0 * unit(rng), -12.0 + 24.0 * unit(rng));

    for (const TPoint2D& p : probes) {
      const double dist = BoundaryDistance(pts, p);
      if (std::fabs(dist - Tol) < 1e-3 * Tol) continue;  // too close to call either way
      const int want = dist <= Tol ? On : (Winding(pts, p) != 0 ? In : Out);
      const int got = poly.RelationWithPoint(p, Tol);
      ASSERT_EQ(got, want) << "round " << round << " at " << p.ToString() << " distance " << dist;
      ++seen[want];
    }
  }
  for (int kind = 0; kind < 3; ++kind) EXPECT_GT(seen[kind], 1000) << kind;
}

// ---- crossing with a segment ------------------------------------------------------------

TEST(VPolyline2DRelations, CrossWithSegment) {
  const TVPolyline2D square{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}};
  // A line along the bottom edge, beyond both ends: one stretch, and the ends of the two
  // neighbouring edges on it.
  const TLine2D along({-2, 0}, {6, 0});
  TList<double> params;
  TList<TPair<double, double>> stretches;
  EXPECT_TRUE(square.CrossWith(along, params, stretches, false, 1e-6));
  ASSERT_EQ(stretches.Count(), 1);
  EXPECT_DOUBLE_EQ(stretches[0].Key, 0.25);
  EXPECT_DOUBLE_EQ(stretches[0].Value, 0.75);
  ASSERT_EQ(params.Count(), 2);  // (0, 0) reported by two edges, once
  EXPECT_DOUBLE_EQ(params[0], 0.25);
  EXPECT_DOUBLE_EQ(params[1], 0.75);
  TList<double> params2;
  TList<TPair<double, double>> stretches2;
  EXPECT_TRUE(square.CrossWith(along, params2, stretches2, true, 1e-6));
  EXPECT_EQ(params2.Count(), 0);
  EXPECT_EQ(stretches2.Count(), 1);

  // Points and segments, appended to what the caller holds.
  TList<TPoint2D> pts;
  TList<TLine2D> lines;
  pts.Add({9, 9});
  EXPECT_TRUE(square.CrossWith(TLine2D({2, -1}, {2, 5}), pts, lines, true));
  ASSERT_EQ(pts.Count(), 3);
  EXPECT_EQ(pts[1], TPoint2D(2, 0));
  EXPECT_EQ(pts[2], TPoint2D(2, 4));
  EXPECT_FALSE(square.CrossWith(TLine2D({5, -1}, {5, 5}), pts, lines, true));
  EXPECT_TRUE(square.CrossWith(TLine2D({1, -5}, {1, -0.9e-6}), pts, lines, true));  // within the tolerance
  EXPECT_LT(pts.Last().DistanceTo(TPoint2D(1, -0.9e-6)), 1e-12);
  EXPECT_TRUE(square.CrossWith(along, pts, lines, false));
  ASSERT_EQ(lines.Count(), 1);
  EXPECT_EQ(lines[0], TLine2D({0, 0}, {4, 0}));

  // A line of length 0 on the outline reports 0.0 once; off it, nothing.
  TList<double> zero;
  TList<TPair<double, double>> none;
  EXPECT_TRUE(square.CrossWith(TLine2D({4, 0}, {4, 0}), zero, none, false, 1e-6));
  EXPECT_EQ(zero.Count(), 1);
  EXPECT_EQ(zero[0], 0.0);
  EXPECT_FALSE(square.CrossWith(TLine2D({5, 0}, {5, 0}), zero, none, false, 1e-6));
  EXPECT_FALSE(TVPolyline2D().CrossWith(along, zero, none, false, 1e-6));
  EXPECT_TRUE(TVPolyline2D(TPoint2D(1, 0)).CrossWith(along, zero, none, false, 1e-6));
  EXPECT_DOUBLE_EQ(zero.Last(), 0.375);

  // The farthest crossing along the line, stretches included.
  const TNullable<TPoint2D> last = square.CrossWithLastPt(TLine2D({2, -1}, {2, 5}));
  ASSERT_FALSE(last.GetIsNull());
  EXPECT_EQ(last.Value, TPoint2D(2, 4));
  EXPECT_EQ(square.CrossWithLastPt(TLine2D({6, 0}, {-2, 0})).Value, TPoint2D(0, 0));
  EXPECT_TRUE(square.CrossWithLastPt(TLine2D({5, 5}, {6, 6})).GetIsNull());
}

TEST(VPolyline2DRelations, CrossWithSegmentAgainstAllPairs) {
  std::mt19937 rng(77);
  for (int round = 0; round < 300; ++round) {
    const TDynPoints2D pts = GridPolyline(rng, 2 + round % 9, 6);
    const TVPolyline2D poly(pts);
    const TDynPoints2D ends = GridPolyline(rng, 2, 6);
    const TLine2D line(ends[0], ends[1]);
    TList<double> params;
    TList<TPair<double, double>> stretches;
    const bool found = poly.CrossWith(line, params, stretches, true, 1e-9);

    std::vector<std::pair<double, double>> wantStretches;
    std::vector<double> wantParams;
    for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
      const TContact c = Contact(line.P1, line.P2, pts[i], pts[i + 1]);
      if (c.Kind == 2) {
        const double a = line.ParamOfPoint(c.P);
        const double b = line.ParamOfPoint(c.Q);
        wantStretches.emplace_back(std::min(a, b), std::max(a, b));
      } else if (c.Kind == 1) {
        wantParams.push_back(line.ParamOfPoint(c.P));
      }
    }
    std::stable_sort(wantStretches.begin(), wantStretches.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::sort(wantParams.begin(), wantParams.end());
    std::vector<double> kept;
    for (double t : wantParams) {
      const bool inStretch = std::any_of(wantStretches.begin(), wantStretches.end(),
                                         [&](const auto& s) { return t >= s.first - 1e-12 && t <= s.second + 1e-12; });
      if (!inStretch && (kept.empty() || t - kept.back() > 1e-6)) kept.push_back(t);
    }
    ASSERT_EQ(found, !kept.empty() || !wantStretches.empty()) << round;
    ASSERT_EQ(stretches.Count(), static_cast<int>(wantStretches.size())) << round;
    for (int k = 0; k < stretches.Count(); ++k) {
      EXPECT_NEAR(stretches[k].Key, wantStretches[static_cast<std::size_t>(k)].first, 1e-12);
      EXPECT_NEAR(stretches[k].Value, wantStretches[static_cast<std::size_t>(k)].second, 1e-12);
    }
    ASSERT_EQ(params.Count(), static_cast<int>(kept.size())) << round;
    for (int k = 0; k < params.Count(); ++k) EXPECT_NEAR(params[k], kept[static_cast<std::size_t>(k)], 1e-12);
  }
}

// ---- crossings of two polylines and of one with itself ----------------------------------

TEST(VPolyline2DRelations, SelfIntersectionHandWorked) {
  TVPolyline2D square{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}};
  EXPECT_FALSE(square.IsSelfIntersect(1e-6));
  square.SetItem(4, {2, 0});  // the last vertex on the first edge
  EXPECT_TRUE(square.IsSelfIntersect(1e-6));
  EXPECT_FALSE((TVPolyline2D{{1, 1}, {1, 1}}).IsSelfIntersect(1e-6));
  EXPECT_TRUE((TVPolyline2D{{0, 0}, {4, 0}, {2, 0}}).IsSelfIntersect(1e-6));  // folds back
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {4, 0}, {4, 1}}).IsSelfIntersect(1e-6));
  EXPECT_TRUE((TVPolyline2D{{0, 0}, {4, 0}, {4, 1}, {2, 1e-7}}).IsSelfIntersect(1e-6));   // touches within Tol
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {4, 0}, {4, 1}, {2, 1e-5}}).IsSelfIntersect(1e-6));  // stays clear
  // A bow tie crosses itself; the same corners in order do not.
  EXPECT_TRUE((TVPolyline2D{{0, 0}, {2, 2}, {2, 0}, {0, 2}, {0, 0}}).IsSelfIntersect(1e-6));
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}).IsSelfIntersect(1e-6));
  EXPECT_THROW((TVPolyline2D{{0, 0}, {NAN, 0}, {1, 1}}).IsSelfIntersect(1e-6), EParamError);
}

TEST(VPolyline2DRelations, SelfIntersectionAgainstAllPairs) {
  std::mt19937 rng(5);
  int verdicts[2] = {0, 0};
  for (int round = 0; round < 3000; ++round) {
    TDynPoints2D pts = GridPolyline(rng, 3 + round % 8, 3 + round % 5);
    if (round % 2 == 0 && !(pts.back() == pts.front())) pts.push_back(pts.front());
    const bool want = BruteSelfIntersect(pts);
    ASSERT_EQ(TVPolyline2D(pts).IsSelfIntersect(1e-9), want) << "round " << round;
    ++verdicts[want ? 1 : 0];
  }
  EXPECT_GT(verdicts[0], 300);
  EXPECT_GT(verdicts[1], 300);
  // Long outlines on an integer grid, simple or touched and crossed on purpose somewhere
  // along them: a vertex moved onto another vertex, onto the middle of a segment, or across.
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int longVerdicts[2] = {0, 0};
  for (int round = 0; round < 300; ++round) {
    TDynPoints2D pts = Star(rng, 20 + round % 150);
    for (TPoint2D& p : pts) p = TPoint2D(2.0 * std::round(p.X * 50.0), 2.0 * std::round(p.Y * 50.0));
    pts.erase(std::unique(pts.begin(), pts.end()), pts.end());
    if (round % 2 == 0) pts.push_back(pts.front());
    const auto pick = [&] { return static_cast<std::size_t>(unit(rng) * static_cast<double>(pts.size() - 1)); };
    const std::size_t k = pick();
    const std::size_t m = pick();
    switch (round % 4) {
      case 1: pts[k] = pts[m]; break;
      case 2: pts[k] = (pts[m] + pts[m + 1]) * 0.5; break;
      case 3: pts[k] = pts[k] * 0.2; break;
      default: break;
    }
    const bool want = BruteSelfIntersect(pts);
    ASSERT_EQ(TVPolyline2D(pts).IsSelfIntersect(1e-9), want) << "long round " << round;
    ++longVerdicts[want ? 1 : 0];
  }
  EXPECT_GT(longVerdicts[0], 60);
  EXPECT_GT(longVerdicts[1], 60);
}

TEST(VPolyline2DRelations, CrossWithPolylineAgainstAllPairs) {
  std::mt19937 rng(11);
  using TKey = std::pair<long long, long long>;
  auto key = [](const TPoint2D& p) { return TKey(std::llround(p.X * 1e6), std::llround(p.Y * 1e6)); };
  // An overlap without its direction.
  auto stretch = [&](const TPoint2D& p, const TPoint2D& q) {
    const TKey a = key(p);
    const TKey b = key(q);
    return a < b ? std::make_pair(a, b) : std::make_pair(b, a);
  };
  for (int round = 0; round < 1500; ++round) {
    const TDynPoints2D a = GridPolyline(rng, 2 + round % 7, 5);
    const TDynPoints2D b = GridPolyline(rng, 2 + (round / 7) % 7, 5);
    std::set<TKey> wantPoints;
    std::multiset<std::pair<TKey, TKey>> wantLines;
    for (std::size_t i = 0; i + 1 < a.size(); ++i) {
      for (std::size_t j = 0; j + 1 < b.size(); ++j) {
        const TContact c = Contact(a[i], a[i + 1], b[j], b[j + 1]);
        if (c.Kind == 1) wantPoints.insert(key(c.P));
        if (c.Kind == 2) wantLines.insert(stretch(c.P, c.Q));
      }
    }
    const TVPolyline2D pa(a);
    const TVPolyline2D pb(b);
    TList<TPoint2D> points;
    TList<TLine2D> lines;
    pa.CrossWith(pb, points, lines);
    std::set<TKey> gotPoints;
    for (const TPoint2D& p : points) EXPECT_TRUE(gotPoints.insert(key(p)).second) << "reported twice";
    std::multiset<std::pair<TKey, TKey>> gotLines;
    for (const TLine2D& l : lines) gotLines.insert(stretch(l.P1, l.P2));
    ASSERT_EQ(gotPoints, wantPoints) << "round " << round;
    ASSERT_EQ(gotLines, wantLines) << "round " << round;
    // The quadratic test agrees, both ways round.
    const bool touch = !wantPoints.empty() || !wantLines.empty();
    ASSERT_EQ(pa.IsCrossWith(pb), touch) << round;
    ASSERT_EQ(pb.IsCrossWith(pa), touch) << round;
  }
}

TEST(VPolyline2DRelations, SharedEdgesAndRelations) {
  const TVPolyline2D left{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  const TVPolyline2D right{{2, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 0}};
  TList<TPoint2D> points;
  TList<TLine2D> lines;
  left.CrossWith(right, points, lines);
  ASSERT_EQ(lines.Count(), 1);
  EXPECT_EQ(std::min(lines[0].P1.Y, lines[0].P2.Y), 0.0);
  EXPECT_EQ(std::max(lines[0].P1.Y, lines[0].P2.Y), 2.0);
  EXPECT_EQ(lines[0].P1.X, 2.0);
  EXPECT_EQ(lines[0].P2.X, 2.0);
  EXPECT_EQ(points.Count(), 2);  // the two corners where the other edges meet the shared one
  EXPECT_TRUE(left.IsCrossWith(right));
  EXPECT_FALSE(left.IsCrossWith(TVPolyline2D{{3, 3}, {5, 3}}));
  // Alongside the left edge, apart by less than the tolerance, and then by more.
  EXPECT_TRUE(left.IsCrossWith(TVPolyline2D{{-1, 1}, {-0.9e-6, 1}, {-0.9e-6, 3}, {1, 3}}));
  EXPECT_FALSE(left.IsCrossWith(TVPolyline2D{{-1, 1}, {-1.1e-6, 1}, {-1.1e-6, 3}, {1, 3}}));
  EXPECT_FALSE(left.IsCrossWith(TVPolyline2D(TPoint2D(1, 1))));

  // Nesting: the open form is closed first; a touch is a crossing.
  const TVPolyline2D inner{{0.5, 0.5}, {1.5, 0.5}, {1.5, 1.5}, {0.5, 1.5}};
  EXPECT_EQ(left.RelationWith(inner), 1);
  EXPECT_EQ(inner.RelationWith(left), -1);
  EXPECT_EQ(left.RelationWith(right), 0);
  EXPECT_EQ(left.RelationWith(TVPolyline2D{{5, 5}, {6, 5}, {6, 6}}), -1);
  // The closing edge of the open triangle reaches into the square.
  EXPECT_EQ(left.RelationWith(TVPolyline2D{{1, 1}, {3, 3}, {1, 3}}), 0);
  EXPECT_EQ(left.RelationWith(TVPolyline2D(TPoint2D(1, 1))), 1);
  try {
    left.RelationWith(TVPolyline2D());
    ADD_FAILURE() << "nothing raised";
  } catch (const EAssertionFailed& e) {
    EXPECT_STREQ(e.what(), "[Assert] TVPolyline2D.RelationWith: 多段线没有数据");
    EXPECT_EQ(e.Source, "Orvane");
  }
  EXPECT_THROW(TVPolyline2D().RelationWith(left), EAssertionFailed);

  // Nearest crossing: from a crossing the next one counts, never the start itself.
  const TVPolyline2D zigzag{{0, -1}, {1, 1}, {2, -1}, {3, 1}, {4, -1}};
  const TVPolyline2D axis{{-1, 0}, {5, 0}};
  TPoint2D hit(9, 9);
  ASSERT_TRUE(axis.NearestCrossPoint(zigzag, {-1, 0}, hit));
  EXPECT_EQ(hit, TPoint2D(0.5, 0));
  ASSERT_TRUE(axis.NearestCrossPoint(zigzag, {1.4, 0}, hit));
  EXPECT_NEAR(hit.X, 1.5, 1e-12);
  ASSERT_TRUE(axis.NearestCrossPoint(zigzag, {0.5, 0}, hit));
  EXPECT_NEAR(hit.X, 1.5, 1e-12);
  const TVPolyline2D single{{0, -1}, {0, 1}};
  hit = {9, 9};
  EXPECT_FALSE(axis.NearestCrossPoint(single, {0, 0}, hit));
  EXPECT_EQ(hit, TPoint2D(9, 9));
  // An overlap offers its nearest point.
  ASSERT_TRUE(axis.NearestCrossPoint(TVPolyline2D{{2, 0}, {3, 0}}, {0, 0}, hit));
  EXPECT_EQ(hit, TPoint2D(2, 0));
}

TEST(VPolyline2DRelations, CornersAndCurvature) {
  for (const bool clockwise : {false, true}) {
    TVPolyline2D square{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
    square.SetIsClockwise(clockwise);
    for (int id = 0; id < square.Count(); ++id) EXPECT_EQ(square.CornerType(id), 1) << id;
    // An L: the inner corner is concave in either orientation.
    TVPolyline2D ell{{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}, {0, 0}};
    ell.SetIsClockwise(clockwise);
    int concave = 0;
    for (int id = 0; id < ell.Count() - 1; ++id) concave += ell.CornerType(id) == 3 ? 1 : 0;
    EXPECT_EQ(concave, 1);
    EXPECT_EQ(ell[3], TPoint2D(1, 1));
    EXPECT_EQ(ell.CornerType(3), 3);
  }
  const TVPolyline2D open{{0, 0}, {1, 0}, {2, 0}, {2, 1}};
  EXPECT_EQ(open.CornerType(0), 0);
  EXPECT_EQ(open.CornerType(3), 0);
  EXPECT_EQ(open.CornerType(1), 2);
  EXPECT_EQ(open.CornerType(2), 1);
  EXPECT_EQ((TVPolyline2D{{0, 0}, {1, 0}}).CornerType(0), 0);
  EXPECT_THROW(open.CornerType(7), EListError);

  // Three places on a circle of radius 5 give 5, wherever they lie; a straight run gives 0.
  TDynPoints2D circle;
  for (int k = 0; k <= 12; ++k) circle.emplace_back(5.0 * std::cos(k * TwoPi / 12), 5.0 * std::sin(k * TwoPi / 12));
  circle.back() = circle.front();
  const TVPolyline2D ring(circle);
  for (const double t : {0.0, 3.0, 7.0, 12.0}) EXPECT_NEAR(ring.CurvatureRadius(t), 5.0, 1e-9) << t;
  EXPECT_EQ(open.CurvatureRadius(0.5), 0.0);
  EXPECT_EQ(open.CurvatureRadius(0.0), 0.0);
  EXPECT_EQ(open.CurvatureRadius(3.0), 0.0);
  // Round the corner at (2, 0): places (1, 0), (2, 0) and (2, 1).
  EXPECT_NEAR(open.CurvatureRadius(2.0), std::sqrt(0.5), 1e-12);
  EXPECT_EQ(open.CurvatureRadius(9.0), 0.0);
}

// ---- real outlines ----------------------------------------------------------------------

TEST(VPolyline2DRelations, RealOutlines) {
  const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "outlines";
  if (!std::filesystem::is_directory(dir)) GTEST_SKIP() << "no outline data at " << dir;
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int parts = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path());
    const nlohmann::json doc = nlohmann::json::parse(in);
    for (const nlohmann::json& part : doc["parts"]) {
      TVPolyline2D poly;
      for (const nlohmann::json& xy : part["outer"]) poly.Add({xy[0].get<double>(), xy[1].get<double>()});
      // Some outlines repeat a vertex, or nearly (1e-13 apart); the segments on either side of
      // such a vertex would meet there.
      poly.DeleteNeighbourClosed(false, 1e-9);
      poly.ConnectHeadTail();
      ++parts;
      ASSERT_FALSE(poly.IsSelfIntersect(1e-9)) << entry.path().filename() << " part " << part["id"];
      const TRect2D box = poly.BoundBox();
      const TDynPoints2D& pts = poly.Points();
      for (int k = 0; k < 40; ++k) {
        const TPoint2D p(box.XMin + unit(rng) * box.Width(), box.YMin + unit(rng) * box.Height());
        const double dist = BoundaryDistance(pts, p);
        if (std::fabs(dist - 1e-6) < 1e-9) continue;
        const int want = dist <= 1e-6 ? On : (Winding(pts, p) != 0 ? In : Out);
        ASSERT_EQ(poly.RelationWithPoint(p, 1e-6), want) << entry.path().filename();
      }
    }
  }
  EXPECT_GT(parts, 500);
}

}  // namespace
}  // namespace orvane
