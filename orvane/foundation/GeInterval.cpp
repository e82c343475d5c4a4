#include "orvane/foundation/GeInterval.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Exception.h"

namespace orvane {

TGeInterval::TGeInterval(double ALower, double AUpper, double ATol)
    : Lower(ALower), Upper(AUpper), HasLower(true), HasUpper(true), Tol(ATol) {
  if (std::isnan(ALower) || std::isnan(AUpper) || std::isnan(ATol)) {
    throw EGeometry("[Error] TGeInterval.Create: bound is not a number (Lower %s, Upper %s)", FloatToStr(ALower),
                    FloatToStr(AUpper));
  }
}

bool TGeInterval::IntersectWith(const TGeInterval& Other, TGeInterval& Common) const {
  const double lo = std::max(Lower, Other.Lower);
  const double hi = std::min(Upper, Other.Upper);
  if (lo - hi > Tol) return false;
  Common = TGeInterval(lo, std::max(lo, hi), Tol);
  return true;
}

TGeInterval operator+(const TGeInterval& A, double Shift) {
  TGeInterval r = A;
  r.Lower += Shift;
  r.Upper += Shift;
  return r;
}

TGeInterval operator-(const TGeInterval& A) {
  TGeInterval r = A;
  r.Lower = -A.Upper;
  r.Upper = -A.Lower;
  std::swap(r.HasLower, r.HasUpper);
  return r;
}

}  // namespace orvane
