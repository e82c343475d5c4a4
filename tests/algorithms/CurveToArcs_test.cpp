// Any curve into lines and arcs: the chain runs from end to end without a break, and every
// point of the curve lies within the tolerance of it, measured here through the elements' own
// nearest points, not the fit's measure.
#include "orvane/algorithms/CurveToArcs.h"

#include <gtest/gtest.h>

#include <cmath>

#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/splines/GeSpline2D.h"

using namespace orvane;

TEST(CurveToArcs, ChainHoldsTheToleranceOnAnEllipseAndIsOneCircleOnAnArc) {
  const auto ellipse = TGeSpline2D::CreateEllipse(TPoint2D(1, 2), 10.0, 4.0, 0.3, 4.0);
  const TGeInterval iv = ellipse->GetInterval();
  int previous = 0;
  for (const double tol : {1e-2, 1e-5}) {
    std::vector<TArc2D> arcs;
    const double measured = TCurveToArcs::Fit(*ellipse, iv.Lower, iv.Upper, tol, arcs);
    EXPECT_LE(measured, tol);
    EXPECT_GT(static_cast<int>(arcs.size()), previous);
    previous = static_cast<int>(arcs.size());
    EXPECT_LT(arcs.front().StartPoint().DistanceTo(ellipse->GetStartPoint()), 1e-12);
    EXPECT_LT(arcs.back().EndPoint().DistanceTo(ellipse->GetEndPoint()), 1e-12);
    for (std::size_t i = 0; i + 1 < arcs.size(); ++i) EXPECT_LT(arcs[i].EndPoint().DistanceTo(arcs[i + 1].StartPoint()), 1e-9);
    double worst = 0.0;
    for (int k = 0; k <= 3000; ++k) {
      const TPoint2D p = ellipse->EvalPoint(iv.Lower + (iv.Upper - iv.Lower) * k / 3000.0);
      double best = HUGE_VAL;
      double prm = 0.0;
      for (const TArc2D& a : arcs)
        best = std::min(best, a.IsLine ? TCurveToArcs::Distance(a, p) : p.DistanceTo(a.GetClosedPointTo(p, prm)));
      worst = std::max(worst, best);
    }
    EXPECT_LE(worst, tol);
  }
  // Three halvings allowed: all are spent, the chain still runs end to end, and its measure
  // says honestly that it strays.
  std::vector<TArc2D> coarse;
  int halvings = 3;
  EXPECT_GT(TCurveToArcs::Fit(*ellipse, iv.Lower, iv.Upper, 1e-5, coarse, halvings), 1e-5);
  EXPECT_EQ(halvings, 0);
  EXPECT_LT(coarse.back().EndPoint().DistanceTo(ellipse->GetEndPoint()), 1e-12);
  for (std::size_t i = 0; i + 1 < coarse.size(); ++i) EXPECT_LT(coarse[i].EndPoint().DistanceTo(coarse[i + 1].StartPoint()), 1e-9);
  // A circular arc comes back on its own circle.
  const TGeCircularArc2D arc(TPoint2D(0, 0), 5.0, 0.5, 2.0);
  std::vector<TArc2D> arcs;
  EXPECT_LT(TCurveToArcs::Fit(arc, arc.GetStartParam(), arc.GetEndParam(), 1e-9, arcs), 1e-9);
  for (const TArc2D& a : arcs) EXPECT_NEAR(a.Radius, 5.0, 1e-9);
  EXPECT_THROW(TCurveToArcs::Fit(arc, 0.0, 1.0, 0.0, arcs), EParamError);
}
