#pragma once
// TMelkmanAlgo: the convex hull of a simple polyline in linear time by Melkman's deque
// algorithm. The hull comes back as indices into the input, not as points.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Point2D.h"

namespace orvane {

class ORVANE_API TMelkmanAlgo {
 public:
  TMelkmanAlgo() = delete;

  // Fills rets (created by the caller) with the indices of the hull vertices in ascending
  // order, the first index repeated at the end; the hull therefore runs the way the input
  // runs. A repeated closing point of SrcPoints is not counted. Collinear points on the hull
  // are left out. When the first three points are exactly collinear, point 1 is nudged by
  // (-2.97e-6, 1.82e-6) in SrcPoints itself. Input the plain algorithm rejects is retried
  // on a copy with collinear runs shaken apart; when that fails too (fewer than three
  // points, for one), Exception "Error Input for [MelkmanAlg]" is raised and rets is left
  // as it was. The input must be a simple polyline; a self-crossing one may give a wrong
  // hull.
  //
  // The retry's random step factor comes from a generator seeded the same way on every
  // call, so equal input always gives an equal hull.
  static void CalcConvexHull(TList<TPoint2D>& SrcPoints, TList<int>& rets);

 private:
  // The entry count of rets on success; -1 fewer than three points, -2 the bottom of the
  // deque ran off, -3 its top ran off (rets unchanged in these cases).
  static int MelkmanAlg(TList<TPoint2D>& SrcPoints, TList<int>& rets);
};

}  // namespace orvane
