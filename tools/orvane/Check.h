#pragma once
// The layout check: which parts touch, which overlap and by how much, which lie inside
// another, which stick out of the container. Built only on the kernel's public classes, as
// a host would use them: one monotone polygon per part built once, a sweep over the part
// boxes for candidate pairs, the boundary-contact and point tests, the clipping adapter for
// areas.

#include <functional>
#include <string>
#include <vector>

#include "Layout.h"
#include "orvane/foundation/MathUtils.h"

namespace orvane::tool {

struct TCheckOptions {
  double Tol = DefaultTol;      // parts whose boundaries come within this distance touch
  double MaxOverlap = 1e-5;     // allowed overlap, relative to the smaller part's area
  double MaxProtrusion = 1e-4;  // allowed protrusion, relative to the container's height
};

struct TPairOverlap {
  int A = 0;
  int B = 0;
  double Area = 0.0;
  double Relative = 0.0;             // Area / area of the smaller of the two parts
  bool AboveLimit = false;           // Relative exceeds the allowed overlap
  std::vector<TDynPoints2D> Region;  // the common region, for the picture
};

struct TPhaseSeconds {
  double Build = 0, Candidates = 0, Contact = 0, Containment = 0, OverlapArea = 0, Container = 0;
  double Total() const { return Build + Candidates + Contact + Containment + OverlapArea + Container; }
};

struct TCheckReport {
  std::string Name;
  int Parts = 0;
  int CandidatePairs = 0;
  int ContactPairs = 0;
  // Pairs whose overlap exceeds the allowed share of the smaller part.
  int OverlapPairs = 0;
  // Figures over every pair with a positive common area (round-off overlaps included).
  int PositiveOverlapPairs = 0;
  double OverlapAreaTotal = 0.0;
  double OverlapAreaMax = 0.0;
  double OverlapMaxRelative = 0.0;
  std::vector<int> ContainedParts;  // parts lying wholly inside another part
  std::vector<int> OutsideParts;    // parts sticking out of the container beyond the limit
  double MaxProtrusion = 0.0;       // in drawing units
  bool HasContainer = false;
  std::vector<std::pair<int, int>> Contacts;
  std::vector<TPairOverlap> Overlaps;  // every positive overlap, largest first
  bool Clean = true;
  TPhaseSeconds Seconds;
};

// Progress of a running check: the phase's name and the share of it done, 0 to 1.
using TProgress = std::function<void(const char* Phase, double Done)>;

TCheckReport CheckLayout(const TLayout& Layout, const TCheckOptions& Options, const TProgress& Progress = {});

}  // namespace orvane::tool
