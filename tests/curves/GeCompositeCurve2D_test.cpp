// The composite curve: the standard outlines by hand, walks and sub-curves through the seam,
// equality from any start, ownership, caches under change, and random chains of lines, arcs
// and cubics against OCCT's lengths and abscissa points.

#include "orvane/curves/GeCompositeCurve2D.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/foundation/PointArray.h"
#include "support/TestSupport.h"

#ifdef ORVANE_HAVE_OCCT
#include <GCE2d_MakeArcOfCircle.hxx>
#include <GCE2d_MakeSegment.hxx>
#include <gp_Circ2d.hxx>

#include "support/OcctBezier.h"
#endif

namespace orvane {
namespace {

using orvane::testing::ExpectNear;
using orvane::testing::ExpectRaise;

// The closed unit square of four lines, counter-clockwise from the origin.
std::unique_ptr<TGeCompositeCurve2D> Square(bool Closed = true) {
  auto c = std::make_unique<TGeCompositeCurve2D>();
  const TDynPoints2D p{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, Closed ? 0.0 : 0.5}};
  for (std::size_t i = 0; i + 1 < p.size(); ++i) c->AddCurve(std::make_unique<TGeLine2D>(p[i], p[i + 1]));
  return c;
}

double SampledArea(const TGeCurve2D& C) {
  TDynPoints2D pts;
  C.GetSamplePoints(1e-7, pts);
  return PolyArea(pts);
}

TEST(GeCompositeCurve2D, StandardOutlines) {
  const std::unique_ptr<TGeCompositeCurve2D> rr = TGeCompositeCurve2D::CreateRoundRect(10, 6, 1);
  EXPECT_EQ(rr->GetCurveCount(), 8);
  EXPECT_NEAR(rr->GetCurveLength(), 30.283185307179586, 1e-13);
  EXPECT_EQ(rr->GetInterval().Upper, 8.0);
  const TRect2D box = rr->BoundBlock();
  ExpectNear({box.XMin, box.YMin}, {-5, -3}, 1e-15);
  ExpectNear({box.XMax, box.YMax}, {5, 3}, 1e-15);
  EXPECT_TRUE(rr->GetIsClosed());
  EXPECT_TRUE(rr->CheckContinuous());
  EXPECT_FALSE(rr->GetIsClockwise());
  EXPECT_NEAR(SampledArea(*rr), 60 - (4 - Pi), 1e-6);
  // The radius margin: a slot may be a circle, a round rectangle may not.
  ExpectRaise<EGeometry>([] { TGeCompositeCurve2D::CreateRoundRect(10, 10, 5); },
                         "Invalid Parameter for CreateRoundRect!");
  ExpectRaise<EGeometry>([] { TGeCompositeCurve2D::CreateRound(10, -1); }, "Invalid Parameter for CreateRound!");
  const std::unique_ptr<TGeCompositeCurve2D> circle = TGeCompositeCurve2D::CreateRound(10, 5);
  EXPECT_EQ(circle->GetCurve(0)->GetCurveLength(), 0.0);
  EXPECT_NEAR(circle->GetCurveLength(), 10 * Pi, 1e-12);
  EXPECT_EQ(TGeCompositeCurve2D::CreateRoundRect(10, 6, 0)->GetCurveLength(), 32.0);
  const std::unique_ptr<TGeCompositeCurve2D> slot = TGeCompositeCurve2D::CreateRound(4, 1);
  EXPECT_NEAR(SampledArea(*slot), 2 * 2 + Pi, 1e-6);
  // The open C: nine pieces from (x, y - a) round to (x, -y + a).
  const std::unique_ptr<TGeCompositeCurve2D> c = TGeCompositeCurve2D::CreateInnerC(2, 8, 10, 1);
  EXPECT_FALSE(c->GetIsClosed());
  EXPECT_TRUE(c->CheckContinuous());
  EXPECT_EQ(c->GetStartPoint(), TPoint2D(4, 3));
  EXPECT_EQ(c->GetEndPoint(), TPoint2D(4, -3));
  EXPECT_NEAR(c->GetCurveLength(), 2 * 1 + 2 * 6 + 8 + 2 * Pi, 1e-12);
  // The H: flanges 100 by 10, overall 200 high, web 8, fillets 12: area by hand. The same
  // outline with the fillets split at an angle, and with a taper, stays closed and connected.
  const double want = 2 * 100 * 10 + 8 * 180 + 4 * (144 - Pi * 144 / 4);
  for (const double angle : {0.0, 0.3, -0.2}) {
    const std::unique_ptr<TGeCompositeCurve2D> h = TGeCompositeCurve2D::CreateHSection(100, 200, 10, 8, 12, angle);
    EXPECT_TRUE(h->GetIsClosed()) << angle;
    EXPECT_TRUE(h->CheckContinuous()) << angle;
    EXPECT_NEAR(SampledArea(*h), want, 1e-4) << angle;
    EXPECT_EQ(h->IsIn(TPoint2D(0, 0), DefTol), 1);
    EXPECT_EQ(h->IsIn(TPoint2D(30, 0), DefTol), -1);
    EXPECT_EQ(h->IsIn(TPoint2D(50, 95), DefTol), 0);
  }
  EXPECT_EQ(TGeCompositeCurve2D::CreateHSection(100, 200, 10, 8, 12, 0.0)->GetCurveCount(), 16);
  EXPECT_EQ(TGeCompositeCurve2D::CreateHSection(100, 200, 10, 8, 12, 0.3)->GetCurveCount(), 20);
}

TEST(GeCompositeCurve2D, WalksAndSubCurvesThroughTheSeam) {
  const std::unique_ptr<TGeCompositeCurve2D> sq = Square();
  EXPECT_NEAR(sq->ParamOfLength(0.0, 5.25, DefTol), 1.25, 1e-12);
  EXPECT_NEAR(sq->ParamOfLength(3.5, 1.0, DefTol), 0.5, 1e-12);
  EXPECT_NEAR(sq->ParamOfLength(0.5, -1.0, DefTol), 3.5, 1e-12);
  EXPECT_NEAR(sq->ParamOfLength(0.0, -0.25, DefTol), 3.75, 1e-12);
  EXPECT_EQ(sq->ParamOfLength(2.5, 0.0, DefTol), 2.5);
  const std::unique_ptr<TGeCompositeCurve2D> open = Square(false);
  EXPECT_EQ(open->ParamOfLength(4.0, 1.0, DefTol), 4.0);
  EXPECT_EQ(open->ParamOfLength(1.0, -2.0, DefTol), 0.0);
  EXPECT_NEAR(open->ParamOfLength(0.5, 2.0, DefTol), 2.5, 1e-12);
  // Joints: the left side is the curve that ends there.
  EXPECT_EQ(sq->DerivLeft(1.0), TPoint2D(1, 0));
  EXPECT_EQ(sq->DerivRight(1.0), TPoint2D(0, 1));
  EXPECT_EQ(sq->DerivLeft(0.0), TPoint2D(0, -1));
  ExpectNear(sq->EvalPoint(-0.25), TPoint2D(0, 0.25));
  ExpectNear(open->EvalPoint(9.0), TPoint2D(0, 0.5));
  EXPECT_NEAR(sq->LengthAt(2.5), 2.5, 1e-15);
  // On the left edge: the right edge, listed first, is crossed further along the ray; the
  // point is on the curve all the same.
  EXPECT_EQ(sq->IsIn(TPoint2D(0, 0.5), DefTol), 0);
  EXPECT_EQ(sq->IsIn(TPoint2D(0.5, 0.5), DefTol), 1);
  EXPECT_THROW(sq->AddCurve(sq.get()), EParamError);
  // Sub-curves: through the seam on a closed one only; joints make no trivial pieces.
  std::unique_ptr<TGeCurve2D> sub = sq->SubCurve(3.5, 0.5);
  ASSERT_TRUE(sub);
  auto& s = dynamic_cast<TGeCompositeCurve2D&>(*sub);
  EXPECT_EQ(s.GetCurveCount(), 2);
  EXPECT_EQ(s.GetStartPoint(), TPoint2D(0, 0.5));
  EXPECT_EQ(s.GetEndPoint(), TPoint2D(0.5, 0));
  EXPECT_FALSE(open->SubCurve(3.5, 0.5));
  EXPECT_EQ(dynamic_cast<TGeCompositeCurve2D&>(*sq->SubCurve(1.0, 2.0)).GetCurveCount(), 1);
  EXPECT_FALSE(sq->SubCurve(1.0, 1.0));
  // Samples: a joint once on a connected chain.
  TDynPoints2D pts;
  TFloatDynArray params;
  EXPECT_EQ(sq->GetSamplePointsByChord(0.1, pts, params), 5);
  EXPECT_EQ(params, (TFloatDynArray{0, 1, 2, 3, 4}));
  EXPECT_EQ(sq->GetSamplePointsByChord(0.5, 2.5, 0.1, pts, params), 4);
  EXPECT_EQ(params, (TFloatDynArray{0.5, 1, 2, 2.5}));
  EXPECT_EQ(sq->GetSamplePointsByChord(2.5, 0.5, 0.1, pts, params), 0);
  TGeCompositeCurve2D gap;
  gap.AddCurve(std::make_unique<TGeLine2D>(TPoint2D(0, 0), TPoint2D(1, 0)));
  gap.AddCurve(std::make_unique<TGeLine2D>(TPoint2D(1, 1), TPoint2D(2, 1)));
  EXPECT_EQ(gap.GetSamplePointsByChord(0.1, pts, params), 4);
  EXPECT_FALSE(gap.CheckContinuous());
  // The empty composite answers neutrally.
  const TGeCompositeCurve2D empty;
  EXPECT_EQ(empty.EvalPoint(0.3), TPoint2D::FZero);
  EXPECT_EQ(empty.GetCurveLength(), 0.0);
  EXPECT_EQ(empty.ParamOfLength(0.0, 1.0, DefTol), 0.0);
  EXPECT_FALSE(empty.SubCurve(0.0, 1.0));
  EXPECT_FALSE(empty.BoundBlock().IsValid());
}

TEST(GeCompositeCurve2D, EqualityOwnershipAndCaches) {
  const std::unique_ptr<TGeCompositeCurve2D> sq = Square();
  // The same loop from another start, and reversed.
  auto turned = std::make_unique<TGeCompositeCurve2D>();
  for (int i = 0; i < 4; ++i) turned->AddCurve(sq->GetCurve((i + 2) % 4)->CloneAs<TGeCurve2D>());
  EXPECT_TRUE(sq->CheckEqual(*turned, true));
  std::unique_ptr<TGeCompositeCurve2D> rev = sq->CloneAs<TGeCompositeCurve2D>();
  rev->ReverseDir();
  EXPECT_FALSE(sq->CheckEqual(*rev, true));
  EXPECT_TRUE(sq->CheckEqual(*rev, false));
  const std::unique_ptr<TGeCompositeCurve2D> open = Square(false);
  auto openTurned = std::make_unique<TGeCompositeCurve2D>();
  for (int i = 0; i < 4; ++i) openTurned->AddCurve(open->GetCurve((i + 1) % 4)->CloneAs<TGeCurve2D>());
  EXPECT_FALSE(open->CheckEqual(*openTurned, false));
  // A composite that does not own its curves leaves them to the caller; assigning into it
  // makes it the owner of the copies it receives.
  TGeLine2D a(TPoint2D(0, 0), TPoint2D(1, 0));
  TGeLine2D b(TPoint2D(1, 0), TPoint2D(1, 1));
  TList<TGeCurve2D*> list{&a, &b};
  TGeCompositeCurve2D borrowed(list, false);
  EXPECT_FALSE(borrowed.GetOwnsCurves());
  EXPECT_EQ(borrowed.GetCurveLength(), 2.0);
  EXPECT_THROW(borrowed.AddCurve(std::make_unique<TGeLine2D>()), EListError);
  borrowed.Assign(*sq);
  EXPECT_TRUE(borrowed.GetOwnsCurves());
  EXPECT_EQ(borrowed.GetCurveCount(), 4);
  EXPECT_NE(borrowed.GetCurve(0), sq->GetCurve(0));
  EXPECT_FALSE(sq->CalcDegradeCurve());
  // Changes through the composite are seen at once by lengths and parameters.
  std::unique_ptr<TGeCompositeCurve2D> c = Square(false);
  EXPECT_EQ(c->GetCurveLength(), 3.5);
  c->AddCurve(std::make_unique<TGeCircularArc2D>(TPoint2D(0, 1), 0.5, -HalfPi, Pi));
  EXPECT_NEAR(c->GetCurveLength(), 3.5 + Pi / 2, 1e-15);
  EXPECT_EQ(c->GetEndParam(), 5.0);
  ExpectNear(c->EvalPoint(5.0), TPoint2D(0, 1.5), 1e-15);
  TMatrix2D m;
  m.SetToScale(2.0);
  c->TransformBy(m);
  EXPECT_NEAR(c->GetCurveLength(), 7 + Pi, 1e-14);
  EXPECT_NEAR(c->ParamOfLength(0.0, 7 + Pi / 2, DefTol), 4.5, 1e-12);
  c->Clear();
  EXPECT_EQ(c->GetCurveLength(), 0.0);
}

#ifdef ORVANE_HAVE_OCCT
TEST(GeCompositeCurve2D, RandomChainsAgreeWithOcct) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::uniform_int_distribution<int> kind(0, 2);
  for (int k = 0; k < 30; ++k) {
    TGeCompositeCurve2D chain;
    std::vector<Handle(Geom2d_Curve)> occt;
    TPoint2D at(0, 0);
    for (int i = 0; i < 8; ++i) {
      const TPoint2D to = at + TPoint2D(2 + u(rng), 2 * u(rng));
      switch (kind(rng)) {
        case 0:
          chain.AddCurve(std::make_unique<TGeLine2D>(at, to));
          occt.push_back(GCE2d_MakeSegment(gp_Pnt2d(at.X, at.Y), gp_Pnt2d(to.X, to.Y)).Value());
          break;
        case 1: {
          const TGeCircularArc2D arc(at, 0.5 + 0.4 * u(rng), to);
          const TArc2D& v = arc.GetArc();
          gp_Circ2d circ(gp_Ax2d(gp_Pnt2d(v.Center.X, v.Center.Y), gp_Dir2d(1, 0)), v.Radius);
          const double s = v.StartAngle;
          const double e = v.StartAngle + v.SweepAngle;
          if (v.SweepAngle > 0) {
            occt.push_back(GCE2d_MakeArcOfCircle(circ, s, e, true).Value());
          } else {
            occt.push_back(GCE2d_MakeArcOfCircle(circ, e, s, true).Value()->Reversed());
          }
          chain.AddCurve(std::make_unique<TGeCircularArc2D>(v.Center, v.Radius, v.StartAngle, v.SweepAngle));
          break;
        }
        default: {
          const TBezierSegment2D b(at, at + TPoint2D(u(rng), 2 * u(rng)), to + TPoint2D(u(rng), 2 * u(rng)), to);
          chain.AddCurve(std::make_unique<TGeBezier2D>(b));
          occt.push_back(orvane::testing::ToOcct(b));
        }
      }
      at = chain.GetEndPoint();
    }
    std::vector<double> lengths;
    double total = 0.0;
    for (const Handle(Geom2d_Curve) & c : occt) {
      Geom2dAdaptor_Curve a(c);
      lengths.push_back(GCPnts_AbscissaPoint::Length(a, 1e-12));
      total += lengths.back();
    }
    EXPECT_NEAR(chain.GetCurveLength(), total, 1e-9 * total);
    for (int q = 0; q < 20; ++q) {
      const double s = (q + 0.5) / 20 * total;
      std::size_t i = 0;
      double before = 0.0;
      while (i + 1 < lengths.size() && before + lengths[i] < s) before += lengths[i++];
      Geom2dAdaptor_Curve a(occt[i]);
      GCPnts_AbscissaPoint ap(1e-12, a, s - before, a.FirstParameter());
      ASSERT_TRUE(ap.IsDone());
      const gp_Pnt2d p = a.Value(ap.Parameter());
      ExpectNear(chain.EvalPoint(chain.ParamOfLength(s, DefTol)), TPoint2D(p.X(), p.Y()), 1e-6);
    }
  }
}
#endif

}  // namespace
}  // namespace orvane
