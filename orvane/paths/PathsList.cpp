#include "orvane/paths/PathsList.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "orvane/paths/clipping/Clipper.h"

namespace orvane {

TPathsList::TPathsList(bool Owns) : FOwns(Owns) {}

TPathsList::~TPathsList() {
  if (!FOwns) return;
  // Last item first, each path released before the list lets go of the item.
  for (auto it = FItems.rbegin(); it != FItems.rend(); ++it) Clipper::FreePaths(*it);
}

int TPathsList::PathCount() const {
  std::int64_t n = 0;
  for (const TPaths64& item : FItems) n += static_cast<std::int64_t>(item.size());
  return static_cast<int>(std::min<std::int64_t>(n, std::numeric_limits<int>::max()));
}

}  // namespace orvane
