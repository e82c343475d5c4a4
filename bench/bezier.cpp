// Cubic Bezier queries against OCCT, the CAD kernel a user would pick instead, on the same
// random cubics in the same run: arc length, nearest point, exact box, and crossings of two
// cubics (pairs that cross, and pairs whose boxes lie apart).
//
// Inputs are built once, outside the timed loops, with OCCT's curve objects made up front as
// a user holding the curves would have them. Before anything is timed the two sides are
// checked to give the same answers; the length check also measures both sides' error
// against a fine composite Gauss rule and reports it in the counters.

#include <benchmark/benchmark.h>

#include <Bnd_Box2d.hxx>
#include <BndLib_Add2dCurve.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <Geom2dAPI_InterCurveCurve.hxx>
#include <Geom2dAPI_ProjectPointOnCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/algorithms/GeometryUtils.h"
#include "orvane/foundation/BezierSegment2D.h"

namespace {

using orvane::TBezierSegment2D;
using orvane::TPoint2D;

constexpr int CurveCount = 100000;
constexpr int PairCount = 1000;
constexpr double Tol = 1e-6;
// OCCT's length with a tolerance: its adaptive integration, the accuracy-matched peer. Its
// plain form (no tolerance) is a fixed rule that is far off on cusps and loops.
constexpr double LengthTol = 1e-10;

Handle(Geom2d_BezierCurve) ToOcct(const TBezierSegment2D& B) {
  TColgp_Array1OfPnt2d poles(1, 4);
  poles.SetValue(1, gp_Pnt2d(B.P0.X, B.P0.Y));
  poles.SetValue(2, gp_Pnt2d(B.P1.X, B.P1.Y));
  poles.SetValue(3, gp_Pnt2d(B.P2.X, B.P2.Y));
  poles.SetValue(4, gp_Pnt2d(B.P3.X, B.P3.Y));
  return new Geom2d_BezierCurve(poles);
}

TBezierSegment2D RandomCubic(std::mt19937_64& Rng, const TPoint2D& Offset = TPoint2D(0, 0)) {
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  return {Offset + TPoint2D(u(Rng), u(Rng)), Offset + TPoint2D(u(Rng), u(Rng)), Offset + TPoint2D(u(Rng), u(Rng)),
          Offset + TPoint2D(u(Rng), u(Rng))};
}

// The arc length by a 16-point Gauss rule on 4096 equal panels: slow, independent of both
// sides, and exact to about 1e-13 also across cusps (the kink costs one panel's error).
double ReferenceLength(const TBezierSegment2D& B) {
  static const double x[8] = {0.0950125098376374, 0.2816035507792589, 0.4580167776572274, 0.6178762444026438,
                              0.7554044083550030, 0.8656312023878318, 0.9445750230732326, 0.9894009349916499};
  static const double w[8] = {0.1894506104550685, 0.1826034150449236, 0.1691565193950025, 0.1495959888165767,
                              0.1246289712555339, 0.0951585116824928, 0.0622535239386479, 0.0271524594117541};
  auto speed = [&](double t) {
    TPoint2D d;
    B.EvalPoint(t, d);
    return d.Mag();
  };
  constexpr int panels = 4096;
  double sum = 0.0;
  for (int p = 0; p < panels; ++p) {
    const double h = 0.5 / panels, mid = (p + 0.5) / panels;
    for (int k = 0; k < 8; ++k) sum += h * w[k] * (speed(mid - h * x[k]) + speed(mid + h * x[k]));
  }
  return sum;
}

struct TCurves {
  std::vector<TBezierSegment2D> Ours;
  std::vector<Handle(Geom2d_BezierCurve)> Occt;
  std::vector<TPoint2D> Queries;
  double OurLengthError = 0.0, OcctLengthError = 0.0, OcctTolLengthError = 0.0;
};

const TCurves& Curves() {
  static const TCurves curves = [] {
    TCurves c;
    std::mt19937_64 rng(18);
    std::uniform_real_distribution<double> u(-15.0, 15.0);
    for (int i = 0; i < CurveCount; ++i) {
      c.Ours.push_back(RandomCubic(rng));
      c.Occt.push_back(ToOcct(c.Ours.back()));
      c.Queries.emplace_back(u(rng), u(rng));
    }
    // Same answers: lengths (with both errors against the reference), nearest distances,
    // boxes, on the first thousand.
    for (int i = 0; i < 1000; ++i) {
      const TBezierSegment2D& b = c.Ours[static_cast<std::size_t>(i)];
      const Handle(Geom2d_BezierCurve)& o = c.Occt[static_cast<std::size_t>(i)];
      const double ref = ReferenceLength(b);
      Geom2dAdaptor_Curve adaptor(o);
      c.OurLengthError = std::max(c.OurLengthError, std::fabs(b.CurveLength(14) - ref) / ref);
      c.OcctLengthError = std::max(c.OcctLengthError, std::fabs(GCPnts_AbscissaPoint::Length(adaptor) - ref) / ref);
      c.OcctTolLengthError =
          std::max(c.OcctTolLengthError, std::fabs(GCPnts_AbscissaPoint::Length(adaptor, LengthTol) - ref) / ref);
      const TPoint2D q = c.Queries[static_cast<std::size_t>(i)];
      double t;
      TPoint2D n;
      const double ours = b.DistanceTo(q, orvane::DefTol, t, n);
      Geom2dAPI_ProjectPointOnCurve proj(gp_Pnt2d(q.X, q.Y), o);
      double theirs = std::min(q.DistanceTo(b.P0), q.DistanceTo(b.P3));
      if (proj.NbPoints() > 0) theirs = std::min(theirs, proj.LowerDistance());
      if (ours > theirs + 1e-9) throw std::runtime_error("nearest point: ours is further than OCCT's");
      const orvane::TRect2D box = b.GetBoundBox();
      Bnd_Box2d obox;
      BndLib_Add2dCurve::AddOptimal(o, 0.0, 1.0, 0.0, obox);
      double x0, y0, x1, y1;
      obox.Get(x0, y0, x1, y1);
      if (std::fabs(box.XMin - x0) > 1e-6 || std::fabs(box.XMax - x1) > 1e-6 || std::fabs(box.YMin - y0) > 1e-6 ||
          std::fabs(box.YMax - y1) > 1e-6)
        throw std::runtime_error("boxes differ");
    }
    return c;
  }();
  return curves;
}

void BM_Orvane_Length(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(c.Ours[i].CurveLength(14));
    i = (i + 1) % c.Ours.size();
  }
  State.counters["max_rel_error"] = c.OurLengthError;
}

void BM_Occt_Length(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    Geom2dAdaptor_Curve adaptor(c.Occt[i]);
    benchmark::DoNotOptimize(GCPnts_AbscissaPoint::Length(adaptor));
    i = (i + 1) % c.Occt.size();
  }
  State.counters["max_rel_error"] = c.OcctLengthError;
}

void BM_Occt_LengthWithTolerance(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    Geom2dAdaptor_Curve adaptor(c.Occt[i]);
    benchmark::DoNotOptimize(GCPnts_AbscissaPoint::Length(adaptor, LengthTol));
    i = (i + 1) % c.Occt.size();
  }
  State.counters["max_rel_error"] = c.OcctTolLengthError;
}

void BM_Orvane_NearestPoint(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    double t;
    TPoint2D n;
    benchmark::DoNotOptimize(c.Ours[i].DistanceTo(c.Queries[i], orvane::DefTol, t, n));
    i = (i + 1) % c.Ours.size();
  }
}

void BM_Occt_NearestPoint(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    Geom2dAPI_ProjectPointOnCurve proj(gp_Pnt2d(c.Queries[i].X, c.Queries[i].Y), c.Occt[i]);
    benchmark::DoNotOptimize(proj.NbPoints() > 0 ? proj.LowerDistance() : 0.0);
    i = (i + 1) % c.Occt.size();
  }
}

void BM_Orvane_ExactBox(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(c.Ours[i].GetBoundBox());
    i = (i + 1) % c.Ours.size();
  }
}

void BM_Occt_ExactBox(benchmark::State& State) {
  const TCurves& c = Curves();
  std::size_t i = 0;
  for (auto _ : State) {
    Bnd_Box2d box;
    BndLib_Add2dCurve::AddOptimal(c.Occt[i], 0.0, 1.0, 0.0, box);
    benchmark::DoNotOptimize(box);
    i = (i + 1) % c.Occt.size();
  }
}

struct TPairs {
  std::vector<TBezierSegment2D> A, B;
  std::vector<Handle(Geom2d_BezierCurve)> OA, OB;
};

// Crossing pairs: random pairs that OCCT finds crossing, each crossing matched by ours.
// Disjoint pairs: the second cubic moved 30 units away, so the boxes lie apart.
const TPairs& Pairs(bool Crossing) {
  static const auto build = [](bool crossing) {
    TPairs p;
    std::mt19937_64 rng(crossing ? 5 : 6);
    while (static_cast<int>(p.A.size()) < PairCount) {
      const TBezierSegment2D a = RandomCubic(rng);
      const TBezierSegment2D b = RandomCubic(rng, crossing ? TPoint2D(0, 0) : TPoint2D(30, 0));
      const Handle(Geom2d_BezierCurve) oa = ToOcct(a), ob = ToOcct(b);
      Geom2dAPI_InterCurveCurve inter(oa, ob, Tol);
      orvane::TList<TPoint2D> pts;
      orvane::TList<orvane::TLine2D> lines;
      orvane::TList<TBezierSegment2D> beziers;
      orvane::TGeometryUtils::BezierCrossWithBezier(a, b, Tol, pts, lines, beziers);
      if (crossing && inter.NbPoints() == 0) continue;
      for (int k = 1; k <= inter.NbPoints(); ++k) {
        double best = 1e300;
        for (const TPoint2D& q : pts) best = std::min(best, q.DistanceTo(TPoint2D(inter.Point(k).X(), inter.Point(k).Y())));
        if (best > 2 * Tol) throw std::runtime_error("a crossing that OCCT finds is missing");
      }
      p.A.push_back(a);
      p.B.push_back(b);
      p.OA.push_back(oa);
      p.OB.push_back(ob);
    }
    return p;
  };
  static const TPairs crossing = build(true), disjoint = build(false);
  return Crossing ? crossing : disjoint;
}

void BM_Orvane_CubicCrossings(benchmark::State& State) {
  const TPairs& p = Pairs(State.range(0) != 0);
  std::size_t i = 0;
  orvane::TList<TPoint2D> pts;
  orvane::TList<orvane::TLine2D> lines;
  orvane::TList<TBezierSegment2D> beziers;
  for (auto _ : State) {
    pts.Clear();
    benchmark::DoNotOptimize(orvane::TGeometryUtils::BezierCrossWithBezier(p.A[i], p.B[i], Tol, pts, lines, beziers));
    i = (i + 1) % p.A.size();
  }
}

void BM_Occt_CubicCrossings(benchmark::State& State) {
  const TPairs& p = Pairs(State.range(0) != 0);
  std::size_t i = 0;
  for (auto _ : State) {
    Geom2dAPI_InterCurveCurve inter(p.OA[i], p.OB[i], Tol);
    benchmark::DoNotOptimize(inter.NbPoints());
    i = (i + 1) % p.A.size();
  }
}

}  // namespace

BENCHMARK(BM_Orvane_Length);
BENCHMARK(BM_Occt_Length);
BENCHMARK(BM_Occt_LengthWithTolerance);
BENCHMARK(BM_Orvane_NearestPoint);
BENCHMARK(BM_Occt_NearestPoint);
BENCHMARK(BM_Orvane_ExactBox);
BENCHMARK(BM_Occt_ExactBox);
// Argument 1: pairs that cross; 0: pairs whose boxes lie apart.
BENCHMARK(BM_Orvane_CubicCrossings)->Arg(1)->Arg(0);
BENCHMARK(BM_Occt_CubicCrossings)->Arg(1)->Arg(0);

BENCHMARK_MAIN();
