#include "orvane/foundation/MathUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"

namespace orvane {

std::int32_t Floorf(double X) {
  const double f = std::floor(X);
  if (!(f >= -2147483648.0 && f <= 2147483647.0)) {
    throw EConvertError("[Error] Floorf: %s is not a 32-bit integer", FloatToStr(X));
  }
  return static_cast<std::int32_t>(f);
}

bool AngleEqual(double A, double B) { return std::fabs(std::remainder(A - B, TwoPi)) <= DefaultTol; }

int CompareValue(double A, double B, double Eps) {
  if (Eps == 0.0) {
    Eps = std::max(std::min(std::fabs(A), std::fabs(B)) * 1e-12, 1e-12);
  }
  if (std::fabs(A - B) <= Eps) return 0;
  return A < B ? -1 : 1;
}

bool SameValue(double A, double B, double Eps) { return CompareValue(A, B, Eps) == 0 && !std::isnan(A - B); }

namespace {
// 2^63 as a double; every double strictly below it converts to int64 without overflow.
constexpr double Two63 = 9223372036854775808.0;

std::int64_t ToInt64(double Rounded, double Original, const char* Where) {
  if (!(Rounded >= -Two63 && Rounded < Two63)) {
    throw EConvertError("[Error] %s: %s is not a 64-bit integer", Where, FloatToStr(Original));
  }
  return static_cast<std::int64_t>(Rounded);
}
}  // namespace

std::int64_t Round(double Value) {
  // nearbyint under the default rounding mode rounds exact halves to the even neighbour.
  return ToInt64(std::nearbyint(Value), Value, "Round");
}

std::int64_t Trunc(double Value) { return ToInt64(std::trunc(Value), Value, "Trunc"); }

int TMathUtils::CompareFloat(double A, double B, double Tol) {
  if (fEqual(A, B, Tol)) return 0;
  return A < B ? -1 : 1;
}

bool TMathUtils::IsInRange(double V, double Lo, double Hi, bool IncludeLo, bool IncludeHi) {
  const bool aboveLo = IncludeLo ? V >= Lo : V > Lo;
  const bool belowHi = IncludeHi ? V <= Hi : V < Hi;
  return aboveLo && belowHi;
}

bool TMathUtils::IsInFloatRange(double V, double Lo, double Hi, bool IncludeLo, bool IncludeHi, double Tol) {
  const bool aboveLo = IncludeLo ? FloatGreaterEquals(V, Lo, Tol) : FloatGreater(V, Lo, Tol);
  const bool belowHi = IncludeHi ? FloatLessEquals(V, Hi, Tol) : FloatLess(V, Hi, Tol);
  return aboveLo && belowHi;
}

double TMathUtils::DistToRange(double Value, double Lo, double Hi, double Tol) {
  if (FloatGreaterEquals(Value, Lo, Tol) && FloatLessEquals(Value, Hi, Tol)) return 0.0;
  return Value < Lo ? Lo - Value : Value - Hi;
}

int TMathUtils::CycInc(int Index, int Step, int Count) {
  if (Count <= 0) throw EParamError("[Error] TMathUtils.CycInc: Count %d must be positive", Count);
  const long long r = (static_cast<long long>(Index) + Step) % Count;
  return static_cast<int>(r < 0 ? r + Count : r);
}

double TMathUtils::CycInc(double Value, double Step, double Period) {
  if (!internal::IsPositiveNumber(Period)) {
    throw EParamError("[Error] TMathUtils.CycInc: Period %s must be positive", FloatToStr(Period));
  }
  double r = std::fmod(Value + Step, Period);
  if (r < 0.0) r += Period;
  // fmod of a tiny negative number plus Period may round up to Period itself.
  return r >= Period ? 0.0 : r;
}

bool TMathUtils::CalcQuadraticEquation(double A2, double A1, double A0, double& X1, double& X2) {
  if (A2 == 0.0) {
    if (A1 == 0.0) return false;
    X1 = X2 = -A0 / A1;
    return true;
  }
  const double disc = A1 * A1 - 4.0 * A2 * A0;
  if (disc < 0.0 || std::isnan(disc)) return false;
  // The root formula with the sign that avoids cancellation, and Vieta for the other root.
  const double q = -0.5 * (A1 + std::copysign(std::sqrt(disc), A1));
  double r1 = q / A2;
  double r2 = q != 0.0 ? A0 / q : r1;
  if (r1 > r2) std::swap(r1, r2);
  X1 = r1;
  X2 = r2;
  return true;
}

}  // namespace orvane
