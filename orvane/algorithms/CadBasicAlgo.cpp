#include "orvane/algorithms/CadBasicAlgo.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/internal/GoldenSection.h"

namespace orvane {

namespace {

constexpr double PointTol = 1e-6;
// Samples per span for the deviation; the worst of them is then refined by a local search.
constexpr int DeviationSamples = 16;

// Strictly between: an edge that only grazes a corner or a side does not enter.
bool fInside(double V, double Lo, double Hi) { return Lo < V && V < Hi; }

bool IsPointBezier(const TBezierSegment2D& B) {
  return B.P1.Equals(B.P0, PointTol) && B.P2.Equals(B.P0, PointTol) && B.P3.Equals(B.P0, PointTol);
}

}  // namespace


TArc2D TCadBasicAlgo::Degenerate2Line(const TBezierSegment2D& Bezier) {
  TArc2D line;
  line.IsLine = true;
  line.Center = Bezier.P0;
  line.Radius = Bezier.P3.X;
  line.StartAngle = Bezier.P3.Y;
  return line;
}

namespace {

// An arc set up for many distance queries: the ray from the centre through a point meets
// the arc when the point lies on the inner side of the start and of the end radius (of
// either, for more than a half turn), which needs no angle.
struct TArcProbe {
  TPoint2D C;
  TPoint2D S;
  TPoint2D E;
  TPoint2D FromC;  // start radius vector
  TPoint2D ToC;    // end radius vector
  double R = 0.0;
  double Sense = 1.0;
  bool Line = false;
  bool Major = false;

  explicit TArcProbe(const TArc2D& A) : S(A.StartPoint()), E(A.EndPoint()), Line(A.IsLine) {
    if (Line) return;
    C = A.Center;
    R = A.Radius;
    FromC = S - C;
    ToC = E - C;
    Sense = A.SweepAngle >= 0.0 ? 1.0 : -1.0;
    Major = std::abs(A.SweepAngle) > Pi;
  }
  double Distance(const TPoint2D& P) const {
    if (Line) {
      const TPoint2D d = E - S;
      const double l2 = d.MagSqr();
      const double t = l2 > 0.0 ? std::clamp((P - S).DotMul(d) / l2, 0.0, 1.0) : 0.0;
      return std::sqrt((P - (S + d * t)).MagSqr());
    }
    const TPoint2D v = P - C;
    const double fromStart = Sense * FromC.CrossMul(v);
    const double toEnd = Sense * v.CrossMul(ToC);
    const bool inside = Major ? (fromStart >= 0.0 || toEnd >= 0.0) : (fromStart >= 0.0 && toEnd >= 0.0);
    if (inside) return std::abs(std::sqrt(v.MagSqr()) - R);  // hypot's care is not needed here
    return std::sqrt(std::min((P - S).MagSqr(), (P - E).MagSqr()));
  }
};

}  // namespace

double TCadBasicAlgo::MaxDeviation(const TBezierSegment2D& Bezier, const TArc2D* Arcs, int Count, double Tol) {
  const TArcProbe probes[2] = {TArcProbe(Arcs[0]), TArcProbe(Arcs[Count > 1 ? 1 : 0])};
  auto dev = [&](double t) {
    const TPoint2D p = Bezier.EvalPoint(t);
    const double e = probes[0].Distance(p);
    return Count > 1 ? std::min(e, probes[1].Distance(p)) : e;
  };
  // The places where a fit that fails usually fails worst come first, so that most
  // rejected fits cost a few samples only.
  static constexpr int order[] = {4, 12, 8, 2, 6, 10, 14};
  std::array<double, DeviationSamples + 1> e{};
  e.fill(-1.0);
  double worst = 0.0;
  for (int i : order) {
    e[static_cast<std::size_t>(i)] = dev(static_cast<double>(i) / DeviationSamples);
    worst = std::max(worst, e[static_cast<std::size_t>(i)]);
    if (worst > Tol) return worst;
  }
  for (int i = 0; i <= DeviationSamples; ++i) {
    if (e[static_cast<std::size_t>(i)] < 0.0) e[static_cast<std::size_t>(i)] = dev(static_cast<double>(i) / DeviationSamples);
    worst = std::max(worst, e[static_cast<std::size_t>(i)]);
  }
  if (worst > Tol) return worst;
  // The deviation peaks between samples: a golden-section search on the two sample steps
  // around each of the two highest local peaks finds the true peak there.
  int peaks[2] = {-1, -1};
  for (int i = 0; i <= DeviationSamples; ++i) {
    const double l = i > 0 ? e[static_cast<std::size_t>(i) - 1] : -1.0;
    const double r = i < DeviationSamples ? e[static_cast<std::size_t>(i) + 1] : -1.0;
    const double v = e[static_cast<std::size_t>(i)];
    if (v < l || v < r) continue;
    if (peaks[0] < 0 || v > e[static_cast<std::size_t>(peaks[0])]) {
      peaks[1] = peaks[0];
      peaks[0] = i;
    } else if (peaks[1] < 0 || v > e[static_cast<std::size_t>(peaks[1])]) {
      peaks[1] = i;
    }
  }
  for (int peak : peaks) {
    if (peak < 0) continue;
    const double lo = std::max(0.0, (peak - 1.0) / DeviationSamples);
    const double hi = std::min(1.0, (peak + 1.0) / DeviationSamples);
    worst = std::max(worst, internal::GoldenSectionMax(dev, lo, hi, 10));
  }
  return worst;
}

void TCadBasicAlgo::BiarcFit(const TBezierSegment2D& Bezier, double Tol, int Depth, int& Budget, TFitPieces& Arcs) {
  --Budget;
  const bool canSplit = Depth < MaxFitDepth && Budget > 0;
  const TPoint2D& p0 = Bezier.P0;
  const TPoint2D& p3 = Bezier.P3;
  TPoint2D d0 = Bezier.P1 - p0;
  TPoint2D d3 = Bezier.P2 - p3;
  if (d0.Mag() < 1e-8) d0 = Bezier.P2 - p0;
  if (d3.Mag() < 1e-8) d3 = Bezier.P1 - p3;

  TArc2D arcs[2];
  int count = 0;
  TPoint2D v;
  if (TLine2D(p0, p0 + d0).Cross(TLine2D(p3, p3 + d3), v) == 1) {
    const TPoint2D g = TPoint2DUtils::InCenter(p0, p3, v);
    TPoint2D c1;
    TPoint2D c2;
    if (!g.Equals(p0, 0.0) && !g.Equals(p3, 0.0) && CalCenter(p0, g, d0, c1) && CalCenter(p3, g, d3, c2)) {
      // The sense comes from the tangent: the centre left of the direction of travel is a
      // counter-clockwise arc, so both arcs leave and reach the joint along one tangent.
      arcs[0] = TArc2D::CreateCenter(c1, p0, g, d0.CrossMul(c1 - p0) > 0.0);
      arcs[1] = TArc2D::CreateCenter(c2, g, p3, (-1.0 * d3).CrossMul(c2 - p3) > 0.0);
      // An arc that closes on itself has met a degenerate corner, not a shape.
      if (std::abs(arcs[0].SweepAngle) < TwoPi && std::abs(arcs[1].SweepAngle) < TwoPi) count = 2;
    }
  }
  if (count == 0) {
    arcs[0] = Degenerate2Line(Bezier);
    count = 1;
  }

  // The whole span is measured, so that every point of the Bezier, not only those of its
  // second half, stays within Tol of the pieces that replace it.
  if (canSplit && MaxDeviation(Bezier, arcs, count, Tol) > Tol) {
    TBezierSegment2D left;
    TBezierSegment2D right;
    Bezier.SplitMiddle(left, right);
    BiarcFit(left, Tol, Depth + 1, Budget, Arcs);
    BiarcFit(right, Tol, Depth + 1, Budget, Arcs);
    return;
  }
  if (count == 2) {
    const double r1 = arcs[0].Radius;
    const double r2 = arcs[1].Radius;
    const double dr = std::abs(r1 - r2);
    // One arc is tried whenever the two turn the same way on radii within the tolerance, not
    // only when they are nearly equal (1e-4 relative): a cubic written for an arc gives two
    // radii some 3e-4 apart, and the one arc is kept only where it holds the tolerance.
    if (dr <= Tol && arcs[0].IsClockwise == arcs[1].IsClockwise) {
      const TArc2D one = TArc2D::CreateCross(p0, arcs[0].EndPoint(), p3);
      if (MaxDeviation(Bezier, &one, 1, Tol) <= Tol) {
        Arcs.push_back({one, Bezier});
        return;
      }
    }
  }
  for (int k = 0; k < count; ++k) Arcs.push_back({arcs[k], Bezier});
}

std::unique_ptr<TList<TArc2D>> TCadBasicAlgo::Bezier2Arcs(const TBezierSegment2D& bezierSeg, double disTol) {
  if (!internal::IsPositiveNumber(disTol))
    throw EParamError("[Error] TCadBasicAlgo.Bezier2Arcs: disTol %s must be a finite number above 0", FloatToStr(disTol));
  for (const TPoint2D& p : {bezierSeg.P0, bezierSeg.P1, bezierSeg.P2, bezierSeg.P3})
    internal::CheckFinitePoint(p, "TCadBasicAlgo.Bezier2Arcs", "control point");
  auto result = std::make_unique<TList<TArc2D>>();

  TLine2D chord;
  // A Bezier straight within 1e-4 is a line only where the tolerance allows that much.
  if (bezierSeg.IsLinear(chord, std::min(0.0001, disTol))) {
    result->Add(Degenerate2Line(bezierSeg));
    return result;
  }

  TFloatDynArray places = bezierSeg.CurvatureChangedPlaces();
  for (int i = static_cast<int>(places.size()) - 1; i >= 0; --i) {
    const double t = places[static_cast<std::size_t>(i)];
    if (!(t > 1e-7 && t < 0.9999999)) places.erase(places.begin() + i);
  }
  {
    TBezierSegment2D cur = bezierSeg;
    double e = 1.0;
    for (int i = static_cast<int>(places.size()) - 1; i >= 0; --i) {
      const double t = places[static_cast<std::size_t>(i)];
      TBezierSegment2D l;
      TBezierSegment2D r;
      if (!cur.Split(t / e, l, r) || IsPointBezier(l) || IsPointBezier(r)) {
        places.erase(places.begin() + i);
        continue;
      }
      cur = l;
      e = t;
    }
  }

  TFitPieces pieces;
  int budget = MaxFitPieces;
  auto fitHalves = [&](const TBezierSegment2D& B) {
    TBezierSegment2D l;
    TBezierSegment2D r;
    B.SplitMiddle(l, r);
    BiarcFit(l, disTol, 1, budget, pieces);
    BiarcFit(r, disTol, 1, budget, pieces);
  };
  if (places.empty()) {
    const double a = std::abs(bezierSeg.TangentEnd().AngleFrom(bezierSeg.TangentStart()));
    if (fGreat(a, HalfPi, 1e-6) && fSmall(a, 4.71238898038469, 1e-6))
      fitHalves(bezierSeg);  // turns too far for one biarc
    else if (fGreat(a, Pi / 4.0, 1e-6) && bezierSeg.P0.Equals(bezierSeg.P3, PointTol))
      fitHalves(bezierSeg);  // a closed loop
    else
      BiarcFit(bezierSeg, disTol, 0, budget, pieces);
  } else {
    const double t0 = places[0];
    TBezierSegment2D l;
    TBezierSegment2D r;
    bezierSeg.Split(t0, l, r);
    BiarcFit(l, disTol, 1, budget, pieces);
    TBezierSegment2D rl;
    TBezierSegment2D rr;
    if (places.size() >= 2 && r.Split((places[1] - t0) / (1.0 - t0), rl, rr)) {
      BiarcFit(rl, disTol, 2, budget, pieces);
      BiarcFit(rr, disTol, 2, budget, pieces);
    } else {
      BiarcFit(r, disTol, 1, budget, pieces);
    }
  }

  // Neighbouring arcs that each stand alone for their stretch and lie on nearly one circle
  // (the halves of a cubic that turns too far for one biarc, typically) become one arc
  // through their ends and joint, where that arc holds the tolerance over every stretch.
  {
    auto alone = [&](std::size_t k) {
      return !pieces[k].Arc.IsLine && (k == 0 || !(pieces[k - 1].Span == pieces[k].Span)) &&
             (k + 1 == pieces.size() || !(pieces[k + 1].Span == pieces[k].Span));
    };
    TFitPieces joined;
    joined.reserve(pieces.size());
    for (std::size_t i = 0; i < pieces.size();) {
      TFitPiece cur = pieces[i];
      std::size_t j = i;
      if (alone(i)) {
        while (j + 1 < pieces.size() && j - i < 16 && alone(j + 1)) {
          const TArc2D& next = pieces[j + 1].Arc;
          if (next.IsClockwise != cur.Arc.IsClockwise || std::abs(next.Radius - cur.Arc.Radius) > disTol ||
              next.Center.DistanceTo(cur.Arc.Center) > disTol)
            break;
          const TArc2D one = TArc2D::CreateCross(cur.Arc.StartPoint(), next.StartPoint(), next.EndPoint());
          if (one.IsLine || std::abs(one.SweepAngle) >= TwoPi) break;
          bool holds = true;
          for (std::size_t k = i; k <= j + 1 && holds; ++k) holds = MaxDeviation(pieces[k].Span, &one, 1, disTol) <= disTol;
          if (!holds) break;
          cur.Arc = one;
          cur.Merged = true;
          ++j;
        }
      }
      joined.push_back(cur);
      i = j + 1;
    }
    pieces.swap(joined);
  }

  // Very flat big arcs become lines, where five times their sagitta is within the tolerance
  // and the line still holds the tolerance against the stretch of the Bezier it replaces.
  for (std::size_t i = 0; i < pieces.size();) {
    std::size_t j = i + 1;
    while (j < pieces.size() && pieces[j].Span == pieces[i].Span) ++j;
    TArc2D group[2];
    const int n = static_cast<int>(std::min<std::size_t>(j - i, 2));
    for (int k = 0; k < n; ++k) group[k] = pieces[i + static_cast<std::size_t>(k)].Arc;
    for (int k = 0; k < n; ++k) {
      const TArc2D& arc = group[k];
      if (arc.IsLine || pieces[i + static_cast<std::size_t>(k)].Merged) continue;
      const double sweep = std::abs(arc.SweepAngle);
      if (!(sweep < 0.003 && arc.Radius > 50.0 && disTol > (1.0 - std::cos(sweep / 2.0)) * arc.Radius * 5.0)) continue;
      TArc2D trial[2] = {group[0], group[1]};
      trial[k].DegradeLine(arc.StartPoint(), arc.EndPoint());
      if (MaxDeviation(pieces[i].Span, trial, n, disTol) <= disTol) group[k] = trial[k];
    }
    for (int k = 0; k < n; ++k) pieces[i + static_cast<std::size_t>(k)].Arc = group[k];
    i = j;
  }
  result->SetCapacity(static_cast<int>(pieces.size()));
  for (const TFitPiece& p : pieces) result->Add(p.Arc);
  return result;
}

bool TCadBasicAlgo::CalCenter(const TPoint2D& StartPt, const TPoint2D& EndPt, const TPoint2D& TangentL,
                              TPoint2D& Center) {
  const TLine2D normal(StartPt, StartPt + TPoint2D(TangentL.Y, -TangentL.X));
  const TPoint2D m = (StartPt + EndPt) * 0.5;
  const TPoint2D v = EndPt - StartPt;
  const TLine2D bisector(m, m + TPoint2D(v.Y, -v.X));
  return normal.Cross(bisector, Center) == 1;
}

bool TCadBasicAlgo::CalCirCenter(const TPoint2D& AStartPt, const TPoint2D& AEndPt, const TPoint2D& EndTangent,
                                 bool& CW, TPoint2D& ACenter) {
  const TLine2D normal(AEndPt, AEndPt + EndTangent.RotateCcw90());
  const TPoint2D m = (AStartPt + AEndPt) * 0.5;
  const TLine2D bisector(m, m + (AStartPt - AEndPt).RotateCcw90());
  const TPoint2D u1 = normal.GetDirection();
  const TPoint2D u2 = bisector.GetDirection();
  bool ok = true;
  if (u1 == u2 || u1 == -u2 || std::abs(u1.CrossMul(u2)) < 1e-12) {
    ACenter = m;
  } else {
    // Cross answers 1 for one point and 2 for none: only the first is a centre.
    ok = normal.Cross(bisector, ACenter) == 1;
  }
  CW = !((AEndPt - ACenter).CrossMul(EndTangent) > 0.0);
  return ok;
}

double TCadBasicAlgo::CalcArea(const TDynPoints2D& ptList) {
  const std::size_t n = ptList.size();
  if (n <= 2) return 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint2D& prev = ptList[(i + n - 1) % n];
    const TPoint2D& next = ptList[(i + 1) % n];
    sum += ptList[i].X * (next.Y - prev.Y);
  }
  return 0.5 * sum;
}

double TCadBasicAlgo::CalcArea(const TList<TPoint2D>& ptList) { return CalcArea(ptList.List()); }

bool TCadBasicAlgo::IsHullIntersectWithRect(const TDynPoints2D& AHull, const TRect2D& ARect) {
  if (AHull.empty()) return false;
  const TRect2D r = ARect.NormalizedRect();
  auto code = [&](const TPoint2D& P) {
    int c = 0;
    if (P.Y > r.YMax)
      c |= 8;
    else if (P.Y < r.YMin)
      c |= 4;
    if (P.X > r.XMax)
      c |= 2;
    else if (P.X < r.XMin)
      c |= 1;
    return c;
  };
  int c0 = code(AHull[0]);
  if (c0 == 0) return true;
  for (std::size_t i = 1; i < AHull.size(); ++i) {
    const int c = code(AHull[i]);
    if (c == 0) return true;
    if ((c0 & c) == 0) {
      const TLine2D edge(AHull[i - 1], AHull[i]);
      const int bits = c0 | c;
      if ((bits & 1) && fInside(edge.PointAtX(r.XMin).Y, r.YMin, r.YMax)) return true;
      if ((bits & 2) && fInside(edge.PointAtX(r.XMax).Y, r.YMin, r.YMax)) return true;
      if ((bits & 4) && fInside(edge.PointAtY(r.YMin).X, r.XMin, r.XMax)) return true;
      if ((bits & 8) && fInside(edge.PointAtY(r.YMax).X, r.XMin, r.XMax)) return true;
    }
    c0 = c;
  }
  return false;
}

}  // namespace orvane
