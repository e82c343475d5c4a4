#include "Profile.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/algorithms/CurveToArcs.h"
#include "orvane/curves/CurveJoin.h"
#include "orvane/curves/GeBezier2D.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyBezier2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/Format.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane::tool {

namespace {

using TClock = std::chrono::steady_clock;
using TCurvePtr = std::unique_ptr<TGeCurve2D>;

double Seconds(TClock::time_point Since) { return std::chrono::duration<double>(TClock::now() - Since).count(); }
double Dist(const TPoint2D& A, const TPoint2D& B) { return std::hypot(A.X - B.X, A.Y - B.Y); }

TCurvePtr CloneCurve(const TGeCurve2D& C) { return C.CloneAs<TGeCurve2D>(); }

TCurvePtr ArcElement(const TArc2D& A) {
  if (A.IsLine) return std::make_unique<TGeLine2D>(A.StartPoint(), A.EndPoint());
  return std::make_unique<TGeCircularArc2D>(A.Center, A.Radius, A.StartAngle, A.GetSweepAngle());
}

// Parameter stretches over which a free-form curve is smooth: the knot spans of a spline,
// the whole range otherwise.
std::vector<double> SmoothBreaks(const TGeCurve2D& C) {
  const TGeInterval iv = C.GetInterval();
  std::vector<double> b{iv.Lower};
  if (const auto* s = dynamic_cast<const TGeSpline2D*>(&C)) {
    for (const double k : s->GetKnotVector())
      if (k > b.back() + 1e-12 * std::max(1.0, std::fabs(k)) && k < iv.Upper) b.push_back(k);
  }
  if (iv.Upper > b.back()) b.push_back(iv.Upper);
  return b;
}

// ---- Recognition: every call that asks whether a spline is a line or an arc is here.

// The line or arc that Spline is, or nil: within Tol where one is given, else as the
// spline's own recognition judges without one (relative to its size, and the standard cubics
// that CAD systems write for arcs). The element returned starts and ends exactly where the
// spline does, so that joining sees the same ends. Deviation receives the distance between
// the spline and the element, measured on dense samples.
TCurvePtr RecogniseSpline(const TGeSpline2D& Spline, double Tol, double& Deviation) {
  const TGeInterval iv = Spline.GetInterval();
  const double t0 = iv.Lower, t1 = iv.Upper;
  const int samples = 32 * std::max<int>(1, static_cast<int>(SmoothBreaks(Spline).size()) - 1);
  const TPoint2D p0 = Spline.EvalPoint(t0), p1 = Spline.EvalPoint(t1);
  std::vector<TArc2D> element(1);
  std::unique_ptr<TGeLine2D> line;
  std::unique_ptr<TGeCircularArc2D> arc;
  if (Tol > 0.0 ? Spline.IsLine(line, Tol) : Spline.IsLine(line)) {
    if (p0 == p1) return nullptr;
    element[0].DegradeLine(p0, p1);
  } else if (Tol > 0.0 ? Spline.IsArc(arc, Tol) : Spline.IsArc(arc)) {
    if (arc->IsFullCircle() || p0.DistanceTo(p1) <= 1e-9 * arc->GetRadius()) {
      TPoint2D d;
      Spline.EvalPoint(t0, d);
      element[0] = TArc2D::CreateCircle(arc->GetCenter(), p0, (p0 - arc->GetCenter()).CrossMul(d) < 0.0);
    } else {
      element[0] = TArc2D::CreateCross(p0, Spline.EvalPoint(0.5 * (t0 + t1)), p1);
    }
  } else {
    return nullptr;
  }
  Deviation = TCurveToArcs::Deviation(Spline, t0, t1, element, samples);
  return ArcElement(element[0]);
}

// ---- Pieces to elements

void AddElements(const TGeCurve2D& C, std::vector<TCurvePtr>& Out, double RecTol, TProfileResult& R) {
  if (const auto* pl = dynamic_cast<const TGePolyline2D*>(&C)) {
    const TDynPoints2D& pts = pl->GetPointsArray();
    for (std::size_t i = 0; i + 1 < pts.size(); ++i)
      if (!(pts[i] == pts[i + 1])) Out.push_back(std::make_unique<TGeLine2D>(pts[i], pts[i + 1]));
    return;
  }
  if (const auto* cc = dynamic_cast<const TGeCompositeCurve2D*>(&C)) {
    for (int i = 0; i < cc->GetCurveCount(); ++i) AddElements(*cc->GetCurve(i), Out, RecTol, R);
    return;
  }
  if (const auto* pb = dynamic_cast<const TGePolyBezier2D*>(&C)) {
    for (int i = 0; i < pb->GetSegmentCount(); ++i)
      Out.push_back(std::make_unique<TGeBezier2D>(pb->GetPoint(3 * i), pb->GetPoint(3 * i + 1), pb->GetPoint(3 * i + 2),
                                                  pb->GetPoint(3 * i + 3)));
    return;
  }
  if (const auto* sp = dynamic_cast<const TGeSpline2D*>(&C)) {
    ++R.SplinesRead;
    double dev = 0.0;
    if (TCurvePtr simple = RecogniseSpline(*sp, RecTol, dev)) {
      (dynamic_cast<TGeLine2D*>(simple.get()) ? R.SplinesAsLines : R.SplinesAsArcs)++;
      R.MaxDeviation = std::max(R.MaxDeviation, dev);
      Out.push_back(std::move(simple));
      return;
    }
  }
  Out.push_back(CloneCurve(C));
}

// ---- Measures of elements

// Five-point Gauss-Legendre on [A, B] of F.
template <class F>
double Gauss(double A, double B, F&& Fn) {
  static constexpr double x[5] = {0.0, -0.5384693101056831, 0.5384693101056831, -0.9061798459386640,
                                  0.9061798459386640};
  static constexpr double w[5] = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665, 0.2369268850561891,
                                  0.2369268850561891};
  const double h = 0.5 * (B - A), m = 0.5 * (A + B);
  double s = 0.0;
  for (int i = 0; i < 5; ++i) s += w[i] * Fn(m + h * x[i]);
  return s * h;
}

constexpr int kPiecesPerSpan = 8;

// Area term (the integral of x dy - y dx, halved) and length of one element.
void Measure(const TGeCurve2D& C, double& AreaTerm, double& Length) {
  if (const auto* l = dynamic_cast<const TGeLine2D*>(&C)) {
    const TPoint2D a = l->GetLineStart(), b = l->GetLineEnd();
    AreaTerm = 0.5 * a.CrossMul(b);
    Length = Dist(a, b);
    return;
  }
  if (const auto* a = dynamic_cast<const TGeCircularArc2D*>(&C)) {
    const TArc2D& arc = a->GetArc();
    const double th = arc.GetSweepAngle(), r = arc.Radius;
    AreaTerm = 0.5 * arc.StartPoint().CrossMul(arc.EndPoint()) + 0.5 * r * r * (th - std::sin(th));
    Length = r * std::fabs(th);
    return;
  }
  AreaTerm = Length = 0.0;
  const std::vector<double> b = SmoothBreaks(C);
  for (std::size_t i = 0; i + 1 < b.size(); ++i) {
    for (int k = 0; k < kPiecesPerSpan; ++k) {
      const double u0 = b[i] + (b[i + 1] - b[i]) * k / kPiecesPerSpan;
      const double u1 = b[i] + (b[i + 1] - b[i]) * (k + 1) / kPiecesPerSpan;
      AreaTerm += Gauss(u0, u1, [&](double t) {
        TPoint2D d;
        const TPoint2D p = C.EvalPoint(t, d);
        return 0.5 * p.CrossMul(d);
      });
      Length += Gauss(u0, u1, [&](double t) {
        TPoint2D d;
        C.EvalPoint(t, d);
        return std::hypot(d.X, d.Y);
      });
    }
  }
}

// Points along the element after its start, its end included, within a chord error near
// Chord of the true shape.
void Flatten(const TGeCurve2D& C, double Chord, TDynPoints2D& Out) {
  if (const auto* l = dynamic_cast<const TGeLine2D*>(&C)) {
    Out.push_back(l->GetLineEnd());
    return;
  }
  if (const auto* a = dynamic_cast<const TGeCircularArc2D*>(&C)) {
    const TArc2D& arc = a->GetArc();
    const double step = arc.Radius > Chord ? 2.0 * std::acos(1.0 - Chord / arc.Radius) : M_PI / 2;
    const int n = std::clamp(static_cast<int>(std::ceil(std::fabs(arc.GetSweepAngle()) / step)), 1, 256);
    for (int k = 1; k <= n; ++k) Out.push_back(arc.EvalPoint(static_cast<double>(k) / n));
    return;
  }
  const std::vector<double> b = SmoothBreaks(C);
  for (std::size_t i = 0; i + 1 < b.size(); ++i)
    for (int k = 1; k <= 4 * kPiecesPerSpan; ++k)
      Out.push_back(C.EvalPoint(b[i] + (b[i + 1] - b[i]) * k / (4 * kPiecesPerSpan)));
}

// Ray crossing on a closed polygon.
bool InsidePolygon(const TDynPoints2D& Poly, const TPoint2D& P) {
  bool in = false;
  for (std::size_t i = 0, j = Poly.size() - 1; i < Poly.size(); j = i++) {
    const TPoint2D& a = Poly[i];
    const TPoint2D& b = Poly[j];
    if ((a.Y > P.Y) != (b.Y > P.Y) && P.X < (b.X - a.X) * (P.Y - a.Y) / (b.Y - a.Y) + a.X) in = !in;
  }
  return in;
}

// Count points along the polyline at the middles of Count equal stretches of its length.
TDynPoints2D SpreadPoints(const TDynPoints2D& Poly, int Count) {
  std::vector<double> at(Poly.size(), 0.0);
  for (std::size_t i = 1; i < Poly.size(); ++i) at[i] = at[i - 1] + Dist(Poly[i - 1], Poly[i]);
  TDynPoints2D out;
  std::size_t seg = 1;
  for (int k = 0; k < Count && at.back() > 0.0; ++k) {
    const double s = (k + 0.5) / Count * at.back();
    while (seg + 1 < Poly.size() && at[seg] < s) ++seg;
    const double len = at[seg] - at[seg - 1];
    const double f = len > 0.0 ? (s - at[seg - 1]) / len : 0.0;
    out.push_back(Poly[seg - 1] + (Poly[seg] - Poly[seg - 1]) * f);
  }
  return out;
}

// ---- Free-form curves into lines and arcs

constexpr std::size_t kMaxBezierArcs = 64;
// Halvings the arc fitting may spend: a curve TCurveToArcs::MaxPieces and a few more per smooth
// piece, a drawing kDrawingHalvings and a few more per piece of its free-form curves. Real
// drawings need a few hundred at 1e-4; one that asks for far more (a tolerance near the
// rounding of huge coordinates) is answered in time linear in its size, its curves left
// coarser and reported as such.
constexpr int kDrawingHalvings = 1 << 13;
constexpr int kHalvingsPerPiece = 4;

// Lines and arcs for one free-form element within Tol; Deviation receives what was measured.
// Its pieces share the Halvings the fit may spend, each taking an even share of what is left,
// so that a curve too fine for its budget is left evenly coarse rather than chorded at its end.
// Spent tells whether a piece strayed with no halvings left.
void FitElement(const TGeCurve2D& C, double Tol, std::vector<TCurvePtr>& Out, double& Deviation, int& Halvings,
                bool& Spent) {
  std::vector<TArc2D> arcs;
  Deviation = 0.0;
  const auto fit = [&](const TGeCurve2D& Exact, double From, double To, std::size_t PiecesLeft) {
    int share = Halvings / static_cast<int>(std::max<std::size_t>(PiecesLeft, 1));
    const int had = share;
    const double dev = TCurveToArcs::Fit(Exact, From, To, Tol, arcs, share);
    Deviation = std::max(Deviation, dev);
    Halvings -= had - share;
    Spent = Spent || (share <= 0 && dev > Tol);
  };
  // A polynomial cubic goes through the kernel's Bezier arc fit, checked here on the Bezier;
  // any other piece, or a fit that strays, through biarcs on the exact curve.
  auto cubic = [&](const TBezierSegment2D& Seg, const TGeCurve2D& Exact, double From, double To, std::size_t PiecesLeft) {
    const TGeBezier2D bez(Seg);
    const TGeInterval iv = bez.GetInterval();
    std::unique_ptr<TList<TArc2D>> fitted = TCadBasicAlgo::Bezier2Arcs(Seg, Tol);
    std::vector<TArc2D> got;
    if (fitted)
      for (int i = 0; i < fitted->Count(); ++i) got.push_back((*fitted)[i]);
    // The chain is measured against the whole Bezier, element by element for each sample: a
    // long chain (a tolerance near the coordinates' rounding) goes to the biarc fit instead,
    // which measures stretch by stretch.
    const double dev = got.empty() || got.size() > kMaxBezierArcs
                           ? HUGE_VAL
                           : TCurveToArcs::Deviation(bez, iv.Lower, iv.Upper, got, 64 * static_cast<int>(got.size()));
    if (dev <= Tol) {
      arcs.insert(arcs.end(), got.begin(), got.end());
      Deviation = std::max(Deviation, dev);
    } else {
      fit(Exact, From, To, PiecesLeft);
    }
  };
  if (const auto* bz = dynamic_cast<const TGeBezier2D*>(&C)) {
    const TGeInterval iv = C.GetInterval();
    cubic(bz->GetBezierSegment(), C, iv.Lower, iv.Upper, 1);
  } else if (const auto* sp = dynamic_cast<const TGeSpline2D*>(&C); sp && !sp->GetIsRational() && sp->GetDegree() <= 3) {
    const TPoint3DLists pieces = sp->DecomposeCurve();
    const std::vector<double> b = SmoothBreaks(C);
    const std::size_t n = b.size() - 1;
    if (pieces.size() != n) {
      for (std::size_t i = 0; i < n; ++i) fit(C, b[i], b[i + 1], n - i);
    }
    for (std::size_t i = 0; i < pieces.size() && pieces.size() == n; ++i) {
      const TDynPoints3D& q = pieces[i];
      TBezierSegment2D seg;
      if (q.size() == 4) {
        seg = TBezierSegment2D({q[0].X, q[0].Y}, {q[1].X, q[1].Y}, {q[2].X, q[2].Y}, {q[3].X, q[3].Y});
      } else if (q.size() == 3) {  // raised to a cubic
        const TPoint2D a(q[0].X, q[0].Y), m(q[1].X, q[1].Y), e(q[2].X, q[2].Y);
        seg = TBezierSegment2D(a, a + (m - a) * (2.0 / 3.0), e + (m - e) * (2.0 / 3.0), e);
      } else if (q.size() == 2) {
        seg = TBezierSegment2D({q[0].X, q[0].Y}, {q[1].X, q[1].Y});
      } else {
        fit(C, b[i], b[i + 1], n - i);
        continue;
      }
      cubic(seg, C, b[i], b[i + 1], n - i);
    }
  } else {
    const std::vector<double> b = SmoothBreaks(C);
    for (std::size_t i = 0; i + 1 < b.size(); ++i) fit(C, b[i], b[i + 1], b.size() - 1 - i);
  }
  for (const TArc2D& a : arcs) {
    if (Dist(a.StartPoint(), a.EndPoint()) == 0.0 && (a.IsLine || std::fabs(a.GetSweepAngle()) < M_PI)) continue;
    Out.push_back(ArcElement(a));
  }
}

bool IsLineOrArc(const TGeCurve2D& C) {
  return dynamic_cast<const TGeLine2D*>(&C) != nullptr || dynamic_cast<const TGeCircularArc2D*>(&C) != nullptr;
}

}  // namespace

std::string ElementKind(const TGeCurve2D& C) {
  if (dynamic_cast<const TGeLine2D*>(&C)) return "line";
  if (const auto* a = dynamic_cast<const TGeCircularArc2D*>(&C)) return a->IsFullCircle() ? "circle" : "arc";
  if (dynamic_cast<const TGeSpline2D*>(&C)) return "spline";
  if (dynamic_cast<const TGeBezier2D*>(&C)) return "bezier";
  return "curve";
}

int TProfileResult::ExitCode() const {
  return Open.empty() && !Strayed ? 0 : 1;
}

TProfileResult ProfileDrawing(const TDxfDrawing& Drawing, const TProfileOptions& Options, double ParseSeconds) {
  TProfileResult R;
  R.Read = Drawing.Read;
  R.Ignored = Drawing.Ignored;
  R.InsUnits = Drawing.InsUnits;
  R.Units = Drawing.UnitsName;
  R.Seconds.emplace_back("parse", ParseSeconds);

  // The drawing's size sets the default tolerances.
  TClock::time_point t = TClock::now();
  for (const TDxfPiece& p : Drawing.Pieces) {
    if (!p.Curve) continue;
    if (dynamic_cast<const TGeSpline2D*>(p.Curve.get())) {
      // The control polygon holds a spline; its box needs no measuring of the curve.
      R.Box.Extend(static_cast<const TGeSpline2D&>(*p.Curve).CtrlPointsBoundBlock());
    } else {
      R.Box.Extend(p.Curve->BoundBlock());
    }
  }
  const double diag = R.Box.IsValid() ? std::hypot(R.Box.Width(), R.Box.Height()) : 0.0;
  const double size = diag > 0.0 ? diag : 1.0;
  R.JoinTol = Options.JoinTol > 0.0 ? Options.JoinTol : 1e-6 * size;
  R.RecognitionTol = Options.ArcTol;  // 0: the spline's own judgement, relative to its size
  // An output DXF of lines and arcs alone, without a tolerance asked for: 1e-5 of the
  // drawing's diagonal, far below any cutting kerf.
  R.ArcTol = Options.ArcTol > 0.0 ? Options.ArcTol : (Options.WantArcs ? 1e-5 * size : 0.0);

  // Recognition turns splines into lines and arcs before joining, so that their ends match
  // exactly the curves they replace.
  std::vector<std::vector<TCurvePtr>> pieces;
  pieces.reserve(Drawing.Pieces.size());
  for (const TDxfPiece& p : Drawing.Pieces) {
    if (!p.Curve) continue;
    // A line of no length, or a circle that is a point, closes nothing: dropped and counted.
    const TRect2D pb = dynamic_cast<const TGeSpline2D*>(p.Curve.get())
                           ? static_cast<const TGeSpline2D&>(*p.Curve).CtrlPointsBoundBlock()
                           : p.Curve->BoundBlock();
    if (std::hypot(pb.Width(), pb.Height()) <= R.JoinTol) {
      ++R.Degenerate;
      continue;
    }
    std::vector<TCurvePtr> one;
    AddElements(*p.Curve, one, R.RecognitionTol, R);
    if (!one.empty()) pieces.push_back(std::move(one));
  }
  R.Seconds.emplace_back("recognise", Seconds(t));

  // A polyline joins as one piece: a line between its ends stands for it, as joining looks
  // at ends alone; a closed one is then a contour of its own.
  t = TClock::now();
  std::vector<TCurvePtr> proxies;
  std::vector<const TGeCurve2D*> raw;
  raw.reserve(pieces.size());
  for (const std::vector<TCurvePtr>& p : pieces) {
    if (p.size() == 1) {
      raw.push_back(p.front().get());
    } else {
      proxies.push_back(std::make_unique<TGeLine2D>(p.front()->GetStartPoint(), p.back()->GetEndPoint()));
      raw.push_back(proxies.back().get());
    }
  }
  const std::vector<TCurveChain> chains = JoinCurveEnds(raw, R.JoinTol);
  R.Contours.resize(chains.size());
  for (std::size_t c = 0; c < chains.size(); ++c) {
    TProfileContour& k = R.Contours[c];
    k.Closed = chains[c].Closed;
    for (const TCurveChainItem& it : chains[c].Items) {
      std::vector<TCurvePtr>& parts = pieces[static_cast<std::size_t>(it.Index)];
      if (it.Reversed) {
        std::reverse(parts.begin(), parts.end());
        for (TCurvePtr& e : parts) e->ReverseDir();
      }
      for (TCurvePtr& e : parts) k.Elements.push_back(std::move(e));
    }
  }
  R.Seconds.emplace_back("join", Seconds(t));

  // Free-form curves into lines and arcs.
  t = TClock::now();
  const double fitTol = R.ArcTol;
  if (fitTol > 0.0) {
    long long halvings = kDrawingHalvings;
    for (const TProfileContour& k : R.Contours)
      for (const TCurvePtr& e : k.Elements)
        if (!IsLineOrArc(*e)) halvings += kHalvingsPerPiece * static_cast<long long>(SmoothBreaks(*e).size() - 1);
    for (TProfileContour& k : R.Contours) {
      std::vector<TCurvePtr> out;
      for (TCurvePtr& e : k.Elements) {
        if (IsLineOrArc(*e)) {
          out.push_back(std::move(e));
          continue;
        }
        double dev = 0.0;
        const std::size_t before = out.size();
        const long long allowed = TCurveToArcs::MaxPieces + kHalvingsPerPiece * static_cast<long long>(SmoothBreaks(*e).size() - 1);
        int mine = static_cast<int>(std::min({allowed, halvings, static_cast<long long>(INT_MAX)}));
        const int had = mine;
        FitElement(*e, fitTol, out, dev, mine, R.FitBudgetSpent);
        halvings -= had - mine;
        ++R.CurvesFitted;
        R.FitElements += static_cast<int>(out.size() - before);
        R.MaxDeviation = std::max(R.MaxDeviation, dev);
        R.Strayed = R.Strayed || dev > fitTol;
      }
      k.Elements = std::move(out);
    }
  }
  R.Seconds.emplace_back("arcs", Seconds(t));

  // Measures, flat polygons and the containment tree.
  t = TClock::now();
  const double chord = 1e-4 * size;
  std::vector<int> closed;
  for (std::size_t c = 0; c < R.Contours.size(); ++c) {
    TProfileContour& k = R.Contours[c];
    if (!k.Elements.empty()) k.Flat.push_back(k.Elements.front()->GetStartPoint());
    for (const TCurvePtr& e : k.Elements) {
      double a = 0.0, l = 0.0;
      Measure(*e, a, l);
      k.Area += a;
      k.Length += l;
      Flatten(*e, chord, k.Flat);
    }
    for (const TPoint2D& p : k.Flat) k.Box.Extend(p);
    if (k.Closed) {
      closed.push_back(static_cast<int>(c));
    } else {
      k.Area = 0.0;
    }
  }
  // Larger contours first, so that a contour's possible parents are all seen before it.
  std::stable_sort(closed.begin(), closed.end(), [&](int a, int b) {
    return std::fabs(R.Contours[static_cast<std::size_t>(a)].Area) > std::fabs(R.Contours[static_cast<std::size_t>(b)].Area);
  });
  for (std::size_t i = 0; i < closed.size(); ++i) {
    TProfileContour& k = R.Contours[static_cast<std::size_t>(closed[i])];
    if (k.Flat.size() < 2) continue;
    // An exact copy of a contour just before it in the order (drawings repeat entities) has
    // that contour's place: every larger contour it meets is the same, and equal areas do not
    // hold each other.
    bool copied = false;
    for (std::size_t j = i; j-- > 0 && !copied && i - j <= 64;) {
      const TProfileContour& o = R.Contours[static_cast<std::size_t>(closed[j])];
      if (std::fabs(o.Area) != std::fabs(k.Area)) break;
      if (o.Flat == k.Flat) {
        k.Parent = o.Parent;
        k.Depth = o.Depth;
        copied = true;
      }
    }
    if (copied) continue;
    // Points evenly spread by length, off the joints where contours touch: a contour that
    // crosses another lies inside it when most of its length does.
    const TDynPoints2D probes = SpreadPoints(k.Flat, 16);
    for (std::size_t j = i; j-- > 0;) {
      const TProfileContour& o = R.Contours[static_cast<std::size_t>(closed[j])];
      if (o.Box.XMin > k.Box.XMax || o.Box.YMin > k.Box.YMax || o.Box.XMax < k.Box.XMin || o.Box.YMax < k.Box.YMin)
        continue;
      if (std::fabs(o.Area) <= std::fabs(k.Area)) continue;
      // The majority must lie in o's box before any lies in o; and the count stops once the
      // majority is decided either way (stacks of overlapping copies test every pair).
      const std::size_t need = probes.size() / 2 + 1;
      std::size_t inBox = 0;
      for (const TPoint2D& p : probes) inBox += o.Box.XMin <= p.X && p.X <= o.Box.XMax && o.Box.YMin <= p.Y && p.Y <= o.Box.YMax;
      if (inBox < need) continue;
      std::size_t in = 0, out = 0;
      for (std::size_t q = 0; q < probes.size() && in < need && out + need <= probes.size(); ++q) {
        if (InsidePolygon(o.Flat, probes[q])) {
          ++in;
        } else {
          ++out;
        }
      }
      if (in >= need) {
        // The smallest enclosing contour is the direct parent: scanned from the smallest up.
        k.Parent = closed[j];
        k.Depth = o.Depth + 1;
        break;
      }
    }
  }
  for (const int c : closed) {
    const TProfileContour& k = R.Contours[static_cast<std::size_t>(c)];
    if (k.Depth % 2 == 0) {
      TProfilePart part;
      part.Outline = c;
      part.Area = std::fabs(k.Area);
      R.Parts.push_back(part);
    }
  }
  std::map<int, std::size_t> partOf;
  for (std::size_t p = 0; p < R.Parts.size(); ++p) partOf[R.Parts[p].Outline] = p;
  for (const int c : closed) {
    const TProfileContour& k = R.Contours[static_cast<std::size_t>(c)];
    if (k.Depth % 2 == 1) {
      TProfilePart& part = R.Parts[partOf.at(k.Parent)];
      part.Holes.push_back(c);
      part.Area -= std::fabs(k.Area);
    }
  }
  std::stable_sort(R.Parts.begin(), R.Parts.end(), [](const TProfilePart& a, const TProfilePart& b) { return a.Area > b.Area; });

  // Open contours and their gaps.
  for (std::size_t c = 0; c < R.Contours.size(); ++c) {
    const TProfileContour& k = R.Contours[c];
    if (k.Closed || k.Elements.empty()) continue;
    R.Open.push_back({static_cast<int>(c), k.Elements.front()->GetStartPoint(), k.Elements.back()->GetEndPoint(), 0.0});
  }
  for (TOpenContour& o : R.Open) {
    double gap = HUGE_VAL;
    for (const TOpenContour& q : R.Open) {
      if (q.Contour == o.Contour) continue;
      for (const TPoint2D& a : {o.Start, o.End})
        for (const TPoint2D& b : {q.Start, q.End}) gap = std::min(gap, Dist(a, b));
    }
    o.Gap = R.Open.size() == 1 ? Dist(o.Start, o.End) : gap;
  }
  R.Seconds.emplace_back("tree", Seconds(t));
  return R;
}

// ---- Reports

namespace {

std::map<std::string, int> SegmentKinds(const TProfileResult& R, const TProfilePart& P) {
  std::map<std::string, int> kinds;
  auto add = [&](int c) {
    for (const TCurvePtr& e : R.Contours[static_cast<std::size_t>(c)].Elements) ++kinds[ElementKind(*e)];
  };
  add(P.Outline);
  for (const int h : P.Holes) add(h);
  return kinds;
}

std::string Counts(const std::map<std::string, int>& M) {
  std::string s;
  for (const auto& [k, v] : M) s.append(s.empty() ? "" : ", ").append(Format("%s %d", k, v));
  return s.empty() ? "none" : s;
}

std::string Box(const TRect2D& B) { return Format("(%g, %g)-(%g, %g)", B.XMin, B.YMin, B.XMax, B.YMax); }

}  // namespace

void WriteProfileText(std::ostream& Out, const TProfileResult& R) {
  Out << "drawing: " << R.File << "\n";
  Out << "entities read: " << Counts(R.Read) << "\n";
  Out << "entities ignored: " << Counts(R.Ignored) << "\n";
  Out << Format("units: %s ($INSUNITS %d)\n", R.Units.empty() ? "unitless" : R.Units, R.InsUnits);
  Out << Format("tolerances: join %g, recognition %s, arcs %s\n", R.JoinTol,
                R.RecognitionTol > 0.0 ? Format("%g", R.RecognitionTol) : std::string("relative to each spline's size"),
                R.ArcTol > 0.0 ? Format("%g", R.ArcTol) : std::string("not asked"));
  if (R.Degenerate) Out << Format("pieces of no size dropped: %d\n", R.Degenerate);
  Out << Format("contours: %d, %d closed, %d open\n", static_cast<int>(R.Contours.size()),
                static_cast<int>(R.Contours.size() - R.Open.size()), static_cast<int>(R.Open.size()));
  Out << Format("parts: %d\n", static_cast<int>(R.Parts.size()));
  for (std::size_t p = 0; p < R.Parts.size() && p < 20; ++p) {
    const TProfilePart& part = R.Parts[p];
    const TProfileContour& o = R.Contours[static_cast<std::size_t>(part.Outline)];
    Out << Format("  #%d: area %.10g, outline length %.10g, holes %d, box %s, segments: %s\n", static_cast<int>(p),
                  part.Area, o.Length, static_cast<int>(part.Holes.size()), Box(o.Box), Counts(SegmentKinds(R, part)));
  }
  if (R.Parts.size() > 20) Out << Format("  ... and %d more\n", static_cast<int>(R.Parts.size() - 20));
  Out << Format("open contours: %d\n", static_cast<int>(R.Open.size()));
  for (std::size_t i = 0; i < R.Open.size() && i < 20; ++i) {
    const TOpenContour& o = R.Open[i];
    Out << Format("  from (%g, %g) to (%g, %g), gap %g\n", o.Start.X, o.Start.Y, o.End.X, o.End.Y, o.Gap);
  }
  if (R.Open.size() > 20) Out << Format("  ... and %d more\n", static_cast<int>(R.Open.size() - 20));
  Out << Format("splines: %d read, %d recognised as lines, %d as arcs\n", R.SplinesRead, R.SplinesAsLines,
                R.SplinesAsArcs);
  Out << Format("curves turned into arcs: %d, into %d elements\n", R.CurvesFitted, R.FitElements);
  if (R.FitBudgetSpent) Out << "  the fitting spent the halvings allowed; what it left coarse is in the largest deviation\n";
  Out << Format("largest deviation: %g\n", R.MaxDeviation);
  std::string times;
  double total = 0.0;
  for (const auto& [phase, s] : R.Seconds) {
    times.append(times.empty() ? "" : ", ").append(Format("%s %.3f ms", phase, s * 1e3));
    total += s;
  }
  Out << "time: " << times << Format("; total %.3f ms\n", total * 1e3);
  Out << "verdict: "
      << (R.ExitCode() == 0 ? "every contour closed" : (R.Open.empty() ? "a conversion strayed beyond its tolerance" : "open contours remain"))
      << "\n";
}

nlohmann::json ProfileToJson(const TProfileResult& R) {
  using nlohmann::json;
  json j;
  j["file"] = R.File;
  j["entities"] = R.Read;
  j["ignored"] = R.Ignored;
  j["units"] = {{"insunits", R.InsUnits}, {"name", R.Units.empty() ? "unitless" : R.Units}};
  j["tolerances"] = {{"join", R.JoinTol}, {"recognition", R.RecognitionTol}, {"arcs", R.ArcTol}};
  json parts = json::array();
  for (const TProfilePart& p : R.Parts) {
    const TProfileContour& o = R.Contours[static_cast<std::size_t>(p.Outline)];
    parts.push_back({{"area", p.Area},
                     {"outline_length", o.Length},
                     {"holes", p.Holes.size()},
                     {"box", {o.Box.XMin, o.Box.YMin, o.Box.XMax, o.Box.YMax}},
                     {"segments", SegmentKinds(R, p)}});
  }
  j["parts"] = parts;
  json open = json::array();
  for (const TOpenContour& o : R.Open)
    open.push_back({{"start", {o.Start.X, o.Start.Y}}, {"end", {o.End.X, o.End.Y}}, {"gap", o.Gap}});
  j["open_contours"] = open;
  j["splines"] = {{"read", R.SplinesRead},
                  {"as_lines", R.SplinesAsLines},
                  {"as_arcs", R.SplinesAsArcs},
                  {"fitted", R.CurvesFitted},
                  {"elements", R.FitElements},
                  {"budget_spent", R.FitBudgetSpent}};
  j["max_deviation"] = R.MaxDeviation;
  j["dropped"] = R.Degenerate;
  json secs = json::object();
  for (const auto& [phase, s] : R.Seconds) secs[phase] = s;
  j["seconds"] = secs;
  j["exit_code"] = R.ExitCode();
  return j;
}

void WriteProfileDxf(std::ostream& Out, const TProfileResult& R) {
  auto pair = [&](int Code, const std::string& Value) { Out << Code << "\n" << Value << "\n"; };
  auto num = [&](int Code, double V) { pair(Code, Format("%.17g", V)); };
  int handle = 0x100;
  auto nextHandle = [&] { return Format("%X", handle++); };
  pair(0, "SECTION");
  pair(2, "HEADER");
  pair(9, "$ACADVER");
  pair(1, "AC1015");
  pair(9, "$INSUNITS");
  pair(70, Format("%d", R.InsUnits));
  pair(9, "$HANDSEED");
  pair(5, "FFFFF");
  pair(0, "ENDSEC");
  pair(0, "SECTION");
  pair(2, "TABLES");
  pair(0, "TABLE");
  pair(2, "LAYER");
  pair(5, "2");
  pair(330, "0");
  pair(100, "AcDbSymbolTable");
  pair(70, "3");
  const std::pair<const char*, int> layers[] = {{"0", 7}, {"PARTS", 5}, {"HOLES", 1}};
  for (const auto& [name, colour] : layers) {
    pair(0, "LAYER");
    pair(5, nextHandle());
    pair(330, "2");
    pair(100, "AcDbSymbolTableRecord");
    pair(100, "AcDbLayerTableRecord");
    pair(2, name);
    pair(70, "0");
    pair(62, Format("%d", colour));
    pair(6, "CONTINUOUS");
  }
  pair(0, "ENDTAB");
  pair(0, "ENDSEC");
  pair(0, "SECTION");
  pair(2, "ENTITIES");
  for (const TProfileContour& k : R.Contours) {
    if (!k.Closed || k.Elements.empty()) continue;
    // Vertices with the bulge of the element that leaves them; a full circle as two halves.
    std::vector<std::pair<TPoint2D, double>> verts;
    bool exact = true;
    for (const TCurvePtr& e : k.Elements) {
      if (const auto* l = dynamic_cast<const TGeLine2D*>(e.get())) {
        verts.emplace_back(l->GetLineStart(), 0.0);
      } else if (const auto* a = dynamic_cast<const TGeCircularArc2D*>(e.get())) {
        const TArc2D& arc = a->GetArc();
        if (std::fabs(arc.GetSweepAngle()) > M_PI) {
          const double half = std::tan(arc.GetSweepAngle() / 8.0);
          verts.emplace_back(arc.StartPoint(), half);
          verts.emplace_back(arc.EvalPoint(0.5), half);
        } else {
          verts.emplace_back(arc.StartPoint(), arc.Bulge());
        }
      } else {
        exact = false;
      }
    }
    if (!exact) {
      verts.clear();
      for (std::size_t i = 0; i + 1 < k.Flat.size(); ++i) verts.emplace_back(k.Flat[i], 0.0);
    }
    if (verts.size() < 2) continue;
    pair(0, "LWPOLYLINE");
    pair(5, nextHandle());
    pair(100, "AcDbEntity");
    pair(8, k.Depth % 2 == 0 ? "PARTS" : "HOLES");
    pair(100, "AcDbPolyline");
    pair(90, Format("%d", static_cast<int>(verts.size())));
    pair(70, "1");
    for (const auto& [p, b] : verts) {
      num(10, p.X);
      num(20, p.Y);
      if (b != 0.0) num(42, b);
    }
  }
  pair(0, "ENDSEC");
  pair(0, "EOF");
}

void WriteProfileSvg(std::ostream& Out, const TProfileResult& R) {
  TRect2D box = R.Box;
  if (!box.IsValid()) box = TRect2D(0, 0, 1, 1);
  const double w = std::max(box.Width(), 1e-9);
  const double h = std::max(box.Height(), 1e-9);
  const double margin = 0.02 * std::max(w, h);
  const double stroke = 0.0015 * std::max(w, h);
  const double fs = 0.022 * w;
  const double legend = 5.6 * fs;
  const double vx = box.XMin - margin;
  const double vy = -box.YMax - margin;
  const double vw = w + 2 * margin;
  const double vh = h + 2 * margin + legend;
  auto path = [](const TDynPoints2D& Ring, bool Close) {
    std::string d;
    for (std::size_t k = 0; k < Ring.size(); ++k) d += Format("%s%.6g %.6g ", k ? "L" : "M", Ring[k].X, Ring[k].Y);
    if (Close) d += "Z";
    return d;
  };
  Out << Format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"%.6g %.6g %.6g %.6g\" width=\"1200\" height=\"%d\">\n", vx,
      vy, vw, vh, static_cast<int>(std::clamp(1200.0 * vh / vw, 1.0, 12000.0)));
  Out << Format("<rect x=\"%.6g\" y=\"%.6g\" width=\"%.6g\" height=\"%.6g\" fill=\"white\"/>\n", vx, vy, vw, vh);
  // Drawing y points up; SVG's points down.
  Out << "<g transform=\"scale(1,-1)\" stroke-linejoin=\"round\">\n";
  for (std::size_t p = 0; p < R.Parts.size(); ++p) {
    const TProfilePart& part = R.Parts[p];
    std::string d = path(R.Contours[static_cast<std::size_t>(part.Outline)].Flat, true);
    for (const int hole : part.Holes) d.append(" ").append(path(R.Contours[static_cast<std::size_t>(hole)].Flat, true));
    Out << Format(
        "<path d=\"%s\" fill=\"#a9c8e8\" fill-rule=\"evenodd\" stroke=\"#3a5f85\" stroke-width=\"%.6g\"><title>part #%d: "
        "area %g, %d holes</title></path>\n",
        d, stroke, static_cast<int>(p), part.Area, static_cast<int>(part.Holes.size()));
    for (const int hole : part.Holes)
      Out << Format("<path d=\"%s\" fill=\"none\" stroke=\"#b05a00\" stroke-width=\"%.6g\"/>\n",
                    path(R.Contours[static_cast<std::size_t>(hole)].Flat, true), stroke);
  }
  for (const TOpenContour& o : R.Open) {
    Out << Format("<path d=\"%s\" fill=\"none\" stroke=\"#e00000\" stroke-width=\"%.6g\"/>\n",
                  path(R.Contours[static_cast<std::size_t>(o.Contour)].Flat, false), 2.0 * stroke);
    for (const TPoint2D& p : {o.Start, o.End})
      Out << Format("<circle cx=\"%.6g\" cy=\"%.6g\" r=\"%.6g\" fill=\"none\" stroke=\"#e00000\" stroke-width=\"%.6g\"><title>gap %g</title></circle>\n",
                    p.X, p.Y, 6.0 * stroke, stroke, o.Gap);
  }
  Out << "</g>\n";
  const double lx = vx + margin;
  double ly = -box.YMin + margin + fs * 1.2;
  auto line = [&](const std::string& Text, const char* Colour) {
    Out << Format("<text x=\"%.6g\" y=\"%.6g\" font-family=\"sans-serif\" font-size=\"%.6g\" fill=\"%s\">%s</text>\n",
                  lx, ly, fs, Colour, Text);
    ly += fs * 1.3;
  };
  int holes = 0;
  for (const TProfilePart& p : R.Parts) holes += static_cast<int>(p.Holes.size());
  line(Format("%d parts (blue), %d holes (brown outline)", static_cast<int>(R.Parts.size()), holes), "#222");
  line(Format("%d open contours (red), ends circled", static_cast<int>(R.Open.size())), "#222");
  line(Format("splines: %d read, %d as arcs, %d as lines; largest deviation %g", R.SplinesRead, R.SplinesAsArcs,
              R.SplinesAsLines, R.MaxDeviation),
       "#222");
  line(R.ExitCode() == 0 ? "verdict: every contour closed" : "verdict: NOT clean", R.ExitCode() == 0 ? "#1a7f1a" : "#c00000");
  Out << "</svg>\n";
}

}  // namespace orvane::tool
