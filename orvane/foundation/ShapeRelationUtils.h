#pragma once
// TShapeRelationUtils: classification of one range against another.

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"

namespace orvane {

class ORVANE_API TShapeRelationUtils {
 public:
  TShapeRelationUtils() = delete;

  // [L1, R1] against [L2, R2], ends compared with CompareValue under Tol. Expects L1 <= R1
  // and L2 <= R2. Two equal ranges give rgContain; a touching end is not apart (rgCross).
  static TRangeRelation CalcRegionRelation(double L1, double R1, double L2, double R2, double Tol);
};

}  // namespace orvane
