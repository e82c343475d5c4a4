#pragma once
// TPathsList: a list of polygons in path form, each item an outline followed by its holes.

#include "orvane/foundation/Export.h"
#include "orvane/foundation/List.h"
#include "orvane/paths/Path64.h"

namespace orvane {

class ORVANE_API TPathsList : public TList<TPaths64> {
 public:
  // Owns: the list empties its items' paths when it is destroyed. Items are values, so a
  // list that does not own them leaves nothing behind that another holder could miss.
  explicit TPathsList(bool Owns);
  ~TPathsList() override;

  bool GetOwns() const { return FOwns; }
  // The number of paths over all items (Count stays the number of items); clamped to 32
  // bits.
  int PathCount() const;

 private:
  bool FOwns;
};

}  // namespace orvane
