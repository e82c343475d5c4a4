#pragma once
// Seeded random polygons for the clipping tests.

#include <cmath>
#include <numbers>
#include <random>

#include "orvane/paths/Path64.h"

namespace cliptest {

// A simple (star-shaped) polygon of Count vertices about (CX, CY), radii in [R / 3, R],
// anticlockwise unless Clockwise.
inline orvane::TPath64 StarPolygon(std::mt19937_64& Rng, std::int64_t CX, std::int64_t CY, double R, int Count,
                                   bool Clockwise = false) {
  std::uniform_real_distribution<double> radius(R / 3, R);
  orvane::TPath64 p;
  for (int i = 0; i < Count; ++i) {
    const double a = 2 * std::numbers::pi * (i + 0.5) / Count;
    const double r = radius(Rng);
    p.emplace_back(CX + std::llround(r * std::cos(a)), CY + std::llround(r * std::sin(a)));
  }
  if (Clockwise) std::reverse(p.begin(), p.end());
  return p;
}

// Count polygons scattered over [0, Extent]^2.
inline orvane::TPaths64 RandomPolygons(std::mt19937_64& Rng, int Count, std::int64_t Extent, double R) {
  std::uniform_int_distribution<std::int64_t> pos(0, Extent);
  std::uniform_int_distribution<int> verts(3, 14);
  orvane::TPaths64 out;
  for (int i = 0; i < Count; ++i) out.push_back(StarPolygon(Rng, pos(Rng), pos(Rng), R, verts(Rng)));
  return out;
}

inline orvane::TPath64 Rect(std::int64_t L, std::int64_t B, std::int64_t R, std::int64_t T) {
  return orvane::TPath64{{L, B}, {R, B}, {R, T}, {L, T}};
}

}  // namespace cliptest
