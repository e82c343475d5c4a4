#include "orvane/mixed/LABPolyline.h"

#include <cmath>

#include "orvane/foundation/Enums.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane {

namespace {

constexpr double PointTol = 1e-6;

bool IsZeroParam(double T) { return std::abs(T) <= PointTol; }

// A box that surely holds the segment, without trigonometry: a line's ends, an arc's whole
// circle, a Bezier's control points.
TRect2D HullBox(const TLABSegline& S) {
  TRect2D box = TRect2D::CreateNormal(S.P1, S.P4);
  if (S.SegType == TSegType::stArc) {
    const double r = S.P1.DistanceTo(S.P2);
    box.Extend(TRect2D(S.P2.X - r, S.P2.Y - r, S.P2.X + r, S.P2.Y + r));
  } else if (S.SegType == TSegType::stBezier) {
    box.Extend(S.P2);
    box.Extend(S.P3);
  }
  return box;
}

// All of Box lies strictly on one side of the infinite line, farther than the tolerance.
bool IsOneSide(const TLine2D& Line, const TRect2D& Box) {
  const TPoint2D d = Line.Vector();
  const double margin = PointTol * d.Mag();
  int above = 0;
  int below = 0;
  for (const TPoint2D& c : {Box.MinPoint(), Box.MaxPoint(), Box.XMinYMax(), Box.XMaxYMin()}) {
    const double side = d.CrossMul(c - Line.P1);
    above += side > margin;
    below += side < -margin;
  }
  return above == 4 || below == 4;
}

}  // namespace

TLABPolyline::TLABPolyline(const TVPolyline2D* Polyline) {
  if (Polyline == nullptr) return;
  const TDynPoints2D& pts = Polyline->Points();
  for (std::size_t i = 1; i < pts.size(); ++i) TList<TLABSegline>::Add(TLABSegline::CreateLine(pts[i - 1], pts[i]));
}

std::unique_ptr<TLABPolyline> TLABPolyline::New() const { return std::make_unique<TLABPolyline>(); }

std::unique_ptr<IVGeometry2D> TLABPolyline::Clone() const {
  std::unique_ptr<TLABPolyline> copy = New();
  copy->AddRange(*this);
  return copy;
}

int TLABPolyline::Add(const TLABSegline& Seg) {
  if (IsEmpty() || FItems.back().P4.Equals(Seg.P1, PointTol)) return TList<TLABSegline>::Add(Seg);
  TLABSegline moved = Seg;
  moved.P1 = FItems.back().P4;
  return TList<TLABSegline>::Add(moved);
}

void TLABPolyline::AddRange(const TLABPolyline& LABPolyline) {
  // A copy first, so that adding a polyline to itself sees its segments as they were.
  const std::vector<TLABSegline> segs = LABPolyline.List();
  for (const TLABSegline& s : segs) Add(s);
}

void TLABPolyline::AddRange(const std::vector<TLABSegline>& Segs) {
  const std::vector<TLABSegline> segs = Segs;  // Segs may be this list's own items
  for (const TLABSegline& s : segs) Add(s);
}

bool TLABPolyline::IsClosed(double Tol) const {
  return !IsEmpty() && FItems.front().P1.Equals(FItems.back().P4, Tol);
}

std::unique_ptr<TVPolyline2D> TLABPolyline::Sample(double ArcParamStep, double BezierParamStep) const {
  TDynPoints2D pts;
  for (const TLABSegline& s : FItems) {
    const std::unique_ptr<TVPolyline2D> part = s.Sample(s.SegType == TSegType::stArc ? ArcParamStep : BezierParamStep);
    pts.insert(pts.end(), part->Points().begin(), part->Points().end());
  }
  auto result = std::make_unique<TVPolyline2D>(std::move(pts));
  result->DeleteNeighbourClosed(false, PointTol);
  return result;
}

double TLABPolyline::Area() const {
  if (IsEmpty()) return 0.0;
  double sum = FItems.back().P4.CrossMul(FItems.front().P1);
  for (std::size_t i = 0; i < FItems.size(); ++i) {
    sum += internal::SweptArea2(FItems[i]);
    // A joint left open within tolerance is bridged straight, so the sum stays a closed one.
    if (i + 1 < FItems.size()) sum += FItems[i].P4.CrossMul(FItems[i + 1].P1);
  }
  return 0.5 * sum;
}

void TLABPolyline::SetIsClockwise(bool Value) {
  if (GetIsClockwise() != Value) Reverse();
}

TRect2D TLABPolyline::BoundBox() const {
  TRect2D box = TRect2D::Invalid();
  for (const TLABSegline& s : FItems) box.Extend(s.BoundBox());
  return box;
}

void TLABPolyline::SplitParam(double Param, const char* Where, int& I, double& T) const {
  if (!std::isfinite(Param) || CompareValue(Param, 0.0, PointTol) < 0 ||
      CompareValue(Param, static_cast<double>(Count()), PointTol) > 0) {
    throw Exception("[Error] TLABPolyline.%s: 参数不在作用域内", Where);
  }
  const double clamped = std::min(std::max(Param, 0.0), static_cast<double>(Count()));
  I = static_cast<int>(std::floor(clamped));
  T = std::min(std::max(Param - I, 0.0), 1.0);
}

TPoint2D TLABPolyline::LeftTangentVector(double Param) const {
  int i = 0;
  double t = 0.0;
  SplitParam(Param, "LeftTangentVector", i, t);
  const int n = Count();
  const bool closed = IsClosed(PointTol);
  auto openStart = [] { return Exception("[Error] TLABPolyline.LeftTangentVector: 不封闭混合多段线起点没有左切向量"); };
  int c = 0;
  for (;;) {
    if (!IsZeroParam(t)) {
      if (++c > n) throw Exception("[Error] TLABPolyline.LeftTangentVector: 混合多段线为一个点");
      if (i >= n) {
        i = n - 1;
        t = 1.0;
      }
      if (!FItems[static_cast<std::size_t>(i)].IsPoint()) break;
      // Stepping back over a point: from the first segment only across a closed seam.
      if (i == 0) {
        if (!closed) throw openStart();
        i = n - 1;
      } else {
        --i;
      }
      t = 1.0;
    } else if (i != 0) {
      --i;
      t = 1.0;
    } else if (closed) {
      i = n - 1;
      t = 1.0;
    } else {
      throw openStart();
    }
  }
  return FItems[static_cast<std::size_t>(i)].TangentVector(t);
}

TPoint2D TLABPolyline::RightTangentVector(double Param) const {
  int i = 0;
  double t = 0.0;
  SplitParam(Param, "RightTangentVector", i, t);
  const int n = Count();
  const bool closed = IsClosed(PointTol);
  auto openEnd = [] { return Exception("[Error] TLABPolyline.RightTangentVector: 不封闭混合多段线终点没有右切向量"); };
  int c = 0;
  for (;;) {
    if (!IsZeroParam(t) && i < n) {
      if (!FItems[static_cast<std::size_t>(i)].IsPoint()) break;
      // Stepping on over a point: from the last segment only across a closed seam.
      if (i + 1 == n && !closed) throw openEnd();
      i = (i + 1) % n;
      t = 0.0;
    } else if (i != n) {
      if (++c > n) throw Exception("[Error] TLABPolyline.RightTangentVector: 混合多段线为一个点");
      if (!FItems[static_cast<std::size_t>(i)].IsPoint()) break;
      ++i;
      t = 0.0;
    } else if (closed) {
      i = 0;
      t = 0.0;
    } else {
      throw openEnd();
    }
  }
  return FItems[static_cast<std::size_t>(i)].TangentVector(t);
}

std::unique_ptr<TList<TLine2D>> TLABPolyline::GetLines(double Tol) const {
  auto lines = std::make_unique<TList<TLine2D>>();
  for (const TLABSegline& s : FItems) {
    if (s.IsLine(Tol)) lines->Add(s.ToLine());
  }
  return lines;
}

void TLABPolyline::MergeCollinearLines() {
  int i = 0;
  int merged = 0;
  while (i < Count() - 1) {
    const TLABSegline a = FItems[static_cast<std::size_t>(i)];
    const TLABSegline b = FItems[static_cast<std::size_t>(i) + 1];
    const TPoint2D va = a.P4 - a.P1;
    const TPoint2D vb = b.P4 - b.P1;
    if (a.P4 == b.P1 && a.IsLine(PointTol) && b.IsLine(PointTol) && va.Mag() > 0.1 && vb.Mag() > 0.1 &&
        va.IsParallelTo(vb, 0.0001)) {
      SetItem(i, TLABSegline::CreateLine(a.P1, b.P4));
      Delete(i + 1);
      if (++merged < 5) continue;
    }
    ++i;
    merged = 0;
  }
}

int TLABPolyline::RelationWithPoint(const TPoint2D& Pt) const {
  if (IsEmpty()) return static_cast<int>(TShapeRelation::srOut);
  const TLABSegline closing = TLABSegline::CreateLine(FItems.back().P4, FItems.front().P1);
  if (internal::DistanceToSeg(closing, Pt) <= PointTol) return static_cast<int>(TShapeRelation::srOn);
  for (const TLABSegline& s : FItems) {
    if (internal::DistanceToSeg(s, Pt) <= PointTol) return static_cast<int>(TShapeRelation::srOn);
  }
  TFloatDynArray xs;
  internal::HorizontalCrossings(closing, Pt.Y, xs);
  for (std::size_t i = 0; i < FItems.size(); ++i) {
    const TLABSegline& s = FItems[i];
    const TRect2D box = s.BoundBox();
    if (box.YMin <= Pt.Y && Pt.Y <= box.YMax && box.XMax > Pt.X) internal::HorizontalCrossings(s, Pt.Y, xs);
    // Bridge a joint left open within tolerance, so the parity sees one closed outline.
    if (i + 1 < FItems.size()) internal::HorizontalCrossings(TLABSegline::CreateLine(s.P4, FItems[i + 1].P1), Pt.Y, xs);
  }
  int right = 0;
  for (double x : xs) {
    if (x > Pt.X) ++right;
  }
  return static_cast<int>(right % 2 == 1 ? TShapeRelation::srIn : TShapeRelation::srOut);
}

bool TLABPolyline::CrossWithSegLine(const TLine2D& SegLine, TList<TPoint2D>& CrossPoints,
                                    TList<TLine2D>& CrossLines) const {
  TList<TPoint2D> pts;
  TList<TLine2D> lines;
  std::vector<bool> atJoint;
  const int n = Count();
  const bool closed = IsClosed(PointTol);
  const TRect2D lineBox = SegLine.GetBoundBox().InflatedRect(PointTol, PointTol);
  for (int i = 0; i < n; ++i) {
    const TLABSegline& s = FItems[static_cast<std::size_t>(i)];
    // A segment whose hull lies apart from the line cannot meet it: skip the exact work.
    const TRect2D hull = HullBox(s);
    if (lineBox.RelationWithRect(hull, 0.0) == 0 || IsOneSide(SegLine, hull)) continue;
    const int before = pts.Count();
    s.CrossWithSegLine(SegLine, pts, lines, PointTol);
    const bool startJoint = i > 0 || closed;
    const bool endJoint = i < n - 1 || closed;
    for (int k = before; k < pts.Count(); ++k) {
      atJoint.push_back((startJoint && pts[k].Equals(s.P1, PointTol)) || (endJoint && pts[k].Equals(s.P4, PointTol)));
    }
  }
  bool found = false;
  for (const TLine2D& l : lines) {
    CrossLines.Add(l);
    found = true;
  }
  TList<TPoint2D> kept;
  for (int k = 0; k < pts.Count(); ++k) {
    const TPoint2D& p = pts[k];
    bool drop = false;
    // A point of a stretch already reported as an overlap adds nothing.
    for (const TLine2D& l : lines) {
      if (l.DistanceLimit(p) <= PointTol) {
        drop = true;
        break;
      }
    }
    // Both segments at a joint see a crossing there: keep the first report only.
    if (!drop && atJoint[static_cast<std::size_t>(k)]) {
      for (const TPoint2D& q : kept) {
        if (q.Equals(p, PointTol)) {
          drop = true;
          break;
        }
      }
    }
    if (drop) continue;
    kept.Add(p);
    CrossPoints.Add(p);
    found = true;
  }
  return found;
}

void TLABPolyline::RoundTo(int Accuracy) {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].RoundTo(Accuracy));
}

void TLABPolyline::Translate(const TPoint2D& Vector) {
  for (TLABSegline& s : FItems) s.TranslateInplace(Vector);
}

void TLABPolyline::Rotate(double Radian) {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].Rotate(Radian));
}

void TLABPolyline::RotateBy90() {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].RotateBy90());
}

void TLABPolyline::RotateBy_90() {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].RotateBy_90());
}

void TLABPolyline::YMirror() {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].YMirror());
}

void TLABPolyline::Transform(const TMatrix2D& Matrix) {
  for (int i = 0; i < Count(); ++i) SetItem(i, FItems[static_cast<std::size_t>(i)].Transform(Matrix));
}

void TLABPolyline::Reverse() {
  TList<TLABSegline>::Reverse();
  for (TLABSegline& s : FItems) s.ReverseInplace();
}

void TLABPolyline::ConnectHeadTail(double Tol) {
  if (IsEmpty()) return;
  if (!IsClosed(Tol)) {
    Add(TLABSegline::CreateLine(FItems.back().P4, FItems.front().P1));
    return;
  }
  TLABSegline last = FItems.back();
  last.P4 = FItems.front().P1;
  SetItem(Count() - 1, last);
}

bool TLABPolyline::IsDegenerate(const TLABSegline& S, double Tol) {
  switch (S.SegType) {
    case TSegType::stLine:
      return S.P1.DistanceTo(S.P4) <= Tol;
    case TSegType::stArc:
      // A big arc with close ends, such as a circle, is no short segment.
      return std::abs(S.Bulge) < 1.0 && S.P1.DistanceTo(S.P4) <= Tol;
    case TSegType::stBezier:
      break;
  }
  return S.P2.DistanceTo(S.P1) <= Tol && S.P3.DistanceTo(S.P1) <= Tol && S.P4.DistanceTo(S.P1) <= Tol;
}

bool TLABPolyline::IsMergeable(const TLABSegline& A, const TLABSegline& B, double Tol) {
  if (A.SegType == TSegType::stLine && B.SegType == TSegType::stLine &&
      TLine2D(A.P1, B.P4).DistanceLimit(A.P4) <= Tol) {
    return true;
  }
  return IsDegenerate(A, Tol);
}

void TLABPolyline::CollinearSmooth(bool IncludeStartEnd, double Tol) {
  const int n = Count();
  if (n < 2) return;
  TLABSegline cur = FItems[0];
  cur.TryToLine(Tol);
  int w = 0;
  for (int i = 1; i < n; ++i) {
    TLABSegline next = FItems[static_cast<std::size_t>(i)];
    next.TryToLine(Tol);
    if (IsMergeable(cur, next, Tol)) {
      const TPoint2D start = cur.P1;
      cur = next;
      cur.P1 = start;
    } else {
      SetItem(w++, cur);
      cur = next;
    }
  }
  if (w == 0) {
    SetItem(0, cur);
    w = 1;
  } else if (TLABSegline first = FItems[0];
             IncludeStartEnd && first.P1.Equals(cur.P4, Tol) && IsMergeable(cur, first, Tol)) {
    first.P1 = cur.P1;
    SetItem(0, first);
  } else if (IsDegenerate(cur, Tol)) {
    TLABSegline prev = FItems[static_cast<std::size_t>(w) - 1];
    prev.P4 = cur.P4;
    SetItem(w - 1, prev);
  } else {
    SetItem(w++, cur);
  }
  if (w < Count()) DeleteRange(w, Count() - w);
}

void TLABPolyline::ConnectAllSegsStrictly() {
  if (!IsClosed(PointTol)) return;
  TPoint2D prevEnd = FItems.back().P4;
  for (int i = 0; i < Count(); ++i) {
    TLABSegline s = FItems[static_cast<std::size_t>(i)];
    s.P1 = prevEnd;
    prevEnd = s.P4;
    SetItem(i, s);
  }
}

}  // namespace orvane
