// Conversions between curve objects and mixed outlines: hand-worked outlines, circles of both
// senses, arcs past a full turn, cubics, polygons, random closed chains whose exact mixed
// area is checked against a fine sampling of the curve, and bad input.

#include "orvane/curves/CurveConversion.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

// Each segment of Lab and the sub-curve of Curve at the same place (the curve itself when
// it is no composite) trace the same points at the same fractions of their ranges.
void ExpectSameTrace(const TLABPolyline& Lab, const TGeCurve2D& Curve, double Tol) {
  const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(&Curve);
  ASSERT_EQ(comp ? comp->GetCurveCount() : 1, Lab.Count());
  for (int i = 0; i < Lab.Count(); ++i) {
    const TGeCurve2D& sub = comp ? *comp->GetCurve(i) : Curve;
    const TGeInterval iv = sub.GetInterval();
    for (double t : {0.0, 0.25, 0.5, 0.9, 1.0}) {
      ExpectNear(sub.EvalPoint(iv.Lower + t * (iv.Upper - iv.Lower)), Lab[i].PointByParam(t), Tol);
    }
  }
}

double LabLength(const TLABPolyline& Lab) {
  double len = 0.0;
  for (const TLABSegline& s : Lab) len += s.Length(1e-4);
  return len;
}

TEST(CurveConversion, RoundRectBothWays) {
  const auto rr = TGeCompositeCurve2D::CreateRoundRect(10, 6, 1);
  const auto lab = CreateLABPolyline(*rr);
  ASSERT_EQ(lab->Count(), 8);
  EXPECT_TRUE(lab->IsClosed(1e-9));
  EXPECT_NEAR(lab->Area(), 60 - (4 - Pi), 1e-12);
  EXPECT_NEAR(LabLength(*lab), 30.283185307179586, 1e-12);
  ExpectSameTrace(*lab, *rr, 1e-12);

  const auto back = CreateGeCurve2D(*lab);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->ClassName(), "TGeCompositeCurve2D");
  EXPECT_TRUE(back->CheckEqual(*rr, true));

  // One segment gives the bare curve, no composite around it.
  TLABPolyline one;
  one.Add(TLABSegline::CreateLine({0, 0}, {3, 4}));
  const auto line = CreateGeCurve2D(one);
  EXPECT_EQ(line->ClassName(), "TGeLine2D");
  EXPECT_DOUBLE_EQ(line->GetCurveLength(), 5.0);
}

TEST(CurveConversion, ArcsAndCirclesKeepTheirSense) {
  for (double sense : {1.0, -1.0}) {
    // The full circle: one marked segment starting and ending at the start point, its exact
    // area signed by the sense, and back the same circle in the same sense.
    const TGeCircularArc2D circle({1, 2}, 3, 0.5, sense * TwoPi);
    const auto lab = CreateLABPolyline(circle);
    ASSERT_EQ(lab->Count(), 1);
    EXPECT_TRUE(lab->IsCircle());
    EXPECT_EQ((*lab)[0].Bulge, sense * 3.4028234663852886e38);
    EXPECT_EQ((*lab)[0].P1, circle.GetStartPoint());
    EXPECT_EQ((*lab)[0].P4, circle.GetStartPoint());
    EXPECT_NEAR(lab->Area(), sense * 9 * Pi, 1e-12);
    const auto back = CreateGeCurve2D(*lab);
    const auto* arc = dynamic_cast<const TGeCircularArc2D*>(back.get());
    ASSERT_NE(arc, nullptr);
    EXPECT_NEAR(arc->GetSweepAngle(), sense * TwoPi, 1e-12);
    ExpectNear(arc->GetStartPoint(), circle.GetStartPoint());
    ExpectNear(arc->GetCenter(), {1, 2});

    // A three-quarter arc: bulge tan(3 pi / 8) with the sense's sign, back the same sweep.
    const TGeCircularArc2D part({0, 0}, 2, 0.0, sense * 1.5 * Pi);
    const auto labPart = CreateLABPolyline(part);
    ASSERT_EQ(labPart->Count(), 1);
    EXPECT_NEAR((*labPart)[0].Bulge, sense * std::tan(3 * Pi / 8), 1e-12);
    const auto backPart = CreateGeCurve2D(*labPart);
    EXPECT_NEAR(dynamic_cast<const TGeCircularArc2D&>(*backPart).GetSweepAngle(), sense * 1.5 * Pi, 1e-12);
    ExpectSameTrace(*labPart, *backPart, 1e-12);

    // Two and a half turns: two circles and the half turn, the whole length kept.
    const TGeCircularArc2D spiral({0, 0}, 1, 0.0, sense * 2.5 * TwoPi);
    const auto labSpiral = CreateLABPolyline(spiral);
    ASSERT_EQ(labSpiral->Count(), 3);
    EXPECT_TRUE((*labSpiral)[0].IsCircle());
    EXPECT_TRUE((*labSpiral)[1].IsCircle());
    EXPECT_NEAR((*labSpiral)[2].Bulge, sense * 1.0, 1e-12);
    ExpectNear((*labSpiral)[2].P4, {-1, 0});
    EXPECT_NEAR(LabLength(*labSpiral), 5 * Pi, 1e-12);
  }
  // An arc without sweep is a point, not the circle that a mixed arc with ends together and
  // bulge 0 would be.
  const auto point = CreateLABPolyline(TGeCircularArc2D({0, 0}, 2, 1.0, 0.0));
  ASSERT_EQ(point->Count(), 1);
  EXPECT_TRUE(point->IsPoint());
  EXPECT_EQ(CreateGeCurve2D(*point)->GetCurveLength(), 0.0);
}

TEST(CurveConversion, CubicsConvertBothWays) {
  const TGeBezier2D bez({0, 0}, {1, 2}, {3, 2}, {4, 0});
  const auto lab = CreateLABPolyline(bez);
  ASSERT_EQ(lab->Count(), 1);
  EXPECT_EQ((*lab)[0], TLABSegline::CreateBezier({0, 0}, {1, 2}, {3, 2}, {4, 0}));
  // Closed by its chord: the integral of y dx over the cubic, 21/5.
  EXPECT_NEAR(std::abs(lab->Area()), 4.2, 1e-12);
  const auto back = CreateGeCurve2D(*lab);
  EXPECT_EQ(back->ClassName(), "TGePolyBezier2D");
  EXPECT_NEAR(back->GetCurveLength(), bez.GetCurveLength(), 1e-9);
  ExpectSameTrace(*lab, *back, 1e-12);

  // A poly-Bezier gives one segment per cubic; back, a composite of one-cubic curves.
  const TGePolyBezier2D pb({{0, 0}, {1, 1}, {2, 1}, {3, 0}, {4, -1}, {5, -1}, {6, 0}, {6, 2}, {3, 3}, {0, 0}});
  const auto labPb = CreateLABPolyline(pb);
  ASSERT_EQ(labPb->Count(), 3);
  EXPECT_TRUE(labPb->IsClosed(0.0));
  const auto backPb = CreateGeCurve2D(*labPb);
  EXPECT_NEAR(backPb->GetCurveLength(), pb.GetCurveLength(), 1e-9);
  ExpectSameTrace(*labPb, *backPb, 1e-12);
  // The integral of (x dy - y dx) / 2 over the three cubics: 81/10.
  EXPECT_NEAR(labPb->Area(), 8.1, 1e-12);
}

TEST(CurveConversion, PolylinesAndPolygons) {
  const TDynPoints2D sq{{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  const auto open = CreateLABPolyline(TGePolyline2D(sq));
  EXPECT_EQ(open->Count(), 3);
  EXPECT_FALSE(open->IsClosed(1e-9));
  // The polygon is a ring: its closing edge is there, so the outline is closed and measures
  // 8 long, 4 in area.
  const auto ring = CreateLABPolyline(TGePolygon2D(sq));
  ASSERT_EQ(ring->Count(), 4);
  EXPECT_TRUE(ring->IsClosed(0.0));
  EXPECT_DOUBLE_EQ(LabLength(*ring), 8.0);
  EXPECT_DOUBLE_EQ(ring->Area(), 4.0);
  // A ring that repeats its first vertex gets no extra edge of length 0.
  TDynPoints2D rep = sq;
  rep.push_back(sq[0]);
  EXPECT_EQ(CreateLABPolyline(TGePolygon2D(rep))->Count(), 4);
  const auto back = CreateGeCurve2D(*ring);
  EXPECT_DOUBLE_EQ(back->GetCurveLength(), 8.0);
  ExpectNear(back->GetEndPoint(), {0, 0});
  EXPECT_EQ(CreateLABPolyline(TGePolyline2D(TDynPoints2D{{1, 1}}))->Count(), 0);
  EXPECT_EQ(CreateLABPolyline(TGePolygon2D(TDynPoints2D{{1, 1}}))->Count(), 0);
}

// A closed random chain of lines, arcs of either sense and cubics around the origin.
std::unique_ptr<TGeCompositeCurve2D> RandomChain(std::mt19937& Rng, int Pieces) {
  std::uniform_real_distribution<double> r(5.0, 10.0), u(0.0, 1.0);
  TDynPoints2D corner;
  for (int i = 0; i < Pieces; ++i) {
    const double a = TwoPi * (i + 0.2 + 0.6 * u(Rng)) / Pieces;
    const double rad = r(Rng);
    corner.push_back({rad * std::cos(a), rad * std::sin(a)});
  }
  auto c = std::make_unique<TGeCompositeCurve2D>();
  for (int i = 0; i < Pieces; ++i) {
    const TPoint2D a = corner[static_cast<std::size_t>(i)], b = corner[static_cast<std::size_t>((i + 1) % Pieces)];
    switch (i % 3) {
      case 0:
        c->AddCurve(std::make_unique<TGeLine2D>(a, b));
        break;
      case 1:
        c->AddCurve(std::make_unique<TGeCircularArc2D>(a, (u(Rng) - 0.5) * 1.2, b));
        break;
      default: {
        const TPoint2D d = b - a, n(-d.Y, d.X);
        c->AddCurve(std::make_unique<TGeBezier2D>(a, a + d * 0.3 + n * (u(Rng) - 0.5), a + d * 0.7 + n * (u(Rng) - 0.5), b));
      }
    }
  }
  return c;
}

TEST(CurveConversion, RandomChainsRoundTrip) {
  std::mt19937 rng(20261124);
  for (int trial = 0; trial < 30; ++trial) {
    const auto chain = RandomChain(rng, 6 + 3 * (trial % 4));
    const auto lab = CreateLABPolyline(*chain);
    ASSERT_EQ(lab->Count(), chain->GetCurveCount());
    ExpectSameTrace(*lab, *chain, 1e-9);
    // The exact area of the mixed outline against a fine sampling of the curve.
    TDynPoints2D pts;
    chain->GetSamplePoints(1e-7, pts);
    EXPECT_NEAR(lab->Area(), PolyArea(pts), 1e-5 * std::abs(PolyArea(pts)));

    const auto back = CreateGeCurve2D(*lab);
    EXPECT_NEAR(back->GetCurveLength(), chain->GetCurveLength(), 1e-9 * chain->GetCurveLength());
    ExpectNear(back->GetStartPoint(), chain->GetStartPoint(), 1e-12);
    ExpectNear(back->GetEndPoint(), chain->GetEndPoint(), 1e-9);
    ExpectSameTrace(*lab, *back, 1e-9);
    // Twice round gives the same mixed outline again.
    const auto again = CreateLABPolyline(*back);
    ASSERT_EQ(again->Count(), lab->Count());
    for (int i = 0; i < lab->Count(); ++i) {
      ExpectNear((*again)[i].P4, (*lab)[i].P4, 1e-9);
      EXPECT_NEAR((*again)[i].Bulge, (*lab)[i].Bulge, 1e-9);
    }
  }
}

TEST(CurveConversion, EmptyAndBadInput) {
  EXPECT_EQ(CreateGeCurve2D(TLABPolyline()), nullptr);
  EXPECT_EQ(CreateLABPolyline(TGeCompositeCurve2D())->Count(), 0);
  EXPECT_EQ(CreateLABPolyline(TGePolyBezier2D())->Count(), 0);

  const double nan = std::nan("");
  EXPECT_THROW(CreateGeCurve2D(TLABSegline::CreateLine({nan, 0}, {1, 1})), EGeometry);
  EXPECT_THROW(CreateGeCurve2D(TLABSegline::CreateArc({1, 0}, {0, 1}, {0, nan}, 0.4)), EGeometry);
  EXPECT_THROW(CreateGeCurve2D(TLABSegline::CreateArc({1, 0}, {0, 1}, {0, 0}, nan)), EParamError);
  EXPECT_THROW(CreateGeCurve2D(TLABSegline::CreateBezier({0, 0}, {1, nan}, {2, 1}, {3, 0})), EGeometry);

  // The list: nil items and curves that yield nothing leave no entry.
  TGeLine2D line({0, 0}, {1, 0});
  TGeCompositeCurve2D empty;
  TGeCircularArc2D circle({0, 0}, 1, 0, TwoPi);
  const TList<TGeCurve2D*> curves{&line, nullptr, &empty, &circle};
  const auto list = CreateLABPolylineList(curves);
  ASSERT_EQ(list->Count(), 2);
  EXPECT_TRUE(list->FirstIsCircle() == false && (*list)[1]->IsCircle());

  // Two composites that hold each other (neither owns its curves) stop with an error.
  TGeCompositeCurve2D a(TList<TGeCurve2D*>{}, false), b(TList<TGeCurve2D*>{}, false);
  a.AddCurve(static_cast<TGeCurve2D*>(&b));
  b.AddCurve(static_cast<TGeCurve2D*>(&a));
  EXPECT_THROW(CreateLABPolyline(a), EParamError);
}

}  // namespace
}  // namespace orvane
