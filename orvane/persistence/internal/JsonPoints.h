#pragma once
// The vertex lists as JSON: nested arrays without keys, [[x,y],...] for a point list and
// [[[x,y],...],...] for a list of polylines. Written with the shortest round-trip number
// text; read through nlohmann's event parser straight into points, without a document tree.

#include <string>
#include <string_view>
#include <vector>

#include "orvane/foundation/Point2D.h"

namespace orvane::internal {

// How coordinates are written: JSON numbers, or JSON strings holding the number's text.
enum class TJsonCoordForm { Number, String };

// EParamError naming Where and the vertex when a point is not finite: JSON has no such number.
void AppendPointsJson(std::string& Out, const TDynPoints2D& Pts, TJsonCoordForm Form, const char* Where);
std::string PointsToJson(const TDynPoints2D& Pts, TJsonCoordForm Form, const char* Where);
std::string PolylinesToJson(const std::vector<const TDynPoints2D*>& Lines, const char* Where);

// The readers take a coordinate as a JSON number or as a string that holds a finite number
// in full. Of a pair they use entries 0 and 1 and skip further scalar entries. Anything else
// (a root or point that is no array, a pair with fewer than two entries, an object, a
// non-finite number) is an EInOutError "[Error] <Where>: "<Source>" at $[i][j]: ..." or,
// for bad syntax, "... byte <n>: ...".
TDynPoints2D PointsFromJson(std::string_view Text, const char* Where, std::string_view Source);
std::vector<TDynPoints2D> PolylinesFromJson(std::string_view Text, const char* Where, std::string_view Source);

// The whole file as bytes; EInOutError when it cannot be read.
std::string ReadWholeFile(const std::string& FileName, const char* Where);
// Replaces the file's content; EInOutError when it cannot be written.
void WriteWholeFile(const std::string& FileName, std::string_view Text, const char* Where);

}  // namespace orvane::internal
