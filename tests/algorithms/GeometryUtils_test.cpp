// Bezier crossings with segments, arcs and Beziers against hand-worked points and OCCT, and
// the motion and bisector helpers against direct application.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>

#include "orvane/algorithms/GeometryUtils.h"
#include "support/TestSupport.h"
#ifdef ORVANE_HAVE_OCCT
#include "support/OcctBezier.h"
#endif

using namespace orvane;
using orvane::testing::ExpectNear;

namespace {

constexpr double Tol = 1e-6;
// x = 3t^2 - 2t^3, y = 3t(1 - t): crosses y = 0.5 at t = (3 -+ sqrt 3) / 6, top (0.5, 0.75).
const TBezierSegment2D Arch({0, 0}, {0, 1}, {1, 1}, {1, 0});
const double T1 = (3 - std::sqrt(3.0)) / 6, T2 = (3 + std::sqrt(3.0)) / 6;

struct TResult {
  TList<TPoint2D> Pts;
  TList<TLine2D> Lines;
  TList<TBezierSegment2D> Beziers;
  TList<double> Params;
  bool Found = false;
};

TResult WithLine(const TBezierSegment2D& B, const TLine2D& L) {
  TResult r;
  r.Found = TGeometryUtils::BezierCrossWithSegline(B, L, Tol, r.Pts, r.Lines, &r.Params);
  return r;
}

TResult WithArc(const TBezierSegment2D& B, const TArc2D& A) {
  TResult r;
  r.Found = TGeometryUtils::BezierCrossWithArc(B, A, Tol, r.Pts, &r.Params);
  return r;
}

TResult WithBezier(const TBezierSegment2D& A, const TBezierSegment2D& B) {
  TResult r;
  r.Found = TGeometryUtils::BezierCrossWithBezier(A, B, Tol, r.Pts, r.Lines, r.Beziers, &r.Params);
  return r;
}

// Every point lies on the Bezier at its parameter.
void ExpectParamsMatch(const TBezierSegment2D& B, const TResult& R, double Within = 2 * Tol) {
  ASSERT_EQ(R.Pts.Count(), R.Params.Count());
  for (int i = 0; i < R.Pts.Count(); ++i) ExpectNear(B.EvalPoint(R.Params[i]), R.Pts[i], Within);
}

}  // namespace

TEST(GeometryUtils, BezierWithSegline) {
  // Two crossings in Bezier order, whichever way the line runs.
  for (const TLine2D& line : {TLine2D({-1, 0.5}, {2, 0.5}), TLine2D({2, 0.5}, {-1, 0.5})}) {
    const TResult r = WithLine(Arch, line);
    ASSERT_EQ(r.Pts.Count(), 2);
    EXPECT_NEAR(r.Params[0], T1, 2 * Tol);
    EXPECT_NEAR(r.Params[1], T2, 2 * Tol);
    ExpectParamsMatch(Arch, r);
    EXPECT_EQ(r.Lines.Count(), 0);
  }
  // A tangent line gives one point, the top; passing Tol / 2 above still touches, 10 Tol not.
  TResult r = WithLine(Arch, TLine2D({-1, 0.75}, {2, 0.75}));
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectNear(r.Pts[0], {0.5, 0.75}, 1e-3);  // along a tangency the point is only known to sqrt(Tol)
  EXPECT_NEAR(r.Pts[0].Y, 0.75, Tol);
  EXPECT_EQ(WithLine(Arch, TLine2D({-1, 0.75 + Tol / 2}, {2, 0.75 + Tol / 2})).Pts.Count(), 1);
  EXPECT_FALSE(WithLine(Arch, TLine2D({-1, 0.75 + 10 * Tol}, {2, 0.75 + 10 * Tol})).Found);
  // The Bezier ends on the line's end; a line stopping short by Tol / 2 still meets it.
  r = WithLine(Arch, TLine2D({1, -1}, {1, 0}));
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectNear(r.Pts[0], {1, 0}, Tol);
  EXPECT_NEAR(r.Params[0], 1.0, 1e-3);
  EXPECT_EQ(WithLine(Arch, TLine2D({1, -1}, {1, -Tol / 2})).Pts.Count(), 1);
  EXPECT_FALSE(WithLine(Arch, TLine2D({1, -1}, {1, -10 * Tol})).Found);
  // A straight Bezier on the line gives the overlap as a line; one across it a point with
  // its true parameter, also when the cubic runs unevenly.
  r = WithLine(TBezierSegment2D({0, 0}, {4, 0}), TLine2D({1, 0}, {9, 0}));
  ASSERT_EQ(r.Lines.Count(), 1);
  EXPECT_EQ(r.Pts.Count(), 0);
  ExpectNear(r.Lines[0].P1, {1, 0});
  ExpectNear(r.Lines[0].P2, {4, 0});
  const TBezierSegment2D uneven({0, 0}, {0, 0}, {4, 0}, {4, 0});  // x = 4 (3t^2 - 2t^3)
  r = WithLine(uneven, TLine2D({1, -1}, {1, 1}));
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectParamsMatch(uneven, r, 1e-9);
  // A cubic that doubles back over its chord (0,0)-(1,0) is no segment: the line x = 2 lies
  // beyond the chord and is crossed twice, on the way out and back, at one point.
  const TBezierSegment2D back({0, 0}, {3, 0}, {3, 0}, {1, 0});
  r = WithLine(back, TLine2D({2, -1}, {2, 1}));
  ASSERT_EQ(r.Pts.Count(), 2);
  EXPECT_NEAR(r.Params[0], 0.3225040588626252, 1e-5);
  EXPECT_NEAR(r.Params[1], 0.7858250029412351, 1e-5);
  ExpectNear(r.Pts[0], {2, 0}, 2 * Tol);
  // What the lists held stays; a miss leaves them as they were.
  TList<TPoint2D> pts{{7, 7}};
  TList<TLine2D> lines;
  TList<double> params{0.25};
  EXPECT_TRUE(TGeometryUtils::BezierCrossWithSegline(Arch, TLine2D({-1, 0.5}, {2, 0.5}), Tol, pts, lines, &params));
  EXPECT_EQ(pts.Count(), 3);
  EXPECT_EQ(pts[0], TPoint2D(7, 7));
  EXPECT_EQ(params[0], 0.25);
  EXPECT_FALSE(TGeometryUtils::BezierCrossWithSegline(Arch, TLine2D({5, 5}, {6, 6}), Tol, pts, lines, nullptr));
  EXPECT_EQ(pts.Count(), 3);
}

TEST(GeometryUtils, BezierWithArc) {
  // The circle about (0.5, 0) through the two crossings with y = 0.5 meets the arch there.
  const TPoint2D a = Arch.EvalPoint(T1), b = Arch.EvalPoint(T2);
  const double radius = a.DistanceTo({0.5, 0});
  const TArc2D ccw = TArc2D::CreateCircle({0.5, 0}, {0.5 + radius, 0}, false);
  const TArc2D cw = TArc2D::CreateCircle({0.5, 0}, {0.5 + radius, 0}, true);
  for (const TArc2D& arc : {ccw, cw}) {
    const TResult r = WithArc(Arch, arc);
    ASSERT_EQ(r.Pts.Count(), 2);
    ExpectNear(r.Pts[0], a, 2 * Tol);
    ExpectNear(r.Pts[1], b, 2 * Tol);
    ExpectParamsMatch(Arch, r);
  }
  // A short arc over angle 0 meets a vertical Bezier there once, though two quadrant pieces
  // each see it.
  const TBezierSegment2D vertical({1.5, -1}, {1.8, -0.4}, {2.2, 0.4}, {2.5, 1});  // (2, 0) at t = 0.5
  const TArc2D overZero(TPoint2D(0, 0), 2.0, -0.5, 1.0);
  TResult r = WithArc(vertical, overZero);
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectNear(r.Pts[0], {2, 0}, 2 * Tol);
  EXPECT_NEAR(r.Params[0], 0.5, 1e-5);
  // The arc that stops short of the Bezier misses it.
  EXPECT_FALSE(WithArc(vertical, TArc2D(TPoint2D(0, 0), 2.0, 0.1, 1.0)).Found);
  // A straight Bezier crosses as a segment.
  r = WithArc(TBezierSegment2D({0, -3}, {0, 3}), TArc2D::CreateCircle({0, 0}, {1, 0}, false));
  ASSERT_EQ(r.Pts.Count(), 2);
  EXPECT_NEAR(std::fabs(r.Pts[0].Y), 1.0, 1e-12);
}

TEST(GeometryUtils, BezierWithBezier) {
  // The arch and its mirror in y = 0.5 cross where the arch meets y = 0.5.
  const TBezierSegment2D mirror({0, 1}, {0, 0}, {1, 0}, {1, 1});
  TResult r = WithBezier(Arch, mirror);
  ASSERT_EQ(r.Pts.Count(), 2);
  ExpectNear(r.Pts[0], Arch.EvalPoint(T1), 2 * Tol);
  ExpectNear(r.Pts[1], Arch.EvalPoint(T2), 2 * Tol);
  ExpectParamsMatch(Arch, r);
  // Mirrored in y = 0.75 it touches the arch at the top: one point.
  r = WithBezier(Arch, TBezierSegment2D({0, 1.5}, {0, 0.5}, {1, 0.5}, {1, 1.5}));
  ASSERT_EQ(r.Pts.Count(), 1);
  EXPECT_NEAR(r.Pts[0].X, 0.5, 2e-3);
  EXPECT_NEAR(r.Pts[0].Y, 0.75, 2 * Tol);
  // End to end: one point with a small distance, the shared end.
  r = WithBezier(Arch, TBezierSegment2D({1, 0}, {2, 1}, {3, 1}, {3, 0}));
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectNear(r.Pts[0], {1, 0}, 2 * Tol);
  // Identical, reversed, a piece, and overlapping end pieces: the shared stretch, no points.
  TBezierSegment2D rev = Arch, left, right, mid, tail;
  rev.Reverse();
  ASSERT_TRUE(Arch.Split(0.6, left, right));
  ASSERT_TRUE(left.Split(0.5, mid, tail));  // mid is Arch on [0, 0.3]
  TBezierSegment2D end, start;
  ASSERT_TRUE(Arch.Split(0.4, start, end));  // Arch on [0.4, 1]
  for (const TBezierSegment2D& other : {Arch, rev, mid, right}) {
    r = WithBezier(Arch, other);
    EXPECT_TRUE(r.Found);
    ASSERT_EQ(r.Beziers.Count(), 1);
    EXPECT_EQ(r.Pts.Count(), 0);
    const TBezierSegment2D& got = r.Beziers[0];
    const bool same = got.P0.Equals(other.P0, Tol) && got.P3.Equals(other.P3, Tol);
    const bool reversed = got.P0.Equals(other.P3, Tol) && got.P3.Equals(other.P0, Tol);
    EXPECT_TRUE(same || reversed);
  }
  // [0, 0.6] and [0.4, 1] share [0.4, 0.6].
  r = WithBezier(left, end);
  ASSERT_EQ(r.Beziers.Count(), 1);
  ExpectNear(r.Beziers[0].P0, Arch.EvalPoint(0.4), 1e-9);
  ExpectNear(r.Beziers[0].P3, Arch.EvalPoint(0.6), 1e-9);
  // A cubic that doubles back over its chord crosses a straight one twice at one point.
  r = WithBezier(TBezierSegment2D({0, 0}, {3, 0}, {3, 0}, {1, 0}), TBezierSegment2D({2, -1}, {2, 1}));
  ASSERT_EQ(r.Pts.Count(), 2);
  EXPECT_NEAR(r.Params[0], 0.3225040588626252, 1e-5);
  EXPECT_NEAR(r.Params[1], 0.7858250029412351, 1e-5);
  // Two straight Beziers cross as segments.
  r = WithBezier(TBezierSegment2D({0, 0}, {2, 2}), TBezierSegment2D({0, 2}, {2, 0}));
  ASSERT_EQ(r.Pts.Count(), 1);
  ExpectNear(r.Pts[0], {1, 1}, 1e-12);
  EXPECT_NEAR(r.Params[0], 0.5, 1e-9);
  // Nearly coincident but not the same curve (apart by Tol / 4): bounded work, some answer.
  const TBezierSegment2D shifted({0, Tol / 4}, {0, 1 + Tol / 4}, {1.0 + Tol / 4, 1}, {1, Tol / 4});
  const auto start_time = std::chrono::steady_clock::now();
  r = WithBezier(Arch, shifted);
  EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start_time).count(), 5.0);
}

TEST(GeometryUtils, BadInputIsNeutralOrNamed) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TBezierSegment2D bad({0, 0}, {nan, 1}, {1, 1}, {1, 0});
  TResult r;
  EXPECT_FALSE(TGeometryUtils::BezierCrossWithSegline(bad, TLine2D({-1, 0.5}, {2, 0.5}), Tol, r.Pts, r.Lines));
  EXPECT_FALSE(TGeometryUtils::BezierCrossWithArc(bad, TArc2D::CreateCircle({0, 0}, {1, 0}, false), Tol, r.Pts));
  EXPECT_FALSE(TGeometryUtils::BezierCrossWithBezier(Arch, bad, Tol, r.Pts, r.Lines, r.Beziers));
  EXPECT_EQ(r.Pts.Count() + r.Lines.Count() + r.Beziers.Count(), 0);
  for (double tol : {0.0, -1.0, nan}) {
    EXPECT_THROW(TGeometryUtils::BezierCrossWithBezier(Arch, Arch, tol, r.Pts, r.Lines, r.Beziers), EParamError);
    EXPECT_THROW(TGeometryUtils::BezierCrossWithSegline(Arch, TLine2D({0, 0}, {1, 1}), tol, r.Pts, r.Lines),
                 EParamError);
  }
}

TEST(GeometryUtils, MotionsAndBisectors) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(-4, 4);
  for (int n = 1; n <= 5; ++n) {
    TFloatDynArray radians;
    TDynPoints2D transs;
    for (int i = 0; i < n; ++i) {
      radians.push_back(u(rng));
      transs.emplace_back(u(rng), u(rng));
    }
    double equ = 0;
    TPoint2D trans;
    ASSERT_TRUE(TGeometryUtils::CalcEqualRotateAndTrans(radians, transs, equ, trans));
    const TPoint2D p(u(rng), u(rng));
    TPoint2D q = p;
    for (int i = 0; i < n; ++i) q = q.RotateBy(radians[i]) + transs[i];
    ExpectNear(p.RotateBy(equ) + trans, q, 1e-12);
    if (n == 2) {
      double equ2 = 0;
      TPoint2D trans2;
      TGeometryUtils::CalcEqualRotateAndTrans(radians[0], transs[0], radians[1], transs[1], equ2, trans2);
      EXPECT_EQ(equ2, equ);
      EXPECT_EQ(trans2, trans);
    }
  }
  double equ = 9;
  TPoint2D trans(9, 9);
  EXPECT_FALSE(TGeometryUtils::CalcEqualRotateAndTrans({1.0}, {}, equ, trans));
  EXPECT_EQ(equ, 9.0);
  ASSERT_TRUE(TGeometryUtils::CalcEqualRotateAndTrans({}, {}, equ, trans));
  EXPECT_EQ(equ, 0.0);
  EXPECT_EQ(trans, TPoint2D::FZero);
  // A right angle gives the diagonal, a straight corner the perpendicular of the first arm.
  EXPECT_EQ(TGeometryUtils::CalcAngleBisector({3, 0}, {0, 0}, {0, 5}), TLine2D({0, 0}, {0.5, 0.5}));
  const TLine2D straight = TGeometryUtils::CalcAngleBisector({-2, 1}, {0, 1}, {3, 1});
  ExpectNear(straight.P1, {0, 1});
  ExpectNear(straight.P2, {0, -1});
}

#ifdef ORVANE_HAVE_OCCT
TEST(GeometryUtils, RandomPairsAgreeWithOcct) {
  std::mt19937 rng(18);
  std::uniform_real_distribution<double> u(-10, 10);
  auto cubic = [&] { return TBezierSegment2D({u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}); };
  int compared = 0, crossings = 0, extra = 0;
  for (int i = 0; i < 10000; ++i) {
    const TBezierSegment2D a = cubic(), b = cubic();
    const std::vector<TPoint2D> ref = orvane::testing::OcctCrossings(a, b, Tol);
    const TResult r = WithBezier(a, b);
    // Transversal crossings only: both tangents at each reference point well apart, no two
    // points close, no end of one curve near the other (where "touching" is a matter of
    // tolerance on both sides).
    bool clean = r.Beziers.Count() == 0;
    for (std::size_t k = 0; k < ref.size() && clean; ++k) {
      double ta, tb;
      TPoint2D na, nb, da, db;
      a.DistanceTo(ref[k], DefTol, ta, na);
      b.DistanceTo(ref[k], DefTol, tb, nb);
      a.EvalPoint(ta, da);
      b.EvalPoint(tb, db);
      if (std::fabs(da.Normal().CrossMul(db.Normal())) < 1e-2) clean = false;
      for (std::size_t m = 0; m < k; ++m)
        if (ref[k].DistanceTo(ref[m]) < 1e-3) clean = false;
    }
    for (const auto& [p, other] : {std::pair{a.P0, &b}, {a.P3, &b}, {b.P0, &a}, {b.P3, &a}}) {
      double t;
      TPoint2D n;
      if (other->DistanceTo(p, DefTol, t, n) < 1e-3) clean = false;
    }
    if (!clean) continue;
    ++compared;
    crossings += static_cast<int>(ref.size());
    // Every reference crossing is found...
    for (const TPoint2D& p : ref) {
      double best = 1e300;
      for (const TPoint2D& q : r.Pts) best = std::min(best, p.DistanceTo(q));
      EXPECT_LE(best, 2 * Tol) << "pair " << i << " " << p.ToString();
    }
    // ...and every point found is a true meeting of the two curves, once. OCCT now and then
    // misses one of two crossings that lie close together; those are counted, not failed.
    for (int k = 0; k < r.Pts.Count(); ++k) {
      double t;
      TPoint2D n;
      EXPECT_LE(b.DistanceTo(r.Pts[k], DefTol, t, n), Tol) << "pair " << i;
      for (int m = 0; m < k; ++m) EXPECT_GT(r.Pts[k].DistanceTo(r.Pts[m]), 2 * Tol) << "pair " << i;
    }
    extra += r.Pts.Count() - static_cast<int>(ref.size());
    ExpectParamsMatch(a, r);
  }
  EXPECT_GT(compared, 9000);
  EXPECT_GT(crossings, 5000);
  EXPECT_LT(extra, compared / 200);
}
#else
TEST(GeometryUtils, RandomPairsAgreeWithOcct) { GTEST_SKIP() << "OCCT is not installed: no cross-check"; }
#endif
