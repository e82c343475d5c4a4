#include "orvane/monotone/MLABPolygon.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>
#include <vector>

#include "orvane/algorithms/CadBasicAlgo.h"
#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

constexpr double KTwoPi = 2.0 * std::numbers::pi;
constexpr double JointTol = 1e-6;
constexpr double OnTol = 1e-8;

void CheckSegment(const TLABSegline& S) {
  const char* where = "TMLABPolygon.PreProcessing";
  internal::CheckFinitePoint(S.P1, where, "P1");
  internal::CheckFinitePoint(S.P4, where, "P4");
  if (S.SegType != TSegType::stLine) {
    internal::CheckFinitePoint(S.P2, where, "P2");
    internal::CheckFinite(S.Bulge, where, "Bulge");
  }
  if (S.SegType == TSegType::stBezier) internal::CheckFinitePoint(S.P3, where, "P3");
}

// The angle from the start to Theta in the arc's own sense, in [0, 2pi).
double RelAngle(double Theta, double Start, bool Ccw) {
  double rel = std::fmod(Ccw ? Theta - Start : Start - Theta, KTwoPi);
  if (rel < 0.0) rel += KTwoPi;
  return rel;
}

// Cuts one arc at the top and bottom of its circle that lie inside it, more than Tol (along
// the circle) from its ends, and appends the pieces.
void CutArc(const TLABSegline& Seg, double Tol, std::vector<TLABSegline>& Out) {
  const TPoint2D m = Seg.P2;
  const TPoint2D s = Seg.P1;
  const double r = s.DistanceTo(m);
  if (!(r > 0.0)) {
    // No circle to speak of: the straight way between the ends is all that is left.
    Out.push_back(TLABSegline::CreateLine(Seg.P1, Seg.P4));
    return;
  }
  const bool ccw = Seg.Bulge > 0.0;
  const double start = std::atan2(s.Y - m.Y, s.X - m.X);
  double sweep = 0.0;
  TPoint2D e = Seg.P4;
  if (Seg.IsCircle()) {
    sweep = KTwoPi;
    e = s;
  } else {
    sweep = RelAngle(std::atan2(e.Y - m.Y, e.X - m.X), start, ccw);
    if (sweep <= 0.0) {
      Out.push_back(Seg);
      return;
    }
  }
  const double angTol = Tol / r;
  const TPoint2D top(m.X, m.Y + r);
  const TPoint2D bottom(m.X, m.Y - r);
  struct TCut {
    double Rel;
    TPoint2D Pt;
    bool Extreme;
  };
  TCut cuts[4];
  int n = 0;
  // An end within Tol of the top or bottom counts as lying there, for the exact half turn.
  auto nearRel = [&](double Rel, double At) { return std::abs(std::remainder(Rel - At, KTwoPi)) <= angTol; };
  cuts[n++] = {0.0, s, false};
  const double relTop = RelAngle(std::numbers::pi / 2.0, start, ccw);
  const double relBottom = RelAngle(-std::numbers::pi / 2.0, start, ccw);
  if (relTop > angTol && relTop < sweep - angTol) cuts[n++] = {relTop, top, true};
  if (relBottom > angTol && relBottom < sweep - angTol) cuts[n++] = {relBottom, bottom, true};
  if (n == 3 && cuts[2].Rel < cuts[1].Rel) std::swap(cuts[1], cuts[2]);
  cuts[n++] = {sweep, e, false};
  cuts[0].Extreme = nearRel(relTop, 0.0) || nearRel(relBottom, 0.0);
  cuts[n - 1].Extreme = nearRel(relTop, sweep) || nearRel(relBottom, sweep);
  const double sign = ccw ? 1.0 : -1.0;
  for (int k = 0; k + 1 < n; ++k) {
    // A half circle from the top to the bottom, or back, is exactly a half turn.
    const double bulge = cuts[k].Extreme && cuts[k + 1].Extreme
                             ? sign
                             : sign * std::tan((cuts[k + 1].Rel - cuts[k].Rel) / 4.0);
    Out.push_back(TLABSegline::CreateArc(cuts[k].Pt, cuts[k + 1].Pt, m, bulge));
  }
}

bool IsLevel(const TLABSegline& S) { return S.SegType == TSegType::stLine && S.P1.Y == S.P4.Y; }

}  // namespace

std::unique_ptr<TLABPolyline> TMLABPolygon::PreProcessing(const TLABPolyline& Polyline, double Tol) {
  if (!(Tol >= 0.0) || !std::isfinite(Tol))
    throw EParamError("[Error] TMLABPolygon.PreProcessing: Tol must be a finite number of at least 0");
  for (const TLABSegline& s : Polyline) CheckSegment(s);

  // Beziers into arcs and lines.
  std::vector<TLABSegline> mid;
  mid.reserve(static_cast<std::size_t>(Polyline.Count()));
  for (const TLABSegline& s : Polyline) {
    if (s.SegType != TSegType::stBezier) {
      mid.push_back(s);
      continue;
    }
    const auto arcs = TCadBasicAlgo::Bezier2Arcs(s.ToBezierSegment(), Tol > 0.0 ? Tol : 1e-6);
    for (const TArc2D& a : *arcs) {
      if (a.IsLine)
        mid.push_back(TLABSegline::CreateLine(a.Center, TPoint2D(a.Radius, a.StartAngle)));
      else
        mid.push_back(TLABSegline::CreateArc(a.StartPoint(), a.EndPoint(), a.Center, a.Bulge()));
    }
  }

  // Arcs into pieces monotone in y.
  std::vector<TLABSegline> out;
  out.reserve(mid.size() + mid.size() / 2 + 2);
  for (const TLABSegline& s : mid) {
    if (s.SegType == TSegType::stArc)
      CutArc(s, Tol, out);
    else
      out.push_back(s);
  }

  // Exact joints, and tiny pieces as lines.
  for (std::size_t k = 1; k < out.size(); ++k) out[k].P1 = out[k - 1].P4;
  if (!out.empty() && Polyline.IsClosed(JointTol)) out.front().P1 = out.back().P4;
  for (TLABSegline& s : out) {
    if (s.SegType == TSegType::stArc && (std::abs(s.Bulge) < JointTol || s.P1.Equals(s.P4, JointTol)))
      s = TLABSegline::CreateLine(s.P1, s.P4);
  }
  auto result = std::make_unique<TLABPolyline>();
  result->AddRange(out);
  return result;
}

TMLABPolygon::TMLABPolygon(const TLABPolyline& Polyline, double Tol, bool AOwnsObjects)
    : TVGeometry2DList<TMLABChain>(AOwnsObjects) {
  FIsClosed = Polyline.IsClosed(JointTol);
  const std::unique_ptr<TLABPolyline> pre = PreProcessing(Polyline, Tol);
  const std::vector<TLABSegline>& segs = pre->List();
  if (segs.empty()) return;

  std::vector<std::unique_ptr<TMLABChain>> chains;
  chains.push_back(std::make_unique<TMLABChain>());
  std::size_t k = 0;
  // Leading level lines join the first chain; the first other segment sets its direction.
  while (k < segs.size() && IsLevel(segs[k])) chains.back()->Add(segs[k++]);
  if (k < segs.size()) {
    chains.back()->SetPositive(segs[k].P4.Y > segs[k].P1.Y);
    chains.back()->Add(segs[k++]);
  }
  for (; k < segs.size(); ++k) {
    const TLABSegline& s = segs[k];
    const bool up = s.P4.Y > s.P1.Y;
    if (IsLevel(s) || up == chains.back()->GetPositive()) {
      chains.back()->Add(s);
      continue;
    }
    auto next = std::make_unique<TMLABChain>();
    next->SetPositive(up);
    chains.back()->SetNext(next.get());
    next->Add(s);
    chains.push_back(std::move(next));
  }
  if (FIsClosed && chains.size() > 1 && chains.front()->GetPositive() == chains.back()->GetPositive()) {
    // The seam lies inside a run: the run is one chain, the last one's segments first.
    TMLABChain& first = *chains.front();
    std::vector<TLABSegline> merged = chains.back()->List();
    merged.insert(merged.end(), first.List().begin(), first.List().end());
    first.Clear();
    first.AddRange(merged);
    chains.pop_back();
  }
  if (FIsClosed) chains.back()->SetNext(chains.front().get());
  for (auto& c : chains) {
    if (!c->GetPositive()) {
      c->Reverse();
      c->SetPositive(true);
    }
    c->ResetBound();
    Add(std::move(c));
  }
  SortChains();
  UpdateBoundBox();
}

void TMLABPolygon::SortChains() {
  Sort([](TMLABChain* const& a, TMLABChain* const& b) {
    const double d = a->GetLeft() - b->GetLeft();
    return d < 0.0 ? -1 : (d > 0.0 ? 1 : 0);
  });
}

void TMLABPolygon::UpdateBoundBox() {
  FBoundBox = TRect2D::Invalid();
  FChainBoxes.clear();
  for (const TMLABChain* c : *this) {
    FChainBoxes.push_back(c->BoundBox());
    FBoundBox.Extend(FChainBoxes.back());
  }
  FHasRef = !IsEmpty() && !First()->IsEmpty();
  if (FHasRef) FRef = First()->First().P1;
}

std::unique_ptr<TVGeometry2DList<TMLABChain>> TMLABPolygon::New(bool AOwnsObjects) const {
  return std::make_unique<TMLABPolygon>(AOwnsObjects);
}

std::unique_ptr<IVGeometry2D> TMLABPolygon::Clone() const {
  auto copy = std::make_unique<TMLABPolygon>(GetOwnsObjects());
  copy->FIsClosed = FIsClosed;
  copy->FBoundBox = FBoundBox;
  copy->FRef = FRef;
  copy->FHasRef = FHasRef;
  copy->FChainBoxes = FChainBoxes;
  if (!GetOwnsObjects()) {
    for (TMLABChain* c : *this) copy->Add(c);
    return copy;
  }
  std::unordered_map<const TMLABChain*, TMLABChain*> image;
  for (const TMLABChain* c : *this) {
    std::unique_ptr<TMLABChain> cc = CloneItem(*c);
    image[c] = cc.get();
    copy->Add(std::move(cc));
  }
  for (const TMLABChain* c : *this) {
    const auto it = image.find(c->GetNext());
    image[c]->SetNext(it == image.end() ? nullptr : it->second);
  }
  return copy;
}

void TMLABPolygon::Translate(const TPoint2D& Vector) {
  TVGeometry2DList<TMLABChain>::Translate(Vector);
  if (FBoundBox.IsValid())
    FBoundBox = TRect2D(FBoundBox.XMin + Vector.X, FBoundBox.YMin + Vector.Y, FBoundBox.XMax + Vector.X,
                        FBoundBox.YMax + Vector.Y);
  FRef += Vector;
  for (TRect2D& r : FChainBoxes) r = TRect2D(r.XMin + Vector.X, r.YMin + Vector.Y, r.XMax + Vector.X, r.YMax + Vector.Y);
}

bool TMLABPolygon::IsRightArc(const TLABSegline& Seg, double) {
  if (Seg.Bulge != 0.0) {
    if (Seg.P1.Y > Seg.P4.Y + JointTol) return Seg.Bulge < 0.0;
    if (Seg.P4.Y - JointTol > Seg.P1.Y) return Seg.Bulge > 0.0;
  }
  return Seg.P1.X + Seg.P4.X >= 2.0 * Seg.P2.X;
}

bool TMLABPolygon::IsCrossWith(const TMLABPolygon& MPolygon, double Tol) const {
  if (IsEmpty() || MPolygon.IsEmpty()) return false;
  const TRect2D& a = FBoundBox;
  const TRect2D& b = MPolygon.FBoundBox;
  if (a.XMin > b.XMax + Tol || b.XMin > a.XMax + Tol || a.YMin > b.YMax + Tol || b.YMin > a.YMax + Tol)
    return false;
  const std::size_t na = FChainBoxes.size();
  const std::size_t nb = MPolygon.FChainBoxes.size();
  for (std::size_t ia = 0; ia < na; ++ia) {
    const TRect2D& ra = FChainBoxes[ia];
    // Sorted by Left: once a chain starts right of MPolygon, so do all later ones.
    if (ra.XMin > b.XMax + Tol) break;
    if (ra.XMax < b.XMin - Tol || ra.YMin > b.YMax + Tol || ra.YMax < b.YMin - Tol) continue;
    for (std::size_t ib = 0; ib < nb; ++ib) {
      const TRect2D& rb = MPolygon.FChainBoxes[ib];
      if (ra.XMax < rb.XMin - Tol) break;
      if (ra.XMin > rb.XMax + Tol || ra.YMin > rb.YMax + Tol || ra.YMax < rb.YMin - Tol) continue;
      if ((*this)[static_cast<int>(ia)]->IsOverlap(*MPolygon[static_cast<int>(ib)], Tol)) return true;
    }
  }
  return false;
}

TShapeRelation TMLABPolygon::RelationWithPoint(const TPoint2D& Pnt) const {
  // An outline that came to nothing has no points at all, open or not.
  if (IsEmpty()) return TShapeRelation::srOut;
  if (!FIsClosed) throw Exception("Polygon is not closed!");
  const TRect2D& box = FBoundBox;
  if (Pnt.X < box.XMin - OnTol || Pnt.X > box.XMax + OnTol || Pnt.Y < box.YMin - OnTol || Pnt.Y > box.YMax + OnTol)
    return TShapeRelation::srOut;
  int count = 0;
  TFloatDynArray xs;
  for (const TMLABChain* c : *this) {
    const std::vector<TLABSegline>& segs = c->List();
    if (segs.empty() || c->GetRight() < Pnt.X - OnTol) continue;
    if (segs.front().P1.Y > Pnt.Y + OnTol || Pnt.Y > segs.back().P4.Y + OnTol) continue;
    // The segments climb: find the first that reaches the point's height.
    auto it = std::lower_bound(segs.begin(), segs.end(), Pnt.Y - OnTol,
                               [](const TLABSegline& s, double y) { return s.P4.Y < y; });
    for (; it != segs.end() && it->P1.Y <= Pnt.Y + OnTol; ++it) {
      if (internal::DistanceToSeg(*it, Pnt) <= OnTol) return TShapeRelation::srOn;
      // Each crossing counts on the half-open rule of the segments' heights, so a joint of
      // two segments, or of two chains, counts once or, at a local top or bottom, twice.
      xs.clear();
      internal::HorizontalCrossings(*it, Pnt.Y, xs);
      for (double x : xs)
        if (x > Pnt.X) ++count;
    }
  }
  return count % 2 == 1 ? TShapeRelation::srIn : TShapeRelation::srOut;
}


}  // namespace orvane
