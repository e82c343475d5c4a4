#pragma once
// Evaluation of curves made of pieces (piecewise and composite curves): a parameter is taken
// to its piece by the curve's SubParam, and the piece answers. A curve without pieces
// answers the origin.

#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

template <class TPieced>
TPoint2D EvalOnPiece(const TPieced& Curve, double Param) {
  const TGeCurve2D* c = nullptr;
  const double u = Curve.SubParam(Param, c, false);
  return c == nullptr ? TPoint2D::FZero : c->EvalPoint(u);
}

template <class TPieced>
TPoint2D EvalOnPiece(const TPieced& Curve, double Param, TPoint2D& Deriv) {
  const TGeCurve2D* c = nullptr;
  const double u = Curve.SubParam(Param, c, false);
  if (c == nullptr) {
    Deriv = TPoint2D::FZero;
    return TPoint2D::FZero;
  }
  return c->EvalPoint(u, Deriv);
}

// The derivative from the left takes a joint to the piece that ends there.
template <class TPieced>
TPoint2D DerivOnPiece(const TPieced& Curve, double Param, bool Left) {
  const TGeCurve2D* c = nullptr;
  const double u = Curve.SubParam(Param, c, Left);
  if (c == nullptr) return TPoint2D::FZero;
  return Left ? c->DerivLeft(u) : c->DerivRight(u);
}

}  // namespace orvane::internal
