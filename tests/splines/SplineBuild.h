#pragma once
// Splines from plain arrays, through the checked writers, for the spline tests.

#include <memory>

#include "orvane/splines/GeSpline2D.h"

namespace orvane::testing {

inline std::unique_ptr<TGeSpline2D> MakeSpline(int Degree, const TDynPoints2D& Pts, const TFloatDynArray& Knots,
                                               const TFloatDynArray& Weights = {}) {
  auto s = std::make_unique<TGeSpline2D>(static_cast<int>(Pts.size()), Degree);
  for (int i = 0; i < static_cast<int>(Pts.size()); ++i) {
    s->SetCtrlPoint(i, Pts[static_cast<std::size_t>(i)]);
    s->SetWeight(i, Weights.empty() ? 1.0 : Weights[static_cast<std::size_t>(i)]);
  }
  for (int i = 0; i < static_cast<int>(Knots.size()); ++i) s->SetKnots(i, Knots[static_cast<std::size_t>(i)]);
  return s;
}

}  // namespace orvane::testing
