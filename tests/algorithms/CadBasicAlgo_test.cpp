// The Bezier-to-arc fit: hand-worked cubics, and random cubics whose every sample is checked
// against the chain by an independent point-to-arc distance; the circle constructions, the
// shoelace area and the chain-against-rectangle test.

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <random>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/foundation/Exception.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectNear;

// The distance from P to the arc, worked without angles: the ray from the centre through P
// meets the arc when P lies on the arc's side of the start radius and of the end radius (or,
// for an arc of more than a half turn, of either).
double RefArcDistance(const TArc2D& A, const TPoint2D& P) {
  const TPoint2D s = A.StartPoint();
  const TPoint2D e = A.EndPoint();
  const double ends = std::min(P.DistanceTo(s), P.DistanceTo(e));
  if (A.IsLine) return testing::PointSegDist(P, s, e);
  const TPoint2D v = P - A.Center;
  const double sense = A.SweepAngle >= 0 ? 1.0 : -1.0;
  const double fromStart = sense * (s - A.Center).CrossMul(v);
  const double toEnd = sense * v.CrossMul(e - A.Center);
  const bool inside = std::abs(A.SweepAngle) <= Pi ? (fromStart >= 0 && toEnd >= 0) : (fromStart >= 0 || toEnd >= 0);
  return inside ? std::min(ends, std::abs(v.Mag() - A.Radius)) : ends;
}

// The unit direction of the piece at its start (T = 0) or end (T = 1).
TPoint2D Dir(const TArc2D& A, double T) {
  return A.IsLine ? (A.EndPoint() - A.StartPoint()).Normal() : A.CalcDerivative(T).Normal();
}

// Checks the chain against the cubic: its ends, its joints, and the largest distance of
// Samples + 1 even samples of the cubic from the chain, which it returns.
double CheckChain(const TBezierSegment2D& B, const TList<TArc2D>& Arcs, int Samples, double JointTol) {
  EXPECT_GT(Arcs.Count(), 0);
  if (Arcs.IsEmpty()) return MaxDouble;
  ExpectNear(Arcs.First().StartPoint(), B.P0, JointTol);
  ExpectNear(Arcs.Last().EndPoint(), B.P3, JointTol);
  for (int i = 1; i < Arcs.Count(); ++i) ExpectNear(Arcs[i].StartPoint(), Arcs[i - 1].EndPoint(), JointTol);
  double worst = 0.0;
  for (int k = 0; k <= Samples; ++k) {
    const TPoint2D p = B.EvalPoint(static_cast<double>(k) / Samples);
    double d = MaxDouble;
    for (const TArc2D& a : Arcs) d = std::min(d, RefArcDistance(a, p));
    worst = std::max(worst, d);
  }
  return worst;
}

TEST(CadBasicAlgo, QuarterCircleCubicIsOneArc) {
  const double k = 4.0 / 3.0 * std::tan(Pi / 8.0);
  const TBezierSegment2D quarter({1, 0}, {1, k}, {k, 1}, {0, 1});
  const auto arcs = TCadBasicAlgo::Bezier2Arcs(quarter, 1e-3);
  ASSERT_EQ(arcs->Count(), 1);
  const TArc2D& a = arcs->First();
  EXPECT_FALSE(a.IsLine);
  ExpectNear(a.Center, {0, 0}, 1e-12);
  EXPECT_NEAR(a.Radius, 1.0, 1e-12);
  EXPECT_NEAR(a.SweepAngle, HalfPi, 1e-12);
  // The standard cubic strays 2.7e-4 from its circle.
  EXPECT_NEAR(CheckChain(quarter, *arcs, 2000, 1e-12), 2.7e-4, 1e-5);
  // At a tolerance below that stray the fit has to split, and still holds it.
  const auto finer = TCadBasicAlgo::Bezier2Arcs(quarter, 1e-5);
  EXPECT_GT(finer->Count(), 1);
  EXPECT_LE(CheckChain(quarter, *finer, 4000, 1e-12), 1e-5);
}

TEST(CadBasicAlgo, SCurveGetsAJointAtItsInflection) {
  const TBezierSegment2D s({0, 0}, {1, 1}, {2, -1}, {3, 0});  // inflection at t = 1/2, (1.5, 0)
  const auto arcs = TCadBasicAlgo::Bezier2Arcs(s, 1e-3);
  bool joint = false;
  for (int i = 1; i < arcs->Count(); ++i) joint |= (*arcs)[i].StartPoint().DistanceTo({1.5, 0}) < 1e-12;
  EXPECT_TRUE(joint);
  EXPECT_LE(CheckChain(s, *arcs, 4000, 1e-12), 1e-3);
  // The arcs on either side turn opposite ways.
  EXPECT_NE(arcs->First().IsClockwise, arcs->Last().IsClockwise);
}

TEST(CadBasicAlgo, DegenerateAndBadCubics) {
  const auto line = TCadBasicAlgo::Bezier2Arcs(TBezierSegment2D({0, 0}, {1, 0}, {3, 0}, {4, 0}), 1e-3);
  ASSERT_EQ(line->Count(), 1);
  EXPECT_TRUE(line->First().IsLine);
  ExpectNear(line->First().EndPoint(), {4, 0}, 0);
  // All control points equal: one line-form record of length 0, no hang.
  const auto dot = TCadBasicAlgo::Bezier2Arcs(TBezierSegment2D({2, 3}, {2, 3}, {2, 3}, {2, 3}), 1e-3);
  ASSERT_EQ(dot->Count(), 1);
  EXPECT_TRUE(dot->First().IsLine);
  ExpectNear(dot->First().EndPoint(), {2, 3}, 0);
  // Nearly straight but bent by more than the tolerance: not a line.
  const TBezierSegment2D bent({0, 0}, {1, 5e-5}, {3, 5e-5}, {4, 0});
  const auto fine = TCadBasicAlgo::Bezier2Arcs(bent, 1e-5);
  EXPECT_LE(CheckChain(bent, *fine, 2000, 1e-9), 1e-5);
  for (double tol : {0.0, -1.0, std::nan(""), HUGE_VAL})
    EXPECT_THROW(TCadBasicAlgo::Bezier2Arcs(bent, tol), EParamError) << tol;
  EXPECT_THROW(TCadBasicAlgo::Bezier2Arcs(TBezierSegment2D({0, 0}, {NAN, 1}, {2, 1}, {3, 0}), 1e-3), EParamError);
  // A tolerance far below the rounding of the coordinates: the splitting stops by itself.
  const TBezierSegment2D big({0, 0}, {3000, 9000}, {7000, -4000}, {9000, 1000});
  const auto start = std::chrono::steady_clock::now();
  const auto tiny = TCadBasicAlgo::Bezier2Arcs(big, 1e-14);
  EXPECT_LE(tiny->Count(), 2 * TCadBasicAlgo::MaxFitPieces);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(CadBasicAlgo, RandomCubicsStayWithinTheToleranceEverywhere) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  std::uniform_int_distribution<int> expo(2, 5);
  int kinks = 0;
  int joints = 0;
  for (int n = 0; n < 1000; ++n) {
    TBezierSegment2D b({u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)});
    if (n % 50 == 0) b.P3 = b.P0;  // closed loops too
    const double size = std::max(b.GetBoundBox().Width(), b.GetBoundBox().Height());
    const double tol = size * std::pow(10.0, -expo(rng));
    const auto arcs = TCadBasicAlgo::Bezier2Arcs(b, tol);
    const double worst = CheckChain(b, *arcs, 1500, 1e-9 * size);
    EXPECT_LE(worst, tol) << n;
    // Tangent-continuous: where the cubic is smooth, the pieces meet along one tangent.
    for (int i = 1; i < arcs->Count(); ++i) {
      ++joints;
      if (Dir((*arcs)[i - 1], 1.0).DotMul(Dir((*arcs)[i], 0.0)) < std::cos(1e-3)) ++kinks;
    }
  }
  // Kinks come only from cusps of the cubic itself and from the straight pieces that replace
  // nearly flat stretches.
  EXPECT_LE(kinks, joints / 100);
}

TEST(CadBasicAlgo, CircleConstructionsAreaAndRectangleTest) {
  TPoint2D c;
  // Tangent perpendicular to the chord: the centre is the midpoint.
  ASSERT_TRUE(TCadBasicAlgo::CalCenter({0, 0}, {2, 0}, {0, 1}, c));
  ExpectNear(c, {1, 0});
  ASSERT_TRUE(TCadBasicAlgo::CalCenter({1, 0}, {0, 1}, {0, 1}, c));
  ExpectNear(c, {0, 0});
  EXPECT_FALSE(TCadBasicAlgo::CalCenter({0, 0}, {2, 0}, {1, 0}, c));  // tangent along the chord
  bool cw = true;
  // Arriving at (0, 1) going left on the unit circle: counter-clockwise.
  ASSERT_TRUE(TCadBasicAlgo::CalCirCenter({1, 0}, {0, 1}, {-1, 0}, cw, c));
  ExpectNear(c, {0, 0}, 1e-15);
  EXPECT_FALSE(cw);
  ASSERT_TRUE(TCadBasicAlgo::CalCirCenter({-1, 0}, {0, 1}, {1, 0}, cw, c));
  EXPECT_TRUE(cw);

  EXPECT_EQ(TCadBasicAlgo::CalcArea(TDynPoints2D{{0, 0}, {1, 1}}), 0.0);
  EXPECT_EQ(TCadBasicAlgo::CalcArea(TDynPoints2D{{0, 0}, {0, 2}, {2, 0}}), -2.0);
  EXPECT_EQ(TCadBasicAlgo::CalcArea(TList<TPoint2D>{{0, 0}, {2, 0}, {2, 2}, {0, 2}}), 4.0);

  const TRect2D r(0, 0, 2, 2);
  EXPECT_FALSE(TCadBasicAlgo::IsHullIntersectWithRect({}, r));
  EXPECT_TRUE(TCadBasicAlgo::IsHullIntersectWithRect({{5, 5}, {1, 1}}, r));
  EXPECT_TRUE(TCadBasicAlgo::IsHullIntersectWithRect({{-1, 1}, {3, 1}}, r));  // straight through
  EXPECT_FALSE(TCadBasicAlgo::IsHullIntersectWithRect({{-1, 2.5}, {0.5, 4}}, r));  // past a corner
  EXPECT_FALSE(TCadBasicAlgo::IsHullIntersectWithRect({{-1, 3}, {3, -1}}, TRect2D(0, 0, 1, 1)));  // through it
  EXPECT_FALSE(TCadBasicAlgo::IsHullIntersectWithRect({{-1, 1}, {1, -1}}, TRect2D(0, 0, 2, 2)));  // at the corner
  // A chain around the rectangle without touching it.
  EXPECT_FALSE(TCadBasicAlgo::IsHullIntersectWithRect({{-1, -1}, {3, -1}, {3, 3}, {-1, 3}, {-1, -1}}, r));
}

}  // namespace
}  // namespace orvane
