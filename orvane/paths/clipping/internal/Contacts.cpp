#include "orvane/paths/clipping/internal/Contacts.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/internal/Orientation.h"

namespace orvane::internal {

namespace {

struct TContactEdge {
  ClipperLib::IntPoint A, B;
  std::int64_t MinX, MaxX, MinY, MaxY;
  TPathType Type;
  int Ordinal;  // the path's ordinal
  int Path;     // index in the kept list
  int Edge;     // index of the first vertex
  int Seq;      // position among the path's non-degenerate edges
  int SeqCount;
};

// P is known collinear with the segment: is it within the segment's box?
bool WithinBox(const ClipperLib::IntPoint& P, const TContactEdge& E) {
  return P.X >= E.MinX && P.X <= E.MaxX && P.Y >= E.MinY && P.Y <= E.MaxY;
}

TPoint64 ToPoint(const ClipperLib::IntPoint& P) { return TPoint64(P.X, P.Y); }

void Record(const TContactEdge& E1, const TContactEdge& E2, const TPoint64& Pt,
            std::vector<Clipper::TIntersectRecord>& Records) {
  Records.push_back(Clipper::TIntersectRecord{Clipper::TIntersectEdge{E1.Type, E1.Ordinal, E1.Edge},
                                              Clipper::TIntersectEdge{E2.Type, E2.Ordinal, E2.Edge}, Pt});
}

void ExamineContact(const TContactEdge& E1, const TContactEdge& E2, bool AllIntersection,
                    std::vector<Clipper::TIntersectRecord>& Records) {
  const int d1 = Orientation64(E1.A, E1.B, E2.A);
  const int d2 = Orientation64(E1.A, E1.B, E2.B);
  const int d3 = Orientation64(E2.A, E2.B, E1.A);
  const int d4 = Orientation64(E2.A, E2.B, E1.B);
  if (d1 * d2 < 0 && d3 * d4 < 0) {
    // A proper crossing: every pair, whatever its path types.
    const TInt128 c3 = CrossProduct64(E2.A, E2.B, E1.A);
    const TInt128 c4 = CrossProduct64(E2.A, E2.B, E1.B);
    const long double t = static_cast<long double>(c3) / static_cast<long double>(c3 - c4);
    const long double x = static_cast<long double>(E1.A.X) + t * static_cast<long double>(E1.B.X - E1.A.X);
    const long double y = static_cast<long double>(E1.A.Y) + t * static_cast<long double>(E1.B.Y - E1.A.Y);
    Record(E1, E2, TPoint64(static_cast<std::int64_t>(std::nearbyint(x)), static_cast<std::int64_t>(std::nearbyint(y))),
           Records);
    return;
  }
  if (!AllIntersection && E1.Type == E2.Type) return;
  TPoint64 found[2];
  int count = 0;
  auto add = [&](const ClipperLib::IntPoint& P) {
    const TPoint64 q = ToPoint(P);
    for (int i = 0; i < count; ++i)
      if (found[i] == q) return;
    found[count++] = q;
  };
  if (d1 == 0 && d2 == 0) {
    // Collinear: the common stretch, if any, by its two ends.
    const bool byX = (E1.MaxX - E1.MinX) >= (E1.MaxY - E1.MinY);
    auto key = [byX](const ClipperLib::IntPoint& P) { return byX ? P.X : P.Y; };
    const bool same = (E1.A == E2.A && E1.B == E2.B) || (E1.A == E2.B && E1.B == E2.A);
    if (same) return;
    const ClipperLib::IntPoint& lo1 = key(E1.A) <= key(E1.B) ? E1.A : E1.B;
    const ClipperLib::IntPoint& hi1 = key(E1.A) <= key(E1.B) ? E1.B : E1.A;
    const ClipperLib::IntPoint& lo2 = key(E2.A) <= key(E2.B) ? E2.A : E2.B;
    const ClipperLib::IntPoint& hi2 = key(E2.A) <= key(E2.B) ? E2.B : E2.A;
    const ClipperLib::IntPoint& lo = key(lo1) >= key(lo2) ? lo1 : lo2;
    const ClipperLib::IntPoint& hi = key(hi1) <= key(hi2) ? hi1 : hi2;
    if (key(lo) > key(hi)) return;
    add(lo);
    add(hi);
  } else {
    if (d1 == 0 && WithinBox(E2.A, E1))
      add(E2.A);
    else if (d2 == 0 && WithinBox(E2.B, E1))
      add(E2.B);
    if (d3 == 0 && WithinBox(E1.A, E2))
      add(E1.A);
    else if (d4 == 0 && WithinBox(E1.B, E2))
      add(E1.B);
  }
  for (int i = 0; i < count; ++i) Record(E1, E2, found[i], Records);
}

}  // namespace

void CollectContacts(const std::vector<ClipperLib::IntPoint>& Points, const std::vector<TKeptPath>& Paths,
                     bool AllIntersection, std::vector<Clipper::TIntersectRecord>& Records) {
  std::vector<TContactEdge> edges;
  for (std::size_t pi = 0; pi < Paths.size(); ++pi) {
    const ClipperLib::IntPoint* p = Points.data() + Paths[pi].Begin;
    const std::size_t n = Paths[pi].Count;
    const std::size_t first = edges.size();
    for (std::size_t i = 0; i < n; ++i) {
      const ClipperLib::IntPoint& a = p[i];
      const ClipperLib::IntPoint& b = p[(i + 1) % n];
      if (a == b) continue;
      TContactEdge e{a,
                     b,
                     std::min(a.X, b.X),
                     std::max(a.X, b.X),
                     std::min(a.Y, b.Y),
                     std::max(a.Y, b.Y),
                     Paths[pi].Type,
                     Paths[pi].Ordinal,
                     static_cast<int>(pi),
                     static_cast<int>(i),
                     static_cast<int>(edges.size() - first),
                     0};
      edges.push_back(e);
    }
    const int count = static_cast<int>(edges.size() - first);
    for (std::size_t k = first; k < edges.size(); ++k) edges[k].SeqCount = count;
  }
  // Sweep in X: each edge meets only the active edges whose X range reaches its start.
  std::vector<int> order(edges.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return edges[a].MinX < edges[b].MinX; });
  std::vector<int> active;
  for (int idx : order) {
    const TContactEdge& e = edges[idx];
    std::erase_if(active, [&](int a) { return edges[a].MaxX < e.MinX; });
    for (int a : active) {
      const TContactEdge& o = edges[a];
      if (o.MaxY < e.MinY || o.MinY > e.MaxY) continue;
      if (o.Path == e.Path && ((o.Seq + 1) % o.SeqCount == e.Seq || (e.Seq + 1) % e.SeqCount == o.Seq)) continue;
      // The edge added first is named first.
      const bool oFirst = o.Path < e.Path || (o.Path == e.Path && o.Edge < e.Edge);
      if (oFirst)
        ExamineContact(o, e, AllIntersection, Records);
      else
        ExamineContact(e, o, AllIntersection, Records);
    }
    active.push_back(idx);
  }
}

}  // namespace orvane::internal
