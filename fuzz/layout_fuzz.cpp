// libFuzzer target over what `orvane check` does with a file: read the layout, check every
// solution, write the text, JSON and SVG reports. Input refused as bad raises ELayoutError
// or the kernel's Exception, as the tool reports them; anything else that escapes, and any
// crash, leak or undefined behaviour, is a finding. So is any difference between the reader
// on simdjson and the same reader on nlohmann: the same layouts, or the same message.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "Check.h"
#include "Layout.h"
#include "Report.h"
#include "orvane/foundation/Exception.h"

namespace {

using orvane::tool::TLayout;

bool SameLayouts(const std::vector<TLayout>& A, const std::vector<TLayout>& B) {
  if (A.size() != B.size()) return false;
  for (std::size_t k = 0; k < A.size(); ++k) {
    const TLayout& a = A[k];
    const TLayout& b = B[k];
    if (a.Name != b.Name || a.Container != b.Container || a.Parts.size() != b.Parts.size() ||
        a.Expected.has_value() != b.Expected.has_value())
      return false;
    if (a.ContainerHeight != b.ContainerHeight) return false;
    if (a.Expected && (a.Expected->Clean != b.Expected->Clean ||
                       a.Expected->OverlapMaxRelative != b.Expected->OverlapMaxRelative ||
                       a.Expected->MaxProtrusion != b.Expected->MaxProtrusion))
      return false;
    for (std::size_t i = 0; i < a.Parts.size(); ++i) {
      if (a.Parts[i].Id != b.Parts[i].Id || a.Parts[i].Outer != b.Parts[i].Outer ||
          a.Parts[i].Holes != b.Parts[i].Holes || a.Parts[i].Bulges != b.Parts[i].Bulges)
        return false;
    }
  }
  return true;
}

// The layouts, or the message that refused the text.
std::vector<TLayout> Read(std::vector<TLayout> (*Parse)(const std::string&, const std::string&), const std::string& Text,
                          std::string& Refusal) {
  try {
    return Parse(Text, "fuzz\xff.json");
  } catch (const orvane::tool::ELayoutError& e) {
    Refusal = std::string("layout: ") + e.what();
  } catch (const orvane::Exception& e) {
    Refusal = std::string("kernel: ") + e.what();
  }
  return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string text(reinterpret_cast<const char*>(Data), Size);
  std::string refusal, reference;
  const std::vector<TLayout> layouts = Read(&orvane::tool::ParseLayout, text, refusal);
  const std::vector<TLayout> expected = Read(&orvane::tool::ParseLayoutWithNlohmann, text, reference);
  if (refusal != reference || !SameLayouts(layouts, expected)) std::abort();
  try {
    for (const TLayout& layout : layouts) {
      orvane::tool::TCheckOptions options;
      // Vary the contact distance with the input, so the distance path is explored too.
      options.Tol = Size % 3 == 0 ? 1e-6 : (Size % 3 == 1 ? 1e-7 : 0.5);
      const orvane::tool::TCheckReport report = orvane::tool::CheckLayout(layout, options);
      std::ostringstream out;
      orvane::tool::WriteTextReport(out, report, options, 0.0);
      out << orvane::tool::ReportToJson(report, 0.0).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
      orvane::tool::WriteSvg(out, layout, report);
    }
  } catch (const orvane::Exception&) {
  }
  return 0;
}
