// The layout check on parts with arcs: discs, a ring and a bulged square with hand-worked
// contacts and areas, the ring's areas against GEOS on its own fine circles.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "Check.h"
#include "Layout.h"

#ifdef ORVANE_HAVE_GEOS
#include <geos_c.h>
#endif

using namespace orvane::tool;

namespace {

// A circle of radius R about (X, Y) as two half-circle arcs.
std::string Disc(double X, double Y, double R, bool Ccw = true) {
  const char* b = Ccw ? "1" : "-1";
  return "[[" + std::to_string(X - R) + "," + std::to_string(Y) + "," + b + "],[" + std::to_string(X + R) + "," +
         std::to_string(Y) + "," + b + "]]";
}

TCheckReport Check(const std::string& Parts, double Tol = 1e-6) {
  TCheckOptions options;
  options.Tol = Tol;
  return CheckLayout(ParseLayout("{\"parts\":[" + Parts + "]}", "bulged").at(0), options);
}

std::string Part(const std::string& Outer, const std::string& Holes = "") {
  return "{\"outer\":" + Outer + (Holes.empty() ? "" : ",\"holes\":[" + Holes + "]") + "}";
}

// The common area of two unit circles whose centres lie D apart.
double Lens(double D) { return 2.0 * std::acos(D / 2.0) - D / 2.0 * std::sqrt(4.0 - D * D); }

TEST(BulgedLayout, DiscsTouchOverlapOrStayClear) {
  TCheckReport r = Check(Part(Disc(0, 0, 1)) + "," + Part(Disc(2, 0, 1, false)));
  EXPECT_EQ(r.ContactPairs, 1);
  EXPECT_EQ(r.PositiveOverlapPairs, 0);
  EXPECT_TRUE(r.Clean);
  r = Check(Part(Disc(0, 0, 1)) + "," + Part(Disc(1.9, 0, 1)));
  ASSERT_EQ(r.Overlaps.size(), 1u);
  // Chords within 2e-6 of the arcs, along a lens boundary shorter than 1.3.
  EXPECT_NEAR(r.Overlaps[0].Area, Lens(1.9), 3e-6);
  EXPECT_NEAR(r.Overlaps[0].Relative, Lens(1.9) / std::numbers::pi, 1e-6);
  EXPECT_FALSE(r.Clean);
  r = Check(Part(Disc(0, 0, 1)) + "," + Part(Disc(2.1, 0, 1)));
  EXPECT_EQ(r.ContactPairs, 0);
  EXPECT_TRUE(r.Clean);
  // 0.1 apart: in contact within 0.11, not within 0.09.
  EXPECT_EQ(Check(Part(Disc(0, 0, 1)) + "," + Part(Disc(2.1, 0, 1)), 0.11).ContactPairs, 1);
  EXPECT_EQ(Check(Part(Disc(0, 0, 1)) + "," + Part(Disc(2.1, 0, 1)), 0.09).ContactPairs, 0);
  // Half a unit out of the container's left side.
  const TLayout sticking =
      ParseLayout("{\"container\":[[0,0],[9,0],[9,9],[0,9]],\"parts\":[" + Part(Disc(0.5, 5, 1)) + "]}", "out").at(0);
  EXPECT_NEAR(CheckLayout(sticking, {}).MaxProtrusion, 0.5, 1e-9);
  // A bulge below 1e-6 is a straight edge: the part has no arcs.
  EXPECT_FALSE(
      ParseLayout("{\"parts\":[" + Part("[[0,0],[1,0,1e-300],[1,1,-9e-7]]") + "]}", "").at(0).Parts[0].HasArcs());
}

TEST(BulgedLayout, DiscsAgainstARingWithAHole) {
  const std::string ring = Part(Disc(0, 0, 10), Disc(0, 0, 5, false));
  // In the hole: clear. In the material: contained, by its whole area.
  TCheckReport r = Check(ring + "," + Part(Disc(1, 1, 1)));
  EXPECT_TRUE(r.Clean);
  EXPECT_EQ(r.ContactPairs, 0);
  r = Check(ring + "," + Part(Disc(7.5, 0, 1)));
  ASSERT_EQ(r.ContainedParts, std::vector<int>{1});
  EXPECT_NEAR(r.Overlaps.at(0).Area, std::numbers::pi, 1e-5);
  // Across the hole's edge, and touching it from inside the hole.
  r = Check(ring + "," + Part(Disc(5, 0, 1)));
  ASSERT_EQ(r.Overlaps.size(), 1u);
  const double across = r.Overlaps[0].Area;
  r = Check(ring + "," + Part(Disc(4, 0, 1)));
  EXPECT_EQ(r.ContactPairs, 1);
  EXPECT_TRUE(r.Clean);
#ifdef ORVANE_HAVE_GEOS
  // GEOS on its own circles of 4000 chords a quarter.
  GEOSContextHandle_t h = GEOS_init_r();
  std::vector<GEOSGeometry*> g;
  for (const auto& [x, radius] : {std::pair{0.0, 10.0}, {0.0, 5.0}, {5.0, 1.0}}) {
    GEOSGeometry* centre = GEOSGeom_createPointFromXY_r(h, x, 0.0);
    g.push_back(GEOSBuffer_r(h, centre, radius, 4000));
    GEOSGeom_destroy_r(h, centre);
  }
  g.push_back(GEOSDifference_r(h, g[0], g[1]));
  g.push_back(GEOSIntersection_r(h, g[3], g[2]));
  double area = 0.0;
  GEOSArea_r(h, g[4], &area);
  EXPECT_NEAR(across, area, 1e-4);
  for (GEOSGeometry* x : g) GEOSGeom_destroy_r(h, x);
  GEOS_finish_r(h);
#endif
}

TEST(BulgedLayout, BulgedSquareAgainstAPlainSquare) {
  // The top edge of the square [0, 2]^2 bulges into a half circle about (1, 2), up to y = 3.
  const std::string bulged = Part("[[0,0],[2,0],[2,2,1],[0,2]]");
  TCheckReport r = Check(bulged + "," + Part("[[0.5,3],[1.5,3],[1.5,4],[0.5,4]]"));
  EXPECT_EQ(r.ContactPairs, 1);
  EXPECT_TRUE(r.Clean);
  // 0.1 lower: the circle's cap of height 0.1 is the overlap, its arc of length 0.9 on
  // chords within 3e-6 (a millionth of the bulged part's size).
  r = Check(bulged + "," + Part("[[0.5,2.9],[1.5,2.9],[1.5,4],[0.5,4]]"));
  ASSERT_EQ(r.Overlaps.size(), 1u);
  EXPECT_NEAR(r.Overlaps[0].Area, std::acos(0.9) - 0.9 * std::sqrt(0.19), 0.9 * 3e-6);
}

}  // namespace
