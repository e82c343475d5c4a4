// Arc constructors against hand-worked arcs, sampling, boxes and crossings.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "orvane/Orvane.h"
#include "support/TestSupport.h"

using namespace orvane;

using orvane::testing::ExpectNear;

namespace {

void ExpectArc(const TArc2D& A, TPoint2D Center, double Radius, double Start, double Sweep) {
  EXPECT_FALSE(A.IsLine);
  EXPECT_NEAR(A.Center.X, Center.X, 1e-12);
  EXPECT_NEAR(A.Center.Y, Center.Y, 1e-12);
  EXPECT_NEAR(A.Radius, Radius, 1e-12);
  EXPECT_TRUE(AngleEqual(A.StartAngle, Start)) << A.StartAngle << " vs " << Start;
  EXPECT_NEAR(A.SweepAngle, Sweep, 1e-12);
  EXPECT_EQ(A.IsClockwise, Sweep < 0);
}

}  // namespace

TEST(Arc2D, ConstructorsGiveHandWorkedArcs) {
  // Bulge 1 is a half circle; positive runs counter-clockwise, so from left to right it
  // passes below the chord.
  const TArc2D ccwHalf = TArc2D::CreateBulge({0, 0}, {2, 0}, 1.0);
  ExpectArc(ccwHalf, {1, 0}, 1, Pi, Pi);
  ExpectNear(ccwHalf.EvalPoint(0.5), {1, -1});
  const TArc2D cwHalf = TArc2D::CreateBulge({0, 0}, {2, 0}, -1.0);
  ExpectArc(cwHalf, {1, 0}, 1, Pi, -Pi);
  ExpectNear(cwHalf.EvalPoint(0.5), {1, 1});
  const TArc2D quarter = TArc2D::CreateBulge({1, 0}, {0, 1}, std::tan(Pi / 8));
  ExpectArc(quarter, {0, 0}, 1, 0, HalfPi);
  EXPECT_NEAR(quarter.Bulge(), std::tan(Pi / 8), 1e-15);
  EXPECT_TRUE(TArc2D::CreateBulge({0, 0}, {2, 0}, 0.0).IsLine);

  // CreateCenter's flag means counter-clockwise.
  ExpectArc(TArc2D::CreateCenter({0, 0}, {1, 0}, {0, 1}, true), {0, 0}, 1, 0, HalfPi);
  ExpectArc(TArc2D::CreateCenter({0, 0}, {1, 0}, {0, 1}, false), {0, 0}, 1, 0, -1.5 * Pi);
  ExpectArc(TArc2D::CreateCenter({0, 0}, {2, 0}, {5, 0}, false), {0, 0}, 2, 0, -TwoPi);

  // CreateRadius' flag means clockwise; a negative radius asks for the major arc.
  ExpectArc(TArc2D::CreateRadius({1, 0}, {0, 1}, 1, false), {0, 0}, 1, 0, HalfPi);
  ExpectArc(TArc2D::CreateRadius({1, 0}, {0, 1}, 1, true), {1, 1}, 1, 1.5 * Pi, -HalfPi);
  ExpectArc(TArc2D::CreateRadius({1, 0}, {0, 1}, -1, false), {1, 1}, 1, 1.5 * Pi, 1.5 * Pi);
  ExpectArc(TArc2D::CreateRadius({1, 0}, {0, 1}, -1, true), {0, 0}, 1, 0, -1.5 * Pi);

  ExpectArc(TArc2D::CreateAngle({1, 0}, {-1, 0}, Pi), {0, 0}, 1, 0, Pi);
  ExpectArc(TArc2D::CreateAngle({1, 0}, {0, -1}, 1.5 * Pi), {0, 0}, 1, 0, 1.5 * Pi);
  ExpectArc(TArc2D::CreateAngle({1, 0}, {0, -1}, -HalfPi), {0, 0}, 1, 0, -HalfPi);

  ExpectArc(TArc2D::CreateCross({1, 0}, {0, 1}, {-1, 0}), {0, 0}, 1, 0, Pi);
  ExpectArc(TArc2D::CreateCross({-1, 0}, {0, 1}, {1, 0}), {0, 0}, 1, Pi, -Pi);
  ExpectArc(TArc2D::CreateCross({1, 0}, {0, -1}, {0, 1}), {0, 0}, 1, 0, -1.5 * Pi);
  const TArc2D straight = TArc2D::CreateCross({0, 0}, {1, 1}, {3, 3});
  EXPECT_TRUE(straight.IsLine);
  EXPECT_EQ(straight.StartPoint(), TPoint2D(0, 0));
  EXPECT_EQ(straight.EndPoint(), TPoint2D(3, 3));
  ExpectNear(straight.EvalPoint(0.5), {1.5, 1.5});

  ExpectArc(TArc2D::CreateCircle({1, 1}, {1, 3}, true), {1, 1}, 2, HalfPi, -TwoPi);
  ExpectArc(TArc2D::CreateCircle({1, 1}, {1, 3}, false), {1, 1}, 2, HalfPi, TwoPi);
}

TEST(Arc2D, ImpossibleArcsRaiseGeometryErrors) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  orvane::testing::ExpectRaise<EGeometry>([] { TArc2D::CreateAngle({0, 0}, {1, 0}, 1e-12); },
                                          "SweepAngle is too close to 0");
  EXPECT_THROW(TArc2D::CreateAngle({0, 0}, {1, 0}, TwoPi), EGeometry);
  EXPECT_THROW(TArc2D::CreateAngle({0, 0}, {0, 0}, 1.0), EGeometry);
  EXPECT_THROW(TArc2D::CreateRadius({0, 0}, {4, 0}, 1.9, false), EGeometry);
  ExpectArc(TArc2D::CreateRadius({0, 0}, {4, 0}, 2.0 * (1 - 1e-12), false), {2, 0}, 2, Pi, Pi);
  EXPECT_THROW(TArc2D({0, 0}, -1, 0, 1), EGeometry);
  EXPECT_THROW(TArc2D({nan, 0}, 1, 0, 1), EGeometry);
  EXPECT_THROW(TArc2D::CreateBulge({0, 0}, {1, 0}, nan), EGeometry);
  EXPECT_THROW(TArc2D::CreateCross({0, 0}, {1, nan}, {2, 0}), EGeometry);
}

TEST(Arc2D, ParametersBoxesAndReversal) {
  const TArc2D a({0, 0}, 2, 0.75 * Pi, HalfPi);  // through the -X axis extreme
  const TRect2D box = a.GetBoundBox();
  EXPECT_NEAR(box.XMin, -2, 1e-15);
  EXPECT_NEAR(box.YMax, std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(box.YMin, -std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(box.XMax, -std::sqrt(2.0), 1e-12);
  const TRect2D circle = TArc2D::CreateCircle({1, 1}, {2, 1}, true).GetBoundBox();
  EXPECT_EQ(circle, TRect2D(0, 0, 2, 2));

  EXPECT_NEAR(a.AngleToParam(Pi), 0.5, 1e-15);
  // Outside the sweep the nearest end wins.
  EXPECT_EQ(a.ParamOfPoint({1, 1.1}), 0.0);
  EXPECT_EQ(a.ParamOfPoint({1, -1.1}), 1.0);
  double param = -1;
  EXPECT_TRUE(a.IsOn({-2, 1e-7}, 1e-6, param));
  EXPECT_NEAR(param, 0.5, 1e-7);
  EXPECT_FALSE(a.IsOn({2, 0}, 1e-6, param));
  EXPECT_NEAR(a.CurveLength(), Pi, 1e-15);
  EXPECT_NEAR(a.LengthOfParam(0.25, 0.75), 0.5 * Pi, 1e-15);
  TPoint2D deriv;
  a.EvalPoint(0.5, deriv);
  ExpectNear(deriv, {0, -Pi});  // counter-clockwise at (-2, 0), |d| = r * sweep

  // Parameter round trips on both senses, and reversal keeps the point set.
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int i = 0; i < 200; ++i) {
    const double sweep = (u(rng) < 0.5 ? -1 : 1) * (0.01 + u(rng) * (TwoPi - 0.02));
    TArc2D arc({u(rng) * 10, u(rng) * 10}, 0.1 + u(rng) * 5, u(rng) * TwoPi, sweep);
    const double p = u(rng);
    EXPECT_NEAR(arc.ParamOfPoint(arc.EvalPoint(p)), p, 1e-9);
    TArc2D rev = arc;
    rev.ReverseDir();
    ExpectNear(rev.StartPoint(), arc.EndPoint(), 1e-9);
    ExpectNear(rev.EvalPoint(1 - p), arc.EvalPoint(p), 1e-9);
    EXPECT_EQ(rev.IsClockwise, !arc.IsClockwise);
  }
}

TEST(Arc2D, SamplingKeepsChordsWithinTolerance) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int i = 0; i < 100; ++i) {
    const double sweep = (u(rng) < 0.5 ? -1 : 1) * (0.1 + u(rng) * 6);
    const TArc2D arc({u(rng), u(rng)}, 0.5 + u(rng) * 50, u(rng) * TwoPi, sweep);
    const double tol = std::pow(10.0, -1 - 4 * u(rng));
    TDynPoints2D pts;
    TFloatDynArray params;
    const int n = arc.GetSamplePoints(0, 1, tol, pts, params, 1000);
    ASSERT_EQ(static_cast<std::size_t>(n), pts.size());
    ASSERT_GE(n, 2);
    EXPECT_EQ(pts.front(), arc.StartPoint());
    EXPECT_EQ(pts.back(), arc.EndPoint());
    EXPECT_EQ(params.back(), 1.0);
    for (int k = 0; k + 1 < n; ++k) {
      const TPoint2D mid = (pts[k] + pts[k + 1]) * 0.5;
      if (n < 1000) {
        EXPECT_LE(arc.Radius - mid.DistanceTo(arc.Center), tol * (1 + 1e-9));
      }
      EXPECT_LT(params[k], params[k + 1]);
    }
  }
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_EQ(TArc2D({0, 0}, 0, 0, 1).GetSamplePoints(0, 1, 1e-3, pts, params, 1000), 1);
  EXPECT_EQ(TArc2D({0, 0}, 1000, 0, TwoPi).GetSamplePoints(0, 1, 1e-12, pts, params, 1000), 1000);
  TArc2D({0, 0}, 1, 0, Pi).GetPoints(3, pts);
  ASSERT_EQ(pts.size(), 3u);
  ExpectNear(pts[1], {0, 1});
}

TEST(Arc2D, CrossingsWithSegments) {
  const TArc2D upper({0, 0}, 1, 0, Pi);
  TIntersectPoint2D i1, i2;
  ASSERT_EQ(upper.Intersect(TLine2D({2, 0.5}, {-2, 0.5}), i1, i2, 1e-6), 2);
  const double h = std::sqrt(0.75);
  ExpectNear(i1.Pt, {h, 0.5});  // ordered along the segment
  ExpectNear(i2.Pt, {-h, 0.5});
  EXPECT_NEAR(i1.ParamThis, 1.0 / 6, 1e-12);
  EXPECT_NEAR(i1.ParamThat, (2 - h) / 4, 1e-12);
  // Tangency counts once; the lower half of the circle is not on the arc.
  ASSERT_EQ(upper.Intersect(TLine2D({-1, 1}, {1, 1}), i1, i2, 1e-6), 1);
  ExpectNear(i1.Pt, {0, 1});
  EXPECT_EQ(upper.Intersect(TLine2D({-1, -0.5}, {1, -0.5}), i1, i2, 1e-6), 0);
  EXPECT_EQ(upper.Intersect(TLine2D({-1, 1 + 2e-6}, {1, 1 + 2e-6}), i1, i2, 1e-6), 0);
  // An end of the segment on the arc is reported as that end, exactly.
  ASSERT_EQ(upper.Intersect(TLine2D({0, 0}, {std::sqrt(0.5), std::sqrt(0.5)}), i1, i2, 1e-6), 1);
  EXPECT_EQ(i1.Pt, TPoint2D(std::sqrt(0.5), std::sqrt(0.5)));
  EXPECT_EQ(i1.ParamThat, 1.0);
  // The arc's own end within Tol of the segment.
  ASSERT_EQ(upper.Intersect(TLine2D({1 + 5e-7, -1}, {1 + 5e-7, 1}), i1, i2, 1e-6), 1);
  EXPECT_EQ(i1.Pt, upper.StartPoint());
  EXPECT_EQ(i1.ParamThis, 0.0);
  // The line form crosses as a segment.
  TArc2D line;
  line.DegradeLine({0, 0}, {2, 0});
  ASSERT_EQ(line.CrossWithSegline(TLine2D({1, -1}, {1, 1}), i1, i2, 1e-6), 1);
  ExpectNear(i1.Pt, {1, 0});
  EXPECT_NEAR(i1.ParamThis, 0.5, 1e-15);
}

TEST(Arc2D, CrossingCountsAgreeWithDenseSampling) {
  // Count sign changes of |p - c|^2 - r^2 along the segment, kept to points on the arc.
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(-3.0, 3.0);
  int checked = 0;
  for (int i = 0; i < 400; ++i) {
    const TArc2D arc({0, 0}, 1 + 0.3 * u(rng), u(rng), 2 * u(rng));
    const TLine2D seg({u(rng), u(rng)}, {u(rng), u(rng)});
    auto f = [&](double t) { return seg.EvalPoint(t).DistanceTo(arc.Center) - arc.Radius; };
    const int n = 20000;
    int brute = 0;
    bool nearTangent = false;
    double prev = f(0);
    for (int k = 1; k <= n; ++k) {
      const double t = static_cast<double>(k) / n;
      const double cur = f(t);
      if (std::fabs(cur) < 1e-3) nearTangent = true;
      if ((prev < 0) != (cur < 0)) {
        double param = 0;
        const TPoint2D p = seg.EvalPoint(t);
        if (arc.IsOn(p, 1e-3, param) && param > 1e-3 && param < 1 - 1e-3)
          ++brute;
        else
          nearTangent = true;  // crossing at an arc end: leave it to the hand-worked cases
      }
      prev = cur;
    }
    if (nearTangent || std::fabs(f(0)) < 1e-3 || std::fabs(f(1)) < 1e-3) continue;
    TIntersectPoint2D i1, i2;
    const int count = arc.Intersect(seg, i1, i2, 1e-9);
    EXPECT_EQ(count, brute);
    for (const TIntersectPoint2D* ip : {&i1, &i2}) {
      if (ip == &i2 && count < 2) break;
      if (count == 0) break;
      EXPECT_NEAR(ip->Pt.DistanceTo(arc.Center), arc.Radius, 1e-9);
      EXPECT_LE(seg.DistanceLimit(ip->Pt), 1e-9);
      ExpectNear(arc.EvalPoint(ip->ParamThis), ip->Pt, 1e-9);
      ExpectNear(seg.EvalPoint(ip->ParamThat), ip->Pt, 1e-9);
    }
    ++checked;
  }
  EXPECT_GT(checked, 150);
}

TEST(Arc2D, CrossingsAndOverlapsOfArcs) {
  TIntersectPoint2D i1, i2;
  const TArc2D unit = TArc2D::CreateCircle({0, 0}, {1, 0}, false);
  ASSERT_EQ(unit.Intersect(TArc2D::CreateCircle({1, 0}, {2, 0}, false), i1, i2), 2);
  EXPECT_NEAR(i1.Pt.X, 0.5, 1e-12);
  EXPECT_NEAR(std::fabs(i1.Pt.Y), std::sqrt(0.75), 1e-12);
  EXPECT_NEAR(i1.Pt.Y, -i2.Pt.Y, 1e-12);
  // External and internal tangency: one point each.
  ASSERT_EQ(unit.Intersect(TArc2D::CreateCircle({2, 0}, {3, 0}, false), i1, i2), 1);
  ExpectNear(i1.Pt, {1, 0});
  ASSERT_EQ(TArc2D::CreateCircle({0, 0}, {2, 0}, false).Intersect(TArc2D::CreateCircle({1, 0}, {2, 0}, true), i1, i2),
            1);
  ExpectNear(i1.Pt, {2, 0});
  // Crossing of the circles outside one arc's sweep.
  EXPECT_EQ(TArc2D({0, 0}, 1, Pi, 0.5).Intersect(TArc2D::CreateCircle({1, 0}, {2, 0}, false), i1, i2), 0);
  EXPECT_EQ(unit.Intersect(TArc2D::CreateCircle({5, 0}, {6, 0}, false), i1, i2), 0);

  TPoint2D p1, p2;
  TArc2D a1, a2;
  // One overlap arc.
  ASSERT_EQ(TArc2D({0, 0}, 1, 0, Pi).CrossWithArc(TArc2D({0, 0}, 1, HalfPi, Pi), p1, p2, a1, a2), 4);
  ExpectArc(a1, {0, 0}, 1, HalfPi, HalfPi);
  // Same, this arc clockwise: the overlap runs clockwise too.
  ASSERT_EQ(TArc2D({0, 0}, 1, Pi, -Pi).CrossWithArc(TArc2D({0, 0}, 1, HalfPi, Pi), p1, p2, a1, a2), 4);
  ExpectArc(a1, {0, 0}, 1, Pi, -HalfPi);
  // Overlap plus a touching end: 4 | 1.
  ASSERT_EQ(TArc2D({0, 0}, 1, 0, 1.5 * Pi).CrossWithArc(TArc2D({0, 0}, 1, Pi, Pi), p1, p2, a1, a2), 5);
  ExpectArc(a1, {0, 0}, 1, Pi, HalfPi);
  ExpectNear(p1, {1, 0});
  // Two half circles meeting at both ends: two points, no arc.
  ASSERT_EQ(TArc2D({0, 0}, 1, 0, Pi).CrossWithArc(TArc2D({0, 0}, 1, Pi, Pi), p1, p2, a1, a2), 2);
  ExpectNear(p1, {1, 0});
  ExpectNear(p2, {-1, 0});
  // Two overlap arcs, ordered along this arc (counter-clockwise, then clockwise).
  const TArc2D big({0, 0}, 1, 0, 1.5 * Pi);
  const TArc2D other({0, 0}, 1, Pi, 1.5 * Pi);
  ASSERT_EQ(big.CrossWithArc(other, p1, p2, a1, a2), 8);
  ExpectArc(a1, {0, 0}, 1, 0, HalfPi);
  ExpectArc(a2, {0, 0}, 1, Pi, HalfPi);
  TArc2D bigCw = big;
  bigCw.ReverseDir();
  ASSERT_EQ(bigCw.CrossWithArc(other, p1, p2, a1, a2), 8);
  ExpectArc(a1, {0, 0}, 1, 1.5 * Pi, -HalfPi);
  ExpectArc(a2, {0, 0}, 1, HalfPi, -HalfPi);
  // A full circle overlaps the whole of the other arc; disjoint arcs on one circle give 0.
  ASSERT_EQ(unit.CrossWithArc(TArc2D({0, 0}, 1, 1, 2), p1, p2, a1, a2), 4);
  ExpectArc(a1, {0, 0}, 1, 1, 2);
  EXPECT_EQ(TArc2D({0, 0}, 1, 0, 1).CrossWithArc(TArc2D({0, 0}, 1, 2, 1), p1, p2, a1, a2), 0);
  // Different circles report crossings only.
  EXPECT_EQ(unit.CrossWithArc(TArc2D::CreateCircle({1, 0}, {2, 0}, false), p1, p2, a1, a2), 2);
}
