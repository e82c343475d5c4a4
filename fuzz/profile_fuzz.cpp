// libFuzzer target over the whole profile command after reading: joining, recognition,
// containment, arc fitting and every report. Input the reader refuses raises EDxfError, and
// a curve the kernel refuses raises its typed exception (the command's exit code 2); any
// other escape, crash, hang, leak or undefined behaviour is a finding.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "DxfDrawing.h"
#include "Profile.h"
#include "orvane/curves/GeCompositeCurve2D.h"
#include "orvane/foundation/Exception.h"
#include "orvane/splines/GeSpline2D.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string text(reinterpret_cast<const char*>(Data), Size);
  try {
    const orvane::tool::TDxfDrawing d = orvane::tool::ReadDxfText(text, {});
    // A drawing whose INSERT arrays multiply it far beyond its text (more pieces than one per
    // 16 bytes, or free-form curves than one per 128) is only read: fitting and nesting it is
    // work in that volume, which the reader caps, and tells nothing new about the logic.
    std::size_t freeForm = 0;
    for (const orvane::tool::TDxfPiece& p : d.Pieces) {
      if (dynamic_cast<const orvane::TGeSpline2D*>(p.Curve.get())) ++freeForm;
      if (const auto* c = dynamic_cast<const orvane::TGeCompositeCurve2D*>(p.Curve.get()))
        for (int i = 0; i < c->GetCurveCount(); ++i) freeForm += dynamic_cast<const orvane::TGeSpline2D*>(c->GetCurve(i)) != nullptr;
    }
    if (freeForm > 32 + Size / 128 || d.Pieces.size() > 64 + Size / 16) return 0;
    // One pass per input, its arc tolerance (the drawing's default, or a fixed one) chosen by
    // the input's length: the corpus covers both at half the time per input.
    orvane::tool::TProfileOptions o;
    o.ArcTol = Size % 2 == 0 ? 0.0 : 1e-2;
    o.WantArcs = true;
    const orvane::tool::TProfileResult r = orvane::tool::ProfileDrawing(d, o);
    std::ostringstream out;
    orvane::tool::WriteProfileText(out, r);
    out << orvane::tool::ProfileToJson(r).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    orvane::tool::WriteProfileDxf(out, r);
    orvane::tool::WriteProfileSvg(out, r);
  } catch (const orvane::tool::EDxfError&) {
  } catch (const orvane::Exception&) {
  }
  return 0;
}
