#pragma once
// Closed outlines of the shared DXF drawings for the mixed-outline tests and benchmarks: a
// small reader of model-space LWPOLYLINEs (with bulges) and CIRCLEs, and the regions they
// make.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "orvane/mixed/LABPolylineList.h"
#include "support/DxfEntities.h"

namespace orvane::testing {

namespace fs = std::filesystem;

// The closed outlines of the drawing's model space: LWPOLYLINEs with their bulges and
// CIRCLEs (as one full-circle segment).
inline std::vector<std::unique_ptr<TLABPolyline>> ReadOutlines(const fs::path& File) {
  std::vector<std::unique_ptr<TLABPolyline>> result;
  for (const TDxfEntity& e : ReadDxfEntities(File)) {
    if (!e.ModelSpace) continue;
    if (e.Kind == "CIRCLE" && e.Num(40) > 0.0) {
      auto p = std::make_unique<TLABPolyline>();
      const TPoint2D c(e.Num(10), e.Num(20));
      const TPoint2D s = c + TPoint2D(e.Num(40), 0.0);
      p->Add(TLABSegline::CreateArc(s, s, c, 3.4028234663852886e+38));
      result.push_back(std::move(p));
    }
    const TDxfLwPolyline w = e.Kind == "LWPOLYLINE" ? LwPolyline(e) : TDxfLwPolyline();
    if (!w.Closed || w.Pts.size() < 2) continue;
    auto p = std::make_unique<TLABPolyline>();
    const std::size_t n = w.Pts.size();
    for (std::size_t i = 0; i < n; ++i) {
      const TPoint2D a = w.Pts[i];
      const TPoint2D b = w.Pts[(i + 1) % n];
      if (a == b) continue;
      if (w.Bulges[i] == 0.0) {
        p->Add(TLABSegline::CreateLine(a, b));
      } else {
        p->Add(TLABSegline::CreateArc(TArc2D::CreateBulge(a, b, w.Bulges[i])));
      }
    }
    result.push_back(std::move(p));
  }
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
