#pragma once
// Overflow-safe integer arithmetic for the path operations. Coordinate differences are taken
// in 128 bits (always exact); products of differences that fit 64 bits are exact in 128 bits
// too, and beyond that (coordinates outside the clipping range) long double stands in, which
// cannot overflow.

#include <cstdint>
#include <limits>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/internal/Orientation.h"
#include "orvane/paths/Path64.h"

namespace orvane::internal {

__extension__ typedef unsigned __int128 TUInt128;

inline constexpr TInt128 Int64Min128 = std::numeric_limits<std::int64_t>::min();
inline constexpr TInt128 Int64Max128 = std::numeric_limits<std::int64_t>::max();

constexpr bool FitsInt64(TInt128 V) { return V >= Int64Min128 && V <= Int64Max128; }

// |A - B| without overflow for any two 64-bit values.
constexpr std::uint64_t AbsDiff(std::int64_t A, std::int64_t B) {
  return A >= B ? static_cast<std::uint64_t>(A) - static_cast<std::uint64_t>(B)
                : static_cast<std::uint64_t>(B) - static_cast<std::uint64_t>(A);
}

// |A - B| < Tol (strict); false for Tol <= 0.
constexpr bool NearStrict(std::int64_t A, std::int64_t B, std::int64_t Tol) {
  return Tol > 0 && AbsDiff(A, B) < static_cast<std::uint64_t>(Tol);
}

// |A - B| <= Tol; false for Tol < 0.
constexpr bool NearInclusive(std::int64_t A, std::int64_t B, std::int64_t Tol) {
  return Tol >= 0 && AbsDiff(A, B) <= static_cast<std::uint64_t>(Tol);
}

// A * D - B * C for 128-bit factors each of magnitude below 2^64: exact when every factor
// fits 64 bits, else approximate in long double. Clamped to 64 bits.
inline std::int64_t ClampedCross(TInt128 A, TInt128 B, TInt128 C, TInt128 D) {
  if (FitsInt64(A) && FitsInt64(B) && FitsInt64(C) && FitsInt64(D)) {
    const TInt128 v = A * D - B * C;
    if (v > Int64Max128) return std::numeric_limits<std::int64_t>::max();
    if (v < Int64Min128) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(v);
  }
  const long double v = static_cast<long double>(A) * static_cast<long double>(D) -
                        static_cast<long double>(B) * static_cast<long double>(C);
  if (v >= 9223372036854775807.0L) return std::numeric_limits<std::int64_t>::max();
  if (v <= -9223372036854775808.0L) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(v);
}

// Whether A * C + B * D is exactly zero, for 128-bit factors of magnitude below 2^64.
inline bool DotIsZero(TInt128 A, TInt128 B, TInt128 C, TInt128 D) {
  if (FitsInt64(A) && FitsInt64(B) && FitsInt64(C) && FitsInt64(D)) return A * C + B * D == 0;
  // Beyond the clipping range: compare the two products' magnitudes and signs, each exact
  // as an unsigned 128-bit number.
  auto mag = [](TInt128 V) { return V < 0 ? static_cast<TUInt128>(-V) : static_cast<TUInt128>(V); };
  const int s1 = (A < 0) != (C < 0) ? -1 : 1;
  const int s2 = (B < 0) != (D < 0) ? -1 : 1;
  const TUInt128 p1 = mag(A) * mag(C);
  const TUInt128 p2 = mag(B) * mag(D);
  if (p1 == 0 || p2 == 0) return p1 == 0 && p2 == 0;
  return p1 == p2 && s1 != s2;
}

// The 64-bit result of an addition, EConvertError when it overflows.
inline std::int64_t CheckedAdd(std::int64_t A, std::int64_t B, const char* Where) {
  std::int64_t r = 0;
  if (__builtin_add_overflow(A, B, &r)) throw EConvertError("[Error] %s: the result leaves the 64-bit range", Where);
  return r;
}

inline std::int64_t CheckedSub(std::int64_t A, std::int64_t B, const char* Where) {
  std::int64_t r = 0;
  if (__builtin_sub_overflow(A, B, &r)) throw EConvertError("[Error] %s: the result leaves the 64-bit range", Where);
  return r;
}

inline double ToDouble(TInt128 V) { return static_cast<double>(V); }

}  // namespace orvane::internal
