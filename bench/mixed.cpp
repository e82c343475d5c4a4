// Mixed outlines against OCCT, the CAD kernel a user would pick instead, on the same inputs
// in the same run:
// - a cubic turned into arcs (TCadBasicAlgo::Bezier2Arcs) against its flattening into
//   chords (GCPnts_QuasiUniformDeflection) at the same tolerance, 1e-2 to 1e-5 of the
//   cubic's size: time per cubic and elements per cubic, on random cubics and on the cubics
//   of the shared laser-cut drawings; OCCT once at the tolerance as its deflection, and once
//   at the deflection at which its chords actually hold the tolerance (equal accuracy);
// - the crossings of a 300-segment line-arc-Bezier outline with 10^3 segments
//   (TLABPolyline::CrossWithSegLine) against Geom2dAPI_InterCurveCurve over the pieces, with
//   each piece's box made up front so that OCCT skips the pieces a segment cannot meet.
//
// Before anything is timed both sides are checked: every sample of each cubic lies within
// the tolerance of our chain and of OCCT's chords (the largest deviations go to the
// counters), and both find the same number of crossings.

#include <benchmark/benchmark.h>

#include <Bnd_Box2d.hxx>
#include <BndLib_Add2dCurve.hxx>
#include <GCE2d_MakeArcOfCircle.hxx>
#include <GCE2d_MakeSegment.hxx>
#include <GCPnts_QuasiUniformDeflection.hxx>
#include <Geom2dAPI_InterCurveCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/mixed/LABPolyline.h"

namespace {

using orvane::TArc2D;
using orvane::TBezierSegment2D;
using orvane::TLABPolyline;
using orvane::TLABSegline;
using orvane::TLine2D;
using orvane::TPoint2D;

constexpr int CubicCount = 1000;

Handle(Geom2d_BezierCurve) ToOcct(const TBezierSegment2D& B) {
  TColgp_Array1OfPnt2d poles(1, 4);
  poles.SetValue(1, gp_Pnt2d(B.P0.X, B.P0.Y));
  poles.SetValue(2, gp_Pnt2d(B.P1.X, B.P1.Y));
  poles.SetValue(3, gp_Pnt2d(B.P2.X, B.P2.Y));
  poles.SetValue(4, gp_Pnt2d(B.P3.X, B.P3.Y));
  return new Geom2d_BezierCurve(poles);
}

double Size(const TBezierSegment2D& B) {
  const orvane::TRect2D box = B.GetBoundBox();
  return std::max(box.Width(), box.Height());
}

double PointSegDist(const TPoint2D& P, const TPoint2D& A, const TPoint2D& B) {
  const TPoint2D d = B - A;
  const double l2 = d.MagSqr();
  const double t = l2 > 0.0 ? std::clamp((P - A).DotMul(d) / l2, 0.0, 1.0) : 0.0;
  return P.DistanceTo(A + d * t);
}

double ArcDist(const TArc2D& A, const TPoint2D& P) {
  if (A.IsLine) return PointSegDist(P, A.StartPoint(), A.EndPoint());
  double param = 0.0;
  return A.GetClosedPointTo(P, param).DistanceTo(P);
}

struct TCubics {
  std::vector<TBezierSegment2D> Ours;
  std::vector<Handle(Geom2d_BezierCurve)> Occt;
  std::vector<double> Sizes;
};

void AddCubic(TCubics& C, const TBezierSegment2D& B) {
  C.Ours.push_back(B);
  C.Occt.push_back(ToOcct(B));
  C.Sizes.push_back(Size(B));
}

// Random cubics: loops, cusps and inflections of every kind.
const TCubics& RandomCubics() {
  static const TCubics cubics = [] {
    TCubics c;
    std::mt19937_64 rng(52);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int i = 0; i < CubicCount; ++i)
      AddCubic(c, TBezierSegment2D({u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}, {u(rng), u(rng)}));
    return c;
  }();
  return cubics;
}

// The cubics of real drawings: the single-span cubic SPLINEs (four control points) of the
// shared laser-cut DXF files, mostly arcs that an exporter wrote as cubics.
const TCubics& DrawingCubics() {
  static const TCubics cubics = [] {
    TCubics c;
    for (const char* name : {"laser4diy_shim_4pcs_2combined.dxf", "laser4diy_backplate_v2.dxf",
                             "laser4diy_cutout_frontplate.dxf"}) {
      std::ifstream in(std::string(ORVANE_SHARED_DATA_DIR) + "/curves/" + name);
      std::string code;
      std::string value;
      bool spline = false;
      std::vector<TPoint2D> poles;
      auto flush = [&] {
        if (spline && poles.size() == 4) AddCubic(c, TBezierSegment2D(poles[0], poles[1], poles[2], poles[3]));
        poles.clear();
      };
      while (std::getline(in, code) && std::getline(in, value)) {
        const int g = std::atoi(code.c_str());
        value.erase(value.find_last_not_of(" \r\n\t") + 1);
        value.erase(0, value.find_first_not_of(' '));
        if (g == 0) {
          flush();
          spline = value == "SPLINE";
        } else if (spline && g == 10) {
          poles.emplace_back(std::strtod(value.c_str(), nullptr), 0.0);
        } else if (spline && g == 20 && !poles.empty()) {
          poles.back().Y = std::strtod(value.c_str(), nullptr);
        }
      }
      flush();
    }
    if (c.Ours.empty()) throw std::runtime_error("no cubics read from the shared drawings");
    return c;
  }();
  return cubics;
}

const TCubics& Cubics(int Set) { return Set == 0 ? RandomCubics() : DrawingCubics(); }

// The largest distance of 2000 samples of cubic I from Points, as a fraction of Tol.
double Deviation(const TBezierSegment2D& Cubic, const std::vector<TPoint2D>& Points, double Tol) {
  double worst = 0.0;
  for (int k = 0; k <= 2000; ++k) {
    const TPoint2D p = Cubic.EvalPoint(k / 2000.0);
    double d = 1e300;
    for (std::size_t j = 1; j < Points.size(); ++j) d = std::min(d, PointSegDist(p, Points[j - 1], Points[j]));
    worst = std::max(worst, d / Tol);
  }
  return worst;
}

// OCCT's chords of cubic I at deflection Deflection.
std::vector<TPoint2D> OcctChords(const TCubics& C, std::size_t I, double Deflection) {
  Geom2dAdaptor_Curve adaptor(C.Occt[I]);
  GCPnts_QuasiUniformDeflection flat(adaptor, Deflection);
  if (!flat.IsDone()) throw std::runtime_error("OCCT flattening failed");
  std::vector<TPoint2D> chords;
  for (int k = 1; k <= flat.NbPoints(); ++k) chords.emplace_back(flat.Value(k).X(), flat.Value(k).Y());
  return chords;
}

// The largest distance of 2000 samples of each of the first 100 cubics from our chain and
// from OCCT's chords at deflection Factor x the tolerance, as fractions of the tolerance.
void CheckFits(int Set, int Exponent, double Factor, double& Ours, double& Theirs) {
  const TCubics& c = Cubics(Set);
  Ours = 0.0;
  Theirs = 0.0;
  for (std::size_t i = 0; i < std::min<std::size_t>(100, c.Ours.size()); ++i) {
    const double tol = c.Sizes[i] * std::pow(10.0, -Exponent);
    const auto arcs = orvane::TCadBasicAlgo::Bezier2Arcs(c.Ours[i], tol);
    for (int k = 0; k <= 2000; ++k) {
      const TPoint2D p = c.Ours[i].EvalPoint(k / 2000.0);
      double d = 1e300;
      for (const TArc2D& a : *arcs) d = std::min(d, ArcDist(a, p));
      Ours = std::max(Ours, d / tol);
    }
    Theirs = std::max(Theirs, Deviation(c.Ours[i], OcctChords(c, i, tol * Factor), tol));
  }
  if (Ours > 1.0) throw std::runtime_error("Bezier2Arcs strays beyond the tolerance");
}

// OCCT's deflection is a target, not a bound: on random cubics its chords stray far beyond
// it. Comparing at equal accuracy means asking OCCT for a smaller deflection, halved until
// its chords of the checked cubics hold the tolerance. Factor 1 where they already do.
double HeldFactor(int Set, int Exponent) {
  static double done[2][8] = {};
  if (done[Set][Exponent] > 0.0) return done[Set][Exponent];
  double factor = 1.0;
  double ours = 0.0;
  double theirs = 0.0;
  for (int halving = 0; halving < 30; ++halving, factor *= 0.5) {
    CheckFits(Set, Exponent, factor, ours, theirs);
    if (theirs <= 1.0) break;
  }
  done[Set][Exponent] = factor;
  return factor;
}

void BM_Orvane_Bezier2Arcs(benchmark::State& State) {
  const int set = static_cast<int>(State.range(0));
  const TCubics& c = Cubics(set);
  const int e = static_cast<int>(State.range(1));
  double ours = 0.0;
  double theirs = 0.0;
  CheckFits(set, e, 1.0, ours, theirs);
  std::size_t i = 0;
  double elements = 0.0;
  double runs = 0.0;
  for (auto _ : State) {
    const auto arcs = orvane::TCadBasicAlgo::Bezier2Arcs(c.Ours[i], c.Sizes[i] * std::pow(10.0, -e));
    elements += arcs->Count();
    runs += 1.0;
    i = (i + 1) % c.Ours.size();
  }
  State.counters["elements"] = elements / runs;
  State.counters["max_dev_of_tol"] = ours;
}

// Third argument: 0 asks OCCT for the tolerance itself, 1 for the deflection at which its
// chords hold the tolerance (equal accuracy).
void BM_Occt_QuasiUniformDeflection(benchmark::State& State) {
  const int set = static_cast<int>(State.range(0));
  const TCubics& c = Cubics(set);
  const int e = static_cast<int>(State.range(1));
  const double factor = State.range(2) == 0 ? 1.0 : HeldFactor(set, e);
  double ours = 0.0;
  double theirs = 0.0;
  CheckFits(set, e, factor, ours, theirs);
  std::size_t i = 0;
  double elements = 0.0;
  double runs = 0.0;
  for (auto _ : State) {
    Geom2dAdaptor_Curve adaptor(c.Occt[i]);
    GCPnts_QuasiUniformDeflection flat(adaptor, c.Sizes[i] * std::pow(10.0, -e) * factor);
    elements += flat.NbPoints() - 1;
    runs += 1.0;
    i = (i + 1) % c.Occt.size();
  }
  State.counters["elements"] = elements / runs;
  State.counters["max_dev_of_tol"] = theirs;
  State.counters["deflection_of_tol"] = factor;
}

// First argument: 0 random cubics, 1 the drawings' cubics; second: the tolerance 10^-k of
// each cubic's size.
BENCHMARK(BM_Orvane_Bezier2Arcs)->ArgsProduct({{0, 1}, {2, 3, 4, 5}});
BENCHMARK(BM_Occt_QuasiUniformDeflection)->ArgsProduct({{0, 1}, {2, 3, 4, 5}, {0, 1}});

// ---- Crossings of a mixed outline with many segments ---------------------------------------

struct TOutline {
  TLABPolyline Ours;
  std::vector<Handle(Geom2d_Curve)> Pieces;
  std::vector<Bnd_Box2d> Boxes;
  std::vector<TLine2D> Segments;
  std::vector<Handle(Geom2d_Curve)> OcctSegments;
  std::vector<Bnd_Box2d> SegmentBoxes;
};

const TOutline& Outline() {
  static const TOutline* outline = [] {
    auto* o = new TOutline;
    std::mt19937_64 rng(300);
    std::uniform_real_distribution<double> jitter(-1.0, 1.0);
    constexpr int n = 300;
    auto at = [](int i) {
      const double a = orvane::TwoPi * i / n;
      const double r = 100.0 + 12.0 * std::sin(7.0 * a);
      return TPoint2D(r * std::cos(a), r * std::sin(a));
    };
    for (int i = 0; i < n; ++i) {
      const TPoint2D p = i == 0 ? at(0) : o->Ours.Last().P4;
      const TPoint2D q = at((i + 1) % n);
      const TPoint2D side = (q - p).RotateCcw90() * 0.3;
      switch (i % 3) {
        case 0:
          o->Ours.Add(TLABSegline::CreateLine(p, q));
          break;
        case 1:
          o->Ours.Add(TLABSegline::CreateArc(TArc2D::CreateBulge(p, q, 0.4 * jitter(rng))));
          break;
        default:
          o->Ours.Add(TLABSegline::CreateBezier(p, p + (q - p) * 0.3 + side * jitter(rng),
                                                p + (q - p) * 0.7 + side * jitter(rng), q));
      }
    }
    for (const TLABSegline& s : o->Ours) {
      Handle(Geom2d_Curve) c;
      const gp_Pnt2d a(s.P1.X, s.P1.Y);
      const gp_Pnt2d b(s.P4.X, s.P4.Y);
      if (s.SegType == orvane::TSegType::stLine) {
        c = GCE2d_MakeSegment(a, b).Value();
      } else if (s.SegType == orvane::TSegType::stArc) {
        const TPoint2D m = s.PointByParam(0.5);
        c = GCE2d_MakeArcOfCircle(a, gp_Pnt2d(m.X, m.Y), b).Value();
      } else {
        c = ToOcct(s.ToBezierSegment());
      }
      Bnd_Box2d box;
      BndLib_Add2dCurve::Add(c, 0.0, box);
      o->Pieces.push_back(c);
      o->Boxes.push_back(box);
    }
    std::uniform_real_distribution<double> u(-130.0, 130.0);
    for (int i = 0; i < 1000; ++i) {
      const TLine2D l({u(rng), u(rng)}, {u(rng), u(rng)});
      o->Segments.push_back(l);
      o->OcctSegments.push_back(GCE2d_MakeSegment(gp_Pnt2d(l.P1.X, l.P1.Y), gp_Pnt2d(l.P2.X, l.P2.Y)).Value());
      Bnd_Box2d box;
      box.Update(std::min(l.P1.X, l.P2.X), std::min(l.P1.Y, l.P2.Y), std::max(l.P1.X, l.P2.X),
                 std::max(l.P1.Y, l.P2.Y));
      o->SegmentBoxes.push_back(box);
    }
    return o;
  }();
  return *outline;
}

int OurCrossings(const TOutline& O) {
  int count = 0;
  orvane::TList<TPoint2D> pts;
  orvane::TList<TLine2D> lines;
  for (const TLine2D& l : O.Segments) {
    pts.Clear();
    lines.Clear();
    O.Ours.CrossWithSegLine(l, pts, lines);
    count += pts.Count() + lines.Count();
  }
  return count;
}

int OcctCrossings(const TOutline& O) {
  int count = 0;
  for (std::size_t k = 0; k < O.OcctSegments.size(); ++k) {
    for (std::size_t i = 0; i < O.Pieces.size(); ++i) {
      if (O.Boxes[i].IsOut(O.SegmentBoxes[k])) continue;
      Geom2dAPI_InterCurveCurve inter(O.Pieces[i], O.OcctSegments[k], 1e-6);
      count += inter.NbPoints() + inter.NbSegments();
    }
  }
  return count;
}

void CheckCrossings() {
  static const bool checked = [] {
    const int ours = OurCrossings(Outline());
    const int theirs = OcctCrossings(Outline());
    if (ours != theirs) {
      throw std::runtime_error("crossing counts differ: " + std::to_string(ours) + " vs " + std::to_string(theirs));
    }
    return true;
  }();
  (void)checked;
}

void BM_Orvane_CrossWithSegLine(benchmark::State& State) {
  CheckCrossings();
  int count = 0;
  for (auto _ : State) count = OurCrossings(Outline());
  State.counters["crossings"] = count;
}

void BM_Occt_InterCurveCurve(benchmark::State& State) {
  CheckCrossings();
  int count = 0;
  for (auto _ : State) count = OcctCrossings(Outline());
  State.counters["crossings"] = count;
}

BENCHMARK(BM_Orvane_CrossWithSegLine)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Occt_InterCurveCurve)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
