#pragma once
// Library start-up. Loading the library starts it once, in a fixed order of units: the
// spatial index, the curve root (an empty class dictionary), the kernel (the curve classes
// enter the dictionary, the texts take their defaults, the locale procedure is registered),
// the monotone chains, the package. Unloading undoes it in reverse order. Each unit keeps a
// load counter, so that a host that drives loading itself through Initialize and Finalize
// may start the library any number of times: only the first start and the matching last
// stop do work.

#include <cstdint>

#include "orvane/foundation/Export.h"
#include "orvane/foundation/VorLocale.h"

namespace orvane {

// One unit of the start-up: its name and its two steps, each run through the unit's counter.
struct TPackageUnitEntry {
  const char* Name;
  void (*Init)();
  void (*FInit)();
};

// The units in the order of initialisation.
struct TPackageInfoTable {
  std::int32_t UnitCount;
  const TPackageUnitEntry* Units;
};

extern "C" {
ORVANE_API const TPackageInfoTable* GetPackageInfoTable();
// Runs each unit's initialisation, in table order.
ORVANE_API void Initialize();
// Runs each unit's finalisation, in reverse table order.
ORVANE_API void Finalize();
}

// The load counter of the named unit ("Rtree", "TGeObject", "Orvane", "Mchain",
// "Ketraorvane"): 0 unloaded, -n after n starts; 1 for a name that is no unit.
ORVANE_API std::int32_t GetUnitLoadCount(const char* AUnitName);

// The locale procedure that the kernel registers: when AResource is there and ready, each
// text that has a locale key is read from the section "GeometryStrings" under its own name;
// a missing key keeps the text it has.
ORVANE_API void GeometryStringsLocaleProc(const TVorLocaleResource* AResource);

}  // namespace orvane
