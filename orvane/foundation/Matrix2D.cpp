#include "orvane/foundation/Matrix2D.h"

#include <cmath>

#include "orvane/foundation/Exception.h"

namespace orvane {

TMatrix2D TMatrix2D::Multiply(const TMatrix2D& Then) const {
  TMatrix2D r;
  r.M11 = M11 * Then.M11 + M12 * Then.M21;
  r.M12 = M11 * Then.M12 + M12 * Then.M22;
  r.M21 = M21 * Then.M11 + M22 * Then.M21;
  r.M22 = M21 * Then.M12 + M22 * Then.M22;
  r.DX = DX * Then.M11 + DY * Then.M21 + Then.DX;
  r.DY = DX * Then.M12 + DY * Then.M22 + Then.DY;
  return r;
}

void TMatrix2D::SetToTranslation(double ADX, double ADY) {
  Reset();
  DX = ADX;
  DY = ADY;
}

void TMatrix2D::SetToRotation(double Radian) {
  Reset();
  const double c = std::cos(Radian);
  const double s = std::sin(Radian);
  M11 = c;
  M12 = s;
  M21 = -s;
  M22 = c;
}

void TMatrix2D::SetToRotation(double Radian, const TPoint2D& Center) {
  SetToTranslation(-Center.X, -Center.Y);
  Rotate(Radian);
  Translate(Center);
}

void TMatrix2D::SetToScale(double Factor) {
  Reset();
  M11 = M22 = Factor;
}

void TMatrix2D::SetToScaleAt(double Factor, const TPoint2D& Center) {
  SetToTranslation(-Center.X, -Center.Y);
  Scale(Factor, Factor);
  Translate(Center);
}

void TMatrix2D::SetToMirroring(const TPoint2D& Pt) {
  Reset();
  M11 = M22 = -1.0;
  DX = 2.0 * Pt.X;
  DY = 2.0 * Pt.Y;
}

void TMatrix2D::SetToMirroringLine(const TPoint2D& P1, const TPoint2D& P2) {
  const TPoint2D d = (P2 - P1).Normal();
  if (d == TPoint2D::FZero) {
    throw EGeometry("[Error] TMatrix2D.SetToMirroringLine: the two points %s and %s coincide", P1.ToString(),
                    P2.ToString());
  }
  // Reflection about a line through the origin with unit direction d, conjugated by P1.
  TMatrix2D reflect;
  reflect.M11 = d.X * d.X - d.Y * d.Y;
  reflect.M12 = 2.0 * d.X * d.Y;
  reflect.M21 = 2.0 * d.X * d.Y;
  reflect.M22 = d.Y * d.Y - d.X * d.X;
  SetToTranslation(-P1.X, -P1.Y);
  *this = Multiply(reflect);
  Translate(P1);
}

void TMatrix2D::Translate(double ADX, double ADY) {
  DX += ADX;
  DY += ADY;
}

void TMatrix2D::Rotate(double Radian) {
  TMatrix2D r;
  r.SetToRotation(Radian);
  *this = Multiply(r);
}

void TMatrix2D::Rotate(double Radian, const TPoint2D& Center) {
  TMatrix2D r;
  r.SetToRotation(Radian, Center);
  *this = Multiply(r);
}

void TMatrix2D::Scale(double SX, double SY) {
  TMatrix2D s;
  s.M11 = SX;
  s.M22 = SY;
  *this = Multiply(s);
}

void TMatrix2D::TransformPoints(TDynPoints2D& Pts) const {
  for (TPoint2D& p : Pts) p = Transform(p);
}

}  // namespace orvane
