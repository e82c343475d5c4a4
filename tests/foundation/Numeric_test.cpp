// Quadrature, roots, minimisation and the Bernstein squared distance against closed forms.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Numeric.h"

using namespace orvane;

namespace {

std::vector<double> Roots(const TNumericFunction& F, const TNumericFunction& DF, double A, double B,
                          double Tol = 1e-9) {
  const auto list = TNumeric::NewtonRaphsonRoots(TGeInterval(A, B), Tol, F, DF);
  return {list->begin(), list->end()};
}

}  // namespace

TEST(Numeric, GaussQuadratureIsExactToItsDegree) {
  // N points integrate polynomials of degree 2N - 1 exactly.
  for (int n : {1, 2, 3, 7, 24, 64, 80}) {
    const int deg = 2 * n - 1;
    const double got = TNumeric::GaussQuadrature([deg](double x) { return std::pow(x, deg); }, TGeInterval(0, 1), n);
    EXPECT_NEAR(got, 1.0 / (deg + 1), 1e-14) << n;
  }
  EXPECT_NEAR(TNumeric::GaussQuadrature([](double x) { return std::sin(x); }, TGeInterval(0, Pi), 24), 2.0, 1e-15);
  EXPECT_NEAR(TNumeric::GaussQuadrature([](double x) { return x; }, TGeInterval(2, 0), 3), -2.0, 1e-15);
  EXPECT_THROW(TNumeric::GaussQuadrature([](double) { return 1.0; }, TGeInterval(0, 1), 0), EParamError);
}

TEST(Numeric, NewtonRaphsonFindsSimpleAndDoubleRootsOnce) {
  auto cubic = [](double x) { return (x - 0.2) * (x - 0.5) * (x - 0.9); };
  auto dcubic = [](double x) { return (x - 0.5) * (x - 0.9) + (x - 0.2) * (x - 0.9) + (x - 0.2) * (x - 0.5); };
  std::vector<double> r = Roots(cubic, dcubic, 0, 1);
  ASSERT_EQ(r.size(), 3U);
  EXPECT_NEAR(r[0], 0.2, 1e-14);
  EXPECT_NEAR(r[1], 0.5, 1e-14);
  EXPECT_NEAR(r[2], 0.9, 1e-14);
  // A double root, between sample points, and a tangency that dips 1e-12 below the axis:
  // each is one root.
  for (double dip : {0.0, 1e-12, -1e-12}) {
    auto f = [dip](double x) { return (x - 0.3131) * (x - 0.3131) * (x - 0.8) * 4.0 - dip; };
    auto df = [](double x) { return 4.0 * (2 * (x - 0.3131) * (x - 0.8) + (x - 0.3131) * (x - 0.3131)); };
    r = Roots(f, df, 0, 1);
    ASSERT_EQ(r.size(), 2U) << dip;
    EXPECT_NEAR(r[0], 0.3131, 1e-5);
    EXPECT_NEAR(r[1], 0.8, 2e-12);  // the dip moves it by 1e-12 / 0.95
  }
  // Many roots, one at each end, and either order of the bounds.
  r = Roots([](double x) { return std::sin(20 * x); }, [](double x) { return 20 * std::cos(20 * x); }, 6 * Pi / 20, 0);
  ASSERT_EQ(r.size(), 7U);
  for (int k = 0; k < 7; ++k) EXPECT_NEAR(r[static_cast<std::size_t>(k)], k * Pi / 20, 1e-14);
  EXPECT_TRUE(Roots([](double x) { return x * x + 1; }, [](double x) { return 2 * x; }, -3, 3).empty());
}

TEST(Numeric, BrentFindsTheMinimum) {
  double x = -1, fx = -1;
  ASSERT_TRUE(TBrent::BoundedBrentMinimum([](double t) { return std::cos(t); }, TGeInterval(2, 4), x, fx, 1e-8, 100));
  EXPECT_NEAR(x, Pi, 1e-7);
  EXPECT_NEAR(fx, -1.0, 1e-14);
  // A minimum at the bound is approached to within the tolerance.
  ASSERT_TRUE(TBrent::BoundedBrentMinimum([](double t) { return t; }, TGeInterval(0, 1), x, fx, 1e-8, 100));
  EXPECT_NEAR(x, 0.0, 1e-7);
  // Not converged: the outputs keep what they held.
  x = 7;
  EXPECT_FALSE(TBrent::BoundedBrentMinimum([](double t) { return (t - 0.3) * (t - 0.3); }, TGeInterval(0, 1), x, fx,
                                           1e-8, 2));
  EXPECT_EQ(x, 7.0);
}

TEST(Numeric, SquaredFunctionBoundsTheSquaredDistance) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> u(-5, 5);
  for (int i = 0; i < 50; ++i) {
    const TBezierSegment2D b({u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)});
    const TSquaredFunction f({TPoint2D(b.P0), TPoint2D(b.P1), TPoint2D(b.P2), TPoint2D(b.P3)}, 3, false);
    ASSERT_EQ(f.GetDegree(), 6);
    double lo = 1e300;
    for (int k = 0; k <= 6; ++k) lo = std::min(lo, f.GetCtrlPoints(k));
    TSquaredFunction l, r;
    f.SplitAt(0.3, l, r);
    for (int k = 0; k <= 20; ++k) {
      const double t = k / 20.0;
      const double want = b.EvalPoint(t).MagSqr();
      EXPECT_NEAR(f.Value(t), want, 1e-12 * (1 + want));
      EXPECT_GE(f.Value(t), lo - 1e-12);
      EXPECT_NEAR(l.Value(t), f.Value(0.3 * t), 1e-11 * (1 + want));
      EXPECT_NEAR(r.Value(t), f.Value(0.3 + 0.7 * t), 1e-11 * (1 + want));
    }
    EXPECT_EQ(f.GetCtrlPoints(0), b.P0.MagSqr());
  }
  // The rational quarter circle about the origin is at distance 1 everywhere: every
  // coefficient is 1, in both halves.
  const double w = std::sqrt(0.5);
  const TSquaredFunction circle({{1, 0, 1}, {1, 1, w}, {0, 1, 1}}, 2, true);
  TSquaredFunction l, r;
  circle.SplitAt(0.4, l, r);
  for (int k = 0; k <= 4; ++k) {
    EXPECT_NEAR(circle.GetCtrlPoints(k), 1.0, 1e-15);
    EXPECT_NEAR(l.GetCtrlPoints(k), 1.0, 1e-15);
    EXPECT_NEAR(r.GetCtrlPoints(k), 1.0, 1e-15);
  }
  EXPECT_NEAR(circle.Value(0.77), 1.0, 1e-15);
  EXPECT_THROW(TSquaredFunction({{1, 0, 1}, {1, 1, 0}, {0, 1, 1}}, 2, true), EParamError);
  EXPECT_THROW(TSquaredFunction({{1, 0, 1}}, 2, false), EParamError);
  EXPECT_THROW(circle.GetCtrlPoints(5), EParamError);
}
