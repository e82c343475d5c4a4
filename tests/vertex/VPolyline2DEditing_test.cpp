#include <gtest/gtest.h>

// Boost.Geometry's rescaling trips a false maybe-uninitialized warning at -O2.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#pragma GCC diagnostic pop
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {
namespace {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;

// A simple outline: vertices at increasing angles round the origin with random radii.
TDynPoints2D Star(std::mt19937& Rng, int Corners, double Scale = 1.0) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  TDynPoints2D pts;
  for (int i = 0; i < Corners; ++i) {
    const double a = (i + 0.8 * unit(Rng)) * TwoPi / Corners;
    pts.push_back(TPoint2D(std::cos(a), std::sin(a)) * (Scale * (1.0 + 9.0 * unit(Rng))));
  }
  return pts;
}

double Diagonal(const TVPolyline2D& Poly) {
  const TRect2D box = Poly.BoundBox();
  return std::hypot(box.Width(), box.Height());
}

TEST(VPolyline2DEditing, OrientationReflectionAndClosing) {
  TVPolyline2D flat{{0, 0}, {1, 0}, {2, 0}};
  flat.SetIsClockwise(false);
  EXPECT_EQ(flat[0], TPoint2D(0, 0));
  flat.SetIsClockwise(true);  // no area is not clockwise, so it turns round
  EXPECT_EQ(flat[0], TPoint2D(2, 0));

  TVPolyline2D square{{0, 0}, {2, 0}, {2, 1}, {0, 1}};
  square.Negative();
  EXPECT_TRUE(square.IsEqualTo(TVPolyline2D{{0, 0}, {-2, 0}, {-2, -1}, {0, -1}}, 0.0));
  EXPECT_DOUBLE_EQ(square.Area(), 2.0);
  square.ConnectHeadTail();
  EXPECT_EQ(square.Count(), 5);
  square.ConnectHeadTail();
  EXPECT_EQ(square.Count(), 5);
  TVPolyline2D one(TPoint2D(3, 4));
  one.ConnectHeadTail();
  EXPECT_EQ(one.Count(), 1);
  TVPolyline2D none;
  none.ConnectHeadTail();
  EXPECT_EQ(none.Count(), 0);
}

TEST(VPolyline2DEditing, TrimHandWorked) {
  auto segment = [] { return TVPolyline2D{{0, 0}, {10, 0}}; };
  TVPolyline2D a = segment();
  a.Trim(1, true, false);
  EXPECT_TRUE(a.IsEqualTo(TVPolyline2D{{1, 0}, {10, 0}}, 1e-12));
  TVPolyline2D b = segment();
  b.Trim(6, true, true);
  EXPECT_TRUE(b.IsEqualTo(TVPolyline2D{{5, 0}}, 1e-12));
  TVPolyline2D c = segment();
  c.Trim(5, true, true);
  EXPECT_TRUE(c.IsEqualTo(TVPolyline2D{{5, 0}}, 1e-12));
  TVPolyline2D d = segment();
  d.Trim(2.5, false, true);
  EXPECT_TRUE(d.IsEqualTo(TVPolyline2D{{0, 0}, {7.5, 0}}, 1e-12));
  // Cuts that end on vertices keep them once.
  TVPolyline2D e{{0, 0}, {2, 0}, {2, 2}, {0, 2}};
  e.Trim(2, true, true);
  EXPECT_TRUE(e.IsEqualTo(TVPolyline2D{{2, 0}, {2, 2}}, 0.0));
  // Nothing to do, or nothing to measure along.
  TVPolyline2D f = segment();
  f.Trim(0, true, true);
  f.Trim(-1, true, true);
  f.Trim(3, false, false);
  EXPECT_TRUE(f.IsEqualTo(segment(), 0.0));
  TVPolyline2D dot{{1, 1}, {1, 1}};
  dot.Trim(1, true, true);
  EXPECT_TRUE(dot.IsEqualTo(TVPolyline2D{{1, 1}}, 0.0));
  TVPolyline2D g = segment();
  g.Trim(10 - 1e-7, true, false);  // less than 1e-6 remains: the last vertex
  EXPECT_TRUE(g.IsEqualTo(TVPolyline2D{{10, 0}}, 0.0));
}

TEST(VPolyline2DEditing, TrimKeepsWhatLiesBetweenTheCuts) {
  std::mt19937 rng(41);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 200; ++round) {
    TDynPoints2D pts = Star(rng, 3 + round % 30);
    if (round % 2 == 0) pts.push_back(pts.front());
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
    ASSERT_TRUE(source.CalcTravelPos(0, total - (tail ? len : 0.0) - 1e-5, u, p));
    EXPECT_LT(cut.Last().DistanceTo(p), 1e-5 + 1e-9);
    // Every vertex that stays is a vertex of the source, apart from the new ends.
    for (int k = 1; k + 1 < cut.Count(); ++k) EXPECT_TRUE(source.Contains(cut[k])) << round;
    EXPECT_FALSE(cut[0] == cut[1]);
    EXPECT_FALSE(cut[cut.Count() - 1] == cut[cut.Count() - 2]);
  }
}

TEST(VPolyline2DEditing, SimplifyByIndex) {
  TDynPoints2D pts;
  for (int i = 0; i <= 10; ++i) pts.emplace_back(i, 0);
  auto line = [&] { return TVPolyline2D(pts); };
  TVPolyline2D a = line();
  a.Simplify(0, 2, 4);
  EXPECT_EQ(a.Count(), 8);
  EXPECT_EQ(a[2], TPoint2D(5, 0));
  TVPolyline2D b = line();
  b.Simplify(5, 2, 4);
  EXPECT_EQ(b.Count(), 11);
  TVPolyline2D c = line();
  c.Simplify(2, 0, 10);
  EXPECT_TRUE(c.IsEqualTo(TVPolyline2D{{0, 0}, {10, 0}}, 0.0));
  // Steps of 10 / 4 = 2.5 round half to even: 0, 2, 5, 8, 10.
  TVPolyline2D d = line();
  d.Simplify(5, 0, 10);
  EXPECT_TRUE(d.IsEqualTo(TVPolyline2D{{0, 0}, {2, 0}, {5, 0}, {8, 0}, {10, 0}}, 0.0));
  TVPolyline2D e = line();
  e.Simplify(1, 3, 6);  // the middle by integer division: 4
  EXPECT_TRUE(e.IsEqualTo(TVPolyline2D{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {7, 0}, {8, 0}, {9, 0}, {10, 0}}, 0.0));
  TVPolyline2D f = line();
  EXPECT_THROW(f.Simplify(2, 5, 11), Exception);
  EXPECT_THROW(f.Simplify(2, -1, 3), Exception);
  try {
    f.Simplify(0, 6, 3);
  } catch (const Exception& x) {
    EXPECT_STREQ(x.what(), "[Error] TVPolyline2D.Simplify: 下标越界");
  }
  EXPECT_EQ(f.Count(), 11);
}

TEST(VPolyline2DEditing, DeleteNeighbourClosedHandWorked) {
  const TVPolyline2D square{{0, 0}, {1, 0}, {1, 0}, {1, 1e-7}, {1, 1}, {0, 1}, {0, 0}};
  TVPolyline2D a;
  a.Assign(square.Points());
  a.DeleteNeighbourClosed(false, 1e-6);
  EXPECT_TRUE(a.IsEqualTo(TVPolyline2D{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}, 0.0));
  a.DeleteNeighbourClosed(true, 1e-6);
  // The first vertex goes: the same outline, now open and starting one vertex later.
  EXPECT_TRUE(a.IsEqualTo(TVPolyline2D{{1, 0}, {1, 1}, {0, 1}, {0, 0}}, 0.0));
  // Each vertex is compared with the last one kept, not with its old neighbour: (1.2, 0) lies
  // within 1 of (0.6, 0), which goes, but not of (0, 0), so it stays.
  TVPolyline2D run{{0, 0}, {0.6, 0}, {1.2, 0}, {5, 0}};
  run.DeleteNeighbourClosed(false, 1.0);
  EXPECT_TRUE(run.IsEqualTo(TVPolyline2D{{0, 0}, {1.2, 0}, {5, 0}}, 0.0));
  TVPolyline2D twin{{2, 2}, {2, 2}};
  twin.DeleteNeighbourClosed(false, 1e-6);
  EXPECT_EQ(twin.Count(), 1);
  TVPolyline2D twin2{{2, 2}, {2, 2}};
  twin2.DeleteNeighbourClosed(true, 1e-6);
  EXPECT_EQ(twin2.Count(), 0);
  TVPolyline2D one(TPoint2D(2, 2));
  one.DeleteNeighbourClosed(true, 1e-6);
  EXPECT_EQ(one.Count(), 1);
}

TEST(VPolyline2DEditing, CollinearSmoothHandWorked) {
  TVPolyline2D square{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}, {0, 0}};
  square.CollinearSmooth(1e-6, true);
  EXPECT_TRUE(square.IsEqualTo(TVPolyline2D{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}, 0.0));
  // Starting in the middle of an edge, the starting vertex itself goes.
  TVPolyline2D mid{{1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}, {1, 0}};
  mid.CollinearSmooth(1e-6, true);
  EXPECT_TRUE(mid.IsEqualTo(TVPolyline2D{{2, 0}, {2, 2}, {0, 2}, {0, 0}, {2, 0}}, 0.0));
  // A spike back along its own line: flattened unless the direction must be the same.
  const TVPolyline2D spike{{0, 0}, {2, 0}, {1, 0}, {1, 3}};
  TVPolyline2D keep;
  keep.Assign(spike.Points());
  keep.CollinearSmooth(1e-6, true);
  EXPECT_EQ(keep.Count(), 4);
  TVPolyline2D flatten;
  flatten.Assign(spike.Points());
  flatten.CollinearSmooth(1e-6, false);
  EXPECT_TRUE(flatten.IsEqualTo(TVPolyline2D{{0, 0}, {1, 0}, {1, 3}}, 0.0));
  // Directions from the last kept vertex: a slow bend is not smoothed away step by step.
  TVPolyline2D bend;
  for (int i = 0; i <= 100; ++i) bend.Add({static_cast<double>(i), 1e-4 * i * i});
  bend.CollinearSmooth(1e-3, true);
  EXPECT_GT(bend.Count(), 4);
  EXPECT_EQ(bend.Last(), TPoint2D(100, 1));
  for (int i = 0; i + 1 < bend.Count(); ++i) {
    EXPECT_LT(bend[i + 1].X - bend[i].X, 60.0);
  }
  TVPolyline2D two{{0, 0}, {1, 0}};
  two.CollinearSmooth(1e-6, false);
  EXPECT_EQ(two.Count(), 2);
}

// Clean-up of an outline made noisy on purpose restores it, and no clean-up moves the area of
// a closed outline by more than its tolerance allows.
TEST(VPolyline2DEditing, CleanUpKeepsTheArea) {
  std::mt19937 rng(8);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  constexpr double Tol = 1e-4;
  constexpr double ATol = 1e-5;
  for (int round = 0; round < 100; ++round) {
    const TDynPoints2D corners = Star(rng, 5 + round % 40);
    TDynPoints2D noisy;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const TPoint2D a = corners[i];
      const TPoint2D b = corners[(i + 1) % corners.size()];
      noisy.push_back(a);
      // A near repetition, then points nearly on the edge.
      if (unit(rng) < 0.5) noisy.push_back(a + TPoint2D(unit(rng) - 0.5, unit(rng) - 0.5) * Tol);
      const TPoint2D normal = (b - a).RotateCcw90().Normal();
      for (double t = 0.2; t < 0.9; t += 0.3) {
        const double reach = std::min(t, 1.0 - t) * (b - a).Mag();
        noisy.push_back(a + (b - a) * t + normal * ((unit(rng) - 0.5) * 0.5 * ATol * reach));
      }
    }
    noisy.push_back(noisy.front());
    const TVPolyline2D clean(corners);

    TVPolyline2D poly(noisy);
    const double area = poly.Area();
    const double diagonal = Diagonal(poly);
    const double perimeter = poly.TotalLength();
    const int before = poly.Count();
    poly.DeleteNeighbourClosed(false, Tol);
    const int removed = before - poly.Count();
    EXPECT_LE(std::fabs(poly.Area() - area), 0.5 * Tol * diagonal * removed) << round;
    const double area2 = poly.Area();
    poly.CollinearSmooth(ATol, true);
    EXPECT_LE(std::fabs(poly.Area() - area2), 0.5 * ATol * diagonal * perimeter) << round;
    // What remains is the clean outline, closed again.
    ASSERT_EQ(poly.Count(), clean.Count() + 1) << round;
    EXPECT_TRUE(poly.IsClosed(0.0));
    for (int k = 0; k < clean.Count(); ++k) EXPECT_EQ(poly[k], clean[k]) << round;
  }
}

TEST(VPolyline2DEditing, CleanUpOfRealOutlines) {
  const std::filesystem::path dir = std::filesystem::path(ORVANE_SHARED_DATA_DIR) / "outlines";
  if (!std::filesystem::is_directory(dir)) GTEST_SKIP() << "no outline data at " << dir;
  int smoothed = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path());
    const nlohmann::json doc = nlohmann::json::parse(in);
    for (const nlohmann::json& part : doc["parts"]) {
      TVPolyline2D poly;
      for (const nlohmann::json& xy : part["outer"]) poly.Add({xy[0].get<double>(), xy[1].get<double>()});
      poly.ConnectHeadTail();
      const double diagonal = Diagonal(poly);
      const double area = poly.Area();
      const int before = poly.Count();
      poly.DeleteNeighbourClosed(false, 1e-6);
      EXPECT_LE(std::fabs(poly.Area() - area), 0.5 * 1e-6 * diagonal * (before - poly.Count()));
      const double area2 = poly.Area();
      const double perimeter = poly.TotalLength();
      const int count = poly.Count();
      poly.CollinearSmooth(1e-4, false);
      smoothed += count - poly.Count();
      EXPECT_LE(std::fabs(poly.Area() - area2), 0.5 * 1e-4 * diagonal * perimeter) << entry.path().filename();
      EXPECT_TRUE(poly.IsClosed(0.0));
    }
  }
  EXPECT_GT(smoothed, 0);
}

TEST(VPolyline2DEditing, TryConnectEveryPairOfEnds) {
  const TVPolyline2D s{{0, 0}, {1, 0}, {2, 0}};
  auto join = [&](const TVPolyline2D& o, const TVPolyline2D& want) {
    TVPolyline2D result;
    ASSERT_TRUE(s.TryConnect(o, result, 1e-3));
    EXPECT_TRUE(result.IsEqualTo(want, 0.0)) << result.ToString();
  };
  // The junction vertex is S's, except where S's last meets O's first.
  join(TVPolyline2D{{0, 1e-4}, {0, 1}, {0, 2}}, TVPolyline2D{{0, 2}, {0, 1}, {0, 0}, {1, 0}, {2, 0}});
  join(TVPolyline2D{{0, 2}, {0, 1}, {0, 1e-4}}, TVPolyline2D{{0, 2}, {0, 1}, {0, 0}, {1, 0}, {2, 0}});
  join(TVPolyline2D{{2, 1e-4}, {2, 1}}, TVPolyline2D{{0, 0}, {1, 0}, {2, 1e-4}, {2, 1}});
  join(TVPolyline2D{{2, 1}, {2, 1e-4}}, TVPolyline2D{{0, 0}, {1, 0}, {2, 0}, {2, 1}});
  // Both ends meet: the first pair in order wins; nothing else is closed.
  join(TVPolyline2D{{2, 0}, {1, 1}, {0, 0}}, TVPolyline2D{{2, 0}, {1, 1}, {0, 0}, {1, 0}, {2, 0}});
  TVPolyline2D result{{7, 7}};
  EXPECT_FALSE(s.TryConnect(TVPolyline2D{{5, 5}, {6, 6}}, result, 1e-3));
  EXPECT_FALSE(s.TryConnect(TVPolyline2D(), result, 1e-3));
  EXPECT_TRUE(result.IsEqualTo(TVPolyline2D{{7, 7}}, 0.0));
}

TEST(VPolyline2DEditing, UnionAgainstBoost) {
  const TVPolyline2D a(TRect2D(0, 0, 2, 2));
  auto disjoint = a.Union(TVPolyline2D(TRect2D(3, 0, 5, 2)), TFillRule::frNonZero);
  ASSERT_EQ(disjoint->Count(), 2);
  EXPECT_DOUBLE_EQ(disjoint->Area(), 8.0);
  auto overlapping = a.Union(TVPolyline2D(TRect2D(1, 1, 3, 3)), TFillRule::frNonZero);
  ASSERT_EQ(overlapping->Count(), 1);
  EXPECT_EQ((*overlapping)[0]->Count(), 8);  // no closing vertex
  EXPECT_DOUBLE_EQ(overlapping->Area(), 7.0);

  std::mt19937 rng(13);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto toBoost = [](const TDynPoints2D& pts) {
    BPolygon poly;
    for (const TPoint2D& p : pts) bg::append(poly.outer(), BPoint(p.X, p.Y));
    bg::correct(poly);
    return poly;
  };
  for (int round = 0; round < 40; ++round) {
    TDynPoints2D p = Star(rng, 5 + round % 25);
    TDynPoints2D q = Star(rng, 5 + round % 17);
    const TPoint2D shift(20.0 * unit(rng) - 10.0, 20.0 * unit(rng) - 10.0);
    for (TPoint2D& v : q) v += shift;
    // Both outlines enter as subjects, so under the even-odd rule, which ignores orientation,
    // the region they share is covered twice and drops out.
    const bool evenOdd = round % 2 == 0;
    std::vector<BPolygon> merged;
    if (evenOdd) {
      bg::sym_difference(toBoost(p), toBoost(q), merged);
    } else {
      bg::union_(toBoost(p), toBoost(q), merged);
    }
    double want = 0.0;
    for (const BPolygon& m : merged) want += bg::area(m);
    const TVPolyline2D pp(p);
    TVPolyline2D qq(q);
    qq.SetIsClockwise(evenOdd);
    auto got = pp.Union(qq, evenOdd ? TFillRule::frEvenOdd : TFillRule::frNonZero);
    // The integer scale moves each vertex by at most half a unit of 1e-5.
    EXPECT_NEAR(got->Area(), want, 1e-5 * (pp.TotalLength() + qq.TotalLength())) << round;
    for (const TVPolyline2D* r : *got) EXPECT_FALSE(r->IsClosed(0.0));
  }
}

// A derived chain that keeps a count of its own in step through the virtual slots.
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
  TCountingPolyline::Closings = 0;
  TCountingPolyline square{{0, 0}, {1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}};
  square.CollinearSmooth(1e-6, true);
  EXPECT_EQ(TCountingPolyline::Closings, 1);
  EXPECT_EQ(square.RelationWith(TCountingPolyline{{0.5, 0.5}, {1, 0.5}, {1, 1}}), 1);
  EXPECT_EQ(TCountingPolyline::Closings, 3);  // both clones are closed through the override
}

}  // namespace
}  // namespace orvane
