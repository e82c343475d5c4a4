#include "orvane/curves/GeLine2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

TGeLine2D::TGeLine2D(const TPoint2D& PntStart, const TPoint2D& PntEnd) {
  internal::CheckFinitePoint<EGeometry>(PntStart, "TGeLine2D.Create", "PntStart");
  internal::CheckFinitePoint<EGeometry>(PntEnd, "TGeLine2D.Create", "PntEnd");
  FLineStart = PntStart;
  FLineVec = PntEnd - PntStart;
}

std::string TGeLine2D::ClassName() const { return "TGeLine2D"; }

std::unique_ptr<TGeObject> TGeLine2D::CreateEmpty() const { return std::make_unique<TGeLine2D>(); }

void TGeLine2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  if (auto* line = dynamic_cast<TGeLine2D*>(&Dest)) {
    line->FLineStart = FLineStart;
    line->FLineVec = FLineVec;
  }
}

void TGeLine2D::SetLineStart(const TPoint2D& P) {
  internal::CheckFinitePoint<EGeometry>(P, "TGeLine2D.SetLineStart", "P");
  FLineStart = P;
}

void TGeLine2D::SetLineEnd(const TPoint2D& P) {
  internal::CheckFinitePoint<EGeometry>(P, "TGeLine2D.SetLineEnd", "P");
  FLineVec = P - FLineStart;
}

TGeInterval TGeLine2D::GetInterval() const { return {0.0, 1.0, 1e-6}; }

double TGeLine2D::LengthAt(double Param) const {
  if (Param >= GetEndParam()) return GetCurveLength();
  if (Param <= GetStartParam()) return 0.0;
  return FLineStart.DistanceTo(EvalPoint(Param));
}

TRect2D TGeLine2D::BoundBlock() const { return TRect2D::CreateNormalize(FLineStart, GetLineEnd()); }

TRect2D TGeLine2D::BoundBlockOf(const TGeInterval& Intv) const {
  return TRect2D::CreateNormalize(EvalPoint(Intv.Lower), EvalPoint(Intv.Upper));
}

TPoint2D TGeLine2D::EvalPoint(double Param, TPoint2D& Deriv) const {
  Deriv = FLineVec;
  return EvalPoint(Param);
}

TPoint2D TGeLine2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/, double& Param) const {
  const double m = FLineVec.Mag();
  if (m < 1e-6) {
    Param = 0.0;
    return FLineStart;
  }
  const double t = FLineVec.DotMul(Pnt - FLineStart) / (m * m);
  if (t <= 0.0) {
    Param = 0.0;
    return FLineStart;
  }
  if (t >= 1.0) {
    Param = 1.0;
    return GetLineEnd();
  }
  Param = t;
  return EvalPoint(t);
}

int TGeLine2D::GetSamplePointsByChord(double /*EpsChord*/, TDynPoints2D& Points, TFloatDynArray& Params) const {
  Points = {FLineStart, GetLineEnd()};
  Params = {0.0, 1.0};
  return 2;
}

int TGeLine2D::GetSamplePointsByChord(double paramFrom, double paramTo, double /*epsChord*/, TDynPoints2D& points,
                                      TFloatDynArray& params) const {
  points = {EvalPoint(paramFrom), EvalPoint(paramTo)};
  params = {paramFrom, paramTo};
  return 2;
}

bool TGeLine2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  const double eps = Tol.PointTol;
  const double m2 = FLineVec.MagSqr();
  if (m2 <= 1e-12) {
    Param = GetStartParam();
    return Tol.PointEquals(Pnt, FLineStart);
  }
  const double t = (Pnt - FLineStart).DotMul(FLineVec) / m2;
  Param = t;
  // Beyond an end by more than eps along the line: no distance needs computing.
  if (t < 0.0 && eps * eps <= t * t * m2) return false;
  if (t > 1.0 && eps * eps <= (t - 1.0) * (t - 1.0) * m2) return false;
  return Tol.PointEquals(Pnt, EvalPoint(t));
}

bool TGeLine2D::Contains(const TGeCurve2D& ACurve) const {
  const auto* line = dynamic_cast<const TGeLine2D*>(&ACurve);
  if (line == nullptr) return false;
  return IsOn(line->GetStartPoint(), DefTol) && IsOn(line->GetEndPoint(), DefTol);
}

bool TGeLine2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  const auto* line = dynamic_cast<const TGeLine2D*>(&ACurve);
  if (line == nullptr) return false;
  const bool same = DefTol.PointEquals(line->FLineStart, FLineStart) && DefTol.PointEquals(line->FLineVec, FLineVec);
  if (same || CheckDir) return same;
  return DefTol.PointEquals(line->GetLineEnd(), FLineStart) && DefTol.PointEquals(line->FLineVec, -FLineVec);
}

double TGeLine2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& /*Tol*/) const {
  const double m = FLineVec.Mag();
  double t = m > 1e-6 ? ParamStart + Len / m : GetEndParam();
  if (fSmall(t, GetStartParam(), 1e-6)) {
    t = GetStartParam();
  } else if (fGreat(t, GetEndParam(), 1e-6)) {
    t = GetEndParam();
  }
  return t;
}

double TGeLine2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/) const {
  // The same threshold as IsOn and GetClosedPointTo: a short segment still has a direction
  // to project on, however small its length.
  const double m2 = FLineVec.MagSqr();
  return m2 > 1e-12 ? (Pnt - FLineStart).DotMul(FLineVec) / m2 : 0.0;
}

std::unique_ptr<TGeCurve2D> TGeLine2D::SubCurve(double PrmFrom, double PrmTo) const {
  auto line = std::make_unique<TGeLine2D>();
  line->FLineStart = EvalPoint(PrmFrom);
  line->FLineVec = EvalPoint(PrmTo) - line->FLineStart;
  return line;
}

void TGeLine2D::ReverseDir() {
  FLineStart = GetLineEnd();
  FLineVec = -FLineVec;
}

void TGeLine2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGeLine2D.TransformBy");
  FLineStart = Mtx.Transform(FLineStart);
  FLineVec = Mtx.TransformVector(FLineVec);
}

std::string TGeLine2D::ToString() const { return Format(SGeLineFmt, FLineStart.ToString(), FLineVec.ToString()); }

TIntersectionType TGeLine2D::Intersect(const TGeLine2D& ALine, TList<TIntersect2D>& Inters,
                                       const TGeTolerance& Tol) const {
  // Everything is measured on the raw vectors, without a root: with v1, v2 the two vectors,
  // the sine of their angle is (v1 x v2) / (|v1| |v2|), and the crossing parameters are the
  // cross products with the start offset over v1 x v2.
  const double eps = Tol.VectorTol;
  const TPoint2D v1 = FLineVec;
  const TPoint2D v2 = ALine.FLineVec;
  const double m1 = v1.MagSqr();
  const double m2 = v2.MagSqr();
  if (eps > 0.0 && (eps * eps > m1 || eps * eps > m2)) return TIntersectionType::itNone;
  const double cr = v1.CrossMul(v2);
  const TPoint2D e = ALine.FLineStart - FLineStart;
  auto add = [&](double t1, double t2) {
    Inters.Add(TIntersect2D(TPointOnCurve2D(this, t1), TPointOnCurve2D(&ALine, t2)));
  };

  if (eps * eps * m1 * m2 < cr * cr) {
    // The parameter range [0, 1] compares within 1e-6 at both ends.
    constexpr double tol = 1e-6;
    // Most pairs miss: tell them by the numerators against the signed denominator, before
    // any division.
    const double n1 = e.CrossMul(v2);
    const double n2 = e.CrossMul(v1);
    const double lo = std::min(-tol * cr, (1.0 + tol) * cr);
    const double hi = std::max(-tol * cr, (1.0 + tol) * cr);
    // One test of the four, without a branch per comparison that random input would mispredict.
    const bool inside = static_cast<int>(n1 >= lo) & static_cast<int>(n1 <= hi) & static_cast<int>(n2 >= lo) &
                        static_cast<int>(n2 <= hi);
    if (!inside) return TIntersectionType::itNone;
    const double t1 = n1 / cr;
    const double t2 = n2 / cr;
    if (!(t1 >= -tol && t1 <= 1.0 + tol && t2 >= -tol && t2 <= 1.0 + tol)) return TIntersectionType::itNone;
    const bool end1 = std::fabs(t1) <= tol || std::fabs(t1 - 1.0) <= tol;
    const bool end2 = std::fabs(t2) <= tol || std::fabs(t2 - 1.0) <= tol;
    add(t1, t2);
    if (end1 && end2) return TIntersectionType::itEndEnd;
    if (end1) return TIntersectionType::itThisEnd;
    if (end2) return TIntersectionType::itOtherEnd;
    return TIntersectionType::itInner;
  }

  return IntersectParallel(ALine, Inters, Tol);
}

// Parallel: only collinear segments meet, in any direction of the plane, and then along the
// extent that both cover, measured on this line's axis. Kept out of line, so that the
// crossing test stays small.
TIntersectionType TGeLine2D::IntersectParallel(const TGeLine2D& ALine, TList<TIntersect2D>& Inters,
                                               const TGeTolerance& Tol) const {
  const double eps = Tol.VectorTol;
  const TPoint2D v1 = FLineVec;
  const TPoint2D v2 = ALine.FLineVec;
  const TPoint2D e = ALine.FLineStart - FLineStart;
  auto add = [&](double t1, double t2) {
    Inters.Add(TIntersect2D(TPointOnCurve2D(this, t1), TPointOnCurve2D(&ALine, t2)));
  };
  const double len1 = v1.Mag();
  const double len2 = v2.Mag();
  // A point has no direction to run along (reached with a vector tolerance of 0).
  if (len1 == 0.0 || len2 == 0.0) return TIntersectionType::itNone;
  const TPoint2D d1 = v1 / len1;
  const TPoint2D d2 = v2 / len2;
  const double e2 = e.MagSqr();
  const double off = e.CrossMul(d2);
  if (e2 > eps * eps && off * off > eps * eps * e2) return TIntersectionType::itNone;
  const TGeInterval i1(0.0, len1, 1e-6);
  const double s = e.DotMul(d1);
  TGeInterval i2(0.0, len2, 1e-6);
  const bool opposite = d1.DotMul(d2) < 0.0;
  if (opposite) i2 = -i2;
  i2 = i2 + s;
  if (i1.IsContionousUpper(i2)) {
    add(1.0, opposite ? 1.0 : 0.0);
    return TIntersectionType::itEndEnd;
  }
  if (i2.IsContionousUpper(i1)) {
    add(0.0, opposite ? 0.0 : 1.0);
    return TIntersectionType::itEndEnd;
  }
  TGeInterval r;
  if (!i1.IntersectWith(i2, r)) return TIntersectionType::itNone;
  // On ALine: shift back to its start and, for the opposite direction, turn around.
  TGeInterval on2 = r + (-s);
  if (opposite) on2 = -on2;
  const double first2 = opposite ? on2.Lower : on2.Upper;
  const double second2 = opposite ? on2.Upper : on2.Lower;
  add(r.Upper / len1, first2 / len2);
  add(r.Lower / len1, second2 / len2);
  return TIntersectionType::itOverlap;
}

TIntersectionType TGeLine2D::IntersectWithSegLine(const TGeLine2D& ALine, TList<TIntersect2D>& Inters,
                                                  const TGeTolerance& Tol) const {
  const TLine2D self = GetLine();
  const TLine2D other = ALine.GetLine();
  TPoint2D p1;
  TPoint2D p2;
  const int relation = self.RelationWithSegLine(other, p1, p2, Tol.PointTol, 1e-9);
  auto add = [&](const TPoint2D& p) {
    Inters.Add(
        TIntersect2D(TPointOnCurve2D(this, self.ParamOfPoint(p)), TPointOnCurve2D(&ALine, other.ParamOfPoint(p))));
  };
  if (relation == 1) {
    add(p1);
    return TIntersectionType::itInner;
  }
  if (relation == 2) {
    add(p1);
    add(p2);
    return TIntersectionType::itOverlap;
  }
  return TIntersectionType::itNone;
}

// IntersectCurve, the crossing with any kind of curve, stands with the other kinds in
// CurveIntersect.cpp.

int TGeLine2D::IntersectArc(const TGeCircularArc2D& AArc, TList<TIntersect2D>& Inters,
                            const TGeTolerance& /*Tol*/) const {
  TIntersectPoint2D i1;
  TIntersectPoint2D i2;
  const int n = AArc.GetArc().Intersect(GetLine(), i1, i2, 1e-6);
  // The value arc reports its own parameter first; here this line's comes first.
  if (n >= 1) Inters.Add(TIntersect2D(TPointOnCurve2D(this, i1.ParamThat), TPointOnCurve2D(&AArc, i1.ParamThis)));
  if (n >= 2) Inters.Add(TIntersect2D(TPointOnCurve2D(this, i2.ParamThat), TPointOnCurve2D(&AArc, i2.ParamThis)));
  return n;
}

// Filing -------------------------------------------------------------------------------------

namespace {

// A stored line must be finite to the end point: the constructors could not have made it.
bool FiniteLine(const TPoint2D& Start, const TPoint2D& Vec) {
  return internal::IsFinite(Start) && internal::IsFinite(Vec) && internal::IsFinite(Start + Vec);
}

}  // namespace

void TGeLine2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGeLine2D.LoadFromXmlNode";
  TGeCurve2D::LoadFromXmlNode(ANode);
  const TPoint2D start = TXmlNodeHelper::ReadPoint2D(ANode, "LineStart", Where);
  const TPoint2D vec = TXmlNodeHelper::ReadPoint2D(ANode, "LineVector", Where);
  if (!FiniteLine(start, vec)) TXmlNodeHelper::Fail(ANode, Where, "the line's end point is not finite");
  FLineStart = start;
  FLineVec = vec;
}

void TGeLine2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGeCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WritePoint(ANode, "LineStart", FLineStart);
  TXmlNodeHelper::WritePoint(ANode, "LineVector", FLineVec);
}

void TGeLine2D::LoadGeoData(IFbsReader& AReader) {
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  const TPoint2D start = AReader.ReadPoint();
  const TPoint2D vec = AReader.ReadPoint();
  if (!FiniteLine(start, vec)) {
    throw EInOutError("[Error] TGeLine2D.LoadGeoData: the line from %s along %s is not finite (%s)", start.ToString(),
                      vec.ToString(), AReader.GetPosition());
  }
  FLineStart = start;
  FLineVec = vec;
}

void TGeLine2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WritePoint(FLineStart);
  AWriter.WritePoint(FLineVec);
}

}  // namespace orvane
