#include "orvane/paths/clipping/internal/ClipperEngine.h"

#include <algorithm>

#include "orvane/foundation/Exception.h"

namespace orvane::internal {

const char* const SOpenPathsMustBeSubject = "AddPath: Open paths must be subject.";
const char* const SCoordinateRange = "Coordinate exceeds range bounds";
const char* const SPolyTreeNeeded = "Error: TPolyTree struct is needed for open path clipping.";

ClipperLib::Paths ToEngine(const TPaths64& Paths) {
  ClipperLib::Paths out(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i) ToEngine(Paths[i], out[i]);
  return out;
}

void FromEngine(const ClipperLib::Paths& Paths, TPaths64& Out) {
  Out.resize(Paths.size());
  for (std::size_t i = 0; i < Paths.size(); ++i) FromEngine(Paths[i], Out[i]);
}

ClipperLib::ClipType ToEngine(TClipType Value) {
  switch (Value) {
    case TClipType::ctIntersection: return ClipperLib::ctIntersection;
    case TClipType::ctUnion: return ClipperLib::ctUnion;
    case TClipType::ctDifference: return ClipperLib::ctDifference;
    case TClipType::ctXor: return ClipperLib::ctXor;
    case TClipType::ctNone: break;
  }
  throw EParamError("[Error] Clipper.Execute: 参数错误");
}

ClipperLib::PolyFillType ToEngine(TFillRule Value) {
  switch (Value) {
    case TFillRule::frEvenOdd: return ClipperLib::pftEvenOdd;
    case TFillRule::frNonZero: return ClipperLib::pftNonZero;
    case TFillRule::frPositive: return ClipperLib::pftPositive;
    case TFillRule::frNegative: return ClipperLib::pftNegative;
  }
  throw EParamError("[Error] Clipper.Execute: 参数错误");
}

ClipperLib::EndType ToEngine(TEndType Value) {
  switch (Value) {
    case TEndType::etPolygon: return ClipperLib::etClosedPolygon;
    case TEndType::etJoined: return ClipperLib::etClosedLine;
    case TEndType::etButt: return ClipperLib::etOpenButt;
    case TEndType::etSquare: return ClipperLib::etOpenSquare;
    case TEndType::etRound: return ClipperLib::etOpenRound;
  }
  throw EParamError("[Error] ClipperOffset.AddPath: 参数错误");
}

void CheckRange(const TPath64& Path) {
  constexpr std::int64_t hi = Clipper::HiRange;
  bool bad = false;
  for (const TPoint64& p : Path) bad |= (p.X > hi) | (p.X < -hi) | (p.Y > hi) | (p.Y < -hi);
  if (bad) throw Exception(SCoordinateRange);
}

void CheckRange(const TPaths64& Paths) {
  for (const TPath64& p : Paths) CheckRange(p);
}

[[noreturn]] void RaiseEngineError(const std::exception& E) {
  const std::string text = E.what();
  if (text == "Coordinate outside allowed range") throw Exception(SCoordinateRange);
  throw Exception(text);
}

// ---- TEngineClipper ----------------------------------------------------------------------

void TEngineClipper::Clear() {
  Engine.Clear();
  Kept.clear();
  KeptPoints.clear();
  Records.clear();
  PathCount = 0;
  HasOpenPaths = false;
}

bool TEngineClipper::AddPath(const TPath64& Path, TPathType Type, bool Closed) {
  if (!Closed && Type == TPathType::ptClip) throw Exception(SOpenPathsMustBeSubject);
  CheckRange(Path);
  return AddChecked(Path, Type, Closed);
}

bool TEngineClipper::AddChecked(const TPath64& Path, TPathType Type, bool Closed) {
  ToEngine(Path, Scratch);
  bool added;
  try {
    added = Engine.AddPath(Scratch, ToEngine(Type), Closed);
  } catch (const ClipperLib::clipperException& e) {
    RaiseEngineError(e);
  }
  const int ordinal = PathCount++;
  if (added) {
    if (!Closed) {
      HasOpenPaths = true;
    } else {
      Kept.push_back(TKeptPath{KeptPoints.size(), Scratch.size(), Type, ordinal});
      KeptPoints.insert(KeptPoints.end(), Scratch.begin(), Scratch.end());
    }
  }
  return added;
}

bool TEngineClipper::AddPaths(const TPaths64& Paths, TPathType Type, bool Closed) {
  if (!Closed && Type == TPathType::ptClip && !Paths.empty()) throw Exception(SOpenPathsMustBeSubject);
  CheckRange(Paths);
  if (Closed) {
    std::size_t points = 0;
    for (const TPath64& p : Paths) points += p.size();
    // Grow once for the whole list, but never below doubling (many small lists stay linear).
    auto grow = [](auto& List, std::size_t Extra) {
      if (List.size() + Extra > List.capacity()) List.reserve(std::max(List.size() + Extra, 2 * List.capacity()));
    };
    grow(KeptPoints, points);
    grow(Kept, Paths.size());
  }
  bool any = false;
  for (const TPath64& p : Paths) any |= AddChecked(p, Type, Closed);
  return any;
}

bool TEngineClipper::ExecutePaths(TClipType ClipType, ClipperLib::Paths& Solution, TFillRule SubjFill,
                                  TFillRule ClipFill) {
  Solution.clear();
  if (Locked) return false;
  if (HasOpenPaths) throw Exception(SPolyTreeNeeded);
  return RunLocked(ClipType, Solution, SubjFill, ClipFill);
}

bool TEngineClipper::ExecuteTree(TClipType ClipType, ClipperLib::PolyTree& Solution, TFillRule SubjFill,
                                 TFillRule ClipFill) {
  if (Locked) return false;
  if (ClipType == TClipType::ctNone) Solution.Clear();
  return RunLocked(ClipType, Solution, SubjFill, ClipFill);
}

template <class TSolution>
bool TEngineClipper::RunLocked(TClipType ClipType, TSolution& Solution, TFillRule SubjFill, TFillRule ClipFill) {
  // The engine refuses re-entry; the lock is released on every way out.
  Locked = true;
  bool ok = true;
  try {
    if (StoreIntersection) RecordIntersections();
    if (ClipType != TClipType::ctNone)
      ok = Engine.Execute(ToEngine(ClipType), Solution, ToEngine(SubjFill), ToEngine(ClipFill));
  } catch (const ClipperLib::clipperException& e) {
    Locked = false;
    RaiseEngineError(e);
  } catch (...) {
    Locked = false;
    throw;
  }
  Locked = false;
  return ok;
}

void TEngineClipper::RecordIntersections() {
  Records.clear();
  if (Records.capacity() < 20000) Records.reserve(20000);
  CollectContacts(KeptPoints, Kept, AllIntersection, Records);
}

void EngineUnion(const ClipperLib::Paths& Paths, ClipperLib::PolyFillType Fill, ClipperLib::Paths& Out) {
  ClipperLib::Clipper c;
  c.AddPaths(Paths, ClipperLib::ptSubject, true);
  c.Execute(ClipperLib::ctUnion, Out, Fill, Fill);
}

}  // namespace orvane::internal
