#include "orvane/vertex/VPolyline2DTree.h"

#include <cmath>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/internal/OutlineNesting.h"

namespace orvane {

namespace {

constexpr double NestTol = internal::NestTol;
constexpr int On = static_cast<int>(TShapeRelation::srOn);
constexpr int In = static_cast<int>(TShapeRelation::srIn);

std::unique_ptr<TVPolyline2D> ClonePolyline(const TVPolyline2D& Polyline) {
  auto copy = static_cast<const IVGeometry2D&>(Polyline).CloneAs<TVPolyline2D>();
  Assert(copy != nullptr, "[Assert] TVPolyline2DTree.Create: a polyline's Clone did not keep its class");
  return copy;
}

// A vertex outline to the nesting: its pieces are its edges, the last one closing from the
// last vertex to the first.
struct TPolylineNesting {
  using TOutline = TVPolyline2D;
  static void Check(const TVPolyline2D& P) { internal::CheckFiniteVertices(P.Points(), "TVPolyline2DTree.Create"); }
  static bool BoundsNothing(const TVPolyline2D& P) { return P.Count() < 3; }
  static double AbsArea(const TVPolyline2D& P) { return std::fabs(P.Area()); }
  static TRect2D Box(const TVPolyline2D& P) { return P.BoundBox(); }
  static std::size_t PieceCount(const TVPolyline2D& P) { return P.Points().size(); }
  static TPoint2D VotePoint(const TVPolyline2D& P, std::size_t I) { return P.Points()[I]; }
  static TPoint2D MidPoint(const TVPolyline2D& P, std::size_t I) {
    const TDynPoints2D& pts = P.Points();
    const TPoint2D& a = pts[I];
    const TPoint2D& b = pts[(I + 1) % pts.size()];
    return {(a.X + b.X) * 0.5, (a.Y + b.Y) * 0.5};
  }
  static int Relation(const TVPolyline2D& Outer, const TPoint2D& Pt) { return Outer.RelationWithPoint(Pt, NestTol); }
  static std::unique_ptr<TVPolyline2D> Clone(const TVPolyline2D& P) { return ClonePolyline(P); }
};

}  // namespace

TVPolyline2DTree::TVPolyline2DTree(const TList<TVPolyline2D*>& Polylines) {
  internal::AdoptNesting<TPolylineNesting>(*this, Polylines);
}

TVPolyline2DTree::TVPolyline2DTree(const Clipper::TPolyNode& PolyNode) {
  if (PolyNode.GetContour().empty()) return;
  auto rootData = std::make_unique<TVPolyline2D>(PolyNode.GetContour(), PathWorkingRate);
  TMultiTree::SetRoot(std::make_unique<TNode>(rootData.get(), 0));
  (void)rootData.release();
  // Depth first by an explicit stack, so deep trees need no recursion.
  std::vector<std::pair<const Clipper::TPolyNode*, TNode*>> stack{{&PolyNode, FRoot}};
  while (!stack.empty()) {
    const auto [source, target] = stack.back();
    stack.pop_back();
    for (int i = 0; i < source->GetChildCount(); ++i) {
      const Clipper::TPolyNode* child = source->GetChild(i);
      auto data = std::make_unique<TVPolyline2D>(child->GetContour(), PathWorkingRate);
      auto node = std::make_unique<TNode>(data.get());
      (void)data.release();
      target->AddChildNode(node.get());
      stack.emplace_back(child, node.release());
    }
  }
}

TVPolyline2DTree::~TVPolyline2DTree() { FreeData(); }

void TVPolyline2DTree::FreeData() {
  std::unique_ptr<TNodeList> nodes = PreorderTraversal();
  for (TNode* node : *nodes) {
    delete node->GetData();
    node->SetData(nullptr);
  }
}

void TVPolyline2DTree::SetRoot(std::unique_ptr<TNode> ARoot) {
  if (ARoot != nullptr && ARoot->GetParent() != nullptr)
    throw EParamError("[Error] TVPolyline2DTree.SetRoot: the node already has a parent");
  FreeData();
  TMultiTree::SetRoot(std::move(ARoot));
}

std::unique_ptr<TVHPolygon> TVPolyline2DTree::CreateHPolygonByNode(const TNode& Node) {
  auto polygon = std::make_unique<TVHPolygon>(false);
  if (Node.GetData() == nullptr) return polygon;
  std::unique_ptr<TVPolyline2D> outline = ClonePolyline(*Node.GetData());
  outline->ConnectHeadTail();
  outline->SetIsClockwise(false);
  polygon->Add(std::move(outline));
  for (const TNode* child : Node.GetChildNodes()) {
    if (child->GetData() == nullptr) continue;
    std::unique_ptr<TVPolyline2D> hole = ClonePolyline(*child->GetData());
    hole->ConnectHeadTail();
    hole->SetIsClockwise(true);
    polygon->Add(std::move(hole));
  }
  return polygon;
}

std::unique_ptr<TVHPolygon> TVPolyline2DTree::CreateHPolygon() const {
  if (FRoot == nullptr) return std::make_unique<TVHPolygon>(false);
  if (FRoot->GetData() == nullptr && FRoot->ChildCount() > 0) return CreateHPolygonByNode(*FRoot->ChildNode(0));
  return CreateHPolygonByNode(*FRoot);
}

std::unique_ptr<TVHPolygonList> TVPolyline2DTree::CreateHPolygons() const {
  auto result = std::make_unique<TVHPolygonList>(true);
  std::unique_ptr<TNodeList> nodes = HierarchicalTraversal();
  for (const TNode* node : *nodes) {
    if (node->GetData() != nullptr && node->GetDepth() % 2 == 0) result->Add(CreateHPolygonByNode(*node));
  }
  return result;
}

int TVPolyline2DTree::RelationWith(const TPoint2D& Point) const {
  internal::CheckFinitePoint(Point, "TVPolyline2DTree.RelationWith", "Point");
  if (FRoot == nullptr) return -1;
  const TNode* current = FRoot;
  if (const TVPolyline2D* root = current->GetData(); root != nullptr) {
    const int r = root->RelationWithPoint(Point, NestTol);
    if (r == On) return 0;
    if (r != In) return -1;
  }
  // Each step goes one level down, so the walk ends within the tree's depth.
  for (;;) {
    const TNode* next = nullptr;
    for (const TNode* child : current->GetChildNodes()) {
      if (child->GetData() == nullptr) continue;
      const int r = child->GetData()->RelationWithPoint(Point, NestTol);
      if (r == On) return 0;
      if (r == In) {
        next = child;
        break;
      }
    }
    if (next == nullptr) break;
    current = next;
  }
  // Depth -1, a root without polyline, is odd: outside every outline.
  return current->GetDepth() % 2 == 0 ? 1 : -1;
}

TVPolyline2DTreeList::TVPolyline2DTreeList(const Clipper::TPolyNode& PolyTree) : TVPolyline2DTreeList(true) {
  for (int i = 0; i < PolyTree.GetChildCount(); ++i) Add(std::make_unique<TVPolyline2DTree>(*PolyTree.GetChild(i)));
}

std::unique_ptr<TVHPolygonList> TVPolyline2DTreeList::CreateHPolygons() const {
  auto result = std::make_unique<TVHPolygonList>(true);
  for (const TMultiTree<TVPolyline2D*>* tree : *this) {
    const auto* polylineTree = dynamic_cast<const TVPolyline2DTree*>(tree);
    if (polylineTree == nullptr) continue;
    std::unique_ptr<TVHPolygonList> polygons = polylineTree->CreateHPolygons();
    // Handed over from the back, so that each extraction is cheap, then put in order.
    std::vector<std::unique_ptr<TVHPolygon>> taken;
    while (polygons->Count() > 0) taken.push_back(polygons->ExtractAt(polygons->Count() - 1));
    for (auto it = taken.rbegin(); it != taken.rend(); ++it) result->Add(std::move(*it));
  }
  return result;
}

int TVPolyline2DTreeList::RelationWith(const TPoint2D& Point) const {
  for (const TMultiTree<TVPolyline2D*>* tree : *this) {
    const auto* polylineTree = dynamic_cast<const TVPolyline2DTree*>(tree);
    if (polylineTree == nullptr) continue;
    const int r = polylineTree->RelationWith(Point);
    if (r != -1) return r;
  }
  return -1;
}

}  // namespace orvane
