#pragma once
// The profile command: a DXF drawing's loose curves joined into contours, the closed ones
// nested into parts and holes, splines recognised as the lines and arcs they are and, on
// request, every free-form curve turned into lines and arcs within a tolerance.

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "DxfDrawing.h"
#include "orvane/curves/GeCurve2D.h"
#include "orvane/foundation/Rect2D.h"

namespace orvane::tool {

struct TProfileOptions {
  double JoinTol = 0.0;  // 0: 1e-6 of the drawing's box diagonal
  double ArcTol = 0.0;   // 0: free-form curves stay as they are
  // The output DXF holds lines and arcs only: with it asked for and no ArcTol, the curves are
  // turned into arcs within 1e-5 of the drawing's diagonal.
  bool WantArcs = false;
};

// One contour: its elements in running order (lines, arcs, and the free-form curves that
// were kept), closed or open.
struct TProfileContour {
  std::vector<std::unique_ptr<TGeCurve2D>> Elements;
  bool Closed = false;
  double Area = 0.0;    // signed, positive counter-clockwise (closed contours)
  double Length = 0.0;
  TRect2D Box = TRect2D::Invalid();
  TDynPoints2D Flat;    // a polygon within a small chord error, for containment and pictures
  int Parent = -1;      // the contour that directly encloses this one
  int Depth = 0;        // even: a part's outline, odd: a hole
};

struct TProfilePart {
  int Outline = 0;         // contour index
  std::vector<int> Holes;  // contour indices
  double Area = 0.0;       // outline minus holes
};

struct TOpenContour {
  int Contour = 0;
  TPoint2D Start, End;
  double Gap = 0.0;  // to the nearest end of another open contour (its own other end when alone)
};

struct TProfileResult {
  std::string File;
  std::map<std::string, int> Read, Ignored;
  int InsUnits = 0;
  std::string Units;
  TRect2D Box = TRect2D::Invalid();
  double JoinTol = 0.0;
  double RecognitionTol = 0.0;  // 0: relative to each spline's own size
  double ArcTol = 0.0;          // free-form curves were turned into arcs within it (0: they were not)
  std::vector<TProfileContour> Contours;
  std::vector<TProfilePart> Parts;  // largest net area first
  std::vector<TOpenContour> Open;
  int Degenerate = 0;  // pieces no larger than the join tolerance, dropped
  int SplinesRead = 0, SplinesAsLines = 0, SplinesAsArcs = 0;
  int CurvesFitted = 0, FitElements = 0;  // free-form curves turned into arcs, and the elements made
  double MaxDeviation = 0.0;              // recognition and fitting, as measured
  bool Strayed = false;                   // a fit measured beyond its tolerance
  bool FitBudgetSpent = false;            // a curve, or the drawing, used up the halvings allowed
  std::vector<std::pair<std::string, double>> Seconds;  // per phase, in order

  // 0: every contour closed and every conversion within its tolerance; 1 otherwise.
  int ExitCode() const;
};

// The whole run on a drawing already read; ParseSeconds goes into the phase times.
TProfileResult ProfileDrawing(const TDxfDrawing& Drawing, const TProfileOptions& Options, double ParseSeconds = 0.0);

// The kind of an element as the report counts it: "line", "arc", "circle", "spline",
// "bezier" or "curve".
std::string ElementKind(const TGeCurve2D& Curve);

void WriteProfileText(std::ostream& Out, const TProfileResult& R);
nlohmann::json ProfileToJson(const TProfileResult& R);
// Closed profiles as closed LWPOLYLINEs with bulges, outlines on layer PARTS and holes on
// HOLES, as an R2000 drawing. Contours that still hold free-form curves are drawn through
// points of their flat polygons.
void WriteProfileDxf(std::ostream& Out, const TProfileResult& R);
// Parts, holes, open contours and gap markers, with a legend.
void WriteProfileSvg(std::ostream& Out, const TProfileResult& R);

}  // namespace orvane::tool
