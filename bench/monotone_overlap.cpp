// Boundary contact between part outlines, as a nesting layout checker asks it: one million
// queries over candidate pairs of placed parts (boxes that overlap), most of them near
// misses. Each library builds its own form of every outline once, then answers the stream:
//   ours:  TMPolygon (monotone chains) ->TestOverlap
//   GEOS:  prepared geometry of A's boundary ->intersects(B's boundary) (C API)
//   Boost: boost::geometry::intersects on the two rings
// Build time of each form is measured separately.
//
// Pairs come from the sparrow gardeyn layouts (both parts of at least 100 vertices; real
// gaps down to 4e-3), the same pairs with one part pushed a little into the other (true
// answers), and the largest gardeyn outlines (831 and 1044 vertices, and the latter
// densified to 2087) set beside layout parts at gaps of 1e-3 to 1e-1. Without the data,
// generated outlines of 100 to 2000 vertices stand in. All answers are cross-checked
// between the three libraries before anything is timed.

#include <benchmark/benchmark.h>
#include <geos_c.h>

#include <algorithm>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/ring.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"

namespace {

namespace bg = boost::geometry;
namespace fs = std::filesystem;
using orvane::TDynPoints2D;
using orvane::TPoint2D;
using orvane::TRect2D;
using BPoint = bg::model::d2::point_xy<double>;
using BRing = bg::model::ring<BPoint, false, true>;  // counter-clockwise, closed

constexpr int kQueries = 1000000;

struct TQueryPair {
  int A;
  int B;
};

struct TWorld {
  std::vector<TDynPoints2D> Rings;  // closed, counter-clockwise
  std::vector<TQueryPair> Pairs;
  std::vector<int> Stream;  // kQueries indices into Pairs
  std::string Source;
};

TDynPoints2D ReadRing(const nlohmann::json& Pts) {
  TDynPoints2D ring;
  for (const nlohmann::json& xy : Pts) ring.emplace_back(xy[0].get<double>(), xy[1].get<double>());
  if (ring.front() != ring.back()) ring.push_back(ring.front());
  return ring;
}

TRect2D Box(const TDynPoints2D& Ring) { return orvane::CalcAABB(Ring); }

TDynPoints2D Moved(TDynPoints2D Ring, const TPoint2D& V) {
  for (TPoint2D& p : Ring) p += V;
  return Ring;
}

// GEOS, for placing outlines at a chosen gap: the distance between two boundaries.
struct TGeos {
  GEOSContextHandle_t Ctx = GEOS_init_r();
  ~TGeos() { GEOS_finish_r(Ctx); }
  GEOSGeometry* Ring(const TDynPoints2D& Pts) const {
    GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(Ctx, &Pts[0].X, static_cast<unsigned>(Pts.size()), 0, 0);
    return GEOSGeom_createLinearRing_r(Ctx, seq);
  }
};

double BoundaryDistance(const TGeos& G, const TDynPoints2D& A, const TDynPoints2D& B) {
  GEOSGeometry* ga = G.Ring(A);
  GEOSGeometry* gb = G.Ring(B);
  double d = 0.0;
  GEOSDistance_r(G.Ctx, ga, gb, &d);
  GEOSGeom_destroy_r(G.Ctx, ga);
  GEOSGeom_destroy_r(G.Ctx, gb);
  return d;
}

// B moved along X toward A until the boundaries are about Gap apart; never through A,
// since no point moves farther than the distance left minus the gap.
TDynPoints2D PlaceBeside(const TGeos& G, const TDynPoints2D& A, TDynPoints2D B, double Gap) {
  const TRect2D ba = Box(A);
  const TRect2D bb = Box(B);
  B = Moved(B, {ba.XMax - bb.XMin + Gap, (ba.YMin + ba.YMax) * 0.5 - (bb.YMin + bb.YMax) * 0.5});
  for (int k = 0; k < 60; ++k) {
    const double d = BoundaryDistance(G, A, B);
    if (d <= 1.5 * Gap) break;
    B = Moved(B, {-(d - Gap), 0.0});
  }
  return B;
}

TDynPoints2D Densified(const TDynPoints2D& Ring) {
  TDynPoints2D out;
  for (std::size_t i = 0; i + 1 < Ring.size(); ++i) {
    out.push_back(Ring[i]);
    out.push_back((Ring[i] + Ring[i + 1]) * 0.5);
  }
  out.push_back(Ring.front());
  return out;
}

// A smooth wavy star of N vertices about Center, simple by construction, turning in y a
// few dozen times as real part outlines do.
TDynPoints2D Star(std::mt19937_64& Rng, int N, const TPoint2D& Center, double R) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  const double phase = unit(Rng) * orvane::TwoPi;
  const double lobes = 3.0 + std::floor(unit(Rng) * 6.0);
  for (int i = 0; i < N; ++i) {
    const double a = (i + 0.3 * unit(Rng)) * orvane::TwoPi / N;
    const double r = R * (1.0 + 0.2 * std::sin(lobes * a + phase) + 0.04 * std::sin(17.0 * a));
    pts.push_back(Center + TPoint2D(std::cos(a), std::sin(a)) * r);
  }
  pts.push_back(pts.front());
  return pts;
}

void AddLayoutPairs(TWorld& W, const fs::path& File) {
  std::ifstream in(File);
  const nlohmann::json doc = nlohmann::json::parse(in);
  const int first = static_cast<int>(W.Rings.size());
  for (const nlohmann::json& p : doc["placements"]) W.Rings.push_back(ReadRing(p["placed"]));
  const int last = static_cast<int>(W.Rings.size());
  for (int a = first; a < last; ++a) {
    for (int b = a + 1; b < last; ++b) {
      const TDynPoints2D& ra = W.Rings[static_cast<std::size_t>(a)];
      const TDynPoints2D& rb = W.Rings[static_cast<std::size_t>(b)];
      if (ra.size() < 101 || rb.size() < 101) continue;
      if (Box(ra).RelationWithRect(Box(rb), 0.0) == 0) continue;
      W.Pairs.push_back({a, b});
    }
  }
}

TWorld MakeWorld() {
  TWorld w;
  TGeos geos;
  std::mt19937_64 rng(0x5eed);
  const fs::path data(ORVANE_SHARED_DATA_DIR);
  std::vector<fs::path> layouts;
  if (fs::is_directory(data / "layouts")) {
    for (const auto& e : fs::directory_iterator(data / "layouts")) {
      if (e.path().filename().string().rfind("sparrow_gardeyn", 0) == 0) layouts.push_back(e.path());
    }
  }
  std::sort(layouts.begin(), layouts.end());
  const fs::path big = data / "outlines" / "gardeyn_gardeyn4.json";
  if (!layouts.empty() && fs::exists(big)) {
    w.Source = "sparrow gardeyn layouts + gardeyn4 outlines";
    for (const fs::path& f : layouts) AddLayoutPairs(w, f);
    // The same pairs with B pushed into A by 1% of its box: overlapping answers.
    const std::size_t layoutPairs = w.Pairs.size();
    for (std::size_t k = 0; k < layoutPairs; ++k) {
      const TDynPoints2D& a = w.Rings[static_cast<std::size_t>(w.Pairs[k].A)];
      const TDynPoints2D& b = w.Rings[static_cast<std::size_t>(w.Pairs[k].B)];
      const TRect2D ba = Box(a);
      const TRect2D bb = Box(b);
      TPoint2D toward = ba.CenterPoint() - bb.CenterPoint();
      toward = toward * (0.01 * std::min(bb.Width(), bb.Height()) / std::max(toward.Mag(), 1e-9));
      w.Rings.push_back(Moved(b, toward));
      w.Pairs.push_back({w.Pairs[k].A, static_cast<int>(w.Rings.size()) - 1});
    }
    // The largest outlines beside layout parts, near misses at gaps of 1e-3 to 1e-1.
    std::ifstream in(big);
    const nlohmann::json doc = nlohmann::json::parse(in);
    std::vector<TDynPoints2D> bigs;
    for (const nlohmann::json& part : doc["parts"]) {
      TDynPoints2D r = ReadRing(part["outer"]);
      if (r.size() > 500) bigs.push_back(r);
    }
    bigs.push_back(Densified(bigs.back()));
    std::uniform_int_distribution<std::size_t> pick(0, static_cast<std::size_t>(w.Rings.size()) - 1);
    for (const TDynPoints2D& a : bigs) {
      for (int k = 0; k < 24; ++k) {
        const TDynPoints2D* b = nullptr;
        do b = &w.Rings[pick(rng)];
        while (b->size() < 101);
        const int ia = static_cast<int>(w.Rings.size());
        w.Rings.push_back(a);
        w.Rings.push_back(PlaceBeside(geos, a, *b, std::pow(10.0, -1.0 - 2.0 * (k % 3) / 2.0)));
        w.Pairs.push_back({ia, ia + 1});
      }
    }
  } else {
    w.Source = "generated outlines (no shared data)";
    for (int k = 0; k < 400; ++k) {
      const int n = 100 + static_cast<int>(rng() % 1901);
      const TDynPoints2D a = Star(rng, n, {0.0, 0.0}, 100.0);
      const TDynPoints2D b = Star(rng, 100 + static_cast<int>(rng() % 1901), {0.0, 0.0}, 60.0);
      const int ia = static_cast<int>(w.Rings.size());
      w.Rings.push_back(a);
      const TDynPoints2D beside = PlaceBeside(geos, a, b, std::pow(10.0, -1.0 - (k % 3)));
      w.Rings.push_back(k % 4 == 0 ? Moved(beside, {-1.0, 0.0}) : beside);
      w.Pairs.push_back({ia, ia + 1});
    }
  }
  std::uniform_int_distribution<std::size_t> anyPair(0, w.Pairs.size() - 1);
  w.Stream.reserve(kQueries);
  for (int q = 0; q < kQueries; ++q) w.Stream.push_back(static_cast<int>(anyPair(rng)));
  return w;
}

const TWorld& World() {
  static const TWorld w = MakeWorld();
  return w;
}

// Each library's form of every outline, built once per process.
struct TOurs {
  std::vector<std::unique_ptr<orvane::TMPolygon>> Polys;
  explicit TOurs(const TWorld& W) {
    for (const TDynPoints2D& r : W.Rings)
      Polys.push_back(std::make_unique<orvane::TMPolygon>(orvane::TVPolyline2D(r), nullptr));
  }
  bool Query(const TQueryPair& P) const {
    return Polys[static_cast<std::size_t>(P.A)]->TestOverlap(*Polys[static_cast<std::size_t>(P.B)]);
  }
};

struct TGeosForms {
  TGeos G;
  std::vector<GEOSGeometry*> Geoms;
  std::vector<const GEOSPreparedGeometry*> Prepared;
  explicit TGeosForms(const TWorld& W) {
    for (const TDynPoints2D& r : W.Rings) {
      Geoms.push_back(G.Ring(r));
      Prepared.push_back(GEOSPrepare_r(G.Ctx, Geoms.back()));
    }
    // The prepared index is built on first use: make it part of the build.
    for (std::size_t k = 0; k < Geoms.size(); ++k) GEOSPreparedIntersects_r(G.Ctx, Prepared[k], Geoms[k]);
  }
  ~TGeosForms() {
    for (const GEOSPreparedGeometry* p : Prepared) GEOSPreparedGeom_destroy_r(G.Ctx, p);
    for (GEOSGeometry* g : Geoms) GEOSGeom_destroy_r(G.Ctx, g);
  }
  TGeosForms(const TGeosForms&) = delete;
  TGeosForms& operator=(const TGeosForms&) = delete;
  bool Query(const TQueryPair& P) const {
    return GEOSPreparedIntersects_r(G.Ctx, Prepared[static_cast<std::size_t>(P.A)],
                                    Geoms[static_cast<std::size_t>(P.B)]) == 1;
  }
};

struct TBoostForms {
  std::vector<BRing> Rings;
  explicit TBoostForms(const TWorld& W) {
    for (const TDynPoints2D& r : W.Rings) {
      BRing ring;
      ring.reserve(r.size());
      for (const TPoint2D& p : r) ring.emplace_back(p.X, p.Y);
      Rings.push_back(std::move(ring));
    }
  }
  bool Query(const TQueryPair& P) const {
    return bg::intersects(Rings[static_cast<std::size_t>(P.A)], Rings[static_cast<std::size_t>(P.B)]);
  }
};

template <class T>
const T& Forms() {
  static const T forms(World());
  return forms;
}

// What the chain filters of TestOverlap spare over the stream, counted outside any timing
// by the same loop as TestOverlap on the chains' public bounds.
struct TFilterCounts {
  double ChainPairs = 0, OutsideOther = 0, AfterSortExit = 0, ApartInX = 0, ApartInY = 0, Walked = 0, Contacts = 0;
  double MeanVertices = 0, MeanChains = 0, MinVertices = 1e300, MaxVertices = 0;
};

TFilterCounts CountFilters() {
  const TWorld& w = World();
  const TOurs& ours = Forms<TOurs>();
  TFilterCounts c;
  for (const TQueryPair& pr : w.Pairs) {
    for (int side = 0; side < 2; ++side) {
      const double n = static_cast<double>(w.Rings[static_cast<std::size_t>(side ? pr.B : pr.A)].size() - 1);
      c.MeanVertices += n;
      c.MinVertices = std::min(c.MinVertices, n);
      c.MaxVertices = std::max(c.MaxVertices, n);
      c.MeanChains += ours.Polys[static_cast<std::size_t>(side ? pr.B : pr.A)]->Count();
    }
  }
  c.MeanVertices /= 2.0 * static_cast<double>(w.Pairs.size());
  c.MeanChains /= 2.0 * static_cast<double>(w.Pairs.size());
  for (int q : w.Stream) {
    const TQueryPair& pr = w.Pairs[static_cast<std::size_t>(q)];
    const orvane::TMPolygon& pa = *ours.Polys[static_cast<std::size_t>(pr.A)];
    const orvane::TMPolygon& pb = *ours.Polys[static_cast<std::size_t>(pr.B)];
    double left = 1e300, right = -1e300, bottom = 1e300, top = -1e300;
    for (const orvane::TMChain* b : pb) {
      left = std::min(left, b->GetLeft());
      right = std::max(right, b->GetRight());
      bottom = std::min(bottom, b->First().Y);
      top = std::max(top, b->Last().Y);
    }
    bool hit = false;
    for (const orvane::TMChain* a : pa) {
      c.ChainPairs += pb.Count();
      if (a->GetLeft() - right > 1e-6 || left - a->GetRight() > 1e-6 || a->First().Y - top > 1e-6 ||
          bottom - a->Last().Y > 1e-6) {
        c.OutsideOther += pb.Count();
        continue;
      }
      int k = 0;
      for (; k < pb.Count(); ++k) {
        const orvane::TMChain* b = pb[k];
        if (b->GetLeft() - 1e-6 > a->GetRight()) break;
        if (a->GetLeft() > b->GetRight() + 1e-6) {
          ++c.ApartInX;
          continue;
        }
        if (b->First().Y - a->Last().Y > 1e-6 || a->First().Y - b->Last().Y > 1e-6) {
          ++c.ApartInY;
          continue;
        }
        ++c.Walked;
        if (a->IsOverlap(*b)) {
          hit = true;
          break;
        }
      }
      c.AfterSortExit += pb.Count() - k - (hit ? 1 : 0);
      if (hit) break;
    }
    c.Contacts += hit ? 1 : 0;
  }
  return c;
}

// Before timing: the three libraries agree on every pair.
void CrossCheck(benchmark::State& State) {
  static const bool agreed = [] {
    const TWorld& w = World();
    int mismatches = 0, contacts = 0;
    for (const TQueryPair& p : w.Pairs) {
      const bool ours = Forms<TOurs>().Query(p);
      const bool geos = Forms<TGeosForms>().Query(p);
      const bool boost = Forms<TBoostForms>().Query(p);
      contacts += ours ? 1 : 0;
      if (ours != geos || ours != boost) ++mismatches;
    }
    std::fprintf(stderr, "%s: %zu outlines, %zu pairs, %d with contact, %d answers differ between libraries\n",
                 w.Source.c_str(), w.Rings.size(), w.Pairs.size(), contacts, mismatches);
    return mismatches == 0;
  }();
  if (!agreed) State.SkipWithError("the libraries disagree on some pairs");
}

template <class T>
void RunStream(benchmark::State& State) {
  CrossCheck(State);
  const TWorld& w = World();
  const T& forms = Forms<T>();
  const TQueryPair* pairs = w.Pairs.data();
  for (auto _ : State) {
    int hits = 0;
    for (int q : w.Stream) hits += forms.Query(pairs[q]) ? 1 : 0;
    benchmark::DoNotOptimize(hits);
  }
  State.counters["ns_per_query"] =
      benchmark::Counter(static_cast<double>(kQueries) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Orvane_TestOverlap(benchmark::State& State) {
  RunStream<TOurs>(State);
  static const TFilterCounts c = CountFilters();
  State.counters["vertices_mean"] = c.MeanVertices;
  State.counters["vertices_min"] = c.MinVertices;
  State.counters["vertices_max"] = c.MaxVertices;
  State.counters["chains_mean"] = c.MeanChains;
  State.counters["chain_pairs"] = c.ChainPairs;
  State.counters["skip_outside_other"] = c.OutsideOther;
  State.counters["skip_sorted_exit"] = c.AfterSortExit;
  State.counters["skip_x_apart"] = c.ApartInX;
  State.counters["skip_y_apart"] = c.ApartInY;
  State.counters["walked"] = c.Walked;
  State.counters["contacts"] = c.Contacts;
}
void BM_GEOS_PreparedBoundaryIntersects(benchmark::State& State) { RunStream<TGeosForms>(State); }
void BM_Boost_IntersectsRings(benchmark::State& State) { RunStream<TBoostForms>(State); }

// Building every outline's form once, as a host does before asking.
template <class T>
void RunBuild(benchmark::State& State) {
  const TWorld& w = World();
  for (auto _ : State) {
    T forms(w);
    benchmark::DoNotOptimize(&forms);
  }
  State.counters["us_per_outline"] =
      benchmark::Counter(static_cast<double>(w.Rings.size()) * 1e-6,
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
void BM_Build_Orvane_TMPolygon(benchmark::State& State) { RunBuild<TOurs>(State); }
void BM_Build_GEOS_Prepared(benchmark::State& State) { RunBuild<TGeosForms>(State); }
void BM_Build_Boost_Ring(benchmark::State& State) { RunBuild<TBoostForms>(State); }

BENCHMARK(BM_Orvane_TestOverlap)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_GEOS_PreparedBoundaryIntersects)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Boost_IntersectsRings)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Build_Orvane_TMPolygon)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Build_GEOS_Prepared)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Build_Boost_Ring)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
