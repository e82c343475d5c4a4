#pragma once
// TGeBezier2D: the cubic Bezier curve object over one TBezierSegment2D value; the parameter
// runs from 0 at P0 to 1 at P3.

#include <memory>
#include <string>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"

namespace orvane {

class ORVANE_API TGeBezier2D : public TGeCurve2D {
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

  // All four control points at the origin.
  TGeBezier2D() = default;
  // EGeometry when a control point is not finite.
  TGeBezier2D(const TPoint2D& P0, const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3);
  explicit TGeBezier2D(const TBezierSegment2D& Bez);
  // The straight cubic along Line, whose parameter runs evenly along it.
  static std::unique_ptr<TGeBezier2D> CreateLine(const TLine2D& Line);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;
  // Persistence hooks of the XML and binary record forms; filled with the readers and
  // writers of the curve formats.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  const TBezierSegment2D& GetBezierSegment() const { return FBezierSegment; }

  TPoint2D GetStartPoint() const override { return FBezierSegment.P0; }
  TPoint2D GetEndPoint() const override { return FBezierSegment.P3; }
  double GetCurveLength() const override { return FBezierSegment.CurveLength(14); }
  TGeInterval GetInterval() const override;
  // The length of the piece [0, Param], held to [0, 1]; the same answer as the sub-curve's
  // length without making one.
  double LengthAt(double Param) const override;
  TRect2D BoundBlock() const override { return FBezierSegment.GetBoundBox(); }
  TPoint2D EvalPoint(double Param) const override { return FBezierSegment.EvalPoint(Param); }
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override { return FBezierSegment.EvalPoint(Param, Deriv); }
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // Same class and the same control points within DefTol; without CheckDir also in reverse.
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  // Walks Len from ParamStart (held to [0, 1]); 0 or 1 when Len reaches past that end.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // The piece between the two parameters, cut at the curve's ends; nil for a reversed or
  // empty range, or one that lies wholly outside [0, 1].
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  void ReverseDir() override { FBezierSegment.Reverse(); }
  // EParamError when the matrix is not finite.
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

  // De Casteljau split at param; false (outputs untouched) unless 0 < param < 1.
  bool Split(double param, TBezierSegment2D& seg1, TBezierSegment2D& seg2) const {
    return FBezierSegment.Split(param, seg1, seg2);
  }

 private:
  TBezierSegment2D FBezierSegment;
};

}  // namespace orvane
