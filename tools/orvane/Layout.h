#pragma once
// Reading sheet layouts: the placed-solution files of the nesting benchmarks (one solution,
// or several under "solutions") and the tool's own minimal format
//   {"container": [[x,y],...], "parts": [{"id": ..., "outer": [[x,y],...], "holes": [...]}]},
// where a part's vertex may be [x, y, bulge]: the segment that starts there is an arc whose
// bulge is the tangent of a quarter of its sweep, positive counter-clockwise, as in DXF.

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/foundation/Point2D.h"
#include "orvane/foundation/Rect2D.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {
class TLABPolyline;
}

namespace orvane::tool {

// Bad input: the message says what is wrong, without the file name (the caller adds it).
class ELayoutError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct TLayoutPart {
  std::string Id;      // the part's id or shape number, as text
  TDynPoints2D Outer;  // never repeats its first vertex
  std::vector<TDynPoints2D> Holes;
  // Empty for a part of straight edges. Otherwise one list per ring, the outer ring first,
  // then the holes in order, each giving the bulge of the segment that starts at each of
  // the ring's vertices (0 for a straight edge).
  std::vector<std::vector<double>> Bulges;

  bool HasArcs() const { return !Bulges.empty(); }
  std::size_t RingCount() const { return 1 + Holes.size(); }
  // Ring 0 is the outer ring, ring k the hole k - 1.
  const TDynPoints2D& Ring(std::size_t K) const { return K == 0 ? Outer : Holes[K - 1]; }
  // The ring's bulges, or nullptr for a part of straight edges.
  const std::vector<double>* RingBulges(std::size_t K) const { return HasArcs() ? &Bulges[K] : nullptr; }
};

// The largest bulge read: an arc a millionth of a turn short of a full circle.
inline constexpr double MaxBulge = 1e6;
// Smaller bulges read as straight edges: their arcs stray from the chord by less than half
// a millionth of its length, within the chords that overlap areas are measured on, and the
// mixed regions take such arcs for lines too.
inline constexpr double MinBulge = 1e-6;

// The figures a file states about itself, when it has them.
struct TExpectedChecks {
  bool Clean = false;
  double OverlapMaxRelative = 0.0;
  double MaxProtrusion = 0.0;
};

struct TLayout {
  std::string Name;        // file name, plus the solution's algorithm when there are several
  TDynPoints2D Container;  // empty when the file gives none
  double ContainerHeight = 0.0;
  std::vector<TLayoutPart> Parts;
  std::optional<TExpectedChecks> Expected;
};

// A ring as the kernel's closed mixed outline: from each vertex a line, or an arc where
// Bulges (nullptr for none) gives one.
std::unique_ptr<TLABPolyline> ArcPolyline(const TDynPoints2D& Ring, const std::vector<double>* Bulges);
// The part's extent, arcs included.
TRect2D PartBox(const TLayoutPart& Part);
// The part's rings with each arc cut into just enough chords to stay within 1e-6 of the
// part's size: what its areas are measured on. The vertices themselves for a part without
// arcs.
std::vector<TDynPoints2D> LinearRings(const TLayoutPart& Part);

// Parses a file into its solutions (one layout for single-solution files). Raises
// ELayoutError for unreadable files, malformed JSON, rings of fewer than three vertices (two
// when one edge is an arc), coordinates or bulges that are not finite, bulges beyond
// MaxBulge, and placements naming an unknown shape.
std::vector<TLayout> ReadLayoutFile(const std::string& Path);
std::vector<TLayout> ParseLayout(const std::string& Text, const std::string& Name);
// The same reader on nlohmann's parser alone: ParseLayout falls back on it for the words of
// every fault in the JSON itself, and it is the reference that ParseLayout is measured and
// tested against.
std::vector<TLayout> ParseLayoutWithNlohmann(const std::string& Text, const std::string& Name);

}  // namespace orvane::tool
