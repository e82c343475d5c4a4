#pragma once
// A DXF drawing as the profile command sees it: the model space's curves, in drawing
// coordinates, after every block insertion has been expanded, with the count of what was
// read and what was passed over.

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/curves/GeCurve2D.h"

namespace orvane::tool {

// Bad input: the message names the problem (and, where known, the line of the file), without
// the file name; the caller adds it.
class EDxfError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One curve of the drawing.
struct TDxfPiece {
  // TGeLine2D, TGeCircularArc2D (a CIRCLE is a full counter-clockwise arc), TGeSpline2D
  // (SPLINE, and ELLIPSE as an exact rational spline), or for a polyline a TGePolyline2D when
  // it has no bulge and a TGeCompositeCurve2D of lines and arcs when it has; a closed
  // polyline ends where it starts. A block inserted with uneven x and y scales turns its arcs
  // and circles into exact rational splines (ellipse arcs), also inside a composite.
  std::unique_ptr<TGeCurve2D> Curve;
  std::string Entity;  // the DXF entity type it came from: "LINE", "LWPOLYLINE", "SPLINE", ...
  std::string Layer;
};

struct TDxfDrawing {
  std::vector<TDxfPiece> Pieces;
  // Entities that gave curves, by DXF type (those inside inserted blocks counted at each
  // insertion; INSERT itself counted too), and entities passed over (text, dimensions,
  // hatches, points, 3D faces, 3D polylines and meshes, entities on layers not chosen, ...).
  // A SPLINE given by fit points alone counts as ignored under "SPLINE (fit points only)":
  // its curve is the CAD program's own interpolation. Paper-space entities are not counted.
  std::map<std::string, int> Read;
  std::map<std::string, int> Ignored;
  int InsUnits = 0;       // the header's $INSUNITS, 0 when absent
  std::string UnitsName;  // "unitless", "inches", "millimeters", ...
};

// Reads model space. With Layers non-empty, only entities on those layers (compared without
// letter case) are read; the others count as ignored. Entities of a block on layer "0" take
// the layer of their insertion, and an insertion on a layer not chosen hides its block.
// Raises EDxfError for a file that cannot be opened or is not DXF, a truncated file,
// coordinates that are not finite, an INSERT of a missing block (or blocks inserting
// themselves), and a SPLINE whose knots, weights and control points do not fit together.
TDxfDrawing ReadDxfFile(const std::string& Path, const std::vector<std::string>& Layers = {});
TDxfDrawing ReadDxfText(const std::string& Text, const std::vector<std::string>& Layers = {});

}  // namespace orvane::tool
