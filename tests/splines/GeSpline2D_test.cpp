#include "orvane/splines/GeSpline2D.h"
#include "splines/SplineBuild.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "orvane/foundation/Exception.h"
#include "support/TestSupport.h"

namespace orvane {
namespace {

constexpr double kPi = std::numbers::pi;

using orvane::testing::ExpectNear;
using orvane::testing::MakeSpline;

TEST(GeSpline2D, QuarterCircleValuesAndDerivatives) {
  auto s = TGeSpline2D::CreateArc({0, 0}, 1.0, 0.0, kPi / 2);
  ASSERT_EQ(s->GetCtrlPointCount(), 3);
  EXPECT_EQ(s->GetKnotVector(), (TFloatDynArray{0, 0, 0, 1, 1, 1}));
  const double w = std::sqrt(0.5);
  EXPECT_NEAR(s->GetWeight(1), w, 1e-15);
  EXPECT_TRUE(s->GetIsRational());
  // By hand: at 1/2 the point (w, w) with the derivative 2 / (1 + w) (-1, 1); at 0 the
  // derivative 2 w (0, 1).
  TPoint2D d;
  ExpectNear(s->EvalPoint(0.5, d), {w, w}, 1e-15);
  ExpectNear(d, TPoint2D(-1, 1) * (2 / (1 + w)), 1e-14);
  s->EvalPoint(0.0, d);
  ExpectNear(d, {0, 2 * w}, 1e-15);
  // Outside the range: the end of that side.
  ExpectNear(s->EvalPoint(-3.0), {1, 0}, 0);
  ExpectNear(s->EvalPoint(7.0), {0, 1}, 1e-15);
}

TEST(GeSpline2D, CirclesEllipsesAndClockwiseArcs) {
  auto c = TGeSpline2D::CreateArc({2, -1}, 3.0, 0.3, 2 * kPi);
  ASSERT_EQ(c->GetCtrlPointCount(), 9);
  EXPECT_EQ(c->GetKnotVector(), (TFloatDynArray{0, 0, 0, 0.25, 0.25, 0.5, 0.5, 0.75, 0.75, 1, 1, 1}));
  ExpectNear(c->GetCtrlPoint(8), c->GetCtrlPoint(0), 1e-14);
  for (int i = 0; i <= 100; ++i) {
    TPoint2D d;
    const TPoint2D p = c->EvalPoint(i / 100.0, d);
    EXPECT_NEAR(p.DistanceTo({2, -1}), 3.0, 1e-14);
    EXPECT_NEAR(d.DotMul(p - TPoint2D(2, -1)), 0.0, 1e-12);  // tangent to the circle
    EXPECT_GT((p - TPoint2D(2, -1)).CrossMul(d), 0.0);        // counter-clockwise
  }
  auto cw = TGeSpline2D::CreateArc({0, 0}, 1.0, 0.0, -kPi);
  EXPECT_EQ(cw->GetCtrlPointCount(), 5);
  EXPECT_NEAR(cw->GetWeight(1), std::sqrt(0.5), 1e-15);
  ExpectNear(cw->EvalPoint(0.5), {0, -1}, 1e-15);
  auto e = TGeSpline2D::CreateEllipse({1, 1}, 4.0, 1.0, 0.0, 2 * kPi);
  for (int i = 0; i <= 50; ++i) {
    const TPoint2D p = e->EvalPoint(i / 50.0) - TPoint2D(1, 1);
    EXPECT_NEAR(p.X * p.X / 16 + p.Y * p.Y, 1.0, 1e-14);
  }
}

TEST(GeSpline2D, BadInputRaisesAndLeavesTheSplineAsItWas) {
  using orvane::testing::ExpectRaise;
  ExpectRaise<EGeometry>([] { TGeSpline2D::CreateArc({0, 0}, 1, 0, 1e-7); }, "SweepAngle is too close to 0");
  ExpectRaise<EGeometry>([] { TGeSpline2D::CreateEllipse({0, 0}, 1e-5, 1, 0, 1); },
                         "Invalid Ellipse MajorAxis Param 0.000010");
  auto s = TGeSpline2D::CreateLine({0, 0}, {3, 0});
  const TFloatDynArray knots = s->GetKnotVector();
  EXPECT_THROW(s->SetWeight(1, 0.0), EParamError);
  EXPECT_THROW(s->SetCtrlPoint(1, {NAN, 0}), EParamError);
  EXPECT_THROW(s->SetKnots(2, INFINITY), EParamError);
  EXPECT_THROW(s->SetKnots(8, 0.0), EParamError);
  EXPECT_THROW(s->EvalPoint(NAN), EParamError);
  EXPECT_EQ(s->GetKnotVector(), knots);
  EXPECT_EQ(s->GetWeights(), (TFloatDynArray{1, 1, 1, 1}));
  ExpectNear(s->EvalPoint(0.5), {1.5, 0}, 1e-15);
  // Knots that decrease: evaluation names the fault and changes nothing.
  s->SetKnots(4, 0.5);
  s->SetKnots(5, 0.25);
  ExpectRaise<EGeometry>([&] { s->EvalPoint(0.5); }, "[Error] TGeSpline2D.EvalPoint: the knots decrease at index 5");
  EXPECT_TRUE(s->DecomposeCurve().empty());
  // Counts that do not match; a zero-filled spline has zero weights.
  TGeSpline2D bad(4, 3);
  EXPECT_THROW(bad.EvalPoint(0.0), EGeometry);
  auto m = TGeSpline2D::CreateLine({0, 0}, {1, 1});
  m->Initialize(5, 3);
  m->SetKnots(8, 1);
  EXPECT_THROW(m->EvalPoint(0.2), EGeometry);  // weight 4 is zero
  TGeSpline2D few(2, 3);
  EXPECT_THROW(few.EvalPoint(0.0), EGeometry);
  EXPECT_TRUE(few.DecomposeCurve().empty());
}

TEST(GeSpline2D, BezierSplitByHand) {
  auto s = TGeSpline2D::CreateBezier({{0, 0}, {0, 4}, {4, 4}, {4, 0}});
  std::unique_ptr<TGeSpline2D> a, b;
  ASSERT_TRUE(s->SplitSpline(0.5, a, b));
  ASSERT_TRUE(a && b);
  // de Casteljau at one half: (0,2) (2,4) (4,2); (1,3) (3,3); (2,3).
  EXPECT_EQ(a->GetCtrlPoints(), (TDynPoints2D{{0, 0}, {0, 2}, {1, 3}, {2, 3}}));
  EXPECT_EQ(b->GetCtrlPoints(), (TDynPoints2D{{2, 3}, {3, 3}, {4, 2}, {4, 0}}));
  EXPECT_EQ(a->GetKnotVector(), (TFloatDynArray{0, 0, 0, 0, 0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(b->GetKnotVector(), (TFloatDynArray{0.5, 0.5, 0.5, 0.5, 1, 1, 1, 1}));
  EXPECT_FALSE(a->GetIsRational());
  // Within 1e-6 of an end there is nothing to cut off.
  s->SplitSpline(1e-7, a, b);
  EXPECT_FALSE(a);
  ASSERT_TRUE(b);
  EXPECT_TRUE(b->CheckEqual(*s, true));
  s->SplitSpline(1.0 - 1e-7, a, b);
  EXPECT_TRUE(a && !b);
  // A cut at a knot of multiplicity p inserts nothing.
  auto two = TGeSpline2D::CreateLine({0, 0}, {3, 0});
  two->AddLine({{3, 0}, {3, 3}});
  two->SplitSpline(1.0 + 4e-7, a, b);
  EXPECT_EQ(a->GetCtrlPoints(), (TDynPoints2D{{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
  EXPECT_EQ(b->GetCtrlPoints(), (TDynPoints2D{{3, 0}, {3, 1}, {3, 2}, {3, 3}}));
  EXPECT_EQ(b->GetKnotVector(), (TFloatDynArray{1, 1, 1, 1, 2, 2, 2, 2}));
  // SubCurve gives the stretch, with the parent's parameters.
  auto sub = s->SubCurve(0.25, 0.75);
  ASSERT_TRUE(sub);
  EXPECT_EQ(sub->GetStartParam(), 0.25);
  EXPECT_EQ(sub->GetEndParam(), 0.75);
  ExpectNear(sub->EvalPoint(0.6), s->EvalPoint(0.6), 1e-15);
  EXPECT_FALSE(s->SubCurve(0.5, 0.5));
  EXPECT_FALSE(s->SubCurve(0.7, 0.2));  // open: no way through the seam
}

TEST(GeSpline2D, EvaluationUsesTheExactSpanNearKnots) {
  // Degree 1 through (0,0) (1,0) (1,1): a corner at knot 1. The span is found by binary
  // search; a parameter 5e-7 before the corner lies on the first leg, not at the corner.
  auto s = MakeSpline(1, {{0, 0}, {1, 0}, {1, 1}}, {0, 0, 1, 2, 2});
  int span = -1;
  EXPECT_EQ(s->Multiplicity(1.0 - 5e-7, span), 1);
  EXPECT_EQ(span, 2);
  EXPECT_EQ(s->Multiplicity(0.5, span), 0);
  EXPECT_EQ(span, 1);
  EXPECT_EQ(s->Multiplicity(2.0, span), 1);
  EXPECT_EQ(span, 3);
  ExpectNear(s->EvalPoint(1.0 - 5e-7), {1.0 - 5e-7, 0}, 1e-16);
  ExpectNear(s->EvalPoint(1.0 + 5e-7), {1, 5e-7}, 1e-16);
  TPoint2D d;
  s->EvalPoint(2.0, d);
  ExpectNear(d, {0, 1}, 0);
  // Repeated first control points: the direction comes from the first different one.
  auto r = MakeSpline(3, {{0, 0}, {0, 0}, {2, 2}, {3, 0}}, {0, 0, 0, 0, 1, 1, 1, 1});
  r->EvalPoint(0.0, d);
  ExpectNear(d, {2, 2}, 0);
  // Cyclic readers.
  EXPECT_EQ(r->GetCtrlPoint(-1), TPoint2D(3, 0));
  EXPECT_EQ(r->GetKnots(r->GetKnotCount()), 0.0);
}

TEST(GeSpline2D, DecompositionOfUniformClampedAndLongRuns) {
  const TDynPoints2D pts{{0, 0}, {1, 3}, {3, 4}, {5, 1}, {6, 5}, {8, 2}, {9, 6}};
  auto u = MakeSpline(3, pts, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  const TPoint3DLists pieces = u->DecomposeCurve();
  ASSERT_EQ(pieces.size(), 4u);
  // The uniform cubic's first Bezier point is (P0 + 4 P1 + P2) / 6.
  EXPECT_NEAR(pieces[0][0].X, (0 + 4 * 1 + 3) / 6.0, 1e-15);
  EXPECT_NEAR(pieces[0][0].Y, (0 + 4 * 3 + 4) / 6.0, 1e-15);
  // Pieces against the curve: the SISL and OCCT cross-checks; here the joints, bit for bit.
  for (std::size_t k = 1; k < pieces.size(); ++k) EXPECT_EQ(pieces[k][0], pieces[k - 1][3]);
  auto r = MakeSpline(3, pts, {0, 0, 0, 0, 1, 2, 2, 4, 4, 4, 4}, {1, 2, 0.5, 1, 3, 1, 1});
  // The arc's pieces carry the middle weight in the third component.
  const TPoint3DLists arc = TGeSpline2D::CreateArc({0, 0}, 1, 0, 2 * kPi)->DecomposeCurve();
  ASSERT_EQ(arc.size(), 4u);
  EXPECT_NEAR(arc[1][1].Z, std::sqrt(0.5), 1e-15);
  // A run of 8 equal knots breaks the curve into two independent cubics.
  TDynPoints2D twelve;
  for (int i = 0; i < 12; ++i) twelve.push_back({double(i), double(i % 3)});
  auto br = MakeSpline(3, twelve, {0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2});
  EXPECT_TRUE(br->IsKnotsNeedTrim());
  EXPECT_FALSE(r->IsKnotsNeedTrim());
  TGeSpline2DList subs;
  EXPECT_TRUE(br->SplineSplit(subs));
  ASSERT_EQ(subs.size(), 2u);
  EXPECT_EQ(subs[1]->GetCtrlPoints().front(), TPoint2D(8, 2));
  const TPoint3DLists bp = br->DecomposeCurve();
  ASSERT_EQ(bp.size(), 2u);
  EXPECT_EQ(bp[0][3], TPoint3D(3, 0, 1));
  EXPECT_EQ(bp[1][0], TPoint3D(8, 2, 1));
  // A run of exactly p + 1 inside: two pieces that need not meet.
  const TPoint3DLists gap =
      MakeSpline(2, {{0, 0}, {1, 1}, {2, 0}, {5, 5}, {6, 6}, {7, 5}}, {0, 0, 0, 1, 1, 1, 2, 2, 2})->DecomposeCurve();
  ASSERT_EQ(gap.size(), 2u);
  EXPECT_EQ(gap[0], (TDynPoints3D{{0, 0, 1}, {1, 1, 1}, {2, 0, 1}}));
  EXPECT_EQ(gap[1], (TDynPoints3D{{5, 5, 1}, {6, 6, 1}, {7, 5, 1}}));
}

TEST(GeSpline2D, ClampingKeepsTheCurve) {
  // Unclamped uniform and rational, with fewer control points than 2p, and a longer one.
  for (const int n : {4, 5, 9}) {
    TDynPoints2D pts;
    TFloatDynArray w, k;
    for (int i = 0; i < n; ++i) {
      pts.push_back({i * 1.5, (i * 7 % 5) - 2.0});
      w.push_back(1.0 + 0.3 * (i % 3));
    }
    for (int i = 0; i < n + 4; ++i) k.push_back(i * 0.5 + (i > 5 ? 0.25 : 0.0));
    auto s = MakeSpline(3, pts, k, w);
    auto c = MakeSpline(3, pts, k, w);
    c->ConvertToClampingCurve();
    EXPECT_EQ(c->GetInterval().Lower, s->GetInterval().Lower);
    EXPECT_EQ(c->GetInterval().Upper, s->GetInterval().Upper);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(c->GetKnots(i), k[3]);
      EXPECT_EQ(c->GetKnots(n + i), k[static_cast<std::size_t>(n)]);
    }
    const TGeInterval iv = s->GetInterval();
    for (int i = 0; i <= 40; ++i) {
      const double t = iv.Lower + iv.GetLength() * i / 40;
      TPoint2D d1, d2;
      ExpectNear(c->EvalPoint(t, d1), s->EvalPoint(t, d2), 1e-12);
      ExpectNear(d1, d2, 1e-10);
    }
    EXPECT_EQ(c->DecomposeCurve().size(), s->DecomposeCurve().size());
    // The end matrices give the same new end points, in homogeneous form.
    const TFullMatrix start = GetBSpilineClampingMatrix(3, k, true);
    const TFullMatrix end = GetBSpilineClampingMatrix(3, k, false);
    for (int r = 0; r <= 3; ++r) {
      TPoint3D qs = TPoint3D::FZero, qe = TPoint3D::FZero;
      for (int j = 0; j <= 3; ++j) {
        qs = qs + s->GetCtrlPointW(j) * start[static_cast<std::size_t>(r)][static_cast<std::size_t>(j)];
        qe = qe + s->GetCtrlPointW(n - 4 + j) * end[static_cast<std::size_t>(r)][static_cast<std::size_t>(j)];
      }
      if (n >= 8) {  // ends apart: each matrix alone gives its end
        ExpectNear(TGeSpline2D::PointH(qs), c->GetCtrlPoint(r), 1e-12);
        ExpectNear(TGeSpline2D::PointH(qe), c->GetCtrlPoint(n - 4 + r), 1e-12);
      }
    }
  }
  EXPECT_EQ(GetBSpilineClampingMatrix(3, {0, 1, 2, 3, 4}, true), TFullMatrix(4, std::vector<double>(4, 0.0)));
}

TEST(GeSpline2D, JoiningAndReversal) {
  auto s = TGeSpline2D::CreateLine({0, 0}, {3, 0});
  EXPECT_TRUE(s->AddLine({{3, 0}, {3, 3}}));
  EXPECT_EQ(s->GetCtrlPointCount(), 7);
  EXPECT_EQ(s->GetKnotVector(), (TFloatDynArray{0, 0, 0, 0, 1, 1, 1, 2, 2, 2, 2}));
  ExpectNear(s->EvalPoint(1.5), {3, 1.5}, 1e-15);
  EXPECT_FALSE(s->AddArc(TArc2D({0, 0}, 1, 0, 1)));  // degree 2 onto degree 3
  EXPECT_EQ(s->GetCtrlPointCount(), 7);
  // An empty argument changes nothing.
  TGeSpline2D empty3(0, 3);
  EXPECT_FALSE(s->ConnectWith(empty3));
  EXPECT_EQ(s->GetCtrlPointCount(), 7);
  // A sub-curve keeps its parent's parameters, 0.5 to 1 here; it joins all the same.
  auto line = TGeSpline2D::CreateLine({0, 3}, {6, 3});
  auto tail = line->SubCurve(0.5, 1.0);
  auto head = TGeSpline2D::CreateLine({-3, 0}, {0, 0});
  ASSERT_TRUE(head->ConnectWith(dynamic_cast<TGeSpline2D&>(*s)));
  ASSERT_TRUE(head->ConnectWith(dynamic_cast<TGeSpline2D&>(*tail)));
  EXPECT_EQ(head->GetEndParam(), 3.5);
  ExpectNear(head->EvalPoint(3.25), {4.5, 3}, 1e-15);
  ExpectNear(head->EvalPoint(2.5), {3, 1.5}, 1e-15);
  // Joining onto an empty spline of the right degree copies; one of degree 0 refuses.
  TGeSpline2D e(0, 3);
  EXPECT_TRUE(e.ConnectWith(*s));
  EXPECT_TRUE(e.CheckEqual(*s, true));
  TGeSpline2D z;
  EXPECT_FALSE(z.ConnectWith(*s));
  // Reversal: twice is the identity; once runs the same points backwards.
  auto r = MakeSpline(3, {{0, 0}, {1, 3}, {3, 4}, {5, 1}, {6, 5}}, {0, 0, 0, 0, 0.3, 2, 2, 2, 2}, {1, 2, 0.5, 1, 3});
  auto rr = MakeSpline(3, r->GetCtrlPoints(), r->GetKnotVector(), r->GetWeights());
  rr->ReverseDir();
  EXPECT_FALSE(rr->CheckEqual(*r, false));  // knots not symmetric
  for (const double t : {0.0, 0.2, 1.1, 2.0}) ExpectNear(rr->EvalPoint(2.0 - t), r->EvalPoint(t), 1e-14);
  rr->ReverseDir();
  EXPECT_TRUE(rr->CheckEqual(*r, true));
  for (int i = 0; i < r->GetKnotCount(); ++i) EXPECT_NEAR(rr->GetKnots(i), r->GetKnots(i), 1e-15);
  EXPECT_EQ(rr->GetCtrlPoints(), r->GetCtrlPoints());
  auto sym = TGeSpline2D::CreateLine({0, 0}, {3, 1});
  auto symR = TGeSpline2D::CreateLine({0, 0}, {3, 1});
  symR->ReverseDir();
  EXPECT_FALSE(symR->CheckEqual(*sym, true));
  EXPECT_TRUE(symR->CheckEqual(*sym, false));
  EXPECT_TRUE(symR->Contains(*sym));
}

TEST(GeSpline2D, ToStringText) {
  auto s = TGeSpline2D::CreateArc({0, 0}, 2, 0, kPi / 2);
  EXPECT_EQ(s->ToString(),
            "2次样条, 节点数: 6, 控制点: 3\r\n节点向量：\r\n(0, 0, 0, 1, 1, 1, )\r\n控制点：\r\n"
            "   2.000,    0.000 (w: 1.000000)\r\n   2.000,    2.000 (w: 0.707107)\r\n"
            "   0.000,    2.000 (w: 1.000000)");
}

TEST(GeSpline2D, CachesFollowChanges) {
  auto s = MakeSpline(2, {{0, 0}, {1, 1}, {2, 0}}, {0, 0, 0, 1, 1, 1}, {2, 2, 2});
  EXPECT_FALSE(s->GetIsRational());
  EXPECT_FALSE(s->IsAllWeightsOne());
  TPoint2D d;
  ExpectNear(s->EvalPoint(0.5, d), {1, 0.5}, 1e-15);
  ExpectNear(d, {2, 0}, 1e-15);
  EXPECT_EQ(s->EvalPointW(1.0), TPoint3D(4, 0, 2));
  EXPECT_EQ(s->GetDervSpline().GetCtrlPointCount(), 2);
  s->SetWeight(1, 4.0);
  EXPECT_TRUE(s->GetIsRational());
  // A rational flag written against the weights (as a file may hold it) changes no point.
  s->SetIsRational(false);
  ExpectNear(s->EvalPoint(0.5), {1, 2.0 / 3}, 1e-15);
  s->ScaleBy(2.0);
  // Weights (1, 2, 1) on (0,0) (2,2) (4,0): at 1/2, W = 3/2, A = (3, 2), A' = (4, 0), W' = 0.
  ExpectNear(s->EvalPoint(0.5, d), {2, 4.0 / 3}, 1e-15);
  ExpectNear(d, {8.0 / 3, 0}, 1e-14);
}

TEST(GeSpline2D, PolySplitGivesFlatMonotonePiecesAndStaysBounded) {
  auto circle = TGeSpline2D::CreateArc({0, 0}, 10, 0.1, 2 * std::numbers::pi);
  TGeSpline2DList pieces;
  circle->PolySplit(pieces, 0.01);
  ASSERT_GT(pieces.size(), 8u);
  EXPECT_EQ(pieces.front()->GetStartParam(), 0.0);
  EXPECT_EQ(pieces.back()->GetEndParam(), 1.0);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const TGeSpline2D& s = *pieces[i];
    if (i > 0) {
      EXPECT_EQ(s.GetStartParam(), pieces[i - 1]->GetEndParam());
    }
    const TRect2D box = s.CtrlPointsBoundBlock();
    EXPECT_TRUE(s.CtrlBoxError(0.01) <= 0.01 || box.XMax - box.XMin < 0.01 || box.YMax - box.YMin < 0.01);
    // Monotone: the control points run one way in x and in y.
    const TDynPoints2D& p = s.GetCtrlPoints();
    for (std::size_t j = 2; j < p.size(); ++j) {
      EXPECT_GE((p[j].X - p[j - 1].X) * (p[1].X - p[0].X), -1e-12);
      EXPECT_GE((p[j].Y - p[j - 1].Y) * (p[1].Y - p[0].Y), -1e-12);
    }
  }
  // A straight spline that turns back along its line is cut at the turn, though flat.
  auto back = TGeSpline2D::CreateBezier({{0, 0}, {4, 0}, {4, 0}, {1, 0}});
  pieces.clear();
  back->PolySplit(pieces, 0.01);
  EXPECT_GT(pieces.size(), 1u);
  // A flat monotone spline is not cut.
  pieces.clear();
  TGeSpline2D::CreateLine({0, 0}, {3, 1})->PolySplit(pieces, 0.01);
  EXPECT_EQ(pieces.size(), 1u);
  EXPECT_THROW(back->PolySplit(pieces, 0.0), EParamError);
  EXPECT_THROW(back->PolySplit(pieces, NAN), EParamError);
  // A huge knot range with a turning control polygon would need ever more pieces.
  auto huge = TGeSpline2D::CreateBezier({{0, 0}, {1, 1}, {2, -1}, {3, 0}});
  huge->SetKnots(4, 1e12);
  huge->SetKnots(5, 1e12);
  huge->SetKnots(6, 1e12);
  huge->SetKnots(7, 1e12);
  pieces.clear();
  huge->PolySplit(pieces, 1e-3);  // flat enough long before the 1e-5 floor
  EXPECT_GT(pieces.size(), 1u);
  pieces.clear();
  EXPECT_THROW(huge->PolySplit(pieces, 1e-300), EGeometry);
}

}  // namespace
}  // namespace orvane
