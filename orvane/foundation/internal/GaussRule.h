#pragma once
// Gauss-Legendre nodes and weights on [-1, 1], shared by the quadrature and the Bezier
// length.

#include <vector>

namespace orvane::internal {

struct TGaussRule {
  std::vector<double> X;
  std::vector<double> W;
};

// Rules of up to this many points are built once and then only read.
inline constexpr int MaxTabledGaussOrder = 64;

// The N-point rule, N >= 1.
TGaussRule MakeGaussRule(int N);
// The tabled N-point rule, 1 <= N <= MaxTabledGaussOrder.
const TGaussRule& TabledGaussRule(int N);

}  // namespace orvane::internal
