#pragma once
// The integer path types shared by the clipping engines and the path operations, and the
// kernel's working scale between drawing units and integer units.

#include <cstdint>
#include <vector>

namespace orvane {

// Integer units per drawing unit in the kernel's own conversions: integer = Round(double *
// rate), double = integer / rate.
inline constexpr double PathWorkingRate = 100000.0;

struct TPoint64 {
  std::int64_t X = 0;
  std::int64_t Y = 0;

  constexpr TPoint64() = default;
  constexpr TPoint64(std::int64_t AX, std::int64_t AY) : X(AX), Y(AY) {}
  friend constexpr bool operator==(const TPoint64& A, const TPoint64& B) = default;
};

// A path; closed paths may or may not repeat their first vertex (each operation says).
using TPath64 = std::vector<TPoint64>;
// Several paths; in many operations entry 0 is an outer contour and the others its holes.
using TPaths64 = std::vector<TPath64>;

struct TRect64 {
  std::int64_t Left = 0;
  std::int64_t Top = 0;
  std::int64_t Right = 0;
  std::int64_t Bottom = 0;

  constexpr TRect64() = default;
  constexpr TRect64(std::int64_t ALeft, std::int64_t ATop, std::int64_t ARight, std::int64_t ABottom)
      : Left(ALeft), Top(ATop), Right(ARight), Bottom(ABottom) {}
  friend constexpr bool operator==(const TRect64& A, const TRect64& B) = default;
};

}  // namespace orvane
