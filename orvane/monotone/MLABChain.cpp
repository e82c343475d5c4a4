#include "orvane/monotone/MLABChain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

constexpr double KTwoPi = 2.0 * std::numbers::pi;

double PointSegDistance(const TPoint2D& P, const TPoint2D& A, const TPoint2D& B) {
  const TPoint2D d = B - A;
  const double len2 = d.DotMul(d);
  double t = len2 > 0.0 ? (P - A).DotMul(d) / len2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  const double dx = P.X - (A.X + t * d.X);
  const double dy = P.Y - (A.Y + t * d.Y);
  return std::sqrt(dx * dx + dy * dy);
}

// An arc segment in polar form; the sweep is signed and below a full turn.
struct TPolarArc {
  TPoint2D M;
  double R = 0.0;
  double Start = 0.0;
  double Sweep = 0.0;
  TPoint2D S;
  TPoint2D E;
};

TPolarArc ToPolar(const TLABSegline& Seg) {
  TPolarArc a;
  a.M = Seg.P2;
  a.S = Seg.P1;
  a.E = Seg.P4;
  a.R = Seg.P1.DistanceTo(Seg.P2);
  a.Start = std::atan2(Seg.P1.Y - Seg.P2.Y, Seg.P1.X - Seg.P2.X);
  const double end = std::atan2(Seg.P4.Y - Seg.P2.Y, Seg.P4.X - Seg.P2.X);
  double ccw = std::fmod(end - a.Start, KTwoPi);
  if (ccw < 0.0) ccw += KTwoPi;
  if (Seg.Bulge > 0.0) {
    a.Sweep = ccw;
  } else {
    a.Sweep = ccw > 0.0 ? -(KTwoPi - ccw) : 0.0;
  }
  return a;
}

bool OnArcAngle(const TPolarArc& A, const TPoint2D& P, double AngTol) {
  return internal::AngleInSweep(std::atan2(P.Y - A.M.Y, P.X - A.M.X), A.Start, A.Sweep, AngTol);
}

double PointArcDistance(const TPoint2D& P, const TPolarArc& A) {
  const double d = P.DistanceTo(A.M);
  if (d > 0.0 && OnArcAngle(A, P, 0.0)) return std::abs(d - A.R);
  return std::min(P.DistanceTo(A.S), P.DistanceTo(A.E));
}

double LineLineDistance(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C, const TPoint2D& D) {
  const double o1 = (B - A).CrossMul(C - A);
  const double o2 = (B - A).CrossMul(D - A);
  const double o3 = (D - C).CrossMul(A - C);
  const double o4 = (D - C).CrossMul(B - C);
  if (((o1 > 0.0 && o2 < 0.0) || (o1 < 0.0 && o2 > 0.0)) && ((o3 > 0.0 && o4 < 0.0) || (o3 < 0.0 && o4 > 0.0)))
    return 0.0;
  return std::min(std::min(PointSegDistance(A, C, D), PointSegDistance(B, C, D)),
                  std::min(PointSegDistance(C, A, B), PointSegDistance(D, A, B)));
}

// The nearest pair of points lies at an end of one of the two, at a crossing, or where the
// circle's normal is perpendicular to the line: each candidate below is a true distance
// between the two, so the least of them is the distance.
double LineArcDistance(const TPoint2D& A, const TPoint2D& B, const TPolarArc& Arc, double Tol) {
  double best = std::min(PointArcDistance(A, Arc), PointArcDistance(B, Arc));
  best = std::min(best, std::min(PointSegDistance(Arc.S, A, B), PointSegDistance(Arc.E, A, B)));
  if (best <= Tol || Arc.R <= 0.0) return best;
  const double angTol = Tol / Arc.R;
  const TPoint2D d = B - A;
  const TPoint2D f = A - Arc.M;
  const double a = d.DotMul(d);
  if (a > 0.0) {
    const double b = 2.0 * f.DotMul(d);
    const double c = f.DotMul(f) - Arc.R * Arc.R;
    const double disc = b * b - 4.0 * a * c;
    if (disc >= 0.0) {
      const double sq = std::sqrt(disc);
      for (double t : {(-b - sq) / (2.0 * a), (-b + sq) / (2.0 * a)}) {
        if (t < 0.0 || t > 1.0) continue;
        const TPoint2D p(A.X + t * d.X, A.Y + t * d.Y);
        if (OnArcAngle(Arc, p, angTol)) return 0.0;
      }
    }
    const double len = std::sqrt(a);
    const TPoint2D n(-d.Y / len, d.X / len);
    for (double s : {1.0, -1.0}) {
      const TPoint2D q(Arc.M.X + s * Arc.R * n.X, Arc.M.Y + s * Arc.R * n.Y);
      if (OnArcAngle(Arc, q, 0.0)) best = std::min(best, PointSegDistance(q, A, B));
    }
  }
  return best;
}

// As for a line: ends, crossings of the circles, and the points on the line of centres.
// Arcs of one circle need no case of their own: where their ranges meet, an end of one
// lies on the other.
double ArcArcDistance(const TPolarArc& P, const TPolarArc& Q, double Tol) {
  double best = std::min(PointArcDistance(P.S, Q), PointArcDistance(P.E, Q));
  best = std::min(best, std::min(PointArcDistance(Q.S, P), PointArcDistance(Q.E, P)));
  if (best <= Tol) return best;
  const double d = P.M.DistanceTo(Q.M);
  if (d <= 0.0 || P.R <= 0.0 || Q.R <= 0.0) return best;
  if (d > P.R + Q.R + Tol) return best;  // the circles, and so the arcs, are apart
  const TPoint2D u((Q.M.X - P.M.X) / d, (Q.M.Y - P.M.Y) / d);
  const double along = (d * d + P.R * P.R - Q.R * Q.R) / (2.0 * d);
  const double h2 = P.R * P.R - along * along;
  if (h2 >= 0.0) {
    const double h = std::sqrt(h2);
    for (double s : {1.0, -1.0}) {
      const TPoint2D x(P.M.X + along * u.X - s * h * u.Y, P.M.Y + along * u.Y + s * h * u.X);
      if (OnArcAngle(P, x, Tol / P.R) && OnArcAngle(Q, x, Tol / Q.R)) return 0.0;
    }
  }
  for (double s : {1.0, -1.0}) {
    const TPoint2D p(P.M.X + s * P.R * u.X, P.M.Y + s * P.R * u.Y);
    if (OnArcAngle(P, p, 0.0)) best = std::min(best, PointArcDistance(p, Q));
    const TPoint2D q(Q.M.X + s * Q.R * u.X, Q.M.Y + s * Q.R * u.Y);
    if (OnArcAngle(Q, q, 0.0)) best = std::min(best, PointArcDistance(q, P));
  }
  return best;
}

// The x extent of a y-monotone segment: an arc reaches past its ends only where it passes
// the height of its centre, on the side it bulges to.
void SegXRange(const TLABSegline& S, double& Lo, double& Hi) {
  Lo = std::min(S.P1.X, S.P4.X);
  Hi = std::max(S.P1.X, S.P4.X);
  if (S.SegType == TSegType::stLine) return;
  const TPoint2D& m = S.P2;
  if ((S.P1.Y - m.Y) * (S.P4.Y - m.Y) > 0.0) return;
  const double r = S.P1.DistanceTo(m);
  const double side = (S.P4.Y - S.P1.Y) * S.Bulge;
  if (side >= 0.0) Hi = std::max(Hi, m.X + r);
  if (side <= 0.0) Lo = std::min(Lo, m.X - r);
}

// The two pieces lie farther apart than Reach by their circles alone: an arc never leaves
// its circle, so circles apart (outside each other, or one inside the other), or a line
// wholly outside or wholly inside an arc's circle, settle a pair without any angle. Near
// misses between round holes and round parts are mostly settled here.
bool ApartByCircles(const TLABSegline& A, const TLABSegline& B, double Reach) {
  const bool aArc = A.SegType == TSegType::stArc;
  const bool bArc = B.SegType == TSegType::stArc;
  if (aArc && bArc) {
    const double ra = A.P1.DistanceTo(A.P2);
    const double rb = B.P1.DistanceTo(B.P2);
    const double d = A.P2.DistanceTo(B.P2);
    // The differences cancel: leave them the rounding of the radii, which may be large.
    const double slack = Reach + 1e-12 * (ra + rb + d);
    return d - ra - rb > slack || std::abs(ra - rb) - d > slack;
  }
  if (aArc == bArc) return false;
  const TLABSegline& arc = aArc ? A : B;
  const TLABSegline& line = aArc ? B : A;
  const double r = arc.P1.DistanceTo(arc.P2);
  const double slack = Reach + 2e-12 * r;
  if (PointSegDistance(arc.P2, line.P1, line.P4) - r > slack) return true;
  return r - std::max(line.P1.DistanceTo(arc.P2), line.P4.DistanceTo(arc.P2)) > slack;
}

}  // namespace

namespace internal {

bool AngleInSweep(double Theta, double Start, double Sweep, double AngTol) {
  // The angle past the start, counted in the sweep's own sense and brought into one turn.
  double rel = std::fmod(Sweep >= 0.0 ? Theta - Start : Start - Theta, KTwoPi);
  if (rel < 0.0) rel += KTwoPi;
  return rel <= std::abs(Sweep) + AngTol || rel >= KTwoPi - AngTol;
}

double MLABSegDistance(const TLABSegline& A, const TLABSegline& B, double Tol) {
  const bool aLine = A.SegType == TSegType::stLine;
  const bool bLine = B.SegType == TSegType::stLine;
  if (aLine && bLine) return LineLineDistance(A.P1, A.P4, B.P1, B.P4);
  if (aLine) return LineArcDistance(A.P1, A.P4, ToPolar(B), Tol);
  if (bLine) return LineArcDistance(B.P1, B.P4, ToPolar(A), Tol);
  return ArcArcDistance(ToPolar(A), ToPolar(B), Tol);
}

}  // namespace internal

std::unique_ptr<TLABPolyline> TMLABChain::New() const { return std::make_unique<TMLABChain>(); }

std::unique_ptr<IVGeometry2D> TMLABChain::Clone() const {
  auto copy = std::make_unique<TMLABChain>();
  copy->FItems = FItems;
  copy->FPositive = FPositive;
  copy->ResetBound();
  return copy;
}

void TMLABChain::Translate(const TPoint2D& Vector) {
  TLABPolyline::Translate(Vector);
  FLeft += Vector.X;
  FRight += Vector.X;
}

void TMLABChain::Rotate(double) { throw Exception("[Error] TMLABChain.Rotate: 禁止旋转"); }
void TMLABChain::RotateBy90() { throw Exception("[Error] TMLABChain.RotateBy90: 禁止旋转"); }
void TMLABChain::RotateBy_90() { throw Exception("[Error] TMLABChain.RotateBy_90: 禁止旋转"); }

TRect2D TMLABChain::BoundBox() const {
  if (IsEmpty()) return TRect2D::Invalid();
  const double y1 = FItems.front().P1.Y;
  const double y2 = FItems.back().P4.Y;
  return TRect2D(FLeft, std::min(y1, y2), FRight, std::max(y1, y2));
}

void TMLABChain::Widen(const TLABSegline& Seg) {
  double lo = 0.0;
  double hi = 0.0;
  SegXRange(Seg, lo, hi);
  FLeft = std::min(FLeft, lo);
  FRight = std::max(FRight, hi);
}

void TMLABChain::ResetBound() {
  FLeft = 1.7976931348623157e308;
  FRight = -1.7976931348623157e308;
  for (const TLABSegline& s : FItems) Widen(s);
}

void TMLABChain::Notify(const TLABSegline& Item, TCollectionNotification Action) {
  TLABPolyline::Notify(Item, Action);
  if (Action == TCollectionNotification::cnAdded)
    Widen(Item);
  else
    ResetBound();
}

bool TMLABChain::IsOverlap(const TMLABChain& Chain, double Tol) const {
  if (IsEmpty() || Chain.IsEmpty()) return false;
  if (FItems.back().P4.Y < Chain.FItems.front().P1.Y - Tol) return false;
  if (FItems.front().P1.Y > Chain.FItems.back().P4.Y + Tol) return false;
  // Touching is decided on computed distances, which carry the rounding of the coordinates:
  // a contact at Tol 0 must survive it.
  double scale = std::max(std::max(std::abs(FLeft), std::abs(FRight)), std::max(std::abs(Chain.FLeft), std::abs(Chain.FRight)));
  scale = std::max(scale, std::max(std::abs(FItems.front().P1.Y), std::abs(FItems.back().P4.Y)));
  const double reach = Tol + 1e-12 * (1.0 + scale);
  // Both chains climb: start each at its first segment that reaches the other's bottom, and
  // stop this one past the other's top.
  const double bottom = std::max(FItems.front().P1.Y, Chain.FItems.front().P1.Y) - reach;
  const double top = std::min(FItems.back().P4.Y, Chain.FItems.back().P4.Y) + reach;
  auto firstReaching = [](const std::vector<TLABSegline>& Segs, double Y) {
    return static_cast<std::size_t>(
        std::lower_bound(Segs.begin(), Segs.end(), Y, [](const TLABSegline& S, double V) { return S.P4.Y < V; }) -
        Segs.begin());
  };
  const std::size_t n = FItems.size();
  const std::size_t m = Chain.FItems.size();
  std::size_t jStart = firstReaching(Chain.FItems, bottom);
  for (std::size_t i = firstReaching(FItems, bottom); i < n; ++i) {
    const TLABSegline& a = FItems[i];
    if (a.P1.Y > top) break;
    const double lo = std::min(a.P1.Y, a.P4.Y) - reach;
    const double hi = std::max(a.P1.Y, a.P4.Y) + reach;
    // The other's segments that end below this one never come back.
    while (jStart < m && std::max(Chain.FItems[jStart].P1.Y, Chain.FItems[jStart].P4.Y) < lo) ++jStart;
    if (jStart == m) return false;
    double aLo = 0.0;
    double aHi = 0.0;
    SegXRange(a, aLo, aHi);
    for (std::size_t j = jStart; j < m; ++j) {
      const TLABSegline& b = Chain.FItems[j];
      if (std::min(b.P1.Y, b.P4.Y) > hi) break;
      double bLo = 0.0;
      double bHi = 0.0;
      SegXRange(b, bLo, bHi);
      if (bLo > aHi + reach || aLo > bHi + reach) continue;
      if (ApartByCircles(a, b, reach)) continue;
      if (internal::MLABSegDistance(a, b, reach) <= reach) return true;
    }
  }
  return false;
}

}  // namespace orvane
