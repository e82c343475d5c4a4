#pragma once
// TGeLine2D: the straight segment curve, FLineStart + Param * FLineVec for Param in [0, 1],
// and the segment against segment intersection.

#include <memory>
#include <string>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"

namespace orvane {

class TGeCircularArc2D;
class TGePiecewiseCurve2D;

class ORVANE_API TGeLine2D : public TGeCurve2D {
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

  // The point line at the origin.
  TGeLine2D() = default;
  // EGeometry when a point is not finite.
  TGeLine2D(const TPoint2D& PntStart, const TPoint2D& PntEnd);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;

  // The filed forms: start point and vector.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  TLine2D GetLine() const { return {FLineStart, GetLineEnd()}; }
  TPoint2D GetLineStart() const { return FLineStart; }
  TPoint2D GetLineEnd() const { return FLineStart + FLineVec; }
  TPoint2D GetLineVector() const { return FLineVec; }
  // Moves the start and, with the vector kept, the end as well. EGeometry when P is not finite.
  void SetLineStart(const TPoint2D& P);
  // Moves the end alone. EGeometry when P is not finite.
  void SetLineEnd(const TPoint2D& P);

  TPoint2D GetStartPoint() const override { return FLineStart; }
  TPoint2D GetEndPoint() const override { return GetLineEnd(); }
  double GetCurveLength() const override { return FLineVec.Mag(); }
  TGeInterval GetInterval() const override;
  double LengthAt(double Param) const override;
  TRect2D BoundBlock() const override;
  TRect2D BoundBlockOf(const TGeInterval& Intv) const override;
  // No clamping: parameters outside [0, 1] give points on the line's extension.
  TPoint2D EvalPoint(double Param) const override { return FLineStart + FLineVec * Param; }
  // Deriv is the derivative by the parameter, FLineVec itself: its length is the line's.
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override;
  // The nearest point of the segment; Tol is not used.
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // The two ends, parameters 0 and 1, whatever EpsChord is.
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  // Pnt lies within Tol.PointTol of the segment. Param receives the unclamped projection, so
  // a point just past an end within the tolerance gives a parameter just outside [0, 1].
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  bool Contains(const TGeCurve2D& ACurve) const override;
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  // ParamStart + Len / length, held to [0, 1]; the end parameter for a point line.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  // The unclamped projection on the line; 0 for a point line.
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // The line from the point at PrmFrom to that at PrmTo: no clamping, reversed when
  // PrmFrom > PrmTo.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  void ReverseDir() override;
  // EParamError when the matrix is not finite.
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

  // Segment against segment. Entries refer to this line (InterThis) and ALine (InterThat):
  // one for a crossing or touch, two (the upper end of the common stretch on this line
  // first) for itOverlap. Tol.VectorTol is both the shortest segment that can meet anything
  // and the sine below which the two are parallel. The list only grows.
  TIntersectionType Intersect(const TGeLine2D& ALine, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const;
  // The same question through the value segment's relation (itNone, itInner or itOverlap).
  TIntersectionType IntersectWithSegLine(const TGeLine2D& ALine, TList<TIntersect2D>& Inters,
                                         const TGeTolerance& Tol) const;

  // Crossings of this line with any curve, appended to Inters with InterThis on this line
  // and InterThat on ACurve (its own parameter, also for piecewise and composite curves);
  // returns the number of entries added. Bezier curves cross within Tol.PointTol (a touch
  // counts once), curves of other kinds by the roots of their distance from the line.
  int IntersectCurve(const TGeCurve2D& ACurve, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const;
  // Crossings with an arc: 0, 1 or 2, within 1e-6 (Tol is not used).
  int IntersectArc(const TGeCircularArc2D& AArc, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const;
  // Crossings with each segment in turn, InterThat.Param on the whole curve; the count added.
  int IntersectPiecewiseCurve(const TGePiecewiseCurve2D& ACurve, TList<TIntersect2D>& Inters,
                              const TGeTolerance& Tol) const;

 private:
  [[gnu::noinline]] TIntersectionType IntersectParallel(const TGeLine2D& ALine, TList<TIntersect2D>& Inters,
                                                        const TGeTolerance& Tol) const;

  TPoint2D FLineStart;
  TPoint2D FLineVec;
};

}  // namespace orvane
