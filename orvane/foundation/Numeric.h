#pragma once
// The one-variable numerics of the kernel: TSquaredFunction, a function on [0, 1] in
// Bernstein form whose coefficients bound it; TNumeric, quadrature and root finding; TBrent,
// bounded minimisation. Every loop here has a fixed bound, so no input can hang them.

#include <functional>
#include <memory>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/GeInterval.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

// A real function of one real variable, the callback of the solvers.
using TNumericFunction = std::function<double(double)>;

// The squared distance from the origin to one Bezier piece, as a function of the piece's
// parameter on [0, 1]. For a polynomial piece of degree p it is a polynomial of degree 2p.
// For a rational piece (the Z of each point its weight) it is N / D, both of degree 2p in
// Bernstein form, D with positive coefficients; the I-th coefficient of the function is then
// N_I / D_I. Either way every value on [0, 1] lies between the smallest and the largest
// coefficient, and SplitAt keeps that for both halves.
class ORVANE_API TSquaredFunction {
 public:
  // The zero function of degree 0.
  TSquaredFunction() : FNum(1, 0.0) {}
  // Points holds Degree + 1 points. EParamError when the count does not match, Degree is
  // negative, a coordinate is not finite, or (rational) a weight is not a positive number.
  TSquaredFunction(const TDynPoints3D& Points, int Degree, bool IsRational);

  int GetDegree() const { return static_cast<int>(FNum.size()) - 1; }
  // EParamError outside 0 .. GetDegree().
  double GetCtrlPoints(int I) const;
  double Value(double T) const;
  // The two halves at T, each again on [0, 1]. EParamError unless 0 <= T <= 1.
  void SplitAt(double T, TSquaredFunction& Left, TSquaredFunction& Right) const;

 private:
  std::vector<double> FNum;
  // Empty for a polynomial (the denominator 1).
  std::vector<double> FDen;
};

class ORVANE_API TNumeric {
 public:
  TNumeric() = delete;

  // The integral of F from Interval.Lower to Interval.Upper (negative for a reversed
  // interval) by the N-point Gauss-Legendre rule. EParamError for N < 1 or a bound that is
  // not finite.
  static double GaussQuadrature(const TNumericFunction& F, const TGeInterval& Interval, int N);

  // The parameters in Interval (either order of its bounds) at which F vanishes, ascending.
  // DF is F's derivative. A place where |F| comes within Tol of 0 without a clear change of
  // sign (a tangency, a double root) is one root, given at the middle of the touch; so are
  // two sign changes that close to each other. The interval is scanned in 64 cells, and a
  // cell is searched for a second root only around an extremum of F: roots that lie closer
  // together than a cell and have no extremum between them that reaches toward 0 (three or
  // more roots in one cell) may be reported as one. EParamError for bounds or Tol that are
  // not finite.
  static std::unique_ptr<TList<double>> NewtonRaphsonRoots(const TGeInterval& Interval, double Tol,
                                                           const TNumericFunction& F, const TNumericFunction& DF);
};

class ORVANE_API TBrent {
 public:
  TBrent() = delete;

  // Brent's minimisation of F on Interval (golden sections with parabolic steps). True when
  // the bracket around the minimum has shrunk to Tol * |X| + 1e-12 within MaxIter
  // iterations; X and FX then receive the minimum, otherwise they keep what they held. It
  // finds a local minimum: the global one when F has a single dip in the interval.
  // EParamError for bounds or Tol that are not finite.
  static bool BoundedBrentMinimum(const TNumericFunction& F, const TGeInterval& Interval, double& X, double& FX,
                                  double Tol, int MaxIter);
};

}  // namespace orvane
