// The spline against SISL and OCCT on random rational splines, and on the splines of the
// real drawings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/splines/GeSpline2D.h"
#include "DxfSplines.h"
#include "splines/SplineBuild.h"
#include "support/SharedData.h"

#ifdef ORVANE_HAVE_SISL
extern "C" {
#include <sisl.h>
}
#endif
#ifdef ORVANE_HAVE_OCCT
#include <Convert_ParameterisationType.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2dConvert.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <Geom2dConvert_BSplineCurveToBezierCurve.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#endif

namespace orvane {
namespace {

struct TRandomSpline {
  int Degree = 0;
  TDynPoints2D Pts;
  TFloatDynArray Weights;
  TFloatDynArray Knots;
};

// Degrees 1 to 5; clamped, uniform unclamped, or unclamped, with interior knots of every
// multiplicity up to p; weights in [0.3, 3] or all one.
TRandomSpline RandomSpline(std::mt19937_64& Rng) {
  std::uniform_int_distribution<int> degree(1, 5), kind(0, 2), extra(0, 7);
  std::uniform_real_distribution<double> coord(-10, 10), weight(0.3, 3.0), gap(0.05, 1.0), start(-5, 5);
  TRandomSpline s;
  const int p = s.Degree = degree(Rng);
  const int k = kind(Rng);
  double t = start(Rng);
  if (k == 1) {
    const int n = p + 1 + extra(Rng);
    const double h = gap(Rng);
    for (int i = 0; i < n + p + 1; ++i) s.Knots.push_back(t + h * i);
  } else {
    const int breaks = 1 + extra(Rng) / 2;
    std::uniform_int_distribution<int> mult(1, p);
    if (k == 0) {
      s.Knots.assign(static_cast<std::size_t>(p + 1), t);
    } else {
      for (int i = 0; i <= p; ++i) s.Knots.push_back(t += gap(Rng));
    }
    for (int b = 0; b < breaks; ++b) {
      t += gap(Rng);
      for (int m = mult(Rng); m > 0; --m) s.Knots.push_back(t);
    }
    t += gap(Rng);
    if (k == 0) {
      for (int i = 0; i <= p; ++i) s.Knots.push_back(t);
    } else {
      for (int i = 0; i <= p; ++i) s.Knots.push_back(t += gap(Rng));
    }
  }
  const int n = static_cast<int>(s.Knots.size()) - p - 1;
  const bool rational = (Rng() % 5) != 0;
  for (int i = 0; i < n; ++i) {
    s.Pts.push_back({coord(Rng), coord(Rng)});
    s.Weights.push_back(rational ? weight(Rng) : 1.0);
  }
  return s;
}

std::unique_ptr<TGeSpline2D> Ours(const TRandomSpline& R) {
  return testing::MakeSpline(R.Degree, R.Pts, R.Knots, R.Weights);
}

// |a - b| within 1e-12 of the value's size, the control net's size standing in for a value
// near zero.
bool Close(const TPoint2D& A, const TPoint2D& B, double Scale) {
  return A.DistanceTo(B) <= 1e-12 * (std::max(A.Mag(), B.Mag()) + Scale);
}

double MinSpan(const TFloatDynArray& K) {
  double m = 1e300;
  for (std::size_t i = 1; i < K.size(); ++i)
    if (K[i] > K[i - 1]) m = std::min(m, K[i] - K[i - 1]);
  return m;
}

#ifdef ORVANE_HAVE_SISL
struct TSislCurve {
  SISLCurve* C = nullptr;
  explicit TSislCurve(SISLCurve* AC) : C(AC) {}
  TSislCurve(const TSislCurve&) = delete;
  TSislCurve& operator=(const TSislCurve&) = delete;
  ~TSislCurve() {
    if (C) freeCurve(C);
  }
};

TSislCurve MakeSisl(const TRandomSpline& R) {
  std::vector<double> coef;
  for (std::size_t i = 0; i < R.Pts.size(); ++i) {
    coef.push_back(R.Pts[i].X * R.Weights[i]);
    coef.push_back(R.Pts[i].Y * R.Weights[i]);
    coef.push_back(R.Weights[i]);
  }
  std::vector<double> knots = R.Knots;
  return TSislCurve(newCurve(static_cast<int>(R.Pts.size()), R.Degree + 1, knots.data(), coef.data(), 2, 2, 1));
}

TPoint2D SislEval(SISLCurve* C, double U, TPoint2D& D) {
  int left = 0, stat = 0;
  double out[4];
  s1221(C, 1, U, &left, out, &stat);
  EXPECT_GE(stat, 0);
  D = {out[2], out[3]};
  return {out[0], out[1]};
}
#endif

#ifdef ORVANE_HAVE_OCCT
Handle(Geom2d_BSplineCurve) MakeOcct(const TRandomSpline& R, bool Periodic = false) {
  const int n = static_cast<int>(R.Pts.size());
  TColgp_Array1OfPnt2d poles(1, n);
  TColStd_Array1OfReal weights(1, n);
  for (int i = 0; i < n; ++i) {
    poles(i + 1) = gp_Pnt2d(R.Pts[static_cast<std::size_t>(i)].X, R.Pts[static_cast<std::size_t>(i)].Y);
    weights(i + 1) = R.Weights[static_cast<std::size_t>(i)];
  }
  std::vector<double> distinct;
  std::vector<int> mults;
  for (const double k : R.Knots) {
    if (!distinct.empty() && distinct.back() == k) {
      ++mults.back();
    } else {
      distinct.push_back(k);
      mults.push_back(1);
    }
  }
  TColStd_Array1OfReal knots(1, static_cast<int>(distinct.size()));
  TColStd_Array1OfInteger m(1, static_cast<int>(distinct.size()));
  for (std::size_t i = 0; i < distinct.size(); ++i) {
    knots(static_cast<int>(i) + 1) = distinct[i];
    m(static_cast<int>(i) + 1) = mults[i];
  }
  return new Geom2d_BSplineCurve(poles, weights, knots, m, R.Degree, Periodic);
}
#endif

TEST(SplineOracles, RandomRationalSplinesAgreeWithSislAndOcct) {
#if !defined(ORVANE_HAVE_SISL) || !defined(ORVANE_HAVE_OCCT)
  GTEST_SKIP() << "SISL (libsisl-dev) and OCCT are needed for this cross-check";
#else
  std::mt19937_64 rng(20261124);
  int bad = 0;
  for (int trial = 0; trial < 10000 && bad < 10; ++trial) {
    const TRandomSpline r = RandomSpline(rng);
    auto ours = Ours(r);
    TSislCurve sisl = MakeSisl(r);
    Handle(Geom2d_BSplineCurve) occt = MakeOcct(r);
    const int p = r.Degree;
    const int n = static_cast<int>(r.Pts.size());
    const double lo = r.Knots[static_cast<std::size_t>(p)], hi = r.Knots[static_cast<std::size_t>(n)];
    ASSERT_EQ(ours->GetStartParam(), lo);
    ASSERT_EQ(ours->GetEndParam(), hi);
    const double scale = 10.0, dscale = 10.0 * 3.0 * p / MinSpan(r.Knots);
    std::uniform_real_distribution<double> param(lo, hi);
    std::vector<double> us{lo, hi, param(rng), param(rng), param(rng), param(rng)};
    for (const double k : r.Knots)
      if (k > lo && k < hi) us.push_back(k);
    for (const double u : us) {
      TPoint2D d, ds;
      const TPoint2D pt = ours->EvalPoint(u, d);
      const TPoint2D ps = SislEval(sisl.C, u, ds);
      gp_Pnt2d po;
      gp_Vec2d vo;
      occt->D1(u, po, vo);
      const bool ok = Close(pt, ps, scale) && Close(pt, {po.X(), po.Y()}, scale) && Close(d, ds, dscale) &&
                      Close(d, {vo.X(), vo.Y()}, dscale);
      if (!ok && ++bad < 10)
        ADD_FAILURE() << "trial " << trial << " p=" << p << " u=" << u << " ours " << pt.ToString() << " "
                      << d.ToString() << " sisl " << ps.ToString() << " " << ds.ToString() << " occt " << po.X()
                      << "," << po.Y() << " " << vo.X() << "," << vo.Y();
    }
    // A cut: both parts run through the parent's points at the parent's parameters, as
    // SISL's parts do.
    const double cut = param(rng);
    std::unique_ptr<TGeSpline2D> a, b;
    ours->SplitSpline(cut, a, b);
    SISLCurve *sa = nullptr, *sb = nullptr;
    int stat = 0;
    s1710(sisl.C, cut, &sa, &sb, &stat);
    TSislCurve ha(sa), hb(sb);
    if (a && b && stat >= 0 && sa && sb) {
      Handle(Geom2d_BSplineCurve) occtA = Geom2dConvert::SplitBSplineCurve(occt, lo, cut, 1e-14);
      Handle(Geom2d_BSplineCurve) occtB = Geom2dConvert::SplitBSplineCurve(occt, cut, hi, 1e-14);
      for (const double f : {0.0, 0.37, 1.0}) {
        TPoint2D d1, d2, e1, e2;
        const double ua = lo + (a->GetEndParam() - lo) * f;
        const double ub = b->GetStartParam() + (hi - b->GetStartParam()) * f;
        // A short part's derivative divides by its short span, on both sides alike.
        const double da = 30.0 * p / MinSpan(a->GetKnotVector()), db = 30.0 * p / MinSpan(b->GetKnotVector());
        const bool ok = Close(a->EvalPoint(ua, d1), SislEval(sa, ua, e1), scale) && Close(d1, e1, da) &&
                        Close(b->EvalPoint(ub, d2), SislEval(sb, ub, e2), scale) && Close(d2, e2, db);
        if (!ok && ++bad < 10) ADD_FAILURE() << "split, trial " << trial << " at " << cut << ", f " << f;
        // OCCT's segment of the same stretch, at the same parameters.
        gp_Pnt2d pa, pb;
        gp_Vec2d va, vb;
        occtA->D1(ua, pa, va);
        occtB->D1(ub, pb, vb);
        const bool okOcct = Close(d1, {va.X(), va.Y()}, da) && Close(d2, {vb.X(), vb.Y()}, db) &&
                            Close(a->EvalPoint(ua), {pa.X(), pa.Y()}, scale) &&
                            Close(b->EvalPoint(ub), {pb.X(), pb.Y()}, scale);
        if (!okOcct && ++bad < 10) ADD_FAILURE() << "OCCT split, trial " << trial << " at " << cut << ", f " << f;
      }
      EXPECT_EQ(a->GetCtrlPoints().back(), b->GetCtrlPoints().front());
    }
    // Bezier pieces: SISL's conversion gives the same homogeneous points, OCCT's the same
    // poles and weight ratios.
    const TPoint3DLists w = ours->DecomposeCurveW();
    // SISL's conversion writes out of its arrays on an unclamped spline: ask it only for
    // clamped ones, and OCCT for all.
    const bool clamped = r.Knots[0] == lo && r.Knots.back() == hi;
    SISLCurve* bez = nullptr;
    if (clamped) s1730(sisl.C, &bez, &stat);
    TSislCurve hbez(bez);
    const std::size_t order = static_cast<std::size_t>(p + 1);
    ASSERT_TRUE(bez != nullptr || !clamped);
    std::vector<std::size_t> inside;
    for (std::size_t k = 0; bez && k < static_cast<std::size_t>(bez->in) / order; ++k) {
      const double a0 = bez->et[k * order + order - 1], a1 = bez->et[k * order + order];
      if (a1 > a0) inside.push_back(k);
    }
    if (bez) {
      ASSERT_EQ(inside.size(), w.size()) << "trial " << trial;
    }
    Geom2dConvert_BSplineCurveToBezierCurve conv(occt);
    ASSERT_EQ(static_cast<std::size_t>(conv.NbArcs()), w.size());
    for (std::size_t k = 0; k < w.size(); ++k) {
      Handle(Geom2d_BezierCurve) arc = conv.Arc(static_cast<int>(k) + 1);
      for (std::size_t j = 0; j < order; ++j) {
        const TPoint3D& q = w[k][j];
        // Without SISL's piece the point is compared with itself there.
        const double* c = bez ? bez->rcoef + 3 * (inside[k] * order + j) : &q.X;
        const TPoint2D plane(q.X / q.Z, q.Y / q.Z);
        const gp_Pnt2d pole = arc->Pole(static_cast<int>(j) + 1);
        const double ratio = arc->Weight(static_cast<int>(j) + 1) / arc->Weight(1);
        const bool ok = Close(plane, {c[0] / c[2], c[1] / c[2]}, scale) &&
                        std::fabs(q.Z - c[2]) <= 1e-12 * (std::fabs(c[2]) + 1) &&
                        Close(plane, {pole.X(), pole.Y()}, scale) &&
                        std::fabs(q.Z / w[k][0].Z - ratio) <= 1e-12 * (ratio + 1);
        if (!ok && ++bad < 10) ADD_FAILURE() << "Bezier piece " << k << " point " << j << ", trial " << trial;
      }
    }
  }
  EXPECT_EQ(bad, 0);
#endif
}

TEST(SplineOracles, DrawingSplinesIncludingAPeriodicOne) {
  const auto drawings = testing::DataFiles("curves", ".dxf");
  if (drawings.empty()) GTEST_SKIP() << "no shared drawings in " ORVANE_SHARED_DATA_DIR;
#ifndef ORVANE_HAVE_OCCT
  GTEST_SKIP() << "OCCT is needed for this cross-check";
#else
  int plain = 0, periodic = 0;
  for (const std::filesystem::path& drawing : drawings) {
    for (const testing::TDxfSpline& d : testing::ReadDxfSplines(drawing)) {
      TRandomSpline r{d.Degree, d.Pts, d.Weights, d.Knots};
      if (r.Weights.empty()) r.Weights.assign(r.Pts.size(), 1.0);
      std::unique_ptr<TGeSpline2D> ours;
      Handle(Geom2d_BSplineCurve) occt;
      if (d.Flags & 2) {
        // Periodic: n points and n + 1 knots, read into the wrapped form.
        ++periodic;
        ours = internal::WrapPeriodicSpline(d.Pts, d.Weights, d.Knots, d.Degree);
        occt = MakeOcct(r, true);
        EXPECT_TRUE(ours->GetIsPeriodic());
        EXPECT_EQ(ours->GetStartParam(), d.Knots.front());
        EXPECT_EQ(ours->GetEndParam(), d.Knots.back());
        EXPECT_LE(ours->GetStartPoint().DistanceTo(ours->GetEndPoint()), 1e-9);
      } else {
        ++plain;
        ours = Ours(r);
        occt = MakeOcct(r);
      }
      const double lo = ours->GetStartParam(), hi = ours->GetEndParam();
      const double scale = ours->CtrlPointsBoundBlock().XMax - ours->CtrlPointsBoundBlock().XMin + 1.0;
      for (int i = 0; i <= 16; ++i) {
        const double u = lo + (hi - lo) * i / 16;
        TPoint2D dv;
        const TPoint2D pt = ours->EvalPoint(u, dv);
        gp_Pnt2d po;
        gp_Vec2d vo;
        occt->D1(u, po, vo);
        EXPECT_TRUE(Close(pt, {po.X(), po.Y()}, scale)) << drawing << " u=" << u << " " << pt.ToString();
        EXPECT_TRUE(Close(dv, {vo.X(), vo.Y()}, scale * 10)) << drawing << " u=" << u;
      }
      // The nearest point is the global one, also near the seam of the periodic spline.
      const TRect2D box = ours->GetRoughBoundBlock();
      for (int k = 0; ours->GetIsPeriodic() && k < 25; ++k) {
        const TPoint2D q(box.XMin + box.Width() * (k % 5) / 4, box.YMin + box.Height() * (k / 5) / 4);
        double u = 0, grid = 1e300;
        for (int i = 0; i <= 4000; ++i) grid = std::min(grid, ours->EvalPoint(lo + (hi - lo) * i / 4000).DistanceTo(q));
        EXPECT_LE(ours->GetClosedPointTo(q, DefTol, u).DistanceTo(q), grid + 1e-12) << q.ToString();
      }
    }
  }
  EXPECT_EQ(plain, 243);
  EXPECT_EQ(periodic, 1);
#endif
}

TEST(SplineOracles, NearestPointAndLengthOfRandomSplines) {
#if !defined(ORVANE_HAVE_SISL) || !defined(ORVANE_HAVE_OCCT)
  GTEST_SKIP() << "SISL (libsisl-dev) and OCCT are needed for this cross-check";
#else
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> coord(-15, 15);
  int bad = 0, sislRuns = 0;
  for (int trial = 0; trial < 300 && bad < 10; ++trial) {
    const TRandomSpline r = RandomSpline(rng);
    auto ours = Ours(r);
    TSislCurve sisl = MakeSisl(r);
    const double lo = ours->GetStartParam(), hi = ours->GetEndParam();
    const bool clamped = r.Knots.front() == lo && r.Knots.back() == hi;
    // Length: OCCT's adaptive integration to 1e-12 against ours.
    Geom2dAdaptor_Curve occt(MakeOcct(r));
    const double len = GCPnts_AbscissaPoint::Length(occt, lo, hi, 1e-13);
    if (std::fabs(ours->GetCurveLength() - len) > 1e-9 * len && ++bad < 10)
      ADD_FAILURE() << "trial " << trial << " length " << ours->GetCurveLength() << " occt " << len;
    for (int k = 0; k < 5; ++k) {
      const TPoint2D q(coord(rng), coord(rng));
      double u = 0;
      const double d = ours->GetClosedPointTo(q, DefTol, u).DistanceTo(q);
      double grid = ours->GetStartPoint().DistanceTo(q);
      for (int i = 0; i <= 4000; ++i) grid = std::min(grid, ours->EvalPoint(lo + (hi - lo) * i / 4000).DistanceTo(q));
      double pt[2] = {q.X, q.Y}, *pars = nullptr;
      int npar = 0, ncr = 0, stat = 0;
      SISLIntcurve** crv = nullptr;
      // SISL's search takes clamped splines only.
      if (clamped) s1953(sisl.C, pt, 2, 1e-15, 1e-12, &npar, &pars, &ncr, &crv, &stat);
      sislRuns += npar > 0;
      double sislBest = 1e300;
      TPoint2D dv;
      for (int i = 0; i < npar; ++i) sislBest = std::min(sislBest, SislEval(sisl.C, pars[i], dv).DistanceTo(q));
      if (pars) free(pars);
      if (crv) freeIntcrvlist(crv, ncr);
      const bool ok = d <= grid + 1e-12 && (npar == 0 || d <= sislBest + 1e-12) &&
                      ours->EvalPoint(u).DistanceTo(q) <= d + 1e-12;
      if (!ok && ++bad < 10)
        ADD_FAILURE() << "trial " << trial << " ours " << d << " grid " << grid << " sisl " << sislBest;
    }
  }
  EXPECT_EQ(bad, 0);
  EXPECT_GT(sislRuns, 300);
#endif
}

// Arcs written by OCCT and by us with random centres, radii from 0.01 to 1000 and sweeps up to a
// full turn either way, are recognised as the same arc.
TEST(SplineOracles, ArcsRoundTripThroughRecognition) {
#ifndef ORVANE_HAVE_OCCT
  GTEST_SKIP() << "OCCT is needed for this cross-check";
#else
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> unit(0, 1), coord(-100, 100);
  // OCCT's rational forms: tangent-half-angle quadratics in 3, 4 or a chosen number of
  // spans, and its quasi-angular and C1 rational forms of higher degree.
  const Convert_ParameterisationType kinds[] = {Convert_TgtThetaOver2, Convert_TgtThetaOver2_3,
                                                Convert_TgtThetaOver2_4, Convert_QuasiAngular, Convert_RationalC1};
  for (int trial = 0; trial < 200; ++trial) {
    // Centres within 100 R: farther off, the rounding of the coordinates alone moves the
    // centre of a short arc by more than 1e-9 R.
    const double r = 0.01 * std::pow(1e5, unit(rng)), a0 = 6.3 * unit(rng);
    const TPoint2D c(coord(rng) * r, coord(rng) * r);
    const double sweep = (trial % 2 ? -1 : 1) * (trial % 10 == 0 ? 2 * std::acos(-1.0) : 0.05 + 6.2 * unit(rng));
    Handle(Geom2d_Circle) circle = new Geom2d_Circle(gp_Ax2d(gp_Pnt2d(c.X, c.Y), gp_Dir2d(1, 0)), r, sweep > 0);
    Handle(Geom2d_BSplineCurve) bs = Geom2dConvert::CurveToBSplineCurve(
        new Geom2d_TrimmedCurve(circle, sweep > 0 ? a0 : -a0, (sweep > 0 ? a0 : -a0) + std::fabs(sweep)),
        kinds[trial % 5]);
    TRandomSpline fromOcct{bs->Degree(), {}, {}, {}};
    for (int i = 1; i <= bs->NbPoles(); ++i) {
      fromOcct.Pts.push_back({bs->Pole(i).X(), bs->Pole(i).Y()});
      fromOcct.Weights.push_back(bs->Weight(i));
    }
    for (int i = 1; i <= bs->NbKnots(); ++i)
      for (int m = 0; m < bs->Multiplicity(i); ++m) fromOcct.Knots.push_back(bs->Knot(i));
    for (const auto& s : {Ours(fromOcct), TGeSpline2D::CreateArc(c, r, a0, sweep)}) {
      std::unique_ptr<TGeCircularArc2D> arc;
      ASSERT_TRUE(s->IsArc(arc)) << trial << " r " << r << " sweep " << sweep;
      EXPECT_LE(arc->GetCenter().DistanceTo(c), 1e-9 * r) << trial;
      EXPECT_NEAR(arc->GetRadius(), r, 1e-9 * r) << trial;
      EXPECT_NEAR(arc->GetSweepAngle(), sweep, 1e-9) << trial;
      EXPECT_LE(arc->GetStartPoint().DistanceTo(s->GetStartPoint()), 1e-9 * r) << trial;
    }
  }
#endif
}

}  // namespace
}  // namespace orvane
