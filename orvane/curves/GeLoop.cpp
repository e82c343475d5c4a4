#include "orvane/curves/GeLoop.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane {

namespace {

// Loops with fewer vertices are scanned: an index would not repay its building.
constexpr int IndexMinVertices = 64;
// A band whose range of heights covers more bands than this share of them is answered by a
// scan instead.
constexpr int IndexMaxBandShare = 4;
// The index holds at most this many entries per edge; a loop of many tall edges gets fewer,
// wider bands.
constexpr int IndexMaxEntriesPerEdge = 8;
// Relative margin that keeps the index's height filter wider than any rounding of the exact
// per-edge tests.
constexpr double FilterSlack = 1e-12;
// The margin of Contains(pnt).
constexpr double ContainsEps = 1e-6;

constexpr int Ordinal(TShapeRelation R) { return static_cast<int>(R); }

[[noreturn]] void IndexError(const char* Where) { throw Exception("[Error] TGeLoop.%s: 下标越界", Where); }

// The coordinate rounded to single precision; beyond its range, the infinity of its sign
// (the plain conversion is undefined there).
double ToSingle(double X) {
  if (std::fabs(X) > static_cast<double>(FLT_MAX)) return std::copysign(HUGE_VAL, X);
  return static_cast<double>(static_cast<float>(X));
}

// The flip of Contains(pnt) for edge A -> B.
bool ContainsFlips(const TPoint2D& A, const TPoint2D& B, const TPoint2D& P) {
  return (A.Y - ContainsEps > P.Y && P.Y + ContainsEps > B.Y &&
          (P.Y - B.Y) * (A.X - B.X) > (P.X - B.X) * (A.Y - B.Y) + ContainsEps) ||
         (A.Y - ContainsEps <= P.Y && B.Y - ContainsEps > P.Y &&
          (P.X - B.X) * (A.Y - B.Y) - ContainsEps > (P.Y - B.Y) * (A.X - B.X));
}

// The flip of PtInPoly for edge Prev -> Cur at the rounded point (TX, TY).
bool RayFlips(const TPoint2D& Prev, const TPoint2D& Cur, double TX, double TY) {
  if ((Prev.Y >= TY) == (Cur.Y >= TY)) return false;
  if ((Prev.X >= TX) != (Cur.X >= TX)) {
    return Cur.X - (Cur.Y - TY) * (Prev.X - Cur.X) / (Prev.Y - Cur.Y) >= TX;
  }
  return Prev.X >= TX;
}

}  // namespace

// The edges sorted into horizontal bands of equal height over the loop's box, each edge in
// every band that its range of heights meets. A query for the heights Lo .. Hi visits each
// edge that may meet them once, so the per-edge tests, whose answers do not hang on the order
// of the edges, give what a scan of all edges gives.
struct TGeLoop::TPointIndex {
  double Y0 = 0.0;
  double InvHeight = 0.0;
  int Bands = 1;
  std::vector<int> Start;  // Bands + 1 offsets into Edges
  std::vector<int> Edges;

  // Monotone in Y, so an edge's bands are those from its low end's to its high end's.
  int Band(double Y) const {
    const double t = (Y - Y0) * InvHeight;
    if (!(t > 0.0)) return 0;
    if (t >= static_cast<double>(Bands)) return Bands - 1;
    return static_cast<int>(t);
  }

  void Build(const TDynPoints2D& Pts, const TRect2D& Box) {
    const int n = static_cast<int>(Pts.size());
    Y0 = Box.YMin;
    const double height = Box.YMax - Box.YMin;
    std::vector<int> lo(static_cast<std::size_t>(n));
    std::vector<int> hi(static_cast<std::size_t>(n));
    // Fewer bands until the entries fit; at most a few dozen rounds, one band holds all.
    for (Bands = n;; Bands = std::max(1, Bands / 4)) {
      InvHeight = height > 0.0 ? Bands / height : 0.0;
      if (!std::isfinite(InvHeight)) InvHeight = 0.0;
      long long entries = 0;
      for (int e = 0; e < n; ++e) {
        const double a = Pts[static_cast<std::size_t>(e)].Y;
        const double b = Pts[static_cast<std::size_t>(e + 1 < n ? e + 1 : 0)].Y;
        lo[static_cast<std::size_t>(e)] = Band(std::min(a, b));
        hi[static_cast<std::size_t>(e)] = Band(std::max(a, b));
        entries += hi[static_cast<std::size_t>(e)] - lo[static_cast<std::size_t>(e)] + 1;
      }
      if (Bands == 1 || entries <= static_cast<long long>(IndexMaxEntriesPerEdge) * n) break;
    }
    Start.assign(static_cast<std::size_t>(Bands) + 1, 0);
    for (int e = 0; e < n; ++e) {
      for (int b = lo[static_cast<std::size_t>(e)]; b <= hi[static_cast<std::size_t>(e)]; ++b)
        ++Start[static_cast<std::size_t>(b) + 1];
    }
    for (int b = 0; b < Bands; ++b) Start[static_cast<std::size_t>(b) + 1] += Start[static_cast<std::size_t>(b)];
    Edges.assign(static_cast<std::size_t>(Start.back()), 0);
    std::vector<int> fill(Start.begin(), Start.end() - 1);
    for (int e = 0; e < n; ++e) {
      for (int b = lo[static_cast<std::size_t>(e)]; b <= hi[static_cast<std::size_t>(e)]; ++b)
        Edges[static_cast<std::size_t>(fill[static_cast<std::size_t>(b)]++)] = e;
    }
  }

  // False when the heights Lo .. Hi cover so many bands that a scan is cheaper; otherwise
  // calls Visit(e) once for each edge that may meet them.
  template <class F>
  bool ForEdges(const TDynPoints2D& Pts, double Lo, double Hi, F&& Visit) const {
    const int b0 = Band(Lo);
    const int b1 = Band(Hi);
    if (b1 > b0 && (b1 - b0) * IndexMaxBandShare > Bands) return false;
    const int n = static_cast<int>(Pts.size());
    for (int b = b0; b <= b1; ++b) {
      for (int k = Start[static_cast<std::size_t>(b)]; k < Start[static_cast<std::size_t>(b) + 1]; ++k) {
        const int e = Edges[static_cast<std::size_t>(k)];
        if (b > b0) {
          // An edge that spans several of the bands is visited in the first of them only.
          const double a = Pts[static_cast<std::size_t>(e)].Y;
          const double c = Pts[static_cast<std::size_t>(e + 1 < n ? e + 1 : 0)].Y;
          if (Band(std::min(a, c)) < b) continue;
        }
        Visit(e);
      }
    }
    return true;
  }
};

// Construction ------------------------------------------------------------------------------

TGeLoop::TGeLoop() = default;

TGeLoop::TGeLoop(const TList<TPoint2D>& Points) {
  internal::CheckFiniteVertices(Points.List(), "TGeLoop.Create");
  FVertices.Assign(Points.List());
}

TGeLoop::TGeLoop(const TDynPoints2D& pnts) { SetVertices(pnts); }

std::unique_ptr<TGeLoop> TGeLoop::CreateRect(const TRect2D& Rect) {
  if (!internal::IsFinite(Rect)) {
    throw EParamError("[Error] TGeLoop.CreateRect: Rect (%s, %s, %s, %s) is not a finite box", FloatToStr(Rect.XMin),
                      FloatToStr(Rect.YMin), FloatToStr(Rect.XMax), FloatToStr(Rect.YMax));
  }
  auto loop = std::make_unique<TGeLoop>();
  loop->FVertices.Assign(
      TDynPoints2D{{Rect.XMin, Rect.YMin}, {Rect.XMax, Rect.YMin}, {Rect.XMax, Rect.YMax}, {Rect.XMin, Rect.YMax}});
  // The box of the corners, also for a box given with its bounds swapped.
  loop->FBox = Rect.NormalizedRect();
  loop->FBoxInvalid = false;
  return loop;
}

TGeLoop::~TGeLoop() = default;

// Editing -----------------------------------------------------------------------------------

void TGeLoop::ReplaceVertices(TDynPoints2D&& Pts) {
  FVertices.Assign(std::move(Pts));
  Invalidate();
}

void TGeLoop::Add(const TPoint2D& pnt) {
  internal::CheckFinitePoint(pnt, "TGeLoop.Add", "pnt");
  FVertices.Add(pnt);
  Invalidate();
}

void TGeLoop::Delete(int idx) {
  FVertices.Delete(Wrap(idx, "Delete"));
  Invalidate();
}

void TGeLoop::SetVertices(const TDynPoints2D& pnts) {
  internal::CheckFiniteVertices(pnts, "TGeLoop.SetVertices");
  TDynPoints2D kept;
  kept.reserve(pnts.size());
  for (const TPoint2D& p : pnts) {
    if (kept.empty() || p != kept.back()) kept.push_back(p);
  }
  while (kept.size() >= 2 && kept.front() == kept.back()) kept.pop_back();
  // An empty array empties the loop, and its caches with it: the area of nothing is 0.
  ReplaceVertices(std::move(kept));
}

void TGeLoop::SetVertices(const TVPolyline2D& Poly) { SetVertices(Poly.Points()); }

void TGeLoop::Invalidate() {
  FBoxInvalid = true;
  FIsAreaValid = false;
  ClearIndex();
}

void TGeLoop::ClearIndex() {
  FIndex.reset();
  FScansSinceChange = 0;
}

void TGeLoop::Reverse() {
  TDynPoints2D pts(FVertices.Points().rbegin(), FVertices.Points().rend());
  SetVertices(pts);
}

void TGeLoop::SetIsClockWise(bool Value) {
  if (GetIsClockWise() != Value) Reverse();
}

void TGeLoop::SetClosed() {
  const int n = GetVertexCount();
  FVertices.ConnectHeadTail();
  // The edge numbering changed; box and area did not.
  if (GetVertexCount() != n) ClearIndex();
}

void TGeLoop::TransformBy(const TMatrix2D& mtx) {
  TDynPoints2D pts = FVertices.Points();
  for (TPoint2D& p : pts) p = mtx.Transform(p);
  internal::CheckFiniteVertices(pts, "TGeLoop.TransformBy");
  ReplaceVertices(std::move(pts));
}

void TGeLoop::Rotate(double Ang, const TPoint2D& ACenter) {
  internal::CheckFinite(Ang, "TGeLoop.Rotate", "Ang");
  internal::CheckFinitePoint(ACenter, "TGeLoop.Rotate", "ACenter");
  TMatrix2D m;
  m.Reset();
  m.Rotate(Ang, ACenter);
  TDynPoints2D pts = FVertices.Points();
  for (TPoint2D& p : pts) p = m.Transform(p);
  internal::CheckFiniteVertices(pts, "TGeLoop.Rotate");
  ReplaceVertices(std::move(pts));
}

void TGeLoop::Translate(const TPoint2D& vec) {
  internal::CheckFinitePoint(vec, "TGeLoop.Translate", "vec");
  TDynPoints2D pts = FVertices.Points();
  for (TPoint2D& p : pts) p += vec;
  internal::CheckFiniteVertices(pts, "TGeLoop.Translate");
  FVertices.Assign(std::move(pts));
  if (!FBoxInvalid) FBox = FBox.Translate(vec);
  // The bands are cut at the old heights.
  ClearIndex();
}

// Vertices and edges ------------------------------------------------------------------------

int TGeLoop::Wrap(int idx, const char* Where) const {
  const int n = GetVertexCount();
  if (n == 0) IndexError(Where);
  const int r = idx % n;
  return r < 0 ? r + n : r;
}

TPoint2D TGeLoop::GetVertex(int idx) const { return V(Wrap(idx, "GetVertex")); }

TLine2D TGeLoop::GetEdge(int idx) const {
  const int i = Wrap(idx, "GetEdge");
  return TLine2D(V(i), V(i + 1 < GetVertexCount() ? i + 1 : 0));
}

TList<TLine2D> TGeLoop::GetEdgeList() const {
  const int n = GetVertexCount();
  std::vector<TLine2D> edges;
  edges.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) edges.emplace_back(V(i), V(i + 1 < n ? i + 1 : 0));
  return TList<TLine2D>(std::move(edges));
}

TPoint2D TGeLoop::GetNormal(int idx) const {
  const int i = Wrap(idx, "GetNormal");
  const TPoint2D d = V(i + 1 < GetVertexCount() ? i + 1 : 0) - V(i);
  return d.Normal().RotateCcw90();
}

TList<TPoint2D> TGeLoop::GetPointList() const { return FVertices.ToTPoint2DList(); }

std::unique_ptr<TVPolyline2D> TGeLoop::ToPolyline2D() const {
  return std::make_unique<TVPolyline2D>(FVertices.Points());
}

TPoint2D TGeLoop::EvalPoint(double param) const {
  internal::CheckFinite(param, "TGeLoop.EvalPoint", "param");
  const int n = GetVertexCount();
  if (n == 0) IndexError("EvalPoint");
  // The parameter is periodic: floor, not truncation, so that a little before 0 lies on the
  // last edge rather than on the extension of the first.
  const double k = std::floor(param);
  const double frac = param - k;
  double e = std::fmod(k, static_cast<double>(n));
  if (e < 0.0) e += n;
  return GetEdge(static_cast<int>(e)).EvalPoint(frac);
}

// Measures ----------------------------------------------------------------------------------

double TGeLoop::GetArea() const {
  if (!FIsAreaValid) CalcArea();
  return FArea;
}

void TGeLoop::CalcArea() const {
  const int n = GetVertexCount();
  // About vertex 0, so that an outline far from the origin keeps its digits.
  double sum = 0.0;
  if (n > 0) {
    const TPoint2D o = V(0);
    for (int i = 1; i + 1 < n; ++i) sum += (V(i) - o).CrossMul(V(i + 1) - o);
  }
  FArea = 0.5 * sum;
  FIsAreaValid = true;
}

TRect2D TGeLoop::GetBoundBox() const {
  if (FBoxInvalid) {
    FBox.SetByPointsExt(FVertices.Points());
    FBoxInvalid = false;
  }
  return FBox;
}

TPoint2D TGeLoop::GetGravityCenter() const {
  const int n = GetVertexCount();
  if (n == 0) return Org2D;
  const TPoint2D o = V(0);
  // Triangles fanned from vertex 0 over every edge, the closing one included; each weighs
  // its signed doubled area at its own centroid. Nothing is cached.
  double twiceArea = 0.0;
  double scale = 0.0;
  TPoint2D moment;
  for (int i = 1; i + 1 < n; ++i) {
    const TPoint2D a = V(i) - o;
    const TPoint2D b = V(i + 1) - o;
    const double c = a.CrossMul(b);
    twiceArea += c;
    scale += std::fabs(c);
    moment += (a + b) * c;
  }
  // An area lost in the rounding of its own terms is none.
  if (std::fabs(twiceArea) > 1e-12 * scale) return o + moment / (3.0 * twiceArea);
  // No area: the centre of the edges by length, as for a line.
  double length = 0.0;
  TPoint2D mid;
  for (int i = 0; i < n; ++i) {
    const TPoint2D a = V(i) - o;
    const TPoint2D b = V(i + 1 < n ? i + 1 : 0) - o;
    const double l = a.DistanceTo(b);
    length += l;
    mid += (a + b) * (0.5 * l);
  }
  return length > 0.0 ? o + mid / length : o;
}

// Relations ---------------------------------------------------------------------------------

const TGeLoop::TPointIndex* TGeLoop::PointIndex() const {
  if (FIndex) return FIndex.get();
  if (GetVertexCount() < IndexMinVertices || ++FScansSinceChange < 2) return nullptr;
  auto index = std::make_unique<TPointIndex>();
  index->Build(FVertices.Points(), GetBoundBox());
  FIndex = std::move(index);
  return FIndex.get();
}

int TGeLoop::RelationWithPt(const TPoint2D& Pt, double Tol) const {
  internal::CheckFinite(Tol, "TGeLoop.RelationWithPt", "Tol");
  const int n = GetVertexCount();
  if (n == 0 || !internal::IsFinite(Pt)) return Ordinal(TShapeRelation::srOut);
  const TPointIndex* index = PointIndex();
  if (index) {
    // The same per-edge tests as the polyline's relation, on the edges near Pt's height.
    const TDynPoints2D& v = FVertices.Points();
    const TRect2D box = GetBoundBox();
    const double y = Pt.Y;
    const double reach = std::max(Tol, 0.0) * (1.0 + 1e-9) +
                         FilterSlack * (std::fabs(y) + std::max(std::fabs(box.YMin), std::fabs(box.YMax)));
    bool on = false;
    bool inside = false;
    const bool indexed = index->ForEdges(v, y - reach, y + reach, [&](int e) {
      if (on) return;
      const TPoint2D& p = v[static_cast<std::size_t>(e)];
      const TPoint2D& q = v[static_cast<std::size_t>(e + 1 < n ? e + 1 : 0)];
      if (TLine2D(p, q).IsOn(Pt, Tol) || Pt.Equals(p, Tol) || Pt.Equals(q, Tol)) {
        on = true;
        return;
      }
      if ((p.Y > y) != (q.Y > y)) {
        const bool pRight = p.X > Pt.X;
        const bool qRight = q.X > Pt.X;
        if ((pRight && qRight) || (pRight != qRight && TLine2D(p, q).PointAtY(y).X > Pt.X)) inside = !inside;
      }
    });
    if (indexed) {
      if (on) return Ordinal(TShapeRelation::srOn);
      return Ordinal(inside ? TShapeRelation::srIn : TShapeRelation::srOut);
    }
  }
  // The polyline closes the outline from its last vertex to its first itself.
  return FVertices.RelationWithPoint(Pt, Tol);
}

bool TGeLoop::Contains(const TPoint2D& pnt) const {
  const int n = GetVertexCount();
  if (n == 0 || !internal::IsFinite(pnt)) return false;
  const TDynPoints2D& v = FVertices.Points();
  bool result = false;
  if (const TPointIndex* index = PointIndex()) {
    // An edge wholly below pnt, or above it by more than the margin, never flips.
    const double m = 2.0 * ContainsEps + FilterSlack * std::fabs(pnt.Y);
    const bool indexed = index->ForEdges(v, pnt.Y - m, pnt.Y + m, [&](int e) {
      if (ContainsFlips(v[static_cast<std::size_t>(e)], v[static_cast<std::size_t>(e + 1 < n ? e + 1 : 0)], pnt))
        result = !result;
    });
    if (indexed) return result;
    result = false;
  }
  for (int i = 0; i < n; ++i) {
    if (ContainsFlips(v[static_cast<std::size_t>(i)], v[static_cast<std::size_t>(i + 1 < n ? i + 1 : 0)], pnt))
      result = !result;
  }
  return result;
}

bool TGeLoop::PtInPoly(const TPoint2D& ptHit) const {
  const int n = GetVertexCount();
  if (n < 3 || !internal::IsFinite(ptHit)) return false;
  const double tx = ToSingle(ptHit.X);
  const double ty = ToSingle(ptHit.Y);
  const TDynPoints2D& v = FVertices.Points();
  bool inside = false;
  if (const TPointIndex* index = PointIndex()) {
    // Only an edge that spans the ray's height can flip.
    const bool indexed = index->ForEdges(v, ty, ty, [&](int e) {
      if (RayFlips(v[static_cast<std::size_t>(e)], v[static_cast<std::size_t>(e + 1 < n ? e + 1 : 0)], tx, ty))
        inside = !inside;
    });
    if (indexed) return inside;
    inside = false;
  }
  for (int i = 0, prev = n - 1; i < n; prev = i++) {
    if (RayFlips(v[static_cast<std::size_t>(prev)], v[static_cast<std::size_t>(i)], tx, ty)) inside = !inside;
  }
  return inside;
}

bool TGeLoop::Contains(const TGeLoop& Loop, double Tol) const {
  const int n = Loop.GetVertexCount();
  if (n < 2) return true;
  for (int i = 0; i < n; ++i) {
    const TPoint2D& a = Loop.V(i);
    const TPoint2D& b = Loop.V(i + 1 < n ? i + 1 : 0);
    for (const TPoint2D& p : {a, (a + b) * 0.5}) {
      const int r = RelationWithPt(p, Tol);
      if (r != Ordinal(TShapeRelation::srOn)) return r == Ordinal(TShapeRelation::srIn);
    }
  }
  return true;
}

// Copying -----------------------------------------------------------------------------------

void TGeLoop::AssignTo(TPersistent& Dest) const {
  auto* dest = dynamic_cast<TGeLoop*>(&Dest);
  if (!dest) {
    TPersistent::AssignTo(Dest);
    return;
  }
  if (dest == this) return;
  dest->ReplaceVertices(TDynPoints2D(FVertices.Points()));
  dest->FBoxInvalid = FBoxInvalid;
  if (!FBoxInvalid) dest->FBox = FBox;
}

std::unique_ptr<TGeLoop> TGeLoop::Clone() const {
  auto loop = std::make_unique<TGeLoop>();
  loop->Assign(*this);
  return loop;
}

std::string TGeLoop::ClassName() const { return "TGeLoop"; }

}  // namespace orvane
