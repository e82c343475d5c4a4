// Cutting a chain by the edges of a ring, nesting loose paths into polygons with holes, the
// polygons and lists made from clipping trees, closing and smoothing, and the tree helpers:
// hand-worked cases and invariants over seeded random rings.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "orvane/paths/PathUtils.h"
#include "orvane/paths/PathsList.h"
#include "orvane/paths/PolyTreeUtils.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VPolyline2DTree.h"
#include "orvane/paths/clipping/Clipper2.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectRaise;
using U = TPathUtils;

// A point given in drawing units, at the working rate.
TPoint64 P(double X, double Y) { return {std::llround(X * 1e5), std::llround(Y * 1e5)}; }

TPath64 Path(std::initializer_list<std::pair<double, double>> Pts) {
  TPath64 p;
  for (const auto& [x, y] : Pts) p.push_back(P(x, y));
  return p;
}

// An anticlockwise square of side 2 R about (CX, CY), drawing units.
TPath64 Square(double CX, double CY, double R) {
  return Path({{CX - R, CY - R}, {CX + R, CY - R}, {CX + R, CY + R}, {CX - R, CY + R}});
}

const TPath64 Box = Square(5, 5, 5);  // (0,0) .. (10,10)

TEST(PathCut, PiecesOfASegmentAlongTheSidesOfASquare) {
  // Whole sides, both ways round, are the random stretches' business. Inside the side: the whole segment with its inner vertices.
  const TPath64 inner = Path({{2, 0}, {4, 0}, {7, 0}});
  EXPECT_EQ(U::CutByPath(Box, inner, 1e-6), TPaths64{inner});
  // Past a corner: from the segment's start to the corner; the upright side is not parallel.
  EXPECT_EQ(U::CutByPath(Box, Path({{5, 0}, {15, 0}}), 1e-6), TPaths64{Path({{5, 0}, {10, 0}})});
  // Collinear but beyond the side, and meeting the side only end to end: no piece, and no
  // zero-length path for the touch.
  EXPECT_TRUE(U::CutByPath(Box, Path({{12, 0}, {15, 0}}), 1e-6).empty());
  EXPECT_TRUE(U::CutByPath(Box, Path({{10, 0}, {15, 0}}), 1e-6).empty());
  EXPECT_TRUE(U::CutByPath(Box, Path({{-5, 0}, {0, 0}}), 1e-6).empty());
  // 0.5 units off the side: a piece within a tolerance of 1, none within 0.1.
  const TPath64 off = Path({{2, 0.5}, {7, 0.5}});
  EXPECT_EQ(U::CutByPath(Box, off, 1.0), TPaths64{off});
  EXPECT_TRUE(U::CutByPath(Box, off, 0.1).empty());
  // Tilted by 1e-3 radian: no longer parallel, however close.
  EXPECT_TRUE(U::CutByPath(Box, Path({{2, 0}, {7, 0.005}}), 1.0).empty());
  // A single point: {S, S} on an edge, nothing elsewhere.
  EXPECT_EQ(U::CutByPath(Box, Path({{3, 0}}), 1e-6), TPaths64({Path({{3, 0}, {3, 0}})}));
  EXPECT_EQ(U::CutByPath(Box, Path({{3, 0}, {3, 0}}), 1e-6), TPaths64({Path({{3, 0}, {3, 0}})}));
  EXPECT_TRUE(U::CutByPath(Box, Path({{3, 1}}), 1e-6).empty());
  // Neutral answers.
  for (const double tol : {-1.0, std::nan("")}) EXPECT_TRUE(U::CutByPath(Box, Path({{-2, 0}, {12, 0}}), tol).empty());
  EXPECT_TRUE(U::CutByPath(Box, TPath64{}, 1e-6).empty());
  EXPECT_TRUE(U::CutByPath(TPath64{}, Path({{-2, 0}, {12, 0}}), 1e-6).empty());
  // A two-vertex scissor is one edge, not the edge and its way back.
  EXPECT_EQ(U::CutByPath(Path({{0, 0}, {10, 0}}), Path({{-2, 0}, {12, 0}}), 1e-6).size(), 1u);
  // An infinite tolerance takes every parallel edge whole.
  EXPECT_EQ(U::CutByPath(Box, Path({{-2, 3}, {12, 3}}), INFINITY).size(), 2u);
  // Every ring in order.
  EXPECT_EQ(U::CutByPaths({Box, Square(20, 5, 5)}, Path({{-2, 0}, {30, 0}}), 1e-6),
            TPaths64({Path({{0, 0}, {10, 0}}), Path({{15, 0}, {25, 0}})}));
}

TEST(PathCut, CollinearEdgesMeetingEndToEndGiveOnePiece) {
  // The bottom side has a straight vertex at (5, 0).
  const TPath64 ring = Path({{0, 0}, {5, 0}, {10, 0}, {10, 10}, {0, 10}});
  EXPECT_EQ(U::CutByPath(ring, Path({{-1, 0}, {11, 0}}), 1e-6), TPaths64{Path({{0, 0}, {5, 0}, {10, 0}})});
  EXPECT_EQ(U::CutByPath(ring, Path({{11, 0}, {-1, 0}}), 1e-6), TPaths64{Path({{10, 0}, {5, 0}, {0, 0}})});
  // Ending at the straight vertex: one piece, no zero-length path from the next edge.
  EXPECT_EQ(U::CutByPath(ring, Path({{-1, 0}, {5, 0}}), 1e-6), TPaths64{Path({{0, 0}, {5, 0}})});
  // The straight vertex first: the closing edge's piece joins the first edge's.
  const TPath64 rolled = Path({{5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}});
  EXPECT_EQ(U::CutByPath(rolled, Path({{-1, 0}, {11, 0}}), 1e-6), TPaths64{Path({{0, 0}, {5, 0}, {10, 0}})});
  EXPECT_EQ(U::CutByPath(U::Clone(rolled), Path({{11, 0}, {-1, 0}}), 1e-6), TPaths64{Path({{10, 0}, {5, 0}, {0, 0}})});
  // A repeated closing vertex is a zero-length edge and changes nothing.
  TPath64 closed = ring;
  U::ConnectHeadTail(closed);
  EXPECT_EQ(U::CutByPath(closed, Path({{-1, 0}, {11, 0}}), 1e-6), TPaths64{Path({{0, 0}, {5, 0}, {10, 0}})});
}

// Stretches cut out of random rings' edges come back whole, whichever way the ring runs and
// wherever it starts.
TEST(PathCut, RandomStretchesOfRingEdgesComeBackWhole) {
  std::mt19937_64 rng(17);
  std::uniform_real_distribution<double> u(0.05, 0.95);
  int checked = 0;
  for (int trial = 0; trial < 300; ++trial) {
    TPath64 ring = testing::StarPolygon(rng, 0, 0, 5e6, 3 + static_cast<int>(rng() % 30));
    const std::size_t k = rng() % ring.size();
    const TPoint64 a = ring[k];
    const TPoint64 b = ring[(k + 1) % ring.size()];
    double t0 = u(rng), t1 = u(rng);
    if (std::fabs(t0 - t1) < 0.05) continue;
    const TPoint64 s = U::SeglineEvalPoint(a, b, t0);
    const TPoint64 e = U::SeglineEvalPoint(a, b, t1);
    // The rounded ends lie within an integer unit of the edge: a tolerance of 2e-5 holds them.
    for (int variant = 0; variant < 3; ++variant) {
      TPath64 scissor = ring;
      if (variant == 1) U::Reverse(scissor);
      if (variant == 2) std::rotate(scissor.begin(), scissor.begin() + static_cast<std::ptrdiff_t>(k), scissor.end());
      const TPaths64 cut = U::CutByPath(scissor, {s, e}, 2e-5);
      ASSERT_EQ(cut.size(), 1u) << trial << " " << variant;
      EXPECT_EQ(cut[0], (TPath64{s, e})) << trial << " " << variant;
      // The whole edge as the segment, extended past both ends, gives the edge.
      const TPoint64 before = U::SeglineEvalPoint(a, b, -0.3);
      const TPoint64 after = U::SeglineEvalPoint(a, b, 1.3);
      const TPaths64 whole = U::CutByPath(scissor, {before, after}, 2e-5);
      ASSERT_EQ(whole.size(), 1u);
      EXPECT_EQ(whole[0], (TPath64{a, b}));
      ++checked;
    }
  }
  EXPECT_GT(checked, 600);
}

// Ours in each item: inside the outline and in none of its holes (boundaries excluded).
bool InNormalized(const TPathsList& Items, const TPoint64& Pt) {
  int hits = 0;
  for (const TPaths64& item : Items) hits += U::PointInPolygons(Pt, item) == 1;
  EXPECT_LE(hits, 1);
  return hits == 1;
}

bool EvenOdd(const TPaths64& Paths, const TPoint64& Pt) {
  bool in = false;
  for (const TPath64& p : Paths) in ^= Clipper::PointInPolygon(Pt, p) == 1;
  return in;
}

TEST(PathCut, NormalizeNestsByContainmentNotByOrderOrOrientation) {
  // Concentric squares, all anticlockwise, in shuffled order: outline 10 with hole 8, and
  // island 6 with hole 4. Items follow their outlines' input order, holes their own.
  const TPath64 s10 = Square(0, 0, 10), s8 = Square(0, 0, 8), s6 = Square(0, 0, 6), s4 = Square(0, 0, 4);
  TPathsList res(true);
  U::NormalizeTPaths({s6, s10, s4, s8}, &res);
  ASSERT_EQ(res.Count(), 2);
  EXPECT_EQ(res[0], TPaths64({s6, s4}));
  EXPECT_EQ(res[1], TPaths64({s10, s8}));

  // Two islands in one hole, a disjoint outline, a path too short to bound anything.
  const TPath64 far = Square(50, 0, 3), i1 = Square(-3, 0, 1), i2 = Square(3, 0, 1);
  U::NormalizeTPaths({i1, s10, TPath64{P(1, 1), P(2, 2)}, far, s8, i2}, &res);
  ASSERT_EQ(res.Count(), 4);
  EXPECT_EQ(res[0], TPaths64{i1});
  EXPECT_EQ(res[1], TPaths64({s10, s8}));
  EXPECT_EQ(res[2], TPaths64{far});
  EXPECT_EQ(res[3], TPaths64{i2});

  // The same nesting as trees: one tree per path inside no other, levels by depth, and one
  // region per outline of even depth (10 with hole 8, island 6 with hole 4, far).
  const TPaths64 nested{s6, s10, far, s4, s8};
  const auto trees = U::CreatePolylineTreeList(nested, PathWorkingRate);
  ASSERT_EQ(trees->Count(), 2);
  EXPECT_EQ((*trees)[0]->GetRoot()->ChildNode(0)->ChildNode(0)->ChildCount(), 1);
  const auto regions = U::CreateHPolygons(nested, PathWorkingRate);
  ASSERT_EQ(regions->Count(), 3);
  double area = 0;
  for (int i = 0; i < regions->Count(); ++i) area += (*regions)[i]->Area();
  EXPECT_NEAR(area, (400 - 256) + (144 - 64) + 36, 1e-9);
  EXPECT_THROW(U::CreatePolylineTreeList(nested, 0.0), EParamError);

  // Touching: a hole whose vertex 0 lies on the outline is still a hole; an outline outside
  // that touches another's side with its vertex 0 is material of its own.
  const TPath64 notch = Path({{10, 0}, {5, 3}, {5, -3}});
  const TPath64 neighbour = Path({{10, 0}, {14, -2}, {14, 2}});
  U::NormalizeTPaths({s10, notch, neighbour}, &res);
  ASSERT_EQ(res.Count(), 2);
  EXPECT_EQ(res[0], TPaths64({s10, notch}));
  EXPECT_EQ(res[1], TPaths64{neighbour});
  // A hole drawn across the outline, starting outside it, is still a hole when most of it
  // lies inside; a ring mostly outside is material of its own.
  const TPath64 across = Path({{11, 2}, {-5, 2}, {-5, -2}, {11, -2}});
  const TPath64 graze = Path({{9, 8}, {30, 8}, {30, 20}, {9, 20}});
  U::NormalizeTPaths({graze, across, s10}, &res);
  ASSERT_EQ(res.Count(), 2);
  EXPECT_EQ(res[0], TPaths64{graze});
  EXPECT_EQ(res[1], TPaths64({s10, across}));
  // Duplicated outline: twice material, neither a hole of the other.
  U::NormalizeTPaths({s10, s10}, &res);
  EXPECT_EQ(res.Count(), 2);

  U::NormalizeTPaths({}, &res);
  EXPECT_EQ(res.Count(), 0);
  ExpectRaise<EAssertionFailed>([&] { U::NormalizeTPaths({s10}, nullptr); },
                                "[Assert] TPathUtils.NormalizeTPaths: 结果列表未创建");
}

// Outline, holes and islands at 3 paths and at 300, every path anticlockwise and the
// order shuffled: the material is exactly the even-odd region of all paths.
TEST(PathCut, NormalizeKeepsEveryHoleAt3And300Paths) {
  std::mt19937_64 rng(3);
  for (const int holes : {1, 149}) {
    TPaths64 paths{Square(0, 0, 1000)};
    for (int h = 0; h < holes; ++h) {
      const double cx = -900 + 120.0 * (h % 15), cy = -900 + 120.0 * (h / 15);
      paths.push_back(testing::StarPolygon(rng, P(cx, 0).X, P(0, cy).Y, 50e5, 12));
      if (h % 2 == 0 || holes == 1) paths.push_back(Square(cx, cy, 10));
    }
    if (holes > 1) paths.push_back(Square(2000, 0, 10));
    std::shuffle(paths.begin(), paths.end(), rng);
    TPathsList res(true);
    U::NormalizeTPaths(paths, &res);
    EXPECT_EQ(res.PathCount(), static_cast<int>(paths.size()));
    EXPECT_EQ(res.Count(), static_cast<int>(paths.size()) - holes);
    std::uniform_int_distribution<std::int64_t> coord(P(-1100, 0).X, P(1100, 0).X);
    for (int i = 0; i < 5000; ++i) {
      const TPoint64 pt{coord(rng) | 1, coord(rng) | 1};
      EXPECT_EQ(InNormalized(res, pt), EvenOdd(paths, pt));
    }
  }
}

TEST(PathCut, ListsAndPolygonsFromClippingTrees) {
  // Outline with a hole holding an island, by the engine's even-odd union.
  Clipper::TClipper clipper;
  clipper.AddPaths({Square(0, 0, 10), Square(0, 0, 8), Square(0, 0, 6), Square(30, 0, 2)}, TPathType::ptSubject, true);
  Clipper::TPolyTree tree;
  ASSERT_TRUE(clipper.Execute(TClipType::ctUnion, &tree, TFillRule::frEvenOdd));
  const auto list = U::PolyTreeToPathsList(tree);
  ASSERT_EQ(list->Count(), 3);
  std::multiset<std::size_t> sizes;
  for (const TPaths64& item : *list) sizes.insert(item.size());
  EXPECT_EQ(sizes, (std::multiset<std::size_t>{1, 1, 2}));
  // The island comes after the outline whose hole holds it; the regions agree with the
  // polygon list made from the same tree.
  EXPECT_EQ((*list)[2].size(), 1u);
  EXPECT_NEAR(std::fabs(Clipper::Area((*list)[2][0])), 4 * 6e5 * 6e5, 1.0);
  const auto regions = TPolyTreeUtils::CreateHPolygons(tree, PathWorkingRate);
  EXPECT_EQ(regions->Count(), 3);
  double area = 0;
  for (int i = 0; i < regions->Count(); ++i) area += (*regions)[i]->Area();
  EXPECT_NEAR(area, 400 - 256 + 144 + 16, 1e-9);

  // Closed paths: anticlockwise outline, clockwise holes, whatever they were.
  TPath64 outline = Clipper::ReversePath(Square(0, 0, 10)), hole = Square(0, 0, 2);
  U::ConnectHeadTail(outline);
  U::ConnectHeadTail(hole);
  auto poly = U::CreateHPolygon(TPaths64{U::Clone(outline), hole}, PathWorkingRate);
  ASSERT_EQ(poly->Count(), 2);
  EXPECT_FALSE((*poly)[0]->IsClockwise());
  EXPECT_TRUE((*poly)[1]->IsClockwise());
  EXPECT_FALSE(poly->GetIsClockwise());
  // Open paths with a clockwise outline: it stays clockwise, the hole goes against it, both
  // are closed, and the polygon says clockwise.
  poly = U::CreateHPolygon(Clipper::ReversePaths({Square(0, 0, 10), Square(0, 0, 2)}), PathWorkingRate);
  ASSERT_EQ(poly->Count(), 2);
  EXPECT_TRUE((*poly)[0]->IsClockwise());
  EXPECT_FALSE((*poly)[1]->IsClockwise());
  EXPECT_TRUE(poly->CheckClosed());
  EXPECT_TRUE(poly->GetIsClockwise());
  EXPECT_NEAR(poly->Area(), 400 - 16, 1e-9);
  EXPECT_EQ(U::CreateHPolygon(static_cast<const Clipper::TPolyNode*>(nullptr), 1.0)->Count(), 0);
  EXPECT_THROW(U::CreateHPolygon(TPaths64{Square(0, 0, 1)}, 0.0), EParamError);

  // A figure eight pinched at (10, 10) splits into its two lobes; the hole in the upper
  // lobe starts at the pinch, which is on both lobes, and goes where the rest of it lies.
  Clipper::TPolyTree eight;
  Clipper::TPolyNode* node =
      eight.AddChild(Path({{0, 0}, {10, 0}, {10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}, {0, 10}}));
  node->AddChild(Path({{10, 10}, {16, 12}, {12, 16}}));
  const auto lobes = U::CreateStrictSimpleHPolygon(node, 1e5);
  ASSERT_EQ(lobes->Count(), 2);
  for (int i = 0; i < 2; ++i) {
    const TVHPolygon& lobe = *(*lobes)[i];
    const bool upper = lobe.BoundBox().XMin > 5;
    EXPECT_EQ(lobe.Count(), upper ? 2 : 1);
    EXPECT_NEAR(lobe.Area(), upper ? 100 - 16 : 100, 1e-9);
  }
  EXPECT_EQ(U::CreateStrictSimpleHPolygon(nullptr, 1.0)->Count(), 0);
}

TEST(PathCut, HolesClosingAndSmoothing) {
  const TPath64 ccw = Square(0, 0, 1), cw = Clipper::ReversePath(Square(0, 0, 1));
  EXPECT_EQ(U::ExtractHoles({cw, ccw, cw, ccw}, true), TPaths64({cw}));
  EXPECT_EQ(U::ExtractHoles({cw, ccw, cw, ccw}, false), TPaths64({ccw, ccw}));
  EXPECT_TRUE(U::ExtractHoles({cw}, true).empty());

  TPaths64 paths{{}, {P(1, 2)}, Square(0, 0, 1), U::Clone(ccw)};
  paths[3].push_back(paths[3][0]);
  U::ConnectHeadTail(paths);
  EXPECT_TRUE(paths[0].empty());
  EXPECT_EQ(paths[1].size(), 1u);
  EXPECT_EQ(paths[2].size(), 5u);
  EXPECT_EQ(paths[3].size(), 5u);

  // Straight vertices and a vertex where the outline doubles back go; corners stay, and the
  // closed path stays closed.
  TPath64 p = Path({{0, 0}, {5, 0}, {10, 0}, {10, 10}, {10, 12}, {10, 10}, {0, 10}, {0, 0}});
  U::CollinearSmooth(p, 1.0);
  EXPECT_TRUE(U::IsClosed(p));
  EXPECT_EQ(std::count(p.begin(), p.end(), P(5, 0)), 0);
  EXPECT_NEAR(std::fabs(U::Area(p)), 1e12, 1.0);
  for (const TPoint64& v : p) EXPECT_TRUE(v.X % 100000 == 0 && v.Y % 100000 == 0);
}

TEST(PathCut, PolyTree64NodesDepthFirst) {
  Clipper2::TPolyTree64 root;
  auto* a = static_cast<Clipper2::TPolyPath64*>(root.AddChild(Square(0, 0, 10)));
  a->AddChild(Square(-5, 0, 1));
  auto* empty = static_cast<Clipper2::TPolyPath64*>(a->AddChild(TPath64{}));
  empty->AddChild(Square(5, 0, 1));
  root.AddChild(Square(30, 0, 1));
  const auto nodes = TPolyTree64Utils::GetAllNodes(root);
  ASSERT_EQ(nodes.size(), 4u);
  EXPECT_EQ(nodes[0], a);
  EXPECT_EQ(nodes[1], a->GetChild64(0));
  EXPECT_EQ(nodes[2], empty->GetChild64(0));
  EXPECT_EQ(nodes[3], root.GetChild64(1));
  EXPECT_EQ(TPolyTree64Utils::GetNodeCount(root), 6);
  EXPECT_EQ(TPolyTree64Utils::GetNodeCount(*a), 4);
  const Clipper2::TPolyTree64 bare;
  EXPECT_EQ(TPolyTree64Utils::GetNodeCount(bare), 1);
  EXPECT_TRUE(TPolyTree64Utils::GetAllNodes(bare).empty());
  // A chain nested 10^5 deep is walked without recursion.
  Clipper2::TPolyTree64 deep;
  Clipper2::TPolyPath64* at = &deep;
  for (int i = 0; i < 100000; ++i) at = static_cast<Clipper2::TPolyPath64*>(at->AddChild(TPath64{{i, i}}));
  EXPECT_EQ(TPolyTree64Utils::GetNodeCount(deep), 100001);
  EXPECT_EQ(TPolyTree64Utils::GetAllNodes(deep).size(), 100000u);
}

}  // namespace
}  // namespace orvane
