#pragma once
// The Bezier pieces of a spline as the queries read them: homogeneous control points
// (x*w, y*w, w) of any degree on the local parameter [0, 1], with the spline parameters of
// their span. Shared by the measuring and the recognition code; not part of the interface.

#include <vector>

#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/curves/LengthSamples.h"

namespace orvane::internal {

struct TSplinePiece {
  TDynPoints3D Hom;
  double T0 = 0.0, T1 = 0.0;
  // The plane control points' box: the piece lies in it, weights being positive.
  TRect2D Box;
  bool Rational = false;
  double Length = 0.0;
  double ToSpline(double T) const { return T0 + T * (T1 - T0); }
};

// Everything the queries keep between calls; dropped by Invalidate.
struct TSplineQueryCache {
  std::vector<TSplinePiece> Pieces;
  // Lengths up to the start of each piece, one more entry than pieces; filled on demand.
  std::vector<double> CumLength;
  bool LengthsDone = false;
  TLengthSamples Samples;
  bool SamplesDone = false;
  // The pieces could be matched to the knot spans.
  bool Ok = false;
};

// The point of a homogeneous piece at T, in plane form, and optionally its first derivative.
TPoint2D PieceEval(const TDynPoints3D& Hom, double T, TPoint2D* Deriv = nullptr);
// |C'(T)|.
double PieceSpeed(const TDynPoints3D& Hom, double T);
// The arc length of the piece between local parameters A and B (A <= B), to about 1e-13
// relative.
double PieceLength(const TDynPoints3D& Hom, double A, double B);
// The piece restricted to [A, B], again on [0, 1].
TDynPoints3D PieceSub(const TDynPoints3D& Hom, double A, double B);
// The parameters in (0, 1) where Dir . C(t) has a stationary point, ascending.
std::vector<double> PieceStationary(const TDynPoints3D& Hom, const TPoint2D& Dir);
// The parameters in [0, 1] where |C(t) - Q| may be smallest: the ends and the stationary
// points of the distance, ascending.
std::vector<double> PieceDistanceCandidates(const TDynPoints3D& Hom, const TPoint2D& Q);

}  // namespace orvane::internal
