#include "orvane/algorithms/MelkmanAlgo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/PointArray.h"
#include "support/SharedData.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using ::testing::ElementsAre;
using TKey = std::pair<double, double>;

std::vector<int> Hull(TList<TPoint2D>& Pts) {
  TList<int> ids;
  TMelkmanAlgo::CalcConvexHull(Pts, ids);
  return ids.ToArray();
}

std::vector<int> Hull(std::initializer_list<TPoint2D> Pts) {
  TList<TPoint2D> list(Pts);
  return Hull(list);
}

// A star-shaped polygon about the origin on a grid of 4: the vertices stand by strictly
// increasing angle, so it is simple. Some edges get exactly collinear in-between points,
// some vertices are repeated, and some corners are pulled onto a square, which puts runs
// of collinear points on the hull itself. The start is rotated to a non-collinear triple.
TDynPoints2D RandomSimplePolygon(std::mt19937& Rng, int Corners) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const bool square = unit(Rng) < 0.4;
  TDynPoints2D star;
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.9 * unit(Rng)) * TwoPi / Corners;
    double r = 100.0 + 900.0 * unit(Rng);
    if (square && unit(Rng) < 0.7) r = 1000.0 / std::max(std::fabs(std::cos(a)), std::fabs(std::sin(a)));
    const TPoint2D p(4.0 * std::round(r * std::cos(a) / 4.0), 4.0 * std::round(r * std::sin(a) / 4.0));
    if (!star.empty() && star.back().CrossMul(p) <= 0.0) continue;  // same ray, or out of order
    star.push_back(p);
  }
  while (star.size() > 2 && star.back().CrossMul(star.front()) <= 0.0) star.pop_back();
  TDynPoints2D poly;
  for (std::size_t i = 0; i < star.size(); ++i) {
    const TPoint2D a = star[i];
    const TPoint2D b = star[(i + 1) % star.size()];
    poly.push_back(a);
    if (unit(Rng) < 0.1) poly.push_back(a);
    if (unit(Rng) < 0.4) {
      for (int j = 1; j < 4; ++j) poly.push_back(a + (b - a) * (j / 4.0));
    }
  }
  for (std::size_t s = 0; s < poly.size(); ++s) {
    const std::size_t n = poly.size();
    if (TPoint2DUtils::IsLeft(poly[s], poly[(s + 1) % n], poly[(s + 2) % n]) != 0.0) {
      std::rotate(poly.begin(), poly.begin() + static_cast<std::ptrdiff_t>(s), poly.end());
      return poly;
    }
  }
  return {};
}

// The corners of the hull by brute force: (a, b) is a hull edge when no point lies right of
// it and collinear points lie between a and b. Exact on grid coordinates.
std::set<TKey> BruteForceCorners(const TDynPoints2D& Pts) {
  std::set<TKey> corners;
  for (const TPoint2D& a : Pts) {
    for (const TPoint2D& b : Pts) {
      if (a == b) continue;
      bool edge = true;
      for (const TPoint2D& c : Pts) {
        const double side = TPoint2DUtils::IsLeft(a, b, c);
        const double along = (c - a).DotMul(b - a);
        if (side < 0.0 || (side == 0.0 && (along < 0.0 || along > (b - a).MagSqr()))) {
          edge = false;
          break;
        }
      }
      if (edge) corners.insert({a.X, a.Y});
    }
  }
  return corners;
}

TEST(MelkmanAlgo, HandWorkedHulls) {
  // A closing point is not reported; the ring closes on the first index.
  EXPECT_THAT(Hull({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}), ElementsAre(0, 1, 2, 3, 0));
  // A midpoint where the outline closes, after and before the corner it lies next to.
  EXPECT_THAT(Hull({{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 1}}), ElementsAre(0, 1, 2, 3, 0));
  EXPECT_THAT(Hull({{0, 1}, {0, 0}, {2, 0}, {2, 2}, {0, 2}}), ElementsAre(1, 2, 3, 4, 1));
  // A clockwise outline keeps its order, so its hull is clockwise as well.
  EXPECT_THAT(Hull({{0, 4}, {2, 1}, {4, 4}, {4, 0}, {0, 0}}), ElementsAre(0, 2, 3, 4, 0));
  // A repeated corner is reported once.
  EXPECT_THAT(Hull({{0, 0}, {1, 0}, {1, 1}, {1, 1}, {0, 1}}), ElementsAre(0, 1, 3, 4, 0));
}

TEST(MelkmanAlgo, CollinearStartIsNudgedInPlace) {
  // Clockwise, so the nudge (-X, +Y) pushes point 1 out of the top side: it becomes a corner.
  TList<TPoint2D> pts{{0, 2}, {1, 2}, {2, 2}, {2, 0}, {0, 0}};
  EXPECT_THAT(Hull(pts), ElementsAre(0, 1, 2, 3, 4, 0));
  EXPECT_EQ(pts[1], TPoint2D(1.0 - 2.97e-6, 2.0 + 1.82e-6));
  // Counter-clockwise, the same nudge pushes it inside, and it drops out.
  TList<TPoint2D> ccw{{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}};
  EXPECT_THAT(Hull(ccw), ElementsAre(0, 2, 3, 4, 0));
}

TEST(MelkmanAlgo, TooFewPointsRaiseAndLeaveTheResultAlone) {
  for (TDynPoints2D pts : {TDynPoints2D{}, TDynPoints2D{{0, 0}, {1, 1}}, TDynPoints2D{{0, 0}, {1, 1}, {0, 0}}}) {
    TList<TPoint2D> list;
    list.AddRange(pts);
    TList<int> ids{7};
    orvane::testing::ExpectRaise<Exception>([&] { TMelkmanAlgo::CalcConvexHull(list, ids); }, "Error Input for [MelkmanAlg]");
    EXPECT_THAT(ids.ToArray(), ElementsAre(7));
  }
}

TEST(MelkmanAlgo, MatchesBruteForceOnRandomSimplePolygons) {
  std::mt19937 rng(12345);
  int tested = 0;
  for (int round = 0; round < 300; ++round) {
    TDynPoints2D poly = RandomSimplePolygon(rng, 5 + round % 20);
    if (poly.size() < 3) continue;
    if (round % 2 == 1) std::reverse(poly.begin(), poly.end());
    if (round % 3 == 0) poly.push_back(poly.front());

    TList<TPoint2D> pts;
    pts.AddRange(poly);
    const std::vector<int> ids = Hull(pts);
    // Against the points as the call left them: a collinear start has point 1 nudged.
    poly = pts.ToArray();
    ASSERT_GE(ids.size(), 4u);
    EXPECT_EQ(ids.front(), ids.back());
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end() - 1)) << "round " << round;
    std::set<TKey> got;
    TDynPoints2D ring;
    for (std::size_t k = 0; k + 1 < ids.size(); ++k) {
      const TPoint2D p = poly[static_cast<std::size_t>(ids[k])];
      got.insert({p.X, p.Y});
      ring.push_back(p);
    }
    EXPECT_EQ(got.size(), ids.size() - 1) << "a corner reported twice, round " << round;
    EXPECT_EQ(got, BruteForceCorners(poly)) << "round " << round;
    EXPECT_EQ(PolyArea(ring) > 0.0, PolyArea(poly) > 0.0) << "round " << round;
    ++tested;
  }
  EXPECT_GT(tested, 250);
}

// On every real part outline the result is the hull by definition: a ring of input points
// that turns strictly the same way at every corner and leaves no input point outside.
// (Boost.Geometry is no reference here: on one gardeyn5 part, where two corners lie within
// 1e-15 of one vertical line, its hull drops the extreme one and leaves it 0.5 outside.)
TEST(MelkmanAlgo, IsTheHullOfRealOutlines) {
  const auto files = testing::DataFiles("outlines", ".json");
  if (files.empty()) GTEST_SKIP() << "no part data in " ORVANE_SHARED_DATA_DIR;
  int parts = 0;
  for (const std::filesystem::path& file : files) {
    const nlohmann::json doc = testing::ReadJson(file);
    for (const nlohmann::json& part : doc["parts"]) {
      TList<TPoint2D> pts;
      pts.AddRange(testing::JsonRing(part["outer"]));
      const std::vector<int> ids = Hull(pts);
      TDynPoints2D ring;
      for (int id : ids) ring.push_back(pts[id]);
      const double sense = PolyArea(ring) > 0.0 ? 1.0 : -1.0;
      const double size = CalcAABB(pts.List()).Width() + CalcAABB(pts.List()).Height();
      const std::size_t h = ring.size() - 1;
      ASSERT_GE(h, 3u);
      for (std::size_t k = 0; k < h; ++k) {
        const TPoint2D& a = ring[(k + h - 1) % h];
        EXPECT_GT(sense * TPoint2DUtils::IsLeft(a, ring[k], ring[k + 1]), 0.0) << file.filename();
      }
      for (const TPoint2D& q : pts) {
        for (std::size_t k = 0; k < h; ++k) {
          ASSERT_GE(sense * TPoint2DUtils::IsLeft(ring[k], ring[k + 1], q), -1e-12 * size * size)
              << file.filename() << q.ToString();
        }
      }
      ++parts;
    }
  }
  EXPECT_GT(parts, 500);
}

}  // namespace
}  // namespace orvane
