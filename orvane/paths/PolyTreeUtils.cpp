#include "orvane/paths/PolyTreeUtils.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace orvane {

namespace {

// Depth first with an explicit stack: a tree of deeply nested rings would overflow the call
// stack if walked by recursion.
template <class TNode>
std::vector<TNode*> Walk(TNode& Root) {
  std::vector<TNode*> out;
  std::vector<TNode*> stack{&Root};
  while (!stack.empty()) {
    TNode* node = stack.back();
    stack.pop_back();
    if (!node->GetPolygon().empty()) out.push_back(node);
    for (int i = node->GetChildCnt(); i-- > 0;) stack.push_back(node->GetChild64(i));
  }
  return out;
}

}  // namespace

std::unique_ptr<TVHPolygonList> TPolyTreeUtils::CreateHPolygons(const Clipper::TPolyTree& PolyTree, double Rate) {
  return std::make_unique<TVHPolygonList>(PolyTree, Rate);
}

std::vector<Clipper2::TPolyPath64*> TPolyTree64Utils::GetAllNodes(Clipper2::TPolyPath64& node) { return Walk(node); }

std::vector<const Clipper2::TPolyPath64*> TPolyTree64Utils::GetAllNodes(const Clipper2::TPolyPath64& node) {
  return Walk(node);
}

int TPolyTree64Utils::GetNodeCount(const Clipper2::TPolyPath64& node) {
  std::int64_t count = 0;
  std::vector<const Clipper2::TPolyPath64*> stack{&node};
  while (!stack.empty()) {
    const Clipper2::TPolyPath64* n = stack.back();
    stack.pop_back();
    ++count;
    for (int i = 0; i < n->GetChildCnt(); ++i) stack.push_back(n->GetChild64(i));
  }
  return static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max()));
}

}  // namespace orvane
