#pragma once
// TGeometryUtils: where a cubic Bezier crosses a segment, an arc or another Bezier, found by
// subdivision with box rejection down to pieces smaller than the tolerance; and two small
// rigid-motion and angle utilities. Two Bezier pieces that can only meet once, at an angle
// of 6 degrees or more, are not subdivided further: Newton's method gives their crossing
// to full precision.
//
// Tol (drawing units) ends the subdivision: curves that pass within Tol of each other count
// as touching, and a touch is reported once, where the curves come nearest. Tol must be a finite number above 0 (EParamError otherwise). A Bezier
// with a control point that is not finite crosses nothing: the answer is false and the
// lists stay as they were. Every subdivision is bounded in depth and in the number of piece
// pairs it visits, so curves that run along each other cannot explode into millions of
// pairs.

#include <vector>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Nullable.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

// One raw crossing candidate: the point, its parameter on the first Bezier, and how far
// apart the two pieces were there (0 for a proper crossing).
struct TCrossRec {
  TPoint2D Pt;
  double Param = 0.0;
  double Dist = 0.0;
};

class ORVANE_API TGeometryUtils {
 public:
  TGeometryUtils() = delete;

  // Crossings of Bezier with the segment Segline, appended in Bezier order, one per crossing
  // (a run of touching pieces along a tangency gives the one nearest the line). A straight
  // Bezier (within 1e-6) crosses as a segment and reports a collinear overlap as a line in
  // CrossLines; a curved one never adds to CrossLines. CrossPtParams, when given, receives
  // the Bezier parameter of each point. True when CrossPts or CrossLines grew.
  static bool BezierCrossWithSegline(const TBezierSegment2D& Bezier, const TLine2D& Segline, double Tol,
                                     TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                                     TList<double>* CrossPtParams = nullptr);
  // Crossings of Bezier with Arc (either sense, full circles too), ordered along the Bezier,
  // crossings closer than 2 * Tol merged. True when CrossPts grew.
  static bool BezierCrossWithArc(const TBezierSegment2D& Bezier, const TArc2D& Arc, double Tol,
                                 TList<TPoint2D>& CrossPts, TList<double>* CrossPtParams = nullptr);
  // Crossings of two Beziers, ordered along BezierA, crossings closer than 2 * Tol merged.
  // Where the two share a stretch (one is a piece of the other, or an end piece of one is an
  // end piece of the other), that stretch of BezierA is added to CrossBeziers and nothing
  // else. Two straight Beziers cross as segments and report a collinear overlap in
  // CrossLines. True when an overlap was found or CrossPts or CrossLines grew.
  static bool BezierCrossWithBezier(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB, double Tol,
                                    TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                                    TList<TBezierSegment2D>& CrossBeziers, TList<double>* CrossPtParams = nullptr);

  // The one motion p -> R(EquRadian) p + EquTrans equal to the motions
  // p -> R(RotateRadians[i]) p + Transs[i] applied in list order. False, outputs untouched,
  // when the lists differ in length; the empty sequence is the identity.
  static bool CalcEqualRotateAndTrans(const TFloatDynArray& RotateRadians, const TDynPoints2D& Transs,
                                      double& EquRadian, TPoint2D& EquTrans);
  // The same for two steps; always true.
  static bool CalcEqualRotateAndTrans(double Radian1, const TPoint2D& Trans1, double Radian2, const TPoint2D& Trans2,
                                      double& EquRadian, TPoint2D& EquTrans);
  // The line from P2 along the bisector of the corner P1, P2, P3, one unit-arm midpoint
  // away. At a straight corner (the arms parallel within 1e-6) the perpendicular to the
  // first arm, as long as that arm, turned counter-clockwise.
  static TLine2D CalcAngleBisector(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3);

 private:
  // A candidate with the parameter span of the leaf of the first curve that gave it: leaves
  // of one crossing are contiguous along that curve, leaves of two crossings at one point
  // (a curve that comes back through it) are not.
  // Reach: how far from an exactly solved crossing leaves of neighbouring pieces may still
  // pass within Tol (it grows as the crossing gets shallower); 0 for a leaf.
  struct TLeafRec : TCrossRec {
    double T0 = 0.0;
    double T1 = 0.0;
    double Reach = 0.0;
  };
  using TCrossRecs = std::vector<TLeafRec>;

  static bool IsBezierOverlap(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB, double Tol,
                              TList<TBezierSegment2D>& CrossBeziers);
  // Bezier lies in the frame of the segment (0, 0)-(L, 0).
  static void DoBezierCrossWithSegline(const TBezierSegment2D& Bezier, double L, double Tol,
                                       TNullable<TPoint2D>& Last, TList<TPoint2D>& CrossPts,
                                       TList<double>* CrossPtParams);
  static void DoBezierCrossWithArc(const TBezierSegment2D& Bezier, const TArc2D& Arc, double A0, double A1,
                                   double Tol, TCrossRecs& Records);
  static void DoBezierCrossWithBezier(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB, double Tol,
                                      TCrossRecs& Records);
  static void AddCrossPt(TCrossRecs& Records, const TPoint2D& Pt, double Param, double Dist, double T0, double T1,
                         double Reach = 0.0);
  static void RemoveCloseCrossPts(TCrossRecs& Records, TList<TPoint2D>& CrossPts, TList<double>* CrossPtParams,
                                  double Tol);
};

}  // namespace orvane
