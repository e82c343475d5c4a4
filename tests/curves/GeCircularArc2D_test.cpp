// The arc curve: construction and its sense, boxes, chord sampling, equality, crossings;
// random arcs and the arcs of real drawings against OCCT.

#include "orvane/curves/GeCircularArc2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <string>

#include "orvane/curves/GeStrings.h"
#include "support/DxfEntities.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_OCCT
#include <BndLib_Add2dCurve.hxx>
#include <Bnd_Box2d.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GCPnts_UniformDeflection.hxx>
#include <Geom2dAPI_ProjectPointOnCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <gp_Ax22d.hxx>
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;
using orvane::testing::ExpectRaise;

// The largest distance between the arc and the chords of the samples, measured at the arc
// point halfway (in parameter) between two samples.
double WorstChordError(const TGeCircularArc2D& Arc, const TFloatDynArray& Params, const TDynPoints2D& Pts) {
  double worst = 0.0;
  for (std::size_t i = 0; i + 1 < Pts.size(); ++i) {
    const TPoint2D mid = Arc.EvalPoint(0.5 * (Params[i] + Params[i + 1]));
    worst = std::max(worst, orvane::testing::PointSegDist(mid, Pts[i], Pts[i + 1]));
  }
  return worst;
}

// Chord sampling is within the error, and one chord fewer (evenly spread) would not be.
void ExpectFewestChords(const TGeCircularArc2D& Arc, double Eps) {
  TDynPoints2D pts;
  TFloatDynArray params;
  const int n = Arc.GetSamplePointsByChord(Eps, pts, params);
  ASSERT_EQ(pts.size(), static_cast<std::size_t>(n));
  ASSERT_GE(n, 2);
  EXPECT_EQ(params.front(), 0.0);
  EXPECT_EQ(params.back(), 1.0);
  EXPECT_EQ(pts.back(), Arc.GetEndPoint());
  EXPECT_LE(WorstChordError(Arc, params, pts), Eps * (1 + 1e-6) + 1e-15 * Arc.GetRadius());
  if (n > 2) {
    // The sagitta of the chord over the angle a is R (1 - cos(a / 2)).
    const long double a = std::fabs(Arc.GetSweepAngle()) / static_cast<long double>(n - 2);
    EXPECT_GT(Arc.GetRadius() * 2.0L * std::pow(std::sin(a / 4.0L), 2.0L), Eps * (1 - 1e-6));
  }
}

TEST(GeCircularArc2D, ConstructionKeepsTheAskedSense) {
  // Clockwise = true gives the clockwise arc: the minor one, over the top, from (0,0) to (2,0).
  const TGeCircularArc2D cw(TPoint2D(0, 0), TPoint2D(2, 0), std::sqrt(2.0), true);
  EXPECT_TRUE(cw.GetIsClockwise());
  EXPECT_NEAR(cw.GetSweepAngle(), -HalfPi, 1e-12);
  ExpectNear(cw.GetCenter(), TPoint2D(1, -1), 1e-12);
  ExpectNear(cw.EvalPoint(0.5), TPoint2D(1, std::sqrt(2.0) - 1), 1e-12);
  const TGeCircularArc2D ccw(TPoint2D(0, 0), TPoint2D(2, 0), std::sqrt(2.0), false);
  EXPECT_FALSE(ccw.GetIsClockwise());
  ExpectNear(ccw.GetCenter(), TPoint2D(1, 1), 1e-12);
  // About a centre: clockwise from (1,0) to (0,1) is three quarters of a turn.
  const TGeCircularArc2D around(TPoint2D(0, 0), TPoint2D(1, 0), TPoint2D(0, 1), true);
  EXPECT_NEAR(around.GetSweepAngle(), -1.5 * Pi, 1e-12);
  // By bulge (1: a half circle, counter-clockwise) and through three points.
  const TGeCircularArc2D bulge(TPoint2D(0, 0), 1.0, TPoint2D(2, 0));
  EXPECT_NEAR(bulge.GetSweepAngle(), Pi, 1e-12);
  ExpectNear(bulge.EvalPoint(0.5), TPoint2D(1, -1), 1e-12);
  const std::unique_ptr<TGeCircularArc2D> cross =
      TGeCircularArc2D::CreateCross(TPoint2D(1, 0), TPoint2D(0, 1), TPoint2D(-1, 0));
  ExpectNear(cross->GetCenter(), TPoint2D(0, 0), 1e-12);
  EXPECT_NEAR(cross->GetSweepAngle(), Pi, 1e-12);

  // A straight piece is never an arc object.
  ExpectRaise<ECircularArcParam>(
      [] { TGeCircularArc2D(TPoint2D(0, 0), 0.0, TPoint2D(2, 0)); },
      "[Error] TGeCircularArc2D.Create: the points give a straight piece, which is a TGeLine2D");
  EXPECT_THROW(TGeCircularArc2D::CreateCross(TPoint2D(0, 0), TPoint2D(1, 1), TPoint2D(3, 3)), ECircularArcParam);
  TGeCircularArc2D arc(TPoint2D(0, 0), 1.0, 0.0, HalfPi);
  EXPECT_THROW(arc.DegradeLine(TPoint2D(0, 0), TPoint2D(5, 5)), ECircularArcParam);
  EXPECT_EQ(arc.GetRadius(), 1.0);
  EXPECT_EQ(arc.GetEndPoint(), TPoint2D(std::cos(HalfPi), 1.0));

  // Bad numbers are refused and leave the arc as it was.
  EXPECT_THROW(TGeCircularArc2D(TPoint2D(NAN, 0), 1.0, 0.0, 1.0), EGeometry);
  EXPECT_THROW(arc.SetRadius(-1.0), EGeometry);
  EXPECT_THROW(arc.SetSweepAngle(INFINITY), EGeometry);
  EXPECT_THROW(arc.ScaleBy(NAN), EParamError);
  EXPECT_THROW(TGeCircularArc2D(TPoint2D(0, 0), TPoint2D(1, 0), 0.0), EGeometry);
  EXPECT_EQ(arc.GetRadius(), 1.0);
  EXPECT_EQ(arc.GetSweepAngle(), HalfPi);
  EXPECT_EQ(arc.ToString(), SGeCCW + SGeCirArc2DFmt.substr(0, SGeCirArc2DFmt.find('%')) + "0.00, 0.00), " +
                                "\xE5\x8D\x8A\xE5\xBE\x84" + "1.00, " +
                                "\xE8\xB5\xB7\xE5\xA7\x8B\xE8\xA7\x92 0.00 \xE6\x97\x8B\xE8\xBD\xAC\xE8\xA7\x92 1.57");
}

TEST(GeCircularArc2D, HalfAndFullCirclesAndTheirBoxes) {
  // Lengths and boxes within the range are OCCT's business below.
  const TGeCircularArc2D half(TPoint2D(0, 0), 2.0, 0.0, Pi);
  EXPECT_FALSE(half.GetIsClosed());
  EXPECT_FALSE(half.IsFullCircle());
  TGeCircularArc2D circle(TPoint2D(3, 4), 1.0, 0.0, -1.0);
  circle.MakeFullCircle();
  EXPECT_EQ(circle.GetSweepAngle(), -TwoPi);
  EXPECT_TRUE(circle.GetIsClosed());
  // Closed needs more than half a turn: a tiny arc is not closed though its ends meet.
  EXPECT_FALSE(TGeCircularArc2D(TPoint2D(0, 0), 1.0, 0.0, 1e-9).GetIsClosed());

  // A range below 0 or past a whole turn is measured on the circle it sweeps.
  const TGeCircularArc2D quarter(TPoint2D(0, 0), 1.0, 0.0, HalfPi);
  EXPECT_EQ(quarter.BoundBlockOf(TGeInterval(-1.0, 0.0)).XMin, 0.0);
  EXPECT_EQ(quarter.BoundBlockOf(TGeInterval(-1.0, 0.0)).YMin, -1.0);
  EXPECT_EQ(quarter.BoundBlockOf(TGeInterval(0.0, 4.5)), TRect2D(-1, -1, 1, 1));
  EXPECT_EQ(quarter.BoundBlockOf(TGeInterval(0.5, 0.5)), TRect2D(quarter.EvalPoint(0.5)));
  // Lengths and parameters run on without clamping.
  EXPECT_NEAR(quarter.ParamOfLength(Pi, DefTol), 2.0, 1e-15);
  EXPECT_NEAR(quarter.LengthAt(3.0), 1.5 * Pi, 1e-15);
}

TEST(GeCircularArc2D, ChordSamplingGivesTheFewestPointsWithinTheError) {
  // Radius 1, a quarter, error 1e-3: each chord may span 4 asin(sqrt(5e-4)) = 0.08945 rad,
  // so 18 chords, 19 points.
  const TGeCircularArc2D quarter(TPoint2D(0, 0), 1.0, 0.0, HalfPi);
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_EQ(quarter.GetSamplePointsByChord(1e-3, pts, params), 19);
  EXPECT_EQ(quarter.GetSamplePoints(1e-3, pts), 19);
  ExpectFewestChords(quarter, 1e-3);
  // A large radius and a tiny error: still the true count, never one chord.
  ExpectFewestChords(TGeCircularArc2D(TPoint2D(5, 5), 1e6, 1.0, HalfPi), 1e-6);
  ExpectFewestChords(TGeCircularArc2D(TPoint2D(0, 0), 1e-3, 0.0, -TwoPi), 1e-9);
  // An error beyond the arc's height: one chord; beyond the diameter on a full circle too.
  EXPECT_EQ(quarter.GetSamplePointsByChord(0.3, pts, params), 2);
  EXPECT_EQ(TGeCircularArc2D(TPoint2D(0, 0), 1.0, 0.0, TwoPi).GetSamplePointsByChord(5.0, pts, params), 2);
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int k = 0; k < 300; ++k) {
    const double r = std::pow(10.0, 6 * u(rng) - 3);
    const TGeCircularArc2D arc(TPoint2D(u(rng), u(rng)), r, 7 * u(rng), (u(rng) - 0.5) * 4 * Pi);
    ExpectFewestChords(arc, r * std::pow(10.0, -7 * u(rng)));
  }
  // Between two parameters, in their order.
  EXPECT_EQ(quarter.GetSamplePointsByChord(1.0, 0.5, 1e-3, pts, params), 10);
  EXPECT_EQ(params.front(), 1.0);
  EXPECT_EQ(params.back(), 0.5);
  // A point arc samples to its one point at parameter 0.
  for (const TGeCircularArc2D* point :
       {new TGeCircularArc2D(TPoint2D(1, 1), 0.0, 0.0, 1.0), new TGeCircularArc2D(TPoint2D(1, 1), 2.0, 0.5, 0.0)}) {
    EXPECT_EQ(point->GetSamplePointsByChord(1e-3, pts, params), 1);
    EXPECT_EQ(params, TFloatDynArray{0.0});
    EXPECT_EQ(pts[0], point->GetStartPoint());
    delete point;
  }
  params = {0.25};
  ExpectRaise<EParamError>([&] { quarter.GetSamplePointsByChord(NAN, pts, params); },
                           "[Error] TGeCircularArc2D.GetSamplePointsByChord: EpsChord is not a number");
  EXPECT_THROW(quarter.GetSamplePointsByChord(0.0, pts, params), EParamError);
  EXPECT_EQ(params, TFloatDynArray{0.25});  // a refused call leaves the outputs alone
}

TEST(GeCircularArc2D, EqualityWithAndWithoutDirection) {
  const TGeCircularArc2D arc(TPoint2D(1, 2), 3.0, 0.25, HalfPi);
  TGeCircularArc2D reversed(TPoint2D(1, 2), 3.0, 0.25, HalfPi);
  reversed.ReverseDir();
  EXPECT_TRUE(arc.CheckEqual(reversed, false));
  EXPECT_FALSE(arc.CheckEqual(reversed, true));
  EXPECT_TRUE(arc.CheckEqual(TGeCircularArc2D(TPoint2D(1, 2), 3.0, 0.25 + TwoPi, HalfPi), true));
  // Two full circles on one centre are one circle whatever their start and sense.
  const TGeCircularArc2D c1(TPoint2D(0, 0), 5.0, 0.0, TwoPi);
  const TGeCircularArc2D c2(TPoint2D(0, 0), 5.0, 2.0, -TwoPi);
  EXPECT_TRUE(c1.CheckEqual(c2, false));
  EXPECT_FALSE(c1.CheckEqual(c2, true));
  // Nearness of radii is relative on large circles only.
  EXPECT_TRUE(TGeCircularArc2D(TPoint2D(0, 0), 1000.0, 0.0, 1.0)
                  .CheckEqual(TGeCircularArc2D(TPoint2D(0, 0), 1000.0 + 5e-6, 0.0, 1.0), true));
  EXPECT_FALSE(TGeCircularArc2D(TPoint2D(0, 0), 1.0, 0.0, 1.0)
                   .CheckEqual(TGeCircularArc2D(TPoint2D(0, 0), 1.0 + 5e-6, 0.0, 1.0), true));
  EXPECT_FALSE(arc.CheckEqual(TGeLine2D(arc.GetStartPoint(), arc.GetEndPoint()), false));
  EXPECT_TRUE(c1.Contains(TGeCircularArc2D(TPoint2D(0, 0), 5.0, 1.0, 2.0)));
  EXPECT_FALSE(arc.Contains(TGeCircularArc2D(TPoint2D(1, 2), 3.0, 0.0, HalfPi)));
}

TEST(GeCircularArc2D, CrossingsAndPointRelationByTheRay) {
  // A ray from (0, 0.6) meets the unit circle at (0.8, 0.6), a third of the way from the
  // line's start; the parameter on the circle is the angle's share of the turn.
  const TGeCircularArc2D ccw(TPoint2D(0, 0), 1.0, 0.0, TwoPi);
  const TGeLine2D ray(TPoint2D(0, 0.6), TPoint2D(2.4, 0.6));
  TList<TIntersect2D> inters;
  EXPECT_EQ(ray.IntersectCurve(ccw, inters, DefTol), 1);
  EXPECT_NEAR(inters[0].InterThis.Param, 1.0 / 3.0, 1e-12);
  EXPECT_NEAR(inters[0].InterThat.Param, std::atan2(0.6, 0.8) / TwoPi, 1e-12);
  EXPECT_EQ(inters[0].InterThat.Curve, &ccw);
  // The count is what this call added, not the list's size.
  EXPECT_EQ(ray.IntersectCurve(TGeLine2D(TPoint2D(1, 0), TPoint2D(1, 1)), inters, DefTol), 1);
  EXPECT_EQ(inters.Count(), 2);
  // The arc asking: the axis and a second circle meet it twice each, on both curves alike.
  auto twice = [&](const auto& Other) {
    TList<TIntersect2D> hits;
    EXPECT_EQ(ccw.IntersectCurve(Other, hits, DefTol), 2);
    for (const TIntersect2D& hit : hits) ExpectNear(hit.InterThis.Point(), hit.InterThat.Point(), 1e-12);
  };
  twice(TGeLine2D(TPoint2D(-2, 0), TPoint2D(2, 0)));
  twice(TGeCircularArc2D(TPoint2D(1, 1), 1.0, 0.0, TwoPi));

  const TGeCircularArc2D cw(TPoint2D(0, 0), 1.0, 1.0, -TwoPi);
  // (0.9, 0.9) is inside the box only; the rays from (-0.5, 1) and (-0.5, -1) only touch the
  // circle: outside.
  const std::pair<TPoint2D, int> where[] = {{{0, 0}, 1},       {{-0.5, 0.5}, 1}, {{0.9, 0.9}, -1},  {{3, 0}, -1},
                                            {{0.6, -0.8}, 0}, {{1, 0}, 0},      {{-0.5, 1}, -1}, {{-0.5, -1}, -1}};
  for (const TGeCircularArc2D* circle : {&ccw, &cw})
    for (const auto& [p, want] : where) EXPECT_EQ(circle->IsIn(p, DefTol), want) << p.ToString();
}

#ifdef ORVANE_HAVE_OCCT
// The same arc in OCCT: a circle trimmed to the arc's angles, always counter-clockwise.
Handle(Geom2d_TrimmedCurve) OcctArc(const TGeCircularArc2D& Arc) {
  Handle(Geom2d_Circle) circle =
      new Geom2d_Circle(gp_Ax22d(gp_Pnt2d(Arc.GetCenter().X, Arc.GetCenter().Y), gp_Dir2d(1, 0)), Arc.GetRadius());
  const double a0 = std::min(Arc.GetStartAngle(), Arc.GetEndAngle());
  const double a1 = std::max(Arc.GetStartAngle(), Arc.GetEndAngle());
  return new Geom2d_TrimmedCurve(circle, a0, a1);
}

// Length, nearest point, box and chord sampling of one arc against OCCT.
void CompareWithOcct(const TGeCircularArc2D& Arc, std::mt19937& Rng, const std::string& Where) {
  SCOPED_TRACE(Where);
  Handle(Geom2d_TrimmedCurve) occ = OcctArc(Arc);
  Geom2dAdaptor_Curve adaptor(occ);
  const double r = Arc.GetRadius();
  EXPECT_NEAR(Arc.GetCurveLength(), GCPnts_AbscissaPoint::Length(adaptor), 1e-9 * r) << Where;

  Bnd_Box2d box;
  BndLib_Add2dCurve::AddOptimal(occ, occ->FirstParameter(), occ->LastParameter(), 0.0, box);
  double x0, y0, x1, y1;
  box.Get(x0, y0, x1, y1);
  auto expectBox = [&](const TRect2D& Ours) {
    ExpectNear({Ours.XMin, Ours.YMin}, {x0, y0}, 1e-7 * r);
    ExpectNear({Ours.XMax, Ours.YMax}, {x1, y1}, 1e-7 * r);
  };
  expectBox(Arc.BoundBlock());

  // A sub-range, its bounds in either order.
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  const double t0 = unit(Rng);
  const double t1 = unit(Rng);
  const double b0 = std::min(Arc.ParamToAngle(t0), Arc.ParamToAngle(t1));
  const double b1 = std::max(Arc.ParamToAngle(t0), Arc.ParamToAngle(t1));
  if (b1 - b0 > 1e-9) {
    Bnd_Box2d sub;
    BndLib_Add2dCurve::AddOptimal(occ->BasisCurve(), b0, b1, 0.0, sub);
    sub.Get(x0, y0, x1, y1);
    expectBox(Arc.BoundBlockOf(TGeInterval(t0, t1)));
  }

  std::uniform_real_distribution<double> u(-3.0, 3.0);
  for (int k = 0; k < 5; ++k) {
    const TPoint2D p = Arc.GetCenter() + TPoint2D(u(Rng), u(Rng)) * r;
    // OCCT gives the orthogonal projections; the nearest point may also be an end.
    double best = std::min(p.DistanceTo(Arc.GetStartPoint()), p.DistanceTo(Arc.GetEndPoint()));
    Geom2dAPI_ProjectPointOnCurve proj(gp_Pnt2d(p.X, p.Y), occ);
    if (proj.NbPoints() > 0) best = std::min(best, proj.LowerDistance());
    double t = 0.0;
    EXPECT_NEAR(Arc.GetClosedPointTo(p, DefTol, t).DistanceTo(p), best, 1e-9 * r) << Where;
    ExpectNear(Arc.EvalPoint(t), Arc.GetClosedPointTo(p, DefTol), 1e-12 * r);
  }

  // Within the error like OCCT's uniform deflection, and never with more points.
  const double eps = 1e-3 * r;
  GCPnts_UniformDeflection sampler(adaptor, eps, occ->FirstParameter(), occ->LastParameter());
  ASSERT_TRUE(sampler.IsDone());
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_LE(Arc.GetSamplePointsByChord(eps, pts, params), sampler.NbPoints()) << Where;
  EXPECT_LE(WorstChordError(Arc, params, pts), eps * (1 + 1e-9)) << Where;
}

TEST(GeCircularArc2D, RandomArcsAgreeWithOcct) {
  std::mt19937 rng(62);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int k = 0; k < 400; ++k) {
    const double r = std::pow(10.0, 5 * u(rng) - 2);
    const double sweep = (u(rng) < 0.5 ? -1 : 1) * (0.01 + u(rng) * (TwoPi - 0.01));
    const TGeCircularArc2D arc(TPoint2D(100 * u(rng), -50 * u(rng)), r, 20 * (u(rng) - 0.5), sweep);
    CompareWithOcct(arc, rng, "random arc " + std::to_string(k));
  }
}

// ARC and CIRCLE entities of a DXF file (group codes 10/20 centre, 40 radius, 50/51 angles
// in degrees, counter-clockwise), in any section; those with a flipped extrusion are left out.
std::vector<std::unique_ptr<TGeCircularArc2D>> ReadDxfArcs(const std::string& FileName) {
  std::vector<std::unique_ptr<TGeCircularArc2D>> arcs;
  for (const testing::TDxfEntity& e : testing::ReadDxfEntities(FileName)) {
    const double r = e.Num(40), a0 = e.Num(50), a1 = e.Num(51, 360.0);
    if ((e.Kind != "ARC" && e.Kind != "CIRCLE") || r <= 0 || e.Num(230, 1.0) <= 0) continue;
    double sweep = e.Kind == "CIRCLE" ? 360.0 : std::fmod(a1 - a0 + 720.0, 360.0);
    if (sweep == 0.0) sweep = 360.0;
    arcs.push_back(std::make_unique<TGeCircularArc2D>(TPoint2D(e.Num(10), e.Num(20)), r, a0 * Pi / 180,
                                                      sweep * Pi / 180));
  }
  return arcs;
}

TEST(GeCircularArc2D, ArcsOfRealDrawingsAgreeWithOcct) {
  const std::string dir = std::string(ORVANE_SHARED_DATA_DIR) + "/curves/";
  if (!std::ifstream(dir + "cadquery_1001.dxf")) GTEST_SKIP() << "no shared drawings in " << dir;
  std::mt19937 rng(5);
  std::size_t total = 0;
  for (const char* name : {"cadquery_1001.dxf", "cadquery_gear.dxf", "cadquery_vslot-2020_1.dxf",
                           "ezdxf_edgeminer_1_polylines.dxf", "laser4diy_baseplate.dxf"}) {
    const auto arcs = ReadDxfArcs(dir + name);
    EXPECT_FALSE(arcs.empty()) << name;
    total += arcs.size();
    for (std::size_t i = 0; i < arcs.size(); ++i)
      CompareWithOcct(*arcs[i], rng, std::string(name) + " #" + std::to_string(i));
  }
  EXPECT_GT(total, 200u);
}
#endif

}  // namespace
}  // namespace orvane
