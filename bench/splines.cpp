// Rational B-spline evaluation and Bezier decomposition against SISL and OCCT, the spline
// libraries a user would pick instead, on one 1,000-control-point rational cubic in the same
// run. Before anything is timed the three sides are checked to give the same points,
// derivatives and Bezier pieces.

#include <benchmark/benchmark.h>

#include <Geom2dConvert_BSplineCurveToBezierCurve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

#include "orvane/splines/GeSpline2D.h"

extern "C" {
#include <sisl.h>
}

namespace {

using orvane::TGeSpline2D;
using orvane::TPoint2D;

constexpr int CtrlCount = 1000;
constexpr int Degree = 3;
constexpr int EvalCount = 1000000;

struct TInputs {
  std::unique_ptr<TGeSpline2D> Ours;
  SISLCurve* Sisl = nullptr;
  Handle(Geom2d_BSplineCurve) Occt;
  std::vector<double> Params;

  TInputs() {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> coord(-100, 100), weight(0.5, 2.0);
    Ours = std::make_unique<TGeSpline2D>(CtrlCount, Degree);
    std::vector<double> knots, coef;
    for (int i = 0; i < CtrlCount + Degree + 1; ++i) {
      const double k = std::min(std::max(i - Degree, 0), CtrlCount - Degree);
      knots.push_back(k);
      Ours->SetKnots(i, k);
    }
    TColgp_Array1OfPnt2d poles(1, CtrlCount);
    TColStd_Array1OfReal weights(1, CtrlCount);
    for (int i = 0; i < CtrlCount; ++i) {
      const TPoint2D p(coord(rng), coord(rng));
      const double w = weight(rng);
      Ours->SetCtrlPoint(i, p);
      Ours->SetWeight(i, w);
      coef.insert(coef.end(), {p.X * w, p.Y * w, w});
      poles(i + 1) = gp_Pnt2d(p.X, p.Y);
      weights(i + 1) = w;
    }
    Sisl = newCurve(CtrlCount, Degree + 1, knots.data(), coef.data(), 2, 2, 1);
    const int distinct = CtrlCount - Degree + 1;
    TColStd_Array1OfReal k(1, distinct);
    TColStd_Array1OfInteger m(1, distinct);
    for (int i = 0; i < distinct; ++i) {
      k(i + 1) = i;
      m(i + 1) = (i == 0 || i == distinct - 1) ? Degree + 1 : 1;
    }
    Occt = new Geom2d_BSplineCurve(poles, weights, k, m, Degree);
    std::uniform_real_distribution<double> u(0.0, CtrlCount - Degree);
    for (int i = 0; i < EvalCount; ++i) Params.push_back(u(rng));
    Check();
  }
  ~TInputs() { freeCurve(Sisl); }

  void Check() const {
    for (int i = 0; i < 10000; ++i) {
      const double t = Params[static_cast<std::size_t>(i)];
      TPoint2D d;
      const TPoint2D p = Ours->EvalPoint(t, d);
      int left = 0, stat = 0;
      double s[4];
      s1221(Sisl, 1, t, &left, s, &stat);
      gp_Pnt2d po;
      gp_Vec2d vo;
      Occt->D1(t, po, vo);
      const double scale = 1e-10 * (p.Mag() + d.Mag() + 100);
      if (std::hypot(p.X - s[0], p.Y - s[1]) > scale || std::hypot(d.X - s[2], d.Y - s[3]) > scale ||
          std::hypot(p.X - po.X(), p.Y - po.Y()) > scale || std::hypot(d.X - vo.X(), d.Y - vo.Y()) > scale)
        throw std::runtime_error("the spline evaluations differ");
    }
    const orvane::TPoint3DLists pieces = Ours->DecomposeCurveW();
    SISLCurve* bez = nullptr;
    int stat = 0;
    s1730(Sisl, &bez, &stat);
    if (stat < 0 || bez == nullptr || bez->in != static_cast<int>(pieces.size()) * (Degree + 1))
      throw std::runtime_error("the Bezier piece counts differ");
    for (std::size_t k = 0; k < pieces.size(); ++k)
      for (std::size_t j = 0; j <= Degree; ++j) {
        const double* c = bez->rcoef + 3 * (k * (Degree + 1) + j);
        const orvane::TPoint3D& q = pieces[k][j];
        if (std::fabs(q.X - c[0]) + std::fabs(q.Y - c[1]) + std::fabs(q.Z - c[2]) > 1e-10)
          throw std::runtime_error("the Bezier pieces differ");
      }
    freeCurve(bez);
  }
};

const TInputs& Inputs() {
  static const TInputs inputs;
  return inputs;
}

void BM_Orvane_EvalPoint(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State)
    for (const double t : in.Params) benchmark::DoNotOptimize(in.Ours->EvalPoint(t));
  State.SetItemsProcessed(State.iterations() * EvalCount);
}

void BM_Sisl_s1221(benchmark::State& State) {
  const TInputs& in = Inputs();
  const int ider = static_cast<int>(State.range(0));
  for (auto _ : State) {
    int left = 0, stat = 0;
    double s[4];
    for (const double t : in.Params) {
      s1221(in.Sisl, ider, t, &left, s, &stat);
      benchmark::DoNotOptimize(s);
    }
  }
  State.SetItemsProcessed(State.iterations() * EvalCount);
}

void BM_Occt_D0(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State)
    for (const double t : in.Params) {
      gp_Pnt2d p;
      in.Occt->D0(t, p);
      benchmark::DoNotOptimize(p);
    }
  State.SetItemsProcessed(State.iterations() * EvalCount);
}

void BM_Orvane_EvalPointDeriv(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State)
    for (const double t : in.Params) {
      TPoint2D d;
      benchmark::DoNotOptimize(in.Ours->EvalPoint(t, d));
      benchmark::DoNotOptimize(d);
    }
  State.SetItemsProcessed(State.iterations() * EvalCount);
}

void BM_Occt_D1(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State)
    for (const double t : in.Params) {
      gp_Pnt2d p;
      gp_Vec2d v;
      in.Occt->D1(t, p, v);
      benchmark::DoNotOptimize(p);
      benchmark::DoNotOptimize(v);
    }
  State.SetItemsProcessed(State.iterations() * EvalCount);
}

void BM_Orvane_Decompose(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State) benchmark::DoNotOptimize(in.Ours->DecomposeCurveW());
}

void BM_Sisl_s1730(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State) {
    SISLCurve* bez = nullptr;
    int stat = 0;
    s1730(in.Sisl, &bez, &stat);
    benchmark::DoNotOptimize(bez);
    freeCurve(bez);
  }
}

void BM_Occt_BezierConversion(benchmark::State& State) {
  const TInputs& in = Inputs();
  for (auto _ : State) {
    Geom2dConvert_BSplineCurveToBezierCurve conv(in.Occt);
    benchmark::DoNotOptimize(conv.NbArcs());
  }
}

}  // namespace

BENCHMARK(BM_Orvane_EvalPoint)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sisl_s1221)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_D0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_EvalPointDeriv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sisl_s1221)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_D1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Orvane_Decompose)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Sisl_s1730)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Occt_BezierConversion)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
