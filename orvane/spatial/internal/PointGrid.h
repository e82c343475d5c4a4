#pragma once
// Internal to the library: TPointGrid, a hash of points by grid cell for finding the points
// near a point under a tolerance in about constant time.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

// Points hashed by grid cell. A cell is at least four tolerances wide, so the points within
// the tolerance of a point lie in at most two cells per axis. Cells are also kept coarse
// enough that their indices stay far inside 64 bits and the rounding of a coordinate is a
// small fraction of a cell. Points that are not finite equal nothing within a finite
// tolerance and are never indexed. The grid reads the caller's points, which must outlive
// it; Add enters one of them by its index.
class TPointGrid {
 public:
  TPointGrid(const std::vector<TPoint2D>& Pts, double Tol) : FPts(Pts) {
    double x0 = std::numeric_limits<double>::infinity();
    double y0 = x0;
    double x1 = -x0;
    double y1 = -x0;
    double magnitude = 0.0;
    for (const TPoint2D& p : Pts) {
      if (!IsFinite(p)) continue;
      x0 = std::min(x0, p.X);
      x1 = std::max(x1, p.X);
      y0 = std::min(y0, p.Y);
      y1 = std::max(y1, p.Y);
      magnitude = std::max({magnitude, std::fabs(p.X), std::fabs(p.Y)});
    }
    const bool any = x0 <= x1;
    FOrgX = any ? x0 : 0.0;
    FOrgY = any ? y0 : 0.0;
    const double extent = any ? std::max(x1 - x0, y1 - y0) : 0.0;
    FCell = std::max({4.0 * Tol, extent * 0x1p-30, magnitude * 0x1p-40, std::numeric_limits<double>::min()});
    FReach = Tol / FCell + 1e-2;
    const std::size_t buckets = std::bit_ceil(std::max<std::size_t>(16, 2 * Pts.size()));
    FMask = buckets - 1;
    FHeads.assign(buckets, -1);
    FNext.assign(Pts.size(), -1);
    FTags.assign(Pts.size(), 0);
  }

  void Add(std::int32_t Id) {
    const TPoint2D& p = FPts[static_cast<std::size_t>(Id)];
    if (!IsFinite(p)) return;
    const auto i = static_cast<std::size_t>(Id);
    const std::uint64_t h = Hash(static_cast<std::int64_t>(std::floor((p.X - FOrgX) / FCell)),
                                 static_cast<std::int64_t>(std::floor((p.Y - FOrgY) / FCell)));
    FTags[i] = static_cast<std::uint32_t>(h >> 32);
    std::int32_t& head = FHeads[h & FMask];
    FNext[i] = head;
    head = Id;
  }

  // Visits every indexed point that may lie within the tolerance of P (and some that do not).
  template <class TVisit>
  void ForEachNear(const TPoint2D& P, TVisit&& Visit) const {
    const double qx = (P.X - FOrgX) / FCell;
    const double qy = (P.Y - FOrgY) / FCell;
    // Far outside the indexed cells, or not finite: nothing is near.
    if (!(std::fabs(qx) < 0x1p60 && std::fabs(qy) < 0x1p60)) return;
    const auto cx0 = static_cast<std::int64_t>(std::floor(qx - FReach));
    const auto cx1 = static_cast<std::int64_t>(std::floor(qx + FReach));
    const auto cy0 = static_cast<std::int64_t>(std::floor(qy - FReach));
    const auto cy1 = static_cast<std::int64_t>(std::floor(qy + FReach));
    for (std::int64_t cx = cx0; cx <= cx1; ++cx) {
      for (std::int64_t cy = cy0; cy <= cy1; ++cy) {
        const std::uint64_t h = Hash(cx, cy);
        const auto tag = static_cast<std::uint32_t>(h >> 32);
        for (std::int32_t id = FHeads[h & FMask]; id >= 0; id = FNext[static_cast<std::size_t>(id)]) {
          if (FTags[static_cast<std::size_t>(id)] == tag) Visit(id);
        }
      }
    }
  }

 private:
  // The low bits pick the bucket, the high 32 bits tag the cell, so that a bucket's other
  // cells are mostly passed over (a tag shared by two cells only adds candidates).
  static std::uint64_t Hash(std::int64_t CX, std::int64_t CY) {
    std::uint64_t h = static_cast<std::uint64_t>(CX) * 0x9E3779B97F4A7C15ull;
    h ^= (static_cast<std::uint64_t>(CY) + 0x632BE59BD9B4E019ull) * 0xC2B2AE3D27D4EB4Full;
    return h ^ (h >> 29);
  }

  const std::vector<TPoint2D>& FPts;
  double FOrgX = 0.0;
  double FOrgY = 0.0;
  double FCell = 1.0;
  double FReach = 0.0;
  std::uint64_t FMask = 0;
  std::vector<std::int32_t> FHeads;
  std::vector<std::int32_t> FNext;
  std::vector<std::uint32_t> FTags;
};

}  // namespace orvane::internal
