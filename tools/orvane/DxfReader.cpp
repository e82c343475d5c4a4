// The DXF reader of the profile command.
//
// The group-code stream is read here rather than through libdime: Debian's libdime is built
// with `typedef float dxfdouble`, so every coordinate it hands out has 24 bits of mantissa,
// which is far too coarse for joining pieces at a millionth of the drawing's size. One pass
// splits the text into (code, value, line) pairs and checks every number on the way, so that
// no input reaches the geometry unchecked; a second pass groups the pairs into sections,
// blocks and entities; the model space is then expanded, block insertions included.

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <sstream>
#include <string_view>
#include <unordered_map>

#include "DxfDrawing.h"
#include "orvane/curves/GeCircularArc2D.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/curves/GeLine2D.h"
#include "orvane/curves/GePolyline2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Matrix2D.h"
#include "orvane/splines/GeSpline2D.h"

namespace orvane::tool {

namespace {

constexpr double kPi = std::numbers::pi;
// Block insertions multiply: nested arrays of a few lines can stand for billions of
// entities. Their expansion is measured before any is built, in group values read (an
// array cell counts as kCellCost), and the drawing is refused past this many, about what
// a 50 MB file holds; the model's own entities do not count.
constexpr long long kMaxExpanded = 5000000;
constexpr long long kCellCost = 4;
constexpr int kMaxNesting = 64;

std::string LineText(int Line) {
  std::string s = "line ";
  s += std::to_string(Line);
  s += ": ";
  return s;
}

[[noreturn]] void Fail(int Line, const std::string& What) {
  if (Line > 0) throw EDxfError(LineText(Line) + What);
  throw EDxfError(What);
}

// ---------------------------------------------------------------------------------------
// Tokens

struct TGroup {
  int Code = 0;
  std::string_view Value;
  int Line = 0;  // the line of the value, counted from 1
  double Number = 0.0;
  long long Integer = 0;
};

// The codes whose values are floating-point numbers, and those whose values are integers.
bool IsRealCode(int c) {
  return (c >= 10 && c <= 59) || (c >= 110 && c <= 149) || (c >= 210 && c <= 239) || (c >= 460 && c <= 469) ||
         (c >= 1010 && c <= 1059);
}
bool IsIntegerCode(int c) {
  return (c >= 60 && c <= 79) || (c >= 90 && c <= 99) || (c >= 170 && c <= 179) || (c >= 270 && c <= 289) ||
         (c >= 370 && c <= 389) || (c >= 400 && c <= 409) || (c >= 420 && c <= 429) || (c >= 440 && c <= 459) ||
         (c >= 1060 && c <= 1071);
}

std::string_view Trim(std::string_view s) {
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
  return s;
}

bool ParseInteger(std::string_view s, long long& Out) {
  s = Trim(s);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty()) return false;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), Out);
  return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

// False when the text is not a number; Out may then be anything. "nan" and "inf" parse, and
// the caller refuses them with their own message.
// A type after a group code 0 is a name of letters, digits and underscores ("3DFACE",
// "ACAD_PROXY_ENTITY"); a number there means the groups have slipped out of step.
bool IsTypeName(std::string_view V) {
  bool letter = false;
  for (const char c : V) {
    if (std::isalpha(static_cast<unsigned char>(c))) letter = true;
    else if (!std::isdigit(static_cast<unsigned char>(c)) && c != '_') return false;
  }
  return letter;
}

bool ParseReal(std::string_view s, double& Out) {
  s = Trim(s);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty()) return false;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), Out);
  return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

std::string Quoted(std::string_view s) {
  constexpr std::size_t kMax = 40;
  std::string out = "\"";
  for (std::size_t i = 0; i < s.size() && i < kMax; ++i) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    out += (c < 0x20 || c == 0x7f) ? '?' : static_cast<char>(c);
  }
  if (s.size() > kMax) out += "...";
  out += '"';
  return out;
}

std::vector<TGroup> Tokenize(std::string_view Text) {
  if (Text.substr(0, 18) == "AutoCAD Binary DXF") throw EDxfError("binary DXF is not read, only text DXF");
  if (Text.substr(0, 3) == "\xEF\xBB\xBF") Text.remove_prefix(3);
  std::vector<TGroup> groups;
  groups.reserve(Text.size() / 12);
  std::size_t pos = 0;
  int line = 0;
  auto nextLine = [&](std::string_view& Out) {
    if (pos >= Text.size()) return false;
    std::size_t end = pos;
    while (end < Text.size() && Text[end] != '\n' && Text[end] != '\r') ++end;
    Out = Text.substr(pos, end - pos);
    if (end < Text.size() && Text[end] == '\r' && end + 1 < Text.size() && Text[end + 1] == '\n') ++end;
    pos = end + 1;
    ++line;
    return true;
  };
  std::string_view codeText;
  std::string_view value;
  while (nextLine(codeText)) {
    const int codeLine = line;
    long long code = 0;
    const bool codeOk = ParseInteger(codeText, code) && code >= 0 && code <= 1071;
    if (!codeOk) {
      if (groups.empty()) throw EDxfError("not a DXF file");
      // A blank last line is how many writers end the file.
      if (Trim(codeText).empty() && pos >= Text.size()) break;
      Fail(codeLine, "the group code " + Quoted(codeText) + " is not a number");
    }
    if (!nextLine(value)) {
      if (groups.empty()) throw EDxfError("not a DXF file");
      Fail(codeLine, "truncated: the group code has no value");
    }
    TGroup g;
    g.Code = static_cast<int>(code);
    g.Line = line;
    // Strings keep inner spaces; the names compared below are trimmed where used.
    g.Value = g.Code == 1 || g.Code == 3 ? value : Trim(value);
    if (IsRealCode(g.Code)) {
      if (!ParseReal(g.Value, g.Number)) Fail(line, "the value " + Quoted(g.Value) + " is not a number");
      if (!std::isfinite(g.Number)) Fail(line, "the coordinate " + Quoted(g.Value) + " is not finite");
    } else if (IsIntegerCode(g.Code)) {
      // Some writers put a decimal point on integer values; an integral real is accepted.
      double d = 0.0;
      if (ParseInteger(g.Value, g.Integer)) {
      } else if (ParseReal(g.Value, d) && std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 9e15) {
        g.Integer = static_cast<long long>(d);
      } else {
        Fail(line, "the value " + Quoted(g.Value) + " is not an integer");
      }
    }
    if (groups.empty() && !(g.Code == 0 && g.Value == "SECTION") && g.Code != 999) throw EDxfError("not a DXF file");
    if (g.Code == 0 && !IsTypeName(g.Value)) Fail(line, "the entity type " + Quoted(g.Value) + " is not a name");
    groups.push_back(g);
  }
  if (groups.empty()) throw EDxfError("not a DXF file (empty)");
  return groups;
}

// ---------------------------------------------------------------------------------------
// Sections, blocks and entities

struct TEntity {
  std::string_view Type;
  int Line = 0;
  const TGroup* Begin = nullptr;  // the groups after the type, up to the next code 0
  const TGroup* End = nullptr;
  std::vector<TEntity> Children;  // a POLYLINE's VERTEXes, an INSERT's ATTRIBs

  std::string_view Text(int Code, std::string_view Default = {}) const {
    for (const TGroup* g = Begin; g != End; ++g)
      if (g->Code == Code) return g->Value;
    return Default;
  }
  double Real(int Code, double Default = 0.0) const {
    for (const TGroup* g = Begin; g != End; ++g)
      if (g->Code == Code) return g->Number;
    return Default;
  }
  long long Int(int Code, long long Default = 0) const {
    for (const TGroup* g = Begin; g != End; ++g)
      if (g->Code == Code) return g->Integer;
    return Default;
  }
  const TGroup* Find(int Code) const {
    for (const TGroup* g = Begin; g != End; ++g)
      if (g->Code == Code) return g;
    return nullptr;
  }
};

struct TBlock {
  std::string Name;
  int Line = 0;
  TPoint2D Base;
  std::vector<TEntity> Entities;
};

std::string Upper(std::string_view s) {
  std::string out(Trim(s));
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

struct TFile {
  std::vector<TGroup> Groups;
  std::vector<TEntity> Model;
  std::unordered_map<std::string, TBlock> Blocks;  // by upper-case name
  long long InsUnits = 0;
};

// Reads entities from Groups[i] (a code 0) until a code 0 with a type in Stop; i is left on
// that group. Raises the truncation error when the groups run out first.
std::vector<TEntity> ReadEntities(const std::vector<TGroup>& G, std::size_t& i,
                                  std::initializer_list<std::string_view> Stop) {
  std::vector<TEntity> out;
  auto stops = [&](std::string_view t) { return std::find(Stop.begin(), Stop.end(), t) != Stop.end(); };
  auto readOne = [&](std::size_t& k) {
    TEntity e;
    e.Type = G[k].Value;
    e.Line = G[k].Line;
    ++k;
    e.Begin = G.data() + k;
    while (k < G.size() && G[k].Code != 0) ++k;
    e.End = G.data() + k;
    return e;
  };
  while (i < G.size()) {
    if (G[i].Code != 0) {
      ++i;  // stray groups between entities carry nothing
      continue;
    }
    if (stops(G[i].Value)) return out;
    if (G[i].Value == "ENDSEC" || G[i].Value == "EOF" || G[i].Value == "SECTION")
      Fail(G[i].Line, "unexpected " + std::string(G[i].Value) + " inside a list of entities");
    TEntity e = readOne(i);
    // A POLYLINE owns the VERTEXes up to its SEQEND, an INSERT the ATTRIBs up to its SEQEND
    // (some writers leave out the flag 66 that announces them).
    const bool owns = e.Type == "POLYLINE" || e.Type == "INSERT";
    if (owns) {
      while (i < G.size() && G[i].Code == 0 && (G[i].Value == "VERTEX" || G[i].Value == "ATTRIB"))
        e.Children.push_back(readOne(i));
      if (i < G.size() && G[i].Code == 0 && G[i].Value == "SEQEND") readOne(i);
    }
    out.push_back(std::move(e));
  }
  Fail(G.empty() ? 0 : G.back().Line, "truncated: the file ends inside a section");
}

TFile Structure(std::string_view Text) {
  TFile f;
  f.Groups = Tokenize(Text);
  const std::vector<TGroup>& G = f.Groups;
  std::size_t i = 0;
  bool eof = false;
  while (i < G.size()) {
    const TGroup& g = G[i];
    if (g.Code == 999) {
      ++i;
      continue;
    }
    if (g.Code == 0 && g.Value == "EOF") {
      eof = true;
      break;
    }
    if (g.Code != 0 || g.Value != "SECTION") Fail(g.Line, "expected a SECTION, found " + Quoted(g.Value));
    ++i;
    if (i >= G.size()) Fail(g.Line, "truncated: the file ends inside a section");
    const std::string_view name = G[i].Code == 2 ? G[i].Value : std::string_view();
    const int sectionLine = g.Line;
    if (name == "ENTITIES" || name == "BLOCKS") {
      ++i;
      while (true) {
        if (name == "ENTITIES") {
          std::vector<TEntity> more = ReadEntities(G, i, {"ENDSEC"});
          std::move(more.begin(), more.end(), std::back_inserter(f.Model));
          break;
        }
        // BLOCKS: BLOCK header, entities, ENDBLK; up to ENDSEC.
        while (i < G.size() && !(G[i].Code == 0 && (G[i].Value == "BLOCK" || G[i].Value == "ENDSEC"))) ++i;
        if (i >= G.size()) Fail(G.back().Line, "truncated: the file ends inside the blocks");
        if (G[i].Value == "ENDSEC") break;
        TBlock b;
        b.Line = G[i].Line;
        ++i;
        double bx = 0.0;
        double by = 0.0;
        for (; i < G.size() && G[i].Code != 0; ++i) {
          if (G[i].Code == 2) b.Name = std::string(Trim(G[i].Value));
          if (G[i].Code == 10) bx = G[i].Number;
          if (G[i].Code == 20) by = G[i].Number;
        }
        b.Base = TPoint2D(bx, by);
        b.Entities = ReadEntities(G, i, {"ENDBLK"});
        ++i;
        while (i < G.size() && G[i].Code != 0) ++i;
        // The first definition of a name wins, as in the CAD programs.
        f.Blocks.try_emplace(Upper(b.Name), std::move(b));
      }
    } else {
      // Other sections are skipped whole; the header only for $INSUNITS.
      bool insUnits = false;
      while (i < G.size() && !(G[i].Code == 0 && (G[i].Value == "ENDSEC" || G[i].Value == "EOF"))) {
        if (name == "HEADER") {
          if (G[i].Code == 9)
            insUnits = G[i].Value == "$INSUNITS";
          else if (insUnits && G[i].Code == 70)
            f.InsUnits = G[i].Integer;
        }
        ++i;
      }
      if (i >= G.size() || G[i].Value == "EOF") Fail(sectionLine, "truncated: the section has no ENDSEC");
    }
    if (i >= G.size()) Fail(sectionLine, "truncated: the section has no ENDSEC");
    ++i;  // the ENDSEC
  }
  if (!eof) Fail(G.back().Line, "truncated: the file has no EOF");
  return f;
}

const char* UnitsName(long long Code) {
  static const char* const kNames[] = {
      "unitless",   "inches",      "feet",        "miles",      "millimeters",        "centimeters", "meters",
      "kilometers", "microinches", "mils",        "yards",      "angstroms",          "nanometers",  "microns",
      "decimeters", "decameters",  "hectometers", "gigameters", "astronomical units", "light years", "parsecs"};
  if (Code < 0 || Code > 20) return "unknown";
  return kNames[Code];
}

// ---------------------------------------------------------------------------------------
// Geometry

bool IsIdentity(const TMatrix2D& M) { return M == TMatrix2D(); }

// Whether the matrix keeps circles circles: its columns orthogonal and of one length.
bool IsConformal(const TMatrix2D& M) {
  const double a = std::hypot(M.M11, M.M12);
  const double b = std::hypot(M.M21, M.M22);
  const double dot = M.M11 * M.M21 + M.M12 * M.M22;
  const double scale = std::max(a, b);
  return scale > 0.0 && std::fabs(a - b) <= 1e-12 * scale && std::fabs(dot) <= 1e-12 * scale * scale;
}

// The object coordinate system of a 2D entity, as far as a flat drawing needs it: the
// extrusion (0, 0, -1) mirrors x. Other directions are not in the drawing's plane.
bool OcsMatrix(const TEntity& E, TMatrix2D& Out) {
  const double ex = E.Real(210, 0.0);
  const double ey = E.Real(220, 0.0);
  const double ez = E.Real(230, 1.0);
  const double len = std::sqrt(ex * ex + ey * ey + ez * ez);
  Out = TMatrix2D();
  if (!(len > 0.0)) return true;  // a zero extrusion is read as the default
  if (std::hypot(ex, ey) > 1e-9 * len) return false;
  if (ez < 0.0) Out.M11 = -1.0;
  return true;
}

class TReader {
 public:
  TReader(const TFile& F, const std::vector<std::string>& Layers, TDxfDrawing& Out) : FFile(F), FOut(Out) {
    for (const std::string& l : Layers) FLayers.push_back(Upper(l));
  }

  void ReadModel() {
    long long expanded = 0;
    for (const TEntity& e : FFile.Model) {
      if (e.Type != "INSERT" || e.Int(67) == 1) continue;
      expanded = Capped(expanded + InsertCost(e, 0));
      if (expanded > kMaxExpanded)
        Fail(e.Line, "block insertions expand to more than " + std::to_string(kMaxExpanded) + " values");
    }
    for (const TEntity& e : FFile.Model) {
      // Paper-space entities (group 67 = 1) are not part of the model.
      if (e.Int(67) == 1) continue;
      Entity(e, TMatrix2D(), "0", 0);
    }
  }

 private:
  const TFile& FFile;
  TDxfDrawing& FOut;
  std::vector<std::string> FLayers;
  std::vector<std::string> FStack;                        // the blocks being expanded, outermost first
  std::unordered_map<std::string, long long> FBlockCost;  // by upper-case name

  static long long Capped(long long V) { return std::min(V, kMaxExpanded + 1); }

  // The block an INSERT names, after the checks that it exists, is not being expanded
  // already and is not nested too deep.
  const std::pair<const std::string, TBlock>& BlockOf(const TEntity& E, int Depth) const {
    const std::string name(Trim(E.Text(2)));
    const auto it = FFile.Blocks.find(Upper(name));
    if (it == FFile.Blocks.end()) Fail(E.Line, "INSERT of the missing block " + Quoted(name));
    for (const std::string& open : FStack)
      if (open == it->first) Fail(E.Line, "the block " + Quoted(name) + " inserts itself");
    if (Depth >= kMaxNesting) Fail(E.Line, "blocks nested deeper than " + std::to_string(kMaxNesting));
    return *it;
  }

  static void ArraySize(const TEntity& E, long long& Cols, long long& Rows) {
    Cols = std::max(1LL, E.Int(70, 1));
    Rows = std::max(1LL, E.Int(71, 1));
    if (Cols > kMaxExpanded || Rows > kMaxExpanded || Cols * Rows * kCellCost > kMaxExpanded)
      Fail(E.Line, "INSERT: an array of " + std::to_string(Cols) + " x " + std::to_string(Rows) + " is too large");
  }

  // The values an INSERT expands to, counted once per block; at most kMaxExpanded + 1.
  long long InsertCost(const TEntity& E, int Depth) {
    const auto& [key, block] = BlockOf(E, Depth);
    long long cols = 0;
    long long rows = 0;
    ArraySize(E, cols, rows);
    auto known = FBlockCost.find(key);
    if (known == FBlockCost.end()) {
      FStack.push_back(key);
      long long cost = 0;
      for (const TEntity& e : block.Entities) {
        cost += 1 + (e.End - e.Begin);
        for (const TEntity& c : e.Children) cost += 1 + (c.End - c.Begin);
        if (e.Type == "INSERT") cost += InsertCost(e, Depth + 1);
        cost = Capped(cost);
      }
      FStack.pop_back();
      known = FBlockCost.emplace(key, cost).first;
    }
    const long long perCell = kCellCost + known->second;
    return perCell > (kMaxExpanded + 1) / (cols * rows) ? kMaxExpanded + 1 : cols * rows * perCell;
  }

  bool LayerWanted(const std::string& Layer) const {
    return FLayers.empty() || std::find(FLayers.begin(), FLayers.end(), Upper(Layer)) != FLayers.end();
  }

  void Ignore(std::string_view Type) { ++FOut.Ignored[std::string(Type)]; }

  void Add(std::unique_ptr<TGeCurve2D> Curve, const TEntity& E, const std::string& Layer, const TMatrix2D& M) {
    if (!IsIdentity(M)) Curve->TransformBy(M);
    const TPoint2D s = Curve->GetStartPoint();
    const TPoint2D t = Curve->GetEndPoint();
    if (!std::isfinite(s.X) || !std::isfinite(s.Y) || !std::isfinite(t.X) || !std::isfinite(t.Y))
      Fail(E.Line, std::string(E.Type) + ": the coordinates overflow");
    TDxfPiece p;
    p.Curve = std::move(Curve);
    p.Entity = std::string(E.Type);
    p.Layer = Layer;
    FOut.Pieces.push_back(std::move(p));
  }

  // The arc about C of radius R from angle A0 through the signed sweep, in the entity's own
  // frame, then by M: an exact arc where M keeps circles, else an exact rational spline (an
  // ellipse arc).
  std::unique_ptr<TGeCurve2D> Arc(const TPoint2D& C, double R, double A0, double Sweep, const TMatrix2D& M) {
    if (IsConformal(M)) {
      auto a = std::make_unique<TGeCircularArc2D>(C, R, A0, Sweep);
      if (!IsIdentity(M)) a->TransformBy(M);
      return a;
    }
    if (std::fabs(Sweep) < 1e-6) {
      // Too short for the spline form; the chord is within R * 1.3e-13 of the arc.
      const TPoint2D a = C + TPoint2D(std::cos(A0), std::sin(A0)) * R;
      const TPoint2D b = C + TPoint2D(std::cos(A0 + Sweep), std::sin(A0 + Sweep)) * R;
      return std::make_unique<TGeLine2D>(M.Transform(a), M.Transform(b));
    }
    auto s = TGeSpline2D::CreateArc(C, R, A0, Sweep);
    s->TransformBy(M);
    return s;
  }

  void Entity(const TEntity& E, const TMatrix2D& Parent, const std::string& ParentLayer, int Depth) {
    std::string layer(Trim(E.Text(8, "0")));
    // Entities of a block on layer 0 take the layer of their insertion.
    if (Depth > 0 && layer == "0") layer = ParentLayer;
    const std::string_view t = E.Type;
    const bool curve = t == "LINE" || t == "ARC" || t == "CIRCLE" || t == "LWPOLYLINE" || t == "POLYLINE" ||
                       t == "SPLINE" || t == "ELLIPSE" || t == "INSERT";
    // An insertion on a layer not chosen hides its whole block, as a frozen layer does.
    if (!curve || !LayerWanted(layer)) {
      Ignore(t);
      return;
    }
    try {
      if (t == "INSERT") {
        Insert(E, Parent, layer, Depth);
        return;
      }
      if (t == "LINE")
        Line(E, Parent, layer);
      else if (t == "ARC" || t == "CIRCLE")
        ArcOrCircle(E, Parent, layer);
      else if (t == "LWPOLYLINE")
        LwPolyline(E, Parent, layer);
      else if (t == "POLYLINE")
        Polyline(E, Parent, layer);
      else if (t == "SPLINE")
        Spline(E, Parent, layer);
      else
        Ellipse(E, Parent, layer);
    } catch (const orvane::Exception& x) {
      // The kernel refused a value the file gave; say where.
      Fail(E.Line, std::string(t) + ": " + x.what());
    }
  }

  void Counted(const TEntity& E) { ++FOut.Read[std::string(E.Type)]; }

  void Line(const TEntity& E, const TMatrix2D& M, const std::string& Layer) {
    Counted(E);
    const TPoint2D a(E.Real(10), E.Real(20));
    const TPoint2D b(E.Real(11), E.Real(21));
    Add(std::make_unique<TGeLine2D>(a, b), E, Layer, M);
  }

  void ArcOrCircle(const TEntity& E, const TMatrix2D& Parent, const std::string& Layer) {
    TMatrix2D ocs;
    if (!OcsMatrix(E, ocs)) return Ignore(E.Type);
    Counted(E);
    const TMatrix2D m = ocs.Multiply(Parent);
    const TPoint2D c(E.Real(10), E.Real(20));
    const double r = E.Real(40);
    if (!(r > 0.0)) Fail(E.Line, std::string(E.Type) + ": the radius is not positive");
    double a0 = 0.0;
    double sweep = 2.0 * kPi;
    if (E.Type == "ARC") {
      const double s = E.Real(50);
      double d = std::fmod(E.Real(51) - s, 360.0);
      if (d <= 0.0) d += 360.0;  // equal angles: the whole circle
      a0 = s * kPi / 180.0;
      sweep = d * kPi / 180.0;
    }
    auto curve = Arc(c, r, a0, sweep, m);
    // A mirrored circle still runs counter-clockwise, as every circle read does.
    if (E.Type == "CIRCLE" && m.M11 * m.M22 - m.M12 * m.M21 < 0.0) curve->ReverseDir();
    Add(std::move(curve), E, Layer, TMatrix2D());
  }

  // A polyline through Pts with Bulges[i] on the segment from point i; Closed adds the
  // segment from the last point to the first. Points repeated in a row give no segment.
  void Bulged(const TEntity& E, const std::vector<TPoint2D>& Pts, const std::vector<double>& Bulges, bool Closed,
              const TMatrix2D& M, const std::string& Layer) {
    Counted(E);
    const std::size_t n = Pts.size();
    if (n < 2) return;
    const std::size_t segs = Closed ? n : n - 1;
    bool anyBulge = false;
    for (std::size_t i = 0; i < segs; ++i)
      anyBulge = anyBulge || (std::fabs(Bulges[i]) >= 1e-9 && Pts[i] != Pts[(i + 1) % n]);
    if (!anyBulge) {
      TDynPoints2D pts;
      for (std::size_t i = 0; i <= segs; ++i) {
        const TPoint2D& p = Pts[i % n];
        if (pts.empty() || pts.back() != p) pts.push_back(p);
      }
      if (pts.size() < 2) return;
      Add(std::make_unique<TGePolyline2D>(pts), E, Layer, M);
      return;
    }
    auto composite = std::make_unique<TGeCompositeCurve2D>();
    const bool conformal = IsConformal(M);
    for (std::size_t i = 0; i < segs; ++i) {
      const TPoint2D& a = Pts[i];
      const TPoint2D& b = Pts[(i + 1) % n];
      if (a == b) continue;
      // A bulge below 1e-9 bows the segment by less than 1e-9 of its length: exporters'
      // rounding noise, and too flat an arc to construct. It is read as the straight segment.
      if (std::fabs(Bulges[i]) < 1e-9) {
        composite->AddCurve(std::make_unique<TGeLine2D>(a, b));
      } else if (conformal) {
        composite->AddCurve(std::make_unique<TGeCircularArc2D>(a, Bulges[i], b));
      } else {
        // Under a scale that is not even the arc is an ellipse arc: its exact spline.
        const TGeCircularArc2D arc(a, Bulges[i], b);
        composite->AddCurve(
            TGeSpline2D::CreateArc(arc.GetCenter(), arc.GetRadius(), arc.GetStartAngle(), arc.GetSweepAngle()));
      }
    }
    Add(std::move(composite), E, Layer, M);
  }

  void LwPolyline(const TEntity& E, const TMatrix2D& Parent, const std::string& Layer) {
    TMatrix2D ocs;
    if (!OcsMatrix(E, ocs)) return Ignore(E.Type);
    std::vector<TPoint2D> pts;
    std::vector<double> bulges;
    for (const TGroup* g = E.Begin; g != E.End; ++g) {
      if (g->Code == 10) {
        pts.emplace_back(g->Number, 0.0);
        bulges.push_back(0.0);
      } else if (g->Code == 20 && !pts.empty()) {
        pts.back().Y = g->Number;
      } else if (g->Code == 42 && !bulges.empty()) {
        bulges.back() = g->Number;
      }
    }
    Bulged(E, pts, bulges, (E.Int(70) & 1) != 0, ocs.Multiply(Parent), Layer);
  }

  void Polyline(const TEntity& E, const TMatrix2D& Parent, const std::string& Layer) {
    const long long flags = E.Int(70);
    // 3D polylines, polygon meshes and polyface meshes are not flat outlines.
    TMatrix2D ocs;
    if ((flags & (8 | 16 | 64)) != 0 || !OcsMatrix(E, ocs)) return Ignore(E.Type);
    std::vector<TPoint2D> pts;
    std::vector<double> bulges;
    for (const TEntity& v : E.Children) {
      if (v.Type != "VERTEX") continue;
      // Frame points of a spline-fit polyline are not on the curve.
      if ((v.Int(70) & 16) != 0) continue;
      pts.emplace_back(v.Real(10), v.Real(20));
      bulges.push_back(v.Real(42));
    }
    Bulged(E, pts, bulges, (flags & 1) != 0, ocs.Multiply(Parent), Layer);
  }

  void Spline(const TEntity& E, const TMatrix2D& M, const std::string& Layer) {
    const long long flags = E.Int(70);
    const long long degree = E.Int(71);
    TDynPoints2D ctrl;
    TFloatDynArray knots;
    TFloatDynArray weights;
    int fit = 0;
    for (const TGroup* g = E.Begin; g != E.End; ++g) {
      if (g->Code == 10)
        ctrl.emplace_back(g->Number, 0.0);
      else if (g->Code == 20 && !ctrl.empty())
        ctrl.back().Y = g->Number;
      else if (g->Code == 40)
        knots.push_back(g->Number);
      else if (g->Code == 41)
        weights.push_back(g->Number);
      else if (g->Code == 11)
        ++fit;
    }
    const std::string what = "SPLINE: ";
    if (ctrl.empty() && fit > 0) {
      // Only fit points: the curve through them is the CAD program's own interpolation,
      // which the file does not pin down.
      Ignore("SPLINE (fit points only)");
      return;
    }
    if (degree < 1 || degree > 25) Fail(E.Line, what + "degree " + std::to_string(degree) + " is not in 1..25");
    const auto declared = [&](int Code, std::size_t Actual, const char* Name) {
      const TGroup* g = E.Find(Code);
      if (g && g->Integer != static_cast<long long>(Actual))
        Fail(E.Line,
             what + "declares " + std::to_string(g->Integer) + " " + Name + " but has " + std::to_string(Actual));
    };
    declared(72, knots.size(), "knots");
    declared(73, ctrl.size(), "control points");
    const std::size_t n = ctrl.size();
    const std::size_t p = static_cast<std::size_t>(degree);
    if (n < p + 1)
      Fail(E.Line, what + std::to_string(n) + " control points are too few for degree " + std::to_string(p));
    if (!weights.empty() && weights.size() != n)
      Fail(E.Line, what + std::to_string(weights.size()) + " weights for " + std::to_string(n) + " control points");
    for (double w : weights)
      if (!(w > 0.0)) Fail(E.Line, what + "a weight is not positive");
    for (std::size_t k = 1; k < knots.size(); ++k)
      if (knots[k] < knots[k - 1]) Fail(E.Line, what + "the knots decrease");
    const bool periodic = (flags & 2) != 0;
    std::unique_ptr<TGeSpline2D> s;
    if (periodic && knots.size() == n + 1) {
      // The periodic form: one knot per control point and the period's end.
      s = internal::WrapPeriodicSpline(ctrl, weights, knots, static_cast<int>(p));
    } else {
      if (knots.size() != n + p + 1)
        Fail(E.Line, what + std::to_string(knots.size()) + " knots where " + std::to_string(n) +
                         " control points of degree " + std::to_string(p) + " need " + std::to_string(n + p + 1));
      if (!(knots[n] > knots[p])) Fail(E.Line, what + "the knots span no interval");
      s = std::make_unique<TGeSpline2D>(static_cast<int>(n), static_cast<int>(p));
      for (std::size_t k = 0; k < n; ++k) {
        s->SetCtrlPoint(static_cast<int>(k), ctrl[k]);
        s->SetWeight(static_cast<int>(k), weights.empty() ? 1.0 : weights[k]);
      }
      for (std::size_t k = 0; k < knots.size(); ++k) s->SetKnots(static_cast<int>(k), knots[k]);
    }
    Counted(E);
    Add(std::move(s), E, Layer, M);
  }

  void Ellipse(const TEntity& E, const TMatrix2D& Parent, const std::string& Layer) {
    // Centre and major axis are in world coordinates; the extrusion only says which way the
    // parameter turns: the minor axis is the extrusion crossed with the major one.
    TMatrix2D ocs;
    if (!OcsMatrix(E, ocs)) return Ignore(E.Type);
    const bool flipped = ocs.M11 < 0.0;
    const TPoint2D c(E.Real(10), E.Real(20));
    const TPoint2D major(E.Real(11), E.Real(21));
    const double ratio = E.Real(40, 1.0);
    const double a = std::hypot(major.X, major.Y);
    if (!(a > 0.0) || !(ratio > 0.0)) Fail(E.Line, "ELLIPSE: an axis has length zero");
    Counted(E);
    const double t0 = E.Real(41, 0.0);
    double sweep = std::fmod(E.Real(42, 2.0 * kPi) - t0, 2.0 * kPi);
    if (sweep <= 1e-12) sweep += 2.0 * kPi;
    // The unit circle's arc scaled by the ratio in y, then onto the axes.
    auto s = TGeSpline2D::CreateEllipse(TPoint2D(0.0, 0.0), 1.0, ratio, t0, sweep);
    const TPoint2D u(major.X, major.Y);
    const TPoint2D v = flipped ? TPoint2D(major.Y, -major.X) : TPoint2D(-major.Y, major.X);
    TMatrix2D axes;
    axes.M11 = u.X;
    axes.M12 = u.Y;
    axes.M21 = v.X;
    axes.M22 = v.Y;
    axes.DX = c.X;
    axes.DY = c.Y;
    s->TransformBy(axes);
    Add(std::move(s), E, Layer, Parent);
  }

  void Insert(const TEntity& E, const TMatrix2D& Parent, const std::string& Layer, int Depth) {
    TMatrix2D ocs;
    if (!OcsMatrix(E, ocs)) return Ignore(E.Type);
    const auto& [key, block] = BlockOf(E, Depth);
    Counted(E);
    for (const TEntity& a : E.Children)
      if (a.Type == "ATTRIB") Ignore(a.Type);
    const double sx = E.Real(41, 1.0);
    const double sy = E.Real(42, 1.0);
    if (sx == 0.0 || sy == 0.0) return;  // a flattened insertion draws nothing in the plane
    const double rot = E.Real(50) * kPi / 180.0;
    long long cols = 0;
    long long rows = 0;
    ArraySize(E, cols, rows);
    const double dc = E.Real(44);
    const double dr = E.Real(45);
    const TPoint2D at(E.Real(10), E.Real(20));
    FStack.push_back(key);
    for (long long r = 0; r < rows; ++r) {
      for (long long c = 0; c < cols; ++c) {
        TMatrix2D m;
        m.Translate(-block.Base.X, -block.Base.Y);
        m.Scale(sx, sy);
        m.Translate(static_cast<double>(c) * dc, static_cast<double>(r) * dr);
        m.Rotate(rot);
        m.Translate(at);
        m = m.Multiply(ocs).Multiply(Parent);
        for (const TEntity& e : block.Entities) Entity(e, m, Layer, Depth + 1);
      }
    }
    FStack.pop_back();
  }
};

}  // namespace

TDxfDrawing ReadDxfText(const std::string& Text, const std::vector<std::string>& Layers) {
  const TFile f = Structure(Text);
  TDxfDrawing d;
  d.InsUnits = static_cast<int>(std::clamp(f.InsUnits, -1LL, 1000LL));
  d.UnitsName = UnitsName(f.InsUnits);
  TReader(f, Layers, d).ReadModel();
  return d;
}

TDxfDrawing ReadDxfFile(const std::string& Path, const std::vector<std::string>& Layers) {
  std::error_code ec;
  if (std::filesystem::is_directory(Path, ec)) throw EDxfError("is a directory, not a DXF file");
  std::ifstream in(Path, std::ios::binary);
  if (!in) throw EDxfError(std::string("cannot be read: ") + std::strerror(errno));
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw EDxfError("cannot be read");
  return ReadDxfText(text, Layers);
}

}  // namespace orvane::tool
