#include "Check.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/Monotone.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/spatial/RTree.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane::tool {

namespace {

using TClock = std::chrono::steady_clock;

double SecondsSince(TClock::time_point Start) { return std::chrono::duration<double>(TClock::now() - Start).count(); }

// The kernel's boundary tests compare at 1e-6; a contact distance of Tol is reached by
// building the monotone polygons in coordinates scaled by 1e-6 / Tol.
constexpr double KernelTol = 1e-6;

std::unique_ptr<TMPolygon> MonotoneRing(const TDynPoints2D& Ring, double Scale) {
  TDynPoints2D closed;
  closed.reserve(Ring.size() + 1);
  if (Scale == 1.0) {
    closed.assign(Ring.begin(), Ring.end());
  } else {
    for (const TPoint2D& p : Ring) closed.push_back(p * Scale);
  }
  closed.push_back(closed.front());  // closed: the first vertex repeated at the end
  return std::make_unique<TMPolygon>(TVPolyline2D(std::move(closed)), nullptr, true);
}

struct TPart {
  const TLayoutPart* Source = nullptr;
  std::vector<std::unique_ptr<TMPolygon>> Rings;  // outer first, then holes (scaled)
  TRect2D Box;                                    // drawing units
  TPoint2D Probe;                                 // a vertex of the outer ring, scaled

  // Net area in drawing units and the rings at the working rate, made only for the few
  // parts that take part in an area computation.
  double Area() const {
    if (FArea < 0.0) {
      FArea = std::fabs(PolyArea(Source->Outer));
      for (const TDynPoints2D& hole : Source->Holes) FArea -= std::fabs(PolyArea(hole));
    }
    return FArea;
  }
  const TPaths64& Paths() const {
    if (FPaths.empty()) {
      FPaths.push_back(TVPolyline2D(Source->Outer).ToPath(PathWorkingRate));
      for (const TDynPoints2D& hole : Source->Holes) FPaths.push_back(TVPolyline2D(hole).ToPath(PathWorkingRate));
    }
    return FPaths;
  }

 private:
  mutable double FArea = -1.0;
  mutable TPaths64 FPaths;
};

TPart BuildPart(const TLayoutPart& Source, double Scale) {
  TPart part;
  part.Source = &Source;
  part.Rings.push_back(MonotoneRing(Source.Outer, Scale));
  for (const TDynPoints2D& hole : Source.Holes) part.Rings.push_back(MonotoneRing(hole, Scale));
  part.Box = CalcAABB(Source.Outer);
  part.Probe = Source.Outer.front() * Scale;
  return part;
}

bool BoundariesMeet(const TPart& A, const TPart& B) {
  for (const auto& ra : A.Rings) {
    for (const auto& rb : B.Rings) {
      if (ra->BoundBox().RelationWithRect(rb->BoundBox(), KernelTol) != 0 && ra->TestOverlap(*rb)) return true;
    }
  }
  return false;
}

// Inner lies wholly inside Outer, given that their boundaries do not meet: one vertex of
// Inner is inside Outer's outline and outside each of its holes.
bool LiesInside(const TPart& Inner, const TPart& Outer) {
  if (Outer.Rings.front()->PointIsIn(Inner.Probe) != 1) return false;
  for (std::size_t h = 1; h < Outer.Rings.size(); ++h) {
    if (Outer.Rings[h]->PointIsIn(Inner.Probe) != 0) return false;
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

}  // namespace

TCheckReport CheckLayout(const TLayout& Layout, const TCheckOptions& Options, const TProgress& Progress) {
  auto progress = [&](const char* phase, double done) {
    if (Progress) Progress(phase, done);
  };
  TCheckReport report;
  report.Name = Layout.Name;
  const int n = static_cast<int>(Layout.Parts.size());
  report.Parts = n;
  const double scale = KernelTol / Options.Tol;

  // Build: one monotone polygon per ring, once.
  auto start = TClock::now();
  std::vector<TPart> parts;
  parts.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    parts.push_back(BuildPart(Layout.Parts[static_cast<std::size_t>(i)], scale));
    if ((i & 63) == 0) progress("build", static_cast<double>(i) / n);
  }
  report.Seconds.Build = SecondsSince(start);

  // Candidates: pairs of parts whose boxes meet within Tol.
  start = TClock::now();
  std::vector<std::pair<int, int>> candidates;
  {
    std::vector<int> ids(static_cast<std::size_t>(n));
    std::vector<TRect2D> boxes(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      ids[static_cast<std::size_t>(i)] = i;
      boxes[static_cast<std::size_t>(i)] = parts[static_cast<std::size_t>(i)].Box;
    }
    TRTree<int> tree(std::span<const int>(ids), std::span<const TRect2D>(boxes), 8);
    std::vector<int> hits;
    for (int i = 0; i < n; ++i) {
      hits.clear();
      tree.Search(parts[static_cast<std::size_t>(i)].Box, hits, Options.Tol);
      for (int j : hits) {
        if (j > i) candidates.emplace_back(i, j);
      }
    }
    std::sort(candidates.begin(), candidates.end());
  }
  report.CandidatePairs = static_cast<int>(candidates.size());
  report.Seconds.Candidates = SecondsSince(start);

  // Contact: the boundary test on every candidate pair; containment for the others.
  std::vector<std::pair<int, int>> apart;
  start = TClock::now();
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    const auto [i, j] = candidates[k];
    if (BoundariesMeet(parts[static_cast<std::size_t>(i)], parts[static_cast<std::size_t>(j)])) {
      report.Contacts.emplace_back(i, j);
    } else {
      apart.emplace_back(i, j);
    }
    if ((k & 1023) == 0) progress("contact", static_cast<double>(k) / static_cast<double>(candidates.size()));
  }
  report.ContactPairs = static_cast<int>(report.Contacts.size());
  report.Seconds.Contact = SecondsSince(start);

  std::vector<char> contained(static_cast<std::size_t>(n), 0);
  start = TClock::now();
  for (const auto& [i, j] : apart) {
    const TPart& a = parts[static_cast<std::size_t>(i)];
    const TPart& b = parts[static_cast<std::size_t>(j)];
    int inner = -1;
    if (a.Box.RelationWithRect(b.Box, 0.0) == 3 && LiesInside(a, b))
      inner = i;
    else if (b.Box.RelationWithRect(a.Box, 0.0) == 3 && LiesInside(b, a))
      inner = j;
    if (inner < 0) continue;
    contained[static_cast<std::size_t>(inner)] = 1;
    TPairOverlap ov;
    ov.A = i;
    ov.B = j;
    ov.Area = parts[static_cast<std::size_t>(inner)].Area();
    ov.Relative = 1.0;
    ov.Region = ToRings(parts[static_cast<std::size_t>(inner)].Paths());
    report.Overlaps.push_back(std::move(ov));
  }
  report.Seconds.Containment = SecondsSince(start);

  // Overlap areas of the pairs in contact.
  start = TClock::now();
  for (std::size_t k = 0; k < report.Contacts.size(); ++k) {
    const auto [i, j] = report.Contacts[k];
    const TPart& a = parts[static_cast<std::size_t>(i)];
    const TPart& b = parts[static_cast<std::size_t>(j)];
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
      if (ov.Relative >= 1.0 - 1e-6) contained[static_cast<std::size_t>(a.Area() <= b.Area() ? i : j)] = 1;
      ov.Region = ToRings(common);
      report.Overlaps.push_back(std::move(ov));
    }
    if ((k & 255) == 0) progress("overlap", static_cast<double>(k) / static_cast<double>(report.Contacts.size()));
  }
  std::stable_sort(report.Overlaps.begin(), report.Overlaps.end(),
                   [](const TPairOverlap& x, const TPairOverlap& y) { return x.Area > y.Area; });
  for (TPairOverlap& ov : report.Overlaps) {
    ov.AboveLimit = ov.Relative > Options.MaxOverlap;
    ++report.PositiveOverlapPairs;
    report.OverlapAreaTotal += ov.Area;
    report.OverlapAreaMax = std::max(report.OverlapAreaMax, ov.Area);
    report.OverlapMaxRelative = std::max(report.OverlapMaxRelative, ov.Relative);
    if (ov.AboveLimit) ++report.OverlapPairs;
  }
  for (int i = 0; i < n; ++i) {
    if (contained[static_cast<std::size_t>(i)]) report.ContainedParts.push_back(i);
  }
  report.Seconds.OverlapArea = SecondsSince(start);

  // Container: how far each part sticks out.
  start = TClock::now();
  if (!Layout.Container.empty()) {
    report.HasContainer = true;
    const double limit = Options.MaxProtrusion * Layout.ContainerHeight;
    const TRect2D cbox = CalcAABB(Layout.Container);
    const bool rectangle = IsAxisRectangle(Layout.Container);
    std::unique_ptr<TMPolygon> cring;
    TPaths64 cpaths;
    TVPolyline2D boundary(Layout.Container);
    if (!rectangle) {
      cring = MonotoneRing(Layout.Container, scale);
      cpaths.push_back(boundary.ToPath(PathWorkingRate));
      boundary.Add(Layout.Container.front());
    }
    for (int i = 0; i < n; ++i) {
      const TPart& part = parts[static_cast<std::size_t>(i)];
      double out = 0.0;
      if (rectangle) {
        out = std::max({0.0, cbox.XMin - part.Box.XMin, part.Box.XMax - cbox.XMax, cbox.YMin - part.Box.YMin,
                        part.Box.YMax - cbox.YMax});
      } else if (part.Box.RelationWithRect(cbox, 0.0) != 3 || part.Rings.front()->TestOverlap(*cring) ||
                 cring->PointIsIn(part.Probe) != 1) {
        // The part's region outside the container; its farthest corner from the boundary.
        TPoint2D nearest;
        for (const TPath64& path : Clip(Clipper::TClipType::ctDifference, {part.Paths().front()}, cpaths)) {
          for (const TPoint64& p : path) {
            const TPoint2D pt(static_cast<double>(p.X) / PathWorkingRate, static_cast<double>(p.Y) / PathWorkingRate);
            out = std::max(out, boundary.DistTo(pt, nearest));
          }
        }
      }
      report.MaxProtrusion = std::max(report.MaxProtrusion, out);
      if (out > limit) report.OutsideParts.push_back(i);
    }
  }
  report.Seconds.Container = SecondsSince(start);

  report.Clean = report.OverlapPairs == 0 && report.ContainedParts.empty() && report.OutsideParts.empty();
  progress("done", 1.0);
  return report;
}

}  // namespace orvane::tool
