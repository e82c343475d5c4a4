// The mixed segment record: hand-worked arcs, lines and Beziers, the circle mark, mirrors
// and reversals, and the crossing dispatch.

#include <gtest/gtest.h>

#include <cmath>

#include "orvane/foundation/Matrix2D.h"
#include "orvane/mixed/LABSegline.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectNear;

// The upper half of the unit circle, counter-clockwise from (1, 0) to (-1, 0): bulge
// tan(pi / 4) = 1.
TLABSegline HalfDisk() { return TLABSegline::CreateArc({1, 0}, {-1, 0}, {0, 0}, 1.0); }

TEST(LABSegline, HalfDiskArcByBulgeOne) {
  const TLABSegline arc = HalfDisk();
  ExpectNear(arc.PointByParam(0.0), {1, 0});
  ExpectNear(arc.PointByParam(0.5), {0, 1});
  ExpectNear(arc.PointByParam(1.0), {-1, 0}, 1e-15);
  // d/dt of (cos(pi t), sin(pi t)) at 0: the sweep times the radius, along +Y.
  ExpectNear(arc.TangentVector(0.0), {0, Pi});
  EXPECT_NEAR(arc.Length(0.1), Pi, 1e-15);
  const TRect2D box = arc.BoundBox();
  ExpectNear({box.XMin, box.YMin}, {-1, 0}, 1e-15);
  ExpectNear({box.XMax, box.YMax}, {1, 1}, 1e-15);
  EXPECT_NEAR(arc.ParamByPoint({-1.0, std::sqrt(3.0)}, 1e-6), 2.0 / 3.0, 1e-12);  // the ray at 120 degrees
  // Round(1 / 0.25) + 1 = 5 points, evenly in angle.
  const auto pts = arc.Sample(0.25);
  ASSERT_EQ(pts->Count(), 5);
  ExpectNear((*pts)[1], {std::sqrt(0.5), std::sqrt(0.5)}, 1e-15);
  // Records from value arcs by bulge are checked against ezdxf with the real drawings' arcs.
  // Line form of a value arc: a line record.
  TArc2D flat;
  flat.DegradeLine({0, 0}, {2, 0});
  EXPECT_EQ(TLABSegline::CreateArc(flat), TLABSegline::CreateLine({0, 0}, {2, 0}));
}

TEST(LABSegline, CircleMarkIsOneComparison) {
  // The conversions' largest float and exactly the mark are circles, for IsCircle and ToArc
  // alike; the sign gives the sense.
  for (double mark : {3.4028234663852886e+38, 3.3e38, -3.3e38, HUGE_VAL}) {
    const TLABSegline c = TLABSegline::CreateArc({2, 0}, {2, 0}, {0, 0}, mark);
    EXPECT_TRUE(c.IsCircle()) << mark;
    const TArc2D a = c.ToArc();
    EXPECT_NEAR(a.SweepAngle, mark < 0 ? -TwoPi : TwoPi, 1e-15) << mark;
    EXPECT_NEAR(a.Radius, 2.0, 1e-15);
  }
  const TLABSegline big = TLABSegline::CreateArc({2, 0}, {0, 2}, {0, 0}, 3.2e38);
  EXPECT_FALSE(big.IsCircle());
  // A full value circle gets the mark, not tan(pi / 2).
  const TLABSegline full = TLABSegline::CreateArc(TArc2D::CreateCircle({0, 0}, {1, 0}, true));
  EXPECT_TRUE(full.IsCircle());
  EXPECT_LT(full.Bulge, 0.0);
  EXPECT_NEAR(full.Length(0.1), TwoPi, 1e-14);
}

TEST(LABSegline, MirroredAndReversedRecordsKeepTheirShape) {
  const TLABSegline arc = HalfDisk();
  // YMirror: the upper half-disk maps onto itself, traversed from (-1, 0) to (1, 0).
  const TLABSegline ym = arc.YMirror();
  EXPECT_EQ(ym.Bulge, -1.0);
  ExpectNear(ym.PointByParam(0.5), {0, 1}, 1e-15);
  // A reflecting matrix does the same: the mirror in the Y axis equals YMirror, and the mirror
  // in the X axis gives the lower half-disk (without the negated bulge it would be the upper).
  TMatrix2D mirrorY;
  mirrorY.SetToMirroringLine({0, 0}, {0, 1});
  const TLABSegline my = arc.Transform(mirrorY);
  EXPECT_EQ(my.Bulge, -1.0);
  ExpectNear(my.PointByParam(0.5), {0, 1}, 1e-15);
  TMatrix2D mirrorX;
  mirrorX.SetToMirroringLine({0, 0}, {1, 0});
  ExpectNear(arc.Transform(mirrorX).PointByParam(0.5), {0, -1}, 1e-15);
  // A rotation keeps the sense.
  TMatrix2D turn;
  turn.SetToRotation(HalfPi);
  const TLABSegline rt = arc.Transform(turn);
  EXPECT_EQ(rt.Bulge, 1.0);
  ExpectNear(rt.PointByParam(0.5), {-1, 0}, 1e-15);
  ExpectNear(arc.RotateBy90().PointByParam(0.5), {-1, 0}, 1e-15);
  ExpectNear(arc.RotateBy_90().PointByParam(0.5), {1, 0}, 1e-15);

  // Reverse: the same points the other way; twice gives the record back, for every kind.
  const TLABSegline rev = arc.Reverse();
  ExpectNear(rev.PointByParam(0.25), arc.PointByParam(0.75), 1e-15);
  const TLABSegline line = TLABSegline::CreateLine({0, 0}, {3, 4});
  const TLABSegline bez = TLABSegline::CreateBezier({0, 0}, {1, 2}, {3, 2}, {4, 0});
  for (const TLABSegline& s : {arc, line, bez}) EXPECT_EQ(s.Reverse().Reverse(), s);
  ExpectNear(bez.Reverse().PointByParam(0.3), bez.PointByParam(0.7), 1e-15);
}

TEST(LABSegline, LinesPointsAndStraightBeziers) {
  // A Bezier whose inner points overshoot the chord on its line is straight.
  TLABSegline straight = TLABSegline::CreateBezier({0, 0}, {-1, 0}, {5, 0}, {4, 0});
  EXPECT_TRUE(straight.IsLine(1e-6));
  EXPECT_TRUE(straight.TryToLine(1e-6));
  EXPECT_EQ(straight, TLABSegline::CreateLine({0, 0}, {4, 0}));
  TLABSegline curved = TLABSegline::CreateBezier({0, 0}, {1, 1}, {3, 1}, {4, 0});
  const TLABSegline before = curved;
  EXPECT_FALSE(curved.TryToLine(1e-6));
  EXPECT_EQ(curved, before);

  const TLABSegline dot = TLABSegline::CreateLine({1, 1}, {1, 1});
  EXPECT_TRUE(dot.IsPoint());
  EXPECT_FALSE(dot.IsLine(1e-6));
  EXPECT_EQ(dot.Sample(0.5)->Count(), 3);  // through the Bezier route, ends exact
  EXPECT_FALSE(TLABSegline::CreateArc({1, 0}, {1, 0}, {0, 0}, 1.0).IsPoint());
  EXPECT_TRUE(TLABSegline::CreateBezier({2, 2}, {2, 2}, {2, 2}, {2, 2}).IsPoint());

  // Sample(0.3): Round(3.33) = 3 steps at t = 0.3, 0.6, then the end.
  const auto pts = curved.Sample(0.3);
  ASSERT_EQ(pts->Count(), 4);
  ExpectNear((*pts)[2], curved.PointByParam(0.6), 0);
  ExpectNear((*pts)[3], {4, 0}, 0);
  ExpectNear(curved.TangentVector(0.0), {3, 3}, 1e-15);
  ExpectNear(curved.TangentVector(1.0), {3, -3}, 1e-15);
  // The box reaches the curve's top, 0.75, not the control points' 1.
  EXPECT_NEAR(curved.BoundBox().YMax, 0.75, 1e-15);
}

TEST(LABSegline, BadInputGivesNamedErrors) {
  using testing::ExpectRaise;
  const TLABSegline nanArc = TLABSegline::CreateArc({1, 0}, {-1, 0}, {0, 0}, NAN);
  EXPECT_FALSE(nanArc.IsCircle());
  EXPECT_THROW(nanArc.ToArc(), EParamError);
  EXPECT_THROW(nanArc.PointByParam(0.5), EParamError);
  EXPECT_THROW(nanArc.BoundBox(), EParamError);
  EXPECT_THROW(HalfDisk().Sample(0.0), EParamError);
  EXPECT_THROW(HalfDisk().Sample(NAN), EParamError);
  EXPECT_THROW(HalfDisk().Sample(1e-300), EParamError);
  double param = 0;
  ExpectRaise<Exception>([&] { HalfDisk().DistanceTo({0, 0}, param); },
                         "[Error] TLABSegline.DistanceTo: 圆弧距离未实现");
  ExpectRaise<Exception>([&] { TLABSegline::CreateBezier({0, 0}, {1, 1}, {2, 1}, {3, 0}).DistanceTo({0, 0}, param); },
                         "[Error] TLABSegline.DistanceTo: 贝塞尔距离未实现");
  ExpectRaise<Exception>([&] { HalfDisk().ToLine(); },
                         "[Error] TLABSegline.ToLine: 将“非直线段混合线段”转为“直线段”");
  ExpectRaise<Exception>([&] { TLABSegline::CreateLine({0, 0}, {1, 0}).ToArc(); },
                         "[Error] TLABSegline.ToArc: 将“非弧线混合线段”转为“弧线”");
  ExpectRaise<Exception>([&] { HalfDisk().ToBezierSegment(); },
                         "[Error] TLABSegline.ToBezierSegment: 将“非贝塞尔混合线段”转为“贝塞尔”");
}

TEST(LABSegline, CrossingsReportOnlyWhatThisCallAdded) {
  TList<TPoint2D> pts{{9, 9}};
  TList<TLine2D> lines;
  TList<TArc2D> arcs;
  TList<TBezierSegment2D> beziers;
  const TLABSegline arc = HalfDisk();
  const TLABSegline vertical = TLABSegline::CreateLine({0, -2}, {0, 2});
  EXPECT_TRUE(vertical.CrossWithLABSegline(arc, pts, lines, arcs, beziers, 1e-6));
  ASSERT_EQ(pts.Count(), 2);
  ExpectNear(pts[1], {0, 1}, 1e-12);
  // Apart: nothing grows, whatever the lists already held.
  EXPECT_FALSE(TLABSegline::CreateLine({5, 5}, {6, 6}).CrossWithLABSegline(arc, pts, lines, arcs, beziers, 1e-6));
  // An arc on the same circle overlapping by a quarter: one overlap arc.
  const TLABSegline quarter = TLABSegline::CreateArc({0, 1}, {0, -1}, {0, 0}, 1.0);
  EXPECT_TRUE(arc.CrossWithLABSegline(quarter, pts, lines, arcs, beziers, 1e-6));
  ASSERT_EQ(arcs.Count(), 1);
  EXPECT_NEAR(std::abs(arcs[0].SweepAngle), HalfPi, 1e-9);
  // Collinear lines overlap in a line.
  EXPECT_TRUE(TLABSegline::CreateLine({0, 0}, {2, 0})
                  .CrossWithLABSegline(TLABSegline::CreateLine({1, 0}, {3, 0}), pts, lines, arcs, beziers, 1e-6));
  ASSERT_EQ(lines.Count(), 1);
  // A Bezier arch over the line crosses it twice, from either side of the call.
  const TLABSegline arch = TLABSegline::CreateBezier({0, 0}, {0, 2}, {2, 2}, {2, 0});
  const TLABSegline chord = TLABSegline::CreateLine({-1, 1}, {3, 1});
  const int n0 = pts.Count();
  EXPECT_TRUE(arch.CrossWithLABSegline(chord, pts, lines, arcs, beziers, 1e-9));
  EXPECT_TRUE(chord.CrossWithLABSegline(arch, pts, lines, arcs, beziers, 1e-9));
  ASSERT_EQ(pts.Count(), n0 + 4);
  // y(t) = 6t(1 - t) = 1 at t = (3 -+ sqrt(3)) / 6.
  const double t = (3.0 - std::sqrt(3.0)) / 6.0;
  ExpectNear(pts[n0], arch.PointByParam(t), 1e-9);
}

}  // namespace
}  // namespace orvane
