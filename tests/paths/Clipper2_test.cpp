#include "orvane/paths/clipping/Clipper2.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/foundation/Exception.h"
#include "support/TestSupport.h"

using namespace orvane;
using orvane::testing::MessageOf;
using namespace orvane::Clipper2;
using orvane::testing::Rect;

namespace {

bool InsideRect(const TPaths64& Paths, const TRect64& R) {
  for (const TPath64& p : Paths)
    for (const TPoint64& q : p)
      if (q.X < R.Left || q.X > R.Right || q.Y < R.Top || q.Y > R.Bottom) return false;
  return true;
}

}  // namespace

TEST(Clipper2, BooleanAreaIdentitiesOnRandomPolygons) {
  std::mt19937_64 rng(99);
  for (int round = 0; round < 6; ++round) {
    const TPaths64 a = orvane::testing::RandomPolygons(rng, 40, 2000000, 300000);
    const TPaths64 b = orvane::testing::RandomPolygons(rng, 40, 2000000, 300000);
    const TFillRule fill = round % 2 == 0 ? TFillRule::frNonZero : TFillRule::frEvenOdd;
    const double areaA = Area(Union(a, fill));
    const double areaB = Area(Union(b, fill));
    const double u = Area(Union(a, b, fill));
    const double i = Area(Intersect(a, b, fill));
    const double d = Area(Difference(a, b, fill));
    const double x = Area(XOR_(a, b, fill));
    const double tol = 1e-6 * (areaA + areaB);
    ASSERT_GT(i, 0.01 * areaA);
    EXPECT_NEAR(u + i, areaA + areaB, tol);
    EXPECT_NEAR(d, areaA - i, tol);
    EXPECT_NEAR(x, u - i, tol);
    // The tree form holds the same region.
    TPolyTree64 tree;
    BooleanOp(TClipType::ctIntersection, a, b, &tree, fill);
    EXPECT_NEAR(Area(PolyTreeToPaths64(tree)), i, tol);
  }
  // Double coordinates at two decimals.
  const TPathsD sq{MakePathD({0.0, 0.0, 1.005, 0.0, 1.005, 1.0, 0.0, 1.0})};
  const TPathsD moved = TranslatePaths(sq, 0.5, 0.0);
  const TPathsD inter = Intersect(sq, moved, TFillRule::frNonZero);
  ASSERT_EQ(inter.size(), 1u);
  double minX = 1e9, maxX = -1e9;
  for (const TPointD& p : inter[0]) {
    minX = std::min(minX, p.X);
    maxX = std::max(maxX, p.X);
  }
  EXPECT_DOUBLE_EQ(minX, 0.5);
  EXPECT_DOUBLE_EQ(maxX, 1.0);  // 100.5 rounds half to even
}

TEST(Clipper2, SimplifyPolygonAndCollinearDefaults) {
  const TPaths64 two = SimplifyPolygon(MakePath({0, 0, 10, 10, 10, 0, 0, 10}), TFillRule::frEvenOdd);
  ASSERT_EQ(two.size(), 2u);
  EXPECT_EQ(Area(two[0]) + Area(two[1]), 50.0);
  // The default clipper keeps collinear vertices; one made from an empty option set drops them.
  const TPath64 mid = MakePath({0, 0, 5, 0, 10, 0, 10, 10, 0, 10});
  TPaths64 out;
  TClipper64 keep;
  keep.AddSubject(mid);
  keep.Execute(TClipType::ctUnion, TFillRule::frNonZero, out);
  EXPECT_EQ(out[0].size(), 5u);
  TClipper64 drop(TInitOptions{});
  EXPECT_TRUE(drop.AddPath(mid, TPathType::ptSubject, true));
  drop.Execute(TClipType::ctUnion, out, TFillRule::frNonZero);
  EXPECT_EQ(out[0].size(), 4u);
}

TEST(Clipper2, OneShotExecuteFillRuleCases) {
  // Subject: two overlapping squares (winding 2 where they meet). Clip: the same big square
  // twice, so that under even-odd it is empty and under non-zero it is the square.
  const TPaths64 subj{Rect(0, 0, 10, 10), Rect(5, 0, 15, 10)};
  const TPaths64 clip{Rect(-10, -10, 30, 30), Rect(-10, -10, 30, 30)};
  auto run = [&](TFillRule s, TFillRule c) {
    TPaths64 out;
    EXPECT_TRUE(TClipper64::Execute(subj, clip, true, true, s, c, TClipType::ctIntersection, {}, out));
    return Area(out);
  };
  EXPECT_EQ(run(TFillRule::frNonZero, TFillRule::frNonZero), 150.0);
  EXPECT_EQ(run(TFillRule::frEvenOdd, TFillRule::frEvenOdd), 0.0);
  EXPECT_EQ(run(TFillRule::frNonZero, TFillRule::frEvenOdd), 0.0);
  EXPECT_EQ(run(TFillRule::frEvenOdd, TFillRule::frNonZero), 100.0);  // overlap dropped by the subject's own rule

  // An open subject passes through unchanged and is clipped as a line.
  const TPaths64 line{MakePath({-20, 5, 40, 5})};
  EXPECT_EQ(UnionIfClosed(line, false, TFillRule::frNonZero), line);
  TPolyTree64 tree;
  TPaths64 open;
  EXPECT_TRUE(TClipper64::Execute(line, clip, false, true, TFillRule::frEvenOdd, TFillRule::frNonZero,
                                  TClipType::ctIntersection, {}, &tree, open));
  ASSERT_EQ(open.size(), 1u);
  EXPECT_EQ(std::min(open[0][0].X, open[0][1].X), -10);
  EXPECT_EQ(std::max(open[0][0].X, open[0][1].X), 30);
  EXPECT_EQ(tree.GetChildCnt(), 0);
}

TEST(Clipper2, FailureTexts) {
  TClipper64 c;
  TPaths64 open;
  EXPECT_EQ(MessageOf([&] { c.Execute(TClipType::ctUnion, TFillRule::frNonZero, nullptr, open); }),
            "The TPolyTree parameter must be assigned.");
  EXPECT_EQ(MessageOf([] { TClipperD d(9); }), "The decimal rounding value is invalid");
  EXPECT_EQ(MessageOf([] { TClipperD d(-9); }), "The decimal rounding value is invalid");
  EXPECT_EQ(MessageOf([&] {
              c.AddClip(TPath64{{0, 0}, {Clipper::HiRange + 1, 1}, {0, 1}});
            }),
            "Coordinate exceeds range bounds");
  EXPECT_EQ(MessageOf([&] {
              c.AddPath(MakePath({0, 0, 1, 1}), TPathType::ptClip, false);
            }),
            "AddPath: Open paths must be subject.");
  TClipperOffset64 co;
  EXPECT_EQ(MessageOf([&] { co.Execute(1.0, static_cast<TPolyTree64*>(nullptr)); }),
            "The TPolyTree parameter must be assigned.");
  TClipperD d;
  EXPECT_EQ(MessageOf([&] {
              d.AddSubject(MakePathD({0.0, 0.0, 1e300, 0.0, 0.0, 1.0}));
            }),
            "Coordinate exceeds range bounds");
}

TEST(Clipper2, PolyTreeRemoveAndWalk) {
  TPolyTree64 tree;
  BooleanOp(TClipType::ctUnion,
            {Rect(0, 0, 100, 100), Rect(10, 10, 90, 90), Rect(20, 20, 80, 80), Rect(200, 0, 250, 50)}, {}, &tree,
            TFillRule::frEvenOdd);
  ASSERT_EQ(tree.GetChildCnt(), 2);
  const int bigIdx = Area(tree.GetChild64(0)->GetPolygon()) > 5000 ? 0 : 1;
  TPolyPath64* big = tree.GetChild64(bigIdx);
  TPolyPath64* hole = big->GetChild64(0);
  ASSERT_NE(hole, nullptr);
  TPolyPath64* island = hole->GetChild64(0);
  ASSERT_NE(island, nullptr);
  EXPECT_EQ(island->GetLevel(), 3);
  EXPECT_TRUE(hole->GetIsHole());
  EXPECT_FALSE(island->GetIsHole());
  EXPECT_EQ(big->GetChild(3), nullptr);
  EXPECT_EQ(PolyTreeToPaths(tree).size(), 4u);
  std::vector<std::string> lines;
  ShowPolyTreeStructure(tree, lines);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "Polytree with 2 polygons");
  EXPECT_EQ(lines[1], "  A polygon containing 1 hole");
  EXPECT_EQ(lines[2], "    A hole containing 1 nested polygon");

  EXPECT_EQ(tree.RemoveChild(-1, false), nullptr);
  std::unique_ptr<TPolyPathBase> first = tree.RemoveChild(0, false);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetIdx(), -1);
  EXPECT_EQ(tree.GetChild64(0)->GetIdx(), 0);
  int walked = 0;
  for (TPolyPath64* n = tree.GetFirst(); n != nullptr; n = n->GetNext()) ++walked;
  EXPECT_EQ(walked, bigIdx == 0 ? 1 : 3);
  EXPECT_EQ(tree.RemoveChild(0, true), nullptr);
  EXPECT_EQ(tree.GetFirst(), nullptr);
}

TEST(Clipper2, RectClipMatchesTheGeneralIntersection) {
  std::mt19937_64 rng(4242);
  const TRect64 r(300000, 400000, 1500000, 1300000);
  const TPath64 rectPath = Rect(r.Left, r.Top, r.Right, r.Bottom);
  for (int k = 0; k < 300; ++k) {
    // Spiky stars of both orientations that leave and re-enter the rectangle.
    std::uniform_int_distribution<std::int64_t> pos(0, 1800000);
    TPath64 p = orvane::testing::StarPolygon(rng, pos(rng), pos(rng), 700000, 5 + k % 20, k % 3 == 0);
    const TPaths64 clipped = RectClip(r, p);
    EXPECT_TRUE(InsideRect(clipped, r));
    const double general = Area(Intersect(TPaths64{p}, TPaths64{rectPath}, TFillRule::frNonZero));
    const double sign = Area(p) >= 0 ? 1.0 : -1.0;
    EXPECT_NEAR(sign * Area(clipped), general, 1e-9 * 1.2e12 + 2e6) << k;
    // No piece runs to and fro along the rectangle: all have non-zero area and the right sign.
    for (const TPath64& piece : clipped) EXPECT_GT(sign * Area(piece), 0.0) << k;
  }
  // A U whose arms leave the rectangle gives two pieces; a polygon around it gives the
  // rectangle with the polygon's orientation.
  const TPath64 u = MakePath({0, 0, 30, 0, 30, 30, 20, 30, 20, 10, 10, 10, 10, 30, 0, 30});
  const TPaths64 arms = RectClip(TRect64(-5, 20, 35, 40), u);
  ASSERT_EQ(arms.size(), 2u);
  EXPECT_EQ(Area(arms[0]) + Area(arms[1]), 200.0);
  const TPaths64 whole = RectClip(TRect64(1, 1, 2, 2), ReversePath(Rect(0, 0, 10, 10)));
  ASSERT_EQ(whole.size(), 1u);
  EXPECT_EQ(Area(whole[0]), -1.0);
  EXPECT_TRUE(RectClip(TRect64(5, 5, 5, 9), Rect(0, 0, 10, 10)).empty());  // empty rectangle

  // Lines: a zigzag in and out of 0..10 x 0..10.
  const TPaths64 lines = RectClipLines(TRect64(0, 0, 10, 10), MakePath({-5, 5, 5, 5, 5, 15, 8, 15, 8, 2, 20, 2}));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], MakePath({0, 5, 5, 5, 5, 10}));
  EXPECT_EQ(lines[1], MakePath({8, 10, 8, 2, 10, 2}));
}

TEST(Clipper2, TrimCollinearHandWorked) {
  // Duplicates and a collinear midpoint go; a start in mid-edge is trimmed round the join.
  EXPECT_EQ(TrimCollinear(MakePath({0, 0, 5, 0, 10, 0, 10, 10, 10, 10, 0, 10})),
            MakePath({0, 0, 10, 0, 10, 10, 0, 10}));
  EXPECT_EQ(TrimCollinear(MakePath({5, 0, 10, 0, 10, 10, 0, 10, 0, 0})), MakePath({10, 0, 10, 10, 0, 10, 0, 0}));
  // Spikes count as collinear: a path of spikes only vanishes.
  EXPECT_TRUE(TrimCollinear(MakePath({0, 0, 10, 0, 20, 0, 10, 0})).empty());
  EXPECT_EQ(TrimCollinear(MakePath({0, 0, 10, 0, 10, 10, 10, 20, 10, 10, 0, 10})),
            MakePath({0, 0, 10, 0, 10, 10, 0, 10}));
  // Open paths keep their ends.
  EXPECT_EQ(TrimCollinear(MakePath({0, 0, 5, 0, 10, 0}), true), MakePath({0, 0, 10, 0}));
  EXPECT_EQ(TrimCollinear(MakePath({0, 0, 0, 0, 10, 0, 10, 10, 0, 10, 0, 0}), true),
            MakePath({0, 0, 10, 0, 10, 10, 0, 10, 0, 0}));
}

TEST(Clipper2, SimplifyPathHandWorked) {
  const TPath64 p = MakePath({0, 0, 10, 1, 20, 0, 20, 20, 0, 20});
  // (10,1) is 1 from the line through its neighbours; every other vertex is far off.
  EXPECT_EQ(SimplifyPath(p, 2.0), MakePath({0, 0, 20, 0, 20, 20, 0, 20}));
  EXPECT_EQ(SimplifyPath(p, 0.5), p);
  EXPECT_EQ(SimplifyPath(MakePath({0, 0, 10, 1, 20, 0}), 2.0, false), MakePath({0, 0, 20, 0}));
  // A flat diamond would keep fewer than 3 vertices: empty.
  EXPECT_TRUE(SimplifyPath(MakePath({0, 0, 10, 1, 20, 0, 10, -1}), 5.0).empty());
  // Smallest first: removing (4,1) (0.97 off) makes (9,2) a near-miss at 1.79.
  const TPath64 q = MakePath({0, 0, 4, 1, 9, 2, 20, 0, 20, 20});
  EXPECT_EQ(SimplifyPath(q, 1.5), MakePath({0, 0, 9, 2, 20, 0, 20, 20}));
  EXPECT_EQ(CleanPolygon(MakePath({0, 0, 10, 1, 20, 0}), 2.0), MakePath({0, 0, 20, 0}));
  EXPECT_EQ(SimplifyPaths({p, q}, 0.1), (TPaths64{p, q}));
}

TEST(Clipper2, OffsetMinkowskiAndSmallHelpers) {
  TClipperOffset64 co;
  co.AddPath(Rect(0, 0, 100, 100), TJoinType::jtBevel, TEndType::etPolygon);
  TPaths64 out;
  co.Execute(out, 10.0);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0].size(), 8u);
  co.SetReverseSolution(true);
  co.Execute(10.0, out);
  EXPECT_EQ(Area(out[0]), -14200.0);
  // Rounded: between the inscribed and the circumscribed polygon of the true outline.
  const double round = Area(InflatePaths({Rect(0, 0, 1000, 1000)}, 100.0));
  const double exact = 1000.0 * 1000 + 4 * 1000 * 100 + 3.14159265358979 * 100 * 100;
  EXPECT_NEAR(round, exact, 0.002 * exact);
  TPolyTree64 tree;
  co.Execute(&tree, -10.0);
  ASSERT_EQ(tree.GetChildCnt(), 1);
  EXPECT_EQ(Area(tree.GetChild64(0)->GetPolygon()), -6400.0);

  const TPath64 pattern = Rect(-1, -1, 1, 1);
  EXPECT_EQ(Area(MinkowskiDiff(TranslatePath(pattern, 1, 1), Rect(0, 0, 10, 10), true)), 80.0);
  EXPECT_EQ(Area(MinkowskiSum(pattern, TPaths64{Rect(0, 0, 10, 10)}, TFillRule::frNonZero, true)), 144.0);

  EXPECT_EQ(GetBounds(MakePath({3, -4, -1, 7})), TRect64(-1, -4, 3, 7));
  EXPECT_EQ(PathToString(MakePath({1, 2, -3, 4})), "1,2 -3,4");
  EXPECT_EQ(PathsToString({MakePath({1, 2}), {}}), "1,2\n\n");
  EXPECT_EQ(MakePath({0.5, 1.5, 2.5}), MakePath({0, 2}));
  EXPECT_EQ(PointInPolygon2({0, 5}, Rect(0, 0, 10, 10)), TPointInPolygonResult::pipOn);
}
