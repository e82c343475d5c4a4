#pragma once
// OCCT as the independent reference for cubic Beziers: its own curve type, length,
// projection, box and curve-curve intersection. Only for builds with ORVANE_HAVE_OCCT.

#include <Bnd_Box2d.hxx>
#include <BndLib_Add2dCurve.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <Geom2dAPI_InterCurveCurve.hxx>
#include <Geom2dAPI_ProjectPointOnCurve.hxx>
#include <Geom2dAdaptor_Curve.hxx>
#include <Geom2d_BezierCurve.hxx>
#include <TColgp_Array1OfPnt2d.hxx>
#include <gp_Pnt2d.hxx>

#include <vector>

#include "orvane/foundation/BezierSegment2D.h"

namespace orvane::testing {

inline Handle(Geom2d_BezierCurve) ToOcct(const TBezierSegment2D& B) {
  TColgp_Array1OfPnt2d poles(1, 4);
  poles.SetValue(1, gp_Pnt2d(B.P0.X, B.P0.Y));
  poles.SetValue(2, gp_Pnt2d(B.P1.X, B.P1.Y));
  poles.SetValue(3, gp_Pnt2d(B.P2.X, B.P2.Y));
  poles.SetValue(4, gp_Pnt2d(B.P3.X, B.P3.Y));
  return new Geom2d_BezierCurve(poles);
}

inline double OcctLength(const TBezierSegment2D& B, double Tol = 1e-12) {
  Geom2dAdaptor_Curve c(ToOcct(B));
  return GCPnts_AbscissaPoint::Length(c, Tol);
}

// The nearest distance by OCCT's projection, the ends included.
inline double OcctDistance(const TBezierSegment2D& B, const TPoint2D& Pt) {
  Geom2dAPI_ProjectPointOnCurve proj(gp_Pnt2d(Pt.X, Pt.Y), ToOcct(B));
  double d = std::min(Pt.DistanceTo(B.P0), Pt.DistanceTo(B.P3));
  if (proj.NbPoints() > 0) d = std::min(d, proj.LowerDistance());
  return d;
}

inline TRect2D OcctBox(const TBezierSegment2D& B) {
  Bnd_Box2d box;
  BndLib_Add2dCurve::AddOptimal(ToOcct(B), 0.0, 1.0, 0.0, box);
  double x0, y0, x1, y1;
  box.Get(x0, y0, x1, y1);
  return {x0, y0, x1, y1};
}

// Transversal crossing points of two Beziers.
inline std::vector<TPoint2D> OcctCrossings(const TBezierSegment2D& A, const TBezierSegment2D& B, double Tol) {
  Geom2dAPI_InterCurveCurve inter(ToOcct(A), ToOcct(B), Tol);
  std::vector<TPoint2D> pts;
  for (int i = 1; i <= inter.NbPoints(); ++i) {
    const gp_Pnt2d p = inter.Point(i);
    pts.emplace_back(p.X(), p.Y());
  }
  return pts;
}

}  // namespace orvane::testing
