#pragma once
// TGeCurve2D: the abstract parametric curve, with every operation that its evaluator can
// answer, and the records that name a position on a curve and one intersection of two.
//
// A curve's parameter runs over GetInterval, whose bounds compare within 1e-6; callers take
// the bounds from there and never assume 0 to 1.

#include <memory>

#include "orvane/curves/GeObject.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/GeInterval.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

class TGeCurve2D;

// A position on a curve, which it refers to and does not own.
struct ORVANE_API TPointOnCurve2D {
  const TGeCurve2D* Curve = nullptr;
  double Param = 0.0;

  constexpr TPointOnCurve2D() = default;
  constexpr TPointOnCurve2D(const TGeCurve2D* ACurve, double AParam) : Curve(ACurve), Param(AParam) {}
  // The curve's point at Param; EParamError when there is no curve.
  TPoint2D Point() const;
};

// One intersection, seen from the curve that was asked (InterThis) and from its partner.
struct ORVANE_API TIntersect2D {
  TPointOnCurve2D InterThis;
  TPointOnCurve2D InterThat;

  constexpr TIntersect2D() = default;
  constexpr TIntersect2D(const TPointOnCurve2D& AThis, const TPointOnCurve2D& AThat)
      : InterThis(AThis), InterThat(AThat) {}
  // ParamThis goes to InterThis, ParamThat to InterThat.
  constexpr TIntersect2D(const TIntersectPoint2D& Pt, const TGeCurve2D* ThisCurve, const TGeCurve2D* ThatCurve)
      : InterThis(ThisCurve, Pt.ParamThis), InterThat(ThatCurve, Pt.ParamThat) {}
};

class ORVANE_API TGeCurve2D : public TGeEntity2D {
 public:
  using TGeEntity2D::IsOn;

  virtual TPoint2D GetStartPoint() const;
  virtual TPoint2D GetEndPoint() const;
  virtual double GetCurveLength() const = 0;
  virtual TGeInterval GetInterval() const = 0;
  // Length from the start parameter to Param: by default that of the sub-curve up to Param.
  virtual double LengthAt(double Param) const;
  virtual TRect2D BoundBlock() const = 0;
  // The box of the part over Intv; EGeometry "Invalid Sub Curve Interval! ..." when the
  // curve has no such part.
  virtual TRect2D BoundBlockOf(const TGeInterval& Intv) const;
  // A box that holds the curve, cheaper than BoundBlock where a curve can give one.
  virtual TRect2D GetRoughBoundBlock() const;

  virtual TPoint2D EvalPoint(double Param) const = 0;
  // The point and, in Deriv, the first derivative there.
  virtual TPoint2D EvalPoint(double Param, TPoint2D& Deriv) const = 0;
  // The derivative coming from below Param and leaving above it; one at a smooth point.
  virtual TPoint2D DerivLeft(double Param) const;
  virtual TPoint2D DerivRight(double Param) const;
  // The unit normal on the left of the running direction; the zero vector where the curve
  // has no direction.
  virtual TPoint2D NormalLeft(double Param) const;
  virtual TPoint2D NormalRight(double Param) const;

  // The nearest curve point. The short form measures with DefTol whatever Tol is given.
  virtual TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol) const;
  virtual TPoint2D GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const = 0;

  // Count points evenly spaced in parameter over the whole curve (Count below 2 counts as 2),
  // the parameter stepping by repeated addition from the start. Returns the count.
  virtual int GetSamplePoints(int Count, TDynPoints2D& Points, TFloatDynArray& Params) const;
  virtual int GetSamplePoints(double ParamFrom, double ParamTo, int Count, TDynPoints2D& Points,
                              TFloatDynArray& Params) const;
  // The chord samples' points alone.
  virtual int GetSamplePoints(double EpsChord, TDynPoints2D& Points) const;
  // Points whose chords stay within EpsChord of the curve, with their parameters.
  virtual int GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const = 0;
  virtual int GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                     TFloatDynArray& params) const = 0;

  // Where Pnt lies against the closed curve: 1 inside, 0 on it, -1 outside. A ray from Pnt
  // in +X is crossed with the curve, and each crossing turns the answer by the sense in
  // which the curve passes there, so that a touch from above turns it twice and a touch
  // from below not at all.
  virtual int IsIn(const TPoint2D& Pnt, const TGeTolerance& Tol) const;
  bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol) const override;
  virtual bool IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const = 0;
  // Whether the parameter lies in the parameter range, within Tol.PointTol.
  virtual bool IsOn(double Param, const TGeTolerance& Tol) const;
  // Ten points spread over ACurve's range all lie on this curve (within DefTol).
  virtual bool Contains(const TGeCurve2D& ACurve) const;
  // The same curve; without CheckDir also when run the other way. The base knows no curve.
  virtual bool CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const;
  // Nil or no curve: false; otherwise CheckEqual in the same direction.
  bool Equals(const TGeObject* Obj) const override;

  virtual double ParamOfLength(double Len, const TGeTolerance& Tol) const;
  virtual double ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const = 0;
  virtual double ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const = 0;

  // The two parts before and after Param; false (and nothing made) when Param is outside
  // the range.
  virtual bool SplitAt(double Param, std::unique_ptr<TGeCurve2D>& Sub1, std::unique_ptr<TGeCurve2D>& Sub2) const;
  // The same at the curve point nearest to Pnt; false when Pnt is not within Tol of it.
  virtual bool SplitAt(const TPoint2D& Pnt, std::unique_ptr<TGeCurve2D>& Sub1, std::unique_ptr<TGeCurve2D>& Sub2,
                       const TGeTolerance& Tol) const;
  virtual std::unique_ptr<TGeCurve2D> SubCurve(double PrmFrom, double PrmTo) const = 0;
  virtual std::unique_ptr<TGeCurve2D> SubCurve(const TGeInterval& Intv) const;
  // A simpler curve of the same shape, or nil: keep the curve you have.
  virtual std::unique_ptr<TGeCurve2D> CalcDegradeCurve() const;
  virtual bool GetIsClockwise() const;
  virtual bool GetIsClosedTol(const TGeTolerance& ATol) const;
  // Both sides of the box below Tolerance, or the length below it.
  virtual bool IsTrivial(double Tolerance) const;
  virtual void ReverseDir() = 0;

  double GetStartParam() const { return GetInterval().Lower; }
  double GetEndParam() const { return GetInterval().Upper; }
  bool GetIsClosed() const { return GetIsClosedTol(DefTol); }
  double EvalY(double Param) const { return EvalPoint(Param).Y; }
  double DerivY(double Param) const;
  TDynPoints2D GetPointsAt(const TFloatDynArray& Params) const;
  TDynPoints2D GetPointsAt(const TList<double>& Params) const;
  // Length along the curve from AParaS to AParaE; through the seam (the long way round)
  // when AParaE lies before AParaS.
  double GetIntervalLength(double AParaS, double AParaE) const;
};

}  // namespace orvane
