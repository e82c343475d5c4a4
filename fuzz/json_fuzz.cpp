// libFuzzer target over the JSON readers of point lists, polyline lists and integer paths. Input refused as
// bad raises the kernel's Exception; anything else that escapes, and any crash, leak or
// undefined behaviour, is a finding. What a reader accepts must write back and read again
// to the same doubles, bit for bit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "orvane/foundation/Exception.h"
#include "orvane/paths/PathUtils.h"
#include "orvane/persistence/internal/JsonPoints.h"

using namespace orvane;
using namespace orvane::internal;

namespace {

bool SameBits(const TDynPoints2D& A, const TDynPoints2D& B) {
  return A.size() == B.size() && (A.empty() || std::memcmp(A.data(), B.data(), A.size() * sizeof(TPoint2D)) == 0);
}

void PointList(const std::string& Text) {
  TDynPoints2D pts;
  try {
    pts = PointsFromJson(Text, "fuzz", "fuzz");
  } catch (const Exception&) {
    return;
  }
  for (TJsonCoordForm form : {TJsonCoordForm::Number, TJsonCoordForm::String}) {
    const std::string text = PointsToJson(pts, form, "fuzz");
    if (!SameBits(PointsFromJson(text, "fuzz", "rewritten"), pts)) std::abort();
  }
}

void PolylineList(const std::string& Text) {
  std::vector<TDynPoints2D> lines;
  try {
    lines = PolylinesFromJson(Text, "fuzz", "fuzz");
  } catch (const Exception&) {
    return;
  }
  std::vector<const TDynPoints2D*> refs;
  for (const TDynPoints2D& l : lines) refs.push_back(&l);
  const std::vector<TDynPoints2D> back = PolylinesFromJson(PolylinesToJson(refs, "fuzz"), "fuzz", "rewritten");
  if (back.size() != lines.size()) std::abort();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!SameBits(back[i], lines[i])) std::abort();
  }
}

// A path read is written back as integers and must read again to the same vertices.
void IntegerPaths(const std::string& Text) {
  try {
    const TPath64 path = TPathUtils::CreatePath(Text);
    if (TPathUtils::CreatePath(TPathUtils::CreatePathJson(path)) != path) std::abort();
  } catch (const Exception&) {
  }
  try {
    const TPaths64 paths = TPathUtils::CreatePaths(Text);
    if (TPathUtils::CreatePaths(TPathUtils::CreatePathsJson(paths)) != paths) std::abort();
  } catch (const Exception&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string text(reinterpret_cast<const char*>(Data), Size);
  PointList(text);
  PolylineList(text);
  IntegerPaths(text);
  return 0;
}
