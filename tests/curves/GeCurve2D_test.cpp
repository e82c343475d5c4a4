// The curve base's own behaviour, seen through a curve whose parameter does not run from 0
// to 1, and through the line and the arc where a default is theirs.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

// y = x^2 for the parameter x in [-1, 2]. Only what the base cannot answer is written here;
// a reversed range has no sub-curve.
class TParabola final : public TGeCurve2D {
 public:
  std::string ClassName() const override { return "TParabola"; }
  std::unique_ptr<TGeObject> CreateEmpty() const override { return std::make_unique<TParabola>(); }
  double GetCurveLength() const override { return ArcLength(-1.0, 2.0); }
  TGeInterval GetInterval() const override { return {-1.0, 2.0, 1e-6}; }
  TRect2D BoundBlock() const override { return {-1.0, 0.0, 2.0, 4.0}; }
  TPoint2D EvalPoint(double T) const override { return {T, T * T}; }
  TPoint2D EvalPoint(double T, TPoint2D& Deriv) const override {
    Deriv = {1.0, 2.0 * T};
    return EvalPoint(T);
  }
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance&, double& Param) const override {
    Param = Pnt.X;  // good enough near the curve, which is all these tests ask
    return EvalPoint(Param);
  }
  int GetSamplePointsByChord(double, TDynPoints2D&, TFloatDynArray&) const override { return 0; }
  int GetSamplePointsByChord(double, double, double, TDynPoints2D&, TFloatDynArray&) const override { return 0; }
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override {
    Param = Pnt.X;
    return Tol.PointEquals(Pnt, EvalPoint(Pnt.X));
  }
  using TGeCurve2D::IsOn;
  double ParamOfLength(double, double, const TGeTolerance&) const override { return 0.0; }
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance&) const override { return Pnt.X; }
  std::unique_ptr<TGeCurve2D> SubCurve(double From, double To) const override {
    if (From > To) return nullptr;
    return std::make_unique<TGeLine2D>(EvalPoint(From), EvalPoint(To));  // a chord stands in
  }
  void ReverseDir() override {}
  void TransformBy(const TMatrix2D&) override {}

  // Closed form of the length of y = x^2 between A and B.
  static double ArcLength(double A, double B) {
    auto f = [](double x) { return 0.5 * x * std::sqrt(1 + 4 * x * x) + 0.25 * std::asinh(2 * x); };
    return f(B) - f(A);
  }
};

TEST(GeCurve2D, SamplesSpanTheCurvesOwnRange) {
  const TParabola curve;
  TDynPoints2D pts{{9, 9}};
  TFloatDynArray params;
  // Fewer than two samples count as two: the ends.
  for (int count : {-3, 0, 1}) {
    EXPECT_EQ(curve.GetSamplePoints(count, pts, params), 2);
    ASSERT_EQ(params.size(), 2u);
    EXPECT_EQ(params[0], -1.0);
    EXPECT_EQ(params[1], 2.0);
  }
  // Steps of 3/7 by repeated addition: the last parameter is the sum, not a reset end.
  EXPECT_EQ(curve.GetSamplePoints(8, pts, params), 8);
  double sum = -1.0;
  for (int i = 0; i < 7; ++i) sum += 3.0 / 7.0;
  EXPECT_EQ(params.back(), sum);
  EXPECT_NEAR(params.back(), 2.0, 1e-15);
  for (std::size_t i = 0; i < pts.size(); ++i) EXPECT_EQ(pts[i], curve.EvalPoint(params[i]));
  EXPECT_EQ(curve.GetStartPoint(), TPoint2D(-1, 1));
  EXPECT_EQ(curve.GetEndPoint(), TPoint2D(2, 4));
  // The parameter form of IsOn tests the range, within the given point tolerance.
  EXPECT_TRUE(curve.IsOn(2.0 + 0.5e-3, TGeTolerance(1e-3, 1e-6)));
  EXPECT_FALSE(curve.IsOn(2.0 + 0.5e-3, DefTol));
  EXPECT_FALSE(curve.IsOn(-1.1, DefTol));
}

TEST(GeCurve2D, DefaultsBuiltOnTheSubCurve) {
  const TParabola curve;
  // LengthAt measures the sub-curve (here its chord); none for a reversed range gives 0.
  EXPECT_NEAR(curve.LengthAt(1.0), std::hypot(2.0, 0.0), 1e-15);
  EXPECT_EQ(curve.LengthAt(-2.0), 0.0);
  EXPECT_EQ(curve.BoundBlockOf(TGeInterval(0.0, 1.0)), TRect2D(0, 0, 1, 1));
  orvane::testing::ExpectRaise<EGeometry>([&] { curve.BoundBlockOf(TGeInterval(1.5, 0.25)); },
                                          "Invalid Sub Curve Interval! Start 1.5000 End 0.2500");
  // Splitting outside the range makes nothing and leaves the outputs alone.
  std::unique_ptr<TGeCurve2D> a = std::make_unique<TGeLine2D>();
  std::unique_ptr<TGeCurve2D> b;
  const TGeCurve2D* before = a.get();
  EXPECT_FALSE(curve.SplitAt(2.1, a, b));
  EXPECT_EQ(a.get(), before);
  EXPECT_EQ(b, nullptr);
  EXPECT_FALSE(curve.SplitAt(TPoint2D(0.5, 0.3), a, b, DefTol));
  EXPECT_TRUE(curve.SplitAt(TPoint2D(0.5, 0.25), a, b, DefTol));
  EXPECT_EQ(a->GetEndPoint(), TPoint2D(0.5, 0.25));
  EXPECT_EQ(b->GetStartPoint(), TPoint2D(0.5, 0.25));
  // A curve class without an equality rule equals nothing, itself included.
  EXPECT_FALSE(curve.Equals(&curve));
  EXPECT_FALSE(curve.Equals(nullptr));
  // Ten points of the sub-range [0, 1] lie on the curve; a line beside it does not.
  TParabola other;
  EXPECT_TRUE(curve.Contains(other));
  EXPECT_FALSE(curve.Contains(TGeLine2D(TPoint2D(0, 0), TPoint2D(1, 1))));
  // Normals: unit, on the left of the running direction.
  ExpectNear(curve.NormalLeft(0.0), TPoint2D(0, 1));
  ExpectNear(curve.NormalRight(1.0), TPoint2D(-2, 1) / std::sqrt(5.0), 1e-15);
  EXPECT_EQ(curve.DerivY(1.5), 3.0);
  EXPECT_EQ(curve.EvalY(1.5), 2.25);
  // A kind without a rule of its own is crossed by the roots of its height over the line:
  // the parabola touches the X axis once, at the origin (the moved copy only shifts along X).
  TList<TIntersect2D> inters;
  EXPECT_EQ(TGeLine2D(TPoint2D(-2, 0), TPoint2D(3, 0)).IntersectCurve(curve, inters, DefTol), 1);
  ASSERT_EQ(inters.Count(), 1);
  EXPECT_NEAR(inters[0].InterThis.Param, 0.4, 1e-6);
  EXPECT_NEAR(inters[0].InterThat.Param, 0.0, 1e-6);
  EXPECT_EQ(curve.IsIn(TPoint2D(5, 5), DefTol), -1);  // outside the box: no crossing asked
  TList<double> at{0.0, 2.0};
  EXPECT_EQ(curve.GetPointsAt(at), (TDynPoints2D{{0, 0}, {2, 4}}));
}

TEST(GeCurve2D, IntervalLengthRunsThroughTheSeam) {
  // A full circle of radius 2 (length 4 pi): from 0.9 on to 0.1 the way runs through the
  // seam, a fifth of the circle.
  const TGeCircularArc2D circle(TPoint2D(1, 1), 2.0, 0.3, TwoPi);
  EXPECT_NEAR(circle.GetIntervalLength(0.9, 0.1), 0.8 * Pi, 1e-12);
  EXPECT_NEAR(circle.GetIntervalLength(0.1, 0.9), 3.2 * Pi, 1e-12);
  // A line of length 5 has no seam beyond its ends: the long way is the length less the way.
  const TGeLine2D line(TPoint2D(0, 0), TPoint2D(3, 4));
  EXPECT_NEAR(line.GetIntervalLength(0.8, 0.2), 2.0, 1e-12);
  EXPECT_EQ(TGeLine2D().GetIntervalLength(0.8, 0.2), 0.0);
  // A point line has no direction, so no normal.
  EXPECT_EQ(TGeLine2D(TPoint2D(1, 1), TPoint2D(1, 1)).NormalLeft(0.5), TPoint2D::FZero);
}

TEST(GeCurve2D, TransformsCommuteWithEvaluation) {
  std::mt19937 rng(20);
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  for (int round = 0; round < 200; ++round) {
    TGeLine2D line(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)));
    TGeCircularArc2D arc(TPoint2D(u(rng), u(rng)), std::fabs(u(rng)) + 0.1, u(rng), 0.6 * u(rng));
    std::unique_ptr<TGeCurve2D> line0 = line.CloneAs<TGeCurve2D>();
    std::unique_ptr<TGeCurve2D> arc0 = arc.CloneAs<TGeCurve2D>();
    TMatrix2D m;
    const TPoint2D base(u(rng), u(rng));
    switch (round % 5) {
      case 0: m.SetToRotation(u(rng), base); break;
      case 1: m.SetToScaleAt(0.2 + std::fabs(u(rng)), base); break;
      case 2: m.SetToMirroring(base); break;
      case 3: m.SetToMirroringLine(base, TPoint2D(u(rng), u(rng))); break;
      default: m.SetToTranslation(base); break;
    }
    line.TransformBy(m);
    arc.TransformBy(m);
    const bool mirrors = m.M11 * m.M22 - m.M12 * m.M21 < 0.0;
    EXPECT_EQ(arc.GetIsClockwise(), arc0->GetIsClockwise() != mirrors);
    for (double t = 0.0; t <= 1.0; t += 0.125) {
      ExpectNear(line.EvalPoint(t), m.Transform(line0->EvalPoint(t)), 1e-11);
      ExpectNear(arc.EvalPoint(t), m.Transform(arc0->EvalPoint(t)), 1e-10);
    }
  }
}

TEST(GeCurve2D, ClonesKeepTheirClassAndUnrelatedCopiesDoNothing) {
  const TGeCircularArc2D arc(TPoint2D(1, 2), 3.0, 0.5, -2.0);
  EXPECT_TRUE(arc.Clone()->Equals(&arc));
  EXPECT_EQ(arc.CloneAs<TGeLine2D>(), nullptr);
  TGeLine2D target(TPoint2D(7, 7), TPoint2D(8, 8));
  target.Assign(arc);
  EXPECT_EQ(target.GetLineStart(), TPoint2D(7, 7));
}

}  // namespace
}  // namespace orvane
