// Nesting and cutting on real data against GEOS: the leather hides of the Baldacci bins (an
// outline with defect holes, some drawn across the outline) and the common edges of parts
// that touch in the published ESICUP layouts.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orvane/paths/PathUtils.h"
#include "orvane/paths/PathsList.h"
#include "orvane/paths/clipping/Clipper.h"
#include "support/SharedData.h"

#ifdef ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

namespace fs = std::filesystem;
using U = TPathUtils;

TDynPoints2D Ring(const nlohmann::json& Pts) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Pts) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
  return ring;
}

std::vector<nlohmann::json> Documents(const std::string& Folder, const std::string& Prefix) {
  std::vector<nlohmann::json> docs;
  for (const fs::path& f : testing::DataFiles(Folder, ".json", Prefix)) docs.push_back(testing::ReadJson(f));
  return docs;
}

#ifdef ORVANE_HAVE_GEOS

struct TGeos {
  GEOSContextHandle_t H = GEOS_init_r();
  ~TGeos() { GEOS_finish_r(H); }
  GEOSGeometry* Polygon(const TDynPoints2D& Outer, const std::vector<TDynPoints2D>& Holes) const {
    std::vector<GEOSGeometry*> holes;
    for (const TDynPoints2D& h : Holes) holes.push_back(testing::GeosRing(H, h));
    return GEOSGeom_createPolygon_r(H, testing::GeosRing(H, Outer), holes.data(), static_cast<unsigned>(holes.size()));
  }
  // The length of the line parts of G: points measure nothing, and the intersection of two
  // boundaries holds no areas.
  double LineLength(const GEOSGeometry* G) const {
    double len = 0;
    GEOSLength_r(H, G, &len);
    return len;
  }
};

double Perimeter(const TDynPoints2D& R) {
  double p = 0;
  for (std::size_t i = 0; i < R.size(); ++i) p += R[i].DistanceTo(R[(i + 1) % R.size()]);
  return p;
}

// Hides that GEOS takes as valid polygons: our material has GEOSBuildArea's area and covers
// the same points. The others (defects across the outline, a defect inside another) answer
// too: every ring lands in the result once, a defect across the outline stays a hole of it
// (most of its area lies inside), and a defect wholly inside another is an island.
TEST(PathCutData, BaldacciBinsNestLikeGeos) {
  const std::vector<nlohmann::json> docs = Documents("outlines", "baldacci_");
  if (docs.empty()) GTEST_SKIP() << "no Baldacci bins in " ORVANE_SHARED_DATA_DIR "/outlines";
  TGeos g;
  std::mt19937_64 rng(11);
  int valid = 0, invalid = 0, points = 0;
  for (const nlohmann::json& doc : docs) {
    for (const nlohmann::json& bin : doc["bins"]) {
      const TDynPoints2D outer = Ring(bin["outer"]);
      std::vector<TDynPoints2D> holes;
      for (const nlohmann::json& h : bin["holes"]) holes.push_back(Ring(h));
      // Shuffled, with every other hole turned round: neither order nor orientation matters.
      TPaths64 paths{U::CreatePath(outer, PathWorkingRate)};
      double perimeter = Perimeter(outer);
      for (std::size_t i = 0; i < holes.size(); ++i) {
        paths.push_back(U::CreatePath(holes[i], PathWorkingRate));
        if (i % 2 == 1) U::Reverse(paths.back());
        perimeter += Perimeter(holes[i]);
      }
      std::shuffle(paths.begin(), paths.end(), rng);
      TPathsList res(true);
      U::NormalizeTPaths(paths, &res);
      ASSERT_EQ(res.PathCount(), static_cast<int>(paths.size()));

      GEOSGeometry* poly = g.Polygon(outer, holes);
      if (GEOSisValid_r(g.H, poly) != 1) {
        ++invalid;
        int nested = 0;
        for (std::size_t i = 0; i < holes.size(); ++i) {
          GEOSGeometry* hi = g.Polygon(holes[i], {});
          for (std::size_t j = 0; j < holes.size(); ++j) {
            if (j == i) continue;
            GEOSGeometry* hj = g.Polygon(holes[j], {});
            nested += GEOSContains_r(g.H, hj, hi) == 1;
            GEOSGeom_destroy_r(g.H, hj);
          }
          GEOSGeom_destroy_r(g.H, hi);
        }
        EXPECT_EQ(res.Count(), 1 + nested) << bin["id"];
        GEOSGeom_destroy_r(g.H, poly);
        continue;
      }
      ++valid;
      ASSERT_EQ(res.Count(), 1);
      EXPECT_EQ(res[0].size(), holes.size() + 1);

      std::vector<GEOSGeometry*> rings{testing::GeosRing(g.H, outer)};
      for (const TDynPoints2D& h : holes) rings.push_back(testing::GeosRing(g.H, h));
      GEOSGeometry* lines =
          GEOSGeom_createCollection_r(g.H, GEOS_GEOMETRYCOLLECTION, rings.data(), static_cast<unsigned>(rings.size()));
      GEOSGeometry* area = GEOSBuildArea_r(g.H, lines);
      double geosArea = 0;
      GEOSArea_r(g.H, area, &geosArea);
      double ours = 0;
      for (const TPaths64& item : res) {
        ours += std::fabs(Clipper::Area(item[0]));
        for (std::size_t k = 1; k < item.size(); ++k) ours -= std::fabs(Clipper::Area(item[k]));
      }
      // Rounding to the integer grid moves a vertex by less than 1e-5.
      EXPECT_NEAR(ours / 1e10, geosArea, perimeter * 1e-5) << bin["id"];

      const GEOSPreparedGeometry* prepared = GEOSPrepare_r(g.H, area);
      TRect2D box;
      box.SetByPointsExt(outer);
      std::uniform_real_distribution<double> ux(box.XMin, box.XMax), uy(box.YMin, box.YMax);
      for (int k = 0; k < 1000; ++k) {
        const TPoint2D pt(ux(rng), uy(rng));
        GEOSGeometry* gp = GEOSGeom_createPointFromXY_r(g.H, pt.X, pt.Y);
        double dist = 0;
        GEOSDistance_r(g.H, gp, lines, &dist);
        if (dist > 1e-4) {
          const TPoint64 ip = U::CreateIntPoint(pt, PathWorkingRate);
          int hits = 0;
          for (const TPaths64& item : res) hits += U::PointInPolygons(ip, item) == 1;
          EXPECT_EQ(hits == 1, GEOSPreparedCovers_r(g.H, prepared, gp) == 1) << bin["id"] << " " << pt.ToString();
          ++points;
        }
        GEOSGeom_destroy_r(g.H, gp);
      }
      GEOSPreparedGeom_destroy_r(g.H, prepared);
      GEOSGeom_destroy_r(g.H, area);
      GEOSGeom_destroy_r(g.H, lines);
      GEOSGeom_destroy_r(g.H, poly);
    }
  }
  EXPECT_GT(valid, 50);
  EXPECT_GT(invalid, 20);
  EXPECT_GT(points, 10000);
}

// For every pair of parts that touch in a published layout, the stretches that the edges of
// one cut out of the other add up to the line parts of GEOS's boundary intersection.
TEST(PathCutData, CommonEdgesOfTouchingPartsMatchGeos) {
  const std::vector<nlohmann::json> docs = Documents("layouts", "esicup_");
  if (docs.empty()) GTEST_SKIP() << "no ESICUP layouts in " ORVANE_SHARED_DATA_DIR "/layouts";
  TGeos g;
  int pairs = 0, withLines = 0, banded = 0;
  double total = 0;
  for (const nlohmann::json& doc : docs) {
    for (const nlohmann::json& solution : doc["solutions"]) {
      std::vector<TDynPoints2D> rings;
      std::vector<TPath64> paths;
      std::vector<GEOSGeometry*> bounds;
      for (const nlohmann::json& pl : solution["placements"]) {
        rings.push_back(Ring(pl["placed"]));
        paths.push_back(U::CreatePath(rings.back(), PathWorkingRate));
        bounds.push_back(testing::GeosRing(g.H, rings.back()));
      }
      for (std::size_t i = 0; i < rings.size(); ++i) {
        for (std::size_t j = i + 1; j < rings.size(); ++j) {
          double dist = 0;
          GEOSDistance_r(g.H, bounds[i], bounds[j], &dist);
          if (dist > 1e-6) continue;
          // Placed by a transform in doubles, common edges are often off by a few ulps or a
          // few 1e-6: GEOS's exact overlay sees points there. On the 1e-5 grid of our paths
          // (snap rounding) they are the lines they were drawn as.
          GEOSGeometry* common = GEOSIntersectionPrec_r(g.H, bounds[i], bounds[j], 1e-5);
          const double want = g.LineLength(common);
          GEOSGeom_destroy_r(g.H, common);
          double ours = 0;
          const TPath64& pj = paths[j];
          for (std::size_t k = 0; k < pj.size(); ++k) {
            for (const TPath64& piece : U::CutByPath(paths[i], {pj[k], pj[(k + 1) % pj.size()]}, 2e-5)) {
              for (std::size_t m = 0; m + 1 < piece.size(); ++m)
                ours += std::hypot(static_cast<double>(piece[m + 1].X - piece[m].X),
                                   static_cast<double>(piece[m + 1].Y - piece[m].Y)) /
                        1e5;
            }
          }
          if (std::fabs(ours - want) > 1e-3) {
            // Where parts overlap by a few 1e-6 along a common edge, the grid does not bring
            // the two edges together and GEOS sees crossing points only. Then the length of
            // one boundary within the tolerance of the other measures the common stretch.
            GEOSGeometry* band = GEOSBuffer_r(g.H, bounds[i], 2e-5, 8);
            GEOSGeometry* near = GEOSIntersection_r(g.H, bounds[j], band);
            EXPECT_NEAR(ours, g.LineLength(near), 1e-3)
                << doc["name"] << " " << solution["algorithm"] << " " << i << " " << j << " GEOS lines " << want;
            GEOSGeom_destroy_r(g.H, near);
            GEOSGeom_destroy_r(g.H, band);
            ++banded;
          }
          ++pairs;
          withLines += want > 0;
          total += want;
        }
      }
      for (GEOSGeometry* b : bounds) GEOSGeom_destroy_r(g.H, b);
    }
  }
  EXPECT_GT(pairs, 800);
  EXPECT_LT(banded, pairs / 50);
  EXPECT_GT(withLines, 400);
  EXPECT_GT(total, 20000);
}

#else

TEST(PathCutData, NeedsGeos) { GTEST_SKIP() << "GEOS is not installed: the real-data checks need it as the oracle"; }

#endif

}  // namespace
}  // namespace orvane
