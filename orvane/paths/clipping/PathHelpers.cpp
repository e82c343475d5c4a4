// The Clipper2 face's own path helpers: rectangle clipping of closed and open paths,
// trim-collinear and simplify.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <queue>
#include <tuple>

#include "orvane/foundation/internal/Orientation.h"
#include "orvane/paths/clipping/Clipper2.h"
#include "orvane/paths/clipping/internal/ClipperEngine.h"

namespace orvane::Clipper2 {

namespace {

using internal::CrossProduct64;
using internal::TInt128;

std::int64_t RoundL(long double V) { return static_cast<std::int64_t>(std::nearbyint(V)); }

bool RectEmpty(const TRect64& R) { return R.Right <= R.Left || R.Bottom <= R.Top; }

// ---- Closed paths -------------------------------------------------------------------------

// One Sutherland-Hodgman stage: keeps the part of Ring with Coord(p) * Sign >= Limit * Sign,
// where Coord is X (ByX) or Y. Points cut on the line sit exactly on it.
void ClipStage(const TPath64& Ring, bool ByX, std::int64_t Limit, int Sign, TPath64& Out) {
  Out.clear();
  const std::size_t n = Ring.size();
  if (n == 0) return;
  auto coord = [ByX](const TPoint64& p) { return ByX ? p.X : p.Y; };
  auto inside = [&](const TPoint64& p) { return Sign > 0 ? coord(p) >= Limit : coord(p) <= Limit; };
  auto cut = [&](const TPoint64& p, const TPoint64& q) {
    const long double t = static_cast<long double>(Limit - coord(p)) / static_cast<long double>(coord(q) - coord(p));
    if (ByX) return TPoint64(Limit, RoundL(static_cast<long double>(p.Y) + t * static_cast<long double>(q.Y - p.Y)));
    return TPoint64(RoundL(static_cast<long double>(p.X) + t * static_cast<long double>(q.X - p.X)), Limit);
  };
  const TPoint64* p = &Ring[n - 1];
  bool pIn = inside(*p);
  for (const TPoint64& q : Ring) {
    const bool qIn = inside(q);
    if (qIn) {
      if (!pIn) Out.push_back(cut(*p, q));
      Out.push_back(q);
    } else if (pIn) {
      Out.push_back(cut(*p, q));
    }
    p = &q;
    pIn = qIn;
  }
}

struct TEdge {
  TPoint64 A, B;
};

// The side of the rectangle that holds the whole edge: 0 left, 1 top, 2 right, 3 bottom, -1
// none.
int EdgeSide(const TPoint64& A, const TPoint64& B, const TRect64& R) {
  if (A.X == R.Left && B.X == R.Left) return 0;
  if (A.Y == R.Top && B.Y == R.Top) return 1;
  if (A.X == R.Right && B.X == R.Right) return 2;
  if (A.Y == R.Bottom && B.Y == R.Bottom) return 3;
  return -1;
}

bool OnBoundary(const TPoint64& P, const TRect64& R) {
  return P.X == R.Left || P.X == R.Right || P.Y == R.Top || P.Y == R.Bottom;
}

// Removes consecutive duplicates of a ring, the closing one included.
void DedupeRing(TPath64& Ring) {
  Ring.erase(std::unique(Ring.begin(), Ring.end()), Ring.end());
  while (Ring.size() > 1 && Ring.back() == Ring.front()) Ring.pop_back();
}

// Drops vertices on the rectangle's outline that run straight on along it.
void MergeBoundaryRuns(TPath64& Ring, const TRect64& R) {
  bool changed = true;
  while (changed && Ring.size() >= 3) {
    changed = false;
    TPath64 out;
    out.reserve(Ring.size());
    const std::size_t n = Ring.size();
    for (std::size_t i = 0; i < n; ++i) {
      const TPoint64& prev = out.empty() ? Ring[n - 1] : out.back();
      const TPoint64& cur = Ring[i];
      const TPoint64& next = Ring[(i + 1) % n];
      if (OnBoundary(cur, R) && CrossProduct64(prev, cur, next) == 0) {
        changed = true;
        continue;
      }
      out.push_back(cur);
    }
    Ring.swap(out);
  }
}

// The S-H ring may run to and fro along the rectangle where the path left it. Cancels those
// opposite runs and links what is left into separate rings. False when nothing cancels (the
// ring is already clean).
bool SplitRing(const TPath64& Ring, const TRect64& R, TPaths64& Out) {
  const std::size_t n = Ring.size();
  std::vector<TEdge> inner;
  // Per side: (position along the side, +1 / -1) events of the side's edges.
  std::vector<std::pair<std::int64_t, int>> events[4];
  std::vector<std::int64_t> stops[4];
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint64& a = Ring[i];
    const TPoint64& b = Ring[(i + 1) % n];
    const int side = EdgeSide(a, b, R);
    if (side < 0) {
      inner.push_back(TEdge{a, b});
      continue;
    }
    const bool byY = side == 0 || side == 2;
    const std::int64_t u0 = byY ? a.Y : a.X, u1 = byY ? b.Y : b.X;
    const int dir = u1 > u0 ? 1 : -1;
    events[side].emplace_back(std::min(u0, u1), dir);
    events[side].emplace_back(std::max(u0, u1), -dir);
  }
  for (const TPoint64& p : Ring) {
    if (p.X == R.Left) stops[0].push_back(p.Y);
    if (p.Y == R.Top) stops[1].push_back(p.X);
    if (p.X == R.Right) stops[2].push_back(p.Y);
    if (p.Y == R.Bottom) stops[3].push_back(p.X);
  }
  std::vector<TEdge> edges = inner;
  for (int side = 0; side < 4; ++side) {
    auto& ev = events[side];
    if (ev.empty()) continue;
    std::vector<std::int64_t>& st = stops[side];
    for (const auto& e : ev) st.push_back(e.first);
    std::sort(st.begin(), st.end());
    st.erase(std::unique(st.begin(), st.end()), st.end());
    std::sort(ev.begin(), ev.end());
    // Sweep the stops: net is the signed count of the side's edges over each stretch, so
    // runs there and back cancel and what is left is split at every stop.
    int net = 0;
    std::size_t e = 0;
    for (std::size_t s = 0; s + 1 < st.size(); ++s) {
      while (e < ev.size() && ev[e].first <= st[s]) net += ev[e++].second;
      const std::int64_t lo = st[s], hi = st[s + 1];
      if (net == 0) continue;
      auto at = [&](std::int64_t u) {
        switch (side) {
          case 0: return TPoint64(R.Left, u);
          case 1: return TPoint64(u, R.Top);
          case 2: return TPoint64(R.Right, u);
          default: return TPoint64(u, R.Bottom);
        }
      };
      for (int c = 0; c < std::abs(net); ++c) edges.push_back(net > 0 ? TEdge{at(lo), at(hi)} : TEdge{at(hi), at(lo)});
    }
  }
  // Did any stretch lose edges? Compare the boundary length before and after.
  auto boundaryLength = [&](const std::vector<TEdge>& list, std::size_t from) {
    TInt128 len = 0;
    for (std::size_t k = from; k < list.size(); ++k)
      len += (list[k].A.X > list[k].B.X ? list[k].A.X - list[k].B.X : list[k].B.X - list[k].A.X) +
             (list[k].A.Y > list[k].B.Y ? list[k].A.Y - list[k].B.Y : list[k].B.Y - list[k].A.Y);
    return len;
  };
  TInt128 before = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const TPoint64& a = Ring[i];
    const TPoint64& b = Ring[(i + 1) % n];
    if (EdgeSide(a, b, R) >= 0) before += (a.X > b.X ? a.X - b.X : b.X - a.X) + (a.Y > b.Y ? a.Y - b.Y : b.Y - a.Y);
  }
  if (boundaryLength(edges, inner.size()) == before) return false;
  // Link the edges into rings, keeping the original order where there is a choice.
  std::multimap<std::tuple<std::int64_t, std::int64_t>, std::size_t> byStart;
  for (std::size_t k = 0; k < edges.size(); ++k) byStart.emplace(std::make_tuple(edges[k].A.X, edges[k].A.Y), k);
  std::vector<bool> used(edges.size(), false);
  for (std::size_t k = 0; k < edges.size(); ++k) {
    if (used[k]) continue;
    TPath64 ring;
    std::size_t cur = k;
    const TPoint64 start = edges[k].A;
    while (true) {
      used[cur] = true;
      ring.push_back(edges[cur].A);
      const TPoint64 end = edges[cur].B;
      if (end == start) break;
      auto range = byStart.equal_range(std::make_tuple(end.X, end.Y));
      std::size_t next = edges.size();
      for (auto it = range.first; it != range.second; ++it)
        if (!used[it->second]) {
          next = it->second;
          break;
        }
      if (next == edges.size()) break;
      cur = next;
    }
    DedupeRing(ring);
    MergeBoundaryRuns(ring, R);
    if (ring.size() >= 3 && Clipper::Core::Area(ring) != 0.0) Out.push_back(std::move(ring));
  }
  return true;
}

void ClipClosed(const TPath64& Path, const TRect64& R, TPaths64& Out) {
  if (Path.size() < 3) return;
  const TRect64 b = Clipper::Core::GetBounds(Path);
  if (b.Right < R.Left || b.Left > R.Right || b.Bottom < R.Top || b.Top > R.Bottom) return;
  if (b.Left >= R.Left && b.Right <= R.Right && b.Top >= R.Top && b.Bottom <= R.Bottom) {
    Out.push_back(Path);
    return;
  }
  TPath64 a, c;
  ClipStage(Path, true, R.Left, 1, a);
  ClipStage(a, false, R.Top, 1, c);
  ClipStage(c, true, R.Right, -1, a);
  ClipStage(a, false, R.Bottom, -1, c);
  DedupeRing(c);
  if (c.size() < 3) return;
  if (SplitRing(c, R, Out)) return;
  MergeBoundaryRuns(c, R);
  if (c.size() >= 3 && Clipper::Core::Area(c) != 0.0) Out.push_back(std::move(c));
}

// ---- Open paths ------------------------------------------------------------------------------

// Liang-Barsky: the parameter range of P -> Q inside the rectangle, false when none.
bool ClipSegment(const TPoint64& P, const TPoint64& Q, const TRect64& R, long double& T0, long double& T1) {
  T0 = 0;
  T1 = 1;
  const long double dx = static_cast<long double>(Q.X - P.X), dy = static_cast<long double>(Q.Y - P.Y);
  const long double p[4] = {-dx, dx, -dy, dy};
  const long double q[4] = {static_cast<long double>(P.X - R.Left), static_cast<long double>(R.Right - P.X),
                            static_cast<long double>(P.Y - R.Top), static_cast<long double>(R.Bottom - P.Y)};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0) return false;
      continue;
    }
    const long double t = q[i] / p[i];
    if (p[i] < 0)
      T0 = std::max(T0, t);
    else
      T1 = std::min(T1, t);
    if (T0 > T1) return false;
  }
  return true;
}

void ClipOpen(const TPath64& Path, const TRect64& R, TPaths64& Out) {
  TPath64 piece;
  auto flush = [&] {
    if (piece.size() >= 2) Out.push_back(std::move(piece));
    piece.clear();
  };
  for (std::size_t i = 0; i + 1 < Path.size(); ++i) {
    const TPoint64& p = Path[i];
    const TPoint64& q = Path[i + 1];
    if (p == q) continue;
    long double t0, t1;
    if (!ClipSegment(p, q, R, t0, t1)) {
      flush();
      continue;
    }
    auto at = [&](long double t) {
      if (t <= 0) return p;
      if (t >= 1) return q;
      return TPoint64(RoundL(static_cast<long double>(p.X) + t * static_cast<long double>(q.X - p.X)),
                      RoundL(static_cast<long double>(p.Y) + t * static_cast<long double>(q.Y - p.Y)));
    };
    const TPoint64 a = at(t0), b = at(t1);
    if (!(t0 <= 0 && !piece.empty() && piece.back() == a)) {
      flush();
      piece.push_back(a);
    }
    if (b != piece.back()) piece.push_back(b);
    if (t1 < 1) flush();
  }
  flush();
}

}  // namespace

TPaths64 TRectClip64::Execute(const TPaths64& Paths) const {
  TPaths64 out;
  if (RectEmpty(FRect)) return out;
  for (const TPath64& p : Paths) ClipClosed(p, FRect, out);
  return out;
}

TPaths64 TRectClipLines64::Execute(const TPaths64& Paths) const {
  TPaths64 out;
  if (RectEmpty(FRect)) return out;
  for (const TPath64& p : Paths) ClipOpen(p, FRect, out);
  return out;
}

// ---- TrimCollinear / SimplifyPath ---------------------------------------------------------

TPath64 TrimCollinear(const TPath64& Path, bool IsOpenPath) {
  TPath64 out;
  out.reserve(Path.size());
  for (const TPoint64& p : Path) {
    while (out.size() >= 2 && CrossProduct64(out[out.size() - 2], out.back(), p) == 0) out.pop_back();
    // A spike that came back to the last kept vertex adds nothing.
    if (!out.empty() && out.back() == p) continue;
    out.push_back(p);
  }
  if (IsOpenPath) return out;
  // Closed: the joins around the first vertex too.
  bool changed = true;
  while (changed && out.size() >= 3) {
    changed = false;
    if (out.back() == out.front() || CrossProduct64(out[out.size() - 2], out.back(), out.front()) == 0) {
      out.pop_back();
      changed = true;
    } else if (CrossProduct64(out.back(), out.front(), out[1]) == 0) {
      out.erase(out.begin());
      changed = true;
    }
  }
  if (out.size() < 3) out.clear();
  return out;
}

namespace {

// Squared distance of B from the line through A and C (from A when A and C coincide).
double LineDistSq(const TPoint64& A, const TPoint64& B, const TPoint64& C) {
  const double dx = static_cast<double>(C.X - A.X), dy = static_cast<double>(C.Y - A.Y);
  const double bx = static_cast<double>(B.X - A.X), by = static_cast<double>(B.Y - A.Y);
  const double len = dx * dx + dy * dy;
  if (len == 0.0) return bx * bx + by * by;
  const double cr = static_cast<double>(CrossProduct64(A, B, C));
  return cr * cr / len;
}

}  // namespace

TPath64 SimplifyPath(const TPath64& Path, double ShapeTolerance, bool IsClosedPath) {
  const std::size_t n = Path.size();
  if (n < (IsClosedPath ? 4u : 3u)) return Path;
  const double epsSq = ShapeTolerance * ShapeTolerance;
  constexpr double kKeep = std::numeric_limits<double>::infinity();
  std::vector<std::size_t> prev(n), next(n);
  for (std::size_t i = 0; i < n; ++i) {
    prev[i] = (i + n - 1) % n;
    next[i] = (i + 1) % n;
  }
  std::vector<double> dist(n);
  std::vector<bool> removed(n, false);
  auto measure = [&](std::size_t i) {
    if (!IsClosedPath && (i == 0 || i == n - 1)) return kKeep;
    return LineDistSq(Path[prev[i]], Path[i], Path[next[i]]);
  };
  using TItem = std::pair<double, std::size_t>;
  std::priority_queue<TItem, std::vector<TItem>, std::greater<TItem>> heap;
  for (std::size_t i = 0; i < n; ++i) {
    dist[i] = measure(i);
    heap.emplace(dist[i], i);
  }
  std::size_t count = n;
  while (!heap.empty()) {
    const auto [d, i] = heap.top();
    heap.pop();
    if (removed[i] || d != dist[i]) continue;  // stale entry
    if (!(d < epsSq)) break;
    if (IsClosedPath && count <= 3) return TPath64();
    removed[i] = true;
    --count;
    const std::size_t a = prev[i], c = next[i];
    next[a] = c;
    prev[c] = a;
    for (std::size_t j : {a, c}) {
      dist[j] = measure(j);
      heap.emplace(dist[j], j);
    }
  }
  TPath64 out;
  out.reserve(count);
  for (std::size_t i = 0; i < n; ++i)
    if (!removed[i]) out.push_back(Path[i]);
  return out;
}

TPaths64 SimplifyPaths(const TPaths64& Paths, double ShapeTolerance, bool IsClosedPaths) {
  return internal::MapPaths(Paths, [&](const TPath64& p) { return SimplifyPath(p, ShapeTolerance, IsClosedPaths); });
}

}  // namespace orvane::Clipper2
