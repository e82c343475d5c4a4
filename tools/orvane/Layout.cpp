#include "Layout.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <type_traits>
#include <nlohmann/json.hpp>
#include <simdjson.h>

#include "orvane/foundation/Arc2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/MathUtils.h"
#include "orvane/foundation/PointArray.h"
#include "orvane/mixed/LABPolyline.h"
#include "orvane/monotone/MLABPolygon.h"
#include "orvane/monotone/MPolygon.h"
#include "orvane/paths/Path64.h"
#include "orvane/paths/clipping/Clipper.h"
#include "orvane/vertex/VPolyline2D.h"
#include "orvane/vertex/internal/SelfCrossing.h"

namespace orvane::tool {

using nlohmann::json;

namespace {

// Layouts are a few levels deep; this leaves room for any extra data a file carries.
constexpr int MaxJsonDepth = 64;

// The reader below runs on either of two views of one parsed document, which give the same
// answers: simdjson's, fast, and nlohmann's, which is the reference for every message about
// the JSON itself. A question that the fast view cannot answer as nlohmann does (a value of
// the wrong type where nlohmann names the types in its message, an id that is an array)
// raises TAskReference, and the document is read again on nlohmann's view.
struct TAskReference {};

// nlohmann's view: its own calls, and so its own exceptions and messages.
class TNlohmannNode {
 public:
  explicit TNlohmannNode(const json& J) : FJ(&J) {}
  bool IsObject() const { return FJ->is_object(); }
  bool IsArray() const { return FJ->is_array(); }
  bool IsNumber() const { return FJ->is_number(); }
  bool IsEmptyArray() const { return FJ->empty(); }
  std::size_t Size() const { return FJ->size(); }
  std::optional<TNlohmannNode> Find(const char* Key) const {
    if (!FJ->is_object()) return std::nullopt;
    const auto it = FJ->find(Key);
    if (it == FJ->end()) return std::nullopt;
    return TNlohmannNode(*it);
  }
  template <class F>
  void ForEach(F&& Visit) const {
    std::size_t k = 0;
    for (const json& item : *FJ) Visit(k++, TNlohmannNode(item));
  }
  double Number() const { return FJ->get<double>(); }
  std::string IdText() const { return FJ->is_string() ? FJ->get<std::string>() : FJ->dump(); }
  // A point [x, y]: an array of at least two numbers.
  bool Point(double& X, double& Y) const {
    if (!FJ->is_array() || FJ->size() < 2 || !(*FJ)[0].is_number() || !(*FJ)[1].is_number()) return false;
    X = (*FJ)[0].get<double>();
    Y = (*FJ)[1].get<double>();
    return true;
  }
  // A vertex [x, y] or [x, y, bulge]: two or three numbers, Bulge 0 for two.
  bool Vertex(double& X, double& Y, double& Bulge) const {
    if (!FJ->is_array() || FJ->size() < 2 || FJ->size() > 3) return false;
    for (const json& v : *FJ)
      if (!v.is_number()) return false;
    X = (*FJ)[0].get<double>();
    Y = (*FJ)[1].get<double>();
    Bulge = FJ->size() == 3 ? (*FJ)[2].get<double>() : 0.0;
    return true;
  }
  double ValueNumber(const char* Key, double Default) const { return FJ->value(Key, Default); }
  bool ValueBool(const char* Key, bool Default) const { return FJ->value(Key, Default); }
  std::string ValueString(const char* Key, const std::string& Default) const { return FJ->value(Key, Default); }

 private:
  const json* FJ;
};

// simdjson's view of a parsed document: the same answers where nlohmann would give one
// without an exception. Of repeated keys, the last counts, as for nlohmann.
class TSimdNode {
 public:
  explicit TSimdNode(simdjson::dom::element E) : FE(E) {}
  bool IsObject() const { return FE.is_object(); }
  bool IsArray() const { return FE.is_array(); }
  bool IsNumber() const { return FE.is_number(); }
  bool IsEmptyArray() const {
    const simdjson::dom::array a = Array();
    return !(a.begin() != a.end());
  }
  std::size_t Size() const { return Array().size(); }
  std::optional<TSimdNode> Find(const char* Key) const {
    if (!FE.is_object()) return std::nullopt;
    std::optional<TSimdNode> found;
    const std::string_view key(Key);
    simdjson::dom::object object;
    if (FE.get_object().get(object) != simdjson::SUCCESS) return std::nullopt;
    for (const simdjson::dom::key_value_pair field : object) {
      if (field.key == key) found = TSimdNode(field.value);
    }
    return found;
  }
  template <class F>
  void ForEach(F&& Visit) const {
    std::size_t k = 0;
    const simdjson::dom::array array = Array();
    for (const simdjson::dom::element item : array) Visit(k++, TSimdNode(item));
  }
  double Number() const { return FE.get_double().value_unsafe(); }
  std::string IdText() const {
    switch (FE.type()) {
      case simdjson::dom::element_type::STRING:
        return std::string(FE.get_string().value_unsafe());
      case simdjson::dom::element_type::INT64:
        return std::to_string(FE.get_int64().value_unsafe());
      case simdjson::dom::element_type::UINT64:
        return std::to_string(FE.get_uint64().value_unsafe());
      case simdjson::dom::element_type::DOUBLE:
        return json(FE.get_double().value_unsafe()).dump();
      case simdjson::dom::element_type::BOOL:
        return FE.get_bool().value_unsafe() ? "true" : "false";
      case simdjson::dom::element_type::NULL_VALUE:
        return "null";
      default:
        throw TAskReference();
    }
  }
  // The reader's innermost step, once per vertex of every file: kept free of calls.
  [[gnu::flatten]] bool Point(double& X, double& Y) const {
    if (!FE.is_array()) return false;
    const simdjson::dom::array a = Array();
    auto it = a.begin();
    const auto end = a.end();
    if (it == end) return false;
    const simdjson::dom::element x = *it;
    if (!(++it != end)) return false;
    const simdjson::dom::element y = *it;
    // get_double takes any number and refuses anything else.
    return x.get_double().get(X) == simdjson::SUCCESS && y.get_double().get(Y) == simdjson::SUCCESS;
  }
  bool Vertex(double& X, double& Y, double& Bulge) const {
    if (!FE.is_array()) return false;
    double v[3] = {0.0, 0.0, 0.0};
    std::size_t n = 0;
    for (const simdjson::dom::element item : Array()) {
      if (n == 3 || !item.is_number()) return false;
      v[n++] = item.get_double().value_unsafe();
    }
    if (n < 2) return false;
    X = v[0];
    Y = v[1];
    Bulge = v[2];
    return true;
  }
  double ValueNumber(const char* Key, double Default) const {
    const std::optional<TSimdNode> v = Value(Key);
    if (!v) return Default;
    if (!v->IsNumber()) throw TAskReference();
    return v->Number();
  }
  bool ValueBool(const char* Key, bool Default) const {
    const std::optional<TSimdNode> v = Value(Key);
    if (!v) return Default;
    if (!v->FE.is_bool()) throw TAskReference();
    return v->FE.get_bool().value_unsafe();
  }
  std::string ValueString(const char* Key, const std::string& Default) const {
    const std::optional<TSimdNode> v = Value(Key);
    if (!v) return Default;
    if (!v->FE.is_string()) throw TAskReference();
    return std::string(v->FE.get_string().value_unsafe());
  }

 private:
  simdjson::dom::array Array() const {
    // Asked only of an array, which every caller has checked.
    simdjson::dom::array a;
    [[maybe_unused]] const simdjson::error_code failed = FE.get_array().get(a);
    return a;
  }
  // A keyed value with a default, which only an object can give.
  std::optional<TSimdNode> Value(const char* Key) const {
    if (!FE.is_object()) throw TAskReference();
    return Find(Key);
  }

  simdjson::dom::element FE;
};

// What a message names: a ring, a part, a placement. Spelled out only when a message
// needs it, for the reader passes thousands of rings that are fine. Refers to its text or
// maker, which outlive the call it is passed to.
class TName {
 public:
  TName(const char* Text)
      : FObj(Text), FMake([](const void* T) { return std::string(static_cast<const char*>(T)); }) {}
  TName(const std::string& Text)
      : FObj(&Text), FMake([](const void* T) { return *static_cast<const std::string*>(T); }) {}
  template <class F>
    requires std::is_invocable_r_v<std::string, const F&>
  TName(const F& Make) : FObj(&Make), FMake([](const void* M) { return (*static_cast<const F*>(M))(); }) {}
  std::string operator()() const { return FMake(FObj); }

 private:
  const void* FObj;
  std::string (*FMake)(const void*);
};

// A ring [[x, y], ...]; a repeated closing vertex is dropped.
template <class N>
TDynPoints2D ReadRing(const std::optional<N>& Ring, TName What) {
  if (!Ring || !Ring->IsArray()) throw ELayoutError(What() + " is not an array of [x, y] points");
  TDynPoints2D pts;
  pts.reserve(Ring->Size());
  Ring->ForEach([&](std::size_t i, const N& p) {
    double x = 0.0;
    double y = 0.0;
    if (!p.Point(x, y)) throw ELayoutError(Format("%s: point %d is not [x, y]", What(), static_cast<int>(i)));
    if (!std::isfinite(x) || !std::isfinite(y)) {
      throw ELayoutError(Format("%s: point %d has a coordinate that is not finite", What(), static_cast<int>(i)));
    }
    // A vertex given twice in a row adds no edge.
    if (pts.empty() || !(pts.back() == TPoint2D(x, y))) pts.emplace_back(x, y);
  });
  if (pts.size() > 1 && pts.front() == pts.back()) pts.pop_back();
  if (pts.size() < 3) {
    throw ELayoutError(
        Format("%s has %d distinct vertices; a ring needs at least 3", What(), static_cast<int>(pts.size())));
  }
  return pts;
}

// A part's ring, whose vertices may be [x, y, bulge]. Bulges gets one bulge per vertex
// kept, or stays empty while every bulge is 0.
template <class N>
TDynPoints2D ReadRing(const std::optional<N>& Ring, TName What, std::vector<double>& Bulges) {
  if (!Ring || !Ring->IsArray()) throw ELayoutError(What() + " is not an array of [x, y] points");
  TDynPoints2D pts;
  pts.reserve(Ring->Size());
  Bulges.clear();
  Ring->ForEach([&](std::size_t i, const N& p) {
    double x = 0.0;
    double y = 0.0;
    double bulge = 0.0;
    if (!p.Vertex(x, y, bulge))
      throw ELayoutError(Format("%s: point %d is not [x, y] or [x, y, bulge]", What(), static_cast<int>(i)));
    if (!std::isfinite(x) || !std::isfinite(y)) {
      throw ELayoutError(Format("%s: point %d has a coordinate that is not finite", What(), static_cast<int>(i)));
    }
    if (!std::isfinite(bulge))
      throw ELayoutError(Format("%s: point %d has a bulge that is not finite", What(), static_cast<int>(i)));
    if (std::fabs(bulge) > MaxBulge) {
      throw ELayoutError(Format("%s: point %d has bulge %g; a bulge lies within +-%g, an arc of less than a full turn",
                                What(), static_cast<int>(i), bulge, MaxBulge));
    }
    if (std::fabs(bulge) < MinBulge) bulge = 0.0;
    // A vertex given twice in a row adds no edge; the segment that starts at the second
    // copy is the one that follows.
    if (pts.empty() || !(pts.back() == TPoint2D(x, y))) {
      pts.emplace_back(x, y);
      if (!Bulges.empty()) Bulges.push_back(0.0);
    }
    if (bulge != 0.0 || !Bulges.empty()) {
      if (Bulges.empty()) Bulges.assign(pts.size(), 0.0);
      Bulges.back() = bulge;
    }
  });
  if (pts.size() > 1 && pts.front() == pts.back()) {
    pts.pop_back();
    if (!Bulges.empty()) Bulges.pop_back();
  }
  const bool arcs = std::any_of(Bulges.begin(), Bulges.end(), [](double b) { return b != 0.0; });
  if (!arcs) Bulges.clear();
  // Two vertices joined by an arc and a line, or by two arcs, still enclose an area.
  const std::size_t least = arcs ? 2 : 3;
  if (pts.size() < least) {
    throw ELayoutError(Format("%s has %d distinct vertices; a ring needs at least %d", What(),
                              static_cast<int>(pts.size()), static_cast<int>(least)));
  }
  return pts;
}

template <class N>
std::vector<TDynPoints2D> ReadHoles(const N& Owner, TName What, std::vector<std::vector<double>>* Bulges = nullptr) {
  std::vector<TDynPoints2D> holes;
  const std::optional<N> h = Owner.Find("holes");
  if (!h) return holes;
  if (!h->IsArray()) throw ELayoutError(What() + ": holes is not an array of rings");
  holes.reserve(h->Size());
  h->ForEach([&](std::size_t k, const N& ring) {
    const auto what = [&] { return Format("%s hole %d", What(), static_cast<int>(k)); };
    holes.push_back(Bulges ? ReadRing(std::optional<N>(ring), what, Bulges->emplace_back())
                           : ReadRing(std::optional<N>(ring), what));
  });
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

template <class N>
std::vector<TLayoutPart> ReadPlacements(const std::optional<N>& Placements, const std::map<std::string, TShape>& Shapes,
                                        TName What) {
  if (!Placements || !Placements->IsArray()) throw ELayoutError(What() + ": placements is not an array");
  std::vector<TLayoutPart> parts;
  parts.reserve(Placements->Size());
  Placements->ForEach([&](std::size_t i, const N& pl) {
    const auto where = [&] { return Format("%s placement %d", What(), static_cast<int>(i)); };
    const std::optional<N> named = pl.Find("part");
    if (!pl.IsObject() || !named) throw ELayoutError(where() + " names no part");
    const std::string id = named->IdText();
    auto shape = Shapes.find(id);
    if (shape == Shapes.end()) throw ELayoutError(where() + " names unknown shape " + id);
    TLayoutPart part;
    part.Id = id;
    const double deg = pl.ValueNumber("rotation_deg", 0.0);
    double tx = 0.0;
    double ty = 0.0;
    if (const std::optional<N> translation = pl.Find("translation")) {
      if (!translation->IsArray() || !translation->Point(tx, ty)) throw ELayoutError(where() + ": translation is not [x, y]");
    }
    if (!std::isfinite(deg) || !std::isfinite(tx) || !std::isfinite(ty)) {
      throw ELayoutError(where() + ": rotation or translation is not finite");
    }
    const std::optional<N> placed = pl.Find("placed");
    part.Outer = placed ? ReadRing(placed, [&] { return where() + " placed ring"; })
                        : PlaceShape(shape->second.Outer, deg, tx, ty);
    part.Holes.reserve(shape->second.Holes.size());
    for (const TDynPoints2D& hole : shape->second.Holes) part.Holes.push_back(PlaceShape(hole, deg, tx, ty));
    parts.push_back(std::move(part));
  });
  return parts;
}

template <class N>
std::optional<TExpectedChecks> ReadChecks(const N& Owner) {
  const std::optional<N> c = Owner.Find("checks");
  if (!c || !c->IsObject()) return std::nullopt;
  TExpectedChecks e;
  e.Clean = c->ValueBool("clean", false);
  e.OverlapMaxRelative = c->ValueNumber("overlap_max_relative_to_smaller_part", 0.0);
  e.MaxProtrusion = c->ValueNumber("max_protrusion_outside_container", 0.0);
  return e;
}

template <class N>
void ReadContainer(const N& Doc, TLayout& Layout) {
  if (const std::optional<N> c = Doc.Find("container")) {
    Layout.Container = ReadRing(c->IsObject() ? c->Find("outer") : c, "container");
  }
  double height = 0.0;
  if (const std::optional<N> strip = Doc.Find("strip"); strip && strip->IsObject()) {
    if (const std::optional<N> h = strip->Find("height"); h && h->IsNumber()) height = h->Number();
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

void ValidateLayout(const TLayout& Layout);

// The layouts of one document, on either view; ValidateLayout follows.
template <class N>
std::vector<TLayout> ReadDocument(const N& Doc, const std::string& Name) {
  if (!Doc.IsObject()) throw ELayoutError("the top level is not a JSON object");
  TLayout base;
  base.Name = Name;
  ReadContainer(Doc, base);

  if (const std::optional<N> parts = Doc.Find("parts")) {
    // The tool's own format: parts given in place.
    if (!parts->IsArray()) throw ELayoutError("parts is not an array");
    parts->ForEach([&](std::size_t i, const N& p) {
      const auto what = [&] { return Format("part %d", static_cast<int>(i)); };
      if (!p.IsObject()) throw ELayoutError(what() + " is not an object");
      TLayoutPart part;
      const std::optional<N> id = p.Find("id");
      part.Id = id ? id->IdText() : std::to_string(i);
      part.Bulges.resize(1);
      part.Outer = ReadRing(p.Find("outer"), [&] { return what() + " outer ring"; }, part.Bulges[0]);
      part.Holes = ReadHoles(p, what, &part.Bulges);
      // A part of straight edges keeps no bulges, and so is checked as a polygon; a part
      // with an arc anywhere has a bulge for every vertex.
      if (std::all_of(part.Bulges.begin(), part.Bulges.end(), [](const std::vector<double>& b) { return b.empty(); })) {
        part.Bulges.clear();
      } else {
        for (std::size_t k = 0; k < part.RingCount(); ++k) part.Bulges[k].resize(part.Ring(k).size(), 0.0);
      }
      base.Parts.push_back(std::move(part));
    });
    ValidateLayout(base);
    return {base};
  }

  std::map<std::string, TShape> shapes;
  if (const std::optional<N> list = Doc.Find("shapes")) {
    if (!list->IsArray()) throw ELayoutError("shapes is not an array");
    list->ForEach([&](std::size_t, const N& s) {
      const std::optional<N> named = s.Find("part");
      if (!s.IsObject() || !named) throw ELayoutError("a shape has no part id");
      const std::string id = named->IdText();
      const auto what = [&] { return "shape " + id; };
      shapes[id] = TShape{ReadRing(s.Find("outer"), what), ReadHoles(s, what)};
    });
  }

  std::vector<TLayout> layouts;
  if (const std::optional<N> sols = Doc.Find("solutions")) {
    if (!sols->IsArray()) throw ELayoutError("solutions is not an array");
    if (sols->IsEmptyArray()) throw ELayoutError("solutions is empty");
    sols->ForEach([&](std::size_t k, const N& sol) {
      TLayout layout = base;
      const std::string algorithm = sol.ValueString("algorithm", std::string());
      layout.Name =
          Format("%s solution %d%s", Name, static_cast<int>(k), algorithm.empty() ? "" : " (" + algorithm + ")");
      layout.Parts =
          ReadPlacements(sol.Find("placements"), shapes, [&] { return Format("solution %d", static_cast<int>(k)); });
      layout.Expected = ReadChecks(sol);
      layouts.push_back(std::move(layout));
    });
  } else if (const std::optional<N> placements = Doc.Find("placements")) {
    base.Parts = ReadPlacements(placements, shapes, "layout");
    base.Expected = ReadChecks(Doc);
    layouts.push_back(std::move(base));
  } else {
    throw ELayoutError("no parts, placements or solutions");
  }
  for (const TLayout& layout : layouts) ValidateLayout(layout);
  return layouts;
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
// The tolerance of the kernel's contact tests, which also places the cuts of arcs at the
// tops and bottoms of their circles.
constexpr double KernelTol = 1e-6;

constexpr double MaxCoordinate = static_cast<double>(Clipper::HiRange) / PathWorkingRate;

// The vertices inside the coordinate range; with Shape, also a ring of straight edges with
// area that does not cross itself.
void CheckRing(const TDynPoints2D& Ring, TName What, bool Shape = true) {
  for (std::size_t i = 0; i < Ring.size(); ++i) {
    const TPoint2D& p = Ring[i];
    if (!(std::fabs(p.X) <= MaxCoordinate && std::fabs(p.Y) <= MaxCoordinate)) {
      throw ELayoutError(Format("%s: point %d (%g, %g) lies beyond +-%g, the coordinate range of the overlap areas",
                                What(), static_cast<int>(i), p.X, p.Y, MaxCoordinate));
    }
  }
  if (!Shape) return;
  const TPoint2D& o = Ring.front();
  const bool collinear = std::all_of(Ring.begin(), Ring.end(), [&](const TPoint2D& p) {
    return (Ring[1].X - o.X) * (p.Y - o.Y) == (Ring[1].Y - o.Y) * (p.X - o.X);
  });
  if (collinear) throw ELayoutError(What() + " has no area: its vertices lie on one line");
  // Tested in place, closed by its first vertex: the same answer as on the closed outline.
  if (internal::SelfCrosses(Ring, 0.0, true)) throw ELayoutError(What() + " crosses or touches itself");
  if (PolyArea(Ring) == 0.0) throw ELayoutError(What() + " has no area");
}

// A ring with arcs: its arcs inside the coordinate range, and on its chords, with area and
// not crossing itself.
void CheckArcRing(const TLayoutPart& Part, std::size_t K, const TDynPoints2D& Chords, const std::string& What) {
  const TDynPoints2D& ring = Part.Ring(K);
  const std::vector<double>& bulges = *Part.RingBulges(K);
  for (std::size_t i = 0; i < ring.size(); ++i) {
    if (bulges[i] == 0.0) continue;
    const TRect2D b = TArc2D::CreateBulge(ring[i], ring[(i + 1) % ring.size()], bulges[i]).GetBoundBox();
    if (!(std::max({-b.XMin, b.XMax, -b.YMin, b.YMax}) <= MaxCoordinate)) {
      throw ELayoutError(
          Format("%s: the arc from point %d reaches beyond +-%g, the coordinate range of the overlap areas", What,
                 static_cast<int>(i), MaxCoordinate));
    }
  }
  if (PolyArea(Chords) == 0.0) throw ELayoutError(What + " has no area");
  if (internal::SelfCrosses(Chords, 0.0, true)) throw ELayoutError(What + " crosses or touches itself");
}

// Rings the check can answer for: inside the coordinate range, with area, not crossing
// themselves, holes within their outline.
void ValidateLayout(const TLayout& Layout) {
  if (!Layout.Container.empty()) CheckRing(Layout.Container, "container");
  for (std::size_t i = 0; i < Layout.Parts.size(); ++i) {
    const TLayoutPart& part = Layout.Parts[i];
    const auto what = [&] { return Format("part %d (id %s)", static_cast<int>(i), part.Id); };
    if (part.HasArcs()) {
      const auto ring = [&](std::size_t K) {
        return K ? Format("%s hole %d", what(), static_cast<int>(K - 1)) : what() + " outer ring";
      };
      // The vertices in range first: the chords are made from them.
      for (std::size_t k = 0; k < part.RingCount(); ++k) CheckRing(part.Ring(k), ring(k), false);
      const std::vector<TDynPoints2D> chords = LinearRings(part);
      for (std::size_t k = 0; k < part.RingCount(); ++k) CheckArcRing(part, k, chords[k], ring(k));
      if (part.Holes.empty()) continue;
      // Holes by their vertices against the outline's exact arcs.
      const TMLABPolygon outer(*ArcPolyline(part.Outer, part.RingBulges(0)), KernelTol);
      for (std::size_t h = 0; h < part.Holes.size(); ++h) {
        for (const TPoint2D& p : part.Holes[h]) {
          if (outer.RelationWithPoint(p) == TShapeRelation::srOut)
            throw ELayoutError(Format("%s hole %d reaches outside the part's outer ring", what(), static_cast<int>(h)));
        }
      }
      continue;
    }
    CheckRing(part.Outer, [&] { return what() + " outer ring"; });
    if (part.Holes.empty()) continue;
    const std::unique_ptr<TMPolygon> outer = TMPolygon::FromRing(part.Outer, nullptr);
    for (std::size_t h = 0; h < part.Holes.size(); ++h) {
      const auto hole = [&] { return Format("%s hole %d", what(), static_cast<int>(h)); };
      CheckRing(part.Holes[h], hole);
      for (const TPoint2D& p : part.Holes[h]) {
        if (outer->PointIsIn(p) == 0) throw ELayoutError(hole() + " reaches outside the part's outer ring");
      }
    }
  }
}

}  // namespace

std::unique_ptr<TLABPolyline> ArcPolyline(const TDynPoints2D& Ring, const std::vector<double>* Bulges) {
  auto out = std::make_unique<TLABPolyline>();
  std::vector<TLABSegline> segs;
  segs.reserve(Ring.size());
  for (std::size_t i = 0; i < Ring.size(); ++i) {
    const TPoint2D& a = Ring[i];
    const TPoint2D& b = Ring[(i + 1) % Ring.size()];
    const double bulge = Bulges ? (*Bulges)[i] : 0.0;
    segs.push_back(bulge == 0.0 ? TLABSegline::CreateLine(a, b)
                                : TLABSegline::CreateArc(TArc2D::CreateBulge(a, b, bulge)));
  }
  out->AddRange(segs);
  return out;
}

TRect2D PartBox(const TLayoutPart& Part) {
  TRect2D box = CalcAABB(Part.Outer);
  if (!Part.HasArcs()) return box;
  for (std::size_t i = 0; i < Part.Outer.size(); ++i) {
    const double bulge = Part.Bulges[0][i];
    if (bulge != 0.0)
      box.Extend(TArc2D::CreateBulge(Part.Outer[i], Part.Outer[(i + 1) % Part.Outer.size()], bulge).GetBoundBox());
  }
  return box;
}

std::vector<TDynPoints2D> LinearRings(const TLayoutPart& Part) {
  if (!Part.HasArcs()) {
    std::vector<TDynPoints2D> rings{Part.Outer};
    rings.insert(rings.end(), Part.Holes.begin(), Part.Holes.end());
    return rings;
  }
  const TRect2D box = PartBox(Part);
  const double sagitta = 1e-6 * std::max(box.Width(), box.Height());
  std::vector<TDynPoints2D> rings;
  rings.reserve(Part.RingCount());
  for (std::size_t k = 0; k < Part.RingCount(); ++k) {
    const TDynPoints2D& ring = Part.Ring(k);
    const std::vector<double>& bulges = Part.Bulges[k];
    TDynPoints2D& out = rings.emplace_back();
    out.reserve(ring.size());
    for (std::size_t i = 0; i < ring.size(); ++i) {
      out.push_back(ring[i]);
      if (bulges[i] == 0.0) continue;
      const TArc2D arc = TArc2D::CreateBulge(ring[i], ring[(i + 1) % ring.size()], bulges[i]);
      if (arc.IsLine || !(arc.Radius > 0.0)) continue;
      // Chords of angle step stay within the sagitta of the arc; the count is bounded,
      // as the reader bounds the bulge.
      const double step = 2.0 * std::acos(1.0 - std::min(sagitta / arc.Radius, 1.0));
      const int n = std::clamp(static_cast<int>(std::ceil(std::fabs(arc.SweepAngle) / step)), 1, 1 << 16);
      for (int j = 1; j < n; ++j) {
        const double t = arc.StartAngle + arc.SweepAngle * j / n;
        out.emplace_back(arc.Center.X + arc.Radius * std::cos(t), arc.Center.Y + arc.Radius * std::sin(t));
      }
    }
  }
  return rings;
}

std::vector<TLayout> ParseLayoutWithNlohmann(const std::string& Text, const std::string& Name) {
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
  try {
    return ReadDocument(TNlohmannNode(doc), Name);
  } catch (const json::exception& e) {
    // Type mismatches inside the document (a string where a number belongs, ...).
    throw ELayoutError(std::string("unexpected JSON content: ") + e.what());
  }
}

std::vector<TLayout> ParseLayout(const std::string& Text, const std::string& Name) {
  // One parser per thread, kept for its buffers. It refuses nesting deeper than the limit
  // of CheckJsonShape, and a NUL byte is never valid JSON, so the documents it takes are
  // those that CheckJsonShape lets pass; anything it refuses goes the reference way, which
  // runs that check first.
  thread_local simdjson::dom::parser parser;
  if (parser.max_depth() != static_cast<std::size_t>(MaxJsonDepth) &&
      parser.allocate(std::max<std::size_t>(Text.size(), 1), MaxJsonDepth) != simdjson::SUCCESS) {
    return ParseLayoutWithNlohmann(Text, Name);
  }
  // Text read by ReadLayoutFile carries the padding simdjson reads past the end; other text
  // is copied once to get it.
  const bool padded = Text.capacity() - Text.size() >= simdjson::SIMDJSON_PADDING;
  simdjson::dom::element doc;
  if (parser.parse(Text.data(), Text.size(), !padded).get(doc) != simdjson::SUCCESS) {
    // Whatever simdjson refuses, nlohmann reads, or names the fault in today's words.
    return ParseLayoutWithNlohmann(Text, Name);
  }
  try {
    return ReadDocument(TSimdNode(doc), Name);
  } catch (const TAskReference&) {
    return ParseLayoutWithNlohmann(Text, Name);
  }
}

std::vector<TLayout> ReadLayoutFile(const std::string& Path) {
  std::error_code ec;
  if (!std::filesystem::exists(Path, ec)) throw ELayoutError("no such file");
  if (!std::filesystem::is_regular_file(Path, ec)) throw ELayoutError("not a regular file");
  std::ifstream in(Path, std::ios::binary);
  if (!in) throw ELayoutError("cannot open the file");
  // Read whole, into room for the padding that the parser reads past the end.
  std::string text;
  const std::uintmax_t size = std::filesystem::file_size(Path, ec);
  if (!ec && size < std::uintmax_t{1} << 40) text.reserve(static_cast<std::size_t>(size) + simdjson::SIMDJSON_PADDING);
  char chunk[1 << 16];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    text.append(chunk, static_cast<std::size_t>(in.gcount()));
    if (text.capacity() - text.size() < simdjson::SIMDJSON_PADDING) text.reserve(text.size() * 2 + simdjson::SIMDJSON_PADDING);
  }
  if (in.bad()) throw ELayoutError("cannot read the file");
  const std::size_t slash = Path.find_last_of('/');
  return ParseLayout(text, slash == std::string::npos ? Path : Path.substr(slash + 1));
}

}  // namespace orvane::tool
