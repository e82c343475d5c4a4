// libFuzzer target over what `orvane check` does with a file: read the layout, check every
// solution, write the text, JSON and SVG reports. Input refused as bad raises ELayoutError
// or the kernel's Exception, as the tool reports them; anything else that escapes, and any
// crash, leak or undefined behaviour, is a finding.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "Check.h"
#include "Layout.h"
#include "Report.h"
#include "orvane/foundation/Exception.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string text(reinterpret_cast<const char*>(Data), Size);
  try {
    for (const orvane::tool::TLayout& layout : orvane::tool::ParseLayout(text, "fuzz\xff.json")) {
      orvane::tool::TCheckOptions options;
      // Vary the contact distance with the input, so the distance path is explored too.
      options.Tol = Size % 3 == 0 ? 1e-6 : (Size % 3 == 1 ? 1e-7 : 0.5);
      const orvane::tool::TCheckReport report = orvane::tool::CheckLayout(layout, options);
      std::ostringstream out;
      orvane::tool::WriteTextReport(out, report, options, 0.0);
      out << orvane::tool::ReportToJson(report, 0.0).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
      orvane::tool::WriteSvg(out, layout, report);
    }
  } catch (const orvane::tool::ELayoutError&) {
  } catch (const orvane::Exception&) {
  }
  return 0;
}
