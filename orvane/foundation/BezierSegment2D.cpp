#include "orvane/foundation/BezierSegment2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/internal/GaussRule.h"

namespace orvane {

namespace {

void CheckFiniteBezier(const TBezierSegment2D& B, const char* Where) {
  internal::CheckFinitePoint(B.P0, Where, "P0");
  internal::CheckFinitePoint(B.P1, Where, "P1");
  internal::CheckFinitePoint(B.P2, Where, "P2");
  internal::CheckFinitePoint(B.P3, Where, "P3");
}

// The derivative divided by 3 in power form, a*t^2 + b*t + c: the speed is 3 times its length.
struct TDerivPoly {
  TPoint2D A, B, C;
  explicit TDerivPoly(const TBezierSegment2D& Bz) {
    const TPoint2D d0 = Bz.P1 - Bz.P0, d1 = Bz.P2 - Bz.P1, d2 = Bz.P3 - Bz.P2;
    A = d0 - 2.0 * d1 + d2;
    B = 2.0 * (d1 - d0);
    C = d0;
  }
  double Speed(double T) const {
    const double x = (A.X * T + B.X) * T + C.X;
    const double y = (A.Y * T + B.Y) * T + C.Y;
    return 3.0 * std::sqrt(x * x + y * y);
  }
};

// Roots in (0, 1) of the cubic C3*t^3 + C2*t^2 + C1*t + C0, ascending: the cubic is split
// into monotone stretches at its critical points and each stretch bisected.
int CubicRootsIn01(double C3, double C2, double C1, double C0, std::array<double, 3>& Roots);

// Adaptive composite Gauss-Legendre integration of the speed: a panel is accepted when it
// agrees with the sum of its two halves within AbsTol. Stretches are cut where the speed
// has a minimum, so that a cusp (a kink of the speed) only ever sits at a panel's end, where
// the rule sees a smooth function. Depth and panel count are bounded.
class TLengthIntegrator {
 public:
  TLengthIntegrator(const TBezierSegment2D& Bz, int N)
      : FDeriv(Bz), FRule(internal::TabledGaussRule(std::clamp(N, 2, internal::MaxTabledGaussOrder))) {
    const double poly = Bz.P0.DistanceTo(Bz.P1) + Bz.P1.DistanceTo(Bz.P2) + Bz.P2.DistanceTo(Bz.P3);
    FAbsTol = 1e-13 * poly;
    // (B'/3) . (B''/3) = 2|A|^2 t^3 + 3 A.B t^2 + (|B|^2 + 2 A.C) t + B.C
    const TPoint2D& a = FDeriv.A;
    const TPoint2D& b = FDeriv.B;
    const TPoint2D& c = FDeriv.C;
    FBreakCount = CubicRootsIn01(2.0 * a.MagSqr(), 3.0 * a.DotMul(b), b.MagSqr() + 2.0 * a.DotMul(c), b.DotMul(c),
                                 FBreaks);
  }
  // The length from parameter Lo to Hi (negative when Hi < Lo).
  double Integrate(double Lo, double Hi) {
    if (Lo == Hi) return 0.0;
    if (Hi < Lo) return -Integrate(Hi, Lo);
    FBudget = 4096;
    double sum = 0.0, from = Lo;
    for (int i = 0; i < FBreakCount; ++i) {
      const double br = FBreaks[static_cast<std::size_t>(i)];
      if (br > from && br < Hi) {
        sum += Adaptive(from, br, Panel(from, br), 0);
        from = br;
      }
    }
    return sum + Adaptive(from, Hi, Panel(from, Hi), 0);
  }
  double Speed(double T) const { return FDeriv.Speed(T); }

 private:
  double Panel(double Lo, double Hi) const {
    const double half = 0.5 * (Hi - Lo), mid = 0.5 * (Hi + Lo);
    double sum = 0.0;
    for (std::size_t i = 0; i < FRule.X.size(); ++i) sum += FRule.W[i] * FDeriv.Speed(mid + half * FRule.X[i]);
    return sum * half;
  }
  double Adaptive(double Lo, double Hi, double Whole, int Depth) {
    const double mid = 0.5 * (Lo + Hi);
    const double left = Panel(Lo, mid), right = Panel(mid, Hi);
    FBudget -= 2;
    if (std::fabs(left + right - Whole) <= FAbsTol || Depth >= 40 || FBudget <= 0) return left + right;
    return Adaptive(Lo, mid, left, Depth + 1) + Adaptive(mid, Hi, right, Depth + 1);
  }

  TDerivPoly FDeriv;
  const internal::TGaussRule& FRule;
  double FAbsTol = 0.0;
  int FBudget = 0;
  std::array<double, 3> FBreaks{};
  int FBreakCount = 0;
};

// Real roots of A*t^2 + B*t + C = 0 that lie strictly inside (0, 1), in the numerically
// stable form; a vanishing A leaves the linear equation. Returns their number.
int QuadRootsIn01(double A, double B, double C, std::array<double, 2>& Roots) {
  int n = 0;
  auto add = [&](double t) {
    if (t > 0.0 && t < 1.0) Roots[static_cast<std::size_t>(n++)] = t;
  };
  if (A == 0.0) {
    if (B != 0.0) add(-C / B);
    return n;
  }
  const double disc = B * B - 4.0 * A * C;
  if (disc < 0.0) return 0;
  const double q = -0.5 * (B + std::copysign(std::sqrt(disc), B));
  if (q == 0.0) {
    add(0.0);
    return n;
  }
  const double r1 = q / A, r2 = C / q;
  add(std::min(r1, r2));
  if (r1 != r2) add(std::max(r1, r2));
  return n;
}

int CubicRootsIn01(double C3, double C2, double C1, double C0, std::array<double, 3>& Roots) {
  auto f = [&](double t) { return ((C3 * t + C2) * t + C1) * t + C0; };
  std::array<double, 2> crit{};
  const int nc = QuadRootsIn01(3.0 * C3, 2.0 * C2, C1, crit);
  std::array<double, 4> knots{0.0, 1.0, 1.0, 1.0};
  for (int i = 0; i < nc; ++i) knots[static_cast<std::size_t>(i + 1)] = crit[static_cast<std::size_t>(i)];
  int n = 0;
  for (int i = 0; i <= nc; ++i) {
    double lo = knots[static_cast<std::size_t>(i)], hi = knots[static_cast<std::size_t>(i + 1)];
    const double flo = f(lo);
    const double fhi = f(hi);
    if (!((flo < 0.0 && fhi > 0.0) || (flo > 0.0 && fhi < 0.0))) continue;
    // Newton inside the monotone stretch, bisecting whenever a step would leave it.
    double x = 0.5 * (lo + hi);
    for (int iter = 0; iter < 60; ++iter) {
      const double fx = f(x);
      if (fx == 0.0) break;
      if ((fx < 0.0) == (flo < 0.0))
        lo = x;
      else
        hi = x;
      const double dfx = (3.0 * C3 * x + 2.0 * C2) * x + C1;
      double next = dfx != 0.0 ? x - fx / dfx : 0.5 * (lo + hi);
      if (!(next > std::min(lo, hi) && next < std::max(lo, hi))) next = 0.5 * (lo + hi);
      const bool done = std::fabs(next - x) <= 1e-16;
      x = next;
      if (done) break;
    }
    lo = hi = x;
    const double r = 0.5 * (lo + hi);
    if (r > 0.0 && r < 1.0) Roots[static_cast<std::size_t>(n++)] = r;
  }
  return n;
}

// Extremes of one coordinate of the cubic with control values V0..V3 widen [Lo, Hi].
void ExtendAxis(double V0, double V1, double V2, double V3, double& Lo, double& Hi) {
  Lo = std::min(V0, V3);
  Hi = std::max(V0, V3);
  if (V1 >= Lo && V1 <= Hi && V2 >= Lo && V2 <= Hi) return;
  const double d0 = V1 - V0, d1 = V2 - V1, d2 = V3 - V2;
  std::array<double, 2> roots{};
  const int n = QuadRootsIn01(d0 - 2.0 * d1 + d2, 2.0 * (d1 - d0), d0, roots);
  for (int i = 0; i < n; ++i) {
    const double t = roots[static_cast<std::size_t>(i)], mt = 1.0 - t;
    const double v = mt * mt * mt * V0 + 3.0 * mt * mt * t * V1 + 3.0 * mt * t * t * V2 + t * t * t * V3;
    Lo = std::min(Lo, v);
    Hi = std::max(Hi, v);
  }
}

int SignOf(double V) { return V > 0.0 ? 1 : (V < 0.0 ? -1 : 0); }

}  // namespace

TPoint2D TBezierSegment2D::EvalPoint(double T) const {
  const double mt = 1.0 - T;
  const double b0 = mt * mt * mt, b1 = 3.0 * mt * mt * T, b2 = 3.0 * mt * T * T, b3 = T * T * T;
  return {b0 * P0.X + b1 * P1.X + b2 * P2.X + b3 * P3.X, b0 * P0.Y + b1 * P1.Y + b2 * P2.Y + b3 * P3.Y};
}

TPoint2D TBezierSegment2D::EvalPoint(double T, TPoint2D& Deriv) const {
  const double mt = 1.0 - T;
  const TPoint2D d0 = P1 - P0, d1 = P2 - P1, d2 = P3 - P2;
  Deriv = 3.0 * (mt * mt * d0 + 2.0 * mt * T * d1 + T * T * d2);
  return EvalPoint(T);
}

TPoint2D TBezierSegment2D::TangentStart() const {
  for (const TPoint2D& p : {P1, P2, P3}) {
    const TPoint2D v = p - P0;
    if (v.X != 0.0 || v.Y != 0.0) return v.Normal();
  }
  return TPoint2D::FZero;
}

TPoint2D TBezierSegment2D::TangentEnd() const {
  for (const TPoint2D& p : {P2, P1, P0}) {
    const TPoint2D v = P3 - p;
    if (v.X != 0.0 || v.Y != 0.0) return v.Normal();
  }
  return TPoint2D::FZero;
}

void TBezierSegment2D::Reverse() {
  std::swap(P0, P3);
  std::swap(P1, P2);
}

void TBezierSegment2D::TransformBy(const TMatrix2D& Matrix) {
  P0 = Matrix.Transform(P0);
  P1 = Matrix.Transform(P1);
  P2 = Matrix.Transform(P2);
  P3 = Matrix.Transform(P3);
}

bool TBezierSegment2D::Split(double T, TBezierSegment2D& Left, TBezierSegment2D& Right) const {
  if (!(T > 0.0 && T < 1.0)) return false;
  const TPoint2D q1 = P0 + (P1 - P0) * T, q2 = P1 + (P2 - P1) * T, q3 = P2 + (P3 - P2) * T;
  const TPoint2D r1 = q1 + (q2 - q1) * T, r2 = q2 + (q3 - q2) * T;
  const TPoint2D m = r1 + (r2 - r1) * T;
  const TPoint2D p0 = P0, p3 = P3;  // Left or Right may be this very segment.
  Left = {p0, q1, r1, m};
  Right = {m, r2, q3, p3};
  return true;
}

void TBezierSegment2D::SplitMiddle(TBezierSegment2D& Left, TBezierSegment2D& Right) const { Split(0.5, Left, Right); }

TRect2D TBezierSegment2D::GetBoundBox() const {
  TRect2D r;
  ExtendAxis(P0.X, P1.X, P2.X, P3.X, r.XMin, r.XMax);
  ExtendAxis(P0.Y, P1.Y, P2.Y, P3.Y, r.YMin, r.YMax);
  return r;
}

double TBezierSegment2D::CurveLength(int N) const {
  CheckFiniteBezier(*this, "TBezierSegment2D.CurveLength");
  TLengthIntegrator integ(*this, N);
  return integ.Integrate(0.0, 1.0);
}

double TBezierSegment2D::ParamOfLength(double Start, double Len, double Tol, int N) const {
  constexpr const char* where = "TBezierSegment2D.ParamOfLength";
  CheckFiniteBezier(*this, where);
  internal::CheckFinite(Start, where, "Start");
  internal::CheckFinite(Len, where, "Len");
  const double s = std::clamp(Start, 0.0, 1.0);
  if (Len == 0.0) return s;
  if (Len < 0.0) {
    TBezierSegment2D rev = *this;
    rev.Reverse();
    return 1.0 - rev.ParamOfLength(1.0 - s, -Len, Tol, N);
  }
  TLengthIntegrator integ(*this, N);
  const double rest = integ.Integrate(s, 1.0);
  if (Len >= rest) return 1.0;
  const double stop = std::min(std::isfinite(Tol) ? std::fabs(Tol) : 0.0, 1e-12 * rest);
  double lo = s, hi = 1.0;
  double t = s + (1.0 - s) * Len / rest;
  double lenAtT = integ.Integrate(s, t);
  for (int iter = 0; iter < 100; ++iter) {
    const double r = lenAtT - Len;
    if (std::fabs(r) <= stop) break;
    if (r < 0.0)
      lo = t;
    else
      hi = t;
    if (hi - lo <= 1e-15) break;
    const double sp = integ.Speed(t);
    double next = sp > 0.0 ? t - r / sp : 0.5 * (lo + hi);
    // Newton may overshoot where the speed nearly vanishes (at a cusp): bisect then.
    if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
    lenAtT += integ.Integrate(t, next);
    t = next;
  }
  return t;
}

double TBezierSegment2D::DistanceTo(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param,
                                    TPoint2D& Nearest) const {
  (void)Tol;
  constexpr const char* where = "TBezierSegment2D.DistanceTo";
  CheckFiniteBezier(*this, where);
  internal::CheckFinitePoint(Pt, where, "Pt");
  // g(t) = (B(t) - Pt) . B'(t) / 3 vanishes at every interior extremum of the distance. In
  // Bernstein form of degree 5 its coefficients bound it, so a piece whose coefficients keep
  // one sign holds no root, and a piece with one sign change holds exactly one.
  const std::array<TPoint2D, 4> q{P0 - Pt, P1 - Pt, P2 - Pt, P3 - Pt};
  const std::array<TPoint2D, 3> d{P1 - P0, P2 - P1, P3 - P2};
  constexpr std::array<double, 4> c3{1, 3, 3, 1};
  constexpr std::array<double, 3> c2{1, 2, 1};
  constexpr std::array<double, 6> c5{1, 5, 10, 10, 5, 1};
  std::array<double, 6> g{};
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t j = 0; j < 3; ++j) g[i + j] += c3[i] * c2[j] / c5[i + j] * q[i].DotMul(d[j]);

  auto dist2 = [&](double t) { return (EvalPoint(t) - Pt).MagSqr(); };
  auto gOf = [&](double t) {
    TPoint2D dv;
    const TPoint2D p = EvalPoint(t, dv);
    return (p - Pt).DotMul(dv);
  };
  auto dgOf = [&](double t) {
    TPoint2D dv;
    const TPoint2D p = EvalPoint(t, dv);
    const double mt = 1.0 - t;
    const TPoint2D dd = 6.0 * (mt * (d[1] - d[0]) + t * (d[2] - d[1]));
    return dv.MagSqr() + (p - Pt).DotMul(dd);
  };

  double bestT = 0.0, best = dist2(0.0);
  auto consider = [&](double t) {
    const double v = dist2(t);
    if (v < best || (v == best && t < bestT)) best = v, bestT = t;
  };
  consider(1.0);

  struct TPiece {
    std::array<double, 6> C;
    double Lo, Hi;
    int Depth;
  };
  std::array<TPiece, 128> stack{};
  std::size_t top = 0;
  stack[top++] = {g, 0.0, 1.0, 0};
  int budget = 512;
  while (top > 0 && budget-- > 0) {
    const TPiece p = stack[--top];
    int changes = 0, last = 0;
    for (double c : p.C) {
      const int s = SignOf(c);
      if (s != 0) {
        if (last != 0 && s != last) ++changes;
        last = s;
      }
    }
    if (changes == 0) continue;
    if (changes == 1) {
      const double glo = gOf(p.Lo), ghi = gOf(p.Hi);
      if ((glo <= 0.0 && ghi >= 0.0) || (glo >= 0.0 && ghi <= 0.0)) {
        // A sign change from minus to plus is a minimum of the distance; a maximum is not
        // worth refining, but costs nothing to consider either.
        double lo = p.Lo, hi = p.Hi;
        if (glo > 0.0) std::swap(lo, hi);
        double t = 0.5 * (p.Lo + p.Hi);
        for (int iter = 0; iter < 60; ++iter) {
          const double gv = gOf(t);
          if (gv == 0.0) break;
          if (gv < 0.0)
            lo = t;
          else
            hi = t;
          const double dg = dgOf(t);
          double next = dg != 0.0 ? t - gv / dg : 0.5 * (lo + hi);
          if (!((next - lo) * (next - hi) < 0.0)) next = 0.5 * (lo + hi);
          if (std::fabs(next - t) <= 1e-16 + 2e-16 * std::fabs(t)) {
            t = next;
            break;
          }
          t = next;
        }
        consider(t);
        continue;
      }
    }
    if (p.Depth >= 48 || p.Hi - p.Lo <= 1e-14 || top + 2 > stack.size()) {
      consider(0.5 * (p.Lo + p.Hi));
      continue;
    }
    // De Casteljau at the middle gives both halves' coefficients.
    std::array<double, 6> w = p.C, l{}, r{};
    for (std::size_t k = 0; k < 6; ++k) {
      l[k] = w[0];
      r[5 - k] = w[5 - k];
      for (std::size_t i = 0; i + 1 < 6 - k; ++i) w[i] = 0.5 * (w[i] + w[i + 1]);
    }
    const double mid = 0.5 * (p.Lo + p.Hi);
    // A root right at the split point would show in neither half's signs.
    consider(mid);
    stack[top++] = {r, mid, p.Hi, p.Depth + 1};
    stack[top++] = {l, p.Lo, mid, p.Depth + 1};
  }
  Param = bestT;
  Nearest = EvalPoint(bestT);
  if (bestT == 0.0) Nearest = P0;
  if (bestT == 1.0) Nearest = P3;
  return std::sqrt(best);
}

TPoint2D TBezierSegment2D::GetClosedPointTo(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param) const {
  TPoint2D nearest;
  DistanceTo(Pt, Tol, Param, nearest);
  return nearest;
}

double TBezierSegment2D::ParamOfPoint(const TPoint2D& Pt, const TGeTolerance& Tol) const {
  double param = 0.0;
  GetClosedPointTo(Pt, Tol, param);
  return param;
}

bool TBezierSegment2D::IsOn(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param) const {
  TPoint2D nearest;
  return DistanceTo(Pt, Tol, Param, nearest) <= Tol.PointTol;
}

bool TBezierSegment2D::IsLinear(TLine2D& Line, double Tol) const {
  CheckFiniteBezier(*this, "TBezierSegment2D.IsLinear");
  const TLine2D chord(P0, P3);
  // The convex hull holds the curve: inner points near the segment keep all of it near.
  if (chord.DistanceLimit(P1) > Tol || chord.DistanceLimit(P2) > Tol) return false;
  const TPoint2D v = P3 - P0;
  const double len = v.Mag();
  if (len > 0.0) {
    // The position along the chord, s(t), must not run backwards by more than Tol.
    const TPoint2D u = v / len;
    const double a1 = (P1 - P0).DotMul(u), a2 = (P2 - P0).DotMul(u);
    const double d0 = a1, d1 = a2 - a1, d2 = len - a2;
    if (d0 < 0.0 || d1 < 0.0 || d2 < 0.0) {
      std::array<double, 2> roots{};
      const int n = QuadRootsIn01(d0 - 2.0 * d1 + d2, 2.0 * (d1 - d0), d0, roots);
      std::array<double, 4> s{0.0, 0.0, 0.0, len};
      int count = 1;
      for (int i = 0; i < n; ++i) {
        const double t = roots[static_cast<std::size_t>(i)], mt = 1.0 - t;
        s[static_cast<std::size_t>(count++)] = 3.0 * mt * mt * t * a1 + 3.0 * mt * t * t * a2 + t * t * t * len;
      }
      s[static_cast<std::size_t>(count++)] = len;
      double highest = s[0];
      for (int i = 1; i < count; ++i) {
        const double si = s[static_cast<std::size_t>(i)];
        if (highest - si > Tol) return false;
        highest = std::max(highest, si);
      }
    }
  }
  Line = chord;
  return true;
}

namespace {

// The largest radial deviation |r(t) - R| / R over 64 even parameter steps of B from the
// circle about Center.
double RadialDeviation(const TBezierSegment2D& B, const TPoint2D& Center, double Radius) {
  double worst = 0.0;
  for (int i = 1; i < 64; ++i) worst = std::max(worst, std::fabs(B.EvalPoint(i / 64.0).DistanceTo(Center) - Radius));
  return worst / Radius;
}

}  // namespace

bool TBezierSegment2D::IsArc(TArc2D& Arc, double Tol1, double Tol2) const {
  CheckFiniteBezier(*this, "TBezierSegment2D.IsArc");
  // The circle through the two ends and the curve's middle point.
  const TPoint2D mid = EvalPoint(0.5);
  const TLine2D chord(P0, P3);
  if (!(chord.Length() > Tol1) || !(chord.DistanceDirect(mid) > Tol1)) return false;
  const TPoint2D a = mid - P0, b = P3 - P0;
  const double d = 2.0 * a.CrossMul(b);
  const TPoint2D center = P0 + TPoint2D(b.Y * a.MagSqr() - a.Y * b.MagSqr(), a.X * b.MagSqr() - b.X * a.MagSqr()) / d;
  const double radius = P0.DistanceTo(center);
  // The sweep through the middle point: both halves turn the same way.
  const TPoint2D v0 = P0 - center, vm = mid - center, v3 = P3 - center;
  const double h1 = std::atan2(v0.CrossMul(vm), v0.DotMul(vm)), h2 = std::atan2(vm.CrossMul(v3), vm.DotMul(v3));
  if ((h1 > 0.0) != (h2 > 0.0)) return false;
  const double sweep = h1 + h2;
  if (std::fabs(sweep) > Pi + 1e-9) return false;
  // A cubic follows a circle only so far: the standard cubic of this sweep (inner legs
  // 4/3 tan(sweep / 4) radius) strays by its own small amount, and the curve may stray by at
  // most Tol2 more.
  const double k = 4.0 / 3.0 * std::tan(std::fabs(sweep) / 4.0);
  const double s = std::sin(std::fabs(sweep)), c = std::cos(std::fabs(sweep));
  const TBezierSegment2D standard({1, 0}, {1, k}, {c + k * s, s - k * c}, {c, s});
  const double inherent = RadialDeviation(standard, {0, 0}, 1.0);
  if (RadialDeviation(*this, center, radius) > inherent + Tol2) return false;
  Arc = TArc2D(center, radius, v0.Angle(), sweep);
  return true;
}

TFloatDynArray TBezierSegment2D::CurvatureChangedPlaces() const {
  CheckFiniteBezier(*this, "TBezierSegment2D.CurvatureChangedPlaces");
  // B' x B'' is a quadratic (its cubic terms cancel); an inflection is a simple root of it.
  const TDerivPoly dp(*this);
  const double q2 = -dp.A.CrossMul(dp.B), q1 = 2.0 * dp.C.CrossMul(dp.A), q0 = dp.C.CrossMul(dp.B);
  TFloatDynArray result;
  const double scale = std::max({dp.A.MagSqr(), dp.B.MagSqr(), dp.C.MagSqr()});
  if (std::max({std::fabs(q2), std::fabs(q1), std::fabs(q0)}) <= 1e-14 * scale) return result;
  // A double root of the quadratic touches zero without a change of sign: no inflection.
  if (q2 != 0.0 && q1 * q1 - 4.0 * q2 * q0 <= 1e-12 * q1 * q1) return result;
  std::array<double, 2> roots{};
  const int n = QuadRootsIn01(q2, q1, q0, roots);
  for (int i = 0; i < n; ++i) result.push_back(roots[static_cast<std::size_t>(i)]);
  return result;
}

int TBezierSegment2D::GetSamplePoints(double ChordTol, TDynPoints2D& Pts, TFloatDynArray& Params, int MaxCount) const {
  return GetSamplePoints(0.0, 1.0, ChordTol, Pts, Params, MaxCount);
}

int TBezierSegment2D::GetSamplePoints(double From, double To, double ChordTol, TDynPoints2D& Pts,
                                      TFloatDynArray& Params, int MaxCount) const {
  constexpr const char* where = "TBezierSegment2D.GetSamplePoints";
  CheckFiniteBezier(*this, where);
  internal::CheckFinite(From, where, "From");
  internal::CheckFinite(To, where, "To");
  auto pointAt = [this](double p) { return p == 0.0 ? P0 : (p == 1.0 ? P3 : EvalPoint(p)); };
  Pts.clear();
  Params.clear();
  if (From == To || MaxCount <= 1) {
    Pts.push_back(pointAt(From));
    Params.push_back(From);
    return 1;
  }
  // A chord over a parameter step h lies within h^2 / 8 * max|B''| of the curve, and |B''|
  // is at most 6 times the larger second difference of the control points.
  const double secondDiff = std::max((P0 - 2.0 * P1 + P2).Mag(), (P1 - 2.0 * P2 + P3).Mag());
  const double span = std::fabs(To - From);
  int n = MaxCount;
  if (ChordTol > 0.0) {
    const double steps = std::ceil(span * std::sqrt(6.0 * secondDiff / (8.0 * ChordTol)));
    n = steps + 1.0 >= MaxCount ? MaxCount : std::max(2, static_cast<int>(steps) + 1);
  }
  Pts.reserve(static_cast<std::size_t>(n));
  Params.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double p = i == 0 ? From : (i == n - 1 ? To : From + (To - From) * i / (n - 1));
    Params.push_back(p);
    Pts.push_back(pointAt(p));
  }
  return n;
}

}  // namespace orvane
