// Self-intersection and point relation of vertex polylines, side by side with GEOS (C API)
// and Boost.Geometry on the same inputs in the same run:
//
//   self-intersection of a simple closed outline of 10^5 and 10^6 vertices
//     ours:  TVPolyline2D::IsSelfIntersect(1e-6)
//     GEOS:  GEOSisSimple on the linear ring
//     Boost: boost::geometry::intersects on the ring, its self-intersection test (is_simple
//            looks only for repeated vertices on a ring, and on the closed linestring it
//            reports this simple outline as not simple)
//   relation of 10^5 points to one outline of 10^4 vertices
//     ours:  TVPolyline2D::RelationWithPoint(Pt, 1e-6) for each point
//     GEOS:  GEOSPrepare of the polygon, then GEOSPreparedContains / GEOSPreparedIntersects
//            for each point (the prepared index is built inside the timed loop, as a caller
//            that classifies one batch of points pays for it; the points are made outside)
//     Boost: boost::geometry::within for each point
//
// The outline is a finely polygonised circle of radius 1000 with noise in radius and angle of
// about one vertex spacing, the vertices at strictly increasing angles, so it stays simple
// while zigzagging at the scale of its own segments, as a digitised part outline does. Every
// library's answer is checked against the others before anything is timed.

#include <benchmark/benchmark.h>
#include <geos_c.h>

// Boost.Geometry's rescaling trips a false maybe-uninitialized warning at -O2.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <boost/geometry/geometries/ring.hpp>
#pragma GCC diagnostic pop
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BRing = bg::model::ring<BPoint, false, true>;  // counter-clockwise, closed
using BPolygon = bg::model::polygon<BPoint, false, true>;

constexpr int PointCount = 100000;
constexpr int PolygonVertices = 10000;

orvane::TDynPoints2D NoisyCircle(int N) {
  std::mt19937_64 rng(0xc1c1e + static_cast<unsigned>(N));
  std::uniform_real_distribution<double> unit(-0.5, 0.5);
  constexpr double Radius = 1000.0;
  const double step = orvane::TwoPi / N;
  const double spacing = Radius * step;
  orvane::TDynPoints2D pts;
  pts.reserve(static_cast<std::size_t>(N) + 1);
  for (int i = 0; i < N; ++i) {
    const double a = (i + 0.6 * unit(rng)) * step;
    const double r = Radius + spacing * unit(rng);
    pts.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  pts.push_back(pts.front());
  return pts;
}

struct TGeos {
  GEOSContextHandle_t Ctx = GEOS_init_r();
  TGeos() = default;
  TGeos(const TGeos&) = delete;
  TGeos& operator=(const TGeos&) = delete;
  ~TGeos() { GEOS_finish_r(Ctx); }
  GEOSGeometry* Ring(const orvane::TDynPoints2D& Pts) const {
    GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(Ctx, &Pts[0].X, static_cast<unsigned>(Pts.size()), 0, 0);
    return GEOSGeom_createLinearRing_r(Ctx, seq);
  }
};

TGeos& Geos() {
  static TGeos geos;
  return geos;
}

BRing ToBoost(const orvane::TDynPoints2D& Pts) {
  BRing ring;
  ring.reserve(Pts.size());
  for (const orvane::TPoint2D& p : Pts) ring.emplace_back(p.X, p.Y);
  return ring;
}

// ---- self-intersection ---------------------------------------------------------------------

struct TOutline {
  std::unique_ptr<orvane::TVPolyline2D> Poly;
  BRing Ring;
  GEOSGeometry* GeosRing = nullptr;
};

const TOutline& Outline(int N) {
  static std::map<int, TOutline> outlines;
  auto found = outlines.find(N);
  if (found != outlines.end()) return found->second;
  TOutline& o = outlines[N];
  const orvane::TDynPoints2D pts = NoisyCircle(N);
  o.Poly = std::make_unique<orvane::TVPolyline2D>(pts);
  o.Ring = ToBoost(pts);
  o.GeosRing = Geos().Ring(pts);
  if (o.Poly->IsSelfIntersect(1e-6)) throw std::runtime_error("ours finds a crossing in a simple outline");
  if (GEOSisSimple_r(Geos().Ctx, o.GeosRing) != 1) throw std::runtime_error("GEOS finds the outline not simple");
  if (bg::intersects(o.Ring)) throw std::runtime_error("Boost finds the outline not simple");
  return o;
}

void BM_Orvane_IsSelfIntersect(benchmark::State& State) {
  const TOutline& o = Outline(static_cast<int>(State.range(0)));
  for (auto _ : State) benchmark::DoNotOptimize(o.Poly->IsSelfIntersect(1e-6));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_Geos_IsSimple(benchmark::State& State) {
  const TOutline& o = Outline(static_cast<int>(State.range(0)));
  for (auto _ : State) benchmark::DoNotOptimize(GEOSisSimple_r(Geos().Ctx, o.GeosRing));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

void BM_Boost_SelfIntersects(benchmark::State& State) {
  const TOutline& o = Outline(static_cast<int>(State.range(0)));
  for (auto _ : State) benchmark::DoNotOptimize(bg::intersects(o.Ring));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

// ---- point relation ------------------------------------------------------------------------

struct TPointJob {
  std::unique_ptr<orvane::TVPolyline2D> Poly;
  BPolygon Polygon;
  GEOSGeometry* GeosPolygon = nullptr;
  orvane::TDynPoints2D Points;
  std::vector<BPoint> BoostPoints;
  std::vector<GEOSGeometry*> GeosPoints;
  int Inside = 0;
};

const TPointJob& PointJob() {
  static TPointJob job;
  if (job.Poly) return job;
  const orvane::TDynPoints2D pts = NoisyCircle(PolygonVertices);
  job.Poly = std::make_unique<orvane::TVPolyline2D>(pts);
  job.Polygon.outer() = ToBoost(pts);
  job.GeosPolygon = GEOSGeom_createPolygon_r(Geos().Ctx, Geos().Ring(pts), nullptr, 0);
  // Points over the outline's box: about three in four fall inside, and many lie in the band
  // of the noise, close to the boundary.
  std::mt19937_64 rng(99);
  std::uniform_real_distribution<double> coord(-1010.0, 1010.0);
  for (int k = 0; k < PointCount; ++k) {
    orvane::TPoint2D p(coord(rng), coord(rng));
    if (k % 4 == 0) p = p * (1000.0 / std::max(p.Mag(), 1.0));  // onto the noisy band
    job.Points.push_back(p);
    job.BoostPoints.emplace_back(p.X, p.Y);
    job.GeosPoints.push_back(GEOSGeom_createPointFromXY_r(Geos().Ctx, p.X, p.Y));
  }
  // The three agree on every point that is not on the boundary.
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(Geos().Ctx, job.GeosPolygon);
  for (int k = 0; k < PointCount; ++k) {
    const auto idx = static_cast<std::size_t>(k);
    const int ours = job.Poly->RelationWithPoint(job.Points[idx], 1e-6);
    if (ours == static_cast<int>(orvane::TShapeRelation::srOn)) continue;
    const bool in = ours == static_cast<int>(orvane::TShapeRelation::srIn);
    if (in != (GEOSPreparedContains_r(Geos().Ctx, prepared, job.GeosPoints[idx]) == 1) ||
        in != bg::within(job.BoostPoints[idx], job.Polygon)) {
      throw std::runtime_error("the point relations disagree at point " + std::to_string(k));
    }
    job.Inside += in ? 1 : 0;
  }
  GEOSPreparedGeom_destroy_r(Geos().Ctx, prepared);
  return job;
}

void BM_Orvane_RelationWithPoint(benchmark::State& State) {
  const TPointJob& job = PointJob();
  for (auto _ : State) {
    int inside = 0;
    for (const orvane::TPoint2D& p : job.Points) {
      inside += job.Poly->RelationWithPoint(p, 1e-6) == static_cast<int>(orvane::TShapeRelation::srIn) ? 1 : 0;
    }
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

template <char (*Predicate)(GEOSContextHandle_t, const GEOSPreparedGeometry*, const GEOSGeometry*)>
void BM_Geos_Prepared(benchmark::State& State) {
  const TPointJob& job = PointJob();
  for (auto _ : State) {
    const GEOSPreparedGeometry* prepared = GEOSPrepare_r(Geos().Ctx, job.GeosPolygon);
    int inside = 0;
    for (const GEOSGeometry* p : job.GeosPoints) inside += Predicate(Geos().Ctx, prepared, p) == 1 ? 1 : 0;
    GEOSPreparedGeom_destroy_r(Geos().Ctx, prepared);
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

void BM_Boost_Within(benchmark::State& State) {
  const TPointJob& job = PointJob();
  for (auto _ : State) {
    int inside = 0;
    for (const BPoint& p : job.BoostPoints) inside += bg::within(p, job.Polygon) ? 1 : 0;
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

BENCHMARK(BM_Orvane_IsSelfIntersect)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_IsSimple)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Boost_SelfIntersects)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_RelationWithPoint)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_Prepared<GEOSPreparedContains_r>)->Name("BM_Geos_PreparedContains")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_Prepared<GEOSPreparedIntersects_r>)
    ->Name("BM_Geos_PreparedIntersects")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Boost_Within)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
