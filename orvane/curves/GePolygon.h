#pragma once
// TGePolygon: a region as a list of loops that it owns. Loop 0 is the bound, the others are
// holes. The direction of the bound says which side is meant: a counter-clockwise bound
// encloses the region, a clockwise one leaves it outside.

#include <memory>
#include <string>

#include "orvane/curves/GeLoop.h"
#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/foundation/Persistent.h"
#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane {

class ORVANE_API TGePolygon final : public TPersistent {
 public:
  // No loops.
  TGePolygon();
  // One loop, TGeLoop(pnts).
  explicit TGePolygon(const TDynPoints2D& pnts);
  ~TGePolygon() override;

  // Appends loop and takes it over; the first loop added is the bound. EParamError for nil.
  void AddLoop(std::unique_ptr<TGeLoop> loop);
  int GetLoopCount() const { return FLoops.Count(); }
  // Nil when i is not below the count; EListError below 0.
  TGeLoop* GetLoop(int i) const;
  // Nil without loops.
  TGeLoop* GetBound() const;
  // Loop count - 1, so -1 without loops.
  int GetHoleCount() const { return FLoops.Count() - 1; }
  // Loop i + 1; nil when i is not below the hole count.
  TGeLoop* GetHole(int i) const;
  // The bound's box; the invalid box without loops.
  TRect2D GetBoundBox() const;
  // The sum of the loops' signed areas: after Normalize the holes subtract from the bound.
  double GetArea() const;
  // Whether ptHit lies in the region, by PtInPoly of each loop. False without a bound or for
  // a point that is not finite.
  bool IsIn(const TPoint2D& ptHit) const;
  // Orients the bound as BoundClockWise and the holes the other way.
  void Normalize(bool BoundClockWise);
  void Reverse();
  void TransformBy(const TMatrix2D& mtx);
  void TranslateBy(const TPoint2D& vec);

  // Into another TGePolygon: its loops are replaced by clones of these.
  void AssignTo(TPersistent& Dest) const override;
  std::unique_ptr<TGePolygon> Clone() const;
  std::string ClassName() const override;

 private:
  TObjectList<TGeLoop> FLoops{true};
};

}  // namespace orvane
