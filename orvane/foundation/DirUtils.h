#pragma once
// TDirUtils: the nine directions, cursor key codes and quarter turns.

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

class ORVANE_API TDirUtils {
 public:
  TDirUtils() = delete;

  // Cursor key codes 37, 38, 39, 40 to dirLeft, dirUp, dirRight, dirDown.
  static TDir WindowsDirToDir(int WindowsDir);
  // The inverse, for the four axis directions only.
  static int DirToWindowsDir(TDir Dir);
  // Unit vector of an axis direction.
  static TPoint2D DirToVec(TDir Dir);
  // Remainder with the sign of the divisor: 0 .. Divisor - 1 for Divisor > 0, Divisor + 1 .. 0
  // for Divisor < 0. EParamError "[Error] TDirUtils.ModWithDivisor: 参数错误" for a zero divisor.
  static int ModWithDivisor(int Dividend, int Divisor);
  // The opposite direction; dirNone raises.
  static TDir Reverse(TDir Dir);
  // An axis direction turned by N quarter turns counter-clockwise (N may be negative).
  static TDir RotateN90Degrees(TDir OriDir, int N);
};

}  // namespace orvane
