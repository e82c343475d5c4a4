#pragma once
// TCadBasicAlgo: a cubic Bezier turned into a chain of circular arcs within a distance
// tolerance, the small circle constructions that the fit needs, the signed area of a point
// list and a test of a point chain against a rectangle.
//
// The fitted chain starts at the Bezier's start, ends at its end, and each piece starts
// where the one before ended, in the Bezier's own direction at every joint (up to the
// merging of two near-equal arcs into one and of very flat arcs into lines, which are kept
// only where they hold the tolerance too). Every point of the Bezier lies within disTol of
// the chain: each piece is checked over its whole span of the Bezier, densely, and split
// when it strays. Neighbouring arcs that lie on nearly one circle are then joined into one
// arc where that arc holds the tolerance too. Straight pieces come in the line form of TArc2D.

#include <memory>
#include <vector>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/BezierSegment2D.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

class ORVANE_API TCadBasicAlgo {
 public:
  TCadBasicAlgo() = delete;

  // The arcs (and line-form records) of the chain, in order along the Bezier. disTol, the
  // allowed distance in drawing units, must be a finite number above 0, and the control
  // points finite (EParamError otherwise). A Bezier straight within 1e-4, a point Bezier
  // included, gives one line-form record. The splitting is bounded: halving stops at
  // MaxFitDepth and after MaxFitPieces pieces, which only a tolerance near the rounding of
  // the coordinates can reach; the pieces there are kept as they are.
  static std::unique_ptr<TList<TArc2D>> Bezier2Arcs(const TBezierSegment2D& bezierSeg, double disTol);
  static constexpr int MaxFitDepth = 40;
  static constexpr int MaxFitPieces = 1 << 16;

  // The centre of the circle through StartPt and EndPt with the tangent TangentL at StartPt:
  // false when the normal at the start and the chord's bisector are parallel.
  static bool CalCenter(const TPoint2D& StartPt, const TPoint2D& EndPt, const TPoint2D& TangentL, TPoint2D& Center);
  // The centre of the circle through both points with the tangent EndTangent at AEndPt, and
  // CW, the sense of the arc that arrives there along EndTangent. Where the normal and the
  // bisector are parallel the centre is the chord's midpoint.
  static bool CalCirCenter(const TPoint2D& AStartPt, const TPoint2D& AEndPt, const TPoint2D& EndTangent, bool& CW,
                           TPoint2D& ACenter);
  // The shoelace area of the closed list, positive counter-clockwise; 0 for at most two
  // points.
  static double CalcArea(const TList<TPoint2D>& ptList);
  static double CalcArea(const TDynPoints2D& ptList);
  // The open chain of points enters the rectangle: a point inside or on its border, or an
  // edge that passes strictly through its interior. A chain that surrounds the rectangle
  // without touching it does not.
  static bool IsHullIntersectWithRect(const TDynPoints2D& AHull, const TRect2D& ARect);

 private:
  // One fitted piece with the stretch of the Bezier it stands for.
  struct TFitPiece {
    TArc2D Arc;
    TBezierSegment2D Span;
    bool Merged = false;  // the arc stands for Span and for neighbouring stretches too
  };
  using TFitPieces = std::vector<TFitPiece>;

  static void BiarcFit(const TBezierSegment2D& Bezier, double Tol, int Depth, int& Budget, TFitPieces& Arcs);
  static TArc2D Degenerate2Line(const TBezierSegment2D& Bezier);
  // The largest distance from the Bezier to the nearer of the (one or two) arcs, over the
  // whole span; once it is seen to exceed Tol, the first value beyond Tol.
  static double MaxDeviation(const TBezierSegment2D& Bezier, const TArc2D* Arcs, int Count, double Tol);
};

}  // namespace orvane
