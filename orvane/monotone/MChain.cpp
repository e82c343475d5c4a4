#include "orvane/monotone/MChain.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/internal/SegmentDistance.h"

namespace orvane {

std::unique_ptr<TVPoint2DList> TMChain::New() const { return std::make_unique<TMChain>(); }

std::unique_ptr<IVGeometry2D> TMChain::Clone() const {
  auto copy = std::make_unique<TMChain>();
  copy->CopyFrom(*this);
  copy->FPositive = FPositive;
  return copy;
}

void TMChain::Notify(const TPoint2D& Item, TCollectionNotification Action) {
  TVPolyline2D::Notify(Item, Action);
  if (Action != TCollectionNotification::cnAdded) return;
  if (Count() == 1) {
    FLeft = Item.X;
    FRight = Item.X;
  } else {
    FLeft = std::min(FLeft, Item.X);
    FRight = std::max(FRight, Item.X);
  }
}

void TMChain::ResetBound() {
  if (FItems.empty()) {
    FLeft = 0.0;
    FRight = 0.0;
    return;
  }
  FLeft = MaxDouble;
  FRight = -MaxDouble;
  for (const TPoint2D& p : FItems) {
    FLeft = std::min(FLeft, p.X);
    FRight = std::max(FRight, p.X);
  }
}

TRect2D TMChain::BoundBox() const {
  if (FItems.empty()) return TRect2D::Invalid();
  const double y0 = FItems.front().Y;
  const double y1 = FItems.back().Y;
  return {FLeft, std::min(y0, y1), FRight, std::max(y0, y1)};
}

void TMChain::Translate(const TPoint2D& Vector) {
  TVPolyline2D::Translate(Vector);
  FLeft += Vector.X;
  FRight += Vector.X;
}

namespace {

// The merge walk over two chains A and B, upward in y. Both store their vertices in
// non-decreasing y, so at every height each chain covers one x interval: a point, or a
// level run. The walk stops at every vertex of either chain and settles two questions
// there:
//  - a crossing: where both chains cover the height, the vertex lies left or right of the
//    other chain's interval, exactly, with no tolerance. Between two stops both chains are
//    straight, so a change of sides means that they crossed, and a vertex inside the other
//    interval means that they meet.
//  - a contact: chains that do not cross come nearest at a vertex of one of them, so each
//    vertex is measured against the other chain's segments within the tolerance of its
//    height, by Euclidean distance.
// Where the chains stay apart in x by more than the tolerance over a whole stretch of
// heights, the walk takes the stretch at once. Vertices are read straight from the arrays.
class TOverlapWalk {
 public:
  TOverlapWalk(const TPoint2D* A, int NA, const TPoint2D* B, int NB) : a(A), na(NA), b(B), nb(NB) {}

  bool Run() const {
    if (na == 0 || nb == 0) return false;
    if (b[0].Y - a[na - 1].Y > DefaultTol || a[0].Y - b[nb - 1].Y > DefaultTol) return false;
    // Only vertices in the band of heights that both chains reach within the tolerance can
    // meet the other chain.
    const double lo = std::max(a[0].Y, b[0].Y) - DefaultTol;
    const double hi = std::min(a[na - 1].Y, b[nb - 1].Y) + DefaultTol;
    double aLo, aHi, bLo, bHi;
    TCursor ca = Band(a, na, lo, hi, aLo, aHi);
    TCursor cb = Band(b, nb, lo, hi, bLo, bHi);
    if (ca.Next > ca.Last && cb.Next > cb.Last) return false;
    if (bLo - aHi > DefaultTol || aLo - bHi > DefaultTol) return false;
    // The heights that both chains cover; sides are compared only there.
    const double common0 = std::max(a[0].Y, b[0].Y);
    const double common1 = std::min(a[na - 1].Y, b[nb - 1].Y);
    TSide side;
    // The stop count from which a stretch may next be taken whole: the first test above has
    // just found the chains near each other in x, so a stretch is tried only further on.
    int tryFrom = BlockSize;
    int stops = 0;
    while (ca.Next <= ca.Last || cb.Next <= cb.Last) {
      if (stops >= tryFrom) {
        const int skipped = TakeStretch(ca, cb, common0, common1, side);
        if (skipped < 0) return true;
        if (skipped > 0) {
          stops += skipped;
          tryFrom = stops;
          continue;
        }
        tryFrom = stops + BlockSize;
      }
      ++stops;
      if (cb.Next > cb.Last || (ca.Next <= ca.Last && a[ca.Next].Y <= b[cb.Next].Y)) {
        if (Meets(a[ca.Next], cb, true, side)) return true;
        ++ca.Next;
      } else {
        if (Meets(b[cb.Next], ca, false, side)) return true;
        ++cb.Next;
      }
    }
    return false;
  }

 private:
  static constexpr int BlockSize = 8;

  // A chain's vertices still to visit, Next to Last, and Window: the first of its segments
  // (Window, Window + 1) that may still come within the tolerance of the other chain's
  // next vertex. Both only move up.
  struct TCursor {
    const TPoint2D* V;
    int N;
    int Next;
    int Last;
    int Window = 0;
  };

  // The side found so far: true while A lies left of B.
  struct TSide {
    bool Known = false;
    bool Left = false;
    // False when Left contradicts the side known before: the chains have crossed.
    bool Keep(bool L) {
      if (Known) return L == Left;
      Known = true;
      Left = L;
      return true;
    }
  };

  // The vertices of chain V from Lo to Hi, and the x range of the segments that reach into
  // that band, in one pass from the bottom: most walks end at the test on these ranges.
  static TCursor Band(const TPoint2D* V, int N, double Lo, double Hi, double& XLo, double& XHi) {
    // The band's ends are searched, which spares a long chain beside a short one most of its
    // vertices; the x range then takes one plain pass over the band and the vertex on either
    // side of it.
    const auto below = [Lo](const TPoint2D& Q) { return Q.Y < Lo; };
    const auto within = [Hi](const TPoint2D& Q) { return Q.Y <= Hi; };
    int first = 0;
    int end = N;
    if (N > 8) {
      first = static_cast<int>(std::partition_point(V, V + N, below) - V);
      end = static_cast<int>(std::partition_point(V + first, V + N, within) - V);
    } else {
      while (first < N && below(V[first])) ++first;
      end = first;
      while (end < N && within(V[end])) ++end;
    }
    Span(V, first > 0 ? first - 1 : 0, std::min(end, N - 1), XLo, XHi);
    return {V, N, first, end - 1};
  }

  static void Span(const TPoint2D* V, int First, int Last, double& Lo, double& Hi) {
    Lo = Hi = V[First].X;
    for (int k = First + 1; k <= Last; ++k) {
      Lo = std::min(Lo, V[k].X);
      Hi = std::max(Hi, V[k].X);
    }
  }

  // P lies within the tolerance of segment S-E. Farther than that from the segment's line
  // is farther from the segment: a test without division spares the distance nearly always.
  static bool NearSegment(const TPoint2D& P, const TPoint2D& S, const TPoint2D& E) {
    const double dx = E.X - S.X;
    const double dy = E.Y - S.Y;
    const double cross = dx * (P.Y - S.Y) - dy * (P.X - S.X);
    if (cross * cross > DefaultTol * DefaultTol * (dx * dx + dy * dy)) return false;
    return internal::SegmentDist2(P, S, E) <= DefaultTol * DefaultTol;
  }

  // Vertex P of one chain against the other chain O, at P's height. True when P lies
  // within the tolerance of O, inside O's interval there, or on the other side of O than
  // the walk found before. PIsA tells which chain P belongs to.
  static bool Meets(const TPoint2D& P, TCursor& O, bool PIsA, TSide& Side) {
    const TPoint2D* v = O.V;
    const int n = O.N;
    const double y = P.Y;
    if (n == 1) return internal::SegmentDist2(P, v[0], v[0]) <= DefaultTol * DefaultTol;
    int& w = O.Window;
    const double floor = y - DefaultTol;
    // The window mostly moves a segment or two between stops; after a stretch taken whole
    // it may lie far behind, and a search takes it there.
    for (int steps = 0; w < n - 2 && v[w + 1].Y < floor; ++w) {
      if (++steps == 4) {
        w = static_cast<int>(
                std::partition_point(v + w + 1, v + n - 1, [floor](const TPoint2D& Q) { return Q.Y < floor; }) - v) -
            1;
        break;
      }
    }
    if (v[w].Y < floor && v[w + 1].Y > y + DefaultTol) {
      // The common case: one segment spans the heights within the tolerance of P's, and it
      // alone can come near P. Clear of its x range, P lies on one side of it.
      const TPoint2D& s = v[w];
      const TPoint2D& e = v[w + 1];
      if (P.X < std::min(s.X, e.X) - DefaultTol) return !Side.Keep(PIsA);
      if (P.X > std::max(s.X, e.X) + DefaultTol) return !Side.Keep(!PIsA);
      if (NearSegment(P, s, e)) return true;
      const double x = s.X + (y - s.Y) / (e.Y - s.Y) * (e.X - s.X);
      if (P.X == x) return true;
      return !Side.Keep(PIsA == (P.X < x));
    }
    // The segments within the tolerance of P's height; on the way, the first that reaches
    // up to it, which holds P's height when the chain covers it.
    int k = -1;
    for (int m = w; m < n - 1 && v[m].Y <= y + DefaultTol; ++m) {
      const TPoint2D& s = v[m];
      const TPoint2D& e = v[m + 1];
      if (k < 0 && e.Y >= y) k = m;
      if (P.X < std::min(s.X, e.X) - DefaultTol || P.X > std::max(s.X, e.X) + DefaultTol) continue;
      if (NearSegment(P, s, e)) return true;
    }
    if (y < v[0].Y || y > v[n - 1].Y) return false;
    // O's interval at height y: the segment that passes it, or the vertices that lie on it.
    const TPoint2D& s = v[k];
    const TPoint2D& e = v[k + 1];
    double lo, hi;
    int run = s.Y == y ? k : (e.Y == y ? k + 1 : -1);
    if (run < 0) {
      // Wholly to one side of the segment's x range needs no point on it.
      if (P.X < std::min(s.X, e.X)) return !Side.Keep(PIsA);
      if (P.X > std::max(s.X, e.X)) return !Side.Keep(!PIsA);
      lo = hi = s.X + (y - s.Y) / (e.Y - s.Y) * (e.X - s.X);
    } else {
      lo = hi = v[run].X;
      for (++run; run < n && v[run].Y == y; ++run) {
        lo = std::min(lo, v[run].X);
        hi = std::max(hi, v[run].X);
      }
    }
    if (P.X >= lo && P.X <= hi) return true;
    const bool pLeft = P.X < lo;
    return !Side.Keep(PIsA ? pLeft : !pLeft);
  }

  // Tries to take the stretch of heights up to BlockSize vertices above the walk's next
  // stop at once: when the chains' vertices that can matter there stay apart in
  // x by more than the tolerance, no vertex there is near the other chain and every stop
  // finds the same side. Answers the number of stops taken, 0 when the chains come near
  // in x, and -1 when the stretch finds a side that contradicts the known one.
  int TakeStretch(TCursor& A, TCursor& B, double Common0, double Common1, TSide& Side) const {
    const bool aLeft = A.Next <= A.Last;
    const bool bLeft = B.Next <= B.Last;
    const double bottom = std::min(aLeft ? a[A.Next].Y : MaxDouble, bLeft ? b[B.Next].Y : MaxDouble);
    // At most BlockSize vertices of either chain (and those at the same height), so that a
    // chain much denser than the other is not scanned again at every try.
    const double top = std::min(aLeft ? a[std::min(A.Next + BlockSize, A.Last)].Y : MaxDouble,
                                bLeft ? b[std::min(B.Next + BlockSize, B.Last)].Y : MaxDouble);
    int a2 = A.Next;
    while (a2 <= A.Last && a[a2].Y <= top) ++a2;
    int b2 = B.Next;
    while (b2 <= B.Last && b[b2].Y <= top) ++b2;
    if (a2 - A.Next + b2 - B.Next < 2) return 0;
    double aLo, aHi, bLo, bHi;
    Reach(a, na, A.Next, a2, bottom, top, aLo, aHi);
    Reach(b, nb, B.Next, b2, bottom, top, bLo, bHi);
    const bool left = bLo - aHi > DefaultTol;
    if (!left && !(aLo - bHi > DefaultTol)) return 0;
    // A side counts only where a stop lies at heights both chains cover.
    if (top >= Common0 && bottom <= Common1 && !Side.Keep(left)) return -1;
    const int taken = a2 - A.Next + b2 - B.Next;
    A.Next = a2;
    B.Next = b2;
    return taken;
  }

  // The x range of chain V's part that stops from Bottom to Top can reach within the
  // tolerance: from the last vertex below Bottom - tol to the first above Top + tol. From
  // is the chain's next vertex, To the first vertex above Top.
  static void Reach(const TPoint2D* V, int N, int From, int To, double Bottom, double Top, double& Lo, double& Hi) {
    int first = std::min(From, N - 1);
    while (first > 0 && V[first].Y >= Bottom - DefaultTol) --first;
    int last = std::min(To, N - 1);
    while (last < N - 1 && V[last].Y <= Top + DefaultTol) ++last;
    Span(V, first, last, Lo, Hi);
  }

  const TPoint2D* a;
  int na;
  const TPoint2D* b;
  int nb;
};

}  // namespace

bool TMChain::IsOverlap(const TMChain& Chain) const {
  return TOverlapWalk(FItems.data(), Count(), Chain.FItems.data(), Chain.Count()).Run();
}

namespace internal {

bool ClimbingRunsOverlap(const TPoint2D* A, int NA, const TPoint2D* B, int NB) {
  return TOverlapWalk(A, NA, B, NB).Run();
}

}  // namespace internal

TPair<int, int> TMChain::GetRangeIdsByPt(const TPoint2D& Pt) const {
  const int n = Count();
  const TPoint2D* v = FItems.data();
  // The first vertex not below Pt in y-then-x order, or where Pt would be inserted.
  int lo = 0;
  int hi = n - 1;
  while (lo <= hi) {
    const int mid = lo + (hi - lo) / 2;
    const bool below = v[mid].Y < Pt.Y || (v[mid].Y == Pt.Y && v[mid].X < Pt.X);
    if (below)
      lo = mid + 1;
    else
      hi = mid - 1;
  }
  const int idx = lo;
  if (idx < 0 || idx >= n) return {-1, -1};
  if (idx == 0 && TMathUtils::CompareFloat(v[0].Y, Pt.Y, DefaultTol) > 0) return {-1, -1};
  // Widen to the vertices that match the height, or to the pair that brackets it; the
  // search's start may lie anywhere in a level stretch.
  int first = idx;
  while (first >= 1 && TMathUtils::CompareFloat(v[first].Y, Pt.Y, DefaultTol) >= 0) --first;
  if (first < n - 1 && TMathUtils::CompareFloat(v[first].Y, Pt.Y, DefaultTol) < 0 &&
      TMathUtils::CompareFloat(v[first + 1].Y, Pt.Y, DefaultTol) == 0)
    ++first;
  int last = idx;
  while (last < n - 1 && TMathUtils::CompareFloat(v[last].Y, Pt.Y, DefaultTol) <= 0) ++last;
  if (last > 0 && TMathUtils::CompareFloat(v[last].Y, Pt.Y, DefaultTol) > 0 &&
      TMathUtils::CompareFloat(v[last - 1].Y, Pt.Y, DefaultTol) == 0)
    --last;
  return {first, last};
}

}  // namespace orvane
