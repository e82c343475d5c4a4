#include "orvane/curves/GePolyBezier2D.h"

#include <charconv>
#include <pugixml.hpp>

#include <algorithm>
#include <cmath>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

namespace {

constexpr double QuarterPi = Pi / 4.0;
constexpr const char* LengthError = "The Length Of Points Array may Cause Error! Required Length is %s";
constexpr const char* LengthRule = "3*k + 1 (k>0)";

void CheckPoints(const TDynPoints2D& Pts, const char* Where) {
  for (std::size_t i = 0; i < Pts.size(); ++i) {
    if (!internal::IsFinite(Pts[i])) {
      throw EGeometry("[Error] %s: point %d is not a finite point", Where, static_cast<int>(i));
    }
  }
}

void CheckBezier(const TBezierSegment2D& B, const char* Where) { CheckPoints({B.P0, B.P1, B.P2, B.P3}, Where); }

// The piece of B between U0 and U1 (0 <= U0 < U1 <= 1), again on [0, 1].
TBezierSegment2D Piece(const TBezierSegment2D& B, double U0, double U1) {
  TBezierSegment2D seg = B;
  TBezierSegment2D left;
  TBezierSegment2D right;
  if (U1 < 1.0 && seg.Split(U1, left, right)) seg = left;
  if (U0 > 0.0 && U1 > 0.0 && seg.Split(U0 / U1, left, right)) seg = right;
  return seg;
}

// The standard cubic of the arc of circle (C, R) from angle S, sweeping W (|W| <= pi/4 or
// so): its inner legs are 4/3 tan(W / 4) R long, tangent to the circle at both ends.
TBezierSegment2D ArcPiece(const TPoint2D& C, double R, double S, double W) {
  const double e = S + W;
  const TPoint2D p0(C.X + R * std::cos(S), C.Y + R * std::sin(S));
  const TPoint2D p3(C.X + R * std::cos(e), C.Y + R * std::sin(e));
  const double k = std::tan(W / 4.0) * 4.0 / 3.0;
  const TPoint2D p1(p0.X - k * (p0.Y - C.Y), p0.Y + k * (p0.X - C.X));
  const TPoint2D p2(p3.X + k * (p3.Y - C.Y), p3.Y - k * (p3.X - C.X));
  return {p0, p1, p2, p3};
}

}  // namespace

TGePolyBezierSegment2D::TGePolyBezierSegment2D() : TGePiecewiseSegment2D(nullptr, 0) { InitBaseCurve(); }

TGePolyBezierSegment2D::TGePolyBezierSegment2D(const TGePolyBezier2D* Owner, int SegIdx)
    : TGePiecewiseSegment2D(Owner, SegIdx) {
  InitBaseCurve();
}

std::string TGePolyBezierSegment2D::ClassName() const { return "TGePolyBezierSegment2D"; }

std::unique_ptr<TGeObject> TGePolyBezierSegment2D::CreateEmpty() const {
  return std::make_unique<TGePolyBezierSegment2D>();
}

std::unique_ptr<TGeCurve2D> TGePolyBezierSegment2D::GetBaseCurve() const {
  const auto* owner = static_cast<const TGePolyBezier2D*>(FOwner);
  if (owner == nullptr || owner->GetPointCount() == 0) return std::make_unique<TGeBezier2D>();
  const int i = 3 * FSegIdx;
  return std::make_unique<TGeBezier2D>(
      TBezierSegment2D(owner->GetPoint(i), owner->GetPoint(i + 1), owner->GetPoint(i + 2), owner->GetPoint(i + 3)));
}

const TBezierSegment2D& TGePolyBezierSegment2D::BezierSegment() const {
  return static_cast<const TGeBezier2D&>(BaseCurve()).GetBezierSegment();
}

TGePolyBezier2D::TGePolyBezier2D(const TDynPoints2D& APoints) {
  if (!APoints.empty() && (APoints.size() % 3 != 1 || APoints.size() == 1)) throw EGeometry(LengthError, LengthRule);
  CheckPoints(APoints, "TGePolyBezier2D.Create");
  FPoints = APoints;
}

std::unique_ptr<TGePolyBezier2D> TGePolyBezier2D::CreateArc(const TArc2D& Arc) {
  auto curve = std::make_unique<TGePolyBezier2D>();
  curve->AddArc(Arc);
  return curve;
}

std::unique_ptr<TGePolyBezier2D> TGePolyBezier2D::CreateLine(const TLine2D& Line) {
  auto curve = std::make_unique<TGePolyBezier2D>();
  curve->AddLine(Line);
  return curve;
}

std::string TGePolyBezier2D::ClassName() const { return "TGePolyBezier2D"; }

std::unique_ptr<TGeObject> TGePolyBezier2D::CreateEmpty() const { return std::make_unique<TGePolyBezier2D>(); }

void TGePolyBezier2D::AssignTo(TPersistent& Dest) const {
  TGePiecewiseCurve2D::AssignTo(Dest);
  auto* curve = dynamic_cast<TGePolyBezier2D*>(&Dest);
  if (curve == nullptr || curve == this) return;
  curve->FPoints = FPoints;
  curve->ClearSegmentCache();
}

bool TGePolyBezier2D::AddLine(const TLine2D& Line) { return ConnectWith(TBezierSegment2D(Line.P1, Line.P2)); }

bool TGePolyBezier2D::AddLine(const TPoint2D& AEndPoint) {
  internal::CheckFinitePoint<EGeometry>(AEndPoint, "TGePolyBezier2D.AddLine", "AEndPoint");
  if (FPoints.empty()) return false;
  const TPoint2D last = FPoints.back();
  DropSegmentsFrom(GetSegmentCount());
  FPoints.push_back(last);
  FPoints.push_back(AEndPoint);
  FPoints.push_back(AEndPoint);
  return true;
}

bool TGePolyBezier2D::AddArc(const TArc2D& Arc) {
  TList<TBezierSegment2D> pieces;
  ArcToBezier(Arc, pieces);
  bool result = false;
  for (const TBezierSegment2D& piece : pieces) result = ConnectWith(piece);
  return result;
}

bool TGePolyBezier2D::AddPoints(const TDynPoints2D& APoints) {
  if (APoints.size() % 3 != 1 && !APoints.empty()) throw EGeometry(LengthError, LengthRule);
  CheckPoints(APoints, "TGePolyBezier2D.AddPoints");
  if (GetSegmentCount() > 0) {
    if (APoints.empty() || !DefTol.PointEquals(APoints.front(), FPoints.back())) return false;
    DropSegmentsFrom(GetSegmentCount());
    FPoints.insert(FPoints.end(), APoints.begin() + 1, APoints.end());
    return true;
  }
  FPoints = APoints;
  ClearSegmentCache();
  return true;
}

bool TGePolyBezier2D::ConnectWith(const TGePolyBezier2D* APolyBezier) {
  if (APolyBezier == nullptr) return false;
  // A copy first: the curve may be connected to itself.
  const TDynPoints2D pts = APolyBezier->FPoints;
  if (GetSegmentCount() > 0) {
    if (pts.empty() || !DefTol.PointEquals(pts.front(), GetEndPoint())) return false;
    DropSegmentsFrom(GetSegmentCount());
    FPoints.insert(FPoints.end(), pts.begin() + 1, pts.end());
    return true;
  }
  FPoints = pts;
  ClearSegmentCache();
  return true;
}

bool TGePolyBezier2D::ConnectWith(const TBezierSegment2D& ABezierSegment) {
  CheckBezier(ABezierSegment, "TGePolyBezier2D.ConnectWith");
  if (GetSegmentCount() > 0) {
    if (!DefTol.PointEquals(ABezierSegment.P0, GetEndPoint())) return false;
    DropSegmentsFrom(GetSegmentCount());
    FPoints.push_back(ABezierSegment.P1);
    FPoints.push_back(ABezierSegment.P2);
    FPoints.push_back(ABezierSegment.P3);
    return true;
  }
  FPoints = {ABezierSegment.P0, ABezierSegment.P1, ABezierSegment.P2, ABezierSegment.P3};
  ClearSegmentCache();
  return true;
}

void TGePolyBezier2D::Initialize(int n) {
  if (n < 0) throw EParamError("[Error] TGePolyBezier2D.Initialize: count %d is negative", n);
  FPoints.resize(static_cast<std::size_t>(n));
  ClearSegmentCache();
}

int TGePolyBezier2D::GetSegmentCount() const {
  return FPoints.empty() ? 0 : static_cast<int>((FPoints.size() - 1) / 3);
}

std::unique_ptr<TGePiecewiseSegment2D> TGePolyBezier2D::GetSegment(int Idx) const {
  return std::make_unique<TGePolyBezierSegment2D>(this, Idx);
}

void TGePolyBezier2D::SetSegmentCount(int Value) {
  if (Value < 0) throw EParamError("[Error] TGePolyBezier2D.SetSegmentCount: count %d is negative", Value);
  TGePiecewiseCurve2D::SetSegmentCount(Value);
  Initialize(Value * 3 + 1);
}

TPoint2D TGePolyBezier2D::GetPoint(int Idx) const {
  const int n = GetPointCount();
  if (n == 0) throw EParamError("[Error] TGePolyBezier2D.GetPoint: the curve has no points");
  return FPoints[static_cast<std::size_t>(((Idx % n) + n) % n)];
}

void TGePolyBezier2D::GetPointsBetween(int from, int to, TDynPoints2D& Points) const {
  if (from >= to || from < 0 || to > GetSegmentCount()) return;
  Points.assign(FPoints.begin() + 3 * from, FPoints.begin() + 3 * to + 1);
}

TPoint2D TGePolyBezier2D::GetStartPoint() const {
  return FPoints.empty() ? TPoint2D(MaxDouble, MaxDouble) : FPoints.front();
}

TPoint2D TGePolyBezier2D::GetEndPoint() const {
  return FPoints.empty() ? TPoint2D(MaxDouble, MaxDouble) : FPoints.back();
}

bool TGePolyBezier2D::GetIsClockwise() const {
  TDynPoints2D pts;
  GetSamplePoints(0.01, pts);
  return PolyArea(pts) < 0.0;
}

double TGePolyBezier2D::LengthAt(double Param) const {
  const int n = GetSegmentCount();
  if (n < 1 || !(Param > 0.0)) return 0.0;
  const double t = std::min(Param, static_cast<double>(n));
  const int k = std::min(Floorf(t), n);
  double sum = 0.0;
  for (int i = 0; i < k; ++i) sum += GetBufSegment(i)->GetCurveLength();
  if (k < n) sum += GetBufSegment(k)->LengthAt(t - k);
  return sum;
}

std::unique_ptr<TGeCurve2D> TGePolyBezier2D::SubCurve(double PrmFrom, double PrmTo) const {
  const int n = GetSegmentCount();
  const TGeInterval intv = GetInterval();
  if (n < 1 || fEqual(PrmFrom, PrmTo, 1e-6) || !intv.Contains(PrmFrom) || !intv.Contains(PrmTo)) return nullptr;
  const double nd = static_cast<double>(n);
  double from = std::clamp(PrmFrom, 0.0, nd);
  double to = std::clamp(PrmTo, 0.0, nd);
  if (fGreat(from, to, 1e-6)) {
    if (!GetIsClosed()) return nullptr;
    // From the end of a closed curve on is from its start on.
    if (fEqual(from, nd, 1e-6)) {
      from = 0.0;
    } else {
      to += nd;
    }
  }
  auto segOf = [&](int I) -> const TBezierSegment2D& {
    return static_cast<const TGePolyBezierSegment2D*>(GetBufSegment(((I % n) + n) % n))->BezierSegment();
  };
  TDynPoints2D pts;
  auto add = [&](const TBezierSegment2D& B) {
    if (pts.empty()) pts.push_back(B.P0);
    pts.push_back(B.P1);
    pts.push_back(B.P2);
    pts.push_back(B.P3);
  };
  int i = Floorf(from);
  const int j = Floorf(to);
  if (i == j || (i + 1 == j && fEqual(to, j, 1e-6))) {
    // Within one segment (its end exactly at the next joint included).
    const double u1 = std::min(to - i, 1.0);
    add(Piece(segOf(i), from - i, u1));
  } else {
    const double u = from - i;
    if (!fEqual(u, 1.0, 1e-6)) add(Piece(segOf(i), std::max(u, 0.0), 1.0));
    for (int k = i + 1; k < j; ++k) add(segOf(k));
    const double v = to - j;
    if (!fEqual(v, 0.0, 1e-6)) add(Piece(segOf(j), 0.0, v));
  }
  auto result = std::make_unique<TGePolyBezier2D>();
  result->FPoints = std::move(pts);
  return result;
}

void TGePolyBezier2D::ReverseDir() {
  TGePiecewiseCurve2D::ReverseDir();
  ReversePoints(FPoints);
}

void TGePolyBezier2D::TransformBy(const TMatrix2D& Mtx) {
  TGePiecewiseCurve2D::TransformBy(Mtx);
  Mtx.TransformPoints(FPoints);
}

std::string TGePolyBezier2D::ToString() const {
  std::string text = Format(SGeKnotCountFmt, GetPointCount()) + "\r\n" + SGeCtrlPt + "\r\n";
  for (const TPoint2D& p : FPoints) text += Format("%8.3f, %8.3f ", p.X, p.Y) + "\r\n";
  return text;
}

void TGePolyBezier2D::ArcToBezier(const TArc2D& Arc, TList<TBezierSegment2D>& Segments) {
  const double sweep = Arc.GetSweepAngle();
  if (!std::isfinite(sweep) || !std::isfinite(Arc.Radius) || !internal::IsFinite(Arc.Center) ||
      !std::isfinite(Arc.StartAngle)) {
    throw EGeometry("[Error] TGePolyBezier2D.ArcToBezier: the arc is not finite");
  }
  // An arc turns at most once round; a larger sweep would only repeat the circle.
  if (std::fabs(sweep) > TwoPi + 1e-6) {
    throw EGeometry("[Error] TGePolyBezier2D.ArcToBezier: sweep %s is more than a full turn", FloatToStr(sweep));
  }
  // A clockwise arc runs the same pieces with the sign of its sweep.
  const double sign = sweep < 0.0 ? -1.0 : 1.0;
  const double step = QuarterPi * sign;
  const int n = Floorf(std::fabs(sweep) / QuarterPi);
  double a = Arc.StartAngle;
  for (int i = 0; i < n; ++i) {
    Segments.Add(ArcPiece(Arc.Center, Arc.Radius, a, step));
    a = Arc.StartAngle + step * (i + 1);
  }
  const double rest = Arc.EndAngle() - a;
  if (std::fabs(rest) > 1e-6) Segments.Add(ArcPiece(Arc.Center, Arc.Radius, a, rest));
}

namespace {

// Only 0 or 3k + 1 control points make whole cubic segments; any other count read from a
// file would leave a torn last segment behind.
const char* CtrlCountFault(std::int64_t Count) {
  if (Count < 0) return "the control point count is negative";
  if (Count != 0 && Count % 3 != 1) return "the control point count is not 3k + 1";
  return nullptr;
}

}  // namespace

void TGePolyBezier2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGePolyBezier2D.LoadFromXmlNode";
  TGePiecewiseCurve2D::LoadFromXmlNode(ANode);
  const std::int32_t count = TXmlNodeHelper::ReadIntAttr(ANode, "CtrlCount", Where);
  if (const char* fault = CtrlCountFault(count)) TXmlNodeHelper::Fail(ANode, Where, Format("%s (%d)", fault, count));
  if (TXmlNodeHelper::CountChildren(ANode, "CtrlPoint", count) < count) {
    TXmlNodeHelper::Fail(ANode, Where, Format("the control point count %d exceeds the elements present", count));
  }
  // One pass over the children: "CtrlPoint" and the index; the first element of an index
  // counts, and a missing index stays at the origin as an absent point child does.
  TDynPoints2D points(static_cast<std::size_t>(count));
  std::vector<bool> seen(points.size(), false);
  for (pugi::xml_node c = ANode.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const std::string_view name = c.name();
    if (!name.starts_with("CtrlPoint") || name.size() == 9 || (name[9] == '0' && name.size() > 10)) continue;
    std::int32_t idx = 0;
    const char* end = name.data() + name.size();
    const auto [ptr, ec] = std::from_chars(name.data() + 9, end, idx);
    if (ec != std::errc() || ptr != end || idx < 0 || idx >= count) continue;
    if (seen[static_cast<std::size_t>(idx)]) continue;
    seen[static_cast<std::size_t>(idx)] = true;
    const TPoint2D pt(TXmlNodeHelper::ReadDoubleAttr(c, "X", Where), TXmlNodeHelper::ReadDoubleAttr(c, "Y", Where));
    if (!internal::IsFinite(pt)) TXmlNodeHelper::Fail(c, Where, "the control point is not finite");
    points[static_cast<std::size_t>(idx)] = pt;
  }
  FPoints = std::move(points);
  ClearSegmentCache();
}

void TGePolyBezier2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGePiecewiseCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WriteAttr(ANode, "CtrlCount", static_cast<std::int32_t>(FPoints.size()));
  for (std::size_t i = 0; i < FPoints.size(); ++i) {
    TXmlNodeHelper::WritePoint(ANode, ("CtrlPoint" + std::to_string(i)).c_str(), FPoints[i]);
  }
}

void TGePolyBezier2D::LoadGeoData(IFbsReader& AReader) {
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  const std::int32_t count = AReader.ReadInteger();
  AReader.CheckCount(count, 16);
  if (const char* fault = CtrlCountFault(count)) {
    throw EInOutError("[Error] TGePolyBezier2D.LoadGeoData: %s (%d, %s)", fault, count, AReader.GetPosition());
  }
  TDynPoints2D points(static_cast<std::size_t>(count));
  for (TPoint2D& pt : points) {
    pt = AReader.ReadPoint();
    if (!internal::IsFinite(pt)) {
      throw EInOutError("[Error] TGePolyBezier2D.LoadGeoData: the control point %s is not finite (%s)", pt.ToString(),
                        AReader.GetPosition());
    }
  }
  FPoints = std::move(points);
  ClearSegmentCache();
}

void TGePolyBezier2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WriteInteger(static_cast<std::int32_t>(FPoints.size()));
  for (const TPoint2D& pt : FPoints) AWriter.WritePoint(pt);
}

}  // namespace orvane
