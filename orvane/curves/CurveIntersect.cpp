// The crossing of a line with every kind of curve, and the point position by a ray that
// rests on it.

#include <algorithm>
#include <cmath>
#include <vector>

#include "orvane/algorithms/GeometryUtils.h"
#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePiecewiseCurve2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Numeric.h"

namespace orvane {

namespace {

// The subdivision needs a distance above 0 to stop at.
double CrossTol(const TGeTolerance& Tol) { return Tol.PointTol > 0.0 ? Tol.PointTol : 1e-9; }

// The range of the cubic with Bernstein coefficients V0 .. V3 over [0, 1]: its ends and the
// values where its derivative, a quadratic, vanishes inside.
void CubicRange(double V0, double V1, double V2, double V3, double& Lo, double& Hi) {
  Lo = std::min(V0, V3);
  Hi = std::max(V0, V3);
  // Without a coefficient outside the ends' range the ends are the extremes (hull).
  if (std::min(V1, V2) >= Lo && std::max(V1, V2) <= Hi) return;
  const double a = -V0 + 3.0 * V1 - 3.0 * V2 + V3;
  const double b = 2.0 * (V0 - 2.0 * V1 + V2);
  const double c = V1 - V0;
  auto take = [&](double T) {
    if (!(T > 0.0 && T < 1.0)) return;
    const double u = 1.0 - T;
    const double v = u * u * u * V0 + 3.0 * u * u * T * V1 + 3.0 * u * T * T * V2 + T * T * T * V3;
    Lo = std::min(Lo, v);
    Hi = std::max(Hi, v);
  };
  if (std::fabs(a) < 1e-12 * (std::fabs(b) + std::fabs(c))) {
    if (b != 0.0) take(-c / b);
    return;
  }
  const double disc = b * b - 4.0 * a * c;
  if (disc < 0.0) return;
  const double root = std::sqrt(disc);
  // The stable pair of roots.
  const double q = -0.5 * (b + (b < 0.0 ? -root : root));
  if (q != 0.0) take(c / q);
  take(q / a);
}

double CubicValue(const double V[4], double T) {
  const double u = 1.0 - T;
  return u * u * u * V[0] + 3.0 * u * u * T * V[1] + 3.0 * u * T * T * V[2] + T * T * T * V[3];
}

// The crossings of a cubic with the segment (0, 0)-(Len, 0), the cubic given by its control
// points' coordinates Y across and X along the segment, when every one of them is a clean
// one: the curve passes the X axis at a clear angle, well inside the segment, and nowhere
// else comes within Tol of it. Then each crossing is the one sign change of Y on a stretch
// where Y is monotone, found to full precision. Answers -1 (leave it to subdivision, which
// knows touches and shared stretches) when that cannot be told, or else the count, roots
// ascending.
int CleanCrossings(const double Y[4], const double X[4], double Len, double Tol, double Roots[3]) {
  if (std::fabs(Y[0]) <= Tol || std::fabs(Y[3]) <= Tol) return -1;
  // The turning points of Y split [0, 1] into monotone stretches.
  double cuts[4] = {0.0, 1.0, 1.0, 1.0};
  int m = 1;
  const double a = -Y[0] + 3.0 * Y[1] - 3.0 * Y[2] + Y[3];
  const double b = 2.0 * (Y[0] - 2.0 * Y[1] + Y[2]);
  const double c = Y[1] - Y[0];
  auto cut = [&](double T) {
    if (T > 0.0 && T < 1.0) cuts[m++] = T;
  };
  if (std::fabs(a) < 1e-12 * (std::fabs(b) + std::fabs(c))) {
    if (b != 0.0) cut(-c / b);
  } else {
    const double disc = b * b - 4.0 * a * c;
    if (disc >= 0.0) {
      const double q = -0.5 * (b + (b < 0.0 ? -std::sqrt(disc) : std::sqrt(disc)));
      if (q != 0.0) cut(c / q);
      cut(q / a);
    }
  }
  if (m == 3 && cuts[2] < cuts[1]) std::swap(cuts[1], cuts[2]);
  cuts[m] = 1.0;
  for (int i = 1; i < m; ++i) {
    // A turn that comes within Tol of the axis may be a touch.
    if (std::fabs(CubicValue(Y, cuts[i])) <= Tol) return -1;
  }
  int n = 0;
  for (int i = 0; i < m; ++i) {
    double t0 = cuts[i];
    double t1 = cuts[i + 1];
    double y0 = CubicValue(Y, t0);
    const double y1 = CubicValue(Y, t1);
    if ((y0 < 0.0) == (y1 < 0.0)) continue;
    // Newton's steps inside the bracket of the monotone stretch, a halving wherever a step
    // would leave it; 60 rounds at most, though a handful reach the last bit of T.
    const bool negLow = y0 < 0.0;
    double t = 0.5 * (t0 + t1);
    for (int k = 0; k < 60; ++k) {
      const double yt = CubicValue(Y, t);
      if (yt == 0.0) break;
      if ((yt < 0.0) == negLow) {
        t0 = t;
      } else {
        t1 = t;
      }
      const double slope = 3.0 * (a * t * t + b * t + c);
      double next = slope != 0.0 ? t - yt / slope : 0.5 * (t0 + t1);
      if (!(next > t0 && next < t1)) next = 0.5 * (t0 + t1);
      if (std::fabs(next - t) <= 1e-16 || t1 - t0 <= 1e-16) {
        t = next;
        break;
      }
      t = next;
    }
    // The angle of the crossing: at a shallow one the curve runs near the axis for a while,
    // and near the segment's ends the tolerance decides; both are subdivision's to judge.
    const double dy = 3.0 * (a * t * t + b * t + c);
    const double u = 1.0 - t;
    const double dx = 3.0 * (u * u * (X[1] - X[0]) + 2.0 * u * t * (X[2] - X[1]) + t * t * (X[3] - X[2]));
    const double speed = std::hypot(dx, dy);
    if (!(std::fabs(dy) > 1e-3 * speed)) return -1;
    const double margin = Tol * speed / std::fabs(dy) + Tol;
    const double along = CubicValue(X, t);
    if (std::fabs(along) <= margin || std::fabs(along - Len) <= margin) return -1;
    if (along > 0.0 && along < Len) Roots[n++] = t;
  }
  return n;
}

}  // namespace

int TGeLine2D::IntersectPiecewiseCurve(const TGePiecewiseCurve2D& ACurve, TList<TIntersect2D>& Inters,
                                       const TGeTolerance& Tol) const {
  const int before = Inters.Count();
  TList<TIntersect2D> part;
  double offset = 0.0;
  const int n = ACurve.GetSegmentCount();
  for (int i = 0; i < n; ++i) {
    const TGePiecewiseSegment2D* seg = ACurve.GetBufSegment(i);
    part.Clear();
    IntersectCurve(seg->BaseCurve(), part, Tol);
    // The partner is the whole curve, so that InterThat.Point() is the crossing.
    for (const TIntersect2D& hit : part) {
      Inters.Add(
          TIntersect2D(hit.InterThis, TPointOnCurve2D(&ACurve, hit.InterThat.Param + offset - seg->GetStartParam())));
    }
    offset += seg->GetInterval().GetLength();
  }
  return Inters.Count() - before;
}

int TGeLine2D::IntersectCurve(const TGeCurve2D& ACurve, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const {
  const int before = Inters.Count();
  // Cubics first: they are the one kind here that is none of the kinds tested after.
  if (const auto* bez = dynamic_cast<const TGeBezier2D*>(&ACurve)) {
    // The cubic's exact extent across and along the line (ends and turning points of each
    // coordinate): a cubic that stays beyond the tolerance on one side, or before or past
    // the segment, meets nothing, and most pairs are told so without subdivision.
    const TBezierSegment2D& b = bez->GetBezierSegment();
    const double len = std::sqrt(FLineVec.MagSqr());
    const double tol = CrossTol(Tol);
    if (len > 0.0) {
      const TPoint2D d = FLineVec / len;
      const TPoint2D e0 = b.P0 - FLineStart, e1 = b.P1 - FLineStart, e2 = b.P2 - FLineStart, e3 = b.P3 - FLineStart;
      const double y[4] = {d.CrossMul(e0), d.CrossMul(e1), d.CrossMul(e2), d.CrossMul(e3)};
      const double x[4] = {e0.DotMul(d), e1.DotMul(d), e2.DotMul(d), e3.DotMul(d)};
      double lo = 0.0;
      double hi = 0.0;
      CubicRange(y[0], y[1], y[2], y[3], lo, hi);
      if (lo > tol || hi < -tol) return 0;
      CubicRange(x[0], x[1], x[2], x[3], lo, hi);
      if (hi < -tol || lo > len + tol) return 0;
      double roots[3];
      const int n = CleanCrossings(y, x, len, tol, roots);
      if (n >= 0) {
        for (int i = 0; i < n; ++i) {
          const double s = ParamOfPoint(b.EvalPoint(roots[i]), Tol);
          Inters.Add(TIntersect2D(TPointOnCurve2D(this, s), TPointOnCurve2D(bez, roots[i])));
        }
        return n;
      }
    }
    // Otherwise subdivision finds every crossing and reports a touch once; a straight cubic
    // along the line reports the shared stretch by its two ends.
    const TGeInterval range = GetInterval();
    TList<TPoint2D> pts;
    TList<TLine2D> lines;
    TList<double> params;
    TGeometryUtils::BezierCrossWithSegline(b, GetLine(), tol, pts, lines, &params);
    auto add = [&](const TPoint2D& P, double R) {
      const double s = ParamOfPoint(P, Tol);
      if (range.Contains(s)) Inters.Add(TIntersect2D(TPointOnCurve2D(this, s), TPointOnCurve2D(bez, R)));
    };
    for (int i = 0; i < pts.Count(); ++i) add(pts[i], params[i]);
    for (const TLine2D& l : lines) {
      add(l.P1, bez->ParamOfPoint(l.P1, Tol));
      add(l.P2, bez->ParamOfPoint(l.P2, Tol));
    }
    return Inters.Count() - before;
  }
  if (const auto* comp = dynamic_cast<const TGeCompositeCurve2D*>(&ACurve)) {
    TList<TIntersect2D> part;
    double offset = 0.0;
    for (int i = 0; i < comp->GetCurveCount(); ++i) {
      const TGeCurve2D* c = comp->GetCurve(i);
      part.Clear();
      IntersectCurve(*c, part, Tol);
      for (const TIntersect2D& hit : part) {
        Inters.Add(
            TIntersect2D(hit.InterThis, TPointOnCurve2D(comp, hit.InterThat.Param + offset - c->GetStartParam())));
      }
      offset += c->GetInterval().GetLength();
    }
    return Inters.Count() - before;
  }
  if (const auto* line = dynamic_cast<const TGeLine2D*>(&ACurve)) {
    Intersect(*line, Inters, Tol);
    return Inters.Count() - before;
  }
  if (const auto* arc = dynamic_cast<const TGeCircularArc2D*>(&ACurve)) return IntersectArc(*arc, Inters, Tol);
  if (const auto* piecewise = dynamic_cast<const TGePiecewiseCurve2D*>(&ACurve)) {
    return IntersectPiecewiseCurve(*piecewise, Inters, Tol);
  }
  const TGeInterval range = GetInterval();
  // Any other curve: the roots of its height over this line, on a copy moved so that the
  // line runs along +X from the origin.
  TMatrix2D mtx;
  mtx.Reset();
  mtx.Translate(-FLineStart);
  mtx.Rotate(-FLineVec.Angle());
  std::unique_ptr<TGeCurve2D> copy = ACurve.CloneAs<TGeCurve2D>();
  if (!copy) return 0;
  copy->TransformBy(mtx);
  const TGeCurve2D& moved = *copy;
  const std::unique_ptr<TList<double>> roots = TNumeric::NewtonRaphsonRoots(
      moved.GetInterval(), Tol.PointTol, [&](double T) { return moved.EvalY(T); },
      [&](double T) { return moved.DerivY(T); });
  for (const double r : *roots) {
    const double s = ParamOfPoint(ACurve.EvalPoint(r), Tol);
    if (range.Contains(s)) Inters.Add(TIntersect2D(TPointOnCurve2D(this, s), TPointOnCurve2D(&ACurve, r)));
  }
  return Inters.Count() - before;
}

}  // namespace orvane
