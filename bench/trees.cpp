// Structure from loose outlines, ours against GEOS in one run on the same inputs:
//   Tree build: TVPolyline2DTree from loose rings  vs  GEOSBuildArea of the same rings.
//   Queries:    TVPolyline2DTree::RelationWith     vs  GEOSCovers on the built area (and,
//               for reference, a prepared GEOSPreparedCovers).
//   Piles:      TMPolygonList::Merge               vs  a GEOS STRtree over the part boxes,
//               prepared boundaries (intersects, or distance within 1e-6 where the
//               layout's parts nearly touch) and a union-find.
// Inputs: the largest GEOS-valid leather hide of the Baldacci sets, synthetic hides of 10^2
// to 10^4 rings (a grid of defect holes, each with an island, in shuffled order), and the
// sparrow gardeyn3, gardeyn5 and ESICUP shirts layouts. Areas, point answers and piles are
// compared between the two sides before anything is timed; a disagreement stops the run.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/MHPolygon.h"
#include "orvane/monotone/MPolygonList.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "orvane/vertex/VPolyline2DTree.h"

namespace {

namespace fs = std::filesystem;
using orvane::TDynPoints2D;
using orvane::TPoint2D;
using orvane::TRect2D;

constexpr double Pi = 3.14159265358979323846;

GEOSContextHandle_t Ctx() {
  static GEOSContextHandle_t h = GEOS_init_r();
  return h;
}

[[noreturn]] void Fail(const std::string& What) {
  std::fprintf(stderr, "trees bench: %s\n", What.c_str());
  std::exit(1);
}

TDynPoints2D ReadRing(const nlohmann::json& Pts) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Pts) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  if (ring.front() != ring.back()) ring.push_back(ring.front());
  return ring;
}

GEOSGeometry* GeosRing(const TDynPoints2D& Pts) {
  GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(Ctx(), &Pts[0].X, static_cast<unsigned>(Pts.size()), 0, 0);
  return GEOSGeom_createLinearRing_r(Ctx(), seq);
}
GEOSGeometry* GeosLine(const TDynPoints2D& Pts) {
  GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(Ctx(), &Pts[0].X, static_cast<unsigned>(Pts.size()), 0, 0);
  return GEOSGeom_createLineString_r(Ctx(), seq);
}

// The loose rings of one hide, as both sides receive them.
struct THide {
  std::string Name;
  std::vector<TDynPoints2D> Rings;
  std::unique_ptr<orvane::TVPolyline2DList> Polylines;
  GEOSGeometry* Lines = nullptr;  // a multi-line-string of the rings, BuildArea's input
  std::vector<TPoint2D> Queries;
};

void Prepare(THide& H) {
  H.Polylines = std::make_unique<orvane::TVPolyline2DList>();
  std::vector<GEOSGeometry*> lines;
  for (const TDynPoints2D& r : H.Rings) {
    H.Polylines->Add(new orvane::TVPolyline2D(r));
    lines.push_back(GeosLine(r));
  }
  H.Lines = GEOSGeom_createCollection_r(Ctx(), GEOS_MULTILINESTRING, lines.data(), static_cast<unsigned>(lines.size()));
  TRect2D box = orvane::CalcAABB(H.Rings[0]);
  for (const TDynPoints2D& r : H.Rings) box.Extend(orvane::CalcAABB(r));
  std::mt19937 rng(1);
  std::uniform_real_distribution<double> ux(box.XMin, box.XMax), uy(box.YMin, box.YMax);
  for (int i = 0; i < 10000; ++i) H.Queries.emplace_back(ux(rng), uy(rng));
}

// The largest hide (by vertices) that GEOS takes as a valid polygon.
THide LargestHide() {
  THide best;
  std::size_t bestCount = 0;
  const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "outlines";
  if (!fs::is_directory(dir)) return best;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().filename().string().rfind("baldacci", 0) != 0) continue;
    std::ifstream in(entry.path());
    const nlohmann::json doc = nlohmann::json::parse(in);
    for (const nlohmann::json& bin : doc["bins"]) {
      std::vector<TDynPoints2D> rings{ReadRing(bin["outer"])};
      for (const auto& hole : bin["holes"]) rings.push_back(ReadRing(hole));
      std::size_t count = 0;
      for (const auto& r : rings) count += r.size();
      if (count <= bestCount) continue;
      std::vector<GEOSGeometry*> holes;
      for (std::size_t i = 1; i < rings.size(); ++i) holes.push_back(GeosRing(rings[i]));
      GEOSGeometry* poly =
          GEOSGeom_createPolygon_r(Ctx(), GeosRing(rings[0]), holes.data(), static_cast<unsigned>(holes.size()));
      const bool valid = GEOSisValid_r(Ctx(), poly) == 1;
      GEOSGeom_destroy_r(Ctx(), poly);
      if (!valid) continue;
      bestCount = count;
      best.Name = entry.path().stem().string() + " bin " + std::to_string(bin["id"].get<int>()) + " (" +
                  std::to_string(count) + " vertices, " + std::to_string(rings.size()) + " rings)";
      best.Rings = std::move(rings);
    }
  }
  return best;
}

TDynPoints2D Octagon(const TPoint2D& C, double R) {
  TDynPoints2D r;
  for (int k = 0; k <= 8; ++k) {
    const double a = (k % 8) * Pi / 4 + Pi / 8;
    r.emplace_back(C.X + R * std::cos(a), C.Y + R * std::sin(a));
  }
  return r;
}

// A square hide of G x G cells, each with an octagonal hole holding an octagonal island:
// 1 + 2 G^2 rings, given in shuffled order.
THide SyntheticHide(int G) {
  THide h;
  h.Name = "synthetic " + std::to_string(1 + 2 * G * G) + " rings";
  h.Rings.push_back({{0, 0}, {10.0 * G, 0}, {10.0 * G, 10.0 * G}, {0, 10.0 * G}, {0, 0}});
  for (int i = 0; i < G; ++i)
    for (int j = 0; j < G; ++j) {
      const TPoint2D c(10.0 * i + 5, 10.0 * j + 5);
      h.Rings.push_back(Octagon(c, 4));
      h.Rings.push_back(Octagon(c, 2));
    }
  std::mt19937 rng(static_cast<unsigned>(G));
  std::shuffle(h.Rings.begin(), h.Rings.end(), rng);
  return h;
}

std::map<int, THide>& Hides() {
  static std::map<int, THide> hides;
  return hides;
}

// Both sides on one hide: areas equal, and every query point answers alike (points within
// 1e-6 of a boundary skipped).
void CrossCheck(THide& H) {
  orvane::TVPolyline2DTree tree(*H.Polylines);
  auto polygons = tree.CreateHPolygons();
  double ours = 0.0;
  for (const orvane::TVHPolygon* p : *polygons) ours += p->Area();
  GEOSGeometry* area = GEOSBuildArea_r(Ctx(), H.Lines);
  double theirs = 0.0;
  GEOSArea_r(Ctx(), area, &theirs);
  if (std::fabs(ours - theirs) > 1e-9 * theirs) Fail(H.Name + ": areas differ");
  // Prepared: the same answers as GEOSCovers, fast enough to check every point.
  const GEOSPreparedGeometry* prep = GEOSPrepare_r(Ctx(), area);
  for (const TPoint2D& p : H.Queries) {
    const int r = tree.RelationWith(p);
    if (r == 0) continue;
    GEOSGeometry* g = GEOSGeom_createPointFromXY_r(Ctx(), p.X, p.Y);
    const bool covered = GEOSPreparedCovers_r(Ctx(), prep, g) == 1;
    GEOSGeom_destroy_r(Ctx(), g);
    if (covered != (r == 1)) Fail(H.Name + ": point answers differ at " + p.ToString());
  }
  GEOSPreparedGeom_destroy_r(Ctx(), prep);
  GEOSGeom_destroy_r(Ctx(), area);
}

THide& HideFor(const benchmark::State& State) {
  THide& h = Hides()[static_cast<int>(State.range(0))];
  return h;
}

void BM_TreeBuild_Orvane(benchmark::State& State) {
  THide& h = HideFor(State);
  for (auto _ : State) {
    orvane::TVPolyline2DTree tree(*h.Polylines);
    benchmark::DoNotOptimize(tree.GetRoot());
  }
  State.SetLabel(h.Name);
}

void BM_TreeBuild_GeosBuildArea(benchmark::State& State) {
  THide& h = HideFor(State);
  for (auto _ : State) {
    GEOSGeometry* area = GEOSBuildArea_r(Ctx(), h.Lines);
    benchmark::DoNotOptimize(area);
    GEOSGeom_destroy_r(Ctx(), area);
  }
  State.SetLabel(h.Name);
}

void BM_Relation_Orvane(benchmark::State& State) {
  THide& h = HideFor(State);
  orvane::TVPolyline2DTree tree(*h.Polylines);
  std::size_t i = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(tree.RelationWith(h.Queries[i]));
    i = (i + 1) % h.Queries.size();
  }
  State.SetLabel(h.Name);
}

void BM_Relation_GeosCovers(benchmark::State& State) {
  THide& h = HideFor(State);
  GEOSGeometry* area = GEOSBuildArea_r(Ctx(), h.Lines);
  std::vector<GEOSGeometry*> points;
  for (const TPoint2D& p : h.Queries) points.push_back(GEOSGeom_createPointFromXY_r(Ctx(), p.X, p.Y));
  std::size_t i = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(GEOSCovers_r(Ctx(), area, points[i]));
    i = (i + 1) % points.size();
  }
  for (GEOSGeometry* g : points) GEOSGeom_destroy_r(Ctx(), g);
  GEOSGeom_destroy_r(Ctx(), area);
  State.SetLabel(h.Name);
}

void BM_Relation_GeosPreparedCovers(benchmark::State& State) {
  THide& h = HideFor(State);
  GEOSGeometry* area = GEOSBuildArea_r(Ctx(), h.Lines);
  const GEOSPreparedGeometry* prep = GEOSPrepare_r(Ctx(), area);
  std::vector<GEOSGeometry*> points;
  for (const TPoint2D& p : h.Queries) points.push_back(GEOSGeom_createPointFromXY_r(Ctx(), p.X, p.Y));
  std::size_t i = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(GEOSPreparedCovers_r(Ctx(), prep, points[i]));
    i = (i + 1) % points.size();
  }
  for (GEOSGeometry* g : points) GEOSGeom_destroy_r(Ctx(), g);
  GEOSPreparedGeom_destroy_r(Ctx(), prep);
  GEOSGeom_destroy_r(Ctx(), area);
  State.SetLabel(h.Name);
}

// Piles -------------------------------------------------------------------------------

struct TLayout {
  std::string Name;
  std::vector<TDynPoints2D> Rings;
  std::unique_ptr<orvane::TMPolygonList> Polygons;
  std::vector<GEOSGeometry*> Boundaries;
  std::vector<const GEOSPreparedGeometry*> Prepared;
  std::vector<GEOSGeometry*> Envelopes;  // boxes grown by 1e-6
  bool NearlyTouching = false;           // contact within 1e-6 rather than exact
};

std::vector<TLayout>& Layouts() {
  static std::vector<TLayout> layouts;
  return layouts;
}

bool LoadLayout(const char* File, const char* Name, TLayout& L) {
  const fs::path path = fs::path(ORVANE_SHARED_DATA_DIR) / "layouts" / File;
  if (!fs::exists(path)) return false;
  std::ifstream in(path);
  const nlohmann::json doc = nlohmann::json::parse(in);
  const nlohmann::json& placements = doc.contains("placements") ? doc["placements"] : doc["solutions"][0]["placements"];
  L.Name = Name;
  L.Polygons = std::make_unique<orvane::TMPolygonList>();
  for (const auto& p : placements) {
    L.Rings.push_back(ReadRing(p["placed"]));
    const TDynPoints2D& r = L.Rings.back();
    L.Polygons->Add(std::make_unique<orvane::TMPolygon>(orvane::TVPolyline2D(r), nullptr));
    L.Boundaries.push_back(GeosRing(r));
    L.Prepared.push_back(GEOSPrepare_r(Ctx(), L.Boundaries.back()));
    const TRect2D b = orvane::CalcAABB(r).InflatedRect(1e-6, 1e-6);
    L.Envelopes.push_back(GEOSGeom_createRectangle_r(Ctx(), b.XMin, b.YMin, b.XMax, b.YMax));
  }
  return true;
}

int Find(std::vector<int>& Parent, int X) {
  while (Parent[static_cast<std::size_t>(X)] != X) {
    Parent[static_cast<std::size_t>(X)] = Parent[static_cast<std::size_t>(Parent[static_cast<std::size_t>(X)])];
    X = Parent[static_cast<std::size_t>(X)];
  }
  return X;
}

// GEOS's side: an STRtree over the grown boxes, each part's candidates tested by its
// prepared boundary, joined by a union-find. Answers the number of piles.
int GeosPiles(const TLayout& L, bool WithinTol, std::vector<int>& Parent) {
  const int n = static_cast<int>(L.Rings.size());
  Parent.resize(static_cast<std::size_t>(n));
  std::iota(Parent.begin(), Parent.end(), 0);
  GEOSSTRtree* tree = GEOSSTRtree_create_r(Ctx(), 10);
  std::vector<int> ids(static_cast<std::size_t>(n));
  std::iota(ids.begin(), ids.end(), 0);
  for (int i = 0; i < n; ++i) GEOSSTRtree_insert_r(Ctx(), tree, L.Envelopes[static_cast<std::size_t>(i)], &ids[static_cast<std::size_t>(i)]);
  struct TVisit {
    const TLayout* L;
    std::vector<int>* Parent;
    int I;
    bool WithinTol;
  } visit{&L, &Parent, 0, WithinTol};
  int piles = n;
  for (int i = 0; i < n; ++i) {
    visit.I = i;
    GEOSSTRtree_query_r(
        Ctx(), tree, L.Envelopes[static_cast<std::size_t>(i)],
        [](void* Item, void* Data) {
          auto* v = static_cast<TVisit*>(Data);
          const int j = *static_cast<int*>(Item);
          if (j <= v->I) return;
          const int a = Find(*v->Parent, v->I), b = Find(*v->Parent, j);
          if (a == b) return;
          const auto& prep = v->L->Prepared[static_cast<std::size_t>(v->I)];
          const auto& other = v->L->Boundaries[static_cast<std::size_t>(j)];
          const bool touch = v->WithinTol ? GEOSPreparedDistanceWithin_r(Ctx(), prep, other, 1e-6) == 1
                                          : GEOSPreparedIntersects_r(Ctx(), prep, other) == 1;
          if (touch) (*v->Parent)[static_cast<std::size_t>(a)] = b;
        },
        &visit);
  }
  GEOSSTRtree_destroy_r(Ctx(), tree);
  piles = 0;
  for (int i = 0; i < n; ++i) piles += Find(Parent, i) == i ? 1 : 0;
  return piles;
}

// Both sides give the same piles; a layout whose parts only nearly touch is compared with
// GEOS's distance test, and exact intersects is then timed for reference only.
void CheckPiles(TLayout& L) {
  orvane::TMPolyline2DsList heaps;
  L.Polygons->Merge(heaps);
  std::vector<int> parent;
  const int exact = GeosPiles(L, false, parent);
  const int within = GeosPiles(L, true, parent);
  L.NearlyTouching = exact != within;
  if (within != heaps.Count()) Fail(L.Name + ": pile counts differ");
  std::map<const orvane::TMPolygon*, int> index;
  for (int i = 0; i < L.Polygons->Count(); ++i) index[(*L.Polygons)[i]] = i;
  for (const orvane::TMPolygonList* pile : heaps) {
    const int root = Find(parent, index[pile->First()]);
    for (const orvane::TMPolygon* p : *pile)
      if (Find(parent, index[p]) != root) Fail(L.Name + ": piles differ");
  }
  std::printf("%s: %d parts, %d piles (GEOS exact intersects: %d piles)\n", L.Name.c_str(), L.Polygons->Count(),
              heaps.Count(), exact);
}

void BM_Merge_Orvane(benchmark::State& State) {
  TLayout& l = Layouts()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    orvane::TMPolyline2DsList heaps;  // freed each round, which clears the links again
    l.Polygons->Merge(heaps);
    benchmark::DoNotOptimize(heaps.Count());
  }
  State.SetLabel(l.Name);
}

void BM_Merge_GeosSTRtree(benchmark::State& State) {
  TLayout& l = Layouts()[static_cast<std::size_t>(State.range(0))];
  const bool within = State.range(1) != 0;
  std::vector<int> parent;
  for (auto _ : State) benchmark::DoNotOptimize(GeosPiles(l, within, parent));
  State.SetLabel(l.Name + (within ? " (distance within 1e-6)" : " (intersects)"));
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  THide largest = LargestHide();
  const int synthetic[] = {7, 22, 70};  // 99, 969 and 9801 rings
  if (!largest.Rings.empty()) Hides()[0] = std::move(largest);
  for (const int g : synthetic) Hides()[g] = SyntheticHide(g);
  for (auto& [key, hide] : Hides()) {
    Prepare(hide);
    CrossCheck(hide);
    std::printf("checked %s\n", hide.Name.c_str());
  }
  for (auto& [key, hide] : Hides()) {
    const int k = key;
    benchmark::RegisterBenchmark("TreeBuild/Orvane", BM_TreeBuild_Orvane)->Arg(k)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("TreeBuild/GeosBuildArea", BM_TreeBuild_GeosBuildArea)
        ->Arg(k)
        ->Unit(benchmark::kMicrosecond);
  }
  for (auto& [key, hide] : Hides()) {
    const int k = key;
    benchmark::RegisterBenchmark("RelationWith/Orvane", BM_Relation_Orvane)->Arg(k);
    benchmark::RegisterBenchmark("RelationWith/GeosCovers", BM_Relation_GeosCovers)->Arg(k);
    benchmark::RegisterBenchmark("RelationWith/GeosPreparedCovers", BM_Relation_GeosPreparedCovers)->Arg(k);
  }

  const std::pair<const char*, const char*> layouts[] = {{"sparrow_gardeyn3.json", "gardeyn3"},
                                                         {"sparrow_gardeyn5.json", "gardeyn5"},
                                                         {"esicup_shirts.json", "shirts (GLSHA)"}};
  for (const auto& [file, name] : layouts) {
    TLayout l;
    if (!LoadLayout(file, name, l)) continue;
    CheckPiles(l);
    Layouts().push_back(std::move(l));
  }
  for (std::size_t i = 0; i < Layouts().size(); ++i) {
    const auto k = static_cast<int64_t>(i);
    benchmark::RegisterBenchmark("Merge/Orvane", BM_Merge_Orvane)->Arg(k)->Unit(benchmark::kMicrosecond);
    if (Layouts()[i].NearlyTouching)
      benchmark::RegisterBenchmark("Merge/GeosSTRtree", BM_Merge_GeosSTRtree)->Args({k, 1})->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("Merge/GeosSTRtree", BM_Merge_GeosSTRtree)->Args({k, 0})->Unit(benchmark::kMicrosecond);
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
