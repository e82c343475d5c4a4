#pragma once
// Any curve turned into a chain of circular arcs and straight pieces (TArc2D, line form for
// the straight ones) within a distance tolerance, by biarcs fitted on the exact curve: what a
// cutting machine needs where the drawing has splines, ellipses or rational pieces.

#include <vector>

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Export.h"

namespace orvane {

class ORVANE_API TCurveToArcs {
 public:
  TCurveToArcs() = delete;

  // Appends to Arcs the chain that stands for the stretch From..To of Curve (From < To), from
  // the curve's point at From to its point at To, and returns the largest deviation measured
  // between the stretch and the chain (see Deviation). Each biarc is kept only when it holds
  // Tol; otherwise the stretch is halved (breadth first), down to MaxDepth or until MaxPieces
  // halvings were spent, where the chord is kept whatever it measures (only a tolerance near the rounding
  // of the coordinates gets there, and the answer then exceeds Tol). A Tol below 1e-12 of the
  // coordinates' magnitude keeps the chord at once. Tol must be a finite number above 0 and
  // From below To (EParamError).
  static double Fit(const TGeCurve2D& Curve, double From, double To, double Tol, std::vector<TArc2D>& Arcs);
  // As above, with the halvings the fit may spend in Halvings (decreased by those spent): one
  // budget shared by the calls of a whole job bounds its work, whatever its curves ask for.
  static double Fit(const TGeCurve2D& Curve, double From, double To, double Tol, std::vector<TArc2D>& Arcs,
                    int& Halvings);
  static constexpr int MaxDepth = 30;
  static constexpr int MaxPieces = 1 << 10;

  // The largest distance between the stretch From..To of Curve and the chain Arcs, both ways:
  // Samples points of the stretch (evenly in parameter, ends included) against the nearest
  // chain element, and points of every element against the curve (their nearest points found
  // from the nearest sample around the point's share of the chain, so the chain must run along
  // the stretch, as a fitted one does).
  static double Deviation(const TGeCurve2D& Curve, double From, double To, const std::vector<TArc2D>& Arcs,
                          int Samples);
  // Distance from P to the arc (or straight piece).
  static double Distance(const TArc2D& Arc, const TPoint2D& P);
};

}  // namespace orvane
