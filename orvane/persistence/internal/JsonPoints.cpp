#include "orvane/persistence/internal/JsonPoints.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "orvane/foundation/Checks.h"
#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/persistence/internal/NumberText.h"

namespace orvane::internal {

namespace {

void AppendCoord(std::string& Out, double Value, TJsonCoordForm Form) {
  if (Form == TJsonCoordForm::String) {
    Out += '"';
    AppendDouble(Out, Value);
    Out += '"';
  } else if (Value == 0.0 && std::signbit(Value)) {
    // JSON parsers take "-0" for the integer 0: the fraction keeps the sign.
    Out += "-0.0";
  } else {
    AppendDouble(Out, Value);
  }
}

// Builds the points of nested arrays from the parser's events. Levels is the depth of the
// coordinates: 2 for a point list, 3 for a list of polylines. Every event is checked against
// the place where it stands, so that a document of another shape stops at its first wrong
// value with the path of that value.
class TPointsSax {
 public:
  using json = nlohmann::json;

  TPointsSax(int ALevels, const char* AWhere, std::string_view ASource)
      : FLevels(ALevels), FWhere(AWhere), FSource(ASource) {}

  std::vector<TDynPoints2D> Lines;
  TDynPoints2D Points;

  bool null() { return Scalar("null"); }
  bool boolean(bool /*Value*/) { return Scalar("a boolean"); }
  bool number_integer(json::number_integer_t Value) { return Coord(static_cast<double>(Value)); }
  bool number_unsigned(json::number_unsigned_t Value) { return Coord(static_cast<double>(Value)); }
  bool number_float(json::number_float_t /*Value*/, const json::string_t& Text) {
    // The parser hands over its token with the C locale's decimal point in place of '.'
    // (for strtod); the grammar of a JSON number leaves no other character it could be.
    const auto foreign = [](char c) {
      return !((c >= '0' && c <= '9') || c == '-' || c == '+' || c == 'e' || c == 'E');
    };
    if (std::none_of(Text.begin(), Text.end(), [&](char c) { return c != '.' && foreign(c); })) {
      return CoordText(Text, "the number");
    }
    std::string text = Text;
    std::replace_if(text.begin(), text.end(), foreign, '.');
    return CoordText(text, "the number");
  }
  bool string(json::string_t& Text) { return CoordText(Text, "the string"); }
  bool binary(json::binary_t& /*Value*/) { return Scalar("binary data"); }
  bool start_object(std::size_t /*Count*/) {
    Enter();
    Fail("an object stands where an array or a coordinate belongs");
  }
  bool key(json::string_t& /*Key*/) { return false; }
  bool end_object() { return false; }

  bool start_array(std::size_t /*Count*/) {
    if (FDepth >= FLevels) {
      Enter();
      Fail("an array stands where a coordinate belongs");
    }
    Enter();
    ++FDepth;
    FIndex[static_cast<std::size_t>(FDepth)] = 0;
    if (FDepth == FLevels - 1 && FLevels == 3) Points.clear();
    return true;
  }

  bool end_array() {
    if (FDepth == FLevels) {
      if (FIndex[static_cast<std::size_t>(FDepth)] < 2) {
        --FDepth;
        Fail("a point needs two coordinates");
      }
      Points.emplace_back(FX, FY);
    } else if (FDepth == 2 && FLevels == 3) {
      Lines.push_back(std::move(Points));
      Points = TDynPoints2D();
    }
    --FDepth;
    return true;
  }

  bool parse_error(std::size_t Position, const std::string& /*LastToken*/, const nlohmann::detail::exception& Ex) {
    throw EInOutError("[Error] %s: \"%s\", byte %u: %s", FWhere, std::string(FSource), Position, Ex.what());
  }

 private:
  // Counts the value that starts at the current depth.
  void Enter() { ++FIndex[static_cast<std::size_t>(FDepth)]; }

  std::string Path() const {
    std::string path = "$";
    for (int d = 1; d <= FDepth; ++d) path += Format("[%d]", FIndex[static_cast<std::size_t>(d)] - 1);
    return path;
  }

  [[noreturn]] void Fail(const char* What) const {
    throw EInOutError("[Error] %s: \"%s\" at %s: %s", FWhere, std::string(FSource), Path(), What);
  }

  // A scalar that is no coordinate: only welcome behind the two coordinates of a pair.
  bool Scalar(const char* What) {
    Enter();
    if (FDepth == FLevels && FIndex[static_cast<std::size_t>(FDepth)] > 2) return true;
    Fail(Format("%s stands where %s belongs", What, FDepth == FLevels ? "a coordinate" : "an array").c_str());
  }

  bool Coord(double Value) {
    Enter();
    if (FDepth != FLevels) Fail("a coordinate stands where an array belongs");
    const std::int64_t at = FIndex[static_cast<std::size_t>(FDepth)];
    if (at == 1) {
      FX = Value;
    } else if (at == 2) {
      FY = Value;
    }
    return true;
  }

  bool CoordText(const std::string& Text, const char* What) {
    double v = 0.0;
    if (FDepth == FLevels && FIndex[static_cast<std::size_t>(FDepth)] >= 2) {
      // Entries behind the pair are skipped unread.
      Enter();
      return true;
    }
    if (FDepth == FLevels && !TextToDouble(TrimBlanks(Text), v)) {
      Enter();
      Fail(Format("%s \"%s\" is no finite number", What, Text).c_str());
    }
    return Coord(v);
  }

  int FLevels;
  const char* FWhere;
  std::string_view FSource;
  int FDepth = 0;
  // Per depth, the number of values met so far in the array open at that depth.
  std::array<std::int64_t, 4> FIndex{};
  double FX = 0.0;
  double FY = 0.0;
};

void Parse(TPointsSax& Sax, std::string_view Text) { nlohmann::json::sax_parse(Text.begin(), Text.end(), &Sax); }

}  // namespace

void AppendPointsJson(std::string& Out, const TDynPoints2D& Pts, TJsonCoordForm Form, const char* Where) {
  CheckFiniteVertices(Pts, Where);
  Out += '[';
  for (std::size_t i = 0; i < Pts.size(); ++i) {
    if (i > 0) Out += ',';
    Out += '[';
    AppendCoord(Out, Pts[i].X, Form);
    Out += ',';
    AppendCoord(Out, Pts[i].Y, Form);
    Out += ']';
  }
  Out += ']';
}

std::string PointsToJson(const TDynPoints2D& Pts, TJsonCoordForm Form, const char* Where) {
  std::string out;
  out.reserve(Pts.size() * 24 + 2);
  AppendPointsJson(out, Pts, Form, Where);
  return out;
}

std::string PolylinesToJson(const std::vector<const TDynPoints2D*>& Lines, const char* Where) {
  std::string out = "[";
  for (std::size_t i = 0; i < Lines.size(); ++i) {
    if (i > 0) out += ',';
    AppendPointsJson(out, *Lines[i], TJsonCoordForm::Number, Where);
  }
  out += ']';
  return out;
}

TDynPoints2D PointsFromJson(std::string_view Text, const char* Where, std::string_view Source) {
  TPointsSax sax(2, Where, Source);
  Parse(sax, Text);
  return std::move(sax.Points);
}

std::vector<TDynPoints2D> PolylinesFromJson(std::string_view Text, const char* Where, std::string_view Source) {
  TPointsSax sax(3, Where, Source);
  Parse(sax, Text);
  return std::move(sax.Lines);
}

std::string ReadWholeFile(const std::string& FileName, const char* Where) {
  std::ifstream file(FileName, std::ios::binary);
  if (!file) throw EInOutError("[Error] %s: cannot open \"%s\"", Where, FileName);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) throw EInOutError("[Error] %s: reading \"%s\" failed", Where, FileName);
  return text;
}

void WriteWholeFile(const std::string& FileName, std::string_view Text, const char* Where) {
  std::ofstream file(FileName, std::ios::binary | std::ios::trunc);
  if (!file) throw EInOutError("[Error] %s: cannot open \"%s\" for writing", Where, FileName);
  file.write(Text.data(), static_cast<std::streamsize>(Text.size()));
  file.flush();
  if (!file) throw EInOutError("[Error] %s: writing \"%s\" failed", Where, FileName);
}

}  // namespace orvane::internal
