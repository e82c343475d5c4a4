// The mainsheet (its outline with 203 circle holes and nine cut-outs) against 10^4 placed
// corner brackets, one overlap question per query, as a layout checker asks it:
//   ours:  TMLABHPolygon::Overlap, arcs kept exact (Tol 1e-6)
//   GEOS:  prepared geometry of the linearised mainsheet ->intersects(linearised bracket),
//          each arc cut into just enough chords for its sagitta to stay within Tol
//          (1e-2 and 1e-4 mm)
// Building each side's form is timed apart from the queries. Before anything is timed, the
// answers are compared: they may differ only where the linearisation moves a contact.
// A second mix asks about near misses, two per circle hole: does a disc inside the hole
// that comes within 1e-3 of its edge overlap the sheet (Overlap against prepared
// intersects), and does a disc in the material 1e-3 beyond its edge lie inside the sheet
// (Contains against prepared containsProperly).

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "orvane/mixed/LABPolylineList.h"
#include "orvane/monotone/MLABHPolygon.h"
#include "support/DxfOutlines.h"

namespace {

using namespace orvane;
namespace fs = std::filesystem;

constexpr int kBrackets = 10000;

using orvane::testing::Parts;
using orvane::testing::ReadOutlines;

TDynPoints2D Linearise(const TLABPolyline& P, double Sagitta) {
  TDynPoints2D out;
  for (const TLABSegline& s : P) {
    if (s.SegType != TSegType::stArc) {
      out.push_back(s.P1);
      continue;
    }
    const TArc2D a = s.ToArc();
    const double step = 2.0 * std::acos(1.0 - std::min(Sagitta / a.Radius, 1.0));
    const int n = std::max(2, static_cast<int>(std::ceil(std::abs(a.SweepAngle) / step)) + 1);
    TDynPoints2D pts;
    a.GetPoints(n, pts);
    out.insert(out.end(), pts.begin(), pts.end() - 1);
  }
  out.push_back(out.front());
  return out;
}

struct TWorld {
  std::unique_ptr<TLABHPolygon> Sheet;
  std::vector<std::unique_ptr<TLABHPolygon>> Brackets;  // placed
  std::vector<std::unique_ptr<TLABHPolygon>> Near;      // the near misses, the odd ones asked Contains
  bool Ok = false;
};

constexpr double kNearGap = 1e-3;

std::unique_ptr<TLABHPolygon> Disc(const TPoint2D& C, double R) {
  auto p = std::make_unique<TLABPolyline>();
  p->Add(TLABSegline::CreateArc(TPoint2D(C.X + R, C.Y), TPoint2D(C.X - R, C.Y), C, 1.0));
  p->Add(TLABSegline::CreateArc(TPoint2D(C.X - R, C.Y), TPoint2D(C.X + R, C.Y), C, 1.0));
  auto d = std::make_unique<TLABHPolygon>();
  d->Add(std::move(p));
  return d;
}

// For each hole that is one circle: a disc inside it, kNearGap from its edge, and a disc
// outside it, kNearGap beyond its edge, each in a direction of its own.
void AddNearMisses(TWorld& W, std::mt19937& Rng) {
  std::uniform_real_distribution<double> turn(0.0, 2.0 * std::numbers::pi);
  for (int k = 1; k < W.Sheet->Count(); ++k) {
    const TLABPolyline& hole = *(*W.Sheet)[k];
    if (hole.Count() == 0 || hole[0].SegType != TSegType::stArc) continue;
    const TPoint2D c = hole[0].P2;
    const double r = hole[0].P1.DistanceTo(c);
    bool circle = true;
    for (const TLABSegline& s : hole) circle = circle && s.SegType == TSegType::stArc && s.P2.Equals(c, 1e-9);
    if (!circle) continue;
    const double a = turn(Rng);
    const TPoint2D dir(std::cos(a), std::sin(a));
    const double inner = 0.8 * r;
    W.Near.push_back(Disc(c + dir * (r - inner - kNearGap), inner));
    const double outer = 0.5 * r;
    W.Near.push_back(Disc(c + dir * (r + outer + kNearGap), outer));
  }
}

const TWorld& World() {
  static TWorld w = [] {
    TWorld r;
    const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "curves";
    const fs::path sheetFile = dir / "laser4diy_mainsheet_x.dxf";
    const fs::path bracketFile = dir / "laser4diy_cornerbracket_8pcs_x.dxf";
    if (!fs::exists(sheetFile) || !fs::exists(bracketFile)) return r;
    auto sheets = Parts(ReadOutlines(sheetFile));
    auto brackets = Parts(ReadOutlines(bracketFile));
    r.Sheet = std::move(sheets[0]);
    const TRect2D sb = r.Sheet->First()->BoundBox();
    const TLABHPolygon& bracket = *brackets[0];
    const TRect2D bb = bracket.First()->BoundBox();
    std::mt19937 rng(25);
    std::uniform_real_distribution<double> mx(sb.XMin - bb.XMax, sb.XMax - bb.XMin);
    std::uniform_real_distribution<double> my(sb.YMin - bb.YMax, sb.YMax - bb.YMin);
    for (int k = 0; k < kBrackets; ++k) {
      const TPoint2D move(mx(rng), my(rng));
      auto placed = std::make_unique<TLABHPolygon>();
      for (const TLABPolyline* o : bracket) {
        auto c = o->CloneAs<TLABPolyline>();
        c->Translate(move);
        placed->Add(std::move(c));
      }
      r.Brackets.push_back(std::move(placed));
    }
    AddNearMisses(r, rng);
    r.Ok = true;
    return r;
  }();
  return w;
}

struct TOurs {
  std::unique_ptr<TMLABHPolygon> Sheet;
  std::vector<std::unique_ptr<TMLABHPolygon>> Brackets;
  std::vector<std::unique_ptr<TMLABHPolygon>> Near;
  explicit TOurs(const TWorld& W, bool WithNear = false) : Sheet(std::make_unique<TMLABHPolygon>(*W.Sheet, 1e-6)) {
    for (const auto& b : W.Brackets) Brackets.push_back(std::make_unique<TMLABHPolygon>(*b, 1e-6));
    if (WithNear)
      for (const auto& n : W.Near) Near.push_back(std::make_unique<TMLABHPolygon>(*n, 1e-6));
  }
  bool NearAnswer(std::size_t K) const { return K % 2 ? Sheet->Contains(*Near[K]) : Sheet->Overlap(*Near[K], 1e-6); }
};

GEOSGeometry* GeosPart(GEOSContextHandle_t H, const TLABHPolygon& Part, double Sagitta) {
  auto ring = [&](const TLABPolyline& P) {
    const TDynPoints2D pts = Linearise(P, Sagitta);
    GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(H, &pts[0].X, static_cast<unsigned>(pts.size()), 0, 0);
    return GEOSGeom_createLinearRing_r(H, seq);
  };
  std::vector<GEOSGeometry*> holes;
  for (int k = 1; k < Part.Count(); ++k) holes.push_back(ring(*Part[k]));
  return GEOSGeom_createPolygon_r(H, ring(*Part[0]), holes.data(), static_cast<unsigned>(holes.size()));
}

struct TGeosSide {
  GEOSContextHandle_t H = GEOS_init_r();
  GEOSGeometry* Sheet = nullptr;
  const GEOSPreparedGeometry* Prepared = nullptr;
  std::vector<GEOSGeometry*> Brackets;
  std::vector<GEOSGeometry*> Near;
  TGeosSide(const TWorld& W, double Sagitta) {
    Sheet = GeosPart(H, *W.Sheet, Sagitta);
    Prepared = GEOSPrepare_r(H, Sheet);
    for (const auto& b : W.Brackets) Brackets.push_back(GeosPart(H, *b, Sagitta));
    for (const auto& n : W.Near) Near.push_back(GeosPart(H, *n, Sagitta));
    // Prepared geometry builds its index lazily: one query so that it is built here.
    GEOSPreparedIntersects_r(H, Prepared, Brackets[0]);
  }
  bool NearAnswer(std::size_t K) const {
    return (K % 2 ? GEOSPreparedContainsProperly_r(H, Prepared, Near[K])
                  : GEOSPreparedIntersects_r(H, Prepared, Near[K])) == 1;
  }
  ~TGeosSide() {
    for (GEOSGeometry* g : Brackets) GEOSGeom_destroy_r(H, g);
    for (GEOSGeometry* g : Near) GEOSGeom_destroy_r(H, g);
    GEOSPreparedGeom_destroy_r(H, Prepared);
    GEOSGeom_destroy_r(H, Sheet);
    GEOS_finish_r(H);
  }
};

// Both sides agree, except where a contact lies within the linearisation's reach.
template <class FOurs, class FGeos>
bool Agree(const TGeosSide& G, std::size_t Count, const std::vector<GEOSGeometry*>& Queries, FOurs&& Ours, FGeos&& Geos,
           double Sagitta, std::string& Report) {
  int yes = 0;
  int differ = 0;
  int explained = 0;
  GEOSGeometry* edge = GEOSBoundary_r(G.H, G.Sheet);
  const GEOSPreparedGeometry* pEdge = GEOSPrepare_r(G.H, edge);
  for (std::size_t k = 0; k < Count; ++k) {
    const bool ours = Ours(k);
    yes += ours ? 1 : 0;
    if (ours == Geos(k)) continue;
    ++differ;
    GEOSGeometry* be = GEOSBoundary_r(G.H, Queries[k]);
    double d = 0.0;
    GEOSPreparedDistance_r(G.H, pEdge, be, &d);
    GEOSGeom_destroy_r(G.H, be);
    if (d <= 2.0 * Sagitta + 1e-6) ++explained;
  }
  GEOSPreparedGeom_destroy_r(G.H, pEdge);
  GEOSGeom_destroy_r(G.H, edge);
  char buf[200];
  std::snprintf(buf, sizeof buf, "tol %g: %d of %d yes; %d answers differ, %d of them within the chords' reach",
                Sagitta, yes, static_cast<int>(Count), differ, explained);
  Report = buf;
  return differ == explained;
}

void BM_Ours_Build(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  for (auto _ : State) {
    TOurs ours(World());
    benchmark::DoNotOptimize(ours.Sheet.get());
  }
}

void BM_Geos_Build(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  const double tol = State.range(0) == 2 ? 1e-2 : 1e-4;
  for (auto _ : State) {
    TGeosSide g(World(), tol);
    benchmark::DoNotOptimize(g.Prepared);
  }
}

void BM_Ours_Query(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  static const TOurs ours(World());
  std::size_t k = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(ours.Sheet->Overlap(*ours.Brackets[k], 1e-6));
    k = k + 1 == ours.Brackets.size() ? 0 : k + 1;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

void BM_Geos_Query(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  const double tol = State.range(0) == 2 ? 1e-2 : 1e-4;
  static const TOurs ours(World());
  const TGeosSide g(World(), tol);
  std::string report;
  const auto oursAnswer = [&](std::size_t K) { return ours.Sheet->Overlap(*ours.Brackets[K], 1e-6); };
  const auto geosAnswer = [&](std::size_t K) { return GEOSPreparedIntersects_r(g.H, g.Prepared, g.Brackets[K]) == 1; };
  if (!Agree(g, g.Brackets.size(), g.Brackets, oursAnswer, geosAnswer, tol, report)) {
    State.SkipWithError(("answers differ: " + report).c_str());
    return;
  }
  State.SetLabel(report);
  std::size_t k = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(GEOSPreparedIntersects_r(g.H, g.Prepared, g.Brackets[k]));
    k = k + 1 == g.Brackets.size() ? 0 : k + 1;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

// Near misses asked Overlap (argument 0: the discs inside holes) or Contains (1: the discs in
// the material), every second one of the list.
void BM_Ours_NearMiss(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  static const TOurs ours(World(), true);
  std::size_t k = static_cast<std::size_t>(State.range(0));
  for (auto _ : State) {
    benchmark::DoNotOptimize(ours.NearAnswer(k));
    k = k + 2 >= ours.Near.size() ? static_cast<std::size_t>(State.range(0)) : k + 2;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

void BM_Geos_NearMiss(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  const double tol = State.range(1) == 2 ? 1e-2 : 1e-4;
  static const TOurs ours(World(), true);
  const TGeosSide g(World(), tol);
  std::string report;
  const auto oursAnswer = [&](std::size_t K) { return ours.NearAnswer(K); };
  const auto geosAnswer = [&](std::size_t K) { return g.NearAnswer(K); };
  if (!Agree(g, g.Near.size(), g.Near, oursAnswer, geosAnswer, tol, report)) {
    State.SkipWithError(("answers differ: " + report).c_str());
    return;
  }
  State.SetLabel(report);
  std::size_t k = static_cast<std::size_t>(State.range(0));
  for (auto _ : State) {
    benchmark::DoNotOptimize(g.NearAnswer(k));
    k = k + 2 >= g.Near.size() ? static_cast<std::size_t>(State.range(0)) : k + 2;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

}  // namespace

BENCHMARK(BM_Ours_Build)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_Build)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Ours_Query)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Geos_Query)->Arg(2)->Arg(4)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Ours_NearMiss)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Geos_NearMiss)->Args({0, 2})->Args({0, 4})->Args({1, 2})->Args({1, 4})->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
