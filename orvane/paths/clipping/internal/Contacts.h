#pragma once
// Internal to the library: the contacts between the edges of closed paths that a clipper
// records while StoreIntersection is on, found by an exact sweep of its own.

#include <clipper.hpp>
#include <cstddef>
#include <vector>

#include "orvane/paths/clipping/Clipper.h"

namespace orvane::internal {

// A closed path that the engine took, kept for the intersection pass as a stretch of one
// point buffer shared by all (so that keeping costs no allocation per path).
struct TKeptPath {
  std::size_t Begin;
  std::size_t Count;
  TPathType Type;
  int Ordinal;
};

// The contacts between the edges of the kept closed paths, appended to Records.
void CollectContacts(const std::vector<ClipperLib::IntPoint>& Points, const std::vector<TKeptPath>& Paths,
                     bool AllIntersection, std::vector<Clipper::TIntersectRecord>& Records);

}  // namespace orvane::internal
