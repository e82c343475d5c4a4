// Convex hull of one simple polygon: TVPolyline2D::ConvexHull (Melkman's deque algorithm,
// linear in the vertex count) against boost::geometry::convex_hull (sort-based), on the
// same outline in the same run.
//
// The outline is a noisy star: a wavy radius with random noise around the origin, the
// vertices at strictly increasing angles, so it is simple by construction while still
// turning both ways all along, as a digitised part outline does.

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/ring.hpp>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>

#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BRing = bg::model::ring<BPoint, false, true>;  // counter-clockwise, closed

orvane::TDynPoints2D NoisyStar(int N) {
  std::mt19937_64 rng(0x5eed + static_cast<unsigned>(N));
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  orvane::TDynPoints2D pts;
  pts.reserve(static_cast<std::size_t>(N) + 1);
  for (int i = 0; i < N; ++i) {
    const double a = (i + 0.5 * unit(rng)) * orvane::TwoPi / N;
    const double r = 1000.0 * (1.0 + 0.25 * std::sin(7.0 * a) + 0.08 * std::sin(61.0 * a) + 0.05 * unit(rng));
    pts.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  pts.push_back(pts.front());
  return pts;
}

struct TInput {
  std::unique_ptr<orvane::TVPolyline2D> Poly;
  BRing Ring;
  int HullCorners = 0;
};

// One input per size, shared by both sides and built outside the timed loops. Both hulls
// are checked to have the same number of corners before anything is timed.
const TInput& Input(int N) {
  static std::map<int, TInput> inputs;
  auto found = inputs.find(N);
  if (found != inputs.end()) return found->second;
  TInput& in = inputs[N];
  const orvane::TDynPoints2D pts = NoisyStar(N);
  in.Poly = std::make_unique<orvane::TVPolyline2D>(pts);
  for (const orvane::TPoint2D& p : pts) bg::append(in.Ring, BPoint(p.X, p.Y));
  orvane::TList<int> ids;
  in.Poly->ConvexHull(ids);
  BRing hull;
  bg::convex_hull(in.Ring, hull);
  if (ids.Count() != static_cast<int>(hull.size())) throw std::runtime_error("the two hulls differ");
  in.HullCorners = ids.Count() - 1;
  return in;
}

void BM_Orvane_ConvexHullIndices(benchmark::State& State) {
  const TInput& in = Input(static_cast<int>(State.range(0)));
  orvane::TVPolyline2D& poly = *in.Poly;
  orvane::TList<int> ids;
  for (auto _ : State) {
    poly.ConvexHull(ids);
    benchmark::DoNotOptimize(ids.Count());
  }
  State.counters["corners"] = in.HullCorners;
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_Orvane_ConvexHullPolyline(benchmark::State& State) {
  const TInput& in = Input(static_cast<int>(State.range(0)));
  for (auto _ : State) {
    orvane::TVPolyline2D hull;
    in.Poly->ConvexHull(hull);
    benchmark::DoNotOptimize(hull.Count());
  }
  State.counters["corners"] = in.HullCorners;
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_Boost_ConvexHull(benchmark::State& State) {
  const TInput& in = Input(static_cast<int>(State.range(0)));
  for (auto _ : State) {
    BRing hull;
    bg::convex_hull(in.Ring, hull);
    benchmark::DoNotOptimize(hull.size());
  }
  State.counters["corners"] = in.HullCorners;
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

BENCHMARK(BM_Orvane_ConvexHullIndices)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_ConvexHullPolyline)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Boost_ConvexHull)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
