#include "orvane/curves/GePolyline2D.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cmath>

#include "orvane/curves/GeLine2D.h"
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

void CheckCount(int Count, const char* Where) {
  if (Count < 0) throw EParamError("[Error] %s: count %d is negative", Where, Count);
}

void CheckVertices(const TDynPoints2D& Pts, const char* Where) {
  for (std::size_t i = 0; i < Pts.size(); ++i) {
    if (!internal::IsFinite(Pts[i]))
      throw EGeometry("[Error] %s: vertex %d is not a finite point", Where, static_cast<int>(i));
  }
}

}  // namespace

TGePolylineSegment2D::TGePolylineSegment2D() : TGePiecewiseSegment2D(nullptr, 0) { InitBaseCurve(); }

TGePolylineSegment2D::TGePolylineSegment2D(const TGePolyline2D* Owner, int SegIdx)
    : TGePiecewiseSegment2D(Owner, SegIdx) {
  InitBaseCurve();
}

std::string TGePolylineSegment2D::ClassName() const { return "TGePolylineSegment2D"; }

std::unique_ptr<TGeObject> TGePolylineSegment2D::CreateEmpty() const {
  return std::make_unique<TGePolylineSegment2D>();
}

std::unique_ptr<TGeCurve2D> TGePolylineSegment2D::GetBaseCurve() const {
  const auto* owner = static_cast<const TGePolyline2D*>(FOwner);
  const int n = owner == nullptr ? 0 : owner->GetPointCount();
  if (n == 0) return std::make_unique<TGeLine2D>();
  const TDynPoints2D& pts = owner->GetPointsArray();
  const int i = ((FSegIdx % n) + n) % n;
  return std::make_unique<TGeLine2D>(pts[static_cast<std::size_t>(i)], pts[static_cast<std::size_t>((i + 1) % n)]);
}

TLine2D TGePolylineSegment2D::LineSegment() const { return static_cast<const TGeLine2D&>(BaseCurve()).GetLine(); }

std::string TGePolylineSegment2D::ToString() const {
  const auto& line = static_cast<const TGeLine2D&>(BaseCurve());
  return Format(SGePolySegFmt, line.GetLineStart().ToString(), line.GetLineVector().ToString());
}

TGePolyline2D::TGePolyline2D(int PntCount) {
  CheckCount(PntCount, "TGePolyline2D.Create");
  Initialize(PntCount);
}

TGePolyline2D::TGePolyline2D(const TDynPoints2D& APoints) { SetPoints(APoints); }

std::string TGePolyline2D::ClassName() const { return "TGePolyline2D"; }

std::unique_ptr<TGeObject> TGePolyline2D::CreateEmpty() const { return std::make_unique<TGePolyline2D>(); }

void TGePolyline2D::AssignTo(TPersistent& Dest) const {
  TGePiecewiseCurve2D::AssignTo(Dest);
  if (auto* poly = dynamic_cast<TGePolyline2D*>(&Dest)) {
    if (poly != this) poly->SetPoints(FPoints);
  }
}

void TGePolyline2D::Changed() {
  FLengthValid = false;
  ClearSegmentCache();
}

void TGePolyline2D::Initialize(int Count) {
  CheckCount(Count, "TGePolyline2D.Initialize");
  FPoints.resize(static_cast<std::size_t>(Count));
  // Views of vertices that went or came would show the old ring.
  Changed();
}

TPoint2D TGePolyline2D::GetPoint(int Idx) const {
  if (Idx < 0 || Idx >= GetPointCount()) throw EParamError("[Error] TGePolyline2D.GetPoint: 下标越界");
  return FPoints[static_cast<std::size_t>(Idx)];
}

void TGePolyline2D::SetPoint(int Idx, const TPoint2D& Value) {
  if (Idx < 0 || Idx >= GetPointCount()) throw EParamError("[Error] TGePolyline2D.SetPoint: 下标越界");
  internal::CheckFinitePoint<EGeometry>(Value, "TGePolyline2D.SetPoint", "Value");
  FPoints[static_cast<std::size_t>(Idx)] = Value;
  FLengthValid = false;
  // The two segments that meet at the vertex, and for vertex 0 the one that closes a ring.
  DropSegment(Idx - 1);
  DropSegment(Idx);
  if (Idx == 0) DropSegment(GetSegmentCount() - 1);
}

void TGePolyline2D::SetPoints(const TDynPoints2D& APoints) {
  CheckVertices(APoints, "TGePolyline2D.SetPoints");
  FPoints = APoints;
  Changed();
}

int TGePolyline2D::GetSegmentCount() const { return std::max(0, GetPointCount() - 1); }

std::unique_ptr<TGePiecewiseSegment2D> TGePolyline2D::GetSegment(int Idx) const {
  return std::make_unique<TGePolylineSegment2D>(this, Idx);
}

void TGePolyline2D::SetSegmentCount(int Value) {
  CheckCount(Value, "TGePolyline2D.SetSegmentCount");
  TGePiecewiseCurve2D::SetSegmentCount(Value);
  Initialize(Value + 1);
}

TPoint2D TGePolyline2D::GetStartPoint() const {
  return FPoints.empty() ? TPoint2D(MaxDouble, MaxDouble) : FPoints.front();
}

TPoint2D TGePolyline2D::GetEndPoint() const {
  return FPoints.empty() ? TPoint2D(MaxDouble, MaxDouble) : FPoints.back();
}

TRect2D TGePolyline2D::BoundBlock() const {
  TRect2D box;
  box.SetByPointsExt(FPoints);
  return box;
}

bool TGePolyline2D::GetIsClockwise() const { return PolyArea(FPoints) < 0.0; }

const TFloatDynArray& TGePolyline2D::LengthTable() const {
  if (!FLengthValid) {
    const int n = GetSegmentCount();
    const std::size_t count = FPoints.size();
    FLengthSamples.assign(1, 0.0);
    for (int i = 0; i < n; ++i) {
      const TPoint2D& a = FPoints[static_cast<std::size_t>(i) % count];
      const TPoint2D& b = FPoints[static_cast<std::size_t>(i + 1) % count];
      FLengthSamples.push_back(FLengthSamples.back() + a.DistanceTo(b));
    }
    FLengthValid = true;
  }
  return FLengthSamples;
}

double TGePolyline2D::LengthAt(double Param) const {
  const TFloatDynArray& s = LengthTable();
  if (!(Param > 0.0)) return 0.0;
  const auto i = static_cast<std::size_t>(Param);
  if (i + 1 >= s.size()) return s.back();
  const double f = Param - static_cast<double>(i);
  return s[i] * (1.0 - f) + s[i + 1] * f;
}

TPoint2D TGePolyline2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/, double& Param) const {
  const std::size_t count = FPoints.size();
  if (count == 0) {
    Param = 0.0;
    return GetStartPoint();
  }
  TPoint2D best = FPoints.front();
  double bestDist2 = (best - Pnt).MagSqr();
  double bestParam = 0.0;
  const int n = GetSegmentCount();
  for (int i = 0; i < n; ++i) {
    const TPoint2D& a = FPoints[static_cast<std::size_t>(i)];
    const TPoint2D& b = FPoints[static_cast<std::size_t>(i + 1) % count];
    const TPoint2D v = b - a;
    const double m2 = v.MagSqr();
    // The same rule as a line segment's nearest point: ends outside [0, 1], a segment
    // shorter than 1e-6 is its start.
    double t = 0.0;
    if (m2 >= 1e-12) t = std::clamp(v.DotMul(Pnt - a) / m2, 0.0, 1.0);
    const TPoint2D p = t == 1.0 ? b : a + v * t;
    const double d2 = (p - Pnt).MagSqr();
    if (d2 < bestDist2) {
      bestDist2 = d2;
      best = p;
      bestParam = t + i;
    }
  }
  Param = bestParam;
  return best;
}

int TGePolyline2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  const int m = TGePiecewiseCurve2D::GetSamplePointsByChord(EpsChord, Points, Params);
  if (m == 0 && FPoints.size() == 1) {
    Points = {FPoints.front()};
    Params = {0.0};
    return 1;
  }
  return m;
}

std::unique_ptr<TGeCurve2D> TGePolyline2D::SubCurve(double PrmFrom, double PrmTo) const {
  const int n = GetSegmentCount();
  if (n < 1 || std::isnan(PrmFrom) || std::isnan(PrmTo)) return nullptr;
  const double nd = static_cast<double>(n);
  const double from = std::clamp(PrmFrom, 0.0, nd);
  const double to = std::clamp(PrmTo, 0.0, nd);
  if (from == to) return nullptr;
  const int a = static_cast<int>(std::ceil(from));
  const int b = static_cast<int>(std::floor(to));
  int count = b - a + 1;
  if (from > to) {
    if (!GetIsClosed()) return nullptr;
    count += n;
  }
  const bool headPoint = fSmall(from, a, 1e-6);
  if (headPoint) ++count;
  if (fSmall(b, to, 1e-6)) ++count;
  // A stretch within one segment has its two ends and no vertex.
  count = std::max(count, 2);
  TDynPoints2D pts(static_cast<std::size_t>(count));
  pts.front() = EvalPoint(from);
  pts.back() = EvalPoint(to);
  int v = a;
  for (int pos = headPoint ? 1 : 0; pos <= count - 2; ++pos, ++v) {
    pts[static_cast<std::size_t>(pos)] = FPoints[static_cast<std::size_t>(((v % n) + n) % n)];
  }
  return std::make_unique<TGePolyline2D>(pts);
}

void TGePolyline2D::ReverseDir() {
  TGePiecewiseCurve2D::ReverseDir();
  ReversePoints(FPoints);
  FLengthValid = false;
}

void TGePolyline2D::TransformBy(const TMatrix2D& Mtx) {
  TGePiecewiseCurve2D::TransformBy(Mtx);
  Mtx.TransformPoints(FPoints);
  FLengthValid = false;
}

std::string TGePolyline2D::ToString() const { return Format(SGePolylineFmt, GetSegmentCount()); }

std::string TGePolygon2D::ClassName() const { return "TGePolygon2D"; }

std::unique_ptr<TGeObject> TGePolygon2D::CreateEmpty() const { return std::make_unique<TGePolygon2D>(); }

int TGePolygon2D::GetSegmentCount() const { return GetPointCount(); }

void TGePolygon2D::SetSegmentCount(int Value) {
  CheckCount(Value, "TGePolygon2D.SetSegmentCount");
  Initialize(Value);
}

int TGePolygon2D::IsIn(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  const std::size_t n = FPoints.size();
  if (n == 0) return -1;
  bool inside = false;
  std::size_t prev = n - 1;
  bool abovePrev = FPoints[prev].Y > Pnt.Y;
  bool rightPrev = FPoints[prev].X > Pnt.X;
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint2D& a = FPoints[prev];
    const TPoint2D& b = FPoints[i];
    const TLine2D edge(a, b);
    if (edge.IsOn(Pnt, Tol.PointTol) || Pnt.DistanceTo(a) < 1e-6 || Pnt.DistanceTo(b) < 1e-6) return 0;
    const bool above = b.Y > Pnt.Y;
    const bool right = b.X > Pnt.X;
    if (above != abovePrev) {
      if (right && rightPrev) {
        inside = !inside;
      } else if (right != rightPrev) {
        if (edge.PointAtY(Pnt.Y).X > Pnt.X) inside = !inside;
      }
    }
    prev = i;
    abovePrev = above;
    rightPrev = right;
  }
  return inside ? 1 : -1;
}

void TGePolyline2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  using internal::TXmlNodeHelper;
  static constexpr const char* Where = "TGePolyline2D.LoadFromXmlNode";
  TGePiecewiseCurve2D::LoadFromXmlNode(ANode);
  const std::int32_t count = TXmlNodeHelper::ReadIntAttr(ANode, "PointCount", Where);
  if (count < 0) TXmlNodeHelper::Fail(ANode, Where, Format("the point count %d is negative", count));
  // The count sizes the vertex array, so it must be backed by as many vertex elements as it
  // claims; a vertex element beyond it has no place to go.
  const std::int64_t present = TXmlNodeHelper::CountChildren(ANode, "Point", count);
  if (present != count) {
    TXmlNodeHelper::Fail(ANode, Where, Format("the point count %d disagrees with the %d%s vertex elements", count,
                                              present, present > count ? " or more" : ""));
  }
  TDynPoints2D points(static_cast<std::size_t>(count));
  std::size_t i = 0;
  for (pugi::xml_node c = ANode.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    const std::string_view name = c.name();
    if (name.size() < 5 || !internal::SameText(name.substr(0, 5), "Point")) continue;
    const TPoint2D pt(TXmlNodeHelper::ReadDoubleAttr(c, "X", Where), TXmlNodeHelper::ReadDoubleAttr(c, "Y", Where));
    if (!internal::IsFinite(pt)) TXmlNodeHelper::Fail(c, Where, "the vertex is not finite");
    points[i++] = pt;
  }
  FPoints = std::move(points);
  Changed();
}

void TGePolyline2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGePiecewiseCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WriteAttr(ANode, "PointCount", static_cast<std::int32_t>(FPoints.size()));
  for (const TPoint2D& pt : FPoints) TXmlNodeHelper::WritePoint(ANode, "Point", pt);
}

void TGePolyline2D::LoadGeoData(IFbsReader& AReader) {
  TGeObject::LoadGeoData(AReader);
  const TFbsRecord record = AReader.NextRecord();
  const std::int32_t count = AReader.ReadInteger();
  AReader.CheckCount(count, 16);
  TDynPoints2D points(static_cast<std::size_t>(count));
  for (TPoint2D& pt : points) {
    pt = AReader.ReadPoint();
    if (!internal::IsFinite(pt)) {
      throw EInOutError("[Error] %s.LoadGeoData: the vertex %s is not finite (%s)", ClassName(), pt.ToString(),
                        AReader.GetPosition());
    }
  }
  FPoints = std::move(points);
  Changed();
}

void TGePolyline2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
  AWriter.WriteInteger(static_cast<std::int32_t>(FPoints.size()));
  for (const TPoint2D& pt : FPoints) AWriter.WritePoint(pt);
}

}  // namespace orvane
