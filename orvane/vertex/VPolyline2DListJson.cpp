// The JSON files of polyline lists and polygons with holes.

#include "orvane/foundation/Exception.h"
#include "orvane/persistence/internal/JsonPoints.h"
#include "orvane/vertex/VHPolygon.h"
#include "orvane/vertex/VPolyline2DList.h"

namespace orvane {

void TVPolyline2DList::SaveTo(const std::string& FileName) const {
  static constexpr const char* Where = "TVPolyline2DList.SaveTo";
  std::vector<const TDynPoints2D*> lines;
  lines.reserve(FItems.size());
  for (const TVPolyline2D* item : FItems) lines.push_back(&item->Points());
  internal::WriteWholeFile(FileName, internal::PolylinesToJson(lines, Where), Where);
}

void TVPolyline2DList::ReadFrom(const std::string& FileName) {
  static constexpr const char* Where = "TVPolyline2DList.ReadFrom";
  if (!GetOwnsObjects()) throw EListError("[Error] %s: the list does not own its items", Where);
  // Read in full before the list changes, so that a bad file leaves the list as it was.
  std::vector<TDynPoints2D> lines =
      internal::PolylinesFromJson(internal::ReadWholeFile(FileName, Where), Where, FileName);
  Clear();
  for (TDynPoints2D& line : lines) Add(std::make_unique<TVPolyline2D>(std::move(line)));
}

void TVHPolygon::ReadFrom(const std::string& FileName) {
  TVPolyline2DList::ReadFrom(FileName);
  if (FItems.empty()) return;
  FIsClockwise = FItems.front()->IsClockwise();
  for (std::size_t i = 1; i < FItems.size(); ++i) FItems[i]->SetIsClockwise(!FIsClockwise);
}

}  // namespace orvane
