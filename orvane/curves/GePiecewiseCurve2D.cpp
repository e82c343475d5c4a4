#include "orvane/curves/GePiecewiseCurve2D.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/curves/internal/SubCurveEval.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

TGePiecewiseSegment2D::~TGePiecewiseSegment2D() = default;

void TGePiecewiseSegment2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  auto* view = dynamic_cast<TGePiecewiseSegment2D*>(&Dest);
  if (view == nullptr) return;
  std::unique_ptr<TGeCurve2D> base = FBaseCurve->CloneAs<TGeCurve2D>();
  // A view of another kind keeps its own kind of curve.
  if (!base || base->ClassName() != view->FBaseCurve->ClassName()) return;
  view->FOwner = FOwner;
  view->FSegIdx = FSegIdx;
  view->FBaseCurve = std::move(base);
}

bool TGePiecewiseSegment2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  const auto* view = dynamic_cast<const TGePiecewiseSegment2D*>(&ACurve);
  return view != nullptr && FBaseCurve->CheckEqual(*view->FBaseCurve, CheckDir);
}

TGePiecewiseCurve2D::~TGePiecewiseCurve2D() = default;

const TGePiecewiseSegment2D* TGePiecewiseCurve2D::GetBufSegment(int Idx) const {
  const int n = GetSegmentCount();
  if (Idx < 0 || Idx >= n) return nullptr;
  const auto i = static_cast<std::size_t>(Idx);
  if (FBufSegments.size() < static_cast<std::size_t>(n)) FBufSegments.resize(static_cast<std::size_t>(n));
  if (!FBufSegments[i]) FBufSegments[i] = GetSegment(Idx);
  return FBufSegments[i].get();
}

void TGePiecewiseCurve2D::SetSegmentCount(int /*Value*/) {}

void TGePiecewiseCurve2D::ClearSegmentCache() const { FBufSegments.clear(); }

void TGePiecewiseCurve2D::DropSegment(int Idx) const {
  if (Idx >= 0 && static_cast<std::size_t>(Idx) < FBufSegments.size())
    FBufSegments[static_cast<std::size_t>(Idx)].reset();
}

void TGePiecewiseCurve2D::DropSegmentsFrom(int Count) const {
  if (Count >= 0 && static_cast<std::size_t>(Count) < FBufSegments.size())
    FBufSegments.resize(static_cast<std::size_t>(Count));
}

double TGePiecewiseCurve2D::SegmentLength(int I, double U0, double U1) const {
  const TGePiecewiseSegment2D* seg = GetBufSegment(I);
  if (seg == nullptr) return 0.0;
  return std::max(0.0, seg->LengthAt(U1) - seg->LengthAt(U0));
}

TGeInterval TGePiecewiseCurve2D::GetInterval() const { return {0.0, static_cast<double>(GetSegmentCount()), 1e-6}; }

double TGePiecewiseCurve2D::SubParam(double Param, const TGeCurve2D*& Curve, bool isLeft) const {
  Curve = nullptr;
  const int n = GetSegmentCount();
  if (n < 1) return Param;
  // NaN has no segment; it evaluates on the first one, as a parameter before the start.
  if (std::isnan(Param)) Param = 0.0;
  const double start = 0.0;
  const double end = static_cast<double>(n);
  const bool closed = GetIsClosed();
  double t = Param;
  if (closed) t = Param - std::floor(Param / end) * end;
  constexpr double eps = 1e-6;
  if (closed && fEqual(t, start, eps) && isLeft) {
    Curve = GetBufSegment(n - 1);
    return Curve->GetEndParam() + (t - start);
  }
  if (fSmall(t, start, eps) || (fEqual(t, start, eps) && isLeft && !closed)) {
    Curve = GetBufSegment(0);
    return Curve->GetStartParam();
  }
  if (closed && fEqual(t, end, eps) && !isLeft) {
    Curve = GetBufSegment(0);
    return Curve->GetStartParam() + (t - end);
  }
  if (fGreat(t, end, eps) || (fEqual(t, end, eps) && !closed && !isLeft)) {
    Curve = GetBufSegment(n - 1);
    return Curve->GetEndParam();
  }
  double k = std::floor(t);
  int i = 0;
  double u = 0.0;
  if (isLeft && fEqual(k, t, eps) && k > 0.0) {
    i = static_cast<int>(k) - 1;
    u = 1.0 + (t - k);
  } else if (!isLeft && fEqual(k + 1.0, t, eps) && k + 1.0 < end) {
    i = static_cast<int>(k) + 1;
    u = t - (k + 1.0);
  } else {
    i = static_cast<int>(k);
    u = t - k;
  }
  // Within 1e-6 of an end the tests above already chose a segment; what floor gives there
  // is held to the range.
  i = std::clamp(i, 0, n - 1);
  Curve = GetBufSegment(i);
  return u + Curve->GetStartParam();
}

TPoint2D TGePiecewiseCurve2D::EvalPoint(double Param) const { return internal::EvalOnPiece(*this, Param); }

TPoint2D TGePiecewiseCurve2D::EvalPoint(double Param, TPoint2D& Deriv) const {
  return internal::EvalOnPiece(*this, Param, Deriv);
}

TPoint2D TGePiecewiseCurve2D::DerivLeft(double Param) const { return internal::DerivOnPiece(*this, Param, true); }

TPoint2D TGePiecewiseCurve2D::DerivRight(double Param) const { return internal::DerivOnPiece(*this, Param, false); }

double TGePiecewiseCurve2D::GetCurveLength() const {
  double sum = 0.0;
  const int n = GetSegmentCount();
  for (int i = 0; i < n; ++i) sum += GetBufSegment(i)->GetCurveLength();
  return sum;
}

TRect2D TGePiecewiseCurve2D::BoundBlock() const {
  TRect2D box = TRect2D::Invalid();
  const int n = GetSegmentCount();
  for (int i = 0; i < n; ++i) box.Extend(GetBufSegment(i)->BoundBlock());
  return box;
}

TRect2D TGePiecewiseCurve2D::BoundBlockOf(const TGeInterval& Intv) const {
  if (Intv.Lower > Intv.Upper) {
    throw EGeometry("Invalid Inteval Input for BoundBlockOf! Start %.4f End %.4f", Intv.Lower, Intv.Upper);
  }
  if (std::isnan(Intv.Lower) || std::isnan(Intv.Upper)) {
    throw EGeometry("Invalid Inteval Input for BoundBlockOf! Start %.4f End %.4f", Intv.Lower, Intv.Upper);
  }
  const int n = GetSegmentCount();
  TRect2D box = TRect2D::Invalid();
  if (n < 1) return box;
  // Parts outside the range belong to no segment: the stretch is held to [0, n].
  const double lower = std::clamp(Intv.Lower, 0.0, static_cast<double>(n));
  const double upper = std::clamp(Intv.Upper, 0.0, static_cast<double>(n));
  const double a = std::ceil(lower);
  const double b = std::floor(upper);
  if (b < a) {
    // Both bounds in one segment.
    const int i = std::min(static_cast<int>(std::floor(lower)), n - 1);
    box.Extend(GetBufSegment(i)->BoundBlockOf(TGeInterval(lower - i, upper - i, 1e-6)));
    return box;
  }
  const int ia = static_cast<int>(a);
  const int ib = static_cast<int>(b);
  if (a > lower + 1e-12 && ia >= 1) {
    box.Extend(GetBufSegment(ia - 1)->BoundBlockOf(TGeInterval(lower - a + 1.0, 1.0, 1e-6)));
  }
  for (int i = ia; i < ib; ++i) box.Extend(GetBufSegment(i)->BoundBlock());
  if (upper > b + 1e-12 && ib < n) box.Extend(GetBufSegment(ib)->BoundBlockOf(TGeInterval(0.0, upper - b, 1e-6)));
  if (!box.IsValid()) box = TRect2D(EvalPoint(lower));
  return box;
}

bool TGePiecewiseCurve2D::GetIsClosedTol(const TGeTolerance& ATol) const {
  if (GetSegmentCount() < 1) return false;
  return ATol.PointEquals(GetStartPoint(), GetEndPoint());
}

TPoint2D TGePiecewiseCurve2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  TPoint2D best = GetStartPoint();
  double bestDist = best.DistanceTo(Pnt);
  Param = GetStartParam();
  const int n = GetSegmentCount();
  for (int i = 0; i < n; ++i) {
    double u = 0.0;
    const TPoint2D p = GetBufSegment(i)->GetClosedPointTo(Pnt, Tol, u);
    const double d = p.DistanceTo(Pnt);
    if (d < bestDist) {
      bestDist = d;
      best = p;
      Param = u + i;
    }
  }
  return best;
}

bool TGePiecewiseCurve2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  if (!BoundBlock().Contains(Pnt, Tol.PointTol)) return false;
  const TPoint2D p = GetClosedPointTo(Pnt, Tol, Param);
  return Tol.PointEquals(Pnt, p);
}

double TGePiecewiseCurve2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  double t = 0.0;
  GetClosedPointTo(Pnt, Tol, t);
  return t;
}

double TGePiecewiseCurve2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const {
  const int n = GetSegmentCount();
  double p = ParamStart;
  double l = Len;
  if (n < 1 || std::isnan(p) || std::isnan(l)) return GetStartParam();
  const double nd = static_cast<double>(n);
  const bool closed = GetIsClosed();
  if (closed) {
    p = p - std::floor(p / nd) * nd;
    if (l > 0.0 && p + 1e-6 > nd) p = 0.0;
    if (l < 0.0 && p < 1e-6) p = nd;
  } else {
    // Before the start or past the end there is no segment to walk from.
    p = std::clamp(p, 0.0, nd);
  }
  if (Tol.PointTol >= std::fabs(l)) return p;
  int i = Floorf(p);
  if (l < 0.0 && fEqual(static_cast<double>(i), p, 1e-6)) --i;
  if (l > 0.0 && i >= n) return p;
  if (i < 0 || i >= n) return p;
  if (l > 0.0) {
    const double rest = SegmentLength(i, p - i, 1.0);
    if (rest >= l) return i + GetBufSegment(i)->ParamOfLength(p - i, l, Tol);
    l -= rest;
    for (int k = 0; k < n; ++k) {
      ++i;
      if (i > n - 1) {
        if (!closed) return GetEndParam();
        i = 0;
      }
      const TGePiecewiseSegment2D* seg = GetBufSegment(i);
      const double len = seg->GetCurveLength();
      if (len > l) return i + seg->ParamOfLength(seg->GetStartParam(), l, Tol);
      l -= len;
    }
    return GetEndParam();
  }
  l = -l;
  const double head = (p > 1e-6 && fGreat(p, i, 1e-6)) ? SegmentLength(i, 0.0, p - i) : 0.0;
  if (head >= l) return i + GetBufSegment(i)->ParamOfLength(p - i, -l, Tol);
  l -= head;
  for (int k = 0; k < n; ++k) {
    --i;
    if (i < 0) {
      if (!closed) return 0.0;
      i = n - 1;
    }
    const TGePiecewiseSegment2D* seg = GetBufSegment(i);
    const double len = seg->GetCurveLength();
    if (len > l) return i + seg->ParamOfLength(1.0, -l, Tol);
    l -= len;
  }
  return GetStartParam();
}

int TGePiecewiseCurve2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  Points.clear();
  Params.clear();
  const int n = GetSegmentCount();
  TDynPoints2D p;
  TFloatDynArray t;
  for (int i = 0; i < n; ++i) {
    GetBufSegment(i)->GetSamplePointsByChord(EpsChord, p, t);
    std::size_t m = p.size();
    if (i < n - 1 && m > 0) --m;
    for (std::size_t k = 0; k < m; ++k) {
      Points.push_back(p[k]);
      Params.push_back(t[k] + i);
    }
  }
  return static_cast<int>(Points.size());
}

int TGePiecewiseCurve2D::GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                                TFloatDynArray& params) const {
  const double s = paramTo - paramFrom;
  if (s == 0.0) {
    points = {EvalPoint(paramFrom)};
    params = {paramFrom};
    return 1;
  }
  points.clear();
  params.clear();
  if (!(s > 0.0)) return 0;
  const int n = GetSegmentCount();
  if (n < 1) return 0;
  const double from = std::max(paramFrom, GetStartParam());
  const double to = std::min(paramTo, GetEndParam());
  if (!(from <= to)) return 0;
  TDynPoints2D p;
  TFloatDynArray t;
  auto append = [&](int Seg, bool DropLast) {
    std::size_t m = p.size();
    if (DropLast && m > 0) --m;
    for (std::size_t k = 0; k < m; ++k) {
      points.push_back(p[k]);
      params.push_back(t[k] + Seg);
    }
  };
  double cur = from;
  int i = Floorf(from) + 1;
  while (!fEqual(i, to, 1e-6) && i < to && i <= n) {
    GetBufSegment(i - 1)->GetSamplePointsByChord(cur - (i - 1), 1.0, epsChord, p, t);
    append(i - 1, true);
    cur = i;
    ++i;
  }
  const int last = std::clamp(i - 1, 0, n - 1);
  GetBufSegment(last)->GetSamplePointsByChord(cur - last, to - last, epsChord, p, t);
  append(last, false);
  return static_cast<int>(points.size());
}

bool TGePiecewiseCurve2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  if (ACurve.ClassName() != ClassName()) return false;
  const auto* other = dynamic_cast<const TGePiecewiseCurve2D*>(&ACurve);
  if (other == nullptr) return false;
  const int n = GetSegmentCount();
  if (other->GetSegmentCount() != n) return false;
  bool same = true;
  for (int i = 0; i < n && same; ++i) same = GetBufSegment(i)->CheckEqual(*other->GetBufSegment(i), true);
  if (same || CheckDir) return same;
  for (int i = 0; i < n; ++i) {
    if (!GetBufSegment(i)->CheckEqual(*other->GetBufSegment(n - 1 - i), false)) return false;
  }
  return true;
}

void TGePiecewiseCurve2D::ReverseDir() { ClearSegmentCache(); }

void TGePiecewiseCurve2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGePiecewiseCurve2D.TransformBy");
  // The views are made afresh from the moved data rather than moved along with it: one
  // source of truth.
  ClearSegmentCache();
}

}  // namespace orvane
