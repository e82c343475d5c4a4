// libFuzzer target over the DXF reader of `orvane profile`. Input refused as bad raises
// EDxfError; anything else that escapes, and any crash, hang, leak or undefined behaviour,
// is a finding. Every piece read must be a finite curve whose ends and box can be taken.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "DxfDrawing.h"
#include "orvane/foundation/Exception.h"

namespace {

bool Finite(const orvane::TPoint2D& P) { return std::isfinite(P.X) && std::isfinite(P.Y); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string text(reinterpret_cast<const char*>(Data), Size);
  try {
    const orvane::tool::TDxfDrawing d = orvane::tool::ReadDxfText(text, {});
    for (const orvane::tool::TDxfPiece& p : d.Pieces) {
      if (!p.Curve || !Finite(p.Curve->GetStartPoint()) || !Finite(p.Curve->GetEndPoint())) std::abort();
      (void)p.Curve->GetRoughBoundBlock();
    }
  } catch (const orvane::tool::EDxfError&) {
  }
  return 0;
}
