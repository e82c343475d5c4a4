#include "orvane/vertex/VHPolygon.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/clipping/Clipper2.h"

namespace orvane {

namespace {

constexpr auto Ord(TShapeRelation R) { return static_cast<std::uint8_t>(R); }

// The centroid sums of one loop closed from its last vertex to its first: A gathers the cross
// products c = p(i) x p(i+1), S the (p(i) + p(i+1)) * c.
void AddCentroidSums(const TVPolyline2D& Loop, double& A, TPoint2D& S) {
  const TDynPoints2D& pts = Loop.Points();
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const TPoint2D& p = pts[i];
    const TPoint2D& q = pts[i + 1 == pts.size() ? 0 : i + 1];
    const double c = p.CrossMul(q);
    A += c;
    S += (p + q) * c;
  }
}

TPoint2D Centroid(double A, const TPoint2D& S, const TRect2D& Box) {
  if (fEqual(A, 0.0, DefaultTol)) return Box.CenterPoint();
  return (S / A) / 3.0;
}

// Sorts Items by a key computed once per item; stable, ascending unless Descending.
template <class T, class TKey>
void SortByKey(std::vector<T*>& Items, bool Descending, TKey&& Key) {
  std::vector<std::pair<double, T*>> keyed;
  keyed.reserve(Items.size());
  for (T* item : Items) keyed.emplace_back(Key(*item), item);
  std::stable_sort(keyed.begin(), keyed.end(), [Descending](const auto& L, const auto& R) {
    return Descending ? L.first > R.first : L.first < R.first;
  });
  for (std::size_t i = 0; i < keyed.size(); ++i) Items[i] = keyed[i].second;
}

// The regions of a clipping tree, breadth first. TTree gives a node's contour, children and
// hole flag for either clipper's node type.
template <class TNode, class TTree>
void AddRegions(TVHPolygonList& List, const TNode& Root, double Rate, const TTree& Tree) {
  std::deque<const TNode*> queue;
  auto enqueueSolids = [&](const TNode& Node) {
    for (int i = 0; i < Tree.ChildCount(Node); ++i) {
      const TNode& child = Tree.Child(Node, i);
      if (!Tree.IsHole(child)) queue.push_back(&child);
    }
  };
  if (Tree.IsHole(Root) || Tree.Contour(Root).empty()) {
    enqueueSolids(Root);
  } else {
    queue.push_back(&Root);
  }
  // The tree's contours have no closing vertex: each loop comes in open, so the polygon
  // leaves the orientation that the tree gave it, and is closed afterwards.
  auto addLoop = [Rate](TVHPolygon& Polygon, const TPath64& Contour) {
    auto loop = std::make_unique<TVPolyline2D>(Contour, Rate);
    TVPolyline2D& added = *loop;
    Polygon.Add(std::move(loop));
    added.ConnectHeadTail();
  };
  while (!queue.empty()) {
    const TNode& node = *queue.front();
    queue.pop_front();
    auto polygon = std::make_unique<TVHPolygon>(false);
    addLoop(*polygon, Tree.Contour(node));
    for (int i = 0; i < Tree.ChildCount(node); ++i) {
      const TNode& child = Tree.Child(node, i);
      if (Tree.IsHole(child)) {
        addLoop(*polygon, Tree.Contour(child));
        // Islands inside a hole are regions of their own.
        enqueueSolids(child);
      } else {
        queue.push_back(&child);
      }
    }
    List.Add(std::move(polygon));
  }
}

struct TLegacyTree {
  static const TPath64& Contour(const Clipper::TPolyNode& N) { return N.GetContour(); }
  static int ChildCount(const Clipper::TPolyNode& N) { return N.GetChildCount(); }
  static const Clipper::TPolyNode& Child(const Clipper::TPolyNode& N, int I) { return *N.GetChild(I); }
  static bool IsHole(const Clipper::TPolyNode& N) { return N.GetIsHole(); }
};

struct TTree64 {
  static const TPath64& Contour(const Clipper2::TPolyPath64& N) { return N.GetPolygon(); }
  static int ChildCount(const Clipper2::TPolyPath64& N) { return N.GetChildCnt(); }
  static const Clipper2::TPolyPath64& Child(const Clipper2::TPolyPath64& N, int I) { return *N.GetChild64(I); }
  static bool IsHole(const Clipper2::TPolyPath64& N) { return N.GetIsHole(); }
};

}  // namespace

// TVHPolygon -----------------------------------------------------------------------------

std::unique_ptr<TVGeometry2DList<TVPolyline2D>> TVHPolygon::New(bool /*AOwnsObjects*/) const {
  return std::make_unique<TVHPolygon>(FIsClockwise);
}

void TVHPolygon::Notify(TVPolyline2D* const& Item, TCollectionNotification Action) {
  // The inherited notification first: an owning list frees a loop that is removed.
  TVPolyline2DList::Notify(Item, Action);
  if (Action == TCollectionNotification::cnAdded) {
    if (Count() == 1) {
      if (Item->IsClosed(DefaultTol)) Item->SetIsClockwise(FIsClockwise);
    } else if (FItems.front() == Item) {
      // Inserted in front: the new outline, and the former outline becomes a hole.
      Item->SetIsClockwise(FIsClockwise);
      FItems[1]->SetIsClockwise(!FIsClockwise);
    } else if (Item->IsClosed(DefaultTol)) {
      Item->SetIsClockwise(!FIsClockwise);
    }
  } else if (!FItems.empty()) {
    // A hole may have moved up to become the outline.
    FItems.front()->SetIsClockwise(FIsClockwise);
  }
}

void TVHPolygon::SetIsClockwise(bool IsClockwise) {
  if (FItems.empty() || IsClockwise == FIsClockwise) return;
  FIsClockwise = IsClockwise;
  for (std::size_t i = 0; i < FItems.size(); ++i) FItems[i]->SetIsClockwise(i == 0 ? IsClockwise : !IsClockwise);
}

int TVHPolygon::PtCount() const {
  int n = 0;
  for (const TVPolyline2D* loop : FItems) n += loop->Count();
  return n;
}

bool TVHPolygon::CheckClosed() const {
  return std::all_of(FItems.begin(), FItems.end(), [](const TVPolyline2D* L) { return L->IsClosed(DefaultTol); });
}

double TVHPolygon::Area() const {
  if (FItems.empty()) return 0.0;
  double area = std::fabs(FItems.front()->Area());
  for (std::size_t i = 1; i < FItems.size(); ++i) area -= std::fabs(FItems[i]->Area());
  return area;
}

TRect2D TVHPolygon::BoundBox() const { return FItems.empty() ? TRect2D::Invalid() : FItems.front()->BoundBox(); }

void TVHPolygon::YMirror() {
  TVPolyline2DList::YMirror();
  FIsClockwise = !FIsClockwise;
}

void TVHPolygon::Transform(const TMatrix2D& Matrix) {
  TVPolyline2DList::Transform(Matrix);
  if (!FItems.empty()) FIsClockwise = FItems.front()->IsClockwise();
}

TPoint2D TVHPolygon::Gravity() const {
  double a = 0.0;
  TPoint2D s;
  for (const TVPolyline2D* loop : FItems) AddCentroidSums(*loop, a, s);
  return Centroid(a, s, BoundBox());
}

double TVHPolygon::XGravity() const { return Gravity().X; }

bool TVHPolygon::IsEqualTo(const TVHPolygon& HPolygon) const {
  if (Count() != HPolygon.Count()) return false;
  for (int i = 0; i < Count(); ++i) {
    if (!(*this)[i]->IsEqualTo(*HPolygon[i], DefaultTol)) return false;
  }
  return true;
}

std::uint8_t TVHPolygon::RelationWithPoint(const TPoint2D& Point, double Tol) const {
  if (FItems.empty()) return Ord(TShapeRelation::srOut);
  const int outline = FItems.front()->RelationWithPoint(Point, Tol);
  if (outline != Ord(TShapeRelation::srIn)) return static_cast<std::uint8_t>(outline);
  for (std::size_t i = 1; i < FItems.size(); ++i) {
    const int r = FItems[i]->RelationWithPoint(Point, Tol);
    if (r == Ord(TShapeRelation::srOn)) return Ord(TShapeRelation::srOn);
    if (r == Ord(TShapeRelation::srIn)) return Ord(TShapeRelation::srOut);
  }
  return Ord(TShapeRelation::srIn);
}

bool TVHPolygon::IsCrossWith(const TVPolyline2D& Polyline) const {
  if (BoundBox().RelationWithRect(Polyline.BoundBox(), DefaultTol) == 0) return false;
  return std::any_of(FItems.begin(), FItems.end(), [&](const TVPolyline2D* L) { return L->IsCrossWith(Polyline); });
}

// TVHPolygonList -------------------------------------------------------------------------

TVHPolygonList::TVHPolygonList(const Clipper::TPolyNode& PolyTree, double Rate) : TVHPolygonList(true) {
  internal::CheckPositiveRate(Rate, "TVHPolygonList.Create");
  AddRegions(*this, PolyTree, Rate, TLegacyTree());
}

TVHPolygonList::TVHPolygonList(const Clipper2::TPolyPath64& PolyTree, double Rate) : TVHPolygonList(true) {
  internal::CheckPositiveRate(Rate, "TVHPolygonList.Create");
  AddRegions(*this, PolyTree, Rate, TTree64());
}

std::unique_ptr<TVGeometry2DList<TVHPolygon>> TVHPolygonList::New(bool AOwnsObjects) const {
  return std::make_unique<TVHPolygonList>(AOwnsObjects);
}

int TVHPolygonList::PtCount() const {
  int n = 0;
  for (const TVHPolygon* polygon : FItems) n += polygon->Count();
  return n;
}

bool TVHPolygonList::CheckClosed() const {
  return std::all_of(FItems.begin(), FItems.end(), [](const TVHPolygon* P) { return P->CheckClosed(); });
}

TPoint2D TVHPolygonList::Gravity() const {
  double a = 0.0;
  TPoint2D s;
  for (const TVHPolygon* polygon : FItems) {
    for (const TVPolyline2D* loop : *polygon) AddCentroidSums(*loop, a, s);
  }
  return Centroid(a, s, BoundBox());
}

double TVHPolygonList::XGravity() const { return Gravity().X; }

TPoint2D TVHPolygonList::GravityOutline() const {
  double a = 0.0;
  TPoint2D s;
  for (const TVHPolygon* polygon : FItems) {
    if (!polygon->IsEmpty()) AddCentroidSums(*polygon->First(), a, s);
  }
  return Centroid(a, s, BoundBox());
}

double TVHPolygonList::XGravityOutline() const { return GravityOutline().X; }

std::uint8_t TVHPolygonList::RelationWithPoint(const TPoint2D& Point, double Tol) const {
  for (const TVHPolygon* polygon : FItems) {
    const std::uint8_t r = polygon->RelationWithPoint(Point, Tol);
    if (r == Ord(TShapeRelation::srOn) || r == Ord(TShapeRelation::srIn)) return r;
  }
  return Ord(TShapeRelation::srOut);
}

bool TVHPolygonList::IsCrossWith(const TVPolyline2D& Polyline) const {
  return std::any_of(FItems.begin(), FItems.end(), [&](const TVHPolygon* P) { return P->IsCrossWith(Polyline); });
}

void TVHPolygonList::SetIsClockwise(bool IsClockwise) {
  for (TVHPolygon* polygon : FItems) polygon->SetIsClockwise(IsClockwise);
}

std::unique_ptr<TVHPolygonList> TVHPolygonList::IntersectSelf() const {
  if (Count() <= 1) return CloneAs<TVHPolygonList>();
  auto usableLoops = [](const TVHPolygon& Polygon) {
    TPaths64 paths;
    for (const TVPolyline2D* loop : Polygon) {
      if (loop->IsClosed(DefaultTol) && loop->Count() >= 3) paths.push_back(loop->ToPath(PathWorkingRate));
    }
    return paths;
  };
  Clipper::TClipper clipper;
  clipper.AddPaths(usableLoops(*FItems.front()), TPathType::ptSubject, true);
  const std::size_t last = FItems.size() - 1;
  for (std::size_t i = 1; i < last; ++i) {
    clipper.AddPaths(usableLoops(*FItems[i]), TPathType::ptClip, true);
    TPaths64 common;
    clipper.Execute(TClipType::ctIntersection, common, TFillRule::frEvenOdd, TFillRule::frEvenOdd);
    clipper.Clear();
    clipper.AddPaths(common, TPathType::ptSubject, true);
  }
  clipper.AddPaths(usableLoops(*FItems[last]), TPathType::ptClip, true);
  Clipper::TPolyTree tree;
  clipper.Execute(TClipType::ctIntersection, &tree, TFillRule::frEvenOdd, TFillRule::frEvenOdd);
  return std::make_unique<TVHPolygonList>(tree, PathWorkingRate);
}

void TVHPolygonList::SortByArea(bool Descending) {
  SortByKey(FItems, Descending, [](const TVHPolygon& P) { return std::fabs(P.Area()); });
}

void TVHPolygonList::SortByRegArea(bool Descending) {
  SortByKey(FItems, Descending, [](const TVHPolygon& P) {
    const double a = std::fabs(P.Area());
    const double b = P.BoundBox().AreaAbs();
    return a * std::max(0.3, a / std::max(1e-6, b));
  });
}

}  // namespace orvane
