// Monotone regions with holes: hand-worked relations between regions, building from vertex
// regions, and random regions against GEOS.

#include "orvane/monotone/MHPolygon.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/foundation/Exception.h"
#include "support/TestSupport.h"
#if ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

std::unique_ptr<TVPolyline2D> Loop(double X0, double Y0, double X1, double Y1) {
  return std::make_unique<TVPolyline2D>(TRect2D(X0, Y0, X1, Y1));
}

// A square frame: outline X0..X1, one hole inset by Inset.
std::unique_ptr<TVHPolygon> Frame(double X0, double Y0, double X1, double Y1, double Inset) {
  auto h = std::make_unique<TVHPolygon>(false);
  h->Add(Loop(X0, Y0, X1, Y1));
  if (Inset > 0) h->Add(Loop(X0 + Inset, Y0 + Inset, X1 - Inset, Y1 - Inset));
  return h;
}

TEST(MHPolygon, RegionsInHolesInMaterialAndAround) {
  const TMHPolygon frame(*Frame(0, 0, 10, 10, 2));
  const TMHPolygon inHole(*Frame(4, 4, 6, 6, 0));
  const TMHPolygon inMaterial(*Frame(0.5, 0.5, 1.5, 1.5, 0));
  const TMHPolygon around(*Frame(-5, -5, 15, 15, 0));
  const TMHPolygon aroundWithHole(*Frame(-5, -5, 15, 15, 4));  // frame sits in its hole
  const TMHPolygon touching(*Frame(10, 0, 12, 2, 0));
  // Random frames against GEOS below; here the regions that the lists reuse.
  EXPECT_FALSE(frame.IsCrossWith(inHole));
  EXPECT_FALSE(frame.IsCrossWith(aroundWithHole));
  EXPECT_TRUE(frame.IsCrossWith(around));
  // Boundaries only: contained without contact is no clip.
  EXPECT_FALSE(frame.ClipTest(inMaterial));
  EXPECT_TRUE(frame.ClipTest(touching));

  EXPECT_FALSE(TMHPolygon(true).PointIsIn({0, 0}));
  EXPECT_FALSE(TMHPolygon(true).IsCrossWith(frame));

  TMHPolygonList parts(false), others(false);
  parts.Add(const_cast<TMHPolygon*>(&inHole));
  others.Add(const_cast<TMHPolygon*>(&frame));
  EXPECT_FALSE(parts.TestOverlap(others));
  parts.Add(const_cast<TMHPolygon*>(&touching));
  EXPECT_TRUE(parts.TestOverlap(others));
}

TEST(MHPolygon, BuiltFromVertexRegions) {
  auto framePtr = Frame(0, 0, 10, 10, 2);
  TVHPolygon& h = *framePtr;
  h.Add(std::make_unique<TVPolyline2D>(TPoint2D(5, 5)));  // a hole of one vertex: passed over
  auto open = Loop(0.5, 0.5, 1.5, 1.5);
  open->Delete(4);  // given without its closing vertex: closed here
  h.Add(std::move(open));
  const TMHPolygon m(h);
  ASSERT_EQ(m.Count(), 3);
  EXPECT_FALSE(m.GetIsClockwise());
  EXPECT_TRUE(m.PointIsIn({1.5, 1}));  // on the closing edge of the loop closed here
  EXPECT_FALSE(m.PointIsIn({1, 1}));
  EXPECT_TRUE(m.PointIsIn({1.7, 1}));
  EXPECT_EQ(m.BoundBox(), TRect2D(0, 0, 10, 10));
  EXPECT_FALSE(TMHPolygon(true).BoundBox().IsValid());

  // Back to a vertex region: the same loops, the same net area.
  auto back = m.TransToTVGSPolygon();
  EXPECT_DOUBLE_EQ(back->Area(), 100.0 - 36.0 - 1.0);
  EXPECT_TRUE(back->CheckClosed());

  TVHPolygon bad(false);
  bad.Add(new TVPolyline2D{{0, 0}, {std::nan(""), 1}, {1, 1}, {0, 0}});
  EXPECT_THROW(TMHPolygon{bad}, EParamError);
}

#if ORVANE_HAVE_GEOS
// Random frames and squares on a grid, so that many touch exactly: IsCrossWith against
// GEOSIntersects, PointIsIn against GEOSCovers.
TEST(MHPolygon, RandomRegionsAgreeWithGeos) {
  GEOSContextHandle_t h = GEOS_init_r();
  const auto toGeos = [&](const TVHPolygon& p) {
    std::vector<GEOSGeometry*> holes;
    for (int i = 1; i < p.Count(); ++i) holes.push_back(testing::GeosRing(h, p[i]->ToTDynPoints2D()));
    return GEOSGeom_createPolygon_r(h, testing::GeosRing(h, p[0]->ToTDynPoints2D()), holes.data(),
                                    static_cast<unsigned>(holes.size()));
  };
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> pos(0, 20), size(1, 12);
  int crossing = 0;
  for (int round = 0; round < 400; ++round) {
    TVHPolygon v[2];
    for (TVHPolygon& p : v) {
      const double x = pos(rng), y = pos(rng), s = size(rng);
      p.Add(Loop(x, y, x + s, y + s));
      if (s >= 3 && rng() % 2 == 0) p.Add(Loop(x + 1, y + 1, x + s - 1, y + s - 1));
    }
    const TMHPolygon a(v[0]), b(v[1]);
    GEOSGeometry* ga = toGeos(v[0]);
    GEOSGeometry* gb = toGeos(v[1]);
    const bool want = GEOSIntersects_r(h, ga, gb) == 1;
    crossing += want ? 1 : 0;
    ASSERT_EQ(a.IsCrossWith(b), want) << round;
    ASSERT_EQ(b.IsCrossWith(a), want) << round;
    for (int q = 0; q < 20; ++q) {
      std::uniform_int_distribution<int> half(0, 2);
      const TPoint2D p(pos(rng) + 0.5 * half(rng), pos(rng) + 0.5 * half(rng));
      GEOSGeometry* g = GEOSGeom_createPointFromXY_r(h, p.X, p.Y);
      EXPECT_EQ(a.PointIsIn(p), GEOSCovers_r(h, ga, g) == 1) << p.ToString();
      GEOSGeom_destroy_r(h, g);
    }
    GEOSGeom_destroy_r(h, ga);
    GEOSGeom_destroy_r(h, gb);
  }
  GEOS_finish_r(h);
  EXPECT_GT(crossing, 50);
  EXPECT_LT(crossing, 350);
}
#endif

}  // namespace
}  // namespace orvane
