#include "orvane/splines/internal/SplinePieces.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orvane/foundation/internal/GaussRule.h"

namespace orvane::internal {

namespace {

using TPoly = std::vector<double>;  // Bernstein coefficients on [0, 1]

std::size_t Ux(int I) { return static_cast<std::size_t>(I); }

constexpr int kBinomTable = 64;
using TBinomTable = std::array<std::array<double, kBinomTable>, kBinomTable>;

constexpr TBinomTable MakeBinomTable() {
  TBinomTable c{};
  for (std::size_t n = 0; n < kBinomTable; ++n) {
    c[n][0] = 1.0;
    for (std::size_t k = 1; k <= n; ++k) c[n][k] = c[n - 1][k - 1] + (k < n ? c[n - 1][k] : 0.0);
  }
  return c;
}

constexpr TBinomTable kBinom = MakeBinomTable();

double Binom(int N, int K) {
  if (N < kBinomTable) return kBinom[Ux(N)][Ux(K)];
  double r = 1.0;
  for (int i = 1; i <= K; ++i) r = r * (N - K + i) / i;
  return r;
}

TPoly Deriv(const TPoly& C) {
  const int n = static_cast<int>(C.size()) - 1;
  if (n <= 0) return TPoly(1, 0.0);
  TPoly d(Ux(n));
  for (int i = 0; i < n; ++i) d[Ux(i)] = n * (C[Ux(i + 1)] - C[Ux(i)]);
  return d;
}

TPoly Mul(const TPoly& A, const TPoly& B) {
  const int m = static_cast<int>(A.size()) - 1, n = static_cast<int>(B.size()) - 1;
  TPoly c(Ux(m + n + 1), 0.0);
  std::array<double, 64> bs{};
  std::vector<double> big;
  double* sb = bs.data();
  if (Ux(n) + 1 > bs.size()) {
    big.resize(Ux(n) + 1);
    sb = big.data();
  }
  for (int j = 0; j <= n; ++j) sb[j] = Binom(n, j) * B[Ux(j)];
  for (int i = 0; i <= m; ++i) {
    const double a = Binom(m, i) * A[Ux(i)];
    double* out = c.data() + i;
    for (int j = 0; j <= n; ++j) out[j] += a * sb[j];
  }
  for (int k = 0; k <= m + n; ++k) c[Ux(k)] /= Binom(m + n, k);
  return c;
}

void AddTo(TPoly& A, const TPoly& B, double F) {
  for (std::size_t i = 0; i < A.size(); ++i) A[i] += F * B[i];
}

double EvalPoly(const TPoly& C, double T) {
  std::array<double, 64> small{};
  std::vector<double> big;
  double* w = small.data();
  if (C.size() > small.size()) {
    big = C;
    w = big.data();
  } else {
    std::copy(C.begin(), C.end(), w);
  }
  const int n = static_cast<int>(C.size()) - 1;
  for (int r = 1; r <= n; ++r)
    for (int i = 0; i <= n - r; ++i) w[i] = w[i] + T * (w[i + 1] - w[i]);
  return w[0];
}

void SplitPoly(const TPoly& C, TPoly& L, TPoly& R) {
  const int n = static_cast<int>(C.size()) - 1;
  TPoly w = C;
  L.assign(C.size(), 0.0);
  R.assign(C.size(), 0.0);
  L[0] = w[0];
  R[Ux(n)] = w[Ux(n)];
  for (int r = 1; r <= n; ++r) {
    for (int i = 0; i <= n - r; ++i) w[Ux(i)] = 0.5 * (w[Ux(i)] + w[Ux(i + 1)]);
    L[Ux(r)] = w[0];
    R[Ux(n - r)] = w[Ux(n - r)];
  }
}

// One root of C between 0 and 1, whose end values have opposite signs (Illinois method).
// The callers want extremes of smooth functions, whose values at a parameter off by d are
// off by about d squared: 1e-12 of the stretch is ample.
double OneRoot(const TPoly& C) {
  double s0 = 0.0, s1 = 1.0, f0 = C.front(), f1 = C.back();
  int side = 0;
  for (int it = 0; it < 200 && s1 - s0 > 1e-12; ++it) {
    const double s = std::clamp((s0 * f1 - s1 * f0) / (f1 - f0), s0, s1);
    const double fs = EvalPoly(C, s);
    if (fs == 0.0) return s;
    if ((fs > 0.0) == (f1 > 0.0)) {
      s1 = s;
      f1 = fs;
      if (side == -1) f0 *= 0.5;
      side = -1;
    } else {
      s0 = s;
      f0 = fs;
      if (side == 1) f1 *= 0.5;
      side = 1;
    }
    // Regula falsi can creep from one side; a bisection step keeps the bracket shrinking.
    if (it % 8 == 7) {
      const double m = 0.5 * (s0 + s1), fm = EvalPoly(C, m);
      if ((fm > 0.0) == (f1 > 0.0)) {
        s1 = m;
        f1 = fm;
      } else {
        s0 = m;
        f0 = fm;
      }
    }
  }
  return 0.5 * (s0 + s1);
}

// Roots in [A, B] of the polynomial with Bernstein coefficients C on that stretch. Descartes'
// rule for Bernstein form bounds the roots by the sign changes of the coefficients; the
// budget bounds the work on a polynomial that is zero up to rounding.
void Isolate(const TPoly& C, double A, double B, int Depth, int& Budget, std::vector<double>& Out) {
  if (--Budget < 0) return;
  int changes = 0, last = 0;
  for (double c : C) {
    const int s = c > 0.0 ? 1 : (c < 0.0 ? -1 : 0);
    if (s == 0) continue;
    if (last != 0 && s != last) ++changes;
    last = s;
  }
  if (changes == 0) return;
  if (changes == 1 && C.front() != 0.0 && C.back() != 0.0) {
    Out.push_back(A + (B - A) * OneRoot(C));
    return;
  }
  if (Depth > 50 || B - A < 1e-15) {
    Out.push_back(0.5 * (A + B));
    return;
  }
  TPoly l, r;
  SplitPoly(C, l, r);
  const double m = 0.5 * (A + B);
  Isolate(l, A, m, Depth + 1, Budget, Out);
  Isolate(r, m, B, Depth + 1, Budget, Out);
}

std::vector<double> Roots(const TPoly& C) {
  std::vector<double> out;
  if (C.size() == 3) {
    double t[2];
    const int k = QuadraticRoots01(C[0], C[1], C[2], t);
    if (k >= 0) return std::vector<double>(t, t + k);
  }
  int budget = 600;
  Isolate(C, 0.0, 1.0, 0, budget, out);
  std::sort(out.begin(), out.end());
  return out;
}

bool IsRational(const TDynPoints3D& Hom) {
  for (const TPoint3D& q : Hom)
    if (q.Z != Hom.front().Z) return true;
  return false;
}

double Gauss(const TDynPoints3D& Hom, double A, double B) {
  const internal::TGaussRule& g = internal::TabledGaussRule(10);
  const double h = 0.5 * (B - A), m = 0.5 * (A + B);
  double s = 0.0;
  for (std::size_t i = 0; i < g.X.size(); ++i) s += g.W[i] * PieceSpeed(Hom, m + h * g.X[i]);
  return s * h;
}

double Adaptive(const TDynPoints3D& Hom, double A, double B, double Whole, double Tol, int Depth) {
  const double m = 0.5 * (A + B);
  const double l = Gauss(Hom, A, m), r = Gauss(Hom, m, B);
  if (Depth > 40 || std::fabs(l + r - Whole) <= Tol) return l + r;
  return Adaptive(Hom, A, m, l, Tol * 0.7, Depth + 1) + Adaptive(Hom, m, B, r, Tol * 0.7, Depth + 1);
}

}  // namespace

int QuadraticRoots01(double C0, double C1, double C2, double* Out) {
  // a t^2 + b t + c, the root that avoids cancellation first.
  const double a = C0 - 2.0 * C1 + C2, b = 2.0 * (C1 - C0), c = C0;
  const double scale = std::fabs(C0) + std::fabs(C1) + std::fabs(C2);
  int n = 0;
  if (std::fabs(a) > 1e-12 * scale) {
    const double disc = b * b - 4.0 * a * c;
    if (disc < 0.0) return 0;
    const double q = -0.5 * (b + std::copysign(std::sqrt(disc), b));
    const double r0 = q / a, r1 = q != 0.0 ? c / q : r0;
    for (const double t : {std::min(r0, r1), std::max(r0, r1)})
      if (t >= 0.0 && t <= 1.0 && (n == 0 || t != Out[0])) Out[n++] = t;
    return n;
  }
  if (std::fabs(b) > 1e-12 * scale) {
    const double t = -c / b;
    if (t >= 0.0 && t <= 1.0) Out[n++] = t;
    return n;
  }
  return -1;
}

TPoint2D PieceEval(const TDynPoints3D& Hom, double T, TPoint2D* Deriv) {
  const int p = static_cast<int>(Hom.size()) - 1;
  TPoint3D h = Hom[0], d{0.0, 0.0, 0.0};
  if (p == 3) {
    // The common cubic written out.
    const double s = 1.0 - T, b0 = s * s * s, b1 = 3.0 * s * s * T, b2 = 3.0 * s * T * T, b3 = T * T * T;
    const double d0 = -3.0 * s * s, d1 = 3.0 * s * (s - 2.0 * T), d2 = 3.0 * T * (2.0 * s - T), d3 = 3.0 * T * T;
    const TPoint3D &q0 = Hom[0], &q1 = Hom[1], &q2 = Hom[2], &q3 = Hom[3];
    h = {b0 * q0.X + b1 * q1.X + b2 * q2.X + b3 * q3.X, b0 * q0.Y + b1 * q1.Y + b2 * q2.Y + b3 * q3.Y,
         b0 * q0.Z + b1 * q1.Z + b2 * q2.Z + b3 * q3.Z};
    d = {d0 * q0.X + d1 * q1.X + d2 * q2.X + d3 * q3.X, d0 * q0.Y + d1 * q1.Y + d2 * q2.Y + d3 * q3.Y,
         d0 * q0.Z + d1 * q1.Z + d2 * q2.Z + d3 * q3.Z};
  } else if (p >= 1) {
    std::array<double, 96> small;
    std::vector<double> big;
    double* w = small.data();
    if (3 * Hom.size() > small.size()) {
      big.resize(3 * Hom.size());
      w = big.data();
    }
    for (std::size_t i = 0; i < Hom.size(); ++i) {
      w[3 * i] = Hom[i].X;
      w[3 * i + 1] = Hom[i].Y;
      w[3 * i + 2] = Hom[i].Z;
    }
    for (int r = 1; r < p; ++r)
      for (int i = 0; i < 3 * (p - r + 1); ++i) w[i] = w[i] + (w[i + 3] - w[i]) * T;
    d = {(w[3] - w[0]) * p, (w[4] - w[1]) * p, (w[5] - w[2]) * p};
    h = {w[0] + (w[3] - w[0]) * T, w[1] + (w[4] - w[1]) * T, w[2] + (w[5] - w[2]) * T};
  }
  const TPoint2D c(h.X / h.Z, h.Y / h.Z);
  if (Deriv != nullptr) *Deriv = TPoint2D((d.X - c.X * d.Z) / h.Z, (d.Y - c.Y * d.Z) / h.Z);
  return c;
}

double PieceSpeed(const TDynPoints3D& Hom, double T) {
  TPoint2D d;
  PieceEval(Hom, T, &d);
  return std::sqrt(d.X * d.X + d.Y * d.Y);
}

double PieceLength(const TDynPoints3D& Hom, double A, double B) {
  if (!(B > A)) return 0.0;
  double poly = 0.0;
  for (std::size_t i = 1; i < Hom.size(); ++i)
    poly += std::hypot(Hom[i].X / Hom[i].Z - Hom[i - 1].X / Hom[i - 1].Z, Hom[i].Y / Hom[i].Z - Hom[i - 1].Y / Hom[i - 1].Z);
  if (poly == 0.0) return 0.0;
  return Adaptive(Hom, A, B, Gauss(Hom, A, B), 1e-14 * poly, 0);
}

TDynPoints3D PieceSub(const TDynPoints3D& Hom, double A, double B) {
  TDynPoints3D out;
  PieceSub(Hom, A, B, out);
  return out;
}

void PieceSub(const TDynPoints3D& Hom, double A, double B, TDynPoints3D& Out) {
  const int p = static_cast<int>(Hom.size()) - 1;
  if (p == 3) {
    // The cubic by its blossom: the points of [A, B] are f(A,A,A), f(A,A,B), f(A,B,B),
    // f(B,B,B), with no work arrays.
    const auto blossom = [&Hom](double U, double V, double W) {
      const TPoint3D a1 = Hom[0] + (Hom[1] - Hom[0]) * U, b1 = Hom[1] + (Hom[2] - Hom[1]) * U,
                     c1 = Hom[2] + (Hom[3] - Hom[2]) * U;
      const TPoint3D a2 = a1 + (b1 - a1) * V, b2 = b1 + (c1 - b1) * V;
      return a2 + (b2 - a2) * W;
    };
    Out.resize(4);
    Out[0] = blossom(A, A, A);
    Out[1] = blossom(A, A, B);
    Out[2] = blossom(A, B, B);
    Out[3] = blossom(B, B, B);
    return;
  }
  TDynPoints3D w = Hom;
  const auto keepLeft = [p](TDynPoints3D& V, double T) {
    TDynPoints3D out(V.size());
    out[0] = V[0];
    for (int r = 1; r <= p; ++r) {
      for (int i = 0; i <= p - r; ++i) V[Ux(i)] = V[Ux(i)] + (V[Ux(i + 1)] - V[Ux(i)]) * T;
      out[Ux(r)] = V[0];
    }
    V = out;
  };
  if (B < 1.0) keepLeft(w, B);
  if (A > 0.0 && B > 0.0) {
    // The right part of [0, B] from A / B: reverse, take the left part, reverse back.
    std::reverse(w.begin(), w.end());
    keepLeft(w, 1.0 - A / B);
    std::reverse(w.begin(), w.end());
  }
  Out = std::move(w);
}

std::vector<double> PieceStationary(const TDynPoints3D& Hom, const TPoint2D& Dir) {
  TPoly n(Hom.size()), w(Hom.size());
  for (std::size_t i = 0; i < Hom.size(); ++i) {
    n[i] = Dir.X * Hom[i].X + Dir.Y * Hom[i].Y;
    w[i] = Hom[i].Z;
  }
  if (!IsRational(Hom)) return Roots(Deriv(n));
  TPoly g = Mul(Deriv(n), w);
  AddTo(g, Mul(n, Deriv(w)), -1.0);
  return Roots(g);
}

std::vector<double> PieceDistanceCandidates(const TDynPoints3D& Hom, const TPoint2D& Q) {
  const std::size_t k = Hom.size();
  TPoly ax(k), ay(k), w(k);
  for (std::size_t i = 0; i < k; ++i) {
    ax[i] = Hom[i].X - Q.X * Hom[i].Z;
    ay[i] = Hom[i].Y - Q.Y * Hom[i].Z;
    w[i] = Hom[i].Z;
  }
  // The distance is stationary where (C - Q) . C' vanishes; with A := W (C - Q) that has the
  // sign of W (A . A') - W' (A . A), or of A . A' when W is constant.
  TPoly g = Mul(ax, Deriv(ax));
  AddTo(g, Mul(ay, Deriv(ay)), 1.0);
  if (IsRational(Hom)) {
    TPoly aa = Mul(ax, ax);
    AddTo(aa, Mul(ay, ay), 1.0);
    TPoly g2 = Mul(w, g);
    AddTo(g2, Mul(Deriv(w), aa), -1.0);
    g = std::move(g2);
  }
  std::vector<double> out{0.0};
  for (double t : Roots(g))
    if (t > 0.0 && t < 1.0) out.push_back(t);
  out.push_back(1.0);
  return out;
}

}  // namespace orvane::internal
