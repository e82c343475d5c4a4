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
      Inters.Add(TIntersect2D(hit.InterThis,
                              TPointOnCurve2D(&ACurve, hit.InterThat.Param + offset - seg->GetStartParam())));
    }
    offset += seg->GetInterval().GetLength();
  }
  return Inters.Count() - before;
}

int TGeLine2D::IntersectCurve(const TGeCurve2D& ACurve, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const {
  const int before = Inters.Count();
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
  if (const auto* bez = dynamic_cast<const TGeBezier2D*>(&ACurve)) {
    // A cubic is crossed by subdivision, which finds every crossing and reports a touch
    // once; a straight cubic along the line reports the shared stretch by its two ends.
    TList<TPoint2D> pts;
    TList<TLine2D> lines;
    TList<double> params;
    TGeometryUtils::BezierCrossWithSegline(bez->GetBezierSegment(), GetLine(), CrossTol(Tol), pts, lines, &params);
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
