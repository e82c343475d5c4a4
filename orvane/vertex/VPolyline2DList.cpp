// TVPolyline2DList: repeated polylines, the three joiners, the nearest polyline and the sort
// by area.
//
// The joiners never touch a polyline while they work. They run on a plan in which every slot
// of the list holds a chain: the vertex ranges of the original polylines that the slot's
// polyline is made of, in a doubly linked list with a flag that reads it backwards. Reversing
// a chain is then a flip of the flag, dropping the junction vertex shortens the range at one
// end, and a join splices the chain of fewer ranges onto the other (turning it round first
// when the flags differ), so that no vertex is copied while pieces grow into contours and
// the work stays near n log n. Only when the plan is done are the joined vertices written into
// their polylines and the deleted polylines taken out of the list, in one pass each.

#include "orvane/vertex/VPolyline2DList.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/spatial/GenericRTree.h"
#include "orvane/spatial/internal/PointGrid.h"

namespace orvane {

namespace internal {

namespace {

// A.Equals(B, Tol), with the square root spared where one axis alone is too far apart.
bool Meet(const TPoint2D& A, const TPoint2D& B, double Tol) {
  return std::fabs(A.X - B.X) <= Tol && std::fabs(A.Y - B.Y) <= Tol && A.Equals(B, Tol);
}

}  // namespace

// The joins and deletions that a joiner decides, worked out on chains of vertex ranges (see
// the top of this file). Slots are the list's indices when the plan was made; a slot that a
// joiner deletes stays in the plan as not alive, which keeps the order of the others.
class TJoinPlan {
 public:
  explicit TJoinPlan(const std::vector<TVPolyline2D*>& Items) {
    const std::size_t n = Items.size();
    FItems.assign(Items.begin(), Items.end());
    FSpans.reserve(n);
    FChains.resize(n);
    FAlive.assign(n, 1);
    FChanged.assign(n, 0);
    for (std::size_t k = 0; k < n; ++k) {
      const TDynPoints2D& pts = Items[k]->Points();
      if (pts.empty()) continue;
      const auto id = static_cast<std::int32_t>(FSpans.size());
      FSpans.push_back({pts.data(), 0, static_cast<std::int32_t>(pts.size()), -1, -1, false});
      FChains[k] = {id, id, 1, static_cast<std::int64_t>(pts.size()), false, pts.front(), pts.back()};
    }
  }

  int Size() const { return static_cast<int>(FChains.size()); }
  bool IsAlive(int K) const { return FAlive[At(K)] != 0; }
  bool IsChanged(int K) const { return FChanged[At(K)] != 0; }
  int AliveCount() const { return static_cast<int>(std::count(FAlive.begin(), FAlive.end(), 1)); }

  // The vertices of slot K's chain, in reading order.
  TDynPoints2D Build(int K) const {
    const TChain& c = FChains[At(K)];
    TDynPoints2D out;
    out.reserve(static_cast<std::size_t>(c.Count));
    for (std::int32_t id = c.Flip ? c.Tail : c.Head; id >= 0;) {
      const TSpan& s = Span(id);
      if (s.Rev != c.Flip) {
        for (std::int32_t v = s.Hi; v-- > s.Lo;) out.push_back(s.Pts[v]);
      } else {
        out.insert(out.end(), s.Pts + s.Lo, s.Pts + s.Hi);
      }
      id = c.Flip ? s.Prev : s.Next;
    }
    return out;
  }

  // Runs on the polylines as they are (before any join). A slot dies when it equals an
  // earlier slot that lives, which is what deleting repeats pairwise in list order leaves.
  // Equal polylines have ends within Tol of each other, forwards or backwards, so the
  // midpoints of their two ends lie within Tol too: only slots of the same vertex count
  // whose end midpoints are that near are compared.
  void DeleteRepeat(bool DoesCheckReverse, double Tol) {
    const std::size_t n = FItems.size();
    constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
    std::vector<TPoint2D> mids(n, TPoint2D(NaN, NaN));
    for (std::size_t k = 0; k < n; ++k) {
      const TDynPoints2D& pts = FItems[k]->Points();
      if (!pts.empty()) mids[k] = pts.front() * 0.5 + pts.back() * 0.5;
    }
    TPointGrid grid(mids, Tol);
    bool emptyKept = false;
    for (std::size_t k = 0; k < n; ++k) {
      if (!FAlive[k]) continue;
      const TVPolyline2D& item = *FItems[k];
      if (item.IsEmpty()) {
        // Polylines without vertices all equal one another.
        if (emptyKept) FAlive[k] = 0;
        emptyKept = true;
        continue;
      }
      bool repeat = false;
      grid.ForEachNear(mids[k], [&](std::int32_t i) {
        const TVPolyline2D& earlier = *FItems[static_cast<std::size_t>(i)];
        if (repeat || earlier.Count() != item.Count()) return;
        repeat = item.IsEqualTo(earlier, Tol) || (DoesCheckReverse && item.IsEqualToReverse(earlier, Tol));
      });
      if (repeat) {
        FAlive[k] = 0;
      } else {
        grid.Add(static_cast<std::int32_t>(k));
      }
    }
  }

  // Each open piece joins its predecessor among the live slots, walking from the back; the
  // first wraps to the last. Deletions only ever hit the slot being walked, so the
  // predecessor of a slot is the live slot just before it.
  void TryConnectByOrder(double Tol) {
    const std::vector<std::int32_t> order = AliveSlots();
    if (order.empty()) return;
    std::size_t lastLive = order.size() - 1;
    for (std::size_t p = order.size(); p-- > 0;) {
      const std::int32_t i = order[p];
      const TChain& ci = Chain(i);
      if (ci.Count > 1 && !EndsMeet(ci, Tol)) {
        const std::size_t q = p > 0 ? p - 1 : lastLive;
        if (q == p) break;
        const std::int32_t j = order[q];
        const TChain& cj = Chain(j);
        if (cj.Count == 0) internal::ListIndexError(0);
        if (EndsMeet(cj, Tol)) continue;
        // Item j takes the join, item i goes.
        if (TryJoin(i, j, Tol, j)) Kill(i);
      } else if (ci.Count < 3) {
        Kill(i);
      }
      if (!FAlive[At(i)] && p == lastLive) lastLive = p - 1;
    }
  }

  // Every end of a polyline that is not a closed loop, sorted by point under Tol; each link
  // is tried against its predecessor in that order, from the back. Links keep the slot
  // they were made for, and a slot that is joined into another forwards to it (a union-find
  // with path compression), which stands for rewriting every link of the joined slot.
  void ConnectSortedEnds(double Tol) {
    const std::vector<std::int32_t> slots = AliveSlots();
    std::vector<TVPolyline2DList::TPointLink> links;
    links.reserve(2 * slots.size());
    for (const std::int32_t k : slots) {
      const TChain& c = Chain(k);
      if (c.Count == 0) internal::ListIndexError(0);
      if (IsLoop(c, Tol)) continue;
      links.emplace_back(First(c), k);
      links.emplace_back(Last(c), k);
    }
    if (links.size() < 2) return;
    // The comparer is not a strict weak order under a tolerance; a stable sort stays in
    // bounds for any comparer, and gives the same order for the same input.
    std::stable_sort(links.begin(), links.end(), [Tol](const auto& L, const auto& R) {
      if (std::fabs(L.FPoint.X - R.FPoint.X) > Tol) return L.FPoint.X < R.FPoint.X;
      if (std::fabs(L.FPoint.Y - R.FPoint.Y) > Tol) return L.FPoint.Y < R.FPoint.Y;
      return L.FIdx < R.FIdx;
    });
    std::vector<std::int32_t> owner(FChains.size());
    for (std::size_t k = 0; k < owner.size(); ++k) owner[k] = static_cast<std::int32_t>(k);
    auto find = [&owner](std::int32_t K) {
      std::int32_t root = K;
      while (owner[static_cast<std::size_t>(root)] != root) root = owner[static_cast<std::size_t>(root)];
      while (owner[static_cast<std::size_t>(K)] != root) K = std::exchange(owner[static_cast<std::size_t>(K)], root);
      return root;
    };
    for (std::size_t i = links.size() - 1; i >= 1; --i) {
      const std::int32_t a = find(links[i].FIdx);
      const std::int32_t b = find(links[i - 1].FIdx);
      const TChain& ca = Chain(a);
      if (ca.Count == 0 || IsLoop(ca, Tol) || b == a) continue;
      const TChain& cb = Chain(b);
      if (cb.Count == 0 || IsLoop(cb, Tol)) continue;
      if (!Meet(links[i].FPoint, links[i - 1].FPoint, Tol)) continue;
      // Polyline a takes the join; b stays, empty, until the end.
      if (TryJoin(a, b, Tol, a)) owner[At(b)] = a;
    }
    for (const std::int32_t k : AliveSlots()) {
      if (Chain(k).Count == 0) Kill(k);
    }
  }

  // The greedy joiner: slot i takes the first later live slot that TryConnect accepts,
  // again until it closes or none does. Later slots are unchanged while slot i is worked on,
  // so their ends, indexed once, stay true; the first acceptable one is the smallest slot
  // among the live, not closed ones with an end within Tol of an end of slot i.
  void Connect(double Tol) {
    const std::vector<std::int32_t> order = AliveSlots();
    std::vector<TPoint2D> ends(2 * order.size(), TPoint2D(std::numeric_limits<double>::quiet_NaN(), 0.0));
    for (std::size_t p = 0; p < order.size(); ++p) {
      const TChain& c = Chain(order[p]);
      if (c.Count == 0) continue;
      ends[2 * p] = First(c);
      ends[2 * p + 1] = Last(c);
    }
    TPointGrid grid(ends, Tol);
    for (std::size_t e = 0; e < ends.size(); ++e) grid.Add(static_cast<std::int32_t>(e));
    for (std::size_t p = 0; p < order.size(); ++p) {
      const std::int32_t i = order[p];
      if (!FAlive[At(i)]) continue;
      const TChain& ci = Chain(i);
      if (ci.Count == 0) internal::ListIndexError(0);
      if (EndsMeet(ci, Tol)) {
        if (ci.Count < 3) Kill(i);
        continue;
      }
      for (;;) {
        const TPoint2D head = First(ci);
        const TPoint2D tail = Last(ci);
        std::size_t best = order.size();
        auto consider = [&](std::int32_t E) {
          const auto q = static_cast<std::size_t>(E) / 2;
          if (q <= p || q >= best || !FAlive[At(order[q])]) return;
          const TChain& cq = Chain(order[q]);
          if (cq.Count > 2 && EndsMeet(cq, Tol)) return;
          const TPoint2D& end = ends[static_cast<std::size_t>(E)];
          if (Meet(end, head, Tol) || Meet(end, tail, Tol)) best = q;
        };
        grid.ForEachNear(head, consider);
        grid.ForEachNear(tail, consider);
        if (best == order.size()) break;
        const std::int32_t j = order[best];
        // TryConnect of item j with item i; the result replaces item i.
        TryJoin(j, i, Tol, i);
        Kill(j);
        if (ci.Count > 2 && EndsMeet(ci, Tol)) break;
      }
    }
  }

 private:
  // Vertices [Lo, Hi) of one original polyline, read backwards when Rev; linked into its
  // chain's stored order.
  struct TSpan {
    const TPoint2D* Pts;
    std::int32_t Lo;
    std::int32_t Hi;
    std::int32_t Prev;
    std::int32_t Next;
    bool Rev;
  };
  // A polyline as spans: the stored order from Head to Tail, read from Tail to Head (each
  // span the other way round) when Flip. Count vertices in Spans spans. The first and last
  // vertex read are kept beside, so that testing ends reads no span.
  struct TChain {
    std::int32_t Head = -1;
    std::int32_t Tail = -1;
    std::int32_t Spans = 0;
    std::int64_t Count = 0;
    bool Flip = false;
    TPoint2D First;
    TPoint2D Last;
  };

  static std::size_t At(std::int32_t K) { return static_cast<std::size_t>(K); }
  const TSpan& Span(std::int32_t Id) const { return FSpans[At(Id)]; }
  TSpan& Span(std::int32_t Id) { return FSpans[At(Id)]; }
  TChain& Chain(std::int32_t K) { return FChains[At(K)]; }

  std::vector<std::int32_t> AliveSlots() const {
    std::vector<std::int32_t> slots;
    slots.reserve(FAlive.size());
    for (std::size_t k = 0; k < FAlive.size(); ++k) {
      if (FAlive[k]) slots.push_back(static_cast<std::int32_t>(k));
    }
    return slots;
  }
  void Kill(std::int32_t K) { FAlive[At(K)] = 0; }

  // First and last vertex of a chain that has vertices.
  static const TPoint2D& First(const TChain& C) { return C.First; }
  static const TPoint2D& Last(const TChain& C) { return C.Last; }
  static bool EndsMeet(const TChain& C, double Tol) { return Meet(C.First, C.Last, Tol); }
  static bool IsLoop(const TChain& C, double Tol) { return C.Count >= 3 && EndsMeet(C, Tol); }
  static void Reverse(TChain& C) {
    C.Flip = !C.Flip;
    std::swap(C.First, C.Last);
  }

  void Unlink(TChain& C, std::int32_t Id) {
    TSpan& s = Span(Id);
    (s.Prev >= 0 ? Span(s.Prev).Next : C.Head) = s.Next;
    (s.Next >= 0 ? Span(s.Next).Prev : C.Tail) = s.Prev;
    --C.Spans;
  }
  // Drops the first (or last) vertex read; a span left empty leaves the chain. The kept end
  // vertex on that side goes stale: it is the junction of the join that drops it, and
  // Concat reads only the ends on the outer sides.
  void DropEnd(TChain& C, bool AtFirst) {
    const std::int32_t id = AtFirst != C.Flip ? C.Head : C.Tail;
    TSpan& s = Span(id);
    // Reading forwards, a span starts at Lo; the first vertex read of a span read backwards
    // is at Hi - 1.
    const bool readBackwards = s.Rev != C.Flip;
    if (AtFirst != readBackwards) {
      ++s.Lo;
    } else {
      --s.Hi;
    }
    --C.Count;
    if (s.Lo == s.Hi) Unlink(C, id);
  }
  // Turns the stored order round and toggles Flip: the same polyline, read the same way.
  void TurnStorage(TChain& C) {
    for (std::int32_t id = C.Head; id >= 0;) {
      TSpan& s = Span(id);
      const std::int32_t next = s.Next;
      std::swap(s.Prev, s.Next);
      s.Rev = !s.Rev;
      id = next;
    }
    std::swap(C.Head, C.Tail);
    C.Flip = !C.Flip;
  }
  // X read, then Y read. The chain of fewer spans is turned when the flags differ, so a
  // series of joins costs n log n span moves at most.
  TChain Concat(TChain X, TChain Y) {
    if (Y.Count == 0) return X;
    if (X.Count == 0) return Y;
    if (X.Flip != Y.Flip) TurnStorage(X.Spans < Y.Spans ? X : Y);
    // Read backwards, X then Y is stored as Y then X.
    const TChain& a = X.Flip ? Y : X;
    const TChain& b = X.Flip ? X : Y;
    Span(a.Tail).Next = b.Head;
    Span(b.Head).Prev = a.Tail;
    return {a.Head, b.Tail, X.Spans + Y.Spans, X.Count + Y.Count, X.Flip, X.First, Y.Last};
  }

  // TVPolyline2D::TryConnect of slot S (the receiver) with slot O: the first pair of ends
  // that meet, in the order first-first, first-last, last-first, last-last, with one vertex
  // at the junction. On success the result goes to slot Into and both chains are consumed.
  bool TryJoin(std::int32_t S, std::int32_t O, double Tol, std::int32_t Into) {
    TChain s = Chain(S);
    TChain o = Chain(O);
    if (s.Count == 0 || o.Count == 0) return false;
    TChain joined;
    if (Meet(s.First, o.First, Tol)) {
      Reverse(o);
      DropEnd(o, false);
      joined = Concat(o, s);
    } else if (Meet(s.First, o.Last, Tol)) {
      DropEnd(o, false);
      joined = Concat(o, s);
    } else if (Meet(s.Last, o.First, Tol)) {
      DropEnd(s, false);
      joined = Concat(s, o);
    } else if (Meet(s.Last, o.Last, Tol)) {
      Reverse(o);
      DropEnd(o, true);
      joined = Concat(s, o);
    } else {
      return false;
    }
    Chain(S) = TChain{};
    Chain(O) = TChain{};
    Chain(Into) = joined;
    FChanged[At(Into)] = 1;
    return true;
  }

  std::vector<const TVPolyline2D*> FItems;
  std::vector<TSpan> FSpans;
  std::vector<TChain> FChains;
  std::vector<std::uint8_t> FAlive;
  std::vector<std::uint8_t> FChanged;
};

}  // namespace internal

std::unique_ptr<TVGeometry2DList<TVPolyline2D>> TVPolyline2DList::New(bool AOwnsObjects) const {
  return std::make_unique<TVPolyline2DList>(AOwnsObjects);
}

TPaths64 TVPolyline2DList::ToPaths(double Rate) const {
  TPaths64 paths;
  paths.reserve(FItems.size());
  for (const TVPolyline2D* item : FItems) paths.push_back(item->ToPath(Rate));
  return paths;
}

double TVPolyline2DList::DistanceTo(const TPoint2D& Pt, int& PolylineId, int& SeglineId) const {
  // The margin beyond the nearest box, so that a polyline whose box is about as near is
  // searched as well.
  constexpr double Margin = 1e-5;
  internal::CheckFinite(Pt.X, "TVPolyline2DList.DistanceTo", "Pt.X");
  internal::CheckFinite(Pt.Y, "TVPolyline2DList.DistanceTo", "Pt.Y");
  auto boxDistance = [&Pt](const TRect2D& Box) {
    return TMathUtils::DistToRange(Pt.X, Box.XMin, Box.XMax, DefaultTol) +
           TMathUtils::DistToRange(Pt.Y, Box.YMin, Box.YMax, DefaultTol);
  };
  TRTree<int> tree(8);
  double reach = MaxDouble;
  for (int i = 0; i < Count(); ++i) {
    const TRect2D box = FItems[static_cast<std::size_t>(i)]->BoundBox();
    if (box.IsValid() && !internal::IsFinite(box)) {
      throw EParamError("[Error] TVPolyline2DList.DistanceTo: polyline %d has a vertex that is not finite", i);
    }
    reach = std::min(reach, boxDistance(box));
    tree.Insert(i, box);
  }
  reach += Margin;
  std::vector<int> hits;
  double best = MaxDouble;
  // The nearest box need not hold the nearest polyline: when the best distance found lies
  // beyond the square searched, a polyline outside it may still be nearer, so the search is
  // run once more over the square of that distance, which holds every polyline as near.
  for (;;) {
    hits.clear();
    tree.Search(TRect2D(Pt).InflatedRect(reach, reach), hits, DefaultTol);
    best = MaxDouble;
    PolylineId = -1;
    SeglineId = -1;
    for (const int h : hits) {
      const TDynPoints2D& pts = FItems[static_cast<std::size_t>(h)]->Points();
      if (pts.size() == 1) {
        const double d = Pt.DistanceTo(pts.front());
        if (d < best) {
          best = d;
          PolylineId = h;
          SeglineId = 0;
        }
        continue;
      }
      for (std::size_t j = 0; j + 1 < pts.size(); ++j) {
        const TLine2D seg(pts[j], pts[j + 1]);
        const TRect2D box = seg.GetBoundBox();
        if (CompareValue(TMathUtils::DistToRange(Pt.X, box.XMin, box.XMax, DefaultTol), best, DefaultTol) >= 0 ||
            CompareValue(TMathUtils::DistToRange(Pt.Y, box.YMin, box.YMax, DefaultTol), best, DefaultTol) >= 0) {
          continue;
        }
        const double d = seg.DistanceLimit(Pt);
        if (d < best) {
          best = d;
          PolylineId = h;
          SeglineId = static_cast<int>(j);
        }
      }
    }
    if (PolylineId < 0 || best <= reach) break;
    reach = best + Margin;
  }
  return best;
}

void TVPolyline2DList::ConnectHeadTail() {
  for (TVPolyline2D* item : FItems) item->ConnectHeadTail();
}

void TVPolyline2DList::DeleteRepeat(bool DoesCheckReverse, double Tol) {
  internal::CheckTolerance(Tol, "TVPolyline2DList.DeleteRepeat");
  internal::TJoinPlan plan(FItems);
  plan.DeleteRepeat(DoesCheckReverse, Tol);
  Apply(plan);
}

void TVPolyline2DList::Connect(double Tolerance) {
  internal::CheckTolerance(Tolerance, "TVPolyline2DList.Connect");
  if (Count() < 2) return;
  internal::TJoinPlan plan(FItems);
  plan.DeleteRepeat(true, Tolerance);
  if (plan.AliveCount() >= 2) plan.Connect(Tolerance);
  Apply(plan);
}

void TVPolyline2DList::TryConnectByOrder(double Tolerance) {
  internal::CheckTolerance(Tolerance, "TVPolyline2DList.TryConnectByOrder");
  internal::TJoinPlan plan(FItems);
  plan.TryConnectByOrder(Tolerance);
  Apply(plan);
}

void TVPolyline2DList::ConnectOptimize(double Tolerance) {
  internal::CheckTolerance(Tolerance, "TVPolyline2DList.ConnectOptimize");
  if (Count() < 2) return;
  internal::TJoinPlan plan(FItems);
  plan.DeleteRepeat(true, Tolerance);
  plan.TryConnectByOrder(Tolerance);
  plan.ConnectSortedEnds(Tolerance);
  Apply(plan);
}

void TVPolyline2DList::ConnectPolylines(double Tolerance) {
  internal::CheckTolerance(Tolerance, "TVPolyline2DList.ConnectPolylines");
  if (Count() >= 2) ConnectOptimize(Tolerance);
}

void TVPolyline2DList::SortByArea(bool Descending) {
  std::vector<std::pair<double, TVPolyline2D*>> keyed;
  keyed.reserve(FItems.size());
  for (TVPolyline2D* item : FItems) keyed.emplace_back(std::fabs(item->Area()), item);
  std::stable_sort(keyed.begin(), keyed.end(), [Descending](const auto& A, const auto& B) {
    return Descending ? A.first > B.first : A.first < B.first;
  });
  for (std::size_t i = 0; i < keyed.size(); ++i) FItems[i] = keyed[i].second;
}

void TVPolyline2DList::Apply(const internal::TJoinPlan& Plan) {
  // Every joined chain is built before any polyline changes, for chains read the vertices
  // of the polylines they were made from. (Vectors are sized at once: growing large ones
  // step by step costs more in fresh pages than the joining itself.)
  const int n = Plan.Size();
  const int alive = Plan.AliveCount();
  std::vector<std::pair<TVPolyline2D*, TDynPoints2D>> joined;
  joined.reserve(static_cast<std::size_t>(alive));
  for (int k = 0; k < n; ++k) {
    if (Plan.IsAlive(k) && Plan.IsChanged(k)) joined.emplace_back(FItems[static_cast<std::size_t>(k)], Plan.Build(k));
  }
  for (auto& [item, pts] : joined) item->Assign(pts);
  if (alive == n) return;
  std::vector<TVPolyline2D*> kept;
  std::vector<TVPolyline2D*> gone;
  kept.reserve(static_cast<std::size_t>(alive));
  gone.reserve(static_cast<std::size_t>(n - alive));
  for (int k = 0; k < n; ++k) (Plan.IsAlive(k) ? kept : gone).push_back(FItems[static_cast<std::size_t>(k)]);
  FItems.swap(kept);
  for (auto it = gone.rbegin(); it != gone.rend(); ++it) Notify(*it, TCollectionNotification::cnRemoved);
}

}  // namespace orvane
