#pragma once
// The largest value of a function on [Lo, Hi] that holds one peak there: a golden-section
// search that keeps the better of its two inner points. Used to sharpen the worst of a row of
// samples, between the samples on either side of it.

#include <algorithm>

namespace orvane::internal {

template <class F>
double GoldenSectionMax(F Fn, double Lo, double Hi, int Iterations) {
  constexpr double g = 0.6180339887498949;  // (sqrt(5) - 1) / 2
  double x1 = Hi - g * (Hi - Lo);
  double x2 = Lo + g * (Hi - Lo);
  double f1 = Fn(x1);
  double f2 = Fn(x2);
  for (int it = 0; it < Iterations; ++it) {
    if (f1 > f2) {
      Hi = x2;
      x2 = x1;
      f2 = f1;
      x1 = Hi - g * (Hi - Lo);
      f1 = Fn(x1);
    } else {
      Lo = x1;
      x1 = x2;
      f1 = f2;
      x2 = Lo + g * (Hi - Lo);
      f2 = Fn(x2);
    }
  }
  return std::max(f1, f2);
}

}  // namespace orvane::internal
