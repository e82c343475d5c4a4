#pragma once
// The entities of a DXF file as their group-code pairs, for tests that read the shared
// drawings without the tool's reader: each test picks the groups it needs.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "orvane/foundation/Point2D.h"

namespace orvane::testing {

struct TDxfEntity {
  std::string Kind;          // "LINE", "SPLINE", ...
  bool ModelSpace = false;   // in the ENTITIES section (not in a block)
  std::vector<std::pair<int, std::string>> Groups;

  // The first value of group Code, or Default.
  double Num(int Code, double Default = 0.0) const {
    for (const auto& [c, v] : Groups)
      if (c == Code) return std::strtod(v.c_str(), nullptr);
    return Default;
  }
  std::vector<double> All(int Code) const {
    std::vector<double> out;
    for (const auto& [c, v] : Groups)
      if (c == Code) out.push_back(std::strtod(v.c_str(), nullptr));
    return out;
  }
};

// Every entity of every section, in file order; an empty list for a missing file.
inline std::vector<TDxfEntity> ReadDxfEntities(const std::filesystem::path& File) {
  const auto trim = [](std::string& s) {
    s.erase(0, s.find_first_not_of(" \t\r"));
    s.erase(s.find_last_not_of(" \t\r") + 1);
  };
  std::ifstream in(File);
  std::vector<TDxfEntity> out;
  std::string code, value, last;
  bool inEntities = false;
  while (std::getline(in, code) && std::getline(in, value)) {
    trim(code);
    trim(value);
    const int c = std::atoi(code.c_str());
    if (c == 0) {
      if (value == "ENDSEC") inEntities = false;
      out.push_back({value, inEntities, {}});
    } else if (c == 2 && last == "SECTION") {
      inEntities = value == "ENTITIES";
    } else if (!out.empty()) {
      out.back().Groups.emplace_back(c, value);
    }
    last = c == 0 ? value : std::string();
  }
  return out;
}

// An LWPOLYLINE's vertices, the bulge of the edge leaving each, and its closed flag.
struct TDxfLwPolyline {
  TDynPoints2D Pts;
  std::vector<double> Bulges;
  bool Closed = false;
};

inline TDxfLwPolyline LwPolyline(const TDxfEntity& E) {
  TDxfLwPolyline p;
  p.Closed = (static_cast<int>(E.Num(70)) & 1) != 0;
  for (const auto& [c, v] : E.Groups) {
    const double x = std::strtod(v.c_str(), nullptr);
    if (c == 10) {
      p.Pts.emplace_back(x, 0.0);
      p.Bulges.push_back(0.0);
    }
    if (c == 20 && !p.Pts.empty()) p.Pts.back().Y = x;
    if (c == 42 && !p.Bulges.empty()) p.Bulges.back() = x;
  }
  return p;
}

}  // namespace orvane::testing
