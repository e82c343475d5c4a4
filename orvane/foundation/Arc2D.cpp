#include "orvane/foundation/Arc2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {

// Angle folded into [0, 2*pi).
double Wrap(double A) {
  double r = std::fmod(A, TwoPi);
  if (r < 0.0) r += TwoPi;
  return r >= TwoPi ? 0.0 : r;
}

// A crossing candidate, snapped to whichever stored end point lies within Tol of it.
TPoint2D SnapToEnds(const TPoint2D& Pt, std::initializer_list<TPoint2D> Ends, double Tol) {
  for (const TPoint2D& e : Ends) {
    if (Pt.Equals(e, Tol)) return e;
  }
  return Pt;
}

}  // namespace

TArc2D::TArc2D(const TPoint2D& ACenter, double ARadius, double AStartAngle, double ASweepAngle)
    : SweepAngle(ASweepAngle),
      StartAngle(AStartAngle),
      Center(ACenter),
      Radius(ARadius),
      IsClockwise(ASweepAngle < 0.0) {
  internal::CheckFinitePoint<EGeometry>(ACenter, "TArc2D.Create", "Center");
  internal::CheckFinite<EGeometry>(ARadius, "TArc2D.Create", "Radius");
  internal::CheckFinite<EGeometry>(AStartAngle, "TArc2D.Create", "StartAngle");
  internal::CheckFinite<EGeometry>(ASweepAngle, "TArc2D.Create", "SweepAngle");
  if (ARadius < 0.0) throw EGeometry("[Error] TArc2D.Create: Radius %s is negative", FloatToStr(ARadius));
}

TArc2D TArc2D::CreateBulge(const TPoint2D& From, const TPoint2D& To, double Bulge) {
  internal::CheckFinitePoint<EGeometry>(From, "TArc2D.CreateBulge", "From");
  internal::CheckFinitePoint<EGeometry>(To, "TArc2D.CreateBulge", "To");
  internal::CheckFinite<EGeometry>(Bulge, "TArc2D.CreateBulge", "Bulge");
  if (Bulge == 0.0 || From == To) {
    TArc2D line;
    line.DegradeLine(From, To);
    return line;
  }
  return CreateAngle(From, To, 4.0 * std::atan(Bulge));
}

TArc2D TArc2D::CreateCenter(const TPoint2D& Center, const TPoint2D& From, const TPoint2D& To, bool IsCcw) {
  internal::CheckFinitePoint<EGeometry>(Center, "TArc2D.CreateCenter", "Center");
  internal::CheckFinitePoint<EGeometry>(From, "TArc2D.CreateCenter", "From");
  internal::CheckFinitePoint<EGeometry>(To, "TArc2D.CreateCenter", "To");
  const double start = (From - Center).Angle();
  const double end = (To - Center).Angle();
  double sweep = IsCcw ? Wrap(end - start) : Wrap(start - end);
  if (sweep == 0.0) sweep = TwoPi;
  return TArc2D(Center, From.DistanceTo(Center), start, IsCcw ? sweep : -sweep);
}

TArc2D TArc2D::CreateRadius(const TPoint2D& From, const TPoint2D& To, double Radius, bool Clockwise) {
  internal::CheckFinitePoint<EGeometry>(From, "TArc2D.CreateRadius", "From");
  internal::CheckFinitePoint<EGeometry>(To, "TArc2D.CreateRadius", "To");
  internal::CheckFinite<EGeometry>(Radius, "TArc2D.CreateRadius", "Radius");
  const double chord = From.DistanceTo(To);
  if (chord == 0.0) throw EGeometry("[Error] TArc2D.CreateRadius: the end points coincide at %s", From.ToString());
  double r = std::fabs(Radius);
  if (r < 0.5 * chord) {
    if (r < 0.5 * chord * (1.0 - 1e-9)) {
      throw EGeometry("[Error] TArc2D.CreateRadius: radius %s is shorter than half the chord %s", FloatToStr(r),
                      FloatToStr(0.5 * chord));
    }
    r = 0.5 * chord;
  }
  const double minor = 2.0 * std::asin(std::min(1.0, 0.5 * chord / r));
  const double sweep = Radius < 0.0 ? TwoPi - minor : minor;
  // A major arc of a half circle is the half circle itself: keep it below a full turn.
  return CreateAngle(From, To, Clockwise ? -std::min(sweep, TwoPi - 1e-12) : std::min(sweep, TwoPi - 1e-12));
}

TArc2D TArc2D::CreateAngle(const TPoint2D& From, const TPoint2D& To, double Sweep) {
  internal::CheckFinitePoint<EGeometry>(From, "TArc2D.CreateAngle", "From");
  internal::CheckFinitePoint<EGeometry>(To, "TArc2D.CreateAngle", "To");
  internal::CheckFinite<EGeometry>(Sweep, "TArc2D.CreateAngle", "Sweep");
  if (std::fabs(Sweep) < 1e-9) throw EGeometry("SweepAngle is too close to 0");
  if (std::fabs(Sweep) >= TwoPi) {
    throw EGeometry("[Error] TArc2D.CreateAngle: sweep %s reaches a full turn", FloatToStr(Sweep));
  }
  const TPoint2D chord = To - From;
  const double c = chord.Mag();
  if (c == 0.0) throw EGeometry("[Error] TArc2D.CreateAngle: the end points coincide at %s", From.ToString());
  // The centre lies on the chord's bisector at (c/2) * cot(sweep/2), left of the chord for
  // a counter-clockwise minor arc; the signs of cot carry every other case.
  const TPoint2D mid = (From + To) * 0.5;
  const double half = 0.5 * Sweep;
  const TPoint2D center = mid + chord.RotateCcw90() * (0.5 * std::cos(half) / std::sin(half));
  const double radius = 0.5 * c / std::fabs(std::sin(half));
  return TArc2D(center, radius, (From - center).Angle(), Sweep);
}

TArc2D TArc2D::CreateCross(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3) {
  internal::CheckFinitePoint<EGeometry>(P1, "TArc2D.CreateCross", "P1");
  internal::CheckFinitePoint<EGeometry>(P2, "TArc2D.CreateCross", "P2");
  internal::CheckFinitePoint<EGeometry>(P3, "TArc2D.CreateCross", "P3");
  const TPoint2D a = P2 - P1;
  const TPoint2D b = P3 - P1;
  const double cross = a.CrossMul(b);
  const double scale = std::max({a.MagSqr(), b.MagSqr(), (P3 - P2).MagSqr()});
  if (std::fabs(cross) <= 1e-12 * scale) {
    TArc2D line;
    line.DegradeLine(P1, P3);
    return line;
  }
  // Circumcentre relative to P1.
  const double d = 2.0 * cross;
  const TPoint2D rel((b.Y * a.MagSqr() - a.Y * b.MagSqr()) / d, (a.X * b.MagSqr() - b.X * a.MagSqr()) / d);
  const TPoint2D center = P1 + rel;
  const double start = (P1 - center).Angle();
  const double end = (P3 - center).Angle();
  // Points that turn left run counter-clockwise about the centre.
  const double sweep = cross > 0.0 ? Wrap(end - start) : -Wrap(start - end);
  return TArc2D(center, rel.Mag(), start, sweep);
}

TArc2D TArc2D::CreateCircle(const TPoint2D& Center, const TPoint2D& From, bool Clockwise) {
  internal::CheckFinitePoint<EGeometry>(Center, "TArc2D.CreateCircle", "Center");
  internal::CheckFinitePoint<EGeometry>(From, "TArc2D.CreateCircle", "From");
  return TArc2D(Center, From.DistanceTo(Center), (From - Center).Angle(), Clockwise ? -TwoPi : TwoPi);
}

void TArc2D::DegradeLine(const TPoint2D& AStartPoint, const TPoint2D& AEndPoint) {
  IsLine = true;
  Center = AStartPoint;
  Radius = AEndPoint.X;
  StartAngle = AEndPoint.Y;
  SweepAngle = 0.0;
  IsClockwise = false;
}

TPoint2D TArc2D::StartPoint() const { return IsLine ? Center : PointAt(StartAngle); }

TPoint2D TArc2D::EndPoint() const { return IsLine ? TPoint2D(Radius, StartAngle) : PointAt(EndAngle()); }

TPoint2D TArc2D::PointAt(double Theta) const {
  return {Center.X + Radius * std::cos(Theta), Center.Y + Radius * std::sin(Theta)};
}

TPoint2D TArc2D::EvalPoint(double Param) const {
  if (IsLine) return AsLine().EvalPoint(Param);
  return PointAt(ParamToAngle(Param));
}

TPoint2D TArc2D::EvalPoint(double Param, TPoint2D& Deriv) const {
  Deriv = CalcDerivative(Param);
  return EvalPoint(Param);
}

TPoint2D TArc2D::CalcDerivative(double Param) const {
  if (IsLine) return AsLine().Vector();
  const double a = ParamToAngle(Param);
  return TPoint2D(-std::sin(a), std::cos(a)) * (Radius * SweepAngle);
}

double TArc2D::AngleToParam(double Angle) const {
  if (SweepAngle == 0.0 || IsLine) return 0.0;
  const double delta = SweepAngle > 0.0 ? Wrap(Angle - StartAngle) : Wrap(StartAngle - Angle);
  return delta / std::fabs(SweepAngle);
}

double TArc2D::ParamOfPoint(const TPoint2D& Pt) const {
  if (IsLine) return std::clamp(AsLine().ParamOfPoint(Pt), 0.0, 1.0);
  if (Pt == Center || SweepAngle == 0.0) return 0.0;
  const double p = AngleToParam(AngleOfPoint(Pt));
  if (p <= 1.0) return p;
  // Outside the sweep: the nearer end by angle.
  const double sweep = std::fabs(SweepAngle);
  const double pastEnd = p * sweep - sweep;
  const double beforeStart = TwoPi - p * sweep;
  return pastEnd < beforeStart ? 1.0 : 0.0;
}

bool TArc2D::IsInArcRadiation(const TPoint2D& Pt, double Tol) const {
  if (IsLine) return AsLine().IsOn(Pt, Tol);
  if (Radius == 0.0) return Pt.Equals(Center, Tol);
  if (Pt == Center) return false;
  const double sweep = std::fabs(SweepAngle);
  if (sweep >= TwoPi) return true;
  const double angTol = Tol / Radius;
  const double at = AngleToParam(AngleOfPoint(Pt)) * sweep;
  return at <= sweep + angTol || TwoPi - at <= angTol;
}

bool TArc2D::IsOn(const TPoint2D& Pt, double Tol, double& Param) const {
  double param = 0.0;
  const TPoint2D nearest = GetClosedPointTo(Pt, param);
  if (nearest.DistanceTo(Pt) > Tol) return false;
  Param = param;
  return true;
}

TPoint2D TArc2D::GetClosedPointTo(const TPoint2D& Pt, double& Param) const {
  Param = ParamOfPoint(Pt);
  if (Param == 0.0) return StartPoint();
  if (Param == 1.0) return EndPoint();
  return EvalPoint(Param);
}

double TArc2D::CurveLength() const { return IsLine ? AsLine().Length() : Radius * std::fabs(SweepAngle); }

double TArc2D::LengthOfParam(double From, double To) const { return (To - From) * CurveLength(); }

double TArc2D::Bulge() const { return IsLine ? 0.0 : std::tan(0.25 * SweepAngle); }

TRect2D TArc2D::GetBoundBox() const {
  TRect2D box = TRect2D::CreateNormal(StartPoint(), EndPoint());
  if (IsLine) return box;
  for (int k = 0; k < 4; ++k) {
    const double angle = k * HalfPi;
    if (std::fabs(SweepAngle) >= TwoPi || AngleToParam(angle) <= 1.0) {
      // The axis extremes exactly, without trigonometric round-off.
      static constexpr double dx[4] = {1.0, 0.0, -1.0, 0.0};
      static constexpr double dy[4] = {0.0, 1.0, 0.0, -1.0};
      box.Extend(Center + TPoint2D(dx[k], dy[k]) * Radius);
    }
  }
  return box;
}

void TArc2D::GetPoints(int N, TDynPoints2D& Pts) const {
  Pts.clear();
  if (N <= 0) return;
  Pts.reserve(static_cast<std::size_t>(N));
  Pts.push_back(StartPoint());
  for (int i = 1; i < N - 1; ++i) Pts.push_back(EvalPoint(static_cast<double>(i) / (N - 1)));
  if (N > 1) Pts.push_back(EndPoint());
}

int TArc2D::GetSamplePoints(double From, double To, double ChordTol, TDynPoints2D& Pts, TFloatDynArray& Params,
                            int MaxCount) const {
  auto pointAt = [this](double p) { return p == 0.0 ? StartPoint() : (p == 1.0 ? EndPoint() : EvalPoint(p)); };
  Pts.clear();
  Params.clear();
  const double span = std::fabs(To - From) * (IsLine ? 1.0 : std::fabs(SweepAngle));
  if (span == 0.0 || (!IsLine && Radius == 0.0) || MaxCount <= 1) {
    Pts.push_back(pointAt(From));
    Params.push_back(From);
    return 1;
  }
  int n = 2;
  if (!IsLine) {
    if (ChordTol > 0.0 && ChordTol < 2.0 * Radius) {
      const double step = 2.0 * std::acos(1.0 - ChordTol / Radius);
      const double count = std::ceil(span / step) + 1.0;
      n = count >= MaxCount ? MaxCount : std::max(2, static_cast<int>(count));
    } else if (!(ChordTol > 0.0)) {
      n = MaxCount;
    }
  }
  Pts.reserve(static_cast<std::size_t>(n));
  Params.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const double p = i == 0 ? From : (i == n - 1 ? To : From + (To - From) * i / (n - 1));
    Params.push_back(p);
    Pts.push_back(pointAt(p));
  }
  return n;
}

void TArc2D::ReverseDir() {
  if (IsLine) {
    const TPoint2D s = StartPoint();
    DegradeLine(EndPoint(), s);
    return;
  }
  StartAngle = Wrap(EndAngle());
  SetSweepAngle(-SweepAngle);
}

namespace {

// Crossings of two segments, as intersection records (an overlap by its two ends).
int SegmentCrossings(const TLine2D& A, const TLine2D& B, double Tol, TIntersectPoint2D& I1, TIntersectPoint2D& I2) {
  TPoint2D p1;
  TPoint2D p2;
  const int n = A.RelationWithSegLine(B, p1, p2, Tol, 1e-9);
  auto record = [&](const TPoint2D& p) {
    return TIntersectPoint2D(std::clamp(A.ParamOfPoint(p), 0.0, 1.0), std::clamp(B.ParamOfPoint(p), 0.0, 1.0), p);
  };
  if (n >= 1) I1 = record(p1);
  if (n == 2) I2 = record(p2);
  return n;
}

}  // namespace

int TArc2D::Intersect(const TLine2D& Line, TIntersectPoint2D& I1, TIntersectPoint2D& I2, double Tol) const {
  if (IsLine) return SegmentCrossings(AsLine(), Line, Tol, I1, I2);
  const TPoint2D d = Line.Vector();
  const double len = d.Mag();
  if (len <= Tol) {
    double param = 0.0;
    if (!IsOn(Line.P1, Tol, param)) return 0;
    I1 = TIntersectPoint2D(param, 0.0, Line.P1);
    return 1;
  }
  const TPoint2D u = d / len;
  const double t0 = (Center - Line.P1).DotMul(u);
  const TPoint2D foot = Line.P1 + u * t0;
  const double h = foot.DistanceTo(Center);
  if (h > Radius + Tol) return 0;

  double along[2];
  TPoint2D cand[2];
  int count = 0;
  const double halfChord = std::sqrt(std::max(0.0, Radius * Radius - h * h));
  if (halfChord <= 0.5 * Tol) {
    // Tangent within Tol: the one point of the circle nearest to the line.
    cand[0] = h > 0.0 ? Center + (foot - Center) * (Radius / h) : foot;
    along[0] = t0;
    count = 1;
  } else {
    cand[0] = foot - u * halfChord;
    along[0] = t0 - halfChord;
    cand[1] = foot + u * halfChord;
    along[1] = t0 + halfChord;
    count = 2;
  }

  TIntersectPoint2D found[2];
  int n = 0;
  const TPoint2D arcStart = StartPoint();
  const TPoint2D arcEnd = EndPoint();
  for (int i = 0; i < count; ++i) {
    if (along[i] < -Tol || along[i] > len + Tol) continue;
    if (!IsInArcRadiation(cand[i], Tol)) continue;
    const TPoint2D pt = SnapToEnds(cand[i], {Line.P1, Line.P2, arcStart, arcEnd}, Tol);
    if (n == 1 && found[0].Pt.Equals(pt, Tol)) continue;
    found[n++] = TIntersectPoint2D(ParamOfPoint(pt), std::clamp(Line.ParamOfPoint(pt), 0.0, 1.0), pt);
  }
  if (n >= 1) I1 = found[0];
  if (n >= 2) I2 = found[1];
  return n;
}

int TArc2D::Intersect(const TArc2D& Arc, TIntersectPoint2D& I1, TIntersectPoint2D& I2) const {
  const double tol = DefaultTol;
  if (IsLine && Arc.IsLine) return SegmentCrossings(AsLine(), Arc.AsLine(), tol, I1, I2);
  if (Arc.IsLine) return Intersect(Arc.AsLine(), I1, I2, tol);
  if (IsLine) {
    TIntersectPoint2D j1;
    TIntersectPoint2D j2;
    const int n = Arc.Intersect(AsLine(), j1, j2, tol);
    if (n >= 1) I1 = TIntersectPoint2D(j1.ParamThat, j1.ParamThis, j1.Pt);
    if (n >= 2) I2 = TIntersectPoint2D(j2.ParamThat, j2.ParamThis, j2.Pt);
    return n;
  }

  TPoint2D cand[4];
  int count = 0;
  const TPoint2D c12 = Arc.Center - Center;
  const double d = c12.Mag();
  if (d <= tol && std::fabs(Radius - Arc.Radius) <= tol) {
    // The same circle: the common points are the ends that one arc has on the other.
    double p = 0.0;
    for (const TPoint2D& e : {StartPoint(), EndPoint()}) {
      if (Arc.IsOn(e, tol, p)) cand[count++] = e;
    }
    for (const TPoint2D& e : {Arc.StartPoint(), Arc.EndPoint()}) {
      if (IsOn(e, tol, p)) cand[count++] = e;
    }
  } else {
    if (d == 0.0 || d > Radius + Arc.Radius + tol || d < std::fabs(Radius - Arc.Radius) - tol) return 0;
    const TPoint2D u = c12 / d;
    const double a = (d * d + Radius * Radius - Arc.Radius * Arc.Radius) / (2.0 * d);
    const double h2 = Radius * Radius - a * a;
    const TPoint2D base = Center + u * a;
    if (h2 <= 0.25 * tol * tol) {
      // Tangent circles: the point on this circle toward (or away from) the other centre.
      cand[count++] = Center + u * (a >= 0.0 ? Radius : -Radius);
    } else {
      const double h = std::sqrt(h2);
      cand[count++] = base + u.RotateCcw90() * h;
      cand[count++] = base - u.RotateCcw90() * h;
    }
    int kept = 0;
    for (int i = 0; i < count; ++i) {
      if (IsInArcRadiation(cand[i], tol) && Arc.IsInArcRadiation(cand[i], tol)) cand[kept++] = cand[i];
    }
    count = kept;
  }

  TIntersectPoint2D found[2];
  int n = 0;
  const TPoint2D ends[4] = {StartPoint(), EndPoint(), Arc.StartPoint(), Arc.EndPoint()};
  for (int i = 0; i < count && n < 2; ++i) {
    const TPoint2D pt = SnapToEnds(cand[i], {ends[0], ends[1], ends[2], ends[3]}, tol);
    if (n == 1 && found[0].Pt.Equals(pt, tol)) continue;
    found[n++] = TIntersectPoint2D(ParamOfPoint(pt), Arc.ParamOfPoint(pt), pt);
  }
  if (n >= 1) I1 = found[0];
  if (n >= 2) I2 = found[1];
  return n;
}

int TArc2D::CrossWithArc(const TArc2D& Arc, TPoint2D& Pt1, TPoint2D& Pt2, TArc2D& Arc1, TArc2D& Arc2) const {
  const double tol = DefaultTol;
  const bool sameCircle =
      !IsLine && !Arc.IsLine && Center.DistanceTo(Arc.Center) <= tol && std::fabs(Radius - Arc.Radius) <= tol;
  if (!sameCircle) {
    TIntersectPoint2D i1;
    TIntersectPoint2D i2;
    const int n = Intersect(Arc, i1, i2);
    if (n >= 1) Pt1 = i1.Pt;
    if (n >= 2) Pt2 = i2.Pt;
    return n;
  }

  // Both arcs as counter-clockwise angular ranges [a0, a0 + len]; B relative to A's start.
  const double lenA = std::fabs(SweepAngle);
  const double lenB = std::fabs(Arc.SweepAngle);
  const double a0 = SweepAngle >= 0.0 ? StartAngle : StartAngle + SweepAngle;
  const double b0 = Arc.SweepAngle >= 0.0 ? Arc.StartAngle : Arc.StartAngle + Arc.SweepAngle;
  const double rel = Wrap(b0 - a0);
  const double angTol = Radius > 0.0 ? tol / Radius : TwoPi;

  struct TPiece {
    double Lo, Hi;
  };
  TPiece pieces[2];
  int np = 0;
  if (lenA >= TwoPi - angTol) {
    pieces[np++] = {rel, rel + std::min(lenB, TwoPi)};
  } else if (lenB >= TwoPi - angTol) {
    pieces[np++] = {0.0, lenA};
  } else {
    for (const double shift : {0.0, -TwoPi}) {
      const double lo = std::max(0.0, rel + shift);
      const double hi = std::min(lenA, rel + shift + lenB);
      if (hi - lo >= -angTol) pieces[np++] = {lo, std::max(lo, hi)};
    }
    // Along A's counter-clockwise range, the earlier piece first.
    if (np == 2 && pieces[1].Lo < pieces[0].Lo) std::swap(pieces[0], pieces[1]);
  }
  // This arc's own sense: a clockwise arc meets the pieces in the reverse order.
  if (SweepAngle < 0.0 && np == 2) std::swap(pieces[0], pieces[1]);

  int points = 0;
  int arcs = 0;
  for (int i = 0; i < np; ++i) {
    const TPiece& p = pieces[i];
    if ((p.Hi - p.Lo) <= angTol) {
      const TPoint2D pt = SnapToEnds(PointAt(a0 + 0.5 * (p.Lo + p.Hi)),
                                     {StartPoint(), EndPoint(), Arc.StartPoint(), Arc.EndPoint()}, tol);
      (points == 0 ? Pt1 : Pt2) = pt;
      ++points;
      continue;
    }
    TArc2D piece = SweepAngle >= 0.0 ? TArc2D(Center, Radius, Wrap(a0 + p.Lo), p.Hi - p.Lo)
                                     : TArc2D(Center, Radius, Wrap(a0 + p.Hi), -(p.Hi - p.Lo));
    (arcs == 0 ? Arc1 : Arc2) = piece;
    ++arcs;
  }
  return points | (arcs << 2);
}

}  // namespace orvane
