// TVPolyline2D: changes in place (reflection, closing, trimming, thinning, clean-up) and the
// joining of two polylines.

#include <algorithm>
#include <cmath>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace orvane {

void TVPolyline2D::Negative() {
  for (TPoint2D& p : FItems) p = -p;
}

void TVPolyline2D::ConnectHeadTail() {
  if (!FItems.empty() && !IsClosed(DefaultTol)) Add(TPoint2D(FItems.front()));
}

void TVPolyline2D::Trim(double Length, bool OnHead, bool OnTail) {
  if (FItems.empty() || (!OnHead && !OnTail) || !(Length > 0.0)) return;
  double total = TotalLength();
  const double cut = (OnHead ? Length : 0.0) + (OnTail ? Length : 0.0);
  double u = 0.0;
  TPoint2D p;
  if (!(total - cut > 0.0)) {
    // Nothing would remain: the middle of the polyline stands for it.
    const TPoint2D keep = CalcTravelPos(0, total / 2.0, u, p) ? p : FItems.front();
    FItems.assign(1, keep);
    return;
  }
  if (OnHead) {
    if (!CalcTravelPos(0, Length, u, p)) {
      // No place to be found: either nothing can be measured along the polyline, or what
      // remains is shorter than 1e-6 and is its last vertex.
      if (!IsClosed(DefaultTol) && total - Length <= DefaultTol) FItems.assign(1, TPoint2D(FItems.back()));
      return;
    }
    const auto drop = static_cast<std::ptrdiff_t>(std::ceil(u));
    FItems.erase(FItems.begin(), FItems.begin() + drop);
    if (FItems.empty() || !FItems.front().Equals(p, DefaultTol)) FItems.insert(FItems.begin(), p);
    total -= Length;
  }
  if (OnTail) {
    // A tail cut that ends within 1e-6 of an open end cuts nothing measurable.
    if (!CalcTravelPos(0, total - Length, u, p)) return;
    const auto drop = static_cast<std::ptrdiff_t>(std::ceil(static_cast<double>(Count() - 1) - u));
    FItems.erase(FItems.end() - drop, FItems.end());
    if (FItems.empty() || !FItems.back().Equals(p, DefaultTol)) FItems.push_back(p);
  }
}

void TVPolyline2D::Simplify(int PointCount, int StartId, int EndId) {
  if (StartId < 0 || EndId >= Count() || EndId < StartId - 1) {
    throw Exception("[Error] TVPolyline2D.Simplify: 下标越界");
  }
  const int span = EndId - StartId + 1;
  if (span < PointCount) return;
  const auto begin = FItems.begin() + StartId;
  const auto end = FItems.begin() + EndId + 1;
  if (PointCount <= 0) {
    FItems.erase(begin, end);
    return;
  }
  TDynPoints2D picked;
  picked.reserve(static_cast<std::size_t>(PointCount));
  if (PointCount == 1) {
    picked.push_back(V((StartId + EndId) / 2));
  } else {
    const double step = static_cast<double>(EndId - StartId) / static_cast<double>(PointCount - 1);
    for (int i = 0; i < PointCount; ++i) picked.push_back(V(StartId + static_cast<int>(Round(i * step))));
  }
  TDynPoints2D pts;
  pts.reserve(FItems.size() - static_cast<std::size_t>(span) + picked.size());
  pts.insert(pts.end(), FItems.begin(), begin);
  pts.insert(pts.end(), picked.begin(), picked.end());
  pts.insert(pts.end(), end, FItems.end());
  FItems.swap(pts);
}

void TVPolyline2D::DeleteNeighbourClosed(bool DoesCheckHeadTail, double Tolerance) {
  if (Count() < 2) return;
  // Each vertex against the last one kept: a run of coincident vertices keeps its first.
  std::size_t kept = 1;
  for (std::size_t k = 1; k < FItems.size(); ++k) {
    if (!FItems[kept - 1].Equals(FItems[k], Tolerance)) FItems[kept++] = FItems[k];
  }
  FItems.resize(kept);
  // The last vertex against the first, which goes when they coincide; a single vertex meets
  // itself there.
  if (DoesCheckHeadTail && FItems.back().Equals(FItems.front(), Tolerance)) FItems.erase(FItems.begin());
}

void TVPolyline2D::CollinearSmooth(double ATol, bool IsSameDir) {
  if (Count() < 3) return;
  const bool closed = IsClosed(DefaultTol);
  TDynPoints2D src(FItems);
  if (closed) src.pop_back();
  const std::size_t n = src.size();

  // The kept vertices go to out; src[k] is the vertex under test. The list being smoothed is
  // always out followed by src[k ..], so its count is out.size() + n - k, and the vertex
  // after the last one is the first of that list.
  TDynPoints2D out;
  out.reserve(n + 1);
  std::size_t k = 0;
  TPoint2D prev = src[n - 1];
  if (!closed) {
    prev = src[0];
    out.push_back(src[0]);
    k = 1;
  }
  auto count = [&] { return out.size() + n - k; };
  auto first = [&]() -> const TPoint2D& { return out.empty() ? src[k] : out.front(); };
  TPoint2D v = src[k] - prev;
  while (count() >= 2 && (k + 2 <= n || (k + 1 == n && closed))) {
    const TPoint2D& cur = src[k];
    const TPoint2D w = (k + 1 < n ? src[k + 1] : first()) - cur;
    const bool redundant = v.IsParallelTo(w, ATol) || (!IsSameDir && v.IsParallelTo(-w, ATol));
    if (redundant) {
      ++k;
      // The direction into the next vertex from the last kept one.
      v = (k < n ? src[k] : first()) - prev;
    } else {
      prev = cur;
      out.push_back(cur);
      v = w;
      ++k;
    }
  }
  out.insert(out.end(), src.begin() + static_cast<std::ptrdiff_t>(k), src.end());
  FItems.swap(out);
  if (closed) ConnectHeadTail();
}

bool TVPolyline2D::TryConnect(const TVPolyline2D& Polyline, TVPolyline2D& ResultPolyline, double Tolerance) const {
  const TDynPoints2D& s = FItems;
  const TDynPoints2D& o = Polyline.FItems;
  if (s.empty() || o.empty()) return false;
  TDynPoints2D joined;
  joined.reserve(s.size() + o.size());
  if (s.front().Equals(o.front(), Tolerance)) {
    joined.assign(o.rbegin(), o.rend() - 1);
    joined.insert(joined.end(), s.begin(), s.end());
  } else if (s.front().Equals(o.back(), Tolerance)) {
    joined.assign(o.begin(), o.end() - 1);
    joined.insert(joined.end(), s.begin(), s.end());
  } else if (s.back().Equals(o.front(), Tolerance)) {
    joined.assign(s.begin(), s.end() - 1);
    joined.insert(joined.end(), o.begin(), o.end());
  } else if (s.back().Equals(o.back(), Tolerance)) {
    joined.assign(s.begin(), s.end());
    joined.insert(joined.end(), o.rbegin() + 1, o.rend());
  } else {
    return false;
  }
  // Through Add, so that a derived result hears of every vertex.
  ResultPolyline.SetCapacity(ResultPolyline.Count() + static_cast<int>(joined.size()));
  for (const TPoint2D& p : joined) ResultPolyline.Add(p);
  return true;
}

std::unique_ptr<TVPolyline2DList> TVPolyline2D::Union(const TVPolyline2D& APoly, TFillRule AFillType) const {
  Clipper::TClipper clipper;
  clipper.AddPath(ToPath(PathWorkingRate), TPathType::ptSubject, true);
  clipper.AddPath(APoly.ToPath(PathWorkingRate), TPathType::ptSubject, true);
  TPaths64 solution;
  clipper.Execute(TClipType::ctUnion, solution, AFillType);
  auto result = std::make_unique<TVPolyline2DList>(true);
  for (const TPath64& path : solution) result->Add(std::make_unique<TVPolyline2D>(path, PathWorkingRate));
  return result;
}

}  // namespace orvane
