#pragma once
// TPoint2DUtils: exact orderings and small constructions on points.

#include <iosfwd>
#include <string_view>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

class ORVANE_API TPoint2DUtils {
 public:
  TPoint2DUtils() = delete;

  static double GetCoor(const TPoint2D& Pt, int CoorId) { return CoorId == 0 ? Pt.X : Pt.Y; }
  // Sign of the difference in X, then (when exactly equal) in Y; no tolerance.
  static int CompareByXY(const TPoint2D& Left, const TPoint2D& Right);
  static int CompareByYX(const TPoint2D& Left, const TPoint2D& Right);
  // 0 at the exact origin; 1..4 for the open quadrants counter-clockwise from (+, +); on the
  // axes -1 (+X), -2 (+Y), -3 (-X), -4 (-Y).
  static int Quadrant(const TPoint2D& Point);
  static constexpr TPoint2D YMirror(const TPoint2D& Point) { return {-Point.X, Point.Y}; }
  // Mirror image of Pt in the line through Pt1 and Pt2. The line must have a direction:
  // coincident Pt1 and Pt2 raise "[Error] TPoint2DUtils.Mirror: 参数错误".
  static TPoint2D Mirror(const TPoint2D& Pt, const TPoint2D& Pt1, const TPoint2D& Pt2);
  // Vec scaled to Length; a vector of Mag exactly 0 comes back unchanged.
  static TPoint2D Stretch(const TPoint2D& Vec, double Length);
  // Unsigned angle between the vectors, in [0, pi].
  static double AbsAngle(const TPoint2D& Vec1, const TPoint2D& Vec2);
  static double TriangleArea(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3, bool IsAbs);
  // Centre of the inscribed circle; Pt1 when the perimeter is 0 within 1e-12.
  static TPoint2D InCenter(const TPoint2D& Pt1, const TPoint2D& Pt2, const TPoint2D& Pt3);
  // (P2 - P1) x (P3 - P1), not halved: positive when P3 lies left of P1 -> P2.
  static constexpr double IsLeft(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3) {
    return (P2.X - P1.X) * (P3.Y - P1.Y) - (P3.X - P1.X) * (P2.Y - P1.Y);
  }
  // The text dump of one point: Color, a blank, and "(%.16f, %.16f)" (HighPrecision) or
  // "(%f, %f)"; no line end. The colour "#000000" is written as nothing. EInOutError when
  // the stream fails.
  static void WriteToFile(const TPoint2D& Pt, std::ostream& F, std::string_view Color, bool HighPrecision);
};

}  // namespace orvane
