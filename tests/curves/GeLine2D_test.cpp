// The line curve: measures, projection, and segment against segment intersection, checked
// by hand and against GEOS's segment intersector.

#include "orvane/curves/GeLine2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/curves/GeStrings.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_GEOS
#include <geos_c.h>
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

TGeLine2D Seg(double X1, double Y1, double X2, double Y2) { return {TPoint2D(X1, Y1), TPoint2D(X2, Y2)}; }
TLine2D L(double X1, double Y1, double X2, double Y2) { return {TPoint2D(X1, Y1), TPoint2D(X2, Y2)}; }

TEST(GeLine2D, MeasuresAndNearestPoints) {
  TGeLine2D line = Seg(1, 1, 4, 5);  // length 5
  EXPECT_EQ(line.GetCurveLength(), 5.0);
  EXPECT_EQ(line.LengthAt(0.4), 2.0);
  EXPECT_EQ(line.LengthAt(1.7), 5.0);
  EXPECT_EQ(line.LengthAt(-1.0), 0.0);
  // The derivative by the parameter is the line's own vector.
  TPoint2D deriv;
  EXPECT_EQ(line.EvalPoint(0.5, deriv), TPoint2D(2.5, 3));
  EXPECT_EQ(deriv, TPoint2D(3, 4));
  ExpectNear(line.NormalLeft(0.5), TPoint2D(-0.8, 0.6));
  // Nearest point: inside, and clamped to either end.
  double t = -1.0;
  ExpectNear(line.GetClosedPointTo(TPoint2D(1 + 3 + 4, 1 + 4 - 3), DefTol, t), TPoint2D(4, 5));
  EXPECT_EQ(t, 1.0);
  ExpectNear(line.GetClosedPointTo(TPoint2D(1 - 4 + 1.5, 1 + 3 + 2), DefTol, t), TPoint2D(2.5, 3), 1e-15);
  EXPECT_NEAR(t, 0.5, 1e-15);
  EXPECT_EQ(line.GetClosedPointTo(TPoint2D(-5, -5), DefTol, t), TPoint2D(1, 1));
  EXPECT_EQ(t, 0.0);
  // ParamOfLength holds to the range; ParamOfPoint does not clamp.
  EXPECT_EQ(line.ParamOfLength(2.0, DefTol), 0.4);
  EXPECT_EQ(line.ParamOfLength(0.9, 1.0, DefTol), 1.0);
  EXPECT_EQ(line.ParamOfLength(0.2, -3.0, DefTol), 0.0);
  EXPECT_EQ(line.ParamOfPoint(TPoint2D(7, 9), DefTol), 2.0);
  // A segment far shorter than 1e-3 still projects.
  const TGeLine2D tiny = Seg(0, 0, 1e-4, 0);
  EXPECT_NEAR(tiny.ParamOfPoint(TPoint2D(0.5e-4, 7), DefTol), 0.5, 1e-12);
  // Sub-lines neither clamp nor keep the direction when reversed.
  std::unique_ptr<TGeCurve2D> sub = line.SubCurve(1.5, -0.5);
  EXPECT_EQ(sub->GetStartPoint(), TPoint2D(5.5, 7));
  EXPECT_EQ(sub->GetEndPoint(), TPoint2D(-0.5, -1));
  EXPECT_EQ(line.BoundBlockOf(TGeInterval(0.5, -1.0)), TRect2D(-2, -3, 2.5, 3));
  // Moving the start keeps the vector; moving the end keeps the start.
  line.SetLineStart(TPoint2D(0, 0));
  EXPECT_EQ(line.GetLineEnd(), TPoint2D(3, 4));
  line.SetLineEnd(TPoint2D(0, 2));
  EXPECT_EQ(line.GetLineVector(), TPoint2D(0, 2));
  EXPECT_EQ(line.ToString(), SGeLineFmt.substr(0, SGeLineFmt.find('%')) + "(0, 0) + u * (0, 2)");
}

TEST(GeLine2D, PointJustPastTheEndIsOnWithItsOwnParameter) {
  const TGeLine2D line = Seg(0, 0, 5, 0);
  double t = 0.0;
  EXPECT_TRUE(line.IsOn(TPoint2D(5 + 0.5e-6, 0), DefTol, t));
  EXPECT_NEAR(t, 1.0 + 1e-7, 1e-15);
  EXPECT_FALSE(line.IsOn(TPoint2D(5 + 2e-6, 0), DefTol, t));
  EXPECT_FALSE(line.IsOn(TPoint2D(2, 2e-6), DefTol, t));
  EXPECT_TRUE(line.IsOn(TPoint2D(-0.5e-6, 0.5e-6), DefTol));
  const TGeLine2D point = Seg(2, 2, 2, 2);
  EXPECT_TRUE(point.IsOn(TPoint2D(2, 2 + 1e-7), DefTol, t));
  EXPECT_EQ(t, 0.0);
  EXPECT_TRUE(line.Contains(Seg(4, 0, 1, 0)));
  EXPECT_FALSE(line.Contains(Seg(4, 0, 6, 0)));
}

TEST(GeLine2D, EqualityWithAndWithoutDirection) {
  const TGeLine2D line = Seg(1, 2, 3, 4);
  EXPECT_TRUE(line.CheckEqual(Seg(1, 2, 3, 4 + 1e-7), true));
  EXPECT_FALSE(line.CheckEqual(Seg(3, 4, 1, 2), true));
  EXPECT_TRUE(line.CheckEqual(Seg(3, 4, 1, 2), false));
  EXPECT_FALSE(line.CheckEqual(Seg(3, 4, 1, 2.1), false));
  EXPECT_TRUE(line.Equals(&line));
  EXPECT_FALSE(line.Equals(nullptr));
}

struct TCase {
  TLine2D A, B;
  TIntersectionType Kind;
  std::vector<std::pair<double, double>> Params;  // (on A, on B) per entry
};

TEST(GeLine2D, IntersectionKinds) {
  using enum TIntersectionType;
  const std::vector<TCase> cases{
      {L(0, 0, 4, 4), L(0, 4, 4, 0), itInner, {{0.5, 0.5}}},
      {L(0, 0, 4, 0), L(4, 0, 6, 3), itEndEnd, {{1.0, 0.0}}},
      // T junctions: the end of one lies inside the other.
      {L(2, 1, 2, 5), L(0, 1, 4, 1), itThisEnd, {{0.0, 0.5}}},
      {L(0, 1, 4, 1), L(2, 1, 2, 5), itOtherEnd, {{0.5, 0.0}}},
      {L(0, 0, 4, 0), L(5, -1, 5, 1), itNone, {}},
      {L(0, 0, 4, 0), L(0, 1, 4, 1), itNone, {}},
      // Collinear along an axis: the upper end of the common stretch on A first.
      {L(0, 0, 4, 0), L(1, 0, 6, 0), itOverlap, {{1.0, 0.6}, {0.25, 0.0}}},
      {L(0, 0, 4, 0), L(6, 0, 1, 0), itOverlap, {{1.0, 0.4}, {0.25, 1.0}}},
      // Collinear diagonals overlap just as well.
      {L(0, 0, 4, 4), L(2, 2, 6, 6), itOverlap, {{1.0, 0.5}, {0.5, 0.0}}},
      {L(0, 0, 4, 4), L(5, 5, 6, 6), itNone, {}},
      // Collinear and meeting end to end: one common point.
      {L(0, 0, 4, 0), L(4, 0, 9, 0), itEndEnd, {{1.0, 0.0}}},
      {L(0, 0, 3, 3), L(5, 5, 3, 3), itEndEnd, {{1.0, 1.0}}},
      {L(4, 0, 9, 0), L(0, 0, 4 + 1e-7, 0), itEndEnd, {{0.0, 1.0}}},
      // Shorter than the vector tolerance: meets nothing.
      {L(0, 0, 4, 0), L(2, 0, 2, 1e-7), itNone, {}},
  };
  for (std::size_t k = 0; k < cases.size(); ++k) {
    const TCase& c = cases[k];
    const TGeLine2D a(c.A.P1, c.A.P2);
    const TGeLine2D b(c.B.P1, c.B.P2);
    TList<TIntersect2D> inters;
    inters.Add(TIntersect2D());  // the list only grows
    EXPECT_EQ(a.Intersect(b, inters, DefTol), c.Kind) << "case " << k;
    ASSERT_EQ(inters.Count(), static_cast<int>(c.Params.size()) + 1) << "case " << k;
    for (std::size_t i = 0; i < c.Params.size(); ++i) {
      const TIntersect2D& hit = inters[static_cast<int>(i) + 1];
      EXPECT_EQ(hit.InterThis.Curve, &a);
      EXPECT_EQ(hit.InterThat.Curve, &b);
      EXPECT_NEAR(hit.InterThis.Param, c.Params[i].first, 1e-12) << "case " << k << " entry " << i;
      EXPECT_NEAR(hit.InterThat.Param, c.Params[i].second, 1e-12) << "case " << k << " entry " << i;
      ExpectNear(hit.InterThis.Point(), hit.InterThat.Point(), 1e-6);
    }
  }
  // The value segment's relation sees the same crossings.
  TList<TIntersect2D> inters;
  EXPECT_EQ(Seg(0, 0, 4, 4).IntersectWithSegLine(Seg(0, 4, 4, 0), inters, DefTol), TIntersectionType::itInner);
  EXPECT_EQ(Seg(0, 0, 4, 4).IntersectWithSegLine(Seg(2, 2, 6, 6), inters, DefTol), TIntersectionType::itOverlap);
  EXPECT_EQ(Seg(0, 0, 4, 4).IntersectWithSegLine(Seg(0, 1, 4, 5), inters, DefTol), TIntersectionType::itNone);
  ASSERT_EQ(inters.Count(), 3);
  EXPECT_NEAR(inters[0].InterThis.Param, 0.5, 1e-12);
}

TEST(GeLine2D, BadInputIsRefusedAndChangesNothing) {
  orvane::testing::ExpectRaise<EGeometry>([] { Seg(0, NAN, 1, 1); },
                                          "[Error] TGeLine2D.Create: PntStart (0, NAN) is not a finite point");
  TGeLine2D line = Seg(0, 0, 1, 1);
  EXPECT_THROW(line.SetLineEnd(TPoint2D(INFINITY, 0)), EGeometry);
  EXPECT_THROW(line.RotateBy(NAN), EParamError);
  EXPECT_THROW(line.Mirror(TLine2D(TPoint2D(1, 1), TPoint2D(1, 1))), EGeometry);
  EXPECT_TRUE(line.CheckEqual(Seg(0, 0, 1, 1), true));
}

#ifdef ORVANE_HAVE_GEOS
// Random segment pairs on a coarse grid (so that touches and T junctions happen) and in
// general position: wherever GEOS finds a single crossing, ours is the same point, and
// where GEOS finds none, neither do we.
TEST(GeLine2D, CrossingsAgreeWithGeos) {
  GEOSContextHandle_t h = GEOS_init_r();
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> grid(0, 6);
  std::uniform_real_distribution<double> u(-100.0, 100.0);
  int crossings = 0;
  for (int k = 0; k < 20000; ++k) {
    const bool onGrid = k % 2 == 0;
    auto coord = [&] { return onGrid ? static_cast<double>(grid(rng)) : u(rng); };
    const TGeLine2D a = Seg(coord(), coord(), coord(), coord());
    const TGeLine2D b = Seg(coord(), coord(), coord(), coord());
    if (a.GetCurveLength() == 0.0 || b.GetCurveLength() == 0.0) continue;
    const TLine2D la = a.GetLine();
    const TLine2D lb = b.GetLine();
    // Collinear pairs are GEOS's business of a different kind (no single point).
    if (std::fabs(la.Vector().Normal().CrossMul(lb.Vector().Normal())) < 1e-9) continue;
    double cx = 0.0;
    double cy = 0.0;
    const int geos =
        GEOSSegmentIntersection_r(h, la.P1.X, la.P1.Y, la.P2.X, la.P2.Y, lb.P1.X, lb.P1.Y, lb.P2.X, lb.P2.Y, &cx, &cy);
    ASSERT_NE(geos, 0);
    TList<TIntersect2D> inters;
    const TIntersectionType kind = a.Intersect(b, inters, DefTol);
    if (geos == 1) {
      ++crossings;
      ASSERT_NE(kind, TIntersectionType::itNone) << k;
      ExpectNear(inters[0].InterThis.Point(), TPoint2D(cx, cy), 1e-9);
    } else {
      // GEOS misses nothing beyond our tolerance of 1e-6 in the parameter.
      const bool nearMiss = inters.Count() == 1;
      if (nearMiss) {
        const TIntersect2D& hit = inters[0];
        EXPECT_TRUE(std::fabs(hit.InterThis.Param - 0.5) > 0.5 - 1e-9 ||
                    std::fabs(hit.InterThat.Param - 0.5) > 0.5 - 1e-9)
            << k;
      }
    }
  }
  EXPECT_GT(crossings, 3000);
  GEOS_finish_r(h);
}
#endif

}  // namespace
}  // namespace orvane
