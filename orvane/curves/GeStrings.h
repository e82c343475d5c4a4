#pragma once
// The texts that curve objects print. They start at their Chinese defaults when the library
// loads; the host replaces them through its locale resource (section "GeometryStrings",
// each text under its own name; SGePolyBezierSegFmt is never replaced) and the library
// empties them when it unloads. Hosts may read and write them; the library reads them
// without a lock, so a host changes them only while no curve text is being built.

#include <string>

#include "orvane/foundation/Export.h"

namespace orvane {

ORVANE_API extern std::string SGeLineFmt;
ORVANE_API extern std::string SGeCirArc2DFmt;
ORVANE_API extern std::string SGeCW;
ORVANE_API extern std::string SGeCCW;
ORVANE_API extern std::string SGePolySegFmt;
ORVANE_API extern std::string SGePolyBezier;
ORVANE_API extern std::string SGePolyBezierSegFmt;
ORVANE_API extern std::string SGeKnotCountFmt;
ORVANE_API extern std::string SGeCtrlPt;
ORVANE_API extern std::string SGeSplineFmt;
ORVANE_API extern std::string SGeSplineInfoFmt;
ORVANE_API extern std::string SGePolylineFmt;
ORVANE_API extern std::string SGeKnot;
ORVANE_API extern std::string SGeClosedCompCurveFmt;
ORVANE_API extern std::string SGeCompCurveFmt;
ORVANE_API extern std::string SGeWrapCurve;

// The section of the locale resource that holds these texts.
inline constexpr const char* GeometryStringsSection = "GeometryStrings";

}  // namespace orvane
