#include "orvane/algorithms/MelkmanAlgo.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Point2DUtils.h"

namespace orvane {

namespace {

// Collinearity as the retry judges it: the cross product vanishes within 1e-16.
bool IsCollinearTriple(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C) {
  return std::fabs(TPoint2DUtils::IsLeft(A, B, C)) <= 1e-16;
}

}  // namespace

int TMelkmanAlgo::MelkmanAlg(TList<TPoint2D>& SrcPoints, TList<int>& rets) {
  int n = SrcPoints.Count();
  if (n >= 2 && SrcPoints.List().front() == SrcPoints.List().back()) --n;
  if (n < 3) return -1;

  double d = TPoint2DUtils::IsLeft(SrcPoints[0], SrcPoints[1], SrcPoints[2]);
  if (d == 0.0) {
    // Break the tie of a collinear start; the shift stays far below any drawing tolerance.
    SrcPoints.SetItem(1, SrcPoints[1] + TPoint2D(-2.97e-6, 1.82e-6));
    d = TPoint2DUtils::IsLeft(SrcPoints[0], SrcPoints[1], SrcPoints[2]);
  }
  const TPoint2D* p = SrcPoints.List().data();

  // The deque grows by at most one entry at each end per point, so 2n + 1 slots suffice;
  // slots never written keep -1, which tells when a cursor runs off the deque.
  std::vector<int> deque(static_cast<std::size_t>(2 * n + 1), -1);
  int* D = deque.data();
  int bot = n - 1;
  int top = n + 2;
  D[bot] = 2;
  D[top] = 2;
  if (d > 0.0) {
    D[n] = 0;
    D[n + 1] = 1;
  } else {
    D[n] = 1;
    D[n + 1] = 0;
  }

  for (int i = 3; i < n; ++i) {
    const TPoint2D pi = p[i];
    if (TPoint2DUtils::IsLeft(p[D[bot]], p[D[bot + 1]], pi) > 0.0 &&
        TPoint2DUtils::IsLeft(p[D[top - 1]], p[D[top]], pi) > 0.0)
      continue;
    while (TPoint2DUtils::IsLeft(p[D[bot]], p[D[bot + 1]], pi) <= 0.0) {
      ++bot;
      if (D[bot + 1] == -1) return -2;
    }
    D[--bot] = i;
    while (TPoint2DUtils::IsLeft(p[D[top - 1]], p[D[top]], pi) <= 0.0) {
      --top;
      if (D[top - 1] == -1) return -3;
    }
    D[++top] = i;
  }
  // Input that is not simple can make the cursors cross; what is left is no hull.
  if (top - bot < 3) return -2;

  // The deque runs counter-clockwise from bot to top - 1 (top repeats bot). Every point
  // that entered was tested only against the deque's ends, so a point collinear with a hull
  // edge can remain where the polyline's start and end meet; one pass over the ring with
  // each entry's own neighbours drops every entry that does not turn left.
  const int m = top - bot;
  std::vector<int> hull;
  hull.reserve(static_cast<std::size_t>(m));
  for (int k = 0; k < m; ++k) {
    const int prev = D[bot + (k + m - 1) % m];
    const int next = D[bot + (k + 1) % m];
    if (TPoint2DUtils::IsLeft(p[prev], p[D[bot + k]], p[next]) > 0.0) hull.push_back(D[bot + k]);
  }
  if (hull.size() < 3) return -2;

  // Ascending index order keeps the input's sense of travel.
  std::sort(hull.begin(), hull.end());
  hull.erase(std::unique(hull.begin(), hull.end()), hull.end());

  rets.Clear();
  rets.SetCapacity(static_cast<int>(hull.size()) + 1);
  for (int h : hull) rets.Add(h);
  rets.Add(hull.front());
  return rets.Count();
}

void TMelkmanAlgo::CalcConvexHull(TList<TPoint2D>& SrcPoints, TList<int>& rets) {
  if (MelkmanAlg(SrcPoints, rets) > 0) return;

  // Retry on a copy with collinear runs shaken apart. The copy keeps order and count, so its
  // indices hold for SrcPoints as well.
  TDynPoints2D pts = SrcPoints.ToArray();
  const int count = static_cast<int>(pts.size());
  const TPoint2D step(-2.97e-8, 1.82e-7);
  std::minstd_rand random(20240607u);
  int i = 0;
  while (i <= count - 3) {
    const std::size_t k = static_cast<std::size_t>(i);
    if (IsCollinearTriple(pts[k], pts[k + 1], pts[k + 2])) {
      pts[k + 1] += step * static_cast<double>(random() % 10 + 1);
      i += 2;
    } else {
      ++i;
    }
  }
  if (count >= 3 && !(pts.front() == pts.back()) &&
      IsCollinearTriple(pts[static_cast<std::size_t>(count - 2)], pts.back(), pts.front())) {
    pts.back() += step;
  }

  TList<TPoint2D> shaken;
  shaken.AddRange(pts);
  if (MelkmanAlg(shaken, rets) < 1) throw Exception("Error Input for [MelkmanAlg]");
}

}  // namespace orvane
