#include "orvane/mixed/LABSegline.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orvane/algorithms/GeometryUtils.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

namespace {

constexpr double PointTol = 1e-6;

TPoint2D BezierDerivative(const TLABSegline& S, double T) {
  return 3.0 * ((-1.0 * S.P1 + 3.0 * S.P2 - 3.0 * S.P3 + S.P4) * (T * T) + (2.0 * S.P1 - 4.0 * S.P2 + 2.0 * S.P3) * T -
                S.P1 + S.P2);
}

int SampleSteps(double ParamStep, const char* Where) {
  if (!(ParamStep > 0.0) || !std::isfinite(ParamStep) || 1.0 / ParamStep > TLABSegline::MaxSampleSteps) {
    throw EParamError("[Error] %s: ParamStep %s must be a number above 0 and at least 1 / %s", Where,
                      FloatToStr(ParamStep), FloatToStr(TLABSegline::MaxSampleSteps));
  }
  // A step beyond the whole range still gives the two ends.
  return static_cast<int>(std::max<std::int64_t>(1, orvane::Round(1.0 / ParamStep)));
}

void AddLineCrossing(const TPoint2D& A, const TPoint2D& B, double Y, TFloatDynArray& Xs) {
  if ((A.Y > Y) != (B.Y > Y)) Xs.push_back(A.X + (Y - A.Y) * (B.X - A.X) / (B.Y - A.Y));
}

}  // namespace

TLABSegline TLABSegline::CreateArc(const TArc2D& Arc) {
  if (Arc.IsLine) return CreateLine(Arc.StartPoint(), Arc.EndPoint());
  const TPoint2D start = Arc.StartPoint();
  // tan(sweep / 4) of a full turn is no mark at all (about 1.6e16): give the circle its mark.
  if (std::abs(Arc.SweepAngle) >= TwoPi - 1e-12)
    return CreateArc(start, start, Arc.Center, Arc.SweepAngle < 0.0 ? -3.4028234663852886e+38 : 3.4028234663852886e+38);
  return CreateArc(start, Arc.EndPoint(), Arc.Center, Arc.Bulge());
}

bool TLABSegline::IsPoint() const {
  switch (SegType) {
    case TSegType::stLine:
      return P1.Equals(P4, PointTol);
    case TSegType::stBezier:
      return P2.Equals(P1, PointTol) && P3.Equals(P1, PointTol) && P4.Equals(P1, PointTol);
    case TSegType::stArc:
      break;
  }
  return false;
}

bool TLABSegline::IsLine(double Tol) const {
  switch (SegType) {
    case TSegType::stLine:
      return !P1.Equals(P4, PointTol);
    case TSegType::stBezier: {
      if (P1.Equals(P4, Tol)) return false;
      const TLine2D chord(P1, P4);
      return CompareValue(chord.DistanceDirect(P2), 0.0, Tol) == 0 &&
             CompareValue(chord.DistanceDirect(P3), 0.0, Tol) == 0;
    }
    case TSegType::stArc:
      break;
  }
  return false;
}

TPoint2D TLABSegline::PointByParam(double Param) const {
  switch (SegType) {
    case TSegType::stLine:
      return TLine2D(P1, P4).EvalPoint(Param);
    case TSegType::stArc:
      return ToArc().EvalPoint(Param);
    case TSegType::stBezier:
      break;
  }
  const double t = Param;
  const double s = 1.0 - t;
  return P1 * (s * s * s) + P2 * (3.0 * t * s * s) + P3 * (3.0 * t * t * s) + P4 * (t * t * t);
}

TPoint2D TLABSegline::TangentVector(double Param) const {
  switch (SegType) {
    case TSegType::stLine:
      return P4 - P1;
    case TSegType::stArc:
      return ToArc().CalcDerivative(Param);
    case TSegType::stBezier:
      break;
  }
  return BezierDerivative(*this, Param);
}

double TLABSegline::ParamByPoint(const TPoint2D& Point, double Tol) const {
  switch (SegType) {
    case TSegType::stLine:
      return TLine2D(P1, P4).ParamOfPoint(Point);
    case TSegType::stArc:
      return ToArc().ParamOfPoint(Point);
    case TSegType::stBezier:
      break;
  }
  return ToBezierSegment().ParamOfPoint(Point, TGeTolerance(Tol, Tol));
}

double TLABSegline::DistanceTo(const TPoint2D& Point, double& Param) const {
  if (SegType == TSegType::stArc) throw Exception("[Error] TLABSegline.DistanceTo: 圆弧距离未实现");
  if (SegType == TSegType::stBezier) throw Exception("[Error] TLABSegline.DistanceTo: 贝塞尔距离未实现");
  TPoint2D nearest;
  return TLine2D(P1, P4).DistanceLimit(Point, Param, nearest);
}

TRect2D TLABSegline::BoundBox() const {
  switch (SegType) {
    case TSegType::stLine:
      return TLine2D(P1, P4).GetBoundBox();
    case TSegType::stArc:
      return ToArc().GetBoundBox();
    case TSegType::stBezier:
      break;
  }
  return ToBezierSegment().GetBoundBox();
}

double TLABSegline::Length(double ParamStep) const {
  switch (SegType) {
    case TSegType::stLine:
      return P1.DistanceTo(P4);
    case TSegType::stArc:
      return ToArc().CurveLength();
    case TSegType::stBezier:
      break;
  }
  return Sample(ParamStep)->TotalLength();
}

std::unique_ptr<TVPolyline2D> TLABSegline::Sample(double ParamStep) const {
  const int n = SampleSteps(ParamStep, "TLABSegline.Sample");
  TDynPoints2D pts;
  if (IsLine(PointTol)) {
    pts = {P1, P4};
  } else if (SegType == TSegType::stArc) {
    ToArc().GetPoints(n + 1, pts);
  } else {
    pts.reserve(static_cast<std::size_t>(n) + 1);
    pts.push_back(P1);
    for (int i = 1; i < n; ++i) pts.push_back(PointByParam(i * ParamStep));
    pts.push_back(P4);
  }
  return std::make_unique<TVPolyline2D>(std::move(pts));
}

TLine2D TLABSegline::ToLine() const {
  if (SegType == TSegType::stArc) throw Exception("[Error] TLABSegline.ToLine: 将“非直线段混合线段”转为“直线段”");
  return {P1, P4};
}

TArc2D TLABSegline::ToArc() const {
  if (SegType != TSegType::stArc) throw Exception("[Error] TLABSegline.ToArc: 将“非弧线混合线段”转为“弧线”");
  if (std::isnan(Bulge)) throw EParamError("[Error] TLABSegline.ToArc: Bulge is not a number");
  if (IsCircleBulge(Bulge)) return TArc2D::CreateCircle(P2, P1, Bulge < 0.0);
  return TArc2D::CreateCenter(P2, P1, P4, Bulge > 0.0);
}

TBezierSegment2D TLABSegline::ToBezierSegment() const {
  if (SegType != TSegType::stBezier) {
    throw Exception("[Error] TLABSegline.ToBezierSegment: 将“非贝塞尔混合线段”转为“贝塞尔”");
  }
  return {P1, P2, P3, P4};
}

bool TLABSegline::TryToLine(double Tol) {
  if (!IsLine(Tol)) return false;
  SegType = TSegType::stLine;
  P2 = TPoint2D::FZero;
  P3 = TPoint2D::FZero;
  return true;
}

TLABSegline TLABSegline::RoundTo(int Accuracy) const {
  return {SegType, P1.RoundTo(-Accuracy), P2.RoundTo(-Accuracy), P3.RoundTo(-Accuracy), P4.RoundTo(-Accuracy), Bulge};
}

TLABSegline TLABSegline::Translate(const TPoint2D& TransVec) const {
  return {SegType, P1 + TransVec, P2 + TransVec, P3 + TransVec, P4 + TransVec, Bulge};
}

void TLABSegline::TranslateInplace(const TPoint2D& TransVec) {
  P1 += TransVec;
  P4 += TransVec;
  if (SegType != TSegType::stLine) P2 += TransVec;
  if (SegType == TSegType::stBezier) P3 += TransVec;
}

TLABSegline TLABSegline::Rotate(double Radian) const {
  return {SegType, P1.RotateBy(Radian), P2.RotateBy(Radian), P3.RotateBy(Radian), P4.RotateBy(Radian), Bulge};
}

TLABSegline TLABSegline::RotateBy90() const {
  return {SegType, P1.RotateCcw90(), P2.RotateCcw90(), P3.RotateCcw90(), P4.RotateCcw90(), Bulge};
}

TLABSegline TLABSegline::RotateBy_90() const {
  return {SegType, P1.RotateCw90(), P2.RotateCw90(), P3.RotateCw90(), P4.RotateCw90(), Bulge};
}

TLABSegline TLABSegline::YMirror() const {
  auto m = [](const TPoint2D& P) { return TPoint2D(-P.X, P.Y); };
  return {SegType, m(P1), m(P2), m(P3), m(P4), -Bulge};
}

TLABSegline TLABSegline::Transform(const TMatrix2D& Matrix) const {
  switch (SegType) {
    case TSegType::stLine:
      return CreateLine(Matrix.Transform(P1), Matrix.Transform(P4));
    case TSegType::stArc: {
      // A reflection turns counter-clockwise into clockwise: without the negated bulge the
      // image would be the complementary arc of the mirrored circle.
      const bool reflects = Matrix.M11 * Matrix.M22 - Matrix.M12 * Matrix.M21 < 0.0;
      return CreateArc(Matrix.Transform(P1), Matrix.Transform(P4), Matrix.Transform(P2), reflects ? -Bulge : Bulge);
    }
    case TSegType::stBezier:
      break;
  }
  return CreateBezier(Matrix.Transform(P1), Matrix.Transform(P2), Matrix.Transform(P3), Matrix.Transform(P4));
}

TLABSegline TLABSegline::Reverse() const {
  TLABSegline r = *this;
  r.ReverseInplace();
  return r;
}

void TLABSegline::ReverseInplace() {
  switch (SegType) {
    case TSegType::stLine:
      std::swap(P1, P4);
      break;
    case TSegType::stArc:
      std::swap(P1, P4);
      Bulge = -Bulge;
      break;
    case TSegType::stBezier:
      std::swap(P1, P4);
      std::swap(P2, P3);
      break;
  }
}

bool TLABSegline::CrossWithSegLine(const TLine2D& SegLine, TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                                   double Tol) const {
  switch (SegType) {
    case TSegType::stLine: {
      TPoint2D a;
      TPoint2D b;
      const int rel = ToLine().RelationWithSegLine(SegLine, a, b, Tol, 1e-9);
      if (rel == 0) return false;
      if (rel == 1)
        CrossPts.Add(a);
      else
        CrossLines.Add(TLine2D(a, b));
      return true;
    }
    case TSegType::stArc: {
      TIntersectPoint2D i1;
      TIntersectPoint2D i2;
      const int n = ToArc().CrossWithSegline(SegLine, i1, i2, Tol);
      if (n >= 1) CrossPts.Add(i1.Pt);
      if (n >= 2) CrossPts.Add(i2.Pt);
      return n >= 1;
    }
    case TSegType::stBezier:
      break;
  }
  return TGeometryUtils::BezierCrossWithSegline(ToBezierSegment(), SegLine, Tol, CrossPts, CrossLines);
}

bool TLABSegline::CrossWithLABSegline(const TLABSegline& LABSegLine, TList<TPoint2D>& CrossPts,
                                      TList<TLine2D>& CrossLines, TList<TArc2D>& CrossArcs,
                                      TList<TBezierSegment2D>& CrossBeziers, double Tol) const {
  const int before = CrossPts.Count() + CrossLines.Count() + CrossArcs.Count() + CrossBeziers.Count();
  const TLABSegline& other = LABSegLine;
  auto lineWithArc = [&](const TLine2D& Line, const TArc2D& Arc) {
    TIntersectPoint2D i1;
    TIntersectPoint2D i2;
    const int n = Arc.CrossWithSegline(Line, i1, i2, Tol);
    if (n >= 1) CrossPts.Add(i1.Pt);
    if (n >= 2) CrossPts.Add(i2.Pt);
  };
  const TSegType a = SegType;
  const TSegType b = other.SegType;
  if (a == TSegType::stLine && b == TSegType::stLine) {
    TPoint2D p;
    TPoint2D q;
    const int rel = ToLine().RelationWithSegLine(other.ToLine(), p, q, Tol, 1e-9);
    if (rel == 1) CrossPts.Add(p);
    if (rel == 2) CrossLines.Add(TLine2D(p, q));
  } else if (a == TSegType::stLine && b == TSegType::stArc) {
    lineWithArc(ToLine(), other.ToArc());
  } else if (a == TSegType::stArc && b == TSegType::stLine) {
    lineWithArc(other.ToLine(), ToArc());
  } else if (a == TSegType::stArc && b == TSegType::stArc) {
    TPoint2D p1;
    TPoint2D p2;
    TArc2D arc1;
    TArc2D arc2;
    const int code = ToArc().CrossWithArc(other.ToArc(), p1, p2, arc1, arc2);
    const int pts = code & 3;
    const int arcs = code & 12;
    if (pts >= 1) CrossPts.Add(p1);
    if (pts >= 2) CrossPts.Add(p2);
    if (arcs >= 4) CrossArcs.Add(arc1);
    if (arcs >= 8) CrossArcs.Add(arc2);
  } else if (a == TSegType::stLine && b == TSegType::stBezier) {
    TGeometryUtils::BezierCrossWithSegline(other.ToBezierSegment(), ToLine(), Tol, CrossPts, CrossLines);
  } else if (a == TSegType::stBezier && b == TSegType::stLine) {
    TGeometryUtils::BezierCrossWithSegline(ToBezierSegment(), other.ToLine(), Tol, CrossPts, CrossLines);
  } else if (a == TSegType::stArc && b == TSegType::stBezier) {
    TGeometryUtils::BezierCrossWithArc(other.ToBezierSegment(), ToArc(), Tol, CrossPts);
  } else if (a == TSegType::stBezier && b == TSegType::stArc) {
    TGeometryUtils::BezierCrossWithArc(ToBezierSegment(), other.ToArc(), Tol, CrossPts);
  } else {
    TGeometryUtils::BezierCrossWithBezier(ToBezierSegment(), other.ToBezierSegment(), Tol, CrossPts, CrossLines,
                                          CrossBeziers);
  }
  return CrossPts.Count() + CrossLines.Count() + CrossArcs.Count() + CrossBeziers.Count() > before;
}

namespace internal {

double SweptArea2(const TLABSegline& Seg) {
  switch (Seg.SegType) {
    case TSegType::stLine:
      return Seg.P1.CrossMul(Seg.P4);
    case TSegType::stArc: {
      const TArc2D arc = Seg.ToArc();
      if (arc.IsLine) return Seg.P1.CrossMul(Seg.P4);
      // The arc from P1 to its own end E (the radius comes from P1, so E may miss P4 by the
      // rounding of the record), then straight on to P4: the chord term plus the circular
      // segment r^2 (theta - sin theta).
      const TPoint2D e = arc.EndPoint();
      const double r2 = arc.Radius * arc.Radius;
      return Seg.P1.CrossMul(e) + r2 * (arc.SweepAngle - std::sin(arc.SweepAngle)) + e.CrossMul(Seg.P4);
    }
    case TSegType::stBezier:
      break;
  }
  // x y' - y x' is a polynomial of degree 4 in t: three Gauss-Legendre nodes integrate it
  // exactly.
  static constexpr std::array<double, 3> nodes = {0.1127016653792583, 0.5, 0.8872983346207417};
  static constexpr std::array<double, 3> weights = {5.0 / 18.0, 8.0 / 18.0, 5.0 / 18.0};
  double sum = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    const TPoint2D p = Seg.PointByParam(nodes[k]);
    sum += weights[k] * p.CrossMul(BezierDerivative(Seg, nodes[k]));
  }
  return sum;
}

void HorizontalCrossings(const TLABSegline& Seg, double Y, TFloatDynArray& Xs) {
  switch (Seg.SegType) {
    case TSegType::stLine:
      AddLineCrossing(Seg.P1, Seg.P4, Y, Xs);
      return;
    case TSegType::stArc: {
      const TArc2D arc = Seg.ToArc();
      if (arc.IsLine) {
        AddLineCrossing(Seg.P1, Seg.P4, Y, Xs);
        return;
      }
      // Cut the sweep at the top and the bottom of the circle: each piece rises or falls
      // and lies on one side of the vertical through the centre.
      const double a0 = std::min(arc.StartAngle, arc.EndAngle());
      const double a1 = std::max(arc.StartAngle, arc.EndAngle());
      std::array<double, 8> cuts{};
      std::size_t n = 0;
      cuts[n++] = a0;
      for (double k = std::ceil((a0 - HalfPi) / Pi); n < cuts.size() - 1; k += 1.0) {
        const double c = HalfPi + k * Pi;
        if (c >= a1) break;
        if (c > a0) cuts[n++] = c;
      }
      cuts[n++] = a1;
      const TPoint2D e = arc.EndPoint();
      const TPoint2D lowEnd = arc.SweepAngle >= 0.0 ? Seg.P1 : e;
      const TPoint2D highEnd = arc.SweepAngle >= 0.0 ? e : Seg.P1;
      auto yAt = [&](std::size_t i) {
        if (i == 0) return lowEnd.Y;
        if (i == n - 1) return highEnd.Y;
        return arc.Center.Y + arc.Radius * std::sin(cuts[i]);  // exactly the top or the bottom
      };
      for (std::size_t i = 0; i + 1 < n; ++i) {
        const double ya = yAt(i);
        const double yb = yAt(i + 1);
        if ((ya > Y) == (yb > Y)) continue;
        const double dy = Y - arc.Center.Y;
        const double dx = std::sqrt(std::max(0.0, arc.Radius * arc.Radius - dy * dy));
        const bool right = std::cos(0.5 * (cuts[i] + cuts[i + 1])) >= 0.0;
        Xs.push_back(right ? arc.Center.X + dx : arc.Center.X - dx);
      }
      AddLineCrossing(e, Seg.P4, Y, Xs);
      return;
    }
    case TSegType::stBezier:
      break;
  }
  // Cut the Bezier where y' vanishes, then find the one height Y of each monotone piece by
  // bisection, which halves the interval each time and so ends.
  const double c0 = Seg.P1.Y;
  const double c1 = Seg.P2.Y;
  const double c2 = Seg.P3.Y;
  const double c3 = Seg.P4.Y;
  std::array<double, 4> ts{0.0, 0.0, 0.0, 0.0};
  std::size_t n = 0;
  ts[n++] = 0.0;
  double r1 = 0.0;
  double r2 = 0.0;
  if (TMathUtils::CalcQuadraticEquation(-c0 + 3.0 * c1 - 3.0 * c2 + c3, 2.0 * (c0 - 2.0 * c1 + c2), -c0 + c1, r1, r2)) {
    if (r1 > 0.0 && r1 < 1.0) ts[n++] = r1;
    if (r2 > 0.0 && r2 < 1.0 && r2 > ts[n - 1]) ts[n++] = r2;
  }
  ts[n++] = 1.0;
  auto yAt = [&](double t) { return t == 0.0 ? c0 : (t == 1.0 ? c3 : Seg.PointByParam(t).Y); };
  for (std::size_t i = 0; i + 1 < n; ++i) {
    double lo = ts[i];
    double hi = ts[i + 1];
    const bool loAbove = yAt(lo) > Y;
    if (loAbove == (yAt(hi) > Y)) continue;
    for (int it = 0; it < 200 && hi - lo > 0.0; ++it) {
      const double mid = 0.5 * (lo + hi);
      if (mid <= lo || mid >= hi) break;
      if ((yAt(mid) > Y) == loAbove)
        lo = mid;
      else
        hi = mid;
    }
    Xs.push_back(Seg.PointByParam(0.5 * (lo + hi)).X);
  }
}

double DistanceToSeg(const TLABSegline& Seg, const TPoint2D& Pt) {
  switch (Seg.SegType) {
    case TSegType::stLine:
      return TLine2D(Seg.P1, Seg.P4).DistanceLimit(Pt);
    case TSegType::stArc: {
      double param = 0.0;
      return Seg.ToArc().GetClosedPointTo(Pt, param).DistanceTo(Pt);
    }
    case TSegType::stBezier:
      break;
  }
  double param = 0.0;
  TPoint2D nearest;
  return Seg.ToBezierSegment().DistanceTo(Pt, DefTol, param, nearest);
}

}  // namespace internal

}  // namespace orvane
