// The mixed polyline: gap closing, exact areas and point tests (against hand-worked values
// and fine samples), tangents at joints, merging and smoothing, crossings at joints, and the
// regions built from vertex polygons.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/mixed/LABPolylineList.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2D.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

using testing::ExpectNear;
using testing::ExpectRaise;

constexpr int kOn = static_cast<int>(TShapeRelation::srOn);
constexpr int kIn = static_cast<int>(TShapeRelation::srIn);
constexpr int kOut = static_cast<int>(TShapeRelation::srOut);

TLABSegline Line(TPoint2D A, TPoint2D B) { return TLABSegline::CreateLine(A, B); }

// Closed, counter-clockwise: the bottom side, a half circle bulging right from (2, 0) to
// (2, 2), the top side, and a cubic bulging left back to the start.
void BuildSlot(TLABPolyline& P) {
  P.Add(Line({0, 0}, {2, 0}));
  P.Add(TLABSegline::CreateArc({2, 0}, {2, 2}, {2, 1}, 1.0));
  P.Add(Line({2, 2}, {0, 2}));
  P.Add(TLABSegline::CreateBezier({0, 2}, {-1, 2}, {-1, 0}, {0, 0}));
}

TEST(LABPolyline, AddClosesGapsAndCloneClosesThemToo) {
  TLABPolyline p;
  p.Add(Line({0, 0}, {1, 0}));
  p.Add(Line({1, 5e-7}, {2, 0}));  // within 1e-6: stored as given
  EXPECT_EQ(p[1].P1, TPoint2D(1, 5e-7));
  p.Add(TLABSegline::CreateArc({7, 0}, {4, 0}, {3, 0}, 1.0));  // 5 units off: pulled back
  EXPECT_EQ(p[2].P1, TPoint2D(2, 0));
  EXPECT_EQ(p[2].P2, TPoint2D(3, 0));
  EXPECT_EQ(p[2].Bulge, 1.0);
  // A gap made by direct assignment survives in the list and is closed in its clone.
  p.SetItem(1, Line({1.5, 1}, {2, 0}));
  const auto copy = p.CloneAs<TLABPolyline>();
  ASSERT_EQ(copy->Count(), 3);
  EXPECT_EQ((*copy)[1].P1, TPoint2D(1, 0));

  // A plain array of records goes through Add as well.
  TLABPolyline fromArray;
  fromArray.AddRange(std::vector<TLABSegline>{Line({0, 0}, {1, 0}), Line({3, 3}, {4, 0})});
  EXPECT_EQ(fromArray[1].P1, TPoint2D(1, 0));

  TLABPolyline empty;
  EXPECT_FALSE(empty.IsClosed(1.0));
  empty.ConnectHeadTail(1e-6);
  EXPECT_EQ(empty.Count(), 0);
  // Open by more than Tol: one more line; by less: the last end moves onto the start.
  TLABPolyline open;
  open.Add(Line({0, 0}, {1, 0}));
  open.Add(Line({1, 0}, {1, 1}));
  open.ConnectHeadTail(1e-6);
  EXPECT_EQ(open.Count(), 3);
  EXPECT_TRUE(open.IsClosed(0.0));
  TLABPolyline nearly;
  nearly.Add(Line({0, 0}, {1, 0}));
  nearly.Add(Line({1, 0}, {1e-3, 1e-3}));
  nearly.ConnectHeadTail(1e-2);
  EXPECT_EQ(nearly.Count(), 2);
  EXPECT_EQ(nearly[1].P4, TPoint2D(0, 0));
  // A vertex polyline of one vertex gives nothing; a closed one stays closed.
  const TVPolyline2D one{{1, 1}};
  EXPECT_EQ(TLABPolyline(&one).Count(), 0);
  const TVPolyline2D square{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  const TLABPolyline fromSquare(&square);
  EXPECT_EQ(fromSquare.Count(), 4);
  EXPECT_TRUE(fromSquare.IsClosed(0.0));
  EXPECT_DOUBLE_EQ(fromSquare.Area(), 1.0);
}

TEST(LABPolyline, ExactAreasOfCirclesAndHalfDisks) {
  TLABPolyline circle;
  circle.Add(TLABSegline::CreateArc({3, 2}, {3, 2}, {1, 2}, 3.4028234663852886e+38));
  EXPECT_TRUE(circle.IsCircle());
  EXPECT_NEAR(circle.Area(), 4.0 * Pi, 1e-13);  // not the area of a sampled polygon
  EXPECT_FALSE(circle.GetIsClockwise());
  circle.SetIsClockwise(true);
  EXPECT_NEAR(circle.Area(), -4.0 * Pi, 1e-13);

  // The upper half of the unit disk: the arc, closed by the line back to its start.
  TLABPolyline half;
  half.Add(TLABSegline::CreateArc({1, 0}, {-1, 0}, {0, 0}, 1.0));
  EXPECT_NEAR(half.Area(), HalfPi, 1e-15);
  half.Add(Line({-1, 0}, {1, 0}));
  EXPECT_NEAR(half.Area(), HalfPi, 1e-15);
  // A major arc (bulge 3: sweep 4 atan 3) with its chord: the disk less the minor segment.
  const double sweep = 4.0 * std::atan(3.0);
  TLABPolyline major;
  major.Add(TLABSegline::CreateArc(TArc2D::CreateBulge({0, 0}, {1, 0}, 3.0)));
  const double r = 0.5 / std::sin(0.5 * sweep);
  EXPECT_NEAR(major.Area(), 0.5 * r * r * (sweep - std::sin(sweep)), 1e-14);

  // The slot: a 2 x 2 square, plus the half disk of radius 1 on the right, plus the area
  // between the cubic and its chord on the left: x(t) = -3t(1 - t), y'(t) = -12t(1 - t), so
  // the integral of 36 t^2 (1 - t)^2 over [0, 1], 36 / 30.
  TLABPolyline slot;
  BuildSlot(slot);
  EXPECT_NEAR(slot.Area(), 4.0 + HalfPi + 1.2, 1e-14);
  // A fine sample agrees, and a coarse one is off by far more than the exact answer.
  EXPECT_NEAR(slot.Sample(1e-4, 1e-4)->Area(), slot.Area(), 1e-6);
  EXPECT_GT(std::abs(slot.Sample(0.05, 0.05)->Area() - slot.Area()), 1e-3);

  // A mirrored outline is the true mirror image: its area is the negated area, for YMirror
  // and for any reflecting matrix.
  TMatrix2D mirror;
  mirror.SetToMirroringLine({0, 0}, {1, 3});
  const auto m1 = slot.CloneAs<TLABPolyline>();
  m1->Transform(mirror);
  EXPECT_NEAR(m1->Area(), -slot.Area(), 1e-12);
  const auto m2 = slot.CloneAs<TLABPolyline>();
  m2->YMirror();
  EXPECT_NEAR(m2->Area(), -slot.Area(), 1e-12);
  EXPECT_EQ(m1->RelationWithPoint(mirror.Transform({3.0, 1.0})), kOn);
  EXPECT_EQ(m1->RelationWithPoint(mirror.Transform({2.9, 1.0})), kIn);
  // Reverse twice is the identity; once, it negates the area.
  const auto rv = slot.CloneAs<TLABPolyline>();
  rv->Reverse();
  EXPECT_NEAR(rv->Area(), -slot.Area(), 1e-12);
  rv->Reverse();
  for (int i = 0; i < slot.Count(); ++i) EXPECT_EQ((*rv)[i], slot[i]);
}

TEST(LABPolyline, PointTestIsExactOnArcsAndBeziers) {
  TLABPolyline circle;
  circle.Add(TLABSegline::CreateArc({1, 0}, {1, 0}, {0, 0}, -3.3e38));
  // (0.999, 0) is inside the circle but outside its inscribed 20-gon; the rays from (-5, 1)
  // and (-5, -1) only touch the circle.
  const std::pair<TPoint2D, int> where[] = {{{0, 0}, kIn},       {{1, 0}, kOn},        {{0, -1}, kOn}, {{0.999, 0}, kIn},
                                            {{1.00001, 0}, kOut}, {{-5, 1}, kOut}, {{-5, -1}, kOut}};
  for (const auto& [p, want] : where) EXPECT_EQ(circle.RelationWithPoint(p), want) << p.ToString();
  EXPECT_EQ(TLABPolyline().RelationWithPoint({0, 0}), kOut);

  // Random points against the slot: the exact answer agrees with a very fine sample
  // wherever the point is farther than the sample's error from the outline.
  TLABPolyline slot;
  BuildSlot(slot);
  const auto fine = slot.Sample(1e-4, 1e-4);
  std::mt19937 rng(19);
  std::uniform_real_distribution<double> ux(-1.5, 3.5);
  std::uniform_real_distribution<double> uy(-0.5, 2.5);
  int inside = 0;
  for (int k = 0; k < 2000; ++k) {
    // Heights of joints and extremes come up on purpose, where a ray meets vertices.
    const double y = k % 10 == 0 ? static_cast<double>(k % 3) : (k % 10 == 1 ? 1.0 : uy(rng));
    const TPoint2D p(ux(rng), y);
    TPoint2D nearest;
    if (fine->DistTo(p, nearest) < 1e-6) continue;
    const int want = fine->RelationWithPoint(p, 1e-9);
    EXPECT_EQ(slot.RelationWithPoint(p), want) << p.ToString();
    inside += want == kIn;
  }
  EXPECT_GT(inside, 500);
}

TEST(LABPolyline, TangentsAtJointsOfOpenAndClosedOutlines) {
  TLABPolyline p;
  p.Add(Line({0, 0}, {1, 0}));
  p.Add(TLABSegline::CreateArc({1, 0}, {1, 2}, {1, 1}, 1.0));  // bulging right, through (2, 1)
  p.Add(Line({1, 2}, {0, 2}));
  ExpectNear(p.LeftTangentVector(1.0), {1, 0});
  ExpectNear(p.RightTangentVector(1.0), {Pi, 0}, 1e-15);
  ExpectNear(p.LeftTangentVector(2.0), {-Pi, 0}, 1e-14);
  ExpectNear(p.LeftTangentVector(1.5), p.RightTangentVector(1.5));
  ExpectRaise<Exception>([&] { p.LeftTangentVector(0.0); },
                         "[Error] TLABPolyline.LeftTangentVector: 不封闭混合多段线起点没有左切向量");
  ExpectRaise<Exception>([&] { p.RightTangentVector(3.0); },
                         "[Error] TLABPolyline.RightTangentVector: 不封闭混合多段线终点没有右切向量");
  ExpectRaise<Exception>([&] { p.RightTangentVector(3.1); },
                         "[Error] TLABPolyline.RightTangentVector: 参数不在作用域内");
  ExpectRaise<Exception>([&] { p.LeftTangentVector(NAN); },
                         "[Error] TLABPolyline.LeftTangentVector: 参数不在作用域内");
  // Closed: across the seam, and over a zero-length segment at a joint.
  p.Add(Line({0, 2}, {0, 0}));
  ExpectNear(p.LeftTangentVector(0.0), {0, -2});
  ExpectNear(p.RightTangentVector(4.0), {1, 0});
  p.Insert(3, Line({0, 2}, {0, 2}));
  ExpectNear(p.LeftTangentVector(4.0), {-1, 0});
  ExpectNear(p.RightTangentVector(3.0), {0, -2});
  TLABPolyline dots;
  dots.Add(Line({1, 1}, {1, 1}));
  dots.Add(Line({1, 1}, {1, 1}));
  ExpectRaise<Exception>([&] { dots.LeftTangentVector(1.5); },
                         "[Error] TLABPolyline.LeftTangentVector: 混合多段线为一个点");
  ExpectRaise<Exception>([&] { dots.RightTangentVector(0.0); },
                         "[Error] TLABPolyline.RightTangentVector: 混合多段线为一个点");
}

TEST(LABPolyline, MergingAndSmoothing) {
  // Seven collinear unit lines: five joins at the start, then the walk moves on.
  TLABPolyline seven;
  for (int i = 0; i < 7; ++i) seven.Add(Line({double(i), 0}, {double(i + 1), 0}));
  seven.MergeCollinearLines();
  ASSERT_EQ(seven.Count(), 2);
  EXPECT_EQ(seven[0], Line({0, 0}, {6, 0}));
  TLABPolyline shorts;
  shorts.Add(Line({0, 0}, {0.05, 0}));
  shorts.Add(Line({0.05, 0}, {0.1, 0}));
  shorts.MergeCollinearLines();
  EXPECT_EQ(shorts.Count(), 2);

  // A closed square whose seam lies inside the bottom side: five segments. Without the seam
  // they stay five; across it the two halves of the bottom join.
  auto square = [](TLABPolyline& P) {
    P.Add(Line({0.5, 0}, {1, 0}));
    P.Add(Line({1, 0}, {1, 1}));
    P.Add(Line({1, 1}, {0, 1}));
    P.Add(Line({0, 1}, {0, 0}));
    P.Add(Line({0, 0}, {0.5, 0}));
  };
  TLABPolyline a;
  square(a);
  a.CollinearSmooth(false, 1e-6);
  EXPECT_EQ(a.Count(), 5);
  TLABPolyline b;
  square(b);
  b.CollinearSmooth(true, 1e-6);
  ASSERT_EQ(b.Count(), 4);
  EXPECT_EQ(b[0], Line({0, 0}, {1, 0}));
  EXPECT_DOUBLE_EQ(b.Area(), 1.0);
  // A short line before an arc: the arc takes over its start; a straight Bezier becomes a line.
  TLABPolyline c;
  c.Add(Line({0, 0}, {1e-7, 0}));
  c.Add(TLABSegline::CreateArc({1e-7, 0}, {2, 0}, {1, 0}, 1.0));
  c.Add(TLABSegline::CreateBezier({2, 0}, {2, 1}, {2, 2}, {2, 3}));
  c.CollinearSmooth(false, 1e-6);
  ASSERT_EQ(c.Count(), 2);
  EXPECT_EQ(c[0].SegType, TSegType::stArc);
  EXPECT_EQ(c[0].P1, TPoint2D(0, 0));
  EXPECT_EQ(c[1], Line({2, 0}, {2, 3}));
  // One segment: left alone, not even straightened.
  TLABPolyline d;
  d.Add(TLABSegline::CreateBezier({2, 0}, {2, 1}, {2, 2}, {2, 3}));
  d.CollinearSmooth(true, 1e-6);
  EXPECT_EQ(d[0].SegType, TSegType::stBezier);

  // ConnectAllSegsStrictly: exact joints on a closed outline, nothing on an open one.
  TLABPolyline e;
  e.Add(Line({0, 0}, {1, 0}));
  e.Add(Line({1, 4e-7}, {0, 1}));
  e.Add(Line({0, 1}, {0, 3e-7}));
  e.ConnectAllSegsStrictly();
  EXPECT_EQ(e[1].P1, TPoint2D(1, 0));
  EXPECT_EQ(e[0].P1, TPoint2D(0, 3e-7));
}

TEST(LABPolyline, CrossingsWithASquareCountJointsOnce) {
  const TVPolyline2D sq{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  const TLABPolyline square(&sq);
  TList<TPoint2D> pts;
  TList<TLine2D> lines;
  EXPECT_TRUE(square.CrossWithSegLine(TLine2D({-1, 0.5}, {2, 0.5}), pts, lines));
  EXPECT_EQ(pts.Count(), 2);
  // The diagonal meets the square at two corners, each a joint of two sides (one the seam).
  pts.Clear();
  EXPECT_TRUE(square.CrossWithSegLine(TLine2D({-1, -1}, {2, 2}), pts, lines));
  ASSERT_EQ(pts.Count(), 2);
  ExpectNear(pts[0], {0, 0}, 1e-12);
  ExpectNear(pts[1], {1, 1}, 1e-12);
  // Along the bottom side: the overlap, and no separate corner points.
  pts.Clear();
  EXPECT_TRUE(square.CrossWithSegLine(TLine2D({-1, 0}, {2, 0}), pts, lines));
  EXPECT_EQ(lines.Count(), 1);
  EXPECT_EQ(pts.Count(), 0);
  EXPECT_FALSE(square.CrossWithSegLine(TLine2D({3, 3}, {4, 4}), pts, lines));
  // Through the joint of a line and an arc.
  TLABPolyline slot;
  BuildSlot(slot);
  pts.Clear();
  lines.Clear();
  EXPECT_TRUE(slot.CrossWithSegLine(TLine2D({2, -1}, {2, 3}), pts, lines));
  EXPECT_EQ(pts.Count(), 2);
  EXPECT_EQ(lines.Count(), 0);
}

TEST(LABPolyline, RegionsFromVertexPolygons) {
  TVHPolygon hp(false);
  hp.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}));
  hp.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}}));
  hp.Add(std::make_unique<TVPolyline2D>(TDynPoints2D{{5, 5}, {7, 5}, {7, 7}, {5, 7}, {5, 5}}));
  const TLABHPolygon region(&hp, true);
  ASSERT_EQ(region.Count(), 3);
  EXPECT_TRUE(region.GetIsClockwise());  // stored, not read from the loops
  EXPECT_NEAR(region.Area(), 100.0 - 1.0 - 4.0, 1e-12);  // the holes run clockwise
  const auto copy = region.CloneAs<TLABHPolygon>();
  ASSERT_NE(copy, nullptr);
  copy->YMirror();
  EXPECT_NEAR(copy->Area(), -region.Area(), 1e-12);
  EXPECT_TRUE(copy->GetIsClockwise());
  EXPECT_EQ(TLABHPolygon(nullptr, true).Count(), 0);

  TLABPolylineList list;
  auto circle = std::make_unique<TLABPolyline>();
  circle->Add(TLABSegline::CreateArc({1, 0}, {1, 0}, {0, 0}, 3.3e38));
  list.Add(std::make_unique<TLABPolyline>(hp.First()));
  list.Add(std::move(circle));
  EXPECT_FALSE(list.FirstIsCircle());
  list.Move(1, 0);
  EXPECT_TRUE(list.FirstIsCircle());
  EXPECT_NEAR(list.Area(), 100.0 + Pi, 1e-12);

  TVHPolygonList hps;
  hps.Add(hp.CloneAs<TVHPolygon>());
  hps.Add(std::make_unique<TVHPolygon>(true));
  const TLABHPolygonList regions(&hps, false);
  ASSERT_EQ(regions.Count(), 2);
  EXPECT_FALSE(regions[0]->GetIsClockwise());
  EXPECT_TRUE(regions[1]->GetIsClockwise());
  // CollinearSmooth reaches the holes: a hole with a split side loses the split.
  auto split = std::make_unique<TLABHPolygon>(false);
  split->Add(std::make_unique<TLABPolyline>(hp.First()));
  const TVPolyline2D hole{{1, 1}, {1.5, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}};
  split->Add(std::make_unique<TLABPolyline>(&hole));
  TLABHPolygonList smooth;
  smooth.Add(std::move(split));
  smooth.CollinearSmooth(false, 1e-6);
  EXPECT_EQ(smooth[0]->Last()->Count(), 4);
}

}  // namespace
}  // namespace orvane
