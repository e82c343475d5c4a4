// Integer path queries against the peers a host would use instead, on real outlines at the
// working rate: the largest gardeyn4 part (about 1,000 vertices) and the outer ring of the
// largest Baldacci bin (the bin with the most vertices, holes included).
//
//   point relation, 10^5 points:  RelationWithPoint and PointInPolygon (with the path's box)
//                                 vs polyclipping's PointInPolygon and boost::geometry::within
//   distance, 10^5 points:        DistanceTo vs GEOSDistance from a point to the ring
//   equality, 10^3 part rings:    Equal vs GEOSNormalize of both collections + GEOSEqualsExact
//
// Before timing, each pair is checked to give the same answers on the same inputs.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <clipper.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

// Boost.Geometry's rescaling trips a false maybe-uninitialized warning at -O2.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#pragma GCC diagnostic pop

#include "orvane/paths/PathUtils.h"

namespace {

using namespace orvane;
namespace fs = std::filesystem;
namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;

[[noreturn]] void Fail(const std::string& What) {
  std::fprintf(stderr, "path_utils: %s\n", What.c_str());
  std::exit(1);
}

TPath64 ReadPath(const nlohmann::json& Pts) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Pts) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
  return TPathUtils::CreatePath(ring, PathWorkingRate);
}

nlohmann::json ReadJson(const fs::path& File) {
  std::ifstream in(File);
  if (!in) Fail("cannot read " + File.string() + " (shared data missing?)");
  return nlohmann::json::parse(in);
}

struct TShape {
  std::string Name;
  TPath64 Path;
  TRect64 Box;
  ClipperLib::Path Engine;
  BPolygon Boost;
  GEOSGeometry* Ring = nullptr;
  std::vector<TPoint64> Points;
  std::vector<ClipperLib::IntPoint> EnginePoints;
  std::vector<BPoint> BoostPoints;
  std::vector<GEOSGeometry*> GeosPoints;
};

GEOSContextHandle_t Geos() {
  static const GEOSContextHandle_t h = GEOS_init_r();
  return h;
}

GEOSGeometry* GeosRing(const TPath64& P) {
  GEOSCoordSequence* seq = GEOSCoordSeq_create_r(Geos(), static_cast<unsigned>(P.size() + 1), 2);
  for (std::size_t k = 0; k <= P.size(); ++k) {
    const TPoint64& v = P[k % P.size()];
    GEOSCoordSeq_setXY_r(Geos(), seq, static_cast<unsigned>(k), static_cast<double>(v.X), static_cast<double>(v.Y));
  }
  return GEOSGeom_createLinearRing_r(Geos(), seq);
}

TShape MakeShape(std::string Name, TPath64 Path) {
  TShape s;
  s.Name = std::move(Name);
  s.Path = std::move(Path);
  s.Box = TPathUtils::IntBoundbox(s.Path);
  for (const TPoint64& v : s.Path) {
    s.Engine.emplace_back(v.X, v.Y);
    bg::append(s.Boost.outer(), BPoint(static_cast<double>(v.X), static_cast<double>(v.Y)));
  }
  bg::append(s.Boost.outer(), s.Boost.outer().front());
  bg::correct(s.Boost);
  s.Ring = GeosRing(s.Path);
  // 10^5 points over the box grown by a tenth on each side.
  std::mt19937_64 rng(2026);
  const std::int64_t mx = (s.Box.Right - s.Box.Left) / 10, my = (s.Box.Bottom - s.Box.Top) / 10;
  std::uniform_int_distribution<std::int64_t> xs(s.Box.Left - mx, s.Box.Right + mx),
      ys(s.Box.Top - my, s.Box.Bottom + my);
  for (int k = 0; k < 100000; ++k) {
    const TPoint64 p(xs(rng), ys(rng));
    s.Points.push_back(p);
    s.EnginePoints.emplace_back(p.X, p.Y);
    s.BoostPoints.emplace_back(static_cast<double>(p.X), static_cast<double>(p.Y));
    s.GeosPoints.push_back(GEOSGeom_createPointFromXY_r(Geos(), static_cast<double>(p.X), static_cast<double>(p.Y)));
  }
  // The same answers: inside or not (points on the boundary excluded), and distances within
  // the rounding to whole units.
  const TPaths64 list{s.Path};
  for (std::size_t k = 0; k < s.Points.size(); ++k) {
    const int clip = ClipperLib::PointInPolygon(s.EnginePoints[k], s.Engine);
    const TShapeRelation ours = TPathUtils::RelationWithPoint(s.Path, s.Points[k]);
    if (clip == -1 || ours == TShapeRelation::srOn) continue;
    const bool in = clip == 1;
    if ((ours == TShapeRelation::srIn) != in || TPathUtils::PointInPolygon(s.Points[k], s.Path, s.Box) != clip ||
        bg::within(s.BoostPoints[k], s.Boost) != in)
      Fail(s.Name + ": point relations differ");
    if (k % 97 == 0) {
      double d = 0.0;
      GEOSDistance_r(Geos(), s.GeosPoints[k], s.Ring, &d);
      TPointL2D nearest;
      if (std::fabs(TPathUtils::DistanceTo(list, TPointL2D(s.Points[k].X, s.Points[k].Y), nearest) - d) >
          0.5 + d * 1e-12)
        Fail(s.Name + ": distances differ");
    }
  }
  return s;
}

const std::vector<TShape>& Shapes() {
  static const std::vector<TShape> shapes = [] {
    const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "outlines";
    std::vector<TShape> out;
    {
      const nlohmann::json doc = ReadJson(dir / "gardeyn_gardeyn4.json");
      TPath64 best;
      for (const nlohmann::json& part : doc["parts"]) {
        TPath64 p = ReadPath(part["outer"]);
        if (p.size() > best.size()) best = std::move(p);
      }
      const std::string name = "gardeyn4 part, " + std::to_string(best.size()) + " vertices";
      out.push_back(MakeShape(name, std::move(best)));
    }
    std::size_t bestCount = 0;
    TPath64 bin;
    for (const auto& e : fs::directory_iterator(dir)) {
      if (e.path().filename().string().rfind("baldacci_", 0) != 0) continue;
      const nlohmann::json doc = ReadJson(e.path());
      for (const nlohmann::json& b : doc["bins"]) {
        std::size_t count = b["outer"].size();
        for (const nlohmann::json& h : b["holes"]) count += h.size();
        if (count > bestCount) {
          bestCount = count;
          bin = ReadPath(b["outer"]);
        }
      }
    }
    const std::string name = "largest Baldacci bin (" + std::to_string(bestCount) +
                             " vertices with holes), outer ring of " + std::to_string(bin.size());
    out.push_back(MakeShape(name, std::move(bin)));
    return out;
  }();
  return shapes;
}

void Label(benchmark::State& State) { State.SetLabel(Shapes()[static_cast<std::size_t>(State.range(0))].Name); }

void BM_RelationWithPoint_Orvane(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    int in = 0;
    for (const TPoint64& p : s.Points) in += TPathUtils::RelationWithPoint(s.Path, p) == TShapeRelation::srIn;
    benchmark::DoNotOptimize(in);
  }
  Label(State);
}

void BM_PointInPolygonBox_Orvane(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    int in = 0;
    for (const TPoint64& p : s.Points) in += TPathUtils::PointInPolygon(p, s.Path, s.Box);
    benchmark::DoNotOptimize(in);
  }
  Label(State);
}

void BM_PointInPolygon_ClipperLib(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    int in = 0;
    for (const ClipperLib::IntPoint& p : s.EnginePoints) in += ClipperLib::PointInPolygon(p, s.Engine);
    benchmark::DoNotOptimize(in);
  }
  Label(State);
}

void BM_Within_BoostGeometry(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    int in = 0;
    for (const BPoint& p : s.BoostPoints) in += bg::within(p, s.Boost);
    benchmark::DoNotOptimize(in);
  }
  Label(State);
}

void BM_DistanceTo_Orvane(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  const TPaths64 list{s.Path};
  for (auto _ : State) {
    double sum = 0.0;
    TPointL2D nearest;
    for (const TPoint64& p : s.Points) sum += TPathUtils::DistanceTo(list, TPointL2D(p.X, p.Y), nearest);
    benchmark::DoNotOptimize(sum);
  }
  Label(State);
}

void BM_Distance_Geos(benchmark::State& State) {
  const TShape& s = Shapes()[static_cast<std::size_t>(State.range(0))];
  for (auto _ : State) {
    double sum = 0.0;
    for (GEOSGeometry* p : s.GeosPoints) {
      double d = 0.0;
      GEOSDistance_r(Geos(), p, s.Ring, &d);
      sum += d;
    }
    benchmark::DoNotOptimize(sum);
  }
  Label(State);
}

// ---- Equality of 10^3 rings -----------------------------------------------------------------

struct TRings {
  TPaths64 A, B;  // B: A shuffled, each ring started elsewhere, about half reversed
  GEOSGeometry* GA = nullptr;
  GEOSGeometry* GB = nullptr;
  std::size_t Vertices = 0;
};

GEOSGeometry* GeosCollection(const TPaths64& Paths) {
  std::vector<GEOSGeometry*> polys;
  for (const TPath64& p : Paths) polys.push_back(GEOSGeom_createPolygon_r(Geos(), GeosRing(p), nullptr, 0));
  return GEOSGeom_createCollection_r(Geos(), GEOS_GEOMETRYCOLLECTION, polys.data(),
                                     static_cast<unsigned>(polys.size()));
}

bool GeosEqual(const GEOSGeometry* A, const GEOSGeometry* B) {
  GEOSGeometry* a = GEOSGeom_clone_r(Geos(), A);
  GEOSGeometry* b = GEOSGeom_clone_r(Geos(), B);
  GEOSNormalize_r(Geos(), a);
  GEOSNormalize_r(Geos(), b);
  const bool same = GEOSEqualsExact_r(Geos(), a, b, 0.0) == 1;
  GEOSGeom_destroy_r(Geos(), a);
  GEOSGeom_destroy_r(Geos(), b);
  return same;
}

const TRings& Rings() {
  static const TRings rings = [] {
    // The part rings of all outline sets in file order, then copies of them moved 10^4
    // drawing units further right each time, until there are 10^3.
    TRings r;
    const fs::path dir = fs::path(ORVANE_SHARED_DATA_DIR) / "outlines";
    std::vector<fs::path> files;
    for (const auto& e : fs::directory_iterator(dir)) files.push_back(e.path());
    std::sort(files.begin(), files.end());
    TPaths64 parts;
    for (const fs::path& f : files) {
      const nlohmann::json doc = ReadJson(f);
      for (const nlohmann::json& part : doc["parts"]) parts.push_back(ReadPath(part["outer"]));
    }
    if (parts.empty()) Fail("no part outlines");
    for (std::int64_t copy = 0; r.A.size() < 1000; ++copy) {
      for (std::size_t i = 0; i < parts.size() && r.A.size() < 1000; ++i) {
        TPath64 p = parts[i];
        TPathUtils::Translate(p, TPointL2D(copy * 1000000000, 0));
        r.Vertices += p.size();
        r.A.push_back(std::move(p));
      }
    }
    std::mt19937_64 rng(5);
    r.B = r.A;
    std::shuffle(r.B.begin(), r.B.end(), rng);
    for (TPath64& p : r.B) {
      std::rotate(p.begin(), p.begin() + static_cast<std::ptrdiff_t>(rng() % p.size()), p.end());
      if (rng() % 2 == 0) TPathUtils::Reverse(p);
    }
    r.GA = GeosCollection(r.A);
    r.GB = GeosCollection(r.B);
    if (!TPathUtils::Equal(r.A, r.B) || !GeosEqual(r.GA, r.GB)) Fail("equal ring lists are not found equal");
    TPaths64 moved = r.B;
    moved[moved.size() / 2][3].X += 1;
    GEOSGeometry* gm = GeosCollection(moved);
    if (TPathUtils::Equal(r.A, moved) || GeosEqual(r.GA, gm)) Fail("a moved vertex is not seen");
    GEOSGeom_destroy_r(Geos(), gm);
    return r;
  }();
  return rings;
}

void EqualLabel(benchmark::State& State) {
  State.SetLabel(std::to_string(Rings().A.size()) + " part rings, " + std::to_string(Rings().Vertices) + " vertices");
}

void BM_Equal_Orvane(benchmark::State& State) {
  const TRings& r = Rings();
  for (auto _ : State) benchmark::DoNotOptimize(TPathUtils::Equal(r.A, r.B));
  EqualLabel(State);
}

// GEOSNormalize works in place: each round normalises fresh copies, made outside the timing.
void BM_NormalizeEqualsExact_Geos(benchmark::State& State) {
  const TRings& r = Rings();
  for (auto _ : State) {
    State.PauseTiming();
    GEOSGeometry* a = GEOSGeom_clone_r(Geos(), r.GA);
    GEOSGeometry* b = GEOSGeom_clone_r(Geos(), r.GB);
    State.ResumeTiming();
    GEOSNormalize_r(Geos(), a);
    GEOSNormalize_r(Geos(), b);
    benchmark::DoNotOptimize(GEOSEqualsExact_r(Geos(), a, b, 0.0));
    State.PauseTiming();
    GEOSGeom_destroy_r(Geos(), a);
    GEOSGeom_destroy_r(Geos(), b);
    State.ResumeTiming();
  }
  EqualLabel(State);
}

BENCHMARK(BM_RelationWithPoint_Orvane)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointInPolygonBox_Orvane)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointInPolygon_ClipperLib)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Within_BoostGeometry)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistanceTo_Orvane)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Distance_Geos)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Equal_Orvane)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NormalizeEqualsExact_Geos)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
