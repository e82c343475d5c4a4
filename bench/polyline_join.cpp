// Joining loose segments into closed contours, side by side with GEOS's line merger on the
// same input in the same run:
//
//   ours:  TVPolyline2DList::ConnectPolylines(1e-6) on a list of two-vertex polylines
//   GEOS:  GEOSLineMerge_r on a MultiLineString of the same segments (it merges at nodes
//          that coincide exactly, so the segments share their ends exactly)
//
// Inputs, each shuffled with about half the segments turned round:
//   Rings/n     n segments from closed star-shaped rings of 20 to 200 segments, side by side
//   OneRing/n   a single closed ring of n segments, so that one chain takes every join
//   Perturbed/n the rings with every segment end moved by up to 3e-7, within the tolerance
//               (ours only: GEOS has no tolerance)
//
// n runs from 10^3 to 10^5 and Google Benchmark fits the time to n log n (the BigO and RMS
// rows): the fit stays tight only if no step of the joining is quadratic. Building the input
// is not timed (ours builds a fresh list per iteration, GEOS builds its geometry once); freeing
// the results is. Before anything is timed, both answers are checked: as many contours as
// rings, every one closed.
//
// glibc gives large freed blocks back to the system until its adaptive mmap threshold has
// grown past them, so whichever sizes run first would pay fresh pages on every call (a few
// milliseconds at 10^4 pieces on a virtual machine) and later ones not. main fixes the
// thresholds, so that every run of either library meets the same allocator.

#include <benchmark/benchmark.h>
#include <geos_c.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace {

using orvane::TDynPoints2D;
using orvane::TPoint2D;
using orvane::TVPolyline2D;
using orvane::TVPolyline2DList;

constexpr double Tol = 1e-6;

struct TInput {
  std::vector<std::pair<TPoint2D, TPoint2D>> Segments;
  int Rings = 0;
};

// A star-shaped ring of N vertices round C (simple by construction).
TDynPoints2D StarRing(std::mt19937_64& Rng, int N, const TPoint2D& C, double R) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D ring;
  for (int i = 0; i < N; ++i) {
    const double a = (i + 0.8 * unit(Rng)) * orvane::TwoPi / N;
    ring.push_back(C + TPoint2D(std::cos(a), std::sin(a)) * (R * (0.5 + 0.5 * unit(Rng))));
  }
  return ring;
}

TInput MakeInput(int N, bool OneRing, bool Perturbed) {
  std::mt19937_64 rng(0x5e9 + static_cast<unsigned>(N) * 2 + (OneRing ? 1 : 0));
  std::uniform_int_distribution<int> ringSize(20, 200);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TInput input;
  for (int used = 0, k = 0; used < N; ++k) {
    const int n = OneRing ? N : std::min(N - used, ringSize(rng));
    if (n < 3) break;
    const TDynPoints2D ring = StarRing(rng, n, TPoint2D(30.0 * (k % 300), 30.0 * (k / 300)), 10);
    for (int i = 0; i < n; ++i) {
      TPoint2D a = ring[static_cast<std::size_t>(i)];
      TPoint2D b = ring[static_cast<std::size_t>((i + 1) % n)];
      if (Perturbed) {
        a += TPoint2D(unit(rng) - 0.5, unit(rng) - 0.5) * 4e-7;
        b += TPoint2D(unit(rng) - 0.5, unit(rng) - 0.5) * 4e-7;
      }
      if (unit(rng) < 0.5) std::swap(a, b);
      input.Segments.emplace_back(a, b);
    }
    used += n;
    ++input.Rings;
  }
  std::shuffle(input.Segments.begin(), input.Segments.end(), rng);
  return input;
}

std::unique_ptr<TVPolyline2DList> MakeList(const TInput& Input) {
  auto list = std::make_unique<TVPolyline2DList>(true);
  list->SetCapacity(static_cast<int>(Input.Segments.size()));
  for (const auto& [a, b] : Input.Segments) list->Add(std::make_unique<TVPolyline2D>(TDynPoints2D{a, b}));
  return list;
}

void CheckOurs(const TVPolyline2DList& List, const TInput& Input) {
  if (List.Count() != Input.Rings) throw std::runtime_error("ConnectPolylines: wrong number of contours");
  for (const TVPolyline2D* p : List) {
    if (p->Count() < 4 || !p->IsClosed(Tol)) throw std::runtime_error("ConnectPolylines: a contour is not closed");
  }
}

class TGeos {
 public:
  explicit TGeos(const TInput& Input) : FCtx(GEOS_init_r()) {
    std::vector<GEOSGeometry*> lines;
    for (const auto& [a, b] : Input.Segments) {
      GEOSCoordSequence* seq = GEOSCoordSeq_create_r(FCtx, 2, 2);
      GEOSCoordSeq_setXY_r(FCtx, seq, 0, a.X, a.Y);
      GEOSCoordSeq_setXY_r(FCtx, seq, 1, b.X, b.Y);
      lines.push_back(GEOSGeom_createLineString_r(FCtx, seq));
    }
    FLines = GEOSGeom_createCollection_r(FCtx, GEOS_MULTILINESTRING, lines.data(), static_cast<unsigned>(lines.size()));
  }
  ~TGeos() {
    GEOSGeom_destroy_r(FCtx, FLines);
    GEOS_finish_r(FCtx);
  }
  TGeos(const TGeos&) = delete;
  TGeos& operator=(const TGeos&) = delete;

  GEOSGeometry* Merge() const { return GEOSLineMerge_r(FCtx, FLines); }
  void Free(GEOSGeometry* G) const { GEOSGeom_destroy_r(FCtx, G); }
  void Check(const GEOSGeometry* Merged, const TInput& Input) const {
    if (GEOSGetNumGeometries_r(FCtx, Merged) != Input.Rings) throw std::runtime_error("GEOS: wrong number of contours");
    for (int i = 0; i < Input.Rings; ++i) {
      if (GEOSisClosed_r(FCtx, GEOSGetGeometryN_r(FCtx, Merged, i)) != 1) {
        throw std::runtime_error("GEOS: a contour is not closed");
      }
    }
  }

 private:
  GEOSContextHandle_t FCtx;
  GEOSGeometry* FLines;
};

void Ours(benchmark::State& State, bool OneRing, bool Perturbed) {
  const int n = static_cast<int>(State.range(0));
  const TInput input = MakeInput(n, OneRing, Perturbed);
  {
    auto list = MakeList(input);
    list->ConnectPolylines(Tol);
    CheckOurs(*list, input);
  }
  for (auto _ : State) {
    State.PauseTiming();
    auto list = MakeList(input);
    State.ResumeTiming();
    list->ConnectPolylines(Tol);
    list.reset();
  }
  State.SetComplexityN(n);
  State.counters["contours"] = input.Rings;
}

void Geos(benchmark::State& State, bool OneRing) {
  const int n = static_cast<int>(State.range(0));
  const TInput input = MakeInput(n, OneRing, false);
  const TGeos geos(input);
  GEOSGeometry* merged = geos.Merge();
  geos.Check(merged, input);
  geos.Free(merged);
  for (auto _ : State) {
    merged = geos.Merge();
    benchmark::DoNotOptimize(merged);
    geos.Free(merged);
  }
  State.SetComplexityN(n);
  State.counters["contours"] = input.Rings;
}

void BM_Orvane_Rings(benchmark::State& State) { Ours(State, false, false); }
void BM_Geos_Rings(benchmark::State& State) { Geos(State, false); }
void BM_Orvane_OneRing(benchmark::State& State) { Ours(State, true, false); }
void BM_Geos_OneRing(benchmark::State& State) { Geos(State, true); }
void BM_Orvane_Perturbed(benchmark::State& State) { Ours(State, false, true); }

void Sizes(benchmark::internal::Benchmark* B) {
  B->RangeMultiplier(10)->Range(1000, 100000)->Arg(30000)->Arg(3000);
  B->Unit(benchmark::kMillisecond)->Complexity(benchmark::oNLogN);
}

}  // namespace

BENCHMARK(BM_Orvane_Rings)->Apply(Sizes);
BENCHMARK(BM_Geos_Rings)->Apply(Sizes);
BENCHMARK(BM_Orvane_OneRing)->Apply(Sizes);
BENCHMARK(BM_Geos_OneRing)->Apply(Sizes);
BENCHMARK(BM_Orvane_Perturbed)->Apply(Sizes);

int main(int argc, char** argv) {
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
