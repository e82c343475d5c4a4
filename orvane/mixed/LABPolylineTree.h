#pragma once
// TLABPolylineTree: closed mixed outlines nested by containment, by the same rules as
// TVPolyline2DTree; the parity of a node's depth tells material (even) from a hole (odd).
//
// The tree owns the polyline of every node it holds and frees it with the node.

#include <memory>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/vertex/MultiTree.h"

namespace orvane {

class ORVANE_API TLABPolylineTree : public TMultiTree<TLABPolyline*> {
 public:
  // An empty tree.
  TLABPolylineTree() = default;
  // Nests clones of LABPolylines, which stay the caller's. Outlines go in by descending
  // absolute (exact) area, a stable sort; each hangs under the smallest placed outline that
  // holds it. Several outlines outside all others hang at depth 0 under a root without
  // polyline (nil data) at depth -1.
  //
  // Containment is decided by segment start points of the inner outline that are not on
  // the outer one, by vote, then by the segments' own middle points (an arc's or a
  // Bezier's, not the chord's), so outlines that touch nest as they lie; an outline wholly
  // on another's boundary counts inside it, as a duplicate does. Each outline is taken as
  // closed by a line from its last end to its first start; an empty outline, a point and a
  // single line bound nothing and are passed over. A segment that is not finite (a point,
  // or an arc's bulge of NaN) raises EParamError and builds nothing.
  explicit TLABPolylineTree(const TList<TLABPolyline*>& LABPolylines);
  // Frees every node's polyline, then the nodes.
  ~TLABPolylineTree() override;

  // A new owning list of clones of all nodes' polylines in preorder, oriented by Clockwise:
  // 1 by level (clockwise at odd depth, counter-clockwise at even depth), 2 all
  // counter-clockwise, 3 all clockwise, any other value as they are.
  std::unique_ptr<TObjectList<TLABPolyline>> GetLABPolylines(int Clockwise) const;
};

}  // namespace orvane
