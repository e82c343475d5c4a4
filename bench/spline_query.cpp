// Spline queries against SISL and OCCT in the same run: the nearest point on smooth rational
// cubics of 20, 100 and 1,000 control points (SISL s1953, OCCT
// Geom2dAPI_ProjectPointOnCurve), the length of the 1,000-point one (OCCT
// GCPnts_AbscissaPoint::Length at the accuracy ours reaches), and chord sampling of the real
// drawings' splines at 0.01 (OCCT GCPnts_QuasiUniformDeflection). Before timing, the sides
// are checked to agree: the same nearest distances, lengths within 1e-9, and our samples
// within the error and no more of them than OCCT's.

#include <benchmark/benchmark.h>

#include <GCPnts_AbscissaPoint.hxx>
#include <GCPnts_QuasiUniformDeflection.hxx>
#include <Geom2dAPI_ProjectPointOnCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <cmath>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/foundation/GeTolerance.h"
#include "orvane/splines/GeSpline2D.h"
#include "splines/DxfSplines.h"

extern "C" {
#include <sisl.h>
}

namespace {

using orvane::TGeSpline2D;
using orvane::TPoint2D;

constexpr int QueryCount = 200;

// One spline on all three sides.
struct TTriple {
  std::unique_ptr<TGeSpline2D> Ours;
  SISLCurve* Sisl = nullptr;
  Handle(Geom2d_BSplineCurve) Occt;

  TTriple(int Degree, const orvane::TDynPoints2D& Pts, const std::vector<double>& W, const std::vector<double>& Knots) {
    const int n = static_cast<int>(Pts.size());
    Ours = std::make_unique<TGeSpline2D>(n, Degree);
    std::vector<double> coef, knots = Knots;
    TColgp_Array1OfPnt2d poles(1, n);
    TColStd_Array1OfReal weights(1, n);
    for (int i = 0; i < n; ++i) {
      const TPoint2D p = Pts[std::size_t(i)];
      const double w = W[std::size_t(i)];
      Ours->SetCtrlPoint(i, p);
      Ours->SetWeight(i, w);
      coef.insert(coef.end(), {p.X * w, p.Y * w, w});
      poles(i + 1) = gp_Pnt2d(p.X, p.Y);
      weights(i + 1) = w;
    }
    for (int i = 0; i < static_cast<int>(Knots.size()); ++i) Ours->SetKnots(i, Knots[std::size_t(i)]);
    Sisl = newCurve(n, Degree + 1, knots.data(), coef.data(), 2, 2, 1);
    std::vector<double> distinct;
    std::vector<int> mults;
    for (const double k : Knots) {
      if (!distinct.empty() && distinct.back() == k) {
        ++mults.back();
      } else {
        distinct.push_back(k);
        mults.push_back(1);
      }
    }
    TColStd_Array1OfReal k(1, static_cast<int>(distinct.size()));
    TColStd_Array1OfInteger m(1, static_cast<int>(distinct.size()));
    for (std::size_t i = 0; i < distinct.size(); ++i) {
      k(int(i) + 1) = distinct[i];
      m(int(i) + 1) = mults[i];
    }
    Occt = new Geom2d_BSplineCurve(poles, weights, k, m, Degree);
  }
  TTriple(const TTriple&) = delete;
  TTriple& operator=(const TTriple&) = delete;
  ~TTriple() { freeCurve(Sisl); }
};

// A smooth rational cubic winding over a 100 x 100 field: control points on a random walk.
std::unique_ptr<TTriple> Winding(int Count) {
  std::mt19937_64 rng{static_cast<std::uint64_t>(Count)};
  std::uniform_real_distribution<double> turn(-0.6, 0.6), weight(0.5, 2.0);
  orvane::TDynPoints2D pts;
  std::vector<double> w, knots;
  double a = 0.0;
  TPoint2D p(0, 0);
  const double step = 100.0 / std::sqrt(double(Count));
  for (int i = 0; i < Count; ++i) {
    pts.push_back(p);
    w.push_back(weight(rng));
    a += turn(rng);
    p = p + TPoint2D(std::cos(a), std::sin(a)) * step;
  }
  for (int i = 0; i < Count + 4; ++i) knots.push_back(std::min(std::max(i - 3, 0), Count - 3));
  return std::make_unique<TTriple>(3, pts, w, knots);
}

struct TQueries {
  std::vector<std::unique_ptr<TTriple>> Curves;
  std::vector<std::vector<TPoint2D>> Points;
  TQueries() {
    for (const int n : {20, 100, 1000}) {
      Curves.push_back(Winding(n));
      const orvane::TRect2D box = Curves.back()->Ours->GetRoughBoundBlock();
      std::mt19937_64 rng{static_cast<std::uint64_t>(n) + 1};
      std::uniform_real_distribution<double> x(box.XMin, box.XMax), y(box.YMin, box.YMax);
      Points.emplace_back();
      for (int i = 0; i < QueryCount; ++i) Points.back().push_back({x(rng), y(rng)});
      Check(Curves.back().get(), Points.back());
    }
  }
  static double SislNearest(SISLCurve* C, const TPoint2D& Q) {
    double pt[2] = {Q.X, Q.Y}, *pars = nullptr;
    int npar = 0, ncr = 0, stat = 0;
    SISLIntcurve** crv = nullptr;
    s1953(C, pt, 2, 1e-15, 1e-9, &npar, &pars, &ncr, &crv, &stat);
    double best = 1e300;
    for (int i = 0; i < npar; ++i) {
      int left = 0, st = 0;
      double out[2];
      s1221(C, 0, pars[i], &left, out, &st);
      best = std::min(best, std::hypot(out[0] - Q.X, out[1] - Q.Y));
    }
    if (pars) free(pars);
    if (crv) freeIntcrvlist(crv, ncr);
    return best;
  }
  static double OcctNearest(const Handle(Geom2d_BSplineCurve) & C, const TPoint2D& Q) {
    Geom2dAPI_ProjectPointOnCurve proj(gp_Pnt2d(Q.X, Q.Y), C);
    double best = std::min(C->StartPoint().Distance(gp_Pnt2d(Q.X, Q.Y)), C->EndPoint().Distance(gp_Pnt2d(Q.X, Q.Y)));
    return proj.NbPoints() > 0 ? std::min(best, proj.LowerDistance()) : best;
  }
  static void Check(const TTriple* T, const std::vector<TPoint2D>& Pts) {
    for (const TPoint2D& q : Pts) {
      double u = 0;
      const double ours = T->Ours->GetClosedPointTo(q, orvane::DefTol, u).DistanceTo(q);
      const double sisl = SislNearest(T->Sisl, q), occt = OcctNearest(T->Occt, q);
      if (ours > sisl + 1e-9 || ours > occt + 1e-9)
        throw std::runtime_error("nearest distances differ: " + std::to_string(ours) + " sisl " + std::to_string(sisl) +
                                 " occt " + std::to_string(occt));
    }
  }
};

const TQueries& Queries() {
  static const TQueries q;
  return q;
}

void BM_Orvane_Nearest(benchmark::State& State) {
  const TQueries& q = Queries();
  const std::size_t k = std::size_t(State.range(0));
  const TGeSpline2D& s = *q.Curves[k]->Ours;
  for (auto _ : State) {
    for (const TPoint2D& p : q.Points[k]) {
      double u = 0;
      benchmark::DoNotOptimize(s.GetClosedPointTo(p, orvane::DefTol, u));
    }
  }
  State.SetItemsProcessed(State.iterations() * QueryCount);
}

void BM_Sisl_s1953(benchmark::State& State) {
  const TQueries& q = Queries();
  const std::size_t k = std::size_t(State.range(0));
  for (auto _ : State)
    for (const TPoint2D& p : q.Points[k]) benchmark::DoNotOptimize(TQueries::SislNearest(q.Curves[k]->Sisl, p));
  State.SetItemsProcessed(State.iterations() * QueryCount);
}

void BM_Occt_ProjectPointOnCurve(benchmark::State& State) {
  const TQueries& q = Queries();
  const std::size_t k = std::size_t(State.range(0));
  for (auto _ : State)
    for (const TPoint2D& p : q.Points[k]) benchmark::DoNotOptimize(TQueries::OcctNearest(q.Curves[k]->Occt, p));
  State.SetItemsProcessed(State.iterations() * QueryCount);
}

// Length of the 1,000-point spline, paid in full each time (no kept pieces).
constexpr double OcctLengthTol = 1e-9;

void CheckLength() {
  const TTriple& t = *Queries().Curves[2];
  Geom2dAdaptor_Curve a(t.Occt);
  const double ref = GCPnts_AbscissaPoint::Length(a, 1e-14);
  const double occt = GCPnts_AbscissaPoint::Length(a, OcctLengthTol);
  t.Ours->Invalidate();
  const double ours = t.Ours->GetCurveLength();
  if (std::fabs(ours - ref) > 1e-9 * ref || std::fabs(occt - ref) > 1e-9 * ref)
    throw std::runtime_error("lengths differ: ours " + std::to_string(ours) + " occt " + std::to_string(occt));
}

void BM_Orvane_Length(benchmark::State& State) {
  CheckLength();
  const TGeSpline2D& s = *Queries().Curves[2]->Ours;
  for (auto _ : State) {
    s.GetCurveLength();
    const_cast<TGeSpline2D&>(s).Invalidate();
  }
}

void BM_Occt_AbscissaPointLength(benchmark::State& State) {
  CheckLength();
  Geom2dAdaptor_Curve a(Queries().Curves[2]->Occt);
  for (auto _ : State) benchmark::DoNotOptimize(GCPnts_AbscissaPoint::Length(a, OcctLengthTol));
}

// The 243 splines of the laser4diy drawings.
struct TDrawings {
  std::vector<std::unique_ptr<TTriple>> Curves;
  std::size_t OursCount = 0, OcctCount = 0;
  TDrawings() {
    const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "curves";
    for (const auto& e : std::filesystem::directory_iterator(dir)) {
      if (e.path().filename().string().rfind("laser4diy", 0) != 0 || e.path().extension() != ".dxf") continue;
      for (const orvane::testing::TDxfSpline& d : orvane::testing::ReadDxfSplines(e.path())) {
        std::vector<double> w = d.Weights;
        if (w.empty()) w.assign(d.Pts.size(), 1.0);
        Curves.push_back(std::make_unique<TTriple>(d.Degree, d.Pts, w, d.Knots));
      }
    }
    if (Curves.size() != 243) throw std::runtime_error("expected 243 drawing splines");
    for (const auto& c : Curves) {
      orvane::TDynPoints2D pts;
      orvane::TFloatDynArray params;
      OursCount += std::size_t(c->Ours->GetSamplePointsByChord(0.01, pts, params));
      for (std::size_t i = 1; i < pts.size(); ++i) {
        const TPoint2D m = c->Ours->EvalPoint(0.5 * (params[i - 1] + params[i]));
        const TPoint2D a = pts[i - 1], b = pts[i];
        if (std::fabs((b - a).CrossMul(m - a)) / a.DistanceTo(b) > 0.01) throw std::runtime_error("chord error");
      }
      Geom2dAdaptor_Curve a(c->Occt);
      GCPnts_QuasiUniformDeflection q(a, 0.01);
      OcctCount += std::size_t(q.NbPoints());
    }
    if (OursCount > OcctCount)
      throw std::runtime_error("more points than OCCT: " + std::to_string(OursCount) + " vs " + std::to_string(OcctCount));
  }
};

const TDrawings& Drawings() {
  static const TDrawings d;
  return d;
}

void BM_Orvane_ChordSamples(benchmark::State& State) {
  const TDrawings& d = Drawings();
  orvane::TDynPoints2D pts;
  orvane::TFloatDynArray params;
  for (auto _ : State) {
    for (const auto& c : d.Curves) {
      c->Ours->Invalidate();
      benchmark::DoNotOptimize(c->Ours->GetSamplePointsByChord(0.01, pts, params));
    }
  }
  State.counters["points"] = double(d.OursCount);
}

void BM_Occt_QuasiUniformDeflection(benchmark::State& State) {
  const TDrawings& d = Drawings();
  for (auto _ : State) {
    for (const auto& c : d.Curves) {
      Geom2dAdaptor_Curve a(c->Occt);
      GCPnts_QuasiUniformDeflection q(a, 0.01);
      benchmark::DoNotOptimize(q.NbPoints());
    }
  }
  State.counters["points"] = double(d.OcctCount);
}

}  // namespace

BENCHMARK(BM_Orvane_Nearest)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Sisl_s1953)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Occt_ProjectPointOnCurve)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Orvane_Length)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Occt_AbscissaPointLength)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Orvane_ChordSamples)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Occt_QuasiUniformDeflection)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
