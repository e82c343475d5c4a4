#pragma once
// Entry checks of the curve objects: a transform must be finite, or it would turn a curve
// into NaN coordinates that no later query could recognise.

#include <cmath>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Matrix2D.h"

namespace orvane::internal {

// EParamError "[Error] <Where>: the matrix has a coefficient that is not a finite number".
inline void CheckFiniteMatrix(const TMatrix2D& Mtx, const char* Where) {
  for (const double v : {Mtx.M11, Mtx.M12, Mtx.M21, Mtx.M22, Mtx.DX, Mtx.DY}) {
    if (!std::isfinite(v))
      throw EParamError("[Error] %s: the matrix has a coefficient that is not a finite number", Where);
  }
}

}  // namespace orvane::internal
