// TPathUtils: cutting a nearly straight chain by the edges of a ring, and the structural work
// on loose paths: nesting them into polygons with holes, polygons from clipping trees,
// closing and smoothing.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/PathUtils.h"
#include "orvane/paths/PathsList.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/internal/PathArith.h"
#include "orvane/paths/internal/PathNesting.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DTree.h"

namespace orvane {

namespace {

using internal::TInt128;

constexpr double Scale = 1e-5;
// Edges and chords shorter than this (drawing units) have no direction to compare.
constexpr double MinLength = 1e-6;
// sin and tan of 1e-4 radian: the widest angle at which an edge still runs along the chord.
constexpr double ParallelSine = 9.999999983333334e-05;
constexpr double ParallelTangent = 0.00010000000033333334;
// Positions along the chord closer than this (as a fraction of its length) are one position.
constexpr double ParamTol = 1e-6;

TPoint2D Scaled(const TPoint64& P) { return {static_cast<double>(P.X) * Scale, static_cast<double>(P.Y) * Scale}; }

// A vertex on its way into a piece: Idx -1, 0, 1 for the first, inner and last vertex of the
// segment, -2 and 2 for the edge end met first and last in the segment's direction. T is its
// position along the chord, computed once.
struct TTempRec {
  std::int64_t X = 0;
  std::int64_t Y = 0;
  std::int64_t Idx = 0;
  double T = 0.0;
};

// Whether edge (a, b) runs along the chord S -> E within Tol: nearly parallel, and every end
// that falls inside the other's span lies within Tol of the other's line.
bool Overlaps(const TLine2D& Chord, double M1, const TLine2D& Edge, double Tol) {
  const double m2 = Edge.Length();
  if (M1 < MinLength || m2 < MinLength) return false;
  if (std::fabs(Chord.Vector().CrossMul(Edge.Vector())) / (M1 * m2) > ParallelSine) return false;
  const double e = Tol * ParallelTangent;
  int count = 0;
  // False when Pt falls inside Line's span (widened by R) but too far from it.
  auto take = [&](const TLine2D& Line, double R, const TPoint2D& Pt) {
    double t = 0.0;
    const double d = Line.DistanceDirect(Pt, t);
    if (t < -R || t > 1.0 + R) return true;
    if (d > Tol) return false;
    ++count;
    return true;
  };
  if (!take(Chord, e / M1, Edge.P1) || !take(Chord, e / M1, Edge.P2)) return false;
  if (count == 2) return true;
  if (!take(Edge, e / m2, Chord.P1)) return false;
  if (count == 2) return true;
  return Edge.DistanceDirect(Chord.P2) <= Tol;
}

// The overlap of Segment's span and the edge's along the chord, or an empty path.
TPath64 Piece(const TPath64& Segment, const TPoint64& A, const TPoint64& B, const TLine2D& Chord) {
  const std::size_t n = Segment.size();
  std::vector<TTempRec> recs;
  recs.reserve(n + 2);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t idx = i == 0 ? -1 : (i + 1 == n ? 1 : 0);
    recs.push_back({Segment[i].X, Segment[i].Y, idx, 0.0});
  }
  const TPoint64& s = Segment.front();
  const TPoint64& e = Segment.back();
  // Whether the edge runs from A to B in the chord's direction (the dot of A - B and S - E
  // is positive). The overlap test has refused zero-length and non-parallel pairs, so the dot
  // is never 0; doubles keep the differences of far-apart coordinates from overflowing.
  auto d = [](std::int64_t U, std::int64_t V) { return static_cast<double>(U) - static_cast<double>(V); };
  const bool same = d(A.X, B.X) * d(s.X, e.X) + d(A.Y, B.Y) * d(s.Y, e.Y) > 0.0;
  recs.push_back({A.X, A.Y, same ? -2 : 2, 0.0});
  recs.push_back({B.X, B.Y, same ? 2 : -2, 0.0});

  for (TTempRec& r : recs) r.T = Chord.ParamOfPoint(Scaled({r.X, r.Y}));
  // The positions compare under a tolerance, which is no strict weak order: a stable sort
  // stays in bounds for any comparer and keeps inner vertices at one position in chain order.
  std::stable_sort(recs.begin(), recs.end(), [](const TTempRec& L, const TTempRec& R) {
    const int c = CompareValue(L.T, R.T, ParamTol);
    return c != 0 ? c < 0 : L.Idx < R.Idx;
  });

  // Between the second and the third tagged record lies the overlap; when both ends of one
  // span come first, the spans are apart.
  TPath64 piece;
  int c = 0;
  std::int64_t owner = 0;
  double tFirst = 0.0;
  double tLast = 0.0;
  for (const TTempRec& r : recs) {
    if (r.Idx != 0) {
      ++c;
      const std::int64_t who = r.Idx < 0 ? -r.Idx : r.Idx;
      if (c == 1) owner = who;
      if (c == 2 && who == owner) return {};
    }
    if (c == 2 || c == 3) {
      if (piece.empty()) tFirst = r.T;
      tLast = r.T;
      piece.emplace_back(r.X, r.Y);
    }
    if (c == 3) break;
  }
  // Spans that only meet end to end leave a piece whose ends are one position: a touch, not
  // a stretch that runs along the edge.
  if (c < 3 || CompareValue(tFirst, tLast, ParamTol) == 0) return {};
  return piece;
}

// Joins Piece to the last piece of Out when one continues the other, else appends it.
void AddPiece(TPaths64& Out, std::size_t First, TPath64&& Piece) {
  if (Out.size() > First) {
    TPath64& last = Out.back();
    if (last.back() == Piece.front()) {
      last.insert(last.end(), Piece.begin() + 1, Piece.end());
      return;
    }
    if (Piece.back() == last.front()) {
      Piece.insert(Piece.end(), last.begin() + 1, last.end());
      last = std::move(Piece);
      return;
    }
  }
  Out.push_back(std::move(Piece));
}

// The pieces of one ring, appended to Out.
void CutInto(const TPath64& Scissor, const TPath64& Segment, double Tol, TPaths64& Out) {
  const std::size_t n = Scissor.size();
  if (n < 2 || Segment.empty() || !(Tol >= 0.0)) return;
  // A two-vertex ring's closing edge is its only edge run back, which would repeat its piece.
  const std::size_t edges = n == 2 ? 1 : n;
  const TPoint64& s = Segment.front();
  const TPoint64& e = Segment.back();
  const TPoint2D sd = Scaled(s);
  const TPoint2D ed = Scaled(e);
  const TLine2D chord(sd, ed);
  const double m1 = chord.Length();

  // An edge whose piece is not empty comes within Tol, plus the drift of a 1e-4 radian slope
  // over the chord, of the chord itself: edges whose box stays farther from the segment's box
  // are passed over unmeasured. Each vertex gets an out-code against the widened box once;
  // an edge whose two ends lie beyond one side of it is apart.
  std::int64_t lo[2] = {s.X, s.Y};
  std::int64_t hi[2] = {s.X, s.Y};
  for (const TPoint64& p : Segment) {
    lo[0] = std::min(lo[0], p.X), hi[0] = std::max(hi[0], p.X);
    lo[1] = std::min(lo[1], p.Y), hi[1] = std::max(hi[1], p.Y);
  }
  const double margin = (Tol * 1.001 + 2e-4 * m1 + MinLength) / Scale + 2.0;
  const auto widen = [](std::int64_t V, double By) {
    return static_cast<std::int64_t>(std::clamp(static_cast<double>(V) + By, -9.2e18, 9.2e18));
  };
  // An infinite tolerance reaches everywhere.
  const bool boxed = margin < 4e18;
  const std::int64_t x0 = boxed ? widen(lo[0], -margin) : std::numeric_limits<std::int64_t>::min();
  const std::int64_t x1 = boxed ? widen(hi[0], margin) : std::numeric_limits<std::int64_t>::max();
  const std::int64_t y0 = boxed ? widen(lo[1], -margin) : std::numeric_limits<std::int64_t>::min();
  const std::int64_t y1 = boxed ? widen(hi[1], margin) : std::numeric_limits<std::int64_t>::max();
  auto outCode = [x0, x1, y0, y1](const TPoint64& P) {
    return static_cast<unsigned>(P.X < x0) | static_cast<unsigned>(P.X > x1) << 1 |
           static_cast<unsigned>(P.Y < y0) << 2 | static_cast<unsigned>(P.Y > y1) << 3;
  };
  // Walks the edges in order; Edge(a, b) is called for those not apart from the segment and
  // ends the walk by answering true.
  auto forEdges = [&](auto&& Edge) {
    const TPoint64* pts = Scissor.data();
    const unsigned code0 = outCode(pts[0]);
    unsigned codeA = code0;
    for (std::size_t i = 0; i < edges; ++i) {
      const std::size_t j = i + 1 == n ? 0 : i + 1;
      const unsigned codeB = j == 0 ? code0 : outCode(pts[j]);
      if ((codeA & codeB) == 0 && Edge(pts[i], pts[j])) return;
      codeA = codeB;
    }
  };

  if (s == e) {
    forEdges([&](const TPoint64& A, const TPoint64& B) {
      if (!TLine2D(Scaled(A), Scaled(B)).IsOn(sd, Tol)) return false;
      Out.push_back({s, s});
      return true;
    });
    return;
  }

  const std::size_t first = Out.size();
  forEdges([&](const TPoint64& A, const TPoint64& B) {
    if (Overlaps(chord, m1, TLine2D(Scaled(A), Scaled(B)), Tol)) {
      TPath64 piece = Piece(Segment, A, B, chord);
      if (!piece.empty()) AddPiece(Out, first, std::move(piece));
    }
    return false;
  });
  // The ring closes: the last edge's piece may continue into the first edge's.
  if (Out.size() >= first + 2) {
    TPath64& head = Out[first];
    TPath64& tail = Out.back();
    if (tail.back() == head.front()) {
      tail.insert(tail.end(), head.begin() + 1, head.end());
      head = std::move(tail);
      Out.pop_back();
    } else if (head.back() == tail.front()) {
      head.insert(head.end(), tail.begin() + 1, tail.end());
      Out.pop_back();
    }
  }
}

// The midpoint of an edge, rounded down; exact in 128 bits.
TPoint64 Midpoint(const TPoint64& A, const TPoint64& B) {
  auto mid = [](std::int64_t U, std::int64_t V) {
    const TInt128 sum = TInt128(U) + V;
    return static_cast<std::int64_t>(sum >= 0 ? sum / 2 : (sum - 1) / 2);
  };
  return {mid(A.X, B.X), mid(A.Y, B.Y)};
}

// The area of Inner that lies inside Outer (integer units squared).
double CommonArea(const TPath64& Inner, const TPath64& Outer) {
  Clipper::TClipper clipper;
  clipper.AddPath(Inner, TPathType::ptSubject, true);
  clipper.AddPath(Outer, TPathType::ptClip, true);
  TPaths64 common;
  clipper.Execute(TClipType::ctIntersection, common, TFillRule::frEvenOdd);
  return std::fabs(Clipper::Core::Area(common));
}

// Whether Inner lies inside Outer. Vertices on Outer's boundary say nothing: a ring that
// touches its container, or runs along part of it, is nested by where the rest of it lies.
// When every vertex is on Outer the edge midpoints decide, and a ring that runs wholly along
// Outer is not inside it. A ring that crosses Outer (a defect drawn across the edge of a
// hide) is inside when most of its area is.
bool IsInside(const TPath64& Inner, double InnerArea, const TPath64& Outer) {
  bool in = false;
  bool out = false;
  for (const TPoint64& p : Inner) {
    const int r = Clipper::PointInPolygon(p, Outer);
    in = in || r == 1;
    out = out || r == 0;
  }
  if (in && out) return CommonArea(Inner, Outer) > 0.5 * InnerArea;
  if (in || out) return in;
  for (std::size_t i = 0; i < Inner.size(); ++i) {
    const int r = Clipper::PointInPolygon(Midpoint(Inner[i], Inner[(i + 1) % Inner.size()]), Outer);
    if (r != -1) return r == 1;
  }
  return false;
}

bool BoxesMeet(const TRect64& A, const TRect64& B) {
  return A.Left <= B.Right && B.Left <= A.Right && A.Top <= B.Bottom && B.Top <= A.Bottom;
}

// The first vertex of Piece that is not on Path's boundary, or vertex 0 when all are.
TShapeRelation RelationOfPiece(const TPath64& Path, const TPath64& Piece) {
  for (const TPoint64& p : Piece) {
    const TShapeRelation r = TPathUtils::RelationWithPoint(Path, p);
    if (r != TShapeRelation::srOn) return r;
  }
  return TShapeRelation::srOn;
}

}  // namespace

namespace internal {

TNesting NestPaths(const TPaths64& Paths) {
  TNesting nest;
  nest.Parent.assign(Paths.size(), TNesting::NoParent);
  nest.Depth.assign(Paths.size(), -1);
  std::vector<std::size_t> order;
  std::vector<double> area(Paths.size(), 0.0);
  std::vector<TRect64> box(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i) {
    if (Paths[i].size() < 3) continue;
    area[i] = TPathUtils::Area(Paths[i], true);
    box[i] = Clipper::Core::GetBounds(Paths[i]);
    order.push_back(i);
  }
  // A container is larger than what it holds, so containers come first; the comparer is
  // exact, and the stable sort keeps equal areas in input order.
  std::stable_sort(order.begin(), order.end(), [&](std::size_t L, std::size_t R) { return area[L] > area[R]; });
  // The nearest container of each path is the smallest earlier one that holds it; every
  // path is tested alike, the largest included.
  for (std::size_t k = 0; k < order.size(); ++k) {
    const std::size_t i = order[k];
    nest.Depth[i] = 0;
    for (std::size_t m = k; m-- > 0;) {
      const std::size_t j = order[m];
      if (!BoxesMeet(box[i], box[j]) || !IsInside(Paths[i], area[i], Paths[j])) continue;
      nest.Parent[i] = j;
      nest.Depth[i] = nest.Depth[j] + 1;
      break;
    }
  }
  return nest;
}

}  // namespace internal

// ---- Cutting ------------------------------------------------------------------------------

TPaths64 TPathUtils::CutByPath(const TPath64& Scissor, const TPath64& Segment, double Tol) {
  TPaths64 out;
  CutInto(Scissor, Segment, Tol, out);
  return out;
}

TPaths64 TPathUtils::CutByPaths(const TPaths64& Scissors, const TPath64& Segment, double Tol) {
  TPaths64 out;
  for (const TPath64& scissor : Scissors) CutInto(scissor, Segment, Tol, out);
  return out;
}

// ---- Polygons with holes ------------------------------------------------------------------

void TPathUtils::NormalizeTPaths(const TPaths64& Paths, TPathsList* Res) {
  Assert(Res != nullptr, "[Assert] TPathUtils.NormalizeTPaths: 结果列表未创建");
  // Holes are found by nesting alone: real outlines come with holes in either orientation
  // and in any order, so neither tells a hole from an island. Res changes only once the
  // nesting stands (the clipper refuses coordinates beyond its range).
  const internal::TNesting nest = internal::NestPaths(Paths);
  Res->Clear();
  std::vector<std::vector<std::size_t>> holes(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i)
    if (nest.Depth[i] % 2 == 1) holes[nest.Parent[i]].push_back(i);
  for (std::size_t i = 0; i < Paths.size(); ++i) {
    if (nest.Depth[i] < 0 || nest.Depth[i] % 2 != 0) continue;
    TPaths64 item;
    item.reserve(holes[i].size() + 1);
    item.push_back(Paths[i]);
    for (std::size_t h : holes[i]) item.push_back(Paths[h]);
    Res->Add(std::move(item));
  }
}

std::unique_ptr<TVPolyline2DTreeList> TPathUtils::CreatePolylineTreeList(const TPaths64& Paths, double Rate) {
  internal::CheckPositiveRate(Rate, "TPathUtils.CreatePolylineTreeList");
  const internal::TNesting nest = internal::NestPaths(Paths);
  // Containers before what they hold: a path's parent is one level less deep.
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < Paths.size(); ++i)
    if (nest.Depth[i] >= 0) order.push_back(i);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t A, std::size_t B) { return nest.Depth[A] < nest.Depth[B]; });
  auto list = std::make_unique<TVPolyline2DTreeList>(true);
  std::vector<TVPolyline2DTree::TNode*> nodes(Paths.size(), nullptr);
  std::vector<TVPolyline2DTree*> trees(Paths.size(), nullptr);
  for (std::size_t i : order) {
    auto node = std::make_unique<TVPolyline2DTree::TNode>(CreatePolyline(Paths[i], Rate).release());
    if (nest.Parent[i] == internal::TNesting::NoParent) {
      auto tree = std::make_unique<TVPolyline2DTree>();
      nodes[i] = node.get();
      tree->SetRoot(std::move(node));
      trees[i] = tree.get();
      list->Add(std::move(tree));
    } else {
      const std::size_t parent = nest.Parent[i];
      trees[i] = trees[parent];
      nodes[i] = trees[i]->AddChildNode(*nodes[parent], std::move(node));
    }
  }
  return list;
}

std::unique_ptr<TVHPolygonList> TPathUtils::CreateHPolygons(const TPaths64& Paths, double Rate) {
  return CreatePolylineTreeList(Paths, Rate)->CreateHPolygons();
}

std::unique_ptr<TPathsList> TPathUtils::PolyTreeToPathsList(const Clipper::TPolyTree& PolyTree) {
  auto list = std::make_unique<TPathsList>(true);
  // Breadth first, so that an island follows the outline whose hole holds it.
  std::deque<const Clipper::TPolyNode*> queue;
  for (int i = 0; i < PolyTree.GetChildCount(); ++i) queue.push_back(PolyTree.GetChild(i));
  while (!queue.empty()) {
    const Clipper::TPolyNode* node = queue.front();
    queue.pop_front();
    TPaths64 item{node->GetContour()};
    for (int i = 0; i < node->GetChildCount(); ++i) {
      const Clipper::TPolyNode* hole = node->GetChild(i);
      item.push_back(hole->GetContour());
      for (int k = 0; k < hole->GetChildCount(); ++k) queue.push_back(hole->GetChild(k));
    }
    list->Add(std::move(item));
  }
  return list;
}

TPaths64 TPathUtils::ExtractHoles(const TPaths64& paths, bool outDir) {
  TPaths64 out;
  for (std::size_t i = 1; i < paths.size(); ++i)
    if ((Clipper::Core::Area(paths[i]) >= 0.0) != outDir) out.push_back(paths[i]);
  return out;
}

std::unique_ptr<TVHPolygon> TPathUtils::CreateHPolygon(const TPaths64& Paths, double Rate) {
  auto polygon = std::make_unique<TVHPolygon>(false);
  // Filling runs the polygon's own rule: loops that come in closed are turned at once.
  AssignToPolylines(Paths, *polygon, Rate);
  if (polygon->Count() == 0) return polygon;
  const bool clockwise = (*polygon)[0]->IsClockwise();
  for (int i = 0; i < polygon->Count(); ++i) {
    TVPolyline2D& loop = *(*polygon)[i];
    loop.ConnectHeadTail();
    loop.SetIsClockwise(i == 0 ? clockwise : !clockwise);
  }
  // The polygon keeps its outline in the orientation it reports.
  polygon->SetIsClockwise(clockwise);
  return polygon;
}

std::unique_ptr<TVHPolygon> TPathUtils::CreateHPolygon(const Clipper::TPolyNode* PolyNode, double Rate) {
  TPaths64 paths;
  if (PolyNode != nullptr) {
    paths.push_back(PolyNode->GetContour());
    for (int i = 0; i < PolyNode->GetChildCount(); ++i) paths.push_back(PolyNode->GetChild(i)->GetContour());
  }
  return CreateHPolygon(paths, Rate);
}

std::unique_ptr<TVHPolygonList> TPathUtils::CreateStrictSimpleHPolygon(const Clipper::TPolyNode* PolyNode,
                                                                       double Rate) {
  std::vector<TPaths64> groups;
  if (PolyNode != nullptr) {
    for (TPath64& p : Clipper::SimplifyPolygon(PolyNode->GetContour(), TFillRule::frEvenOdd))
      groups.push_back(TPaths64{std::move(p)});
    for (int i = 0; i < PolyNode->GetChildCount(); ++i) {
      const TPath64& contour = PolyNode->GetChild(i)->GetContour();
      if (contour.empty()) continue;
      for (TPath64& q : Clipper::SimplifyPolygon(contour, TFillRule::frEvenOdd)) {
        if (q.empty()) continue;
        // A piece that touches a lobe at the pinch point belongs where the rest of it lies.
        for (TPaths64& g : groups) {
          const TShapeRelation r = RelationOfPiece(g[0], q);
          if (r == TShapeRelation::srOn || r == TShapeRelation::srIn) {
            g.push_back(std::move(q));
            break;
          }
        }
      }
    }
  }
  auto list = std::make_unique<TVHPolygonList>(true);
  for (const TPaths64& g : groups) list->Add(CreateHPolygon(g, Rate));
  return list;
}

// ---- Closing and smoothing ----------------------------------------------------------------

void TPathUtils::ConnectHeadTail(TPath64& Path) {
  if (!Path.empty() && Path.back() != Path.front()) Path.push_back(Path.front());
}

void TPathUtils::ConnectHeadTail(TPaths64& Paths) {
  for (TPath64& p : Paths) ConnectHeadTail(p);
}

void TPathUtils::CollinearSmooth(TPath64& Path, double CrossMulTolerance) {
  std::unique_ptr<TVPolyline2D> polyline = CreatePolyline(Path, PathWorkingRate);
  polyline->CollinearSmooth(CrossMulTolerance / 1e10, false);
  Path = CreatePath(*polyline, PathWorkingRate);
}

void TPathUtils::CollinearSmooth(TPaths64& Paths, double CrossMulTolerance) {
  for (TPath64& p : Paths) CollinearSmooth(p, CrossMulTolerance);
}

}  // namespace orvane
