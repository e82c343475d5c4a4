#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>

#include "DxfSplines.h"
#include "splines/SplineBuild.h"
#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane {
namespace {

constexpr double kPi = std::numbers::pi;

// Checks that Sub is the stretch of the closed spline S from PrmFrom on through the seam to
// PrmTo: a composite of the two spline parts whose parameter walks from 0 on, one for one
// with the spline's, wrapping at the seam.
const TGeCompositeCurve2D* ExpectSeamStretch(const TGeSpline2D& S, const TGeCurve2D* Sub, double PrmFrom,
                                             double PrmTo) {
  const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(Sub);
  if (comp == nullptr) {
    ADD_FAILURE() << "not a composite";
    return nullptr;
  }
  EXPECT_EQ(comp->GetCurveCount(), 2);
  const double a = S.GetStartParam(), b = S.GetEndParam();
  const double scale = S.CtrlPointsBoundBlock().Width() + S.CtrlPointsBoundBlock().Height();
  EXPECT_NEAR(comp->GetEndParam() - comp->GetStartParam(), (b - PrmFrom) + (PrmTo - a), 1e-12 * (b - a));
  EXPECT_TRUE(comp->CheckContinuous());
  EXPECT_LE(comp->GetStartPoint().DistanceTo(S.EvalPoint(PrmFrom)), 1e-13 * scale);
  EXPECT_LE(comp->GetEndPoint().DistanceTo(S.EvalPoint(PrmTo)), 1e-13 * scale);
  for (int i = 0; i <= 200; ++i) {
    const double t = comp->GetStartParam() + (comp->GetEndParam() - comp->GetStartParam()) * i / 200.0;
    double u = PrmFrom + t;
    if (u > b) u -= b - a;
    TPoint2D dc, ds;
    const TPoint2D pc = comp->EvalPoint(t, dc);
    const TPoint2D ps = S.EvalPoint(u, ds);
    EXPECT_LE(pc.DistanceTo(ps), 1e-12 * scale) << "t " << t;
    EXPECT_LE(dc.DistanceTo(ds), 1e-9 * (std::hypot(ds.X, ds.Y) + scale)) << "t " << t;
  }
  return comp;
}

TEST(SplineSubCurve, ThroughTheSeamOfACircle) {
  const double r = 3.0;
  const TPoint2D c{2, -1};
  auto s = TGeSpline2D::CreateArc(c, r, 0.3, 2 * kPi);
  const double a = s->GetStartParam(), b = s->GetEndParam();
  const double from = a + 0.8 * (b - a), to = a + 0.15 * (b - a);
  auto sub = s->SubCurve(from, to);
  const TGeCompositeCurve2D* comp = ExpectSeamStretch(*s, sub.get(), from, to);
  ASSERT_NE(comp, nullptr);

  // Flat pieces of the stretch follow it through the seam, end to end.
  TGeSpline2DList pieces;
  s->PolySplit(from, to, pieces, 0.01);
  ASSERT_GE(pieces.size(), 2u);
  EXPECT_EQ(pieces.front()->GetStartPoint(), comp->GetStartPoint());
  EXPECT_EQ(pieces.back()->GetEndPoint(), comp->GetEndPoint());
  double range = 0.0;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    range += pieces[i]->GetEndParam() - pieces[i]->GetStartParam();
    if (i > 0) {
      EXPECT_LE(pieces[i]->GetStartPoint().DistanceTo(pieces[i - 1]->GetEndPoint()), 1e-12);
    }
  }
  EXPECT_NEAR(range, comp->GetEndParam() - comp->GetStartParam(), 1e-12);

  // A stretch that starts on the seam has nothing before it: the plain spline part.
  auto fromSeam = s->SubCurve(b, to);
  ASSERT_NE(fromSeam, nullptr);
  EXPECT_NE(dynamic_cast<const TGeSpline2D*>(fromSeam.get()), nullptr);
  EXPECT_DOUBLE_EQ(fromSeam->GetEndParam(), to);
}

TEST(SplineSubCurve, ThroughTheSeamOfThePeriodicDrawingSpline) {
  const std::filesystem::path file =
      std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "curves" / "cadquery_rational_spline.dxf";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "no shared data at " << file;
  int periodic = 0;
  for (const testing::TDxfSpline& d : testing::ReadDxfSplines(file)) {
    if (!(d.Flags & 2)) continue;
    ++periodic;
    auto s = internal::WrapPeriodicSpline(d.Pts, d.Weights, d.Knots, d.Degree);
    const double a = s->GetStartParam(), b = s->GetEndParam();
    for (double f : {0.55, 0.9, 0.999}) {
      const double from = a + f * (b - a), to = a + (1.0 - f) * 0.5 * (b - a);
      auto sub = s->SubCurve(from, to);
      ExpectSeamStretch(*s, sub.get(), from, to);
    }
  }
  EXPECT_EQ(periodic, 1);
}

// A closed uniform cubic, not rational, through its seam; the rest is a plain part.
TEST(SplineSubCurve, ThroughTheSeamOfAClosedUniformCubic) {
  TDynPoints2D pts;
  for (int i = 0; i < 7; ++i) pts.push_back({4 * std::cos(i * 2 * kPi / 7), 2.5 * std::sin(i * 2 * kPi / 7) + i % 2});
  auto s = internal::WrapPeriodicSpline(pts, TFloatDynArray(7, 1.0), {0, 1, 2, 3, 4, 5, 6, 7}, 3);
  const double from = 5.3, to = 1.6;
  auto sub = s->SubCurve(from, to);
  ExpectSeamStretch(*s, sub.get(), from, to);
  EXPECT_NE(dynamic_cast<const TGeSpline2D*>(s->SubCurve(to, from).get()), nullptr);
}

TEST(SplineSubCurve, BezierCurvesOfPolynomialSplines) {
  // Clamped, with a double interior knot, degrees 1 to 3: each Bezier curve runs over its
  // knot span as the spline does, and neighbours meet.
  const TDynPoints2D pts{{0, 0}, {1, 3}, {3, 4}, {5, 1}, {6, -2}, {8, 0}, {9, 2}};
  const TFloatDynArray inner[3] = {{0.2, 0.3, 0.55, 0.7, 0.8}, {0.3, 0.55, 0.8, 0.8}, {0.3, 0.55, 0.55}};
  for (int p = 1; p <= 3; ++p) {
    TFloatDynArray knots(static_cast<std::size_t>(p + 1), 0.0);
    for (double k : inner[p - 1]) knots.push_back(k);
    knots.resize(knots.size() + static_cast<std::size_t>(p + 1), 1.0);
    // Equal weights: still a polynomial curve.
    auto s = testing::MakeSpline(p, pts, knots, TFloatDynArray(pts.size(), 2.0));
    TFloatDynArray spans;
    for (double k : knots)
      if (spans.empty() || k > spans.back()) spans.push_back(k);
    const auto beziers = internal::SplineToBezierCurves(*s);
    ASSERT_EQ(beziers.size(), spans.size() - 1) << "degree " << p;
    for (std::size_t i = 0; i < beziers.size(); ++i) {
      if (i > 0) {
        EXPECT_EQ(beziers[i]->GetStartPoint(), beziers[i - 1]->GetEndPoint());
      }
      for (double t : {0.0, 0.2, 0.5, 0.9, 1.0}) {
        TPoint2D db, ds;
        const TPoint2D pb = beziers[i]->EvalPoint(t, db);
        const double u = spans[i] + t * (spans[i + 1] - spans[i]);
        EXPECT_LE(pb.DistanceTo(s->EvalPoint(u, ds)), 1e-12) << "degree " << p << " piece " << i << " t " << t;
        // At a knot the spline's derivative is that of the next span, which may differ.
        if (t > 0.0 && t < 1.0) {
          EXPECT_LE(db.DistanceTo(ds * (spans[i + 1] - spans[i])), 1e-10) << "degree " << p << " t " << t;
        }
      }
    }
  }
  // A circle is truly rational, a quartic beyond cubic: neither goes into cubic Beziers.
  EXPECT_TRUE(internal::SplineToBezierCurves(*TGeSpline2D::CreateArc({0, 0}, 1, 0, kPi)).empty());
  auto quartic = testing::MakeSpline(4, TDynPoints2D(5), {0, 0, 0, 0, 0, 1, 1, 1, 1, 1});
  EXPECT_TRUE(internal::SplineToBezierCurves(*quartic).empty());
  // A line's cubic has its control points at the thirds, as the Bezier curve's own line does.
  const auto line = internal::SplineToBezierCurves(*TGeSpline2D::CreateLine({1, 1}, {4, 7}));
  ASSERT_EQ(line.size(), 1u);
  EXPECT_TRUE(line[0]->CheckEqual(*TGeBezier2D::CreateLine(TLine2D({1, 1}, {4, 7})), true));
}

}  // namespace
}  // namespace orvane
