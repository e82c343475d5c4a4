// Curve objects side by side with their peers, on the same inputs in the same run:
//
//   segment against segment, 10^6 pairs
//     ours:  TGeLine2D::Intersect(ALine, Inters, DefTol), the list emptied before each call
//     GEOS:  GEOSSegmentIntersection_r (the C API's one-pair segment intersector)
//   chord sampling of 10^4 arcs at a chord error of 1e-3 of each radius
//     ours:  TGeCircularArc2D::GetSamplePointsByChord(Eps, Points, Params)
//     OCCT:  GCPnts_UniformDeflection on a Geom2dAdaptor_Curve of the trimmed circle (the
//            curves are built once; the adaptor, as the sampler needs one, inside the loop)
//
// Before anything is timed the answers are compared: every pair that GEOS sees crossing is a
// crossing of ours at the same point, and every arc samples within the error with no more
// points than OCCT's.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <GCPnts_UniformDeflection.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <algorithm>
#include <cmath>
#include <deque>
#include <gp_Ax22d.hxx>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/MathUtils.h"

namespace {

using orvane::TPoint2D;

constexpr int PairCount = 1000000;
constexpr int ArcCount = 10000;

struct TGeos {
  GEOSContextHandle_t Ctx = GEOS_init_r();
  TGeos() = default;
  TGeos(const TGeos&) = delete;
  TGeos& operator=(const TGeos&) = delete;
  ~TGeos() { GEOS_finish_r(Ctx); }
};

TGeos& Geos() {
  static TGeos geos;
  return geos;
}

// ---- segment pairs --------------------------------------------------------------------------

struct TPairs {
  // Kept side by side, as a host keeps its segments in a container of its own.
  std::deque<orvane::TGeLine2D> A, B;
  std::vector<double> Coords;  // ax0 ay0 ax1 ay1 bx0 by0 bx1 by1 per pair
};

// Segments of length up to 28 in a 30 x 30 square: about one pair in seven crosses.
const TPairs& Pairs() {
  static TPairs pairs = [] {
    TPairs p;
    std::mt19937_64 rng(0x5e6);
    std::uniform_real_distribution<double> pos(0.0, 30.0);
    std::uniform_real_distribution<double> off(-20.0, 20.0);
    p.Coords.reserve(8 * static_cast<std::size_t>(PairCount));
    for (int i = 0; i < 2 * PairCount; ++i) {
      const TPoint2D s(pos(rng), pos(rng));
      const TPoint2D e = s + TPoint2D(off(rng), off(rng));
      (i % 2 == 0 ? p.A : p.B).emplace_back(s, e);
      p.Coords.insert(p.Coords.end(), {s.X, s.Y, e.X, e.Y});
    }
    // Same answers first.
    orvane::TList<orvane::TIntersect2D> inters;
    int crossings = 0;
    for (int i = 0; i < PairCount; ++i) {
      const double* c = &p.Coords[8 * static_cast<std::size_t>(i)];
      double x = 0.0;
      double y = 0.0;
      const int geos = GEOSSegmentIntersection_r(Geos().Ctx, c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], &x, &y);
      inters.Clear();
      const orvane::TIntersectionType kind = p.A[i].Intersect(p.B[i], inters, orvane::DefTol);
      if (geos == 1) {
        ++crossings;
        if (kind == orvane::TIntersectionType::itNone ||
            inters[0].InterThis.Point().DistanceTo(TPoint2D(x, y)) > 1e-9) {
          throw std::runtime_error("pair " + std::to_string(i) + ": GEOS and ours differ on a crossing");
        }
      } else if (kind != orvane::TIntersectionType::itNone) {
        // Ours may only add touches within its tolerance of an end.
        const orvane::TIntersect2D& hit = inters[0];
        if (std::fabs(hit.InterThis.Param - 0.5) < 0.5 - 1e-6 && std::fabs(hit.InterThat.Param - 0.5) < 0.5 - 1e-6) {
          throw std::runtime_error("pair " + std::to_string(i) + ": ours crosses where GEOS does not");
        }
      }
    }
    if (crossings < PairCount / 20) throw std::runtime_error("too few crossings to measure");
    return p;
  }();
  return pairs;
}

void BM_Orvane_LineIntersect(benchmark::State& State) {
  const TPairs& p = Pairs();
  orvane::TList<orvane::TIntersect2D> inters;
  for (auto _ : State) {
    int hits = 0;
    for (int i = 0; i < PairCount; ++i) {
      inters.Clear();
      hits += p.A[i].Intersect(p.B[i], inters, orvane::DefTol) != orvane::TIntersectionType::itNone;
    }
    benchmark::DoNotOptimize(hits);
  }
  State.SetItemsProcessed(State.iterations() * PairCount);
}

void BM_Geos_SegmentIntersection(benchmark::State& State) {
  const TPairs& p = Pairs();
  for (auto _ : State) {
    int hits = 0;
    for (int i = 0; i < PairCount; ++i) {
      const double* c = &p.Coords[8 * static_cast<std::size_t>(i)];
      double x = 0.0;
      double y = 0.0;
      hits += GEOSSegmentIntersection_r(Geos().Ctx, c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], &x, &y) == 1;
    }
    benchmark::DoNotOptimize(hits);
  }
  State.SetItemsProcessed(State.iterations() * PairCount);
}

// ---- chord sampling -------------------------------------------------------------------------

struct TArcs {
  std::vector<std::unique_ptr<orvane::TGeCircularArc2D>> Ours;
  std::vector<Handle(Geom2d_TrimmedCurve)> Occt;
  long long OurPoints = 0;
  long long OcctPoints = 0;
};

// Radii from 0.01 to 1000, sweeps up to a full turn either way.
const TArcs& Arcs() {
  static TArcs arcs = [] {
    TArcs a;
    std::mt19937_64 rng(0xa2c);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int i = 0; i < ArcCount; ++i) {
      const double r = std::pow(10.0, 5 * u(rng) - 2);
      const double sweep = (u(rng) < 0.5 ? -1 : 1) * (0.05 + u(rng) * (orvane::TwoPi - 0.05));
      auto arc = std::make_unique<orvane::TGeCircularArc2D>(TPoint2D(100 * u(rng), 100 * u(rng)), r,
                                                            orvane::TwoPi * u(rng), sweep);
      Handle(Geom2d_Circle) circle =
          new Geom2d_Circle(gp_Ax22d(gp_Pnt2d(arc->GetCenter().X, arc->GetCenter().Y), gp_Dir2d(1, 0)), r);
      const double a0 = std::min(arc->GetStartAngle(), arc->GetEndAngle());
      const double a1 = std::max(arc->GetStartAngle(), arc->GetEndAngle());
      a.Occt.push_back(new Geom2d_TrimmedCurve(circle, a0, a1));
      a.Ours.push_back(std::move(arc));
    }
    orvane::TDynPoints2D pts;
    orvane::TFloatDynArray params;
    for (int i = 0; i < ArcCount; ++i) {
      const orvane::TGeCircularArc2D& arc = *a.Ours[i];
      const double eps = 1e-3 * arc.GetRadius();
      const int n = arc.GetSamplePointsByChord(eps, pts, params);
      Geom2dAdaptor_Curve adaptor(a.Occt[i]);
      GCPnts_UniformDeflection sampler(adaptor, eps, a.Occt[i]->FirstParameter(), a.Occt[i]->LastParameter());
      if (!sampler.IsDone()) throw std::runtime_error("OCCT sampler failed on arc " + std::to_string(i));
      if (n > sampler.NbPoints()) throw std::runtime_error("ours has more points on arc " + std::to_string(i));
      for (int k = 0; k + 1 < n; ++k) {
        const TPoint2D mid = arc.EvalPoint(0.5 * (params[k] + params[k + 1]));
        const orvane::TLine2D chord(pts[k], pts[k + 1]);
        if (chord.DistanceLimit(mid) > eps * (1 + 1e-9)) {
          throw std::runtime_error("ours leaves the chord error on arc " + std::to_string(i));
        }
      }
      a.OurPoints += n;
      a.OcctPoints += sampler.NbPoints();
    }
    return a;
  }();
  return arcs;
}

void BM_Orvane_ArcChordSampling(benchmark::State& State) {
  const TArcs& a = Arcs();
  orvane::TDynPoints2D pts;
  orvane::TFloatDynArray params;
  for (auto _ : State) {
    long long total = 0;
    for (const auto& arc : a.Ours) total += arc->GetSamplePointsByChord(1e-3 * arc->GetRadius(), pts, params);
    benchmark::DoNotOptimize(total);
  }
  State.SetItemsProcessed(State.iterations() * ArcCount);
  State.counters["points"] = static_cast<double>(a.OurPoints);
}

void BM_Occt_UniformDeflection(benchmark::State& State) {
  const TArcs& a = Arcs();
  for (auto _ : State) {
    long long total = 0;
    for (std::size_t i = 0; i < a.Occt.size(); ++i) {
      Geom2dAdaptor_Curve adaptor(a.Occt[i]);
      GCPnts_UniformDeflection sampler(adaptor, 1e-3 * a.Ours[i]->GetRadius(), a.Occt[i]->FirstParameter(),
                                       a.Occt[i]->LastParameter());
      total += sampler.NbPoints();
    }
    benchmark::DoNotOptimize(total);
  }
  State.SetItemsProcessed(State.iterations() * ArcCount);
  State.counters["points"] = static_cast<double>(a.OcctPoints);
}

}  // namespace

BENCHMARK(BM_Orvane_LineIntersect)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_SegmentIntersection)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_ArcChordSampling)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_UniformDeflection)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
