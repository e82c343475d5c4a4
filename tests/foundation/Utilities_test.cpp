// Directions, point utilities, range relations and the small records.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "orvane/Orvane.h"
#include "orvane/foundation/internal/Orientation.h"
#include "support/TestSupport.h"

using namespace orvane;
using orvane::testing::MessageOf;

TEST(DirUtils, MappingsTurnsAndExactErrorTexts) {
  EXPECT_EQ(TDirUtils::WindowsDirToDir(37), TDir::dirLeft);
  for (int code = 37; code <= 40; ++code) EXPECT_EQ(TDirUtils::DirToWindowsDir(TDirUtils::WindowsDirToDir(code)), code);
  EXPECT_EQ(TDirUtils::DirToVec(TDir::dirDown), TPoint2D(0, -1));
  EXPECT_EQ(TDirUtils::ModWithDivisor(-1, 4), 3);
  EXPECT_EQ(TDirUtils::ModWithDivisor(1, -4), -3);
  EXPECT_EQ(TDirUtils::ModWithDivisor(-8, -4), 0);
  EXPECT_EQ(TDirUtils::ModWithDivisor(-5, -4), -1);
  EXPECT_EQ(TDirUtils::RotateN90Degrees(TDir::dirRight, 1), TDir::dirUp);
  EXPECT_EQ(TDirUtils::RotateN90Degrees(TDir::dirRight, -1), TDir::dirDown);
  EXPECT_EQ(TDirUtils::RotateN90Degrees(TDir::dirLeft, 6), TDir::dirRight);
  EXPECT_EQ(TDirUtils::RotateN90Degrees(TDir::dirUp, -2147483647 - 1), TDir::dirUp);
  for (int d = 1; d <= 8; ++d) {
    const auto dir = static_cast<TDir>(d);
    EXPECT_EQ(TDirUtils::Reverse(TDirUtils::Reverse(dir)), dir);
    EXPECT_NE(TDirUtils::Reverse(dir), dir);
  }
  EXPECT_EQ(TDirUtils::Reverse(TDir::dirLeftDown), TDir::dirRightUp);

  EXPECT_EQ(MessageOf([] { TDirUtils::WindowsDirToDir(41); }), "[Error] TDirUtils.WindowsDirToDir: 参数错误");
  EXPECT_EQ(MessageOf([] { TDirUtils::DirToWindowsDir(TDir::dirLeftUp); }),
            "[Error] TDirUtils.DirToWindowsDir: 参数错误");
  EXPECT_EQ(MessageOf([] { TDirUtils::DirToVec(TDir::dirNone); }), "[Error] TDirUtils.DirToVec: 参数错误");
  EXPECT_EQ(MessageOf([] { TDirUtils::Reverse(TDir::dirNone); }), "[Error] TDirUtils.Reverse: 参数错误");
  EXPECT_EQ(MessageOf([] { TDirUtils::RotateN90Degrees(TDir::dirRightUp, 1); }),
            "[Error] TDirUtils.RotateN90Degrees: 参数错误");
  EXPECT_THROW(TDirUtils::ModWithDivisor(3, 0), EParamError);
}

TEST(Point2DUtils, OrdersQuadrantsAndConstructions) {
  EXPECT_EQ(TPoint2DUtils::CompareByXY({1, 5}, {1 + 1e-15, 0}), -1);
  EXPECT_EQ(TPoint2DUtils::CompareByXY({1, 5}, {1, 5 - 1e-15}), 1);
  EXPECT_EQ(TPoint2DUtils::CompareByYX({9, 1}, {0, 2}), -1);
  // Axes are negative: -1 for +X round to -4 for -Y.
  const std::pair<TPoint2D, int> quadrants[] = {{{0, 0}, 0},  {{3, 0}, -1}, {{0, 5}, -2},   {{-1, 0}, -3},
                                                {{0, -2}, -4}, {{-1, 1}, 2}, {{-1, -1}, 3}, {{1, -1}, 4}};
  for (const auto& [p, q] : quadrants) EXPECT_EQ(TPoint2DUtils::Quadrant(p), q) << p.ToString();

  orvane::testing::ExpectNear(TPoint2DUtils::Mirror({2, 0}, {0, 0}, {1, 1}), {0, 2}, 1e-12);
  EXPECT_EQ(MessageOf([] { TPoint2DUtils::Mirror({2, 0}, {1, 1}, {1, 1}); }), "[Error] TPoint2DUtils.Mirror: 参数错误");

  EXPECT_EQ(TPoint2DUtils::Stretch({0, 0}, 5), TPoint2D(0, 0));
  EXPECT_DOUBLE_EQ(TPoint2DUtils::AbsAngle({1, 0}, {0, -1}), HalfPi);
  EXPECT_DOUBLE_EQ(TPoint2DUtils::AbsAngle({1, 0}, {-1, 1}), 0.75 * Pi);
  EXPECT_EQ(TPoint2DUtils::TriangleArea({0, 0}, {2, 0}, {1, -3}, false), -3.0);
  // 3-4-5 right triangle: inradius 1 at (1, 1).
  orvane::testing::ExpectNear(TPoint2DUtils::InCenter({0, 0}, {4, 0}, {0, 3}), {1, 1}, 1e-12);
  EXPECT_EQ(TPoint2DUtils::InCenter({2, 3}, {2, 3}, {2, 3}), TPoint2D(2, 3));
}

TEST(ShapeRelationUtils, RangeRelations) {
  using enum TRangeRelation;
  const struct {
    double A0, A1, B0, B1;
    TRangeRelation Want;
  } cases[] = {{0, 1, 0, 1, rgContain},        {0, 1, 1, 2, rgCross},         {0, 1, 2, 3, rgDeviate},
               {2, 3, 0, 1, rgDeviate},        {0, 3, 1, 2, rgContain},       {1, 2, 0, 3, rgContained},
               {0, 1 - 1e-7, 0, 1, rgContain}, {0, 0.5, 0, 1, rgContained}, {1, 3, 0, 2, rgCross}};
  for (const auto& c : cases)
    EXPECT_EQ(TShapeRelationUtils::CalcRegionRelation(c.A0, c.A1, c.B0, c.B1, 1e-6), c.Want) << c.A0 << " " << c.A1;
}

TEST(SmallRecords, IntegerPoints) {
  EXPECT_EQ(TPointL2D(3, -4).RotateBy90(), TPointL2D(4, 3));
  // Only the low 32 bits survive the narrowing.
  EXPECT_EQ(TPointL2D((1LL << 32) + 5, -1).ToCADIntPoint(), TIntPoint(5, -1));
  EXPECT_NE(std::hash<TPointL2D>{}(TPointL2D(1, 2)), std::hash<TPointL2D>{}(TPointL2D(2, 1)));
}

TEST(Checks, InvalidInputNamesTheOperationAndTheValue) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  // Arcs raise geometry errors (checked with the arcs), everything else parameter errors.
  EXPECT_EQ(MessageOf([&] { TArc2D({nan, 0}, 1, 0, 1); }),
            "[Error] TArc2D.Create: Center (NAN, 0) is not a finite point");
  EXPECT_EQ(MessageOf([&] { TArc2D::CreateBulge({0, 0}, {1, 0}, inf); }),
            "[Error] TArc2D.CreateBulge: Bulge is not a finite number");
  EXPECT_THROW(TVPolyline2D(TPath64{{1, 1}}, 0.0), EParamError);
  EXPECT_EQ(MessageOf([] { TVPolyline2D(TPath64{{1, 1}}, -0.5); }),
            "[Error] TVPolyline2D.Create: Rate -0.5 must be a positive number");
  EXPECT_EQ(MessageOf([&] { TVPolyline2D(TPath64{{1, 1}}, inf); }),
            "[Error] TVPolyline2D.Create: Rate INF must be a positive number");
  EXPECT_EQ(MessageOf([] { TVHPolygonList(Clipper::TPolyTree(), 0.0); }),
            "[Error] TVHPolygonList.Create: Rate 0 must be a positive number");
  TVPolyline2DList list;
  EXPECT_EQ(MessageOf([&] { list.DeleteRepeat(false, -0.25); }),
            "[Error] TVPolyline2DList.DeleteRepeat: Tolerance -0.25 is not a finite number of at least 0");
  EXPECT_EQ(MessageOf([&] { list.ConnectPolylines(nan); }),
            "[Error] TVPolyline2DList.ConnectPolylines: Tolerance NAN is not a finite number of at least 0");
  const TVPolyline2D bad{{0, 0}, {1, 0}, {2, nan}};
  TList<TPoint2D> points;
  TList<TLine2D> overlaps;
  EXPECT_EQ(MessageOf([&] { bad.CrossWith(TVPolyline2D{{0, 1}, {1, -1}}, points, overlaps); }),
            "[Error] TVPolyline2D.CrossWith: vertex 2 is not a finite point");
  EXPECT_EQ(MessageOf([&] { bad.CalcPointByParam(inf); }),
            "[Error] TVPolyline2D.CalcPointByParam: Param is not a finite number");
  EXPECT_EQ(MessageOf([&] { TMathUtils::CycInc(1.0, 1.0, nan); }),
            "[Error] TMathUtils.CycInc: Period NAN must be positive");
}

TEST(Orientation, ExactForIntegerPointsWhereDoublesRound) {
  using internal::CrossProduct64;
  using internal::Orientation64;
  // A = 0, B = (a, a + 1), C = (2a, 2a + 2 + k): the cross product is a * k exactly
  // (a (2a + 2 + k) - (a + 1) 2a). At a = 2^61 + 1 doubles lose the low bits of each product.
  const std::int64_t a = (std::int64_t{1} << 61) + 1;
  const TPoint64 o(0, 0);
  const TPoint64 b(a, a + 1);
  for (const std::int64_t k : {-1, 0, 1}) {
    const TPoint64 c(2 * a, 2 * a + 2 + k);
    EXPECT_TRUE(CrossProduct64(o, b, c) == static_cast<internal::TInt128>(a) * k) << k;
    EXPECT_EQ(Orientation64(o, b, c), k);
    EXPECT_EQ(Orientation64(o, c, b), -k);
    EXPECT_EQ(Orientation64(b, c, o), k);  // the turn does not depend on the start
  }
  // Near the clipper's range, on both sides of the origin.
  const std::int64_t h = Clipper::HiRange;
  EXPECT_EQ(Orientation64(TPoint64(-h, -h), TPoint64(h, h), TPoint64(h - 1, h)), 1);
  EXPECT_EQ(Orientation64(TPoint64(-h, -h), TPoint64(h, h), TPoint64(h, h - 1)), -1);
  EXPECT_EQ(Orientation64(TPoint64(-h, -h), TPoint64(h, h), TPoint64(0, 0)), 0);
}
