#pragma once
// TGeSpline2D: the rational B-spline curve in the plane. Its parameter runs over its knot
// range; clamped, unclamped, uniform, periodic (wrapped) and rational forms are all held the
// same way. Evaluation works on homogeneous points (x*w, y*w, w) and divides by the weight
// last.

#include <memory>
#include <string>
#include <vector>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

// Knots closer than this count as one knot in decomposition and splitting of knot runs.
ORVANE_API extern const double CKnotsTol;

// Rows of columns.
using TFullMatrix = std::vector<std::vector<double>>;
// One list of p + 1 points per Bezier piece, or the levels of a de Boor triangle.
using TPoint3DLists = std::vector<TDynPoints3D>;

// The (p + 1) by (p + 1) matrix that turns the first (AtStart) or last p + 1 control points
// of a spline with these knots into those of its clamped form, the curve unchanged; zero
// when Knots has fewer than 2p + 2 entries or the end span is empty.
ORVANE_API TFullMatrix GetBSpilineClampingMatrix(int Degree, const TFloatDynArray& Knots, bool AtStart);

class TGeSpline2D;
class TGeLine2D;
class TGeCircularArc2D;
class TLengthSamples;
namespace internal {
struct TSplineQueryCache;
}
using TGeSpline2DList = std::vector<std::unique_ptr<TGeSpline2D>>;

class ORVANE_API TGeSpline2D final : public TGeCurve2D {
 public:
  using TGeCurve2D::EvalPoint;
  using TGeCurve2D::GetClosedPointTo;
  using TGeCurve2D::GetSamplePoints;
  using TGeCurve2D::IsOn;
  using TGeCurve2D::ParamOfLength;
  using TGeCurve2D::SplitAt;
  using TGeCurve2D::SubCurve;
  using TGeEntity2D::Mirror;
  using TGeEntity2D::RotateBy;
  using TGeEntity2D::ScaleBy;
  using TGeEntity2D::TranslateBy;

  // No arrays, degree 0.
  TGeSpline2D() = default;
  // All arrays zero-filled, weights included. EParamError for a negative count or degree.
  TGeSpline2D(int CtrlCount, int Degree);
  ~TGeSpline2D() override;

  // The cubic Bezier of the segment P1 P2 (control points at the thirds).
  static std::unique_ptr<TGeSpline2D> CreateLine(const TPoint2D& P1, const TPoint2D& P2);
  static std::unique_ptr<TGeSpline2D> CreateBezier(const TBezierSegment2D& ABezier);
  // A rational quadratic in pieces of at most a right angle. EGeometry "SweepAngle is too
  // close to 0" when the sweep is within 1e-6 of 0.
  static std::unique_ptr<TGeSpline2D> CreateArc(const TPoint2D& ACenter, double ARadius, double StartAngle,
                                                double AngleSweep);
  // The arc of radius MajorAxis, scaled by MinorAxis / MajorAxis in y about ACenter.
  // EGeometry "Invalid Ellipse MajorAxis Param %f" when MajorAxis is below 0.0001.
  static std::unique_ptr<TGeSpline2D> CreateEllipse(const TPoint2D& ACenter, double MajorAxis, double MinorAxis,
                                                    double StartAngle, double AngleSweep);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;
  // The XML element's content and the binary record's fields. Loading refuses, with an
  // EInOutError that names the place and leaves the spline as it was, a degree outside 1..3,
  // counts that do not fit one another or the data present, knots that fall or span no
  // range, a weight not above 0 and any value that is not finite.
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  // Sizes the arrays for CtrlCount points of degree Degree (KnotCount = CtrlCount + Degree + 1);
  // entries within the new sizes keep their values, new ones are zero.
  void Initialize(int CtrlCount, int Degree);
  // Drops every cache (derivative, interval, rationality, validity).
  void Invalidate();

  // Cyclic readers: index (Idx + Count) mod Count, so -1 reads the last entry. EParamError
  // on an empty array or an index below -Count.
  TPoint2D GetCtrlPoint(int Idx) const;
  double GetWeight(int Idx) const;
  double GetKnots(int Idx) const;
  // The homogeneous point (x*w, y*w, w); (x, y, 0) when w is within 1e-6 of 0.
  TPoint3D GetCtrlPointW(int Idx) const;
  // Writers take the index as it stands. EParamError for an index out of range or a value
  // that is not finite; SetWeight also for a weight of zero or below.
  void SetCtrlPoint(int Idx, const TPoint2D& Value);
  void SetWeight(int Idx, double Value);
  void SetKnots(int Idx, double Value);

  const TDynPoints2D& GetCtrlPoints() const { return FCtrlPoints; }
  const TFloatDynArray& GetKnotVector() const { return FKnots; }
  const TFloatDynArray& GetWeights() const { return FWeights; }
  int GetCtrlPointCount() const { return static_cast<int>(FCtrlPoints.size()); }
  int GetKnotCount() const { return static_cast<int>(FKnots.size()); }
  int GetDegree() const { return FDegree; }
  bool GetIsPeriodic() const { return FPeriodic; }
  void SetPeriodic(bool Value) { FPeriodic = Value; }
  // True when two neighbouring weights differ (exactly); cached.
  bool GetIsRational() const;
  void SetIsRational(bool Value);
  bool IsAllWeightsOne() const;
  static TPoint2D PointH(const TPoint3D& Pw);
  TRect2D CtrlPointsBoundBlock() const;

  TGeInterval GetInterval() const override;
  // The multiplicity of Param as a knot (within 1e-6, at most p) and its span.
  int Multiplicity(double Param, int& Span) const;
  // The whole de Boor triangle at Param, level 0 first.
  TPoint3DLists DeBoor(double Param, int Span, int Mult) const;
  TPoint3D EvalPointW(double Param) const;
  TPoint2D EvalPoint(double Param) const override;
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override;
  // The derivative spline (degree p - 1, homogeneous differences), brought up to date.
  const TGeSpline2D& GetDervSpline() const;
  // The numerator of the quotient rule at Param, given the curve point Pnt.
  TPoint2D DerivW(double Param, const TPoint2D& Pnt) const;
  // Cuts at Param exactly. True in every case; a part is nil where Param lies at or beyond
  // that end. Parts keep this spline's parameters and are not periodic.
  bool SplitAt(double Param, std::unique_ptr<TGeCurve2D>& Sub1, std::unique_ptr<TGeCurve2D>& Sub2) const override;
  bool SplitSpline(double Param, std::unique_ptr<TGeSpline2D>& Sub1, std::unique_ptr<TGeSpline2D>& Sub2) const;

  // Bezier pieces in order along the curve, p + 1 points each: plane x, y with the weight in
  // the third component. Empty for a malformed spline.
  TPoint3DLists DecomposeCurve() const;
  // The same in homogeneous form.
  TPoint3DLists DecomposeCurveW() const;
  void DecomposeOneSplineW(TPoint3DLists& Pieces) const;
  // Cuts at knot runs longer than p + 1; true if it cut.
  bool SplineSplit(TGeSpline2DList& Subs) const;
  bool IsKnotsNeedTrim() const;
  // Rewrites this spline in clamped form, the curve on its interval unchanged.
  void ConvertToClampingCurve();

  // The stretch as a spline that keeps this spline's parameters; nil for an empty one. With
  // PrmFrom above PrmTo on a closed spline, the stretch through the seam: a composite of the
  // part from PrmFrom to the end and the part from the start to PrmTo (the one part alone
  // when the other is empty); nil on an open spline.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  // Sub-splines in order along the curve, each flat within EpsChord (or of parameter length
  // 1e-5 or less) and monotone in x and in y; a copy of this spline when no cut is needed.
  // EParamError for an EpsChord that is not a positive number, EGeometry when more than
  // 10^5 pieces would be needed.
  void PolySplit(TGeSpline2DList& List, double EpsChord) const;
  // The same for the stretch From..To (through the seam when From is above To on a closed
  // spline); nothing for a stretch that SubCurve answers nil for.
  void PolySplit(double From, double To, TGeSpline2DList& List, double EpsChord) const;
  // Greatest distance of an inner control point from the line of the end control points;
  // stops at the first above Tol.
  double CtrlBoxError(double Tol) const;
  bool ConnectWith(const TGeSpline2D& ASpline);
  bool AddArc(const TArc2D& Arc);
  bool AddBezier(const TBezierSegment2D& Bezier);
  bool AddLine(const TLine2D& Line);
  void ReverseDir() override;
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  bool Contains(const TGeCurve2D& ACurve) const override;
  std::string ToString() const override;

  bool GetIsClockwise() const override;
  bool GetIsClosedTol(const TGeTolerance& ATol) const override;
  void TransformBy(const TMatrix2D& Mtx) override;
  // The control points' box: the curve lies in it, since the weights are positive.
  TRect2D GetRoughBoundBlock() const override;

  // Measuring and searching. Lengths are integrated on the Bezier pieces (to about 1e-13
  // relative), not summed from chords. The pieces are kept between calls until Invalidate.
  // EGeometry for a malformed spline.
  double GetCurveLength() const override;
  // The length from the start to Param (held to the interval).
  double LengthAt(double Param) const override;
  // The exact box of the curve on its interval.
  TRect2D BoundBlock() const override;
  // The global nearest point and its parameter (on a tie, the smaller parameter). Tol is
  // read only by the search of a spline without pieces. EParamError for a point that is
  // not finite.
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // Points with strictly rising parameters whose chords stay within EpsChord of the curve,
  // ends included; returns their number. EParamError for an EpsChord that is not a positive
  // number.
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  // The same on the stretch (through the seam of a closed spline when paramFrom is above
  // paramTo; nothing on an open one).
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // The parameter at the length Len past ParamStart (backward for a negative Len); a closed
  // spline wraps once, an open one stops at its ends. Tol is not read.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // (parameter, length) pairs from start to end that keep linear interpolation within 0.01
  // of the true length; the lengths at the samples are exact.
  const TLengthSamples& GetLengthSamples() const;

  // Recognition. The tolerance-free forms are relative to the curve's size, so the answer
  // does not depend on drawing units. Out parameters are reset to nil first.
  // The line if the spline is one, else the arc if it is one; nil: keep the spline.
  std::unique_ptr<TGeCurve2D> CalcDegradeCurve() const override;
  // Every control point lies on the segment from the first to the last (within 1e-9 of its
  // length); Line is that segment.
  bool IsLine(std::unique_ptr<TGeLine2D>& Line) const;
  // The curve runs along the segment between its end points, never back, and no point of
  // it lies farther than Tol (absolute) from the segment.
  bool IsLine(std::unique_ptr<TGeLine2D>& Line, double Tol) const;
  // An exact arc or circle in any rational or polynomial form (within 1e-9 of its radius),
  // or a chain of cubics that CAD systems write for an arc (IsCombinedBezierArc).
  bool IsArc(std::unique_ptr<TGeCircularArc2D>& Arc) const;
  // The curve turns one way around the fitted circle, at most once, and no point of it lies
  // farther than Tol (absolute) from that circle.
  bool IsArc(std::unique_ptr<TGeCircularArc2D>& Arc, double Tol) const;
  // A non-rational cubic whose every piece is a standard cubic arc (within 1e-4 of the
  // radius beyond the standard cubic's own deviation) about one centre, turning one way.
  bool IsCombinedBezierArc(std::unique_ptr<TGeCircularArc2D>& Arc) const;
  // Chord samples at 1e-4 of the curve's size lie within 1e-3 of the fitted radius.
  bool IsSampleArc(std::unique_ptr<TGeCircularArc2D>& Arc) const;
  // All control points lie within Tol of one line.
  bool CheckCtrlPointsCollinear(double Tol) const;

 private:
  // Takes arrays that a reader has checked whole, so that a failed read leaves the spline as
  // it was.
  void TakeReadArrays(int Degree, TFloatDynArray&& Knots, TDynPoints2D&& Pts, TFloatDynArray&& Weights,
                      bool Periodic);
  // EGeometry unless the arrays match, knots rise and everything is finite (and, except on
  // a derivative spline, weights are positive). Cached until the next change.
  void CheckWellFormed(const char* Where) const;
  // Homogeneous control points, as evaluation reads them.
  const TDynPoints3D& HomPoints() const;
  // The span whose half-open knot interval holds Param (the last non-empty one at the end).
  int FindSpan(double Param) const;
  // The homogeneous point, and on request its derivative, of the span holding Param.
  TPoint3D EvalW(double Param, TPoint3D* DerivW = nullptr) const;
  void FillDervSpline() const;
  std::unique_ptr<TGeSpline2D> CopySpline() const;
  // The Bezier pieces with their spans, kept until the next change.
  internal::TSplineQueryCache& QueryCache() const;

  TDynPoints2D FCtrlPoints;
  int FDegree = 0;
  TFloatDynArray FKnots;
  TFloatDynArray FWeights;
  mutable bool FUpdatedDerv = false;
  mutable std::unique_ptr<TGeSpline2D> FDervSpline;
  mutable bool FIntervalOk = false;
  mutable TGeInterval FInterval;
  mutable bool FRationalValid = false;
  mutable bool FIsRational = false;
  bool FPeriodic = false;
  // A derivative spline holds weight differences, which may be zero or negative.
  bool FIsDerivative = false;
  mutable bool FCheckedOk = false;
  mutable bool FHomValid = false;
  mutable bool FHomUnit = false;  // all weights equal: FHom runs on weight 1
  mutable TDynPoints3D FHom;
  mutable std::shared_ptr<internal::TSplineQueryCache> FQuery;
};

namespace internal {
// The spline as a DXF file writes a periodic one (N control points, N + 1 knots, the last
// one period past the first), rewritten into the wrapped form: the first Degree points
// repeated at the end and the knots continued by the period on both sides. EGeometry when
// the counts do not fit that form.
ORVANE_API std::unique_ptr<TGeSpline2D> WrapPeriodicSpline(const TDynPoints2D& CtrlPoints,
                                                           const TFloatDynArray& Weights,
                                                           const TFloatDynArray& Knots, int Degree);
// Rewrites the homogeneous points and knots of an unclamped end into clamped form, the
// curve on its knot range unchanged; clamped ends stay as they are.
void ClampEnds(TDynPoints3D& Hom, TFloatDynArray& Knots, int Degree);
// The Bezier pieces of a polynomial spline of degree 1 to 3 as cubic Bezier curves, in order
// along the curve, each on the parameter range [0, 1] of its knot span; pieces of lower
// degree are raised to cubic. Empty when the spline is malformed, of another degree, or has
// a truly rational piece.
ORVANE_API std::vector<std::unique_ptr<TGeBezier2D>> SplineToBezierCurves(const TGeSpline2D& Spline);
}  // namespace internal

}  // namespace orvane
