#pragma once
// TGeInterval: a closed parameter interval whose ends compare within Tol.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

struct ORVANE_API TGeInterval {
  double Lower = 0.0;
  double Upper = 0.0;
  bool HasLower = false;
  bool HasUpper = false;
  double Tol = DefaultTol;

  constexpr TGeInterval() = default;
  // Sets both bounds present. The bounds are taken as given: a reversed interval has a
  // negative length and contains nothing beyond its tolerance.
  TGeInterval(double ALower, double AUpper, double ATol = 1e-6);

  constexpr double GetLength() const { return Upper - Lower; }
  constexpr bool Contains(double T) const { return T >= Lower - Tol && T <= Upper + Tol; }
  constexpr bool IsEqualAtLower(double T) const { return (T > Lower ? T - Lower : Lower - T) <= Tol; }
  constexpr bool IsEqualAtUpper(double T) const { return (T > Upper ? T - Upper : Upper - T) <= Tol; }
  // The common interval; false (and Common untouched) when it is empty beyond Tol. A common
  // part shorter than Tol is returned as a point interval.
  bool IntersectWith(const TGeInterval& Other, TGeInterval& Common) const;
  // Other begins where this one ends, within Tol.
  constexpr bool IsContionousUpper(const TGeInterval& Other) const { return IsEqualAtUpper(Other.Lower); }

  friend ORVANE_API TGeInterval operator+(const TGeInterval& A, double Shift);
  // The interval mirrored at 0.
  friend ORVANE_API TGeInterval operator-(const TGeInterval& A);
};

}  // namespace orvane
