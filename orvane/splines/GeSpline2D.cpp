#include "orvane/splines/GeSpline2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeStrings.h"
#include "orvane/curves/internal/CurveChecks.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/PointArray.h"

namespace orvane {

const double CKnotsTol = 1e-8;

namespace {

constexpr double kTol = 1e-6;

std::size_t Ix(int I) { return static_cast<std::size_t>(I); }

TPoint3D Lerp(const TPoint3D& A, const TPoint3D& B, double T) {
  return {A.X + (B.X - A.X) * T, A.Y + (B.Y - A.Y) * T, A.Z + (B.Z - A.Z) * T};
}

// A small work array on the stack for the usual degrees, on the heap beyond.
class TWork {
 public:
  explicit TWork(int Count) {
    if (Count > static_cast<int>(FFixed.size())) {
      FHeap.resize(Ix(Count));
      FData = FHeap.data();
    } else {
      FData = FFixed.data();
    }
  }
  TPoint3D& operator[](int I) { return FData[I]; }

 private:
  std::array<TPoint3D, 16> FFixed;
  std::vector<TPoint3D> FHeap;
  TPoint3D* FData;
};

// The polar form of the polynomial piece on span Span at the arguments Args[0 .. p - 1]:
// de Boor's triangle with one argument per level. All equal to u, it is the curve point.
TPoint3D Blossom(const TDynPoints3D& Hom, const TFloatDynArray& U, int P, int Span, const double* Args) {
  TWork d(P + 1);
  for (int j = 0; j <= P; ++j) d[j] = Hom[Ix(Span - P + j)];
  for (int r = 1; r <= P; ++r) {
    const double t = Args[r - 1];
    for (int j = P; j >= r; --j) {
      const double lo = U[Ix(Span - P + j)];
      const double a = (t - lo) / (U[Ix(Span + 1 + j - r)] - lo);
      d[j] = Lerp(d[j - 1], d[j], a);
    }
  }
  return d[P];
}

}  // namespace

// ---------------------------------------------------------------------------------------
// Construction and data

TGeSpline2D::TGeSpline2D(int CtrlCount, int Degree) { Initialize(CtrlCount, Degree); }

TGeSpline2D::~TGeSpline2D() = default;

std::unique_ptr<TGeSpline2D> TGeSpline2D::CreateLine(const TPoint2D& P1, const TPoint2D& P2) {
  return CreateBezier({P1, P1 * (2.0 / 3.0) + P2 * (1.0 / 3.0), P1 * (1.0 / 3.0) + P2 * (2.0 / 3.0), P2});
}

std::unique_ptr<TGeSpline2D> TGeSpline2D::CreateBezier(const TBezierSegment2D& ABezier) {
  for (const TPoint2D& p : {ABezier.P0, ABezier.P1, ABezier.P2, ABezier.P3})
    internal::CheckFinitePoint<EGeometry>(p, "TGeSpline2D.CreateBezier", "ABezier");
  auto s = std::make_unique<TGeSpline2D>(4, 3);
  s->FCtrlPoints = {ABezier.P0, ABezier.P1, ABezier.P2, ABezier.P3};
  s->FWeights = {1.0, 1.0, 1.0, 1.0};
  s->FKnots = {0.0, 0.0, 0.0, 0.0, 1.0, 1.0, 1.0, 1.0};
  return s;
}

std::unique_ptr<TGeSpline2D> TGeSpline2D::CreateArc(const TPoint2D& ACenter, double ARadius, double StartAngle,
                                                    double AngleSweep) {
  internal::CheckFinitePoint<EGeometry>(ACenter, "TGeSpline2D.CreateArc", "ACenter");
  internal::CheckFinite<EGeometry>(ARadius, "TGeSpline2D.CreateArc", "ARadius");
  internal::CheckFinite<EGeometry>(StartAngle, "TGeSpline2D.CreateArc", "StartAngle");
  internal::CheckFinite<EGeometry>(AngleSweep, "TGeSpline2D.CreateArc", "AngleSweep");
  int count = 0;
  // The sweep is finite, so the count stays small: at most |sweep| / (pi / 2) + 1 pieces.
  for (double rest = std::fabs(AngleSweep); rest > 0.0 && !fEqual(rest, 0.0, kTol); rest -= std::numbers::pi / 2)
    ++count;
  if (count == 0) throw EGeometry("SweepAngle is too close to 0");
  const double piece = AngleSweep / count;
  const double w = std::cos(piece / 2.0);
  auto s = std::make_unique<TGeSpline2D>(2 * count + 1, 2);
  std::size_t k = 0;
  for (int i = 0; i < 3; ++i) s->FKnots[k++] = 0.0;
  double step = 0.0;
  for (int i = 1; i < count; ++i) {
    step += 1.0 / count;
    s->FKnots[k++] = step;
    s->FKnots[k++] = step;
  }
  for (int i = 0; i < 3; ++i) s->FKnots[k++] = 1.0;
  double angle = StartAngle;
  TPoint2D pt = ACenter + TPoint2D(std::cos(angle), std::sin(angle)) * ARadius;
  TPoint2D tangent(-std::sin(angle), std::cos(angle));
  s->FCtrlPoints[0] = pt;
  s->FWeights[0] = 1.0;
  for (int i = 0; i < count; ++i) {
    angle += piece;
    const TPoint2D next = ACenter + TPoint2D(std::cos(angle), std::sin(angle)) * ARadius;
    const TPoint2D nextTangent(-std::sin(angle), std::cos(angle));
    TPoint2D cross;
    TLine2D(pt, pt + tangent).Cross(TLine2D(next, next + nextTangent), cross);
    s->FCtrlPoints[Ix(2 * i + 1)] = cross;
    s->FWeights[Ix(2 * i + 1)] = w;
    s->FCtrlPoints[Ix(2 * i + 2)] = next;
    s->FWeights[Ix(2 * i + 2)] = 1.0;
    pt = next;
    tangent = nextTangent;
  }
  return s;
}

std::unique_ptr<TGeSpline2D> TGeSpline2D::CreateEllipse(const TPoint2D& ACenter, double MajorAxis,
                                                        double MinorAxis, double StartAngle, double AngleSweep) {
  if (!(MajorAxis >= 0.0001)) throw EGeometry("Invalid Ellipse MajorAxis Param %f", MajorAxis);
  internal::CheckFinite<EGeometry>(MinorAxis, "TGeSpline2D.CreateEllipse", "MinorAxis");
  auto s = CreateArc(ACenter, MajorAxis, StartAngle, AngleSweep);
  TMatrix2D toOrigin, scale, back;
  toOrigin.SetToTranslation(-ACenter.X, -ACenter.Y);
  scale.SetToIdentity();
  scale.M22 = MinorAxis / MajorAxis;
  back.SetToTranslation(ACenter);
  for (TPoint2D& p : s->FCtrlPoints) p = back.Transform(scale.Transform(toOrigin.Transform(p)));
  s->Invalidate();
  return s;
}

std::string TGeSpline2D::ClassName() const { return "TGeSpline2D"; }

std::unique_ptr<TGeObject> TGeSpline2D::CreateEmpty() const { return std::make_unique<TGeSpline2D>(); }

void TGeSpline2D::AssignTo(TPersistent& Dest) const {
  TGeCurve2D::AssignTo(Dest);
  auto* s = dynamic_cast<TGeSpline2D*>(&Dest);
  if (s == nullptr || s == this) return;
  s->FCtrlPoints = FCtrlPoints;
  s->FWeights = FWeights;
  s->FKnots = FKnots;
  s->FDegree = FDegree;
  s->FPeriodic = FPeriodic;
  s->FIsDerivative = FIsDerivative;
  s->Invalidate();
}

std::unique_ptr<TGeSpline2D> TGeSpline2D::CopySpline() const {
  auto s = std::make_unique<TGeSpline2D>();
  AssignTo(*s);
  return s;
}

void TGeSpline2D::Initialize(int CtrlCount, int Degree) {
  if (CtrlCount < 0 || Degree < 0)
    throw EParamError("[Error] TGeSpline2D.Initialize: negative count %d or degree %d", CtrlCount, Degree);
  FDegree = Degree;
  FKnots.resize(Ix(CtrlCount) + Ix(Degree) + 1, 0.0);
  FCtrlPoints.resize(Ix(CtrlCount));
  FWeights.resize(Ix(CtrlCount), 0.0);
  Invalidate();
}

void TGeSpline2D::Invalidate() {
  FUpdatedDerv = false;
  FIntervalOk = false;
  FRationalValid = false;
  FCheckedOk = false;
  FHomValid = false;
  FQuery.reset();
}

namespace {
int Cyclic(int Idx, std::size_t Count, const char* Where) {
  const int n = static_cast<int>(Count);
  if (n == 0 || Idx < -n) throw EParamError("[Error] TGeSpline2D.%s: index %d out of range", Where, Idx);
  return (Idx + n) % n;
}
void CheckIndex(int Idx, std::size_t Count, const char* Where) {
  if (Idx < 0 || Ix(Idx) >= Count) throw EParamError("[Error] TGeSpline2D.%s: index %d out of range", Where, Idx);
}
}  // namespace

TPoint2D TGeSpline2D::GetCtrlPoint(int Idx) const { return FCtrlPoints[Ix(Cyclic(Idx, FCtrlPoints.size(), "GetCtrlPoint"))]; }
double TGeSpline2D::GetWeight(int Idx) const { return FWeights[Ix(Cyclic(Idx, FWeights.size(), "GetWeight"))]; }
double TGeSpline2D::GetKnots(int Idx) const { return FKnots[Ix(Cyclic(Idx, FKnots.size(), "GetKnots"))]; }

TPoint3D TGeSpline2D::GetCtrlPointW(int Idx) const {
  const TPoint2D p = GetCtrlPoint(Idx);
  const double w = GetWeight(Idx);
  if (fEqual(w, 0.0, kTol)) return {p.X, p.Y, 0.0};
  return {p.X * w, p.Y * w, w};
}

void TGeSpline2D::SetCtrlPoint(int Idx, const TPoint2D& Value) {
  CheckIndex(Idx, FCtrlPoints.size(), "SetCtrlPoint");
  internal::CheckFinitePoint(Value, "TGeSpline2D.SetCtrlPoint", "Value");
  FCtrlPoints[Ix(Idx)] = Value;
  Invalidate();
}

void TGeSpline2D::SetWeight(int Idx, double Value) {
  CheckIndex(Idx, FWeights.size(), "SetWeight");
  if (!(Value > 0.0) || !std::isfinite(Value))
    throw EParamError("[Error] TGeSpline2D.SetWeight: the weight must be a positive number");
  FWeights[Ix(Idx)] = Value;
  Invalidate();
}

void TGeSpline2D::SetKnots(int Idx, double Value) {
  CheckIndex(Idx, FKnots.size(), "SetKnots");
  internal::CheckFinite(Value, "TGeSpline2D.SetKnots", "Value");
  FKnots[Ix(Idx)] = Value;
  Invalidate();
}

bool TGeSpline2D::GetIsRational() const {
  if (!FRationalValid) {
    FIsRational = false;
    for (std::size_t i = 1; i < FWeights.size(); ++i)
      if (FWeights[i] != FWeights[i - 1]) FIsRational = true;
    FRationalValid = true;
  }
  return FIsRational;
}

void TGeSpline2D::SetIsRational(bool Value) {
  FIsRational = Value;
  FRationalValid = true;
}

bool TGeSpline2D::IsAllWeightsOne() const {
  return std::all_of(FWeights.begin(), FWeights.end(), [](double w) { return fEqual(w, 1.0, 0.0001); });
}

TPoint2D TGeSpline2D::PointH(const TPoint3D& Pw) {
  if (fEqual(Pw.Z, 0.0, kTol)) return {Pw.X, Pw.Y};
  return {Pw.X / Pw.Z, Pw.Y / Pw.Z};
}

TRect2D TGeSpline2D::CtrlPointsBoundBlock() const {
  if (FCtrlPoints.empty()) return {};
  // From the first point, so that the origin does not join the box.
  TRect2D r(FCtrlPoints.front());
  for (const TPoint2D& p : FCtrlPoints) r.Extend(p);
  return r;
}

TRect2D TGeSpline2D::GetRoughBoundBlock() const { return CtrlPointsBoundBlock(); }

bool TGeSpline2D::GetIsClockwise() const { return PolyArea(FCtrlPoints) < 0.0; }

bool TGeSpline2D::GetIsClosedTol(const TGeTolerance& ATol) const {
  if (FPeriodic) return true;
  if (FCtrlPoints.size() < 2) return false;
  return ATol.PointEquals(FCtrlPoints.front(), FCtrlPoints.back());
}

void TGeSpline2D::TransformBy(const TMatrix2D& Mtx) {
  internal::CheckFiniteMatrix(Mtx, "TGeSpline2D.TransformBy");
  for (TPoint2D& p : FCtrlPoints) p = Mtx.Transform(p);
  Invalidate();
}

// ---------------------------------------------------------------------------------------
// Evaluation

void TGeSpline2D::CheckWellFormed(const char* Where) const {
  if (FCheckedOk) return;
  const int n = GetCtrlPointCount();
  const int p = FDegree;
  if (n < p + 1 || n == 0)
    throw EGeometry("[Error] TGeSpline2D.%s: %d control points are too few for degree %d", Where, n, p);
  if (GetKnotCount() != n + p + 1 || FWeights.size() != FCtrlPoints.size())
    throw EGeometry("[Error] TGeSpline2D.%s: %d knots and %d weights do not match %d control points of degree %d",
                    Where, GetKnotCount(), static_cast<int>(FWeights.size()), n, p);
  for (std::size_t i = 0; i < FKnots.size(); ++i) {
    if (!std::isfinite(FKnots[i])) throw EGeometry("[Error] TGeSpline2D.%s: knot %d is not finite", Where, int(i));
    if (i > 0 && FKnots[i] < FKnots[i - 1])
      throw EGeometry("[Error] TGeSpline2D.%s: the knots decrease at index %d", Where, int(i));
  }
  for (std::size_t i = 0; i < FCtrlPoints.size(); ++i) {
    if (!internal::IsFinite(FCtrlPoints[i]) || !std::isfinite(FWeights[i]))
      throw EGeometry("[Error] TGeSpline2D.%s: control point %d is not finite", Where, int(i));
    if (!FIsDerivative && !(FWeights[i] > 0.0))
      throw EGeometry("[Error] TGeSpline2D.%s: weight %d is not positive", Where, int(i));
  }
  if (!(FKnots[Ix(p)] < FKnots[Ix(n)]))
    throw EGeometry("[Error] TGeSpline2D.%s: the knot range is empty", Where);
  FCheckedOk = true;
}

const TDynPoints3D& TGeSpline2D::HomPoints() const {
  if (!FHomValid) {
    // Equal weights cancel in the quotient, so such a spline runs on weight 1. The weights
    // decide, not the rational flag, which a reader may have set otherwise.
    FHomUnit = std::all_of(FWeights.begin(), FWeights.end(), [this](double w) { return w == FWeights[0]; });
    FHom.resize(FCtrlPoints.size());
    for (std::size_t i = 0; i < FCtrlPoints.size(); ++i)
      FHom[i] = FHomUnit ? TPoint3D(FCtrlPoints[i].X, FCtrlPoints[i].Y, 1.0) : GetCtrlPointW(static_cast<int>(i));
    FHomValid = true;
  }
  return FHom;
}

TGeInterval TGeSpline2D::GetInterval() const {
  if (FIntervalOk) return FInterval;
  const int n = GetCtrlPointCount();
  const int k = GetKnotCount();
  if (FPeriodic) {
    for (int i = n - 1; i >= 1; --i) {
      if (FCtrlPoints[Ix(i)] == FCtrlPoints[0]) {
        const int s = n - i;
        if (s < k - s - 1) return {FKnots[Ix(s)], FKnots[Ix(k - s - 1)], kTol};
        break;
      }
    }
  }
  // A malformed spline has no range to speak of; evaluation reports it.
  if (k < 2 * FDegree + 2) return {0.0, 0.0, kTol};
  FInterval = TGeInterval(FKnots[Ix(FDegree)], FKnots[Ix(k - FDegree - 1)], kTol);
  FIntervalOk = true;
  return FInterval;
}

int TGeSpline2D::Multiplicity(double Param, int& Span) const {
  const int k = GetKnotCount();
  // Knots rise, so "lies above Param by more than the tolerance" splits them in two.
  const auto it = std::partition_point(FKnots.begin(), FKnots.end(),
                                       [Param](double t) { return !fSmall(Param, t, kTol); });
  if (it != FKnots.end()) {
    Span = static_cast<int>(it - FKnots.begin()) - 1;
    int mult = 0;
    for (int i = Span; i >= 0 && mult < FDegree && fEqual(FKnots[Ix(i)], Param, kTol); --i) ++mult;
    return mult;
  }
  if (k > 0 && fEqual(Param, FKnots.back(), kTol)) {
    Span = k - 2;
    return FDegree;
  }
  Span = k;
  return 0;
}

TPoint3DLists TGeSpline2D::DeBoor(double Param, int Span, int Mult) const {
  const int p = FDegree;
  TPoint3DLists tri;
  tri.emplace_back();
  for (int i = Span - p; i <= Span - Mult; ++i) tri.back().push_back(GetCtrlPointW(i));
  for (int r = 1; r <= p - Mult; ++r) {
    const TDynPoints3D& prev = tri.back();
    TDynPoints3D level;
    for (int i = Span - p + r; i <= Span - Mult; ++i) {
      const double lo = GetKnots(i);
      const double a = (Param - lo) / (GetKnots(i + p - r + 1) - lo);
      const int j = i - (Span - p + r - 1);  // index of entry i in the previous level
      level.push_back(Lerp(prev[Ix(j - 1)], prev[Ix(j)], a));
    }
    tri.push_back(std::move(level));
  }
  return tri;
}

int TGeSpline2D::FindSpan(double Param) const {
  const int p = FDegree;
  const int n = GetCtrlPointCount();
  // The last knot in [p, n - 1] at or below Param; the knot above it then lies above Param,
  // except at the very end, where the last non-empty span is taken.
  const auto first = FKnots.begin() + p + 1;
  const auto last = FKnots.begin() + n;
  int span = static_cast<int>(std::upper_bound(first, last, Param) - FKnots.begin()) - 1;
  while (span > p && !(FKnots[Ix(span)] < FKnots[Ix(span + 1)])) --span;
  return span;
}

TPoint3D TGeSpline2D::EvalW(double Param, TPoint3D* DerivW) const {
  const int p = FDegree;
  const TDynPoints3D& hom = HomPoints();
  const double lo = FKnots[Ix(p)];
  const double hi = FKnots[Ix(GetCtrlPointCount())];
  const double u = Param < lo ? lo : (Param > hi ? hi : Param);
  const int span = FindSpan(u);
  TWork d(p + 1);
  for (int j = 0; j <= p; ++j) d[j] = hom[Ix(span - p + j)];
  const double* t = FKnots.data() + (span - p);
  for (int r = 1; r <= p; ++r) {
    if (r == p && DerivW != nullptr) {
      // The last level's two inputs span one knot interval: their difference, scaled, is
      // the homogeneous derivative there.
      *DerivW = (d[p] - d[p - 1]) * (p / (t[p + 1] - t[p]));
    }
    for (int j = p; j >= r; --j) {
      const double a = (u - t[j]) / (t[j + p + 1 - r] - t[j]);
      d[j] = Lerp(d[j - 1], d[j], a);
    }
  }
  if (p == 0 && DerivW != nullptr) *DerivW = TPoint3D::FZero;
  return d[p];
}

TPoint3D TGeSpline2D::EvalPointW(double Param) const {
  CheckWellFormed("EvalPointW");
  if (std::isnan(Param)) throw EParamError("[Error] TGeSpline2D.EvalPointW: the parameter is not a number");
  const TGeInterval intv = GetInterval();
  const double u = Param < intv.Lower ? intv.Lower : (Param > intv.Upper ? intv.Upper : Param);
  TPoint3D pw = EvalW(u);
  if (FHomUnit) pw = pw * FWeights[0];
  return pw;
}

TPoint2D TGeSpline2D::EvalPoint(double Param) const {
  CheckWellFormed("EvalPoint");
  if (std::isnan(Param)) throw EParamError("[Error] TGeSpline2D.EvalPoint: the parameter is not a number");
  const TGeInterval intv = GetInterval();
  const double u = Param < intv.Lower ? intv.Lower : (Param > intv.Upper ? intv.Upper : Param);
  return PointH(EvalW(u));
}

void TGeSpline2D::FillDervSpline() const {
  const int n = GetCtrlPointCount();
  const int p = FDegree;
  if (!FDervSpline) FDervSpline = std::make_unique<TGeSpline2D>();
  TGeSpline2D& d = *FDervSpline;
  d.FIsDerivative = true;
  d.FPeriodic = false;
  d.Initialize(std::max(n - 1, 0), std::max(p - 1, 0));
  for (std::size_t i = 0; i + 2 < FKnots.size(); ++i) d.FKnots[i] = FKnots[i + 1];
  const TDynPoints3D& hom = HomPoints();
  d.FHom.resize(d.FCtrlPoints.size());
  for (int i = 0; i + 1 < n; ++i) {
    const double dk = FKnots[Ix(i + p + 1)] - FKnots[Ix(i + 1)];
    TPoint3D diff = (hom[Ix(i + 1)] - hom[Ix(i)]) * static_cast<double>(p);
    if (fEqual(dk, 0.0, kTol)) {
      diff.Z = 0.0;
    } else {
      diff = diff * (1.0 / dk);
    }
    d.FCtrlPoints[Ix(i)] = PointH(diff);
    d.FWeights[Ix(i)] = diff.Z;
    // Evaluation reads the exact difference, also where its weight part is tiny.
    d.FHom[Ix(i)] = diff;
  }
  d.FHomValid = true;
  d.FHomUnit = false;
  d.FRationalValid = true;
  d.FIsRational = true;
  d.FCheckedOk = true;
  FUpdatedDerv = true;
}

const TGeSpline2D& TGeSpline2D::GetDervSpline() const {
  CheckWellFormed("GetDervSpline");
  if (!FUpdatedDerv) FillDervSpline();
  return *FDervSpline;
}

TPoint2D TGeSpline2D::DerivW(double Param, const TPoint2D& Pnt) const {
  CheckWellFormed("DerivW");
  TPoint2D result = TPoint2D::FZero;
  if (FDegree > 0) {
    const TPoint3D dw = GetDervSpline().EvalW(Param);
    // The derivative spline runs on the weights as this spline's evaluation does.
    HomPoints();
    const double scale = FHomUnit ? FWeights[0] : 1.0;
    result = TPoint2D(dw.X, dw.Y) * scale - Pnt * (dw.Z * scale);
  }
  if (!(result == TPoint2D::FZero)) return result;
  const TGeInterval intv = GetInterval();
  const int n = GetCtrlPointCount();
  if (fEqual(Param, intv.Upper, kTol)) {
    for (int i = n - 2; i >= 0; --i)
      if (!(FCtrlPoints[Ix(i)] == FCtrlPoints[Ix(n - 1)])) return FCtrlPoints[Ix(n - 1)] - FCtrlPoints[Ix(i)];
  } else if (fEqual(Param, intv.Lower, kTol)) {
    for (int i = 1; i < n; ++i)
      if (!(FCtrlPoints[Ix(i)] == FCtrlPoints[0])) return FCtrlPoints[Ix(i)] - FCtrlPoints[0];
  }
  return result;
}

TPoint2D TGeSpline2D::EvalPoint(double Param, TPoint2D& Deriv) const {
  CheckWellFormed("EvalPoint");
  if (std::isnan(Param)) throw EParamError("[Error] TGeSpline2D.EvalPoint: the parameter is not a number");
  const TGeInterval intv = GetInterval();
  const double u = Param < intv.Lower ? intv.Lower : (Param > intv.Upper ? intv.Upper : Param);
  TPoint3D dw;
  const TPoint3D pw = EvalW(u, &dw);
  const TPoint2D pnt = PointH(pw);
  TPoint2D deriv = TPoint2D(dw.X, dw.Y) - pnt * dw.Z;
  if (deriv == TPoint2D::FZero) {
    const double scale = FHomUnit ? FWeights[0] : 1.0;
    deriv = DerivW(u, pnt) * (1.0 / scale);
    if (deriv == TPoint2D::FZero && u > intv.Lower && u < intv.Upper) {
      std::unique_ptr<TGeSpline2D> s1, s2;
      SplitSpline(u, s1, s2);
      if (s1) s1->HomPoints();
      if (s2) s2->HomPoints();
      if (s1) deriv = s1->DerivW(s1->GetEndParam(), pnt) * (1.0 / (s1->FHomUnit ? s1->FWeights[0] : 1.0));
      if (deriv == TPoint2D::FZero && s2)
        deriv = s2->DerivW(s2->GetStartParam(), pnt) * (1.0 / (s2->FHomUnit ? s2->FWeights[0] : 1.0));
    }
  }
  if (!fEqual(pw.Z, 0.0, kTol)) deriv = deriv / pw.Z;
  Deriv = deriv;
  return pnt;
}

// ---------------------------------------------------------------------------------------
// Cutting

bool TGeSpline2D::SplitAt(double Param, std::unique_ptr<TGeCurve2D>& Sub1,
                          std::unique_ptr<TGeCurve2D>& Sub2) const {
  std::unique_ptr<TGeSpline2D> a, b;
  SplitSpline(Param, a, b);
  Sub1 = std::move(a);
  Sub2 = std::move(b);
  return true;
}

bool TGeSpline2D::SplitSpline(double Param, std::unique_ptr<TGeSpline2D>& Sub1,
                              std::unique_ptr<TGeSpline2D>& Sub2) const {
  CheckWellFormed("SplitAt");
  if (std::isnan(Param)) throw EParamError("[Error] TGeSpline2D.SplitAt: the parameter is not a number");
  // The interval, not the outer knots, bounds the cut: beyond it an unclamped spline has no
  // curve to give.
  const TGeInterval intv = GetInterval();
  if (!fGreat(Param, intv.Lower, kTol)) {
    Sub1.reset();
    Sub2 = CopySpline();
    Sub2->FPeriodic = false;
    return true;
  }
  if (!fSmall(Param, intv.Upper, kTol)) {
    Sub1 = CopySpline();
    Sub1->FPeriodic = false;
    Sub2.reset();
    return true;
  }
  const int p = FDegree;
  int span = 0;
  const int mult = Multiplicity(Param, span);
  // A cut within the tolerance of a knot is a cut at that knot, so both parts stay exact.
  const double u = mult > 0 ? FKnots[Ix(span)] : Param;
  const TPoint3DLists tri = DeBoor(u, span, mult);
  const int last = GetCtrlPointCount() - 1;
  const int off = std::min(span - p, 0);

  auto left = std::make_unique<TGeSpline2D>(span - mult - off + 1, p);
  int c = 0;
  auto put = [](TGeSpline2D& s, int i, const TPoint3D& pw) {
    s.FCtrlPoints[Ix(i)] = PointH(pw);
    s.FWeights[Ix(i)] = pw.Z;
  };
  for (int i = off; i <= span - p; ++i, ++c) {
    left->FCtrlPoints[Ix(c)] = GetCtrlPoint(i);
    left->FWeights[Ix(c)] = GetWeight(i);
  }
  for (int r = 1; r <= p - mult; ++r, ++c) put(*left, c, tri[Ix(r)].front());
  int k = 0;
  for (int i = off; i <= span - mult; ++i, ++k) left->FKnots[Ix(k)] = i < 0 ? FKnots[0] : FKnots[Ix(i)];
  for (int i = 0; i <= p; ++i, ++k) left->FKnots[Ix(k)] = u;

  auto right = std::make_unique<TGeSpline2D>(last - span + p + 1, p);
  c = 0;
  for (int r = p - mult; r >= 1; --r, ++c) put(*right, c, tri[Ix(r)].back());
  for (int i = span - mult; i <= last; ++i, ++c) {
    right->FCtrlPoints[Ix(c)] = GetCtrlPoint(i);
    right->FWeights[Ix(c)] = GetWeight(i);
  }
  k = 0;
  for (int i = 0; i <= p - mult; ++i, ++k) right->FKnots[Ix(k)] = u;
  for (int i = span - mult + 1; i < GetKnotCount(); ++i, ++k) right->FKnots[Ix(k)] = FKnots[Ix(i)];

  // The weights of a non-rational spline are carried as they are, so its parts stay
  // non-rational; the triangle's weights equal them already.
  left->Invalidate();
  right->Invalidate();
  if (FPeriodic) {
    // A wrapped spline's outer knots reach past its interval: trim the parts to it.
    if (fGreat(left->GetEndParam(), intv.Lower, kTol) && fSmall(left->GetStartParam(), intv.Lower, kTol)) {
      std::unique_ptr<TGeSpline2D> dropped, kept;
      left->SplitSpline(intv.Lower, dropped, kept);
      if (kept) left = std::move(kept);
    }
    if (fGreat(right->GetEndParam(), intv.Upper, kTol) && fSmall(right->GetStartParam(), intv.Upper, kTol)) {
      std::unique_ptr<TGeSpline2D> kept, dropped;
      right->SplitSpline(intv.Upper, kept, dropped);
      if (kept) right = std::move(kept);
    }
  }
  Sub1 = std::move(left);
  Sub2 = std::move(right);
  return true;
}

// ---------------------------------------------------------------------------------------
// Periodic splines as drawings write them

namespace internal {

std::unique_ptr<TGeSpline2D> WrapPeriodicSpline(const TDynPoints2D& CtrlPoints, const TFloatDynArray& Weights,
                                                const TFloatDynArray& Knots, int Degree) {
  const int n = static_cast<int>(CtrlPoints.size());
  if (Degree < 1 || n < Degree + 1 || Knots.size() != CtrlPoints.size() + 1 ||
      (!Weights.empty() && Weights.size() != CtrlPoints.size()))
    throw EGeometry("[Error] WrapPeriodicSpline: %d control points, %d knots and %d weights do not make a periodic "
                    "spline of degree %d",
                    n, static_cast<int>(Knots.size()), static_cast<int>(Weights.size()), Degree);
  const double period = Knots.back() - Knots.front();
  if (!(period > 0.0) || !std::isfinite(period))
    throw EGeometry("[Error] WrapPeriodicSpline: the knots span no period");
  auto s = std::make_unique<TGeSpline2D>(n + Degree, Degree);
  for (int i = 0; i < n + Degree; ++i) {
    s->SetCtrlPoint(i, CtrlPoints[Ix(i % n)]);
    s->SetWeight(i, Weights.empty() ? 1.0 : Weights[Ix(i % n)]);
  }
  // Knot j of the wrapped form is knot (j - Degree) of the endless periodic sequence.
  for (int j = 0; j < s->GetKnotCount(); ++j) {
    const int m = j - Degree;
    const int q = m >= 0 ? m / n : -((-m + n - 1) / n);
    s->SetKnots(j, Knots[Ix(m - q * n)] + period * q);
  }
  s->SetPeriodic(true);
  return s;
}

}  // namespace internal

// ---------------------------------------------------------------------------------------
// Decomposition and clamping

namespace internal {

void ClampEnds(TDynPoints3D& Hom, TFloatDynArray& Knots, int Degree) {
  const int p = Degree;
  const int n = static_cast<int>(Hom.size());
  const int k = static_cast<int>(Knots.size());
  if (p == 0 || n < p + 1 || k != n + p + 1) return;
  if (Knots[0] == Knots[Ix(p)] && Knots[Ix(k - 1)] == Knots[Ix(k - 1 - p)]) return;
  // Each new end control point is the polar form of the end piece at its own knots in the
  // clamped vector. That holds for any number of control points, also where both ends'
  // rewrites meet in the middle.
  TFloatDynArray clamped = Knots;
  for (int i = 0; i <= p; ++i) {
    clamped[Ix(i)] = Knots[Ix(p)];
    clamped[Ix(k - 1 - i)] = Knots[Ix(k - 1 - p)];
  }
  int firstSpan = p;
  while (firstSpan < n - 1 && !(Knots[Ix(firstSpan)] < Knots[Ix(firstSpan + 1)])) ++firstSpan;
  int lastSpan = n - 1;
  while (lastSpan > p && !(Knots[Ix(lastSpan)] < Knots[Ix(lastSpan + 1)])) --lastSpan;
  const TDynPoints3D old = Hom;
  std::vector<double> args(Ix(p));
  auto rewrite = [&](int i, int span) {
    for (int r = 0; r < p; ++r) args[Ix(r)] = clamped[Ix(i + 1 + r)];
    Hom[Ix(i)] = Blossom(old, Knots, p, span, args.data());
  };
  for (int i = 0; i <= p && i < n; ++i) rewrite(i, firstSpan);
  for (int i = std::max(n - 1 - p, p + 1); i < n; ++i) rewrite(i, lastSpan);
  Knots = clamped;
}

}  // namespace internal

TFullMatrix GetBSpilineClampingMatrix(int Degree, const TFloatDynArray& Knots, bool AtStart) {
  const int p = std::max(Degree, 0);
  TFullMatrix result(Ix(p) + 1, std::vector<double>(Ix(p) + 1, 0.0));
  const int k = static_cast<int>(Knots.size());
  const int n = k - p - 1;
  if (k < 2 * p + 2) return result;
  const int span = AtStart ? p : n - 1;
  if (!(Knots[Ix(span)] < Knots[Ix(span + 1)])) return result;
  TFloatDynArray clamped = Knots;
  for (int i = 0; i <= p; ++i) {
    clamped[Ix(i)] = Knots[Ix(p)];
    clamped[Ix(k - 1 - i)] = Knots[Ix(k - 1 - p)];
  }
  // The polar form is linear in the control points: column c is the end piece's polar form
  // with control point c alone set to one.
  const int first = span - p;
  TDynPoints3D unit(Ix(n));
  std::vector<double> args(Ix(p));
  for (int c = 0; c <= p; ++c) {
    std::fill(unit.begin(), unit.end(), TPoint3D::FZero);
    unit[Ix(first + c)] = {1.0, 0.0, 0.0};
    for (int r = 0; r <= p; ++r) {
      const int i = first + r;
      for (int a = 0; a < p; ++a) args[Ix(a)] = clamped[Ix(i + 1 + a)];
      result[Ix(r)][Ix(c)] = Blossom(unit, Knots, p, span, args.data()).X;
    }
  }
  return result;
}

TPoint3DLists TGeSpline2D::DecomposeCurveW() const {
  TPoint3DLists pieces;
  TGeSpline2DList subs;
  if (SplineSplit(subs)) {
    for (const auto& s : subs) s->DecomposeOneSplineW(pieces);
  } else {
    DecomposeOneSplineW(pieces);
  }
  return pieces;
}

TPoint3DLists TGeSpline2D::DecomposeCurve() const {
  TPoint3DLists pieces = DecomposeCurveW();
  for (TDynPoints3D& piece : pieces)
    for (TPoint3D& q : piece) q = {q.X / q.Z, q.Y / q.Z, q.Z};
  return pieces;
}

void TGeSpline2D::DecomposeOneSplineW(TPoint3DLists& Pieces) const {
  const int n = GetCtrlPointCount();
  const int p = FDegree;
  if (n == 0 || GetKnotCount() != n + p + 1) return;
  try {
    CheckWellFormed("DecomposeCurve");
  } catch (const EGeometry&) {
    return;
  }
  if (p == 0) {
    for (int i = 0; i < n; ++i)
      if (FKnots[Ix(i)] < FKnots[Ix(i + 1)]) Pieces.push_back({HomPoints()[Ix(i)]});
    return;
  }
  // Unclamped ends are first rewritten in clamped form (exactly, by blossoming), so that
  // clamped, unclamped, uniform and rational splines alike have pieces.
  TDynPoints3D pw = HomPoints();
  TFloatDynArray u = FKnots;
  internal::ClampEnds(pw, u, p);
  // Knot insertion span by span, carrying the points the next piece shares.
  const int m = static_cast<int>(u.size()) - 1;
  TWork q(p + 1), next(p + 1);
  std::vector<double> alphas(Ix(p));
  for (int i = 0; i <= p; ++i) q[i] = pw[Ix(i)];
  int a = p, b = p + 1;
  while (b < m) {
    const int i0 = b;
    while (b < m && u[Ix(b + 1)] == u[Ix(b)]) ++b;
    const int mult = b - i0 + 1;
    if (mult < p) {
      const double numer = u[Ix(b)] - u[Ix(a)];
      for (int j = p; j > mult; --j) alphas[Ix(j - mult - 1)] = numer / (u[Ix(a + j)] - u[Ix(a)]);
      const int r = p - mult;
      for (int j = 1; j <= r; ++j) {
        const int save = r - j, s = mult + j;
        for (int k = p; k >= s; --k) q[k] = Lerp(q[k - 1], q[k], alphas[Ix(k - s)]);
        if (b < m) next[save] = q[p];
      }
    }
    if (u[Ix(a)] < u[Ix(b)]) {
      TDynPoints3D piece(Ix(p) + 1);
      for (int j = 0; j <= p; ++j) piece[Ix(j)] = q[j];
      Pieces.push_back(std::move(piece));
    }
    if (b < m) {
      for (int j = 0; j + 2 <= p; ++j) q[j] = next[j];
      for (int j = std::max(p - mult, 0); j <= p; ++j) q[j] = pw[Ix(b - p + j)];
      a = b;
      ++b;
    }
  }
}

bool TGeSpline2D::IsKnotsNeedTrim() const {
  const int k = GetKnotCount();
  if (k == 0) return false;
  int runStart = 0;
  for (int i = 1; i < k; ++i) {
    if (!fEqual(FKnots[Ix(i)], FKnots[Ix(runStart)], CKnotsTol)) {
      if (i - runStart > FDegree + 1) return true;
      runStart = i;
    }
  }
  return k - runStart > FDegree + 1;
}

bool TGeSpline2D::SplineSplit(TGeSpline2DList& Subs) const {
  const int k = GetKnotCount();
  const int p = FDegree;
  const int n = GetCtrlPointCount();
  if (k == 0 || k != n + p + 1) return false;
  bool cut = false;
  int runStart = 0;
  int from = 0;
  auto emit = [&](int KnotFrom, int KnotTo) {
    const int count = KnotTo - KnotFrom - p;
    if (count < p + 1) return;
    auto s = std::make_unique<TGeSpline2D>(count, p);
    for (int i = 0; i < count; ++i) {
      s->FCtrlPoints[Ix(i)] = FCtrlPoints[Ix(KnotFrom + i)];
      s->FWeights[Ix(i)] = FWeights[Ix(KnotFrom + i)];
    }
    for (int i = KnotFrom; i <= KnotTo; ++i) s->FKnots[Ix(i - KnotFrom)] = FKnots[Ix(i)];
    Subs.push_back(std::move(s));
  };
  for (int i = 1; i < k; ++i) {
    if (fEqual(FKnots[Ix(i - 1)], FKnots[Ix(i)], CKnotsTol)) continue;
    if (i - runStart > p + 1) {
      cut = true;
      if (runStart > p) emit(from, runStart + p);
      from = i - p - 1;
    }
    runStart = i;
  }
  const bool lastLong = k - runStart > p + 1;
  if (!cut && !lastLong) return false;
  const int knotTo = lastLong ? runStart + p : k - 1;
  if (from < knotTo - p && !fEqual(FKnots[Ix(from)], FKnots[Ix(knotTo - p)], CKnotsTol)) {
    emit(from, knotTo);
    cut = true;
  }
  return cut;
}

void TGeSpline2D::ConvertToClampingCurve() {
  CheckWellFormed("ConvertToClampingCurve");
  const int p = FDegree;
  const int n = GetCtrlPointCount();
  TDynPoints3D hom = HomPoints();
  const TDynPoints3D before = hom;
  TFloatDynArray knots = FKnots;
  internal::ClampEnds(hom, knots, p);
  const bool rational = !FHomUnit;
  for (int i = 0; i < n; ++i) {
    if (hom[Ix(i)] == before[Ix(i)]) continue;
    const TPoint3D& q = hom[Ix(i)];
    // A non-rational spline runs on weight 1 and keeps its weights.
    if (rational) {
      FCtrlPoints[Ix(i)] = {q.X / q.Z, q.Y / q.Z};
      FWeights[Ix(i)] = q.Z;
    } else {
      FCtrlPoints[Ix(i)] = {q.X, q.Y};
    }
  }
  FKnots = knots;
  Invalidate();
}

// ---------------------------------------------------------------------------------------
// Stretches, joining, reversal

std::unique_ptr<TGeCurve2D> TGeSpline2D::SubCurve(double PrmFrom, double PrmTo) const {
  if (std::isnan(PrmFrom) || std::isnan(PrmTo))
    throw EParamError("[Error] TGeSpline2D.SubCurve: a parameter is not a number");
  if (fGreat(PrmFrom, PrmTo, kTol)) {
    if (!GetIsClosed()) return nullptr;
    auto a = SubCurve(PrmFrom, GetEndParam());
    auto b = SubCurve(GetStartParam(), PrmTo);
    if (!a || !b) return a ? std::move(a) : std::move(b);
    // The stretch runs through the seam: the part up to the end, then the part from the
    // start, chained so that the composite's parameter walks on through the seam.
    auto composite = std::make_unique<TGeCompositeCurve2D>();
    composite->AddCurve(std::move(a));
    composite->AddCurve(std::move(b));
    return composite;
  }
  if (!fSmall(PrmFrom, PrmTo, kTol)) return nullptr;
  std::unique_ptr<TGeSpline2D> s1, s2;
  SplitSpline(PrmFrom, s1, s2);
  if (!s2) return nullptr;
  std::unique_ptr<TGeSpline2D> a, b;
  s2->SplitSpline(PrmTo, a, b);
  return a;
}

namespace {

// The first leg of the control polygon that turns back in x or in y (beyond the point
// tolerance), or -1.
int MonotonyBreak(const TGeSpline2D& S) {
  const TDynPoints2D& pts = S.GetCtrlPoints();
  if (pts.size() < 3) return -1;
  const double tol = DefTol.PointTol;
  int sx = 0, sy = 0;  // 0 undecided, 1 rising, -1 falling
  auto step = [tol](int& State, double D) {
    if (State == 0) {
      State = D < -tol ? -1 : (D > tol ? 1 : 0);
      return true;
    }
    return State > 0 ? D >= -tol : D <= tol;
  };
  for (std::size_t i = 1; i < pts.size(); ++i) {
    const bool okX = step(sx, pts[i].X - pts[i - 1].X);
    const bool okY = step(sy, pts[i].Y - pts[i - 1].Y);
    if (!okX || !okY) return static_cast<int>(i) - 1;
  }
  return -1;
}

constexpr std::size_t kMaxPieces = 100000;

}  // namespace

void TGeSpline2D::PolySplit(TGeSpline2DList& List, double EpsChord) const {
  if (!(EpsChord > 0.0) || !std::isfinite(EpsChord))
    throw EParamError("[Error] TGeSpline2D.PolySplit: EpsChord must be a positive number");
  CheckWellFormed("PolySplit");
  std::vector<std::unique_ptr<TGeSpline2D>> stack;
  stack.push_back(CopySpline());
  stack.back()->FPeriodic = false;
  std::size_t made = 0;
  while (!stack.empty()) {
    std::unique_ptr<TGeSpline2D> s = std::move(stack.back());
    stack.pop_back();
    const TGeInterval iv = s->GetInterval();
    bool cut = false;
    if (iv.GetLength() > 1e-5) {
      const TRect2D box = s->CtrlPointsBoundBlock();
      const bool bent = box.XMax - box.XMin >= EpsChord && box.YMax - box.YMin >= EpsChord &&
                        s->CtrlBoxError(EpsChord) > EpsChord;
      cut = bent || MonotonyBreak(*s) >= 0;
    }
    if (!cut) {
      List.push_back(std::move(s));
      continue;
    }
    // Each cut adds one piece; a bound on them keeps a huge knot range from running away.
    if (++made > kMaxPieces)
      throw EGeometry("[Error] TGeSpline2D.PolySplit: more than %d pieces are needed", int(kMaxPieces));
    std::unique_ptr<TGeSpline2D> a, b;
    s->SplitSpline((iv.Lower + iv.Upper) * 0.5, a, b);
    if (b) stack.push_back(std::move(b));
    if (a) stack.push_back(std::move(a));
  }
}

void TGeSpline2D::PolySplit(double From, double To, TGeSpline2DList& List, double EpsChord) const {
  std::unique_ptr<TGeCurve2D> sub = SubCurve(From, To);
  if (auto* s = dynamic_cast<TGeSpline2D*>(sub.get())) {
    s->PolySplit(List, EpsChord);
    return;
  }
  // A stretch through the seam comes as a composite of two spline parts: their pieces, in
  // order, are the stretch's pieces.
  if (const auto* c = dynamic_cast<const TGeCompositeCurve2D*>(sub.get())) {
    for (int i = 0; i < c->GetCurveCount(); ++i) {
      if (const auto* s = dynamic_cast<const TGeSpline2D*>(c->GetCurve(i))) s->PolySplit(List, EpsChord);
    }
  }
}

double TGeSpline2D::CtrlBoxError(double Tol) const {
  const int n = GetCtrlPointCount();
  if (n < 3) return 0.0;
  const TPoint2D a = FCtrlPoints.front();
  const TPoint2D dir = FCtrlPoints.back() - a;
  const double len = dir.Mag();
  double err = 0.0;
  for (int i = 1; i <= n - 2; ++i) {
    const TPoint2D v = FCtrlPoints[Ix(i)] - a;
    const double d = len > 0.0 ? std::fabs(dir.CrossMul(v)) / len : v.Mag();
    err = std::max(err, d);
    if (err > Tol) break;
  }
  return err;
}

bool TGeSpline2D::ConnectWith(const TGeSpline2D& ASpline) {
  if (ASpline.FDegree != FDegree) return false;
  // An empty argument has nothing to add.
  if (ASpline.FCtrlPoints.empty()) return false;
  if (FCtrlPoints.empty()) {
    if (&ASpline != this) ASpline.AssignTo(*this);
    FPeriodic = false;
    return true;
  }
  const int p = FDegree;
  if (ASpline.GetKnotCount() != ASpline.GetCtrlPointCount() + p + 1 || GetKnotCount() != GetCtrlPointCount() + p + 1)
    return false;
  const TDynPoints2D pts = ASpline.FCtrlPoints;
  const TFloatDynArray ws = ASpline.FWeights;
  const TFloatDynArray ks = ASpline.FKnots;
  const int n = GetCtrlPointCount();
  const int m = static_cast<int>(pts.size()) - 1;
  const double tail = FKnots.back();
  // The argument's range may start anywhere (a sub-curve keeps its parent's parameters):
  // its knots are shifted so that its start lands on this spline's end.
  const double shift = tail - ks[Ix(p)];
  Initialize(n + m, p);
  for (int i = 1; i <= m; ++i) {
    FCtrlPoints[Ix(n + i - 1)] = pts[Ix(i)];
    FWeights[Ix(n + i - 1)] = ws[Ix(i)];
  }
  for (int i = 0; i <= m; ++i) FKnots[Ix(n + p + i)] = ks[Ix(i + p + 1)] + shift;
  FPeriodic = false;
  Invalidate();
  return true;
}

bool TGeSpline2D::AddArc(const TArc2D& Arc) {
  return ConnectWith(*CreateArc(Arc.Center, Arc.Radius, Arc.StartAngle, Arc.SweepAngle));
}

bool TGeSpline2D::AddBezier(const TBezierSegment2D& Bezier) { return ConnectWith(*CreateBezier(Bezier)); }

bool TGeSpline2D::AddLine(const TLine2D& Line) { return ConnectWith(*CreateLine(Line.P1, Line.P2)); }

void TGeSpline2D::ReverseDir() {
  std::reverse(FCtrlPoints.begin(), FCtrlPoints.end());
  std::reverse(FWeights.begin(), FWeights.end());
  if (!FKnots.empty()) {
    const double a = FKnots.front();
    const double b = FKnots.back();
    std::reverse(FKnots.begin(), FKnots.end());
    for (double& k : FKnots) k = a + b - k;
  }
  Invalidate();
}

bool TGeSpline2D::CheckEqual(const TGeCurve2D& ACurve, bool CheckDir) const {
  const auto* s = dynamic_cast<const TGeSpline2D*>(&ACurve);
  if (s == nullptr || s->GetCtrlPointCount() != GetCtrlPointCount() || s->GetKnotCount() != GetKnotCount() ||
      s->FDegree != FDegree || s->FWeights.size() != FWeights.size())
    return false;
  for (std::size_t i = 0; i < FKnots.size(); ++i)
    if (!fEqual(FKnots[i], s->FKnots[i], kTol)) return false;
  const std::size_t n = FCtrlPoints.size();
  bool forward = true;
  for (std::size_t i = 0; i < n && forward; ++i)
    forward = fEqual(FWeights[i], s->FWeights[i], kTol) && DefTol.PointEquals(FCtrlPoints[i], s->FCtrlPoints[i]);
  if (forward) return true;
  if (CheckDir) return false;
  for (std::size_t i = 0; i < n; ++i)
    if (!fEqual(s->FWeights[i], FWeights[n - 1 - i], kTol) ||
        !DefTol.PointEquals(s->FCtrlPoints[i], FCtrlPoints[n - 1 - i]))
      return false;
  return true;
}

bool TGeSpline2D::Contains(const TGeCurve2D& ACurve) const { return CheckEqual(ACurve, false); }

std::string TGeSpline2D::ToString() const {
  const std::string eol = "\r\n";
  std::string s = Format(SGeSplineInfoFmt, FDegree, GetKnotCount(), GetCtrlPointCount());
  s += eol + SGeKnot + eol + "(";
  for (const double k : FKnots) s += FloatToStr(k) + ", ";
  s += ")" + eol + SGeCtrlPt;
  for (std::size_t i = 0; i < FCtrlPoints.size(); ++i)
    s += eol + Format("%8.3f, %8.3f (w: %4f)", FCtrlPoints[i].X, FCtrlPoints[i].Y, FWeights[i]);
  return s;
}

namespace internal {

std::vector<std::unique_ptr<TGeBezier2D>> SplineToBezierCurves(const TGeSpline2D& Spline) {
  std::vector<std::unique_ptr<TGeBezier2D>> out;
  const int p = Spline.GetDegree();
  if (p < 1 || p > 3) return out;
  const TPoint3DLists pieces = Spline.DecomposeCurve();
  out.reserve(pieces.size());
  for (const TDynPoints3D& piece : pieces) {
    // A piece whose weights are all equal is a polynomial one; any other is a true rational
    // curve, which a cubic Bezier cannot hold exactly.
    const double w0 = piece.front().Z;
    for (const TPoint3D& q : piece)
      if (!(std::fabs(q.Z - w0) <= 1e-12 * std::fabs(w0))) return {};
    std::array<TPoint2D, 4> c;
    const auto at = [&piece](std::size_t i) { return TPoint2D(piece[i].X, piece[i].Y); };
    // Lower degrees are raised to cubic, which leaves the curve and its parameter as they were.
    if (p == 1) {
      c = {at(0), at(0) * (2.0 / 3.0) + at(1) * (1.0 / 3.0), at(0) * (1.0 / 3.0) + at(1) * (2.0 / 3.0), at(1)};
    } else if (p == 2) {
      c = {at(0), at(0) * (1.0 / 3.0) + at(1) * (2.0 / 3.0), at(1) * (2.0 / 3.0) + at(2) * (1.0 / 3.0), at(2)};
    } else {
      c = {at(0), at(1), at(2), at(3)};
    }
    out.push_back(std::make_unique<TGeBezier2D>(c[0], c[1], c[2], c[3]));
  }
  return out;
}

}  // namespace internal

}  // namespace orvane
