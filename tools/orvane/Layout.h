#pragma once
// Reading sheet layouts: the placed-solution files of the nesting benchmarks (one solution,
// or several under "solutions") and the tool's own minimal format
//   {"container": [[x,y],...], "parts": [{"id": ..., "outer": [[x,y],...], "holes": [...]}]}.

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/foundation/Point2D.h"
#include "orvane/vertex/VPolyline2D.h"

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
};

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

// A ring as the kernel's closed outline: its first vertex repeated at the end.
TVPolyline2D ClosedPolyline(const TDynPoints2D& Ring);

// Parses a file into its solutions (one layout for single-solution files). Raises
// ELayoutError for unreadable files, malformed JSON, rings of fewer than three vertices,
// coordinates that are not finite, and placements naming an unknown shape.
std::vector<TLayout> ReadLayoutFile(const std::string& Path);
std::vector<TLayout> ParseLayout(const std::string& Text, const std::string& Name);
// The same reader on nlohmann's parser alone: ParseLayout falls back on it for the words of
// every fault in the JSON itself, and it is the reference that ParseLayout is measured and
// tested against.
std::vector<TLayout> ParseLayoutWithNlohmann(const std::string& Text, const std::string& Name);

}  // namespace orvane::tool
