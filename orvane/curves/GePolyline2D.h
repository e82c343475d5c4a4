#pragma once
// TGePolyline2D: the piecewise curve of straight segments through an array of vertices;
// TGePolygon2D: the same array read as a ring, its last segment closing back to vertex 0;
// TGePolylineSegment2D: the view of one segment.
//
// A polyline of n vertices has n - 1 segments (none for one vertex or none), a polygon n.
// Besides the segment views the polyline caches the length from the start to each vertex;
// both caches follow every change of the vertices. One polyline is not to be read from two
// threads at once.

#include <memory>
#include <string>

#include "orvane/curves/GePiecewiseCurve2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"

namespace orvane {

class TGePolyline2D;

class ORVANE_API TGePolylineSegment2D : public TGePiecewiseSegment2D {
 public:
  // A view without owner: the point line at the origin.
  TGePolylineSegment2D();
  TGePolylineSegment2D(const TGePolyline2D* Owner, int SegIdx);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  // The line from vertex SegIdx to the next one, indices taken round the vertex count.
  std::unique_ptr<TGeCurve2D> GetBaseCurve() const override;
  TLine2D LineSegment() const;
  std::string ToString() const override;
};

class ORVANE_API TGePolyline2D : public TGePiecewiseCurve2D {
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

  TGePolyline2D() = default;
  // PntCount vertices at the origin. EParamError for a negative count.
  explicit TGePolyline2D(int PntCount);
  // EGeometry when a vertex is not finite.
  explicit TGePolyline2D(const TDynPoints2D& APoints);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;
  // Persistence hooks of the XML and binary record forms; filled with the readers and
  // writers of the curve formats.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  // Count vertices: those that stay keep their place, new ones stand at the origin.
  // EParamError for a negative count.
  void Initialize(int Count);
  int GetPointCount() const { return static_cast<int>(FPoints.size()); }
  // EParamError "[Error] TGePolyline2D.GetPoint: 下标越界" for an index outside the array.
  TPoint2D GetPoint(int Idx) const;
  // EParamError for a bad index, EGeometry for a point that is not finite; the curve then
  // stays as it was.
  void SetPoint(int Idx, const TPoint2D& Value);
  void SetPoints(const TDynPoints2D& APoints);
  const TDynPoints2D& GetPointsArray() const { return FPoints; }

  // Point count - 1, and 0 for no vertex at all.
  int GetSegmentCount() const override;
  std::unique_ptr<TGePiecewiseSegment2D> GetSegment(int Idx) const override;
  // Value + 1 vertices; EParamError for a negative value.
  void SetSegmentCount(int Value) override;

  // The first and last vertex; the largest double in both coordinates without vertices.
  TPoint2D GetStartPoint() const override;
  TPoint2D GetEndPoint() const override;
  TRect2D BoundBlock() const override;
  bool GetIsClockwise() const override;
  // Through the table of vertex lengths; Param held to the range.
  double LengthAt(double Param) const override;
  // The nearest point, read straight from the vertices; on a tie the earlier segment, and
  // the start point before a first segment that only equals it.
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // As for any piecewise curve; one vertex samples to itself.
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  using TGePiecewiseCurve2D::GetSamplePointsByChord;
  // A polyline along the stretch, held to the range; through the seam of a closed curve when
  // PrmFrom > PrmTo, nil on an open one or for an empty stretch.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  void ReverseDir() override;
  // EParamError when the matrix is not finite.
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

 protected:
  // The length from the start to each vertex, rebuilt after a change.
  const TFloatDynArray& LengthTable() const;
  void Changed();

  TDynPoints2D FPoints;

 private:
  mutable TFloatDynArray FLengthSamples;
  mutable bool FLengthValid = false;
};

class ORVANE_API TGePolygon2D : public TGePolyline2D {
 public:
  using TGePolyline2D::TGePolyline2D;

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  // One segment per vertex: the last closes back to vertex 0.
  int GetSegmentCount() const override;
  void SetSegmentCount(int Value) override;
  // 1 inside, 0 on the boundary (within Tol.PointTol), -1 outside, by crossings of a ray
  // with the ring's edges; a ray through a vertex counts it once.
  int IsIn(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
};

}  // namespace orvane
