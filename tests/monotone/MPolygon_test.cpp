#include "orvane/monotone/MPolygon.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::SameCycle;

std::unique_ptr<TMPolygon> Make(const TDynPoints2D& Ring) {
  return std::make_unique<TMPolygon>(TVPolyline2D(Ring), nullptr);
}

TDynPoints2D Outline(const TMPolygon& Poly) { return Poly.ToVPolyline2D()->ToTDynPoints2D(); }

TEST(MPolygon, RectangleFromLowerLeft) {
  const TMPolygon poly(TVPolyline2D{{0, 0}, {4, 0}, {4, 2}, {0, 2}, {0, 0}}, nullptr);
  // One climbing chain of two vertices and one falling chain holding both level edges.
  ASSERT_EQ(poly.Count(), 2);
  const TMChain& falling = *poly[0];
  const TMChain& climbing = *poly[1];
  EXPECT_TRUE(falling.IsEqualTo(TVPolyline2D{{4, 0}, {0, 0}, {0, 2}, {4, 2}}, 0.0));
  EXPECT_FALSE(falling.GetPositive());
  EXPECT_TRUE(climbing.IsEqualTo(TVPolyline2D{{4, 0}, {4, 2}}, 0.0));
  EXPECT_EQ(falling.GetNext(), &climbing);
  EXPECT_EQ(climbing.GetNext(), &falling);
  EXPECT_EQ(poly.BoundBox(), TRect2D(0, 0, 4, 2));
  EXPECT_DOUBLE_EQ(poly.Area(), 8.0);
  EXPECT_FALSE(poly.IsClockwise());
  EXPECT_TRUE(poly.ToVPolyline2D()->IsEqualTo(TVPolyline2D{{4, 2}, {0, 2}, {0, 0}, {4, 0}, {4, 2}}, 0.0));

  EXPECT_EQ(poly.PointIsIn({2, 1}), 1);
  for (const TPoint2D& on : {TPoint2D(2, 2), TPoint2D(2, 0), TPoint2D(0, 1), TPoint2D(4, 2), TPoint2D(0, 0)})
    EXPECT_EQ(poly.PointIsIn(on), 2) << on.X << ", " << on.Y;
  // Rays along the level edges, beside the corners: each chain's top is excluded.
  for (const TPoint2D& out : {TPoint2D(5, 1), TPoint2D(-1, 0), TPoint2D(-1, 2), TPoint2D(2, 3)})
    EXPECT_EQ(poly.PointIsIn(out), 0) << out.X << ", " << out.Y;

  EXPECT_TRUE(poly.TestOverlap(poly));
  EXPECT_FALSE(poly.PolyIsIn(&poly));

  // A clone has its own ring; OriInf is not copied.
  int tag = 0;
  const TMPolygon tagged(TVPolyline2D{{0, 0}, {4, 0}, {4, 2}, {0, 0}}, &tag);
  EXPECT_EQ(tagged.OriInf, &tag);
  auto copy = tagged.CloneAs<TMPolygon>();
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->OriInf, nullptr);
  for (TMChain* c : *copy) EXPECT_TRUE(copy->Contains(c->GetNext()));
}

TEST(MPolygon, SeamsAndDegenerateOutlines) {
  // The seam inside a climbing run: the first and newest chains merge.
  const TDynPoints2D midEdge{{4, 1}, {4, 2}, {0, 2}, {0, 0}, {4, 0}, {4, 1}};
  const TMPolygon merged{TVPolyline2D(midEdge), nullptr};
  ASSERT_EQ(merged.Count(), 2);
  EXPECT_TRUE(merged[1]->IsEqualTo(TVPolyline2D{{4, 0}, {4, 1}, {4, 2}}, 0.0));
  EXPECT_TRUE(SameCycle(Outline(merged), midEdge));

  // A level first step after a climb into the seam, then a climb again: the level chain
  // and the next climbing chain both join the newest, the turning vertex once.
  const TDynPoints2D steps{{0, 1}, {1, 1}, {1, 2}, {-1, 2}, {-1, 0}, {0, 0}, {0, 1}};
  const TMPolygon stepped{TVPolyline2D(steps), nullptr};
  EXPECT_EQ(stepped.Count(), 2);
  EXPECT_TRUE(SameCycle(Outline(stepped), steps));
  EXPECT_DOUBLE_EQ(stepped.Area(), PolyArea(steps));

  // A back-and-forth line and a two-vertex polyline: one chain that is its own successor.
  for (const TVPolyline2D& line : {TVPolyline2D{{0, 0}, {1, 1}, {0, 0}}, TVPolyline2D{{1, 1}, {0, 0}}}) {
    const TMPolygon one(line, nullptr);
    ASSERT_EQ(one.Count(), 1);
    EXPECT_TRUE(one[0]->IsEqualTo(TVPolyline2D{{0, 0}, {1, 1}}, 0.0));
    EXPECT_EQ(one[0]->GetNext(), one[0]);
  }

  // Too few vertices, or none: no chains, and the neutral answers.
  for (const TVPolyline2D& few : {TVPolyline2D(), TVPolyline2D(TPoint2D(1, 1))}) {
    const TMPolygon none(few, nullptr);
    EXPECT_EQ(none.Count(), 0);
    EXPECT_FALSE(none.BoundBox().IsValid());
    EXPECT_EQ(none.PointIsIn({1, 1}), 0);
    EXPECT_FALSE(none.TestOverlap(merged));
    EXPECT_FALSE(merged.TestOverlap(none));
    EXPECT_THROW(none.Area(), EListError);
    EXPECT_THROW(none.ToVPolyline2D(), EListError);
    EXPECT_THROW(none.IsClockwise(), EListError);
  }

  // A ring without its closing vertex is an open polyline: it comes back as it was, and the
  // missing closing edge is not part of the boundary.
  const TDynPoints2D open{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
  const TMPolygon openPoly{TVPolyline2D(open), nullptr};
  EXPECT_EQ(openPoly.ToVPolyline2D()->ToTDynPoints2D(), open);
  const TMPolygon acrossLeft(TVPolyline2D{{-1, 2}, {1, 2.5}, {-1, 3}, {-1, 2}}, nullptr);
  EXPECT_FALSE(openPoly.TestOverlap(acrossLeft));
  TDynPoints2D closed = open;
  closed.push_back(open.front());
  EXPECT_TRUE(Make(closed)->TestOverlap(acrossLeft));

  EXPECT_THROW(TMPolygon(TVPolyline2D{{0, 0}, {1, std::nan("")}, {0, 1}, {0, 0}}, nullptr), EParamError);

  // A broken ring is reported, not followed.
  auto broken = Make(midEdge);
  (*broken)[0]->SetNext(nullptr);
  EXPECT_THROW(broken->Area(), EAssertionFailed);
  (*broken)[0]->SetNext((*broken)[0]);
  EXPECT_THROW(broken->ToVPolyline2D(), EAssertionFailed);
}

// A ring given without its closing vertex makes the polygon of the ring closed: chain for
// chain, in the same order and cycle, with the same box. Seams inside runs and level runs
// across the seam are where the two ways of reading the seam vertex could part.
TEST(MPolygon, FromRingMatchesTheClosedPolyline) {
  const auto same = [](const TDynPoints2D& Ring, bool Owns) {
    TDynPoints2D closed = Ring;
    if (!closed.empty()) closed.push_back(closed.front());
    const TMPolygon reference(TVPolyline2D(closed), nullptr, Owns);
    const std::unique_ptr<TMPolygon> fromRing = TMPolygon::FromRing(Ring, nullptr, Owns);
    if (fromRing->Count() != reference.Count() || fromRing->GetOwnsObjects() != Owns) return false;
    if (!(fromRing->BoundBox() == reference.BoundBox())) return false;
    for (int k = 0; k < reference.Count(); ++k) {
      const TMChain* a = (*fromRing)[k];
      const TMChain* b = reference[k];
      if (!a->IsEqualTo(*b, 0.0) || a->GetPositive() != b->GetPositive()) return false;
      if (fromRing->IndexOf(a->GetNext()) != reference.IndexOf(b->GetNext())) return false;
    }
    return true;
  };
  std::vector<TDynPoints2D> rings = {
      {{4, 1}, {4, 2}, {0, 2}, {0, 0}, {4, 0}},                 // seam inside a climbing run
      {{0, 1}, {1, 1}, {1, 2}, {-1, 2}, {-1, 0}, {0, 0}},       // level first run after the seam
      {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}},                 // closing vertex given anyway
      {{0, 0}, {1, 0}, {2, 0}, {3, 0}},                         // all level
      {{0, 0}, {1, 1}},                                         // too short for a ring
      {}};
  std::mt19937 rng(41);
  for (int k = 0; k < 300; ++k) {
    // Whole-number rings have level steps everywhere, the seam included; stars do not.
    TDynPoints2D ring = k % 3 ? testing::GridRing(rng, 12, 4) : testing::Star(rng, 3 + k % 30);
    if (k % 3) ring.pop_back();
    rings.push_back(std::move(ring));
  }
  for (std::size_t k = 0; k < rings.size(); ++k) {
    EXPECT_TRUE(same(rings[k], true)) << "ring " << k;
    EXPECT_TRUE(same(rings[k], false)) << "ring " << k;
  }
  EXPECT_THROW(TMPolygon::FromRing(TDynPoints2D{{0, 0}, {1, std::nan("")}, {0, 1}}, nullptr), EParamError);
}

TEST(MPolygon, OutlineAreaAndOrientationRoundTrip) {
  std::mt19937 rng(17);
  std::vector<TDynPoints2D> rings;
  for (int k = 0; k < 40; ++k) rings.push_back(testing::Star(rng, 3 + k * 2, {k * 1.0, -k * 0.5}, 1.0, 10.0));
  for (int k = 0; k < 20; ++k) rings.push_back(testing::Histogram(rng, 1 + k, -3.0, 2.0));
  // A U: its falling chains' highest vertices tie, and one of them ends on a concave bottom.
  rings.push_back({{0, 0}, {3, 0}, {3, 3}, {2, 3}, {2, 1}, {1, 1}, {1, 3}, {0, 3}, {0, 0}});
  for (const TDynPoints2D& ccw : rings) {
    for (const TDynPoints2D& ring : {ccw, testing::Reversed(ccw)}) {
      for (std::size_t s = 0; s + 1 < ring.size(); s += 3) {
        const TDynPoints2D from = testing::Rotated(ring, s);
        const TMPolygon poly{TVPolyline2D(from), nullptr};
        ASSERT_TRUE(SameCycle(Outline(poly), from));
        const double area = PolyArea(from);
        EXPECT_NEAR(poly.Area(), area, 1e-12 * std::fabs(area) + 1e-12);
        EXPECT_EQ(poly.IsClockwise(), area < 0.0);
        // The list is in Compare's order (Left, then the bottom among equal Lefts, which the
        // histograms' upright edges give), and the box is the outline's.
        for (int c = 1; c < poly.Count(); ++c) EXPECT_LE(TMPolygon::Compare(poly[c - 1], poly[c]), 0);
        EXPECT_EQ(poly.BoundBox(), CalcAABB(from));
        EXPECT_TRUE(SameCycle(Outline(*poly.CloneAs<TMPolygon>()), from));
      }
    }
  }
}

// Against GEOS on random outlines in MonotoneGeos_test.cpp.
TEST(MPolygon, PointIsInOnALevelTop) {
  // An arch whose underside peaks in a level stretch: a falling chain tops out in it, stored
  // with falling x, so that the binary search for a point on it may fall past the end.
  const TDynPoints2D arch{{0, 0}, {2, 2}, {2.5, 2}, {3, 2}, {3.5, 2}, {4, 2}, {6, 0}, {6, 5}, {0, 5}, {0, 0}};
  const TMPolygon archPoly{TVPolyline2D(arch), nullptr};
  for (double x = 2.0; x <= 4.0; x += 0.25) EXPECT_EQ(archPoly.PointIsIn({x, 2}), 2) << x;
  EXPECT_EQ(archPoly.PointIsIn({1, 2}), 1);
  EXPECT_EQ(archPoly.PointIsIn({5, 2}), 1);
  EXPECT_EQ(archPoly.PointIsIn({3, 1}), 0);

}

// Against GEOS on random pairs in MonotoneGeos_test.cpp, copies, moved polygons and changed
// lists with them.
TEST(MPolygon, TestOverlapAtLevelCorners) {
  // Corners where level edges meet end to end, each chain reaching its level run at another
  // height: rare finds of a search over grid shapes.
  const std::vector<std::pair<TDynPoints2D, TDynPoints2D>> corners{
      {{{3, 2}, {0, 1}, {1, 2}, {3, 2}}, {{7, 2}, {3, 3}, {3, 2}, {6, 2}, {7, 2}}},
      {{{2, 2}, {4, 2}, {2, 4}, {1, 2}, {2, 2}}, {{0, 0}, {-1, 2}, {1, 2}, {1, 0}, {-1, -2}, {-3, -2}, {0, 0}}},
      {{{0, 4}, {0, 2}, {2, 2}, {3, 2}, {0, 4}}, {{1, 1}, {-2, 0}, {-3, 3}, {-1, 2}, {1, 2}, {1, 1}}},
      {{{0, 0}, {0, 3}, {0, 4}, {1, 1}, {2, 1}, {0, 0}}, {{2, 2}, {2, 1}, {3, 1}, {6, 1}, {2, 4}, {4, 2}, {2, 2}}},
      {{{4, 4}, {4, 1}, {2, 1}, {1, 1}, {0, 1}, {2, 4}, {4, 4}}, {{3, -1}, {6, -2}, {7, 1}, {6, 1}, {3, 1}, {3, -1}}}};
  for (const auto& [a, b] : corners) {
    const auto pa = Make(a);
    const auto pb = Make(b);
    // A copy keeps the stretches that spare walks; a polygon whose list changed has lost
    // them and walks every pair of chains whose boxes meet.
    auto plain = pa->CloneAs<TMPolygon>();
    plain->Add(plain->Extract(plain->Last()));
    for (const TMPolygon* p : {pa.get(), plain.get()}) {
      EXPECT_TRUE(p->TestOverlap(*pb));
      EXPECT_TRUE(pb->TestOverlap(*p));
    }
    EXPECT_TRUE(pa->CloneAs<TMPolygon>()->TestOverlap(*pb));
  }
}

}  // namespace
}  // namespace orvane
