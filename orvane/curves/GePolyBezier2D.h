#pragma once
// TGePolyBezier2D: a chain of cubic Bezier segments in one flat array of control points, k
// segments in 3k + 1 points, segment i on the points 3i .. 3i + 3, so neighbours share
// their joint. TGePolyBezierSegment2D is the view of one segment.
//
// Appending keeps the views of the segments that were there; every other change of the
// points drops them. One curve is not to be read from two threads at once.

#include <memory>
#include <string>

#include "orvane/curves/GePiecewiseCurve2D.h"
#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"

namespace orvane {

class TGePolyBezier2D;

class ORVANE_API TGePolyBezierSegment2D : public TGePiecewiseSegment2D {
 public:
  // A view without owner: the cubic with all points at the origin.
  TGePolyBezierSegment2D();
  TGePolyBezierSegment2D(const TGePolyBezier2D* Owner, int SegIdx);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  // The cubic on the points 3 SegIdx .. 3 SegIdx + 3, indices taken round the point count.
  std::unique_ptr<TGeCurve2D> GetBaseCurve() const override;
  const TBezierSegment2D& BezierSegment() const;
};

class ORVANE_API TGePolyBezier2D : public TGePiecewiseCurve2D {
 public:
  using TGeCurve2D::GetClosedPointTo;
  using TGeCurve2D::GetSamplePoints;
  using TGeCurve2D::IsOn;
  using TGeCurve2D::ParamOfLength;
  using TGeCurve2D::SubCurve;
  using TGeEntity2D::Mirror;
  using TGeEntity2D::RotateBy;
  using TGeEntity2D::ScaleBy;
  using TGeEntity2D::TranslateBy;

  TGePolyBezier2D() = default;
  // An empty array gives an empty curve; any other length must be 3k + 1 with k > 0, else
  // EGeometry "The Length Of Points Array may Cause Error! Required Length is 3*k + 1 (k>0)".
  // EGeometry as well for a point that is not finite.
  explicit TGePolyBezier2D(const TDynPoints2D& APoints);
  static std::unique_ptr<TGePolyBezier2D> CreateArc(const TArc2D& Arc);
  static std::unique_ptr<TGePolyBezier2D> CreateLine(const TLine2D& Line);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;
  // Persistence hooks of the XML and binary record forms; filled with the readers and
  // writers of the curve formats.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  // Each of these appends to the chain and says whether it did; an end that does not meet
  // the chain's end (within DefTol) is refused and nothing changes. None bridges a gap or
  // reverses a piece. A point that is not finite raises EGeometry.
  // The straight cubic along Line.
  bool AddLine(const TLine2D& Line);
  // From the end point to AEndPoint, control points at the ends; false on an empty curve.
  bool AddLine(const TPoint2D& AEndPoint);
  bool AddBezier(const TBezierSegment2D& ABezier) { return ConnectWith(ABezier); }
  // The arc as cubics of at most an eighth of a turn, in the arc's own sense.
  bool AddArc(const TArc2D& Arc);
  // Appends all but the first point, which must meet the end; on an empty curve the points
  // become the curve. The array must hold 3k + 1 points (EGeometry otherwise).
  bool AddPoints(const TDynPoints2D& APoints);
  // False for nil.
  bool ConnectWith(const TGePolyBezier2D* APolyBezier);
  bool ConnectWith(const TBezierSegment2D& ABezierSegment);

  // n points: those that stay keep their place, new ones stand at the origin. EParamError for
  // a negative count.
  void Initialize(int n);
  int GetSegmentCount() const override;
  std::unique_ptr<TGePiecewiseSegment2D> GetSegment(int Idx) const override;
  // 3 Value + 1 points; EParamError for a negative value.
  void SetSegmentCount(int Value) override;
  // The point Idx taken round the count; EParamError on a curve without points.
  TPoint2D GetPoint(int Idx) const;
  int GetPointCount() const { return static_cast<int>(FPoints.size()); }
  const TDynPoints2D& GetPointsArray() const { return FPoints; }
  // The (to - from) * 3 + 1 points of the segments from .. to - 1; Points untouched unless
  // from < to, both within 0 .. segment count.
  void GetPointsBetween(int from, int to, TDynPoints2D& Points) const;

  // The first and last point; the largest double in both coordinates without points.
  TPoint2D GetStartPoint() const override;
  TPoint2D GetEndPoint() const override;
  bool GetIsClockwise() const override;
  // Param held to the range (no wrap on a closed curve).
  double LengthAt(double Param) const override;
  // The stretch as a new curve, through the seam of a closed curve when PrmFrom > PrmTo; nil
  // for an empty stretch, a bound outside the range, or a reversed one on an open curve.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  void ReverseDir() override;
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

  // The arc as cubics appended to Segments: pieces of an eighth of a turn and a rest, each the
  // standard cubic of its arc (within 4.3e-6 of the radius), in the arc's sense.
  static void ArcToBezier(const TArc2D& Arc, TList<TBezierSegment2D>& Segments);

 private:
  TDynPoints2D FPoints;
};

}  // namespace orvane
