#include "orvane/curves/GeCircularArc2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Triangle2D.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane {

namespace {

// Two lengths of the same circle: nearer than 1e-6, or than 1e-5 when that is below 1e-8 of
// the radius (a large circle read back from a file keeps its relative precision).
bool NearLength(double A, double B, double Radius) {
  const double d = std::fabs(A - B);
  return d < 1e-6 || (d < 1e-5 && d / Radius < 1e-8);
}

// The number of equal chords over the angle Span of a circle of radius Radius that keeps
// every chord within Eps of its arc. A chord over the angle a lies 2 * Radius * sin^2(a / 4)
// from the arc at most; the arcsine form keeps its precision for any ratio Eps / Radius.
long long ChordCount(double Radius, double Span, double Eps, const char* Where) {
  if (std::isnan(Eps)) throw EParamError("[Error] %s: EpsChord is not a number", Where);
  if (!std::isfinite(Span)) throw EParamError("[Error] %s: the parameter range is not finite", Where);
  const double ratio = std::fabs(Eps) / (2.0 * Radius);
  const double maxAngle = ratio >= 1.0 ? TwoPi : std::min(TwoPi, 4.0 * std::asin(std::sqrt(ratio)));
  const double count = std::max(1.0, std::ceil(Span / maxAngle));
  if (!(count < static_cast<double>(TGeCircularArc2D::MaxChordSamples))) {
    throw EParamError("[Error] %s: EpsChord %s needs more than %d points on a radius of %s", Where, FloatToStr(Eps),
                      TGeCircularArc2D::MaxChordSamples, FloatToStr(Radius));
  }
  return static_cast<long long>(count);
}

}  // namespace

TArc2D TGeCircularArc2D::TrueArc(const TArc2D& AArc, const char* Where) {
  if (AArc.IsLine) throw ECircularArcParam("[Error] %s: the points give a straight piece, which is a TGeLine2D", Where);
  return AArc;
}

TGeCircularArc2D::TGeCircularArc2D(const TArc2D& AArc) : FArc(AArc) {}

TGeCircularArc2D::TGeCircularArc2D(const TPoint2D& ACenter, double ARadius, double AngleStart, double SweepAngle)
    : FArc(ACenter, ARadius, AngleStart, SweepAngle) {}

TGeCircularArc2D::TGeCircularArc2D(const TPoint2D& ACenter, const TPoint2D& PntFrom, const TPoint2D& PntTo,
                                   bool Clockwise)
    : FArc(TArc2D::CreateCenter(ACenter, PntFrom, PntTo, !Clockwise)) {}

TGeCircularArc2D::TGeCircularArc2D(const TPoint2D& PntFrom, const TPoint2D& PntTo, double ARadius, bool Clockwise)
    : FArc(TArc2D::CreateRadius(PntFrom, PntTo, ARadius, Clockwise)) {}

TGeCircularArc2D::TGeCircularArc2D(const TPoint2D& PntFrom, const TPoint2D& PntTo, double SweepAngle)
    : FArc(TArc2D::CreateAngle(PntFrom, PntTo, SweepAngle)) {}

TGeCircularArc2D::TGeCircularArc2D(const TPoint2D& PntFrom, double Bulge, const TPoint2D& PntTo)
    : FArc(TrueArc(TArc2D::CreateBulge(PntFrom, PntTo, Bulge), "TGeCircularArc2D.Create")) {}

std::unique_ptr<TGeCircularArc2D> TGeCircularArc2D::CreateCross(const TPoint2D& P1, const TPoint2D& P2,
                                                                const TPoint2D& P3) {
  return std::unique_ptr<TGeCircularArc2D>(
      new TGeCircularArc2D(TrueArc(TArc2D::CreateCross(P1, P2, P3), "TGeCircularArc2D.CreateCross")));
}

std::string TGeCircularArc2D::ClassName() const { return "TGeCircularArc2D"; }

std::unique_ptr<TGeObject> TGeCircularArc2D::CreateEmpty() const { return std::make_unique<TGeCircularArc2D>(); }

void TGeCircularArc2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  if (auto* arc = dynamic_cast<TGeCircularArc2D*>(&Dest)) arc->FArc = FArc;
}

// Each setter builds the whole value first, whose constructor checks it, so that a refused
// value leaves the arc untouched.
void TGeCircularArc2D::SetCenter(const TPoint2D& Value) {
  FArc = TArc2D(Value, FArc.Radius, FArc.StartAngle, FArc.SweepAngle);
}

void TGeCircularArc2D::SetRadius(double Value) { FArc = TArc2D(FArc.Center, Value, FArc.StartAngle, FArc.SweepAngle); }

void TGeCircularArc2D::SetStartAngle(double Value) { FArc = TArc2D(FArc.Center, FArc.Radius, Value, FArc.SweepAngle); }

void TGeCircularArc2D::SetEndAngle(double Value) {
  FArc = TArc2D(FArc.Center, FArc.Radius, FArc.StartAngle, Value - FArc.StartAngle);
}

void TGeCircularArc2D::SetSweepAngle(double Value) { FArc = TArc2D(FArc.Center, FArc.Radius, FArc.StartAngle, Value); }

TGeInterval TGeCircularArc2D::GetInterval() const { return {0.0, 1.0, 1e-6}; }

TRect2D TGeCircularArc2D::BoundBlock() const { return BoundBlockOf(GetInterval()); }

TRect2D TGeCircularArc2D::BoundBlockOf(const TGeInterval& Intv) const {
  const double lo = std::min(Intv.Lower, Intv.Upper);
  const double hi = std::max(Intv.Lower, Intv.Upper);
  const TArc2D part(FArc.Center, FArc.Radius, FArc.ParamToAngle(lo), FArc.SweepAngle * (hi - lo));
  // A part without sweep is its one point (the value's box would see every axis extreme in
  // an empty range).
  if (part.SweepAngle == 0.0) return TRect2D(part.StartPoint());
  return part.GetBoundBox();
}

TPoint2D TGeCircularArc2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/, double& Param) const {
  return FArc.GetClosedPointTo(Pnt, Param);
}

int TGeCircularArc2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  return GetSamplePointsByChord(0.0, 1.0, EpsChord, Points, Params);
}

int TGeCircularArc2D::GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                             TFloatDynArray& params) const {
  const double span = std::fabs(paramTo - paramFrom) * std::fabs(FArc.SweepAngle);
  if (FArc.Radius < 1e-6 || fEqual(FArc.SweepAngle, 0.0, 1e-6) || span == 0.0) {
    if (std::isnan(epsChord)) {
      throw EParamError("[Error] TGeCircularArc2D.GetSamplePointsByChord: EpsChord is not a number");
    }
    points = {EvalPoint(paramFrom)};
    params = {paramFrom};
    return 1;
  }
  const long long n = ChordCount(FArc.Radius, span, epsChord, "TGeCircularArc2D.GetSamplePointsByChord");
  const auto count = static_cast<std::size_t>(n + 1);
  points.resize(count);
  params.resize(count);
  const double range = paramTo - paramFrom;
  const double paramStep = range / static_cast<double>(n);
  const double startAngle = FArc.ParamToAngle(paramFrom);
  const double angleStep = FArc.SweepAngle * paramStep;
  const double stepCos = std::cos(angleStep);
  const double stepSin = std::sin(angleStep);
  const TPoint2D c = FArc.Center;
  const double r = FArc.Radius;
  // The points turn by one rotation each, and the direction is taken afresh from its angle
  // every so many steps, before the rounding that each turn adds (about 4e-16 of the radius)
  // could reach a millionth of the asked error: every 256 steps at ordinary errors, at each
  // point for an error near the rounding of the coordinates themselves.
  const double allowed = 1e-6 * std::fabs(epsChord) / (4e-16 * r);
  const std::size_t anchorEvery = allowed >= 256.0 ? 256 : (allowed >= 1.0 ? static_cast<std::size_t>(allowed) : 1);
  double ux = 0.0;
  double uy = 0.0;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    const double step = static_cast<double>(i);
    if (i % anchorEvery == 0) {
      const double a = startAngle + angleStep * step;
      ux = std::cos(a);
      uy = std::sin(a);
    }
    params[i] = paramFrom + paramStep * step;
    points[i] = TPoint2D(c.X + r * ux, c.Y + r * uy);
    const double nx = ux * stepCos - uy * stepSin;
    uy = ux * stepSin + uy * stepCos;
    ux = nx;
  }
  // The last sample is paramTo itself, not the sum of the steps.
  params[count - 1] = paramTo;
  points[count - 1] = EvalPoint(paramTo);
  return static_cast<int>(count);
}

bool TGeCircularArc2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  return FArc.IsOn(Pnt, Tol.PointTol, Param);
}

bool TGeCircularArc2D::Contains(const TGeCurve2D& ACurve) const {
  const auto* arc = dynamic_cast<const TGeCircularArc2D*>(&ACurve);
  if (arc == nullptr) return false;
  if (!DefTol.PointEquals(arc->GetCenter(), GetCenter()) || !fEqual(arc->GetRadius(), GetRadius(), 1e-6)) return false;
  return IsOn(arc->GetStartPoint(), DefTol) && IsOn(arc->GetEndPoint(), DefTol) && IsOn(arc->EvalPoint(0.5), DefTol);
}

bool TGeCircularArc2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  // A spline that is an arc compares as that arc; every other kind of curve differs from an
  // arc.
  const auto* arc = dynamic_cast<const TGeCircularArc2D*>(&ACurve);
  std::unique_ptr<TGeCircularArc2D> recognised;
  if (const auto* spline = dynamic_cast<const TGeSpline2D*>(&ACurve); spline != nullptr && spline->IsArc(recognised))
    arc = recognised.get();
  if (arc == nullptr) return false;
  const double r = arc->GetRadius();
  if (!NearLength(r, GetRadius(), r) || !NearLength(arc->GetCenter().DistanceTo(GetCenter()), 0.0, r)) return false;
  if (AngleEqual(arc->GetStartAngle(), GetStartAngle()) && fEqual(arc->GetSweepAngle(), GetSweepAngle(), 1e-6)) {
    return true;
  }
  if (CheckDir) return false;
  if (AngleEqual(arc->GetEndAngle(), GetStartAngle()) && fEqual(arc->GetSweepAngle(), -GetSweepAngle(), 1e-6)) {
    return true;
  }
  return arc->IsFullCircle() && IsFullCircle();
}

double TGeCircularArc2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& /*Tol*/) const {
  if (fEqual(FArc.SweepAngle, 0.0, 1e-6) || FArc.Radius < 1e-6) return GetEndParam();
  return ParamStart + Len / FArc.Radius / std::fabs(FArc.SweepAngle);
}

double TGeCircularArc2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/) const {
  return FArc.ParamOfPoint(Pnt);
}

std::unique_ptr<TGeCurve2D> TGeCircularArc2D::SubCurve(double PrmFrom, double PrmTo) const {
  return std::unique_ptr<TGeCurve2D>(new TGeCircularArc2D(
      TArc2D(FArc.Center, FArc.Radius, FArc.ParamToAngle(PrmFrom), FArc.SweepAngle * (PrmTo - PrmFrom))));
}

bool TGeCircularArc2D::GetIsClosedTol(const TGeTolerance& ATol) const {
  return ATol.PointEquals(GetStartPoint(), GetEndPoint()) && std::fabs(FArc.SweepAngle) > Pi;
}

void TGeCircularArc2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGeCircularArc2D.TransformBy");
  const TPoint2D s = GetStartPoint();
  const TPoint2D a = FArc.PointAt(FArc.StartAngle + HalfPi);
  const TPoint2D c = FArc.Center;
  const bool wasClockwise = TTriangle2D(s, a, c).IsClockWise();
  const TPoint2D s2 = Mtx.Transform(s);
  const TPoint2D a2 = Mtx.Transform(a);
  const TPoint2D c2 = Mtx.Transform(c);
  const double sweep = TTriangle2D(s2, a2, c2).IsClockWise() != wasClockwise ? -FArc.SweepAngle : FArc.SweepAngle;
  FArc = TArc2D(c2, s2.DistanceTo(c2), (s2 - c2).Angle(), sweep);
}

std::string TGeCircularArc2D::ToString() const {
  return (GetIsClockwise() ? SGeCW : SGeCCW) +
         Format(SGeCirArc2DFmt, FArc.Center.X, FArc.Center.Y, FArc.Radius, FArc.StartAngle, FArc.SweepAngle);
}

bool TGeCircularArc2D::IsFullCircle() const { return fEqual(std::fabs(FArc.SweepAngle), TwoPi, 1e-6); }

void TGeCircularArc2D::MakeFullCircle() { FArc.SetSweepAngle(FArc.SweepAngle < 0.0 ? -TwoPi : TwoPi); }

void TGeCircularArc2D::DegradeLine(const TPoint2D& StartPoint, const TPoint2D& EndPoint) {
  throw ECircularArcParam("[Error] TGeCircularArc2D.DegradeLine: the straight piece from %s to %s is a TGeLine2D",
                          StartPoint.ToString(), EndPoint.ToString());
}

int TGeCircularArc2D::IntersectCurve(const TGeLine2D& ACurve, TList<TIntersect2D>& Inters,
                                     const TGeTolerance& /*Tol*/) const {
  TIntersectPoint2D i1;
  TIntersectPoint2D i2;
  const int n = FArc.Intersect(ACurve.GetLine(), i1, i2, 1e-6);
  if (n >= 1) Inters.Add(TIntersect2D(i1, this, &ACurve));
  if (n >= 2) Inters.Add(TIntersect2D(i2, this, &ACurve));
  return n;
}

int TGeCircularArc2D::IntersectCurve(const TGeCircularArc2D& ACurve, TList<TIntersect2D>& Inters,
                                     const TGeTolerance& /*Tol*/) const {
  TIntersectPoint2D i1;
  TIntersectPoint2D i2;
  const int n = FArc.Intersect(ACurve.FArc, i1, i2);
  if (n >= 1) Inters.Add(TIntersect2D(i1, this, &ACurve));
  if (n >= 2) Inters.Add(TIntersect2D(i2, this, &ACurve));
  return n;
}

// Filing -------------------------------------------------------------------------------------

namespace {

// What a stored arc must satisfy to be an arc object: the constructors refuse the rest. The
// line flag stays in the format for its readers elsewhere, but a straight piece is a
// TGeLine2D here, so an arc that claims to be one is refused rather than read as a circle
// whose radius is an end point's X. Empty when the values are sound, else what is wrong.
const char* ArcFault(const TPoint2D& Center, double Radius, double StartAngle, double Sweep, bool IsLine) {
  if (IsLine) return "the arc is marked as a straight piece";
  if (!internal::IsFinite(Center) || !std::isfinite(Radius) || !std::isfinite(StartAngle) || !std::isfinite(Sweep)) {
    return "a value of the arc is not finite";
  }
  if (Radius < 0.0) return "the radius is negative";
  return nullptr;
}

}  // namespace

void TGeCircularArc2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGeCircularArc2D.LoadFromXmlNode";
  TGeCurve2D::LoadFromXmlNode(ANode);
  const TPoint2D center = TXmlNodeHelper::ReadPoint2D(ANode, "Center", Where);
  const double radius = TXmlNodeHelper::ReadDoubleValue(ANode, "Radius", Where);
  const double start = TXmlNodeHelper::ReadDoubleValue(ANode, "StartAngle", Where);
  const double sweep = TXmlNodeHelper::ReadDoubleValue(ANode, "SweepAngle", Where);
  const bool isLine = TXmlNodeHelper::ReadBoolValue(ANode, "IsLine", Where);
  if (const char* fault = ArcFault(center, radius, start, sweep, isLine)) TXmlNodeHelper::Fail(ANode, Where, fault);
  FArc = TArc2D(center, radius, start, sweep);
}

void TGeCircularArc2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGeCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WritePoint(ANode, "Center", FArc.Center);
  TXmlNodeHelper::WriteValue(ANode, "Radius", FArc.Radius);
  TXmlNodeHelper::WriteValue(ANode, "StartAngle", FArc.StartAngle);
  TXmlNodeHelper::WriteValue(ANode, "SweepAngle", FArc.GetSweepAngle());
  TXmlNodeHelper::WriteValue(ANode, "IsLine", FArc.IsLine);
}

void TGeCircularArc2D::LoadGeoData(IFbsReader& AReader) {
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  const TPoint2D center = AReader.ReadPoint();
  const double radius = AReader.ReadDouble();
  const double start = AReader.ReadDouble();
  const double sweep = AReader.ReadDouble();
  const bool isLine = AReader.ReadBoolean();
  if (const char* fault = ArcFault(center, radius, start, sweep, isLine)) {
    throw EInOutError("[Error] TGeCircularArc2D.LoadGeoData: %s (%s)", fault, AReader.GetPosition());
  }
  FArc = TArc2D(center, radius, start, sweep);
}

void TGeCircularArc2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WritePoint(FArc.Center);
  AWriter.WriteDouble(FArc.Radius);
  AWriter.WriteDouble(FArc.StartAngle);
  AWriter.WriteDouble(FArc.GetSweepAngle());
  AWriter.WriteBoolean(FArc.IsLine);
}

}  // namespace orvane
