#pragma once
// Internal to the library: the bridge between the kernel's path types and the polyclipping
// engine, shared by both clipping faces. Hosts never include this header.

#include <clipper.hpp>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "orvane/paths/clipping/Clipper.h"
#include "orvane/paths/clipping/internal/Contacts.h"

namespace orvane::internal {

// Applies Fn to every path of a path list, giving the list of the results.
template <class TPathsIn, class F>
auto MapPaths(const TPathsIn& Paths, F&& Fn) {
  std::vector<std::decay_t<decltype(Fn(Paths.front()))>> out;
  out.reserve(Paths.size());
  for (const auto& p : Paths) out.push_back(Fn(p));
  return out;
}

static_assert(sizeof(ClipperLib::IntPoint) == sizeof(TPoint64) && std::is_trivially_copyable_v<ClipperLib::IntPoint> &&
                  std::is_trivially_copyable_v<TPoint64>,
              "TPoint64 and the engine's point must share one layout for bulk conversion");

inline void ToEngine(const TPath64& Path, ClipperLib::Path& Out) {
  Out.resize(Path.size());
  if (!Path.empty()) std::memcpy(static_cast<void*>(Out.data()), Path.data(), Path.size() * sizeof(TPoint64));
}
inline ClipperLib::Path ToEngine(const TPath64& Path) {
  ClipperLib::Path out;
  ToEngine(Path, out);
  return out;
}
ClipperLib::Paths ToEngine(const TPaths64& Paths);

inline void FromEngine(const ClipperLib::Path& Path, TPath64& Out) {
  Out.resize(Path.size());
  if (!Path.empty()) std::memcpy(static_cast<void*>(Out.data()), Path.data(), Path.size() * sizeof(TPoint64));
}
inline TPath64 FromEngine(const ClipperLib::Path& Path) {
  TPath64 out;
  FromEngine(Path, out);
  return out;
}
// Replaces Out by the converted paths.
void FromEngine(const ClipperLib::Paths& Paths, TPaths64& Out);
inline TPaths64 FromEngine(const ClipperLib::Paths& Paths) {
  TPaths64 out;
  FromEngine(Paths, out);
  return out;
}

ClipperLib::ClipType ToEngine(TClipType Value);
ClipperLib::PolyFillType ToEngine(TFillRule Value);
inline ClipperLib::PolyType ToEngine(TPathType Value) {
  return Value == TPathType::ptSubject ? ClipperLib::ptSubject : ClipperLib::ptClip;
}
ClipperLib::EndType ToEngine(TEndType Value);

// Exception "Coordinate exceeds range bounds" when a coordinate leaves +-HiRange.
void CheckRange(const TPath64& Path);
void CheckRange(const TPaths64& Paths);

extern const char* const SOpenPathsMustBeSubject;
extern const char* const SCoordinateRange;
extern const char* const SPolyTreeNeeded;

// The engine clipper with what the faces add: checked input, the open-path flag, the kept
// closed paths for intersection recording, and the re-entry lock.
class TEngineClipper {
 public:
  void Clear();
  // Checks first (open clip path, range), then adds; closed paths the engine takes are kept
  // for the intersection pass.
  bool AddPath(const TPath64& Path, TPathType Type, bool Closed);
  bool AddPaths(const TPaths64& Paths, TPathType Type, bool Closed);
  // Runs the engine; ctNone succeeds with nothing. Engine failures other than the sweep's own
  // False come back as orvane::Exception with the engine's text.
  bool ExecutePaths(TClipType ClipType, ClipperLib::Paths& Solution, TFillRule SubjFill, TFillRule ClipFill);
  bool ExecuteTree(TClipType ClipType, ClipperLib::PolyTree& Solution, TFillRule SubjFill, TFillRule ClipFill);
  template <class TSolution>
  bool RunLocked(TClipType ClipType, TSolution& Solution, TFillRule SubjFill, TFillRule ClipFill);
  void RecordIntersections();
  bool AddChecked(const TPath64& Path, TPathType Type, bool Closed);

  ClipperLib::Clipper Engine;
  ClipperLib::Path Scratch;
  std::vector<ClipperLib::IntPoint> KeptPoints;
  std::vector<TKeptPath> Kept;
  std::vector<Clipper::TIntersectRecord> Records;
  int PathCount = 0;
  bool HasOpenPaths = false;
  bool Locked = false;
  bool StoreIntersection = false;
  bool AllIntersection = false;
};

// Union of closed subject paths on the engine.
void EngineUnion(const ClipperLib::Paths& Paths, ClipperLib::PolyFillType Fill, ClipperLib::Paths& Out);

// Raises the engine's own failure text as the kernel's root exception.
[[noreturn]] void RaiseEngineError(const std::exception& E);

}  // namespace orvane::internal
