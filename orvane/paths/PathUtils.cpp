// TPathUtils: points, conversion, housekeeping, in-place transforms and extreme vertices.

#include "orvane/paths/PathUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/ClipperCore.h"
#include "orvane/paths/internal/PathArith.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace orvane {

namespace {

constexpr std::int64_t MaxI64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t MinI64 = std::numeric_limits<std::int64_t>::min();

int ClampToInt(std::int64_t V) { return static_cast<int>(std::min<std::int64_t>(V, std::numeric_limits<int>::max())); }

template <class TPoints>
TPath64 ScalePoints(const TPoints& Points, double Rate, const char* Where) {
  internal::CheckPositiveRate(Rate, Where);
  TPath64 path;
  path.reserve(Points.size());
  for (const TPoint2D& p : Points) path.emplace_back(Round(p.X * Rate), Round(p.Y * Rate));
  return path;
}

TDynPoints2D Unscale(const TPath64& Path, double Rate, const char* Where) {
  internal::CheckPositiveRate(Rate, Where);
  TDynPoints2D pts;
  pts.reserve(Path.size());
  for (const TPoint64& p : Path) pts.emplace_back(static_cast<double>(p.X) / Rate, static_cast<double>(p.Y) / Rate);
  return pts;
}

// One member of the extreme-vertex family: Primary decides, Secondary settles vertices whose
// near-axis coordinate lies strictly within Tol of the best's.
template <bool NearOnX, class TPrimary, class TSecondary>
TPoint64 Extreme(const TPath64& Path, int* Idx, std::int64_t Tol, TPoint64 Start, TPrimary Primary,
                 TSecondary Secondary) {
  TPoint64 best = Start;
  for (std::size_t i = 0; i < Path.size(); ++i) {
    const TPoint64& p = Path[i];
    const bool isNear =
        i > 0 && (NearOnX ? internal::NearStrict(best.X, p.X, Tol) : internal::NearStrict(best.Y, p.Y, Tol));
    if (isNear ? Secondary(p, best) : Primary(p, best)) {
      best = p;
      if (Idx != nullptr) *Idx = static_cast<int>(i);
    }
  }
  return best;
}

TPoint64 LeftTop(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<true>(
      Path, Idx, Tol, {MaxI64, MinI64}, [](const TPoint64& p, const TPoint64& b) { return p.X < b.X; },
      [](const TPoint64& p, const TPoint64& b) { return p.Y > b.Y; });
}

TPoint64 RightBottom(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<true>(
      Path, Idx, Tol, {MinI64, MaxI64}, [](const TPoint64& p, const TPoint64& b) { return p.X > b.X; },
      [](const TPoint64& p, const TPoint64& b) { return p.Y < b.Y; });
}

TPoint64 RightTop(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<true>(
      Path, Idx, Tol, {MinI64, MaxI64}, [](const TPoint64& p, const TPoint64& b) { return p.X > b.X; },
      [](const TPoint64& p, const TPoint64& b) { return p.Y > b.Y; });
}

TPoint64 BottomLeft(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<false>(
      Path, Idx, Tol, {MaxI64, MaxI64}, [](const TPoint64& p, const TPoint64& b) { return p.Y < b.Y; },
      [](const TPoint64& p, const TPoint64& b) { return p.X < b.X; });
}

TPoint64 BottomRight(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<false>(
      Path, Idx, Tol, {MinI64, MaxI64}, [](const TPoint64& p, const TPoint64& b) { return p.Y < b.Y; },
      [](const TPoint64& p, const TPoint64& b) { return p.X > b.X; });
}

TPoint64 TopLeft(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<false>(
      Path, Idx, Tol, {MaxI64, MinI64}, [](const TPoint64& p, const TPoint64& b) { return p.Y > b.Y; },
      [](const TPoint64& p, const TPoint64& b) { return p.X < b.X; });
}

TPoint64 TopRight(const TPath64& Path, int* Idx, std::int64_t Tol) {
  return Extreme<false>(
      Path, Idx, Tol, {MinI64, MinI64}, [](const TPoint64& p, const TPoint64& b) { return p.Y > b.Y; },
      [](const TPoint64& p, const TPoint64& b) { return p.X > b.X; });
}

}  // namespace

// ---- Points ---------------------------------------------------------------------------------

TPoint64 TPathUtils::CreateIntPoint(const TPoint2D& Point, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreateIntPoint");
  return {Round(Point.X * Rate), Round(Point.Y * Rate)};
}

TPoint2D TPathUtils::CreatePoint2D(const TPoint64& Point, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreatePoint2D");
  const double r = 1.0 / Rate;
  return {static_cast<double>(Point.X) * r, static_cast<double>(Point.Y) * r};
}

TPoint64 TPathUtils::Sub(const TPoint64& Left, const TPoint64& Right) {
  return {internal::CheckedSub(Right.X, Left.X, "TPathUtils.Sub"),
          internal::CheckedSub(Right.Y, Left.Y, "TPathUtils.Sub")};
}

TPoint64 TPathUtils::PointMul(const TPoint64& Point, double Num) {
  return {Round(static_cast<double>(Point.X) * Num), Round(static_cast<double>(Point.Y) * Num)};
}

TPoint64 TPathUtils::Divide(const TPoint64& Point, double Num) {
  if (Num == 0.0) throw EParamError("[Error] TPathUtils.Divide: the divisor is 0");
  const double r = 1.0 / Num;
  return {Round(static_cast<double>(Point.X) * r), Round(static_cast<double>(Point.Y) * r)};
}

TPoint64 TPathUtils::Negative(const TPoint64& Point) {
  return {internal::CheckedSub(0, Point.X, "TPathUtils.Negative"),
          internal::CheckedSub(0, Point.Y, "TPathUtils.Negative")};
}

double TPathUtils::Angle(const TPoint64& Vec1, const TPoint64& Vec2) {
  const TPoint2D v1(static_cast<double>(Vec1.X) * 1e-5, static_cast<double>(Vec1.Y) * 1e-5);
  const TPoint2D v2(static_cast<double>(Vec2.X) * 1e-5, static_cast<double>(Vec2.Y) * 1e-5);
  return v2.AngleFrom(v1);
}

TPoint64 TPathUtils::Rotate(const TPoint64& Point, double Radian) {
  const double s = std::sin(Radian);
  const double c = std::cos(Radian);
  const double x = static_cast<double>(Point.X);
  const double y = static_cast<double>(Point.Y);
  return {Round(x * c - y * s), Round(x * s + y * c)};
}

TPoint64 TPathUtils::Strech(const TPoint64& Point, double Length) {
  if (Point.X == 0 && Point.Y == 0) return Point;
  // One scale from the exact direction: rounding a unit vector first would snap it to one of
  // eight directions and lose the length.
  const double x = static_cast<double>(Point.X);
  const double y = static_cast<double>(Point.Y);
  const double k = Length / std::hypot(x, y);
  return {Round(x * k), Round(y * k)};
}

bool TPathUtils::SameVector(const TPoint64& vecA, const TPoint64& vecB) {
  const double dot = static_cast<double>(vecA.X) * static_cast<double>(vecB.X) +
                     static_cast<double>(vecA.Y) * static_cast<double>(vecB.Y);
  Assert(dot != 0.0, "Zero Vector or Zero Dot!");
  return dot > 0.0;
}

int TPathUtils::PointInRect(const TPoint64& pt, const TRect64& rect) {
  if (pt.X > rect.Left && pt.X < rect.Right && pt.Y > rect.Top && pt.Y < rect.Bottom) return 1;
  if (pt.X < rect.Left || pt.X > rect.Right || pt.Y < rect.Top || pt.Y > rect.Bottom) return 0;
  return -1;
}

std::int64_t TPathUtils::DoubleArea(const TPoint64& Pt1, const TPoint64& Pt2, const TPoint64& Pt3) {
  using internal::TInt128;
  return internal::ClampedCross(TInt128(Pt2.X) - Pt1.X, TInt128(Pt3.X) - Pt1.X, TInt128(Pt2.Y) - Pt1.Y,
                                TInt128(Pt3.Y) - Pt1.Y);
}

TPoint64 TPathUtils::SeglineEvalPoint(const TPoint64& SPt, const TPoint64& EPt, double Param) {
  const double dx = static_cast<double>(EPt.X) - static_cast<double>(SPt.X);
  const double dy = static_cast<double>(EPt.Y) - static_cast<double>(SPt.Y);
  return {internal::CheckedAdd(SPt.X, Round(dx * Param), "TPathUtils.SeglineEvalPoint"),
          internal::CheckedAdd(SPt.Y, Round(dy * Param), "TPathUtils.SeglineEvalPoint")};
}

// ---- Conversion -----------------------------------------------------------------------------

TPath64 TPathUtils::CreatePath(const TVPolyline2D* Polyline, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreatePath");
  return Polyline == nullptr ? TPath64() : Polyline->ToPath(Rate);
}

TPath64 TPathUtils::CreatePath(const TVPolyline2D& Polyline, double Rate) { return CreatePath(&Polyline, Rate); }

TPath64 TPathUtils::CreatePath(const TDynPoints2D& Points, double Rate) {
  return ScalePoints(Points, Rate, "TPathUtils.CreatePath");
}

TPath64 TPathUtils::CreatePath(const TList<TPoint2D>& Points, double Rate) {
  return ScalePoints(Points.List(), Rate, "TPathUtils.CreatePath");
}

TPath64 TPathUtils::CreatePath(const TRect2D& BoundBox, double Rate) {
  return ScalePoints(TDynPoints2D{BoundBox.XMinYMax(), BoundBox.MinPoint(), BoundBox.XMaxYMin(), BoundBox.MaxPoint()},
                     Rate, "TPathUtils.CreatePath");
}

TPaths64 TPathUtils::CreatePaths(const TVPolyline2DList* Polylines, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreatePaths");
  return Polylines == nullptr ? TPaths64() : Polylines->ToPaths(Rate);
}

TPaths64 TPathUtils::CreatePaths(const TVPolyline2DList& Polylines, double Rate) {
  return CreatePaths(&Polylines, Rate);
}

TPaths64 TPathUtils::CreatePaths(const TVHPolygonList& HPolygons, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreatePaths");
  TPaths64 paths;
  for (const TVHPolygon* polygon : HPolygons) {
    for (const TVPolyline2D* loop : *polygon) paths.push_back(loop->ToPath(Rate));
  }
  return paths;
}

TList<TPoint2D> TPathUtils::CreatePoint2DList(const TPath64& Path, double Rate) {
  return TList<TPoint2D>(Unscale(Path, Rate, "TPathUtils.CreatePoint2DList"));
}

void TPathUtils::AssignToPolyline(const TPath64& Path, TVPolyline2D& Polyline, double Rate) {
  Polyline.Assign(Unscale(Path, Rate, "TPathUtils.AssignToPolyline"));
}

std::unique_ptr<TVPolyline2D> TPathUtils::CreatePolyline(const TPath64& Path, double Rate) {
  return std::make_unique<TVPolyline2D>(Unscale(Path, Rate, "TPathUtils.CreatePolyline"));
}

void TPathUtils::AssignToPolylines(const TPaths64& Paths, TVPolyline2DList& Polylines, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.AssignToPolylines");
  if (!Polylines.GetOwnsObjects())
    throw EParamError("[Error] TPathUtils.AssignToPolylines: the list must own its polylines");
  // Build first, so that a failing conversion leaves the list as it was.
  std::vector<std::unique_ptr<TVPolyline2D>> made;
  made.reserve(Paths.size());
  for (const TPath64& p : Paths) made.push_back(std::make_unique<TVPolyline2D>(Unscale(p, Rate, "")));
  Polylines.Clear();
  for (auto& p : made) Polylines.Add(std::move(p));
}

std::unique_ptr<TVPolyline2DList> TPathUtils::CreatePolylines(const TPaths64& Paths, double Rate) {
  auto list = std::make_unique<TVPolyline2DList>(true);
  AssignToPolylines(Paths, *list, Rate);
  return list;
}

// ---- Housekeeping ---------------------------------------------------------------------------

bool TPathUtils::Delete(TPath64& path, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= path.size()) return false;
  path.erase(path.begin() + index);
  return true;
}

bool TPathUtils::Delete(TPaths64& paths, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= paths.size()) return false;
  paths.erase(paths.begin() + index);
  return true;
}

void TPathUtils::Free(TPaths64& Paths) {
  for (TPath64& p : Paths) TPath64().swap(p);
  TPaths64().swap(Paths);
}

void TPathUtils::PathsAdd(TPaths64& DestinationPaths, TPath64 SourcePath) {
  DestinationPaths.push_back(std::move(SourcePath));
}

void TPathUtils::PathsAddRange(TPaths64& DestinationPaths, const TPaths64& SourcePaths) {
  DestinationPaths.insert(DestinationPaths.end(), SourcePaths.begin(), SourcePaths.end());
}

void TPathUtils::PathsAddRange(TPaths64& DestinationPaths, TPaths64&& SourcePaths) {
  DestinationPaths.insert(DestinationPaths.end(), std::make_move_iterator(SourcePaths.begin()),
                          std::make_move_iterator(SourcePaths.end()));
  SourcePaths.clear();
}

bool TPathUtils::IsClosed(const TPath64& Path) { return !Path.empty() && Path.front() == Path.back(); }

TRect2D TPathUtils::BoundBox(const TPath64& Path) {
  if (Path.empty()) return TRect2D::Invalid();
  const TRect64 r = Clipper::Core::GetBounds(Path);
  return {static_cast<double>(r.Left), static_cast<double>(r.Top), static_cast<double>(r.Right),
          static_cast<double>(r.Bottom)};
}

TRect2D TPathUtils::BoundBox(const TPaths64& Paths) {
  TRect2D box = TRect2D::Invalid();
  for (const TPath64& p : Paths) box.Extend(BoundBox(p));
  return box;
}

TRect64 TPathUtils::IntBoundbox(const TPath64& Path) { return Clipper::Core::GetBounds(Path); }

int TPathUtils::TotalLength(const TPaths64& APaths) { return GetPathsPointCount(APaths); }

int TPathUtils::GetPathsPointCount(const TPaths64& Paths) {
  std::int64_t n = 0;
  for (const TPath64& p : Paths) n += static_cast<std::int64_t>(p.size());
  return ClampToInt(n);
}

// ---- In-place transforms --------------------------------------------------------------------

void TPathUtils::Negative(TPath64& Path) {
  // All results first, so that an overflow leaves the path as it was.
  TPath64 out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path) out.push_back(Negative(p));
  Path.swap(out);
}

void TPathUtils::Negative(TPaths64& Paths) {
  TPaths64 out = Paths;
  for (TPath64& p : out) Negative(p);
  Paths.swap(out);
}

void TPathUtils::Rotate(TPath64& Path, double Radian) {
  const double s = std::sin(Radian);
  const double c = std::cos(Radian);
  TPath64 out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path) {
    const double x = static_cast<double>(p.X);
    const double y = static_cast<double>(p.Y);
    out.emplace_back(Round(x * c - y * s), Round(x * s + y * c));
  }
  Path.swap(out);
}

void TPathUtils::Rotate(TPaths64& Paths, double Radian) {
  TPaths64 out = Paths;
  for (TPath64& p : out) Rotate(p, Radian);
  Paths.swap(out);
}

void TPathUtils::Translate(TPath64& Path, const TPointL2D& TransVec) {
  TPath64 out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path)
    out.emplace_back(internal::CheckedAdd(p.X, TransVec.X, "TPathUtils.Translate"),
                     internal::CheckedAdd(p.Y, TransVec.Y, "TPathUtils.Translate"));
  Path.swap(out);
}

void TPathUtils::Translate(TPaths64& Paths, const TPointL2D& TransVec) {
  TPaths64 out = Paths;
  for (TPath64& p : out) Translate(p, TransVec);
  Paths.swap(out);
}

void TPathUtils::Zoom(TPath64& Path, double Rate) {
  TPath64 out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path) out.push_back(PointMul(p, Rate));
  Path.swap(out);
}

void TPathUtils::Zoom(TPaths64& Paths, double Rate) {
  TPaths64 out = Paths;
  for (TPath64& p : out) Zoom(p, Rate);
  Paths.swap(out);
}

void TPathUtils::Reverse(TPath64& Path) { std::reverse(Path.begin(), Path.end()); }

void TPathUtils::Reverse(TPaths64& Paths) {
  for (TPath64& p : Paths) Reverse(p);
}

// ---- Extreme vertices -----------------------------------------------------------------------

TPoint64 TPathUtils::LeftTopPoint(const TPath64& APath, int& ltIdx, std::int64_t Tol) {
  return LeftTop(APath, &ltIdx, Tol);
}

TPoint64 TPathUtils::LeftTopPoint(const TPath64& APath, std::int64_t Tol) {
  return LeftTop(APath, nullptr, std::max<std::int64_t>(Tol, 1));
}

TPoint64 TPathUtils::LeftTopPoint(const TPath64& APath, int& ltIdx) {
  int b = -1;
  const TPoint64 best = LeftTop(APath, &b, 300);
  if (b < 0) return best;
  // Climb from B: a vertex within 10000 across of the current one and higher replaces it.
  TPoint64 c = best;
  int cIdx = b;
  for (std::size_t i = 0; i < APath.size(); ++i) {
    const TPoint64& p = APath[i];
    if (internal::NearStrict(c.X, p.X, 10000) && c.Y < p.Y) {
      c = p;
      cIdx = static_cast<int>(i);
    }
  }
  const double dx = static_cast<double>(internal::AbsDiff(c.X, best.X));
  const double dy = static_cast<double>(internal::AbsDiff(c.Y, best.Y));
  if (dy > 100000.0 && dy / 10.0 > dx) {
    ltIdx = cIdx;
    return c;
  }
  ltIdx = b;
  return best;
}

TPoint64 TPathUtils::LeftTopPoint(const TPath64& APath) {
  int idx = -1;
  return LeftTopPoint(APath, idx);
}

TPoint64 TPathUtils::RightBottomPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return RightBottom(APath, &Idx, Tol);
}
TPoint64 TPathUtils::RightBottomPoint(const TPath64& APath) { return RightBottom(APath, nullptr, 1000); }
TPoint64 TPathUtils::RightTopPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return RightTop(APath, &Idx, Tol);
}
TPoint64 TPathUtils::RightTopPoint(const TPath64& APath) { return RightTop(APath, nullptr, 1000); }
TPoint64 TPathUtils::BottomLeftPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return BottomLeft(APath, &Idx, Tol);
}
TPoint64 TPathUtils::BottomLeftPoint(const TPath64& APath) { return BottomLeft(APath, nullptr, 100); }
TPoint64 TPathUtils::BottomRightPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return BottomRight(APath, &Idx, Tol);
}
TPoint64 TPathUtils::BottomRightPoint(const TPath64& APath) { return BottomRight(APath, nullptr, 100); }
TPoint64 TPathUtils::TopLeftPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return TopLeft(APath, &Idx, Tol);
}
TPoint64 TPathUtils::TopLeftPoint(const TPath64& APath) { return TopLeft(APath, nullptr, 100); }
TPoint64 TPathUtils::TopRightPoint(const TPath64& APath, int& Idx, std::int64_t Tol) {
  return TopRight(APath, &Idx, Tol);
}
TPoint64 TPathUtils::TopRightPoint(const TPath64& APath) { return TopRight(APath, nullptr, 1000); }

}  // namespace orvane
