#pragma once
// TPolyTreeUtils and TPolyTree64Utils: small helpers on the result trees of the two clipping
// faces.

#include <memory>
#include <vector>

#include "orvane/foundation/Export.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/clipping/Clipper2.h"
#include "orvane/vertex/VHPolygon.h"

namespace orvane {

class ORVANE_API TPolyTreeUtils {
 public:
  TPolyTreeUtils() = delete;

  // A new owning list of the tree's regions, coordinates divided by Rate: the list's own
  // constructor from a legacy tree (islands inside holes are regions of their own).
  // EParamError when Rate is not a positive finite number.
  static std::unique_ptr<TVHPolygonList> CreateHPolygons(const Clipper::TPolyTree& PolyTree, double Rate);
};

class ORVANE_API TPolyTree64Utils {
 public:
  TPolyTree64Utils() = delete;

  // The nodes of node's subtree, node included, depth first with parents before children,
  // leaving out nodes whose polygon is empty (so a tree's root too); the children of a node
  // left out are still visited. The pointers refer into the tree.
  static std::vector<Clipper2::TPolyPath64*> GetAllNodes(Clipper2::TPolyPath64& node);
  static std::vector<const Clipper2::TPolyPath64*> GetAllNodes(const Clipper2::TPolyPath64& node);
  // The number of nodes of node's subtree, node included.
  static int GetNodeCount(const Clipper2::TPolyPath64& node);
};

}  // namespace orvane
