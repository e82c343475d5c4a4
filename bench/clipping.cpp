// Union and intersection of two sets of 10^4 random polygons: through the kernel's Clipper
// layer (TPaths64 in, TPaths64 out) and through bare polyclipping on the same input in its own
// path type. The layer's cost is the conversion in and out and its input checks.

#include <benchmark/benchmark.h>

#include <chrono>
#include <clipper.hpp>
#include <cmath>
#include <numbers>
#include <random>

#include "orvane/paths/clipping/Clipper.h"

namespace {

using namespace orvane;

struct TInput {
  TPaths64 A, B;
  ClipperLib::Paths EA, EB;
};

TPath64 Star(std::mt19937_64& Rng, std::int64_t CX, std::int64_t CY, double R, int Count) {
  std::uniform_real_distribution<double> radius(R / 3, R);
  TPath64 p;
  for (int i = 0; i < Count; ++i) {
    const double a = 2 * std::numbers::pi * (i + 0.5) / Count;
    const double r = radius(Rng);
    p.emplace_back(CX + std::llround(r * std::cos(a)), CY + std::llround(r * std::sin(a)));
  }
  return p;
}

TPaths64 Polygons(std::mt19937_64& Rng, int Count) {
  // 10^4 polygons of 6 to 16 vertices, radius up to 3 units, over 1000 x 1000 drawing units
  // at the working scale: each set covers about a tenth of the field, with many overlaps.
  std::uniform_int_distribution<std::int64_t> pos(0, 100000000);
  std::uniform_int_distribution<int> verts(6, 16);
  TPaths64 out;
  for (int i = 0; i < Count; ++i) out.push_back(Star(Rng, pos(Rng), pos(Rng), 300000.0, verts(Rng)));
  return out;
}

ClipperLib::Paths ToEngine(const TPaths64& Paths) {
  ClipperLib::Paths out;
  for (const TPath64& p : Paths) {
    ClipperLib::Path q;
    for (const TPoint64& pt : p) q.emplace_back(pt.X, pt.Y);
    out.push_back(std::move(q));
  }
  return out;
}

const TInput& Input() {
  static const TInput input = [] {
    std::mt19937_64 rng(12345);
    TInput in;
    in.A = Polygons(rng, 10000);
    in.B = Polygons(rng, 10000);
    in.EA = ToEngine(in.A);
    in.EB = ToEngine(in.B);
    return in;
  }();
  return input;
}

void Orvane(benchmark::State& State, TClipType ClipType) {
  const TInput& in = Input();
  std::size_t count = 0;
  for (auto _ : State) {
    Clipper::TClipper c;
    c.AddPaths(in.A, TPathType::ptSubject, true);
    c.AddPaths(in.B, TPathType::ptClip, true);
    TPaths64 out;
    c.Execute(ClipType, out, TFillRule::frNonZero);
    count = out.size();
    benchmark::DoNotOptimize(out.data());
  }
  State.counters["paths"] = static_cast<double>(count);
}

void Engine(benchmark::State& State, ClipperLib::ClipType ClipType) {
  const TInput& in = Input();
  std::size_t count = 0;
  for (auto _ : State) {
    ClipperLib::Clipper c;
    c.AddPaths(in.EA, ClipperLib::ptSubject, true);
    c.AddPaths(in.EB, ClipperLib::ptClip, true);
    ClipperLib::Paths out;
    c.Execute(ClipType, out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
    count = out.size();
    benchmark::DoNotOptimize(out.data());
  }
  State.counters["paths"] = static_cast<double>(count);
}

// Both in turn within each iteration (alternating which goes first), so that the load of a
// shared machine falls on both alike; "ratio" is the layer's time over the engine's.
void Paired(benchmark::State& State, TClipType ClipType, ClipperLib::ClipType EngineType) {
  const TInput& in = Input();
  double ours = 0, bare = 0;
  bool oursFirst = false;
  for (auto _ : State) {
    auto runOurs = [&] {
      const auto t0 = std::chrono::steady_clock::now();
      Clipper::TClipper c;
      c.AddPaths(in.A, TPathType::ptSubject, true);
      c.AddPaths(in.B, TPathType::ptClip, true);
      TPaths64 out;
      c.Execute(ClipType, out, TFillRule::frNonZero);
      benchmark::DoNotOptimize(out.data());
      ours += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    };
    auto runBare = [&] {
      const auto t0 = std::chrono::steady_clock::now();
      ClipperLib::Clipper c;
      c.AddPaths(in.EA, ClipperLib::ptSubject, true);
      c.AddPaths(in.EB, ClipperLib::ptClip, true);
      ClipperLib::Paths out;
      c.Execute(EngineType, out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
      benchmark::DoNotOptimize(out.data());
      bare += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    };
    oursFirst = !oursFirst;
    if (oursFirst) {
      runOurs();
      runBare();
    } else {
      runBare();
      runOurs();
    }
  }
  State.counters["ratio"] = ours / bare;
}

void BM_Union_Paired(benchmark::State& State) { Paired(State, TClipType::ctUnion, ClipperLib::ctUnion); }
void BM_Intersection_Paired(benchmark::State& State) {
  Paired(State, TClipType::ctIntersection, ClipperLib::ctIntersection);
}

void BM_Union_ClipperLib(benchmark::State& State) { Engine(State, ClipperLib::ctUnion); }
void BM_Union_Orvane(benchmark::State& State) { Orvane(State, TClipType::ctUnion); }
void BM_Intersection_ClipperLib(benchmark::State& State) { Engine(State, ClipperLib::ctIntersection); }
void BM_Intersection_Orvane(benchmark::State& State) { Orvane(State, TClipType::ctIntersection); }

}  // namespace

BENCHMARK(BM_Union_ClipperLib)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Union_Orvane)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Intersection_ClipperLib)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Intersection_Orvane)->Unit(benchmark::kMillisecond);

BENCHMARK(BM_Union_Paired)->Unit(benchmark::kMillisecond)->Iterations(12);
BENCHMARK(BM_Intersection_Paired)->Unit(benchmark::kMillisecond)->Iterations(12);

BENCHMARK_MAIN();
