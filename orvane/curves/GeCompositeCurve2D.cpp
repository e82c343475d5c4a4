#include "orvane/curves/GeCompositeCurve2D.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/curves/internal/SubCurveEval.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/persistence/FbsStream.h"
#include "orvane/persistence/internal/XmlNodeHelper.h"

namespace orvane {

TGeCompositeCurve2D::TGeCompositeCurve2D() : FCurves(true) {}

TGeCompositeCurve2D::TGeCompositeCurve2D(const TList<TGeCurve2D*>& List, bool OwnsCurve) : FCurves(OwnsCurve) {
  for (TGeCurve2D* c : List) {
    if (c == nullptr) throw EParamError("[Error] TGeCompositeCurve2D.Create: the list holds nil");
  }
  for (TGeCurve2D* c : List) FCurves.Add(c);
}

TGeCompositeCurve2D::~TGeCompositeCurve2D() = default;

std::string TGeCompositeCurve2D::ClassName() const { return "TGeCompositeCurve2D"; }

std::unique_ptr<TGeObject> TGeCompositeCurve2D::CreateEmpty() const { return std::make_unique<TGeCompositeCurve2D>(); }

void TGeCompositeCurve2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  auto* comp = dynamic_cast<TGeCompositeCurve2D*>(&Dest);
  if (comp == nullptr || comp == this) return;
  TObjectList<TGeCurve2D> copies(true);
  for (const TGeCurve2D* c : FCurves) copies.Add(c->CloneAs<TGeCurve2D>());
  // The clones are new objects: Dest must own them, whatever list it had before.
  comp->FCurves = std::move(copies);
  comp->Changed();
}

void TGeCompositeCurve2D::AddCurve(std::unique_ptr<TGeCurve2D> Curve) {
  if (!Curve) throw EParamError("[Error] TGeCompositeCurve2D.AddCurve: the curve is nil");
  FCurves.Add(std::move(Curve));
  Changed();
}

void TGeCompositeCurve2D::AddCurve(TGeCurve2D* Curve) {
  if (Curve == nullptr) throw EParamError("[Error] TGeCompositeCurve2D.AddCurve: the curve is nil");
  // A composite inside itself would make every query walk round for ever.
  if (Curve == this) throw EParamError("[Error] TGeCompositeCurve2D.AddCurve: a composite cannot hold itself");
  FCurves.Add(Curve);
  Changed();
}

void TGeCompositeCurve2D::Clear() {
  FCurves.Clear();
  Changed();
}

int TGeCompositeCurve2D::IndexOfCurve(const TGeCurve2D* ACurve) const {
  for (int i = 0; i < FCurves.Count(); ++i) {
    if (FCurves[i] == ACurve) return i;
  }
  return -1;
}

std::unique_ptr<TList<const TGeCurve2D*>> TGeCompositeCurve2D::GetCurves() const {
  auto list = std::make_unique<TList<const TGeCurve2D*>>();
  for (const TGeCurve2D* c : FCurves) list->Add(c);
  return list;
}

void TGeCompositeCurve2D::Changed() const {
  FOffsets.clear();
  FLengths.clear();
}

const std::vector<double>& TGeCompositeCurve2D::Offsets() const {
  if (FOffsets.empty()) {
    FOffsets.reserve(static_cast<std::size_t>(FCurves.Count()) + 1);
    FOffsets.push_back(0.0);
    for (const TGeCurve2D* c : FCurves) FOffsets.push_back(FOffsets.back() + c->GetInterval().GetLength());
  }
  return FOffsets;
}

const std::vector<double>& TGeCompositeCurve2D::Lengths() const {
  if (FLengths.empty()) {
    FLengths.reserve(static_cast<std::size_t>(FCurves.Count()) + 1);
    FLengths.push_back(0.0);
    for (const TGeCurve2D* c : FCurves) FLengths.push_back(FLengths.back() + c->GetCurveLength());
  }
  return FLengths;
}

int TGeCompositeCurve2D::IndexAt(double T, bool isLeft) const {
  const std::vector<double>& o = Offsets();
  const int n = FCurves.Count();
  // The first sub-curve whose end lies beyond T (at or beyond T for the left side).
  auto it = isLeft ? std::lower_bound(o.begin() + 1, o.end(), T) : std::upper_bound(o.begin() + 1, o.end(), T);
  const int i = static_cast<int>(it - (o.begin() + 1));
  return std::clamp(i, 0, n - 1);
}

double TGeCompositeCurve2D::SubParam(double Param, const TGeCurve2D*& Curve, bool isLeft) const {
  Curve = nullptr;
  const int n = FCurves.Count();
  if (n == 0) return Param;
  if (std::isnan(Param)) Param = 0.0;
  const std::vector<double>& o = Offsets();
  const double start = 0.0;
  const double end = o.back();
  const bool closed = GetIsClosed();
  double t = Param;
  if (closed && end > 0.0) t = Param - std::floor(Param / end) * end;
  constexpr double eps = 1e-6;
  if (fEqual(t, start, eps) && closed && isLeft) {
    Curve = Item(n - 1);
    return Curve->GetEndParam() + (t - start);
  }
  if (fSmall(t, start, eps) || (fEqual(t, start, eps) && isLeft && !closed)) {
    Curve = Item(0);
    return Curve->GetStartParam();
  }
  if (fEqual(t, end, eps) && closed && !isLeft) {
    Curve = Item(0);
    return Curve->GetStartParam() + (t - end);
  }
  if (fGreat(t, end, eps) || (fEqual(t, end, eps) && !closed && !isLeft)) {
    Curve = Item(n - 1);
    return Curve->GetEndParam();
  }
  const int i = IndexAt(t, isLeft);
  Curve = Item(i);
  return t - o[static_cast<std::size_t>(i)] + Curve->GetStartParam();
}

TPoint2D TGeCompositeCurve2D::GetStartPoint() const {
  return FCurves.IsEmpty() ? TPoint2D::FZero : FCurves.First()->GetStartPoint();
}

TPoint2D TGeCompositeCurve2D::GetEndPoint() const {
  return FCurves.IsEmpty() ? TPoint2D::FZero : FCurves.Last()->GetEndPoint();
}

double TGeCompositeCurve2D::GetCurveLength() const { return Lengths().back(); }

TGeInterval TGeCompositeCurve2D::GetInterval() const { return {0.0, Offsets().back(), 1e-6}; }

double TGeCompositeCurve2D::LengthAt(double Param) const {
  if (FCurves.IsEmpty()) return 0.0;
  if (Param >= GetEndParam()) return GetCurveLength();
  if (!(Param > GetStartParam())) return 0.0;
  const int i = IndexAt(Param, false);
  const TGeCurve2D* c = Item(i);
  const double local = Param - Offsets()[static_cast<std::size_t>(i)] + c->GetStartParam();
  return Lengths()[static_cast<std::size_t>(i)] + c->LengthAt(local);
}

TRect2D TGeCompositeCurve2D::BoundBlock() const {
  TRect2D box = TRect2D::Invalid();
  for (const TGeCurve2D* c : FCurves) box.Extend(c->BoundBlock());
  return box;
}

TRect2D TGeCompositeCurve2D::GetRoughBoundBlock() const {
  TRect2D box = TRect2D::Invalid();
  for (const TGeCurve2D* c : FCurves) box.Extend(c->GetRoughBoundBlock());
  return box;
}

TPoint2D TGeCompositeCurve2D::EvalPoint(double Param) const { return internal::EvalOnPiece(*this, Param); }

TPoint2D TGeCompositeCurve2D::EvalPoint(double Param, TPoint2D& Deriv) const {
  return internal::EvalOnPiece(*this, Param, Deriv);
}

TPoint2D TGeCompositeCurve2D::DerivLeft(double Param) const { return internal::DerivOnPiece(*this, Param, true); }

TPoint2D TGeCompositeCurve2D::DerivRight(double Param) const { return internal::DerivOnPiece(*this, Param, false); }

bool TGeCompositeCurve2D::GetIsClosedTol(const TGeTolerance& ATol) const {
  if (FCurves.IsEmpty()) return false;
  return ATol.PointEquals(GetStartPoint(), GetEndPoint());
}

bool TGeCompositeCurve2D::GetIsClockwise() const {
  const double eps = std::sqrt(BoundBlock().AreaAbs()) / 2000.0;
  // A chain without area has no sense of turn.
  if (!(eps > 0.0) || !std::isfinite(eps)) return false;
  TDynPoints2D pts;
  GetSamplePoints(eps, pts);
  return PolyArea(pts) < 0.0;
}

TPoint2D TGeCompositeCurve2D::GetClosedPointTo(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  TPoint2D best = GetStartPoint();
  double bestDist = std::numeric_limits<double>::max();
  Param = 0.0;
  const std::vector<double>& o = Offsets();
  for (int i = 0; i < FCurves.Count(); ++i) {
    const TGeCurve2D* c = Item(i);
    double u = 0.0;
    const TPoint2D p = c->GetClosedPointTo(Pnt, Tol, u);
    const double d = p.DistanceTo(Pnt);
    if (d < bestDist) {
      bestDist = d;
      best = p;
      Param = u + o[static_cast<std::size_t>(i)] - c->GetStartParam();
    }
  }
  return best;
}

bool TGeCompositeCurve2D::IsOn(const TPoint2D& Pnt, const TGeTolerance& Tol, double& Param) const {
  const std::vector<double>& o = Offsets();
  for (int i = 0; i < FCurves.Count(); ++i) {
    const TGeCurve2D* c = Item(i);
    double u = 0.0;
    if (c->IsOn(Pnt, Tol, u)) {
      Param = u + o[static_cast<std::size_t>(i)] - c->GetStartParam();
      return true;
    }
  }
  return false;
}

double TGeCompositeCurve2D::ParamOfPoint(const TPoint2D& Pnt, const TGeTolerance& Tol) const {
  double t = 0.0;
  GetClosedPointTo(Pnt, Tol, t);
  return t;
}

double TGeCompositeCurve2D::ParamOfLength(double ParamStart, double Len, const TGeTolerance& Tol) const {
  const double total = GetCurveLength();
  const double s = GetEndParam();
  if (!fGreat(total, 0.0, 1e-6) || !fGreat(s, 0.0, 1e-6) || std::isnan(ParamStart) || std::isnan(Len)) {
    return GetStartParam();
  }
  const bool forward = !fSmall(Len, 0.0, 1e-6);
  const bool closed = GetIsClosed();
  if (!closed) {
    if (forward && Len > total) return s;
    if (!forward && std::fabs(Len) > total) return 0.0;
  }
  double p = closed ? ParamStart - std::floor(ParamStart / s) * s : std::clamp(ParamStart, 0.0, s);
  double l = std::fabs(Len);
  if (closed) l -= std::floor(l / total) * total;
  if (closed && !forward && fEqual(p, 0.0, 1e-6)) p = s;
  if (closed && forward && fEqual(p, s, 1e-6)) p = 0.0;
  if (!fGreat(l, 0.0, 1e-6)) return p;
  // Where p stands along the chain, and which sub-curve it belongs to for this direction.
  const std::vector<double>& o = Offsets();
  const std::vector<double>& len = Lengths();
  const int i = IndexAt(p, !forward);
  const TGeCurve2D* c = Item(i);
  const double off = o[static_cast<std::size_t>(i)];
  const double t = p - off + c->GetStartParam();
  const double before = len[static_cast<std::size_t>(i)];
  const double at = before + c->LengthAt(t);
  // The target lies on the same sub-curve: walk there from t.
  if (forward && at + l <= len[static_cast<std::size_t>(i) + 1])
    return off + c->ParamOfLength(t, l, Tol) - c->GetStartParam();
  if (!forward && at - l >= before) return off + c->ParamOfLength(t, -l, Tol) - c->GetStartParam();
  double target = forward ? at + l : at - l;
  if (closed) {
    if (target > total) target -= total;
    if (target < 0.0) target += total;
  } else {
    if (target >= total) return s;
    if (target <= 0.0) return 0.0;
  }
  // The first sub-curve whose end reaches the target.
  auto it = std::lower_bound(len.begin() + 1, len.end(), target);
  const int j = std::clamp(static_cast<int>(it - (len.begin() + 1)), 0, FCurves.Count() - 1);
  const TGeCurve2D* cj = Item(j);
  const double rest = target - len[static_cast<std::size_t>(j)];
  return o[static_cast<std::size_t>(j)] + cj->ParamOfLength(cj->GetStartParam(), rest, Tol) - cj->GetStartParam();
}

namespace {

// Appends samples, dropping the first when it repeats the last stored one: a joint of a
// connected chain is stored once.
void AppendSamples(TDynPoints2D& Points, TFloatDynArray& Params, const TDynPoints2D& P, const TFloatDynArray& T,
                   double Shift) {
  std::size_t k = 0;
  if (!Points.empty() && !P.empty() && Points.back() == P.front() && fEqual(Params.back(), T.front() + Shift, 1e-6)) {
    k = 1;
  }
  for (; k < P.size(); ++k) {
    Points.push_back(P[k]);
    Params.push_back(T[k] + Shift);
  }
}

}  // namespace

int TGeCompositeCurve2D::GetSamplePointsByChord(double EpsChord, TDynPoints2D& Points, TFloatDynArray& Params) const {
  Points.clear();
  Params.clear();
  const std::vector<double>& o = Offsets();
  TDynPoints2D p;
  TFloatDynArray t;
  for (int i = 0; i < FCurves.Count(); ++i) {
    const TGeCurve2D* c = Item(i);
    c->GetSamplePointsByChord(EpsChord, p, t);
    AppendSamples(Points, Params, p, t, o[static_cast<std::size_t>(i)] - c->GetStartParam());
  }
  return static_cast<int>(Points.size());
}

int TGeCompositeCurve2D::GetSamplePointsByChord(double paramFrom, double paramTo, double epsChord, TDynPoints2D& points,
                                                TFloatDynArray& params) const {
  points.clear();
  params.clear();
  const TGeInterval intv = GetInterval();
  if (FCurves.IsEmpty() || !fSmall(paramFrom, paramTo, 1e-6) || !intv.Contains(paramFrom) || !intv.Contains(paramTo)) {
    return 0;
  }
  const double from = std::max(paramFrom, intv.Lower);
  const double to = std::min(paramTo, intv.Upper);
  const std::vector<double>& o = Offsets();
  TDynPoints2D p;
  TFloatDynArray t;
  for (int i = 0; i < FCurves.Count(); ++i) {
    const double lo = std::max(from, o[static_cast<std::size_t>(i)]);
    const double hi = std::min(to, o[static_cast<std::size_t>(i) + 1]);
    if (!fSmall(lo, hi, 1e-6)) continue;
    const TGeCurve2D* c = Item(i);
    const double shift = o[static_cast<std::size_t>(i)] - c->GetStartParam();
    c->GetSamplePointsByChord(lo - shift, hi - shift, epsChord, p, t);
    AppendSamples(points, params, p, t, shift);
  }
  return static_cast<int>(points.size());
}

std::unique_ptr<TGeCurve2D> TGeCompositeCurve2D::SubCurve(double PrmFrom, double PrmTo) const {
  const TGeInterval intv = GetInterval();
  if (FCurves.IsEmpty() || fEqual(PrmFrom, PrmTo, 1e-6) || !intv.Contains(PrmFrom) || !intv.Contains(PrmTo)) {
    return nullptr;
  }
  const double s = intv.Upper;
  double to = PrmTo;
  if (fGreat(PrmFrom, PrmTo, 1e-6)) {
    if (!GetIsClosed()) return nullptr;
    to += s;
  }
  double remain = to - PrmFrom;
  const TGeCurve2D* c = nullptr;
  double t = SubParam(PrmFrom, c, false);
  if (c == nullptr) return nullptr;
  auto result = std::make_unique<TGeCompositeCurve2D>();
  int i = IndexOfCurve(c);
  const int n = FCurves.Count();
  // Each round takes one sub-curve; a stretch through the seam passes each at most twice.
  for (int round = 0; round <= 2 * n; ++round) {
    remain -= c->GetEndParam() - t;
    if (!fGreat(remain, 0.0, 1e-6)) {
      if (std::unique_ptr<TGeCurve2D> part = c->SubCurve(t, c->GetEndParam() + remain))
        result->AddCurve(std::move(part));
      break;
    }
    if (fSmall(t, c->GetEndParam(), 1e-6)) {
      if (std::unique_ptr<TGeCurve2D> part = c->SubCurve(t, c->GetEndParam())) result->AddCurve(std::move(part));
    }
    ++i;
    if (i >= n) {
      if (!GetIsClosed()) break;
      i = 0;
    }
    c = Item(i);
    t = c->GetStartParam();
  }
  if (result->GetCurveCount() == 0) return nullptr;
  return result;
}

std::unique_ptr<TGeCurve2D> TGeCompositeCurve2D::CalcDegradeCurve() const {
  std::vector<std::unique_ptr<TGeCurve2D>> simpler;
  bool any = false;
  for (const TGeCurve2D* c : FCurves) {
    simpler.push_back(c->CalcDegradeCurve());
    any = any || simpler.back() != nullptr;
  }
  if (!any) return nullptr;
  auto result = std::make_unique<TGeCompositeCurve2D>();
  for (int i = 0; i < FCurves.Count(); ++i) {
    std::unique_ptr<TGeCurve2D>& s = simpler[static_cast<std::size_t>(i)];
    result->AddCurve(s ? std::move(s) : Item(i)->CloneAs<TGeCurve2D>());
  }
  return result;
}

bool TGeCompositeCurve2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  const auto* other = dynamic_cast<const TGeCompositeCurve2D*>(&ACurve);
  if (other == nullptr) return false;
  const int n = FCurves.Count();
  const bool closed = GetIsClosed();
  if (other->GetIsClosed() != closed || other->GetCurveCount() != n) return false;
  if (n == 0) return true;
  const TGeCurve2D* first = Item(0);
  bool same = false;
  int k = -1;
  for (int i = 0; i < n && k < 0; ++i) {
    if (first->CheckEqual(*other->Item(i), true)) k = i;
  }
  if (k >= 0 && (k == 0 || closed)) {
    same = true;
    for (int j = 1; j < n && same; ++j) same = Item(j)->CheckEqual(*other->Item((k + j) % n), true);
  }
  if (same || CheckDir) return same;
  k = -1;
  for (int i = n - 1; i >= 0 && k < 0; --i) {
    if (first->CheckEqual(*other->Item(i), false)) k = i;
  }
  if (k < 0 || (k < n - 1 && !closed)) return false;
  for (int j = 1; j < n; ++j) {
    if (!Item(j)->CheckEqual(*other->Item((k - j + n) % n), false)) return false;
  }
  return true;
}

void TGeCompositeCurve2D::ReverseDir() {
  for (TGeCurve2D* c : FCurves) c->ReverseDir();
  FCurves.Reverse();
  Changed();
}

void TGeCompositeCurve2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGeCompositeCurve2D.TransformBy");
  for (TGeCurve2D* c : FCurves) c->TransformBy(Mtx);
  Changed();
}

std::string TGeCompositeCurve2D::ToString() const {
  std::string text;
  for (const TGeCurve2D* c : FCurves) {
    text += ' ';
    text += c->ToString();
  }
  return text;
}

bool TGeCompositeCurve2D::CheckContinuous() const {
  for (int i = 0; i + 1 < FCurves.Count(); ++i) {
    if (!Item(i)->GetEndPoint().Equals(Item(i + 1)->GetStartPoint(), 1e-6)) return false;
  }
  return true;
}

namespace {

void AddLine(TGeCompositeCurve2D& C, const TPoint2D& A, const TPoint2D& B) {
  C.AddCurve(std::make_unique<TGeLine2D>(A, B));
}

void AddArc(TGeCompositeCurve2D& C, const TPoint2D& Center, double R, double Start, double Sweep) {
  C.AddCurve(std::make_unique<TGeCircularArc2D>(Center, R, Start, Sweep));
}

}  // namespace

std::unique_ptr<TGeCompositeCurve2D> TGeCompositeCurve2D::CreateRound(double AWidth, double ARadius) {
  const double half = AWidth / 2.0;
  const double r = ARadius;
  if (!(r <= half) || !(r >= 0.0) || !std::isfinite(AWidth)) throw EGeometry("Invalid Parameter for CreateRound!");
  const double h = half - r;
  auto c = std::make_unique<TGeCompositeCurve2D>();
  AddLine(*c, TPoint2D(-r, h), TPoint2D(-r, -h));
  AddArc(*c, TPoint2D(0, -h), r, Pi, Pi);
  AddLine(*c, TPoint2D(r, -h), TPoint2D(r, h));
  AddArc(*c, TPoint2D(0, h), r, 0.0, Pi);
  return c;
}

std::unique_ptr<TGeCompositeCurve2D> TGeCompositeCurve2D::CreateRoundRect(double AWidth, double AHeight,
                                                                          double ARadius) {
  const double hw = AWidth / 2.0;
  const double hh = AHeight / 2.0;
  const double r = ARadius;
  if (!(r + 1e-6 <= hw) || !(r + 1e-6 <= hh) || !(r >= 0.0) || !std::isfinite(hw) || !std::isfinite(hh)) {
    throw EGeometry("Invalid Parameter for CreateRoundRect!");
  }
  const double a = hw - r;
  const double b = hh - r;
  auto c = std::make_unique<TGeCompositeCurve2D>();
  AddLine(*c, TPoint2D(a, hh), TPoint2D(-a, hh));
  AddArc(*c, TPoint2D(-a, b), r, HalfPi, HalfPi);
  AddLine(*c, TPoint2D(-hw, b), TPoint2D(-hw, -b));
  AddArc(*c, TPoint2D(-a, -b), r, Pi, HalfPi);
  AddLine(*c, TPoint2D(-a, -hh), TPoint2D(a, -hh));
  AddArc(*c, TPoint2D(a, -b), r, 3.0 * HalfPi, HalfPi);
  AddLine(*c, TPoint2D(hw, -b), TPoint2D(hw, b));
  AddArc(*c, TPoint2D(a, b), r, 0.0, HalfPi);
  return c;
}

std::unique_ptr<TGeCompositeCurve2D> TGeCompositeCurve2D::CreateInnerC(double APrmA, double APrmB, double APrmH,
                                                                       double ARadius) {
  const double x = APrmB / 2.0;
  const double y = APrmH / 2.0;
  const double a = APrmA;
  const double r = ARadius;
  auto c = std::make_unique<TGeCompositeCurve2D>();
  AddLine(*c, TPoint2D(x, y - a), TPoint2D(x, y - r));
  AddArc(*c, TPoint2D(x - r, y - r), r, 0.0, HalfPi);
  AddLine(*c, TPoint2D(x - r, y), TPoint2D(-x + r, y));
  AddArc(*c, TPoint2D(-x + r, y - r), r, HalfPi, HalfPi);
  AddLine(*c, TPoint2D(-x, y - r), TPoint2D(-x, -y + r));
  AddArc(*c, TPoint2D(-x + r, -y + r), r, Pi, HalfPi);
  AddLine(*c, TPoint2D(-x + r, -y), TPoint2D(x - r, -y));
  AddArc(*c, TPoint2D(x - r, -y + r), r, 3.0 * HalfPi, HalfPi);
  AddLine(*c, TPoint2D(x, -y + r), TPoint2D(x, -y + a));
  return c;
}

std::unique_ptr<TGeCompositeCurve2D> TGeCompositeCurve2D::CreateHSection(double EdgeA, double EdgeB, double Thickness1,
                                                                         double Thickness2, double Radius,
                                                                         double Angle) {
  const double a = EdgeA;
  const double b = EdgeB;
  const double t1 = Thickness1;
  const double t2 = Thickness2;
  const double r = Radius;
  const double th = Angle;
  const TPoint2D A(a / 2, b / 2);
  const TPoint2D B(a / 2, b / 2 - t1);
  const TPoint2D D(t2 / 2 + r, b / 2 - t1);
  const TPoint2D C(t2 / 2 + r, b / 2 - t1 - r);
  const TPoint2D E(t2 / 2, b / 2 - t1 - r);
  const TPoint2D G(t2 / 2, b / 2 - t1 - r - std::tan(-th) * r);
  const bool tapered = -HalfPi < th && th < 0.0;
  auto m1 = [](const TPoint2D& P) { return TPoint2D(-P.X, P.Y); };
  auto m2 = [](const TPoint2D& P) { return TPoint2D(P.X, -P.Y); };
  auto neg = [](const TPoint2D& P) { return TPoint2D(-P.X, -P.Y); };
  auto c = std::make_unique<TGeCompositeCurve2D>();
  auto fillet = [&](const TPoint2D& Center, double Start, double Sweep, double Split) {
    if (r < 1e-6) return;
    if (!fEqual(th, HalfPi, 1e-6) && !fEqual(th, 0.0, 1e-6) && th >= 0.0) {
      AddArc(*c, Center, r, Start, -Split);
      AddArc(*c, Center, r, Start - Split, Sweep + Split);
    } else {
      AddArc(*c, Center, r, Start, Sweep);
    }
  };
  AddLine(*c, A, m1(A));
  AddLine(*c, m1(A), m1(B));
  AddLine(*c, m1(B), m1(D));
  fillet(m1(C), HalfPi, -HalfPi, HalfPi - th);
  if (tapered) {
    AddLine(*c, m1(E), m1(G));
    AddLine(*c, m1(G), neg(G));
    AddLine(*c, neg(G), neg(E));
  } else {
    AddLine(*c, m1(E), neg(E));
  }
  fillet(neg(C), 0.0, -HalfPi, th);
  AddLine(*c, neg(D), neg(B));
  AddLine(*c, neg(B), neg(A));
  AddLine(*c, neg(A), m2(A));
  AddLine(*c, m2(A), m2(B));
  AddLine(*c, m2(B), m2(D));
  fillet(m2(C), -HalfPi, -HalfPi, HalfPi - th);
  if (tapered) {
    AddLine(*c, m2(E), m2(G));
    AddLine(*c, m2(G), G);
    AddLine(*c, G, E);
  } else {
    AddLine(*c, m2(E), E);
  }
  fillet(C, Pi, -HalfPi, th);
  AddLine(*c, D, B);
  AddLine(*c, B, A);
  return c;
}

void TGeCompositeCurve2D::LoadFromXmlNode(const pugi::xml_node& ANode) {
  TGeCurve2D::LoadFromXmlNode(ANode);
  // The children decide, not "CurveCount"; a child of no known curve class is dropped. The
  // curves are collected first, so that a bad child leaves the composite as it was.
  TObjectList<TGeCurve2D> curves(true);
  for (pugi::xml_node c = ANode.first_child(); c; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    if (std::unique_ptr<TGeCurve2D> curve = TGeObject::ReadFromXmlNode<TGeCurve2D>(c)) curves.Add(std::move(curve));
  }
  FCurves = std::move(curves);
  Changed();
}

void TGeCompositeCurve2D::SaveToXmlNode(pugi::xml_node& ANode) const {
  using internal::TXmlNodeHelper;
  TGeCurve2D::SaveToXmlNode(ANode);
  TXmlNodeHelper::WriteAttr(ANode, "CurveCount", static_cast<std::int32_t>(FCurves.Count()));
  for (const TGeCurve2D* c : FCurves) c->WriteToXmlNode(ANode);
}

void TGeCompositeCurve2D::LoadGeoData(IFbsReader& AReader) {
  static constexpr const char* Where = "TGeCompositeCurve2D.LoadGeoData";
  // Loaded curves are new objects that someone must free.
  if (!GetOwnsCurves()) throw EListError("[Error] %s: the composite does not own its curves", Where);
  TGeObject::LoadGeoData(AReader);
  std::int32_t count = 0;
  {
    const TFbsRecord record = AReader.NextRecord();
    count = AReader.ReadInteger();
  }
  if (count < 0) throw EInOutError("[Error] %s: the curve count %d is negative (%s)", Where, count, AReader.GetPosition());
  // Each sub-curve reads at least one record from the stream, so a false count ends at the
  // stream's end; nothing is sized by it. A sub-curve that is no known curve would leave the
  // records behind it out of step: the stream is refused rather than holding a hole.
  std::vector<std::unique_ptr<TGeCurve2D>> curves;
  for (std::int32_t i = 0; i < count; ++i) {
    std::unique_ptr<TGeCurve2D> curve = TGeObject::ReadFromGeoData<TGeCurve2D>(AReader);
    if (curve == nullptr) {
      throw EInOutError("[Error] %s: sub-curve %d is of no known curve class (%s)", Where, i, AReader.GetPosition());
    }
    curves.push_back(std::move(curve));
  }
  // Appends, as a load on a composite that already holds curves is meant to.
  for (std::unique_ptr<TGeCurve2D>& c : curves) FCurves.Add(std::move(c));
  Changed();
}

void TGeCompositeCurve2D::SaveGeoData(IFbsWriter& AWriter) const {
  TGeObject::SaveGeoData(AWriter);
  {
    const TFbsRecord record = AWriter.BeginRecord(GetFilerName(), 1);
    AWriter.WriteInteger(static_cast<std::int32_t>(FCurves.Count()));
  }
  for (const TGeCurve2D* c : FCurves) TGeObject::SaveGeObjToDb(*c, AWriter);
}

}  // namespace orvane
