#include "orvane/monotone/MLABHPolygon.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "support/TestSupport.h"

namespace orvane {
namespace {

// Circles about (CX, CY), the first the outer boundary and the others holes.
std::unique_ptr<TMLABHPolygon> Rings(double CX, double CY, std::vector<double> Radii) {
  TLABHPolygon source;
  for (double r : Radii) {
    auto p = std::make_unique<TLABPolyline>();
    const TPoint2D s(CX + r, CY);
    p->Add(TLABSegline::CreateArc(s, s, TPoint2D(CX, CY), 3.4028234663852886e+38));
    source.Add(std::move(p));
  }
  return std::make_unique<TMLABHPolygon>(source, 1e-6);
}

struct TRow {
  const char* Name;
  std::unique_ptr<TMLABHPolygon> Other;
  bool Overlap;
  bool Contains;    // the ring contains Other
  bool Contained;   // Other contains the ring
  bool Cross;
};

// A ring of radius 10 with a hole of radius 5 against discs and annuli, worked by hand.
TEST(MLABHPolygon, RingTable) {
  const auto ring = Rings(0, 0, {10, 5});
  TRow rows[] = {
      {"disc in the hole", Rings(0, 0, {2}), false, false, false, false},
      {"disc filling the hole", Rings(0, 0, {5}), true, false, false, true},
      {"disc in the material", Rings(7.5, 0, {2}), true, true, false, false},
      {"disc touching both", Rings(7.5, 0, {2.5}), true, false, false, true},
      {"disc crossing both", Rings(7.5, 0, {3}), true, false, false, true},
      {"disc around", Rings(0, 0, {20}), true, false, true, false},
      {"disc apart", Rings(30, 0, {3}), false, false, false, false},
      {"annulus in the material", Rings(0, 0, {9, 6}), true, true, false, false},
      {"annulus around the material", Rings(0, 0, {11, 4}), true, false, true, false},
      {"annulus in the hole", Rings(0, 0, {4, 2}), false, false, false, false},
      {"annulus whose hole is too small", Rings(0, 0, {9, 3}), true, false, false, false},
      {"disc touching from outside", Rings(13, 0, {3}), true, false, false, true},
      // Starts in the hole and reaches into the material, clear of the outer boundary.
      {"disc from the hole into the material", Rings(2.5, 0, {3.5}), true, false, false, true},
  };
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.Name);
    EXPECT_EQ(ring->Overlap(*row.Other, 1e-6), row.Overlap);
    EXPECT_EQ(row.Other->Overlap(*ring, 1e-6), row.Overlap);
    EXPECT_EQ(ring->Contains(*row.Other), row.Contains);
    EXPECT_EQ(row.Other->Contains(*ring), row.Contained);
    EXPECT_EQ(ring->IsCrossWith(*row.Other, 1e-6), row.Cross);
  }
  // Moving the region moves its holes' index too.
  ring->Translate(TPoint2D(100, 0));
  EXPECT_FALSE(ring->Overlap(*Rings(100, 0, {2}), 1e-6));
  EXPECT_TRUE(ring->Overlap(*Rings(107.5, 0, {2}), 1e-6));
  EXPECT_TRUE(ring->Contains(*Rings(107.5, 0, {2})));
  EXPECT_FALSE(ring->Overlap(*Rings(0, 0, {2}), 1e-6));
  ring->Translate(TPoint2D(-100, 0));
  // Empty arguments and lists.
  const TMLABHPolygon empty;
  EXPECT_TRUE(ring->Contains(empty));
  EXPECT_TRUE(empty.Contains(empty));
  EXPECT_FALSE(empty.Contains(*ring));
  EXPECT_FALSE(ring->Overlap(empty, 1e-6));
  TLABHPolygonList sources;
  sources.Add(std::make_unique<TLABHPolygon>());
  const TMLABHPolygonList none(sources, 1e-6);
  EXPECT_EQ(none.Count(), 0);
  TMLABHPolygonList rings(false);
  rings.Add(ring.get());
  EXPECT_TRUE(rings.Contains(none));
  EXPECT_FALSE(rings.Overlap(none, 1e-6));
}

// A plate of radius 40 with an 8 x 8 grid of holes of radius 1.5, 6 apart, against random
// discs and annuli: Contains, through the holes' index, matches the circles' arithmetic.
TEST(MLABHPolygon, ContainsThroughTheHolesIndexMatchesArithmetic) {
  TLABHPolygon source;
  std::vector<TPoint2D> centres;
  for (int i = 0; i < 8; ++i)
    for (int j = 0; j < 8; ++j) centres.emplace_back(6.0 * i - 21.0, 6.0 * j - 21.0);
  auto circle = [](const TPoint2D& C, double R) {
    auto p = std::make_unique<TLABPolyline>();
    p->Add(TLABSegline::CreateArc(TPoint2D(C.X + R, C.Y), TPoint2D(C.X - R, C.Y), C, 1.0));
    p->Add(TLABSegline::CreateArc(TPoint2D(C.X - R, C.Y), TPoint2D(C.X + R, C.Y), C, 1.0));
    return p;
  };
  source.Add(circle(TPoint2D(0, 0), 40));
  for (const TPoint2D& c : centres) source.Add(circle(c, 1.5));
  const TMLABHPolygon plate(source, 1e-6);
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> u(-30.0, 30.0);
  int held = 0;
  for (int round = 0; round < 300; ++round) {
    const TPoint2D c(u(rng), u(rng));
    const double ro = 0.5 + std::abs(u(rng)) / 6.0;
    const double ri = round % 2 ? 0.0 : ro - 0.5;  // odd rounds: discs
    bool expect = std::hypot(c.X, c.Y) + ro < 40;
    bool nearContact = false;
    for (const TPoint2D& h : centres) {
      const double d = c.DistanceTo(h);
      expect = expect && (d > ro + 1.5 || d + 1.5 < ri);
      nearContact = nearContact || std::abs(d - ro - 1.5) < 1e-6 || std::abs(d + 1.5 - ri) < 1e-6;
    }
    if (nearContact) continue;
    EXPECT_EQ(plate.Contains(*Rings(c.X, c.Y, ri > 0 ? std::vector{ro, ri} : std::vector{ro})), expect) << round;
    held += expect ? 1 : 0;
  }
  EXPECT_GT(held, 30);
}

}  // namespace
}  // namespace orvane
