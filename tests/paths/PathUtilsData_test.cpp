// TPathUtils on the real part outlines, against GEOS: conversion round
// trips, areas, point relations and distances on random points, boundary points, list
// equality and congruence.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "orvane/paths/PathUtils.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

namespace fs = std::filesystem;
using U = TPathUtils;

struct TOutlineSet {
  std::string Name;
  std::vector<TDynPoints2D> Parts;  // outer rings, closing vertex dropped
  std::vector<TDynPoints2D> Bins;   // bin outer rings and holes, closing vertex dropped
};

TDynPoints2D Ring(const nlohmann::json& Pts) {
  TDynPoints2D ring = testing::JsonRing(Pts);
  if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
  return ring;
}

const std::vector<TOutlineSet>& Outlines() {
  static const std::vector<TOutlineSet> sets = [] {
    std::vector<TOutlineSet> out;
    for (const fs::path& f : testing::DataFiles("outlines", ".json")) {
      const nlohmann::json doc = testing::ReadJson(f);
      TOutlineSet set;
      set.Name = f.filename().string();
      for (const nlohmann::json& part : doc["parts"]) set.Parts.push_back(Ring(part["outer"]));
      if (doc.contains("bins")) {
        for (const nlohmann::json& bin : doc["bins"]) {
          set.Bins.push_back(Ring(bin["outer"]));
          for (const nlohmann::json& hole : bin["holes"]) set.Bins.push_back(Ring(hole));
        }
      }
      out.push_back(std::move(set));
    }
    return out;
  }();
  return sets;
}

#define REQUIRE_OUTLINES() \
  if (Outlines().empty()) GTEST_SKIP() << "no part outlines in " ORVANE_SHARED_DATA_DIR "/outlines"

TEST(PathUtilsData, EveryOutlineRoundTripsAtTheWorkingRate) {
  REQUIRE_OUTLINES();
  std::size_t rings = 0;
  for (const TOutlineSet& set : Outlines()) {
    for (const auto* group : {&set.Parts, &set.Bins}) {
      for (const TDynPoints2D& ring : *group) {
        const TPath64 path = U::CreatePath(ring, PathWorkingRate);
        const auto poly = U::CreatePolyline(path, PathWorkingRate);
        ASSERT_EQ(U::CreatePath(*poly, PathWorkingRate), path) << set.Name;
        for (std::size_t i = 0; i < ring.size(); ++i) {
          const TPoint2D& p = ring[i];
          const TPoint2D& q = (*poly)[static_cast<int>(i)];
          const double half = 0.5 / PathWorkingRate;
          ASSERT_LE(std::fabs(p.X - q.X), half * (1 + 1e-9) + std::fabs(p.X) * 1e-15) << set.Name;
          ASSERT_LE(std::fabs(p.Y - q.Y), half * (1 + 1e-9) + std::fabs(p.Y) * 1e-15) << set.Name;
        }
        ++rings;
      }
    }
  }
  EXPECT_GT(rings, 1500u);
}

#ifdef ORVANE_HAVE_GEOS

struct TGeos {
  GEOSContextHandle_t H = GEOS_init_r();
  ~TGeos() { GEOS_finish_r(H); }
  TDynPoints2D Doubles(const TPath64& P) const {
    TDynPoints2D d;
    for (const TPoint64& v : P) d.emplace_back(static_cast<double>(v.X), static_cast<double>(v.Y));
    return d;
  }
  GEOSGeometry* Ring(const TPath64& P) const { return testing::GeosRing(H, Doubles(P)); }
  GEOSGeometry* Polygon(const TPath64& P) const { return GEOSGeom_createPolygon_r(H, Ring(P), nullptr, 0); }
  GEOSGeometry* Point(const TPoint64& P) const {
    return GEOSGeom_createPointFromXY_r(H, static_cast<double>(P.X), static_cast<double>(P.Y));
  }
};

// One pass over an outline: areas, random points off a band of one integer unit (relation
// by ours and the exact test against GEOS; distance against GEOS on every tenth), and
// lattice points on the boundary.
void CheckOutline(const TGeos& G, const TPath64& P, int Points, std::mt19937_64& Rng, const std::string& Name) {
  GEOSGeometry* poly = G.Polygon(P);
  GEOSGeometry* ring = G.Ring(P);
  double geosArea = 0.0;
  GEOSArea_r(G.H, poly, &geosArea);
  ASSERT_NEAR(U::Area(P, true), geosArea, geosArea * 1e-12) << Name;

  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(G.H, poly);
  const TDynPoints2D closed = [&] {
    TDynPoints2D d = G.Doubles(P);
    d.push_back(d.front());
    return d;
  }();
  const TPaths64 asList{P};
  const TRect64 box = U::IntBoundbox(P);
  const std::int64_t mx = (box.Right - box.Left) / 10 + 1, my = (box.Bottom - box.Top) / 10 + 1;
  std::uniform_int_distribution<std::int64_t> xs(box.Left - mx, box.Right + mx), ys(box.Top - my, box.Bottom + my);
  int counted = 0;
  for (int k = 0; k < Points; ++k) {
    const TPoint64 pt(xs(Rng), ys(Rng));
    const double dist = testing::DistToRing(closed, TPoint2D(static_cast<double>(pt.X), static_cast<double>(pt.Y)));
    if (dist <= 1.0) continue;
    GEOSGeometry* gp = G.Point(pt);
    const bool in = GEOSPreparedContains_r(G.H, prepared, gp) == 1;
    ASSERT_EQ(U::RelationWithPoint(P, pt), in ? TShapeRelation::srIn : TShapeRelation::srOut) << Name;
    ASSERT_EQ(U::PointInPolygon(pt, P, box), in ? 1 : 0) << Name;
    if (k % 10 == 0) {
      double geosDist = 0.0;
      GEOSDistance_r(G.H, gp, ring, &geosDist);
      TPointL2D nearest;
      const double ours = U::DistanceTo(asList, TPointL2D(pt.X, pt.Y), nearest);
      ASSERT_NEAR(ours, geosDist, 0.5 + geosDist * 1e-12) << Name;
      // The nearest point found lies at that distance, within its rounding.
      ASSERT_NEAR(TPointL2D(pt.X, pt.Y).DistanceTo(nearest), geosDist, 1.0) << Name;
    }
    GEOSGeom_destroy_r(G.H, gp);
    ++counted;
  }
  EXPECT_GT(counted, Points / 2) << Name;

  // Vertices and lattice points on edges are on the boundary for every method.
  for (std::size_t i = 0; i < P.size(); ++i) {
    const TPoint64& a = P[i];
    const TPoint64& b = P[(i + 1) % P.size()];
    const std::int64_t g = std::gcd(std::abs(b.X - a.X), std::abs(b.Y - a.Y));
    for (std::int64_t s = 0; s < std::min<std::int64_t>(g, 3); ++s) {
      const TPoint64 on(a.X + (b.X - a.X) / std::max<std::int64_t>(g, 1) * s,
                        a.Y + (b.Y - a.Y) / std::max<std::int64_t>(g, 1) * s);
      GEOSGeometry* gp = G.Point(on);
      ASSERT_EQ(GEOSIntersects_r(G.H, gp, ring), 1) << Name;
      ASSERT_EQ(GEOSCovers_r(G.H, poly, gp), 1) << Name;
      GEOSGeom_destroy_r(G.H, gp);
      ASSERT_EQ(U::RelationWithPoint(P, on), TShapeRelation::srOn) << Name;
      ASSERT_EQ(U::PointInPolygon(on, P, box), -1) << Name;
    }
  }
  GEOSPreparedGeom_destroy_r(G.H, prepared);
  GEOSGeom_destroy_r(G.H, poly);
  GEOSGeom_destroy_r(G.H, ring);
}

TEST(PathUtilsData, AreaRelationAndDistanceAgreeWithGeos) {
  REQUIRE_OUTLINES();
  TGeos g;
  std::mt19937_64 rng(16);
  for (const TOutlineSet& set : Outlines()) {
    for (const TDynPoints2D& part : set.Parts)
      CheckOutline(g, U::CreatePath(part, PathWorkingRate), 10000, rng, set.Name);
    // Bins are large and many: fewer points each.
    for (const TDynPoints2D& bin : set.Bins) CheckOutline(g, U::CreatePath(bin, PathWorkingRate), 300, rng, set.Name);
  }
}

#endif  // ORVANE_HAVE_GEOS

// Shuffled, turned and reversed, the part list is the same list; one vertex moved by a unit
// makes it another.
TEST(PathUtilsData, EqualIgnoresOrderStartAndSenseOnly) {
  REQUIRE_OUTLINES();
  std::mt19937_64 rng(4);
  for (const TOutlineSet& set : Outlines()) {
    TPaths64 original;
    for (const TDynPoints2D& part : set.Parts) original.push_back(U::CreatePath(part, PathWorkingRate));
    TPaths64 shuffled = original;
    std::shuffle(shuffled.begin(), shuffled.end(), rng);
    for (TPath64& p : shuffled) {
      std::rotate(p.begin(), p.begin() + static_cast<std::ptrdiff_t>(rng() % p.size()), p.end());
      if (rng() % 2 == 0) U::Reverse(p);
    }
    ASSERT_TRUE(U::Equal(original, shuffled)) << set.Name;
    ASSERT_TRUE(U::Equal(shuffled, original)) << set.Name;
    TPath64& victim = shuffled[rng() % shuffled.size()];
    victim[rng() % victim.size()].X += 1;
    EXPECT_FALSE(U::Equal(original, shuffled)) << set.Name;
  }
}

#ifdef ORVANE_HAVE_GEOS

TEST(PathUtilsData, IsCongruentAgreesWithTheSymmetricDifference) {
  REQUIRE_OUTLINES();
  TGeos g;
  std::mt19937_64 rng(9);
  int decided[2] = {0, 0};
  for (const TOutlineSet& set : Outlines()) {
    for (std::size_t i = 0; i < set.Parts.size(); i += 3) {
      const TPath64 p = U::CreatePath(set.Parts[i], PathWorkingRate);
      // Each edge split at its midpoint where that is a lattice point: the same region.
      TPath64 dense;
      for (std::size_t k = 0; k < p.size(); ++k) {
        const TPoint64& a = p[k];
        const TPoint64& b = p[(k + 1) % p.size()];
        dense.push_back(a);
        if ((a.X + b.X) % 2 == 0 && (a.Y + b.Y) % 2 == 0) dense.emplace_back((a.X + b.X) / 2, (a.Y + b.Y) / 2);
      }
      // Within the precision of the double sums of areas.
      EXPECT_TRUE(U::IsCongruent({p}, {dense}, {}, 1.0 + U::Area(p) * 1e-13)) << set.Name << " " << U::Area(p);
      for (const std::int64_t move : {1, 100, 10000}) {
        TPath64 q = dense;
        const std::size_t m = rng() % q.size();
        q[m].X += move;
        q[m].Y -= move;
        // The engine rounds the crossings near the moved vertex to whole units, which moves
        // the intersection's area by up to about the length of the two edges there.
        const TPaths64 corner{{q[(m + q.size() - 1) % q.size()], q[m], q[(m + 1) % q.size()]}};
        const double resolution = 2.0 * U::Perimeter(corner[0]);
        GEOSGeometry* gp = g.Polygon(p);
        GEOSGeometry* gq = g.Polygon(q);
        if (GEOSisValid_r(g.H, gq) != 1) {
          GEOSGeom_destroy_r(g.H, gp);
          GEOSGeom_destroy_r(g.H, gq);
          continue;
        }
        GEOSGeometry* sym = GEOSSymDifference_r(g.H, gp, gq);
        double symArea = 0.0;
        GEOSArea_r(g.H, sym, &symArea);
        const double aDiff = std::fabs(U::Area(p) - U::Area(q));
        for (const double tol : {1e3, 1e6, 1e9}) {
          // Congruent within tol: the areas differ by less than tol and the symmetric
          // difference is below twice tol. Skip calls closer to either threshold than the
          // engine resolves.
          if (std::fabs(symArea - 2 * tol) < resolution || std::fabs(aDiff - tol) < 1e-6 * tol) continue;
          const bool want = aDiff < tol && symArea < 2 * tol;
          ASSERT_EQ(U::IsCongruent({p}, {q}, {}, tol), want) << set.Name << " move " << move << " tol " << tol;
          ++decided[want ? 1 : 0];
        }
        GEOSGeom_destroy_r(g.H, sym);
        GEOSGeom_destroy_r(g.H, gp);
        GEOSGeom_destroy_r(g.H, gq);
      }
    }
  }
  EXPECT_GT(decided[0], 100);
  EXPECT_GT(decided[1], 100);
}

#endif  // ORVANE_HAVE_GEOS

}  // namespace
}  // namespace orvane
