// TGeSpline2D: length, box, nearest point and chord sampling, all worked on the Bezier
// pieces of the spline, which are kept between calls.

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/curves/LengthSamples.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/splines/GeSpline2D.h"
#include "orvane/splines/SplinePieces.h"

namespace orvane {

using internal::TSplinePiece;
using internal::TSplineQueryCache;

namespace {

std::size_t Ux(int I) { return static_cast<std::size_t>(I); }

TRect2D PlaneBox(const TDynPoints3D& Hom) {
  TRect2D r(TPoint2D(Hom.front().X / Hom.front().Z, Hom.front().Y / Hom.front().Z));
  for (const TPoint3D& q : Hom) {
    const double x = q.X / q.Z, y = q.Y / q.Z;
    r.XMin = std::min(r.XMin, x);
    r.XMax = std::max(r.XMax, x);
    r.YMin = std::min(r.YMin, y);
    r.YMax = std::max(r.YMax, y);
  }
  return r;
}

double BoxDistance2(const TRect2D& B, const TPoint2D& P) {
  const double dx = std::max({B.XMin - P.X, 0.0, P.X - B.XMax});
  const double dy = std::max({B.YMin - P.Y, 0.0, P.Y - B.YMax});
  return dx * dx + dy * dy;
}

// The piece and its local parameter at a spline parameter held to the pieces' range.
std::pair<std::size_t, double> Locate(const std::vector<TSplinePiece>& Pieces, double Param) {
  const auto it = std::upper_bound(Pieces.begin(), Pieces.end(), Param,
                                   [](double P, const TSplinePiece& S) { return P < S.T1; });
  const std::size_t i = it == Pieces.end() ? Pieces.size() - 1 : std::size_t(it - Pieces.begin());
  const TSplinePiece& s = Pieces[i];
  return {i, std::clamp((Param - s.T0) / (s.T1 - s.T0), 0.0, 1.0)};
}

}  // namespace

internal::TSplineQueryCache& TGeSpline2D::QueryCache() const {
  if (FQuery) return *FQuery;
  CheckWellFormed("QueryCache");
  auto c = std::make_shared<TSplineQueryCache>();
  TPoint3DLists pieces = DecomposeCurveW();
  // Piece i lies on the i-th span of non-zero length between knot p and knot n.
  std::vector<std::pair<double, double>> spans;
  const int n = GetCtrlPointCount();
  for (int i = FDegree; i < n; ++i)
    if (FKnots[Ux(i)] < FKnots[Ux(i + 1)]) spans.emplace_back(FKnots[Ux(i)], FKnots[Ux(i + 1)]);
  c->Ok = spans.size() == pieces.size() && !pieces.empty();
  if (c->Ok) {
    const TGeInterval iv = GetInterval();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const auto [t0, t1] = spans[i];
      if (t1 <= iv.Lower || t0 >= iv.Upper) continue;
      TSplinePiece s;
      // A closed spline may run on part of its knot range only.
      const double a = std::max(0.0, (iv.Lower - t0) / (t1 - t0)), b = std::min(1.0, (iv.Upper - t0) / (t1 - t0));
      s.Hom = a > 0.0 || b < 1.0 ? internal::PieceSub(pieces[i], a, b) : std::move(pieces[i]);
      s.T0 = std::max(t0, iv.Lower);
      s.T1 = std::min(t1, iv.Upper);
      s.Box = PlaneBox(s.Hom);
      for (const TPoint3D& q : s.Hom) s.Rational = s.Rational || q.Z != s.Hom.front().Z;
      c->Pieces.push_back(std::move(s));
    }
    c->Ok = !c->Pieces.empty();
  }
  FQuery = std::move(c);
  return *FQuery;
}

namespace {

TSplineQueryCache& WithLengths(TSplineQueryCache& C, const char* Where) {
  if (!C.Ok) throw EGeometry("[Error] TGeSpline2D.%s: the spline has no Bezier pieces", Where);
  if (!C.LengthsDone) {
    C.CumLength.assign(1, 0.0);
    for (TSplinePiece& s : C.Pieces) {
      s.Length = internal::PieceLength(s.Hom, 0.0, 1.0);
      C.CumLength.push_back(C.CumLength.back() + s.Length);
    }
    C.LengthsDone = true;
  }
  return C;
}

}  // namespace

double TGeSpline2D::GetCurveLength() const {
  return WithLengths(QueryCache(), "GetCurveLength").CumLength.back();
}

double TGeSpline2D::LengthAt(double Param) const {
  internal::CheckFinite(Param, "TGeSpline2D.LengthAt", "Param");
  TSplineQueryCache& c = WithLengths(QueryCache(), "LengthAt");
  const auto [i, t] = Locate(c.Pieces, Param);
  const TSplinePiece& s = c.Pieces[i];
  // Integrate over the shorter side of the piece.
  if (t <= 0.5) return c.CumLength[i] + internal::PieceLength(s.Hom, 0.0, t);
  return c.CumLength[i + 1] - internal::PieceLength(s.Hom, t, 1.0);
}

double TGeSpline2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& /*Tol*/) const {
  internal::CheckFinite(ParamStart, "TGeSpline2D.ParamOfLength", "ParamStart");
  internal::CheckFinite(Len, "TGeSpline2D.ParamOfLength", "Len");
  TSplineQueryCache& c = WithLengths(QueryCache(), "ParamOfLength");
  const double total = c.CumLength.back();
  double target = LengthAt(ParamStart) + Len;
  if (GetIsClosed()) {
    if (target > total) target -= total;
    if (target < 0.0) target += total;
  }
  if (target <= 0.0) return c.Pieces.front().T0;
  if (target >= total) return c.Pieces.back().T1;
  std::size_t i = std::size_t(std::upper_bound(c.CumLength.begin(), c.CumLength.end(), target) - c.CumLength.begin());
  i = std::clamp<std::size_t>(i, 1, c.Pieces.size()) - 1;
  const TSplinePiece& s = c.Pieces[i];
  const double rest = target - c.CumLength[i];
  // Newton on the length within the piece, kept inside a bracket that bisection shrinks
  // where the speed vanishes or a step leaves it.
  double lo = 0.0, hi = 1.0, t = s.Length > 0.0 ? std::clamp(rest / s.Length, 0.0, 1.0) : 0.0;
  for (int it = 0; it < 100; ++it) {
    const double f = internal::PieceLength(s.Hom, 0.0, t) - rest;
    if (std::fabs(f) <= 1e-14 * std::max(total, 1e-300)) break;
    (f > 0.0 ? hi : lo) = t;
    const double v = internal::PieceSpeed(s.Hom, t);
    double next = v > 0.0 ? t - f / v : 0.5 * (lo + hi);
    if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
    if (next == t || hi - lo < 1e-16) break;
    t = next;
  }
  return s.ToSpline(t);
}

const TLengthSamples& TGeSpline2D::GetLengthSamples() const {
  TSplineQueryCache& c = WithLengths(QueryCache(), "GetLengthSamples");
  if (c.SamplesDone) return c.Samples;
  // A corridor of half the promised 0.01, since the door looks at the candidates only;
  // candidates every twentieth of a unit of length (at most 128 per piece), their lengths
  // exact. The swinging door keeps those that linear interpolation cannot do without.
  constexpr double kCorridor = 0.005;
  TDynPoints2D cand{{c.Pieces.front().T0, 0.0}};
  for (std::size_t i = 0; i < c.Pieces.size(); ++i) {
    const TSplinePiece& s = c.Pieces[i];
    const int k = std::clamp(int(std::ceil(s.Length * 20.0)), 1, 128);
    double sum = c.CumLength[i], prev = 0.0;
    for (int j = 1; j <= k; ++j) {
      const double t = double(j) / k;
      sum += internal::PieceLength(s.Hom, prev, t);
      prev = t;
      cand.push_back({s.ToSpline(t), j == k ? c.CumLength[i + 1] : sum});
    }
  }
  c.Samples.Clear();
  TPoint2D anchor = cand.front();
  c.Samples.Add(anchor);
  double hiSlope = std::numeric_limits<double>::infinity(), loSlope = -hiSlope;
  for (std::size_t j = 1; j < cand.size(); ++j) {
    const TPoint2D q = cand[j];
    const double w = 1.0 / (q.X - anchor.X);
    const double u = (q.Y + kCorridor - anchor.Y) * w, l = (q.Y - kCorridor - anchor.Y) * w;
    if (loSlope > u || l > hiSlope) {
      anchor = cand[j - 1];
      c.Samples.Add(anchor);
      const double w2 = 1.0 / (q.X - anchor.X);
      hiSlope = (q.Y + kCorridor - anchor.Y) * w2;
      loSlope = (q.Y - kCorridor - anchor.Y) * w2;
    } else {
      hiSlope = std::min(hiSlope, u);
      loSlope = std::max(loSlope, l);
    }
  }
  c.Samples.Add(cand.back());
  c.SamplesDone = true;
  return c.Samples;
}

TRect2D TGeSpline2D::BoundBlock() const {
  TSplineQueryCache& c = QueryCache();
  if (!c.Ok) return TRect2D(EvalPoint(GetStartParam()));
  TRect2D r(internal::PieceEval(c.Pieces.front().Hom, 0.0));
  const auto take = [&r](const TPoint2D& P) {
    r.XMin = std::min(r.XMin, P.X);
    r.XMax = std::max(r.XMax, P.X);
    r.YMin = std::min(r.YMin, P.Y);
    r.YMax = std::max(r.YMax, P.Y);
  };
  for (const TSplinePiece& s : c.Pieces) {
    take(internal::PieceEval(s.Hom, 1.0));
    // A piece whose control box lies inside the box so far cannot widen it.
    const bool inX = s.Box.XMin >= r.XMin && s.Box.XMax <= r.XMax;
    const bool inY = s.Box.YMin >= r.YMin && s.Box.YMax <= r.YMax;
    if (!inX)
      for (double t : internal::PieceStationary(s.Hom, {1.0, 0.0})) take(internal::PieceEval(s.Hom, t));
    if (!inY)
      for (double t : internal::PieceStationary(s.Hom, {0.0, 1.0})) take(internal::PieceEval(s.Hom, t));
  }
  return r;
}

TPoint2D TGeSpline2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  if (!std::isfinite(Pnt.X) || !std::isfinite(Pnt.Y))
    throw EParamError("[Error] TGeSpline2D.GetClosedPointTo: the point is not finite");
  TSplineQueryCache& c = QueryCache();
  if (!c.Ok) {
    // No pieces: a grid search that narrows around the best sample.
    const TGeInterval iv = GetInterval();
    const double eps = std::isfinite(Tol.PointTol) && Tol.PointTol > 0.0 ? std::min(1e-6, Tol.PointTol) : 1e-6;
    double best = std::numeric_limits<double>::infinity();
    TPoint2D result = EvalPoint(iv.Lower);
    Param = iv.Lower;
    double a = iv.Lower, b = iv.Upper;
    for (int level = 0; level < 200; ++level) {
      const double h = (b - a) / 16.0;
      if (!(h > eps)) break;
      for (int i = 0; i <= 16; ++i) {
        const double t = std::clamp(a + h * i, iv.Lower, iv.Upper);
        const TPoint2D q = EvalPoint(t);
        const double d = q.DistanceTo(Pnt);
        if (d < best) {
          best = d;
          Param = t;
          result = q;
        }
      }
      a = Param - h;
      b = Param + h;
    }
    return result;
  }
  const std::vector<TSplinePiece>& ps = c.Pieces;
  std::vector<double> lb(ps.size());
  std::size_t first = 0;
  for (std::size_t i = 0; i < ps.size(); ++i) {
    lb[i] = BoxDistance2(ps[i].Box, Pnt);
    if (lb[i] < lb[first]) first = i;
  }
  double best = std::numeric_limits<double>::infinity(), bestT = 0.0;
  std::size_t bestPiece = 0;
  const auto solve = [&](std::size_t i) {
    const TSplinePiece& s = ps[i];
    for (double t : internal::PieceDistanceCandidates(s.Hom, Pnt)) {
      const TPoint2D q = internal::PieceEval(s.Hom, t);
      const double d = (q.X - Pnt.X) * (q.X - Pnt.X) + (q.Y - Pnt.Y) * (q.Y - Pnt.Y);
      // Ties go to the smaller parameter.
      if (d < best || (d == best && (i < bestPiece || (i == bestPiece && t < bestT)))) {
        best = d;
        bestT = t;
        bestPiece = i;
      }
    }
  };
  // The piece nearest by its box first, so that the bound prunes most of the rest.
  solve(first);
  for (std::size_t i = 0; i < ps.size(); ++i)
    if (i != first && lb[i] <= best) solve(i);
  Param = ps[bestPiece].ToSpline(bestT);
  return internal::PieceEval(ps[bestPiece].Hom, bestT);
}

bool TGeSpline2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  return Tol.PointEquals(GetClosedPointTo(Pnt, Tol, Param), Pnt);
}

double TGeSpline2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  double param = 0.0;
  GetClosedPointTo(Pnt, Tol, param);
  return param;
}

namespace {

constexpr int kMaxChordPoints = 10'000'000;

// The greatest distance of the piece from its chord, or infinity where it runs back along
// the chord or beyond its ends.
double ChordError(const TDynPoints3D& Hom, const TPoint2D& A, const TPoint2D& B, bool Exact) {
  const TPoint2D d = B - A;
  const double len = std::hypot(d.X, d.Y);
  const TPoint2D u = len > 0.0 ? TPoint2D(d.X / len, d.Y / len) : TPoint2D(1.0, 0.0);
  const TPoint2D nrm(-u.Y, u.X);
  double err = 0.0;
  bool inside = true;
  // The ends come from evaluation and the hull from subdivision: they differ by rounding.
  const double slack = 1e-12 * len;
  for (const TPoint3D& q : Hom) {
    const TPoint2D v(q.X / q.Z - A.X, q.Y / q.Z - A.Y);
    err = std::max(err, std::fabs(v.X * nrm.X + v.Y * nrm.Y));
    const double along = v.X * u.X + v.Y * u.Y;
    inside = inside && along >= -slack && along <= len + slack;
  }
  if (!Exact || (inside && len > 0.0 && err == 0.0)) return inside ? err : std::numeric_limits<double>::infinity();
  // Measured on the curve: the extremes across the chord, and no turning back along it.
  if (!internal::PieceStationary(Hom, u).empty()) return std::numeric_limits<double>::infinity();
  double e = 0.0;
  for (double t : internal::PieceStationary(Hom, nrm)) {
    const TPoint2D v = internal::PieceEval(Hom, t) - A;
    e = std::max(e, std::fabs(v.X * nrm.X + v.Y * nrm.Y));
  }
  return e;
}

void ChordSplit(const TSplinePiece& S, double A, double B, double Eps, int Depth, TDynPoints2D& Points,
                TFloatDynArray& Params) {
  const TDynPoints3D sub = internal::PieceSub(S.Hom, A, B);
  const TPoint2D pa = Points.back(), pb = internal::PieceEval(S.Hom, B);
  bool ok = Depth > 60;
  if (!ok) {
    const double hull = ChordError(sub, pa, pb, false);
    // The control hull bounds the curve; only near the limit is the exact measure worth it.
    ok = hull <= Eps || (hull <= 4.0 * Eps && ChordError(sub, pa, pb, true) <= Eps);
  }
  if (ok) {
    if (Points.size() >= kMaxChordPoints)
      throw EGeometry("[Error] TGeSpline2D.GetSamplePointsByChord: more than %d points are needed", kMaxChordPoints);
    Points.push_back(pb);
    Params.push_back(S.ToSpline(B));
    return;
  }
  const double m = 0.5 * (A + B);
  ChordSplit(S, A, m, Eps, Depth + 1, Points, Params);
  ChordSplit(S, m, B, Eps, Depth + 1, Points, Params);
}

void ChordStretch(const TSplineQueryCache& C, double From, double To, double Eps, TDynPoints2D& Points,
                  TFloatDynArray& Params) {
  const auto [i0, a0] = Locate(C.Pieces, From);
  const auto [i1, b1] = Locate(C.Pieces, To);
  if (Points.empty()) {
    Points.push_back(internal::PieceEval(C.Pieces[i0].Hom, a0));
    Params.push_back(C.Pieces[i0].ToSpline(a0));
  }
  for (std::size_t i = i0; i <= i1; ++i) {
    const TSplinePiece& s = C.Pieces[i];
    const double a = i == i0 ? a0 : 0.0, b = i == i1 ? b1 : 1.0;
    if (!(b > a)) continue;
    // Even steps on the piece, as few as pass: the hull's sag, which shrinks with the square
    // of the step, gives a count from below that grows until every part passes. Parts that
    // still fail after that are halved.
    const TDynPoints3D sub = internal::PieceSub(s.Hom, a, b);
    const TPoint2D pa = internal::PieceEval(sub, 0.0), pb = internal::PieceEval(sub, 1.0);
    const double sag = ChordError(sub, pa, pb, false);
    int k = std::isfinite(sag) ? std::clamp(int(std::sqrt(sag / Eps) * 0.7), 1, 4096) : 2;
    for (int tries = 0; tries < 12; ++tries, k += std::max(1, k / 16)) {
      bool all = true;
      TPoint2D from = pa;
      for (int j = 0; j < k && all; ++j) {
        const double u0 = a + (b - a) * j / k, u1 = j + 1 == k ? b : a + (b - a) * (j + 1) / k;
        const TDynPoints3D part = internal::PieceSub(s.Hom, u0, u1);
        const TPoint2D to = internal::PieceEval(s.Hom, u1);
        const double hull = ChordError(part, from, to, false);
        all = hull <= Eps || (hull <= 4.0 * Eps && ChordError(part, from, to, true) <= Eps);
        from = to;
      }
      if (all) break;
    }
    for (int j = 0; j < k; ++j)
      ChordSplit(s, a + (b - a) * j / k, j + 1 == k ? b : a + (b - a) * (j + 1) / k, Eps, 0, Points, Params);
  }
}

void CheckEps(double Eps) {
  if (!(Eps > 0.0) || !std::isfinite(Eps))
    throw EParamError("[Error] TGeSpline2D.GetSamplePointsByChord: EpsChord must be a positive number");
}

}  // namespace

int TGeSpline2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  CheckEps(EpsChord);
  const TSplineQueryCache& c = QueryCache();
  Points.clear();
  Params.clear();
  if (!c.Ok) throw EGeometry("[Error] TGeSpline2D.GetSamplePointsByChord: the spline has no Bezier pieces");
  ChordStretch(c, c.Pieces.front().T0, c.Pieces.back().T1, EpsChord, Points, Params);
  return static_cast<int>(Points.size());
}

int TGeSpline2D::GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                        TFloatDynArray& params) const {
  CheckEps(epsChord);
  internal::CheckFinite(paramFrom, "TGeSpline2D.GetSamplePointsByChord", "paramFrom");
  internal::CheckFinite(paramTo, "TGeSpline2D.GetSamplePointsByChord", "paramTo");
  const TSplineQueryCache& c = QueryCache();
  points.clear();
  params.clear();
  if (!c.Ok) throw EGeometry("[Error] TGeSpline2D.GetSamplePointsByChord: the spline has no Bezier pieces");
  const double lo = c.Pieces.front().T0, hi = c.Pieces.back().T1;
  const double from = std::clamp(paramFrom, lo, hi), to = std::clamp(paramTo, lo, hi);
  if (from <= to) {
    ChordStretch(c, from, to, epsChord, points, params);
  } else if (GetIsClosed()) {
    // Through the seam: to the end, then on from the start.
    ChordStretch(c, from, hi, epsChord, points, params);
    ChordStretch(c, lo, to, epsChord, points, params);
  }
  return static_cast<int>(points.size());
}

}  // namespace orvane
