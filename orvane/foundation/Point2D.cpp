#include "orvane/foundation/Point2D.h"

#include <cmath>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {
// atan2 folded into [0, 2*pi); the fold of a tiny negative angle may round up to 2*pi itself.
double PositiveAngle(double A) {
  if (A < 0.0) A += TwoPi;
  return A >= TwoPi ? 0.0 : A;
}

double RoundCoordinate(double V, int Digit) {
  if (Digit < 0) {
    const double scale = std::pow(10.0, -Digit);
    return std::nearbyint(V * scale) / scale;
  }
  const double step = std::pow(10.0, Digit);
  return std::nearbyint(V / step) * step;
}
}  // namespace

TPoint2D TPoint2D::Normal() const {
  const double len = Mag();
  if (len == 0.0) return FZero;
  return {X / len, Y / len};
}

TPoint2D TPoint2D::RotateBy(double Radian) const {
  const double c = std::cos(Radian);
  const double s = std::sin(Radian);
  return {X * c - Y * s, X * s + Y * c};
}

double TPoint2D::Angle() const { return PositiveAngle(std::atan2(Y, X)); }

double TPoint2D::AngleFrom(const TPoint2D& V) const {
  return PositiveAngle(std::atan2(V.CrossMul(*this), V.DotMul(*this)));
}

double TPoint2D::AngleBetween(const TPoint2D& V) const { return std::atan2(std::fabs(CrossMul(V)), DotMul(V)); }

bool TPoint2D::IsParallelTo(const TPoint2D& V, double Tol) const {
  const TPoint2D a = Normal();
  const TPoint2D b = V.Normal();
  if (a == FZero || b == FZero) return false;
  return std::fabs(a.CrossMul(b)) <= Tol && a.DotMul(b) > 0.0;
}

TPoint2D TPoint2D::RoundTo(int Digit) const { return {RoundCoordinate(X, Digit), RoundCoordinate(Y, Digit)}; }

std::string TPoint2D::ToString() const {
  // Appending in place; gcc 12 misreports -Wrestrict on a chain of operator+ here.
  std::string text("(");
  text.append(FloatToStr(X)).append(", ").append(FloatToStr(Y)).append(")");
  return text;
}

}  // namespace orvane
