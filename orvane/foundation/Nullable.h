#pragma once
// TNullable<T> and TNullablePoint2D: a value with a presence flag.

#include "orvane/foundation/Point2D.h"

namespace orvane {

template <class T>
struct TNullable {
  bool FHasValue = false;
  T Value{};

  constexpr TNullable() = default;
  explicit constexpr TNullable(bool HasValue) : FHasValue(HasValue) {}
  constexpr TNullable(bool HasValue, const T& AValue) : FHasValue(HasValue), Value(AValue) {}

  constexpr bool GetIsNull() const { return !FHasValue; }
  constexpr void Clear() {
    FHasValue = false;
    Value = T{};
  }
  // The value when present, else T's default (0 for numbers, FZero for points).
  constexpr T GetValueOrDefault() const { return FHasValue ? Value : T{}; }
  constexpr T GetValueOrDefault(const T& Default) const { return FHasValue ? Value : Default; }
};

struct TNullablePoint2D {
  bool HasValue = false;
  TPoint2D Value;

  constexpr TNullablePoint2D() = default;
  // Value is FZero.
  explicit constexpr TNullablePoint2D(bool AHasValue) : HasValue(AHasValue) {}
  constexpr TNullablePoint2D(bool AHasValue, const TPoint2D& AValue) : HasValue(AHasValue), Value(AValue) {}
};

}  // namespace orvane
