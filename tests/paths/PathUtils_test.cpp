// TPathUtils on hand-worked paths: rounding, conversion, boxes, extreme
// vertices, measures at the edge of the clipping range, axis crossings, point and path
// relations, parameters and comparison.

#include "orvane/paths/PathUtils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectRaise;
using U = TPathUtils;
constexpr std::int64_t H = Clipper::HiRange;
constexpr std::int64_t I64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t I64Min = std::numeric_limits<std::int64_t>::min();

std::vector<std::int64_t> Values(const TList<std::int64_t>& L) { return L.List(); }

const TPath64 Square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};

TEST(PathUtils, ConversionRoundsHalvesToEvenAndChecksTheRate) {
  EXPECT_EQ(U::CreateIntPoint({2.5, 3.5}, 1.0), TPoint64(2, 4));
  EXPECT_EQ(U::CreateIntPoint({-2.5, -3.5}, 1.0), TPoint64(-2, -4));
  testing::ExpectNear(U::CreatePoint2D({3, -7}, 2.0), {1.5, -3.5});

  const TPath64 box = U::CreatePath(TRect2D(1, 2, 3, 4), 10.0);
  EXPECT_EQ(box, (TPath64{{10, 40}, {10, 20}, {30, 20}, {30, 40}}));
  EXPECT_FALSE(U::IsClosed(box));
  EXPECT_TRUE(U::CreatePath(static_cast<const TVPolyline2D*>(nullptr), 1.0).empty());
  EXPECT_TRUE(U::CreatePaths(static_cast<const TVPolyline2DList*>(nullptr), 1.0).empty());

  for (const double rate : {0.0, -1.0, std::nan("")}) {
    EXPECT_THROW(U::CreateIntPoint({1, 1}, rate), EParamError);
    EXPECT_THROW(U::CreatePath(TDynPoints2D{{1, 1}}, rate), EParamError);
    EXPECT_THROW(U::CreatePolyline(Square, rate), EParamError);
  }
  EXPECT_THROW(U::CreateIntPoint({1e300, 0}, 1.0), EConvertError);

  // Drawing -> integer -> drawing -> integer gives the same path; the drawing round trip
  // moves each vertex by at most half an integer unit.
  std::mt19937 rng(7);
  const TVPolyline2D poly(testing::RandomStar(rng, 40));
  const TPath64 path = U::CreatePath(poly, PathWorkingRate);
  const auto back = U::CreatePolyline(path, PathWorkingRate);
  EXPECT_EQ(U::CreatePath(*back, PathWorkingRate), path);
  for (int i = 0; i < poly.Count(); ++i) {
    EXPECT_LE(std::fabs((*back)[i].X - poly[i].X), 0.5 / PathWorkingRate + 1e-15);
    EXPECT_LE(std::fabs((*back)[i].Y - poly[i].Y), 0.5 / PathWorkingRate + 1e-15);
  }

  // Polygons flatten outline first, then holes; a list that does not own its polylines is
  // refused and left as it was.
  TVHPolygonList regions;
  auto first = std::make_unique<TVHPolygon>();
  first->Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0, 0}, {4, 0}, {0, 4}}));
  first->Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{1, 1}, {1, 2}, {2, 1}}));
  auto second = std::make_unique<TVHPolygon>();
  second->Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{9, 9}, {8, 9}, {9, 8}}));
  regions.Add(std::move(first));
  regions.Add(std::move(second));
  EXPECT_EQ(U::CreatePaths(regions, 1.0),
            (TPaths64{{{0, 0}, {4, 0}, {0, 4}}, {{1, 1}, {1, 2}, {2, 1}}, {{9, 9}, {8, 9}, {9, 8}}}));
  TVPolyline2DList borrowed(false);
  TVPolyline2D kept{{1, 2}};
  borrowed.Add(&kept);
  EXPECT_THROW(U::AssignToPolylines({Square}, borrowed, 1.0), EParamError);
  EXPECT_EQ(borrowed.Count(), 1);
  const auto made = U::CreatePolylines({Square, {{1, 1}}}, 2.0);
  ASSERT_EQ(made->Count(), 2);
  testing::ExpectNear((*(*made)[0])[2], {5, 5});
}

TEST(PathUtils, PointArithmetic) {
  EXPECT_EQ(U::Sub({1, 1}, {4, 6}), TPoint64(3, 5));
  EXPECT_EQ(U::Divide({5, -7}, 2.0), TPoint64(2, -4));
  EXPECT_THROW(U::Divide({5, 7}, 0.0), EParamError);
  EXPECT_EQ(U::PointMul({3, 5}, 0.5), TPoint64(2, 2));
  EXPECT_EQ(U::Rotate(TPoint64(1000, 0), HalfPi), TPoint64(0, 1000));
  EXPECT_DOUBLE_EQ(U::Angle({1, 0}, {0, 1}), HalfPi);
  EXPECT_DOUBLE_EQ(U::Angle({0, 1}, {1, 0}), 1.5 * Pi);
  // The offset is rounded, not the sum: 1 + Round(1.5) = 3 where Round(2.5) would be 2.
  EXPECT_EQ(U::SeglineEvalPoint({1, 0}, {4, 0}, 0.5), TPoint64(3, 0));
  EXPECT_TRUE(U::SameVector({1, 0}, {1, 5}));
  EXPECT_FALSE(U::SameVector({1, 0}, {-1, 5}));
  ExpectRaise<EAssertionFailed>([] { U::SameVector({1, 0}, {0, 5}); }, "Zero Vector or Zero Dot!");
  ExpectRaise<EAssertionFailed>([] { U::SameVector({0, 0}, {3, 5}); }, "Zero Vector or Zero Dot!");
  EXPECT_THROW(U::Negative(TPoint64(I64Min, 0)), EConvertError);
  EXPECT_THROW(U::Sub({-H, 0}, {I64Max, 0}), EConvertError);

  // Strech keeps the direction and reaches about Length: (1, 1) to length 100 is (71, 71), not
  // a unit step (1, 1) scaled to (100, 100).
  EXPECT_EQ(U::Strech({1, 1}, 100.0), TPoint64(71, 71));
  EXPECT_EQ(U::Strech({3, 4}, 10.0), TPoint64(6, 8));
  EXPECT_EQ(U::Strech({-5, 0}, 2.5), TPoint64(-2, 0));
  EXPECT_EQ(U::Strech({0, 0}, 5.0), TPoint64(0, 0));

  // Twice the signed area: exact where the 64-bit products would wrap, clamped beyond.
  EXPECT_EQ(U::DoubleArea({0, 0}, {3, 0}, {0, 4}), 12);
  constexpr std::int64_t b = std::int64_t{1} << 40;
  EXPECT_EQ(U::DoubleArea({0, 0}, {b, b}, {b + 1, b}), -b);
  EXPECT_EQ(U::DoubleArea({-H, -H}, {H, -H}, {H, H}), I64Max);
  EXPECT_EQ(U::DoubleArea({-H, -H}, {H, H}, {H, -H}), I64Min);
}

TEST(PathUtils, BoxesReadOneYOrder) {
  // Top is the smaller Y, as IntBoundbox writes it.
  const TRect64 r(0, 0, 10, 10);
  EXPECT_EQ(U::PointInRect({5, 5}, r), 1);
  EXPECT_EQ(U::PointInRect({0, 5}, r), -1);
  EXPECT_EQ(U::PointInRect({5, 10}, r), -1);
  EXPECT_EQ(U::PointInRect({-1, 5}, r), 0);
  EXPECT_EQ(U::PointInRect({5, 11}, r), 0);
  EXPECT_EQ(U::IntBoundbox(TPath64()), TRect64());
  EXPECT_FALSE(U::BoundBox(TPath64()).IsValid());
  EXPECT_EQ(U::BoundBox(TPaths64{{{1, 5}}, {}, {{-2, 3}, {4, 4}}}), TRect2D(-2, 3, 4, 5));

  // The box overload of PointInPolygon trusts the box given: outside it is outside.
  EXPECT_EQ(U::PointInPolygon({3, 3}, TPath64{{0, 0}, {10, 0}, {0, 10}}, TRect64(0, 0, 2, 2)), 0);
}

TEST(PathUtils, EditsAndMotions) {
  TPath64 p = Square;
  EXPECT_FALSE(U::Delete(p, -1));
  EXPECT_FALSE(U::Delete(p, 4));
  EXPECT_TRUE(U::Delete(p, 1));
  EXPECT_EQ(p, (TPath64{{0, 0}, {10, 10}, {0, 10}}));

  TPaths64 moved{Square, {{1, 2}, {3, 4}}};
  U::Translate(moved, TPointL2D(5, -5));
  U::Negative(moved);
  U::Reverse(moved);
  EXPECT_EQ(moved[1], (TPath64{{-8, 1}, {-6, 3}}));
  U::Zoom(moved, 0.5);
  EXPECT_EQ(moved[1], (TPath64{{-4, 0}, {-3, 2}}));
  TPath64 big{{0, 0}, {I64Max - 1, 0}};
  const TPath64 before = big;
  EXPECT_THROW(U::Translate(big, TPointL2D(2, 0)), EConvertError);
  EXPECT_EQ(big, before);
}

TEST(PathUtils, ExtremeVertices) {
  // The first vertex is rightmost but low; a later one within Tol across and higher wins, one
  // within Tol and lower does not.
  const TPath64 p{{10000, 0}, {9500, 500}, {9800, -300}, {5000, 9000}};
  int idx = -1;
  EXPECT_EQ(U::RightTopPoint(p, idx), TPoint64(9500, 500));
  EXPECT_EQ(idx, 1);
  EXPECT_EQ(U::RightBottomPoint(p, idx), TPoint64(9800, -300));
  EXPECT_EQ(idx, 2);
  EXPECT_EQ(U::RightTopPoint(p, idx, 100), TPoint64(10000, 0));
  EXPECT_EQ(U::TopLeftPoint(p), TPoint64(5000, 9000));
  EXPECT_EQ(U::BottomLeftPoint(p), TPoint64(9800, -300));
  EXPECT_EQ(U::BottomRightPoint(p), TPoint64(9800, -300));
  EXPECT_EQ(U::TopRightPoint(p), TPoint64(5000, 9000));
  idx = 42;
  EXPECT_EQ(U::TopRightPoint(TPath64(), idx), TPoint64(I64Min, I64Min));
  EXPECT_EQ(idx, 42);

  // A tolerance of 0 behaves as 1; an int variable selects the index form, never a tolerance.
  const TPath64 column{{0, 0}, {0, 5}};
  EXPECT_EQ(U::LeftTopPoint(column, idx, 0), TPoint64(0, 0));
  EXPECT_EQ(U::LeftTopPoint(column, 0), TPoint64(0, 5));
  int where = -1;
  EXPECT_EQ(U::LeftTopPoint(column, where), TPoint64(0, 5));
  EXPECT_EQ(where, 1);

  // Tuned: B = (200, 150000) with the near limit of 300; climbing within 10000 across reaches
  // (5000, 300000), 150000 higher and over ten times further up than across.
  const TPath64 climb{{0, 0}, {200, 150000}, {5000, 300000}, {100000, 0}};
  EXPECT_EQ(U::LeftTopPoint(climb, where), TPoint64(5000, 300000));
  EXPECT_EQ(where, 2);
  const TPath64 low{{0, 0}, {200, 150000}, {5000, 240000}, {100000, 0}};
  EXPECT_EQ(U::LeftTopPoint(low, where), TPoint64(200, 150000));
  EXPECT_EQ(where, 1);

  // Inclusive tolerance in the left-bottom family; multi-path indices.
  const TPaths64 paths{{{5, 0}, {0, 3}}, {{1, 0}, {10, -2}}};
  int pathIdx = 9, ptIdx = 9;
  EXPECT_EQ(U::BottomLeftPoint(paths, pathIdx, ptIdx, 2), TPoint64(1, 0));
  EXPECT_EQ(std::make_pair(pathIdx, ptIdx), std::make_pair(1, 0));
  EXPECT_EQ(U::BottomLeftPoint(paths, pathIdx, ptIdx, 1), TPoint64(10, -2));
  EXPECT_EQ(std::make_pair(pathIdx, ptIdx), std::make_pair(1, 1));
  EXPECT_EQ(U::LeftBottomPoint(paths, 1), TPoint64(1, 0));
  EXPECT_EQ(U::LeftBottomPoint(paths, 0), TPoint64(0, 3));
  EXPECT_EQ(U::LeftBottomPoint(TPath64{{3, 9}, {2, 0}, {0, 5}}, 2), TPoint64(2, 0));
  EXPECT_EQ(U::LeftBottomPoint(TPaths64{{}, {}}, pathIdx, ptIdx, 1), TPoint64());
  EXPECT_EQ(pathIdx, -1);
  // Sentinels and far coordinates do not overflow the near test.
  EXPECT_EQ(U::LeftBottomPoint(TPaths64{{{H, 0}, {-H, -1}}}, I64Max), TPoint64(-H, -1));
}

TEST(PathUtils, MeasuresAtTheEdgeOfTheRange) {
  const TPath64 closed{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
  EXPECT_DOUBLE_EQ(U::Perimeter(Square), 40.0);
  EXPECT_DOUBLE_EQ(U::Perimeter(closed), 40.0);
  EXPECT_DOUBLE_EQ(U::Area(Square), 100.0);
  EXPECT_DOUBLE_EQ(U::Area({{0, 0}, {0, 10}, {10, 10}, {10, 0}}), -100.0);
  EXPECT_DOUBLE_EQ(U::Area({{0, 0}, {0, 10}, {10, 10}, {10, 0}}, true), 100.0);
  const TPaths64 holed{Square, {{2, 2}, {2, 4}, {4, 4}, {4, 2}}};
  EXPECT_DOUBLE_EQ(U::Area(holed, 0), 96.0);
  EXPECT_DOUBLE_EQ(U::Area(TPaths64{{{2, 2}, {2, 4}, {4, 4}, {4, 2}}}, 1), 4.0);
  EXPECT_DOUBLE_EQ(U::Area(holed, 2), 104.0);

  // Whole clipping range: the area 4 H^2 and the perimeter 8 H pass 2^63 in their products.
  const TPath64 huge{{-H, -H}, {H, -H}, {H, H}, {-H, H}};
  const double h = static_cast<double>(H);
  EXPECT_NEAR(U::Area(huge) / (4 * h * h), 1.0, 1e-15);
  EXPECT_NEAR(U::Perimeter(huge) / (8 * h), 1.0, 1e-15);
  EXPECT_TRUE(U::IsRectangle(huge));
  constexpr std::int64_t a = std::int64_t{1} << 61;
  EXPECT_TRUE(U::IsRectangle({{0, 0}, {a, a}, {0, 2 * a}, {-a, a}}));
  EXPECT_FALSE(U::IsRectangle({{0, 0}, {a, a + 1}, {0, 2 * a}, {-a, a}}));
  // A parallelogram whose dot product is exactly 2^64: zero only when it wraps.
  constexpr std::int64_t s33 = std::int64_t{1} << 33, s31 = std::int64_t{1} << 31;
  EXPECT_FALSE(U::IsRectangle({{0, 0}, {s33, 0}, {s33 + s31, 5}, {s31, 5}}));
  EXPECT_TRUE(U::IsRectangle(closed));
  EXPECT_FALSE(U::IsRectangle({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {1, 0}}));
  EXPECT_FALSE(U::IsRectangle({{0, 0}, {10, 0}, {10, 10}}));
  // A rectangle turned by half a radian with rounded corners is no longer exact.
  TPath64 turned{{0, 0}, {1000, 0}, {1000, 500}, {0, 500}};
  U::Rotate(turned, 0.5);
  EXPECT_FALSE(U::IsRectangle(turned));

  // Orientation: clockwise paths have the largest signed area when smallest in magnitude.
  const TPath64 cwSmall{{0, 0}, {0, 1}, {1, 1}, {1, 0}};
  const TPath64 cwBig{{0, 0}, {0, 5}, {5, 5}, {5, 0}};
  const TPaths64 cws{cwBig, cwSmall};
  EXPECT_EQ(&U::GetMaxAreaPath(cws, true), &cws[1]);
  EXPECT_EQ(&U::GetMaxAreaPath(cws, false), &cws[0]);
  const TPaths64 none;
  EXPECT_TRUE(U::GetMaxAreaPath(none, true).empty());
  TPaths64 region{Square, cwSmall};
  U::SetIsClockwise(region, true, false);
  EXPECT_TRUE(U::GetIsClockwise(region[0]));
  EXPECT_FALSE(U::GetIsClockwise(region[1]));
  U::SetIsClockwise(region, true, true);
  EXPECT_TRUE(U::GetIsClockwise(region[1]));
}

TEST(PathUtils, CrossingsWithAxisLines) {
  EXPECT_EQ(Values(U::CalcYByX(Square, 5, 0, true)), (std::vector<std::int64_t>{0, 10}));
  // Open U shape: the missing bottom edge is crossed only when the path is closed.
  const TPath64 cup{{10, 0}, {10, 10}, {0, 10}, {0, 0}};
  EXPECT_EQ(Values(U::CalcYByX(cup, 5, 0, false)), (std::vector<std::int64_t>{10}));
  EXPECT_EQ(Values(U::CalcYByX(cup, 5, 0, true)), (std::vector<std::int64_t>{10, 0}));
  // On a vertical side each vertex once, in path order; vertex 0 alone at the end when open.
  EXPECT_EQ(Values(U::CalcYByX(Square, 10, 0, true)), (std::vector<std::int64_t>{0, 10}));
  EXPECT_EQ(Values(U::CalcYByX(Square, 0, 0, false)), (std::vector<std::int64_t>{10, 0}));
  EXPECT_EQ(Values(U::CalcXByY(Square, 10, 1, true)), (std::vector<std::int64_t>{10, 0}));
  // Crossings 2.5 and 7.5 round to the even neighbours.
  const TPath64 wedge{{0, 0}, {10, 5}, {0, 10}};
  EXPECT_EQ(Values(U::CalcYByX(wedge, 5, 0, true)), (std::vector<std::int64_t>{2, 8}));
  EXPECT_TRUE(U::CalcYByX(TPath64{{0, 0}, {10, 5}, {0, 0}}, 5, 0, true).IsEmpty());
  EXPECT_EQ(Values(U::CalcYByX(TPaths64{Square, wedge}, 5, true, 0)), (std::vector<std::int64_t>{0, 10, 2, 8}));
  // Across the whole range.
  const TPath64 diamond{{0, -H}, {H, 0}, {0, H}, {-H, 0}};
  const std::vector<std::int64_t> ys = Values(U::CalcYByX(diamond, H / 2, 0, true));
  ASSERT_EQ(ys.size(), 2u);
  EXPECT_NEAR(static_cast<double>(ys[0]), -static_cast<double>(H) / 2, 1e4);
  EXPECT_NEAR(static_cast<double>(ys[1]), static_cast<double>(H) / 2, 1e4);
  EXPECT_EQ(Values(U::CalcXByY(TPath64{{-H, -H}, {H, -H}, {H, H}, {-H, H}}, 0, 0, true)),
            (std::vector<std::int64_t>{H, -H}));
}

TEST(PathUtils, PointRelations) {
  constexpr std::int64_t M = 1000000;
  const TPath64 outer{{0, 0}, {M, 0}, {M, M}, {0, M}};
  const TPath64 inner{{200000, 200000}, {800000, 200000}, {800000, 800000}, {200000, 800000}};
  // Lattice outlines check the plain cases; here the neutral ones, and an empty member of a
  // list is skipped in the even-odd count.
  EXPECT_EQ(U::RelationWithPoint(TPath64(), {0, 0}), TShapeRelation::srOut);
  EXPECT_EQ(U::RelationWithPoint(TPath64{{4, 4}}, {4, 4}), TShapeRelation::srOn);
  EXPECT_EQ(U::RelationWithPoint(TPaths64{outer, {}, inner}, {500000, 500000}), TShapeRelation::srOut);
  EXPECT_EQ(U::RelationWithPoint(TPaths64(), {0, 0}), TShapeRelation::srOut);
  // A sloped edge passes 0.001 integer units right of (1000, 1000): on within 1e-6 drawing
  // units, while the exact test has it inside.
  const TPath64 tri{{0, 0}, {1000001, 1000000}, {0, 1000000}};
  EXPECT_EQ(U::RelationWithPoint(tri, {1000, 1000}), TShapeRelation::srOn);
  EXPECT_EQ(Clipper::PointInPolygon({1000, 1000}, tri), 1);
  EXPECT_EQ(U::RelationWithPoint(tri, {1001, 1000}), TShapeRelation::srOut);

  // Outline and holes.
  const TPaths64 holed{outer, inner};
  int outline = 7;
  EXPECT_EQ(U::PointInPolygons({200000, 500000}, holed, outline), -2);
  EXPECT_EQ(outline, 1);
  EXPECT_EQ(U::PointInPolygons({500000, 500000}, holed), 0);
  EXPECT_EQ(U::PointInPolygons({100000, 500000}, holed), 1);
  EXPECT_EQ(U::PointInPolygons({0, 500000}, holed, outline), -1);
  EXPECT_EQ(outline, -1);
  outline = 7;
  EXPECT_EQ(U::PointInPolygons({0, 0}, TPaths64(), outline), 0);
  EXPECT_EQ(outline, 7);
  const TList<TRect64> boxes{U::IntBoundbox(outer), U::IntBoundbox(inner)};
  EXPECT_EQ(U::PointInPolygons({200000, 500000}, holed, boxes, outline), -2);
  EXPECT_EQ(U::PointInPolygons({500000, 500000}, holed, boxes, outline), 0);
  EXPECT_THROW(U::PointInPolygons({0, 0}, holed, TList<TRect64>{U::IntBoundbox(outer)}, outline), EParamError);
  EXPECT_TRUE(U::IsPointIn({200000, 500000}, holed, 0));
  EXPECT_FALSE(U::IsPointIn({500000, 500000}, holed, 10));
  EXPECT_TRUE(U::IsPointIn({500000, 500000}, holed, 300001));
  EXPECT_TRUE(U::IsPointIn({M + 5, 10}, outer, 6));
  EXPECT_FALSE(U::IsPointIn({M + 5, 10}, outer, 5));

  // Nearest points: a distance of exactly Range does not count; distances come back whole.
  double dist = -1.0;
  TPointL2D nearest(-1, -1);
  EXPECT_FALSE(U::IsNearByPoint({Square}, {13, 4}, 3, dist, nearest));
  EXPECT_EQ(dist, -1.0);
  EXPECT_TRUE(U::IsNearByPoint({Square}, {13, 4}, 4, dist, nearest));
  EXPECT_EQ(dist, 3.0);
  EXPECT_EQ(nearest, TPointL2D(10, 4));
  EXPECT_EQ(U::DistanceTo({Square}, {14, 14}, nearest), 6.0);  // sqrt(32), rounded
  EXPECT_EQ(nearest, TPointL2D(10, 10));
  EXPECT_EQ(U::DistanceTo({{}, {{3, 3}}}, {0, -1}, nearest), 5.0);
  EXPECT_EQ(U::DistanceTo({}, {0, 0}, nearest), MaxDouble);
  EXPECT_EQ(nearest, TPointL2D(3, 3));
  EXPECT_EQ(U::DistanceTo({{{-H, -H}, {H, -H}}}, {0, H / 2}, nearest), 6917529027641081856.0);
}

TEST(PathUtils, PointScansAgreeWithTheExactTestOnLatticeOutlines) {
  // On a grid of at most 8 units an edge passes a lattice point off it by at least 1/8 unit,
  // beyond the 1e-6 drawing-unit band at the working rate: the scan must match the exact test
  // everywhere, vertices, level edges and rays through vertices included.
  std::mt19937 rng(16);
  int seen[3] = {0, 0, 0};
  for (int round = 0; round < 300; ++round) {
    const TDynPoints2D ring = testing::GridRing(rng, 12, 8);
    TPath64 path;
    for (std::size_t i = 0; i + (round % 2 == 0 ? 1 : 0) < ring.size(); ++i)
      path.emplace_back(std::llround(ring[i].X), std::llround(ring[i].Y));
    if (round % 3 == 0) U::Reverse(path);
    const TPath64 other = testing::Rect(2, 3, 6, 5);
    const TRect64 box = U::IntBoundbox(path);
    for (std::int64_t x = -1; x <= 9; ++x) {
      for (std::int64_t y = -1; y <= 9; ++y) {
        const TPoint64 pt(x, y);
        const int exact = Clipper::PointInPolygon(pt, path);
        const TShapeRelation want = exact == -1  ? TShapeRelation::srOn
                                    : exact == 1 ? TShapeRelation::srIn
                                                 : TShapeRelation::srOut;
        ASSERT_EQ(U::RelationWithPoint(path, pt), want) << "round " << round << " at " << x << "," << y;
        ASSERT_EQ(U::PointInPolygon(pt, path, box), exact) << "round " << round << " at " << x << "," << y;
        ++seen[exact + 1];
        const int second = Clipper::PointInPolygon(pt, other);
        const TShapeRelation both = exact == -1 || second == -1     ? TShapeRelation::srOn
                                    : (exact == 1) != (second == 1) ? TShapeRelation::srIn
                                                                    : TShapeRelation::srOut;
        ASSERT_EQ(U::RelationWithPoint(TPaths64{path, other}, pt), both) << "round " << round;
      }
    }
  }
  for (const int n : seen) EXPECT_GT(n, 1000);
}

TEST(PathUtils, ParametersAndCorners) {
  constexpr std::int64_t M = 1000000;
  const TPath64 ell{{0, 0}, {M, 0}, {M, M}};
  double param = -1.0;
  EXPECT_TRUE(U::ParamByPoint(ell, {M, 0}, param));
  EXPECT_DOUBLE_EQ(param, 1.0);
  EXPECT_TRUE(U::ParamByPoint(ell, {M, 250000}, param));
  EXPECT_DOUBLE_EQ(param, 1.25);
  param = -1.0;
  EXPECT_FALSE(U::ParamByPoint(ell, {0, M}, param));  // only on the closing edge
  EXPECT_EQ(param, -1.0);
  EXPECT_TRUE(U::ParamByPoint(TPath64{{5, 5}}, {5, 5}, param));
  EXPECT_EQ(param, 0.0);
  // Doubling back: the outward leg is 5 units off, within Tol; the return leg passes through.
  const TPath64 back{{0, 0}, {M, 0}, {0, 10}};
  EXPECT_TRUE(U::ParamByPoint(back, {500000, 5}, param, 1e-4));
  EXPECT_NEAR(param, 0.5, 1e-12);
  EXPECT_TRUE(U::AccurateParamByPoint(back, {500000, 5}, param, 1e-4));
  EXPECT_NEAR(param, 1.5, 1e-12);

  EXPECT_EQ(U::PointByParam(Square, 4.0), TPoint64(0, 0));
  EXPECT_EQ(U::PointByParam(Square, 3.5), TPoint64(0, 5));
  EXPECT_EQ(U::PointByParam(Square, 0.25), TPoint64(2, 0));
  EXPECT_EQ(U::PointByParam(Square, -1e-7), TPoint64(0, 0));
  for (const double bad : {4.1, -0.01, std::nan("")})
    ExpectRaise<Exception>([&] { U::PointByParam(Square, bad); }, "[Error] TPathUtils.PointByParam: 参数超出取值范围");
  ExpectRaise<Exception>([] { U::PointByParam(TPath64(), 0.0); }, "[Error] TPathUtils.PointByParam: 参数超出取值范围");

  // Anticlockwise square: from the edge to the previous vertex round to the edge to the next
  // is three quarters; the closing vertex is the corner at vertex 0.
  const TPath64 closed{{0, 0}, {M, 0}, {M, M}, {0, M}, {0, 0}};
  EXPECT_DOUBLE_EQ(U::CornerRadian(closed, 1), 1.5 * Pi);
  EXPECT_DOUBLE_EQ(U::CornerRadian(closed, 0), 1.5 * Pi);
  EXPECT_DOUBLE_EQ(U::CornerRadian(closed, 4), 1.5 * Pi);
  EXPECT_DOUBLE_EQ(U::CornerRadian(TPath64{{0, 0}, {0, M}, {M, M}, {M, 0}}, 0), HalfPi);
  EXPECT_DOUBLE_EQ(U::CornerRadian(TPath64{{0, 0}, {M, 0}, {2 * M, 0}}, 1), Pi);
  ExpectRaise<Exception>([&] { U::CornerRadian(closed, 5); }, "[Error] TPathUtils.CornerRadian: 下标越界");
  ExpectRaise<Exception>([&] { U::CornerRadian(closed, -1); }, "[Error] TPathUtils.CornerRadian: 下标越界");
}

TEST(PathUtils, DegeneratePathsGiveNeutralAnswers) {
  const TPath64 none;
  const TPath64 one{{5, 5}};
  for (const TPath64& p : {none, one}) {
    EXPECT_EQ(U::Area(p), 0.0);
    EXPECT_EQ(U::Perimeter(p), 0.0);
    EXPECT_FALSE(U::IsRectangle(p));
    EXPECT_FALSE(U::GetIsClockwise(p));
    EXPECT_TRUE(U::CalcYByX(p, 5, 10, true).IsEmpty());
    EXPECT_TRUE(U::CalcXByY(p, 5, 10, false).IsEmpty());
    EXPECT_EQ(U::PointInPolygon({5, 5}, p, U::IntBoundbox(p)), 0);
    EXPECT_EQ(U::RelationWithPath(p, Square, 1.0, 1.0), 2);
    EXPECT_EQ(U::RelationWithPath(Square, p, 1.0, 1.0), 2);
    EXPECT_DOUBLE_EQ(U::CornerRadian(p, 0), Pi);
    double param = -1.0;
    EXPECT_FALSE(U::ParamByPoint(p, {6, 6}, param));
    EXPECT_EQ(param, -1.0);
    EXPECT_FALSE(U::IsCongruent({p}, {p}, {}, 1.0));
    EXPECT_TRUE(U::ComparePath(p, p, 0));
    EXPECT_TRUE(U::Equal({p}, {p}));
    TPath64 q = p;
    EXPECT_FALSE(U::Delete(q, 1));
    U::SetIsClockwise(q, true);
    U::Rotate(q, 1.0);
    EXPECT_EQ(q.size(), p.size());
  }
  EXPECT_EQ(U::RelationWithPoint(one, {5, 6}), TShapeRelation::srOut);
  EXPECT_EQ(U::PointByParam(one, 0.5), TPoint64(5, 5));
  EXPECT_EQ(U::LeftBottomPoint(none, 3), TPoint64());
  int pathIdx = 0, ptIdx = 0;
  EXPECT_EQ(U::MostPoint(
                {}, [](const TPoint64&, const TPoint64&, std::int64_t) { return true; }, pathIdx, ptIdx, 0),
            TPoint64());
  EXPECT_EQ(std::make_pair(pathIdx, ptIdx), std::make_pair(-1, -1));
  TPaths64 nothing;
  U::SetIsClockwise(nothing, true, false);
  EXPECT_TRUE(U::CreatePolylines(nothing, 1.0)->IsEmpty());
  EXPECT_FALSE(U::Delete(nothing, 0));
}

TEST(PathUtils, RelationsOfNestedAndOverlappingSquares) {
  constexpr std::int64_t M = 1000000;  // sides of M: areas of whole units of 1e12
  auto sq = [](std::int64_t x, std::int64_t y, std::int64_t s) { return testing::Rect(x, y, x + s, y + s); };
  auto cw = [](const TPath64& p) { return Clipper::ReversePath(p); };
  const TPath64 big = sq(0, 0, 4 * M);
  const TPath64 small = sq(M, M, M);
  constexpr double abs = 1e-6, rel = 1e-6;
  EXPECT_EQ(U::RelationWithPath(big, big, abs, rel), -1);
  EXPECT_EQ(U::RelationWithPath(small, big, abs, rel), -1);
  EXPECT_EQ(U::RelationWithPath(big, small, abs, rel), 1);
  EXPECT_EQ(U::RelationWithPath(sq(0, 0, 2 * M), sq(M, M, 2 * M), abs, rel), 0);
  EXPECT_EQ(U::RelationWithPath(small, sq(5 * M, 0, M), abs, rel), 2);
  EXPECT_EQ(U::RelationWithPath(sq(0, 0, M), sq(M, 0, M), abs, rel), 2);  // edge contact only
  EXPECT_EQ(U::RelationWithPath(cw(small), big, abs, rel), -1);
  EXPECT_EQ(U::RelationWithPath(big, cw(small), abs, rel), 1);
  EXPECT_EQ(U::RelationWithPath(sq(0, 0, M), big, abs, rel), -1);  // inside, sharing a corner
  // A sliver of 1e-3 units sticking out counts as inside with AbsTol above it.
  EXPECT_EQ(U::RelationWithPath(testing::Rect(0, 0, M, M + 1000), sq(0, 0, M), 2e-3, 0.0), -1);
  EXPECT_EQ(U::RelationWithPath(testing::Rect(0, 0, M, M + 1000), sq(0, 0, M), 1e-9, 0.0), 1);
  // No area, no region: neutral, and never a division by zero.
  const TPath64 flat{{0, 0}, {M, M}, {2 * M, 2 * M}};
  EXPECT_EQ(U::RelationWithPath(flat, big, abs, 0.5), 2);
  EXPECT_EQ(U::RelationWithPath(big, flat, abs, 0.5), 2);
  EXPECT_EQ(U::RelationWithPath(TPath64(), big, 0.0, 0.0), 2);
}

TEST(PathUtils, ComparingPathsAndLists) {
  const TPath64 t{{0, 0}, {1, 0}, {0, 1}};
  EXPECT_TRUE(U::ComparePath(t, {{1, 0}, {0, 1}, {0, 0}}, 2));
  EXPECT_TRUE(U::ComparePath(t, {{0, 1}, {1, 0}, {0, 0}}, 2));
  EXPECT_FALSE(U::ComparePath(t, {{0, 1}, {1, 0}, {0, 0}}, 1));
  EXPECT_FALSE(U::ComparePath(t, {{0, 0}, {1, 0}, {0, 2}}, 0));
  EXPECT_FALSE(U::ComparePath(t, {{0, 0}, {1, 0}}, 99));
  EXPECT_TRUE(U::ComparePath({}, {}, 5));
  ExpectRaise<EAssertionFailed>([&] { U::ComparePath(t, t, 3); }, "Assertion failure");
  // Two-vertex paths match only when both vertices do.
  EXPECT_FALSE(U::ComparePath({{0, 0}, {1, 0}}, {{0, 0}, {2, 0}}, 0));
  EXPECT_TRUE(U::ComparePath({{0, 0}, {1, 0}}, {{1, 0}, {0, 0}}, 1));
  // A repeated closing vertex takes part in the walk.
  const TPath64 closed{{0, 0}, {1, 0}, {0, 1}, {0, 0}};
  EXPECT_FALSE(U::ComparePath(closed, {{0, 0}, {0, 1}, {1, 0}, {0, 0}}, 0));
  EXPECT_TRUE(U::ComparePath(closed, {{0, 0}, {0, 1}, {1, 0}, {0, 0}}, 3));
  EXPECT_FALSE(U::ComparePath({{1, 0}, {0, 1}, {0, 0}, {1, 0}}, closed, 1));

  const TPath64 p = Square;
  const TPath64 q{{5, 5}, {6, 5}, {5, 6}};
  EXPECT_TRUE(U::Equal(TPaths64{p, q}, TPaths64{{{5, 6}, {6, 5}, {5, 5}}, {{10, 10}, {0, 10}, {0, 0}, {10, 0}}}));
  EXPECT_FALSE(U::Equal(TPaths64{p, p}, TPaths64{p, q}));
  EXPECT_FALSE(U::Equal(TPaths64{p}, TPaths64{p, p}));
  // An empty path needs no partner, but does not stand in for a path the other list has.
  EXPECT_TRUE(U::Equal(TPaths64{p, {}}, TPaths64{{}, p}));
  EXPECT_FALSE(U::Equal(TPaths64{p, {}}, TPaths64{p, q}));
  EXPECT_FALSE(U::Equal(TPaths64{p, q}, TPaths64{p, {}}));
  EXPECT_TRUE(U::Equal(TPaths64(), TPaths64()));

  // Congruence by area: extra collinear vertices change nothing.
  const TPaths64 dense{{{0, 0}, {5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 5}}};
  EXPECT_FALSE(U::Equal({p}, dense));
  EXPECT_TRUE(U::IsCongruent({p}, dense, {}, 1e-9));
  EXPECT_FALSE(U::IsCongruent({p}, {{{0, 0}, {10, 0}, {10, 11}, {0, 10}}}, {}, 1.0));
  EXPECT_TRUE(U::IsCongruent({p}, {{{0, 0}, {10, 0}, {10, 11}, {0, 10}}}, TNullable<double>(true, 100.0), 1e-9));
  TPath64 clockwise = p;
  U::Reverse(clockwise);
  EXPECT_FALSE(U::IsCongruent({clockwise}, {clockwise}, {}, 1.0));
  const TPaths64 holed{p, {{2, 2}, {2, 4}, {4, 4}, {4, 2}}};
  EXPECT_TRUE(U::IsCongruent(holed, holed, {}, 1e-9));
  EXPECT_FALSE(U::IsCongruent(holed, {p}, {}, 1.0));
}

}  // namespace
}  // namespace orvane
