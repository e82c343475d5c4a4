#include "orvane/monotone/MLABPolygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectRaise;
constexpr double Pi = std::numbers::pi;

TPoint2D Polar(const TPoint2D& C, double R, double A) { return C + TPoint2D(R * std::cos(A), R * std::sin(A)); }

TLABSegline Arc(const TPoint2D& C, double R, double A1, double A2) {
  return TLABSegline::CreateArc(Polar(C, R, A1), Polar(C, R, A2), C, std::tan((A2 - A1) / 4.0));
}
TLABSegline Circle(const TPoint2D& C, double R, double A, bool Ccw) {
  const TPoint2D s = Polar(C, R, A);
  return TLABSegline::CreateArc(s, s, C, Ccw ? 3.4028234663852886e+38 : -3.4028234663852886e+38);
}
std::unique_ptr<TLABPolyline> MakeOutline(const std::vector<TLABSegline>& Segs) {
  auto p = std::make_unique<TLABPolyline>();
  p->AddRange(Segs);
  return p;
}
#define Outline(...) (*MakeOutline(__VA_ARGS__))

void ExpectPieces(const TLABPolyline& Pre, const std::vector<TPoint2D>& Pts) {
  ASSERT_EQ(Pre.Count() + 1, static_cast<int>(Pts.size()));
  for (int k = 0; k < Pre.Count(); ++k) {
    testing::ExpectNear(Pre[k].P1, Pts[static_cast<std::size_t>(k)], 1e-12);
    testing::ExpectNear(Pre[k].P4, Pts[static_cast<std::size_t>(k) + 1], 1e-12);
  }
}

TEST(MLABPolygon, PreProcessingCutsAtTopAndBottom) {
  const TPoint2D o(0, 0);
  const TPoint2D top(0, 1);
  const TPoint2D bottom(0, -1);
  // Counter-clockwise from the right half to the right half lower down: the long way round.
  auto pre = TMLABPolygon::PreProcessing(Outline({Arc(o, 1, Pi / 6, 2 * Pi - Pi / 6)}), 1e-6);
  ExpectPieces(*pre, {Polar(o, 1, Pi / 6), top, bottom, Polar(o, 1, -Pi / 6)});
  EXPECT_EQ((*pre)[1].Bulge, 1.0);
  EXPECT_NEAR((*pre)[0].Bulge, std::tan(Pi / 12), 1e-15);
  // From the top down the left side: kept whole.
  pre = TMLABPolygon::PreProcessing(Outline({Arc(o, 1, Pi / 2, 1.2 * Pi)}), 1e-6);
  EXPECT_EQ(pre->Count(), 1);
  // Clockwise full circle from the rightmost point: through the bottom and the top.
  pre = TMLABPolygon::PreProcessing(Outline({Circle(o, 1, 0.0, false)}), 1e-6);
  ExpectPieces(*pre, {TPoint2D(1, 0), bottom, top, TPoint2D(1, 0)});
  EXPECT_EQ((*pre)[1].Bulge, -1.0);
  // Counter-clockwise full circle from the leftmost point: bottom first.
  pre = TMLABPolygon::PreProcessing(Outline({Circle(o, 1, Pi, true)}), 1e-6);
  ExpectPieces(*pre, {TPoint2D(-1, 0), bottom, top, TPoint2D(-1, 0)});
  // A full circle that starts exactly at its top: two half circles.
  pre = TMLABPolygon::PreProcessing(Outline({TLABSegline::CreateArc(top, top, o, -4e38)}), 1e-6);
  ExpectPieces(*pre, {top, bottom, top});
  EXPECT_EQ((*pre)[0].Bulge, -1.0);
  EXPECT_EQ((*pre)[1].Bulge, -1.0);
  // The seam: a closed outline gets it bit for bit; an open one keeps its own start.
  const std::vector<TLABSegline> almost = {TLABSegline::CreateLine(TPoint2D(0, 0), TPoint2D(4, 0)),
                                           Arc(TPoint2D(4, 2), 2, -Pi / 2, Pi / 2),
                                           TLABSegline::CreateLine(TPoint2D(4, 4), TPoint2D(3e-7, 1e-7))};
  pre = TMLABPolygon::PreProcessing(Outline(almost), 1e-6);
  EXPECT_EQ(pre->First().P1, pre->Last().P4);
  std::vector<TLABSegline> open = almost;
  open.back().P4 = TPoint2D(0, 1);
  pre = TMLABPolygon::PreProcessing(Outline(open), 1e-6);
  EXPECT_EQ(pre->First().P1, TPoint2D(0, 0));
  // Bad input: a NaN bulge is refused; an arc starting on its centre is the line between its ends.
  TLABSegline nanArc = Arc(o, 1, 0, 1);
  nanArc.Bulge = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW(TMLABPolygon::PreProcessing(Outline({nanArc}), 1e-6), EParamError);
  pre = TMLABPolygon::PreProcessing(Outline({TLABSegline::CreateArc(o, TPoint2D(1, 1), o, 0.5)}), 1e-6);
  ASSERT_EQ(pre->Count(), 1);
  EXPECT_EQ(pre->First().SegType, TSegType::stLine);
}

// Random arcs: every piece is monotone in y, joints are exact, and the swept area (exact
// for arcs) is unchanged.
TEST(MLABPolygon, PreProcessingKeepsShapeAndMakesMonotonePieces) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int round = 0; round < 300; ++round) {
    const TPoint2D c(u(rng) * 5, u(rng) * 5);
    const double r = 0.1 + std::abs(u(rng)) * 3;
    const double a1 = u(rng) * 4;
    const TLABSegline s = round % 10 == 0 ? Circle(c, r, a1, round % 20 == 0) : Arc(c, r, a1, a1 + u(rng) * 1.99 * Pi);
    const auto pre = TMLABPolygon::PreProcessing(Outline({s}), 1e-9);
    double area = 0.0;
    for (int k = 0; k < pre->Count(); ++k) {
      const TLABSegline& p = (*pre)[k];
      area += internal::SweptArea2(p);
      if (k > 0) {
        EXPECT_EQ(p.P1, (*pre)[k - 1].P4);
      }
      const double dir = p.P4.Y - p.P1.Y;
      double last = p.P1.Y;
      for (int t = 1; t <= 50; ++t) {
        const double y = p.PointByParam(t / 50.0).Y;
        EXPECT_GE((y - last) * (dir >= 0 ? 1 : -1), -1e-9) << round;
        last = y;
      }
    }
    EXPECT_NEAR(area, internal::SweptArea2(s), 1e-9 * r * r) << round;
  }
}

TEST(MLABPolygon, ChainsAndRelationWithPoint) {
  const TPoint2D o(0, 0);
  // A rectangle from its lower left corner: a rising and a falling chain with the level
  // edges. Starting inside the right side's run merges the first and last chain.
  auto rect = [](const TPoint2D& s) {
    std::vector<TPoint2D> v = {s, TPoint2D(4, 2), TPoint2D(0, 2), TPoint2D(0, 0), TPoint2D(4, 0)};
    if (s.Y == 0.0) v = {TPoint2D(0, 0), TPoint2D(4, 0), TPoint2D(4, 2), TPoint2D(0, 2)};
    auto p = std::make_unique<TLABPolyline>();
    for (std::size_t k = 0; k < v.size(); ++k) p->Add(TLABSegline::CreateLine(v[k], v[(k + 1) % v.size()]));
    return p;
  };
  for (const TPoint2D s : {TPoint2D(0, 0), TPoint2D(4, 1)}) {
    const TMLABPolygon poly(*rect(s), 1e-6);
    ASSERT_EQ(poly.Count(), 2);
    EXPECT_EQ(poly[0]->Count() + poly[1]->Count(), s.Y == 0.0 ? 4 : 5);
    EXPECT_EQ(poly[0]->GetLeft(), 0.0);
    EXPECT_EQ(poly[0]->GetRight(), 4.0);
    EXPECT_EQ(poly[0]->GetNext(), poly[1]);
    EXPECT_EQ(poly[1]->GetNext(), poly[0]);
    for (const TMLABChain* c : poly)
      for (const TLABSegline& seg : *c) EXPECT_LE(seg.P1.Y, seg.P4.Y);
    EXPECT_EQ(poly.RelationWithPoint(TPoint2D(2, 1)), TShapeRelation::srIn);
    EXPECT_EQ(poly.RelationWithPoint(TPoint2D(4, 2)), TShapeRelation::srOn);
    EXPECT_EQ(poly.RelationWithPoint(TPoint2D(2, 2)), TShapeRelation::srOn);
    EXPECT_EQ(poly.RelationWithPoint(TPoint2D(-1, 2)), TShapeRelation::srOut);
  }
  // A circle: on it, at its top and to the left of the top (both halves count), inside.
  const TMLABPolygon circle(Outline({Circle(o, 1, 0.3, true)}), 1e-6);
  EXPECT_EQ(circle.Count(), 2);
  EXPECT_EQ(circle.RelationWithPoint(Polar(o, 1, 2.0)), TShapeRelation::srOn);
  EXPECT_EQ(circle.RelationWithPoint(TPoint2D(0, 1)), TShapeRelation::srOn);
  EXPECT_EQ(circle.RelationWithPoint(TPoint2D(-3, 1)), TShapeRelation::srOut);
  EXPECT_EQ(circle.RelationWithPoint(TPoint2D(-3, -1)), TShapeRelation::srOut);
  EXPECT_EQ(circle.RelationWithPoint(TPoint2D(0.7, 0.7)), TShapeRelation::srIn);
  EXPECT_EQ(circle.RelationWithPoint(TPoint2D(0.71, 0.71)), TShapeRelation::srOut);
  // A copy closes its own ring of chains. Random points against GEOS on real parts in
  // MLABData_test.cpp.
  const std::unique_ptr<TMLABPolygon> copy = circle.CloneAs<TMLABPolygon>();
  ASSERT_EQ(copy->Count(), 2);
  EXPECT_EQ((*copy)[0]->GetNext(), (*copy)[1]);
  EXPECT_EQ((*copy)[1]->GetNext(), (*copy)[0]);
  EXPECT_TRUE(copy->IsCrossWith(circle, 1e-6));
  // An open outline has no inside; an empty one has no points.
  const TMLABPolygon open(Outline({Arc(o, 1, 0, 2)}), 1e-6);
  ExpectRaise<Exception>([&] { (void)open.RelationWithPoint(o); }, "Polygon is not closed!");
  const TMLABPolygon none(TLABPolyline(), 1e-6);
  EXPECT_EQ(none.RelationWithPoint(o), TShapeRelation::srOut);
  EXPECT_FALSE(none.IsCrossWith(circle, 1e-6));
  // IsRightArc: by the heights, and by the mean x for ends at one height.
  EXPECT_TRUE(TMLABPolygon::IsRightArc(Arc(o, 1, -1, 1)));
  EXPECT_FALSE(TMLABPolygon::IsRightArc(Arc(o, 1, 1, 2 * Pi - 1)));
  EXPECT_FALSE(TMLABPolygon::IsRightArc(Arc(o, 1, 2, 4)));
}

}  // namespace
}  // namespace orvane
