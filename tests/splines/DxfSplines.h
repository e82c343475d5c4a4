#pragma once
// The SPLINE entities of a DXF file, read from their group-code pairs, for tests that run
// on drawing data.

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "orvane/foundation/Point2D.h"

namespace orvane::testing {

// Group-code pairs of a DXF file's SPLINE entities.
struct TDxfSpline {
  int Flags = 0, Degree = 0;
  TFloatDynArray Knots, Weights;
  TDynPoints2D Pts;
};

inline std::vector<TDxfSpline> ReadDxfSplines(const std::filesystem::path& File) {
  std::ifstream in(File);
  std::vector<TDxfSpline> out;
  std::string code, value;
  bool inSpline = false;
  while (std::getline(in, code) && std::getline(in, value)) {
    const auto trim = [](std::string& s) {
      s.erase(0, s.find_first_not_of(" \t\r"));
      s.erase(s.find_last_not_of(" \t\r") + 1);
    };
    trim(code);
    trim(value);
    if (code == "0") {
      inSpline = value == "SPLINE";
      if (inSpline) out.emplace_back();
      continue;
    }
    if (!inSpline) continue;
    TDxfSpline& s = out.back();
    if (code == "70") s.Flags = std::stoi(value);
    if (code == "71") s.Degree = std::stoi(value);
    if (code == "40") s.Knots.push_back(std::stod(value));
    if (code == "41") s.Weights.push_back(std::stod(value));
    if (code == "10") s.Pts.push_back({std::stod(value), 0.0});
    if (code == "20") s.Pts.back().Y = std::stod(value);
  }
  return out;
}

}  // namespace orvane::testing
