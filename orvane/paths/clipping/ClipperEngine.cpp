#include "orvane/paths/clipping/ClipperEngine.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/internal/Orientation.h"

namespace orvane::internal {

const char* const SOpenPathsMustBeSubject = "AddPath: Open paths must be subject.";
const char* const SCoordinateRange = "Coordinate exceeds range bounds";
const char* const SPolyTreeNeeded = "Error: TPolyTree struct is needed for open path clipping.";

ClipperLib::Paths ToEngine(const TPaths64& Paths) {
  ClipperLib::Paths out(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i) ToEngine(Paths[i], out[i]);
  return out;
}

void FromEngine(const ClipperLib::Paths& Paths, TPaths64& Out) {
  Out.resize(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i) FromEngine(Paths[i], Out[i]);
}

ClipperLib::ClipType ToEngine(TClipType Value) {
  switch (Value) {
    case TClipType::ctIntersection: return ClipperLib::ctIntersection;
    case TClipType::ctUnion: return ClipperLib::ctUnion;
    case TClipType::ctDifference: return ClipperLib::ctDifference;
    case TClipType::ctXor: return ClipperLib::ctXor;
    case TClipType::ctNone: break;
  }
  throw EParamError("[Error] Clipper.Execute: 参数错误");
}

ClipperLib::PolyFillType ToEngine(TFillRule Value) {
  switch (Value) {
    case TFillRule::frEvenOdd: return ClipperLib::pftEvenOdd;
    case TFillRule::frNonZero: return ClipperLib::pftNonZero;
    case TFillRule::frPositive: return ClipperLib::pftPositive;
    case TFillRule::frNegative: return ClipperLib::pftNegative;
  }
  throw EParamError("[Error] Clipper.Execute: 参数错误");
}

ClipperLib::EndType ToEngine(TEndType Value) {
  switch (Value) {
    case TEndType::etPolygon: return ClipperLib::etClosedPolygon;
    case TEndType::etJoined: return ClipperLib::etClosedLine;
    case TEndType::etButt: return ClipperLib::etOpenButt;
    case TEndType::etSquare: return ClipperLib::etOpenSquare;
    case TEndType::etRound: return ClipperLib::etOpenRound;
  }
  throw EParamError("[Error] ClipperOffset.AddPath: 参数错误");
}

void CheckRange(const TPath64& Path) {
  constexpr std::int64_t hi = Clipper::HiRange;
  bool bad = false;
  for (const TPoint64& p : Path) bad |= (p.X > hi) | (p.X < -hi) | (p.Y > hi) | (p.Y < -hi);
  if (bad) throw Exception(SCoordinateRange);
}

void CheckRange(const TPaths64& Paths) {
  for (const TPath64& p : Paths) CheckRange(p);
}

[[noreturn]] void RaiseEngineError(const std::exception& E) {
  const std::string text = E.what();
  if (text == "Coordinate outside allowed range") throw Exception(SCoordinateRange);
  throw Exception(text);
}

// ---- TEngineClipper ----------------------------------------------------------------------

void TEngineClipper::Clear() {
  Engine.Clear();
  Kept.clear();
  KeptPoints.clear();
  Records.clear();
  PathCount = 0;
  HasOpenPaths = false;
}

bool TEngineClipper::AddPath(const TPath64& Path, TPathType Type, bool Closed) {
  if (!Closed && Type == TPathType::ptClip) throw Exception(SOpenPathsMustBeSubject);
  CheckRange(Path);
  return AddChecked(Path, Type, Closed);
}

bool TEngineClipper::AddChecked(const TPath64& Path, TPathType Type, bool Closed) {
  ToEngine(Path, Scratch);
  bool added;
  try {
    added = Engine.AddPath(Scratch, ToEngine(Type), Closed);
  } catch (const ClipperLib::clipperException& e) {
    RaiseEngineError(e);
  }
  const int ordinal = PathCount++;
  if (added) {
    if (!Closed) {
      HasOpenPaths = true;
    } else {
      Kept.push_back(TKeptPath{KeptPoints.size(), Scratch.size(), Type, ordinal});
      KeptPoints.insert(KeptPoints.end(), Scratch.begin(), Scratch.end());
    }
  }
  return added;
}

bool TEngineClipper::AddPaths(const TPaths64& Paths, TPathType Type, bool Closed) {
  if (!Closed && Type == TPathType::ptClip && !Paths.empty()) throw Exception(SOpenPathsMustBeSubject);
  CheckRange(Paths);
  if (Closed) {
    std::size_t points = 0;
    for (const TPath64& p : Paths) points += p.size();
    // Grow once for the whole list, but never below doubling (many small lists stay linear).
    auto grow = [](auto& List, std::size_t Extra) {
      if (List.size() + Extra > List.capacity()) List.reserve(std::max(List.size() + Extra, 2 * List.capacity()));
    };
    grow(KeptPoints, points);
    grow(Kept, Paths.size());
  }
  bool any = false;
  for (const TPath64& p : Paths) any |= AddChecked(p, Type, Closed);
  return any;
}

bool TEngineClipper::ExecutePaths(TClipType ClipType, ClipperLib::Paths& Solution, TFillRule SubjFill,
                                  TFillRule ClipFill) {
  Solution.clear();
  if (Locked) return false;
  if (HasOpenPaths) throw Exception(SPolyTreeNeeded);
  return RunLocked(ClipType, Solution, SubjFill, ClipFill);
}

bool TEngineClipper::ExecuteTree(TClipType ClipType, ClipperLib::PolyTree& Solution, TFillRule SubjFill,
                                 TFillRule ClipFill) {
  if (Locked) return false;
  if (ClipType == TClipType::ctNone) Solution.Clear();
  return RunLocked(ClipType, Solution, SubjFill, ClipFill);
}

template <class TSolution>
bool TEngineClipper::RunLocked(TClipType ClipType, TSolution& Solution, TFillRule SubjFill, TFillRule ClipFill) {
  // The engine refuses re-entry; the lock is released on every way out.
  Locked = true;
  bool ok = true;
  try {
    if (StoreIntersection) RecordIntersections();
    if (ClipType != TClipType::ctNone)
      ok = Engine.Execute(ToEngine(ClipType), Solution, ToEngine(SubjFill), ToEngine(ClipFill));
  } catch (const ClipperLib::clipperException& e) {
    Locked = false;
    RaiseEngineError(e);
  } catch (...) {
    Locked = false;
    throw;
  }
  Locked = false;
  return ok;
}

void TEngineClipper::RecordIntersections() {
  Records.clear();
  if (Records.capacity() < 20000) Records.reserve(20000);
  CollectContacts(KeptPoints, Kept, AllIntersection, Records);
}

// ---- Intersection pass -----------------------------------------------------------------

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

void CollectContacts(const std::vector<ClipperLib::IntPoint>& Points,
                     const std::vector<TEngineClipper::TKeptPath>& Paths, bool AllIntersection,
                     std::vector<Clipper::TIntersectRecord>& Records) {
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

// ---- Offsetting ----------------------------------------------------------------------------

void EngineUnion(const ClipperLib::Paths& Paths, ClipperLib::PolyFillType Fill, ClipperLib::Paths& Out) {
  ClipperLib::Clipper c;
  c.AddPaths(Paths, ClipperLib::ptSubject, true);
  c.Execute(ClipperLib::ctUnion, Out, Fill, Fill);
}

namespace {

struct TUnit {
  double X, Y;
};

ClipperLib::IntPoint At(const ClipperLib::IntPoint& P, double DX, double DY) {
  return ClipperLib::IntPoint(static_cast<ClipperLib::cInt>(Round(static_cast<double>(P.X) + DX)),
                              static_cast<ClipperLib::cInt>(Round(static_cast<double>(P.Y) + DY)));
}

// Right-hand unit normal of the edge A -> B.
TUnit Normal(const ClipperLib::IntPoint& A, const ClipperLib::IntPoint& B) {
  const double dx = static_cast<double>(B.X - A.X);
  const double dy = static_cast<double>(B.Y - A.Y);
  const double len = std::hypot(dx, dy);
  return TUnit{dy / len, -dx / len};
}

// The offset vertices at P between the edge with normal NK and the next with normal NJ.
// Convex corners (seen from the offset side) get a bevel: just the two offset end points.
// Concave ones go back through P so that the loop they form winds the right way.
void BevelJoin(const ClipperLib::IntPoint& P, const TUnit& NK, const TUnit& NJ, double Delta, ClipperLib::Path& Out) {
  const double sinA = NK.X * NJ.Y - NJ.X * NK.Y;
  const double cosA = NK.X * NJ.X + NK.Y * NJ.Y;
  Out.push_back(At(P, NK.X * Delta, NK.Y * Delta));
  if (sinA * Delta < 0) {
    Out.push_back(P);
  } else if (std::fabs(sinA * Delta) < 1.0 && cosA > 0) {
    return;  // nearly straight on: one vertex is enough
  }
  Out.push_back(At(P, NJ.X * Delta, NJ.Y * Delta));
}

ClipperLib::Path Dedupe(const ClipperLib::Path& Path, bool Closed) {
  ClipperLib::Path out;
  out.reserve(Path.size());
  for (const ClipperLib::IntPoint& p : Path)
    if (out.empty() || !(out.back() == p)) out.push_back(p);
  if (Closed)
    while (out.size() > 1 && out.back() == out.front()) out.pop_back();
  return out;
}

ClipperLib::Path RawClosed(const ClipperLib::Path& Q, double Delta) {
  const std::size_t n = Q.size();
  std::vector<TUnit> normals(n);
  for (std::size_t i = 0; i < n; ++i) normals[i] = Normal(Q[i], Q[(i + 1) % n]);
  ClipperLib::Path out;
  out.reserve(n * 3);
  for (std::size_t j = 0; j < n; ++j) BevelJoin(Q[j], normals[(j + n - 1) % n], normals[j], Delta, out);
  return out;
}

double ArcStep(double Delta, double ArcTolerance) {
  double tol = ArcTolerance <= 0 ? 0.25 : ArcTolerance;
  tol = std::min(tol, std::fabs(Delta) * 0.25);
  return 2.0 * std::acos(1.0 - tol / std::fabs(Delta));
}

// The cap at P from P + N * Delta round to P - N * Delta, with D the direction leaving P.
void Cap(const ClipperLib::IntPoint& P, const TUnit& N, const TUnit& D, double Delta, TEndType End, double ArcTolerance,
         ClipperLib::Path& Out) {
  if (End == TEndType::etSquare) {
    Out.push_back(At(P, (N.X + D.X) * Delta, (N.Y + D.Y) * Delta));
    Out.push_back(At(P, (D.X - N.X) * Delta, (D.Y - N.Y) * Delta));
  } else if (End == TEndType::etRound) {
    const int steps = std::max(1, static_cast<int>(std::ceil(std::numbers::pi / ArcStep(Delta, ArcTolerance))));
    for (int k = 1; k < steps; ++k) {
      const double a = std::numbers::pi * k / steps;
      const double c = std::cos(a), s = std::sin(a);
      // N turned anticlockwise by a: N at a = 0, D at pi / 2, -N at pi.
      Out.push_back(At(P, (N.X * c - N.Y * s) * Delta, (N.X * s + N.Y * c) * Delta));
    }
  }
}

ClipperLib::Path RawOpen(const ClipperLib::Path& Q, double Delta, TEndType End, double ArcTolerance) {
  const std::size_t m = Q.size();
  std::vector<TUnit> normals(m - 1);
  for (std::size_t i = 0; i + 1 < m; ++i) normals[i] = Normal(Q[i], Q[i + 1]);
  auto neg = [](const TUnit& u) { return TUnit{-u.X, -u.Y}; };
  ClipperLib::Path out;
  out.reserve(m * 6 + 8);
  out.push_back(At(Q[0], normals[0].X * Delta, normals[0].Y * Delta));
  for (std::size_t j = 1; j + 1 < m; ++j) BevelJoin(Q[j], normals[j - 1], normals[j], Delta, out);
  const TUnit& nl = normals[m - 2];
  out.push_back(At(Q[m - 1], nl.X * Delta, nl.Y * Delta));
  Cap(Q[m - 1], nl, TUnit{-nl.Y, nl.X}, Delta, End, ArcTolerance, out);
  out.push_back(At(Q[m - 1], -nl.X * Delta, -nl.Y * Delta));
  for (std::size_t j = m - 2; j >= 1; --j) BevelJoin(Q[j], neg(normals[j]), neg(normals[j - 1]), Delta, out);
  const TUnit n0 = neg(normals[0]);
  out.push_back(At(Q[0], n0.X * Delta, n0.Y * Delta));
  Cap(Q[0], n0, TUnit{-n0.Y, n0.X}, Delta, End, ArcTolerance, out);
  return out;
}

}  // namespace

void TOffsetJob::Add(const TPath64& Path, TJoinType Join, TEndType End) {
  CheckRange(Path);
  Groups.push_back(TGroup{ToEngine(Path), Join, End});
}

bool TOffsetJob::HasBevel() const {
  return std::any_of(Groups.begin(), Groups.end(), [](const TGroup& g) { return g.Join == TJoinType::jtBevel; });
}

// The engine's join for our own; jtBevel paths reach the engine only as single points (or at
// offsets too small for joins to matter), where squaring them off is the same.
static ClipperLib::JoinType EngineJoin(TJoinType Join) {
  switch (Join) {
    case TJoinType::jtMiter: return ClipperLib::jtMiter;
    case TJoinType::jtRound: return ClipperLib::jtRound;
    case TJoinType::jtSquare:
    case TJoinType::jtBevel: break;
  }
  return ClipperLib::jtSquare;
}

// Whether the bevel construction handles this path, or the engine does (single points, and
// everything when the offset is too small for joins to matter).
static bool BevelBuilt(const ClipperLib::Path& Deduped, TEndType End, double Delta) {
  if (std::fabs(Delta) < 0.5) return false;
  return End == TEndType::etPolygon ? Deduped.size() >= 3 : Deduped.size() >= 2;
}

void TOffsetJob::EngineOffset(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Out) const {
  ClipperLib::ClipperOffset co(MiterLimit, ArcTolerance);
  bool any = false;
  for (const TGroup& g : Groups) {
    if (g.Join == TJoinType::jtBevel &&
        BevelBuilt(Dedupe(g.Path, g.End == TEndType::etPolygon || g.End == TEndType::etJoined), g.End, Delta))
      continue;
    co.AddPath(g.Path, EngineJoin(g.Join), ToEngine(g.End));
    any = true;
  }
  Out.clear();
  if (any) co.Execute(Out, Delta);
}

void TOffsetJob::BevelOffset(double Delta, double ArcTolerance, ClipperLib::Paths& Out) const {
  Out.clear();
  ClipperLib::Paths polygons, lines;
  std::vector<TEndType> lineEnds;
  for (const TGroup& g : Groups) {
    if (g.Join != TJoinType::jtBevel) continue;
    const bool closed = g.End == TEndType::etPolygon || g.End == TEndType::etJoined;
    ClipperLib::Path q = Dedupe(g.Path, closed);
    if (!BevelBuilt(q, g.End, Delta)) continue;
    if (g.End == TEndType::etPolygon) {
      polygons.push_back(std::move(q));
    } else {
      lines.push_back(std::move(q));
      lineEnds.push_back(g.End);
    }
  }
  // Polygons keep holes as holes: when the path with the lowest vertex (an outer one) runs
  // clockwise, all polygons are turned round.
  if (!polygons.empty()) {
    std::size_t lowest = 0;
    ClipperLib::IntPoint low = polygons[0][0];
    for (std::size_t i = 0; i < polygons.size(); ++i)
      for (const ClipperLib::IntPoint& p : polygons[i])
        if (p.Y < low.Y || (p.Y == low.Y && p.X < low.X)) {
          low = p;
          lowest = i;
        }
    if (!ClipperLib::Orientation(polygons[lowest]))
      for (ClipperLib::Path& p : polygons) std::reverse(p.begin(), p.end());
  }
  if (Delta > 0) {
    ClipperLib::Paths raw;
    for (const ClipperLib::Path& p : polygons) raw.push_back(RawClosed(p, Delta));
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lineEnds[i] == TEndType::etJoined) {
        raw.push_back(RawClosed(lines[i], Delta));
        ClipperLib::Path r(lines[i].rbegin(), lines[i].rend());
        raw.push_back(RawClosed(r, Delta));
      } else {
        raw.push_back(RawOpen(lines[i], Delta, lineEnds[i], ArcTolerance));
      }
    }
    if (!raw.empty()) EngineUnion(raw, ClipperLib::pftPositive, Out);
    return;
  }
  // Shrinking: the polygons' region less the band of width |Delta| along their outlines.
  // Open and joined paths vanish, as the engine lets them.
  if (polygons.empty()) return;
  const double d = -Delta;
  ClipperLib::Paths region, band, raw;
  EngineUnion(polygons, ClipperLib::pftPositive, region);
  for (const ClipperLib::Path& p : polygons) {
    raw.push_back(RawClosed(p, d));
    ClipperLib::Path r(p.rbegin(), p.rend());
    raw.push_back(RawClosed(r, d));
  }
  EngineUnion(raw, ClipperLib::pftPositive, band);
  ClipperLib::Clipper c;
  c.AddPaths(region, ClipperLib::ptSubject, true);
  c.AddPaths(band, ClipperLib::ptClip, true);
  c.Execute(ClipperLib::ctDifference, Out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
}

double TOffsetJob::Prepare(double Delta, double ArcTolerance) const {
  CheckFinite(Delta, "TClipperOffset.Execute", "Delta");
  // Every offset point must stay inside the engine's range.
  const double grow = std::ceil(std::fabs(Delta));
  const std::int64_t reach =
      grow >= static_cast<double>(Clipper::HiRange) ? -1 : Clipper::HiRange - static_cast<std::int64_t>(grow);
  for (const TGroup& g : Groups)
    for (const ClipperLib::IntPoint& p : g.Path)
      if (p.X > reach || p.X < -reach || p.Y > reach || p.Y < -reach) throw Exception(SCoordinateRange);
  // Arcs finer than a millionth of the offset only multiply vertices (and a vanishing
  // tolerance would make their number unbounded).
  if (ArcTolerance > 0) return std::max(ArcTolerance, std::fabs(Delta) * 1e-6);
  return 0.0;  // the engine's default
}

void TOffsetJob::Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Solution) const {
  Solution.clear();
  ArcTolerance = Prepare(Delta, ArcTolerance);
  if (!HasBevel()) {
    ClipperLib::ClipperOffset co(MiterLimit, ArcTolerance);
    for (const TGroup& g : Groups) co.AddPath(g.Path, EngineJoin(g.Join), ToEngine(g.End));
    co.Execute(Solution, Delta);
    return;
  }
  ClipperLib::Paths fromEngine, fromBevel;
  EngineOffset(Delta, MiterLimit, ArcTolerance, fromEngine);
  BevelOffset(Delta, ArcTolerance, fromBevel);
  if (fromEngine.empty()) {
    Solution = std::move(fromBevel);
  } else if (fromBevel.empty()) {
    Solution = std::move(fromEngine);
  } else {
    fromEngine.insert(fromEngine.end(), fromBevel.begin(), fromBevel.end());
    EngineUnion(fromEngine, ClipperLib::pftNonZero, Solution);
  }
}

void TOffsetJob::Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::PolyTree& Solution) const {
  ArcTolerance = Prepare(Delta, ArcTolerance);
  if (!HasBevel()) {
    ClipperLib::ClipperOffset co(MiterLimit, ArcTolerance);
    for (const TGroup& g : Groups) co.AddPath(g.Path, EngineJoin(g.Join), ToEngine(g.End));
    co.Execute(Solution, Delta);
    return;
  }
  ClipperLib::Paths paths;
  Execute(Delta, MiterLimit, ArcTolerance, paths);
  ClipperLib::Clipper c;
  c.AddPaths(paths, ClipperLib::ptSubject, true);
  c.Execute(ClipperLib::ctUnion, Solution, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
}

}  // namespace orvane::internal
