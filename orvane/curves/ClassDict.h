#pragma once
// The class dictionary: filer name -> class, through which stored curves are rebuilt. It
// keeps its entries in the order they were added.

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "orvane/foundation/Export.h"

namespace orvane {

class TGeObject;

// A curve class as a value: its name and a maker of an empty instance of it.
struct ORVANE_API TGeClass {
  using TFactory = std::unique_ptr<TGeObject> (*)();

  std::string_view ClassName;
  TFactory CreateEmpty = nullptr;

  // The class's entry for a default-constructible T.
  template <class T>
  static TGeClass Of(std::string_view AClassName) {
    return {AClassName, []() -> std::unique_ptr<TGeObject> { return std::make_unique<T>(); }};
  }
};

class ORVANE_API TGeClassDictionary {
 public:
  TGeClassDictionary() = default;
  TGeClassDictionary(const TGeClassDictionary&) = delete;
  TGeClassDictionary& operator=(const TGeClassDictionary&) = delete;

  // Adds Key; EParamError when it is present already or AClass has no maker.
  void Add(std::string_view Key, const TGeClass& AClass);
  // The class under Key (exact comparison); false and AClass untouched when there is none.
  bool TryGetValue(std::string_view Key, TGeClass& AClass) const;
  bool ContainsKey(std::string_view Key) const;
  int Count() const { return static_cast<int>(FItems.size()); }
  // The keys in the order they were added.
  std::vector<std::string> Keys() const;
  void Clear() { FItems.clear(); }

 private:
  std::vector<std::pair<std::string, TGeClass>> FItems;
};

}  // namespace orvane
