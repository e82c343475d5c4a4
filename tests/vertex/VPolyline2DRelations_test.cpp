#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/internal/SelfCrossing.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::Orient;
using testing::RandomStar;

constexpr int On = static_cast<int>(TShapeRelation::srOn);
constexpr int In = static_cast<int>(TShapeRelation::srIn);
constexpr int Out = static_cast<int>(TShapeRelation::srOut);

// ---- independent references -------------------------------------------------------------

// Exact relation of two segments with small integer coordinates: 0 apart, 1 one common
// point P, 2 a collinear stretch P..Q of positive length.
struct TContact {
  int Kind = 0;
  TPoint2D P;
  TPoint2D Q;
};

TContact Contact(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C, const TPoint2D& D) {
  auto within = [](const TPoint2D& P, const TPoint2D& S1, const TPoint2D& S2) {
    return P.X >= std::min(S1.X, S2.X) && P.X <= std::max(S1.X, S2.X) && P.Y >= std::min(S1.Y, S2.Y) &&
           P.Y <= std::max(S1.Y, S2.Y);
  };
  if (A == B || C == D) {
    const TPoint2D& p = A == B ? A : C;
    const TPoint2D& s1 = A == B ? C : A;
    const TPoint2D& s2 = A == B ? D : B;
    return {Orient(s1, s2, p) == 0 && within(p, s1, s2) ? 1 : 0, p, p};
  }
  if (Orient(A, B, C) == 0 && Orient(A, B, D) == 0) {
    const TPoint2D dir = B - A;
    auto at = [&](const TPoint2D& P) { return (P - A).DotMul(dir) / dir.MagSqr(); };
    const double lo = std::max(0.0, std::min(at(C), at(D)));
    const double hi = std::min(1.0, std::max(at(C), at(D)));
    if (lo > hi) return {};
    return {lo < hi ? 2 : 1, A + dir * lo, A + dir * hi};
  }
  auto sgn = [](double v) { return (v > 0) - (v < 0); };
  if (sgn(Orient(A, B, C)) * sgn(Orient(A, B, D)) > 0 || sgn(Orient(C, D, A)) * sgn(Orient(C, D, B)) > 0) return {};
  const TPoint2D p = A + (B - A) * (Orient(C, D, A) / (Orient(C, D, A) - Orient(C, D, B)));
  return {1, p, p};
}

// A random polyline on a small grid without repeated neighbours: crossings, touches at
// vertices and collinear overlaps are all common.
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
  for (int i = 1; i + 1 < n; ++i) {
    for (int j = 0; j < i; ++j) {
      const TContact c = Contact(Pts[i], Pts[i + 1], Pts[j], Pts[j + 1]);
      if (c.Kind == 2) return true;
      if (c.Kind == 0 || i - j == 1) continue;
      if (Pts.front() == Pts.back() && i == n - 2 && j == 0 && c.P == Pts[0]) continue;  // the seam
      return true;
    }
  }
  return false;
}

// ---- point relation -----------------------------------------------------------------------

TEST(VPolyline2DRelations, PointRelation) {
  // Rays toward +X through the vertices where a diamond's halves meet count once; so does a
  // ray through the bottom of a notch, where the outline only touches the ray.
  const TVPolyline2D diamond{{0, 0}, {1, -1}, {2, 0}, {1, 1}};
  EXPECT_EQ(diamond.RelationWithPoint({1, 0}, 1e-6), In);
  EXPECT_EQ(diamond.RelationWithPoint({0.5, 0.5 + 5e-6}, 1e-6), Out);
  EXPECT_EQ(diamond.RelationWithPoint({0.5, 0.5 + 5e-6}, TGeTolerance(1e-5, 1e-6)), On);  // the closing edge
  const TVPolyline2D notch{{0, 0}, {4, 0}, {4, 2}, {3, 2}, {2, 1}, {1, 2}, {0, 2}};
  EXPECT_EQ(notch.RelationWithPoint({1, 1}, 1e-6), In);
  EXPECT_EQ(notch.RelationWithPoint({2, 1.5}, 1e-6), Out);
  // Beside horizontal edges, from either side, within the tolerance and beyond it.
  EXPECT_EQ(notch.RelationWithPoint({0.5, 2 - 5e-7}, 1e-6), On);
  EXPECT_EQ(notch.RelationWithPoint({0.5, 2 + 5e-7}, 1e-6), On);
  EXPECT_EQ(notch.RelationWithPoint({2, -9e-7}, 1e-6), On);
  EXPECT_EQ(notch.RelationWithPoint({0.5, 2 - 2e-6}, 1e-6), In);
  EXPECT_EQ(notch.RelationWithPoint({0.5, 2 + 2e-6}, 1e-6), Out);
  EXPECT_EQ(TVPolyline2D(TPoint2D(1, 1)).RelationWithPoint({1, 1 + 1e-7}, 1e-6), On);
  EXPECT_EQ(TVPolyline2D().RelationWithPoint({0, 0}, 1e-6), Out);

  // Random simple outlines, open or closed, either way round, against the winding number:
  // probes on vertices, on rays through vertices, and across edges within and beyond Tol.
  std::mt19937 rng(2024);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  constexpr double Tol = 1e-6;
  int seen[3] = {0, 0, 0};
  for (int round = 0; round < 60; ++round) {
    const TDynPoints2D pts = RandomStar(rng, 3 + round % 40);
    TDynPoints2D ring = pts;
    ring.push_back(pts.front());
    TVPolyline2D poly(pts);
    if (round % 3 == 0) poly.Reverse();
    if (round % 2 == 0) poly.Add(poly.First());
    std::vector<TPoint2D> probes;
    for (std::size_t i = 0, prev = pts.size() - 1; i < pts.size(); prev = i++) {
      probes.push_back(pts[i]);
      probes.emplace_back(-20.0 + 40.0 * unit(rng), pts[i].Y);
      const TPoint2D d = pts[i] - pts[prev];
      const TPoint2D normal = d.RotateCcw90().Normal();
      for (const double offset : {0.0, 0.9, -0.9, 2.0, -2.0, 50.0, -50.0}) {
        probes.push_back(pts[prev] + d * unit(rng) + normal * (offset * Tol));
      }
    }
    for (int k = 0; k < 50; ++k) probes.emplace_back(-12.0 + 24.0 * unit(rng), -12.0 + 24.0 * unit(rng));
    for (const TPoint2D& p : probes) {
      const double dist = testing::DistToRing(ring, p);
      if (std::fabs(dist - Tol) < 1e-3 * Tol) continue;  // too close to call either way
      const int want = dist <= Tol ? On : (testing::EvenOddInside(ring, p) ? In : Out);
      ASSERT_EQ(poly.RelationWithPoint(p, Tol), want) << "round " << round << " at " << p.ToString();
      ++seen[want];
    }
  }
  for (const int count : seen) EXPECT_GT(count, 1000);
}

// ---- crossings ----------------------------------------------------------------------------

TEST(VPolyline2DRelations, CrossWithSegment) {
  const TVPolyline2D square{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}};
  // Along the bottom edge: one stretch; the ends of the neighbouring edges lie on it, and
  // (0, 0), met by two edges, counts once. A line of length 0 on the outline gives 0.0.
  const TLine2D along({-2, 0}, {6, 0});
  TList<double> params;
  TList<double> kept;
  TList<TPair<double, double>> stretches;
  EXPECT_TRUE(square.CrossWith(along, params, stretches, false, 1e-6));
  EXPECT_TRUE(square.CrossWith(along, kept, stretches, true, 1e-6));
  EXPECT_TRUE(square.CrossWith(TLine2D({4, 0}, {4, 0}), kept, stretches, false, 1e-6));
  ASSERT_EQ(stretches.Count(), 2);
  EXPECT_EQ(std::make_pair(stretches[0].Key, stretches[0].Value), std::make_pair(0.25, 0.75));
  EXPECT_EQ(params.List(), (std::vector<double>{0.25, 0.75}));
  EXPECT_EQ(kept.List(), (std::vector<double>{0.0}));
  TList<double> corners;  // through two vertices, each the end of two edges
  EXPECT_TRUE(square.CrossWith(TLine2D({-1, -1}, {5, 5}), corners, stretches, false, 1e-6));
  EXPECT_EQ(corners.Count(), 2);
  // As points, appended to the caller's; a line ending within the tolerance reaches.
  TList<TPoint2D> pts;
  TList<TLine2D> lines;
  EXPECT_TRUE(square.CrossWith(TLine2D({2, -1}, {2, 5}), pts, lines, true));
  EXPECT_FALSE(square.CrossWith(TLine2D({5, -1}, {5, 5}), pts, lines, true));
  EXPECT_TRUE(square.CrossWith(TLine2D({1, -5}, {1, -0.9e-6}), pts, lines, true));
  EXPECT_EQ(pts.Count(), 3);
  EXPECT_EQ(square.CrossWithLastPt(TLine2D({2, -1}, {2, 5})).Value, TPoint2D(2, 4));
  EXPECT_EQ(square.CrossWithLastPt(TLine2D({6, 0}, {-2, 0})).Value, TPoint2D(0, 0));  // the stretch's end
  EXPECT_TRUE(square.CrossWithLastPt(TLine2D({5, 5}, {6, 6})).GetIsNull());
}

TEST(VPolyline2DRelations, SelfIntersectionAgainstAllPairs) {
  // Within the tolerance of an edge, and beyond it.
  EXPECT_FALSE((TVPolyline2D{{1, 1}, {1, 1}}).IsSelfIntersect(1e-6));
  EXPECT_TRUE((TVPolyline2D{{0, 0}, {4, 0}, {4, 1}, {2, 1e-7}}).IsSelfIntersect(1e-6));
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {4, 0}, {4, 1}, {2, 1e-5}}).IsSelfIntersect(1e-6));
  EXPECT_THROW((TVPolyline2D{{0, 0}, {NAN, 0}, {1, 1}}).IsSelfIntersect(1e-6), EParamError);

  // Short polylines on a small grid: crossings, touches and collinear overlaps. Longer
  // outlines are held to the tree of runs below.
  std::mt19937 rng(5);
  int verdicts[2] = {0, 0};
  for (int round = 0; round < 3000; ++round) {
    TDynPoints2D pts = GridPolyline(rng, 3 + round % 8, 3 + round % 5);
    if (round % 3 != 0 && !(pts.back() == pts.front())) pts.push_back(pts.front());
    const bool want = BruteSelfIntersect(pts);
    ASSERT_EQ(TVPolyline2D(pts).IsSelfIntersect(1e-9), want) << "round " << round;
    ++verdicts[want ? 1 : 0];
  }
  EXPECT_GT(verdicts[0], 300);
  EXPECT_GT(verdicts[1], 300);
}

// The sweep over runs against the tree of runs, and both on a closed outline against its
// open vertices with the closing segment added: the same verdict on touching, collinear and
// repeated vertices, at tolerances that do and do not bridge the gaps, on short and long
// outlines, and on every real ring at hand with and without a vertex moved onto another.
TEST(VPolyline2DRelations, SelfIntersectionSweepAgainstTree) {
  int verdicts[2] = {0, 0};
  const auto agree = [&](const TDynPoints2D& Pts, const char* What) {
    for (double tol : {0.0, 1e-9, 0.5, 1.5}) {
      const bool want = internal::SelfCrossByRuns(Pts, tol, true);
      ASSERT_EQ(internal::SelfCrossByRuns(Pts, tol, false), want) << What << " " << Pts.size() << " tol " << tol;
      // A closed outline tested in place, without its repeated vertex.
      if (Pts.size() > 3 && Pts.front() == Pts.back()) {
        const std::span<const TPoint2D> open(Pts.data(), Pts.size() - 1);
        for (bool byTree : {false, true})
          ASSERT_EQ(internal::SelfCrossByRuns(open, tol, byTree, true), want) << What << " closing " << byTree;
      }
      ++verdicts[want ? 1 : 0];
    }
  };
  std::mt19937 rng(11);
  std::uniform_int_distribution<int> coin(0, 3);
  for (int round = 0; round < 4000; ++round) {
    TDynPoints2D pts = GridPolyline(rng, 3 + round % 12, 2 + round % 6);
    if (round % 5 == 0) {
      pts = RandomStar(rng, 20 + round % 700);
      const double scale = round % 15 == 0 ? 1e6 : 1.0;
      for (TPoint2D& p : pts) p = round % 2 ? p * scale : TPoint2D(std::round(p.X * 40.0), std::round(p.Y * 40.0));
      std::uniform_int_distribution<std::size_t> pick(0, pts.size() - 2);
      const std::size_t k = pick(rng);
      const std::size_t m = pick(rng);
      if (coin(rng) == 0) pts[k] = pts[m];
      if (coin(rng) == 0) pts[k] = (pts[m] + pts[m + 1]) * 0.5;
      if (coin(rng) == 0) pts[k] = pts[m] + TPoint2D(0.0, 1e-12 * scale);
    }
    if (round % 3 != 0) pts.push_back(pts.front());
    agree(pts, "random");
  }
  const std::filesystem::path data(ORVANE_SHARED_DATA_DIR);
  if (!std::filesystem::is_directory(data / "layouts")) GTEST_SKIP() << "no layout data at " << data;
  // Every array of at least three [x, y] pairs in the layouts and outlines is a ring.
  int rings = 0;
  const std::function<void(const nlohmann::json&)> visit = [&](const nlohmann::json& J) {
    if (J.is_array() && J.size() >= 3 && J[0].is_array() && J[0].size() == 2 && J[0][0].is_number()) {
      TDynPoints2D ring = testing::JsonRing(J);
      ++rings;
      agree(ring, "real ring");
      ring.push_back(ring.front());
      agree(ring, "closed real ring");
      ring[ring.size() / 2] = ring[ring.size() / 5];
      agree(ring, "real ring with a vertex moved onto another");
    } else if (J.is_structured()) {
      for (const nlohmann::json& item : J) visit(item);
    }
  };
  for (const char* dir : {"layouts", "outlines"}) {
    for (const std::filesystem::path& file : testing::DataFiles(dir, ".json")) visit(testing::ReadJson(file));
  }
  EXPECT_GT(rings, 4000);
  EXPECT_GT(std::min(verdicts[0], verdicts[1]), 10000);
}

TEST(VPolyline2DRelations, CrossWithPolylineAgainstAllPairs) {
  using TKey = std::pair<long long, long long>;
  auto key = [](const TPoint2D& p) { return TKey(std::llround(p.X * 1e6), std::llround(p.Y * 1e6)); };
  auto stretch = [&](const TPoint2D& p, const TPoint2D& q) {
    return std::make_pair(std::min(key(p), key(q)), std::max(key(p), key(q)));
  };
  std::mt19937 rng(11);
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
    const bool touch = !wantPoints.empty() || !wantLines.empty();
    ASSERT_EQ(pa.IsCrossWith(pb), touch) << round;
    ASSERT_EQ(pb.IsCrossWith(pa), touch) << round;
  }
  // Alongside an edge, apart by less than the tolerance, and then by more.
  const TVPolyline2D square{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  EXPECT_TRUE(square.IsCrossWith(TVPolyline2D{{-1, 1}, {-0.9e-6, 1}, {-0.9e-6, 3}, {1, 3}}));
  EXPECT_FALSE(square.IsCrossWith(TVPolyline2D{{-1, 1}, {-1.1e-6, 1}, {-1.1e-6, 3}, {1, 3}}));
}

TEST(VPolyline2DRelations, RelationsNearestCrossingsAndCorners) {
  // Open outlines are closed first; a touch is a crossing.
  const TVPolyline2D left{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  const TVPolyline2D right{{2, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 0}};
  const TVPolyline2D inner{{0.5, 0.5}, {1.5, 0.5}, {1.5, 1.5}, {0.5, 1.5}};
  EXPECT_EQ(std::vector<int>({left.RelationWith(inner), inner.RelationWith(left), left.RelationWith(right),
                              left.RelationWith(TVPolyline2D{{1, 1}, {3, 3}, {1, 3}})}),
            std::vector<int>({1, -1, 0, 0}));
  try {
    left.RelationWith(TVPolyline2D());
    ADD_FAILURE() << "nothing raised";
  } catch (const EAssertionFailed& e) {
    EXPECT_STREQ(e.what(), "[Assert] TVPolyline2D.RelationWith: 多段线没有数据");
    EXPECT_EQ(e.Source, "Orvane");
  }
  // From a crossing the next one counts, never the start itself; overlaps offer their
  // nearest point.
  const TVPolyline2D axis{{-1, 0}, {5, 0}};
  TPoint2D hit(9, 9);
  EXPECT_FALSE(axis.NearestCrossPoint(TVPolyline2D{{0, -1}, {0, 1}}, {0, 0}, hit));
  EXPECT_EQ(hit, TPoint2D(9, 9));
  ASSERT_TRUE(axis.NearestCrossPoint(TVPolyline2D{{0, -1}, {1, 1}, {2, -1}, {3, 1}}, {0.5, 0}, hit));
  EXPECT_NEAR(hit.X, 1.5, 1e-12);
  ASSERT_TRUE(axis.NearestCrossPoint(TVPolyline2D{{2, 0}, {3, 0}}, {0, 0}, hit));
  EXPECT_EQ(hit, TPoint2D(2, 0));

  // Corners: convex all round a square, one concave corner in an L, either way round.
  for (const bool clockwise : {false, true}) {
    TVPolyline2D square(left.Points());
    TVPolyline2D ell{{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}, {0, 0}};
    square.SetIsClockwise(clockwise);
    ell.SetIsClockwise(clockwise);
    for (int id = 0; id < square.Count(); ++id) EXPECT_EQ(square.CornerType(id), 1) << id;
    for (int id = 0; id < ell.Count(); ++id) EXPECT_EQ(ell.CornerType(id), id == 3 ? 3 : 1) << id;
  }
  const TVPolyline2D open{{0, 0}, {1, 0}, {2, 0}, {2, 1}};
  EXPECT_EQ(std::vector<int>({open.CornerType(0), open.CornerType(1), open.CornerType(2), open.CornerType(3)}),
            std::vector<int>({0, 2, 1, 0}));
  EXPECT_THROW(open.CornerType(7), EListError);
  // Three vertices of a circle of radius 5 give 5, across the seam too. Straight runs and
  // open ends give 0.
  TDynPoints2D circle;
  for (int k = 0; k < 12; ++k) circle.emplace_back(5.0 * std::cos(k * TwoPi / 12), 5.0 * std::sin(k * TwoPi / 12));
  circle.push_back(circle.front());
  for (const double t : {0.0, 3.0, 12.0}) EXPECT_NEAR(TVPolyline2D(circle).CurvatureRadius(t), 5.0, 1e-9) << t;
  EXPECT_EQ(open.CurvatureRadius(0.5), 0.0);
  EXPECT_EQ(open.CurvatureRadius(3.0), 0.0);
  EXPECT_NEAR(open.CurvatureRadius(2.0), std::sqrt(0.5), 1e-12);  // (1, 0), (2, 0), (2, 1)
}

TEST(VPolyline2DRelations, RealOutlines) {
  const auto files = testing::DataFiles("outlines", ".json");
  if (files.empty()) GTEST_SKIP() << "no outline data in " ORVANE_SHARED_DATA_DIR;
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int parts = 0;
  int smoothed = 0;
  for (const std::filesystem::path& file : files) {
    const nlohmann::json doc = testing::ReadJson(file);
    for (const nlohmann::json& part : doc["parts"]) {
      TVPolyline2D poly(testing::JsonRing(part["outer"]));
      // Some outlines repeat a vertex, or nearly (1e-13 apart), and the segments on either
      // side of such a vertex meet there; the parts are simple polygons otherwise.
      poly.ConnectHeadTail();
      const double area = poly.Area();
      const int before = poly.Count();
      poly.DeleteNeighbourClosed(false, 1e-9);
      const TRect2D box = poly.BoundBox();
      const double diagonal = std::hypot(box.Width(), box.Height());
      EXPECT_LE(std::fabs(poly.Area() - area), 0.5 * 1e-9 * diagonal * (before - poly.Count()));
      ++parts;
      ASSERT_FALSE(poly.IsSelfIntersect(1e-9)) << file.filename() << " part " << part["id"];
      for (int k = 0; k < 40; ++k) {
        const TPoint2D p(box.XMin + unit(rng) * box.Width(), box.YMin + unit(rng) * box.Height());
        const double dist = testing::DistToRing(poly.Points(), p);
        if (std::fabs(dist - 1e-6) < 1e-9) continue;
        const int want = dist <= 1e-6 ? On : (testing::EvenOddInside(poly.Points(), p) ? In : Out);
        ASSERT_EQ(poly.RelationWithPoint(p, 1e-6), want) << file.filename();
      }
      // Smoothing moves the area by at most half of ATol times a chord times the outline.
      TVPolyline2D smooth(poly.Points());
      smooth.CollinearSmooth(1e-4, false);
      smoothed += poly.Count() - smooth.Count();
      EXPECT_LE(std::fabs(smooth.Area() - poly.Area()), 0.5 * 1e-4 * diagonal * poly.TotalLength());
    }
  }
  EXPECT_GT(parts, 500);
  EXPECT_GT(smoothed, 0);
}

}  // namespace
}  // namespace orvane
