// Crossings of a line with every kind of curve and the point position by a ray: rays through
// joints, vertices and touches by hand, line against cubic against OCCT, and the bulged
// outlines of real drawings as composites against their closed-form areas and GEOS.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/PointArray.h"
#include "support/DxfEntities.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_OCCT
#include <GCE2d_MakeSegment.hxx>

#include "support/OcctBezier.h"
#endif
#ifdef ORVANE_HAVE_GEOS
#include <geos_c.h>

#include "support/Geos.h"
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;

std::unique_ptr<TGeCompositeCurve2D> LinesThrough(const TDynPoints2D& P) {
  auto c = std::make_unique<TGeCompositeCurve2D>();
  for (std::size_t i = 0; i + 1 < P.size(); ++i) c->AddCurve(std::make_unique<TGeLine2D>(P[i], P[i + 1]));
  return c;
}

TEST(CurveIntersect, RaysThroughJointsAndVertices) {
  // The ray from (1, 2) runs through the vertex (4, 2) between two collinear edges: one
  // crossing, reported by both edges.
  const TDynPoints2D notch{{0, 0}, {6, 0}, {6, 1}, {4, 1}, {4, 2}, {4, 3}, {6, 3}, {6, 4}, {0, 4}, {0, 0}};
  const TGePolyline2D polyline(notch);
  const std::unique_ptr<TGeCompositeCurve2D> composite = LinesThrough(notch);
  const TGePolygon2D polygon(TDynPoints2D(notch.begin(), notch.end() - 1));
  for (const TGeCurve2D* c :
       {static_cast<const TGeCurve2D*>(&polyline), static_cast<const TGeCurve2D*>(composite.get()),
        static_cast<const TGeCurve2D*>(&polygon)}) {
    // From (1, 1) and (1, 3) the rays run along an edge and through corners.
    const std::pair<TPoint2D, int> where[] = {{{1, 2}, 1}, {{5, 2}, -1}, {{4, 2}, 0},   {{3, 2.5}, 1},
                                              {{1, 1}, 1}, {{1, 3}, 1},  {{-1, 3}, -1}, {{6, 0.5}, 0}};
    for (const auto& [p, want] : where) EXPECT_EQ(c->IsIn(p, DefTol), want) << c->ClassName() << p.ToString();
  }
  // Entries on a piecewise curve carry the whole curve's parameter; the count is what the
  // call added to a list that held entries already.
  const TGeLine2D ray(TPoint2D(-1, 2), TPoint2D(7, 2));
  TList<TIntersect2D> inters;
  inters.Add(TIntersect2D());
  EXPECT_EQ(ray.IntersectCurve(polyline, inters, DefTol), 3);  // the left edge, and (4, 2) twice
  EXPECT_EQ(inters.Count(), 4);
  for (int i = 1; i < inters.Count(); ++i) {
    EXPECT_EQ(inters[i].InterThat.Curve, &polyline);
    ExpectNear(inters[i].InterThat.Point(), inters[i].InterThis.Point(), 1e-12);
  }
  EXPECT_EQ(ray.IntersectCurve(*composite, inters, DefTol), 3);
  EXPECT_EQ(inters.Last().InterThat.Curve, composite.get());
  EXPECT_EQ(inters.Last().InterThat.Param, 8.5);
}

TEST(CurveIntersect, RaysTouchingCubicsAndArcs) {
  // A box whose top dips as a cubic to (8, 1.5): the ray at that height touches the dip from
  // above, which must count twice (or not at all), never once.
  auto dipped = [](std::unique_ptr<TGeCurve2D> Dip) {
    auto c = LinesThrough({{6, 3}, {0, 3}, {0, 0}, {10, 0}, {10, 3}});
    c->AddCurve(std::move(Dip));
    return c;
  };
  const auto shape = dipped(std::make_unique<TGeBezier2D>(TPoint2D(10, 3), TPoint2D(9, 1), TPoint2D(7, 1), TPoint2D(6, 3)));
  const std::pair<TPoint2D, int> where[] = {{{2, 1.5}, 1}, {{2, 1.501}, 1}, {{8, 2}, -1}, {{8, 1.5}, 0}, {{7, 2.9}, -1}};
  for (const auto& [p, want] : where) EXPECT_EQ(shape->IsIn(p, DefTol), want) << p.ToString();
  // The same with the dip as an arc: the touch at its lowest point.
  const auto arcShape = dipped(std::make_unique<TGeCircularArc2D>(TPoint2D(8, 3), 2.0, 0.0, -Pi));
  EXPECT_EQ(arcShape->IsIn(TPoint2D(2, 1), DefTol), 1);
  EXPECT_EQ(arcShape->IsIn(TPoint2D(8, 2), DefTol), -1);
  // A poly-Bezier circle: points inside, outside, and a ray through its joints.
  const std::unique_ptr<TGePolyBezier2D> circle = TGePolyBezier2D::CreateArc(TArc2D(TPoint2D(0, 0), 1.0, 0.0, TwoPi));
  const std::pair<TPoint2D, int> onCircle[] = {
      {{0, 0}, 1}, {{-0.5, 0}, 1}, {{0, std::sqrt(0.5)}, 1}, {{0.9, 0.9}, -1}, {{-1, 0}, 0}};
  for (const auto& [p, want] : onCircle) EXPECT_EQ(circle->IsIn(p, DefTol), want) << p.ToString();
}

#ifdef ORVANE_HAVE_OCCT
TEST(CurveIntersect, LineAgainstCubicAgreesWithOcct) {
  std::mt19937 rng(17);
  std::uniform_real_distribution<double> u(-10.0, 10.0);
  int crossings = 0;
  for (int k = 0; k < 2000; ++k) {
    const TBezierSegment2D b(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)),
                             TPoint2D(u(rng), u(rng)));
    const TGeBezier2D cubic(b);
    const TGeLine2D line(TPoint2D(u(rng), u(rng)), TPoint2D(u(rng), u(rng)));
    TList<TIntersect2D> ours;
    const int n = line.IntersectCurve(cubic, ours, DefTol);
    EXPECT_EQ(n, ours.Count());
    Geom2dAPI_InterCurveCurve occt(GCE2d_MakeSegment(gp_Pnt2d(line.GetStartPoint().X, line.GetStartPoint().Y),
                                                     gp_Pnt2d(line.GetEndPoint().X, line.GetEndPoint().Y))
                                       .Value(),
                                   orvane::testing::ToOcct(b), 1e-9);
    EXPECT_EQ(n, occt.NbPoints()) << k;
    for (const TIntersect2D& hit : ours) {
      ExpectNear(hit.InterThis.Point(), hit.InterThat.Point(), 1e-7);
      double best = MaxDouble;
      for (int i = 1; i <= occt.NbPoints(); ++i) {
        best = std::min(best, hit.InterThis.Point().DistanceTo(TPoint2D(occt.Point(i).X(), occt.Point(i).Y())));
      }
      EXPECT_LT(best, 1e-7) << k;
    }
    crossings += n;
  }
  EXPECT_GT(crossings, 500);
}
#endif

// Closed LWPOLYLINE entities of a DXF file as composites of lines and bulged arcs (group 10/20
// a vertex, 42 the bulge of the edge that leaves it), with their closed-form areas: the
// polygon of the vertices plus the circular segment of each bulge.
struct TBulgedOutline {
  std::unique_ptr<TGeCompositeCurve2D> Curve;
  double Area = 0.0;
  double Length = 0.0;
};

std::vector<TBulgedOutline> ReadClosedLwPolylines(const std::string& FileName) {
  std::vector<TBulgedOutline> result;
  for (const testing::TDxfEntity& e : testing::ReadDxfEntities(FileName)) {
    const testing::TDxfLwPolyline w = e.Kind == "LWPOLYLINE" ? testing::LwPolyline(e) : testing::TDxfLwPolyline();
    if (!w.Closed || w.Pts.size() < 2) continue;
    const TDynPoints2D& pts = w.Pts;
    TBulgedOutline o;
    o.Curve = std::make_unique<TGeCompositeCurve2D>();
    TDynPoints2D ring = pts;
    for (std::size_t i = 0; i < pts.size(); ++i) {
      const TPoint2D a = pts[i];
      const TPoint2D b = pts[(i + 1) % pts.size()];
      const double bulge = w.Bulges[i];
      if (a.DistanceTo(b) < 1e-12) continue;
      if (bulge == 0.0) {
        o.Curve->AddCurve(std::make_unique<TGeLine2D>(a, b));
        o.Length += a.DistanceTo(b);
      } else {
        o.Curve->AddCurve(std::make_unique<TGeCircularArc2D>(a, bulge, b));
        const double theta = 4.0 * std::atan(std::fabs(bulge));
        const double r = a.DistanceTo(b) / (2.0 * std::sin(theta / 2.0));
        o.Length += theta * r;
        o.Area += (bulge > 0 ? 1.0 : -1.0) * 0.5 * r * r * (theta - std::sin(theta));
      }
    }
    ring.push_back(pts.front());
    o.Area += PolyArea(ring);
    result.push_back(std::move(o));
  }
  return result;
}

#ifdef ORVANE_HAVE_GEOS
// Length, area, sense and point positions of each closed outline: the composite against its
// closed form, and its ray against GEOS on a fine linearisation, away from the boundary.
void CheckOutlines(const std::vector<TBulgedOutline>& Outlines, const char* Name, GEOSContextHandle_t H,
                   std::mt19937& Rng) {
  for (const TBulgedOutline& o : Outlines) {
    const TGeCompositeCurve2D& c = *o.Curve;
    ASSERT_TRUE(c.GetIsClosed()) << Name;
    EXPECT_NEAR(c.GetCurveLength(), o.Length, 1e-9 * o.Length) << Name;
    TDynPoints2D ring;
    c.GetSamplePoints(1e-5, ring);
    EXPECT_NEAR(PolyArea(ring), o.Area, 1e-4 * std::fabs(o.Area) + 1e-6) << Name;
    EXPECT_EQ(c.GetIsClockwise(), o.Area < 0) << Name;
    GEOSGeometry* poly = GEOSGeom_createPolygon_r(H, orvane::testing::GeosRing(H, ring), nullptr, 0);
    const GEOSPreparedGeometry* prep = GEOSPrepare_r(H, poly);
    const TRect2D box = c.BoundBlock();
    std::uniform_real_distribution<double> px(box.XMin - 1, box.XMax + 1);
    std::uniform_real_distribution<double> py(box.YMin - 1, box.YMax + 1);
    for (int k = 0; k < 200; ++k) {
      const TPoint2D p(px(Rng), py(Rng));
      double t = 0.0;
      if (c.GetClosedPointTo(p, DefTol, t).DistanceTo(p) < 1e-3) continue;
      GEOSGeometry* pt = GEOSGeom_createPointFromXY_r(H, p.X, p.Y);
      const bool inside = GEOSPreparedContains_r(H, prep, pt) == 1;
      EXPECT_EQ(c.IsIn(p, DefTol), inside ? 1 : -1) << Name << " " << p.ToString();
      GEOSGeom_destroy_r(H, pt);
    }
    GEOSPreparedGeom_destroy_r(H, prep);
    GEOSGeom_destroy_r(H, poly);
  }
}

TEST(CurveIntersect, OutlinesOfRealDrawings) {
  const std::string dir = std::string(ORVANE_SHARED_DATA_DIR) + "/curves/";
  if (!std::ifstream(dir + "cadquery_gear.dxf")) GTEST_SKIP() << "no shared drawings in " << dir;
  GEOSContextHandle_t h = GEOS_init_r();
  std::mt19937 rng(9);
  std::size_t bulged = 0;
  for (const char* name : {"laser4diy_cornerbracket_8pcs_x.dxf", "laser4diy_baseplate.dxf", "laser4diy_mainsheet_x.dxf",
                           "skydxf_issue39.dxf", "cadquery_MC_12x31.dxf"}) {
    const std::vector<TBulgedOutline> outlines = ReadClosedLwPolylines(dir + name);
    bulged += outlines.size();
    CheckOutlines(outlines, name, h, rng);
  }
  EXPECT_GT(bulged, 20u);
  GEOS_finish_r(h);
}
#endif

}  // namespace
}  // namespace orvane
