#include "orvane/monotone/MChain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

const TMChain& Chain(std::initializer_list<TPoint2D> Pts) {
  static std::vector<std::unique_ptr<TMChain>> made;  // alive for the whole test program
  made.push_back(std::make_unique<TMChain>());
  for (const TPoint2D& p : Pts) made.back()->Add(p);
  return *made.back();
}

// Both ways round, since the walk is not symmetric in its two chains.
void ExpectOverlap(const TMChain& A, const TMChain& B, bool Want) {
  EXPECT_EQ(A.IsOverlap(B), Want);
  EXPECT_EQ(B.IsOverlap(A), Want);
}

TEST(MChain, BoundsFollowAddsAndTranslate) {
  TMChain c;
  EXPECT_FALSE(c.BoundBox().IsValid());
  c.Add({2, 0});
  EXPECT_EQ(c.GetLeft(), 2.0);
  c.Add({-1, 1});
  c.Insert(1, {5, 0.5});
  EXPECT_EQ(c.GetLeft(), -1.0);
  EXPECT_EQ(c.GetRight(), 5.0);
  EXPECT_EQ(c.BoundBox(), TRect2D(-1, 0, 5, 1));

  // Deleting narrows nothing until ResetBound.
  c.Delete(1);
  EXPECT_EQ(c.GetRight(), 5.0);
  c.ResetBound();
  EXPECT_EQ(c.GetRight(), 2.0);

  c.Translate({1, 2});
  EXPECT_EQ(c.BoundBox(), TRect2D(0, 2, 3, 3));
  EXPECT_EQ(c[1], TPoint2D(0, 3));

  c.SetPositive(false);
  c.SetNext(&c);
  auto copy = c.CloneAs<TMChain>();
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(copy->IsEqualTo(c, 0.0));
  EXPECT_FALSE(copy->GetPositive());
  EXPECT_EQ(copy->GetNext(), nullptr);
  EXPECT_EQ(copy->GetLeft(), 0.0);
}

TEST(MChain, IsOverlapHandCases) {
  const TMChain empty;
  const TMChain& up = Chain({{0, 0}, {0, 2}});
  ExpectOverlap(empty, up, false);

  // A vertex within the tolerance of the other's segment, and beyond it.
  ExpectOverlap(up, Chain({{-1, 0}, {-1e-7, 1}, {-1, 3}}), true);
  ExpectOverlap(up, Chain({{-1, 0}, {-1e-5, 1}, {-1, 3}}), false);

  // Heights apart by at most 1e-6 are decided by x.
  ExpectOverlap(up, Chain({{0, 2 + 5e-7}, {0, 3}}), true);
  ExpectOverlap(up, Chain({{1, 2 + 5e-7}, {1, 3}}), false);
  ExpectOverlap(up, Chain({{0, 2 + 2e-6}, {0, 3}}), false);

  // A level run that reaches the last vertex covers it, stored either way.
  ExpectOverlap(Chain({{2, 1}, {0, 1}}), Chain({{2, 1}, {2, 3}}), true);

  // Level runs that meet end to end where each chain enters its run at another stop of the
  // walk: a top run against a bottom run, and a top run that reaches past the other's top.
  ExpectOverlap(Chain({{0, 0}, {4, 0}, {3, 2}, {2, 2}}), Chain({{2, 2}, {1, 2}, {4, 4}, {0, 5}}), true);
  ExpectOverlap(Chain({{7, 2}, {6, 2}, {3, 2}, {3, 3}}), Chain({{0, 1}, {3, 2}, {1, 2}}), true);
  ExpectOverlap(Chain({{0, 0}, {0, 2}, {2, 2}}), Chain({{2, 2}, {3, 2}}), true);
  ExpectOverlap(Chain({{0, 0}, {0, 2}, {1.9, 2}}), Chain({{2, 2}, {3, 2}}), false);

  // A falling run stored reversed: a level stretch with descending x.
  ExpectOverlap(Chain({{5, 0}, {3, 1}, {1, 1}, {0, 2}}), Chain({{2, 0}, {2, 1}, {2, 2}}), true);
  ExpectOverlap(Chain({{5, 0}, {3, 1}, {2.5, 1}, {4, 2}}), Chain({{2, 0}, {2, 1}, {2, 2}}), false);

  // A single vertex is a point and never reads outside the arrays.
  const TMChain& point = Chain({{0, 1}});
  ExpectOverlap(point, up, true);
  ExpectOverlap(point, Chain({{1, 0}, {1, 2}}), false);
  ExpectOverlap(point, Chain({{0, 1}}), true);
}

// Long chains on whole numbers, climbing by 0 to 2 per vertex with level runs that keep
// their direction, against the brute-force distance of their segments.
TEST(MChain, IsOverlapAgreesWithBruteForceOnLongChains) {
  std::mt19937 rng(29);
  std::uniform_int_distribution<int> count(20, 60), rise(0, 2), step(-1, 1), start(0, 10);
  auto make = [&](TMChain& Chain, TDynPoints2D& Pts, int Y) {
    int x = start(rng);
    int dir = 0;
    for (int k = 0, n = count(rng); k < n; ++k) {
      const int dy = k > 0 ? rise(rng) : 0;
      int dx = step(rng);
      if (dy == 0 && k > 0) dx = dir != 0 ? dir : (dx >= 0 ? 1 : -1);
      dir = dy == 0 ? dx : 0;
      x += dx;
      Y += dy;
      Pts.emplace_back(x, Y);
      Chain.Add(Pts.back());
    }
  };
  int contacts = 0;
  for (int k = 0; k < 1500; ++k) {
    TMChain a, b;
    TDynPoints2D pa, pb;
    make(a, pa, 0);
    make(b, pb, 3 * rise(rng));
    double d = MaxDouble;
    for (std::size_t i = 0; i + 1 < pa.size(); ++i)
      for (std::size_t j = 0; j + 1 < pb.size(); ++j)
        d = std::min(d, testing::SegSegDist(pa[i], pa[i + 1], pb[j], pb[j + 1]));
    contacts += d == 0.0 ? 1 : 0;
    ASSERT_EQ(a.IsOverlap(b), d == 0.0) << k;
    ASSERT_EQ(b.IsOverlap(a), d == 0.0) << k;
  }
  EXPECT_GT(contacts, 300);
  EXPECT_LT(contacts, 1200);
}

TEST(MChain, GetRangeIdsByPt) {
  // A level stretch at y = 1 stored with x 1, 3, 2.
  const TMChain& c = Chain({{0, 0}, {1, 1}, {3, 1}, {2, 1}, {4, 2}});
  auto range = [&](double X, double Y) {
    const TPair<int, int> r = c.GetRangeIdsByPt({X, Y});
    return std::pair(r.Key, r.Value);
  };
  EXPECT_EQ(range(0.5, 0.5), std::pair(0, 1));
  EXPECT_EQ(range(3, 1.5), std::pair(3, 4));
  // Found from either side of the stretch.
  EXPECT_EQ(range(5, 1), std::pair(1, 3));
  EXPECT_EQ(range(-5, 1), std::pair(1, 3));
  EXPECT_EQ(range(2.5, 1 + 5e-7), std::pair(1, 3));
  // Below: out by more than 1e-6, in range from 0 by less.
  EXPECT_EQ(range(0, -2e-6), std::pair(-1, -1));
  EXPECT_EQ(range(0, -5e-7), std::pair(0, 0));
  EXPECT_EQ(range(0.5, 0), std::pair(0, 0));
  // Above the last vertex, even by less than 1e-6, and at its height with larger x.
  EXPECT_EQ(range(4, 2), std::pair(4, 4));
  EXPECT_EQ(range(4, 2 + 5e-7), std::pair(-1, -1));
  EXPECT_EQ(range(5, 2), std::pair(-1, -1));
  EXPECT_EQ(TMChain().GetRangeIdsByPt({0, 0}).Key, -1);
}

}  // namespace
}  // namespace orvane
