// Mixed outlines from real drawings: the bulged LWPOLYLINEs of the shared DXF files and the
// cubic paths of the shared SVG files, read by a tiny reader here. Exact areas and point
// tests against GEOS on a linearisation made here from first principles (arcs to a sagitta
// of 1e-9), arcs against ezdxf's bulge_to_arc, and the fit of every real cubic to arcs.

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/mixed/LABPolyline.h"
#include "support/DxfEntities.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_GEOS
#include "support/Geos.h"
#endif

namespace orvane {
namespace {

namespace fs = std::filesystem;

fs::path CurvesDir() { return fs::path(ORVANE_SHARED_DATA_DIR) / "curves"; }

void FromDxf(const testing::TDxfLwPolyline& D, TLABPolyline& p) {
  const std::size_t n = D.Pts.size();
  for (std::size_t i = 0; i + 1 < n + (D.Closed ? 1 : 0); ++i) {
    const TPoint2D& a = D.Pts[i];
    const TPoint2D& b = D.Pts[(i + 1) % n];
    if (D.Bulges[i] == 0.0)
      p.Add(TLABSegline::CreateLine(a, b));
    else
      p.Add(TLABSegline::CreateArc(TArc2D::CreateBulge(a, b, D.Bulges[i])));
  }
}

// The bulged outline as vertices: each arc worked out from its bulge (sweep 4 atan b, centre
// on the chord's bisector) and cut into steps whose sagitta stays below 1e-9.
TDynPoints2D Linearise(const testing::TDxfLwPolyline& D) {
  TDynPoints2D out;
  const std::size_t n = D.Pts.size();
  for (std::size_t i = 0; i + 1 < n + (D.Closed ? 1 : 0); ++i) {
    const TPoint2D a = D.Pts[i];
    const TPoint2D b = D.Pts[(i + 1) % n];
    out.push_back(a);
    const double bulge = D.Bulges[i];
    if (bulge == 0.0) continue;
    const double sweep = 4.0 * std::atan(bulge);
    const TPoint2D d = b - a;
    const double c = d.Mag();
    const TPoint2D centre = (a + b) * 0.5 + TPoint2D(-d.Y, d.X) * (0.5 / std::tan(0.5 * sweep));
    const double r = 0.5 * c / std::abs(std::sin(0.5 * sweep));
    const double step = 2.0 * std::acos(1.0 - 1e-9 / r);
    const int steps = static_cast<int>(std::ceil(std::abs(sweep) / step));
    const double a0 = std::atan2(a.Y - centre.Y, a.X - centre.X);
    for (int k = 1; k < steps; ++k) {
      const double t = a0 + sweep * k / steps;
      out.emplace_back(centre.X + r * std::cos(t), centre.Y + r * std::sin(t));
    }
  }
  if (!D.Closed) out.push_back(D.Pts.back());
  return out;
}

// ---- A tiny SVG path reader: M, L, H, V, C, Z, absolute and relative -----------------------

struct TSvgPath {
  TLABPolyline Outline;
  TDynPoints2D Fine;  // each cubic at 4096 even steps
  bool Closed = false;
  std::vector<TBezierSegment2D> Cubics;
};

std::vector<std::unique_ptr<TSvgPath>> ReadSvgPaths(const fs::path& File) {
  std::ifstream in(File);
  std::stringstream ss;
  ss << in.rdbuf();
  std::string text = ss.str();
  const std::size_t defsEnd = text.find("</defs>");  // markers and patterns stand before
  if (defsEnd != std::string::npos) text.erase(0, defsEnd);
  std::vector<std::unique_ptr<TSvgPath>> paths;
  for (std::size_t at = text.find(" d=\""); at != std::string::npos; at = text.find(" d=\"", at + 1)) {
    const std::size_t start = at + 4;
    const std::string d = text.substr(start, text.find('"', start) - start);
    std::size_t i = 0;
    auto skip = [&] {
      while (i < d.size() && (std::isspace(static_cast<unsigned char>(d[i])) || d[i] == ',')) ++i;
    };
    auto number = [&] {
      skip();
      char* end = nullptr;
      const double v = std::strtod(d.c_str() + i, &end);
      i = static_cast<std::size_t>(end - d.c_str());
      return v;
    };
    char cmd = 0;
    TPoint2D cur;
    TPoint2D subStart;
    std::unique_ptr<TSvgPath> path;
    auto finish = [&] {
      if (path && path->Outline.Count() > 0) paths.push_back(std::move(path));
      path.reset();
    };
    auto lineTo = [&](const TPoint2D& p) {
      path->Outline.Add(TLABSegline::CreateLine(cur, p));
      path->Fine.push_back(p);
      cur = p;
    };
    for (;;) {
      skip();
      if (i >= d.size()) break;
      if (std::isalpha(static_cast<unsigned char>(d[i]))) cmd = d[i++];
      const bool rel = std::islower(static_cast<unsigned char>(cmd)) != 0;
      const TPoint2D base = rel ? cur : TPoint2D();
      switch (std::toupper(static_cast<unsigned char>(cmd))) {
        case 'M': {
          finish();
          const double x = number();
          cur = base + TPoint2D(x, number());
          subStart = cur;
          path = std::make_unique<TSvgPath>();
          path->Fine.push_back(cur);
          cmd = rel ? 'l' : 'L';
          break;
        }
        case 'L': {
          const double x = number();
          lineTo(base + TPoint2D(x, number()));
          break;
        }
        case 'H':
          lineTo(TPoint2D((rel ? cur.X : 0.0) + number(), cur.Y));
          break;
        case 'V':
          lineTo(TPoint2D(cur.X, (rel ? cur.Y : 0.0) + number()));
          break;
        case 'C': {
          TPoint2D q[3];
          for (TPoint2D& p : q) {
            const double x = number();
            p = base + TPoint2D(x, number());
          }
          const TBezierSegment2D b(cur, q[0], q[1], q[2]);
          path->Outline.Add(TLABSegline::CreateBezier(cur, q[0], q[1], q[2]));
          path->Cubics.push_back(b);
          for (int k = 1; k <= 4096; ++k) path->Fine.push_back(b.EvalPoint(k / 4096.0));
          cur = q[2];
          break;
        }
        case 'Z':
          if (!cur.Equals(subStart, 0.0)) lineTo(subStart);
          path->Closed = true;
          finish();
          cur = subStart;
          break;
        default:
          ADD_FAILURE() << "unread path command " << cmd;
          return paths;
      }
    }
    finish();
  }
  return paths;
}

#ifdef ORVANE_HAVE_GEOS
struct TGeos {
  GEOSContextHandle_t H = GEOS_init_r();
  ~TGeos() { GEOS_finish_r(H); }
  // Signed area of the ring (positive counter-clockwise).
  double Area(const TDynPoints2D& Ring) const {
    GEOSGeometry* poly = GEOSGeom_createPolygon_r(H, testing::GeosRing(H, Ring), nullptr, 0);
    double area = 0.0;
    GEOSArea_r(H, poly, &area);
    char ccw = 0;
    GEOSCoordSeq_isCCW_r(H, GEOSGeom_getCoordSeq_r(H, GEOSGetExteriorRing_r(H, poly)), &ccw);
    GEOSGeom_destroy_r(H, poly);
    return ccw ? area : -area;
  }
};

// Exact area against GEOS, and the point test against GEOS's on random points of the box.
void CheckAgainstGeos(const TGeos& G, const TLABPolyline& Outline, const TDynPoints2D& Fine, double AreaTol,
                      std::mt19937& Rng, const std::string& Name) {
  // Areas about the box centre, so that neither side loses digits to far coordinates.
  const TPoint2D centre = Outline.BoundBox().CenterPoint();
  const auto moved = Outline.CloneAs<TLABPolyline>();
  moved->Translate(-1.0 * centre);
  EXPECT_NEAR(moved->Area(), G.Area(testing::Moved(Fine, -1.0 * centre)), AreaTol) << Name;
  GEOSGeometry* poly = GEOSGeom_createPolygon_r(G.H, testing::GeosRing(G.H, Fine), nullptr, 0);
  const GEOSPreparedGeometry* prepared = GEOSPrepare_r(G.H, poly);
  const TRect2D box = Outline.BoundBox();
  std::uniform_real_distribution<double> ux(box.XMin, box.XMax);
  std::uniform_real_distribution<double> uy(box.YMin, box.YMax);
  for (int k = 0; k < 20; ++k) {
    const TPoint2D p(ux(Rng), uy(Rng));
    const int ours = Outline.RelationWithPoint(p);
    if (ours == static_cast<int>(TShapeRelation::srOn)) continue;
    GEOSGeometry* pt = GEOSGeom_createPointFromXY_r(G.H, p.X, p.Y);
    const bool inside = GEOSPreparedContains_r(G.H, prepared, pt) == 1;
    GEOSGeom_destroy_r(G.H, pt);
    EXPECT_EQ(ours == static_cast<int>(TShapeRelation::srIn), inside) << Name << " at " << p.ToString();
  }
  GEOSPreparedGeom_destroy_r(G.H, prepared);
  GEOSGeom_destroy_r(G.H, poly);
}
#endif

TEST(MixedData, DxfBulgesCloseAndMeasureExactly) {
#ifndef ORVANE_HAVE_GEOS
  GTEST_SKIP() << "GEOS is not available";
#else
  TGeos geos;
  std::mt19937 rng(39);
  int outlines = 0;
  int arcs = 0;
  for (const char* file : {"laser4diy_mainsheet_x.dxf", "laser4diy_cornerbracket_8pcs_x.dxf", "laser4diy_baseplate.dxf",
                           "skydxf_issue39.dxf"}) {
    if (!fs::exists(CurvesDir() / file)) GTEST_SKIP() << "no shared data: " << file;
    for (const testing::TDxfEntity& e : testing::ReadDxfEntities(CurvesDir() / file)) {
      if (!e.ModelSpace || e.Kind != "LWPOLYLINE") continue;
      const testing::TDxfLwPolyline d = testing::LwPolyline(e);
      if (d.Pts.size() < 2) continue;
      TLABPolyline p;
      FromDxf(d, p);
      for (const TLABSegline& s : p) arcs += s.SegType == TSegType::stArc;
      // Each segment ends where the next begins, and a closed outline ends at its start.
      for (int i = 1; i < p.Count(); ++i) testing::ExpectNear(p[i].P1, p[i - 1].P4, 1e-12);
      EXPECT_EQ(p.IsClosed(1e-9), d.Closed) << file;
      if (!d.Closed) continue;
      ++outlines;
      const TRect2D box = p.BoundBox();
      const double scale = std::max(box.Width(), box.Height());
      // The chords of sagitta 1e-9 cut off up to 2/3 of that along the whole perimeter.
      const TDynPoints2D fine = Linearise(d);
      double perimeter = 0.0;
      for (std::size_t k = 1; k < fine.size(); ++k) perimeter += fine[k].DistanceTo(fine[k - 1]);
      CheckAgainstGeos(geos, p, fine, 1e-9 * perimeter + 1e-12 * scale * scale, rng, file);
    }
  }
  EXPECT_GE(outlines, 30);
  EXPECT_GE(arcs, 60);
#endif
}

TEST(MixedData, DxfArcsAgreeWithEzdxf) {
  // ezdxf.math.bulge_to_arc(start, end, bulge): centre, start and end angle of the
  // counter-clockwise arc, radius. A negative bulge runs clockwise, so its arc's end is
  // ezdxf's start. Taken from mainsheet, cornerbracket and issue39.
  struct TRef {
    double X1, Y1, X2, Y2, Bulge, CX, CY, StartAngle, EndAngle, Radius;
  };
  const TRef refs[] = {
      {108.35, 5.499999999999998, 111.65, 5.499999999999998, -0.9999999999999999, 110.0, 5.499999999999998, 0.0,
       3.141592653589793, 1.6500000000000057},
      {766.5238934211691, 32.07106781186553, 765.059427327102, 28.53553390593285, -0.1989123673796529,
       761.5238934211691, 32.07106781186544, -0.7853981633974071, 1.8474111129762605e-14, 4.999999999999979},
      {757.9883595152364, 21.46446609406719, 756.5238934211693, 17.92893218813449, 0.1989123673796536,
       761.5238934211693, 17.9289321881346, 2.3561944901923857, -3.1415926535897714, 4.9999999999999885},
      {2914.733145342395, 3181.728824505224, 2914.733145342395, 3182.043785135144, -0.9999999999999999,
       2914.733145342395, 3181.886304820184, 1.5707963267948966, -1.5707963267948966, 0.157480314959912},
      {2911.671845178061, 3181.298563987179, 2911.671845178061, 3180.972788133251, -2.782748368611959,
       2911.8692157792766, 3181.135676060215, -2.4516202488890158, 2.4516202488876453, 0.25590551181013876},
  };
  for (const TRef& r : refs) {
    const TLABSegline seg = TLABSegline::CreateArc(TArc2D::CreateBulge({r.X1, r.Y1}, {r.X2, r.Y2}, r.Bulge));
    const TArc2D arc = seg.ToArc();
    testing::ExpectNear(arc.Center, {r.CX, r.CY}, 1e-9);
    EXPECT_NEAR(arc.Radius, r.Radius, 1e-9);
    const double ccwFrom = r.Bulge > 0 ? arc.StartAngle : arc.EndAngle();
    const double ccwTo = r.Bulge > 0 ? arc.EndAngle() : arc.StartAngle;
    EXPECT_NEAR(std::remainder(ccwFrom - r.StartAngle, TwoPi), 0.0, 1e-9);
    EXPECT_NEAR(std::remainder(ccwTo - r.EndAngle, TwoPi), 0.0, 1e-9);
    EXPECT_NEAR(seg.Bulge, r.Bulge, 1e-12);
    // The arc's middle lies on ezdxf's arc, half way round.
    const double mid = 0.5 * (r.StartAngle + r.EndAngle + (r.EndAngle < r.StartAngle ? TwoPi : 0.0));
    testing::ExpectNear(seg.PointByParam(0.5), TPoint2D(r.CX, r.CY) + TPoint2D(std::cos(mid), std::sin(mid)) * r.Radius,
                        1e-9);
  }
}

TEST(MixedData, SvgBeziersMeasureExactlyAndFitToArcs) {
  int cubics = 0;
  int closed = 0;
  std::size_t pieces = 0;
#ifdef ORVANE_HAVE_GEOS
  TGeos geos;
#endif
  std::mt19937 rng(7);
  for (const char* file : {"laser4diy_backplate_v2.svg", "laser4diy_shim_4pcs_2combined.svg"}) {
    if (!fs::exists(CurvesDir() / file)) GTEST_SKIP() << "no shared data: " << file;
    for (const auto& path : ReadSvgPaths(CurvesDir() / file)) {
      EXPECT_EQ(path->Outline.IsClosed(1e-9), path->Closed) << file;
      for (const TBezierSegment2D& b : path->Cubics) {
        ++cubics;
        const auto arcs = TCadBasicAlgo::Bezier2Arcs(b, 1e-3);
        pieces += static_cast<std::size_t>(arcs->Count());
        for (int k = 0; k <= 500; ++k) {
          const TPoint2D p = b.EvalPoint(k / 500.0);
          double dist = MaxDouble;
          for (const TArc2D& a : *arcs) {
            double param = 0.0;
            dist = std::min(dist, a.IsLine ? a.AsLine().DistanceLimit(p) : a.GetClosedPointTo(p, param).DistanceTo(p));
          }
          EXPECT_LE(dist, 1e-3) << file;
        }
      }
      if (!path->Closed) continue;
      ++closed;
#ifdef ORVANE_HAVE_GEOS
      const TRect2D box = path->Outline.BoundBox();
      const double scale = std::max(box.Width(), box.Height());
      // 4096 chords per cubic leave an error of about 1e-8 of the square of the size.
      CheckAgainstGeos(geos, path->Outline, path->Fine, 1e-7 * scale * scale, rng, file);
#endif
    }
  }
  EXPECT_GE(cubics, 80);
  EXPECT_GE(closed, 15);
  // Real cubics are mostly arcs: the fit needs few pieces for them.
  EXPECT_LE(pieces, static_cast<std::size_t>(3 * cubics));
}

}  // namespace
}  // namespace orvane
