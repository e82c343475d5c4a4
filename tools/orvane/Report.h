#pragma once
// The check's outputs: the short text report, the JSON object and the SVG picture.

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "Check.h"

namespace orvane::tool {

void WriteTextReport(std::ostream& Out, const TCheckReport& Report, const TCheckOptions& Options, double ParseSeconds);
nlohmann::json ReportToJson(const TCheckReport& Report, double ParseSeconds);
// A picture that opens in any browser: the container, the parts filled, the pairs in
// contact outlined, overlap regions in red, and a legend with the counts.
void WriteSvg(std::ostream& Out, const TLayout& Layout, const TCheckReport& Report);

}  // namespace orvane::tool
