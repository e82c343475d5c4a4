// TGeSpline2D: recognising the line or circular arc that a spline may in truth be.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/splines/GeSpline2D.h"
#include "orvane/foundation/internal/GoldenSection.h"
#include "orvane/splines/internal/SplinePieces.h"

namespace orvane {

using internal::TSplinePiece;

namespace {

std::size_t Ux(int I) { return static_cast<std::size_t>(I); }

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr int kSamplesPerPiece = 16;

double Size(const TRect2D& B) { return std::hypot(B.XMax - B.XMin, B.YMax - B.YMin); }

// The algebraic circle fit (least squares on x^2 + y^2 + a x + b y + c), about the centroid
// for conditioning. False for points on one line.
bool FitCircle(const TDynPoints2D& Pts, TPoint2D& Center, double& Radius) {
  if (Pts.size() < 3) return false;
  TPoint2D m(0.0, 0.0);
  for (const TPoint2D& p : Pts) m = m + p;
  m = m * (1.0 / double(Pts.size()));
  double suu = 0, svv = 0, suv = 0, suuu = 0, svvv = 0, suvv = 0, svuu = 0;
  for (const TPoint2D& p : Pts) {
    const double u = p.X - m.X, v = p.Y - m.Y;
    suu += u * u;
    svv += v * v;
    suv += u * v;
    suuu += u * u * u;
    svvv += v * v * v;
    suvv += u * v * v;
    svuu += v * u * u;
  }
  const double det = suu * svv - suv * suv;
  if (!(std::fabs(det) > 1e-24 * (suu + svv) * (suu + svv))) return false;
  const double ru = 0.5 * (suuu + suvv), rv = 0.5 * (svvv + svuu);
  const double a = (ru * svv - rv * suv) / det, b = (rv * suu - ru * suv) / det;
  Center = {m.X + a, m.Y + b};
  Radius = std::sqrt(a * a + b * b + (suu + svv) / double(Pts.size()));
  return std::isfinite(Radius);
}

// The arc about Center through the points in order: they must turn one way, at most once
// round. A full circle when the ends meet within CloseTol after more than a half turn.
std::unique_ptr<TGeCircularArc2D> ArcAlong(const TDynPoints2D& Pts, const TPoint2D& Center, double Radius,
                                           double CloseTol) {
  double sweep = 0.0;
  int sign = 0;
  for (std::size_t i = 1; i < Pts.size(); ++i) {
    const TPoint2D a = Pts[i - 1] - Center, b = Pts[i] - Center;
    const double step = std::atan2(a.X * b.Y - a.Y * b.X, a.X * b.X + a.Y * b.Y);
    if (step == 0.0) continue;
    const int s = step > 0.0 ? 1 : -1;
    if (sign != 0 && s != sign) return nullptr;
    sign = s;
    sweep += step;
  }
  if (sign == 0 || std::fabs(sweep) > kTwoPi * (1.0 + 1e-9)) return nullptr;
  if (Pts.front().DistanceTo(Pts.back()) <= CloseTol && std::fabs(sweep) > std::numbers::pi) sweep = sign * kTwoPi;
  const TPoint2D s0 = Pts.front() - Center;
  return std::make_unique<TGeCircularArc2D>(Center, Radius, std::atan2(s0.Y, s0.X), sweep);
}

// The control polygon turns one way (legs of zero length and straight joints pass).
bool PolygonConvex(const TDynPoints2D& P) {
  // A straight joint (the tangent joints of Bezier pieces) has a cross product of rounding
  // size, which grows with the coordinates' size, not the legs'.
  double m = 0.0;
  for (const TPoint2D& q : P) m = std::max({m, std::fabs(q.X), std::fabs(q.Y)});
  int last = 0;
  TPoint2D prev(0.0, 0.0);
  for (std::size_t i = 1; i < P.size(); ++i) {
    const TPoint2D leg = P[i] - P[i - 1];
    if (leg.X == 0.0 && leg.Y == 0.0) continue;
    if (prev.X != 0.0 || prev.Y != 0.0) {
      const double c = prev.X * leg.Y - prev.Y * leg.X;
      const double a = std::hypot(prev.X, prev.Y), b = std::hypot(leg.X, leg.Y);
      const double noise = std::max(1e-12 * a * b, 16.0 * std::numeric_limits<double>::epsilon() * m * (a + b));
      const int s = std::fabs(c) <= noise ? 0 : (c > 0.0 ? 1 : -1);
      if (s != 0 && last != 0 && s != last) return false;
      last = s;
    }
    prev = leg;
  }
  return true;
}

// The greatest |distance from Center - Radius| on the piece: the worst of the samples,
// sharpened by a golden-section search around it.
double RadialError(const TDynPoints3D& Hom, const TPoint2D& Center, double Radius) {
  const auto err = [&](double t) { return std::fabs(internal::PieceEval(Hom, t).DistanceTo(Center) - Radius); };
  int worst = 0;
  double e = 0.0;
  for (int j = 0; j <= kSamplesPerPiece; ++j) {
    const double v = err(double(j) / kSamplesPerPiece);
    if (v > e) {
      e = v;
      worst = j;
    }
  }
  const double a = std::max(0.0, double(worst - 1) / kSamplesPerPiece);
  const double b = std::min(1.0, double(worst + 1) / kSamplesPerPiece);
  return std::max(e, internal::GoldenSectionMax(err, a, b, 40));
}

// The arc fitted to the pieces' samples if every piece stays within Tol of it; Tol <= 0
// asks for RelTol times the fitted radius.
std::unique_ptr<TGeCircularArc2D> MeasuredArc(const std::vector<TSplinePiece>& Pieces, double Tol, double RelTol) {
  TDynPoints2D pts;
  for (const TSplinePiece& s : Pieces)
    for (int j = pts.empty() ? 0 : 1; j <= kSamplesPerPiece; ++j)
      pts.push_back(internal::PieceEval(s.Hom, double(j) / kSamplesPerPiece));
  TPoint2D c;
  double r = 0.0;
  if (!FitCircle(pts, c, r)) return nullptr;
  TRect2D box(pts.front());
  for (const TPoint2D& p : pts) box.Extend(TRect2D(p));
  // A circle far larger than the curve is a straight stretch measured with rounding.
  if (r > 1e6 * Size(box)) return nullptr;
  const double tol = Tol > 0.0 ? Tol : RelTol * r;
  for (const TSplinePiece& s : Pieces)
    if (RadialError(s.Hom, c, r) > tol) return nullptr;
  return ArcAlong(pts, c, r, std::max(tol, 1e-9 * r));
}

}  // namespace

bool TGeSpline2D::CheckCtrlPointsCollinear(double Tol) const {
  const int n = GetCtrlPointCount();
  int far = -1;
  for (int i = n - 1; i >= 1 && far < 0; --i)
    if (FCtrlPoints[Ux(i)].DistanceTo(FCtrlPoints[0]) > Tol) far = i;
  if (far < 0) return true;
  const TLine2D line(FCtrlPoints[0], FCtrlPoints[Ux(far)]);
  for (int i = 1; i < n; ++i)
    if (line.DistanceDirect(FCtrlPoints[Ux(i)]) > Tol) return false;
  return true;
}

bool TGeSpline2D::IsLine(std::unique_ptr<TGeLine2D>& Line) const {
  Line.reset();
  const int n = GetCtrlPointCount();
  if (n < 2) return false;
  const TPoint2D a = FCtrlPoints.front(), b = FCtrlPoints.back();
  const double len = a.DistanceTo(b);
  if (!(len > 0.0)) return false;
  // Relative to the segment's length, so a line reads as one in any drawing unit; the points
  // must also come in order along it, which keeps the curve from running back.
  const TLine2D seg(a, b);
  const double tol = 1e-9 * len;
  double lastAlong = 0.0;
  for (int i = 1; i < n; ++i) {
    double along = 0.0;
    const TPoint2D p = FCtrlPoints[Ux(i)];
    if (seg.DistanceDirect(p, along) > tol) return false;
    along *= len;
    if (along < -tol || along > len + tol || along < lastAlong - tol) return false;
    lastAlong = std::max(lastAlong, along);
  }
  try {
    Line = std::make_unique<TGeLine2D>(GetStartPoint(), GetEndPoint());
  } catch (const EGeometry&) {
    return false;
  }
  return true;
}

bool TGeSpline2D::IsLine(std::unique_ptr<TGeLine2D>& Line, double Tol) const {
  Line.reset();
  if (!(Tol >= 0.0) || !std::isfinite(Tol)) throw EParamError("[Error] TGeSpline2D.IsLine: Tol must be a number of 0 or more");
  try {
    const internal::TSplineQueryCache& c = QueryCache();
    if (!c.Ok) return false;
    const TPoint2D a = internal::PieceEval(c.Pieces.front().Hom, 0.0), b = internal::PieceEval(c.Pieces.back().Hom, 1.0);
    const double len = a.DistanceTo(b);
    if (!(len > Tol)) return false;
    const TPoint2D u((b.X - a.X) / len, (b.Y - a.Y) / len), nrm(-u.Y, u.X);
    double reach = 0.0;
    for (const TSplinePiece& s : c.Pieces) {
      for (double t : internal::PieceStationary(s.Hom, nrm)) {
        const TPoint2D v = internal::PieceEval(s.Hom, t) - a;
        if (std::fabs(v.X * nrm.X + v.Y * nrm.Y) > Tol) return false;
      }
      // Along the line: the turning points and the piece's end, in order; none may fall
      // back behind the farthest reach so far, nor leave the segment.
      std::vector<double> ts = internal::PieceStationary(s.Hom, u);
      ts.push_back(1.0);
      for (double t : ts) {
        const TPoint2D v = internal::PieceEval(s.Hom, t) - a;
        const double along = v.X * u.X + v.Y * u.Y;
        if (std::fabs(v.X * nrm.X + v.Y * nrm.Y) > Tol || along < reach - Tol || along > len + Tol) return false;
        reach = std::max(reach, along);
      }
    }
    Line = std::make_unique<TGeLine2D>(a, b);
    return true;
  } catch (const EGeometry&) {
    return false;
  }
}

bool TGeSpline2D::IsArc(std::unique_ptr<TGeCircularArc2D>& Arc, double Tol) const {
  Arc.reset();
  if (!(Tol >= 0.0) || !std::isfinite(Tol)) throw EParamError("[Error] TGeSpline2D.IsArc: Tol must be a number of 0 or more");
  try {
    if (!PolygonConvex(FCtrlPoints)) return false;
    const internal::TSplineQueryCache& c = QueryCache();
    if (!c.Ok) return false;
    // A curve that is a line within Tol has no arc to tell.
    std::unique_ptr<TGeLine2D> line;
    if (IsLine(line, Tol)) return false;
    Arc = MeasuredArc(c.Pieces, std::max(Tol, 1e-300), 0.0);
    return Arc != nullptr;
  } catch (const EGeometry&) {
    Arc.reset();
    return false;
  }
}

bool TGeSpline2D::IsArc(std::unique_ptr<TGeCircularArc2D>& Arc) const {
  Arc.reset();
  try {
    if (GetCtrlPointCount() < 3 || !PolygonConvex(FCtrlPoints)) return false;
    // A near-flat spline is not taken for an arc: the box's short side must be at least
    // 0.002 of its long side (the same for a curve in millimetres or in metres).
    const TRect2D box = CtrlPointsBoundBlock();
    const double w = box.XMax - box.XMin, h = box.YMax - box.YMin;
    if (!(std::min(w, h) >= 0.002 * std::max(w, h))) return false;
    const internal::TSplineQueryCache& c = QueryCache();
    if (!c.Ok) return false;
    // Exact arcs (rational forms of any degree, full circles, periodic ones) to rounding.
    Arc = MeasuredArc(c.Pieces, 0.0, 1e-9);
    if (Arc) return true;
  } catch (const EGeometry&) {
    Arc.reset();
    return false;
  }
  return IsCombinedBezierArc(Arc);
}

bool TGeSpline2D::IsCombinedBezierArc(std::unique_ptr<TGeCircularArc2D>& Arc) const {
  Arc.reset();
  if (FDegree != 3 || GetCtrlPointCount() < 4 || !IsAllWeightsOne()) return false;
  try {
    const internal::TSplineQueryCache& c = QueryCache();
    if (!c.Ok) return false;
    const double size = Size(CtrlPointsBoundBlock());
    TPoint2D center(0.0, 0.0);
    double radius = 0.0, sweep = 0.0, r0 = 0.0;
    TPoint2D c0;
    for (std::size_t i = 0; i < c.Pieces.size(); ++i) {
      const TDynPoints3D& h = c.Pieces[i].Hom;
      const auto at = [&h](int k) { return TPoint2D(h[Ux(k)].X / h[Ux(k)].Z, h[Ux(k)].Y / h[Ux(k)].Z); };
      TArc2D a;
      // Each piece a cubic arc of at most a half turn, as CAD systems write them (one cubic
      // per 30 to 90 degrees), however many pieces there are.
      if (!TBezierSegment2D(at(0), at(1), at(2), at(3)).IsArc(a, 1e-9 * size, 1e-4)) return false;
      if (i == 0) {
        r0 = a.Radius;
        c0 = a.Center;
      } else if (std::fabs(a.Radius - r0) > 1e-4 * r0 || a.Center.DistanceTo(c0) > 1e-4 * r0 ||
                 (a.SweepAngle > 0.0) != (sweep > 0.0)) {
        return false;
      }
      center = center + a.Center;
      radius += a.Radius;
      sweep += a.SweepAngle;
    }
    const double k = double(c.Pieces.size());
    center = center * (1.0 / k);
    radius /= k;
    if (std::fabs(sweep) > kTwoPi * (1.0 + 1e-6)) return false;
    const TPoint2D s = GetStartPoint(), e = GetEndPoint();
    if (s.DistanceTo(e) <= 1e-6 * radius && std::fabs(sweep) > std::numbers::pi) sweep = sweep > 0.0 ? kTwoPi : -kTwoPi;
    Arc = std::make_unique<TGeCircularArc2D>(center, radius, std::atan2(s.Y - center.Y, s.X - center.X), sweep);
    return true;
  } catch (const EGeometry&) {
    Arc.reset();
    return false;
  }
}

bool TGeSpline2D::IsSampleArc(std::unique_ptr<TGeCircularArc2D>& Arc) const {
  Arc.reset();
  try {
    const double size = Size(CtrlPointsBoundBlock());
    if (!(size > 0.0)) return false;
    TDynPoints2D pts;
    TFloatDynArray params;
    if (GetSamplePointsByChord(1e-4 * size, pts, params) < 3) return false;
    TPoint2D c;
    double r = 0.0;
    if (!FitCircle(pts, c, r) || r > 1e6 * size) return false;
    for (const TPoint2D& p : pts)
      if (std::fabs(p.DistanceTo(c) - r) > 1e-3 * r) return false;
    Arc = ArcAlong(pts, c, r, 1e-3 * r);
    return Arc != nullptr;
  } catch (const EGeometry&) {
    Arc.reset();
    return false;
  }
}

std::unique_ptr<TGeCurve2D> TGeSpline2D::CalcDegradeCurve() const {
  std::unique_ptr<TGeLine2D> line;
  if (IsLine(line)) return line;
  std::unique_ptr<TGeCircularArc2D> arc;
  if (IsArc(arc)) return arc;
  return nullptr;
}

}  // namespace orvane
