#pragma once
// TLine2D: a directed segment from P1 to P2 (parameter 0 at P1, 1 at P2) that also serves
// as the infinite line through its two points.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

struct ORVANE_API TLine2D {
  TPoint2D P1;
  TPoint2D P2;

  constexpr TLine2D() = default;
  constexpr TLine2D(const TPoint2D& AP1, const TPoint2D& AP2) : P1(AP1), P2(AP2) {}

  constexpr TPoint2D Vector() const { return P2 - P1; }
  // Unit vector from P1 to P2; FZero for a segment of length 0.
  TPoint2D GetDirection() const { return Vector().Normal(); }
  double Length() const { return P1.DistanceTo(P2); }
  constexpr TPoint2D EvalPoint(double T) const { return P1 + (P2 - P1) * T; }
  // Parameter of the projection of Pt on the infinite line; 0 for a segment of length 0.
  double ParamOfPoint(const TPoint2D& Pt) const;
  // Distance to the infinite line (to P1 when the segment has length 0).
  double DistanceDirect(const TPoint2D& Pt) const;
  double DistanceDirect(const TPoint2D& Pt, double& Param) const;
  // Distance to the segment, with the clamped parameter in [0, 1] and the nearest point.
  double DistanceLimit(const TPoint2D& Pt) const;
  double DistanceLimit(const TPoint2D& Pt, double& Param, TPoint2D& Nearest) const;
  bool IsOn(const TPoint2D& Pt, double Tol) const;
  // Param receives the clamped parameter of the nearest point when Pt is on the segment.
  bool IsOn(const TPoint2D& Pt, double Tol, double& Param) const;
  bool IsPointNearBySegment(const TPoint2D& Pt, double Tol, double& Dist, TPoint2D& Nearest) const;
  // Intersection of the two infinite lines: 1 with the point in Pt; 2 when they are parallel
  // or coincide (no single point), also when either segment has length 0. Pt is only
  // written for 1.
  int Cross(const TLine2D& Line, TPoint2D& Pt) const;
  // Relation of the two infinite lines: 1 one crossing point in Pt; 0 parallel and apart;
  // 2 coincident. Tol1 bounds the sine of the angle below which the lines are parallel,
  // Tol2 the distance below which parallel lines coincide.
  int RelationWithLine(const TLine2D& Line, TPoint2D& Pt, double Tol1, double Tol2) const;
  // Relation of the two segments: 0 no common point; 1 one common point in OutP1 (a shared
  // end point is given exactly); 2 a collinear overlap from OutP1 to OutP2, ordered along
  // this segment. Tol is the coincidence distance, ParallelTol the sine below which the
  // segments count as parallel.
  int RelationWithSegLine(const TLine2D& Line, TPoint2D& OutP1, TPoint2D& OutP2, double Tol, double ParallelTol) const;
  // Where the line reaches height Y; false when it is horizontal.
  bool CalculateX(double Y, double& X, double& Param) const;
  // The point of the infinite line at that abscissa / ordinate. EGeometry when the line is
  // vertical (PointAtX) or horizontal (PointAtY), where there is no single such point.
  TPoint2D PointAtX(double X) const;
  TPoint2D PointAtY(double Y) const;
  // The segment of the same length, turned a quarter counter-clockwise about the midpoint.
  TLine2D PerpendicularBisector() const;
  TRect2D GetBoundBox() const { return TRect2D::CreateNormal(P1, P2); }
  TLine2D Rotate(double Radian) const { return {P1.RotateBy(Radian), P2.RotateBy(Radian)}; }
  TLine2D TranslatedLine(const TPoint2D& Vec) const { return {P1 + Vec, P2 + Vec}; }
  // Same direction, length Len, keeping P1 when FromStart and P2 otherwise. A segment of
  // length 0 has no direction and comes back unchanged.
  TLine2D Stretch(double Len, bool FromStart) const;

  friend constexpr bool operator==(const TLine2D& A, const TLine2D& B) = default;
};

inline constexpr TLine2D Line2D(const TPoint2D& P1, const TPoint2D& P2) { return {P1, P2}; }

}  // namespace orvane
