#include "orvane/curves/GeCurve2D.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

TPoint2D TPointOnCurve2D::Point() const {
  if (Curve == nullptr) throw EParamError("[Error] TPointOnCurve2D.Point: the position refers to no curve");
  return Curve->EvalPoint(Param);
}

TPoint2D TGeCurve2D::GetStartPoint() const { return EvalPoint(GetInterval().Lower); }

TPoint2D TGeCurve2D::GetEndPoint() const { return EvalPoint(GetInterval().Upper); }

double TGeCurve2D::LengthAt(double Param) const {
  const std::unique_ptr<TGeCurve2D> sub = SubCurve(GetStartParam(), Param);
  return sub ? sub->GetCurveLength() : 0.0;
}

TRect2D TGeCurve2D::BoundBlockOf(const TGeInterval& Intv) const {
  const std::unique_ptr<TGeCurve2D> sub = SubCurve(Intv);
  if (!sub) throw EGeometry("Invalid Sub Curve Interval! Start %.4f End %.4f", Intv.Lower, Intv.Upper);
  return sub->BoundBlock();
}

TRect2D TGeCurve2D::GetRoughBoundBlock() const { return BoundBlock(); }

TPoint2D TGeCurve2D::DerivLeft(double Param) const {
  TPoint2D deriv;
  EvalPoint(Param, deriv);
  return deriv;
}

TPoint2D TGeCurve2D::DerivRight(double Param) const {
  TPoint2D deriv;
  EvalPoint(Param, deriv);
  return deriv;
}

TPoint2D TGeCurve2D::NormalLeft(double Param) const {
  const TPoint2D d = DerivLeft(Param);
  if (d == TPoint2D::FZero) return d;
  return d.Normal().RotateCcw90();
}

TPoint2D TGeCurve2D::NormalRight(double Param) const {
  const TPoint2D d = DerivRight(Param);
  if (d == TPoint2D::FZero) return d;
  return d.Normal().RotateCcw90();
}

TPoint2D TGeCurve2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& /*Tol*/) const {
  double param = 0.0;
  return GetClosedPointTo(Pnt, DefTol, param);
}

int TGeCurve2D::GetSamplePoints(int Count, TDynPoints2D& Points, TFloatDynArray& Params) const {
  const TGeInterval intv = GetInterval();
  // An open bound stands at 0, an open upper one a unit past the lower.
  const double from = intv.HasLower ? intv.Lower : 0.0;
  const double to = intv.HasUpper ? intv.Upper : from + 1.0;
  return GetSamplePoints(from, to, Count, Points, Params);
}

int TGeCurve2D::GetSamplePoints(double ParamFrom, double ParamTo, int Count, TDynPoints2D& Points,
                                TFloatDynArray& Params) const {
  if (Count < 2) Count = 2;
  const double step = (ParamTo - ParamFrom) / (Count - 1);
  Points.resize(static_cast<std::size_t>(Count));
  Params.resize(static_cast<std::size_t>(Count));
  double t = ParamFrom;
  for (std::size_t i = 0; i < Points.size(); ++i) {
    Params[i] = t;
    Points[i] = EvalPoint(t);
    t += step;
  }
  return Count;
}

int TGeCurve2D::GetSamplePoints(double EpsChord, TDynPoints2D& Points) const {
  TFloatDynArray params;
  GetSamplePointsByChord(EpsChord, Points, params);
  return static_cast<int>(Points.size());
}

int TGeCurve2D::IsIn(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  const TRect2D box = BoundBlock().InflatedRect(Tol.PointTol, Tol.PointTol);
  if (!box.Contains(Pnt, 1e-6)) return -1;
  // The ray runs well past the box: a point on the box's right side would otherwise get a
  // ray too short to cross anything.
  const double reach = box.XMax - Pnt.X + box.Width() + 1.0;
  const TGeLine2D ray(Pnt, TPoint2D(Pnt.X + reach, Pnt.Y));
  TList<TIntersect2D> inters;
  ray.IntersectCurve(*this, inters, Tol);
  if (inters.IsEmpty()) return -1;
  // The point is on the curve when any crossing lies at the ray's start (within the point
  // tolerance), not only the first one listed: pieces report in their own order.
  for (const TIntersect2D& hit : inters) {
    if (hit.InterThis.Param * reach <= Tol.PointTol) return 0;
  }
  // A crossing at a joint is reported by both pieces that meet there, and a touch may give
  // two roots a hair apart: each place along the curve counts once. A crossing at a joint
  // is judged exactly at the joint, and on a closed curve the end is the start.
  const TGeInterval range = GetInterval();
  const bool closed = GetIsClosed();
  std::vector<double> places;
  places.reserve(static_cast<std::size_t>(inters.Count()));
  for (const TIntersect2D& hit : inters) {
    double t = hit.InterThat.Param;
    const double whole = std::nearbyint(t);
    if (fEqual(whole, t, 1e-6)) t = whole;
    if (closed && range.IsEqualAtUpper(t)) t = range.Lower;
    places.push_back(t);
  }
  std::sort(places.begin(), places.end());
  int result = -1;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (i > 0 && fEqual(places[i], places[i - 1], 1e-6)) continue;
    const double t = places[i];
    if (fSmall(DerivLeft(t).Y, 0.0, 1e-6)) result = -result;
    if (fSmall(-DerivRight(t).Y, 0.0, 1e-6)) result = -result;
  }
  return result;
}

bool TGeCurve2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  double param = 0.0;
  return IsOn(Pnt, Tol, param);
}

bool TGeCurve2D::IsOn(double Param, const TGeTolerance& Tol) const {
  TGeInterval intv = GetInterval();
  intv.Tol = Tol.PointTol;
  return intv.Contains(Param);
}

bool TGeCurve2D::Contains(const TGeCurve2D& ACurve) const {
  const double from = ACurve.GetStartParam();
  const double step = (ACurve.GetEndParam() - from) / 9.0;
  double t = from;
  for (int i = 0; i < 10; ++i) {
    if (!IsOn(ACurve.EvalPoint(t), DefTol)) return false;
    t += step;
  }
  return true;
}

bool TGeCurve2D::CheckEqual(const TGeCurve2D& /*ACurve*/, bool /*CheckDir*/) const { return false; }

bool TGeCurve2D::Equals(const TGeObject* Obj) const {
  const auto* curve = dynamic_cast<const TGeCurve2D*>(Obj);
  return curve != nullptr && CheckEqual(*curve, true);
}

double TGeCurve2D::ParamOfLength(double Len, const TGeTolerance& Tol) const {
  return ParamOfLength(GetStartParam(), Len, Tol);
}

bool TGeCurve2D::SplitAt(double Param, std::unique_ptr<TGeCurve2D>& Sub1, std::unique_ptr<TGeCurve2D>& Sub2) const {
  const TGeInterval intv = GetInterval();
  if (!intv.Contains(Param)) return false;
  // Both parts are made before either output changes, so a failure leaves both as they were.
  std::unique_ptr<TGeCurve2D> first = SubCurve(intv.Lower, Param);
  std::unique_ptr<TGeCurve2D> second = SubCurve(Param, intv.Upper);
  Sub1 = std::move(first);
  Sub2 = std::move(second);
  return true;
}

bool TGeCurve2D::SplitAt(const TPoint2D& Pnt, std::unique_ptr<TGeCurve2D>& Sub1, std::unique_ptr<TGeCurve2D>& Sub2,
                         const TGeTolerance& Tol) const {
  double t = 0.0;
  const TPoint2D nearest = GetClosedPointTo(Pnt, Tol, t);
  if (!Tol.PointEquals(nearest, Pnt)) return false;
  return SplitAt(t, Sub1, Sub2);
}

std::unique_ptr<TGeCurve2D> TGeCurve2D::SubCurve(const TGeInterval& Intv) const {
  return SubCurve(Intv.Lower, Intv.Upper);
}

std::unique_ptr<TGeCurve2D> TGeCurve2D::CalcDegradeCurve() const { return nullptr; }

bool TGeCurve2D::GetIsClockwise() const { return false; }

bool TGeCurve2D::GetIsClosedTol(const TGeTolerance& /*ATol*/) const { return false; }

bool TGeCurve2D::IsTrivial(double Tolerance) const {
  const TRect2D box = BoundBlock();
  if (box.Width() < Tolerance && box.Height() < Tolerance) return true;
  return GetCurveLength() < Tolerance;
}

double TGeCurve2D::DerivY(double Param) const {
  TPoint2D deriv;
  EvalPoint(Param, deriv);
  return deriv.Y;
}

TDynPoints2D TGeCurve2D::GetPointsAt(const TFloatDynArray& Params) const {
  TDynPoints2D pts;
  pts.reserve(Params.size());
  for (double t : Params) pts.push_back(EvalPoint(t));
  return pts;
}

TDynPoints2D TGeCurve2D::GetPointsAt(const TList<double>& Params) const {
  TDynPoints2D pts;
  pts.reserve(static_cast<std::size_t>(Params.Count()));
  for (double t : Params) pts.push_back(EvalPoint(t));
  return pts;
}

double TGeCurve2D::GetIntervalLength(double AParaS, double AParaE) const {
  const double total = GetCurveLength();
  if (total == 0.0) return 0.0;
  double len = LengthAt(AParaE) - LengthAt(AParaS);
  if (len < 0.0) len += total;
  return len;
}

}  // namespace orvane
