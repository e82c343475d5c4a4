#pragma once
// Internal to the library: offsetting on the engine, with the bevel joins that the engine
// lacks built here.

#include <clipper.hpp>
#include <vector>

#include "orvane/paths/clipping/ClipperTypes.h"

namespace orvane::internal {

// Offsetting on the engine, with bevel joins built here: paths of other join types go to the
// engine, and the two results are united.
class TOffsetJob {
 public:
  struct TGroup {
    ClipperLib::Path Path;
    TJoinType Join;
    TEndType End;
  };
  // Exception "Coordinate exceeds range bounds" for a coordinate beyond +-HiRange; a list is
  // checked whole before any path is added.
  void Add(const TPath64& Path, TJoinType Join, TEndType End);
  void Add(const TPaths64& Paths, TJoinType Join, TEndType End);
  void Clear() { Groups.clear(); }
  // ArcTolerance as the engine reads it (<= 0 means its default of 0.25 units).
  void Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Solution) const;
  void Execute(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::PolyTree& Solution) const;

  std::vector<TGroup> Groups;

 private:
  bool HasBevel() const;
  // Without bevel joins the engine offsets everything on its own: done, and true. False,
  // with Solution untouched, otherwise.
  template <class TSolution>
  bool EngineOnly(double Delta, double MiterLimit, double ArcTolerance, TSolution& Solution) const;
  // Checks Delta (finite, every offset point in range) and answers the arc tolerance to use.
  double Prepare(double Delta, double ArcTolerance) const;
  void EngineOffset(double Delta, double MiterLimit, double ArcTolerance, ClipperLib::Paths& Out) const;
  void BevelOffset(double Delta, double ArcTolerance, ClipperLib::Paths& Out) const;
};

}  // namespace orvane::internal
