#pragma once
// TPointL2D: a point of the 64-bit integer plane; hash key (exact equality) and offset of
// the integer path operations.

#include <cstdint>
#include <functional>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

struct ORVANE_API TPointL2D {
  std::int64_t X = 0;
  std::int64_t Y = 0;

  static const TPointL2D Zero;

  constexpr TPointL2D() = default;
  constexpr TPointL2D(std::int64_t AX, std::int64_t AY) : X(AX), Y(AY) {}
  // Each coordinate rounded to the nearest integer, halves to even. EConvertError for a
  // coordinate that is not finite or leaves the 64-bit range.
  explicit TPointL2D(const TPoint2D& Pt);
  explicit constexpr TPointL2D(const TIntPoint& Pt) : X(Pt.X), Y(Pt.Y) {}

  TPoint2D ToPoint2D() const { return {static_cast<double>(X), static_cast<double>(Y)}; }
  // Keeps the low 32 bits of each coordinate.
  constexpr TIntPoint ToCADIntPoint() const {
    return {static_cast<std::int32_t>(static_cast<std::uint32_t>(X)),
            static_cast<std::int32_t>(static_cast<std::uint32_t>(Y))};
  }
  double Length() const { return ToPoint2D().Mag(); }
  double Angle() const { return ToPoint2D().Angle(); }
  double DistanceTo(const TPointL2D& Point) const { return ToPoint2D().DistanceTo(Point.ToPoint2D()); }
  constexpr TPointL2D RotateBy90() const { return {-Y, X}; }
  constexpr TPointL2D RotateBy270() const { return {Y, -X}; }

  friend constexpr bool operator==(const TPointL2D& A, const TPointL2D& B) = default;
  friend constexpr TPointL2D operator-(const TPointL2D& A) { return {-A.X, -A.Y}; }
  friend constexpr TPointL2D operator+(const TPointL2D& A, const TPointL2D& B) { return {A.X + B.X, A.Y + B.Y}; }
  friend constexpr TPointL2D operator-(const TPointL2D& A, const TPointL2D& B) { return {A.X - B.X, A.Y - B.Y}; }
};

inline constexpr TPointL2D TPointL2D::Zero{0, 0};

}  // namespace orvane

template <>
struct std::hash<orvane::TPointL2D> {
  std::size_t operator()(const orvane::TPointL2D& P) const noexcept {
    const auto x = static_cast<std::uint64_t>(P.X);
    const auto y = static_cast<std::uint64_t>(P.Y);
    return static_cast<std::size_t>(x * 0x9E3779B97F4A7C15ull ^ (y + 0x632BE59BD9B4E019ull + (x << 6) + (x >> 2)));
  }
};
