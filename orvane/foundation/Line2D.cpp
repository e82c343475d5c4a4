#include "orvane/foundation/Line2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Exception.h"

namespace orvane {

double TLine2D::ParamOfPoint(const TPoint2D& Pt) const {
  const TPoint2D v = Vector();
  const double len2 = v.MagSqr();
  if (len2 == 0.0) return 0.0;
  return (Pt - P1).DotMul(v) / len2;
}

double TLine2D::DistanceDirect(const TPoint2D& Pt) const {
  double param = 0.0;
  return DistanceDirect(Pt, param);
}

double TLine2D::DistanceDirect(const TPoint2D& Pt, double& Param) const {
  const TPoint2D v = Vector();
  const double len = v.Mag();
  Param = ParamOfPoint(Pt);
  if (len == 0.0) return Pt.DistanceTo(P1);
  return std::fabs(v.CrossMul(Pt - P1)) / len;
}

double TLine2D::DistanceLimit(const TPoint2D& Pt) const {
  double param = 0.0;
  TPoint2D nearest;
  return DistanceLimit(Pt, param, nearest);
}

double TLine2D::DistanceLimit(const TPoint2D& Pt, double& Param, TPoint2D& Nearest) const {
  Param = std::clamp(ParamOfPoint(Pt), 0.0, 1.0);
  // The ends are taken as stored, so that a point at an end measures exactly 0.
  Nearest = Param == 0.0 ? P1 : (Param == 1.0 ? P2 : EvalPoint(Param));
  return Pt.DistanceTo(Nearest);
}

bool TLine2D::IsOn(const TPoint2D& Pt, double Tol) const { return DistanceLimit(Pt) <= Tol; }

bool TLine2D::IsOn(const TPoint2D& Pt, double Tol, double& Param) const {
  double param = 0.0;
  TPoint2D nearest;
  if (DistanceLimit(Pt, param, nearest) > Tol) return false;
  Param = param;
  return true;
}

bool TLine2D::IsPointNearBySegment(const TPoint2D& Pt, double Tol, double& Dist, TPoint2D& Nearest) const {
  double param = 0.0;
  Dist = DistanceLimit(Pt, param, Nearest);
  return Dist <= Tol;
}

int TLine2D::Cross(const TLine2D& Line, TPoint2D& Pt) const {
  const TPoint2D a = Vector();
  const TPoint2D b = Line.Vector();
  const double denom = a.CrossMul(b);
  // Parallel when the sine of the angle is negligible against double precision.
  if (denom == 0.0 || std::fabs(denom) <= 1e-14 * a.Mag() * b.Mag()) return 2;
  const double t = (Line.P1 - P1).CrossMul(b) / denom;
  Pt = EvalPoint(t);
  return 1;
}

int TLine2D::RelationWithLine(const TLine2D& Line, TPoint2D& Pt, double Tol1, double Tol2) const {
  const TPoint2D a = Vector();
  const TPoint2D b = Line.Vector();
  const double la = a.Mag();
  const double lb = b.Mag();
  if (la == 0.0 || lb == 0.0) {
    // A point has no direction: it coincides with the other line or lies apart from it.
    const TLine2D& line = la == 0.0 ? Line : *this;
    const TPoint2D& pt = la == 0.0 ? P1 : Line.P1;
    return line.DistanceDirect(pt) <= Tol2 ? 2 : 0;
  }
  const double denom = a.CrossMul(b);
  if (std::fabs(denom) <= Tol1 * la * lb) {
    return Line.DistanceDirect(P1) <= Tol2 ? 2 : 0;
  }
  const double t = (Line.P1 - P1).CrossMul(b) / denom;
  Pt = EvalPoint(t);
  return 1;
}

namespace {

// The two ends of a, tested against the ends of b: a shared end point wins over any
// computed crossing, so that segments joined at a vertex report that vertex exactly.
bool SharedEnd(const TLine2D& A, const TLine2D& B, double Tol, TPoint2D& Pt) {
  for (const TPoint2D& p : {A.P1, A.P2}) {
    if (p.Equals(B.P1, Tol) || p.Equals(B.P2, Tol)) {
      Pt = p;
      return true;
    }
  }
  return false;
}

}  // namespace

int TLine2D::RelationWithSegLine(const TLine2D& Line, TPoint2D& OutP1, TPoint2D& OutP2, double Tol,
                                 double ParallelTol) const {
  const TPoint2D a = Vector();
  const TPoint2D b = Line.Vector();
  const double la = a.Mag();
  const double lb = b.Mag();

  if (la <= Tol || lb <= Tol) {
    // A segment no longer than Tol behaves as a point.
    const TLine2D& seg = la <= Tol ? Line : *this;
    const TPoint2D pt = la <= Tol ? P1 : Line.P1;
    if (!seg.IsOn(pt, Tol)) return 0;
    if (!SharedEnd(*this, Line, Tol, OutP1)) OutP1 = pt;
    return 1;
  }

  const double denom = a.CrossMul(b);
  if (std::fabs(denom) <= ParallelTol * la * lb) {
    // Parallel: collinear within Tol or apart.
    if (DistanceDirect(Line.P1) > Tol && DistanceDirect(Line.P2) > Tol) return 0;
    const double t1 = ParamOfPoint(Line.P1) * la;
    const double t2 = ParamOfPoint(Line.P2) * la;
    const double lo = std::max(0.0, std::min(t1, t2));
    const double hi = std::min(la, std::max(t1, t2));
    if (hi - lo < -Tol) return 0;
    if (hi - lo <= Tol) {
      if (!SharedEnd(*this, Line, Tol, OutP1)) OutP1 = EvalPoint(std::clamp(lo, 0.0, la) / la);
      return 1;
    }
    // The overlap's ends are end points of one segment or the other; give them as stored.
    auto endAt = [&](double t) {
      if (t == 0.0) return P1;
      if (t == la) return P2;
      if (t == t1) return Line.P1;
      if (t == t2) return Line.P2;
      return EvalPoint(t / la);
    };
    OutP1 = endAt(lo);
    OutP2 = endAt(hi);
    return 2;
  }

  if (SharedEnd(*this, Line, Tol, OutP1)) return 1;
  const double t = (Line.P1 - P1).CrossMul(b) / denom;
  const double u = (Line.P1 - P1).CrossMul(a) / denom;
  if (t * la >= -Tol && t * la <= la + Tol && u * lb >= -Tol && u * lb <= lb + Tol) {
    // A crossing just beyond an end within Tol is that end: a point of both segments' data.
    if (t < 0.0 || t > 1.0)
      OutP1 = t < 0.0 ? P1 : P2;
    else if (u < 0.0 || u > 1.0)
      OutP1 = u < 0.0 ? Line.P1 : Line.P2;
    else
      OutP1 = EvalPoint(t);
    return 1;
  }
  // The lines cross outside, but an end of one may still lie within Tol of the other.
  for (const TPoint2D& p : {P1, P2}) {
    if (Line.IsOn(p, Tol)) {
      OutP1 = p;
      return 1;
    }
  }
  for (const TPoint2D& p : {Line.P1, Line.P2}) {
    if (IsOn(p, Tol)) {
      OutP1 = p;
      return 1;
    }
  }
  return 0;
}

bool TLine2D::CalculateX(double Y, double& X, double& Param) const {
  const double dy = P2.Y - P1.Y;
  if (dy == 0.0) return false;
  Param = (Y - P1.Y) / dy;
  X = P1.X + Param * (P2.X - P1.X);
  return true;
}

TPoint2D TLine2D::PointAtX(double X) const {
  const double dx = P2.X - P1.X;
  if (dx == 0.0) throw EGeometry("[Error] TLine2D.PointAtX: the line is vertical");
  return {X, P1.Y + (X - P1.X) / dx * (P2.Y - P1.Y)};
}

TPoint2D TLine2D::PointAtY(double Y) const {
  const double dy = P2.Y - P1.Y;
  if (dy == 0.0) throw EGeometry("[Error] TLine2D.PointAtY: the line is horizontal");
  return {P1.X + (Y - P1.Y) / dy * (P2.X - P1.X), Y};
}

TLine2D TLine2D::PerpendicularBisector() const {
  const TPoint2D mid = (P1 + P2) * 0.5;
  const TPoint2D half = Vector().RotateCcw90() * 0.5;
  return {mid - half, mid + half};
}

TLine2D TLine2D::Stretch(double Len, bool FromStart) const {
  const TPoint2D dir = GetDirection();
  if (dir == TPoint2D::FZero) return *this;
  return FromStart ? TLine2D(P1, P1 + dir * Len) : TLine2D(P2 - dir * Len, P2);
}

}  // namespace orvane
