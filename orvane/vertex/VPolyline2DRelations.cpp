// TVPolyline2D: crossings with points, segments and other polylines, the self-intersection
// test and the local shape of corners.

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/PointL2D.h"
#include "orvane/spatial/RTree.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/internal/SelfCrossing.h"

namespace orvane {

namespace {

// The sine below which the segment tests take two segments as parallel.
constexpr double ParallelTol = 1e-9;
// The fan-out of the segment indexes.
constexpr int IndexNodeSize = 8;
// Consecutive segments that the self-intersection test indexes as one entry.
constexpr int SelfRunLength = 16;
// Relative size of the rounding that the exact tests may commit, against which the quick
// rejections below keep a margin: a few hundred units in the last place.
constexpr double RoundingSlack = 1e-13;

constexpr int Ordinal(TShapeRelation R) { return static_cast<int>(R); }

double AbsMax(const TRect2D& B) {
  return std::max(std::max(std::fabs(B.XMin), std::fabs(B.XMax)), std::max(std::fabs(B.YMin), std::fabs(B.YMax)));
}

// False only when TLine2D::RelationWithSegLine(Tol, PTol) of two segments with these boxes
// is sure to find nothing. Whatever it reports lies within 2 Tol of both segments, apart from
// the drift of a pair it takes as parallel, at most PTol times a length; a box's width plus
// height bounds the length of its segment.
bool MayMeet(const TRect2D& A, const TRect2D& B, double Tol, double PTol) {
  // A negative tolerance only makes the exact test stricter.
  const double reach = 2.0 * std::max(Tol, 0.0) + PTol * (A.Width() + A.Height() + B.Width() + B.Height()) +
                       RoundingSlack * std::max(AbsMax(A), AbsMax(B));
  const double gapX = std::max(B.XMin - A.XMax, A.XMin - B.XMax);
  const double gapY = std::max(B.YMin - A.YMax, A.YMin - B.YMax);
  // Written so that a NaN anywhere keeps the pair for the exact test.
  return !(gapX > reach) && !(gapY > reach);
}

// True when both ends of Other lie strictly on one side of the line through Seg, farther
// than Tol from it: RelationWithSegLine(Seg, Other, Tol, ..) then finds nothing, for every
// common point it may report lies within Tol of Seg's line along a piece of Other's line
// that is at most Tol longer than Other. Scale bounds the coordinates, for the rounding
// margin.
bool ApartBySide(const TPoint2D& S1, const TPoint2D& S2, const TPoint2D& O1, const TPoint2D& O2, double Tol,
                 double Scale) {
  const TPoint2D a = S2 - S1;
  const double c1 = TPoint2DUtils::IsLeft(S1, S2, O1);
  const double c2 = TPoint2DUtils::IsLeft(S1, S2, O2);
  if (!((c1 > 0.0 && c2 > 0.0) || (c1 < 0.0 && c2 < 0.0))) return false;
  const double m = std::min(std::fabs(c1), std::fabs(c2));
  const double d = std::max(Tol, 0.0) + RoundingSlack * Scale;
  return m * m > d * d * a.MagSqr() * (1.0 + 1e-9);
}

// True when two segments that share the vertex between them cannot overlap: both are
// longer than Tol and they are not parallel within PTol, so RelationWithSegLine reports at
// most their common point.
bool NeighboursCannotOverlap(const TPoint2D& A1, const TPoint2D& A2, const TPoint2D& B1, const TPoint2D& B2, double Tol,
                             double PTol) {
  const TPoint2D a = A2 - A1;
  const TPoint2D b = B2 - B1;
  const double la2 = a.MagSqr();
  const double lb2 = b.MagSqr();
  const double t2 = Tol > 0.0 ? Tol * Tol * (1.0 + 1e-9) : 0.0;
  if (!(la2 > t2) || !(lb2 > t2)) return false;
  const double c = a.CrossMul(b);
  return c * c > PTol * PTol * la2 * lb2 * (1.0 + 1e-9);
}

}  // namespace

// Point relation ------------------------------------------------------------------------

int TVPolyline2D::RelationWithPoint(const TPoint2D& Pt, double Tol) const {
  const int n = Count();
  if (n == 0) return Ordinal(TShapeRelation::srOut);
  const double x = Pt.X;
  const double y = Pt.Y;
  // An edge that lies wholly above or wholly below the band |Y - Pt.Y| <= reach can neither
  // hold Pt nor pass its height, so only the edges that meet the band are examined. The
  // reach is Tol widened to cover rounding, relative to |Pt.Y| + |d| for a vertex at height
  // difference d, which bounds the vertex's own |Y|.
  const double tol = Tol > 0.0 ? Tol : 0.0;
  const double reach = (tol + 2.0 * RoundingSlack * std::fabs(y)) / (1.0 - RoundingSlack);
  const double above = y + reach;
  const double below = y - reach;
  const TPoint2D* v = FItems.data();
  auto sideOf = [&](const TPoint2D& P) {
    return static_cast<unsigned>(P.Y > above) | (static_cast<unsigned>(P.Y < below) << 1);
  };
  bool inside = false;
  unsigned prevSide = sideOf(v[n - 1]);
  for (int j = 0, prev = n - 1; j < n; prev = j++) {
    const unsigned curSide = sideOf(v[j]);
    const bool apart = (prevSide & curSide) != 0;
    prevSide = curSide;
    if (apart) continue;
    const TPoint2D& p = v[prev];
    const TPoint2D& q = v[j];
    const double rx = tol + RoundingSlack * (std::fabs(x) + std::fabs(p.X) + std::fabs(q.X));
    if (x >= std::min(p.X, q.X) - rx && x <= std::max(p.X, q.X) + rx) {
      if (TLine2D(p, q).IsOn(Pt, Tol) || Pt.Equals(p, Tol) || Pt.Equals(q, Tol)) {
        return Ordinal(TShapeRelation::srOn);
      }
    }
    // Above is strict, so a ray through a vertex counts once.
    if ((p.Y > y) != (q.Y > y)) {
      const bool pRight = p.X > x;
      const bool qRight = q.X > x;
      if (pRight && qRight) {
        inside = !inside;
      } else if (pRight != qRight && TLine2D(p, q).PointAtY(y).X > x) {
        inside = !inside;
      }
    }
  }
  return Ordinal(inside ? TShapeRelation::srIn : TShapeRelation::srOut);
}

int TVPolyline2D::RelationWithPoint(const TPoint2D& Pt, const TGeTolerance& Tol) const {
  return RelationWithPoint(Pt, Tol.PointTol);
}

// Crossing with a segment ---------------------------------------------------------------

void TVPolyline2D::RemoveDuplicate(TList<double>& Params) {
  // Each value against its neighbour in the sorted list, from the back, so that deleting
  // one leaves the comparisons still to come as they were.
  for (int i = Params.Count() - 1; i >= 1; --i) {
    if (TMathUtils::FloatEquals(Params[i], Params[i - 1], DefaultTol)) Params.Delete(i);
  }
}

bool TVPolyline2D::IsPointParamInLineParams(double Param, const TList<TPair<double, double>>& LineParams) {
  for (const TPair<double, double>& stretch : LineParams) {
    if (TMathUtils::IsInRange(Param, stretch.Key, stretch.Value, true, true)) return true;
  }
  return false;
}

bool TVPolyline2D::CrossWith(const TLine2D& Line, TList<double>& CrossPoints, TList<TPair<double, double>>& CrossLines,
                             bool RemoveDuplicate, double Tol) const {
  const int n = Count();
  if (n == 0) return false;
  if (n == 1) {
    if (Line.IsOn(V(0), Tol)) CrossPoints.Add(Line.ParamOfPoint(V(0)));
    return CrossPoints.Count() > 0;
  }
  if (fEqual(Line.Length(), 0.0, DefaultTol)) {
    for (int i = 0; i + 1 < n; ++i) {
      if (TLine2D(V(i), V(i + 1)).IsOn(Line.P1, Tol)) {
        CrossPoints.Add(0.0);
        return true;
      }
    }
    return false;
  }

  const TRect2D lineBox = Line.GetBoundBox();
  for (int i = 0; i + 1 < n; ++i) {
    const TLine2D seg(V(i), V(i + 1));
    if (!MayMeet(lineBox, seg.GetBoundBox(), Tol, ParallelTol)) continue;
    TPoint2D a;
    TPoint2D b;
    const int r = Line.RelationWithSegLine(seg, a, b, Tol, ParallelTol);
    if (r == 1) {
      CrossPoints.Add(Line.ParamOfPoint(a));
    } else if (r == 2) {
      const double ta = Line.ParamOfPoint(a);
      const double tb = Line.ParamOfPoint(b);
      CrossLines.Add({std::min(ta, tb), std::max(ta, tb)});
    }
  }

  CrossPoints.Sort();
  CrossLines.Sort([](const TPair<double, double>& A, const TPair<double, double>& B) {
    return A.Key < B.Key ? -1 : (B.Key < A.Key ? 1 : 0);
  });
  TVPolyline2D::RemoveDuplicate(CrossPoints);
  if (RemoveDuplicate) {
    std::vector<double> kept;
    kept.reserve(static_cast<std::size_t>(CrossPoints.Count()));
    for (double t : CrossPoints) {
      if (!IsPointParamInLineParams(t, CrossLines)) kept.push_back(t);
    }
    if (static_cast<int>(kept.size()) != CrossPoints.Count()) {
      CrossPoints.Clear();
      CrossPoints.AddRange(kept);
    }
  }
  return CrossPoints.Count() > 0 || CrossLines.Count() > 0;
}

bool TVPolyline2D::CrossWith(const TLine2D& Line, TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                             bool RemoveDuplicate) const {
  TList<double> params;
  TList<TPair<double, double>> stretches;
  const bool found = CrossWith(Line, params, stretches, RemoveDuplicate, DefaultTol);
  for (double t : params) CrossPts.Add(Line.EvalPoint(t));
  for (const TPair<double, double>& s : stretches) CrossLines.Add({Line.EvalPoint(s.Key), Line.EvalPoint(s.Value)});
  return found;
}

TNullable<TPoint2D> TVPolyline2D::CrossWithLastPt(const TLine2D& Segline) const {
  TList<double> params;
  TList<TPair<double, double>> stretches;
  if (!CrossWith(Segline, params, stretches, false, DefaultTol)) return {};
  double t = 0.0;
  if (params.Count() > 0 && stretches.Count() > 0) {
    t = std::max(params.Last(), stretches.Last().Value);
  } else if (params.Count() > 0) {
    t = params.Last();
  } else {
    t = stretches.Last().Value;
  }
  return {true, Segline.EvalPoint(t)};
}

// Crossing with a polyline --------------------------------------------------------------

void TVPolyline2D::CrossWith(const TVPolyline2D& Polyline, TList<TPoint2D>& CrossPoints,
                             TList<TLine2D>& CrossLines) const {
  const bool indexThis = Count() >= Polyline.Count();
  const TVPolyline2D& indexed = indexThis ? *this : Polyline;
  const TVPolyline2D& other = indexThis ? Polyline : *this;
  if (indexed.Count() < 2 || other.Count() < 2) return;
  internal::CheckFiniteVertices(FItems, "TVPolyline2D.CrossWith");
  internal::CheckFiniteVertices(Polyline.FItems, "TVPolyline2D.CrossWith");

  // Built by insertion in segment order, so that the candidates of each query, and with
  // them the order of the reported crossings, do not depend on how a bulk load packs.
  TRTree<int> index(IndexNodeSize);
  for (int i = 0; i + 1 < indexed.Count(); ++i) {
    const TLine2D seg(indexed.V(i), indexed.V(i + 1));
    if (seg.Length() > 0.0) index.Insert(i, seg.GetBoundBox());
  }

  // Crossings that agree after rounding to multiples of 1e-6 are one crossing.
  std::unordered_set<TPointL2D> seen;
  std::vector<int> hits;
  for (int k = 0; k + 1 < other.Count(); ++k) {
    const TLine2D query(other.V(k), other.V(k + 1));
    if (!(query.Length() > 0.0)) continue;
    hits.clear();
    index.Search(query.GetBoundBox(), hits, DefaultTol);
    for (int j : hits) {
      TPoint2D a;
      TPoint2D b;
      const int r = query.RelationWithSegLine(TLine2D(indexed.V(j), indexed.V(j + 1)), a, b, DefaultTol, ParallelTol);
      if (r == 1) {
        if (seen.insert(TPointL2D(a / DefaultTol)).second) CrossPoints.Add(a);
      } else if (r == 2) {
        CrossLines.Add({a, b});
      }
    }
  }
}

bool TVPolyline2D::IsCrossWith(const TVPolyline2D& Polyline) const {
  const int n = Count();
  const int m = Polyline.Count();
  if (n < 2 || m < 2) return false;
  const TRect2D boxThis = BoundBox();
  const TRect2D boxOther = Polyline.BoundBox();
  if (!boxThis.Intersect(boxOther).IsValid()) return false;

  // Every pair of segments is a candidate; the boxes only spare the exact test for pairs
  // that cannot meet. A segment that cannot meet the other polyline's box meets none of its
  // segments, so each side is first cut down to the segments near the other.
  struct TSeg {
    TLine2D Line;
    TRect2D Box;
  };
  auto nearSegments = [](const TVPolyline2D& Poly, const TRect2D& Box) {
    std::vector<TSeg> segs;
    for (int i = 0; i + 1 < Poly.Count(); ++i) {
      const TLine2D line(Poly.V(i), Poly.V(i + 1));
      const TRect2D box = line.GetBoundBox();
      if (MayMeet(box, Box, DefaultTol, ParallelTol)) segs.push_back({line, box});
    }
    return segs;
  };
  const std::vector<TSeg> mine = nearSegments(*this, boxOther);
  const std::vector<TSeg> theirs = nearSegments(Polyline, boxThis);
  for (const TSeg& s : mine) {
    for (const TSeg& t : theirs) {
      if (!MayMeet(s.Box, t.Box, DefaultTol, ParallelTol)) continue;
      TPoint2D a;
      TPoint2D b;
      if (s.Line.RelationWithSegLine(t.Line, a, b, DefaultTol, ParallelTol) != 0) return true;
    }
  }
  return false;
}

namespace {

// The pairs of segments that IsSelfIntersect decides, and how it decides each: segments I
// and J < I count when their boxes meet within AbsTol and the exact test finds a meeting
// other than the vertex of neighbours or the seam of a closed polyline.
class TSelfPairs {
 public:
  TSelfPairs(std::span<const TPoint2D> P, bool Closing, double AbsTol)
      : v(P.data()), last(static_cast<int>(P.size())), n(last + (Closing ? 1 : 0)), tol(AbsTol) {
    for (const TPoint2D& p : P) scale = std::max(scale, std::max(std::fabs(p.X), std::fabs(p.Y)));
  }

  int Segments() const { return n - 1; }
  // Vertex K; with a closing segment, the vertex after the last is the first again.
  const TPoint2D& V(int K) const { return v[K < last ? K : 0]; }
  TRect2D Box(int K) const {
    const TPoint2D& a = V(K);
    const TPoint2D& b = V(K + 1);
    return {std::min(a.X, b.X), std::min(a.Y, b.Y), std::max(a.X, b.X), std::max(a.Y, b.Y)};
  }
  // The index's own test of a box against a query region within AbsTol (a NaN meets
  // nothing); symmetric in its two boxes.
  bool Meets(const TRect2D& B, const TRect2D& R) const {
    return (R.XMin - B.XMax <= tol) & (B.XMin - R.XMax <= tol) & (R.YMin - B.YMax <= tol) & (B.YMin - R.YMax <= tol);
  }
  // Whether segments I and J < I, whose boxes meet, meet in a way that counts.
  bool Crosses(int I, int J) const {
    const TPoint2D& a1 = V(I);
    const TPoint2D& a2 = V(I + 1);
    const TPoint2D& b1 = V(J);
    const TPoint2D& b2 = V(J + 1);
    // Quick answers for the common cases in which the exact test would find nothing that
    // counts: a neighbour meeting at an angle, and a segment wholly to one side.
    if (J == I - 1) {
      if (NeighboursCannotOverlap(a1, a2, b1, b2, tol, ParallelTol)) return false;
    } else if (ApartBySide(a1, a2, b1, b2, tol, scale)) {
      return false;
    }
    TPoint2D p;
    TPoint2D q;
    const int r = TLine2D(a1, a2).RelationWithSegLine(TLine2D(b1, b2), p, q, tol, ParallelTol);
    if (r == 2) return true;
    if (r != 1 || I - J == 1) return false;
    // The last segment meeting the first: only the seam of a closed polyline is allowed.
    if (I == n - 2 && J == 0) return !(p.Equals(V(0), tol) && p.Equals(V(n - 1), tol));
    return true;
  }

 private:
  const TPoint2D* v;
  int last;
  int n;
  double tol;
  double scale = 0.0;
};

// The buffers of the thread's previous search, kept: readers test thousands of small rings
// in a row, and the allocations would cost as much as the search. Reached through a call,
// so that the thread's copy is looked up once per search, not at every use.
struct TSelfScratch {
  std::vector<TRect2D> Boxes;
  std::vector<TRect2D> RunBoxes;
  std::vector<int> Order;
  std::vector<int> Active;

  // What one very long polyline needed is not kept for the thread's lifetime.
  void Trim() {
    if (Boxes.capacity() <= std::size_t{1} << 14) return;
    std::vector<TRect2D>().swap(Boxes);
    std::vector<TRect2D>().swap(RunBoxes);
    std::vector<int>().swap(Order);
    std::vector<int>().swap(Active);
  }
};

[[gnu::noinline]] TSelfScratch& SelfScratch() {
  thread_local TSelfScratch scratch;
  return scratch;
}

// Up to this many segments, runs of SweepRunLength segments are paired by a sweep over the
// runs sorted by their left sides; beyond, runs of SelfRunLength through a tree of the
// runs' boxes. Short runs have tight boxes, which spares most tests of segment pairs.
constexpr int SweepRunLength = 4;
constexpr int SweepSegmentLimit = 1024;

}  // namespace

namespace internal {

bool SelfCrossByRuns(std::span<const TPoint2D> P, double AbsTol, bool ByTree, bool Closing) {
  const TSelfPairs pairs(P, Closing, AbsTol);
  const int segments = pairs.Segments();
  const int runLength = ByTree ? SelfRunLength : SweepRunLength;
  // Every pair of segments whose boxes meet within AbsTol is examined once, from the later
  // segment of the two. Runs of consecutive segments are paired when their
  // boxes meet: a run's box holds its segments' boxes, so the runs that a run's box meets
  // hold every segment that meets one of its own.
  const int runs = (segments + runLength - 1) / runLength;
  TSelfScratch& scratch = SelfScratch();
  struct TTrimOnExit {
    TSelfScratch& S;
    ~TTrimOnExit() { S.Trim(); }
  } trim{scratch};
  std::vector<TRect2D>& boxes = scratch.Boxes;
  std::vector<TRect2D>& runBoxes = scratch.RunBoxes;
  boxes.resize(static_cast<std::size_t>(segments));
  runBoxes.resize(static_cast<std::size_t>(runs));
  for (int k = 0; k < segments; ++k) boxes[static_cast<std::size_t>(k)] = pairs.Box(k);
  for (int r = 0; r < runs; ++r) {
    const int first = r * runLength;
    const int end = std::min(first + runLength, segments);
    TRect2D box = boxes[static_cast<std::size_t>(first)];
    for (int k = first + 1; k < end; ++k) {
      const TRect2D& b = boxes[static_cast<std::size_t>(k)];
      box = TRect2D(std::min(box.XMin, b.XMin), std::min(box.YMin, b.YMin), std::max(box.XMax, b.XMax),
                    std::max(box.YMax, b.YMax));
    }
    runBoxes[static_cast<std::size_t>(r)] = box;
  }

  // Runs R and S <= R, whose boxes meet.
  const auto runsCross = [&](int R, int S) {
    const int first = R * runLength;
    const int end = std::min(first + runLength, segments);
    const int otherFirst = S * runLength;
    const TRect2D& otherBox = runBoxes[static_cast<std::size_t>(S)];
    for (int i = first; i < end; ++i) {
      const TRect2D& box = boxes[static_cast<std::size_t>(i)];
      if (S != R && !pairs.Meets(otherBox, box)) continue;
      const int otherEnd = S == R ? i : otherFirst + runLength;
      for (int j = otherFirst; j < otherEnd; ++j) {
        if (pairs.Meets(boxes[static_cast<std::size_t>(j)], box) && pairs.Crosses(i, j)) return true;
      }
    }
    return false;
  };

  if (!ByTree) {
    // The runs in order of their left sides; a run that falls behind the sweep by more than
    // AbsTol stays behind, for the later runs start further right.
    std::vector<int>& order = scratch.Order;
    order.resize(static_cast<std::size_t>(runs));
    for (int r = 0; r < runs; ++r) order[static_cast<std::size_t>(r)] = r;
    std::sort(order.begin(), order.end(), [&](int A, int B) {
      return runBoxes[static_cast<std::size_t>(A)].XMin < runBoxes[static_cast<std::size_t>(B)].XMin;
    });
    std::vector<int>& active = scratch.Active;
    active.clear();
    for (int r : order) {
      const TRect2D& box = runBoxes[static_cast<std::size_t>(r)];
      if (runsCross(r, r)) return true;
      for (std::size_t k = 0; k < active.size();) {
        const int s = active[k];
        const TRect2D& other = runBoxes[static_cast<std::size_t>(s)];
        if (box.XMin - other.XMax > AbsTol) {
          active[k] = active.back();
          active.pop_back();
          continue;
        }
        if (pairs.Meets(other, box) && (s < r ? runsCross(r, s) : runsCross(s, r))) return true;
        ++k;
      }
      active.push_back(r);
    }
    return false;
  }

  std::vector<int> ids(static_cast<std::size_t>(runs));
  for (int r = 0; r < runs; ++r) ids[static_cast<std::size_t>(r)] = r;
  const TRTree<int> index(std::span<const int>(ids), std::span<const TRect2D>(runBoxes), IndexNodeSize);
  std::vector<int> hits;
  hits.reserve(64);
  for (int r = 0; r < runs; ++r) {
    hits.clear();
    index.Search(runBoxes[static_cast<std::size_t>(r)], hits, AbsTol);
    for (int s : hits) {
      if (s <= r && runsCross(r, s)) return true;
    }
  }
  return false;
}

}  // namespace internal

namespace internal {

bool SelfCrosses(std::span<const TPoint2D> P, double AbsTol, bool Closing) {
  const std::size_t n = P.size() + (Closing ? 1 : 0);
  if (n <= 2) return false;
  // The tree of runs pays for itself only on many runs; a negative or NaN tolerance, which
  // the sweep's order does not hold for, goes to the tree too.
  const bool byTree = !(AbsTol >= 0.0) || n - 1 > static_cast<std::size_t>(SweepSegmentLimit);
  return SelfCrossByRuns(P, AbsTol, byTree, Closing);
}

}  // namespace internal

bool TVPolyline2D::IsSelfIntersect(double AbsTol) const {
  if (Count() <= 2) return false;
  internal::CheckFiniteVertices(FItems, "TVPolyline2D.IsSelfIntersect");
  return internal::SelfCrosses(FItems, AbsTol, false);
}

int TVPolyline2D::RelationWith(const TVPolyline2D& Polyline) const {
  Assert(Count() > 0 && Polyline.Count() > 0, "[Assert] TVPolyline2D.RelationWith: 多段线没有数据");
  std::unique_ptr<TVPolyline2D> self = CloneAs<TVPolyline2D>();
  std::unique_ptr<TVPolyline2D> other = Polyline.CloneAs<TVPolyline2D>();
  self->ConnectHeadTail();
  other->ConnectHeadTail();
  if (self->IsCrossWith(*other)) return 0;
  return self->RelationWithPoint(other->First(), DefaultTol) == Ordinal(TShapeRelation::srIn) ? 1 : -1;
}

bool TVPolyline2D::NearestCrossPoint(const TVPolyline2D& Polyline, const TPoint2D& FromPoint,
                                     TPoint2D& ResultPoint) const {
  TList<TPoint2D> points;
  TList<TLine2D> overlaps;
  CrossWith(Polyline, points, overlaps);
  double best = MaxDouble;
  bool found = false;
  TPoint2D nearest;
  // FromPoint itself is no crossing of its own.
  for (const TPoint2D& p : points) {
    const double d = p.DistanceTo(FromPoint);
    if (d <= DefaultTol || !(d < best)) continue;
    best = d;
    nearest = p;
    found = true;
  }
  for (const TLine2D& o : overlaps) {
    double u = 0.0;
    TPoint2D p;
    const double d = o.DistanceLimit(FromPoint, u, p);
    if (d <= DefaultTol || !(d < best)) continue;
    best = d;
    nearest = p;
    found = true;
  }
  if (found) ResultPoint = nearest;
  return found;
}

// Corners --------------------------------------------------------------------------------

std::uint8_t TVPolyline2D::CornerType(int Id) const {
  const int n = Count();
  if (n < 3) return 0;
  int prev = Id - 1;
  int next = Id + 1;
  if (Id == 0 || Id == n - 1) {
    if (!IsClosed(DefaultTol)) return 0;
    prev = n - 2;
    next = 1;
  }
  const double c = TPoint2DUtils::IsLeft(GetItem(prev), GetItem(Id), GetItem(next));
  if (TMathUtils::FloatEquals(c, 0.0, 1e-12)) return 2;
  const bool clockwise = IsClockwise();
  return (clockwise && c > 0.0) || (!clockwise && c <= 0.0) ? 3 : 1;
}

double TVPolyline2D::CurvatureRadius(double Param) const {
  internal::CheckFinite(Param, "TVPolyline2D.CurvatureRadius", "Param");
  const int n = Count();
  const double last = static_cast<double>(n - 1);
  // Outside the polyline there is no place to bend.
  if (n < 2 || Param < 0.0 || Param > last) return 0.0;
  double a = 0.0;
  double b = 0.0;
  if (IsClosed(DefaultTol)) {
    a = TMathUtils::CycInc(Param, -1.0, last);
    b = TMathUtils::CycInc(Param, 1.0, last);
  } else {
    if (CompareValue(Param, 0.0, DefaultTol) == 0 || CompareValue(Param, last, DefaultTol) == 0) return 0.0;
    a = std::max(Param - 1.0, 0.0);
    b = std::min(Param + 1.0, last);
  }
  const TPoint2D pa = CalcPointByParam(a);
  const TPoint2D p = CalcPointByParam(Param);
  const TPoint2D pb = CalcPointByParam(b);
  const TLine2D bisector1 = TLine2D(pa, p).PerpendicularBisector();
  const TLine2D bisector2 = TLine2D(p, pb).PerpendicularBisector();
  TPoint2D centre;
  if (bisector1.RelationWithLine(bisector2, centre, DefaultTol, DefaultTol) != 1) return 0.0;
  return centre.DistanceTo(p);
}

}  // namespace orvane
