#pragma once
// TMatrix2D: a 2D affine transformation. Steps added by Translate, Rotate and Scale apply to
// a point in the order of the calls, so Translate(-P), Scale(k, k), Translate(P) scales
// about P.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

struct ORVANE_API TMatrix2D {
  // Row-vector form: x' = x*M11 + y*M21 + DX, y' = x*M12 + y*M22 + DY.
  double M11 = 1.0;
  double M12 = 0.0;
  double M21 = 0.0;
  double M22 = 1.0;
  double DX = 0.0;
  double DY = 0.0;

  constexpr TMatrix2D() = default;
  static constexpr TMatrix2D Create() { return {}; }
  // The matrix applying this one first and Then second.
  TMatrix2D Multiply(const TMatrix2D& Then) const;

  void Reset() { *this = TMatrix2D(); }
  void SetToIdentity() { Reset(); }
  void SetToTranslation(const TPoint2D& Vec) { SetToTranslation(Vec.X, Vec.Y); }
  void SetToTranslation(double ADX, double ADY);
  void SetToRotation(double Radian);
  void SetToRotation(double Radian, const TPoint2D& Center);
  void SetToScale(double Factor);
  void SetToScaleAt(double Factor, const TPoint2D& Center);
  // Reflection in the point Pt (a half turn about it).
  void SetToMirroring(const TPoint2D& Pt);
  // Reflection in the line through P1 and P2; EGeometry when the points coincide.
  void SetToMirroringLine(const TPoint2D& P1, const TPoint2D& P2);

  void Translate(const TPoint2D& Vec) { Translate(Vec.X, Vec.Y); }
  void Translate(double ADX, double ADY);
  void Rotate(double Radian);
  void Rotate(double Radian, const TPoint2D& Center);
  void Scale(double SX, double SY);

  constexpr TPoint2D Transform(const TPoint2D& Pt) const {
    return {Pt.X * M11 + Pt.Y * M21 + DX, Pt.X * M12 + Pt.Y * M22 + DY};
  }
  constexpr TPoint2D TransformVector(const TPoint2D& V) const { return {V.X * M11 + V.Y * M21, V.X * M12 + V.Y * M22}; }
  void TransformPoints(TDynPoints2D& Pts) const;

  friend constexpr bool operator==(const TMatrix2D& A, const TMatrix2D& B) = default;
};

}  // namespace orvane
