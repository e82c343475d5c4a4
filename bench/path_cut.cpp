// Cutting segments by a ring against the overlay a host would use instead: 10^3 segments
// lying on the outer ring of the largest Baldacci bin (1,883 vertices), each an edge of the
// ring, every other one run backwards.
//
//   CutByPaths({ring}, segment, 1e-5)  vs  GEOSIntersection(segment, ring)
//
// GEOS gets the same coordinates (integer units / 1e5), on which every segment lies exactly
// on the ring. Before timing, the two are checked to give the same common length for every
// segment.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orvane/paths/PathUtils.h"

namespace {

using namespace orvane;
namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& What) {
  std::fprintf(stderr, "path_cut: %s\n", What.c_str());
  std::exit(1);
}

GEOSContextHandle_t Geos() {
  static const GEOSContextHandle_t h = GEOS_init_r();
  return h;
}

GEOSGeometry* GeosLine(const TPath64& Path, bool Ring) {
  const std::size_t n = Path.size() + (Ring ? 1 : 0);
  GEOSCoordSequence* seq = GEOSCoordSeq_create_r(Geos(), static_cast<unsigned>(n), 2);
  for (std::size_t k = 0; k < n; ++k) {
    const TPoint64& p = Path[k % Path.size()];
    GEOSCoordSeq_setXY_r(Geos(), seq, static_cast<unsigned>(k), static_cast<double>(p.X) / 1e5,
                         static_cast<double>(p.Y) / 1e5);
  }
  return Ring ? GEOSGeom_createLinearRing_r(Geos(), seq) : GEOSGeom_createLineString_r(Geos(), seq);
}

double PieceLength(const TPaths64& Pieces) {
  double len = 0;
  for (const TPath64& p : Pieces)
    for (std::size_t i = 0; i + 1 < p.size(); ++i)
      len += std::hypot(static_cast<double>(p[i + 1].X - p[i].X), static_cast<double>(p[i + 1].Y - p[i].Y)) / 1e5;
  return len;
}

struct TCase {
  TPaths64 Scissors;
  std::vector<TPath64> Segments;
  GEOSGeometry* Ring = nullptr;
  std::vector<GEOSGeometry*> GeosSegments;
  double Length = 0;
};

const TCase& Case() {
  static const TCase c = [] {
    TCase r;
    const fs::path file = fs::path(ORVANE_SHARED_DATA_DIR) / "outlines" / "baldacci_test3.json";
    std::ifstream in(file);
    if (!in) Fail("cannot read " + file.string() + " (shared data missing?)");
    const nlohmann::json doc = nlohmann::json::parse(in);
    TDynPoints2D best;
    for (const nlohmann::json& bin : doc["bins"]) {
      TDynPoints2D ring;
      for (const nlohmann::json& xy : bin["outer"]) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
      if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
      if (ring.size() > best.size()) best = ring;
    }
    const TPath64 ring = TPathUtils::CreatePath(best, PathWorkingRate);
    r.Scissors = {ring};
    r.Ring = GeosLine(ring, true);
    std::mt19937_64 rng(5);
    for (int i = 0; i < 1000; ++i) {
      const std::size_t k = rng() % ring.size();
      TPath64 seg{ring[k], ring[(k + 1) % ring.size()]};
      if (i % 2 == 1) TPathUtils::Reverse(seg);
      r.Segments.push_back(seg);
      r.GeosSegments.push_back(GeosLine(seg, false));
    }
    // Same answers: the common length of each segment with the ring.
    for (std::size_t i = 0; i < r.Segments.size(); ++i) {
      const double ours = PieceLength(TPathUtils::CutByPaths(r.Scissors, r.Segments[i], 1e-5));
      GEOSGeometry* common = GEOSIntersection_r(Geos(), r.GeosSegments[i], r.Ring);
      double theirs = 0;
      GEOSLength_r(Geos(), common, &theirs);
      GEOSGeom_destroy_r(Geos(), common);
      if (std::fabs(ours - theirs) > 1e-9 * (1 + theirs))
        Fail("segment " + std::to_string(i) + ": " + std::to_string(ours) + " vs GEOS " + std::to_string(theirs));
      r.Length += ours;
    }
    return r;
  }();
  return c;
}

void Label(benchmark::State& State) {
  State.SetLabel(std::to_string(Case().Segments.size()) + " segments on a ring of " +
                 std::to_string(Case().Scissors[0].size()) + " vertices");
}

void BM_CutByPaths_Orvane(benchmark::State& State) {
  const TCase& c = Case();
  for (auto _ : State)
    for (const TPath64& seg : c.Segments) benchmark::DoNotOptimize(TPathUtils::CutByPaths(c.Scissors, seg, 1e-5));
  Label(State);
}

void BM_Intersection_Geos(benchmark::State& State) {
  const TCase& c = Case();
  for (auto _ : State) {
    for (GEOSGeometry* seg : c.GeosSegments) {
      GEOSGeometry* common = GEOSIntersection_r(Geos(), seg, c.Ring);
      benchmark::DoNotOptimize(common);
      GEOSGeom_destroy_r(Geos(), common);
    }
  }
  Label(State);
}

BENCHMARK(BM_CutByPaths_Orvane)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Intersection_Geos)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
