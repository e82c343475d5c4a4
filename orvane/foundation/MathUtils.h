#pragma once
// Comparison under an explicit tolerance, rounding, and the small numeric helpers that the
// whole kernel shares. There is no global tolerance: every comparison is told its own.

#include <cstdint>
#include <numbers>

#include "orvane/foundation/Export.h"

namespace orvane {

inline constexpr double Pi = std::numbers::pi;
inline constexpr double TwoPi = 2.0 * std::numbers::pi;
inline constexpr double HalfPi = 0.5 * std::numbers::pi;
// The largest double; the neutral answer of averages over nothing and the edge of an empty box.
inline constexpr double MaxDouble = 1.7976931348623157e308;
// The tolerance of every operation that takes none of its own: points this near coincide,
// values this near are equal, angles this near (in radians) are one angle.
inline constexpr double DefaultTol = 1e-6;

// Tolerance bounds are inclusive: a difference of exactly Tol is still equal, so that
// exactly one of fEqual, fGreat and fSmall holds for any two finite values.
inline bool fEqual(double A, double B, double Tol) { return (A > B ? A - B : B - A) <= Tol; }
inline bool fGreat(double A, double B, double Tol) { return A - B > Tol; }
inline bool fSmall(double A, double B, double Tol) { return B - A > Tol; }
inline bool fEqual(long double A, long double B, long double Tol) { return (A > B ? A - B : B - A) <= Tol; }
inline bool fGreat(long double A, long double B, long double Tol) { return A - B > Tol; }
inline bool fSmall(long double A, long double B, long double Tol) { return B - A > Tol; }

// Largest integer not above X; EConvertError when X is not finite or leaves the 32-bit range.
ORVANE_API std::int32_t Floorf(double X);

// The two angles coincide modulo 2*pi, within DefaultTol radians.
ORVANE_API bool AngleEqual(double A, double B);

// Three-way comparison under an absolute tolerance: 0 when |A - B| <= Eps. With Eps = 0 a
// relative resolution of 1e-12 stands in, as the runtime's comparison does.
ORVANE_API int CompareValue(double A, double B, double Eps = 0.0);
ORVANE_API bool SameValue(double A, double B, double Eps = 0.0);

// Round half to even, the one rounding of the kernel (2.5 -> 2, 3.5 -> 4, -2.5 -> -2).
// EConvertError when Value is not finite or leaves the 64-bit range.
ORVANE_API std::int64_t Round(double Value);
// Truncation toward zero, with the same range check.
ORVANE_API std::int64_t Trunc(double Value);

class ORVANE_API TMathUtils {
 public:
  TMathUtils() = delete;

  static bool FloatEquals(double A, double B, double Tol) { return fEqual(A, B, Tol); }
  static bool FloatGreater(double A, double B, double Tol) { return A - B > Tol; }
  static bool FloatGreaterEquals(double A, double B, double Tol) { return B - A <= Tol; }
  static bool FloatLess(double A, double B, double Tol) { return B - A > Tol; }
  static bool FloatLessEquals(double A, double B, double Tol) { return A - B <= Tol; }
  // -1 when A lies below B by more than Tol, 1 when above, 0 otherwise.
  static int CompareFloat(double A, double B, double Tol);

  static bool IsInRange(double V, double Lo, double Hi, bool IncludeLo, bool IncludeHi);
  static bool IsInFloatRange(double V, double Lo, double Hi, bool IncludeLo, bool IncludeHi, double Tol);
  // 0 when Value lies in [Lo, Hi] within Tol, else its distance to the nearer end.
  static double DistToRange(double Value, double Lo, double Hi, double Tol);

  // (Index + Step) wrapped into 0 .. Count - 1, also for negative Step. Count must be positive
  // (EParamError otherwise).
  static int CycInc(int Index, int Step, int Count);
  // The same for doubles, wrapped into [0, Period); Period must be positive.
  static double CycInc(double Value, double Step, double Period);

  // Real roots of A2*x^2 + A1*x + A0 with X1 <= X2; false when there is none. A vanishing A2
  // leaves the linear equation, whose single root is given in both outputs.
  static bool CalcQuadraticEquation(double A2, double A1, double A0, double& X1, double& X2);
};

}  // namespace orvane
