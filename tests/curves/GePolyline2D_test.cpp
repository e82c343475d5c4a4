// Piecewise curves through the polyline and polygon: walks through the seam, joints, sub-
// curves, the length table and its lookups, caches that follow every change, and the nearest
// point against GEOS's projection on a line string.

#include "orvane/curves/GePolyline2D.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "orvane/curves/LengthSamples.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_GEOS
#include <geos_c.h>
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

// A closed 4 by 3 rectangle, the first vertex repeated: perimeter 14.
const TDynPoints2D Rect{{0, 0}, {4, 0}, {4, 3}, {0, 3}, {0, 0}};

TEST(GePolyline2D, JointsAndWalksThroughTheSeam) {
  const TGePolyline2D rect(Rect);
  ASSERT_TRUE(rect.GetIsClosed());
  EXPECT_EQ(rect.GetSegmentCount(), 4);
  EXPECT_EQ(rect.GetCurveLength(), 14.0);
  // A closed curve wraps any parameter; at a joint the left side is the segment that ends.
  ExpectNear(rect.EvalPoint(4.25), rect.EvalPoint(0.25));
  ExpectNear(rect.EvalPoint(-0.25), rect.EvalPoint(3.75));
  EXPECT_EQ(rect.DerivLeft(0.0), TPoint2D(0, -3));
  EXPECT_EQ(rect.DerivRight(0.0), TPoint2D(4, 0));
  EXPECT_EQ(rect.DerivLeft(1.0), TPoint2D(4, 0));
  EXPECT_EQ(rect.DerivRight(1.0), TPoint2D(0, 3));
  const TGeCurve2D* seg = nullptr;
  EXPECT_EQ(rect.SubParam(2.0, seg, true), 1.0);
  EXPECT_EQ(seg, rect.GetBufSegment(1));
  EXPECT_EQ(rect.SubParam(2.0, seg, false), 0.0);
  EXPECT_EQ(seg, rect.GetBufSegment(2));
  // Walks: forward through the seam and back, whole laps, a zero walk after wrapping.
  EXPECT_NEAR(rect.ParamOfLength(3.5, 2.0, DefTol), 0.125, 1e-12);
  EXPECT_NEAR(rect.ParamOfLength(0.125, -2.0, DefTol), 3.5, 1e-12);
  EXPECT_NEAR(rect.ParamOfLength(0.0, 17.5, DefTol), 0.875, 1e-12);
  EXPECT_EQ(rect.ParamOfLength(5.5, 0.0, DefTol), 1.5);
  // Lengths by the vertex table, held to the range.
  EXPECT_EQ(rect.LengthAt(2.5), 9.0);
  EXPECT_EQ(rect.LengthAt(-0.5), 0.0);
  EXPECT_EQ(rect.LengthAt(9.0), 14.0);
  EXPECT_EQ(rect.GetIntervalLength(3.5, 0.5), 3.5);  // through the seam
  // An open polyline stops at its ends.
  const TGePolyline2D open(TDynPoints2D(Rect.begin(), Rect.end() - 1));
  EXPECT_EQ(open.EvalPoint(7.5), TPoint2D(0, 3));
  EXPECT_EQ(open.EvalPoint(-1.0), TPoint2D(0, 0));
  EXPECT_EQ(open.ParamOfLength(2.5, 100.0, DefTol), 3.0);
  EXPECT_EQ(open.ParamOfLength(2.5, -100.0, DefTol), 0.0);
  EXPECT_EQ(open.DerivLeft(0.0), TPoint2D(4, 0));
}

TEST(GePolyline2D, SubCurvesSamplesAndBoxes) {
  const TGePolyline2D rect(Rect);
  auto points = [](const std::unique_ptr<TGeCurve2D>& C) {
    return dynamic_cast<const TGePolyline2D&>(*C).GetPointsArray();
  };
  EXPECT_EQ(points(rect.SubCurve(1.5, 2.5)), (TDynPoints2D{{4, 1.5}, {4, 3}, {2, 3}}));
  EXPECT_EQ(points(rect.SubCurve(1.0, 2.0)), (TDynPoints2D{{4, 0}, {4, 3}}));
  const TDynPoints2D within = points(rect.SubCurve(1.2, 1.6));
  ASSERT_EQ(within.size(), 2u);
  ExpectNear(within[0], TPoint2D(4, 0.6), 1e-15);
  ExpectNear(within[1], TPoint2D(4, 1.8), 1e-15);
  EXPECT_EQ(points(rect.SubCurve(3.5, 0.5)), (TDynPoints2D{{0, 1.5}, {0, 0}, {2, 0}}));
  const TGePolyline2D open(TDynPoints2D(Rect.begin(), Rect.end() - 1));
  EXPECT_FALSE(open.SubCurve(2.5, 1.5));
  EXPECT_FALSE(open.SubCurve(1.0, 1.0));
  // Samples: each joint once; a reversed range gives none, an empty one its point.
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_EQ(rect.GetSamplePointsByChord(0.1, pts, params), 5);
  EXPECT_EQ(pts, Rect);
  EXPECT_EQ(params, (TFloatDynArray{0, 1, 2, 3, 4}));
  EXPECT_EQ(rect.GetSamplePointsByChord(0.5, 2.5, 0.1, pts, params), 4);
  EXPECT_EQ(params, (TFloatDynArray{0.5, 1, 2, 2.5}));
  EXPECT_EQ(rect.GetSamplePointsByChord(2.5, 0.5, 0.1, pts, params), 0);
  // Boxes of stretches, and a reversed interval refused.
  EXPECT_EQ(rect.BoundBlockOf(TGeInterval(0.5, 1.5)), TRect2D(2, 0, 4, 1.5));
  EXPECT_EQ(rect.BoundBlockOf(TGeInterval(0.25, 0.75)), TRect2D(1, 0, 3, 0));
  EXPECT_EQ(rect.BoundBlockOf(TGeInterval(-5, 1.0)), TRect2D(0, 0, 4, 0));  // held to the range
  orvane::testing::ExpectRaise<EGeometry>([&] { rect.BoundBlockOf(TGeInterval(2, 1)); },
                                          "Invalid Inteval Input for BoundBlockOf! Start 2.0000 End 1.0000");
  // One vertex: no segment, yet it samples to itself; none: the largest double as its ends.
  const TGePolyline2D dot(TDynPoints2D{{2, 3}});
  EXPECT_EQ(dot.GetSegmentCount(), 0);
  EXPECT_EQ(dot.GetSamplePointsByChord(0.1, pts, params), 1);
  EXPECT_EQ(pts, (TDynPoints2D{{2, 3}}));
  EXPECT_EQ(dot.LengthAt(0.5), 0.0);
  EXPECT_EQ(dot.EvalPoint(0.5), TPoint2D::FZero);
  const TGePolyline2D none;
  EXPECT_EQ(none.GetStartPoint(), TPoint2D(MaxDouble, MaxDouble));
  EXPECT_FALSE(none.BoundBlock().IsValid());
  EXPECT_EQ(none.GetCurveLength(), 0.0);
  EXPECT_THROW(TGePolyline2D(TDynPoints2D{{0, 0}, {NAN, 1}}), EGeometry);
  EXPECT_THROW(none.GetPoint(0), EParamError);
}

// Every answer of a changed curve equals that of a curve built afresh from its vertices.
void ExpectSameAsFresh(const TGePolyline2D& Curve) {
  const TGePolyline2D fresh(Curve.GetPointsArray());
  EXPECT_EQ(Curve.GetCurveLength(), fresh.GetCurveLength());
  for (double t = -0.5; t <= Curve.GetSegmentCount() + 0.5; t += 0.25) {
    EXPECT_EQ(Curve.EvalPoint(t), fresh.EvalPoint(t)) << t;
    EXPECT_EQ(Curve.LengthAt(t), fresh.LengthAt(t)) << t;
    EXPECT_EQ(Curve.DerivLeft(t), fresh.DerivLeft(t)) << t;
  }
  EXPECT_EQ(Curve.BoundBlock(), fresh.BoundBlock());
}

TEST(GePolyline2D, CachesFollowEveryChange) {
  TGePolyline2D curve(TDynPoints2D{{0, 0}, {3, 0}, {3, 4}, {7, 4}});
  TMatrix2D m;
  m.SetToRotation(0.3, TPoint2D(1, 2));
  const std::function<void()> changes[] = {[&] { curve.SetPoint(1, TPoint2D(2, -1)); },
                                           [&] { curve.ReverseDir(); },
                                           [&] { curve.TransformBy(m); },
                                           [&] { curve.SetPoints(Rect); },
                                           [&] { curve.Assign(TGePolyline2D(TDynPoints2D{{1, 1}, {2, 2}})); },
                                           [&] { curve.Initialize(3); }};
  for (const auto& change : changes) {
    curve.GetCurveLength();  // fill the caches before the change
    curve.LengthAt(1.5);
    change();
    ExpectSameAsFresh(curve);
  }
  // A polygon's closing segment starts at the last vertex and ends at vertex 0.
  TGePolygon2D ring(TDynPoints2D{{0, 0}, {4, 0}, {4, 3}});
  EXPECT_EQ(ring.GetCurveLength(), 12.0);
  ring.SetPoint(0, TPoint2D(0, 3));
  EXPECT_EQ(ring.EvalPoint(2.5), TPoint2D(2, 3));
  EXPECT_EQ(ring.GetCurveLength(), 5.0 + 3.0 + 4.0);
}

TEST(GePolyline2D, PolygonPointPositionAgainstEvenOdd) {
  EXPECT_EQ(TGePolygon2D().IsIn(TPoint2D(0, 0), DefTol), -1);
  // Grid rings with grid points: rays run through vertices and along edges all the time.
  std::mt19937 rng(7);
  for (int k = 0; k < 40; ++k) {
    const TDynPoints2D ring = orvane::testing::GridRing(rng, 12, 10);
    const TGePolyline2D closed(ring);
    const TGePolygon2D polygon(TDynPoints2D(ring.begin(), ring.end() - 1));
    for (int x = -1; x <= 11; ++x) {
      for (int y = -1; y <= 11; ++y) {
        const TPoint2D p(x + 0.5, y);
        const int want = orvane::testing::DistToRing(ring, p) < 1e-9 ? 0
                         : orvane::testing::EvenOddInside(ring, p)   ? 1
                                                                     : -1;
        EXPECT_EQ(polygon.IsIn(p, DefTol), want) << k << " " << p.ToString();
        // The ray of any closed curve, through the piecewise crossing, agrees.
        EXPECT_EQ(closed.IsIn(p, DefTol), want) << k << " " << p.ToString();
      }
    }
  }
}

TEST(LengthSamples, LookupsAndWraps) {
  TLengthSamples table;
  EXPECT_EQ(table.LengthAtParam(1.0), 0.0);
  EXPECT_EQ(table.ParamOfLength(1.0, true), 0.0);
  for (const TPoint2D& p : {TPoint2D(0, 0), TPoint2D(1, 2), TPoint2D(2, 3), TPoint2D(4, 7)}) table.Add(p);
  EXPECT_EQ(table.Interval(), 4.0);
  EXPECT_EQ(table.Length(), 7.0);
  // Interior lookups are the polyline's nearest-point check's business; here the ends and laps.
  EXPECT_EQ(table.LengthAtParam(1.5), 2.5);
  EXPECT_EQ(table.LengthAtParam(4.0 - 5e-7), 7.0);  // within 1e-6 of an end: the end value
  EXPECT_EQ(table.LengthAtParam(5e-7), 0.0);
  EXPECT_EQ(table.LengthBetween(1.0, 3.0), 3.0);
  EXPECT_EQ(table.ParamOfLength(9.0, false), 4.0);
  EXPECT_EQ(table.ParamOfLength(9.0, true), 1.0);         // one lap on: 2
  EXPECT_EQ(table.ParamOfLength(-1.0, true), 3.5);        // one lap back: 6
  EXPECT_EQ(table.ParamOfLength(14.0, true), 4.0);        // twice round stops at the end
  EXPECT_EQ(table.ParamOfLength(1.0, 2.5, false), 2.75);  // length 2 + 2.5
}

#ifdef ORVANE_HAVE_GEOS
TEST(GePolyline2D, NearestPointAgreesWithGeosProject) {
  GEOSContextHandle_t h = GEOS_init_r();
  std::mt19937 rng(11);
  std::uniform_real_distribution<double> step(-1.0, 1.0);
  TDynPoints2D pts{{0, 0}};
  for (int i = 0; i < 2000; ++i) pts.push_back(pts.back() + TPoint2D(1.0 + step(rng), 3.0 * step(rng)));
  const TGePolyline2D curve(pts);
  GEOSCoordSequence* seq = GEOSCoordSeq_create_r(h, static_cast<unsigned>(pts.size()), 2);
  for (std::size_t i = 0; i < pts.size(); ++i)
    GEOSCoordSeq_setXY_r(h, seq, static_cast<unsigned>(i), pts[i].X, pts[i].Y);
  GEOSGeometry* line = GEOSGeom_createLineString_r(h, seq);
  std::uniform_real_distribution<double> x(-10.0, 2010.0);
  std::uniform_real_distribution<double> y(-40.0, 40.0);
  for (int k = 0; k < 300; ++k) {
    const TPoint2D q(x(rng), y(rng));
    double t = 0.0;
    const TPoint2D near = curve.GetClosedPointTo(q, DefTol, t);
    GEOSGeometry* pt = GEOSGeom_createPointFromXY_r(h, q.X, q.Y);
    const double along = GEOSProject_r(h, line, pt);
    double dist = 0.0;
    GEOSDistance_r(h, line, pt, &dist);
    EXPECT_NEAR(near.DistanceTo(q), dist, 1e-9);
    // Ties between two equally near places are possible in principle, not with these data.
    EXPECT_NEAR(curve.LengthAt(t), along, 1e-7);
    ExpectNear(curve.EvalPoint(curve.ParamOfLength(along, DefTol)), near, 1e-7);
    GEOSGeom_destroy_r(h, pt);
  }
  GEOSGeom_destroy_r(h, line);
  GEOS_finish_r(h);
}
#endif

}  // namespace
}  // namespace orvane
