#pragma once
// Closed outlines of the shared DXF drawings for the mixed-outline tests and benchmarks: a
// small reader of model-space LWPOLYLINEs (with bulges) and CIRCLEs, and the regions they
// make.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "orvane/mixed/LABPolylineList.h"

namespace orvane::testing {

namespace fs = std::filesystem;


// The closed outlines of the drawing's model space: LWPOLYLINEs with their bulges and
// CIRCLEs (as one full-circle segment).
inline std::vector<std::unique_ptr<TLABPolyline>> ReadOutlines(const fs::path& File) {
  std::ifstream in(File);
  std::vector<std::unique_ptr<TLABPolyline>> result;
  struct TEntity {
    std::string Kind;
    std::vector<TPoint2D> Pts;
    std::vector<double> Bulges;
    bool Closed = false;
    TPoint2D Centre;
    double Radius = 0.0;
  } e;
  auto flush = [&] {
    if (e.Kind == "CIRCLE" && e.Radius > 0.0) {
      auto p = std::make_unique<TLABPolyline>();
      const TPoint2D s = e.Centre + TPoint2D(e.Radius, 0.0);
      p->Add(TLABSegline::CreateArc(s, s, e.Centre, 3.4028234663852886e+38));
      result.push_back(std::move(p));
    } else if (e.Kind == "LWPOLYLINE" && e.Closed && e.Pts.size() >= 2) {
      auto p = std::make_unique<TLABPolyline>();
      const std::size_t n = e.Pts.size();
      for (std::size_t i = 0; i < n; ++i) {
        const TPoint2D a = e.Pts[i];
        const TPoint2D b = e.Pts[(i + 1) % n];
        if (a == b) continue;
        if (e.Bulges[i] == 0.0) {
          p->Add(TLABSegline::CreateLine(a, b));
        } else {
          p->Add(TLABSegline::CreateArc(TArc2D::CreateBulge(a, b, e.Bulges[i])));
        }
      }
      result.push_back(std::move(p));
    }
    e = TEntity();
  };
  std::string code;
  std::string value;
  auto trim = [](std::string& s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.pop_back();
    std::size_t i = 0;
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    s.erase(0, i);
  };
  bool inEntities = false;
  std::string last;
  while (std::getline(in, code) && std::getline(in, value)) {
    trim(code);
    trim(value);
    const int c = std::atoi(code.c_str());
    const double v = std::strtod(value.c_str(), nullptr);
    if (c == 0) {
      flush();
      if (inEntities) e.Kind = value;
      if (value == "ENDSEC") inEntities = false;
    } else if (c == 2 && last == "SECTION") {
      inEntities = value == "ENTITIES";
    } else if (e.Kind == "LWPOLYLINE") {
      if (c == 70) e.Closed = (std::atoi(value.c_str()) & 1) != 0;
      if (c == 10) {
        e.Pts.emplace_back(v, 0.0);
        e.Bulges.push_back(0.0);
      }
      if (c == 20 && !e.Pts.empty()) e.Pts.back().Y = v;
      if (c == 42 && !e.Bulges.empty()) e.Bulges.back() = v;
    } else if (e.Kind == "CIRCLE") {
      if (c == 10) e.Centre.X = v;
      if (c == 20) e.Centre.Y = v;
      if (c == 40) e.Radius = v;
    }
    last = c == 0 ? value : std::string();
  }
  flush();
  return result;
}

// Parts: outlines by falling area; one that lies inside a part's outer boundary is its hole.
inline std::vector<std::unique_ptr<TLABHPolygon>> Parts(std::vector<std::unique_ptr<TLABPolyline>> Outlines) {
  std::stable_sort(Outlines.begin(), Outlines.end(),
                   [](const auto& a, const auto& b) { return std::abs(a->Area()) > std::abs(b->Area()); });
  std::vector<std::unique_ptr<TLABHPolygon>> parts;
  for (auto& o : Outlines) {
    TLABHPolygon* home = nullptr;
    for (auto& p : parts)
      if (p->First()->RelationWithPoint(o->First().P1) == static_cast<int>(TShapeRelation::srIn)) home = p.get();
    if (home == nullptr) {
      parts.push_back(std::make_unique<TLABHPolygon>());
      home = parts.back().get();
    }
    home->Add(std::move(o));
  }
  return parts;
}

}  // namespace orvane::testing
