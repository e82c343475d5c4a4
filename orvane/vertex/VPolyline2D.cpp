#include "orvane/vertex/VPolyline2D.h"

#include <algorithm>
#include <cmath>

#include "orvane/algorithms/MelkmanAlgo.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

// Construction ---------------------------------------------------------------------------

TVPolyline2D::TVPolyline2D(const TPoint2D& Pt) { FItems.push_back(Pt); }

TVPolyline2D::TVPolyline2D(const TLine2D& Line) { FItems = {Line.P1, Line.P2}; }

TVPolyline2D::TVPolyline2D(const TRect2D& Rect) {
  FItems = {Rect.MaxPoint(), Rect.XMinYMax(), Rect.MinPoint(), Rect.XMaxYMin(), Rect.MaxPoint()};
}

TVPolyline2D::TVPolyline2D(const TArc2D& Arc, double ChordTol) {
  TFloatDynArray params;
  Arc.GetSamplePoints(0.0, 1.0, ChordTol, FItems, params, 1000);
}

TVPolyline2D::TVPolyline2D(const TPath64& Path, double Rate) {
  internal::CheckPositiveRate(Rate, "TVPolyline2D.Create");
  FItems.reserve(Path.size());
  for (const TPoint64& p : Path) {
    FItems.emplace_back(static_cast<double>(p.X) / Rate, static_cast<double>(p.Y) / Rate);
  }
}

TVPolyline2D::TVPolyline2D(const TDynPoints2D& Pts) : TVPoint2DList(Pts) {}

TVPolyline2D::TVPolyline2D(const TList<TPoint2D>& Pts) : TVPoint2DList(Pts.List()) {}

std::unique_ptr<TVPoint2DList> TVPolyline2D::New() const { return std::make_unique<TVPolyline2D>(); }

void TVPolyline2D::CopyFrom(const TVPoint2DList& Source) {
  SetCapacity(Count() + Source.Count());
  TVPoint2DList::CopyFrom(Source);
}

// Conversions ----------------------------------------------------------------------------

void TVPolyline2D::Assign(const TDynPoints2D& Pts) {
  // Through Clear and Add, so that a derived class hears of every vertex.
  if (&Pts == &FItems) return;
  Clear();
  SetCapacity(static_cast<int>(Pts.size()));
  for (const TPoint2D& p : Pts) Add(p);
}

TPath64 TVPolyline2D::ToPath(double Rate) const {
  TPath64 path;
  path.reserve(FItems.size());
  for (const TPoint2D& p : FItems) path.emplace_back(Round(p.X * Rate), Round(p.Y * Rate));
  return path;
}

std::string TVPolyline2D::ToString() const {
  std::string text;
  for (const TPoint2D& p : FItems) text += Format("(%.16f, %.16f), ", p.X, p.Y);
  return text;
}

void TVPolyline2D::SetIsClockwise(bool IsClockwise) {
  if (!FItems.empty() && this->IsClockwise() != IsClockwise) Reverse();
}

// Queries --------------------------------------------------------------------------------

TLine2D TVPolyline2D::Line(int Id) const {
  if (Id < 0 || Id > Count() - 2) throw Exception("[Error] TVPolyline2D.Line: 下标越界");
  return {V(Id), V(Id + 1)};
}

std::unique_ptr<TVPolyline2D> TVPolyline2D::SubCurve(double ParamFrom, double ParamTo) const {
  auto result = std::make_unique<TVPolyline2D>();
  if (FItems.empty()) return result;
  const bool closed = IsClosed(DefaultTol);
  if (!closed && ParamFrom > ParamTo + DefaultTol) {
    throw EParamError("[Error] TVPolyline2D.SubCurve: ParamTo < ParamFrom");
  }
  const double last = static_cast<double>(Count() - 1);
  auto inRange = [&](double t) { return std::isfinite(t) && t >= -DefaultTol && t <= last + DefaultTol; };
  if (!inRange(ParamFrom) || !inRange(ParamTo)) throw EParamError("[Error] TVPolyline2D.SubCurve: 参数错误");
  ParamFrom = std::clamp(ParamFrom, 0.0, last);
  ParamTo = std::clamp(ParamTo, 0.0, last);

  TDynPoints2D& pts = result->FItems;
  pts.push_back(CalcPointByParam(ParamFrom));
  if (fEqual(ParamFrom, ParamTo, DefaultTol)) return result;

  // The first vertex strictly behind the start.
  int i = static_cast<int>(std::ceil(ParamFrom + DefaultTol));
  if (closed && ParamFrom > ParamTo) {
    for (; i < Count(); ++i) pts.push_back(V(i));
    // Vertex 0 repeats the last one, which is already in.
    i = 1;
  }
  for (; i < ParamTo - DefaultTol; ++i) pts.push_back(V(i));
  const TPoint2D end = CalcPointByParam(ParamTo);
  if (!end.Equals(pts.back(), DefaultTol)) pts.push_back(end);
  return result;
}

bool TVPolyline2D::IsEqualTo(const TVPolyline2D& Polyline, double Tolerance) const {
  if (Count() != Polyline.Count()) return false;
  for (int i = 0; i < Count(); ++i) {
    if (!V(i).Equals(Polyline.V(i), Tolerance)) return false;
  }
  return true;
}

bool TVPolyline2D::IsEqualToReverse(const TVPolyline2D& Polyline, double Tolerance) const {
  const int n = Count();
  if (n != Polyline.Count()) return false;
  for (int i = 0; i < n; ++i) {
    if (!V(i).Equals(Polyline.V(n - 1 - i), Tolerance)) return false;
  }
  return true;
}

bool TVPolyline2D::IsClosed(double Tol) const { return !FItems.empty() && FItems.front().Equals(FItems.back(), Tol); }

bool TVPolyline2D::IsRect(bool AABBOnly) const {
  const int n = Count();
  if (!(n == 4 || (n == 5 && IsClosed(DefaultTol)))) return false;
  const TPoint2D e1 = V(1) - V(0);
  const TPoint2D e2 = V(2) - V(1);
  const TPoint2D e3 = V(3) - V(2);
  const TPoint2D e4 = (n == 4 ? V(0) : V(4)) - V(3);
  if (AABBOnly) {
    double a = e1.AngleBetween(TPoint2D(1.0, 0.0));
    while (a > HalfPi) a -= HalfPi;
    if (!fEqual(a, 0.0, DefaultTol) && !fEqual(a, HalfPi, DefaultTol)) return false;
  }
  const double a = e2.AngleFrom(e1);
  if (!fEqual(a, HalfPi, DefaultTol) && !fEqual(a, 4.71238898038469, DefaultTol)) return false;
  return fEqual(e3.AngleFrom(e2), a, DefaultTol) && fEqual(e4.AngleFrom(e3), a, DefaultTol);
}

double TVPolyline2D::TotalLength() const {
  double sum = 0.0;
  for (int i = 0; i + 1 < Count(); ++i) sum += V(i).DistanceTo(V(i + 1));
  return sum;
}

double TVPolyline2D::RangeLength(int SIdx, int EIdx) const {
  const int n = Count();
  Assert(SIdx >= 0 && SIdx < n && EIdx >= 0 && EIdx < n, "[Assert] TVPolyline2D.RangeLength: 下标越界");
  if (SIdx == EIdx) return 0.0;
  if (EIdx < SIdx && !IsClosed(DefaultTol)) return 0.0;
  double sum = 0.0;
  int i = SIdx;
  for (;;) {
    const int next = i + 1 == n ? 0 : i + 1;
    sum += V(i).DistanceTo(V(next));
    if (next == EIdx) return sum;
    i = next;
  }
}

void TVPolyline2D::ConvexHull(TList<int>& Hull) { TMelkmanAlgo::CalcConvexHull(*this, Hull); }

void TVPolyline2D::ConvexHull(TVPolyline2D& Hull) const {
  // A plain copy of the vertices serves as the clone: only its points take part.
  TVPolyline2D copy(FItems);
  TList<int> ids;
  TMelkmanAlgo::CalcConvexHull(copy, ids);
  Hull.SetCapacity(Hull.Count() + ids.Count());
  for (int id : ids) Hull.Add(copy.V(id));
}

bool TVPolyline2D::IsConvexPolygon(bool AllowSame) const {
  const int n = Count();
  if (n < 3) return false;
  const bool closed = IsClosed(DefaultTol);
  if (n == 3 && closed) return false;

  // 1. A convex loop changes direction in X-then-Y order exactly twice.
  auto follows = [](const TPoint2D& P, const TPoint2D& Q) { return Q.X > P.X || (Q.X == P.X && Q.Y > P.Y); };
  int changes = 0;
  int sameChanges = 0;
  bool prevDir = follows(V(0), V(1));
  bool prevSame = AllowSame && V(0) == V(1);
  for (int i = 1; i <= n - 2; ++i) {
    const bool dir = follows(V(i), V(i + 1));
    const bool same = AllowSame && V(i) == V(i + 1);
    if (dir != prevDir) {
      ++changes;
      if (prevSame || same) ++sameChanges;
    }
    prevDir = dir;
    prevSame = same;
  }
  if (changes > 2 && (!AllowSame || changes - sameChanges >= 3)) return false;

  // 2. Every corner turns the same way, or not at all.
  int negative = 0;
  int positive = 0;
  int zero = 0;
  auto classify = [&](const TPoint2D& Prev, const TPoint2D& Cur) {
    const double c = Prev.CrossMul(Cur);
    if (std::fabs(c) < 1e-14)
      ++zero;
    else if (c < 0.0)
      ++negative;
    else
      ++positive;
    return negative == 0 || positive == 0;
  };
  TPoint2D prev = V(0) - V(closed ? n - 2 : n - 1);
  for (int i = 0; i <= n - 2; ++i) {
    const TPoint2D cur = V(i + 1) - V(i);
    if (!classify(prev, cur)) return false;
    prev = cur;
  }
  if (!closed && !classify(prev, V(0) - V(n - 1))) return false;
  const int corners = closed ? n - 1 : n;
  return negative + zero == corners || positive + zero == corners;
}

TPoint2D TVPolyline2D::Gravity() const {
  // The closing step reads the last and the first vertex through the checked accessors.
  const TPoint2D& last = Last();
  const TPoint2D& first = First();
  double a = 0.0;
  TPoint2D s;
  auto step = [&](const TPoint2D& P, const TPoint2D& Q) {
    const double c = P.CrossMul(Q);
    a += c;
    s += (P + Q) * c;
  };
  for (int i = 0; i + 1 < Count(); ++i) step(V(i), V(i + 1));
  step(last, first);
  if (fEqual(a, 0.0, DefaultTol)) return BoundBox().CenterPoint();
  return (s / a) / 3.0;
}

TPoint2D TVPolyline2D::CalcLeftDerivative(double Param) const {
  internal::CheckFinite(Param, "TVPolyline2D.CalcLeftDerivative", "Param");
  const int n = Count();
  if (n < 2 || Param < 0.0 || Param > static_cast<double>(n - 1)) return TPoint2D::FZero;
  const TPoint2D p = CalcPointByParam(Param);
  int i = static_cast<int>(std::floor(Param));
  if (fEqual(Param, static_cast<double>(i), DefaultTol)) --i;
  if (i == -1) {
    if (!IsClosed(DefaultTol)) return TPoint2D::FZero;
    i = n - 2;
  }
  return p - V(i);
}

TPoint2D TVPolyline2D::CalcRightDerivative(double Param) const {
  internal::CheckFinite(Param, "TVPolyline2D.CalcRightDerivative", "Param");
  const int n = Count();
  if (n < 2 || Param < 0.0 || Param > static_cast<double>(n - 1)) return TPoint2D::FZero;
  const TPoint2D p = CalcPointByParam(Param);
  int j = static_cast<int>(std::ceil(Param));
  if (fEqual(Param, static_cast<double>(j), DefaultTol)) ++j;
  if (j == n) {
    if (!IsClosed(DefaultTol)) return TPoint2D::FZero;
    j = 1;
  }
  return V(j) - p;
}

void TVPolyline2D::CalcDerivative(double Param, TPoint2D& Left, TPoint2D& Right) const {
  Left = CalcLeftDerivative(Param);
  Right = CalcRightDerivative(Param);
}

double TVPolyline2D::CalcParamByPoint(const TPoint2D& Point, double Radius) const {
  double best = Radius;
  double result = 0.0;
  for (int i = 0; i + 1 < Count(); ++i) {
    const TLine2D seg(V(i), V(i + 1));
    if (best != MaxDouble && !seg.GetBoundBox().InflatedRect(best, best).Contains(Point, DefaultTol)) continue;
    double u = 0.0;
    TPoint2D nearest;
    const double d = seg.DistanceLimit(Point, u, nearest);
    if (d < best) {
      best = d;
      result = i + u;
    }
  }
  return result;
}

double TVPolyline2D::CalcFirstParamByPoint(const TPoint2D& Point, double Tol) const {
  for (int i = 0; i + 1 < Count(); ++i) {
    double u = 0.0;
    TPoint2D nearest;
    if (TLine2D(V(i), V(i + 1)).DistanceLimit(Point, u, nearest) < Tol) return i + u;
  }
  return -1.0;
}

TPoint2D TVPolyline2D::CalcPointByParam(double Param) const {
  internal::CheckFinite(Param, "TVPolyline2D.CalcPointByParam", "Param");
  if (Param < 0.0 || Param > static_cast<double>(Count() - 1)) return TPoint2D::FZero;
  const double lo = std::floor(Param);
  const int i = static_cast<int>(lo);
  const int j = static_cast<int>(std::ceil(Param));
  return V(i) + (V(j) - V(i)) * (Param - lo);
}

double TVPolyline2D::DistTo(const TPoint2D& Pt, TPoint2D& NearestPt) const {
  const int n = Count();
  if (n == 0) return MaxDouble;
  if (n == 1) {
    NearestPt = V(0);
    return Pt.DistanceTo(V(0));
  }
  double best = MaxDouble;
  TPoint2D bestPt;
  for (int i = 0; i + 1 < n; ++i) {
    double u = 0.0;
    TPoint2D nearest;
    const double d = TLine2D(V(i), V(i + 1)).DistanceLimit(Pt, u, nearest);
    if (d < best) {
      best = d;
      bestPt = nearest;
    }
  }
  NearestPt = bestPt;
  return best;
}

bool TVPolyline2D::CalcTravelPos(int StartId, double Distance, double& Param, TPoint2D& Pos) const {
  internal::CheckFinite(Distance, "TVPolyline2D.CalcTravelPos", "Distance");
  const int n = Count();
  if (n < 2 || Distance < -DefaultTol) return false;
  if (StartId < 0 || StartId >= n) throw Exception("[Error] TVPolyline2D.CalcTravelPos: 下标越界");
  double loop = 0.0;
  bool hasLength = false;
  for (int k = 0; k + 1 < n; ++k) {
    const double s = V(k).DistanceTo(V(k + 1));
    loop += s;
    hasLength = hasLength || s > DefaultTol;
  }
  if (!hasLength) return false;

  const bool closed = IsClosed(DefaultTol);
  double acc = 0.0;
  if (closed && Distance > 2.0 * loop) {
    // Whole rounds end where they began: skip all but the last, so that a long distance
    // costs no more than two rounds. The closing step adds the gap of the seam, if any.
    const double round = loop + V(n - 1).DistanceTo(V(0));
    acc = (std::floor(Distance / round) - 1.0) * round;
  }
  int i = StartId;
  for (;;) {
    int j = i + 1;
    if (j == n) {
      if (!closed) return false;
      j = 0;
    }
    const double s = V(i).DistanceTo(V(j));
    if (acc + s >= Distance + DefaultTol) {
      const double r = s > 0.0 ? (Distance - acc) / s : 0.0;
      Param = i + r;
      Pos = V(i) + (V(j) - V(i)) * r;
      return true;
    }
    acc += s;
    i = j;
  }
}

}  // namespace orvane
