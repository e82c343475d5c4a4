#include "orvane/curves/GeBezier2D.h"

#include <pugixml.hpp>

#include <algorithm>

#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

namespace {

void CheckFiniteBezier(const TBezierSegment2D& Bez, const char* Where) {
  internal::CheckFinitePoint<EGeometry>(Bez.P0, Where, "P0");
  internal::CheckFinitePoint<EGeometry>(Bez.P1, Where, "P1");
  internal::CheckFinitePoint<EGeometry>(Bez.P2, Where, "P2");
  internal::CheckFinitePoint<EGeometry>(Bez.P3, Where, "P3");
}

}  // namespace

TGeBezier2D::TGeBezier2D(const TPoint2D& P0, const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3)
    : TGeBezier2D(TBezierSegment2D(P0, P1, P2, P3)) {}

TGeBezier2D::TGeBezier2D(const TBezierSegment2D& Bez) : FBezierSegment(Bez) {
  CheckFiniteBezier(Bez, "TGeBezier2D.Create");
}

std::unique_ptr<TGeBezier2D> TGeBezier2D::CreateLine(const TLine2D& Line) {
  return std::make_unique<TGeBezier2D>(TBezierSegment2D(Line.P1, Line.P2));
}

std::string TGeBezier2D::ClassName() const { return "TGeBezier2D"; }

std::unique_ptr<TGeObject> TGeBezier2D::CreateEmpty() const { return std::make_unique<TGeBezier2D>(); }

void TGeBezier2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  if (auto* bez = dynamic_cast<TGeBezier2D*>(&Dest)) bez->FBezierSegment = FBezierSegment;
}

TGeInterval TGeBezier2D::GetInterval() const { return {0.0, 1.0, 1e-6}; }

double TGeBezier2D::LengthAt(double Param) const {
  if (!(Param > 0.0)) return 0.0;
  if (Param >= 1.0) return GetCurveLength();
  TBezierSegment2D left;
  TBezierSegment2D right;
  if (!FBezierSegment.Split(Param, left, right)) return 0.0;
  return left.CurveLength(14);
}

TPoint2D TGeBezier2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  return FBezierSegment.GetClosedPointTo(Pnt, Tol, Param);
}

int TGeBezier2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  return FBezierSegment.GetSamplePoints(EpsChord, Points, Params, 1000);
}

int TGeBezier2D::GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                        TFloatDynArray& params) const {
  return FBezierSegment.GetSamplePoints(paramFrom, paramTo, epsChord, points, params, 1000);
}

bool TGeBezier2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  return FBezierSegment.IsOn(Pnt, Tol, Param);
}

bool TGeBezier2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  if (ACurve.ClassName() != ClassName()) return false;
  const auto* other = dynamic_cast<const TGeBezier2D*>(&ACurve);
  if (other == nullptr) return false;
  const TBezierSegment2D& a = other->FBezierSegment;
  const TBezierSegment2D& b = FBezierSegment;
  const bool same = DefTol.PointEquals(a.P0, b.P0) && DefTol.PointEquals(a.P1, b.P1) &&
                    DefTol.PointEquals(a.P2, b.P2) && DefTol.PointEquals(a.P3, b.P3);
  if (same || CheckDir) return same;
  return DefTol.PointEquals(a.P0, b.P3) && DefTol.PointEquals(a.P1, b.P2) && DefTol.PointEquals(a.P2, b.P1) &&
         DefTol.PointEquals(a.P3, b.P0);
}

double TGeBezier2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const {
  return FBezierSegment.ParamOfLength(ParamStart, Len, Tol.PointTol, 14);
}

double TGeBezier2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  return FBezierSegment.ParamOfPoint(Pnt, Tol);
}

std::unique_ptr<TGeCurve2D> TGeBezier2D::SubCurve(double PrmFrom, double PrmTo) const {
  if (!(fSmall(PrmFrom, PrmTo, 1e-6) && fSmall(PrmFrom, 1.0, 1e-6) && fGreat(PrmTo, 0.0, 1e-6))) return nullptr;
  TBezierSegment2D seg = FBezierSegment;
  double t = PrmTo;
  TBezierSegment2D left;
  TBezierSegment2D right;
  if (fGreat(PrmFrom, 0.0, 1e-6)) {
    if (seg.Split(PrmFrom, left, right)) seg = right;
    t = (PrmTo - PrmFrom) / (1.0 - PrmFrom);
  }
  if (fSmall(t, 1.0, 1e-6) && seg.Split(t, left, right)) seg = left;
  auto result = std::make_unique<TGeBezier2D>();
  result->FBezierSegment = seg;
  return result;
}

void TGeBezier2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGeBezier2D.TransformBy");
  FBezierSegment.TransformBy(Mtx);
}

std::string TGeBezier2D::ToString() const {
  return Format(SGePolyBezierSegFmt, FBezierSegment.P0.ToString(), FBezierSegment.P1.ToString(),
                FBezierSegment.P2.ToString(), FBezierSegment.P3.ToString());
}

namespace {

bool FiniteSegment(const TBezierSegment2D& S) {
  return internal::IsFinite(S.P0) && internal::IsFinite(S.P1) && internal::IsFinite(S.P2) && internal::IsFinite(S.P3);
}

}  // namespace

void TGeBezier2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGeBezier2D.LoadFromXmlNode";
  TGeCurve2D::LoadFromXmlNode(ANode);
  const TBezierSegment2D seg(TXmlNodeHelper::ReadPoint2D(ANode, "P0", Where), TXmlNodeHelper::ReadPoint2D(ANode, "P1", Where),
                             TXmlNodeHelper::ReadPoint2D(ANode, "P2", Where), TXmlNodeHelper::ReadPoint2D(ANode, "P3", Where));
  if (!FiniteSegment(seg)) TXmlNodeHelper::Fail(ANode, Where, "a control point is not finite");
  FBezierSegment = seg;
}

void TGeBezier2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGeCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WritePoint(ANode, "P0", FBezierSegment.P0);
  TXmlNodeHelper::WritePoint(ANode, "P1", FBezierSegment.P1);
  TXmlNodeHelper::WritePoint(ANode, "P2", FBezierSegment.P2);
  TXmlNodeHelper::WritePoint(ANode, "P3", FBezierSegment.P3);
}

void TGeBezier2D::LoadGeoData(IFbsReader& AReader) {
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  TBezierSegment2D seg;
  seg.P0 = AReader.ReadPoint();
  seg.P1 = AReader.ReadPoint();
  seg.P2 = AReader.ReadPoint();
  seg.P3 = AReader.ReadPoint();
  if (!FiniteSegment(seg)) {
    throw EInOutError("[Error] TGeBezier2D.LoadGeoData: a control point is not finite (%s)", AReader.GetPosition());
  }
  FBezierSegment = seg;
}

void TGeBezier2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WritePoint(FBezierSegment.P0);
  AWriter.WritePoint(FBezierSegment.P1);
  AWriter.WritePoint(FBezierSegment.P2);
  AWriter.WritePoint(FBezierSegment.P3);
}

}  // namespace orvane
