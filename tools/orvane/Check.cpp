#include "Check.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "orvane/foundation/Line2D.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/Point2DUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/monotone/MLABHPolygon.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/spatial/RTree.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane::tool {

namespace {

using TClock = std::chrono::steady_clock;

double SecondsSince(TClock::time_point Start) { return std::chrono::duration<double>(TClock::now() - Start).count(); }

// The distance at which the kernel's boundary test counts two outlines as touching.
constexpr double KernelTol = DefaultTol;

// The polygon keeps its chains to itself, which lets it make them all at once.
std::unique_ptr<TMPolygon> MonotoneRing(const TDynPoints2D& Ring) {
  return TMPolygon::FromRing(Ring, nullptr, false);
}

// Two segments come within Dist: they cross, or an end of one lies within Dist of the other.
bool SegmentsWithin(const TPoint2D& A, const TPoint2D& B, const TPoint2D& C, const TPoint2D& D, double Dist) {
  const double c1 = TPoint2DUtils::IsLeft(A, B, C), c2 = TPoint2DUtils::IsLeft(A, B, D);
  const double c3 = TPoint2DUtils::IsLeft(C, D, A), c4 = TPoint2DUtils::IsLeft(C, D, B);
  if (((c1 > 0 && c2 < 0) || (c1 < 0 && c2 > 0)) && ((c3 > 0 && c4 < 0) || (c3 < 0 && c4 > 0))) return true;
  const TLine2D ab(A, B), cd(C, D);
  return cd.DistanceLimit(A) <= Dist || cd.DistanceLimit(B) <= Dist || ab.DistanceLimit(C) <= Dist ||
         ab.DistanceLimit(D) <= Dist;
}

// One ring's segments under an R-tree, made for the rings whose distance to another is
// asked: segment k runs from vertex k to vertex k + 1, the last one back to vertex 0.
class TSegmentIndex {
 public:
  explicit TSegmentIndex(const TDynPoints2D& Ring) : FRing(Ring) {
    const int n = static_cast<int>(Ring.size());
    std::vector<int> ids(static_cast<std::size_t>(n));
    std::vector<TRect2D> boxes(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) {
      ids[static_cast<std::size_t>(k)] = k;
      boxes[static_cast<std::size_t>(k)] = TRect2D::CreateNormal(Vertex(k), Vertex(k + 1));
    }
    FTree = std::make_unique<TRTree<int>>(std::span<const int>(ids), std::span<const TRect2D>(boxes), 8);
  }
  const TPoint2D& Vertex(int K) const { return FRing[static_cast<std::size_t>(K) % FRing.size()]; }
  int Count() const { return static_cast<int>(FRing.size()); }

  // Some segment of this ring and some of Other come within Dist.
  bool Within(const TSegmentIndex& Other, double Dist, std::vector<int>& Hits) const {
    for (int k = 0; k < Count(); ++k) {
      const TPoint2D& a = Vertex(k);
      const TPoint2D& b = Vertex(k + 1);
      Hits.clear();
      Other.FTree->Search(TRect2D::CreateNormal(a, b), Hits, Dist);
      for (int m : Hits) {
        if (SegmentsWithin(a, b, Other.Vertex(m), Other.Vertex(m + 1), Dist)) return true;
      }
    }
    return false;
  }

 private:
  const TDynPoints2D& FRing;
  std::unique_ptr<TRTree<int>> FTree;
};

struct TPart {
  const TLayoutPart* Source = nullptr;
  std::vector<std::unique_ptr<TMPolygon>> Rings;  // outer first, then holes; none for a part with arcs
  TRect2D Box;

  // Net area, the rings at the working rate and the segment indexes, made only for the
  // parts that take part in an area or a distance computation. A part with arcs is
  // measured on its chords.
  double Area() const {
    if (FArea < 0.0) {
      FArea = 0.0;
      ForAreaRings(
          [&](std::size_t K, const TDynPoints2D& Ring) { FArea += (K ? -1.0 : 1.0) * std::fabs(PolyArea(Ring)); });
    }
    return FArea;
  }
  const TPaths64& Paths() const {
    if (FPaths.empty())
      ForAreaRings(
          [&](std::size_t, const TDynPoints2D& Ring) { FPaths.push_back(TVPolyline2D(Ring).ToPath(PathWorkingRate)); });
    return FPaths;
  }
  const std::vector<TSegmentIndex>& Segments() const {
    if (FSegments.empty()) {
      FSegments.reserve(1 + Source->Holes.size());
      FSegments.emplace_back(Source->Outer);
      for (const TDynPoints2D& hole : Source->Holes) FSegments.emplace_back(hole);
    }
    return FSegments;
  }
  // The region with its arcs exact: made with the part for a part with arcs, and for a part
  // of straight edges when it meets one.
  const TMLABHPolygon& Arcs() const {
    if (!FArcs) {
      FArcs = std::make_unique<TMLABHPolygon>(true);
      for (std::size_t k = 0; k < Source->RingCount(); ++k)
        FArcs->Add(std::make_unique<TMLABPolygon>(*ArcPolyline(Source->Ring(k), Source->RingBulges(k)), KernelTol));
    }
    return *FArcs;
  }

 private:
  // Each ring that areas are measured on, with its index (0 for the outer ring).
  template <class F>
  void ForAreaRings(F&& Visit) const {
    if (Source->HasArcs() && FChords.empty()) FChords = LinearRings(*Source);
    for (std::size_t k = 0; k < Source->RingCount(); ++k) Visit(k, Source->HasArcs() ? FChords[k] : Source->Ring(k));
  }

  mutable double FArea = -1.0;
  mutable TPaths64 FPaths;
  mutable std::vector<TSegmentIndex> FSegments;
  mutable std::vector<TDynPoints2D> FChords;
  mutable std::unique_ptr<TMLABHPolygon> FArcs;
};

TPart BuildPart(const TLayoutPart& Source) {
  TPart part;
  part.Source = &Source;
  if (Source.HasArcs()) {
    part.Box = part.Arcs().First()->BoundBox();
    return part;
  }
  part.Rings.push_back(MonotoneRing(Source.Outer));
  for (const TDynPoints2D& hole : Source.Holes) part.Rings.push_back(MonotoneRing(hole));
  // The outline's chains already hold its extent.
  part.Box = part.Rings.front()->BoundBox();
  return part;
}

// The kernel's test: some ring of A touches or crosses some ring of B (within 1e-6).
bool KernelContact(const TPart& A, const TPart& B) {
  for (const auto& ra : A.Rings) {
    for (const auto& rb : B.Rings) {
      if (ra->BoundBox().RelationWithRect(rb->BoundBox(), KernelTol) != 0 && ra->TestOverlap(*rb)) return true;
    }
  }
  return false;
}

bool BoundariesWithin(const TPart& A, const TPart& B, double Dist, std::vector<int>& Hits) {
  for (std::size_t i = 0; i < A.Rings.size(); ++i) {
    for (std::size_t j = 0; j < B.Rings.size(); ++j) {
      if (A.Rings[i]->BoundBox().RelationWithRect(B.Rings[j]->BoundBox(), Dist) == 0) continue;
      if (A.Segments()[i].Within(B.Segments()[j], Dist, Hits)) return true;
    }
  }
  return false;
}

// Contact at distance Tol: the kernel's exact test answers at its own tolerance; a true
// distance between the boundaries decides what lies between that and Tol, whichever is
// larger. So a larger Tol never loses a contact, and coordinates are never scaled.
bool BoundariesMeet(const TPart& A, const TPart& B, double Tol, std::vector<int>& Hits) {
  // With an arc on either side, the exact distance between the arcs and lines decides.
  if (A.Source->HasArcs() || B.Source->HasArcs()) return A.Arcs().IsCrossWith(B.Arcs(), std::max(Tol, 0.0));
  const bool kernel = KernelContact(A, B);
  if (Tol == KernelTol) return kernel;
  if (Tol < KernelTol) return kernel && BoundariesWithin(A, B, Tol, Hits);
  return kernel || BoundariesWithin(A, B, Tol, Hits);
}

// Inner lies wholly inside Outer, given that their boundaries do not meet: one vertex of
// Inner is inside Outer's outline and outside each of its holes.
bool LiesInside(const TPart& Inner, const TPart& Outer) {
  if (Inner.Source->HasArcs() || Outer.Source->HasArcs()) return Outer.Arcs().Contains(Inner.Arcs());
  const TPoint2D probe = Inner.Source->Outer.front();
  if (Outer.Rings.front()->PointIsIn(probe) != 1) return false;
  for (std::size_t h = 1; h < Outer.Rings.size(); ++h) {
    if (Outer.Rings[h]->PointIsIn(probe) != 0) return false;
  }
  return true;
}

std::vector<TDynPoints2D> ToRings(const TPaths64& Paths) {
  std::vector<TDynPoints2D> rings;
  for (const TPath64& path : Paths) rings.push_back(TVPolyline2D(path, PathWorkingRate).ToTDynPoints2D());
  return rings;
}

TPaths64 Clip(Clipper::TClipType Op, const TPaths64& Subject, const TPaths64& ClipPaths) {
  Clipper::TClipper clipper;
  clipper.AddPaths(Subject, TPathType::ptSubject, true);
  clipper.AddPaths(ClipPaths, TPathType::ptClip, true);
  TPaths64 solution;
  clipper.Execute(Op, solution, TFillRule::frEvenOdd);
  return solution;
}

double AreaOf(const TPaths64& Paths) {
  double sum = 0.0;
  for (const TPath64& path : Paths) sum += Clipper::Area(path);
  return std::fabs(sum) / (PathWorkingRate * PathWorkingRate);
}

bool IsAxisRectangle(const TDynPoints2D& Ring) {
  if (Ring.size() != 4) return false;
  for (std::size_t i = 0; i < 4; ++i) {
    const TPoint2D& a = Ring[i];
    const TPoint2D& b = Ring[(i + 1) % 4];
    if (a.X != b.X && a.Y != b.Y) return false;
  }
  return true;
}

std::size_t At(int I) { return static_cast<std::size_t>(I); }

// The phases of a check, in order; each fills its part of the report and its time.
class TChecker {
 public:
  TChecker(const TLayout& Layout, const TCheckOptions& Options, const TProgress& Progress, TCheckReport& Report)
      : FLayout(Layout), FOptions(Options), FProgress(Progress), R(Report) {}

  void Run() {
    R.Name = FLayout.Name;
    R.Parts = static_cast<int>(FLayout.Parts.size());
    Timed(R.Seconds.Build, [&] { Build(); });
    Timed(R.Seconds.Candidates, [&] { FindCandidates(); });
    Timed(R.Seconds.Contact, [&] { FindContacts(); });
    Timed(R.Seconds.Containment, [&] { FindContainment(); });
    Timed(R.Seconds.OverlapArea, [&] { MeasureOverlaps(); });
    Timed(R.Seconds.Container, [&] { MeasureProtrusion(); });
    R.Clean = R.OverlapPairs == 0 && R.ContainedParts.empty() && R.OutsideParts.empty();
    Progress("done", 1.0);
  }

 private:
  template <class F>
  static void Timed(double& Seconds, F&& Phase) {
    const auto start = TClock::now();
    Phase();
    Seconds = SecondsSince(start);
  }
  void Progress(const char* Phase, double Done) const {
    if (FProgress) FProgress(Phase, Done);
  }
  const TPart& Part(int I) const { return FParts[At(I)]; }

  // One monotone polygon per ring, once.
  void Build() {
    const int n = R.Parts;
    FParts.reserve(At(n));
    for (int i = 0; i < n; ++i) {
      FParts.push_back(BuildPart(FLayout.Parts[At(i)]));
      if ((i & 63) == 0) Progress("build", static_cast<double>(i) / n);
    }
    FContained.assign(At(n), 0);
  }

  // Pairs of parts whose boxes meet within the contact distance (the boxes' relation is not
  // 0, as an R-tree search within that distance finds them). A layout's parts spread along
  // its container, so one sweep over the boxes along the layout's longer side answers with
  // few tests beyond the pairs themselves.
  void FindCandidates() {
    const int n = R.Parts;
    const double reach = std::max(FOptions.Tol, KernelTol);
    // A distance without a value meets nothing.
    if (std::isnan(reach)) return;
    std::vector<int> order;
    order.reserve(At(n));
    TRect2D extent = TRect2D::Invalid();
    for (int i = 0; i < n; ++i) {
      if (!Part(i).Box.IsValid()) continue;
      order.push_back(i);
      extent.Extend(Part(i).Box);
    }
    const bool alongX = order.empty() || extent.XMax - extent.XMin >= extent.YMax - extent.YMin;
    const auto low = [alongX](const TRect2D& B) { return alongX ? B.XMin : B.YMin; };
    const auto high = [alongX](const TRect2D& B) { return alongX ? B.XMax : B.YMax; };
    std::sort(order.begin(), order.end(), [&](int A, int B) {
      const double a = low(Part(A).Box), b = low(Part(B).Box);
      return a < b || (a == b && A < B);
    });
    for (std::size_t k = 0; k < order.size(); ++k) {
      const int i = order[k];
      const TRect2D& a = Part(i).Box;
      for (std::size_t m = k + 1; m < order.size(); ++m) {
        const int j = order[m];
        const TRect2D& b = Part(j).Box;
        // Sorted by the low edge: no later box reaches back to this one.
        if (low(b) - high(a) > reach) break;
        if (a.RelationWithRect(b, reach) != 0) FCandidates.emplace_back(std::min(i, j), std::max(i, j));
      }
    }
    std::sort(FCandidates.begin(), FCandidates.end());
    R.CandidatePairs = static_cast<int>(FCandidates.size());
  }

  // The boundary test on every candidate pair; the others are kept for containment.
  void FindContacts() {
    std::vector<int> hits;
    for (std::size_t k = 0; k < FCandidates.size(); ++k) {
      const auto [i, j] = FCandidates[k];
      if (BoundariesMeet(Part(i), Part(j), FOptions.Tol, hits))
        R.Contacts.emplace_back(i, j);
      else
        FApart.emplace_back(i, j);
      if ((k & 1023) == 0) Progress("contact", static_cast<double>(k) / static_cast<double>(FCandidates.size()));
    }
    R.ContactPairs = static_cast<int>(R.Contacts.size());
  }

  // A pair apart whose one part lies inside the other overlaps by the inner part.
  void FindContainment() {
    for (const auto& [i, j] : FApart) {
      const TPart& a = Part(i);
      const TPart& b = Part(j);
      int inner = -1;
      if (a.Box.RelationWithRect(b.Box, 0.0) == 3 && LiesInside(a, b))
        inner = i;
      else if (b.Box.RelationWithRect(a.Box, 0.0) == 3 && LiesInside(b, a))
        inner = j;
      if (inner < 0) continue;
      FContained[At(inner)] = 1;
      TPairOverlap ov;
      ov.A = i;
      ov.B = j;
      ov.Area = Part(inner).Area();
      ov.Relative = 1.0;
      ov.Region = ToRings(Part(inner).Paths());
      R.Overlaps.push_back(std::move(ov));
    }
  }

  // The common area of every pair in contact, and the figures over all overlaps.
  void MeasureOverlaps() {
    for (std::size_t k = 0; k < R.Contacts.size(); ++k) {
      const auto [i, j] = R.Contacts[k];
      const TPart& a = Part(i);
      const TPart& b = Part(j);
      TPaths64 common = Clip(Clipper::TClipType::ctIntersection, a.Paths(), b.Paths());
      const double area = AreaOf(common);
      if (area > 0.0) {
        const double smaller = std::min(a.Area(), b.Area());
        TPairOverlap ov;
        ov.A = i;
        ov.B = j;
        ov.Area = area;
        ov.Relative = smaller > 0.0 ? area / smaller : 1.0;
        // Wholly covered within round-off: the smaller part lies inside the other.
        if (ov.Relative >= 1.0 - 1e-6) FContained[At(a.Area() <= b.Area() ? i : j)] = 1;
        ov.Region = ToRings(common);
        R.Overlaps.push_back(std::move(ov));
      }
      if ((k & 255) == 0) Progress("overlap", static_cast<double>(k) / static_cast<double>(R.Contacts.size()));
    }
    std::stable_sort(R.Overlaps.begin(), R.Overlaps.end(),
                     [](const TPairOverlap& x, const TPairOverlap& y) { return x.Area > y.Area; });
    for (TPairOverlap& ov : R.Overlaps) {
      ov.AboveLimit = ov.Relative > FOptions.MaxOverlap;
      ++R.PositiveOverlapPairs;
      R.OverlapAreaTotal += ov.Area;
      R.OverlapAreaMax = std::max(R.OverlapAreaMax, ov.Area);
      R.OverlapMaxRelative = std::max(R.OverlapMaxRelative, ov.Relative);
      if (ov.AboveLimit) ++R.OverlapPairs;
    }
    for (int i = 0; i < R.Parts; ++i) {
      if (FContained[At(i)]) R.ContainedParts.push_back(i);
    }
  }

  // How far each part sticks out of the container.
  void MeasureProtrusion() {
    if (FLayout.Container.empty()) return;
    R.HasContainer = true;
    const double limit = FOptions.MaxProtrusion * FLayout.ContainerHeight;
    const TRect2D cbox = CalcAABB(FLayout.Container);
    const bool rectangle = IsAxisRectangle(FLayout.Container);
    std::unique_ptr<TMPolygon> cring;
    TPaths64 cpaths;
    TVPolyline2D boundary(FLayout.Container);
    if (!rectangle) {
      cring = MonotoneRing(FLayout.Container);
      cpaths.push_back(boundary.ToPath(PathWorkingRate));
      boundary.Add(FLayout.Container.front());
    }
    for (int i = 0; i < R.Parts; ++i) {
      const TPart& part = Part(i);
      double out = 0.0;
      if (rectangle) {
        out = std::max({0.0, cbox.XMin - part.Box.XMin, part.Box.XMax - cbox.XMax, cbox.YMin - part.Box.YMin,
                        part.Box.YMax - cbox.YMax});
      } else if (part.Source->HasArcs() || part.Box.RelationWithRect(cbox, 0.0) != 3 ||
                 part.Rings.front()->TestOverlap(*cring) || cring->PointIsIn(part.Source->Outer.front()) != 1) {
        // The part's region outside the container; its farthest corner from the boundary.
        TPoint2D nearest;
        for (const TPath64& path : Clip(Clipper::TClipType::ctDifference, {part.Paths().front()}, cpaths)) {
          for (const TPoint64& p : path) {
            const TPoint2D pt(static_cast<double>(p.X) / PathWorkingRate, static_cast<double>(p.Y) / PathWorkingRate);
            out = std::max(out, boundary.DistTo(pt, nearest));
          }
        }
      }
      R.MaxProtrusion = std::max(R.MaxProtrusion, out);
      if (out > limit) R.OutsideParts.push_back(i);
    }
  }

  const TLayout& FLayout;
  const TCheckOptions& FOptions;
  const TProgress& FProgress;
  TCheckReport& R;
  std::vector<TPart> FParts;
  std::vector<std::pair<int, int>> FCandidates;
  std::vector<std::pair<int, int>> FApart;
  std::vector<char> FContained;
};

}  // namespace

TCheckReport CheckLayout(const TLayout& Layout, const TCheckOptions& Options, const TProgress& Progress) {
  TCheckReport report;
  TChecker(Layout, Options, Progress, report).Run();
  return report;
}

}  // namespace orvane::tool
