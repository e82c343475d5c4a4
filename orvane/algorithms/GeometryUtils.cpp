#include "orvane/algorithms/GeometryUtils.h"

#include <algorithm>
#include <cmath>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/GeTolerance.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"

namespace orvane {

namespace {

// Pieces split this often are leaves whatever their size: their parameter span is below
// 1e-18 of the curve, where a box can shrink no further than the coordinates' resolution.
constexpr int MaxDepth = 64;
// Piece (pair) visits per call. A transversal crossing costs a few hundred and a tangency a
// few thousand; only curves that run along each other over a long stretch reach this, and
// then the remaining pieces are taken as leaves.
constexpr int NodeBudget = 1 << 17;

bool IsFiniteBezier(const TBezierSegment2D& B) {
  return internal::IsFinite(B.P0) && internal::IsFinite(B.P1) && internal::IsFinite(B.P2) && internal::IsFinite(B.P3);
}

void CheckCrossTol(double Tol, const char* Where) {
  if (!internal::IsPositiveNumber(Tol))
    throw EParamError("[Error] %s: Tol %g must be a finite number above 0", Where, Tol);
}

struct TBox {
  double XMin, YMin, XMax, YMax;
};

TBox CtrlBox(const TBezierSegment2D& B) {
  return {std::min(std::min(B.P0.X, B.P1.X), std::min(B.P2.X, B.P3.X)),
          std::min(std::min(B.P0.Y, B.P1.Y), std::min(B.P2.Y, B.P3.Y)),
          std::max(std::max(B.P0.X, B.P1.X), std::max(B.P2.X, B.P3.X)),
          std::max(std::max(B.P0.Y, B.P1.Y), std::max(B.P2.Y, B.P3.Y))};
}

TBox PointsBox(const TPoint2D& A, const TPoint2D& B) {
  return {std::min(A.X, B.X), std::min(A.Y, B.Y), std::max(A.X, B.X), std::max(A.Y, B.Y)};
}

bool BoxesApart(const TBox& A, const TBox& B, double Tol) {
  return A.XMin - B.XMax > Tol || B.XMin - A.XMax > Tol || A.YMin - B.YMax > Tol || B.YMin - A.YMax > Tol;
}

bool IsSmall(const TBox& B, double Tol) { return B.XMax - B.XMin < Tol && B.YMax - B.YMin < Tol; }

// De Casteljau at 1/2, the one split of the subdivisions.
void Halves(const TBezierSegment2D& B, TBezierSegment2D& L, TBezierSegment2D& R) {
  const TPoint2D q1 = (B.P0 + B.P1) * 0.5, q2 = (B.P1 + B.P2) * 0.5, q3 = (B.P2 + B.P3) * 0.5;
  const TPoint2D r1 = (q1 + q2) * 0.5, r2 = (q2 + q3) * 0.5;
  const TPoint2D m = (r1 + r2) * 0.5;
  L = {B.P0, q1, r1, m};
  R = {m, r2, q3, B.P3};
}

// The piece of B between the parameters T0 <= T1.
TBezierSegment2D SubPiece(const TBezierSegment2D& B, double T0, double T1) {
  TBezierSegment2D seg = B, left, right;
  if (T0 > 0.0 && seg.Split(T0, left, right)) seg = right;
  const double t = T0 < 1.0 ? (T1 - T0) / (1.0 - T0) : 1.0;
  if (t < 1.0 && seg.Split(t, left, right)) seg = left;
  return seg;
}

bool SameCtrlPoints(const TBezierSegment2D& A, const TBezierSegment2D& B, double Tol) {
  const bool same = A.P0.Equals(B.P0, Tol) && A.P1.Equals(B.P1, Tol) && A.P2.Equals(B.P2, Tol) && A.P3.Equals(B.P3, Tol);
  return same || (A.P0.Equals(B.P3, Tol) && A.P1.Equals(B.P2, Tol) && A.P2.Equals(B.P1, Tol) && A.P3.Equals(B.P0, Tol));
}

// Sine of the shallowest angle at which the pieces can meet, when they meet at least at
// MinSine everywhere: every leg of one control polygon crosses every leg of the other that
// steeply and with the same turn. The derivatives are positive combinations of the legs, so
// A' x B' keeps that sign for all parameters, and two crossings p, q would need q - p (a
// combination of A's legs and of B's) to be parallel to itself with a non-zero cross
// product: such pieces cross at most once. 0 otherwise.
constexpr double MinSine = 0.1;
double TransversalSine(const TBezierSegment2D& A, const TBezierSegment2D& B) {
  const TPoint2D la[3] = {A.P1 - A.P0, A.P2 - A.P1, A.P3 - A.P2};
  const TPoint2D lb[3] = {B.P1 - B.P0, B.P2 - B.P1, B.P3 - B.P2};
  int sign = 0;
  double least = 1.0;
  for (const TPoint2D& a : la) {
    const double ma = a.MagSqr();
    if (ma == 0.0) continue;
    for (const TPoint2D& b : lb) {
      const double mb = b.MagSqr();
      if (mb == 0.0) continue;
      const double c = a.CrossMul(b);
      const double sin2 = c * c / (ma * mb);
      if (!(sin2 >= MinSine * MinSine)) return 0.0;
      least = std::min(least, sin2);
      const int cs = c > 0.0 ? 1 : -1;
      if (sign != 0 && cs != sign) return 0.0;
      sign = cs;
    }
  }
  return sign != 0 ? std::sqrt(least) : 0.0;
}

// P may lie within Tol of B: a few box tests on halves of B settle most points far away.
bool MayBeNear(const TPoint2D& P, const TBezierSegment2D& B, double Tol) {
  TBezierSegment2D stack[64];
  int top = 0, budget = 256;
  stack[top++] = B;
  while (top > 0) {
    const TBezierSegment2D piece = stack[--top];
    const TBox box = CtrlBox(piece);
    if (P.X < box.XMin - Tol || P.X > box.XMax + Tol || P.Y < box.YMin - Tol || P.Y > box.YMax + Tol) continue;
    if (IsSmall(box, Tol) || --budget <= 0 || top + 2 > 64) return true;
    Halves(piece, stack[top], stack[top + 1]);
    top += 2;
  }
  return false;
}

// Newton's method on A(s) = B(t) from the crossing of the chords. True, with the local
// parameters, when it converges inside both pieces.
bool NewtonCross(const TBezierSegment2D& A, const TBezierSegment2D& B, double& S, double& T) {
  const TPoint2D da = A.P3 - A.P0, db = B.P3 - B.P0, w = B.P0 - A.P0;
  const double den = da.CrossMul(db);
  if (den == 0.0) return false;
  double s = std::clamp(w.CrossMul(db) / den, 0.0, 1.0), t = std::clamp(w.CrossMul(da) / den, 0.0, 1.0);
  for (int iter = 0; iter < 32; ++iter) {
    TPoint2D ds, dt;
    const TPoint2D f = A.EvalPoint(s, ds) - B.EvalPoint(t, dt);
    const double det = dt.CrossMul(ds);
    if (det == 0.0) return false;
    // Solve ds * x - dt * y = f for the step (x, y).
    const double x = dt.CrossMul(f) / det, y = ds.CrossMul(f) / det;
    s -= x;
    t -= y;
    if (!(s > -0.25 && s < 1.25 && t > -0.25 && t < 1.25)) return false;
    if (std::fabs(x) + std::fabs(y) <= 1e-15) {
      constexpr double slack = 1e-12;
      if (s < -slack || s > 1.0 + slack || t < -slack || t > 1.0 + slack) return false;
      S = std::clamp(s, 0.0, 1.0);
      T = std::clamp(t, 0.0, 1.0);
      return true;
    }
  }
  return false;
}

// The Bezier parameter of a point found on a straight Bezier: its own nearest parameter, so
// that an unevenly parameterised straight cubic still gets its true parameter.
double StraightParam(const TBezierSegment2D& B, const TPoint2D& Pt) { return B.ParamOfPoint(Pt, DefTol); }

}  // namespace

void TGeometryUtils::AddCrossPt(TCrossRecs& Records, const TPoint2D& Pt, double Param, double Dist, double T0,
                                double T1, double Reach) {
  TLeafRec rec;
  rec.Pt = Pt;
  rec.Param = Param;
  rec.Dist = Dist;
  rec.T0 = T0;
  rec.T1 = T1;
  rec.Reach = Reach;
  Records.push_back(rec);
}

bool TGeometryUtils::BezierCrossWithSegline(const TBezierSegment2D& Bezier, const TLine2D& Segline, double Tol,
                                            TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                                            TList<double>* CrossPtParams) {
  CheckCrossTol(Tol, "TGeometryUtils.BezierCrossWithSegline");
  if (!IsFiniteBezier(Bezier) || !internal::IsFinite(Segline.P1) || !internal::IsFinite(Segline.P2)) return false;
  const int ptCount = CrossPts.Count(), lineCount = CrossLines.Count();
  TLine2D line;
  if (Bezier.IsLinear(line, 1e-6)) {
    TPoint2D a, b;
    const int rel = Segline.RelationWithSegLine(line, a, b, Tol, 1e-9);
    if (rel == 1) {
      CrossPts.Add(a);
      if (CrossPtParams != nullptr) CrossPtParams->Add(StraightParam(Bezier, a));
    } else if (rel == 2) {
      CrossLines.Add(TLine2D(a, b));
    }
    return CrossPts.Count() > ptCount || CrossLines.Count() > lineCount;
  }
  // The frame in which Segline runs from the origin along +X.
  const TPoint2D v = Segline.Vector();
  const double len = v.Mag();
  const double c = len > 0.0 ? v.X / len : 1.0, s = len > 0.0 ? v.Y / len : 0.0;
  auto toFrame = [&](const TPoint2D& p) {
    const TPoint2D d = p - Segline.P1;
    return TPoint2D(d.X * c + d.Y * s, -d.X * s + d.Y * c);
  };
  const TBezierSegment2D local(toFrame(Bezier.P0), toFrame(Bezier.P1), toFrame(Bezier.P2), toFrame(Bezier.P3));
  TNullable<TPoint2D> last;
  DoBezierCrossWithSegline(local, len, Tol, last, CrossPts, CrossPtParams);
  for (int i = ptCount; i < CrossPts.Count(); ++i) {
    const TPoint2D q = CrossPts[i];
    CrossPts.SetItem(i, TPoint2D(Segline.P1.X + q.X * c - q.Y * s, Segline.P1.Y + q.X * s + q.Y * c));
  }
  return CrossPts.Count() > ptCount;
}

void TGeometryUtils::DoBezierCrossWithSegline(const TBezierSegment2D& Bezier, double L, double Tol,
                                              TNullable<TPoint2D>& Last, TList<TPoint2D>& CrossPts,
                                              TList<double>* CrossPtParams) {
  // The end parameter of the leaf that set Last: a leaf that does not follow on from it
  // directly is a new crossing, even at the same place (a curve that comes back there).
  double lastEnd = -1.0;
  auto record = [&](const TPoint2D& p, double t, double t0, double t1) {
    if (p.X < -Tol || p.X > L + Tol) return;
    const bool follows = t0 <= lastEnd;
    lastEnd = t1;
    if (!Last.GetIsNull() && follows && CompareValue(std::fabs(p.X - Last.Value.X), 2.0 * Tol, 0.0) <= 0) {
      // The same crossing as the previous leaf: keep the leaf nearest the line.
      if (std::fabs(CrossPts.Last().Y) > std::fabs(p.Y)) {
        CrossPts.SetItem(CrossPts.Count() - 1, p);
        if (CrossPtParams != nullptr) CrossPtParams->SetItem(CrossPtParams->Count() - 1, t);
      }
    } else {
      CrossPts.Add(p);
      if (CrossPtParams != nullptr) CrossPtParams->Add(t);
    }
    Last = TNullable<TPoint2D>(true, p);
  };
  struct TPiece {
    TBezierSegment2D B;
    double T0, T1;
    int Depth;
  };
  std::vector<TPiece> stack;
  stack.reserve(2 * MaxDepth + 2);
  stack.push_back({Bezier, 0.0, 1.0, 0});
  int budget = NodeBudget;
  while (!stack.empty()) {
    const TPiece piece = stack.back();
    stack.pop_back();
    --budget;
    const TBox box = CtrlBox(piece.B);
    if (box.YMin > Tol || box.YMax < -Tol || box.XMin > L + Tol || box.XMax < -Tol) continue;
    if ((box.XMax - box.XMin <= Tol && box.YMax - box.YMin <= Tol) || piece.Depth >= MaxDepth || budget <= 0) {
      const TPoint2D& p1 = piece.B.P0;
      const TPoint2D& p4 = piece.B.P3;
      const double y1 = p1.Y, y4 = p4.Y;
      if ((y1 >= 0.0 && y4 >= y1) || (y1 < 0.0 && y1 > y4)) {
        record(p1, piece.T0, piece.T0, piece.T1);
      } else if ((y1 >= 0.0 && y4 < y1 && y4 >= 0.0) || (y1 < 0.0 && y4 >= y1 && y4 <= 0.0)) {
        record(p4, piece.T1, piece.T0, piece.T1);
      } else {
        const double f = TMathUtils::FloatEquals(y1, y4, 1e-15) ? 0.5 : y1 / (y1 - y4);
        record(p1 + (p4 - p1) * f, piece.T0 + (piece.T1 - piece.T0) * f, piece.T0, piece.T1);
      }
      continue;
    }
    TBezierSegment2D l, r;
    Halves(piece.B, l, r);
    const double mid = 0.5 * (piece.T0 + piece.T1);
    // Right first, so that the left half comes off the stack first: leaves in Bezier order.
    stack.push_back({r, mid, piece.T1, piece.Depth + 1});
    stack.push_back({l, piece.T0, mid, piece.Depth + 1});
  }
}

namespace {

// The leaf of the arc and the Bezier crossing: the first piece's chord P1-P4 against the
// second piece's ends U, V.
template <class TAdd>
void CrossLeaf(const TPoint2D& P1, const TPoint2D& P4, const TPoint2D& U, const TPoint2D& V, double T0, double T1,
               TAdd Add) {
  // Add(point, parameter, distance, leaf start, leaf end)
  const double l1 = TPoint2DUtils::IsLeft(P1, P4, U), l2 = TPoint2DUtils::IsLeft(P1, P4, V);
  const double l3 = TPoint2DUtils::IsLeft(U, V, P1), l4 = TPoint2DUtils::IsLeft(U, V, P4);
  if (l1 * l2 < 0.0 && l3 * l4 < 0.0) {
    const double u = std::fabs(l3) / (std::fabs(l3) + std::fabs(l4));
    Add(P1 + (P4 - P1) * u, T0 + (T1 - T0) * u, 0.0, T0, T1);
    return;
  }
  const TLine2D chord(P1, P4);
  double u1 = 0.0, u2 = 0.0;
  TPoint2D n1, n2;
  const double d1 = chord.DistanceLimit(U, u1, n1), d2 = chord.DistanceLimit(V, u2, n2);
  if (d2 < d1)
    Add(P1 + (P4 - P1) * u2, T0 + (T1 - T0) * u2, d2, T0, T1);
  else
    Add(P1 + (P4 - P1) * u1, T0 + (T1 - T0) * u1, d1, T0, T1);
}

}  // namespace

bool TGeometryUtils::BezierCrossWithArc(const TBezierSegment2D& Bezier, const TArc2D& Arc, double Tol,
                                        TList<TPoint2D>& CrossPts, TList<double>* CrossPtParams) {
  CheckCrossTol(Tol, "TGeometryUtils.BezierCrossWithArc");
  if (!IsFiniteBezier(Bezier) || !internal::IsFinite(Arc.Center) || !std::isfinite(Arc.Radius) ||
      !std::isfinite(Arc.StartAngle) || !std::isfinite(Arc.SweepAngle))
    return false;
  const int ptCount = CrossPts.Count();
  if (Arc.IsLine) {
    // The line form crosses as its segment; an overlap counts by its two ends.
    TList<TLine2D> lines;
    BezierCrossWithSegline(Bezier, Arc.AsLine(), Tol, CrossPts, lines, CrossPtParams);
    for (const TLine2D& l : lines) {
      for (const TPoint2D& p : {l.P1, l.P2}) {
        CrossPts.Add(p);
        if (CrossPtParams != nullptr) CrossPtParams->Add(StraightParam(Bezier, p));
      }
    }
    return CrossPts.Count() > ptCount;
  }
  TLine2D line;
  if (Bezier.IsLinear(line, 1e-6)) {
    TIntersectPoint2D i1, i2;
    const int count = Arc.CrossWithSegline(line, i1, i2, Tol);
    for (int k = 0; k < count && k < 2; ++k) {
      const TPoint2D p = k == 0 ? i1.Pt : i2.Pt;
      CrossPts.Add(p);
      if (CrossPtParams != nullptr) CrossPtParams->Add(StraightParam(Bezier, p));
    }
    return count > 0;
  }
  TArc2D arc = Arc;
  if (arc.IsClockwise) arc.ReverseDir();
  double a0 = std::fmod(arc.StartAngle, TwoPi);
  if (a0 < 0.0) a0 += TwoPi;
  const double a1 = a0 + std::fabs(arc.SweepAngle);
  TCrossRecs records;
  // Quadrant pieces: each piece's box is the box of its two end points.
  auto cover = [&](double from, double to) {
    double s = from / HalfPi;
    const double e = to / HalfPi;
    double k = std::ceil(s);
    for (int guard = 0; e >= k && guard < 8; ++guard) {
      if (CompareValue(s * HalfPi * arc.Radius, k * HalfPi * arc.Radius, Tol) != 0)
        DoBezierCrossWithArc(Bezier, arc, s * HalfPi, k * HalfPi, Tol, records);
      s = k;
      k += 1.0;
    }
    if (CompareValue(s * HalfPi * arc.Radius, e * HalfPi * arc.Radius, Tol) != 0)
      DoBezierCrossWithArc(Bezier, arc, s * HalfPi, e * HalfPi, Tol, records);
  };
  if (a1 > TwoPi) {
    cover(a0, TwoPi);
    cover(0.0, a1 - TwoPi);
  } else {
    cover(a0, a1);
  }
  RemoveCloseCrossPts(records, CrossPts, CrossPtParams, Tol);
  return CrossPts.Count() > ptCount;
}

void TGeometryUtils::DoBezierCrossWithArc(const TBezierSegment2D& Bezier, const TArc2D& Arc, double A0, double A1,
                                          double Tol, TCrossRecs& Records) {
  struct TPiece {
    TBezierSegment2D B;
    double T0, T1, A0, A1;
    bool Flag;
    int Depth;
  };
  std::vector<TPiece> stack;
  stack.reserve(2 * MaxDepth + 2);
  stack.push_back({Bezier, 0.0, 1.0, A0, A1, true, 0});
  int budget = NodeBudget;
  auto add = [&](const TPoint2D& p, double t, double d, double t0, double t1) { AddCrossPt(Records, p, t, d, t0, t1); };
  while (!stack.empty()) {
    const TPiece piece = stack.back();
    stack.pop_back();
    --budget;
    const TPoint2D s = Arc.PointAt(piece.A0), e = Arc.PointAt(piece.A1);
    const TBox arcBox = PointsBox(s, e), bezBox = CtrlBox(piece.B);
    if (BoxesApart(bezBox, arcBox, Tol)) continue;
    const bool smallArc = IsSmall(arcBox, Tol), smallBezier = IsSmall(bezBox, Tol);
    if ((smallArc && smallBezier) || piece.Depth >= 2 * MaxDepth || budget <= 0) {
      CrossLeaf(piece.B.P0, piece.B.P3, s, e, piece.T0, piece.T1, add);
      continue;
    }
    const double am = 0.5 * (piece.A0 + piece.A1);
    if ((smallBezier && !smallArc) || (!smallArc && !piece.Flag)) {
      const bool flag = !smallBezier;
      stack.push_back({piece.B, piece.T0, piece.T1, am, piece.A1, flag, piece.Depth + 1});
      stack.push_back({piece.B, piece.T0, piece.T1, piece.A0, am, flag, piece.Depth + 1});
      continue;
    }
    TBezierSegment2D l, r;
    Halves(piece.B, l, r);
    const double tm = 0.5 * (piece.T0 + piece.T1);
    stack.push_back({r, tm, piece.T1, piece.A0, piece.A1, !piece.Flag, piece.Depth + 1});
    stack.push_back({l, piece.T0, tm, piece.A0, piece.A1, !piece.Flag, piece.Depth + 1});
  }
}

void TGeometryUtils::DoBezierCrossWithBezier(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB,
                                             double Tol, TCrossRecs& Records) {
  struct TPiece {
    TBezierSegment2D A, B;
    double T0, T1;
    bool Flag;
    int Depth;
  };
  std::vector<TPiece> stack;
  stack.reserve(4 * MaxDepth + 2);
  stack.push_back({BezierA, BezierB, 0.0, 1.0, true, 0});
  int budget = NodeBudget;
  auto add = [&](const TPoint2D& p, double t, double d, double t0, double t1) { AddCrossPt(Records, p, t, d, t0, t1); };
  while (!stack.empty()) {
    const TPiece piece = stack.back();
    stack.pop_back();
    --budget;
    const TBox boxA = CtrlBox(piece.A), boxB = CtrlBox(piece.B);
    if (BoxesApart(boxA, boxB, Tol)) continue;
    const bool smallB = IsSmall(boxB, Tol), smallA = IsSmall(boxA, Tol);
    // Pieces that can cross only once, steeply: Newton finds that crossing exactly, and the
    // leaves around it would all lie within 2 * Tol of it. Without a crossing inside, the
    // pair goes on as usual (it may still touch within Tol).
    double s = 0.0, t = 0.0;
    if (!(smallA && smallB)) {
      const double sine = TransversalSine(piece.A, piece.B);
      if (sine > 0.0 && NewtonCross(piece.A, piece.B, s, t)) {
        AddCrossPt(Records, piece.A.EvalPoint(s), piece.T0 + (piece.T1 - piece.T0) * s, 0.0, piece.T0, piece.T1,
                   4.0 * Tol / sine);
        continue;
      }
    }
    if ((smallA && smallB) || piece.Depth >= 2 * MaxDepth || budget <= 0) {
      CrossLeaf(piece.A.P0, piece.A.P3, piece.B.P0, piece.B.P3, piece.T0, piece.T1, add);
      continue;
    }
    if ((smallA && !smallB) || (!smallB && !piece.Flag)) {
      const bool flag = !smallA;
      TBezierSegment2D l, r;
      Halves(piece.B, l, r);
      stack.push_back({piece.A, r, piece.T0, piece.T1, flag, piece.Depth + 1});
      stack.push_back({piece.A, l, piece.T0, piece.T1, flag, piece.Depth + 1});
      continue;
    }
    TBezierSegment2D l, r;
    Halves(piece.A, l, r);
    const double tm = 0.5 * (piece.T0 + piece.T1);
    stack.push_back({r, piece.B, tm, piece.T1, !piece.Flag, piece.Depth + 1});
    stack.push_back({l, piece.B, piece.T0, tm, !piece.Flag, piece.Depth + 1});
  }
}

void TGeometryUtils::RemoveCloseCrossPts(TCrossRecs& Records, TList<TPoint2D>& CrossPts, TList<double>* CrossPtParams,
                                         double Tol) {
  if (Records.empty()) return;
  // Stable, so that records of equal parameter keep the order in which they were found; at
  // an equal parameter (the end of one leaf, the start of the next) the earlier leaf first.
  std::stable_sort(Records.begin(), Records.end(), [](const TLeafRec& A, const TLeafRec& B) {
    return A.Param < B.Param || (A.Param == B.Param && A.T0 < B.T0);
  });
  std::size_t i = 0;
  while (i < Records.size()) {
    std::size_t best = i, j = i + 1;
    double reach = Records[i].T1, near = std::max(2.0 * Tol, Records[i].Reach);
    // A group also stays contiguous along the first curve: a curve that passes one point
    // twice crosses there twice. Around an exactly solved shallow crossing it spans the
    // stretch where the curves stay within Tol of each other.
    while (j < Records.size() && Records[j].T0 <= reach) {
      const double lim = std::max(near, Records[j].Reach);
      if (std::fabs(Records[j].Pt.X - Records[j - 1].Pt.X) > lim || std::fabs(Records[j].Pt.Y - Records[j - 1].Pt.Y) > lim)
        break;
      if (Records[j].Dist < Records[best].Dist) best = j;
      reach = std::max(reach, Records[j].T1);
      near = lim;
      ++j;
    }
    // Leaves pass the box test up to about twice Tol apart: a group that never came within
    // Tol is the fringe of a near miss (or of a crossing's edge), not a meeting.
    if (Records[best].Dist <= Tol) {
      CrossPts.Add(Records[best].Pt);
      if (CrossPtParams != nullptr) CrossPtParams->Add(Records[best].Param);
    }
    i = j;
  }
}

bool TGeometryUtils::IsBezierOverlap(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB, double Tol,
                                     TList<TBezierSegment2D>& CrossBeziers) {
  const TGeTolerance tol(Tol, Tol);
  struct TEnd {
    bool On = false;
    double Param = 0.0;  // on the other curve
  };
  auto endOn = [&](const TPoint2D& p, const TBezierSegment2D& other, const TBox& otherBox) {
    TEnd end;
    if (p.X < otherBox.XMin - Tol || p.X > otherBox.XMax + Tol || p.Y < otherBox.YMin - Tol ||
        p.Y > otherBox.YMax + Tol || !MayBeNear(p, other, Tol))
      return end;
    TPoint2D nearest;
    end.On = other.DistanceTo(p, tol, end.Param, nearest) <= Tol;
    return end;
  };
  const TBox boxA = CtrlBox(BezierA), boxB = CtrlBox(BezierB);
  const TEnd a0 = endOn(BezierA.P0, BezierB, boxB), a1 = endOn(BezierA.P3, BezierB, boxB);
  const TEnd b0 = endOn(BezierB.P0, BezierA, boxA), b1 = endOn(BezierB.P3, BezierA, boxA);
  // A stretch this short in parameter is a touch at an end, not a shared stretch.
  constexpr double minSpan = 1e-9;
  auto tryPieces = [&](double ta0, double ta1, double tb0, double tb1) {
    if (ta0 > ta1) std::swap(ta0, ta1);
    if (tb0 > tb1) std::swap(tb0, tb1);
    if (ta1 - ta0 < minSpan || tb1 - tb0 < minSpan) return false;
    const TBezierSegment2D pa = SubPiece(BezierA, ta0, ta1), pb = SubPiece(BezierB, tb0, tb1);
    if (!SameCtrlPoints(pa, pb, Tol)) return false;
    CrossBeziers.Add(pa);
    return true;
  };
  // A lies on B, or B on A: the shorter one whole.
  if (a0.On && a1.On && tryPieces(0.0, 1.0, a0.Param, a1.Param)) return true;
  if (b0.On && b1.On && tryPieces(b0.Param, b1.Param, 0.0, 1.0)) return true;
  // An end stretch of A is an end stretch of B: from A's end on B to B's end on A.
  for (int ia = 0; ia < 2; ++ia) {
    const TEnd& ea = ia == 0 ? a0 : a1;
    if (!ea.On) continue;
    for (int ib = 0; ib < 2; ++ib) {
      const TEnd& eb = ib == 0 ? b0 : b1;
      if (eb.On && tryPieces(ia, eb.Param, ea.Param, ib)) return true;
    }
  }
  return false;
}

bool TGeometryUtils::BezierCrossWithBezier(const TBezierSegment2D& BezierA, const TBezierSegment2D& BezierB, double Tol,
                                           TList<TPoint2D>& CrossPts, TList<TLine2D>& CrossLines,
                                           TList<TBezierSegment2D>& CrossBeziers, TList<double>* CrossPtParams) {
  CheckCrossTol(Tol, "TGeometryUtils.BezierCrossWithBezier");
  if (!IsFiniteBezier(BezierA) || !IsFiniteBezier(BezierB)) return false;
  // Curves whose hulls lie apart cannot meet: the common case, answered without any work.
  if (BoxesApart(CtrlBox(BezierA), CtrlBox(BezierB), Tol)) return false;
  const int ptCount = CrossPts.Count(), lineCount = CrossLines.Count();
  TLine2D lineA, lineB;
  if (BezierA.IsLinear(lineA, 1e-6) && BezierB.IsLinear(lineB, 1e-6)) {
    TPoint2D a, b;
    const int rel = lineA.RelationWithSegLine(lineB, a, b, Tol, 1e-9);
    if (rel == 1) {
      CrossPts.Add(a);
      if (CrossPtParams != nullptr) CrossPtParams->Add(StraightParam(BezierA, a));
    } else if (rel == 2) {
      CrossLines.Add(TLine2D(a, b));
    }
    return CrossPts.Count() > ptCount || CrossLines.Count() > lineCount;
  }
  if (IsBezierOverlap(BezierA, BezierB, Tol, CrossBeziers)) return true;
  TCrossRecs records;
  DoBezierCrossWithBezier(BezierA, BezierB, Tol, records);
  RemoveCloseCrossPts(records, CrossPts, CrossPtParams, Tol);
  return CrossPts.Count() > ptCount || CrossLines.Count() > lineCount;
}

bool TGeometryUtils::CalcEqualRotateAndTrans(const TFloatDynArray& RotateRadians, const TDynPoints2D& Transs,
                                             double& EquRadian, TPoint2D& EquTrans) {
  if (RotateRadians.size() != Transs.size()) return false;
  if (RotateRadians.empty()) {
    EquRadian = 0.0;
    EquTrans = TPoint2D::FZero;
    return true;
  }
  // Walking back from the last step, each earlier translation is turned by all the
  // rotations that follow it.
  double radian = 0.0;
  TPoint2D trans = Transs.back();
  for (std::size_t i = Transs.size() - 1; i >= 1; --i) {
    radian += RotateRadians[i];
    const double c = std::cos(radian), s = std::sin(radian);
    const TPoint2D& t = Transs[i - 1];
    trans.X += t.X * c - t.Y * s;
    trans.Y += t.X * s + t.Y * c;
  }
  EquRadian = radian + RotateRadians[0];
  EquTrans = trans;
  return true;
}

bool TGeometryUtils::CalcEqualRotateAndTrans(double Radian1, const TPoint2D& Trans1, double Radian2,
                                             const TPoint2D& Trans2, double& EquRadian, TPoint2D& EquTrans) {
  return CalcEqualRotateAndTrans(TFloatDynArray{Radian1, Radian2}, TDynPoints2D{Trans1, Trans2}, EquRadian, EquTrans);
}

TLine2D TGeometryUtils::CalcAngleBisector(const TPoint2D& P1, const TPoint2D& P2, const TPoint2D& P3) {
  if ((P2 - P1).IsParallelTo(P3 - P2, 1e-6)) return {P2, P2 + (P1 - P2).RotateCcw90()};
  const TPoint2D e1 = TLine2D(P2, P1).Stretch(1.0, true).P2, e3 = TLine2D(P2, P3).Stretch(1.0, true).P2;
  return {P2, (e1 + e3) * 0.5};
}

}  // namespace orvane
