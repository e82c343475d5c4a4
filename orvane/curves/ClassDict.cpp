#include "orvane/curves/ClassDict.h"

#include <algorithm>

#include "orvane/foundation/Exception.h"

namespace orvane {

void TGeClassDictionary::Add(std::string_view Key, const TGeClass& AClass) {
  if (AClass.CreateEmpty == nullptr) {
    throw EParamError("[Error] TGeClassDictionary.Add: class %s under key %s has no maker", AClass.ClassName, Key);
  }
  if (ContainsKey(Key)) throw EParamError("[Error] TGeClassDictionary.Add: key %s is present already", Key);
  FItems.emplace_back(std::string(Key), AClass);
}

bool TGeClassDictionary::TryGetValue(std::string_view Key, TGeClass& AClass) const {
  // A handful of keys: a walk beats hashing and keeps the order for free.
  const auto it = std::find_if(FItems.begin(), FItems.end(), [&](const auto& item) { return item.first == Key; });
  if (it == FItems.end()) return false;
  AClass = it->second;
  return true;
}

bool TGeClassDictionary::ContainsKey(std::string_view Key) const {
  TGeClass unused;
  return TryGetValue(Key, unused);
}

std::vector<std::string> TGeClassDictionary::Keys() const {
  std::vector<std::string> keys;
  keys.reserve(FItems.size());
  for (const auto& item : FItems) keys.push_back(item.first);
  return keys;
}

}  // namespace orvane
