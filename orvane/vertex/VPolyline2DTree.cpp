#include "orvane/vertex/VPolyline2DTree.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Enums.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/spatial/GenericRTree.h"

namespace orvane {

namespace {

constexpr double NestTol = 1e-6;
constexpr int On = static_cast<int>(TShapeRelation::srOn);
constexpr int In = static_cast<int>(TShapeRelation::srIn);

std::unique_ptr<TVPolyline2D> ClonePolyline(const TVPolyline2D& Polyline) {
  auto copy = static_cast<const IVGeometry2D&>(Polyline).CloneAs<TVPolyline2D>();
  Assert(copy != nullptr, "[Assert] TVPolyline2DTree.Create: a polyline's Clone did not keep its class");
  return copy;
}

// Whether Inner lies inside Outer. The first vertex alone would misjudge outlines that
// touch (a hole whose first vertex sits on the outline, neighbours sharing a corner), so
// only vertices of Inner that are not on Outer count, and they vote: outlines that do not
// cross agree on every vote, and an outline that crosses (a defect hole sticking out of a
// hide) goes where most of its vertices lie, so the part sticking out stays void instead
// of becoming material of its own. Ties go inside; the count stops as soon as the rest
// cannot change the outcome. At most MaxVotes vertices, spread evenly, vote, so that a long
// outline costs a bounded number of passes over the other. When no voting vertex is off
// Outer, as many edge midpoints decide; an outline wholly on the other's boundary encloses
// nothing the other does not and counts inside it, so a duplicate nests under its twin
// and the parity cancels both.
constexpr std::size_t MaxVotes = 64;

bool LiesInside(const TVPolyline2D& Inner, const TVPolyline2D& Outer) {
  const TDynPoints2D& pts = Inner.Points();
  const std::size_t n = pts.size();
  const std::size_t step = (n + MaxVotes - 1) / MaxVotes;
  const std::size_t votes = (n + step - 1) / step;
  std::size_t inside = 0, outside = 0;
  for (std::size_t k = 0; k < votes; ++k) {
    const int r = Outer.RelationWithPoint(pts[k * step], NestTol);
    if (r == In)
      ++inside;
    else if (r != On)
      ++outside;
    const std::size_t rest = votes - k - 1;
    if (inside >= outside + rest || outside > inside + rest) break;
  }
  if (inside + outside > 0) return inside >= outside;
  for (std::size_t i = 0; i < n; i += step) {
    const TPoint2D& a = pts[i];
    const TPoint2D& b = pts[(i + 1) % n];
    const int r = Outer.RelationWithPoint(TPoint2D((a.X + b.X) * 0.5, (a.Y + b.Y) * 0.5), NestTol);
    if (r != On) return r == In;
  }
  return true;
}

}  // namespace

TVPolyline2DTree::TVPolyline2DTree(const TList<TVPolyline2D*>& Polylines) {
  struct TEntry {
    const TVPolyline2D* Polyline;
    double Area;
    TRect2D Box;
  };
  std::vector<TEntry> entries;
  entries.reserve(static_cast<std::size_t>(Polylines.Count()));
  for (const TVPolyline2D* p : Polylines) {
    if (p == nullptr) continue;
    internal::CheckFiniteVertices(p->Points(), "TVPolyline2DTree.Create");
    if (p->Count() < 3) continue;
    entries.push_back({p, std::fabs(p->Area()), p->BoundBox()});
  }
  if (entries.empty()) return;
  // Stable: outlines of equal area keep their input order, so the same input always gives
  // the same tree (the earlier of two duplicates becomes the parent).
  std::stable_sort(entries.begin(), entries.end(), [](const TEntry& A, const TEntry& B) { return A.Area > B.Area; });

  // Placed nodes by index; a box index finds the few placed outlines whose boxes meet the
  // next one (not only those that hold it: an outline that crosses may still belong inside), so a node with many children costs no scan of its siblings. Placed later means
  // smaller, so among the outlines that hold a point the one placed last is the deepest.
  std::vector<TNode*> placed;
  placed.reserve(entries.size());
  std::vector<TNode*> tops;
  TRTree<int> index(16);
  std::vector<int> hits;
  try {
    for (const TEntry& e : entries) {
      hits.clear();
      index.Search(e.Box, hits, NestTol);
      std::sort(hits.begin(), hits.end(), std::greater<int>());
      TNode* parent = nullptr;
      for (const int h : hits) {
        const TNode* candidate = placed[static_cast<std::size_t>(h)];
        if (LiesInside(*e.Polyline, *candidate->GetData())) {
          parent = placed[static_cast<std::size_t>(h)];
          break;
        }
      }
      std::unique_ptr<TVPolyline2D> copy = ClonePolyline(*e.Polyline);
      auto node = std::make_unique<TNode>(copy.get(), 0);
      (void)copy.release();
      TNode* raw = node.release();
      placed.push_back(raw);
      if (parent != nullptr)
        parent->AddChildNode(raw);
      else
        tops.push_back(raw);
      index.Insert(static_cast<int>(placed.size() - 1), e.Box);
    }
  } catch (...) {
    for (TNode* node : placed) {
      delete node->GetData();
      delete node;
    }
    throw;
  }

  if (tops.size() == 1) {
    TMultiTree::SetRoot(std::unique_ptr<TNode>(tops.front()));
    return;
  }
  // Several outlines lie outside all others: each is material, so none may become the
  // child (a hole) of another. A root without polyline at depth -1 holds them at depth 0.
  auto root = std::make_unique<TNode>(nullptr, -1);
  for (TNode* top : tops) root->AddChildNode(top);
  TMultiTree::SetRoot(std::move(root));
  FRoot->SetDepth(-1);
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
