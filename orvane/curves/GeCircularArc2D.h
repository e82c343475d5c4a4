#pragma once
// TGeCircularArc2D: the circular arc curve over one TArc2D value. The parameter runs from 0
// at the start to 1 at the end of the signed sweep (negative clockwise).
//
// An arc object is always a true arc: a straight piece is a TGeLine2D. The constructors that
// would give a straight piece (a zero bulge, three collinear points) raise
// ECircularArcParam, so that no query ever reads a line's end point as a radius. A zero
// radius or a zero sweep is allowed: such an arc is a point, and samples as one.

#include <memory>
#include <string>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"

namespace orvane {

class ORVANE_API TGeCircularArc2D : public TGeCurve2D {
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

  // The point arc at the origin: radius 0, sweep 0.
  TGeCircularArc2D() = default;
  // Centre, radius, start angle and signed sweep. EGeometry for a value that is not finite or
  // a negative radius.
  TGeCircularArc2D(const TPoint2D& ACenter, double ARadius, double AngleStart, double SweepAngle);
  // About ACenter from PntFrom towards PntTo, clockwise when Clockwise; the radius is
  // PntFrom's distance, PntTo gives the end angle. Equal angles give the full circle.
  TGeCircularArc2D(const TPoint2D& ACenter, const TPoint2D& PntFrom, const TPoint2D& PntTo, bool Clockwise);
  // From PntFrom to PntTo with radius |ARadius|, clockwise when Clockwise: the minor arc for a
  // positive radius, the major for a negative one. EGeometry when the points coincide or the
  // radius is shorter than half the chord.
  TGeCircularArc2D(const TPoint2D& PntFrom, const TPoint2D& PntTo, double ARadius, bool Clockwise);
  // From PntFrom to PntTo with the signed sweep. EGeometry for |SweepAngle| < 1e-9 or a full
  // turn or more, or coincident points.
  TGeCircularArc2D(const TPoint2D& PntFrom, const TPoint2D& PntTo, double SweepAngle);
  // From PntFrom to PntTo whose bulge is the tangent of a quarter of the sweep; note the
  // order of the arguments. ECircularArcParam for a zero bulge or coincident points.
  TGeCircularArc2D(const TPoint2D& PntFrom, double Bulge, const TPoint2D& PntTo);
  // Through three points; ECircularArcParam when they are collinear.
  static std::unique_ptr<TGeCircularArc2D> CreateCross(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3);

  std::string ClassName() const override;
  std::unique_ptr<TGeObject> CreateEmpty() const override;
  void AssignTo(TPersistent& Dest) const override;

  // The filed forms: centre, radius, start angle, signed sweep and the line flag, which a
  // stored arc must have clear (a straight piece files as a line).
  void LoadFromXmlNode(const pugi::xml_node& ANode) override;
  void SaveToXmlNode(pugi::xml_node& ANode) const override;
  void LoadGeoData(IFbsReader& AReader) override;
  void SaveGeoData(IFbsWriter& AWriter) const override;

  const TArc2D& GetArc() const { return FArc; }
  TPoint2D GetCenter() const { return FArc.Center; }
  double GetRadius() const { return FArc.Radius; }
  double GetStartAngle() const { return FArc.StartAngle; }
  double GetEndAngle() const { return FArc.EndAngle(); }
  double GetSweepAngle() const { return FArc.GetSweepAngle(); }
  // The setters raise EGeometry for a value that is not finite or a negative radius and then
  // leave the arc as it was.
  void SetCenter(const TPoint2D& Value);
  void SetRadius(double Value);
  void SetStartAngle(double Value);
  // Sets the sweep to Value minus the start angle.
  void SetEndAngle(double Value);
  void SetSweepAngle(double Value);

  TPoint2D GetStartPoint() const override { return FArc.StartPoint(); }
  TPoint2D GetEndPoint() const override { return FArc.EndPoint(); }
  double GetCurveLength() const override { return FArc.CurveLength(); }
  TGeInterval GetInterval() const override;
  // Param times the length, unclamped.
  double LengthAt(double Param) const override { return FArc.LengthOfParam(0.0, Param); }
  TRect2D BoundBlock() const override;
  // The exact box of the part between the interval's bounds (taken in either order): the
  // two ends and every axis extreme of the circle between them, also past a full turn.
  TRect2D BoundBlockOf(const TGeInterval& Intv) const override;
  TPoint2D EvalPoint(double Param) const override { return FArc.EvalPoint(Param); }
  // Deriv is the derivative by the parameter: length radius * |sweep|.
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const override { return FArc.EvalPoint(Param, Deriv); }
  // Tol is not used.
  TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // The fewest points, evenly spaced, whose chords stay within |EpsChord| of the arc: one
  // point (the start, parameter 0) for a point arc, two for a chord that is close enough.
  // EParamError when EpsChord is NaN, or so small against the radius that more than
  // MaxChordSamples points would be needed.
  int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const override;
  // The same between paramFrom and paramTo (in that order, either way round); one point at
  // paramFrom for an empty range.
  int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                             TFloatDynArray& params) const override;
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const override;
  // An arc of the same circle whose ends and midpoint lie on this arc.
  bool Contains(const TGeCurve2D& ACurve) const override;
  // Same circle (radii and centres near: below 1e-6 apart, or below 1e-5 and 1e-8 of the
  // radius), same start angle and sweep; without CheckDir also the reversed arc, and any two
  // full circles.
  bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const override;
  // ParamStart + Len / (radius * |sweep|), unclamped; the end parameter for a point arc.
  double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const override;
  double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  // The arc of the same circle from the angle at PrmFrom, sweeping (PrmTo - PrmFrom) of this
  // sweep: the opposite sense when PrmFrom > PrmTo.
  std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const override;
  bool GetIsClockwise() const override { return FArc.IsClockwise; }
  // Ends within ATol and more than half a turn.
  bool GetIsClosedTol(const TGeTolerance& ATol) const override;
  void ReverseDir() override { FArc.ReverseDir(); }
  // The centre, the start point and the point a quarter turn on follow the matrix; the
  // radius follows the start point, and a mirroring matrix reverses the sense. A matrix that
  // does not scale evenly gives the circle through the new start point. EParamError when the
  // matrix is not finite.
  void TransformBy(const TMatrix2D& Mtx) override;
  std::string ToString() const override;

  bool IsFullCircle() const;
  // A full turn in the arc's own sense.
  void MakeFullCircle();
  double AngleOfPoint(const TPoint2D& pt) const { return FArc.AngleOfPoint(pt); }
  double AngleToParam(double ang) const { return FArc.AngleToParam(ang); }
  double ParamToAngle(double param) const { return FArc.ParamToAngle(param); }
  TPoint2D PointAtAngle(double theta) const { return FArc.PointAt(theta); }
  double Bulge() const { return FArc.Bulge(); }
  bool IsInArcRadiation(const TPoint2D& pnt) const { return FArc.IsInArcRadiation(pnt, 1e-6); }
  // A straight piece is a TGeLine2D, never an arc object: this always raises
  // ECircularArcParam and leaves the arc as it was.
  [[noreturn]] void DegradeLine(const TPoint2D& StartPoint, const TPoint2D& EndPoint);

  // Crossings with a line or an arc: 0, 1 or 2 entries appended to Inters, InterThis on this
  // arc. Tol is not used; the crossing tolerance is 1e-6.
  int IntersectCurve(const TGeLine2D& ACurve, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const;
  int IntersectCurve(const TGeCircularArc2D& ACurve, TList<TIntersect2D>& Inters, const TGeTolerance& Tol) const;

  // The most points that chord sampling hands out.
  static constexpr int MaxChordSamples = 10'000'000;

 private:
  explicit TGeCircularArc2D(const TArc2D& AArc);
  static TArc2D TrueArc(const TArc2D& AArc, const char* Where);

  TArc2D FArc;
};

}  // namespace orvane
