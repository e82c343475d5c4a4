#include "orvane/foundation/Numeric.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/internal/GaussRule.h"

namespace orvane {

namespace internal {

TGaussRule MakeGaussRule(int N) {
  TGaussRule rule;
  rule.X.resize(static_cast<std::size_t>(N));
  rule.W.resize(static_cast<std::size_t>(N));
  const double n = N;
  // The nodes are the roots of the Legendre polynomial P_N, found by Newton's method from
  // the classical cosine estimates; the rule is symmetric, so half of them suffice.
  for (int i = 0; i < (N + 1) / 2; ++i) {
    double x = std::cos(std::numbers::pi * (i + 0.75) / (n + 0.5));
    double dp = 1.0;
    for (int iter = 0; iter < 100; ++iter) {
      double p0 = 1.0;
      double p1 = x;
      for (int k = 2; k <= N; ++k) {
        const double p2 = ((2.0 * k - 1.0) * x * p1 - (k - 1.0) * p0) / k;
        p0 = p1;
        p1 = p2;
      }
      // P_N'(x) from P_N and P_{N-1}.
      dp = n * (x * p1 - p0) / (x * x - 1.0);
      const double dx = p1 / dp;
      x -= dx;
      if (std::fabs(dx) <= 1e-16) break;
    }
    const double w = 2.0 / ((1.0 - x * x) * dp * dp);
    rule.X[static_cast<std::size_t>(i)] = -x;
    rule.X[static_cast<std::size_t>(N - 1 - i)] = x;
    rule.W[static_cast<std::size_t>(i)] = w;
    rule.W[static_cast<std::size_t>(N - 1 - i)] = w;
  }
  if (N % 2 == 1) rule.X[static_cast<std::size_t>(N / 2)] = 0.0;
  return rule;
}

const TGaussRule& TabledGaussRule(int N) {
  // Built once, on first use, and never changed afterwards.
  static const std::vector<TGaussRule> rules = [] {
    std::vector<TGaussRule> all(MaxTabledGaussOrder + 1);
    for (int n = 1; n <= MaxTabledGaussOrder; ++n) all[static_cast<std::size_t>(n)] = MakeGaussRule(n);
    return all;
  }();
  return rules[static_cast<std::size_t>(N)];
}

}  // namespace internal

namespace {

// De Casteljau at T on one coefficient array.
void SplitCoeffs(const std::vector<double>& C, double T, std::vector<double>& L, std::vector<double>& R) {
  std::vector<double> w = C;
  const std::size_t n = C.size();
  L.resize(n);
  R.resize(n);
  for (std::size_t k = 0; k < n; ++k) {
    L[k] = w[0];
    R[n - 1 - k] = w[n - 1 - k];
    for (std::size_t i = 0; i + 1 < n - k; ++i) w[i] = w[i] + (w[i + 1] - w[i]) * T;
  }
}

double EvalCoeffs(const std::vector<double>& C, double T) {
  // De Casteljau in place on a small buffer: stable for the degrees met here.
  std::array<double, 64> buf{};
  const std::size_t n = C.size();
  if (n > buf.size()) {
    std::vector<double> w = C;
    for (std::size_t k = 1; k < n; ++k)
      for (std::size_t i = 0; i + k < n; ++i) w[i] = w[i] + (w[i + 1] - w[i]) * T;
    return w[0];
  }
  std::copy(C.begin(), C.end(), buf.begin());
  for (std::size_t k = 1; k < n; ++k)
    for (std::size_t i = 0; i + k < n; ++i) buf[i] = buf[i] + (buf[i + 1] - buf[i]) * T;
  return buf[0];
}

double Binomial(int N, int K) {
  double r = 1.0;
  for (int i = 1; i <= K; ++i) r = r * (N - K + i) / i;
  return r;
}

}  // namespace

TSquaredFunction::TSquaredFunction(const TDynPoints3D& Points, int Degree, bool IsRational) {
  constexpr const char* where = "TSquaredFunction.Create";
  if (Degree < 0 || Degree > 30 || Points.size() != static_cast<std::size_t>(Degree) + 1)
    throw EParamError("[Error] %s: %d points do not make a piece of degree %d", where, Points.size(), Degree);
  for (const TPoint3D& p : Points) {
    internal::CheckFinite(p.X, where, "X");
    internal::CheckFinite(p.Y, where, "Y");
    if (IsRational && !internal::IsPositiveNumber(p.Z))
      throw EParamError("[Error] %s: weight %g is not a positive number", where, p.Z);
  }
  const int m = 2 * Degree;
  FNum.assign(static_cast<std::size_t>(m) + 1, 0.0);
  if (IsRational) FDen.assign(static_cast<std::size_t>(m) + 1, 0.0);
  // The product of two Bernstein sums: c_k = sum over i + j = k of
  // C(p, i) C(p, j) / C(2p, k) * (w_i P_i) . (w_j P_j), and likewise w_i w_j for D.
  for (int i = 0; i <= Degree; ++i) {
    const TPoint3D& a = Points[static_cast<std::size_t>(i)];
    const double wa = IsRational ? a.Z : 1.0;
    for (int j = 0; j <= Degree; ++j) {
      const TPoint3D& b = Points[static_cast<std::size_t>(j)];
      const double wb = IsRational ? b.Z : 1.0;
      const double f = Binomial(Degree, i) * Binomial(Degree, j) / Binomial(m, i + j);
      FNum[static_cast<std::size_t>(i + j)] += f * wa * wb * (a.X * b.X + a.Y * b.Y);
      if (IsRational) FDen[static_cast<std::size_t>(i + j)] += f * wa * wb;
    }
  }
}

double TSquaredFunction::GetCtrlPoints(int I) const {
  if (I < 0 || I > GetDegree()) throw EParamError("[Error] TSquaredFunction.GetCtrlPoints: 下标越界");
  const auto i = static_cast<std::size_t>(I);
  return FDen.empty() ? FNum[i] : FNum[i] / FDen[i];
}

double TSquaredFunction::Value(double T) const {
  const double n = EvalCoeffs(FNum, T);
  return FDen.empty() ? n : n / EvalCoeffs(FDen, T);
}

void TSquaredFunction::SplitAt(double T, TSquaredFunction& Left, TSquaredFunction& Right) const {
  if (!(T >= 0.0 && T <= 1.0))
    throw EParamError("[Error] TSquaredFunction.SplitAt: T %g is outside [0, 1]", T);
  std::vector<double> ln, rn, ld, rd;
  SplitCoeffs(FNum, T, ln, rn);
  if (!FDen.empty()) SplitCoeffs(FDen, T, ld, rd);
  Left.FNum = std::move(ln);
  Right.FNum = std::move(rn);
  Left.FDen = std::move(ld);
  Right.FDen = std::move(rd);
}

double TNumeric::GaussQuadrature(const TNumericFunction& F, const TGeInterval& Interval, int N) {
  constexpr const char* where = "TNumeric.GaussQuadrature";
  internal::CheckFinite(Interval.Lower, where, "Lower");
  internal::CheckFinite(Interval.Upper, where, "Upper");
  if (N < 1) throw EParamError("[Error] %s: order %d is below 1", where, N);
  const internal::TGaussRule own = N > internal::MaxTabledGaussOrder ? internal::MakeGaussRule(N) : internal::TGaussRule{};
  const internal::TGaussRule& rule = N > internal::MaxTabledGaussOrder ? own : internal::TabledGaussRule(N);
  const double half = 0.5 * (Interval.Upper - Interval.Lower);
  const double mid = 0.5 * (Interval.Upper + Interval.Lower);
  double sum = 0.0;
  for (std::size_t i = 0; i < rule.X.size(); ++i) sum += rule.W[i] * F(mid + half * rule.X[i]);
  return sum * half;
}

namespace {

// A root of F in [A, B], where FA and FB have opposite signs (or one is 0): Newton steps
// with DF, falling back to bisection whenever a step would leave the bracket or shrink it
// too slowly. DF may be empty: then the secant of the bracket stands in.
double SolveBracketed(const TNumericFunction& F, const TNumericFunction* DF, double A, double B, double FA, double FB) {
  if (FA == 0.0) return A;
  if (FB == 0.0) return B;
  double lo = A, hi = B;
  // Orient so that F(lo) < 0 < F(hi).
  if (FA > 0.0) std::swap(lo, hi);
  double x = 0.5 * (A + B);
  double prevStep = std::fabs(B - A);
  for (int iter = 0; iter < 100; ++iter) {
    const double fx = F(x);
    if (fx == 0.0 || !std::isfinite(fx)) return x;
    if (fx < 0.0)
      lo = x;
    else
      hi = x;
    const double width = std::fabs(hi - lo);
    if (width <= 4.0 * std::numeric_limits<double>::epsilon() * std::max(std::fabs(x), 1e-300)) return x;
    double next;
    double d = DF != nullptr ? (*DF)(x) : 0.0;
    bool newtonOk = false;
    if (DF != nullptr && d != 0.0 && std::isfinite(d)) {
      next = x - fx / d;
      newtonOk = (next - lo) * (next - hi) < 0.0 && std::fabs(next - x) < 0.5 * prevStep;
    }
    if (!newtonOk) next = 0.5 * (lo + hi);
    prevStep = std::fabs(next - x);
    if (next == x) return x;
    x = next;
  }
  return x;
}

}  // namespace

std::unique_ptr<TList<double>> TNumeric::NewtonRaphsonRoots(const TGeInterval& Interval, double Tol,
                                                           const TNumericFunction& F, const TNumericFunction& DF) {
  constexpr const char* where = "TNumeric.NewtonRaphsonRoots";
  internal::CheckFinite(Interval.Lower, where, "Lower");
  internal::CheckFinite(Interval.Upper, where, "Upper");
  internal::CheckFinite(Tol, where, "Tol");
  auto result = std::make_unique<TList<double>>();
  double a = Interval.Lower, b = Interval.Upper;
  if (a > b) std::swap(a, b);
  const double tol = std::fabs(Tol);
  std::vector<double> roots;
  if (a == b) {
    if (std::fabs(F(a)) <= tol) result->Add(a);
    return result;
  }
  constexpr int cells = 64;
  std::array<double, cells + 1> xs{}, fs{}, ds{};
  for (int i = 0; i <= cells; ++i) {
    const auto k = static_cast<std::size_t>(i);
    xs[k] = i == cells ? b : a + (b - a) * i / cells;
    fs[k] = F(xs[k]);
    ds[k] = DF(xs[k]);
  }
  for (std::size_t i = 0; i < cells; ++i) {
    const double x0 = xs[i], x1 = xs[i + 1], f0 = fs[i], f1 = fs[i + 1];
    if (!std::isfinite(f0) || !std::isfinite(f1)) continue;
    if ((f0 < 0.0 && f1 > 0.0) || (f0 > 0.0 && f1 < 0.0)) {
      roots.push_back(SolveBracketed(F, &DF, x0, x1, f0, f1));
      continue;
    }
    if (f0 == 0.0 || f1 == 0.0) continue;
    // No change of sign: F may still dip to 0 and back around an extremum inside the cell.
    const double d0 = ds[i], d1 = ds[i + 1];
    const bool towardZero = (f0 > 0.0 && d0 < 0.0) || (f0 < 0.0 && d0 > 0.0);
    if (!towardZero || !((d0 < 0.0 && d1 > 0.0) || (d0 > 0.0 && d1 < 0.0))) continue;
    const double xm = SolveBracketed(DF, nullptr, x0, x1, d0, d1);
    const double fm = F(xm);
    if (std::fabs(fm) <= tol) {
      roots.push_back(xm);
    } else if ((fm < 0.0) != (f0 < 0.0)) {
      roots.push_back(SolveBracketed(F, &DF, x0, xm, f0, fm));
      roots.push_back(SolveBracketed(F, &DF, xm, x1, fm, f1));
    }
  }
  // A sample where |F| is within Tol and smallest among its neighbours is a root too: an end
  // of the interval that F just reaches, or a touch that falls right on a sample.
  for (std::size_t i = 0; i <= cells; ++i) {
    const double fi = std::fabs(fs[i]);
    if (fi <= tol && (i == 0 || fi <= std::fabs(fs[i - 1])) && (i == cells || fi <= std::fabs(fs[i + 1])))
      roots.push_back(xs[i]);
  }
  std::sort(roots.begin(), roots.end());
  // Neighbouring roots between which F stays within Tol of 0 are one touch of the axis,
  // given where |F| is least.
  std::size_t i = 0;
  while (i < roots.size()) {
    double best = roots[i], bestF = std::fabs(F(roots[i]));
    std::size_t j = i + 1;
    while (j < roots.size() && std::fabs(F(0.5 * (roots[j - 1] + roots[j]))) <= tol) {
      const double fj = std::fabs(F(roots[j]));
      if (fj < bestF) best = roots[j], bestF = fj;
      ++j;
    }
    result->Add(best);
    i = j;
  }
  return result;
}

bool TBrent::BoundedBrentMinimum(const TNumericFunction& F, const TGeInterval& Interval, double& X, double& FX,
                                 double Tol, int MaxIter) {
  constexpr const char* where = "TBrent.BoundedBrentMinimum";
  internal::CheckFinite(Interval.Lower, where, "Lower");
  internal::CheckFinite(Interval.Upper, where, "Upper");
  internal::CheckFinite(Tol, where, "Tol");
  constexpr double golden = 0.3819660112501051;  // (3 - sqrt(5)) / 2
  constexpr double tiny = 1e-12;
  double a = std::min(Interval.Lower, Interval.Upper), b = std::max(Interval.Lower, Interval.Upper);
  // x: the best point so far; w: the second best; v: the previous w.
  double x = a + golden * (b - a);
  double w = x, v = x;
  double fx = F(x);
  double fw = fx, fv = fx;
  double d = 0.0, e = 0.0;
  const double tol = std::fabs(Tol);
  for (int iter = 0; iter < MaxIter; ++iter) {
    const double xm = 0.5 * (a + b);
    const double tol1 = tol * std::fabs(x) + tiny;
    const double tol2 = 2.0 * tol1;
    if (std::fabs(x - xm) <= tol2 - 0.5 * (b - a)) {
      X = x;
      FX = fx;
      return true;
    }
    bool golden_step = true;
    if (std::fabs(e) > tol1) {
      // A parabola through x, w and v.
      double r = (x - w) * (fx - fv);
      double q = (x - v) * (fx - fw);
      double p = (x - v) * q - (x - w) * r;
      q = 2.0 * (q - r);
      if (q > 0.0) p = -p;
      q = std::fabs(q);
      const double eOld = e;
      if (std::fabs(p) < std::fabs(0.5 * q * eOld) && p > q * (a - x) && p < q * (b - x)) {
        e = d;
        d = p / q;
        const double u = x + d;
        if (u - a < tol2 || b - u < tol2) d = xm >= x ? tol1 : -tol1;
        golden_step = false;
      }
    }
    if (golden_step) {
      e = (x >= xm ? a : b) - x;
      d = golden * e;
    }
    const double u = std::fabs(d) >= tol1 ? x + d : x + (d > 0.0 ? tol1 : -tol1);
    const double fu = F(u);
    if (fu <= fx) {
      if (u >= x)
        a = x;
      else
        b = x;
      v = w, fv = fw;
      w = x, fw = fx;
      x = u, fx = fu;
    } else {
      if (u < x)
        a = u;
      else
        b = u;
      if (fu <= fw || w == x) {
        v = w, fv = fw;
        w = u, fw = fu;
      } else if (fu <= fv || v == x || v == w) {
        v = u, fv = fu;
      }
    }
  }
  return false;
}

}  // namespace orvane
