// Containment trees: hand-worked nestings, the choices for outlines outside all others and
// for touching outlines, random nestings against a parity count, clipper trees, and the
// leather hides against GEOS.

#include "orvane/vertex/VPolyline2DTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"
#if ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

std::unique_ptr<TVPolyline2D> Sq(double X0, double Y0, double Side) {
  return std::make_unique<TVPolyline2D>(TRect2D(X0, Y0, X0 + Side, Y0 + Side));
}

double Sum(const TVHPolygonList& L) {
  double a = 0.0;
  for (const TVHPolygon* p : L) a += p->Area();
  return a;
}

// Two islands in one hole, and a part lying beside the hide: the part is material of its
// own, not a hole of the hide; the islands are two regions.
TEST(VPolyline2DTree, IslandsAndOutlinesOutsideAllOthers) {
  TVPolyline2DList input;
  input.Add(Sq(1, 1, 8));    // hole
  input.Add(Sq(20, 0, 3));   // apart from everything
  input.Add(Sq(0, 0, 10));   // outline
  input.Add(Sq(2, 2, 2));    // island
  input.Add(Sq(6, 6, 2));    // island
  TVPolyline2DTree tree(input);
  const auto* root = tree.GetRoot();
  EXPECT_EQ(root->GetData(), nullptr);
  EXPECT_EQ(root->GetDepth(), -1);
  ASSERT_EQ(root->ChildCount(), 2);
  EXPECT_EQ(root->ChildNode(1)->GetDepth(), 0);
  EXPECT_EQ(root->ChildNode(0)->ChildNode(0)->ChildCount(), 2);
  EXPECT_EQ(tree.RelationWith({21, 1}), 1);
  EXPECT_EQ(tree.RelationWith({15, 1}), -1);
  EXPECT_EQ(tree.RelationWith({3, 3}), 1);
  EXPECT_EQ(tree.RelationWith({5, 5}), -1);
  EXPECT_EQ(tree.RelationWith({1, 5}), 0);  // on the hole's edge
  auto polygons = tree.CreateHPolygons();
  ASSERT_EQ(polygons->Count(), 4);
  EXPECT_DOUBLE_EQ(Sum(*polygons), 100.0 - 64.0 + 9.0 + 4.0 + 4.0);
  EXPECT_DOUBLE_EQ(tree.CreateHPolygon()->Area(), 36.0);  // the largest outline's region
}

// A hole whose first vertex lies on the outline nests as a hole; a neighbour that shares an
// edge stays apart; a crossing outline goes where most of it lies; duplicates keep input
// order and cancel.
TEST(VPolyline2DTree, TouchingOutlinesAndDuplicates) {
  TVPolyline2DList input;
  input.Add(new TVPolyline2D{{0, 2}, {1, 1}, {1, 3}, {0, 2}});  // first vertex on the outline
  input.Add(Sq(0, 0, 4));
  input.Add(Sq(4, 0, 1));  // shares part of the outline's right edge
  TVPolyline2DTree tree(input);
  ASSERT_EQ(tree.GetRoot()->ChildCount(), 2);
  EXPECT_EQ(tree.GetRoot()->ChildNode(0)->ChildCount(), 1);
  EXPECT_EQ(tree.RelationWith({0.8, 2}), -1);
  EXPECT_EQ(tree.RelationWith({4.5, 0.5}), 1);
  EXPECT_EQ(tree.RelationWith({3, 3}), 1);

  // A defect that sticks out of the hide goes under it: the part outside stays void.
  TVPolyline2DList hide;
  hide.Add(new TVPolyline2D{{1, 1}, {3, 1}, {4.5, 2}, {3, 3}, {1, 3}});
  hide.Add(Sq(0, 0, 4));
  TVPolyline2DTree hideTree(hide);
  ASSERT_EQ(hideTree.GetRoot()->ChildCount(), 1);
  EXPECT_EQ(hideTree.RelationWith({4.2, 2}), -1);
  EXPECT_EQ(hideTree.RelationWith({2, 2}), -1);
  EXPECT_EQ(hideTree.RelationWith({0.5, 0.5}), 1);

  TVPolyline2DList twins;
  twins.Add(Sq(0, 0, 2));
  twins.Add(Sq(0, 0, 2));
  TVPolyline2DTree twinTree(twins);
  ASSERT_EQ(twinTree.GetRoot()->ChildCount(), 1);
  EXPECT_EQ(twinTree.GetRoot()->GetData()->First(), twins[0]->First());
  EXPECT_EQ(twinTree.RelationWith({1, 1}), -1);
}

TEST(VPolyline2DTree, BadAndEmptyInput) {
  TVPolyline2DTree empty;
  EXPECT_EQ(empty.RelationWith({0, 0}), -1);
  EXPECT_EQ(empty.CreateHPolygons()->Count(), 0);
  EXPECT_EQ(empty.CreateHPolygon()->Count(), 0);

  TVPolyline2DList input;
  input.Add(new TVPolyline2D{{0, 0}, {1, 1}});           // too few vertices: passed over
  input.Add(new TVPolyline2D{{0, 0}, {3, 0}, {3, 3}, {0, 3}});  // open: read closed
  TVPolyline2DTree tree(input);
  EXPECT_EQ(tree.RelationWith({1, 2}), 1);
  EXPECT_TRUE(tree.CreateHPolygon()->CheckClosed());
  EXPECT_THROW(tree.RelationWith({std::nan(""), 0}), EParamError);
  input.Add(new TVPolyline2D{{0, 0}, {std::nan(""), 1}, {2, 2}});
  EXPECT_THROW(TVPolyline2DTree{input}, EParamError);
  TVPolyline2DList degenerate;
  degenerate.Add(new TVPolyline2D{{0, 0}});
  EXPECT_TRUE(TVPolyline2DTree(degenerate).IsEmpty());
}

// Random nestings of non-crossing squares, given in any order: the tree's answer is the
// parity of the squares that hold the point, and the regions, each a counter-clockwise
// outline with clockwise holes, add up to the material.
TEST(VPolyline2DTree, RandomNestingsAgreeWithParity) {
  std::mt19937 rng(17);
  for (int round = 0; round < 20; ++round) {
    std::vector<TRect2D> boxes;
    std::uniform_int_distribution<int> coord(0, 60), side(1, 30);
    for (int tries = 0; tries < 400 && boxes.size() < 40; ++tries) {
      const double x = coord(rng), y = coord(rng), s = side(rng);
      const TRect2D b(x, y, x + s, y + s);
      bool ok = true;
      for (const TRect2D& o : boxes) {
        const bool apart = b.XMin > o.XMax || o.XMin > b.XMax || b.YMin > o.YMax || o.YMin > b.YMax;
        const bool inO = b.XMin > o.XMin && b.XMax < o.XMax && b.YMin > o.YMin && b.YMax < o.YMax;
        const bool oIn = o.XMin > b.XMin && o.XMax < b.XMax && o.YMin > b.YMin && o.YMax < b.YMax;
        ok = ok && (apart || inO || oIn);
      }
      if (ok) boxes.push_back(b);
    }
    TVPolyline2DList input;
    for (const TRect2D& b : boxes) input.Add(new TVPolyline2D(b));
    TVPolyline2DTree tree(input);
    double material = 0.0;
    std::uniform_real_distribution<double> u(-1.0, 92.0);
    for (int q = 0; q < 300; ++q) {
      const TPoint2D p(u(rng) + 0.25, u(rng) + 0.25);  // never on an integer edge
      int holders = 0;
      for (const TRect2D& b : boxes) holders += b.Contains(p, 0.0) ? 1 : 0;
      ASSERT_EQ(tree.RelationWith(p), holders % 2 == 1 ? 1 : -1);
    }
    // Inclusion-exclusion by depth: material is the alternating sum of nested areas.
    auto nodes = tree.HierarchicalTraversal();
    for (const auto* n : *nodes)
      if (n->GetData() != nullptr) material += (n->GetDepth() % 2 == 0 ? 1 : -1) * n->GetData()->Area();
    auto regions = tree.CreateHPolygons();
    EXPECT_NEAR(Sum(*regions), material, 1e-9);
    for (const TVHPolygon* r : *regions) {
      EXPECT_TRUE(r->CheckClosed());
      for (int i = 0; i < r->Count(); ++i) EXPECT_EQ((*r)[i]->IsClockwise(), i > 0) << round;
    }
  }
}

TEST(VPolyline2DTree, FromClipperTree) {
  Clipper::TPolyTree poly;
  const auto rect = [](std::int64_t a, std::int64_t b) {
    return TPath64{{a, a}, {b, a}, {b, b}, {a, b}};
  };
  Clipper::TPolyNode* outer = poly.AddChild(rect(0, 1000000));
  outer->AddChild(rect(100000, 900000))->AddChild(rect(200000, 300000));
  poly.AddChild(rect(2000000, 2100000));
  TVPolyline2DTreeList trees(poly);
  ASSERT_EQ(trees.Count(), 2);
  EXPECT_TRUE(TVPolyline2DTree(poly).IsEmpty());  // the root has no contour
  EXPECT_EQ(trees.RelationWith({2.5, 2.5}), 1);
  EXPECT_EQ(trees.RelationWith({20.5, 20.5}), 1);
  EXPECT_EQ(trees.RelationWith({30, 30}), -1);
  EXPECT_EQ(trees.RelationWith({10, 5}), 0);
  auto polygons = trees.CreateHPolygons();
  trees.Clear();  // the regions survive the trees
  ASSERT_EQ(polygons->Count(), 3);
  EXPECT_NEAR(Sum(*polygons), 100 - 64 + 1 + 1, 1e-9);
}

#if ORVANE_HAVE_GEOS
// The hides: outline and defect holes as loose rings. GEOS-valid hides give GEOSBuildArea's
// area and agree with GEOSCovers at random points; invalid ones (crossing or overlapping
// holes) must build and answer without fault.
TEST(VPolyline2DTree, LeatherHidesAgreeWithGeos) {
  namespace fs = std::filesystem;
  const std::vector<fs::path> files = testing::DataFiles("outlines", "", "baldacci");
  if (files.empty()) GTEST_SKIP() << "no leather hides in " << ORVANE_SHARED_DATA_DIR;
  GEOSContextHandle_t h = GEOS_init_r();
  std::mt19937 rng(5);
  int valid = 0, invalid = 0;
  for (const fs::path& file : files) {
    const nlohmann::json doc = testing::ReadJson(file);
    for (const nlohmann::json& bin : doc["bins"]) {
      std::vector<TDynPoints2D> rings;
      const auto ring = [](const nlohmann::json& pts) {
        TDynPoints2D r;
        for (const auto& xy : pts) r.emplace_back(xy[0].get<double>(), xy[1].get<double>());
        return r;
      };
      rings.push_back(ring(bin["outer"]));
      for (const auto& hole : bin["holes"]) rings.push_back(ring(hole));
      TVPolyline2DList input;
      for (const TDynPoints2D& r : rings) input.Add(new TVPolyline2D(r));
      std::vector<GEOSGeometry*> holes;
      for (std::size_t i = 1; i < rings.size(); ++i) holes.push_back(testing::GeosRing(h, rings[i]));
      GEOSGeometry* poly = GEOSGeom_createPolygon_r(h, testing::GeosRing(h, rings[0]), holes.data(),
                                                    static_cast<unsigned>(holes.size()));
      TVPolyline2DTree tree(input);
      auto polygons = tree.CreateHPolygons();
      const TRect2D box = tree.CreateHPolygon()->BoundBox();
      if (GEOSisValid_r(h, poly) != 1) {
        ++invalid;
        // Still one hide: holes that stick out go under the outline where most of them
        // lies, so nothing outside the hide's outline is material.
        ASSERT_NE(tree.GetRoot()->GetData(), nullptr) << file.filename();
        EXPECT_EQ(tree.GetRoot()->GetData()->Count(), input[0]->Count()) << file.filename();
        for (int q = 0; q < 2000; ++q) {
          const TPoint2D p(box.XMin + box.Width() * (q % 50) / 49.0, box.YMin + box.Height() * (q / 50) / 39.0);
          const int r = tree.RelationWith(p);
          if (input[0]->RelationWithPoint(p, 1e-6) == static_cast<int>(TShapeRelation::srOut)) {
            EXPECT_EQ(r, -1) << file.filename() << p.ToString();
          }
        }
        GEOSGeom_destroy_r(h, poly);
        continue;
      }
      ++valid;
      GEOSGeometry* boundary = GEOSBoundary_r(h, poly);
      GEOSGeometry* area = GEOSBuildArea_r(h, boundary);
      double want = 0.0;
      GEOSArea_r(h, area, &want);
      EXPECT_NEAR(Sum(*polygons), want, 1e-9 * want) << file.filename();
      const GEOSPreparedGeometry* prep = GEOSPrepare_r(h, area);
      std::uniform_real_distribution<double> ux(box.XMin, box.XMax), uy(box.YMin, box.YMax);
      for (int q = 0; q < 10000; ++q) {
        const TPoint2D p(ux(rng), uy(rng));
        GEOSGeometry* g = GEOSGeom_createPointFromXY_r(h, p.X, p.Y);
        const int r = tree.RelationWith(p);
        const bool covered = GEOSPreparedCovers_r(h, prep, g) == 1;
        GEOSGeom_destroy_r(h, g);
        if (r != 0) {
          ASSERT_EQ(r == 1, covered) << file.filename() << p.ToString();
        }
      }
      GEOSPreparedGeom_destroy_r(h, prep);
      GEOSGeom_destroy_r(h, area);
      GEOSGeom_destroy_r(h, boundary);
      GEOSGeom_destroy_r(h, poly);
    }
  }
  GEOS_finish_r(h);
  EXPECT_GT(valid, 40);
  EXPECT_GT(invalid, 20);
}
#endif

}  // namespace
}  // namespace orvane
