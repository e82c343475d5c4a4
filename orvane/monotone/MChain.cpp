#include "orvane/monotone/MChain.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {

// The chains' one tolerance, with CompareValue's and FloatEquals' meaning, inlined for the walk.
constexpr double MonoTol = 1e-6;
inline bool MonoEq(double A, double B) { return std::fabs(A - B) <= MonoTol; }
inline int MonoCmp(double A, double B) { return std::fabs(A - B) <= MonoTol ? 0 : (A < B ? -1 : 1); }

}  // namespace

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

// The merge walk over two chains A and B, upward in y. The walk stops at every height where
// either chain has a vertex; vertices within the tolerance of a run's first height form one
// level run there. At such a height each chain covers an x interval: its level run, or the
// point where its segment passes. Intervals that come within the tolerance are a contact;
// otherwise one chain lies left of the other, and a chain that changes sides has crossed
// the other between two stops. Where the chains stay apart in x over a whole stretch of
// heights, the walk takes the stretch at once. Vertices are read straight from the arrays.
class TOverlapWalk {
 public:
  TOverlapWalk(const TPoint2D* A, int NA, const TPoint2D* B, int NB) : a(A), na(NA), b(B), nb(NB) {}

  bool Run() const {
    if (na == 0 || nb == 0) return false;
    // y ranges apart.
    if (b[0].Y - a[na - 1].Y > MonoTol || a[0].Y - b[nb - 1].Y > MonoTol) return false;

    int i = 0;  // first vertex of A's current run
    int j = 0;
    // The vertices of the chain that starts lower, up to the other's start, meet nothing.
    while (i < na && b[0].Y - a[i].Y > MonoTol) ++i;
    while (j < nb && a[0].Y - b[j].Y > MonoTol) ++j;
    if (Apart(a, na, i, b[nb - 1].Y, b, nb, j, a[na - 1].Y)) return false;
    int iEnd = RunEnd(a, na, i);  // its last vertex
    int jEnd = RunEnd(b, nb, j);
    bool sided = false;
    bool side = false;  // true while A lies left of B
    int tryFrom = 0;    // A's vertex from which a stretch may next be passed over whole
    while (i < na && j < nb) {
      if (i >= tryFrom && i > 0 && j > 0) {
        // The next stretch of heights, up to BlockSize vertices of A on: if the chains stay
        // apart in x over all of it, every stop there finds the same side, so the walk
        // takes it at once. Runs are passed over whole, so each chain keeps its own runs.
        const double top = std::max(a[i].Y, a[std::min(i + BlockSize, na - 1)].Y);
        int i2 = i;
        while (i2 < na && a[i2].Y <= top) i2 = RunEnd(a, na, i2) + 1;
        int j2 = j;
        while (j2 < nb && b[j2].Y <= top) j2 = RunEnd(b, nb, j2) + 1;
        double aLo, aHi, bLo, bHi;
        Span(a, i - 1, std::min(i2, na - 1), aLo, aHi);
        Span(b, j - 1, std::min(j2, nb - 1), bLo, bHi);
        const bool left = bLo - aHi > MonoTol;
        if (left || aLo - bHi > MonoTol) {
          if (sided && left != side) return true;
          side = left;
          sided = true;
          i = i2;
          j = j2;
          iEnd = RunEnd(a, na, i);
          jEnd = RunEnd(b, nb, j);
          continue;
        }
        tryFrom = i2;
      }
      const double ya = a[i].Y;
      const double yb = b[j].Y;
      double aLo, aHi, bLo, bHi;
      bool compare = true;
      if (std::fabs(ya - yb) <= MonoTol) {
        // Both chains have a run at this height.
        Span(a, i, iEnd, aLo, aHi);
        Span(b, j, jEnd, bLo, bHi);
        i = iEnd + 1;
        j = jEnd + 1;
      } else if (ya < yb) {
        // A's run against B's segment that passes its height, once B has begun.
        if (j > 0) {
          Span(a, i, iEnd, aLo, aHi);
          bLo = bHi = XAt(b[j - 1], b[j], ya);
        } else {
          compare = false;
        }
        i = iEnd + 1;
      } else {
        if (i > 0) {
          Span(b, j, jEnd, bLo, bHi);
          aLo = aHi = XAt(a[i - 1], a[i], yb);
        } else {
          compare = false;
        }
        j = jEnd + 1;
      }
      if (compare) {
        bool left;
        if (bLo - aHi > MonoTol)
          left = true;
        else if (aLo - bHi > MonoTol)
          left = false;
        else
          return true;
        if (!sided) {
          side = left;
          sided = true;
        } else if (left != side) {
          return true;
        }
      }
      if (i > iEnd) iEnd = RunEnd(a, na, i);
      if (j > jEnd) jEnd = RunEnd(b, nb, j);
    }
    return false;
  }

 private:
  static constexpr int BlockSize = 8;

  // The x range of the vertices that the walk may read: from the one before First up to
  // the first one beyond the reach of a run that starts within the tolerance of Top. Every
  // x that the walk compares lies within it.
  static void Reach(const TPoint2D* V, int N, int First, double Top, double& Lo, double& Hi) {
    int k = First > 0 ? First - 1 : 0;
    Lo = Hi = V[k].X;
    for (++k; k < N; ++k) {
      Lo = std::min(Lo, V[k].X);
      Hi = std::max(Hi, V[k].X);
      if (V[k].Y - Top > 2.0 * MonoTol) break;
    }
  }

  // The two chains stay apart in x over all the heights they share: the walk would find
  // the same side everywhere. Cheaper than the walk, which it spares for most chains that
  // merely face each other.
  static bool Apart(const TPoint2D* A, int NA, int I, double TopB, const TPoint2D* B, int NB, int J, double TopA) {
    if (I >= NA || J >= NB) return true;
    double aLo, aHi, bLo, bHi;
    Reach(A, NA, I, TopB, aLo, aHi);
    Reach(B, NB, J, TopA, bLo, bHi);
    return bLo - aHi > MonoTol || aLo - bHi > MonoTol;
  }

  // The last vertex of the run of vertices within the tolerance of vertex Start's height.
  static int RunEnd(const TPoint2D* V, int N, int Start) {
    if (Start >= N) return Start;
    int e = Start;
    while (e + 1 < N && MonoEq(V[e + 1].Y, V[Start].Y)) ++e;
    return e;
  }

  static void Span(const TPoint2D* V, int First, int Last, double& Lo, double& Hi) {
    Lo = Hi = V[First].X;
    for (int k = First + 1; k <= Last; ++k) {
      Lo = std::min(Lo, V[k].X);
      Hi = std::max(Hi, V[k].X);
    }
  }

  // The x of segment S-E at height Y, kept within the segment: the heights of neighbouring
  // runs may overlap within the tolerance.
  static double XAt(const TPoint2D& S, const TPoint2D& E, double Y) {
    const double dy = E.Y - S.Y;
    if (!(dy > 0.0)) return S.X;
    const double t = std::clamp((Y - S.Y) / dy, 0.0, 1.0);
    return S.X + t * (E.X - S.X);
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
  if (idx == 0 && MonoCmp(v[0].Y, Pt.Y) > 0) return {-1, -1};
  // Widen to the vertices that match the height, or to the pair that brackets it; the
  // search's start may lie anywhere in a level stretch.
  int first = idx;
  while (first >= 1 && MonoCmp(v[first].Y, Pt.Y) >= 0) --first;
  if (first < n - 1 && MonoCmp(v[first].Y, Pt.Y) < 0 && MonoCmp(v[first + 1].Y, Pt.Y) == 0) ++first;
  int last = idx;
  while (last < n - 1 && MonoCmp(v[last].Y, Pt.Y) <= 0) ++last;
  if (last > 0 && MonoCmp(v[last].Y, Pt.Y) > 0 && MonoCmp(v[last - 1].Y, Pt.Y) == 0) --last;
  return {first, last};
}

}  // namespace orvane
