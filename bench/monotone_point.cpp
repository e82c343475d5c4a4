// Point location in one outline, asked many times: TMPolygon->PointIsIn against GEOS
// prepared contains (C API; the point geometry is made per query, as a host holding plain
// coordinates must). Outlines: a star of 10^4 corners with random radii (thousands of short
// chains) and the largest real part outlines of the nesting benchmarks. Queries: points
// spread over the outline's box, a fixed seed. Both libraries' answers are compared before
// anything is timed (the boundary counts as outside for contains; points within 1e-6 of an
// edge, which random points practically never are, are left out of the comparison).

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/vertex/VPolyline2D.h"

namespace {

namespace fs = std::filesystem;
using orvane::TDynPoints2D;
using orvane::TPoint2D;

constexpr int kQueries = 4096;

// Counter-clockwise, closed: vertices at increasing angles with radii between 1 and 10.
TDynPoints2D RandomStar(int Corners, unsigned Seed) {
  std::mt19937 rng(Seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.8 * unit(rng)) * orvane::TwoPi / Corners;
    const double r = 1.0 + 9.0 * unit(rng);
    pts.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  pts.push_back(pts.front());
  return pts;
}

// The largest outlines of the data set by vertex count, closed.
std::vector<std::pair<std::string, TDynPoints2D>> LargestOutlines(std::size_t Count) {
  std::vector<std::pair<std::string, TDynPoints2D>> all;
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "outlines";
  if (!fs::is_directory(dir)) return all;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() != ".json") continue;
    std::ifstream in(entry.path());
    const nlohmann::json doc = nlohmann::json::parse(in);
    for (const nlohmann::json& part : doc["parts"]) {
      TDynPoints2D ring;
      for (const nlohmann::json& xy : part["outer"]) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
      if (ring.size() < 3) continue;
      if (ring.front() != ring.back()) ring.push_back(ring.front());
      all.emplace_back(entry.path().stem().string() + "/" + part["id"].dump(), std::move(ring));
    }
  }
  std::stable_sort(all.begin(), all.end(), [](const auto& A, const auto& B) {
    return A.second.size() != B.second.size() ? A.second.size() > B.second.size() : A.first < B.first;
  });
  if (all.size() > Count) all.resize(Count);
  return all;
}

std::vector<TPoint2D> Queries(const TDynPoints2D& Ring, unsigned Seed) {
  const orvane::TRect2D box = orvane::CalcAABB(Ring);
  std::mt19937 rng(Seed);
  std::uniform_real_distribution<double> x(box.XMin, box.XMax), y(box.YMin, box.YMax);
  std::vector<TPoint2D> q;
  for (int k = 0; k < kQueries; ++k) q.emplace_back(x(rng), y(rng));
  return q;
}

// GEOS's forms of one outline: the polygon and its prepared geometry.
struct TGeosShape {
  GEOSContextHandle_t H;
  GEOSGeometry* Poly = nullptr;
  const GEOSPreparedGeometry* Prepared = nullptr;
  TGeosShape(GEOSContextHandle_t AH, const TDynPoints2D& Ring) : H(AH) {
    GEOSCoordSequence* seq = GEOSCoordSeq_create_r(H, static_cast<unsigned>(Ring.size()), 2);
    for (std::size_t k = 0; k < Ring.size(); ++k) GEOSCoordSeq_setXY_r(H, seq, static_cast<unsigned>(k), Ring[k].X, Ring[k].Y);
    Poly = GEOSGeom_createPolygon_r(H, GEOSGeom_createLinearRing_r(H, seq), nullptr, 0);
    Prepared = GEOSPrepare_r(H, Poly);
  }
  ~TGeosShape() {
    GEOSPreparedGeom_destroy_r(H, Prepared);
    GEOSGeom_destroy_r(H, Poly);
  }
  TGeosShape(const TGeosShape&) = delete;
  TGeosShape& operator=(const TGeosShape&) = delete;
  bool Contains(const TPoint2D& P) const {
    GEOSGeometry* pt = GEOSGeom_createPointFromXY_r(H, P.X, P.Y);
    const bool in = GEOSPreparedContains_r(H, Prepared, pt) == 1;
    GEOSGeom_destroy_r(H, pt);
    return in;
  }
  double Distance(const TPoint2D& P) const {
    GEOSGeometry* pt = GEOSGeom_createPointFromXY_r(H, P.X, P.Y);
    double d = 0.0;
    GEOSDistance_r(H, GEOSGetExteriorRing_r(H, Poly), pt, &d);
    GEOSGeom_destroy_r(H, pt);
    return d;
  }
};

struct TCase {
  std::string Name;
  TDynPoints2D Ring;
  std::vector<TPoint2D> Points;
  int Insiders = 0;
  bool Agree = true;
};

void BM_Orvane(benchmark::State& State, const TCase* C) {
  // Built once, as a host keeps its polygons; the first query builds the index.
  const orvane::TMPolygon poly(orvane::TVPolyline2D(C->Ring), nullptr);
  int inside = 0;
  for (auto _ : State) {
    inside = 0;
    for (const TPoint2D& p : C->Points) inside += poly.PointIsIn(p) == 1;
    benchmark::DoNotOptimize(inside);
  }
  if (!C->Agree) State.SkipWithError("GEOS and orvane disagree");
  State.SetItemsProcessed(State.iterations() * kQueries);
  State.counters["chains"] = poly.Count();
  State.counters["vertices"] = static_cast<double>(C->Ring.size() - 1);
  State.counters["inside"] = inside;
}

void BM_Geos(benchmark::State& State, const TCase* C) {
  GEOSContextHandle_t h = GEOS_init_r();
  {
    const TGeosShape shape(h, C->Ring);
    int inside = 0;
    for (auto _ : State) {
      inside = 0;
      for (const TPoint2D& p : C->Points) inside += shape.Contains(p);
      benchmark::DoNotOptimize(inside);
    }
    if (!C->Agree) State.SkipWithError("GEOS and orvane disagree");
    State.SetItemsProcessed(State.iterations() * kQueries);
    State.counters["vertices"] = static_cast<double>(C->Ring.size() - 1);
    State.counters["inside"] = inside;
  }
  GEOS_finish_r(h);
}

// Both answers for every query; a point within the tolerance of an edge is not compared.
void CrossCheck(TCase& C) {
  GEOSContextHandle_t h = GEOS_init_r();
  {
    const TGeosShape shape(h, C.Ring);
    const orvane::TMPolygon poly(orvane::TVPolyline2D(C.Ring), nullptr);
    for (const TPoint2D& p : C.Points) {
      const int ours = poly.PointIsIn(p);
      const bool theirs = shape.Contains(p);
      if ((ours == 1) != theirs && shape.Distance(p) > 1e-6) C.Agree = false;
    }
  }
  GEOS_finish_r(h);
}

std::vector<TCase>& Cases() {
  static std::vector<TCase> cases;
  return cases;
}

void Register() {
  std::vector<TCase>& cases = Cases();
  cases.push_back({"star10000", RandomStar(10000, 2024), {}, 0, true});
  for (auto& [name, ring] : LargestOutlines(3)) cases.push_back({name, std::move(ring), {}, 0, true});
  for (std::size_t k = 0; k < cases.size(); ++k) {
    cases[k].Points = Queries(cases[k].Ring, 77 + static_cast<unsigned>(k));
    CrossCheck(cases[k]);
  }
  for (const TCase& c : cases) {
    benchmark::RegisterBenchmark(("PointIsIn/orvane/" + c.Name).c_str(), BM_Orvane, &c)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("PreparedContains/GEOS/" + c.Name).c_str(), BM_Geos, &c)
        ->Unit(benchmark::kMicrosecond);
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
