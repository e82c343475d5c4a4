#include "orvane/vertex/VPolyline2D.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectNear;
using testing::ExpectRaise;
using testing::Star;

// Length along the polyline from vertex 0 to parameter T.
double LengthAt(const TVPolyline2D& Poly, double T) {
  const int i = static_cast<int>(std::floor(T));
  if (i == Poly.Count() - 1) return Poly.TotalLength();
  return Poly.RangeLength(0, i) + (T - i) * Poly.Line(i).Length();
}

TEST(VPolyline2D, BuildCloseAndRect) {
  EXPECT_FALSE(TVPolyline2D().IsClosed(1e-6));
  EXPECT_TRUE(TVPolyline2D(TPoint2D(1, 2)).IsClosed(1e-6));
  TVPolyline2D rect(TRect2D(0, 0, 4, 2));
  EXPECT_TRUE(rect.IsEqualTo(TVPolyline2D{{4, 2}, {0, 2}, {0, 0}, {4, 0}, {4, 2}}, 0.0));
  EXPECT_TRUE(rect.IsClosed(1e-6));
  EXPECT_FALSE(rect.IsClockwise());
  EXPECT_TRUE(rect.IsRect(true));
  rect.Delete(4);
  EXPECT_TRUE(rect.IsRect(true));  // four vertices, closed by the test itself
  rect.Rotate(Pi / 6.0);
  EXPECT_TRUE(rect.IsRect(false));
  EXPECT_FALSE(rect.IsRect(true));
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {4, 0}, {5, 2}, {1, 2}}).IsRect(false));  // a parallelogram

  // SetIsClockwise reverses only when needed.
  auto copy = rect.CloneAs<TVPolyline2D>();
  ASSERT_NE(copy, nullptr);
  copy->SetIsClockwise(false);
  EXPECT_TRUE(copy->IsEqualTo(rect, 0.0));
  copy->SetIsClockwise(true);
  EXPECT_TRUE(copy->IsClockwise());
  EXPECT_TRUE(copy->IsEqualToReverse(rect, 0.0));
}

TEST(VPolyline2D, PathsAndTexts) {
  // Halves go to the even neighbour; the working scale round-trips five decimals exactly.
  TVPolyline2D halves{{0.5, 1.5}, {2.5, -2.5}};
  EXPECT_EQ(halves.ToPath(1.0), (TPath64{{0, 2}, {2, -2}}));
  TVPolyline2D fine{{0.12345, -7.00001}, {123.45678, 0.00003}};
  EXPECT_TRUE(TVPolyline2D(fine.ToPath(PathWorkingRate), PathWorkingRate).IsEqualTo(fine, 0.0));
  EXPECT_TRUE(TVPolyline2D(fine.ToTPoint2DList()).IsEqualTo(fine, 0.0));
  EXPECT_THROW(TVPolyline2D(TPath64{{1, 1}}, 0.0), EParamError);
  EXPECT_THROW((TVPolyline2D{{1e300, 0}}).ToPath(PathWorkingRate), EConvertError);
  EXPECT_EQ(halves.ToString(), "(0.5000000000000000, 1.5000000000000000), (2.5000000000000000, -2.5000000000000000), ");
}

TEST(VPolyline2D, ErrorAndAssertionTexts) {
  TVPolyline2D open{{0, 0}, {1, 0}, {1, 1}};
  ExpectRaise<Exception>([&] { open.Line(-1); }, "[Error] TVPolyline2D.Line: 下标越界");
  ExpectRaise<Exception>([&] { open.Line(2); }, "[Error] TVPolyline2D.Line: 下标越界");
  ExpectRaise<EParamError>([&] { open.SubCurve(1.5, 0.5); }, "[Error] TVPolyline2D.SubCurve: ParamTo < ParamFrom");
  ExpectRaise<EAssertionFailed>([&] { open.RangeLength(0, 3); }, "[Assert] TVPolyline2D.RangeLength: 下标越界");
  try {
    open.RangeLength(-1, 0);
  } catch (const EAssertionFailed& e) {
    EXPECT_EQ(e.Source, "Orvane");
  }
  EXPECT_THROW(TVPolyline2D().Gravity(), EListError);
  EXPECT_THROW(open.SubCurve(0.0, 2.5), EParamError);
}

TEST(VPolyline2D, ParameterAndLengthRoundTrips) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 40; ++round) {
    TVPolyline2D poly(Star(rng, 5 + round % 12));
    if (round % 2 == 1) poly.Delete(poly.Count() - 1);  // the open variant
    const bool closed = poly.IsClosed(1e-6);
    const double total = poly.TotalLength();
    const double last = poly.Count() - 1;
    for (int k = 0; k < 20; ++k) {
      const double t = unit(rng) * last;
      const TPoint2D p = poly.CalcPointByParam(t);
      EXPECT_NEAR(poly.CalcParamByPoint(p, 1e-3), t, 1e-9);
      EXPECT_NEAR(poly.CalcFirstParamByPoint(p, 1e-9), t, 1e-9);
      // Walking the length up to t lands on t, also from another start and once round.
      double param = -1.0;
      TPoint2D pos;
      ASSERT_TRUE(poly.CalcTravelPos(0, LengthAt(poly, t), param, pos));
      EXPECT_NEAR(param, t, 1e-9);
      ExpectNear(pos, p, 1e-9);
      const int start = static_cast<int>(t / 2);
      ASSERT_TRUE(poly.CalcTravelPos(start, LengthAt(poly, t) - poly.RangeLength(0, start), param, pos));
      ExpectNear(pos, p, 1e-9);
      EXPECT_EQ(poly.CalcTravelPos(0, LengthAt(poly, t) + 3.0 * total, param, pos), closed);
      if (closed) ExpectNear(pos, p, 1e-9);
      // A piece measures what lies between its ends, through the seam when closed.
      const double u = unit(rng) * last;
      const double lt = LengthAt(poly, t);
      const double lu = LengthAt(poly, u);
      if (t < u || closed) {
        auto piece = poly.SubCurve(t, u);
        EXPECT_NEAR(piece->TotalLength(), t < u ? lu - lt : total - (lt - lu), 1e-9);
        ExpectNear(piece->First(), p);
        ExpectNear(piece->Last(), poly.CalcPointByParam(u));
      }
    }
    const int a = 1;
    const int b = poly.Count() - 2;
    EXPECT_NEAR(poly.RangeLength(0, poly.Count() - 1), total, 1e-12);
    EXPECT_NEAR(poly.RangeLength(a, b) + poly.RangeLength(b, a), closed ? total : poly.RangeLength(a, b), 1e-9);
    double param = 0.0;
    TPoint2D pos;
    EXPECT_EQ(poly.CalcTravelPos(0, total, param, pos), closed);  // an open end is out of reach
  }
}

TEST(VPolyline2D, HandWorkedPlaces) {
  TVPolyline2D square{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  EXPECT_TRUE(square.SubCurve(3.5, 0.5)->IsEqualTo(TVPolyline2D{{0, 1}, {0, 0}, {1, 0}}, 0.0));
  EXPECT_EQ(square.SubCurve(0.5, 0.5)->Count(), 1);
  EXPECT_TRUE(square.SubCurve(0.5, 2.5)->IsEqualTo(TVPolyline2D{{1, 0}, {2, 0}, {2, 2}, {1, 2}}, 0.0));
  EXPECT_EQ(square.CalcPointByParam(-0.0001), TPoint2D::FZero);
  EXPECT_EQ(square.CalcLeftDerivative(0), TPoint2D(0, -2));
  EXPECT_EQ(square.CalcRightDerivative(4), TPoint2D(2, 0));
  EXPECT_EQ(square.CalcLeftDerivative(1.5), TPoint2D(0, 1));
  EXPECT_EQ(square.CalcLeftDerivative(2), TPoint2D(0, 2));
  TPoint2D left;
  TPoint2D right;
  square.CalcDerivative(1.5, left, right);
  EXPECT_EQ(right, TPoint2D(0, 1));
  EXPECT_DOUBLE_EQ(square.RangeLength(3, 1), 4.0);

  TVPolyline2D open{{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  EXPECT_EQ(open.CalcLeftDerivative(0), TPoint2D::FZero);
  EXPECT_EQ(open.CalcRightDerivative(3), TPoint2D::FZero);
  EXPECT_EQ(open.RangeLength(3, 1), 0.0);
  double param = 0.0;
  TPoint2D pos(9, 9);
  EXPECT_TRUE(square.CalcTravelPos(3, 3.0, param, pos));  // through the seam
  EXPECT_DOUBLE_EQ(param, 0.5);
  EXPECT_EQ(pos, TPoint2D(1, 0));
  EXPECT_FALSE((TVPolyline2D{{1, 1}, {1, 1}}).CalcTravelPos(0, 0.0, param, pos));
  EXPECT_FALSE(open.CalcTravelPos(0, -0.1, param, pos));
  EXPECT_EQ(pos, TPoint2D(1, 0));
  EXPECT_THROW(open.CalcTravelPos(4, 1.0, param, pos), Exception);

  // Nearest places: the first of equal segments wins; nothing near gives the neutral values.
  TVPolyline2D hairpin{{0, 0}, {4, 0}, {4, 1}, {0, 1}};
  EXPECT_DOUBLE_EQ(hairpin.CalcParamByPoint({1, 0.5}, 1.0), 0.25);
  EXPECT_DOUBLE_EQ(hairpin.CalcParamByPoint({1, 5}, 1.0), 0.0);
  EXPECT_DOUBLE_EQ(hairpin.CalcParamByPoint({1, 5}, MaxDouble), 2.75);
  EXPECT_DOUBLE_EQ(hairpin.CalcFirstParamByPoint({1, 0.9}, 0.5), 2.75);
  EXPECT_DOUBLE_EQ(hairpin.CalcFirstParamByPoint({1, 5}, 0.5), -1.0);
  TPoint2D nearest(7, 7);
  EXPECT_DOUBLE_EQ(hairpin.DistTo({2, 0.5}, nearest), 0.5);
  EXPECT_EQ(nearest, TPoint2D(2, 0));
  EXPECT_EQ(TVPolyline2D().DistTo({2, 0.5}, nearest), MaxDouble);
  EXPECT_EQ(nearest, TPoint2D(2, 0));
}

TEST(VPolyline2D, ArcsKeepTheirSense) {
  for (const double sweep : {Pi, -Pi, TwoPi, -TwoPi}) {
    const TArc2D arc(TPoint2D(3, -1), 10.0, 0.7, sweep);
    TVPolyline2D poly(arc, 0.01);
    const double full = std::fabs(sweep) / TwoPi * Pi * 100.0;
    EXPECT_EQ(poly.IsClockwise(), sweep < 0.0);
    EXPECT_LT(std::fabs(poly.Area()), full);
    EXPECT_GT(std::fabs(poly.Area()), full * (1.0 - 2.0 * 0.01 / 10.0));
    for (int i = 0; i + 1 < poly.Count(); ++i) {
      EXPECT_NEAR(poly[i].DistanceTo(arc.Center), 10.0, 1e-9);
      EXPECT_LE(10.0 - poly.Line(i).DistanceLimit(arc.Center), 0.01 + 1e-9);
    }
    EXPECT_TRUE(poly.IsConvexPolygon(false));
    EXPECT_EQ(poly.IsClosed(1e-6), std::fabs(sweep) == TwoPi);
    if (std::fabs(sweep) == TwoPi) ExpectNear(poly.Gravity(), arc.Center, 1e-9);
  }
}

TEST(VPolyline2D, ConvexityGravityAndHull) {
  EXPECT_TRUE((TVPolyline2D{{0, 0}, {1, 0}, {0, 1}, {0, 0}}).IsConvexPolygon(false));
  EXPECT_FALSE((TVPolyline2D{{0, 0}, {1, 0}, {0, 0}}).IsConvexPolygon(true));
  TVPolyline2D ell{{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}};
  EXPECT_FALSE(ell.IsConvexPolygon(true));
  TVPolyline2D repeated{{0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  EXPECT_TRUE(repeated.IsConvexPolygon(true));
  EXPECT_FALSE(repeated.IsConvexPolygon(false));

  ExpectNear(ell.Gravity(), {2.5 / 3.0, 2.5 / 3.0});
  ell.SetIsClockwise(true);
  ExpectNear(ell.Gravity(), {2.5 / 3.0, 2.5 / 3.0});
  EXPECT_EQ((TVPolyline2D{{0, 0}, {4, 2}}).Gravity(), TPoint2D(2, 1));

  // The point overload leaves the receiver alone, even where a collinear start is nudged.
  TVPolyline2D box{{0, 2}, {1, 2}, {2, 2}, {2, 0}, {0, 0}, {0, 2}};
  TVPolyline2D hull{{9, 9}};
  box.ConvexHull(hull);
  EXPECT_EQ(box[1], TPoint2D(1, 2));
  ASSERT_EQ(hull.Count(), 7);
  EXPECT_EQ(hull[0], TPoint2D(9, 9));
  EXPECT_EQ(hull[1], TPoint2D(0, 2));
  EXPECT_EQ(hull[6], TPoint2D(0, 2));
  TList<int> ids;
  ell.ConvexHull(ids);
  EXPECT_THAT(ids.ToArray(), ::testing::ElementsAre(0, 1, 3, 4, 5, 0));
}

}  // namespace
}  // namespace orvane
