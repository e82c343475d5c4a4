#include "orvane/vertex/VHPolygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/clipping/Clipper2.h"
#include "support/BoostGeometry.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

namespace bg = boost::geometry;
using testing::BMulti;
using testing::BPoint;
using testing::BPolygon;

constexpr auto On = static_cast<std::uint8_t>(TShapeRelation::srOn);
constexpr auto In = static_cast<std::uint8_t>(TShapeRelation::srIn);
constexpr auto Out = static_cast<std::uint8_t>(TShapeRelation::srOut);

std::unique_ptr<TVPolyline2D> Square(double X0, double Y0, double X1, double Y1, bool Clockwise) {
  auto loop = std::make_unique<TVPolyline2D>(TRect2D(X0, Y0, X1, Y1));
  if (Clockwise) loop->Reverse();
  return loop;
}

TEST(VHPolygon, LoopsKeepOppositeOrientations) {
  for (const bool clockwise : {false, true}) {
    for (const bool turnInput : {false, true}) {
      TVHPolygon p(clockwise);
      p.Add(Square(0, 0, 10, 10, turnInput));
      p.Add(Square(1, 1, 2, 2, turnInput));
      p.Add(Square(3, 3, 4, 4, !turnInput));
      auto open = Square(5, 5, 6, 6, turnInput);
      open->Delete(4);
      p.Add(std::move(open));  // an open loop keeps its orientation until it is set
      EXPECT_EQ(p[0]->IsClockwise(), clockwise);
      EXPECT_EQ(p[1]->IsClockwise(), !clockwise);
      EXPECT_EQ(p[2]->IsClockwise(), !clockwise);
      EXPECT_EQ(p[3]->IsClockwise(), turnInput);
      p.Insert(0, Square(-1, -1, 11, 11, !clockwise));  // the new outline; the old one a hole
      EXPECT_EQ(p[0]->IsClockwise(), clockwise);
      EXPECT_EQ(p[1]->IsClockwise(), !clockwise);
      p.Delete(0);  // the first hole moves up to become the outline
      EXPECT_EQ(p[0]->IsClockwise(), clockwise);
      p.Delete(3);
      EXPECT_EQ(p.Area(), 98.0);

      p.SetIsClockwise(!clockwise);
      for (int i = 0; i < p.Count(); ++i) EXPECT_EQ(p[i]->IsClockwise(), (i == 0) != clockwise);
      p[1]->Reverse();
      p.SetIsClockwise(!clockwise);  // the stored value: nothing is touched
      EXPECT_EQ(p[1]->IsClockwise(), !clockwise);
      p[1]->Reverse();

      // A mirror turns every loop; the polygon follows, by rule or by reading the outline.
      auto mirrored = p.CloneAs<TVHPolygon>();
      mirrored->YMirror();
      TMatrix2D reflect;
      reflect.SetToMirroringLine({0, 0}, {1, 1});
      p.Transform(reflect);
      for (const TVHPolygon* q : {mirrored.get(), &p}) {
        EXPECT_EQ(q->GetIsClockwise(), clockwise);
        for (int i = 0; i < q->Count(); ++i) EXPECT_EQ((*q)[i]->IsClockwise(), (i == 0) == clockwise);
        EXPECT_NEAR(q->Area(), 98.0, 1e-9);
      }
    }
  }
}

TEST(VHPolygon, NetAreaCentroidAndPointRelation) {
  auto polygon = std::make_unique<TVHPolygon>(false);
  TVHPolygon& p = *polygon;
  EXPECT_TRUE(p.Area() == 0.0 && !p.BoundBox().IsValid() && p.RelationWithPoint({0, 0}, 1e-6) == Out);
  p.Add(Square(0, 0, 10, 10, false));
  p.Add(Square(6, 6, 8, 8, false));
  p.Add(Square(1, 1, 3, 2, true));
  // 100 at (5, 5), less 4 at (7, 7) and 2 at (2, 1.5).
  EXPECT_DOUBLE_EQ(p.Area(), 94.0);
  EXPECT_NEAR(p.Gravity().X, 468.0 / 94.0, 1e-12);
  EXPECT_NEAR(p.Gravity().Y, 469.0 / 94.0, 1e-12);
  EXPECT_EQ(p.RelationWithPoint({7, 6}, 1e-6), On);  // a hole's edge
  EXPECT_EQ(p.RelationWithPoint({7, 7}, 1e-6), Out);
  EXPECT_EQ(p.RelationWithPoint({5, 5}, 1e-6), In);
  EXPECT_EQ(p.RelationWithPoint({10, 3}, 1e-6), On);
  EXPECT_EQ(p.RelationWithPoint({11, 3}, 1e-6), Out);
  EXPECT_TRUE(p.IsCrossWith(TVPolyline2D(TLine2D({7, 5}, {7, 7}))));
  EXPECT_FALSE(p.IsCrossWith(TVPolyline2D(TLine2D({4, 4}, {5, 5}))));

  // A second region of 100 at (25, 5): the outlines alone weigh 100 at (5, 5).
  TVHPolygonList list;
  list.Add(std::move(polygon));
  list.Add(std::make_unique<TVHPolygon>(false));
  list[1]->Add(Square(20, 0, 30, 10, true));
  EXPECT_NEAR(list.XGravity(), (468.0 + 2500.0) / 194.0, 1e-12);
  EXPECT_NEAR(list.XGravityOutline(), 15.0, 1e-12);
  EXPECT_EQ(list.RelationWithPoint({25, 5}, 1e-6), In);
  EXPECT_EQ(list.RelationWithPoint({7, 7}, 1e-6), Out);
}

TEST(VHPolygon, SortsByAreaAndByCompactness) {
  // A thin L of area 100 in a box of 10000 keys at 30, a square of 99 at 99.
  const double h = 100.0 - std::sqrt(9900.0);
  TVHPolygonList list;
  for (int k = 0; k < 2; ++k) list.Add(std::make_unique<TVHPolygon>(false));
  list[0]->Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0, 0}, {100, 0}, {100, h}, {h, h}, {h, 100}, {0, 100}}));
  list[1]->Add(Square(0, 0, 9.9, 10, false));
  list.SortByArea(true);
  EXPECT_NEAR(list[0]->Area(), 100.0, 1e-9);
  list.SortByRegArea(true);
  EXPECT_NEAR(list[0]->Area(), 99.0, 1e-9);
}

TEST(VHPolygon, RegionsFromEitherClippingTree) {
  // Nested squares (10, 6, 2 wide) under even-odd: a ring, and an island inside its hole.
  const TPaths64 nested{
      {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {{2, 2}, {8, 2}, {8, 8}, {2, 8}}, {{4, 4}, {6, 4}, {6, 6}, {4, 6}}};
  Clipper::TClipper legacy;
  legacy.AddPaths(nested, TPathType::ptSubject, true);
  Clipper::TPolyTree tree;
  ASSERT_TRUE(legacy.Execute(TClipType::ctUnion, &tree, TFillRule::frEvenOdd));
  Clipper2::TClipper64 modern;
  modern.AddSubject(nested);
  Clipper2::TPolyTree64 tree64;
  TPaths64 open;
  ASSERT_TRUE(modern.Execute(TClipType::ctUnion, TFillRule::frEvenOdd, &tree64, open));
  for (const auto& list : {TVHPolygonList(tree, 0.5), TVHPolygonList(tree64, 0.5)}) {
    ASSERT_EQ(list.Count(), 2);
    ASSERT_EQ(list[0]->Count(), 2);
    ASSERT_EQ(list[1]->Count(), 1);
    EXPECT_DOUBLE_EQ(list[0]->Area(), 400.0 - 144.0);
    EXPECT_DOUBLE_EQ(list[1]->Area(), 16.0);
    EXPECT_TRUE(list.CheckClosed());
    EXPECT_FALSE(list[0]->First()->IsClockwise());
    EXPECT_TRUE((*list[0])[1]->IsClockwise());
    EXPECT_EQ(list[1]->BoundBox(), TRect2D(8, 8, 12, 12));
  }
  EXPECT_THROW(TVHPolygonList(tree, 0.0), EParamError);
  EXPECT_EQ(TVHPolygonList(Clipper::TPolyTree(), 1.0).Count(), 0);
}

// A star-shaped outline round C, with a small star hole round C when Hole.
std::unique_ptr<TVHPolygon> StarRegion(std::mt19937& Rng, const TPoint2D& C, bool Hole) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto ring = [&](double R0, double R1) {
    const int n = 5 + static_cast<int>(20 * unit(Rng));
    return std::make_unique<TVPolyline2D>(testing::Star(Rng, n, C, R0, R1));
  };
  auto region = std::make_unique<TVHPolygon>(false);
  region->Add(ring(4, 10));
  if (Hole) region->Add(ring(0.5, 1.5));
  return region;
}

BPolygon ToBoost(const TVHPolygon& P) {
  BPolygon b;
  for (int i = 0; i < P.Count(); ++i) {
    auto& ring = i == 0 ? b.outer() : b.inners().emplace_back();
    for (const TPoint2D& p : P[i]->Points()) ring.push_back({p.X, p.Y});
  }
  bg::correct(b);
  return b;
}

TEST(VHPolygon, IntersectSelfAgainstAreaIdentities) {
  std::mt19937 rng(17);
  std::uniform_real_distribution<double> offset(-4.0, 4.0);
  for (int round = 0; round < 60; ++round) {
    TVHPolygonList list;
    BMulti common{ToBoost(*list[list.Add(StarRegion(rng, {offset(rng), offset(rng)}, round % 2 == 0))])};
    for (int k = 1; k < 2 + round % 3; ++k) {
      BMulti next;
      bg::intersection(common, ToBoost(*list[list.Add(StarRegion(rng, {offset(rng), offset(rng)}, k % 2 == 0))]), next);
      common = next;
    }
    // Against the same region by Boost.Geometry (the integer paths at 1e5 move each vertex
    // by up to 5e-6), in any order of the polygons.
    const auto got = list.IntersectSelf();
    EXPECT_NEAR(got->Area(), bg::area(common), 1e-3) << round;
    EXPECT_TRUE(got->CheckClosed());
    list.Reverse();
    EXPECT_NEAR(list.IntersectSelf()->Area(), got->Area(), 1e-3) << round;
    // A region against itself is the region; alone, it is copied.
    list.DeleteRange(1, list.Count() - 1);
    list.Add(list[0]->CloneAs<TVHPolygon>());
    EXPECT_NEAR(list.IntersectSelf()->Area(), list[0]->Area(), 1e-3);
    list.Delete(1);
    EXPECT_TRUE(list.IntersectSelf()->First()->IsEqualTo(*list[0]));
  }
}

}  // namespace
}  // namespace orvane
