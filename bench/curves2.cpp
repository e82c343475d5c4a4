// Composite, polyline and Bezier curve objects side by side with their peers, on the same
// inputs in the same run:
//
//   walk by length on a chain of 30 lines, arcs and cubics, 10^5 queries
//     ours:  TGeCompositeCurve2D::EvalPoint(ParamOfLength(s, DefTol))
//     OCCT:  the piece found from its lengths (measured once, as a host would keep them),
//            then GCPnts_AbscissaPoint on that piece's adaptor (made once) and its Value
//   nearest point on an open polyline of 10^4 vertices, 10^4 queries
//     ours:  TGePolyline2D::GetClosedPointTo
//     GEOS:  GEOSProject_r on the line string (query points made beforehand)
//   line against cubic Bezier, 10^4 pairs
//     ours:  TGeLine2D::IntersectCurve(TGeBezier2D)
//     OCCT:  Geom2dAPI_InterCurveCurve on the segment and the Bezier (curves made beforehand)
//
// Before anything is timed the answers are compared: the walks land on the same points,
// the projections at the same distances along, and the pairs cross equally often at the
// same points.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <GCE2d_MakeArcOfCircle.hxx>
#include <GCE2d_MakeSegment.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <Geom2dAPI_InterCurveCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyline2D.h"

namespace {

using orvane::DefTol;
using orvane::TPoint2D;

constexpr int WalkCount = 100000;
constexpr int VertexCount = 10000;
constexpr int NearestCount = 10000;
constexpr int CubicPairs = 10000;
// The walk's length tolerance on both sides.
constexpr double WalkTol = 1e-6;

Handle(Geom2d_BezierCurve) OcctBezier(const orvane::TBezierSegment2D& B) {
  TColgp_Array1OfPnt2d poles(1, 4);
  poles.SetValue(1, gp_Pnt2d(B.P0.X, B.P0.Y));
  poles.SetValue(2, gp_Pnt2d(B.P1.X, B.P1.Y));
  poles.SetValue(3, gp_Pnt2d(B.P2.X, B.P2.Y));
  poles.SetValue(4, gp_Pnt2d(B.P3.X, B.P3.Y));
  return new Geom2d_BezierCurve(poles);
}

// ---- walk by length ---------------------------------------------------------------------------

struct TChain {
  orvane::TGeCompositeCurve2D Ours;
  std::vector<Handle(Geom2d_Curve)> Curves;
  std::vector<Geom2dAdaptor_Curve> Adaptors;
  std::vector<double> Before;  // length before each piece, and the total last
  std::vector<double> Queries;
};

TPoint2D OcctWalk(const TChain& C, double S) {
  const auto it = std::upper_bound(C.Before.begin() + 1, C.Before.end() - 1, S);
  const auto i = static_cast<std::size_t>(it - (C.Before.begin() + 1));
  const Geom2dAdaptor_Curve& a = C.Adaptors[i];
  GCPnts_AbscissaPoint ap(WalkTol, a, S - C.Before[i], a.FirstParameter());
  const gp_Pnt2d p = a.Value(ap.Parameter());
  return {p.X(), p.Y()};
}

const TChain& Chain() {
  static const std::unique_ptr<TChain> chain = [] {
    auto owned = std::make_unique<TChain>();
    TChain& c = *owned;
    std::mt19937_64 rng(0xc0a);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    TPoint2D at(0, 0);
    for (int i = 0; i < 30; ++i) {
      const TPoint2D to = at + TPoint2D(2 + u(rng), 2 * u(rng));
      if (i % 3 == 0) {
        c.Ours.AddCurve(std::make_unique<orvane::TGeLine2D>(at, to));
        c.Curves.push_back(GCE2d_MakeSegment(gp_Pnt2d(at.X, at.Y), gp_Pnt2d(to.X, to.Y)).Value());
      } else if (i % 3 == 1) {
        const orvane::TGeCircularArc2D arc(at, 0.6 + 0.3 * u(rng), to);
        const orvane::TArc2D& v = arc.GetArc();
        const gp_Circ2d circ(gp_Ax2d(gp_Pnt2d(v.Center.X, v.Center.Y), gp_Dir2d(1, 0)), v.Radius);
        const double s = v.StartAngle;
        const double e = v.StartAngle + v.SweepAngle;
        if (v.SweepAngle > 0) {
          c.Curves.push_back(GCE2d_MakeArcOfCircle(circ, s, e, true).Value());
        } else {
          c.Curves.push_back(GCE2d_MakeArcOfCircle(circ, e, s, true).Value()->Reversed());
        }
        c.Ours.AddCurve(std::make_unique<orvane::TGeCircularArc2D>(v.Center, v.Radius, v.StartAngle, v.SweepAngle));
      } else {
        const orvane::TBezierSegment2D b(at, at + TPoint2D(u(rng), 2 * u(rng)), to + TPoint2D(u(rng), 2 * u(rng)), to);
        c.Ours.AddCurve(std::make_unique<orvane::TGeBezier2D>(b));
        c.Curves.push_back(OcctBezier(b));
      }
      at = c.Ours.GetEndPoint();
    }
    c.Before.push_back(0.0);
    for (const Handle(Geom2d_Curve) & curve : c.Curves) {
      c.Adaptors.emplace_back(curve);
      c.Before.push_back(c.Before.back() + GCPnts_AbscissaPoint::Length(c.Adaptors.back(), 1e-12));
    }
    if (std::fabs(c.Before.back() - c.Ours.GetCurveLength()) > 1e-9 * c.Before.back())
      throw std::runtime_error("the chain's lengths differ");
    std::uniform_real_distribution<double> s(0.0, c.Before.back());
    for (int i = 0; i < WalkCount; ++i) c.Queries.push_back(s(rng));
    // Same answers first: both walks land within the length tolerance of each other.
    for (std::size_t i = 0; i < c.Queries.size(); i += 10) {
      const TPoint2D ours = c.Ours.EvalPoint(c.Ours.ParamOfLength(c.Queries[i], DefTol));
      if (ours.DistanceTo(OcctWalk(c, c.Queries[i])) > 10 * WalkTol)
        throw std::runtime_error("walk " + std::to_string(i) + ": OCCT and ours land apart");
    }
    return owned;
  }();
  return *chain;
}

void BM_Orvane_CompositeWalk(benchmark::State& State) {
  const TChain& c = Chain();
  for (auto _ : State) {
    double sum = 0.0;
    for (const double s : c.Queries) sum += c.Ours.EvalPoint(c.Ours.ParamOfLength(s, DefTol)).X;
    benchmark::DoNotOptimize(sum);
  }
  State.SetItemsProcessed(State.iterations() * WalkCount);
}

void BM_Occt_AbscissaPoint(benchmark::State& State) {
  const TChain& c = Chain();
  for (auto _ : State) {
    double sum = 0.0;
    for (const double s : c.Queries) sum += OcctWalk(c, s).X;
    benchmark::DoNotOptimize(sum);
  }
  State.SetItemsProcessed(State.iterations() * WalkCount);
}

// ---- nearest point on a long polyline --------------------------------------------------------

struct TGeosContext {
  GEOSContextHandle_t Ctx = GEOS_init_r();
  TGeosContext() = default;
  TGeosContext(const TGeosContext&) = delete;
  TGeosContext& operator=(const TGeosContext&) = delete;
  ~TGeosContext() { GEOS_finish_r(Ctx); }
};

struct TNearest {
  TGeosContext Geos;
  std::unique_ptr<orvane::TGePolyline2D> Ours;
  GEOSGeometry* Line = nullptr;
  std::vector<TPoint2D> Queries;
  std::vector<GEOSGeometry*> GeosQueries;
};

const TNearest& Nearest() {
  static const std::unique_ptr<TNearest> n = [] {
    auto owned = std::make_unique<TNearest>();
    TNearest& r = *owned;
    std::mt19937_64 rng(0x9e05);
    std::uniform_real_distribution<double> step(-1.0, 1.0);
    orvane::TDynPoints2D pts{{0, 0}};
    for (int i = 1; i < VertexCount; ++i) pts.push_back(pts.back() + TPoint2D(1.0 + step(rng), 3.0 * step(rng)));
    r.Ours = std::make_unique<orvane::TGePolyline2D>(pts);
    GEOSCoordSequence* seq = GEOSCoordSeq_create_r(r.Geos.Ctx, static_cast<unsigned>(pts.size()), 2);
    for (std::size_t i = 0; i < pts.size(); ++i)
      GEOSCoordSeq_setXY_r(r.Geos.Ctx, seq, static_cast<unsigned>(i), pts[i].X, pts[i].Y);
    r.Line = GEOSGeom_createLineString_r(r.Geos.Ctx, seq);
    const orvane::TRect2D box = r.Ours->BoundBlock();
    std::uniform_real_distribution<double> x(box.XMin, box.XMax);
    std::uniform_real_distribution<double> y(box.YMin, box.YMax);
    for (int i = 0; i < NearestCount; ++i) {
      r.Queries.emplace_back(x(rng), y(rng));
      r.GeosQueries.push_back(GEOSGeom_createPointFromXY_r(r.Geos.Ctx, r.Queries.back().X, r.Queries.back().Y));
    }
    for (int i = 0; i < NearestCount; i += 10) {
      double t = 0.0;
      r.Ours->GetClosedPointTo(r.Queries[static_cast<std::size_t>(i)], DefTol, t);
      const double along = GEOSProject_r(r.Geos.Ctx, r.Line, r.GeosQueries[static_cast<std::size_t>(i)]);
      if (std::fabs(r.Ours->LengthAt(t) - along) > 1e-6)
        throw std::runtime_error("query " + std::to_string(i) + ": GEOS and ours project apart");
    }
    return owned;
  }();
  return *n;
}

void BM_Orvane_PolylineNearest(benchmark::State& State) {
  const TNearest& n = Nearest();
  for (auto _ : State) {
    double sum = 0.0;
    for (const TPoint2D& q : n.Queries) {
      double t = 0.0;
      n.Ours->GetClosedPointTo(q, DefTol, t);
      sum += t;
    }
    benchmark::DoNotOptimize(sum);
  }
  State.SetItemsProcessed(State.iterations() * NearestCount);
}

void BM_Geos_Project(benchmark::State& State) {
  const TNearest& n = Nearest();
  for (auto _ : State) {
    double sum = 0.0;
    for (GEOSGeometry* q : n.GeosQueries) sum += GEOSProject_r(n.Geos.Ctx, n.Line, q);
    benchmark::DoNotOptimize(sum);
  }
  State.SetItemsProcessed(State.iterations() * NearestCount);
}

// ---- line against cubic -------------------------------------------------------------------

struct TCubics {
  std::vector<std::unique_ptr<orvane::TGeLine2D>> Lines;
  std::vector<std::unique_ptr<orvane::TGeBezier2D>> Beziers;
  std::vector<Handle(Geom2d_Curve)> OcctLines;
  std::vector<Handle(Geom2d_Curve)> OcctBeziers;
  int Crossings = 0;
};

const TCubics& Cubics() {
  static const std::unique_ptr<TCubics> c = [] {
    auto owned = std::make_unique<TCubics>();
    TCubics& r = *owned;
    std::mt19937_64 rng(0xb3e);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int i = 0; i < CubicPairs; ++i) {
      const orvane::TBezierSegment2D b(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)),
                                       TPoint2D(u(rng), u(rng)));
      const TPoint2D s(u(rng), u(rng));
      const TPoint2D e(u(rng), u(rng));
      r.Beziers.push_back(std::make_unique<orvane::TGeBezier2D>(b));
      r.Lines.push_back(std::make_unique<orvane::TGeLine2D>(s, e));
      r.OcctBeziers.push_back(OcctBezier(b));
      r.OcctLines.push_back(GCE2d_MakeSegment(gp_Pnt2d(s.X, s.Y), gp_Pnt2d(e.X, e.Y)).Value());
    }
    orvane::TList<orvane::TIntersect2D> inters;
    for (int i = 0; i < CubicPairs; ++i) {
      const auto k = static_cast<std::size_t>(i);
      inters.Clear();
      const int n = r.Lines[k]->IntersectCurve(*r.Beziers[k], inters, DefTol);
      Geom2dAPI_InterCurveCurve occt(r.OcctLines[k], r.OcctBeziers[k], 1e-9);
      if (n != occt.NbPoints()) throw std::runtime_error("pair " + std::to_string(i) + ": crossing counts differ");
      for (const orvane::TIntersect2D& hit : inters) {
        double best = 1e300;
        for (int j = 1; j <= occt.NbPoints(); ++j)
          best = std::min(best, hit.InterThis.Point().DistanceTo(TPoint2D(occt.Point(j).X(), occt.Point(j).Y())));
        if (best > 1e-7) throw std::runtime_error("pair " + std::to_string(i) + ": crossings differ");
      }
      r.Crossings += n;
    }
    if (r.Crossings < CubicPairs / 10) throw std::runtime_error("too few crossings to measure");
    return owned;
  }();
  return *c;
}

void BM_Orvane_LineCubic(benchmark::State& State) {
  const TCubics& c = Cubics();
  orvane::TList<orvane::TIntersect2D> inters;
  for (auto _ : State) {
    int total = 0;
    for (std::size_t i = 0; i < c.Lines.size(); ++i) {
      inters.Clear();
      total += c.Lines[i]->IntersectCurve(*c.Beziers[i], inters, DefTol);
    }
    benchmark::DoNotOptimize(total);
  }
  State.SetItemsProcessed(State.iterations() * CubicPairs);
  State.counters["crossings"] = c.Crossings;
}

void BM_Occt_InterCurveCurve(benchmark::State& State) {
  const TCubics& c = Cubics();
  for (auto _ : State) {
    int total = 0;
    for (std::size_t i = 0; i < c.OcctLines.size(); ++i) {
      Geom2dAPI_InterCurveCurve inter(c.OcctLines[i], c.OcctBeziers[i], 1e-9);
      total += inter.NbPoints();
    }
    benchmark::DoNotOptimize(total);
  }
  State.SetItemsProcessed(State.iterations() * CubicPairs);
  State.counters["crossings"] = c.Crossings;
}

}  // namespace

BENCHMARK(BM_Orvane_CompositeWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_AbscissaPoint)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_PolylineNearest)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_Project)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_LineCubic)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_InterCurveCurve)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
