// The JSON members of TPathUtils: integer paths as nested arrays of integers.
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "orvane/foundation/Exception.h"
#include "orvane/foundation/Format.h"
#include "orvane/paths/PathUtils.h"

namespace orvane {

namespace {

using json = nlohmann::json;

std::string PlaceOf(std::size_t Path, std::size_t Vertex, std::size_t Coord, bool InPaths) {
  return InPaths ? Format("$[%d][%d][%d]", static_cast<std::int64_t>(Path), static_cast<std::int64_t>(Vertex),
                          static_cast<std::int64_t>(Coord))
                 : Format("$[%d][%d]", static_cast<std::int64_t>(Vertex), static_cast<std::int64_t>(Coord));
}

// A path coordinate is exact: a float, even one without a fraction, is refused rather than
// rounded, so that a file never shifts a vertex silently.
std::int64_t ToInt64(const json& V, const char* Where, const std::string& Place) {
  switch (V.type()) {
    case json::value_t::number_integer:
      return V.get<std::int64_t>();
    case json::value_t::number_unsigned: {
      const auto u = V.get<std::uint64_t>();
      if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        throw EConvertError("[Error] %s: %s: %s is beyond 64 bits", Where, Place, std::to_string(u));
      }
      return static_cast<std::int64_t>(u);
    }
    case json::value_t::number_float:
      throw EConvertError("[Error] %s: %s: %s is no 64-bit integer", Where, Place, FloatToStr(V.get<double>()));
    case json::value_t::string: {
      const std::string& s = V.get_ref<const std::string&>();
      std::int64_t v = 0;
      const char* end = s.data() + s.size();
      const auto [ptr, ec] = std::from_chars(s.data(), end, v);
      if (s.empty() || ec != std::errc() || ptr != end) {
        throw EConvertError("[Error] %s: %s: \"%s\" is no 64-bit integer", Where, Place, s);
      }
      return v;
    }
    default:
      // The type's name, not the value: a value may nest arbitrarily deep.
      throw EConvertError("[Error] %s: %s: a JSON %s is no 64-bit integer", Where, Place, V.type_name());
  }
}

TPath64 ReadPath(const json& Json, const char* Where, std::size_t PathIdx, bool InPaths) {
  if (!Json.is_array()) {
    throw EInOutError("[Error] %s: %s is no array", Where,
                      InPaths ? Format("$[%d]", static_cast<std::int64_t>(PathIdx)) : std::string("$"));
  }
  TPath64 path;
  path.reserve(Json.size());
  for (std::size_t i = 0; i < Json.size(); ++i) {
    const json& pair = Json[i];
    if (!pair.is_array() || pair.size() < 2) {
      throw EInOutError("[Error] %s: %s is no pair of coordinates", Where,
                        InPaths ? Format("$[%d][%d]", static_cast<std::int64_t>(PathIdx), static_cast<std::int64_t>(i))
                                : Format("$[%d]", static_cast<std::int64_t>(i)));
    }
    const std::int64_t x = ToInt64(pair[0], Where, PlaceOf(PathIdx, i, 0, InPaths));
    const std::int64_t y = ToInt64(pair[1], Where, PlaceOf(PathIdx, i, 1, InPaths));
    path.emplace_back(x, y);
  }
  return path;
}

json PathJson(const TPath64& Path) {
  json out = json::array();
  for (const TPoint64& p : Path) out.push_back(json::array({p.X, p.Y}));
  return out;
}

json Parse(std::string_view Text, const char* Where) {
  try {
    return json::parse(Text.begin(), Text.end());
  } catch (const json::parse_error& e) {
    throw EInOutError("[Error] %s: byte %d: %s", Where, static_cast<std::int64_t>(e.byte), e.what());
  } catch (const json::exception& e) {
    // A number beyond the range of a double is no syntax error but fails the parse too.
    throw EInOutError("[Error] %s: %s", Where, e.what());
  }
}

}  // namespace

std::string TPathUtils::CreatePathJson(const TPath64& Path) { return PathJson(Path).dump(); }

std::string TPathUtils::CreatePathsJson(const TPaths64& Paths) {
  json out = json::array();
  for (const TPath64& p : Paths) out.push_back(PathJson(p));
  return out.dump();
}

TPath64 TPathUtils::CreatePath(std::string_view Json) {
  static constexpr const char* Where = "TPathUtils.CreatePath";
  return ReadPath(Parse(Json, Where), Where, 0, false);
}

TPaths64 TPathUtils::CreatePaths(std::string_view Text) {
  static constexpr const char* Where = "TPathUtils.CreatePaths";
  const json Json = Parse(Text, Where);
  if (!Json.is_array()) throw EInOutError("[Error] %s: $ is no array", Where);
  TPaths64 paths;
  paths.reserve(Json.size());
  for (std::size_t i = 0; i < Json.size(); ++i) paths.push_back(ReadPath(Json[i], Where, i, true));
  return paths;
}

}  // namespace orvane
