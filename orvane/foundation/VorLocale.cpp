#include "orvane/foundation/VorLocale.h"

#include <algorithm>
#include <fstream>

#include "orvane/foundation/Exception.h"

namespace orvane {

namespace {

std::string_view Trimmed(std::string_view S) {
  const auto first = S.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  const auto last = S.find_last_not_of(" \t\r");
  return S.substr(first, last - first + 1);
}

}  // namespace

bool TVorLocaleResource::ReadStr(std::string_view Section, std::string_view Key, std::string& Value) const {
  const auto section = FSections.find(Section);
  if (section == FSections.end()) return false;
  const auto item = section->second.find(Key);
  if (item == section->second.end()) return false;
  Value = item->second;
  return true;
}

void TVorLocaleResource::WriteStr(std::string_view Section, std::string_view Key, std::string_view Value) {
  auto section = FSections.find(Section);
  if (section == FSections.end()) section = FSections.emplace(std::string(Section), decltype(section->second){}).first;
  section->second.insert_or_assign(std::string(Key), std::string(Value));
}

void TVorLocaleResource::Clear() { FSections.clear(); }

void TVorLocaleResource::LoadFromStream(std::istream& AStream) {
  std::string line;
  std::string section;
  bool inSection = false;
  long long lineNo = 0;
  while (std::getline(AStream, line)) {
    ++lineNo;
    std::string_view text(line);
    // A UTF-8 byte order mark may open the first line of a file written by an editor.
    if (lineNo == 1 && text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    const std::string_view trimmed = Trimmed(text);
    if (trimmed.empty() || trimmed.front() == ';' || trimmed.front() == '#') continue;
    if (trimmed.front() == '[' && trimmed.back() == ']') {
      section = std::string(Trimmed(trimmed.substr(1, trimmed.size() - 2)));
      inSection = true;
      continue;
    }
    const auto eq = text.find('=');
    if (eq == std::string_view::npos || !inSection) {
      throw EInOutError("[Error] TVorLocaleResource.LoadFromStream: line %d is neither a section nor a key in one",
                        lineNo);
    }
    WriteStr(section, Trimmed(text.substr(0, eq)), text.substr(eq + 1));
  }
  if (AStream.bad()) throw EInOutError("[Error] TVorLocaleResource.LoadFromStream: read failed after line %d", lineNo);
}

void TVorLocaleResource::LoadFromFile(const std::string& AFileName) {
  std::ifstream in(AFileName, std::ios::binary);
  if (!in) throw EInOutError("[Error] TVorLocaleResource.LoadFromFile: cannot open %s", AFileName);
  LoadFromStream(in);
}

void TVorLocaleProcs::Add(TVorLocaleProc Proc) {
  if (Proc != nullptr && !Contains(Proc)) FProcs.push_back(Proc);
}

void TVorLocaleProcs::Remove(TVorLocaleProc Proc) { std::erase(FProcs, Proc); }

bool TVorLocaleProcs::Contains(TVorLocaleProc Proc) const {
  return std::find(FProcs.begin(), FProcs.end(), Proc) != FProcs.end();
}

void TVorLocaleProcs::Apply(const TVorLocaleResource* AResource) const {
  // A procedure may register or remove others while it runs: walk a copy.
  const std::vector<TVorLocaleProc> procs = FProcs;
  for (TVorLocaleProc proc : procs) proc(AResource);
}

TVorLocaleProcs& LocaleProcs() {
  static TVorLocaleProcs procs;
  return procs;
}

}  // namespace orvane
