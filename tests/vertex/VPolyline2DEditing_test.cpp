#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/VPolyline2DList.h"
#include "support/BoostGeometry.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

namespace bg = boost::geometry;
using testing::BPolygon;

using testing::RandomStar;

// Runs Edit on a polyline made of Pts and compares the vertices with Want.
template <class F>
void ExpectEdit(const TDynPoints2D& Pts, F&& Edit, const TDynPoints2D& Want) {
  TVPolyline2D poly(Pts);
  Edit(poly);
  EXPECT_EQ(poly.Points(), Want);
}

TEST(VPolyline2DEditing, HandWorkedEdits) {
  const TDynPoints2D seg{{0, 0}, {10, 0}};
  // Trims that meet or pass each other leave the middle.
  ExpectEdit(seg, [](TVPolyline2D& p) { p.Trim(6, true, true); }, {{5, 0}});
  ExpectEdit(seg, [](TVPolyline2D& p) { p.Trim(5, true, true); }, {{5, 0}});
  ExpectEdit(seg, [](TVPolyline2D& p) { p.Trim(10 - 1e-7, true, false); }, {{10, 0}});  // < 1e-6 remains
  ExpectEdit(
      seg, [](TVPolyline2D& p) { p.Trim(-1, true, true); }, seg);
  ExpectEdit({{1, 1}, {1, 1}}, [](TVPolyline2D& p) { p.Trim(1, true, true); }, {{1, 1}});
  ExpectEdit({{0, 0}, {2, 0}, {2, 2}, {0, 2}}, [](TVPolyline2D& p) { p.Trim(2, true, true); }, {{2, 0}, {2, 2}});

  TDynPoints2D line;
  for (int i = 0; i <= 10; ++i) line.emplace_back(i, 0);
  auto pick = [&](std::vector<int> Ids) {
    TDynPoints2D pts;
    for (int id : Ids) pts.push_back(line[static_cast<std::size_t>(id)]);
    return pts;
  };
  ExpectEdit(
      line, [](TVPolyline2D& p) { p.Simplify(0, 2, 4); }, pick({0, 1, 5, 6, 7, 8, 9, 10}));
  ExpectEdit(
      line, [](TVPolyline2D& p) { p.Simplify(5, 2, 4); }, line);
  ExpectEdit(
      line, [](TVPolyline2D& p) { p.Simplify(5, 0, 10); }, pick({0, 2, 5, 8, 10}));  // 2.5 and 7.5 to even
  ExpectEdit(
      line, [](TVPolyline2D& p) { p.Simplify(1, 3, 6); }, pick({0, 1, 2, 4, 7, 8, 9, 10}));
  TVPolyline2D untouched(line);
  EXPECT_THROW(untouched.Simplify(2, 5, 11), Exception);
  EXPECT_EQ(untouched.Points(), line);

  // Each vertex meets the last one kept: (1.2, 0) is within 1 of (0.6, 0), which goes, not of (0, 0).
  const TDynPoints2D closed{{0, 0}, {1, 0}, {1, 0}, {1, 1e-7}, {1, 1}, {0, 1}, {0, 0}};
  ExpectEdit(closed, [](TVPolyline2D& p) { p.DeleteNeighbourClosed(false, 1e-6); },
             {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}});
  ExpectEdit(closed, [](TVPolyline2D& p) { p.DeleteNeighbourClosed(true, 1e-6); }, {{1, 0}, {1, 1}, {0, 1}, {0, 0}});
  ExpectEdit({{0, 0}, {0.6, 0}, {1.2, 0}}, [](TVPolyline2D& p) { p.DeleteNeighbourClosed(false, 1); },
             {{0, 0}, {1.2, 0}});
  ExpectEdit({{2, 2}, {2, 2}}, [](TVPolyline2D& p) { p.DeleteNeighbourClosed(false, 1e-6); }, {{2, 2}});
  ExpectEdit({{2, 2}, {2, 2}}, [](TVPolyline2D& p) { p.DeleteNeighbourClosed(true, 1e-6); }, {});

  // Starting mid-edge, the first vertex goes and the outline stays closed; the random
  // outlines below lose their other midpoints.
  const TDynPoints2D square{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  ExpectEdit({{1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}, {1, 0}}, [](TVPolyline2D& p) { p.CollinearSmooth(1e-6, true); },
             {{2, 0}, {2, 2}, {0, 2}, {0, 0}, {2, 0}});
  const TDynPoints2D spike{{0, 0}, {2, 0}, {1, 0}, {1, 3}};
  ExpectEdit(
      spike, [](TVPolyline2D& p) { p.CollinearSmooth(1e-6, true); }, spike);
  ExpectEdit(spike, [](TVPolyline2D& p) { p.CollinearSmooth(1e-6, false); }, {{0, 0}, {1, 0}, {1, 3}});
  // Directions run from the last kept vertex, so a slow bend keeps vertices along it.
  TDynPoints2D bend;
  for (int i = 0; i <= 100; ++i) bend.emplace_back(i, 1e-4 * i * i);
  TVPolyline2D bent(bend);
  bent.CollinearSmooth(1e-3, true);
  EXPECT_GT(bent.Count(), 4);

  ExpectEdit({{0, 0}, {2, 0}, {2, 1}}, [](TVPolyline2D& p) { p.Negative(); }, {{0, 0}, {-2, 0}, {-2, -1}});
  ExpectEdit({{0, 0}, {1, 0}, {2, 0}}, [](TVPolyline2D& p) { p.SetIsClockwise(true); }, {{2, 0}, {1, 0}, {0, 0}});
  ExpectEdit(
      square, [](TVPolyline2D& p) { p.ConnectHeadTail(); }, square);
  ExpectEdit({{3, 4}}, [](TVPolyline2D& p) { p.ConnectHeadTail(); }, {{3, 4}});

  // Joins: the first pair of ends in order decides; the junction vertex is S's, except where
  // S's last meets O's first.
  const TVPolyline2D s{{0, 0}, {1, 0}, {2, 0}};
  auto join = [&](const TDynPoints2D& O) {
    TVPolyline2D result{{7, 7}};
    return s.TryConnect(TVPolyline2D(O), result, 1e-3) ? result.Points() : TDynPoints2D{};
  };
  EXPECT_EQ(join({{0, 1e-4}, {0, 2}}), (TDynPoints2D{{7, 7}, {0, 2}, {0, 0}, {1, 0}, {2, 0}}));
  EXPECT_EQ(join({{0, 2}, {0, 1e-4}}), (TDynPoints2D{{7, 7}, {0, 2}, {0, 0}, {1, 0}, {2, 0}}));
  EXPECT_EQ(join({{2, 1e-4}, {2, 1}}), (TDynPoints2D{{7, 7}, {0, 0}, {1, 0}, {2, 1e-4}, {2, 1}}));
  EXPECT_EQ(join({{2, 1}, {2, 1e-4}}), (TDynPoints2D{{7, 7}, {0, 0}, {1, 0}, {2, 0}, {2, 1}}));
  EXPECT_EQ(join({{2, 0}, {1, 1}, {0, 0}}), (TDynPoints2D{{7, 7}, {2, 0}, {1, 1}, {0, 0}, {1, 0}, {2, 0}}));
  EXPECT_EQ(join({{5, 5}, {6, 6}}), TDynPoints2D{});
}

TEST(VPolyline2DEditing, TrimAndCleanUpInvariants) {
  std::mt19937 rng(8);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 200; ++round) {
    const TDynPoints2D corners = RandomStar(rng, 3 + round % 40);
    TDynPoints2D pts = corners;
    if (round % 2 == 0) pts.push_back(pts.front());
    // A trim removes exactly the length asked for, at the ends asked for, and keeps vertices.
    const TVPolyline2D source(pts);
    const double total = source.TotalLength();
    const double len = total * 0.45 * unit(rng);
    const bool head = round % 3 != 1;
    const bool tail = round % 3 != 0;
    TVPolyline2D cut(pts);
    cut.Trim(len, head, tail);
    EXPECT_NEAR(cut.TotalLength(), total - len * ((head ? 1 : 0) + (tail ? 1 : 0)), 1e-9) << round;
    double u = 0.0;
    TPoint2D p;
    ASSERT_TRUE(source.CalcTravelPos(0, head ? len : 0.0, u, p));
    EXPECT_LT(cut.First().DistanceTo(p), 1e-9);
    for (int k = 1; k + 1 < cut.Count(); ++k) EXPECT_TRUE(source.Contains(cut[k])) << round;

    // Near repetitions (within Tol) and near-straight midpoints (sine below ATol) added to a
    // closed outline are removed again, and the area moves by no more than each removal
    // allows: half of Tol, or of ATol times a chord, times the box diagonal.
    constexpr double Tol = 1e-4;
    constexpr double ATol = 1e-5;
    TDynPoints2D noisy;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const TPoint2D a = corners[i];
      const TPoint2D b = corners[(i + 1) % corners.size()];
      noisy.push_back(a);
      if (unit(rng) < 0.5) noisy.push_back(a + TPoint2D(unit(rng) - 0.5, unit(rng) - 0.5) * Tol);
      const TPoint2D normal = (b - a).RotateCcw90().Normal();
      for (const double t : {0.2, 0.5, 0.8}) {
        noisy.push_back(a + (b - a) * t +
                        normal * ((unit(rng) - 0.5) * 0.5 * ATol * std::min(t, 1 - t) * (b - a).Mag()));
      }
    }
    noisy.push_back(noisy.front());
    TVPolyline2D poly(noisy);
    const TRect2D box = poly.BoundBox();
    const double diagonal = std::hypot(box.Width(), box.Height());
    const double area = poly.Area();
    const int before = poly.Count();
    poly.DeleteNeighbourClosed(false, Tol);
    EXPECT_LE(std::fabs(poly.Area() - area), 0.5 * Tol * diagonal * (before - poly.Count())) << round;
    const double area2 = poly.Area();
    const double perimeter = poly.TotalLength();
    poly.CollinearSmooth(ATol, true);
    EXPECT_LE(std::fabs(poly.Area() - area2), 0.5 * ATol * diagonal * perimeter) << round;
    TDynPoints2D want = corners;
    want.push_back(corners.front());
    ASSERT_EQ(poly.Points(), want) << round;
  }
}

TEST(VPolyline2DEditing, UnionAgainstBoost) {
  const TVPolyline2D a(TRect2D(0, 0, 2, 2));
  EXPECT_EQ(a.Union(TVPolyline2D(TRect2D(3, 0, 5, 2)), TFillRule::frNonZero)->Count(), 2);
  auto merged = a.Union(TVPolyline2D(TRect2D(1, 1, 3, 3)), TFillRule::frNonZero);
  ASSERT_EQ(merged->Count(), 1);
  EXPECT_EQ((*merged)[0]->Count(), 8);  // no closing vertex
  EXPECT_DOUBLE_EQ(merged->Area(), 7.0);

  // Both outlines enter as subjects, so under the even-odd rule, which ignores orientation,
  // the region they share is covered twice and drops out.
  std::mt19937 rng(13);
  std::uniform_real_distribution<double> unit(-10.0, 10.0);
  auto toBoost = [](const TDynPoints2D& Pts) {
    BPolygon poly;
    for (const TPoint2D& p : Pts) bg::append(poly.outer(), bg::model::d2::point_xy<double>(p.X, p.Y));
    bg::correct(poly);
    return poly;
  };
  for (int round = 0; round < 40; ++round) {
    const TDynPoints2D p = RandomStar(rng, 5 + round % 25);
    TDynPoints2D q = RandomStar(rng, 5 + round % 17);
    const TPoint2D shift(unit(rng), unit(rng));
    for (TPoint2D& v : q) v += shift;
    const bool evenOdd = round % 2 == 0;
    std::vector<BPolygon> result;
    if (evenOdd) {
      bg::sym_difference(toBoost(p), toBoost(q), result);
    } else {
      bg::union_(toBoost(p), toBoost(q), result);
    }
    double want = 0.0;
    for (const BPolygon& r : result) want += bg::area(r);
    TVPolyline2D qq(q);
    qq.SetIsClockwise(evenOdd);
    auto got = TVPolyline2D(p).Union(qq, evenOdd ? TFillRule::frEvenOdd : TFillRule::frNonZero);
    // Scaling to integers moves each vertex by at most half of 1e-5.
    EXPECT_NEAR(got->Area(), want, 1e-5 * (TVPolyline2D(p).TotalLength() + qq.TotalLength())) << round;
  }
}

// A derived chain that keeps a count of its own in step through a virtual slot.
class TCountingPolyline final : public TVPolyline2D {
 public:
  using TVPolyline2D::TVPolyline2D;
  std::unique_ptr<TVPoint2DList> New() const override { return std::make_unique<TCountingPolyline>(); }
  void ConnectHeadTail() override {
    ++Closings;
    TVPolyline2D::ConnectHeadTail();
  }
  static inline int Closings = 0;
};

TEST(VPolyline2DEditing, DerivedClassesHearOfClosing) {
  TCountingPolyline square{{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  square.CollinearSmooth(1e-6, true);
  EXPECT_EQ(TCountingPolyline::Closings, 1);
  EXPECT_EQ(square.RelationWith(TCountingPolyline{{0.5, 0.5}, {1, 0.5}, {1, 1}}), 1);
  EXPECT_EQ(TCountingPolyline::Closings, 3);  // both clones are closed through the override
}

}  // namespace
}  // namespace orvane
