#pragma once
// The SPLINE entities of a DXF file, for tests that run on drawing data.

#include <filesystem>
#include <vector>

#include "orvane/foundation/Point2D.h"
#include "support/DxfEntities.h"

namespace orvane::testing {

struct TDxfSpline {
  int Flags = 0, Degree = 0;
  TFloatDynArray Knots, Weights;
  TDynPoints2D Pts;
};

inline std::vector<TDxfSpline> ReadDxfSplines(const std::filesystem::path& File) {
  std::vector<TDxfSpline> out;
  for (const TDxfEntity& e : ReadDxfEntities(File)) {
    if (e.Kind != "SPLINE") continue;
    TDxfSpline s{static_cast<int>(e.Num(70)), static_cast<int>(e.Num(71)), e.All(40), e.All(41), {}};
    const std::vector<double> xs = e.All(10), ys = e.All(20);
    for (std::size_t i = 0; i < xs.size() && i < ys.size(); ++i) s.Pts.emplace_back(xs[i], ys[i]);
    out.push_back(std::move(s));
  }
  return out;
}

}  // namespace orvane::testing
