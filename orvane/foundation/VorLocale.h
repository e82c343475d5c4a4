#pragma once
// The locale resource of the host: a store of texts keyed by section and key, and the
// registry of procedures that read their texts from it. The host fills a resource (in
// memory or from an INI-style file), sets it ready, and calls LocaleProcs().Apply with it
// whenever the language changes.

#include <functional>
#include <istream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/foundation/Export.h"

namespace orvane {

class ORVANE_API TVorLocaleResource {
 public:
  // A procedure may read the resource only while this is set; a half-filled resource is not.
  bool Ready = false;

  TVorLocaleResource() = default;
  TVorLocaleResource(const TVorLocaleResource&) = delete;
  TVorLocaleResource& operator=(const TVorLocaleResource&) = delete;

  // Replaces Value by the text under Section and Key and returns true; a missing section or
  // key leaves Value as it was and returns false. Names compare exactly.
  bool ReadStr(std::string_view Section, std::string_view Key, std::string& Value) const;
  void WriteStr(std::string_view Section, std::string_view Key, std::string_view Value);
  // Forgets every text; Ready stays as it is.
  void Clear();
  // Adds the texts of an INI-style stream: "[Section]" lines open a section, "Key=Value"
  // lines store a text (spaces around the key are dropped, the value is taken as written up
  // to the line end), and blank lines or lines that start with ';' or '#' are skipped. A
  // "Key=Value" line before any section, or a line that is neither, raises EInOutError
  // naming the line number; texts read before it are kept.
  void LoadFromStream(std::istream& AStream);
  // The same from a file; EInOutError when it cannot be opened.
  void LoadFromFile(const std::string& AFileName);

 private:
  std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>> FSections;
};

// A procedure that takes its texts from a resource. The resource may be nil.
using TVorLocaleProc = void (*)(const TVorLocaleResource* AResource);

class ORVANE_API TVorLocaleProcs {
 public:
  TVorLocaleProcs() = default;
  TVorLocaleProcs(const TVorLocaleProcs&) = delete;
  TVorLocaleProcs& operator=(const TVorLocaleProcs&) = delete;

  // Registers Proc once: adding a registered procedure again changes nothing.
  void Add(TVorLocaleProc Proc);
  // Forgets Proc, so that a module that is unloaded is never called again.
  void Remove(TVorLocaleProc Proc);
  bool Contains(TVorLocaleProc Proc) const;
  int Count() const { return static_cast<int>(FProcs.size()); }
  // Calls every registered procedure with AResource, in the order of registration.
  void Apply(const TVorLocaleResource* AResource) const;

 private:
  std::vector<TVorLocaleProc> FProcs;
};

// The one registry of the process.
ORVANE_API TVorLocaleProcs& LocaleProcs();

}  // namespace orvane
