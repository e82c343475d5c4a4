#include "orvane/monotone/MLABChain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectRaise;

TLABSegline Line(double X1, double Y1, double X2, double Y2) {
  return TLABSegline::CreateLine(TPoint2D(X1, Y1), TPoint2D(X2, Y2));
}
// The arc of radius R about (CX, CY) from angle A1 to angle A2 (radians), counter-clockwise
// when A2 > A1.
TLABSegline Arc(double CX, double CY, double R, double A1, double A2) {
  const TPoint2D c(CX, CY);
  return TLABSegline::CreateArc(c + TPoint2D(R * std::cos(A1), R * std::sin(A1)),
                                c + TPoint2D(R * std::cos(A2), R * std::sin(A2)), c, std::tan((A2 - A1) / 4.0));
}

std::unique_ptr<TMLABChain> Chain(std::vector<TLABSegline> Segs) {
  auto c = std::make_unique<TMLABChain>();
  c->AddRange(Segs);
  return c;
}

void ExpectOverlap(const std::vector<TLABSegline>& A, const std::vector<TLABSegline>& B, double Tol, bool Want) {
  const auto a = Chain(A);
  const auto b = Chain(B);
  EXPECT_EQ(a->IsOverlap(*b, Tol), Want) << "Tol " << Tol;
  EXPECT_EQ(b->IsOverlap(*a, Tol), Want) << "Tol " << Tol;
}

constexpr double Pi = std::numbers::pi;

TEST(MLABChain, LinePairs) {
  // Level runs that meet end to end, or miss by 2e-6.
  ExpectOverlap({Line(0, 0, 1, 0)}, {Line(1, 0, 2, 0)}, 0.0, true);
  ExpectOverlap({Line(0, 0, 1, 0)}, {Line(1 + 2e-6, 0, 2, 0)}, 1e-6, false);
  ExpectOverlap({Line(0, 0, 1, 0)}, {Line(1 + 2e-6, 0, 2, 0)}, 1e-5, true);
  // Lines that cross inside their common height, with no vertex on the other.
  ExpectOverlap({Line(0, 0, 2, 2)}, {Line(2, 0, 0, 2)}, 0.0, true);
  // Parallel lines 5e-7 apart: a contact at 1e-6, none at 1e-7.
  ExpectOverlap({Line(0, 0, 0, 10)}, {Line(5e-7, 0, 5e-7, 10)}, 1e-6, true);
  ExpectOverlap({Line(0, 0, 0, 10)}, {Line(5e-7, 0, 5e-7, 10)}, 1e-7, false);
  // A vertex exactly on the other line.
  ExpectOverlap({Line(0, 0, 1, 1), Line(1, 1, 0, 2)}, {Line(1, 0, 1, 2)}, 0.0, true);
  // Heights apart by 2e-6, whatever the x.
  ExpectOverlap({Line(0, 0, 0, 1)}, {Line(0, 1 + 2e-6, 0, 3)}, 1e-6, false);
  // Side by side over the whole common height.
  ExpectOverlap({Line(0, 0, 1, 1), Line(1, 1, 0, 2), Line(0, 2, 0, 3)}, {Line(2, -1, 1.5, 1), Line(1.5, 1, 3, 4)},
                1e-6, false);
  // Level lines of one chain at the very top of the other are still met.
  ExpectOverlap({Line(0, 0, 0, 1), Line(0, 1, 5, 1)}, {Line(3, 0.5, 4, 1)}, 0.0, true);
}

TEST(MLABChain, ArcPairsAndAngles) {
  // The right half of the unit circle against the tangent x = 1, and lines just off it.
  const TLABSegline right = Arc(0, 0, 1, -Pi / 2, Pi / 2);
  ExpectOverlap({right}, {Line(1, -1, 1, 1)}, 1e-6, true);
  ExpectOverlap({right}, {Line(1 + 5e-7, -1, 1 + 5e-7, 1)}, 1e-6, true);
  ExpectOverlap({right}, {Line(1 + 1e-5, -1, 1 + 1e-5, 1)}, 1e-6, false);
  // A line inside the circle, about 1e-3 short of the arc; one that crosses it.
  ExpectOverlap({right}, {Line(0.999, -0.01, 0.999, 0.01)}, 1e-6, false);
  ExpectOverlap({right}, {Line(0.9, -0.01, 1.1, 0.01)}, 0.0, true);
  ExpectOverlap({Arc(0, 0, 1, -0.5, 0.5)}, {Line(0.5, -0.1, 0.5, 0.1)}, 1e-6, false);
  // Two circles of radius 1 touching from outside at (1, 0), and 1e-5 apart.
  ExpectOverlap({right}, {Arc(2, 0, 1, -Pi / 2, -3 * Pi / 2)}, 1e-6, true);
  ExpectOverlap({right}, {Arc(2 + 1e-5, 0, 1, -Pi / 2, -3 * Pi / 2)}, 1e-6, false);
  // Arcs of one circle of radius 10 across angle 0: sharing a stretch, and a gap of 1e-5
  // along the circle. The comparison of angles scales the tolerance by 1 / R.
  ExpectOverlap({Arc(0, 0, 10, -0.3, 0.3)}, {Arc(0, 0, 10, -0.1, 0.5)}, 0.0, true);
  ExpectOverlap({Arc(0, 0, 10, -0.3, 0.3)}, {Arc(0, 0, 10, 0.3 + 1e-6, 0.6)}, 1e-6, false);
  ExpectOverlap({Arc(0, 0, 10, -0.3, 0.3)}, {Arc(0, 0, 10, 0.3 + 1e-6, 0.6)}, 1e-4, true);
  // The angular range test: clockwise ranges and ranges across angle 0.
  EXPECT_TRUE(internal::AngleInSweep(0.1, 0.3, -0.6, 0.0));
  EXPECT_TRUE(internal::AngleInSweep(2 * Pi - 0.2, 0.3, -0.6, 0.0));
  EXPECT_FALSE(internal::AngleInSweep(0.4, 0.3, -0.6, 0.0));
  EXPECT_TRUE(internal::AngleInSweep(0.3 + 1e-7, 0.3, -0.6, 1e-6));
  EXPECT_TRUE(internal::AngleInSweep(-0.1, 2 * Pi - 0.3, 0.6, 0.0));
  EXPECT_FALSE(internal::AngleInSweep(Pi, 2 * Pi - 0.3, 0.6, 0.0));
}

// The exact distance of lines and arcs against a brute force over dense samples of both.
TEST(MLABChain, SegmentDistanceMatchesSampling) {
  std::mt19937 rng(25);
  std::uniform_real_distribution<double> u(-3.0, 3.0);
  std::uniform_real_distribution<double> ang(-Pi, Pi);
  auto randomSeg = [&](bool arc) {
    if (!arc) return Line(u(rng), u(rng), u(rng), u(rng));
    const double a1 = ang(rng);
    return Arc(u(rng), u(rng), 0.5 + std::abs(u(rng)), a1, a1 + ang(rng) * 0.9);
  };
  auto sample = [](const TLABSegline& s, int n) {
    std::vector<TPoint2D> pts;
    for (int k = 0; k <= n; ++k) pts.push_back(s.PointByParam(static_cast<double>(k) / n));
    return pts;
  };
  for (int round = 0; round < 60; ++round) {
    const TLABSegline a = randomSeg(round % 3 != 0);
    const TLABSegline b = randomSeg(round % 2 == 0);
    const int n = 1000;
    const auto pa = sample(a, n);
    const auto pb = sample(b, n);
    double brute = 1e300;
    for (const TPoint2D& p : pa)
      for (const TPoint2D& q : pb) brute = std::min(brute, p.DistanceTo(q));
    const double exact = internal::MLABSegDistance(a, b, 0.0);
    // Sampling overestimates by at most the spacing of the samples (about 20 / 1000).
    EXPECT_LE(exact, brute + 1e-9) << round;
    EXPECT_GE(exact, brute - 0.02) << round;
    EXPECT_NEAR(exact, internal::MLABSegDistance(b, a, 0.0), 1e-9) << round;
  }
}

TEST(MLABChain, BoundsRotationsAndClone) {
  // A right half circle from bottom to top reaches centre x + R, though neither end does.
  auto c = Chain({Line(0, -3, 1, -2), Arc(1, 0, 2, -Pi / 2, Pi / 2)});
  EXPECT_DOUBLE_EQ(c->GetRight(), 3.0);
  EXPECT_DOUBLE_EQ(c->GetLeft(), 0.0);
  const TRect2D box = c->BoundBox();
  EXPECT_DOUBLE_EQ(box.YMin, -3.0);
  EXPECT_DOUBLE_EQ(box.YMax, 2.0);
  c->Translate(TPoint2D(10, 0));
  EXPECT_DOUBLE_EQ(c->GetRight(), 13.0);
  EXPECT_DOUBLE_EQ(c->List()[1].P2.X, 11.0);
  // A left half circle widens the other side.
  EXPECT_DOUBLE_EQ(Chain({Arc(0, 0, 2, 3 * Pi / 2, Pi / 2)})->GetLeft(), -2.0);

  ExpectRaise<Exception>([&] { c->Rotate(0.0); }, "[Error] TMLABChain.Rotate: 禁止旋转");
  ExpectRaise<Exception>([&] { c->RotateBy90(); }, "[Error] TMLABChain.RotateBy90: 禁止旋转");
  ExpectRaise<Exception>([&] { c->RotateBy_90(); }, "[Error] TMLABChain.RotateBy_90: 禁止旋转");

  // A copy keeps class, segments and bounds, and no successor.
  TMLABChain other;
  c->SetNext(&other);
  c->SetPositive(false);
  const auto copy = c->CloneAs<TMLABChain>();
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetNext(), nullptr);
  EXPECT_FALSE(copy->GetPositive());
  EXPECT_EQ(copy->List(), c->List());
  EXPECT_DOUBLE_EQ(copy->GetRight(), 13.0);

  // Filling is linear: a chain of 200000 segments fills at once (a rescan of the bounds
  // per added segment would take hours). Deleting narrows the bounds again.
  TMLABChain big;
  for (int k = 0; k < 200000; ++k) big.Add(Line(k % 7, k, (k + 1) % 7, k + 1));
  EXPECT_EQ(big.GetLeft(), 0.0);
  EXPECT_EQ(big.GetRight(), 6.0);
  auto small = Chain({Line(0, 0, 5, 1), Line(5, 1, 1, 2)});
  small->Delete(0);
  EXPECT_EQ(small->GetRight(), 5.0);
  EXPECT_EQ(small->GetLeft(), 1.0);
}

}  // namespace
}  // namespace orvane
