#pragma once
// How closed integer paths nest, by geometry alone: the polygons of NormalizeTPaths and any
// tree of outlines built from paths rest on it.

#include <cstddef>
#include <vector>

#include "orvane/paths/Path64.h"

namespace orvane::internal {

// Parent[i] is the nearest path that holds path i, NoParent for a path inside none; Depth[i]
// counts its containers (even: material, odd: a hole). Paths of fewer than 3 vertices bound
// nothing: they have Depth -1 and hold nothing.
struct TNesting {
  static constexpr std::size_t NoParent = static_cast<std::size_t>(-1);
  std::vector<std::size_t> Parent;
  std::vector<int> Depth;
};

TNesting NestPaths(const TPaths64& Paths);

}  // namespace orvane::internal
