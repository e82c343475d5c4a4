// The cubic Bezier value against hand-worked and high-precision values, and against OCCT on
// random cubics.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <vector>
#include <limits>
#include <random>

#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Exception.h"
#include "support/DxfEntities.h"
#include "support/TestSupport.h"
#ifdef ORVANE_HAVE_OCCT
#include "support/OcctBezier.h"
#endif

using namespace orvane;
using orvane::testing::ExpectNear;

namespace {

// Inner legs of the standard quarter-circle cubic.
constexpr double K = 0.5522847498;
const TBezierSegment2D Arch({0, 0}, {0, 1}, {1, 1}, {1, 0});
const TBezierSegment2D Quarter({1, 0}, {1, K}, {K, 1}, {0, 1});
const TBezierSegment2D Cusp({0, 0}, {1, 1}, {0, 1}, {1, 0});
const TBezierSegment2D Loop({0, 0}, {2, 2}, {-1, 2}, {1, 0});

// The single-span, non-rational cubic SPLINEs of a DXF file (degree 3, four control
// points): the group codes 71 (degree), 73 (control point count), 41 (a weight), 10 and 20
// (control point coordinates) of each SPLINE entity.
std::vector<TBezierSegment2D> DxfCubics(const std::filesystem::path& File) {
  std::vector<TBezierSegment2D> result;
  for (const orvane::testing::TDxfEntity& e : orvane::testing::ReadDxfEntities(File)) {
    const std::vector<double> xs = e.All(10), ys = e.All(20);
    if (e.Kind == "SPLINE" && e.Num(71) == 3 && e.Num(73) == 4 && e.All(41).empty() && xs.size() == 4 &&
        ys.size() == 4)
      result.push_back({{xs[0], ys[0]}, {xs[1], ys[1]}, {xs[2], ys[2]}, {xs[3], ys[3]}});
  }
  return result;
}

}  // namespace

TEST(BezierSegment2D, HandWorkedArch) {
  // x = 3t^2 - 2t^3, y = 3t(1 - t): the top at (0.5, 0.75).
  ExpectNear(Arch.EvalPoint(0.5), {0.5, 0.75});
  TPoint2D d;
  ExpectNear(Arch.EvalPoint(0.25, d), {0.15625, 0.5625});
  ExpectNear(d, {1.125, 1.5});
  TBezierSegment2D l, r;
  ASSERT_TRUE(Arch.Split(0.5, l, r));
  EXPECT_EQ(l, TBezierSegment2D({0, 0}, {0, 0.5}, {0.25, 0.75}, {0.5, 0.75}));
  EXPECT_EQ(r, TBezierSegment2D({0.5, 0.75}, {0.75, 0.75}, {1, 0.5}, {1, 0}));
  TBezierSegment2D ml, mr;
  Arch.SplitMiddle(ml, mr);
  EXPECT_EQ(ml, l);
  EXPECT_EQ(mr, r);
  // Outside (0, 1) nothing happens to the outputs.
  for (double t : {0.0, 1.0, -0.5, 2.0, std::numeric_limits<double>::quiet_NaN()}) EXPECT_FALSE(Arch.Split(t, l, r));
  EXPECT_EQ(l, ml);
  EXPECT_EQ(Arch.GetBoundBox(), TRect2D(0, 0, 1, 0.75));
  EXPECT_NEAR(Arch.CurveLength(), 2.0, 2e-15);
  EXPECT_NEAR(Arch.ParamOfLength(0.0, 1.0, 1e-12), 0.5, 1e-13);
  EXPECT_NEAR(Arch.ParamOfLength(1.0, -1.0, 1e-12), 0.5, 1e-13);
  EXPECT_EQ(Arch.ParamOfLength(0.2, 5.0, 1e-9), 1.0);
  EXPECT_EQ(Arch.ParamOfLength(0.2, 0.0, 1e-9), 0.2);
  TBezierSegment2D rev = Arch;
  rev.Reverse();
  EXPECT_EQ(rev, TBezierSegment2D({1, 0}, {1, 1}, {0, 1}, {0, 0}));
}

TEST(BezierSegment2D, LengthOnCuspsLoopsAndArcs) {
  // References from an adaptive high-precision quadrature.
  EXPECT_NEAR(Quarter.CurveLength(), 1.5710166980604843, 1e-14);
  EXPECT_NEAR(Cusp.CurveLength(), 2.0 * std::sqrt(2.0) - 1.0, 1e-11);
  EXPECT_NEAR(Loop.CurveLength(), 3.6961109147795420, 1e-11);
  // Whatever the panel order, the answer settles.
  for (int n : {2, 5, 14, 24, 64, 1000}) EXPECT_NEAR(Cusp.CurveLength(n), 2.0 * std::sqrt(2.0) - 1.0, 1e-10) << n;
  // Walking out by lengths and measuring back is a round trip, also across the cusp.
  for (double s : {0.0, 0.3, 0.7}) {
    for (double len : {0.1, 0.5, 0.9}) {
      const double t = Cusp.ParamOfLength(s, len, 1e-12);
      if (t == 1.0) continue;  // past the end
      TBezierSegment2D a, b, piece;
      const bool split = Cusp.Split(s, a, b);
      piece = split ? b : Cusp;
      const double local = (t - s) / (1.0 - s);
      TBezierSegment2D c, e;
      ASSERT_TRUE(piece.Split(local, c, e));
      EXPECT_NEAR(c.CurveLength(), len, 1e-10) << s << " " << len;
    }
  }
  // A point cubic has length 0 and stays where it is.
  const TBezierSegment2D dot({2, 2}, {2, 2}, {2, 2}, {2, 2});
  EXPECT_EQ(dot.CurveLength(), 0.0);
  EXPECT_EQ(dot.ParamOfLength(0.5, 1.0, 1e-9), 1.0);
}

TEST(BezierSegment2D, StraightCubicsAndTangents) {
  const TBezierSegment2D s({1, 1}, {4, 5});
  ExpectNear(s.EvalPoint(0.3), {1.9, 2.2}, 1e-14);  // chord parameters are curve parameters
  TLine2D line;
  ASSERT_TRUE(s.IsLinear(line, 1e-9));
  EXPECT_EQ(line, TLine2D({1, 1}, {4, 5}));
  EXPECT_NEAR(s.ParamOfLength(0.0, 2.0, 1e-12), 0.4, 1e-14);
  // A cubic that doubles back over its chord is not straight, though it lies on the line.
  const TBezierSegment2D back({0, 0}, {3, 0}, {3, 0}, {1, 0});
  EXPECT_FALSE(back.IsLinear(line, 1e-6));
  EXPECT_EQ(line, TLine2D({1, 1}, {4, 5}));  // untouched
  // Uneven but forward: straight.
  EXPECT_TRUE(TBezierSegment2D({0, 0}, {0, 0}, {1, 0}, {1, 0}).IsLinear(line, 1e-9));
  // Inner points swapped along the chord still run forward; past the end by 0.2 they do not.
  EXPECT_TRUE(TBezierSegment2D({0, 0}, {1, 0}, {0, 0}, {1, 0}).IsLinear(line, 1e-9));
  EXPECT_TRUE(TBezierSegment2D({0, 0}, {1.2, 0}, {1.2, 0}, {1, 0}).IsLinear(line, 0.25));
  EXPECT_FALSE(TBezierSegment2D({0, 0}, {1.2, 0}, {1.2, 0}, {1, 0}).IsLinear(line, 0.1));
  EXPECT_FALSE(Arch.IsLinear(line, 0.5));
  // Tangents point forward and survive coincident control points.
  ExpectNear(TBezierSegment2D({0, 0}, {0, 0}, {1, 1}, {2, 0}).TangentStart(), TPoint2D(1, 1).Normal());
  ExpectNear(TBezierSegment2D({0, 0}, {1, 1}, {2, 0}, {2, 0}).TangentEnd(), TPoint2D(1, -1).Normal());
  ExpectNear(TBezierSegment2D({0, 0}, {0, 0}, {0, 0}, {-3, 0}).TangentStart(), {-1, 0});
  EXPECT_EQ(TBezierSegment2D({1, 1}, {1, 1}, {1, 1}, {1, 1}).TangentStart(), TPoint2D::FZero);
}

TEST(BezierSegment2D, ArcsAndInflections) {
  TArc2D arc;
  ASSERT_TRUE(Quarter.IsArc(arc, 1e-6, 1e-4));
  ExpectNear(arc.Center, {0, 0}, 1e-9);
  EXPECT_NEAR(arc.Radius, 1.0, 1e-9);
  EXPECT_NEAR(arc.StartAngle, 0.0, 1e-9);
  EXPECT_NEAR(arc.SweepAngle, HalfPi, 1e-9);
  // Reversed, scaled, moved: a clockwise arc of the same circle.
  TBezierSegment2D q = Quarter;
  q.Reverse();
  TMatrix2D m;
  m.Scale(50, 50);
  m.Translate(7, -3);
  q.TransformBy(m);
  ASSERT_TRUE(q.IsArc(arc, 1e-6, 1e-4));
  ExpectNear(arc.Center, {7, -3}, 1e-8);
  EXPECT_NEAR(arc.Radius, 50.0, 1e-8);
  EXPECT_NEAR(arc.SweepAngle, -HalfPi, 1e-9);
  // Legs 1% too long stray 1e-3 further: arcs at Tol2 = 2e-3, not at 1e-4. An asymmetric
  // cubic, an S and a straight cubic are no arcs.
  const TBezierSegment2D longLegs({1, 0}, {1, K * 1.01}, {K * 1.01, 1}, {0, 1});
  EXPECT_FALSE(longLegs.IsArc(arc, 1e-6, 1e-4));
  EXPECT_TRUE(longLegs.IsArc(arc, 1e-6, 2e-3));
  EXPECT_FALSE(TBezierSegment2D({1, 0}, {1, K}, {K, 1.1}, {0, 1}).IsArc(arc, 1e-6, 1e-4));
  EXPECT_FALSE(TBezierSegment2D({0, 0}, {1, 1}, {2, -1}, {3, 0}).IsArc(arc, 1e-6, 1e-4));
  // An S turns once, in its middle; arcs, arches and straight cubics never.
  const TFloatDynArray s = TBezierSegment2D({0, 0}, {1, 1}, {2, -1}, {3, 0}).CurvatureChangedPlaces();
  ASSERT_EQ(s.size(), 1U);
  EXPECT_NEAR(s[0], 0.5, 1e-15);
  EXPECT_TRUE(Quarter.CurvatureChangedPlaces().empty());
  EXPECT_TRUE(Arch.CurvatureChangedPlaces().empty());
}

TEST(BezierSegment2D, NearestPointIsGlobal) {
  // From (0.5, 0.3) under the arch the two flanks are local minima at the same distance...
  // moved right, the right flank wins; a search from the start would settle on the left.
  double t = -1;
  TPoint2D nearest;
  const double d = Arch.DistanceTo({0.62, 0.3}, DefTol, t, nearest);
  EXPECT_GT(t, 0.5);
  EXPECT_NEAR(d, Arch.EvalPoint(t).DistanceTo({0.62, 0.3}), 1e-15);
  ExpectNear(nearest, Arch.EvalPoint(t), 1e-15);
  // The centre of the quarter circle sees the whole arc at about radius 1: ends included.
  EXPECT_NEAR(Quarter.DistanceTo({0, 0}, DefTol, t, nearest), 1.0, 3e-4);
  // A point on the loop's crossing belongs to both passes; a point on the curve is on it.
  double param = -1;
  EXPECT_TRUE(Loop.IsOn(Loop.EvalPoint(0.37), DefTol, param));
  EXPECT_NEAR(param, 0.37, 1e-9);
  EXPECT_FALSE(Loop.IsOn({5, 5}, DefTol, param));
  EXPECT_NEAR(Cusp.ParamOfPoint({0.5, 0.75}, DefTol), 0.5, 1e-6);
  ExpectNear(Cusp.GetClosedPointTo({0.5, 2}, DefTol, param), {0.5, 0.75}, 1e-12);
}

TEST(BezierSegment2D, SamplingKeepsChordsWithinTolerance) {
  TDynPoints2D pts;
  TFloatDynArray params;
  for (double tol : {1e-1, 1e-3, 1e-5}) {
    const int n = Loop.GetSamplePoints(tol, pts, params, 100000);
    ASSERT_EQ(pts.size(), static_cast<std::size_t>(n));
    EXPECT_EQ(params.front(), 0.0);
    EXPECT_EQ(params.back(), 1.0);
    // The curve between two samples stays within tol of their chord.
    for (int i = 0; i + 1 < n; ++i) {
      for (int k = 1; k < 8; ++k) {
        const double p = params[i] + (params[i + 1] - params[i]) * k / 8;
        EXPECT_LE(TLine2D(pts[i], pts[i + 1]).DistanceLimit(Loop.EvalPoint(p)), tol);
      }
    }
  }
  EXPECT_EQ(TBezierSegment2D({0, 0}, {3, 0}).GetSamplePoints(1e-9, pts, params, 1000), 2);
  EXPECT_EQ(Loop.GetSamplePoints(1e-12, pts, params, 50), 50);
  const int back = Loop.GetSamplePoints(0.8, 0.2, 1e-3, pts, params, 1000);
  EXPECT_EQ(back, static_cast<int>(pts.size()));
  EXPECT_EQ(params.front(), 0.8);
  EXPECT_EQ(params.back(), 0.2);
  EXPECT_EQ(Loop.GetSamplePoints(0.3, 0.3, 1e-3, pts, params, 1000), 1);
}

TEST(BezierSegment2D, BadInputRaisesNamedErrors) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TBezierSegment2D bad({0, 0}, {nan, 1}, {1, 1}, {1, 0});
  double t = 0;
  TPoint2D p;
  TArc2D arc;
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_THROW(bad.CurveLength(), EParamError);
  EXPECT_THROW(bad.IsArc(arc, 1e-6, 1e-4), EParamError);
  EXPECT_THROW(bad.GetSamplePoints(1e-3, pts, params, 10), EParamError);
  EXPECT_THROW(Arch.DistanceTo({std::numeric_limits<double>::infinity(), 0}, DefTol, t, p), EParamError);
  EXPECT_THROW(Arch.ParamOfLength(0, nan, 1e-6), EParamError);
  EXPECT_EQ(orvane::testing::MessageOf([&] { bad.CurveLength(); }),
            "[Error] TBezierSegment2D.CurveLength: P1 (NAN, 1) is not a finite point");
}

// Arcs of 30 to 90 degrees that drawing programs exported as single cubics.
TEST(BezierSegment2D, ExportedArcsFromRealDrawings) {
  const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "curves";
  std::vector<TBezierSegment2D> cubics;
  for (const char* name : {"laser4diy_shim_4pcs_2combined.dxf", "laser4diy_backplate_v2.dxf",
                           "laser4diy_cutout_frontplate.dxf"}) {
    if (!std::filesystem::exists(dir / name)) GTEST_SKIP() << "no drawing " << (dir / name).string();
    const std::vector<TBezierSegment2D> some = DxfCubics(dir / name);
    cubics.insert(cubics.end(), some.begin(), some.end());
  }
  ASSERT_EQ(cubics.size(), 243U);
  for (const TBezierSegment2D& b : cubics) {
    TArc2D arc;
    ASSERT_TRUE(b.IsArc(arc, 1e-6, 1e-4)) << b.P0.ToString() << b.P1.ToString() << b.P2.ToString() << b.P3.ToString();
    const double sweep = std::fabs(arc.SweepAngle) * 180 / Pi;
    EXPECT_TRUE(sweep > 29.9 && sweep < 90.1) << sweep;
    ExpectNear(arc.StartPoint(), b.P0, 1e-9 * arc.Radius);
    ExpectNear(arc.EndPoint(), b.P3, 1e-9 * arc.Radius);
    // The cubic follows its arc: length, middle and nearest points.
    const double len = b.CurveLength();
    EXPECT_NEAR(len, arc.CurveLength(), 2e-4 * len);
    double t;
    TPoint2D nearest;
    EXPECT_LT(b.DistanceTo(arc.EvalPoint(0.3), DefTol, t, nearest), 4e-4 * arc.Radius);
    EXPECT_NEAR(t, 0.3, 0.01);
    // The exact box holds the curve and is held by the arc's box grown by the stray.
    const TRect2D box = b.GetBoundBox(), arcBox = arc.GetBoundBox().InflatedRect(4e-4 * arc.Radius, 4e-4 * arc.Radius);
    EXPECT_TRUE(arcBox.RelationWithRect(box, 0.0) == 2) << box.XMin << " " << arcBox.XMin;
    for (int i = 0; i <= 64; ++i) EXPECT_TRUE(box.Contains(b.EvalPoint(i / 64.0), 1e-12));
    EXPECT_TRUE(b.CurvatureChangedPlaces().empty());
#ifdef ORVANE_HAVE_OCCT
    EXPECT_NEAR(len, orvane::testing::OcctLength(b), 1e-10 * len);
#endif
  }
}

#ifdef ORVANE_HAVE_OCCT
TEST(BezierSegment2D, AgreesWithOcctOnRandomCubics) {
  std::mt19937 rng(18);
  std::uniform_real_distribution<double> c(-10.0, 10.0), u(-15.0, 15.0);
  for (int i = 0; i < 300; ++i) {
    const TBezierSegment2D b({c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)});
    const double len = b.CurveLength();
    EXPECT_NEAR(len, orvane::testing::OcctLength(b), 1e-8 * len) << i;
    const TRect2D box = b.GetBoundBox(), ref = orvane::testing::OcctBox(b);
    // OCCT's box may carry a small safety margin; ours is exact and must lie inside it.
    EXPECT_GE(box.XMin, ref.XMin - 1e-12);
    EXPECT_LE(box.XMax, ref.XMax + 1e-12);
    EXPECT_NEAR(box.Width(), ref.Width(), 1e-6 * (1 + ref.Width()));
    EXPECT_NEAR(box.Height(), ref.Height(), 1e-6 * (1 + ref.Height()));
    for (int k = 0; k < 5; ++k) {
      const TPoint2D pt(u(rng), u(rng));
      double t;
      TPoint2D nearest;
      const double d = b.DistanceTo(pt, DefTol, t, nearest);
      EXPECT_LE(d, orvane::testing::OcctDistance(b, pt) + 1e-9) << i << " " << k;
      EXPECT_NEAR(nearest.DistanceTo(pt), d, 1e-12);
    }
  }
}
#else
TEST(BezierSegment2D, AgreesWithOcctOnRandomCubics) { GTEST_SKIP() << "OCCT is not installed: no cross-check"; }
#endif
