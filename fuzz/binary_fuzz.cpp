// libFuzzer target over the binary record reader. Input refused as bad raises the kernel's
// Exception; anything else that escapes, and any crash, leak or undefined behaviour, is a
// finding. The objects read must write back and read again to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "orvane/curves/GeObject.h"
#include "orvane/foundation/Exception.h"
#include "orvane/persistence/FbsStream.h"

using namespace orvane;

namespace {

using TObjects = std::vector<std::unique_ptr<TGeObject>>;

// Reads objects until the stream ends or holds one of an unknown class, behind which the
// records are not in step.
TObjects ReadAll(const std::string& Bytes, const char* Name) {
  TObjects objects;
  std::istringstream in(Bytes);
  TFbsStreamReader reader(in, Name);
  while (!reader.AtEnd()) {
    std::unique_ptr<TGeObject> obj = TGeObject::ReadFromGeoData(reader);
    if (obj == nullptr) break;
    objects.push_back(std::move(obj));
  }
  return objects;
}

std::string WriteAll(const TObjects& Objects) {
  std::ostringstream out;
  TFbsStreamWriter writer(out, "rewrite");
  for (const auto& obj : Objects) TGeObject::SaveGeObjToDb(*obj, writer);
  writer.Flush();
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  TObjects first;
  try {
    first = ReadAll(std::string(reinterpret_cast<const char*>(Data), Size), "fuzz");
  } catch (const Exception&) {
    return 0;
  }
  const std::string bytes = WriteAll(first);
  const TObjects second = ReadAll(bytes, "rewritten");
  if (second.size() != first.size() || WriteAll(second) != bytes) std::abort();
  return 0;
}
