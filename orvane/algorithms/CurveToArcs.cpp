#include "orvane/algorithms/CurveToArcs.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

constexpr int kFitSamples = 128;  // samples per stretch, dense enough to be the answer's measure
constexpr double kRounding = 1e-12;  // relative size of a step that coordinates can still tell

TPoint2D Unit(const TPoint2D& V) {
  const double l = std::hypot(V.X, V.Y);
  return l > 0.0 ? TPoint2D(V.X / l, V.Y / l) : TPoint2D(0.0, 0.0);
}

// The unit tangent at T, looking a little inside [From, To] where the derivative vanishes
// (a cusp or a collapsed control point at the end of a spline).
TPoint2D TangentAt(const TGeCurve2D& Curve, double T, double From, double To) {
  TPoint2D d;
  const TPoint2D p = Curve.EvalPoint(T, d);
  TPoint2D u = Unit(d);
  if (u.X != 0.0 || u.Y != 0.0) return u;
  const double h = (To - From) * 1e-6;
  const bool atEnd = T >= To;
  const TPoint2D q = Curve.EvalPoint(atEnd ? T - h : T + h);
  return atEnd ? Unit(p - q) : Unit(q - p);
}

TArc2D Piece(const TPoint2D& From, const TPoint2D& To, const TPoint2D& StartTangent) {
  TArc2D arc;
  const TPoint2D chord = To - From;
  const double len = std::hypot(chord.X, chord.Y);
  TPoint2D center;
  // A tangent along the chord (within a relative 1e-9) is a straight piece.
  if (len == 0.0 || std::fabs(StartTangent.CrossMul(chord)) <= 1e-9 * len ||
      !TCadBasicAlgo::CalCenter(From, To, StartTangent, center)) {
    arc.DegradeLine(From, To);
    return arc;
  }
  return TArc2D::CreateCenter(center, From, To, StartTangent.CrossMul(chord) > 0.0);
}

// The biarc from P0 (tangent T0) to P1 (tangent T1) with equal tangent lengths; false where
// there is none (the tangents turn away from the chord).
bool Biarc(const TPoint2D& P0, const TPoint2D& T0, const TPoint2D& P1, const TPoint2D& T1, TArc2D& A1, TArc2D& A2) {
  const TPoint2D v = P1 - P0;
  const TPoint2D t = T0 + T1;
  const double a = t.DotMul(t) - 4.0, b = -2.0 * v.DotMul(t), c = v.DotMul(v);
  if (c == 0.0) return false;
  double d;
  if (std::fabs(a) < 1e-12) {
    if (b >= 0.0) return false;
    d = -c / b;
  } else {
    const double disc = b * b - 4.0 * a * c;
    if (disc < 0.0) return false;
    d = (-b - std::sqrt(disc)) / (2.0 * a);  // a < 0: this root is the positive one
  }
  if (!(d > 0.0) || !std::isfinite(d)) return false;
  const TPoint2D j = ((P0 + T0 * d) + (P1 - T1 * d)) * 0.5;
  A1 = Piece(P0, j, T0);
  // The second arc is the one that leaves P1 along -T1 towards j, run backwards.
  A2 = Piece(P1, j, TPoint2D(-T1.X, -T1.Y));
  A2.ReverseDir();
  return true;
}

// A plain square root where the squares neither overflow nor underflow: hypot's care costs a
// third of a fit, and is needed only at magnitudes beyond 1e140 or below 1e-140.
double Dist(const TPoint2D& A, const TPoint2D& B) {
  const double dx = A.X - B.X, dy = A.Y - B.Y, d2 = dx * dx + dy * dy;
  return d2 > 1e-280 && d2 < 1e280 ? std::sqrt(d2) : std::hypot(dx, dy);
}

double SegmentDistance(const TPoint2D& P, const TPoint2D& A, const TPoint2D& B) {
  const TPoint2D ab = B - A;
  const double l2 = ab.DotMul(ab);
  double t = l2 > 0.0 ? (P - A).DotMul(ab) / l2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return Dist(P, A + ab * t);
}

// TCurveToArcs::Deviation, which stops as soon as what it measured exceeds Limit (a fit only
// needs to know that a candidate fails).
double Measure(const TGeCurve2D& Curve, double From, double To, const std::vector<TArc2D>& Arcs, int Samples,
               double Limit) {
  Samples = std::max(Samples, 2);
  const std::size_t n = static_cast<std::size_t>(Samples) + 1;
  std::vector<double> prm(n);
  std::vector<TPoint2D> pts(n);
  for (std::size_t i = 0; i < n; ++i) {
    prm[i] = i + 1 == n ? To : From + (To - From) * static_cast<double>(i) / Samples;
    pts[i] = Curve.EvalPoint(prm[i]);
  }
  double worst = 0.0;
  for (const TPoint2D& p : pts) {
    double best = HUGE_VAL;
    for (const TArc2D& a : Arcs) best = std::min(best, TCurveToArcs::Distance(a, p));
    worst = std::max(worst, best);
    if (worst > Limit) return worst;
  }
  // The other way: points of each element against the curve, from the nearest sample by a
  // few Gauss-Newton steps kept between that sample's neighbours.
  const int perArc = std::clamp(Samples / std::max<int>(1, static_cast<int>(Arcs.size())), 4, 16);
  // The chain runs along the curve: the search for the nearest sample looks around where the
  // point's share of the chain puts it (a nearest point missed can only overstate).
  const std::size_t m = Arcs.size(), window = 2 * n / std::max<std::size_t>(1, m) + 2;
  for (std::size_t j = 0; j < m; ++j) {
    const TArc2D& a = Arcs[j];
    for (int k = 1; k < perArc; ++k) {
      const TPoint2D q = a.EvalPoint(static_cast<double>(k) / perArc);
      const std::size_t guess = static_cast<std::size_t>((static_cast<double>(j) + static_cast<double>(k) / perArc) /
                                                         static_cast<double>(m) * static_cast<double>(n - 1));
      const std::size_t first = guess > window ? guess - window : 0, last = std::min(n, guess + window + 1);
      std::size_t near = first;
      double best = HUGE_VAL;
      for (std::size_t i = first; i < last; ++i) {
        const double dx = q.X - pts[i].X, dy = q.Y - pts[i].Y, d2 = dx * dx + dy * dy;
        if (d2 < best) {
          best = d2;
          near = i;
        }
      }
      best = std::sqrt(best);
      const double lo = prm[near > 0 ? near - 1 : 0], hi = prm[std::min(near + 1, n - 1)];
      double t = prm[near];
      for (int it = 0; it < 6; ++it) {
        TPoint2D d;
        const TPoint2D c = Curve.EvalPoint(t, d);
        const double dd = d.DotMul(d);
        best = std::min(best, Dist(q, c));
        if (!(dd > 0.0)) break;
        t = std::clamp(t - (c - q).DotMul(d) / dd, lo, hi);
      }
      best = std::min(best, Dist(q, Curve.EvalPoint(t)));
      worst = std::max(worst, best);
      if (worst > Limit) return worst;
    }
  }
  return worst;
}

// One fitted stretch: its parameters and its one or two elements.
struct TStretch {
  double From, To;
  std::vector<TArc2D> Arcs;
  bool Held = false;      // measured within the tolerance
  double Measured = 0.0;  // when held, what was measured
};

// One stretch: the chord where the samples lie on it, else the biarc where it holds Tol;
// false when neither does (the chord is then in Out as the fallback).
bool FitOne(const TGeCurve2D& Curve, double From, double To, double Tol, TStretch& Out) {
  const TPoint2D p0 = Curve.EvalPoint(From), p1 = Curve.EvalPoint(To);
  TArc2D chord;
  chord.DegradeLine(p0, p1);
  Out = {From, To, {chord}, false};
  // Three inner points reject most candidates before the full measure.
  TPoint2D quarter[3];
  for (int k = 0; k < 3; ++k) quarter[k] = Curve.EvalPoint(From + (To - From) * (k + 1) / 4.0);
  const auto plausible = [&](const std::vector<TArc2D>& Arcs) {
    for (const TPoint2D& q : quarter) {
      double best = HUGE_VAL;
      for (const TArc2D& a : Arcs) best = std::min(best, TCurveToArcs::Distance(a, q));
      if (best > Tol) return false;
    }
    return true;
  };
  const auto holds = [&](const std::vector<TArc2D>& Arcs) {
    if (!plausible(Arcs)) return false;
    Out.Measured = Measure(Curve, From, To, Arcs, kFitSamples, Tol);
    return Out.Measured <= Tol;
  };
  if (holds(Out.Arcs)) return Out.Held = true;
  TArc2D a1, a2;
  if (Biarc(p0, TangentAt(Curve, From, From, To), p1, TangentAt(Curve, To, From, To), a1, a2)) {
    const std::vector<TArc2D> trial = {a1, a2};
    if (holds(trial)) {
      Out.Arcs = trial;
      return Out.Held = true;
    }
  }
  return false;
}

// Stretches are halved breadth first, so that a spent budget leaves the curve evenly cut.
void FitRange(const TGeCurve2D& Curve, double From, double To, double Tol, std::vector<TStretch>& Out, int& Budget) {
  struct TPending {
    double From, To;
    int Depth;
  };
  std::deque<TPending> pending{{From, To, 0}};
  while (!pending.empty()) {
    const TPending t = pending.front();
    pending.pop_front();
    TStretch s;
    if (FitOne(Curve, t.From, t.To, Tol, s) || t.Depth >= TCurveToArcs::MaxDepth || Budget <= 0) {
      Out.push_back(std::move(s));
      continue;
    }
    --Budget;
    const double mid = 0.5 * (t.From + t.To);
    pending.push_back({t.From, mid, t.Depth + 1});
    pending.push_back({mid, t.To, t.Depth + 1});
  }
  std::sort(Out.begin(), Out.end(), [](const TStretch& a, const TStretch& b) { return a.From < b.From; });
}

}  // namespace

double TCurveToArcs::Distance(const TArc2D& Arc, const TPoint2D& P) {
  if (Arc.IsLine) return SegmentDistance(P, Arc.StartPoint(), Arc.EndPoint());
  double prm = 0.0;
  return Dist(P, Arc.GetClosedPointTo(P, prm));
}

double TCurveToArcs::Deviation(const TGeCurve2D& Curve, double From, double To, const std::vector<TArc2D>& Arcs,
                               int Samples) {
  return Measure(Curve, From, To, Arcs, Samples, HUGE_VAL);
}

double TCurveToArcs::Fit(const TGeCurve2D& Curve, double From, double To, double Tol, std::vector<TArc2D>& Arcs) {
  int halvings = MaxPieces;
  return Fit(Curve, From, To, Tol, Arcs, halvings);
}

double TCurveToArcs::Fit(const TGeCurve2D& Curve, double From, double To, double Tol, std::vector<TArc2D>& Arcs,
                         int& Halvings) {
  if (!(Tol > 0.0) || !std::isfinite(Tol)) throw EParamError("TCurveToArcs.Fit: the tolerance must be a finite number above 0");
  if (!(From < To)) throw EParamError("TCurveToArcs.Fit: the stretch must run from a lower to a higher parameter");
  std::vector<TStretch> fitted;
  // A tolerance below the rounding of the coordinates cannot be held: the chord is measured
  // and kept rather than halving to the budget's end.
  TRect2D box = TRect2D::Invalid();
  for (int k = 0; k <= 8; ++k) box.Extend(Curve.EvalPoint(k == 8 ? To : From + (To - From) * k / 8.0));
  if (Tol < kRounding * std::max(std::fabs(box.XMin), std::max(std::fabs(box.XMax), std::max(std::fabs(box.YMin), std::fabs(box.YMax))))) {
    TArc2D chord;
    chord.DegradeLine(Curve.EvalPoint(From), Curve.EvalPoint(To));
    fitted.push_back({From, To, {chord}, false});
  } else {
    FitRange(Curve, From, To, Tol, fitted, Halvings);
  }
  // A held stretch keeps the measure that accepted it; one left unheld by a spent budget is
  // measured in full, so that the answer says how far it strays.
  double worst = 0.0;
  for (const TStretch& s : fitted) {
    worst = std::max(worst, s.Held ? s.Measured : Measure(Curve, s.From, s.To, s.Arcs, kFitSamples, HUGE_VAL));
    Arcs.insert(Arcs.end(), s.Arcs.begin(), s.Arcs.end());
  }
  return worst;
}

}  // namespace orvane
