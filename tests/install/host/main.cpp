// A host program built against an installed Orvane. Besides the plain calls, an exception
// raised inside liborvane.so must be caught here by its own type, and a clone made there
// must keep its class here: both need the library's exported type information.
#include <orvane/Orvane.h>

#include <cstdio>
#include <cstring>
#include <memory>

int main() {
  int failures = 0;
  const orvane::TVPolyline2D plate{{0, 0}, {4, 0}, {4, 3}, {0, 3}, {0, 0}};
  const double area = plate.Area();
  std::printf("orvane %s: plate area %g\n", orvane::VersionString(), area);
  if (area != 12.0) {
    std::printf("area: expected 12\n");
    ++failures;
  }
  if (std::strcmp(orvane::VersionString(), ORVANE_VERSION_STRING) != 0) {
    std::printf("installed header says %s, library says %s\n", ORVANE_VERSION_STRING, orvane::VersionString());
    ++failures;
  }

  try {
    const orvane::TVPolyline2D scaled(orvane::TPath64{{1, 1}, {2, 2}}, -1.0);
    std::printf("a negative rate was accepted\n");
    ++failures;
  } catch (const orvane::EParamError&) {
  } catch (...) {
    std::printf("a negative rate raised something other than EParamError\n");
    ++failures;
  }

  const std::unique_ptr<orvane::IVGeometry2D> copy = plate.Clone();
  const auto* copied = dynamic_cast<const orvane::TVPolyline2D*>(copy.get());
  if (copied == nullptr || copied->Area() != area) {
    std::printf("the clone lost its class or its vertices\n");
    ++failures;
  }
  return failures == 0 ? 0 : 1;
}
