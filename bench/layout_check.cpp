// The whole layout check, from placed rings in memory to the verdict, ours against the same
// check written on GEOS (STRtree over the part boxes, prepared intersects, intersection
// area for the pairs in contact, prepared contains for parts inside another, the box of
// each part against the container). File parsing is timed apart. Layouts: sparrow gardeyn3
// (100 parts, 8,913 vertices) and the largest layout at hand by vertex count.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Check.h"
#include "Layout.h"
#include "orvane/foundation/PointArray.h"

namespace {

namespace fs = std::filesystem;
using namespace orvane;
using namespace orvane::tool;

struct TGeosCounts {
  int Candidates = 0, Contacts = 0, Overlaps = 0, Contained = 0, Outside = 0;
};

// The straightforward GEOS check, with the same rules as ours.
TGeosCounts GeosCheck(GEOSContextHandle_t H, const TLayout& Layout, const TCheckOptions& Options) {
  const std::size_t n = Layout.Parts.size();
  auto ring = [&](const TDynPoints2D& pts) {
    GEOSCoordSequence* seq = GEOSCoordSeq_create_r(H, static_cast<unsigned>(pts.size() + 1), 2);
    for (std::size_t k = 0; k <= pts.size(); ++k) {
      const TPoint2D& p = pts[k % pts.size()];
      GEOSCoordSeq_setXY_r(H, seq, static_cast<unsigned>(k), p.X, p.Y);
    }
    return GEOSGeom_createLinearRing_r(H, seq);
  };
  std::vector<GEOSGeometry*> geoms(n);
  std::vector<const GEOSPreparedGeometry*> prepared(n);
  std::vector<double> areas(n);
  GEOSSTRtree* tree = GEOSSTRtree_create_r(H, 10);
  std::vector<std::size_t> ids(n);
  for (std::size_t i = 0; i < n; ++i) {
    const TLayoutPart& part = Layout.Parts[i];
    std::vector<GEOSGeometry*> holes;
    for (const TDynPoints2D& h : part.Holes) holes.push_back(ring(h));
    geoms[i] = GEOSGeom_createPolygon_r(H, ring(part.Outer), holes.data(), static_cast<unsigned>(holes.size()));
    prepared[i] = GEOSPrepare_r(H, geoms[i]);
    GEOSArea_r(H, geoms[i], &areas[i]);
    ids[i] = i;
    GEOSSTRtree_insert_r(H, tree, geoms[i], &ids[i]);
  }
  TGeosCounts c;
  std::vector<std::size_t> hits;
  std::vector<char> contained(n, 0);
  for (std::size_t i = 0; i < n; ++i) {
    hits.clear();
    GEOSSTRtree_query_r(
        H, tree, geoms[i],
        [](void* item, void* user) {
          static_cast<std::vector<std::size_t>*>(user)->push_back(*static_cast<std::size_t*>(item));
        },
        &hits);
    for (std::size_t j : hits) {
      if (j <= i) continue;
      ++c.Candidates;
      if (GEOSPreparedIntersects_r(H, prepared[i], geoms[j]) != 1) continue;
      ++c.Contacts;
      GEOSGeometry* common = GEOSIntersection_r(H, geoms[i], geoms[j]);
      double area = 0.0;
      GEOSArea_r(H, common, &area);
      GEOSGeom_destroy_r(H, common);
      const double relative = area / std::min(areas[i], areas[j]);
      if (relative > Options.MaxOverlap) ++c.Overlaps;
      if (relative >= 1.0 - 1e-6) contained[areas[i] <= areas[j] ? i : j] = 1;
    }
  }
  c.Contained = static_cast<int>(std::count(contained.begin(), contained.end(), 1));
  if (!Layout.Container.empty()) {
    const TRect2D box = CalcAABB(Layout.Container);
    const double limit = Options.MaxProtrusion * Layout.ContainerHeight;
    for (std::size_t i = 0; i < n; ++i) {
      double x0, y0, x1, y1;
      GEOSGeom_getXMin_r(H, geoms[i], &x0);
      GEOSGeom_getYMin_r(H, geoms[i], &y0);
      GEOSGeom_getXMax_r(H, geoms[i], &x1);
      GEOSGeom_getYMax_r(H, geoms[i], &y1);
      const double out = std::max({0.0, box.XMin - x0, x1 - box.XMax, box.YMin - y0, y1 - box.YMax});
      if (out > limit) ++c.Outside;
    }
  }
  GEOSSTRtree_destroy_r(H, tree);
  for (std::size_t i = 0; i < n; ++i) {
    GEOSPreparedGeom_destroy_r(H, prepared[i]);
    GEOSGeom_destroy_r(H, geoms[i]);
  }
  return c;
}

std::string LayoutPath(const std::string& Name) {
  return (fs::path(ORVANE_SHARED_DATA_DIR) / "layouts" / Name).string();
}

// The largest sparrow layout by vertex count.
std::string LargestLayout() {
  std::string best;
  std::size_t most = 0;
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "layouts";
  if (!fs::exists(dir)) return best;
  for (const auto& e : fs::directory_iterator(dir)) {
    if (e.path().filename().string().rfind("sparrow_", 0) != 0) continue;
    std::size_t count = 0;
    for (const TLayoutPart& p : ReadLayoutFile(e.path().string()).front().Parts) count += p.Outer.size();
    if (count > most) {
      most = count;
      best = e.path().filename().string();
    }
  }
  return best;
}

const TLayout* Load(const std::string& Name, benchmark::State& State) {
  static std::map<std::string, TLayout> cache;
  auto it = cache.find(Name);
  if (it == cache.end()) {
    if (!fs::exists(LayoutPath(Name))) {
      State.SkipWithError(("layout data not found: " + LayoutPath(Name)).c_str());
      return nullptr;
    }
    it = cache.emplace(Name, ReadLayoutFile(LayoutPath(Name)).front()).first;
  }
  return &it->second;
}

void SetCounters(benchmark::State& State, const TLayout& L) {
  std::size_t vertices = 0;
  for (const TLayoutPart& p : L.Parts) vertices += p.Outer.size();
  State.counters["parts"] = static_cast<double>(L.Parts.size());
  State.counters["vertices"] = static_cast<double>(vertices);
}

void BM_Parse(benchmark::State& State, const std::string& Name) {
  if (!fs::exists(LayoutPath(Name))) {
    State.SkipWithError("layout data not found");
    return;
  }
  for (auto _ : State) benchmark::DoNotOptimize(ReadLayoutFile(LayoutPath(Name)));
}

void BM_Orvane(benchmark::State& State, const std::string& Name) {
  const TLayout* layout = Load(Name, State);
  if (!layout) return;
  TCheckReport last;
  TPhaseSeconds phases;
  for (auto _ : State) {
    last = CheckLayout(*layout, {});
    phases.Build += last.Seconds.Build;
    phases.Candidates += last.Seconds.Candidates;
    phases.Contact += last.Seconds.Contact + last.Seconds.Containment;
    phases.OverlapArea += last.Seconds.OverlapArea;
    phases.Container += last.Seconds.Container;
  }
  const double total = phases.Total();
  State.counters["build%"] = 100.0 * phases.Build / total;
  State.counters["candidates%"] = 100.0 * phases.Candidates / total;
  State.counters["contact%"] = 100.0 * phases.Contact / total;
  State.counters["area%"] = 100.0 * phases.OverlapArea / total;
  State.counters["container%"] = 100.0 * phases.Container / total;
  State.counters["overlaps"] = last.OverlapPairs;
  State.counters["contained"] = static_cast<double>(last.ContainedParts.size());
  State.counters["outside"] = static_cast<double>(last.OutsideParts.size());
  State.counters["candidates"] = last.CandidatePairs;
  SetCounters(State, *layout);
}

void BM_Geos(benchmark::State& State, const std::string& Name) {
  const TLayout* layout = Load(Name, State);
  if (!layout) return;
  GEOSContextHandle_t h = GEOS_init_r();
  TGeosCounts c;
  for (auto _ : State) c = GeosCheck(h, *layout, {});
  GEOS_finish_r(h);
  // The same verdict and counts as ours, or the comparison means nothing.
  const TCheckReport ours = CheckLayout(*layout, {});
  if (c.Overlaps != ours.OverlapPairs || c.Contained != static_cast<int>(ours.ContainedParts.size()) ||
      c.Outside != static_cast<int>(ours.OutsideParts.size()) || c.Candidates != ours.CandidatePairs) {
    State.SkipWithError("GEOS and orvane disagree on the counts");
  }
  State.counters["overlaps"] = c.Overlaps;
  State.counters["contained"] = c.Contained;
  State.counters["outside"] = c.Outside;
  State.counters["candidates"] = c.Candidates;
  SetCounters(State, *layout);
}

void Register() {
  std::vector<std::string> names = {"sparrow_gardeyn3.json"};
  const std::string largest = LargestLayout();
  if (!largest.empty() && largest != names.front()) names.push_back(largest);
  for (const std::string& name : names) {
    benchmark::RegisterBenchmark(("Parse/" + name).c_str(), BM_Parse, name)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("Check/orvane/" + name).c_str(), BM_Orvane, name)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("Check/GEOS/" + name).c_str(), BM_Geos, name)->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
