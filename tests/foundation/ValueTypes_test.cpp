// Points, segments, boxes, matrices, intervals, rounding and message formatting.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/Orvane.h"
#include "support/TestSupport.h"

using namespace orvane;

namespace {
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
using orvane::testing::ExpectNear;
}  // namespace

TEST(Rounding, HalvesGoToTheEvenNeighbour) {
  const std::pair<double, std::int64_t> rounded[] = {{0.5, 0},   {1.5, 2},   {2.5, 2},          {3.5, 4},
                                                     {-2.5, -2}, {-3.5, -4}, {2.5000000001, 3}};
  for (const auto& [x, want] : rounded) EXPECT_EQ(Round(x), want) << x;
  EXPECT_EQ(Trunc(-2.7), -2);
  // Integer points from doubles use the same rounding.
  EXPECT_EQ(TPointL2D(TPoint2D(2.5, -3.5)), TPointL2D(2, -4));
  // 0.125 and 0.375 are exact in binary, so these are true halves at two decimals.
  ExpectNear(TPoint2D(0.125, 0.375).RoundTo(-2), {0.12, 0.38});
  ExpectNear(TPoint2D(1250, -3500).RoundTo(2), {1200, -3500});

  EXPECT_THROW(Round(NaN), EConvertError);
  EXPECT_THROW(Round(1e19), EConvertError);
  EXPECT_THROW(TPointL2D(TPoint2D(NaN, 0)), EConvertError);
  EXPECT_THROW(Floorf(3e9), EConvertError);
  EXPECT_EQ(Floorf(-0.5), -1);
}

TEST(Comparison, ToleranceBoundsAreInclusiveAndExclusiveOrdersAgree) {
  EXPECT_TRUE(fEqual(1.0, 1.5, 0.5));
  EXPECT_FALSE(fGreat(1.5, 1.0, 0.5));
  EXPECT_TRUE(fGreat(1.5000001, 1.0, 0.5));
  EXPECT_TRUE(fSmall(1.0, 1.5000001, 0.5));
  EXPECT_EQ(CompareValue(1.0, 1.0 + 1e-7, 1e-6), 0);
  EXPECT_EQ(CompareValue(1.0, 1.1, 1e-6), -1);
  EXPECT_TRUE(SameValue(1e9, 1e9 + 1e-4));  // default relative resolution
  EXPECT_FALSE(SameValue(1.0, NaN, 1.0));
  EXPECT_FALSE(TMathUtils::IsInRange(1.0, 1.0, 2.0, false, true));
  EXPECT_TRUE(TMathUtils::IsInFloatRange(1.0 - 1e-7, 1.0, 2.0, false, true, 1e-6) == false);
  EXPECT_DOUBLE_EQ(TMathUtils::DistToRange(2.0000001, 1.0, 2.0, 1e-6), 0.0);
  EXPECT_TRUE(AngleEqual(0.1, 0.1 + 4 * Pi));
  EXPECT_TRUE(AngleEqual(-1e-9, TwoPi));
}

TEST(MathUtils, CyclesAndQuadratics) {
  EXPECT_EQ(TMathUtils::CycInc(0, -1, 5), 4);
  EXPECT_EQ(TMathUtils::CycInc(3, 7, 5), 0);
  EXPECT_EQ(TMathUtils::CycInc(2, -12, 5), 0);
  EXPECT_DOUBLE_EQ(TMathUtils::CycInc(0.5, -1.0, TwoPi), TwoPi - 0.5);
  EXPECT_THROW(TMathUtils::CycInc(1, 1, 0), EParamError);
  EXPECT_THROW(TMathUtils::CycInc(1.0, 1.0, 0.0), EParamError);

  double x1 = 7, x2 = 7;
  ASSERT_TRUE(TMathUtils::CalcQuadraticEquation(1, -3, 2, x1, x2));
  EXPECT_DOUBLE_EQ(x1, 1.0);
  EXPECT_DOUBLE_EQ(x2, 2.0);
  // Cancellation-prone roots: x^2 - 1e8 x + 1 has a root near 1e-8.
  ASSERT_TRUE(TMathUtils::CalcQuadraticEquation(1, -1e8, 1, x1, x2));
  EXPECT_NEAR(x1, 1e-8, 1e-22);
  EXPECT_FALSE(TMathUtils::CalcQuadraticEquation(1, 0, 1, x1, x2));
  EXPECT_NEAR(x1, 1e-8, 1e-22);  // untouched on no result
  ASSERT_TRUE(TMathUtils::CalcQuadraticEquation(0, 2, -4, x1, x2));
  EXPECT_DOUBLE_EQ(x1, 2.0);
}

TEST(Point2D, VectorOperations) {
  const TPoint2D v(3, 4);
  ExpectNear(v.Normal(), {0.6, 0.8});
  EXPECT_EQ(TPoint2D::FZero.Normal(), TPoint2D::FZero);
  EXPECT_DOUBLE_EQ(TPoint2D(0, -1).Angle(), 1.5 * Pi);
  EXPECT_DOUBLE_EQ(TPoint2D(1, 0).AngleFrom(TPoint2D(0, 1)), 1.5 * Pi);
  EXPECT_DOUBLE_EQ(TPoint2D(1, 0).AngleBetween(TPoint2D(0, -1)), 0.5 * Pi);
  EXPECT_TRUE(TPoint2D(1, 1e-8).IsParallelTo(TPoint2D(5, 0), 1e-6));
  EXPECT_FALSE(TPoint2D(-1, 0).IsParallelTo(TPoint2D(5, 0), 1e-6));
  EXPECT_TRUE(TPoint2D(0, 0).Equals(TPoint2D(0, 1e-6), 1e-6));
  EXPECT_EQ(TPoint2D(-0.0, 0.0), TPoint2D::FZero);
  EXPECT_EQ(TPoint2D(1.5, -2).ToString(), "(1.5, -2)");
}

TEST(Line2D, ProjectionsAndDistances) {
  const TLine2D l(TPoint2D(0, 0), TPoint2D(4, 0));
  EXPECT_DOUBLE_EQ(l.ParamOfPoint(TPoint2D(1, 5)), 0.25);
  EXPECT_DOUBLE_EQ(l.DistanceDirect(TPoint2D(8, -3)), 3.0);
  double param = -1;
  TPoint2D nearest;
  EXPECT_DOUBLE_EQ(l.DistanceLimit(TPoint2D(7, 4), param, nearest), 5.0);
  EXPECT_EQ(param, 1.0);
  EXPECT_EQ(nearest, TPoint2D(4, 0));
  EXPECT_TRUE(l.IsOn(TPoint2D(2, 1e-7), 1e-6));
  EXPECT_FALSE(l.IsOn(TPoint2D(4 + 2e-6, 0), 1e-6));
  double x = 0, t = 0;
  EXPECT_TRUE(TLine2D(TPoint2D(0, 0), TPoint2D(2, 4)).CalculateX(1, x, t));
  EXPECT_DOUBLE_EQ(x, 0.5);
  EXPECT_DOUBLE_EQ(t, 0.25);
  EXPECT_FALSE(l.CalculateX(1, x, t));
  EXPECT_THROW(TLine2D(TPoint2D(1, 0), TPoint2D(1, 5)).PointAtX(3), EGeometry);
  ExpectNear(TLine2D(TPoint2D(0, 0), TPoint2D(2, 4)).PointAtY(2), {1, 2});
  const TLine2D s = l.Stretch(2, false);
  EXPECT_EQ(s.P2, TPoint2D(4, 0));
  ExpectNear(s.P1, {2, 0});
  const TLine2D bis = l.PerpendicularBisector();
  ExpectNear(bis.P1, {2, -2});
  ExpectNear(bis.P2, {2, 2});
}

TEST(Line2D, SegmentRelations) {
  TPoint2D p1, p2;
  const TLine2D a(TPoint2D(0, 0), TPoint2D(2, 0));
  // Collinear overlap: its two ends, in this segment's order.
  ASSERT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(3, 0), TPoint2D(1, 0)), p1, p2, 1e-6, 1e-9), 2);
  EXPECT_EQ(p1, TPoint2D(1, 0));
  EXPECT_EQ(p2, TPoint2D(2, 0));
  // A shared end point only, exactly.
  ASSERT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(2, 0), TPoint2D(2.3, 1.7)), p1, p2, 1e-6, 1e-9), 1);
  EXPECT_EQ(p1, TPoint2D(2, 0));
  // Collinear end to end is one point, not an overlap.
  ASSERT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(2, 0), TPoint2D(5, 0)), p1, p2, 1e-6, 1e-9), 1);
  EXPECT_EQ(p1, TPoint2D(2, 0));
  // A proper crossing.
  ASSERT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(0.5, -1), TPoint2D(1.5, 1)), p1, p2, 1e-6, 1e-9), 1);
  ExpectNear(p1, {1, 0});
  // An end within Tol of the other segment, though the lines cross outside.
  ASSERT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(1, 5e-7), TPoint2D(1.1, 1)), p1, p2, 1e-6, 1e-9), 1);
  EXPECT_EQ(p1, TPoint2D(1, 5e-7));
  // Parallel apart, and crossing lines whose segments stay apart.
  EXPECT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(0, 1), TPoint2D(2, 1)), p1, p2, 1e-6, 1e-9), 0);
  EXPECT_EQ(a.RelationWithSegLine(TLine2D(TPoint2D(3, -1), TPoint2D(3, 1)), p1, p2, 1e-6, 1e-9), 0);

  TPoint2D pt(9, 9);
  EXPECT_EQ(a.Cross(TLine2D(TPoint2D(5, 1), TPoint2D(5, 2)), pt), 1);
  EXPECT_EQ(pt, TPoint2D(5, 0));
  EXPECT_EQ(a.Cross(TLine2D(TPoint2D(0, 1), TPoint2D(1, 1)), pt), 2);
  EXPECT_EQ(a.RelationWithLine(TLine2D(TPoint2D(7, 0), TPoint2D(9, 0)), pt, 1e-6, 1e-6), 2);
  EXPECT_EQ(a.RelationWithLine(TLine2D(TPoint2D(7, 1), TPoint2D(9, 1)), pt, 1e-6, 1e-6), 0);
}

TEST(Rect2D, InvalidBoxesAndRelations) {
  TRect2D r;
  r.SetInvalid();
  EXPECT_FALSE(r.IsValid());
  EXPECT_EQ(r.AreaAbs(), 0.0);
  r.Extend(TPoint2D(3, 4));
  EXPECT_EQ(r, TRect2D(3, 4, 3, 4));
  const TRect2D box(0, 0, 2, 1);
  EXPECT_EQ(box.ExtendedRect(TRect2D::Invalid()), box);
  EXPECT_EQ(TRect2D::CreateNormal(TPoint2D(2, 0), TPoint2D(0, 1)), box);
  EXPECT_FALSE(box.Intersect(TRect2D(3, 0, 4, 1)).IsValid());
  EXPECT_EQ(box.RelationWithRect(TRect2D(2 + 1e-7, 0, 4, 1), 1e-6), 1);
  EXPECT_EQ(box.RelationWithRect(TRect2D(2 + 1e-5, 0, 4, 1), 1e-6), 0);
  EXPECT_EQ(box.RelationWithRect(TRect2D(0.5, 0.5, 1, 1), 1e-6), 2);
  EXPECT_EQ(TRect2D(0.5, 0.5, 1, 1).RelationWithRect(box, 1e-6), 3);
  EXPECT_TRUE(box.Contains(TPoint2D(2 + 1e-6, 1), 1e-6));
  EXPECT_DOUBLE_EQ(box.InflatedRect(1, 2).AreaAbs(), 4.0 * 5.0);
  EXPECT_EQ(CalcAABB({}).IsValid(), false);
  EXPECT_EQ(CalcAABB({TPoint2D(1, 5), TPoint2D(-1, 2)}), TRect2D(-1, 2, 1, 5));
}

TEST(Triangle2D, AreaOrientationAndCollinearity) {
  const TTriangle2D t(TPoint2D(0, 0), TPoint2D(0, 3), TPoint2D(4, 0));
  EXPECT_TRUE(t.IsClockWise());
  EXPECT_DOUBLE_EQ(t.Area(false), -6.0);
  EXPECT_TRUE(TTriangle2D(TPoint2D(0, 0), TPoint2D(10, 1e-7), TPoint2D(20, 0)).IsLine(1e-6));
  EXPECT_FALSE(TTriangle2D(TPoint2D(0, 0), TPoint2D(10, 1e-5), TPoint2D(20, 0)).IsLine(1e-6));
  // Shoelace area ignores a repeated closing point.
  EXPECT_DOUBLE_EQ(PolyArea({{0, 0}, {2, 0}, {2, 1}, {0, 1}, {0, 0}}), 2.0);
}

TEST(Matrix2D, StepsComposeInCallOrder) {
  TMatrix2D m;
  m.Rotate(HalfPi);
  m.Translate(1, 0);
  ExpectNear(m.Transform(TPoint2D(1, 0)), {1, 1});  // rotated first, then shifted
  TMatrix2D n;
  n.Translate(1, 0);
  n.Rotate(HalfPi);
  ExpectNear(n.Transform(TPoint2D(1, 0)), {0, 2});
  // Translate(-P), Scale, Translate(P) scales about P.
  TMatrix2D s;
  s.Translate(-1, -1);
  s.Scale(2, 3);
  s.Translate(1, 1);
  ExpectNear(s.Transform(TPoint2D(2, 2)), {3, 4});
  TMatrix2D at;
  at.SetToScaleAt(2, TPoint2D(1, 1));
  ExpectNear(at.Transform(TPoint2D(2, 2)), {3, 3});
  ExpectNear(at.TransformVector(TPoint2D(1, 0)), {2, 0});
  TMatrix2D r;
  r.SetToRotation(HalfPi, TPoint2D(1, 1));
  ExpectNear(r.Transform(TPoint2D(2, 1)), {1, 2});
  TMatrix2D mirror;
  mirror.SetToMirroringLine(TPoint2D(0, 1), TPoint2D(1, 2));
  ExpectNear(mirror.Transform(TPoint2D(1, 0)), {-1, 2});
  mirror.SetToMirroring(TPoint2D(1, 1));
  ExpectNear(mirror.Transform(TPoint2D(3, 0)), {-1, 2});
  EXPECT_THROW(mirror.SetToMirroringLine(TPoint2D(1, 1), TPoint2D(1, 1)), EGeometry);
}

TEST(GeInterval, ContainmentAndOperators) {
  const TGeInterval i(0.0, 1.0, 1e-6);
  EXPECT_TRUE(i.Contains(1.0 + 1e-6));
  EXPECT_FALSE(i.Contains(1.0 + 2e-6));
  EXPECT_TRUE(i.IsContionousUpper(TGeInterval(1.0 + 5e-7, 2.0)));
  TGeInterval common(-9, -9);
  EXPECT_FALSE(i.IntersectWith(TGeInterval(1.1, 2.0), common));
  EXPECT_EQ(common.Lower, -9.0);
  ASSERT_TRUE(i.IntersectWith(TGeInterval(0.5, 2.0), common));
  EXPECT_EQ(common.Lower, 0.5);
  EXPECT_EQ(common.Upper, 1.0);
  const TGeInterval m = -(i + 2.0);
  EXPECT_EQ(m.Lower, -3.0);
  EXPECT_EQ(m.Upper, -2.0);
  EXPECT_THROW(TGeInterval(NaN, 1.0), EGeometry);
  EXPECT_TRUE(DefTol.PointEquals(TPoint2D(0, 0), TPoint2D(1e-6, 0)));
}

TEST(Format, PrintfCompatibleAndLocaleFree) {
  EXPECT_EQ(Format("Start %.4f End %.4f", 0.5, -1.23456), "Start 0.5000 End -1.2346");
  EXPECT_EQ(Format("[Error] %s: %d of %u", "TVPolyline2D.Line", -3, 7u), "[Error] TVPolyline2D.Line: -3 of 7");
  EXPECT_EQ(Format("%5d|%-4d|%05.1f|%x|%%", 42, 7, 3.14159, 255), "   42|7   |003.1|ff|%");
  EXPECT_EQ(Format("%g %e", 0.0001, 12345.0), "0.0001 1.234500e+04");
  EXPECT_EQ(Format("missing %d"), "missing %d");
  const Exception e("Invalid Sub Curve Interval! Start %.4f End %.4f", 0.75, 0.25);
  EXPECT_STREQ(e.what(), "Invalid Sub Curve Interval! Start 0.7500 End 0.2500");
}
