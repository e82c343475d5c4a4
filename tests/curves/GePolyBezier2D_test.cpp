// The poly-Bezier: storage rule and its error, building by lines, arcs and joins, arcs as
// cubics, sub-curves across joints and the seam, caches under change, and OCCT's B-spline of
// the same poles as the reference for points and lengths.

#include "orvane/curves/GePolyBezier2D.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/curves/GeStrings.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_OCCT
#include <GCPnts_AbscissaPoint.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;
using orvane::testing::ExpectRaise;

TEST(GePolyBezier2D, StorageRuleAndBuilding) {
  EXPECT_EQ(TGePolyBezier2D(TDynPoints2D{}).GetSegmentCount(), 0);
  for (int n : {1, 2, 3, 5, 6}) {
    ExpectRaise<EGeometry>([&] { TGePolyBezier2D(TDynPoints2D(static_cast<std::size_t>(n))); },
                           "The Length Of Points Array may Cause Error! Required Length is 3*k + 1 (k>0)");
  }
  EXPECT_EQ(TGePolyBezier2D(TDynPoints2D(4)).GetSegmentCount(), 1);
  EXPECT_EQ(TGePolyBezier2D(TDynPoints2D(7)).GetSegmentCount(), 2);
  TGePolyBezier2D curve;
  EXPECT_FALSE(curve.AddLine(TPoint2D(1, 1)));
  EXPECT_EQ(curve.GetPointCount(), 0);
  EXPECT_EQ(curve.GetStartPoint(), TPoint2D(MaxDouble, MaxDouble));
  EXPECT_EQ(curve.GetCurveLength(), 0.0);
  EXPECT_TRUE(curve.AddLine(TLine2D(TPoint2D(0, 0), TPoint2D(3, 0))));
  EXPECT_TRUE(curve.AddLine(TPoint2D(3, 4)));
  EXPECT_EQ(curve.GetPointsArray(), (TDynPoints2D{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 0}, {3, 4}, {3, 4}}));
  EXPECT_NEAR(curve.GetCurveLength(), 7.0, 1e-12);
  // A piece that does not start at the end is refused and changes nothing.
  const TDynPoints2D before = curve.GetPointsArray();
  EXPECT_FALSE(curve.ConnectWith(TBezierSegment2D(TPoint2D(3, 4.01), TPoint2D(4, 4), TPoint2D(5, 4), TPoint2D(6, 4))));
  TGePolyBezier2D apart(TDynPoints2D{{9, 9}, {9, 9}, {9, 9}, {9, 9}});
  EXPECT_FALSE(curve.ConnectWith(&apart));
  EXPECT_FALSE(curve.ConnectWith(nullptr));
  EXPECT_EQ(curve.GetPointsArray(), before);
  TGePolyBezier2D tail(TDynPoints2D{{3, 4}, {4, 4}, {5, 4}, {6, 4}});
  EXPECT_TRUE(curve.ConnectWith(&tail));
  EXPECT_EQ(curve.GetSegmentCount(), 3);
  TDynPoints2D between{{7, 7}};
  curve.GetPointsBetween(2, 1, between);
  EXPECT_EQ(between, (TDynPoints2D{{7, 7}}));
  curve.GetPointsBetween(1, 3, between);
  EXPECT_EQ(between.size(), 7u);
  EXPECT_EQ(between.front(), TPoint2D(3, 0));
  EXPECT_EQ(curve.ToString().substr(0, Format(SGeKnotCountFmt, 10).size()), Format(SGeKnotCountFmt, 10));
  EXPECT_NE(curve.ToString().find("\r\n   3.000,    4.000 \r\n"), std::string::npos);
}

TEST(GePolyBezier2D, ArcsBecomeCubicsInTheirSense) {
  // A half turn: four eighth pieces; a hair over an eighth: one.
  EXPECT_EQ(TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, Pi))->GetSegmentCount(), 4);
  EXPECT_EQ(TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, Pi / 4 + 0.5e-6))->GetSegmentCount(), 1);
  // Both senses, any start: every cubic keeps to the circle within 4.3e-6 of the radius.
  for (const double sweep : {TwoPi, -TwoPi, 2.0, -2.0}) {
    const double r = 7.5;
    const TPoint2D c(3, -2);
    const std::unique_ptr<TGePolyBezier2D> curve = TGePolyBezier2D::CreateArc(TArc2D(c, r, 0.7, sweep));
    ExpectNear(curve->GetStartPoint(), c + TPoint2D(std::cos(0.7), std::sin(0.7)) * r, 1e-12);
    ExpectNear(curve->GetEndPoint(), c + TPoint2D(std::cos(0.7 + sweep), std::sin(0.7 + sweep)) * r, 1e-12);
    for (double t = 0; t <= curve->GetSegmentCount(); t += 1.0 / 64) {
      EXPECT_NEAR(curve->EvalPoint(t).DistanceTo(c), r, 4.3e-6 * r);
    }
    // The standard cubic runs slightly long: about 2.2e-6 of the arc.
    EXPECT_NEAR(curve->GetCurveLength(), r * std::fabs(sweep), 3e-6 * r * std::fabs(sweep));
    // The cubics run the arc's way round.
    TPoint2D d;
    const TPoint2D p = curve->EvalPoint(0.5, d);
    EXPECT_EQ((p - c).CrossMul(d) > 0, sweep > 0);
  }
  EXPECT_TRUE(TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, -TwoPi))->GetIsClockwise());
  EXPECT_FALSE(TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, TwoPi))->GetIsClockwise());
  EXPECT_THROW(TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, 20.0)), EGeometry);
}

TEST(GePolyBezier2D, SubCurvesAndLengths) {
  const std::unique_ptr<TGePolyBezier2D> circle = TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 2.0, 0.0, TwoPi));
  ASSERT_TRUE(circle->GetIsClosed());
  auto sub = [&](double A, double B) {
    return std::unique_ptr<TGePolyBezier2D>(dynamic_cast<TGePolyBezier2D*>(circle->SubCurve(A, B).release()));
  };
  // Within one segment: one segment with the right ends.
  std::unique_ptr<TGePolyBezier2D> s = sub(2.25, 2.75);
  EXPECT_EQ(s->GetSegmentCount(), 1);
  ExpectNear(s->GetStartPoint(), circle->EvalPoint(2.25), 1e-14);
  ExpectNear(s->GetEndPoint(), circle->EvalPoint(2.75), 1e-14);
  // From a joint: the whole next segment first; to a joint: the whole previous one last.
  s = sub(1.0, 3.0);
  EXPECT_EQ(s->GetSegmentCount(), 2);
  EXPECT_EQ(s->GetPointsArray().front(), circle->GetPointsArray()[3]);
  EXPECT_EQ(s->GetPointsArray().back(), circle->GetPointsArray()[9]);
  // Through the seam on a closed curve; refused on an open one.
  s = sub(7.5, 0.5);
  EXPECT_EQ(s->GetSegmentCount(), 2);
  ExpectNear(s->EvalPoint(1.0), TPoint2D(2, 0), 1e-12);
  EXPECT_NEAR(s->GetCurveLength(), circle->GetCurveLength() / 8, 1e-12);
  const std::unique_ptr<TGePolyBezier2D> half = TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 2.0, 0.0, Pi));
  EXPECT_FALSE(half->SubCurve(3.5, 0.5));
  EXPECT_FALSE(half->SubCurve(1.0, 1.0));
  EXPECT_FALSE(half->SubCurve(1.0, 4.5));
  // Lengths held to the range; the walk and the length agree.
  EXPECT_DOUBLE_EQ(half->LengthAt(9.0), half->GetCurveLength());
  const double at = half->ParamOfLength(0.3, 1.7, DefTol);
  EXPECT_NEAR(half->LengthAt(at) - half->LengthAt(0.3), 1.7, 1e-9);
}

TEST(GePolyBezier2D, CachesFollowEveryChange) {
  TGePolyBezier2D curve(TDynPoints2D{{0, 0}, {1, 2}, {2, 2}, {3, 0}, {4, -2}, {5, -2}, {6, 0}});
  auto expectFresh = [&] {
    const TGePolyBezier2D fresh(curve.GetPointsArray());
    for (double t = 0; t <= curve.GetSegmentCount(); t += 0.125) {
      EXPECT_EQ(curve.EvalPoint(t), fresh.EvalPoint(t)) << t;
    }
    EXPECT_EQ(curve.GetCurveLength(), fresh.GetCurveLength());
    EXPECT_EQ(curve.BoundBlock(), fresh.BoundBlock());
  };
  curve.GetCurveLength();
  curve.ReverseDir();
  expectFresh();
  TMatrix2D m;
  m.SetToScaleAt(2.0, TPoint2D(1, 1));
  curve.TransformBy(m);
  expectFresh();
  EXPECT_TRUE(curve.AddLine(curve.GetEndPoint() + TPoint2D(1, 1)));
  expectFresh();
  curve.Assign(TGePolyBezier2D(TDynPoints2D{{5, 5}, {6, 5}, {7, 5}, {8, 5}}));
  expectFresh();
  TGePolyBezier2D empty;
  empty.GetCurveLength();
  EXPECT_TRUE(empty.AddPoints(TDynPoints2D{{1, 1}, {2, 1}, {3, 1}, {4, 1}}));
  EXPECT_NEAR(empty.GetCurveLength(), 3.0, 1e-12);
  curve.Initialize(4);
  expectFresh();
}

#ifdef ORVANE_HAVE_OCCT
// The same poles as a cubic B-spline with triple interior knots 1, 2, ..., whose parameter
// runs exactly as the poly-Bezier's.
Handle(Geom2d_BSplineCurve) ToOcct(const TGePolyBezier2D& C) {
  const int n = C.GetSegmentCount();
  TColgp_Array1OfPnt2d poles(1, C.GetPointCount());
  for (int i = 0; i < C.GetPointCount(); ++i) poles.SetValue(i + 1, gp_Pnt2d(C.GetPoint(i).X, C.GetPoint(i).Y));
  TColStd_Array1OfReal knots(1, n + 1);
  TColStd_Array1OfInteger mults(1, n + 1);
  for (int i = 0; i <= n; ++i) {
    knots.SetValue(i + 1, i);
    mults.SetValue(i + 1, i == 0 || i == n ? 4 : 3);
  }
  return new Geom2d_BSplineCurve(poles, knots, mults, 3);
}

TEST(GePolyBezier2D, PointsAndLengthsAgreeWithOcctSpline) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(-5.0, 5.0);
  for (int k = 0; k < 50; ++k) {
    TDynPoints2D pts{{u(rng), u(rng)}};
    const int segs = 1 + k % 6;
    for (int i = 0; i < 3 * segs; ++i) pts.emplace_back(u(rng), u(rng));
    const TGePolyBezier2D curve(pts);
    const Handle(Geom2d_BSplineCurve) spline = ToOcct(curve);
    for (double t = 0; t <= segs; t += 0.1) {
      const gp_Pnt2d p = spline->Value(t);
      ExpectNear(curve.EvalPoint(t), TPoint2D(p.X(), p.Y()), 1e-12);
    }
    Geom2dAdaptor_Curve adaptor(spline);
    const double len = GCPnts_AbscissaPoint::Length(adaptor, 1e-12);
    EXPECT_NEAR(curve.GetCurveLength(), len, 1e-9 * len);
    const double t = 0.37 * segs;
    EXPECT_NEAR(curve.LengthAt(t), GCPnts_AbscissaPoint::Length(adaptor, 0.0, t, 1e-12), 1e-9 * len);
  }
}
#endif

}  // namespace
}  // namespace orvane
