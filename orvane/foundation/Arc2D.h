#pragma once
// TArc2D: a circular arc. StartAngle is the polar angle of the start point seen from Center;
// the sweep is signed (negative clockwise) and IsClockwise follows its sign. The parameter
// runs linearly in the angle from 0 at the start to 1 at the end.
//
// Line form: an arc degenerated into a straight segment (DegradeLine, or a straight piece of
// a fitted arc list) has IsLine set, Center holding the start point and Radius and
// StartAngle holding the end point's X and Y. Every operation below honours that form and
// then behaves as the segment.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

struct ORVANE_API TArc2D {
  double SweepAngle = 0.0;
  bool IsLine = false;
  double StartAngle = 0.0;
  TPoint2D Center;
  double Radius = 0.0;
  bool IsClockwise = false;

  constexpr TArc2D() = default;
  // EGeometry when a value is not finite or the radius is negative.
  TArc2D(const TPoint2D& ACenter, double ARadius, double AStartAngle, double ASweepAngle);

  // The arc from From to To whose bulge is the tangent of a quarter of its sweep (positive
  // counter-clockwise). A zero bulge, or From equal to To, gives the line form.
  static TArc2D CreateBulge(const TPoint2D& From, const TPoint2D& To, double Bulge);
  // The arc about Center from From towards To, counter-clockwise when IsCcw. The radius is
  // From's distance; To gives the end angle only. When the end angle equals the start angle
  // the result is the full circle.
  static TArc2D CreateCenter(const TPoint2D& Center, const TPoint2D& From, const TPoint2D& To, bool IsCcw);
  // The arc from From to To of radius |Radius|, clockwise when Clockwise: the minor arc for a
  // positive radius, the major arc for a negative one. EGeometry when the points coincide
  // or |Radius| is shorter than half the chord (beyond a relative 1e-9, which gives the
  // half circle).
  static TArc2D CreateRadius(const TPoint2D& From, const TPoint2D& To, double Radius, bool Clockwise);
  // The arc from From to To with the signed Sweep. EGeometry "SweepAngle is too close to 0"
  // for |Sweep| < 1e-9, and EGeometry when |Sweep| reaches a full turn or the points coincide.
  static TArc2D CreateAngle(const TPoint2D& From, const TPoint2D& To, double Sweep);
  // The arc from P1 through P2 to P3. Collinear points (within a relative 1e-12) give the
  // line form from P1 to P3.
  static TArc2D CreateCross(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3);
  // The full circle about Center starting and ending at From; clockwise when Clockwise.
  static TArc2D CreateCircle(const TPoint2D& Center, const TPoint2D& From, bool Clockwise);

  void DegradeLine(const TPoint2D& AStartPoint, const TPoint2D& AEndPoint);
  // The segment of the line form, or the chord of a true arc.
  TLine2D AsLine() const { return {StartPoint(), EndPoint()}; }

  constexpr double GetSweepAngle() const { return SweepAngle; }
  constexpr void SetSweepAngle(double Sweep) {
    SweepAngle = Sweep;
    IsClockwise = Sweep < 0.0;
  }
  constexpr double EndAngle() const { return StartAngle + SweepAngle; }
  TPoint2D StartPoint() const;
  TPoint2D EndPoint() const;
  // The point of the circle at polar angle Theta.
  TPoint2D PointAt(double Theta) const;
  TPoint2D EvalPoint(double Param) const;
  TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const;
  // Derivative of the point with respect to the parameter (length = radius * |sweep|).
  TPoint2D CalcDerivative(double Param) const;
  constexpr double ParamToAngle(double Param) const { return StartAngle + Param * SweepAngle; }
  // The parameter of the polar angle Angle, counted from the start in the sweep's sense and
  // wrapped once around the circle, so it lies in [0, 2*pi / |sweep|). 0 for a zero sweep.
  double AngleToParam(double Angle) const;
  // Polar angle of Pt about Center, in [0, 2*pi).
  double AngleOfPoint(const TPoint2D& Pt) const { return (Pt - Center).Angle(); }
  // Parameter of the nearest arc point, in [0, 1].
  double ParamOfPoint(const TPoint2D& Pt) const;
  // The ray from Center through Pt meets the arc, or passes within Tol (along the circle)
  // of one of its ends.
  bool IsInArcRadiation(const TPoint2D& Pt, double Tol) const;
  // Pt lies within Tol of the arc; Param receives the parameter of the nearest arc point.
  bool IsOn(const TPoint2D& Pt, double Tol, double& Param) const;
  TPoint2D GetClosedPointTo(const TPoint2D& Pt, double& Param) const;
  double CurveLength() const;
  // Arc length from parameter From to To, negative when To lies before From.
  double LengthOfParam(double From, double To) const;
  // Tangent of a quarter of the sweep; 0 for the line form.
  double Bulge() const;
  // The exact box: the two ends and every axis extreme of the circle inside the sweep.
  TRect2D GetBoundBox() const;
  // N points evenly spaced in angle, both ends included (N = 1: the start alone; N <= 0:
  // none).
  void GetPoints(int N, TDynPoints2D& Pts) const;
  // Points between the parameters From and To (either order) whose chords stay within
  // ChordTol of the arc, with their parameters; returns their number. The angular step is
  // the largest whose sagitta radius * (1 - cos(step / 2)) stays within ChordTol; the count
  // is at least 2 (the two ends) and at most MaxCount. A zero radius or an empty range
  // gives the single point at From.
  int GetSamplePoints(double From, double To, double ChordTol, TDynPoints2D& Pts, TFloatDynArray& Params,
                      int MaxCount) const;
  // The same points traversed the other way; StartAngle is kept in [0, 2*pi).
  void ReverseDir();

  // Crossings with the segment Line within Tol: 0, 1 or 2, ordered along Line. Points closer
  // than Tol count once (tangency); a point within Tol of an end of Line or of the arc is
  // given as that end. ParamThis is on the arc, ParamThat on the line, both in [0, 1]. The
  // line form crosses as a segment and reports a collinear overlap by its two ends.
  int Intersect(const TLine2D& Line, TIntersectPoint2D& I1, TIntersectPoint2D& I2, double Tol) const;
  // As Intersect, for the crossing of mixed segments.
  int CrossWithSegline(const TLine2D& Line, TIntersectPoint2D& I1, TIntersectPoint2D& I2, double Tol) const {
    return Intersect(Line, I1, I2, Tol);
  }
  // Crossings of two arcs within 1e-6: 0, 1 or 2, tangency counting once. Two arcs on the
  // same circle report the end points that one has on the other.
  int Intersect(const TArc2D& Arc, TIntersectPoint2D& I1, TIntersectPoint2D& I2) const;
  // Crossings and overlaps in one code: bits 0-1 the number of points (0, 1, 2) in Pt1, Pt2;
  // bits 2-3 the number of overlap arcs (value 4 for one, 8 for two) in Arc1, Arc2. Overlap
  // arcs run in this arc's sense; an overlap shorter than 1e-6 counts as a point.
  int CrossWithArc(const TArc2D& Arc, TPoint2D& Pt1, TPoint2D& Pt2, TArc2D& Arc1, TArc2D& Arc2) const;
};

}  // namespace orvane
