#pragma once
// Helpers shared by the test programs: seeded random outlines (double rings, integer paths),
// independent references to check the kernel against (distances, even-odd classification,
// cycles of vertices), and the text and type of a raised exception.
//
// The references are written here from first principles and call no kernel routine, so that
// a fault in the kernel cannot hide in its own reference.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"

namespace orvane::testing {

// ---- Random outlines ----------------------------------------------------------------------

// A star-shaped ring about Center (simple by construction), closed (first vertex repeated),
// counter-clockwise: vertices at increasing angles, jittered by up to 0.8 of a step, with
// radii between RMin and RMax.
inline TDynPoints2D Star(std::mt19937& Rng, int Corners, const TPoint2D& Center = TPoint2D(0.0, 0.0), double RMin = 1.0,
                         double RMax = 10.0) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  pts.reserve(static_cast<std::size_t>(Corners) + 1);
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.8 * unit(Rng)) * TwoPi / Corners;
    pts.push_back(Center + TPoint2D(std::cos(a), std::sin(a)) * (RMin + (RMax - RMin) * unit(Rng)));
  }
  pts.push_back(pts.front());
  return pts;
}

// The same about the origin with radii between 1 and 10, without the closing vertex.
inline TDynPoints2D RandomStar(std::mt19937& Rng, int Corners) {
  TDynPoints2D pts = Star(Rng, Corners);
  pts.pop_back();
  return pts;
}

// A histogram ring on integer coordinates: bars of random height on [X0 + k, X0 + k + 1],
// standing on height Y0; closed, counter-clockwise, with many level and vertical edges.
inline TDynPoints2D Histogram(std::mt19937& Rng, int Bars, double X0, double Y0) {
  std::uniform_int_distribution<int> h(1, 6);
  TDynPoints2D pts{{X0, Y0}, {X0 + Bars, Y0}};
  int prev = -1;
  for (int k = Bars - 1; k >= 0; --k) {
    int hk = h(Rng);
    if (hk == prev) hk = hk % 6 + 1;
    pts.emplace_back(X0 + k + 1, Y0 + hk);
    pts.emplace_back(X0 + k, Y0 + hk);
    prev = hk;
  }
  pts.push_back(pts.front());
  return pts;
}

// A simple integer polygon (star-shaped about (CX, CY)) of Count vertices at evenly spaced
// angles, radii in [R / 3, R]; anticlockwise unless Clockwise. No closing vertex.
inline TPath64 StarPolygon(std::mt19937_64& Rng, std::int64_t CX, std::int64_t CY, double R, int Count,
                           bool Clockwise = false) {
  std::uniform_real_distribution<double> radius(R / 3, R);
  TPath64 p;
  for (int i = 0; i < Count; ++i) {
    const double a = TwoPi * (i + 0.5) / Count;
    const double r = radius(Rng);
    p.emplace_back(CX + std::llround(r * std::cos(a)), CY + std::llround(r * std::sin(a)));
  }
  if (Clockwise) std::reverse(p.begin(), p.end());
  return p;
}

// Count integer star polygons of 3 to 14 vertices scattered over [0, Extent]^2.
inline TPaths64 RandomPolygons(std::mt19937_64& Rng, int Count, std::int64_t Extent, double R) {
  std::uniform_int_distribution<std::int64_t> pos(0, Extent);
  std::uniform_int_distribution<int> verts(3, 14);
  TPaths64 out;
  for (int i = 0; i < Count; ++i) out.push_back(StarPolygon(Rng, pos(Rng), pos(Rng), R, verts(Rng)));
  return out;
}

// The rectangle L..R by B..T as an anticlockwise integer path.
inline TPath64 Rect(std::int64_t L, std::int64_t B, std::int64_t R, std::int64_t T) {
  return TPath64{{L, B}, {R, B}, {R, T}, {L, T}};
}

// ---- Independent references ----------------------------------------------------------------

// (B - A) x (C - A): positive when C lies left of A -> B.
inline double Orient(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C) {
  return (B.X - A.X) * (C.Y - A.Y) - (B.Y - A.Y) * (C.X - A.X);
}

inline double PointSegDist(const TPoint2D& P, const TPoint2D& A, const TPoint2D& B) {
  const TPoint2D d = B - A;
  const double len2 = d.X * d.X + d.Y * d.Y;
  double t = len2 > 0.0 ? ((P.X - A.X) * d.X + (P.Y - A.Y) * d.Y) / len2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return P.DistanceTo(A + d * t);
}

inline double SegSegDist(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C, const TPoint2D& D) {
  const double o1 = Orient(A, B, C), o2 = Orient(A, B, D), o3 = Orient(C, D, A), o4 = Orient(C, D, B);
  if (((o1 > 0 && o2 < 0) || (o1 < 0 && o2 > 0)) && ((o3 > 0 && o4 < 0) || (o3 < 0 && o4 > 0))) return 0.0;
  return std::min({PointSegDist(A, C, D), PointSegDist(B, C, D), PointSegDist(C, A, B), PointSegDist(D, A, B)});
}

// Smallest distance between the edges of two closed rings (first vertex repeated), with a
// box filter that stops looking farther than Cap.
inline double BoundaryDist(const TDynPoints2D& P, const TDynPoints2D& Q, double Cap = 1e-3) {
  double best = MaxDouble;
  const TRect2D qb = [&] {
    TRect2D r;
    r.SetByPointsExt(Q);
    return r.InflatedRect(Cap, Cap);
  }();
  for (std::size_t i = 0; i + 1 < P.size(); ++i) {
    const TRect2D sa = TRect2D::CreateNormal(P[i], P[i + 1]).InflatedRect(Cap, Cap);
    if (sa.Intersect(qb).IsValid() == false) continue;
    for (std::size_t j = 0; j + 1 < Q.size(); ++j) {
      if (!sa.Intersect(TRect2D::CreateNormal(Q[j], Q[j + 1])).IsValid()) continue;
      best = std::min(best, SegSegDist(P[i], P[i + 1], Q[j], Q[j + 1]));
    }
  }
  return best;
}

// Even-odd classification of a point off the boundary of a closed ring: true inside.
inline bool EvenOddInside(const TDynPoints2D& P, const TPoint2D& Pt) {
  bool in = false;
  for (std::size_t i = 0; i + 1 < P.size(); ++i) {
    const TPoint2D& a = P[i];
    const TPoint2D& b = P[i + 1];
    if ((a.Y > Pt.Y) != (b.Y > Pt.Y)) {
      const double x = a.X + (Pt.Y - a.Y) / (b.Y - a.Y) * (b.X - a.X);
      if (Pt.X < x) in = !in;
    }
  }
  return in;
}

// Distance from Pt to the edges of a closed ring (first vertex repeated).
inline double DistToRing(const TDynPoints2D& P, const TPoint2D& Pt) {
  double best = MaxDouble;
  for (std::size_t i = 0; i + 1 < P.size(); ++i) best = std::min(best, PointSegDist(Pt, P[i], P[i + 1]));
  return best;
}

// No two edges meet except neighbours at their shared vertex, and neighbours do not fold
// back onto each other.
inline bool IsSimpleRing(const TDynPoints2D& P) {
  const std::size_t n = P.size() - 1;
  if (n < 3) return false;
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t next = (i + 1) % n;
    if (PointSegDist(P[i], P[next], P[next + 1]) <= 1e-9 || PointSegDist(P[next + 1], P[i], P[i + 1]) <= 1e-9)
      return false;
    for (std::size_t j = i + 2; j < n; ++j) {
      if (i == 0 && j == n - 1) continue;
      if (SegSegDist(P[i], P[i + 1], P[j], P[j + 1]) <= 1e-9) return false;
    }
  }
  return true;
}

// A random simple ring of 3 to MaxCorners vertices on the whole numbers 0 .. Size: many
// level and vertical edges, collinear edges and vertices that meet others exactly.
inline TDynPoints2D GridRing(std::mt19937& Rng, int MaxCorners, int Size) {
  std::uniform_int_distribution<int> corners(3, MaxCorners);
  std::uniform_int_distribution<int> coord(0, Size);
  for (;;) {
    TDynPoints2D p;
    const int n = corners(Rng);
    for (int i = 0; i < n; ++i) p.emplace_back(coord(Rng), coord(Rng));
    p.push_back(p.front());
    if (IsSimpleRing(p)) return p;
  }
}

inline TDynPoints2D Reversed(TDynPoints2D P) {
  std::reverse(P.begin(), P.end());
  return P;
}

// The ring started at vertex K (closing vertex kept as the new first one).
inline TDynPoints2D Rotated(const TDynPoints2D& P, std::size_t K) {
  TDynPoints2D q(P.begin() + static_cast<std::ptrdiff_t>(K), P.end() - 1);
  q.insert(q.end(), P.begin(), P.begin() + static_cast<std::ptrdiff_t>(K));
  q.push_back(q.front());
  return q;
}

inline TDynPoints2D Moved(TDynPoints2D P, const TPoint2D& V) {
  for (TPoint2D& p : P) p += V;
  return P;
}

// Same cycle of vertices (both closed, first repeated), read from any start.
inline bool SameCycle(const TDynPoints2D& A, const TDynPoints2D& B) {
  if (A.size() != B.size() || A.size() < 2 || A.front() != A.back() || B.front() != B.back()) return false;
  const std::size_t n = A.size() - 1;
  for (std::size_t s = 0; s < n; ++s) {
    bool same = true;
    for (std::size_t k = 0; k < n && same; ++k) same = A[k] == B[(s + k) % n];
    if (same) return true;
  }
  return false;
}

// ---- Expectations ---------------------------------------------------------------------------

// Got lies within Tol of Want.
inline void ExpectNear(const TPoint2D& Got, const TPoint2D& Want, double Tol = 1e-12) {
  EXPECT_LE(std::hypot(Got.X - Want.X, Got.Y - Want.Y), Tol) << Got.ToString() << " vs " << Want.ToString();
}

// The message of the kernel exception that Body raises, or "<no exception>".
template <class F>
std::string MessageOf(F&& Body) {
  try {
    Body();
  } catch (const Exception& e) {
    return e.Message;
  }
  return "<no exception>";
}

// Call must raise exactly E (not a subclass) with Text.
template <class E, class F>
void ExpectRaise(F&& Call, const char* Text) {
  try {
    Call();
    ADD_FAILURE() << "nothing raised, expected " << Text;
  } catch (const Exception& e) {
    EXPECT_EQ(typeid(e), typeid(E)) << Text;
    EXPECT_STREQ(e.what(), Text);
  }
}

}  // namespace orvane::testing
