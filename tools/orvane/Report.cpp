#include "Report.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/PointArray.h"

namespace orvane::tool {

namespace {

std::string Ms(double Seconds) { return Format("%.2f ms", Seconds * 1e3); }

std::string Indices(const std::vector<int>& Items, std::size_t Most) {
  std::string text;
  for (std::size_t k = 0; k < Items.size() && k < Most; ++k) text += Format("%s#%d", k ? " " : "", Items[k]);
  if (Items.size() > Most) text += " ...";
  return text;
}

}  // namespace

void WriteTextReport(std::ostream& Out, const TCheckReport& R, const TCheckOptions& Options, double ParseSeconds) {
  Out << "layout: " << R.Name << "\n";
  Out << "parts: " << R.Parts << "\n";
  Out << "candidate pairs: " << R.CandidatePairs << "\n";
  Out << Format("pairs in contact: %d (within %g)\n", R.ContactPairs, Options.Tol);
  Out << Format("overlapping pairs: %d above %g of the smaller part (%d with any common area, total %g)\n",
                R.OverlapPairs, Options.MaxOverlap, R.PositiveOverlapPairs, R.OverlapAreaTotal);
  Out << Format("parts inside another: %d%s%s\n", static_cast<int>(R.ContainedParts.size()),
                R.ContainedParts.empty() ? "" : ": ", Indices(R.ContainedParts, 10));
  if (R.HasContainer) {
    Out << Format("parts outside the container: %d (largest protrusion %g)%s%s\n",
                  static_cast<int>(R.OutsideParts.size()), R.MaxProtrusion, R.OutsideParts.empty() ? "" : ": ",
                  Indices(R.OutsideParts, 10));
  } else {
    Out << "parts outside the container: no container given\n";
  }
  if (!R.Overlaps.empty()) {
    Out << "largest overlaps:\n";
    for (std::size_t k = 0; k < R.Overlaps.size() && k < 10; ++k) {
      const TPairOverlap& ov = R.Overlaps[k];
      Out << Format("  #%d x #%d: area %g, %.4g%% of the smaller part\n", ov.A, ov.B, ov.Area, ov.Relative * 100.0);
    }
  }
  Out << "verdict: " << (R.Clean ? "clean" : "NOT clean") << "\n";
  const TPhaseSeconds& s = R.Seconds;
  Out << "time: parse " << Ms(ParseSeconds) << ", build " << Ms(s.Build) << ", candidates " << Ms(s.Candidates)
      << ", contact " << Ms(s.Contact) << ", containment " << Ms(s.Containment) << ", overlap area "
      << Ms(s.OverlapArea) << ", container " << Ms(s.Container) << "; check " << Ms(s.Total()) << "\n";
}

nlohmann::json ReportToJson(const TCheckReport& R, double ParseSeconds) {
  using nlohmann::json;
  json overlaps = json::array();
  for (std::size_t k = 0; k < R.Overlaps.size() && k < 10; ++k) {
    const TPairOverlap& ov = R.Overlaps[k];
    overlaps.push_back({{"parts", {ov.A, ov.B}}, {"area", ov.Area}, {"relative_to_smaller_part", ov.Relative}});
  }
  const TPhaseSeconds& s = R.Seconds;
  return {{"layout", R.Name},
          {"parts", R.Parts},
          {"candidate_pairs", R.CandidatePairs},
          {"contact_pairs", R.ContactPairs},
          {"overlap_pairs", R.OverlapPairs},
          {"positive_overlap_pairs", R.PositiveOverlapPairs},
          {"overlap_area_total", R.OverlapAreaTotal},
          {"overlap_area_max", R.OverlapAreaMax},
          {"overlap_max_relative_to_smaller_part", R.OverlapMaxRelative},
          {"largest_overlaps", overlaps},
          {"contained_parts", R.ContainedParts.size()},
          {"contained_part_indices", R.ContainedParts},
          {"outside_container", R.OutsideParts.size()},
          {"outside_container_indices", R.OutsideParts},
          {"max_protrusion_outside_container", R.MaxProtrusion},
          {"clean", R.Clean},
          {"seconds",
           {{"parse", ParseSeconds},
            {"build", s.Build},
            {"candidates", s.Candidates},
            {"contact", s.Contact},
            {"containment", s.Containment},
            {"overlap_area", s.OverlapArea},
            {"container", s.Container},
            {"check", s.Total()}}}};
}

namespace {

// The length of the well-formed UTF-8 sequence that starts Text[At], or 0.
std::size_t Utf8Length(const std::string& Text, std::size_t At) {
  const auto byte = [&](std::size_t K) { return static_cast<unsigned char>(Text[K]); };
  const unsigned char c = byte(At);
  std::size_t n = 0;
  unsigned lo = 0x80, hi = 0xBF;  // the range of the second byte
  if (c < 0x80) return 1;
  if (c >= 0xC2 && c <= 0xDF) {
    n = 2;
  } else if (c >= 0xE0 && c <= 0xEF) {
    n = 3;
    if (c == 0xE0) lo = 0xA0;  // no overlong forms
    if (c == 0xED) hi = 0x9F;  // no surrogates
  } else if (c >= 0xF0 && c <= 0xF4) {
    n = 4;
    if (c == 0xF0) lo = 0x90;
    if (c == 0xF4) hi = 0x8F;  // nothing beyond U+10FFFF
  } else {
    return 0;
  }
  if (At + n > Text.size()) return 0;
  if (byte(At + 1) < lo || byte(At + 1) > hi) return 0;
  for (std::size_t k = 2; k < n; ++k) {
    if (byte(At + k) < 0x80 || byte(At + k) > 0xBF) return 0;
  }
  return n;
}

// Text inside SVG elements: names and ids come from the input file. XML allows no control
// characters but tab and line breaks, not even escaped, and only well-formed UTF-8: the
// others become U+FFFD, so the picture stays a well-formed document.
std::string XmlText(const std::string& Text) {
  std::string out;
  for (std::size_t k = 0; k < Text.size();) {
    const char c = Text[k];
    const std::size_t n = Utf8Length(Text, k);
    if (n == 0 || (n == 1 && static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')) {
      out += "\xEF\xBF\xBD";
      ++k;
      continue;
    }
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out.append(Text, k, n);
    }
    k += n;
  }
  return out;
}

std::string SvgPath(const TDynPoints2D& Ring) {
  std::string d;
  for (std::size_t k = 0; k < Ring.size(); ++k) d += Format("%s%.6g %.6g ", k ? "L" : "M", Ring[k].X, Ring[k].Y);
  return d + "Z";
}

// A ring whose segments may be arcs, drawn as SVG arcs: the circle's radius from the chord
// and the bulge, the long way round beyond a half turn, and counter-clockwise (SVG's
// positive angle, in the drawing's own y-up coordinates) for a positive bulge.
std::string SvgPath(const TDynPoints2D& Ring, const std::vector<double>& Bulges) {
  const std::size_t n = Ring.size();
  std::string d = Format("M%.6g %.6g ", Ring[0].X, Ring[0].Y);
  for (std::size_t k = 0; k < n; ++k) {
    const TPoint2D& to = Ring[(k + 1) % n];
    const double b = Bulges[k];
    if (b == 0.0) {
      if (k + 1 < n) d += Format("L%.6g %.6g ", to.X, to.Y);
      continue;
    }
    const double radius = Ring[k].DistanceTo(to) * (1.0 + b * b) / (4.0 * std::fabs(b));
    d += Format("A%.6g %.6g 0 %d %d %.6g %.6g ", radius, radius, std::fabs(b) > 1.0 ? 1 : 0, b > 0.0 ? 1 : 0, to.X,
                to.Y);
  }
  return d + "Z";
}

std::string SvgPath(const TLayoutPart& Part) {
  std::string d;
  for (std::size_t k = 0; k < Part.RingCount(); ++k) {
    if (k) d.append(" ");
    d.append(Part.HasArcs() ? SvgPath(Part.Ring(k), Part.Bulges[k]) : SvgPath(Part.Ring(k)));
  }
  return d;
}

}  // namespace

void WriteSvg(std::ostream& Out, const TLayout& Layout, const TCheckReport& R) {
  TRect2D parts = TRect2D::Invalid();
  for (const TLayoutPart& p : Layout.Parts) parts.Extend(PartBox(p));
  TRect2D box = parts.ExtendedRect(CalcAABB(Layout.Container));
  // A strip whose length is open (a wide board) would dwarf the parts: show the used length.
  if (parts.IsValid() && box.Width() > 3.0 * parts.Width()) {
    box.XMin = parts.XMin;
    box.XMax = parts.XMax;
  }
  if (!box.IsValid()) box = TRect2D(0, 0, 1, 1);
  const double w = std::max(box.Width(), 1e-9);
  const double h = std::max(box.Height(), 1e-9);
  const double margin = 0.02 * std::max(w, h);
  const double stroke = 0.0015 * std::max(w, h);
  const double fs = 0.022 * w;     // legend text size: four lines of up to ~60 characters
  const double legend = 5.6 * fs;  // room under the drawing for the legend
  const double vx = box.XMin - margin;
  const double vy = -box.YMax - margin;
  const double vw = w + 2 * margin;
  const double vh = h + 2 * margin + legend;

  std::set<int> touching;
  for (const auto& [a, b] : R.Contacts) {
    touching.insert(a);
    touching.insert(b);
  }
  std::set<int> flagged(R.ContainedParts.begin(), R.ContainedParts.end());
  for (const TPairOverlap& ov : R.Overlaps) {
    if (!ov.AboveLimit) continue;
    flagged.insert(ov.A);
    flagged.insert(ov.B);
  }

  Out << Format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"%.6g %.6g %.6g %.6g\" width=\"1200\" height=\"%d\">\n", vx,
      vy, vw, vh, static_cast<int>(std::clamp(1200.0 * vh / vw, 1.0, 12000.0)));
  Out << Format("<rect x=\"%.6g\" y=\"%.6g\" width=\"%.6g\" height=\"%.6g\" fill=\"white\"/>\n", vx, vy, vw, vh);
  // Drawing y points up; SVG's points down.
  Out << "<g transform=\"scale(1,-1)\" stroke-linejoin=\"round\">\n";
  if (!Layout.Container.empty()) {
    Out << Format("<path d=\"%s\" fill=\"#f4f4f4\" stroke=\"#333\" stroke-width=\"%.6g\"/>\n",
                  SvgPath(Layout.Container), stroke);
  }
  for (std::size_t i = 0; i < Layout.Parts.size(); ++i) {
    const int idx = static_cast<int>(i);
    const bool outside = std::find(R.OutsideParts.begin(), R.OutsideParts.end(), idx) != R.OutsideParts.end();
    const char* fill = flagged.count(idx) ? "#f6c6c6" : (outside ? "#f3d9a4" : "#a9c8e8");
    const char* line = touching.count(idx) ? "#e08a00" : "#3a5f85";
    const double width = touching.count(idx) ? 2.5 * stroke : stroke;
    Out << Format(
        "<path d=\"%s\" fill=\"%s\" fill-rule=\"evenodd\" stroke=\"%s\" stroke-width=\"%.6g\"><title>part #%d "
        "(%s)</title></path>\n",
        SvgPath(Layout.Parts[i]), fill, line, width, idx, XmlText(Layout.Parts[i].Id));
  }
  for (const TPairOverlap& ov : R.Overlaps) {
    std::string d;
    for (const TDynPoints2D& ring : ov.Region) d += SvgPath(ring) + " ";
    Out << Format(
        "<path d=\"%s\" fill=\"#e00000\" fill-rule=\"evenodd\" stroke=\"#e00000\" stroke-width=\"%.6g\"><title>#%d x "
        "#%d: area %g</title></path>\n",
        d, stroke, ov.A, ov.B, ov.Area);
  }
  Out << "</g>\n";
  const double lx = vx + margin;
  double ly = -box.YMin + margin + fs * 1.2;
  auto line = [&](const std::string& Text, const char* Colour) {
    Out << Format("<text x=\"%.6g\" y=\"%.6g\" font-family=\"sans-serif\" font-size=\"%.6g\" fill=\"%s\">%s</text>\n",
                  lx, ly, fs, Colour, XmlText(Text));
    ly += fs * 1.3;
  };
  line(Format("%s: %d parts, %d candidate pairs", R.Name, R.Parts, R.CandidatePairs), "#222");
  line(Format("%d pairs in contact (orange), %d overlapping (red)", R.ContactPairs, R.OverlapPairs), "#222");
  line(Format("%d inside another, %d outside the container", static_cast<int>(R.ContainedParts.size()),
              static_cast<int>(R.OutsideParts.size())),
       "#222");
  line(R.Clean ? "verdict: clean" : "verdict: NOT clean", R.Clean ? "#1a7f1a" : "#c00000");
  Out << "</svg>\n";
}

}  // namespace orvane::tool
