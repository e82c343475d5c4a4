#include "orvane/Version.h"

namespace orvane {

// Compiled into the library, so that a program sees the version it actually runs with.
const char* VersionString() { return ORVANE_VERSION_STRING; }

}  // namespace orvane
