#pragma once
// Helpers shared by the test programs: random outlines and the text of a raised exception.

#include <cmath>
#include <random>
#include <string>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2D.h"

namespace orvane::testing {

// A simple outline (star-shaped about the origin, so simple by construction): vertices at
// increasing angles with random radii between 1 and 10. No closing vertex.
inline TDynPoints2D RandomStar(std::mt19937& Rng, int Corners) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  pts.reserve(static_cast<std::size_t>(Corners) + 1);
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.8 * unit(Rng)) * TwoPi / Corners;
    pts.push_back(TPoint2D(std::cos(a), std::sin(a)) * (1.0 + 9.0 * unit(Rng)));
  }
  return pts;
}

// The message of the kernel exception that Body raises, or "<no exception>".
template <class F>
std::string MessageOf(F&& Body) {
  try {
    Body();
  } catch (const Exception& e) {
    return e.Message;
  }
  return "<no exception>";
}

}  // namespace orvane::testing
