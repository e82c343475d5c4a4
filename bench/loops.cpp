// Point tests on one TGeLoop of 10^5 vertices for 10^3 points, side by side with
// Boost.Geometry's within (and GEOS's prepared contains for reference) on the same inputs in
// the same run:
//
//   ours:  TGeLoop::RelationWithPt(Pt, 1e-6) and TGeLoop::PtInPoly(Pt) for each point, with
//          the loop's edge index already built ("warm", a loop asked many batches), and
//          with the loop invalidated before each batch, so that the batch pays one scan and
//          the building of the index ("cold", a loop asked one batch)
//   Boost: boost::geometry::within for each point
//   GEOS:  GEOSPrepare of the polygon, then GEOSPreparedContains for each point (the prepared
//          index is built inside the timed loop, as a caller that classifies one batch pays)
//
// The outline is a finely polygonised circle of radius 1000 whose radius and angle are
// jittered by about one vertex spacing, as a digitised part outline is; a quarter of the
// points lie in the jittered band, the rest anywhere in the box. Points are in single
// precision, which PtInPoly rounds to, so that all methods see the same point. Every answer
// is checked against Boost's before anything is timed.

#include <benchmark/benchmark.h>
#include <geos_c.h>

// Boost.Geometry's rescaling trips a false maybe-uninitialized warning at -O2.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#pragma GCC diagnostic pop
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/curves/GeLoop.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/MathUtils.h"

namespace {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;  // counter-clockwise, closed

constexpr int LoopVertices = 100000;
constexpr int PointCount = 1000;
constexpr int In = static_cast<int>(orvane::TShapeRelation::srIn);
constexpr int On = static_cast<int>(orvane::TShapeRelation::srOn);

struct TJob {
  std::unique_ptr<orvane::TGeLoop> Loop;
  BPolygon Polygon;
  GEOSContextHandle_t Ctx = nullptr;
  GEOSGeometry* GeosPolygon = nullptr;
  orvane::TDynPoints2D Points;
  std::vector<BPoint> BoostPoints;
  std::vector<GEOSGeometry*> GeosPoints;
  int Inside = 0;
};

const TJob& Job() {
  static TJob job;
  if (job.Loop) return job;
  std::mt19937_64 rng(0x100b5);
  std::uniform_real_distribution<double> unit(-0.5, 0.5);
  constexpr double Radius = 1000.0;
  const double step = orvane::TwoPi / LoopVertices;
  orvane::TDynPoints2D pts;
  for (int i = 0; i < LoopVertices; ++i) {
    const double a = (i + 0.6 * unit(rng)) * step;
    const double r = Radius + Radius * step * unit(rng);
    pts.emplace_back(r * std::cos(a), r * std::sin(a));
  }
  job.Loop = std::make_unique<orvane::TGeLoop>(pts);
  if (job.Loop->GetVertexCount() != LoopVertices) throw std::runtime_error("the loop lost vertices");
  for (const orvane::TPoint2D& p : pts) bg::append(job.Polygon.outer(), BPoint(p.X, p.Y));
  bg::append(job.Polygon.outer(), BPoint(pts.front().X, pts.front().Y));
  job.Ctx = GEOS_init_r();
  GEOSCoordSequence* seq = GEOSCoordSeq_create_r(job.Ctx, LoopVertices + 1, 2);
  for (unsigned k = 0; k <= LoopVertices; ++k) {
    const orvane::TPoint2D& p = pts[k % LoopVertices];
    GEOSCoordSeq_setXY_r(job.Ctx, seq, k, p.X, p.Y);
  }
  job.GeosPolygon = GEOSGeom_createPolygon_r(job.Ctx, GEOSGeom_createLinearRing_r(job.Ctx, seq), nullptr, 0);

  std::uniform_real_distribution<double> coord(-1010.0, 1010.0);
  for (int k = 0; k < PointCount; ++k) {
    orvane::TPoint2D p(coord(rng), coord(rng));
    if (k % 4 == 0) p = p * ((Radius + 2.0 * Radius * step * unit(rng)) / std::max(p.Mag(), 1.0));
    p = orvane::TPoint2D(static_cast<float>(p.X), static_cast<float>(p.Y));
    job.Points.push_back(p);
    job.BoostPoints.emplace_back(p.X, p.Y);
    job.GeosPoints.push_back(GEOSGeom_createPointFromXY_r(job.Ctx, p.X, p.Y));
  }
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(job.Ctx, job.GeosPolygon);
  for (std::size_t k = 0; k < job.Points.size(); ++k) {
    const int rel = job.Loop->RelationWithPt(job.Points[k], 1e-6);
    if (rel == On) continue;
    const bool in = bg::within(job.BoostPoints[k], job.Polygon);
    if ((rel == In) != in || job.Loop->PtInPoly(job.Points[k]) != in ||
        (GEOSPreparedContains_r(job.Ctx, prepared, job.GeosPoints[k]) == 1) != in) {
      throw std::runtime_error("the point tests disagree at point " + std::to_string(k));
    }
    job.Inside += in ? 1 : 0;
  }
  GEOSPreparedGeom_destroy_r(job.Ctx, prepared);
  return job;
}

template <bool Cold>
void BM_Orvane_RelationWithPt(benchmark::State& State) {
  const TJob& job = Job();
  for (auto _ : State) {
    if (Cold) job.Loop->Invalidate();
    int inside = 0;
    for (const orvane::TPoint2D& p : job.Points) inside += job.Loop->RelationWithPt(p, 1e-6) == In ? 1 : 0;
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

template <bool Cold>
void BM_Orvane_PtInPoly(benchmark::State& State) {
  const TJob& job = Job();
  for (auto _ : State) {
    if (Cold) job.Loop->Invalidate();
    int inside = 0;
    for (const orvane::TPoint2D& p : job.Points) inside += job.Loop->PtInPoly(p) ? 1 : 0;
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

void BM_Boost_Within(benchmark::State& State) {
  const TJob& job = Job();
  for (auto _ : State) {
    int inside = 0;
    for (const BPoint& p : job.BoostPoints) inside += bg::within(p, job.Polygon) ? 1 : 0;
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

void BM_Geos_PreparedContains(benchmark::State& State) {
  const TJob& job = Job();
  for (auto _ : State) {
    const GEOSPreparedGeometry* prepared = GEOSPrepare_r(job.Ctx, job.GeosPolygon);
    int inside = 0;
    for (const GEOSGeometry* p : job.GeosPoints) inside += GEOSPreparedContains_r(job.Ctx, prepared, p) == 1 ? 1 : 0;
    GEOSPreparedGeom_destroy_r(job.Ctx, prepared);
    benchmark::DoNotOptimize(inside);
  }
  State.counters["inside"] = job.Inside;
  State.SetItemsProcessed(State.iterations() * PointCount);
}

BENCHMARK(BM_Orvane_RelationWithPt<false>)->Name("BM_Orvane_RelationWithPt_Warm")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Orvane_RelationWithPt<true>)->Name("BM_Orvane_RelationWithPt_Cold")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Orvane_PtInPoly<false>)->Name("BM_Orvane_PtInPoly_Warm")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Orvane_PtInPoly<true>)->Name("BM_Orvane_PtInPoly_Cold")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Boost_Within)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Geos_PreparedContains)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
