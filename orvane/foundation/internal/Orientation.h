#pragma once
// Exact orientation of three points with integer coordinates: the cross product
// (B - A) x (C - A), twice the signed area of the triangle A B C, positive when C lies to
// the left of A -> B, zero when the three are collinear. Products are taken in 128 bits, so
// no coordinates in the clipper's range (+-HiRange) can make the answer wrong.
//
// The same for doubles is TPoint2DUtils::IsLeft.

#include <cstdint>

namespace orvane::internal {

__extension__ typedef __int128 TInt128;

// TPt is any point with 64-bit integer members X and Y (TPoint64, the engine's IntPoint).
// The differences of coordinates must fit in 64 bits, which the clipper's range guarantees.
template <class TPt>
constexpr TInt128 CrossProduct64(const TPt& A, const TPt& B, const TPt& C) {
  return static_cast<TInt128>(B.X - A.X) * (C.Y - A.Y) - static_cast<TInt128>(B.Y - A.Y) * (C.X - A.X);
}

// The sign of CrossProduct64: 1 left turn, -1 right turn, 0 collinear.
template <class TPt>
constexpr int Orientation64(const TPt& A, const TPt& B, const TPt& C) {
  const TInt128 v = CrossProduct64(A, B, C);
  return (v > 0) - (v < 0);
}

}  // namespace orvane::internal
