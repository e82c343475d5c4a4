// TPathUtils: comparison of paths and path lists.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/paths/PathUtils.h"
#include "orvane/paths/clipping/Clipper.h"

namespace orvane {

namespace {

std::uint64_t Mix(std::uint64_t V) {
  V ^= V >> 31;
  V *= 0x9E3779B97F4A7C15ull;
  return V ^ (V >> 29);
}

// A key that two paths share whenever one walks onto the other: the vertex count and an
// order-free sum over the vertices.
std::uint64_t CycleKey(const TPath64& P) {
  std::uint64_t sum = Mix(P.size());
  for (const TPoint64& v : P)
    sum += Mix(static_cast<std::uint64_t>(v.X) * 0xC2B2AE3D27D4EB4Full + static_cast<std::uint64_t>(v.Y));
  return sum;
}

}  // namespace

bool TPathUtils::ComparePath(const TPath64& Path1, const TPath64& Path2, int Path2StartId) {
  if (Path1.size() != Path2.size()) return false;
  if (Path1.empty()) return true;
  const int n = static_cast<int>(Path2.size());
  Assert(Path2StartId >= 0 && Path2StartId < n, "Assertion failure");
  if (Path1[0] != Path2[static_cast<std::size_t>(Path2StartId)]) return false;
  if (n == 1) return true;
  // Two vertices are compared too: a two-vertex path is the same as another only when both of
  // its vertices match.
  const int next = Path2StartId + 1 == n ? 0 : Path2StartId + 1;
  const int step = Path1[1] == Path2[static_cast<std::size_t>(next)] ? 1 : -1;
  int j = Path2StartId + step;
  for (int k = 1; k < n; ++k) {
    if (j < 0) j = n - 1;
    if (j == n) j = 0;
    if (Path1[static_cast<std::size_t>(k)] != Path2[static_cast<std::size_t>(j)]) return false;
    j += step;
  }
  return true;
}

bool TPathUtils::Equal(const TPaths64& Paths1, const TPaths64& Paths2) {
  if (Paths1.size() != Paths2.size()) return false;
  // Equal lengths alone would let an empty path of Paths1 stand for any unmatched path of
  // Paths2; both lists must hold as many non-empty paths.
  auto nonEmpty = [](const TPaths64& P) {
    return std::count_if(P.begin(), P.end(), [](const TPath64& p) { return !p.empty(); });
  };
  if (nonEmpty(Paths1) != nonEmpty(Paths2)) return false;

  // Rows of Paths2 by cycle key, in row order. A row with another key cannot match, so the
  // candidates tried for a path, and the row it takes, are those of a scan of all of Paths2
  // for its first vertex, row by row and vertex by vertex.
  std::unordered_map<std::uint64_t, std::vector<int>> rowsByKey;
  rowsByKey.reserve(Paths2.size());
  for (std::size_t r = 0; r < Paths2.size(); ++r) {
    if (!Paths2[r].empty()) rowsByKey[CycleKey(Paths2[r])].push_back(static_cast<int>(r));
  }
  std::vector<char> used(Paths2.size(), 0);
  for (const TPath64& path : Paths1) {
    if (path.empty()) continue;
    const auto it = rowsByKey.find(CycleKey(path));
    if (it == rowsByKey.end()) return false;
    bool matched = false;
    for (const int row : it->second) {
      if (used[static_cast<std::size_t>(row)]) continue;
      const TPath64& other = Paths2[static_cast<std::size_t>(row)];
      for (std::size_t col = 0; col < other.size() && !matched; ++col) {
        if (other[col] == path[0] && ComparePath(path, other, static_cast<int>(col))) matched = true;
      }
      if (matched) {
        used[static_cast<std::size_t>(row)] = 1;
        break;
      }
    }
    if (!matched) return false;
  }
  return true;
}

bool TPathUtils::IsCongruent(const TPaths64& Left, const TPaths64& Right, TNullable<double> RefArea,
                             double AreaTolerance) {
  double reference = RefArea.Value;
  if (RefArea.GetIsNull()) {
    const double aL = Area(Left, 0);
    const double aR = Area(Right, 0);
    if (std::fabs(aL - aR) >= AreaTolerance) return false;
    reference = (aL + aR) / 2.0;
  }
  Clipper::TClipper clipper;
  clipper.AddPaths(Left, TPathType::ptSubject, true);
  clipper.AddPaths(Right, TPathType::ptClip, true);
  TPaths64 solution;
  clipper.Execute(TClipType::ctIntersection, solution, TFillRule::frPositive, TFillRule::frPositive);
  if (solution.empty()) return false;
  return std::fabs(Area(solution, 0) - reference) < AreaTolerance;
}

}  // namespace orvane
