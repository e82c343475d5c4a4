#include "orvane/paths/clipping/Clipper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <clipper.hpp>
#include <cmath>
#include <numbers>
#include <random>
#include <set>

#include "orvane/foundation/Exception.h"
#include "support/TestSupport.h"

using namespace orvane;
using orvane::testing::MessageOf;
using namespace orvane::Clipper;
using orvane::testing::Rect;

namespace {

double Clip(TClipType Ct, const TPaths64& A, const TPaths64& B, TFillRule Fill) {
  TClipper c;
  c.AddPaths(A, TPathType::ptSubject, true);
  c.AddPaths(B, TPathType::ptClip, true);
  TPaths64 out;
  EXPECT_TRUE(c.Execute(Ct, out, Fill));
  return Core::Area(out);
}

}  // namespace

TEST(Clipper, BooleanAreaIdentitiesOnRandomPolygons) {
  std::mt19937_64 rng(20240601);
  for (int round = 0; round < 6; ++round) {
    const TPaths64 a = orvane::testing::RandomPolygons(rng, 40, 2000000, 300000);
    const TPaths64 b = orvane::testing::RandomPolygons(rng, 40, 2000000, 300000);
    const TFillRule fill = round % 2 == 0 ? TFillRule::frNonZero : TFillRule::frEvenOdd;
    const double areaA = Clip(TClipType::ctUnion, a, {}, fill);
    const double areaB = Clip(TClipType::ctUnion, b, {}, fill);
    const double u = Clip(TClipType::ctUnion, a, b, fill);
    const double i = Clip(TClipType::ctIntersection, a, b, fill);
    const double d = Clip(TClipType::ctDifference, a, b, fill);
    const double x = Clip(TClipType::ctXor, a, b, fill);
    const double tol = 1e-6 * (areaA + areaB);  // rounded crossing points
    ASSERT_GT(i, 0.01 * areaA) << "the sets should overlap";
    EXPECT_NEAR(u + i, areaA + areaB, tol);
    EXPECT_NEAR(d, areaA - i, tol);
    EXPECT_NEAR(x, u - i, tol);
    // ctNone selects nothing.
    EXPECT_EQ(Clip(TClipType::ctNone, a, b, fill), 0.0);
  }
}

TEST(Clipper, AreaAndPointInPolygonAgreeWithTheEngine) {
  std::mt19937_64 rng(7);
  std::uniform_int_distribution<std::int64_t> coord(-1000, 1000);
  for (int k = 0; k < 200; ++k) {
    TPath64 p;
    const int n = 3 + k % 9;
    for (int i = 0; i < n; ++i) p.emplace_back(coord(rng), coord(rng));  // self-crossing allowed
    ClipperLib::Path e;
    for (const TPoint64& q : p) e.emplace_back(q.X, q.Y);
    EXPECT_DOUBLE_EQ(Area(p), ClipperLib::Area(e));
    for (int t = 0; t < 20; ++t) {
      // Vertices and edge midpoints test the boundary as well.
      TPoint64 pt(coord(rng) / 2, coord(rng) / 2);
      if (t == 0) pt = p[1];
      if (t == 1 && (p[0].X + p[1].X) % 2 == 0 && (p[0].Y + p[1].Y) % 2 == 0)
        pt = TPoint64((p[0].X + p[1].X) / 2, (p[0].Y + p[1].Y) / 2);
      EXPECT_EQ(PointInPolygon(pt, p), ClipperLib::PointInPolygon(ClipperLib::IntPoint(pt.X, pt.Y), e));
    }
  }
  // Hand-worked: fewer than 3 vertices, and bounds.
  EXPECT_EQ(Area(TPath64{{0, 0}, {5, 5}}), 0.0);
  EXPECT_EQ(GetBounds(TPaths64{Rect(0, 0, 10, 10), {{-3, 4}}}), TRect64(-3, 0, 10, 10));
  EXPECT_EQ(GetBounds(TPaths64{}), TRect64());
}

TEST(Clipper, PolyTreeRemoveUpdateAndWalk) {
  // Outer square with a hole holding an island (depth 3), beside a second outer square.
  TClipper c;
  c.AddPaths({Rect(0, 0, 100, 100), Rect(10, 10, 90, 90), Rect(20, 20, 80, 80), Rect(200, 0, 250, 50)},
             TPathType::ptSubject, true);
  TPolyTree tree;
  EXPECT_FALSE(c.Execute(TClipType::ctUnion, static_cast<TPolyTree*>(nullptr), TFillRule::frEvenOdd));
  ASSERT_TRUE(c.Execute(TClipType::ctUnion, &tree, TFillRule::frEvenOdd));
  ASSERT_EQ(tree.GetTotal(), 4);
  ASSERT_EQ(tree.GetChildCount(), 2);
  const int bigIdx = Area(tree.GetChild(0)->GetContour()) > 5000 ? 0 : 1;
  TPolyNode* big = tree.GetChild(bigIdx);
  TPolyNode* small = tree.GetChild(1 - bigIdx);
  ASSERT_EQ(big->GetChildCount(), 1);
  TPolyNode* hole = big->GetChild(0);
  ASSERT_EQ(hole->GetChildCount(), 1);
  TPolyNode* island = hole->GetChild(0);
  EXPECT_FALSE(big->GetIsHole());
  EXPECT_TRUE(hole->GetIsHole());
  EXPECT_FALSE(island->GetIsHole());
  EXPECT_EQ(island->GetParent(), hole);
  EXPECT_EQ(MessageOf([&] { big->GetChild(7); }), "TPolyNode range error: 7");
  // Depth-first walk.
  std::vector<TPolyNode*> walk;
  for (TPolyNode* n = tree.GetFirst(); n != nullptr; n = n->GetNext()) walk.push_back(n);
  const std::vector<TPolyNode*> expected = bigIdx == 0 ? std::vector<TPolyNode*>{big, hole, island, small}
                                                       : std::vector<TPolyNode*>{small, big, hole, island};
  EXPECT_EQ(walk, expected);
  EXPECT_EQ(PolyTreeToPaths(tree).size(), 4u);

  EXPECT_EQ(big->RemoveChild(-1, false), nullptr);
  EXPECT_EQ(big->RemoveChild(1, false), nullptr);
  EXPECT_EQ(tree.GetTotal(), 4);

  // Take the first top-level node out: the other moves to index 0 and the walk follows.
  std::unique_ptr<TPolyNode> first = tree.RemoveChild(0, false);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetParent(), nullptr);
  tree.UpdateAllNodes();
  const int left = bigIdx == 0 ? 1 : 3;
  EXPECT_EQ(tree.GetTotal(), left);
  EXPECT_EQ(tree.GetChild(0)->GetIndex(), 0);
  auto count = [](TPolyNode* From) {
    int n = 0;
    for (; From != nullptr; From = From->GetNext()) ++n;
    return n;
  };
  EXPECT_EQ(count(tree.GetFirst()), left);
  EXPECT_EQ(count(first.get()), 4 - left);  // the caller's subtree is intact

  // Remove the hole (with its island) from the big node, destroying it.
  TPolyNode* bigNow = bigIdx == 0 ? first.get() : tree.GetChild(0);
  EXPECT_EQ(bigNow->RemoveChild(0, true), nullptr);
  EXPECT_EQ(bigNow->GetChildCount(), 0);
  tree.UpdateAllNodes();
  EXPECT_EQ(tree.GetTotal(), 1);
  for (TPolyNode* n : tree.GetAllNodes()) EXPECT_EQ(n->GetParent(), &tree);
}

TEST(Clipper, FailureTextsLeaveTheClipperUsable) {
  TClipper c;
  EXPECT_EQ(MessageOf([&] {
              c.AddPath({{0, 0}, {5, 5}}, TPathType::ptClip, false);
            }),
            "AddPath: Open paths must be subject.");
  EXPECT_EQ(MessageOf([&] {
              c.AddPath({{0, 0}, {HiRange + 1, 0}, {0, 5}}, TPathType::ptSubject, true);
            }),
            "Coordinate exceeds range bounds");
  EXPECT_EQ(MessageOf([&] {
              c.AddPaths({Rect(0, 0, 5, 5), {{-HiRange - 1, 0}, {0, 1}, {1, 1}}}, TPathType::ptSubject, true);
            }),
            "Coordinate exceeds range bounds");
  EXPECT_EQ(MessageOf([] { IntPoint(1e30, 0.0); }), "Coordinate exceeds range bounds");
  // Nothing of the refused calls was added.
  c.AddPath(Rect(0, 0, 10, 10), TPathType::ptSubject, true);
  TPaths64 out{{{1, 1}}};
  ASSERT_TRUE(c.Execute(TClipType::ctUnion, out));
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(Area(out[0]), 100.0);
  // Coordinates at the range bounds themselves are taken.
  TClipper wide;
  EXPECT_TRUE(wide.AddPath({{-HiRange, -HiRange}, {HiRange, -HiRange}, {0, HiRange}}, TPathType::ptSubject, true));

  c.AddPath({{-5, 5}, {15, 5}}, TPathType::ptSubject, false);
  EXPECT_EQ(MessageOf([&] { c.Execute(TClipType::ctUnion, out); }),
            "Error: TPolyTree struct is needed for open path clipping.");
  TPolyTree tree;
  ASSERT_TRUE(c.Execute(TClipType::ctUnion, &tree));
  EXPECT_EQ(OpenPathsFromPolyTree(tree).size(), 2u);  // the line's parts outside the square
  EXPECT_EQ(ClosedPathsFromPolyTree(tree).size(), 1u);

  TClipperOffset co;
  co.AddPath(Rect(0, 0, 10, 10), TJoinType::jtMiter, TEndType::etPolygon);
  EXPECT_EQ(MessageOf([&] { co.Execute(static_cast<TPolyTree*>(nullptr), 1.0); }), "Error: No PolyTree assigned");
  EXPECT_EQ(MessageOf([&] { co.Execute(out, std::nan("")); }),
            "[Error] TClipperOffset.Execute: Delta is not a finite number");
  TClipperOffset far;
  far.AddPath({{HiRange - 5, 0}, {HiRange, 0}, {HiRange, 5}}, TJoinType::jtRound, TEndType::etPolygon);
  EXPECT_EQ(MessageOf([&] { far.Execute(out, 10.0); }), "Coordinate exceeds range bounds");
  co.SetArcTolerance(1e-300);  // bounded: no flood of arc vertices
  co.Execute(&tree, 2.0);
  ASSERT_EQ(tree.GetTotal(), 1);
  EXPECT_EQ(Area(tree.GetFirst()->GetContour()), 196.0);
}

TEST(Clipper, InitOptionsReachTheEngine) {
  const TPath64 withMidpoints{{0, 0}, {5, 0}, {10, 0}, {10, 10}, {0, 10}};
  for (bool preserve : {false, true}) {
    TClipper c(preserve ? TInitOptions{TInitOption::ioPreserveCollinear} : TInitOptions{});
    c.AddPath(withMidpoints, TPathType::ptSubject, true);
    TPaths64 out;
    c.Execute(TClipType::ctUnion, out, TFillRule::frNonZero);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].size(), preserve ? 5u : 4u);
  }
  TClipper r(TInitOption::ioReverseSolution | TInitOption::ioStrictlySimple);
  r.AddPath(Rect(0, 0, 10, 10), TPathType::ptSubject, true);
  TPaths64 out;
  r.Execute(TClipType::ctUnion, out);
  EXPECT_EQ(Area(out[0]), -100.0);
}

TEST(Clipper, BevelOffsetAddsNoJoinVertices) {
  // An L grown and shrunk by 2: convex corners cut, the reflex one sharp when growing; the
  // other way round when shrinking. Hand-worked from the mitred outlines (476 and 156).
  const TPath64 ell{{0, 0}, {20, 0}, {20, 10}, {10, 10}, {10, 20}, {0, 20}};
  TPaths64 out;
  TClipperOffset lo;
  lo.AddPath(ReversePath(ell), TJoinType::jtBevel, TEndType::etPolygon);  // orientation is fixed up
  lo.Execute(out, 2);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(Area(out[0]), 476.0 - 5 * 2);
  EXPECT_EQ(out[0].size(), 11u);
  lo.Execute(out, -2);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(Area(out[0]), 156.0 + 2);
  // A bevelled open line with butt ends is a plain band; offset together with a mitred
  // square, both come out.
  TClipperOffset mix;
  mix.AddPath({{0, 0}, {100, 0}}, TJoinType::jtBevel, TEndType::etButt);
  mix.AddPath(Rect(200, -5, 210, 5), TJoinType::jtMiter, TEndType::etPolygon);
  mix.Execute(out, 5);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(std::fabs(Area(out[0])) + std::fabs(Area(out[1])), 100.0 * 10 + 20.0 * 20);
}

TEST(Clipper, BevelOffsetOfConvexPolygonsMatchesTheClosedForm) {
  // Growing a convex polygon by d with bevels adds P d plus a triangle d^2 sin(t) / 2 at each
  // corner (t the turning angle); shrinking takes P d and gives back d^2 tan(t / 2) per corner.
  std::mt19937_64 rng(31);
  std::uniform_real_distribution<double> gap(0.35, 1.2);
  for (int k = 0; k < 50; ++k) {
    std::vector<double> angles{0.0};
    while (angles.back() + 0.35 + 1.2 < 2 * std::numbers::pi) angles.push_back(angles.back() + gap(rng));
    TPath64 p;
    for (double a : angles) p.emplace_back(std::llround(1e6 * std::cos(a)), std::llround(1e6 * std::sin(a)));
    const std::size_t n = p.size();
    double perimeter = 0, sinSum = 0, tanSum = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const TPoint64 &a = p[(i + n - 1) % n], &b = p[i], &c = p[(i + 1) % n];
      const double ux = double(b.X - a.X), uy = double(b.Y - a.Y), vx = double(c.X - b.X), vy = double(c.Y - b.Y);
      const double t = std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
      perimeter += std::hypot(vx, vy);
      sinSum += std::sin(t);
      tanSum += std::tan(t / 2);
    }
    const double d = 10000, area = Area(p);
    TClipperOffset co;
    co.AddPath(p, TJoinType::jtBevel, TEndType::etPolygon);
    TPaths64 out;
    co.Execute(out, d);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].size(), 2 * n);
    EXPECT_NEAR(Area(out[0]), area + perimeter * d + d * d / 2 * sinSum, 1e-6 * area);
    co.Execute(out, -d);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].size(), n);
    EXPECT_NEAR(Area(out[0]), area - perimeter * d + d * d * tanSum, 1e-6 * area);
  }
}

TEST(Clipper, CleanPolygonExHandWorked) {
  const TPath64 sq = Rect(0, 0, 10, 10);
  EXPECT_EQ(CleanPolygonEx(sq, 0), sq);
  // Vertex 1 lies 1 off the line from 0 to 2: the test is made at vertex i against the line
  // through j and k, so (0,0) is tested against the line through (5,1) and (10,0).
  const TPath64 p{{0, 0}, {5, 1}, {10, 0}, {10, 10}, {0, 10}};
  // Line through (5,1),(10,0): x + 5y = 10; squared distance of (0,0): 100/26 = 3.85.
  EXPECT_EQ(CleanPolygonEx(p, 1.5), p);                                              // d = Round(2.25) = 2
  EXPECT_EQ(CleanPolygonEx(p, 2.0), (TPath64{{0, 0}, {10, 0}, {10, 10}, {0, 10}}));  // d = 4: (5,1) goes
  EXPECT_TRUE(CleanPolygonEx({}, 3).empty());
}

TEST(Clipper, IntersectionRecording) {
  TClipper c;
  c.AddPath(Rect(0, 0, 10, 10), TPathType::ptSubject, true);
  c.AddPath(Rect(5, 5, 15, 15), TPathType::ptClip, true);
  TPaths64 out;
  c.Execute(TClipType::ctIntersection, out);
  EXPECT_TRUE(c.GetStoreIntersectList().empty());
  c.SetStoreIntersection(true);
  c.Execute(TClipType::ctIntersection, out);
  auto points = [&] {
    std::set<std::pair<std::int64_t, std::int64_t>> s;
    for (const TIntersectRecord& r : c.GetStoreIntersectList()) s.emplace(r.Pt.X, r.Pt.Y);
    return s;
  };
  ASSERT_EQ(c.GetStoreIntersectList().size(), 2u);
  EXPECT_EQ(points(), (std::set<std::pair<std::int64_t, std::int64_t>>{{10, 5}, {5, 10}}));
  const TIntersectRecord& r = c.GetStoreIntersectList()[0];
  EXPECT_EQ(r.Edge1.PathType, TPathType::ptSubject);
  EXPECT_EQ(r.Edge2.PathType, TPathType::ptClip);
  EXPECT_EQ(r.Edge2.Path, 1);

  // Squares sharing the edge x = 10 touch along it: its two ends.
  c.Clear();
  c.AddPath(Rect(0, 0, 10, 10), TPathType::ptSubject, true);
  c.AddPath(Rect(10, 0, 20, 10), TPathType::ptClip, true);
  c.Execute(TClipType::ctUnion, out);
  EXPECT_EQ(points(), (std::set<std::pair<std::int64_t, std::int64_t>>{{10, 0}, {10, 10}}));
  // Two subjects touching count only with AllIntersection; their crossings always count.
  c.Clear();
  c.AddPath(Rect(0, 0, 10, 10), TPathType::ptSubject, true);
  c.AddPath(Rect(10, 0, 20, 10), TPathType::ptSubject, true);
  c.Execute(TClipType::ctUnion, out);
  EXPECT_TRUE(c.GetStoreIntersectList().empty());
  c.SetAllIntersection(true);
  c.Execute(TClipType::ctUnion, out);
  EXPECT_EQ(points(), (std::set<std::pair<std::int64_t, std::int64_t>>{{10, 0}, {10, 10}}));
  c.SetAllIntersection(false);
  c.AddPath({{-5, 2}, {25, 2}, {25, 3}, {-5, 3}}, TPathType::ptSubject, true);
  c.Execute(TClipType::ctUnion, out);
  // The strip crosses x = 0, 10 (both squares' edges) and 20, at y = 2 and y = 3.
  EXPECT_EQ(c.GetStoreIntersectList().size(), 8u);
}

TEST(Clipper, MinkowskiFunctions) {
  const TPath64 pattern = Rect(-1, -1, 1, 1);
  const TPath64 path = Rect(0, 0, 10, 10);
  // Swept along the closed outline: a band from 12 x 12 less 8 x 8.
  EXPECT_EQ(Core::Area(MinkowskiSum(pattern, path, true)), 144.0 - 64.0);
  // The list form fills the inside too.
  EXPECT_EQ(Core::Area(MinkowskiSum(pattern, TPaths64{path}, TFillRule::frNonZero, true)), 144.0);
  EXPECT_TRUE(MinkowskiSum(TPath64{}, TPaths64{path}, TFillRule::frNonZero, true).empty());
  EXPECT_EQ(Core::Area(MinkowskiDiff(pattern, path)), 144.0 - 64.0);
}
