// The cubic Bezier curve object: sub-curves cut at the ends, lengths, equality, checked by
// hand and against OCCT's Bezier curve.

#include "orvane/curves/GeBezier2D.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/curves/GeLine2D.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_OCCT
#include "support/OcctBezier.h"
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

const TGeBezier2D Cubic(TPoint2D(0, 0), TPoint2D(1, 2), TPoint2D(3, 2), TPoint2D(4, 0));

TEST(GeBezier2D, SubCurvesAreCutAtTheEnds) {
  // The whole range is a copy; an empty or reversed range is nil.
  std::unique_ptr<TGeCurve2D> whole = Cubic.SubCurve(0.0, 1.0);
  ASSERT_TRUE(whole);
  EXPECT_TRUE(whole->CheckEqual(Cubic, true));
  EXPECT_FALSE(Cubic.SubCurve(0.25, 0.25));
  EXPECT_FALSE(Cubic.SubCurve(0.75, 0.25));
  EXPECT_FALSE(Cubic.SubCurve(1.5, 2.0));
  // A middle stretch runs between the points at its bounds, and is the same curve there.
  std::unique_ptr<TGeCurve2D> mid = Cubic.SubCurve(0.25, 0.75);
  ExpectNear(mid->GetStartPoint(), Cubic.EvalPoint(0.25), 1e-14);
  ExpectNear(mid->GetEndPoint(), Cubic.EvalPoint(0.75), 1e-14);
  ExpectNear(mid->EvalPoint(0.5), Cubic.EvalPoint(0.5), 1e-14);
  // A range past an end is cut at that end.
  EXPECT_TRUE(Cubic.SubCurve(-1.0, 0.5)->CheckEqual(*Cubic.SubCurve(0.0, 0.5), true));
  EXPECT_TRUE(Cubic.SubCurve(0.5, 2.0)->CheckEqual(*Cubic.SubCurve(0.5, 1.0), true));
  // Lengths within the range are OCCT's business below: the pieces add up, and LengthAt is
  // held to the range.
  EXPECT_EQ(Cubic.LengthAt(-3.0), 0.0);
  EXPECT_DOUBLE_EQ(Cubic.LengthAt(1.0), Cubic.GetCurveLength());
  EXPECT_NEAR(Cubic.LengthAt(0.3), Cubic.SubCurve(0.0, 0.3)->GetCurveLength(), 1e-12);
  // The box of a stretch is that of the sub-curve: the top of the arch lies inside it.
  EXPECT_NEAR(Cubic.BoundBlockOf(TGeInterval(0.25, 0.75)).YMax, 1.5, 1e-14);
  orvane::testing::ExpectRaise<EGeometry>([&] { Cubic.BoundBlockOf(TGeInterval(0.5, 0.5)); },
                                          "Invalid Sub Curve Interval! Start 0.5000 End 0.5000");
}

TEST(GeBezier2D, EqualityCloningAndBadInput) {
  TGeBezier2D reversed(Cubic.GetBezierSegment());
  reversed.ReverseDir();
  EXPECT_FALSE(reversed.CheckEqual(Cubic, true));
  EXPECT_TRUE(reversed.CheckEqual(Cubic, false));
  // Another class never equals a Bezier, not even the line that a straight cubic runs along.
  const TLine2D chord(TPoint2D(0, 0), TPoint2D(3, 0));
  const std::unique_ptr<TGeBezier2D> straight = TGeBezier2D::CreateLine(chord);
  const TGeLine2D line(chord.P1, chord.P2);
  EXPECT_FALSE(straight->CheckEqual(line, false));
  EXPECT_FALSE(line.CheckEqual(*straight, false));
  ExpectNear(straight->EvalPoint(0.5), TPoint2D(1.5, 0), 1e-15);
  EXPECT_EQ(Cubic.ToString(), "P0: " + TPoint2D(0, 0).ToString() + ", P1: " + TPoint2D(1, 2).ToString() +
                                  ", P2: " + TPoint2D(3, 2).ToString() + ", P3: " + TPoint2D(4, 0).ToString());
  EXPECT_THROW(TGeBezier2D(TPoint2D(0, 0), TPoint2D(NAN, 0), TPoint2D(1, 1), TPoint2D(2, 0)), EGeometry);
}

#ifdef ORVANE_HAVE_OCCT
TEST(GeBezier2D, LengthsAndWalksAgreeWithOcct) {
  std::mt19937 rng(21);
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  std::uniform_real_distribution<double> share(0.05, 0.95);
  for (int k = 0; k < 200; ++k) {
    const TBezierSegment2D b(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)),
                             TPoint2D(u(rng), u(rng)));
    const TGeBezier2D curve(b);
    const double len = orvane::testing::OcctLength(b);
    EXPECT_NEAR(curve.GetCurveLength(), len, 1e-9 * len);
    // The walk to a share of the length lands where OCCT's abscissa point does.
    Geom2dAdaptor_Curve occt(orvane::testing::ToOcct(b));
    const double s = share(rng) * len;
    GCPnts_AbscissaPoint ap(1e-12, occt, s, 0.0);
    ASSERT_TRUE(ap.IsDone());
    ExpectNear(curve.EvalPoint(curve.ParamOfLength(s, DefTol)), curve.EvalPoint(ap.Parameter()), 1e-6);
    EXPECT_NEAR(curve.LengthAt(ap.Parameter()), s, 1e-8 * len);
  }
}
#endif

}  // namespace
}  // namespace orvane
