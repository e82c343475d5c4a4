// Length, nearest point, box and chord sampling of splines, and recognition of the lines and
// arcs that splines may be, on hand-worked cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/LengthSamples.h"
#include "orvane/foundation/Exception.h"
#include "orvane/splines/GeSpline2D.h"
#include "splines/SplineBuild.h"

namespace orvane {
namespace {

constexpr double kPi = std::numbers::pi;

using orvane::testing::MakeSpline;

// The chain of standard cubics (inner legs 4/3 tan(sweep / 4) R) that CAD systems write for
// an arc, one cubic per Count-th of the sweep, as Bezier pieces (triple knots at the joints).
std::unique_ptr<TGeSpline2D> CubicChain(const TPoint2D& C, double R, double Start, double Sweep, int Count) {
  TDynPoints2D pts;
  TFloatDynArray knots{0, 0, 0, 0};
  const double h = Sweep / Count, k = 4.0 / 3.0 * std::tan(h / 4) * R;
  for (int i = 0; i < Count; ++i) {
    const double a = Start + h * i, b = a + h;
    const TPoint2D p0 = C + TPoint2D(std::cos(a), std::sin(a)) * R, p3 = C + TPoint2D(std::cos(b), std::sin(b)) * R;
    if (i == 0) pts.push_back(p0);
    pts.push_back(p0 + TPoint2D(-std::sin(a), std::cos(a)) * k);
    pts.push_back(p3 - TPoint2D(-std::sin(b), std::cos(b)) * k);
    pts.push_back(p3);
    for (int j = 0; j < (i + 1 < Count ? 3 : 4); ++j) knots.push_back(i + 1);
  }
  return MakeSpline(3, pts, knots);
}

TEST(SplineQueries, LineAndQuarterCircleByHand) {
  auto line = TGeSpline2D::CreateLine({0, 0}, {3, 4});
  const double t0 = line->GetStartParam(), t1 = line->GetEndParam(), mid = 0.5 * (t0 + t1);
  EXPECT_NEAR(line->GetCurveLength(), 5.0, 1e-14);
  double u = -1;
  EXPECT_TRUE(line->GetClosedPointTo({-0.5, 3.5}, DefTol, u).Equals({1.5, 2}, 1e-14));
  EXPECT_NEAR(u, mid, 1e-14);
  EXPECT_TRUE(line->GetClosedPointTo({9, 9}, DefTol, u).Equals({3, 4}, 0.0));
  EXPECT_EQ(u, t1);

  // The length is integrated, so a small quarter circle is as exact as a large one.
  for (const double r : {0.05, 1.0, 1000.0}) {
    auto q = TGeSpline2D::CreateArc({0, 0}, r, 0.0, kPi / 2);
    EXPECT_NEAR(q->GetCurveLength(), kPi / 2 * r, 1e-12 * r);
    const double at = q->ParamOfLength(q->GetStartParam(), kPi / 6 * r, DefTol);
    EXPECT_TRUE(q->EvalPoint(at).Equals(TPoint2D(std::sqrt(3.0) / 2, 0.5) * r, 1e-12 * r));
    EXPECT_NEAR(q->LengthAt(at), kPi / 6 * r, 1e-12 * r);
    // The box is exact, not sampled.
    const TRect2D box = q->BoundBlock();
    EXPECT_NEAR(box.XMax, r, 1e-15 * r);
    EXPECT_NEAR(box.YMax, r, 1e-15 * r);
  }
  auto q = TGeSpline2D::CreateArc({0, 0}, 1.0, 0.0, kPi / 2);
  EXPECT_TRUE(q->GetClosedPointTo({2, 2}, DefTol, u).Equals({std::sqrt(0.5), std::sqrt(0.5)}, 1e-15));
  EXPECT_NEAR(q->GetClosedPointTo({0, 0}, DefTol, u).Mag(), 1.0, 1e-15);
  EXPECT_TRUE(q->IsOn({0.6, 0.8}, DefTol, u));
  EXPECT_FALSE(q->IsOn({0.6, 0.81}, DefTol, u));
  EXPECT_NEAR(q->EvalPoint(u).X, 0.6 / std::hypot(0.6, 0.81), 1e-15);
  // The pieces kept for the search follow a change of the spline.
  q->TranslateBy({10, 0});
  EXPECT_TRUE(q->GetClosedPointTo({12, 2}, DefTol, u).Equals({10 + std::sqrt(0.5), std::sqrt(0.5)}, 1e-14));
  EXPECT_EQ(q->GetRoughBoundBlock(), TRect2D(10, 0, 11, 1));

  // The length table: exact at its samples, interpolation within 0.01.
  auto c = TGeSpline2D::CreateArc({0, 0}, 5.0, 0.0, 2 * kPi);
  const TLengthSamples& table = c->GetLengthSamples();
  ASSERT_GE(table.Count(), 2);
  EXPECT_NEAR(table.Last().Y, 10 * kPi, 1e-12);
  for (int i = 0; i < 50; ++i) {
    const double t = c->GetStartParam() + (c->GetEndParam() - c->GetStartParam()) * i / 50;
    EXPECT_NEAR(table.LengthAtParam(t), c->LengthAt(t), 0.0100001);
  }
  // A closed spline wraps past its end.
  const double at = c->ParamOfLength(c->GetStartParam(), 7.5 * kPi, DefTol);
  EXPECT_NEAR(c->LengthAt(c->ParamOfLength(at, 5 * kPi, DefTol)), 2.5 * kPi, 1e-12);
}

TEST(SplineQueries, ChordSamplesStayWithinTheErrorAndRise) {
  auto c = TGeSpline2D::CreateArc({1, 2}, 10.0, 0.3, 2 * kPi);
  TDynPoints2D pts;
  TFloatDynArray params;
  const int n = c->GetSamplePointsByChord(0.01, pts, params);
  // Equal chords of sag 0.01 need 2 pi / (2 acos(1 - 0.001)) = 70.3 of them.
  EXPECT_GE(n, 72);
  EXPECT_LE(n, 78);
  for (int i = 1; i < n; ++i) {
    ASSERT_GT(params[std::size_t(i)], params[std::size_t(i - 1)]);
    const TPoint2D a = pts[std::size_t(i - 1)], b = pts[std::size_t(i)];
    const TPoint2D m = c->EvalPoint(0.5 * (params[std::size_t(i)] + params[std::size_t(i - 1)]));
    EXPECT_LE(std::fabs((b - a).CrossMul(m - a)) / a.DistanceTo(b), 0.01);
  }
  // A stretch, and a stretch through the seam.
  const double lo = c->GetStartParam(), hi = c->GetEndParam(), q = (hi - lo) / 4;
  EXPECT_LE(c->GetSamplePointsByChord(lo + q, hi - q, 0.01, pts, params), 40);
  EXPECT_EQ(params.front(), lo + q);
  EXPECT_EQ(params.back(), hi - q);
  EXPECT_GE(c->GetSamplePointsByChord(hi - q, lo + q, 0.01, pts, params), 36);
  // A straight spline needs its two ends only.
  EXPECT_EQ(TGeSpline2D::CreateLine({0, 0}, {5, 5})->GetSamplePointsByChord(1e-9, pts, params), 2);
}

TEST(SplineQueries, BadInputGivesNeutralAnswersOrNamedErrors) {
  auto dot = MakeSpline(3, {{1, 1}, {1, 1}, {1, 1}, {1, 1}}, {0, 0, 0, 0, 1, 1, 1, 1});
  double u = -1;
  EXPECT_EQ(dot->GetCurveLength(), 0.0);
  EXPECT_TRUE(dot->GetClosedPointTo({5, 5}, DefTol, u).Equals({1, 1}, 0.0));
  EXPECT_EQ(dot->ParamOfLength(0.0, 1.0, DefTol), 1.0);
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_EQ(dot->GetSamplePointsByChord(0.01, pts, params), 2);
  std::unique_ptr<TGeLine2D> line;
  std::unique_ptr<TGeCircularArc2D> arc;
  EXPECT_FALSE(dot->IsLine(line) || dot->IsLine(line, 0.1) || dot->IsArc(arc) || dot->IsArc(arc, 0.1));
  EXPECT_EQ(dot->CalcDegradeCurve(), nullptr);
  auto q = TGeSpline2D::CreateArc({0, 0}, 1.0, 0.0, kPi / 2);
  EXPECT_THROW(q->GetClosedPointTo({std::nan(""), 0}, DefTol, u), EParamError);
  EXPECT_THROW(q->GetSamplePointsByChord(0.0, pts, params), EParamError);
  auto flat = MakeSpline(1, {{0, 0}, {1, 1}}, {2, 2, 2, 2});
  EXPECT_THROW(flat->GetCurveLength(), EGeometry);
  EXPECT_FALSE(flat->IsArc(arc, 0.1));
}

TEST(SplineRecognition, ArcsOfEveryFormAndSweepComeBackExactly) {
  for (const double r : {0.01, 1.0, 1000.0}) {
    for (const double sweep : {kPi / 2, -kPi / 2, kPi, -kPi, 2 * kPi, -2 * kPi, 3.5, -5.0, 0.1}) {
      const TPoint2D c(3 * r, -7 * r);
      auto quad = TGeSpline2D::CreateArc(c, r, 0.4, sweep);
      // The same curve as a rational cubic: each piece raised by one degree.
      const int pieces = (quad->GetCtrlPointCount() - 1) / 2;
      TDynPoints2D pts{quad->GetCtrlPoint(0)};
      TFloatDynArray w{quad->GetWeight(0)}, knots{0, 0, 0, 0};
      for (int i = 0; i < pieces; ++i) {
        const TPoint3D a = quad->GetCtrlPointW(2 * i), b = quad->GetCtrlPointW(2 * i + 1), e = quad->GetCtrlPointW(2 * i + 2);
        for (const TPoint3D& h : {(a + b * 2.0) * (1.0 / 3.0), (b * 2.0 + e) * (1.0 / 3.0), e}) {
          pts.push_back({h.X / h.Z, h.Y / h.Z});
          w.push_back(h.Z);
        }
        for (int j = 0; j < (i + 1 < pieces ? 3 : 4); ++j) knots.push_back(i + 1);
      }
      auto cubic = MakeSpline(3, pts, knots, w);
      for (const TGeSpline2D* s : {quad.get(), cubic.get()}) {
        std::unique_ptr<TGeCircularArc2D> arc;
        ASSERT_TRUE(s->IsArc(arc)) << r << " " << sweep << " degree " << s->GetDegree();
        EXPECT_LE(arc->GetCenter().DistanceTo(c), 1e-9 * r);
        EXPECT_NEAR(arc->GetRadius(), r, 1e-9 * r);
        EXPECT_NEAR(arc->GetSweepAngle(), sweep, 1e-9);
        EXPECT_TRUE(arc->GetStartPoint().Equals(s->GetStartPoint(), 1e-9 * r));
        EXPECT_TRUE(arc->CheckEqual(*s, true));
        auto simpler = s->CalcDegradeCurve();
        EXPECT_NE(dynamic_cast<TGeCircularArc2D*>(simpler.get()), nullptr);
      }
    }
  }
}

TEST(SplineRecognition, LinesChainsAndWhatIsNeither) {
  std::unique_ptr<TGeLine2D> line;
  std::unique_ptr<TGeCircularArc2D> arc;
  for (const double scale : {1e-3, 1.0, 1e3}) {
    auto l = TGeSpline2D::CreateLine(TPoint2D(1, 2) * scale, TPoint2D(4, 6) * scale);
    ASSERT_TRUE(l->IsLine(line));
    EXPECT_TRUE(line->GetEndPoint().Equals(TPoint2D(4, 6) * scale, 0.0));
    EXPECT_NE(dynamic_cast<TGeLine2D*>(l->CalcDegradeCurve().get()), nullptr);
    EXPECT_FALSE(l->IsArc(arc));
    // CAD chains of 1 to 12 standard cubics (30 to 90 degrees each): arcs, at any scale.
    for (const int count : {1, 2, 3, 5, 12}) {
      const double sweep = (count > 3 ? -1.0 : 1.0) * std::min(kPi / 3 * count, 2 * kPi);
      auto chain = CubicChain(TPoint2D(5, 1) * scale, 2 * scale, 1.0, sweep, count);
      ASSERT_TRUE(chain->IsArc(arc)) << count << " " << scale;
      EXPECT_LE(arc->GetCenter().DistanceTo(TPoint2D(5, 1) * scale), 1e-9 * scale);
      EXPECT_NEAR(arc->GetSweepAngle(), sweep, 1e-9);
    }
  }
  // The same chain with double knots, its joint point implied midway between its neighbours.
  auto chain = CubicChain({0, 0}, 1.0, 0.0, kPi, 2);
  TDynPoints2D pts = chain->GetCtrlPoints();
  pts.erase(pts.begin() + 3);
  ASSERT_TRUE(MakeSpline(3, pts, {0, 0, 0, 0, 1, 1, 2, 2, 2, 2})->IsArc(arc));
  EXPECT_NEAR(arc->GetSweepAngle(), kPi, 1e-9);
  // Control points overshooting the end: the curve runs back, not a line.
  EXPECT_FALSE(MakeSpline(3, {{0, 0}, {2, 0}, {-1, 0}, {1, 0}}, {0, 0, 0, 0, 1, 1, 1, 1})->IsLine(line));
  // The bend of (0,0) (1,h) (2,h) (3,0) is 0.75 h on the curve, h on the control polygon.
  auto bent = MakeSpline(3, {{0, 0}, {1, 0.01}, {2, 0.01}, {3, 0}}, {0, 0, 0, 0, 1, 1, 1, 1});
  EXPECT_TRUE(bent->IsLine(line, 0.0075 + 1e-12));
  EXPECT_FALSE(bent->IsLine(line, 0.0075 - 1e-9));
  // The standard quarter cubic lies between R and R + 2.725e-4 R from its centre: no circle
  // comes closer to all of it than about half that; the arc given back holds the Tol.
  auto quarter = CubicChain({0, 0}, 10.0, 0.0, kPi / 2, 1);
  ASSERT_TRUE(quarter->IsArc(arc, 2.73e-3));
  for (int i = 0; i <= 1000; ++i)
    EXPECT_LE(std::fabs(quarter->EvalPoint(i / 1000.0).DistanceTo(arc->GetCenter()) - arc->GetRadius()), 2.73e-3);
  EXPECT_FALSE(quarter->IsArc(arc, 1.3e-3));
  // An S, a near-arc whose inner legs are 1% long, equal weights: none is an arc.
  EXPECT_FALSE(MakeSpline(3, {{0, 0}, {1, 1}, {2, -1}, {3, 0}}, {0, 0, 0, 0, 1, 1, 1, 1})->IsArc(arc));
  auto longLegs = CubicChain({0, 0}, 1.0, 0.0, kPi / 2, 1);
  longLegs->SetCtrlPoint(1, {1, 0.5523 * 1.01});
  longLegs->SetCtrlPoint(2, {0.5523 * 1.01, 1});
  EXPECT_FALSE(longLegs->IsArc(arc));
  EXPECT_FALSE(MakeSpline(2, {{0, 0}, {1, 1}, {2, 0}}, {0, 0, 0, 1, 1, 1}, {0.5, 0.5, 0.5})->IsArc(arc));
  // A near-flat arc (box 2700 times longer than high) is not taken for one, in any unit;
  // asked with a tolerance, it is.
  for (const double r : {1.0, 1000.0}) {
    auto flat = TGeSpline2D::CreateArc({0, 0}, r, -0.0015, 0.003);
    EXPECT_FALSE(flat->IsArc(arc));
    EXPECT_TRUE(flat->IsArc(arc, 1e-9 * r));
  }
  EXPECT_TRUE(MakeSpline(1, {{0, 0}, {0, 0}}, {0, 0, 1, 1})->CheckCtrlPointsCollinear(0.0));
  EXPECT_FALSE(MakeSpline(2, {{0, 0}, {1, 1}, {2, 0}}, {0, 0, 0, 1, 1, 1})->CheckCtrlPointsCollinear(0.5));
  EXPECT_TRUE(TGeSpline2D::CreateArc({0, 0}, 10.0, 0.0, 2.0)->IsSampleArc(arc));
  EXPECT_NEAR(arc->GetRadius(), 10.0, 1e-3);
  EXPECT_FALSE(MakeSpline(2, {{0, 0}, {1, 1}, {2, 0}}, {0, 0, 0, 1, 1, 1})->IsSampleArc(arc));
}

}  // namespace
}  // namespace orvane
