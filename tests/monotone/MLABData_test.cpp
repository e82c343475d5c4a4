// Mixed monotone regions on real parts (bulged LWPOLYLINEs and CIRCLEs of the shared DXF
// drawings), placed against each other and checked against GEOS on a fine linearisation.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orvane/monotone/MLABHPolygon.h"
#include "support/DxfOutlines.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

namespace fs = std::filesystem;
using testing::Parts;
using testing::ReadOutlines;

TDynPoints2D Linearise(const TLABPolyline& P, double Sagitta) {
  TDynPoints2D out;
  for (const TLABSegline& s : P) {
    if (s.SegType != TSegType::stArc) {
      out.push_back(s.P1);
      continue;
    }
    const TArc2D a = s.ToArc();
    const double step = 2.0 * std::acos(1.0 - Sagitta / a.Radius);
    const int n = std::max(2, static_cast<int>(std::ceil(std::abs(a.SweepAngle) / step)) + 1);
    TDynPoints2D pts;
    a.GetPoints(n, pts);
    out.insert(out.end(), pts.begin(), pts.end() - 1);
  }
  return out;
}

#ifdef ORVANE_HAVE_GEOS
GEOSGeometry* GeosPart(GEOSContextHandle_t H, const TLABHPolygon& Part, const TPoint2D& Move) {
  std::vector<GEOSGeometry*> holes;
  for (int k = 1; k < Part.Count(); ++k)
    holes.push_back(testing::GeosRing(H, testing::Moved(Linearise(*Part[k], 1e-7), Move)));
  return GEOSGeom_createPolygon_r(H, testing::GeosRing(H, testing::Moved(Linearise(*Part[0], 1e-7), Move)),
                                  holes.data(), static_cast<unsigned>(holes.size()));
}

TEST(MLABData, PlacedPartsAgreeWithGeos) {
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "curves";
  const char* files[] = {"laser4diy_mainsheet_x.dxf", "laser4diy_cornerbracket_8pcs_x.dxf",
                         "laser4diy_baseplate.dxf", "skydxf_issue39.dxf"};
  std::vector<std::unique_ptr<TLABHPolygon>> parts;
  for (const char* f : files) {
    if (!fs::exists(dir / f)) GTEST_SKIP() << "no shared data: " << (dir / f);
    auto ps = Parts(ReadOutlines(dir / f));
    // The largest part of each drawing, and one more of a sheet of several.
    for (std::size_t k = 0; k < ps.size() && k < 2; ++k) parts.push_back(std::move(ps[k]));
  }
  ASSERT_GE(parts.size(), 4u);
  EXPECT_EQ(parts[0]->Count(), 1 + 203 + 9);  // the mainsheet with its circle holes and cut-outs

  GEOSContextHandle_t h = GEOS_init_r();
  std::mt19937 rng(39);
  int decided = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const TMLABHPolygon a(*parts[i], 1e-6);
    GEOSGeometry* ga = GeosPart(h, *parts[i], TPoint2D(0, 0));
    const GEOSPreparedGeometry* pa = GEOSPrepare_r(h, ga);
    GEOSGeometry* edgeA = GEOSBoundary_r(h, ga);
    const GEOSPreparedGeometry* pEdgeA = GEOSPrepare_r(h, edgeA);
    const TRect2D boxA = parts[i]->First()->BoundBox();
    // Points: the region's relation against GEOSCovers.
    std::uniform_real_distribution<double> px(boxA.XMin, boxA.XMax);
    std::uniform_real_distribution<double> py(boxA.YMin, boxA.YMax);
    for (int k = 0; k < 300; ++k) {
      const TPoint2D q(px(rng), py(rng));
      GEOSGeometry* gq = GEOSGeom_createPointFromXY_r(h, q.X, q.Y);
      double dist = 0.0;
      GEOSPreparedDistance_r(h, pEdgeA, gq, &dist);
      if (dist >= 1e-5) {
        bool inside = a[0]->RelationWithPoint(q) != TShapeRelation::srOut;
        for (int k2 = 1; k2 < a.Count() && inside; ++k2)
          if (a[k2]->RelationWithPoint(q) == TShapeRelation::srIn) inside = false;
        EXPECT_EQ(inside, GEOSPreparedCovers_r(h, pa, gq) == 1) << i << " " << q.ToString();
      }
      GEOSGeom_destroy_r(h, gq);
    }
    // Placed copies of every part, near enough to meet often.
    for (std::size_t j = 0; j < parts.size(); ++j) {
      const TRect2D boxB = parts[j]->First()->BoundBox();
      std::uniform_real_distribution<double> mx(boxA.XMin - boxB.XMax, boxA.XMax - boxB.XMin);
      std::uniform_real_distribution<double> my(boxA.YMin - boxB.YMax, boxA.YMax - boxB.YMin);
      for (int k = 0; k < (j == 0 ? 3 : (i == 0 ? 30 : 40)); ++k) {
        const TPoint2D move(mx(rng), my(rng));
        TLABHPolygon moved;
        for (const TLABPolyline* o : *parts[j]) {
          auto c = o->CloneAs<TLABPolyline>();
          c->Translate(move);
          moved.Add(std::move(c));
        }
        const TMLABHPolygon b(moved, 1e-6);
        GEOSGeometry* gb = GeosPart(h, *parts[j], move);
        GEOSGeometry* bb = GEOSBoundary_r(h, gb);
        double dist = 0.0;
        GEOSPreparedDistance_r(h, pEdgeA, bb, &dist);
        if (dist >= 1e-5) {
          ++decided;
          EXPECT_EQ(a.Overlap(b, 1e-6), GEOSPreparedIntersects_r(h, pa, gb) == 1) << i << " " << j << " " << k;
          EXPECT_EQ(b.Overlap(a, 1e-6), a.Overlap(b, 1e-6)) << i << " " << j << " " << k;
          EXPECT_EQ(a.Contains(b), GEOSPreparedContainsProperly_r(h, pa, gb) == 1) << i << " " << j << " " << k;
        }
        GEOSGeom_destroy_r(h, bb);
        GEOSGeom_destroy_r(h, gb);
      }
    }
    GEOSPreparedGeom_destroy_r(h, pEdgeA);
    GEOSGeom_destroy_r(h, edgeA);
    GEOSPreparedGeom_destroy_r(h, pa);
    GEOSGeom_destroy_r(h, ga);
  }
  EXPECT_GT(decided, 100);
  GEOS_finish_r(h);
}
#endif

}  // namespace
}  // namespace orvane
