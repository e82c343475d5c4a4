#pragma once
// TLABSegline: one segment of a mixed outline, a straight line, a circular arc or a cubic
// Bezier, in one flat value record. P1 is always the start and P4 always the end; P2 is an
// arc's centre or a Bezier's first inner control point, P3 a Bezier's second.
//
// Every kind runs over the parameter range [0, 1], with the meaning the underlying value
// type gives it (TLine2D, TArc2D, TBezierSegment2D).
//
// An arc's sense is the sign of Bulge (positive counter-clockwise); ToArc rebuilds the arc
// from the centre P2, the start P1 (which gives the radius) and the end P4 (which gives the
// end angle). A full circle is an arc whose |Bulge| reaches CircleBulgeMark, with P1 = P4;
// IsCircle and ToArc recognise it by the one test IsCircleBulge.

#include <cmath>
#include <memory>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

class TVPolyline2D;

// The bulge that stands for a full circle: any magnitude from here up (conversions write
// the largest float, 3.4028234663852886e+38).
inline constexpr double CircleBulgeMark = 3.3e38;
// The one comparison with the mark, so that every operation agrees on what is a circle.
inline bool IsCircleBulge(double Bulge) { return std::abs(Bulge) >= CircleBulgeMark; }

struct ORVANE_API TLABSegline {
  TSegType SegType = TSegType::stLine;
  TPoint2D P1;
  TPoint2D P2;
  TPoint2D P3;
  TPoint2D P4;
  double Bulge = 0.0;

  constexpr TLABSegline() = default;
  // All fields as given, without checks.
  constexpr TLABSegline(TSegType ASegType, const TPoint2D& AP1, const TPoint2D& AP2, const TPoint2D& AP3,
                        const TPoint2D& AP4, double ABulge)
      : SegType(ASegType), P1(AP1), P2(AP2), P3(AP3), P4(AP4), Bulge(ABulge) {}

  static constexpr TLABSegline Create(TSegType ASegType, const TPoint2D& AP1, const TPoint2D& AP2,
                                      const TPoint2D& AP3, const TPoint2D& AP4, double ABulge) {
    return {ASegType, AP1, AP2, AP3, AP4, ABulge};
  }
  static constexpr TLABSegline CreateLine(const TPoint2D& AP1, const TPoint2D& AP4) {
    return {TSegType::stLine, AP1, TPoint2D::FZero, TPoint2D::FZero, AP4, 0.0};
  }
  static constexpr TLABSegline CreateLine(const TLine2D& Line) { return CreateLine(Line.P1, Line.P2); }
  static constexpr TLABSegline CreateArc(const TPoint2D& AP1, const TPoint2D& AP4, const TPoint2D& Center,
                                         double ABulge) {
    return {TSegType::stArc, AP1, Center, TPoint2D::FZero, AP4, ABulge};
  }
  // From the arc's ends and centre, Bulge from TArc2D::Bulge. An arc in line form gives the
  // stLine of its segment; a full circle gets the circle mark with its sense.
  static TLABSegline CreateArc(const TArc2D& Arc);
  static constexpr TLABSegline CreateBezier(const TPoint2D& AP1, const TPoint2D& AP2, const TPoint2D& AP3,
                                            const TPoint2D& AP4) {
    return {TSegType::stBezier, AP1, AP2, AP3, AP4, 0.0};
  }

  static constexpr double StartParam() { return 0.0; }
  static constexpr double EndParam() { return 1.0; }

  // Queries.

  // stLine: P1 equals P4; stBezier: all four points equal P1 (both within 1e-6). An arc is
  // never a point.
  bool IsPoint() const;
  // stLine: the ends differ (1e-6; Tol is not read). stArc: false. stBezier: P2 and P3 lie
  // on the infinite line P1-P4 within Tol and the ends differ by more than Tol.
  bool IsLine(double Tol) const;
  bool IsCircle() const { return SegType == TSegType::stArc && IsCircleBulge(Bulge); }
  TPoint2D PointByParam(double Param) const;
  // The derivative with respect to the parameter (not normalised). A line's is P4 - P1.
  TPoint2D TangentVector(double Param) const;
  // The parameter of the nearest point; Tol is read only for a Bezier.
  double ParamByPoint(const TPoint2D& Point, double Tol) const;
  // The distance to a line segment, with the clamped parameter of the nearest point. Arcs
  // and Beziers raise Exception (not provided for those kinds).
  double DistanceTo(const TPoint2D& Point, double& Param) const;
  // The exact box of each kind.
  TRect2D BoundBox() const;
  // Lines and arcs exactly; a Bezier as the length of Sample(ParamStep).
  double Length(double ParamStep) const;
  // The segment as a vertex polyline: the two ends of a line, Round(1 / ParamStep) + 1
  // points of an arc evenly in angle, and a Bezier (or a line of length 0) at parameter
  // steps of ParamStep with both ends exact. EParamError unless ParamStep is a finite
  // number above 0 and 1 / ParamStep stays within MaxSampleSteps.
  std::unique_ptr<TVPolyline2D> Sample(double ParamStep) const;
  static constexpr double MaxSampleSteps = 1e7;

  // Conversion.

  // P1 to P4; Exception for an arc (a Bezier gives its chord).
  TLine2D ToLine() const;
  // Exception unless stArc; EParamError for a Bulge that is NaN, which has no sense.
  TArc2D ToArc() const;
  // Exception unless stBezier.
  TBezierSegment2D ToBezierSegment() const;
  // In place: a segment that IsLine(Tol) becomes an stLine with zero inner points; true
  // then, false and unchanged otherwise.
  bool TryToLine(double Tol);

  // Transforms: new records, except the two named Inplace.

  TLABSegline RoundTo(int Accuracy) const;
  // All four points move, whatever the kind (a line's P2, P3 carry no meaning).
  TLABSegline Translate(const TPoint2D& TransVec) const;
  // Only the points that carry meaning for the kind move; a line's zero fields stay zero.
  void TranslateInplace(const TPoint2D& TransVec);
  TLABSegline Rotate(double Radian) const;
  TLABSegline RotateBy90() const;
  TLABSegline RotateBy_90() const;
  // (x, y) -> (-x, y); an arc's Bulge is negated, so the mirrored arc has the mirrored shape.
  TLABSegline YMirror() const;
  // The points through Matrix. A reflecting matrix (negative determinant) reverses the
  // sense of an arc, so its Bulge is negated: the result is the true mirror image. A matrix
  // that does not map circles to circles has no exact arc image and is not provided for.
  TLABSegline Transform(const TMatrix2D& Matrix) const;
  // The same points traversed the other way: an arc keeps its centre and negates Bulge.
  TLABSegline Reverse() const;
  void ReverseInplace();

  // Crossings.

  // Crossings with the segment SegLine within Tol: points and collinear overlaps, appended.
  // True when this call found something.
  bool CrossWithSegLine(const TLine2D& SegLine, TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                        double Tol) const;
  // Crossings with another mixed segment: points, collinear line overlaps, arc overlaps and
  // Bezier overlaps, appended. True when the four lists together grew in this call.
  bool CrossWithLABSegline(const TLABSegline& LABSegLine, TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                           TList<TArc2D>& CrossArcs, TList<TBezierSegment2D>& CrossBeziers, double Tol) const;

  friend constexpr bool operator==(const TLABSegline& A, const TLABSegline& B) = default;
};

namespace internal {
// Twice the signed area that the segment sweeps about the origin, (integral of x dy - y dx):
// exact for every kind. Summed over a closed outline it gives twice its area.
ORVANE_API double SweptArea2(const TLABSegline& Seg);
// Appends to Xs the abscissae at which the segment crosses the horizontal line at height Y,
// counting a crossing when exactly one end of a y-monotone piece lies above Y (the usual
// half-open rule), exact for every kind. Summed over a closed outline, the parity of the
// crossings right of a point tells inside from outside.
ORVANE_API void HorizontalCrossings(const TLABSegline& Seg, double Y, TFloatDynArray& Xs);
// The distance from Pt to the segment, exact for every kind.
ORVANE_API double DistanceToSeg(const TLABSegline& Seg, const TPoint2D& Pt);
}  // namespace internal

}  // namespace orvane
