#pragma once
// TBezierSegment2D: a cubic Bezier from P0 to P3 with the inner control points P1 and P2;
// the parameter runs over [0, 1].
//
// Contract beyond the plain evaluation:
// - The queries that search or integrate (length, nearest point, linearity, arc, sampling,
//   inflections) raise EParamError for a control point that is not finite; evaluation,
//   splitting, boxes and transforms just carry NaN along.
// - Out parameters keep what they held when an operation answers false.

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

struct ORVANE_API TBezierSegment2D {
  TPoint2D P0;
  TPoint2D P1;
  TPoint2D P2;
  TPoint2D P3;

  constexpr TBezierSegment2D() = default;
  constexpr TBezierSegment2D(const TPoint2D& AP0, const TPoint2D& AP1, const TPoint2D& AP2, const TPoint2D& AP3)
      : P0(AP0), P1(AP1), P2(AP2), P3(AP3) {}
  // The straight cubic from Start to End. Its inner points lie at a third and two thirds of
  // the chord, so the parameter runs evenly along it: chord parameters are curve parameters.
  constexpr TBezierSegment2D(const TPoint2D& Start, const TPoint2D& End)
      : P0(Start), P1(Start + (End - Start) * (1.0 / 3.0)), P2(Start + (End - Start) * (2.0 / 3.0)), P3(End) {}

  TPoint2D EvalPoint(double T) const;
  // Also the first derivative with respect to the parameter.
  TPoint2D EvalPoint(double T, TPoint2D& Deriv) const;
  // Unit vectors pointing forward along the curve at its start and at its end. Where control
  // points coincide with the end point the next distinct one gives the direction (the limit
  // of the tangent); FZero only when all four points coincide.
  TPoint2D TangentStart() const;
  TPoint2D TangentEnd() const;
  // The same curve traversed the other way: the control points in reverse order.
  void Reverse();
  void TransformBy(const TMatrix2D& Matrix);
  // De Casteljau subdivision at T into the pieces [0, T] and [T, 1], each again on [0, 1].
  // False, with Left and Right untouched, unless 0 < T < 1.
  bool Split(double T, TBezierSegment2D& Left, TBezierSegment2D& Right) const;
  void SplitMiddle(TBezierSegment2D& Left, TBezierSegment2D& Right) const;
  // The exact box of the curve: the ends and the extremes of each coordinate.
  TRect2D GetBoundBox() const;
  // The arc length. N is the order of the Gauss-Legendre rule on each panel (held to 2 .. 64);
  // panels are halved where the result has not yet settled, so cusps and loops are measured
  // to about 1e-12 relative as well.
  double CurveLength(int N = 14) const;
  // The parameter Len along the curve from parameter Start (held to [0, 1]): forward for a
  // positive Len, backward for a negative one, and 1 or 0 when Len reaches past that end.
  // The length from Start to the answer is within Tol of Len (and within 1e-12 of the curve's
  // length in any case).
  double ParamOfLength(double Start, double Len, double Tol, int N = 14) const;
  // The parameter of the nearest curve point.
  double ParamOfPoint(const TPoint2D& Pt, const TGeTolerance& Tol) const;
  // Pt lies within Tol.PointTol of the curve; Param receives the nearest parameter either way.
  bool IsOn(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param) const;
  // The distance to the nearest point of the curve: the global minimum over [0, 1], found from
  // all roots of the distance's derivative (isolated in Bernstein form) and the two ends, to
  // full precision. Tol is not needed for that and is not read. On a tie the smallest
  // parameter wins.
  double DistanceTo(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param, TPoint2D& Nearest) const;
  TPoint2D GetClosedPointTo(const TPoint2D& Pt, const TGeTolerance& Tol, double& Param) const;
  // The curve is the segment P0-P3 within Tol: it stays within Tol of the segment and never
  // runs back along it by more than Tol, so a cubic that doubles back over its chord is not
  // straight. Line receives P0-P3.
  bool IsLinear(TLine2D& Line, double Tol) const;
  // The curve is a circular arc of at most a half turn, the arc through its ends and its
  // middle point (at parameter 1/2): its chord and its sagitta exceed Tol1 (a distance), and
  // it strays from the circle by at most Tol2 (relative to the radius) more than the
  // standard cubic of that arc does (the cubic with inner legs 4/3 * tan(sweep / 4) *
  // radius, which strays by 2.7e-4 for a quarter turn and 4.2e-6 for an eighth). So the
  // standard cubics are arcs at any Tol2, and arcs that an exporter wrote with slightly
  // other legs pass at Tol2 = 1e-4. Arc receives the centre, radius, start angle and signed
  // sweep (counter-clockwise positive).
  bool IsArc(TArc2D& Arc, double Tol1, double Tol2) const;
  // The inflections: the parameters in (0, 1) at which the curvature changes sign, ascending.
  TFloatDynArray CurvatureChangedPlaces() const;
  // Points from parameter From to To (either order) whose chords stay within ChordTol of the
  // curve, at even parameter steps, with their parameters; returns their number, at least 2
  // and at most MaxCount (MaxCount <= 1 or From = To: the point at From alone). ChordTol <= 0
  // asks for MaxCount points. Pts and Params are overwritten.
  int GetSamplePoints(double ChordTol, TDynPoints2D& Pts, TFloatDynArray& Params, int MaxCount) const;
  int GetSamplePoints(double From, double To, double ChordTol, TDynPoints2D& Pts, TFloatDynArray& Params,
                      int MaxCount) const;

  friend constexpr bool operator==(const TBezierSegment2D& A, const TBezierSegment2D& B) = default;
};

}  // namespace orvane
