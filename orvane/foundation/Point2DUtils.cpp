#include "orvane/foundation/Point2DUtils.h"

#include <cmath>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {
int Sign(double V) { return V < 0.0 ? -1 : (V > 0.0 ? 1 : 0); }
}  // namespace

int TPoint2DUtils::CompareByXY(const TPoint2D& Left, const TPoint2D& Right) {
  const int s = Sign(Left.X - Right.X);
  return s != 0 ? s : Sign(Left.Y - Right.Y);
}

int TPoint2DUtils::CompareByYX(const TPoint2D& Left, const TPoint2D& Right) {
  const int s = Sign(Left.Y - Right.Y);
  return s != 0 ? s : Sign(Left.X - Right.X);
}

int TPoint2DUtils::Quadrant(const TPoint2D& Point) {
  const double x = Point.X;
  const double y = Point.Y;
  if (x == 0.0 && y == 0.0) return 0;
  if (y == 0.0) return x > 0.0 ? -1 : -3;
  if (x == 0.0) return y > 0.0 ? -2 : -4;
  if (x > 0.0) return y > 0.0 ? 1 : 4;
  return y > 0.0 ? 2 : 3;
}

TPoint2D TPoint2DUtils::Mirror(const TPoint2D& Pt, const TPoint2D& Pt1, const TPoint2D& Pt2) {
  const TPoint2D v = (Pt2 - Pt1).RotateCcw90();
  TPoint2D foot;
  if (v == TPoint2D::FZero ||
      TLine2D(Pt, Pt + v).RelationWithLine(TLine2D(Pt1, Pt2), foot, DefaultTol, DefaultTol) != 1) {
    throw Exception("[Error] TPoint2DUtils.Mirror: 参数错误");
  }
  return foot * 2.0 - Pt;
}

TPoint2D TPoint2DUtils::Stretch(const TPoint2D& Vec, double Length) {
  const double mag = Vec.Mag();
  if (mag == 0.0) return Vec;
  return Vec * (Length / mag);
}

double TPoint2DUtils::AbsAngle(const TPoint2D& Vec1, const TPoint2D& Vec2) {
  const double a = Vec2.AngleFrom(Vec1);
  return a > Pi ? TwoPi - a : a;
}

double TPoint2DUtils::TriangleArea(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3, bool IsAbs) {
  const double a = 0.5 * IsLeft(P1, P2, P3);
  return IsAbs ? std::fabs(a) : a;
}

TPoint2D TPoint2DUtils::InCenter(const TPoint2D& Pt1, const TPoint2D& Pt2, const TPoint2D& Pt3) {
  const double a = Pt2.DistanceTo(Pt3);
  const double b = Pt3.DistanceTo(Pt1);
  const double c = Pt1.DistanceTo(Pt2);
  const double perimeter = a + b + c;
  if (fEqual(perimeter, 0.0, 1e-12)) return Pt1;
  return (Pt1 * a + Pt2 * b + Pt3 * c) / perimeter;
}

}  // namespace orvane
