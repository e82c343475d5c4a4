#include "orvane/foundation/ShapeRelationUtils.h"

#include "orvane/foundation/MathUtils.h"

namespace orvane {

TRangeRelation TShapeRelationUtils::CalcRegionRelation(double L1, double R1, double L2, double R2, double Tol) {
  const int left = CompareValue(L1, L2, Tol);
  if (left < 0) {
    if (CompareValue(R1, L2, Tol) < 0) return TRangeRelation::rgDeviate;
    return CompareValue(R1, R2, Tol) >= 0 ? TRangeRelation::rgContain : TRangeRelation::rgCross;
  }
  if (left > 0) {
    if (CompareValue(R2, L1, Tol) < 0) return TRangeRelation::rgDeviate;
    return CompareValue(R2, R1, Tol) >= 0 ? TRangeRelation::rgContained : TRangeRelation::rgCross;
  }
  return CompareValue(R1, R2, Tol) >= 0 ? TRangeRelation::rgContain : TRangeRelation::rgContained;
}

}  // namespace orvane
