// The mainsheet (its outline with 203 circle holes and nine cut-outs) against 10^4 placed
// corner brackets, one overlap question per query, as a layout checker asks it:
//   ours:  TMLABHPolygon::Overlap, arcs kept exact (Tol 1e-6)
//   GEOS:  prepared geometry of the linearised mainsheet ->intersects(linearised bracket),
//          each arc cut into just enough chords for its sagitta to stay within Tol
//          (1e-2 and 1e-4 mm)
// Building each side's form is timed apart from the queries. Before anything is timed, the
// answers are compared: they may differ only where the linearisation moves a contact.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orvane/mixed/LABPolylineList.h"
#include "orvane/monotone/MLABHPolygon.h"

namespace {

using namespace orvane;
namespace fs = std::filesystem;

constexpr int kBrackets = 10000;

// The closed outlines of the drawing's model space: LWPOLYLINEs with their bulges and
// CIRCLEs (as one full-circle segment).
std::vector<std::unique_ptr<TLABPolyline>> ReadOutlines(const fs::path& File) {
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
std::vector<std::unique_ptr<TLABHPolygon>> Parts(std::vector<std::unique_ptr<TLABPolyline>> Outlines) {
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

TDynPoints2D Linearise(const TLABPolyline& P, double Sagitta) {
  TDynPoints2D out;
  for (const TLABSegline& s : P) {
    if (s.SegType != TSegType::stArc) {
      out.push_back(s.P1);
      continue;
    }
    const TArc2D a = s.ToArc();
    const double step = 2.0 * std::acos(1.0 - std::min(Sagitta / a.Radius, 1.0));
    const int n = std::max(2, static_cast<int>(std::ceil(std::abs(a.SweepAngle) / step)) + 1);
    TDynPoints2D pts;
    a.GetPoints(n, pts);
    out.insert(out.end(), pts.begin(), pts.end() - 1);
  }
  out.push_back(out.front());
  return out;
}

struct TWorld {
  std::unique_ptr<TLABHPolygon> Sheet;
  std::vector<std::unique_ptr<TLABHPolygon>> Brackets;  // placed
  bool Ok = false;
};

const TWorld& World() {
  static TWorld w = [] {
    TWorld r;
    const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "curves";
    const fs::path sheetFile = dir / "laser4diy_mainsheet_x.dxf";
    const fs::path bracketFile = dir / "laser4diy_cornerbracket_8pcs_x.dxf";
    if (!fs::exists(sheetFile) || !fs::exists(bracketFile)) return r;
    auto sheets = Parts(ReadOutlines(sheetFile));
    auto brackets = Parts(ReadOutlines(bracketFile));
    r.Sheet = std::move(sheets[0]);
    const TRect2D sb = r.Sheet->First()->BoundBox();
    const TLABHPolygon& bracket = *brackets[0];
    const TRect2D bb = bracket.First()->BoundBox();
    std::mt19937 rng(25);
    std::uniform_real_distribution<double> mx(sb.XMin - bb.XMax, sb.XMax - bb.XMin);
    std::uniform_real_distribution<double> my(sb.YMin - bb.YMax, sb.YMax - bb.YMin);
    for (int k = 0; k < kBrackets; ++k) {
      const TPoint2D move(mx(rng), my(rng));
      auto placed = std::make_unique<TLABHPolygon>();
      for (const TLABPolyline* o : bracket) {
        auto c = o->CloneAs<TLABPolyline>();
        c->Translate(move);
        placed->Add(std::move(c));
      }
      r.Brackets.push_back(std::move(placed));
    }
    r.Ok = true;
    return r;
  }();
  return w;
}

struct TOurs {
  std::unique_ptr<TMLABHPolygon> Sheet;
  std::vector<std::unique_ptr<TMLABHPolygon>> Brackets;
  explicit TOurs(const TWorld& W) : Sheet(std::make_unique<TMLABHPolygon>(*W.Sheet, 1e-6)) {
    for (const auto& b : W.Brackets) Brackets.push_back(std::make_unique<TMLABHPolygon>(*b, 1e-6));
  }
};

GEOSGeometry* GeosPart(GEOSContextHandle_t H, const TLABHPolygon& Part, double Sagitta) {
  auto ring = [&](const TLABPolyline& P) {
    const TDynPoints2D pts = Linearise(P, Sagitta);
    GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(H, &pts[0].X, static_cast<unsigned>(pts.size()), 0, 0);
    return GEOSGeom_createLinearRing_r(H, seq);
  };
  std::vector<GEOSGeometry*> holes;
  for (int k = 1; k < Part.Count(); ++k) holes.push_back(ring(*Part[k]));
  return GEOSGeom_createPolygon_r(H, ring(*Part[0]), holes.data(), static_cast<unsigned>(holes.size()));
}

struct TGeosSide {
  GEOSContextHandle_t H = GEOS_init_r();
  GEOSGeometry* Sheet = nullptr;
  const GEOSPreparedGeometry* Prepared = nullptr;
  std::vector<GEOSGeometry*> Brackets;
  TGeosSide(const TWorld& W, double Sagitta) {
    Sheet = GeosPart(H, *W.Sheet, Sagitta);
    Prepared = GEOSPrepare_r(H, Sheet);
    for (const auto& b : W.Brackets) Brackets.push_back(GeosPart(H, *b, Sagitta));
    // Prepared geometry builds its index lazily: one query so that it is built here.
    GEOSPreparedIntersects_r(H, Prepared, Brackets[0]);
  }
  ~TGeosSide() {
    for (GEOSGeometry* g : Brackets) GEOSGeom_destroy_r(H, g);
    GEOSPreparedGeom_destroy_r(H, Prepared);
    GEOSGeom_destroy_r(H, Sheet);
    GEOS_finish_r(H);
  }
};

// Both sides agree, except where a contact lies within the linearisation's reach.
bool Agree(const TOurs& Ours, const TGeosSide& G, double Sagitta, std::string& Report) {
  int overlaps = 0;
  int differ = 0;
  int explained = 0;
  GEOSGeometry* edge = GEOSBoundary_r(G.H, G.Sheet);
  const GEOSPreparedGeometry* pEdge = GEOSPrepare_r(G.H, edge);
  for (int k = 0; k < kBrackets; ++k) {
    const bool ours = Ours.Sheet->Overlap(*Ours.Brackets[static_cast<std::size_t>(k)], 1e-6);
    const bool geos = GEOSPreparedIntersects_r(G.H, G.Prepared, G.Brackets[static_cast<std::size_t>(k)]) == 1;
    overlaps += ours ? 1 : 0;
    if (ours == geos) continue;
    ++differ;
    GEOSGeometry* be = GEOSBoundary_r(G.H, G.Brackets[static_cast<std::size_t>(k)]);
    double d = 0.0;
    GEOSPreparedDistance_r(G.H, pEdge, be, &d);
    GEOSGeom_destroy_r(G.H, be);
    if (d <= 2.0 * Sagitta + 1e-6) ++explained;
  }
  GEOSPreparedGeom_destroy_r(G.H, pEdge);
  GEOSGeom_destroy_r(G.H, edge);
  char buf[200];
  std::snprintf(buf, sizeof buf, "tol %g: %d of %d overlap; %d answers differ, %d of them within the chords' reach",
                Sagitta, overlaps, kBrackets, differ, explained);
  Report = buf;
  return differ == explained;
}

void BM_Ours_Build(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  for (auto _ : State) {
    TOurs ours(World());
    benchmark::DoNotOptimize(ours.Sheet.get());
  }
}

void BM_Geos_Build(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  const double tol = State.range(0) == 2 ? 1e-2 : 1e-4;
  for (auto _ : State) {
    TGeosSide g(World(), tol);
    benchmark::DoNotOptimize(g.Prepared);
  }
}

void BM_Ours_Query(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  static const TOurs ours(World());
  std::size_t k = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(ours.Sheet->Overlap(*ours.Brackets[k], 1e-6));
    k = k + 1 == ours.Brackets.size() ? 0 : k + 1;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

void BM_Geos_Query(benchmark::State& State) {
  if (!World().Ok) {
    State.SkipWithError("no shared data");
    return;
  }
  const double tol = State.range(0) == 2 ? 1e-2 : 1e-4;
  static const TOurs ours(World());
  const TGeosSide g(World(), tol);
  std::string report;
  if (!Agree(ours, g, tol, report)) {
    State.SkipWithError(("answers differ: " + report).c_str());
    return;
  }
  State.SetLabel(report);
  std::size_t k = 0;
  for (auto _ : State) {
    benchmark::DoNotOptimize(GEOSPreparedIntersects_r(g.H, g.Prepared, g.Brackets[k]));
    k = k + 1 == g.Brackets.size() ? 0 : k + 1;
  }
  State.SetItemsProcessed(static_cast<std::int64_t>(State.iterations()));
}

}  // namespace

BENCHMARK(BM_Ours_Build)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Geos_Build)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Ours_Query)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Geos_Query)->Arg(2)->Arg(4)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
