#include "Layout.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VPolyline2D.h"

namespace orvane::tool {

using nlohmann::json;

namespace {

// Layouts are a few levels deep; this leaves room for any extra data a file carries.
constexpr int MaxJsonDepth = 64;

std::string IdText(const json& Id) { return Id.is_string() ? Id.get<std::string>() : Id.dump(); }

// A ring [[x, y], ...]; a repeated closing vertex is dropped.
TDynPoints2D ReadRing(const json& Ring, const std::string& What) {
  if (!Ring.is_array()) throw ELayoutError(What + " is not an array of [x, y] points");
  TDynPoints2D pts;
  pts.reserve(Ring.size());
  for (std::size_t i = 0; i < Ring.size(); ++i) {
    const json& p = Ring[i];
    if (!p.is_array() || p.size() < 2 || !p[0].is_number() || !p[1].is_number()) {
      throw ELayoutError(Format("%s: point %d is not [x, y]", What, static_cast<int>(i)));
    }
    const double x = p[0].get<double>();
    const double y = p[1].get<double>();
    if (!std::isfinite(x) || !std::isfinite(y)) {
      throw ELayoutError(Format("%s: point %d has a coordinate that is not finite", What, static_cast<int>(i)));
    }
    // A vertex given twice in a row adds no edge.
    if (pts.empty() || !(pts.back() == TPoint2D(x, y))) pts.emplace_back(x, y);
  }
  if (pts.size() > 1 && pts.front() == pts.back()) pts.pop_back();
  if (pts.size() < 3) {
    throw ELayoutError(
        Format("%s has %d distinct vertices; a ring needs at least 3", What, static_cast<int>(pts.size())));
  }
  return pts;
}

std::vector<TDynPoints2D> ReadHoles(const json& Owner, const std::string& What) {
  std::vector<TDynPoints2D> holes;
  if (!Owner.contains("holes")) return holes;
  const json& h = Owner["holes"];
  if (!h.is_array()) throw ELayoutError(What + ": holes is not an array of rings");
  for (std::size_t k = 0; k < h.size(); ++k)
    holes.push_back(ReadRing(h[k], Format("%s hole %d", What, static_cast<int>(k))));
  return holes;
}

// Placement transform of the benchmark files: rotate about the shape's origin, then shift.
TDynPoints2D PlaceShape(const TDynPoints2D& Shape, double Degrees, double TX, double TY) {
  double c = 0.0;
  double s = 0.0;
  // A whole number of turns changes nothing; reducing first keeps the quarter count small.
  Degrees = std::fmod(Degrees, 360.0);
  const double quarter = Degrees / 90.0;
  if (quarter == std::nearbyint(quarter)) {
    // Exact cosine and sine for multiples of 90 degrees.
    static constexpr double cs[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    const auto q = static_cast<std::size_t>(((static_cast<int>(quarter) % 4) + 4) % 4);
    c = cs[q][0];
    s = cs[q][1];
  } else {
    c = std::cos(Degrees * Pi / 180.0);
    s = std::sin(Degrees * Pi / 180.0);
  }
  TDynPoints2D out;
  out.reserve(Shape.size());
  for (const TPoint2D& p : Shape) out.emplace_back(c * p.X - s * p.Y + TX, s * p.X + c * p.Y + TY);
  return out;
}

struct TShape {
  TDynPoints2D Outer;
  std::vector<TDynPoints2D> Holes;
};

std::vector<TLayoutPart> ReadPlacements(const json& Placements, const std::map<std::string, TShape>& Shapes,
                                        const std::string& What) {
  if (!Placements.is_array()) throw ELayoutError(What + ": placements is not an array");
  std::vector<TLayoutPart> parts;
  parts.reserve(Placements.size());
  for (std::size_t i = 0; i < Placements.size(); ++i) {
    const json& pl = Placements[i];
    const std::string where = Format("%s placement %d", What, static_cast<int>(i));
    if (!pl.is_object() || !pl.contains("part")) throw ELayoutError(where + " names no part");
    const std::string id = IdText(pl["part"]);
    auto shape = Shapes.find(id);
    if (shape == Shapes.end()) throw ELayoutError(where + " names unknown shape " + id);
    TLayoutPart part;
    part.Id = id;
    const double deg = pl.value("rotation_deg", 0.0);
    const json translation = pl.value("translation", json::array({0.0, 0.0}));
    if (!translation.is_array() || translation.size() < 2 || !translation[0].is_number() ||
        !translation[1].is_number()) {
      throw ELayoutError(where + ": translation is not [x, y]");
    }
    const double tx = translation[0].get<double>();
    const double ty = translation[1].get<double>();
    if (!std::isfinite(deg) || !std::isfinite(tx) || !std::isfinite(ty)) {
      throw ELayoutError(where + ": rotation or translation is not finite");
    }
    part.Outer = pl.contains("placed") ? ReadRing(pl["placed"], where + " placed ring")
                                       : PlaceShape(shape->second.Outer, deg, tx, ty);
    for (const TDynPoints2D& hole : shape->second.Holes) part.Holes.push_back(PlaceShape(hole, deg, tx, ty));
    parts.push_back(std::move(part));
  }
  return parts;
}

std::optional<TExpectedChecks> ReadChecks(const json& Owner) {
  if (!Owner.contains("checks") || !Owner["checks"].is_object()) return std::nullopt;
  const json& c = Owner["checks"];
  TExpectedChecks e;
  e.Clean = c.value("clean", false);
  e.OverlapMaxRelative = c.value("overlap_max_relative_to_smaller_part", 0.0);
  e.MaxProtrusion = c.value("max_protrusion_outside_container", 0.0);
  return e;
}

void ReadContainer(const json& Doc, TLayout& Layout) {
  if (Doc.contains("container")) {
    const json& c = Doc["container"];
    Layout.Container = ReadRing(c.is_object() ? c.value("outer", json()) : c, "container");
  }
  double height = 0.0;
  if (Doc.contains("strip") && Doc["strip"].is_object() && Doc["strip"].value("height", json()).is_number()) {
    height = Doc["strip"]["height"].get<double>();
  }
  if (height <= 0.0 && !Layout.Container.empty()) {
    double lo = Layout.Container[0].Y;
    double hi = lo;
    for (const TPoint2D& p : Layout.Container) {
      lo = std::min(lo, p.Y);
      hi = std::max(hi, p.Y);
    }
    height = hi - lo;
  }
  Layout.ContainerHeight = height;
}

// Refuses, before the JSON reader sees it, what that reader would take badly: values
// nested deeper than any layout needs (each level costs the reader and the document's
// copies stack), and a NUL byte, where the reader would stop and take what follows for
// the end of the text.
void CheckJsonShape(const std::string& Text) {
  int depth = 0;
  bool inString = false;
  for (std::size_t k = 0; k < Text.size(); ++k) {
    const char c = Text[k];
    if (c == '\0') throw ELayoutError(Format("malformed JSON: a NUL byte at offset %d", static_cast<int>(k)));
    if (inString) {
      if (c == '\\')
        ++k;
      else if (c == '"')
        inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > MaxJsonDepth) throw ELayoutError(Format("JSON nested deeper than %d levels", MaxJsonDepth));
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
}

// Coordinates up to this size keep every vertex, scaled to the working rate of the integer
// paths that the overlap areas are computed on, inside the clipping engine's range.
constexpr double MaxCoordinate = static_cast<double>(Clipper::HiRange) / PathWorkingRate;

void CheckRing(const TDynPoints2D& Ring, const std::string& What) {
  for (std::size_t i = 0; i < Ring.size(); ++i) {
    const TPoint2D& p = Ring[i];
    if (!(std::fabs(p.X) <= MaxCoordinate && std::fabs(p.Y) <= MaxCoordinate)) {
      throw ELayoutError(Format("%s: point %d (%g, %g) lies beyond +-%g, the coordinate range of the overlap areas",
                                What, static_cast<int>(i), p.X, p.Y, MaxCoordinate));
    }
  }
  const TPoint2D& o = Ring.front();
  const bool collinear = std::all_of(Ring.begin(), Ring.end(), [&](const TPoint2D& p) {
    return (Ring[1].X - o.X) * (p.Y - o.Y) == (Ring[1].Y - o.Y) * (p.X - o.X);
  });
  if (collinear) throw ELayoutError(What + " has no area: its vertices lie on one line");
  if (ClosedPolyline(Ring).IsSelfIntersect(0.0)) throw ELayoutError(What + " crosses or touches itself");
  if (PolyArea(Ring) == 0.0) throw ELayoutError(What + " has no area");
}

// Rings the check can answer for: inside the coordinate range, with area, not crossing
// themselves, holes within their outline.
void ValidateLayout(const TLayout& Layout) {
  if (!Layout.Container.empty()) CheckRing(Layout.Container, "container");
  for (std::size_t i = 0; i < Layout.Parts.size(); ++i) {
    const TLayoutPart& part = Layout.Parts[i];
    const std::string what = Format("part %d (id %s)", static_cast<int>(i), part.Id);
    CheckRing(part.Outer, what + " outer ring");
    if (part.Holes.empty()) continue;
    const TMPolygon outer(ClosedPolyline(part.Outer), nullptr);
    for (std::size_t h = 0; h < part.Holes.size(); ++h) {
      const std::string hole = Format("%s hole %d", what, static_cast<int>(h));
      CheckRing(part.Holes[h], hole);
      for (const TPoint2D& p : part.Holes[h]) {
        if (outer.PointIsIn(p) == 0) throw ELayoutError(hole + " reaches outside the part's outer ring");
      }
    }
  }
}

}  // namespace

TVPolyline2D ClosedPolyline(const TDynPoints2D& Ring) {
  TDynPoints2D closed;
  closed.reserve(Ring.size() + 1);
  closed.assign(Ring.begin(), Ring.end());
  if (!closed.empty()) closed.push_back(closed.front());
  return TVPolyline2D(std::move(closed));
}

std::vector<TLayout> ParseLayout(const std::string& Text, const std::string& Name) {
  CheckJsonShape(Text);
  json doc;
  try {
    doc = json::parse(Text);
  } catch (const json::out_of_range& e) {
    // Numbers beyond the double range are the only way JSON can spell an infinite value.
    throw ELayoutError(std::string("a number is not finite: ") + e.what());
  } catch (const json::exception& e) {
    throw ELayoutError(std::string("malformed JSON: ") + e.what());
  }
  if (!doc.is_object()) throw ELayoutError("the top level is not a JSON object");

  try {
    TLayout base;
    base.Name = Name;
    ReadContainer(doc, base);

    if (doc.contains("parts")) {
      // The tool's own format: parts given in place.
      const json& parts = doc["parts"];
      if (!parts.is_array()) throw ELayoutError("parts is not an array");
      for (std::size_t i = 0; i < parts.size(); ++i) {
        const json& p = parts[i];
        const std::string what = Format("part %d", static_cast<int>(i));
        if (!p.is_object()) throw ELayoutError(what + " is not an object");
        TLayoutPart part;
        part.Id = p.contains("id") ? IdText(p["id"]) : std::to_string(i);
        part.Outer = ReadRing(p.value("outer", json()), what + " outer ring");
        part.Holes = ReadHoles(p, what);
        base.Parts.push_back(std::move(part));
      }
      ValidateLayout(base);
      return {base};
    }

    std::map<std::string, TShape> shapes;
    if (doc.contains("shapes")) {
      if (!doc["shapes"].is_array()) throw ELayoutError("shapes is not an array");
      for (const json& s : doc["shapes"]) {
        if (!s.is_object() || !s.contains("part")) throw ELayoutError("a shape has no part id");
        const std::string id = IdText(s["part"]);
        shapes[id] = TShape{ReadRing(s.value("outer", json()), "shape " + id), ReadHoles(s, "shape " + id)};
      }
    }

    std::vector<TLayout> layouts;
    if (doc.contains("solutions")) {
      if (!doc["solutions"].is_array()) throw ELayoutError("solutions is not an array");
      const json& sols = doc["solutions"];
      if (sols.empty()) throw ELayoutError("solutions is empty");
      for (std::size_t k = 0; k < sols.size(); ++k) {
        const json& sol = sols[k];
        TLayout layout = base;
        const std::string algorithm = sol.value("algorithm", std::string());
        layout.Name =
            Format("%s solution %d%s", Name, static_cast<int>(k), algorithm.empty() ? "" : " (" + algorithm + ")");
        layout.Parts =
            ReadPlacements(sol.value("placements", json()), shapes, Format("solution %d", static_cast<int>(k)));
        layout.Expected = ReadChecks(sol);
        layouts.push_back(std::move(layout));
      }
    } else if (doc.contains("placements")) {
      base.Parts = ReadPlacements(doc["placements"], shapes, "layout");
      base.Expected = ReadChecks(doc);
      layouts.push_back(std::move(base));
    } else {
      throw ELayoutError("no parts, placements or solutions");
    }
    for (const TLayout& layout : layouts) ValidateLayout(layout);
    return layouts;
  } catch (const json::exception& e) {
    // Type mismatches inside the document (a string where a number belongs, ...).
    throw ELayoutError(std::string("unexpected JSON content: ") + e.what());
  }
}

std::vector<TLayout> ReadLayoutFile(const std::string& Path) {
  std::error_code ec;
  if (!std::filesystem::exists(Path, ec)) throw ELayoutError("no such file");
  if (!std::filesystem::is_regular_file(Path, ec)) throw ELayoutError("not a regular file");
  std::ifstream in(Path, std::ios::binary);
  if (!in) throw ELayoutError("cannot open the file");
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throw ELayoutError("cannot read the file");
  const std::size_t slash = Path.find_last_of('/');
  return ParseLayout(text.str(), slash == std::string::npos ? Path : Path.substr(slash + 1));
}

}  // namespace orvane::tool
