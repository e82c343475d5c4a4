// libFuzzer target over the XML curve file reader. Input refused as bad raises the kernel's
// Exception; anything else that escapes, and any crash, leak or undefined behaviour, is a
// finding. What the reader accepts must write back and read again to the same curves.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "orvane/foundation/Exception.h"
#include "orvane/persistence/GeCurve2DFiler.h"

using namespace orvane;

namespace {

std::string Save(const TObjectList<TGeCurve2D>& List) {
  std::ostringstream out;
  TGeCurve2DFiler::SaveCurveList(List, out);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  TObjectList<TGeCurve2D> first;
  try {
    std::istringstream in(std::string(reinterpret_cast<const char*>(Data), Size));
    TGeCurve2DFiler::ReadCurveList(first, in, "fuzz");
  } catch (const Exception&) {
    return 0;
  }
  // Nil entries (unknown elements) write nothing; every curve must come back the same.
  const std::string text = Save(first);
  // A '&' anywhere makes the reader take pugixml's full conversions; a comment holding one
  // after the root changes nothing else, so both ways must read the same curves. (pugixml
  // takes a NUL byte for the end of the text, and UTF-16 has them: such input is left out.)
  if (std::memchr(Data, 0, Size) == nullptr) {
    TObjectList<TGeCurve2D> full;
    std::istringstream marked(std::string(reinterpret_cast<const char*>(Data), Size) + "<!--&-->");
    try {
      TGeCurve2DFiler::ReadCurveList(full, marked, "fuzz");
    } catch (const Exception&) {
      std::abort();
    }
    if (full.Count() != first.Count() || Save(full) != text) std::abort();
  }
  TObjectList<TGeCurve2D> second;
  std::istringstream again(text);
  TGeCurve2DFiler::ReadCurveList(second, again, "rewritten");
  int curves = 0;
  for (const TGeCurve2D* c : first) curves += c != nullptr ? 1 : 0;
  if (second.Count() != curves || Save(second) != text) std::abort();
  return 0;
}
