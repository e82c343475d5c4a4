#include "orvane/vertex/VPoint2DList.h"

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/PointArray.h"

namespace orvane {

std::unique_ptr<TVPoint2DList> TVPoint2DList::New() const { return std::make_unique<TVPoint2DList>(); }

std::unique_ptr<IVGeometry2D> TVPoint2DList::Clone() const {
  std::unique_ptr<TVPoint2DList> copy = New();
  copy->CopyFrom(*this);
  return copy;
}

void TVPoint2DList::CopyFrom(const TVPoint2DList& Source) {
  for (const TPoint2D& p : Source) Add(p);
}

double TVPoint2DList::Area() const { return PolyArea(FItems); }

double TVPoint2DList::AverageX() const {
  if (FItems.empty()) return MaxDouble;
  double sum = 0.0;
  for (const TPoint2D& p : FItems) sum += p.X;
  return sum / static_cast<double>(FItems.size());
}

TRect2D TVPoint2DList::BoundBox() const { return CalcAABB(FItems); }

void TVPoint2DList::RoundTo(int Accuracy) {
  for (TPoint2D& p : FItems) p = p.RoundTo(-Accuracy);
}

std::unique_ptr<TVPoint2DList> TVPoint2DList::Snip(int S1, int S2) const {
  auto part = std::make_unique<TVPoint2DList>();
  if (S1 >= S2 || S1 < 0 || S2 > Count()) return part;
  part->FItems.assign(FItems.begin() + S1, FItems.begin() + S2);
  return part;
}

void TVPoint2DList::Translate(const TPoint2D& Vector) {
  for (TPoint2D& p : FItems) p += Vector;
}

void TVPoint2DList::Rotate(double Radian) {
  for (TPoint2D& p : FItems) p = p.RotateBy(Radian);
}

void TVPoint2DList::RotateBy90() {
  for (TPoint2D& p : FItems) p = p.RotateCcw90();
}

void TVPoint2DList::RotateBy_90() {
  for (TPoint2D& p : FItems) p = p.RotateCw90();
}

void TVPoint2DList::YMirror() {
  for (TPoint2D& p : FItems) p = TPoint2DUtils::YMirror(p);
}

void TVPoint2DList::Transform(const TMatrix2D& Matrix) { Matrix.TransformPoints(FItems); }

void TVPoint2DList::Zoom(double Coeff) {
  for (TPoint2D& p : FItems) p = p * Coeff;
}

int TVPoint2DList::IndexOfByXY(const TPoint2D& Pt, double Tol) const {
  if (FItems.empty()) return -1;
  int low = 0;
  int high = Count() - 1;
  int mid = 0;
  while (low <= high) {
    mid = (low + high) / 2;
    const TPoint2D& probe = FItems[static_cast<std::size_t>(mid)];
    if (probe.Equals(Pt, Tol)) return mid;
    if (TPoint2DUtils::CompareByXY(Pt, probe) < 0)
      high = mid - 1;
    else
      low = mid + 1;
  }
  // The list is sorted by X first: equal points within Tol lie in the X band around Pt.
  for (int i = mid - 1; i >= 0 && !fSmall(FItems[static_cast<std::size_t>(i)].X, Pt.X, Tol); --i) {
    if (FItems[static_cast<std::size_t>(i)].Equals(Pt, Tol)) return i;
  }
  for (int i = mid + 1; i < Count() && !fGreat(FItems[static_cast<std::size_t>(i)].X, Pt.X, Tol); ++i) {
    if (FItems[static_cast<std::size_t>(i)].Equals(Pt, Tol)) return i;
  }
  return -1;
}

int TVPoint2DList::FindMostValueId(int Coordinate, bool IsMax) const {
  int best = -1;
  for (int i = 0; i < Count(); ++i) {
    const double v = TPoint2DUtils::GetCoor(FItems[static_cast<std::size_t>(i)], Coordinate);
    if (best < 0) {
      best = i;
      continue;
    }
    const double b = TPoint2DUtils::GetCoor(FItems[static_cast<std::size_t>(best)], Coordinate);
    if (IsMax ? v > b : v < b) best = i;
  }
  return best;
}

}  // namespace orvane
