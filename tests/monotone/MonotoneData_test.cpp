// The monotone polygons on real part outlines and on placed nesting layouts; the point test
// on real outlines placed against each other is checked against GEOS in
// MonotoneGeos_test.cpp.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

// A ring of the data files, closed here when the file leaves the closing vertex out.
TDynPoints2D Ring(const nlohmann::json& Pts) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Pts) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  if (!ring.empty() && ring.front() != ring.back()) ring.push_back(ring.front());
  return ring;
}

std::vector<fs::path> DataFiles(const char* Folder) {
  std::vector<fs::path> files;
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / Folder;
  if (!fs::is_directory(dir)) return files;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() == ".json") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

TEST(MonotoneData, RealOutlines) {
  const std::vector<fs::path> files = DataFiles("outlines");
  if (files.empty()) GTEST_SKIP() << "no part outlines in " << ORVANE_SHARED_DATA_DIR;
  int parts = 0;
  for (const fs::path& file : files) {
    std::ifstream in(file);
    const nlohmann::json doc = nlohmann::json::parse(in);
    for (const nlohmann::json& part : doc["parts"]) {
      const TDynPoints2D ring = Ring(part["outer"]);
      const TMPolygon poly{TVPolyline2D(ring), nullptr};
      ++parts;
      ASSERT_TRUE(testing::SameCycle(poly.ToVPolyline2D()->ToTDynPoints2D(), ring)) << file.filename();
      const double area = PolyArea(ring);
      EXPECT_NEAR(poly.Area(), area, 1e-9 * area);
      EXPECT_FALSE(poly.IsClockwise());  // every part outline travels counter-clockwise
    }
  }
  EXPECT_GT(parts, 500);
}

// Every pair of placed parts whose boxes come within 1e-5: TestOverlap against the
// brute-force boundary distance.
TEST(MonotoneData, PlacedLayouts) {
  const std::vector<fs::path> files = DataFiles("layouts");
  if (files.empty()) GTEST_SKIP() << "no layouts in " << ORVANE_SHARED_DATA_DIR;
  int pairs = 0, touching = 0;
  for (const fs::path& file : files) {
    std::ifstream in(file);
    const nlohmann::json doc = nlohmann::json::parse(in);
    std::vector<const nlohmann::json*> solutions;
    if (doc.contains("placements")) {
      solutions.push_back(&doc["placements"]);
    } else {
      for (const nlohmann::json& s : doc["solutions"]) solutions.push_back(&s["placements"]);
    }
    for (const nlohmann::json* placements : solutions) {
      std::vector<TDynPoints2D> rings;
      std::vector<std::unique_ptr<TMPolygon>> polys;
      for (const nlohmann::json& p : *placements) {
        rings.push_back(Ring(p["placed"]));
        polys.push_back(std::make_unique<TMPolygon>(TVPolyline2D(rings.back()), nullptr));
      }
      for (std::size_t a = 0; a < rings.size(); ++a) {
        for (std::size_t b = a + 1; b < rings.size(); ++b) {
          if (polys[a]->BoundBox().RelationWithRect(polys[b]->BoundBox(), 1e-5) == 0) continue;
          ++pairs;
          const bool got = polys[a]->TestOverlap(*polys[b]);
          ASSERT_EQ(got, polys[b]->TestOverlap(*polys[a]));
          const double d = testing::BoundaryDist(rings[a], rings[b]);
          if (d <= 1e-9) {
            ++touching;
            EXPECT_TRUE(got) << file.filename() << " parts " << a << ", " << b;
          } else if (d >= 1e-5) {
            EXPECT_FALSE(got) << file.filename() << " parts " << a << ", " << b << " apart by " << d;
          } else {
            // Within the tolerance band (sparrow keeps gaps down to 5e-7): a reported
            // contact must at least be a near one.
            if (got) {
              EXPECT_LE(d, 2e-6);
            }
          }
        }
      }
    }
  }
  EXPECT_GT(pairs, 1000);
  EXPECT_GT(touching, 100);
}

}  // namespace
}  // namespace orvane
