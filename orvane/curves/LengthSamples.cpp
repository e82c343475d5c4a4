#include "orvane/curves/LengthSamples.h"

#include <algorithm>
#include <cmath>

namespace orvane {

double TLengthSamples::Interval() const { return IsEmpty() ? 0.0 : Last().X - First().X; }

double TLengthSamples::Length() const { return IsEmpty() ? 0.0 : Last().Y - First().Y; }

double TLengthSamples::LengthAtParam(double Param) const {
  if (IsEmpty()) return 0.0;
  const TPoint2D first = First();
  const TPoint2D last = Last();
  if (Param >= last.X - 1e-6) return last.Y;
  if (Param <= first.X + 1e-6) return first.Y;
  if (std::fabs(last.X - first.X) <= 1e-6) return first.Y;
  const int n = Count();
  // Both ends are settled above, so the bracketing entries i, i + 1 exist.
  int i = static_cast<int>(std::floor(n * (Param - first.X) / (last.X - first.X)));
  i = std::clamp(i, 0, n - 2);
  while (i < n - 2 && Param > (*this)[i + 1].X) ++i;
  while (i > 0 && (*this)[i].X > Param) --i;
  const TPoint2D a = (*this)[i];
  const TPoint2D b = (*this)[i + 1];
  if (b.X == a.X) return a.Y;
  return a.Y + (Param - a.X) * (b.Y - a.Y) / (b.X - a.X);
}

double TLengthSamples::ParamOfLength(double Length, bool IsClosed) const {
  if (IsEmpty()) return 0.0;
  const TPoint2D first = First();
  const TPoint2D last = Last();
  const int n = Count();
  if (n == 1 || std::fabs(last.Y - first.Y) <= 1e-6) return first.X;
  if (Length >= last.Y) {
    if (!IsClosed) return last.X;
    return ParamOfLength(std::max(first.Y, Length - (last.Y - first.Y)), false);
  }
  if (first.Y > Length) {
    if (!IsClosed) return first.X;
    return ParamOfLength(Length + (last.Y - first.Y), false);
  }
  int i = static_cast<int>(std::floor(n * (Length - first.Y) / (last.Y - first.Y)));
  i = std::clamp(i, 0, n - 2);
  while (i < n - 2 && Length > (*this)[i + 1].Y) ++i;
  while (i > 0 && (*this)[i].Y >= Length) --i;
  const TPoint2D a = (*this)[i];
  const TPoint2D b = (*this)[i + 1];
  if (b.Y == a.Y) return a.X;
  return a.X + (Length - a.Y) * (b.X - a.X) / (b.Y - a.Y);
}

}  // namespace orvane
