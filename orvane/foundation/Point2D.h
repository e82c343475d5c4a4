#pragma once
// The point records of the value layer: TPoint2D (a point or a free vector), TPoint3D,
// TIntPoint, the intersection record and the dynamic arrays of points.

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/foundation/Export.h"

namespace orvane {

struct ORVANE_API TPoint2D {
  double X = 0.0;
  double Y = 0.0;

  constexpr TPoint2D() = default;
  constexpr TPoint2D(double AX, double AY) : X(AX), Y(AY) {}

  static const TPoint2D FZero;

  friend constexpr TPoint2D operator+(const TPoint2D& A, const TPoint2D& B) { return {A.X + B.X, A.Y + B.Y}; }
  friend constexpr TPoint2D operator-(const TPoint2D& A, const TPoint2D& B) { return {A.X - B.X, A.Y - B.Y}; }
  friend constexpr TPoint2D operator-(const TPoint2D& A) { return {-A.X, -A.Y}; }
  friend constexpr TPoint2D operator*(const TPoint2D& A, double K) { return {A.X * K, A.Y * K}; }
  friend constexpr TPoint2D operator*(double K, const TPoint2D& A) { return {A.X * K, A.Y * K}; }
  friend constexpr TPoint2D operator/(const TPoint2D& A, double K) { return {A.X / K, A.Y / K}; }
  TPoint2D& operator+=(const TPoint2D& A) {
    X += A.X;
    Y += A.Y;
    return *this;
  }
  TPoint2D& operator-=(const TPoint2D& A) {
    X -= A.X;
    Y -= A.Y;
    return *this;
  }
  // Exact comparison of both coordinates (so -0 equals 0 and a stored zero vector equals FZero).
  friend constexpr bool operator==(const TPoint2D& A, const TPoint2D& B) { return A.X == B.X && A.Y == B.Y; }

  // Euclidean distance at most Tol (inclusive).
  bool Equals(const TPoint2D& Pt, double Tol) const { return DistanceTo(Pt) <= Tol; }
  double Mag() const { return std::hypot(X, Y); }
  constexpr double MagSqr() const { return X * X + Y * Y; }
  double DistanceTo(const TPoint2D& Pt) const { return std::hypot(X - Pt.X, Y - Pt.Y); }
  constexpr double DotMul(const TPoint2D& V) const { return X * V.X + Y * V.Y; }
  constexpr double CrossMul(const TPoint2D& V) const { return X * V.Y - Y * V.X; }
  // The vector scaled to length 1; the zero vector stays FZero instead of becoming NaN.
  TPoint2D Normal() const;
  constexpr TPoint2D RotateCcw90() const { return {-Y, X}; }
  constexpr TPoint2D RotateCw90() const { return {Y, -X}; }
  TPoint2D RotateBy(double Radian) const;
  // Polar angle in [0, 2*pi); 0 for the zero vector.
  double Angle() const;
  // Counter-clockwise angle from V to this vector, in [0, 2*pi).
  double AngleFrom(const TPoint2D& V) const;
  // Unsigned angle between the two vectors, in [0, pi].
  double AngleBetween(const TPoint2D& V) const;
  // Same direction within Tol on the sine of the angle between the unit vectors (and not
  // opposite). A zero vector is parallel to nothing.
  bool IsParallelTo(const TPoint2D& V, double Tol) const;
  constexpr TPoint2D ExtMin(const TPoint2D& Pt) const { return {X < Pt.X ? X : Pt.X, Y < Pt.Y ? Y : Pt.Y}; }
  constexpr TPoint2D ExtMax(const TPoint2D& Pt) const { return {X > Pt.X ? X : Pt.X, Y > Pt.Y ? Y : Pt.Y}; }
  // Each coordinate rounded (half to even) to a multiple of 10^Digit: -3 keeps three decimals.
  TPoint2D RoundTo(int Digit) const;
  // "(X, Y)" with the shortest texts that read back to the same doubles, e.g. "(1.5, -2)".
  std::string ToString() const;
};

inline constexpr TPoint2D TPoint2D::FZero{0.0, 0.0};
inline constexpr TPoint2D Org2D{0.0, 0.0};
inline constexpr TPoint2D Origin2D{0.0, 0.0};
// Placeholder argument for an object whose data is read from a file next.
inline constexpr TPoint2D Dcs0{0.0, 0.0};

inline constexpr TPoint2D Point2D(double X, double Y) { return {X, Y}; }

struct TPoint3D {
  double X = 0.0;
  double Y = 0.0;
  double Z = 0.0;

  constexpr TPoint3D() = default;
  constexpr TPoint3D(double AX, double AY, double AZ) : X(AX), Y(AY), Z(AZ) {}
  // Implicit on purpose: a plane point is a space point with Z = 0.
  constexpr TPoint3D(const TPoint2D& Pt) : X(Pt.X), Y(Pt.Y) {}  // NOLINT(google-explicit-constructor)

  static const TPoint3D FZero;

  friend constexpr TPoint3D operator+(const TPoint3D& A, const TPoint3D& B) {
    return {A.X + B.X, A.Y + B.Y, A.Z + B.Z};
  }
  // Adding a plane vector leaves Z unchanged.
  friend constexpr TPoint3D operator+(const TPoint3D& A, const TPoint2D& B) { return {A.X + B.X, A.Y + B.Y, A.Z}; }
  friend constexpr TPoint3D operator-(const TPoint3D& A, const TPoint3D& B) {
    return {A.X - B.X, A.Y - B.Y, A.Z - B.Z};
  }
  friend constexpr TPoint3D operator-(const TPoint3D& A) { return {-A.X, -A.Y, -A.Z}; }
  friend constexpr TPoint3D operator*(const TPoint3D& A, double K) { return {A.X * K, A.Y * K, A.Z * K}; }
  friend constexpr TPoint3D operator*(double K, const TPoint3D& A) { return {A.X * K, A.Y * K, A.Z * K}; }
  friend constexpr bool operator==(const TPoint3D& A, const TPoint3D& B) {
    return A.X == B.X && A.Y == B.Y && A.Z == B.Z;
  }
};

inline constexpr TPoint3D TPoint3D::FZero{0.0, 0.0, 0.0};
inline constexpr TPoint3D Origin3D{0.0, 0.0, 0.0};

struct TIntPoint {
  std::int32_t X = 0;
  std::int32_t Y = 0;

  constexpr TIntPoint() = default;
  constexpr TIntPoint(std::int32_t AX, std::int32_t AY) : X(AX), Y(AY) {}
  friend constexpr bool operator==(const TIntPoint& A, const TIntPoint& B) = default;
};

// One intersection: the parameter on the operation's own curve, on the other curve, the point.
struct TIntersectPoint2D {
  double ParamThis = 0.0;
  double ParamThat = 0.0;
  TPoint2D Pt;

  constexpr TIntersectPoint2D() = default;
  constexpr TIntersectPoint2D(double AParamThis, double AParamThat, const TPoint2D& APt)
      : ParamThis(AParamThis), ParamThat(AParamThat), Pt(APt) {}
};

using TDynPoints2D = std::vector<TPoint2D>;
using TDynPoints3D = std::vector<TPoint3D>;
using TFloatDynArray = std::vector<double>;

}  // namespace orvane
