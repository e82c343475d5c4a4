#pragma once
// TVPolyline2DTree: closed outlines nested by containment. An outline holds the outlines
// that lie inside it; the parity of a node's depth tells material (even) from a hole (odd).
// TVPolyline2DTreeList: a list of such trees, as a clipper's polygon tree gives them.
//
// The tree owns the polyline of every node it holds and frees it with the node.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/vertex/MultiTree.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

namespace Clipper {
class TPolyNode;
}  // namespace Clipper

class ORVANE_API TVPolyline2DTree : public TMultiTree<TVPolyline2D*> {
 public:
  // An empty tree.
  TVPolyline2DTree() = default;
  // Nests clones of Polylines, which stay the caller's. Outlines go in by descending
  // absolute area (a stable sort: equal areas keep their input order), so an outline can
  // only lie inside one placed before it; each hangs under the smallest placed outline that
  // holds it, tested for every outline alike, the largest included.
  //
  // An outline that lies outside all others is material at depth 0. When there are several
  // such, the root holds no polyline (nil data) and stands at depth -1 with them as its
  // children, so that none of them is taken for a hole of an unrelated outline.
  //
  // Containment is decided by a point of the inner outline that is not on the outer one
  // (its vertices first, then its edge midpoints), so outlines that touch nest as they lie;
  // an outline that lies wholly on another's boundary counts inside it, as a duplicate does.
  // Each polyline is taken as closed from its last vertex to its first; one with fewer than
  // 3 vertices bounds nothing and is passed over. A vertex that is not a finite point
  // raises EParamError and builds nothing.
  explicit TVPolyline2DTree(const TList<TVPolyline2D*>& Polylines);
  // The subtree of a clipper's polygon tree below and including PolyNode, coordinates
  // divided by PathWorkingRate, contours without closing vertex. A node without a contour
  // (a tree's root) leaves the tree empty.
  explicit TVPolyline2DTree(const Clipper::TPolyNode& PolyNode);
  // Frees every node's polyline, then the nodes.
  ~TVPolyline2DTree() override;

  // Frees the present nodes with their polylines, then takes ARoot as the tree's root.
  void SetRoot(std::unique_ptr<TNode> ARoot);

  // The region of the root: its polyline closed and counter-clockwise, its children closed
  // and clockwise as holes. Under a root without polyline, the region of its first child
  // (the largest outline). An empty tree gives an empty polygon.
  std::unique_ptr<TVHPolygon> CreateHPolygon() const;
  // An owning list with one region per node of even depth, in level order: the node as
  // outline, its children as holes. Islands inside holes start regions of their own.
  std::unique_ptr<TVHPolygonList> CreateHPolygons() const;
  // 0 on an outline (1e-6), 1 inside material, -1 outside or in a hole; -1 for an empty
  // tree. EParamError when Point is not finite.
  int RelationWith(const TPoint2D& Point) const;

 private:
  // The polygon of Node and its children.
  static std::unique_ptr<TVHPolygon> CreateHPolygonByNode(const TNode& Node);
  void FreeData();
};

class ORVANE_API TVPolyline2DTreeList : public TMultiTreeList<TVPolyline2D*> {
 public:
  explicit TVPolyline2DTreeList(bool AOwnsObjects = true) : TMultiTreeList<TVPolyline2D*>(AOwnsObjects) {}
  // An owning list with one tree per top-level child of PolyTree.
  explicit TVPolyline2DTreeList(const Clipper::TPolyNode& PolyTree);

  // An owning list with the regions of all trees, tree after tree. Items that are not
  // TVPolyline2DTree (a plain tree added by hand) add nothing.
  std::unique_ptr<TVHPolygonList> CreateHPolygons() const;
  // 0 or 1 from the first tree that gives either, -1 when every tree gives -1 and for an
  // empty list.
  int RelationWith(const TPoint2D& Point) const;
};

}  // namespace orvane
