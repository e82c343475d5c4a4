#include "orvane/splines/SplinePieces.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::internal {

namespace {

using TPoly = std::vector<double>;  // Bernstein coefficients on [0, 1]

std::size_t Ux(int I) { return static_cast<std::size_t>(I); }

double Binom(int N, int K) {
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
  for (int i = 0; i <= m; ++i)
    for (int j = 0; j <= n; ++j) c[Ux(i + j)] += Binom(m, i) * Binom(n, j) * A[Ux(i)] * B[Ux(j)];
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
double OneRoot(const TPoly& C) {
  double s0 = 0.0, s1 = 1.0, f0 = C.front(), f1 = C.back();
  int side = 0;
  for (int it = 0; it < 200 && s1 - s0 > 1e-16; ++it) {
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

struct TGauss {
  static constexpr int N = 10;
  std::array<double, N> X{}, W{};
  TGauss() {
    // Nodes of the Legendre polynomial by Newton's method from Chebyshev guesses.
    for (int i = 0; i < N; ++i) {
      double x = std::cos(3.14159265358979323846 * (i + 0.75) / (N + 0.5)), dp = 1.0;
      for (int it = 0; it < 100; ++it) {
        double p0 = 1.0, p1 = x;
        for (int k = 2; k <= N; ++k) {
          const double p2 = ((2 * k - 1) * x * p1 - (k - 1) * p0) / k;
          p0 = p1;
          p1 = p2;
        }
        dp = N * (x * p1 - p0) / (x * x - 1.0);
        const double dx = p1 / dp;
        x -= dx;
        if (std::fabs(dx) < 1e-16) break;
      }
      X[Ux(i)] = x;
      W[Ux(i)] = 2.0 / ((1.0 - x * x) * dp * dp);
    }
  }
};

double Gauss(const TDynPoints3D& Hom, double A, double B) {
  static const TGauss g;
  const double h = 0.5 * (B - A), m = 0.5 * (A + B);
  double s = 0.0;
  for (int i = 0; i < TGauss::N; ++i) s += g.W[Ux(i)] * PieceSpeed(Hom, m + h * g.X[Ux(i)]);
  return s * h;
}

double Adaptive(const TDynPoints3D& Hom, double A, double B, double Whole, double Tol, int Depth) {
  const double m = 0.5 * (A + B);
  const double l = Gauss(Hom, A, m), r = Gauss(Hom, m, B);
  if (Depth > 40 || std::fabs(l + r - Whole) <= Tol) return l + r;
  return Adaptive(Hom, A, m, l, Tol * 0.7, Depth + 1) + Adaptive(Hom, m, B, r, Tol * 0.7, Depth + 1);
}

}  // namespace

TPoint2D PieceEval(const TDynPoints3D& Hom, double T, TPoint2D* Deriv) {
  const int p = static_cast<int>(Hom.size()) - 1;
  std::array<TPoint3D, 32> small;
  TDynPoints3D big;
  TPoint3D* w = small.data();
  if (Hom.size() > small.size()) {
    big = Hom;
    w = big.data();
  } else {
    std::copy(Hom.begin(), Hom.end(), w);
  }
  for (int r = 1; r < p; ++r)
    for (int i = 0; i <= p - r; ++i) w[i] = w[i] + (w[i + 1] - w[i]) * T;
  TPoint3D h = w[0], d{0.0, 0.0, 0.0};
  if (p >= 1) {
    d = (w[1] - w[0]) * double(p);
    h = w[0] + (w[1] - w[0]) * T;
  }
  const TPoint2D c(h.X / h.Z, h.Y / h.Z);
  if (Deriv != nullptr) *Deriv = TPoint2D((d.X - c.X * d.Z) / h.Z, (d.Y - c.Y * d.Z) / h.Z);
  return c;
}

double PieceSpeed(const TDynPoints3D& Hom, double T) {
  TPoint2D d;
  PieceEval(Hom, T, &d);
  return std::hypot(d.X, d.Y);
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
  const int p = static_cast<int>(Hom.size()) - 1;
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
  return w;
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
